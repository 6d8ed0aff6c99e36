#ifndef VisDataTree_h
#define VisDataTree_h

// The weighted tree that every layout draws, and what a display knows about each of its nodes.
//
// Trees, caches and layouts belong to the interaction thread. Walks over whole trees keep their own
// stack, so a tree may be as deep as memory allows; they throw `std::bad_alloc` when that stack
// cannot grow and leave the tree as it was.

#include "KUVObjectModel.h"
#include "KUVStringsMath.h"
#include "VisExport.h"

#include <vector>

enum class VisChildOrder : unsigned char;

/// Which value a label shows behind its text.
enum VisDataTree_ApplyValueTo : int {
    VisDataTree_ApplyValueToNone = 0,
    VisDataTree_ApplyValueToColor = 1,
    VisDataTree_ApplyValueToSize = 2
};

/// A node of the tree: a label, an icon, three flags, what it stands for, its children in order.
///
/// Nodes are reference counted. A new node has one reference, which belongs to whoever made it; a
/// parent holds one on each child. Neither the data pointer nor the cache is ever owned by a node:
/// whoever made a cache detaches it (`SetCache(nullptr)`) before the node or the cache dies.
class VIS_EXPORT VisDataTree : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    class VisDataTreeCache;

    VisDataTree(void* data, KUVUnicodeString label, KUVUnicodeString iconName);
    VisDataTree(const VisDataTree&) = delete;
    VisDataTree& operator=(const VisDataTree&) = delete;
    /// Leaves the parent, then gives the children's references back in order. Linear in the nodes
    /// that die with this one, whatever the depth.
    ~VisDataTree() override;

    // ---- what the node carries

    /// The scene object that the node stands for. Never owned.
    void* GetData() const { return data_; }
    void SetData(void* data) { data_ = data; }
    const KUVUnicodeString& GetLabel() const { return label_; }
    void SetLabel(const KUVUnicodeString& label) { label_ = label; }
    /// Empty for no icon.
    const KUVUnicodeString& GetIconName() const { return iconName_; }
    void SetIconName(const KUVUnicodeString& iconName) { iconName_ = iconName; }
    /// Non-zero when the node stands for a leaf object of the scene.
    unsigned char IsLeafObject() const { return leafObject_; }
    void SetIsLeafObject(unsigned char leafObject) { leafObject_ = leafObject; }
    /// Non-zero when `UpdateMerge` may merge the node.
    unsigned char IsMergeable() const { return mergeable_; }
    void SetIsMergeable(unsigned char mergeable) { mergeable_ = mergeable; }
    /// Keyboard navigation passes through merged nodes. Childless nodes must not stay merged.
    unsigned char IsMerged() const { return merged_; }
    void SetIsMerged(unsigned char merged) { merged_ = merged; }

    // ---- structure

    const VisDataTree* GetParent() const { return parent_; }
    VisDataTree* GetParent() { return parent_; }
    /// The children in order. Whoever changes the vector directly also keeps the parents'
    /// references, the children's parent links and the remembered counts right, and draws before
    /// the next hit test; a null entry is skipped by every walk.
    const std::vector<VisDataTree*>& GetChildren() const { return children_; }
    std::vector<VisDataTree*>& GetChildren() { return children_; }
    VisDataTreeCache* GetCache() const { return cache_; }

    /// Appends `child` as the last child, taking a reference, and takes it from its former parent
    /// (which may be this node) if it has one.
    ///
    /// Null is ignored, and so is a child that is this node or one of its ancestors. With
    /// `resetCaches` zero the remembered counts of the ancestors are left as they were, even though
    /// they are now out of date; `RemoveParent` has no such choice and always forgets them. Throws
    /// `std::bad_alloc`, with nothing changed, when the vector cannot grow. A childless child costs
    /// constant time when the node's ancestors remember nothing and have no caches.
    void InsertChild(VisDataTree* child, unsigned char resetCaches);

    /// Leaves the parent: the children behind move up by one, and the former parent and its
    /// ancestors forget their counts and reset their caches. With `release` non-zero the parent's
    /// reference is given back, which may destroy the node; with zero it passes to the caller.
    ///
    /// Without parent nothing happens. A node that is missing from its parent's children only
    /// forgets the parent. Costs the position among the siblings, plus the depth.
    void RemoveParent(unsigned char release);

    /// Links the node and `cache` in both directions, or detaches the present cache with null.
    ///
    /// Detach the present cache before setting another: replacing one directly leaves the node
    /// with none and both caches unlinked. Linking resets `cache` and the caches above it.
    void SetCache(VisDataTreeCache* cache);

    /// For this node and all below it: merged when `merge` is set and the node is mergeable; else
    /// `clear` resets the flag and a zero `clear` keeps it.
    void UpdateMerge(unsigned char merge, unsigned char clear);

    // ---- counts (unsigned, wrapping at 2^32)

    /// Number of ancestors: 0 for a root.
    unsigned int ComputeDepth() const;
    /// Number of levels of the subtree: 1 for a leaf. Remembered in every node visited; the const
    /// form uses what is remembered and remembers nothing.
    unsigned int ComputeMaxDepth();
    unsigned int ComputeMaxDepth() const;
    /// Number of childless nodes of the subtree, at least 1. Remembered like the maximum depth.
    unsigned int ComputeNumberOfLeaves();
    unsigned int ComputeNumberOfLeaves() const;
    /// Number of nodes of the subtree, this one included. Counted anew on every call.
    unsigned int ComputeNumberOfNodes() const;

    // ---- leaves

    /// The node reached through first (last) children only; a childless node itself. Never null.
    const VisDataTree* GetFirstLeaf() const;
    VisDataTree* GetFirstLeaf();
    const VisDataTree* GetLastLeaf() const;
    VisDataTree* GetLastLeaf();
    /// The leaf that follows (precedes) this one below `stop`, beginning again at the other end
    /// after the last. With a null `stop`, or one that is no ancestor, the whole tree counts.
    /// Null when this node has children.
    VisDataTree* NextLeafNodeInHierarchy(const VisDataTree* stop);
    VisDataTree* PreviousLeafNodeInHierarchy(const VisDataTree* stop);

    // ---- ancestors

    /// The labels between this node and the root, separated by "/". Ancestors without a label are
    /// left out.
    ///
    /// With `leafFirst` non-zero the text begins with this node's own label, even an empty one, and
    /// ends with the root's; with zero it reads from the root down and leaves an empty own label
    /// out as well.
    KUVUnicodeString ComputeLabelUptoRoot(unsigned char leafFirst);
    /// 1 when this node or an ancestor names an icon.
    unsigned char HasIconInHierarchy() const;
    /// 1 when `node` is an ancestor of this node; a node is not its own ancestor. Null gives 0.
    unsigned char HasNodeAsParent(const VisDataTree* node) const;

