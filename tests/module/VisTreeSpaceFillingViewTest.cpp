#include "VisTreeSpaceFillingView.h"

#include "module/ViewFixture.h"

#include "support/LiveInstances.h"

#include <limits>
#include <vector>

using viewreading::ColourOf;
using viewreading::Find;
using viewreading::Roles;
using viewtest::BRIGHT;
using viewtest::Bytes;
using viewtest::ExpectPoint;
using viewtest::View;

namespace {

const support::WatchedClass watchViews("VisTreeSpaceFillingView", [] {
    const VisTreeSpaceFillingView sample(nullptr);
    return support::VirtualTableOf(sample);
});

class VisTreeSpaceFillingViewTest : public viewtest::ViewTest {};

}  // namespace

// ---- construction

TEST_F(VisTreeSpaceFillingViewTest, ANewViewIsAnEmptyShownBag)
{
    ASSERT_NE(view.GetBagRep(), nullptr);
    EXPECT_EQ(Roles(Bag()), "");
    EXPECT_EQ(view.GetBagRep()->IsOverlay(), 1);
    EXPECT_EQ(view.GetHighlightMode(), View::HighlightMode_Contour);
    EXPECT_EQ(view.GetHighlightStatus(), 0);
    EXPECT_EQ(view.GetSelectionStatus(), 0);
    EXPECT_EQ(view.IsBright(), 0);
    EXPECT_EQ(view.IsCropped(), 0);
    EXPECT_EQ(view.IsVisible(), 1);
}

TEST_F(VisTreeSpaceFillingViewTest, ModesAndPositionsHaveTheirPublishedNumbers)
{
    EXPECT_EQ(View::HighlightMode_Contour, 0U);
    EXPECT_EQ(View::HighlightMode_Texture, 1U);
    EXPECT_EQ(sizeof(View::HighlightMode), 4U);
    EXPECT_EQ(View::Position_LabelBelow, 0U);
    EXPECT_EQ(View::Position_LabelAbove, 1U);
    EXPECT_EQ(View::Position_IconLeft, 2U);
    EXPECT_EQ(View::Position_IconRight, 3U);
    EXPECT_EQ(sizeof(View::Position), 4U);
}

TEST_F(VisTreeSpaceFillingViewTest, DestructionGivesTheBagBack)
{
    KUV2DBagRep* bag = nullptr;
    {
        View other(&textures);
        Init(other);
        bag = other.GetBagRep();
        bag->AddRef();
    }
    EXPECT_EQ(bag->GetReferenceCount(), 1U);
    EXPECT_EQ(Roles(bag), "") << "a dying view takes its reps out of the bag";
    bag->Release();
}

TEST_F(VisTreeSpaceFillingViewTest, ACopySharesTheRepsWithoutTakingReferences)
{
    Init();
    const unsigned int references = Label()->GetReferenceCount();
    alignas(View) unsigned char memory[sizeof(View)];
    // Only one of the two may be cleaned or destroyed, so the copy never is.
    const auto* const copy = new (memory) View(view);
    EXPECT_EQ(copy->GetBagRep(), view.GetBagRep());
    EXPECT_EQ(copy->IsCropped(), view.IsCropped());
    EXPECT_EQ(Label()->GetReferenceCount(), references);
}

TEST_F(VisTreeSpaceFillingViewTest, AnAssignedViewSharesTheRepsWithoutTakingReferences)
{
    Init();
    const unsigned int references = view.GetBagRep()->GetReferenceCount();
    alignas(View) unsigned char memory[sizeof(View)];
    auto* const copy = new (memory) View(view);
    *copy = view;
    EXPECT_EQ(copy->GetBagRep(), view.GetBagRep());
    EXPECT_EQ(view.GetBagRep()->GetReferenceCount(), references);
}

// ---- Init: what is built

