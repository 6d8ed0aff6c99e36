#include "IcicleFixture.h"
#include "VisIcicleLayout.h"

#include "private/IcicleAccess.h"

#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

using icicles::Cache;
using icicles::CacheOf;
using icicles::DOWN;
using icicles::FEWER;
using icicles::LEFT;
using icicles::Listener;
using icicles::MORE;
using icicles::NO_LIMIT;
using icicles::NOT_COMPUTED;
using icicles::Plot;
using icicles::RIGHT;
using icicles::SHALLOW_AND_DEEP;
using icicles::UP;

namespace {

/// An aligned plot of the tree, drawn, with the label selected as by a click.
struct Walked : Plot {
    explicit Walked(const char* selected, const support::TreeSketch& tree = SHALLOW_AND_DEEP)
        : Plot(tree)
    {
        layout->AlignIciclePlotLeaves(nullptr);
        Draw();
        layout->OnMouseSelection(Node(selected));
    }
    /// The labels selected after each of the keys.
    std::string After(const std::vector<unsigned int>& keys) const
    {
        std::string labels;
        for (const unsigned int key : keys) {
            EXPECT_EQ(Key(key), 0U);
            labels += (labels.empty() ? "" : " ") + Selected();
        }
        return labels;
    }
};

/// Where a direction leads from the node with the label, and the cursor behind it.
struct Step {
    std::string label;
    unsigned int cursor;

    friend bool operator==(const Step& a, const Step& b)
    {
        return a.label == b.label && a.cursor == b.cursor;
    }
    friend std::ostream& operator<<(std::ostream& out, const Step& step)
    {
        return out << step.label << " with cursor " << step.cursor;
    }
};

std::string LabelOf(const VisDataTree* node) { return node ? node->GetLabel().GetUtf8() : "-"; }

Step Down(const Plot& plot, const char* label, unsigned int cursor, unsigned int columns = NO_LIMIT,
          const char* currentRoot = "R")
{
    VisDataTree* const node =
        plot.Of(label)->GetNextNodeIcicleDownDirection(cursor, plot.Node(currentRoot), columns);
    return {LabelOf(node), cursor};
}

Step Up(const Plot& plot, const char* label, unsigned int cursor, unsigned int columns = NO_LIMIT,
        const char* currentRoot = "R")
{
    VisDataTree* const node =
        plot.Of(label)->GetNextNodeIcicleUpDirection(cursor, plot.Node(currentRoot), columns);
    return {LabelOf(node), cursor};
}

Step Left(const Plot& plot, const char* label, unsigned int cursor, unsigned int columns = NO_LIMIT,
          const char* currentRoot = "R")
{
    VisDataTree* const node =
        plot.Of(label)->GetNextNodeIcicleLeftDirection(cursor, plot.Node(currentRoot), columns);
    return {LabelOf(node), cursor};
}

Step Right(const Plot& plot, const char* label, unsigned int cursor)
{
    VisDataTree* const node = plot.Of(label)->GetNextNodeIcicleRightDirection(cursor);
    return {LabelOf(node), cursor};
}

//  column  0   1   2   3
//          R   A   A1  x      A over one column, A1 and A2 over one;
//              A   A1  y
//              A   A2  z
//              W   W   w      W over two;
//              B   B1  u
const support::TreeSketch WIDE_BETWEEN = {
    "R",
    {{"A", {{"A1", {{"x"}, {"y"}}}, {"A2", {{"z"}}}}}, {"W", {{"w"}}}, {"B", {{"B1", {{"u"}}}}}}};

}  // namespace

// ---- down and up

TEST(VisIcicleLayoutNavigation, DownGoesToTheNextSiblingAndUpToThePreviousOne)
{
    const Walked plot("a1");
    EXPECT_EQ(Down(plot, "a1", 2), (Step{"a2", 2}));
    EXPECT_EQ(Up(plot, "a2", 2), (Step{"a1", 2}));
    EXPECT_EQ(Down(plot, "A", 1), (Step{"B", 1}));
    EXPECT_EQ(Up(plot, "C", 1), (Step{"B", 1}));
}

TEST(VisIcicleLayoutNavigation,
     DownFromTheLastChildOfTheLastChildClimbsToAnAncestorWithANextSibling)
{
    const Walked plot("z", WIDE_BETWEEN);
    EXPECT_EQ(Down(plot, "z", 3), (Step{"w", 3})) << "over A2 and A to W, then to the column";
    EXPECT_EQ(Up(plot, "w", 3), (Step{"z", 3})) << "the last child's last child touches W";
}

