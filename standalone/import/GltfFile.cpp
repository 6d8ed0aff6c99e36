#include "import/GltfFile.h"

#include "import/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <stdexcept>

namespace kuvimport {

namespace {

using nlohmann::json;
namespace fs = std::filesystem;

/// Thrown for what makes a file unusable; the text is the reason.
struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

constexpr double LARGEST_FLOAT = 3.4028234663852886e38;
constexpr std::uint64_t NO_LIMIT = std::numeric_limits<std::uint64_t>::max();

std::string At(const char* array, std::uint64_t index)
{
    return std::string(array) + " " + std::to_string(index);
}

// ---- JSON, with types checked

const json& ArrayOf(const json& object, const char* key)
{
    static const json nothing = json::array();
    const auto member = object.find(key);
    if (member == object.end())
        return nothing;
    if (!member->is_array())
        throw Refusal(std::string("\"") + key + "\" is not an array");
    return *member;
}

const json& ObjectAt(const json& array, std::uint64_t index, const char* what)
{
    if (index >= array.size())
        throw Refusal(At(what, index) + " does not exist");
    const json& item = array[static_cast<std::size_t>(index)];
    if (!item.is_object())
        throw Refusal(At(what, index) + " is not an object");
    return item;
}

std::uint64_t ToWhole(const json& value, const std::string& what)
{
    if (value.is_number_unsigned())
        return value.get<std::uint64_t>();
    // Some exporters write whole numbers as 12.0.
    if (value.is_number_float()) {
        const double number = value.get<double>();
        if (number >= 0 && number < 9e15 && number == std::floor(number))
            return static_cast<std::uint64_t>(number);
    }
    throw Refusal(what + " is not a whole number of at least 0");
}

std::optional<std::uint64_t> WholeMember(const json& object, const char* key)
{
    const auto member = object.find(key);
    if (member == object.end())
        return std::nullopt;
    return ToWhole(*member, std::string("\"") + key + "\"");
}

std::string TextMember(const json& object, const char* key)
{
    const auto member = object.find(key);
    if (member == object.end() || !member->is_string())
        return {};
    return ToUtf8(member->get_ref<const std::string&>());
}

/// Empty for a name that a converter made up from an entry of its own.
std::string NameOfFile(const json& object)
{
    std::string name = Trimmed(TextMember(object, "name"));
    return IsReaderPlaceholder(name) ? std::string() : name;
}

// ---- the two forms

constexpr std::uint32_t GLB_HEADER = 12;
constexpr std::uint32_t GLB_CHUNK_HEADER = 8;
constexpr std::uint32_t GLB_JSON = 0x4E4F534A;
constexpr std::uint32_t GLB_BIN = 0x004E4942;

std::uint32_t Word(std::istream& stream)
{
    std::array<unsigned char, 4> bytes{};
    stream.read(reinterpret_cast<char*>(bytes.data()), 4);
    if (!stream)
        throw Refusal("the GLB file is cut off");
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

struct Source {
    std::string text;
    /// Bytes of the buffer inside a GLB file; absent in the other form.
    std::optional<std::uint64_t> binary;
};

Source ReadGlb(const std::string& path)
{
    std::error_code error;
    const std::uint64_t size = fs::file_size(path, error);
    std::ifstream stream(path, std::ios::binary);
    if (size < GLB_HEADER || Word(stream) != 0x46546C67)
        throw Refusal("the GLB file has no valid header");
    if (const std::uint32_t version = Word(stream); version != 2)
        throw Refusal("GLB version " + std::to_string(version) + " is not supported");
    const std::uint64_t stated = Word(stream);
    if (stated > size)
        throw Refusal("the GLB file is cut off: " + std::to_string(size) + " of " +
                      std::to_string(stated) + " bytes");
    if (stated < size)
        throw Refusal("the GLB file is longer than its header says");

    Source source;
    std::uint64_t at = GLB_HEADER;
    for (bool isFirst = true; at < size; isFirst = false) {
        const std::uint64_t length = Word(stream);
        const std::uint32_t type = Word(stream);
        at += GLB_CHUNK_HEADER + length;
        if (at > size)
            throw Refusal("a chunk of the GLB file is longer than the file");
        if (isFirst != (type == GLB_JSON))
            throw Refusal("the GLB file does not begin with its JSON chunk");
        if (isFirst) {
            source.text.resize(static_cast<std::size_t>(length));
            stream.read(source.text.data(), static_cast<std::streamsize>(length));
        } else if (type == GLB_BIN && !source.binary) {
            source.binary = length;
        }
        stream.seekg(static_cast<std::streamoff>(at));
    }
    if (source.text.empty())
        throw Refusal("the GLB file has no JSON chunk");
    return source;
}

Source ReadText(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    Source source;
    source.text.assign(std::istreambuf_iterator<char>(stream), {});
    constexpr std::string_view UTF8_MARK = "\xEF\xBB\xBF";
    if (source.text.compare(0, UTF8_MARK.size(), UTF8_MARK) == 0)
        source.text.erase(0, UTF8_MARK.size());
    return source;
}

/// Nesting that no glTF file needs, and that would cost the parser's consumers their stack.
constexpr int DEEPEST_JSON = 256;

int NestingOf(const std::string& text)
{
    int depth = 0;
    int deepest = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString && c == '\\')
            ++i;
        else if (c == '"')
            inString = !inString;
        else if (!inString && (c == '[' || c == '{'))
            deepest = std::max(deepest, ++depth);
        else if (!inString && (c == ']' || c == '}'))
            --depth;
    }
    return deepest;
}

json Parse(const std::string& text)
{
    // Judged beforehand: the parser's own callback walks each list again for every entry.
    if (NestingOf(text) > DEEPEST_JSON)
        throw Refusal("the JSON is nested too deeply");
    json root = json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (root.is_discarded())
        throw Refusal("the JSON is malformed");
    if (!root.is_object())
        throw Refusal("the JSON is not an object");
    return root;
}

// ---- buffers and accessors

void CheckBufferFile(const std::string& folder, const std::string& uri, std::uint64_t length,
                     std::uint64_t index)
{
    std::string path;
    if (!ResolveBelow(folder, uri, path))
        throw Refusal(At("buffer", index) + " lies outside the file's folder: " + Quoted(uri));
    std::error_code error;
    if (!fs::is_regular_file(path, error))
        throw Refusal("the referenced file " + Quoted(uri) + " is missing");
    if (fs::file_size(path, error) < length)
        throw Refusal("the referenced file " + Quoted(uri) + " is cut off");
}

/// Bytes that a base64 text decodes to; nothing for a text that is no base64.
std::optional<std::uint64_t> Base64Size(std::string_view text)
{
    std::uint64_t letters = 0;
    for (const char c : text) {
        const bool isLetter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                              (c >= '0' && c <= '9') || c == '+' || c == '/' || c == '-' ||
                              c == '_';
        if (isLetter)
            ++letters;
        else if (c != '=')
            return std::nullopt;
    }
    return letters * 3 / 4;
}

void CheckBuffer(const json& buffer, std::uint64_t index, const std::string& folder,
                 std::optional<std::uint64_t> binary)
{
    const std::optional<std::uint64_t> length = WholeMember(buffer, "byteLength");
    if (!length)
        throw Refusal(At("buffer", index) + " has no length");
    const std::string uri = TextMember(buffer, "uri");
    if (uri.empty()) {
        if (index != 0 || !binary)
            throw Refusal(At("buffer", index) + " has no data");
        if (*binary < *length)
            throw Refusal("the GLB file's binary chunk is shorter than its buffer");
        return;
    }
    if (uri.compare(0, 5, "data:") != 0) {
        CheckBufferFile(folder, PercentDecoded(uri), *length, index);
        return;
    }
    constexpr std::string_view MARK = ";base64,";
    const std::size_t comma = uri.find(MARK);
    const std::optional<std::uint64_t> bytes =
        comma == std::string::npos ? std::nullopt : Base64Size(uri.substr(comma + MARK.size()));
    if (!bytes || *bytes < *length)
        throw Refusal(At("buffer", index) + " has malformed data");
}

std::uint64_t ComponentBytes(std::uint64_t type)
{
    switch (type) {
    case 5120:
    case 5121:
        return 1;
    case 5122:
    case 5123:
        return 2;
    case 5125:
    case 5126:
        return 4;
    default:
        throw Refusal("component type " + std::to_string(type) + " is not known");
    }
}

std::uint64_t ComponentsOf(const std::string& type)
{
    static constexpr std::array<std::pair<std::string_view, std::uint64_t>, 7> TYPES{{
        {"SCALAR", 1},
        {"VEC2", 2},
        {"VEC3", 3},
        {"VEC4", 4},
        {"MAT2", 4},
        {"MAT3", 9},
        {"MAT4", 16},
    }};
    for (const auto& [name, count] : TYPES) {
        if (name == type)
            return count;
    }
    throw Refusal("accessor type " + Quoted(type) + " is not known");
}

// ---- the file

class Judge {
public:
    Judge(const json& root, const std::string& folder, std::optional<std::uint64_t> binary,
          GltfFile& file)
        : root_(root), folder_(folder), binary_(binary), file_(file)
    {
    }

