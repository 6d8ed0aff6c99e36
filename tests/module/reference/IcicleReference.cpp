#include "module/reference/IcicleReference.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace layoutReference {

Icicle::Icicle() : Layout(Cache::Kind::Icicle)
{
    showsDiscarded = true;
    tracksLeafSelection = false;
}

// ---- spans

namespace {

/// How many columns a child takes: those between its parent's level and its own.
unsigned int SpanBetween(Node& parent, Node& child)
{
    const auto difference = static_cast<int>(parent.MaxDepth() - child.MaxDepth());
    return static_cast<unsigned int>(std::max(1, difference));
}

unsigned int AlignNode(Node& node, unsigned int span, bool& isStretched)
{
    unsigned int longest = 0;
    for (Node* const child : node.children)
        longest = std::max(longest, AlignNode(*child, SpanBetween(node, *child), isStretched));
    if (node.children.empty() && (!node.isLeafObject || span >= 2))
        isStretched = true;
    if (node.cache) {
        node.cache->span = span;
        node.cache->cursor = NOT_COMPUTED;
        node.cache->icicleSize = {-1.0f, -1.0f};
    }
    return span + longest;
}

void WriteStretched(Node& node, bool isStretched)
{
    for (Node* const child : node.children)
        WriteStretched(*child, isStretched);
    if (node.cache)
        node.cache->hasStretchedLeaves = isStretched;
}

}  // namespace

int Icicle::AlignIciclePlotLeaves(Node* node)
{
    Node* const start = node ? node : currentRoot;
    if (!start)
        return 0;
    bool isStretched = false;
    const unsigned int span = start->parent ? SpanBetween(*start->parent, *start) : 1;
    const unsigned int columns = AlignNode(*start, span, isStretched);
    WriteStretched(*start, isStretched);
    return static_cast<int>(columns);
}

void Icicle::ResetIciclePlotAlignment()
{
    if (treeRoot && treeRoot->cache)
        treeRoot->cache->Reset();
}

void Icicle::SetCurrentRoot(Node* node, bool pushOnStack)
{
    if (node && node->cache && node->cache->span >= 2)
        AlignIciclePlotLeaves(node);
    Layout::SetCurrentRoot(node, pushOnStack);
}

// ---- columns

unsigned int Icicle::ComputeIcicleCursor(Cache& cache, bool stores)
{
    if (cache.cursor != NOT_COMPUTED)
        return cache.cursor;
    unsigned int cursor = 0;
    if (cache.node && cache.node->parent && cache.node->parent->cache) {
        Cache& above = *cache.node->parent->cache;
        cursor = ComputeIcicleCursor(above, false) + above.span;
    }
    if (stores)
        cache.cursor = cursor;
    return cursor;
}

namespace {

/// The column behind the last one of a node.
unsigned int EndOf(Cache& cache, bool stores)
{
    return Icicle::ComputeIcicleCursor(cache, stores) + cache.span;
}

}  // namespace

bool Icicle::IsVisibleFromLeaves(Cache& cache, unsigned int lastNodes, bool stores)
{
    if (cache.node && !cache.node->parent && cache.node->isMerged)
        return false;
    if (lastNodes == NOT_COMPUTED)
        return true;
    Node* const leaf = cache.node ? cache.node->FirstLeaf() : nullptr;
    if (!leaf || !leaf->cache)
        return false;
    return EndOf(*leaf->cache, stores) - EndOf(cache, stores) < lastNodes;
}

namespace {

void VisitForMinDepth(Cache& cache, int depth, unsigned int lastNodes, int& result)
{
    if (!cache.node)
        return;
    if (Icicle::IsVisibleFromLeaves(cache, lastNodes, false))
        result = std::min(result, depth);
    const int below = depth + (cache.node->isMerged ? 0 : static_cast<int>(cache.span));
    for (const Node* const child : cache.node->children) {
        if (below >= result)
            return;
        if (child->cache)
            VisitForMinDepth(*child->cache, below, lastNodes, result);
    }
}

}  // namespace

