#include "VisDataTreeUtility.h"

#include "FilteredTrees.h"
#include "Properties.h"
#include "SceneTrees.h"
#include "VisCushionLayout.h"
#include "VisIcicleLayout.h"
#include "VisPathUtility.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "private/CacheAccess.h"
#include "private/NodePath.h"
#include "private/TreeWalk.h"

#include "support/FixedWidthFont.h"
#include "support/TestScene.h"
#include "support/TreeBuilders.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstddef>
#include <iostream>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

using filtered::AddLightBag;
using filtered::At;
using filtered::CHECK_LEAVES;
using filtered::Filter;
using filtered::FilteredTree;
using filtered::Kept;
using filtered::LEAVES_CHECKED_OR_NOT;
using filtered::Merge;
using filtered::Node;
using filtered::Product;
using filtered::Shown;
using filtered::Sphere;
using filtered::Tree;
using scenes::NodeOf;
using scenes::Pump;
using scenes::SceneTree;
using scenes::TreeOf;
using support::Held;
using support::ListOf;
using support::PathTo;
using support::TestScene;

namespace filtered {

KUV_IMPLEMENT_CLASS_NAMED(LightHandler, "LightVisuProductLoaderHandler", KUVBaseUnknown, "KUVTests")

}  // namespace filtered

// ---- the record

TEST(VisDataTreeFilters, IsAPlainRecordInItsPublishedOrder)
{
    static_assert(std::is_standard_layout<VisDataTreeFilters>::value &&
                  std::is_trivially_copyable<VisDataTreeFilters>::value);
    EXPECT_EQ(offsetof(VisDataTreeFilters, showEdges), 0U);
    EXPECT_EQ(offsetof(VisDataTreeFilters, showFaces), 1U);
    EXPECT_EQ(offsetof(VisDataTreeFilters, showVertices), 2U);
    EXPECT_EQ(offsetof(VisDataTreeFilters, radius), 4U);
    EXPECT_EQ(offsetof(VisDataTreeFilters, centreX), 8U);
    EXPECT_EQ(offsetof(VisDataTreeFilters, centreY), 12U);
    EXPECT_EQ(offsetof(VisDataTreeFilters, centreZ), 16U);
    EXPECT_EQ(offsetof(VisDataTreeFilters, productFilter), 20U);
    EXPECT_EQ(sizeof(VisDataTreeFilters), 24U);
}

TEST(VisDataTreeFilters, KeepsEverythingAsItIsMade)
{
    Pump pump;
    const SceneTree tree = TreeOf(
        {pump.ToBlade({1}), pump.ToBlade({4}), pump.ToBlade({6}), pump.ToBlade(), pump.ToShell()});
    for (const unsigned char checkLeaves : LEAVES_CHECKED_OR_NOT)
        EXPECT_EQ(Kept(tree.get(), {}, checkLeaves),
                  "Pump(Rotor(Face Edge Point Blade) Housing(Shell))");
}

// ---- the copy

TEST(VisDataTreeUtilityFilters, ACopyHasItsOwnNodesPathsAndFlags)
{
    Pump pump;
    KUVPickPath picked = At(pump.ToBlade({2, 3}), 1.0f, 2.0f, 3.0f);
    picked.LockPath();
    const SceneTree tree(VisDataTreeUtility::CreateTreeFromPickPath(
        [&picked] {
            list<KUVPickPath> paths;
            paths.Append(&picked);
            return paths;
        }(),
        nullptr, 0));
    VisDataTree* const face = tree->GetFirstLeaf();
    face->SetIsMergeable(7);
    tree->SetIsMerged(1);
    tree->GetChildren()[0]->SetIconName("rotor.png");
    tree->InsertChild(new VisDataTree(nullptr, "second child", ""), 1);
    tree->GetLastLeaf()->Release();

    const FilteredTree copy = Filter(tree.get());
    ASSERT_TRUE(copy);
    EXPECT_EQ(support::DescribeTree(copy.get()), "Pump(Rotor(Face))");
    EXPECT_EQ(copy->GetReferenceCount(), 1U);
    EXPECT_EQ(copy->GetParent(), nullptr);
    EXPECT_EQ(copy->IsMerged(), 1);
    EXPECT_EQ(copy->IsLeafObject(), 0);
    const VisDataTree* const rotor = copy->GetChildren()[0];
    EXPECT_EQ(rotor->GetReferenceCount(), 1U) << "the parent holds the only reference";
    EXPECT_EQ(scenes::Icon(rotor), "rotor.png");
    const VisDataTree* const leaf = copy->GetFirstLeaf();
    ASSERT_NE(leaf, face);
    EXPECT_EQ(leaf->IsMergeable(), 7) << "flags keep the byte they were given";
    EXPECT_EQ(leaf->IsMerged(), 0);
    EXPECT_EQ(leaf->IsLeafObject(), 1);
    KUVPickPath* const path = PickPathOf(*leaf);
    ASSERT_NE(path, PickPathOf(*face));
    EXPECT_EQ(path->UnlockPath(), 1);
    EXPECT_EQ(path->GetCursorPosition(), 2);
    EXPECT_EQ(path->GetCurrentRep(), pump.blade);
    EXPECT_EQ(path->GetSubElementList()->Count(), 2);
    EXPECT_EQ(path->GetGlobalIntersection().z, 3.0f);
    path->LockPath();
}

