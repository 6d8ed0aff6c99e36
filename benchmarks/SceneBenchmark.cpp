// From a scene to a weighted tree. Beside the time stand the time a node (or path), the growth from
// the scene a tenth as large (14 at most is the goal) and, for many paths under one parent, how
// many times longer the search of children one after the other takes (100 at least is the goal).

#include "TreeShapes.h"
#include "VisDataTreeUtility.h"
#include "VisPathUtility.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "private/Reference.h"

#include "core/ReleaseSceneTree.h"
#include "core/SceneReps.h"
#include "core/SceneViewpoint.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

/// Keeps the caches and shows nothing.
class WeightLayout : public VisTreeSpaceFillingLayout {
public:
    WeightLayout() : VisTreeSpaceFillingLayout(nullptr) {}

protected:
    VisTreeSpaceFillingLayoutCache* GenerateCache() override
    {
        return new (std::nothrow) VisTreeSpaceFillingLayoutCache(nullptr);
    }
};

struct ReleaseTree {
    void operator()(VisDataTree* root) const { core::ReleaseSceneTree(root); }
};
using SceneTree = std::unique_ptr<VisDataTree, ReleaseTree>;

/// Time of this thread alone: what else the machine does shall not show as growth.
double ThreadSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double SecondsOf(const std::function<void()>& work)
{
    const double begin = ThreadSeconds();
    work();
    return ThreadSeconds() - begin;
}

void Report(benchmark::State& state, const std::string& what, double seconds, std::size_t count)
{
    static std::map<std::pair<std::string, std::size_t>, double> best;
    best[{what, count}] = seconds;
    state.counters["ns_each"] = seconds * 1e9 / static_cast<double>(count);
    const double tenth = best[{what, count / 10}];
    if (tenth > 0)
        state.counters["growth"] = seconds / tenth;
}

/// Runs `measure`, which gives seconds, once an iteration and reports the best.
void ReportBest(benchmark::State& state, const std::string& what, std::size_t count,
                const std::function<double()>& measure)
{
    double best = 0;
    for (auto unused : state) {
        static_cast<void>(unused);
        const double seconds = measure();
        state.SetIterationTime(seconds);
        best = best == 0 ? seconds : std::min(best, seconds);
    }
    Report(state, what, best, count);
}

list<KUVPickPath> ListOf(std::vector<KUVPickPath>& paths)
{
    list<KUVPickPath> entries;
    entries.Reserve(static_cast<int>(paths.size()));
    for (KUVPickPath& path : paths)
        entries.Append(&path);
    return entries;
}

// ---- many paths under one parent

enum class Leaves { Reps, Faces };

/// A bag with many reps, or one rep with many faces, and the paths to all of them.
class OneParent {
public:
    OneParent(Leaves leaves, std::size_t count)
        : parent_(VisReference<core::SceneOccurrenceRep>::Adopt(
              core::SceneOccurrenceRep::CreateRep(nullptr)))
    {
        paths_.reserve(count);
        const std::size_t faces = leaves == Leaves::Faces ? count : 1;
        const auto geometry =
            core::PartGeometry::Make(std::vector<std::uint32_t>(faces, 2), 0, 0, {});
        for (std::size_t i = 0; i < count; ++i) {
            if (leaves == Leaves::Reps || i == 0)
                AddRep(geometry);
            KUVPickPath& path = paths_.emplace_back();
            path.AddRep(parent_.Get(), 1);
            path.AddRep(lastRep_, 1);
            if (leaves == Leaves::Faces)
                path.Load({static_cast<int>(i) + 1});
        }
    }

    std::vector<KUVPickPath>& Paths() { return paths_; }

private:
    void AddRep(const std::shared_ptr<const core::PartGeometry>& geometry)
    {
        const auto rep = VisReference<core::SceneShapeRep>::Adopt(
            core::SceneShapeRep::CreateRep(geometry, nullptr));
        parent_->AddChild(rep.Get());
        lastRep_ = rep.Get();
    }

