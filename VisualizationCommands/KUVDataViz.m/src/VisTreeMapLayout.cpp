#include "VisTreeMapLayout.h"

#include "private/CacheAccess.h"
#include "private/HiddenBelow.h"
#include "private/Prefetch.h"
#include "private/Reference.h"
#include "private/SaturatingCast.h"
#include "private/TreeEpoch.h"
#include "private/TreeMapGeometry.h"
#include "private/TreeMapRectangles.h"

#include "VisDataTree.h"
#include "VisTreeSpaceFillingView.h"

#include "KUVStringsMath.h"

#include <cmath>
#include <new>
#include <vector>

using TreeMapGeometry::Along;
using TreeMapGeometry::Axis;
using TreeMapGeometry::AxisOf;
using TreeMapGeometry::ChildExtents;
using TreeMapGeometry::ChildSizes;
using TreeMapGeometry::InverseOf;
using TreeMapGeometry::Rectangle;
using TreeMapGeometry::Split;
using TreeMapGeometry::StripCursor;
using TreeMapCache = VisTreeMapLayout::VisTreeMapLayoutCache;

namespace {

constexpr KUVMathPoint2Df NOT_COMPUTED{-1.0f, -1.0f};
constexpr KUVMathPoint2Df LEAF_SIZE{TreeMapGeometry::MIN_WIDTH, TreeMapGeometry::MIN_HEIGHT};

/// The cache of `node` when there is one and it is a tree map's; else null.
TreeMapCache* TreeMapCacheOf(const VisDataTree* node)
{
    VisDataTree::VisDataTreeCache* const cache = node ? node->GetCache() : nullptr;
    if (!cache || VisCacheAccess::Kind(*cache) != VisCacheKind::TreeMap)
        return nullptr;
    return static_cast<TreeMapCache*>(cache);
}

bool IsChildless(const VisDataTree* node) { return !node || node->GetChildren().empty(); }

}  // namespace

KUV_IMPLEMENT_CLASS(VisTreeMapLayout, VisTreeSpaceFillingLayout, "VisualizationCommands")

const unsigned short VisTreeMapLayout::SPACE_BETWEEN_NODES = 2;
const unsigned short VisTreeMapLayout::LABEL_OFFSET = 14;
const unsigned short VisTreeMapLayout::COUNTOUR_OFFSET = 1;
const unsigned short VisTreeMapLayout::MIN_EXPANDED_SIZE_MAJOR = 32;
const unsigned short VisTreeMapLayout::MIN_EXPANDED_SIZE_MINOR = 15;

static_assert(VisTreeMapLayout::SPACE_BETWEEN_NODES == TreeMapGeometry::GAP, "one gap");
static_assert(VisTreeMapLayout::LABEL_OFFSET == TreeMapGeometry::LABEL_BAND, "one band");
static_assert(VisTreeMapLayout::COUNTOUR_OFFSET == TreeMapGeometry::FRAME, "one frame");
static_assert(VisTreeMapLayout::MIN_EXPANDED_SIZE_MAJOR == TreeMapGeometry::MIN_WIDTH, "one width");
static_assert(VisTreeMapLayout::MIN_EXPANDED_SIZE_MINOR == TreeMapGeometry::MIN_HEIGHT,
              "one height");

// ---- geometry