    void Run()
    {
        CheckVersion();
        CheckExtensions();
        ReadNodes();
        CheckGraph();
        CheckBuffers();
        ReadMeshes();
        ReadScene();
    }

private:
    void CheckVersion() const
    {
        const auto asset = root_.find("asset");
        if (asset == root_.end() || !asset->is_object())
            throw Refusal("not a glTF file: the JSON has no asset");
        const std::string version = TextMember(*asset, "version");
        if (version.compare(0, 2, "2.") != 0)
            throw Refusal("glTF version " + Quoted(version) + " is not supported");
    }

    void CheckExtensions()
    {
        for (const json& item : ArrayOf(root_, "extensionsRequired")) {
            const std::string name =
                item.is_string() ? ToUtf8(item.get<std::string>()) : std::string();
            if (name == "EXT_meshopt_compression" || name == "KHR_meshopt_compression")
                throw Refusal("the extension " + name + " is not supported");
            if (name == "EXT_mesh_gpu_instancing")
                file_.warnings.push_back("the extension " + name +
                                         " is not supported; its instances are missing");
        }
    }

    // -- nodes and scenes

    void ReadNodes()
    {
        const json& nodes = ArrayOf(root_, "nodes");
        const std::uint64_t meshes = ArrayOf(root_, "meshes").size();
        file_.nodes.resize(nodes.size());
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const json& source = ObjectAt(nodes, i, "node");
            GltfNode& node = file_.nodes[i];
            node.name = NameOfFile(source);
            node.id = IdOf(source, i);
            if (const auto mesh = WholeMember(source, "mesh")) {
                if (*mesh >= meshes)
                    throw Refusal(At("node", i) + " refers to " + At("mesh", *mesh) +
                                  ", which does not exist");
                node.mesh = static_cast<std::uint32_t>(*mesh);
            }
            for (const json& child : ArrayOf(source, "children")) {
                const std::uint64_t index = ToWhole(child, "a child of " + At("node", i));
                if (index >= nodes.size())
                    throw Refusal(At("node", i) + " refers to " + At("node", index) +
                                  ", which does not exist");
                node.children.push_back(static_cast<std::uint32_t>(index));
            }
            node.placement = PlacementOf(source, i);
        }
    }

