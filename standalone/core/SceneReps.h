#ifndef core_SceneReps_h
#define core_SceneReps_h

#include "core/PartGeometry.h"

#include "KUV3D.h"

#include <array>
#include <cstdint>
#include <memory>

namespace core {

/// The leaf of a scene: one instance of a part's shape.
class KUV_EXPORT SceneShapeRep final : public KUVRep {
    KUV_DECLARE_CLASS
public:
    /// Makes a rep with one reference for the caller; null when memory runs out.
    ///
    /// @param geometry       shared by all instances of the part; null stands for no primitives
    /// @param identificator  names the shape's model object; retained, may be null. All instances
    ///                       may share one.
    static SceneShapeRep* CreateRep(std::shared_ptr<const PartGeometry> geometry,
                                    KUVModelIdentificator* identificator);
    ~SceneShapeRep() override;

    /// Null when the rep was made without.
    const PartGeometry* Geometry() const { return geometry_.get(); }
    const std::shared_ptr<const PartGeometry>& SharedGeometry() const { return geometry_; }
    KUVGraphicPrimitive* GetGraphicPrimitive(int number) const override;

private:
    explicit SceneShapeRep(std::shared_ptr<const PartGeometry> geometry);

    std::shared_ptr<const PartGeometry> geometry_;
};

/// Where an instance stands in its assembly: three rows of four numbers, the rotation and scale in
/// the first three columns and the translation in the last.
struct SceneTransformation {
    std::array<double, 12> values = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

    bool IsIdentity() const { return values == SceneTransformation().values; }
};

/// The inner node of a scene: one occurrence of a product, placed in the one above.
class KUV_EXPORT SceneOccurrenceRep final : public KUV3DFilterBagRep {
    KUV_DECLARE_CLASS
public:
    /// Makes a rep with one reference for the caller; null when memory runs out.
    ///
    /// @param identificator  names the occurrence's model object; retained, may be null
    static SceneOccurrenceRep* CreateRep(KUVModelIdentificator* identificator);
    ~SceneOccurrenceRep() override;

    /// The identity unless set.
    SceneTransformation GetTransformation() const;
    /// An identity costs no memory.
    void SetTransformation(const SceneTransformation& transformation);

    /// The colour that this instance gives to what hangs below it, 0xRRGGBBAA; 0 for none.
    std::uint32_t GetColour() const;
    void SetColour(std::uint32_t rgba);

private:
    /// What most occurrences do not have.
    struct Placement {
        SceneTransformation transformation;
        std::uint32_t colour = 0;
    };

    SceneOccurrenceRep();

    std::unique_ptr<Placement> placement_;
};

/// The geometry of a shape rep; null for null and for every other rep.
KUV_EXPORT const PartGeometry* GeometryOf(const KUVRep* rep);

}  // namespace core

#endif
