#include "JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>

#include <nlohmann/json.hpp>

namespace dataviz {

namespace {

constexpr std::size_t BUFFER_SIZE = std::size_t{1} << 18U;
constexpr std::size_t LONGEST_NUMBER = 40;

bool IsPlain(std::string_view text)
{
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte >= 0x7F || c == '"' || c == '\\')
            return false;
    }
    return true;
}

template <typename Number>
std::string_view Digits(Number value, std::array<char, LONGEST_NUMBER>& room)
{
    const auto result = std::to_chars(room.data(), room.data() + room.size(), value);
    return {room.data(), static_cast<std::size_t>(result.ptr - room.data())};
}

}  // namespace

void JsonWriter::Append(std::string_view text)
{
    buffer_ += text;
    if (buffer_.size() >= BUFFER_SIZE)
        Flush();
}

void JsonWriter::BeforeValue()
{
    if (needsComma_)
        buffer_ += breakLine_ ? "," : ", ";
    if (breakLine_)
        buffer_ += '\n';
    needsComma_ = false;
    breakLine_ = false;
}

void JsonWriter::Raw(std::string_view text)
{
    BeforeValue();
    Append(text);
    needsComma_ = true;
}

void JsonWriter::Open(char bracket)
{
    BeforeValue();
    buffer_ += bracket;
}

void JsonWriter::Close(char bracket)
{
    needsComma_ = false;
    BeforeValue();
    buffer_ += bracket;
    needsComma_ = true;
}

void JsonWriter::Key(std::string_view key)
{
    String(key);
    buffer_ += ": ";
    needsComma_ = false;
}

void JsonWriter::Integer(std::int64_t value)
{
    std::array<char, LONGEST_NUMBER> room{};
    Raw(Digits(value, room));
}

void JsonWriter::Unsigned(std::uint64_t value)
{
    std::array<char, LONGEST_NUMBER> room{};
    Raw(Digits(value, room));
}

void JsonWriter::Float(float value)
{
    std::array<char, LONGEST_NUMBER> room{};
    Raw(std::isfinite(value) ? Digits(value, room) : "null");
}

void JsonWriter::Double(double value)
{
    std::array<char, LONGEST_NUMBER> room{};
    Raw(std::isfinite(value) ? Digits(value, room) : "null");
}

void JsonWriter::String(std::string_view text)
{
    if (IsPlain(text)) {
        BeforeValue();
        buffer_ += '"';
        buffer_ += text;
        buffer_ += '"';
        needsComma_ = true;
        Append({});
    } else {
        using Json = nlohmann::json;
        Raw(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace));
    }
}

void JsonWriter::Pair(float x, float y)
{
    Open('[');
    Float(x);
    Float(y);
    Close(']');
}

void JsonWriter::Flush()
{
    std::fwrite(buffer_.data(), 1, buffer_.size(), file_);
    buffer_.clear();
}

void JsonWriter::Finish()
{
    buffer_ += '\n';
    Flush();
}

}  // namespace dataviz