namespace TreeMapGeometry {

KUVMathPoint2Df ChildSizes::ParentSize(std::size_t count) const
{
    KUVMathPoint2Df size = axis_ == Axis::X ? KUVMathPoint2Df(sum_, largestAcross_)
                                            : KUVMathPoint2Df(largestAcross_, sum_);
    float& along = axis_ == Axis::X ? size.x : size.y;
    along += GapsBetween(count);
    size.x += FRAMES;
    size.y += HEADER;
    return size;
}

namespace {

bool IsLargeEnough(const KUVMathPoint2Df& size)
{
    return size.y >= MIN_HEIGHT && size.x >= MIN_WIDTH;
}

}  // namespace

Split ChooseSplit(Axis axis, const KUVMathPoint2Df& size, std::size_t count,
                  const ChildExtents& children)
{
    const float gaps = GapsBetween(count);
    if (children.any) {
        KUVMathPoint2Df smallest(size.x - FRAMES, size.y - LABEL_BAND - FRAME);
        float& along = axis == Axis::X ? smallest.x : smallest.y;
        along -= gaps;
        along = children.smallest * along / children.sum;
        if (IsLargeEnough(smallest))
            return Split::Proportional;
    }
    KUVMathPoint2Df equal(size.x - FRAMES, size.y - HEADER);
    float& along = axis == Axis::X ? equal.x : equal.y;
    along = (along - gaps) / static_cast<float>(count);
    return IsLargeEnough(equal) ? Split::Equal : Split::None;
}

StripCursor::StripCursor(Axis axis, const Rectangle& node, std::size_t count, float sum)
    : axis_(axis), sum_(sum), corner_(node.position.x + FRAME, node.position.y + FRAME),
      inner_(node.size.x - FRAMES, node.size.y - LABEL_BAND - FRAME)
{
    if (IsEqual()) {
        float& along = axis_ == Axis::X ? inner_.x : inner_.y;
        along = (along - GapsBetween(count)) / static_cast<float>(count);
    } else {
        gaps_ = GAP * (static_cast<float>(count) - 1.0f);
    }
}

Rectangle StripCursor::NextEqual()
{
    const Rectangle strip{corner_, inner_};
    float& along = axis_ == Axis::X ? corner_.x : corner_.y;
    along += Along(axis_, inner_) + GAP;
    return strip;
}

Rectangle StripCursor::NextProportional(const KUVMathPoint2Df& minimumSize)
{
    const float extent = (Along(axis_, inner_) - gaps_) * Along(axis_, minimumSize) / sum_;
    Rectangle strip{corner_, inner_};
    (axis_ == Axis::X ? strip.size.x : strip.size.y) = std::round(extent);
    (axis_ == Axis::X ? corner_.x : corner_.y) += extent + GAP;
    return strip;
}

namespace {

constexpr int CELL_WIDTH = 34;
constexpr int CELL_HEIGHT = 17;
static_assert(static_cast<float>(CELL_WIDTH) == MIN_WIDTH + GAP, "a cell and its gap");
static_assert(static_cast<float>(CELL_HEIGHT) == MIN_HEIGHT + GAP, "a cell and its gap");

}  // namespace

bool FitsInGrid(const KUVMathPoint2Df& size, std::size_t count)
{
    const KUVMathPoint2Df inner(size.x - FRAMES, size.y - HEADER);
    if (inner.x < MIN_WIDTH || inner.y < MIN_HEIGHT)
        return false;
    const auto columns = static_cast<std::size_t>(TruncateToInt(inner.x + GAP) / CELL_WIDTH);
    const auto rows = static_cast<std::size_t>(TruncateToInt(inner.y + GAP) / CELL_HEIGHT);
    return rows * columns >= count;
}

Grid MakeGrid(const Rectangle& node)
{
    const KUVMathPoint2Df inner(node.size.x - FRAMES, node.size.y - HEADER);
    Grid grid;
    grid.corner = {node.position.x + FRAME, node.position.y + inner.y - MIN_HEIGHT};
    if (inner.x < 0.0f || inner.y < 0.0f)
        return grid;
    const float across = (inner.x + GAP) / static_cast<float>(CELL_WIDTH);
    const float down = (inner.y + GAP) / static_cast<float>(CELL_HEIGHT);
    const int columns = TruncateToInt(across);
    const int rows = TruncateToInt(down);
    if (columns < 1 || rows < 1)
        return grid;
    grid.columns = columns;
    grid.rows = rows;
    // The leftover fraction of a column is spread over all cells of a row.
    grid.cellWidth =
        ((across - std::floor(across)) / static_cast<float>(columns) + 1.0f) * MIN_WIDTH;
    return grid;
}

}  // namespace TreeMapGeometry

// ---- minimum sizes

