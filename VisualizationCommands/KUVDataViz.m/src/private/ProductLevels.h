#ifndef ProductLevels_h
#define ProductLevels_h

// The levels of a path that belong to a product structure: filter bag reps that show a model object
// of one class. Defined with the other services over paths.

#include "KUV3D.h"

/// Whether `rep`, which may be null, is a filter bag rep whose model object is of the class called
/// `className` itself.
bool IsProductLevel(const KUVRep* rep, const char* className);

/// The place of the first such rep in `path`, whatever its cursor; -1 without one.
int FindProductLevel(KUVPickPath& path, const char* className);

#endif
