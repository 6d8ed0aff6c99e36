#include "KUVObjectInterfaces.h"
#include "KUVObjectModel.h"

#include <gtest/gtest.h>

namespace {

/// The name of a `Named`; its references are the object's.
class Alias : public KUVIAlias {
public:
    explicit Alias(KUVBaseUnknown& object) : object_(object) {}
    ~Alias() override = default;
    unsigned int AddInterfaceRef() override { return object_.AddRef(); }
    unsigned int ReleaseInterface() override { return object_.Release(); }
    KUVUnicodeString GetAlias() const override { return "Rotor"; }

private:
    KUVBaseUnknown& object_;
};

/// An object that counts its destructions and has a name.
class Named : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    explicit Named(int* destructions) : alias_(*this), destructions_(destructions) {}
    Named(const Named& other)
        : KUVBaseUnknown(other), alias_(*this), destructions_(other.destructions_)
    {
    }
    Named& operator=(const Named& other) = delete;
    ~Named() override
    {
        if (takesReferenceWhileDying_) {
            AddRef();
            Release();
        }
        ++*destructions_;
    }

    KUVResult QueryInterface(KUVClassId interfaceId, void** result) override
    {
        if (!result || interfaceId != KUVClassIdOf(KUVIAlias::InterfaceName()))
            return KUVBaseUnknown::QueryInterface(interfaceId, result);
        alias_.AddInterfaceRef();
        *result = static_cast<KUVIAlias*>(&alias_);
        return KUV_OK;
    }
    using KUVBaseUnknown::QueryInterface;

    void TakeReferenceWhileDying() { takesReferenceWhileDying_ = true; }

private:
    Alias alias_;
    int* destructions_;
    bool takesReferenceWhileDying_ = false;
};

KUV_IMPLEMENT_CLASS(Named, KUVBaseUnknown, "CoreTests")

}  // namespace

TEST(KUVBaseUnknown, ANewObjectHasOneReference)
{
    int destructions = 0;
    Named* const object = new Named(&destructions);
    EXPECT_EQ(object->GetReferenceCount(), 1U);
    EXPECT_EQ(object->AddRef(), 2U);
    EXPECT_EQ(object->Release(), 1U);
    EXPECT_EQ(destructions, 0);
    EXPECT_EQ(object->Release(), 0U);
    EXPECT_EQ(destructions, 1);
}

TEST(KUVBaseUnknown, ACopyStartsWithOneReference)
{
    int destructions = 0;
    Named* const object = new Named(&destructions);
    object->AddRef();
    Named* const copy = new Named(*object);
    EXPECT_EQ(copy->GetReferenceCount(), 1U);
    copy->Release();
    object->Release();
    object->Release();
    EXPECT_EQ(destructions, 2);
}

TEST(KUVBaseUnknown, AssignmentLeavesTheReferencesAlone)
{
    KUVBaseUnknown* const object = new KUVBaseUnknown;
    const KUVBaseUnknown other;
    object->AddRef();
    *object = other;
    EXPECT_EQ(object->GetReferenceCount(), 2U);
    object->Release();
    object->Release();
}

TEST(KUVBaseUnknown, AReferenceTakenInTheDestructorDoesNotDestroyTwice)
{
    int destructions = 0;
    Named* const object = new Named(&destructions);
    object->TakeReferenceWhileDying();
    object->Release();
    EXPECT_EQ(destructions, 1);
}

TEST(KUVBaseUnknown, AnInterfaceThatIsNotImplementedGivesNull)
{
    KUVBaseUnknown object;
    void* result = &object;
    EXPECT_EQ(object.QueryInterface(KUVClassIdOf("KUVIAlias"), &result), KUV_FAIL);
    EXPECT_EQ(result, nullptr);
    result = &object;
    EXPECT_EQ(object.QueryInterface("KUVIAlias", &result), KUV_FAIL);
    EXPECT_EQ(result, nullptr);
}

TEST(KUVBaseUnknown, AnInterfaceQueryWithoutResultFails)
{
    int destructions = 0;
    Named object(&destructions);
    EXPECT_EQ(object.QueryInterface("KUVIAlias", nullptr), KUV_FAIL);
    EXPECT_EQ(object.GetReferenceCount(), 1U);
}

TEST(KUVBaseUnknown, AnInterfaceIsFoundByIdentifierAndByName)
{
    int destructions = 0;
    Named object(&destructions);
    void* byId = nullptr;
    void* byName = nullptr;
    EXPECT_EQ(object.QueryInterface(KUVClassIdOf("KUVIAlias"), &byId), KUV_OK);
    EXPECT_EQ(object.QueryInterface("KUVIAlias", &byName), KUV_OK);
    EXPECT_NE(byId, nullptr);
    EXPECT_EQ(byId, byName);
    EXPECT_EQ(object.GetReferenceCount(), 3U) << "each answer is a referenced interface";
    static_cast<KUVIAlias*>(byId)->ReleaseInterface();
    static_cast<KUVIAlias*>(byName)->ReleaseInterface();
}

