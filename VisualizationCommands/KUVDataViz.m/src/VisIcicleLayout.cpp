#include "VisIcicleLayout.h"

#include "private/CacheAccess.h"
#include "private/ChildOrder.h"
#include "private/HiddenBelow.h"
#include "private/IcicleAccess.h"
#include "private/IcicleColumns.h"
#include "private/IcicleGeometry.h"
#include "private/IcicleRectangles.h"
#include "private/IcicleSizes.h"
#include "private/Reference.h"
#include "private/TreeWalk.h"

#include "VisDataTree.h"
#include "VisTreeSpaceFillingView.h"

#include "KUVStringsMath.h"

#include <algorithm>
#include <new>
#include <vector>

using IcicleColumns::EndOfLeaf;
using IcicleColumns::LeafEnd;
using IcicleGeometry::Columns;
using IcicleGeometry::GAP;
using IcicleGeometry::NOT_COMPUTED;
using IcicleGeometry::NOT_GIVEN;
using IcicleGeometry::Request;
using IcicleGeometry::Stretch;
using IcicleSizes::HeightForChildren;
using IcicleSizes::HeightFromAbove;
using IcicleSizes::IsRemembered;
using IcicleSizes::Place;
using IcicleCache = VisIcicleLayout::VisIcicleLayoutCache;

namespace {

using Access = VisIcicleAccess;
using Children = std::vector<VisDataTree*>;

constexpr unsigned int NODE_COLOUR = 0xFFFFFFFFU;

IcicleCache* IcicleCacheOf(const VisDataTree* node) { return Access::CacheOf(node); }

}  // namespace

KUV_IMPLEMENT_CLASS(VisIcicleLayout, VisTreeSpaceFillingLayout, "VisualizationCommands")
KUV_IMPLEMENT_CLASS(VisIcicleLayoutON_SET_NLAST_NODESEvt, KUVNotification, "VisualizationCommands")

const unsigned short VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MAJOR = 96;
const unsigned short VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MAJOR_LEAF = 64;
const unsigned short VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MAJOR_NO_LABEL = 32;
const unsigned short VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MINOR = 24;
const unsigned short VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MINOR_W_ICON = 24;
const unsigned short VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MINOR_W_ICON_LABEL = 46;
const unsigned short VisIcicleLayout::SPACE_BETWEEN_NODES = 2;
const unsigned short VisIcicleLayout::LABEL_OFFSET = 14;

static_assert(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MAJOR == IcicleGeometry::WIDTH, "one width");
static_assert(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MAJOR_LEAF == IcicleGeometry::LEAF_WIDTH,
              "one width");
static_assert(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MAJOR_NO_LABEL ==
                  IcicleGeometry::WIDTH_WITHOUT_LABEL,
              "one width");
static_assert(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MINOR == IcicleGeometry::HEIGHT, "one height");
static_assert(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MINOR_W_ICON == IcicleGeometry::ICON_HEIGHT,
              "one height");
static_assert(VisIcicleLayout::MIN_ICICLEPLOT_SIZE_MINOR_W_ICON_LABEL ==
                  IcicleGeometry::ICON_AND_LABEL_HEIGHT,
              "one height");
static_assert(VisIcicleLayout::SPACE_BETWEEN_NODES == GAP, "one gap");

// ---- VisIcicleLayoutCache

VisIcicleLayout::VisIcicleLayoutCache::VisIcicleLayoutCache(VisDataTree* node)
    : VisTreeSpaceFillingLayoutCache(node)
{
    VisCacheAccess::SetKind(*this, VisCacheKind::Icicle);
}

VisIcicleLayout::VisIcicleLayoutCache::VisIcicleLayoutCache(VisIcicleLayoutCache& other)
    : VisTreeSpaceFillingLayoutCache(other), icicleSize_(0.0f, 0.0f)
{
    VisCacheAccess::SetKind(*this, VisCacheKind::Icicle);
    *this = other;
}

VisIcicleLayout::VisIcicleLayoutCache&
VisIcicleLayout::VisIcicleLayoutCache::operator=(VisIcicleLayoutCache& other)
{
    if (this == &other)
        return *this;
    VisTreeSpaceFillingLayoutCache::operator=(other);
    colSpan_ = other.colSpan_;
    cursor_ = other.cursor_;
    lastNLastNodes_ = other.lastNLastNodes_;
    // A child of the other's node is none of this one's.
    if (lastVisitedChild_ != other.lastVisitedChild_)
        lastVisitedChild_ = nullptr;
    return *this;
}

