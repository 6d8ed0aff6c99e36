#include "TestLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "core/StandaloneViewer.h"

#include "KUVEvents.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

using trees::Append;
using trees::CacheOf;
using trees::Listener;
using trees::MakeNode;
using trees::NodeRef;

namespace {

constexpr unsigned int UNZOOM = 0x100000;
constexpr unsigned int NEXT = 0x800000;
constexpr unsigned int UP = 0x900000;
constexpr unsigned int PREVIOUS = 0xA00000;
constexpr unsigned int DOWN = 0xB00000;
constexpr unsigned int PAGE_MORE = 0x400000;
constexpr unsigned int PAGE_FEWER = 0x700000;

/// Keeps count of the page keys and opens the protected operations.
class Layout : public trees::TestLayout {
public:
    using TestLayout::TestLayout;
    using VisTreeSpaceFillingLayout::FromEventToNode;
    using VisTreeSpaceFillingLayout::GetNodeViaNavigation;
    using VisTreeSpaceFillingLayout::SetLeafSelectionTracking;

    void ApplyPageUpPageDown(unsigned int key) override { pages.push_back(key); }

    std::vector<unsigned int> pages;
};

//  20 +-----------------------------+
//     |  +----------+----------+    |
//     |  |    A     |    B     |    |
//     |  | +--+ +-+ |          |    |   R (0, 0) 100 x 20, A (10, 5) 40 x 10, B (50, 5) 40 x 10,
//     |  | |D | |E| |          |    |   D (12, 6) 10 x 5, E (30, 6) 10 x 5
//     |  | +--+ +-+ |          |    |
//     |  +----------+----------+    |
//   0 +-----------------------------+
//     0  10        50         90   100
struct Scene {
    NodeRef r = MakeNode("R");
    VisDataTree* a = Append(r.Get(), "A");
    VisDataTree* b = Append(r.Get(), "B");
    VisDataTree* d = Append(a, "D");
    VisDataTree* e = Append(a, "E");
    VisReference<Layout> layout = VisReference<Layout>::Adopt(new Layout(r.Get(), nullptr));
    Listener listener{*layout.Get()};
    KUVMouseDevice mouse;

    Scene()
    {
        layout->SetRedrawOnSetCurrentRoot(0);
        Place(r.Get(), {0, 0}, {100, 20});
        Place(a, {10, 5}, {40, 10});
        Place(b, {50, 5}, {40, 10});
        Place(d, {12, 6}, {10, 5});
        Place(e, {30, 6}, {10, 5});
    }

    static void Place(const VisDataTree* node, KUVMathPoint2Df position, KUVMathPoint2Df size)
    {
        VisCacheAccess::SetPosition(*CacheOf(node), position);
        VisCacheAccess::SetSize(*CacheOf(node), size);
    }
    static void Discard(const VisDataTree* node)
    {
        VisCacheAccess::SetDiscarded(*CacheOf(node), 1);
    }

    VisDataTree* Find(float x, float y) const { return layout->FindNodeAtPosition(x, y); }

    template <class Event>
    unsigned int Send(int button, int buttons, float x, float y, int modifier = 0)
    {
        mouse.SetButtonsStatus(buttons);
        Event event(&mouse, button, x, y, modifier);
        return layout->DeviceAction(&event);
    }
    unsigned int Key(unsigned int code, int state = 1) const
    {
        KUVKeybdEvent event(code, state);
        return layout->KeyboardAction(&event);
    }
    std::string Heard() { return listener.Take(); }
};

/// A viewer without support.
class BareViewer : public core::StandaloneViewer {
public:
    KUVSupport* GetSupport() const override { return nullptr; }
};

/// Counts the calls of the operations by which layouts change what events do.
class HookedLayout : public Layout {
public:
    using Layout::Layout;

    void SetCurrentRoot(VisDataTree* node, unsigned char pushOnStack) override
    {
        calls += pushOnStack != 0 ? "zoom " : "root ";
        Layout::SetCurrentRoot(node, pushOnStack);
    }

    std::string calls;

protected:
    void OnMouseSelection(VisDataTree* node) override
    {
        calls += "mouse ";
        Layout::OnMouseSelection(node);
    }
    VisDataTree* GetNodeViaNavigation(unsigned int key) override
    {
        calls += "key ";
        return Layout::GetNodeViaNavigation(key);
    }
};

}  // namespace

