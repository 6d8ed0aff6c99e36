#include "TreeFileText.h"

#include <algorithm>
#include <limits>

#include "player/JsonText.h"

namespace dataviz {

namespace {

constexpr std::int64_t MAX_VALUE = std::numeric_limits<std::int64_t>::max();
// Far beyond what any exponent may say, and safe to add to the length of a text.
constexpr std::int64_t MAX_EXPONENT = std::int64_t{1} << 48;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view TakeDigits(std::string_view& text)
{
    std::size_t length = 0;
    while (length < text.size() && IsDigit(text[length]))
        ++length;
    const std::string_view digits = text.substr(0, length);
    text.remove_prefix(length);
    return digits;
}

/// Takes "e+12" off the text; false when an exponent begins but holds no digit.
bool TakeExponent(std::string_view& text, std::int64_t& exponent)
{
    if (text.empty() || (text.front() != 'e' && text.front() != 'E'))
        return true;
    text.remove_prefix(1);
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    const std::string_view digits = TakeDigits(text);
    for (const char digit : digits)
        exponent = std::min(exponent * 10 + (digit - '0'), MAX_EXPONENT);
    if (negative)
        exponent = -exponent;
    return !digits.empty();
}

ParsedValue Compose(std::string digits, std::int64_t scale)
{
    while (!digits.empty() && digits.back() == '0') {
        digits.pop_back();
        ++scale;
    }
    const std::size_t firstDigit = digits.find_first_not_of('0');
    if (firstDigit == std::string::npos)
        return {0, {}};
    digits.erase(0, firstDigit);
    if (scale < 0)
        return {0, "is not a whole number"};
    constexpr std::int64_t MAX_DIGITS = 19;
    if (scale > MAX_DIGITS || static_cast<std::int64_t>(digits.size()) + scale > MAX_DIGITS)
        return {0, "is above 9223372036854775807"};
    digits.append(static_cast<std::size_t>(scale), '0');
    std::int64_t value = 0;
    for (const char digit : digits) {
        const std::int64_t unit = digit - '0';
        if (value > (MAX_VALUE - unit) / 10)
            return {0, "is above 9223372036854775807"};
        value = value * 10 + unit;
    }
    return {value, {}};
}

}  // namespace

ParsedValue ParseValue(std::string_view text)
{
    constexpr std::string_view NO_NUMBER = "is not a number";
    const bool negative = !text.empty() && text.front() == '-';
    if (negative)
        text.remove_prefix(1);
    const std::string_view whole = TakeDigits(text);
    std::string_view fraction;
    if (!text.empty() && text.front() == '.') {
        text.remove_prefix(1);
        fraction = TakeDigits(text);
        if (fraction.empty())
            return {0, NO_NUMBER};
    }
    std::int64_t exponent = 0;
    if (whole.empty() || !TakeExponent(text, exponent) || !text.empty())
        return {0, NO_NUMBER};
    std::string digits(whole);
    digits += fraction;
    if (negative && digits.find_first_not_of('0') != std::string::npos)
        return {0, "is negative"};
    return Compose(std::move(digits), exponent - static_cast<std::int64_t>(fraction.size()));
}

std::size_t CharacterLength(std::string_view text, std::size_t offset)
{
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto isTail = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    const unsigned first = byte(offset);
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first <= 0xDF)
        return isTail(offset + 1) ? 2 : 0;
    const unsigned second = byte(offset + 1);
    if (first >= 0xE0 && first <= 0xEF) {
        // No overlong forms, no surrogates.
        const bool isSecond = isTail(offset + 1) && (first != 0xE0 || second >= 0xA0) &&
                              (first != 0xED || second <= 0x9F);
        return isSecond && isTail(offset + 2) ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool isSecond = isTail(offset + 1) && (first != 0xF0 || second >= 0x90) &&
                              (first != 0xF4 || second <= 0x8F);
        return isSecond && isTail(offset + 2) && isTail(offset + 3) ? 4 : 0;
    }
    return 0;
}

std::size_t FindInvalidUtf8(std::string_view text)
{
    std::size_t offset = 0;
    while (offset < text.size()) {
        const std::size_t length = CharacterLength(text, offset);
        if (length == 0)
            return offset;
        offset += length;
    }
    return text.size();
}

TreeFileError MakeError(std::string_view text, std::size_t offset, std::string reason)
{
    const player::TextPosition position = player::PositionAt(text, offset);
    TreeFileError error;
    error.line = position.line;
    error.column = position.column;
    error.reason = std::move(reason);
    return error;
}

}  // namespace dataviz
