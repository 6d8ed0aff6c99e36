#include "module/reference/LayoutReference.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace layoutReference {

// ---- views

void View::Clean()
{
    content = Content::Nothing;
    position = {};
    size = {};
    pixels.clear();
}

void View::Init(Point newPosition, Point newSize, float scale)
{
    Clean();
    if (newSize.x <= 0.0f && newSize.y <= 0.0f)
        return;
    for (const float number : {newPosition.x, newPosition.y, newSize.x, newSize.y, scale}) {
        if (!std::isfinite(number))
            return;
    }
    content = Content::Full;
    position = newPosition;
    size = newSize;
}

void View::InitWithTexture(Point newPosition, Point newSize, std::vector<unsigned char> picture)
{
    Clean();
    if (newSize.x <= 0.0f && newSize.y <= 0.0f)
        return;
    content = picture.empty() ? Content::Contour : Content::Picture;
    position = newPosition;
    size = newSize;
    pixels = std::move(picture);
}

void View::InitWithoutTexture(Point newPosition, Point newSize)
{
    InitWithTexture(newPosition, newSize, {});
}

// ---- caches

void Cache::InternalReset()
{
    minimum = {-1.0f, -1.0f};
    if (kind == Kind::Cushion) {
        subtreeValue = 0;
        isCushionComputed = false;
    }
    if (kind == Kind::Icicle) {
        lastVisitedChild = nullptr;
        span = 1;
        cursor = NOT_COMPUTED;
        graphicalSize = {-1.0f, -1.0f};
        icicleSize = {-1.0f, -1.0f};
    }
}

void Cache::Reset()
{
    InternalReset();
    if (node && node->parent && node->parent->cache)
        node->parent->cache->Reset();
}

void Cache::SetSizeValue(long long value)
{
    if (kind == Kind::Cushion && value != sizeValue)
        Reset();
    sizeValue = value;
}

void Cache::SetResizeWithValue(unsigned char flag)
{
    if (kind == Kind::Cushion && flag != resizesWithValue)
        Reset();
    resizesWithValue = flag;
    for (const Node* const child : node ? node->children : std::vector<Node*>()) {
        if (child->cache)
            child->cache->SetResizeWithValue(flag);
    }
}

void Cache::SetColorWithValue(unsigned char flag)
{
    colorsWithValue = flag;
    for (const Node* const child : node ? node->children : std::vector<Node*>()) {
        if (child->cache)
            child->cache->SetColorWithValue(flag);
    }
}

void Cache::DoNotUseValue()
{
    SetResizeWithValue(0);
    SetColorWithValue(0);
    for (const Node* const child : node ? node->children : std::vector<Node*>()) {
        if (child->cache)
            child->cache->DoNotUseValue();
    }
}

// ---- nodes

unsigned int Node::MaxDepth()
{
    if (maxDepthMemo == NOT_COMPUTED) {
        unsigned int deepest = 0;
        for (Node* const child : children)
            deepest = std::max(deepest, child->MaxDepth());
        maxDepthMemo = 1 + deepest;
    }
    return maxDepthMemo;
}

unsigned int Node::Leaves()
{
    if (leavesMemo == NOT_COMPUTED) {
        unsigned int sum = children.empty() ? 1 : 0;
        for (Node* const child : children)
            sum += child->Leaves();
        leavesMemo = sum;
    }
    return leavesMemo;
}

int Node::IndexOf(const Node* child) const
{
    const auto place = std::find(children.begin(), children.end(), child);
    return place == children.end() ? -1 : static_cast<int>(place - children.begin());
}

namespace {

/// From a leaf up to the first sibling beside the way, or to the end of the way.
Node* ClimbFor(Node* node, const Node* stop, int step)
{
    if (node == stop || !node->parent)
        return node;
    const std::vector<Node*>& siblings = node->parent->children;
    const int next = node->parent->IndexOf(node) + step;
    if (next >= 0 && next < static_cast<int>(siblings.size()))
        return siblings[static_cast<std::size_t>(next)];
    return ClimbFor(node->parent, stop, step);
}

}  // namespace

Node* Node::NextLeaf(const Node* stop)
{
    return children.empty() ? ClimbFor(this, stop, 1)->FirstLeaf() : nullptr;
}

Node* Node::PreviousLeaf(const Node* stop)
{
    return children.empty() ? ClimbFor(this, stop, -1)->LastLeaf() : nullptr;
}

void Node::ResetUpwards()
{
    maxDepthMemo = NOT_COMPUTED;
    leavesMemo = NOT_COMPUTED;
    if (cache)
        cache->InternalReset();
    if (parent)
        parent->ResetUpwards();
}

void Node::InsertChild(Node* child, bool resetCaches)
{
    if (!child || child == this || HasParent(child))
        return;
    child->RemoveParent();
    child->parent = this;
    children.push_back(child);
    if (resetCaches)
        ResetUpwards();
}

void Node::RemoveParent()
{
    if (!parent)
        return;
    parent->children.erase(parent->children.begin() + parent->IndexOf(this));
    parent->ResetUpwards();
    parent = nullptr;
}

// ---- the tree that is shown

Layout::~Layout() = default;

