#include "VisIcicleLayout.h"

#include "IcicleFixture.h"
#include "VirtualSlots.h"

#include "support/LiveInstances.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using icicles::BagRef;
using icicles::Cache;
using icicles::CacheOf;
using icicles::LayoutRef;
using icicles::NO_LIMIT;
using icicles::NOT_COMPUTED;
using icicles::OpenLayout;
using icicles::Plot;
using icicles::SHALLOW_AND_DEEP;

namespace {

const support::WatchedClass watchCaches("VisIcicleLayoutCache", [] {
    const Cache sample(nullptr);
    return support::VirtualTableOf(sample);
});

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
