#include "IcicleFixture.h"
#include "VisIcicleLayout.h"

#include "private/IcicleRectangles.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

using icicles::Cache;
using icicles::CacheOf;
using icicles::NO_LIMIT;

namespace {

/// A random tree with icons here and there, aligned and plotted.
struct Plotted {
    Plotted(unsigned int seed, unsigned int limit)
        : root(trees::NodeRef::Adopt(
              support::MakeRandomTree(seed, *rc::gen::inRange(1, 80), *rc::gen::inRange(1, 9)))),
          layout(VisReference<VisIcicleLayout>::Adopt(
              VisIcicleLayout::CreateLayout(nullptr, root.Get(), nullptr))),
          size(AnyLength(), AnyLength()), columns(limit)
    {
        const bool labels = *rc::gen::arbitrary<bool>();
        for (VisDataTree* const node : Nodes()) {
            CacheOf(node)->SetShowLabel(labels ? 1 : 0);
            node->SetIconName(*rc::gen::inRange(0, 3) == 0 ? "icon" : "");
            node->SetIsLeafObject(node->GetChildren().empty() ? 1 : 0);
        }
        layout->AlignIciclePlotLeaves(nullptr);
        Plot();
    }

    static float AnyLength() { return static_cast<float>(*rc::gen::inRange(1, 400000)) / 100.0f; }
    void Plot() const { layout->IciclePlot({0.0f, 0.0f}, size, nullptr, columns, 1.0f, 0, 0); }
    std::vector<VisDataTree*> Nodes() const
    {
        std::vector<VisDataTree*> nodes;
        VisPreOrderWalk<VisDataTree> walk(root.Get());
        while (VisDataTree* const node = walk.Next())
            nodes.push_back(node);
        return nodes;
    }
    /// The rectangle of every node and what is drawn of it, in pre-order.
    std::vector<float> Numbers() const
    {
        std::vector<float> numbers;
        for (const VisDataTree* const node : Nodes()) {
            const Cache& cache = *CacheOf(node);
            for (const float number :
                 {cache.GetPos().x, cache.GetPos().y, cache.GetSize().x, cache.GetSize().y,
                  cache.GetGraphicalSize().x, cache.GetGraphicalSize().y,
                  static_cast<float>(cache.IsDiscarded())})
                numbers.push_back(number);
        }
        return numbers;
    }

    trees::NodeRef root;
    VisReference<VisIcicleLayout> layout;
    KUVMathPoint2Df size;
    unsigned int columns;
};

/// What rounding adds up to over a plot that is stretched to at most a few thousand units.
constexpr float ROUNDING = 0.05f;

float Right(const Cache& cache) { return cache.GetPos().x + cache.GetSize().x; }
float Top(const Cache& cache) { return cache.GetPos().y + cache.GetSize().y; }

unsigned int AnyLimit()
{
    return *rc::gen::inRange(0, 3) == 0 ? NO_LIMIT : *rc::gen::inRange(1U, 6U);
}

}  // namespace

RC_GTEST_PROP(VisIcicleLayoutProperties, AllLeavesEndInTheLastColumn, (unsigned int seed))
{
    const Plotted plotted(seed, AnyLimit());
    const float end = Right(*CacheOf(plotted.root.Get()));
    for (const VisDataTree* const node : plotted.Nodes()) {
        const Cache& cache = *CacheOf(node);
        if (!node->GetChildren().empty())
            continue;
        RC_ASSERT(cache.IsDiscarded() == 0);
        RC_ASSERT(std::fabs(cache.GetPos().x + cache.GetGraphicalSize().x - end) < ROUNDING);
    }
}

