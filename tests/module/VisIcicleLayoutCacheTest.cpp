#include "IcicleFixture.h"
#include "VisIcicleLayout.h"

#include "private/IcicleAccess.h"

#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

using icicles::Cache;
using icicles::CacheOf;
using icicles::NO_LIMIT;
using icicles::NOT_COMPUTED;
using icicles::OpenCache;
using icicles::Plot;
using icicles::SHALLOW_AND_DEEP;

namespace {

constexpr unsigned int FIND_OUT = 0xFFFFFFFF;
constexpr int NOTHING_VISIBLE = 0x7FFFFFFF;

void ExpectPoint(const KUVMathPoint2Df& point, float x, float y)
{
    EXPECT_EQ(point.x, x);
    EXPECT_EQ(point.y, y);
}

const Cache& ReadOnly(const Cache* cache) { return *cache; }

/// The size of the subtree with the label and from the column where the node stands.
std::string SizeOf(const Plot& plot, const char* label, unsigned int columns = NO_LIMIT,
                   unsigned char relative = 0, unsigned char inlineLabels = 0)
{
    Cache& cache = *plot.Of(label);
    return Plot::Text(cache.ComputeIcicleSize(columns, relative, inlineLabels,
                                              cache.GetNode()->ComputeDepth(), FIND_OUT, FIND_OUT));
}

}  // namespace

// ---- construction and copies

TEST(VisIcicleLayoutCache, ANewCacheHasItsDefaults)
{
    const trees::NodeRef node = trees::MakeNode("N");
    Cache cache(node.Get());
    EXPECT_EQ(node->GetCache(), &cache);
    ExpectPoint(cache.GetIcicleSize(), -1.0f, -1.0f);
    ExpectPoint(cache.GetGraphicalSize(), -1.0f, -1.0f);
    EXPECT_EQ(cache.GetIcicleColSpan(), 1U);
    EXPECT_EQ(cache.GetIcicleCursor(), NOT_COMPUTED);
    EXPECT_EQ(cache.GetIcicleNLastNodes(), NO_LIMIT);
    EXPECT_EQ(VisIcicleAccess::InlineLabels(cache), 0);
    EXPECT_FALSE(VisIcicleAccess::HasStretchedLeaves(cache));
    ExpectPoint(cache.GetPos(), 0.0f, 0.0f);
    ExpectPoint(cache.GetComputedMinimumSize(), -1.0f, -1.0f);
    EXPECT_EQ(cache.GetView(), nullptr);
    unsigned int cursor = 7;
    EXPECT_EQ(cache.GetNextNodeIcicleRightDirection(cursor), node.Get()) << "no child to go to";
    node->SetCache(nullptr);
}

TEST(VisIcicleLayoutCache, ACopyHasToBeMeasuredAgain)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.DrawLast(2, /*relative=*/0, /*inlineLabels=*/1);
    Cache& b = *plot.Of("B");
    b.SetSizeValue(7);

    Cache copy(b);
    EXPECT_EQ(copy.GetNode(), nullptr);
    EXPECT_EQ(copy.GetSizeValue(), 7);
    EXPECT_EQ(copy.GetIcicleColSpan(), 2U);
    EXPECT_EQ(copy.GetIcicleCursor(), 1U);
    EXPECT_EQ(copy.GetIcicleNLastNodes(), 2U);
    ExpectPoint(copy.GetIcicleSize(), 0.0f, 0.0f);
    ExpectPoint(copy.GetGraphicalSize(), -1.0f, -1.0f);
    EXPECT_EQ(VisIcicleAccess::InlineLabels(copy), 0);
    EXPECT_FALSE(VisIcicleAccess::HasStretchedLeaves(copy));
    ExpectPoint(copy.GetSize(), b.GetSize().x, b.GetSize().y);
    EXPECT_EQ(copy.GetView(), nullptr);

    const std::unique_ptr<VisDataTree::VisDataTreeCache> clone(b.Clone());
    const auto* const icicleClone = dynamic_cast<const Cache*>(clone.get());
    ASSERT_NE(icicleClone, nullptr);
    EXPECT_EQ(icicleClone->GetNode(), nullptr);
    EXPECT_EQ(icicleClone->GetIcicleColSpan(), 2U);
    ExpectPoint(icicleClone->GetIcicleSize(), 0.0f, 0.0f);
}

