/// From the plain record to the scene: every occurrence a rep, every shape a leaf, geometry shared.
#ifndef IMPORT_SCENE_BUILDER_H
#define IMPORT_SCENE_BUILDER_H

#include "import/ImportedModel.h"

#include "core/SceneReps.h"

namespace kuvimport {

/// Expands the structure into occurrence reps below one root occurrence, and answers the root with
/// one reference for the caller; null for a model that is empty, cyclic, or larger than memory.
///
///     SceneOccurrenceRep (ProductOccurrence, root: class "OXMRootOccurrence")
///       SceneShapeRep        the product's own shape, if it has one (ShapeObject)
///       SceneOccurrenceRep   one a component, in the file's order (ProductOccurrence)
///
/// All occurrences of a part share its `core::PartGeometry`, its shape object and its product
/// object. The geometry's native handle is the `PartGeometry` of this record without its counts, so
/// that a view finds shape and colours behind it; `model` itself may go. The cost is one walk over
/// the expanded structure; callers refuse structures that are too large before (`JudgeExpansion`).
core::SceneOccurrenceRep* BuildScene(const ImportedModel& model);

}  // namespace kuvimport

#endif
