#include "VisTreeSpaceFillingLayoutCache.h"

#include "TreeBuilding.h"
#include "VirtualSlots.h"
#include "VisTreeSpaceFillingView.h"
#include "private/CacheAccess.h"
#include "support/LiveInstances.h"

#include <gtest/gtest.h>

#include <memory>

using trees::Append;
using trees::MakeNode;
using trees::NodeRef;

namespace {

using Cache = VisTreeSpaceFillingLayoutCache;

const support::WatchedClass WATCH_NODE_CACHES("VisDataTree::VisDataTreeCache", [] {
    const VisDataTree::VisDataTreeCache sample(nullptr);
    return support::VirtualTableOf(sample);
});
const support::WatchedClass WATCH_LAYOUT_CACHES("VisTreeSpaceFillingLayoutCache", [] {
    const Cache sample(nullptr);
    return support::VirtualTableOf(sample);
});

void ExpectPoint(const KUVMathPoint2Df& point, float x, float y)
{
    EXPECT_EQ(point.x, x);
    EXPECT_EQ(point.y, y);
}

/// Tells when it is destroyed.
class MortalView : public VisTreeSpaceFillingView {
public:
    explicit MortalView(int& deaths) : VisTreeSpaceFillingView(nullptr), deaths_(deaths) {}
    MortalView(const MortalView&) = delete;
    MortalView& operator=(const MortalView&) = delete;
    ~MortalView() override { ++deaths_; }

private:
    int& deaths_;
};

struct OpenCache : Cache {
    using Cache::Cache;
    using Cache::InternalResetCache;
};

}  // namespace

TEST(VisTreeSpaceFillingLayoutCache, ACacheForANullNodeIsEmpty)
{
    const Cache cache(nullptr);
    EXPECT_EQ(cache.GetNode(), nullptr);
    ExpectPoint(cache.GetPos(), 0, 0);
    ExpectPoint(cache.GetSize(), 0, 0);
    ExpectPoint(cache.GetComputedMinimumSize(), -1, -1);
    EXPECT_EQ(cache.GetView(), nullptr);
    EXPECT_EQ(cache.IsExpanded(), 1);
    EXPECT_EQ(cache.IsDiscarded(), 0);
}

TEST(VisTreeSpaceFillingLayoutCache, ACacheForANodeIsLinkedToIt)
{
    const NodeRef node = MakeNode();
    Cache cache(node.Get());
    EXPECT_EQ(node->GetCache(), &cache);
    EXPECT_EQ(VisCacheAccess::LayoutCacheOf(node.Get()), &cache);
    node->SetCache(nullptr);
}

TEST(VisTreeSpaceFillingLayoutCache, ACacheOfAnotherClassIsNoLayoutCache)
{
    const NodeRef node = MakeNode();
    EXPECT_EQ(VisCacheAccess::LayoutCacheOf(node.Get()), nullptr);
    EXPECT_EQ(VisCacheAccess::LayoutCacheOf(nullptr), nullptr);
    VisDataTree::VisDataTreeCache plain(node.Get());
    EXPECT_EQ(VisCacheAccess::LayoutCacheOf(node.Get()), nullptr);
    node->SetCache(nullptr);
}

TEST(VisTreeSpaceFillingLayoutCache, CopyingACacheThatHasAViewGivesACacheWithoutView)
{
    int deaths = 0;
    {
        Cache cache(nullptr);
        VisCacheAccess::SetPosition(cache, {1, 2});
        VisCacheAccess::SetSize(cache, {3, 4});
        VisCacheAccess::SetComputedMinimumSize(cache, {5, 6});
        VisCacheAccess::View(cache) = new MortalView(deaths);
        cache.SetSizeValue(7);
        {
            const Cache copy(cache);
            ExpectPoint(copy.GetPos(), 1, 2);
            ExpectPoint(copy.GetSize(), 3, 4);
            ExpectPoint(copy.GetComputedMinimumSize(), 5, 6);
            EXPECT_EQ(copy.GetView(), nullptr);
            EXPECT_EQ(copy.GetSizeValue(), 7);
        }
        EXPECT_EQ(deaths, 0) << "destroying the copy leaves the first cache's view alone";
    }
    EXPECT_EQ(deaths, 1) << "the cache owns its view";
}

