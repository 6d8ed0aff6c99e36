#ifndef fuzz_Require_h
#define fuzz_Require_h

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Ends the process, saying where, when something does not hold.
inline void Require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE())
{
    if (holds)
        return;
    std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
    std::abort();
}

}  // namespace fuzz

#endif