TEST(VisIcicleLayoutCache, AssignmentKeepsSizesAndFlagsOfItsOwn)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.DrawLast(2, /*relative=*/0, /*inlineLabels=*/1);
    Cache& a = *plot.Of("A");
    const KUVMathPoint2Df size = a.GetIcicleSize();
    const KUVMathPoint2Df graphical = a.GetGraphicalSize();
    unsigned int cursor = 0;
    CacheOf(plot.Node("a1"))->GetNextNodeIcicleLeftDirection(cursor, plot.root.Get(), NO_LIMIT);

    Cache fresh(nullptr);
    a = fresh;
    EXPECT_EQ(a.GetIcicleColSpan(), 1U);
    EXPECT_EQ(a.GetIcicleCursor(), NOT_COMPUTED);
    EXPECT_EQ(a.GetIcicleNLastNodes(), NO_LIMIT);
    ExpectPoint(a.GetIcicleSize(), size.x, size.y);
    ExpectPoint(a.GetGraphicalSize(), graphical.x, graphical.y);
    EXPECT_EQ(VisIcicleAccess::InlineLabels(a), 1);
    EXPECT_TRUE(VisIcicleAccess::HasStretchedLeaves(a));
    EXPECT_EQ(a.GetNode(), nullptr) << "the rule of every node cache";
}

TEST(VisIcicleLayoutCache, AssignmentForgetsTheWayBackUnlessBothKnowTheSame)
{
    const Plot plot(SHALLOW_AND_DEEP);
    Cache& a = *plot.Of("A");
    unsigned int cursor = 0;
    plot.Of("a1")->GetNextNodeIcicleLeftDirection(cursor, nullptr, NO_LIMIT);
    Cache& itself = a;
    a = itself;
    EXPECT_EQ(a.GetNextNodeIcicleRightDirection(cursor), plot.Node("a1")) << "the same on both";
    a = *plot.Of("A");
    Cache copy(a);
    EXPECT_EQ(copy.GetNextNodeIcicleRightDirection(cursor), nullptr) << "a copy has no node";
    plot.Of("a1")->GetNextNodeIcicleLeftDirection(cursor, nullptr, NO_LIMIT);
    // The node stays linked to the cache that has forgotten it; reset the link by hand.
    Cache fresh(nullptr);
    a = fresh;
    plot.Node("A")->SetCache(nullptr);
    plot.Node("A")->SetCache(&a);
    EXPECT_EQ(a.GetNextNodeIcicleRightDirection(cursor), plot.Node("a2")) << "the last child";
}

TEST(VisIcicleLayoutCache, AResetForgetsWhatWasComputed)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.DrawLast(2, 0, 1);
    unsigned int cursor = 0;
    plot.Of("a1")->GetNextNodeIcicleLeftDirection(cursor, nullptr, NO_LIMIT);
    Cache& b = *plot.Of("B");
    b.ResetCache();
    ExpectPoint(b.GetIcicleSize(), -1.0f, -1.0f);
    ExpectPoint(b.GetGraphicalSize(), -1.0f, -1.0f);
    ExpectPoint(b.GetComputedMinimumSize(), -1.0f, -1.0f);
    EXPECT_EQ(b.GetIcicleColSpan(), 1U);
    EXPECT_EQ(b.GetIcicleCursor(), NOT_COMPUTED);
    EXPECT_EQ(b.GetIcicleNLastNodes(), 2U) << "kept";
    EXPECT_EQ(VisIcicleAccess::InlineLabels(b), 1) << "kept";
    EXPECT_TRUE(VisIcicleAccess::HasStretchedLeaves(b)) << "kept";

    plot.Of("A")->ResetCache();
    EXPECT_EQ(plot.Of("A")->GetNextNodeIcicleRightDirection(cursor), plot.Node("a2"))
        << "the way back is forgotten";
}

TEST(VisIcicleLayoutCache, ANewChildResetsTheCachesAboveIt)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.Draw();
    const trees::NodeRef late = trees::MakeNode("late");
    plot.Node("A")->InsertChild(late.Get(), /*resetCaches=*/1);
    for (const char* const label : {"R", "A"}) {
        ExpectPoint(plot.Of(label)->GetIcicleSize(), -1.0f, -1.0f);
        EXPECT_EQ(plot.Of(label)->GetIcicleCursor(), NOT_COMPUTED) << label;
    }
    EXPECT_EQ(plot.Of("B")->GetIcicleCursor(), 1U);
}

