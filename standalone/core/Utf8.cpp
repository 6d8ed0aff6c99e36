#include "core/Utf8.h"

#include <algorithm>

namespace {

constexpr std::size_t LONGEST_CHARACTER = 4;

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// What a first byte says about its character: how long it is, the bits that the byte brings, and
/// the smallest code point that needs this length. Length 0 for bytes that begin nothing.
struct Lead {
    std::size_t length;
    char32_t bits;
    char32_t smallest;
};

Lead ReadLead(unsigned char byte)
{
    if ((byte & 0xE0U) == 0xC0U)
        return {2, byte & 0x1FU, 0x80};
    if ((byte & 0xF0U) == 0xE0U)
        return {3, byte & 0x0FU, 0x800};
    if ((byte & 0xF8U) == 0xF0U)
        return {4, byte & 0x07U, 0x10000};
    return {0, 0, 0};
}

bool IsScalarValue(char32_t codePoint)
{
    return codePoint <= 0x10FFFF && (codePoint < 0xD800 || codePoint > 0xDFFF);
}

}  // namespace

core::Utf8Character core::DecodeUtf8(const char* bytes, std::size_t size)
{
    const auto first = static_cast<unsigned char>(*bytes);
    if (first < 0x80)
        return {first, 1};
    const Lead lead = ReadLead(first);
    if (lead.length == 0 || lead.length > size)
        return {};
    char32_t codePoint = lead.bits;
    for (std::size_t i = 1; i < lead.length; ++i) {
        if (!IsContinuation(bytes[i]))
            return {};
        codePoint = codePoint << 6U | (static_cast<unsigned char>(bytes[i]) & 0x3FU);
    }
    if (codePoint < lead.smallest || !IsScalarValue(codePoint))
        return {};
    return {codePoint, lead.length};
}

std::size_t core::LastUtf8CharacterSize(const char* bytes, std::size_t size)
{
    // A valid character has no first byte inside it, so the nearest first byte decides.
    const std::size_t reach = std::min(size, LONGEST_CHARACTER);
    for (std::size_t length = 1; length <= reach; ++length) {
        const char* const first = bytes + (size - length);
        if (IsContinuation(*first))
            continue;
        return DecodeUtf8(first, length).byteCount == length ? length : 1;
    }
    return size > 0 ? 1 : 0;
}
