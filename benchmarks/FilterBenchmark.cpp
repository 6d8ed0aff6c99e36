// Filtered copies of trees of a scene. Beside the time stand the time a node, the growth from the
// tree a tenth as large (14 at most is the goal) and how many times longer than a plain copy of the
// whole tree it takes (3 at most is the goal).

#include "TreeShapes.h"
#include "VisDataTreeUtility.h"
#include "private/NodePath.h"
#include "private/Reference.h"

#include "core/PartGeometry.h"
#include "core/ProductObjects.h"
#include "core/ReleaseSceneTree.h"
#include "core/SceneReps.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

struct ReleaseTree {
    void operator()(VisDataTree* root) const { core::ReleaseSceneTree(root); }
};
using SceneTree = std::unique_ptr<VisDataTree, ReleaseTree>;

/// A tree whose leaves are picked faces and edges of one shape, each at a point of its own, and
/// whose other nodes are occurrences below a document.
class PickedTree {
public:
    PickedTree(shapes::Shape shape, std::size_t nodes)
        : document_(MakeDocument()),
          part_(VisReference<core::SceneShapeRep>::Adopt(
              core::SceneShapeRep::CreateRep(core::PartGeometry::Make({12, 4}, 2, 0, {}), nullptr)))
    {
        const std::vector<std::uint32_t> parents = shapes::MakeParents(shape, nodes);
        std::vector<bool> hasChildren(nodes, false);
        for (std::size_t i = 1; i < nodes; ++i)
            hasChildren[parents[i]] = true;
        // The levels of a path are as many as those of an assembly, also in a deep tree: the paths
        // of 10,000 levels would not fit into memory.
        constexpr int LEVELS = 6;
        std::vector<VisReference<KUVRep>> occurrences;
        KUVPickPath above;
        above.AddRep(document_.Get(), 1);
        for (int level = 1; level < LEVELS; ++level) {
            occurrences.push_back(
                VisReference<KUVRep>::Adopt(core::SceneOccurrenceRep::CreateRep(nullptr)));
            above.AddRep(occurrences.back().Get(), 1);
        }
        std::vector<VisDataTree*> made(nodes);
        for (std::size_t i = 0; i < nodes; ++i) {
            KUVPickPath path(above);
            if (!hasChildren[i])
                Pick(path, i);
            made[i] = VisDataTreeUtility::CreateVisDataTree(&path, 0);
            made[i]->SetLabel(KUVUnicodeString(shapes::LabelOf(i)));
            if (i == 0)
                continue;
            made[parents[i]]->InsertChild(made[i], 1);
            made[i]->Release();
        }
        tree_.reset(made.front());
    }

    VisDataTree* Root() const { return tree_.get(); }

private:
    static VisReference<KUVRep> MakeDocument()
    {
        const auto reference = VisReference<core::ProductReference>::Adopt(
            core::ProductReference::Create("Document", "document", core::ProductKind::Assembly));
        const auto occurrence = VisReference<core::ProductOccurrence>::Adopt(
            core::ProductOccurrence::CreateRoot(reference.Get()));
        const auto identificator =
            VisReference<KUVModelIdentificator>::Adopt(new KUVModelIdentificator(occurrence.Get()));
        return VisReference<KUVRep>::Adopt(
            core::SceneOccurrenceRep::CreateRep(identificator.Get()));
    }

    void Pick(KUVPickPath& path, std::size_t leaf) const
    {
        path.AddRep(part_.Get(), 1);
        path.Load({static_cast<int>(leaf % 4) + 1});
        path.SetIntersection({static_cast<float>(leaf % 1000), 0.0f, 0.0f});
    }

    VisReference<KUVRep> document_;
    VisReference<core::SceneShapeRep> part_;
    SceneTree tree_;
};

