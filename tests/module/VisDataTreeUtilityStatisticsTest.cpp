#include "VisDataTreeUtility.h"

#include "SceneTrees.h"
#include "VisPathUtility.h"
#include "private/NodePath.h"

#include "support/Allocations.h"
#include "support/TreeBuilders.h"

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <vector>

using scenes::NodeOf;
using scenes::Pump;
using scenes::SceneTree;
using scenes::TreeOf;
using support::FreeRep;
using support::ListOf;
using support::PathTo;
using support::TestScene;

namespace {

using Cache = VisDataTree::VisDataTreeCache;

/// A face whose triangles a test chooses freely.
class OddFace : public KUV3DFaceGP {
public:
    explicit OddFace(const KUVTriangleData& data) : KUV3DFaceGP(0), data_(data) {}
    void GetTriangleData(KUVTriangleData& data) const override { data = data_; }

private:
    KUVTriangleData data_;
};

/// A cache for every node of a tree, as a layout would make them.
class Caches {
public:
    explicit Caches(VisDataTree* node)
    {
        caches_.push_back(std::make_unique<Cache>(node));
        for (std::size_t i = 0; i < caches_.size(); ++i) {
            for (VisDataTree* const child : caches_[i]->GetNode()->GetChildren())
                caches_.push_back(std::make_unique<Cache>(child));
        }
    }
    ~Caches()
    {
        for (const auto& cache : caches_)
            cache->GetNode()->SetCache(nullptr);
    }

private:
    std::vector<std::unique_ptr<Cache>> caches_;
};

long long SizeOf(const VisDataTree* node) { return node->GetCache()->GetSizeValue(); }
long long ColorOf(const VisDataTree* node) { return node->GetCache()->GetColorValue(); }

}  // namespace

// ---- ComputeNbTriangles

TEST(VisDataTreeUtility, ALeafPickedOnAFaceCountsThatFaceWithItsStripsAndFans)
{
    TestScene scene;
    auto geometry =
        core::PartGeometry::MakeWithStrips({{10, {5}, {4}}, {100, {}, {}}, {1, {2}, {}}}, 1, 1, {});
    KUVRep* const shape =
        scene.Add(scene.Root(), core::SceneShapeRep::CreateRep(std::move(geometry), nullptr));
    const auto trianglesOf = [&](const list<int>& numbers, unsigned char wholeReps) {
        const SceneTree node = NodeOf(PathTo({shape}, numbers));
        const Caches caches(node.get());
        const unsigned int triangles =
            VisDataTreeUtility::ComputeNbTriangles(node.get(), wholeReps);
        EXPECT_EQ(SizeOf(node.get()), triangles);
        EXPECT_EQ(ColorOf(node.get()), triangles);
        return triangles;
    };
    for (const bool wholeReps : {false, true}) {
        EXPECT_EQ(trianglesOf({1}, wholeReps), 15U);
        EXPECT_EQ(trianglesOf({3}, wholeReps), 1U) << "a strip of two vertices adds nothing";
        EXPECT_EQ(trianglesOf({1, 2}, wholeReps), 115U);
        EXPECT_EQ(trianglesOf({1, 1}, wholeReps), 30U);
        EXPECT_EQ(trianglesOf({4}, wholeReps), 0U) << "an edge has no triangles";
        EXPECT_EQ(trianglesOf({99}, wholeReps), 0U);
        EXPECT_EQ(trianglesOf({}, wholeReps), 116U) << "the whole rep";
    }
}

TEST(VisDataTreeUtility, CountsOfAFaceAreSignedAndItsListsMayBeMissing)
{
    OddFace* const odd = new OddFace([] {
        static const int STRIPS[] = {3, -7, 0, 1, 2, 2147483647};
        KUVTriangleData data;
        data.triangleCount = 4;
        data.stripCount = 5;
        data.stripVertexCounts = STRIPS;
        data.fanCount = 3;
        return data;
    }());
    OddFace* const long1 = new OddFace([] {
        static const int STRIPS[] = {2147483647};
        KUVTriangleData data;
        data.triangleCount = 2147483647;
        data.stripCount = 1;
        data.stripVertexCounts = STRIPS;
        data.fanCount = -1;
        data.fanVertexCounts = STRIPS;
        return data;
    }());
    OddFace* const negative = new OddFace([] {
        KUVTriangleData data;
        data.triangleCount = -3;
        return data;
    }());
    TestScene scene;
    FreeRep* const rep = scene.AddFreeRep(scene.Root());
    rep->SetPrimitive(1, odd);
    rep->SetPrimitive(2, long1);
    rep->SetPrimitive(3, negative);
    const auto trianglesOf = [&](const list<int>& numbers) {
        const SceneTree node = NodeOf(PathTo({rep}, numbers));
        return VisDataTreeUtility::ComputeNbTriangles(node.get(), 0);
    };
    EXPECT_EQ(trianglesOf({1}), 5U);
    EXPECT_EQ(trianglesOf({2}), 4294967292U);
    EXPECT_EQ(trianglesOf({1, 3}), 2U);
    EXPECT_EQ(trianglesOf({3}), 0U) << "weights are never negative";
}