    static std::string IdOf(const json& node, std::size_t index)
    {
        const auto extras = node.find("extras");
        if (extras != node.end() && extras->is_object()) {
            for (const char* key : {"id", "guid", "uuid", "GUID", "UUID"}) {
                const auto id = extras->find(key);
                if (id != extras->end() && id->is_string())
                    return ToUtf8(id->get<std::string>());
                if (id != extras->end() && id->is_number_integer())
                    return std::to_string(id->get<std::int64_t>());
            }
        }
        return std::to_string(index);
    }

    void CheckGraph() const
    {
        constexpr std::uint32_t NONE = 0xFFFFFFFFU;
        std::vector<std::uint32_t> parents(file_.nodes.size(), NONE);
        for (std::uint32_t i = 0; i < file_.nodes.size(); ++i) {
            for (const std::uint32_t child : file_.nodes[i].children) {
                if (child == i)
                    throw Refusal(At("node", i) + " is its own child");
                if (parents[child] != NONE)
                    throw Refusal(At("node", child) + " has two parents");
                parents[child] = i;
            }
        }
        // With one parent each, a loop is a chain of parents that never ends.
        std::vector<std::uint32_t> seenFrom(file_.nodes.size(), NONE);
        for (std::uint32_t i = 0; i < file_.nodes.size(); ++i) {
            for (std::uint32_t at = i; at != NONE && seenFrom[at] == NONE; at = parents[at]) {
                seenFrom[at] = i;
                if (parents[at] != NONE && seenFrom[parents[at]] == i)
                    throw Refusal(At("node", at) + " is its own ancestor");
            }
        }
    }

