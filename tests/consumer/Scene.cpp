// What this small host does not have: styled widgets and 3D scenes. The module asks for them only
// when a tooltip or a tree of a scene is wanted; the answers say "nothing".

#include "KUVWidgets.h"

// ---- styled widgets

KUV_IMPLEMENT_CLASS(KUVSYPMetaClassBuilder, KUVBaseUnknown, "Consumer")

KUVSYPMetaClassBuilder::KUVSYPMetaClassBuilder() = default;
KUVSYPMetaClassBuilder::~KUVSYPMetaClassBuilder() = default;
void KUVSYPMetaClassBuilder::SetNames(const char*, const char*, const char*) {}
