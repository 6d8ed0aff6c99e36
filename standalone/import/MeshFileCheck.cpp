#include "import/MeshFileCheck.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace kuvimport {

namespace {

constexpr const char* PLY_CUT = "the ply file is cut off";
constexpr const char* PLY_HEADER = "the ply file is cut off (its header has no end)";
constexpr const char* PLY_COUNT = "the ply header states more rows than the file can hold";
constexpr const char* STL_CUT = "the stl file is cut off";
constexpr std::string_view BLANKS = " \t\r\n\v\f";

/// Takes the next line from the front of `text`; lines end with LF, CR LF or CR.
std::string_view TakeLine(std::string_view& text)
{
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    const bool isPair = text.substr(end, 2) == "\r\n";
    text.remove_prefix(std::min(end + (isPair ? 2 : 1), text.size()));
    return line;
}

/// Takes the next word from the front of a line; empty at its end.
std::string_view TakeWord(std::string_view& line)
{
    line.remove_prefix(std::min(line.find_first_not_of(BLANKS), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(BLANKS));
    line.remove_prefix(word.size());
    return word;
}

template <class Number>
std::optional<Number> NumberFrom(std::string_view word)
{
    Number number{};
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end == word.data())
        return std::nullopt;
    return number;
}

// ---- PLY

struct PlyProperty {
    bool isList = false;
    bool isCorners = false;
    std::string_view countType;
    std::string_view type;
};

struct PlyElement {
    std::string_view name;
    std::uint64_t count = 0;
    std::vector<PlyProperty> properties;
};

std::size_t BytesOf(std::string_view type)
{
    static constexpr std::array<std::pair<std::string_view, std::size_t>, 16> TYPES{{
        {"char", 1},
        {"int8", 1},
        {"uchar", 1},
        {"uint8", 1},
        {"short", 2},
        {"int16", 2},
        {"ushort", 2},
        {"uint16", 2},
        {"int", 4},
        {"int32", 4},
        {"uint", 4},
        {"uint32", 4},
        {"float", 4},
        {"float32", 4},
        {"double", 8},
        {"float64", 8},
    }};
    for (const auto& [name, bytes] : TYPES) {
        if (name == type)
            return bytes;
    }
    return 0;
}

class PlyCheck {
public:
    explicit PlyCheck(std::string_view bytes) : size_(bytes.size()), body_(bytes) {}

    MeshFileState Run()
    {
        state_.problem = ReadHeader();
        if (!state_.problem.empty() || !isKnown_)
            return state_;
        for (const PlyElement& element : elements_) {
            if (element.name == "vertex")
                vertices_ = element.count;
        }
        for (const PlyElement& element : elements_) {
            if (!(isText_ ? ReadRows(element) : ReadBinary(element))) {
                state_.problem = PLY_CUT;
                return state_;
            }
        }
        return state_;
    }

private:
    std::string ReadHeader()
    {
        bool isPossible = true;
        while (!body_.empty()) {
            std::string_view line = TakeLine(body_);
            const std::string_view word = TakeWord(line);
            if (word == "end_header")
                return isPossible ? std::string() : PLY_COUNT;
            if (word == "format") {
                const std::string_view format = TakeWord(line);
                isText_ = format == "ascii";
                isBigEndian_ = format == "binary_big_endian";
            } else if (word == "element") {
                PlyElement& element = elements_.emplace_back();
                element.name = TakeWord(line);
                const auto count = NumberFrom<std::uint64_t>(TakeWord(line));
                isPossible = isPossible && count && *count <= size_;
                element.count = count.value_or(0);
            } else if (word == "property" && !elements_.empty()) {
                AddProperty(line);
            }
        }
        return PLY_HEADER;
    }

    void AddProperty(std::string_view line)
    {
        PlyProperty property;
        property.type = TakeWord(line);
        property.isList = property.type == "list";
        if (property.isList) {
            property.countType = TakeWord(line);
            property.type = TakeWord(line);
            const std::string_view name = TakeWord(line);
            property.isCorners = elements_.back().name == "face" &&
                                 (name == "vertex_indices" || name == "vertex_index");
        }
        // A file with types of its own is left to the toolkit.
        isKnown_ = isKnown_ && BytesOf(property.type) > 0 &&
                   (!property.isList || BytesOf(property.countType) > 0);
        elements_.back().properties.push_back(property);
    }

    void CountFace(std::uint64_t corners, bool areThere)
    {
        ++state_.faces;
        state_.badFaces += corners < 3 || !areThere ? 1 : 0;
    }

    bool IsVertex(double index) const
    {
        return index >= 0 && index < static_cast<double>(vertices_);
    }

    bool ReadRows(const PlyElement& element)
    {
        if (element.properties.empty())
            return true;
        for (std::uint64_t row = 0; row < element.count; ++row) {
            std::string_view line;
            do {
                if (body_.empty())
                    return false;
                line = TakeLine(body_);
            } while (line.find_first_not_of(BLANKS) == std::string_view::npos);
            const bool isLast = body_.find_first_not_of(BLANKS) == std::string_view::npos;
            if (!ReadRow(element, line) && isLast)
                return false;
        }
        return true;
    }

    /// False when the row is short of values.
    bool ReadRow(const PlyElement& element, std::string_view line)
    {
        std::string_view last;
        for (const PlyProperty& property : element.properties) {
            last = TakeWord(line);
            if (!property.isList)
                continue;
            const std::uint64_t count = NumberFrom<std::uint64_t>(last).value_or(0);
            bool areThere = true;
            for (std::uint64_t i = 0; i < count && !last.empty(); ++i) {
                last = TakeWord(line);
                areThere = areThere && IsVertex(NumberFrom<double>(last).value_or(-1));
            }
            if (property.isCorners)
                CountFace(count, areThere);
        }
        return !last.empty();
    }

