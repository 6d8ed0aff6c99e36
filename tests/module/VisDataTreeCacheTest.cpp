#include "VisDataTree.h"

#include "TreeBuilding.h"
#include "VirtualSlots.h"
#include "private/CacheAccess.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

using trees::Append;
using trees::MakeNode;
using trees::NodeRef;

namespace {

using Cache = VisDataTree::VisDataTreeCache;

std::string Text(const KUVUnicodeString& text) { return text.GetUtf8(); }

/// Shows the protected operations and records the calls of the setters that spread.
class ProbeCache : public Cache {
public:
    using Cache::Cache;
    using Cache::InternalResetCache;
    using Cache::SetNode;
};

/// Caches for every node of a subtree, detached at the end.
class Caches {
public:
    explicit Caches(VisDataTree* root) { Add(root); }
    ~Caches()
    {
        for (const auto& cache : caches_) {
            if (cache->GetNode())
                cache->GetNode()->SetCache(nullptr);
        }
    }
    Caches(const Caches&) = delete;
    Caches& operator=(const Caches&) = delete;

private:
    void Add(VisDataTree* node)
    {
        caches_.push_back(std::make_unique<Cache>(node));
        for (VisDataTree* const child : node->GetChildren())
            Add(child);
    }

    std::vector<std::unique_ptr<Cache>> caches_;
};

struct Family {
    NodeRef root = MakeNode("root");
    VisDataTree* first = Append(root.Get(), "first");
    VisDataTree* second = Append(root.Get(), "second");
    VisDataTree* grandchild = Append(first, "grandchild");
    VisDataTree* greatGrandchild = Append(grandchild, "greatGrandchild");
};

}  // namespace

// ---- construction, copies, destruction

TEST(VisDataTreeCache, ANewCacheIsExpandedShownUnlabelledAndWithoutValues)
{
    const NodeRef node = MakeNode();
    Cache cache(node.Get());
    EXPECT_EQ(cache.GetNode(), node.Get());
    EXPECT_EQ(node->GetCache(), &cache) << "the constructor links";
    EXPECT_EQ(cache.IsExpanded(), 1);
    EXPECT_EQ(cache.IsDiscarded(), 0);
    EXPECT_EQ(cache.GetShowLabel(), 0);
    EXPECT_EQ(cache.GetColorValue(), 0);
    EXPECT_EQ(cache.GetSizeValue(), 0);
    EXPECT_EQ(cache.ResizeWithValue(), 0);
    EXPECT_EQ(cache.ColorWithValue(), 0);
    EXPECT_EQ(Cache::MAX_LEVEL_OF_COLORS, 5);
    node->SetCache(nullptr);
}

TEST(VisDataTreeCache, ACacheForANullNodeLeavesEveryNodeUntouchedAndShowsAnEmptyLabel)
{
    const NodeRef node = MakeNode("label");
    Cache cache(nullptr);
    EXPECT_EQ(cache.GetNode(), nullptr);
    EXPECT_EQ(node->GetCache(), nullptr);
    cache.SetResizeWithValue(1);
    EXPECT_EQ(Text(cache.GetLabelToDisplay(VisDataTree_ApplyValueToNone)), "");
    EXPECT_EQ(Text(cache.GetLabelToDisplay(VisDataTree_ApplyValueToSize)), "");
}

TEST(VisDataTreeCache, ACacheMadeForANodeThatHasOneLeavesBothUnlinked)
{
    const NodeRef node = MakeNode();
    Cache first(node.Get());
    Cache second(node.Get());
    EXPECT_EQ(node->GetCache(), nullptr);
    EXPECT_EQ(first.GetNode(), nullptr);
    EXPECT_EQ(second.GetNode(), nullptr);
}

