#include "VisTreeMapLayout.h"

#include "VirtualSlots.h"

#include "module/TreeMapFixture.h"

#include "support/LiveInstances.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

using treemaps::BagRef;
using treemaps::Cache;
using treemaps::Map;
using treemaps::MapRef;
using treemaps::SIDE_BY_SIDE;
using treemaps::STACKED;
using treemaps::THREE_LEAVES;

namespace {

const support::WatchedClass watchCaches("VisTreeMapLayoutCache", [] {
    const Cache sample(nullptr);
    return support::VirtualTableOf(sample);
});

/// Opens what the cache keeps for derived classes.
struct OpenCache : Cache {
    using Cache::Cache;
    using Cache::InvertSliceDiceMode;
};

/// Opens what the layout keeps for derived classes.
struct OpenLayout : VisTreeMapLayout {
    OpenLayout() : VisTreeMapLayout(nullptr) {}
    using VisTreeMapLayout::GenerateCache;
    using VisTreeMapLayout::ResetView;
    using VisTreeSpaceFillingLayout::Init;
};

void ExpectPoint(const KUVMathPoint2Df& point, float x, float y)
{
    EXPECT_FLOAT_EQ(point.x, x);
    EXPECT_FLOAT_EQ(point.y, y);
}

}  // namespace

// ---- constants and identity

TEST(VisTreeMapLayout, HasThePublishedConstants)
{
    EXPECT_EQ(VisTreeMapLayout::SPACE_BETWEEN_NODES, 2);
    EXPECT_EQ(VisTreeMapLayout::LABEL_OFFSET, 14);
    EXPECT_EQ(VisTreeMapLayout::COUNTOUR_OFFSET, 1);
    EXPECT_EQ(VisTreeMapLayout::MIN_EXPANDED_SIZE_MAJOR, 32);
    EXPECT_EQ(VisTreeMapLayout::MIN_EXPANDED_SIZE_MINOR, 15);
    EXPECT_EQ(sizeof(VisTreeMapLayout::LABEL_OFFSET), 2U);
    EXPECT_EQ(sizeof(VisTreeMap_SliceDice), 4U);
    EXPECT_EQ(VisTreeMap_SideBySide, 0U);
    EXPECT_EQ(VisTreeMap_Stacked, 1U);
}

TEST(VisTreeMapLayout, AnswersForItsClassByName)
{
    const Map map(THREE_LEAVES);
    EXPECT_STREQ(VisTreeMapLayout::ClassName(), "VisTreeMapLayout");
    EXPECT_STREQ(map.layout->IsA(), "VisTreeMapLayout");
    EXPECT_EQ(map.layout->IsAKindOf("VisTreeSpaceFillingLayout"), 1);
    EXPECT_EQ(map.layout->IsAKindOf("KUVCommand"), 1);
    EXPECT_EQ(map.layout->IsAKindOf("VisDataTree"), 0);
    EXPECT_EQ(VisTreeMapLayout::CreateItself(), nullptr);
    EXPECT_EQ(VisTreeMapLayout::ClassId(), KUVClassIdOf("VisTreeMapLayout"));
    EXPECT_EQ(map.layout->GetMetaObject(), VisTreeMapLayout::MetaObject());
    EXPECT_EQ(VisTreeMapLayout::MetaObject()->GetBase(), VisTreeSpaceFillingLayout::MetaObject());
    EXPECT_STREQ(VisTreeMapLayout::MetaObject()->GetFramework(), "VisualizationCommands");
    EXPECT_EQ(VisTreeMapLayout::MetaObject()->GetInstanceSize(), sizeof(VisTreeMapLayout));
}

TEST(VisTreeMapLayout, AddsNoVirtualOperationsToThoseOfTheBase)
{
    EXPECT_EQ(SlotOf(&VisTreeMapLayout::Draw), SlotOf(&VisTreeSpaceFillingLayout::Draw));
    EXPECT_EQ(SlotOf(&VisTreeMapLayout::SliceAndDice), -1);
    EXPECT_EQ(SlotOf(&VisTreeMapLayout::LayoutChildrenInGrid), -1);
    EXPECT_EQ(SlotOf(&Cache::Clone), SlotOf(&VisDataTree::VisDataTreeCache::Clone));
    EXPECT_EQ(SlotOf(&Cache::ComputeMinimumExpandedSize), -1);
}

