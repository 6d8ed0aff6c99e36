#include "VisTreeMapLayout.h"

#include "TestLayout.h"

#include "module/TreeMapFixture.h"

#include "private/TreeMapRectangles.h"

#include "support/Allocations.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <cstring>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

using treemaps::BagRef;
using treemaps::Cache;
using treemaps::FontRef;
using treemaps::Map;
using treemaps::MapRef;
using treemaps::SIDE_BY_SIDE;
using treemaps::STACKED;
using treemaps::THREE_LEAVES;

namespace {

const support::TreeSketch TWO_LEVELS = {"R", {{"A", {{"a"}, {"b"}}}, {"B", {{"c"}}}, {"C"}}};

/// The rectangle of every node, in pre-order.
std::vector<float> AllNumbers(VisDataTree* root)
{
    std::vector<float> numbers;
    VisPreOrderWalk<VisDataTree> walk(root);
    while (const VisDataTree* const node = walk.Next()) {
        const VisTreeSpaceFillingLayoutCache& cache = *VisCacheAccess::LayoutCacheOf(node);
        for (const float number :
             {cache.GetPos().x, cache.GetPos().y, cache.GetSize().x, cache.GetSize().y,
              cache.IsExpanded() ? 1.0f : 0.0f, cache.GetView() ? 1.0f : 0.0f})
            numbers.push_back(number);
    }
    return numbers;
}

bool SameBits(const std::vector<float>& a, const std::vector<float>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

int CountViews(const Map& map) { return map.bag->GetChildren()->Count(); }

}  // namespace

// ---- rectangles

TEST(VisTreeMapLayoutSlices, ModeZeroPutsTheChildrenSideBySide)
{
    //  0 1        33 35        67 69      101 102
    //  +----------------------------------------+ 30
    //  | R                                      |
    //  | +---------+ +----------+ +-----------+ | 16
    //  | |    0    | |    1     | |     2     | |
    //  | +---------+ +----------+ +-----------+ |  1
    //  +----------------------------------------+  0
    const Map map(THREE_LEAVES);
    map.layout->SliceAndDice(SIDE_BY_SIDE, {0.0f, 0.0f}, {102.0f, 30.0f}, nullptr, 1.0f);
    EXPECT_EQ(map.Rectangle("R"), "0,0 102x30");
    EXPECT_EQ(map.Rectangle("0"), "1,1 32x15");
    EXPECT_EQ(map.Rectangle("1"), "35,1 32x15");
    EXPECT_EQ(map.Rectangle("2"), "69,1 32x15");
}

TEST(VisTreeMapLayoutSlices, ModeOneStacksTheChildrenFromTheBottom)
{
    //  +------+ 64
    //  | R    |
    //  | +--+ | 50
    //  | | 2| |
    //  | +--+ | 35
    //  | +--+ | 33
    //  | | 1| |
    //  | +--+ | 18
    //  | +--+ | 16
    //  | | 0| |
    //  | +--+ |  1
    //  +------+  0
    const Map map(THREE_LEAVES);
    map.layout->SliceAndDice(STACKED, {0.0f, 0.0f}, {34.0f, 64.0f}, nullptr, 1.0f);
    EXPECT_EQ(map.Rectangle("0"), "1,1 32x15");
    EXPECT_EQ(map.Rectangle("1"), "1,18 32x15");
    EXPECT_EQ(map.Rectangle("2"), "1,35 32x15");
}

TEST(VisTreeMapLayoutSlices, AModeAboveOneStacksAsWell)
{
    const Map map(THREE_LEAVES);
    map.layout->SliceAndDice(static_cast<VisTreeMap_SliceDice>(5), {0.0f, 0.0f}, {34.0f, 64.0f},
                             nullptr, 1.0f);
    EXPECT_EQ(map.Rectangle("2"), "1,35 32x15");
}

TEST(VisTreeMapLayoutSlices, DrawBeginsInModeOneAndTakesTurns)
{
    const Map map(TWO_LEVELS);
    map.Draw(1000.0f, 500.0f);
    EXPECT_EQ(map.Of("A")->GetPos().x, map.Of("B")->GetPos().x) << "A, B and C are stacked";
    EXPECT_LT(map.Of("A")->GetPos().y, map.Of("B")->GetPos().y);
    EXPECT_EQ(map.Of("a")->GetPos().y, map.Of("b")->GetPos().y) << "a and b stand side by side";
    EXPECT_LT(map.Of("a")->GetPos().x, map.Of("b")->GetPos().x);
}

TEST(VisTreeMapLayoutSlices, StripsAreInProportionToTheMinimumSizes)
{
    // A needs 70 (32 + 32 + 2 for its leaves, two frames of 2), B 32. Of 108 - 2 - 2 units A gets
    // 104 x 70 / 102 = 71.37 and B 32.63.
    const Map map({"R", {{"A", {{"S", {{"a"}, {"b"}}}}}, {"B"}}});
    map.layout->SliceAndDice(SIDE_BY_SIDE, {0.0f, 0.0f}, {108.0f, 200.0f}, nullptr, 1.0f);
    EXPECT_EQ(map.Rectangle("A"), "1,1 71x185");
    EXPECT_EQ(map.Rectangle("B"), "74.37,1 33x185");
}

TEST(VisTreeMapLayoutSlices, AStripIsRoundedButTheNextOneStartsWhereItWouldHaveEnded)
{
    const Map map(THREE_LEAVES);
    // Three shares of (107 - 2 - 4) / 3 = 33.67 units.
    map.layout->SliceAndDice(SIDE_BY_SIDE, {0.0f, 0.0f}, {107.0f, 30.0f}, nullptr, 1.0f);
    EXPECT_EQ(map.Rectangle("0"), "1,1 34x15");
    EXPECT_EQ(map.Rectangle("1"), "36.67,1 34x15");
    EXPECT_EQ(map.Rectangle("2"), "72.33,1 34x15") << "it overhangs the inner area by a third";
}

TEST(VisTreeMapLayoutSlices, AnEqualSplitIsNotRounded)
{
    const Map map({"R", {{"A", {{"S", {{"a"}, {"b"}, {"c"}, {"d"}}}}}, {"B"}}});
    map.layout->SliceAndDice(SIDE_BY_SIDE, {0.0f, 0.0f}, {101.0f, 200.0f}, nullptr, 1.0f);
    EXPECT_EQ(map.Rectangle("A"), "1,1 48.5x185");
    EXPECT_EQ(map.Rectangle("B"), "51.5,1 48.5x185");
}

TEST(VisTreeMapLayoutSlices, InAnEqualSplitAChildWithoutCacheLeavesItsStripEmpty)
{
    const Map map({"R", {{"X"}, {"A", {{"S", {{"a"}, {"b"}, {"c"}, {"d"}}}}}, {"B"}}});
    Cache* const cache = map.Of("X");
    map.Node("X")->SetCache(nullptr);
    map.layout->SliceAndDice(SIDE_BY_SIDE, {0.0f, 0.0f}, {150.0f, 200.0f}, nullptr, 1.0f);
    EXPECT_EQ(map.Rectangle("A"), "51,1 48x185");
    EXPECT_EQ(map.Rectangle("B"), "101,1 48x185");
    map.Node("X")->SetCache(cache);
}

TEST(VisTreeMapLayoutSlices, InAProportionalSplitAChildWithoutCacheTakesNoPartButItsGap)
{
    const Map map(THREE_LEAVES);
    Cache* const cache = map.Of("1");
    map.Node("1")->SetCache(nullptr);
    map.layout->SliceAndDice(SIDE_BY_SIDE, {0.0f, 0.0f}, {106.0f, 30.0f}, nullptr, 1.0f);
    EXPECT_EQ(map.Rectangle("0"), "1,1 50x15") << "(106 - 2 - 4) x 32 / 64";
    EXPECT_EQ(map.Rectangle("2"), "53,1 50x15");
    map.Node("1")->SetCache(cache);
}

// ---- views

TEST(VisTreeMapLayoutSlices, ExpandedNodesAndLeavesAreFlatAndCollapsedOnesHaveTheGrid)
{
    const Map map({"R", {{"A", {{"a"}, {"b"}}}, {"B"}}});
    map.layout->SliceAndDice(SIDE_BY_SIDE, {0.0f, 0.0f}, {72.0f, 40.0f}, map.font.Get(), 1.0f);
    EXPECT_EQ(map.Roles("R"), "fill label");
    EXPECT_EQ(map.Roles("A"), "texture label") << "25 units of height are not enough for a and b";
    EXPECT_EQ(map.Roles("B"), "fill label");
    EXPECT_NE(map.Root()->IsExpanded(), 0);
    EXPECT_EQ(map.Of("A")->IsExpanded(), 0);
    EXPECT_EQ(map.Of("A")->IsDiscarded(), 0);
    EXPECT_NE(map.Of("B")->IsExpanded(), 0);
    EXPECT_FALSE(map.Shows("a"));
    EXPECT_NE(map.Of("a")->IsDiscarded(), 0);
}

TEST(VisTreeMapLayoutSlices, PositionsAreScaledAboutTheOriginAndSizesAreScaled)
{
    const Map map(THREE_LEAVES);
    map.layout->SliceAndDice(SIDE_BY_SIDE, {10.0f, 20.0f}, {102.0f, 30.0f}, map.font.Get(), 2.0f);
    EXPECT_EQ(map.Rectangle("1"), "45,21 32x15") << "caches keep layout units";
    const auto* const fill =
        viewreading::Find<KUV2DPolygonRep>(map.Of("1")->GetView()->GetBagRep(), "fill");
    EXPECT_EQ(fill->GetPoints(), (std::vector<float>{80, 22, 144, 22, 144, 52, 80, 52}));
    const auto* const label =
        viewreading::Find<KUV2DAnnotationTextRep>(map.Of("1")->GetView()->GetBagRep(), "label");
    EXPECT_EQ(label->GetTextSize(), 28.0f);
}

TEST(VisTreeMapLayoutSlices, ColoursFollowTheDepthFromTheTreeRoot)
{
    const Map map(TWO_LEVELS);
    map.Draw(1000.0f, 500.0f);
    const auto colour = [&map](const char* label) {
        return viewreading::ColourOf(
            *viewreading::Find<KUV2DPolygonRep>(map.Of(label)->GetView()->GetBagRep(), "fill"));
    };
    EXPECT_EQ(colour("R"), (viewreading::Bytes{0x00, 0x7D, 0xA3, 255}));
    EXPECT_EQ(colour("A"), (viewreading::Bytes{0x00, 0x88, 0xDE, 255}));
    EXPECT_EQ(colour("a"), (viewreading::Bytes{0x77, 0xD7, 0xED, 255}));
    map.layout->SetCurrentRoot(map.Node("A"), 1);
    EXPECT_EQ(colour("A"), (viewreading::Bytes{0x00, 0x88, 0xDE, 255}))
        << "a zoomed node keeps the colour of its level";
}

TEST(VisTreeMapLayoutSlices, ValuesColourInProportionToTheCurrentRoot)
{
    const Map map(THREE_LEAVES);
    map.Root()->SetSizeValue(200);
    map.Of("1")->SetSizeValue(50);
    map.Root()->SetResizeWithValue(1);
    map.Draw(400.0f, 100.0f);
    EXPECT_EQ(viewreading::ColourOf(
                  *viewreading::Find<KUV2DPolygonRep>(map.Of("1")->GetView()->GetBagRep(), "fill")),
              (viewreading::Bytes{63, 63, 63, 255}));
    EXPECT_EQ(map.Of("0")->GetSize().y, map.Of("1")->GetSize().y)
        << "areas do not follow the values";
}

TEST(VisTreeMapLayoutSlices, LabelsAreThoseOfTheNodesWithoutValues)
{
    const Map map(THREE_LEAVES);
    map.Root()->SetSizeValue(200);
    map.Root()->SetResizeWithValue(1);
    map.Draw(400.0f, 100.0f);
    const auto* const label =
        viewreading::Find<KUV2DAnnotationTextRep>(map.Root()->GetView()->GetBagRep(), "label");
    EXPECT_EQ(label->GetText(), KUVUnicodeString("R"));
    EXPECT_EQ(label->GetAnchor(), KUVAnchorPoint_UpperLeft);
}

TEST(VisTreeMapLayoutSlices, AParentStandsBelowItsChildrenInTheBag)
{
    const Map map(TWO_LEVELS);
    for (const float size : {1000.0f, 60.0f, 1000.0f}) {
        map.Draw(size, size);
        const list<KUVRep>* const bags = map.bag->GetChildren();
        const auto place = [&](const char* label) {
            for (int i = 0; i < bags->Count(); ++i) {
                if (map.Shows(label) && (*bags)[i] == map.Of(label)->GetView()->GetBagRep())
                    return i;
            }
            return -1;
        };
        EXPECT_EQ(place("R"), 0);
        if (map.Shows("a")) {
            EXPECT_LT(place("A"), place("a"));
        }
    }
}

TEST(VisTreeMapLayoutSlices, WithoutABagTheViewsHangNowhere)
{
    const trees::NodeRef root = trees::NodeRef::Adopt(support::MakeTree(THREE_LEAVES));
    const MapRef layout =
        MapRef::Adopt(VisTreeMapLayout::CreateLayout(nullptr, root.Get(), nullptr));
    layout->Draw({0.0f, 0.0f}, {200.0f, 200.0f}, nullptr, 1.0f);
    EXPECT_NE(static_cast<Cache*>(root->GetCache())->GetView(), nullptr);
}

// ---- drawing again, zooming

TEST(VisTreeMapLayoutSlices, DrawingTwiceChangesNothing)
{
    const Map map(TWO_LEVELS);
    map.Draw(333.3f, 222.2f);
    const std::vector<float> first = AllNumbers(map.root.Get());
    const int views = CountViews(map);
    map.Draw(333.3f, 222.2f);
    EXPECT_TRUE(SameBits(AllNumbers(map.root.Get()), first));
    EXPECT_EQ(CountViews(map), views);
}

TEST(VisTreeMapLayoutSlices, AShrunkPictureHidesWhatNoLongerFitsAndAGrownOneBringsItBack)
{
    const Map map(TWO_LEVELS);
    map.Draw(1000.0f, 500.0f);
    const std::vector<float> first = AllNumbers(map.root.Get());
    EXPECT_EQ(CountViews(map), 7);
    map.Draw(60.0f, 40.0f);
    EXPECT_EQ(CountViews(map), 1);
    map.Draw(1000.0f, 500.0f);
    EXPECT_TRUE(SameBits(AllNumbers(map.root.Get()), first));
}

TEST(VisTreeMapLayoutSlices, ZoomingFillsTheRectangleOfTheFormerRoot)
{
    const Map map(TWO_LEVELS);
    map.Draw(1000.0f, 500.0f);
    map.layout->SetCurrentRoot(map.Node("A"), 1);
    EXPECT_EQ(map.Rectangle("A"), "0,0 1000x500");
    EXPECT_FALSE(map.Shows("R"));
    EXPECT_FALSE(map.Shows("C"));
    EXPECT_TRUE(map.Shows("a"));
}

TEST(VisTreeMapLayoutSlices, DrawingBelowAHiddenAncestorIsHiddenAgainByThatAncestor)
{
    const Map map(TWO_LEVELS);
    map.Draw(1000.0f, 500.0f);
    map.layout->SetCurrentRoot(map.Node("A"), 1);
    map.layout->SetRedrawOnSetCurrentRoot(0);
    map.layout->SetCurrentRoot(map.Node("R"), 0);
    EXPECT_EQ(CountViews(map), 0);
    map.Draw(60.0f, 40.0f);
    EXPECT_EQ(CountViews(map), 1);
}

TEST(VisTreeMapLayoutSlices, ANodeMovedUnderACollapsedOneIsHiddenWithIt)
{
    const Map map({"R", {{"A", {{"a"}, {"b"}, {"c"}, {"d"}, {"e"}, {"f"}, {"g"}}}, {"B"}}});
    map.layout->SliceAndDice(STACKED, {0.0f, 0.0f}, {100.0f, 100.0f}, nullptr, 1.0f);
    ASSERT_FALSE(map.Shows("a"));
    ASSERT_TRUE(map.Shows("B"));
    map.Node("A")->InsertChild(map.Node("B"), /*resetCaches=*/0);
    map.layout->SliceAndDice(STACKED, {0.0f, 0.0f}, {100.0f, 50.0f}, nullptr, 1.0f);
    EXPECT_FALSE(map.Shows("B")) << "no ghost stays behind";
}

TEST(VisTreeMapLayoutSlices, DrawWithoutCurrentRootOrItsCacheDoesNothing)
{
    const Map map(THREE_LEAVES);
    Cache* const cache = map.Root();
    map.root->SetCache(nullptr);
    map.Draw(100.0f, 100.0f);
    map.layout->SliceAndDice(STACKED, {0.0f, 0.0f}, {100.0f, 100.0f}, nullptr, 1.0f);
    map.layout->LayoutChildrenInGrid({0.0f, 0.0f}, {100.0f, 100.0f}, nullptr, 1.0f);
    EXPECT_EQ(CountViews(map), 0);
    map.root->SetCache(cache);
    map.layout->SetTreeRoot(nullptr);
    map.Draw(100.0f, 100.0f);
    map.layout->SliceAndDice(STACKED, {0.0f, 0.0f}, {100.0f, 100.0f}, nullptr, 1.0f);
    map.layout->LayoutChildrenInGrid({0.0f, 0.0f}, {100.0f, 100.0f}, nullptr, 1.0f);
    EXPECT_EQ(CountViews(map), 0);
}

TEST(VisTreeMapLayoutSlices, EveryDrawSelectsTheSelectionAgain)
{
    const Map map(THREE_LEAVES);
    int selections = 0;
    map.layout->GetCallbackManager()->Subscribe(
        VisTreeMapLayout::ON_SELECT_NODE(), map.layout.Get(),
        [&selections](const char*, KUVNotification*, KUVBaseUnknown*) { ++selections; });
    map.Draw(400.0f, 100.0f);
    EXPECT_EQ(selections, 1);
    map.Draw(100.0f, 50.0f);
    EXPECT_EQ(selections, 2) << "in the grid as well";
    EXPECT_EQ(map.Of("0")->GetView()->GetSelectionStatus(), 1);
}

TEST(VisTreeMapLayoutSlices, AListenerMayReleaseTheLayoutDuringADraw)
{
    Map map(THREE_LEAVES);
    VisTreeMapLayout* const layout = map.layout.Detach();
    layout->GetCallbackManager()->Subscribe(
        VisTreeMapLayout::ON_SELECT_NODE(), layout,
        [layout](const char*, KUVNotification*, KUVBaseUnknown*) { layout->Release(); });
    layout->Draw({0.0f, 0.0f}, {400.0f, 100.0f}, nullptr, 1.0f);
    EXPECT_EQ(map.bag->GetReferenceCount(), 1U);
    EXPECT_EQ(CountViews(map), 0);
}

TEST(VisTreeMapLayoutSlices, TheRectanglesAreTheSameWithoutViews)
{
    const Map map(TWO_LEVELS);
    map.layout->SliceAndDice(STACKED, {3.0f, 4.0f}, {333.3f, 222.2f}, nullptr, 1.0f);
    const std::string drawn = map.Rectangle("R") + map.Rectangle("b") + map.Rectangle("c");
    const Map other(TWO_LEVELS);
    LayOutTreeMapRectangles(other.root.Get(), STACKED, {3.0f, 4.0f}, {333.3f, 222.2f});
    EXPECT_EQ(other.Rectangle("R") + other.Rectangle("b") + other.Rectangle("c"), drawn);
    EXPECT_EQ(CountViews(other), 0);
    LayOutTreeMapRectangles(nullptr, STACKED, {3.0f, 4.0f}, {333.3f, 222.2f});
}

// ---- odd numbers, size, memory

TEST(VisTreeMapLayoutSlices, OddNumbersAreHarmless)
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
    const Map map(TWO_LEVELS);
    for (const float number : odd) {
        for (int place = 0; place < 5; ++place) {
            float numbers[] = {1.0f, 2.0f, 300.0f, 200.0f, 0.001f};
            numbers[place] = number;
            const KUVMathPoint2Df origin(numbers[0], numbers[1]);
            const KUVMathPoint2Df size(numbers[2], numbers[3]);
            map.layout->Draw(origin, size, map.font.Get(), numbers[4]);
            map.layout->LayoutChildrenInGrid(origin, size, map.font.Get(), numbers[4]);
            EXPECT_TRUE(map.Shows("R")) << number << " at " << place;
        }
    }
    map.Draw(1000.0f, 500.0f);
    EXPECT_EQ(CountViews(map), 7) << "nothing odd is left behind";
}

