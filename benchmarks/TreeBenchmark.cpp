// Operations on whole trees, each shape at 1,000 to 1,000,000 nodes. Beside the time stand the time
// a node, the growth from the tree a tenth as large (14 at most is the goal), and for the memory of
// trees the bytes a node (450 at most), alone and with the caches of one layout.

#include "TreeShapes.h"
#include "VisCushionLayout.h"
#include "VisDataTree.h"
#include "VisIcicleLayout.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "VisTreeSpaceFillingView.h"
#include "private/Reference.h"
#include "private/TreeWalk.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <limits>
#include <malloc.h>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

using NodeRef = VisReference<VisDataTree>;

/// Keeps the caches and shows nothing.
class CacheLayout : public VisTreeSpaceFillingLayout {
public:
    CacheLayout() : VisTreeSpaceFillingLayout(nullptr) {}
    using VisTreeSpaceFillingLayout::ResetView;

protected:
    VisTreeSpaceFillingLayoutCache* GenerateCache() override
    {
        return new (std::nothrow) VisTreeSpaceFillingLayoutCache(nullptr);
    }
};

/// What a tree needs to be worked on; made anew for every measurement.
struct Subject {
    std::vector<std::uint32_t> parents;
    NodeRef root;
    VisReference<CacheLayout> layout;
    std::vector<VisDataTree*> preOrder;
};

/// How far a subject is prepared before the clock starts.
enum class Stage { Nothing, Tree, Linked };

struct Operation {
    const char* name;
    Stage stage;
    std::function<void(Subject&)> run;
};

void Prepare(Subject& subject, Stage stage)
{
    if (stage == Stage::Nothing)
        return;
    subject.root = NodeRef::Adopt(shapes::MakeTree(subject.parents));
    if (stage == Stage::Tree)
        return;
    subject.layout = VisReference<CacheLayout>::Adopt(new CacheLayout);
    subject.layout->SetTreeRoot(subject.root.Get());
    subject.preOrder.reserve(subject.parents.size());
    VisPreOrderWalk<VisDataTree> walk(subject.root.Get());
    while (VisDataTree* const node = walk.Next())
        subject.preOrder.push_back(node);
}

/// Sums up the leaves bottom-up and stores every sum, as the scene's statistics do.
void Weigh(const std::vector<VisDataTree*>& preOrder)
{
    for (auto node = preOrder.rbegin(); node != preOrder.rend(); ++node) {
        long long sum = (*node)->GetChildren().empty() ? 1 : 0;
        for (const VisDataTree* const child : (*node)->GetChildren())
            sum += child->GetCache()->GetSizeValue();
        (*node)->GetCache()->SetColorValue(sum);
        (*node)->GetCache()->SetSizeValue(sum);
    }
}

const std::vector<Operation>& Operations()
{
    static const std::vector<Operation> OPERATIONS = {
        {"build", Stage::Nothing, [](Subject& s) { Prepare(s, Stage::Tree); }},
        {"count nodes", Stage::Tree,
         [](Subject& s) { benchmark::DoNotOptimize(s.root->ComputeNumberOfNodes()); }},
        {"count leaves and levels", Stage::Tree,
         [](Subject& s) {
             benchmark::DoNotOptimize(s.root->ComputeNumberOfLeaves());
             benchmark::DoNotOptimize(s.root->ComputeMaxDepth());
         }},
        {"merge", Stage::Tree, [](Subject& s) { s.root->UpdateMerge(1, 1); }},
        {"link caches", Stage::Tree,
         [](Subject& s) {
             s.layout = VisReference<CacheLayout>::Adopt(new CacheLayout);
             s.layout->SetTreeRoot(s.root.Get());
         }},
        {"weigh", Stage::Linked, [](Subject& s) { Weigh(s.preOrder); }},
        {"use values", Stage::Linked,
         [](Subject& s) {
             s.root->GetCache()->SetColorWithValue(1);
             s.root->GetCache()->SetResizeWithValue(1);
             s.root->GetCache()->DoNotUseValue();
         }},
        {"reset views", Stage::Linked,
         [](Subject& s) {
             s.layout->ResetView(static_cast<VisTreeSpaceFillingLayoutCache*>(s.root->GetCache()));
         }},
        {"unlink caches", Stage::Linked, [](Subject& s) { s.layout->SetTreeRoot(nullptr); }},
        {"destroy", Stage::Tree, [](Subject& s) { s.root = NodeRef(); }},
    };
    return OPERATIONS;
}

