#include "paint/RasterSink.h"

#include "paint/ImagePixels.h"

#include <algorithm>

namespace paint {

namespace {

/// `above`, premultiplied, over the opaque `below`.
QRgb Over(QRgb above, QRgb below)
{
    const unsigned int rest = 255U - static_cast<unsigned int>(qAlpha(above));
    if (rest == 0)
        return above;
    const auto channel = [rest](int top, int bottom) {
        const unsigned int product = static_cast<unsigned int>(bottom) * rest + 128U;
        return top + static_cast<int>((product + (product >> 8U)) >> 8U);
    };
    return qRgb(channel(qRed(above), qRed(below)), channel(qGreen(above), qGreen(below)),
                channel(qBlue(above), qBlue(below)));
}

QColor ToQColor(KUVColor color) { return {color.r, color.g, color.b, color.a}; }

}  // namespace

RasterSink::RasterSink(QImage& band, int firstRow, LabelFonts& fonts)
    : band_(band), fonts_(fonts), visible_{0, firstRow, band.width(), firstRow + band.height()},
      painter_(&band), rowPixels_(static_cast<std::size_t>(band.width()))
{
    // Nobody else holds the pixels, so this does not detach them from the painter.
    pixels_ = band.bits();
    painter_.setRenderHint(QPainter::TextAntialiasing);
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.translate(0, -firstRow);
}

QRgb* RasterSink::Line(int row)
{
    return reinterpret_cast<QRgb*>(pixels_ + band_.bytesPerLine() * (row - visible_.top));
}

void RasterSink::BlendRow(const QRgb* pixels, int row, int left, int right)
{
    QRgb* const line = Line(row);
    for (int x = left; x < right; ++x)
        line[x] = Over(pixels[x - left], line[x]);
}

void RasterSink::FillBox(const PixelBox& box, KUVColor color)
{
    const PixelBox seen = Intersection(box, visible_);
    if (seen.IsEmpty() || color.a == 0)
        return;
    const QRgb pixel = qPremultiply(qRgba(color.r, color.g, color.b, color.a));
    for (int y = seen.top; y < seen.bottom; ++y) {
        QRgb* const line = Line(y);
        if (color.a == 255)
            std::fill(line + seen.left, line + seen.right, pixel);
        else
            std::transform(line + seen.left, line + seen.right, line + seen.left,
                           [pixel](QRgb below) { return Over(pixel, below); });
    }
}

void RasterSink::OutlineBox(const PixelBox& box, int width, KUVColor color)
{
    const int innerTop = box.top + width;
    const int innerBottom = box.bottom - width;
    FillBox({box.left, box.top, box.right, innerTop}, color);
    FillBox({box.left, innerBottom, box.right, box.bottom}, color);
    FillBox({box.left, innerTop, box.left + width, innerBottom}, color);
    FillBox({box.right - width, innerTop, box.right, innerBottom}, color);
}

void RasterSink::Polygon(const std::vector<PixelPoint>& points, bool filled, KUVColor color)
{
    QPolygonF polygon;
    for (const PixelPoint& point : points)
        polygon.append(QPointF(point.x, point.y));
    painter_.setPen(filled ? QPen(Qt::NoPen) : QPen(ToQColor(color), 1.0));
    painter_.setBrush(filled ? QBrush(ToQColor(color)) : QBrush(Qt::NoBrush));
    painter_.drawPolygon(polygon);
}

void RasterSink::Image(const PlacedImage& image)
{
    const PixelBox seen = Intersection(image.box, visible_);
    if (seen.IsEmpty())
        return;
    if (image.isUnscaled)
        PaintUnscaled(image, seen);
    else
        PaintStretched(image, seen);
}

void RasterSink::PaintUnscaled(const PlacedImage& image, const PixelBox& seen)
{
    const KUVPixelFormat format = image.image->GetFormat();
    const std::size_t bytesPerPixel = format == KUVPixelFormat_Grey8  ? 1
                                      : format == KUVPixelFormat_RGB8 ? 3
                                                                      : 4;
    const std::size_t skipped =
        static_cast<std::size_t>(seen.left - image.box.left) * bytesPerPixel;
    const unsigned char* converted = nullptr;
    for (int y = seen.top; y < seen.bottom; ++y) {
        const unsigned char* const row = image.image->GetRow(image.box.bottom - 1 - y);
        if (!row)
            continue;
        // Equal rows are mostly kept once: what was converted last often serves again.
        if (row != converted)
            PremultiplyRow(row + skipped, format, !image.hasAlpha, seen.Width(), rowPixels_.data());
        converted = row;
        BlendRow(rowPixels_.data(), y, seen.left, seen.right);
    }
}

void RasterSink::PaintStretched(const PlacedImage& image, const PixelBox& seen)
{
    const int width = image.box.Width();
    const int height = image.box.Height();
    // Something far larger than the picture is not worth making to show a corner of it.
    if (static_cast<double>(width) * height > 4.0 * band_.width() * (band_.height() + 1024.0))
        return;
    QImage& shown = stretched_[{image.image, width, height, image.hasAlpha}];
    if (shown.isNull())
        shown = Stretched(*image.image, !image.hasAlpha, width, height);
    if (shown.isNull())
        return;
    for (int y = seen.top; y < seen.bottom; ++y) {
        const auto* const line =
            reinterpret_cast<const QRgb*>(shown.constScanLine(y - image.box.top));
        BlendRow(line + (seen.left - image.box.left), y, seen.left, seen.right);
    }
}

void RasterSink::Text(const PlacedText& text)
{
    if (Intersection(text.clip, visible_).IsEmpty())
        return;
    if (!fonts_.HasFont())
        return;
    const TextPlacement placed = fonts_.Place(text);
    painter_.setFont(fonts_.AtSize(text.size).font);
    painter_.setPen(ToQColor(text.color));
    if (placed.needsClip)
        painter_.setClipRect(text.clip.left, text.clip.top, text.clip.Width(), text.clip.Height());
    painter_.drawText(QPointF(placed.left, placed.baseline), placed.shown);
    if (placed.needsClip)
        painter_.setClipping(false);
}

}  // namespace paint