TEST_F(VisTreeSpaceFillingViewTest, AFlatNodeShowsAFilledRectangleAndALabel)
{
    //  (10, 70)                (110, 70)
    //     +-----------------------+
    //     |Pump                   |
    //     |                       |
    //     +-----------------------+
    //  (10, 20)                (110, 20)
    Init();
    EXPECT_EQ(Roles(Bag()), "fill label");
    const auto* const fill = Find<KUV2DPolygonRep>(Bag(), "fill");
    EXPECT_EQ(fill->GetPoints(), (std::vector<float>{10, 20, 110, 20, 110, 70, 10, 70}));
    EXPECT_EQ(ColourOf(*fill), (Bytes{0x00, 0x7D, 0xA3, 255}));
    EXPECT_EQ(fill->IsOverlay(), 1);
    EXPECT_EQ(fill->IsWorldScalable(), 0);
    EXPECT_EQ(Label()->GetText(), KUVUnicodeString("Pump"));
    EXPECT_EQ(Label()->GetTextSize(), 14.0f);
    EXPECT_EQ(Label()->IsOverlay(), 1);
    EXPECT_EQ(Label()->IsWorldScalable(), 1) << "only background, contour and icon are pinned";
}

TEST_F(VisTreeSpaceFillingViewTest, TheAlphaOfTheColourIsIgnored)
{
    colour = 0x11223300U;
    Init();
    EXPECT_EQ(ColourOf(*Find<KUV2DPolygonRep>(Bag(), "fill")), (Bytes{0x11, 0x22, 0x33, 255}));
}

TEST_F(VisTreeSpaceFillingViewTest, ACollapsedNodeShowsTheGridTexture)
{
    flatColour = 0;
    size = {40.9f, 30.9f};
    Init();
    EXPECT_EQ(Roles(Bag()), "texture label");
    const auto* const texture = Find<KUV2DImagePixelRep>(Bag(), "texture");
    int width = 0;
    int height = 0;
    texture->GetImage()->GetSize(width, height);
    EXPECT_EQ(width, 40) << "whole pixels of the size, cut off";
    EXPECT_EQ(height, 30);
    ExpectPoint(texture->GetLowerLeft(), 10.0f, 20.0f);
    EXPECT_EQ(texture->GetMode(), 0);
    EXPECT_EQ(texture->IsOverlay(), 1);
    EXPECT_EQ(texture->IsWorldScalable(), 0);
    EXPECT_EQ(viewreading::PixelOf(*texture->GetImage(), 0, 0), 0xFFFFFFFFU)
        << "light squares on a dark colour";
}

TEST_F(VisTreeSpaceFillingViewTest, TheSquaresOfABrightCollapsedNodeAreBlack)
{
    flatColour = 0;
    colour = BRIGHT;
    Init();
    const auto* const texture = Find<KUV2DImagePixelRep>(Bag(), "texture");
    EXPECT_EQ(viewreading::PixelOf(*texture->GetImage(), 0, 0), 0x000000FFU);
}

TEST_F(VisTreeSpaceFillingViewTest, ASizeOfZeroByFiveBuildsAllReps)
{
    size = {0.0f, 5.0f};
    Init();
    EXPECT_EQ(Roles(Bag()), "fill label");
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill contour label");
}

TEST_F(VisTreeSpaceFillingViewTest, ASizeOfZeroByZeroBuildsNothing)
{
    size = {0.0f, 0.0f};
    Init();
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "");
}

TEST_F(VisTreeSpaceFillingViewTest, ASizeOfMinusOneByMinusOneBuildsNothing)
{
    size = {-1.0f, -1.0f};
    Init();
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "");
}

TEST_F(VisTreeSpaceFillingViewTest, WithoutTexturesNothingIsBuilt)
{
    View other(nullptr);
    Init(other);
    EXPECT_EQ(Roles(other.GetBagRep()), "");
}