int Icicle::ComputeMinDepthWithVisibility(Cache& cache, int depth, unsigned int lastNodes)
{
    int result = 0x7FFFFFFF;
    VisitForMinDepth(cache, depth, lastNodes, result);
    return result;
}

// ---- sizes

int Icicle::ColumnWidth(const Cache& cache)
{
    if (!cache.showsLabel)
        return 32;
    if (!cache.node || !cache.node->isLeafObject)
        return 96;
    return cache.hasStretchedLeaves ? 96 : 64;
}

namespace {

/// Whether a node has its icon and its label in one row, or no label at all.
bool IsFlat(Node& node, const Cache& cache, bool hasInlineLabels)
{
    return !cache.showsLabel || node.label.empty() || node.MaxDepth() < 3 || hasInlineLabels;
}

int ShownColumns(Cache& cache, const Icicle::Range& range, bool isVisible, unsigned int depth,
                 unsigned int minDepth, unsigned int maxDepth)
{
    const unsigned int n = range.lastNodes;
    const unsigned int span = cache.span;
    if (range.isRelative)
        return static_cast<int>(!isVisible && depth < minDepth ? 0 : span);
    if (!isVisible)
        return static_cast<int>(depth < maxDepth - n ? 0 : span);
    const bool isCut = n <= maxDepth && depth < maxDepth - n;
    return static_cast<int>(isCut ? span - maxDepth + n + depth : span);
}

/// How high the icons of the node and of the ancestors that it carries alone make it.
int HeightForIcons(Node& node, Cache& cache, const Icicle::Range& range, int height, bool stores)
{
    if (!node.icon.empty())
        height = std::max(height, IsFlat(node, cache, range.hasInlineLabels) ? 24 : 46);
    for (Node* above = node.parent; above && above->cache; above = above->parent) {
        if (!above->parent && above->isMerged)
            break;
        if (range.lastNodes != NOT_COMPUTED &&
            !Icicle::IsVisibleFromLeaves(*above->cache, range.lastNodes, stores))
            break;
        if (above->icon.empty())
            continue;
        const unsigned int leaves = above->Leaves();
        if (IsFlat(*above, *above->cache, range.hasInlineLabels)) {
            if (leaves == 1)
                height = std::max(height, 24);
        } else {
            if (leaves == 1)
                height = std::max(height, 46);
            if (leaves == 2)
                height = std::max(height, 24);
        }
        if (above->MaxDepth() > 2)
            break;
    }
    return height;
}

}  // namespace

Point Icicle::ComputeIcicleSize(Cache& cache, const Range& range, unsigned int depth,
                                unsigned int minDepth, unsigned int maxDepth, bool stores)
{
    if (cache.icicleSize.x > 0.0f && cache.icicleSize.y > 0.0f &&
        range.lastNodes == cache.lastNodes && range.hasInlineLabels == cache.hasInlineLabels)
        return cache.icicleSize;
    if (stores) {
        cache.lastNodes = range.lastNodes;
        cache.hasInlineLabels = range.hasInlineLabels;
    }
    Point result{-1.0f, -1.0f};
    if (cache.node) {
        Node& node = *cache.node;
        if (minDepth == NOT_COMPUTED)
            minDepth = static_cast<unsigned int>(
                ComputeMinDepthWithVisibility(cache, static_cast<int>(depth), range.lastNodes));
        if (maxDepth == NOT_COMPUTED)
            maxDepth = node.MaxDepth();
        const bool isVisible = IsVisibleFromLeaves(cache, range.lastNodes, stores);
        const int k = ShownColumns(cache, range, isVisible, depth, minDepth, maxDepth);
        int width = k > 0 ? (ColumnWidth(cache) + 2) * k - 2 : 0;
        int height = 24;
        if (!node.children.empty()) {
            width += isVisible ? 2 : 0;
            height = 2 * (static_cast<int>(node.children.size()) - 1);
            int widest = 0;
            for (const Node* const child : node.children) {
                if (!child->cache)
                    continue;
                const Point inner = ComputeIcicleSize(*child->cache, range, depth + cache.span,
                                                      minDepth, maxDepth, stores);
                widest = std::max(widest, static_cast<int>(inner.x));
                height += static_cast<int>(inner.y);
            }
            width += widest;
        }
        if (isVisible)
            height = HeightForIcons(node, cache, range, height, stores);
        result = {static_cast<float>(width), static_cast<float>(height)};
    }
    if (stores)
        cache.icicleSize = result;
    return result;
}

