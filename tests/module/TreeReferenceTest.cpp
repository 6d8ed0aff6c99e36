// Random trees and random operations on them, compared with the reference after every step.

#include "reference/TreeReference.h"
#include "Properties.h"
#include "TreeBuilding.h"
#include "private/CacheAccess.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr std::size_t MOST_NODES = 24;
constexpr std::size_t CACHES = 16;
const char* const LABELS[] = {"", "a", "bc", "d"};

class CountingCache : public VisDataTree::VisDataTreeCache {
public:
    CountingCache() : VisDataTreeCache(nullptr) {}
    CountingCache(const CountingCache&) = delete;
    CountingCache& operator=(const CountingCache&) = delete;
    void InternalResetCache() override { ++resets; }
    void CopyFrom(CountingCache& other) { VisDataTreeCache::operator=(other); }
    int resets = 0;
};

/// One step: an operation and what it is applied to; every number is taken modulo what there is.
struct Step {
    unsigned int operation;
    unsigned int one;
    unsigned int other;
    unsigned int value;
};

std::ostream& operator<<(std::ostream& stream, const Step& step)
{
    return stream << "{" << step.operation << ", " << step.one << ", " << step.other << ", "
                  << step.value << "}";
}

/// The module's nodes and caches beside those of the reference.
class Pair {
public:
    explicit Pair(std::size_t nodes) : nodes_(nodes)
    {
        for (std::size_t i = 0; i < nodes; ++i)
            Renew(i);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;
    ~Pair()
    {
        for (CountingCache& cache : caches_) {
            if (cache.GetNode())
                cache.GetNode()->SetCache(nullptr);
        }
        for (Both& both : nodes_) {
            // Those that `RemoveParent(0)` passed on, and the one from the beginning.
            for (; both.extra > 0; --both.extra)
                both.node->Release();
        }
    }

    void Apply(const Step& step);
    void Compare();

private:
    struct Both {
        trees::NodeRef node;
        std::unique_ptr<reference::Node> expected;
        int extra = 0;
    };

    void Renew(std::size_t i)
    {
        const char* const label = LABELS[i % std::size(LABELS)];
        const char* const icon = i % 5 == 3 ? "icon" : "";
        nodes_[i].node = trees::MakeNode(label, icon);
        nodes_[i].expected = std::make_unique<reference::Node>();
        nodes_[i].expected->label = label;
        nodes_[i].expected->icon = icon;
        nodes_[i].extra = 0;
    }
    void ApplyToNodes(const Step& step, Both& one, Both& other);
    void ApplyToCaches(const Step& step, std::size_t cache, std::size_t from);
    void Kill(std::size_t i);
    void CompareNode(const Both& both, const Both& other);
    void CompareCache(std::size_t i, const Both& other);
    std::size_t IndexOf(const VisDataTree* node) const
    {
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            if (nodes_[i].node.Get() == node)
                return i;
        }
        return nodes_.size();
    }
    std::size_t IndexOf(const reference::Node* node) const
    {
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            if (nodes_[i].expected.get() == node)
                return i;
        }
        return nodes_.size();
    }

    std::vector<Both> nodes_;
    std::array<CountingCache, CACHES> caches_;
    std::array<reference::Cache, CACHES> expectedCaches_;
};

void Pair::ApplyToNodes(const Step& step, Both& one, Both& other)
{
    VisDataTree& node = *one.node.Get();
    reference::Node& expected = *one.expected;
    const unsigned int value = step.value;
    switch (step.operation % 8) {
    case 0:
        node.InsertChild(other.node.Get(), value % 2);
        expected.Insert(other.expected.get(), value % 2 != 0);
        break;
    case 1:
        if (value % 2 == 0 && node.GetParent())
            ++one.extra;
        node.RemoveParent(value % 2);
        expected.RemoveParent(value % 2 != 0);
        break;
    case 2:
        node.UpdateMerge(value % 2, value / 2 % 2);
        expected.UpdateMerge(value % 2 != 0, value / 2 % 2 != 0);
        break;
    case 3:
        RC_ASSERT(node.ComputeMaxDepth() == expected.MaxDepth(/*remember=*/true));
        break;
    case 4:
        RC_ASSERT(node.ComputeNumberOfLeaves() == expected.Leaves(/*remember=*/true));
        break;
    case 5:
        node.SetIsMergeable(value % 2);
        expected.mergeable = value % 2;
        node.SetIsMerged(value / 2 % 2);
        expected.merged = value / 2 % 2;
        break;
    case 6: {
        const std::size_t cache = value % (CACHES + 2);
        // A cache is detached from one node before it is given to another.
        if (cache < CACHES && caches_[cache].GetNode() && caches_[cache].GetNode() != &node)
            break;
        node.SetCache(cache < CACHES ? &caches_[cache] : nullptr);
        expected.SetCache(cache < CACHES ? &expectedCaches_[cache] : nullptr);
        break;
    }
    default:
        Kill(IndexOf(&node));
        break;
    }
}