// ---- cursor

TEST(VisIcicleLayoutCache, TheCursorIsWhereTheColumnsOfTheParentEnd)
{
    const Plot plot({"R", {{"A", {{"B", {{"C", {{"c"}}}}}}}, {"S", {{"s"}}}}});
    plot.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(plot.Of("s")->ComputeIcicleCursor(), 4U);
    EXPECT_EQ(plot.Of("s")->GetIcicleCursor(), 4U) << "stored";
    EXPECT_EQ(plot.Of("S")->GetIcicleCursor(), NOT_COMPUTED) << "not stored on the way";
    EXPECT_EQ(plot.Root()->ComputeIcicleCursor(), 0U);
}

TEST(VisIcicleLayoutCache, TheConstCursorStoresNothing)
{
    const Plot plot(SHALLOW_AND_DEEP);
    EXPECT_EQ(ReadOnly(plot.Of("a1")).ComputeIcicleCursor(), 2U);
    EXPECT_EQ(plot.Of("a1")->GetIcicleCursor(), NOT_COMPUTED);
}

TEST(VisIcicleLayoutCache, AStoredCursorIsTakenAsItStands)
{
    const Plot plot(SHALLOW_AND_DEEP);
    VisIcicleAccess::SetCursor(*plot.Of("A"), 5);
    EXPECT_EQ(plot.Of("A")->ComputeIcicleCursor(), 5U);
    EXPECT_EQ(ReadOnly(plot.Of("a1")).ComputeIcicleCursor(), 6U);
}

TEST(VisIcicleLayoutCache, WithoutNodeOrCachedParentTheCursorIsZero)
{
    Cache alone(nullptr);
    EXPECT_EQ(alone.ComputeIcicleCursor(), 0U);
    EXPECT_EQ(alone.GetIcicleCursor(), 0U);
    const Plot plot(SHALLOW_AND_DEEP);
    Cache* const a = plot.Of("A");
    plot.Node("A")->SetCache(nullptr);
    EXPECT_EQ(plot.Of("a1")->ComputeIcicleCursor(), 0U);
    plot.Node("A")->SetCache(a);
}

// ---- visibility from the leaves

TEST(VisIcicleLayoutCache, WithoutLimitEveryNodeIsVisible)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ForEach([](VisDataTree& node) {
        EXPECT_EQ(CacheOf(&node)->IsIcicleNodeVisibleFromLeaves(NO_LIMIT), 1);
        EXPECT_EQ(ReadOnly(CacheOf(&node)).IsIcicleNodeVisibleFromLeaves(NO_LIMIT), 1);
    });
    const Cache alone(nullptr);
    EXPECT_EQ(alone.IsIcicleNodeVisibleFromLeaves(NO_LIMIT), 1) << "even without a node";
    EXPECT_EQ(alone.IsIcicleNodeVisibleFromLeaves(100), 0);
}

TEST(VisIcicleLayoutCache, AMergedTopRootIsNeverVisible)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.root->SetIsMerged(1);
    plot.Node("A")->SetIsMerged(1);
    EXPECT_EQ(plot.Root()->IsIcicleNodeVisibleFromLeaves(NO_LIMIT), 0);
    EXPECT_EQ(ReadOnly(plot.Root()).IsIcicleNodeVisibleFromLeaves(NO_LIMIT), 0);
    EXPECT_EQ(plot.Root()->IsIcicleNodeVisibleFromLeaves(10), 0);
    EXPECT_EQ(plot.Of("A")->IsIcicleNodeVisibleFromLeaves(NO_LIMIT), 1) << "not the top root";
}

TEST(VisIcicleLayoutCache, ANodeIsVisibleWhenItsLastColumnIsAmongThoseBeforeItsFirstLeafsEnd)
{
    const Plot plot({"R", {{"A", {{"B", {{"C", {{"c"}}}}}}}, {"S", {{"s"}}}}});
    plot.layout->AlignIciclePlotLeaves(nullptr);
    //  column  0  1  2  3  4
    //          R  A  B  C  c
    //             S  S  S  s
    const struct {
        const char* label;
        unsigned int needs;
    } expected[] = {{"c", 1}, {"C", 2}, {"B", 3}, {"A", 4}, {"R", 5}, {"s", 1}, {"S", 2}};
    for (const auto& [label, needs] : expected) {
        EXPECT_EQ(ReadOnly(plot.Of(label)).IsIcicleNodeVisibleFromLeaves(needs), 1) << label;
        EXPECT_EQ(ReadOnly(plot.Of(label)).IsIcicleNodeVisibleFromLeaves(needs - 1), 0) << label;
    }
    EXPECT_EQ(plot.Of("s")->GetIcicleCursor(), NOT_COMPUTED) << "const so far";
    EXPECT_EQ(plot.Of("S")->IsIcicleNodeVisibleFromLeaves(2), 1);
    EXPECT_EQ(plot.Of("S")->GetIcicleCursor(), 1U) << "stored";
    EXPECT_EQ(plot.Of("s")->GetIcicleCursor(), 4U) << "stored";
}

TEST(VisIcicleLayoutCache, ANodeWhoseFirstLeafHasNoCacheIsVisibleWithoutLimitOnly)
{
    const Plot plot(SHALLOW_AND_DEEP);
    Cache* const leaf = plot.Of("a1");
    plot.Node("a1")->SetCache(nullptr);
    EXPECT_EQ(plot.Of("A")->IsIcicleNodeVisibleFromLeaves(1000), 0);
    EXPECT_EQ(ReadOnly(plot.Of("A")).IsIcicleNodeVisibleFromLeaves(1000), 0);
    EXPECT_EQ(plot.Of("A")->IsIcicleNodeVisibleFromLeaves(NO_LIMIT), 1);
    plot.Node("a1")->SetCache(leaf);
}

TEST(VisIcicleLayoutCache, TheDistanceFromTheLeavesWrapsAround)
{
    const Plot plot(SHALLOW_AND_DEEP);
    VisIcicleAccess::SetCursor(*plot.Of("a1"), 0);
    VisIcicleAccess::SetCursor(*plot.Of("A"), 7);
    EXPECT_EQ(plot.Of("A")->IsIcicleNodeVisibleFromLeaves(1000000), 0)
        << "right of its own leaf: an enormous unsigned distance";
}

// ---- minimum depth

TEST(VisIcicleLayoutCache, TheMinimumDepthIsThatOfTheFirstVisibleColumn)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    const Cache& root = *plot.Root();
    EXPECT_EQ(root.ComputeMinDepthWithVisibility(0, -1), 0);
    EXPECT_EQ(root.ComputeMinDepthWithVisibility(0, 3), 0);
    EXPECT_EQ(root.ComputeMinDepthWithVisibility(0, 2), 1);
    EXPECT_EQ(root.ComputeMinDepthWithVisibility(0, 1), 1) << "B reaches from column 1 to the end";
    EXPECT_EQ(root.ComputeMinDepthWithVisibility(10, 2), 11);
    EXPECT_EQ(plot.Of("A")->ComputeMinDepthWithVisibility(1, 1), 2);
    EXPECT_EQ(root.ComputeMinDepthWithVisibility(0, 0), NOTHING_VISIBLE);
    EXPECT_EQ(root.GetIcicleCursor(), NOT_COMPUTED) << "nothing is stored";
}

TEST(VisIcicleLayoutCache, MergedNodesTakeNoColumnsInTheMinimumDepth)
{
    const Plot plot({"R", {{"A", {{"a"}}}}});
    plot.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(plot.Root()->ComputeMinDepthWithVisibility(0, 1), 2);
    plot.Node("A")->SetIsMerged(1);
    EXPECT_EQ(plot.Root()->ComputeMinDepthWithVisibility(0, 1), 1);
    plot.root->SetIsMerged(1);
    EXPECT_EQ(plot.Root()->ComputeMinDepthWithVisibility(0, 1), 0);
    EXPECT_EQ(plot.Root()->ComputeMinDepthWithVisibility(0, -1), 0) << "its children show";
}

