#include "KUV2D.h"
#include "KUVRep.h"

#include <gtest/gtest.h>

namespace {

class PlainRep : public KUVRep {};

}  // namespace

TEST(KUVRep, StartsWithTheHostsDefaults)
{
    const PlainRep rep;
    EXPECT_EQ(rep.IsWorldScalable(), 1);
    EXPECT_EQ(rep.IsOverlay(), 0);
    EXPECT_EQ(rep.IsFiltered(), 0);
    EXPECT_EQ(rep.TakesPartInDisplay(), 1);
    EXPECT_EQ(rep.GetModelIdentificator(), nullptr);
    EXPECT_EQ(rep.GetChildren(), nullptr);
    EXPECT_EQ(rep.GetGraphicPrimitive(1), nullptr);
    EXPECT_STREQ(rep.IsA(), "KUVRep");
}

TEST(KUVRep, ItsFlagsAreZeroOrOne)
{
    PlainRep rep;
    rep.SetWorldScalable(0);
    EXPECT_EQ(rep.IsWorldScalable(), 0);
    rep.SetWorldScalable(7);
    EXPECT_EQ(rep.IsWorldScalable(), 1);
    rep.SetOverlay(7);
    EXPECT_EQ(rep.IsOverlay(), 1);
    rep.SetFiltered(7);
    EXPECT_EQ(rep.IsFiltered(), 1);
    rep.SetTakesPartInDisplay(0);
    EXPECT_EQ(rep.TakesPartInDisplay(), 0);
}

TEST(KUVRep, OverwritesAnAttributeRecordOnlyWithAttributesOfItsOwn)
{
    PlainRep rep;
    KUVGraphicAttributeSet record;
    EXPECT_EQ(record.firstWord, 0xFD040400U);
    EXPECT_EQ(record.secondWord, 255U);
    record.firstWord = 9;
    rep.GetGraphicAttributeSet(record);
    EXPECT_EQ(record.firstWord, 9U);
    KUVGraphicAttributeSet own;
    own.firstWord = 1;
    own.secondWord = 2;
    rep.SetGraphicAttributeSet(own);
    rep.GetGraphicAttributeSet(record);
    EXPECT_EQ(record.firstWord, 1U);
    EXPECT_EQ(record.secondWord, 2U);
}

TEST(KUVRep, ReferencesItsModelIdentificator)
{
    KUVBaseUnknown object;
    KUVModelIdentificator* const first = new KUVModelIdentificator(&object);
    {
        PlainRep rep;
        rep.SetModelIdentificator(first);
        EXPECT_EQ(rep.GetModelIdentificator(), first);
        EXPECT_EQ(first->GetReferenceCount(), 2U);
        rep.SetModelIdentificator(first);
        EXPECT_EQ(first->GetReferenceCount(), 2U) << "setting the same one again changes nothing";
        rep.SetModelIdentificator(nullptr);
        EXPECT_EQ(first->GetReferenceCount(), 1U);
        rep.SetModelIdentificator(first);
    }
    EXPECT_EQ(first->GetReferenceCount(), 1U) << "the rep gave its reference back when it died";
    first->Release();
}

TEST(KUVModelIdentificator, ReferencesItsObjectAndLendsIt)
{
    KUVBaseUnknown object;
    {
        const KUVModelIdentificator identificator(&object);
        EXPECT_EQ(object.GetReferenceCount(), 2U);
        EXPECT_EQ(identificator.GetId(), &object);
        EXPECT_EQ(object.GetReferenceCount(), 2U) << "what GetId gives is borrowed";
    }
    EXPECT_EQ(object.GetReferenceCount(), 1U);
    const KUVModelIdentificator none(nullptr);
    EXPECT_EQ(none.GetId(), nullptr);
}