/// Computes minimum sizes with a stack of its own and remembers them in the caches.
struct TreeMapSizes {
    static bool IsComputed(const TreeMapCache& cache, VisTreeMap_SliceDice mode)
    {
        const KUVMathPoint2Df& size = cache.GetComputedMinimumSize();
        return size.x > 0.0f && size.y > 0.0f && cache.lastMode_ == mode;
    }

    static void Store(TreeMapCache& cache, VisTreeMap_SliceDice mode, const KUVMathPoint2Df& size)
    {
        VisCacheAccess::SetComputedMinimumSize(cache, size);
        cache.lastMode_ = mode;
    }

    static void Remember(TreeMapCache& cache, std::size_t count, const ChildSizes& children)
    {
        cache.childSum_ = children.GetSum();
        cache.childSmallest_ = children.GetSmallest();
        cache.hasSizedChild_ = children.HasAny() ? 1 : 0;
        cache.childCount_ = count;
        cache.childEpoch_ = VisTreeEpoch::current;
    }

    /// A node whose children are being added up.
    struct Sum {
        /// `node` is the cache's own: going on from it does not have to wait for the cache.
        Sum(TreeMapCache& ownCache, const VisDataTree& node, VisTreeMap_SliceDice ownMode)
            : cache(&ownCache), children(&node.GetChildren()), mode(ownMode), sizes(AxisOf(ownMode))
        {
        }

        TreeMapCache* cache;
        const std::vector<VisDataTree*>* children;
        std::size_t next = 0;
        VisTreeMap_SliceDice mode;
        ChildSizes sizes;
    };

    /// Adds up children until one has to be computed first, which is given back for the caller to
    /// add; null at the end.
    static const VisDataTree* AddChildren(Sum& sum)
    {
        const VisTreeMap_SliceDice childMode = InverseOf(sum.mode);
        const std::vector<VisDataTree*>& children = *sum.children;
        // Kept out of memory while it grows: this is where the time of large trees goes.
        ChildSizes sizes = sum.sizes;
        const VisDataTree* pending = nullptr;
        std::size_t next = sum.next;
        while (next < children.size() && !pending) {
            VisPrefetchChild(children, next);
            const VisDataTree* const child = children[next++];
            TreeMapCache* const cache = TreeMapCacheOf(child);
            if (!cache)
                continue;
            if (IsComputed(*cache, childMode)) {
                sizes.Add(cache->GetComputedMinimumSize());
            } else if (IsChildless(child)) {
                Store(*cache, childMode, LEAF_SIZE);
                sizes.Add(LEAF_SIZE);
            } else {
                pending = child;
            }
        }
        sum.next = next;
        sum.sizes = sizes;
        return pending;
    }

    /// Computes `root` and whatever is not computed below it, each node once.
    static void Compute(TreeMapCache& root, VisTreeMap_SliceDice mode)
    {
        // Sums remembered elsewhere may rest on the sizes that are replaced now.
        VisTreeEpoch::Advance();
        if (IsChildless(root.GetNode())) {
            Store(root, mode, LEAF_SIZE);
            return;
        }
        std::vector<Sum> open;
        open.emplace_back(root, *root.GetNode(), mode);
        while (!open.empty()) {
            Sum& sum = open.back();
            if (const VisDataTree* const child = AddChildren(sum)) {
                open.emplace_back(*TreeMapCacheOf(child), *child, InverseOf(sum.mode));
                continue;
            }
            const std::size_t count = sum.children->size();
            const KUVMathPoint2Df size = sum.sizes.ParentSize(count);
            Store(*sum.cache, sum.mode, size);
            Remember(*sum.cache, count, sum.sizes);
            open.pop_back();
            if (!open.empty())
                open.back().sizes.Add(size);
        }
    }

