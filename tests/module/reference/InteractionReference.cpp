#include "module/reference/LayoutReference.h"

// Mouse and keys.

namespace layoutReference {

// ---- hit test

Node* Layout::FindNodeAtPosition(float x, float y) const { return Hit(currentRoot, x, y); }

Node* Layout::Hit(const Node* node, float x, float y) const
{
    if (!node || !node->cache)
        return nullptr;
    const Cache& cache = *node->cache;
    if (cache.isDiscarded && !showsDiscarded)
        return nullptr;
    const bool isInside = cache.position.x <= x && x <= cache.position.x + cache.size.x &&
                          cache.position.y <= y && y <= cache.position.y + cache.size.y;
    if (!isInside)
        return nullptr;
    for (const Node* const child : node->children) {
        if (Node* const hit = Hit(child, x, y))
            return hit;
    }
    return cache.isDiscarded ? nullptr : cache.node;
}

// ---- mouse

unsigned int Layout::DeviceAction(const DeviceEvent& event)
{
    if (!currentRoot || event.kind == DeviceEvent::Kind::None || !event.isFromMouse)
        return 1;
    float x = event.x;
    float y = event.y;
    if (event.kind == DeviceEvent::Kind::Release && event.viewer) {
        x = static_cast<float>(event.viewer->mouseX);
        y = static_cast<float>(event.viewer->mouseY);
    }
    x += deviceOffset.x;
    y += deviceOffset.y;
    if (event.viewer) {
        x = x / event.viewer->scale;
        y = (event.viewer->height - y) / event.viewer->scale;
    }
    Node* const hit = FindNodeAtPosition(x, y);
    switch (event.kind) {
    case DeviceEvent::Kind::Press:
        return UsePress(event, hit);
    case DeviceEvent::Kind::Motion:
        return UseMotion(event, hit);
    case DeviceEvent::Kind::Release:
        return UseRelease(event, hit);
    default:
        return UseDoubleClick(event, hit);
    }
}

unsigned int Layout::UsePress(const DeviceEvent& event, Node* hit)
{
    if (event.modifier != 0 || !hit)
        return 1;
    if (event.button == 1 && event.buttons == 1) {
        OnMouseSelection(hit);
        return 0;
    }
    if (event.button == 3 && event.buttons == 4) {
        OnMouseSelection(hit);
        Notify("right");
        return 0;
    }
    return 1;
}

unsigned int Layout::UseMotion(const DeviceEvent& event, Node* hit)
{
    if (event.buttons != 0 || !hit)
        return 1;
    if (hit != highlighted)
        SetCurrentHighlightedNode(hit);
    return 0;
}

unsigned int Layout::UseRelease(const DeviceEvent& event, Node* hit)
{
    if (!canZoom || event.button != 2 || event.buttons != 0 || event.modifier != 0)
        return 1;
    if (hit)
        SetCurrentRoot(hit, true);
    return 0;
}

unsigned int Layout::UseDoubleClick(const DeviceEvent& event, Node* hit)
{
    if (event.button == 1) {
        if (!hit)
            return 1;
        OnMouseSelection(hit);
        Notify("double");
        return 0;
    }
    if (event.button == 2) {
        if (hit && canZoom)
            SetCurrentRoot(hit, true);
        return 0;
    }
    return 1;
}

void Layout::OnMouseSelection(Node* node) { SetCurrentSelection(node); }

// ---- keys

unsigned int Layout::KeyboardAction(unsigned int code, int state)
{
    if (!currentRoot)
        return 1;
    switch (code) {
    case 0x100000:
        return state == 1 && Unzoom() ? 0 : 1;
    case 0x800000:
    case 0x900000:
    case 0xA00000:
    case 0xB00000:
        if (state == 1)
            SetCurrentSelection(GetNodeViaNavigation(code));
        return 0;
    case 0x400000:
    case 0x700000:
        if (!usesPageKeys)
            return 1;
        if (state == 1)
            ApplyPageUpPageDown(code);
        return 0;
    default:
        return 1;
    }
}

void Layout::ApplyPageUpPageDown(unsigned int /*key*/) {}

Node* Layout::GetNodeViaNavigation(unsigned int key)
{
    switch (key) {
    case 0x800000:
        return LeafBeside(true);
    case 0xA00000:
        return LeafBeside(false);
    case 0x900000:
        return ShownParent();
    case 0xB00000:
        return ShownChild();
    default:
        return nullptr;
    }
}

Node* Layout::LeafBeside(bool forward) const
{
    Node* leaf = nullptr;
    if (leafSelection)
        leaf = forward ? leafSelection->NextLeaf(currentRoot)
                       : leafSelection->PreviousLeaf(currentRoot);
    else if (selection)
        leaf = selection->FirstLeaf();
    return leaf ? leaf : currentRoot->FirstLeaf();
}

Node* Layout::ShownParent() const
{
    if (!selection || selection == currentRoot)
        return nullptr;
    for (Node* above = selection->parent; above; above = above->parent) {
        if (!above->isMerged || above == currentRoot)
            return above;
    }
    return selection;
}

Node* Layout::ChildTowardsLeafSelection(const Node& node) const
{
    if (!leafSelection)
        return node.children.front();
    for (Node* const child : node.children) {
        if (child == leafSelection || leafSelection->HasParent(child))
            return child;
    }
    return nullptr;
}

Node* Layout::ShownChild() const
{
    Node* node = selection;
    while (node && !node->children.empty()) {
        node = ChildTowardsLeafSelection(*node);
        if (!node || !node->isMerged)
            break;
    }
    return node;
}

}  // namespace layoutReference
