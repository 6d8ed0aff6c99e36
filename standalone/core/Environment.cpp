#include "core/Assertion.h"

#include "KUVObjectModel.h"

#include <cstdio>
#include <cstdlib>

namespace {

void PrintFailure(const char* message, const char* source, int line)
{
    std::fprintf(stderr, "%s:%d: check failed: %s\n", source, line, message);
}

std::atomic<core::FailureSink> failureSink{&PrintFailure};

}  // namespace

core::FailureSink core::SetFailureSink(FailureSink sink)
{
    return failureSink.exchange(sink ? sink : &PrintFailure);
}

extern "C" void CheckFailure__(const char* message, const char* source, int line,
                               const void* /*reserved*/)
{
    failureSink.load()(message ? message : "", source ? source : "", line);
}

const char* KUVGetEnv(const char* name) { return name ? std::getenv(name) : nullptr; }
