#ifndef VisTreeMapLayout_h
#define VisTreeMapLayout_h

#include "VisExport.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"

#include <cstddef>
#include <cstdint>

/// How the children of a node divide its rectangle. Any value but 0 counts as 1. A child is always
/// laid out in the inverse of its parent's mode.
enum VisTreeMap_SliceDice : unsigned int {
    /// Along x: the children stand side by side.
    VisTreeMap_SideBySide = 0,
    /// Along y: the children are stacked, the first at the bottom.
    VisTreeMap_Stacked = 1
};

/// The nested slice-and-dice tree map.
///
/// The current root's rectangle is cut into one strip a child, side by side and one above the other
/// in turns from level to level. Every node keeps a frame of one unit and an opened node a band for
/// its label at the top; neighbours stand two units apart. A node whose children would get smaller
/// than 32 x 15 units is drawn collapsed, with a grid texture. When that is the current root but
/// its children fit as uniform cells, they are drawn as a grid instead.
///
/// The areas follow the minimum sizes of the subtrees, not the nodes' values: values only colour.
class VIS_EXPORT VisTreeMapLayout : public VisTreeSpaceFillingLayout {
    KUV_DECLARE_CLASS
public:
    /// Gap between neighbours.
    static const unsigned short SPACE_BETWEEN_NODES;
    /// Height of the label band at the top of an opened node.
    static const unsigned short LABEL_OFFSET;
    /// Frame between a node's edge and its children.
    static const unsigned short COUNTOUR_OFFSET;
    /// Smallest width of a node.
    static const unsigned short MIN_EXPANDED_SIZE_MAJOR;
    /// Smallest height of a node.
    static const unsigned short MIN_EXPANDED_SIZE_MINOR;

    class VisTreeMapLayoutCache;

    /// A layout that shows `root` in `bag`, with one reference for the caller; null when `root` is
    /// null or memory runs out. `parent` and `bag` may be null; without a bag views are made but
    /// hang nowhere.
    static VisTreeMapLayout* CreateLayout(KUVCommand* parent, VisDataTree* root, KUV2DBagRep* bag);

    /// Lays the current root's subtree out in the rectangle at `origin` and builds the views of
    /// all nodes that show; then sets the current selection again, which notifies.
    ///
    /// Positions and sizes are in layout units; views get them multiplied by `scale` about
    /// `origin`. When memory runs out the picture stays incomplete. Costs the number of nodes
    /// shown: what is hidden is walked only when something changed there.
    void Draw(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size, KUVCharacterFont* font,
              float scale) override;

    /// Lays out and builds the views by slice-and-dice, the current root in `mode`. Nothing without
    /// a current root with a cache.
    void SliceAndDice(VisTreeMap_SliceDice mode, const KUVMathPoint2Df& origin,
                      const KUVMathPoint2Df& size, KUVCharacterFont* font, float scale);

    /// Lays out the current root and its children, as uniform cells, row by row from the top left.
    /// Children that find no cell, and everything below the children, are hidden.
    void LayoutChildrenInGrid(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size,
                              KUVCharacterFont* font, float scale);

protected:
    explicit VisTreeMapLayout(KUVCommand* parent);
    ~VisTreeMapLayout() override;

    VisTreeSpaceFillingLayoutCache* GenerateCache() override;

private:
    struct Picture;
    class ViewMaker;

    void FillGrid(VisDataTree& root, const Picture& picture, int depth);
    void ShowNode(VisTreeMapLayoutCache& cache, unsigned char expanded);
    void DrawNode(VisDataTree& node, VisTreeMapLayoutCache& cache, const Picture& picture,
                  int depth);
};

/// What the tree map knows of one node beyond its rectangle: the smallest size at which the node
/// and everything below it can be shown opened, and for which mode it was computed.
///
/// The minimum size counts as computed when both its coordinates are above 0.
class VIS_EXPORT VisTreeMapLayout::VisTreeMapLayoutCache : public VisTreeSpaceFillingLayoutCache {
public:
    explicit VisTreeMapLayoutCache(VisDataTree* node);
    /// Copies what the base copies, and the mode.
    VisTreeMapLayoutCache(VisTreeMapLayoutCache& other);
    VisTreeMapLayoutCache& operator=(VisTreeMapLayoutCache& other);
    ~VisTreeMapLayoutCache() override;

    /// A copy that belongs to no node, owned by the caller, or null when memory runs out.
    VisDataTreeCache* Clone() override;

    /// The smallest size at which the node, laid out in `mode`, can show everything below it
    /// opened. Computed for the whole subtree when not remembered for this mode, each node once.
    /// Children without a tree map cache take no room but are kept apart by gaps.
    const KUVMathPoint2Df& ComputeMinimumExpandedSize(VisTreeMap_SliceDice mode);

    /// 1 when the node can be opened at `size`: its children get at least the minimum size by a
    /// proportional or an equal split. 0 without node, 1 for a childless one.
    ///
    /// `minimumSum` (may be null) receives the sum of the children's minimum sizes along the axis
    /// for a proportional split, -1 for an equal one and when the answer is 0; it is left alone
    /// without node and for a childless one. Computes minimum sizes as a side effect.
    unsigned char CanSliceAndDiceExpandNode(VisTreeMap_SliceDice mode, const KUVMathPoint2Df& size,
                                            float* minimumSum);

    /// 1 when all children of the node fit as uniform cells into `size`. 0 without node.
    unsigned char CanLayoutChildrenInGrid(const KUVMathPoint2Df& size) const;

    VisTreeMap_SliceDice GetLastModeOfComputedMinimumExpandedSize() const;
    /// Forgets the minimum size when `mode` is another than the last.
    void SetLastModeOfComputedMinimumExpandedSize(VisTreeMap_SliceDice mode);

protected:
    /// 1 for 0, 0 for any other value.
    static VisTreeMap_SliceDice InvertSliceDiceMode(VisTreeMap_SliceDice mode);

private:
    friend struct TreeMapSizes;

    VisTreeMap_SliceDice lastMode_ = VisTreeMap_Stacked;
    // The children's minimum sizes along the axis, good for one state of all trees.
    float childSum_ = 0.0f;
    float childSmallest_ = 0.0f;
    unsigned char hasSizedChild_ = 0;
    std::uint64_t childEpoch_ = 0;
    std::size_t childCount_ = 0;
};

#endif
