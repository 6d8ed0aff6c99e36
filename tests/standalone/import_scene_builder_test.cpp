#include "import/SceneBuilder.h"

#include "core/ProductObjects.h"
#include "core/SceneCounts.h"

#include "import_files.h"

#include <memory>

namespace {

using namespace kuvimport;

struct Releaser {
    void operator()(KUVRep* rep) const { rep->Release(); }
};
using HeldRep = std::unique_ptr<KUVRep, Releaser>;

/// Pump -> 2 x Rotor set -> Rotor (faces of 3 and 4 triangles, 5 edges, 2 vertices) and a shaft
ImportedModel Pump()
{
    ImportedModel model;
    model.products.resize(4);
    model.products[0].name = "Pump";
    model.products[0].components.resize(2);
    model.products[0].components[0].product = 1;
    model.products[0].components[0].name = "left";
    model.products[0].components[0].id = "1";
    model.products[0].components[1].product = 1;
    model.products[0].components[1].id = "2";
    model.products[0].components[1].placement.rows[3] = 50;
    model.products[1].name = "Läufersatz";
    model.products[1].components.resize(2);
    model.products[1].components[0].product = 2;
    model.products[1].components[1].product = 3;
    model.products[2].name = "Rotor";
    model.products[2].id = "R-1";
    model.products[2].geometry = 0;
    model.products[2].shapeName = "Solid of the rotor";
    model.products[3].name = "Shaft";
    model.products[3].geometry = 1;
    model.geometries.resize(2);
    model.geometries[0].trianglesPerFace = {3, 4};
    model.geometries[0].edges = 5;
    model.geometries[0].vertices = 2;
    model.geometries[0].faceColours = {0xFF, 0};
    model.geometries[1].trianglesPerFace = {1};
    return model;
}

KUVBaseUnknown* ObjectOf(KUVRep* rep)
{
    KUVModelIdentificator* identificator = rep->GetModelIdentificator();
    return identificator ? identificator->GetId() : nullptr;
}

std::string AliasOf(KUVRep* rep)
{
    auto* alias = dynamic_cast<KUVIAlias*>(ObjectOf(rep));
    return alias ? alias->GetAlias().GetUtf8() : "(no model object)";
}

KUVRep* Child(KUVRep* rep, int index)
{
    const list<KUVRep>* children = rep->GetChildren();
    return children ? (*children)[index] : nullptr;
}

TEST(SceneBuilder, TheRootIsAFilterBagWithARootOccurrence)
{
    const HeldRep root(BuildScene(Pump()));
    ASSERT_TRUE(root);
    EXPECT_TRUE(root->IsAKindOf("KUV3DFilterBagRep"));
    ASSERT_TRUE(ObjectOf(root.get()));
    EXPECT_STREQ(ObjectOf(root.get())->IsA(), "OXMRootOccurrence");
    EXPECT_EQ(AliasOf(root.get()), "Pump");
}

TEST(SceneBuilder, EveryComponentIsAFilterBagWithAnOccurrenceOfItsOwn)
{
    const HeldRep root(BuildScene(Pump()));
    KUVRep* left = Child(root.get(), 0);
    KUVRep* right = Child(root.get(), 1);
    ASSERT_TRUE(left && right);
    EXPECT_NE(left, right);
    EXPECT_NE(ObjectOf(left), ObjectOf(right));
    EXPECT_TRUE(left->IsAKindOf("KUV3DFilterBagRep"));
    EXPECT_EQ(AliasOf(left), "left");
    EXPECT_EQ(AliasOf(right), "Läufersatz") << "the product's name where the instance has none";
    EXPECT_NE(ObjectOf(Child(left, 0)), ObjectOf(Child(right, 0)));
}

TEST(SceneBuilder, AShapeIsALeafWithAModelObjectUnderItsPart)
{
    const HeldRep root(BuildScene(Pump()));
    KUVRep* rotor = Child(Child(root.get(), 0), 0);
    KUVRep* shaft = Child(Child(root.get(), 0), 1);
    ASSERT_TRUE(rotor && shaft);
    EXPECT_EQ(AliasOf(rotor), "Rotor");
    EXPECT_EQ(AliasOf(Child(rotor, 0)), "Solid of the rotor");
    EXPECT_EQ(AliasOf(Child(shaft, 0)), "Shaft") << "the product's name where the shape has none";
    EXPECT_FALSE(Child(rotor, 0)->IsAKindOf("KUV3DBagRep"));
}

TEST(SceneBuilder, InstancesShareTheGeometry)
{
    const HeldRep root(BuildScene(Pump()));
    KUVRep* first = Child(Child(Child(root.get(), 0), 0), 0);
    KUVRep* second = Child(Child(Child(root.get(), 1), 0), 0);
    ASSERT_TRUE(first && second);
    EXPECT_NE(first, second);
    EXPECT_EQ(core::GeometryOf(first), core::GeometryOf(second));
    EXPECT_EQ(core::GeometryOf(first)->TriangleCount(), 7U);
}

TEST(SceneBuilder, PrimitivesStandUnderTheNumbersOfFacesThenEdgesThenVertices)
{
    const HeldRep root(BuildScene(Pump()));
    KUVRep* rotor = Child(Child(Child(root.get(), 0), 0), 0);
    ASSERT_TRUE(rotor);
    const auto kind = [&](int number) -> std::string {
        KUVGraphicPrimitive* primitive = rotor->GetGraphicPrimitive(number);
        return primitive ? primitive->IsA() : "none";
    };
    EXPECT_EQ(kind(0), "none");
    EXPECT_EQ(kind(1), "KUV3DFaceGP");
    EXPECT_EQ(kind(2), "KUV3DFaceGP");
    EXPECT_EQ(kind(3), "KUV3DEdgeGP");
    EXPECT_EQ(kind(7), "KUV3DEdgeGP");
    EXPECT_EQ(kind(8), "KUV3DMarkerGP");
    EXPECT_EQ(kind(9), "KUV3DMarkerGP");
    EXPECT_EQ(kind(10), "none");
}

TEST(SceneBuilder, CountsAreTheRecords)
{
    const ImportedModel model = Pump();
    const HeldRep root(BuildScene(model));
    const core::SceneCounts counts = core::CountScene(root.get());
    EXPECT_EQ(counts.products, model.Count().products);
    EXPECT_EQ(counts.occurrences, 7U);
    EXPECT_EQ(counts.triangles, 16U);
    EXPECT_EQ(counts.uniqueTriangles, 8U);
}

TEST(SceneBuilder, PlacementsAndColoursReachTheReps)
{
    ImportedModel model = Pump();
    model.products[0].components[0].colour = 0x11223344U;
    const HeldRep root(BuildScene(model));
    auto* left = dynamic_cast<core::SceneOccurrenceRep*>(Child(root.get(), 0));
    auto* right = dynamic_cast<core::SceneOccurrenceRep*>(Child(root.get(), 1));
    ASSERT_TRUE(left && right);
    EXPECT_TRUE(left->GetTransformation().IsIdentity());
    EXPECT_EQ(right->GetTransformation().values[3], 50);
    EXPECT_EQ(left->GetColour(), 0x11223344U);
    EXPECT_EQ(right->GetColour(), 0U);
}

TEST(SceneBuilder, TheNativeHandleKeepsColoursAndShape)
{
    const HeldRep root(BuildScene(Pump()));
    KUVRep* rotor = Child(Child(Child(root.get(), 0), 0), 0);
    const auto* native = static_cast<const PartGeometry*>(core::GeometryOf(rotor)->Native().get());
    ASSERT_TRUE(native);
    EXPECT_EQ(native->faceColours, (std::vector<Colour>{0xFF, 0}));
}

TEST(SceneBuilder, AnEmptyOrCyclicModelGivesNull)
{
    EXPECT_EQ(BuildScene(ImportedModel()), nullptr);
    ImportedModel model = Pump();
    model.products[3].components.resize(1);
    EXPECT_EQ(BuildScene(model), nullptr);
}

TEST(SceneBuilder, ADeepStructureIsBuiltWithoutRecursion)
{
    constexpr std::uint32_t LEVELS = 100000;
    ImportedModel model;
    model.products.resize(LEVELS);
    for (std::uint32_t i = 0; i + 1 < LEVELS; ++i)
        model.products[i].components.emplace_back().product = i + 1;
    const HeldRep root(BuildScene(model));
    EXPECT_EQ(core::CountScene(root.get()).occurrences, LEVELS);
}

}  // namespace
