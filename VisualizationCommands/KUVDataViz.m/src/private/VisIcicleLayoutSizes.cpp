#include "VisIcicleLayout.h"

#include "IcicleAccess.h"
#include "IcicleColumns.h"
#include "IcicleGeometry.h"
#include "IcicleSizes.h"

#include "VisDataTree.h"

#include "KUVStringsMath.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <vector>

using IcicleColumns::CursorBelow;
using IcicleColumns::FirstLeafEnd;
using IcicleColumns::IsSeen;
using IcicleColumns::LeafEnd;
using IcicleGeometry::ChildSizes;
using IcicleGeometry::Columns;
using IcicleGeometry::NO_LIMIT;
using IcicleGeometry::NOT_COMPUTED;
using IcicleGeometry::NOT_GIVEN;
using IcicleGeometry::NOTHING_VISIBLE;
using IcicleGeometry::Request;
using IcicleSizes::HeightForChildren;
using IcicleSizes::HeightFromAbove;
using IcicleSizes::IsRemembered;
using IcicleSizes::Place;
using IcicleCache = VisIcicleLayout::VisIcicleLayoutCache;

namespace {

using Access = VisIcicleAccess;
using Children = std::vector<VisDataTree*>;

IcicleCache* IcicleCacheOf(const VisDataTree* node) { return Access::CacheOf(node); }

}  // namespace

// ---- cursors and leaves

unsigned int VisIcicleLayout::VisIcicleLayoutCache::ComputeIcicleCursor() const
{
    unsigned int columns = 0;
    const VisIcicleLayoutCache* cache = this;
    while (cache->cursor_ == NOT_COMPUTED) {
        const VisDataTree* const node = cache->GetNode();
        const VisIcicleLayoutCache* const parent =
            node ? IcicleCacheOf(node->GetParent()) : nullptr;
        if (!parent)
            return columns;
        columns += parent->colSpan_;
        cache = parent;
    }
    return cache->cursor_ + columns;
}

unsigned int VisIcicleLayout::VisIcicleLayoutCache::ComputeIcicleCursor()
{
    return cursor_ = static_cast<const VisIcicleLayoutCache*>(this)->ComputeIcicleCursor();
}

unsigned char
VisIcicleLayout::VisIcicleLayoutCache::IsIcicleNodeVisibleFromLeaves(unsigned int nLastNodes)
{
    const VisDataTree* const leaf =
        nLastNodes != NO_LIMIT && GetNode() ? GetNode()->GetFirstLeaf() : nullptr;
    return IcicleColumns::IsSeenFrom(*this, leaf, nLastNodes) ? 1 : 0;
}

unsigned char
VisIcicleLayout::VisIcicleLayoutCache::IsIcicleNodeVisibleFromLeaves(unsigned int nLastNodes) const
{
    const VisDataTree* const node = GetNode();
    if (nLastNodes == NO_LIMIT || !node || Access::IsMergedTop(*node))
        return IsSeen(node, 0, {}, nLastNodes) ? 1 : 0;
    const unsigned int cursor = ComputeIcicleCursor();
    const LeafEnd leaf = FirstLeafEnd(*node, *this, cursor, /*store=*/false);
    return IsSeen(node, cursor + colSpan_, leaf, nLastNodes) ? 1 : 0;
}

namespace {

/// Looks for the smallest depth at which a node is visible, handing cursors and leaves down.
class MinDepthWalk {
public:
    explicit MinDepthWalk(unsigned int nLastNodes) : nLastNodes_(nLastNodes) {}

    int Run(const IcicleCache& cache, int depth)
    {
        const VisDataTree* const node = cache.GetNode();
        if (!node)
            return NOTHING_VISIBLE;
        const bool limited = nLastNodes_ != NO_LIMIT;
        const unsigned int cursor = limited ? cache.ComputeIcicleCursor() : 0;
        Visit(*node, cache, depth, cursor,
              limited ? FirstLeafEnd(*node, cache, cursor, /*store=*/false) : LeafEnd());
        while (!open_.empty()) {
            Level& level = open_.back();
            const Children& children = level.node->GetChildren();
            if (level.depth >= result_ || level.next == children.size()) {
                open_.pop_back();
                continue;
            }
            VisitChild(level, level.next++);
        }
        return result_;
    }

private:
    struct Level {
        const VisDataTree* node;
        std::size_t next;
        /// Where the children begin: in the plot, and as a cursor.
        int depth;
        unsigned int end;
        LeafEnd leaf;
    };

