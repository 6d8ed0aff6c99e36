#include "paint/LabelFonts.h"

#include "core/MeasuringFont.h"
#include "paint/PaintSession.h"
#include "paint/QtBackends.h"
#include "paint_scene.h"

#include <cmath>
#include <random>

namespace painttest {
namespace {

const char* const LABELS[] = {
    "Bracket M6 x 20",
    "AVATAR Wave To. Ty, LT \"quoted\" 1.17-11",
    "office fluff affine file fjord",
    "housing_left_front (mirrored) [2x] #17",
    "Getriebegeh\xC3\xA4use \xC3\x98 30 \xC2\xB1 0,05",
    "\xD1\x80\xD0\xBE\xD1\x82\xD0\xBE\xD1\x80 \xCE\xA9\xCE\xB1",
    "tab\tand line\nfeed",
    "...",
};

Held<core::MeasuringFont> DefaultFont()
{
    std::string remark;
    return Held<core::MeasuringFont>(paint::MakeFont("", remark));
}

TEST(LabelFonts, ALineFitsItsSizeAndUsesIt)
{
    paint::LabelFonts fonts("");
    ASSERT_TRUE(fonts.HasFont()) << "the tests need a font (package fonts-dejavu-core)";
    for (const float size : {5.0f, 13.0f, 14.0f, 14.5f, 21.0f, 28.0f, 140.0f}) {
        const paint::LabelFont& font = fonts.AtSize(size);
        const double height = font.metrics.ascent() + font.metrics.descent();
        EXPECT_LE(height, static_cast<double>(size));
        EXPECT_GT(height, static_cast<double>(size) - 2.0) << "of " << size;
    }
}

TEST(LabelFonts, OddSizesGetAFontAllTheSame)
{
    paint::LabelFonts fonts("");
    for (const float size : {0.0f, -3.0f, NAN, INFINITY, 1e-30f, 1e30f}) {
        const paint::LabelFont& font = fonts.AtSize(size);
        EXPECT_GE(font.em, 1);
        EXPECT_LE(font.em, 10000);
    }
}

TEST(LabelFonts, ShownTextHasOneCharacterForEveryCharacter)
{
    EXPECT_EQ(paint::ShownText(KUVUnicodeString("plain")), QStringLiteral("plain"));
    EXPECT_EQ(paint::ShownText(KUVUnicodeString("")), QString());
    EXPECT_EQ(paint::ShownText(KUVUnicodeString("\xF0\x9F\x94\xA9")).toUcs4().size(), 1);
    EXPECT_EQ(paint::ShownText(KUVUnicodeString("\xF0\x9F\x94")).size(), 3) << "a cut sequence";
}

TEST(LabelFonts, EveryCodePointIsShownAsSomethingXmlAllows)
{
    for (char32_t codePoint = 0; codePoint < 0x10000; ++codePoint) {
        const char32_t shown = paint::ShownCodePoint(codePoint);
        EXPECT_GE(shown, 0x20U);
        EXPECT_FALSE(shown >= 0x7F && shown < 0xA0);
        EXPECT_NE(shown, 0xFFFEU);
        EXPECT_NE(shown, 0xFFFFU);
    }
}

TEST(QtFontBackend, AscentAndDescentAreThoseOfTheLine)
{
    paint::QtFontBackend backend("");
    for (const float size : {9.8f, 14.0f, 28.0f}) {
        EXPECT_FLOAT_EQ(backend.Ascent(size) + backend.Descent(size), size);
        EXPECT_GT(backend.Ascent(size), 2.0f * backend.Descent(size));
        EXPECT_FLOAT_EQ(backend.Descent(size), std::round(backend.Descent(size)));
    }
}

TEST(QtFontBackend, PairsAreKerned)
{
    paint::QtFontBackend backend("DejaVu Sans");
    if (!backend.GetFonts().HasFamily())
        GTEST_SKIP() << "DejaVu Sans is not installed";
    EXPECT_LT(backend.Kerning(U'A', U'V', 14.0f), -0.3f);
    EXPECT_FLOAT_EQ(backend.Kerning(U'n', U'n', 14.0f), 0.0f);
}

TEST(MakeFont, MeasuredAndPaintedWidthsAgree)
{
    const auto font = DefaultFont();
    paint::LabelFonts painted("");
    for (const float size : {14.0f, 28.0f, 9.8f, 42.0f}) {
        const QFontMetricsF& metrics = painted.AtSize(size).metrics;
        for (const char* const label : LABELS) {
            const KUVUnicodeString text(label);
            const double real = metrics.horizontalAdvance(paint::ShownText(text));
            EXPECT_NEAR(font->MeasureWidth(text, size), real, 0.02 * static_cast<double>(size))
                << label << " at " << size;
            int width = 0;
            font->GetStringSize(text, &width, nullptr, nullptr, font->GetFontIndex(size));
            EXPECT_GE(width + 0.02 * static_cast<double>(size), real) << label << " at " << size;
            EXPECT_LE(width, real + 1.3) << label << " at " << size;
        }
    }
}

TEST(MakeFont, RandomLabelsAreAsWideAsTheirInk)
{
    const auto font = DefaultFont();
    paint::LabelFonts painted("");
    const QFontMetricsF& metrics = painted.AtSize(14.0f).metrics;
    std::mt19937 random(17);
    std::uniform_int_distribution<int> letter(0x20, 0x7E);
    std::uniform_int_distribution<int> length(1, 40);
    double worst = 0.0;
    for (int i = 0; i < 2000; ++i) {
        std::string label;
        for (int rest = length(random); rest > 0; --rest)
            label += static_cast<char>(letter(random));
        const KUVUnicodeString text(label.c_str());
        worst = std::max(worst, std::fabs(font->MeasureWidth(text, 14.0f) -
                                          metrics.horizontalAdvance(paint::ShownText(text))));
    }
    EXPECT_LT(worst, 0.1);
}

TEST(MakeFont, TheHeightIsTheSizeRoundedUp)
{
    const auto font = DefaultFont();
    int height = 0;
    int descent = 0;
    font->GetStringSize(KUVUnicodeString("x"), nullptr, &height, &descent,
                        font->GetFontIndex(14.0f));
    EXPECT_EQ(height, 14);
    EXPECT_GT(descent, 0);
    EXPECT_LT(descent, 7);
}

TEST(MakeFont, AMissingFamilyIsSaidAndReplaced)
{
    std::string remark;
    const Held<core::MeasuringFont> font(paint::MakeFont("No Such Family 17", remark));
    ASSERT_TRUE(font);
    EXPECT_EQ(remark.rfind("font 'No Such Family 17' is not installed; labels use '", 0), 0U)
        << remark;
    EXPECT_GT(font->MeasureWidth(KUVUnicodeString("abc"), 14.0f), 10.0);
}

TEST(MakeFont, GenericFamiliesAndTheDefaultNeedNoRemark)
{
    for (const char* const family : {"", "sans-serif", "Monospace", "serif"}) {
        std::string remark = "old";
        const Held<core::MeasuringFont> font(paint::MakeFont(family, remark));
        EXPECT_EQ(remark, "") << family;
    }
}

}  // namespace
}  // namespace painttest