TEST(VisDataTreeUtility, AnInnerNodeSumsItsChildren)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToBlade({3}), pump.ToShell()});
    const Caches caches(tree.get());
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(tree.get(), 0), 47U);
    EXPECT_EQ(SizeOf(tree.get()), 47);
    EXPECT_EQ(SizeOf(tree->GetChildren()[0]), 40);
    EXPECT_EQ(ColorOf(tree->GetChildren()[0]), 40);
    EXPECT_EQ(SizeOf(tree->GetChildren()[0]->GetChildren()[1]), 30);
    EXPECT_EQ(SizeOf(tree->GetLastLeaf()), 7);
}

TEST(VisDataTreeUtility, WithWholeRepsAnInnerNodeCountsItsRepNotItsChildren)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToBlade({3})});
    const Caches caches(tree.get());
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(tree.get(), 1), 67U);
    EXPECT_EQ(SizeOf(tree->GetChildren()[0]), 60) << "the whole rotor";
    EXPECT_EQ(SizeOf(tree->GetFirstLeaf()), 10) << "a picked primitive stays what it is";
}

TEST(VisDataTreeUtility, WithoutWholeRepsALevelWithoutChildrenCountsItsRep)
{
    Pump pump;
    const SceneTree level = NodeOf(PathTo({pump.pump, pump.rotor, pump.blade}, {}, 1));
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(level.get(), 0), 60U);
    const SceneTree picked = NodeOf(PathTo({pump.pump, pump.rotor, pump.blade}, {1}, 1));
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(picked.get(), 0), 0U)
        << "its sub-elements belong to another rep";
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(picked.get(), 1), 60U);
}

TEST(VisDataTreeUtility, ANodeWithChildrenOnItsLastRepCountsItsRep)
{
    TestScene scene;
    KUVRep* const shape = scene.AddShape(scene.Root(), "Blade", {10, 20});
    const SceneTree tree = TreeOf({PathTo({shape}), PathTo({shape}, {1})});
    const Caches caches(tree.get());
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(tree.get(), 0), 30U);
    EXPECT_EQ(SizeOf(tree->GetLastLeaf()), 10);
}

TEST(VisDataTreeUtility, ANodeWithoutPathKeepsTheSumOfItsChildren)
{
    Pump pump;
    const SceneTree rotor = NodeOf(pump.ToBlade());
    const SceneTree housing = NodeOf(pump.ToShell());
    const SceneTree top(new VisDataTree(nullptr, "top", ""));
    top->InsertChild(rotor.get(), 1);
    top->InsertChild(housing.get(), 1);
    for (const bool wholeReps : {false, true})
        EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(top.get(), wholeReps), 67U);
    rotor->RemoveParent(1);
    housing->RemoveParent(1);
}

TEST(VisDataTreeUtility, TheUnnamedNodeAboveKeepsTheSumOfItsChildren)
{
    TestScene scene;
    KUVRep* const blade = scene.AddShape(scene.Root(), "Blade", {10});
    KUVRep* const shell = scene.AddShape(scene.Root(), "Shell", {7});
    const SceneTree tree = TreeOf({PathTo({blade}), PathTo({shell})});
    for (const bool wholeReps : {false, true})
        EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(tree.get(), wholeReps), 17U);
}

TEST(VisDataTreeUtility, WithoutNodeThereAreNoTriangles)
{
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(nullptr, 0), 0U);
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(nullptr, 1), 0U);
}

TEST(VisDataTreeUtility, CachesHoldMoreThanTheReturnedNumberCan)
{
    TestScene scene;
    KUV3DBagRep* const bag = scene.AddBag(scene.Root());
    scene.AddShape(bag, "Big", {4000000000U, 4000000000U});
    const SceneTree tree = TreeOf(VisPathUtility::GenerateAllKUVPickPath(scene.Viewpoint(), 0, 0));
    const Caches caches(tree.get());
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(tree.get(), 0), 4294967295U);
    EXPECT_EQ(SizeOf(tree.get()), 8000000000LL);
    EXPECT_EQ(ColorOf(tree.get()), 8000000000LL);
}

