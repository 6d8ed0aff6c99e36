#ifndef core_RepKind_h
#define core_RepKind_h

#include "KUVRep.h"

namespace core {

/// What a rep of the 2D scene is.
enum class RepKind { Bag, Polygon, Image, Text, Other };

/// The kind of `rep`; a class derived from one of the four counts as that one. Costs a few pointer
/// comparisons, so painters can ask it of every rep.
KUV_EXPORT RepKind KindOf(const KUVRep& rep);

}  // namespace core

#endif