TEST(VisDataTreeCache, CopyingOrCloningALinkedCacheGivesAnUnlinkedOneWithTheSameFlagsAndValues)
{
    const NodeRef node = MakeNode();
    Cache cache(node.Get());
    VisCacheAccess::SetExpanded(cache, 0);
    VisCacheAccess::SetDiscarded(cache, 2);
    VisCacheAccess::HiddenBelow(cache) = 1;
    cache.SetShowLabel(3);
    cache.SetColorValue(-4);
    cache.SetSizeValue(5);
    cache.SetResizeWithValue(6);
    cache.SetColorWithValue(7);

    const auto check = [](const Cache& copy) {
        EXPECT_EQ(copy.GetNode(), nullptr);
        EXPECT_EQ(copy.IsExpanded(), 0);
        EXPECT_EQ(copy.IsDiscarded(), 2);
        EXPECT_EQ(copy.GetShowLabel(), 3);
        EXPECT_EQ(copy.GetColorValue(), -4);
        EXPECT_EQ(copy.GetSizeValue(), 5);
        EXPECT_EQ(copy.ResizeWithValue(), 6);
        EXPECT_EQ(copy.ColorWithValue(), 7);
    };
    Cache copy(cache);
    check(copy);
    EXPECT_EQ(VisCacheAccess::HiddenBelow(copy), 0) << "what is below belongs to a node";
    const std::unique_ptr<Cache> clone(cache.Clone());
    ASSERT_NE(clone, nullptr);
    check(*clone);
    EXPECT_EQ(node->GetCache(), &cache);
    node->SetCache(nullptr);
}

TEST(VisDataTreeCache, AssigningBetweenDifferentNodesUnlinksTheTargetWithoutTellingItsNode)
{
    const NodeRef one = MakeNode();
    const NodeRef other = MakeNode();
    Cache target(one.Get());
    Cache source(other.Get());
    source.SetSizeValue(12);
    target = source;
    EXPECT_EQ(target.GetSizeValue(), 12);
    EXPECT_EQ(target.GetNode(), nullptr);
    EXPECT_EQ(one->GetCache(), &target) << "the former node is not told";
    EXPECT_EQ(source.GetNode(), other.Get());
    one->SetCache(nullptr);
    other->SetCache(nullptr);
}

TEST(VisDataTreeCache, AssigningToItselfDoesNothing)
{
    const NodeRef node = MakeNode();
    Cache cache(node.Get());
    cache.SetColorValue(8);
    Cache& same = cache;
    cache = same;
    EXPECT_EQ(cache.GetNode(), node.Get());
    EXPECT_EQ(cache.GetColorValue(), 8);
    node->SetCache(nullptr);
}

TEST(VisDataTreeCache, KeepsTheSlotOrderOfItsVirtualOperations)
{
    // The destructor takes the first two slots.
    EXPECT_EQ(SlotOf(&ProbeCache::InternalResetCache), 2);
    EXPECT_EQ(SlotOf(&Cache::GetLabelToDisplay), 3);
    EXPECT_EQ(SlotOf(&Cache::SetColorValue), 4);
    EXPECT_EQ(SlotOf(&Cache::SetColorWithValue), 5);
    EXPECT_EQ(SlotOf(&Cache::SetSizeValue), 6);
    EXPECT_EQ(SlotOf(&Cache::SetResizeWithValue), 7);
    EXPECT_EQ(SlotOf(&Cache::Clone), 8);

    struct Next : Cache {
        using Cache::Cache;
        virtual void FirstOfItsOwn() {}
    };
    EXPECT_EQ(SlotOf(&Next::FirstOfItsOwn), 9) << "derived caches extend the table here";
}

// ---- links and resets

TEST(VisDataTreeCache, TheResetWalkGoesUpwardsAndStopsAtAParentWithoutCache)
{
    struct Recording : Cache {
        Recording(VisDataTree* node, std::string& record) : Cache(node), record_(record) {}
        void InternalResetCache() override
        {
            if (GetNode())
                record_ += Text(GetNode()->GetLabel()) + " ";
        }
        std::string& record_;
    };
    Family f;
    std::string record;
    Recording ofRoot(f.root.Get(), record);
    Recording ofGrandchild(f.grandchild, record);
    Recording ofGreatGrandchild(f.greatGrandchild, record);
    record.clear();
    ofGreatGrandchild.ResetCache();
    EXPECT_EQ(record, "greatGrandchild grandchild ");

    record.clear();
    Recording ofFirst(f.first, record);
    record.clear();
    ofGreatGrandchild.ResetCache();
    EXPECT_EQ(record, "greatGrandchild grandchild first root ");
    for (VisDataTree* node : {f.root.Get(), f.first, f.grandchild, f.greatGrandchild})
        node->SetCache(nullptr);
}

