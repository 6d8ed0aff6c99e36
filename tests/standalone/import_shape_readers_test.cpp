#include "import/ShapeReaders.h"

#include "import_files.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepTools.hxx>
#include <BinTools.hxx>

namespace {

using namespace kuvimport;
using importtest::Folder;
using importtest::Import;
using importtest::ProductNamed;

TEST(ShapeReaders, ABrepFileOfEitherFormIsOnePartNamedAfterTheFile)
{
    const Folder folder;
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(10, 20, 30).Shape();
    BRepTools::Write(box, (folder / "kasten.brep").c_str());
    BinTools::Write(box, (folder / "binary.brep").c_str());
    for (const char* name : {"kasten", "binary"}) {
        const ImportResult result = Import(folder / (std::string(name) + ".brep"));
        ASSERT_TRUE(result.model) << name << ": " << result.error;
        const ModelCounts counts = result.model->Count();
        EXPECT_EQ(result.model->format, "brep");
        EXPECT_EQ(result.model->products[result.model->root].name, name);
        EXPECT_EQ(counts.products, 1U);
        EXPECT_EQ(counts.instances, 0U);
        EXPECT_EQ(counts.reps, 1U);
        EXPECT_EQ(counts.faces, 6U);
        EXPECT_EQ(counts.edges, 12U);
        EXPECT_EQ(counts.vertices, 8U);
        EXPECT_EQ(counts.triangles, 12U);
        EXPECT_TRUE(result.model->tessellation);
    }
}

TEST(ShapeReaders, TrianglesInABrepFileAreKept)
{
    const Folder folder;
    const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(10, 20).Shape();
    BRepTools::Write(cylinder, (folder / "bare.brep").c_str());
    const BRepMesh_IncrementalMesh coarse(cylinder, 5.0, /*isRelative=*/false, 1.5);
    BRepTools::Write(cylinder, (folder / "meshed.brep").c_str());
    const ImportResult bare = Import(folder / "bare.brep");
    const ImportResult meshed = Import(folder / "meshed.brep");
    ASSERT_TRUE(bare.model && meshed.model) << bare.error << meshed.error;
    EXPECT_LT(meshed.model->Count().triangles, bare.model->Count().triangles)
        << "far coarser than anything that would be made here";
    EXPECT_TRUE(meshed.model->geometries[0].broughtTriangles);
    EXPECT_FALSE(meshed.model->tessellation);
    EXPECT_TRUE(bare.model->tessellation);
}

TEST(ShapeReaders, ACutBrepFileHasAReason)
{
    const Folder folder;
    BRepTools::Write(BRepPrimAPI_MakeBox(1, 1, 1).Shape(), (folder / "a.brep").c_str());
    const std::string text = importtest::ReadFile(folder / "a.brep");
    const ImportResult result = Import(folder.Write("cut.brep", text.substr(0, text.size() / 3)));
    EXPECT_FALSE(result.model);
    EXPECT_NE(result.error, "");
}

const char* const VRML = R"(#VRML V2.0 utf8
DEF Rahmen Transform {
  translation 1 2 3
  children [
    DEF Platte Shape {
      appearance Appearance { material Material { diffuseColor 1 0 0 } }
      geometry IndexedFaceSet {
        coord Coordinate { point [ 0 0 0, 1 0 0, 1 1 0, 0 1 0 ] }
        coordIndex [ 0 1 2 -1 0 2 3 -1 ]
      }
    }
    Transform { translation 5 0 0 children [ USE Platte ] }
  ]
}
)";

TEST(ShapeReaders, AVrmlFileKeepsGroupsNamesAndSharing)
{
    const Folder folder;
    const ImportResult result = Import(folder.Write("scene.wrl", VRML));
    ASSERT_TRUE(result.model) << result.error;
    const ImportedModel& model = *result.model;
    const ModelCounts counts = model.Count();
    EXPECT_EQ(model.format, "vrml");
    EXPECT_EQ(counts.instances, 4U) << "the frame, the plate, a nameless group, the plate again";
    EXPECT_EQ(counts.reps, 2U);
    EXPECT_EQ(counts.triangles, 4U);
    EXPECT_EQ(counts.trianglesUnique, 2U);
    EXPECT_EQ(ProductNamed(model, "Rahmen").components.size(), 2U);
    EXPECT_EQ(ProductNamed(model, "Platte").colour, 0xFF0000FFU);
    EXPECT_EQ(model.products[model.root].components[0].placement.rows[3], 1);
}

TEST(ShapeReaders, AVrmlFileThatBreaksOffIsWarnedOfOrRefused)
{
    const Folder folder;
    const std::string text(VRML);
    const ImportResult cut = Import(folder.Write("cut.wrl", text.substr(0, text.size() / 2)));
    EXPECT_FALSE(cut.model);
    EXPECT_NE(cut.error.find("malformed at line"), std::string::npos) << cut.error;
    const ImportResult tail = Import(folder.Write("tail.wrl", text + "Shape { geometry Nonsense"));
    ASSERT_TRUE(tail.model) << tail.error;
    EXPECT_EQ(tail.model->Count().triangles, 4U);
    EXPECT_TRUE(importtest::AnyContains(tail.model->warnings, "the rest was not read"));
}

TEST(ShapeReaders, AnIgesFileWithoutShapesHasAReason)
{
    const Folder folder;
    const ImportResult result = Import(folder.Write("a.igs", std::string(72, ' ') + "S0000001\n"));
    EXPECT_FALSE(result.model);
    EXPECT_NE(result.error.find("IGES"), std::string::npos) << result.error;
}

}  // namespace
