#ifndef NodeTextures_h
#define NodeTextures_h

#include <cstddef>

class KUVPixelImage;

// The pictures that views paint by themselves, pixel by pixel. All images have four bytes a pixel
// (red, green, blue, alpha), bottom row first, and come with one reference for the caller.

/// The largest buffer that `CreatePixels` makes: 1 GiB.
constexpr std::size_t MAX_PIXEL_BYTES = std::size_t{1} << 30U;

/// A buffer for width x height pixels, or null for a side below 1, for more than
/// `MAX_PIXEL_BYTES`, and when memory runs out. Given back with `KUVFreePixels` or to an image.
unsigned char* CreatePixels(int width, int height);

/// An image of `pixels` (width x height, from `CreatePixels`), which it owns. Null, and the buffer
/// is freed, when `pixels` is null or memory runs out.
KUVPixelImage* CreateTextureImage(int width, int height, unsigned char* pixels);

/// The background of a collapsed node: a label band in the node's colour at the top, and below it
/// squares of 5 x 5 pixels, white or (with `dark`) black, 3 pixels apart on the node's colour.
///
/// `colour` is 0xRRGGBBAA, alpha ignored. Null when there is no buffer for it.
KUVPixelImage* CreateGridTexture(int width, int height, unsigned int colour, unsigned char dark,
                                 float scale);

/// A filled rectangle with rounded corners, framed by a line of one pixel or, without frame, with
/// softened corners.
///
/// Colours are 0xRRGGBBAA, alpha ignored. Null when a side is shorter than twice the radius, for a
/// negative radius, and when there is no buffer for it.
KUVPixelImage* CreateRoundedPlate(int width, int height, int radius, unsigned char framed,
                                  unsigned int fill, unsigned int frame);

#endif
