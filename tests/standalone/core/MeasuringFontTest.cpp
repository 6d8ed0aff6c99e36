#include "core/MeasuringFont.h"
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

struct Releaser {
    void operator()(KUVBaseUnknown* object) const { object->Release(); }
};

using HeldFont = std::unique_ptr<core::MeasuringFont, Releaser>;

/// A font of odd widths that counts what it is asked.
class OddBackend : public core::FontBackend {
public:
    float Advance(char32_t codePoint, float size) override
    {
        ++advances;
        return size * (0.3f + static_cast<float>(codePoint % 7) * 0.05f);
    }
    float Kerning(char32_t left, char32_t right, float size) override
    {
        ++kernings;
        return (left + right) % 3 == 0 ? -0.03f * size : 0.0f;
    }
    float Ascent(float size) override { return size * 0.8f; }
    float Descent(float size) override { return size * 0.2f; }

    int advances = 0;
    int kernings = 0;
};

/// A font that answers with the odd numbers of broken font files.
class BrokenBackend : public core::FontBackend {
public:
    float Advance(char32_t /*codePoint*/, float /*size*/) override { return broken; }
    float Kerning(char32_t /*left*/, char32_t /*right*/, float /*size*/) override { return broken; }
    float Ascent(float /*size*/) override { return broken; }
    float Descent(float /*size*/) override { return broken; }

    float broken = 0.0f;
};

int WidthOf(core::MeasuringFont& font, const KUVUnicodeString& text, int index)
{
    int width = -1;
    font.GetStringSize(text, &width, nullptr, nullptr, index);
    return width;
}

/// The width as anyone would add it up, character by character.
double PlainWidth(core::FontBackend& backend, const std::u32string& text, float size)
{
    double width = 0.0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i > 0)
            width += static_cast<double>(backend.Kerning(text[i - 1], text[i], size));
        width += static_cast<double>(backend.Advance(text[i], size));
    }
    return width;
}

std::string Utf8Of(const std::u32string& text)
{
    std::string bytes;
    for (const char32_t character : text) {
        if (character < 0x80) {
            bytes += static_cast<char>(character);
        } else {
            bytes += static_cast<char>(0xC0U | character >> 6U);
            bytes += static_cast<char>(0x80U | (character & 0x3FU));
        }
    }
    return bytes;
}

}  // namespace

TEST(MeasuringFont, EqualSizesHaveEqualIndices)
{
    const HeldFont font(support::MakeFixedWidthFont());
    const int index = font->GetFontIndex(14.0f);
    EXPECT_GE(index, 0);
    EXPECT_EQ(font->GetFontIndex(14.0f), index);
    EXPECT_NE(font->GetFontIndex(14.5f), index);
    EXPECT_STREQ(font->IsA(), "MeasuringFont");
    EXPECT_EQ(font->IsAKindOf("KUVCharacterFont"), 1);
}

TEST(MeasuringFont, ASizeThatIsNoNumberAboveZeroHasNoIndex)
{
    const HeldFont font(support::MakeFixedWidthFont());
    for (const float size : {0.0f, -0.0f, -1.0f, std::numeric_limits<float>::infinity(),
                             std::numeric_limits<float>::quiet_NaN()})
        EXPECT_EQ(font->GetFontIndex(size), -1);
}

TEST(MeasuringFont, MeasuresWidthHeightAndDescent)
{
    const HeldFont font(support::MakeFixedWidthFont());
    int width = 0;
    int height = 0;
    int descent = 0;
    font->GetStringSize("Rotor", &width, &height, &descent, font->GetFontIndex(14.0f));
    EXPECT_EQ(width, 35);
    EXPECT_EQ(height, 14);
    EXPECT_EQ(descent, 4) << "3.5 rounded up";
}

TEST(MeasuringFont, AnEmptyTextIsZeroWideAndOneLineHigh)
{
    const HeldFont font(support::MakeFixedWidthFont());
    int width = -1;
    int height = -1;
    font->GetStringSize("", &width, &height, nullptr, font->GetFontIndex(14.0f));
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 14);
}

