// What the three layouts compute, on trees, caches and numbers taken from the input: drawing in all
// its forms, sizes, columns, values, flags, and caches that were copied, exchanged or taken away.
// There are no listeners here; see EventsFuzz.cpp for these.

#include "FuzzSupport.h"
#include "LayoutChecks.h"
#include "VisCushionLayout.h"
#include "VisIcicleLayout.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "private/CacheAccess.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

using fuzz::Bytes;
using fuzz::Kind;
using fuzz::NodeRef;
using fuzz::Require;

namespace {

using Cache = VisDataTree::VisDataTreeCache;
using CacheHolder = std::unique_ptr<Cache>;
using LayoutCache = VisTreeSpaceFillingLayoutCache;
using TreeMapCache = VisTreeMapLayout::VisTreeMapLayoutCache;
using CushionCache = VisCushionLayout::VisCushionLayoutCache;
using IcicleCache = VisIcicleLayout::VisIcicleLayoutCache;

/// Opens what a layout keeps for derived classes, and remembers what it was told.
template <class Base>
class Open : public Base {
public:
    template <class... Arguments>
    explicit Open(Arguments... arguments) : Base(arguments...)
    {
    }
    using Base::FromEventToNode;
    using Base::GenerateCache;
    using Base::GetDiscardedVisibility;
    using Base::GetNodeViaNavigation;
    using Base::Init;
    using Base::OnMouseSelection;
    using Base::ResetView;
    using Base::SetDiscardedVisibility;
};

class Scenario {
public:
    Scenario(Kind kind, Bytes bytes) : kind_(kind), bytes_(bytes)
    {
        for (std::size_t i = 0; i < NODES; ++i) {
            nodes_[i] = NodeRef::Adopt(new fuzz::Node);
            if (i > 0 && i + ALONE < NODES)
                nodes_[bytes_.Take() % i]->InsertChild(nodes_[i].Get(), 1);
        }
        for (std::size_t i = 0; i < LOOSE; ++i)
            loose_[i] = MakeLoose(i);
        MakeLayout();
    }
    Scenario(const Scenario&) = delete;
    Scenario& operator=(const Scenario&) = delete;
    ~Scenario()
    {
        layout_ = {};
        for (const CacheHolder& cache : loose_)
            Detach(*cache);
    }

    void Run()
    {
        while (!bytes_.AtEnd()) {
            Step();
            Check();
        }
    }

private:
    static constexpr std::size_t NODES = 20;
    static constexpr std::size_t ALONE = 3;
    static constexpr std::size_t LOOSE = 10;

    static CacheHolder MakeLoose(std::size_t index);
    void MakeLayout();
    template <class Layout>
    void Adopt(Open<Layout>* layout);
    void Detach(const Cache& cache);
    void Replace(NodeRef& node);

    void Step();
    void DetachHalfLinks();
    void ChangeTree(unsigned int operation);
    void ChangeNode(unsigned int operation);
    void ChangeValues(unsigned int operation);
    void ExchangeCaches(unsigned int operation);
    void UseLayout(unsigned int operation);
    void Look(unsigned int operation);
    void Draw();
    void UseGeometry();
    void UseTreeMap(VisTreeMapLayout& map);
    void UseCushion(VisCushionLayout& cushion);
    void UseIcicle(VisIcicleLayout& icicle);
    void UseCache(TreeMapCache& cache);
    void UseCache(const CushionCache& cache);
    void UseCache(IcicleCache& cache);
    void MeasureIcicle(IcicleCache& cache);
    void WalkIcicle(IcicleCache& cache);
    void Check();

    VisDataTree* TakeNode() { return nodes_[bytes_.Take() % NODES].Get(); }
    VisDataTree* TakeNodeOrNull()
    {
        const unsigned int choice = bytes_.Take() % (NODES + 1);
        return choice < NODES ? nodes_[choice].Get() : nullptr;
    }
    /// A size that is moderate more often than not.
    KUVMathPoint2Df TakeSize()
    {
        if (bytes_.Take() % 4 == 0)
            return {bytes_.TakeFloat(), bytes_.TakeFloat()};
        return {bytes_.TakeLength(), bytes_.TakeLength()};
    }
    float TakeScale() { return bytes_.Take() % 4 == 0 ? bytes_.TakeFloat() : 1.0F; }
    unsigned int TakeColumns()
    {
        const unsigned int choice = bytes_.Take();
        return choice < 16 ? 0U - choice : choice % 8;
    }
    VisTreeMap_SliceDice TakeMode() { return static_cast<VisTreeMap_SliceDice>(bytes_.Take() % 3); }
    template <class Class>
    Class* TakeCache()
    {
        return dynamic_cast<Class*>(TakeNode()->GetCache());
    }