    void ReadScene()
    {
        const json& scenes = ArrayOf(root_, "scenes");
        const std::optional<std::uint64_t> chosen = WholeMember(root_, "scene");
        if (scenes.empty() && !chosen)
            throw Refusal("the file has no scene");
        const json& scene = ObjectAt(scenes, chosen.value_or(0), "scene");
        file_.sceneName = NameOfFile(scene);
        std::vector<bool> isChild(file_.nodes.size(), false);
        for (const GltfNode& node : file_.nodes) {
            for (const std::uint32_t child : node.children)
                isChild[child] = true;
        }
        for (const json& item : ArrayOf(scene, "nodes")) {
            const std::uint64_t index = ToWhole(item, "a node of the scene");
            if (index >= file_.nodes.size())
                throw Refusal("the scene refers to " + At("node", index) +
                              ", which does not exist");
            if (isChild[static_cast<std::size_t>(index)])
                throw Refusal(At("node", index) + " is a root of the scene and has a parent");
            // Marked, so that a scene that lists a node twice is refused like a second parent.
            isChild[static_cast<std::size_t>(index)] = true;
            file_.roots.push_back(static_cast<std::uint32_t>(index));
        }
        if (file_.roots.empty())
            throw Refusal("the scene has no nodes");
    }

    // -- placements

    static std::vector<double> Numbers(const json& node, const char* key, std::size_t count,
                                       std::size_t index)
    {
        const auto member = node.find(key);
        std::vector<double> numbers;
        if (member == node.end())
            return numbers;
        if (!member->is_array() || member->size() != count)
            throw Refusal(At("node", index) + ": \"" + key + "\" has the wrong size");
        for (const json& item : *member) {
            if (!item.is_number() || !std::isfinite(item.get<double>()) ||
                std::abs(item.get<double>()) > LARGEST_FLOAT)
                throw Refusal(At("node", index) + ": \"" + key + "\" is not a finite number");
            numbers.push_back(item.get<double>());
        }
        return numbers;
    }

    static Placement PlacementOf(const json& node, std::size_t index)
    {
        Placement placement;
        if (const auto m = Numbers(node, "matrix", 16, index); !m.empty()) {
            // Columns in the file, rows here.
            for (std::size_t row = 0; row < 3; ++row) {
                for (std::size_t column = 0; column < 4; ++column)
                    placement.rows[row * 4 + column] = m[column * 4 + row];
            }
            return placement;
        }
        const auto t = Numbers(node, "translation", 3, index);
        const auto q = Numbers(node, "rotation", 4, index);
        const auto s = Numbers(node, "scale", 3, index);
        const std::array<double, 9> turn = q.empty()
                                               ? std::array<double, 9>{1, 0, 0, 0, 1, 0, 0, 0, 1}
                                               : RotationOf(q[0], q[1], q[2], q[3]);
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column)
                placement.rows[row * 4 + column] =
                    turn[row * 3 + column] * (s.empty() ? 1 : s[column]);
            placement.rows[row * 4 + 3] = t.empty() ? 0 : t[row];
        }
        return placement;
    }

    static std::array<double, 9> RotationOf(double x, double y, double z, double w)
    {
        return {1 - 2 * (y * y + z * z), 2 * (x * y - z * w),     2 * (x * z + y * w),
                2 * (x * y + z * w),     1 - 2 * (x * x + z * z), 2 * (y * z - x * w),
                2 * (x * z - y * w),     2 * (y * z + x * w),     1 - 2 * (x * x + y * y)};
    }

    // -- buffers, accessors, meshes

    void CheckBuffers() const
    {
        const json& buffers = ArrayOf(root_, "buffers");
        for (std::size_t i = 0; i < buffers.size(); ++i)
            CheckBuffer(ObjectAt(buffers, i, "buffer"), i, folder_, binary_);
        const json& views = ArrayOf(root_, "bufferViews");
        for (std::size_t i = 0; i < views.size(); ++i) {
            const json& view = ObjectAt(views, i, "buffer view");
            const std::uint64_t offset = WholeMember(view, "byteOffset").value_or(0);
            const std::uint64_t length = WholeMember(view, "byteLength").value_or(0);
            const json& buffer =
                ObjectAt(buffers, WholeMember(view, "buffer").value_or(NO_LIMIT), "buffer");
            const std::uint64_t size = WholeMember(buffer, "byteLength").value_or(0);
            if (offset > size || length > size - offset)
                throw Refusal(At("buffer view", i) + " reaches beyond its buffer");
        }
    }

    /// Elements of the accessor, after a check that its buffer view holds them.
    std::uint64_t CountOf(std::uint64_t index) const
    {
        const json& accessor = ObjectAt(ArrayOf(root_, "accessors"), index, "accessor");
        const std::uint64_t count = WholeMember(accessor, "count").value_or(0);
        const auto viewIndex = WholeMember(accessor, "bufferView");
        const std::uint64_t element =
            ComponentBytes(WholeMember(accessor, "componentType").value_or(0)) *
            ComponentsOf(TextMember(accessor, "type"));
        if (!viewIndex || count == 0)
            return count;
        const json& view = ObjectAt(ArrayOf(root_, "bufferViews"), *viewIndex, "buffer view");
        const std::uint64_t stride = WholeMember(view, "byteStride").value_or(element);
        const std::uint64_t offset = WholeMember(accessor, "byteOffset").value_or(0);
        const std::uint64_t length = WholeMember(view, "byteLength").value_or(0);
        const bool fits = offset <= length && element <= length - offset &&
                          (stride == 0 || count - 1 <= (length - offset - element) / stride);
        if (!fits)
            throw Refusal(At("accessor", index) + " reaches beyond its buffer view");
        return count;
    }

    void ReadMeshes()
    {
        const json& meshes = ArrayOf(root_, "meshes");
        file_.meshes.resize(meshes.size());
        for (std::size_t i = 0; i < meshes.size(); ++i) {
            const json& source = ObjectAt(meshes, i, "mesh");
            file_.meshes[i].name = NameOfFile(source);
            const json& primitives = ArrayOf(source, "primitives");
            if (primitives.empty())
                throw Refusal(At("mesh", i) + " has no primitives");
            for (std::size_t p = 0; p < primitives.size(); ++p)
                ReadPrimitive(ObjectAt(primitives, p, "primitive"), i);
        }
    }

    void ReadPrimitive(const json& primitive, std::size_t meshIndex)
    {
        constexpr std::uint64_t TRIANGLES = 4;
        constexpr std::uint64_t STRIP = 5;
        constexpr std::uint64_t FAN = 6;
        GltfMesh& mesh = file_.meshes[meshIndex];
        const auto attributes = primitive.find("attributes");
        if (attributes == primitive.end() || !attributes->is_object())
            throw Refusal(At("mesh", meshIndex) + " has a primitive without attributes");
        std::uint64_t corners = 0;
        if (const auto position = WholeMember(*attributes, "POSITION"))
            corners = CountOf(*position);
        if (const auto indices = WholeMember(primitive, "indices"))
            corners = CountOf(*indices);
        const std::uint64_t mode = WholeMember(primitive, "mode").value_or(TRIANGLES);
        if (mode > FAN)
            throw Refusal(At("mesh", meshIndex) + " has a primitive of unknown mode");
        if (mode < TRIANGLES)
            ++mesh.withoutTriangles;
        const std::uint64_t strip = corners < 3 ? 0 : corners - 2;
        mesh.triangles.push_back(mode == TRIANGLES ? corners / 3 : mode >= STRIP ? strip : 0);
    }

    const json& root_;
    const std::string& folder_;
    std::optional<std::uint64_t> binary_;
    GltfFile& file_;
};

}  // namespace