TEST(VisTreeMapLayoutSlices, ManyLevelsAreDrawnWithoutRecursion)
{
    VisDataTree* last = nullptr;
    const trees::NodeRef root = trees::MakeChain(trees::MANY_LEVELS, &last);
    const MapRef layout =
        MapRef::Adopt(VisTreeMapLayout::CreateLayout(nullptr, root.Get(), nullptr));
    layout->Draw({0.0f, 0.0f}, {1000.0f, 1000.0f}, nullptr, 1.0f);
    const KUVMathPoint2Df minimum = static_cast<Cache*>(root->GetCache())->GetComputedMinimumSize();
    LayOutTreeMapRectangles(root.Get(), STACKED, {0.0f, 0.0f}, minimum);
    // A million roundings let the sizes drift, but the last leaf is reached and has room.
    EXPECT_GE(static_cast<Cache*>(last->GetCache())->GetSize().x, 32.0f);
    EXPECT_GE(static_cast<Cache*>(last->GetCache())->GetSize().y, 15.0f);
    layout->SetTreeRoot(nullptr);
}

TEST(VisTreeMapLayoutSlices, ManyChildrenOfOneNodeAreDrawn)
{
    const trees::NodeRef root =
        trees::NodeRef::Adopt(support::MakeStar(static_cast<int>(trees::MANY_LEVELS)));
    const MapRef layout =
        MapRef::Adopt(VisTreeMapLayout::CreateLayout(nullptr, root.Get(), nullptr));
    layout->Draw({0.0f, 0.0f}, {1000.0f, 1000.0f}, nullptr, 1.0f);
    EXPECT_EQ(static_cast<Cache*>(root->GetCache())->IsExpanded(), 0);
    layout->SetTreeRoot(nullptr);
}