private:
    friend struct VisTreeAccess;

    void ResetCache();
    void ReleaseChildren();

    void* data_;
    KUVUnicodeString label_;
    KUVUnicodeString iconName_;
    unsigned char mergeable_ = 0;
    unsigned char merged_ = 0;
    std::vector<VisDataTree*> children_;
    VisDataTree* parent_ = nullptr;
    VisDataTreeCache* cache_ = nullptr;
    unsigned int maxDepth_ = 0xFFFFFFFFU;
    unsigned int leafCount_ = 0xFFFFFFFFU;
    unsigned char leafObject_ = 0;
    // How many guarded pointers watch the node; the destructor of a watched node empties them.
    unsigned char watched_ = 0;
    // The cache belongs to a layout, which promises that it lives while it is linked.
    unsigned char layoutCache_ = 0;
    // When this node and everything above it was last known to have nothing to reset.
    unsigned int quietStamp_ = 0;
};

/// What a display needs to know about one node: what is shown of it, two values and whether they
/// decide its size and colour. Layouts derive their own caches from it.
///
/// Owned by whoever made it (the layouts, for the trees that they show). Made linked to a node, or
/// linked later through `VisDataTree::SetCache`; detach it before deleting it.
class VIS_EXPORT VisDataTree::VisDataTreeCache {
public:
    /// Number of colours by level.
    static const unsigned char MAX_LEVEL_OF_COLORS;