TEST(VisDataTreeUtilityFilters, TheGivenTreeStaysAsItWas)
{
    Pump pump;
    std::vector<KUVPickPath> paths{pump.ToBlade({1}), pump.ToShell()};
    for (KUVPickPath& path : paths)
        path.LockPath();
    const SceneTree tree(VisDataTreeUtility::CreateTreeFromPickPath(ListOf(paths), nullptr, 0));
    const void* const data = tree->GetFirstLeaf()->GetData();
    const int references = static_cast<int>(tree->GetFirstLeaf()->GetReferenceCount());
    VisDataTreeFilters filters = Sphere(5.0f);
    filters.productFilter = 1;
    EXPECT_EQ(Kept(tree.get(), filters, CHECK_LEAVES), "Pump(Rotor(Face) Housing(Shell))");
    EXPECT_EQ(support::DescribeTree(tree.get()), "Pump(Rotor(Face) Housing(Shell))");
    EXPECT_EQ(tree->GetFirstLeaf()->GetData(), data);
    EXPECT_EQ(static_cast<int>(tree->GetFirstLeaf()->GetReferenceCount()), references);
    for (VisDataTree* node : {tree.get(), tree->GetFirstLeaf(), tree->GetLastLeaf()})
        EXPECT_TRUE(PickPathOf(*node)->IsLocked()) << "read through the lock";
}

TEST(VisDataTreeUtilityFilters, WithoutRootOrWithoutItsPathThereIsNoCopy)
{
    EXPECT_FALSE(Filter(nullptr));
    Pump pump;
    const SceneTree tree(new VisDataTree(nullptr, "no path", ""));
    const SceneTree below = NodeOf(pump.ToBlade());
    tree->InsertChild(below.get(), 1);
    EXPECT_FALSE(Filter(tree.get()));
    below->RemoveParent(1);
}

TEST(VisDataTreeUtilityFilters, ANodeWithoutPathGoesWithWhatIsBelowIt)
{
    const FilteredTree tree = Tree({"r", {{"a", {{"b"}}}, {"c"}}});
    VisDataTree* const a = support::FindNode(tree.get(), "a");
    PickPathOf(*a)->Release();
    a->SetData(nullptr);
    for (const unsigned char checkLeaves : LEAVES_CHECKED_OR_NOT)
        EXPECT_EQ(Kept(tree.get(), {}, checkLeaves), "r(c)");
}

TEST(VisDataTreeUtilityFilters, AbsentChildrenAreSkipped)
{
    const FilteredTree tree = Tree({"r", {{"a", {{"b"}}}, {"c"}}});
    std::vector<VisDataTree*>& children = tree->GetChildren();
    children.insert(children.begin() + 1, nullptr);
    children.push_back(nullptr);
    EXPECT_EQ(Kept(tree.get(), {}, CHECK_LEAVES), "r(a(b) c)");
    children.pop_back();
    children.erase(children.begin() + 1);
}

TEST(VisDataTreeUtilityFilters, ACopyOfASubtreeHasNoParent)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade(), pump.ToShell()});
    EXPECT_EQ(Kept(tree->GetChildren()[1]), "Housing(Shell)");
}

