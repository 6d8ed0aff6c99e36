#include "VisCushionLayout.h"

#include "VirtualSlots.h"

#include "module/CushionFixture.h"

#include "private/CushionRectangles.h"

#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using cushions::BagRef;
using cushions::Cache;
using cushions::Cushion;
using cushions::FLAT_WHITE;
using cushions::LayoutRef;
using cushions::SIDE_BY_SIDE;
using cushions::STACKED;
using cushions::WHITE;

namespace {

/// Opens what the layout keeps for derived classes.
struct OpenLayout : VisCushionLayout {
    OpenLayout() : VisCushionLayout(nullptr) {}
    using VisCushionLayout::GenerateCache;
    using VisTreeSpaceFillingLayout::GetDrawScale;
    using VisTreeSpaceFillingLayout::Init;
};

const support::TreeSketch THREE_LEAVES = {"R", {{"0"}, {"1"}, {"2"}}};
const support::TreeSketch TWO_LEVELS = {"R", {{"A", {{"a"}, {"b"}}}, {"B"}}};

void ExpectSurface(const Cache& cache, float xLinear, float xQuadratic, float yLinear,
                   float yQuadratic)
{
    EXPECT_EQ(cache.GetSurface()[0], xLinear);
    EXPECT_EQ(cache.GetSurface()[1], xQuadratic);
    EXPECT_EQ(cache.GetSurface()[2], yLinear);
    EXPECT_EQ(cache.GetSurface()[3], yQuadratic);
}

int CountViews(const Cushion& cushion) { return cushion.bag->GetChildren()->Count(); }

}  // namespace

// ---- constants and identity

TEST(VisCushionLayout, HasThePublishedColours)
{
    const unsigned int published[] = {0x7FC97F, 0xBEAED4, 0xFDC086, 0xFFFF99, 0x386CB0,
                                      0xF0027F, 0xBF5B17, 0x666666, 0xFFFFFF};
    for (std::size_t i = 0; i < std::size(published); ++i)
        EXPECT_EQ(VisCushionLayout::COLOR_MAP[i], published[i]) << i;
    EXPECT_EQ(std::size(VisCushionLayout::COLOR_MAP), std::size(published));
    EXPECT_EQ(VisCushionLayout::MAX_COLOR_MAP, 8U);
}

TEST(VisCushionLayout, AnswersForItsClassByName)
{
    const Cushion cushion(THREE_LEAVES);
    EXPECT_STREQ(VisCushionLayout::ClassName(), "VisCushionLayout");
    EXPECT_STREQ(cushion.layout->IsA(), "VisCushionLayout");
    EXPECT_EQ(cushion.layout->IsAKindOf("VisTreeSpaceFillingLayout"), 1);
    EXPECT_EQ(cushion.layout->IsAKindOf("KUVCommand"), 1);
    EXPECT_EQ(cushion.layout->IsAKindOf("VisTreeMapLayout"), 0);
    EXPECT_EQ(VisCushionLayout::CreateItself(), nullptr);
    EXPECT_EQ(VisCushionLayout::ClassId(), KUVClassIdOf("VisCushionLayout"));
    EXPECT_EQ(cushion.layout->GetMetaObject(), VisCushionLayout::MetaObject());
    EXPECT_EQ(VisCushionLayout::MetaObject()->GetBase(), VisTreeSpaceFillingLayout::MetaObject());
    EXPECT_STREQ(VisCushionLayout::MetaObject()->GetFramework(), "VisualizationCommands");
    EXPECT_EQ(VisCushionLayout::MetaObject()->GetInstanceSize(), sizeof(VisCushionLayout));
}

TEST(VisCushionLayout, AddsNoVirtualOperationsToThoseOfTheBase)
{
    struct Next : OpenLayout {
        virtual void FirstOfItsOwn() {}
    };
    struct NextOfBase : VisTreeSpaceFillingLayout {
        NextOfBase() : VisTreeSpaceFillingLayout(nullptr) {}
        virtual void FirstOfItsOwn() {}
    };
    EXPECT_EQ(SlotOf(&VisCushionLayout::Draw), SlotOf(&VisTreeSpaceFillingLayout::Draw));
    EXPECT_EQ(SlotOf(&VisCushionLayout::CushionTreemap), -1);
    EXPECT_EQ(SlotOf(&Next::FirstOfItsOwn), SlotOf(&NextOfBase::FirstOfItsOwn));
}

// ---- CreateLayout, GenerateCache

