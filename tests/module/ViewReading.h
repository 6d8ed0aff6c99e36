#ifndef module_ViewReading_h
#define module_ViewReading_h

// What stands in the bag of a view, read back for comparisons.

#include "core/RepKind.h"

#include "KUV2D.h"

#include <array>
#include <string>
#include <vector>

namespace viewreading {

inline std::vector<const KUVRep*> ChildrenOf(const KUV2DBagRep* bag)
{
    std::vector<const KUVRep*> children;
    const list<KUVRep>* const entries = bag ? bag->GetChildren() : nullptr;
    for (int i = 0; entries && i < entries->Count(); ++i)
        children.push_back((*entries)[i]);
    return children;
}

/// Red, green, blue, alpha of a pixel, as 0xRRGGBBAA.
inline unsigned int PixelOf(const KUVPixelImage& image, int x, int y)
{
    const unsigned char* const pixel = image.GetRow(y) + 4 * static_cast<std::size_t>(x);
    return static_cast<unsigned int>(pixel[0]) << 24U | static_cast<unsigned int>(pixel[1]) << 16U |
           static_cast<unsigned int>(pixel[2]) << 8U | static_cast<unsigned int>(pixel[3]);
}

/// What a child of a view's bag is: "fill", "contour", "texture", "hover", "selected", "icon" or
/// "label".
inline std::string RoleOf(const KUVRep& rep)
{
    switch (core::KindOf(rep)) {
    case core::RepKind::Polygon:
        return static_cast<const KUV2DPolygonRep&>(rep).IsFilled() ? "fill" : "contour";
    case core::RepKind::Text:
        return "label";
    case core::RepKind::Image: {
        const auto& image = static_cast<const KUV2DImagePixelRep&>(rep);
        if (image.GetMode() == 2)
            return "icon";
        int width = 0;
        int height = 0;
        image.GetImage()->GetSize(width, height);
        // The colours of the plates' fill are used for nothing else in these tests.
        const unsigned int centre = PixelOf(*image.GetImage(), width / 2, height / 2);
        if (centre == 0xF1F1F1FFU)
            return "hover";
        return centre == 0xD5E8F2FFU ? "selected" : "texture";
    }
    default:
        return "other";
    }
}

/// The roles of the children in order, separated by blanks: the last one is on top.
inline std::string Roles(const KUV2DBagRep* bag)
{
    std::string roles;
    for (const KUVRep* const child : ChildrenOf(bag))
        roles += (roles.empty() ? "" : " ") + RoleOf(*child);
    return roles;
}

/// The first child with that role, or null.
template <class Rep>
const Rep* Find(const KUV2DBagRep* bag, const std::string& role)
{
    for (const KUVRep* const child : ChildrenOf(bag)) {
        if (RoleOf(*child) == role)
            return static_cast<const Rep*>(child);
    }
    return nullptr;
}

using Bytes = std::array<int, 4>;

template <class Rep>
Bytes ColourOf(const Rep& rep)
{
    const KUVColor colour = rep.GetColor();
    return {colour.r, colour.g, colour.b, colour.a};
}

}  // namespace viewreading

#endif