    /// Links the cache and `node`, unless null. The node should have no cache.
    explicit VisDataTreeCache(VisDataTree* node);
    /// Copies flags and values. The copy belongs to no node.
    VisDataTreeCache(VisDataTreeCache& other);
    /// Copies flags and values. When the two caches belong to different nodes, this one forgets
    /// its node, which is not told and keeps pointing here.
    VisDataTreeCache& operator=(VisDataTreeCache& other);
    /// The node is not told.
    virtual ~VisDataTreeCache();

protected:
    /// Drops what was computed for the node. Called whenever the subtree below it changes.
    virtual void InternalResetCache();

public:
    /// The node's label; with a value behind it, thousands grouped, when `applyTo` asks for the
    /// colour (size) value and the node is coloured (sized) by its value. The value shown is the
    /// size value if the node is sized by value, else the colour value. Empty without a node.
    virtual KUVUnicodeString GetLabelToDisplay(VisDataTree_ApplyValueTo applyTo) const;
    virtual void SetColorValue(long long value);
    /// Stores the flag, then calls the same operation on the caches of the node's children, so
    /// that the whole subtree follows as far as caches reach.
    virtual void SetColorWithValue(unsigned char colorWithValue);
    virtual void SetSizeValue(long long value);
    /// As `SetColorWithValue`.
    virtual void SetResizeWithValue(unsigned char resizeWithValue);
    /// A copy that belongs to no node, owned by the caller, or null when memory runs out. A class
    /// that does not override it gives a plain node cache.
    virtual VisDataTreeCache* Clone();

    VisDataTree* GetNode() const { return node_; }
    /// Non-zero when the node's children are shown.
    unsigned char IsExpanded() const { return expanded_; }
    /// Non-zero when the node is hidden.
    unsigned char IsDiscarded() const { return discarded_; }
    unsigned char GetShowLabel() const { return showLabel_; }
    void SetShowLabel(unsigned char showLabel) { showLabel_ = showLabel; }
    long long GetColorValue() const { return colorValue_; }
    long long GetSizeValue() const { return sizeValue_; }
    unsigned char ResizeWithValue() const { return resizeWithValue_; }
    unsigned char ColorWithValue() const { return colorWithValue_; }

    /// Switches both values off in the whole subtree, as far as caches reach.
    void DoNotUseValue();
    VisDataTreeCache* GetCacheOfParent() const;
    /// 1 when the node is neither discarded nor below a parent that is not expanded. Only the
    /// direct parent counts.
    unsigned char IsVisible() const;
    /// The nearest of this node and its ancestors that is visible, or null when there is none
    /// before a node without cache.
    VisDataTree* GetVisibleParent() const;
    /// Resets this cache and those above it, up to the first node without cache.
    void ResetCache();
    /// The fill colour, 0xRRGGBBAA. By level (modulo the number of colours); or a grey in
    /// proportion to `reference`'s value when this node is coloured, else sized, by its value and
    /// `reference` has a cache.
    unsigned int GetRGBAColor(int level, VisDataTree* reference) const;

protected:
    /// Changes the node and resets this cache and those above it; a former node loses its cache.
    /// Part of `VisDataTree::SetCache`, which is the way to link.
    void SetNode(VisDataTree* node);

private:
    friend class VisDataTree;
    friend struct VisCacheAccess;
    friend struct VisTreeAccess;

    void ForgetNode();
    void SpreadToChildren(void (VisDataTreeCache::*setter)(unsigned char), unsigned char value);

    VisDataTree* node_ = nullptr;
    unsigned char expanded_ = 1;
    unsigned char discarded_ = 0;
    unsigned char showLabel_ = 0;
    // Which of the module's cache classes this is; never copied.
    unsigned char kind_ = 0;
    // Everything below, as far as caches reach, is hidden and has no view; never copied.
    unsigned char hiddenBelow_ = 0;
    // A layout linked the cache to its present node, which tells it when it dies; never copied.
    unsigned char linkedByLayout_ = 0;
    // In which order a layout placed the children, for the hit test; never copied.
    VisChildOrder childOrder_{};
    // A layout made the cache for its tree and deletes it, linked or not; never copied.
    unsigned char ownedByLayout_ = 0;
    long long colorValue_ = 0;
    long long sizeValue_ = 0;
    unsigned char resizeWithValue_ = 0;
    unsigned char colorWithValue_ = 0;
};

#endif
