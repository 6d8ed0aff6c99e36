#include "import/FileContent.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

namespace kuvimport {

namespace {

constexpr std::size_t WINDOW = 65536;
constexpr std::uint64_t BINARY_STL_HEADER = 84;
constexpr std::uint64_t BINARY_STL_FACET = 50;

std::string_view WithoutMark(std::string_view text)
{
    constexpr std::string_view UTF8_MARK = "\xEF\xBB\xBF";
    return text.substr(0, UTF8_MARK.size()) == UTF8_MARK ? text.substr(UTF8_MARK.size()) : text;
}

std::string_view WithoutLeadingBlanks(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

bool StartsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

bool Contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

std::uint32_t LittleEndian32(std::string_view bytes, std::size_t at)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
    return value;
}

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

const char* NameOf(ModelFormat format)
{
    constexpr std::array<const char*, 13> NAMES{"",     "step", "iges", "brep", "vrml",
                                                "gltf", "gltf", "obj",  "stl",  "ply",
                                                "3mf",  "dae",  "off"};
    return NAMES.at(static_cast<std::size_t>(format));
}

const char* ExtensionOf(ModelFormat format)
{
    constexpr std::array<const char*, 13> EXTENSIONS{"",      ".step", ".iges", ".brep", ".wrl",
                                                     ".gltf", ".glb",  ".obj",  ".stl",  ".ply",
                                                     ".3mf",  ".dae",  ".off"};
    return EXTENSIONS.at(static_cast<std::size_t>(format));
}

FileContent::FileContent(const std::string& path) : path_(path)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) {
        problem_ = "no such file";
        return;
    }
    if (status.type() == fs::file_type::directory) {
        problem_ = "is a folder, not a file";
        return;
    }
    if (status.type() != fs::file_type::regular) {
        problem_ = "is not a regular file";
        return;
    }
    std::ifstream stream(path, std::ios::binary);
    size_ = fs::file_size(path, error);
    if (!stream || error) {
        problem_ = "cannot be read";
        return;
    }
    head_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size_, WINDOW)));
    tail_.resize(head_.size());
    stream.read(head_.data(), static_cast<std::streamsize>(head_.size()));
    stream.seekg(-static_cast<std::streamoff>(tail_.size()), std::ios::end);
    stream.read(tail_.data(), static_cast<std::streamsize>(tail_.size()));
    if (!stream)
        problem_ = "cannot be read";
}

bool FileContent::TailContains(std::string_view text) const { return Contains(tail_, text); }

ModelFormat FileContent::Format() const
{
    const ModelFormat format = FormatByContent();
    return format == ModelFormat::Unknown ? FormatByExtension() : format;
}

bool FileContent::ExtensionMisleads() const
{
    const ModelFormat byName = FormatByExtension();
    return byName != ModelFormat::Unknown && std::strcmp(NameOf(byName), NameOf(Format())) != 0;
}

ModelFormat FileContent::FormatByContent() const
{
    const std::string_view raw = head_;
    const std::string_view text = WithoutLeadingBlanks(WithoutMark(raw));
    if (StartsWith(raw, "glTF"))
        return ModelFormat::Glb;
    if (StartsWith(text, "ISO-10303-21") || Contains(text.substr(0, 1024), "ISO-10303-21;"))
        return ModelFormat::Step;
    if (StartsWith(text, "#VRML V"))
        return ModelFormat::Vrml;
    if (StartsWith(text, "DBRep_DrawableShape") || StartsWith(text, "CASCADE Topology") ||
        StartsWith(text, "Open CASCADE Topology"))
        return ModelFormat::Brep;
    if (StartsWith(raw, "ply\n") || StartsWith(raw, "ply\r"))
        return ModelFormat::Ply;
    if (StartsWith(text, "OFF\n") || StartsWith(text, "OFF\r") || StartsWith(text, "OFF "))
        return ModelFormat::Off;
    if (StartsWith(raw, "PK\x03\x04") && Contains(raw, "3D/"))
        return ModelFormat::Mesh3mf;
    if (StartsWith(text, "<") && Contains(text.substr(0, 4096), "<COLLADA"))
        return ModelFormat::Dae;
    if (StartsWith(text, "{") && Contains(text, "\"asset\""))
        return ModelFormat::Gltf;
    if (LooksLikeIges())
        return ModelFormat::Iges;
    // "solid" begins the text form, but also the free text of many binary files' headers.
    if (LooksLikeBinaryStl())
        return ModelFormat::Stl;
    if (StartsWith(Lower(std::string(text.substr(0, 5))), "solid") && Contains(text, "facet"))
        return ModelFormat::Stl;
    return ModelFormat::Unknown;
}

ModelFormat FileContent::FormatByExtension() const
{
    static constexpr std::array<std::pair<std::string_view, ModelFormat>, 19> EXTENSIONS{{
        {".step", ModelFormat::Step}, {".stp", ModelFormat::Step},    {".p21", ModelFormat::Step},
        {".iges", ModelFormat::Iges}, {".igs", ModelFormat::Iges},    {".brep", ModelFormat::Brep},
        {".brp", ModelFormat::Brep},  {".wrl", ModelFormat::Vrml},    {".vrml", ModelFormat::Vrml},
        {".gltf", ModelFormat::Gltf}, {".glb", ModelFormat::Glb},     {".obj", ModelFormat::Obj},
        {".stl", ModelFormat::Stl},   {".stla", ModelFormat::Stl},    {".stlb", ModelFormat::Stl},
        {".ply", ModelFormat::Ply},   {".3mf", ModelFormat::Mesh3mf}, {".dae", ModelFormat::Dae},
        {".off", ModelFormat::Off},
    }};
    const std::string extension = Lower(std::filesystem::path(path_).extension().string());
    for (const auto& [name, format] : EXTENSIONS) {
        if (name == extension)
            return format;
    }
    return ModelFormat::Unknown;
}

bool FileContent::LooksLikeBinaryStl() const
{
    if (size_ < BINARY_STL_HEADER)
        return false;
    const std::uint64_t facets = LittleEndian32(head_, 80);
    return size_ == BINARY_STL_HEADER + facets * BINARY_STL_FACET;
}

bool FileContent::LooksLikeIges() const
{
    // Lines of 80 characters, the section's letter in the 73rd: the first line belongs to the start
    // section.
    constexpr std::size_t SECTION_COLUMN = 72;
    if (head_.size() <= SECTION_COLUMN + 7)
        return false;
    const std::string_view number = Head().substr(SECTION_COLUMN, 8);
    return number[0] == 'S' && std::all_of(number.begin() + 1, number.end(), [](char c) {
               return c == ' ' || (c >= '0' && c <= '9');
           });
}

}  // namespace kuvimport
