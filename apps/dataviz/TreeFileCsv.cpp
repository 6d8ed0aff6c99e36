#include <algorithm>
#include <array>

#include "TreeFileBuilder.h"
#include "TreeFileText.h"
#include "player/JsonText.h"

namespace dataviz {

namespace {

using Builder = TreeFileBuilder;

struct Field {
    std::string text;
    std::size_t offset = 0;
};

/// Splits CSV into rows: commas, lines that end with LF or CRLF, fields in double quotes with the
/// quote itself doubled.
class CsvRows {
public:
    explicit CsvRows(std::string_view text) : text_(text), at_(player::ByteOrderMarkLength(text)) {}

    /// Reads the next row that is not blank; false at the end of the text or at an error.
    bool Next()
    {
        while (at_ < text_.size() && (text_[at_] == '\n' || text_[at_] == '\r'))
            ++at_;
        if (at_ >= text_.size())
            return false;
        count_ = 0;
        start_ = at_;
        while (ReadField()) {
        }
        return !error_;
    }

    std::size_t Count() const { return count_; }
    const Field& operator[](std::size_t i) const { return fields_[i]; }
    std::size_t Start() const { return start_; }
    const std::optional<TreeFileError>& Error() const { return error_; }

private:
    /// Reads one field and what ends it; false when that was the end of the row.
    bool ReadField()
    {
        if (count_ == fields_.size())
            fields_.emplace_back();
        Field& field = fields_[count_++];
        field.offset = at_;
        field.text.clear();
        if (at_ < text_.size() && text_[at_] == '"') {
            if (!ReadQuoted(field))
                return false;
        } else {
            const std::size_t end = std::min(text_.find_first_of(",\r\n", at_), text_.size());
            field.text = text_.substr(at_, end - at_);
            at_ = end;
        }
        const bool isMore = at_ < text_.size() && text_[at_] == ',';
        at_ += isMore ? 1 : 0;
        return isMore;
    }

    bool ReadQuoted(Field& field)
    {
        for (++at_;; at_ += 2) {
            const std::size_t quote = text_.find('"', at_);
            if (quote == std::string_view::npos) {
                error_ = MakeError(text_, field.offset, "the quoted field has no closing quote");
                return false;
            }
            field.text += text_.substr(at_, quote - at_);
            at_ = quote;
            if (text_.substr(quote, 2) != "\"\"")
                break;
            field.text += '"';
        }
        ++at_;
        if (at_ < text_.size() && text_[at_] != ',' && text_[at_] != '\r' && text_[at_] != '\n') {
            error_ = MakeError(text_, at_, "a quoted field must end at its closing quote");
            return false;
        }
        return true;
    }

