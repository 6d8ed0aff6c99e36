#ifndef IcicleSizes_h
#define IcicleSizes_h

// How the sizes of subtrees are measured while a plot is being made.

#include "IcicleAccess.h"
#include "IcicleColumns.h"
#include "IcicleGeometry.h"

#include "VisDataTree.h"

namespace IcicleSizes {

/// Where a node stands among its ancestors.
struct Place {
    unsigned int depth = 0;
    unsigned int minDepth = IcicleGeometry::NOT_GIVEN;
    unsigned int maxDepth = IcicleGeometry::NOT_GIVEN;
    /// The two are known with a column limit only.
    unsigned int cursor = 0;
    IcicleColumns::LeafEnd leaf = {};
    int heightFromAbove = 0;
};

/// Whether the stored size of a cache holds for `request`.
inline bool IsRemembered(const VisIcicleAccess::Cache& cache,
                         const IcicleGeometry::Request& request)
{
    const KUVMathPoint2Df& size = cache.GetIcicleSize();
    return size.x > 0.0f && size.y > 0.0f && cache.GetIcicleNLastNodes() == request.nLastNodes &&
           VisIcicleAccess::InlineLabels(cache) == request.inlineLabels;
}

/// Measures the subtree of `cache` and stores the sizes. Throws `std::bad_alloc`.
KUVMathPoint2Df Measure(VisIcicleAccess::Cache& cache, const IcicleGeometry::Request& request,
                        const Place& place);

/// Whether a climb through ancestors goes no further than `node`, for its icon.
bool EndsClimb(VisDataTree& node);

/// What the icons of all ancestors of `node` ask of its height. Costs the depth. With `store` the
/// cursors of the ancestors that were looked at, and of their first leaves, are stored.
int HeightFromAbove(VisDataTree& node, const IcicleGeometry::Request& request, bool store);

/// What the icons of `node` and of all above it ask of the heights below it. `above` is the same
/// for its parent.
///
/// This is the climb from each node through its ancestors, handed down instead.
int HeightForChildren(const VisIcicleAccess::Cache& cache, VisDataTree& node, bool visible,
                      unsigned char inlineLabels, int above);

}  // namespace IcicleSizes

#endif
