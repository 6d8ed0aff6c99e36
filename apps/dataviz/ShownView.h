#pragma once

#include <string>
#include <string_view>
#include <vector>

class KUV2DAnnotationTextRep;
class KUV2DImagePixelRep;
class KUV2DPolygonRep;
class VisTreeSpaceFillingView;
struct KUVColor;

namespace dataviz {

/// What a view shows, read off the reps in its bag, which stay the view's.
struct ShownView {
    /// In painting order: "background", "contour", "hover", "selected", "icon", "label".
    std::vector<std::string_view> parts;
    const KUV2DAnnotationTextRep* label = nullptr;
    /// The background is one of these or missing.
    const KUV2DPolygonRep* polygon = nullptr;
    const KUV2DImagePixelRep* texture = nullptr;
};

ShownView ReadView(const VisTreeSpaceFillingView& view);

/// "#rrggbb"
std::string HexColor(const KUVColor& color);

}  // namespace dataviz
