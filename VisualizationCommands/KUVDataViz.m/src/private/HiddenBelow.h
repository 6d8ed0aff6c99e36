#ifndef HiddenBelow_h
#define HiddenBelow_h

#include "CacheAccess.h"

#include "VisDataTree.h"

/// Tells `node`, which may be null, and all above it that something below them may be shown.
inline void VisClearHiddenFrom(const VisDataTree* node)
{
    for (; node; node = node->GetParent()) {
        if (VisDataTree::VisDataTreeCache* const cache = node->GetCache())
            VisCacheAccess::HiddenBelow(*cache) = 0;
    }
}

#endif