TEST(MeasuringFont, AnUnknownIndexMeasuresZero)
{
    const HeldFont font(support::MakeFixedWidthFont());
    for (const int index : {-1, 0, 5}) {
        int width = -1;
        int height = -1;
        int descent = -1;
        font->GetStringSize("Rotor", &width, &height, &descent, index);
        EXPECT_EQ(width, 0);
        EXPECT_EQ(height, 0);
        EXPECT_EQ(descent, 0);
    }
}

TEST(MeasuringFont, AnyResultMayBeNull)
{
    const HeldFont font(support::MakeFixedWidthFont());
    font->GetStringSize("Rotor", nullptr, nullptr, nullptr, font->GetFontIndex(14.0f));
    EXPECT_EQ(WidthOf(*font, "Rotor", font->GetFontIndex(14.0f)), 35);
}

TEST(MeasuringFont, WidthsAreRoundedUp)
{
    const HeldFont font(support::MakeFixedWidthFont());
    EXPECT_EQ(WidthOf(*font, "a", font->GetFontIndex(5.0f)), 3) << "2.5 does not fit into 2";
    EXPECT_EQ(font->MeasureWidth("a", 5.0f), 2.5);
}

TEST(MeasuringFont, CountsCharactersNotBytes)
{
    const HeldFont font(support::MakeFixedWidthFont());
    EXPECT_EQ(WidthOf(*font, "\xC3\x84\xE8\xBB\xB8", font->GetFontIndex(14.0f)), 14);
    EXPECT_EQ(WidthOf(*font, "\xFF\x80", font->GetFontIndex(14.0f)), 14)
        << "each invalid byte is a character";
}

TEST(MeasuringFont, SizesDoNotMixTheirTexts)
{
    const HeldFont font(support::MakeFixedWidthFont());
    const int small = font->GetFontIndex(10.0f);
    const int large = font->GetFontIndex(20.0f);
    EXPECT_EQ(WidthOf(*font, "Rotor", small), 25);
    EXPECT_EQ(WidthOf(*font, "Rotor", large), 50);
    EXPECT_EQ(WidthOf(*font, "Roto", small), 20);
    EXPECT_EQ(WidthOf(*font, "Rotors", large), 60);
}

TEST(MeasuringFont, ACharacterThatWasBrokenInTheLastTextMayBeWholeInTheNext)
{
    const HeldFont font(support::MakeFixedWidthFont());
    const int index = font->GetFontIndex(14.0f);
    EXPECT_EQ(WidthOf(*font, "a\xC3", index), 14);
    EXPECT_EQ(WidthOf(*font, "a\xC3\xA4", index), 14) << "two characters still";
    EXPECT_EQ(WidthOf(*font, "\xE8\xBB", index), 14);
    EXPECT_EQ(WidthOf(*font, "\xE8\xBB\xB8", index), 7) << "two broken bytes became one character";
    EXPECT_EQ(WidthOf(*font, "\xE8\xBB", index), 14);
}

RC_GTEST_PROP(MeasuringFont, MeasuresEveryTextAsIfItWereTheFirst,
              (const std::vector<std::vector<unsigned char>>& texts))
{
    OddBackend plain;
    const HeldFont font(new core::MeasuringFont(std::make_shared<OddBackend>()));
    const int index = font->GetFontIndex(14.0f);
    for (const std::vector<unsigned char>& characters : texts) {
        std::u32string text;
        for (const unsigned char character : characters)
            text += static_cast<char32_t>(0x7C + character % 8);
        // As it is, and as the cropping of labels asks: one character less each time.
        for (;; text.pop_back()) {
            const std::u32string shown = text + U"...";
            const double expected = PlainWidth(plain, shown, 14.0f);
            RC_ASSERT(font->MeasureWidth(KUVUnicodeString(Utf8Of(shown)), 14.0f) == expected);
            RC_ASSERT(WidthOf(*font, KUVUnicodeString(Utf8Of(shown)), index) ==
                      static_cast<int>(std::ceil(expected)));
            if (text.empty())
                break;
        }
    }
}

TEST(MeasuringFont, AsksTheBackendOnceForEachCharacterAndPair)
{
    const auto backend = std::make_shared<OddBackend>();
    const HeldFont font(new core::MeasuringFont(backend));
    EXPECT_EQ(font->GetBackend(), backend);
    const int index = font->GetFontIndex(14.0f);
    WidthOf(*font, "abab\xC3\xA4\xC3\xA4", index);
    EXPECT_EQ(backend->advances, 3);
    EXPECT_EQ(backend->kernings, 4) << "ab, ba, and two pairs with the umlaut";
    WidthOf(*font,
            "\xC3\xA4\xC3\xA4"
            "baba",
            index);
    EXPECT_EQ(backend->advances, 3);
    EXPECT_EQ(backend->kernings, 5) << "only the pair of umlaut and b is new";
}

