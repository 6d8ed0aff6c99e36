#include "VisTreeSpaceFillingLayout.h"

#include "TestLayout.h"
#include "VirtualSlots.h"

#include <gtest/gtest.h>

#include <memory>
#include <stack>
#include <string>
#include <vector>

using trees::Append;
using trees::CacheOf;
using trees::LayoutRef;
using trees::Listener;
using trees::MakeLayout;
using trees::MakeNode;
using trees::NodeRef;
using trees::TestLayout;
using trees::ViewOf;

namespace {

using BagRef = VisReference<KUV2DBagRep>;

BagRef MakeBag() { return BagRef::Adopt(KUV2DBagRep::CreateRep()); }

//      R
//    / | \.
//   A  B  C
//  / \     \.
// D   E     F
struct Shown {
    NodeRef r = MakeNode("R");
    VisDataTree* a = Append(r.Get(), "A");
    VisDataTree* b = Append(r.Get(), "B");
    VisDataTree* c = Append(r.Get(), "C");
    VisDataTree* d = Append(a, "D");
    VisDataTree* e = Append(a, "E");
    VisDataTree* f = Append(c, "F");
    BagRef bag = MakeBag();
    LayoutRef layout = MakeLayout(r.Get(), bag.Get());

    void Draw() const { layout->Draw({1, 2}, {30, 40}, nullptr, 1.0F); }
    std::vector<VisDataTree*> Nodes() const { return {r.Get(), a, d, e, b, c, f}; }
};

std::vector<VisDataTree*> Entries(std::stack<VisDataTree*> stack)
{
    std::vector<VisDataTree*> entries;
    for (; !stack.empty(); stack.pop())
        entries.push_back(stack.top());
    return entries;
}

}  // namespace

// ---- construction

TEST(VisTreeSpaceFillingLayout, ANewLayoutIsEmptyAndHasItsDefaults)
{
    const LayoutRef layout = LayoutRef::Adopt(new TestLayout);
    const TestLayout& readOnly = *layout.Get();
    EXPECT_EQ(layout->GetTreeRoot(), nullptr);
    EXPECT_EQ(readOnly.GetTreeRoot(), nullptr);
    EXPECT_EQ(layout->GetCurrentRoot(), nullptr);
    EXPECT_EQ(readOnly.GetCurrentRoot(), nullptr);
    EXPECT_EQ(layout->GetCurrentSelection(), nullptr);
    EXPECT_EQ(readOnly.GetCurrentSelection(), nullptr);
    EXPECT_EQ(layout->GetCurrentLeafSelection(), nullptr);
    EXPECT_EQ(readOnly.GetCurrentLeafSelection(), nullptr);
    EXPECT_TRUE(layout->GetLastCurrentTreeRoots().empty());
    EXPECT_EQ(layout->GetCachedTextures(), nullptr);
    EXPECT_EQ(layout->GetBagRep(), nullptr);
    EXPECT_EQ(layout->GetEnableZoom(), 1);
    EXPECT_EQ(layout->GetDiscardedVisibility(), 0);
    EXPECT_EQ(layout->IsPageUpPageDownEnabled(), 1);
    EXPECT_EQ(layout->GetRedrawOnSetCurrentRoot(), 1);
    EXPECT_EQ(layout->GetFont(), nullptr);
    EXPECT_EQ(layout->GetDrawScale(), 1.0F);
    EXPECT_EQ(layout->GetDeviceActionOffset().x, 0.0F);
    EXPECT_EQ(layout->GetDeviceActionOffset().y, 0.0F);
    EXPECT_STREQ(layout->GetCommandName().GetText(), "VisTreeSpaceDataViz");
}

TEST(VisTreeSpaceFillingLayout, TheSettersStoreWhatTheyAreGiven)
{
    const LayoutRef layout = LayoutRef::Adopt(new TestLayout);
    layout->SetEnableZoom(0);
    layout->SetEnablePageUpPageDown(2);
    layout->SetRedrawOnSetCurrentRoot(3);
    layout->SetDiscardedVisibility(4);
    layout->SetDeviceActionOffset({5, 6});
    EXPECT_EQ(layout->GetEnableZoom(), 0);
    EXPECT_EQ(layout->IsPageUpPageDownEnabled(), 2);
    EXPECT_EQ(layout->GetRedrawOnSetCurrentRoot(), 3);
    EXPECT_EQ(layout->GetDiscardedVisibility(), 4);
    EXPECT_EQ(layout->GetDeviceActionOffset().x, 5.0F);
    EXPECT_EQ(layout->GetDeviceActionOffset().y, 6.0F);
}

TEST(VisTreeSpaceFillingLayout, ALayoutIsAChildOfItsParentCommand)
{
    const auto parent = VisReference<KUVCommand>::Adopt(new KUVCommand(nullptr, "parent"));
    const LayoutRef layout = LayoutRef::Adopt(new TestLayout(parent.Get()));
    EXPECT_EQ(layout->GetParentCommand(), parent.Get());
}

