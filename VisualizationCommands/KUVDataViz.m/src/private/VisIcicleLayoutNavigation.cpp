#include "VisIcicleLayout.h"

#include "GuardedNode.h"
#include "IcicleAccess.h"
#include "IcicleColumns.h"
#include "IcicleGeometry.h"
#include "KeyCodes.h"
#include "Reference.h"

#include "VisDataTree.h"

#include "KUVObjectModel.h"

#include <algorithm>
#include <utility>
#include <vector>

using IcicleColumns::EndOfLeaf;
using IcicleColumns::LeafEnd;
using IcicleGeometry::NO_LIMIT;
using IcicleCache = VisIcicleLayout::VisIcicleLayoutCache;

namespace {

IcicleCache* IcicleCacheOf(const VisDataTree* node) { return VisIcicleAccess::CacheOf(node); }

/// Where a sideways move goes on from.
struct Climb {
    /// The node at which the climb ended.
    VisDataTree* end;
    /// Its neighbour, or null when the move ends at `end`.
    VisDataTree* sibling;
};

/// Climbs from `node` to the first node with a neighbour above it in the plot (before it among the
/// children) or below it. At the current root there is no way on.
Climb ClimbToSibling(VisDataTree* node, const VisDataTree* currentRoot, bool up)
{
    const VisDataTree* const aboveRoot = currentRoot ? currentRoot->GetParent() : nullptr;
    for (VisDataTree* at = node;;) {
        VisDataTree* const parent = at->GetParent();
        if (!parent || at == currentRoot || at == aboveRoot)
            return {node, nullptr};
        const std::vector<VisDataTree*>& siblings = parent->GetChildren();
        if (siblings.size() > 1) {
            const auto found = std::find(siblings.begin(), siblings.end(), at);
            if (found == siblings.end())
                return {at, nullptr};
            if (up && found != siblings.begin())
                return {at, *(found - 1)};
            if (!up && found + 1 != siblings.end())
                return {at, *(found + 1)};
        }
        at = parent;
    }
}

/// The first node from `climb.sibling` downwards, along the side that touches the node left behind,
/// whose columns reach past `cursor`.
VisDataTree* DescendToCursor(const Climb& climb, unsigned int cursor, bool up)
{
    VisDataTree* node = climb.sibling;
    IcicleCache* cache = IcicleCacheOf(node);
    unsigned int end = cache ? cache->ComputeIcicleCursor() : 0;
    while (!node->GetChildren().empty()) {
        end += cache ? cache->GetIcicleColSpan() : 0;
        if (end > cursor)
            return node;
        node = up ? node->GetChildren().back() : node->GetChildren().front();
        if (!node)
            return climb.end;
        cache = IcicleCacheOf(node);
    }
    return node;
}

VisDataTree* MoveSideways(VisDataTree* node, unsigned int& cursor, const VisDataTree* currentRoot,
                          unsigned int nLastNodes, bool up)
{
    if (!node || node == currentRoot)
        return node;
    const Climb climb = ClimbToSibling(node, currentRoot, up);
    if (!climb.sibling)
        return climb.end;
    if (nLastNodes != NO_LIMIT) {
        const LeafEnd leaf = EndOfLeaf(node->GetFirstLeaf());
        if (leaf.known && leaf.column > nLastNodes)
            cursor = std::max(cursor, leaf.column - nLastNodes);
    }
    return DescendToCursor(climb, cursor, up);
}

/// How many columns lie between where a node begins and where its first leaf ends; 0 when the leaf
/// has no cache, and then nothing is known.
struct Reach {
    bool known;
    unsigned int columns;
};

Reach ReachOf(IcicleCache& cache)
{
    const unsigned int cursor = cache.ComputeIcicleCursor();
    const LeafEnd leaf = EndOfLeaf(cache.GetNode()->GetFirstLeaf());
    return {leaf.known, leaf.column - cursor};
}

/// Whether the user may widen the range of columns with the left arrow key. The environment is
/// asked once.
bool IsNavigateAndExtendEnabled()
{
    static const bool enabled = !KUVGetEnv("DisableVisIcicleLayoutNavigateAndExtend");
    return enabled;
}

}  // namespace

// ---- directions

VisDataTree* VisIcicleLayout::VisIcicleLayoutCache::GetNextNodeIcicleUpDirection(
    unsigned int& cursor, VisDataTree* currentRoot, unsigned int nLastNodes)
{
    return MoveSideways(GetNode(), cursor, currentRoot, nLastNodes, /*up=*/true);
}

VisDataTree* VisIcicleLayout::VisIcicleLayoutCache::GetNextNodeIcicleDownDirection(
    unsigned int& cursor, VisDataTree* currentRoot, unsigned int nLastNodes)
{
    return MoveSideways(GetNode(), cursor, currentRoot, nLastNodes, /*up=*/false);
}

VisDataTree* VisIcicleLayout::VisIcicleLayoutCache::GetNextNodeIcicleLeftDirection(
    unsigned int& cursor, VisDataTree* currentRoot, unsigned int nLastNodes)
{
    VisDataTree* const node = GetNode();
    VisDataTree* const parent = node && node != currentRoot ? node->GetParent() : nullptr;
    VisIcicleLayoutCache* const above = IcicleCacheOf(parent);
    if (!above)
        return node;
    if (nLastNodes != NO_LIMIT) {
        const Reach reach = ReachOf(*this);
        if (reach.known && reach.columns >= nLastNodes)
            return node;
    }
    cursor = above->ComputeIcicleCursor() + above->colSpan_ - 1;
    above->lastVisitedChild_ = this;
    return parent;
}

VisDataTree*
VisIcicleLayout::VisIcicleLayoutCache::GetNextNodeIcicleRightDirection(unsigned int& cursor)
{
    VisDataTree* const node = GetNode();
    if (!node || node->GetChildren().empty())
        return node;
    if (lastVisitedChild_) {
        for (VisDataTree* const child : node->GetChildren()) {
            VisIcicleLayoutCache* const cache = IcicleCacheOf(child);
            if (cache == lastVisitedChild_) {
                cursor = cache->ComputeIcicleCursor();
                return child;
            }
        }
        lastVisitedChild_ = nullptr;
    }
    VisDataTree* const last = node->GetChildren().back();
    VisIcicleLayoutCache* const cache = IcicleCacheOf(last);
    if (!cache)
        return node;
    cursor = cache->ComputeIcicleCursor();
    return last;
}

// ---- arrow keys

VisDataTree* VisIcicleLayout::GetNodeViaNavigation(unsigned int code)
{
    VisDataTree* const selection = GetCurrentSelection();
    VisIcicleLayoutCache* const selected = IcicleCacheOf(selection);
    if (!selected)
        return nullptr;
    switch (code) {
    case KEY_UP:
        return GoUpOrDown(*selected, /*up=*/true);
    case KEY_DOWN:
        return GoUpOrDown(*selected, /*up=*/false);
    case KEY_RIGHT:
        return selected->GetNextNodeIcicleRightDirection(keyboardCursor_);
    case KEY_LEFT:
        return GoLeft(*selection, *selected);
    default:
        return selection;
    }
}

VisDataTree* VisIcicleLayout::GoUpOrDown(VisIcicleLayoutCache& selected, bool up)
{
    VisDataTree* const root = GetCurrentRoot();
    VisDataTree* const next =
        up ? selected.GetNextNodeIcicleUpDirection(keyboardCursor_, root, nLastNodes_)
           : selected.GetNextNodeIcicleDownDirection(keyboardCursor_, root, nLastNodes_);
    return next || !root ? next : root->GetFirstLeaf();
}

