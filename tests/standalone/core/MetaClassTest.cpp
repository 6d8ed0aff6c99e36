#include "support/Allocations.h"

#include "KUVCommand.h"
#include "KUVObjectModel.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace metaclasstest {

class Unmade : public KUVNotification {
    KUV_DECLARE_CLASS
};

KUV_IMPLEMENT_CLASS_NAMED(Unmade, "MetaClassTest.Unmade", KUVNotification, "CoreTests")

}  // namespace metaclasstest

TEST(KUVMetaClass, IsMadeOnFirstUse)
{
    EXPECT_EQ(KUVMetaClass::Find("MetaClassTest.First"), nullptr);
    KUVMetaClass* const made =
        KUVMetaClass::RetrieveOrCreate("MetaClassTest.First", nullptr, "Framework", 48);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(KUVMetaClass::Find("MetaClassTest.First"), made);
    EXPECT_STREQ(made->GetName(), "MetaClassTest.First");
    EXPECT_STREQ(made->GetFramework(), "Framework");
    EXPECT_STREQ(made->GetSecondaryType(), "KUVNull");
    EXPECT_EQ(made->GetInstanceSize(), 48U);
    EXPECT_EQ(made->GetKind(), KUVClassKind::Implementation);
    EXPECT_EQ(made->GetBase(), nullptr);
    EXPECT_EQ(made->GetClassId(), KUVClassIdOf("MetaClassTest.First"));
}

TEST(KUVMetaClass, TheFirstCallDecides)
{
    KUVMetaClass* const first = KUVMetaClass::RetrieveOrCreate("MetaClassTest.Same", nullptr, "A",
                                                               8, KUVClassKind::Interface, "Other");
    KUVMetaClass* const second =
        KUVMetaClass::RetrieveOrCreate("MetaClassTest.Same", first, "B", 16);
    EXPECT_EQ(first, second);
    EXPECT_STREQ(second->GetFramework(), "A");
    EXPECT_EQ(second->GetInstanceSize(), 8U);
    EXPECT_EQ(second->GetBase(), nullptr);
    EXPECT_EQ(second->GetKind(), KUVClassKind::Interface);
    EXPECT_STREQ(second->GetSecondaryType(), "Other");
}

TEST(KUVMetaClass, ItsTextsAreCopies)
{
    std::string name = "MetaClassTest.Copied";
    std::string framework = "Framework";
    KUVMetaClass* const made =
        KUVMetaClass::RetrieveOrCreate(name.c_str(), nullptr, framework.c_str(), 8);
    name.assign(name.size(), 'x');
    framework.assign(framework.size(), 'x');
    EXPECT_STREQ(made->GetName(), "MetaClassTest.Copied");
    EXPECT_STREQ(made->GetFramework(), "Framework");
}

TEST(KUVMetaClass, ThereIsNoneWithoutName)
{
    EXPECT_EQ(KUVMetaClass::RetrieveOrCreate(nullptr, nullptr, "Framework", 8), nullptr);
    EXPECT_EQ(KUVMetaClass::RetrieveOrCreate("", nullptr, "Framework", 8), nullptr);
    EXPECT_EQ(KUVMetaClass::Find(nullptr), nullptr);
    EXPECT_EQ(KUVMetaClass::Find(""), nullptr);
}

TEST(KUVMetaClass, MissingTextsAreEmpty)
{
    const KUVMetaClass* const made = KUVMetaClass::RetrieveOrCreate(
        "MetaClassTest.Bare", nullptr, nullptr, 0, KUVClassKind::DataExtension, nullptr);
    EXPECT_STREQ(made->GetFramework(), "");
    EXPECT_STREQ(made->GetSecondaryType(), "");
    EXPECT_EQ(made->GetKind(), KUVClassKind::DataExtension);
}

TEST(KUVMetaClass, IsAKindOfItselfAndEveryBase)
{
    KUVMetaClass* const base = KUVMetaClass::RetrieveOrCreate("MetaClassTest.A", nullptr, "", 0);
    KUVMetaClass* const middle = KUVMetaClass::RetrieveOrCreate("MetaClassTest.B", base, "", 0);
    KUVMetaClass* const derived = KUVMetaClass::RetrieveOrCreate("MetaClassTest.C", middle, "", 0);
    EXPECT_EQ(derived->IsAKindOf("MetaClassTest.C"), 1);
    EXPECT_EQ(derived->IsAKindOf("MetaClassTest.A"), 1);
    EXPECT_EQ(derived->IsAKindOf(base->GetClassId()), 1);
    EXPECT_EQ(base->IsAKindOf("MetaClassTest.C"), 0);
    EXPECT_EQ(derived->IsAKindOf("MetaClassTest"), 0);
    EXPECT_EQ(derived->IsAKindOf(static_cast<const char*>(nullptr)), 0);
    EXPECT_EQ(derived->IsAKindOf(KUVClassId()), 0);
}

TEST(KUVMetaClass, MakingAClassMakesItsBasesUnderTheSameLock)
{
    const KUVMetaClassLock outer;
    const KUVMetaClassLock again;
    EXPECT_EQ(metaclasstest::Unmade::MetaObject()->GetBase(), KUVNotification::MetaObject());
}

TEST(KUVMetaClass, ThreadsThatAskAtOnceGetTheSameOne)
{
    std::vector<KUVMetaClass*> found(8);
    std::vector<std::thread> threads;
    for (KUVMetaClass*& mine : found) {
        threads.emplace_back([&mine] {
            for (int i = 0; i < 100; ++i) {
                const std::string name = "MetaClassTest.Thread" + std::to_string(i);
                mine = KUVMetaClass::RetrieveOrCreate(name.c_str(), nullptr, "", 0);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const KUVMetaClass* const mine : found)
        EXPECT_EQ(mine, KUVMetaClass::Find("MetaClassTest.Thread99"));
}

TEST(KUVMetaClass, WithoutMemoryThereIsNoneAndNothingIsHalfMade)
{
    for (std::size_t failing = 1; failing < 20; ++failing) {
        const std::string name =
            "MetaClassTest.A name too long for a short text " + std::to_string(failing);
        KUVMetaClass* made = nullptr;
        bool failed = false;
        {
            const support::FailingAllocation allocation(failing);
            made = KUVMetaClass::RetrieveOrCreate(name.c_str(), nullptr, "Framework", 8);
            failed = allocation.HasFailed();
        }
        EXPECT_EQ(made == nullptr, failed) << failing;
        EXPECT_EQ(KUVMetaClass::Find(name.c_str()), made) << failing;
        if (!failed)
            return;
    }
    FAIL() << "making a meta class never came to its end";
}

TEST(KUVClassId, IsTheSameForTheSameNameOnly)
{
    EXPECT_EQ(KUVClassIdOf("KUVRep"), KUVClassIdOf(std::string("KUVRep").c_str()));
    EXPECT_NE(KUVClassIdOf("KUVRep"), KUVClassIdOf("KUVReq"));
    EXPECT_EQ(KUVClassIdOf(nullptr), KUVClassId());
    EXPECT_NE(KUVClassIdOf(""), KUVClassId());
    static_assert(KUVClassIdOf("a").value == 0xAF63DC4C8601EC8CULL);
}

TEST(KUVResult, TheFailureValueHasItsPublishedBits)
{
    EXPECT_EQ(static_cast<unsigned int>(KUV_FAIL), 0x80004005U);
    EXPECT_LT(KUV_FAIL, 0);
    EXPECT_EQ(KUV_OK, 0);
    EXPECT_EQ(sizeof(KUVResult), 4U);
}
