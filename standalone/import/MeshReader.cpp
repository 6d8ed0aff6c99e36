#include "import/MeshReader.h"

#include "import/FileMending.h"
#include "import/GltfFile.h"
#include "import/MeshFileCheck.h"
#include "import/ShapeParts.h"
#include "import/StructureLimits.h"
#include "import/Text.h"
#include "import/ToolkitGuard.h"

#include <BRep_Builder.hxx>
#include <Poly_Triangulation.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Face.hxx>

#include <assimp/DefaultIOSystem.h>
#include <assimp/MemoryIOWrapper.h>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/Importer.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

namespace kuvimport {

namespace {

// ---- the toolkit's surroundings

/// Opens the model and what lies below its folder, nothing else, and remembers what it did not
/// find.
///
/// The toolkit knows the model by a name of its own: it chooses its reader by the extension, so a
/// file under a wrong one has to be shown to it under the right one. Bytes that were mended are
/// shown instead of the file.
class FolderFiles : public Assimp::DefaultIOSystem {
public:
    FolderFiles(const std::string& path, const std::string& shownAs, std::string mended)
        : path_(path), shownAs_(shownAs),
          folder_(std::filesystem::path(path).parent_path().string()), mended_(std::move(mended))
    {
    }

    bool Exists(const char* file) const override { return !Resolve(file).empty(); }

    Assimp::IOStream* Open(const char* file, const char* mode) override
    {
        const std::string path = Resolve(file);
        if (path.empty() || !mode || *mode != 'r') {
            missing_.insert(std::filesystem::path(file ? file : "").filename().string());
            return nullptr;
        }
        if (path == path_ && !mended_.empty())
            return new Assimp::MemoryIOStream(reinterpret_cast<const std::uint8_t*>(mended_.data()),
                                              mended_.size());
        return DefaultIOSystem::Open(path.c_str(), mode);
    }

    const std::set<std::string>& Missing() const { return missing_; }

private:
    /// Empty when the file is not there or must not be opened.
    std::string Resolve(const char* file) const
    {
        namespace fs = std::filesystem;
        std::string name = file ? file : "";
        if (name == shownAs_)
            return path_;
        // Readers put the model's folder before a reference; what is left must stay below it.
        if (name.compare(0, folder_.size() + 1, folder_ + '/') == 0)
            name.erase(0, folder_.size() + 1);
        for (const std::string& reference : {name, PercentDecoded(name)}) {
            std::string path;
            std::error_code error;
            if (ResolveBelow(folder_, reference, path) && fs::is_regular_file(path, error))
                return path;
        }
        return {};
    }

    std::string path_;
    std::string shownAs_;
    std::string folder_;
    std::string mended_;
    std::set<std::string> missing_;
};

class Progress : public Assimp::ProgressHandler {
public:
    explicit Progress(ImportMonitor* monitor) : monitor_(monitor) {}

