#include "private/CushionShading.h"

#include "VisCushionLayout.h"

#include "module/CushionFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <vector>

using CushionGeometry::LocalRectangle;
using CushionGeometry::Surface;
using cushions::Cushion;
using CushionShading::Canvas;
using CushionShading::IsAvailable;
using CushionShading::Patch;
using CushionShading::PixelBox;
using CushionShading::ShadeBy;
using CushionShading::Way;

namespace {

constexpr unsigned char UNTOUCHED = 0x5A;

/// An image with a border of bytes that nobody may touch on both sides.
struct Image {
    Image(int w, int h)
        : width(w), height(h),
          bytes(2 * MARGIN + 4 * static_cast<std::size_t>(w) * static_cast<std::size_t>(h),
                UNTOUCHED)
    {
    }
    Canvas AsCanvas() { return {bytes.data() + MARGIN, width, height}; }

    static constexpr std::size_t MARGIN = 64;
    int width;
    int height;
    std::vector<unsigned char> bytes;
};

/// The shading as it is defined, one pixel after the other: no code shared with the module, doubles
/// only where they are exact.
void ShadeAsDefined(Image& image, const Patch& patch)
{
    const float shares[] = {static_cast<float>(patch.colour >> 16U & 255U) / 255.0f,
                            static_cast<float>(patch.colour >> 8U & 255U) / 255.0f,
                            static_cast<float>(patch.colour & 255U) / 255.0f};
    for (int iy = patch.box.bottom; iy <= patch.box.top; ++iy) {
        for (int ix = patch.box.left; ix <= patch.box.right; ++ix) {
            // volatile keeps every step a 32-bit float of its own.
            volatile float nx = static_cast<float>(ix) + 0.5f;
            nx = 2.0f * patch.surface.x.quadratic * nx;
            nx = -(nx + patch.surface.x.linear);
            volatile float ny = static_cast<float>(iy) + 0.5f;
            ny = 2.0f * patch.surface.y.quadratic * ny;
            ny = -(ny + patch.surface.y.linear);
            volatile float light = 0.09759f * nx;
            volatile float part = 0.19518f * ny;
            light = light + part;
            light = light + 0.9759f;
            light = light * 215.0f;
            volatile float length = nx * nx;
            part = ny * ny;
            length = length + part;
            length = length + 1.0f;
            length = std::sqrt(length);
            volatile float cosine = light / length;
            const float lit = (cosine > 0.0f ? cosine : 0.0f) + 40.0f;
            const double whole = std::min(std::trunc(static_cast<double>(lit)), 255.0);
            unsigned char* const pixel =
                image.AsCanvas().pixels + 4 * (static_cast<std::ptrdiff_t>(iy) * image.width + ix);
            for (int i = 0; i < 3; ++i)
                pixel[i] = static_cast<unsigned char>(static_cast<float>(whole) * shares[i]);
            pixel[3] = 255;
        }
    }
}

void ExpectAllWaysAgree(int width, int height, const Patch& patch, const std::string& what)
{
    Image expected(width, height);
    ShadeAsDefined(expected, patch);
    for (const Way way : {Way::Plain, Way::Avx2}) {
        if (!IsAvailable(way))
            continue;
        Image image(width, height);
        ShadeBy(way, image.AsCanvas(), patch);
        ASSERT_TRUE(image.bytes == expected.bytes)
            << what << (way == Way::Plain ? ", plainly" : ", by AVX2");
    }
}

Surface RandomSurface(std::mt19937& random)
{
    // From nearly flat over whole pictures to steep within single pixels.
    std::uniform_real_distribution<float> exponent(-6.0f, 2.0f);
    std::uniform_real_distribution<float> sign(-1.0f, 1.0f);
    const auto number = [&] {
        return std::copysign(std::pow(10.0f, exponent(random)), sign(random));
    };
    return {{number() * 100.0f, number()}, {number() * 100.0f, number()}};
}

PixelBox Whole(int width, int height) { return {0, width - 1, 0, height - 1}; }

}  // namespace

// ---- the pixels of a rectangle

TEST(VisCushionShading, APixelBelongsToTheRectangleThatHoldsItsCentre)
{
    const auto box = [](float x1, float x2, float y1, float y2) {
        const PixelBox found = CushionShading::PixelsOf({{x1, x2}, {y1, y2}}, 100, 50);
        return std::vector<int>{found.left, found.right, found.bottom, found.top};
    };
    EXPECT_EQ(box(0.0f, 10.0f, 0.0f, 5.0f), (std::vector<int>{0, 9, 0, 4}));
    EXPECT_EQ(box(10.0f, 20.4f, 5.5f, 9.5f), (std::vector<int>{10, 19, 6, 9}));
    EXPECT_EQ(box(10.4f, 20.6f, 5.4f, 9.4f), (std::vector<int>{10, 20, 5, 8}));
}