TEST(VisTreeSpaceFillingLayout, AnswersForItsClassByName)
{
    const LayoutRef layout = LayoutRef::Adopt(new TestLayout);
    EXPECT_STREQ(VisTreeSpaceFillingLayout::ClassName(), "VisTreeSpaceFillingLayout");
    EXPECT_STREQ(layout->IsA(), "VisTreeSpaceFillingLayout");
    EXPECT_EQ(layout->IsAKindOf("KUVCommand"), 1);
    EXPECT_EQ(layout->IsAKindOf("VisDataTree"), 0);
    EXPECT_EQ(VisTreeSpaceFillingLayout::CreateItself(), nullptr);
    EXPECT_EQ(layout->GetMetaObject(), VisTreeSpaceFillingLayout::MetaObject());
    EXPECT_EQ(layout->GetMetaObject()->GetBase(), KUVCommand::MetaObject());
    EXPECT_STREQ(layout->GetMetaObject()->GetFramework(), "VisualizationCommands");
    EXPECT_TRUE(VisTreeSpaceFillingLayout::ClassId() == layout->GetMetaObject()->GetClassId());
}

TEST(VisTreeSpaceFillingLayout, TheEventsAreRegisteredNotificationClasses)
{
    const std::pair<const char*, const char*> events[] = {
        {VisTreeSpaceFillingLayout::ON_SET_CURRENT_ROOT(),
         "VisTreeSpaceFillingLayoutON_SET_CURRENT_ROOTEvt"},
        {VisTreeSpaceFillingLayout::ON_SELECT_NODE(), "VisTreeSpaceFillingLayoutON_SELECT_NODEEvt"},
        {VisTreeSpaceFillingLayout::ON_HOVER_NODE(), "VisTreeSpaceFillingLayoutON_HOVER_NODEEvt"},
        {VisTreeSpaceFillingLayout::ON_RIGHT_CLICK_NODE(),
         "VisTreeSpaceFillingLayoutON_RIGHT_CLICK_NODEEvt"},
        {VisTreeSpaceFillingLayout::ON_DOUBLE_CLICK(),
         "VisTreeSpaceFillingLayoutON_DOUBLE_CLICKEvt"}};
    for (const auto& [name, expected] : events) {
        EXPECT_STREQ(name, expected);
        const KUVMetaClass* const meta = KUVMetaClass::Find(expected);
        ASSERT_NE(meta, nullptr) << expected;
        EXPECT_EQ(meta->GetBase(), KUVNotification::MetaObject());
        EXPECT_STREQ(meta->GetFramework(), "VisualizationCommands");
    }
}

TEST(VisTreeSpaceFillingLayout, TheNotificationCarriesTwoNodes)
{
    const NodeRef one = MakeNode();
    const NodeRef other = MakeNode();
    const VisTreeSpaceFillingLayoutNotification notification(one.Get(), other.Get());
    EXPECT_EQ(notification.GetPreviousNode(), one.Get());
    EXPECT_EQ(notification.GetNode(), other.Get());
    EXPECT_STREQ(notification.IsA(), "VisTreeSpaceFillingLayoutNotification");
    EXPECT_EQ(notification.IsAKindOf("KUVNotification"), 1);
}

namespace {

struct OpenLayout : TestLayout {
    using TestLayout::TestLayout;
    using VisTreeSpaceFillingLayout::ApplyPageUpPageDown;
    using VisTreeSpaceFillingLayout::GetNodeViaNavigation;
    VisTreeSpaceFillingLayoutCache* GenerateCache() override { return TestLayout::GenerateCache(); }
    virtual void FirstOfItsOwn() {}
};

}  // namespace

TEST(VisTreeSpaceFillingLayout, KeepsTheSlotOrderOfItsVirtualOperations)
{
    struct NextCommand : KUVCommand {
        using KUVCommand::KUVCommand;
        virtual void FirstOfItsOwn() {}
    };
    const std::ptrdiff_t first = SlotOf(&NextCommand::FirstOfItsOwn);
    EXPECT_EQ(SlotOf(&VisTreeSpaceFillingLayout::Draw), first);
    EXPECT_EQ(SlotOf(&VisTreeSpaceFillingLayout::SetCurrentRoot), first + 1);
    EXPECT_EQ(SlotOf(&VisTreeSpaceFillingLayout::SetTreeRoot), first + 2);
    EXPECT_EQ(SlotOf(&VisTreeSpaceFillingLayout::KeyboardAction), first + 3);
    EXPECT_EQ(SlotOf(&VisTreeSpaceFillingLayout::DeviceAction), first + 4);
    EXPECT_EQ(SlotOf(&VisTreeSpaceFillingLayout::IMEKeyboardAction), first + 5);
    EXPECT_EQ(SlotOf(&OpenLayout::GenerateCache), first + 6);
    EXPECT_EQ(SlotOf(&OpenLayout::OnMouseSelection), first + 7);
    EXPECT_EQ(SlotOf(&OpenLayout::GetNodeViaNavigation), first + 8);
    EXPECT_EQ(SlotOf(&OpenLayout::ApplyPageUpPageDown), first + 9);
    EXPECT_EQ(SlotOf(&OpenLayout::FirstOfItsOwn), first + 10);
}

TEST(VisTreeSpaceFillingLayout, InitWithoutRootTakesNothing)
{
    const BagRef bag = MakeBag();
    const LayoutRef layout = LayoutRef::Adopt(new TestLayout);
    layout->Init(nullptr, bag.Get());
    EXPECT_EQ(layout->GetBagRep(), nullptr);
    EXPECT_EQ(layout->GetCachedTextures(), nullptr);
    EXPECT_EQ(bag->GetReferenceCount(), 1U) << "no reference is taken";
}

