#ifndef paint_QtBackends_h
#define paint_QtBackends_h

#include "core/FontBackend.h"
#include "core/ImageBackend.h"
#include "paint/LabelFonts.h"

#include <string>

namespace paint {

/// Measures with the very fonts that the pictures are painted with.
///
/// Kerning is what a pair is wider or narrower than its two characters, as the shaping engine lays
/// it out: so it includes ligatures of two characters. In scripts whose characters change their
/// form with their neighbours a measured width is an estimate; the painter cuts such a text at its
/// node's edge.
class QtFontBackend : public core::FontBackend {
public:
    /// See `LabelFonts`.
    explicit QtFontBackend(const std::string& family);

    float Advance(char32_t codePoint, float size) override;
    float Kerning(char32_t left, char32_t right, float size) override;
    float Ascent(float size) override;
    float Descent(float size) override;

    LabelFonts& GetFonts() { return fonts_; }

private:
    LabelFonts fonts_;
};

/// Reads image files in the formats that Qt Gui has built in: PNG, JPEG, GIF, BMP, ICO, PPM, XBM,
/// XPM.
class QtImageBackend : public core::ImageBackend {
public:
    /// Refuses images of more than 16,384 pixels a side: they are icons.
    KUVPixelImage* Load(const std::string& path) override;
};

}  // namespace paint

#endif
