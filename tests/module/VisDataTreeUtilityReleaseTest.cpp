#include "VisDataTreeUtility.h"

#include "FilteredTrees.h"
#include "SceneTrees.h"
#include "TestLayout.h"
#include "VisPathUtility.h"
#include "private/NodePath.h"

#include "core/Assertion.h"
#include "support/Allocations.h"
#include "support/TestScene.h"
#include "support/TreeBuilders.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iostream>
#include <new>
#include <string>
#include <vector>

using filtered::At;
using filtered::CHECK_LEAVES;
using filtered::Filter;
using filtered::FilteredTree;
using filtered::LEAVES_CHECKED_OR_NOT;
using filtered::Node;
using filtered::Product;
using filtered::Sphere;
using filtered::Tree;
using scenes::Pump;
using scenes::SceneTree;
using scenes::TreeOf;
using support::Held;
using support::PathTo;
using support::TestScene;

namespace {

using Cache = VisDataTree::VisDataTreeCache;

constexpr unsigned char KEEP_CACHES = 0;
constexpr unsigned char RELEASE_CACHES = 1;

int reports = 0;

/// Counts the programming errors that are reported while it lives.
class Reports {
public:
    Reports() : former_(core::SetFailureSink(&Count)) { reports = 0; }
    ~Reports() { core::SetFailureSink(former_); }
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;

private:
    static void Count(const char* /*message*/, const char* source, int /*line*/)
    {
        ++reports;
        EXPECT_EQ(std::string(source), "VisualizationCommands/KUVDataViz.m/src/VisDataTreeUtility");
    }

    core::FailureSink former_;
};

/// Tells when it dies.
class MortalCache : public Cache {
public:
    MortalCache(VisDataTree* node, int& deaths) : Cache(node), deaths_(deaths) {}
    ~MortalCache() override { ++deaths_; }

private:
    int& deaths_;
};

}  // namespace

// ---- releasing

TEST(VisDataTreeUtilityFilters, ReleasingGivesEveryPathBackAndKeepsTheNodes)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToShell()});
    VisDataTree* const copy = VisDataTreeUtility::ApplyFilters(tree.get(), {}, 0);
    std::vector<Held<KUVPickPath>> paths;
    for (VisDataTree* node :
         {copy, copy->GetChildren()[0], copy->GetFirstLeaf(), copy->GetLastLeaf()}) {
        paths.emplace_back(PickPathOf(*node));
        paths.back()->AddRef();
    }
    VisDataTreeUtility::ReleaseFilteredTreeRoot(copy, KEEP_CACHES);
    EXPECT_EQ(support::DescribeTree(copy), "Pump(Rotor(Face) Housing(Shell))");
    EXPECT_EQ(copy->GetReferenceCount(), 1U);
    EXPECT_EQ(copy->GetData(), nullptr);
    EXPECT_EQ(copy->GetLastLeaf()->GetData(), nullptr);
    for (const Held<KUVPickPath>& path : paths)
        EXPECT_EQ(path->GetReferenceCount(), 1U) << "only the test holds it";
    VisDataTreeUtility::ReleaseFilteredTreeRoot(copy, KEEP_CACHES);
    copy->Release();
    VisDataTreeUtility::ReleaseFilteredTreeRoot(nullptr, RELEASE_CACHES);
}

TEST(VisDataTreeUtilityFilters, ReleasingASubtreeLeavesTheRestAlone)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToShell()});
    VisDataTreeUtility::ReleaseFilteredTreeRoot(tree->GetChildren()[0], KEEP_CACHES);
    EXPECT_EQ(tree->GetFirstLeaf()->GetData(), nullptr);
    EXPECT_NE(tree->GetData(), nullptr);
    EXPECT_NE(tree->GetLastLeaf()->GetData(), nullptr);
}

TEST(VisDataTreeUtilityFilters, CachesOfTheCallerAreDeletedExactlyWhenAsked)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToShell()});
    const FilteredTree copy = Filter(tree.get());
    int deaths = 0;
    auto* const cache = new MortalCache(copy.get(), deaths);
    new MortalCache(copy->GetLastLeaf(), deaths);
    const Reports noReports;
    VisDataTreeUtility::ReleaseFilteredTreeRoot(copy.get(), KEEP_CACHES);
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(copy->GetCache(), cache);
    VisDataTreeUtility::ReleaseFilteredTreeRoot(copy.get(), RELEASE_CACHES);
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(copy->GetCache(), nullptr);
    EXPECT_EQ(copy->GetLastLeaf()->GetCache(), nullptr);
    EXPECT_EQ(reports, 0);
}

