#include "core/ProductObjects.h"

#include "support/TestScene.h"

#include <gtest/gtest.h>

#include <string>

using core::ProductKind;
using support::Held;

namespace {

/// A part "Bolt M6" put into an assembly, with a name of its own or without.
struct Bolt {
    explicit Bolt(const char* instanceName)
        : reference(core::ProductReference::Create("Bolt M6", "bolt-6", ProductKind::Part)),
          instance(core::ProductInstance::Create(reference.get(), instanceName, "nauo-17")),
          occurrence(core::ProductOccurrence::Create(instance.get()))
    {
    }
    Held<core::ProductReference> reference;
    Held<core::ProductInstance> instance;
    Held<core::ProductOccurrence> occurrence;
};

std::string AliasOf(KUVBaseUnknown* object)
{
    const KUVInterfacePtr<KUVIAlias> alias(object);
    return alias ? alias->GetAlias().GetUtf8() : "no alias";
}

std::string IconOf(KUVBaseUnknown* object)
{
    const KUVInterfacePtr<KUVIIcon> icon(object);
    return icon ? icon->GetIconName().GetUtf8() : "no icon";
}

/// The physical id of a component, as the module asks for it.
std::string PhysicalIdOf(KUVBaseUnknown* object)
{
    const KUVInterfacePtr<KUVIPLMComponent> component(object);
    if (!component)
        return "no component";
    KUVIAdpPLMIdentificator* found = nullptr;
    if (component->GetAdpIdentificator(found) != KUV_OK)
        return "no identificator";
    const Held<KUVIAdpPLMIdentificator> identificator(found);
    KUVPLMID id;
    unsigned char valid = 0;
    if (KUVPLMID::GetPLMIDFromAdpIdentificator(identificator.get(), id) != KUV_OK ||
        id.IsValidForRemoteUsage(valid) != KUV_OK)
        return "no id";
    return valid ? id.GetPhysicalId().ToString().GetUtf8() : "not valid";
}

}  // namespace

TEST(ProductOccurrence, ShowsTheInstanceNameElseTheProducts)
{
    EXPECT_EQ(AliasOf(Bolt("left bolt").occurrence.get()), "left bolt");
    EXPECT_EQ(AliasOf(Bolt("").occurrence.get()), "Bolt M6");
}

TEST(ProductOccurrence, RootAndInstancesHaveTheirClassNames)
{
    const Bolt bolt("");
    const Held<core::ProductOccurrence> root(
        core::ProductOccurrence::CreateRoot(bolt.reference.get()));
    EXPECT_STREQ(root->IsA(), "OXMRootOccurrence");
    EXPECT_STREQ(bolt.occurrence->IsA(), "OXMInstanceOccurrence");
    EXPECT_STREQ(root->GetMetaObject()->GetName(), "OXMRootOccurrence");
    EXPECT_TRUE(root->IsAKindOf("ProductOccurrence"));
    EXPECT_EQ(AliasOf(root.get()), "Bolt M6");
}

TEST(ProductOccurrence, TheIconFollowsTheKindOfProduct)
{
    const auto iconOf = [](ProductKind kind, bool isRoot) {
        const Held<core::ProductReference> reference(
            core::ProductReference::Create("a", "b", kind));
        const Held<core::ProductInstance> instance(
            core::ProductInstance::Create(reference.get(), "", ""));
        const Held<core::ProductOccurrence> occurrence(
            isRoot ? core::ProductOccurrence::CreateRoot(reference.get())
                   : core::ProductOccurrence::Create(instance.get()));
        return IconOf(occurrence.get());
    };
    EXPECT_EQ(iconOf(ProductKind::Assembly, false), "I_VisAssembly");
    EXPECT_EQ(iconOf(ProductKind::Part, false), "I_VisPart");
    EXPECT_EQ(iconOf(ProductKind::Unknown, false), "I_VisProduct");
    EXPECT_EQ(iconOf(ProductKind::Assembly, true), "I_VisProduct");
    EXPECT_EQ(iconOf(ProductKind::Part, true), "I_VisProduct");
}

TEST(ProductOccurrence, LeadsToInstanceAndProduct)
{
    const Bolt bolt("left bolt");
    const KUVInterfacePtr<KUVIPLMNavOccurrence> occurrence(bolt.occurrence.get());
    ASSERT_TRUE(occurrence);
    EXPECT_EQ(occurrence->GetRelatedInstance(), bolt.instance.get());
    EXPECT_EQ(occurrence->GetRelatedReference(), bolt.reference.get());
    EXPECT_EQ(PhysicalIdOf(occurrence->GetRelatedInstance()), "nauo-17");
    EXPECT_EQ(PhysicalIdOf(occurrence->GetRelatedReference()), "bolt-6");
    EXPECT_EQ(PhysicalIdOf(bolt.occurrence.get()), "no component");
    const Held<core::ProductOccurrence> root(
        core::ProductOccurrence::CreateRoot(bolt.reference.get()));
    const KUVInterfacePtr<KUVIPLMNavOccurrence> rootOccurrence(root.get());
    EXPECT_EQ(rootOccurrence->GetRelatedInstance(), nullptr);
    EXPECT_EQ(rootOccurrence->GetRelatedReference(), bolt.reference.get());
}

TEST(ProductOccurrence, WithoutIdentifierAProductIsNotValidElsewhere)
{
    const Held<core::ProductReference> reference(
        core::ProductReference::Create("a", "", ProductKind::Part));
    EXPECT_EQ(PhysicalIdOf(reference.get()), "not valid");
}

