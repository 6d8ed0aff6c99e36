#include "paint/LabelFonts.h"

#include "core/Utf8.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace paint {

char32_t ShownCodePoint(char32_t codePoint)
{
    constexpr char32_t CONTROL_PICTURES = 0x2400;
    if (codePoint < 0x20)
        return CONTROL_PICTURES + codePoint;
    if (codePoint == 0x7F)
        return 0x2421;
    // No picture exists for the second set of control characters. The two separators would break
    // the line, the last two are no characters.
    const bool isSecondSet = codePoint >= 0x80 && codePoint < 0xA0;
    if (isSecondSet || codePoint == 0xFFFE || codePoint == 0xFFFF)
        return core::REPLACEMENT_CHARACTER;
    if (codePoint == 0x2028 || codePoint == 0x2029)
        return 0x2424;
    return codePoint;
}

QString ShownText(const KUVUnicodeString& text)
{
    const char* bytes = text.GetUtf8();
    std::size_t left = text.GetByteCount();
    QString shown;
    shown.reserve(static_cast<qsizetype>(left));
    while (left > 0) {
        const core::Utf8Character character = core::DecodeUtf8(bytes, left);
        const char32_t codePoint = ShownCodePoint(character.codePoint);
        if (QChar::requiresSurrogates(codePoint)) {
            shown.append(QChar(QChar::highSurrogate(codePoint)));
            shown.append(QChar(QChar::lowSurrogate(codePoint)));
        } else {
            shown.append(QChar(static_cast<char16_t>(codePoint)));
        }
        bytes += character.byteCount;
        left -= character.byteCount;
    }
    return shown;
}

LabelFonts::LabelFonts(const std::string& family)
    : base_(family.empty() ? QStringLiteral("sans-serif") : QString::fromStdString(family))
{
    base_.setStyleHint(QFont::SansSerif);
    base_.setHintingPreference(QFont::PreferNoHinting);
    // Coloured fringes would depend on the machine's screen settings.
    base_.setStyleStrategy(QFont::NoSubpixelAntialias);
    hasFont_ = !GetResolvedFamily().isEmpty();
}

LabelFont LabelFonts::Make(int em, double height)
{
    QFont font(base_);
    font.setPixelSize(em);
    const QFontMetricsF metrics(font);
    double plainHeight = 0.0;
    for (const char32_t character : U"Alb|([{/")
        plainHeight = std::max(plainHeight, em * InkHeight(character));
    const double descent = metrics.descent();
    const double spare = std::max(0.0, height - plainHeight - descent);
    const double below = std::min(std::round(descent + spare / 2.0), std::floor(height));
    return {font, metrics, em, height - below, below};
}

const LabelFont& LabelFonts::AtSize(float size)
{
    const float height = std::isfinite(size) ? std::clamp(size, 1.0f, 10000.0f) : 1.0f;
    const auto known = bySize_.find(height);
    if (known != bySize_.end())
        return known->second;
    const auto lineHeight = static_cast<double>(height);
    int em = static_cast<int>(height);
    LabelFont made = Make(em, lineHeight);
    while (em > 1 && made.metrics.ascent() + made.metrics.descent() > lineHeight) {
        --em;
        made = Make(em, lineHeight);
    }
    return bySize_.emplace(height, made).first->second;
}

double LabelFonts::InkHeight(char32_t character)
{
    const auto [entry, isNew] = inkHeights_.try_emplace(character, 0.0);
    if (isNew) {
        // Qt measures ink in whole pixels: large ones give the fraction well enough.
        constexpr int EM = 200;
        QFont large(base_);
        large.setPixelSize(EM);
        const QRectF ink = QFontMetricsF(large).tightBoundingRect(QString::fromUcs4(&character, 1));
        entry->second = std::max(0.0, -ink.top() / EM);
    }
    return entry->second;
}

/// Most labels of a large picture are short for want of room, and many of those alike.
double LabelFonts::WidthOf(const LabelFont& font, const QString& shown)
{
    constexpr qsizetype MOST_WIDTHS = 10000;
    if (widthsOf_ != &font || widths_.size() >= MOST_WIDTHS)
        widths_.clear();
    widthsOf_ = &font;
    const auto known = widths_.constFind(shown);
    if (known != widths_.cend())
        return known.value();
    return *widths_.insert(shown, font.metrics.horizontalAdvance(shown));
}

int LabelFonts::AccentShift(const LabelFont& font, const QString& shown)
{
    const bool isPlain = std::all_of(shown.cbegin(), shown.cend(),
                                     [](QChar character) { return character.unicode() < 0x80; });
    if (isPlain)
        return 0;
    double highest = 0.0;
    for (const char32_t character : shown.toStdU32String()) {
        if (character >= 0x80)
            highest = std::max(highest, font.em * InkHeight(character));
    }
    const double missing = std::round(highest - font.above);
    const double free = std::floor(font.below - font.metrics.descent());
    return static_cast<int>(std::max(0.0, std::min(missing, free)));
}

TextPlacement LabelFonts::Place(const PlacedText& text)
{
    const LabelFont& font = AtSize(text.size);
    TextPlacement placed;
    placed.shown = ShownText(*text.text);
    placed.width = WidthOf(font, placed.shown);

    const int column = text.anchor % 3;
    const int row = text.anchor / 3;
    placed.left = std::round(text.x - placed.width * column / 2.0);
    const double overhang = placed.left + placed.width - text.clip.right;
    if (overhang > 0.0 && overhang < 1.0)
        placed.left = std::max<double>(text.clip.left, placed.left - overhang);

    const double bottom = text.y + static_cast<double>(text.size) * row / 2.0;
    placed.baseline = static_cast<int>(std::round(bottom - font.below));
    // Rounded to the wrong side, a line may miss its area by less than a pixel.
    if (placed.baseline - font.above < text.clip.top &&
        placed.baseline + 1 + font.below <= text.clip.bottom)
        ++placed.baseline;
    else if (placed.baseline + font.below > text.clip.bottom &&
             placed.baseline - 1 - font.above >= text.clip.top)
        --placed.baseline;
    placed.needsClip = placed.left < text.clip.left ||
                       placed.left + placed.width > text.clip.right + 0.01 ||
                       placed.baseline - font.above < text.clip.top ||
                       placed.baseline + font.below > text.clip.bottom;
    placed.baseline += AccentShift(font, placed.shown);
    return placed;
}

bool LabelFonts::HasFamily() const
{
    const QString wanted = base_.families().value(0);
    for (const char* const generic : {"sans-serif", "sans", "serif", "monospace"})
        if (wanted.compare(QLatin1String(generic), Qt::CaseInsensitive) == 0)
            return true;
    return QFontDatabase::hasFamily(wanted);
}

QString LabelFonts::GetResolvedFamily() const { return QFontInfo(base_).family(); }

}  // namespace paint
