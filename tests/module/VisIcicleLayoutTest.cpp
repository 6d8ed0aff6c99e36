#include "VisIcicleLayout.h"

#include "IcicleFixture.h"
#include "ViewFixture.h"
#include "VirtualSlots.h"
#include "core/PixelMemory.h"

#include "private/IcicleAccess.h"

#include "support/Allocations.h"
#include "support/LiveInstances.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

using icicles::BagRef;
using icicles::Cache;
using icicles::CacheOf;
using icicles::LayoutRef;
using icicles::NO_LIMIT;
using icicles::NOT_COMPUTED;
using icicles::OpenLayout;
using icicles::Plot;
using icicles::SHALLOW_AND_DEEP;
using viewreading::Bytes;
using viewreading::ColourOf;
using viewreading::Find;

namespace {

const support::WatchedClass watchCaches("VisIcicleLayoutCache", [] {
    const Cache sample(nullptr);
    return support::VirtualTableOf(sample);
});

const KUV2DBagRep* BagOf(const Plot& plot, const char* label)
{
    return plot.Of(label)->GetView()->GetBagRep();
}

std::string ShownLabel(const VisDataTree* node)
{
    const auto* const rep =
        Find<KUV2DAnnotationTextRep>(CacheOf(node)->GetView()->GetBagRep(), "label");
    return rep ? rep->GetText().GetUtf8() : "none";
}

}  // namespace

// ---- constants and identity

TEST(VisIcicleLayout, HasThePublishedConstants)
{
    EXPECT_EQ(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MAJOR, 96);
    EXPECT_EQ(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MAJOR_LEAF, 64);
    EXPECT_EQ(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MAJOR_NO_LABEL, 32);
    EXPECT_EQ(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MINOR, 24);
    EXPECT_EQ(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MINOR_W_ICON, 24);
    EXPECT_EQ(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MINOR_W_ICON_LABEL, 46);
    EXPECT_EQ(VisIcicleLayout::SPACE_BETWEEN_NODES, 2);
    EXPECT_EQ(VisIcicleLayout::LABEL_OFFSET, 14);
    EXPECT_EQ(sizeof(VisIcicleLayout::LABEL_OFFSET), 2U);
}

TEST(VisIcicleLayout, AnswersForItsClassByName)
{
    const Plot plot(SHALLOW_AND_DEEP);
    const auto layout = VisReference<VisIcicleLayout>::Adopt(
        VisIcicleLayout::CreateLayout(nullptr, plot.Node("B"), nullptr));
    EXPECT_STREQ(VisIcicleLayout::ClassName(), "VisIcicleLayout");
    EXPECT_STREQ(layout->IsA(), "VisIcicleLayout");
    EXPECT_EQ(layout->IsAKindOf("VisTreeSpaceFillingLayout"), 1);
    EXPECT_EQ(layout->IsAKindOf("KUVCommand"), 1);
    EXPECT_EQ(layout->IsAKindOf("VisTreeMapLayout"), 0);
    EXPECT_EQ(VisIcicleLayout::CreateItself(), nullptr);
    EXPECT_EQ(VisIcicleLayout::ClassId(), KUVClassIdOf("VisIcicleLayout"));
    EXPECT_EQ(layout->GetMetaObject(), VisIcicleLayout::MetaObject());
    EXPECT_EQ(VisIcicleLayout::MetaObject()->GetBase(), VisTreeSpaceFillingLayout::MetaObject());
    EXPECT_STREQ(VisIcicleLayout::MetaObject()->GetFramework(), "VisualizationCommands");
    EXPECT_EQ(VisIcicleLayout::MetaObject()->GetInstanceSize(), sizeof(VisIcicleLayout));
    plot.Node("B")->SetCache(nullptr);
}

TEST(VisIcicleLayout, ItsEventIsARegisteredNotificationClass)
{
    const char* const name = "VisIcicleLayoutON_SET_NLAST_NODESEvt";
    EXPECT_STREQ(VisIcicleLayout::ON_SET_NLAST_NODES(), name);
    const KUVMetaClass* const meta = KUVMetaClass::Find(name);
    ASSERT_NE(meta, nullptr);
    EXPECT_EQ(meta->GetBase(), KUVNotification::MetaObject());
    EXPECT_STREQ(meta->GetFramework(), "VisualizationCommands");
    const VisIcicleLayoutON_SET_NLAST_NODESEvt event(5, 4, 0x700000);
    EXPECT_STREQ(event.IsA(), name);
    EXPECT_EQ(event.IsAKindOf("KUVNotification"), 1);
    EXPECT_EQ(event.GetOldValue(), 5U);
    EXPECT_EQ(event.GetNewValue(), 4U);
    EXPECT_EQ(event.GetKeyCode(), 0x700000U);
}