// ---- CreateLayout, GenerateCache

TEST(VisTreeMapLayout, WithoutRootThereIsNoLayout)
{
    const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
    EXPECT_EQ(VisTreeMapLayout::CreateLayout(nullptr, nullptr, bag.Get()), nullptr);
    EXPECT_EQ(bag->GetReferenceCount(), 1U);
}

TEST(VisTreeMapLayout, ANewLayoutHoldsTreeAndBagAndHasACacheForEveryNode)
{
    const auto parent = VisReference<KUVCommand>::Adopt(new KUVCommand(nullptr, "parent"));
    const trees::NodeRef root = trees::NodeRef::Adopt(support::MakeTree(THREE_LEAVES));
    const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
    const MapRef layout =
        MapRef::Adopt(VisTreeMapLayout::CreateLayout(parent.Get(), root.Get(), bag.Get()));
    EXPECT_EQ(layout->GetReferenceCount(), 1U);
    EXPECT_EQ(layout->GetParentCommand(), parent.Get());
    EXPECT_EQ(layout->GetTreeRoot(), root.Get());
    EXPECT_EQ(layout->GetCurrentRoot(), root.Get());
    EXPECT_EQ(root->GetReferenceCount(), 2U);
    EXPECT_EQ(bag->GetReferenceCount(), 2U);
    for (const VisDataTree* const child : root->GetChildren())
        EXPECT_NE(dynamic_cast<Cache*>(child->GetCache()), nullptr);
}

TEST(VisTreeMapLayout, AGeneratedCacheBelongsToNoNodeAndHasModeOne)
{
    const auto layout = VisReference<OpenLayout>::Adopt(new OpenLayout);
    const std::unique_ptr<VisTreeSpaceFillingLayoutCache> cache(layout->GenerateCache());
    auto* const mapCache = dynamic_cast<Cache*>(cache.get());
    ASSERT_NE(mapCache, nullptr);
    EXPECT_EQ(mapCache->GetNode(), nullptr);
    EXPECT_EQ(mapCache->GetLastModeOfComputedMinimumExpandedSize(), STACKED);
    ExpectPoint(mapCache->GetComputedMinimumSize(), -1.0f, -1.0f);
}

// ---- cache

TEST(VisTreeMapLayoutCache, ACacheMadeForANodeIsLinkedAndHasModeOne)
{
    const trees::NodeRef node = trees::MakeNode("N");
    Cache cache(node.Get());
    EXPECT_EQ(node->GetCache(), &cache);
    EXPECT_EQ(cache.GetLastModeOfComputedMinimumExpandedSize(), STACKED);
    ExpectPoint(cache.GetPos(), 0.0f, 0.0f);
    ExpectPoint(cache.GetSize(), 0.0f, 0.0f);
    ExpectPoint(cache.GetComputedMinimumSize(), -1.0f, -1.0f);
    EXPECT_EQ(cache.GetView(), nullptr);
    node->SetCache(nullptr);
}

