#ifndef IcicleRectangles_h
#define IcicleRectangles_h

#include "VisIcicleLayout.h"

/// Plots `root` and all below it into the rectangle at `origin` without making views: writes sizes,
/// cursors, positions and flags into the icicle caches. `depth` is the column of `root`. Gives the
/// number of columns, 0 without an icicle cache at `root`.
unsigned int LayOutIcicleRectangles(VisDataTree* root, const KUVMathPoint2Df& origin,
                                    const KUVMathPoint2Df& size, unsigned int depth,
                                    unsigned int nLastNodes, unsigned char relativeToMinDepth,
                                    unsigned char inlineLabels);

#endif