TEST(ProductOccurrence, ObjectsLiveAsLongAsSomebodyPointsAtThem)
{
    Bolt bolt("left bolt");
    bolt.reference.reset();
    bolt.instance.reset();
    EXPECT_EQ(bolt.occurrence->Reference().Name(), "Bolt M6");
    const KUVInterfacePtr<KUVIAlias> alias(bolt.occurrence.get());
    bolt.occurrence.reset();
    EXPECT_EQ(alias->GetAlias(), "left bolt") << "an interface is a reference";
}

TEST(ShapeObject, HasANameAnIconAndAColour)
{
    const Held<core::ShapeObject> shape(core::ShapeObject::Create("Blade"));
    EXPECT_EQ(AliasOf(shape.get()), "Blade");
    EXPECT_EQ(IconOf(shape.get()), "VisLevelSelectorGeometry");
    EXPECT_EQ(shape->Colour(), 0U);
    const Held<core::ShapeObject> red(core::ShapeObject::Create("Blade", "Gear", 0xFF0000FFU));
    EXPECT_EQ(IconOf(red.get()), "Gear");
    EXPECT_EQ(red->Colour(), 0xFF0000FFU);
    EXPECT_EQ(PhysicalIdOf(red.get()), "no component");
    void* found = red.get();
    EXPECT_EQ(red->QueryInterface("KUVIPLMNavOccurrence", &found), KUV_FAIL);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(red->QueryInterface(KUVClassIdOf("KUVIAlias"), nullptr), KUV_FAIL);
}

// ---- product loaders

namespace {

class Loader : public VisNativeProductLoader {
public:
    KUVResult ComputeRepPathFromPathID(const std::vector<KUVUnicodeString>&, KUVRepPath&) override
    {
        return KUV_FAIL;
    }
    using VisNativeProductLoader::ForgetProductID;
    using VisNativeProductLoader::SetProductID;
};

const KUVViewer* Viewer(int number)
{
    static const char ADDRESSES[4] = {};
    return reinterpret_cast<const KUVViewer*>(&ADDRESSES[number]);
}

}  // namespace

TEST(VisProductLoaderServices, GivesTheLoadersOfAViewerInTheirOrder)
{
    using Services = VisProductLoaderServices;
    Loader a;
    Loader b;
    EXPECT_TRUE(Services::GetRegisteredProductLoader(Viewer(0)).empty());
    Services::RegisterProductLoader(Viewer(0), &b);
    Services::RegisterProductLoader(Viewer(0), &a);
    Services::RegisterProductLoader(Viewer(0), &b);
    Services::RegisterProductLoader(Viewer(1), &a);
    Services::RegisterProductLoader(nullptr, &a);
    Services::RegisterProductLoader(Viewer(2), nullptr);
    ASSERT_EQ(Services::GetRegisteredProductLoader(Viewer(0)).size(), 2U);
    EXPECT_EQ(Services::GetRegisteredProductLoader(Viewer(0))[0], &b);
    EXPECT_EQ(Services::GetRegisteredProductLoader(Viewer(0))[1], &a);
    EXPECT_EQ(Services::GetRegisteredProductLoader(Viewer(0))[2], nullptr);
    EXPECT_EQ(Services::GetRegisteredProductLoader(Viewer(1)).size(), 1U);
    EXPECT_TRUE(Services::GetRegisteredProductLoader(Viewer(2)).empty());
    EXPECT_TRUE(Services::GetRegisteredProductLoader(nullptr).empty());
    Services::UnregisterProductLoader(Viewer(0), &b);
    Services::UnregisterProductLoader(Viewer(0), &b);
    EXPECT_EQ(Services::GetRegisteredProductLoader(Viewer(0))[0], &a);
    Services::UnregisterProductLoader(Viewer(0), &a);
    Services::UnregisterProductLoader(Viewer(1), &a);
    EXPECT_TRUE(Services::GetRegisteredProductLoader(Viewer(0)).empty());
}

TEST(VisNativeProductLoader, KnowsTheProductsThatLoadersShow)
{
    support::TestScene scene;
    KUVUnicodeString id("untouched");
    EXPECT_EQ(VisNativeProductLoader::GetProductID(scene.Root(), id), KUV_FAIL);
    EXPECT_EQ(VisNativeProductLoader::GetProductID(nullptr, id), KUV_FAIL);
    EXPECT_EQ(id, "untouched");
    Loader::SetProductID(scene.Root(), "pump-1");
    Loader::SetProductID(nullptr, "pump-2");
    EXPECT_EQ(VisNativeProductLoader::GetProductID(scene.Root(), id), KUV_OK);
    EXPECT_EQ(id, "pump-1");
    EXPECT_EQ(VisNativeProductLoader::GetProductID(nullptr, id), KUV_FAIL);
    Loader::ForgetProductID(scene.Root());
    EXPECT_EQ(VisNativeProductLoader::GetProductID(scene.Root(), id), KUV_FAIL);
}

TEST(KUVPLMID, AnIdentifierThatWasNeverFilledFails)
{
    KUVPLMID id;
    unsigned char valid = 9;
    EXPECT_EQ(KUVPLMID::GetPLMIDFromAdpIdentificator(nullptr, id), KUV_FAIL);
    EXPECT_EQ(id.IsValidForRemoteUsage(valid), KUV_FAIL);
    EXPECT_EQ(valid, 9);
    EXPECT_TRUE(id.GetPhysicalId().ToString().IsEmpty());
}