    VisReference<core::SceneOccurrenceRep> parent_;
    KUVRep* lastRep_ = nullptr;
    std::vector<KUVPickPath> paths_;
};

double BuildSeconds(std::vector<KUVPickPath>& paths)
{
    const list<KUVPickPath> entries = ListOf(paths);
    SceneTree tree;
    return SecondsOf(
        [&] { tree.reset(VisDataTreeUtility::CreateTreeFromPickPath(entries, nullptr, 0)); });
}

void MeasureOneParent(benchmark::State& state, Leaves leaves)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    OneParent scene(leaves, count);
    ReportBest(state, leaves == Leaves::Reps ? "reps" : "faces", count,
               [&] { return BuildSeconds(scene.Paths()); });
}

/// What the index replaces: each path is looked for among all children before its own. All of them
/// take minutes, so that every 100th stands for a hundred.
void MeasureSearchInOrder(benchmark::State& state, Leaves leaves)
{
    constexpr std::size_t STEP = 100;
    OneParent scene(leaves, static_cast<std::size_t>(state.range(0)));
    std::vector<KUVPickPath>& paths = scene.Paths();
    const double indexed = std::min(BuildSeconds(paths), BuildSeconds(paths));
    const list<KUVPickPath> entries = ListOf(paths);
    const SceneTree tree(VisDataTreeUtility::CreateTreeFromPickPath(entries, nullptr, 0));
    for (auto unused : state) {
        static_cast<void>(unused);
        const double inOrder = SecondsOf([&] {
            for (std::size_t i = 0; i < paths.size(); i += STEP) {
                if (!VisDataTreeUtility::GetChildWithPickPath(tree.get(), &paths[i]))
                    state.SkipWithError("a path is missing from the tree");
            }
        });
        state.SetIterationTime(inOrder);
        state.counters["times_the_index"] = inOrder * STEP / indexed;
    }
}

// ---- whole scenes

/// Bags and shapes in the shape of a tree.
class ShapedScene {
public:
    ShapedScene(shapes::Shape shape, std::size_t nodes)
        : parents_(shapes::MakeParents(shape, nodes)), reps_(nodes)
    {
        std::vector<bool> hasChildren(nodes, false);
        for (std::size_t i = 1; i < nodes; ++i)
            hasChildren[parents_[i]] = true;
        const auto geometry = core::PartGeometry::Make({12, 4}, 0, 0, {});
        for (std::size_t i = 0; i < nodes; ++i) {
            if (hasChildren[i])
                reps_[i] = core::SceneOccurrenceRep::CreateRep(nullptr);
            else
                reps_[i] = core::SceneShapeRep::CreateRep(geometry, nullptr);
            if (i > 0)
                static_cast<core::SceneOccurrenceRep*>(reps_[parents_[i]])->AddChild(reps_[i]);
        }
        viewpoint_ = VisReference<core::SceneViewpoint>::Adopt(
            core::SceneViewpoint::CreateForDocument(reps_.front()));
    }
    ~ShapedScene()
    {
        for (KUVRep* const rep : reps_)
            rep->Release();
    }
    ShapedScene(const ShapedScene&) = delete;
    ShapedScene& operator=(const ShapedScene&) = delete;

    std::vector<KUVPickPath> Paths()
    {
        return VisPathUtility::GenerateAllKUVPickPath(*viewpoint_.Get(), 0, 0);
    }

    /// A tree with a node for each rep. Its paths hold one rep only: those of a deep scene would
    /// not fit into memory.
    SceneTree MakeTree() const
    {
        std::vector<VisDataTree*> nodes(reps_.size());
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            KUVPickPath path;
            path.AddRep(reps_[i], 1);
            nodes[i] = VisDataTreeUtility::CreateVisDataTree(&path, 0);
            if (i == 0)
                continue;
            nodes[parents_[i]]->InsertChild(nodes[i], 1);
            nodes[i]->Release();
        }
        return SceneTree(nodes.front());
    }