TEST(VisIcicleLayoutCache, WithoutNodeOrCacheNothingIsVisible)
{
    const Cache alone(nullptr);
    EXPECT_EQ(alone.ComputeMinDepthWithVisibility(0, -1), NOTHING_VISIBLE);
    const Plot plot({"R", {{"A"}}});
    Cache* const a = plot.Of("A");
    plot.Node("A")->SetCache(nullptr);
    EXPECT_EQ(plot.Root()->ComputeMinDepthWithVisibility(0, 5), NOTHING_VISIBLE)
        << "the first leaf has no cache, and is not searched";
    plot.Node("A")->SetCache(a);
}

TEST(VisIcicleLayoutCache, DepthsAtTheEndOfTheNumbersDoNotOverflow)
{
    const Plot plot(SHALLOW_AND_DEEP);
    const int largest = std::numeric_limits<int>::max();
    EXPECT_EQ(plot.Root()->ComputeMinDepthWithVisibility(largest, 1), largest);
    EXPECT_EQ(plot.Root()->ComputeMinDepthWithVisibility(std::numeric_limits<int>::min(), -1),
              std::numeric_limits<int>::min());
    VisIcicleAccess::SetColSpan(*plot.Root(), 0xFFFFFFF0U);
    EXPECT_EQ(plot.Root()->ComputeMinDepthWithVisibility(3, 1), NOTHING_VISIBLE);
}

// ---- column width

TEST(VisIcicleLayoutCache, ANodeWithoutShownLabelIsThirtyTwoWidePerColumn)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(plot.Of("B")->GetMinIciclePlotSizeMajor(), 32);
    EXPECT_EQ(SizeOf(plot, "B"), "66x24") << "(32 + 2) x 2 - 2";
    const Cache alone(nullptr);
    EXPECT_EQ(alone.GetMinIciclePlotSizeMajor(), 32);
}

TEST(VisIcicleLayoutCache, ColumnsOfShownLabelsAreWide)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    EXPECT_EQ(plot.Of("A")->GetMinIciclePlotSizeMajor(), 96);
    Cache alone(nullptr);
    alone.SetShowLabel(1);
    EXPECT_EQ(alone.GetMinIciclePlotSizeMajor(), 96) << "without node";
}

TEST(VisIcicleLayoutCache, LeafObjectsAreNarrowWhileEveryLeafIsOneInASingleColumn)
{
    const Plot plot({"R", {{"A", {{"a1"}, {"a2"}}}, {"B", {{"b"}}}}});
    plot.ShowLabels();
    plot.MarkLeafObjects();
    plot.layout->AlignIciclePlotLeaves(nullptr);
    for (const char* const leaf : {"a1", "a2", "b"})
        EXPECT_EQ(plot.Of(leaf)->GetMinIciclePlotSizeMajor(), 64) << leaf;
    EXPECT_EQ(plot.Of("A")->GetMinIciclePlotSizeMajor(), 96) << "no leaf object";
}

TEST(VisIcicleLayoutCache, OneLeafThatIsNoLeafObjectMakesAllOfThemWide)
{
    const Plot plot({"R", {{"A", {{"a1"}, {"a2"}}}, {"B", {{"b"}}}}});
    plot.ShowLabels();
    plot.MarkLeafObjects();
    plot.Node("b")->SetIsLeafObject(0);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(plot.Of("a1")->GetMinIciclePlotSizeMajor(), 96);
    EXPECT_EQ(plot.Of("a2")->GetMinIciclePlotSizeMajor(), 96);
}

TEST(VisIcicleLayoutCache, OneStretchedLeafMakesAllOfThemWide)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    plot.MarkLeafObjects();
    plot.layout->AlignIciclePlotLeaves(nullptr);
    for (const char* const leaf : {"a1", "a2", "B", "c"})
        EXPECT_EQ(plot.Of(leaf)->GetMinIciclePlotSizeMajor(), 96) << leaf;
}

// ---- sizes

TEST(VisIcicleLayoutCache, WidthsAddUpAlongTheDeepestPathAndHeightsOverTheLeaves)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    plot.layout->AlignIciclePlotLeaves(nullptr);
    // Three columns of 96 with gaps of 2; four leaves of 24 with gaps of 2.
    EXPECT_EQ(SizeOf(plot, "R"), "292x102");
    EXPECT_EQ(Plot::Text(plot.Of("A")->GetIcicleSize()), "194x50") << "measured on the way";
    EXPECT_EQ(Plot::Text(plot.Of("B")->GetIcicleSize()), "194x24");
    EXPECT_EQ(plot.Root()->GetIcicleNLastNodes(), NO_LIMIT);
}

