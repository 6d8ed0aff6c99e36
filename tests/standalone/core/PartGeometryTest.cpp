#include "core/PartGeometry.h"

#include "core/SceneReps.h"
#include "support/TestScene.h"

#include "KUV3D.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

using core::PartGeometry;
using support::Held;

TEST(PartGeometry, NumbersFacesThenEdgesThenVertices)
{
    const auto geometry = PartGeometry::Make({10, 20}, 3, 1, {});
    EXPECT_EQ(geometry->FirstFace(), 1);
    EXPECT_EQ(geometry->FirstEdge(), 3);
    EXPECT_EQ(geometry->FirstVertex(), 6);
    const auto kindAt = [&](int number) -> std::string {
        const KUVGraphicPrimitive* const primitive = geometry->Primitive(number);
        return primitive ? primitive->IsA() : "none";
    };
    EXPECT_EQ(kindAt(0), "none");
    EXPECT_EQ(kindAt(1), "KUV3DFaceGP");
    EXPECT_EQ(kindAt(2), "KUV3DFaceGP");
    EXPECT_EQ(kindAt(3), "KUV3DEdgeGP");
    EXPECT_EQ(kindAt(5), "KUV3DEdgeGP");
    EXPECT_EQ(kindAt(6), "KUV3DMarkerGP");
    EXPECT_EQ(kindAt(7), "none");
    EXPECT_EQ(kindAt(-1), "none");
    EXPECT_EQ(kindAt(std::numeric_limits<int>::min()), "none");
    EXPECT_EQ(kindAt(std::numeric_limits<int>::max()), "none");
}

TEST(PartGeometry, EachFaceHasItsTriangles)
{
    const auto geometry = PartGeometry::Make({10, 0, 30}, 1, 1, {});
    EXPECT_EQ(geometry->TriangleCount(), 40U);
    EXPECT_EQ(geometry->TrianglesOfFace(1), 10U);
    EXPECT_EQ(geometry->TrianglesOfFace(2), 0U);
    EXPECT_EQ(geometry->TrianglesOfFace(3), 30U);
    EXPECT_EQ(geometry->TrianglesOfFace(0), 0U);
    EXPECT_EQ(geometry->TrianglesOfFace(4), 0U) << "an edge";
    KUVTriangleData data;
    static_cast<KUV3DFaceGP*>(geometry->Primitive(3))->GetTriangleData(data);
    EXPECT_EQ(data.triangleCount, 30);
    EXPECT_NE(geometry->Primitive(1), geometry->Primitive(2));
    EXPECT_EQ(geometry->Primitive(1), geometry->Primitive(1)) << "made once";
}

TEST(PartGeometry, StripsAndFansCountTheirTriangles)
{
    const auto geometry =
        PartGeometry::MakeWithStrips({{10, {5, 2, 0, -3}, {4}}, {1, {}, {}}}, 0, 0, {});
    EXPECT_EQ(geometry->TrianglesOfFace(1), 15U);
    EXPECT_EQ(geometry->TriangleCount(), 16U);
    KUVTriangleData data;
    static_cast<KUV3DFaceGP*>(geometry->Primitive(1))->GetTriangleData(data);
    EXPECT_EQ(data.triangleCount, 10);
    EXPECT_EQ(data.stripCount, 4);
    EXPECT_EQ(data.fanCount, 1);
}

TEST(PartGeometry, HoldsItsNativeShapeAndItsBounds)
{
    const auto native = std::make_shared<int>(5);
    PartGeometry::Bounds bounds;
    bounds.max[2] = 3.0f;
    auto geometry = PartGeometry::Make({}, 0, 0, bounds, native);
    EXPECT_EQ(geometry->Native().get(), native.get());
    EXPECT_EQ(geometry->GetBounds().max[2], 3.0f);
    EXPECT_EQ(geometry->Primitive(1), nullptr);
    EXPECT_EQ(native.use_count(), 2);
    geometry.reset();
    EXPECT_EQ(native.use_count(), 1);
}

TEST(SceneShapeRep, InstancesShareGeometryAndPrimitives)
{
    auto geometry = PartGeometry::Make({10}, 1, 1, {});
    const Held<core::SceneShapeRep> one(core::SceneShapeRep::CreateRep(geometry, nullptr));
    const Held<core::SceneShapeRep> two(core::SceneShapeRep::CreateRep(geometry, nullptr));
    EXPECT_EQ(one->GetGraphicPrimitive(1), two->GetGraphicPrimitive(1));
    EXPECT_EQ(one->Geometry(), geometry.get());
    EXPECT_EQ(core::GeometryOf(two.get()), geometry.get());
    EXPECT_EQ(one->GetChildren(), nullptr) << "a leaf";
    geometry.reset();
    EXPECT_EQ(one->Geometry()->TriangleCount(), 10U);
}

TEST(SceneShapeRep, WithoutGeometryThereAreNoPrimitives)
{
    const Held<core::SceneShapeRep> rep(core::SceneShapeRep::CreateRep(nullptr, nullptr));
    EXPECT_EQ(rep->GetGraphicPrimitive(1), nullptr);
    EXPECT_EQ(core::GeometryOf(rep.get()), nullptr);
    const Held<KUV3DBagRep> bag(KUV3DBagRep::CreateRep());
    EXPECT_EQ(core::GeometryOf(bag.get()), nullptr);
    EXPECT_EQ(core::GeometryOf(nullptr), nullptr);
}

TEST(SceneOccurrenceRep, IsAFilterBagWithAPlacement)
{
    const Held<core::SceneOccurrenceRep> rep(core::SceneOccurrenceRep::CreateRep(nullptr));
    EXPECT_TRUE(rep->IsAKindOf("KUV3DFilterBagRep"));
    EXPECT_TRUE(rep->GetTransformation().IsIdentity());
    EXPECT_EQ(rep->GetColour(), 0U);
    core::SceneTransformation moved;
    moved.values[3] = 12.5;
    rep->SetTransformation(moved);
    rep->SetColour(0x112233FFU);
    EXPECT_EQ(rep->GetTransformation().values[3], 12.5);
    EXPECT_FALSE(rep->GetTransformation().IsIdentity());
    EXPECT_EQ(rep->GetColour(), 0x112233FFU);
    rep->SetTransformation({});
    rep->SetColour(0);
    EXPECT_TRUE(rep->GetTransformation().IsIdentity());
    EXPECT_EQ(rep->GetColour(), 0U);
}

TEST(SceneOccurrenceRep, RepsStaySmall)
{
    EXPECT_LE(sizeof(core::SceneShapeRep), 56U) << "scenes go to millions of them";
    EXPECT_LE(sizeof(core::SceneOccurrenceRep), 56U);
}