TEST(VisCushionShading, PixelsEndAtTheEdgesOfThePicture)
{
    const PixelBox box = CushionShading::PixelsOf({{-5.0f, 300.0f}, {-1e9f, 1e30f}}, 100, 50);
    EXPECT_EQ(box.left, 0);
    EXPECT_EQ(box.right, 99);
    EXPECT_EQ(box.bottom, 0);
    EXPECT_EQ(box.top, 49);
    EXPECT_TRUE(CushionShading::PixelsOf({{200.0f, 300.0f}, {0.0f, 5.0f}}, 100, 50).IsEmpty());
}

TEST(VisCushionShading, ARectangleNarrowerThanAPixelMayCoverNoColumn)
{
    EXPECT_TRUE(CushionShading::PixelsOf({{1.6f, 1.9f}, {0.0f, 5.0f}}, 100, 50).IsEmpty());
    const PixelBox box = CushionShading::PixelsOf({{1.4f, 1.7f}, {0.0f, 5.0f}}, 100, 50);
    EXPECT_EQ(box.left, 1);
    EXPECT_EQ(box.right, 1);
}

TEST(VisCushionShading, ARectangleWithoutAreaHasNoPixels)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(CushionShading::PixelsOf({{0.0f, 0.0f}, {0.0f, 5.0f}}, 100, 50).IsEmpty());
    EXPECT_TRUE(CushionShading::PixelsOf({{0.0f, 5.0f}, {0.3f, 0.3f}}, 100, 50).IsEmpty());
    EXPECT_TRUE(CushionShading::PixelsOf({{5.0f, 0.0f}, {0.0f, 5.0f}}, 100, 50).IsEmpty());
    EXPECT_TRUE(CushionShading::PixelsOf({{nan, 5.0f}, {0.0f, 5.0f}}, 100, 50).IsEmpty());
    EXPECT_TRUE(CushionShading::PixelsOf({{0.0f, 5.0f}, {0.0f, nan}}, 100, 50).IsEmpty());
}

TEST(VisCushionShading, TruncationGoesTowardsZeroAtTheFirstColumn)
{
    // -0.3 + 0.5 and 0.2 - 0.5 both give column 0.
    const PixelBox box = CushionShading::PixelsOf({{0.0f, 0.2f}, {0.0f, 5.0f}}, 100, 50);
    EXPECT_EQ(box.left, 0);
    EXPECT_EQ(box.right, 0);
}

// ---- single pixels

TEST(VisCushionShading, AFlatSurfaceHasTheIntensity249)
{
    for (const Way way : {Way::Plain, Way::Avx2}) {
        if (!IsAvailable(way))
            continue;
        Image image(9, 3);
        ShadeBy(way, image.AsCanvas(), {Whole(9, 3), {}, 0xFFFFFF});
        for (int i = 0; i < 9 * 3; ++i) {
            const unsigned char* const pixel = image.AsCanvas().pixels + 4 * i;
            EXPECT_EQ(pixel[0], 249);
            EXPECT_EQ(pixel[1], 249);
            EXPECT_EQ(pixel[2], 249);
            EXPECT_EQ(pixel[3], 255);
        }
    }
}

TEST(VisCushionShading, BytesStandInTheOrderRedGreenBlueAlpha)
{
    Image image(1, 1);
    CushionShading::Shade(image.AsCanvas(), {Whole(1, 1), {}, 0xFF8000});
    const unsigned char* const pixel = image.AsCanvas().pixels;
    EXPECT_EQ(pixel[0], 249);
    EXPECT_EQ(pixel[1], 249 * 128 / 255);
    EXPECT_EQ(pixel[2], 0);
    EXPECT_EQ(pixel[3], 255);
}

TEST(VisCushionShading, ASurfaceThatLeansAwayIsAsDarkAsTheAmbientLight)
{
    Surface surface;
    surface.x.linear = 1000.0f;
    Image image(1, 1);
    CushionShading::Shade(image.AsCanvas(), {Whole(1, 1), surface, 0xFFFFFF});
    EXPECT_EQ(image.AsCanvas().pixels[0], 40);
}

TEST(VisCushionShading, ASurfaceThatFacesTheLightIsAsBrightAsItGets)
{
    Surface surface;
    surface.x.linear = -0.1f;
    surface.y.linear = -0.2f;
    Image image(1, 1);
    CushionShading::Shade(image.AsCanvas(), {Whole(1, 1), surface, 0xFFFFFF});
    EXPECT_GE(image.AsCanvas().pixels[0], 254);
}

TEST(VisCushionShading, WhiteFillsTheGivenPixelsAlone)
{
    Image image(5, 4);
    CushionShading::FillWhite(image.AsCanvas(), {1, 3, 1, 2});
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) {
            const bool isInside = x >= 1 && x <= 3 && y >= 1 && y <= 2;
            for (int i = 0; i < 4; ++i)
                EXPECT_EQ(image.AsCanvas().pixels[4 * (5 * y + x) + i], isInside ? 255 : UNTOUCHED);
        }
    }
    CushionShading::FillWhite(image.AsCanvas(), {1, 0, 0, 3});
    CushionShading::FillWhite(image.AsCanvas(), {0, 4, 2, 1});
    EXPECT_EQ(image.AsCanvas().pixels[0], UNTOUCHED);
}

