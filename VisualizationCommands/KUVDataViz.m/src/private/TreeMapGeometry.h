#ifndef TreeMapGeometry_h
#define TreeMapGeometry_h

#include "VisTreeMapLayout.h"
#include "private/ChildOrder.h"

#include "KUVStringsMath.h"

#include <cstddef>

// The arithmetic of the tree map: minimum sizes, whether a node can be opened, strips and grid
// cells. Pure functions and small records without nodes, views or host; all lengths in layout
// units. The floats are computed in the order in which they are written.

namespace TreeMapGeometry {

constexpr float GAP = 2.0f;
constexpr float LABEL_BAND = 14.0f;
constexpr float FRAME = 1.0f;
constexpr float MIN_WIDTH = 32.0f;
constexpr float MIN_HEIGHT = 15.0f;
/// What the frame takes from a node's width, and frame and label band from its height.
constexpr float FRAMES = 2.0f * FRAME;
constexpr float HEADER = LABEL_BAND + FRAME;

/// Along which axis the children of a node follow each other.
using Axis = VisAxis;

inline Axis AxisOf(VisTreeMap_SliceDice mode)
{
    return mode == VisTreeMap_SideBySide ? Axis::X : Axis::Y;
}

/// The mode in which the children of a node laid out in `mode` are laid out.
inline VisTreeMap_SliceDice InverseOf(VisTreeMap_SliceDice mode)
{
    return mode == VisTreeMap_SideBySide ? VisTreeMap_Stacked : VisTreeMap_SideBySide;
}

/// What all gaps between `count` neighbours take.
inline float GapsBetween(std::size_t count) { return GAP * static_cast<float>(count) - GAP; }

inline float Along(Axis axis, const KUVMathPoint2Df& size) { return VisAlong(axis, size); }

/// The minimum sizes of a node's children, added up along one axis.
class ChildSizes {
public:
    explicit ChildSizes(Axis axis) : axis_(axis) {}

    void Add(const KUVMathPoint2Df& child)
    {
        const float along = Along(axis_, child);
        const float across = axis_ == Axis::X ? child.y : child.x;
        sum_ += along;
        smallest_ = any_ && smallest_ < along ? smallest_ : along;
        largestAcross_ = largestAcross_ < across ? across : largestAcross_;
        any_ = true;
    }

    float GetSum() const { return sum_; }
    /// The least extent along the axis; 0 without children.
    float GetSmallest() const { return smallest_; }
    /// Whether there was any child to add.
    bool HasAny() const { return any_; }
    /// The minimum size of the parent, which has `count` children: those added, and others that
    /// take no room but are kept apart by gaps all the same.
    KUVMathPoint2Df ParentSize(std::size_t count) const;

private:
    Axis axis_;
    bool any_ = false;
    float sum_ = 0.0f;
    float smallest_ = 0.0f;
    float largestAcross_ = 0.0f;
};

/// The minimum sizes of a node's children along the axis on which they follow each other.
struct ChildExtents {
    float sum = 0.0f;
    float smallest = 0.0f;
    bool any = false;
};

/// How an opened node divides its width or height among its children.
enum class Split {
    /// Not at all: a child would be too small. The node stays collapsed.
    None,
    /// In proportion to the children's minimum sizes.
    Proportional,
    Equal
};

/// Chooses the split of a node of `size` with `count` (at least 1) children. Proportional when the
/// smallest child then still gets the minimum size; else equal when that gives it.
Split ChooseSplit(Axis axis, const KUVMathPoint2Df& size, std::size_t count,
                  const ChildExtents& children);

struct Rectangle {
    KUVMathPoint2Df position;
    KUVMathPoint2Df size;
};

/// Deals out the rectangles of a node's children, one after the other from the left or the bottom.
///
/// A proportional strip is rounded to whole units but the next one starts where the unrounded strip
/// would have ended: rounding never adds up along a row, at the price that a strip can overhang its
/// slot by half a unit.
class StripCursor {
public:
    /// `sum` is that of the children's minimum sizes for a proportional split; below 0 the split
    /// is equal.
    StripCursor(Axis axis, const Rectangle& node, std::size_t count, float sum);

    bool IsEqual() const { return sum_ < 0.0f; }
    /// The next rectangle of an equal split.
    Rectangle NextEqual();
    /// The next rectangle of a proportional split, for a child of this minimum size.
    Rectangle NextProportional(const KUVMathPoint2Df& minimumSize);

private:
    Axis axis_;
    float sum_;
    KUVMathPoint2Df corner_;
    KUVMathPoint2Df inner_;
    float gaps_ = 0.0f;
};

/// Uniform cells in the inner area of a node, filled row by row from the top left.
struct Grid {
    int columns = 0;
    int rows = 0;
    float cellWidth = 0.0f;
    /// Lower left corner of the first cell.
    KUVMathPoint2Df corner;
};

/// Whether a node of `size` has room for `count` grid cells.
bool FitsInGrid(const KUVMathPoint2Df& size, std::size_t count);

/// The grid of a node; without columns and rows when it is too small for a single cell.
Grid MakeGrid(const Rectangle& node);

/// How far the next cell of a row, and the next row, lie away.
inline float CellStep(const Grid& grid) { return grid.cellWidth + GAP; }
constexpr float ROW_STEP = MIN_HEIGHT + GAP;

/// A position on the screen: scaled about the origin of the picture.
inline KUVMathPoint2Df ScaleAbout(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& position,
                                  float scale)
{
    return {(position.x - origin.x) * scale + origin.x, (position.y - origin.y) * scale + origin.y};
}

inline KUVMathPoint2Df Scale(const KUVMathPoint2Df& size, float scale)
{
    return {size.x * scale, size.y * scale};
}

}  // namespace TreeMapGeometry

#endif
