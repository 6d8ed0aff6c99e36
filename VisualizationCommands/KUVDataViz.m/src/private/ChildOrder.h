#ifndef ChildOrder_h
#define ChildOrder_h

// How the rectangles of a node's children follow each other. A layout finds it out while it places
// the children; the hit test then bisects instead of trying child after child.

#include "VisDataTree.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "private/CacheAccess.h"

#include "KUVStringsMath.h"

#include <utility>

enum class VisAxis : unsigned char { X, Y };

inline float VisAlong(VisAxis axis, const KUVMathPoint2Df& point)
{
    return axis == VisAxis::X ? point.x : point.y;
}

/// Checks, child by child in child order, that the lower and the upper bounds along one axis both
/// never fall, or both never rise. Gaps, overlaps and bounds that coincide are all right.
///
/// What is found stands in the parent's cache until a child comes, goes or gets another cache. A
/// layout that places children again forgets it first and notes it anew at the end. A zoomed layout
/// that moves its current root alone need not care: the base forgets when the current root changes.
class VisChildOrderCheck {
public:
    explicit VisChildOrderCheck(VisAxis axis) : axis_(axis) {}

    /// The next child gets, or has, this rectangle.
    void Add(const VisDataTree& parent, const VisDataTree& child,
             const VisTreeSpaceFillingLayoutCache& cache, const KUVMathPoint2Df& position,
             const KUVMathPoint2Df& size)
    {
        Add(position, size);
        // Over a link that leads one way only the parent would not hear of changes.
        if (cache.GetNode() != &child || child.GetParent() != &parent)
            Break();
    }
    /// The same for a child whose links are known to lead both ways.
    void Add(const KUVMathPoint2Df& position, const KUVMathPoint2Df& size)
    {
        const float lower = VisAlong(axis_, position);
        const float upper = lower + VisAlong(axis_, size);
        if (!any_) {
            // Not-a-number has no place in any order.
            rises_ = falls_ = lower == lower && upper == upper;
            any_ = true;
        } else {
            rises_ = rises_ && lower_ <= lower && upper_ <= upper;
            falls_ = falls_ && lower_ >= lower && upper_ >= upper;
        }
        lower_ = lower;
        upper_ = upper;
    }
    /// There is a child with a rectangle that stands anywhere.
    void Break()
    {
        rises_ = falls_ = false;
        any_ = true;
    }

    /// The children were added from the last to the first.
    void Reverse() { std::swap(rises_, falls_); }

    /// Remembers in the parent's cache what was found.
    void Note(VisTreeSpaceFillingLayoutCache& parentCache) const
    {
        VisChildOrder order = VisChildOrder::Unknown;
        if (rises_)
            order = axis_ == VisAxis::X ? VisChildOrder::RisesAlongX : VisChildOrder::RisesAlongY;
        else if (falls_)
            order = axis_ == VisAxis::X ? VisChildOrder::FallsAlongX : VisChildOrder::FallsAlongY;
        VisCacheAccess::ChildOrder(parentCache) = order;
    }

private:
    VisAxis axis_;
    bool any_ = false;
    bool rises_ = false;
    bool falls_ = false;
    float lower_ = 0.0F;
    float upper_ = 0.0F;
};

/// The same for a layout that has just placed all children of `parent`: one pass over their caches.
/// `axis` is the one along which they follow each other.
inline void VisNoteChildOrder(const VisDataTree& parent,
                              VisTreeSpaceFillingLayoutCache& parentCache, VisAxis axis)
{
    VisChildOrderCheck check(axis);
    for (const VisDataTree* const child : parent.GetChildren()) {
        if (const VisTreeSpaceFillingLayoutCache* const cache =
                VisCacheAccess::LayoutCacheOf(child))
            check.Add(parent, *child, *cache, cache->GetPos(), cache->GetSize());
    }
    check.Note(parentCache);
}

#endif