TEST(VisTreeMapLayoutCache, CopyAssignmentAndCloneTakeTheMode)
{
    const trees::NodeRef node = trees::MakeNode("N");
    Cache cache(node.Get());
    cache.ComputeMinimumExpandedSize(SIDE_BY_SIDE);
    cache.SetSizeValue(7);

    Cache copy(cache);
    EXPECT_EQ(copy.GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
    ExpectPoint(copy.GetComputedMinimumSize(), 32.0f, 15.0f);
    EXPECT_EQ(copy.GetSizeValue(), 7);
    EXPECT_EQ(copy.GetNode(), nullptr);

    Cache assigned(nullptr);
    assigned = cache;
    EXPECT_EQ(assigned.GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
    ExpectPoint(assigned.GetComputedMinimumSize(), 32.0f, 15.0f);

    const std::unique_ptr<VisDataTree::VisDataTreeCache> clone(cache.Clone());
    auto* const mapClone = dynamic_cast<Cache*>(clone.get());
    ASSERT_NE(mapClone, nullptr);
    EXPECT_EQ(mapClone->GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
    EXPECT_EQ(mapClone->GetNode(), nullptr);
    node->SetCache(nullptr);
}

TEST(VisTreeMapLayoutCache, InvertingAModeGivesOneForZeroAndZeroForAnyOther)
{
    EXPECT_EQ(OpenCache::InvertSliceDiceMode(SIDE_BY_SIDE), STACKED);
    EXPECT_EQ(OpenCache::InvertSliceDiceMode(STACKED), SIDE_BY_SIDE);
    EXPECT_EQ(OpenCache::InvertSliceDiceMode(static_cast<VisTreeMap_SliceDice>(5)), SIDE_BY_SIDE);
}

TEST(VisTreeMapLayoutCache, SettingAnotherModeForgetsTheMinimumSize)
{
    const Map map(THREE_LEAVES);
    map.Root()->ComputeMinimumExpandedSize(SIDE_BY_SIDE);
    const KUVMathPoint2Df before = map.Root()->GetComputedMinimumSize();
    map.Root()->SetLastModeOfComputedMinimumExpandedSize(SIDE_BY_SIDE);
    ExpectPoint(map.Root()->GetComputedMinimumSize(), before.x, before.y);
    map.Root()->SetLastModeOfComputedMinimumExpandedSize(STACKED);
    ExpectPoint(map.Root()->GetComputedMinimumSize(), -1.0f, -1.0f);
    EXPECT_EQ(map.Root()->GetLastModeOfComputedMinimumExpandedSize(), STACKED);
}

// ---- minimum sizes

TEST(VisTreeMapLayoutCache, TheMinimumSizeOfALeafIsStoredWithTheModeAskedFor)
{
    const Map map(THREE_LEAVES);
    ExpectPoint(map.Of("0")->ComputeMinimumExpandedSize(SIDE_BY_SIDE), 32.0f, 15.0f);
    ExpectPoint(map.Of("0")->GetComputedMinimumSize(), 32.0f, 15.0f);
    EXPECT_EQ(map.Of("0")->GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
}

TEST(VisTreeMapLayoutCache, ACacheWithoutNodeHasTheMinimumSizeOfALeaf)
{
    Cache cache(nullptr);
    ExpectPoint(cache.ComputeMinimumExpandedSize(STACKED), 32.0f, 15.0f);
}

TEST(VisTreeMapLayoutCache, ChildrenSideBySideAddTheirWidths)
{
    //  +- 14 for the label, 1 + 1 for the frame ---+
    //  |  32  | 2 |  32  | 2 |  32  |   15 high    |
    const Map map(THREE_LEAVES);
    ExpectPoint(map.Root()->ComputeMinimumExpandedSize(SIDE_BY_SIDE), 102.0f, 30.0f);
}

TEST(VisTreeMapLayoutCache, StackedChildrenAddTheirHeights)
{
    const Map map(THREE_LEAVES);
    ExpectPoint(map.Root()->ComputeMinimumExpandedSize(STACKED), 34.0f, 64.0f);
}

TEST(VisTreeMapLayoutCache, LevelsTakeTurns)
{
    const Map map({"R", {{"A", {{"a"}, {"b"}}}, {"B"}}});
    // A stacked: 34 x 47; beside B: 34 + 32 + 2 + 2 wide, 47 + 15 high.
    ExpectPoint(map.Root()->ComputeMinimumExpandedSize(SIDE_BY_SIDE), 70.0f, 62.0f);
    EXPECT_EQ(map.Of("A")->GetLastModeOfComputedMinimumExpandedSize(), STACKED);
    EXPECT_EQ(map.Of("a")->GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
}

TEST(VisTreeMapLayoutCache, AskingForTheOtherModeComputesAgainAndForTheSameDoesNot)
{
    const Map map(THREE_LEAVES);
    ExpectPoint(map.Root()->ComputeMinimumExpandedSize(SIDE_BY_SIDE), 102.0f, 30.0f);
    ExpectPoint(map.Root()->ComputeMinimumExpandedSize(STACKED), 34.0f, 64.0f);
    const trees::NodeRef late = trees::MakeNode("3");
    map.root->InsertChild(late.Get(), /*resetCaches=*/0);
    ExpectPoint(map.Root()->ComputeMinimumExpandedSize(STACKED), 34.0f, 64.0f);
    EXPECT_EQ(map.root->GetChildren().size(), 4U) << "the stored size is reused on purpose";
}

TEST(VisTreeMapLayoutCache, ChildrenWithoutCacheCountOnlyInTheGaps)
{
    const Map map(THREE_LEAVES);
    Cache* const cache = map.Of("1");
    map.Node("1")->SetCache(nullptr);
    ExpectPoint(map.Root()->ComputeMinimumExpandedSize(SIDE_BY_SIDE), 70.0f, 30.0f);
    map.Node("1")->SetCache(cache);
}

TEST(VisTreeMapLayoutCache, AModeAboveOneCountsAsOne)
{
    const Map map(THREE_LEAVES);
    const auto five = static_cast<VisTreeMap_SliceDice>(5);
    ExpectPoint(map.Root()->ComputeMinimumExpandedSize(five), 34.0f, 64.0f);
    EXPECT_EQ(map.Root()->GetLastModeOfComputedMinimumExpandedSize(), five);
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(five, {34.0f, 64.0f}, nullptr), 1);
}

TEST(VisTreeMapLayoutCache, ACacheOfAnotherClassCountsAsNone)
{
    const Map map(THREE_LEAVES);
    Cache* const cache = map.Of("1");
    map.Node("1")->SetCache(nullptr);
    VisTreeSpaceFillingLayoutCache foreign(map.Node("1"));
    ExpectPoint(map.Root()->ComputeMinimumExpandedSize(SIDE_BY_SIDE), 70.0f, 30.0f);
    map.Draw(400.0f, 100.0f);
    EXPECT_EQ(foreign.GetView(), nullptr);
    map.Node("1")->SetCache(nullptr);
    map.Node("1")->SetCache(cache);
}

// ---- opening a node

TEST(VisTreeMapLayoutCache, WithoutNodeNothingCanBeOpened)
{
    Cache cache(nullptr);
    float sum = 7.0f;
    EXPECT_EQ(cache.CanSliceAndDiceExpandNode(STACKED, {1000.0f, 1000.0f}, &sum), 0);
    EXPECT_EQ(sum, 7.0f);
    EXPECT_EQ(cache.CanLayoutChildrenInGrid({1000.0f, 1000.0f}), 0);
}

TEST(VisTreeMapLayoutCache, AChildlessNodeIsAlwaysOpen)
{
    const Map map(THREE_LEAVES);
    float sum = 7.0f;
    EXPECT_EQ(map.Of("0")->CanSliceAndDiceExpandNode(STACKED, {0.0f, 0.0f}, &sum), 1);
    EXPECT_EQ(sum, 7.0f) << "left alone";
    ExpectPoint(map.Of("0")->GetComputedMinimumSize(), -1.0f, -1.0f);
}

TEST(VisTreeMapLayoutCache, AtItsMinimumSizeANodeOpensByProportion)
{
    const Map map(THREE_LEAVES);
    float sum = 7.0f;
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {102.0f, 30.0f}, &sum), 1);
    EXPECT_EQ(sum, 96.0f);
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(STACKED, {34.0f, 64.0f}, &sum), 1);
    EXPECT_EQ(sum, 45.0f);
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(STACKED, {34.0f, 64.0f}, nullptr), 1);
}