TEST(VisIcicleLayoutCache, WithoutNodeTheSizeIsMinusOne)
{
    Cache alone(nullptr);
    ExpectPoint(alone.ComputeIcicleSize(3, 0, 1, 0, FIND_OUT, FIND_OUT), -1.0f, -1.0f);
    EXPECT_EQ(alone.GetIcicleNLastNodes(), 3U);
    ExpectPoint(ReadOnly(&alone).ComputeIcicleSize(5, 0, 0, 0, 0, 0), -1.0f, -1.0f);
}

TEST(VisIcicleLayoutCache, ASizeIsRememberedForItsLimitAndItsPlacingOfLabelsOnly)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    Cache& root = *plot.Root();
    root.ComputeIcicleSize(2, 0, 0, 0, FIND_OUT, FIND_OUT);
    const KUVMathPoint2Df size = root.GetIcicleSize();
    VisIcicleAccess::SetIcicleSize(root, {7.0f, 9.0f});
    ExpectPoint(root.ComputeIcicleSize(2, 1, 0, 4, 1, 1), 7.0f, 9.0f);
    ExpectPoint(ReadOnly(&root).ComputeIcicleSize(2, 1, 0, 4, 1, 1), 7.0f, 9.0f);
    ExpectPoint(ReadOnly(&root).ComputeIcicleSize(2, 0, 1, 0, FIND_OUT, FIND_OUT), size.x, size.y);
    ExpectPoint(root.GetIcicleSize(), 7.0f, 9.0f);
    root.ComputeIcicleSize(2, 0, 1, 0, FIND_OUT, FIND_OUT);
    ExpectPoint(root.GetIcicleSize(), size.x, size.y);
    EXPECT_EQ(VisIcicleAccess::InlineLabels(root), 1);
    VisIcicleAccess::SetIcicleSize(root, {7.0f, 0.0f});
    ExpectPoint(root.ComputeIcicleSize(2, 0, 1, 0, FIND_OUT, FIND_OUT), size.x, size.y);
}

TEST(VisIcicleLayoutCache, TheConstSizeStoresNothing)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    const KUVMathPoint2Df size =
        ReadOnly(plot.Root()).ComputeIcicleSize(2, 0, 1, 0, FIND_OUT, FIND_OUT);
    plot.ForEach([](VisDataTree& node) {
        ExpectPoint(CacheOf(&node)->GetIcicleSize(), -1.0f, -1.0f);
        EXPECT_EQ(CacheOf(&node)->GetIcicleCursor(), NOT_COMPUTED);
        EXPECT_EQ(CacheOf(&node)->GetIcicleNLastNodes(), NO_LIMIT);
        EXPECT_EQ(VisIcicleAccess::InlineLabels(*CacheOf(&node)), 0);
    });
    const KUVMathPoint2Df stored = plot.Root()->ComputeIcicleSize(2, 0, 1, 0, FIND_OUT, FIND_OUT);
    ExpectPoint(size, stored.x, stored.y);
}

TEST(VisIcicleLayoutCache, TheMeasuredSizeStoresTheCursorsThatItLooksAt)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.Of("A")->ComputeIcicleSize(3, 0, 0, 1, FIND_OUT, FIND_OUT);
    for (const auto& [label, cursor] :
         {std::pair("a1", 2U), std::pair("a2", 2U), std::pair("A", 1U), std::pair("R", 0U)})
        EXPECT_EQ(plot.Of(label)->GetIcicleCursor(), cursor) << label;
    EXPECT_EQ(plot.Of("c")->GetIcicleCursor(), NOT_COMPUTED);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    SizeOf(plot, "R");
    EXPECT_EQ(plot.Of("a1")->GetIcicleCursor(), NOT_COMPUTED) << "none is needed without limit";
}