void Pair::Kill(std::size_t i)
{
    Both& both = nodes_[i];
    // A cache is detached before its node dies.
    both.node->SetCache(nullptr);
    both.expected->SetCache(nullptr);
    for (std::size_t k = 0; k < CACHES; ++k) {
        RC_ASSERT(caches_[k].GetNode() != both.node.Get());
    }
    if (both.node->GetParent()) {
        both.node->RemoveParent(1);
        both.expected->RemoveParent(true);
    }
    for (; both.extra > 0; --both.extra)
        both.node->Release();
    RC_ASSERT(both.node->GetReferenceCount() == 1U);
    both.expected->Die();
    Renew(i);
}

void Pair::ApplyToCaches(const Step& step, std::size_t cache, std::size_t from)
{
    CountingCache& actual = caches_[cache];
    reference::Cache& expected = expectedCaches_[cache];
    const auto flag = static_cast<unsigned char>(step.value % 3);
    const long long value = step.value % 5000;
    switch (step.operation % 8) {
    case 0:
        actual.SetColorWithValue(flag);
        expected.SetColorWithValue(flag);
        break;
    case 1:
        actual.SetResizeWithValue(flag);
        expected.SetResizeWithValue(flag);
        break;
    case 2:
        actual.DoNotUseValue();
        expected.DoNotUseValue();
        break;
    case 3:
        actual.SetColorValue(value);
        expected.colorValue = value;
        break;
    case 4:
        actual.SetSizeValue(value);
        expected.sizeValue = value;
        break;
    case 5:
        actual.ResetCache();
        expected.Reset();
        break;
    case 6:
        VisCacheAccess::SetExpanded(actual, flag);
        expected.expanded = flag;
        VisCacheAccess::SetDiscarded(actual, static_cast<unsigned char>(step.value / 3 % 2));
        expected.discarded = static_cast<unsigned char>(step.value / 3 % 2);
        break;
    default:
        // Not over a linked cache: its node would go on pointing at a cache that forgot it.
        if (actual.GetNode())
            break;
        actual.CopyFrom(caches_[from]);
        expected.Assign(expectedCaches_[from]);
        break;
    }
}

void Pair::Apply(const Step& step)
{
    Both& one = nodes_[step.one % nodes_.size()];
    Both& other = nodes_[step.other % nodes_.size()];
    if (step.operation % 3 == 2)
        ApplyToCaches({step.operation / 3, step.one, step.other, step.value}, step.one % CACHES,
                      step.other % CACHES);
    else
        ApplyToNodes({step.operation / 3, step.one, step.other, step.value}, one, other);
}