TEST(VisIcicleLayout, AddsNoVirtualOperationsToThoseOfTheBase)
{
    EXPECT_EQ(SlotOf(&VisIcicleLayout::Draw), SlotOf(&VisTreeSpaceFillingLayout::Draw));
    EXPECT_EQ(SlotOf(&VisIcicleLayout::SetCurrentRoot),
              SlotOf(&VisTreeSpaceFillingLayout::SetCurrentRoot));
    // The last slot of the base.
    EXPECT_EQ(SlotOf(&VisIcicleLayout::ApplyPageUpPageDown),
              SlotOf(&OpenLayout::GetNodeViaNavigation) + 1);
    EXPECT_EQ(SlotOf(&VisIcicleLayout::IciclePlot), -1);
    EXPECT_EQ(SlotOf(&VisIcicleLayout::AlignIciclePlotLeaves), -1);
    EXPECT_EQ(SlotOf(&VisIcicleLayout::SetNLastNodes), -1);
    EXPECT_EQ(SlotOf(&Cache::Clone), SlotOf(&VisDataTree::VisDataTreeCache::Clone));
    EXPECT_EQ(SlotOf(&Cache::GetNextNodeIcicleRightDirection), -1);
    EXPECT_EQ(SlotOf(&Cache::ComputeMinDepthWithVisibility), -1);
}

// ---- CreateLayout, GenerateCache

TEST(VisIcicleLayout, WithoutRootThereIsNoLayout)
{
    const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
    EXPECT_EQ(VisIcicleLayout::CreateLayout(nullptr, nullptr, bag.Get()), nullptr);
    EXPECT_EQ(bag->GetReferenceCount(), 1U);
}

TEST(VisIcicleLayout, ANewLayoutHoldsTreeAndBagAndHasItsDefaults)
{
    const auto parent = VisReference<KUVCommand>::Adopt(new KUVCommand(nullptr, "parent"));
    const trees::NodeRef root = trees::NodeRef::Adopt(support::MakeTree(SHALLOW_AND_DEEP));
    const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
    const auto layout = VisReference<VisIcicleLayout>::Adopt(
        VisIcicleLayout::CreateLayout(parent.Get(), root.Get(), bag.Get()));
    EXPECT_EQ(layout->GetReferenceCount(), 1U);
    EXPECT_EQ(layout->GetParentCommand(), parent.Get());
    EXPECT_EQ(layout->GetTreeRoot(), root.Get());
    EXPECT_EQ(layout->GetCurrentRoot(), root.Get());
    EXPECT_EQ(layout->GetCache(), root->GetCache());
    EXPECT_EQ(root->GetReferenceCount(), 2U);
    EXPECT_EQ(bag->GetReferenceCount(), 2U);
    EXPECT_EQ(layout->GetNLastNodes(), NO_LIMIT);
    EXPECT_EQ(layout->GetExtendWithKeys(), 0);
    EXPECT_EQ(layout->GetEnableZoom(), 1);
    for (const VisDataTree* const child : root->GetChildren())
        EXPECT_NE(dynamic_cast<Cache*>(child->GetCache()), nullptr);
}

TEST(VisIcicleLayout, DiscardedNodesAreSearchedAndTheLeafSelectionIsNotTracked)
{
    const Plot plot(SHALLOW_AND_DEEP);
    EXPECT_EQ(plot.layout->GetDiscardedVisibility(), 1);
    EXPECT_EQ(plot.layout->GetCurrentLeafSelection(), plot.Node("a1"));
    plot.Select("a2");
    EXPECT_EQ(plot.layout->GetCurrentLeafSelection(), nullptr) << "not replaced by the new leaf";
}

TEST(VisIcicleLayout, AGeneratedCacheBelongsToNoNode)
{
    const Plot plot(SHALLOW_AND_DEEP);
    const std::unique_ptr<VisTreeSpaceFillingLayoutCache> cache(plot.layout->GenerateCache());
    auto* const icicleCache = dynamic_cast<Cache*>(cache.get());
    ASSERT_NE(icicleCache, nullptr);
    EXPECT_EQ(icicleCache->GetNode(), nullptr);
    EXPECT_EQ(icicleCache->GetIcicleColSpan(), 1U);
}

