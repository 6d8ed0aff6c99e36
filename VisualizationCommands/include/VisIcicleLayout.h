#ifndef VisIcicleLayout_h
#define VisIcicleLayout_h

#include "VisExport.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"

#include "KUVCommand.h"

/// What an icicle plot tells its listeners when the number of its last columns has changed.
///
/// Made on the stack for one dispatch; listeners do not keep it.
class VIS_EXPORT VisIcicleLayoutON_SET_NLAST_NODESEvt : public KUVNotification {
    KUV_DECLARE_CLASS
public:
    VisIcicleLayoutON_SET_NLAST_NODESEvt(unsigned int oldValue, unsigned int newValue,
                                         unsigned int keyCode);
    ~VisIcicleLayoutON_SET_NLAST_NODESEvt() override;

    /// 0xFFFFFFFF, here and in `GetNewValue`, stands for no limit.
    unsigned int GetOldValue() const { return oldValue_; }
    unsigned int GetNewValue() const { return newValue_; }
    /// The page key that has this effect, whoever caused it: 0x700000 for fewer columns, 0x400000
    /// for more.
    unsigned int GetKeyCode() const { return keyCode_; }

private:
    unsigned int oldValue_;
    unsigned int newValue_;
    unsigned int keyCode_;
};

/// The icicle plot: depth runs from left to right in columns, the children of a node are stacked,
/// the first at the top.
///
/// A node takes one column, or more where its subtree is less deep than its siblings': once
/// `AlignIciclePlotLeaves` has set these spans, all leaves end in the last column. The plot can be
/// limited to the N last columns, counted back from the leaves; what lies left of them is laid out
/// but not drawn. The page keys change N, and the arrow keys move between neighbouring rectangles.
///
/// Sizes follow labels, icons and the number of leaves, not the nodes' values. A plot that is
/// smaller than its area is stretched to fill it; a larger one is never shrunk.
///
/// What is computed for a node is remembered in its cache. After a change of the tree call
/// `AlignIciclePlotLeaves` before the next drawing.
class VIS_EXPORT VisIcicleLayout : public VisTreeSpaceFillingLayout {
    KUV_DECLARE_CLASS
public:
    /// Width of a column of a node that shows its label.
    static const unsigned short MIN_ICICLEPLOT_SIZE_MAJOR;
    /// Width of the column of a leaf object while no leaf of the plot is stretched.
    static const unsigned short MIN_ICICLEPLOT_SIZE_MAJOR_LEAF;
    /// Width of a column of a node that does not show its label.
    static const unsigned short MIN_ICICLEPLOT_SIZE_MAJOR_NO_LABEL;
    /// Height of a leaf.
    static const unsigned short MIN_ICICLEPLOT_SIZE_MINOR;
    /// Smallest height of a node with an icon beside its label, or without a label.
    static const unsigned short MIN_ICICLEPLOT_SIZE_MINOR_W_ICON;
    /// Smallest height of a node with an icon above its label.
    static const unsigned short MIN_ICICLEPLOT_SIZE_MINOR_W_ICON_LABEL;
    /// Gap between columns and between stacked neighbours.
    static const unsigned short SPACE_BETWEEN_NODES;
    /// The tree map's label band. The plot has none.
    static const unsigned short LABEL_OFFSET;

    class VisIcicleLayoutCache;

    /// A layout that shows `root` in `bag`, with one reference for the caller; null when `root` is
    /// null or memory runs out. `parent` and `bag` may be null; without a bag views are made but
    /// hang nowhere.
    static VisIcicleLayout* CreateLayout(KUVCommand* parent, VisDataTree* root, KUV2DBagRep* bag);

    /// Dispatched by `SetNLastNodes`, with a `VisIcicleLayoutON_SET_NLAST_NODESEvt`.
    static const char* ON_SET_NLAST_NODES();

    /// The cache of the current root, or null.
    VisIcicleLayoutCache* GetCache();

    /// Plots the current root again with the column limit and the placing of labels for which its
    /// size was computed last (not with the layout's own limit); then sets the current selection
    /// again, which notifies.
    void Draw(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size, KUVCharacterFont* font,
              float scale) override;

    /// Lays the current root's subtree out in the rectangle at `origin` and builds the views of all
    /// its nodes; gives the number of columns from the current root to the deepest plotted one.
    ///
    /// Positions and sizes are in layout units; views get them multiplied by `scale` about
    /// `origin`. Of `nLastNodes` columns counted back from the leaves, 0xFFFFFFFF draws all. The
    /// columns left of them keep their place, or give up what lies left of the first node that is
    /// drawn, with `relativeToMinDepth` non-zero. With `inlineLabels` non-zero icons stand beside
    /// labels everywhere, else above them except near the leaves. 0 without a current root with a
    /// cache. When memory runs out the picture stays incomplete.
    unsigned int IciclePlot(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size,
                            KUVCharacterFont* font, unsigned int nLastNodes, float scale,
                            unsigned char relativeToMinDepth, unsigned char inlineLabels);

