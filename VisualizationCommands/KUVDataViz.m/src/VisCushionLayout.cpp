#include "VisCushionLayout.h"

#include "private/CacheAccess.h"
#include "private/ChildOrder.h"
#include "private/CushionGeometry.h"
#include "private/CushionPicture.h"
#include "private/CushionRectangles.h"
#include "private/HiddenBelow.h"
#include "private/NodeTextures.h"
#include "private/Prefetch.h"
#include "private/Reference.h"
#include "private/SaturatingCast.h"
#include "private/TreeEpoch.h"

#include "VisDataTree.h"
#include "VisTreeSpaceFillingView.h"

#include "KUV2D.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <vector>

using CushionCache = VisCushionLayout::VisCushionLayoutCache;
using CushionGeometry::LocalRectangle;
using CushionGeometry::Span;
using CushionGeometry::Strips;
using CushionGeometry::Surface;

KUV_IMPLEMENT_CLASS(VisCushionLayout, VisTreeSpaceFillingLayout, "VisualizationCommands")

// The eight colours of ColorBrewer's qualitative scheme Accent, then white.
const unsigned int VisCushionLayout::COLOR_MAP[9] = {0x7FC97FU, 0xBEAED4U, 0xFDC086U,
                                                     0xFFFF99U, 0x386CB0U, 0xF0027FU,
                                                     0xBF5B17U, 0x666666U, 0xFFFFFFU};
const unsigned int VisCushionLayout::MAX_COLOR_MAP = 8;

static_assert(VisCushionLayout::MAX_COLOR_MAP + 1 == std::size(VisCushionLayout::COLOR_MAP),
              "white is the last entry");

// ---- access

/// Reads and writes what only the layout may in the caches.
struct CushionAccess {
    static Surface SurfaceOf(const CushionCache& cache)
    {
        const float* const surface = cache.surface_;
        return {{surface[0], surface[1]}, {surface[2], surface[3]}};
    }
    static void StoreCushion(CushionCache& cache, VisTreeMap_SliceDice mode, const Surface& surface,
                             float height, float factor)
    {
        cache.surface_[0] = surface.x.linear;
        cache.surface_[1] = surface.x.quadratic;
        cache.surface_[2] = surface.y.linear;
        cache.surface_[3] = surface.y.quadratic;
        cache.height_ = height;
        cache.scaleFactor_ = factor;
        cache.cushionComputed_ = 1;
        cache.lastMode_ = mode;
    }
    static void SetSubtreeValue(CushionCache& cache, long long value)
    {
        cache.subtreeValue_ = value;
    }
};

namespace {

/// The cache of `node` when there is one and it is a cushion tree map's; else null.
CushionCache* CushionCacheOf(const VisDataTree* node)
{
    VisDataTree::VisDataTreeCache* const cache = node ? node->GetCache() : nullptr;
    if (!cache || VisCacheAccess::Kind(*cache) != VisCacheKind::Cushion)
        return nullptr;
    return static_cast<CushionCache*>(cache);
}

unsigned int ColourOf(const CushionCache& cache)
{
    const long long white = VisCushionLayout::MAX_COLOR_MAP;
    const long long index = cache.ColorWithValue() != 0 ? cache.GetColorValue() : white;
    const bool isKnown = index >= 0 && index < white;
    return VisCushionLayout::COLOR_MAP[isKnown ? index : white];
}

// ---- values

long long LeafValueOf(const CushionCache& cache)
{
    return cache.ResizeWithValue() != 0 ? std::max(cache.GetSizeValue(), 0LL) : 1;
}

/// Of values that are not negative.
long long SaturatingSum(long long a, long long b)
{
    constexpr long long LARGEST = std::numeric_limits<long long>::max();
    return a > LARGEST - b ? LARGEST : a + b;
}

// ---- the nodes that show

/// A node that shows.
struct Item {
    CushionCache* cache;
    /// Of those that show.
    unsigned int childCount;
    unsigned char isLeafObject;
    /// The node has no children at all.
    bool isLeaf;
    /// Not all of its children can be trusted to stay where they are put.
    bool hasOddChild;
};

/// The nodes of a subtree that have a cushion cache, as their ancestors have, in pre-order, one
/// behind the other. What has no cushion cache does not show and weighs nothing.
///
/// Large trees are all about memory: nodes and caches are walked once here, and the caches once
/// more along this list, which says beforehand where it leads.
class CushionList {
public:
    /// Adds up the values, too, and stores those of nodes with children, unless `isComputed`.
    CushionList(VisDataTree& root, CushionCache& cache, bool isComputed) : isComputed_(isComputed)
    {
        Append(root, cache);
        while (!levels_.empty())
            AppendChildren();
        next_ = ahead_ = items_.begin();
        for (int i = 0; i < DISTANCE; ++i)
            FetchAhead();
    }
    /// Stores the values of what was not taken: the caches below nodes that count as computed are
    /// right from then on, also when a walk along the list ended early.
    ~CushionList()
    {
        for (; next_ != items_.end(); ++next_)
            StoreLeafValue(*next_);
    }
    CushionList(const CushionList&) = delete;
    CushionList& operator=(const CushionList&) = delete;