TEST(VisCushionLayout, WithoutRootThereIsNoLayout)
{
    const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
    EXPECT_EQ(VisCushionLayout::CreateLayout(nullptr, nullptr, bag.Get()), nullptr);
    EXPECT_EQ(bag->GetReferenceCount(), 1U);
}

TEST(VisCushionLayout, ANewLayoutHoldsTreeAndBagAndHasACacheForEveryNode)
{
    const auto parent = VisReference<KUVCommand>::Adopt(new KUVCommand(nullptr, "parent"));
    const trees::NodeRef root = trees::NodeRef::Adopt(support::MakeTree(THREE_LEAVES));
    const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
    const LayoutRef layout =
        LayoutRef::Adopt(VisCushionLayout::CreateLayout(parent.Get(), root.Get(), bag.Get()));
    EXPECT_EQ(layout->GetReferenceCount(), 1U);
    EXPECT_EQ(layout->GetParentCommand(), parent.Get());
    EXPECT_EQ(layout->GetTreeRoot(), root.Get());
    EXPECT_EQ(layout->GetCurrentRoot(), root.Get());
    EXPECT_EQ(root->GetReferenceCount(), 2U);
    EXPECT_EQ(bag->GetReferenceCount(), 2U);
    for (const VisDataTree* const child : root->GetChildren())
        EXPECT_NE(dynamic_cast<Cache*>(child->GetCache()), nullptr);
}

TEST(VisCushionLayout, ANewLayoutDoesNotZoomByMouse)
{
    const Cushion cushion(THREE_LEAVES);
    EXPECT_EQ(cushion.layout->GetEnableZoom(), 0);
}

TEST(VisCushionLayout, AGeneratedCacheBelongsToNoNode)
{
    const auto layout = VisReference<OpenLayout>::Adopt(new OpenLayout);
    const std::unique_ptr<VisTreeSpaceFillingLayoutCache> cache(layout->GenerateCache());
    const auto* const made = dynamic_cast<Cache*>(cache.get());
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetNode(), nullptr);
    EXPECT_EQ(made->GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
}

// ---- values

TEST(VisCushionLayout, WithoutSizesEveryLeafCountsOne)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Of("a")->SetSizeValue(50);
    cushion.Draw(90.0f, 60.0f);
    EXPECT_EQ(cushion.Of("a")->GetSubtreeValue(), 1);
    EXPECT_EQ(cushion.Of("A")->GetSubtreeValue(), 2);
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), 3);
}

TEST(VisCushionLayout, SizedLeavesCountTheirSizeValueAndInnerNodesTheirLeaves)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Root()->SetResizeWithValue(1);
    cushion.Of("a")->SetSizeValue(50);
    cushion.Of("b")->SetSizeValue(30);
    cushion.Of("B")->SetSizeValue(20);
    cushion.Of("A")->SetSizeValue(12345);
    cushion.Draw(100.0f, 80.0f);
    EXPECT_EQ(cushion.Of("A")->GetSubtreeValue(), 80) << "its own value does not count";
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), 100);
    EXPECT_EQ(cushion.Rectangle("A"), "0,0 100x64");
    EXPECT_EQ(cushion.Rectangle("a"), "0,0 62.5x64");
    EXPECT_EQ(cushion.Rectangle("b"), "62.5,0 37.5x64");
}

TEST(VisCushionLayout, SumsStopAtTheLargestNumber)
{
    const Cushion cushion(THREE_LEAVES);
    constexpr long long LARGEST = std::numeric_limits<long long>::max();
    cushion.Weigh([](const VisDataTree*) { return LARGEST; });
    cushion.Draw(90.0f, 30.0f);
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), LARGEST);
    EXPECT_EQ(cushion.Of("0")->GetSubtreeValue(), LARGEST);
}

TEST(VisCushionLayout, ANegativeValueCountsAsNone)
{
    const Cushion cushion(THREE_LEAVES);
    cushion.Weigh([](const VisDataTree* leaf) { return leaf->GetLabel() == "1" ? -50 : 10; });
    cushion.Draw(90.0f, 30.0f);
    EXPECT_EQ(cushion.Of("1")->GetSubtreeValue(), 0);
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), 20);
    EXPECT_EQ(cushion.Rectangle("1"), "0,15 90x0");
}

TEST(VisCushionLayout, WithoutAnyValueAllChildrenAreEmptyAtTheStart)
{
    const Cushion cushion(THREE_LEAVES);
    cushion.Root()->SetResizeWithValue(1);
    cushion.Draw(90.0f, 30.0f);
    for (const char* const label : {"0", "1", "2"})
        EXPECT_EQ(cushion.Rectangle(label), "0,0 90x0");
    EXPECT_EQ(cushion.Pixel(0, 0), WHITE) << "without area nothing is shaded";
    EXPECT_EQ(cushion.Pixel(89, 29), WHITE);
}

// ---- rectangles

TEST(VisCushionLayout, AxesTakeTurnsAndTheFirstLevelIsStacked)
{
    //   +-----------+-----------+ 60        A and B along y, a and b along x
    //   |           B           |
    //   +-----------+-----------+ 40
    //   |     a     |     b     |
    //   +-----------+-----------+ 0
    //   0          45          90
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(90.0f, 60.0f);
    EXPECT_EQ(cushion.Rectangle("R"), "0,0 90x60");
    EXPECT_EQ(cushion.Rectangle("A"), "0,0 90x40");
    EXPECT_EQ(cushion.Rectangle("B"), "0,40 90x20");
    EXPECT_EQ(cushion.Rectangle("a"), "0,0 45x40");
    EXPECT_EQ(cushion.Rectangle("b"), "45,0 45x40");
    EXPECT_EQ(cushion.Root()->GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
    EXPECT_EQ(cushion.Of("A")->GetLastModeOfComputedMinimumExpandedSize(), STACKED);
    EXPECT_EQ(cushion.Of("a")->GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
}

TEST(VisCushionLayout, ARootInModeOneHasItsChildrenSideBySide)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Root()->SetLastModeOfComputedMinimumExpandedSize(STACKED);
    cushion.Draw(90.0f, 60.0f);
    EXPECT_EQ(cushion.Rectangle("A"), "0,0 60x60");
    EXPECT_EQ(cushion.Rectangle("b"), "0,30 60x30");
    EXPECT_EQ(cushion.Of("A")->GetLastModeOfComputedMinimumExpandedSize(), SIDE_BY_SIDE);
}

TEST(VisCushionLayout, TheChildrensAxisIsTheModePlusOneModuloTwo)
{
    const Cushion cushion(TWO_LEVELS);
    for (unsigned int mode = 0; mode < 6; ++mode) {
        cushion.layout->CushionTreemap(static_cast<VisTreeMap_SliceDice>(mode), {0.0f, 0.0f},
                                       {90.0f, 60.0f}, 1.0f);
        EXPECT_EQ(cushion.Root()->GetLastModeOfComputedMinimumExpandedSize(), mode);
        EXPECT_EQ(cushion.Rectangle("A"), mode % 2 == 0 ? "0,0 90x40" : "0,0 60x60") << mode;
    }
}

TEST(VisCushionLayout, RectanglesStandAtTheOriginAndAreNotScaled)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.layout->Draw({100.0f, 200.0f}, {90.0f, 60.0f}, nullptr, 2.0f);
    EXPECT_EQ(cushion.Rectangle("R"), "100,200 90x60");
    EXPECT_EQ(cushion.Rectangle("b"), "145,200 45x40");
    int width = 0;
    int height = 0;
    cushion.Image()->GetSize(width, height);
    EXPECT_EQ(width, 180);
    EXPECT_EQ(height, 120);
}

TEST(VisCushionLayout, ViewsAreScaledAboutTheOrigin)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.layout->Draw({100.0f, 200.0f}, {90.0f, 60.0f}, nullptr, 2.0f);
    cushion.layout->SetCurrentSelection(cushion.Node("b"));
    const auto* const contour =
        viewreading::Find<KUV2DPolygonRep>(cushion.Of("b")->GetView()->GetBagRep(), "contour");
    ASSERT_NE(contour, nullptr);
    ASSERT_EQ(contour->GetPoints().size(), 8U);
    EXPECT_EQ(contour->GetPoints()[0], 190.0f);
    EXPECT_EQ(contour->GetPoints()[1], 200.0f);
    EXPECT_EQ(contour->GetPoints()[4], 280.0f);
    EXPECT_EQ(contour->GetPoints()[5], 280.0f);
}

TEST(VisCushionLayout, AChildWithoutCacheGetsNoRoom)
{
    const Cushion cushion(THREE_LEAVES);
    Cache* const cache = cushion.Of("1");
    cushion.Node("1")->SetCache(nullptr);
    cushion.Draw(90.0f, 30.0f);
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), 2);
    EXPECT_EQ(cushion.Rectangle("2"), "0,15 90x15");
    EXPECT_EQ(CountViews(cushion), 3);
    cushion.Node("1")->SetCache(cache);
}