TEST(VisIcicleLayout, WithoutATreeThereIsNoCacheAndNothingToPlotOrAlign)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->SetTreeRoot(nullptr);
    EXPECT_EQ(plot.layout->GetCache(), nullptr);
    EXPECT_EQ(plot.DrawLast(NO_LIMIT), 0U);
    EXPECT_EQ(plot.layout->AlignIciclePlotLeaves(nullptr), 0);
    plot.Draw();
    plot.layout->ResetIciclePlotAlignment();
    plot.layout->SetCurrentRoot(nullptr, 1);
    EXPECT_EQ(plot.bag->GetChildren()->Count(), 0);
}

// ---- alignment

TEST(VisIcicleLayout, AllLeavesOfAnAlignedTreeEndInTheSameColumn)
{
    const Plot plot(SHALLOW_AND_DEEP);
    EXPECT_EQ(plot.layout->AlignIciclePlotLeaves(nullptr), 3);
    for (const char* const leaf : {"a1", "a2", "B", "c"})
        EXPECT_EQ(plot.Of(leaf)->ComputeIcicleCursor() + plot.Of(leaf)->GetIcicleColSpan(), 3U)
            << leaf;
    EXPECT_EQ(plot.Root()->GetIcicleColSpan(), 1U);
    EXPECT_EQ(plot.Of("A")->GetIcicleColSpan(), 1U);
    EXPECT_EQ(plot.Of("B")->GetIcicleColSpan(), 2U);
}

TEST(VisIcicleLayout, AnInnerNodeWithAShallowSubtreeTakesSeveralColumns)
{
    const Plot plot({"R", {{"A", {{"B", {{"C", {{"c"}}}}}}}, {"S", {{"s"}}}}});
    EXPECT_EQ(plot.layout->AlignIciclePlotLeaves(nullptr), 5);
    plot.ShowLabels();
    plot.Draw();
    EXPECT_EQ(plot.Of("S")->GetIcicleColSpan(), 3U);
    EXPECT_EQ(plot.Drawn("S"), "292x24") << "(96 + 2) x 3 - 2";
}

TEST(VisIcicleLayout, TheStartOfAnAlignmentTakesWhatItIsShallowerThanItsParent)
{
    const Plot plot({"R", {{"A", {{"B", {{"C", {{"c"}}}}}}}, {"S", {{"s"}}}}});
    EXPECT_EQ(plot.layout->AlignIciclePlotLeaves(plot.Node("S")), 4) << "three columns and s";
    EXPECT_EQ(plot.Of("S")->GetIcicleColSpan(), 3U);
    EXPECT_EQ(plot.layout->AlignIciclePlotLeaves(plot.Node("s")), 1);
    EXPECT_EQ(plot.Of("A")->GetIcicleColSpan(), 1U) << "outside";
}

TEST(VisIcicleLayout, AlignmentForgetsWhatWasComputedBelow)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.DrawLast(3);
    EXPECT_EQ(plot.Of("a1")->GetIcicleCursor(), 2U);
    plot.layout->AlignIciclePlotLeaves(plot.Node("A"));
    for (const char* const label : {"A", "a1", "a2"}) {
        EXPECT_EQ(plot.Of(label)->GetIcicleCursor(), NOT_COMPUTED) << label;
        EXPECT_EQ(Plot::Text(plot.Of(label)->GetIcicleSize()), "-1x-1") << label;
    }
    EXPECT_EQ(plot.Of("B")->GetIcicleCursor(), 1U) << "elsewhere";
    EXPECT_EQ(plot.Drawn("a1"), "32x24") << "what was drawn stays";
}

TEST(VisIcicleLayout, AlignmentGoesThroughNodesWithoutCache)
{
    const Plot plot(SHALLOW_AND_DEEP);
    Cache* const a = plot.Of("A");
    plot.Node("A")->SetCache(nullptr);
    EXPECT_EQ(plot.layout->AlignIciclePlotLeaves(nullptr), 3);
    EXPECT_EQ(plot.Of("B")->GetIcicleColSpan(), 2U);
    EXPECT_EQ(plot.Of("a1")->GetIcicleColSpan(), 1U);
    plot.Node("A")->SetCache(a);
}

TEST(VisIcicleLayout, StaleDepthsStillGiveOneColumnAtLeast)
{
    const Plot plot({"R", {{"A"}}});
    plot.root->ComputeMaxDepth();
    plot.Node("A")->InsertChild(trees::MakeNode("late").Get(), /*resetCaches=*/1);
    plot.root->ComputeMaxDepth();
    plot.Node("late")->InsertChild(trees::MakeNode("later").Get(), /*resetCaches=*/0);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(plot.Of("A")->GetIcicleColSpan(), 1U);
}