    /// The next item, or null. Its value stands in its cache from now on.
    const Item* Take()
    {
        if (next_ == items_.end())
            return nullptr;
        FetchAhead();
        StoreLeafValue(*next_);
        return &*next_++;
    }

private:
    /// How many items earlier a cache is fetched.
    static constexpr int DISTANCE = 8;

    /// A node whose children are being appended.
    struct Level {
        const VisDataTree* node;
        std::size_t next;
        Item* item;
        long long value;
    };

    /// Gives the value of a node without children.
    long long Append(VisDataTree& node, CushionCache& cache)
    {
        const bool isLeaf = node.GetChildren().empty();
        items_.push_back({&cache, 0, node.IsLeafObject(), isLeaf, false});
        if (isLeaf)
            return LeafValueOf(cache);
        levels_.push_back({&node, 0, &items_.back(), 0});
        return 0;
    }

    /// Goes on with the innermost level until it has ended or another has begun.
    void AppendChildren()
    {
        const std::size_t depth = levels_.size();
        Level level = levels_.back();
        const std::vector<VisDataTree*>& children = level.node->GetChildren();
        while (level.next < children.size() && levels_.size() == depth) {
            VisPrefetchChild(children, level.next);
            VisDataTree* const child = children[level.next++];
            CushionCache* const cache = CushionCacheOf(child);
            if (!cache) {
                level.item->hasOddChild |= VisCacheAccess::LayoutCacheOf(child) != nullptr;
                continue;
            }
            level.item->hasOddChild |=
                cache->GetNode() != child || child->GetParent() != level.node;
            ++level.item->childCount;
            level.value = SaturatingSum(level.value, Append(*child, *cache));
        }
        levels_[depth - 1] = level;
        if (levels_.size() > depth)
            return;
        levels_.pop_back();
        if (isComputed_)
            return;
        CushionAccess::SetSubtreeValue(*level.item->cache, level.value);
        if (!levels_.empty())
            levels_.back().value = SaturatingSum(levels_.back().value, level.value);
    }

    void StoreLeafValue(const Item& item) const
    {
        if (item.isLeaf && !isComputed_)
            CushionAccess::SetSubtreeValue(*item.cache, LeafValueOf(*item.cache));
    }

    void FetchAhead()
    {
        constexpr std::size_t LINE = 64;
        if (ahead_ == items_.end())
            return;
        const auto* const bytes = reinterpret_cast<const char*>(ahead_->cache);
        for (std::size_t i = 0; i < sizeof(CushionCache); i += LINE)
            __builtin_prefetch(bytes + i, /*forWriting=*/1);
        ++ahead_;
    }

