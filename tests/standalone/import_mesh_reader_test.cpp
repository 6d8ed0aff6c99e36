#include "import/MeshReader.h"

#include "import_files.h"

#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include <memory>

namespace {

using namespace kuvimport;
using importtest::Folder;
using importtest::Import;
using importtest::ProductNamed;

std::string Base64(const std::string& bytes)
{
    static const char* const LETTERS =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group =
                group << 8 | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0U);
        for (std::size_t j = 0; j < 4; ++j)
            text += i + j > bytes.size() ? '=' : LETTERS[(group >> (18 - 6 * j)) & 63];
    }
    return text;
}

std::string Floats(std::initializer_list<float> numbers)
{
    std::string bytes;
    for (const float number : numbers)
        bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
    return bytes;
}

/// Four corners of a square, 48 bytes, and a glTF file around them.
std::string Square(const std::string& rest)
{
    const std::string points = Floats({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
    return R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":48,"uri":)"
           R"("data:application/octet-stream;base64,)" +
           Base64(points) +
           R"("}],"bufferViews":[{"buffer":0,"byteLength":48}],"accessors":[{"bufferView":0,)"
           R"("componentType":5126,"type":"VEC3","count":4,"min":[0,0,0],"max":[1,1,0]}],)" +
           rest + "}";
}

std::string Mode(int mode)
{
    return R"("meshes":[{"name":"square","primitives":[{"mode":)" + std::to_string(mode) +
           R"(,"attributes":{"POSITION":0}}]}])";
}

ImportResult ImportText(const std::string& name, const std::string& text)
{
    const Folder folder;
    return Import(folder.Write(name, text));
}

std::uint64_t TrianglesOf(const ImportResult& result)
{
    return result.model ? result.model->Count().triangles : 0;
}

TEST(MeshReader, StripsAndFansAreTriangles)
{
    for (const int mode : {5, 6}) {
        const ImportResult result = ImportText(
            "a.gltf", Square(R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)" + Mode(mode)));
        EXPECT_EQ(TrianglesOf(result), 2U) << result.error;
    }
}

TEST(MeshReader, PointsAndLinesAreWarnedOfAndHaveNoTriangles)
{
    for (const int mode : {0, 1, 2, 3}) {
        const ImportResult result = ImportText(
            "a.gltf", Square(R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)" + Mode(mode)));
        ASSERT_TRUE(result.model) << result.error;
        EXPECT_EQ(TrianglesOf(result), 0U);
        EXPECT_EQ(result.model->Count().faces, 1U)
            << "a primitive is a face also without triangles";
        EXPECT_TRUE(importtest::AnyContains(result.model->warnings, "points or lines"));
    }
}

TEST(MeshReader, QuantizedPositionsAreRead)
{
    // Signed bytes, four to a corner; the fourth is padding.
    const std::string points = {0, 0, 0, 0, 100, 0, 0, 0, 100, 100, 0, 0};
    const ImportResult result = ImportText(
        "a.gltf",
        R"({"asset":{"version":"2.0"},"extensionsUsed":["KHR_mesh_quantization"],)"
        R"("extensionsRequired":["KHR_mesh_quantization"],"buffers":[{"byteLength":12,"uri":)"
        R"("data:application/octet-stream;base64,)" +
            Base64(points) +
            R"("}],"bufferViews":[{"buffer":0,"byteLength":12,"byteStride":4}],"accessors":[)"
            R"({"bufferView":0,"componentType":5120,"type":"VEC3","count":3,"min":[0,0,0],)"
            R"("max":[100,100,0]}],"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)"
            R"("meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}]})");
    EXPECT_EQ(TrianglesOf(result), 1U) << result.error;
}

TEST(MeshReader, NodesAreOccurrencesAndAMeshOfSeveralNodesIsOnePart)
{
    const ImportResult result = ImportText(
        "plant.gltf", Square(R"("scenes":[{"nodes":[0,3]}],"nodes":[)"
                             R"({"name":"line","children":[1,2]},{"mesh":0,"name":"left"},)"
                             R"({"mesh":0},{"mesh":0,"name":"spare"}],)" +
                             Mode(5)));
    ASSERT_TRUE(result.model) << result.error;
    const ImportedModel& model = *result.model;
    const ModelCounts counts = model.Count();
    EXPECT_EQ(counts.instances, 4U);
    EXPECT_EQ(counts.reps, 3U);
    EXPECT_EQ(counts.products, 2U) << "the line and the square";
    EXPECT_EQ(counts.triangles, 6U);
    EXPECT_EQ(counts.trianglesUnique, 2U);
    EXPECT_EQ(model.products[model.root].name, "plant")
        << "the file's name where the scene has none";
    const Product& line = ProductNamed(model, "line");
    EXPECT_EQ(line.components[0].name, "left");
    EXPECT_EQ(line.components[1].name, "") << "the mesh's name is shown then";
    EXPECT_EQ(model.products[line.components[1].product].name, "square");
}

