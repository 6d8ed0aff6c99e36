#ifndef core_SceneCounts_h
#define core_SceneCounts_h

#include "KUVRep.h"

#include <cstdint>

namespace core {

/// What a scene holds. "In all" counts a thing once for every place where it occurs.
struct SceneCounts {
    /// Different products among the occurrences.
    std::uint64_t products = 0;
    /// Occurrences, the root's included.
    std::uint64_t occurrences = 0;
    /// Leaf reps with a shape, in all.
    std::uint64_t shapes = 0;
    /// Different geometries among the shapes.
    std::uint64_t geometries = 0;
    /// Faces, edges, vertices and triangles, in all.
    std::uint64_t faces = 0;
    std::uint64_t edges = 0;
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    /// Triangles of every geometry once.
    std::uint64_t uniqueTriangles = 0;
    /// Reps on the longest way down.
    std::uint64_t levels = 0;
};

/// Counts `root` and everything below it; null holds nothing. A rep that hangs below itself is left
/// out there. Costs one walk over the scene, without recursion. Throws `std::bad_alloc`.
KUV_EXPORT SceneCounts CountScene(const KUVRep* root);

}  // namespace core

#endif
