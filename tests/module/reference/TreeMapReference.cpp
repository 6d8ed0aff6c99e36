#include "module/reference/TreeMapReference.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace mapReference {

namespace {

unsigned int Inverse(unsigned int mode) { return mode == 0 ? 1 : 0; }

/// Whole columns or rows; what is no number or too large for a count does not matter here.
long long WholeNumber(float value)
{
    if (std::isnan(value))
        return 0;
    return static_cast<long long>(std::clamp(value, -2147483648.0f, 2147483520.0f));
}

float CountOf(const Node& node) { return static_cast<float>(node.children.size()); }

}  // namespace

Node* TreeMap::AddNode()
{
    nodes_.push_back(std::make_unique<Node>());
    return nodes_.back().get();
}

// ---- edits

void TreeMap::ResetUpwards(Node* node)
{
    // The walk of the tree goes up to the root, past nodes without cache.
    for (; node; node = node->parent) {
        if (node->hasCache)
            node->minimum = {-1.0f, -1.0f};
    }
}

void TreeMap::InsertChild(Node& parent, Node& child, bool resetCaches)
{
    if (child.parent) {
        std::vector<Node*>& siblings = child.parent->children;
        siblings.erase(std::find(siblings.begin(), siblings.end(), &child));
        ResetUpwards(child.parent);
    }
    child.parent = &parent;
    parent.children.push_back(&child);
    if (resetCaches)
        ResetUpwards(&parent);
}

void TreeMap::Unlink(Node& node)
{
    node.minimum = {-1.0f, -1.0f};
    node.hasCache = false;
}

void TreeMap::Link(Node& node)
{
    node.hasCache = true;
    // The walk of the caches stops at the first node without one.
    for (Node* reset = &node; reset && reset->hasCache; reset = reset->parent)
        reset->minimum = {-1.0f, -1.0f};
}

// ---- minimum sizes

Point TreeMap::ComputeMinimumExpandedSize(Node& node, unsigned int mode)
{
    if (node.minimum.x > 0.0f && node.minimum.y > 0.0f && node.lastMode == mode)
        return node.minimum;
    Point result;
    if (node.children.empty()) {
        result = {32.0f, 15.0f};
    } else {
        for (Node* const child : node.children) {
            if (!child->hasCache)
                continue;
            const Point inner = ComputeMinimumExpandedSize(*child, Inverse(mode));
            if (mode == 0) {
                result.x = result.x + inner.x;
                result.y = std::max(result.y, inner.y);
            } else {
                result.x = std::max(result.x, inner.x);
                result.y = result.y + inner.y;
            }
        }
        if (mode == 0)
            result.x += 2.0f * CountOf(node) - 2.0f;
        else
            result.y += 2.0f * CountOf(node) - 2.0f;
        result.x += 2.0f;
        result.y += 15.0f;
    }
    node.minimum = result;
    node.lastMode = mode;
    return result;
}

void TreeMap::SetLastMode(Node& node, unsigned int mode)
{
    if (node.lastMode == mode)
        return;
    node.lastMode = mode;
    node.minimum = {-1.0f, -1.0f};
}

bool TreeMap::CanSliceAndDiceExpandNode(Node& node, unsigned int mode, Point size, float* sum)
{
    if (node.children.empty())
        return true;
    const float n = CountOf(node);
    float aw = size.x - 2.0f;
    float ah = size.y - 14.0f - 1.0f;
    ComputeMinimumExpandedSize(node, mode);
    bool any = false;
    float total = 0.0f;
    float smallest = 0.0f;
    for (Node* const child : node.children) {
        if (!child->hasCache)
            continue;
        const Point minimum = ComputeMinimumExpandedSize(*child, Inverse(mode));
        const float m = mode == 0 ? minimum.x : minimum.y;
        total += m;
        smallest = any ? std::min(smallest, m) : m;
        any = true;
    }
    if (any) {
        if (mode == 0) {
            aw -= 2.0f * n - 2.0f;
            aw = smallest * aw / total;
        } else {
            ah -= 2.0f * n - 2.0f;
            ah = smallest * ah / total;
        }
        if (ah >= 15.0f && aw >= 32.0f) {
            if (sum)
                *sum = total;
            return true;
        }
    }
    aw = size.x - 2.0f;
    ah = size.y - 15.0f;
    if (mode == 0)
        aw = (aw - (2.0f * n - 2.0f)) / n;
    else
        ah = (ah - (2.0f * n - 2.0f)) / n;
    if (sum)
        *sum = -1.0f;
    return ah >= 15.0f && aw >= 32.0f;
}

bool TreeMap::CanLayoutChildrenInGrid(const Node& node, Point size)
{
    const float iw = size.x - 2.0f;
    const float ih = size.y - 15.0f;
    if (iw < 32.0f || ih < 15.0f)
        return false;
    const long long columns = WholeNumber(iw + 2.0f) / 34;
    const long long rows = WholeNumber(ih + 2.0f) / 17;
    return rows * columns >= static_cast<long long>(node.children.size());
}

