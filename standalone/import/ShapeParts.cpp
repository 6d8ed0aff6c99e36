#include "import/ShapeParts.h"

#include <gp_Trsf.hxx>

#include <algorithm>
#include <cmath>
#include <memory>

namespace kuvimport {

std::uint32_t AddNativeShape(const TopoDS_Shape& shape, ImportedModel& model)
{
    PartGeometry geometry;
    if (!shape.IsNull())
        geometry.native = std::make_shared<const TopoDS_Shape>(shape);
    model.geometries.push_back(std::move(geometry));
    return static_cast<std::uint32_t>(model.geometries.size() - 1);
}

const TopoDS_Shape* NativeShape(const PartGeometry& geometry)
{
    return static_cast<const TopoDS_Shape*>(geometry.native.get());
}

Placement PlacementOf(const TopLoc_Location& location)
{
    Placement placement;
    if (location.IsIdentity())
        return placement;
    const gp_Trsf& map = location.Transformation();
    for (int row = 1; row <= 3; ++row) {
        for (int column = 1; column <= 4; ++column)
            placement.rows[static_cast<std::size_t>((row - 1) * 4 + column - 1)] =
                map.Value(row, column);
    }
    return placement;
}

Colour ToColour(const Quantity_ColorRGBA& colour)
{
    const auto byte = [](double share) {
        return static_cast<Colour>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
    };
    double red = 0;
    double green = 0;
    double blue = 0;
    colour.GetRGB().Values(red, green, blue, Quantity_TOC_sRGB);
    return byte(red) << 24 | byte(green) << 16 | byte(blue) << 8 |
           byte(static_cast<double>(colour.Alpha()));
}

const char* NameOfShapeKind(const TopoDS_Shape& shape)
{
    if (shape.IsNull())
        return "Shape";
    switch (shape.ShapeType()) {
    case TopAbs_COMPSOLID:
    case TopAbs_SOLID:
        return "Solid";
    case TopAbs_SHELL:
        return "Shell";
    case TopAbs_FACE:
        return "Face";
    case TopAbs_WIRE:
    case TopAbs_EDGE:
        return "Curve";
    case TopAbs_VERTEX:
        return "Point";
    default:
        return "Shape";
    }
}

}  // namespace kuvimport