TEST(VisTreeMapLayoutCache, BelowItsMinimumSizeANodeStaysClosed)
{
    const Map map(THREE_LEAVES);
    float sum = 7.0f;
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {101.0f, 30.0f}, &sum), 0);
    EXPECT_EQ(sum, -1.0f);
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {102.0f, 29.0f}, nullptr), 0);
}

TEST(VisTreeMapLayoutCache, AnEqualSplitHelpsWhereTheProportionalOneStarvesTheSmallest)
{
    // A needs 134, B 32: by proportion B gets 32 / 166 of 96 units, by halves 48.
    const Map map({"R", {{"A", {{"S", {{"a"}, {"b"}, {"c"}, {"d"}}}}}, {"B"}}});
    float sum = 7.0f;
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {100.0f, 200.0f}, &sum), 1);
    EXPECT_EQ(sum, -1.0f);
}

TEST(VisTreeMapLayoutCache, ANodeWhoseInnerHeightIsBelowFifteenIsNeverOpened)
{
    const Map map(THREE_LEAVES);
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {10000.0f, 29.99f}, nullptr), 0);
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {10000.0f, 30.0f}, nullptr), 1);
}

TEST(VisTreeMapLayoutCache, ChildrenWithoutAnyCacheAreSplitEqually)
{
    const Map map(THREE_LEAVES);
    const char* const labels[] = {"0", "1", "2"};
    std::vector<Cache*> caches;
    for (const char* const label : labels) {
        caches.push_back(map.Of(label));
        map.Node(label)->SetCache(nullptr);
    }
    float sum = 7.0f;
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {102.0f, 30.0f}, &sum), 1);
    EXPECT_EQ(sum, -1.0f) << "there is nothing to be in proportion to";
    for (std::size_t i = 0; i < 3; ++i)
        map.Node(labels[i])->SetCache(caches[i]);
}