TEST(VisIcicleLayoutNavigation, TheFirstNodeThatReachesPastTheCursorIsTaken)
{
    const Walked plot("y", WIDE_BETWEEN);
    EXPECT_EQ(Down(plot, "A", 1), (Step{"W", 1}));
    EXPECT_EQ(Down(plot, "A", 2), (Step{"W", 2})) << "W covers the columns 1 and 2";
    EXPECT_EQ(Down(plot, "A", 3), (Step{"w", 3}));
    EXPECT_EQ(Up(plot, "W", 2), (Step{"A2", 2}));
    EXPECT_EQ(Up(plot, "W", 0), (Step{"A", 0}));
    EXPECT_EQ(Up(plot, "W", NOT_COMPUTED), (Step{"z", NOT_COMPUTED})) << "a leaf at the latest";
}

TEST(VisIcicleLayoutNavigation, DownThenUpAcrossAWideNodeReturnsToTheStartingColumn)
{
    const Walked plot("A2", WIDE_BETWEEN);
    EXPECT_EQ(plot.After({DOWN, DOWN, UP, UP}), "W B1 W A2");
    EXPECT_EQ(plot.After({LEFT, DOWN, DOWN, UP, UP}), "A W B W A")
        << "from column 1 the same keys stay in column 1";
}

TEST(VisIcicleLayoutNavigation, AtTheEdgesOfTheCurrentRootNothingMoves)
{
    const Walked plot("u", WIDE_BETWEEN);
    EXPECT_EQ(Down(plot, "u", 3), (Step{"u", 3}));
    EXPECT_EQ(Up(plot, "x", 3), (Step{"x", 3}));
    EXPECT_EQ(Down(plot, "R", 3), (Step{"R", 3}));
    EXPECT_EQ(Up(plot, "R", 3), (Step{"R", 3}));
}

TEST(VisIcicleLayoutNavigation, AClimbThatReachesTheCurrentRootDoesNotMove)
{
    const Walked plot("z", WIDE_BETWEEN);
    EXPECT_EQ(Down(plot, "z", 3, NO_LIMIT, "A"), (Step{"z", 3})) << "W lies outside";
    EXPECT_EQ(Down(plot, "y", 3, NO_LIMIT, "A"), (Step{"z", 3}));
    EXPECT_EQ(Up(plot, "x", 3, NO_LIMIT, "A"), (Step{"x", 3}));
    EXPECT_EQ(Down(plot, "A", 1, NO_LIMIT, "A"), (Step{"A", 1}));
    EXPECT_EQ(Down(plot, "R", 1, NO_LIMIT, "A"), (Step{"R", 1})) << "the parent of the root";
}

TEST(VisIcicleLayoutNavigation, TheCursorIsRaisedToTheFirstOfTheLastColumns)
{
    const Walked plot("A", WIDE_BETWEEN);
    EXPECT_EQ(Down(plot, "A", 1, 2), (Step{"W", 2}));
    EXPECT_EQ(Down(plot, "A", 1, 1), (Step{"w", 3}));
    EXPECT_EQ(Down(plot, "A", 3, 2), (Step{"w", 3})) << "raised, never lowered";
    EXPECT_EQ(Down(plot, "A", 0, 100), (Step{"W", 0})) << "a column below 0 is 0";
    EXPECT_EQ(Up(plot, "W", 1, 2), (Step{"A2", 2}));
}

TEST(VisIcicleLayoutNavigation, ANodeThatIsMissingFromItsParentsChildrenGoesNowhere)
{
    const Walked plot("a1");
    VisDataTree* const b = plot.Node("B");
    std::vector<VisDataTree*>& children = plot.root->GetChildren();
    children.erase(children.begin() + 1);
    unsigned int cursor = 1;
    EXPECT_EQ(CacheOf(b)->GetNextNodeIcicleDownDirection(cursor, plot.root.Get(), NO_LIMIT), b);
    children.insert(children.begin() + 1, b);
}

// ---- left and right

TEST(VisIcicleLayoutNavigation, LeftGoesToTheParentAndItsLastColumn)
{
    const Walked plot("w", WIDE_BETWEEN);
    EXPECT_EQ(Left(plot, "w", 3), (Step{"W", 2})) << "W covers the columns 1 and 2";
    EXPECT_EQ(Left(plot, "A1", 2), (Step{"A", 1}));
    EXPECT_EQ(Left(plot, "A", 1), (Step{"R", 0}));
    EXPECT_EQ(Left(plot, "R", 7), (Step{"R", 7}));
    EXPECT_EQ(Left(plot, "A", 7, NO_LIMIT, "A"), (Step{"A", 7})) << "the current root";
}