private:
    std::vector<std::uint32_t> parents_;
    std::vector<KUVRep*> reps_;
    VisReference<core::SceneViewpoint> viewpoint_;
};

void MeasureEnumeration(benchmark::State& state, shapes::Shape shape)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    ShapedScene scene(shape, nodes);
    ReportBest(state, std::string("enumerate ") + shapes::NameOf(shape), nodes, [&] {
        std::vector<KUVPickPath> paths;
        return SecondsOf([&] { paths = scene.Paths(); });
    });
}

void MeasureBuilding(benchmark::State& state, shapes::Shape shape)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    ShapedScene scene(shape, nodes);
    std::vector<KUVPickPath> paths = scene.Paths();
    ReportBest(state, std::string("build ") + shapes::NameOf(shape), nodes,
               [&] { return BuildSeconds(paths); });
}

void MeasureWeighing(benchmark::State& state, shapes::Shape shape, bool wholeReps)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const ShapedScene scene(shape, nodes);
    const SceneTree tree = scene.MakeTree();
    const auto layout = VisReference<WeightLayout>::Adopt(new WeightLayout);
    layout->SetTreeRoot(tree.get());
    unsigned int triangles = 0;
    ReportBest(state, std::string(wholeReps ? "whole " : "weigh ") + shapes::NameOf(shape), nodes,
               [&] {
                   // A bag that changes makes the host forget what it counted before.
                   const auto bag = VisReference<KUV3DBagRep>::Adopt(KUV3DBagRep::CreateRep());
                   bag->RemoveChild(nullptr);
                   return SecondsOf([&] {
                       triangles = VisDataTreeUtility::ComputeNbTriangles(tree.get(), wholeReps);
                   });
               });
    state.counters["triangles"] = triangles;
    layout->SetTreeRoot(nullptr);
}

benchmark::internal::Benchmark* Register(const std::string& name,
                                         const std::function<void(benchmark::State&)>& measure)
{
    return benchmark::RegisterBenchmark(("scene/" + name).c_str(), measure)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

void RegisterShape(shapes::Shape shape)
{
    constexpr std::int64_t SMALLEST = 1000;
    constexpr std::int64_t LARGEST = 1000000;
    const std::string name = shapes::NameOf(shape);
    const auto registerSizes = [](const std::string& what, const auto& measure) {
        Register(what, measure)->RangeMultiplier(10)->Range(SMALLEST, LARGEST)->Iterations(3);
    };
    if (shape != shapes::Shape::Deep) {
        registerSizes("enumerate/" + name,
                      [shape](benchmark::State& state) { MeasureEnumeration(state, shape); });
        registerSizes("build/" + name,
                      [shape](benchmark::State& state) { MeasureBuilding(state, shape); });
    }
    registerSizes("triangles/" + name,
                  [shape](benchmark::State& state) { MeasureWeighing(state, shape, false); });
    registerSizes("triangles_whole_reps/" + name,
                  [shape](benchmark::State& state) { MeasureWeighing(state, shape, true); });
}

bool RegisterAll()
{
    for (const Leaves leaves : {Leaves::Reps, Leaves::Faces}) {
        const std::string name = leaves == Leaves::Reps ? "reps" : "faces";
        Register("one_parent/" + name,
                 [leaves](benchmark::State& state) { MeasureOneParent(state, leaves); })
            ->RangeMultiplier(10)
            ->Range(1000, 1000000)
            ->Iterations(3);
        Register("one_parent_in_order/" + name,
                 [leaves](benchmark::State& state) { MeasureSearchInOrder(state, leaves); })
            ->Arg(100000)
            ->Iterations(1);
    }
    for (const shapes::Shape shape : shapes::ALL_SHAPES)
        RegisterShape(shape);
    return true;
}

const bool REGISTERED = RegisterAll();

}  // namespace