TEST(VisDataTreeCache, ANewNodeTakesTheCacheAwayFromTheFormerOneWithoutLinkingItself)
{
    const NodeRef former = MakeNode();
    const NodeRef node = MakeNode();
    ProbeCache cache(former.Get());
    cache.SetNode(node.Get());
    EXPECT_EQ(cache.GetNode(), node.Get());
    EXPECT_EQ(former->GetCache(), nullptr);
    EXPECT_EQ(node->GetCache(), nullptr) << "linking goes through the node";
    cache.SetNode(node.Get());
    EXPECT_EQ(cache.GetNode(), node.Get());
}

// ---- values

TEST(VisDataTreeCache, TheSwitchesSpreadOverTheWholeSubtree)
{
    Family f;
    const Caches caches(f.root.Get());
    f.root->GetCache()->SetColorWithValue(1);
    f.first->GetCache()->SetResizeWithValue(4);
    for (const VisDataTree* node :
         {f.root.Get(), f.first, f.second, f.grandchild, f.greatGrandchild})
        EXPECT_EQ(node->GetCache()->ColorWithValue(), 1);
    EXPECT_EQ(f.root->GetCache()->ResizeWithValue(), 0);
    EXPECT_EQ(f.second->GetCache()->ResizeWithValue(), 0);
    EXPECT_EQ(f.first->GetCache()->ResizeWithValue(), 4);
    EXPECT_EQ(f.greatGrandchild->GetCache()->ResizeWithValue(), 4);
}

TEST(VisDataTreeCache, TheSpreadStopsAtAChildWithoutCache)
{
    Family f;
    const Caches caches(f.root.Get());
    f.grandchild->SetCache(nullptr);
    f.root->GetCache()->SetColorWithValue(1);
    f.root->GetCache()->SetResizeWithValue(1);
    EXPECT_EQ(f.first->GetCache()->ColorWithValue(), 1);
    EXPECT_EQ(f.greatGrandchild->GetCache()->ColorWithValue(), 0);
    EXPECT_EQ(f.greatGrandchild->GetCache()->ResizeWithValue(), 0);
    f.greatGrandchild->GetCache()->SetResizeWithValue(1);
    f.root->GetCache()->DoNotUseValue();
    EXPECT_EQ(f.greatGrandchild->GetCache()->ResizeWithValue(), 1);
}

namespace {

/// Records every call of the two switches that reaches it.
class RecordingCache : public Cache {
public:
    RecordingCache(VisDataTree* node, std::string& record) : Cache(node), record_(record) {}

    void SetColorWithValue(unsigned char value) override
    {
        record_ += Text(GetNode()->GetLabel()) + "=" + std::to_string(value) + " ";
        Cache::SetColorWithValue(value);
    }

protected:
    std::string& record_;
};

}  // namespace

TEST(VisDataTreeCache, AnOverriddenSwitchIsCalledOnceForEachCacheInPreOrder)
{
    Family f;
    std::string record;
    const RecordingCache a(f.root.Get(), record);
    RecordingCache b(f.first, record);
    const RecordingCache c(f.second, record);
    const RecordingCache d(f.grandchild, record);
    const RecordingCache e(f.greatGrandchild, record);
    f.root->GetCache()->SetColorWithValue(1);
    EXPECT_EQ(record, "root=1 first=1 grandchild=1 greatGrandchild=1 second=1 ");
    for (VisDataTree* node : {f.root.Get(), f.first, f.second, f.grandchild, f.greatGrandchild})
        node->SetCache(nullptr);
}

TEST(VisDataTreeCache, AnOverriddenSwitchDecidesWhatIsSpreadBelowIt)
{
    struct Doubling : RecordingCache {
        using RecordingCache::RecordingCache;
        void SetColorWithValue(unsigned char value) override
        {
            RecordingCache::SetColorWithValue(static_cast<unsigned char>(2 * value));
        }
    };
    struct Stopping : RecordingCache {
        using RecordingCache::RecordingCache;
        void SetColorWithValue(unsigned char) override { record_ += "stop "; }
    };
    struct Twice : Cache {
        using Cache::Cache;
        void SetColorWithValue(unsigned char value) override
        {
            Cache::SetColorWithValue(9);
            Cache::SetColorWithValue(value);
        }
    };
    Family f;
    std::string record;
    {
        Doubling a(f.root.Get(), record);
        Stopping b(f.second, record);
        RecordingCache c(f.first, record);
        Twice d(f.grandchild);
        RecordingCache e(f.greatGrandchild, record);
        a.SetColorWithValue(1);
        EXPECT_EQ(record, "root=2 first=2 greatGrandchild=9 greatGrandchild=2 stop ");
        EXPECT_EQ(b.ColorWithValue(), 0);
        EXPECT_EQ(e.ColorWithValue(), 2);
        for (VisDataTree* node : {f.root.Get(), f.first, f.second, f.grandchild, f.greatGrandchild})
            node->SetCache(nullptr);
    }
}

