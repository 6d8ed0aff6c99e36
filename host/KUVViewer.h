#ifndef KUVViewer_h
#define KUVViewer_h

// Viewers, viewpoints and scene graphs, as modules see them. The pointers given are borrowed and
// may be null.

#include "KUVExport.h"
#include "KUVObjectModel.h"
#include "KUVStringsMath.h"

class KUV3DViewpoint;
class KUVRep;
class KUVViewer;

/// What a viewer draws on.
class KUV_EXPORT KUVSupport : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    ~KUVSupport() override;
    /// Device pixels a layout unit.
    virtual float GetPointToPixelScale() const = 0;

protected:
    KUVSupport();
};

/// The root of a scene.
class KUV_EXPORT KUVSceneGraph : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    ~KUVSceneGraph() override;
    virtual KUVRep* GetRootRep() const = 0;

protected:
    KUVSceneGraph();
};

/// A point from which a scene is looked at.
class KUV_EXPORT KUVViewpoint : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    ~KUVViewpoint() override;
    virtual KUVViewer* GetViewer() const = 0;
    /// This viewpoint as a 3D viewpoint, or null when it is none.
    virtual KUV3DViewpoint* As3DViewpoint();

protected:
    KUVViewpoint();
};

class KUV_EXPORT KUV3DViewpoint : public KUVViewpoint {
    KUV_DECLARE_CLASS
public:
    ~KUV3DViewpoint() override;
    virtual KUVSceneGraph* GetSceneGraph() const = 0;
    /// The point of the scene that the view turns about: stands in for the picked point where a
    /// path brings none.
    virtual KUVMathPointf GetTargetPoint() const = 0;
    KUV3DViewpoint* As3DViewpoint() override;

protected:
    KUV3DViewpoint();
};

/// A window on one or more scenes.
class KUV_EXPORT KUVViewer : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    ~KUVViewer() override;

    /// Width and height in device pixels. Either pointer may be null.
    virtual void GetGraphicSize(float* width, float* height) const = 0;
    /// Where the pointer is, in device pixels, y downwards. Either pointer may be null.
    virtual void GetMousePosition(int* x, int* y) const = 0;
    virtual KUVSupport* GetSupport() const = 0;
    virtual KUV3DViewpoint* GetMain3DViewpoint() const = 0;
    /// The model-side object that stands for this viewer in path elements.
    virtual KUVBaseUnknown* GetViewObject() const = 0;

protected:
    KUVViewer();
};

#endif