TEST(VisTreeSpaceFillingLayout, InitTakesReferencesOnRootAndBagAndGivesThemBackAtTheEnd)
{
    const NodeRef root = MakeNode();
    const BagRef bag = MakeBag();
    {
        const LayoutRef layout = MakeLayout(root.Get(), bag.Get());
        EXPECT_EQ(root->GetReferenceCount(), 2U);
        EXPECT_EQ(bag->GetReferenceCount(), 2U);
        EXPECT_EQ(layout->GetBagRep(), bag.Get());
        EXPECT_NE(layout->GetCachedTextures(), nullptr);
    }
    EXPECT_EQ(root->GetReferenceCount(), 1U);
    EXPECT_EQ(root->GetCache(), nullptr);
    EXPECT_EQ(bag->GetReferenceCount(), 1U);
}

// ---- SetTreeRoot

TEST(VisTreeSpaceFillingLayout, ANewTreeIsItsOwnCurrentRootWithTheFirstLeafSelected)
{
    const Shown s;
    EXPECT_EQ(s.layout->GetTreeRoot(), s.r.Get());
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.d);
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), s.d);
    EXPECT_EQ(s.layout->draws, 0) << "the owner draws afterwards";
    for (const VisDataTree* node : s.Nodes()) {
        ASSERT_NE(CacheOf(node), nullptr);
        EXPECT_EQ(CacheOf(node)->GetNode(), node);
        EXPECT_EQ(ViewOf(node), nullptr) << "no view is made";
    }
}

TEST(VisTreeSpaceFillingLayout, OneCacheIsMadeForEachNodeInPreOrder)
{
    struct Numbered : VisTreeSpaceFillingLayoutCache {
        explicit Numbered(int n) : VisTreeSpaceFillingLayoutCache(nullptr), number(n) {}
        int number;
    };
    struct Numbering : TestLayout {
        VisTreeSpaceFillingLayoutCache* GenerateCache() override { return new Numbered(++made); }
        int made = 0;
    };
    Shown s;
    s.layout = LayoutRef();
    auto* const layout = new Numbering;
    layout->SetTreeRoot(s.r.Get());
    EXPECT_EQ(layout->made, 7);
    int number = 0;
    for (const VisDataTree* node : s.Nodes())
        EXPECT_EQ(dynamic_cast<Numbered*>(node->GetCache())->number, ++number);
    layout->Release();
}

TEST(VisTreeSpaceFillingLayout, NothingIsHighlightedAfterANewTree)
{
    const Shown s;
    Listener listener(*s.layout.Get());
    s.Draw();
    s.layout->SetCurrentHighlightedNode(s.b);
    s.layout->SetTreeRoot(s.r.Get());
    listener.Take();
    s.layout->SetCurrentSelection(s.c);
    EXPECT_EQ(listener.Take(), "select D > C; ") << "no highlight had to end";
}

TEST(VisTreeSpaceFillingLayout, ANullTreeDestroysCachesAndKeepsTheStack)
{
    const Shown s;
    s.Draw();
    s.layout->SetCurrentRoot(s.a, 1);
    s.layout->SetTreeRoot(nullptr);
    EXPECT_EQ(s.layout->GetTreeRoot(), nullptr);
    EXPECT_EQ(s.layout->GetCurrentRoot(), nullptr);
    EXPECT_EQ(s.layout->GetCurrentSelection(), nullptr);
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), nullptr);
    EXPECT_EQ(s.layout->GetLastCurrentTreeRoots().size(), 1U);
    EXPECT_EQ(s.r->GetReferenceCount(), 1U);
    for (const VisDataTree* node : s.Nodes())
        EXPECT_EQ(node->GetCache(), nullptr);
    EXPECT_EQ(s.bag->GetChildren()->Count(), 0) << "the views' bags are taken out first";
}

TEST(VisTreeSpaceFillingLayout, TheSameTreeMaySetAgainEvenWhenOnlyTheLayoutHoldsIt)
{
    Shown s;
    VisDataTree* const root = s.r.Get();
    s.r = NodeRef();
    s.layout->SetTreeRoot(root);
    EXPECT_EQ(s.layout->GetTreeRoot(), root);
    EXPECT_EQ(root->GetReferenceCount(), 1U);
    EXPECT_EQ(s.layout->generated, 14);

    s.layout->SetTreeRoot(s.a);
    EXPECT_EQ(s.layout->GetTreeRoot(), s.a) << "held only through the old root";
    EXPECT_EQ(s.a->GetReferenceCount(), 1U);
    EXPECT_EQ(s.a->GetParent(), nullptr);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.d);
}

TEST(VisTreeSpaceFillingLayout, LinkingTheRootResetsTheCachesAboveIt)
{
    Shown s;
    s.layout = LayoutRef();
    VisTreeSpaceFillingLayoutCache above(s.r.Get());
    VisCacheAccess::SetComputedMinimumSize(above, {9, 9});
    const LayoutRef layout = MakeLayout(s.a);
    EXPECT_EQ(above.GetComputedMinimumSize().x, -1.0F);
    s.r->SetCache(nullptr);
}

