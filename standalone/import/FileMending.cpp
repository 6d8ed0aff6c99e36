#include "import/FileMending.h"

#include <cstdint>
#include <fstream>
#include <iterator>

namespace kuvimport {

namespace {

constexpr std::size_t GLB_HEADER = 12;
constexpr std::size_t CHUNK_HEADER = 8;

std::string Bytes(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void AppendUtf8(std::string& text, std::uint32_t code)
{
    const auto tail = [&](unsigned shift) {
        text += static_cast<char>(0x80 | ((code >> shift) & 0x3F));
    };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | (code >> 6));
        tail(0);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | (code >> 12));
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0 | (code >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

/// `bytes` begin with a byte order mark. Halves of a pair without the other half become U+FFFD.
std::string FromUtf16(const std::string& bytes, bool bigEndian)
{
    const auto unit = [&](std::size_t at) {
        const auto first = static_cast<unsigned char>(bytes[at]);
        const auto second = static_cast<unsigned char>(bytes[at + 1]);
        return static_cast<std::uint32_t>(bigEndian ? first << 8 | second : second << 8 | first);
    };
    const auto isIn = [](std::uint32_t code, std::uint32_t first) {
        return code >= first && code < first + 0x400;
    };
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 2; at + 1 < bytes.size(); at += 2) {
        std::uint32_t code = unit(at);
        if (isIn(code, 0xD800) && at + 3 < bytes.size() && isIn(unit(at + 2), 0xDC00)) {
            code = 0x10000 + ((code - 0xD800) << 10) + (unit(at + 2) - 0xDC00);
            at += 2;
        } else if (code >= 0xD800 && code < 0xE000) {
            code = 0xFFFD;
        }
        AppendUtf8(text, code);
    }
    return text;
}

std::uint32_t Word(const std::string& bytes, std::size_t at)
{
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
    return word;
}

void SetWord(std::string& bytes, std::size_t at, std::size_t word)
{
    for (std::size_t i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<char>((word >> (8 * i)) & 0xFF);
}

std::string WithAlignedJson(const FileContent& content, const std::string& path)
{
    const std::string head(content.Head().substr(0, GLB_HEADER + CHUNK_HEADER));
    if (head.size() < GLB_HEADER + CHUNK_HEADER)
        return {};
    const std::size_t length = Word(head, GLB_HEADER);
    const std::size_t blanks = (4 - length % 4) % 4;
    const std::size_t end = GLB_HEADER + CHUNK_HEADER + length;
    if (blanks == 0 || end > content.Size())
        return {};
    std::string bytes = Bytes(path);
    bytes.insert(end, blanks, ' ');
    SetWord(bytes, 8, bytes.size());
    SetWord(bytes, GLB_HEADER, length + blanks);
    return bytes;
}

/// Where a number begins with its point: after a blank, before a digit.
bool IsBarePoint(const std::string& text, std::size_t at)
{
    return text[at] == '.' && at > 0 && (text[at - 1] == ' ' || text[at - 1] == '\t') &&
           at + 1 < text.size() && text[at + 1] >= '0' && text[at + 1] <= '9';
}

/// Puts a zero before bare points; empty when there are none.
std::string WithLeadingZeros(const std::string& text)
{
    std::string mended;
    std::size_t copied = 0;
    for (std::size_t at = text.find('.'); at != std::string::npos; at = text.find('.', at + 1)) {
        if (!IsBarePoint(text, at))
            continue;
        mended.append(text, copied, at - copied);
        mended += '0';
        copied = at;
    }
    return mended.empty() ? mended : mended.append(text, copied);
}

}  // namespace

std::string MendedBytes(const std::string& path, ModelFormat format)
{
    const FileContent content(path);
    if (format == ModelFormat::Glb)
        return WithAlignedJson(content, path);
    std::string text;
    const bool isBigEndian = content.Head().substr(0, 2) == "\xFE\xFF";
    if (isBigEndian || content.Head().substr(0, 2) == "\xFF\xFE")
        text = FromUtf16(Bytes(path), isBigEndian);
    if (format != ModelFormat::Obj)
        return text;
    std::string mended = WithLeadingZeros(text.empty() ? Bytes(path) : text);
    return mended.empty() ? text : mended;
}

}  // namespace kuvimport
