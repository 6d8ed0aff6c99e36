#include "HitTestReference.h"
#include "TestLayout.h"
#include "VisCushionLayout.h"
#include "VisIcicleLayout.h"
#include "VisTreeMapLayout.h"
#include "private/ChildOrder.h"

#include "support/TreeBuilders.h"

#include "KUV2D.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

// The hit test bisects where a layout noted in which order it placed a node's children. Whatever
// happened since, it must give the node that the search of child after child gives.

using trees::Append;
using trees::CacheOf;
using trees::MakeNode;
using trees::NodeRef;

namespace {

using Random = std::mt19937_64;

Random SeededRandom(std::uint64_t run)
{
    return Random(static_cast<std::uint64_t>(testing::UnitTest::GetInstance()->random_seed()) *
                      1000003U +
                  run);
}

void Place(const VisDataTree* node, KUVMathPoint2Df position, KUVMathPoint2Df size)
{
    VisCacheAccess::SetPosition(*CacheOf(node), position);
    VisCacheAccess::SetSize(*CacheOf(node), size);
}

VisChildOrder OrderOf(const VisDataTree* node)
{
    return VisCacheAccess::ChildOrder(*CacheOf(node));
}

//   0    10    20    30    40
//   +-----+-----+-----+-----+ 10
//   |  a  |  b  |  c  |  d  |      all in R (0, 0) 40 x 10
//   +-----+-----+-----+-----+ 0
struct Row {
    NodeRef r = MakeNode("R");
    VisDataTree* a = Append(r.Get(), "a");
    VisDataTree* b = Append(r.Get(), "b");
    VisDataTree* c = Append(r.Get(), "c");
    VisDataTree* d = Append(r.Get(), "d");
    trees::LayoutRef layout = trees::MakeLayout(r.Get());

    Row()
    {
        Place(r.Get(), {0, 0}, {40, 10});
        Place(a, {0, 0}, {10, 10});
        Place(b, {10, 0}, {10, 10});
        Place(c, {20, 0}, {10, 10});
        Place(d, {30, 0}, {10, 10});
        Note();
    }
    void Note() const { VisNoteChildOrder(*r.Get(), *CacheOf(r.Get()), VisAxis::X); }
    VisDataTree* Find(float x, float y) const { return layout->FindNodeAtPosition(x, y); }
};

std::size_t Below(Random& random, std::size_t bound)
{
    return static_cast<std::size_t>(random() % bound);
}

KUVMathPoint2Df AnySize(Random& random, float largest)
{
    const float shares[] = {0.0015F, 0.01F, 0.04F, 0.15F, 1.0F};
    return {largest * shares[Below(random, std::size(shares))],
            largest * shares[Below(random, std::size(shares))]};
}

VisTreeMap_SliceDice AnyMode(Random& random)
{
    return Below(random, 2) == 0 ? VisTreeMap_SideBySide : VisTreeMap_Stacked;
}

// The layouts with what the tests need opened, and a step that only each of them knows.

struct OpenMap : VisTreeMapLayout {
    using Cache = VisTreeMapLayoutCache;
    static constexpr bool SEARCHES_DISCARDED = false;
    static constexpr float LARGEST = 20000.0F;
    // Keeps the pictures small; rectangles do not depend on it.
    static constexpr float SCALE = 1.0F / 4096.0F;

    OpenMap(VisDataTree* root, KUV2DBagRep* bag) : VisTreeMapLayout(nullptr) { Init(root, bag); }
    using VisTreeMapLayout::ResetViewOf;
    using VisTreeMapLayout::SetDiscardedVisibility;

    std::string OwnStep(Random& random, VisDataTree& /*any*/)
    {
        if (Below(random, 2) == 0) {
            LayoutChildrenInGrid({3.0F, 5.0F}, AnySize(random, LARGEST), nullptr, SCALE);
            return "grid";
        }
        SliceAndDice(AnyMode(random), {3.0F, 5.0F}, AnySize(random, LARGEST), nullptr, SCALE);
        return "slice and dice";
    }
};

struct OpenCushion : VisCushionLayout {
    using Cache = VisCushionLayoutCache;
    static constexpr bool SEARCHES_DISCARDED = false;
    // Zooming draws at the scale 1, whatever was drawn before.
    static constexpr float LARGEST = 300.0F;
    static constexpr float SCALE = 0.25F;

