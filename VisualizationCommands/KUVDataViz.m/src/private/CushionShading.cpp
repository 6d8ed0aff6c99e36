#include "private/CushionShading.h"

#include "private/SaturatingCast.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

using CushionGeometry::Span;
using CushionGeometry::Surface;

namespace CushionShading {

namespace {

constexpr float AMBIENT = 40.0f;
constexpr float DIFFUSE = 215.0f;
constexpr float LIGHT_X = 0.09759f;
constexpr float LIGHT_Y = 0.19518f;
constexpr float LIGHT_Z = 0.9759f;
constexpr int MAX_INTENSITY = 255;

/// A colour's share of each intensity.
struct Tint {
    float red;
    float green;
    float blue;
};

Tint TintOf(unsigned int colour)
{
    return {static_cast<float>((colour >> 16U) & 255U) / 255.0f,
            static_cast<float>((colour >> 8U) & 255U) / 255.0f,
            static_cast<float>(colour & 255U) / 255.0f};
}

unsigned char ByteOf(float intensity, float share)
{
    return static_cast<unsigned char>(TruncateToInt(intensity * share));
}

void WritePixel(unsigned char* pixel, int intensity, const Tint& tint)
{
    const auto value = static_cast<float>(intensity);
    pixel[0] = ByteOf(value, tint.red);
    pixel[1] = ByteOf(value, tint.green);
    pixel[2] = ByteOf(value, tint.blue);
    pixel[3] = 255;
}

unsigned char* PixelAt(const Canvas& canvas, int x, int y)
{
    const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(canvas.width);
    return canvas.pixels + (row + static_cast<std::size_t>(x)) * 4U;
}

/// How the normal leans along one axis in the middle of a pixel.
float NormalAt(const CushionGeometry::Parabola& parabola, int pixel)
{
    const float middle = static_cast<float>(pixel) + 0.5f;
    return -(2.0f * parabola.quadratic * middle + parabola.linear);
}

int IntensityOf(float nx, float ny)
{
    const float cosine =
        (LIGHT_X * nx + LIGHT_Y * ny + LIGHT_Z) * DIFFUSE / std::sqrt(nx * nx + ny * ny + 1.0f);
    // Written so that not-a-number counts as dark.
    const float lit = cosine > 0.0f ? cosine : 0.0f;
    return std::min(TruncateToInt(lit + AMBIENT), MAX_INTENSITY);
}

/// First and last pixel of a span (in pixels) that have their centres in it.
void PixelsAlong(const Span& span, int count, int& first, int& last)
{
    first = std::max(TruncateToInt(span.begin + 0.5f), 0);
    last = std::min(TruncateToInt(span.end - 0.5f), count - 1);
}

}  // namespace

PixelBox PixelsOf(const CushionGeometry::LocalRectangle& rectangle, int width, int height)
{
    PixelBox box{0, -1, 0, -1};
    const bool hasArea = rectangle.x.end > rectangle.x.begin && rectangle.y.end > rectangle.y.begin;
    if (!hasArea)
        return box;
    PixelsAlong(rectangle.x, width, box.left, box.right);
    PixelsAlong(rectangle.y, height, box.bottom, box.top);
    return box;
}

void FillWhite(const Canvas& canvas, const PixelBox& box)
{
    if (box.IsEmpty())
        return;
    const std::size_t bytes = (static_cast<std::size_t>(box.right - box.left) + 1U) * 4U;
    for (int y = box.bottom; y <= box.top; ++y)
        std::memset(PixelAt(canvas, box.left, y), 255, bytes);
}

void ShadePlainly(const Canvas& canvas, const Patch& patch)
{
    const Tint tint = TintOf(patch.colour);
    for (int y = patch.box.bottom; y <= patch.box.top; ++y) {
        const float ny = NormalAt(patch.surface.y, y);
        unsigned char* pixel = PixelAt(canvas, patch.box.left, y);
        for (int x = patch.box.left; x <= patch.box.right; ++x, pixel += 4)
            WritePixel(pixel, IntensityOf(NormalAt(patch.surface.x, x), ny), tint);
    }
}

void Shade(const Canvas& canvas, const Patch& patch) { ShadePlainly(canvas, patch); }

}  // namespace CushionShading