TEST(VisCushionLayout, ACacheOfAnotherClassCountsAsNone)
{
    const Cushion cushion(THREE_LEAVES);
    Cache* const cache = cushion.Of("1");
    cushion.Node("1")->SetCache(nullptr);
    VisTreeMapLayout::VisTreeMapLayoutCache foreign(cushion.Node("1"));
    cushion.Draw(90.0f, 30.0f);
    EXPECT_EQ(foreign.GetView(), nullptr);
    EXPECT_EQ(cushion.Rectangle("2"), "0,15 90x15");
    cushion.Node("1")->SetCache(nullptr);
    cushion.Node("1")->SetCache(cache);
}

// ---- surfaces

TEST(VisCushionLayout, TheRootHasNoRidgeAndTheInitialHeight)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(90.0f, 60.0f);
    ExpectSurface(*cushion.Root(), 0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_EQ(cushion.Root()->GetHeight(), 0.5f);
    EXPECT_EQ(cushion.Root()->GetScaleFactor(), 0.85f);
    EXPECT_EQ(cushion.Root()->IsCushionComputed(), 1);
}

TEST(VisCushionLayout, EveryLevelAddsALowerRidgeAlongItsAxis)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(90.0f, 60.0f);
    const float first = 0.5f * 0.85f;
    const float second = first * 0.85f;
    EXPECT_EQ(cushion.Of("A")->GetHeight(), first);
    EXPECT_EQ(cushion.Of("b")->GetHeight(), second);
    EXPECT_EQ(cushion.Of("b")->GetScaleFactor(), 0.85f);
    const float yLinear = 4.0f * first * (0.0f + 40.0f) / (40.0f - 0.0f);
    const float yQuadratic = -(4.0f * first / (40.0f - 0.0f));
    ExpectSurface(*cushion.Of("A"), 0.0f, 0.0f, yLinear, yQuadratic);
    ExpectSurface(*cushion.Of("b"), 4.0f * second * (45.0f + 90.0f) / (90.0f - 45.0f),
                  -(4.0f * second / (90.0f - 45.0f)), yLinear, yQuadratic);
}

TEST(VisCushionLayout, SurfacesAreRelativeToTheOrigin)
{
    const Cushion here(TWO_LEVELS);
    here.Draw(90.0f, 60.0f);
    const Cushion there(TWO_LEVELS);
    there.layout->Draw({128.0f, -64.0f}, {90.0f, 60.0f}, nullptr, 1.0f);
    const float* const surface = here.Of("b")->GetSurface();
    ExpectSurface(*there.Of("b"), surface[0], surface[1], surface[2], surface[3]);
}

TEST(VisCushionLayout, ARectangleWithoutExtentHasNoRidge)
{
    const Cushion cushion(THREE_LEAVES);
    cushion.Weigh([](const VisDataTree* leaf) { return leaf->GetLabel() == "1" ? 0 : 10; });
    cushion.Draw(90.0f, 30.0f);
    ExpectSurface(*cushion.Of("1"), 0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_NE(cushion.Of("2")->GetSurface()[3], 0.0f);
}

TEST(VisCushionLayout, ARedrawKeepsTheRootsHeightFactorAndSurface)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(90.0f, 60.0f);
    const std::uint64_t before = cushions::ChecksumOf(*cushion.Image());
    cushion.Draw(90.0f, 60.0f);
    EXPECT_EQ(cushion.Root()->GetHeight(), 0.5f);
    EXPECT_EQ(cushions::ChecksumOf(*cushion.Image()), before);
}

TEST(VisCushionLayout, AZoomedRootKeepsItsHeightAndSurfaceUntilItIsReset)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(90.0f, 60.0f);
    const std::vector<float> surface(cushion.Of("A")->GetSurface(),
                                     cushion.Of("A")->GetSurface() + 4);
    cushion.layout->SetCurrentRoot(cushion.Node("A"), 1);
    ExpectSurface(*cushion.Of("A"), surface[0], surface[1], surface[2], surface[3]);
    EXPECT_EQ(cushion.Of("A")->GetHeight(), 0.5f * 0.85f);
    EXPECT_EQ(cushion.Of("a")->GetHeight(), 0.5f * 0.85f * 0.85f);
    EXPECT_EQ(cushion.Rectangle("A"), "0,0 90x60");
    EXPECT_EQ(cushion.Rectangle("a"), "0,0 45x60") << "A was cut along y, its children along x";

    cushion.Of("a")->SetSizeValue(5);
    cushion.Draw(90.0f, 60.0f);
    ExpectSurface(*cushion.Of("A"), 0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_EQ(cushion.Of("A")->GetHeight(), 0.5f);
}

