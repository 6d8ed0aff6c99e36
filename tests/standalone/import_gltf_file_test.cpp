#include "import/GltfFile.h"

#include "import_files.h"

#include <cstdint>

namespace {

using namespace kuvimport;
using importtest::Folder;

/// Reads `{"asset":..., BODY}`; answers the reason of a refusal.
std::string Read(const std::string& body, GltfFile& file)
{
    const Folder folder;
    folder.Write("there.bin", "12345678");
    return ReadGltfFile(folder.Write("a.gltf", "{\"asset\":{\"version\":\"2.0\"}," + body + "}"),
                        ModelFormat::Gltf, file);
}

std::string Refusal(const std::string& body)
{
    GltfFile file;
    return Read(body, file);
}

std::string Word(std::size_t value)
{
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
    return bytes;
}

/// A GLB file with the lengths that it states to be.
std::string Glb(const std::string& text, std::size_t extraLength = 0, std::size_t extraChunk = 0)
{
    return "glTF" + Word(2) + Word(20 + text.size() + extraLength) +
           Word(text.size() + extraChunk) + "JSON" + text;
}

std::string RefusalOfGlb(const std::string& bytes)
{
    const Folder folder;
    GltfFile file;
    return ReadGltfFile(folder.Write("a.glb", bytes), ModelFormat::Glb, file);
}

const char* const SCENE = R"("scenes":[{"nodes":[0]}],)";

TEST(GltfFile, ANodeThatIsItsOwnDescendantIsRefused)
{
    EXPECT_EQ(Refusal(std::string(SCENE) + R"("nodes":[{"children":[0]}])"),
              "node 0 is its own child");
    EXPECT_EQ(Refusal(std::string(SCENE) +
                      R"("nodes":[{},{"children":[2]},{"children":[3]},{"children":[1]}])"),
              "node 2 is its own ancestor")
        << "also where no scene shows it";
}

TEST(GltfFile, ANodeWithTwoParentsIsRefused)
{
    EXPECT_EQ(Refusal(std::string(SCENE) + R"("nodes":[{"children":[1,2]},{"children":[2]},{}])"),
              "node 2 has two parents");
    EXPECT_EQ(Refusal(std::string(SCENE) + R"("nodes":[{"children":[1,1]},{}])"),
              "node 1 has two parents");
    EXPECT_EQ(Refusal(R"("scenes":[{"nodes":[0,1]}],"nodes":[{"children":[1]},{}])"),
              "node 1 is a root of the scene and has a parent");
    EXPECT_EQ(Refusal(R"("scenes":[{"nodes":[0,0]}],"nodes":[{}])"),
              "node 0 is a root of the scene and has a parent")
        << "a root that is listed twice occurs twice";
}

TEST(GltfFile, IndicesOutOfRangeAreRefused)
{
    EXPECT_EQ(Refusal(std::string(SCENE) + R"("nodes":[{"children":[7]}])"),
              "node 0 refers to node 7, which does not exist");
    EXPECT_EQ(Refusal(std::string(SCENE) + R"("nodes":[{"mesh":0}])"),
              "node 0 refers to mesh 0, which does not exist");
    EXPECT_EQ(Refusal(R"("scene":1,"scenes":[{"nodes":[0]}],"nodes":[{}])"),
              "scene 1 does not exist");
    EXPECT_EQ(Refusal(std::string(SCENE) + R"("nodes":[{"children":[-1]}])"),
              "a child of node 0 is not a whole number of at least 0");
}

TEST(GltfFile, ALongChainOfNodesIsJudgedWithoutRecursionAndInLinearTime)
{
    constexpr int LENGTH = 200000;
    std::string nodes = "{}";
    for (int i = 1; i < LENGTH; ++i)
        nodes += ",{\"children\":[" + std::to_string(i - 1) + "]}";
    GltfFile file;
    EXPECT_EQ(Read("\"scenes\":[{\"nodes\":[" + std::to_string(LENGTH - 1) + "]}],\"nodes\":[" +
                       nodes + "]",
                   file),
              "");
    EXPECT_EQ(file.nodes.size(), static_cast<std::size_t>(LENGTH));
}

TEST(GltfFile, BuffersOutsideTheFoldersOfTheFileAreRefused)
{
    for (const char* uri :
         {"../there.bin", "/etc/passwd", "file:///etc/passwd", "http://example.org/a.bin",
          "sub/../../there.bin", "..%2Fthere.bin", "..\\\\there.bin"}) {
        const std::string reason =
            Refusal(std::string(SCENE) + R"("nodes":[{}],"buffers":[{"byteLength":8,"uri":")" +
                    uri + "\"}]");
        EXPECT_NE(reason.find("buffer 0 lies outside the file's folder"), std::string::npos)
            << uri << ": " << reason;
    }
}