    fuzz::LeakCheck leaks_;
    Kind kind_;
    Bytes bytes_;
    VisReference<fuzz::FuzzFont> font_ = VisReference<fuzz::FuzzFont>::Adopt(new fuzz::FuzzFont);
    VisReference<KUV2DBagRep> bag_ = VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep());
    std::array<NodeRef, NODES> nodes_;
    std::array<CacheHolder, LOOSE> loose_;
    VisReference<VisTreeSpaceFillingLayout> layout_;
    bool discardedToo_ = false;
};

/// Caches that belong to no layout, two of every class.
CacheHolder Scenario::MakeLoose(std::size_t index)
{
    switch (index % 5) {
    case 0:
        return std::make_unique<Cache>(nullptr);
    case 1:
        return std::make_unique<LayoutCache>(nullptr);
    case 2:
        return std::make_unique<TreeMapCache>(nullptr);
    case 3:
        return std::make_unique<CushionCache>(nullptr);
    default:
        return std::make_unique<IcicleCache>(nullptr);
    }
}

template <class Layout>
void Scenario::Adopt(Open<Layout>* layout)
{
    layout_ = VisReference<VisTreeSpaceFillingLayout>::Adopt(layout);
    discardedToo_ = bytes_.Take() % 4 == 0 || kind_ == Kind::Icicle;
    layout->SetDiscardedVisibility(discardedToo_ ? 1 : 0);
    const std::unique_ptr<LayoutCache> made(layout->GenerateCache());
    Require(made && !made->GetNode() && !made->GetView());
}

void Scenario::MakeLayout()
{
    // A view borrows the textures of its layout: caches in which a layout made views end with it.
    for (std::size_t i = 0; i < LOOSE; ++i) {
        Detach(*loose_[i]);
        loose_[i] = MakeLoose(i);
    }
    layout_ = {};
    VisDataTree* const root = bytes_.Take() % 4 == 0 ? TakeNode() : nodes_[0].Get();
    if (kind_ == Kind::Icicle) {
        Adopt(new Open<VisIcicleLayout>(nullptr, root, bag_.Get()));
    } else if (kind_ == Kind::Cushion) {
        auto* const cushion = new Open<VisCushionLayout>(nullptr);
        cushion->Init(root, bag_.Get());
        Adopt(cushion);
    } else {
        auto* const map = new Open<VisTreeMapLayout>(nullptr);
        map->Init(root, bag_.Get());
        Adopt(map);
    }
}

/// Also from a node that the cache has forgotten.
void Scenario::Detach(const Cache& cache)
{
    for (const NodeRef& node : nodes_) {
        if (node->GetCache() == &cache)
            node->SetCache(nullptr);
    }
}

void Scenario::Replace(NodeRef& node)
{
    for (const CacheHolder& cache : loose_) {
        if (node->GetCache() == cache.get())
            Detach(*cache);
    }
    node->RemoveParent(1);
    node = NodeRef::Adopt(new fuzz::Node);
}

// ---- trees, values and caches

void Scenario::Step()
{
    const unsigned int operation = bytes_.Take() % 48;
    if (operation < 6)
        ChangeTree(operation);
    else if (operation < 12)
        ChangeNode(operation - 6);
    else if (operation < 18)
        ChangeValues(operation - 12);
    else if (operation < 24)
        ExchangeCaches(operation - 18);
    else if (operation < 30)
        UseLayout(operation - 24);
    else if (operation < 34)
        Draw();
    else if (operation < 42)
        UseGeometry();
    else
        Look(operation - 42);
}

/// A node that leaves the tree can be told of the end of its cache only while they know each other.
void Scenario::DetachHalfLinks()
{
    for (const NodeRef& node : nodes_) {
        if (node->GetCache() && node->GetCache()->GetNode() != node.Get())
            node->SetCache(nullptr);
    }
}

void Scenario::ChangeTree(unsigned int operation)
{
    DetachHalfLinks();
    switch (operation) {
    case 0:
    case 1:
        TakeNode()->InsertChild(TakeNodeOrNull(), bytes_.TakeFlag());
        break;
    case 2:
        TakeNode()->RemoveParent(1);
        break;
    case 3:
        Replace(nodes_[bytes_.Take() % NODES]);
        break;
    case 4: {
        const unsigned char merge = bytes_.TakeFlag();
        TakeNode()->UpdateMerge(merge, bytes_.TakeFlag());
        break;
    }
    default:
        // A chain out of what there is.
        for (std::size_t i = 1; i < NODES; ++i)
            nodes_[i - 1]->InsertChild(nodes_[i].Get(), 1);
        break;
    }
}

