#include "paint/Picture.h"

#include "paint/LabelFonts.h"
#include "paint/PdfSink.h"
#include "paint/PngWriter.h"
#include "paint/RasterSink.h"
#include "paint/SvgSink.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QPageSize>
#include <QPdfWriter>

#include <algorithm>
#include <new>

namespace paint {

namespace {

constexpr int MOST_BAND_PIXELS = 1 << 24;

std::string Grouped(int number)
{
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > 3;)
        digits.insert(at -= 3, 1, ',');
    return digits;
}

std::string Size(const PictureOptions& options)
{
    return Grouped(options.width) + " x " + Grouped(options.height);
}

std::string PaintPng(const KUV2DBagRep& scene, const PictureOptions& options, LabelFonts& fonts,
                     std::string& bytes)
{
    const int width = options.width;
    PngWriter writer(bytes, width, options.height, PngWriter::Channels::Rgb);
    const int block = writer.GetBlockRows();
    const int most = MOST_BAND_PIXELS / width;
    const int bandHeight = std::max(block, most - most % block);
    for (int first = 0; first < options.height; first += bandHeight) {
        const int count = std::min(bandHeight, options.height - first);
        QImage band(width, count, QImage::Format_RGB32);
        if (band.isNull())
            throw std::bad_alloc();
        band.fill(qRgb(options.background.r, options.background.g, options.background.b));
        {
            RasterSink sink(band, first, fonts);
            WalkPicture(scene, options.width, options.height, options.lineWidth, sink);
        }
        writer.Add(count, [&band, first, width](int y, unsigned char* row) {
            const auto* const line = reinterpret_cast<const QRgb*>(band.constScanLine(y - first));
            for (int x = 0; x < width; ++x, row += 3) {
                row[0] = static_cast<unsigned char>(qRed(line[x]));
                row[1] = static_cast<unsigned char>(qGreen(line[x]));
                row[2] = static_cast<unsigned char>(qBlue(line[x]));
            }
        });
    }
    return {};
}

std::string PaintSvg(const KUV2DBagRep& scene, const PictureOptions& options, LabelFonts& fonts,
                     SvgSink::Form form, std::string& bytes)
{
    SvgContents contents;
    WalkPicture(scene, options.width, options.height, options.lineWidth, contents);
    SvgSink sink(bytes, options, fonts, contents, form);
    WalkPicture(scene, options.width, options.height, options.lineWidth, sink);
    sink.Finish();
    return {};
}

std::string PaintPdf(const KUV2DBagRep& scene, const PictureOptions& options, LabelFonts& fonts,
                     std::string& bytes)
{
    // A pixel is a point: Qt rounds pages to whole points, so any other unit would cut a row off.
    constexpr int POINTS_AN_INCH = 72;
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(POINTS_AN_INCH);
    writer.setPageSize(QPageSize(QSizeF(options.width, options.height), QPageSize::Point, QString(),
                                 QPageSize::ExactMatch));
    writer.setPageMargins(QMarginsF());
    writer.setTitle(ShownText(KUVUnicodeString(options.title.c_str())));
    writer.setCreator(QStringLiteral("dataviz"));
    QPainter painter;
    if (!painter.begin(&writer))
        return "the PDF cannot be written";
    {
        PdfSink sink(painter, fonts);
        KUVColor background = options.background;
        background.a = 255;
        sink.FillBox({0, 0, options.width, options.height}, background);
        WalkPicture(scene, options.width, options.height, options.lineWidth, sink);
    }
    if (!painter.end())
        return "the PDF cannot be written";
    bytes.append(buffer.data().constData(), static_cast<std::size_t>(buffer.data().size()));
    return {};
}

}  // namespace

std::string PaintPicture(const KUV2DBagRep& scene, const PictureOptions& options,
                         PictureFormat format, std::string& bytes)
{
    if (!qGuiApp)
        return "painting was not started";
    if (options.width < 1 || options.height < 1)
        return "a picture of " + Size(options) + " pixels has nothing to show";
    if (format == PictureFormat::Png && std::max(options.width, options.height) > MAX_PNG_SIDE)
        return "a PNG stops at " + Grouped(MAX_PNG_SIDE) + " pixels a side; the picture has " +
               Size(options);
    const std::size_t before = bytes.size();
    std::string problem;
    try {
        LabelFonts fonts(options.fontFamily);
        switch (format) {
        case PictureFormat::Png:
            problem = PaintPng(scene, options, fonts, bytes);
            break;
        case PictureFormat::Svg:
            problem = PaintSvg(scene, options, fonts, SvgSink::Form::File, bytes);
            break;
        case PictureFormat::SvgElement:
            problem = PaintSvg(scene, options, fonts, SvgSink::Form::Element, bytes);
            break;
        case PictureFormat::Pdf:
            problem = PaintPdf(scene, options, fonts, bytes);
            break;
        }
    } catch (const std::exception&) {
        problem = "out of memory while painting " + Size(options) + " pixels";
    }
    if (!problem.empty())
        bytes.resize(before);
    return problem;
}

}  // namespace paint