TEST(VisTreeSpaceFillingLayout, ANodeThatBringsACacheOfItsOwnEndsUpWithoutAny)
{
    Shown s;
    s.layout->SetTreeRoot(nullptr);
    VisDataTree::VisDataTreeCache own(s.a);
    s.layout->SetTreeRoot(s.r.Get());
    EXPECT_EQ(s.a->GetCache(), nullptr);
    EXPECT_EQ(own.GetNode(), nullptr);
    EXPECT_NE(CacheOf(s.d), nullptr);
    s.Draw();
    s.layout->SetCurrentRoot(s.a, 1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.a);
}

TEST(VisTreeSpaceFillingLayout, ANodeTakenOutOfTheShownTreeIsUnlinkedWithTheRest)
{
    Shown s;
    s.Draw();
    const NodeRef a = NodeRef::Retain(s.a);
    s.a->RemoveParent(1);
    EXPECT_NE(CacheOf(s.a), nullptr);
    s.layout->SetTreeRoot(nullptr);
    EXPECT_EQ(s.a->GetCache(), nullptr);
    EXPECT_EQ(s.d->GetCache(), nullptr);
}

TEST(VisTreeSpaceFillingLayout, NodesMayDieWhileTheTreeIsShown)
{
    Shown s;
    s.Draw();
    s.a->RemoveParent(1);
    s.layout->SetTreeRoot(nullptr);
    EXPECT_EQ(s.bag->GetChildren()->Count(), 0);
}

// ---- Draw and roots

TEST(VisTreeSpaceFillingLayout, DrawRemembersFontAndScale)
{
    const Shown s;
    s.layout->Draw({0, 0}, {1, 1}, nullptr, 2.5F);
    EXPECT_EQ(s.layout->GetDrawScale(), 2.5F);
    EXPECT_EQ(s.layout->GetFont(), nullptr);
}

TEST(VisTreeSpaceFillingLayout, TheCurrentRootAgainDoesNothing)
{
    const Shown s;
    Listener listener(*s.layout.Get());
    s.layout->SetCurrentRoot(s.r.Get(), 1);
    EXPECT_EQ(listener.Take(), "");
    EXPECT_TRUE(s.layout->GetLastCurrentTreeRoots().empty());
    EXPECT_EQ(s.layout->draws, 0);
}

TEST(VisTreeSpaceFillingLayout, ANewRootFillsTheRectangleOfTheFormer)
{
    const Shown s;
    s.Draw();
    s.layout->SetCurrentRoot(s.a, 1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.a);
    EXPECT_EQ(s.layout->draws, 2);
    EXPECT_EQ(CacheOf(s.a)->GetPos().x, 1.0F);
    EXPECT_EQ(CacheOf(s.a)->GetPos().y, 2.0F);
    EXPECT_EQ(CacheOf(s.a)->GetSize().x, 30.0F);
    EXPECT_EQ(CacheOf(s.a)->GetSize().y, 40.0F);
    EXPECT_EQ(ViewOf(s.r.Get()), nullptr) << "the former root's views are gone";
    EXPECT_EQ(ViewOf(s.b), nullptr);
    EXPECT_NE(ViewOf(s.d), nullptr);
    EXPECT_EQ(s.bag->GetChildren()->Count(), 3);
    EXPECT_EQ(CacheOf(s.b)->IsDiscarded(), 1);
    EXPECT_EQ(CacheOf(s.b)->IsExpanded(), 0);
}

TEST(VisTreeSpaceFillingLayout, WithoutRedrawTheNewRootIsNotDrawn)
{
    const Shown s;
    s.Draw();
    s.layout->SetRedrawOnSetCurrentRoot(0);
    s.layout->SetCurrentRoot(s.a, 0);
    EXPECT_EQ(s.layout->draws, 1);
    EXPECT_TRUE(s.layout->GetLastCurrentTreeRoots().empty());
}

TEST(VisTreeSpaceFillingLayout, ANullRootZoomsBackToTheTreeRootAndPushesTheFormer)
{
    const Shown s;
    Listener listener(*s.layout.Get());
    s.layout->SetCurrentRoot(s.a, 0);
    listener.Take();
    s.layout->SetCurrentRoot(nullptr, 1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
    EXPECT_EQ(Entries(s.layout->GetLastCurrentTreeRoots()), (std::vector<VisDataTree*>{s.a}));
    EXPECT_EQ(listener.Take(), "root A > R; ");
}

TEST(VisTreeSpaceFillingLayout, ARootOutsideTheSelectionsAncestryTakesTheSelectionFirst)
{
    const Shown s;
    Listener listener(*s.layout.Get());
    s.layout->SetCurrentRoot(s.c, 1);
    EXPECT_EQ(listener.Take(), "select D > C; root R > C; ");
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.c);

    s.layout->SetCurrentRoot(s.r.Get(), 0);
    EXPECT_EQ(listener.Take(), "root C > R; ") << "C is below R: the selection stays";
    s.layout->SetCurrentRoot(s.c, 0);
    EXPECT_EQ(listener.Take(), "root R > C; ") << "C is selected already";
}