void Pair::CompareNode(const Both& both, const Both& other)
{
    VisDataTree& node = *both.node.Get();
    const VisDataTree& constant = node;
    reference::Node& expected = *both.expected;
    RC_ASSERT(IndexOf(node.GetParent()) == IndexOf(expected.parent));
    RC_ASSERT(node.GetChildren().size() == expected.children.size());
    for (std::size_t i = 0; i < expected.children.size(); ++i)
        RC_ASSERT(IndexOf(node.GetChildren()[i]) == IndexOf(expected.children[i]));
    RC_ASSERT(node.GetReferenceCount() == static_cast<unsigned int>(expected.references));
    RC_ASSERT(node.IsMerged() == expected.merged);
    RC_ASSERT((node.GetCache() == nullptr) == (expected.cache == nullptr));
    // The const forms show what is remembered and change nothing.
    RC_ASSERT(constant.ComputeMaxDepth() == expected.MaxDepth(false));
    RC_ASSERT(constant.ComputeNumberOfLeaves() == expected.Leaves(false));
    RC_ASSERT(node.ComputeDepth() == expected.Depth());
    RC_ASSERT(node.ComputeNumberOfNodes() == expected.Nodes());
    RC_ASSERT(IndexOf(node.GetFirstLeaf()) == IndexOf(expected.FirstLeaf()));
    RC_ASSERT(IndexOf(node.GetLastLeaf()) == IndexOf(expected.LastLeaf()));
    RC_ASSERT(IndexOf(node.NextLeafNodeInHierarchy(other.node.Get())) ==
              IndexOf(expected.NextLeaf(other.expected.get())));
    RC_ASSERT(IndexOf(node.PreviousLeafNodeInHierarchy(other.node.Get())) ==
              IndexOf(expected.PreviousLeaf(other.expected.get())));
    RC_ASSERT(std::string(node.ComputeLabelUptoRoot(1).GetUtf8()) == expected.LabelFromLeaf());
    RC_ASSERT(std::string(node.ComputeLabelUptoRoot(0).GetUtf8()) == expected.LabelFromRoot());
    RC_ASSERT((node.HasIconInHierarchy() != 0) == expected.HasIcon());
    RC_ASSERT((node.HasNodeAsParent(other.node.Get()) != 0) ==
              expected.HasParent(other.expected.get()));
}

void Pair::CompareCache(std::size_t i, const Both& other)
{
    const CountingCache& cache = caches_[i];
    const reference::Cache& expected = expectedCaches_[i];
    RC_ASSERT(IndexOf(cache.GetNode()) == IndexOf(expected.node));
    RC_ASSERT(cache.resets == expected.resets);
    RC_ASSERT(cache.ColorWithValue() == expected.colorWithValue);
    RC_ASSERT(cache.ResizeWithValue() == expected.resizeWithValue);
    RC_ASSERT(cache.GetColorValue() == expected.colorValue);
    RC_ASSERT(cache.GetSizeValue() == expected.sizeValue);
    RC_ASSERT((cache.IsVisible() != 0) == expected.IsVisible());
    RC_ASSERT(IndexOf(cache.GetVisibleParent()) == IndexOf(expected.VisibleParent()));
    RC_ASSERT(cache.GetRGBAColor(7, other.node.Get()) == expected.Color(7, other.expected.get()));
    for (int applyTo = 0; applyTo < 4; ++applyTo) {
        const auto label = cache.GetLabelToDisplay(static_cast<VisDataTree_ApplyValueTo>(applyTo));
        RC_ASSERT(std::string(label.GetUtf8()) == expected.Label(applyTo));
    }
}

void Pair::Compare()
{
    for (std::size_t i = 0; i < nodes_.size(); ++i)
        CompareNode(nodes_[i], nodes_[(i * 7 + 3) % nodes_.size()]);
    for (std::size_t i = 0; i < CACHES; ++i)
        CompareCache(i, nodes_[i % nodes_.size()]);
}

rc::Gen<std::vector<Step>> Steps()
{
    const auto number = rc::gen::inRange(0U, 10000U);
    return rc::gen::container<std::vector<Step>>(
        rc::gen::construct<Step>(number, number, number, number));
}

}  // namespace

TEST(VisDataTreeReference, RandomTreesAgreeWithTheReferenceAfterEveryStep)
{
    properties::Check("random trees agree with the reference", 1000, [] {
        const auto nodes = *rc::gen::inRange<std::size_t>(1, MOST_NODES);
        const auto parents =
            *rc::gen::container<std::vector<unsigned int>>(nodes, rc::gen::inRange(0U, 10000U));
        const auto steps = *Steps();
        Pair pair(nodes);
        // Every node below an earlier one, then the steps.
        for (unsigned int i = 1; i < nodes; ++i)
            pair.Apply({0, parents[i] % i, i, parents[i] / 7});
        pair.Compare();
        for (const Step& step : steps) {
            pair.Apply(step);
            pair.Compare();
        }
    });
}