    /// What the children of a node with children, laid out in `mode`, add up to. Their minimum
    /// sizes are computed.
    static ChildExtents ExtentsOfChildren(TreeMapCache& cache, VisTreeMap_SliceDice mode)
    {
        const std::vector<VisDataTree*>& children = cache.GetNode()->GetChildren();
        cache.ComputeMinimumExpandedSize(mode);
        const bool isRemembered =
            cache.childEpoch_ == VisTreeEpoch::current && cache.childCount_ == children.size();
        if (!isRemembered) {
            const VisTreeMap_SliceDice childMode = InverseOf(mode);
            ChildSizes sizes(AxisOf(mode));
            for (const VisDataTree* const child : children) {
                if (TreeMapCache* const childCache = TreeMapCacheOf(child))
                    sizes.Add(childCache->ComputeMinimumExpandedSize(childMode));
            }
            Remember(cache, children.size(), sizes);
        }
        return {cache.childSum_, cache.childSmallest_, cache.hasSizedChild_ != 0};
    }
};

// ---- VisTreeMapLayoutCache

VisTreeMapLayout::VisTreeMapLayoutCache::VisTreeMapLayoutCache(VisDataTree* node)
    : VisTreeSpaceFillingLayoutCache(node)
{
    VisCacheAccess::SetKind(*this, VisCacheKind::TreeMap);
}

VisTreeMapLayout::VisTreeMapLayoutCache::VisTreeMapLayoutCache(VisTreeMapLayoutCache& other)
    : VisTreeSpaceFillingLayoutCache(other), lastMode_(other.lastMode_)
{
    VisCacheAccess::SetKind(*this, VisCacheKind::TreeMap);
}

VisTreeMapLayout::VisTreeMapLayoutCache&
VisTreeMapLayout::VisTreeMapLayoutCache::operator=(VisTreeMapLayoutCache& other)
{
    VisTreeSpaceFillingLayoutCache::operator=(other);
    // What was added up for the children belongs to each node alone and is not copied.
    lastMode_ = other.lastMode_;
    return *this;
}

VisTreeMapLayout::VisTreeMapLayoutCache::~VisTreeMapLayoutCache() = default;

VisDataTree::VisDataTreeCache* VisTreeMapLayout::VisTreeMapLayoutCache::Clone()
{
    return new (std::nothrow) VisTreeMapLayoutCache(*this);
}

const KUVMathPoint2Df&
VisTreeMapLayout::VisTreeMapLayoutCache::ComputeMinimumExpandedSize(VisTreeMap_SliceDice mode)
{
    if (!TreeMapSizes::IsComputed(*this, mode))
        TreeMapSizes::Compute(*this, mode);
    return GetComputedMinimumSize();
}

unsigned char VisTreeMapLayout::VisTreeMapLayoutCache::CanSliceAndDiceExpandNode(
    VisTreeMap_SliceDice mode, const KUVMathPoint2Df& size, float* minimumSum)
{
    if (!GetNode())
        return 0;
    if (IsChildless(GetNode()))
        return 1;
    const ChildExtents children = TreeMapSizes::ExtentsOfChildren(*this, mode);
    const Split split =
        TreeMapGeometry::ChooseSplit(AxisOf(mode), size, GetNode()->GetChildren().size(), children);
    if (minimumSum)
        *minimumSum = split == Split::Proportional ? children.sum : -1.0f;
    return split == Split::None ? 0 : 1;
}

unsigned char
VisTreeMapLayout::VisTreeMapLayoutCache::CanLayoutChildrenInGrid(const KUVMathPoint2Df& size) const
{
    if (!GetNode())
        return 0;
    return TreeMapGeometry::FitsInGrid(size, GetNode()->GetChildren().size()) ? 1 : 0;
}

VisTreeMap_SliceDice
VisTreeMapLayout::VisTreeMapLayoutCache::GetLastModeOfComputedMinimumExpandedSize() const
{
    return lastMode_;
}

void VisTreeMapLayout::VisTreeMapLayoutCache::SetLastModeOfComputedMinimumExpandedSize(
    VisTreeMap_SliceDice mode)
{
    if (lastMode_ == mode)
        return;
    VisTreeEpoch::Advance();
    TreeMapSizes::Store(*this, mode, NOT_COMPUTED);
}