TEST(GltfFile, ABufferThatIsMissingOrCutIsRefused)
{
    const auto refusal = [](const std::string& buffer) {
        return Refusal(std::string(SCENE) + "\"nodes\":[{}],\"buffers\":[" + buffer + "]");
    };
    EXPECT_EQ(refusal(R"({"byteLength":8,"uri":"there.bin"})"), "");
    EXPECT_EQ(refusal(R"({"byteLength":9,"uri":"there.bin"})"),
              "the referenced file \"there.bin\" is cut off");
    EXPECT_EQ(refusal(R"({"byteLength":8,"uri":"gone.bin"})"),
              "the referenced file \"gone.bin\" is missing");
    EXPECT_EQ(refusal(R"({"byteLength":8})"), "buffer 0 has no data");
    EXPECT_EQ(refusal(R"({"byteLength":3,"uri":"data:;base64,AAAA"})"), "");
    EXPECT_EQ(refusal(R"({"byteLength":4,"uri":"data:;base64,AAAA"})"),
              "buffer 0 has malformed data");
    EXPECT_EQ(refusal(R"({"byteLength":3,"uri":"data:;base64,A*AA"})"),
              "buffer 0 has malformed data");
}

TEST(GltfFile, AnAccessorBeyondItsBufferIsRefused)
{
    const auto refusal = [](const std::string& accessor) {
        return Refusal(std::string(SCENE) +
                       R"("nodes":[{"mesh":0}],"buffers":[{"byteLength":8,"uri":"there.bin"}],)"
                       R"("bufferViews":[{"buffer":0,"byteLength":8}],"accessors":[)" +
                       accessor + R"(],"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}])");
    };
    const std::string start = R"({"bufferView":0,"componentType":5121,"type":"SCALAR","count":)";
    EXPECT_EQ(refusal(start + "8}"), "");
    EXPECT_EQ(refusal(start + "9}"), "accessor 0 reaches beyond its buffer view");
    EXPECT_EQ(refusal(start + "18446744073709551615}"),
              "accessor 0 reaches beyond its buffer view");
    EXPECT_EQ(refusal(start + R"(1,"byteOffset":8})"), "accessor 0 reaches beyond its buffer view");
}

TEST(GltfFile, TrianglesFollowModeAndCorners)
{
    std::string primitives;
    for (int mode = 0; mode <= 6; ++mode)
        primitives += (mode ? ",{\"mode\":" : "{\"mode\":") + std::to_string(mode) +
                      R"(,"attributes":{"POSITION":0}})";
    primitives += R"(,{"attributes":{"POSITION":0},"indices":1})";
    GltfFile file;
    EXPECT_EQ(Read(std::string(SCENE) +
                       R"("nodes":[{"mesh":0}],"accessors":[)"
                       R"({"componentType":5126,"type":"VEC3","count":7},)"
                       R"({"componentType":5121,"type":"SCALAR","count":300}],)"
                       R"("meshes":[{"primitives":[)" +
                       primitives + "]}]",
                   file),
              "");
    ASSERT_EQ(file.meshes.size(), 1U);
    EXPECT_EQ(file.meshes[0].triangles, (std::vector<std::uint64_t>{0, 0, 0, 0, 2, 5, 5, 100}));
    EXPECT_EQ(file.meshes[0].withoutTriangles, 4U);
}

TEST(GltfFile, NamesAndIdentifiersOfTheExtrasAreKept)
{
    GltfFile file;
    ASSERT_EQ(Read(R"("scenes":[{"name":"Plant","nodes":[0,1,2]}],"nodes":[)"
                   R"({"name":" Rotor \u00e4 ","extras":{"id":"R-1"}},{"extras":{"guid":42}},)"
                   R"({"name":"=>[0:1:1:2]"}])",
                   file),
              "");
    EXPECT_EQ(file.sceneName, "Plant");
    EXPECT_EQ(file.nodes[0].name, "Rotor ä");
    EXPECT_EQ(file.nodes[0].id, "R-1");
    EXPECT_EQ(file.nodes[1].id, "42");
    EXPECT_EQ(file.nodes[2].name, "") << "a converter's placeholder";
    EXPECT_EQ(file.nodes[2].id, "2");
}

