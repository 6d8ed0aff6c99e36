#include "import/MeshFileCheck.h"

#include "import_files.h"

#include <array>

namespace {

using namespace kuvimport;
using importtest::Folder;
using importtest::Import;

ImportResult ImportText(const std::string& name, const std::string& text)
{
    const Folder folder;
    return Import(folder.Write(name, text));
}

std::uint64_t TrianglesOf(const ImportResult& result)
{
    return result.model ? result.model->Count().triangles : 0;
}

std::string PlyHeader(const std::string& format, const std::string& vertices,
                      const std::string& faces)
{
    return "ply\nformat " + format + " 1.0\nelement vertex " + vertices +
           "\nproperty float x\nproperty float y\nproperty float z\nelement face " + faces +
           "\nproperty list uchar int vertex_indices\nend_header\n";
}

const std::string CORNERS = "0 0 0\n1 0 0\n1 1 0\n0 1 0\n";

/// Four corners and the triangles 0 1 2 and 0 2 3 in little-endian binary form.
std::string BinaryPly()
{
    std::string bytes = PlyHeader("binary_little_endian", "4", "2");
    const auto add = [&](const auto value) {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    for (const float number : {0.F, 0.F, 0.F, 1.F, 0.F, 0.F, 1.F, 1.F, 0.F, 0.F, 1.F, 0.F})
        add(number);
    for (const auto& face : {std::array<int, 3>{0, 1, 2}, std::array<int, 3>{0, 2, 3}}) {
        bytes += '\3';
        for (const int corner : face)
            add(corner);
    }
    return bytes;
}

std::string Facet()
{
    return "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 1 1 0\n"
           "endloop\nendfacet\n";
}

TEST(MeshFileCheck, ATextPlyWithAllItsRowsIsRead)
{
    const ImportResult result =
        ImportText("a.ply", PlyHeader("ascii", "4", "2") + CORNERS + "3 0 1 2\n3 0 2 3\n");
    EXPECT_EQ(TrianglesOf(result), 2U) << result.error;
    EXPECT_TRUE(result.model && result.model->warnings.empty());
}

TEST(MeshFileCheck, ATextPlyWithFewerRowsThanItsHeaderStatesIsCutOff)
{
    const std::string header = PlyHeader("ascii", "4", "2");
    for (const std::string& body : {std::string(), std::string("0 0 0\n"), CORNERS,
                                    CORNERS + "3 0 1 2\n", CORNERS + "3 0 1 2\n3 0 2"}) {
        const ImportResult result = ImportText("a.ply", header + body);
        EXPECT_FALSE(result.model) << body;
        EXPECT_EQ(result.error, "the ply file is cut off") << body;
    }
}

TEST(MeshFileCheck, ABinaryPlyThatEndsEarlyIsCutOff)
{
    const std::string whole = BinaryPly();
    EXPECT_EQ(TrianglesOf(ImportText("a.ply", whole)), 2U);
    for (const std::size_t missing : {1U, 13U, 20U, 26U, 60U, 74U}) {
        const ImportResult result = ImportText("a.ply", whole.substr(0, whole.size() - missing));
        EXPECT_FALSE(result.model) << missing;
        EXPECT_EQ(result.error, "the ply file is cut off") << missing;
    }
}

TEST(MeshFileCheck, APlyHeaderWithMoreRowsThanBytesIsAnError)
{
    for (const std::string format : {"ascii", "binary_little_endian", "binary_big_endian"}) {
        for (const std::string count : {"4000000000", "99999999999999999999999", "-1"}) {
            const ImportResult result =
                ImportText("a.ply", PlyHeader(format, count, "2") + CORNERS + "3 0 1 2\n");
            EXPECT_FALSE(result.model);
            EXPECT_EQ(result.error, "the ply header states more rows than the file can hold");
        }
    }
}

TEST(MeshFileCheck, ATextStlThatDoesNotEndItsSolidIsCutOff)
{
    for (const std::string& text : {"solid a\n" + Facet(), "solid a\n" + Facet() + "facet normal 0",
                                    "solid a\n" + Facet() + "endsolid a\nsolid b\n" + Facet()}) {
        const ImportResult result = ImportText("a.stl", text);
        EXPECT_FALSE(result.model) << text;
        EXPECT_EQ(result.error, "the stl file is cut off") << text;
    }
}

TEST(MeshFileCheck, CommentsAndBlankLinesMayFollowTheEndOfATextStl)
{
    const std::string solid = "solid a\n" + Facet();
    for (const std::string end :
         {"endsolid", "endsolid a\n\n", "ENDSOLID a\r\n # comment\r\n \r\n"})
        EXPECT_EQ(CheckMeshFile(solid + end, ModelFormat::Stl).problem, "") << end;
    const ImportResult two =
        ImportText("a.stl", solid + "endsolid a\nsolid b\n" + Facet() + "endsolid b\n\n");
    EXPECT_EQ(TrianglesOf(two), 2U) << two.error;
}

TEST(MeshFileCheck, APlyFaceWithACornerThatIsNotThereIsLostWithAWarning)
{
    const ImportResult result =
        ImportText("a.ply", PlyHeader("ascii", "4", "2") + CORNERS + "4 0 1 2 9\n3 0 2 3\n");
    EXPECT_EQ(TrianglesOf(result), 1U) << result.error;
    ASSERT_TRUE(result.model);
    EXPECT_TRUE(importtest::AnyContains(result.model->warnings, "1 of 2 faces are lost"));
}

TEST(MeshFileCheck, AnObjFaceWithTooFewCornersIsLostWithAWarning)
{
    const std::string corners = "v 0 0 0\nv 1 0 0\nv 1 1 0\n";
    const ImportResult result = ImportText("a.obj", corners + "f 1 2 3\nf 1 2\n");
    EXPECT_EQ(TrianglesOf(result), 1U) << result.error;
    ASSERT_TRUE(result.model);
    EXPECT_TRUE(importtest::AnyContains(result.model->warnings, "1 of 2 faces are lost"));
}

TEST(MeshFileCheck, AFileWhoseFacesAreAllBadIsAnError)
{
    const ImportResult ply =
        ImportText("a.ply", PlyHeader("ascii", "4", "1") + CORNERS + "3 0 1 9\n");
    EXPECT_EQ(ply.error, "no face of the ply file can be used");
    const ImportResult obj = ImportText("a.obj", "v 0 0 0\nv 1 0 0\nf 1 2\n");
    EXPECT_EQ(obj.error, "no face of the obj file can be used");
}

}  // namespace