// ---- plot

/// What one plot gives to every node.
struct Icicle::Plot {
    Range range;
    Point origin;
    float scale = 1.0f;
    float sx = 1.0f;
    float sy = 1.0f;
    int minDepth = 0;
    unsigned int maxDepth = 0;
};

unsigned int Icicle::IciclePlot(Point origin, Point size, const Range& range, float scale)
{
    if (!currentRoot || !currentRoot->cache)
        return 0;
    Cache& cache = *currentRoot->cache;
    const unsigned int depth = currentRoot->Depth();
    Plot plot;
    plot.range = range;
    plot.origin = origin;
    plot.scale = scale;
    plot.minDepth = ComputeMinDepthWithVisibility(cache, static_cast<int>(depth), range.lastNodes);
    plot.maxDepth = currentRoot->MaxDepth();
    const Point extent = ComputeIcicleSize(
        cache, range, depth, static_cast<unsigned int>(plot.minDepth), NOT_COMPUTED, true);
    if (extent.x > 0.0f && size.x > extent.x)
        plot.sx = size.x / extent.x;
    if (extent.y > 0.0f && size.y > extent.y)
        plot.sy = size.y / extent.y;
    return PlotNode(plot, *currentRoot, origin, static_cast<int>(depth));
}

unsigned int Icicle::PlotNode(const Plot& plot, const Node& node, Point p, int depth)
{
    if (!node.cache)
        return 0;
    Cache& cache = *node.cache;
    View& view = ViewOf(cache);
    view.Clean();
    view.highlightMode = 1;
    cache.isExpanded = true;
    cache.isDiscarded = true;
    const Point size =
        ComputeIcicleSize(cache, plot.range, static_cast<unsigned int>(depth),
                          static_cast<unsigned int>(plot.minDepth), NOT_COMPUTED, true);
    cache.size = {size.x * plot.sx, size.y * plot.sy};
    cache.position = p;
    cache.cursor = static_cast<unsigned int>(depth);

    const bool isVisible = IsVisibleFromLeaves(cache, plot.range.lastNodes, true);
    const int major = ColumnWidth(cache);
    const unsigned int n = plot.range.lastNodes;
    const auto span = static_cast<int>(cache.span);
    int k = span;
    int advance = 0;
    if (plot.range.isRelative) {
        if (plot.minDepth <= depth)
            advance = k;
        else if (plot.minDepth < depth + k)
            advance = depth + k - plot.minDepth;
    } else {
        if (n <= plot.maxDepth && static_cast<unsigned int>(depth) < plot.maxDepth - n)
            k = static_cast<int>(n - plot.maxDepth + static_cast<unsigned int>(depth + span));
        if (isVisible)
            advance = k;
    }
    if (advance > 0)
        p.x += static_cast<float>((major + 2) * advance) * plot.sx;

    unsigned int furthest = 0;
    for (auto place = node.children.rbegin(); place != node.children.rend(); ++place) {
        const Node& child = **place;
        if (!child.cache)
            continue;
        furthest = std::max(furthest, PlotNode(plot, child, p, depth + span));
        p.y += 2.0f * plot.sy + child.cache->size.y;
    }

    if (!isVisible) {
        cache.graphicalSize = {0.0f, 0.0f};
        bool isFirst = true;
        for (const Node* const child : node.children) {
            if (!child->cache)
                continue;
            const float x = child->cache->position.x;
            cache.position.x = isFirst ? x : std::min(cache.position.x, x);
            isFirst = false;
        }
    } else {
        const float units = k > 0 ? static_cast<float>(major * k + 2 * (k - 1)) : 0.0f;
        cache.graphicalSize = {plot.scale * plot.sx * units, plot.scale * cache.size.y};
        const Point drawn{plot.origin.x + (cache.position.x - plot.origin.x) * plot.scale,
                          plot.origin.y + (cache.position.y - plot.origin.y) * plot.scale};
        view.Init(drawn, cache.graphicalSize, plot.scale);
        cache.isDiscarded = false;
    }
    return cache.span + furthest;
}