// ---- layout

void TreeMap::ResetView(Node& node)
{
    node.hasView = false;
    node.expanded = false;
    node.discarded = true;
    ResetGrandchildren(node);
}

void TreeMap::ResetGrandchildren(Node& child)
{
    for (Node* const below : child.children) {
        if (below->hasCache)
            ResetView(*below);
    }
}

void TreeMap::LayOut(Node& node, unsigned int mode, Point p, Point s)
{
    if (!node.hasCache)
        return;
    node.expanded = false;
    node.discarded = false;
    node.hasView = true;
    node.position = p;
    node.size = s;
    if (node.children.empty()) {
        node.expanded = true;
        return;
    }
    float sum = 0.0f;
    if (!CanSliceAndDiceExpandNode(node, mode, s, &sum)) {
        ResetGrandchildren(node);
        return;
    }
    node.expanded = true;
    Point q{p.x + 1.0f, p.y + 1.0f};
    Point i{s.x - 2.0f, s.y - 14.0f - 1.0f};
    const float n = CountOf(node);
    if (sum < 0.0f) {
        Point step;
        if (mode == 0) {
            i.x = (i.x - (2.0f * n - 2.0f)) / n;
            step.x = i.x + 2.0f;
        } else {
            i.y = (i.y - (2.0f * n - 2.0f)) / n;
            step.y = i.y + 2.0f;
        }
        for (Node* const child : node.children) {
            LayOut(*child, Inverse(mode), q, i);
            q.x += step.x;
            q.y += step.y;
        }
        return;
    }
    const float g = 2.0f * (n - 1.0f);
    for (Node* const child : node.children) {
        if (!child->hasCache)
            continue;
        const Point m = ComputeMinimumExpandedSize(*child, Inverse(mode));
        if (mode == 0) {
            const float e = (i.x - g) * m.x / sum;
            LayOut(*child, Inverse(mode), q, {std::round(e), i.y});
            q.x += e + 2.0f;
        } else {
            const float e = (i.y - g) * m.y / sum;
            LayOut(*child, Inverse(mode), q, {i.x, std::round(e)});
            q.y += e + 2.0f;
        }
    }
}

void TreeMap::SliceAndDice(unsigned int mode, Point origin, Point size)
{
    if (currentRoot_)
        LayOut(*currentRoot_, mode, origin, size);
}

void TreeMap::LayoutChildrenInGrid(Point origin, Point size)
{
    if (!currentRoot_ || !currentRoot_->hasCache)
        return;
    Node& root = *currentRoot_;
    root.expanded = true;
    root.discarded = false;
    root.hasView = true;
    root.position = origin;
    root.size = size;
    const float iw = size.x - 2.0f;
    const float ih = size.y - 15.0f;
    const float fx = (iw + 2.0f) / 34.0f;
    const float fy = (ih + 2.0f) / 17.0f;
    const bool hasInside = !(iw < 0.0f || ih < 0.0f);
    const long long columns = hasInside ? WholeNumber(fx) : 0;
    const long long rows = hasInside ? WholeNumber(fy) : 0;
    const float cellWidth = ((fx - std::floor(fx)) / static_cast<float>(columns) + 1.0f) * 32.0f;
    Point cell{origin.x + 1.0f, origin.y + ih - 15.0f};
    long long column = 0;
    long long row = 0;
    for (Node* const child : root.children) {
        if (columns < 1 || row >= rows) {
            if (child->hasCache)
                ResetView(*child);
            continue;
        }
        if (child->hasCache) {
            child->discarded = false;
            child->expanded = child->children.empty();
            child->hasView = true;
            child->position = cell;
            child->size = {cellWidth, 15.0f};
            ResetGrandchildren(*child);
        }
        cell.x += cellWidth + 2.0f;
        if (++column == columns) {
            column = 0;
            ++row;
            cell.x = origin.x + 1.0f;
            cell.y -= 17.0f;
        }
    }
}

void TreeMap::Draw(Point origin, Point size)
{
    if (!currentRoot_ || !currentRoot_->hasCache)
        return;
    const unsigned int mode = currentRoot_->lastMode;
    if (!CanSliceAndDiceExpandNode(*currentRoot_, mode, size, nullptr) &&
        CanLayoutChildrenInGrid(*currentRoot_, size))
        LayoutChildrenInGrid(origin, size);
    else
        SliceAndDice(mode, origin, size);
}

void TreeMap::SetCurrentRoot(Node& node)
{
    if (&node == currentRoot_)
        return;
    const Node* const former = currentRoot_;
    const bool redraws = former && former->hasCache;
    const Point position = former ? former->position : Point();
    const Point size = former ? former->size : Point();
    if (redraws)
        ResetView(*currentRoot_);
    currentRoot_ = &node;
    if (redraws)
        Draw(position, size);
}

}  // namespace mapReference
