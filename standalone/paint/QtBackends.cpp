#include "paint/QtBackends.h"

#include <QImage>
#include <QImageReader>

#include <cstring>
#include <new>

namespace paint {

namespace {

QString Characters(std::initializer_list<char32_t> codePoints)
{
    QString text;
    for (const char32_t codePoint : codePoints) {
        const char32_t shown = ShownCodePoint(codePoint);
        text += QString::fromUcs4(&shown, 1);
    }
    return text;
}

}  // namespace

QtFontBackend::QtFontBackend(const std::string& family) : fonts_(family) {}

float QtFontBackend::Advance(char32_t codePoint, float size)
{
    return static_cast<float>(
        fonts_.AtSize(size).metrics.horizontalAdvance(Characters({codePoint})));
}

float QtFontBackend::Kerning(char32_t left, char32_t right, float size)
{
    const QFontMetricsF& metrics = fonts_.AtSize(size).metrics;
    return static_cast<float>(metrics.horizontalAdvance(Characters({left, right})) -
                              metrics.horizontalAdvance(Characters({left})) -
                              metrics.horizontalAdvance(Characters({right})));
}

float QtFontBackend::Ascent(float size) { return static_cast<float>(fonts_.AtSize(size).above); }

float QtFontBackend::Descent(float size) { return static_cast<float>(fonts_.AtSize(size).below); }

KUVPixelImage* QtImageBackend::Load(const std::string& path)
{
    constexpr int LARGEST_SIDE = 16384;
    QImageReader reader(QString::fromStdString(path));
    const QSize announced = reader.size();
    if (announced.width() > LARGEST_SIDE || announced.height() > LARGEST_SIDE)
        return nullptr;
    const QImage file = reader.read().convertToFormat(QImage::Format_RGBA8888);
    const int width = file.width();
    const int height = file.height();
    if (width < 1 || height < 1)
        return nullptr;
    const std::size_t rowBytes = static_cast<std::size_t>(width) * 4;
    unsigned char* const pixels = KUVAllocatePixels(rowBytes * static_cast<std::size_t>(height));
    if (!pixels)
        return nullptr;
    for (int y = 0; y < height; ++y)
        std::memcpy(pixels + rowBytes * static_cast<std::size_t>(height - 1 - y),
                    file.constScanLine(y), rowBytes);
    return new (std::nothrow) KUVPixelImage(width, height, KUVPixelFormat_RGBA8, pixels, 1);
}

}  // namespace paint
