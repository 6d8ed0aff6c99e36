#include "core/ProductObjects.h"

#include <new>
#include <utility>

namespace core {

namespace {

/// Gives out `object` as `Interface` when that is what was asked for.
template <class Interface, class Object>
bool Give(Object* object, KUVClassId interfaceId, void** result)
{
    if (!result || interfaceId != KUVClassIdOf(Interface::InterfaceName()))
        return false;
    Interface* const given = object;
    given->AddInterfaceRef();
    *result = given;
    return true;
}

KUVResult MakeIdentificator(const KUVUnicodeString& id, KUVIAdpPLMIdentificator*& identificator)
{
    // Without an identifier of its own the object means nothing outside this process.
    const unsigned char valid = id.IsEmpty() ? 0 : 1;
    identificator = new (std::nothrow) KUVIAdpPLMIdentificator(id, valid);
    return identificator ? KUV_OK : KUV_FAIL;
}

}  // namespace

// ---- products

KUV_IMPLEMENT_CLASS(ProductReference, KUVBaseUnknown, "KUVHost")

ProductReference::ProductReference(KUVUnicodeString name, KUVUnicodeString id, ProductKind kind)
    : name_(std::move(name)), id_(std::move(id)), kind_(kind)
{
}

ProductReference::~ProductReference() = default;

ProductReference* ProductReference::Create(KUVUnicodeString name, KUVUnicodeString id,
                                           ProductKind kind)
{
    return new (std::nothrow) ProductReference(std::move(name), std::move(id), kind);
}

KUVResult ProductReference::QueryInterface(KUVClassId interfaceId, void** result)
{
    if (Give<KUVIPLMComponent>(this, interfaceId, result))
        return KUV_OK;
    return KUVBaseUnknown::QueryInterface(interfaceId, result);
}

KUVResult ProductReference::GetAdpIdentificator(KUVIAdpPLMIdentificator*& identificator) const
{
    return MakeIdentificator(id_, identificator);
}

// ---- instances

KUV_IMPLEMENT_CLASS(ProductInstance, KUVBaseUnknown, "KUVHost")

ProductInstance::ProductInstance(ProductReference* reference, KUVUnicodeString name,
                                 KUVUnicodeString id)
    : reference_(reference), name_(std::move(name)), id_(std::move(id))
{
    reference_->AddRef();
}

ProductInstance::~ProductInstance() { reference_->Release(); }

ProductInstance* ProductInstance::Create(ProductReference* reference, KUVUnicodeString name,
                                         KUVUnicodeString id)
{
    return new (std::nothrow) ProductInstance(reference, std::move(name), std::move(id));
}

const KUVUnicodeString& ProductInstance::DisplayName() const
{
    return name_.IsEmpty() ? reference_->Name() : name_;
}

KUVResult ProductInstance::QueryInterface(KUVClassId interfaceId, void** result)
{
    if (Give<KUVIPLMComponent>(this, interfaceId, result))
        return KUV_OK;
    return KUVBaseUnknown::QueryInterface(interfaceId, result);
}

KUVResult ProductInstance::GetAdpIdentificator(KUVIAdpPLMIdentificator*& identificator) const
{
    return MakeIdentificator(id_, identificator);
}

// ---- occurrences

// Outside an anonymous namespace, where compilers complain of identity operations that nobody
// calls.
class RootOccurrence final : public ProductOccurrence {
    KUV_DECLARE_CLASS
public:
    explicit RootOccurrence(ProductReference* reference) : reference_(reference)
    {
        reference_->AddRef();
    }
    ~RootOccurrence() override { reference_->Release(); }

    ProductInstance* Instance() const override { return nullptr; }
    ProductReference& Reference() const override { return *reference_; }

private:
    ProductReference* reference_;
};

class InstanceOccurrence final : public ProductOccurrence {
    KUV_DECLARE_CLASS
public:
    explicit InstanceOccurrence(ProductInstance* instance) : instance_(instance)
    {
        instance_->AddRef();
    }
    ~InstanceOccurrence() override { instance_->Release(); }

    ProductInstance* Instance() const override { return instance_; }
    ProductReference& Reference() const override { return instance_->Reference(); }

private:
    ProductInstance* instance_;
};

KUV_IMPLEMENT_CLASS_NAMED(RootOccurrence, "OXMRootOccurrence", ProductOccurrence, "KUVHost")
KUV_IMPLEMENT_CLASS_NAMED(InstanceOccurrence, "OXMInstanceOccurrence", ProductOccurrence, "KUVHost")

KUV_IMPLEMENT_CLASS(ProductOccurrence, KUVBaseUnknown, "KUVHost")

ProductOccurrence::ProductOccurrence() = default;
ProductOccurrence::~ProductOccurrence() = default;

ProductOccurrence* ProductOccurrence::CreateRoot(ProductReference* reference)
{
    return new (std::nothrow) RootOccurrence(reference);
}

ProductOccurrence* ProductOccurrence::Create(ProductInstance* instance)
{
    return new (std::nothrow) InstanceOccurrence(instance);
}

KUVResult ProductOccurrence::QueryInterface(KUVClassId interfaceId, void** result)
{
    if (Give<KUVIAlias>(this, interfaceId, result) || Give<KUVIIcon>(this, interfaceId, result) ||
        Give<KUVIPLMNavOccurrence>(this, interfaceId, result))
        return KUV_OK;
    return KUVBaseUnknown::QueryInterface(interfaceId, result);
}

KUVUnicodeString ProductOccurrence::GetAlias() const
{
    const ProductInstance* const instance = Instance();
    return instance ? instance->DisplayName() : Reference().Name();
}

KUVUnicodeString ProductOccurrence::GetIconName() const
{
    const ProductKind kind = Instance() ? Reference().Kind() : ProductKind::Unknown;
    switch (kind) {
    case ProductKind::Assembly:
        return "I_VisAssembly";
    case ProductKind::Part:
        return "I_VisPart";
    case ProductKind::Unknown:
        break;
    }
    return "I_VisProduct";
}

// ---- shapes

KUV_IMPLEMENT_CLASS(ShapeObject, KUVBaseUnknown, "KUVHost")

ShapeObject::ShapeObject(KUVUnicodeString name, KUVUnicodeString iconName, std::uint32_t rgba)
    : name_(std::move(name)), iconName_(std::move(iconName)), rgba_(rgba)
{
}

ShapeObject::~ShapeObject() = default;

ShapeObject* ShapeObject::Create(KUVUnicodeString name, KUVUnicodeString iconName,
                                 std::uint32_t rgba)
{
    return new (std::nothrow) ShapeObject(std::move(name), std::move(iconName), rgba);
}

KUVResult ShapeObject::QueryInterface(KUVClassId interfaceId, void** result)
{
    if (Give<KUVIAlias>(this, interfaceId, result) || Give<KUVIIcon>(this, interfaceId, result))
        return KUV_OK;
    return KUVBaseUnknown::QueryInterface(interfaceId, result);
}

}  // namespace core