    bool Update(float fraction) override
    {
        if (monitor_ && fraction >= 0)
            monitor_->Progress(ImportStage::Read, std::min(1.0, static_cast<double>(fraction)));
        return !IsCancelled(monitor_);
    }

private:
    ImportMonitor* monitor_;
};

// ---- one structure for both readers

/// A node of a mesh file: the meshes that it shows make one part.
struct MeshNode {
    std::string name;
    std::string id;
    std::string meshName;
    Placement placement;
    /// Indices of the toolkit's meshes, one a face.
    std::vector<unsigned> meshes;
    std::vector<std::size_t> children;
};

/// A name that the toolkit made up for a node or mesh without one.
bool IsInvented(const std::string& name, const std::string& path)
{
    if (IsReaderPlaceholder(name))
        return true;
    static const std::set<std::string> invented{
        "defaultobject", "g_default", "DefaultMaterial", "$ColladaAutoName$", "ROOT", "RootNode",
        "3MF",           "XML"};
    const bool isTag = name.size() > 1 && name.front() == '<' && name.back() == '>';
    return isTag || invented.count(name) > 0 || name.compare(0, 16, "$ColladaAutoName") == 0 ||
           name == std::filesystem::path(path).filename().string();
}

std::string NameFrom(const aiString& text, const std::string& path)
{
    const std::string name = Trimmed(ToUtf8({text.C_Str(), text.length}));
    return IsInvented(name, path) ? std::string() : name;
}

/// Three corners, all of which exist.
bool IsUsable(const aiFace& face, const aiMesh& mesh)
{
    return face.mNumIndices == 3 &&
           std::all_of(face.mIndices, face.mIndices + 3,
                       [&](unsigned corner) { return corner < mesh.mNumVertices; });
}

gp_Pnt PointAt(const aiVector3D& v)
{
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

/// The triangles of a mesh whose corners exist, as a face without surface.
TopoDS_Face FaceOf(const aiMesh& mesh)
{
    TopoDS_Face face;
    std::vector<const aiFace*> triangles;
    triangles.reserve(mesh.mNumFaces);
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
        if (IsUsable(mesh.mFaces[i], mesh))
            triangles.push_back(&mesh.mFaces[i]);
    }
    if (triangles.empty()) {
        BRep_Builder().MakeFace(face);
        return face;
    }
    Handle(Poly_Triangulation) result =
        new Poly_Triangulation(static_cast<int>(mesh.mNumVertices),
                               static_cast<int>(triangles.size()), /*hasUVNodes=*/Standard_False);
    for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
        result->SetNode(static_cast<int>(i) + 1, PointAt(mesh.mVertices[i]));
    }
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        const unsigned* corner = triangles[i]->mIndices;
        result->SetTriangle(static_cast<int>(i) + 1,
                            Poly_Triangle(static_cast<int>(corner[0]) + 1,
                                          static_cast<int>(corner[1]) + 1,
                                          static_cast<int>(corner[2]) + 1));
    }
    BRep_Builder().MakeFace(face, result);
    return face;
}

Colour ColourOf(const aiScene& scene, const aiMesh& mesh)
{
    if (mesh.mMaterialIndex >= scene.mNumMaterials)
        return 0;
    aiColor4D colour;
    const aiMaterial& material = *scene.mMaterials[mesh.mMaterialIndex];
    if (material.Get(AI_MATKEY_BASE_COLOR, colour) != aiReturn_SUCCESS &&
        material.Get(AI_MATKEY_COLOR_DIFFUSE, colour) != aiReturn_SUCCESS)
        return 0;
    const auto share = [](float value) {
        return std::isfinite(value) ? static_cast<double>(std::clamp(value, 0.F, 1.F)) : 0.0;
    };
    const Quantity_Color rgb(share(colour.r), share(colour.g), share(colour.b), Quantity_TOC_sRGB);
    const Quantity_ColorRGBA rgba(rgb, static_cast<float>(share(colour.a)));
    return ToColour(rgba);
}

/// Turns nodes into products and components; meshes that several nodes show become one part.
class MeshModel {
public:
    MeshModel(const aiScene& scene, ImportedModel& model) : scene_(scene), model_(model) {}

    void Build(const std::vector<MeshNode>& nodes, const std::vector<std::size_t>& roots,
               const std::string& name)
    {
        model_.root = NewProduct(name);
        model_.products[model_.root].isFileRoot = true;
        std::vector<std::pair<std::size_t, std::uint32_t>> pending;
        const auto add = [&](std::size_t child, std::uint32_t parent) {
            const MeshNode& node = nodes[child];
            Component component;
            component.product = ProductOf(node);
            component.name = node.name;
            component.id = node.id;
            component.placement = node.placement;
            if (!node.children.empty())
                pending.emplace_back(child, component.product);
            model_.products[parent].components.push_back(std::move(component));
        };
        for (const std::size_t root : roots)
            add(root, model_.root);
        while (!pending.empty()) {
            const auto [node, product] = pending.back();
            pending.pop_back();
            for (const std::size_t child : nodes[node].children)
                add(child, product);
        }
    }

private:
    std::uint32_t NewProduct(const std::string& name)
    {
        model_.products.emplace_back().name = name;
        return static_cast<std::uint32_t>(model_.products.size() - 1);
    }

