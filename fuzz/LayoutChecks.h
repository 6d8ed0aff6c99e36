#ifndef fuzz_LayoutChecks_h
#define fuzz_LayoutChecks_h

// What must hold of a layout and of what it shows, whatever was done to it.

#include "VisDataTree.h"
#include "VisTreeSpaceFillingLayout.h"

#include "KUV2D.h"
#include "KUVStringsMath.h"

#include <cstdint>
#include <vector>

namespace fuzz {

enum class Kind { TreeMap, Cushion, Icicle };
constexpr unsigned int KINDS = 3;

/// A layout of that kind with one reference for the caller; null without `root`.
VisTreeSpaceFillingLayout* MakeLayout(Kind kind, VisDataTree* root, KUV2DBagRep* bag);

/// Parents and children know each other, and so do nodes and caches.
void CheckNode(const VisDataTree& node);

/// Current root, selection, leaf selection and earlier roots live or are null. With `inTree` all
/// but the earlier roots belong to the tree.
void CheckSlots(const VisTreeSpaceFillingLayout& layout, bool inTree);

/// A hit is shown and holds the point, and is the one that a plain search finds. `discardedToo`:
/// the layout searches through discarded nodes.
void CheckHit(VisTreeSpaceFillingLayout& layout, bool discardedToo, float x, float y);

/// Every view belongs to a node of the current root's subtree, and the bag holds just these views.
/// For a tree that was not edited while it was shown.
void CheckViews(VisTreeSpaceFillingLayout& layout, const KUV2DBagRep& bag);

/// Whether a drawing of this size surely takes place: a cushion map needs an image.
bool IsDrawn(Kind kind, const KUVMathPoint2Df& size, float scale);

/// Whether drawing twice leaves the same. An icicle plot of the last columns moves the columns from
/// which the next one counts.
bool IsRepeatable(Kind kind, VisTreeSpaceFillingLayout& layout);

/// What a drawing that nobody disturbed leaves: flags and views fit each other.
void CheckDrawn(Kind kind, VisTreeSpaceFillingLayout& layout);

/// Children lie inside their parents and siblings apart, and the centre of a leaf hits it. For a
/// drawing of moderate size, of values that add up, that was laid out anew.
void CheckPlaced(Kind kind, VisTreeSpaceFillingLayout& layout);

/// All leaves of a plot that was aligned end in the same column.
void CheckAligned(VisTreeSpaceFillingLayout& layout);

/// Flags of all nodes and rectangles of those that are shown, for comparison bit by bit; with
/// `views` what the views say, too.
std::vector<std::uint32_t> DescribeDrawn(VisTreeSpaceFillingLayout& layout, bool views);

}  // namespace fuzz

#endif
