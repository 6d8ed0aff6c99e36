// Which node lies under the pointer: random points in large pictures against the search of child
// after child, and what a motion of the pointer costs besides. Thread time, so that what else the
// machine does shall not show.

#include "TreeShapes.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingView.h"
#include "core/MeasuringFont.h"
#include "paint/PaintSession.h"
#include "private/CacheAccess.h"
#include "private/Reference.h"
#include "private/TreeMapRectangles.h"

#include "KUV2D.h"
#include "KUVEvents.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

namespace {

using NodeRef = VisReference<VisDataTree>;

constexpr KUVMathPoint2Df ORIGIN{0.0f, 0.0f};
constexpr KUVMathPoint2Df LARGE_WINDOW{4000.0f, 3000.0f};

double ThreadSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <class Work>
double Seconds(const Work& work)
{
    const double begin = ThreadSeconds();
    work();
    return ThreadSeconds() - begin;
}

core::MeasuringFont& Font()
{
    static const paint::PaintSession session;
    static std::string remark;
    static core::MeasuringFont* const font = paint::MakeFont("", remark);
    return *font;
}

/// What is searched: the picture in a window, in which most of a large tree is collapsed, or a
/// picture large enough for every node to be opened.
enum class Extent { Window, Opened };

/// A tree with a layout that has placed its nodes.
template <class Layout>
struct Picture {
    Picture(shapes::Shape shape, std::size_t nodes)
        : root(NodeRef::Adopt(shapes::MakeTree(shape, nodes))),
          bag(VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep())),
          layout(VisReference<Layout>::Adopt(Layout::CreateLayout(nullptr, root.Get(), bag.Get())))
    {
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture() { layout->SetTreeRoot(nullptr); }

    const KUVMathPoint2Df& Size() const
    {
        return VisCacheAccess::LayoutCacheOf(root.Get())->GetSize();
    }

    NodeRef root;
    VisReference<KUV2DBagRep> bag;
    VisReference<Layout> layout;
};

void PlaceAll(Picture<VisTreeMapLayout>& picture)
{
    auto& cache = static_cast<VisTreeMapLayout::VisTreeMapLayoutCache&>(*picture.root->GetCache());
    const KUVMathPoint2Df minimum = cache.ComputeMinimumExpandedSize(VisTreeMap_Stacked);
    LayOutTreeMapRectangles(picture.root.Get(), VisTreeMap_Stacked, ORIGIN,
                            {2.0f * minimum.x, 2.0f * minimum.y});
}

/// The hit test without anything remembered, for layouts that do not search discarded nodes.
VisDataTree* SearchChildByChild(VisDataTree* node, float x, float y)
{
    for (;;) {
        VisDataTree* hit = nullptr;
        for (VisDataTree* const child : node->GetChildren()) {
            const VisTreeSpaceFillingLayoutCache& cache = *VisCacheAccess::LayoutCacheOf(child);
            const KUVMathPoint2Df& lower = cache.GetPos();
            const KUVMathPoint2Df& size = cache.GetSize();
            if (cache.IsDiscarded() == 0 && lower.x <= x && x <= lower.x + size.x && lower.y <= y &&
                y <= lower.y + size.y) {
                hit = child;
                break;
            }
        }
        if (!hit)
            return node;
        node = hit;
    }
}

std::vector<KUVMathPoint2Df> RandomPoints(std::size_t count, const KUVMathPoint2Df& size)
{
    constexpr std::size_t STEPS = 1U << 24U;
    shapes::Random random(count);
    std::vector<KUVMathPoint2Df> points(count);
    for (KUVMathPoint2Df& point : points) {
        point.x = size.x * static_cast<float>(random.Below(STEPS)) / static_cast<float>(STEPS);
        point.y = size.y * static_cast<float>(random.Below(STEPS)) / static_cast<float>(STEPS);
    }
    return points;
}

/// Random points all over the picture, and some of them by the search of child after child.
template <class Layout>
void RandomHits(benchmark::State& state, shapes::Shape shape, Extent extent)
{
    // A chain that is opened whole is gone down whole, too.
    const std::size_t count =
        shape == shapes::Shape::Deep && extent == Extent::Opened ? 1000 : 200000;
    const auto nodes = static_cast<std::size_t>(state.range(0));
    Picture<Layout> picture(shape, nodes);
    if (extent == Extent::Opened)
        PlaceAll(picture);
    else
        picture.layout->Draw(ORIGIN, LARGE_WINDOW, &Font(), 1.0f);
    const std::vector<KUVMathPoint2Df> points = RandomPoints(count, picture.Size());
    std::vector<VisDataTree*> found(count);
    double best = std::numeric_limits<double>::max();
    for (auto _ : state) {
        const double seconds = Seconds([&] {
            for (std::size_t i = 0; i < count; ++i)
                found[i] = picture.layout->FindNodeAtPosition(points[i].x, points[i].y);
        });
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
    }
    std::size_t tried = 0;
    std::size_t different = 0;
    const double plain = Seconds([&] {
        const double begin = ThreadSeconds();
        while (tried < count && ThreadSeconds() - begin < 0.3) {
            const VisDataTree* const hit =
                SearchChildByChild(picture.root.Get(), points[tried].x, points[tried].y);
            different += hit == found[tried] ? 0U : 1U;
            ++tried;
        }
    });
    const double perPoint = best / static_cast<double>(count);
    state.counters["points/s"] = 1.0 / perPoint;
    state.counters["x child by child"] = plain / static_cast<double>(tried) / perPoint;
    state.counters["compared"] = static_cast<double>(tried);
    state.counters["different"] = static_cast<double>(different);
}

/// Points at each of which another node lies than at the one before.
template <class Layout>
std::vector<KUVMathPoint2Df> PointsOnDifferentNodes(const Picture<Layout>& picture)
{
    std::vector<KUVMathPoint2Df> points;
    const VisDataTree* last = nullptr;
    for (const KUVMathPoint2Df& point : RandomPoints(20000, picture.Size())) {
        const VisDataTree* const hit = picture.layout->FindNodeAtPosition(point.x, point.y);
        if (hit && hit != last)
            points.push_back(point);
        last = hit ? hit : last;
    }
    return points;
}

/// The pointer moves from node to node: the event, the changes of both views' status and the
/// notification, without what the hit test costs.
template <class Layout>
void Hover(benchmark::State& state, shapes::Shape shape)
{
    Picture<Layout> picture(shape, static_cast<std::size_t>(state.range(0)));
    picture.layout->Draw(ORIGIN, LARGE_WINDOW, &Font(), 1.0f);
    const std::vector<KUVMathPoint2Df> points = PointsOnDifferentNodes(picture);
    int heard = 0;
    picture.layout->GetCallbackManager()->Subscribe(
        Layout::ON_HOVER_NODE(), picture.layout.Get(),
        [&heard](const char*, KUVNotification*, KUVBaseUnknown*) { ++heard; });
    KUVMouseDevice mouse;
    double best = std::numeric_limits<double>::max();
    for (auto _ : state) {
        const double hits = Seconds([&] {
            for (const KUVMathPoint2Df& point : points)
                benchmark::DoNotOptimize(picture.layout->FindNodeAtPosition(point.x, point.y));
        });
        heard = 0;
        const double all = Seconds([&] {
            for (const KUVMathPoint2Df& point : points) {
                KUVMotionEvent motion(&mouse, 0, point.x, point.y, 0);
                benchmark::DoNotOptimize(picture.layout->DeviceAction(&motion));
            }
        });
        state.SetIterationTime(all);
        best = std::min(best, all - hits);
    }
    if (heard > 0)
        state.counters["us/hover"] = best * 1e6 / static_cast<double>(points.size());
    state.counters["hovers"] = heard;
    state.counters["views"] = picture.bag->GetChildren()->Count();
}

template <class Layout>
void RegisterFor(const std::string& layout)
{
    for (const shapes::Shape shape : shapes::ALL_SHAPES) {
        const std::string name = "hit test/" + layout + "/";
        benchmark::RegisterBenchmark((name + "window/" + shapes::NameOf(shape)).c_str(),
                                     RandomHits<Layout>, shape, Extent::Window)
            ->Arg(100000)
            ->Arg(1000000)
            ->Iterations(5)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "hover/" + shapes::NameOf(shape)).c_str(),
                                     Hover<Layout>, shape)
            ->Arg(10000)
            ->Arg(1000000)
            ->Iterations(5)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}

const bool REGISTERED = [] {
    RegisterFor<VisTreeMapLayout>("tree map");
    for (const shapes::Shape shape : shapes::ALL_SHAPES) {
        benchmark::RegisterBenchmark(
            (std::string("hit test/tree map/opened/") + shapes::NameOf(shape)).c_str(),
            RandomHits<VisTreeMapLayout>, shape, Extent::Opened)
            ->Arg(100000)
            ->Arg(1000000)
            ->Iterations(5)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace
