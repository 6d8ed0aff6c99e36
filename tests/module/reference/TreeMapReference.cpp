#include "module/reference/TreeMapReference.h"

#include <algorithm>
#include <cmath>

namespace layoutReference {

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

std::unique_ptr<Cache> TreeMap::GenerateCache() const
{
    std::unique_ptr<Cache> cache = Layout::GenerateCache();
    cache->lastMode = 1;
    return cache;
}

// ---- minimum sizes

Point TreeMap::ComputeMinimumExpandedSize(Cache& cache, unsigned int mode)
{
    if (cache.minimum.x > 0.0f && cache.minimum.y > 0.0f && cache.lastMode == mode)
        return cache.minimum;
    Point result;
    const Node* const node = cache.node;
    if (!node || node->children.empty()) {
        result = {32.0f, 15.0f};
    } else {
        for (const Node* const child : node->children) {
            if (!child->cache)
                continue;
            const Point inner = ComputeMinimumExpandedSize(*child->cache, Inverse(mode));
            if (mode == 0) {
                result.x = result.x + inner.x;
                result.y = std::max(result.y, inner.y);
            } else {
                result.x = std::max(result.x, inner.x);
                result.y = result.y + inner.y;
            }
        }
        if (mode == 0)
            result.x += 2.0f * CountOf(*node) - 2.0f;
        else
            result.y += 2.0f * CountOf(*node) - 2.0f;
        result.x += 2.0f;
        result.y += 15.0f;
    }
    cache.minimum = result;
    cache.lastMode = mode;
    return result;
}

void TreeMap::SetLastMode(Cache& cache, unsigned int mode)
{
    if (cache.lastMode == mode)
        return;
    cache.lastMode = mode;
    cache.minimum = {-1.0f, -1.0f};
}

bool TreeMap::CanSliceAndDiceExpandNode(Cache& cache, unsigned int mode, Point size, float* sum)
{
    if (!cache.node)
        return false;
    const Node& node = *cache.node;
    if (node.children.empty())
        return true;
    const float n = CountOf(node);
    float aw = size.x - 2.0f;
    float ah = size.y - 14.0f - 1.0f;
    ComputeMinimumExpandedSize(cache, mode);
    bool any = false;
    float total = 0.0f;
    float smallest = 0.0f;
    for (const Node* const child : node.children) {
        if (!child->cache)
            continue;
        const Point minimum = ComputeMinimumExpandedSize(*child->cache, Inverse(mode));
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

bool TreeMap::CanLayoutChildrenInGrid(const Cache& cache, Point size)
{
    if (!cache.node)
        return false;
    const float iw = size.x - 2.0f;
    const float ih = size.y - 15.0f;
    if (iw < 32.0f || ih < 15.0f)
        return false;
    const long long columns = WholeNumber(iw + 2.0f) / 34;
    const long long rows = WholeNumber(ih + 2.0f) / 17;
    return rows * columns >= static_cast<long long>(cache.node->children.size());
}

// ---- layout

Point TreeMap::Picture::Place(Point position) const
{
    return {(position.x - origin.x) * scale + origin.x, (position.y - origin.y) * scale + origin.y};
}

Point TreeMap::Picture::Scaled(Point size) const { return {size.x * scale, size.y * scale}; }

void TreeMap::DrawNode(Cache& cache, Point position, Point size, const Picture& picture)
{
    cache.position = position;
    cache.size = size;
    ViewOf(cache).Init(picture.Place(position), picture.Scaled(size), picture.scale);
}

void TreeMap::LayOut(const Node& node, unsigned int mode, Point position, Point size,
                     const Picture& picture)
{
    if (!node.cache)
        return;
    Cache& cache = *node.cache;
    cache.isExpanded = false;
    cache.isDiscarded = false;
    ViewOf(cache).Clean();
    float sum = 0.0f;
    if (node.children.empty()) {
        cache.isExpanded = true;
    } else if (!CanSliceAndDiceExpandNode(cache, mode, size, &sum)) {
        ResetViewsBelow(node);
    } else {
        cache.isExpanded = true;
        const Point q{position.x + 1.0f, position.y + 1.0f};
        const Point inner{size.x - 2.0f, size.y - 14.0f - 1.0f};
        if (sum < 0.0f)
            LayOutEqually(node, mode, q, inner, picture);
        else
            LayOutInProportion(node, mode, q, inner, sum, picture);
    }
    DrawNode(cache, position, size, picture);
}

void TreeMap::LayOutEqually(const Node& node, unsigned int mode, Point q, Point inner,
                            const Picture& picture)
{
    const float n = CountOf(node);
    Point step;
    if (mode == 0) {
        inner.x = (inner.x - (2.0f * n - 2.0f)) / n;
        step.x = inner.x + 2.0f;
    } else {
        inner.y = (inner.y - (2.0f * n - 2.0f)) / n;
        step.y = inner.y + 2.0f;
    }
    for (const Node* const child : node.children) {
        LayOut(*child, Inverse(mode), q, inner, picture);
        q.x += step.x;
        q.y += step.y;
    }
}

void TreeMap::LayOutInProportion(const Node& node, unsigned int mode, Point q, Point inner,
                                 float sum, const Picture& picture)
{
    const float g = 2.0f * (CountOf(node) - 1.0f);
    for (const Node* const child : node.children) {
        if (!child->cache)
            continue;
        const Point m = ComputeMinimumExpandedSize(*child->cache, Inverse(mode));
        if (mode == 0) {
            const float e = (inner.x - g) * m.x / sum;
            LayOut(*child, Inverse(mode), q, {std::round(e), inner.y}, picture);
            q.x += e + 2.0f;
        } else {
            const float e = (inner.y - g) * m.y / sum;
            LayOut(*child, Inverse(mode), q, {inner.x, std::round(e)}, picture);
            q.y += e + 2.0f;
        }
    }
}

void TreeMap::SliceAndDice(unsigned int mode, Point origin, Point size, float scale)
{
    if (currentRoot)
        LayOut(*currentRoot, mode, origin, size, {origin, scale});
}

void TreeMap::LayoutChildrenInGrid(Point origin, Point size, float scale)
{
    if (!currentRoot || !currentRoot->cache)
        return;
    const Picture picture{origin, scale};
    const Node& root = *currentRoot;
    root.cache->isExpanded = true;
    root.cache->isDiscarded = false;
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
    for (const Node* const child : root.children) {
        if (columns < 1 || row >= rows) {
            if (child->cache)
                ResetView(*child->cache);
            continue;
        }
        if (child->cache) {
            child->cache->isDiscarded = false;
            child->cache->isExpanded = child->children.empty();
            ResetViewsBelow(*child);
            DrawNode(*child->cache, cell, {cellWidth, 15.0f}, picture);
        }
        cell.x += cellWidth + 2.0f;
        if (++column == columns) {
            column = 0;
            ++row;
            cell.x = origin.x + 1.0f;
            cell.y -= 17.0f;
        }
    }
    root.cache->position = origin;
    root.cache->size = size;
    ViewOf(*root.cache).Init(origin, picture.Scaled(size), scale);
}

void TreeMap::Draw(Point origin, Point size, float scale)
{
    Layout::Draw(origin, size, scale);
    if (!currentRoot || !currentRoot->cache)
        return;
    Cache& cache = *currentRoot->cache;
    const unsigned int mode = cache.lastMode;
    if (!CanSliceAndDiceExpandNode(cache, mode, size, nullptr) &&
        CanLayoutChildrenInGrid(cache, size))
        LayoutChildrenInGrid(origin, size, scale);
    else
        SliceAndDice(mode, origin, size, scale);
    SetCurrentSelection(selection);
}

}  // namespace layoutReference
