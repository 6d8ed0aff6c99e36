#include "VisTreeSpaceFillingView.h"

#include "module/ViewFixture.h"

#include "private/NodeTextures.h"

#include "core/PixelMemory.h"

#include "support/Allocations.h"

#include <iostream>
#include <limits>
#include <vector>

using viewreading::ColourOf;
using viewreading::Find;
using viewreading::Roles;
using viewtest::BRIGHT;
using viewtest::Bytes;
using viewtest::DARK;
using viewtest::ExpectPoint;
using viewtest::IconBackend;
using viewtest::ORANGE;
using viewtest::View;

namespace {

class VisTreeSpaceFillingViewStateTest : public viewtest::ViewTest {};

}  // namespace

// ---- highlight and selection

TEST_F(VisTreeSpaceFillingViewStateTest, InContourModeTheContourShowsSelectionAndHighlight)
{
    Init();
    view.SetHighlightStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill contour label");
    const auto* const contour = Find<KUV2DPolygonRep>(Bag(), "contour");
    EXPECT_EQ(contour->GetPoints(), (std::vector<float>{10, 20, 110, 20, 110, 70, 10, 70}));
    EXPECT_EQ(ColourOf(*contour), ORANGE);
    EXPECT_EQ(contour->IsOverlay(), 1);
    EXPECT_EQ(contour->IsWorldScalable(), 0);
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill contour label");
    view.SetHighlightStatus(0);
    EXPECT_EQ(Roles(Bag()), "fill contour label");
    view.SetSelectionStatus(0);
    EXPECT_EQ(Roles(Bag()), "fill label");
}

TEST_F(VisTreeSpaceFillingViewStateTest,
       InTextureModeThePlateShowsTheHighlightAndTheFrameTheSelection)
{
    Init();
    view.SetHighlightMode(View::HighlightMode_Texture);
    EXPECT_EQ(Roles(Bag()), "fill label");
    view.SetHighlightStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill hover label");
    const auto* const hover = Find<KUV2DImagePixelRep>(Bag(), "hover");
    ExpectPoint(hover->GetLowerLeft(), 11.0f, 21.0f);
    EXPECT_EQ(hover->GetMode(), 0);
    EXPECT_EQ(hover->IsOverlay(), 1);
    EXPECT_EQ(hover->IsWorldScalable(), 1);
    int width = 0;
    int height = 0;
    hover->GetImage()->GetSize(width, height);
    EXPECT_EQ(width, 98);
    EXPECT_EQ(height, 48);
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill selected label") << "a selected node hides its hover plate";
    ExpectPoint(Find<KUV2DImagePixelRep>(Bag(), "selected")->GetLowerLeft(), 11.0f, 21.0f);
    view.SetHighlightStatus(0);
    EXPECT_EQ(Roles(Bag()), "fill selected label");
    view.SetSelectionStatus(0);
    EXPECT_EQ(Roles(Bag()), "fill label");
}

TEST_F(VisTreeSpaceFillingViewStateTest, NodesOfOneSizeShareTheirPlates)
{
    View other(&textures);
    Init();
    Init(other);
    EXPECT_EQ(textures.platesBySize.size(), 1U);
    for (View* const each : {&view, &other}) {
        each->SetHighlightMode(View::HighlightMode_Texture);
        each->SetHighlightStatus(1);
    }
    EXPECT_EQ(Find<KUV2DImagePixelRep>(Bag(), "hover")->GetImage(),
              Find<KUV2DImagePixelRep>(other.GetBagRep(), "hover")->GetImage());
}

TEST_F(VisTreeSpaceFillingViewStateTest, APlateIsMadeWhenItShowsForTheFirstTime)
{
    Init();
    view.SetHighlightMode(View::HighlightMode_Texture);
    const auto* const plates = textures.GetPlates(size);
    ASSERT_NE(plates, nullptr);
    EXPECT_EQ(plates->hover, nullptr);
    EXPECT_EQ(plates->selected, nullptr);
    view.SetHighlightStatus(1);
    EXPECT_NE(plates->hover, nullptr);
    EXPECT_EQ(plates->selected, nullptr);
    view.SetSelectionStatus(1);
    EXPECT_NE(plates->selected, nullptr);
    Init();
    EXPECT_EQ(Roles(Bag()), "fill selected label") << "both states survive a new build";
}

