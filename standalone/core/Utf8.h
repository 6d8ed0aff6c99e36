#ifndef core_Utf8_h
#define core_Utf8_h

#include "KUVExport.h"

#include <cstddef>

namespace core {

/// What stands in a text for a byte that belongs to no valid character.
constexpr char32_t REPLACEMENT_CHARACTER = 0xFFFD;

/// One character of a text and the bytes that it takes there.
struct Utf8Character {
    char32_t codePoint = REPLACEMENT_CHARACTER;
    std::size_t byteCount = 1;
};

/// The character at the beginning of the `size` bytes at `bytes`; `size` is at least 1. Overlong
/// forms, surrogates and numbers above 10FFFF are not valid: such a byte is a character of its own
/// with the code point `REPLACEMENT_CHARACTER`.
KUV_EXPORT Utf8Character DecodeUtf8(const char* bytes, std::size_t size);

/// Number of bytes of the last character of the `size` bytes at `bytes`, as a walk from the
/// beginning would find it; 0 for no bytes. Looks at four bytes at most.
KUV_EXPORT std::size_t LastUtf8CharacterSize(const char* bytes, std::size_t size);

}  // namespace core

#endif
