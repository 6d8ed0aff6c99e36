#include "core/PartGeometry.h"

#include "KUV3D.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace core {

namespace {

constexpr std::uint32_t LARGEST_INT = std::numeric_limits<int>::max();

int Saturated(std::uint32_t number) { return static_cast<int>(std::min(number, LARGEST_INT)); }

std::uint64_t TrianglesOfRuns(const std::vector<int>& vertexCounts)
{
    std::uint64_t triangles = 0;
    for (const int vertices : vertexCounts) {
        if (vertices > 2)
            triangles += static_cast<std::uint64_t>(vertices) - 2;
    }
    return triangles;
}

std::uint32_t TrianglesOf(const FaceTriangles& face)
{
    const std::uint64_t triangles =
        face.plain + TrianglesOfRuns(face.strips) + TrianglesOfRuns(face.fans);
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(triangles, std::numeric_limits<std::uint32_t>::max()));
}

/// Makes the primitive that all edges, or all vertices, of a part share.
template <class Primitive>
Primitive* Shared(Primitive*& primitive)
{
    if (!primitive)
        primitive = new Primitive;
    return primitive;
}

}  // namespace

std::shared_ptr<const PartGeometry> PartGeometry::Make(std::vector<std::uint32_t> trianglesPerFace,
                                                       std::uint32_t edgeCount,
                                                       std::uint32_t vertexCount,
                                                       const Bounds& bounds,
                                                       std::shared_ptr<const void> native)
{
    const std::shared_ptr<PartGeometry> geometry(new PartGeometry);
    geometry->trianglesPerFace_ = std::move(trianglesPerFace);
    geometry->edgeCount_ = Saturated(edgeCount);
    geometry->vertexCount_ = Saturated(vertexCount);
    geometry->bounds_ = bounds;
    geometry->native_ = std::move(native);
    for (const std::uint32_t triangles : geometry->trianglesPerFace_)
        geometry->triangleCount_ += triangles;
    return geometry;
}

std::shared_ptr<const PartGeometry> PartGeometry::MakeWithStrips(std::vector<FaceTriangles> faces,
                                                                 std::uint32_t edgeCount,
                                                                 std::uint32_t vertexCount,
                                                                 const Bounds& bounds,
                                                                 std::shared_ptr<const void> native)
{
    std::vector<std::uint32_t> trianglesPerFace;
    trianglesPerFace.reserve(faces.size());
    for (const FaceTriangles& face : faces)
        trianglesPerFace.push_back(TrianglesOf(face));
    auto made =
        Make(std::move(trianglesPerFace), edgeCount, vertexCount, bounds, std::move(native));
    // Nobody else knows the geometry yet.
    std::const_pointer_cast<PartGeometry>(made)->strippedFaces_ = std::move(faces);
    return made;
}

PartGeometry::~PartGeometry()
{
    for (KUV3DFaceGP* const face : facePrimitives_) {
        if (face)
            face->Release();
    }
    if (edgePrimitive_)
        edgePrimitive_->Release();
    if (vertexPrimitive_)
        vertexPrimitive_->Release();
}

std::uint32_t PartGeometry::TrianglesOfFace(int number) const
{
    return number >= 1 && number <= FaceCount()
               ? trianglesPerFace_[static_cast<std::size_t>(number) - 1]
               : 0;
}

KUVGraphicPrimitive* PartGeometry::Primitive(int number) const
{
    // Numbers are made small before they are compared, so that no sum can overflow.
    if (number < 1)
        return nullptr;
    int rest = number - 1;
    if (rest < FaceCount()) {
        const auto index = static_cast<std::size_t>(rest);
        if (facePrimitives_.empty())
            facePrimitives_.resize(trianglesPerFace_.size());
        if (!facePrimitives_[index])
            facePrimitives_[index] = MakeFace(index);
        return facePrimitives_[index];
    }
    rest -= FaceCount();
    if (rest < edgeCount_)
        return Shared(edgePrimitive_);
    rest -= edgeCount_;
    return rest < vertexCount_ ? Shared(vertexPrimitive_) : nullptr;
}

KUV3DFaceGP* PartGeometry::MakeFace(std::size_t index) const
{
    if (strippedFaces_.empty())
        return new KUV3DFaceGP(Saturated(trianglesPerFace_[index]));
    const FaceTriangles& face = strippedFaces_[index];
    return new KUV3DFaceGP(Saturated(face.plain), face.strips, face.fans);
}

}  // namespace core