TEST(VisDataTreeCache, AnOverriddenSwitchMayStartASpreadOfTheOtherSwitch)
{
    struct Both : Cache {
        using Cache::Cache;
        void SetColorWithValue(unsigned char value) override
        {
            Cache::SetColorWithValue(value);
            SetResizeWithValue(value);
        }
    };
    Family f;
    Cache a(f.root.Get());
    Both b(f.first);
    Cache c(f.grandchild);
    a.SetColorWithValue(1);
    EXPECT_EQ(c.ColorWithValue(), 1);
    EXPECT_EQ(c.ResizeWithValue(), 1);
    EXPECT_EQ(a.ResizeWithValue(), 0);
    for (VisDataTree* node : {f.root.Get(), f.first, f.grandchild})
        node->SetCache(nullptr);
}

TEST(VisDataTreeCache, NotUsingValuesSwitchesBothOffInTheWholeSubtree)
{
    Family f;
    const Caches caches(f.root.Get());
    f.root->GetCache()->SetColorWithValue(1);
    f.root->GetCache()->SetResizeWithValue(1);
    f.first->GetCache()->DoNotUseValue();
    EXPECT_EQ(f.root->GetCache()->ColorWithValue(), 1);
    EXPECT_EQ(f.second->GetCache()->ResizeWithValue(), 1);
    for (const VisDataTree* node : {f.first, f.grandchild, f.greatGrandchild}) {
        EXPECT_EQ(node->GetCache()->ColorWithValue(), 0);
        EXPECT_EQ(node->GetCache()->ResizeWithValue(), 0);
    }
}

TEST(VisDataTreeCache, NotUsingValuesReachesBelowASwitchThatDoesNotSpread)
{
    struct Mute : Cache {
        using Cache::Cache;
        void SetColorWithValue(unsigned char) override {}
    };
    Family f;
    Mute a(f.root.Get());
    Cache b(f.first);
    b.SetColorWithValue(1);
    a.DoNotUseValue();
    EXPECT_EQ(b.ColorWithValue(), 0);
    f.root->SetCache(nullptr);
    f.first->SetCache(nullptr);
}

// ---- what is shown

TEST(VisDataTreeCache, TheCacheOfTheParentIsNullWithoutNodeParentOrCache)
{
    Family f;
    Cache unlinked(nullptr);
    EXPECT_EQ(unlinked.GetCacheOfParent(), nullptr);
    Cache ofFirst(f.first);
    EXPECT_EQ(ofFirst.GetCacheOfParent(), nullptr);
    Cache ofRoot(f.root.Get());
    EXPECT_EQ(ofRoot.GetCacheOfParent(), nullptr);
    EXPECT_EQ(ofFirst.GetCacheOfParent(), &ofRoot);
    f.root->SetCache(nullptr);
    f.first->SetCache(nullptr);
}

TEST(VisDataTreeCache, VisibilityAsksTheDirectParentOnly)
{
    Family f;
    const Caches caches(f.root.Get());
    Cache& ofGrandchild = *f.grandchild->GetCache();
    EXPECT_EQ(ofGrandchild.IsVisible(), 1);
    VisCacheAccess::SetExpanded(*f.root->GetCache(), 0);
    EXPECT_EQ(ofGrandchild.IsVisible(), 1) << "only the direct parent is consulted";
    VisCacheAccess::SetExpanded(*f.first->GetCache(), 0);
    EXPECT_EQ(ofGrandchild.IsVisible(), 0);
    f.first->SetCache(nullptr);
    EXPECT_EQ(ofGrandchild.IsVisible(), 1) << "a parent without cache hides nothing";
    VisCacheAccess::SetDiscarded(ofGrandchild, 1);
    EXPECT_EQ(ofGrandchild.IsVisible(), 0);

    Cache unlinked(nullptr);
    EXPECT_EQ(unlinked.IsVisible(), 1);
}

