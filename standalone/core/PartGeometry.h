#ifndef core_PartGeometry_h
#define core_PartGeometry_h

#include "KUVExport.h"

#include <cstdint>
#include <memory>
#include <vector>

class KUVGraphicPrimitive;
class KUV3DEdgeGP;
class KUV3DFaceGP;
class KUV3DMarkerGP;

namespace core {

/// The triangles of one face. Strips and fans are given by the number of vertices of each.
struct FaceTriangles {
    std::uint32_t plain = 0;
    std::vector<int> strips;
    std::vector<int> fans;
};

/// What the leaf reps of all instances of a part share: the numbers of its faces, edges and
/// vertices, the triangles of each face, and whatever the importer draws it from.
///
/// Never changes once made. May be made on any thread; `Primitive` is for the interaction thread.
///
/// Sub-element numbers: faces from 1, then edges, then vertices, without gaps.
class KUV_EXPORT PartGeometry {
public:
    /// In the coordinates of the part. A part without points keeps the default.
    struct Bounds {
        float min[3] = {0.0f, 0.0f, 0.0f};
        float max[3] = {0.0f, 0.0f, 0.0f};
    };

    /// Throws `std::bad_alloc`. `native` may be null; it lives as long as the geometry.
    ///
    /// @param trianglesPerFace  one entry a face, in the order of their numbers
    static std::shared_ptr<const PartGeometry> Make(std::vector<std::uint32_t> trianglesPerFace,
                                                    std::uint32_t edgeCount,
                                                    std::uint32_t vertexCount, const Bounds& bounds,
                                                    std::shared_ptr<const void> native = {});
    /// The same for faces that have strips or fans.
    static std::shared_ptr<const PartGeometry>
    MakeWithStrips(std::vector<FaceTriangles> faces, std::uint32_t edgeCount,
                   std::uint32_t vertexCount, const Bounds& bounds,
                   std::shared_ptr<const void> native = {});
    ~PartGeometry();
    PartGeometry(const PartGeometry&) = delete;
    PartGeometry& operator=(const PartGeometry&) = delete;

    int FaceCount() const { return static_cast<int>(trianglesPerFace_.size()); }
    int EdgeCount() const { return edgeCount_; }
    int VertexCount() const { return vertexCount_; }
    int FirstFace() const { return 1; }
    int FirstEdge() const { return 1 + FaceCount(); }
    int FirstVertex() const { return FirstEdge() + edgeCount_; }

    /// Triangles of all faces, strips and fans included. Constant time.
    std::uint64_t TriangleCount() const { return triangleCount_; }
    /// Triangles of the face with a sub-element number; 0 for a number that is no face's.
    std::uint32_t TrianglesOfFace(int number) const;

    const Bounds& GetBounds() const { return bounds_; }
    const std::shared_ptr<const void>& Native() const { return native_; }

    /// The primitive under a sub-element number, or null. Borrowed, lives as long as the geometry.
    /// Made on first use: a face has one of its own; the edges share one, which says nothing but
    /// that it is an edge, and so do the vertices. Throws `std::bad_alloc`.
    KUVGraphicPrimitive* Primitive(int number) const;

private:
    PartGeometry() = default;

    KUV3DFaceGP* MakeFace(std::size_t index) const;

    std::vector<std::uint32_t> trianglesPerFace_;
    /// Empty unless some face has strips or fans.
    std::vector<FaceTriangles> strippedFaces_;
    int edgeCount_ = 0;
    int vertexCount_ = 0;
    std::uint64_t triangleCount_ = 0;
    Bounds bounds_;
    std::shared_ptr<const void> native_;
    mutable std::vector<KUV3DFaceGP*> facePrimitives_;
    mutable KUV3DEdgeGP* edgePrimitive_ = nullptr;
    mutable KUV3DMarkerGP* vertexPrimitive_ = nullptr;
};

}  // namespace core

#endif
