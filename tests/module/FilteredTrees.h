#ifndef module_FilteredTrees_h
#define module_FilteredTrees_h

// Filtered copies of trees, and trees of any form to make them of.

#include "VisDataTreeUtility.h"
#include "private/NodePath.h"

#include "support/TestScene.h"
#include "support/TreeBuilders.h"

#include <memory>
#include <string>
#include <vector>

namespace filtered {

/// The model object by which a light representation is known.
class LightHandler : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
};

inline constexpr unsigned char CHECK_LEAVES = 1;
inline constexpr unsigned char LEAVES_CHECKED_OR_NOT[] = {0, CHECK_LEAVES};

/// Frees a tree in the way that the module offers for it.
struct ReleaseFiltered {
    void operator()(VisDataTree* root) const
    {
        VisDataTreeUtility::ReleaseFilteredTreeRoot(root, /*releaseCaches=*/0);
        root->Release();
    }
};
using FilteredTree = std::unique_ptr<VisDataTree, ReleaseFiltered>;

inline FilteredTree Filter(VisDataTree* root, const VisDataTreeFilters& filters = {},
                           unsigned char checkLeaves = 0)
{
    return FilteredTree(VisDataTreeUtility::ApplyFilters(root, filters, checkLeaves));
}

/// The labels of what is kept; "-" for nothing.
inline std::string Kept(VisDataTree* root, const VisDataTreeFilters& filters = {},
                        unsigned char checkLeaves = 0)
{
    const FilteredTree copy = Filter(root, filters, checkLeaves);
    return copy ? support::DescribeTree(copy.get()) : "-";
}

inline VisDataTreeFilters Shown(bool edges, bool faces, bool vertices)
{
    VisDataTreeFilters filters;
    filters.showEdges = edges;
    filters.showFaces = faces;
    filters.showVertices = vertices;
    return filters;
}

inline VisDataTreeFilters Sphere(float radius, float x = 0.0f, float y = 0.0f, float z = 0.0f)
{
    VisDataTreeFilters filters;
    filters.radius = radius;
    filters.centreX = x;
    filters.centreY = y;
    filters.centreZ = z;
    return filters;
}

inline VisDataTreeFilters Product(unsigned int product)
{
    VisDataTreeFilters filters;
    filters.productFilter = product;
    return filters;
}

inline KUVPickPath At(KUVPickPath path, float x, float y = 0.0f, float z = 0.0f)
{
    path.SetIntersection({x, y, z});
    return path;
}

/// A node with a path that leads nowhere in particular, for trees of any form.
inline FilteredTree Node(const std::string& label, const KUVPickPath& path = KUVPickPath())
{
    return FilteredTree(
        new VisDataTree(NodeDataOf(new KUVPickPath(path)), KUVUnicodeString(label), "icon"));
}

/// A tree of such nodes.
inline FilteredTree Tree(const support::TreeSketch& sketch)
{
    FilteredTree node = Node(sketch.label);
    for (const support::TreeSketch& child : sketch.children) {
        FilteredTree made = Tree(child);
        node->InsertChild(made.get(), 1);
        made.release()->Release();
    }
    return node;
}

inline void Merge(const FilteredTree& tree, const std::vector<std::string>& labels)
{
    for (const std::string& label : labels)
        support::FindNode(tree.get(), label)->SetIsMerged(1);
}

/// A filter bag that shows a light representation.
inline KUV3DFilterBagRep* AddLightBag(support::TestScene& scene, KUV3DBagRep* parent)
{
    KUV3DFilterBagRep* const bag = scene.Add(parent, KUV3DFilterBagRep::CreateRep());
    const support::Held<LightHandler> handler(new LightHandler);
    const support::Held<KUVModelIdentificator> identificator(
        new KUVModelIdentificator(handler.get()));
    bag->SetModelIdentificator(identificator.get());
    return bag;
}

}  // namespace filtered

#endif