    void VisitChild(const Level& level, std::size_t index)
    {
        const VisDataTree* const child = level.node->GetChildren()[index];
        const IcicleCache* const cache = IcicleCacheOf(child);
        if (!cache || !cache->GetNode())
            return;
        if (nLastNodes_ == NO_LIMIT) {
            Visit(*child, *cache, level.depth, 0, {});
            return;
        }
        const unsigned int cursor = CursorBelow(*cache, level.end);
        const LeafEnd leaf =
            index == 0 ? level.leaf : FirstLeafEnd(*child, *cache, cursor, /*store=*/false);
        Visit(*child, *cache, level.depth, cursor, leaf);
    }

    void Visit(const VisDataTree& node, const IcicleCache& cache, int depth, unsigned int cursor,
               const LeafEnd& leaf)
    {
        const unsigned int end = cursor + cache.GetIcicleColSpan();
        if (IsSeen(&node, end, leaf, nLastNodes_))
            result_ = std::min(result_, depth);
        const long long span = node.IsMerged() != 0 ? 0 : cache.GetIcicleColSpan();
        // Saturated: what is that far away is not the smallest.
        const auto below = static_cast<int>(std::min<long long>(depth + span, NOTHING_VISIBLE));
        if (below < result_ && !node.GetChildren().empty())
            open_.push_back({&node, 0, below, end, leaf});
    }

    unsigned int nLastNodes_;
    int result_ = NOTHING_VISIBLE;
    std::vector<Level> open_;
};

}  // namespace

int VisIcicleLayout::VisIcicleLayoutCache::ComputeMinDepthWithVisibility(int depth,
                                                                         int nLastNodes) const
{
    return MinDepthWalk(static_cast<unsigned int>(nLastNodes)).Run(*this, depth);
}

int VisIcicleLayout::VisIcicleLayoutCache::GetMinIciclePlotSizeMajor() const
{
    return IcicleColumns::WidthOfColumn(*this);
}

// ---- sizes

namespace {

bool HasIcon(const VisDataTree& node) { return !node.GetIconName().IsEmpty(); }

/// Whether icon and label stand one above the other in a node with an icon.
bool StacksIconAndLabel(const IcicleCache& cache, VisDataTree& node, unsigned char inlineLabels)
{
    return inlineLabels == 0 && cache.GetShowLabel() != 0 && !node.GetLabel().IsEmpty() &&
           node.ComputeMaxDepth() >= IcicleGeometry::LEVELS_FOR_STACKED_ICON;
}

int HeightForIcon(const IcicleCache& cache, VisDataTree& node, unsigned char inlineLabels)
{
    if (!HasIcon(node))
        return 0;
    return StacksIconAndLabel(cache, node, inlineLabels) ? IcicleGeometry::ICON_AND_LABEL_HEIGHT
                                                         : IcicleGeometry::ICON_HEIGHT;
}

/// The height that a node below `ancestor`, which has an icon, needs so that the few leaves of
/// `ancestor` together leave room for that icon.
int HeightForIconAbove(const IcicleCache& cache, VisDataTree& ancestor, unsigned char inlineLabels)
{
    const unsigned int leaves = ancestor.ComputeNumberOfLeaves();
    if (!StacksIconAndLabel(cache, ancestor, inlineLabels))
        return leaves == 1 ? IcicleGeometry::ICON_HEIGHT : 0;
    if (leaves == 1)
        return IcicleGeometry::ICON_AND_LABEL_HEIGHT;
    return leaves == 2 ? IcicleGeometry::ICON_HEIGHT : 0;
}

}  // namespace

