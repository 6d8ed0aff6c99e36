#ifndef NodeViewGeometry_h
#define NodeViewGeometry_h

#include "KUV2D.h"
#include "VisTreeSpaceFillingView.h"

// Where the icon and the label of a node stand. Pure functions of a rectangle and a few lengths, in
// 2D world units; the floats are computed in the order in which they are written.

/// Lower left corner and extent of a node on the screen.
struct NodeRectangle {
    float x = 0.0f;
    float y = 0.0f;
    float width = 0.0f;
    float height = 0.0f;
};

/// Where an icon goes, if it fits.
struct IconPlace {
    bool fits = false;
    KUVMathPoint2Df lowerLeft;
};

/// Where a label is anchored and the width that it may take.
struct LabelPlace {
    KUVMathPoint2Df point;
    KUVAnchorPoint anchor = KUVAnchorPoint_UpperLeft;
    float width = 0.0f;
};

/// Places an icon of `icon` units. `labelBand` is the height kept free for a label above or below
/// it, 0 for a node without label.
IconPlace PlaceIcon(const NodeRectangle& node, const KUVMathPoint2Df& icon,
                    VisTreeSpaceFillingView::Position position, float labelBand);

/// Places a label that has no icon beside it: at the upper left corner, or `centred`.
LabelPlace PlaceLabel(const NodeRectangle& node, bool centred);

/// Places a label beside an icon of `icon` units; `band` is the height of a line of text.
LabelPlace PlaceLabelBesideIcon(const NodeRectangle& node, bool centred,
                                const KUVMathPoint2Df& icon,
                                VisTreeSpaceFillingView::Position position, float band);

#endif
