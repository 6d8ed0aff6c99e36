#include "core/SceneMemo.h"

#include "KUV3D.h"

#include <algorithm>
#include <new>

KUV_IMPLEMENT_CLASS(KUV3DBagRep, KUVRep, "KUVHost")
KUV_IMPLEMENT_CLASS(KUV3DFilterBagRep, KUV3DBagRep, "KUVHost")
KUV_IMPLEMENT_CLASS(VisPrimitive, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(VisPrimitiveGroupRep, KUVRep, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVTransientPathElementRep, KUVRep, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVGraphicPrimitive, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUV3DBoundingGP, KUVGraphicPrimitive, "KUVHost")
KUV_IMPLEMENT_CLASS(KUV3DFaceGP, KUV3DBoundingGP, "KUVHost")

// ---- bags

KUV3DBagRep::KUV3DBagRep() = default;

KUV3DBagRep::~KUV3DBagRep() { core::ForgetSceneStatistics(); }

KUV3DBagRep* KUV3DBagRep::CreateRep() { return new (std::nothrow) KUV3DBagRep; }

void KUV3DBagRep::AddChild(KUVRep* rep)
{
    children_.Add(rep);
    core::ForgetSceneStatistics();
}

void KUV3DBagRep::RemoveChild(KUVRep* rep)
{
    children_.Remove(rep);
    core::ForgetSceneStatistics();
}

const list<KUVRep>* KUV3DBagRep::GetChildren() const { return &children_.GetList(); }

KUV3DFilterBagRep::KUV3DFilterBagRep() = default;
KUV3DFilterBagRep::~KUV3DFilterBagRep() = default;

KUV3DFilterBagRep* KUV3DFilterBagRep::CreateRep() { return new (std::nothrow) KUV3DFilterBagRep; }

// ---- primitive groups

VisPrimitive::VisPrimitive(int typeCode) : typeCode_(typeCode) {}
VisPrimitive::~VisPrimitive() = default;

VisPrimitiveGroupRep::VisPrimitiveGroupRep() = default;

VisPrimitiveGroupRep::~VisPrimitiveGroupRep()
{
    for (const auto& entry : primitives_)
        entry.second->Release();
}

VisPrimitiveGroupRep* VisPrimitiveGroupRep::CreateRep()
{
    return new (std::nothrow) VisPrimitiveGroupRep;
}

VisPrimitive* VisPrimitiveGroupRep::GetVisPrimitive(int number) const
{
    const auto place =
        std::lower_bound(primitives_.begin(), primitives_.end(), number,
                         [](const auto& entry, int wanted) { return entry.first < wanted; });
    return place != primitives_.end() && place->first == number ? place->second : nullptr;
}

void VisPrimitiveGroupRep::SetVisPrimitive(int number, VisPrimitive* primitive)
{
    auto place =
        std::lower_bound(primitives_.begin(), primitives_.end(), number,
                         [](const auto& entry, int wanted) { return entry.first < wanted; });
    const bool known = place != primitives_.end() && place->first == number;
    VisPrimitive* const former = known ? place->second : nullptr;
    if (primitive && known)
        place->second = primitive;
    else if (primitive)
        primitives_.insert(place, {number, primitive});
    else if (known)
        primitives_.erase(place);
    if (primitive)
        primitive->AddRef();
    if (former)
        former->Release();
}

// ---- graphic primitives

KUVGraphicPrimitive::KUVGraphicPrimitive() = default;
KUVGraphicPrimitive::~KUVGraphicPrimitive() = default;

KUV3DBoundingGP::KUV3DBoundingGP(int triangleCount) : triangleCount_(triangleCount) {}

KUV3DBoundingGP::KUV3DBoundingGP(int triangleCount, std::vector<int> stripVertexCounts,
                                 std::vector<int> fanVertexCounts)
    : triangleCount_(triangleCount), stripVertexCounts_(std::move(stripVertexCounts)),
      fanVertexCounts_(std::move(fanVertexCounts))
{
}

KUV3DBoundingGP::~KUV3DBoundingGP() = default;

void KUV3DBoundingGP::GetTriangleData(KUVTriangleData& data) const
{
    data.triangleCount = triangleCount_;
    data.stripCount = static_cast<int>(stripVertexCounts_.size());
    data.stripVertexCounts = stripVertexCounts_.empty() ? nullptr : stripVertexCounts_.data();
    data.fanCount = static_cast<int>(fanVertexCounts_.size());
    data.fanVertexCounts = fanVertexCounts_.empty() ? nullptr : fanVertexCounts_.data();
}

KUV3DFaceGP::~KUV3DFaceGP() = default;

#define CORE_IMPLEMENT_PRIMITIVE(NAME)                                                             \
    KUV_IMPLEMENT_CLASS(NAME, KUVGraphicPrimitive, "KUVHost")                                      \
    NAME::NAME() = default;                                                                        \
    NAME::~NAME() = default;

CORE_IMPLEMENT_PRIMITIVE(KUV3DEdgeGP)
CORE_IMPLEMENT_PRIMITIVE(KUV3DLineGP)
CORE_IMPLEMENT_PRIMITIVE(KUV3DReferencePlaneGP)
CORE_IMPLEMENT_PRIMITIVE(KUV3DFixedArrowGP)
CORE_IMPLEMENT_PRIMITIVE(KUV2DPolygonGP)
CORE_IMPLEMENT_PRIMITIVE(Vis3DDynamicLeaderGP)
CORE_IMPLEMENT_PRIMITIVE(KUV3DMarkerGP)

// ---- transient reps

KUVTransientPathElementRep::KUVTransientPathElementRep() = default;

KUVTransientPathElementRep::~KUVTransientPathElementRep()
{
    for (KUVRepPath* const path : subPaths_)
        path->Release();
}

KUVTransientPathElementRep* KUVTransientPathElementRep::CreateRep()
{
    return new (std::nothrow) KUVTransientPathElementRep;
}

void KUVTransientPathElementRep::AddSubRepPath(KUVRepPath* path)
{
    if (!path)
        return;
    subPaths_.push_back(path);
    path->AddRef();
}

unsigned char KUVTransientPathElementRep::IsMetaRepPath(const KUVRepPath& path)
{
    return dynamic_cast<const KUVTransientPathElementRep*>(path[path.Size() - 1]) != nullptr;
}

KUVResult KUVTransientPathElementRep::ExtractSubRepPaths(const KUVRepPath& path,
                                                         std::vector<SubPath>& subPaths)
{
    auto* const rep = dynamic_cast<KUVTransientPathElementRep*>(path[path.Size() - 1]);
    if (!rep)
        return KUV_FAIL;
    subPaths.reserve(subPaths.size() + rep->subPaths_.size());
    for (KUVRepPath* const subPath : rep->subPaths_) {
        subPath->AddRef();
        subPaths.emplace_back(rep, subPath);
    }
    return KUV_OK;
}