// ---- hit test

TEST(VisTreeSpaceFillingLayoutInteraction, TheDeepestNodeUnderThePointIsHit)
{
    const Scene s;
    EXPECT_EQ(s.Find(15, 8), s.d);
    EXPECT_EQ(s.Find(25, 8), s.a);
    EXPECT_EQ(s.Find(70, 10), s.b);
    EXPECT_EQ(s.Find(1, 1), s.r.Get());
    EXPECT_EQ(s.Find(101, 1), nullptr);
    EXPECT_EQ(s.Find(-1, 1), nullptr);
}

TEST(VisTreeSpaceFillingLayoutInteraction, APointOnTheRightOrTopEdgeHits)
{
    const Scene s;
    EXPECT_EQ(s.Find(22, 8), s.d);
    EXPECT_EQ(s.Find(15, 11), s.d);
    EXPECT_EQ(s.Find(100, 20), s.r.Get());
    EXPECT_EQ(s.Find(50, 10), s.a) << "the first of two siblings that share the edge";
}

TEST(VisTreeSpaceFillingLayoutInteraction, APointOnADiscardedLeafHitsItsParent)
{
    const Scene s;
    Scene::Discard(s.d);
    EXPECT_EQ(s.Find(15, 8), s.a);
    Scene::Discard(s.a);
    EXPECT_EQ(s.Find(15, 8), s.r.Get());
    EXPECT_EQ(s.Find(35, 8), s.r.Get()) << "a discarded node is not entered";
}

TEST(VisTreeSpaceFillingLayoutInteraction, WithDiscardedVisibilityNodesBelowADiscardedOneAreHit)
{
    const Scene s;
    Scene::Discard(s.d);
    Scene::Discard(s.a);
    s.layout->SetDiscardedVisibility(1);
    EXPECT_EQ(s.Find(35, 8), s.e) << "discarded nodes are searched through";
    EXPECT_EQ(s.Find(15, 8), s.r.Get()) << "and never hit";
    EXPECT_EQ(s.Find(25, 8), s.r.Get());
    EXPECT_EQ(s.Find(70, 10), s.b) << "behind a discarded one without a hit the siblings follow";
    Scene::Discard(s.r.Get());
    EXPECT_EQ(s.Find(1, 1), nullptr);
}

TEST(VisTreeSpaceFillingLayoutInteraction, ARectangleThatIsNotANumberIsNotHit)
{
    constexpr float ODD = std::numeric_limits<float>::quiet_NaN();
    const Scene s;
    Scene::Place(s.d, {ODD, 6}, {10, 5});
    Scene::Place(s.e, {30, 6}, {10, ODD});
    EXPECT_EQ(s.Find(15, 8), s.a);
    EXPECT_EQ(s.Find(35, 8), s.a);
    Scene::Place(s.r.Get(), {0, ODD}, {100, 20});
    EXPECT_EQ(s.Find(15, 8), nullptr);
}

TEST(VisTreeSpaceFillingLayoutInteraction, NodesWithoutCacheAndOddPointsHitNothing)
{
    const Scene s;
    s.a->SetCache(nullptr);
    EXPECT_EQ(s.Find(15, 8), s.r.Get());
    EXPECT_EQ(s.Find(std::numeric_limits<float>::quiet_NaN(), 8), nullptr);
    EXPECT_EQ(s.Find(std::numeric_limits<float>::infinity(), 8), nullptr);
    s.layout->SetTreeRoot(nullptr);
    EXPECT_EQ(s.Find(15, 8), nullptr);
}

TEST(VisTreeSpaceFillingLayoutInteraction, TheSearchBeginsAtTheCurrentRoot)
{
    const Scene s;
    s.layout->SetCurrentRoot(s.a, 0);
    VisCacheAccess::SetDiscarded(*CacheOf(s.a), 0);
    EXPECT_EQ(s.Find(70, 10), nullptr);
    EXPECT_EQ(s.Find(25, 8), s.a);
}