    /// A node with children is a product of its own; of a leaf the meshes are.
    std::uint32_t ProductOf(const MeshNode& node)
    {
        const bool isLeaf = node.children.empty() && !node.meshes.empty();
        if (isLeaf) {
            const auto known = parts_.find(node.meshes);
            if (known != parts_.end())
                return known->second;
        }
        const bool isNamedByMesh = node.name.empty() || (isLeaf && !node.meshName.empty());
        const std::uint32_t product = NewProduct(isNamedByMesh ? node.meshName : node.name);
        if (!node.meshes.empty()) {
            model_.products[product].geometry = GeometryOf(node.meshes);
            model_.products[product].shapeName = node.meshName;
        }
        if (isLeaf)
            parts_.emplace(node.meshes, product);
        return product;
    }

    std::uint32_t GeometryOf(const std::vector<unsigned>& meshes)
    {
        const auto known = geometries_.find(meshes);
        if (known != geometries_.end())
            return known->second;
        TopoDS_Compound shape;
        BRep_Builder builder;
        builder.MakeCompound(shape);
        std::vector<Colour> colours;
        for (const unsigned mesh : meshes) {
            builder.Add(shape, FaceOf(*scene_.mMeshes[mesh]));
            colours.push_back(ColourOf(scene_, *scene_.mMeshes[mesh]));
        }
        const std::uint32_t index = AddNativeShape(shape, model_);
        model_.geometries[index].faceColours = std::move(colours);
        geometries_.emplace(meshes, index);
        return index;
    }

    const aiScene& scene_;
    ImportedModel& model_;
    std::map<std::vector<unsigned>, std::uint32_t> parts_;
    std::map<std::vector<unsigned>, std::uint32_t> geometries_;
};

// ---- reading

/// One file on its way through the toolkit.
class Reading {
public:
    /// `mended` is what the toolkit sees instead of the file; empty: the file.
    Reading(const std::string& path, ModelFormat format, std::string mended, ImportMonitor* monitor)
        : path_(path), format_(format),
          shownAs_(std::filesystem::path(path).replace_extension(ExtensionOf(format)).string()),
          files_(new FolderFiles(path, shownAs_, std::move(mended)))
    {
        // Both are the importer's from here on.
        importer_.SetIOHandler(files_);
        importer_.SetProgressHandler(new Progress(monitor));
    }

    /// Empty, or the reason in one line.
    std::string Read() { return importer_.ReadFile(shownAs_, 0) ? std::string() : Reason(); }

    /// Makes triangles of polygons.
    std::string Triangulate()
    {
        return importer_.ApplyPostProcessing(aiProcess_Triangulate) ? std::string() : Reason();
    }

    const aiScene& Scene() const { return *importer_.GetScene(); }

    void WarnOfMissing(ImportedModel& model) const
    {
        // Without the material file that an OBJ names, its reader tries the model's own name.
        const std::string guess =
            std::filesystem::path(path_).replace_extension(".mtl").filename().string();
        for (const std::string& name : files_->Missing()) {
            if (name == guess && files_->Missing().size() > 1)
                continue;
            model.warnings.push_back("the referenced file " + Quoted(name) + " could not be read");
        }
    }

private:
    /// The toolkit's reason, without the path that some of its texts hold.
    std::string Reason() const
    {
        std::string reason = importer_.GetErrorString();
        for (const std::string& name : {shownAs_, path_}) {
            for (std::size_t at = reason.find(name); at != std::string::npos;
                 at = reason.find(name))
                reason.replace(at, name.size(), "the file");
        }
        // Some texts quote the rest of the file.
        reason = Shortened(OneLine(reason), 100);
        const std::string what = std::string("the ") + NameOf(format_) + " file cannot be read";
        return reason.empty() ? what : what + " (" + reason + ")";
    }

    std::string path_;
    ModelFormat format_;
    std::string shownAs_;
    FolderFiles* files_;
    Assimp::Importer importer_;
};

std::uint64_t CountTriangles(const aiMesh& mesh)
{
    std::uint64_t triangles = 0;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i)
        triangles += mesh.mFaces[i].mNumIndices >= 3 ? mesh.mFaces[i].mNumIndices - 2 : 0;
    return triangles;
}