    OpenCushion(VisDataTree* root, KUV2DBagRep* bag) : VisCushionLayout(nullptr)
    {
        Init(root, bag);
    }
    using VisCushionLayout::ResetViewOf;
    using VisCushionLayout::SetDiscardedVisibility;

    std::string OwnStep(Random& random, VisDataTree& any)
    {
        if (Below(random, 2) == 0) {
            CushionTreemap(AnyMode(random), {3.0F, 5.0F}, AnySize(random, LARGEST), SCALE);
            return "cushions";
        }
        if (any.GetCache()) {
            any.GetCache()->SetSizeValue(static_cast<long long>(Below(random, 6)) - 2);
            any.GetCache()->SetResizeWithValue(1);
        }
        return "weigh";
    }
};

struct OpenIcicle : VisIcicleLayout {
    using Cache = VisIcicleLayoutCache;
    static constexpr bool SEARCHES_DISCARDED = true;
    static constexpr float LARGEST = 20000.0F;
    static constexpr float SCALE = 1.0F / 4096.0F;

    OpenIcicle(VisDataTree* root, KUV2DBagRep* bag) : VisIcicleLayout(nullptr, root, bag) {}
    using VisIcicleLayout::ResetViewOf;
    using VisIcicleLayout::SetDiscardedVisibility;

    std::string OwnStep(Random& random, VisDataTree& any)
    {
        switch (Below(random, 4)) {
        case 0:
            AlignIciclePlotLeaves(Below(random, 2) == 0 ? nullptr : &any);
            return "align";
        case 1:
            SetNLastNodes(static_cast<unsigned int>(1 + Below(random, 6)));
            return "columns";
        default: {
            const auto columns =
                Below(random, 3) == 0 ? 0xFFFFFFFFU : static_cast<unsigned int>(Below(random, 7));
            IciclePlot({3.0F, 5.0F}, AnySize(random, LARGEST), nullptr, columns, SCALE,
                       Below(random, 2) == 0 ? 0 : 1, Below(random, 2) == 0 ? 0 : 1);
            return "plot";
        }
        }
    }
};

/// Draws, zooms and edits a random tree at random.
template <class Layout>
class RandomPicture {
public:
    explicit RandomPicture(std::uint64_t run) : random_(SeededRandom(run))
    {
        const std::size_t count = 2 + Below(random_, 80);
        root_ = NodeRef::Adopt(support::MakeRandomTree(
            random_(), static_cast<int>(count), static_cast<int>(1 + Below(random_, count))));
        bag_ = VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep());
        layout_ = VisReference<Layout>::Adopt(new Layout(root_.Get(), bag_.Get()));
        VisPreOrderWalk<VisDataTree> walk(root_.Get());
        while (VisDataTree* const node = walk.Next()) {
            nodes_.push_back(node);
            caches_.push_back(node->GetCache());
        }
    }
    ~RandomPicture() { layout_->SetTreeRoot(nullptr); }
    RandomPicture(const RandomPicture&) = delete;
    RandomPicture& operator=(const RandomPicture&) = delete;

    std::string Step()
    {
        switch (Below(random_, 14)) {
        case 0:
            layout_->SetCurrentRoot(Any(), 1);
            return "zoom";
        case 1:
            return layout_->Unzoom() != 0 ? "unzoom" : "no unzoom";
        case 2:
            return Move();
        case 3:
            return Relink();
        case 4:
            layout_->ResetViewOf(Any());
            return "hide";
        case 5:
            return Assign();
        case 6:
            layout_->SetRedrawOnSetCurrentRoot(Below(random_, 2) == 0 ? 0 : 1);
            return "switch redrawing";
        case 7:
        case 8:
        case 9:
            return layout_->OwnStep(random_, *Any());
        default:
            layout_->Draw({1.0F, 2.0F}, AnySize(random_, Layout::LARGEST), nullptr, Layout::SCALE);
            return "draw";
        }
    }

