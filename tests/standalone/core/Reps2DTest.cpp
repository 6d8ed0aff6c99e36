#include "core/RepKind.h"
#include "support/Allocations.h"

#include "KUV2D.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

/// Gives the reference back at the end of the test.
struct Releaser {
    void operator()(KUVBaseUnknown* object) const { object->Release(); }
};

template <class Object>
using Held = std::unique_ptr<Object, Releaser>;

template <class Object>
Held<Object> Hold(Object* object)
{
    return Held<Object>(object);
}

constexpr float SQUARE[] = {0.0f, 0.0f, 10.0f, 0.0f, 10.0f, 5.0f, 0.0f, 5.0f};

KUVPixelImage* MakeImage() { return new KUVPixelImage(0, 0, KUVPixelFormat_RGBA8, nullptr, 1); }

class PlainRep : public KUVRep {};

}  // namespace

TEST(KUV2DBagRep, ANewBagIsShownAndEmpty)
{
    const auto bag = Hold(KUV2DBagRep::CreateRep());
    ASSERT_NE(bag->GetVisibilityState(), nullptr);
    EXPECT_NE(bag->GetVisibilityState()->shown, 0U);
    ASSERT_NE(bag->GetChildren(), nullptr);
    EXPECT_EQ(bag->GetChildren()->Count(), 0);
    EXPECT_EQ(bag->GetReferenceCount(), 1U);
    EXPECT_STREQ(bag->IsA(), "KUV2DBagRep");
    EXPECT_EQ(bag->IsAKindOf("KUVRep"), 1);
}

TEST(KUV2DBagRep, IsShownHiddenOrWithoutRecord)
{
    const auto bag = Hold(KUV2DBagRep::CreateRep());
    bag->SetShown(0);
    EXPECT_EQ(bag->GetVisibilityState()->shown, 0U);
    bag->ForgetVisibilityState();
    EXPECT_EQ(bag->GetVisibilityState(), nullptr);
    bag->SetShown(1);
    EXPECT_NE(bag->GetVisibilityState()->shown, 0U);
}

TEST(KUV2DBagRep, ReferencesItsChildrenInOrder)
{
    const auto bag = Hold(KUV2DBagRep::CreateRep());
    const auto first = Hold(KUV2DBagRep::CreateRep());
    const auto second = Hold(KUV2DPolygonRep::CreateRep(SQUARE, 4, 1));
    bag->AddChild(first.get());
    bag->AddChild(second.get());
    bag->AddChild(nullptr);
    EXPECT_EQ(first->GetReferenceCount(), 2U);
    ASSERT_EQ(bag->GetChildren()->Count(), 2);
    EXPECT_EQ((*bag->GetChildren())[0], first.get());
    EXPECT_EQ((*bag->GetChildren())[1], second.get());
    bag->RemoveChild(first.get());
    bag->RemoveChild(first.get());
    bag->RemoveChild(nullptr);
    EXPECT_EQ(first->GetReferenceCount(), 1U);
    EXPECT_EQ(bag->GetChildren()->Count(), 1);
}

TEST(KUV2DPolygonRep, CopiesItsPoints)
{
    float points[] = {1.0f, 2.0f, 3.0f, 4.0f};
    const auto polygon = Hold(KUV2DPolygonRep::CreateRep(points, 2, 0));
    points[0] = 99.0f;
    ASSERT_EQ(polygon->GetPoints().size(), 4U);
    EXPECT_EQ(polygon->GetPoints()[0], 1.0f);
    EXPECT_EQ(polygon->GetPoints()[3], 4.0f);
    EXPECT_EQ(polygon->IsFilled(), 0);
    EXPECT_EQ(polygon->GetChildren(), nullptr);
}

TEST(KUV2DPolygonRep, IsFilledWhenAskedAndBlackUntilColoured)
{
    const auto polygon = Hold(KUV2DPolygonRep::CreateRep(SQUARE, 4, 1));
    EXPECT_EQ(polygon->IsFilled(), 1);
    EXPECT_EQ(polygon->GetColor().r, 0);
    EXPECT_EQ(polygon->GetColor().a, 255);
    polygon->SetColor(255, 126, 30, 254);
    EXPECT_EQ(polygon->GetColor().r, 255);
    EXPECT_EQ(polygon->GetColor().g, 126);
    EXPECT_EQ(polygon->GetColor().b, 30);
    EXPECT_EQ(polygon->GetColor().a, 254);
}

TEST(KUV2DPolygonRep, FewerThanTwoPointsMakeNone)
{
    EXPECT_EQ(KUV2DPolygonRep::CreateRep(nullptr, 4, 1), nullptr);
    EXPECT_EQ(KUV2DPolygonRep::CreateRep(SQUARE, 1, 1), nullptr);
    EXPECT_EQ(KUV2DPolygonRep::CreateRep(SQUARE, 0, 1), nullptr);
    EXPECT_EQ(KUV2DPolygonRep::CreateRep(SQUARE, -1, 1), nullptr);
}