TEST(GltfFile, PlacementsComeFromMatrixOrFromTranslationRotationAndScale)
{
    GltfFile file;
    ASSERT_EQ(Read(R"("scenes":[{"nodes":[0,1]}],"nodes":[)"
                   R"({"matrix":[1,2,3,0, 4,5,6,0, 7,8,9,0, 10,11,12,1]},)"
                   R"({"translation":[1,2,3],"rotation":[0,0,1,0],"scale":[2,3,4]}])",
                   file),
              "");
    EXPECT_EQ(file.nodes[0].placement.rows,
              (std::array<double, 12>{1, 4, 7, 10, 2, 5, 8, 11, 3, 6, 9, 12}));
    EXPECT_EQ(file.nodes[1].placement.rows,
              (std::array<double, 12>{-2, 0, 0, 1, 0, -3, 0, 2, 0, 0, 4, 3}));
}

TEST(GltfFile, AGlbFileWithWrongLengthsIsRefused)
{
    const std::string text = R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],"nodes":[{}]})";
    EXPECT_EQ(RefusalOfGlb(Glb(text)), "");
    EXPECT_EQ(RefusalOfGlb(Glb(text, 4)).substr(0, 23), "the GLB file is cut off");
    EXPECT_EQ(RefusalOfGlb(Glb(text) + "  "), "the GLB file is longer than its header says");
    EXPECT_EQ(RefusalOfGlb(Glb(text, 0, 4)), "a chunk of the GLB file is longer than the file");
    EXPECT_EQ(RefusalOfGlb("glTF" + Word(1) + Word(12)), "GLB version 1 is not supported");
    EXPECT_EQ(RefusalOfGlb("glTF"), "the GLB file has no valid header");
}

TEST(GltfFile, JsonThatIsNestedWithoutEndIsRefused)
{
    EXPECT_EQ(Refusal("\"extras\":" + std::string(100000, '[') + std::string(100000, ']')),
              "the JSON is nested too deeply");
}

TEST(GltfFile, AnExtensionThatHidesTheGeometryIsRefusedOrReported)
{
    GltfFile file;
    EXPECT_EQ(Read(std::string(SCENE) +
                       R"("nodes":[{}],"extensionsRequired":["EXT_meshopt_compression"])",
                   file),
              "the extension EXT_meshopt_compression is not supported");
    EXPECT_EQ(Read(std::string(SCENE) +
                       R"("nodes":[{}],"extensionsRequired":["EXT_mesh_gpu_instancing"])",
                   file),
              "");
    EXPECT_TRUE(importtest::AnyContains(file.warnings, "EXT_mesh_gpu_instancing"));
}

TEST(ResolveBelow, FindsFilesBelowTheFolderOnly)
{
    const Folder folder;
    folder.Write("models/sub/a b.bin", "x");
    folder.Write("secret.bin", "x");
    std::string path;
    EXPECT_TRUE(ResolveBelow(folder / "models", "sub/a b.bin", path));
    EXPECT_EQ(importtest::ReadFile(path), "x");
    EXPECT_FALSE(ResolveBelow(folder / "models", "../secret.bin", path));
    EXPECT_FALSE(ResolveBelow(folder / "models", folder / "secret.bin", path));
    EXPECT_FALSE(ResolveBelow(folder / "models", "", path));
}

TEST(ResolveBelow, ASymbolicLinkDoesNotLeadOutOfTheFolder)
{
    const Folder folder;
    folder.Write("secret.bin", "x");
    folder.Write("models/a.gltf", "x");
    std::filesystem::create_symlink(folder / "secret.bin", folder / "models/link.bin");
    std::string path;
    EXPECT_FALSE(ResolveBelow(folder / "models", "link.bin", path));
}

TEST(PercentDecoded, OnlyWholeEscapesAreDecoded)
{
    EXPECT_EQ(PercentDecoded("a%20b%C3%a4"), "a bä");
    EXPECT_EQ(PercentDecoded("100%"), "100%");
    EXPECT_EQ(PercentDecoded("%zz%4"), "%zz%4");
}

}  // namespace