TEST(VisTreeMapLayoutSlices, EveryFailingAllocationLeavesALayoutThatCanDrawAgain)
{
    const std::size_t failures = support::ForEveryFailingAllocation([] {
        const trees::NodeRef root = trees::MakeNode("a node with a long label");
        for (int i = 0; i < 3; ++i) {
            VisDataTree* const child = trees::Append(root.Get(), "another long label of a node");
            for (int k = 0; k < 3; ++k)
                trees::Append(child, "leaf");
        }
        const BagRef bag = BagRef::Adopt(KUV2DBagRep::CreateRep());
        const FontRef font = FontRef::Adopt(support::MakeFixedWidthFont());
        const MapRef layout =
            MapRef::Adopt(VisTreeMapLayout::CreateLayout(nullptr, root.Get(), bag.Get()));
        if (!layout)
            return;
        for (const float width : {300.0f, 40.0f, 300.0f}) {
            try {
                layout->Draw({0.0f, 0.0f}, {width, 200.0f}, font.Get(), 1.0f);
            } catch (const std::bad_alloc&) {
                layout->Draw({0.0f, 0.0f}, {width, 200.0f}, font.Get(), 1.0f);
            }
        }
    });
    EXPECT_GT(failures, 100U);
    std::cout << "count: " << failures << " failing allocations while a tree map is drawn\n";
}

