#ifndef reference_TreeReference_h
#define reference_TreeReference_h

// The tree and its node caches once more: plain, slow and recursive, as the rules read, without any
// of the module's code. What the module does must be the same.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace reference {

constexpr std::uint32_t UNKNOWN = 0xFFFFFFFFU;

struct Node;

struct Cache {
    Node* node = nullptr;
    unsigned char expanded = 1;
    unsigned char discarded = 0;
    unsigned char showLabel = 0;
    long long colorValue = 0;
    long long sizeValue = 0;
    unsigned char resizeWithValue = 0;
    unsigned char colorWithValue = 0;
    int resets = 0;

    void SetNode(Node* newNode);
    void Reset();
    void Assign(const Cache& other);
    void SetColorWithValue(unsigned char value);
    void SetResizeWithValue(unsigned char value);
    void DoNotUseValue();
    Cache* CacheOfParent() const;
    bool IsVisible() const;
    Node* VisibleParent() const;
    std::uint32_t Color(int level, const Node* reference) const;
    std::string Label(int applyTo) const;
};

struct Node {
    std::string label;
    std::string icon;
    unsigned char mergeable = 0;
    unsigned char merged = 0;
    std::vector<Node*> children;
    Node* parent = nullptr;
    Cache* cache = nullptr;
    std::uint32_t depthMemo = UNKNOWN;
    std::uint32_t leafMemo = UNKNOWN;
    int references = 1;

    void ResetUpwards()
    {
        depthMemo = UNKNOWN;
        leafMemo = UNKNOWN;
        if (cache)
            ++cache->resets;
        if (parent)
            parent->ResetUpwards();
    }

    bool IsBelowOrAt(const Node* node) const
    {
        return this == node || (parent && parent->IsBelowOrAt(node));
    }

    void Insert(Node* child, bool reset)
    {
        if (!child || IsBelowOrAt(child))
            return;
        ++child->references;
        child->RemoveParent(true);
        child->parent = this;
        children.push_back(child);
        if (reset)
            ResetUpwards();
    }

    void RemoveParent(bool release)
    {
        if (!parent)
            return;
        auto& siblings = parent->children;
        siblings.erase(std::find(siblings.begin(), siblings.end(), this));
        parent->ResetUpwards();
        parent = nullptr;
        if (release)
            --references;
    }

    void SetCache(Cache* newCache)
    {
        if (newCache == cache)
            return;
        Cache* const old = cache;
        cache = newCache;
        if (old)
            old->SetNode(nullptr);
        if (cache)
            cache->SetNode(this);
    }

    void UpdateMerge(bool merge, bool clear)
    {
        merged = (merge && mergeable != 0) || (!clear && merged != 0) ? 1 : 0;
        for (Node* const child : children)
            child->UpdateMerge(merge, clear);
    }

    std::uint32_t Depth() const { return parent ? 1 + parent->Depth() : 0; }

    std::uint32_t MaxDepth(bool remember)
    {
        if (depthMemo != UNKNOWN)
            return depthMemo;
        std::uint32_t deepest = 0;
        for (Node* const child : children)
            deepest = std::max(deepest, child->MaxDepth(remember));
        if (remember)
            depthMemo = 1 + deepest;
        return 1 + deepest;
    }

    std::uint32_t Leaves(bool remember)
    {
        if (leafMemo != UNKNOWN)
            return leafMemo;
        std::uint32_t sum = children.empty() ? 1 : 0;
        for (Node* const child : children)
            sum += child->Leaves(remember);
        if (remember)
            leafMemo = sum;
        return sum;
    }

    std::uint32_t Nodes() const
    {
        std::uint32_t sum = 1;
        for (const Node* const child : children)
            sum += child->Nodes();
        return sum;
    }

    Node* FirstLeaf() { return children.empty() ? this : children.front()->FirstLeaf(); }
    Node* LastLeaf() { return children.empty() ? this : children.back()->LastLeaf(); }

    Node* ClimbFor(const Node* stop, int step)
    {
        if (this == stop || !parent)
            return this;
        const auto& siblings = parent->children;
        const auto place = std::find(siblings.begin(), siblings.end(), this) - siblings.begin();
        const auto next = place + step;
        if (next >= 0 && next < static_cast<std::ptrdiff_t>(siblings.size()))
            return siblings[static_cast<std::size_t>(next)];
        return parent->ClimbFor(stop, step);
    }

    Node* NextLeaf(const Node* stop)
    {
        return children.empty() ? ClimbFor(stop, 1)->FirstLeaf() : nullptr;
    }
    Node* PreviousLeaf(const Node* stop)
    {
        return children.empty() ? ClimbFor(stop, -1)->LastLeaf() : nullptr;
    }

