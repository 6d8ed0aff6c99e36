#include "paint/PdfSink.h"

#include "paint/ImagePixels.h"

namespace paint {

namespace {

QColor ToQColor(KUVColor color) { return {color.r, color.g, color.b, color.a}; }

QRectF ToQRect(const PixelBox& box) { return QRectF(box.left, box.top, box.Width(), box.Height()); }

}  // namespace

PdfSink::PdfSink(QPainter& painter, LabelFonts& fonts) : painter_(painter), fonts_(fonts)
{
    // Else images would be compressed with losses, which shows on the small patterns.
    painter_.setRenderHint(QPainter::LosslessImageRendering);
}

void PdfSink::FillBox(const PixelBox& box, KUVColor color)
{
    painter_.fillRect(ToQRect(box), ToQColor(color));
}

void PdfSink::OutlineBox(const PixelBox& box, int width, KUVColor color)
{
    QPen pen(ToQColor(color), width);
    pen.setJoinStyle(Qt::MiterJoin);
    painter_.setPen(pen);
    painter_.setBrush(Qt::NoBrush);
    const double half = width / 2.0;
    painter_.drawRect(ToQRect(box).adjusted(half, half, -half, -half));
}

void PdfSink::Polygon(const std::vector<PixelPoint>& points, bool filled, KUVColor color)
{
    QPolygonF polygon;
    for (const PixelPoint& point : points)
        polygon.append(QPointF(point.x, point.y));
    painter_.setPen(filled ? QPen(Qt::NoPen) : QPen(ToQColor(color), 1.0));
    painter_.setBrush(filled ? QBrush(ToQColor(color)) : QBrush(Qt::NoBrush));
    painter_.drawPolygon(polygon);
}

void PdfSink::Image(const PlacedImage& image)
{
    int width = 0;
    int height = 0;
    image.image->GetSize(width, height);
    constexpr qint64 SMALL = 1 << 16;
    if (static_cast<qint64>(width) * height > SMALL) {
        painter_.drawImage(ToQRect(image.box), ToQImage(*image.image, !image.hasAlpha));
        return;
    }
    QImage& shown = kept_[{image.image, image.hasAlpha}];
    if (shown.isNull())
        shown = ToQImage(*image.image, !image.hasAlpha);
    painter_.drawImage(ToQRect(image.box), shown);
}

void PdfSink::Text(const PlacedText& text)
{
    if (!fonts_.HasFont())
        return;
    const TextPlacement placed = fonts_.Place(text);
    painter_.setFont(fonts_.AtSize(text.size).font);
    painter_.setPen(ToQColor(text.color));
    if (placed.needsClip) {
        painter_.save();
        painter_.setClipRect(ToQRect(text.clip));
    }
    painter_.drawText(QPointF(placed.left, placed.baseline), placed.shown);
    if (placed.needsClip)
        painter_.restore();
}

}  // namespace paint
