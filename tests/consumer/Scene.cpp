// What this small host does not have: styled widgets, 3D scenes, and a mouse. The module asks for
// them only when a tooltip, the tree of a scene or an answer to an event is wanted. Paths that it
// makes here stay empty, and every question about a scene or a product is answered with "nothing".

#include "KUV3D.h"
#include "KUVEvents.h"
#include "KUVProduct.h"
#include "KUVWidgets.h"

// ---- styled widgets

KUV_IMPLEMENT_CLASS(KUVSYPMetaClassBuilder, KUVBaseUnknown, "Consumer")

KUVSYPMetaClassBuilder::KUVSYPMetaClassBuilder() = default;
KUVSYPMetaClassBuilder::~KUVSYPMetaClassBuilder() = default;
void KUVSYPMetaClassBuilder::SetNames(const char*, const char*, const char*) {}

// ---- paths: always empty

KUV_IMPLEMENT_CLASS(KUVRepPath, KUVBaseUnknown, "Consumer")
KUV_IMPLEMENT_CLASS(KUVPickPath, KUVRepPath, "Consumer")

KUVRepRun::KUVRepRun(const KUVRepRun&) {}
KUVRepRun& KUVRepRun::operator=(const KUVRepRun&) { return *this; }
KUVRepRun::~KUVRepRun() = default;

KUVRepPath::KUVRepPath() = default;
KUVRepPath::KUVRepPath(const KUVRepPath& other)
    : KUVBaseUnknown(other), subElements_(other.subElements_), locked_(other.locked_)
{
}
KUVRepPath& KUVRepPath::operator=(const KUVRepPath& other)
{
    subElements_ = other.subElements_;
    cursor_ = other.cursor_;
    locked_ = other.locked_;
    return *this;
}
KUVRepPath::~KUVRepPath() = default;

int KUVRepPath::Size() const { return 0; }
int KUVRepPath::GetCursorPosition() const { return cursor_; }
KUVRep* KUVRepPath::GetCurrentRep() const { return nullptr; }
KUVRep* KUVRepPath::operator[](int) const { return nullptr; }
const list<int>* KUVRepPath::GetSubElementList() const { return &subElements_; }
KUVViewpoint* KUVRepPath::GetViewpoint() const { return nullptr; }
unsigned char KUVRepPath::Contains(const KUVRepPath&) const { return 1; }
void KUVRepPath::InitToTopRep() { cursor_ = -1; }
void KUVRepPath::InitToLeafRep() { cursor_ = 0; }
KUVRep* KUVRepPath::NextChildRep() { return nullptr; }
KUVRep* KUVRepPath::NextFatherRep() { return nullptr; }
void KUVRepPath::AddRep(KUVRep*, int) {}
void KUVRepPath::RemoveRep(KUVRep*) {}
void KUVRepPath::Empty() {}
void KUVRepPath::Load(const list<int>& subElements) { subElements_ = subElements; }
unsigned char KUVRepPath::UnlockPath()
{
    const unsigned char wasLocked = locked_;
    locked_ = false;
    return wasLocked;
}

KUVPickPath::KUVPickPath() = default;
KUVPickPath::KUVPickPath(KUVViewpoint*) {}
KUVPickPath::KUVPickPath(const KUVPickPath&) = default;
KUVPickPath& KUVPickPath::operator=(const KUVPickPath&) = default;
KUVPickPath::~KUVPickPath() = default;
KUVViewpoint* KUVPickPath::GetViewpoint() const { return nullptr; }
void KUVPickPath::Push(KUVRep*) {}
void KUVPickPath::Pop() {}
KUVRep* KUVPickPath::GetTopRep() const { return nullptr; }

// ---- classes that the module tells apart: only their identities

KUV_IMPLEMENT_CLASS(VisPrimitiveGroupRep, KUVRep, "Consumer")
VisPrimitiveGroupRep::~VisPrimitiveGroupRep() = default;
VisPrimitive* VisPrimitiveGroupRep::GetVisPrimitive(int) const { return nullptr; }

#define IDENTITY_OF(CLASS)                                                                         \
    KUVClassId CLASS::ClassId() { return KUVClassIdOf(#CLASS); }

IDENTITY_OF(KUV3DBagRep)
IDENTITY_OF(KUV3DFilterBagRep)
IDENTITY_OF(KUV3DBoundingGP)
IDENTITY_OF(KUV3DFaceGP)
IDENTITY_OF(KUV3DEdgeGP)
IDENTITY_OF(KUV3DLineGP)
IDENTITY_OF(KUV3DMarkerGP)
IDENTITY_OF(KUV3DReferencePlaneGP)
IDENTITY_OF(KUV3DFixedArrowGP)
IDENTITY_OF(KUV2DPolygonGP)
IDENTITY_OF(Vis3DDynamicLeaderGP)
IDENTITY_OF(KUVMouseDevice)
IDENTITY_OF(KUVDeviceEvent)
IDENTITY_OF(KUVPressEvent)
IDENTITY_OF(KUVReleaseEvent)
IDENTITY_OF(KUVMotionEvent)
IDENTITY_OF(KUVDoubleClick)
IDENTITY_OF(KUVViewerEvent)

// ---- statistics

KUVResult KUVSceneGraphStatHelper::KUVGetSceneGraphRepStats(KUVRep*, KUVSceneGraphStats&)
{
    return KUV_FAIL;
}

// ---- products: none is known

KUVPLMID::KUVPLMID() = default;
KUVPLMID::~KUVPLMID() = default;
KUVResult KUVPLMID::GetPLMIDFromAdpIdentificator(const KUVIAdpPLMIdentificator*, KUVPLMID&)
{
    return KUV_FAIL;
}
KUVResult KUVPLMID::IsValidForRemoteUsage(unsigned char&) const { return KUV_FAIL; }
KUVPLMID_Any KUVPLMID::GetPhysicalId() const { return {}; }

KUVResult VisNativeProductLoader::GetProductID(const KUVRep*, KUVUnicodeString&)
{
    return KUV_FAIL;
}
KUVSpan<VisNativeProductLoader>
VisProductLoaderServices::GetRegisteredProductLoader(const KUVViewer*)
{
    return {};
}
