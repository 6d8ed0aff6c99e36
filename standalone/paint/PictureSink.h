#ifndef paint_PictureSink_h
#define paint_PictureSink_h

#include "KUV2D.h"

#include <vector>

namespace paint {

/// Whole pixels, y downwards; right and bottom are the first ones outside.
struct PixelBox {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
    friend bool operator==(const PixelBox&, const PixelBox&) = default;
};

/// What both boxes cover; empty (perhaps with negative sides) when they do not meet.
PixelBox Intersection(const PixelBox& a, const PixelBox& b);
/// The smallest box around both; an empty one does not count.
PixelBox Union(const PixelBox& a, const PixelBox& b);

/// An image to paint: `box` is where it goes, which may reach over the picture's edges.
struct PlacedImage {
    const KUVPixelImage* image = nullptr;
    PixelBox box;
    /// Drawn as large as it is, pixel on pixel.
    bool isUnscaled = true;
    /// Alpha counts; else the image is painted as if it were opaque.
    bool hasAlpha = true;
};

/// A text to paint. The anchor point is in pixels, y downwards, not rounded.
struct PlacedText {
    const KUVUnicodeString* text = nullptr;
    double x = 0.0;
    double y = 0.0;
    KUVAnchorPoint anchor = KUVAnchorPoint_LowerLeft;
    /// Height of the text's line in pixels.
    float size = 0.0f;
    KUVColor color;
    /// Nothing of the text is painted outside; lies within the picture.
    PixelBox clip;
};

struct PixelPoint {
    double x = 0.0;
    double y = 0.0;
};

/// Takes the pieces of a picture in painting order. One for each format.
class PictureSink {
public:
    virtual ~PictureSink() = default;

    /// A bag's pieces stand between these two. The outermost bag has them too.
    virtual void BeginBag(const KUV2DBagRep&) {}
    virtual void EndBag() {}
    /// Fills `box`, which is not empty and lies within the picture.
    virtual void FillBox(const PixelBox& box, KUVColor color) = 0;
    /// Draws a line of `width` pixels inside the edges of `box`, which may reach over the picture's
    /// edges and is larger than twice the line in both directions.
    virtual void OutlineBox(const PixelBox& box, int width, KUVColor color) = 0;
    /// Any other polygon, filled or as a line of one pixel; at least two points, all finite.
    virtual void Polygon(const std::vector<PixelPoint>& points, bool filled, KUVColor color) = 0;
    virtual void Image(const PlacedImage& image) = 0;
    virtual void Text(const PlacedText& text) = 0;
};

/// Hands the shown reps below `scene` to `sink` in painting order, contours as lines of `lineWidth`
/// pixels (1 to 64).
///
/// Reps with coordinates that are not finite, without extent or wholly outside a picture of `width`
/// x `height` pixels are left out, empty texts too. Keeps its own stack: any depth will do, and a
/// bag that hangs in itself is not walked again.
void WalkPicture(const KUV2DBagRep& scene, int width, int height, int lineWidth, PictureSink& sink);

}  // namespace paint

#endif