TEST(VisTreeMapLayoutCache, AChildInsertedQuietlyIsSeenByTheNextSplit)
{
    const Map map(THREE_LEAVES);
    float sum = 0.0f;
    map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {1000.0f, 100.0f}, &sum);
    const trees::NodeRef late = trees::MakeNode("3");
    map.root->InsertChild(late.Get(), /*resetCaches=*/0);
    Cache lateCache(late.Get());
    map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {1000.0f, 100.0f}, &sum);
    EXPECT_EQ(sum, 128.0f);
    late->SetCache(nullptr);
}

// ---- grid

TEST(VisTreeMapLayoutCache, TheGridNeedsACellForEveryChild)
{
    const Map map({"R", {{"0"}, {"1"}, {"2"}, {"3"}, {"4"}}});
    // Two columns of 34 in 100, two rows of 17 in 37: four cells.
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({100.0f, 50.0f}), 0);
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({102.0f, 50.0f}), 1) << "three columns";
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({100.0f, 64.0f}), 1) << "three rows";
}

TEST(VisTreeMapLayoutCache, TheGridNeedsRoomForOneCell)
{
    const Map map({"R", {{"0"}}});
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({34.0f, 30.0f}), 1);
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({33.9f, 30.0f}), 0);
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({34.0f, 29.9f}), 0);
}

TEST(VisTreeMapLayoutCache, EnormousGridsDoNotOverflow)
{
    const Map map(THREE_LEAVES);
    const float largest = std::numeric_limits<float>::max();
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({largest, largest}), 1);
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({infinity, infinity}), 1);
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({-infinity, infinity}), 0);
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({std::nanf(""), 50.0f}), 0);
}

TEST(VisTreeMapLayout, ThreeLeavesInAHundredByFiftyRootFillTwoColumnsFromTheTop)
{
    //    1        48.06  50.06      97.12
    //    +-----------+   +-----------+  35
    //    |     0     |   |     1     |
    //    +-----------+   +-----------+  20
    //    +-----------+                  18
    //    |     2     |
    //    +-----------+                   3
    const Map map(THREE_LEAVES);
    map.Root()->SetLastModeOfComputedMinimumExpandedSize(SIDE_BY_SIDE);
    EXPECT_EQ(map.Root()->CanSliceAndDiceExpandNode(SIDE_BY_SIDE, {100.0f, 50.0f}, nullptr), 0)
        << "31.33 units each, by proportion and by an equal split";
    EXPECT_EQ(map.Root()->CanLayoutChildrenInGrid({100.0f, 50.0f}), 1);
    map.Draw(100.0f, 50.0f);
    EXPECT_EQ(map.Rectangle("R"), "0,0 100x50");
    EXPECT_EQ(map.Rectangle("0"), "1,20 47.06x15");
    EXPECT_EQ(map.Rectangle("1"), "50.06,20 47.06x15");
    EXPECT_EQ(map.Rectangle("2"), "1,3 47.06x15");
    EXPECT_FLOAT_EQ(map.Of("0")->GetSize().x, ((100.0f / 34.0f - 2.0f) / 2.0f + 1.0f) * 32.0f);
    EXPECT_NE(map.Root()->IsExpanded(), 0);
    for (const char* const label : {"0", "1", "2"}) {
        EXPECT_NE(map.Of(label)->IsExpanded(), 0);
        EXPECT_EQ(map.Of(label)->IsDiscarded(), 0);
    }
    EXPECT_EQ(map.Roles("0"), "fill contour label") << "the first leaf is the selection";
    EXPECT_EQ(map.Roles("1"), "fill label");
}

