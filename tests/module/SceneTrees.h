#ifndef module_SceneTrees_h
#define module_SceneTrees_h

// Trees built from scenes, for the tests of what the module makes of scenes.

#include "VisDataTreeUtility.h"

#include "core/ReleaseSceneTree.h"
#include "support/TestScene.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace scenes {

/// A tree of the scene that goes with its paths.
struct ReleaseTree {
    void operator()(VisDataTree* root) const { core::ReleaseSceneTree(root); }
};
using SceneTree = std::unique_ptr<VisDataTree, ReleaseTree>;

inline SceneTree TreeOf(std::vector<KUVPickPath> paths, KUVRepPath* restrictTo = nullptr,
                        unsigned char mergeable = 0)
{
    return SceneTree(
        VisDataTreeUtility::CreateTreeFromPickPath(support::ListOf(paths), restrictTo, mergeable));
}

inline SceneTree NodeOf(KUVPickPath path, unsigned char mergeable = 0)
{
    return SceneTree(VisDataTreeUtility::CreateVisDataTree(&path, mergeable));
}

inline std::string Label(const VisDataTree* node) { return node->GetLabel().GetUtf8(); }
inline std::string Icon(const VisDataTree* node) { return node->GetIconName().GetUtf8(); }

/// Pump > (Rotor > Blade, Housing > Shell), all below one document occurrence.
struct Pump {
    support::TestScene scene;
    core::SceneOccurrenceRep* pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    core::SceneOccurrenceRep* rotor = scene.AddOccurrence(pump, "Rotor");
    core::SceneShapeRep* blade = scene.AddShape(rotor, "Blade", {10, 20, 30}, 2, 1);
    core::SceneOccurrenceRep* housing = scene.AddOccurrence(pump, "Housing");
    core::SceneShapeRep* shell = scene.AddShape(housing, "Shell", {7});

    KUVPickPath ToBlade(const list<int>& numbers = {}) const
    {
        return support::PathTo({pump, rotor, blade}, numbers);
    }
    KUVPickPath ToShell(const list<int>& numbers = {}) const
    {
        return support::PathTo({pump, housing, shell}, numbers);
    }
};

}  // namespace scenes

#endif