TEST(VisTreeSpaceFillingLayout, UnzoomingAnEmptyStackGives0AndChangesNothing)
{
    const Shown s;
    Listener listener(*s.layout.Get());
    EXPECT_EQ(s.layout->Unzoom(), 0);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
    EXPECT_EQ(listener.Take(), "");
}

TEST(VisTreeSpaceFillingLayout, TwoZoomsTakeTwoUnzooms)
{
    const Shown s;
    s.layout->SetCurrentRoot(s.a, 1);
    s.layout->SetCurrentRoot(s.d, 1);
    EXPECT_EQ(Entries(s.layout->GetLastCurrentTreeRoots()),
              (std::vector<VisDataTree*>{s.a, s.r.Get()}));
    EXPECT_EQ(s.layout->Unzoom(), 1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.a);
    EXPECT_EQ(s.layout->Unzoom(), 1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
    EXPECT_EQ(s.layout->Unzoom(), 0);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
}

TEST(VisTreeSpaceFillingLayout, TheStackCanBeEmptiedAndReplaced)
{
    const Shown s;
    s.layout->SetCurrentRoot(s.a, 1);
    s.layout->ReplaceLastCurrentTreeRoots(s.layout->GetLastCurrentTreeRoots());
    EXPECT_EQ(s.layout->GetLastCurrentTreeRoots().size(), 1U) << "its own stack changes nothing";

    std::stack<VisDataTree*> roots;
    for (VisDataTree* const node : {s.c, s.b, s.c})
        roots.push(node);
    s.layout->ReplaceLastCurrentTreeRoots(roots);
    EXPECT_EQ(Entries(s.layout->GetLastCurrentTreeRoots()), Entries(roots));
    EXPECT_EQ(s.layout->Unzoom(), 1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.c);
    s.layout->EmptyStackOfLastTreeRoots();
    EXPECT_TRUE(s.layout->GetLastCurrentTreeRoots().empty());
    EXPECT_EQ(s.layout->Unzoom(), 0);
}

// ---- selection and highlight

TEST(VisTreeSpaceFillingLayout, SelectingALeafSelectsItTwice)
{
    const Shown s;
    s.Draw();
    Listener listener(*s.layout.Get());
    s.layout->SetCurrentSelection(s.e);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.e);
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), s.e);
    EXPECT_EQ(ViewOf(s.e)->GetSelectionStatus(), 1);
    EXPECT_EQ(listener.Take(), "select D > E; ");
    s.layout->SetCurrentSelection(s.f);
    EXPECT_EQ(ViewOf(s.e)->GetSelectionStatus(), 0);
}

TEST(VisTreeSpaceFillingLayout, SelectingAnAncestorOfTheSelectedLeafKeepsTheLeaf)
{
    const Shown s;
    s.Draw();
    s.layout->SetCurrentSelection(s.e);
    s.layout->SetCurrentSelection(s.a);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.a);
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), s.e);
    EXPECT_EQ(ViewOf(s.a)->GetSelectionStatus(), 1);
    EXPECT_EQ(ViewOf(s.e)->GetSelectionStatus(), 1) << "the leaf stays marked";

    s.layout->SetCurrentSelection(s.r.Get());
    EXPECT_EQ(ViewOf(s.a)->GetSelectionStatus(), 0);
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), s.e);
}

TEST(VisTreeSpaceFillingLayout, SelectingAnUnrelatedInnerNodeClearsTheLeafSelection)
{
    const Shown s;
    s.Draw();
    s.layout->SetCurrentSelection(s.e);
    s.layout->SetCurrentSelection(s.c);
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), nullptr);
    EXPECT_EQ(ViewOf(s.e)->GetSelectionStatus(), 0);
    EXPECT_EQ(ViewOf(s.c)->GetSelectionStatus(), 1);
}

TEST(VisTreeSpaceFillingLayout, SelectingALeafClearsTheMarkOfAnInnerSelection)
{
    const Shown s;
    s.Draw();
    s.layout->SetCurrentSelection(s.c);
    s.layout->SetCurrentSelection(s.b);
    EXPECT_EQ(ViewOf(s.c)->GetSelectionStatus(), 0);
    EXPECT_EQ(ViewOf(s.b)->GetSelectionStatus(), 1);
}

TEST(VisTreeSpaceFillingLayout, SelectingNullDoesNothing)
{
    const Shown s;
    Listener listener(*s.layout.Get());
    s.layout->SetCurrentSelection(nullptr);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.d);
    EXPECT_EQ(listener.Take(), "");
}

TEST(VisTreeSpaceFillingLayout, SelectingTheSelectionAgainIsSentAgain)
{
    const Shown s;
    Listener listener(*s.layout.Get());
    s.layout->SetCurrentSelection(s.d);
    EXPECT_EQ(listener.Take(), "select D > D; ");
}

TEST(VisTreeSpaceFillingLayout, SelectingEndsTheHighlightOfAnyOtherNode)
{
    const Shown s;
    s.Draw();
    Listener listener(*s.layout.Get());
    s.layout->SetCurrentHighlightedNode(s.b);
    EXPECT_EQ(listener.Take(), "hover - > B; ");
    s.layout->SetCurrentSelection(s.b);
    EXPECT_EQ(listener.Take(), "select D > B; ");
    EXPECT_EQ(ViewOf(s.b)->GetHighlightStatus(), 1);
    s.layout->SetCurrentSelection(s.c);
    EXPECT_EQ(listener.Take(), "hover B > -; select B > C; ");
    EXPECT_EQ(ViewOf(s.b)->GetHighlightStatus(), 0);
}

