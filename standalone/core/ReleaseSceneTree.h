#ifndef core_ReleaseSceneTree_h
#define core_ReleaseSceneTree_h

#include "KUV3D.h"

#include <algorithm>
#include <new>
#include <vector>

namespace core {

namespace detail {

template <class Node>
void ReleasePathOf(Node& node)
{
    if (auto* const path = static_cast<KUVPickPath*>(node.GetData())) {
        node.SetData(nullptr);
        path->Release();
    }
}

/// The first present child from the place of `from` on.
template <class Children>
auto FirstPresent(const Children& children, typename Children::const_iterator from)
{
    const auto found = std::find_if(from, children.end(), [](const auto* child) { return child; });
    return found != children.end() ? *found : nullptr;
}

/// The node behind `node` in pre-order. Needs no memory, but looks for the node among its siblings.
template <class Node>
Node* NextWithoutStack(Node* node, const Node* root)
{
    if (Node* const child = FirstPresent(node->GetChildren(), node->GetChildren().begin()))
        return child;
    for (; node != root; node = node->GetParent()) {
        const auto& siblings = node->GetParent()->GetChildren();
        const auto place = std::find(siblings.begin(), siblings.end(), node);
        if (place == siblings.end())
            continue;
        if (Node* const sibling = FirstPresent(siblings, place + 1))
            return sibling;
    }
    return nullptr;
}

}  // namespace detail

/// Frees a tree that was built from pick paths: releases the pick path in the data of every node,
/// clears the data, then gives back the caller's reference on `root`. Null is ignored.
///
/// The display caches of the nodes are not touched; whoever made them detaches and deletes them
/// first. Linear in the nodes; without memory for a stack, each node costs its place among its
/// siblings as well. Throws nothing. Written for any node class with `GetData`, `SetData`,
/// `GetChildren`, `GetParent` and `Release`, so that the host does not depend on the module whose
/// nodes these are.
template <class Node>
void ReleaseSceneTree(Node* root)
{
    if (!root)
        return;
    try {
        std::vector<Node*> waiting{root};
        while (!waiting.empty()) {
            Node* const node = waiting.back();
            waiting.pop_back();
            for (Node* const child : node->GetChildren()) {
                if (child)
                    waiting.push_back(child);
            }
            detail::ReleasePathOf(*node);
        }
    } catch (const std::bad_alloc&) {
        for (Node* node = root; node; node = detail::NextWithoutStack<Node>(node, root))
            detail::ReleasePathOf(*node);
    }
    root->Release();
}

}  // namespace core

#endif