TEST(MeasuringFont, ManySizesDoNotPileUpTables)
{
    const HeldFont font(support::MakeFixedWidthFont());
    const support::AllocationScope scope;
    for (int i = 1; i <= 1000; ++i) {
        const auto size = static_cast<float>(i);
        const int index = font->GetFontIndex(size);
        EXPECT_EQ(WidthOf(*font, "ab", index), i);
    }
    EXPECT_LT(scope.SumLiveBytes(), 2000000U);
    EXPECT_EQ(WidthOf(*font, "ab", font->GetFontIndex(1.0f)), 1) << "an old size measures again";
}

TEST(MeasuringFont, WithoutBackendEveryTextMeasuresZero)
{
    const HeldFont font(new core::MeasuringFont(nullptr));
    int width = -1;
    int height = -1;
    font->GetStringSize("Rotor", &width, &height, nullptr, font->GetFontIndex(14.0f));
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    EXPECT_EQ(font->MeasureWidth("Rotor", 14.0f), 0.0);
}

TEST(MeasuringFont, OddNumbersOfAFontCountAsZero)
{
    const auto backend = std::make_shared<BrokenBackend>();
    for (const float broken :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          -std::numeric_limits<float>::infinity()}) {
        backend->broken = broken;
        const HeldFont font(new core::MeasuringFont(backend));
        int width = -1;
        int descent = -1;
        font->GetStringSize("ab", &width, nullptr, &descent, font->GetFontIndex(14.0f));
        EXPECT_EQ(width, 0);
        EXPECT_EQ(descent, broken > 0.0f ? std::numeric_limits<int>::max() : 0);
    }
}

TEST(MeasuringFont, WidthsSaturate)
{
    const auto backend = std::make_shared<BrokenBackend>();
    backend->broken = std::numeric_limits<float>::max();
    const HeldFont font(new core::MeasuringFont(backend));
    EXPECT_EQ(WidthOf(*font, "ab", font->GetFontIndex(14.0f)), std::numeric_limits<int>::max());
    backend->broken = -1.0f;
    const HeldFont negative(new core::MeasuringFont(backend));
    EXPECT_EQ(WidthOf(*negative, "ab", negative->GetFontIndex(14.0f)), 0);
}

TEST(MeasuringFont, WithoutMemoryItMeasuresAllTheSame)
{
    const KUVUnicodeString text("A label that is longer than a short string \xC3\xA4\xC3\xB6");
    OddBackend plain;
    const double expected =
        PlainWidth(plain, U"A label that is longer than a short string \u00E4\u00F6", 14.0f);
    const auto backend = std::make_shared<OddBackend>();
    std::size_t failing = 1;
    for (bool failed = true; failed && failing < 200; ++failing) {
        const HeldFont font(new core::MeasuringFont(backend));
        const int index = font->GetFontIndex(14.0f);
        int width = 0;
        {
            const support::FailingAllocation allocation(
                failing, support::FailingAllocation::Mode::FromThere);
            font->GetStringSize(text, &width, nullptr, nullptr, index);
            failed = allocation.HasFailed();
        }
        EXPECT_EQ(width, static_cast<int>(std::ceil(expected))) << failing;
        EXPECT_EQ(font->MeasureWidth(text, 14.0f), expected);
    }
    EXPECT_GT(failing, 5U);
}

TEST(MeasuringFont, WithoutMemoryANewSizeHasNoIndex)
{
    const HeldFont font(support::MakeFixedWidthFont());
    int index = -1;
    for (std::size_t failing = 1; failing < 10 && index < 0; ++failing) {
        const support::FailingAllocation allocation(failing);
        index = font->GetFontIndex(14.0f);
        EXPECT_EQ(index < 0, allocation.HasFailed());
    }
    EXPECT_EQ(font->GetFontIndex(14.0f), index);
    EXPECT_EQ(WidthOf(*font, "ab", index), 14);
}
