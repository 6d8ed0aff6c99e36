#include "VisDataTree.h"

#include "private/CacheAccess.h"
#include "private/GuardedNode.h"
#include "private/Prefetch.h"
#include "private/SaturatingCast.h"
#include "private/TreeAccess.h"
#include "private/TreeEpoch.h"
#include "private/TreeWalk.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr unsigned int NOT_COMPUTED = 0xFFFFFFFFU;
constexpr unsigned int LEVEL_COLORS[] = {0x007DA3FFU, 0x0088DEFFU, 0x77D7EDFFU, 0xD1E7F2FFU,
                                         0xF2F5F7FFU};

/// Stamps nodes that, like everything above them, have nothing to reset: no remembered count and no
/// cache. A walk towards the root stops at such a node, which keeps building a deep tree linear.
/// All stamps expire together as soon as anything may have happened that makes one of them wrong.
class QuietStamps {
public:
    bool IsQuiet(unsigned int stamp) const { return stamp == now_ && now_ != EXHAUSTED; }
    unsigned int Stamp()
    {
        inUse_ = true;
        return now_;
    }
    void Expire()
    {
        if (inUse_ && now_ != EXHAUSTED)
            ++now_;
        inUse_ = false;
    }

private:
    static constexpr unsigned int EXHAUSTED = std::numeric_limits<unsigned int>::max();

    unsigned int now_ = 1;
    bool inUse_ = false;
};

QuietStamps quietStamps;

/// How many levels a subtree has.
struct DepthCount {
    static constexpr unsigned int EMPTY = 0;
    static unsigned int Add(unsigned int sum, unsigned int child) { return std::max(sum, child); }
    static unsigned int Finish(const VisDataTree&, unsigned int sum) { return 1 + sum; }
};

/// How many childless nodes a subtree has.
struct LeafCount {
    static constexpr unsigned int EMPTY = 0;
    static unsigned int Add(unsigned int sum, unsigned int child) { return sum + child; }
    static unsigned int Finish(const VisDataTree& node, unsigned int sum)
    {
        return node.GetChildren().empty() ? 1 : sum;
    }
};

/// Computes `Count` over the subtree of `root`, bottom-up. `memoOf` gives a node's remembered
/// result, `remember(node, result)` may store one.
template <class Count, class Node, class MemoOf, class Remember>
unsigned int CountSubtree(Node* root, MemoOf memoOf, Remember remember)
{
    struct Level {
        Node* node;
        std::size_t next;
        unsigned int sum;
    };
    if (memoOf(root) != NOT_COMPUTED)
        return memoOf(root);
    std::vector<Level> levels{{root, 0, Count::EMPTY}};
    for (;;) {
        Level& level = levels.back();
        const auto& children = level.node->GetChildren();
        if (level.next < children.size()) {
            VisPrefetchNode(children, level.next);
            Node* const child = children[level.next++];
            if (!child)
                continue;
            unsigned int result = memoOf(child);
            if (result == NOT_COMPUTED && !child->GetChildren().empty()) {
                levels.push_back({child, 0, Count::EMPTY});
                continue;
            }
            if (result == NOT_COMPUTED) {
                result = Count::Finish(*child, Count::EMPTY);
                remember(child, result);
            }
            level.sum = Count::Add(level.sum, result);
            continue;
        }
        const unsigned int result = Count::Finish(*level.node, level.sum);
        remember(level.node, result);
        levels.pop_back();
        if (levels.empty())
            return result;
        levels.back().sum = Count::Add(levels.back().sum, result);
    }
}

/// The node reached from `node` by always taking the first, or the last, child.
template <class Node>
Node* EndLeaf(Node* node, bool first)
{
    for (;;) {
        const auto& children = node->GetChildren();
        Node* const child =
            children.empty() ? nullptr : (first ? children.front() : children.back());
        if (!child)
            return node;
        node = child;
    }
}

/// The sibling behind `node` (`forward`) or before it, or null.
VisDataTree* Sibling(const VisDataTree& node, bool forward)
{
    const VisDataTree* const parent = node.GetParent();
    if (!parent)
        return nullptr;
    const auto& siblings = parent->GetChildren();
    const auto found = std::find(siblings.begin(), siblings.end(), &node);
    if (found == siblings.end())
        return nullptr;
    if (forward)
        return found + 1 == siblings.end() ? nullptr : *(found + 1);
    return found == siblings.begin() ? nullptr : *(found - 1);
}