    bool isComputed_;
    // Grows without moving what it holds.
    std::deque<Item> items_;
    std::deque<Item>::const_iterator next_;
    std::deque<Item>::const_iterator ahead_;
    std::vector<Level> levels_;
};

// ---- surfaces and rectangles

/// A node to lay out: how it was cut from its parent and what it inherits.
struct Place {
    VisTreeMap_SliceDice mode = VisTreeMap_SideBySide;
    KUVMathPoint2Df position;
    KUVMathPoint2Df size;
    float height = 0.0f;
    float factor = 0.0f;
};

/// Visits the nodes that a drawing shows, a node before its children, and stores the geometry of
/// each in its cache.
///
/// `Maker` says what becomes of a node: `Show(cache, isLeafObject)`, and `ShadeLeaf(cache, box)`
/// for those without children. A `Box` is what the maker knows of a rectangle as seen from the
/// origin, and its `Cover` hears of the boxes of a node's children.
template <class Maker>
class CushionWalk {
public:
    CushionWalk(Maker& maker, const KUVMathPoint2Df& origin) : maker_(maker), origin_(origin) {}

    void Run(VisDataTree& root, CushionCache& cache, VisTreeMap_SliceDice mode,
             const KUVMathPoint2Df& size)
    {
        const bool isComputed = cache.IsCushionComputed() != 0;
        CushionList items(root, cache, isComputed);
        Place place{mode, origin_, size, CushionGeometry::INITIAL_HEIGHT,
                    CushionGeometry::HEIGHT_FACTOR};
        Surface surface;
        if (isComputed) {
            place.height = cache.GetHeight();
            place.factor = cache.GetScaleFactor();
            surface = CushionAccess::SurfaceOf(cache);
        }
        const LocalRectangle rectangle = CushionGeometry::LocalTo(origin_, origin_, size);
        Visit(*items.Take(), place, surface, rectangle, maker_.BoxOf(rectangle));
        while (const Item* const item = items.Take())
            VisitChild(open_.back(), *item);
    }

private:
    /// A node whose children are being laid out.
    struct Opened {
        const Item* item = nullptr;
        unsigned int remaining = 0;
        LocalRectangle rectangle = {};
        Strips strips = Strips({}, 0);
        VisTreeMap_SliceDice childMode = VisTreeMap_SideBySide;
        float childHeight = 0.0f;
        float factor = 0.0f;
        Surface surface;
        VisChildOrderCheck order;
        typename Maker::Cover cover;
    };

    void VisitChild(Opened& parent, const Item& child)
    {
        --parent.remaining;
        // Two copies of the same, so that places and surfaces never have to be looked up by axis.
        if (parent.childMode == VisTreeMap_SideBySide)
            VisitChildAlong<VisAxis::X>(parent, child);
        else
            VisitChildAlong<VisAxis::Y>(parent, child);
    }

    template <VisAxis AXIS>
    void VisitChildAlong(Opened& parent, const Item& child)
    {
        const Span along = parent.strips.Next(child.cache->GetSubtreeValue());
        const LocalRectangle strip = AXIS == VisAxis::X ? LocalRectangle{along, parent.rectangle.y}
                                                        : LocalRectangle{parent.rectangle.x, along};
        const Place place{parent.childMode,
                          {strip.x.begin + origin_.x, strip.y.begin + origin_.y},
                          {strip.x.end - strip.x.begin, strip.y.end - strip.y.begin},
                          parent.childHeight,
                          parent.factor};
        parent.order.Add(place.position, place.size);
        const LocalRectangle rectangle =
            CushionGeometry::LocalTo(origin_, place.position, place.size);
        Surface surface = parent.surface;
        if (AXIS == VisAxis::X)
            surface.x.AddRidge(place.height, rectangle.x);
        else
            surface.y.AddRidge(place.height, rectangle.y);
        const typename Maker::Box box = maker_.BoxOf(rectangle);
        maker_.Add(parent.cover, box);
        Visit(child, place, surface, rectangle, box);
    }