TEST(VisDataTreeUtility, LockedPathsAreCountedAndStayLocked)
{
    Pump pump;
    std::vector<KUVPickPath> paths{pump.ToBlade({1}), pump.ToShell()};
    for (KUVPickPath& path : paths)
        path.LockPath();
    const SceneTree tree(VisDataTreeUtility::CreateTreeFromPickPath(ListOf(paths), nullptr, 0));
    EXPECT_TRUE(PickPathOf(*tree)->IsLocked());
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(tree.get(), 0), 17U);
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(tree.get(), "SceneShapeRep"), 2U);
    EXPECT_TRUE(PickPathOf(*tree)->IsLocked());
}

// ---- ComputeNbTypeOfRep

TEST(VisDataTreeUtility, CountsTheRepsOfAClassAtAndBelowTheLeaves)
{
    Pump pump;
    const SceneTree tree = TreeOf({PathTo({pump.pump, pump.rotor}), pump.ToShell()});
    const Caches caches(tree.get());
    EXPECT_EQ(support::DescribeTree(tree.get()), "Pump(Rotor Housing(Shell))");
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(tree.get(), "SceneShapeRep"), 2U);
    EXPECT_EQ(ColorOf(tree->GetChildren()[0]), 1) << "the blade hangs below the leaf";
    EXPECT_EQ(SizeOf(tree.get()), 0) << "only the colour value is set";
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(tree.get(), "KUV3DFilterBagRep"), 1U)
        << "the rotor; reps above the leaves are not counted";
    EXPECT_EQ(ColorOf(tree.get()), 1);
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(tree.get(), "KUVRep"), 3U);
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(tree.get(), "KUV2DBagRep"), 0U);
}

TEST(VisDataTreeUtility, WithoutNodeOrClassNameNoRepsAreCounted)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade()});
    const Caches caches(tree.get());
    tree->GetCache()->SetColorValue(9);
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(nullptr, "KUVRep"), 0U);
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(tree.get(), nullptr), 0U);
    EXPECT_EQ(ColorOf(tree.get()), 9) << "nothing was counted";
}

TEST(VisDataTreeUtility, ALeafWithoutPathOrCurrentRepCountsNoReps)
{
    Pump pump;
    const SceneTree bare(new VisDataTree(nullptr, "", ""));
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(bare.get(), "KUVRep"), 0U);
    const SceneTree before = NodeOf(PathTo({pump.pump}, {}, -1));
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(before.get(), "KUVRep"), 0U);
}

TEST(VisDataTreeUtility, CountingRepsStopsAtAnAbsentChildAndAtALoop)
{
    TestScene scene;
    FreeRep* const bag = scene.AddFreeRep(scene.Root());
    FreeRep* const loop = scene.AddFreeRep(scene.Root());
    FreeRep* const leaf = scene.AddFreeRep(scene.Root());
    bag->SetChildren({leaf, loop, leaf, nullptr, leaf});
    loop->SetChildren({bag, leaf, loop});
    const SceneTree node = NodeOf(PathTo({bag}));
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(node.get(), "FreeRep"), 5U);
}

TEST(VisDataTreeUtility, CountsRepsOfAHundredThousandLevels)
{
    TestScene scene;
    KUV3DBagRep* bag = scene.Root();
    for (int level = 0; level < 100000; ++level)
        bag = scene.AddBag(bag);
    const SceneTree node = NodeOf(PathTo({scene.Root()}));
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(node.get(), "KUV3DBagRep"), 100001U);
}

TEST(VisDataTreeUtility, WeighingSurvivesEveryFailingAllocation)
{
    Pump pump;
    const std::size_t failures = support::ForEveryFailingAllocation([&pump] {
        const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToShell()});
        VisDataTreeUtility::ComputeNbTriangles(tree.get(), 1);
        VisDataTreeUtility::ComputeNbTypeOfRep(tree.get(), "KUVRep");
        // A bag that changes makes the host forget the statistics.
        pump.scene.Root()->RemoveChild(nullptr);
    });
    EXPECT_GT(failures, 20U);
    std::cout << "count: " << failures << " failing allocations while weighing a scene tree\n";
}
