#ifndef core_PixelMemory_h
#define core_PixelMemory_h

#include "KUVExport.h"

#include <cstddef>

namespace core {

/// Asked before every allocation of pixels: false makes it fail. For tests.
using PixelAllocationHook = bool (*)(std::size_t bytes);

/// Sets the hook, or takes it away with null.
KUV_EXPORT void SetPixelAllocationHook(PixelAllocationHook hook);

/// Buffers of `KUVAllocatePixels` that were not freed yet, those that images hold included.
KUV_EXPORT std::size_t CountPixelBuffers();

/// What all images that live now cost in memory: the sum of `KUVPixelImage::GetByteCost`.
KUV_EXPORT std::size_t SumImageBytes();

}  // namespace core

#endif
