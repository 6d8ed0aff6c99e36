#ifndef module_CushionFixture_h
#define module_CushionFixture_h

#include "TreeBuilding.h"
#include "VisCushionLayout.h"
#include "VisTreeSpaceFillingView.h"

#include "module/ViewReading.h"

#include "private/Reference.h"

#include "support/TreeBuilders.h"

#include "KUV2D.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace cushions {

using Cache = VisCushionLayout::VisCushionLayoutCache;
using BagRef = VisReference<KUV2DBagRep>;
using LayoutRef = VisReference<VisCushionLayout>;

constexpr VisTreeMap_SliceDice SIDE_BY_SIDE = VisTreeMap_SideBySide;
constexpr VisTreeMap_SliceDice STACKED = VisTreeMap_Stacked;

constexpr unsigned int WHITE = 0xFFFFFFFFU;
/// White under the light that falls on a flat surface.
constexpr unsigned int FLAT_WHITE = 0xF9F9F9FFU;

/// The image in the background of a view, or null.
inline const KUVPixelImage* ImageOf(const VisTreeSpaceFillingView* view)
{
    const auto* const rep =
        view ? viewreading::Find<KUV2DImagePixelRep>(view->GetBagRep(), "texture") : nullptr;
    return rep ? rep->GetImage() : nullptr;
}

/// A number for all bytes of an image, in order (FNV-1a).
inline std::uint64_t ChecksumOf(const KUVPixelImage& image)
{
    int width = 0;
    int height = 0;
    image.GetSize(width, height);
    std::uint64_t sum = 0xCBF29CE484222325U;
    for (int y = 0; y < height; ++y) {
        const unsigned char* const row = image.GetRow(y);
        for (int i = 0; i < 4 * width; ++i)
            sum = (sum ^ row[i]) * 0x100000001B3U;
    }
    return sum;
}

/// A tree, its cushion tree map and what it draws into.
struct Cushion {
    explicit Cushion(const support::TreeSketch& tree)
        : Cushion(trees::NodeRef::Adopt(support::MakeTree(tree)))
    {
    }
    explicit Cushion(trees::NodeRef tree)
        : root(std::move(tree)), bag(BagRef::Adopt(KUV2DBagRep::CreateRep())),
          layout(LayoutRef::Adopt(VisCushionLayout::CreateLayout(nullptr, root.Get(), bag.Get())))
    {
    }

    VisDataTree* Node(const char* label) const { return support::FindNode(root.Get(), label); }
    Cache* Of(const char* label) const { return static_cast<Cache*>(Node(label)->GetCache()); }
    Cache* Root() const { return static_cast<Cache*>(root->GetCache()); }
    bool Shows(const char* label) const { return Of(label)->GetView() != nullptr; }
    std::string Roles(const char* label) const
    {
        return viewreading::Roles(Of(label)->GetView()->GetBagRep());
    }
    void Draw(float width, float height, float scale = 1.0f) const
    {
        layout->Draw({0.0f, 0.0f}, {width, height}, nullptr, scale);
    }
    /// Sizes all leaves by value; `value` is called with each.
    template <class ValueOf>
    void Weigh(const ValueOf& value) const
    {
        Root()->SetResizeWithValue(1);
        VisDataTree* leaf = root->GetFirstLeaf();
        do {
            leaf->GetCache()->SetSizeValue(value(leaf));
            leaf = leaf->NextLeafNodeInHierarchy(root.Get());
        } while (leaf != root->GetFirstLeaf());
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

    /// The picture of the current root, or null.
    const KUVPixelImage* Image() const
    {
        const VisDataTree* const shown = layout->GetCurrentRoot();
        return ImageOf(static_cast<const Cache*>(shown->GetCache())->GetView());
    }
    /// 0xRRGGBBAA; `y` counts from the bottom.
    unsigned int Pixel(int x, int y) const { return viewreading::PixelOf(*Image(), x, y); }

    trees::NodeRef root;
    BagRef bag;
    LayoutRef layout;
};

}  // namespace cushions

#endif
