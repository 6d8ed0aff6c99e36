#include "VisTreeSpaceFillingLayoutCachedTextures.h"
#include "VisTreeSpaceFillingView.h"

#include "module/ViewFixture.h"
#include "module/ViewReading.h"

#include "private/NodeTextures.h"
#include "private/SaturatingCast.h"

#include "core/ImageBackend.h"
#include "core/PixelMemory.h"

#include "support/Allocations.h"
#include "support/FixedWidthFont.h"

#include "KUV2D.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr float INFINITE = std::numeric_limits<float>::infinity();
const float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

/// One reference on a host object, given back at the end.
template <class T>
struct Held {
    T* object;
    explicit Held(T* object_) : object(object_) {}
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held()
    {
        if (object)
            object->Release();
    }
    T* operator->() const { return object; }
    T& operator*() const { return *object; }
};

/// The picture as text, top row first: one character a pixel, from `legend` by colour.
std::string Draw(const KUVPixelImage& image,
                 const std::vector<std::pair<unsigned int, char>>& legend)
{
    int width = 0;
    int height = 0;
    image.GetSize(width, height);
    std::string text;
    for (int y = height - 1; y >= 0; --y) {
        text += '\n';
        for (int x = 0; x < width; ++x) {
            char shown = '?';
            for (const auto& [colour, character] : legend) {
                if (viewreading::PixelOf(image, x, y) == colour)
                    shown = character;
            }
            text += shown;
        }
    }
    return text;
}

struct Cropped {
    std::string text;
    int cropped;

    bool operator==(const Cropped& other) const
    {
        return text == other.text && cropped == other.cropped;
    }
};

std::ostream& operator<<(std::ostream& stream, const Cropped& result)
{
    return stream << '"' << result.text << "\" " << result.cropped;
}

Cropped Crop(const char* label, float width, KUVCharacterFont* font, float scale = 1.0f)
{
    KUVUnicodeString shown("unset");
    unsigned char cropped = 9;
    VisTreeSpaceFillingView::ComputeCroppedLabel(label, width, font, scale, shown, cropped);
    return {shown.GetUtf8(), cropped};
}

Cropped Crop(const char* label, float width)
{
    const Held<KUVCharacterFont> font(support::MakeFixedWidthFont());
    return Crop(label, width, font.object);
}

/// A font that answers nothing at all.
class SilentFont : public KUVCharacterFont {
public:
    int GetFontIndex(float /*size*/) override { return -1; }
    void GetStringSize(const KUVUnicodeString& /*text*/, int* /*width*/, int* /*height*/,
                       int* /*descent*/, int /*fontIndex*/) override
    {
    }
};

}  // namespace

// ---- label cropping: a character of the test font is 7 wide at scale 1

TEST(LabelCropping, ALabelThatFitsStaysWhole)
{
    EXPECT_EQ(Crop("Pump", 28.0f), (Cropped{"Pump", 0})) << "4 x 7 is exactly enough";
}

TEST(LabelCropping, CharactersAreTakenOffUntilTheTextFits)
{
    EXPECT_EQ(Crop("Centrifugal", 56.0f), (Cropped{"Centr...", 1}));
    EXPECT_EQ(Crop("Centrifugal", 55.9f), (Cropped{"Cent...", 1}));
}

TEST(LabelCropping, AThreeCharacterLabelInNoSpaceEndsAsTheEllipsis)
{
    EXPECT_EQ(Crop("abc", 0.0f), (Cropped{"...", 1})) << "also when the stops themselves are wider";
}

TEST(LabelCropping, ShorteningCanMakeTheTextLongerForAWhile)
{
    // 4 characters, 3 do not fit: "Pum..." is wider than "Pump" was.
    EXPECT_EQ(Crop("Pump", 27.0f), (Cropped{"...", 1}));
}

TEST(LabelCropping, ANullFontLeavesTheLabelWhole)
{
    EXPECT_EQ(Crop("Centrifugal", 0.0f, nullptr), (Cropped{"Centrifugal", 0}));
}

