/// Triangles for every geometry, each once, over the machine's cores; then the counts of its
/// sub-elements.
#ifndef IMPORT_TESSELLATOR_H
#define IMPORT_TESSELLATOR_H

#include "import/ModelImport.h"

namespace kuvimport {

/// Tessellates the faces that have a surface and no triangles yet, then fills `trianglesPerFace`,
/// `edges`, `vertices`, `extent` and `broughtTriangles` of every geometry with a native shape, and
/// sets `model.tessellation` when anything was tessellated.
///
/// The chord deflection of a part is `options.linearDeflection` times the largest side of its box
/// (at most that side, at least a millionth of it and what the mesher can tell apart),
/// so the result of a part depends neither on the other parts nor on the number of threads. A part
/// that fails leaves a warning and no triangles for the faces concerned. Answers false when
/// cancelled.
bool TessellateParts(ImportedModel& model, const ImportOptions& options, ImportMonitor* monitor);

}  // namespace kuvimport

#endif