TEST_F(VisTreeSpaceFillingViewStateTest, APlateSmallerThanFourByFourIsNotMade)
{
    size = {5.0f, 50.0f};
    Init();
    view.SetHighlightMode(View::HighlightMode_Texture);
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill label");
    size = {6.0f, 50.0f};
    Init();
    EXPECT_EQ(Roles(Bag()), "fill selected label");
}

TEST_F(VisTreeSpaceFillingViewStateTest, SettingTheSameSelectionStatusTwiceRebuildsNothing)
{
    Init();
    view.SetSelectionStatus(1);
    KUV2DBagRep* const bag = view.GetBagRep();
    auto* const label1 = const_cast<KUV2DAnnotationTextRep*>(Label());
    bag->RemoveChild(label1);
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(bag), "fill contour") << "the label would have come back";
    view.SetSelectionStatus(2);
    EXPECT_EQ(Roles(bag), "fill contour label") << "another value is another state";
    EXPECT_EQ(view.GetSelectionStatus(), 2);
}

TEST_F(VisTreeSpaceFillingViewStateTest, SettingTheSameHighlightStatusTwiceRebuildsNothing)
{
    Init();
    view.SetHighlightStatus(1);
    view.GetBagRep()->RemoveChild(const_cast<KUV2DAnnotationTextRep*>(Label()));
    view.SetHighlightStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill contour");
}

TEST_F(VisTreeSpaceFillingViewStateTest, SettingTheSameHighlightModeTwiceRebuildsNothing)
{
    Init();
    view.GetBagRep()->RemoveChild(const_cast<KUV2DAnnotationTextRep*>(Label()));
    view.SetHighlightMode(View::HighlightMode_Contour);
    EXPECT_EQ(Roles(Bag()), "fill");
}

TEST_F(VisTreeSpaceFillingViewStateTest, AHiddenViewChangesItsFlagAndTouchesNoRep)
{
    Init();
    view.GetBagRep()->SetShown(0);
    EXPECT_EQ(view.IsVisible(), 0);
    view.SetHighlightStatus(1);
    EXPECT_EQ(view.GetHighlightStatus(), 1);
    EXPECT_EQ(Roles(Bag()), "fill label");
}

TEST_F(VisTreeSpaceFillingViewStateTest, AViewWithoutVisibilityRecordIsNotVisible)
{
    Init();
    view.GetBagRep()->ForgetVisibilityState();
    EXPECT_EQ(view.IsVisible(), 0);
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill label");
}

TEST_F(VisTreeSpaceFillingViewStateTest, SwitchingFromTextureToContourModeSwapsFrameAndContour)
{
    Init();
    view.SetHighlightMode(View::HighlightMode_Texture);
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill selected label");
    view.SetHighlightMode(View::HighlightMode_Contour);
    EXPECT_EQ(Roles(Bag()), "fill contour label");
}

TEST_F(VisTreeSpaceFillingViewStateTest, SwitchingFromContourToTextureModeSwapsContourAndFrame)
{
    Init();
    view.SetSelectionStatus(1);
    view.SetHighlightMode(View::HighlightMode_Texture);
    EXPECT_EQ(view.GetHighlightMode(), View::HighlightMode_Texture);
    EXPECT_EQ(Roles(Bag()), "fill selected label");
}

TEST_F(VisTreeSpaceFillingViewStateTest, TheHoverPlateStaysWhenTheModeChanges)
{
    Init();
    view.SetHighlightMode(View::HighlightMode_Texture);
    view.SetHighlightStatus(1);
    view.SetHighlightMode(View::HighlightMode_Contour);
    EXPECT_EQ(Roles(Bag()), "fill hover contour label") << "the plate is left behind on purpose";
}

TEST_F(VisTreeSpaceFillingViewStateTest, LabelAndIconStayOnTop)
{
    UseIcon(16, 16, View::Position_IconRight);
    Init();
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "fill contour label icon");
}

// ---- colours of the label