TEST(VisIcicleLayoutNavigation, LeftDoesNotLeaveTheLastColumns)
{
    const Walked plot("w", WIDE_BETWEEN);
    EXPECT_EQ(Left(plot, "w", 3, 1), (Step{"w", 3}));
    EXPECT_EQ(Left(plot, "w", 3, 2), (Step{"W", 2}));
    EXPECT_EQ(Left(plot, "A1", 2, 2), (Step{"A1", 2}));
    EXPECT_EQ(Left(plot, "A1", 2, 3), (Step{"A", 1}));
}

TEST(VisIcicleLayoutNavigation, LeftStopsAtAParentWithoutCache)
{
    const Walked plot("z", WIDE_BETWEEN);
    Cache* const a = plot.Of("A");
    plot.Node("A")->SetCache(nullptr);
    EXPECT_EQ(Left(plot, "A1", 2), (Step{"A1", 2}));
    plot.layout->SetExtendWithKeys(1);
    plot.layout->SetNLastNodes(1);
    plot.Select("A1");
    EXPECT_EQ(plot.After({LEFT}), "A1");
    EXPECT_EQ(plot.layout->GetNLastNodes(), 1U) << "no range lets it through";
    plot.Node("A")->SetCache(a);
}

TEST(VisIcicleLayoutNavigation, RightGoesToTheLowestChild)
{
    const Walked plot("R", WIDE_BETWEEN);
    EXPECT_EQ(Right(plot, "R", 0), (Step{"B", 1}));
    EXPECT_EQ(Right(plot, "A", 1), (Step{"A2", 2}));
    EXPECT_EQ(Right(plot, "z", 9), (Step{"z", 9})) << "a leaf";
}

TEST(VisIcicleLayoutNavigation, LeftThenRightReturnsToTheSameChildEvenWhenItIsNotTheLast)
{
    const Walked plot("x", WIDE_BETWEEN);
    EXPECT_EQ(plot.After({LEFT, LEFT, LEFT, LEFT, RIGHT, RIGHT, RIGHT, RIGHT}),
              "A1 A R R A A1 x x");
}

TEST(VisIcicleLayoutNavigation, AChildThatLeftItsParentIsNotGoneBackTo)
{
    const Walked plot("x", WIDE_BETWEEN);
    EXPECT_EQ(plot.After({LEFT}), "A1");
    const auto x = trees::NodeRef::Retain(plot.Node("x"));
    std::vector<VisDataTree*>& children = plot.Node("A1")->GetChildren();
    // Without a reset, which would forget the way back as well.
    VisDataTree* const first = children.front();
    children.erase(children.begin());
    EXPECT_EQ(plot.After({RIGHT}), "y");
    children.insert(children.begin(), first);
    EXPECT_EQ(plot.After({LEFT}), "A1");
    EXPECT_EQ(plot.After({RIGHT}), "y");
}

TEST(VisIcicleLayoutNavigation, AChildWhoseCacheIsGoneIsNeverReadThrough)
{
    const Walked plot("R", WIDE_BETWEEN);
    VisDataTree* const x = plot.Node("x");
    Cache* const own = CacheOf(x);
    x->SetCache(nullptr);
    {
        Cache passing(x);
        unsigned int cursor = 0;
        passing.GetNextNodeIcicleLeftDirection(cursor, plot.root.Get(), NO_LIMIT);
        x->SetCache(nullptr);
    }
    // Linking resets the caches above: what A1 remembers has to survive for this test.
    EXPECT_EQ(Right(plot, "A1", 0), (Step{"y", 3}));
    x->SetCache(own);
}

TEST(VisIcicleLayoutNavigation, RightStaysWhereTheLastChildHasNoCache)
{
    const Walked plot("A", WIDE_BETWEEN);
    Cache* const a2 = plot.Of("A2");
    plot.Node("A2")->SetCache(nullptr);
    EXPECT_EQ(Right(plot, "A", 1), (Step{"A", 1}));
    plot.Node("A2")->SetCache(a2);
}