// ---- kinds of primitives

TEST(VisDataTreeUtilityFilters, AllThreeFlagsZeroRemovePickedPrimitivesButKeepRepsAndProducts)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToBlade({4}), pump.ToBlade({6}),
                                   pump.ToBlade(), pump.ToShell({1})});
    EXPECT_EQ(Kept(tree.get(), Shown(false, false, false)), "Pump(Rotor(Blade) Housing)");
}

TEST(VisDataTreeUtilityFilters, EachFlagKeepsItsKindOfPrimitive)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToBlade({4}), pump.ToBlade({6})});
    EXPECT_EQ(Kept(tree.get(), Shown(true, false, false)), "Pump(Rotor(Edge))");
    EXPECT_EQ(Kept(tree.get(), Shown(false, true, false)), "Pump(Rotor(Face))");
    EXPECT_EQ(Kept(tree.get(), Shown(false, false, true)), "Pump(Rotor(Point))");
}

TEST(VisDataTreeUtilityFilters, TheFlagsAreForLeafObjectsOnly)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1})});
    tree->GetFirstLeaf()->SetIsLeafObject(0);
    EXPECT_EQ(Kept(tree.get(), Shown(false, false, false)), "Pump(Rotor(Face))");
    tree->GetChildren()[0]->SetIsLeafObject(1);
    EXPECT_EQ(Kept(tree.get(), Shown(false, false, false)), "Pump(Rotor(Face))")
        << "a leaf object whose path names no primitive";
}

TEST(VisDataTreeUtilityFilters, CheckingLeavesDropsWhatHasNoneLeft)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({4}), pump.ToBlade({6}), pump.ToShell({1})});
    EXPECT_EQ(Kept(tree.get(), Shown(false, true, false)), "Pump(Rotor Housing(Face))");
    EXPECT_EQ(Kept(tree.get(), Shown(false, true, false), CHECK_LEAVES), "Pump(Housing(Face))");
    EXPECT_EQ(Kept(tree.get(), Shown(false, false, false)), "Pump(Rotor Housing)");
    EXPECT_EQ(Kept(tree.get(), Shown(false, false, false), CHECK_LEAVES), "-");
}

TEST(VisDataTreeUtilityFilters, ALeafWithoutPathCountsForItsParentsAndGoesItself)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToShell({1})});
    const FilteredTree bare(new VisDataTree(nullptr, "bare", ""));
    tree->GetChildren()[0]->InsertChild(bare.get(), 1);
    EXPECT_EQ(Kept(tree.get(), Shown(false, false, false), CHECK_LEAVES), "Pump(Rotor)")
        << "a node without path is not filtered out";
    bare->RemoveParent(1);
}

// ---- sphere

TEST(VisDataTreeUtilityFilters, ARadiusOfZeroMeansNoSphere)
{
    Pump pump;
    const SceneTree tree = TreeOf({At(pump.ToBlade({1}), 100.0f), At(pump.ToShell(), -100.0f)});
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float radius : {0.0f, -0.0f, -5.0f, nan}) {
        for (const unsigned char checkLeaves : LEAVES_CHECKED_OR_NOT)
            EXPECT_EQ(Kept(tree.get(), Sphere(radius), checkLeaves),
                      "Pump(Rotor(Face) Housing(Shell))");
    }
}

TEST(VisDataTreeUtilityFilters, ASphereWithoutAnyPickedPointDropsTheWholeTree)
{
    Pump pump;
    const SceneTree tree = TreeOf({At(pump.ToBlade({1}), 100.0f), At(pump.ToShell(), -100.0f)});
    for (const unsigned char checkLeaves : LEAVES_CHECKED_OR_NOT)
        EXPECT_EQ(Kept(tree.get(), Sphere(99.0f), checkLeaves), "-");
}

TEST(VisDataTreeUtilityFilters, ASphereKeepsWhatWasPickedInItAndTheLevelsAbove)
{
    Pump pump;
    const SceneTree tree = TreeOf({At(pump.ToBlade({1}), 2.0f, 3.0f, 6.0f),
                                   At(pump.ToBlade({2}), 8.0f), At(pump.ToShell(), -100.0f)});
    EXPECT_EQ(Kept(tree.get(), Sphere(7.5f)), "Pump(Rotor(Face))");
    EXPECT_EQ(Kept(tree.get(), Sphere(7.0f)), "Pump(Rotor(Face))") << "the edge counts";
    EXPECT_EQ(Kept(tree.get(), Sphere(6.999f)), "-");
    EXPECT_EQ(Kept(tree.get(), Sphere(1.0f, -99.5f)), "Pump(Housing(Shell))");
    EXPECT_EQ(Kept(tree.get(), Sphere(8.0f)), "Pump(Rotor(Face Face))");
}

TEST(VisDataTreeUtilityFilters, ThePickedPointsOfInnerNodesDoNotMatter)
{
    Pump pump;
    const SceneTree tree = TreeOf({At(pump.ToBlade({1}), 100.0f)});
    PickPathOf(*tree)->SetIntersection({});
    PickPathOf(*tree->GetChildren()[0])->SetIntersection({});
    EXPECT_EQ(Kept(tree.get(), Sphere(1.0f)), "-");
    EXPECT_EQ(Kept(tree.get(), Sphere(1.0f, 100.0f)), "Pump(Rotor(Face))");
}

TEST(VisDataTreeUtilityFilters, WithASphereALeafMustBeInsideAndNotFilteredOutWhenLeavesAreChecked)
{
    Pump pump;
    const SceneTree tree = TreeOf({At(pump.ToBlade({1}), 0.0f), At(pump.ToBlade({4}), 100.0f)});
    VisDataTreeFilters filters = Sphere(1.0f);
    filters.showFaces = 0;
    EXPECT_EQ(Kept(tree.get(), filters), "Pump(Rotor)") << "the face was picked there";
    EXPECT_EQ(Kept(tree.get(), filters, CHECK_LEAVES), "-")
        << "one leaf is inside, another one is shown, none is both";
    filters.centreX = 100.0f;
    EXPECT_EQ(Kept(tree.get(), filters, CHECK_LEAVES), "Pump(Rotor(Edge))");
}

TEST(VisDataTreeUtilityFilters, ALeafWithoutPathIsInNoSphere)
{
    Pump pump;
    const SceneTree tree = TreeOf({At(pump.ToBlade({1}), 9.0f)});
    const FilteredTree bare(new VisDataTree(nullptr, "bare", ""));
    tree->GetChildren()[0]->InsertChild(bare.get(), 1);
    EXPECT_EQ(Kept(tree.get(), Sphere(1.0f)), "-");
    bare->RemoveParent(1);
}

TEST(VisDataTreeUtilityFilters, OddNumbersOfASphereDropOrKeepWithoutHarm)
{
    Pump pump;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const float largest = std::numeric_limits<float>::max();
    const float smallest = std::numeric_limits<float>::denorm_min();
    const SceneTree tree = TreeOf({At(pump.ToBlade({1}), 16777216.0f), At(pump.ToShell(), nan),
                                   At(pump.ToBlade({2}), -infinity)});
    EXPECT_EQ(Kept(tree.get(), Sphere(infinity)), "Pump(Rotor(Face Face))")
        << "not-a-number is nowhere";
    EXPECT_EQ(Kept(tree.get(), Sphere(largest)), "Pump(Rotor(Face))");
    EXPECT_EQ(Kept(tree.get(), Sphere(largest / 2, -largest)), "-")
        << "squares of the largest numbers are compared, not infinities";
    EXPECT_EQ(Kept(tree.get(), Sphere(smallest, 16777216.0f)), "Pump(Rotor(Face))");
    EXPECT_EQ(Kept(tree.get(), Sphere(smallest)), "-");
    EXPECT_EQ(Kept(tree.get(), Sphere(1.0f, nan)), "-");
}

// ---- product structure

TEST(VisDataTreeUtilityFilters, ProductFilterOneDropsPathsWithoutTheRootOccurrence)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    KUVRep* const blade = scene.AddShape(pump, "Blade", {1, 1});
    auto* const loose = scene.AddOccurrence(scene.Root(), "Loose");
    KUVRep* const pin = scene.AddShape(loose, "Pin", {1});
    const SceneTree tree =
        TreeOf({PathTo({pump, blade}, {1}), PathTo({loose, pin}), PathTo({pump, blade})});
    ASSERT_EQ(support::DescribeTree(tree.get()), "Not loaded(Pump(Face Blade) Loose(Pin))");
    for (const unsigned char checkLeaves : LEAVES_CHECKED_OR_NOT)
        EXPECT_EQ(Kept(tree.get(), Product(1), checkLeaves), "Not loaded(Pump(Face Blade))")
            << "the node above has a path without reps, which stays";
    EXPECT_EQ(Kept(tree->GetChildren()[1], Product(1)), "-");
}

