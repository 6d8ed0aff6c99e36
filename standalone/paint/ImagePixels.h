#ifndef paint_ImagePixels_h
#define paint_ImagePixels_h

#include "KUV2D.h"

#include <QImage>

#include <string>

namespace paint {

/// `count` pixels of `row`, a row of an image in `format`, as 0xAARRGGBB with the colours
/// multiplied by alpha; `opaque` sets every alpha to 255.
void PremultiplyRow(const unsigned char* row, KUVPixelFormat format, bool opaque, int count,
                    QRgb* result);

/// Whether some pixel is not fully opaque.
bool HasTransparentPixels(const KUVPixelImage& image);

/// A copy for Qt, first row at the top, colours not multiplied by alpha; null when there is no
/// memory.
QImage ToQImage(const KUVPixelImage& image, bool opaque);

/// The image as the bytes of a PNG file. Throws `std::bad_alloc`.
std::string EncodePng(const KUVPixelImage& image, bool opaque);

/// `image` stretched smoothly to `width` x `height`, colours multiplied by alpha.
QImage Stretched(const KUVPixelImage& image, bool opaque, int width, int height);

}  // namespace paint

#endif
