#include "ShownView.h"

#include "KUV2D.h"
#include "VisTreeSpaceFillingView.h"

namespace dataviz {

namespace {

/// The plates of hover and selection stand one unit inside the node and differ in their fill.
std::string_view PartOfImage(const KUV2DImagePixelRep& image, const KUVMathPoint2Df& corner,
                             bool mayBeBackground)
{
    constexpr int ICON_MODE = 2;
    if (image.GetMode() == ICON_MODE)
        return "icon";
    if (mayBeBackground && image.GetLowerLeft().x == corner.x && image.GetLowerLeft().y == corner.y)
        return "background";
    int width = 0;
    int height = 0;
    image.GetImage()->GetSize(width, height);
    const unsigned char* const row = image.GetImage()->GetRow(height / 2);
    constexpr unsigned char HOVER_RED = 0xF1;
    return row != nullptr && row[4 * (width / 2)] == HOVER_RED ? "hover" : "selected";
}

}  // namespace

ShownView ReadView(const VisTreeSpaceFillingView& view)
{
    ShownView shown;
    const KUV2DBagRep* const bag = view.GetBagRep();
    const list<KUVRep>* const reps = bag != nullptr ? bag->GetChildren() : nullptr;
    for (int i = 0; reps != nullptr && (*reps)[i] != nullptr; ++i) {
        const KUVRep* const rep = (*reps)[i];
        if (const auto* const polygon = dynamic_cast<const KUV2DPolygonRep*>(rep)) {
            shown.parts.push_back(polygon->IsFilled() != 0 ? "background" : "contour");
            if (polygon->IsFilled() != 0)
                shown.polygon = polygon;
        } else if (const auto* const image = dynamic_cast<const KUV2DImagePixelRep*>(rep)) {
            // Far from the origin one unit is lost in a float: a plate then stands where the
            // background does, which comes first and was seen already.
            const bool mayBeBackground = shown.polygon == nullptr && shown.texture == nullptr;
            shown.parts.push_back(PartOfImage(*image, view.GetBuiltPosition(), mayBeBackground));
            if (shown.parts.back() == "background")
                shown.texture = image;
        } else if (const auto* const text = dynamic_cast<const KUV2DAnnotationTextRep*>(rep)) {
            shown.parts.emplace_back("label");
            shown.label = text;
        }
    }
    return shown;
}

std::string HexColor(const KUVColor& color)
{
    constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string text = "#";
    for (const unsigned char part : {color.r, color.g, color.b}) {
        text += DIGITS[part >> 4U];
        text += DIGITS[part & 15U];
    }
    return text;
}

}  // namespace dataviz