    void Visit(const Item& item, const Place& place, const Surface& surface,
               const LocalRectangle& rectangle, const typename Maker::Box& box)
    {
        CushionCache& cache = *item.cache;
        VisCacheAccess::SetPosition(cache, place.position);
        VisCacheAccess::SetSize(cache, place.size);
        VisCacheAccess::ChildOrder(cache) = VisChildOrder::Unknown;
        CushionAccess::StoreCushion(cache, place.mode, surface, place.height, place.factor);
        maker_.Show(cache, item.isLeafObject);
        if (item.isLeaf)
            maker_.ShadeLeaf(cache, box);
        else
            Open(item, place, surface, rectangle, box);
        while (!open_.empty() && open_.back().remaining == 0) {
            Close(open_.back());
            open_.pop_back();
        }
    }

    void Open(const Item& item, const Place& place, const Surface& surface,
              const LocalRectangle& rectangle, const typename Maker::Box& box)
    {
        const VisTreeMap_SliceDice childMode = CushionGeometry::ChildModeOf(place.mode);
        const VisAxis axis = childMode == VisTreeMap_SideBySide ? VisAxis::X : VisAxis::Y;
        const Span& whole = axis == VisAxis::X ? rectangle.x : rectangle.y;
        open_.push_back({&item, item.childCount, rectangle,
                         Strips(whole, item.cache->GetSubtreeValue()), childMode,
                         place.height * place.factor, place.factor, surface,
                         VisChildOrderCheck(axis), typename Maker::Cover(box, axis)});
    }

    void Close(Opened& node)
    {
        if (node.item->hasOddChild)
            node.order.Break();
        node.order.Note(*node.item->cache);
        maker_.Finish(node.cover);
    }

    Maker& maker_;
    KUVMathPoint2Df origin_;
    std::vector<Opened> open_;
};

/// Makes neither views nor pixels: the walk leaves nothing but geometry.
struct GeometryOnly {
    struct Box {};
    struct Cover {
        Cover(const Box& /*box*/, VisAxis /*axis*/) {}
    };

    Box BoxOf(const LocalRectangle& /*rectangle*/) const { return {}; }
    void Add(Cover& /*cover*/, const Box& /*box*/) {}
    void Finish(const Cover& /*cover*/) {}
    void Show(CushionCache& /*cache*/, unsigned char /*isLeafObject*/) {}
    void ShadeLeaf(CushionCache& /*cache*/, const Box& /*box*/) {}
};

/// Whatever caches were known to have nothing to reset may have something when this ends.
struct ComputedCushions {
    ComputedCushions() = default;
    ~ComputedCushions() { VisTreeEpoch::Advance(); }
    ComputedCushions(const ComputedCushions&) = delete;
    ComputedCushions& operator=(const ComputedCushions&) = delete;
};

struct FreePixels {
    void operator()(unsigned char* pixels) const { KUVFreePixels(pixels); }
};
using PixelBuffer = std::unique_ptr<unsigned char[], FreePixels>;

KUVMathPoint2Df ScaleAbout(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& position,
                           float scale)
{
    return {(position.x - origin.x) * scale + origin.x, (position.y - origin.y) * scale + origin.y};
}

}  // namespace

void LayOutCushions(VisDataTree* root, VisTreeMap_SliceDice mode, const KUVMathPoint2Df& origin,
                    const KUVMathPoint2Df& size)
{
    CushionCache* const cache = CushionCacheOf(root);
    if (!cache)
        return;
    const ComputedCushions computed;
    GeometryOnly none;
    CushionWalk<GeometryOnly>(none, origin).Run(*root, *cache, mode, size);
}

// ---- VisCushionLayoutCache

VisCushionLayout::VisCushionLayoutCache::VisCushionLayoutCache(VisDataTree* node)
    : VisTreeSpaceFillingLayoutCache(node)
{
    VisCacheAccess::SetKind(*this, VisCacheKind::Cushion);
}

