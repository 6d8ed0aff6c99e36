#ifndef CushionRectangles_h
#define CushionRectangles_h

#include "VisTreeMapLayout.h"

/// Writes values, surfaces and rectangles of `root` and of all nodes below it into their cushion
/// caches, as a drawing does, and nothing else: no views, no flags, no image. Nothing without a
/// cushion cache at `root`. Values are added up unless the root's are remembered.
void LayOutCushions(VisDataTree* root, VisTreeMap_SliceDice mode, const KUVMathPoint2Df& origin,
                    const KUVMathPoint2Df& size);

#endif
