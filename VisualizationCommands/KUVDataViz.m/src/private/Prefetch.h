#ifndef Prefetch_h
#define Prefetch_h

#include "VisDataTree.h"

#include <cstddef>
#include <vector>

// Large trees do not fit the processor's caches: a loop over children that asks for the next ones
// beforehand does not wait for the memory of each.

/// Asks for the memory at `address`, which may be anything, null included.
inline void VisPrefetch(const void* address) { __builtin_prefetch(address); }

/// Asks for the nodes and the caches of children that a loop reaches soon.
class VisChildPrefetch {
public:
    explicit VisChildPrefetch(const std::vector<VisDataTree*>& children) : children_(children) {}

    /// The loop is at child `at`.
    void Advance(std::size_t at) const
    {
        if (at + NODES_AHEAD < children_.size())
            VisPrefetch(children_[at + NODES_AHEAD]);
        if (at + CACHES_AHEAD < children_.size()) {
            if (const VisDataTree* const child = children_[at + CACHES_AHEAD])
                VisPrefetch(child->GetCache());
        }
    }

private:
    static constexpr std::size_t NODES_AHEAD = 12;
    static constexpr std::size_t CACHES_AHEAD = 6;

    const std::vector<VisDataTree*>& children_;
};

#endif