TEST(VisTreeSpaceFillingLayout, HighlightingMovesTheMarkAndTellsListeners)
{
    const Shown s;
    s.Draw();
    Listener listener(*s.layout.Get());
    s.layout->SetCurrentHighlightedNode(s.b);
    s.layout->SetCurrentHighlightedNode(s.b);
    s.layout->SetCurrentHighlightedNode(s.c);
    EXPECT_EQ(listener.Take(), "hover - > B; hover B > C; ");
    EXPECT_EQ(ViewOf(s.b)->GetHighlightStatus(), 0);
    EXPECT_EQ(ViewOf(s.c)->GetHighlightStatus(), 1);
    s.layout->SetCurrentHighlightedNode(nullptr);
    EXPECT_EQ(ViewOf(s.c)->GetHighlightStatus(), 0);
    EXPECT_EQ(listener.Take(), "") << "null clears silently";
    s.layout->SetCurrentHighlightedNode(nullptr);
    EXPECT_EQ(listener.Take(), "");
}

TEST(VisTreeSpaceFillingLayout, NodesWithoutCacheOrViewAreSkipped)
{
    const Shown s;
    const NodeRef foreign = MakeNode("foreign");
    s.layout->SetCurrentHighlightedNode(s.b);
    s.layout->SetCurrentHighlightedNode(foreign.Get());
    s.layout->SetCurrentSelection(foreign.Get());
    EXPECT_EQ(s.layout->GetCurrentSelection(), foreign.Get());
    s.layout->SetCurrentSelection(s.d);
}

TEST(VisTreeSpaceFillingLayout, ACacheOfAnotherClassCountsAsNone)
{
    const Shown s;
    s.Draw();
    VisDataTree::VisDataTreeCache plain(nullptr);
    s.r->SetCache(nullptr);
    s.r->SetCache(&plain);
    s.layout->SetCurrentHighlightedNode(s.r.Get());
    s.layout->SetCurrentSelection(s.r.Get());
    s.layout->SetCurrentRoot(s.a, 0);
    EXPECT_EQ(s.layout->draws, 1) << "without a layout's cache there is no rectangle to fill";
    EXPECT_NE(ViewOf(s.b), nullptr) << "nothing below a foreign cache is reset";
    s.r->SetCache(nullptr);
}

TEST(VisTreeSpaceFillingLayout, AClickSelects)
{
    const Shown s;
    s.layout->OnMouseSelection(s.c);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.c);
}

TEST(VisTreeSpaceFillingLayout, WithoutCallbackManagerNothingIsSent)
{
    const Shown s;
    Listener listener(*s.layout.Get());
    s.layout->silent = true;
    s.layout->SetCurrentSelection(s.e);
    s.layout->SetCurrentRoot(s.a, 1);
    s.layout->SetCurrentHighlightedNode(s.d);
    EXPECT_EQ(listener.Take(), "");
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.a);
}

TEST(VisTreeSpaceFillingLayout, TextsOfInputMethodsAreNotUsed)
{
    const Shown s;
    EXPECT_EQ(s.layout->IMEKeyboardAction(nullptr), 1U);
}

// ---- listeners that interfere

TEST(VisTreeSpaceFillingLayout, AListenerMayReleaseTheLayout)
{
    for (const char* const when : {"select", "root", "hover"}) {
        Shown s;
        s.Draw();
        s.layout->selectAfterDraw = true;
        s.layout->SetCurrentHighlightedNode(s.b);
        TestLayout* const layout = s.layout.Get();
        const Listener listener(*layout, [&](const std::string& event, VisDataTree*) {
            if (event == when)
                s.layout = LayoutRef();
        });
        layout->SetCurrentRoot(s.c, 1);
        EXPECT_FALSE(s.layout) << when;
    }
}

TEST(VisTreeSpaceFillingLayout, AListenerMayTakeTheTreeAwayAtEveryEvent)
{
    for (const char* const when : {"select", "root", "hover"}) {
        Shown s;
        s.Draw();
        s.layout->selectAfterDraw = true;
        s.layout->SetCurrentHighlightedNode(s.b);
        const Listener listener(*s.layout.Get(), [&](const std::string& event, VisDataTree*) {
            if (event != when)
                return;
            s.layout->SetTreeRoot(nullptr);
            s.r = NodeRef();
        });
        s.layout->SetCurrentRoot(s.c, 1);
        EXPECT_EQ(s.layout->GetTreeRoot(), nullptr);
        EXPECT_EQ(s.layout->GetCurrentSelection(), nullptr);
        EXPECT_EQ(s.layout->Unzoom(), 0) << "the earlier root is dead";
    }
}

TEST(VisTreeSpaceFillingLayout, ANodeFreedByAListenerIsNotAnnouncedAfterwards)
{
    const Shown s;
    s.Draw();
    s.layout->SetCurrentHighlightedNode(s.b);
    Listener listener(*s.layout.Get(), [&](const std::string& event, VisDataTree*) {
        if (event == "hover" && s.c->GetParent())
            s.c->RemoveParent(1);
    });
    s.layout->SetCurrentSelection(s.c);
    EXPECT_EQ(listener.Take(), "hover B > -; ");
    EXPECT_EQ(s.layout->GetCurrentSelection(), nullptr);
}

