#include "paint/PngWriter.h"

#include <gtest/gtest.h>

#include <QImage>

#include <random>

namespace {

using paint::PngWriter;

QImage Decode(const std::string& file)
{
    return QImage::fromData(reinterpret_cast<const uchar*>(file.data()),
                            static_cast<int>(file.size()), "png");
}

/// Noise, flat areas, slopes and repeated rows, so that every filter has its turn.
unsigned char Sample(int x, int y, int channel)
{
    if (y % 7 < 2)
        return static_cast<unsigned char>(x + 3 * channel);
    if (y % 7 < 5)
        return static_cast<unsigned char>(40 * channel);
    const unsigned int mixed = static_cast<unsigned int>(x) * 2654435761U +
                               static_cast<unsigned int>(y) * 40503U +
                               static_cast<unsigned int>(channel) * 97U;
    return static_cast<unsigned char>(mixed >> 13U);
}

std::string Write(int width, int height, PngWriter::Channels channels, int piece)
{
    std::string file;
    PngWriter writer(file, width, height, channels);
    const int rows = piece * writer.GetBlockRows();
    for (int first = 0; first < height; first += rows)
        writer.Add(std::min(rows, height - first), [=](int y, unsigned char* row) {
            for (int x = 0; x < width; ++x)
                for (int channel = 0; channel < static_cast<int>(channels); ++channel)
                    *row++ = Sample(x, y, channel);
        });
    return file;
}

TEST(PngWriter, EveryPixelComesBack)
{
    for (const auto& [width, height] :
         {std::pair(1, 1), {3, 2}, {1, 1000}, {700, 1}, {1000, 1200}}) {
        const QImage image = Decode(Write(width, height, PngWriter::Channels::Rgb, 1000));
        ASSERT_EQ(image.size(), QSize(width, height));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(image.pixel(x, y),
                          qRgb(Sample(x, y, 0), Sample(x, y, 1), Sample(x, y, 2)))
                    << x << ' ' << y << " of " << width << " x " << height;
    }
}

TEST(PngWriter, AlphaComesBack)
{
    const QImage image = Decode(Write(300, 200, PngWriter::Channels::Rgba, 1000))
                             .convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(image.size(), QSize(300, 200));
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 300; ++x)
            ASSERT_EQ(image.pixel(x, y),
                      qRgba(Sample(x, y, 0), Sample(x, y, 1), Sample(x, y, 2), Sample(x, y, 3)));
}

TEST(PngWriter, TheBytesDoNotDependOnThePiecesInWhichRowsAreAdded)
{
    const std::string whole = Write(1000, 2000, PngWriter::Channels::Rgb, 1000);
    EXPECT_EQ(whole, Write(1000, 2000, PngWriter::Channels::Rgb, 1));
    EXPECT_EQ(whole, Write(1000, 2000, PngWriter::Channels::Rgb, 2));
}

TEST(PngWriter, FlatPicturesAreSmall)
{
    std::string file;
    PngWriter writer(file, 4000, 3000, PngWriter::Channels::Rgb);
    writer.Add(3000, [](int, unsigned char* row) { std::fill_n(row, 12000, 200); });
    EXPECT_LT(file.size(), 200000U);
}

}  // namespace