TEST(LabelCropping, AnEmptyLabelStaysEmpty)
{
    EXPECT_EQ(Crop("", 0.0f), (Cropped{"", 0}));
    EXPECT_EQ(Crop("", -1.0f), (Cropped{"", 0}));
}

TEST(LabelCropping, ALabelOfFullStopsIsShortenedLikeAnyOther)
{
    EXPECT_EQ(Crop("......", 35.0f), (Cropped{".....", 1})) << "two of its own, three of ours";
}

TEST(LabelCropping, CharactersAreCodePoints)
{
    EXPECT_EQ(Crop("Stromz\xC3\xA4hler", 70.0f), (Cropped{"Stromz\xC3\xA4...", 1}));
    EXPECT_EQ(Crop("\xE6\xB3\xB5\xE6\xB3\xB5\xE6\xB3\xB5\xE6\xB3\xB5\xE6\xB3\xB5", 28.0f),
              (Cropped{"\xE6\xB3\xB5...", 1}));
}

TEST(LabelCropping, BytesThatAreNoTextAreShortenedOneByOne)
{
    EXPECT_EQ(Crop("\xFF\xFE\xFD\xFC\xFB", 28.0f), (Cropped{"\xFF...", 1}));
}

TEST(LabelCropping, TheFontIsAskedForFourteenTimesTheScale)
{
    const Held<KUVCharacterFont> font(support::MakeFixedWidthFont());
    EXPECT_EQ(Crop("Centrifugal", 112.0f, font.object, 2.0f), (Cropped{"Centr...", 1}));
}

TEST(LabelCropping, TheResultMayBeTheLabelItself)
{
    const Held<KUVCharacterFont> font(support::MakeFixedWidthFont());
    KUVUnicodeString text("Centrifugal");
    unsigned char cropped = 0;
    VisTreeSpaceFillingView::ComputeCroppedLabel(text, 56.0f, font.object, 1.0f, text, cropped);
    EXPECT_EQ(text, KUVUnicodeString("Centr..."));
    EXPECT_EQ(cropped, 1);
}

TEST(LabelCropping, OddWidthsAndScalesEnd)
{
    const Held<KUVCharacterFont> font(support::MakeFixedWidthFont());
    EXPECT_EQ(Crop("Pump", NOT_A_NUMBER), (Cropped{"Pump", 0})) << "nothing is wider than that";
    EXPECT_EQ(Crop("Pump", INFINITE), (Cropped{"Pump", 0}));
    EXPECT_EQ(Crop("Pump", -INFINITE), (Cropped{"...", 1}));
    for (const float scale : {NOT_A_NUMBER, INFINITE, -INFINITE, 0.0f, -1.0f, 1e30f, 1e-30f})
        EXPECT_FALSE(Crop("Pump", 20.0f, font.object, scale).text.empty()) << scale;
}

TEST(LabelCropping, AFontThatAnswersNothingLeavesTheLabelWhole)
{
    const Held<KUVCharacterFont> font(new SilentFont);
    EXPECT_EQ(Crop("Pump", 0.0f, font.object), (Cropped{"Pump", 0}));
}

TEST(LabelCropping, ATenThousandCharacterLabelIsShortened)
{
    const std::string label(10000, 'x');
    EXPECT_EQ(Crop(label.c_str(), 70.0f), (Cropped{"xxxxxxx...", 1}));
}

RC_GTEST_PROP(LabelCropping, TheResultIsTheWholeLabelOrABeginningOfItWithTheEllipsis,
              (const std::string& label, unsigned char width))
{
    const Held<KUVCharacterFont> font(support::MakeFixedWidthFont());
    const std::string text = label.substr(0, label.find('\0'));
    const Cropped result = Crop(text.c_str(), static_cast<float>(width), font.object);
    if (result.cropped == 0) {
        RC_ASSERT(result.text == text);
        return;
    }
    RC_ASSERT(result.text.size() >= 3U);
    const std::string kept = result.text.substr(0, result.text.size() - 3);
    RC_ASSERT(result.text == kept + "...");
    RC_ASSERT(text.compare(0, kept.size(), kept) == 0);
    RC_ASSERT(kept.size() < text.size());
    int shown = 0;
    font->GetStringSize(KUVUnicodeString(result.text), &shown, nullptr, nullptr,
                        font->GetFontIndex(14.0f));
    RC_ASSERT(kept.empty() || shown <= width);
}

