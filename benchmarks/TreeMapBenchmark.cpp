// The tree map: rectangles alone against slice-and-dice over flat arrays, drawing and drawing again
// at 4000 x 3000, and what the images cost. Thread time, so that what else the machine does shall
// not show.

#include "TreeShapes.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingView.h"
#include "Yardstick.h"
#include "core/MeasuringFont.h"
#include "core/PixelMemory.h"
#include "paint/PaintSession.h"
#include "private/CacheAccess.h"
#include "private/Reference.h"
#include "private/TreeMapRectangles.h"
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
using MapRef = VisReference<VisTreeMapLayout>;
using Cache = VisTreeMapLayout::VisTreeMapLayoutCache;

using yardstick::BestSeconds;
using yardstick::FlatTreeMap;
using yardstick::Seconds;

constexpr KUVMathPoint2Df ORIGIN{0.0f, 0.0f};
constexpr KUVMathPoint2Df LARGE_WINDOW{4000.0f, 3000.0f};

/// A tree with its layout.
struct Subject {
    explicit Subject(const std::vector<std::uint32_t>& parents)
        : root(NodeRef::Adopt(shapes::MakeTree(parents))),
          bag(VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep())),
          layout(MapRef::Adopt(VisTreeMapLayout::CreateLayout(nullptr, root.Get(), bag.Get())))
    {
    }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;
    ~Subject() { layout->SetTreeRoot(nullptr); }

    Cache& RootCache() const { return static_cast<Cache&>(*root->GetCache()); }
    int CountViews() const { return bag->GetChildren()->Count(); }

    NodeRef root;
    VisReference<KUV2DBagRep> bag;
    MapRef layout;
};

core::MeasuringFont& Font()
{
    static const paint::PaintSession session;
    static std::string remark;
    static core::MeasuringFont* const font = paint::MakeFont("", remark);
    return *font;
}

// ---- rectangles

/// All rectangles of the tree. `fresh`: minimum sizes are computed anew each time, which asking for
/// the other mode brings about; else they are remembered, as in a redraw.
void Geometry(benchmark::State& state, shapes::Shape shape, bool fresh)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const std::vector<std::uint32_t> parents = shapes::MakeParents(shape, nodes);
    FlatTreeMap flat(parents);
    const double yardstick = BestSeconds(flat);
    const Subject subject(parents);
    // Large enough for everything to be opened in both modes.
    KUVMathPoint2Df size;
    for (const VisTreeMap_SliceDice mode : {VisTreeMap_SideBySide, VisTreeMap_Stacked}) {
        const KUVMathPoint2Df minimum = subject.RootCache().ComputeMinimumExpandedSize(mode);
        size = {std::max(size.x, 2.0f * minimum.x), std::max(size.y, 2.0f * minimum.y)};
    }
    VisTreeMap_SliceDice mode = VisTreeMap_Stacked;
    LayOutTreeMapRectangles(subject.root.Get(), mode, ORIGIN, size);
    double best = std::numeric_limits<double>::max();
    for (auto _ : state) {
        if (fresh)
            mode = mode == VisTreeMap_Stacked ? VisTreeMap_SideBySide : VisTreeMap_Stacked;
        const double seconds =
            Seconds([&] { LayOutTreeMapRectangles(subject.root.Get(), mode, ORIGIN, size); });
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
    }
    std::size_t opened = 0;
    VisPreOrderWalk<VisDataTree> walk(subject.root.Get());
    while (const VisDataTree* const node = walk.Next())
        opened += VisCacheAccess::LayoutCacheOf(node)->GetSize().x > 0.0f ? 1U : 0U;
    state.counters["ns/node"] = best * 1e9 / static_cast<double>(nodes);
    state.counters["flat ns/node"] = yardstick * 1e9 / static_cast<double>(nodes);
    state.counters["x yardstick"] = best / yardstick;
    state.counters["laid out"] = static_cast<double>(opened);
}

// ---- drawing

/// The first drawing of a tree in a large window, and the same again.
void DrawAndRedraw(benchmark::State& state, shapes::Shape shape)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const std::vector<std::uint32_t> parents = shapes::MakeParents(shape, nodes);
    double first = std::numeric_limits<double>::max();
    double again = std::numeric_limits<double>::max();
    int views = 0;
    for (auto _ : state) {
        const Subject subject(parents);
        const auto draw = [&subject] { subject.layout->Draw(ORIGIN, LARGE_WINDOW, &Font(), 1.0f); };
        const double seconds = Seconds(draw);
        state.SetIterationTime(seconds);
        first = std::min(first, seconds);
        // Short beside the first drawing: it takes more of them to find a quiet moment.
        for (int i = 0; i < 15; ++i)
            again = std::min(again, Seconds(draw));
        views = subject.CountViews();
    }
    state.counters["first ms"] = first * 1e3;
    state.counters["again ms"] = again * 1e3;
    state.counters["again / first"] = again / first;
    state.counters["views"] = views;
}

