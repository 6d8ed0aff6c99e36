#ifndef support_FixedWidthFont_h
#define support_FixedWidthFont_h

#include "core/FontBackend.h"
#include "core/MeasuringFont.h"

namespace support {

/// A font that is the same on every machine: each character is half as wide as the line is high
/// (7 for size 14), a quarter of the line is descent, nothing is kerned.
class FixedWidthBackend : public core::FontBackend {
public:
    float Advance(char32_t codePoint, float size) override;
    float Kerning(char32_t left, char32_t right, float size) override;
    float Ascent(float size) override;
    float Descent(float size) override;
};

/// The font itself, with one reference for the caller. It measures as fast as the real one.
core::MeasuringFont* MakeFixedWidthFont();

}  // namespace support

#endif
