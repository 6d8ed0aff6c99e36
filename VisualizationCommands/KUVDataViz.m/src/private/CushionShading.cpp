#include "private/CushionShading.h"

#include "private/CushionLight.h"
#include "private/CushionPicture.h"
#include "private/CushionShadingAvx2.h"
#include "private/SaturatingCast.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

using CushionGeometry::Span;

namespace CushionShading {

namespace {

void ShadePlainly(const Canvas& canvas, const Patch& patch)
{
    const Tint tint = TintOf(patch.colour);
    for (int y = patch.box.bottom; y <= patch.box.top; ++y) {
        const float ny = NormalAt(patch.surface.y, y);
        unsigned char* pixel = PixelAt(canvas, patch.box.left, y);
        for (int x = patch.box.left; x <= patch.box.right; ++x, pixel += 4) {
            const auto intensity =
                static_cast<float>(IntensityOf(NormalAt(patch.surface.x, x), ny));
            pixel[0] = ByteOf(intensity, tint.red);
            pixel[1] = ByteOf(intensity, tint.green);
            pixel[2] = ByteOf(intensity, tint.blue);
            pixel[3] = 255;
        }
    }
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

bool IsAvailable(Way way) { return way == Way::Plain || HasAvx2(); }

void ShadeBy(Way way, const Canvas& canvas, const Patch& patch)
{
    if (patch.box.IsEmpty())
        return;
    if (way == Way::Avx2)
        ShadeWithAvx2(canvas, patch);
    else
        ShadePlainly(canvas, patch);
}

void Shade(const Canvas& canvas, const Patch& patch)
{
    static const Way best = IsAvailable(Way::Avx2) ? Way::Avx2 : Way::Plain;
    ShadeBy(best, canvas, patch);
}

// ---- pictures

/// The part of the node's box from `first` to `last` along the axis.
void Cover::AddGap(int first, int last, std::vector<PixelBox>& gaps) const
{
    PixelBox gap = whole_;
    (axis_ == VisAxis::X ? gap.left : gap.bottom) = first;
    (axis_ == VisAxis::X ? gap.right : gap.top) = last;
    if (!gap.IsEmpty())
        gaps.push_back(gap);
}

void Cover::Add(const PixelBox& child, std::vector<PixelBox>& gaps)
{
    if (child.IsEmpty())
        return;
    AddGap(next_, std::min(Begin(child) - 1, End(whole_)), gaps);
    next_ = std::max(next_, End(child) + 1);
    // A child as high as the node leaves nothing at its sides.
    PixelBox before = child;
    PixelBox behind = child;
    if (axis_ == VisAxis::X) {
        before = {child.left, child.right, whole_.bottom, child.bottom - 1};
        behind = {child.left, child.right, child.top + 1, whole_.top};
    } else {
        before = {whole_.left, child.left - 1, child.bottom, child.top};
        behind = {child.right + 1, whole_.right, child.bottom, child.top};
    }
    for (const PixelBox& gap : {before, behind}) {
        if (!gap.IsEmpty())
            gaps.push_back(gap);
    }
}

void Cover::Finish(std::vector<PixelBox>& gaps) const { AddGap(next_, End(whole_), gaps); }

PixelBox Picture::BoxOf(const CushionGeometry::LocalRectangle& rectangle) const
{
    return PixelsOf({{rectangle.x.begin * scale_, rectangle.x.end * scale_},
                     {rectangle.y.begin * scale_, rectangle.y.end * scale_}},
                    width_, height_);
}

void Picture::AddPatch(const Patch& patch)
{
    if (patch.box.IsEmpty())
        return;
    // Any number of leaves may share the first half column; only the last one shows.
    while (!patches_.empty() && patch.box.Holds(patches_.back().box))
        patches_.pop_back();
    patches_.push_back(patch);
}

void Picture::PaintInto(unsigned char* pixels) const
{
    const Canvas canvas{pixels, width_, height_};
    for (const PixelBox& gap : gaps_)
        FillWhite(canvas, gap);
    for (const Patch& patch : patches_)
        Shade(canvas, patch);
}

}  // namespace CushionShading
