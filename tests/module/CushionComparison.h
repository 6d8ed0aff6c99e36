#ifndef module_CushionComparison_h
#define module_CushionComparison_h

#include "VisCushionLayout.h"

#include "module/LayoutComparison.h"
#include "module/reference/CushionReference.h"

#include <cstdint>
#include <iterator>
#include <string>

namespace scripts {

/// The cushion beside its reference.
class CushionComparison : public LayoutComparison {
public:
    explicit CushionComparison(std::uint64_t seed) : LayoutComparison(seed)
    {
        layout_ = VisCushionLayout::CreateLayout(nullptr, Root(), Bag());
        Start(layout_, cushion_);
        // Half of the trees by value from the start: the areas are the same otherwise.
        if (Chance(2))
            return;
        for (const Pair& pair : Pairs()) {
            const auto value = static_cast<long long>(Below(300));
            pair.node->GetCache()->SetSizeValue(value);
            pair.twin->cache->SetSizeValue(value);
            pair.node->GetCache()->SetColorValue(value % 11);
            pair.twin->cache->colorValue = value % 11;
        }
        Root()->GetCache()->SetResizeWithValue(1);
        RootTwin()->cache->SetResizeWithValue(1);
        Root()->GetCache()->SetColorWithValue(1);
        RootTwin()->cache->SetColorWithValue(1);
    }
    ~CushionComparison() override { Stop(); }

protected:
    using ModuleCache = VisCushionLayout::VisCushionLayoutCache;

    bool AllowsQuietMoves() const override { return true; }

    std::string OwnStep() override
    {
        const unsigned int modes[] = {0, 1, 0, 1, 0, 1, 5, 2};
        const unsigned int mode = modes[Below(std::size(modes))];
        const auto asked = static_cast<VisTreeMap_SliceDice>(mode);
        if (Chance(3)) {
            const KUVMathPoint2Df origin = Origin();
            const KUVMathPoint2Df size = Size();
            const float scale = Scale();
            layout_->CushionTreemap(asked, origin, size, scale);
            cushion_.CushionTreemap(mode, PointOf(origin), PointOf(size), scale);
            return "cushion in mode " + std::to_string(mode) + " at " + Text(origin) + " size " +
                   Text(size) + " scale " + std::to_string(scale);
        }
        if (Chance(3)) {
            const bool zooms = Chance(2);
            layout_->SetEnableZoom(zooms ? 1 : 0);
            cushion_.canZoom = zooms;
            return zooms ? "zoom on" : "zoom off";
        }
        const Pair& pair = AnyPair();
        auto* const cache = static_cast<ModuleCache*>(pair.node->GetCache());
        if (!cache)
            return "no mode";
        cache->SetLastModeOfComputedMinimumExpandedSize(asked);
        layoutReference::Cushion::SetLastMode(*pair.twin->cache, mode);
        return "mode " + std::to_string(mode) + " of " + Name(pair.node.Get());
    }

    std::string OwnDifference(VisTreeSpaceFillingLayoutCache& cache,
                              const layoutReference::Cache& twin) override
    {
        const auto& own = static_cast<const ModuleCache&>(cache);
        for (int i = 0; i < 4; ++i) {
            if (!Same(own.GetSurface()[i], twin.surface[i]))
                return "surface " + std::to_string(i) + " is " +
                       Text(own.GetSurface()[i], twin.surface[i]) + " (module, reference)";
        }
        if (!Same(own.GetHeight(), twin.height) || !Same(own.GetScaleFactor(), twin.scaleFactor))
            return "height " + Text(own.GetHeight(), own.GetScaleFactor()) + " instead of " +
                   Text(twin.height, twin.scaleFactor);
        if (own.GetSubtreeValue() != twin.subtreeValue)
            return "value " + std::to_string(own.GetSubtreeValue()) + " instead of " +
                   std::to_string(twin.subtreeValue);
        if ((own.IsCushionComputed() != 0) != twin.isCushionComputed)
            return twin.isCushionComputed ? "not computed" : "computed";
        return own.GetLastModeOfComputedMinimumExpandedSize() == twin.lastMode ? "" : "mode";
    }

private:
    layoutReference::Cushion cushion_;
    VisCushionLayout* layout_ = nullptr;
};

}  // namespace scripts

#endif