// ---- properties

namespace {

struct Drawn {
    explicit Drawn(unsigned int seed, int nodes)
        : root(trees::NodeRef::Adopt(support::MakeRandomTree(seed, nodes, 8))),
          layout(MapRef::Adopt(VisTreeMapLayout::CreateLayout(nullptr, root.Get(), nullptr)))
    {
    }
    void Draw(KUVMathPoint2Df size) const
    {
        layout->Draw({0.0f, 0.0f}, size, nullptr, 1.0f / 256.0f);
    }

    trees::NodeRef root;
    MapRef layout;
};

const VisTreeSpaceFillingLayoutCache& CacheOf(const VisDataTree* node)
{
    return *VisCacheAccess::LayoutCacheOf(node);
}

/// How far one rectangle reaches into another, along the axis on which it does so least.
float Overlap(const VisTreeSpaceFillingLayoutCache& a, const VisTreeSpaceFillingLayoutCache& b)
{
    const float x = std::fmin(a.GetPos().x + a.GetSize().x, b.GetPos().x + b.GetSize().x) -
                    std::fmax(a.GetPos().x, b.GetPos().x);
    const float y = std::fmin(a.GetPos().y + a.GetSize().y, b.GetPos().y + b.GetSize().y) -
                    std::fmax(a.GetPos().y, b.GetPos().y);
    return std::fmin(x, y);
}

KUVMathPoint2Df AnySize()
{
    return {static_cast<float>(*rc::gen::inRange(1, 400000)) / 100.0f,
            static_cast<float>(*rc::gen::inRange(1, 400000)) / 100.0f};
}

constexpr float ROUNDING = 0.51f;

}  // namespace

