#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace dataviz {

/// Writes JSON to a stream as it comes: no document is kept, so a tree of any size and depth costs
/// no memory. The caller opens and closes what it means; commas come by themselves.
class JsonWriter {
public:
    /// The stream stays the caller's. Its state tells whether everything could be written.
    explicit JsonWriter(std::FILE* file) : file_(file) {}
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;
    ~JsonWriter() { Flush(); }

    void Open(char bracket);
    void Close(char bracket);
    /// The next value belongs to this key.
    void Key(std::string_view key);

    void Null() { Raw("null"); }
    void Bool(bool value) { Raw(value ? "true" : "false"); }
    void Integer(std::int64_t value);
    void Unsigned(std::uint64_t value);
    /// The shortest text that reads back to the same number; null when it is not finite.
    void Float(float value);
    void Double(double value);
    /// UTF-8; bytes that are none become replacement characters.
    void String(std::string_view text);
    /// An array of two numbers on one line.
    void Pair(float x, float y);
    /// Starts a new line, where a reader would want one.
    void NewLine() { breakLine_ = true; }

    /// Ends the document with a line break and hands everything to the stream.
    void Finish();

private:
    void Flush();
    void BeforeValue();
    void Raw(std::string_view text);
    void Append(std::string_view text);

    std::FILE* file_;
    std::string buffer_;
    bool needsComma_ = false;
    bool breakLine_ = false;
};

}  // namespace dataviz