TEST(VisTreeSpaceFillingLayoutInteraction, TheHitTestSurvivesManyLevels)
{
    VisDataTree* last = nullptr;
    const NodeRef root = trees::MakeChain(trees::MANY_LEVELS, &last);
    const trees::LayoutRef layout = trees::MakeLayout(root.Get());
    EXPECT_EQ(layout->FindNodeAtPosition(0, 0), last);
    VisCacheAccess::SetDiscarded(*CacheOf(last), 1);
    EXPECT_EQ(layout->FindNodeAtPosition(0, 0), last->GetParent());
}

TEST(VisTreeSpaceFillingLayoutInteraction, DevicePositionsBecomeLayoutCoordinates)
{
    const Scene s;
    s.layout->SetDeviceActionOffset({2, 4});
    float x = 13;
    float y = 4;
    EXPECT_EQ(s.layout->FromEventToNode(x, y, nullptr), s.d);
    EXPECT_EQ(x, 15.0F);
    EXPECT_EQ(y, 8.0F);

    const auto viewer = VisReference<core::StandaloneViewer>::Adopt(new core::StandaloneViewer);
    viewer->SetGraphicSize(400, 100);
    viewer->SetPointToPixelScale(2);
    x = 28;
    y = 80;
    EXPECT_EQ(s.layout->FromEventToNode(x, y, viewer.Get()), s.d);
    EXPECT_EQ(x, 15.0F);
    EXPECT_EQ(y, 8.0F) << "(100 - 84) / 2: the y axis is turned over";
    viewer->SetPointToPixelScale(0);
    EXPECT_EQ(s.layout->FromEventToNode(x, y, viewer.Get()), nullptr);
}

TEST(VisTreeSpaceFillingLayoutInteraction, AViewerWithoutSupportHasTheScaleOne)
{
    const Scene s;
    const auto viewer = VisReference<BareViewer>::Adopt(new BareViewer);
    viewer->SetGraphicSize(100, 20);
    float x = 15;
    float y = 12;
    EXPECT_EQ(s.layout->FromEventToNode(x, y, viewer.Get()), s.d);
    EXPECT_EQ(x, 15.0F);
    EXPECT_EQ(y, 8.0F);
}

TEST(VisTreeSpaceFillingLayoutInteraction, CoordinatesAreWrittenBackWithoutAHitToo)
{
    const Scene s;
    s.layout->SetDeviceActionOffset({1000, -1});
    float x = 15;
    float y = 12;
    EXPECT_EQ(s.layout->FromEventToNode(x, y, nullptr), nullptr);
    EXPECT_EQ(x, 1015.0F);
    EXPECT_EQ(y, 11.0F);
}

// ---- mouse

TEST(VisTreeSpaceFillingLayoutInteraction, NothingIsUsedWithoutEventOrRoot)
{
    Scene s;
    EXPECT_EQ(s.layout->DeviceAction(nullptr), 1U);
    EXPECT_EQ(s.layout->KeyboardAction(nullptr), 1U);
    KUVNotification other;
    EXPECT_EQ(s.layout->DeviceAction(&other), 1U);
    KUVViewerEvent empty(nullptr, nullptr);
    EXPECT_EQ(s.layout->DeviceAction(&empty), 1U);
    s.layout->SetTreeRoot(nullptr);
    EXPECT_EQ(s.Send<KUVPressEvent>(1, 1, 15, 8), 1U);
    EXPECT_EQ(s.Key(NEXT), 1U);
    EXPECT_EQ(s.Heard(), "");
}

TEST(VisTreeSpaceFillingLayoutInteraction, ALeftPressSelects)
{
    Scene s;
    EXPECT_EQ(s.Send<KUVPressEvent>(1, 1, 35, 8), 0U);
    EXPECT_EQ(s.Heard(), "select D > E; ");
    EXPECT_EQ(s.Send<KUVPressEvent>(1, 1, 200, 8), 1U);
    EXPECT_EQ(s.Send<KUVPressEvent>(1, 1, 35, 8, /*modifier=*/1), 1U);
    EXPECT_EQ(s.Heard(), "");
}