RC_GTEST_PROP(VisTreeMapLayoutProperties, AShownChildLiesInsideItsParent, (unsigned int seed))
{
    const Drawn drawn(seed, *rc::gen::inRange(1, 80));
    drawn.Draw(AnySize());
    VisPreOrderWalk<VisDataTree> walk(drawn.root.Get());
    while (const VisDataTree* const node = walk.Next()) {
        if (!node->GetParent() || !CacheOf(node).GetView())
            continue;
        const VisTreeSpaceFillingLayoutCache& child = CacheOf(node);
        const VisTreeSpaceFillingLayoutCache& parent = CacheOf(node->GetParent());
        RC_ASSERT(parent.GetView());
        RC_ASSERT(child.GetPos().x >= parent.GetPos().x);
        RC_ASSERT(child.GetPos().y >= parent.GetPos().y);
        RC_ASSERT(child.GetPos().x + child.GetSize().x <=
                  parent.GetPos().x + parent.GetSize().x + ROUNDING);
        RC_ASSERT(child.GetPos().y + child.GetSize().y <=
                  parent.GetPos().y + parent.GetSize().y - 14.0f + ROUNDING);
    }
}

RC_GTEST_PROP(VisTreeMapLayoutProperties, ShownSiblingsDoNotOverlapBeyondTheRounding,
              (unsigned int seed))
{
    const Drawn drawn(seed, *rc::gen::inRange(1, 80));
    drawn.Draw(AnySize());
    VisPreOrderWalk<VisDataTree> walk(drawn.root.Get());
    while (const VisDataTree* const node = walk.Next()) {
        const std::vector<VisDataTree*>& children = node->GetChildren();
        for (std::size_t i = 1; i < children.size(); ++i) {
            if (CacheOf(children[i]).GetView() && CacheOf(children[i - 1]).GetView())
                RC_ASSERT(Overlap(CacheOf(children[i - 1]), CacheOf(children[i])) <=
                          ROUNDING - 2.0f);
        }
    }
}

