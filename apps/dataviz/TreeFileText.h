#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "TreeFile.h"

namespace dataviz {

/// A whole number read from text, or the reason why the text is none.
struct ParsedValue {
    std::int64_t value = 0;
    std::string_view problem;  ///< empty when the value holds; a constant text
};

/// Reads a value of a node: a decimal number, exponent allowed, exactly and without floating point.
/// "12", "12.0" and "1.2e1" are the same value; fractions, signs and anything above 2^63-1 are not.
ParsedValue ParseValue(std::string_view text);

/// The number of bytes of the UTF-8 character that starts at `offset`, or 0 when it is malformed.
std::size_t CharacterLength(std::string_view text, std::size_t offset);

/// The offset of the first byte that is not part of valid UTF-8, or the size of the text.
std::size_t FindInvalidUtf8(std::string_view text);

/// The error at a byte offset of the text; an offset behind the end means the end.
TreeFileError MakeError(std::string_view text, std::size_t offset, std::string reason);

}  // namespace dataviz
