#ifndef paint_LabelFonts_h
#define paint_LabelFonts_h

#include "KUVStringsMath.h"
#include "paint/PictureSink.h"

#include <QFont>
#include <QFontMetricsF>
#include <QHash>
#include <QString>

#include <map>
#include <string>
#include <unordered_map>

namespace paint {

/// The character that is shown for `codePoint`: control characters and line separators become
/// visible signs of their own, so that a name with a line feed stays on its line. Others stay as
/// they are.
char32_t ShownCodePoint(char32_t codePoint);

/// `text` as it is shown: decoded, with `ShownCodePoint` for every character; bytes that are not
/// valid UTF-8 become U+FFFD, one for each.
QString ShownText(const KUVUnicodeString& text);

/// One font at one size of text line.
struct LabelFont {
    QFont font;
    QFontMetricsF metrics;
    /// Size of the em square in whole pixels.
    int em = 1;
    /// How the line's height is divided by its baseline, in pixels: plain letters and their
    /// descenders stand in the middle of it. The lower part is whole, so a line that starts on a
    /// whole pixel and is a whole number of pixels high has its baseline on one too.
    double above = 0.0;
    double below = 0.0;
};

/// A text brought to its place: `left` and `baseline` in pixels, y downwards.
struct TextPlacement {
    QString shown;
    double left = 0.0;
    double width = 0.0;
    int baseline = 0;
    /// Something of the text's line would stand outside its clip.
    bool needsClip = false;
};

/// The label font at all its sizes, for measuring and for painting, so that both agree.
///
/// The size of a text is the height of its line. The em is the largest whole number of pixels whose
/// ascent and descent fit into that height (12 for labels of 14 in DejaVu Sans), so a line never
/// leaves the band that was kept for it. Glyphs are not hinted: their advances grow with the size
/// alone, and are the same on the screen, in files and on every platform.
class LabelFonts {
public:
    /// An empty `family` takes the system's sans-serif font; one that is not installed is replaced
    /// by it.
    explicit LabelFonts(const std::string& family);

    /// The font for lines `size` pixels high; kept. The size is brought into 1 to 10,000.
    const LabelFont& AtSize(float size);
    /// Where `text` goes. The point is the one that its anchor names; the start of the text and its
    /// baseline are then brought to whole pixels, but not out of the clip when there is room in it.
    TextPlacement Place(const PlacedText& text);

    /// By how many pixels the baseline of `shown` lies lower than usual: accents on capitals need
    /// the room that other texts leave free at the bottom of their line.
    int AccentShift(const LabelFont& font, const QString& shown);

    /// The family that is really used; empty when the system has no font at all.
    QString GetResolvedFamily() const;
    /// Whether the family that was asked for is installed. Generic names ("serif") always are.
    bool HasFamily() const;
    /// Whether there is any font; without one Qt would paint a box for every character.
    bool HasFont() const { return hasFont_; }

private:
    LabelFont Make(int em, double height);
    double InkHeight(char32_t character);
    double WidthOf(const LabelFont& font, const QString& shown);

    QFont base_;
    bool hasFont_ = false;
    std::map<float, LabelFont> bySize_;
    /// Height of the ink above the baseline as a fraction of the em, by character.
    std::unordered_map<char32_t, double> inkHeights_;
    /// The widths of the texts placed last, all in one font.
    QHash<QString, double> widths_;
    const LabelFont* widthsOf_ = nullptr;
};

}  // namespace paint

#endif