TEST(VisDataTreeUtilityFilters, CachesOfALayoutAreReportedOnceAndStayWithIt)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToShell()});
    const FilteredTree copy = Filter(tree.get());
    const Held<KUV2DBagRep> bag(KUV2DBagRep::CreateRep());
    const trees::LayoutRef layout = trees::MakeLayout(copy.get(), bag.get());
    const Cache* const cache = copy->GetCache();
    ASSERT_TRUE(cache);
    const Reports heard;
    VisDataTreeUtility::ReleaseFilteredTreeRoot(copy.get(), KEEP_CACHES);
    EXPECT_EQ(reports, 0);
    VisDataTreeUtility::ReleaseFilteredTreeRoot(copy.get(), RELEASE_CACHES);
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(copy->GetCache(), cache);
    EXPECT_NE(copy->GetLastLeaf()->GetCache(), nullptr);
    layout->SetTreeRoot(nullptr);
    EXPECT_EQ(copy->GetCache(), nullptr);
}

TEST(VisDataTreeUtilityFilters, ACacheOfALayoutStaysItsOwnWhenItIsLinkedAnew)
{
    const FilteredTree shown = Tree({"r", {{"a"}}});
    const FilteredTree other = Tree({"s", {{"b"}}});
    const Held<KUV2DBagRep> bag(KUV2DBagRep::CreateRep());
    const trees::LayoutRef layout = trees::MakeLayout(shown.get(), bag.get());
    Cache* const cache = shown->GetCache();
    shown->SetCache(nullptr);
    other->SetCache(cache);
    // Forgets its node, which keeps pointing at it.
    Cache* const forgetful = shown->GetFirstLeaf()->GetCache();
    Cache stranger(nullptr);
    *forgetful = stranger;
    int deaths = 0;
    new MortalCache(other->GetFirstLeaf(), deaths);
    const Reports heard;
    VisDataTreeUtility::ReleaseFilteredTreeRoot(other.get(), RELEASE_CACHES);
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(deaths, 1) << "the caller's own goes";
    EXPECT_EQ(other->GetCache(), cache);
    VisDataTreeUtility::ReleaseFilteredTreeRoot(shown.get(), RELEASE_CACHES);
    EXPECT_EQ(reports, 2);
    EXPECT_EQ(shown->GetFirstLeaf()->GetCache(), forgetful);
    other->SetCache(nullptr);
    layout->SetTreeRoot(nullptr);
}

TEST(VisDataTreeUtilityFilters, ACopyOfALayoutsCacheBelongsToTheCaller)
{
    const FilteredTree shown = Tree({"r"});
    const FilteredTree other = Tree({"s"});
    const Held<KUV2DBagRep> bag(KUV2DBagRep::CreateRep());
    const trees::LayoutRef layout = trees::MakeLayout(shown.get(), bag.get());
    other->SetCache(shown->GetCache()->Clone());
    ASSERT_TRUE(other->GetCache());
    const Reports heard;
    VisDataTreeUtility::ReleaseFilteredTreeRoot(other.get(), RELEASE_CACHES);
    EXPECT_EQ(reports, 0);
    EXPECT_EQ(other->GetCache(), nullptr);
    layout->SetTreeRoot(nullptr);
}

// ---- depth, length, memory

namespace {

/// A chain of the most levels, every node with a path through `reps` of its own.
FilteredTree DeepChain(const KUVPickPath& path)
{
    FilteredTree root = Node("0", path);
    VisDataTree* last = root.get();
    for (unsigned int level = 1; level < trees::MANY_LEVELS; ++level) {
        const Held<VisDataTree> node(
            new VisDataTree(NodeDataOf(new KUVPickPath(path)), "level", ""));
        last->InsertChild(node.get(), 1);
        last = node.get();
    }
    return root;
}

}  // namespace