void Icicle::Draw(Point origin, Point size, float scale)
{
    Layout::Draw(origin, size, scale);
    if (!currentRoot || !currentRoot->cache)
        return;
    Range range;
    range.lastNodes = currentRoot->cache->lastNodes;
    range.hasInlineLabels = currentRoot->cache->hasInlineLabels;
    IciclePlot(origin, size, range, scale);
    SetCurrentSelection(selection);
}

// ---- the last columns

void Icicle::SetNLastNodes(unsigned int count)
{
    if (count == lastNodes)
        return;
    const unsigned int former = lastNodes;
    lastNodes = count;
    const bool hasSelection =
        selection && selection->cache && selection->FirstLeaf() && selection->FirstLeaf()->cache;
    if (count < former && hasSelection && !IsVisibleFromLeaves(*selection->cache, count, true)) {
        Node* node = selection;
        while (true) {
            Node* const next = Right(*node->cache, keyboardCursor);
            const bool isSame = next == node;
            node = next;
            if (isSame || !node || !node->cache || IsVisibleFromLeaves(*node->cache, count, true))
                break;
        }
        SetCurrentSelection(node);
    }
    Notify("last " + std::to_string(former) + " > " + std::to_string(count) + " key " +
           (former > count ? "700000" : "400000"));
}

// ---- navigation

namespace {

/// Down for a step of 1, up for -1.
Node* GoBeside(Cache& cache, unsigned int& cursor, const Node* root, unsigned int lastNodes,
               int step)
{
    Node* const node = cache.node;
    if (!node || node == root || !node->parent)
        return node;
    Node* climber = node;
    Node* target = nullptr;
    while (!target) {
        if (climber == root || (root && climber == root->parent) || !climber->parent)
            return node;
        const std::vector<Node*>& siblings = climber->parent->children;
        const int next = climber->parent->IndexOf(climber) + step;
        if (next >= 0 && next < static_cast<int>(siblings.size()))
            target = siblings[static_cast<std::size_t>(next)];
        else
            climber = climber->parent;
    }
    if (lastNodes != NOT_COMPUTED) {
        const auto first = static_cast<long long>(EndOf(*node->FirstLeaf()->cache, true)) -
                           static_cast<long long>(lastNodes);
        cursor = std::max(cursor, static_cast<unsigned int>(std::max(0LL, first)));
    }
    // Beyond the tree that is shown no node takes columns.
    unsigned int column = target->cache ? Icicle::ComputeIcicleCursor(*target->cache, true) : 0;
    while (!target->children.empty()) {
        column += target->cache ? target->cache->span : 0;
        if (column > cursor)
            break;
        target = step > 0 ? target->children.front() : target->children.back();
    }
    return target;
}

}  // namespace

Node* Icicle::Down(Cache& cache, unsigned int& cursor, const Node* root, unsigned int lastNodes)
{
    return GoBeside(cache, cursor, root, lastNodes, 1);
}