TEST(VisTreeSpaceFillingLayout, LaterListenersSeeTheNodesThatAnEarlierOneFreed)
{
    const Shown s;
    const Listener first(*s.layout.Get(), [&](const std::string&, VisDataTree* node) {
        if (node && node->GetParent())
            node->RemoveParent(1);
    });
    Listener second(*s.layout.Get());
    s.layout->SetCurrentSelection(s.c);
    EXPECT_EQ(second.Take(), "select D > C; ");
    EXPECT_EQ(s.layout->GetCurrentSelection(), nullptr) << "gone once the dispatch has ended";
}

TEST(VisTreeSpaceFillingLayout, NestedNotificationsAreCutAt64Levels)
{
    const Shown s;
    int depth = 0;
    int deepest = 0;
    int calls = 0;
    const Listener listener(*s.layout.Get(), [&](const std::string&, VisDataTree*) {
        ++calls;
        deepest = std::max(deepest, ++depth);
        // Two answers to each notification would be 2^64 of them.
        s.layout->SetCurrentSelection(s.e);
        s.layout->SetCurrentSelection(s.d);
        --depth;
    });
    s.layout->SetCurrentSelection(s.e);
    EXPECT_EQ(deepest, 64);
    EXPECT_EQ(calls, 64);

    calls = 0;
    s.layout->SetCurrentSelection(s.e);
    EXPECT_EQ(calls, 64) << "after the storm everything is as before";
}

TEST(VisTreeSpaceFillingLayout, AListenerMayZoomAndDrawDuringANotification)
{
    const Shown s;
    s.Draw();
    s.layout->selectAfterDraw = true;
    const Listener listener(*s.layout.Get(), [&](const std::string& event, VisDataTree*) {
        if (event == "root" && s.layout->GetCurrentRoot() != s.r.Get())
            s.layout->SetCurrentRoot(s.r.Get(), 0);
    });
    s.layout->SetCurrentRoot(s.c, 1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
    EXPECT_EQ(s.bag->GetChildren()->Count(), 7);
}

// ---- nodes that die

TEST(VisTreeSpaceFillingLayout, TheSlotsOfANodeThatDiesAreEmptied)
{
    const Shown s;
    s.Draw();
    s.layout->SetCurrentSelection(s.f);
    s.layout->SetCurrentHighlightedNode(s.f);
    s.layout->SetCurrentRoot(s.c, 0);
    s.c->RemoveParent(1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), nullptr);
    EXPECT_EQ(s.layout->GetCurrentSelection(), nullptr);
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), nullptr);
    Listener listener(*s.layout.Get());
    s.layout->SetCurrentHighlightedNode(s.b);
    EXPECT_EQ(listener.Take(), "hover - > B; ");
    s.layout->SetCurrentRoot(nullptr, 1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
}

TEST(VisTreeSpaceFillingLayout, UnzoomSkipsRootsThatDied)
{
    const Shown s;
    s.layout->SetCurrentRoot(s.a, 1);
    s.layout->SetCurrentRoot(s.c, 1);
    s.layout->SetCurrentRoot(s.b, 1);
    s.c->RemoveParent(1);
    EXPECT_EQ(Entries(s.layout->GetLastCurrentTreeRoots()),
              (std::vector<VisDataTree*>{nullptr, s.a, s.r.Get()}));
    EXPECT_EQ(s.layout->Unzoom(), 1);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.a);
}

TEST(VisTreeSpaceFillingLayout, UnzoomingToRootsThatAllDiedGives0)
{
    const Shown s;
    s.layout->SetCurrentRoot(s.c, 0);
    s.layout->SetCurrentRoot(s.b, 1);
    s.c->RemoveParent(1);
    EXPECT_EQ(s.layout->Unzoom(), 0);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.b);
    EXPECT_TRUE(s.layout->GetLastCurrentTreeRoots().empty());
}

TEST(VisTreeSpaceFillingLayout, AStackOfManyZoomsDiesWithItsTreeInNoTime)
{
    constexpr std::size_t ZOOMS = 100000;
    const Shown s;
    s.layout->SetRedrawOnSetCurrentRoot(0);
    std::stack<VisDataTree*> roots;
    NodeRef other = MakeNode();
    for (std::size_t i = 0; i < ZOOMS; ++i)
        roots.push(Append(other.Get()));
    s.layout->ReplaceLastCurrentTreeRoots(roots);
    other = NodeRef();
    EXPECT_EQ(s.layout->GetLastCurrentTreeRoots().size(), ZOOMS);
    EXPECT_EQ(s.layout->Unzoom(), 0);
}

// ---- views

