#ifndef CushionPicture_h
#define CushionPicture_h

#include "private/CushionShading.h"

#include "private/ChildOrder.h"

#include <vector>

namespace CushionShading {

/// Finds the pixels of a node that none of its children has: rounding leaves a gap now and then,
/// and a child may not show. The children come in order, one behind the other along an axis.
class Cover {
public:
    Cover(const PixelBox& whole, VisAxis axis) : whole_(whole), axis_(axis), next_(Begin(whole)) {}

    /// Appends what lies beside the next child, and between it and those before it, to `gaps`.
    void Add(const PixelBox& child, std::vector<PixelBox>& gaps);
    /// Appends what lies behind the last child.
    void Finish(std::vector<PixelBox>& gaps) const;

private:
    int Begin(const PixelBox& box) const { return axis_ == VisAxis::X ? box.left : box.bottom; }
    int End(const PixelBox& box) const { return axis_ == VisAxis::X ? box.right : box.top; }
    void AddGap(int first, int last, std::vector<PixelBox>& gaps) const;

    PixelBox whole_;
    VisAxis axis_;
    int next_;
};

/// What there is to paint in a picture. Everything is collected first, so that no pixel has to be
/// made white that is shaded afterwards.
class Picture {
public:
    Picture(int width, int height, float scale) : width_(width), height_(height), scale_(scale) {}

    /// The pixels of a rectangle in layout units.
    PixelBox BoxOf(const CushionGeometry::LocalRectangle& rectangle) const;

    std::vector<PixelBox>& Gaps() { return gaps_; }
    /// Appends a patch; it covers those before it. Empty ones are left out. Throws
    /// `std::bad_alloc`.
    void AddPatch(const Patch& patch);

    /// Paints it all. `pixels` has width x height pixels.
    void PaintInto(unsigned char* pixels) const;

private:
    int width_;
    int height_;
    float scale_;
    std::vector<PixelBox> gaps_;
    std::vector<Patch> patches_;
};

}  // namespace CushionShading

#endif
