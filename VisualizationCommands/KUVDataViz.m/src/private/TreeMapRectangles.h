#ifndef TreeMapRectangles_h
#define TreeMapRectangles_h

#include "VisTreeMapLayout.h"

/// Writes the rectangles of `root` and of all nodes below it that show by slice-and-dice into their
/// tree map caches, and nothing else: no views, no flags. Nothing without a tree map cache at
/// `root`. Minimum sizes are computed where they are not remembered.
void LayOutTreeMapRectangles(VisDataTree* root, VisTreeMap_SliceDice mode,
                             const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size);

#endif