/// The best time so far of each operation, shape and size: sizes are run from small to large.
double& BestTime(const std::string& what, std::size_t nodes)
{
    static std::map<std::pair<std::string, std::size_t>, double> best;
    return best[{what, nodes}];
}

/// Time of this thread alone: what else the machine does shall not show as growth.
double ThreadSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Reads more memory than any processor cache holds.
///
/// Making a tree leaves it in the processor's caches as far as it fits: a tree of 100,000 nodes
/// whole, of 1,000,000 nothing. Without this, growth would tell the size of the caches.
void EmptyProcessorCaches()
{
    constexpr std::size_t LINE = 64;
    static std::vector<unsigned char> memory(std::size_t{128} << 20U, 1);
    for (std::size_t i = 0; i < memory.size(); i += LINE)
        memory[i] = static_cast<unsigned char>(memory[i] + 1);
    benchmark::DoNotOptimize(memory.data());
    benchmark::ClobberMemory();
}

void Measure(benchmark::State& state, const Operation& operation, shapes::Shape shape)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const std::vector<std::uint32_t> parents = shapes::MakeParents(shape, nodes);
    double best = 0;
    for (auto unused : state) {
        static_cast<void>(unused);
        Subject subject{parents, {}, {}, {}};
        Prepare(subject, operation.stage);
        EmptyProcessorCaches();
        const double begin = ThreadSeconds();
        operation.run(subject);
        const double time = ThreadSeconds() - begin;
        state.SetIterationTime(time);
        best = best == 0 ? time : std::min(best, time);
    }
    const std::string what = std::string(operation.name) + shapes::NameOf(shape);
    BestTime(what, nodes) = best;
    state.counters["ns_per_node"] = best * 1e9 / static_cast<double>(nodes);
    if (BestTime(what, nodes / 10) > 0)
        state.counters["growth"] = best / BestTime(what, nodes / 10);
}

std::size_t AllocatedBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// Memory of the tree and of one cache a node, the allocator's overhead included, for the base's
/// cache and for those of the layouts.
void MeasureMemory(benchmark::State& state, shapes::Shape shape)
{
    const auto nodes = static_cast<std::size_t>(state.range(0));
    const auto perNode = [nodes](std::size_t bytes) {
        return static_cast<double>(bytes) / static_cast<double>(nodes);
    };
    Subject subject{shapes::MakeParents(shape, nodes), {}, {}, {}};
    for (auto unused : state) {
        static_cast<void>(unused);
        const std::size_t begin = AllocatedBytes();
        Prepare(subject, Stage::Tree);
        state.counters["tree"] = perNode(AllocatedBytes() - begin);
        VisDataTree* const root = subject.root.Get();
        const auto measure = [&](const char* what, const auto& makeLayout) {
            VisTreeSpaceFillingLayout* const layout = makeLayout();
            state.counters[what] = perNode(AllocatedBytes() - begin);
            layout->SetTreeRoot(nullptr);
            layout->Release();
        };
        measure("base cache", [root] {
            auto* const layout = new CacheLayout;
            layout->SetTreeRoot(root);
            return layout;
        });
        measure("tree map",
                [root] { return VisTreeMapLayout::CreateLayout(nullptr, root, nullptr); });
        measure("cushion",
                [root] { return VisCushionLayout::CreateLayout(nullptr, root, nullptr); });
        measure("icicle", [root] { return VisIcicleLayout::CreateLayout(nullptr, root, nullptr); });
    }
}

bool RegisterAll()
{
    // Memory given back by one measurement is kept for the next: page faults are the system's.
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_THRESHOLD, std::numeric_limits<int>::max());
    for (const Operation& operation : Operations()) {
        for (const shapes::Shape shape : shapes::ALL_SHAPES) {
            const std::string name =
                std::string("tree/") + operation.name + "/" + shapes::NameOf(shape);
            benchmark::RegisterBenchmark(
                name.c_str(),
                [&operation, shape](benchmark::State& state) { Measure(state, operation, shape); })
                ->RangeMultiplier(10)
                ->Range(1000, 1000000)
                ->Iterations(5)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    for (const shapes::Shape shape : shapes::ALL_SHAPES) {
        const std::string name = std::string("tree/memory/") + shapes::NameOf(shape);
        benchmark::RegisterBenchmark(
            name.c_str(), [shape](benchmark::State& state) { MeasureMemory(state, shape); })
            ->Arg(1000000)
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}

const bool REGISTERED = RegisterAll();

}  // namespace