TEST(VisCushionLayout, AZoomedRootIsWeighedAlone)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.layout->SetCurrentRoot(cushion.Node("A"), 1);
    cushion.Draw(90.0f, 60.0f);
    EXPECT_EQ(cushion.Of("A")->GetSubtreeValue(), 2);
    EXPECT_EQ(cushion.Of("B")->GetSubtreeValue(), 0);
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), 0);
    EXPECT_EQ(cushion.Root()->IsCushionComputed(), 0);
}

TEST(VisCushionLayout, ZoomingOutGivesTheSamePictureAgain)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(90.0f, 60.0f);
    const std::uint64_t before = cushions::ChecksumOf(*cushion.Image());
    const std::string rectangle = cushion.Rectangle("b");
    cushion.layout->SetCurrentRoot(cushion.Node("A"), 1);
    EXPECT_NE(cushions::ChecksumOf(*cushion.Image()), before);
    EXPECT_FALSE(cushion.Shows("R"));
    EXPECT_FALSE(cushion.Shows("B"));
    EXPECT_EQ(cushion.layout->Unzoom(), 1);
    EXPECT_EQ(cushions::ChecksumOf(*cushion.Image()), before);
    EXPECT_EQ(cushion.Rectangle("b"), rectangle);
    EXPECT_EQ(CountViews(cushion), 5);
}

TEST(VisCushionLayout, TheGeometryIsTheSameWithoutViews)
{
    const Cushion drawn(TWO_LEVELS);
    drawn.layout->CushionTreemap(STACKED, {3.0f, 4.0f}, {333.3f, 222.2f}, 1.0f);
    const Cushion other(TWO_LEVELS);
    LayOutCushions(other.root.Get(), STACKED, {3.0f, 4.0f}, {333.3f, 222.2f});
    for (const char* const label : {"R", "A", "B", "a", "b"}) {
        EXPECT_EQ(other.Rectangle(label), drawn.Rectangle(label));
        const float* const surface = drawn.Of(label)->GetSurface();
        ExpectSurface(*other.Of(label), surface[0], surface[1], surface[2], surface[3]);
        EXPECT_EQ(other.Of(label)->GetSubtreeValue(), drawn.Of(label)->GetSubtreeValue());
        EXPECT_EQ(other.Of(label)->IsCushionComputed(), 1);
    }
    EXPECT_EQ(CountViews(other), 0);
    LayOutCushions(nullptr, STACKED, {3.0f, 4.0f}, {333.3f, 222.2f});
}

// ---- views

TEST(VisCushionLayout, TheRootShowsThePictureAndTheOthersOnlyContours)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(90.0f, 60.0f);
    EXPECT_EQ(cushion.Roles("R"), "texture");
    EXPECT_EQ(cushion.Roles("a"), "contour") << "the first leaf is the selection";
    EXPECT_EQ(cushion.Roles("B"), "");
    cushion.layout->SetCurrentHighlightedNode(cushion.Node("B"));
    EXPECT_EQ(cushion.Roles("B"), "contour");
    for (const char* const label : {"R", "A", "B", "a", "b"}) {
        EXPECT_EQ(cushion.Of(label)->IsExpanded(), 1) << label;
        EXPECT_EQ(cushion.Of(label)->IsDiscarded(), 0) << label;
        EXPECT_EQ(cushion.Of(label)->GetView()->IsVisible(), 1) << label;
    }
}

TEST(VisCushionLayout, TheFirstPixelRowLiesAtTheLowerEdgeOfThePicture)
{
    // B, coloured, is the upper third of the picture; its contour is where its pixels are.
    const Cushion cushion(TWO_LEVELS);
    cushion.Of("B")->SetColorValue(4);
    cushion.Of("B")->SetColorWithValue(1);
    cushion.layout->Draw({10.0f, 20.0f}, {90.0f, 60.0f}, nullptr, 1.0f);
    const auto* const picture =
        viewreading::Find<KUV2DImagePixelRep>(cushion.Root()->GetView()->GetBagRep(), "texture");
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->GetLowerLeft().x, 10.0f);
    EXPECT_EQ(picture->GetLowerLeft().y, 20.0f);
    EXPECT_EQ(picture->GetMode(), 0);
    for (int y = 0; y < 60; ++y) {
        const unsigned int pixel = cushion.Pixel(45, y);
        const bool isGrey = pixel >> 24U == ((pixel >> 16U) & 255U);
        EXPECT_EQ(isGrey, y < 40) << y;
        const VisDataTree* const hit =
            cushion.layout->FindNodeAtPosition(10.0f + 45.5f, 20.0f + static_cast<float>(y) + 0.5f);
        EXPECT_EQ(hit == cushion.Node("B"), y >= 40) << y;
    }
}