TEST(KUV2DImagePixelRep, TakesItsOwnReferenceOnTheImage)
{
    const auto image = Hold(MakeImage());
    const float corner[] = {3.0f, 4.0f};
    {
        const auto rep = Hold(KUV2DImagePixelRep::CreateRep(corner, image.get(), 2, 0, 0, 0));
        EXPECT_EQ(image->GetReferenceCount(), 2U);
        EXPECT_EQ(rep->GetImage(), image.get());
        EXPECT_EQ(rep->GetLowerLeft().x, 3.0f);
        EXPECT_EQ(rep->GetLowerLeft().y, 4.0f);
        EXPECT_EQ(rep->GetMode(), 2);
        EXPECT_EQ(rep->GetAlphaMode(), 0);
        rep->SetAlphaMode(2);
        EXPECT_EQ(rep->GetAlphaMode(), 2);
    }
    EXPECT_EQ(image->GetReferenceCount(), 1U);
}

TEST(KUV2DImagePixelRep, NoPointOrNoImageMakeNone)
{
    const auto image = Hold(MakeImage());
    const float corner[] = {0.0f, 0.0f};
    EXPECT_EQ(KUV2DImagePixelRep::CreateRep(nullptr, image.get(), 0, 0, 0, 0), nullptr);
    EXPECT_EQ(KUV2DImagePixelRep::CreateRep(corner, nullptr, 0, 0, 0, 0), nullptr);
    EXPECT_EQ(image->GetReferenceCount(), 1U);
}

TEST(KUV2DAnnotationTextRep, KeepsTextPlaceAndLook)
{
    const float point[] = {5.0f, 6.0f};
    const auto rep = Hold(KUV2DAnnotationTextRep::CreateRep(
        point, "Rotor", KUVAnchorPoint_UpperMiddle, 14.0f, 0, nullptr, nullptr));
    EXPECT_EQ(rep->GetText(), KUVUnicodeString("Rotor"));
    EXPECT_EQ(rep->GetPoint().x, 5.0f);
    EXPECT_EQ(rep->GetPoint().y, 6.0f);
    EXPECT_EQ(rep->GetAnchor(), KUVAnchorPoint_UpperMiddle);
    EXPECT_EQ(rep->GetTextSize(), 14.0f);
    rep->SetColor(1, 2, 3, 4);
    EXPECT_EQ(rep->GetColor().r, 1);
    EXPECT_EQ(rep->GetColor().g, 2);
    EXPECT_EQ(rep->GetColor().b, 3);
    EXPECT_EQ(rep->GetColor().a, 4);
}

TEST(KUV2DAnnotationTextRep, AnEmptyTextMakesARepAndNoPointMakesNone)
{
    const float point[] = {0.0f, 0.0f};
    const auto rep = Hold(KUV2DAnnotationTextRep::CreateRep(point, "", KUVAnchorPoint_Center, 14.0f,
                                                            0, nullptr, nullptr));
    EXPECT_NE(rep, nullptr);
    EXPECT_EQ(KUV2DAnnotationTextRep::CreateRep(nullptr, "Rotor", KUVAnchorPoint_Center, 14.0f, 0,
                                                nullptr, nullptr),
              nullptr);
}

TEST(KUV2DAnnotationTextRep, TheAnchorsHaveTheirPublishedNumbers)
{
    EXPECT_EQ(KUVAnchorPoint_Center, 4);
    EXPECT_EQ(KUVAnchorPoint_UpperLeft, 6);
    EXPECT_EQ(KUVAnchorPoint_UpperMiddle, 7);
}

TEST(Reps2D, WithoutMemoryThereIsNoRep)
{
    const auto image = Hold(MakeImage());
    const KUVUnicodeString text("A text that is too long for a short string");
    const std::size_t failures = support::ForEveryFailingAllocation([&] {
        for (KUVRep* const rep :
             {static_cast<KUVRep*>(KUV2DBagRep::CreateRep()),
              static_cast<KUVRep*>(KUV2DPolygonRep::CreateRep(SQUARE, 4, 1)),
              static_cast<KUVRep*>(KUV2DImagePixelRep::CreateRep(SQUARE, image.get(), 0, 0, 0, 0)),
              static_cast<KUVRep*>(KUV2DAnnotationTextRep::CreateRep(
                  SQUARE, text, KUVAnchorPoint_Center, 14.0f, 0, nullptr, nullptr))}) {
            if (rep)
                rep->Release();
        }
    });
    EXPECT_EQ(failures, 6U);
    EXPECT_EQ(image->GetReferenceCount(), 1U);
}

TEST(KindOf, TellsTheRepsOfThePlaneApart)
{
    const auto bag = Hold(KUV2DBagRep::CreateRep());
    const auto polygon = Hold(KUV2DPolygonRep::CreateRep(SQUARE, 4, 1));
    const auto image = Hold(MakeImage());
    const auto imageRep = Hold(KUV2DImagePixelRep::CreateRep(SQUARE, image.get(), 0, 0, 0, 0));
    const auto text = Hold(KUV2DAnnotationTextRep::CreateRep(SQUARE, "", KUVAnchorPoint_Center,
                                                             14.0f, 0, nullptr, nullptr));
    EXPECT_EQ(core::KindOf(*bag), core::RepKind::Bag);
    EXPECT_EQ(core::KindOf(*polygon), core::RepKind::Polygon);
    EXPECT_EQ(core::KindOf(*imageRep), core::RepKind::Image);
    EXPECT_EQ(core::KindOf(*text), core::RepKind::Text);
    EXPECT_EQ(core::KindOf(PlainRep()), core::RepKind::Other);
}