bool HasVertices(const aiScene& scene)
{
    return std::any_of(scene.mMeshes, scene.mMeshes + scene.mNumMeshes,
                       [](const aiMesh* mesh) { return mesh->mNumVertices > 0; });
}

/// Makes a point of each face with a corner that is not there: the triangulation would read it.
void DropBadCorners(const aiScene& scene)
{
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[i];
        for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
            aiFace& face = mesh.mFaces[f];
            const bool isGood =
                std::all_of(face.mIndices, face.mIndices + face.mNumIndices,
                            [&](unsigned corner) { return corner < mesh.mNumVertices; });
            if (!isGood && mesh.mNumVertices > 0) {
                face.mIndices[0] = 0;
                face.mNumIndices = 1;
            }
        }
    }
}

/// The toolkit's triangulation aborts the process when a mesh says that it has polygons and has
/// none, as those of files that are cut off do.
void CorrectPrimitiveTypes(const aiScene& scene)
{
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        aiMesh& mesh = *scene.mMeshes[i];
        unsigned types = 0;
        for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
            switch (mesh.mFaces[f].mNumIndices) {
            case 0:
            case 1:
                types |= aiPrimitiveType_POINT;
                break;
            case 2:
                types |= aiPrimitiveType_LINE;
                break;
            case 3:
                types |= aiPrimitiveType_TRIANGLE;
                break;
            default:
                types |= aiPrimitiveType_POLYGON;
            }
        }
        if (types != 0)
            mesh.mPrimitiveTypes = types;
    }
}

/// What the file states itself, of the formats in which the toolkit does not notice an end too
/// early.
MeshFileState StateOf(const std::string& path, ModelFormat format, const std::string& mended)
{
    if (format != ModelFormat::Ply && format != ModelFormat::Obj && format != ModelFormat::Stl)
        return {};
    if (!mended.empty())
        return CheckMeshFile(mended, format);
    std::ifstream stream(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    return CheckMeshFile(bytes, format);
}

/// Faces without corners stand where a file ended before all that it announced.
std::string JudgeWholeness(const aiScene& scene, ModelFormat format)
{
    std::uint64_t faces = 0;
    std::uint64_t whole = 0;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[i];
        faces += mesh.mNumFaces;
        whole += static_cast<std::uint64_t>(
            std::count_if(mesh.mFaces, mesh.mFaces + mesh.mNumFaces,
                          [](const aiFace& face) { return face.mNumIndices > 0; }));
    }
    if (whole == faces)
        return {};
    return std::string("the ") + NameOf(format) + " file is cut off or malformed: only " +
           Grouped(whole) + " of " + Grouped(faces) + " faces could be read";
}

std::uint64_t CountTriangles(const aiScene& scene)
{
    std::uint64_t triangles = 0;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i)
        triangles += CountTriangles(*scene.mMeshes[i]);
    return triangles;
}

Placement PlacementOf(const aiMatrix4x4& m)
{
    // Four rows of four floats; the last is 0 0 0 1.
    Placement placement;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 4; ++column)
            placement.rows[row * 4 + column] = static_cast<double>(m[row][column]);
    }
    return placement;
}

/// Flattens the toolkit's nodes; the children of a root that shows nothing itself are the file's
/// roots.
class NodeList {
public:
    NodeList(const aiScene& scene, const std::string& path)
    {
        std::vector<std::pair<const aiNode*, std::size_t>> pending{{scene.mRootNode, 0}};
        nodes.emplace_back();
        while (!pending.empty()) {
            const auto [source, index] = pending.back();
            pending.pop_back();
            Fill(scene, *source, path, index);
            for (unsigned i = 0; i < source->mNumChildren; ++i) {
                nodes[index].children.push_back(nodes.size());
                pending.emplace_back(source->mChildren[i], nodes.size());
                nodes.emplace_back().id = std::to_string(i + 1);
            }
        }
        const bool rootShows = !nodes[0].meshes.empty() || nodes[0].children.empty();
        roots = rootShows ? std::vector<std::size_t>{0} : nodes[0].children;
    }

