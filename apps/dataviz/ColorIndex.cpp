// Colour values of a model's nodes, as indices into the eight colours of the cushion tree map.

#include <unordered_map>

#include "InputTree.h"

#include "KUV3D.h"
#include "VisCushionLayout.h"
#include "VisDataTree.h"
#include "VisPathUtility.h"
#include "core/ProductObjects.h"

namespace dataviz {

namespace {

KUVPickPath* PathOf(const VisDataTree& node) { return static_cast<KUVPickPath*>(node.GetData()); }

/// The product definition whose occurrence the node is; null for shapes and their primitives.
const core::ProductReference* ProductOf(const VisDataTree& node)
{
    const KUVPickPath* const path = PathOf(node);
    const KUVRep* const rep = path != nullptr ? path->GetCurrentRep() : nullptr;
    KUVModelIdentificator* const identificator =
        rep != nullptr ? rep->GetModelIdentificator() : nullptr;
    const auto* const occurrence =
        identificator != nullptr
            ? dynamic_cast<const core::ProductOccurrence*>(identificator->GetId())
            : nullptr;
    return occurrence != nullptr ? &occurrence->Reference() : nullptr;
}

/// Numbers the product definitions in the order in which the tree comes upon them.
class ProductNumbers {
public:
    /// Of the node's own product, or of the nearest one above. A parent is asked before its
    /// children.
    long long Of(const VisDataTree& node)
    {
        std::size_t number = 0;
        if (const core::ProductReference* const product = ProductOf(node))
            number = numbers_.emplace(product, numbers_.size()).first->second;
        else if (const auto above = byNode_.find(node.GetParent()); above != byNode_.end())
            number = above->second;
        if (!node.GetChildren().empty())
            byNode_.emplace(&node, number);
        return static_cast<long long>(number % VisCushionLayout::MAX_COLOR_MAP);
    }

private:
    std::unordered_map<const core::ProductReference*, std::size_t> numbers_;
    std::unordered_map<const VisDataTree*, std::size_t> byNode_;  // of inner nodes
};

/// Eight classes, each of twice the share of the one before: 7 from a half of the whole on, 6 from
/// a quarter, ..., 0 below 1/128.
long long ShareClass(long long value, long long total)
{
    long long index = static_cast<long long>(VisCushionLayout::MAX_COLOR_MAP) - 1;
    // Half by half, so that nothing overflows.
    for (long long least = total - total / 2; index > 0 && value < least; --index)
        least -= least / 2;
    return value > 0 ? index : 0;
}

}  // namespace

void InputTree::SetColorIndices(const std::string& by)
{
    ProductNumbers products;
    const long long total = root_->GetCache()->GetSizeValue();
    for (VisDataTree* const node : nodes_) {
        VisDataTree::VisDataTreeCache& cache = *node->GetCache();
        if (by == "product")
            cache.SetColorValue(products.Of(*node));
        else if (by == "kind")
            cache.SetColorValue(VisPathUtility::GetPickPathType(PathOf(*node)));
        else
            cache.SetColorValue(ShareClass(cache.GetSizeValue(), total));
    }
}

}  // namespace dataviz