TEST(VisIcicleLayoutCache, NodesLeftOfTheLastColumnsTakeNoWidth)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    plot.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(SizeOf(plot, "R", 2), "194x102") << "R is hidden";
    EXPECT_EQ(SizeOf(plot, "R", 1), "96x102") << "B keeps the last of its two columns";
    EXPECT_EQ(Plot::Text(plot.Of("B")->GetIcicleSize()), "96x24");
    EXPECT_EQ(SizeOf(plot, "R", 3), "292x102");
    EXPECT_EQ(SizeOf(plot, "R", 0), "0x102");
}

TEST(VisIcicleLayoutCache, RelativeToTheMinimumDepthNodesKeepTheirWholeWidth)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    plot.layout->AlignIciclePlotLeaves(nullptr);
    // With one column B shows over two: the plot begins at its column, and A before a1 counts too.
    EXPECT_EQ(SizeOf(plot, "R", 1, /*relative=*/1), "194x102");
    EXPECT_EQ(Plot::Text(plot.Of("B")->GetIcicleSize()), "194x24");
    EXPECT_EQ(Plot::Text(plot.Of("A")->GetIcicleSize()), "192x50")
        << "not drawn: no gap behind it, but its column";
}

TEST(VisIcicleLayoutCache, IconsMakeRoomForThemselves)
{
    const Plot plot({"R", {{"A", {{"B", {{"b"}}}}}}});
    plot.ShowLabels();
    plot.Node("A")->SetIconName("icon");
    EXPECT_EQ(SizeOf(plot, "A"), "292x46") << "three levels: the icon stands above the label";
    EXPECT_EQ(Plot::Text(plot.Of("b")->GetIcicleSize()), "96x46") << "the only leaf below the icon";
    EXPECT_EQ(SizeOf(plot, "A", NO_LIMIT, 0, /*inlineLabels=*/1), "292x24");
    plot.Of("A")->SetShowLabel(0);
    EXPECT_EQ(SizeOf(plot, "A"), "228x24");
    plot.Of("A")->SetShowLabel(1);
    plot.Node("A")->SetLabel("");
    plot.layout->AlignIciclePlotLeaves(nullptr);
    Cache& a = *CacheOf(plot.root->GetChildren().front());
    EXPECT_EQ(Plot::Text(a.ComputeIcicleSize(NO_LIMIT, 0, 0, 1, FIND_OUT, FIND_OUT)), "292x24");
}

TEST(VisIcicleLayoutCache, ALeafBelowSingleLeafAncestorsWithIconsIsAsHighAsTheyNeed)
{
    const Plot plot({"R", {{"A", {{"B", {{"b"}}}}}, {"S"}}});
    plot.ShowLabels();
    plot.GiveIcons("icon");
    EXPECT_EQ(SizeOf(plot, "R"), "390x72") << "46 + 2 + 24";
    EXPECT_EQ(Plot::Text(plot.Of("b")->GetIcicleSize()), "96x46");
    EXPECT_EQ(Plot::Text(plot.Of("S")->GetIcicleSize()), "96x24");
    EXPECT_EQ(SizeOf(plot, "R", NO_LIMIT, 0, /*inlineLabels=*/1), "390x50");
    EXPECT_EQ(Plot::Text(plot.Of("b")->GetIcicleSize()), "96x24") << "labels beside icons";
}

TEST(VisIcicleLayoutCache, TwoLeavesShareTheHeightOfAnIconAboveThem)
{
    const Plot plot({"R", {{"A", {{"B", {{"b1"}, {"b2"}}}}}}});
    plot.ShowLabels();
    plot.Node("A")->SetIconName("icon");
    EXPECT_EQ(SizeOf(plot, "R"), "390x50") << "24 + 2 + 24 is more than 46";
}

TEST(VisIcicleLayoutCache, TheClimbThroughAncestorsEndsAtAnIconWithThreeLevelsBelow)
{
    // X asks for 46, but A, which has an icon and three levels, stands between.
    const Plot plot({"X", {{"A", {{"B", {{"b1"}, {"b2"}}}}}}});
    plot.ShowLabels();
    plot.root->SetIconName("icon");
    EXPECT_EQ(SizeOf(plot, "X"), "390x50");
    const Plot chain({"X", {{"A", {{"B", {{"b"}}}}}}});
    chain.ShowLabels();
    chain.GiveIcons("icon");
    chain.Of("A")->SetShowLabel(0);
    EXPECT_EQ(SizeOf(chain, "b"), "96x24") << "A asks for 24 and ends the climb before X";
    chain.Node("A")->SetIconName("");
    chain.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(SizeOf(chain, "b"), "96x46") << "now X asks";
}

