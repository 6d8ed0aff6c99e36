#include "core/SceneReps.h"

#include <new>
#include <utility>

namespace core {

KUV_IMPLEMENT_CLASS(SceneShapeRep, KUVRep, "KUVHost")
KUV_IMPLEMENT_CLASS(SceneOccurrenceRep, KUV3DFilterBagRep, "KUVHost")

// ---- shapes

SceneShapeRep::SceneShapeRep(std::shared_ptr<const PartGeometry> geometry)
    : geometry_(std::move(geometry))
{
}

SceneShapeRep::~SceneShapeRep() = default;

SceneShapeRep* SceneShapeRep::CreateRep(std::shared_ptr<const PartGeometry> geometry,
                                        KUVModelIdentificator* identificator)
{
    auto* const rep = new (std::nothrow) SceneShapeRep(std::move(geometry));
    if (rep)
        rep->SetModelIdentificator(identificator);
    return rep;
}

KUVGraphicPrimitive* SceneShapeRep::GetGraphicPrimitive(int number) const
{
    return geometry_ ? geometry_->Primitive(number) : nullptr;
}

// ---- occurrences

SceneOccurrenceRep::SceneOccurrenceRep() = default;
SceneOccurrenceRep::~SceneOccurrenceRep() = default;

SceneOccurrenceRep* SceneOccurrenceRep::CreateRep(KUVModelIdentificator* identificator)
{
    auto* const rep = new (std::nothrow) SceneOccurrenceRep;
    if (rep)
        rep->SetModelIdentificator(identificator);
    return rep;
}

SceneTransformation SceneOccurrenceRep::GetTransformation() const
{
    return placement_ ? placement_->transformation : SceneTransformation();
}

void SceneOccurrenceRep::SetTransformation(const SceneTransformation& transformation)
{
    if (!placement_ && transformation.IsIdentity())
        return;
    if (!placement_)
        placement_ = std::make_unique<Placement>();
    placement_->transformation = transformation;
}

std::uint32_t SceneOccurrenceRep::GetColour() const { return placement_ ? placement_->colour : 0; }

void SceneOccurrenceRep::SetColour(std::uint32_t rgba)
{
    if (!placement_ && rgba == 0)
        return;
    if (!placement_)
        placement_ = std::make_unique<Placement>();
    placement_->colour = rgba;
}

const PartGeometry* GeometryOf(const KUVRep* rep)
{
    return rep && rep->GetMetaObject() == SceneShapeRep::MetaObject()
               ? static_cast<const SceneShapeRep*>(rep)->Geometry()
               : nullptr;
}

}  // namespace core