TEST(VisTreeSpaceFillingLayoutInteraction, ALeftPressWhileAnotherButtonIsHeldIsNotUsed)
{
    Scene s;
    EXPECT_EQ(s.Send<KUVPressEvent>(1, 1 + 4, 35, 8), 1U);
    EXPECT_EQ(s.Send<KUVPressEvent>(2, 2, 35, 8), 1U);
    EXPECT_EQ(s.Send<KUVPressEvent>(3, 1 + 4, 35, 8), 1U);
    EXPECT_EQ(s.Heard(), "");
}

TEST(VisTreeSpaceFillingLayoutInteraction, ARightPressSelectsAndTellsSoWithoutPayload)
{
    Scene s;
    EXPECT_EQ(s.Send<KUVPressEvent>(3, 4, 35, 8), 0U);
    EXPECT_EQ(s.Heard(), "select D > E; right; ");
}

TEST(VisTreeSpaceFillingLayoutInteraction, AnEventWithoutMouseIsNotUsed)
{
    const Scene s;
    KUVDevice device;
    KUVPressEvent ofDevice(&device, 1, 15, 8, 0);
    EXPECT_EQ(s.layout->DeviceAction(&ofDevice), 1U);
    KUVMotionEvent ofNothing(nullptr, 0, 15, 8, 0);
    EXPECT_EQ(s.layout->DeviceAction(&ofNothing), 1U);
    KUVMouseDevice mouse;
    KUVDeviceEvent ofNoKind(&mouse, 1, 15, 8, 0);
    EXPECT_EQ(s.layout->DeviceAction(&ofNoKind), 1U);
}

TEST(VisTreeSpaceFillingLayoutInteraction, MotionHighlightsWhatIsUnderThePointer)
{
    Scene s;
    EXPECT_EQ(s.Send<KUVMotionEvent>(0, 0, 15, 8), 0U);
    EXPECT_EQ(s.Heard(), "hover - > D; ");
    EXPECT_EQ(s.Send<KUVMotionEvent>(0, 0, 16, 8), 0U);
    EXPECT_EQ(s.Heard(), "") << "the same node";
    EXPECT_EQ(s.Send<KUVMotionEvent>(0, 0, 500, 8), 1U);
    EXPECT_EQ(s.Send<KUVMotionEvent>(0, 1, 35, 8), 1U);
    EXPECT_EQ(s.Heard(), "") << "leaving all nodes keeps the highlight";
    EXPECT_EQ(s.Send<KUVMotionEvent>(0, 0, 35, 8), 0U);
    EXPECT_EQ(s.Heard(), "hover D > E; ");
}

TEST(VisTreeSpaceFillingLayoutInteraction, ReleasingTheMiddleButtonZoomsWhenZoomIsEnabled)
{
    Scene s;
    EXPECT_EQ(s.Send<KUVReleaseEvent>(2, 0, 500, 8), 0U) << "empty space: consumed, no effect";
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
    EXPECT_EQ(s.Send<KUVReleaseEvent>(1, 0, 25, 8), 1U);
    EXPECT_EQ(s.Send<KUVReleaseEvent>(2, 1, 25, 8), 1U);
    EXPECT_EQ(s.Send<KUVReleaseEvent>(2, 0, 25, 8, /*modifier=*/2), 1U);
    s.layout->SetEnableZoom(0);
    EXPECT_EQ(s.Send<KUVReleaseEvent>(2, 0, 25, 8), 1U);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
    s.layout->SetEnableZoom(1);
    EXPECT_EQ(s.Send<KUVReleaseEvent>(2, 0, 25, 8), 0U);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.a);
    EXPECT_EQ(s.layout->GetLastCurrentTreeRoots().size(), 1U);
}

TEST(VisTreeSpaceFillingLayoutInteraction, AReleaseInAViewerHappensWhereThePointerIsNow)
{
    const Scene s;
    const auto viewer = VisReference<core::StandaloneViewer>::Adopt(new core::StandaloneViewer);
    viewer->SetGraphicSize(100, 20);
    viewer->SetMousePosition(70, 10);
    KUVMouseDevice mouse;
    KUVReleaseEvent release(&mouse, 2, 15, 12, 0);
    KUVViewerEvent event(viewer.Get(), &release);
    EXPECT_EQ(s.layout->DeviceAction(&event), 0U);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.b);
}