    std::string_view text_;
    std::size_t at_;
    std::size_t start_ = 0;
    std::size_t count_ = 0;
    std::vector<Field> fields_;  // kept between rows, so that their memory is
    std::optional<TreeFileError> error_;
};

constexpr std::size_t NO_COLUMN = static_cast<std::size_t>(-1);

enum Column : std::size_t { PATH, ID, PARENT, LABEL, VALUE, COLUMN_COUNT };

struct Header {
    std::array<std::size_t, COLUMN_COUNT> columns{};
    std::size_t count = 0;
    char separator = '\0';  // of the levels of a path; 0 for id/parent records
};

std::string_view Trimmed(std::string_view text)
{
    const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(begin);
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

std::optional<Header> ParseHeader(const CsvRows& row)
{
    constexpr std::array<std::pair<std::string_view, Column>, 7> NAMES{{{"path", PATH},
                                                                        {"id", ID},
                                                                        {"parent", PARENT},
                                                                        {"label", LABEL},
                                                                        {"name", LABEL},
                                                                        {"value", VALUE},
                                                                        {"size", VALUE}}};
    Header header;
    header.columns.fill(NO_COLUMN);
    header.count = row.Count();
    for (std::size_t i = 0; i < row.Count(); ++i) {
        const auto* const name = std::find_if(NAMES.begin(), NAMES.end(), [&](const auto& entry) {
            return entry.first == Trimmed(row[i].text);
        });
        if (name == NAMES.end() || header.columns[name->second] != NO_COLUMN)
            return std::nullopt;
        header.columns[name->second] = i;
    }
    const auto has = [&](Column column) { return header.columns[column] != NO_COLUMN; };
    if (header.count == 2 && has(PATH) && has(VALUE))
        header.separator = '/';
    else if (header.count == 2 && has(ID) && has(VALUE))
        header.separator = '.';
    else if (header.count != 4 || has(PATH))
        return std::nullopt;
    return header;
}

class CsvReader {
public:
    CsvReader(std::string_view text, TreeFile& file) : text_(text), rows_(text), builder_(file) {}

    std::optional<TreeFileError> Read();

private:
    std::optional<TreeFileError> ReadPaths();
    std::optional<TreeFileError> ReadRecords();
    std::optional<TreeFileError> AddPath();
    std::optional<TreeFileError> LinkRecords();
    std::uint32_t Descend(std::uint32_t parent, std::string_view level);
    std::optional<TreeFileError> SetValue(std::uint32_t node);
    bool NextRow(std::optional<TreeFileError>& error);
    std::optional<TreeFileError> Finish();
    void AddRootAbove(std::uint32_t firstTop);

    const Field& At(Column column) const { return rows_[header_.columns[column]]; }
    TreeFileError ErrorAt(std::size_t offset, std::string reason) const
    {
        return MakeError(text_, offset, std::move(reason));
    }
    std::size_t HashOf(std::uint32_t node)
    {
        return HashOf(builder_.Node(node).parent, builder_.Label(node));
    }
    static std::size_t HashOf(std::uint32_t parent, std::string_view level)
    {
        return std::hash<std::string_view>()(level) ^ (parent * std::size_t{0x9E3779B97F4A7C15U});
    }

    std::string_view text_;
    CsvRows rows_;
    Builder builder_;
    Header header_;
    NodeTable table_;
    std::vector<std::string> ids_;
    std::vector<Field> parents_;
};

bool CsvReader::NextRow(std::optional<TreeFileError>& error)
{
    if (!rows_.Next()) {
        error = rows_.Error();
        return false;
    }
    if (rows_.Count() != header_.count) {
        error = ErrorAt(rows_.Start(), "the row has " + std::to_string(rows_.Count()) +
                                           " fields, the header " + std::to_string(header_.count));
        return false;
    }
    return true;
}

std::optional<TreeFileError> CsvReader::SetValue(std::uint32_t node)
{
    const Field& field = At(VALUE);
    const std::string_view digits = Trimmed(field.text);
    if (digits.empty())
        return std::nullopt;  // unknown: as if the key were absent
    const ParsedValue parsed = ParseValue(digits);
    if (!parsed.problem.empty())
        return ErrorAt(field.offset, "the value " + std::string(parsed.problem));
    builder_.Give(node, Builder::VALUE);
    builder_.Node(node).value = parsed.value;
    return std::nullopt;
}

// ---- paths

std::uint32_t CsvReader::Descend(std::uint32_t parent, std::string_view level)
{
    const auto isThis = [&](std::uint32_t node) {
        return builder_.Node(node).parent == parent && builder_.Label(node) == level;
    };
    const std::size_t hash = HashOf(parent, level);
    const std::uint32_t known = table_.Find(hash, isThis);
    if (known != Builder::NO_NODE)
        return known;
    const std::uint32_t node = builder_.AddNode(parent, rows_.Start());
    if (node == Builder::NO_NODE)
        return node;
    builder_.SetLabel(node, level);
    table_.Reserve([this](std::uint32_t other) { return HashOf(other); });
    return table_.FindOrInsert(hash, node, isThis);
}

std::optional<TreeFileError> CsvReader::AddPath()
{
    const Field& field = At(header_.separator == '/' ? PATH : ID);
    std::uint32_t node = Builder::NO_NODE;
    std::string_view rest = field.text;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(header_.separator), rest.size());
        const std::string_view level = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        // A leading, trailing or doubled separator opens no level.
        if (level.empty())
            continue;
        node = Descend(node, level);
        if (node == Builder::NO_NODE)
            return ErrorAt(field.offset, "the tree has more than 4,294,967,295 nodes");
    }
    if (node == Builder::NO_NODE)
        return ErrorAt(field.offset, "the path names no level");
    if (!builder_.Give(node, Builder::ID))
        return ErrorAt(field.offset, "an earlier row has the same path");
    return SetValue(node);
}

/// Several first levels become the children of a root without label.
void CsvReader::AddRootAbove(std::uint32_t firstTop)
{
    const std::uint32_t root = builder_.AddNode(Builder::NO_NODE, builder_.Offset(firstTop));
    for (std::uint32_t i = 0; i < root; ++i) {
        if (builder_.Node(i).parent == Builder::NO_NODE)
            builder_.Node(i).parent = root;
    }
}

std::optional<TreeFileError> CsvReader::ReadPaths()
{
    std::optional<TreeFileError> error;
    while (!error && NextRow(error))
        error = AddPath();
    if (error)
        return error;
    std::uint32_t tops = 0;
    for (std::uint32_t i = 0; i < builder_.Count(); ++i)
        tops += builder_.Node(i).parent == Builder::NO_NODE ? 1U : 0U;
    if (tops > 1)
        AddRootAbove(0);
    return Finish();
}

// ---- records

std::optional<TreeFileError> CsvReader::ReadRecords()
{
    std::optional<TreeFileError> error;
    while (!error && NextRow(error)) {
        const std::uint32_t node = builder_.AddNode(Builder::NO_NODE, rows_.Start());
        if (node == Builder::NO_NODE)
            return ErrorAt(rows_.Start(), "the tree has more than 4,294,967,295 nodes");
        builder_.SetLabel(node, At(LABEL).text);
        ids_.push_back(At(ID).text);
        parents_.push_back(At(PARENT));
        if (ids_.back().empty())
            return ErrorAt(At(ID).offset, "the record has no id");
        error = SetValue(node);
    }
    return error ? error : LinkRecords();
}

std::optional<TreeFileError> CsvReader::LinkRecords()
{
    const std::hash<std::string> hashOf;
    for (std::uint32_t i = 0; i < builder_.Count(); ++i) {
        table_.Reserve([&](std::uint32_t node) { return hashOf(ids_[node]); });
        const std::uint32_t former = table_.FindOrInsert(
            hashOf(ids_[i]), i, [&](std::uint32_t other) { return ids_[other] == ids_[i]; });
        if (former != i)
            return ErrorAt(builder_.Offset(i), "the record has the id of an earlier one");
    }
    for (std::uint32_t i = 0; i < builder_.Count(); ++i) {
        const std::string& wanted = parents_[i].text;
        if (wanted.empty())
            continue;
        const std::uint32_t parent =
            table_.Find(hashOf(wanted), [&](std::uint32_t other) { return ids_[other] == wanted; });
        if (parent == Builder::NO_NODE)
            return ErrorAt(parents_[i].offset,
                           "no record has the id that the record's parent names");
        builder_.Node(i).parent = parent;
    }
    return Finish();
}

// ---- the whole file

std::optional<TreeFileError> CsvReader::Finish()
{
    if (builder_.Count() == 0)
        return ErrorAt(text_.size(), "the table holds no rows");
    std::optional<Builder::Problem> problem = builder_.SortInPreOrder();
    if (!problem)
        problem = builder_.FillInValues();
    if (problem)
        return ErrorAt(builder_.Offset(problem->node), std::move(problem->reason));
    return std::nullopt;
}

std::optional<TreeFileError> CsvReader::Read()
{
    const std::size_t invalid = FindInvalidUtf8(text_);
    if (invalid < text_.size())
        return ErrorAt(invalid, "invalid UTF-8");
    rows_.Next();
    const std::optional<Header> header = ParseHeader(rows_);
    if (!header)
        return ErrorAt(0, "the first line is no header of a tree");
    header_ = *header;
    return header_.separator != '\0' ? ReadPaths() : ReadRecords();
}

}  // namespace

bool HasTreeCsvHeader(std::string_view text)
{
    constexpr std::size_t LONGEST = 200;
    const std::size_t end = text.substr(0, LONGEST).find('\n');
    CsvRows rows(text.substr(0, std::min(end, text.size())));
    return (end != std::string_view::npos || text.size() <= LONGEST) && rows.Next() &&
           ParseHeader(rows).has_value();
}

std::optional<TreeFileError> ReadCsvTree(std::string_view text, TreeFile& tree)
{
    return CsvReader(text, tree).Read();
}

}  // namespace dataviz