TEST(KUVBaseUnknown, ScriptingFailsAndClearsItsResults)
{
    KUVBaseUnknown object;
    unsigned int count = 7;
    EXPECT_EQ(object.GetTypeInfoCount(&count), KUV_FAIL);
    EXPECT_EQ(count, 0U);
    void* result = &object;
    EXPECT_EQ(object.GetTypeInfo(0, &result), KUV_FAIL);
    EXPECT_EQ(result, nullptr);
    result = &object;
    EXPECT_EQ(object.Invoke(0, nullptr, 0, &result), KUV_FAIL);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(object.GetIDsOfNames(nullptr, 0, nullptr), KUV_FAIL);
    EXPECT_EQ(object.GetTypeInfoCount(nullptr), KUV_FAIL);
    EXPECT_EQ(object.GetTypeInfo(0, nullptr), KUV_FAIL);
    EXPECT_EQ(object.Invoke(0, nullptr, 0, nullptr), KUV_FAIL);
}

TEST(KUVBaseUnknown, AnObjectIsItsOwnImplementationAndEqualToItselfOnly)
{
    KUVBaseUnknown object;
    const KUVBaseUnknown other;
    EXPECT_EQ(object.GetImpl(), &object);
    EXPECT_EQ(object.IsNull(), 0);
    EXPECT_EQ(object.IsEqual(&object), 1);
    EXPECT_EQ(object.IsEqual(&other), 0);
    EXPECT_EQ(object.IsEqual(nullptr), 0);
    EXPECT_EQ(object.ChangeComponentState(0, 1), KUV_OK);
}

TEST(KUVBaseUnknown, AnObjectKnowsItsClassAndItsBases)
{
    int destructions = 0;
    const Named object(&destructions);
    EXPECT_STREQ(object.IsA(), "Named");
    EXPECT_STREQ(Named::ClassName(), "Named");
    EXPECT_EQ(Named::ClassId(), KUVClassIdOf("Named"));
    EXPECT_EQ(object.IsAKindOf("Named"), 1);
    EXPECT_EQ(object.IsAKindOf("KUVBaseUnknown"), 1);
    EXPECT_EQ(object.IsAKindOf("KUVRep"), 0);
    EXPECT_EQ(object.IsAKindOf(nullptr), 0);
    EXPECT_EQ(object.GetMetaObject(), Named::MetaObject());
    EXPECT_EQ(Named::MetaObject()->GetBase(), KUVBaseUnknown::MetaObject());
    EXPECT_STREQ(Named::MetaObject()->GetFramework(), "CoreTests");
    EXPECT_EQ(Named::MetaObject()->GetInstanceSize(), sizeof(Named));
    EXPECT_EQ(Named::CreateItself(), nullptr);
}

TEST(KUVBaseUnknown, TheRootClassHasNoBase)
{
    const KUVBaseUnknown object;
    EXPECT_STREQ(object.IsA(), "KUVBaseUnknown");
    EXPECT_EQ(object.IsAKindOf("KUVBaseUnknown"), 1);
    EXPECT_EQ(object.IsAKindOf(nullptr), 0);
    EXPECT_EQ(object.GetMetaObject()->GetBase(), nullptr);
    EXPECT_EQ(KUVBaseUnknown::ClassId(), KUVClassIdOf("KUVBaseUnknown"));
    EXPECT_EQ(KUVBaseUnknown::CreateItself(), nullptr);
}

TEST(KUVInterfacePtr, HoldsAReferenceWhileItLives)
{
    int destructions = 0;
    Named object(&destructions);
    {
        const KUVInterfacePtr<KUVIAlias> alias(&object);
        ASSERT_TRUE(alias);
        EXPECT_EQ(alias->GetAlias(), KUVUnicodeString("Rotor"));
        EXPECT_EQ(object.GetReferenceCount(), 2U);
    }
    EXPECT_EQ(object.GetReferenceCount(), 1U);
}

TEST(KUVInterfacePtr, IsNullForAnInterfaceThatIsNotImplementedAndForNoObject)
{
    int destructions = 0;
    Named object(&destructions);
    EXPECT_FALSE(KUVInterfacePtr<KUVIIcon>(&object));
    EXPECT_FALSE(KUVInterfacePtr<KUVIAlias>(nullptr));
    EXPECT_EQ(KUVInterfacePtr<KUVIAlias>().Get(), nullptr);
    EXPECT_EQ(object.GetReferenceCount(), 1U);
}