    /// Sets the column spans below `node`, null for the current root, so that all leaves end in the
    /// same column, and forgets cursors and sizes there. Gives the number of columns.
    ///
    /// `node` itself takes the columns by which its subtree is less deep than its parent's largest,
    /// or one without parent. Costs the number of nodes below. Throws `std::bad_alloc`.
    int AlignIciclePlotLeaves(VisDataTree* node);

    /// Resets the cache of the tree root, if there is one: its span becomes 1, its cursor and its
    /// size are forgotten. Those below stay as they are.
    void ResetIciclePlotAlignment();

    /// Zooms as the base does. A `node` that takes several columns is aligned first, since what was
    /// computed for it holds for its old place.
    void SetCurrentRoot(VisDataTree* node, unsigned char pushOnStack) override;

    /// How many columns, counted back from the leaves, the keyboard navigation takes as shown. No
    /// limit is 0xFFFFFFFF, the default; 0 shows nothing.
    unsigned int GetNLastNodes() const { return nLastNodes_; }
    /// Changes that number and dispatches `ON_SET_NLAST_NODES`. Nothing when it is the same.
    ///
    /// Does not plot: the owner does, when it is told. A selection that is left of the columns from
    /// now on moves to the right until it is among them.
    void SetNLastNodes(unsigned int nLastNodes);

    /// Whether the left arrow key widens the range of columns when it leads out of it. Default 0.
    unsigned char GetExtendWithKeys() const { return extendWithKeys_; }
    void SetExtendWithKeys(unsigned char extend) { extendWithKeys_ = extend; }

    /// The page keys: 0x700000 shows one column fewer, 0x400000 one more, within what the current
    /// root has. Any other code is ignored. Throws `std::bad_alloc`.
    void ApplyPageUpPageDown(unsigned int code) override;

protected:
    VisIcicleLayout(KUVCommand* parent, VisDataTree* root, KUV2DBagRep* bag);
    ~VisIcicleLayout() override;

    VisTreeSpaceFillingLayoutCache* GenerateCache() override;
    void OnMouseSelection(VisDataTree* node) override;
    /// The neighbour of the selection in the direction of an arrow key, the selection itself when
    /// there is none, null without a selection with a cache. Left may change the number of last
    /// columns, which dispatches.
    VisDataTree* GetNodeViaNavigation(unsigned int code) override;

private:
    struct Picture;
    class ViewMaker;

    void ShowNode(VisIcicleLayoutCache& cache);
    void DrawNode(VisDataTree& node, VisIcicleLayoutCache& cache, const Picture& picture);
    void MoveSelectionAmongLast();
    VisDataTree* GoUpOrDown(VisIcicleLayoutCache& selected, bool up);
    VisDataTree* GoLeft(VisDataTree& selection, VisIcicleLayoutCache& selected);

    unsigned int nLastNodes_ = 0xFFFFFFFFU;
    // The column in which the arrow keys keep their place.
    unsigned int keyboardCursor_ = 0xFFFFFFFFU;
    unsigned char extendWithKeys_ = 0;
};

/// What the icicle plot knows of one node beyond its rectangle: how large its subtree is, which
/// columns it takes and how keyboard navigation came through.
///
/// Everything here is counted in columns from the top root on, or measured in units before
/// stretching and scaling. No operation nests its calls, however deep the tree is.
class VIS_EXPORT VisIcicleLayout::VisIcicleLayoutCache : public VisTreeSpaceFillingLayoutCache {
public:
    explicit VisIcicleLayoutCache(VisDataTree* node);
    /// A copy has to be measured again: of what this class adds only the column span, the cursor
    /// and the number of last nodes are copied.
    VisIcicleLayoutCache(VisIcicleLayoutCache& other);
    /// As the copy, except that sizes and flags stay as they are here.
    VisIcicleLayoutCache& operator=(VisIcicleLayoutCache& other);
    ~VisIcicleLayoutCache() override;

    /// A copy that belongs to no node, owned by the caller, or null when memory runs out.
    VisDataTreeCache* Clone() override;

    // ---- what is remembered

