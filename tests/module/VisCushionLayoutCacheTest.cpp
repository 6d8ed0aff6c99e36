#include "VisCushionLayout.h"

#include "VirtualSlots.h"

#include "module/CushionFixture.h"

#include "private/CacheAccess.h"
#include "private/CushionRectangles.h"

#include "support/LiveInstances.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using cushions::Cache;
using cushions::Cushion;
using cushions::SIDE_BY_SIDE;
using cushions::STACKED;

namespace {

const support::WatchedClass watchCaches("VisCushionLayoutCache", [] {
    const Cache sample(nullptr);
    return support::VirtualTableOf(sample);
});

/// Opens what the cache keeps for derived classes, and counts resets.
struct OpenCache : Cache {
    using Cache::Cache;
    void InternalResetCache() override
    {
        ++resets;
        Cache::InternalResetCache();
    }
    int resets = 0;
};

/// A class derived from the cache for its first virtual operation.
struct Next : Cache {
    using Cache::Cache;
    virtual void FirstOfItsOwn() {}
};

const support::TreeSketch TWO_LEVELS = {"R", {{"A", {{"a"}, {"b"}}}, {"B"}}};

void ExpectUntouched(const Cache& cache)
{
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(cache.GetSurface()[i], 0.0f);
    EXPECT_EQ(cache.GetHeight(), 0.0f);
    EXPECT_EQ(cache.GetScaleFactor(), 0.0f);
    EXPECT_EQ(cache.GetSubtreeValue(), 0);
    EXPECT_EQ(cache.IsCushionComputed(), 0);
    EXPECT_EQ(cache.GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
}

void ExpectSameCushion(const Cache& cache, const Cache& expected)
{
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(cache.GetSurface()[i], expected.GetSurface()[i]);
    EXPECT_EQ(cache.GetHeight(), expected.GetHeight());
    EXPECT_EQ(cache.GetScaleFactor(), expected.GetScaleFactor());
    EXPECT_EQ(cache.GetSubtreeValue(), expected.GetSubtreeValue());
    EXPECT_EQ(cache.IsCushionComputed(), expected.IsCushionComputed());
    EXPECT_EQ(cache.GetLastModeOfComputedMinimumExpandedSize(),
              expected.GetLastModeOfComputedMinimumExpandedSize());
}

}  // namespace

TEST(VisCushionLayoutCache, ACacheMadeForANodeIsLinkedAndAllItsFieldsAreZero)
{
    const trees::NodeRef node = trees::MakeNode("N");
    Cache cache(node.Get());
    EXPECT_EQ(node->GetCache(), &cache);
    ExpectUntouched(cache);
    EXPECT_EQ(cache.GetPos().x, 0.0f);
    EXPECT_EQ(cache.GetSize().y, 0.0f);
    EXPECT_EQ(cache.GetComputedMinimumSize().x, -1.0f);
    EXPECT_EQ(cache.GetView(), nullptr);
    node->SetCache(nullptr);
}

TEST(VisCushionLayoutCache, ACacheForNoNodeHasNone)
{
    const Cache cache(nullptr);
    EXPECT_EQ(cache.GetNode(), nullptr);
    ExpectUntouched(cache);
}

TEST(VisCushionLayoutCache, ReplacesOperationsOfTheNodeCacheAndAddsNoSlots)
{
    using NodeCache = VisDataTree::VisDataTreeCache;
    EXPECT_EQ(SlotOf(&OpenCache::InternalResetCache), 2);
    EXPECT_EQ(SlotOf(&Cache::SetSizeValue), SlotOf(&NodeCache::SetSizeValue));
    EXPECT_EQ(SlotOf(&Cache::SetResizeWithValue), SlotOf(&NodeCache::SetResizeWithValue));
    EXPECT_EQ(SlotOf(&Cache::Clone), SlotOf(&NodeCache::Clone));
    EXPECT_EQ(SlotOf(&Cache::SetLastModeOfComputedMinimumExpandedSize), -1);
    EXPECT_EQ(SlotOf(&Next::FirstOfItsOwn), 9);
}

TEST(VisCushionLayoutCache, CopyAssignmentAndCloneTakeAllFields)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(100.0f, 60.0f);
    Cache& source = *cushion.Of("b");
    ASSERT_NE(source.GetSurface()[0], 0.0f);
    ASSERT_NE(source.GetSurface()[3], 0.0f);

    const Cache copy(source);
    ExpectSameCushion(copy, source);
    EXPECT_EQ(copy.GetNode(), nullptr);
    EXPECT_EQ(copy.GetSize().x, source.GetSize().x);
    EXPECT_EQ(copy.GetView(), nullptr) << "the view is never copied";

