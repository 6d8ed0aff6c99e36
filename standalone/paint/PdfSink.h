#ifndef paint_PdfSink_h
#define paint_PdfSink_h

#include "paint/LabelFonts.h"
#include "paint/PictureSink.h"

#include <QImage>
#include <QPainter>

#include <map>
#include <tuple>

namespace paint {

/// Paints a picture as vectors with a painter that is open on a PDF page of one unit a pixel.
class PdfSink : public PictureSink {
public:
    /// Both must outlive the sink.
    PdfSink(QPainter& painter, LabelFonts& fonts);

    void FillBox(const PixelBox& box, KUVColor color) override;
    void OutlineBox(const PixelBox& box, int width, KUVColor color) override;
    void Polygon(const std::vector<PixelPoint>& points, bool filled, KUVColor color) override;
    void Image(const PlacedImage& image) override;
    void Text(const PlacedText& text) override;

private:
    QPainter& painter_;
    LabelFonts& fonts_;
    /// Small images, kept so that the file holds each of them once.
    std::map<std::tuple<const KUVPixelImage*, bool>, QImage> kept_;
};

}  // namespace paint

#endif