    testing::AssertionResult Agrees()
    {
        for (const bool discardedToo : {false, true}) {
            layout_->SetDiscardedVisibility(discardedToo ? 1 : 0);
            auto result = hits::Agrees(*layout_.Get(), nodes_, random_, 40, discardedToo);
            if (!result)
                return result << (discardedToo ? " through discarded nodes" : "");
        }
        layout_->SetDiscardedVisibility(Layout::SEARCHES_DISCARDED ? 1 : 0);
        return testing::AssertionSuccess();
    }

    std::size_t CountOrdered() const
    {
        std::size_t count = 0;
        for (const VisDataTree* const node : nodes_) {
            if (CacheOf(node) && OrderOf(node) != VisChildOrder::Unknown)
                ++count;
        }
        return count;
    }

private:
    VisDataTree* Any() { return nodes_[Below(random_, nodes_.size())]; }

    std::string Move()
    {
        VisDataTree* const child = Any();
        VisDataTree* const parent = Any();
        if (child == root_.Get() || child == parent || parent->HasNodeAsParent(child) != 0)
            return "no move";
        parent->InsertChild(child, Below(random_, 2) == 0 ? 1 : 0);
        return "move";
    }

    std::string Relink()
    {
        const std::size_t i = Below(random_, nodes_.size());
        if (nodes_[i]->GetCache()) {
            nodes_[i]->SetCache(nullptr);
            return "unlink";
        }
        // Any cache that is free: its rectangle may lie anywhere.
        for (std::size_t k = 0; k < caches_.size(); ++k) {
            VisDataTree::VisDataTreeCache* const cache = caches_[(i + k) % caches_.size()];
            const bool isFree =
                std::none_of(nodes_.begin(), nodes_.end(),
                             [cache](VisDataTree* node) { return node->GetCache() == cache; });
            if (isFree) {
                nodes_[i]->SetCache(cache);
                return "link";
            }
        }
        return "nothing to link";
    }

    /// Copies one cache into another, which forgets its node.
    std::string Assign()
    {
        using Cache = typename Layout::Cache;
        auto* const to = CacheOf(Any());
        auto* const from = CacheOf(Any());
        if (!to || !from)
            return "nothing to assign";
        *static_cast<Cache*>(to) = *static_cast<Cache*>(from);
        return "assign";
    }

    Random random_;
    NodeRef root_;
    VisReference<KUV2DBagRep> bag_;
    VisReference<Layout> layout_;
    std::vector<VisDataTree*> nodes_;
    std::vector<VisDataTree::VisDataTreeCache*> caches_;
};

template <class Layout>
void RandomPicturesAgree(const char* what)
{
    std::size_t steps = 0;
    std::size_t ordered = 0;
    for (std::uint64_t run = 0; run < 100; ++run) {
        RandomPicture<Layout> picture(run);
        std::string history;
        for (int i = 0; i < 30; ++i, ++steps) {
            history += picture.Step() + "; ";
            ASSERT_TRUE(picture.Agrees()) << "run " << run << " after " << history;
            ordered += picture.CountOrdered();
        }
    }
    EXPECT_GT(ordered, steps) << "the bisection has to be met";
    std::cout << "count: " << steps << " steps of random " << what << " agree at 80 points each\n";
}

}  // namespace

// ---- what is noted

TEST(VisTreeSpaceFillingLayoutHitTest, ChildrenThatFollowEachOtherAreNotedWithAxisAndDirection)
{
    const Row row;
    EXPECT_EQ(OrderOf(row.r.Get()), VisChildOrder::RisesAlongX);
    for (VisDataTree* const node : {row.a, row.b, row.c, row.d}) {
        const float begin = CacheOf(node)->GetPos().x;
        Place(node, {0, 30 - begin}, {10, 10});
    }
    VisNoteChildOrder(*row.r.Get(), *CacheOf(row.r.Get()), VisAxis::Y);
    EXPECT_EQ(OrderOf(row.r.Get()), VisChildOrder::FallsAlongY);
}

TEST(VisTreeSpaceFillingLayoutHitTest, OverlapsGapsAndRectanglesWithoutExtentKeepTheOrder)
{
    const Row row;
    Place(row.a, {0, 0}, {12, 10});
    Place(row.b, {10, 0}, {2, 10});
    Place(row.c, {20, 0}, {0, 10});
    Place(row.d, {20, 0}, {10, 10});
    row.Note();
    ASSERT_EQ(OrderOf(row.r.Get()), VisChildOrder::RisesAlongX);
    EXPECT_EQ(row.Find(11, 5), row.a) << "the first of two that overlap";
    EXPECT_EQ(row.Find(16, 5), row.r.Get()) << "a gap";
    EXPECT_EQ(row.Find(20, 5), row.c) << "no extent, but a place";
    EXPECT_EQ(row.Find(21, 5), row.d);
}

