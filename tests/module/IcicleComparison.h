#ifndef module_IcicleComparison_h
#define module_IcicleComparison_h

#include "VisIcicleLayout.h"

#include "module/LayoutComparison.h"
#include "module/reference/IcicleReference.h"

#include <cstdint>
#include <string>

namespace scripts {

/// The icicle plot beside its reference.
class IcicleComparison : public LayoutComparison {
public:
    explicit IcicleComparison(std::uint64_t seed) : LayoutComparison(seed)
    {
        layout_ = VisIcicleLayout::CreateLayout(nullptr, Root(), Bag());
        Start(layout_, icicle_);
        layout_->GetCallbackManager()->Subscribe(
            VisIcicleLayout::ON_SET_NLAST_NODES(), layout_,
            [this](const char*, KUVNotification* notification, KUVBaseUnknown*) {
                const auto* const payload =
                    dynamic_cast<VisIcicleLayoutON_SET_NLAST_NODESEvt*>(notification);
                Hear(payload ? "last " + std::to_string(payload->GetOldValue()) + " > " +
                                   std::to_string(payload->GetNewValue()) + " key " +
                                   (payload->GetKeyCode() == 0x700000   ? "700000"
                                    : payload->GetKeyCode() == 0x400000 ? "400000"
                                                                        : "of another code")
                             : "last without payload");
            });
        const std::size_t hidden = Chance(3) ? 3 : 1000;
        for (const Pair& pair : Pairs()) {
            const bool shows = !Chance(hidden);
            pair.node->GetCache()->SetShowLabel(shows ? 1 : 0);
            pair.twin->cache->showsLabel = shows;
        }
        if (!Chance(6)) {
            layout_->AlignIciclePlotLeaves(nullptr);
            icicle_.AlignIciclePlotLeaves(nullptr);
        }
    }
    ~IcicleComparison() override { Stop(); }

protected:
    using ModuleCache = VisIcicleLayout::VisIcicleLayoutCache;

    /// What a plot does about a node without cache in its middle is nobody's promise.
    bool AllowsLostCaches() const override { return false; }

    std::string OwnStep() override
    {
        switch (Below(10)) {
        case 0:
        case 1:
        case 2:
        case 3:
            return Plot();
        case 4:
        case 5:
            return Ask();
        case 6: {
            const Pair& pair = AnyPair();
            const bool isNone = !Chance(3);
            const int columns = layout_->AlignIciclePlotLeaves(isNone ? nullptr : pair.node.Get());
            const int twinColumns =
                icicle_.AlignIciclePlotLeaves(isNone ? nullptr : pair.twin.get());
            Compare("columns", std::to_string(columns), std::to_string(twinColumns));
            return "align " + (isNone ? "none" : Name(pair.node.Get()));
        }
        case 7:
            if (Chance(3)) {
                layout_->ResetIciclePlotAlignment();
                icicle_.ResetIciclePlotAlignment();
                return "reset the alignment";
            }
            [[fallthrough]];
        case 8: {
            const unsigned int last = LastNodes();
            layout_->SetNLastNodes(last);
            icicle_.SetNLastNodes(last);
            return "last nodes " + std::to_string(last);
        }
        default: {
            const bool extends = !Chance(3);
            layout_->SetExtendWithKeys(extends ? 1 : 0);
            icicle_.extendsWithKeys = extends;
            return extends ? "extend" : "do not extend";
        }
        }
    }

    std::string OwnDifference(VisTreeSpaceFillingLayoutCache& cache,
                              const layoutReference::Cache& twin) override
    {
        const auto& own = static_cast<const ModuleCache&>(cache);
        if (own.GetIcicleColSpan() != twin.span)
            return "span " + std::to_string(own.GetIcicleColSpan()) + " instead of " +
                   std::to_string(twin.span);
        if (own.GetIcicleCursor() != twin.cursor)
            return "cursor " + std::to_string(own.GetIcicleCursor()) + " instead of " +
                   std::to_string(twin.cursor);
        if (!Same(own.GetIcicleSize(), twin.icicleSize))
            return "icicle size " + Text(own.GetIcicleSize()) + " instead of " +
                   Text(twin.icicleSize.x, twin.icicleSize.y);
        if (!Same(own.GetGraphicalSize(), twin.graphicalSize))
            return "graphical size " + Text(own.GetGraphicalSize()) + " instead of " +
                   Text(twin.graphicalSize.x, twin.graphicalSize.y);
        if (own.GetIcicleNLastNodes() != twin.lastNodes)
            return "last nodes " + std::to_string(own.GetIcicleNLastNodes()) + " instead of " +
                   std::to_string(twin.lastNodes);
        if (own.GetMinIciclePlotSizeMajor() != layoutReference::Icicle::ColumnWidth(twin))
            return "column width";
        return {};
    }