// ---- all ways give the same bytes

TEST(VisCushionShading, EveryWidthAtEveryPlaceGivesTheSameBytesInEveryWay)
{
    std::mt19937 random(1);
    for (int width = 0; width <= 40; ++width) {
        for (int left = 0; left < 9; ++left) {
            const Surface surface = RandomSurface(random);
            const unsigned int colour = static_cast<unsigned int>(random()) & 0xFFFFFFU;
            const Patch patch{{left, left + width - 1, 1, 3}, surface, colour};
            ExpectAllWaysAgree(53, 5, patch,
                               std::to_string(width) + " pixels at " + std::to_string(left));
        }
    }
}

TEST(VisCushionShading, RandomSurfacesGiveTheSameBytesInEveryWay)
{
    std::mt19937 random(2);
    for (int i = 0; i < 400; ++i) {
        const Patch patch{Whole(97, 61), RandomSurface(random),
                          static_cast<unsigned int>(random()) & 0xFFFFFFU};
        ExpectAllWaysAgree(97, 61, patch, "surface " + std::to_string(i));
    }
}

TEST(VisCushionShading, RealCushionsGiveTheSameBytesInEveryWay)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> place(0.0f, 2000.0f);
    for (int i = 0; i < 200; ++i) {
        Surface surface;
        float height = 0.5f;
        for (int level = 0; level < 12; ++level, height *= 0.85f) {
            const float begin = place(random);
            const float end = begin + place(random) / static_cast<float>(level + 1);
            (level % 2 == 0 ? surface.x : surface.y).AddRidge(height, {begin, end});
        }
        const Patch patch{Whole(200, 30), surface, VisCushionLayout::COLOR_MAP[i % 9]};
        ExpectAllWaysAgree(200, 30, patch, "cushion " + std::to_string(i));
    }
}

TEST(VisCushionShading, SurfacesThatAreFlatAlongAnAxisGiveTheSameBytesInEveryWay)
{
    std::mt19937 random(4);
    for (int i = 0; i < 100; ++i) {
        Surface surface = RandomSurface(random);
        for (const float zero : {0.0f, -0.0f}) {
            Surface alongX = surface;
            alongX.x.quadratic = zero;
            Surface alongY = surface;
            alongY.y.quadratic = zero;
            Surface flat = alongX;
            flat.y = {zero, zero};
            for (const Surface& part : {alongX, alongY, flat})
                ExpectAllWaysAgree(37, 11, {Whole(37, 11), part, 0xBEAED4}, std::to_string(i));
        }
    }
}

TEST(VisCushionShading, OddNumbersGiveTheSameBytesInEveryWay)
{
    const float odd[] = {0.0f,
                         -0.0f,
                         1.0f,
                         -1.0f,
                         std::numeric_limits<float>::quiet_NaN(),
                         std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity(),
                         std::numeric_limits<float>::max(),
                         std::numeric_limits<float>::lowest(),
                         std::numeric_limits<float>::denorm_min(),
                         std::numeric_limits<float>::min(),
                         16777216.0f,
                         2147483648.0f,
                         1.0e19f,
                         1.8446742e19f,
                         1.8446744e19f,
                         -1.3e19f,
                         1.0e33f};
    for (const float a : odd) {
        for (const float b : odd) {
            for (const float c : odd) {
                for (const float d : odd) {
                    const Patch patch{Whole(9, 2), {{a, b}, {c, d}}, 0xFFFF99};
                    ExpectAllWaysAgree(9, 2, patch,
                                       std::to_string(a) + " " + std::to_string(b) + " " +
                                           std::to_string(c) + " " + std::to_string(d));
                }
            }
        }
    }
}

TEST(VisCushionShading, EveryIntensityOfEveryShareGivesTheSameBytesInEveryWay)
{
    // Along x the slope passes through all intensities, twice.
    Surface surface;
    constexpr int WIDTH = 20000;
    surface.x = {-12.0f, 0.0006f};
    surface.y = {-0.2f, 0.0001f};
    Image all(WIDTH, 1);
    ShadeAsDefined(all, {Whole(WIDTH, 1), surface, 0xFFFFFF});
    std::set<int> intensities;
    for (int x = 0; x < WIDTH; ++x)
        intensities.insert(all.AsCanvas().pixels[4 * x]);
    ASSERT_EQ(intensities.size(), 215U) << "40 to 254: the light is a little shorter than 1";
    for (unsigned int share = 0; share < 256; ++share) {
        const Patch patch{Whole(WIDTH, 1), surface, share << 16U | (255U - share) << 8U | share};
        ExpectAllWaysAgree(WIDTH, 1, patch, std::to_string(share));
    }
}

TEST(VisCushionShading, WideRowsGiveTheSameBytesInEveryWay)
{
    std::mt19937 random(5);
    for (const int width : {511, 512, 513, 519, 520, 1023, 1024, 1025, 1500}) {
        const Patch patch{{3, 2 + width, 0, 1}, RandomSurface(random), 0x386CB0};
        ExpectAllWaysAgree(width + 5, 2, patch, std::to_string(width));
    }
}
