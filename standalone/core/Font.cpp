#include "KUV2D.h"

KUV_IMPLEMENT_CLASS(KUVCharacterFont, KUVBaseUnknown, "KUVHost")

KUVCharacterFont::KUVCharacterFont() = default;
KUVCharacterFont::~KUVCharacterFont() = default;