RC_GTEST_PROP(VisTreeMapLayoutProperties, DrawingTwiceChangesNothing, (unsigned int seed))
{
    const Drawn drawn(seed, *rc::gen::inRange(1, 80));
    const KUVMathPoint2Df size = AnySize();
    drawn.Draw(size);
    const std::vector<float> first = AllNumbers(drawn.root.Get());
    drawn.Draw(size);
    RC_ASSERT(SameBits(AllNumbers(drawn.root.Get()), first));
}

RC_GTEST_PROP(VisTreeMapLayoutProperties, ZoomAndUnzoomGiveTheSameRectanglesBitForBit,
              (unsigned int seed))
{
    const Drawn drawn(seed, *rc::gen::inRange(2, 80));
    drawn.Draw(AnySize());
    // Nodes that were never shown keep what earlier pictures left in them, so only those shown
    // count.
    std::vector<const VisDataTree*> shown;
    std::vector<VisDataTree*> all;
    VisPreOrderWalk<VisDataTree> walk(drawn.root.Get());
    while (VisDataTree* const node = walk.Next()) {
        all.push_back(node);
        if (CacheOf(node).GetView())
            shown.push_back(node);
    }
    const auto numbers = [&shown] {
        std::vector<float> all4;
        for (const VisDataTree* const node : shown) {
            const VisTreeSpaceFillingLayoutCache& cache = CacheOf(node);
            all4.insert(all4.end(), {cache.GetPos().x, cache.GetPos().y, cache.GetSize().x,
                                     cache.GetSize().y, cache.GetView() ? 1.0f : 0.0f});
        }
        return all4;
    };
    const std::vector<float> first = numbers();
    const int zooms = *rc::gen::inRange(1, 4);
    int pushed = 0;
    for (int i = 0; i < zooms; ++i) {
        VisDataTree* const target = all[*rc::gen::inRange<std::size_t>(0, all.size())];
        pushed += target != drawn.layout->GetCurrentRoot();
        drawn.layout->SetCurrentRoot(target, 1);
    }
    for (int i = 0; i < pushed; ++i)
        RC_ASSERT(drawn.layout->Unzoom() == 1);
    RC_ASSERT(drawn.layout->GetCurrentRoot() == drawn.root.Get());
    RC_ASSERT(SameBits(numbers(), first));
}