bool IcicleSizes::EndsClimb(VisDataTree& node)
{
    return HasIcon(node) && node.ComputeMaxDepth() >= IcicleGeometry::LEVELS_FOR_STACKED_ICON;
}

int IcicleSizes::HeightForChildren(const IcicleCache& cache, VisDataTree& node, bool visible,
                                   unsigned char inlineLabels, int above)
{
    if (!visible)
        return 0;
    if (!HasIcon(node))
        return above;
    const int own = HeightForIconAbove(cache, node, inlineLabels);
    return EndsClimb(node) ? own : std::max(own, above);
}

namespace {

/// The ancestors of a node up to where a climb ends in any case, the parent first.
std::vector<VisDataTree*> ClimbOf(VisDataTree& node, bool& anyIcon)
{
    std::vector<VisDataTree*> climb;
    anyIcon = false;
    for (VisDataTree* ancestor = node.GetParent(); IcicleCacheOf(ancestor);
         ancestor = ancestor->GetParent()) {
        if (Access::IsMergedTop(*ancestor))
            break;
        climb.push_back(ancestor);
        anyIcon = anyIcon || HasIcon(*ancestor);
        if (IcicleSizes::EndsClimb(*ancestor))
            break;
    }
    return climb;
}

/// Cuts `climb`, which begins with the parent of `node`, off before the first ancestor that is not
/// visible from the leaves. With `store` the cursors that were looked at are stored.
void CutAtFirstHidden(std::vector<VisDataTree*>& climb, const VisDataTree* node,
                      unsigned int nLastNodes, bool store)
{
    std::vector<unsigned int> cursors(climb.size());
    unsigned int end = 0;
    for (std::size_t i = climb.size(); i-- > 0;) {
        const IcicleCache& cache = *IcicleCacheOf(climb[i]);
        cursors[i] = i + 1 == climb.size() ? cache.ComputeIcicleCursor() : CursorBelow(cache, end);
        end = cursors[i] + cache.GetIcicleColSpan();
    }
    LeafEnd leaf;
    for (std::size_t i = 0; i < climb.size(); ++i) {
        IcicleCache& cache = *IcicleCacheOf(climb[i]);
        // A first child shares its first leaf with its parent.
        if (i == 0 || climb[i]->GetChildren().front() != node)
            leaf = FirstLeafEnd(*climb[i], cache, cursors[i], store);
        if (store && leaf.known)
            Access::SetCursor(cache, cursors[i]);
        if (!IsSeen(climb[i], cursors[i] + cache.GetIcicleColSpan(), leaf, nLastNodes)) {
            climb.resize(i);
            return;
        }
        node = climb[i];
    }
}

}  // namespace

int IcicleSizes::HeightFromAbove(VisDataTree& node, const Request& request, bool store)
{
    bool anyIcon = false;
    std::vector<VisDataTree*> climb = ClimbOf(node, anyIcon);
    if (request.IsLimited() && (anyIcon || store))
        CutAtFirstHidden(climb, &node, request.nLastNodes, store);
    int height = 0;
    for (VisDataTree* const ancestor : climb) {
        if (HasIcon(*ancestor))
            height = std::max(height, HeightForIconAbove(*IcicleCacheOf(ancestor), *ancestor,
                                                         request.inlineLabels));
    }
    return height;
}

namespace {

/// Measures a subtree with a stack of its own: every node before its children what is visible, and
/// behind them the size. With a const cache nothing is stored in any cache.
template <class CacheType>
class SizeWalk {
public:
    explicit SizeWalk(const Request& request) : request_(request) {}

    KUVMathPoint2Df Run(CacheType& cache, const Place& place)
    {
        KUVMathPoint2Df size;
        if (Visit(cache, place, size))
            return size;
        for (;;) {
            if (OpenNextChild(open_.back()))
                continue;
            size = Finish(open_.back());
            open_.pop_back();
            if (open_.empty())
                return size;
            open_.back().sizes.Add(size);
        }
    }

private:
    static constexpr bool STORES = !std::is_const<CacheType>::value;