TEST(VisIcicleLayout, ResettingTheAlignmentResetsTheTreeRootAlone)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.Draw();
    plot.layout->ResetIciclePlotAlignment();
    EXPECT_EQ(plot.Root()->GetIcicleCursor(), NOT_COMPUTED);
    EXPECT_EQ(Plot::Text(plot.Root()->GetIcicleSize()), "-1x-1");
    EXPECT_EQ(plot.Of("B")->GetIcicleColSpan(), 2U);
    EXPECT_EQ(plot.Of("B")->GetIcicleCursor(), 1U);
}

// ---- plot

TEST(VisIcicleLayout, ChildrenAreStackedFromTheLastAtTheBottomToTheFirstAtTheTop)
{
    //       0     34    68   100
    //  102  +-----+-----+-----+
    //       |     |     | a1  |  78
    //       |     |  A  +-----+
    //       |     |     | a2  |  52
    //       |  R  +-----+-----+
    //       |     |     B     |  26
    //       |     +-----+-----+
    //       |     |  C  |  c  |
    //    0  +-----+-----+-----+
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(plot.DrawLast(NO_LIMIT), 3U);
    EXPECT_EQ(plot.Rectangle("R"), "0,0 100x102");
    EXPECT_EQ(plot.Rectangle("A"), "34,52 66x50");
    EXPECT_EQ(plot.Rectangle("a1"), "68,78 32x24");
    EXPECT_EQ(plot.Rectangle("a2"), "68,52 32x24");
    EXPECT_EQ(plot.Rectangle("B"), "34,26 66x24");
    EXPECT_EQ(plot.Rectangle("C"), "34,0 66x24");
    EXPECT_EQ(plot.Rectangle("c"), "68,0 32x24");
    EXPECT_EQ(plot.Drawn("R"), "32x102") << "the node's own rectangle";
    EXPECT_EQ(plot.Drawn("B"), "66x24");
}

TEST(VisIcicleLayout, AnAreaLargerThanThePlotStretchesItAndASmallerOneDoesNotShrinkIt)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.Draw(200.0f, 204.0f);
    EXPECT_EQ(plot.Rectangle("R"), "0,0 200x204");
    EXPECT_EQ(plot.Rectangle("a1"), "136,156 64x48");
    EXPECT_EQ(plot.Drawn("B"), "132x48");
    plot.Draw(50.0f, 204.0f);
    EXPECT_EQ(plot.Rectangle("R"), "0,0 100x204") << "each axis for itself";
    plot.Draw(50.0f, 50.0f);
    EXPECT_EQ(plot.Rectangle("R"), "0,0 100x102");
}

TEST(VisIcicleLayout, ViewsAreScaledAboutTheOrigin)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.layout->Draw({10.0f, 20.0f}, {1.0f, 1.0f}, plot.font.Get(), 2.0f);
    EXPECT_EQ(plot.Rectangle("a1"), "78,98 32x24") << "layout units";
    EXPECT_EQ(plot.Drawn("a1"), "64x48");
    EXPECT_EQ(Plot::Text(plot.Of("a1")->GetView()->GetBuiltPosition()), "146x176")
        << "10 + 68 x 2, 20 + 78 x 2";
    EXPECT_EQ(Plot::Text(plot.Of("a1")->GetView()->GetBuiltSize()), "64x48");
}

TEST(VisIcicleLayout, WithOneLastColumnOnlyNodesThatEndInItAreDrawn)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    EXPECT_EQ(plot.DrawLast(1), 3U);
    for (const char* const label : {"a1", "a2", "B", "c"}) {
        EXPECT_EQ(plot.Of(label)->IsDiscarded(), 0) << label;
        EXPECT_EQ(plot.Drawn(label), "32x24") << label;
        EXPECT_EQ(plot.Of(label)->GetPos().x, 0.0f) << label;
    }
    for (const char* const label : {"R", "A", "C"}) {
        EXPECT_EQ(plot.Of(label)->IsDiscarded(), 1) << label;
        EXPECT_EQ(plot.Of(label)->IsExpanded(), 1) << label;
        EXPECT_EQ(plot.Drawn(label), "0x0") << label;
        EXPECT_EQ(plot.Roles(label), "") << label;
    }
}

