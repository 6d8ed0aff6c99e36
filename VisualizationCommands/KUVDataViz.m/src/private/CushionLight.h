#ifndef CushionLight_h
#define CushionLight_h

// What light makes of a surface and a colour: the arithmetic of one pixel, common to all ways of
// shading. Floats are computed in the order in which they are written.

#include "private/CushionShading.h"
#include "private/SaturatingCast.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace CushionShading {

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

inline Tint TintOf(unsigned int colour)
{
    return {static_cast<float>((colour >> 16U) & 255U) / 255.0f,
            static_cast<float>((colour >> 8U) & 255U) / 255.0f,
            static_cast<float>(colour & 255U) / 255.0f};
}

/// How the normal leans along one axis in the middle of a pixel.
inline float NormalAt(const CushionGeometry::Parabola& parabola, int pixel)
{
    const float middle = static_cast<float>(pixel) + 0.5f;
    return -(2.0f * parabola.quadratic * middle + parabola.linear);
}

/// The intensity, from 40 to below 255, of a surface whose normal is (nx, ny, 1).
inline int IntensityOf(float nx, float ny)
{
    const float cosine =
        (LIGHT_X * nx + LIGHT_Y * ny + LIGHT_Z) * DIFFUSE / std::sqrt(nx * nx + ny * ny + 1.0f);
    // Written so that not-a-number counts as dark.
    const float lit = cosine > 0.0f ? cosine : 0.0f;
    return std::min(TruncateToInt(lit + AMBIENT), MAX_INTENSITY);
}

/// One byte of a pixel.
inline unsigned char ByteOf(float intensity, float share)
{
    return static_cast<unsigned char>(TruncateToInt(intensity * share));
}

inline unsigned char* PixelAt(const Canvas& canvas, int x, int y)
{
    const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(canvas.width);
    return canvas.pixels + (row + static_cast<std::size_t>(x)) * 4U;
}

}  // namespace CushionShading

#endif