TEST_F(VisTreeSpaceFillingViewStateTest, TheLabelColourFollowsBackgroundLeafModeAndState)
{
    struct Case {
        unsigned int colour;
        unsigned char leaf;
        View::HighlightMode mode;
        unsigned char active;
        Bytes expected;
    };
    const Bytes white = {255, 255, 255, 255};
    const Bytes black = {0, 0, 0, 255};
    const Bytes grey = {119, 121, 124, 255};
    const Bytes orange = {232, 123, 0, 255};
    const Bytes pink = {252, 181, 185, 255};
    const View::HighlightMode byContour = View::HighlightMode_Contour;
    const View::HighlightMode byTexture = View::HighlightMode_Texture;
    const Case cases[] = {
        {DARK, 0, byContour, 0, white},    {DARK, 1, byContour, 0, white},
        {DARK, 0, byTexture, 0, white},    {BRIGHT, 0, byContour, 0, black},
        {BRIGHT, 1, byContour, 0, grey},   {BRIGHT, 1, byTexture, 0, grey},
        {BRIGHT, 0, byContour, 1, orange}, {BRIGHT, 1, byContour, 1, orange},
        {DARK, 0, byContour, 1, pink},     {DARK, 1, byContour, 1, pink},
        {BRIGHT, 1, byTexture, 1, grey},   {DARK, 1, byTexture, 1, grey},
        {BRIGHT, 0, byTexture, 1, black},  {DARK, 0, byTexture, 1, black},
    };
    for (const Case& each : cases) {
        for (const bool byHighlight : {false, true}) {
            colour = each.colour;
            isLeafObject = each.leaf;
            view.SetHighlightMode(each.mode);
            view.SetHighlightStatus(byHighlight ? each.active : 0);
            view.SetSelectionStatus(byHighlight ? 0 : each.active);
            Init();
            EXPECT_EQ(ColourOf(*Label()), each.expected)
                << std::hex << each.colour << " leaf " << int(each.leaf) << " mode " << each.mode
                << " active " << int(each.active) << " by highlight " << byHighlight;
        }
    }
}

TEST_F(VisTreeSpaceFillingViewStateTest, TheContourColourCanBeSetAndReset)
{
    Init();
    view.SetSelectionStatus(1);
    const auto* const contour = Find<KUV2DPolygonRep>(Bag(), "contour");
    view.SetSquareCountourColor(1, 2, 3, 4);
    EXPECT_EQ(ColourOf(*contour), (Bytes{1, 2, 3, 4}));
    view.ResetSquareCountourColor();
    EXPECT_EQ(ColourOf(*contour), ORANGE);
}

TEST_F(VisTreeSpaceFillingViewStateTest, ANewBuildResetsTheContourColour)
{
    Init();
    view.SetSelectionStatus(1);
    view.SetSquareCountourColor(1, 2, 3, 4);
    Init();
    EXPECT_EQ(ColourOf(*Find<KUV2DPolygonRep>(Bag(), "contour")), ORANGE);
}

TEST_F(VisTreeSpaceFillingViewStateTest, AContourColourWithoutContourIsIgnored)
{
    view.SetSquareCountourColor(1, 2, 3, 4);
    view.ResetSquareCountourColor();
    EXPECT_EQ(Roles(Bag()), "");
}

// ---- Clean

TEST_F(VisTreeSpaceFillingViewStateTest, CleanTakesTheRepsAwayAndKeepsStateAndMode)
{
    colour = BRIGHT;
    label = "A label that is much too long";
    Init();
    view.SetSelectionStatus(1);
    view.SetHighlightStatus(1);
    view.SetHighlightMode(View::HighlightMode_Texture);
    view.Clean();
    EXPECT_EQ(Roles(Bag()), "");
    EXPECT_NE(view.GetBagRep(), nullptr);
    EXPECT_EQ(view.GetSelectionStatus(), 1);
    EXPECT_EQ(view.GetHighlightStatus(), 1);
    EXPECT_EQ(view.GetHighlightMode(), View::HighlightMode_Texture);
    EXPECT_EQ(view.IsBright(), 1);
    EXPECT_EQ(view.IsCropped(), 1);
}

TEST_F(VisTreeSpaceFillingViewStateTest, CleaningTwiceIsHarmless)
{
    Init();
    view.Clean();
    view.Clean();
    EXPECT_EQ(Roles(Bag()), "");
}

// ---- InitWithTexture, InitWithoutTexture

namespace {

unsigned int* MakePixels(int width, int height)
{
    unsigned char* const bytes = CreatePixels(width, height);
    std::memset(bytes, 9, static_cast<std::size_t>(width * height * 4));
    return reinterpret_cast<unsigned int*>(bytes);
}

}  // namespace

TEST_F(VisTreeSpaceFillingViewStateTest, InitWithTextureShowsThePictureWithoutLabel)
{
    view.InitWithTexture(0, position, {20.9f, 10.9f}, MakePixels(20, 10), 0);
    EXPECT_EQ(Roles(Bag()), "texture");
    const auto* const texture = Find<KUV2DImagePixelRep>(Bag(), "texture");
    ExpectPoint(texture->GetLowerLeft(), 10.0f, 20.0f);
    EXPECT_EQ(texture->GetMode(), 0);
    EXPECT_EQ(texture->IsOverlay(), 1);
    int width = 0;
    int height = 0;
    texture->GetImage()->GetSize(width, height);
    EXPECT_EQ(width, 20);
    EXPECT_EQ(height, 10);
    EXPECT_EQ(texture->GetImage()->GetFormat(), KUVPixelFormat_RGBA8);
}

