#ifndef TreeShapes_h
#define TreeShapes_h

// The trees on which the benchmarks work: the same for every run and every machine.

#include "VisDataTree.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace shapes {

enum class Shape {
    /// Every inner node has eight children.
    Balanced,
    /// One parent with all other nodes as leaves.
    Wide,
    /// Like an assembly: a few nodes have most of the children, at most 12 levels.
    Assembly,
    /// A chain of at most 10,000 nodes with the other nodes as leaves at its sides.
    Deep
};

constexpr Shape ALL_SHAPES[] = {Shape::Balanced, Shape::Wide, Shape::Assembly, Shape::Deep};

inline const char* NameOf(Shape shape)
{
    switch (shape) {
    case Shape::Balanced:
        return "balanced";
    case Shape::Wide:
        return "wide";
    case Shape::Assembly:
        return "assembly";
    case Shape::Deep:
        return "deep";
    }
    return "";
}

/// A small generator of pseudo-random numbers, the same on every platform (splitmix64).
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t Next()
    {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15U);
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }
    /// A number below `bound`, which is above 0.
    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(Next() % bound); }

private:
    std::uint64_t state_;
};

/// The parent of every node, in the order in which the shape comes about.
inline std::vector<std::uint32_t> GrowParents(Shape shape, std::size_t nodes)
{
    constexpr std::size_t FAN_OUT = 8;
    constexpr std::size_t LONGEST_CHAIN = 10000;
    constexpr unsigned char LEVELS = 12;

    std::vector<std::uint32_t> parents(nodes, 0);
    const std::size_t chain = std::min(LONGEST_CHAIN, std::max<std::size_t>(1, nodes / 2));
    std::vector<unsigned char> level(shape == Shape::Assembly ? nodes : 0, 0);
    Random random(nodes);
    for (std::size_t i = 1; i < nodes; ++i) {
        std::size_t parent = 0;
        switch (shape) {
        case Shape::Balanced:
            parent = (i - 1) / FAN_OUT;
            break;
        case Shape::Wide:
            break;
        case Shape::Assembly:
            // Choosing the parent of a random node half of the time makes the rich richer.
            parent = random.Below(i);
            if (random.Below(2) == 0 || level[parent] + 1 >= LEVELS)
                parent = parents[parent];
            level[i] = static_cast<unsigned char>(level[parent] + 1);
            break;
        case Shape::Deep:
            parent = i < chain ? i - 1 : (i - chain) % chain;
            break;
        }
        parents[i] = static_cast<std::uint32_t>(parent);
    }
    return parents;
}

/// Where the children of each node stand in one flat list, in child order.
struct Children {
    /// Children of node i: `list[first[i]]` up to `list[first[i + 1]]`.
    std::vector<std::uint32_t> first;
    std::vector<std::uint32_t> list;
};

inline Children MakeChildren(const std::vector<std::uint32_t>& parents)
{
    Children children;
    children.first.assign(parents.size() + 1, 0);
    for (std::size_t i = 1; i < parents.size(); ++i)
        ++children.first[parents[i] + 1];
    for (std::size_t i = 1; i < children.first.size(); ++i)
        children.first[i] += children.first[i - 1];
    children.list.resize(parents.empty() ? 0 : parents.size() - 1);
    std::vector<std::uint32_t> next(children.first.begin(), children.first.end() - 1);
    for (std::size_t i = 1; i < parents.size(); ++i)
        children.list[next[parents[i]]++] = static_cast<std::uint32_t>(i);
    return children;
}

/// The parent of every node, in pre-order; node 0 is the root (its entry is 0).
inline std::vector<std::uint32_t> MakeParents(Shape shape, std::size_t nodes)
{
    const std::vector<std::uint32_t> grown = GrowParents(shape, nodes);
    const Children children = MakeChildren(grown);
    std::vector<std::uint32_t> parents(nodes, 0);
    std::vector<std::uint32_t> numbers(nodes, 0);
    std::vector<std::uint32_t> pending;
    std::uint32_t number = 0;
    if (nodes > 0)
        pending.push_back(0);
    while (!pending.empty()) {
        const std::uint32_t node = pending.back();
        pending.pop_back();
        parents[number] = numbers[grown[node]];
        numbers[node] = number++;
        for (std::uint32_t k = children.first[node + 1]; k > children.first[node]; --k)
            pending.push_back(children.list[k - 1]);
    }
    return parents;
}

/// Labels of up to 15 characters, like those of parts.
inline std::string LabelOf(std::size_t node) { return "Part " + std::to_string(node); }

/// Builds the tree in pre-order, as an importer would. The caller owns the one reference.
inline VisDataTree* MakeTree(const std::vector<std::uint32_t>& parents)
{
    std::vector<VisDataTree*> nodes(std::max<std::size_t>(1, parents.size()));
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        nodes[i] = new VisDataTree(nullptr, KUVUnicodeString(LabelOf(i)), KUVUnicodeString());
        if (i == 0)
            continue;
        nodes[parents[i]]->InsertChild(nodes[i], /*resetCaches=*/1);
        nodes[i]->Release();
    }
    return nodes.front();
}

inline VisDataTree* MakeTree(Shape shape, std::size_t nodes)
{
    return MakeTree(MakeParents(shape, nodes));
}

}  // namespace shapes

#endif
