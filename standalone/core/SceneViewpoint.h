#ifndef core_SceneViewpoint_h
#define core_SceneViewpoint_h

#include "KUVViewer.h"

namespace core {

/// A scene: holds its root.
class KUV_EXPORT SceneGraph final : public KUVSceneGraph {
    KUV_DECLARE_CLASS
public:
    /// Takes a reference on `root`, which may be null. The new scene graph has one reference, the
    /// caller's; null when memory runs out.
    static SceneGraph* Create(KUVRep* root);
    ~SceneGraph() override;

    KUVRep* GetRootRep() const override { return root_; }

private:
    explicit SceneGraph(KUVRep* root);

    KUVRep* root_;
};

/// A 3D viewpoint on a scene of its own.
class KUV_EXPORT SceneViewpoint final : public KUV3DViewpoint {
    KUV_DECLARE_CLASS
public:
    /// Takes a reference on `root`, which may be null and stands for a scene without any rep. The
    /// new viewpoint has one reference, the caller's; null when memory runs out.
    static SceneViewpoint* Create(KUVRep* root);
    /// The same for the root occurrence of a document, put into a bag of its own: the root rep of a
    /// scene never is part of the pick paths that are enumerated from it.
    static SceneViewpoint* CreateForDocument(KUVRep* rootOccurrence);
    ~SceneViewpoint() override;

    KUVViewer* GetViewer() const override { return viewer_; }
    /// Not referenced, as the viewer references its viewpoint: take it back, with null, before the
    /// viewer dies.
    void SetViewer(KUVViewer* viewer) { viewer_ = viewer; }
    KUVSceneGraph* GetSceneGraph() const override { return sceneGraph_; }
    KUVMathPointf GetTargetPoint() const override { return target_; }
    void SetTargetPoint(const KUVMathPointf& target) { target_ = target; }

private:
    explicit SceneViewpoint(SceneGraph* sceneGraph);

    SceneGraph* sceneGraph_;
    KUVViewer* viewer_ = nullptr;
    KUVMathPointf target_;
};

}  // namespace core

#endif
