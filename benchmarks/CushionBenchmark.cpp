// The cushion tree map: geometry against slice-and-dice over flat arrays, shading against the plain
// loop and against storing a constant, and a whole drawing against touching a fresh buffer. All at
// 4000 x 3000, in thread time, best of several runs.

#include "TreeShapes.h"
#include "VisCushionLayout.h"
#include "Yardstick.h"
#include "private/CushionRectangles.h"
#include "private/CushionShading.h"
#include "private/Reference.h"
#include "private/TreeWalk.h"

#include "KUV2D.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#if defined(__x86_64__)
#    include <immintrin.h>
#endif

namespace {

using CushionShading::Canvas;
using CushionShading::Patch;
using CushionShading::Way;
using NodeRef = VisReference<VisDataTree>;
using LayoutRef = VisReference<VisCushionLayout>;
using Cache = VisCushionLayout::VisCushionLayoutCache;
using yardstick::Seconds;

constexpr KUVMathPoint2Df ORIGIN{0.0f, 0.0f};
constexpr int WIDTH = 4000;
constexpr int HEIGHT = 3000;
constexpr KUVMathPoint2Df WINDOW{4000.0f, 3000.0f};
constexpr std::size_t IMAGE_BYTES = std::size_t{4} * WIDTH * HEIGHT;
constexpr std::size_t PAGE = 4096;

template <class Work>
double BestOf(int runs, const Work& work)
{
    double best = std::numeric_limits<double>::max();
    for (int i = 0; i < runs; ++i)
        best = std::min(best, Seconds(work));
    return best;
}

/// A tree with its layout; every leaf has a size and a colour.
struct Subject {
    explicit Subject(const std::vector<std::uint32_t>& parents)
        : root(NodeRef::Adopt(shapes::MakeTree(parents))),
          bag(VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep())),
          layout(LayoutRef::Adopt(VisCushionLayout::CreateLayout(nullptr, root.Get(), bag.Get())))
    {
        root->GetCache()->SetResizeWithValue(1);
        root->GetCache()->SetColorWithValue(1);
        shapes::Random random(parents.size());
        ForEachLeaf([&random](Cache& cache) {
            cache.SetSizeValue(1 + static_cast<long long>(random.Below(100)));
            cache.SetColorValue(static_cast<long long>(random.Below(9)));
        });
    }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;
    ~Subject() { layout->SetTreeRoot(nullptr); }

    Cache& RootCache() const { return static_cast<Cache&>(*root->GetCache()); }

    template <class Visit>
    void ForEachLeaf(const Visit& visit) const
    {
        VisPreOrderWalk<VisDataTree> walk(root.Get());
        while (VisDataTree* const node = walk.Next()) {
            if (node->GetChildren().empty())
                visit(static_cast<Cache&>(*node->GetCache()));
        }
    }

    NodeRef root;
    VisReference<KUV2DBagRep> bag;
    LayoutRef layout;
};

/// Parents of a balanced tree with about so many leaves; one leaf is the root alone.
std::vector<std::uint32_t> ParentsForLeaves(std::size_t leaves)
{
    return leaves == 1 ? std::vector<std::uint32_t>{0}
                       : shapes::MakeParents(shapes::Shape::Balanced, leaves * 8 / 7);
}

/// A buffer that was touched before.
struct Buffer {
    Buffer() : bytes(static_cast<unsigned char*>(std::aligned_alloc(PAGE, IMAGE_BYTES)))
    {
        std::memset(bytes.get(), 1, IMAGE_BYTES);
    }
    struct Free {
        void operator()(unsigned char* p) const { std::free(p); }
    };
    std::unique_ptr<unsigned char, Free> bytes;
};

// ---- geometry

/// Surfaces and rectangles of all nodes, and the values as well with `fresh`.
void Geometry(benchmark::State& state, shapes::Shape shape, bool fresh)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const std::vector<std::uint32_t> parents = shapes::MakeParents(shape, nodes);
    yardstick::FlatTreeMap flat(parents);
    const double yardstick = BestOf(15, [&flat] { flat.LayOut(WINDOW.x, WINDOW.y); });
    const Subject subject(parents);
    const auto layOut = [&subject] {
        LayOutCushions(subject.root.Get(), VisTreeMap_SideBySide, ORIGIN, WINDOW);
    };
    layOut();
    double best = std::numeric_limits<double>::max();
    for (auto _ : state) {
        if (fresh)
            subject.RootCache().ResetCache();
        const double seconds = Seconds(layOut);
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
    }
    state.counters["ns/node"] = best * 1e9 / static_cast<double>(nodes);
    state.counters["flat ns/node"] = yardstick * 1e9 / static_cast<double>(nodes);
    state.counters["x yardstick"] = best / yardstick;
}

// ---- shading