    std::vector<MeshNode> nodes;
    std::vector<std::size_t> roots;

private:
    void Fill(const aiScene& scene, const aiNode& source, const std::string& path,
              std::size_t index)
    {
        MeshNode& node = nodes[index];
        node.name = NameFrom(source.mName, path);
        node.placement = PlacementOf(source.mTransformation);
        for (unsigned i = 0; i < source.mNumMeshes; ++i) {
            if (source.mMeshes[i] < scene.mNumMeshes)
                node.meshes.push_back(source.mMeshes[i]);
        }
        if (!node.meshes.empty())
            node.meshName = NameFrom(scene.mMeshes[node.meshes.front()]->mName, path);
    }
};

void FillMesh(const aiScene& scene, const std::string& path, ImportedModel& model)
{
    const NodeList list(scene, path);
    MeshModel(scene, model)
        .Build(list.nodes, list.roots, ToUtf8(std::filesystem::path(path).stem().string()));
    std::size_t bare = 0;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i)
        bare += CountTriangles(*scene.mMeshes[i]) == 0 ? 1U : 0U;
    if (bare > 0)
        model.warnings.push_back(std::to_string(bare) +
                                 " meshes of points or lines have no triangles");
}

// ---- glTF

/// Matches the toolkit's nodes to the file's, which keep what the toolkit drops: missing names,
/// extras.
class GltfMatch {
public:
    GltfMatch(const GltfFile& file, const aiScene& scene) : file_(file), scene_(scene) {}

    /// False when the toolkit built another structure than the file states.
    bool Run()
    {
        nodes.resize(file_.nodes.size());
        std::vector<std::pair<std::uint32_t, const aiNode*>> pending;
        const aiNode& top = *scene_.mRootNode;
        // A scene with one root has that root on top, one with several a node of the toolkit's
        // making.
        if (file_.roots.size() == 1) {
            pending.emplace_back(file_.roots[0], &top);
        } else {
            if (top.mNumChildren != file_.roots.size())
                return false;
            for (std::size_t i = 0; i < file_.roots.size(); ++i)
                pending.emplace_back(file_.roots[i], top.mChildren[i]);
        }
        while (!pending.empty()) {
            const auto [index, source] = pending.back();
            pending.pop_back();
            const std::vector<std::uint32_t>& children = file_.nodes[index].children;
            if (source->mNumChildren != children.size() || !Fill(index, *source))
                return false;
            for (std::size_t i = 0; i < children.size(); ++i)
                pending.emplace_back(children[i], source->mChildren[i]);
        }
        return true;
    }

    std::vector<MeshNode> nodes;
    /// The toolkit's first mesh of each mesh of the file that the scene shows.
    std::map<std::uint32_t, unsigned> firstMesh;

private:
    bool Fill(std::uint32_t index, const aiNode& source)
    {
        const GltfNode& node = file_.nodes[index];
        MeshNode& result = nodes[index];
        result.name = node.name;
        result.id = node.id;
        result.placement = node.placement;
        result.children.assign(node.children.begin(), node.children.end());
        if (node.mesh == NO_MESH)
            return source.mNumMeshes == 0;
        const GltfMesh& mesh = file_.meshes[node.mesh];
        if (source.mNumMeshes != mesh.triangles.size())
            return false;
        result.meshName = mesh.name;
        result.meshes.assign(source.mMeshes, source.mMeshes + source.mNumMeshes);
        if (!result.meshes.empty())
            firstMesh.emplace(node.mesh, result.meshes.front());
        return true;
    }

    const GltfFile& file_;
    const aiScene& scene_;
};

void WarnOfLosses(const GltfFile& file, const GltfMatch& match, const aiScene& scene,
                  std::vector<std::string>& warnings)
{
    std::size_t bare = 0;
    for (const auto& [index, first] : match.firstMesh) {
        const GltfMesh& mesh = file.meshes[index];
        bare += mesh.withoutTriangles;
        std::uint64_t stated = 0;
        std::uint64_t read = 0;
        for (std::size_t p = 0; p < mesh.triangles.size(); ++p) {
            stated += mesh.triangles[p];
            const aiMesh& result = *scene.mMeshes[first + p];
            read += static_cast<std::uint64_t>(
                std::count_if(result.mFaces, result.mFaces + result.mNumFaces,
                              [&](const aiFace& face) { return IsUsable(face, result); }));
        }
        if (read < stated)
            warnings.push_back("mesh " + Quoted(mesh.name) + ": only " + Grouped(read) + " of " +
                               Grouped(stated) + " triangles could be read");
    }
    if (bare > 0)
        warnings.push_back(std::to_string(bare) +
                           " primitives of points or lines have no triangles");
}