VisIcicleLayout::VisIcicleLayoutCache::~VisIcicleLayoutCache() = default;

VisDataTree::VisDataTreeCache* VisIcicleLayout::VisIcicleLayoutCache::Clone()
{
    return new (std::nothrow) VisIcicleLayoutCache(*this);
}

void VisIcicleLayout::VisIcicleLayoutCache::InternalResetCache()
{
    VisTreeSpaceFillingLayoutCache::InternalResetCache();
    lastVisitedChild_ = nullptr;
    colSpan_ = 1;
    cursor_ = NOT_COMPUTED;
    graphicalSize_ = {-1.0f, -1.0f};
    icicleSize_ = {-1.0f, -1.0f};
}

// ---- alignment

namespace {

/// The columns by which the subtree of `node` is less deep than its parent's, at least 1.
unsigned int SpanBelow(VisDataTree& parent, VisDataTree& node)
{
    const auto difference = static_cast<int>(parent.ComputeMaxDepth() - node.ComputeMaxDepth());
    // Remembered depths may be out of date.
    return difference > 1 ? static_cast<unsigned int>(difference) : 1;
}

/// Sets the spans of a subtree and forgets what was computed from them.
class AlignWalk {
public:
    /// The number of columns.
    unsigned int Run(VisDataTree& start)
    {
        VisDataTree* const parent = start.GetParent();
        Visit(start, parent ? SpanBelow(*parent, start) : 1);
        unsigned int columns = 0;
        while (!open_.empty()) {
            Level& level = open_.back();
            const Children& children = level.node->GetChildren();
            if (level.next < children.size()) {
                VisDataTree* const child = children[level.next++];
                if (child)
                    Visit(*child, SpanBelow(*level.node, *child));
                continue;
            }
            columns = level.span + level.largest;
            open_.pop_back();
            if (!open_.empty())
                open_.back().largest = std::max(open_.back().largest, columns);
        }
        return columns;
    }

    bool IsAnyLeafStretched() const { return stretched_; }

private:
    struct Level {
        VisDataTree* node;
        std::size_t next;
        unsigned int span;
        unsigned int largest;
    };

    void Visit(VisDataTree& node, unsigned int span)
    {
        if (node.GetChildren().empty() && (node.IsLeafObject() == 0 || span >= 2))
            stretched_ = true;
        if (IcicleCache* const cache = IcicleCacheOf(&node)) {
            Access::SetColSpan(*cache, span);
            Access::SetCursor(*cache, NOT_COMPUTED);
            Access::SetIcicleSize(*cache, {-1.0f, -1.0f});
        }
        open_.push_back({&node, 0, span, 0});
    }

    std::vector<Level> open_;
    bool stretched_ = false;
};

}  // namespace

int VisIcicleLayout::AlignIciclePlotLeaves(VisDataTree* node)
{
    VisDataTree* const start = node ? node : GetCurrentRoot();
    if (!start)
        return 0;
    AlignWalk align;
    const unsigned int columns = align.Run(*start);
    VisPreOrderWalk<VisDataTree> walk(start);
    while (const VisDataTree* const below = walk.Next()) {
        if (IcicleCache* const cache = IcicleCacheOf(below))
            Access::SetStretchedLeaves(*cache, align.IsAnyLeafStretched());
    }
    return static_cast<int>(columns);
}

void VisIcicleLayout::ResetIciclePlotAlignment()
{
    if (VisDataTree::VisDataTreeCache* const cache =
            GetTreeRoot() ? GetTreeRoot()->GetCache() : nullptr)
        cache->ResetCache();
}

void VisIcicleLayout::SetCurrentRoot(VisDataTree* node, unsigned char pushOnStack)
{
    const IcicleCache* const cache = IcicleCacheOf(node);
    if (cache && cache->GetIcicleColSpan() >= 2)
        AlignIciclePlotLeaves(node);
    VisTreeSpaceFillingLayout::SetCurrentRoot(node, pushOnStack);
}