TEST(VisDataTreeUtilityFilters, ProductFilterTwoKeepsPathsOfTheLightRepresentation)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    auto* const light = AddLightBag(scene, pump);
    KUVRep* const box = scene.AddShape(light, "Box", {1});
    KUVRep* const blade = scene.AddShape(pump, "Blade", {1});
    const SceneTree tree = TreeOf({PathTo({pump, light, box}), PathTo({pump, blade})});
    ASSERT_EQ(support::DescribeTree(tree.get()), "Pump(Not loaded(Box) Blade)");
    EXPECT_EQ(Kept(tree.get(), Product(2)), "Pump(Not loaded(Box))")
        << "the top level keeps the path that made it, which leads on through the light bag";
    EXPECT_EQ(Kept(tree.get(), Product(1)), "Pump(Not loaded(Box) Blade)");
    const SceneTree other = TreeOf({PathTo({pump, blade}), PathTo({pump, light, box})});
    EXPECT_EQ(Kept(other.get(), Product(2)), "-")
        << "here the top level was made by the path to the blade";
}

TEST(VisDataTreeUtilityFilters, OtherProductFiltersKeepEverything)
{
    TestScene scene;
    KUV3DBagRep* const bag = scene.AddBag(scene.Root());
    KUVRep* const blade = scene.AddShape(bag, "Blade", {1});
    const SceneTree tree = TreeOf({PathTo({bag, blade})});
    for (const unsigned int product : {0U, 3U, 4U, 0x101U, 0xFFFFFFFFU})
        EXPECT_EQ(Kept(tree.get(), Product(product)), "Not loaded(Blade)");
    for (const unsigned int product : {1U, 2U})
        EXPECT_EQ(Kept(tree.get(), Product(product)), "-");
}

TEST(VisDataTreeUtilityFilters, PrimitivesAndProductsAreFilteredAtOnce)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    KUVRep* const blade = scene.AddShape(pump, "Blade", {1}, 1);
    KUVRep* const loose = scene.AddShape(scene.Root(), "Loose", {1});
    const SceneTree tree =
        TreeOf({PathTo({pump, blade}, {1}), PathTo({pump, blade}, {2}), PathTo({loose}, {1})});
    VisDataTreeFilters filters = Shown(false, true, false);
    filters.productFilter = 1;
    EXPECT_EQ(Kept(tree.get(), filters, CHECK_LEAVES), "Not loaded(Pump(Face))");
}

// ---- merged levels

TEST(VisDataTreeUtilityFilters, TheChildrenOfAMergedChildBelongToTheCopyOfItsParent)
{
    const FilteredTree tree = Tree({"r", {{"a"}, {"m", {{"b", {{"c"}}}, {"d"}}}, {"e"}}});
    Merge(tree, {"m"});
    const FilteredTree copy = Filter(tree.get());
    EXPECT_EQ(support::DescribeTree(copy.get()), "r(a b(c) d e)");
    EXPECT_EQ(support::FindNode(copy.get(), "d")->GetParent(), copy.get());
}

TEST(VisDataTreeUtilityFilters, AMergedGrandchildIsCopiedAsANode)
{
    const FilteredTree tree = Tree({"r", {{"m", {{"n", {{"o", {{"p"}}}}}}}, {"a"}}});
    Merge(tree, {"m", "n", "o"});
    const FilteredTree copy = Filter(tree.get());
    EXPECT_EQ(support::DescribeTree(copy.get()), "r(n(p) a)")
        << "below the copy of n the level of o disappears";
    EXPECT_EQ(support::FindNode(copy.get(), "n")->IsMerged(), 1);
}

TEST(VisDataTreeUtilityFilters, AMergedLeafDisappears)
{
    const FilteredTree tree = Tree({"r", {{"m"}, {"a"}}});
    Merge(tree, {"m"});
    for (const unsigned char checkLeaves : LEAVES_CHECKED_OR_NOT)
        EXPECT_EQ(Kept(tree.get(), {}, checkLeaves), "r(a)");
}

