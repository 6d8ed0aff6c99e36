#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

// What the readers of JSON files share: where in the text the parser is, and its words on errors.

namespace player {

/// A place in a text, both counted from 1, the column in characters.
struct TextPosition {
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

/// The place at a byte offset; an offset behind the end means the end. A byte order mark has no
/// column.
TextPosition PositionAt(std::string_view text, std::size_t offset);

/// 3 when the text begins with a byte order mark, else 0.
std::size_t ByteOrderMarkLength(std::string_view text);

/// The parser's number for the error that a number is out of the range of a double.
constexpr int JSON_NUMBER_OVERFLOW = 406;

/// The parser's own words on a syntax error without its prefix and without what it read last, which
/// may be malformed or as long as the file.
std::string SyntaxReason(std::string reason);

/// Where the JSON parser was when it reported a syntax error: an unexpected token is shown where it
/// begins, a malformed one where it breaks. `consumed` is how far the parser has read.
std::size_t SyntaxErrorOffset(std::string_view text, const std::string& reason,
                              std::size_t tokenStart, std::size_t consumed);

/// Walks over the text for the parser and lets the reader see how far it has come.
class TrackedPointer {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    TrackedPointer() = default;
    TrackedPointer(const char* at, const char** seen) : at_(at), seen_(seen) {}
    reference operator*() const { return *at_; }
    TrackedPointer& operator++()
    {
        *seen_ = ++at_;
        return *this;
    }
    TrackedPointer operator++(int)
    {
        TrackedPointer former = *this;
        ++*this;
        return former;
    }
    bool operator==(const TrackedPointer& other) const { return at_ == other.at_; }

private:
    const char* at_ = nullptr;
    const char** seen_ = nullptr;
};

}  // namespace player