VisDataTree* VisIcicleLayout::GoLeft(VisDataTree& selection, VisIcicleLayoutCache& selected)
{
    const bool mayExtend = IsNavigateAndExtendEnabled() && extendWithKeys_ != 0;
    VisDataTree* const root = GetCurrentRoot();
    if (root && root->IsMerged() != 0 && selection.GetParent() == root)
        return &selection;
    unsigned int columns = nLastNodes_;
    VisDataTree* next = selected.GetNextNodeIcicleLeftDirection(keyboardCursor_, root, columns);
    const bool isBlocked = next == &selection && next != root && columns != NO_LIMIT &&
                           IcicleCacheOf(selection.GetParent());
    if (mayExtend && isBlocked) {
        // Nothing but the range stands in the way. Widening it column by column would end with the
        // first number above what the node reaches over, at the latest with no limit.
        columns = std::min(ReachOf(selected).columns, NO_LIMIT - 1) + 1;
        next = selected.GetNextNodeIcicleLeftDirection(keyboardCursor_, root, columns);
    }
    const VisGuardedNode reached(next);
    SetNLastNodes(columns);
    // It had a cache: without one a listener has shown another tree.
    return IcicleCacheOf(reached.Get()) ? reached.Get() : nullptr;
}

void VisIcicleLayout::OnMouseSelection(VisDataTree* node)
{
    const auto self = VisReference<VisIcicleLayout>::Retain(this);
    const VisGuardedNode selected(node);
    VisTreeSpaceFillingLayout::OnMouseSelection(node);
    if (VisIcicleLayoutCache* const cache = IcicleCacheOf(selected.Get()))
        keyboardCursor_ = cache->ComputeIcicleCursor();
}

// ---- last columns

void VisIcicleLayout::SetNLastNodes(unsigned int nLastNodes)
{
    if (nLastNodes == nLastNodes_)
        return;
    const auto self = VisReference<VisIcicleLayout>::Retain(this);
    const unsigned int former = std::exchange(nLastNodes_, nLastNodes);
    if (nLastNodes < former)
        MoveSelectionAmongLast();
    VisIcicleLayoutON_SET_NLAST_NODESEvt notification(
        former, nLastNodes, former > nLastNodes ? KEY_PAGE_FEWER : KEY_PAGE_MORE);
    Dispatch(ON_SET_NLAST_NODES(), &notification);
}

/// Moves a selection left of the last columns to the right until it is among them.
void VisIcicleLayout::MoveSelectionAmongLast()
{
    VisDataTree* node = GetCurrentSelection();
    VisIcicleLayoutCache* cache = IcicleCacheOf(node);
    VisDataTree* leaf = node ? node->GetFirstLeaf() : nullptr;
    const auto isVisible = [&] { return IcicleColumns::IsSeenFrom(*cache, leaf, nLastNodes_); };
    if (!cache || !cache->GetNode() || !IcicleCacheOf(leaf) || isVisible())
        return;
    do {
        VisDataTree* const next = cache->GetNextNodeIcicleRightDirection(keyboardCursor_);
        if (!next || next == node)
            break;
        // A first child shares its first leaf with its parent.
        if (next != node->GetChildren().front())
            leaf = next->GetFirstLeaf();
        node = next;
        cache = IcicleCacheOf(node);
    } while (cache && !isVisible());
    SetCurrentSelection(node);
}

void VisIcicleLayout::ApplyPageUpPageDown(unsigned int code)
{
    VisDataTree* const root = GetCurrentRoot();
    unsigned int limit = 0;
    if (const VisIcicleLayoutCache* const cache = GetCache())
        limit = 1U + static_cast<unsigned int>(cache->ComputeMinDepthWithVisibility(
                         static_cast<int>(root->ComputeDepth()), 1));
    else if (root)
        limit = root->ComputeMaxDepth();

    unsigned int columns = nLastNodes_;
    if (code == KEY_PAGE_FEWER) {
        if (root && columns >= limit)
            columns = limit - 1;
        else if (columns > 1)
            --columns;
    } else if (code == KEY_PAGE_MORE) {
        if (root && GetTreeRoot() && columns < limit)
            ++columns;
    }
    SetNLastNodes(columns);
}
