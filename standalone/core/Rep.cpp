#include "KUVRep.h"

KUV_IMPLEMENT_CLASS(KUVModelIdentificator, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVRep, KUVBaseUnknown, "KUVHost")

KUVModelIdentificator::KUVModelIdentificator(KUVBaseUnknown* object) : object_(object)
{
    if (object_)
        object_->AddRef();
}

KUVModelIdentificator::~KUVModelIdentificator()
{
    if (object_)
        object_->Release();
}

KUVRep::KUVRep() = default;

KUVRep::~KUVRep()
{
    if (modelIdentificator_)
        modelIdentificator_->Release();
}

void KUVRep::SetModelIdentificator(KUVModelIdentificator* identificator)
{
    if (identificator)
        identificator->AddRef();
    KUVModelIdentificator* const former = modelIdentificator_;
    modelIdentificator_ = identificator;
    if (former)
        former->Release();
}

const list<KUVRep>* KUVRep::GetChildren() const { return nullptr; }

void KUVRep::GetGraphicAttributeSet(KUVGraphicAttributeSet& attributes) const
{
    if (hasAttributes_)
        attributes = attributes_;
}

void KUVRep::SetGraphicAttributeSet(const KUVGraphicAttributeSet& attributes)
{
    attributes_ = attributes;
    hasAttributes_ = true;
}

KUVGraphicPrimitive* KUVRep::GetGraphicPrimitive(int /*number*/) const { return nullptr; }
