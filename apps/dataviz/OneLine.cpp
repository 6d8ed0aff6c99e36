#include "OneLine.h"

#include <array>
#include <cstdio>

#include "TreeFileText.h"

namespace dataviz {

namespace {

std::string Escaped(unsigned char code)
{
    std::array<char, 8> escape{};
    std::snprintf(escape.data(), escape.size(), "\\x%02x", static_cast<unsigned>(code));
    return escape.data();
}

}  // namespace

std::string OneLine(std::string_view text)
{
    std::string line;
    line.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = CharacterLength(text, at);
        const auto first = static_cast<unsigned char>(text[at]);
        const auto second = static_cast<unsigned char>(length == 2 ? text[at + 1] : 0);
        if (length == 0 || first < 0x20 || first == 0x7F)
            line += Escaped(first);
        else if (first == 0xC2 && second < 0xA0)
            line += Escaped(second);  // U+0080 to U+009F; the code is the second byte
        else
            line += text.substr(at, length);
        at += length == 0 ? 1 : length;
    }
    return line;
}

}  // namespace dataviz