    bool ReadBinary(const PlyElement& element)
    {
        std::size_t rowBytes = 0;
        bool hasLists = false;
        for (const PlyProperty& property : element.properties) {
            rowBytes += BytesOf(property.isList ? property.countType : property.type);
            hasLists = hasLists || property.isList;
        }
        if (rowBytes > 0 && element.count > body_.size() / rowBytes)
            return false;
        if (!hasLists) {
            body_.remove_prefix(rowBytes * element.count);
            return true;
        }
        for (std::uint64_t row = 0; row < element.count; ++row) {
            if (!ReadBinaryRow(element))
                return false;
        }
        return true;
    }

    bool ReadBinaryRow(const PlyElement& element)
    {
        for (const PlyProperty& property : element.properties) {
            if (!property.isList) {
                if (!TakeValue(property.type))
                    return false;
                continue;
            }
            const std::optional<double> count = TakeValue(property.countType);
            if (!count || *count > static_cast<double>(body_.size()))
                return false;
            bool areThere = true;
            for (double i = 0; i < *count; ++i) {
                const std::optional<double> value = TakeValue(property.type);
                if (!value)
                    return false;
                areThere = areThere && IsVertex(*value);
            }
            if (property.isCorners)
                CountFace(*count < 0 ? 0 : static_cast<std::uint64_t>(*count), areThere);
        }
        return true;
    }

    template <class Value>
    static double As(const std::array<char, 8>& bytes)
    {
        Value value{};
        std::memcpy(&value, bytes.data(), sizeof value);
        return static_cast<double>(value);
    }

    std::optional<double> TakeValue(std::string_view type)
    {
        const std::size_t size = BytesOf(type);
        if (size > body_.size())
            return std::nullopt;
        std::array<char, 8> bytes{};
        // The machines that this runs on are little-endian.
        if (isBigEndian_)
            std::reverse_copy(body_.begin(), body_.begin() + size, bytes.begin());
        else
            std::copy_n(body_.begin(), size, bytes.begin());
        body_.remove_prefix(size);
        if (type[0] == 'f' || type[0] == 'd')
            return size == 4 ? As<float>(bytes) : As<double>(bytes);
        const bool isUnsigned = type[0] == 'u';
        if (size == 1)
            return isUnsigned ? As<std::uint8_t>(bytes) : As<std::int8_t>(bytes);
        if (size == 2)
            return isUnsigned ? As<std::uint16_t>(bytes) : As<std::int16_t>(bytes);
        return isUnsigned ? As<std::uint32_t>(bytes) : As<std::int32_t>(bytes);
    }

    std::size_t size_;
    std::string_view body_;
    std::vector<PlyElement> elements_;
    std::uint64_t vertices_ = 0;
    bool isText_ = false;
    bool isBigEndian_ = false;
    bool isKnown_ = true;
    MeshFileState state_;
};

// ---- STL

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool ContainsWord(std::string_view text, std::string_view word)
{
    return std::search(text.begin(), text.end(), word.begin(), word.end(),
                       [](char a, char b) { return Lower(a) == b; }) != text.end();
}

/// The last line that holds more than blanks and a comment.
std::string_view LastLine(std::string_view text)
{
    while (true) {
        const std::size_t last = text.find_last_not_of(BLANKS);
        if (last == std::string_view::npos)
            return {};
        text = text.substr(0, last + 1);
        const std::size_t before = text.find_last_of("\r\n");
        const std::size_t start = before == std::string_view::npos ? 0 : before + 1;
        const std::string_view line = text.substr(start);
        if (line[line.find_first_not_of(BLANKS)] != '#')
            return line;
        text = text.substr(0, start);
    }
}

MeshFileState CheckStl(std::string_view bytes)
{
    MeshFileState state;
    constexpr std::size_t BINARY_HEADER = 84;
    constexpr std::size_t BEGINNING = 1024;
    std::string_view start = bytes.substr(0, BEGINNING);
    // The header of a binary file can begin with the text form's first word, but holds zeros.
    const bool isText = ContainsWord(TakeWord(start), "solid") &&
                        bytes.substr(0, BINARY_HEADER).find('\0') == std::string_view::npos &&
                        ContainsWord(start, "facet");
    if (isText && !ContainsWord(LastLine(bytes), "endsolid"))
        state.problem = STL_CUT;
    return state;
}

// ---- OBJ

/// Counts faces with fewer than three corners; their indices are the toolkit's to judge.
MeshFileState CheckObj(std::string_view bytes)
{
    MeshFileState state;
    while (!bytes.empty()) {
        std::string_view line = TakeLine(bytes);
        if (TakeWord(line) != "f" || line.find('\\') != std::string_view::npos)
            continue;
        ++state.faces;
        std::size_t corners = 0;
        for (std::string_view word = TakeWord(line); !word.empty() && word[0] != '#';
             word = TakeWord(line))
            ++corners;
        state.badFaces += corners < 3 ? 1 : 0;
    }
    return state;
}

}  // namespace

MeshFileState CheckMeshFile(std::string_view bytes, ModelFormat format)
{
    if (format == ModelFormat::Ply)
        return PlyCheck(bytes).Run();
    if (format == ModelFormat::Stl)
        return CheckStl(bytes);
    if (format == ModelFormat::Obj)
        return CheckObj(bytes);
    return {};
}

}  // namespace kuvimport
