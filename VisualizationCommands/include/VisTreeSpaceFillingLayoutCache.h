#ifndef VisTreeSpaceFillingLayoutCache_h
#define VisTreeSpaceFillingLayoutCache_h

#include "KUVStringsMath.h"
#include "VisDataTree.h"
#include "VisExport.h"

class VisTreeSpaceFillingView;

/// What a space-filling layout keeps for one node: its rectangle, the smallest size at which it can
/// be shown opened, and its view.
///
/// Made by a layout's `GenerateCache`, linked to its node and owned by the layout, which also fills
/// it in: there are no public setters. Owns its view.
class VIS_EXPORT VisTreeSpaceFillingLayoutCache : public VisDataTree::VisDataTreeCache {
public:
    explicit VisTreeSpaceFillingLayoutCache(VisDataTree* node);
    /// Copies everything but the node and the view: the copy has neither.
    VisTreeSpaceFillingLayoutCache(VisTreeSpaceFillingLayoutCache& other);
    /// Copies everything but the node and the view; this cache keeps its own view, and its node
    /// under the rules of the node cache.
    VisTreeSpaceFillingLayoutCache& operator=(VisTreeSpaceFillingLayoutCache& other);
    /// Destroys the view. The node is not told.
    ~VisTreeSpaceFillingLayoutCache() override;

    /// The corner of the node's rectangle with the smallest coordinates, in layout coordinates.
    const KUVMathPoint2Df& GetPos() const { return position_; }
    /// The extent of the node's rectangle.
    const KUVMathPoint2Df& GetSize() const { return size_; }
    /// (-1, -1) when it has to be computed.
    const KUVMathPoint2Df& GetComputedMinimumSize() const { return computedMinimumSize_; }
    /// Null while the node is not shown.
    const VisTreeSpaceFillingView* GetView() const { return view_; }
    VisTreeSpaceFillingView* GetView() { return view_; }

protected:
    /// Forgets the computed minimum size.
    void InternalResetCache() override;

private:
    friend struct VisCacheAccess;

    KUVMathPoint2Df position_;
    KUVMathPoint2Df size_;
    KUVMathPoint2Df computedMinimumSize_{-1.0F, -1.0F};
    VisTreeSpaceFillingView* view_ = nullptr;
};

#endif
