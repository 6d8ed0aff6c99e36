#include "import/ImportedModel.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace kuvimport {

namespace {

constexpr std::uint64_t LARGEST = std::numeric_limits<std::uint64_t>::max();

std::uint64_t AddSaturated(std::uint64_t a, std::uint64_t b)
{
    return a > LARGEST - b ? LARGEST : a + b;
}

struct Totals {
    std::uint64_t occurrences = 0;
    std::uint64_t reps = 0;
    std::uint64_t faces = 0;
    std::uint64_t edges = 0;
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint32_t levels = 0;

    void Add(const Totals& other)
    {
        occurrences = AddSaturated(occurrences, other.occurrences);
        reps = AddSaturated(reps, other.reps);
        faces = AddSaturated(faces, other.faces);
        edges = AddSaturated(edges, other.edges);
        vertices = AddSaturated(vertices, other.vertices);
        triangles = AddSaturated(triangles, other.triangles);
        levels = std::max(levels, other.levels);
    }
};

Totals OwnTotals(const ImportedModel& model, const Product& product)
{
    Totals own;
    if (product.geometry >= model.geometries.size())
        return own;
    const PartGeometry& geometry = model.geometries[product.geometry];
    own.reps = 1;
    own.faces = geometry.trianglesPerFace.size();
    own.edges = geometry.edges;
    own.vertices = geometry.vertices;
    own.triangles = geometry.Triangles();
    return own;
}

std::uint64_t UniqueTriangles(const ImportedModel& model, const std::vector<std::uint32_t>& used)
{
    std::vector<bool> seen(model.geometries.size(), false);
    std::uint64_t triangles = 0;
    for (const std::uint32_t index : used) {
        const std::uint32_t geometry = model.products[index].geometry;
        if (geometry >= seen.size() || seen[geometry])
            continue;
        seen[geometry] = true;
        triangles = AddSaturated(triangles, model.geometries[geometry].Triangles());
    }
    return triangles;
}

}  // namespace

double Extent::LargestSide() const
{
    if (IsEmpty())
        return 0;
    return std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
}

std::uint64_t PartGeometry::Triangles() const
{
    return std::accumulate(trianglesPerFace.begin(), trianglesPerFace.end(), std::uint64_t{0});
}

std::vector<std::uint32_t> ChildrenFirst(const ImportedModel& model)
{
    enum class State : unsigned char { New, Open, Done };
    const std::size_t size = model.products.size();
    std::vector<std::uint32_t> order;
    if (model.root >= size)
        return order;

    std::vector<State> states(size, State::New);
    std::vector<std::pair<std::uint32_t, std::size_t>> chain{{model.root, 0}};
    states[model.root] = State::Open;
    while (!chain.empty()) {
        auto& [product, next] = chain.back();
        const std::vector<Component>& components = model.products[product].components;
        if (next == components.size()) {
            states[product] = State::Done;
            order.push_back(product);
            chain.pop_back();
            continue;
        }
        const std::uint32_t child = components[next++].product;
        if (child >= size || states[child] == State::Open)
            return {};
        if (states[child] == State::New) {
            states[child] = State::Open;
            chain.emplace_back(child, 0);
        }
    }
    return order;
}

ModelCounts ImportedModel::Count() const
{
    const std::vector<std::uint32_t> order = ChildrenFirst(*this);
    ModelCounts counts;
    if (order.empty())
        return counts;

    std::vector<Totals> totals(products.size());
    for (const std::uint32_t index : order) {
        const Product& product = products[index];
        Totals sum = OwnTotals(*this, product);
        for (const Component& component : product.components)
            sum.Add(totals[component.product]);
        sum.occurrences = AddSaturated(sum.occurrences, 1);
        ++sum.levels;
        totals[index] = sum;
        counts.products += product.isFileRoot ? 0 : 1;
    }
    const Totals& whole = totals[root];
    counts.instances = whole.occurrences - 1;
    counts.reps = whole.reps;
    counts.faces = whole.faces;
    counts.edges = whole.edges;
    counts.vertices = whole.vertices;
    counts.triangles = whole.triangles;
    counts.trianglesUnique = UniqueTriangles(*this, order);
    counts.levels = whole.levels;
    return counts;
}

}  // namespace kuvimport