VisDataTree* NeighbourLeaf(VisDataTree* leaf, const VisDataTree* stop, bool forward)
{
    if (!leaf->GetChildren().empty())
        return nullptr;
    VisDataTree* node = leaf;
    while (node != stop) {
        if (VisDataTree* const sibling = Sibling(*node, forward)) {
            node = sibling;
            break;
        }
        if (!node->GetParent())
            break;
        node = node->GetParent();
    }
    return EndLeaf(node, /*first=*/forward);
}

/// Gives back the references on the children of dying nodes without nesting one destructor in the
/// other: a node that dies by the walk's own release hands its children over.
class ReleaseWalk {
public:
    using Nodes = std::vector<VisDataTree*>;

    /// Takes the children of `dying` when a walk is releasing that very node, and gives whether it
    /// did. Any other node that dies on the way, in code of a derived class, walks for itself: its
    /// subtree is gone when its destructor ends.
    static bool HandOver(const VisDataTree* dying, Nodes& children)
    {
        if (!active || active->releasing_ != dying)
            return false;
        active->releasing_ = nullptr;
        active->handedOver_ = std::move(children);
        return true;
    }

    static void Run(Nodes nodes)
    {
        ReleaseWalk walk;
        walk.Walk(std::move(nodes));
    }

private:
    struct Level {
        Nodes nodes;
        std::size_t next;
    };

    ReleaseWalk() : outerWalk_(std::exchange(active, this)) {}
    ~ReleaseWalk() { active = outerWalk_; }

    void Walk(Nodes nodes)
    {
        std::vector<Level> outer;
        Level level{std::move(nodes), 0};
        for (;;) {
            if (level.next == level.nodes.size()) {
                if (outer.empty())
                    return;
                level = std::move(outer.back());
                outer.pop_back();
                continue;
            }
            Release(level.nodes[level.next++]);
            if (handedOver_.empty())
                continue;
            Nodes below = std::exchange(handedOver_, {});
            if (level.next == level.nodes.size() || Push(outer, level))
                level = {std::move(below), 0};
            else
                Run(std::move(below));
        }
    }

    void Release(VisDataTree* node)
    {
        if (!node)
            return;
        releasing_ = node;
        node->Release();
        releasing_ = nullptr;
    }