TEST(VisDataTreeUtilityFilters, FiltersAsManyLevelsAsMemoryHolds)
{
    Pump pump;
    const FilteredTree tree = DeepChain(At(pump.ToBlade({1}), 3.0f));
    VisDataTree* const leaf = tree->GetFirstLeaf();
    leaf->SetIsLeafObject(1);
    VisDataTreeFilters filters = Sphere(1.0f, 3.0f);
    filters.productFilter = 1;
    const FilteredTree copy = Filter(tree.get(), filters, CHECK_LEAVES);
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->ComputeNumberOfNodes(), trees::MANY_LEVELS);
    EXPECT_EQ(copy->ComputeMaxDepth(), trees::MANY_LEVELS);
    filters.showFaces = 0;
    EXPECT_FALSE(Filter(tree.get(), filters, CHECK_LEAVES));
    tree->UpdateMerge(0, 1);
    for (VisDataTree* node = tree.get(); node != leaf; node = node->GetChildren()[0])
        node->SetIsMerged(1);
    const FilteredTree bottom = Filter(tree.get());
    EXPECT_EQ(bottom->ComputeNumberOfNodes(), 1U) << "all levels but the last are merged";
    EXPECT_EQ(bottom->IsLeafObject(), 1);
}

TEST(VisDataTreeUtilityFilters, EveryLevelOfADeepSceneFindsItsProductAtOnce)
{
    // Each of the levels has the whole path, and only its last bag but one is of the product:
    // looking through all reps of all paths would take minutes.
    constexpr int LEVELS = 50000;
    TestScene scene;
    KUV3DBagRep* bag = scene.Root();
    for (int level = 0; level < LEVELS; ++level)
        bag = scene.AddBag(bag);
    scene.AddShape(scene.AddRootOccurrence(bag, "Pump"), "Blade", {1});
    const SceneTree tree = TreeOf(VisPathUtility::GenerateAllKUVPickPath(scene.Viewpoint(), 0, 0));
    for (const unsigned char checkLeaves : LEAVES_CHECKED_OR_NOT) {
        const FilteredTree copy = Filter(tree.get(), Product(1), checkLeaves);
        ASSERT_TRUE(copy);
        EXPECT_EQ(copy->ComputeMaxDepth(), static_cast<unsigned int>(LEVELS) + 2U);
    }
    EXPECT_FALSE(Filter(tree.get(), Product(2), CHECK_LEAVES));
}

TEST(VisDataTreeUtilityFilters, SurvivesEveryFailingAllocation)
{
    Pump pump;
    const SceneTree tree =
        TreeOf({At(pump.ToBlade({1}), 1.0f), pump.ToBlade({4}), pump.ToBlade({6}), pump.ToShell()});
    tree->GetChildren()[0]->SetIsMerged(1);
    VisDataTreeFilters filters = Sphere(5.0f);
    filters.showEdges = 0;
    filters.productFilter = 1;
    for (const auto mode :
         {support::FailingAllocation::Mode::Once, support::FailingAllocation::Mode::FromThere}) {
        const std::size_t failures = support::ForEveryFailingAllocation(
            [&] {
                VisDataTree* const copy =
                    VisDataTreeUtility::ApplyFilters(tree.get(), filters, CHECK_LEAVES);
                if (!copy)
                    throw std::bad_alloc();
                const support::UncountedAllocations uncounted;
                EXPECT_EQ(support::DescribeTree(copy), "Pump(Face Point Housing(Shell))");
                VisDataTreeUtility::ReleaseFilteredTreeRoot(copy, KEEP_CACHES);
                copy->Release();
            },
            mode);
        EXPECT_GT(failures, 20U);
        std::cout << "count: " << failures << " failing allocations while filtering a tree\n";
    }
}

TEST(VisDataTreeUtilityFilters, ReleasesEverythingWithoutMemoryForItsWalk)
{
    const support::TreeSketch sketch = {
        "r", {{"a", {{"b", {{"c"}, {"d"}}}, {"e"}}}, {"f"}, {"g", {{"h"}, {"i", {{"j"}}}}}}};
    for (std::size_t failing = 1; failing <= 3; ++failing) {
        FilteredTree tree = Tree(sketch);
        int deaths = 0;
        new MortalCache(support::FindNode(tree.get(), "a"), deaths);
        new MortalCache(support::FindNode(tree.get(), "j"), deaths);
        std::vector<VisDataTree*>& children = tree->GetChildren();
        children.insert(children.begin() + 1, nullptr);
        {
            const support::FailingAllocation noMemory(failing,
                                                      support::FailingAllocation::Mode::FromThere);
            VisDataTreeUtility::ReleaseFilteredTreeRoot(tree.get(), RELEASE_CACHES);
        }
        children.erase(children.begin() + 1);
        EXPECT_EQ(deaths, 2);
        for (const char* label : {"r", "a", "b", "c", "d", "e", "f", "g", "h", "i", "j"})
            EXPECT_EQ(support::FindNode(tree.get(), label)->GetData(), nullptr) << label;
    }
}