TEST(VisIcicleLayoutNavigation, ACacheWithoutNodeLeadsNowhere)
{
    Cache alone(nullptr);
    unsigned int cursor = 5;
    EXPECT_EQ(alone.GetNextNodeIcicleUpDirection(cursor, nullptr, 3), nullptr);
    EXPECT_EQ(alone.GetNextNodeIcicleDownDirection(cursor, nullptr, 3), nullptr);
    EXPECT_EQ(alone.GetNextNodeIcicleLeftDirection(cursor, nullptr, 3), nullptr);
    EXPECT_EQ(alone.GetNextNodeIcicleRightDirection(cursor), nullptr);
    EXPECT_EQ(cursor, 5U);
}

// ---- arrow keys

TEST(VisIcicleLayoutNavigation, AKeyOfAnotherCodeStaysAtTheSelection)
{
    const Walked plot("A2", WIDE_BETWEEN);
    EXPECT_EQ(plot.layout->GetNodeViaNavigation(0x123), plot.Node("A2"));
}

TEST(VisIcicleLayoutNavigation, WithoutASelectionThereIsNothingToGoTo)
{
    const Walked plot("A2", WIDE_BETWEEN);
    plot.layout->SetTreeRoot(nullptr);
    for (const unsigned int key : {UP, DOWN, LEFT, RIGHT})
        EXPECT_EQ(plot.layout->GetNodeViaNavigation(key), nullptr);
}

TEST(VisIcicleLayoutNavigation, ASelectionWhoseCacheForgotItGoesUpAndDownToTheFirstLeaf)
{
    const Walked plot("A2", WIDE_BETWEEN);
    Cache fresh(nullptr);
    Cache* const a2 = plot.Of("A2");
    *a2 = fresh;
    ASSERT_EQ(a2->GetNode(), nullptr);
    EXPECT_EQ(plot.layout->GetNodeViaNavigation(UP), plot.Node("x"));
    EXPECT_EQ(plot.layout->GetNodeViaNavigation(DOWN), plot.Node("x"));
    EXPECT_EQ(plot.layout->GetNodeViaNavigation(RIGHT), nullptr);
    EXPECT_EQ(plot.layout->GetNodeViaNavigation(LEFT), nullptr);
}

TEST(VisIcicleLayoutNavigation, LeftStaysBelowAMergedCurrentRoot)
{
    const Walked plot("A", WIDE_BETWEEN);
    plot.root->SetIsMerged(1);
    EXPECT_EQ(plot.After({LEFT}), "A");
    plot.root->SetIsMerged(0);
    EXPECT_EQ(plot.After({LEFT}), "R");
}

TEST(VisIcicleLayoutNavigation, AClickSetsTheColumnOfTheKeyboard)
{
    const Walked plot("z", WIDE_BETWEEN);
    plot.layout->OnMouseSelection(plot.Node("A"));
    EXPECT_EQ(plot.After({DOWN}), "W");
    plot.layout->OnMouseSelection(plot.Node("z"));
    EXPECT_EQ(plot.After({DOWN}), "w");
    plot.Select("A");
    EXPECT_EQ(plot.After({DOWN}), "w") << "a selection by the program keeps the column";
}

TEST(VisIcicleLayoutNavigation, BeforeAnyClickUpAndDownEndAtLeaves)
{
    const Plot plot(WIDE_BETWEEN);
    plot.layout->AlignIciclePlotLeaves(nullptr);
    plot.Draw();
    plot.Select("A");
    EXPECT_EQ(plot.Key(DOWN), 0U);
    EXPECT_EQ(plot.Selected(), "w");
}

// ---- the edge of the last columns

TEST(VisIcicleLayoutNavigation, AtTheEdgeOfTheRangeLeftDoesNotMoveWithoutExtending)
{
    const Walked plot("z", WIDE_BETWEEN);
    plot.layout->SetNLastNodes(1);
    Listener listener(*plot.layout.Get());
    EXPECT_EQ(plot.After({LEFT}), "z");
    EXPECT_EQ(plot.layout->GetNLastNodes(), 1U);
    EXPECT_EQ(listener.Take(), "select z > z; ");
}

TEST(VisIcicleLayoutNavigation, AtTheEdgeOfTheRangeLeftWidensItUntilTheParentShows)
{
    const Walked plot("w", WIDE_BETWEEN);
    plot.layout->SetNLastNodes(1);
    plot.layout->SetExtendWithKeys(1);
    EXPECT_EQ(plot.layout->GetExtendWithKeys(), 1);
    Listener listener(*plot.layout.Get());
    EXPECT_EQ(plot.After({LEFT}), "W");
    EXPECT_EQ(plot.layout->GetNLastNodes(), 2U);
    EXPECT_EQ(listener.Take(), "columns 1 > 2 400000; select w > W; ");
    EXPECT_EQ(plot.After({LEFT}), "R") << "W begins two columns before the range";
    EXPECT_EQ(plot.layout->GetNLastNodes(), 4U);
    EXPECT_EQ(listener.Take(), "columns 2 > 4 400000; select W > R; ");
    EXPECT_EQ(plot.After({LEFT}), "R");
    EXPECT_EQ(plot.layout->GetNLastNodes(), 4U) << "the current root widens nothing";
}