    /// Without memory for one more level the walk nests once instead: a destructor cannot fail.
    static bool Push(std::vector<Level>& outer, Level& level) noexcept
    {
        try {
            outer.push_back(std::move(level));
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    static thread_local ReleaseWalk* active;

    ReleaseWalk* outerWalk_;
    const VisDataTree* releasing_ = nullptr;
    Nodes handedOver_;
};

thread_local ReleaseWalk* ReleaseWalk::active = nullptr;

using FlagSetter = void (VisDataTree::VisDataTreeCache::*)(unsigned char);

/// Calls a virtual setter on the caches of a whole subtree, in pre-order, as far as caches reach.
///
/// The setter of the base class asks for its node's children. While a walk is calling the setter of
/// a cache, that cache's request is noted and served by the walk, so the calls do not nest; any
/// other request starts a walk of its own.
class SpreadWalk {
public:
    static void Request(VisDataTree::VisDataTreeCache* cache, FlagSetter setter,
                        unsigned char value)
    {
        SpreadWalk* const walk = active;
        if (walk && walk->calling_ == cache && walk->setter_ == setter)
            walk->Note(value);
        else
            SpreadWalk(setter).Walk(cache->GetNode(), value);
    }

private:
    struct Level {
        VisDataTree* node;
        std::size_t next;
        unsigned char value;
    };

    explicit SpreadWalk(FlagSetter setter)
        : outerWalk_(std::exchange(active, this)), setter_(setter)
    {
    }
    ~SpreadWalk() { active = outerWalk_; }
    SpreadWalk(const SpreadWalk&) = delete;
    SpreadWalk& operator=(const SpreadWalk&) = delete;

    /// A setter that asks twice has its first request served before its second.
    void Note(unsigned char value)
    {
        VisDataTree* const node = calling_->GetNode();
        const bool earlier = std::exchange(requested_, true);
        const unsigned char earlierValue = std::exchange(value_, value);
        if (earlier)
            SpreadWalk(setter_).Walk(node, earlierValue);
    }

    void Walk(VisDataTree* root, unsigned char value)
    {
        if (!root)
            return;
        std::vector<Level> outer;
        Level level{root, 0, value};
        for (;;) {
            const auto& children = level.node->GetChildren();
            if (level.next >= children.size()) {
                if (outer.empty())
                    return;
                level = outer.back();
                outer.pop_back();
                continue;
            }
            VisPrefetchChild(children, level.next);
            VisDataTree* const child = children[level.next++];
            if (!child || !Call(child->GetCache(), level.value) || child->GetChildren().empty())
                continue;
            if (level.next < level.node->GetChildren().size())
                outer.push_back(level);
            level = {child, 0, value_};
        }
    }

    /// Whether the cache asked for its children.
    bool Call(VisDataTree::VisDataTreeCache* cache, unsigned char value)
    {
        if (!cache)
            return false;
        requested_ = false;
        calling_ = cache;
        (cache->*setter_)(value);
        calling_ = nullptr;
        return requested_;
    }

    static thread_local SpreadWalk* active;

    SpreadWalk* outerWalk_;
    FlagSetter setter_;
    VisDataTree::VisDataTreeCache* calling_ = nullptr;
    bool requested_ = false;
    unsigned char value_ = 0;
};

thread_local SpreadWalk* SpreadWalk::active = nullptr;

/// `value` in decimal with "," before every three digits. Each group is formatted as unsigned, so
/// the groups of a negative value are the 64-bit complements of its remainders.
KUVUnicodeString GroupThousands(long long value)
{
    KUVUnicodeString text;
    bool firstGroup = true;
    do {
        const long long quotient = value / 1000;
        const auto remainder = static_cast<std::uint64_t>(value % 1000);
        const KUVUnicodeString group =
            KUVUnicodeString::FormatUnsigned64(remainder, quotient == 0 ? 1 : 3);
        text = firstGroup ? group : group + "," + text;
        firstGroup = false;
        value = quotient;
    } while (value != 0);
    return text;
}

/// The grey for the share of `value` in `whole`: 0 for none, 255 for all of it and more.
unsigned int GreyOf(long long value, long long whole)
{
    const double ratio = static_cast<double>(value) / static_cast<double>(whole);
    // Written so that not-a-number gives 0 as well.
    if (!(ratio > 0.0))
        return 0;
    return ratio >= 1.0 ? 255U : static_cast<unsigned int>(TruncateToInt(ratio * 255.0));
}

/// Tells the caches from `cache` upwards that something below them may be shown.
void ClearHiddenFrom(VisDataTree::VisDataTreeCache* cache)
{
    for (; cache && VisCacheAccess::HiddenBelow(*cache) != 0; cache = cache->GetCacheOfParent())
        VisCacheAccess::HiddenBelow(*cache) = 0;
}

}  // namespace

std::uint64_t VisTreeEpoch::current = 0;

KUV_IMPLEMENT_CLASS(VisDataTree, KUVBaseUnknown, "VisualizationCommands")

VisDataTree::VisDataTree(void* data, KUVUnicodeString label, KUVUnicodeString iconName)
    : data_(data), label_(std::move(label)), iconName_(std::move(iconName))
{
}

VisDataTree::~VisDataTree()
{
    if (watched_ != 0) {
        VisGuardedNode::NodeIsGone(this);
        VisGuardedNodeStack::NodeIsGone(this);
    }
    RemoveParent(/*release=*/0);
    // A cache that belongs to a layout outlives the node, and must not lead back to it.
    if (layoutCache_ != 0 && cache_ && cache_->node_ == this)
        cache_->ForgetNode();
    ReleaseChildren();
    data_ = nullptr;
}

void VisDataTree::ReleaseChildren()
{
    if (children_.empty())
        return;
    VisTreeEpoch::Advance();
    for (VisDataTree* const child : children_) {
        if (child && child->parent_ == this)
            child->parent_ = nullptr;
    }
    if (!ReleaseWalk::HandOver(this, children_))
        ReleaseWalk::Run(std::move(children_));
    children_.clear();
}

// ---- structure

void VisDataTree::ResetCache()
{
    bool anyCache = false;
    for (VisDataTree* node = this; node && !quietStamps.IsQuiet(node->quietStamp_);
         node = node->parent_) {
        node->maxDepth_ = NOT_COMPUTED;
        node->leafCount_ = NOT_COMPUTED;
        node->quietStamp_ = quietStamps.Stamp();
        if (VisDataTreeCache* const cache = node->cache_) {
            anyCache = true;
            cache->hiddenBelow_ = 0;
            cache->childOrder_ = {};
            cache->InternalResetCache();
        }
    }
    if (anyCache)
        quietStamps.Expire();
}

void VisDataTree::InsertChild(VisDataTree* child, unsigned char resetCaches)
{
    if (!child || child == this)
        return;
    if (!child->children_.empty() && HasNodeAsParent(child))
        return;
    if (children_.size() == children_.capacity())
        children_.reserve(std::max<std::size_t>(1, 2 * children_.size()));
    VisTreeEpoch::Advance();
    child->AddRef();
    child->RemoveParent(/*release=*/1);
    child->parent_ = this;
    children_.push_back(child);
    if (resetCaches != 0) {
        ResetCache();
        return;
    }
    // What is remembered above may be out of date now, which no stamp below may hide.
    if (!quietStamps.IsQuiet(quietStamp_))
        quietStamps.Expire();
    ClearHiddenFrom(cache_);
    VisCacheAccess::ForgetChildOrder(this);
}

void VisDataTree::RemoveParent(unsigned char release)
{
    if (!parent_)
        return;
    VisDataTree* const former = parent_;
    const auto found = std::find(former->children_.begin(), former->children_.end(), this);
    if (found == former->children_.end()) {
        parent_ = nullptr;
        return;
    }
    former->children_.erase(found);
    VisTreeEpoch::Advance();
    former->ResetCache();
    parent_ = nullptr;
    if (release != 0)
        Release();
}

void VisDataTree::SetCache(VisDataTreeCache* cache)
{
    if (cache == cache_)
        return;
    VisTreeEpoch::Advance();
    layoutCache_ = 0;
    VisDataTreeCache* const former = std::exchange(cache_, cache);
    if (cache_) {
        quietStamps.Expire();
        ClearHiddenFrom(parent_ ? parent_->cache_ : nullptr);
        VisCacheAccess::ForgetChildOrder(parent_);
        VisCacheAccess::ForgetChildOrder(this);
    }
    // Kept in this order: the former cache answers by clearing cache_ again, so replacing a cache
    // without detaching it first leaves the node with none.
    if (former)
        former->SetNode(nullptr);
    if (cache_)
        cache_->SetNode(this);
}

void VisTreeAccess::LinkNewCache(VisDataTree& node, VisDataTree::VisDataTreeCache& cache)
{
    VisTreeEpoch::Advance();
    quietStamps.Expire();
    node.cache_ = &cache;
    cache.node_ = &node;
    MarkLayoutCache(node);
    cache.InternalResetCache();
}

void VisDataTree::UpdateMerge(unsigned char merge, unsigned char clear)
{
    VisPreOrderWalk<VisDataTree> walk(this);
    while (VisDataTree* const node = walk.Next()) {
        const bool merged =
            (merge != 0 && node->mergeable_ != 0) || (clear == 0 && node->merged_ != 0);
        node->merged_ = merged ? 1 : 0;
    }
}

// ---- counts

unsigned int VisDataTree::ComputeDepth() const
{
    unsigned int depth = 0;
    for (const VisDataTree* node = parent_; node; node = node->parent_)
        ++depth;
    return depth;
}

unsigned int VisDataTree::ComputeMaxDepth()
{
    if (maxDepth_ == NOT_COMPUTED)
        quietStamps.Expire();
    return CountSubtree<DepthCount>(
        this, [](const VisDataTree* node) { return node->maxDepth_; },
        [](VisDataTree* node, unsigned int result) { node->maxDepth_ = result; });
}

unsigned int VisDataTree::ComputeMaxDepth() const
{
    return CountSubtree<DepthCount>(
        this, [](const VisDataTree* node) { return node->maxDepth_; },
        [](const VisDataTree*, unsigned int) {});
}

unsigned int VisDataTree::ComputeNumberOfLeaves()
{
    if (leafCount_ == NOT_COMPUTED)
        quietStamps.Expire();
    return CountSubtree<LeafCount>(
        this, [](const VisDataTree* node) { return node->leafCount_; },
        [](VisDataTree* node, unsigned int result) { node->leafCount_ = result; });
}

unsigned int VisDataTree::ComputeNumberOfLeaves() const
{
    return CountSubtree<LeafCount>(
        this, [](const VisDataTree* node) { return node->leafCount_; },
        [](const VisDataTree*, unsigned int) {});
}

unsigned int VisDataTree::ComputeNumberOfNodes() const
{
    unsigned int count = 0;
    VisPreOrderWalk<const VisDataTree> walk(this);
    while (walk.Next())
        ++count;
    return count;
}

// ---- leaves

const VisDataTree* VisDataTree::GetFirstLeaf() const { return EndLeaf(this, /*first=*/true); }

VisDataTree* VisDataTree::GetFirstLeaf() { return EndLeaf(this, /*first=*/true); }

const VisDataTree* VisDataTree::GetLastLeaf() const { return EndLeaf(this, /*first=*/false); }

VisDataTree* VisDataTree::GetLastLeaf() { return EndLeaf(this, /*first=*/false); }

VisDataTree* VisDataTree::NextLeafNodeInHierarchy(const VisDataTree* stop)
{
    return NeighbourLeaf(this, stop, /*forward=*/true);
}

VisDataTree* VisDataTree::PreviousLeafNodeInHierarchy(const VisDataTree* stop)
{
    return NeighbourLeaf(this, stop, /*forward=*/false);
}

// ---- ancestors

KUVUnicodeString VisDataTree::ComputeLabelUptoRoot(unsigned char leafFirst)
{
    const KUVUnicodeString separator("/");
    KUVUnicodeString text;
    if (leafFirst != 0) {
        text = label_;
        for (const VisDataTree* node = parent_; node; node = node->parent_) {
            if (node->label_.IsEmpty())
                continue;
            text += separator;
            text += node->label_;
        }
        return text;
    }
    std::vector<const KUVUnicodeString*> labels;
    for (const VisDataTree* node = this; node; node = node->parent_) {
        if (!node->label_.IsEmpty())
            labels.push_back(&node->label_);
    }
    for (auto label = labels.rbegin(); label != labels.rend(); ++label) {
        if (label != labels.rbegin())
            text += separator;
        text += **label;
    }
    return text;
}

unsigned char VisDataTree::HasIconInHierarchy() const
{
    for (const VisDataTree* node = this; node; node = node->parent_) {
        if (!node->iconName_.IsEmpty())
            return 1;
    }
    return 0;
}

unsigned char VisDataTree::HasNodeAsParent(const VisDataTree* node) const
{
    if (!node)
        return 0;
    for (const VisDataTree* ancestor = parent_; ancestor; ancestor = ancestor->parent_) {
        if (ancestor == node)
            return 1;
    }
    return 0;
}

// ---- cache: construction and copies

using Cache = VisDataTree::VisDataTreeCache;

const unsigned char Cache::MAX_LEVEL_OF_COLORS =
    static_cast<unsigned char>(std::size(LEVEL_COLORS));

Cache::VisDataTreeCache(VisDataTree* node) : node_(node)
{
    if (node)
        node->SetCache(this);
}

Cache::VisDataTreeCache(VisDataTreeCache& other) { *this = other; }

Cache& Cache::operator=(VisDataTreeCache& other)
{
    if (this == &other)
        return *this;
    VisTreeEpoch::Advance();
    // The flags copied here may show a node that those above count as hidden.
    ClearHiddenFrom(GetCacheOfParent());
    VisCacheAccess::ForgetChildOrder(node_ ? node_->parent_ : nullptr);
    if (node_ != other.node_)
        ForgetNode();
    expanded_ = other.expanded_;
    discarded_ = other.discarded_;
    showLabel_ = other.showLabel_;
    colorValue_ = other.colorValue_;
    sizeValue_ = other.sizeValue_;
    resizeWithValue_ = other.resizeWithValue_;
    colorWithValue_ = other.colorWithValue_;
    return *this;
}

void Cache::ForgetNode()
{
    // The node keeps pointing here, but must no longer trust the cache to outlive the link.
    if (linkedByLayout_ != 0 && node_)
        node_->layoutCache_ = 0;
    linkedByLayout_ = 0;
    node_ = nullptr;
}

Cache::~VisDataTreeCache()
{
    VisTreeEpoch::Advance();
    node_ = nullptr;
}

Cache* Cache::Clone() { return new (std::nothrow) VisDataTreeCache(*this); }

// ---- cache: links and resets

void Cache::InternalResetCache() {}

void Cache::ResetCache()
{
    for (VisDataTreeCache* cache = this; cache; cache = cache->GetCacheOfParent()) {
        cache->hiddenBelow_ = 0;
        cache->childOrder_ = {};
        cache->InternalResetCache();
    }
}

void Cache::SetNode(VisDataTree* node)
{
    if (node == node_)
        return;
    linkedByLayout_ = 0;
    if (VisDataTree* const former = std::exchange(node_, node)) {
        former->SetCache(nullptr);
        // The former node may have answered by clearing the link.
        node_ = node;
    }
    ResetCache();
}

Cache* Cache::GetCacheOfParent() const
{
    const VisDataTree* const parent = node_ ? node_->parent_ : nullptr;
    return parent ? parent->cache_ : nullptr;
}

// ---- cache: values

void Cache::SetColorValue(long long value) { colorValue_ = value; }

void Cache::SetSizeValue(long long value) { sizeValue_ = value; }

void Cache::SpreadToChildren(void (VisDataTreeCache::*setter)(unsigned char), unsigned char value)
{
    SpreadWalk::Request(this, setter, value);
}

void Cache::SetColorWithValue(unsigned char colorWithValue)
{
    colorWithValue_ = colorWithValue;
    SpreadToChildren(&VisDataTreeCache::SetColorWithValue, colorWithValue);
}

void Cache::SetResizeWithValue(unsigned char resizeWithValue)
{
    resizeWithValue_ = resizeWithValue;
    SpreadToChildren(&VisDataTreeCache::SetResizeWithValue, resizeWithValue);
}

void Cache::DoNotUseValue()
{
    SetResizeWithValue(0);
    SetColorWithValue(0);
    if (!node_)
        return;
    // The setters reach the whole subtree by themselves, unless a derived class keeps one from
    // spreading: only what they left behind is set again.
    VisPreOrderWalk<VisDataTree> walk(node_);
    walk.Next();
    while (const VisDataTree* const node = walk.Next()) {
        VisDataTreeCache* const cache = node->cache_;
        if (!cache) {
            walk.SkipChildren();
            continue;
        }
        if (cache->resizeWithValue_ != 0)
            cache->SetResizeWithValue(0);
        if (cache->colorWithValue_ != 0)
            cache->SetColorWithValue(0);
    }
}

// ---- cache: what is shown

unsigned char Cache::IsVisible() const
{
    if (discarded_ != 0)
        return 0;
    const VisDataTreeCache* const parent = GetCacheOfParent();
    return parent ? parent->expanded_ : 1;
}

VisDataTree* Cache::GetVisibleParent() const
{
    for (VisDataTree* node = node_; node && node->cache_; node = node->parent_) {
        const VisDataTreeCache* const parent = node->parent_ ? node->parent_->cache_ : nullptr;
        if (node->cache_->discarded_ == 0 && (!parent || parent->expanded_ != 0))
            return node;
    }
    return nullptr;
}

unsigned int Cache::GetRGBAColor(int level, VisDataTree* reference) const
{
    const VisDataTreeCache* const whole = reference ? reference->cache_ : nullptr;
    if (!whole || (colorWithValue_ == 0 && resizeWithValue_ == 0)) {
        const int count = MAX_LEVEL_OF_COLORS;
        const int index = level % count;
        // Levels count from 0; a negative one goes on backwards through the colours.
        return LEVEL_COLORS[index < 0 ? index + count : index];
    }
    const unsigned int grey = colorWithValue_ != 0 ? GreyOf(colorValue_, whole->colorValue_)
                                                   : GreyOf(sizeValue_, whole->sizeValue_);
    return (grey << 24U) | (grey << 16U) | (grey << 8U) | 0xFFU;
}

KUVUnicodeString Cache::GetLabelToDisplay(VisDataTree_ApplyValueTo applyTo) const
{
    if (!node_)
        return {};
    const bool plain = applyTo == VisDataTree_ApplyValueToNone ||
                       (applyTo == VisDataTree_ApplyValueToColor && colorWithValue_ == 0) ||
                       (applyTo == VisDataTree_ApplyValueToSize && resizeWithValue_ == 0);
    if (plain)
        return node_->label_;
    // The switches alone decide which value is shown, whatever was asked for.
    long long value = 0;
    if (resizeWithValue_ != 0)
        value = sizeValue_;
    else if (colorWithValue_ != 0)
        value = colorValue_;
    return node_->label_ + " (" + GroupThousands(value) + ")";
}