void Scenario::ChangeNode(unsigned int operation)
{
    VisDataTree* const node = TakeNode();
    switch (operation) {
    case 0:
        node->SetIsLeafObject(bytes_.TakeFlag());
        break;
    case 1:
        node->SetIsMergeable(bytes_.TakeFlag());
        break;
    case 2:
        node->SetIsMerged(bytes_.TakeFlag());
        break;
    case 3:
        node->SetLabel(bytes_.TakeFlag() != 0 ? "a label that is cropped" : "");
        break;
    case 4:
        node->SetIconName(bytes_.TakeFlag() != 0 ? "icon" : "");
        break;
    default:
        if (node->GetCache())
            node->GetCache()->SetShowLabel(bytes_.TakeFlag());
        break;
    }
}

void Scenario::ChangeValues(unsigned int operation)
{
    Cache* const cache = TakeNode()->GetCache();
    if (!cache)
        return;
    switch (operation) {
    case 0:
        cache->SetSizeValue(bytes_.TakeValue());
        break;
    case 1:
        cache->SetColorValue(bytes_.TakeValue());
        break;
    case 2:
        cache->SetResizeWithValue(bytes_.TakeFlag());
        break;
    case 3:
        cache->SetColorWithValue(bytes_.TakeFlag());
        break;
    case 4:
        cache->DoNotUseValue();
        break;
    default:
        cache->ResetCache();
        break;
    }
}

/// Assigns where both are of the class.
template <class Class>
bool Assign(Cache& to, Cache& from)
{
    auto* const target = dynamic_cast<Class*>(&to);
    auto* const source = dynamic_cast<Class*>(&from);
    if (!target || !source)
        return false;
    *target = *source;
    return true;
}

bool AssignAsOneClass(Cache& to, Cache& from)
{
    return Assign<IcicleCache>(to, from) || Assign<CushionCache>(to, from) ||
           Assign<TreeMapCache>(to, from) || Assign<LayoutCache>(to, from) ||
           Assign<Cache>(to, from);
}

void Scenario::ExchangeCaches(unsigned int operation)
{
    Cache& loose = *loose_[bytes_.Take() % LOOSE];
    VisDataTree* const node = TakeNode();
    Cache* const own = node->GetCache();
    switch (operation) {
    case 0:
        Detach(loose);
        node->SetCache(nullptr);
        node->SetCache(&loose);
        break;
    case 1:
        Detach(loose);
        break;
    case 2:
        if (bytes_.Take() % 4 == 0)
            node->SetCache(nullptr);
        break;
    case 3:
        if (own)
            AssignAsOneClass(loose, *own);
        break;
    case 4:
        if (own && fuzz::IsInTree(node, layout_->GetTreeRoot()) && bytes_.Take() % 4 == 0)
            AssignAsOneClass(*own, loose);
        break;
    default:
        if (own) {
            const CacheHolder clone(own->Clone());
            Require(clone && !clone->GetNode());
            Require(clone->IsExpanded() == own->IsExpanded());
            Require(clone->GetSizeValue() == own->GetSizeValue());
            AssignAsOneClass(loose, *clone);
        }
        break;
    }
}

// ---- layouts

void Scenario::UseLayout(unsigned int operation)
{
    switch (operation) {
    case 0:
        if (bytes_.Take() % 4 == 0)
            MakeLayout();
        break;
    case 1:
        layout_->SetTreeRoot(TakeNodeOrNull());
        break;
    case 2: {
        VisDataTree* const node = TakeNodeOrNull();
        layout_->SetRedrawOnSetCurrentRoot(bytes_.TakeFlag());
        layout_->SetCurrentRoot(node, bytes_.TakeFlag());
        break;
    }
    case 3:
        Require(layout_->Unzoom() <= 1);
        break;
    case 4:
        layout_->SetCurrentSelection(TakeNodeOrNull());
        break;
    default: {
        VisDataTree* const node = TakeNodeOrNull();
        if (!node || node->GetCache())
            layout_->SetCurrentHighlightedNode(node);
        break;
    }
    }
}