TEST(VisIcicleLayoutNavigation, WideningStopsWithoutParentAndAtTheEndOfTheNumbers)
{
    const Walked plot("w", WIDE_BETWEEN);
    plot.layout->SetExtendWithKeys(1);
    plot.layout->SetCurrentRoot(plot.Node("W"), 1);
    plot.layout->SetNLastNodes(1);
    plot.Select("R");
    EXPECT_EQ(plot.layout->GetNodeViaNavigation(LEFT), plot.root.Get());
    EXPECT_EQ(plot.layout->GetNLastNodes(), 1U) << "no parent to show";

    // A cursor right of the leaf's end makes the distance enormous.
    plot.layout->SetCurrentRoot(plot.root.Get(), 0);
    plot.layout->SetNLastNodes(1);
    plot.Select("A1");
    VisIcicleAccess::SetCursor(*plot.Of("A1"), 5);
    VisIcicleAccess::SetCursor(*plot.Of("x"), 3);
    EXPECT_EQ(plot.layout->GetNodeViaNavigation(LEFT), plot.Node("A"));
    EXPECT_EQ(plot.layout->GetNLastNodes(), NO_LIMIT) << "4 - 5 is the largest number";
}

namespace {

/// Presses left at the edge of the range with extending on; gives the number of columns behind it.
unsigned int ColumnsAfterLeftAtTheEdge()
{
    const Walked plot("w", WIDE_BETWEEN);
    plot.layout->SetNLastNodes(1);
    plot.layout->SetExtendWithKeys(1);
    plot.Key(LEFT);
    return plot.layout->GetNLastNodes();
}

int ExitCodeAfterLeft(const char* value)
{
    setenv("DisableVisIcicleLayoutNavigateAndExtend", value, 1);
    const unsigned int before = ColumnsAfterLeftAtTheEdge();
    // The environment is asked once.
    unsetenv("DisableVisIcicleLayoutNavigateAndExtend");
    const unsigned int behind = ColumnsAfterLeftAtTheEdge();
    return static_cast<int>(10 * before + behind);
}

/// A process of its own, in which nobody has asked the environment yet.
struct VisIcicleLayoutEnvironmentDeathTest : testing::Test {
    VisIcicleLayoutEnvironmentDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

}  // namespace

TEST_F(VisIcicleLayoutEnvironmentDeathTest, WithTheVariableSetTheRangeNeverGrows)
{
    EXPECT_EXIT(std::_Exit(ExitCodeAfterLeft("1")), testing::ExitedWithCode(11), "");
}

TEST_F(VisIcicleLayoutEnvironmentDeathTest, AnEmptyVariableCountsAsSet)
{
    EXPECT_EXIT(std::_Exit(ExitCodeAfterLeft("")), testing::ExitedWithCode(11), "");
}

TEST_F(VisIcicleLayoutEnvironmentDeathTest, WithoutTheVariableTheRangeGrowsAndStaysGrowing)
{
    const auto exitCode = [] {
        unsetenv("DisableVisIcicleLayoutNavigateAndExtend");
        const unsigned int before = ColumnsAfterLeftAtTheEdge();
        setenv("DisableVisIcicleLayoutNavigateAndExtend", "1", 1);
        return static_cast<int>(10 * before + ColumnsAfterLeftAtTheEdge());
    };
    EXPECT_EXIT(std::_Exit(exitCode()), testing::ExitedWithCode(22), "");
}

TEST_F(VisIcicleLayoutEnvironmentDeathTest, TheFirstQuestionMayComeFromSeveralThreadsAtOnce)
{
    const auto exitCode = [] {
        setenv("DisableVisIcicleLayoutNavigateAndExtend", "1", 1);
        // Below a merged root left asks for the switch and does nothing else: a layout belongs to
        // one thread, the switch to the process.
        std::vector<std::unique_ptr<Walked>> plots;
        for (int i = 0; i < 4; ++i) {
            plots.push_back(std::make_unique<Walked>("A", WIDE_BETWEEN));
            plots.back()->root->SetIsMerged(1);
        }
        std::vector<std::thread> threads;
        for (const auto& plot : plots)
            threads.emplace_back([&plot] { plot->layout->GetNodeViaNavigation(LEFT); });
        for (std::thread& thread : threads)
            thread.join();
        unsetenv("DisableVisIcicleLayoutNavigateAndExtend");
        return static_cast<int>(ColumnsAfterLeftAtTheEdge());
    };
    EXPECT_EXIT(std::_Exit(exitCode()), testing::ExitedWithCode(1), "");
}

// ---- the number of last columns

TEST(VisIcicleLayoutNavigation, SettingTheSameNumberDoesNothing)
{
    const Walked plot("w", WIDE_BETWEEN);
    Listener listener(*plot.layout.Get());
    plot.layout->SetNLastNodes(NO_LIMIT);
    EXPECT_EQ(listener.Take(), "");
    plot.layout->SetNLastNodes(3);
    EXPECT_EQ(listener.Take(), "columns all > 3 700000; ");
    plot.layout->SetNLastNodes(3);
    EXPECT_EQ(listener.Take(), "");
    plot.layout->SetNLastNodes(5);
    EXPECT_EQ(listener.Take(), "columns 3 > 5 400000; ");
}

TEST(VisIcicleLayoutNavigation, FewerColumnsMoveASelectionLeftOfThemToTheRight)
{
    const Walked plot("R", WIDE_BETWEEN);
    Listener listener(*plot.layout.Get());
    plot.layout->SetNLastNodes(2);
    EXPECT_EQ(plot.Selected(), "B1");
    EXPECT_EQ(listener.Take(), "select R > B1; columns all > 2 700000; ");
    EXPECT_EQ(plot.After({UP}), "W") << "the keyboard's column moved along to column 2";
    plot.layout->SetNLastNodes(1);
    EXPECT_EQ(plot.Selected(), "w");
}

TEST(VisIcicleLayoutNavigation, TheWayBackDecidesWhereASelectionIsMovedTo)
{
    const Walked plot("x", WIDE_BETWEEN);
    EXPECT_EQ(plot.After({LEFT, LEFT, LEFT}), "A1 A R");
    plot.layout->SetNLastNodes(1);
    EXPECT_EQ(plot.Selected(), "x");
}

TEST(VisIcicleLayoutNavigation, MoreColumnsAndASelectionAmongThemMoveNothing)
{
    const Walked plot("z", WIDE_BETWEEN);
    Listener listener(*plot.layout.Get());
    plot.layout->SetNLastNodes(1);
    EXPECT_EQ(listener.Take(), "columns all > 1 700000; ") << "z stays";
    plot.layout->OnMouseSelection(plot.root.Get());
    listener.Take();
    plot.layout->SetNLastNodes(2);
    EXPECT_EQ(plot.Selected(), "R") << "not visible, but the number was raised";
    EXPECT_EQ(listener.Take(), "columns 1 > 2 400000; ");
}

TEST(VisIcicleLayoutNavigation, WithNoColumnAtAllTheSelectionEndsAtALeaf)
{
    const Walked plot("R", WIDE_BETWEEN);
    Listener listener(*plot.layout.Get());
    plot.layout->SetNLastNodes(0);
    EXPECT_EQ(plot.Selected(), "u");
    EXPECT_EQ(listener.Take(), "select R > u; columns all > 0 700000; ");
    EXPECT_EQ(plot.DrawLast(0), 4U);
    plot.ForEach([](VisDataTree& node) { EXPECT_EQ(CacheOf(&node)->IsDiscarded(), 1); });
    EXPECT_EQ(plot.Key(FEWER), 0U);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 0U);
    EXPECT_EQ(plot.Key(MORE), 0U);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 1U) << "left by the page key";
}