TEST_F(VisTreeSpaceFillingViewTest, InitRemovesWhatWasBuiltEvenWhenItBuildsNothing)
{
    Init();
    size = {0.0f, 0.0f};
    Init();
    EXPECT_EQ(Roles(Bag()), "");
}

TEST_F(VisTreeSpaceFillingViewTest, BuildingAgainReplacesTheReps)
{
    Init();
    label = "Rotor";
    Init();
    EXPECT_EQ(Roles(Bag()), "fill label");
    EXPECT_EQ(Label()->GetText(), KUVUnicodeString("Rotor"));
}

TEST_F(VisTreeSpaceFillingViewTest, SelectionAndHighlightSurviveANewBuild)
{
    Init();
    view.SetSelectionStatus(1);
    view.SetHighlightStatus(1);
    Init();
    EXPECT_EQ(view.GetSelectionStatus(), 1);
    EXPECT_EQ(view.GetHighlightStatus(), 1);
    EXPECT_EQ(Roles(Bag()), "fill contour label");
}

TEST_F(VisTreeSpaceFillingViewTest, NumbersThatAreNotFiniteBuildNothing)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float odd : {nan, infinity, -infinity}) {
        for (int place = 0; place < 5; ++place) {
            position = {10.0f, 20.0f};
            size = {100.0f, 50.0f};
            scale = 1.0f;
            float* const numbers[] = {&position.x, &position.y, &size.x, &size.y, &scale};
            *numbers[place] = odd;
            Init();
            view.SetSelectionStatus(1);
            EXPECT_EQ(Roles(Bag()), "") << odd << " at " << place;
            view.SetSelectionStatus(0);
        }
    }
    EXPECT_TRUE(textures.platesBySize.empty()) << "no entry for a size that is never drawn";
}

TEST_F(VisTreeSpaceFillingViewTest, OddButFiniteNumbersAreHarmless)
{
    const float largest = std::numeric_limits<float>::max();
    const float denormal = std::numeric_limits<float>::denorm_min();
    UseIcon(16, 16, View::Position_IconLeft);
    flatColour = 0;
    for (const float odd : {largest, -largest, denormal, -denormal, 0.0f, -0.0f, -1.0f, 16777216.0f,
                            2147483648.0f, -2147483648.0f}) {
        for (int place = 0; place < 5; ++place) {
            position = {10.0f, 20.0f};
            size = {100.0f, 50.0f};
            scale = 1.0f;
            float* const numbers[] = {&position.x, &position.y, &size.x, &size.y, &scale};
            *numbers[place] = odd;
            Init();
            EXPECT_NE(Find<KUV2DAnnotationTextRep>(Bag(), "label"), nullptr)
                << odd << " at " << place;
        }
    }
}

TEST_F(VisTreeSpaceFillingViewTest, ATextureBeyondAGibibyteIsLeftOut)
{
    flatColour = 0;
    size = {2147483648.0f, 2147483648.0f};
    Init();
    EXPECT_EQ(Roles(Bag()), "label");
    view.SetHighlightMode(View::HighlightMode_Texture);
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "label");
}

// ---- brightness

TEST_F(VisTreeSpaceFillingViewTest, ASumOf384IsNotBright)
{
    colour = 0x80808000U;
    Init();
    EXPECT_EQ(view.IsBright(), 0) << "brightness begins above 384";
}

TEST_F(VisTreeSpaceFillingViewTest, ASumOf385IsBright)
{
    colour = 0x81808000U;
    Init();
    EXPECT_EQ(view.IsBright(), 1);
}

// ---- label

TEST_F(VisTreeSpaceFillingViewTest, ALabelThatFitsIsShownWhole)
{
    Init();
    EXPECT_EQ(Label()->GetText(), KUVUnicodeString("Pump"));
    EXPECT_EQ(view.IsCropped(), 0);
}

