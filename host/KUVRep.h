#ifndef KUVRep_h
#define KUVRep_h

// The node of both scene graphs: 2D reps hang in 2D bags, 3D reps in 3D bags.

#include "KUVExport.h"
#include "KUVObjectModel.h"
#include "KUVStringsMath.h"

#include <memory>

class KUVGraphicPrimitive;
class KUVRep;

/// Names the model object that a rep shows.
class KUV_EXPORT KUVModelIdentificator : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    /// Takes a reference on `object`, which may be null.
    explicit KUVModelIdentificator(KUVBaseUnknown* object);
    ~KUVModelIdentificator() override;
    KUVModelIdentificator(const KUVModelIdentificator&) = delete;
    KUVModelIdentificator& operator=(const KUVModelIdentificator&) = delete;

    /// The object, or null. Borrowed: the caller does not release it.
    KUVBaseUnknown* GetId() const { return object_; }

private:
    KUVBaseUnknown* object_;
};

/// Graphic attributes of a rep, as two words of bits. Readers first set a record to its default.
struct KUVGraphicAttributeSet {
    /// Bit values 1 and 8 are those by which enumerations of the scene can leave a rep out.
    unsigned int firstWord = 0xFD040400U;
    unsigned int secondWord = 255U;
};

/// The children of a bag, in the order in which they were added; one reference is held on each.
///
/// Adding and removing cost the same whatever the number of children. Children keep their order
/// when one is removed. Destroying a deep chain of bags does not recurse.
class KUV_EXPORT KUVChildReps {
public:
    KUVChildReps();
    ~KUVChildReps();
    KUVChildReps(const KUVChildReps&) = delete;
    KUVChildReps& operator=(const KUVChildReps&) = delete;

    /// Appends `rep`. Null is ignored, and a rep that is already a child stays where it is. Throws
    /// `std::bad_alloc`, and changes nothing, when memory runs out.
    void Add(KUVRep* rep);
    /// Takes `rep` out and gives its reference back. Harmless when it is null or not a child.
    void Remove(KUVRep* rep);
    unsigned char Has(const KUVRep* rep) const;
    /// The children in order, without gaps; good until a child is added or removed.
    const list<KUVRep>& GetList() const;

private:
    struct Data;
    std::unique_ptr<Data> data_;
};

/// A node of a scene graph. A rep is compared by identity; paths, bags and whoever stores a pointer
/// to it hold a reference.
class KUV_EXPORT KUVRep : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    ~KUVRep() override;
    KUVRep(const KUVRep&) = delete;
    KUVRep& operator=(const KUVRep&) = delete;

    // ---- 2D side

    /// Whether the rep's size in pixels follows the zoom of the viewer (1, the default) or not (0).
    void SetWorldScalable(int scalable) { worldScalable_ = scalable != 0; }
    unsigned char IsWorldScalable() const { return worldScalable_; }

    /// Whether the rep belongs to the flat overlay: never lit, never tested for depth. Default 0.
    void SetOverlay(unsigned char overlay) { overlay_ = overlay != 0; }
    unsigned char IsOverlay() const { return overlay_; }

    // ---- 3D side

    /// Names the model object that the rep shows, or null. Borrowed.
    KUVModelIdentificator* GetModelIdentificator() const { return modelIdentificator_; }
    /// Takes a reference on `identificator`, which may be null.
    void SetModelIdentificator(KUVModelIdentificator* identificator);

    /// The child reps in order, or null for a rep that cannot have any. An entry may be absent;
    /// readers stop there. Borrowed, good until a child is added or removed.
    virtual const list<KUVRep>* GetChildren() const;

    /// 1 when a filter of the viewer keeps the rep and everything below it from being shown.
    unsigned char IsFiltered() const { return filtered_; }
    void SetFiltered(unsigned char filtered) { filtered_ = filtered != 0; }

    /// Overwrites `attributes` when the rep has attributes of its own; else leaves it alone.
    void GetGraphicAttributeSet(KUVGraphicAttributeSet& attributes) const;
    void SetGraphicAttributeSet(const KUVGraphicAttributeSet& attributes);

    /// 0 when the rep and everything below it take no part in display: hidden by the user.
    /// Default 1.
    unsigned char TakesPartInDisplay() const { return displayed_; }
    void SetTakesPartInDisplay(unsigned char displayed) { displayed_ = displayed != 0; }

    /// The graphic primitive stored under a sub-element number, or null. Borrowed, lives as long as
    /// the rep. Sub-element numbers of a shape are faces first, from 1, then edges, then vertices.
    virtual KUVGraphicPrimitive* GetGraphicPrimitive(int number) const;

protected:
    KUVRep();

private:
    KUVModelIdentificator* modelIdentificator_ = nullptr;
    KUVGraphicAttributeSet attributes_;
    bool hasAttributes_ = false;
    bool worldScalable_ = true;
    bool overlay_ = false;
    bool filtered_ = false;
    bool displayed_ = true;
};

#endif