/// Where the time of a drawing with many visible nodes goes: rectangles, labels, plates, and the
/// rest, which is reps.
void DrawVisibleNodes(benchmark::State& state)
{
    constexpr std::size_t NODES = 10000;
    const std::vector<std::uint32_t> parents = shapes::MakeParents(shapes::Shape::Balanced, NODES);
    double first = 0.0;
    double again = 0.0;
    double unlabelled = 0.0;
    double rectangles = 0.0;
    int views = 0;
    for (auto _ : state) {
        const Subject subject(parents);
        const KUVMathPoint2Df size =
            subject.RootCache().ComputeMinimumExpandedSize(VisTreeMap_Stacked);
        const auto draw = [&](KUVCharacterFont* font) {
            return Seconds([&] { subject.layout->Draw(ORIGIN, size, font, 1.0f); });
        };
        first = draw(&Font());
        state.SetIterationTime(first);
        again = draw(&Font());
        unlabelled = draw(nullptr);
        rectangles = Seconds(
            [&] { LayOutTreeMapRectangles(subject.root.Get(), VisTreeMap_Stacked, ORIGIN, size); });
        views = subject.CountViews();
    }
    state.counters["views"] = views;
    state.counters["again ms"] = again * 1e3;
    state.counters["plates %"] = 100.0 * (first - again) / first;
    state.counters["labels %"] = 100.0 * (again - unlabelled) / first;
    state.counters["rectangles %"] = 100.0 * rectangles / first;
    state.counters["reps %"] = 100.0 * (unlabelled - rectangles) / first;
}

// ---- what the images cost

void ImagesOfALargeWindow(benchmark::State& state, shapes::Shape shape)
{
    const std::vector<std::uint32_t> parents = shapes::MakeParents(shape, 10000);
    for (auto _ : state) {
        const Subject subject(parents);
        const std::size_t before = core::SumImageBytes();
        state.SetIterationTime(
            Seconds([&] { subject.layout->Draw(ORIGIN, LARGE_WINDOW, &Font(), 1.0f); }));
        const auto bytes = static_cast<double>(core::SumImageBytes() - before);
        state.counters["images MB"] = bytes / 1048576.0;
        state.counters["x picture"] =
            bytes / (4.0 * static_cast<double>(LARGE_WINDOW.x * LARGE_WINDOW.y));
        state.counters["views"] = subject.CountViews();
    }
}

void ImagesOfAShrinkingWindow(benchmark::State& state, shapes::Shape shape)
{
    const std::vector<std::uint32_t> parents = shapes::MakeParents(shape, 2000);
    for (auto _ : state) {
        const Subject subject(parents);
        const std::size_t before = core::SumImageBytes();
        state.SetIterationTime(Seconds([&] {
            for (int i = 0; i < 100; ++i) {
                const float part = 1.0f - static_cast<float>(i) / 198.0f;
                subject.layout->Draw(ORIGIN, {1920.0f * part, 1080.0f * part}, &Font(), 1.0f);
            }
        }));
        state.counters["images MB"] =
            static_cast<double>(core::SumImageBytes() - before) / 1048576.0;
        state.counters["views"] = subject.CountViews();
    }
}

void Register(const std::string& name, void (*run)(benchmark::State&, shapes::Shape),
              shapes::Shape shape)
{
    benchmark::RegisterBenchmark(("tree map/" + name + "/" + shapes::NameOf(shape)).c_str(), run,
                                 shape)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1);
}

const bool registered = [] {
    for (const shapes::Shape shape : shapes::ALL_SHAPES) {
        for (const bool fresh : {true, false}) {
            const std::string name = std::string("tree map/rectangles ") +
                                     (fresh ? "and minimum sizes/" : "alone/") +
                                     shapes::NameOf(shape);
            benchmark::RegisterBenchmark(name.c_str(), Geometry, shape, fresh)
                ->RangeMultiplier(10)
                ->Range(1000, 1000000)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    for (const shapes::Shape shape : shapes::ALL_SHAPES) {
        benchmark::RegisterBenchmark(
            (std::string("tree map/draw/") + shapes::NameOf(shape)).c_str(), DrawAndRedraw, shape)
            ->RangeMultiplier(10)
            ->Range(1000, 1000000)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(3);
        Register("images, 10000 nodes at 4000x3000", ImagesOfALargeWindow, shape);
        Register("images, 2000 nodes while the window shrinks", ImagesOfAShrinkingWindow, shape);
    }
    benchmark::RegisterBenchmark("tree map/draw 10000 visible nodes", DrawVisibleNodes)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(3);
    return true;
}();

}  // namespace