    std::string OwnStateDifference() override
    {
        return layout_->GetNLastNodes() == icicle_.lastNodes
                   ? ""
                   : "last nodes " + std::to_string(layout_->GetNLastNodes()) + " instead of " +
                         std::to_string(icicle_.lastNodes);
    }

private:
    /// Mostly a few columns or all of them.
    unsigned int LastNodes()
    {
        if (Chance(3))
            return layoutReference::NOT_COMPUTED;
        if (Chance(20))
            return Chance(2) ? 0x7FFFFFFFU : 0x80000001U;
        return static_cast<unsigned int>(Below(Chance(4) ? 12 : 4));
    }

    std::string Plot()
    {
        const KUVMathPoint2Df origin = Origin();
        const KUVMathPoint2Df size = Size();
        const float scale = Scale();
        layoutReference::Icicle::Range range;
        range.lastNodes = Chance(2) ? layout_->GetNLastNodes() : LastNodes();
        range.isRelative = Chance(2);
        range.hasInlineLabels = Chance(4);
        const unsigned int columns =
            layout_->IciclePlot(origin, size, Font(), range.lastNodes, scale,
                                range.isRelative ? 1 : 0, range.hasInlineLabels ? 1 : 0);
        Compare("columns", std::to_string(columns),
                std::to_string(icicle_.IciclePlot(PointOf(origin), PointOf(size), range, scale)));
        return "plot " + std::to_string(range.lastNodes) + (range.isRelative ? " relative" : "") +
               (range.hasInlineLabels ? " inline" : "") + " at " + Text(origin) + " size " +
               Text(size) + " scale " + std::to_string(scale);
    }

    /// Asks one node out of turn.
    std::string Ask()
    {
        const Pair& pair = AnyPair();
        auto* const cache = static_cast<ModuleCache*>(pair.node->GetCache());
        if (!cache)
            return "nothing to ask";
        const ModuleCache& constCache = *cache;
        layoutReference::Cache& twin = *pair.twin->cache;
        layoutReference::Icicle::Range range;
        range.lastNodes = LastNodes();
        range.isRelative = Chance(2);
        range.hasInlineLabels = Chance(4);
        const bool stores = Chance(2);
        const std::string name = Name(pair.node.Get()) + " " + std::to_string(range.lastNodes) +
                                 (stores ? "" : ", storing nothing");
        switch (Below(4)) {
        case 0:
            Compare("cursor",
                    std::to_string(stores ? cache->ComputeIcicleCursor()
                                          : constCache.ComputeIcicleCursor()),
                    std::to_string(layoutReference::Icicle::ComputeIcicleCursor(twin, stores)));
            return "cursor of " + name;
        case 1:
            Compare(
                "visible",
                std::to_string(stores ? cache->IsIcicleNodeVisibleFromLeaves(range.lastNodes)
                                      : constCache.IsIcicleNodeVisibleFromLeaves(range.lastNodes)),
                layoutReference::Icicle::IsVisibleFromLeaves(twin, range.lastNodes, stores) ? "1"
                                                                                            : "0");
            return "visible " + name;
        case 2: {
            const int depth = static_cast<int>(Below(5));
            Compare("minimum depth",
                    std::to_string(cache->ComputeMinDepthWithVisibility(
                        depth, static_cast<int>(range.lastNodes))),
                    std::to_string(layoutReference::Icicle::ComputeMinDepthWithVisibility(
                        twin, depth, range.lastNodes)));
            return "minimum depth of " + name + " from " + std::to_string(depth);
        }
        default: {
            const auto depth = static_cast<unsigned int>(Below(5));
            const unsigned int minDepth =
                Chance(2) ? layoutReference::NOT_COMPUTED : static_cast<unsigned int>(Below(5));
            const unsigned int maxDepth =
                Chance(2) ? layoutReference::NOT_COMPUTED : static_cast<unsigned int>(Below(9));
            const unsigned char relative = range.isRelative ? 1 : 0;
            const unsigned char isInline = range.hasInlineLabels ? 1 : 0;
            const KUVMathPoint2Df size =
                stores ? cache->ComputeIcicleSize(range.lastNodes, relative, isInline, depth,
                                                  minDepth, maxDepth)
                       : constCache.ComputeIcicleSize(range.lastNodes, relative, isInline, depth,
                                                      minDepth, maxDepth);
            Compare("icicle size", size,
                    layoutReference::Icicle::ComputeIcicleSize(twin, range, depth, minDepth,
                                                               maxDepth, stores));
            return "size of " + name + (range.isRelative ? " relative" : "") +
                   (range.hasInlineLabels ? " inline" : "") + " depths " + std::to_string(depth) +
                   " " + std::to_string(minDepth) + " " + std::to_string(maxDepth);
        }
        }
    }

    layoutReference::Icicle icicle_;
    VisIcicleLayout* layout_ = nullptr;
};

}  // namespace scripts

#endif
