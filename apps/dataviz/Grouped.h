#pragma once

#include <cstdint>
#include <string>

namespace dataviz {

/// "1,234,567"
inline std::string Grouped(std::uint64_t value)
{
    std::string text = std::to_string(value);
    for (std::size_t at = text.size(); at > 3;) {
        at -= 3;
        text.insert(at, ",");
    }
    return text;
}

}  // namespace dataviz