TEST(VisTreeSpaceFillingLayoutInteraction, ADoubleClickSelectsOrZooms)
{
    Scene s;
    EXPECT_EQ(s.Send<KUVDoubleClick>(1, 1, 35, 8), 0U);
    EXPECT_EQ(s.Heard(), "select D > E; double; ");
    EXPECT_EQ(s.Send<KUVDoubleClick>(1, 1, 500, 8), 1U);
    EXPECT_EQ(s.Send<KUVDoubleClick>(3, 4, 35, 8), 1U);
    EXPECT_EQ(s.Send<KUVDoubleClick>(2, 2, 500, 8), 0U);
    s.layout->SetEnableZoom(0);
    EXPECT_EQ(s.Send<KUVDoubleClick>(2, 2, 25, 8), 0U);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
    s.layout->SetEnableZoom(1);
    EXPECT_EQ(s.Send<KUVDoubleClick>(2, 2, 25, 8), 0U);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.a);
}

TEST(VisTreeSpaceFillingLayoutInteraction, EventsInAViewerAreTurnedIntoLayoutCoordinates)
{
    Scene s;
    const auto viewer = VisReference<core::StandaloneViewer>::Adopt(new core::StandaloneViewer);
    viewer->SetGraphicSize(200, 40);
    viewer->SetPointToPixelScale(2);
    s.mouse.SetButtonsStatus(1);
    KUVPressEvent press(&s.mouse, 1, 70, 24, 0);
    KUVViewerEvent pressInViewer(viewer.Get(), &press);
    EXPECT_EQ(s.layout->DeviceAction(&pressInViewer), 0U);
    EXPECT_EQ(s.Heard(), "select D > E; ");
    s.mouse.SetButtonsStatus(0);
    KUVMotionEvent motion(&s.mouse, 0, 30, 24, 0);
    KUVViewerEvent motionInViewer(viewer.Get(), &motion);
    EXPECT_EQ(s.layout->DeviceAction(&motionInViewer), 0U);
    EXPECT_EQ(s.Heard(), "hover - > D; ");
    KUVDoubleClick click(&s.mouse, 1, 140, 20, 0);
    KUVViewerEvent clickNowhere(nullptr, &click);
    EXPECT_EQ(s.layout->DeviceAction(&clickNowhere), 1U) << "without viewer: as they stand";
    KUVViewerEvent clickInViewer(viewer.Get(), &click);
    EXPECT_EQ(s.layout->DeviceAction(&clickInViewer), 0U);
    EXPECT_EQ(s.Heard(), "hover D > -; select E > B; double; ");
}

TEST(VisTreeSpaceFillingLayoutInteraction, DoubleClicksAndMotionsDoNotMindModifiers)
{
    Scene s;
    EXPECT_EQ(s.Send<KUVMotionEvent>(0, 0, 15, 8, /*modifier=*/3), 0U);
    EXPECT_EQ(s.Send<KUVDoubleClick>(1, 7, 35, 8, /*modifier=*/3), 0U);
    EXPECT_EQ(s.Heard(), "hover - > D; hover D > -; select D > E; double; ");
    EXPECT_EQ(s.Send<KUVPressEvent>(3, 4, 35, 8, /*modifier=*/1), 1U);
    EXPECT_EQ(s.Heard(), "");
}

TEST(VisTreeSpaceFillingLayoutInteraction, EventsGoThroughTheOperationsThatLayoutsOverride)
{
    const NodeRef root = MakeNode("R");
    VisDataTree* const leaf = Append(root.Get(), "A");
    const auto layout = VisReference<HookedLayout>::Adopt(new HookedLayout(root.Get(), nullptr));
    Scene::Place(root.Get(), {0, 0}, {10, 10});
    Scene::Place(leaf, {0, 0}, {10, 10});
    KUVMouseDevice mouse;
    mouse.SetButtonsStatus(1);
    KUVPressEvent left(&mouse, 1, 5, 5, 0);
    EXPECT_EQ(layout->DeviceAction(&left), 0U);
    mouse.SetButtonsStatus(4);
    KUVPressEvent right(&mouse, 3, 5, 5, 0);
    EXPECT_EQ(layout->DeviceAction(&right), 0U);
    KUVDoubleClick click(&mouse, 1, 5, 5, 0);
    EXPECT_EQ(layout->DeviceAction(&click), 0U);
    KUVKeybdEvent up(UP, 1);
    EXPECT_EQ(layout->KeyboardAction(&up), 0U);
    mouse.SetButtonsStatus(0);
    KUVReleaseEvent release(&mouse, 2, 5, 5, 0);
    EXPECT_EQ(layout->DeviceAction(&release), 0U);
    KUVKeybdEvent unzoom(UNZOOM, 1);
    EXPECT_EQ(layout->KeyboardAction(&unzoom), 0U);
    EXPECT_EQ(layout->calls, "mouse mouse mouse key zoom root ");
}