// ---- plot

namespace {

/// What all nodes of one plot have in common.
struct Plan {
    KUVMathPoint2Df origin;
    Request request;
    unsigned int minDepth = 0;
    unsigned int maxDepth = 0;
    Stretch stretch = {};
    float scale = 1.0f;
};

/// Visits the nodes of a plot, a node before its children and these from the last to the first.
///
/// `Maker` says what becomes of a node: `Show(cache)` before its children, `Draw(node, cache)`
/// behind them when it is visible from the leaves. The node is handed on with its cache, which may
/// have forgotten it.
template <class Maker>
class IcicleWalk {
public:
    IcicleWalk(Maker& maker, const Plan& plan) : maker_(maker), plan_(plan) {}

    unsigned int Run(VisDataTree& root, IcicleCache& cache, unsigned int depth)
    {
        root_ = &root;
        VisDataTree* const leaf = plan_.request.IsLimited() ? root.GetFirstLeaf() : nullptr;
        Open(root, cache, plan_.origin, depth, leaf);
        for (;;) {
            if (OpenNextChild(open_.back()))
                continue;
            Level& finished = open_.back();
            // The plot goes from the last child to the first.
            finished.order.Reverse();
            finished.order.Note(*finished.cache);
            const Level level = finished;
            Finish(level);
            open_.pop_back();
            const unsigned int columns = level.columns.span + level.largest;
            if (open_.empty())
                return columns;
            AddChild(open_.back(), *level.node, *level.cache, columns);
        }
    }

private:
    static constexpr int NOT_CLIMBED = -1;

    /// A node whose children are being plotted.
    struct Level {
        VisDataTree* node = nullptr;
        IcicleCache* cache = nullptr;
        std::size_t left = 0;
        /// Where the next child stands.
        KUVMathPoint2Df corner;
        VisDataTree* leaf = nullptr;
        Columns columns;
        unsigned int largest = 0;
        float leftmost = 0.0f;
        bool hasPlotted = false;
        bool visible = false;
        int heightForChildren = NOT_CLIMBED;
        VisChildOrderCheck order{VisAxis::Y};
    };

    /// Plots children, from the last to the first, until one has children itself and is opened.
    bool OpenNextChild(Level& level)
    {
        const Children& children = level.node->GetChildren();
        const unsigned int depth = level.columns.depth + level.columns.span;
        while (level.left > 0) {
            VisDataTree* const child = children[--level.left];
            IcicleCache* const cache = IcicleCacheOf(child);
            if (!cache) {
                if (VisCacheAccess::LayoutCacheOf(child))
                    level.order.Break();
                continue;
            }
            if (!IcicleColumns::IsPlainLeaf(*child, *cache)) {
                VisDataTree* leaf = nullptr;
                if (plan_.request.IsLimited())
                    leaf = level.left == 0 ? level.leaf : child->GetFirstLeaf();
                const KUVMathPoint2Df corner = level.corner;
                Open(*child, *cache, corner, depth, leaf);
                return true;
            }
            PlaceNode(*cache, level.corner, depth, child);
            Level plotted{child, cache, 0, level.corner, child, ColumnsOf(*cache, depth)};
            // A leaf sees itself.
            plotted.visible = plan_.request.nLastNodes > 0;
            Finish(plotted);
            AddChild(level, *child, *cache, plotted.columns.span);
        }
        return false;
    }

    void Open(VisDataTree& node, IcicleCache& cache, const KUVMathPoint2Df& corner,
              unsigned int depth, VisDataTree* leaf)
    {
        PlaceNode(cache, corner, depth, leaf);
        VisCacheAccess::ChildOrder(cache) = VisChildOrder::Unknown;
        Level level{&node,  &cache, node.GetChildren().size(),
                    corner, leaf,   ColumnsOf(cache, depth)};
        level.visible = IcicleColumns::IsSeenFrom(cache, leaf, plan_.request.nLastNodes);
        const unsigned int advance =
            IcicleGeometry::AdvancedColumns(level.columns, plan_.request, level.visible);
        const long long width = IcicleColumns::WidthOfColumn(cache) + GAP;
        if (advance > 0)
            level.corner.x += static_cast<float>(width * advance) * plan_.stretch.x;
        open_.push_back(level);
    }