TEST(VisIcicleLayout, TheDiscardedNodesAreSearchedThroughForAHit)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.DrawLast(1);
    EXPECT_EQ(plot.layout->FindNodeAtPosition(5.0f, 80.0f), plot.Node("a1"));
    EXPECT_EQ(plot.layout->FindNodeAtPosition(5.0f, 30.0f), plot.Node("B"));
    EXPECT_EQ(plot.layout->FindNodeAtPosition(5.0f, 25.0f), nullptr) << "R is in the gap, hidden";
    plot.DrawLast(NO_LIMIT);
    EXPECT_EQ(plot.layout->FindNodeAtPosition(5.0f, 80.0f), plot.root.Get());
}

TEST(VisIcicleLayout, RelativeToTheMinimumDepthTheFirstDrawnColumnStandsAtTheOrigin)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.DrawLast(1, /*relative=*/1);
    EXPECT_EQ(plot.Drawn("B"), "66x24") << "whole, from column 1 on";
    EXPECT_EQ(plot.Of("B")->GetPos().x, 0.0f);
    EXPECT_EQ(plot.Of("a1")->GetPos().x, 34.0f) << "its column is kept";
    EXPECT_EQ(plot.Of("A")->GetPos().x, 34.0f) << "hidden: where its first child stands";
}

TEST(VisIcicleLayout, AVisibleNodeOfAnUnalignedTreeLeftOfTheLastColumnsHasNoWidth)
{
    // Without alignment B ends in column 1, left of the only column that is shown.
    const Plot plot(SHALLOW_AND_DEEP);
    plot.DrawLast(1);
    EXPECT_EQ(plot.Of("B")->IsDiscarded(), 0);
    EXPECT_EQ(plot.Drawn("B"), "0x24");
    EXPECT_EQ(plot.Of("B")->GetPos().x, 0.0f);
}

TEST(VisIcicleLayout, PlottingOverwritesCursorsWithThePlotsDepths)
{
    const Plot plot({"R", {{"A", {{"B", {{"C", {{"c"}}}}}}}, {"S", {{"s", {{"t"}}}}}}});
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.Draw();
    EXPECT_EQ(plot.Of("s")->GetIcicleCursor(), 3U);
    plot.layout->SetRedrawOnSetCurrentRoot(1);
    plot.layout->VisTreeSpaceFillingLayout::SetCurrentRoot(plot.Node("s"), 1);
    EXPECT_EQ(plot.Of("s")->GetIcicleCursor(), 2U) << "the number of its ancestors";
    EXPECT_EQ(plot.Of("t")->GetIcicleCursor(), 3U);
}

TEST(VisIcicleLayout, DrawReplaysTheLimitAndTheLabelsOfTheLastMeasurement)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.layout->SetNLastNodes(2);
    plot.Draw();
    EXPECT_EQ(plot.Of("R")->IsDiscarded(), 0) << "the layout's own number is not asked";
    plot.DrawLast(1, /*relative=*/0, /*inlineLabels=*/1);
    plot.Draw();
    EXPECT_EQ(plot.Of("A")->IsDiscarded(), 1);
    EXPECT_EQ(plot.Root()->GetIcicleNLastNodes(), 1U);
}

TEST(VisIcicleLayout, DrawSelectsTheSelectionAgainAndPlotDoesNot)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.Select("B");
    icicles::Listener listener(*plot.layout.Get());
    plot.Draw();
    EXPECT_EQ(listener.Take(), "select B > B; ");
    EXPECT_EQ(plot.Of("B")->GetView()->GetSelectionStatus(), 1);
    plot.DrawLast(NO_LIMIT);
    EXPECT_EQ(listener.Take(), "");
    EXPECT_EQ(plot.Of("B")->GetView()->GetSelectionStatus(), 1) << "the view keeps it";
}

TEST(VisIcicleLayout, ViewsAreWhiteAndShowPlates)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    plot.Draw();
    EXPECT_EQ(plot.Roles("B"), "fill label");
    EXPECT_EQ(plot.Of("B")->GetView()->GetHighlightMode(),
              VisTreeSpaceFillingView::HighlightMode_Texture);
    plot.layout->SetCurrentHighlightedNode(plot.Node("B"));
    EXPECT_EQ(plot.Roles("B"), "fill hover label");
    plot.Select("B");
    EXPECT_EQ(plot.Roles("B"), "fill selected label");
}

TEST(VisIcicleLayout, LabelsShowWhereTheFlagSaysSo)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.Of("A")->SetShowLabel(1);
    plot.Draw(1000.0f, 1000.0f);
    EXPECT_EQ(ShownLabel(plot.Node("A")), "A");
    EXPECT_EQ(ShownLabel(plot.Node("B")), "");
}

