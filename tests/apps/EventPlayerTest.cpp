#include "player/EventPlayer.h"

#include <limits>
#include <memory>

#include "VisDataTree.h"
#include "VisIcicleLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "VisTreeSpaceFillingView.h"
#include "player/LayoutOwner.h"
#include "support/TreeBuilders.h"

#include <gtest/gtest.h>

namespace player {

namespace {

class EventPlayerTest : public testing::Test {
protected:
    explicit EventPlayerTest(LayoutKind kind = LayoutKind::TreeMap, float scale = 1)
    {
        root = support::MakeTree({"Pump", {{"Housing", {{"Bolt"}, {"Rotor"}}}, {"Base"}}});
        for (const char* const label : {"Pump", "Housing", "Bolt", "Rotor", "Base"})
            nodes.push_back(support::FindNode(root, label));
        owner = std::make_unique<LayoutOwner>(kind, *root);
        Drawing drawing;
        drawing.size = {300, 200};
        drawing.scale = scale;
        owner->Draw(drawing);
        player = std::make_unique<EventPlayer>(*owner, nodes,
                                               ViewerSettings{300 * scale, 200 * scale, scale});
    }
    ~EventPlayerTest() override
    {
        player.reset();
        owner.reset();
        root->Release();
    }

    const VisTreeSpaceFillingLayoutCache& CacheOf(std::size_t node) const
    {
        return static_cast<const VisTreeSpaceFillingLayoutCache&>(*nodes[node]->GetCache());
    }

    EventLog::Entry Last() const { return owner->Log().At(owner->Log().Size() - 1); }

    VisDataTree* root = nullptr;
    std::vector<VisDataTree*> nodes;
    std::unique_ptr<LayoutOwner> owner;
    std::unique_ptr<EventPlayer> player;
};

class IciclePlayerTest : public EventPlayerTest {
protected:
    IciclePlayerTest() : EventPlayerTest(LayoutKind::Icicle, 2) {}

