#ifndef Prefetch_h
#define Prefetch_h

#include "VisDataTree.h"

#include <cstddef>
#include <vector>

// Large trees do not fit the processor's caches: a loop over children that asks for the next ones
// beforehand does not wait for the memory of each.

/// Asks for the memory at `address`, which may be anything, null included.
inline void VisPrefetch(const void* address) { __builtin_prefetch(address); }

/// Asks for a node that a loop which is at child `at` reaches soon: for the links that walks read,
/// which stand behind its texts and may lie across two lines.
inline void VisPrefetchNode(const std::vector<VisDataTree*>& children, std::size_t at)
{
    constexpr std::size_t AHEAD = 12;
    constexpr std::size_t BEHIND_CHILDREN = 48;
    if (at + AHEAD >= children.size() || !children[at + AHEAD])
        return;
    const auto* const links = &children[at + AHEAD]->GetChildren();
    VisPrefetch(links);
    VisPrefetch(reinterpret_cast<const char*>(links) + BEHIND_CHILDREN);
}

/// The same for a loop that reads the children's caches, too.
inline void VisPrefetchChild(const std::vector<VisDataTree*>& children, std::size_t at)
{
    // By then the node itself has come.
    constexpr std::size_t AHEAD = 6;
    VisPrefetchNode(children, at);
    if (at + AHEAD < children.size()) {
        if (const VisDataTree* const child = children[at + AHEAD])
            VisPrefetch(child->GetCache());
    }
}

#endif