TEST_F(VisTreeSpaceFillingViewTest, ALabelThatDoesNotFitIsShortened)
{
    label = "Centrifugal pump";
    size.x = 56.0f;
    Init();
    EXPECT_EQ(Label()->GetText(), KUVUnicodeString("Centr...")) << "eight characters of 7 units";
    EXPECT_EQ(view.IsCropped(), 1);
}

TEST_F(VisTreeSpaceFillingViewTest, AnEmptyLabelIsNotCropped)
{
    label = "";
    Init();
    EXPECT_EQ(view.IsCropped(), 0);
    EXPECT_EQ(Label()->GetText(), KUVUnicodeString());
}

TEST_F(VisTreeSpaceFillingViewTest, TheScaleTurnsNominalSizesIntoPixels)
{
    scale = 2.0f;
    Init();
    EXPECT_EQ(Label()->GetTextSize(), 28.0f);
}

TEST_F(VisTreeSpaceFillingViewTest, TheLabelStandsInTheUpperLeftCornerByDefault)
{
    //  *Pump--------+
    //  |            |
    //  +------------+
    Init();
    ExpectPoint(Label()->GetPoint(), 10.0f, 70.0f);
    EXPECT_EQ(Label()->GetAnchor(), KUVAnchorPoint_UpperLeft);
}

TEST_F(VisTreeSpaceFillingViewTest, ACentredLabelStandsInTheMiddle)
{
    //  +------------+
    //  |   Pu*mp    |
    //  +------------+
    centredLabel = 1;
    Init();
    ExpectPoint(Label()->GetPoint(), 60.0f, 45.0f);
    EXPECT_EQ(Label()->GetAnchor(), KUVAnchorPoint_Center);
}

// ---- icon and label

TEST_F(VisTreeSpaceFillingViewTest, TheLabelBelowTheIconIsCentredUnderIt)
{
    //  70 +-----------------------+
    //     |         +---+ 60      |     16 high icon, 14 high band: 30 of 50
    //     |         |   |         |
    //     |         +---+ 44      |
    //     |         Pu*mp 44      |
    //  20 +-----------------------+
    UseIcon(16, 16, View::Position_LabelBelow);
    Init();
    EXPECT_EQ(Roles(Bag()), "fill label icon");
    ExpectPoint(Icon()->GetLowerLeft(), 52.0f, 44.0f);
    ExpectPoint(Label()->GetPoint(), 60.0f, 44.0f);
    EXPECT_EQ(Label()->GetAnchor(), KUVAnchorPoint_UpperMiddle);
}

TEST_F(VisTreeSpaceFillingViewTest, TheLabelAboveTheIconIsCentredOverIt)
{
    //  70 +-----------------------+
    //     |         Pu*mp 53      |
    //     |         +---+ 46      |
    //     |         |   |         |
    //     |         +---+ 30      |
    //  20 +-----------------------+
    UseIcon(16, 16, View::Position_LabelAbove);
    Init();
    ExpectPoint(Icon()->GetLowerLeft(), 52.0f, 30.0f);
    ExpectPoint(Label()->GetPoint(), 60.0f, 53.0f);
    EXPECT_EQ(Label()->GetAnchor(), KUVAnchorPoint_Center);
}

TEST_F(VisTreeSpaceFillingViewTest, AnIconAtTheLeftHasTheLabelAtItsRight)
{
    //  70 +-----------------------+
    //     |12+---+30              |
    //     |  |   |*Pump 52        |
    //     |  +---+37              |
    //  20 +-----------------------+
    UseIcon(16, 16, View::Position_IconLeft);
    Init();
    ExpectPoint(Icon()->GetLowerLeft(), 12.0f, 37.0f);
    ExpectPoint(Label()->GetPoint(), 30.0f, 52.0f);
    EXPECT_EQ(Label()->GetAnchor(), KUVAnchorPoint_UpperLeft);
}