    /// What goes before the children. `leaf` is the first leaf below the node.
    void PlaceNode(IcicleCache& cache, const KUVMathPoint2Df& corner, unsigned int depth,
                   VisDataTree* leaf)
    {
        maker_.Show(cache);
        VisCacheAccess::SetExpanded(cache, 1);
        VisCacheAccess::SetDiscarded(cache, 1);
        const KUVMathPoint2Df size = SizeOf(cache, depth, leaf);
        VisCacheAccess::SetSize(cache, {size.x * plan_.stretch.x, size.y * plan_.stretch.y});
        VisCacheAccess::SetPosition(cache, corner);
        Access::SetCursor(cache, depth);
    }

    Columns ColumnsOf(const IcicleCache& cache, unsigned int depth) const
    {
        return {depth, cache.GetIcicleColSpan(), plan_.minDepth, plan_.maxDepth};
    }

    /// A merged top root is not visible whatever its leaf says, and does not have it compute its
    /// cursor.
    static LeafEnd LeafEndFrom(const IcicleCache& cache, const VisDataTree* leaf)
    {
        const VisDataTree* const node = cache.GetNode();
        return node && !Access::IsMergedTop(*node) ? EndOfLeaf(leaf) : LeafEnd();
    }

    /// The size of a node that is about to be plotted below the open ones. It is remembered as a
    /// rule; what takes no room is measured again.
    KUVMathPoint2Df SizeOf(IcicleCache& cache, unsigned int depth, VisDataTree* leaf)
    {
        if (IsRemembered(cache, plan_.request))
            return cache.GetIcicleSize();
        Place place;
        place.depth = depth;
        place.minDepth = plan_.minDepth;
        if (plan_.request.IsLimited()) {
            place.cursor = cache.ComputeIcicleCursor();
            place.leaf = LeafEndFrom(cache, leaf);
        }
        // No climb leads past a node that is not visible.
        if (IcicleColumns::IsSeenFrom(cache, leaf, plan_.request.nLastNodes))
            place.heightFromAbove = ClimbFromOpen();
        return IcicleSizes::Measure(cache, plan_.request, place);
    }

    /// What the icons of the open nodes, and of those above the plot, ask of the heights below:
    /// climbs to the first that knows or ends every climb, and lets those below it know.
    int ClimbFromOpen()
    {
        std::size_t known = open_.size();
        while (known > 0 && open_[known - 1].heightForChildren == NOT_CLIMBED &&
               open_[known - 1].visible && !IcicleSizes::EndsClimb(*open_[known - 1].node))
            --known;
        int height = 0;
        if (known > 0)
            height = open_[--known].heightForChildren;
        else
            height = ClimbFromRoot();
        for (; known < open_.size(); ++known) {
            Level& level = open_[known];
            if (level.heightForChildren == NOT_CLIMBED)
                level.heightForChildren =
                    HeightForChildren(*level.cache, *level.node, level.visible,
                                      plan_.request.inlineLabels, std::max(height, 0));
            height = level.heightForChildren;
        }
        return height;
    }

    int ClimbFromRoot()
    {
        if (heightFromAbove_ == NOT_CLIMBED)
            heightFromAbove_ = HeightFromAbove(*root_, plan_.request, /*store=*/true);
        return heightFromAbove_;
    }

    void AddChild(Level& level, const VisDataTree& node, const IcicleCache& child,
                  unsigned int columns)
    {
        level.order.Add(*level.node, node, child, child.GetPos(), child.GetSize());
        level.corner.y += 2.0f * plan_.stretch.y + child.GetSize().y;
        level.largest = std::max(level.largest, columns);
        const float x = child.GetPos().x;
        level.leftmost = level.hasPlotted && level.leftmost <= x ? level.leftmost : x;
        level.hasPlotted = true;
    }

    /// What goes behind the children.
    void Finish(const Level& level)
    {
        IcicleCache& cache = *level.cache;
        if (level.visible) {
            Access::SetGraphicalSize(cache, GraphicalSizeOf(level));
            VisCacheAccess::SetDiscarded(cache, 0);
            maker_.Draw(*level.node, cache);
        } else {
            Access::SetGraphicalSize(cache, {0.0f, 0.0f});
            if (level.hasPlotted)
                VisCacheAccess::SetPosition(cache, {level.leftmost, cache.GetPos().y});
        }
    }

