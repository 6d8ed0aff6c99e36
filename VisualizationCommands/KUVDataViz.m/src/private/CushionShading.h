#ifndef CushionShading_h
#define CushionShading_h

#include "private/CushionGeometry.h"

// Shades leaves into an image, pixel by pixel. Whatever the machine and the way taken, the bytes
// are those of the plain loop.

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
    /// Whether all pixels of `other`, which is not empty, are among these.
    bool Holds(const PixelBox& other) const
    {
        return left <= other.left && other.right <= right && bottom <= other.bottom &&
               other.top <= top;
    }
};

/// The pixels of a rectangle (in pixels, not rounded): those whose centres it holds, up to the
/// canvas's edges. None for a rectangle without area.
PixelBox PixelsOf(const CushionGeometry::LocalRectangle& rectangle, int width, int height);

/// A part of the image with one surface and one colour (0x00RRGGBB).
struct Patch {
    PixelBox box = {};
    CushionGeometry::Surface surface;
    unsigned int colour = 0;
};

/// Makes the pixels of `box`, which lies within the canvas, white.
void FillWhite(const Canvas& canvas, const PixelBox& box);

/// Shades a patch, whose box lies within the canvas, in the best way that the machine knows.
void Shade(const Canvas& canvas, const Patch& patch);

/// Ways to shade that the machine may know.
enum class Way {
    /// One pixel after the other: what all other ways have to equal.
    Plain,
    /// Eight pixels at a time.
    Avx2
};

bool IsAvailable(Way way);

/// Shades in one way, which is available.
void ShadeBy(Way way, const Canvas& canvas, const Patch& patch);

}  // namespace CushionShading

#endif