    const KUVMathPoint2Df& DrawnSizeOf(std::size_t node) const
    {
        using IcicleCache = VisIcicleLayout::VisIcicleLayoutCache;
        return static_cast<const IcicleCache&>(CacheOf(node)).GetGraphicalSize();
    }
};

class CushionPlayerTest : public EventPlayerTest {
protected:
    CushionPlayerTest() : EventPlayerTest(LayoutKind::Cushion, 2) {}
};

MouseEvent Motion(float x, float y)
{
    MouseEvent event;
    event.position = {x, y};
    return event;
}

}  // namespace

TEST_F(EventPlayerTest, LogsTheSetUpAndThenAnEntryForEachEvent)
{
    EXPECT_EQ(owner->Log().Size(), 1U);
    EXPECT_FALSE(Last().result);
    ASSERT_EQ(Last().end - Last().begin, 1);
    EXPECT_EQ(Last().begin->notice, Notice::SelectNode);
    EXPECT_STREQ(NameOf(Last().begin->notice), "VisTreeSpaceFillingLayoutON_SELECT_NODEEvt");
    player->Play(Motion(150, 70));
    EXPECT_EQ(owner->Log().Size(), 2U);
    EXPECT_EQ(Last().result, 0U);
    ASSERT_EQ(Last().end - Last().begin, 1);
    EXPECT_EQ(Last().begin->node, nodes[4]);
    player->Play(SelectEvent{2});
    EXPECT_FALSE(Last().result);
    EXPECT_EQ(owner->Log().Size(), 3U);
    EXPECT_EQ(owner->Log().All().size(), 4U) << "selecting ended the highlight";
}

TEST_F(EventPlayerTest, GivesAnAnswerToDevicesKeysAndUnzoomOnly)
{
    for (const Event& event : std::vector<Event>{
             SelectEvent{1}, HighlightEvent{1}, SetRootEvent{1, 1}, LastColumnsEvent{2},
             SwitchEvent{Switch::EnableZoom, 1}, SwitchEvent{Switch::EnablePageKeys, 1},
             SwitchEvent{Switch::ExtendWithKeys, 1}, OffsetEvent{}, DrawEvent{}}) {
        player->Play(event);
        EXPECT_FALSE(Last().result) << event.index();
    }
    for (const Event& event :
         std::vector<Event>{Motion(1, 1), KeyEvent{7, 1}, ImeEvent{}, UnzoomEvent{}}) {
        player->Play(event);
        EXPECT_TRUE(Last().result) << event.index();
    }
}

TEST_F(EventPlayerTest, TakesNoNodeForOneThatDoesNotExist)
{
    player->Play(SelectEvent{99});
    EXPECT_EQ(owner->Layout().GetCurrentSelection(), nodes[2]);
    player->Play(SelectEvent{});
    EXPECT_EQ(owner->Layout().GetCurrentSelection(), nodes[2]);
}

TEST_F(EventPlayerTest, DrawsWhereItIsToldAndByDefaultWhereItDrewLast)
{
    player->Play(DrawEvent{Pair{10, 20}, Pair{500, 300}});
    EXPECT_EQ(CacheOf(0).GetPos().x, 10.0F);
    EXPECT_EQ(CacheOf(0).GetSize().x, 500.0F);
    player->Play(DrawEvent{std::nullopt, Pair{400, 300}});
    EXPECT_EQ(CacheOf(0).GetPos().y, 20.0F);
    EXPECT_EQ(CacheOf(0).GetSize().x, 400.0F);
    player->Play(SetRootEvent{1, 1});
    EXPECT_EQ(CacheOf(1).GetSize().x, 400.0F)
        << "zooming draws on the rectangle of the former root";
    player->Play(DrawEvent{});
    EXPECT_EQ(CacheOf(1).GetPos().x, 10.0F);
    EXPECT_EQ(CacheOf(1).GetSize().y, 300.0F);
}

TEST_F(EventPlayerTest, KnowsTheHighlightedNodeAlsoWhereItsViewDoesNot)
{
    player->Play(HighlightEvent{2});
    EXPECT_EQ(owner->Highlighted(), nodes[2]);
    player->Play(SetRootEvent{1, 1});
    EXPECT_EQ(owner->Highlighted(), nodes[2]) << "its view was made anew, the layout remembers";
    player->Play(HighlightEvent{});
    EXPECT_EQ(owner->Highlighted(), nullptr);
    player->Play(HighlightEvent{2});
    player->Play(SelectEvent{4});
    EXPECT_EQ(owner->Highlighted(), nullptr);
}

TEST_F(EventPlayerTest, BringsPositionsBeyondEveryIntegerToTheViewer)
{
    constexpr float LARGEST = std::numeric_limits<float>::max();
    for (const float value : {LARGEST, -LARGEST, 2147483648.0F, -2147483648.0F}) {
        MouseEvent release = Motion(value, value);
        release.action = MouseAction::Release;
        release.button = 2;
        player->Play(release);
        EXPECT_EQ(Last().result, 0U);
        EXPECT_EQ(owner->Layout().GetCurrentRoot(), root);
    }
}

// ---- the icicle's owner

TEST_F(IciclePlayerTest, IsPlottedAgainWhenItsNumberOfColumnsChanges)
{
    EXPECT_EQ(owner->Columns(), 3U);
    EXPECT_GT(DrawnSizeOf(1).x, 0.0F);
    player->Play(LastColumnsEvent{1});
    EXPECT_EQ(Last().begin->notice, Notice::SetLastColumns);
    EXPECT_EQ(DrawnSizeOf(1).x, 0.0F) << "left of the columns";
    EXPECT_GT(DrawnSizeOf(4).x, 0.0F);
    player->Play(KeyEvent{0x400000, 1});
    EXPECT_EQ(owner->Icicle()->GetNLastNodes(), 2U);
    EXPECT_GT(DrawnSizeOf(1).x, 0.0F);
    EXPECT_EQ(owner->Columns(), 3U);
}

TEST_F(IciclePlayerTest, IsPlottedOnTheRectangleThatItsOwnerDrewOnLastNotOnThatOfAZoom)
{
    player->Play(DrawEvent{Pair{10, 20}, Pair{600, 400}});
    EXPECT_EQ(CacheOf(0).GetSize().x, 600.0F);
    player->Play(SetRootEvent{1, 1});
    player->Play(LastColumnsEvent{1});
    EXPECT_EQ(CacheOf(1).GetPos().y, 20.0F);
    EXPECT_EQ(CacheOf(1).GetSize().y, 400.0F);
    player->Play(DrawEvent{std::nullopt, Pair{700, 500}});
    EXPECT_EQ(CacheOf(1).GetSize().y, 500.0F);
    EXPECT_EQ(DrawnSizeOf(1).x, 0.0F) << "the limit holds for drawings by the owner";
}

TEST_F(IciclePlayerTest, KeepsItsFlagsAndItsScaleInEveryDrawing)
{
    const float before = DrawnSizeOf(4).y;
    player->Play(DrawEvent{});
    EXPECT_EQ(DrawnSizeOf(4).y, before);
    player->Play(SetRootEvent{1, 1});
    player->Play(UnzoomEvent{});
    EXPECT_EQ(DrawnSizeOf(4).y, before);
    player->Play(SwitchEvent{Switch::ExtendWithKeys, 7});
    EXPECT_EQ(owner->Icicle()->GetExtendWithKeys(), 7);
}

TEST(LayoutOwner, SetsTheColumnsUpBeforeTheFirstDrawing)
{
    VisDataTree* const root =
        support::MakeTree({"Pump", {{"Housing", {{"Bolt"}, {"Rotor"}}}, {"Base"}}});
    {
        LayoutOwner owner(LayoutKind::Icicle, *root);
        Drawing drawing;
        drawing.lastColumns = 2;
        owner.Prepare(drawing);
        ASSERT_EQ(owner.Log().All().size(), 1U);
        EXPECT_EQ(owner.Log().All()[0].notice, Notice::SetLastColumns);
        EXPECT_EQ(owner.Log().All()[0].oldColumns, NO_COLUMN_LIMIT);
        EXPECT_EQ(owner.Log().All()[0].newColumns, 2U);
        EXPECT_EQ(owner.Log().All()[0].key, 0x700000U);
        EXPECT_FALSE(owner.Columns()) << "nothing was plotted";
        const std::optional<KUVMathPoint2Df> whole = owner.WholeSize();
        ASSERT_TRUE(whole);
        EXPECT_EQ(whole->x, 2 * 34.0F - 2) << "two columns of nodes that show no label";
        EXPECT_EQ(whole->y, 3 * 24.0F + 2 * 2) << "three leaves and two gaps";
        owner.SetSize(*whole);
        owner.DrawPrepared();
        EXPECT_EQ(owner.Columns(), 3U);
        EXPECT_EQ(owner.Log().Size(), 1U) << "all of it belongs to the set-up";
    }
    root->Release();
}

TEST(LayoutOwner, LeavesSpansAloneWhenItIsTold)
{
    VisDataTree* const root = support::MakeTree({"Pump", {{"Housing", {{"Bolt"}}}, {"Base"}}});
    {
        LayoutOwner owner(LayoutKind::Icicle, *root);
        Drawing drawing;
        drawing.alignLeaves = false;
        owner.Draw(drawing);
        const auto* const base = static_cast<const VisIcicleLayout::VisIcicleLayoutCache*>(
            support::FindNode(root, "Base")->GetCache());
        EXPECT_EQ(base->GetIcicleColSpan(), 1U);
        EXPECT_EQ(owner.Columns(), 3U);
    }
    root->Release();
}

// ---- the cushion's owner

TEST_F(CushionPlayerTest, HasNoColumnsAndIgnoresTheEventsOfTheIcicle)
{
    player->Play(LastColumnsEvent{1});
    player->Play(SwitchEvent{Switch::ExtendWithKeys, 1});
    EXPECT_EQ(Last().begin, Last().end);
    EXPECT_EQ(owner->Icicle(), nullptr);
    EXPECT_FALSE(owner->Columns());
    EXPECT_FALSE(owner->WholeSize());
}

TEST_F(CushionPlayerTest, IsDrawnAtScaleOneByAZoomAndAtItsOwnersScaleByADrawing)
{
    player->Play(SetRootEvent{1, 1});
    EXPECT_EQ(CacheOf(2).GetView()->GetBuiltSize().y, CacheOf(2).GetSize().y);
    player->Play(DrawEvent{});
    EXPECT_EQ(CacheOf(2).GetView()->GetBuiltSize().y, 2 * CacheOf(2).GetSize().y);
}

// ---- length

TEST_F(EventPlayerTest, PlaysAMillionEvents)
{
    for (int i = 0; i < 1'000'000; ++i)
        player->Play(Motion(static_cast<float>(i % 300), static_cast<float>(i % 200)));
    EXPECT_EQ(owner->Log().Size(), 1'000'001U);
}

}  // namespace player
