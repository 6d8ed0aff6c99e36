#ifndef CacheAccess_h
#define CacheAccess_h

// The one way by which the layouts write what has no public setter in the node caches.

#include "VisDataTree.h"
#include "VisTreeSpaceFillingLayoutCache.h"

/// The module's cache classes. A class derived from one of them keeps its kind, so that a kind
/// tells to which class a cache can be cast.
enum class VisCacheKind : unsigned char {
    Node = 0,
    Layout = 1,
    TreeMap = 2,
    Cushion = 3,
    Icicle = 4
};

/// Whether, and along which axis, the bounds of a node's children are known to rise or to fall from
/// each child to the next.
enum class VisChildOrder : unsigned char {
    Unknown = 0,
    RisesAlongX,
    FallsAlongX,
    RisesAlongY,
    FallsAlongY
};

struct VisCacheAccess {
    static VisCacheKind Kind(const VisDataTree::VisDataTreeCache& cache)
    {
        return static_cast<VisCacheKind>(cache.kind_);
    }
    static void SetKind(VisDataTree::VisDataTreeCache& cache, VisCacheKind kind)
    {
        cache.kind_ = static_cast<unsigned char>(kind);
    }

    /// An expanded node counts no longer as one below which everything is hidden.
    static void SetExpanded(VisDataTree::VisDataTreeCache& cache, unsigned char expanded)
    {
        cache.expanded_ = expanded;
        if (expanded != 0)
            cache.hiddenBelow_ = 0;
    }
    static void SetDiscarded(VisDataTree::VisDataTreeCache& cache, unsigned char discarded)
    {
        cache.discarded_ = discarded;
    }
    /// Non-zero: every node below this one, as far as caches reach, has no view, is not expanded
    /// and is discarded. Whoever shows a node clears the bytes above it.
    static unsigned char& HiddenBelow(VisDataTree::VisDataTreeCache& cache)
    {
        return cache.hiddenBelow_;
    }

    /// How the children's rectangles follow each other; see `VisChildOrderCheck`.
    static VisChildOrder& ChildOrder(VisDataTree::VisDataTreeCache& cache)
    {
        return cache.childOrder_;
    }
    /// The children of `node`, which may be null, may stand anywhere.
    static void ForgetChildOrder(const VisDataTree* node)
    {
        if (VisDataTree::VisDataTreeCache* const cache = node ? node->GetCache() : nullptr)
            cache->childOrder_ = VisChildOrder::Unknown;
    }

    /// What a reset does to one cache, without those above it.
    static void ResetAlone(VisDataTree::VisDataTreeCache& cache)
    {
        cache.hiddenBelow_ = 0;
        cache.InternalResetCache();
    }

    /// The cache of `node` when there is one and it is a layout's; else null.
    static VisTreeSpaceFillingLayoutCache* LayoutCacheOf(const VisDataTree* node)
    {
        VisDataTree::VisDataTreeCache* const cache = node ? node->GetCache() : nullptr;
        if (!cache || Kind(*cache) < VisCacheKind::Layout)
            return nullptr;
        return static_cast<VisTreeSpaceFillingLayoutCache*>(cache);
    }

    /// The node is shown, with its children or not.
    static void Show(VisTreeSpaceFillingLayoutCache& cache, unsigned char expanded)
    {
        SetExpanded(cache, expanded);
        SetDiscarded(cache, 0);
    }
    static void SetPosition(VisTreeSpaceFillingLayoutCache& cache, const KUVMathPoint2Df& position)
    {
        cache.position_ = position;
    }
    static void SetSize(VisTreeSpaceFillingLayoutCache& cache, const KUVMathPoint2Df& size)
    {
        cache.size_ = size;
    }
    static void SetComputedMinimumSize(VisTreeSpaceFillingLayoutCache& cache,
                                       const KUVMathPoint2Df& size)
    {
        cache.computedMinimumSize_ = size;
    }
    static VisTreeSpaceFillingView*& View(VisTreeSpaceFillingLayoutCache& cache)
    {
        return cache.view_;
    }
};

#endif