VisTreeMap_SliceDice
VisTreeMapLayout::VisTreeMapLayoutCache::InvertSliceDiceMode(VisTreeMap_SliceDice mode)
{
    return InverseOf(mode);
}

// ---- slice and dice

namespace {

/// Visits the nodes that a slice-and-dice shows, a node before its children, with their rectangles.
///
/// `Maker` says what becomes of a node: `Show(cache, expanded)`, `HideBelow(node, cache)` for the
/// children of a collapsed node, and `Draw(node, cache, depth)` behind its children. The node is
/// handed on with its cache, which may have forgotten it.
template <class Maker>
class SliceAndDiceWalk {
public:
    explicit SliceAndDiceWalk(Maker& maker) : maker_(maker) {}

    void Run(VisDataTree* root, VisTreeMap_SliceDice mode, const Rectangle& rectangle, int depth)
    {
        Visit(root, mode, rectangle, depth);
        while (!open_.empty()) {
            Opened& parent = open_.back();
            const std::vector<VisDataTree*>& children = parent.node->GetChildren();
            if (parent.next == children.size()) {
                parent.order.Note(*parent.cache);
                maker_.Draw(*parent.node, *parent.cache, parent.childDepth - 1);
                open_.pop_back();
                continue;
            }
            VisPrefetchChild(children, parent.next);
            VisDataTree* const child = children[parent.next++];
            TreeMapCache* const cache = TreeMapCacheOf(child);
            if (parent.cursor.IsEqual()) {
                // A child without cache leaves its strip empty.
                const Rectangle strip = parent.cursor.NextEqual();
                if (cache)
                    Place(*cache, child, parent, strip);
            } else if (cache) {
                const KUVMathPoint2Df minimum = cache->ComputeMinimumExpandedSize(parent.childMode);
                const Rectangle strip = parent.cursor.NextProportional(minimum);
                Place(*cache, child, parent, strip);
            }
            if (!cache && VisCacheAccess::LayoutCacheOf(child))
                parent.order.Break();
        }
    }

private:
    /// A node whose children are being laid out.
    struct Opened {
        Opened(VisDataTree& opened, TreeMapCache& ownCache, VisTreeMap_SliceDice mode,
               const Rectangle& rectangle, float sum, int depth)
            : node(&opened), cache(&ownCache),
              cursor(AxisOf(mode), rectangle, opened.GetChildren().size(), sum),
              order(AxisOf(mode)), childMode(InverseOf(mode)), childDepth(depth + 1)
        {
        }

        VisDataTree* node;
        TreeMapCache* cache;
        std::size_t next = 0;
        StripCursor cursor;
        VisChildOrderCheck order;
        VisTreeMap_SliceDice childMode;
        int childDepth;
    };

    void Visit(VisDataTree* root, VisTreeMap_SliceDice mode, const Rectangle& rectangle, int depth)
    {
        if (TreeMapCache* const cache = TreeMapCacheOf(root))
            Visit(*cache, root, mode, rectangle, depth);
    }

    void Place(TreeMapCache& cache, VisDataTree* node, Opened& parent, const Rectangle& strip)
    {
        parent.order.Add(*parent.node, *node, cache, strip.position, strip.size);
        Visit(cache, node, parent.childMode, strip, parent.childDepth);
    }

    void Visit(TreeMapCache& cache, VisDataTree* node, VisTreeMap_SliceDice mode,
               const Rectangle& rectangle, int depth)
    {
        const std::vector<VisDataTree*>& children = node->GetChildren();
        float sum = -1.0f;
        const bool isExpanded =
            children.empty() || cache.CanSliceAndDiceExpandNode(mode, rectangle.size, &sum);
        maker_.Show(cache, isExpanded ? 1 : 0);
        if (!isExpanded)
            maker_.HideBelow(*node, cache);
        VisCacheAccess::SetPosition(cache, rectangle.position);
        VisCacheAccess::SetSize(cache, rectangle.size);
        VisCacheAccess::ChildOrder(cache) = VisChildOrder::Unknown;
        if (isExpanded && !children.empty())
            open_.emplace_back(*node, cache, mode, rectangle, sum, depth);
        else
            maker_.Draw(*node, cache, depth);
    }