// ---- grid texture

TEST(GridTexture, SquaresOfFivePixelsOnAPitchOfEightBelowTheLabelBand)
{
    const Held<KUVPixelImage> image(CreateGridTexture(20, 26, 0x0088DEFFU, 0, 1.0f));
    ASSERT_NE(image.object, nullptr);
    // 14 rows of label band above 12 rows of squares, which begin at the lower left.
    EXPECT_EQ(Draw(*image, {{0x0088DEFFU, '-'}, {0xFFFFFFFFU, '#'}}), R"(
--------------------
--------------------
--------------------
--------------------
--------------------
--------------------
--------------------
--------------------
--------------------
--------------------
--------------------
--------------------
--------------------
--------------------
#####---#####---####
#####---#####---####
#####---#####---####
#####---#####---####
--------------------
--------------------
--------------------
#####---#####---####
#####---#####---####
#####---#####---####
#####---#####---####
#####---#####---####)");
}

TEST(GridTexture, DarkSquaresAreBlack)
{
    const Held<KUVPixelImage> image(CreateGridTexture(9, 16, 0xF2F5F700U, 1, 1.0f));
    EXPECT_EQ(viewreading::PixelOf(*image, 0, 0), 0x000000FFU);
    EXPECT_EQ(viewreading::PixelOf(*image, 5, 0), 0xF2F5F7FFU) << "alpha is always 255";
    EXPECT_EQ(viewreading::PixelOf(*image, 8, 1), 0x000000FFU);
    EXPECT_EQ(viewreading::PixelOf(*image, 0, 2), 0xF2F5F7FFU) << "the band begins at 16 - 14";
}

TEST(GridTexture, ANodeLowerThanTheLabelBandIsAllNodeColour)
{
    const Held<KUVPixelImage> image(CreateGridTexture(4, 3, 0x11223344U, 0, 1.0f));
    EXPECT_EQ(Draw(*image, {{0x112233FFU, '-'}}), "\n----\n----\n----");
}

TEST(GridTexture, TheBandFollowsTheScaleCutToWholePixels)
{
    const Held<KUVPixelImage> image(CreateGridTexture(1, 30, 0x112233FFU, 0, 1.9f));
    EXPECT_EQ(viewreading::PixelOf(*image, 0, 3), 0xFFFFFFFFU);
    EXPECT_EQ(viewreading::PixelOf(*image, 0, 4), 0x112233FFU) << "30 - trunc(26.6)";
}

TEST(GridTexture, ANegativeScaleLeavesNoBandAndStaysInside)
{
    for (const float scale : {-1.0f, -1e30f, -INFINITE}) {
        const Held<KUVPixelImage> image(CreateGridTexture(3, 2, 0x112233FFU, 0, scale));
        EXPECT_EQ(Draw(*image, {{0xFFFFFFFFU, '#'}}), "\n###\n###") << scale;
    }
}

TEST(GridTexture, AnEnormousScaleLeavesNothingButTheBand)
{
    for (const float scale : {1e30f, INFINITE}) {
        const Held<KUVPixelImage> image(CreateGridTexture(3, 2, 0x112233FFU, 0, scale));
        EXPECT_EQ(Draw(*image, {{0x112233FFU, '-'}}), "\n---\n---") << scale;
    }
}

TEST(GridTexture, SizesWithoutPixelsGiveNone)
{
    EXPECT_EQ(CreateGridTexture(0, 5, 0, 0, 1.0f), nullptr);
    EXPECT_EQ(CreateGridTexture(5, 0, 0, 0, 1.0f), nullptr);
    EXPECT_EQ(CreateGridTexture(-5, -5, 0, 0, 1.0f), nullptr);
}

TEST(GridTexture, EveryPixelFollowsTheRule)
{
    for (const int width : {1, 4, 5, 8, 9, 17, 40}) {
        for (const int height : {1, 13, 14, 15, 19, 20, 22, 23, 40}) {
            const Held<KUVPixelImage> image(CreateGridTexture(width, height, 0x336699FFU, 0, 1.0f));
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const bool isSquare = y < height - 14 && x % 8 < 5 && y % 8 < 5;
                    ASSERT_EQ(viewreading::PixelOf(*image, x, y),
                              isSquare ? 0xFFFFFFFFU : 0x336699FFU)
                        << x << ", " << y << " of " << width << " x " << height;
                }
            }
        }
    }
}