std::vector<Patch> PatchesOf(const Subject& subject)
{
    LayOutCushions(subject.root.Get(), VisTreeMap_SideBySide, ORIGIN, WINDOW);
    std::vector<Patch> patches;
    subject.ForEachLeaf([&patches](const Cache& cache) {
        const KUVMathPoint2Df& position = cache.GetPos();
        const KUVMathPoint2Df& size = cache.GetSize();
        const float* const surface = cache.GetSurface();
        const Patch patch{CushionShading::PixelsOf({{position.x, position.x + size.x},
                                                    {position.y, position.y + size.y}},
                                                   WIDTH, HEIGHT),
                          {{surface[0], surface[1]}, {surface[2], surface[3]}},
                          VisCushionLayout::COLOR_MAP[cache.GetColorValue()]};
        if (!patch.box.IsEmpty())
            patches.push_back(patch);
    });
    return patches;
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void StreamVectors(unsigned char* to)
{
    const __m256i value = _mm256_set1_epi32(-1);
    for (std::size_t i = 0; i < IMAGE_BYTES; i += sizeof(value))
        _mm256_stream_si256(reinterpret_cast<__m256i*>(to + i), value);
    _mm_sfence();
}
#endif

/// As fast as memory takes a constant, past the caches where the machine can do that.
void StreamConstant(unsigned char* to)
{
#if defined(__x86_64__)
    if (CushionShading::IsAvailable(Way::Avx2)) {
        StreamVectors(to);
        benchmark::ClobberMemory();
        return;
    }
#endif
    std::memset(to, 255, IMAGE_BYTES);
    benchmark::ClobberMemory();
}

void Shading(benchmark::State& state)
{
    const Subject subject(ParentsForLeaves(static_cast<std::size_t>(state.range(0))));
    const std::vector<Patch> patches = PatchesOf(subject);
    const Buffer buffer;
    const Canvas canvas{buffer.bytes.get(), WIDTH, HEIGHT};
    const auto shade = [&](Way way) {
        for (const Patch& patch : patches)
            CushionShading::ShadeBy(way, canvas, patch);
    };
    const double streamed = BestOf(15, [&buffer] { StreamConstant(buffer.bytes.get()); });
    const double plain = BestOf(5, [&shade] { shade(Way::Plain); });
    const Way fast = CushionShading::IsAvailable(Way::Avx2) ? Way::Avx2 : Way::Plain;
    double best = std::numeric_limits<double>::max();
    for (auto _ : state) {
        const double seconds = Seconds([&] { shade(fast); });
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
    }
    state.counters["patches"] = static_cast<double>(patches.size());
    state.counters["plain ms"] = plain * 1e3;
    state.counters["best ms"] = best * 1e3;
    state.counters["x faster"] = plain / best;
    state.counters["% of stream"] = 100.0 * streamed / best;
}

// ---- drawing

/// Has large buffers come from the system, page by page, as they do in a program that does not ask
/// for anything else; the benchmarks of trees keep freed memory instead.
struct FreshBuffers {
    FreshBuffers()
    {
        mallopt(M_MMAP_THRESHOLD, 1 << 20);
        malloc_trim(0);
    }
    ~FreshBuffers() { mallopt(M_MMAP_THRESHOLD, std::numeric_limits<int>::max()); }
    FreshBuffers(const FreshBuffers&) = delete;
    FreshBuffers& operator=(const FreshBuffers&) = delete;
};

/// Touches every page of a fresh buffer once and frees it.
void TouchFreshBuffer()
{
    auto* const bytes = static_cast<unsigned char*>(std::malloc(IMAGE_BYTES));
    if (!bytes)
        return;
    for (std::size_t i = 0; i < IMAGE_BYTES; i += PAGE)
        static_cast<volatile unsigned char*>(bytes)[i] = 1;
    std::free(bytes);
}

void DrawWhole(benchmark::State& state)
{
    const Subject subject(ParentsForLeaves(static_cast<std::size_t>(state.range(0))));
    const FreshBuffers fresh;
    const auto draw = [&subject] { subject.layout->Draw(ORIGIN, WINDOW, nullptr, 1.0f); };
    const double first = Seconds(draw);
    double touched = std::numeric_limits<double>::max();
    double best = std::numeric_limits<double>::max();
    for (auto _ : state) {
        // Side by side, so that both meet the same machine; what was freed before is no fresh
        // buffer.
        malloc_trim(0);
        touched = std::min(touched, Seconds(TouchFreshBuffer));
        malloc_trim(0);
        const double seconds = Seconds(draw);
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
    }
    state.counters["first ms"] = first * 1e3;
    state.counters["again ms"] = best * 1e3;
    state.counters["touch ms"] = touched * 1e3;
    state.counters["x touch"] = best / touched;
    state.counters["first x touch"] = first / touched;
}

const bool registered = [] {
    for (const shapes::Shape shape : shapes::ALL_SHAPES) {
        for (const bool fresh : {true, false}) {
            const std::string name = std::string("cushion/geometry ") +
                                     (fresh ? "and values/" : "alone/") + shapes::NameOf(shape);
            benchmark::RegisterBenchmark(name.c_str(), Geometry, shape, fresh)
                ->RangeMultiplier(10)
                ->Range(10000, 1000000)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RegisterBenchmark("cushion/shading 4000x3000, leaves", Shading)
        ->Arg(1)
        ->Arg(1000)
        ->Arg(10000)
        ->Arg(100000)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(20);
    benchmark::RegisterBenchmark("cushion/draw 4000x3000, leaves", DrawWhole)
        ->Arg(1)
        ->Arg(1000)
        ->Arg(10000)
        ->Arg(100000)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(10);
    return true;
}();

}  // namespace