    Maker& maker_;
    std::vector<Opened> open_;
};

/// Makes no views: the walk leaves nothing but rectangles.
struct RectanglesOnly {
    void Show(TreeMapCache& /*cache*/, unsigned char /*expanded*/) {}
    void HideBelow(VisDataTree& /*node*/, TreeMapCache& /*cache*/) {}
    void Draw(VisDataTree& /*node*/, TreeMapCache& /*cache*/, int /*depth*/) {}
};

}  // namespace

void LayOutTreeMapRectangles(VisDataTree* root, VisTreeMap_SliceDice mode,
                             const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size)
{
    RectanglesOnly none;
    SliceAndDiceWalk<RectanglesOnly>(none).Run(root, mode, {origin, size}, 0);
}

// ---- VisTreeMapLayout

/// What all nodes of one drawing have in common.
struct VisTreeMapLayout::Picture {
    VisDataTree* root;
    KUVMathPoint2Df origin;
    KUVCharacterFont* font;
    float scale;
    KUVUnicodeString noIcon = {};
};

/// Gives the nodes of a walk their views.
class VisTreeMapLayout::ViewMaker {
public:
    ViewMaker(VisTreeMapLayout& layout, const Picture& picture) : layout_(layout), picture_(picture)
    {
    }
    void Show(VisTreeMapLayoutCache& cache, unsigned char expanded)
    {
        layout_.ShowNode(cache, expanded);
    }
    void HideBelow(VisDataTree& node, VisTreeMapLayoutCache& cache)
    {
        layout_.ResetViewsBelow(node, cache);
    }
    void Draw(VisDataTree& node, VisTreeMapLayoutCache& cache, int depth)
    {
        layout_.DrawNode(node, cache, picture_, depth);
    }

private:
    VisTreeMapLayout& layout_;
    const Picture& picture_;
};

VisTreeMapLayout::VisTreeMapLayout(KUVCommand* parent) : VisTreeSpaceFillingLayout(parent) {}

VisTreeMapLayout::~VisTreeMapLayout() = default;

