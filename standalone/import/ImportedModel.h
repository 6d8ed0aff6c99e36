/// What a model file holds, in plain records: product definitions, their components, shared
/// geometry.
///
/// Readers fill one of these, `SceneBuilder` turns it into reps. Nothing here names a toolkit: the
/// native shape that a 3D view wants later hangs behind an opaque handle.
///
///     products[0] "Pump"  --component "left"-->   products[1] "Rotor" --geometry--> geometries[0]
///                         --component "right"-->  products[1]
///
/// Sub-assemblies are referenced, never expanded: a product that occurs a thousand times is one
/// record.
#ifndef IMPORT_IMPORTED_MODEL_H
#define IMPORT_IMPORTED_MODEL_H

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kuvimport {

/// Rows of an affine map, x' = m[0] x + m[1] y + m[2] z + m[3] and so on; shear and scale are
/// allowed.
struct Placement {
    std::array<double, 12> rows{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

    bool IsIdentity() const { return rows == Placement{}.rows; }
};

/// 0xRRGGBBAA, red in the top byte.
using Colour = std::uint32_t;

/// Extent of a geometry in its own coordinates; empty while `low` lies above `high`.
struct Extent {
    std::array<double, 3> low{1, 1, 1};
    std::array<double, 3> high{0, 0, 0};

    bool IsEmpty() const { return low[0] > high[0]; }
    /// 0 for an empty extent.
    double LargestSide() const;
};

/// One shape, tessellated once however often it occurs.
///
/// Sub-elements have one numbering: faces 1 to F, then edges F+1 to F+E, then vertices. The order
/// is the file's, so that the same file gives the same numbers in every run.
struct PartGeometry {
    std::vector<std::uint32_t> trianglesPerFace;
    std::uint32_t edges = 0;
    std::uint32_t vertices = 0;
    Extent extent;
    /// Empty, or one colour a face; 0 means that the face has none of its own.
    std::vector<Colour> faceColours;
    /// The triangles were in the file; nothing was tessellated here.
    bool broughtTriangles = false;
    /// `TopoDS_Shape` with its triangulations, for a 3D view. Null is allowed.
    std::shared_ptr<const void> native;

    std::uint64_t Triangles() const;
};

inline constexpr std::uint32_t NO_GEOMETRY = 0xFFFFFFFFU;

/// One occurrence of a product inside another product.
struct Component {
    std::uint32_t product = 0;
    /// The occurrence's own name, UTF-8; empty when it has none (the product's name is shown then).
    std::string name;
    /// What tells the occurrence from its siblings in the file: a next-assembly-usage id, a node
    /// index.
    std::string id;
    Placement placement;
    std::optional<Colour> colour;
};

/// A product definition: an assembly of components, a part with a shape, or (mesh formats) both.
struct Product {
    std::string name;
    /// Identifier in the file's own terms (STEP: the product's id).
    std::string id;
    /// The shape's own name where the file tells it apart from the product's; else empty.
    std::string shapeName;
    std::uint32_t geometry = NO_GEOMETRY;
    std::optional<Colour> colour;
    std::vector<Component> components;
    /// Made by the reader as the file's root because the file has several roots or none; not a
    /// product of the file and not counted as one.
    bool isFileRoot = false;

    bool IsAssembly() const { return geometry == NO_GEOMETRY; }
};

/// The deflections that were used; absent where every triangle came with the file.
struct Tessellation {
    double linearDeflection = 0.004;
    double angularDeflection = 20;
};

/// Totals of the expanded structure, every occurrence counted, found without expanding it.
struct ModelCounts {
    std::uint64_t products = 0;
    std::uint64_t instances = 0;
    std::uint64_t reps = 0;
    std::uint64_t faces = 0;
    std::uint64_t edges = 0;
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t trianglesUnique = 0;
    /// Levels of occurrences, the root's being 1.
    std::uint32_t levels = 0;
};

struct ImportedModel {
    /// "step", "iges", "brep", "vrml", "gltf", "obj", "stl", "ply", ...
    std::string format;
    std::vector<Product> products;
    std::uint32_t root = 0;
    std::vector<PartGeometry> geometries;
    std::vector<std::string> warnings;
    std::optional<Tessellation> tessellation;
    double secondsRead = 0;
    double secondsMesh = 0;

    /// Counts by one walk over the products, children before parents. Saturates at the largest
    /// integer, so a file that nests doubling sub-assemblies cannot wrap around. The structure must
    /// be free of cycles.
    ModelCounts Count() const;
};

/// Products so that every product comes after all that it uses; empty when the structure is cyclic
/// or a component refers to no product. Only what the root reaches is listed.
std::vector<std::uint32_t> ChildrenFirst(const ImportedModel& model);

}  // namespace kuvimport

#endif