TEST(VisIcicleLayout, BackgroundsAreOpaqueWhiteAndLabelsStandInTheMiddle)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    plot.Node("B")->SetIsLeafObject(1);
    plot.Draw();
    const auto* const fill = Find<KUV2DPolygonRep>(BagOf(plot, "A"), "fill");
    const auto* const label = Find<KUV2DAnnotationTextRep>(BagOf(plot, "A"), "label");
    const auto* const leafLabel = Find<KUV2DAnnotationTextRep>(BagOf(plot, "B"), "label");
    ASSERT_TRUE(fill && label && leafLabel);
    EXPECT_EQ(ColourOf(*fill), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(static_cast<int>(label->GetAnchor()), 4);
    EXPECT_EQ(ColourOf(*label), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(ColourOf(*leafLabel), (Bytes{119, 121, 124, 255})) << "a leaf object's";
}

TEST(VisIcicleLayout, LabelsAreThoseOfTheNodesWithoutValuesAndFitTheirRectangles)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    plot.Of("A")->SetSizeValue(5);
    plot.Of("A")->SetColorValue(7);
    plot.Of("A")->SetResizeWithValue(1);
    plot.Of("A")->SetColorWithValue(1);
    VisDataTree* const wordy = plot.Node("B");
    wordy->SetLabel("a label that is far too long for two columns");
    plot.Draw();
    EXPECT_EQ(ShownLabel(plot.Node("A")), "A");
    EXPECT_EQ(plot.Of("A")->GetView()->IsCropped(), 0);
    EXPECT_EQ(CacheOf(wordy)->GetView()->IsCropped(), 1);
    EXPECT_LT(ShownLabel(wordy).size(), 30U);
}

TEST(VisIcicleLayout, IconsStandAboveTheLabelExceptNearTheLeavesAndWhereLabelsAreInline)
{
    struct Icons {
        Icons() { core::SetImageBackend(std::make_shared<viewtest::IconBackend>(16, 16)); }
        ~Icons() { core::SetImageBackend(nullptr); }
    };
    const Icons icons;
    const Plot plot({"R", {{"A", {{"a"}}}, {"B"}}});
    plot.ShowLabels();
    for (const char* const label : {"R", "A", "a"})
        plot.Node(label)->SetIconName("I_VisPart.png");
    plot.layout->AlignIciclePlotLeaves(nullptr);

    const auto fromTheLeft = [&plot](const char* label) {
        const auto* const icon = Find<KUV2DImagePixelRep>(BagOf(plot, label), "icon");
        return icon ? icon->GetLowerLeft().x - plot.Of(label)->GetPos().x : -1.0f;
    };
    plot.DrawLast(NO_LIMIT);
    EXPECT_EQ(fromTheLeft("R"), 96.0f / 2.0f - 8.0f) << "three levels";
    EXPECT_EQ(fromTheLeft("A"), 2.0f);
    EXPECT_EQ(fromTheLeft("a"), 2.0f);
    EXPECT_EQ(fromTheLeft("B"), -1.0f) << "without an icon";
    plot.DrawLast(NO_LIMIT, /*relative=*/0, /*inlineLabels=*/1);
    EXPECT_EQ(fromTheLeft("R"), 2.0f);
}

TEST(VisIcicleLayout, WhatNoLongerShowsIsCleanedAndComesBack)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.DrawLast(NO_LIMIT);
    EXPECT_EQ(plot.Roles("A"), "fill label");
    plot.DrawLast(1);
    EXPECT_EQ(plot.Roles("A"), "");
    EXPECT_EQ(plot.Roles("B"), "fill label");
    plot.DrawLast(NO_LIMIT);
    EXPECT_EQ(plot.Roles("A"), "fill label");
}

TEST(VisIcicleLayout, EveryViewHangsBelowTheBagOnceWithLastChildrenFirst)
{
    const Plot plot(SHALLOW_AND_DEEP);
    for (int i = 0; i < 2; ++i) {
        plot.Draw();
        const std::vector<const KUVRep*> children = viewreading::ChildrenOf(plot.bag.Get());
        const char* const order[] = {"R", "C", "c", "B", "A", "a2", "a1"};
        ASSERT_EQ(children.size(), std::size(order));
        for (std::size_t k = 0; k < children.size(); ++k)
            EXPECT_EQ(children[k], BagOf(plot, order[k])) << order[k];
    }
}