TEST(MeshReader, ANodeWithMeshAndChildrenIsAnAssemblyWithAShape)
{
    const ImportResult result =
        ImportText("a.gltf", Square(R"("scenes":[{"nodes":[0]}],"nodes":[)"
                                    R"({"name":"frame","mesh":0,"children":[1]},{"mesh":0}],)" +
                                    Mode(5)));
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(result.model->Count().reps, 2U);
    EXPECT_EQ(result.model->Count().triangles, 4U);
    EXPECT_EQ(result.model->Count().trianglesUnique, 2U);
    const Product& frame = ProductNamed(*result.model, "frame");
    EXPECT_EQ(frame.components.size(), 1U);
    EXPECT_NE(frame.geometry, NO_GEOMETRY);
}

TEST(MeshReader, EveryPrimitiveIsAFaceOfOnePart)
{
    const ImportResult result = ImportText(
        "a.gltf",
        Square(R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],"meshes":[{"primitives":[)"
               R"({"mode":5,"attributes":{"POSITION":0}},{"mode":0,"attributes":{"POSITION":0}},)"
               R"({"mode":6,"attributes":{"POSITION":0}}]}])"));
    ASSERT_TRUE(result.model) << result.error;
    ASSERT_EQ(result.model->geometries.size(), 1U);
    EXPECT_EQ(result.model->geometries[0].trianglesPerFace, (std::vector<std::uint32_t>{2, 0, 2}));
    EXPECT_TRUE(result.model->geometries[0].broughtTriangles);
    EXPECT_FALSE(result.model->tessellation);
}

TEST(MeshReader, OnlyTheDefaultSceneIsShown)
{
    const ImportResult result =
        ImportText("a.gltf", Square(R"("scene":1,"scenes":[{"nodes":[0]},{"nodes":[1]}],"nodes":[)"
                                    R"({"mesh":0,"name":"hidden"},{"mesh":0,"name":"shown"}],)" +
                                    Mode(5)));
    ASSERT_TRUE(result.model) << result.error;
    ASSERT_EQ(result.model->Count().instances, 1U);
    EXPECT_EQ(result.model->products[result.model->root].components[0].name, "shown");
}

TEST(MeshReader, MoreThan512LevelsOfNodesAreRefused)
{
    const auto chain = [](int length) {
        std::string nodes = R"({"mesh":0})";
        for (int i = 1; i < length; ++i)
            nodes += ",{\"children\":[" + std::to_string(i - 1) + "]}";
        return Square("\"scenes\":[{\"nodes\":[" + std::to_string(length - 1) + "]}],\"nodes\":[" +
                      nodes + "]," + Mode(5));
    };
    EXPECT_EQ(TrianglesOf(ImportText("a.gltf", chain(512))), 2U);
    EXPECT_EQ(ImportText("a.gltf", chain(513)).error,
              "the structure is 513 levels deep, more than 512");
}

TEST(MeshReader, ABufferIsFoundUnderItsEscapedName)
{
    const Folder folder;
    folder.Write("the points.bin", Floats({0, 0, 0, 1, 0, 0, 1, 1, 0}));
    const ImportResult result = Import(folder.Write(
        "a.gltf",
        R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":36,"uri":"the%20points.bin"}],)"
        R"("bufferViews":[{"buffer":0,"byteLength":36}],"accessors":[{"bufferView":0,)"
        R"("componentType":5126,"type":"VEC3","count":3,"min":[0,0,0],"max":[1,1,0]}],)"
        R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)"
        R"("meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}]})"));
    EXPECT_EQ(TrianglesOf(result), 1U) << result.error;
}

TEST(MeshReader, PolygonsOfAnObjFileBecomeTriangles)
{
    //  a square (2), a pentagon (3) and a triangle (1) in two objects
    const ImportResult result =
        ImportText("a.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv .5 1.5 0\n"
                            "o Deckel\nf 1 2 3 4\nf 1 2 3 5 4\no Gehäuse\nf 1 2 3\n");
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(result.model->Count().triangles, 6U);
    EXPECT_EQ(result.model->Count().reps, 2U);
    EXPECT_EQ(result.model->products[result.model->root].components[0].name, "Deckel");
    EXPECT_EQ(result.model->products[result.model->root].components[1].name, "Gehäuse");
    EXPECT_TRUE(result.model->warnings.empty());
}

TEST(MeshReader, AMaterialFileOutsideTheFolderIsNotOpened)
{
    const Folder folder;
    folder.Write("secret.mtl", "newmtl a\nKd 1 0 0\n");
    const ImportResult result = Import(folder.Write(
        "models/a.obj", "mtllib ../secret.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nusemtl a\nf 1 2 3\n"));
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_TRUE(
        importtest::AnyContains(result.model->warnings, "\"secret.mtl\" could not be read"));
}

TEST(MeshReader, MaterialsColourTheFaces)
{
    const Folder folder;
    folder.Write("a.mtl", "newmtl red\nKd 1 0 0\n");
    const ImportResult result = Import(
        folder.Write("a.obj", "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nusemtl red\nf 1 2 3\n"));
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(result.model->geometries.at(0).faceColours, (std::vector<Colour>{0xFF0000FFU}));
}

