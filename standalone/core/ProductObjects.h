#ifndef core_ProductObjects_h
#define core_ProductObjects_h

#include "KUVObjectInterfaces.h"
#include "KUVObjectModel.h"
#include "KUVProduct.h"
#include "KUVStringsMath.h"

#include <cstdint>

// The model objects behind the reps of an imported scene.
//
//     ProductReference   a product: a part or an assembly, once a file
//     ProductInstance    a product put into an assembly, once however often the assembly occurs
//     ProductOccurrence  one place of the whole structure, once an occurrence rep
//     ShapeObject        what the leaf reps of a part show, once a part
//
// Every `Create` gives one reference to the caller, or null when memory runs out, and takes
// references on the objects it is given.

namespace core {

enum class ProductKind : unsigned char { Unknown, Assembly, Part };

/// A product.
class KUV_EXPORT ProductReference final : public KUVBaseUnknown, public KUVIPLMComponent {
    KUV_DECLARE_CLASS
public:
    /// @param name  for people
    /// @param id    the same whatever session shows the product; empty when there is none
    static ProductReference* Create(KUVUnicodeString name, KUVUnicodeString id, ProductKind kind);
    ~ProductReference() override;

    const KUVUnicodeString& Name() const { return name_; }
    const KUVUnicodeString& Id() const { return id_; }
    ProductKind Kind() const { return kind_; }

    using KUVBaseUnknown::QueryInterface;
    KUVResult QueryInterface(KUVClassId interfaceId, void** result) override;
    unsigned int AddInterfaceRef() override { return AddRef(); }
    unsigned int ReleaseInterface() override { return Release(); }
    KUVResult GetAdpIdentificator(KUVIAdpPLMIdentificator*& identificator) const override;

private:
    ProductReference(KUVUnicodeString name, KUVUnicodeString id, ProductKind kind);

    KUVUnicodeString name_;
    KUVUnicodeString id_;
    ProductKind kind_;
};

/// A product put into an assembly.
class KUV_EXPORT ProductInstance final : public KUVBaseUnknown, public KUVIPLMComponent {
    KUV_DECLARE_CLASS
public:
    /// @param reference  not null
    /// @param name       the instance's own name; empty to show the product's
    /// @param id         unique in the assembly; empty when there is none
    static ProductInstance* Create(ProductReference* reference, KUVUnicodeString name,
                                   KUVUnicodeString id);
    ~ProductInstance() override;

    ProductReference& Reference() const { return *reference_; }
    /// The own name, else the product's.
    const KUVUnicodeString& DisplayName() const;
    const KUVUnicodeString& Id() const { return id_; }

    using KUVBaseUnknown::QueryInterface;
    KUVResult QueryInterface(KUVClassId interfaceId, void** result) override;
    unsigned int AddInterfaceRef() override { return AddRef(); }
    unsigned int ReleaseInterface() override { return Release(); }
    KUVResult GetAdpIdentificator(KUVIAdpPLMIdentificator*& identificator) const override;

private:
    ProductInstance(ProductReference* reference, KUVUnicodeString name, KUVUnicodeString id);

    ProductReference* reference_;
    KUVUnicodeString name_;
    KUVUnicodeString id_;
};

/// One place of the product structure, as the whole structure is walked from its root.
class KUV_EXPORT ProductOccurrence : public KUVBaseUnknown,
                                     public KUVIAlias,
                                     public KUVIIcon,
                                     public KUVIPLMNavOccurrence {
    KUV_DECLARE_CLASS
public:
    /// The root of a structure, of the class "OXMRootOccurrence". `reference` is not null.
    static ProductOccurrence* CreateRoot(ProductReference* reference);
    /// Any other occurrence, of the class "OXMInstanceOccurrence". `instance` is not null.
    static ProductOccurrence* Create(ProductInstance* instance);
    ~ProductOccurrence() override;

    /// Null for a root.
    virtual ProductInstance* Instance() const = 0;
    virtual ProductReference& Reference() const = 0;

    using KUVBaseUnknown::QueryInterface;
    KUVResult QueryInterface(KUVClassId interfaceId, void** result) override;
    unsigned int AddInterfaceRef() override { return AddRef(); }
    unsigned int ReleaseInterface() override { return Release(); }
    /// The instance's name, else the product's.
    KUVUnicodeString GetAlias() const override;
    /// "I_VisProduct" for a root and for a product of unknown kind, else "I_VisAssembly" or
    /// "I_VisPart".
    KUVUnicodeString GetIconName() const override;
    KUVBaseUnknown* GetRelatedInstance() const override { return Instance(); }
    KUVBaseUnknown* GetRelatedReference() const override { return &Reference(); }

protected:
    ProductOccurrence();
};

/// What the leaf reps of a part show.
class KUV_EXPORT ShapeObject final : public KUVBaseUnknown, public KUVIAlias, public KUVIIcon {
    KUV_DECLARE_CLASS
public:
    /// @param name      the shape's name, else the product's
    /// @param iconName  without extension
    /// @param rgba      0xRRGGBBAA; 0 for no colour
    static ShapeObject* Create(KUVUnicodeString name,
                               KUVUnicodeString iconName = "VisLevelSelectorGeometry",
                               std::uint32_t rgba = 0);
    ~ShapeObject() override;

    std::uint32_t Colour() const { return rgba_; }

    using KUVBaseUnknown::QueryInterface;
    KUVResult QueryInterface(KUVClassId interfaceId, void** result) override;
    unsigned int AddInterfaceRef() override { return AddRef(); }
    unsigned int ReleaseInterface() override { return Release(); }
    KUVUnicodeString GetAlias() const override { return name_; }
    KUVUnicodeString GetIconName() const override { return iconName_; }

private:
    ShapeObject(KUVUnicodeString name, KUVUnicodeString iconName, std::uint32_t rgba);

    KUVUnicodeString name_;
    KUVUnicodeString iconName_;
    std::uint32_t rgba_;
};

}  // namespace core

#endif
