#ifndef paint_RasterSink_h
#define paint_RasterSink_h

#include "paint/LabelFonts.h"
#include "paint/PictureSink.h"

#include <QImage>
#include <QPainter>

#include <map>
#include <tuple>
#include <vector>

namespace paint {

/// Paints a band of whole rows of a picture into an image.
///
/// Boxes and images are written straight into the image's rows: that is the exact result, needs no
/// copy of the (possibly picture-sized) textures and is several times as fast as going through the
/// painter, which serves texts and slanted polygons.
class RasterSink : public PictureSink {
public:
    /// `band` is as wide as the picture and shows its rows from `firstRow` on; it must have the
    /// format RGB32 and nobody else may hold its pixels. Both must outlive the sink.
    RasterSink(QImage& band, int firstRow, LabelFonts& fonts);

    void FillBox(const PixelBox& box, KUVColor color) override;
    void OutlineBox(const PixelBox& box, int width, KUVColor color) override;
    void Polygon(const std::vector<PixelPoint>& points, bool filled, KUVColor color) override;
    void Image(const PlacedImage& image) override;
    void Text(const PlacedText& text) override;

private:
    QRgb* Line(int row);
    void BlendRow(const QRgb* pixels, int row, int left, int right);
    void PaintUnscaled(const PlacedImage& image, const PixelBox& seen);
    void PaintStretched(const PlacedImage& image, const PixelBox& seen);

    QImage& band_;
    LabelFonts& fonts_;
    PixelBox visible_;
    unsigned char* pixels_ = nullptr;
    QPainter painter_;
    std::vector<QRgb> rowPixels_;
    /// Icons at the size at which they are shown.
    std::map<std::tuple<const KUVPixelImage*, int, int, bool>, QImage> stretched_;
};

}  // namespace paint

#endif