    /// A node whose children are being measured.
    struct Level {
        CacheType* cache = nullptr;
        VisDataTree* node = nullptr;
        std::size_t next = 0;
        ChildSizes sizes;
        Columns columns;
        unsigned int end = 0;
        LeafEnd leaf;
        bool visible = false;
        int heightFromAbove = 0;
        int heightForChildren = 0;
    };

    /// Whether the size is there; else the node was opened.
    bool Visit(CacheType& cache, const Place& place, KUVMathPoint2Df& size)
    {
        if (IsRemembered(cache, request_)) {
            size = cache.GetIcicleSize();
            return true;
        }
        VisDataTree* const node = cache.GetNode();
        if (!node) {
            size = Store(cache, {-1.0f, -1.0f});
            return true;
        }
        Level level = MakeLevel(cache, *node, place);
        if (node->GetChildren().empty()) {
            size = Finish(level);
            return true;
        }
        level.heightForChildren = HeightForChildren(cache, *node, level.visible,
                                                    request_.inlineLabels, place.heightFromAbove);
        open_.push_back(level);
        return false;
    }

    Level MakeLevel(CacheType& cache, VisDataTree& node, const Place& place)
    {
        Columns columns{place.depth, cache.GetIcicleColSpan(), place.minDepth, place.maxDepth};
        if (columns.minDepth == NOT_GIVEN)
            columns.minDepth = static_cast<unsigned int>(cache.ComputeMinDepthWithVisibility(
                static_cast<int>(place.depth), static_cast<int>(request_.nLastNodes)));
        if (columns.maxDepth == NOT_GIVEN)
            columns.maxDepth = node.ComputeMaxDepth();
        const unsigned int end = place.cursor + columns.span;
        const bool visible = IsSeen(&node, end, place.leaf, request_.nLastNodes);
        if constexpr (STORES) {
            if (request_.IsLimited() && place.leaf.known && !Access::IsMergedTop(node))
                Access::SetCursor(cache, place.cursor);
        }
        return {&cache,
                &node,
                0,
                {},
                columns,
                end,
                place.leaf,
                visible,
                place.heightFromAbove,
                /*heightForChildren=*/0};
    }

    /// Adds up children until one has to be opened first.
    bool OpenNextChild(Level& level)
    {
        const Children& children = level.node->GetChildren();
        while (level.next < children.size()) {
            const std::size_t index = level.next++;
            VisDataTree* const child = children[index];
            CacheType* const cache = IcicleCacheOf(child);
            if (!cache)
                continue;
            KUVMathPoint2Df size;
            if (IsRemembered(*cache, request_))
                size = cache->GetIcicleSize();
            else if (IcicleColumns::IsPlainLeaf(*child, *cache) &&
                     level.columns.minDepth != NOT_GIVEN)
                size = MeasureLeaf(level, *cache);
            else if (!Visit(*cache, PlaceOfChild(level, index, *cache), size))
                return true;
            level.sizes.Add(size);
        }
        return false;
    }

    /// The same as a visit, without what a leaf does not need: it sees itself, and its own icon
    /// asks for no more than the height of any leaf.
    KUVMathPoint2Df MeasureLeaf(const Level& level, CacheType& cache)
    {
        const bool visible = request_.nLastNodes > 0;
        if constexpr (STORES) {
            if (request_.IsLimited())
                Access::SetCursor(cache, CursorBelow(cache, level.end));
        }
        const Columns columns{level.columns.depth + level.columns.span, cache.GetIcicleColSpan(),
                              level.columns.minDepth, level.columns.maxDepth};
        const long long width = IcicleGeometry::WidthOf(MeasuredColumns(columns, request_, visible),
                                                        IcicleColumns::WidthOfColumn(cache));
        return Store(cache, IcicleGeometry::SizeOf(width, 0, {}, visible,
                                                   visible ? level.heightForChildren : 0));
    }