TEST(VisCushionLayout, EveryViewHangsBelowTheBagOnceInPreOrder)
{
    const Cushion cushion(TWO_LEVELS);
    for (int i = 0; i < 2; ++i) {
        cushion.Draw(90.0f, 60.0f);
        const std::vector<const KUVRep*> children = viewreading::ChildrenOf(cushion.bag.Get());
        ASSERT_EQ(children.size(), 5U);
        const char* const order[] = {"R", "A", "a", "b", "B"};
        for (std::size_t k = 0; k < children.size(); ++k)
            EXPECT_EQ(children[k], cushion.Of(order[k])->GetView()->GetBagRep()) << order[k];
    }
}

TEST(VisCushionLayout, WithoutABagTheViewsHangNowhere)
{
    const trees::NodeRef root = trees::NodeRef::Adopt(support::MakeTree(THREE_LEAVES));
    const LayoutRef layout =
        LayoutRef::Adopt(VisCushionLayout::CreateLayout(nullptr, root.Get(), nullptr));
    layout->Draw({0.0f, 0.0f}, {90.0f, 30.0f}, nullptr, 1.0f);
    EXPECT_NE(cushions::ImageOf(static_cast<Cache*>(root->GetCache())->GetView()), nullptr);
    layout->SetTreeRoot(nullptr);
}

// ---- Draw

TEST(VisCushionLayout, ARootWithoutChildrenIsFlat)
{
    const Cushion cushion({"R"});
    cushion.Draw(30.0f, 20.0f);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 30; ++x)
            ASSERT_EQ(cushion.Pixel(x, y), FLAT_WHITE);
    }
    EXPECT_EQ(cushion.Roles("R"), "texture contour") << "it is the selection";
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), 1);
}

TEST(VisCushionLayout, ColoursFollowTheColourValueWhereItIsSwitchedOn)
{
    const Cushion cushion({"R"});
    const auto colourOf = [&cushion](long long value) {
        cushion.Root()->SetColorValue(value);
        cushion.Draw(4.0f, 4.0f);
        return cushion.Pixel(1, 1);
    };
    EXPECT_EQ(colourOf(5), FLAT_WHITE) << "switched off";
    cushion.Root()->SetColorWithValue(1);
    // trunc(249 * byte / 255) of each colour.
    const unsigned int lit[] = {0x7CC47CFF, 0xB9A9CFFF, 0xF7BB82FF, 0xF9F995FF,
                                0x3669ABFF, 0xEA017CFF, 0xBA5816FF, 0x636363FF};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(colourOf(i), lit[i]) << i;
}

TEST(VisCushionLayout, AColourIndexOfEightAboveOrBelowZeroIsWhite)
{
    const Cushion cushion({"R"});
    cushion.Root()->SetColorWithValue(1);
    for (const long long index :
         {8LL, 9LL, 255LL, -1LL, 1LL << 32, std::numeric_limits<long long>::min(),
          std::numeric_limits<long long>::max()}) {
        cushion.Root()->SetColorValue(index);
        cushion.Draw(4.0f, 4.0f);
        EXPECT_EQ(cushion.Pixel(1, 1), FLAT_WHITE) << index;
    }
}

TEST(VisCushionLayout, BelowOnePixelInEitherDirectionNothingIsDrawn)
{
    const Cushion cushion(THREE_LEAVES);
    cushion.Draw(0.9f, 30.0f);
    EXPECT_EQ(CountViews(cushion), 0);
    cushion.Draw(90.0f, 30.0f);
    const KUVPixelImage* const image = cushion.Image();
    const std::string rectangle = cushion.Rectangle("1");
    cushion.Draw(90.0f, 0.9f);
    cushion.Draw(90.0f, 30.0f, 0.01f);
    cushion.Draw(-90.0f, 30.0f);
    EXPECT_EQ(cushion.Image(), image) << "the root's view is unchanged";
    EXPECT_EQ(cushion.Rectangle("1"), rectangle);
}