void Scenario::Look(unsigned int operation)
{
    if (operation < 3) {
        const float x = bytes_.TakeFloat();
        fuzz::CheckHit(*layout_.Get(), discardedToo_, x, bytes_.TakeFloat());
        return;
    }
    const auto* const cache = TakeCache<LayoutCache>();
    if (!cache)
        return;
    const KUVMathPoint2Df corner = cache->GetPos();
    const KUVMathPoint2Df size = cache->GetSize();
    const float at = static_cast<float>(bytes_.Take() % 3) / 2.0F;
    fuzz::CheckHit(*layout_.Get(), discardedToo_, corner.x + at * size.x, corner.y + at * size.y);
    Require(cache->IsVisible() <= 1);
    const VisDataTree* const visible = cache->GetVisibleParent();
    Require(!visible || fuzz::Node::Lives(visible));
    cache->GetLabelToDisplay(static_cast<VisDataTree_ApplyValueTo>(bytes_.Take() % 4));
    const int level = static_cast<int>(bytes_.Take()) - 100;
    Require((cache->GetRGBAColor(level, TakeNodeOrNull()) & 0xFFU) == 0xFFU);
}

void Scenario::Draw()
{
    const KUVMathPoint2Df origin = bytes_.TakeFlag() != 0
                                       ? KUVMathPoint2Df{bytes_.TakeFloat(), bytes_.TakeFloat()}
                                       : KUVMathPoint2Df{0, 0};
    const KUVMathPoint2Df size = TakeSize();
    layout_->Draw(origin, size, bytes_.TakeFlag() != 0 ? font_.Get() : nullptr, TakeScale());
}

void Scenario::UseGeometry()
{
    if (bytes_.TakeFlag() == 0) {
        Cache* const cache = TakeNode()->GetCache();
        if (auto* const ofMap = dynamic_cast<TreeMapCache*>(cache))
            UseCache(*ofMap);
        else if (const auto* const ofCushion = dynamic_cast<const CushionCache*>(cache))
            UseCache(*ofCushion);
        else if (auto* const ofIcicle = dynamic_cast<IcicleCache*>(cache))
            UseCache(*ofIcicle);
    } else if (auto* const map = dynamic_cast<VisTreeMapLayout*>(layout_.Get())) {
        UseTreeMap(*map);
    } else if (auto* const cushion = dynamic_cast<VisCushionLayout*>(layout_.Get())) {
        UseCushion(*cushion);
    } else if (auto* const icicle = dynamic_cast<VisIcicleLayout*>(layout_.Get())) {
        UseIcicle(*icicle);
    }
}

// ---- tree map

void Scenario::UseTreeMap(VisTreeMapLayout& map)
{
    const KUVMathPoint2Df origin{bytes_.TakeFloat(), bytes_.TakeFloat()};
    const KUVMathPoint2Df size = TakeSize();
    const float scale = TakeScale();
    if (bytes_.TakeFlag() != 0)
        map.LayoutChildrenInGrid(origin, size, font_.Get(), scale);
    else
        map.SliceAndDice(TakeMode(), origin, size, font_.Get(), scale);
}

void Scenario::UseCache(TreeMapCache& cache)
{
    const VisTreeMap_SliceDice mode = TakeMode();
    const KUVMathPoint2Df size = TakeSize();
    switch (bytes_.Take() % 4) {
    case 0: {
        const KUVMathPoint2Df minimum = cache.ComputeMinimumExpandedSize(mode);
        Require(!cache.GetNode() || (minimum.x >= 2.0F && minimum.y >= 15.0F));
        break;
    }
    case 1: {
        float sum = 0.0F;
        Require(cache.CanSliceAndDiceExpandNode(mode, size, &sum) <= 1);
        Require(sum >= -1.0F);
        break;
    }
    case 2:
        Require(cache.CanLayoutChildrenInGrid(size) <= 1);
        break;
    default:
        cache.SetLastModeOfComputedMinimumExpandedSize(mode);
        Require(cache.GetLastModeOfComputedMinimumExpandedSize() == mode);
        break;
    }
}

// ---- cushion

void Scenario::UseCushion(VisCushionLayout& cushion)
{
    const KUVMathPoint2Df origin{bytes_.TakeFloat(), bytes_.TakeFloat()};
    const KUVMathPoint2Df size = TakeSize();
    const float scale = TakeScale();
    cushion.CushionTreemap(TakeMode(), origin, size, scale);
}

void Scenario::UseCache(const CushionCache& cache)
{
    Require(cache.IsCushionComputed() <= 1);
    Require(cache.GetSubtreeValue() >= 0);
    for (int i = 0; i < 4; ++i)
        static_cast<void>(cache.GetSurface()[i]);
}