TEST(VisTreeSpaceFillingLayoutInteraction, TextsOfInputMethodsAreNotUsed)
{
    const Scene s;
    KUVIMEKeybdEvent event;
    EXPECT_EQ(s.layout->IMEKeyboardAction(&event), 1U);
    EXPECT_EQ(s.layout->IMEKeyboardAction(nullptr), 1U);
}

TEST(VisTreeSpaceFillingLayoutInteraction, AListenerMayReleaseTheLayoutDuringAPress)
{
    Scene s;
    Layout* const layout = s.layout.Get();
    const Listener killer(*layout, [&](const std::string&, VisDataTree*) { s.layout = {}; });
    KUVMouseDevice mouse;
    mouse.SetButtonsStatus(4);
    KUVPressEvent event(&mouse, 3, 35, 8, 0);
    EXPECT_EQ(layout->DeviceAction(&event), 0U);
    EXPECT_FALSE(s.layout);
}

// ---- keyboard

TEST(VisTreeSpaceFillingLayoutInteraction, TheUnzoomKeyWithAnEmptyStackIsNotUsed)
{
    const Scene s;
    EXPECT_EQ(s.Key(UNZOOM), 1U);
    s.layout->SetCurrentRoot(s.a, 1);
    EXPECT_EQ(s.Key(UNZOOM, /*state=*/0), 1U);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.a);
    EXPECT_EQ(s.Key(UNZOOM), 0U);
    EXPECT_EQ(s.layout->GetCurrentRoot(), s.r.Get());
}

TEST(VisTreeSpaceFillingLayoutInteraction, NavigationKeysAreUsedEvenWhenNoNodeIsFound)
{
    Scene s;
    s.layout->SetCurrentSelection(s.r.Get());
    s.Heard();
    EXPECT_EQ(s.Key(UP), 0U);
    EXPECT_EQ(s.Key(NEXT, /*state=*/2), 0U);
    EXPECT_EQ(s.Heard(), "");
    EXPECT_EQ(s.Key(0x123), 1U);
}

TEST(VisTreeSpaceFillingLayoutInteraction, TheLeafKeysGoAroundBelowTheCurrentRoot)
{
    Scene s;
    EXPECT_EQ(s.Key(NEXT), 0U);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.e);
    s.Key(NEXT);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.b);
    s.Key(NEXT);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.d);
    s.Key(PREVIOUS);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.b);
    s.layout->SetCurrentSelection(s.e);
    s.layout->SetCurrentRoot(s.a, 0);
    s.Key(NEXT);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.d) << "the current root stops the walk";
}

TEST(VisTreeSpaceFillingLayoutInteraction, TheLeafKeysBeginAtTheFirstLeafWithoutLeafSelection)
{
    Scene s;
    s.layout->SetCurrentSelection(s.b);
    s.layout->SetCurrentSelection(s.a);
    ASSERT_EQ(s.layout->GetCurrentLeafSelection(), nullptr);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(NEXT), s.d);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(PREVIOUS), s.d);
    s.layout->SetCurrentSelection(s.d);
    Append(s.d, "new");
    EXPECT_EQ(s.layout->GetNodeViaNavigation(NEXT), s.r->GetFirstLeaf())
        << "the leaf selection is no leaf any more";
    EXPECT_EQ(s.layout->GetNodeViaNavigation(0x123), nullptr);
}