TEST(VisCushionLayout, APictureAboveOneGibibyteIsRefusedLikeOneBelowAPixel)
{
    const Cushion cushion(THREE_LEAVES);
    cushion.Draw(90.0f, 30.0f);
    const KUVPixelImage* const image = cushion.Image();
    cushion.Draw(16385.0f, 16384.0f);
    cushion.Draw(90.0f, 30.0f, 1.0e6f);
    cushion.Draw(std::numeric_limits<float>::max(), std::numeric_limits<float>::max());
    EXPECT_EQ(cushion.Image(), image);
    EXPECT_EQ(cushion.Rectangle("R"), "0,0 90x30");
}

TEST(VisCushionLayout, PixelsThatNoLeafCoversAreOpaqueWhite)
{
    const Cushion cushion(TWO_LEVELS);
    cushion.Draw(90.0f, 60.0f);
    // B gets a child without cache: it is no leaf any more, but has nothing to shade.
    const trees::NodeRef late = trees::MakeNode("c");
    cushion.Node("B")->InsertChild(late.Get(), /*resetCaches=*/0);
    cushion.Draw(90.0f, 60.0f);
    EXPECT_EQ(cushion.Rectangle("B"), "0,40 90x20");
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 90; ++x)
            ASSERT_EQ(cushion.Pixel(x, y) == WHITE, y >= 40) << x << ", " << y;
    }
}

TEST(VisCushionLayout, DrawWithoutCurrentRootOrItsCacheDoesNothing)
{
    const Cushion cushion(THREE_LEAVES);
    int selections = 0;
    cushion.layout->GetCallbackManager()->Subscribe(
        VisCushionLayout::ON_SELECT_NODE(), cushion.layout.Get(),
        [&selections](const char*, KUVNotification*, KUVBaseUnknown*) { ++selections; });
    Cache* const cache = cushion.Root();
    cushion.root->SetCache(nullptr);
    cushion.Draw(90.0f, 30.0f);
    cushion.layout->CushionTreemap(STACKED, {0.0f, 0.0f}, {90.0f, 30.0f}, 1.0f);
    EXPECT_EQ(CountViews(cushion), 0);
    cushion.root->SetCache(cache);
    cushion.layout->SetTreeRoot(nullptr);
    cushion.Draw(90.0f, 30.0f);
    cushion.layout->CushionTreemap(STACKED, {0.0f, 0.0f}, {90.0f, 30.0f}, 1.0f);
    EXPECT_EQ(CountViews(cushion), 0);
    EXPECT_EQ(selections, 0);
}

TEST(VisCushionLayout, EveryDrawSelectsTheSelectionAgainEvenWhenNothingIsDrawn)
{
    const Cushion cushion(THREE_LEAVES);
    int selections = 0;
    cushion.layout->GetCallbackManager()->Subscribe(
        VisCushionLayout::ON_SELECT_NODE(), cushion.layout.Get(),
        [&selections](const char*, KUVNotification*, KUVBaseUnknown*) { ++selections; });
    cushion.Draw(90.0f, 30.0f);
    EXPECT_EQ(selections, 1);
    cushion.Draw(0.0f, 0.0f);
    EXPECT_EQ(selections, 2);
    EXPECT_EQ(cushion.Of("0")->GetView()->GetSelectionStatus(), 1);
}

TEST(VisCushionLayout, DrawRemembersNeitherFontNorScale)
{
    const trees::NodeRef root = trees::NodeRef::Adopt(support::MakeTree(THREE_LEAVES));
    const auto layout = VisReference<OpenLayout>::Adopt(new OpenLayout);
    layout->Init(root.Get(), nullptr);
    layout->Draw({0.0f, 0.0f}, {90.0f, 30.0f}, nullptr, 2.0f);
    EXPECT_EQ(layout->GetDrawScale(), 1.0f);
    layout->SetTreeRoot(nullptr);
}

TEST(VisCushionLayout, AListenerMayReleaseTheLayoutDuringADraw)
{
    Cushion cushion(THREE_LEAVES);
    VisCushionLayout* const layout = cushion.layout.Detach();
    layout->GetCallbackManager()->Subscribe(
        VisCushionLayout::ON_SELECT_NODE(), layout,
        [layout](const char*, KUVNotification*, KUVBaseUnknown*) { layout->Release(); });
    layout->Draw({0.0f, 0.0f}, {90.0f, 30.0f}, nullptr, 1.0f);
    EXPECT_EQ(cushion.bag->GetReferenceCount(), 1U);
    EXPECT_EQ(CountViews(cushion), 0);
}

