// Feeds choices to a scenario of events; the first byte chooses the layout.

#include "EventScenario.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Bytes bytes(data, size);
    const auto kind = static_cast<fuzz::Kind>(bytes.Take() % fuzz::KINDS);
    fuzz::EventScenario(kind, bytes).Run();
    return 0;
}
