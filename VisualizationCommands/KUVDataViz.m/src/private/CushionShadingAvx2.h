#ifndef CushionShadingAvx2_h
#define CushionShadingAvx2_h

#include "private/CushionShading.h"

namespace CushionShading {

/// Whether the machine knows AVX2.
bool HasAvx2();

/// Shades a patch, which is not empty, eight pixels at a time. Only where there is AVX2.
void ShadeWithAvx2(const Canvas& canvas, const Patch& patch);

}  // namespace CushionShading

#endif