TEST(VisTreeSpaceFillingLayoutHitTest, ChildrenInDisorderAreTriedOneByOne)
{
    const Row row;
    Place(row.b, {10, 0}, {30, 10});
    row.Note();
    EXPECT_EQ(OrderOf(row.r.Get()), VisChildOrder::Unknown)
        << "the ends of b and c are in disorder";
    EXPECT_EQ(row.Find(35, 5), row.b);
    const float odd = std::numeric_limits<float>::quiet_NaN();
    for (VisDataTree* const node : {row.a, row.b, row.d}) {
        const Row other;
        Place(node == row.a ? other.a : node == row.b ? other.b : other.d, {odd, 0}, {10, 10});
        other.Note();
        EXPECT_EQ(OrderOf(other.r.Get()), VisChildOrder::Unknown);
        EXPECT_EQ(other.Find(25, 5), other.c);
    }
}

TEST(VisTreeSpaceFillingLayoutHitTest, ChildrenWithoutCacheArePassedOver)
{
    const Row row;
    row.b->SetCache(nullptr);
    row.c->SetCache(nullptr);
    row.Note();
    ASSERT_EQ(OrderOf(row.r.Get()), VisChildOrder::RisesAlongX);
    EXPECT_EQ(row.Find(5, 5), row.a);
    EXPECT_EQ(row.Find(15, 5), row.r.Get());
    EXPECT_EQ(row.Find(35, 5), row.d);
    row.d->SetCache(nullptr);
    EXPECT_EQ(row.Find(35, 5), row.r.Get());
    EXPECT_EQ(row.Find(5, 5), row.a);
}

TEST(VisTreeSpaceFillingLayoutHitTest, TheOrderIsForgottenWhenChildrenOrCachesChange)
{
    const Row row;
    const NodeRef keep = NodeRef::Retain(row.d);
    row.d->RemoveParent(/*release=*/1);
    EXPECT_EQ(OrderOf(row.r.Get()), VisChildOrder::Unknown);
    row.Note();
    row.r->InsertChild(row.d, /*resetCaches=*/0);
    EXPECT_EQ(OrderOf(row.r.Get()), VisChildOrder::Unknown);
    row.Note();
    VisTreeSpaceFillingLayoutCache* const cache = CacheOf(row.b);
    row.b->SetCache(nullptr);
    row.b->SetCache(cache);
    EXPECT_EQ(OrderOf(row.r.Get()), VisChildOrder::Unknown);
    row.Note();
    *CacheOf(row.b) = *CacheOf(row.d);
    EXPECT_EQ(OrderOf(row.r.Get()), VisChildOrder::Unknown);
    row.Note();
    EXPECT_EQ(OrderOf(row.r.Get()), VisChildOrder::Unknown) << "b's cache has forgotten its node";
    row.b->SetCache(nullptr);
    row.Note();
    VisTreeSpaceFillingLayoutCache other(row.b);
    EXPECT_EQ(OrderOf(row.r.Get()), VisChildOrder::Unknown);
    row.b->SetCache(nullptr);
}

TEST(VisTreeSpaceFillingLayoutHitTest, AFormerCurrentRootMayHaveBeenDrawnAnywhere)
{
    const Row row;
    row.layout->SetRedrawOnSetCurrentRoot(0);
    row.layout->SetDiscardedVisibility(1);
    row.layout->SetCurrentRoot(row.a, 0);
    Place(row.a, {30, 0}, {10, 10});
    row.layout->SetCurrentRoot(row.r.Get(), 0);
    for (VisDataTree* const node : {row.a, row.d})
        VisCacheAccess::SetDiscarded(*CacheOf(node), 0);
    VisCacheAccess::SetExpanded(*CacheOf(row.r.Get()), 1);
    EXPECT_EQ(row.Find(35, 5), row.a) << "the first of the two that are there now";
}

