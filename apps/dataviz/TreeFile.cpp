#include "TreeFile.h"

#include <new>

#include "TreeFileBuilder.h"
#include "TreeFileText.h"
#include "player/JsonText.h"

namespace dataviz {

namespace {

std::size_t FirstVisible(std::string_view text)
{
    const std::size_t start = player::ByteOrderMarkLength(text);
    const std::size_t offset = text.find_first_not_of(" \t\r\n", start);
    return offset == std::string_view::npos ? text.size() : offset;
}

std::optional<TreeFileError> ReadByLanguage(std::string_view text, TreeFile& tree)
{
    const std::size_t start = FirstVisible(text);
    if (start == text.size())
        return MakeError(text, start, "is empty");
    if (text[start] == '{' || text[start] == '[')
        return ReadJsonTree(text, tree);
    if (HasTreeCsvHeader(text))
        return ReadCsvTree(text, tree);
    return MakeError(
        text, start,
        "is no tree file: neither a JSON object nor a JSON array, and the first line is none of "
        "the "
        "CSV headers \"path,size\", \"path,value\", \"id,value\" and \"id,parent,label,value\"");
}

}  // namespace

std::string TreeFileError::Text() const
{
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + reason;
}

bool LooksLikeTreeFile(std::string_view beginning)
{
    const std::size_t start = FirstVisible(beginning);
    if (start == beginning.size())
        return false;
    return beginning[start] == '{' || beginning[start] == '[' || HasTreeCsvHeader(beginning);
}

std::optional<TreeFileError> ReadTreeFile(std::string_view text, TreeFile& tree)
{
    tree = {};
    std::optional<TreeFileError> error;
    try {
        error = ReadByLanguage(text, tree);
    } catch (const std::bad_alloc&) {
        error = MakeError(text, text.size(), "the tree needs more memory than there is");
    }
    if (error)
        tree = {};
    return error;
}

}  // namespace dataviz