TEST(VisDataTreeCache, TheVisibleParentIsTheNearestVisibleNode)
{
    Family f;
    const Caches caches(f.root.Get());
    Cache& ofLast = *f.greatGrandchild->GetCache();
    EXPECT_EQ(ofLast.GetVisibleParent(), f.greatGrandchild);
    VisCacheAccess::SetDiscarded(ofLast, 1);
    EXPECT_EQ(ofLast.GetVisibleParent(), f.grandchild);
    VisCacheAccess::SetExpanded(*f.first->GetCache(), 0);
    EXPECT_EQ(ofLast.GetVisibleParent(), f.first);
    f.first->SetCache(nullptr);
    EXPECT_EQ(ofLast.GetVisibleParent(), f.grandchild) << "its parent has no cache now";
    VisCacheAccess::SetDiscarded(*f.grandchild->GetCache(), 1);
    EXPECT_EQ(ofLast.GetVisibleParent(), nullptr) << "a node without cache ends the search";
    VisCacheAccess::SetDiscarded(*f.root->GetCache(), 1);
    EXPECT_EQ(f.root->GetCache()->GetVisibleParent(), nullptr);
    Cache unlinked(nullptr);
    EXPECT_EQ(unlinked.GetVisibleParent(), nullptr);
}

// ---- colours

TEST(VisDataTreeCache, ColoursByLevelRepeatEveryFiveLevels)
{
    Cache cache(nullptr);
    EXPECT_EQ(cache.GetRGBAColor(0, nullptr), 0x007DA3FFU);
    EXPECT_EQ(cache.GetRGBAColor(1, nullptr), 0x0088DEFFU);
    EXPECT_EQ(cache.GetRGBAColor(2, nullptr), 0x77D7EDFFU);
    EXPECT_EQ(cache.GetRGBAColor(3, nullptr), 0xD1E7F2FFU);
    EXPECT_EQ(cache.GetRGBAColor(4, nullptr), 0xF2F5F7FFU);
    EXPECT_EQ(cache.GetRGBAColor(7, nullptr), 0x77D7EDFFU);
    EXPECT_EQ(cache.GetRGBAColor(std::numeric_limits<int>::max(), nullptr), 0x77D7EDFFU);
    EXPECT_EQ(cache.GetRGBAColor(-1, nullptr), 0xF2F5F7FFU) << "never read outside the table";
    EXPECT_EQ(cache.GetRGBAColor(std::numeric_limits<int>::min(), nullptr), 0x77D7EDFFU);
}

TEST(VisDataTreeCache, AColourValueOf50Against200GivesGrey63)
{
    const NodeRef reference = MakeNode();
    Cache whole(reference.Get());
    whole.SetColorValue(200);
    whole.SetSizeValue(100);
    Cache cache(nullptr);
    cache.SetColorValue(50);
    cache.SetSizeValue(100);
    EXPECT_EQ(cache.GetRGBAColor(1, reference.Get()), 0x0088DEFFU) << "neither switch is set";
    cache.SetResizeWithValue(1);
    EXPECT_EQ(cache.GetRGBAColor(1, reference.Get()), 0xFFFFFFFFU);
    cache.SetColorWithValue(1);
    EXPECT_EQ(cache.GetRGBAColor(1, reference.Get()), 0x3F3F3FFFU) << "colour wins over size";
    EXPECT_EQ(cache.GetRGBAColor(1, nullptr), 0x0088DEFFU);
    reference->SetCache(nullptr);
    EXPECT_EQ(cache.GetRGBAColor(1, reference.Get()), 0x0088DEFFU);
}

TEST(VisDataTreeCache, TheShareIsClampedAndNotANumberIsBlack)
{
    const NodeRef reference = MakeNode();
    Cache whole(reference.Get());
    Cache cache(nullptr);
    cache.SetColorWithValue(1);
    const auto colour = [&](long long value, long long of) {
        cache.SetColorValue(value);
        whole.SetColorValue(of);
        return cache.GetRGBAColor(0, reference.Get());
    };
    EXPECT_EQ(colour(5, 0), 0xFFFFFFFFU) << "infinity";
    EXPECT_EQ(colour(-5, 0), 0x000000FFU) << "minus infinity";
    EXPECT_EQ(colour(0, 0), 0x000000FFU) << "not a number";
    EXPECT_EQ(colour(7, 5), 0xFFFFFFFFU);
    EXPECT_EQ(colour(-7, 5), 0x000000FFU);
    EXPECT_EQ(colour(5, 5), 0xFFFFFFFFU);
    EXPECT_EQ(colour(254, 255), 0xFEFEFEFFU);
    EXPECT_EQ(colour(std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()),
              0x000000FFU);
    reference->SetCache(nullptr);
}