// ---- current root

TEST(VisIcicleLayout, AStretchedNodeThatBecomesTheRootIsAligned)
{
    const Plot plot({"R", {{"A", {{"B", {{"C", {{"c"}}}}}}}, {"S", {{"s", {{"t"}}}}}}});
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.Draw();
    ASSERT_EQ(plot.Of("S")->GetIcicleColSpan(), 2U);
    icicles::Listener listener(*plot.layout.Get());
    plot.layout->SetCurrentRoot(plot.Node("S"), 1);
    EXPECT_EQ(plot.Of("S")->GetIcicleColSpan(), 2U) << "what its parent's depth asks for";
    EXPECT_EQ(plot.layout->GetCurrentRoot(), plot.Node("S"));
    EXPECT_EQ(plot.layout->GetCache(), plot.Of("S"));
    EXPECT_EQ(listener.Take(), "select c > S; select S > S; root R > S; ");
    EXPECT_EQ(plot.Of("S")->GetIcicleCursor(), 1U) << "drawn at once";
    EXPECT_EQ(plot.Of("A")->GetView(), nullptr);
}

TEST(VisIcicleLayout, ANodeInOneColumnIsNotAlignedWhenItBecomesTheRoot)
{
    const Plot plot(SHALLOW_AND_DEEP);
    plot.layout->SetRedrawOnSetCurrentRoot(0);
    plot.Of("a1")->ComputeIcicleCursor();
    plot.layout->SetCurrentRoot(plot.Node("A"), 1);
    EXPECT_EQ(plot.Of("a1")->GetIcicleCursor(), 2U);
    plot.layout->SetCurrentRoot(nullptr, 1);
    EXPECT_EQ(plot.layout->GetCurrentRoot(), plot.root.Get());
}

TEST(VisIcicleLayout, ZoomingInAndOutGivesTheSamePlot)
{
    const Plot plot({"R", {{"A", {{"B", {{"C", {{"c"}}}}}}}, {"S", {{"s", {{"t"}}}}}}});
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.Draw(500.0f, 400.0f);
    const std::string before = plot.Rectangle("t") + plot.Rectangle("s") + plot.Rectangle("c");
    plot.layout->SetCurrentRoot(plot.Node("A"), 1);
    plot.layout->SetCurrentRoot(plot.Node("B"), 1);
    EXPECT_EQ(plot.layout->Unzoom(), 1);
    EXPECT_EQ(plot.layout->Unzoom(), 1);
    EXPECT_EQ(plot.Rectangle("t") + plot.Rectangle("s") + plot.Rectangle("c"), before);
}

// ---- odd numbers, deep trees, memory

TEST(VisIcicleLayout, OddNumbersAreSurvived)
{
    const float infinity = std::numeric_limits<float>::infinity();
    const float largest = std::numeric_limits<float>::max();
    const float odd[] = {
        std::nanf(""), infinity,    -infinity,    largest,
        -largest,      0.0f,        -0.0f,        std::numeric_limits<float>::denorm_min(),
        -1.0f,         16777216.0f, 2147483648.0f};
    const Plot plot(SHALLOW_AND_DEEP);
    plot.ShowLabels();
    plot.GiveIcons("icon");
    plot.layout->AlignIciclePlotLeaves(nullptr);
    for (const float a : odd) {
        for (const float b : odd) {
            plot.layout->Draw({a, b}, {b, a}, plot.font.Get(), 1.0f);
            plot.layout->IciclePlot({0.0f, a}, {100.0f, 100.0f}, plot.font.Get(), 2, b, 1, 1);
            plot.layout->FindNodeAtPosition(a, b);
        }
    }
    plot.Draw(std::nanf(""), 100.0f);
    EXPECT_EQ(plot.Of("R")->GetSize().x, 194.0f) << "two columns: not-a-number stretches nothing";
}