TEST(MeshReader, AFileUnderAForeignExtensionIsReadWithAWarning)
{
    const ImportResult result = ImportText("a.step", "solid rotor\nfacet normal 0 0 1\nouter loop\n"
                                                     "vertex 0 0 0\nvertex 1 0 0\nvertex 1 1 0\n"
                                                     "endloop\nendfacet\nendsolid rotor\n");
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(result.model->format, "stl");
    EXPECT_EQ(TrianglesOf(result), 1U);
    EXPECT_TRUE(importtest::AnyContains(result.model->warnings, "read as stl"));
}

TEST(MeshReader, AnAnonymousFileShowsItsOwnName)
{
    std::string binary(80, ' ');
    binary += std::string("\x01\0\0\0", 4) + Floats({0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 1, 0}) +
              std::string(2, '\0');
    const ImportResult result = ImportText("rotor.stl", binary);
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(result.model->products[result.model->root].name, "rotor");
    for (const Product& product : result.model->products)
        EXPECT_EQ(product.name.find('<'), std::string::npos) << product.name;
}

TEST(MeshReader, TheReasonOfAFailureDoesNotRepeatTheFile)
{
    const Folder folder;
    const std::string path = folder.Write("broken.stl", "this is no mesh at all");
    const ImportResult result = Import(path);
    EXPECT_FALSE(result.model);
    EXPECT_EQ(result.error.find(path), std::string::npos) << result.error;
    EXPECT_NE(result.error, "");
}

/// A square of four corners, as another program would write it.
void WriteAs(const std::string& format, const std::string& path)
{
    auto scene = std::make_unique<aiScene>();
    scene->mNumMaterials = 1;
    scene->mMaterials = new aiMaterial* [1] { new aiMaterial };
    auto* mesh = new aiMesh;
    mesh->mName = "square";
    mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
    mesh->mNumVertices = 4;
    mesh->mVertices = new aiVector3D[4]{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    mesh->mNumFaces = 2;
    mesh->mFaces = new aiFace[2];
    const unsigned corners[2][3] = {{0, 1, 2}, {0, 2, 3}};
    for (unsigned i = 0; i < 2; ++i) {
        mesh->mFaces[i].mNumIndices = 3;
        mesh->mFaces[i].mIndices = new unsigned[3]{corners[i][0], corners[i][1], corners[i][2]};
    }
    scene->mNumMeshes = 1;
    scene->mMeshes = new aiMesh* [1] { mesh };
    scene->mRootNode = new aiNode("top");
    auto* node = new aiNode("plate");
    node->mNumMeshes = 1;
    node->mMeshes = new unsigned[1]{0};
    scene->mRootNode->addChildren(1, &node);
    Assimp::Exporter exporter;
    ASSERT_EQ(exporter.Export(scene.get(), format, path), aiReturn_SUCCESS)
        << exporter.GetErrorString();
}

TEST(MeshReader, FilesOfOtherProgramsAreReadInEveryFormatThatIsOffered)
{
    const Folder folder;
    for (const char* format :
         {"collada", "obj", "stl", "stlb", "ply", "plyb", "gltf2", "glb2", "3mf"}) {
        const std::string given(format);
        const std::string extension = given == "collada" ? "dae"
                                      : given == "gltf2" ? "gltf"
                                      : given == "glb2"  ? "glb"
                                      : given == "stlb"  ? "stl"
                                      : given == "plyb"  ? "ply"
                                                         : given;
        const std::string path = folder / (given + "." + extension);
        WriteAs(given, path);
        const ImportResult result = Import(path);
        EXPECT_EQ(TrianglesOf(result), 2U) << format << ": " << result.error;
        ASSERT_TRUE(result.model) << format << ": " << result.error;
        EXPECT_EQ(result.model->format, extension == "glb" ? "gltf" : extension);
    }
}

TEST(MeshReader, APlyFileThatIsCutOffIsRefused)
{
    const std::string text = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\n"
                             "property float y\nproperty float z\nelement face 3\n"
                             "property list uchar int vertex_indices\nend_header\n"
                             "0 0 0\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 3\n3 0 1 2\n3 0 2 3\n";
    EXPECT_EQ(TrianglesOf(ImportText("a.ply", text)), 4U);
    for (const char* end : {"3 0 2 3", "3 0 1 2", "4 0 1 2 3"}) {
        const ImportResult result = ImportText("a.ply", text.substr(0, text.find(end)));
        EXPECT_FALSE(result.model) << end;
        EXPECT_NE(result.error, "");
    }
}

TEST(MeshReader, APlyHeaderWithoutEndIsRefused)
{
    for (const char* form : {"ascii", "binary_little_endian", "binary_big_endian"}) {
        const ImportResult result =
            ImportText("a.ply", std::string("ply\nformat ") + form + " 1.0\nelement ver");
        EXPECT_EQ(result.error, "the ply file is cut off (its header has no end)") << form;
    }
}

TEST(MeshReader, AnOffFileIsRead)
{
    const ImportResult result =
        ImportText("a.off", "OFF\n4 2 0\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n3 0 1 2\n3 0 2 3\n");
    EXPECT_EQ(TrianglesOf(result), 2U) << result.error;
}

}  // namespace