// ---- odd numbers, size, memory

TEST(VisCushionLayout, OddNumbersAreHarmless)
{
    const float odd[] = {0.0f,
                         -0.0f,
                         -1.0f,
                         std::numeric_limits<float>::quiet_NaN(),
                         std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity(),
                         std::numeric_limits<float>::max(),
                         std::numeric_limits<float>::lowest(),
                         std::numeric_limits<float>::denorm_min(),
                         16777216.0f,
                         2147483648.0f};
    const Cushion cushion(TWO_LEVELS);
    for (const float number : odd) {
        for (int place = 0; place < 5; ++place) {
            float numbers[] = {1.0f, 2.0f, 300.0f, 200.0f, 0.1f};
            numbers[place] = number;
            cushion.layout->Draw({numbers[0], numbers[1]}, {numbers[2], numbers[3]}, nullptr,
                                 numbers[4]);
        }
    }
    cushion.Of("a")->ResetCache();
    cushion.Draw(90.0f, 60.0f);
    const Cushion fresh(TWO_LEVELS);
    fresh.Draw(90.0f, 60.0f);
    EXPECT_EQ(cushions::ChecksumOf(*cushion.Image()), cushions::ChecksumOf(*fresh.Image()))
        << "nothing odd is left behind";
}

TEST(VisCushionLayout, ManyLevelsAreDrawnWithoutRecursion)
{
    VisDataTree* last = nullptr;
    const Cushion cushion(trees::MakeChain(trees::MANY_LEVELS, &last));
    cushion.Draw(50.0f, 40.0f);
    EXPECT_EQ(static_cast<Cache*>(last->GetCache())->GetSize().x, 50.0f);
    EXPECT_EQ(static_cast<Cache*>(last->GetCache())->GetSubtreeValue(), 1);
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), 1);
    cushion.layout->SetTreeRoot(nullptr);
}

TEST(VisCushionLayout, ManyChildrenOfOneNodeAreDrawn)
{
    constexpr int CHILDREN = static_cast<int>(trees::MANY_LEVELS / 10);
    const Cushion cushion(trees::NodeRef::Adopt(support::MakeStar(CHILDREN)));
    cushion.Draw(50.0f, 40.0f);
    EXPECT_EQ(cushion.Root()->GetSubtreeValue(), CHILDREN);
    EXPECT_EQ(CountViews(cushion), CHILDREN + 1);
    cushion.layout->SetTreeRoot(nullptr);
}

TEST(VisCushionLayout, EveryFailingAllocationLeavesALayoutThatCanDrawAgain)
{
    const std::size_t failures = support::ForEveryFailingAllocation([] {
        const trees::NodeRef root = trees::MakeNode("a node with a long label");
        for (int i = 0; i < 3; ++i) {
            VisDataTree* const child = trees::Append(root.Get(), "another long label of a node");
            for (int k = 0; k < 3; ++k)
                trees::Append(child, "leaf");
        }
        const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
        const LayoutRef layout =
            LayoutRef::Adopt(VisCushionLayout::CreateLayout(nullptr, root.Get(), bag.Get()));
        if (!layout)
            return;
        // Twice at the end: a drawing without memory for the picture changes nothing.
        for (const float width : {30.0f, 20.0f, 30.0f, 30.0f}) {
            try {
                layout->Draw({0.0f, 0.0f}, {width, 20.0f}, nullptr, 1.0f);
            } catch (const std::bad_alloc&) {
                layout->Draw({0.0f, 0.0f}, {width, 20.0f}, nullptr, 1.0f);
            }
        }
        const std::unique_ptr<VisDataTree::VisDataTreeCache> clone(root->GetCache()->Clone());
        const support::UncountedAllocations checks;
        VisDataTree* const leaf = root->GetLastLeaf();
        EXPECT_EQ(static_cast<Cache*>(root->GetCache())->GetSubtreeValue(), 9);
        EXPECT_EQ(static_cast<Cache*>(leaf->GetCache())->GetSubtreeValue(), 1);
        EXPECT_NEAR(static_cast<Cache*>(leaf->GetCache())->GetSize().x, 10.0f, 1e-4f);
    });
    EXPECT_GT(failures, 50U);
}