    KUVMathPoint2Df GraphicalSizeOf(const Level& level)
    {
        const int columns = IcicleGeometry::DrawnColumns(level.columns, plan_.request);
        const auto width = static_cast<float>(
            IcicleGeometry::WidthOf(columns, IcicleColumns::WidthOfColumn(*level.cache)));
        return {plan_.scale * plan_.stretch.x * width, plan_.scale * level.cache->GetSize().y};
    }

    Maker& maker_;
    const Plan& plan_;
    VisDataTree* root_ = nullptr;
    int heightFromAbove_ = NOT_CLIMBED;
    std::vector<Level> open_;
};

/// A plot of `root`, whose cache is `cache`, that fills `size`.
Plan MakePlan(VisDataTree& root, IcicleCache& cache, const KUVMathPoint2Df& origin,
              const KUVMathPoint2Df& size, const Request& request, unsigned int depth)
{
    Plan plan;
    plan.origin = origin;
    plan.request = request;
    plan.minDepth = static_cast<unsigned int>(cache.ComputeMinDepthWithVisibility(
        static_cast<int>(depth), static_cast<int>(request.nLastNodes)));
    plan.maxDepth = root.ComputeMaxDepth();
    const KUVMathPoint2Df extent =
        cache.ComputeIcicleSize(request.nLastNodes, request.relative ? 1 : 0, request.inlineLabels,
                                depth, plan.minDepth, NOT_GIVEN);
    plan.stretch = {IcicleGeometry::StretchTo(size.x, extent.x),
                    IcicleGeometry::StretchTo(size.y, extent.y)};
    return plan;
}

/// Makes no views: the walk leaves nothing but geometry.
struct GeometryOnly {
    void Show(IcicleCache& /*cache*/) {}
    void Draw(VisDataTree& /*node*/, IcicleCache& /*cache*/) {}
};

}  // namespace

unsigned int LayOutIcicleRectangles(VisDataTree* root, const KUVMathPoint2Df& origin,
                                    const KUVMathPoint2Df& size, unsigned int depth,
                                    unsigned int nLastNodes, unsigned char relativeToMinDepth,
                                    unsigned char inlineLabels)
{
    IcicleCache* const cache = IcicleCacheOf(root);
    if (!cache)
        return 0;
    const Plan plan = MakePlan(*root, *cache, origin, size,
                               {nLastNodes, relativeToMinDepth != 0, inlineLabels}, depth);
    GeometryOnly none;
    return IcicleWalk<GeometryOnly>(none, plan).Run(*root, *cache, depth);
}

// ---- VisIcicleLayout

VisIcicleLayoutON_SET_NLAST_NODESEvt::VisIcicleLayoutON_SET_NLAST_NODESEvt(unsigned int oldValue,
                                                                           unsigned int newValue,
                                                                           unsigned int keyCode)
    : oldValue_(oldValue), newValue_(newValue), keyCode_(keyCode)
{
}

VisIcicleLayoutON_SET_NLAST_NODESEvt::~VisIcicleLayoutON_SET_NLAST_NODESEvt() = default;

/// What all views of one drawing have in common.
struct VisIcicleLayout::Picture {
    KUVMathPoint2Df origin;
    KUVCharacterFont* font;
    float scale;
    unsigned char inlineLabels;
    KUVUnicodeString noLabel = {};
};

/// Gives the nodes of a walk their views.
class VisIcicleLayout::ViewMaker {
public:
    ViewMaker(VisIcicleLayout& layout, const Picture& picture) : layout_(layout), picture_(picture)
    {
    }
    void Show(VisIcicleLayoutCache& cache) { layout_.ShowNode(cache); }
    void Draw(VisDataTree& node, VisIcicleLayoutCache& cache)
    {
        layout_.DrawNode(node, cache, picture_);
    }

private:
    VisIcicleLayout& layout_;
    const Picture& picture_;
};

VisIcicleLayout::VisIcicleLayout(KUVCommand* parent, VisDataTree* root, KUV2DBagRep* bag)
    : VisTreeSpaceFillingLayout(parent)
{
    // The hit test searches below nodes left of the last columns.
    SetDiscardedVisibility(1);
    SetLeafSelectionTracking(0);
    Init(root, bag);
}