TEST(VisDataTreeUtilityFilters, AMergedChildIsNotFilteredItself)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    KUVRep* const blade = scene.AddShape(pump, "Blade", {1});
    const FilteredTree root = Node("r", PathTo({pump}));
    const FilteredTree merged = Node("m", PathTo({blade}));
    const FilteredTree leaf = Node("a", PathTo({pump, blade}));
    root->InsertChild(merged.get(), 1);
    merged->InsertChild(leaf.get(), 1);
    EXPECT_EQ(Kept(root.get(), Product(1)), "r");
    merged->SetIsMerged(1);
    EXPECT_EQ(Kept(root.get(), Product(1)), "r(a)");
    leaf->RemoveParent(1);
    merged->RemoveParent(1);
}

TEST(VisDataTreeUtilityFilters, MergedLevelsWithOneChildDisappearAtTheTop)
{
    const FilteredTree tree = Tree({"r", {{"a", {{"b", {{"c"}, {"d"}}}}}}});
    Merge(tree, {"r", "a"});
    EXPECT_EQ(Kept(tree.get()), "b(c d)");
    Merge(tree, {"b"});
    EXPECT_EQ(Kept(tree.get()), "b(c d)") << "b has two children";
    tree->SetIsMerged(0);
    EXPECT_EQ(Kept(tree.get()), "r(b(c d))") << "not at the top: one level dissolves";
}

TEST(VisDataTreeUtilityFilters, AChainOfMergedLevelsEndsInItsLeaf)
{
    const FilteredTree tree = Tree({"r", {{"a", {{"b"}}}}});
    Merge(tree, {"r", "a", "b"});
    EXPECT_EQ(Kept(tree.get()), "b");
}

TEST(VisDataTreeUtilityFilters, AMergedTopLevelStaysWhereNodesAboveItAreNotMerged)
{
    const FilteredTree tree = Tree({"s", {{"r", {{"a", {{"b"}, {"c"}}}}}}});
    Merge(tree, {"r"});
    VisDataTree* const root = support::FindNode(tree.get(), "r");
    EXPECT_EQ(Kept(root), "r(a(b c))");
    Merge(tree, {"s"});
    EXPECT_EQ(Kept(root), "a(b c)");
}

TEST(VisDataTreeUtilityFilters, ATopLevelThatIsFilteredOutDropsTheTreeThoughMerged)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    const FilteredTree root = Node("r", PathTo({scene.Root()}));
    const FilteredTree below = Node("a", PathTo({pump}));
    root->InsertChild(below.get(), 1);
    root->SetIsMerged(1);
    EXPECT_EQ(Kept(root.get()), "a");
    EXPECT_EQ(Kept(root.get(), Product(1)), "-");
    below->RemoveParent(1);
}

// ---- agreement with the plain definition

namespace {

/// The filters written down as they are defined, for small trees.
class PlainFilters {
public:
    PlainFilters(const VisDataTreeFilters& filters, bool checksLeaves)
        : filters_(filters), checksLeaves_(checksLeaves)
    {
    }

    std::string Describe(VisDataTree* node, bool isTop = true) const
    {
        if (!node || !node->GetData())
            return "";
        if ((filters_.radius > 0.0f || checksLeaves_) && !Passes(node))
            return "";
        if (IsFilteredOut(node))
            return "";
        if (isTop && node->GetChildren().size() == 1 && IsMergedUpwards(node))
            return Describe(node->GetChildren()[0]);
        std::string text = node->GetLabel().GetUtf8();
        text += node->IsMerged() ? "m(" : "(";
        for (VisDataTree* const child : node->GetChildren()) {
            if (!child || !child->IsMerged()) {
                text += Describe(child, false);
                continue;
            }
            for (VisDataTree* const grandchild : child->GetChildren())
                text += Describe(grandchild, false);
        }
        return text + ")";
    }

private:
    static bool IsMergedUpwards(const VisDataTree* node)
    {
        for (; node; node = node->GetParent()) {
            if (!node->IsMerged())
                return false;
        }
        return true;
    }

