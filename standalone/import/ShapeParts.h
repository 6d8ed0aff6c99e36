/// Small conversions between the toolkit's shapes and the plain record.
#ifndef IMPORT_SHAPE_PARTS_H
#define IMPORT_SHAPE_PARTS_H

#include "import/ImportedModel.h"

#include <Quantity_ColorRGBA.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS_Shape.hxx>

namespace kuvimport {

/// Appends a geometry for `shape`, which may be null, and answers its index.
std::uint32_t AddNativeShape(const TopoDS_Shape& shape, ImportedModel& model);

/// The shape behind a geometry, or null.
const TopoDS_Shape* NativeShape(const PartGeometry& geometry);

Placement PlacementOf(const TopLoc_Location& location);

Colour ToColour(const Quantity_ColorRGBA& colour);

/// What a shape without any name is called: "Solid", "Shell", "Compound" and so on.
const char* NameOfShapeKind(const TopoDS_Shape& shape);

}  // namespace kuvimport

#endif