TEST_F(VisTreeSpaceFillingViewStateTest, AfterInitWithTextureTheViewIsCropped)
{
    view.InitWithTexture(0, position, {20.0f, 10.0f}, MakePixels(20, 10), 0);
    EXPECT_EQ(view.IsCropped(), 1) << "the layout shows the missing label elsewhere";
}

TEST_F(VisTreeSpaceFillingViewStateTest, InitWithTextureHasAContour)
{
    view.InitWithTexture(0, position, {20.0f, 10.0f}, MakePixels(20, 10), 0);
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "texture contour");
    EXPECT_EQ(ColourOf(*Find<KUV2DPolygonRep>(Bag(), "contour")), ORANGE);
}

TEST_F(VisTreeSpaceFillingViewStateTest, HighlightImagesOfATextureAreMadeOnRequest)
{
    view.SetHighlightMode(View::HighlightMode_Texture);
    view.SetHighlightStatus(1);
    view.InitWithTexture(0, position, {20.0f, 10.0f}, MakePixels(20, 10), 0);
    EXPECT_EQ(Roles(Bag()), "texture");
    view.InitWithTexture(0, position, {20.0f, 10.0f}, MakePixels(20, 10), 1);
    EXPECT_EQ(Roles(Bag()), "texture hover");
    int width = 0;
    int height = 0;
    Find<KUV2DImagePixelRep>(Bag(), "hover")->GetImage()->GetSize(width, height);
    EXPECT_EQ(width, 18);
    EXPECT_EQ(height, 8);
}

TEST_F(VisTreeSpaceFillingViewStateTest, TheHighlightImagesOfATextureAreAtLeastTwoWideAndSoNotMade)
{
    view.SetHighlightMode(View::HighlightMode_Texture);
    view.SetHighlightStatus(1);
    view.InitWithTexture(0, position, {3.0f, 3.0f}, MakePixels(3, 3), 1);
    EXPECT_EQ(Roles(Bag()), "texture") << "2 x 2 is below 4 x 4";
    EXPECT_EQ(textures.platesBySize.size(), 1U);
}

TEST_F(VisTreeSpaceFillingViewStateTest, ATextureWithoutPixelsIsJustAContour)
{
    view.SetSelectionStatus(1);
    view.InitWithTexture(0, position, size, nullptr, 1);
    EXPECT_EQ(Roles(Bag()), "contour");
    EXPECT_EQ(view.IsCropped(), 1);
}

TEST_F(VisTreeSpaceFillingViewStateTest, APixelBufferIsFreedAtOnceWhenNoImageIsMade)
{
    const std::size_t before = core::CountPixelBuffers();
    view.InitWithTexture(0, position, {0.0f, 0.0f}, MakePixels(4, 4), 1);
    EXPECT_EQ(core::CountPixelBuffers(), before) << "no extent";
    view.InitWithTexture(0, position, {0.5f, 4.0f}, MakePixels(4, 4), 1);
    EXPECT_EQ(core::CountPixelBuffers(), before) << "less than a pixel wide";
    view.InitWithTexture(0, position, {std::numeric_limits<float>::quiet_NaN(), 4.0f},
                         MakePixels(4, 4), 1);
    EXPECT_EQ(core::CountPixelBuffers(), before) << "not a number";
    View withoutTextures(nullptr);
    withoutTextures.InitWithTexture(0, position, {4.0f, 4.0f}, MakePixels(4, 4), 1);
    EXPECT_EQ(core::CountPixelBuffers(), before) << "no textures";
    EXPECT_EQ(Roles(withoutTextures.GetBagRep()), "");
    withoutTextures.SetSelectionStatus(1);
    EXPECT_EQ(Roles(withoutTextures.GetBagRep()), "contour");
}

TEST_F(VisTreeSpaceFillingViewStateTest, ABufferThatWasTakenIsFreedWithTheBuild)
{
    const std::size_t before = core::CountPixelBuffers();
    view.InitWithTexture(0, position, {4.0f, 4.0f}, MakePixels(4, 4), 0);
    EXPECT_EQ(core::CountPixelBuffers(), before + 1);
    view.Clean();
    EXPECT_EQ(core::CountPixelBuffers(), before);
}

