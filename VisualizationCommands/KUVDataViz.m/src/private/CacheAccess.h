#ifndef CacheAccess_h
#define CacheAccess_h

// The one way by which the layouts write what has no public setter in the node caches.

#include "VisDataTree.h"

/// The module's cache classes. A class derived from one of them keeps its kind, so that a kind
/// tells to which class a cache can be cast.
enum class VisCacheKind : unsigned char {
    Node = 0,
    Layout = 1,
    TreeMap = 2,
    Cushion = 3,
    Icicle = 4
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

    static void SetExpanded(VisDataTree::VisDataTreeCache& cache, unsigned char expanded)
    {
        cache.expanded_ = expanded;
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
};

#endif
