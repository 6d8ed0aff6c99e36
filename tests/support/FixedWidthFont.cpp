#include "support/FixedWidthFont.h"

namespace support {

float FixedWidthBackend::Advance(char32_t /*codePoint*/, float size) { return size * 0.5f; }

float FixedWidthBackend::Kerning(char32_t /*left*/, char32_t /*right*/, float /*size*/)
{
    return 0.0f;
}

float FixedWidthBackend::Ascent(float size) { return size * 0.75f; }

float FixedWidthBackend::Descent(float size) { return size * 0.25f; }

core::MeasuringFont* MakeFixedWidthFont()
{
    return new core::MeasuringFont(std::make_shared<FixedWidthBackend>());
}

}  // namespace support