TEST(VisTreeSpaceFillingLayout, AViewIsMadeOnceUnderTheLayoutsBag)
{
    const Shown s;
    VisTreeSpaceFillingView* const view = s.layout->CreateView(CacheOf(s.b));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(ViewOf(s.b), view);
    EXPECT_EQ(s.layout->CreateView(CacheOf(s.b)), view);
    EXPECT_EQ((*s.bag->GetChildren())[0], view->GetBagRep());
    EXPECT_EQ(s.bag->GetChildren()->Count(), 1);
    EXPECT_EQ(s.layout->CreateView(nullptr), nullptr);

    s.layout->DeleteView(CacheOf(s.b));
    EXPECT_EQ(ViewOf(s.b), nullptr);
    EXPECT_EQ(s.bag->GetChildren()->Count(), 0);
    s.layout->DeleteView(CacheOf(s.b));
    s.layout->DeleteView(nullptr);
}

TEST(VisTreeSpaceFillingLayout, WithoutBagViewsAreMadeAllTheSame)
{
    const NodeRef root = MakeNode();
    const LayoutRef layout = MakeLayout(root.Get(), nullptr);
    layout->Draw({0, 0}, {1, 1}, nullptr, 1);
    EXPECT_NE(ViewOf(root.Get()), nullptr);
    layout->DeleteView(CacheOf(root.Get()));
    EXPECT_EQ(ViewOf(root.Get()), nullptr);
}

TEST(VisTreeSpaceFillingLayout, ResettingAViewHidesTheWholeSubtree)
{
    const Shown s;
    s.Draw();
    s.layout->ResetView(CacheOf(s.a));
    for (const VisDataTree* node : {s.a, s.d, s.e}) {
        EXPECT_EQ(ViewOf(node), nullptr);
        EXPECT_EQ(CacheOf(node)->IsExpanded(), 0);
        EXPECT_EQ(CacheOf(node)->IsDiscarded(), 1);
    }
    EXPECT_NE(ViewOf(s.b), nullptr);
    EXPECT_EQ(CacheOf(s.b)->IsDiscarded(), 0);
    s.layout->ResetView(nullptr);
    s.layout->ResetViewOf(nullptr);
}

TEST(VisTreeSpaceFillingLayout, ResettingBelowANodeLeavesTheNodeItself)
{
    const Shown s;
    s.Draw();
    s.layout->ResetViewsBelow(*s.r.Get(), *CacheOf(s.r.Get()));
    EXPECT_NE(ViewOf(s.r.Get()), nullptr);
    EXPECT_EQ(CacheOf(s.r.Get())->IsExpanded(), 1);
    EXPECT_EQ(ViewOf(s.f), nullptr);
    EXPECT_EQ(s.bag->GetChildren()->Count(), 1);
}

TEST(VisTreeSpaceFillingLayout, ResettingStopsAtANodeWithoutCache)
{
    const Shown s;
    s.Draw();
    s.layout->DeleteView(CacheOf(s.a));
    s.a->SetCache(nullptr);
    s.layout->ResetView(CacheOf(s.r.Get()));
    EXPECT_EQ(ViewOf(s.f), nullptr);
    EXPECT_NE(ViewOf(s.d), nullptr) << "not reached through caches";
}

TEST(VisTreeSpaceFillingLayout, WhatIsHiddenAsAWholeIsNotWalkedAgain)
{
    const Shown s;
    s.Draw();
    s.layout->ResetView(CacheOf(s.r.Get()));
    // Not what a layout does: a mark to see whether the walk comes by.
    VisCacheAccess::SetExpanded(*CacheOf(s.f), 1);
    s.layout->ResetView(CacheOf(s.r.Get()));
    EXPECT_EQ(CacheOf(s.f)->IsExpanded(), 1);
    Append(s.f);
    s.layout->ResetView(CacheOf(s.r.Get()));
    EXPECT_EQ(CacheOf(s.f)->IsExpanded(), 0) << "the tree has changed";
    s.Draw();
    s.layout->ResetView(CacheOf(s.r.Get()));
    EXPECT_EQ(ViewOf(s.f), nullptr);
}

TEST(VisTreeSpaceFillingLayout, ZoomingShowsThatNotAllIsHiddenAboveTheNewRoot)
{
    const Shown s;
    s.Draw();
    s.layout->SetCurrentRoot(s.f, 0);
    ASSERT_NE(ViewOf(s.f), nullptr);
    s.layout->ResetView(CacheOf(s.r.Get()));
    EXPECT_EQ(ViewOf(s.f), nullptr);
}

// ---- depth

TEST(VisTreeSpaceFillingLayout, EveryOperationSurvivesATreeOfManyLevels)
{
    VisDataTree* last = nullptr;
    const NodeRef root = trees::MakeChain(trees::MANY_LEVELS, &last);
    const BagRef bag = MakeBag();
    const LayoutRef layout = MakeLayout(root.Get(), bag.Get());
    EXPECT_EQ(layout->GetCurrentSelection(), last);
    layout->SetCurrentSelection(root.Get());
    EXPECT_EQ(layout->GetCurrentLeafSelection(), last);
    layout->SetCurrentHighlightedNode(last);
    layout->CreateView(CacheOf(last));
    layout->ResetView(CacheOf(root.Get()));
    EXPECT_EQ(ViewOf(last), nullptr);
    layout->SetRedrawOnSetCurrentRoot(0);
    layout->SetCurrentRoot(last, 1);
    EXPECT_EQ(layout->Unzoom(), 1);
    layout->SetTreeRoot(root.Get());
    EXPECT_EQ(layout->generated, 2 * static_cast<int>(trees::MANY_LEVELS));
}
