#ifndef IcicleColumns_h
#define IcicleColumns_h

// Cursors, first leaves and what is visible from them, handed down where the definition climbs.

#include "IcicleAccess.h"
#include "IcicleGeometry.h"

#include "VisDataTree.h"

namespace IcicleColumns {

using IcicleGeometry::NO_LIMIT;
using IcicleGeometry::NOT_COMPUTED;

/// The width of one column of a node.
inline int WidthOfColumn(const VisIcicleAccess::Cache& cache)
{
    if (cache.GetShowLabel() == 0)
        return IcicleGeometry::WIDTH_WITHOUT_LABEL;
    const VisDataTree* const node = cache.GetNode();
    if (!node || !node->GetCache() || node->IsLeafObject() == 0)
        return IcicleGeometry::WIDTH;
    return VisIcicleAccess::HasStretchedLeaves(cache) ? IcicleGeometry::WIDTH
                                                      : IcicleGeometry::LEAF_WIDTH;
}

/// Whether a node of a plot is an ordinary leaf, which is its own first leaf and hides nothing.
inline bool IsPlainLeaf(const VisDataTree& node, const VisIcicleAccess::Cache& cache)
{
    return node.GetChildren().empty() && node.IsMerged() == 0 && cache.GetNode() == &node;
}

/// Where the first leaf below a node ends, if that leaf has a cache.
struct LeafEnd {
    bool known = false;
    unsigned int column = 0;
};

inline LeafEnd EndOfLeaf(const VisDataTree* leaf)
{
    VisIcicleAccess::Cache* const cache = VisIcicleAccess::CacheOf(leaf);
    if (!cache)
        return {};
    return {true, cache->ComputeIcicleCursor() + cache->GetIcicleColSpan()};
}

/// The cursor of a cache below a node that ends in the column before `parentEnd`.
inline unsigned int CursorBelow(const VisIcicleAccess::Cache& cache, unsigned int parentEnd)
{
    if (cache.GetIcicleCursor() != NOT_COMPUTED)
        return cache.GetIcicleCursor();
    return cache.GetNode() ? parentEnd : 0;
}

/// Where the first leaf below `head` ends, whose cache is `headCache` and whose cursor is `cursor`:
/// counts along the first children instead of climbing from the leaf. With `store` the leaf's
/// cursor is stored.
inline LeafEnd FirstLeafEnd(const VisDataTree& head, const VisIcicleAccess::Cache& headCache,
                            unsigned int cursor, bool store)
{
    const VisDataTree* node = &head;
    const VisIcicleAccess::Cache* cache = &headCache;
    VisIcicleAccess::Cache* leafCache = nullptr;
    while (!node->GetChildren().empty() && node->GetChildren().front()) {
        const unsigned int end = cache ? cursor + cache->GetIcicleColSpan() : 0;
        node = node->GetChildren().front();
        cache = leafCache = VisIcicleAccess::CacheOf(node);
        cursor = cache ? CursorBelow(*cache, end) : 0;
    }
    if (!cache)
        return {};
    if (leafCache && store)
        VisIcicleAccess::SetCursor(*leafCache, cursor);
    return {true, cursor + cache->GetIcicleColSpan()};
}

/// Whether a node that ends in the column before `end` is visible from its first leaf.
inline bool IsSeen(const VisDataTree* node, unsigned int end, const LeafEnd& leaf,
                   unsigned int nLastNodes)
{
    if (node && VisIcicleAccess::IsMergedTop(*node))
        return false;
    if (nLastNodes == NO_LIMIT)
        return true;
    return node && leaf.known && IcicleGeometry::IsAmongLast(leaf.column, end, nLastNodes);
}

/// The same for the node of `cache`, whose first leaf is `leaf`; stores the cursors of both.
inline bool IsSeenFrom(VisIcicleAccess::Cache& cache, const VisDataTree* leaf,
                       unsigned int nLastNodes)
{
    const VisDataTree* const node = cache.GetNode();
    if (nLastNodes == NO_LIMIT || !node || VisIcicleAccess::IsMergedTop(*node))
        return IsSeen(node, 0, {}, nLastNodes);
    if (!VisIcicleAccess::CacheOf(leaf))
        return false;
    // This one first: climbing from the leaf then ends here.
    const unsigned int end = cache.ComputeIcicleCursor() + cache.GetIcicleColSpan();
    return IsSeen(node, end, EndOfLeaf(leaf), nLastNodes);
}

}  // namespace IcicleColumns

#endif