    bool Passes(VisDataTree* node) const
    {
        for (VisDataTree* const child : node->GetChildren()) {
            if (child && Passes(child))
                return true;
        }
        if (!node->GetChildren().empty())
            return false;
        if (filters_.radius > 0.0f && !(node->GetData() && IsInSphere(PickPathOf(*node))))
            return false;
        return !checksLeaves_ || !IsFilteredOut(node);
    }

    bool IsInSphere(const KUVPickPath* path) const
    {
        const KUVMathPointf& point = path->GetGlobalIntersection();
        const float x = point.x - filters_.centreX;
        const float y = point.y - filters_.centreY;
        const float z = point.z - filters_.centreZ;
        return x * x + y * y + z * z <= filters_.radius * filters_.radius;
    }

    bool IsFilteredOut(VisDataTree* node) const
    {
        KUVPickPath* const path = PickPathOf(*node);
        if (!path)
            return false;
        const auto type = node->IsLeafObject() ? VisPathUtility::GetPickPathType(path)
                                               : VisPathUtility::VisPath_NoPrimitive;
        if ((type == VisPathUtility::VisPath_Edge && !filters_.showEdges) ||
            (type == VisPathUtility::VisPath_Face && !filters_.showFaces) ||
            (type == VisPathUtility::VisPath_Vertex && !filters_.showVertices))
            return true;
        if (path->Size() == 0)
            return false;
        const auto contains = [path](const char* name) {
            return VisPathUtility::CheckIfPickPathContains(path, name) != 0;
        };
        return (filters_.productFilter == 1 && !contains("OXMRootOccurrence")) ||
               (filters_.productFilter == 2 && !contains("LightVisuProductLoaderHandler"));
    }

    VisDataTreeFilters filters_;
    bool checksLeaves_;
};

std::string DescribeWithFlags(const VisDataTree* node)
{
    std::string text = node->GetLabel().GetUtf8();
    text += node->IsMerged() ? "m(" : "(";
    for (const VisDataTree* const child : node->GetChildren())
        text += DescribeWithFlags(child);
    return text + ")";
}

/// Random trees of random paths through a few reps.
class RandomTrees {
public:
    RandomTrees()
    {
        auto* const pump = scene_.AddRootOccurrence(scene_.Root(), "Pump");
        auto* const rotor = scene_.AddOccurrence(pump, "Rotor");
        auto* const light = AddLightBag(scene_, rotor);
        reps_ = {pump, rotor, light, scene_.AddShape(light, "Blade", {1, 1}, 1, 1)};
    }

    FilteredTree Make() const
    {
        const int nodes = Below(18) + 1;
        std::vector<VisDataTree*> made;
        for (int i = 0; i < nodes; ++i) {
            auto* const node = new VisDataTree(NodeDataOf(MakePath()),
                                               KUVUnicodeString("n" + std::to_string(i)), "");
            node->SetIsMerged(Below(3) == 0);
            node->SetIsLeafObject(Below(2) == 0);
            if (i > 0) {
                // Chains come about as often as stars.
                const int reach = Below(2) == 0 ? 1 : i;
                const int parent = i - 1 - Below(reach);
                made[static_cast<std::size_t>(parent)]->InsertChild(node, 1);
                node->Release();
            }
            made.push_back(node);
        }
        return FilteredTree(made.front());
    }

    VisDataTreeFilters MakeFilters() const
    {
        VisDataTreeFilters filters = Shown(Below(2) == 0, Below(2) == 0, Below(2) == 0);
        if (Below(2) == 0) {
            filters.radius = static_cast<float>(Below(4));
            filters.centreX = static_cast<float>(Below(3));
            filters.centreY = static_cast<float>(Below(3));
            filters.centreZ = static_cast<float>(Below(3));
        }
        if (Below(3) == 0)
            filters.productFilter = static_cast<unsigned int>(Below(3));
        return filters;
    }

    static int Below(int bound) { return *rc::gen::resize(100, rc::gen::inRange(0, bound)); }

private:
    KUVPickPath* MakePath() const
    {
        if (Below(20) == 0)
            return nullptr;
        std::vector<KUVRep*> reps;
        for (KUVRep* const rep : reps_) {
            if (Below(6) > 0)
                reps.push_back(rep);
        }
        if (Below(10) == 0)
            reps.clear();
        const list<int> numbers = Below(4) == 0 ? list<int>() : list<int>({Below(5)});
        auto* const path = new KUVPickPath(PathTo(reps, numbers));
        path->SetIntersection({static_cast<float>(Below(4)), static_cast<float>(Below(4)),
                               static_cast<float>(Below(4))});
        return path;
    }