RC_GTEST_PROP(VisIcicleLayoutProperties, AChildLiesInsideItsParent, (unsigned int seed))
{
    const Plotted plotted(seed, AnyLimit());
    for (const VisDataTree* const node : plotted.Nodes()) {
        if (!node->GetParent())
            continue;
        const Cache& child = *CacheOf(node);
        const Cache& parent = *CacheOf(node->GetParent());
        RC_ASSERT(child.GetPos().x >= parent.GetPos().x);
        RC_ASSERT(child.GetPos().y >= parent.GetPos().y);
        RC_ASSERT(Right(child) <= Right(parent) + ROUNDING);
        RC_ASSERT(Top(child) <= Top(parent) + ROUNDING);
    }
}

RC_GTEST_PROP(VisIcicleLayoutProperties, ADrawnNodeLiesLeftOfItsChildrenAndInsideItsRectangle,
              (unsigned int seed))
{
    const Plotted plotted(seed, AnyLimit());
    for (const VisDataTree* const node : plotted.Nodes()) {
        const Cache& cache = *CacheOf(node);
        const float end = cache.GetPos().x + cache.GetGraphicalSize().x;
        RC_ASSERT(end <= Right(cache) + ROUNDING);
        if (cache.IsDiscarded() != 0)
            continue;
        for (const VisDataTree* const child : node->GetChildren())
            RC_ASSERT(end < CacheOf(child)->GetPos().x);
    }
}

RC_GTEST_PROP(VisIcicleLayoutProperties, SiblingsDoNotOverlap, (unsigned int seed))
{
    const Plotted plotted(seed, AnyLimit());
    for (const VisDataTree* const node : plotted.Nodes()) {
        const std::vector<VisDataTree*>& children = node->GetChildren();
        for (std::size_t i = 1; i < children.size(); ++i)
            RC_ASSERT(Top(*CacheOf(children[i])) < CacheOf(children[i - 1])->GetPos().y);
    }
}

RC_GTEST_PROP(VisIcicleLayoutProperties, TheCentreOfEveryShownLeafHitsIt, (unsigned int seed))
{
    const Plotted plotted(seed, AnyLimit());
    for (VisDataTree* const node : plotted.Nodes()) {
        const Cache& cache = *CacheOf(node);
        if (node->GetChildren().empty())
            RC_ASSERT(plotted.layout->FindNodeAtPosition(
                          cache.GetPos().x + cache.GetGraphicalSize().x / 2.0f,
                          cache.GetPos().y + cache.GetSize().y / 2.0f) == node);
    }
}

RC_GTEST_PROP(VisIcicleLayoutProperties, APlotLargerThanItsAreaKeepsItsSizeAndASmallerOneFillsIt,
              (unsigned int seed))
{
    const Plotted plotted(seed, AnyLimit());
    const Cache& root = *CacheOf(plotted.root.Get());
    RC_ASSERT(std::fabs(root.GetSize().x - std::max(plotted.size.x, root.GetIcicleSize().x)) <
              ROUNDING);
    RC_ASSERT(std::fabs(root.GetSize().y - std::max(plotted.size.y, root.GetIcicleSize().y)) <
              ROUNDING);
}

RC_GTEST_PROP(VisIcicleLayoutProperties, PlottingTwiceChangesNothing, (unsigned int seed))
{
    const Plotted plotted(seed, AnyLimit());
    const std::vector<float> first = plotted.Numbers();
    plotted.Plot();
    const std::vector<float> second = plotted.Numbers();
    RC_ASSERT(std::memcmp(first.data(), second.data(), first.size() * sizeof(float)) == 0);
}

RC_GTEST_PROP(VisIcicleLayoutProperties, TheGeometryIsTheSameWithAndWithoutViews,
              (unsigned int seed))
{
    const Plotted plotted(seed, AnyLimit());
    const std::vector<float> first = plotted.Numbers();
    plotted.layout->AlignIciclePlotLeaves(nullptr);
    LayOutIcicleRectangles(plotted.root.Get(), {0.0f, 0.0f}, plotted.size, 0, plotted.columns, 0,
                           0);
    const std::vector<float> second = plotted.Numbers();
    RC_ASSERT(std::memcmp(first.data(), second.data(), first.size() * sizeof(float)) == 0);
}
