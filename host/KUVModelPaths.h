#ifndef KUVModelPaths_h
#define KUVModelPaths_h

// Paths of model objects, and the visualisation manager that converts between them and rep paths.

#include "KUV3D.h"
#include "KUVExport.h"
#include "KUVObjectModel.h"
#include "KUVStringsMath.h"
#include "KUVViewer.h"

#include <vector>

class KUVCommand;

/// A path of model objects from an outer one to an inner one, with a cursor that steps as that of a
/// rep path. Objects and attached elements are referenced.
///
/// The lock works as that of a rep path: while it is set the reads marked (L) answer as on an empty
/// path.
class KUV_EXPORT KUVPathElement : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    KUVPathElement();
    KUVPathElement(const KUVPathElement& other);
    KUVPathElement& operator=(const KUVPathElement& other);
    ~KUVPathElement() override;

    /// (L) Number of objects.
    int Size() const;
    /// (L) The object at `index`, or null outside the range. Borrowed.
    KUVBaseUnknown* operator[](int index) const;
    /// (L) Where the cursor stands; -1 before the first object.
    int GetCursorPosition() const;
    /// (L) The object under the cursor, or null. Borrowed.
    KUVBaseUnknown* GetCurrentElement() const;

    void InitToTopElement();
    void InitToLeafElement();
    /// Steps inwards and gives the object reached (borrowed); null, leaving the cursor, when there
    /// is none.
    KUVBaseUnknown* NextChildElement();
    /// Steps outwards and gives the object reached (borrowed); null, leaving the cursor, when there
    /// is none.
    KUVBaseUnknown* NextFatherElement();

    /// Appends `element`, takes a reference and puts the cursor on it. Null is ignored.
    void AddElement(KUVBaseUnknown* element);
    /// Takes the last occurrence of `element` out. Harmless when it is null or not there.
    void RemoveElement(KUVBaseUnknown* element);
    /// Takes all objects out and puts the cursor at -1.
    void Empty();

    /// Attaches an object, such as an intersection, and takes a reference. Null is ignored.
    void AttachElement(KUVBaseUnknown* element);
    /// The first attached object of a class or derived from it, referenced for the caller, or null.
    KUVBaseUnknown* SearchAttachedElement(KUVClassId classId) const;

    void LockPath() { locked_ = true; }
    /// Clears the lock and gives 1 when it had been set, else 0.
    unsigned char UnlockPath();

private:
    std::vector<KUVBaseUnknown*> elements_;
    std::vector<KUVBaseUnknown*> attached_;
    int cursor_ = -1;
    bool locked_ = false;
};

/// A path element shown by a view.
class KUV_EXPORT KUVGraphicPathElement : public KUVPathElement {
    KUV_DECLARE_CLASS
public:
    KUVGraphicPathElement();
    ~KUVGraphicPathElement() override;
    KUVGraphicPathElement(const KUVGraphicPathElement&) = delete;
    KUVGraphicPathElement& operator=(const KUVGraphicPathElement&) = delete;

    /// Takes a reference on `viewObject`, which may be null.
    void SetViewObject(KUVBaseUnknown* viewObject);
    /// Borrowed.
    KUVBaseUnknown* GetViewObject() const { return viewObject_; }

private:
    KUVBaseUnknown* viewObject_ = nullptr;
};

/// A path element that knows where it was picked.
class KUV_EXPORT KUVPathElementWithPositions : public KUVGraphicPathElement {
    KUV_DECLARE_CLASS
public:
    /// `owner` and `viewer` may be null and are not referenced.
    KUVPathElementWithPositions(KUVCommand* owner, KUVViewer* viewer, const KUVMathPointf& point,
                                const KUVMathDirectionf& normal,
                                const KUVMathDirectionf& globalNormal);
    ~KUVPathElementWithPositions() override;

    KUVCommand* GetOwner() const { return owner_; }
    KUVViewer* GetViewer() const { return viewer_; }
    const KUVMathPointf& GetPoint() const { return point_; }
    const KUVMathDirectionf& GetNormal() const { return normal_; }
    const KUVMathDirectionf& GetGlobalNormal() const { return globalNormal_; }
    /// How the host reads the element: the same numbers as a pick path's interactive context.
    void SetInteractiveContext(int context) { interactiveContext_ = context; }
    int GetInteractiveContext() const { return interactiveContext_; }

private:
    KUVCommand* owner_;
    KUVViewer* viewer_;
    KUVMathPointf point_;
    KUVMathDirectionf normal_;
    KUVMathDirectionf globalNormal_;
    int interactiveContext_ = 0;
};

/// Attached to a path element: the point where it was picked, scene coordinates.
class KUV_EXPORT KUVGraphicElementIntersection : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    explicit KUVGraphicElementIntersection(const KUVMathPointf& point);
    ~KUVGraphicElementIntersection() override;
    const KUVMathPointf& GetPoint() const { return point_; }

private:
    KUVMathPointf point_;
};

/// Attached to a path element: the normal where it was picked.
class KUV_EXPORT KUVGraphicElementNormale : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    explicit KUVGraphicElementNormale(const KUVMathDirection& direction);
    ~KUVGraphicElementNormale() override;
    const KUVMathDirection& GetDirection() const { return direction_; }

private:
    KUVMathDirection direction_;
};

/// Converts between rep paths and path elements.
class KUV_EXPORT KUVVisManager : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    ~KUVVisManager() override;

    /// The manager of the process, or null. Borrowed.
    static KUVVisManager* GetVisManager();
    /// Makes `manager` the manager of the process, or takes the present one back when null. Nothing
    /// is referenced.
    static void SetVisManager(KUVVisManager* manager);

    /// Fills `element` with the model objects of all reps of `path`, whatever its cursor. Null
    /// arguments fail. `reserved` is 0.
    virtual KUVResult GeneratePathElementFromPickPath(KUVPickPath* path, KUVPathElement* element,
                                                      int reserved) = 0;
    /// Fills `path` with the reps that show `element`.
    ///
    /// @param viewpointOrViewObject  where to look: a viewpoint, or a viewer's view object. Null
    /// fails.
    /// @param interactiveContext     2: as picked; 0: as shown
    /// @param generativeAttribute    1: also through objects that only generate what is shown; else
    /// 0
    virtual KUVResult GenerateRepPathFromPathElement(KUVPathElement* element,
                                                     KUVBaseUnknown* viewpointOrViewObject,
                                                     KUVRepPath& path, int interactiveContext,
                                                     int generativeAttribute, int reserved) = 0;

protected:
    KUVVisManager();
};

#endif