TEST(VisIcicleLayoutCache, TheClimbEndsAtAMergedTopRootAndAtWhatIsNotVisible)
{
    const Plot plot({"R", {{"A", {{"B", {{"b"}}}}}}});
    plot.ShowLabels();
    plot.root->SetIconName("icon");
    EXPECT_EQ(SizeOf(plot, "b"), "96x46");
    plot.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(SizeOf(plot, "b", 3), "96x24") << "R is left of the last three columns";
    EXPECT_EQ(SizeOf(plot, "b", 4), "96x46");
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.root->SetIsMerged(1);
    EXPECT_EQ(SizeOf(plot, "b"), "96x24");
}

TEST(VisIcicleLayoutCache, ChildrenWithoutCacheCountInTheGapsOnly)
{
    const Plot plot({"R", {{"A"}, {"B"}, {"C"}}});
    Cache* const b = plot.Of("B");
    plot.Node("B")->SetCache(nullptr);
    EXPECT_EQ(SizeOf(plot, "R"), "66x52") << "24 + 24 and two gaps";
    plot.Node("B")->SetCache(b);
}

TEST(VisIcicleLayoutCache, ACacheOfAnotherClassCountsAsNone)
{
    const Plot plot({"R", {{"A"}, {"B"}, {"C"}}});
    Cache* const b = plot.Of("B");
    plot.Node("B")->SetCache(nullptr);
    {
        VisTreeSpaceFillingLayoutCache foreign(plot.Node("B"));
        EXPECT_EQ(SizeOf(plot, "R"), "66x52");
        plot.layout->AlignIciclePlotLeaves(nullptr);
        plot.Draw(500.0f, 500.0f);
        EXPECT_EQ(foreign.GetView(), nullptr);
        plot.layout->SetCurrentSelection(plot.Node("B"));
        EXPECT_EQ(plot.layout->GetNodeViaNavigation(icicles::LEFT), nullptr);
        plot.Node("B")->SetCache(nullptr);
    }
    plot.Node("B")->SetCache(b);
}

// ---- deep trees

TEST(VisIcicleLayoutCache, NoOperationNestsItsCalls)
{
    VisDataTree* last = nullptr;
    const trees::NodeRef root = trees::MakeChain(trees::MANY_LEVELS, &last);
    const auto layout = VisReference<VisIcicleLayout>::Adopt(
        VisIcicleLayout::CreateLayout(nullptr, root.Get(), nullptr));
    const unsigned int levels = trees::MANY_LEVELS;
    Cache& top = *CacheOf(root.Get());
    Cache& leaf = *CacheOf(last);
    root->SetIconName("icon");
    EXPECT_EQ(ReadOnly(&leaf).ComputeIcicleCursor(), levels - 1);
    EXPECT_EQ(ReadOnly(&top).IsIcicleNodeVisibleFromLeaves(levels), 1);
    EXPECT_EQ(ReadOnly(&top).IsIcicleNodeVisibleFromLeaves(levels - 1), 0);
    EXPECT_EQ(ReadOnly(&top).ComputeMinDepthWithVisibility(0, 1), static_cast<int>(levels) - 1);
    const unsigned int half = levels / 2;
    const KUVMathPoint2Df constSize =
        ReadOnly(&top).ComputeIcicleSize(half, 0, 0, 0, FIND_OUT, FIND_OUT);
    EXPECT_EQ(ReadOnly(&leaf).ComputeIcicleSize(levels, 0, 0, levels - 1, FIND_OUT, FIND_OUT).y,
              24.0f);
    EXPECT_EQ(layout->AlignIciclePlotLeaves(nullptr), static_cast<int>(levels));
    const KUVMathPoint2Df& size = top.ComputeIcicleSize(half, 0, 0, 0, FIND_OUT, FIND_OUT);
    ExpectPoint(size, constSize.x, constSize.y);
    EXPECT_FLOAT_EQ(size.x, 34.0f * static_cast<float>(half) - 2.0f);
    layout->SetTreeRoot(nullptr);
}
