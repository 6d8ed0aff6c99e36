#include "KUVObjectModel.h"

#include <gtest/gtest.h>

#include <string>

namespace {

KUVBaseUnknown* MakeOne() { return new KUVBaseUnknown; }
KUVBaseUnknown* MakeNone() { return nullptr; }

const KUVModuleRegistration LOADED("RegistrationTest.Loaded");
const KUVFillDictionary FILLED("RegistrationTest.Filled", &MakeOne);

}  // namespace

TEST(KUVModuleRegistration, AStaticObjectRegistersItsModule)
{
    EXPECT_EQ(KUVModuleRegistration::IsRegistered("RegistrationTest.Loaded"), 1);
    EXPECT_EQ(KUVModuleRegistration::IsRegistered("RegistrationTest.Absent"), 0);
    EXPECT_EQ(KUVModuleRegistration::IsRegistered(nullptr), 0);
}

TEST(KUVModuleRegistration, RegisteringAgainOrWithoutNameDoesNothing)
{
    const KUVModuleRegistration again("RegistrationTest.Loaded");
    const KUVModuleRegistration none(nullptr);
    EXPECT_EQ(KUVModuleRegistration::IsRegistered("RegistrationTest.Loaded"), 1);
    EXPECT_EQ(KUVModuleRegistration::IsRegistered(""), 0);
}

TEST(KUVModuleRegistration, TheNameIsCopied)
{
    std::string name = "RegistrationTest.Copied";
    const KUVModuleRegistration registration(name.c_str());
    name.assign(name.size(), 'x');
    EXPECT_EQ(KUVModuleRegistration::IsRegistered("RegistrationTest.Copied"), 1);
}

TEST(KUVFillDictionary, AStaticObjectRegistersItsFactory)
{
    EXPECT_EQ(KUVFillDictionary::Find("RegistrationTest.Filled"), &MakeOne);
    EXPECT_EQ(KUVFillDictionary::Find("RegistrationTest.Absent"), nullptr);
    EXPECT_EQ(KUVFillDictionary::Find(nullptr), nullptr);
}

TEST(KUVFillDictionary, ALaterRegistrationReplacesTheEarlier)
{
    KUVFillDictionary::Register("RegistrationTest.Twice", &MakeOne);
    KUVFillDictionary::Register("RegistrationTest.Twice", &MakeNone);
    EXPECT_EQ(KUVFillDictionary::Find("RegistrationTest.Twice"), &MakeNone);
}

TEST(KUVFillDictionary, NullNamesAndFactoriesAreIgnored)
{
    KUVFillDictionary::Register(nullptr, &MakeOne);
    KUVFillDictionary::Register("RegistrationTest.NoFactory", nullptr);
    EXPECT_EQ(KUVFillDictionary::Find("RegistrationTest.NoFactory"), nullptr);
    KUVFillDictionary::Register("RegistrationTest.Kept", &MakeOne);
    KUVFillDictionary::Register("RegistrationTest.Kept", nullptr);
    EXPECT_EQ(KUVFillDictionary::Find("RegistrationTest.Kept"), &MakeOne);
}