std::string PercentDecoded(const std::string& uri)
{
    const auto digit = [](char c) {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    };
    std::string text;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        if (uri[i] == '%' && i + 2 < uri.size() && digit(uri[i + 1]) >= 0 &&
            digit(uri[i + 2]) >= 0) {
            text += static_cast<char>(digit(uri[i + 1]) * 16 + digit(uri[i + 2]));
            i += 2;
        } else {
            text += uri[i];
        }
    }
    return text;
}

bool ResolveBelow(const std::string& folder, const std::string& reference, std::string& resolved)
{
    const fs::path relative(reference);
    if (reference.empty() || relative.is_absolute() || reference.find('\\') != std::string::npos ||
        reference.find("://") != std::string::npos || reference.find('\0') != std::string::npos)
        return false;
    for (const fs::path& step : relative) {
        if (step == "..")
            return false;
    }
    std::error_code error;
    const fs::path base = fs::weakly_canonical(folder.empty() ? "." : folder, error);
    const fs::path target = fs::weakly_canonical(base / relative, error);
    if (error)
        return false;
    const fs::path inside = target.lexically_relative(base);
    if (inside.empty() || *inside.begin() == "..")
        return false;
    resolved = target.string();
    return true;
}

std::string ReadGltfFile(const std::string& path, ModelFormat format, GltfFile& file)
{
    try {
        const Source source = format == ModelFormat::Glb ? ReadGlb(path) : ReadText(path);
        const json root = Parse(source.text);
        Judge(root, fs::path(path).parent_path().string(), source.binary, file).Run();
        return {};
    } catch (const Refusal& refusal) {
        return OneLine(refusal.what());
    } catch (const json::exception& problem) {
        return OneLine(std::string("the JSON is malformed (") + problem.what() + ")");
    }
}

}  // namespace kuvimport