VisTreeMapLayout* VisTreeMapLayout::CreateLayout(KUVCommand* parent, VisDataTree* root,
                                                 KUV2DBagRep* bag)
{
    if (!root)
        return nullptr;
    try {
        auto layout = VisReference<VisTreeMapLayout>::Adopt(new VisTreeMapLayout(parent));
        layout->Init(root, bag);
        return layout.Detach();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

VisTreeSpaceFillingLayoutCache* VisTreeMapLayout::GenerateCache()
{
    return new (std::nothrow) VisTreeMapLayoutCache(nullptr);
}

void VisTreeMapLayout::Draw(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size,
                            KUVCharacterFont* font, float scale)
{
    // Listeners of the selection may release the layout.
    const auto self = VisReference<VisTreeMapLayout>::Retain(this);
    VisTreeSpaceFillingLayout::Draw(origin, size, font, scale);
    VisTreeMapLayoutCache* const cache = TreeMapCacheOf(GetCurrentRoot());
    if (!cache)
        return;
    const VisTreeMap_SliceDice mode = cache->GetLastModeOfComputedMinimumExpandedSize();
    if (!cache->CanSliceAndDiceExpandNode(mode, size, nullptr) &&
        cache->CanLayoutChildrenInGrid(size))
        LayoutChildrenInGrid(origin, size, font, scale);
    else
        SliceAndDice(mode, origin, size, font, scale);
    SetCurrentSelection(GetCurrentSelection());
}

void VisTreeMapLayout::SliceAndDice(VisTreeMap_SliceDice mode, const KUVMathPoint2Df& origin,
                                    const KUVMathPoint2Df& size, KUVCharacterFont* font,
                                    float scale)
{
    VisDataTree* const root = GetCurrentRoot();
    if (!root)
        return;
    const Picture picture{root, origin, font, scale};
    VisClearHiddenFrom(root->GetParent());
    ViewMaker maker(*this, picture);
    SliceAndDiceWalk<ViewMaker>(maker).Run(root, mode, {origin, size},
                                           static_cast<int>(root->ComputeDepth()));
}

void VisTreeMapLayout::LayoutChildrenInGrid(const KUVMathPoint2Df& origin,
                                            const KUVMathPoint2Df& size, KUVCharacterFont* font,
                                            float scale)
{
    VisDataTree* const root = GetCurrentRoot();
    VisTreeMapLayoutCache* const cache = TreeMapCacheOf(root);
    if (!cache)
        return;
    const Picture picture{root, origin, font, scale};
    VisClearHiddenFrom(root->GetParent());
    const int depth = static_cast<int>(root->ComputeDepth());
    ShowNode(*cache, /*expanded=*/1);
    VisCacheAccess::SetPosition(*cache, origin);
    VisCacheAccess::SetSize(*cache, size);
    FillGrid(*root, picture, depth + 1);
    DrawNode(*root, *cache, picture, depth);
}

/// Deals the grid's cells out to the children of `root`, in order.
void VisTreeMapLayout::FillGrid(VisDataTree& root, const Picture& picture, int depth)
{
    const std::vector<VisDataTree*>& children = root.GetChildren();
    TreeMapCache& rootCache = *TreeMapCacheOf(&root);
    const TreeMapGeometry::Grid grid =
        TreeMapGeometry::MakeGrid({picture.origin, rootCache.GetSize()});
    VisCacheAccess::ChildOrder(rootCache) = VisChildOrder::Unknown;
    std::size_t next = 0;
    KUVMathPoint2Df corner = grid.corner;
    for (int row = 0; row < grid.rows && next < children.size(); ++row) {
        for (int column = 0; column < grid.columns && next < children.size(); ++column) {
            VisPrefetchChild(children, next);
            // A child without cache leaves its cell empty.
            if (VisTreeMapLayoutCache* const cache = TreeMapCacheOf(children[next])) {
                ShowNode(*cache, IsChildless(children[next]) ? 1 : 0);
                ResetViewsBelow(*children[next], *cache);
                VisCacheAccess::SetPosition(*cache, corner);
                VisCacheAccess::SetSize(*cache, {grid.cellWidth, TreeMapGeometry::MIN_HEIGHT});
                DrawNode(*children[next], *cache, picture, depth);
            }
            ++next;
            corner.x += TreeMapGeometry::CellStep(grid);
        }
        corner.x = grid.corner.x;
        corner.y -= TreeMapGeometry::ROW_STEP;
    }
    for (; next < children.size(); ++next)
        ResetViewOf(children[next]);
    VisNoteChildOrder(root, rootCache, Axis::Y);
}

/// Marks a node as shown and sees to it that it has an empty view.
void VisTreeMapLayout::ShowNode(VisTreeMapLayoutCache& cache, unsigned char expanded)
{
    VisCacheAccess::Show(cache, expanded);
    if (expanded)
        VisCacheAccess::HiddenBelow(cache) = 0;
    if (VisTreeSpaceFillingView* const view = CreateView(&cache))
        view->Clean();
}

/// Builds the view of a node from the rectangle in its cache.
void VisTreeMapLayout::DrawNode(VisDataTree& node, VisTreeMapLayoutCache& cache,
                                const Picture& picture, int depth)
{
    VisTreeSpaceFillingView* const view = cache.GetView();
    if (!view)
        return;
    const KUVMathPoint2Df position =
        TreeMapGeometry::ScaleAbout(picture.origin, cache.GetPos(), picture.scale);
    view->Init(node.IsLeafObject(), cache.GetLabelToDisplay(VisDataTree_ApplyValueToNone), position,
               TreeMapGeometry::Scale(cache.GetSize(), picture.scale),
               cache.GetRGBAColor(depth, picture.root), picture.font, cache.IsExpanded(),
               /*centredLabel=*/0, picture.noIcon, VisTreeSpaceFillingView::Position_IconRight,
               picture.scale);
}
