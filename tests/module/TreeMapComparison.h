#ifndef module_TreeMapComparison_h
#define module_TreeMapComparison_h

#include "VisTreeMapLayout.h"

#include "module/LayoutComparison.h"
#include "module/reference/TreeMapReference.h"

#include <cstdint>
#include <iterator>
#include <string>

namespace scripts {

/// The tree map beside its reference.
class TreeMapComparison : public LayoutComparison {
public:
    explicit TreeMapComparison(std::uint64_t seed) : LayoutComparison(seed)
    {
        layout_ = VisTreeMapLayout::CreateLayout(nullptr, Root(), Bag());
        Start(layout_, map_);
    }
    ~TreeMapComparison() override { Stop(); }

protected:
    bool AllowsQuietMoves() const override { return true; }

    std::string OwnStep() override
    {
        using Cache = VisTreeMapLayout::VisTreeMapLayoutCache;
        const Pair& pair = AnyPair();
        auto* const cache = static_cast<Cache*>(pair.node->GetCache());
        if (!cache)
            return "nothing to ask";
        layoutReference::Cache& twin = *pair.twin->cache;
        const unsigned int modes[] = {0, 1, 0, 1, 5};
        const unsigned int mode = modes[Below(std::size(modes))];
        const auto asked = static_cast<VisTreeMap_SliceDice>(mode);
        const KUVMathPoint2Df size = Size();
        const std::string name = Name(pair.node.Get()) + " mode " + std::to_string(mode);
        switch (Below(4)) {
        case 0:
            Compare("minimum", cache->ComputeMinimumExpandedSize(asked),
                    layoutReference::TreeMap::ComputeMinimumExpandedSize(twin, mode));
            return "minimum of " + name;
        case 1:
            cache->SetLastModeOfComputedMinimumExpandedSize(asked);
            layoutReference::TreeMap::SetLastMode(twin, mode);
            return "set " + name;
        case 2: {
            float sum = -7.0f;
            float twinSum = -7.0f;
            const bool can = cache->CanSliceAndDiceExpandNode(asked, size, &sum) != 0;
            const bool twinCan = layoutReference::TreeMap::CanSliceAndDiceExpandNode(
                twin, mode, PointOf(size), &twinSum);
            Compare("can open", KUVMathPoint2Df(can ? 1.0f : 0.0f, sum),
                    {twinCan ? 1.0f : 0.0f, twinSum});
            return "can open " + name + " at " + Text(size);
        }
        default: {
            const KUVMathPoint2Df origin = Origin();
            const float scale = 0.0625f;
            if (Chance(2)) {
                layout_->LayoutChildrenInGrid(origin, size, Font(), scale);
                map_.LayoutChildrenInGrid(PointOf(origin), PointOf(size), scale);
                return "grid at " + Text(origin) + " size " + Text(size);
            }
            layout_->SliceAndDice(asked, origin, size, Font(), scale);
            map_.SliceAndDice(mode, PointOf(origin), PointOf(size), scale);
            return "slice in mode " + std::to_string(mode) + " at " + Text(origin) + " size " +
                   Text(size);
        }
        }
    }

    std::string OwnDifference(VisTreeSpaceFillingLayoutCache& cache,
                              const layoutReference::Cache& twin) override
    {
        const auto& own = static_cast<const VisTreeMapLayout::VisTreeMapLayoutCache&>(cache);
        return own.GetLastModeOfComputedMinimumExpandedSize() == twin.lastMode ? "" : "mode";
    }

private:
    layoutReference::TreeMap map_;
    VisTreeMapLayout* layout_ = nullptr;
};

}  // namespace scripts

#endif