TEST(VisIcicleLayout, OddSpansAndCursorsAreSurvived)
{
    const Plot plot(SHALLOW_AND_DEEP);
    for (const unsigned int span : {0U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        for (const unsigned int columns : {0U, 1U, 3U, 0x7FFFFFFFU, 0xFFFFFFFEU, NO_LIMIT}) {
            VisIcicleAccess::SetColSpan(*plot.Of("A"), span);
            VisIcicleAccess::SetCursor(*plot.Of("a1"), span);
            VisIcicleAccess::SetIcicleSize(*plot.Root(), {-1.0f, -1.0f});
            VisIcicleAccess::SetIcicleSize(*plot.Of("A"), {-1.0f, -1.0f});
            plot.DrawLast(columns, 0, 0);
            plot.DrawLast(columns, 1, 1);
            plot.Key(icicles::LEFT);
            plot.Key(icicles::DOWN);
        }
    }
    EXPECT_EQ(plot.layout->GetCurrentRoot(), plot.root.Get());
}

TEST(VisIcicleLayout, DrawingAndZoomingManyLevelsNeitherNestsNorGrowsQuadratically)
{
    VisDataTree* last = nullptr;
    const trees::NodeRef root = trees::MakeChain(trees::MANY_LEVELS, &last);
    const auto layout = VisReference<VisIcicleLayout>::Adopt(
        VisIcicleLayout::CreateLayout(nullptr, root.Get(), nullptr));
    layout->AlignIciclePlotLeaves(nullptr);
    // Views are built for the last columns alone; the other nodes get empty ones.
    const unsigned int columns =
        layout->IciclePlot({0.0f, 0.0f}, {100.0f, 100.0f}, nullptr, 3, 1.0f, 0, 0);
    EXPECT_EQ(columns, trees::MANY_LEVELS);
    EXPECT_EQ(CacheOf(last)->IsDiscarded(), 0);
    EXPECT_EQ(CacheOf(root.Get())->IsDiscarded(), 1);
    VisDataTree* const near = last->GetParent()->GetParent();
    layout->SetCurrentRoot(near, 1);
    EXPECT_EQ(CacheOf(root.Get())->GetView(), nullptr);
    EXPECT_NE(CacheOf(last)->GetView(), nullptr);
    EXPECT_EQ(layout->Unzoom(), 1);
    layout->SetTreeRoot(nullptr);
}

TEST(VisIcicleLayout, APlotManyTimesLargerThanAnyWindowMakesImagesForWhatIsSelectedAlone)
{
    // A comb: the rectangles of its back are of 300 sizes, up to 7800 units high.
    const trees::NodeRef root = trees::MakeNode("back");
    VisDataTree* node = root.Get();
    for (int i = 0; i < 300; ++i) {
        trees::Append(node, "tooth");
        node = trees::Append(node, "back");
    }
    const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
    const auto layout = VisReference<VisIcicleLayout>::Adopt(
        VisIcicleLayout::CreateLayout(nullptr, root.Get(), bag.Get()));
    const std::size_t before = core::SumImageBytes();
    layout->Draw({0.0f, 0.0f}, {1.0f, 1.0f}, nullptr, 1.0f);
    EXPECT_LT(core::SumImageBytes() - before, 10000U);
    layout->SetCurrentHighlightedNode(root.Get());
    EXPECT_GT(core::SumImageBytes() - before, 20000U) << "the rows of one plate";
}

TEST(VisIcicleLayout, LackOfMemoryLeavesTheLayoutUsable)
{
    const std::size_t failures = support::ForEveryFailingAllocation([] {
        const trees::NodeRef root = trees::MakeNode("a node with a long label", "icon");
        for (int i = 0; i < 3; ++i) {
            VisDataTree* const child = trees::Append(root.Get(), "another long label of a node");
            for (int k = 0; k < i; ++k)
                trees::Append(child, "leaf", "icon");
        }
        const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
        const icicles::FontRef font = icicles::FontRef::Adopt(support::MakeFixedWidthFont());
        const auto layout = VisReference<VisIcicleLayout>::Adopt(
            VisIcicleLayout::CreateLayout(nullptr, root.Get(), bag.Get()));
        if (!layout)
            return;
        for (const unsigned int limit : {NO_LIMIT, 1U, 2U}) {
            const auto work = [&] {
                layout->AlignIciclePlotLeaves(nullptr);
                layout->IciclePlot({0.0f, 0.0f}, {300.0f, 200.0f}, font.Get(), limit, 1.0f, 0, 0);
                layout->SetCurrentRoot(root->GetChildren().back(), 1);
                KUVKeybdEvent more(icicles::MORE, 1);
                layout->KeyboardAction(&more);
                KUVKeybdEvent left(icicles::LEFT, 1);
                layout->KeyboardAction(&left);
                layout->Unzoom();
            };
            try {
                work();
            } catch (const std::bad_alloc&) {
                work();
            }
            EXPECT_EQ(CacheOf(root.Get())->GetIcicleNLastNodes(), limit);
        }
    });
    EXPECT_GT(failures, 100U);
    std::cout << "count: " << failures << " failing allocations while an icicle plot is drawn\n";
}
