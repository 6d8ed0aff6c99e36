#include "core/SceneViewpoint.h"

#include "KUV3D.h"

#include <new>

namespace core {

KUV_IMPLEMENT_CLASS(SceneGraph, KUVSceneGraph, "KUVHost")
KUV_IMPLEMENT_CLASS(SceneViewpoint, KUV3DViewpoint, "KUVHost")

SceneGraph::SceneGraph(KUVRep* root) : root_(root)
{
    if (root_)
        root_->AddRef();
}

SceneGraph::~SceneGraph()
{
    if (root_)
        root_->Release();
}

SceneGraph* SceneGraph::Create(KUVRep* root) { return new (std::nothrow) SceneGraph(root); }

SceneViewpoint::SceneViewpoint(SceneGraph* sceneGraph) : sceneGraph_(sceneGraph) {}

SceneViewpoint::~SceneViewpoint() { sceneGraph_->Release(); }

SceneViewpoint* SceneViewpoint::Create(KUVRep* root)
{
    SceneGraph* const sceneGraph = SceneGraph::Create(root);
    if (!sceneGraph)
        return nullptr;
    auto* const viewpoint = new (std::nothrow) SceneViewpoint(sceneGraph);
    if (!viewpoint)
        sceneGraph->Release();
    return viewpoint;
}

SceneViewpoint* SceneViewpoint::CreateForDocument(KUVRep* rootOccurrence)
{
    KUV3DBagRep* const bag = KUV3DBagRep::CreateRep();
    if (!bag)
        return nullptr;
    SceneViewpoint* viewpoint = nullptr;
    try {
        bag->AddChild(rootOccurrence);
        viewpoint = Create(bag);
    } catch (const std::bad_alloc&) {
        // The bag could not grow: there is no viewpoint.
    }
    bag->Release();
    return viewpoint;
}

}  // namespace core
