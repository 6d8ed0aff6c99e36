#ifndef TreeAccess_h
#define TreeAccess_h

// What the module's own classes may do with nodes beyond the public operations.

#include "VisDataTree.h"

struct VisTreeAccess {
    /// Links a node without cache and a cache without node, made for a layout that outlives the
    /// link. Resets `cache` alone: the caches above were linked, and so reset, just before.
    static void LinkNewCache(VisDataTree& node, VisDataTree::VisDataTreeCache& cache);
    /// Marks the present cache of `node` as one that lives while it is linked.
    static void MarkLayoutCache(VisDataTree& node)
    {
        node.layoutCache_ = node.cache_ ? 1 : 0;
        if (node.cache_)
            node.cache_->linkedByLayout_ = 1;
    }
    /// Whether the cache is still linked as a layout left it. Only then is its node known to be
    /// alive: a link that somebody else made since may lead to a node that is gone.
    static bool IsLinkedByLayout(const VisDataTree::VisDataTreeCache& cache)
    {
        return cache.linkedByLayout_ != 0;
    }
    /// Marks `cache` as one that its layout deletes, whatever becomes of its link.
    static void MarkOwnedByLayout(VisDataTree::VisDataTreeCache& cache)
    {
        cache.ownedByLayout_ = 1;
    }
    static bool IsOwnedByLayout(const VisDataTree::VisDataTreeCache& cache)
    {
        return cache.ownedByLayout_ != 0;
    }

    /// Forgets the remembered counts and resets the caches of `node` and of all above it.
    static void ResetCache(VisDataTree& node) { node.ResetCache(); }

    /// Number of guarded pointers that watch `node`; stays at 255 once it got there.
    static unsigned char& Watched(VisDataTree& node) { return node.watched_; }
};

#endif