TEST(VisTreeMapLayout, ARootThatCanNeitherBeOpenedNorGriddedIsCollapsed)
{
    const Map map({"R", {{"0"}, {"1"}, {"2"}, {"3"}, {"4"}}});
    map.Root()->SetLastModeOfComputedMinimumExpandedSize(SIDE_BY_SIDE);
    map.Draw(100.0f, 50.0f);
    EXPECT_EQ(map.Root()->IsExpanded(), 0);
    EXPECT_EQ(map.Roles("R"), "texture label");
    for (const char* const label : {"0", "4"}) {
        EXPECT_FALSE(map.Shows(label));
        EXPECT_EQ(map.Of(label)->IsExpanded(), 0);
        EXPECT_NE(map.Of(label)->IsDiscarded(), 0);
    }
}

TEST(VisTreeMapLayout, InnerNodesInTheGridAreCollapsedAndHideWhatIsBelow)
{
    const Map map({"R", {{"A", {{"a", {{"deep"}}}, {"b"}}}, {"B"}}});
    map.Draw(1000.0f, 1000.0f);
    EXPECT_TRUE(map.Shows("deep"));
    map.layout->LayoutChildrenInGrid({0.0f, 0.0f}, {100.0f, 50.0f}, map.font.Get(), 1.0f);
    EXPECT_EQ(map.Of("A")->IsExpanded(), 0);
    EXPECT_EQ(map.Roles("A"), "texture label");
    for (const char* const label : {"a", "b", "deep"}) {
        EXPECT_FALSE(map.Shows(label)) << label;
        EXPECT_NE(map.Of(label)->IsDiscarded(), 0) << label;
    }
}

TEST(VisTreeMapLayout, ChildrenThatFindNoCellAreHidden)
{
    const Map map({"R", {{"0"}, {"1"}, {"2"}, {"3"}, {"E", {{"e"}}}}});
    map.Draw(1000.0f, 1000.0f);
    ASSERT_TRUE(map.Shows("e"));
    map.layout->LayoutChildrenInGrid({0.0f, 0.0f}, {100.0f, 50.0f}, map.font.Get(), 1.0f);
    EXPECT_TRUE(map.Shows("3"));
    EXPECT_FALSE(map.Shows("E")) << "four cells only: rows stop where the root ends";
    EXPECT_FALSE(map.Shows("e"));
    EXPECT_NE(map.Of("E")->IsDiscarded(), 0);
}

TEST(VisTreeMapLayout, AGridWithoutAColumnOrARowShowsTheRootAlone)
{
    for (const KUVMathPoint2Df size :
         {KUVMathPoint2Df(33.0f, 500.0f), KUVMathPoint2Df(500.0f, 20.0f),
          KUVMathPoint2Df(1.0f, 500.0f), KUVMathPoint2Df(500.0f, 14.0f),
          KUVMathPoint2Df(std::nanf(""), 500.0f), KUVMathPoint2Df(500.0f, std::nanf(""))}) {
        const Map map(THREE_LEAVES);
        map.Draw(1000.0f, 1000.0f);
        map.layout->LayoutChildrenInGrid({0.0f, 0.0f}, size, map.font.Get(), 1.0f);
        EXPECT_NE(map.Root()->IsExpanded(), 0);
        EXPECT_TRUE(map.Shows("R"));
        for (const char* const label : {"0", "1", "2"})
            EXPECT_FALSE(map.Shows(label)) << size.x << " x " << size.y;
    }
}

TEST(VisTreeMapLayout, AChildWithoutCacheLeavesItsCellEmpty)
{
    const Map map(THREE_LEAVES);
    Cache* const cache = map.Of("0");
    map.Node("0")->SetCache(nullptr);
    map.layout->LayoutChildrenInGrid({0.0f, 0.0f}, {100.0f, 50.0f}, map.font.Get(), 1.0f);
    EXPECT_EQ(map.Rectangle("1"), "50.06,20 47.06x15");
    EXPECT_EQ(map.Rectangle("2"), "1,3 47.06x15");
    map.Node("0")->SetCache(cache);
}

TEST(VisTreeMapLayout, AChildlessRootInTheGridIsJustDrawn)
{
    const Map map({"R", {}});
    map.layout->LayoutChildrenInGrid({3.0f, 4.0f}, {100.0f, 50.0f}, map.font.Get(), 1.0f);
    EXPECT_EQ(map.Rectangle("R"), "3,4 100x50");
    EXPECT_TRUE(map.Shows("R"));
}
