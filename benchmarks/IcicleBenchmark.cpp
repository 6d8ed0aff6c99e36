// The icicle plot: sizes, cursors and rectangles against slice-and-dice over flat arrays, with and
// without a limit of columns; the same at once for a chain of levels; and drawing.

#include "TreeShapes.h"
#include "VisIcicleLayout.h"
#include "Yardstick.h"
#include "private/IcicleRectangles.h"
#include "private/Reference.h"
#include "private/TreeWalk.h"

#include "KUV2D.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

using NodeRef = VisReference<VisDataTree>;
using IcicleRef = VisReference<VisIcicleLayout>;
using Cache = VisIcicleLayout::VisIcicleLayoutCache;

using yardstick::BestSeconds;
using yardstick::FlatTreeMap;
using yardstick::Seconds;

constexpr KUVMathPoint2Df ORIGIN{0.0f, 0.0f};
constexpr KUVMathPoint2Df LARGE_WINDOW{4000.0f, 3000.0f};
constexpr unsigned int NO_LIMIT = 0xFFFFFFFF;

enum class Limit { None, Half, Two };

unsigned int ColumnsFor(Limit limit, unsigned int levels)
{
    switch (limit) {
    case Limit::None:
        return NO_LIMIT;
    case Limit::Half:
        return std::max(1U, levels / 2);
    case Limit::Two:
        return 2;
    }
    return NO_LIMIT;
}

const char* NameOf(Limit limit)
{
    switch (limit) {
    case Limit::None:
        return "all columns";
    case Limit::Half:
        return "half of the columns";
    case Limit::Two:
        return "two columns";
    }
    return "";
}

/// A tree with its layout; labels are shown.
struct Subject {
    Subject(VisDataTree* tree, const char* icon)
        : root(NodeRef::Adopt(tree)),
          bag(VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep())),
          layout(IcicleRef::Adopt(VisIcicleLayout::CreateLayout(nullptr, root.Get(), bag.Get())))
    {
        VisPreOrderWalk<VisDataTree> walk(root.Get());
        while (VisDataTree* const node = walk.Next()) {
            node->GetCache()->SetShowLabel(1);
            node->SetIconName(icon);
        }
    }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;
    ~Subject() { layout->SetTreeRoot(nullptr); }

    NodeRef root;
    VisReference<KUV2DBagRep> bag;
    IcicleRef layout;
};

// ---- geometry

/// Sizes, cursors and rectangles of all nodes of an aligned tree; nothing is remembered but the
/// spans.
void Geometry(benchmark::State& state, shapes::Shape shape, Limit limit, const char* icon)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const std::vector<std::uint32_t> parents = shapes::MakeParents(shape, nodes);
    FlatTreeMap flat(parents);
    const double yardstick = BestSeconds(flat);
    const Subject subject(shapes::MakeTree(parents), icon);
    const unsigned int columns = ColumnsFor(limit, subject.root->ComputeMaxDepth());
    double best = std::numeric_limits<double>::max();
    unsigned int plotted = 0;
    for (auto _ : state) {
        subject.layout->AlignIciclePlotLeaves(nullptr);
        const double seconds = Seconds([&] {
            plotted = LayOutIcicleRectangles(subject.root.Get(), ORIGIN, LARGE_WINDOW, 0, columns,
                                             /*relativeToMinDepth=*/0, /*inlineLabels=*/0);
        });
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
    }
    state.counters["ns/node"] = best * 1e9 / static_cast<double>(nodes);
    state.counters["flat ns/node"] = yardstick * 1e9 / static_cast<double>(nodes);
    state.counters["x yardstick"] = best / yardstick;
    state.counters["columns"] = plotted;
}

/// The spans of all nodes.
void Align(benchmark::State& state, shapes::Shape shape)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const Subject subject(shapes::MakeTree(shape, nodes), "");
    double best = std::numeric_limits<double>::max();
    for (auto _ : state) {
        const double seconds =
            Seconds([&subject] { subject.layout->AlignIciclePlotLeaves(nullptr); });
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
    }
    state.counters["ns/node"] = best * 1e9 / static_cast<double>(nodes);
}

/// A chain of as many levels as there are nodes.
void Chain(benchmark::State& state, Limit limit)
{
    const auto levels = static_cast<std::size_t>(state.range(0));
    std::vector<std::uint32_t> parents(levels, 0);
    for (std::size_t i = 1; i < levels; ++i)
        parents[i] = static_cast<std::uint32_t>(i - 1);
    const Subject subject(shapes::MakeTree(parents), "icon");
    const unsigned int columns = ColumnsFor(limit, subject.root->ComputeMaxDepth());
    double best = std::numeric_limits<double>::max();
    for (auto _ : state) {
        subject.layout->AlignIciclePlotLeaves(nullptr);
        const double seconds = Seconds([&] {
            LayOutIcicleRectangles(subject.root.Get(), ORIGIN, LARGE_WINDOW, 0, columns, 0, 0);
        });
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
    }
    state.counters["ns/node"] = best * 1e9 / static_cast<double>(levels);
}

// ---- drawing

/// The first drawing of a tree in a large window, and the same again. No font: what labels cost is
/// not the plot's.
void DrawAndRedraw(benchmark::State& state, shapes::Shape shape)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const std::vector<std::uint32_t> parents = shapes::MakeParents(shape, nodes);
    double first = std::numeric_limits<double>::max();
    double again = std::numeric_limits<double>::max();
    for (auto _ : state) {
        const Subject subject(shapes::MakeTree(parents), "");
        subject.layout->AlignIciclePlotLeaves(nullptr);
        const auto draw = [&subject] { subject.layout->Draw(ORIGIN, LARGE_WINDOW, nullptr, 1.0f); };
        const double seconds = Seconds(draw);
        state.SetIterationTime(seconds);
        first = std::min(first, seconds);
        again = std::min(again, Seconds(draw));
    }
    state.counters["first ms"] = first * 1e3;
    state.counters["again ms"] = again * 1e3;
}

const bool registered = [] {
    for (const shapes::Shape shape : shapes::ALL_SHAPES) {
        const auto add = [shape](const std::string& name, Limit limit, const char* icon) {
            benchmark::RegisterBenchmark(
                ("icicle/geometry/" + name + "/" + shapes::NameOf(shape)).c_str(), Geometry, shape,
                limit, icon)
                ->RangeMultiplier(10)
                ->Range(10000, 1000000)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        };
        for (const Limit limit : {Limit::None, Limit::Half, Limit::Two})
            add(NameOf(limit), limit, "");
        add(std::string(NameOf(Limit::Half)) + " with icons", Limit::Half, "icon");
        benchmark::RegisterBenchmark((std::string("icicle/align/") + shapes::NameOf(shape)).c_str(),
                                     Align, shape)
            ->RangeMultiplier(10)
            ->Range(10000, 1000000)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string("icicle/draw/") + shapes::NameOf(shape)).c_str(),
                                     DrawAndRedraw, shape)
            ->RangeMultiplier(10)
            ->Range(1000, 100000)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(2);
    }
    for (const Limit limit : {Limit::None, Limit::Half, Limit::Two}) {
        benchmark::RegisterBenchmark(
            (std::string("icicle/geometry of a chain/") + NameOf(limit)).c_str(), Chain, limit)
            ->RangeMultiplier(10)
            ->Range(10000, 1000000)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace
