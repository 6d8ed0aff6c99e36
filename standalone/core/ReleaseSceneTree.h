#ifndef core_ReleaseSceneTree_h
#define core_ReleaseSceneTree_h

#include "KUV3D.h"

#include <vector>

namespace core {

/// Frees a tree that was built from pick paths: releases the pick path in the data of every node,
/// clears the data, then gives back the caller's reference on `root`. Null is ignored.
///
/// The display caches of the nodes are not touched; whoever made them detaches and deletes them
/// first. Written for any node class with `GetData`, `SetData`, `GetChildren` and `Release`, so
/// that the host does not depend on the module whose nodes these are.
template <class Node>
void ReleaseSceneTree(Node* root)
{
    if (!root)
        return;
    std::vector<Node*> waiting{root};
    while (!waiting.empty()) {
        Node* const node = waiting.back();
        waiting.pop_back();
        for (Node* const child : node->GetChildren()) {
            if (child)
                waiting.push_back(child);
        }
        if (auto* const path = static_cast<KUVPickPath*>(node->GetData())) {
            node->SetData(nullptr);
            path->Release();
        }
    }
    root->Release();
}

}  // namespace core

#endif