/// What a host would write that wants the same tree again: nothing is asked, nothing left out.
VisDataTree* CopyPlainly(const VisDataTree& root)
{
    const auto copy = [](const VisDataTree& node) {
        auto* const made = new VisDataTree(NodeDataOf(new KUVPickPath(*PickPathOf(node))),
                                           node.GetLabel(), node.GetIconName());
        made->SetIsMergeable(node.IsMergeable());
        made->SetIsMerged(node.IsMerged());
        made->SetIsLeafObject(node.IsLeafObject());
        return made;
    };
    VisDataTree* const top = copy(root);
    std::vector<std::pair<const VisDataTree*, VisDataTree*>> open{{&root, top}};
    while (!open.empty()) {
        const auto [source, target] = open.back();
        open.pop_back();
        for (const VisDataTree* const child : source->GetChildren()) {
            VisDataTree* const made = copy(*child);
            target->InsertChild(made, 1);
            made->Release();
            open.push_back({child, made});
        }
    }
    return top;
}

/// A kind of filter to time.
struct Kind {
    const char* name;
    VisDataTreeFilters filters;
    unsigned char checkLeaves;
};

VisDataTreeFilters FiltersOf(unsigned char showEdges, float radius, unsigned int product)
{
    VisDataTreeFilters filters;
    filters.showEdges = showEdges;
    filters.radius = radius;
    filters.productFilter = product;
    return filters;
}

const Kind KINDS[] = {
    {"nothing", FiltersOf(1, 0.0f, 0), 0},
    {"leaves", FiltersOf(1, 0.0f, 0), 1},
    {"edges", FiltersOf(0, 0.0f, 0), 0},
    {"edges_and_leaves", FiltersOf(0, 0.0f, 0), 1},
    {"all_in_sphere", FiltersOf(1, 1000.0f, 0), 0},
    {"half_in_sphere", FiltersOf(1, 500.0f, 0), 0},
    {"product", FiltersOf(1, 0.0f, 1), 0},
    {"product_and_leaves", FiltersOf(1, 0.0f, 1), 1},
    {"other_product_and_leaves", FiltersOf(1, 0.0f, 2), 1},
    {"everything", FiltersOf(0, 500.0f, 1), 1},
};

/// Time of this thread alone: what else the machine does shall not show as growth.
double ThreadSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The seconds that `copy` takes; the copy is freed outside.
double SecondsOf(const std::function<VisDataTree*()>& copy)
{
    const double begin = ThreadSeconds();
    const SceneTree made(copy());
    return ThreadSeconds() - begin;
}

void MeasureFilter(benchmark::State& state, shapes::Shape shape, const Kind& kind)
{
    static std::map<std::pair<std::string, std::size_t>, double> known;
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const PickedTree tree(shape, nodes);
    double filtered = 0;
    double plain = 0;
    for (auto unused : state) {
        static_cast<void>(unused);
        // In turns, so that a slow moment of the machine meets both.
        const double plainSeconds = SecondsOf([&] { return CopyPlainly(*tree.Root()); });
        const double seconds = SecondsOf([&] {
            return VisDataTreeUtility::ApplyFilters(tree.Root(), kind.filters, kind.checkLeaves);
        });
        state.SetIterationTime(seconds);
        filtered = filtered == 0 ? seconds : std::min(filtered, seconds);
        plain = plain == 0 ? plainSeconds : std::min(plain, plainSeconds);
    }
    const std::string what = std::string(kind.name) + '/' + shapes::NameOf(shape);
    known[{what, nodes}] = filtered;
    state.counters["ns_each"] = filtered * 1e9 / static_cast<double>(nodes);
    state.counters["times_plain"] = filtered / plain;
    const double tenth = known[{what, nodes / 10}];
    if (tenth > 0)
        state.counters["growth"] = filtered / tenth;
}

bool RegisterAll()
{
    for (const Kind& kind : KINDS) {
        for (const shapes::Shape shape : shapes::ALL_SHAPES) {
            const std::string name =
                std::string("filter/") + kind.name + '/' + shapes::NameOf(shape);
            benchmark::RegisterBenchmark(
                name.c_str(),
                [&kind, shape](benchmark::State& state) { MeasureFilter(state, shape, kind); })
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond)
                ->RangeMultiplier(10)
                ->Range(10000, 1000000)
                ->Iterations(3);
        }
    }
    return true;
}

const bool REGISTERED = RegisterAll();

}  // namespace