TEST(VisIcicleLayoutNavigation, ASelectionWithoutCacheOrWithoutCachedLeafIsNotMoved)
{
    const Walked plot("A", WIDE_BETWEEN);
    Cache* const leaf = plot.Of("x");
    plot.Node("x")->SetCache(nullptr);
    Listener listener(*plot.layout.Get());
    plot.layout->SetNLastNodes(1);
    EXPECT_EQ(listener.Take(), "columns all > 1 700000; ");
    plot.Node("x")->SetCache(leaf);
}

TEST(VisIcicleLayoutNavigation, MovingASelectionOverManyLevelsIsNotQuadratic)
{
    VisDataTree* last = nullptr;
    const trees::NodeRef root = trees::MakeChain(trees::MANY_LEVELS, &last);
    const auto layout = VisReference<VisIcicleLayout>::Adopt(
        VisIcicleLayout::CreateLayout(nullptr, root.Get(), nullptr));
    layout->SetCurrentSelection(root.Get());
    layout->SetNLastNodes(1);
    EXPECT_EQ(layout->GetCurrentSelection(), last);
    layout->SetTreeRoot(nullptr);
}

// ---- page keys

TEST(VisIcicleLayoutNavigation, TheFirstPageKeyForFewerJumpsBelowTheLimit)
{
    const Walked plot("w", WIDE_BETWEEN);
    Listener listener(*plot.layout.Get());
    EXPECT_EQ(plot.Key(MORE), 0U);
    EXPECT_EQ(listener.Take(), "") << "no limit cannot be raised";
    EXPECT_EQ(plot.Key(FEWER), 0U);
    EXPECT_EQ(listener.Take(), "columns all > 3 700000; ") << "leaves begin in column 3";
    EXPECT_EQ(plot.Key(FEWER), 0U);
    EXPECT_EQ(listener.Take(), "columns 3 > 2 700000; ");
    EXPECT_EQ(plot.Key(FEWER), 0U);
    EXPECT_EQ(plot.Key(FEWER), 0U);
    EXPECT_EQ(listener.Take(), "columns 2 > 1 700000; ") << "one column stays";
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(plot.Key(MORE), 0U);
    EXPECT_EQ(listener.Take(),
              "columns 1 > 2 400000; columns 2 > 3 400000; columns 3 > 4 400000; ");
    EXPECT_EQ(plot.layout->GetNLastNodes(), 4U) << "the limit";
    EXPECT_EQ(plot.Key(FEWER), 0U);
    EXPECT_EQ(listener.Take(), "columns 4 > 3 700000; ");
}