    std::string LabelFromLeaf() const
    {
        std::string text = label;
        for (const Node* node = parent; node; node = node->parent) {
            if (!node->label.empty())
                text += "/" + node->label;
        }
        return text;
    }

    std::string LabelFromRoot() const
    {
        const std::string above = parent ? parent->LabelFromRoot() : "";
        if (above.empty() || label.empty())
            return above + label;
        return above + "/" + label;
    }

    bool HasIcon() const { return !icon.empty() || (parent && parent->HasIcon()); }
    bool HasParent(const Node* node) const { return parent && parent->IsBelowOrAt(node); }

    /// What the destructor does; the children are held elsewhere too.
    void Die()
    {
        RemoveParent(false);
        for (Node* const child : children) {
            child->parent = nullptr;
            --child->references;
        }
        children.clear();
    }
};

inline void Cache::SetNode(Node* newNode)
{
    if (newNode == node)
        return;
    Node* const former = node;
    node = newNode;
    if (former)
        former->SetCache(nullptr);
    node = newNode;
    Reset();
}

inline void Cache::Reset()
{
    ++resets;
    if (Cache* const above = CacheOfParent())
        above->Reset();
}

inline void Cache::Assign(const Cache& other)
{
    if (this == &other)
        return;
    if (node != other.node)
        node = nullptr;
    expanded = other.expanded;
    discarded = other.discarded;
    showLabel = other.showLabel;
    colorValue = other.colorValue;
    sizeValue = other.sizeValue;
    resizeWithValue = other.resizeWithValue;
    colorWithValue = other.colorWithValue;
}

inline void Cache::SetColorWithValue(unsigned char value)
{
    colorWithValue = value;
    if (!node)
        return;
    for (const Node* const child : node->children) {
        if (child->cache)
            child->cache->SetColorWithValue(value);
    }
}

inline void Cache::SetResizeWithValue(unsigned char value)
{
    resizeWithValue = value;
    if (!node)
        return;
    for (const Node* const child : node->children) {
        if (child->cache)
            child->cache->SetResizeWithValue(value);
    }
}

inline void Cache::DoNotUseValue()
{
    SetResizeWithValue(0);
    SetColorWithValue(0);
    if (!node)
        return;
    for (const Node* const child : node->children) {
        if (child->cache)
            child->cache->DoNotUseValue();
    }
}

inline Cache* Cache::CacheOfParent() const
{
    return node && node->parent ? node->parent->cache : nullptr;
}

inline bool Cache::IsVisible() const
{
    if (discarded != 0)
        return false;
    const Cache* const above = CacheOfParent();
    return !above || above->expanded != 0;
}

inline Node* Cache::VisibleParent() const
{
    if (!node || !node->cache)
        return nullptr;
    const Cache& own = *node->cache;
    const Cache* const above = node->parent ? node->parent->cache : nullptr;
    if (own.discarded == 0 && (!above || above->expanded != 0))
        return node;
    // The same question one node higher, asked of a cache that exists or of none.
    Cache higher;
    higher.node = node->parent;
    return higher.VisibleParent();
}

inline std::uint32_t Cache::Color(int level, const Node* whole) const
{
    const std::uint32_t table[5] = {0x007DA3FFU, 0x0088DEFFU, 0x77D7EDFFU, 0xD1E7F2FFU,
                                    0xF2F5F7FFU};
    if (!whole || !whole->cache || (colorWithValue == 0 && resizeWithValue == 0))
        return table[level % 5];
    const long long part = colorWithValue != 0 ? colorValue : sizeValue;
    const long long of = colorWithValue != 0 ? whole->cache->colorValue : whole->cache->sizeValue;
    double ratio = static_cast<double>(part) / static_cast<double>(of);
    if (ratio != ratio || ratio < 0)
        ratio = 0;
    if (ratio > 1)
        ratio = 1;
    const auto grey = static_cast<std::uint32_t>(ratio * 255.0) & 0xFFU;
    return grey * 0x01010100U + 0xFFU;
}

inline std::string Cache::Label(int applyTo) const
{
    if (!node)
        return "";
    if (applyTo == 0 || (applyTo == 1 && colorWithValue == 0) ||
        (applyTo == 2 && resizeWithValue == 0))
        return node->label;
    const long long value = resizeWithValue != 0 ? sizeValue : colorWithValue != 0 ? colorValue : 0;
    // Only for values that are not negative: digits from the right, a comma after every third.
    const std::string digits = std::to_string(value);
    std::string text;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            text += ",";
        text += digits[i];
    }
    return node->label + " (" + text + ")";
}

}  // namespace reference

#endif