std::unique_ptr<Cache> Layout::GenerateCache() const
{
    auto cache = std::make_unique<Cache>();
    cache->kind = kind_;
    return cache;
}

void Layout::Unlink(Node& node) const
{
    if (!node.cache)
        return;
    // The cache forgets its node first, so that it resets itself alone.
    node.cache->node = nullptr;
    node.cache->Reset();
    node.cache = nullptr;
}

void Layout::Link(Node& node, Cache& cache) const
{
    node.cache = &cache;
    cache.node = &node;
    cache.Reset();
}

void Layout::Forget(Node& node)
{
    Unlink(node);
    for (Node** const slot : {&currentRoot, &selection, &leafSelection, &highlighted}) {
        if (*slot == &node)
            *slot = nullptr;
    }
    for (Node*& root : earlierRoots) {
        if (root == &node)
            root = nullptr;
    }
}

void Layout::LinkCaches(Node& node)
{
    caches_.push_back(GenerateCache());
    Link(node, *caches_.back());
    for (Node* const child : node.children)
        LinkCaches(*child);
}

namespace {

void UnlinkAll(const Layout& layout, Node& node)
{
    layout.Unlink(node);
    for (Node* const child : node.children)
        UnlinkAll(layout, *child);
}

}  // namespace

void Layout::SetTreeRoot(Node* root)
{
    if (treeRoot)
        UnlinkAll(*this, *treeRoot);
    caches_.clear();
    treeRoot = root;
    if (root)
        LinkCaches(*root);
    currentRoot = root;
    selection = root ? root->FirstLeaf() : nullptr;
    leafSelection = selection;
    highlighted = nullptr;
}

void Layout::Draw(Point /*origin*/, Point /*size*/, float scale) { drawScale = scale; }

View& Layout::ViewOf(Cache& cache)
{
    if (!cache.view)
        cache.view = std::make_unique<View>();
    return *cache.view;
}

void Layout::ResetView(Cache& cache)
{
    cache.view.reset();
    cache.isExpanded = false;
    cache.isDiscarded = true;
    if (cache.node)
        ResetViewsBelow(*cache.node);
}

void Layout::ResetViewsBelow(const Node& node)
{
    for (const Node* const child : node.children) {
        if (child->cache)
            ResetView(*child->cache);
    }
}

// ---- roots

void Layout::SetCurrentRoot(Node* node, bool pushOnStack)
{
    // None stands for the whole tree, also when the current root has died.
    if (!node && !currentRoot)
        node = treeRoot;
    if (node == currentRoot)
        return;
    Node* const former = currentRoot;
    const Node* const told = node ? node : treeRoot;
    const bool hadCache = former && former->cache;
    const Point position = hadCache ? former->cache->position : Point();
    const Point size = hadCache ? former->cache->size : Point();
    if (!node)
        node = treeRoot;
    if (former) {
        if (pushOnStack)
            earlierRoots.push_back(former);
        if (hadCache)
            ResetView(*former->cache);
    }
    currentRoot = node;
    if (node && selection != node && !(selection && selection->HasParent(node)))
        SetCurrentSelection(node);
    if (hadCache && redrawsOnSetCurrentRoot)
        Draw(position, size, drawScale);
    Notify("root " + Name(former) + " > " + Name(told));
}

bool Layout::Unzoom()
{
    // The roots that died are passed over.
    while (!earlierRoots.empty()) {
        Node* const top = earlierRoots.back();
        earlierRoots.pop_back();
        if (top) {
            SetCurrentRoot(top, false);
            return true;
        }
    }
    return false;
}

// ---- selection and highlight

namespace {

void Select(const Node* node, bool isSelected)
{
    if (node && node->cache && node->cache->view)
        node->cache->view->isSelected = isSelected;
}

void Highlight(const Node* node, bool isHighlighted)
{
    if (node && node->cache && node->cache->view)
        node->cache->view->isHighlighted = isHighlighted;
}

}  // namespace

void Layout::SetCurrentSelection(Node* node)
{
    if (!node)
        return;
    const Node* const former = selection;
    if (node->children.empty()) {
        Select(leafSelection, false);
        Select(selection, false);
        if (tracksLeafSelection)
            leafSelection = node;
    } else if (selection != leafSelection) {
        Select(selection, false);
    }
    selection = node;
    Select(node, true);
    if (leafSelection && leafSelection != node && !leafSelection->HasParent(node)) {
        Select(leafSelection, false);
        leafSelection = nullptr;
    }
    if (highlighted && highlighted != node) {
        const Node* const left = std::exchange(highlighted, nullptr);
        Highlight(left, false);
        Notify("hover " + Name(left) + " > -");
    }
    Notify("select " + Name(former) + " > " + Name(node));
}

void Layout::SetCurrentHighlightedNode(Node* node)
{
    if (node == highlighted)
        return;
    const Node* const former = highlighted;
    Highlight(former, false);
    highlighted = node;
    if (!node)
        return;
    Highlight(node, true);
    Notify("hover " + Name(former) + " > " + Name(node));
}

// ---- telling

std::string Layout::TakeNotifications() { return std::exchange(notifications_, {}); }

std::string Layout::Name(const Node* node) { return node ? std::to_string(node->number) : "-"; }

}  // namespace layoutReference