// ---- rounded plates

TEST(RoundedPlate, AnUnframedPlateHasSoftCorners)
{
    // r^2 / d^2 x 128 with r = 2: 4 / 8 gives 64, 4 / 5 gives 102.
    const Held<KUVPixelImage> image(CreateRoundedPlate(8, 6, 2, 0, 0xF1F1F1FFU, 0x00000000U));
    EXPECT_EQ(Draw(*image, {{0xF1F1F1FFU, '#'}, {0xF1F1F140U, '.'}, {0xF1F1F166U, 'o'}}), R"(
.o####o.
o######o
########
########
o######o
.o####o.)");
}

TEST(RoundedPlate, AFramedPlateHasALineAroundItAndClearCorners)
{
    const Held<KUVPixelImage> image(CreateRoundedPlate(8, 6, 2, 1, 0xD5E8F2FFU, 0x368EC4FFU));
    EXPECT_EQ(Draw(*image, {{0xD5E8F2FFU, '#'}, {0x368EC4FFU, 'x'}, {0xD5E8F200U, ' '}}), R"(
 xxxxxx 
x######x
x######x
x######x
x######x
 xxxxxx )");
}

TEST(RoundedPlate, TheAlphaOfTheColoursIsIgnored)
{
    const Held<KUVPixelImage> image(CreateRoundedPlate(6, 6, 2, 1, 0xD5E8F200U, 0x368EC400U));
    EXPECT_EQ(viewreading::PixelOf(*image, 3, 3), 0xD5E8F2FFU);
    EXPECT_EQ(viewreading::PixelOf(*image, 3, 0), 0x368EC4FFU);
}

TEST(RoundedPlate, APlateOfThreeByTenWithRadiusTwoIsNotMade)
{
    EXPECT_EQ(CreateRoundedPlate(3, 10, 2, 0, 0, 0), nullptr);
    EXPECT_EQ(CreateRoundedPlate(10, 3, 2, 0, 0, 0), nullptr);
}

TEST(RoundedPlate, APlateOfTwiceTheRadiusIsAllCorners)
{
    const Held<KUVPixelImage> image(CreateRoundedPlate(4, 4, 2, 0, 0xF1F1F1FFU, 0));
    EXPECT_EQ(Draw(*image, {{0xF1F1F1FFU, '#'}, {0xF1F1F140U, '.'}, {0xF1F1F166U, 'o'}}), R"(
.oo.
o##o
o##o
.oo.)");
}

TEST(RoundedPlate, OddSizesGiveNone)
{
    EXPECT_EQ(CreateRoundedPlate(-4, -4, 2, 0, 0, 0), nullptr);
    EXPECT_EQ(CreateRoundedPlate(10, 10, -1, 0, 0, 0), nullptr);
    EXPECT_EQ(CreateRoundedPlate(std::numeric_limits<int>::max(), std::numeric_limits<int>::max(),
                                 2, 0, 0, 0),
              nullptr);
    EXPECT_EQ(CreateRoundedPlate(std::numeric_limits<int>::min(), 10, 2, 0, 0, 0), nullptr);
    EXPECT_EQ(CreateRoundedPlate(0, 0, 0, 0, 0, 0), nullptr);
}

TEST(RoundedPlate, EveryPixelFollowsTheRule)
{
    for (int radius = 0; radius <= 6; ++radius) {
        for (const int width : {2 * radius, 2 * radius + 1, 2 * radius + 7}) {
            for (const int height : {2 * radius, 2 * radius + 1, 2 * radius + 2, 2 * radius + 9}) {
                for (const bool framed : {false, true}) {
                    const Held<KUVPixelImage> image(CreateRoundedPlate(
                        width, height, radius, framed, 0x10203000U, 0x40506000U));
                    if (!image.object) {
                        EXPECT_TRUE(width == 0 || height == 0);
                        continue;
                    }
                    for (int y = 0; y < height; ++y) {
                        for (int x = 0; x < width; ++x) {
                            const int r = radius;
                            const bool cornerX = x < r || x > width - r - 1;
                            const bool cornerY = y < r || y > height - r - 1;
                            const int dx = x < r ? r - x : x - (width - r - 1);
                            const int dy = y < r ? r - y : y - (height - r - 1);
                            const auto distance = static_cast<float>(dx * dx + dy * dy);
                            const auto radius2 = static_cast<float>(r * r);
                            const float half = static_cast<float>(r) - 0.5f;
                            unsigned int expected = 0x102030FFU;
                            if (cornerX && cornerY && distance > radius2)
                                expected =
                                    0x10203000U +
                                    (framed
                                         ? 0U
                                         : static_cast<unsigned int>(radius2 / distance * 128.0f));
                            const bool onRing = cornerX && cornerY && distance >= half * half &&
                                                distance <= (half + 1.0f) * (half + 1.0f);
                            const bool onRow = (y == 0 || y == height - 1) && !cornerX;
                            const bool onColumn = (x == 0 || x == width - 1) && !cornerY;
                            if (framed && (onRing || onRow || onColumn))
                                expected = 0x405060FFU;
                            ASSERT_EQ(viewreading::PixelOf(*image, x, y), expected)
                                << x << ", " << y << " of " << width << " x " << height
                                << " radius " << r << " framed " << framed;
                        }
                    }
                }
            }
        }
    }
}

// ---- pixel buffers

TEST(PixelBuffers, BuffersBeyondAGibibyteAreRefused)
{
    EXPECT_EQ(CreatePixels(16385, 16384), nullptr);
    EXPECT_EQ(CreatePixels(std::numeric_limits<int>::max(), std::numeric_limits<int>::max()),
              nullptr);
    EXPECT_EQ(CreatePixels(std::numeric_limits<int>::max(), 1), nullptr);
    unsigned char* const largest = CreatePixels(16384, 16384);
    EXPECT_NE(largest, nullptr) << "exactly 1 GiB";
    KUVFreePixels(largest);
}

TEST(PixelBuffers, SizesBelowOneAreRefused)
{
    EXPECT_EQ(CreatePixels(0, 1), nullptr);
    EXPECT_EQ(CreatePixels(1, 0), nullptr);
    EXPECT_EQ(CreatePixels(-1, -1), nullptr);
    EXPECT_EQ(CreatePixels(std::numeric_limits<int>::min(), std::numeric_limits<int>::min()),
              nullptr);
}

TEST(PixelBuffers, NoBufferGivesNoImage) { EXPECT_EQ(CreateTextureImage(3, 3, nullptr), nullptr); }

TEST(PixelBuffers, AnImageOwnsItsBuffer)
{
    const std::size_t before = core::CountPixelBuffers();
    KUVPixelImage* const image = CreateTextureImage(2, 2, CreatePixels(2, 2));
    EXPECT_EQ(image->GetFormat(), KUVPixelFormat_RGBA8);
    EXPECT_EQ(image->GetReferenceCount(), 1U);
    image->Release();
    EXPECT_EQ(core::CountPixelBuffers(), before);
}

// ---- float to integer

TEST(SaturatingCast, TruncatesTowardsZeroAndSaturates)
{
    const int smallest = std::numeric_limits<int>::min();
    const int largest = std::numeric_limits<int>::max();
    EXPECT_EQ(TruncateToInt(2.9f), 2);
    EXPECT_EQ(TruncateToInt(-2.9f), -2);
    EXPECT_EQ(TruncateToInt(-0.0f), 0);
    EXPECT_EQ(TruncateToInt(NOT_A_NUMBER), 0);
    EXPECT_EQ(TruncateToInt(INFINITE), largest);
    EXPECT_EQ(TruncateToInt(-INFINITE), smallest);
    EXPECT_EQ(TruncateToInt(2147483520.0f), 2147483520) << "the last float below 2^31";
    EXPECT_EQ(TruncateToInt(2147483648.0f), largest);
    EXPECT_EQ(TruncateToInt(-2147483648.0f), smallest);
    EXPECT_EQ(TruncateToInt(-2147483904.0f), smallest);
    EXPECT_EQ(TruncateToInt(1e30), largest);
    EXPECT_EQ(TruncateToInt(-1e30), smallest);
    EXPECT_EQ(TruncateToInt(2147483646.9), 2147483646);
    EXPECT_EQ(TruncateToInt(static_cast<double>(NOT_A_NUMBER)), 0);
}

// ---- cached textures

namespace {

/// Counts the files that it reads; gives grey images, or none while `fails` is set.
class CountingBackend : public core::ImageBackend {
public:
    KUVPixelImage* Load(const std::string& path) override
    {
        paths.push_back(path);
        if (fails)
            return nullptr;
        auto* const image =
            new KUVPixelImage(2, 2, KUVPixelFormat_Grey8, KUVAllocatePixels(4), /*deallocate=*/1);
        image->SetTransparency(1);
        return image;
    }

    std::vector<std::string> paths;
    bool fails = false;
};

class CachedTextures : public testing::Test {
protected:
    CachedTextures() { core::SetImageBackend(backend); }
    ~CachedTextures() override { core::SetImageBackend(nullptr); }

    std::shared_ptr<CountingBackend> backend = std::make_shared<CountingBackend>();
    VisTreeSpaceFillingLayoutCachedTextures textures;
};

}  // namespace

TEST_F(CachedTextures, AreEmptyAtFirstWithTheAgreedLoadFactor)
{
    EXPECT_TRUE(textures.platesBySize.empty());
    EXPECT_TRUE(textures.iconsByName.empty());
    EXPECT_EQ(textures.platesBySize.max_load_factor(), 1.0f);
    EXPECT_EQ(textures.iconsByName.max_load_factor(), 1.0f);
    EXPECT_GE(textures.platesBySize.bucket_count(), 8U);
    EXPECT_GE(textures.iconsByName.bucket_count(), 8U);
}

TEST_F(CachedTextures, ANewSizeGetsAnEmptyPair)
{
    auto* const plates = textures.GetPlates({100.0f, 50.0f});
    ASSERT_NE(plates, nullptr);
    EXPECT_EQ(plates->hover, nullptr);
    EXPECT_EQ(plates->selected, nullptr);
    EXPECT_EQ(textures.GetPlates({100.0f, 50.0f}), plates);
    EXPECT_NE(textures.GetPlates({50.0f, 100.0f}), plates);
    EXPECT_NE(textures.GetPlates({100.0f, 50.00001f}), plates) << "sizes are compared exactly";
    EXPECT_EQ(textures.platesBySize.size(), 3U);
}

TEST_F(CachedTextures, EntriesStayWhereTheyAreWhenOthersAreAdded)
{
    auto* const plates = textures.GetPlates({1.0f, 1.0f});
    for (int i = 2; i < 1000; ++i)
        textures.GetPlates({static_cast<float>(i), 1.0f});
    EXPECT_EQ(textures.GetPlates({1.0f, 1.0f}), plates);
}

TEST_F(CachedTextures, ZeroAndMinusZeroAreOneSize)
{
    auto* const plates = textures.GetPlates({0.0f, 5.0f});
    EXPECT_EQ(textures.GetPlates({-0.0f, 5.0f}), plates);
    const VisTreeSpaceFillingLayoutCachedTextures::SizeHash hash;
    EXPECT_EQ(hash({0.0f, -0.0f}), hash({-0.0f, 0.0f}));
}

TEST_F(CachedTextures, ASizeThatIsNoNumberHasNoEntry)
{
    EXPECT_EQ(textures.GetPlates({NOT_A_NUMBER, 5.0f}), nullptr);
    EXPECT_EQ(textures.GetPlates({5.0f, NOT_A_NUMBER}), nullptr);
    EXPECT_TRUE(textures.platesBySize.empty());
}

TEST_F(CachedTextures, AnIconIsReadOnceAndConverted)
{
    KUVPixelImage* const icon = textures.GetIcon("I_VisPart.png");
    ASSERT_NE(icon, nullptr);
    EXPECT_EQ(icon->GetFormat(), KUVPixelFormat_RGBA8);
    EXPECT_EQ(icon->GetTransparency(), 0);
    EXPECT_EQ(icon->GetReferenceCount(), 1U) << "borrowed";
    EXPECT_EQ(textures.GetIcon("I_VisPart.png"), icon);
    EXPECT_EQ(backend->paths.size(), 1U);
}

TEST_F(CachedTextures, AnIconThatCannotBeReadIsTriedAgain)
{
    backend->fails = true;
    EXPECT_EQ(textures.GetIcon("I_VisPart.png"), nullptr);
    EXPECT_EQ(textures.GetIcon("I_VisPart.png"), nullptr);
    EXPECT_EQ(backend->paths.size(), 2U);
    EXPECT_TRUE(textures.iconsByName.empty());
    backend->fails = false;
    EXPECT_NE(textures.GetIcon("I_VisPart.png"), nullptr);
}

TEST_F(CachedTextures, AnUnknownIconNameReadsNoFile)
{
    EXPECT_EQ(textures.GetIcon("no such icon.png"), nullptr);
    EXPECT_EQ(textures.GetIcon(""), nullptr);
    EXPECT_TRUE(backend->paths.empty());
    EXPECT_TRUE(textures.iconsByName.empty());
}

TEST_F(CachedTextures, TheDestructorGivesEveryImageBack)
{
    KUVPixelImage* const hover = CreateRoundedPlate(8, 8, 2, 0, 0, 0);
    KUVPixelImage* const selected = CreateRoundedPlate(8, 8, 2, 1, 0, 0);
    hover->AddRef();
    selected->AddRef();
    KUVPixelImage* icon = nullptr;
    {
        VisTreeSpaceFillingLayoutCachedTextures other;
        auto* const plates = other.GetPlates({10.0f, 10.0f});
        plates->hover = hover;
        plates->selected = selected;
        icon = other.GetIcon("I_VisPart.png");
        icon->AddRef();
        EXPECT_EQ(hover->GetReferenceCount(), 2U);
    }
    for (KUVPixelImage* const image : {hover, selected, icon}) {
        EXPECT_EQ(image->GetReferenceCount(), 1U);
        image->Release();
    }
}

TEST(CachedTexturesMemory, EveryFailingAllocationLeavesThemUsable)
{
    core::SetImageBackend(std::make_shared<viewtest::IconBackend>(2, 2));
    const std::size_t failures = support::ForEveryFailingAllocation([] {
        VisTreeSpaceFillingLayoutCachedTextures scratch;
        scratch.GetPlates({1.0f, 2.0f});
        scratch.GetIcon("I_VisPart.png");
        for (const auto& entry : scratch.iconsByName)
            EXPECT_NE(entry.second, nullptr);
    });
    core::SetImageBackend(nullptr);
    EXPECT_GT(failures, 3U);
}

TEST(GridTexture, EveryFailingAllocationGivesNone)
{
    support::ForEveryFailingAllocation([] {
        if (KUVPixelImage* const image = CreateGridTexture(16, 16, 0x336699FFU, 0, 1.0f))
            image->Release();
        if (KUVPixelImage* const image = CreateRoundedPlate(16, 16, 2, 1, 0x336699FFU, 0))
            image->Release();
    });
}