    Cache assigned(nullptr);
    assigned = source;
    ExpectSameCushion(assigned, source);
    Cache& same = assigned;
    assigned = same;
    ExpectSameCushion(assigned, source);

    const std::unique_ptr<VisDataTree::VisDataTreeCache> clone(source.Clone());
    const auto* const cushionClone = dynamic_cast<Cache*>(clone.get());
    ASSERT_NE(cushionClone, nullptr);
    ExpectSameCushion(*cushionClone, source);
    EXPECT_EQ(cushionClone->GetNode(), nullptr);
}

TEST(VisCushionLayoutCache, AResetForgetsValueAndStateButNotTheSurface)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(100.0f, 60.0f);
    Cache& cache = *cushion.Of("A");
    ASSERT_EQ(cache.GetSubtreeValue(), 2);
    ASSERT_EQ(cache.IsCushionComputed(), 1);
    const float surface = cache.GetSurface()[3];
    ASSERT_NE(surface, 0.0f);
    cache.ResetCache();
    EXPECT_EQ(cache.GetSubtreeValue(), 0);
    EXPECT_EQ(cache.IsCushionComputed(), 0);
    EXPECT_EQ(cache.GetComputedMinimumSize().y, -1.0f);
    EXPECT_EQ(cache.GetSurface()[3], surface);
    EXPECT_EQ(cache.GetHeight(), 0.5f * 0.85f);
    EXPECT_EQ(cushion.Root()->IsCushionComputed(), 0);
    EXPECT_EQ(cushion.Of("a")->IsCushionComputed(), 1) << "what is below stays";
}

TEST(VisCushionLayoutCache, SettingAnotherModeStoresIt)
{
    Cache cache(nullptr);
    cache.SetLastModeOfComputedMinimumExpandedSize(STACKED);
    EXPECT_EQ(cache.GetLastModeOfComputedMinimumExpandedSize(), STACKED);
    EXPECT_EQ(cache.GetComputedMinimumSize().x, -1.0f);
    EXPECT_EQ(cache.GetComputedMinimumSize().y, -1.0f);
    cache.SetLastModeOfComputedMinimumExpandedSize(STACKED);
    EXPECT_EQ(cache.GetLastModeOfComputedMinimumExpandedSize(), STACKED);
    const auto five = static_cast<VisTreeMap_SliceDice>(5);
    cache.SetLastModeOfComputedMinimumExpandedSize(five);
    EXPECT_EQ(cache.GetLastModeOfComputedMinimumExpandedSize(), five);
}

TEST(VisCushionLayoutCache, AnotherModeForgetsTheMinimumSizeAndTheSameKeepsIt)
{
    Cache cache(nullptr);
    cache.SetLastModeOfComputedMinimumExpandedSize(STACKED);
    VisCacheAccess::SetComputedMinimumSize(cache, {3.0f, 4.0f});
    cache.SetLastModeOfComputedMinimumExpandedSize(STACKED);
    EXPECT_EQ(cache.GetComputedMinimumSize().x, 3.0f);
    EXPECT_EQ(cache.GetComputedMinimumSize().y, 4.0f);
    cache.SetLastModeOfComputedMinimumExpandedSize(VisTreeMap_SideBySide);
    EXPECT_EQ(cache.GetComputedMinimumSize().x, -1.0f);
    EXPECT_EQ(cache.GetComputedMinimumSize().y, -1.0f);
}

// ---- value setters

TEST(VisCushionLayoutCache, AnotherSizeValueResetsTheCacheAndThoseAbove)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(100.0f, 60.0f);
    cushion.Of("a")->SetSizeValue(7);
    EXPECT_EQ(cushion.Of("a")->GetSizeValue(), 7);
    EXPECT_EQ(cushion.Of("a")->IsCushionComputed(), 0);
    EXPECT_EQ(cushion.Of("A")->IsCushionComputed(), 0);
    EXPECT_EQ(cushion.Root()->IsCushionComputed(), 0);
    EXPECT_EQ(cushion.Of("b")->IsCushionComputed(), 1);
    EXPECT_EQ(cushion.Of("B")->IsCushionComputed(), 1);
}

TEST(VisCushionLayoutCache, TheSameSizeValueResetsNothing)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Of("a")->SetSizeValue(7);
    cushion.Draw(100.0f, 60.0f);
    cushion.Of("a")->SetSizeValue(7);
    EXPECT_EQ(cushion.Of("a")->IsCushionComputed(), 1);
    EXPECT_EQ(cushion.Root()->IsCushionComputed(), 1);
}

TEST(VisCushionLayoutCache, AColourValueResetsNothing)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(100.0f, 60.0f);
    cushion.Of("a")->SetColorValue(7);
    cushion.Root()->SetColorWithValue(1);
    EXPECT_EQ(cushion.Of("a")->IsCushionComputed(), 1);
    EXPECT_EQ(cushion.Root()->IsCushionComputed(), 1);
}

