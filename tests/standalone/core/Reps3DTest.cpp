#include "KUV3D.h"

#include "support/TestScene.h"

#include <gtest/gtest.h>

#include <vector>

using support::Held;
using support::PathTo;
using support::TestScene;

TEST(KUV3DBagRep, KeepsItsChildrenInOrder)
{
    TestScene scene;
    KUV3DBagRep* const bag = scene.AddBag(scene.Root());
    ASSERT_TRUE(bag->GetChildren());
    EXPECT_EQ(bag->GetChildren()->Count(), 0);
    KUVRep* const a = scene.AddFreeRep(bag);
    KUVRep* const b = scene.AddFreeRep(bag);
    KUVRep* const c = scene.AddFreeRep(bag);
    bag->AddChild(nullptr);
    bag->AddChild(b);
    ASSERT_EQ(bag->GetChildren()->Count(), 3) << "a child stays where it is";
    bag->RemoveChild(b);
    bag->RemoveChild(b);
    ASSERT_EQ(bag->GetChildren()->Count(), 2);
    EXPECT_EQ((*bag->GetChildren())[0], a);
    EXPECT_EQ((*bag->GetChildren())[1], c);
}

TEST(KUV3DBagRep, ClassesKnowWhatTheyAre)
{
    const Held<KUV3DFilterBagRep> filter(KUV3DFilterBagRep::CreateRep());
    const Held<VisPrimitiveGroupRep> group(VisPrimitiveGroupRep::CreateRep());
    const KUV3DFaceGP face(1);
    const KUV3DEdgeGP edge;
    EXPECT_STREQ(filter->IsA(), "KUV3DFilterBagRep");
    EXPECT_TRUE(filter->IsAKindOf("KUV3DBagRep"));
    EXPECT_TRUE(filter->IsAKindOf("KUVRep"));
    EXPECT_FALSE(filter->IsAKindOf("VisPrimitiveGroupRep"));
    EXPECT_TRUE(group->IsAKindOf("KUVRep"));
    EXPECT_TRUE(face.IsAKindOf("KUV3DBoundingGP"));
    EXPECT_TRUE(face.IsAKindOf("KUVGraphicPrimitive"));
    EXPECT_FALSE(edge.IsAKindOf("KUV3DBoundingGP"));
}

TEST(KUV3DBagRep, DiesAHundredThousandLevelsDeep)
{
    KUV3DBagRep* root = KUV3DBagRep::CreateRep();
    KUV3DBagRep* bag = root;
    for (int level = 0; level < 100000; ++level) {
        KUV3DBagRep* const child = KUV3DBagRep::CreateRep();
        bag->AddChild(child);
        child->Release();
        bag = child;
    }
    EXPECT_EQ(root->Release(), 0U);
}

TEST(VisPrimitiveGroupRep, KeepsPrimitivesUnderNumbers)
{
    const Held<VisPrimitiveGroupRep> group(VisPrimitiveGroupRep::CreateRep());
    const Held<VisPrimitive> first(new VisPrimitive(3));
    const Held<VisPrimitive> second(new VisPrimitive(4));
    group->SetVisPrimitive(9, first.get());
    group->SetVisPrimitive(-2, second.get());
    EXPECT_EQ(group->GetVisPrimitive(9)->GetTypeCode(), 3);
    EXPECT_EQ(group->GetVisPrimitive(-2)->GetTypeCode(), 4);
    EXPECT_EQ(group->GetVisPrimitive(0), nullptr);
    EXPECT_EQ(first->GetReferenceCount(), 2U);
    group->SetVisPrimitive(9, first.get());
    EXPECT_EQ(first->GetReferenceCount(), 2U) << "the same again";
    group->SetVisPrimitive(9, second.get());
    EXPECT_EQ(first->GetReferenceCount(), 1U);
    group->SetVisPrimitive(9, nullptr);
    group->SetVisPrimitive(7, nullptr);
    EXPECT_EQ(group->GetVisPrimitive(9), nullptr);
    EXPECT_EQ(second->GetReferenceCount(), 2U);
}

TEST(KUV3DBoundingGP, TellsPlainTrianglesStripsAndFans)
{
    KUVTriangleData data;
    const KUV3DFaceGP plain(12);
    plain.GetTriangleData(data);
    EXPECT_EQ(data.triangleCount, 12);
    EXPECT_EQ(data.stripCount, 0);
    EXPECT_EQ(data.stripVertexCounts, nullptr);
    EXPECT_EQ(data.fanCount, 0);
    EXPECT_EQ(data.fanVertexCounts, nullptr);
    const KUV3DBoundingGP both(1, {5, 6}, {4});
    both.GetTriangleData(data);
    EXPECT_EQ(data.triangleCount, 1);
    ASSERT_EQ(data.stripCount, 2);
    EXPECT_EQ(data.stripVertexCounts[1], 6);
    ASSERT_EQ(data.fanCount, 1);
    EXPECT_EQ(data.fanVertexCounts[0], 4);
}

TEST(KUVTransientPathElementRep, StandsForThePathsThatItWasGiven)
{
    TestScene scene;
    const Held<KUVTransientPathElementRep> transient(KUVTransientPathElementRep::CreateRep());
    const Held<KUVPickPath> sub(new KUVPickPath(PathTo({scene.Root()})));
    transient->AddSubRepPath(sub.get());
    transient->AddSubRepPath(nullptr);
    const KUVPickPath meta = PathTo({scene.Root(), transient.get()});
    EXPECT_TRUE(KUVTransientPathElementRep::IsMetaRepPath(meta));
    std::vector<KUVTransientPathElementRep::SubPath> found;
    EXPECT_EQ(KUVTransientPathElementRep::ExtractSubRepPaths(meta, found), KUV_OK);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].first, transient.get());
    EXPECT_EQ(found[0].second, sub.get());
    EXPECT_EQ(sub->GetReferenceCount(), 3U) << "one for the caller";
    found[0].second->Release();
}

TEST(KUVTransientPathElementRep, APathThatEndsElsewhereIsNoMetaPath)
{
    TestScene scene;
    const Held<KUVTransientPathElementRep> transient(KUVTransientPathElementRep::CreateRep());
    std::vector<KUVTransientPathElementRep::SubPath> found;
    for (const KUVPickPath& path : {KUVPickPath(), PathTo({transient.get(), scene.Root()})}) {
        EXPECT_FALSE(KUVTransientPathElementRep::IsMetaRepPath(path));
        EXPECT_EQ(KUVTransientPathElementRep::ExtractSubRepPaths(path, found), KUV_FAIL);
    }
    EXPECT_TRUE(found.empty());
}
