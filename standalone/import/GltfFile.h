/// The JSON half of a glTF 2.0 file: read and judged before a toolkit sees it.
#ifndef IMPORT_GLTF_FILE_H
#define IMPORT_GLTF_FILE_H

#include "import/FileContent.h"
#include "import/ImportedModel.h"

#include <string>
#include <vector>

namespace kuvimport {

inline constexpr std::uint32_t NO_MESH = 0xFFFFFFFFU;

struct GltfNode {
    /// UTF-8, empty when the node has none.
    std::string name;
    /// The `id` (`guid`, `uuid`) of the node's extras, else its index.
    std::string id;
    std::uint32_t mesh = NO_MESH;
    std::vector<std::uint32_t> children;
    Placement placement;
};

struct GltfMesh {
    std::string name;
    /// Triangles of each primitive as its accessors state them: strips and fans count their corners
    /// less two, points and lines none.
    std::vector<std::uint64_t> triangles;
    /// Primitives that are points or lines.
    std::size_t withoutTriangles = 0;
};

/// What of a glTF file the import needs besides the vertices.
struct GltfFile {
    std::string sceneName;
    /// Of the default scene, in order.
    std::vector<std::uint32_t> roots;
    std::vector<GltfNode> nodes;
    std::vector<GltfMesh> meshes;
    std::vector<std::string> warnings;
};

/// Reads `path` (`format` tells the two forms apart) into `file`; answers the reason in one line
/// when it is refused: not glTF 2, cut off, a node that is its own ancestor or has two parents, an
/// index out of range, a buffer that is missing, too short, or lies outside the file's folder.
///
/// Node graphs are judged whole, also the nodes that no scene shows.
std::string ReadGltfFile(const std::string& path, ModelFormat format, GltfFile& file);

/// "a%20b" becomes "a b"; a percent sign that starts no escape stays.
std::string PercentDecoded(const std::string& uri);

/// Whether `reference`, a URI of a file in `folder`, may be opened: relative, without "..", and not
/// led out of the folder by a symbolic link. `resolved` receives the path.
bool ResolveBelow(const std::string& folder, const std::string& reference, std::string& resolved);

}  // namespace kuvimport

#endif
