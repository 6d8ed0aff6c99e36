#include "player/JsonText.h"

#include <algorithm>

namespace player {

TextPosition PositionAt(std::string_view text, std::size_t offset)
{
    const std::string_view before = text.substr(0, std::min(offset, text.size()))
                                        .substr(std::min(offset, ByteOrderMarkLength(text)));
    const std::size_t lineStart =
        before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
    TextPosition position;
    position.line = 1 + static_cast<std::uint64_t>(std::count(before.begin(), before.end(), '\n'));
    for (const char c : before.substr(lineStart))
        position.column += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    return position;
}

std::size_t ByteOrderMarkLength(std::string_view text)
{
    return text.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
}

std::string SyntaxReason(std::string reason)
{
    const std::size_t prefix = reason.find("] ");
    if (prefix != std::string::npos)
        reason.erase(0, prefix + 2);
    if (reason.rfind("parse error at line", 0) == 0)
        reason.erase(0, reason.find(": ") + 2);
    const std::size_t lastRead = reason.find("; last read: '");
    if (lastRead != std::string::npos)
        reason.erase(lastRead);
    constexpr std::size_t LONGEST = 160;
    if (reason.size() > LONGEST)
        reason = reason.substr(0, LONGEST) + "...";
    return reason;
}

std::size_t SyntaxErrorOffset(std::string_view text, const std::string& reason,
                              std::size_t tokenStart, std::size_t consumed)
{
    if (reason.find("unexpected ") != std::string::npos)
        return tokenStart;
    const bool atEnd = consumed == text.size() && reason.find("missing") != std::string::npos;
    return consumed - (consumed > 0 && !atEnd ? 1 : 0);
}

}  // namespace player
