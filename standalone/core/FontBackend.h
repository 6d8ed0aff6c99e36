#ifndef core_FontBackend_h
#define core_FontBackend_h

#include "KUVExport.h"

namespace core {

/// Where the numbers of a font come from. All lengths are in pixels.
///
/// `size` is the height of a line of text, ascent and descent together, so that a text of size 14
/// fits a band that is 14 high; it is not the size of the em. Called once for each character, pair
/// and size as long as `MeasuringFont` remembers the answer.
class KUV_EXPORT FontBackend {
public:
    virtual ~FontBackend() = default;

    /// From one character to the next, without kerning.
    virtual float Advance(char32_t codePoint, float size) = 0;
    /// What kerning adds between two neighbours; usually 0 or less.
    virtual float Kerning(char32_t left, char32_t right, float size) = 0;
    /// Height above the base line. Ascent and descent add up to `size`.
    virtual float Ascent(float size) = 0;
    virtual float Descent(float size) = 0;
};

}  // namespace core

#endif