TEST(VisIcicleLayoutNavigation, AStretchedLeafLowersTheLimit)
{
    const Walked plot("a1");
    plot.Key(FEWER);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 1U) << "B ends in the last column from column 1 on";
}

TEST(VisIcicleLayoutNavigation, TheLimitOfASingleLeafIsOneColumn)
{
    const Walked plot("R", {"R"});
    plot.Key(FEWER);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 0U);
    plot.Key(MORE);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 1U);
    plot.Key(MORE);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 1U);
}

TEST(VisIcicleLayoutNavigation, WithoutCacheTheLimitIsTheNumberOfLevels)
{
    const Walked plot("R", WIDE_BETWEEN);
    Cache* const cache = plot.Root();
    plot.root->SetCache(nullptr);
    plot.layout->ApplyPageUpPageDown(FEWER);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 3U);
    for (int i = 0; i < 3; ++i)
        plot.layout->ApplyPageUpPageDown(MORE);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 4U);
    plot.root->SetCache(cache);
}

TEST(VisIcicleLayoutNavigation, WithoutCurrentRootOnlyFewerWorks)
{
    const Walked plot("R", WIDE_BETWEEN);
    plot.layout->SetTreeRoot(nullptr);
    plot.layout->ApplyPageUpPageDown(FEWER);
    EXPECT_EQ(plot.layout->GetNLastNodes(), NO_LIMIT - 1);
    plot.layout->ApplyPageUpPageDown(MORE);
    EXPECT_EQ(plot.layout->GetNLastNodes(), NO_LIMIT - 1);
    plot.layout->SetNLastNodes(1);
    plot.layout->ApplyPageUpPageDown(FEWER);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 1U);
}

TEST(VisIcicleLayoutNavigation, OtherCodesAndDisabledPageKeysChangeNothing)
{
    const Walked plot("R", WIDE_BETWEEN);
    plot.layout->ApplyPageUpPageDown(0x123);
    EXPECT_EQ(plot.layout->GetNLastNodes(), NO_LIMIT);
    plot.layout->SetEnablePageUpPageDown(0);
    EXPECT_EQ(plot.Key(FEWER), 1U);
    EXPECT_EQ(plot.layout->GetNLastNodes(), NO_LIMIT);
}

// ---- listeners