// ---- labels

namespace {

struct Labelled {
    NodeRef node = MakeNode("label");
    Cache cache{node.Get()};
    ~Labelled() { node->SetCache(nullptr); }

    std::string Show(VisDataTree_ApplyValueTo applyTo) const
    {
        return Text(cache.GetLabelToDisplay(applyTo));
    }
};

}  // namespace

TEST(VisDataTreeCache, ASizeValueOf1005IsShownBehindTheLabel)
{
    Labelled l;
    l.cache.SetSizeValue(1005);
    l.cache.SetResizeWithValue(1);
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToSize), "label (1,005)");
}

TEST(VisDataTreeCache, TheLabelStandsAloneUnlessItsValueIsInUse)
{
    Labelled l;
    l.cache.SetSizeValue(1);
    l.cache.SetColorValue(2);
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToNone), "label");
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToColor), "label");
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToSize), "label");
    l.cache.SetColorWithValue(1);
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToNone), "label");
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToColor), "label (2)");
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToSize), "label");
}

TEST(VisDataTreeCache, TheSwitchesChooseTheValueWhateverWasAskedFor)
{
    Labelled l;
    l.cache.SetSizeValue(1);
    l.cache.SetColorValue(2);
    const auto other = static_cast<VisDataTree_ApplyValueTo>(3);
    EXPECT_EQ(l.Show(other), "label (0)") << "no switch: 0 is shown";
    l.cache.SetColorWithValue(1);
    EXPECT_EQ(l.Show(other), "label (2)");
    l.cache.SetResizeWithValue(1);
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToColor), "label (1)") << "size comes first";
}

TEST(VisDataTreeCache, ThousandsAreGrouped)
{
    Labelled l;
    l.cache.SetResizeWithValue(1);
    const auto shown = [&](long long value) {
        l.cache.SetSizeValue(value);
        return l.Show(VisDataTree_ApplyValueToSize);
    };
    EXPECT_EQ(shown(0), "label (0)");
    EXPECT_EQ(shown(7), "label (7)");
    EXPECT_EQ(shown(999), "label (999)");
    EXPECT_EQ(shown(1000), "label (1,000)");
    EXPECT_EQ(shown(1234567), "label (1,234,567)");
    EXPECT_EQ(shown(1000000001), "label (1,000,000,001)");
    EXPECT_EQ(shown(std::numeric_limits<long long>::max()), "label (9,223,372,036,854,775,807)");
}

TEST(VisDataTreeCache, TheGroupsOfANegativeValueAreUnsignedRemainders)
{
    Labelled l;
    l.cache.SetResizeWithValue(1);
    l.cache.SetSizeValue(-1);
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToSize), "label (18446744073709551615)");
    l.cache.SetSizeValue(-1002);
    EXPECT_EQ(l.Show(VisDataTree_ApplyValueToSize),
              "label (18446744073709551615,18446744073709551614)");
}

// ---- depth

TEST(VisDataTreeCache, EveryOperationSurvivesATreeOfManyLevels)
{
    VisDataTree* last = nullptr;
    const NodeRef root = trees::MakeChain(trees::MANY_LEVELS, &last);
    std::vector<std::unique_ptr<Cache>> caches;
    caches.reserve(trees::MANY_LEVELS);
    for (VisDataTree* node = last; node; node = node->GetParent())
        caches.push_back(std::make_unique<Cache>(node));
    Cache& ofRoot = *root->GetCache();
    Cache& ofLast = *last->GetCache();

    ofRoot.SetColorWithValue(1);
    ofRoot.SetResizeWithValue(1);
    EXPECT_EQ(ofLast.ColorWithValue(), 1);
    EXPECT_EQ(ofLast.ResizeWithValue(), 1);
    ofRoot.DoNotUseValue();
    EXPECT_EQ(ofLast.ColorWithValue(), 0);
    EXPECT_EQ(ofLast.ResizeWithValue(), 0);
    for (VisDataTree* node = root.Get(); node;
         node = node->GetChildren().empty() ? nullptr : node->GetChildren().front())
        VisCacheAccess::SetDiscarded(*node->GetCache(), 1);
    EXPECT_EQ(ofLast.GetVisibleParent(), nullptr);
    ofLast.ResetCache();
    for (const auto& cache : caches)
        cache->GetNode()->SetCache(nullptr);
}