TEST_F(VisTreeSpaceFillingViewStateTest, InitWithoutTextureShowsOnlyTheContour)
{
    view.InitWithoutTexture(0, position, size);
    EXPECT_EQ(Roles(Bag()), "");
    view.SetHighlightStatus(1);
    EXPECT_EQ(Roles(Bag()), "contour");
    EXPECT_EQ(view.IsCropped(), 1);
}

TEST_F(VisTreeSpaceFillingViewStateTest, InitWithoutTextureMakesTheViewVisibleWhateverItsBagSays)
{
    view.GetBagRep()->SetShown(0);
    view.InitWithoutTexture(0, position, size);
    EXPECT_EQ(view.IsVisible(), 1);
    view.SetSelectionStatus(1);
    EXPECT_EQ(Roles(Bag()), "contour");
    view.Clean();
    EXPECT_EQ(view.IsVisible(), 0) << "the next build decides anew";
}

TEST_F(VisTreeSpaceFillingViewStateTest, InitWithoutTextureUpdatesTheReps)
{
    view.GetBagRep()->SetShown(0);
    view.SetSelectionStatus(1);
    view.InitWithoutTexture(0, position, size);
    EXPECT_EQ(Roles(Bag()), "contour");
}

// ---- memory

TEST(VisTreeSpaceFillingViewState, EveryFailingAllocationLeavesAViewThatCanBeDestroyed)
{
    core::SetImageBackend(std::make_shared<IconBackend>(16, 16));
    const std::size_t failures = support::ForEveryFailingAllocation([] {
        VisTreeSpaceFillingLayoutCachedTextures textures;
        KUVCharacterFont* const font = support::MakeFixedWidthFont();
        struct Release {
            KUVCharacterFont* font;
            ~Release() { font->Release(); }
        } const release{font};
        View view(&textures);
        for (const bool flat : {false, true}) {
            view.Init(0, "A label that is longer than its node", {0.0f, 0.0f}, {90.0f, 60.0f}, DARK,
                      font, flat, 0, "I_VisPart.png", View::Position_IconLeft, 1.0f);
            view.SetSelectionStatus(1);
            view.SetHighlightMode(View::HighlightMode_Texture);
            view.SetSelectionStatus(0);
        }
        unsigned char* const pixels = CreatePixels(8, 8);
        if (pixels)
            std::memset(pixels, 0, 256);
        view.InitWithTexture(0, {0.0f, 0.0f}, {8.0f, 8.0f}, reinterpret_cast<unsigned int*>(pixels),
                             1);
        view.InitWithoutTexture(0, {0.0f, 0.0f}, {8.0f, 8.0f});
    });
    core::SetImageBackend(nullptr);
    EXPECT_GT(failures, 30U);
    std::cout << "count: " << failures << " failing allocations while a view is built\n";
}

// ---- what it was built with

TEST_F(VisTreeSpaceFillingViewStateTest, TellsTheRectangleOfTheLastBuildUntilItIsCleaned)
{
    EXPECT_EQ(view.IsBuilt(), 0);
    Init();
    EXPECT_EQ(view.IsBuilt(), 1);
    ExpectPoint(view.GetBuiltPosition(), 10, 20);
    ExpectPoint(view.GetBuiltSize(), 100, 50);
    view.SetSelectionStatus(1);
    view.SetHighlightMode(View::HighlightMode_Texture);
    EXPECT_EQ(view.IsBuilt(), 1);
    view.Clean();
    EXPECT_EQ(view.IsBuilt(), 0);
}

TEST_F(VisTreeSpaceFillingViewStateTest, IsBuiltByEveryBuildThatIsNotRefused)
{
    view.InitWithoutTexture(0, {3, 4}, {0, 7});
    EXPECT_EQ(view.IsBuilt(), 1) << "one side is enough";
    ExpectPoint(view.GetBuiltSize(), 0, 7);
    view.InitWithoutTexture(0, {3, 4}, {0, 0});
    EXPECT_EQ(view.IsBuilt(), 0) << "and a refused build cleans";
    view.InitWithTexture(0, {5, 6}, {8, 9}, nullptr, 0);
    EXPECT_EQ(view.IsBuilt(), 1);
    ExpectPoint(view.GetBuiltPosition(), 5, 6);
    view.InitWithTexture(0, {std::numeric_limits<float>::quiet_NaN(), 6}, {8, 9}, nullptr, 0);
    EXPECT_EQ(view.IsBuilt(), 0);
}
