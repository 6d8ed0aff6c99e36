#include "import/Text.h"

#include <cstddef>
#include <cstdint>

namespace kuvimport {

namespace {

constexpr std::size_t LONGEST_MESSAGE = 300;
constexpr std::size_t LONGEST_QUOTE = 80;

/// Length of the well-formed sequence at the front, 0 when there is none.
std::size_t SequenceLength(std::string_view bytes)
{
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = at(0);
    if (lead < 0x80)
        return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length)
        return 0;
    // Only the second byte has limits of its own: they keep out overlong forms, surrogates and
    // numbers above the last character.
    const unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (at(1) < lowest || at(1) > highest)
        return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80)
            return 0;
    }
    return length;
}

void AppendLatin1(std::string& text, unsigned char byte)
{
    if (byte < 0x80) {
        text += static_cast<char>(byte);
        return;
    }
    text += static_cast<char>(0xC0 | (byte >> 6));
    text += static_cast<char>(0x80 | (byte & 0x3F));
}

}  // namespace

bool IsUtf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t length = SequenceLength(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

std::string ToUtf8(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    const bool isUtf8 = IsUtf8(bytes);
    for (const char byte : bytes) {
        if (byte == '\0')
            text += "\xE2\x90\x80";
        else if (isUtf8)
            text += byte;
        else
            AppendLatin1(text, static_cast<unsigned char>(byte));
    }
    return text;
}

std::string Trimmed(std::string_view text)
{
    constexpr std::string_view BLANKS = " \t\r\n";
    const std::size_t first = text.find_first_not_of(BLANKS);
    if (first == std::string_view::npos)
        return {};
    return std::string(text.substr(first, text.find_last_not_of(BLANKS) - first + 1));
}

bool IsReaderPlaceholder(std::string_view name) { return name.substr(0, 3) == "=>["; }

std::string Shortened(std::string text, std::size_t longest)
{
    if (text.size() <= longest)
        return text;
    std::size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    text.resize(end);
    return text + "...";
}

std::string OneLine(std::string_view text)
{
    std::string line;
    for (const char byte : ToUtf8(text)) {
        const auto code = static_cast<unsigned char>(byte);
        const bool isBlank = code <= 0x20 || code == 0x7F;
        if (!isBlank)
            line += byte;
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    }
    return Shortened(Trimmed(line), LONGEST_MESSAGE);
}

std::string Quoted(std::string_view text)
{
    return '"' + Shortened(OneLine(text), LONGEST_QUOTE) + '"';
}

}  // namespace kuvimport