VisCushionLayout::VisCushionLayoutCache::VisCushionLayoutCache(VisCushionLayoutCache& other)
    : VisTreeSpaceFillingLayoutCache(other), height_(other.height_),
      scaleFactor_(other.scaleFactor_), subtreeValue_(other.subtreeValue_),
      cushionComputed_(other.cushionComputed_), lastMode_(other.lastMode_)
{
    std::copy(std::begin(other.surface_), std::end(other.surface_), std::begin(surface_));
    VisCacheAccess::SetKind(*this, VisCacheKind::Cushion);
}

VisCushionLayout::VisCushionLayoutCache&
VisCushionLayout::VisCushionLayoutCache::operator=(VisCushionLayoutCache& other)
{
    if (this == &other)
        return *this;
    VisTreeSpaceFillingLayoutCache::operator=(other);
    std::copy(std::begin(other.surface_), std::end(other.surface_), std::begin(surface_));
    height_ = other.height_;
    scaleFactor_ = other.scaleFactor_;
    subtreeValue_ = other.subtreeValue_;
    cushionComputed_ = other.cushionComputed_;
    lastMode_ = other.lastMode_;
    return *this;
}

VisCushionLayout::VisCushionLayoutCache::~VisCushionLayoutCache() = default;

VisDataTree::VisDataTreeCache* VisCushionLayout::VisCushionLayoutCache::Clone()
{
    return new (std::nothrow) VisCushionLayoutCache(*this);
}

void VisCushionLayout::VisCushionLayoutCache::SetSizeValue(long long value)
{
    if (value != GetSizeValue())
        ResetWithAncestors();
    VisTreeSpaceFillingLayoutCache::SetSizeValue(value);
}

void VisCushionLayout::VisCushionLayoutCache::SetResizeWithValue(unsigned char resizeWithValue)
{
    if (resizeWithValue != ResizeWithValue())
        ResetWithAncestors();
    VisTreeSpaceFillingLayoutCache::SetResizeWithValue(resizeWithValue);
}

void VisCushionLayout::VisCushionLayoutCache::SetLastModeOfComputedMinimumExpandedSize(
    VisTreeMap_SliceDice mode)
{
    if (lastMode_ == mode)
        return;
    lastMode_ = mode;
    VisCacheAccess::SetComputedMinimumSize(*this, {-1.0f, -1.0f});
}

void VisCushionLayout::VisCushionLayoutCache::InternalResetCache()
{
    subtreeValue_ = 0;
    cushionComputed_ = 0;
    VisTreeSpaceFillingLayoutCache::InternalResetCache();
}

/// Resets this cache and those above it, as `ResetCache` does. Weighing a whole tree resets once
/// for every node: the walk ends where everything above was reset already and nothing computed
/// since, which keeps that linear in deep trees.
void VisCushionLayout::VisCushionLayoutCache::ResetWithAncestors()
{
    const std::uint64_t now = VisTreeEpoch::current;
    VisDataTreeCache* cache = this;
    do {
        VisCacheAccess::ResetAlone(*cache);
        if (VisCacheAccess::Kind(*cache) == VisCacheKind::Cushion)
            static_cast<VisCushionLayoutCache*>(cache)->quietEpoch_ = now;
        cache = cache->GetCacheOfParent();
    } while (cache && !(VisCacheAccess::Kind(*cache) == VisCacheKind::Cushion &&
                        static_cast<VisCushionLayoutCache*>(cache)->quietEpoch_ == now));
}

// ---- VisCushionLayout

/// Gives the nodes of a walk their views and collects what there is to paint.
class VisCushionLayout::PictureMaker {
public:
    using Box = CushionShading::PixelBox;
    using Cover = CushionShading::Cover;

    PictureMaker(VisCushionLayout& layout, const VisCushionLayoutCache& root,
                 const KUVMathPoint2Df& origin, float scale, CushionShading::Picture& picture)
        : layout_(layout), root_(root), origin_(origin), scale_(scale), picture_(picture)
    {
    }

