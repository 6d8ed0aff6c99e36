#ifndef module_TreeMapFixture_h
#define module_TreeMapFixture_h

#include "TreeBuilding.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingView.h"

#include "module/ViewReading.h"

#include "private/Reference.h"

#include "support/FixedWidthFont.h"
#include "support/TreeBuilders.h"

#include "KUV2D.h"

#include <cstdio>
#include <string>

namespace treemaps {

using Cache = VisTreeMapLayout::VisTreeMapLayoutCache;
using BagRef = VisReference<KUV2DBagRep>;
using FontRef = VisReference<KUVCharacterFont>;
using MapRef = VisReference<VisTreeMapLayout>;

constexpr VisTreeMap_SliceDice SIDE_BY_SIDE = VisTreeMap_SideBySide;
constexpr VisTreeMap_SliceDice STACKED = VisTreeMap_Stacked;

/// A tree, its tree map and what it draws into.
struct Map {
    explicit Map(const support::TreeSketch& tree)
        : root(trees::NodeRef::Adopt(support::MakeTree(tree))),
          bag(BagRef::Adopt(KUV2DBagRep::CreateRep())),
          font(FontRef::Adopt(support::MakeFixedWidthFont())),
          layout(MapRef::Adopt(VisTreeMapLayout::CreateLayout(nullptr, root.Get(), bag.Get())))
    {
    }

    VisDataTree* Node(const char* label) const { return support::FindNode(root.Get(), label); }
    Cache* Of(const char* label) const { return static_cast<Cache*>(Node(label)->GetCache()); }
    Cache* Root() const { return static_cast<Cache*>(root->GetCache()); }
    /// What the node's view shows, bottom to top.
    std::string Roles(const char* label) const
    {
        return viewreading::Roles(Of(label)->GetView()->GetBagRep());
    }
    bool Shows(const char* label) const { return Of(label)->GetView() != nullptr; }
    void Draw(float width, float height, float scale = 1.0f) const
    {
        layout->Draw({0.0f, 0.0f}, {width, height}, font.Get(), scale);
    }
    /// "x,y wxh" of a node.
    std::string Rectangle(const char* label) const
    {
        char text[64];
        const Cache& cache = *Of(label);
        std::snprintf(text, sizeof text, "%.4g,%.4g %.4gx%.4g",
                      static_cast<double>(cache.GetPos().x), static_cast<double>(cache.GetPos().y),
                      static_cast<double>(cache.GetSize().x),
                      static_cast<double>(cache.GetSize().y));
        return text;
    }

    trees::NodeRef root;
    BagRef bag;
    FontRef font;
    MapRef layout;
};

inline const support::TreeSketch THREE_LEAVES = {"R", {{"0"}, {"1"}, {"2"}}};

}  // namespace treemaps

#endif
