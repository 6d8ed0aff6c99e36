#include "support/TreeBuilders.h"

#include <algorithm>
#include <random>

namespace {

VisDataTree* MakeNode(const std::string& label)
{
    return new VisDataTree(nullptr, KUVUnicodeString(label), KUVUnicodeString());
}

/// A new last child of `parent`, which holds the one reference on it.
VisDataTree* AddNode(VisDataTree* parent, const std::string& label)
{
    VisDataTree* const node = MakeNode(label);
    parent->InsertChild(node, 1);
    node->Release();
    return node;
}

void AddChildren(VisDataTree* parent, const std::vector<support::TreeSketch>& children)
{
    for (const support::TreeSketch& child : children)
        AddChildren(AddNode(parent, child.label), child.children);
}

/// Trees may be deep: the walks below keep the nodes that they still have to visit.
struct Step {
    const VisDataTree* node;
    std::string textBefore;
};

}  // namespace

namespace support {

VisDataTree* MakeTree(const TreeSketch& sketch)
{
    VisDataTree* const root = MakeNode(sketch.label);
    AddChildren(root, sketch.children);
    return root;
}

VisDataTree* MakeRandomTree(std::uint64_t seed, int nodeCount, int reach)
{
    // The generator's numbers are fixed by the language's standard; its distributions are not.
    std::mt19937_64 random(seed);
    std::vector<VisDataTree*> nodes = {MakeNode("0")};
    while (static_cast<int>(nodes.size()) < nodeCount) {
        const std::size_t candidates =
            std::min(nodes.size(), static_cast<std::size_t>(std::max(reach, 1)));
        VisDataTree* const parent = nodes[nodes.size() - 1 - random() % candidates];
        nodes.push_back(AddNode(parent, std::to_string(nodes.size())));
    }
    return nodes.front();
}

VisDataTree* MakeChain(int levels) { return MakeRandomTree(0, levels, 1); }

VisDataTree* MakeStar(int children)
{
    VisDataTree* const root = MakeNode("0");
    for (int i = 1; i <= children; ++i)
        AddNode(root, std::to_string(i));
    return root;
}

VisDataTree* FindNode(VisDataTree* root, const std::string& label)
{
    std::vector<VisDataTree*> open;
    if (root)
        open.push_back(root);
    while (!open.empty()) {
        VisDataTree* const node = open.back();
        open.pop_back();
        if (node->GetLabel() == KUVUnicodeString(label))
            return node;
        const std::vector<VisDataTree*>& children = node->GetChildren();
        open.insert(open.end(), children.rbegin(), children.rend());
    }
    return nullptr;
}

std::string DescribeTree(const VisDataTree* root)
{
    std::string text;
    std::vector<Step> open;
    if (root)
        open.push_back({root, ""});
    while (!open.empty()) {
        const Step step = open.back();
        open.pop_back();
        text += step.textBefore;
        if (!step.node)
            continue;
        text += step.node->GetLabel().GetUtf8();
        const std::vector<VisDataTree*>& children = step.node->GetChildren();
        if (children.empty())
            continue;
        open.push_back({nullptr, ")"});
        for (std::size_t i = children.size(); i > 0; --i)
            open.push_back({children[i - 1], i > 1 ? " " : "("});
    }
    return text;
}

}  // namespace support