TEST(VisCushionLayoutCache, ResizingWithValueSpreadsAndResetsWhereTheFlagChanges)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(100.0f, 60.0f);
    cushion.Of("A")->SetResizeWithValue(1);
    EXPECT_EQ(cushion.Of("a")->ResizeWithValue(), 1);
    EXPECT_EQ(cushion.Of("b")->ResizeWithValue(), 1);
    EXPECT_EQ(cushion.Of("B")->ResizeWithValue(), 0);
    for (const char* const label : {"a", "b", "A", "R"})
        EXPECT_EQ(cushion.Of(label)->IsCushionComputed(), 0) << label;
    EXPECT_EQ(cushion.Of("B")->IsCushionComputed(), 1);

    cushion.Draw(100.0f, 60.0f);
    cushion.Of("A")->SetResizeWithValue(1);
    EXPECT_EQ(cushion.Root()->IsCushionComputed(), 1) << "no flag changed";
    cushion.Root()->SetResizeWithValue(1);
    EXPECT_EQ(cushion.Of("A")->IsCushionComputed(), 1) << "its own flag did not change";
    EXPECT_EQ(cushion.Of("B")->IsCushionComputed(), 0);
    EXPECT_EQ(cushion.Root()->IsCushionComputed(), 0);
}

TEST(VisCushionLayoutCache, ResizingWithValueStopsAtAChildWithoutCache)
{
    const Cushion cushion(TWO_LEVELS);
    Cache* const cache = cushion.Of("A");
    cushion.Node("A")->SetCache(nullptr);
    cushion.Root()->SetResizeWithValue(1);
    EXPECT_EQ(cushion.Of("B")->ResizeWithValue(), 1);
    EXPECT_EQ(cushion.Of("a")->ResizeWithValue(), 0);
    cushion.Node("A")->SetCache(cache);
}

TEST(VisCushionLayoutCache, ValuesSetBetweenDrawingsAreSeenByEveryOne)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Root()->SetResizeWithValue(1);
    const char* const leaves[] = {"a", "b", "B"};
    for (long long value = 1; value < 5; ++value) {
        for (const char* const leaf : leaves)
            cushion.Of(leaf)->SetSizeValue(value);
        cushion.Draw(100.0f, 60.0f);
        EXPECT_EQ(cushion.Root()->GetSubtreeValue(), 3 * value);
        EXPECT_EQ(cushion.Of("A")->GetSubtreeValue(), 2 * value);
    }
}

TEST(VisCushionLayoutCache, ANodeMovedAfterAResetIsResetBelowItsNewParents)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Of("a")->SetSizeValue(1);
    cushion.Draw(100.0f, 60.0f);
    cushion.Of("a")->SetSizeValue(2);
    cushion.Draw(100.0f, 60.0f);
    ASSERT_EQ(cushion.Root()->IsCushionComputed(), 1);
    const auto moved = VisReference<VisDataTree>::Retain(cushion.Node("a"));
    cushion.Node("B")->InsertChild(moved.Get(), /*resetCaches=*/0);
    cushion.Draw(100.0f, 60.0f);
    cushion.Of("a")->SetSizeValue(3);
    EXPECT_EQ(cushion.Of("B")->IsCushionComputed(), 0);
    EXPECT_EQ(cushion.Root()->IsCushionComputed(), 0);
}

TEST(VisCushionLayoutCache, WeighingEveryNodeOfADeepTreeIsLinear)
{
    // Resetting everything above for each of these nodes would take hours.
    trees::NodeRef root = trees::MakeChain(trees::MANY_LEVELS);
    const Cushion cushion(std::move(root));
    cushion.Root()->SetResizeWithValue(1);
    long long value = 0;
    VisDataTree* node = cushion.root.Get();
    for (;;) {
        node->GetCache()->SetSizeValue(++value);
        if (node->GetChildren().empty())
            break;
        node = node->GetChildren().front();
    }
    LayOutCushions(cushion.root.Get(), SIDE_BY_SIDE, {0.0f, 0.0f}, {10.0f, 10.0f});
    EXPECT_EQ(value, static_cast<long long>(trees::MANY_LEVELS));
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), value) << "the last node is the only leaf";
    cushion.layout->SetTreeRoot(nullptr);
}

TEST(VisCushionLayoutCache, ADerivedCacheHearsOfEveryResetOfItsOwn)
{
    const trees::NodeRef node = trees::MakeNode("N");
    OpenCache cache(node.Get());
    const int before = cache.resets;
    cache.SetSizeValue(1);
    cache.SetSizeValue(2);
    cache.SetSizeValue(2);
    EXPECT_EQ(cache.resets - before, 2);
    node->SetCache(nullptr);
}
