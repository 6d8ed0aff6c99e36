#include "paint/ImagePixels.h"

#include "paint/PngWriter.h"

namespace paint {

namespace {

constexpr QRgb OPAQUE = 0xFF000000U;

constexpr unsigned int BytesOf(KUVPixelFormat format)
{
    return format == KUVPixelFormat_Grey8 ? 1U : format == KUVPixelFormat_RGB8 ? 3U : 4U;
}

QRgb PixelAt(const unsigned char* pixel, KUVPixelFormat format)
{
    switch (format) {
    case KUVPixelFormat_Grey8:
        return qRgb(pixel[0], pixel[0], pixel[0]);
    case KUVPixelFormat_RGB8:
        return qRgb(pixel[0], pixel[1], pixel[2]);
    case KUVPixelFormat_RGBA8:
        break;
    }
    return qRgba(pixel[0], pixel[1], pixel[2], pixel[3]);
}

}  // namespace

void PremultiplyRow(const unsigned char* row, KUVPixelFormat format, bool opaque, int count,
                    QRgb* result)
{
    const std::size_t step = BytesOf(format);
    for (int x = 0; x < count; ++x, row += step) {
        const QRgb pixel = PixelAt(row, format);
        if (opaque || qAlpha(pixel) == 255)
            result[x] = pixel | OPAQUE;
        else
            result[x] = qPremultiply(pixel);
    }
}

bool HasTransparentPixels(const KUVPixelImage& image)
{
    if (image.GetFormat() != KUVPixelFormat_RGBA8)
        return false;
    int width = 0;
    int height = 0;
    image.GetSize(width, height);
    const unsigned char* last = nullptr;
    for (int y = 0; y < height; ++y) {
        const unsigned char* const row = image.GetRow(y);
        // Equal rows are mostly kept once.
        if (!row || row == last)
            continue;
        last = row;
        unsigned char all = 255;
        for (int x = 0; x < width; ++x)
            all &= row[static_cast<std::size_t>(x) * 4 + 3];
        if (all != 255)
            return true;
    }
    return false;
}

QImage ToQImage(const KUVPixelImage& image, bool opaque)
{
    int width = 0;
    int height = 0;
    image.GetSize(width, height);
    QImage copy(width, height, opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32);
    const KUVPixelFormat format = image.GetFormat();
    for (int y = 0; y < copy.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(copy.scanLine(height - 1 - y));
        const unsigned char* row = image.GetRow(y);
        for (int x = 0; x < width; ++x) {
            line[x] = row ? PixelAt(row, format) : 0U;
            if (opaque)
                line[x] |= OPAQUE;
            if (row)
                row += BytesOf(format);
        }
    }
    return copy;
}

std::string EncodePng(const KUVPixelImage& image, bool opaque)
{
    int width = 0;
    int height = 0;
    image.GetSize(width, height);
    std::string file;
    if (width < 1 || height < 1)
        return file;
    const bool withAlpha = !opaque && HasTransparentPixels(image);
    PngWriter writer(file, width, height,
                     withAlpha ? PngWriter::Channels::Rgba : PngWriter::Channels::Rgb);
    writer.Add(height, [&](int y, unsigned char* bytes) {
        const unsigned char* row = image.GetRow(height - 1 - y);
        const KUVPixelFormat format = image.GetFormat();
        for (int x = 0; x < width; ++x) {
            const QRgb pixel = row ? PixelAt(row, format) : 0;
            *bytes++ = static_cast<unsigned char>(qRed(pixel));
            *bytes++ = static_cast<unsigned char>(qGreen(pixel));
            *bytes++ = static_cast<unsigned char>(qBlue(pixel));
            if (withAlpha)
                *bytes++ = static_cast<unsigned char>(qAlpha(pixel));
            if (row)
                row += BytesOf(format);
        }
    });
    return file;
}

QImage Stretched(const KUVPixelImage& image, bool opaque, int width, int height)
{
    return ToQImage(image, opaque)
        .scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
}

}  // namespace paint
