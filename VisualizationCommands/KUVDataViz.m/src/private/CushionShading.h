#ifndef CushionShading_h
#define CushionShading_h

#include "private/CushionGeometry.h"

// Shades leaves into an image, pixel by pixel. Whatever the machine, the bytes are those of the
// plain loop.

namespace CushionShading {

/// An image under construction: four bytes a pixel (red, green, blue, alpha), bottom row first.
struct Canvas {
    unsigned char* pixels;
    int width;
    int height;
};

/// Some columns and rows, ends included. Empty when an end lies before its beginning.
struct PixelBox {
    int left;
    int right;
    int bottom;
    int top;

    bool IsEmpty() const { return right < left || top < bottom; }
};

/// The pixels of a rectangle (in pixels, not rounded): those whose centres it holds, up to the
/// canvas's edges. None for a rectangle without area.
PixelBox PixelsOf(const CushionGeometry::LocalRectangle& rectangle, int width, int height);

/// A part of the image with one surface and one colour (0x00RRGGBB).
struct Patch {
    PixelBox box;
    CushionGeometry::Surface surface;
    unsigned int colour;
};

/// Makes the pixels of `box` white.
void FillWhite(const Canvas& canvas, const PixelBox& box);

/// Shades a patch, whose box lies within the canvas.
void Shade(const Canvas& canvas, const Patch& patch);

/// The same, one pixel after the other: what all other ways have to equal.
void ShadePlainly(const Canvas& canvas, const Patch& patch);

}  // namespace CushionShading

#endif
