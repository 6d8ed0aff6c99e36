#ifndef paint_Picture_h
#define paint_Picture_h

#include "KUV2D.h"

#include <functional>
#include <string>

namespace paint {

/// File formats of a picture. `SvgElement` is the same as `Svg`, to stand within an HTML page: the
/// element alone, without declaration and namespaces.
enum class PictureFormat { Png, Svg, Pdf, SvgElement };

/// What a picture shows and how.
struct PictureOptions {
    /// The picture's size in pixels; it shows the world rectangle (0, 0) to (`width`, `height`).
    int width = 0;
    int height = 0;
    /// Width of contours in pixels, 1 to 64. Pictures for dense screens take the scale, rounded.
    int lineWidth = 1;
    /// Family of the label font; empty for the system's sans-serif font.
    std::string fontFamily;
    /// Colour of what no rep covers. Pictures are opaque: the alpha byte is not used.
    KUVColor background{255, 255, 255, 255};
    /// UTF-8. Goes into the SVG's and the PDF's own title; empty for none.
    std::string title;
    /// `SvgElement` only, may be null: what a bag's group starts with instead of a bare `<g>`. A
    /// group that has such a start is written even when nothing else is in it; an empty text is the
    /// bare start.
    std::function<std::string(const KUV2DBagRep&)> groupStart;
};

/// The largest side of a PNG in pixels: image libraries stop there, and so do screens.
constexpr int MAX_PNG_SIDE = 32767;

/// Paints `scene` in child order, the last child on top, and appends the file's bytes to `bytes`.
///
/// Gives an empty text, or the reason why there is no picture, in one line without a file's name;
/// `bytes` are then as they were. Hidden bags are left out with everything in them. Needs a living
/// `PaintSession`; call it on the thread that made the session. Never throws.
///
/// All three formats place everything alike: rectangles cover the pixels whose centres they cover
/// (neighbours neither overlap nor leave a seam), contours lie inside their rectangle, images stand
/// pixel on pixel, texts on whole baselines. A text is cut at the area that the other reps of its
/// bag cover; icons do not count for that.
///
/// A PNG costs memory for at most 16 Mi pixels at a time, whatever its size.
std::string PaintPicture(const KUV2DBagRep& scene, const PictureOptions& options,
                         PictureFormat format, std::string& bytes);

}  // namespace paint

#endif