std::string LimitDepth(const GltfFile& file, const ImportOptions& options)
{
    ImportedModel skeleton;
    skeleton.products.resize(file.nodes.size() + 1);
    for (std::size_t i = 0; i < file.nodes.size(); ++i) {
        for (const std::uint32_t child : file.nodes[i].children)
            skeleton.products[i].components.emplace_back().product = child;
    }
    skeleton.root = static_cast<std::uint32_t>(file.nodes.size());
    skeleton.products.back().isFileRoot = true;
    for (const std::uint32_t root : file.roots)
        skeleton.products.back().components.emplace_back().product = root;
    return JudgeExpansion(skeleton, options);
}

std::string FillGltf(const GltfFile& file, const aiScene& scene, const std::string& path,
                     ImportedModel& model)
{
    GltfMatch match(file, scene);
    if (!match.Run())
        return "the glTF file cannot be read (its parts do not match its structure)";
    std::string name = file.sceneName;
    if (name.empty())
        name = ToUtf8(std::filesystem::path(path).stem().string());
    MeshModel(scene, model).Build(match.nodes, {file.roots.begin(), file.roots.end()}, name);
    WarnOfLosses(file, match, scene, model.warnings);
    return {};
}

}  // namespace

std::string ReadGltf(const std::string& path, ModelFormat format, const ImportOptions& options,
                     ImportMonitor* monitor, ImportedModel& model)
{
    GltfFile file;
    if (std::string reason = ReadGltfFile(path, format, file); !reason.empty())
        return reason;
    if (std::string reason = LimitDepth(file, options); !reason.empty())
        return reason;
    model.warnings.insert(model.warnings.end(), file.warnings.begin(), file.warnings.end());
    std::string reason;
    const std::string fault = RunGuarded([&] {
        Reading reading(path, format, MendedBytes(path, format), monitor);
        reason = reading.Read();
        if (reason.empty() && !IsCancelled(monitor))
            reason = FillGltf(file, reading.Scene(), path, model);
        reading.WarnOfMissing(model);
    });
    return fault.empty() ? reason : fault;
}

std::string ReadMesh(const std::string& path, ModelFormat format, ImportMonitor* monitor,
                     ImportedModel& model)
{
    std::string reason;
    const std::string fault = RunGuarded([&] {
        std::string mended = MendedBytes(path, format);
        const MeshFileState state = StateOf(path, format, mended);
        reason = state.problem;
        if (!reason.empty())
            return;
        Reading reading(path, format, std::move(mended), monitor);
        reason = reading.Read();
        if (!reason.empty() || IsCancelled(monitor))
            return;
        reason = JudgeWholeness(reading.Scene(), format);
        if (!reason.empty())
            return;
        if (state.faces > 0 && state.badFaces == state.faces) {
            reason = std::string("no face of the ") + NameOf(format) + " file can be used";
            return;
        }
        DropBadCorners(reading.Scene());
        const std::uint64_t stated = CountTriangles(reading.Scene());
        if (state.badFaces > 0)
            model.warnings.push_back(Grouped(state.badFaces) + " of " + Grouped(state.faces) +
                                     " faces are lost (too few corners, or corners that are not "
                                     "there)");
        CorrectPrimitiveTypes(reading.Scene());
        reason = reading.Triangulate();
        if (!reason.empty())
            return;
        const std::uint64_t read = CountTriangles(reading.Scene());
        if (read < stated)
            model.warnings.push_back("only " + Grouped(read) + " of " + Grouped(stated) +
                                     " triangles could be made from the polygons");
        if (HasVertices(reading.Scene()))
            FillMesh(reading.Scene(), path, model);
        else
            reason = std::string("the ") + NameOf(format) + " file holds no triangles";
        reading.WarnOfMissing(model);
    });
    return fault.empty() ? reason : fault;
}

}  // namespace kuvimport