namespace {

/// Lowers the number of columns below the selection, which notifies of a selection and of columns;
/// at the given event the listener does its worst.
void RunWithListener(const std::string& when, const std::function<void(Walked&)>& answer)
{
    Walked plot("R", WIDE_BETWEEN);
    bool answered = false;
    const Listener listener(*plot.layout.Get(), [&](const std::string& event) {
        if (event == when && !answered) {
            answered = true;
            answer(plot);
        }
    });
    plot.layout->SetExtendWithKeys(1);
    for (const unsigned int columns : {2U, 1U})
        if (plot.layout)
            plot.layout->SetNLastNodes(columns);
    if (plot.layout)
        plot.Key(LEFT);
    if (plot.layout)
        plot.layout->OnMouseSelection(plot.layout->GetCurrentRoot());
    EXPECT_TRUE(answered);
}

}  // namespace

TEST(VisIcicleLayoutNavigation, AListenerMayReleaseTheLayout)
{
    for (const char* const event : {"select", "columns"})
        RunWithListener(event, [](Walked& plot) { plot.layout = icicles::LayoutRef(); });
}

TEST(VisIcicleLayoutNavigation, AListenerMayChangeTheRootOrTheTree)
{
    for (const char* const event : {"select", "columns"}) {
        RunWithListener(event,
                        [](Walked& plot) { plot.layout->SetCurrentRoot(plot.Node("W"), 1); });
        RunWithListener(event, [](Walked& plot) { plot.layout->SetTreeRoot(nullptr); });
        RunWithListener(event, [](Walked& plot) {
            const trees::NodeRef other = trees::MakeNode("other");
            plot.layout->EmptyStackOfLastTreeRoots();
            plot.layout->SetTreeRoot(other.Get());
        });
    }
}

TEST(VisIcicleLayoutNavigation, AListenerMayEditTheTree)
{
    for (const char* const event : {"select", "columns"}) {
        RunWithListener(event, [](Walked& plot) {
            while (!plot.root->GetChildren().empty())
                plot.root->GetChildren().back()->RemoveParent(1);
        });
        RunWithListener(event, [](Walked& plot) {
            trees::Append(plot.Node("A"), "late");
            plot.Draw();
        });
    }
}

TEST(VisIcicleLayoutNavigation, AListenerMayChangeTheNumberOfColumnsAgain)
{
    const Walked plot("R", WIDE_BETWEEN);
    Listener listener(*plot.layout.Get(), [&plot](const std::string& event) {
        if (event == "columns" && plot.layout->GetNLastNodes() > 1)
            plot.layout->SetNLastNodes(plot.layout->GetNLastNodes() - 1);
    });
    plot.layout->SetNLastNodes(4);
    EXPECT_EQ(plot.layout->GetNLastNodes(), 1U);
    EXPECT_EQ(plot.Selected(), "u");
}

TEST(VisIcicleLayoutNavigation, ANodeThatDiesWhileTheRangeGrowsIsNotGoneTo)
{
    const Walked plot("w", WIDE_BETWEEN);
    plot.layout->SetNLastNodes(1);
    plot.layout->SetExtendWithKeys(1);
    const Listener listener(*plot.layout.Get(), [&plot](const std::string& event) {
        if (event == "columns" && plot.Node("W"))
            plot.Node("W")->RemoveParent(1);
    });
    EXPECT_EQ(plot.Key(LEFT), 0U);
    EXPECT_EQ(plot.layout->GetCurrentSelection(), nullptr);
}

TEST(VisIcicleLayoutNavigation, ANodeOfTheFormerTreeIsNotGoneToWhileTheRangeGrows)
{
    const Walked plot("w", WIDE_BETWEEN);
    plot.layout->SetNLastNodes(1);
    plot.layout->SetExtendWithKeys(1);
    const trees::NodeRef other = trees::MakeNode("other");
    const Listener listener(*plot.layout.Get(), [&](const std::string& event) {
        if (event == "columns")
            plot.layout->SetTreeRoot(other.Get());
    });
    EXPECT_EQ(plot.Key(LEFT), 0U);
    EXPECT_EQ(plot.layout->GetCurrentSelection(), other.Get()) << "as the new tree brought it";
}

TEST(VisIcicleLayoutNavigation, ListenersThatNotifyWithoutEndAreCutOff)
{
    const Walked plot("R", WIDE_BETWEEN);
    int heard = 0;
    const Listener listener(*plot.layout.Get(), [&](const std::string& event) {
        ++heard;
        if (event == "columns")
            plot.layout->SetNLastNodes(plot.layout->GetNLastNodes() + 1);
    });
    plot.layout->SetNLastNodes(0);
    EXPECT_GE(heard, 64);
    EXPECT_LE(heard, 70);
}