VisIcicleLayout::~VisIcicleLayout() = default;

VisIcicleLayout* VisIcicleLayout::CreateLayout(KUVCommand* parent, VisDataTree* root,
                                               KUV2DBagRep* bag)
{
    if (!root)
        return nullptr;
    try {
        return new VisIcicleLayout(parent, root, bag);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

const char* VisIcicleLayout::ON_SET_NLAST_NODES()
{
    VisIcicleLayoutON_SET_NLAST_NODESEvt::MetaObject();
    return VisIcicleLayoutON_SET_NLAST_NODESEvt::ClassName();
}

VisTreeSpaceFillingLayoutCache* VisIcicleLayout::GenerateCache()
{
    return new (std::nothrow) VisIcicleLayoutCache(nullptr);
}

VisIcicleLayout::VisIcicleLayoutCache* VisIcicleLayout::GetCache()
{
    return IcicleCacheOf(GetCurrentRoot());
}

void VisIcicleLayout::Draw(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size,
                           KUVCharacterFont* font, float scale)
{
    // Listeners of the selection may release the layout.
    const auto self = VisReference<VisIcicleLayout>::Retain(this);
    VisTreeSpaceFillingLayout::Draw(origin, size, font, scale);
    const VisIcicleLayoutCache* const cache = GetCache();
    if (!cache)
        return;
    IciclePlot(origin, size, font, cache->GetIcicleNLastNodes(), scale, /*relativeToMinDepth=*/0,
               Access::InlineLabels(*cache));
    SetCurrentSelection(GetCurrentSelection());
}

unsigned int VisIcicleLayout::IciclePlot(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size,
                                         KUVCharacterFont* font, unsigned int nLastNodes,
                                         float scale, unsigned char relativeToMinDepth,
                                         unsigned char inlineLabels)
{
    VisDataTree* const root = GetCurrentRoot();
    VisIcicleLayoutCache* const cache = IcicleCacheOf(root);
    if (!cache)
        return 0;
    const unsigned int depth = root->ComputeDepth();
    Plan plan = MakePlan(*root, *cache, origin, size,
                         {nLastNodes, relativeToMinDepth != 0, inlineLabels}, depth);
    plan.scale = scale;
    VisClearHiddenFrom(root->GetParent());
    const Picture picture{origin, font, scale, inlineLabels};
    ViewMaker maker(*this, picture);
    return IcicleWalk<ViewMaker>(maker, plan).Run(*root, *cache, depth);
}

/// Sees to it that the node has an empty view.
void VisIcicleLayout::ShowNode(VisIcicleLayoutCache& cache)
{
    if (VisTreeSpaceFillingView* const view = CreateView(&cache)) {
        view->Clean();
        view->SetHighlightMode(VisTreeSpaceFillingView::HighlightMode_Texture);
    }
}

/// Builds the view of a node from what its cache says.
void VisIcicleLayout::DrawNode(VisDataTree& node, VisIcicleLayoutCache& cache,
                               const Picture& picture)
{
    VisTreeSpaceFillingView* const view = cache.GetView();
    if (!view)
        return;
    const KUVMathPoint2Df& origin = picture.origin;
    const KUVMathPoint2Df position(origin.x + (cache.GetPos().x - origin.x) * picture.scale,
                                   origin.y + (cache.GetPos().y - origin.y) * picture.scale);
    const bool inlined = picture.inlineLabels != 0 ||
                         node.ComputeMaxDepth() < IcicleGeometry::LEVELS_FOR_STACKED_ICON;
    const KUVUnicodeString label = cache.GetShowLabel() != 0
                                       ? cache.GetLabelToDisplay(VisDataTree_ApplyValueToNone)
                                       : picture.noLabel;
    view->Init(node.IsLeafObject(), label, position, cache.GetGraphicalSize(), NODE_COLOUR,
               picture.font, cache.IsExpanded(), /*centredLabel=*/1, node.GetIconName(),
               inlined ? VisTreeSpaceFillingView::Position_IconLeft
                       : VisTreeSpaceFillingView::Position_LabelBelow,
               picture.scale);
}