// ---- icicle

void Scenario::UseIcicle(VisIcicleLayout& icicle)
{
    switch (bytes_.Take() % 6) {
    case 0:
    case 1: {
        const KUVMathPoint2Df origin{bytes_.TakeFloat(), bytes_.TakeFloat()};
        const KUVMathPoint2Df size = TakeSize();
        const unsigned int columns = TakeColumns();
        const unsigned char relative = bytes_.TakeFlag();
        const unsigned char inlineLabels = bytes_.TakeFlag();
        icicle.IciclePlot(origin, size, font_.Get(), columns, TakeScale(), relative, inlineLabels);
        break;
    }
    case 2:
        icicle.AlignIciclePlotLeaves(TakeNodeOrNull());
        break;
    case 3:
        icicle.ResetIciclePlotAlignment();
        break;
    case 4:
        icicle.SetNLastNodes(TakeColumns());
        break;
    default:
        icicle.ApplyPageUpPageDown(bytes_.TakeFlag() != 0 ? 0x400000 : 0x700000);
        break;
    }
    Require(!layout_->GetCurrentRoot() || icicle.GetCache() == nullptr ||
            icicle.GetCache() == layout_->GetCurrentRoot()->GetCache());
}

void Scenario::UseCache(IcicleCache& cache)
{
    const int major = cache.GetMinIciclePlotSizeMajor();
    Require(major == 32 || major == 64 || major == 96);
    if (bytes_.TakeFlag() != 0)
        MeasureIcicle(cache);
    else
        WalkIcicle(cache);
}

/// What the two forms of an operation say is the same, the one that stores nothing first.
void Scenario::MeasureIcicle(IcicleCache& cache)
{
    const IcicleCache& constant = cache;
    const unsigned int cursor = constant.ComputeIcicleCursor();
    Require(cache.ComputeIcicleCursor() == cursor);
    const unsigned int columns = TakeColumns();
    const unsigned char visible = constant.IsIcicleNodeVisibleFromLeaves(columns);
    Require(visible <= 1);
    Require(cache.IsIcicleNodeVisibleFromLeaves(columns) == visible);
    const int depth = static_cast<int>(bytes_.Take() % 16);
    Require(cache.ComputeMinDepthWithVisibility(depth, static_cast<int>(columns)) >= depth);
    const unsigned char relative = bytes_.TakeFlag();
    const unsigned char inlineLabels = bytes_.TakeFlag();
    const unsigned int minDepth = TakeColumns();
    const unsigned int maxDepth = TakeColumns();
    const KUVMathPoint2Df size = constant.ComputeIcicleSize(
        columns, relative, inlineLabels, static_cast<unsigned int>(depth), minDepth, maxDepth);
    const KUVMathPoint2Df& stored = cache.ComputeIcicleSize(
        columns, relative, inlineLabels, static_cast<unsigned int>(depth), minDepth, maxDepth);
    Require(stored.x == size.x && stored.y == size.y);
    Require(&stored == &cache.GetIcicleSize());
}

void Scenario::WalkIcicle(IcicleCache& cache)
{
    unsigned int cursor = bytes_.Take() % 8;
    const unsigned int columns = TakeColumns();
    VisDataTree* const root = layout_->GetCurrentRoot();
    const VisDataTree* reached = nullptr;
    switch (bytes_.Take() % 4) {
    case 0:
        reached = cache.GetNextNodeIcicleUpDirection(cursor, root, columns);
        break;
    case 1:
        reached = cache.GetNextNodeIcicleDownDirection(cursor, root, columns);
        break;
    case 2:
        reached = cache.GetNextNodeIcicleLeftDirection(cursor, root, columns);
        break;
    default:
        reached = cache.GetNextNodeIcicleRightDirection(cursor);
        break;
    }
    Require((reached != nullptr) == (cache.GetNode() != nullptr));
    Require(!reached || fuzz::Node::Lives(reached));
}

// ---- checks

void Scenario::Check()
{
    for (const NodeRef& node : nodes_)
        fuzz::CheckNode(*node.Get());
    fuzz::CheckSlots(*layout_.Get(), /*inTree=*/false);
    Require(layout_->GetReferenceCount() == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Bytes bytes(data, size);
    const auto kind = static_cast<Kind>(bytes.Take() % fuzz::KINDS);
    Scenario(kind, bytes).Run();
    return 0;
}