    Place PlaceOfChild(const Level& level, std::size_t index, const IcicleCache& cache)
    {
        Place place;
        place.depth = level.columns.depth + level.columns.span;
        place.minDepth = level.columns.minDepth;
        place.maxDepth = level.columns.maxDepth;
        place.heightFromAbove = level.heightForChildren;
        if (request_.IsLimited()) {
            place.cursor = CursorBelow(cache, level.end);
            // The first child shares its first leaf with its parent, which has looked there unless
            // it is a merged top root.
            const bool isShared = index == 0 && !Access::IsMergedTop(*level.node);
            place.leaf = isShared ? level.leaf
                                  : FirstLeafEnd(*level.node->GetChildren()[index], cache,
                                                 place.cursor, STORES);
        }
        return place;
    }

    KUVMathPoint2Df Finish(const Level& level)
    {
        const int columns = MeasuredColumns(level.columns, request_, level.visible);
        const long long width =
            IcicleGeometry::WidthOf(columns, IcicleColumns::WidthOfColumn(*level.cache));
        int smallest = 0;
        if (level.visible)
            smallest = std::max(HeightForIcon(*level.cache, *level.node, request_.inlineLabels),
                                level.heightFromAbove);
        return Store(*level.cache, IcicleGeometry::SizeOf(width, level.node->GetChildren().size(),
                                                          level.sizes, level.visible, smallest));
    }

    KUVMathPoint2Df Store(CacheType& cache, const KUVMathPoint2Df& size)
    {
        if constexpr (STORES) {
            Access::SetMeasured(cache, request_.nLastNodes, request_.inlineLabels);
            Access::SetIcicleSize(cache, size);
        } else {
            static_cast<void>(cache);
        }
        return size;
    }

    Request request_;
    std::vector<Level> open_;
};

/// Measures the subtree of a cache of whose place nothing but its depth is known.
template <class CacheType>
KUVMathPoint2Df MeasureAlone(CacheType& cache, const Request& request, unsigned int depth,
                             unsigned int minDepth, unsigned int maxDepth)
{
    SizeWalk<CacheType> walk(request);
    Place place;
    place.depth = depth;
    place.minDepth = minDepth;
    place.maxDepth = maxDepth;
    VisDataTree* const node = cache.GetNode();
    if (node && !IsRemembered(cache, request)) {
        constexpr bool STORES = !std::is_const<CacheType>::value;
        unsigned int end = 0;
        if (request.IsLimited()) {
            const IcicleCache& readOnly = cache;
            place.cursor = readOnly.ComputeIcicleCursor();
            end = place.cursor + cache.GetIcicleColSpan();
            if (!Access::IsMergedTop(*node))
                place.leaf = FirstLeafEnd(*node, cache, place.cursor, STORES);
        }
        // No climb leads past a node that is not visible.
        if (IsSeen(node, end, place.leaf, request.nLastNodes))
            place.heightFromAbove = HeightFromAbove(*node, request, STORES);
    }
    return walk.Run(cache, place);
}

}  // namespace

KUVMathPoint2Df IcicleSizes::Measure(IcicleCache& cache, const Request& request, const Place& place)
{
    return SizeWalk<IcicleCache>(request).Run(cache, place);
}

const KUVMathPoint2Df& VisIcicleLayout::VisIcicleLayoutCache::ComputeIcicleSize(
    unsigned int nLastNodes, unsigned char relativeToMinDepth, unsigned char inlineLabels,
    unsigned int depth, unsigned int minDepth, unsigned int maxDepth)
{
    MeasureAlone(*this, {nLastNodes, relativeToMinDepth != 0, inlineLabels}, depth, minDepth,
                 maxDepth);
    return icicleSize_;
}

KUVMathPoint2Df VisIcicleLayout::VisIcicleLayoutCache::ComputeIcicleSize(
    unsigned int nLastNodes, unsigned char relativeToMinDepth, unsigned char inlineLabels,
    unsigned int depth, unsigned int minDepth, unsigned int maxDepth) const
{
    return MeasureAlone(*this, {nLastNodes, relativeToMinDepth != 0, inlineLabels}, depth, minDepth,
                        maxDepth);
}