TEST(VisTreeSpaceFillingLayoutHitTest, WhatIsHiddenAsAWholeIsNotSearched)
{
    const Row row;
    row.layout->ResetView(CacheOf(row.r.Get()));
    VisCacheAccess::SetDiscarded(*CacheOf(row.r.Get()), 0);
    EXPECT_EQ(row.Find(15, 5), row.r.Get());
    // The second assignment is made by a cache that has no node any more to speak through.
    const VisTreeSpaceFillingLayoutCache* const a = CacheOf(row.a);
    VisTreeSpaceFillingLayoutCache shown(nullptr);
    *CacheOf(row.b) = shown;
    row.layout->ResetView(CacheOf(row.r.Get()));
    VisCacheAccess::SetDiscarded(*CacheOf(row.r.Get()), 0);
    VisTreeSpaceFillingLayoutCache inPlaceOfA(nullptr);
    VisCacheAccess::SetPosition(inPlaceOfA, a->GetPos());
    VisCacheAccess::SetSize(inPlaceOfA, a->GetSize());
    *CacheOf(row.b) = inPlaceOfA;
    EXPECT_EQ(row.Find(5, 5), row.b) << "shown again without a word";
}

// ---- against the definition

TEST(VisTreeSpaceFillingLayoutHitTest, ThousandsOfChildrenInEveryOrderAgreeWithTheDefinition)
{
    std::size_t points = 0;
    for (std::uint64_t run = 0; run < 400; ++run) {
        Random random = SeededRandom(run);
        const std::size_t count = 1 + random() % 60;
        const NodeRef root = MakeNode("R");
        std::vector<VisDataTree*> nodes{root.Get()};
        for (std::size_t i = 0; i < count; ++i)
            nodes.push_back(Append(root.Get(), std::to_string(i).c_str()));
        const trees::LayoutRef layout = trees::MakeLayout(root.Get());
        const bool alongX = random() % 2 == 0;
        const float direction = random() % 2 == 0 ? 1.0F : -1.0F;
        Place(root.Get(), {-300, -300}, {600, 600});
        float lower = random() % 2 == 0 ? 0.0F : -direction * 200.0F;
        for (std::size_t i = 1; i < nodes.size(); ++i) {
            // No extent, no gap, an overlap: all in small whole numbers, so that bounds coincide.
            const float extent = static_cast<float>(random() % 4) - (random() % 50 == 0 ? 5.0F : 0);
            const float across = static_cast<float>(random() % 3) - 1.0F;
            const KUVMathPoint2Df position(alongX ? lower : across, alongX ? across : lower);
            Place(nodes[i], position,
                  {alongX ? extent : across + 1.0F, alongX ? across + 1.0F : extent});
            VisCacheAccess::SetDiscarded(*CacheOf(nodes[i]), random() % 5 == 0 ? 1 : 0);
            lower += direction * static_cast<float>(random() % 4);
            if (random() % 200 == 0)
                lower = 0.0F;
        }
        for (VisDataTree* const node : nodes) {
            if (node != root.Get() && random() % 12 == 0)
                node->SetCache(nullptr);
        }
        VisNoteChildOrder(*root.Get(), *CacheOf(root.Get()), alongX ? VisAxis::X : VisAxis::Y);
        for (const bool discardedToo : {false, true}) {
            layout->SetDiscardedVisibility(discardedToo ? 1 : 0);
            ASSERT_TRUE(hits::Agrees(*layout.Get(), nodes, random, 100, discardedToo))
                << "run " << run;
            points += 100;
        }
    }
    std::cout << "count: " << points << " points agree with the search of child after child\n";
}

TEST(VisTreeSpaceFillingLayoutHitTest, RandomTreeMapsAgreeWithTheDefinitionAfterEveryStep)
{
    RandomPicturesAgree<OpenMap>("tree maps");
}

TEST(VisTreeSpaceFillingLayoutHitTest, RandomCushionsAgreeWithTheDefinitionAfterEveryStep)
{
    RandomPicturesAgree<OpenCushion>("cushions");
}

TEST(VisTreeSpaceFillingLayoutHitTest, RandomIciclesAgreeWithTheDefinitionAfterEveryStep)
{
    RandomPicturesAgree<OpenIcicle>("icicles");
}