TEST(VisTreeSpaceFillingLayoutCache, AssigningCopiesTheRectangleAndNeitherNodeNorView)
{
    int deaths = 0;
    const NodeRef one = MakeNode();
    const NodeRef other = MakeNode();
    {
        Cache target(one.Get());
        Cache source(other.Get());
        VisCacheAccess::View(source) = new MortalView(deaths);
        VisCacheAccess::SetPosition(source, {1, 2});
        VisCacheAccess::SetSize(source, {3, 4});
        VisCacheAccess::SetComputedMinimumSize(source, {5, 6});
        target = source;
        ExpectPoint(target.GetPos(), 1, 2);
        ExpectPoint(target.GetSize(), 3, 4);
        ExpectPoint(target.GetComputedMinimumSize(), 5, 6);
        EXPECT_EQ(target.GetView(), nullptr);
        EXPECT_EQ(target.GetNode(), nullptr);
        Cache& same = source;
        source = same;
        EXPECT_EQ(source.GetNode(), other.Get());
        one->SetCache(nullptr);
        other->SetCache(nullptr);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(VisTreeSpaceFillingLayoutCache, ACloneIsAPlainNodeCache)
{
    Cache cache(nullptr);
    cache.SetColorValue(3);
    const std::unique_ptr<VisDataTree::VisDataTreeCache> clone(cache.Clone());
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(dynamic_cast<Cache*>(clone.get()), nullptr) << "Clone is not overridden";
    EXPECT_EQ(VisCacheAccess::Kind(*clone), VisCacheKind::Node);
    EXPECT_EQ(clone->GetColorValue(), 3);
}

TEST(VisTreeSpaceFillingLayoutCache, InsertingAChildResetsTheMinimumSizeOfTheNodeAndItsAncestors)
{
    const NodeRef root = MakeNode();
    VisDataTree* const inner = Append(root.Get());
    VisDataTree* const sibling = Append(root.Get());
    Cache ofRoot(root.Get());
    Cache ofInner(inner);
    Cache ofSibling(sibling);
    for (Cache* const cache : {&ofRoot, &ofInner, &ofSibling}) {
        VisCacheAccess::SetComputedMinimumSize(*cache, {10, 20});
        VisCacheAccess::SetSize(*cache, {30, 40});
    }
    Append(inner);
    ExpectPoint(ofInner.GetComputedMinimumSize(), -1, -1);
    ExpectPoint(ofRoot.GetComputedMinimumSize(), -1, -1);
    ExpectPoint(ofSibling.GetComputedMinimumSize(), 10, 20);
    ExpectPoint(ofRoot.GetSize(), 30, 40);
    for (VisDataTree* const node : {root.Get(), inner, sibling})
        node->SetCache(nullptr);
}

TEST(VisTreeSpaceFillingLayoutCache, InsertingOrLinkingBelowShowsThatNotAllIsHidden)
{
    const NodeRef root = MakeNode();
    VisDataTree* const inner = Append(root.Get());
    Cache ofRoot(root.Get());
    Cache ofInner(inner);
    const auto hide = [&] {
        VisCacheAccess::HiddenBelow(ofRoot) = 1;
        VisCacheAccess::HiddenBelow(ofInner) = 1;
    };
    const auto expectCleared = [&] {
        EXPECT_EQ(VisCacheAccess::HiddenBelow(ofRoot), 0);
        EXPECT_EQ(VisCacheAccess::HiddenBelow(ofInner), 0);
    };
    hide();
    VisDataTree* const leaf = Append(inner);
    expectCleared();
    hide();
    const NodeRef late = MakeNode();
    inner->InsertChild(late.Get(), /*resetCaches=*/0);
    expectCleared();
    hide();
    Cache ofLeaf(leaf);
    expectCleared();
    hide();
    Cache other(nullptr);
    ofLeaf = other;
    EXPECT_EQ(VisCacheAccess::HiddenBelow(ofRoot), 0);
    for (VisDataTree* const node : {root.Get(), inner, leaf})
        node->SetCache(nullptr);
}

TEST(VisTreeSpaceFillingLayoutCache, OverridesTheResetInItsSlotAndAddsNone)
{
    EXPECT_EQ(SlotOf(&OpenCache::InternalResetCache), 2);
    struct Next : Cache {
        using Cache::Cache;
        virtual void FirstOfItsOwn() {}
    };
    EXPECT_EQ(SlotOf(&Next::FirstOfItsOwn), 9);
}