    Box BoxOf(const LocalRectangle& rectangle) const { return picture_.BoxOf(rectangle); }
    void Add(Cover& cover, const Box& box) { cover.Add(box, picture_.Gaps()); }
    void Finish(const Cover& cover) { cover.Finish(picture_.Gaps()); }
    void Show(VisCushionLayoutCache& cache, unsigned char isLeafObject)
    {
        VisCacheAccess::Show(cache, /*expanded=*/1);
        VisTreeSpaceFillingView* const view = layout_.CreateView(&cache);
        // The root's view is built at the end, with the picture.
        if (view && &cache != &root_)
            view->InitWithoutTexture(isLeafObject, ScaleAbout(origin_, cache.GetPos(), scale_),
                                     {cache.GetSize().x * scale_, cache.GetSize().y * scale_});
    }
    void ShadeLeaf(VisCushionLayoutCache& cache, const Box& box)
    {
        picture_.AddPatch({box, CushionAccess::SurfaceOf(cache), ColourOf(cache)});
    }

private:
    VisCushionLayout& layout_;
    const VisCushionLayoutCache& root_;
    KUVMathPoint2Df origin_;
    float scale_;
    CushionShading::Picture& picture_;
};

VisCushionLayout::VisCushionLayout(KUVCommand* parent) : VisTreeSpaceFillingLayout(parent)
{
    SetEnableZoom(0);
}

VisCushionLayout::~VisCushionLayout() = default;

VisCushionLayout* VisCushionLayout::CreateLayout(KUVCommand* parent, VisDataTree* root,
                                                 KUV2DBagRep* bag)
{
    if (!root)
        return nullptr;
    try {
        auto layout = VisReference<VisCushionLayout>::Adopt(new VisCushionLayout(parent));
        layout->Init(root, bag);
        return layout.Detach();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

VisTreeSpaceFillingLayoutCache* VisCushionLayout::GenerateCache()
{
    return new (std::nothrow) VisCushionLayoutCache(nullptr);
}

void VisCushionLayout::Draw(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size,
                            KUVCharacterFont* /*font*/, float scale)
{
    // Listeners of the selection may release the layout.
    const auto self = VisReference<VisCushionLayout>::Retain(this);
    const VisCushionLayoutCache* const cache = CushionCacheOf(GetCurrentRoot());
    if (!cache)
        return;
    CushionTreemap(cache->GetLastModeOfComputedMinimumExpandedSize(), origin, size, scale);
    SetCurrentSelection(GetCurrentSelection());
}

void VisCushionLayout::CushionTreemap(VisTreeMap_SliceDice mode, const KUVMathPoint2Df& origin,
                                      const KUVMathPoint2Df& size, float scale)
{
    VisDataTree* const root = GetCurrentRoot();
    VisCushionLayoutCache* const cache = CushionCacheOf(root);
    if (!cache)
        return;
    const int width = TruncateToInt(scale * size.x);
    const int height = TruncateToInt(scale * size.y);
    PixelBuffer pixels(CreatePixels(width, height));
    if (!pixels)
        return;
    CushionShading::Picture picture(width, height, scale);
    VisClearHiddenFrom(root->GetParent());
    {
        const ComputedCushions computed;
        PictureMaker maker(*this, *cache, origin, scale, picture);
        CushionWalk<PictureMaker>(maker, origin).Run(*root, *cache, mode, size);
        // The root may leave pixels to nobody, too, where numbers are odd.
        PictureMaker::Cover whole({0, width - 1, 0, height - 1}, VisAxis::X);
        maker.Add(whole, maker.BoxOf(CushionGeometry::LocalTo(origin, origin, size)));
        maker.Finish(whole);
    }
    picture.PaintInto(pixels.get());
    if (VisTreeSpaceFillingView* const view = cache->GetView())
        view->InitWithTexture(root->IsLeafObject(), ScaleAbout(origin, cache->GetPos(), scale),
                              {static_cast<float>(width), static_cast<float>(height)},
                              // The buffer was made as bytes; it only travels as words.
                              reinterpret_cast<unsigned int*>(pixels.release()),
                              /*withHighlightImages=*/0);
}