TEST_F(VisTreeSpaceFillingViewTest, AnIconAtTheRightHasTheLabelAtTheLeftEdge)
{
    //  70 +-----------------------+
    //     |                94+---+|
    //     |*Pump 52          |   ||
    //     |                  +---+| 37
    //  20 +-----------------------+
    UseIcon(16, 16, View::Position_IconRight);
    Init();
    ExpectPoint(Icon()->GetLowerLeft(), 94.0f, 37.0f);
    ExpectPoint(Label()->GetPoint(), 10.0f, 52.0f);
    EXPECT_EQ(Label()->GetAnchor(), KUVAnchorPoint_UpperLeft);
}

TEST_F(VisTreeSpaceFillingViewTest, AnyOtherPositionPlacesTheIconLowAndTheLabelAsWithoutIcon)
{
    UseIcon(16, 16, static_cast<View::Position>(4));
    Init();
    ExpectPoint(Icon()->GetLowerLeft(), 52.0f, 30.0f);
    ExpectPoint(Label()->GetPoint(), 10.0f, 70.0f);
    EXPECT_EQ(Label()->GetAnchor(), KUVAnchorPoint_UpperLeft);
}

TEST_F(VisTreeSpaceFillingViewTest, TheLabelGetsTheWidthThatTheIconLeaves)
{
    label = "Centrifugal pump";
    size.x = 76.0f;
    UseIcon(16, 16, View::Position_IconLeft);
    Init();
    EXPECT_EQ(Label()->GetText(), KUVUnicodeString("Centr...")) << "76 - 16 - 4 = 56 units";
    iconPosition = View::Position_IconRight;
    size.x = 74.0f;
    Init();
    EXPECT_EQ(Label()->GetText(), KUVUnicodeString("Centr...")) << "74 - 16 - 2 = 56 units";
}

TEST_F(VisTreeSpaceFillingViewTest, AnIconWithoutLabelIsCentredAlone)
{
    label = "";
    UseIcon(16, 16, View::Position_LabelBelow);
    Init();
    ExpectPoint(Icon()->GetLowerLeft(), 52.0f, 37.0f);
}

TEST_F(VisTreeSpaceFillingViewTest, AnIconWiderThanTheNodeIsNotShown)
{
    UseIcon(101, 16, View::Position_IconRight);
    Init();
    EXPECT_EQ(Roles(Bag()), "fill label");
    ExpectPoint(Label()->GetPoint(), 10.0f, 70.0f);
    EXPECT_EQ(Label()->GetAnchor(), KUVAnchorPoint_UpperLeft);
}

TEST_F(VisTreeSpaceFillingViewTest, AnIconHigherThanWhatTheLabelLeavesIsNotShown)
{
    UseIcon(16, 37, View::Position_LabelBelow);
    Init();
    EXPECT_EQ(Icon(), nullptr) << "37 of 50 - 14";
    iconPosition = View::Position_IconRight;
    Init();
    EXPECT_NE(Icon(), nullptr) << "beside the label the whole height is free";
}

TEST_F(VisTreeSpaceFillingViewTest, AnIconFollowsTheScale)
{
    UseIcon(16, 16, View::Position_IconRight);
    scale = 2.5f;
    Init();
    ExpectPoint(Icon()->GetLowerLeft(), 70.0f, 25.0f);
    EXPECT_EQ(Icon()->GetImage()->GetXPixelSize(), 2.5f);
    EXPECT_EQ(Icon()->GetImage()->GetYPixelSize(), 2.5f);
    EXPECT_EQ(Icon()->GetAlphaMode(), 2);
    EXPECT_EQ(Icon()->IsOverlay(), 1);
    EXPECT_EQ(Icon()->IsWorldScalable(), 0);
}

TEST_F(VisTreeSpaceFillingViewTest, AnUnknownIconNameGivesNoIcon)
{
    UseIcon(16, 16, View::Position_IconRight);
    iconName = "no such icon.png";
    Init();
    EXPECT_EQ(Roles(Bag()), "fill label");
    ExpectPoint(Label()->GetPoint(), 10.0f, 70.0f);
}
