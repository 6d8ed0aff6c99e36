#ifndef IcicleAccess_h
#define IcicleAccess_h

// What the icicle plot's own sources write and read in its caches.

#include "CacheAccess.h"

#include "VisDataTree.h"
#include "VisIcicleLayout.h"

struct VisIcicleAccess {
    using Cache = VisIcicleLayout::VisIcicleLayoutCache;

    /// The cache of `node` when there is one and it is an icicle plot's; else null.
    static Cache* CacheOf(const VisDataTree* node)
    {
        VisDataTree::VisDataTreeCache* const cache = node ? node->GetCache() : nullptr;
        if (!cache || VisCacheAccess::Kind(*cache) != VisCacheKind::Icicle)
            return nullptr;
        return static_cast<Cache*>(cache);
    }

    static bool IsMergedTop(const VisDataTree& node)
    {
        return node.IsMerged() != 0 && !node.GetParent();
    }

    static void SetColSpan(Cache& cache, unsigned int span) { cache.colSpan_ = span; }
    static void SetCursor(Cache& cache, unsigned int cursor) { cache.cursor_ = cursor; }
    static void SetGraphicalSize(Cache& cache, const KUVMathPoint2Df& size)
    {
        cache.graphicalSize_ = size;
    }
    static void SetIcicleSize(Cache& cache, const KUVMathPoint2Df& size)
    {
        cache.icicleSize_ = size;
    }
    /// What the stored size was computed for.
    static void SetMeasured(Cache& cache, unsigned int nLastNodes, unsigned char inlineLabels)
    {
        cache.lastNLastNodes_ = nLastNodes;
        cache.lastInlineLabels_ = inlineLabels;
    }
    static unsigned char InlineLabels(const Cache& cache) { return cache.lastInlineLabels_; }
    static void SetStretchedLeaves(Cache& cache, bool stretched)
    {
        cache.stretchedLeaves_ = stretched ? 1 : 0;
    }
    static bool HasStretchedLeaves(const Cache& cache) { return cache.stretchedLeaves_ != 0; }
};

#endif
