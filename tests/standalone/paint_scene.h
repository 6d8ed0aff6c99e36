#ifndef tests_standalone_paint_scene_h
#define tests_standalone_paint_scene_h

// Small hand-made display lists for the tests of the painter.

#include "KUV2D.h"
#include "paint/Picture.h"

#include <gtest/gtest.h>

#include <QImage>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace painttest {

struct Releaser {
    void operator()(KUVBaseUnknown* object) const
    {
        if (object)
            object->Release();
    }
};

template <class T>
using Held = std::unique_ptr<T, Releaser>;

constexpr KUVColor RED{255, 0, 0, 255};
constexpr KUVColor GREEN{0, 255, 0, 255};
constexpr KUVColor BLUE{0, 0, 255, 255};
constexpr KUVColor BLACK{0, 0, 0, 255};
constexpr KUVColor WHITE{255, 255, 255, 255};

/// A bag of the scene and what can be put into it; what is put in is owned by the bag.
class Bag {
public:
    Bag() : rep_(KUV2DBagRep::CreateRep()) {}

    KUV2DBagRep& Rep() const { return *rep_; }

    KUV2DPolygonRep* Polygon(const std::vector<float>& points, KUVColor color, bool filled = true)
    {
        KUV2DPolygonRep* const rep = KUV2DPolygonRep::CreateRep(
            points.data(), static_cast<int>(points.size() / 2), filled ? 1 : 0);
        rep->SetColor(color.r, color.g, color.b, color.a);
        return Adopt(rep);
    }

    KUV2DPolygonRep* Box(float x, float y, float width, float height, KUVColor color,
                         bool filled = true)
    {
        return Polygon({x, y, x + width, y, x + width, y + height, x, y + height}, color, filled);
    }

    KUV2DPolygonRep* Contour(float x, float y, float width, float height, KUVColor color)
    {
        return Box(x, y, width, height, color, false);
    }

    KUV2DImagePixelRep* Image(float x, float y, const KUVPixelImage& image, int mode = 0)
    {
        const float corner[] = {x, y};
        KUV2DImagePixelRep* const rep =
            KUV2DImagePixelRep::CreateRep(corner, &image, mode, 0, 0, 0);
        return Adopt(rep);
    }

    KUV2DAnnotationTextRep* Text(float x, float y, const char* text,
                                 KUVAnchorPoint anchor = KUVAnchorPoint_UpperLeft,
                                 float size = 14.0f, KUVColor color = BLACK)
    {
        const float point[] = {x, y};
        KUV2DAnnotationTextRep* const rep = KUV2DAnnotationTextRep::CreateRep(
            point, KUVUnicodeString(text), anchor, size, 0, nullptr, nullptr);
        rep->SetColor(color.r, color.g, color.b, color.a);
        return Adopt(rep);
    }

    Bag Child() const
    {
        Bag child;
        rep_->AddChild(child.rep_.get());
        return child;
    }

private:
    /// The bag's reference is the one that keeps the rep.
    template <class T>
    T* Adopt(T* rep)
    {
        rep_->AddChild(rep);
        rep->Release();
        return rep;
    }

    Held<KUV2DBagRep> rep_;
};

/// An image of `width` x `height` from colours in reading order of a *picture*: the top row first.
inline Held<KUVPixelImage> MakeImage(int width, int height, const std::vector<KUVColor>& topFirst)
{
    const std::size_t count = topFirst.size();
    unsigned char* const pixels = KUVAllocatePixels(count * 4);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const KUVColor& color =
                topFirst[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                         static_cast<std::size_t>(x)];
            const unsigned char bytes[] = {color.r, color.g, color.b, color.a};
            const std::size_t at =
                static_cast<std::size_t>(height - 1 - y) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(x);
            std::memcpy(pixels + at * 4, bytes, 4);
        }
    }
    return Held<KUVPixelImage>(new KUVPixelImage(width, height, KUVPixelFormat_RGBA8, pixels, 1));
}

inline std::string Paint(const Bag& scene, int width, int height, paint::PictureFormat format)
{
    paint::PictureOptions options;
    options.width = width;
    options.height = height;
    std::string bytes;
    EXPECT_EQ(paint::PaintPicture(scene.Rep(), options, format, bytes), "");
    return bytes;
}

inline QImage PaintPng(const Bag& scene, int width, int height)
{
    const std::string bytes = Paint(scene, width, height, paint::PictureFormat::Png);
    return QImage::fromData(reinterpret_cast<const uchar*>(bytes.data()),
                            static_cast<int>(bytes.size()), "png")
        .convertToFormat(QImage::Format_RGB32);
}

inline std::string PaintSvg(const Bag& scene, int width, int height)
{
    return Paint(scene, width, height, paint::PictureFormat::Svg);
}

/// The picture as text: one letter a pixel, top row first. r, g, b, k(black), '.' for white, else
/// '?'.
inline std::vector<std::string> Letters(const QImage& picture)
{
    std::vector<std::string> rows;
    for (int y = 0; y < picture.height(); ++y) {
        std::string row;
        for (int x = 0; x < picture.width(); ++x) {
            switch (picture.pixel(x, y) & 0xFFFFFFU) {
            case 0xFFFFFFU:
                row += '.';
                break;
            case 0xFF0000U:
                row += 'r';
                break;
            case 0x00FF00U:
                row += 'g';
                break;
            case 0x0000FFU:
                row += 'b';
                break;
            case 0x000000U:
                row += 'k';
                break;
            default:
                row += '?';
            }
        }
        rows.push_back(row);
    }
    return rows;
}

using Rows = std::vector<std::string>;

}  // namespace painttest

#endif