TEST(VisTreeSpaceFillingLayoutInteraction, UpSkipsMergedParents)
{
    Scene s;
    EXPECT_EQ(s.layout->GetNodeViaNavigation(UP), s.a);
    s.a->SetIsMerged(1);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(UP), s.r.Get());
    s.r->SetIsMerged(1);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(UP), s.r.Get()) << "the current root counts";
    s.layout->SetCurrentRoot(s.b, 0);
    s.layout->SetCurrentSelection(s.d);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(UP), s.d) << "merged up to the top: no move";
    s.layout->SetCurrentSelection(s.b);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(UP), nullptr);
}

TEST(VisTreeSpaceFillingLayoutInteraction, DownGoesTowardsTheSelectedLeaf)
{
    Scene s;
    s.layout->SetCurrentSelection(s.e);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(DOWN), s.e) << "a leaf stays";
    s.layout->SetCurrentSelection(s.r.Get());
    EXPECT_EQ(s.layout->GetNodeViaNavigation(DOWN), s.a);
    s.a->SetIsMerged(1);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(DOWN), s.e) << "merged nodes are passed through";
    s.a->SetIsMerged(0);
    s.layout->SetCurrentSelection(s.b);
    s.layout->SetCurrentSelection(s.a);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(DOWN), s.d) << "no leaf selected: the first child";
}

TEST(VisTreeSpaceFillingLayoutInteraction, DownEndsAtAMergedLeaf)
{
    const Scene s;
    s.layout->SetCurrentSelection(s.a);
    s.d->SetIsMerged(1);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(DOWN), s.d);
}

TEST(VisTreeSpaceFillingLayoutInteraction, DownStaysAwayFromALeafElsewhere)
{
    const Scene s;
    s.layout->SetLeafSelectionTracking(0);
    s.layout->SetCurrentSelection(s.a);
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), s.d) << "the first leaf";
    EXPECT_EQ(s.layout->GetNodeViaNavigation(DOWN), s.d);
    const NodeRef below = MakeNode("below");
    s.d->InsertChild(below.Get(), 1);
    s.layout->SetCurrentSelection(s.d);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(DOWN), nullptr) << "the leaf is not below itself";
    s.d->SetIsMerged(1);
    s.layout->SetCurrentSelection(s.a);
    EXPECT_EQ(s.layout->GetNodeViaNavigation(DOWN), nullptr) << "merged down to a leaf no longer";
}

TEST(VisTreeSpaceFillingLayoutInteraction, DownPassesThroughManyMergedLevelsInNoTime)
{
    VisDataTree* last = nullptr;
    const NodeRef root = trees::MakeChain(trees::MANY_LEVELS, &last);
    for (VisDataTree* node = last; node != root.Get(); node = node->GetParent())
        node->SetIsMerged(1);
    const auto layout = VisReference<Layout>::Adopt(new Layout(root.Get(), nullptr));
    layout->SetCurrentSelection(root.Get());
    ASSERT_EQ(layout->GetCurrentLeafSelection(), last);
    EXPECT_EQ(layout->GetNodeViaNavigation(DOWN), last);
    layout->SetTreeRoot(nullptr);
}

TEST(VisTreeSpaceFillingLayoutInteraction, PageKeysAreNotUsedWhenSwitchedOff)
{
    const Scene s;
    EXPECT_EQ(s.Key(PAGE_MORE), 0U);
    EXPECT_EQ(s.Key(PAGE_FEWER), 0U);
    EXPECT_EQ(s.Key(PAGE_FEWER, /*state=*/0), 0U);
    EXPECT_EQ(s.layout->pages, (std::vector<unsigned int>{PAGE_MORE, PAGE_FEWER}));
    s.layout->SetEnablePageUpPageDown(0);
    EXPECT_EQ(s.Key(PAGE_MORE), 1U);
    EXPECT_EQ(s.layout->pages.size(), 2U);
}

TEST(VisTreeSpaceFillingLayoutInteraction, WithoutTrackingOnlyANewTreeSelectsALeaf)
{
    Scene s;
    s.layout->SetLeafSelectionTracking(0);
    s.layout->SetTreeRoot(s.r.Get());
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), s.d) << "in every layout";
    s.layout->SetCurrentSelection(s.e);
    EXPECT_EQ(s.layout->GetCurrentSelection(), s.e);
    EXPECT_EQ(s.layout->GetCurrentLeafSelection(), nullptr);
}