Node* Icicle::Up(Cache& cache, unsigned int& cursor, const Node* root, unsigned int lastNodes)
{
    return GoBeside(cache, cursor, root, lastNodes, -1);
}

Node* Icicle::Left(Cache& cache, unsigned int& cursor, const Node* root, unsigned int lastNodes)
{
    Node* const node = cache.node;
    if (!node || !node->parent || node == root)
        return node;
    if (lastNodes != NOT_COMPUTED &&
        EndOf(*node->FirstLeaf()->cache, true) - ComputeIcicleCursor(cache, true) >= lastNodes)
        return node;
    if (!node->parent->cache)
        return node;
    Cache& above = *node->parent->cache;
    cursor = EndOf(above, true) - 1;
    above.lastVisitedChild = &cache;
    return node->parent;
}

Node* Icicle::Right(Cache& cache, unsigned int& cursor)
{
    Node* const node = cache.node;
    if (!node || node->children.empty())
        return node;
    for (Node* const child : node->children) {
        if (cache.lastVisitedChild && child->cache == cache.lastVisitedChild) {
            cursor = ComputeIcicleCursor(*child->cache, true);
            return child;
        }
    }
    cache.lastVisitedChild = nullptr;
    Node* const last = node->children.back();
    if (!last->cache)
        return node;
    cursor = ComputeIcicleCursor(*last->cache, true);
    return last;
}

Node* Icicle::GetNodeViaNavigation(unsigned int key)
{
    if (!selection || !selection->cache)
        return nullptr;
    Node* beside = nullptr;
    switch (key) {
    case 0x800000:
        beside = Up(*selection->cache, keyboardCursor, currentRoot, lastNodes);
        break;
    case 0xA00000:
        beside = Down(*selection->cache, keyboardCursor, currentRoot, lastNodes);
        break;
    case 0xB00000:
        return Right(*selection->cache, keyboardCursor);
    case 0x900000:
        return GoLeft();
    default:
        return selection;
    }
    return beside ? beside : currentRoot->FirstLeaf();
}

Node* Icicle::GoLeft()
{
    unsigned int k = lastNodes;
    if (selection->parent && selection->parent == currentRoot && currentRoot->isMerged)
        return selection;
    Node* reached = Left(*selection->cache, keyboardCursor, currentRoot, k);
    while (extendsWithKeys && canExtend && reached != currentRoot && reached == selection) {
        if (!selection->parent || !selection->parent->cache || k == NOT_COMPUTED)
            break;
        // One column after the other; a range that ends far away is reached in one leap.
        const unsigned int wanted = EndOf(*selection->FirstLeaf()->cache, true) -
                                    ComputeIcicleCursor(*selection->cache, true);
        k = std::max(k, wanted) - k > 1000000U ? std::max(k, wanted) : k + 1;
        reached = Left(*selection->cache, keyboardCursor, currentRoot, k);
    }
    SetNLastNodes(k);
    return reached;
}

void Icicle::ApplyPageUpPageDown(unsigned int key)
{
    unsigned int limit = 0;
    if (currentRoot && currentRoot->cache)
        limit = 1U + static_cast<unsigned int>(ComputeMinDepthWithVisibility(
                         *currentRoot->cache, static_cast<int>(currentRoot->Depth()), 1));
    else if (currentRoot)
        limit = currentRoot->MaxDepth();
    unsigned int k = lastNodes;
    if (key == 0x700000) {
        if (currentRoot && k >= limit)
            k = limit - 1;
        else if (k > 1)
            k -= 1;
    } else if (key == 0x400000 && currentRoot && treeRoot && k < limit) {
        k += 1;
    }
    SetNLastNodes(k);
}

void Icicle::OnMouseSelection(Node* node)
{
    Layout::OnMouseSelection(node);
    if (node && node->cache)
        keyboardCursor = ComputeIcicleCursor(*node->cache, true);
}

}  // namespace layoutReference