    TestScene scene_;
    std::vector<KUVRep*> reps_;
};

}  // namespace

TEST(VisDataTreeUtilityFilters, AgreesWithThePlainDefinitionOnRandomTrees)
{
    const RandomTrees trees;
    int kept = 0;
    int changed = 0;
    properties::Check("random trees filtered as the plain definition does", 4000, [&] {
        const FilteredTree tree = trees.Make();
        const VisDataTreeFilters filters = trees.MakeFilters();
        const auto checkLeaves = static_cast<unsigned char>(RandomTrees::Below(2));
        const FilteredTree copy = Filter(tree.get(), filters, checkLeaves);
        const std::string text = copy ? DescribeWithFlags(copy.get()) : "";
        RC_ASSERT(text == PlainFilters(filters, checkLeaves != 0).Describe(tree.get()));
        kept += copy ? 1 : 0;
        changed += copy && text != DescribeWithFlags(tree.get()) ? 1 : 0;
    });
    std::cout << "count: " << kept << " of them kept their root, " << changed
              << " of these are not as the tree was\n";
    EXPECT_GT(kept, 500);
    EXPECT_GT(changed, 200);
}

// ---- with the rest of the module

namespace {

/// Shows `tree` in a layout of the class `Layout` and counts the nodes that it gives room to.
template <class Layout>
unsigned int CountShown(VisDataTree* tree)
{
    const Held<core::MeasuringFont> font(support::MakeFixedWidthFont());
    const Held<KUV2DBagRep> bag(KUV2DBagRep::CreateRep());
    const Held<Layout> layout(Layout::CreateLayout(nullptr, tree, bag.get()));
    VisDataTreeUtility::ComputeNbTriangles(tree, 0);
    layout->Draw({0.0f, 0.0f}, {800.0f, 600.0f}, font.get(), 1.0f);
    unsigned int shown = 0;
    VisPreOrderWalk<VisDataTree> walk(tree);
    while (const VisDataTree* const node = walk.Next()) {
        const VisTreeSpaceFillingLayoutCache* const cache = VisCacheAccess::LayoutCacheOf(node);
        shown += cache && !cache->IsDiscarded() && cache->GetSize().x > 0.0f ? 1U : 0U;
    }
    layout->SetTreeRoot(nullptr);
    return shown;
}

}  // namespace

TEST(VisDataTreeUtilityFilters, AFilteredCopyIsDrawnByEveryLayoutBesideItsTree)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToBlade({4}), pump.ToShell({1})});
    const FilteredTree copy = Filter(tree.get(), Shown(false, true, false), CHECK_LEAVES);
    ASSERT_EQ(support::DescribeTree(copy.get()), "Pump(Rotor(Face) Housing(Face))");
    const Held<KUV2DBagRep> bag(KUV2DBagRep::CreateRep());
    const Held<VisTreeMapLayout> beside(
        VisTreeMapLayout::CreateLayout(nullptr, tree.get(), bag.get()));
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(tree.get(), 0), 17U);
    EXPECT_EQ(CountShown<VisTreeMapLayout>(copy.get()), 5U);
    EXPECT_EQ(CountShown<VisCushionLayout>(copy.get()), 5U);
    EXPECT_EQ(CountShown<VisIcicleLayout>(copy.get()), 5U);
    EXPECT_EQ(tree->GetCache()->GetSizeValue(), 17) << "the tree keeps its weights";
    beside->SetTreeRoot(nullptr);
}

TEST(VisDataTreeUtilityFilters, TheNodesOfACopyAreFoundByTheSamePaths)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToBlade({4}), pump.ToShell({1})});
    const FilteredTree copy = Filter(tree.get(), Shown(false, true, false));
    KUVPickPath path = pump.ToShell({1});
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(copy.get(), &path, 1),
              copy->GetLastLeaf());
    path = pump.ToBlade({4});
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(copy.get(), &path, 1), nullptr);
}
