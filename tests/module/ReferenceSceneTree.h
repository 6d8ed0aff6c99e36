#ifndef module_ReferenceSceneTree_h
#define module_ReferenceSceneTree_h

// Trees of the scene built in the plainest way: children are searched one after the other, nothing
// is shared with the module but the nodes that the results are compared with.

#include "VisDataTree.h"

#include "KUV3D.h"

#include <memory>
#include <string>
#include <vector>

namespace sceneReference {

/// A pick path written out.
struct Path {
    std::vector<KUVRep*> reps;
    int cursor = -1;
    /// Up to the first absent entry.
    std::vector<int> numbers;

    KUVRep* Current() const;
    bool IsOnLast() const { return cursor + 1 >= static_cast<int>(reps.size()); }
    /// Steps inwards; false, leaving the cursor, when there is no rep.
    bool StepToChild();
};

/// Reads a path that is not locked.
Path Written(const KUVPickPath& path);

struct Node {
    Path path;
    std::string label;
    std::string icon;
    bool isLeafObject = false;
    bool isMergeable = false;
    std::vector<std::unique_ptr<Node>> children;
};

/// The comparison that ignores the prefix.
bool IsSameElement(const Path& first, const Path& second);

/// Null when no path contributed. `restrictTo` may be null.
std::unique_ptr<Node> BuildTree(const std::vector<KUVPickPath>& paths, const KUVRepPath* restrictTo,
                                bool mergeableIfNotLoaded);

/// Both trees as text, a node a line, with everything that is compared.
std::string Describe(const Node* root);
std::string Describe(const VisDataTree* root);

}  // namespace sceneReference

#endif
