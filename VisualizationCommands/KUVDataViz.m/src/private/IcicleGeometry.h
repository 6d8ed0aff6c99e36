#ifndef IcicleGeometry_h
#define IcicleGeometry_h

#include "SaturatingCast.h"

#include "KUVStringsMath.h"

#include <algorithm>
#include <cstddef>

// The arithmetic of the icicle plot: columns, widths and heights. Pure functions and small records
// without nodes, views or host; lengths in layout units. The floats are computed in the order in
// which they are written.

namespace IcicleGeometry {

constexpr unsigned int NO_LIMIT = 0xFFFFFFFFU;
constexpr unsigned int NOT_COMPUTED = 0xFFFFFFFFU;
/// For a minimum or a maximum depth: to be found out.
constexpr unsigned int NOT_GIVEN = 0xFFFFFFFFU;
/// The minimum depth when nothing is visible.
constexpr int NOTHING_VISIBLE = 0x7FFFFFFF;

constexpr int WIDTH = 96;
constexpr int LEAF_WIDTH = 64;
constexpr int WIDTH_WITHOUT_LABEL = 32;
constexpr int HEIGHT = 24;
constexpr int ICON_HEIGHT = 24;
constexpr int ICON_AND_LABEL_HEIGHT = 46;
constexpr int GAP = 2;
/// Icons stand above labels in nodes with at least so many levels.
constexpr unsigned int LEVELS_FOR_STACKED_ICON = 3;

/// What is plotted, the same for all nodes.
struct Request {
    unsigned int nLastNodes = NO_LIMIT;
    bool relative = false;
    unsigned char inlineLabels = 0;

    bool IsLimited() const { return nLastNodes != NO_LIMIT; }
};

/// The columns of a node and of what is plotted, for a node that begins in `depth`.
struct Columns {
    unsigned int depth = 0;
    unsigned int span = 1;
    unsigned int minDepth = 0;
    unsigned int maxDepth = 0;
};

/// Whether a node that ends in the column before `end` is among the last columns before `leafEnd`.
inline bool IsAmongLast(unsigned int leafEnd, unsigned int end, unsigned int nLastNodes)
{
    return leafEnd - end < nLastNodes;
}

/// Whether a node begins left of the last columns. The difference wraps around on purpose: with
/// more last columns than there are the node counts as left of them.
inline bool BeginsBefore(const Columns& columns, unsigned int nLastNodes)
{
    return columns.depth < columns.maxDepth - nLastNodes;
}

/// The columns that a node keeps of its span: what lies left of the last columns is cut off. Below
/// 1 there are none.
inline int ColumnsAmongLast(const Columns& columns, unsigned int nLastNodes)
{
    if (nLastNodes <= columns.maxDepth && BeginsBefore(columns, nLastNodes))
        return static_cast<int>(columns.span - columns.maxDepth + nLastNodes + columns.depth);
    return static_cast<int>(columns.span);
}

/// The columns that count for the size of a node.
inline int MeasuredColumns(const Columns& columns, const Request& request, bool visible)
{
    const auto whole = static_cast<int>(columns.span);
    if (request.relative)
        return !visible && columns.depth < columns.minDepth ? 0 : whole;
    if (visible)
        return ColumnsAmongLast(columns, request.nLastNodes);
    return BeginsBefore(columns, request.nLastNodes) ? 0 : whole;
}

/// The columns that a visible node is drawn over.
inline int DrawnColumns(const Columns& columns, const Request& request)
{
    return request.relative ? static_cast<int>(columns.span)
                            : ColumnsAmongLast(columns, request.nLastNodes);
}

/// By how many columns the children of a node are shifted to the right.
inline unsigned int AdvancedColumns(const Columns& columns, const Request& request, bool visible)
{
    const unsigned int end = columns.depth + columns.span;
    if (request.relative) {
        if (columns.minDepth <= columns.depth)
            return columns.span;
        return columns.minDepth < end ? end - columns.minDepth : 0;
    }
    const int drawn = ColumnsAmongLast(columns, request.nLastNodes);
    return visible && drawn > 0 ? static_cast<unsigned int>(drawn) : 0;
}

/// The width of so many columns of `width` each, with the gaps between them.
inline long long WidthOf(int columns, int width)
{
    return columns > 0 ? static_cast<long long>(width + GAP) * columns - GAP : 0;
}

/// The sizes of a node's children, in whole units: those on the right of the node.
struct ChildSizes {
    long long height = 0;
    long long largestWidth = 0;

    void Add(const KUVMathPoint2Df& size)
    {
        height += TruncateToInt(size.y);
        largestWidth = std::max<long long>(largestWidth, TruncateToInt(size.x));
    }
};

/// The size of a subtree whose top takes `width`, with `count` children. `smallestHeight` is 0 for
/// none.
inline KUVMathPoint2Df SizeOf(long long width, std::size_t count, const ChildSizes& children,
                              bool visible, int smallestHeight)
{
    long long height = HEIGHT;
    if (count > 0) {
        if (visible)
            width += GAP;
        width += children.largestWidth;
        height = GAP * (static_cast<long long>(count) - 1) + children.height;
    }
    if (smallestHeight > 0)
        height = std::max<long long>(height, smallestHeight);
    return {static_cast<float>(width), static_cast<float>(height)};
}

/// How a plot fills its area: lengths are multiplied by these.
struct Stretch {
    float x = 1.0f;
    float y = 1.0f;
};

inline float StretchTo(float area, float extent)
{
    return extent > 0.0f && area > extent ? area / extent : 1.0f;
}

}  // namespace IcicleGeometry

#endif
