#ifndef CushionGeometry_h
#define CushionGeometry_h

#include "VisTreeMapLayout.h"

#include "KUVStringsMath.h"

// The arithmetic of the cushion tree map without nodes, views or host. Lengths are in layout units,
// places relative to the origin of the drawing. The floats are computed in the order in which they
// are written.

namespace CushionGeometry {

/// The height from which the ridges of the levels below the current root descend.
constexpr float INITIAL_HEIGHT = 0.5f;
/// By which ridges are lower from level to level.
constexpr float HEIGHT_FACTOR = 0.85f;

/// The axis along which the children of a node cut in `mode` follow each other. The node that is
/// drawn as a whole may have any mode.
inline VisTreeMap_SliceDice ChildModeOf(VisTreeMap_SliceDice mode)
{
    return static_cast<VisTreeMap_SliceDice>((static_cast<unsigned int>(mode) + 1U) % 2U);
}

/// The two ends of a rectangle along one axis.
struct Span {
    float begin;
    float end;
};

struct LocalRectangle {
    Span x;
    Span y;
};

/// A rectangle in the layout's coordinates as seen from the origin of the drawing.
inline LocalRectangle LocalTo(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& position,
                              const KUVMathPoint2Df& size)
{
    const float x = position.x - origin.x;
    const float y = position.y - origin.y;
    return {{x, x + size.x}, {y, y + size.y}};
}

/// A sum of parabolas along one axis: linear and quadratic coefficients.
struct Parabola {
    float linear = 0.0f;
    float quadratic = 0.0f;

    /// Adds a ridge over a span, of zero height at its ends. A span without extent has none.
    void AddRidge(float height, const Span& span)
    {
        if (!(span.end > span.begin))
            return;
        linear += 4.0f * height * (span.begin + span.end) / (span.end - span.begin);
        quadratic -= 4.0f * height / (span.end - span.begin);
    }
};

struct Surface {
    Parabola x;
    Parabola y;
};

/// Deals out the spans of a node's children, one after the other, in proportion to their values.
class Strips {
public:
    /// Without any value to share out (a total of 0) all children get an empty span at the
    /// beginning.
    Strips(const Span& whole, long long total)
        : next_(whole.begin),
          unit_(total == 0 ? 0.0f : (whole.end - whole.begin) / static_cast<float>(total))
    {
    }

    Span Next(long long value)
    {
        const float begin = next_;
        next_ = begin + static_cast<float>(value) * unit_;
        return {begin, next_};
    }

private:
    float next_;
    float unit_;
};

}  // namespace CushionGeometry

#endif