    /// The size of the node's own rectangle as drawn, scale included; (0, 0) for a node left of the
    /// last columns, (-1, -1) before the first plot.
    const KUVMathPoint2Df& GetGraphicalSize() const { return graphicalSize_; }
    /// Number of columns that the node takes.
    unsigned int GetIcicleColSpan() const { return colSpan_; }
    /// The number of last nodes for which the size was computed last; no limit is 0xFFFFFFFF.
    unsigned int GetIcicleNLastNodes() const { return lastNLastNodes_; }
    /// The stored size of the subtree, see `ComputeIcicleSize`. It holds while both coordinates are
    /// above 0.
    const KUVMathPoint2Df& GetIcicleSize() const { return icicleSize_; }
    /// The stored first column, see `ComputeIcicleCursor`; 0xFFFFFFFF has to be computed.
    unsigned int GetIcicleCursor() const { return cursor_; }

    // ---- what is computed

    /// The extent of the subtree before stretching: the node's columns with everything to their
    /// right, and the height. (-1, -1) without a node.
    ///
    /// Stored, and used again while `nLastNodes` and `inlineLabels` are those of the last time; the
    /// other arguments do not count then. Nodes below are measured and remembered as well. `depth`
    /// is the column where the node begins; 0xFFFFFFFF for `minDepth` stands for the first column
    /// with a visible node below it, and for `maxDepth` for the number of levels of the subtree.
    /// Costs the number of nodes that are not remembered, plus the depth. Throws `std::bad_alloc`.
    const KUVMathPoint2Df& ComputeIcicleSize(unsigned int nLastNodes,
                                             unsigned char relativeToMinDepth,
                                             unsigned char inlineLabels, unsigned int depth,
                                             unsigned int minDepth, unsigned int maxDepth);
    /// The same, using what is remembered but storing nothing in any cache.
    KUVMathPoint2Df ComputeIcicleSize(unsigned int nLastNodes, unsigned char relativeToMinDepth,
                                      unsigned char inlineLabels, unsigned int depth,
                                      unsigned int minDepth, unsigned int maxDepth) const;

    /// The node's first column: where its parent's columns end, 0 without a parent with a cache.
    /// Stored here; the const form stores nothing. Costs the depth when not stored.
    unsigned int ComputeIcicleCursor();
    unsigned int ComputeIcicleCursor() const;

    /// 1 when the node's last column is one of the `nLastNodes` last ones, counted back from the
    /// column where the first leaf below it ends.
    ///
    /// A merged top root never is, and every other node is without a limit. Else 0 without a node
    /// or when the leaf has no cache. Computes cursors, and stores them unless const.
    unsigned char IsIcicleNodeVisibleFromLeaves(unsigned int nLastNodes);
    unsigned char IsIcicleNodeVisibleFromLeaves(unsigned int nLastNodes) const;

    /// The smallest column in which a node of the subtree that is visible from the leaves begins,
    /// when this one begins in `depth`; 0x7FFFFFFF when there is none. Merged nodes take no columns
    /// here. Throws `std::bad_alloc`.
    int ComputeMinDepthWithVisibility(int depth, int nLastNodes) const;

    /// Width of one of the node's columns.
    int GetMinIciclePlotSizeMajor() const;

    // ---- keyboard navigation: called on the cache of the selection, give the node to go to

    /// The next rectangle above (below) that reaches past the column `cursor`, the node itself at
    /// the edge of the plot of `currentRoot`; null without a node. `cursor` is raised to the first
    /// of the `nLastNodes` last columns.
    VisDataTree* GetNextNodeIcicleUpDirection(unsigned int& cursor, VisDataTree* currentRoot,
                                              unsigned int nLastNodes);
    VisDataTree* GetNextNodeIcicleDownDirection(unsigned int& cursor, VisDataTree* currentRoot,
                                                unsigned int nLastNodes);
    /// The parent, which remembers the way back, with its last column as `cursor`; the node itself
    /// when it is `currentRoot`, stands in the first of the last columns or has no parent with a
    /// cache.
    VisDataTree* GetNextNodeIcicleLeftDirection(unsigned int& cursor, VisDataTree* currentRoot,
                                                unsigned int nLastNodes);
    /// The child from which navigation came last, else the last child, with its first column as
    /// `cursor`; a childless node itself.
    VisDataTree* GetNextNodeIcicleRightDirection(unsigned int& cursor);

protected:
    void InternalResetCache() override;

private:
    friend struct VisIcicleAccess;

    KUVMathPoint2Df icicleSize_{-1.0f, -1.0f};
    KUVMathPoint2Df graphicalSize_{-1.0f, -1.0f};
    unsigned int colSpan_ = 1;
    unsigned int cursor_ = 0xFFFFFFFFU;
    // Only ever compared with the caches of the node's children: it may be gone.
    VisIcicleLayoutCache* lastVisitedChild_ = nullptr;
    unsigned int lastNLastNodes_ = 0xFFFFFFFFU;
    unsigned char lastInlineLabels_ = 0;
    unsigned char stretchedLeaves_ = 0;
};

#endif
