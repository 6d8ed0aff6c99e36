#include "VisTreeSpaceFillingLayout.h"

#include "VisDataTree.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "VisTreeSpaceFillingLayoutCachedTextures.h"
#include "VisTreeSpaceFillingLayoutNotification.h"
#include "VisTreeSpaceFillingView.h"
#include "private/CacheAccess.h"
#include "private/GuardedNode.h"
#include "private/HiddenBelow.h"
#include "private/Reference.h"
#include "private/TreeAccess.h"
#include "private/TreeWalk.h"

#include "KUV2D.h"

#include <new>
#include <utility>

namespace {

constexpr unsigned int MAX_DISPATCH_DEPTH = 64;

/// The events are classes of the object model, though nothing is ever made of them: the name of an
/// event is a class name, registered when it is first asked for.
const char* RegisteredEvent(const char* name)
{
    KUVMetaClass::RetrieveOrCreate(name, KUVNotification::MetaObject(), "VisualizationCommands",
                                   sizeof(KUVNotification));
    return name;
}

VisTreeSpaceFillingView* ViewOf(const VisDataTree* node)
{
    VisTreeSpaceFillingLayoutCache* const cache = VisCacheAccess::LayoutCacheOf(node);
    return cache ? cache->GetView() : nullptr;
}

void SetSelectionStatus(const VisDataTree* node, unsigned char selected)
{
    if (VisTreeSpaceFillingView* const view = ViewOf(node))
        view->SetSelectionStatus(selected);
}

void SetHighlightStatus(const VisDataTree* node, unsigned char highlighted)
{
    if (VisTreeSpaceFillingView* const view = ViewOf(node))
        view->SetHighlightStatus(highlighted);
}

}  // namespace

// ---- cache

VisTreeSpaceFillingLayoutCache::VisTreeSpaceFillingLayoutCache(VisDataTree* node)
    : VisDataTreeCache(node)
{
    VisCacheAccess::SetKind(*this, VisCacheKind::Layout);
}

VisTreeSpaceFillingLayoutCache::VisTreeSpaceFillingLayoutCache(
    VisTreeSpaceFillingLayoutCache& other)
    : VisDataTreeCache(other), position_(other.position_), size_(other.size_),
      computedMinimumSize_(other.computedMinimumSize_)
{
    VisCacheAccess::SetKind(*this, VisCacheKind::Layout);
}

VisTreeSpaceFillingLayoutCache&
VisTreeSpaceFillingLayoutCache::operator=(VisTreeSpaceFillingLayoutCache& other)
{
    if (this == &other)
        return *this;
    VisDataTreeCache::operator=(other);
    position_ = other.position_;
    size_ = other.size_;
    computedMinimumSize_ = other.computedMinimumSize_;
    return *this;
}

VisTreeSpaceFillingLayoutCache::~VisTreeSpaceFillingLayoutCache()
{
    delete view_;
    view_ = nullptr;
}

void VisTreeSpaceFillingLayoutCache::InternalResetCache() { computedMinimumSize_ = {-1.0F, -1.0F}; }

// ---- notification

KUV_IMPLEMENT_CLASS(VisTreeSpaceFillingLayoutNotification, KUVNotification, "VisualizationCommands")

VisTreeSpaceFillingLayoutNotification::VisTreeSpaceFillingLayoutNotification(
    VisDataTree* previousNode, VisDataTree* node)
    : previousNode_(previousNode), node_(node)
{
}

VisTreeSpaceFillingLayoutNotification::~VisTreeSpaceFillingLayoutNotification() = default;

const char* VisTreeSpaceFillingLayout::ON_SET_CURRENT_ROOT()
{
    return RegisteredEvent("VisTreeSpaceFillingLayoutON_SET_CURRENT_ROOTEvt");
}

const char* VisTreeSpaceFillingLayout::ON_SELECT_NODE()
{
    return RegisteredEvent("VisTreeSpaceFillingLayoutON_SELECT_NODEEvt");
}

const char* VisTreeSpaceFillingLayout::ON_HOVER_NODE()
{
    return RegisteredEvent("VisTreeSpaceFillingLayoutON_HOVER_NODEEvt");
}

const char* VisTreeSpaceFillingLayout::ON_RIGHT_CLICK_NODE()
{
    return RegisteredEvent("VisTreeSpaceFillingLayoutON_RIGHT_CLICK_NODEEvt");
}

const char* VisTreeSpaceFillingLayout::ON_DOUBLE_CLICK()
{
    return RegisteredEvent("VisTreeSpaceFillingLayoutON_DOUBLE_CLICKEvt");
}

// ---- construction and destruction

struct VisTreeSpaceFillingLayout::Slots {
    VisGuardedNode currentRoot;
    VisGuardedNode leafSelection;
    VisGuardedNode selection;
    VisGuardedNode highlighted;
    VisGuardedNodeStack lastRoots;
};

KUV_IMPLEMENT_CLASS(VisTreeSpaceFillingLayout, KUVCommand, "VisualizationCommands")

VisTreeSpaceFillingLayout::VisTreeSpaceFillingLayout(KUVCommand* parent)
    : KUVCommand(parent, "VisTreeSpaceDataViz"), slots_(std::make_unique<Slots>())
{
}

VisTreeSpaceFillingLayout::~VisTreeSpaceFillingLayout()
{
    ReleaseTree();
    cachedTextures_.reset();
    if (bagRep_)
        bagRep_->Release();
}

void VisTreeSpaceFillingLayout::Init(VisDataTree* root, KUV2DBagRep* bagRep)
{
    if (!root)
        return;
    cachedTextures_ = std::make_unique<VisTreeSpaceFillingLayoutCachedTextures>();
    const auto former = VisReference<KUV2DBagRep>::Adopt(bagRep_);
    bagRep_ = VisReference<KUV2DBagRep>::Retain(bagRep).Detach();
    SetTreeRoot(root);
}

// ---- tree

void VisTreeSpaceFillingLayout::Draw(const KUVMathPoint2Df& /*position*/,
                                     const KUVMathPoint2Df& /*size*/, KUVCharacterFont* font,
                                     float scale)
{
    font_ = font;
    drawScale_ = scale;
}

void VisTreeSpaceFillingLayout::SetTreeRoot(VisDataTree* root)
{
    // The reference about to be given back may be the last on the old root, and with it on the new.
    const auto keep = VisReference<VisDataTree>::Retain(root);
    ReleaseTree();
    if (!root)
        return;
    root->AddRef();
    treeRoot_ = root;
    try {
        LinkCaches();
    } catch (...) {
        ReleaseTree();
        throw;
    }
    slots_->currentRoot.Set(root);
    VisDataTree* const leaf = root->GetFirstLeaf();
    slots_->selection.Set(leaf);
    slots_->leafSelection.Set(leaf);
}

void VisTreeSpaceFillingLayout::LinkCaches()
{
    caches_.reserve(treeRoot_->ComputeNumberOfNodes());
    VisPreOrderWalk<VisDataTree> walk(treeRoot_);
    while (VisDataTree* const node = walk.Next()) {
        std::unique_ptr<VisTreeSpaceFillingLayoutCache> made(GenerateCache());
        if (!made)
            throw std::bad_alloc();
        VisTreeSpaceFillingLayoutCache* const cache = made.get();
        caches_.push_back(cache);
        static_cast<void>(made.release());
        VisTreeAccess::MarkOwnedByLayout(*cache);
        if (node != treeRoot_ && !node->GetCache() && !cache->GetNode()) {
            VisTreeAccess::LinkNewCache(*node, *cache);
            continue;
        }
        // A node that has a cache already ends up with none. The root may stand below nodes with
        // caches of their own.
        node->SetCache(cache);
        if (node->GetCache() == cache)
            VisTreeAccess::MarkLayoutCache(*node);
    }
}

void VisTreeSpaceFillingLayout::ReleaseTree() noexcept
{
    if (treeRoot_) {
        UnlinkCaches();
        std::exchange(treeRoot_, nullptr)->Release();
    }
    const auto caches = std::exchange(caches_, {});
    for (VisTreeSpaceFillingLayoutCache* const cache : caches) {
        DeleteView(cache);
        delete cache;
    }
    slots_->currentRoot.Set(nullptr);
    slots_->selection.Set(nullptr);
    slots_->leafSelection.Set(nullptr);
    slots_->highlighted.Set(nullptr);
}

void VisTreeSpaceFillingLayout::UnlinkCaches() noexcept
{
    try {
        VisPreOrderWalk<VisDataTree> walk(treeRoot_);
        while (VisDataTree* const node = walk.Next())
            node->SetCache(nullptr);
    } catch (const std::bad_alloc&) {
        // No memory for the walk: the loop below unlinks at least this layout's own caches.
    }
    // Nodes that were taken out of the tree while it was shown.
    for (VisTreeSpaceFillingLayoutCache* const cache : caches_) {
        if (!VisTreeAccess::IsLinkedByLayout(*cache))
            continue;
        VisDataTree* const node = cache->GetNode();
        if (node && node->GetCache() == cache)
            node->SetCache(nullptr);
    }
}

// ---- current root

const VisDataTree* VisTreeSpaceFillingLayout::GetCurrentRoot() const
{
    return slots_->currentRoot.Get();
}

VisDataTree* VisTreeSpaceFillingLayout::GetCurrentRoot() { return slots_->currentRoot.Get(); }

const std::stack<VisDataTree*>& VisTreeSpaceFillingLayout::GetLastCurrentTreeRoots() const
{
    return slots_->lastRoots.Get();
}

void VisTreeSpaceFillingLayout::EmptyStackOfLastTreeRoots() { slots_->lastRoots.Clear(); }

void VisTreeSpaceFillingLayout::ReplaceLastCurrentTreeRoots(const std::stack<VisDataTree*>& roots)
{
    if (&roots != &slots_->lastRoots.Get())
        slots_->lastRoots.Replace(roots);
}

unsigned char VisTreeSpaceFillingLayout::Unzoom()
{
    while (!slots_->lastRoots.Get().empty()) {
        if (VisDataTree* const root = slots_->lastRoots.Pop()) {
            SetCurrentRoot(root, /*pushOnStack=*/0);
            return 1;
        }
    }
    return 0;
}

void VisTreeSpaceFillingLayout::SetCurrentRoot(VisDataTree* node, unsigned char pushOnStack)
{
    const VisGuardedNode former(slots_->currentRoot.Get());
    // A current root that died leaves the way back to the tree root open.
    if (node == former.Get() && (node || !treeRoot_))
        return;
    const auto self = VisReference<VisTreeSpaceFillingLayout>::Retain(this);
    const VisGuardedNode root(node ? node : treeRoot_);
    const bool anyRoot = root.Get() != nullptr;

    VisTreeSpaceFillingLayoutCache* const cache = VisCacheAccess::LayoutCacheOf(former.Get());
    const bool redraw = cache != nullptr;
    const KUVMathPoint2Df position = cache ? cache->GetPos() : KUVMathPoint2Df();
    const KUVMathPoint2Df size = cache ? cache->GetSize() : KUVMathPoint2Df();
    if (former.Get()) {
        if (pushOnStack != 0)
            slots_->lastRoots.Push(former.Get());
        ResetViewOf(former.Get());
        // It was placed on its own, wherever its siblings are.
        VisCacheAccess::ForgetChildOrder(former.Get()->GetParent());
    }
    slots_->currentRoot.Set(root.Get());
    // What is drawn next does not hang below nodes that count as hidden.
    VisClearHiddenFrom(root.Get());

    const VisDataTree* const selection = slots_->selection.Get();
    const bool keepsSelection =
        selection && (selection == root.Get() || selection->HasNodeAsParent(root.Get()) != 0);
    if (anyRoot && !keepsSelection)
        SetCurrentSelection(root.Get());
    if (redraw && redrawOnSetCurrentRoot_ != 0)
        Draw(position, size, font_, drawScale_);
    // A root that died on the way is not announced.
    if (!anyRoot || root.Get())
        Dispatch(ON_SET_CURRENT_ROOT(), former.Get(), root.Get());
}

// ---- selection and highlight

const VisDataTree* VisTreeSpaceFillingLayout::GetCurrentSelection() const
{
    return slots_->selection.Get();
}

VisDataTree* VisTreeSpaceFillingLayout::GetCurrentSelection() { return slots_->selection.Get(); }

const VisDataTree* VisTreeSpaceFillingLayout::GetCurrentLeafSelection() const
{
    return slots_->leafSelection.Get();
}

VisDataTree* VisTreeSpaceFillingLayout::GetCurrentLeafSelection()
{
    return slots_->leafSelection.Get();
}

void VisTreeSpaceFillingLayout::UpdateViewsOfSelection(VisDataTree* node)
{
    VisDataTree* const former = slots_->selection.Get();
    if (node->GetChildren().empty()) {
        SetSelectionStatus(slots_->leafSelection.Get(), 0);
        SetSelectionStatus(former, 0);
        if (leafSelectionTracking_ != 0)
            slots_->leafSelection.Set(node);
    } else if (former && former != slots_->leafSelection.Get()) {
        SetSelectionStatus(former, 0);
    }
    slots_->selection.Set(node);
    SetSelectionStatus(node, 1);

    // Selecting an ancestor of the selected leaf keeps the leaf.
    VisDataTree* const leaf = slots_->leafSelection.Get();
    if (leaf && leaf != node && leaf->HasNodeAsParent(node) == 0) {
        SetSelectionStatus(leaf, 0);
        slots_->leafSelection.Set(nullptr);
    }
}

void VisTreeSpaceFillingLayout::SetCurrentSelection(VisDataTree* node)
{
    if (!node)
        return;
    const auto self = VisReference<VisTreeSpaceFillingLayout>::Retain(this);
    const VisGuardedNode selected(node);
    const VisGuardedNode former(slots_->selection.Get());
    UpdateViewsOfSelection(node);

    VisDataTree* const highlighted = slots_->highlighted.Get();
    if (highlighted && highlighted != node) {
        SetHighlightStatus(highlighted, 0);
        slots_->highlighted.Set(nullptr);
        Dispatch(ON_HOVER_NODE(), highlighted, nullptr);
    }
    // A node that died on the way is not announced.
    if (selected.Get())
        Dispatch(ON_SELECT_NODE(), former.Get(), selected.Get());
}

void VisTreeSpaceFillingLayout::SetCurrentHighlightedNode(VisDataTree* node)
{
    VisDataTree* const former = slots_->highlighted.Get();
    if (node == former)
        return;
    const auto self = VisReference<VisTreeSpaceFillingLayout>::Retain(this);
    SetHighlightStatus(former, 0);
    slots_->highlighted.Set(node);
    if (!node)
        return;
    SetHighlightStatus(node, 1);
    Dispatch(ON_HOVER_NODE(), former, node);
}

/// Counts how deep the notifications of a layout are nested.
class VisTreeSpaceFillingLayout::DispatchLevel {
public:
    explicit DispatchLevel(VisTreeSpaceFillingLayout& layout) : layout_(layout)
    {
        if (++layout_.dispatchDepth_ > MAX_DISPATCH_DEPTH)
            layout_.silenced_ = true;
    }
    ~DispatchLevel()
    {
        if (--layout_.dispatchDepth_ == 0)
            layout_.silenced_ = false;
    }
    DispatchLevel(const DispatchLevel&) = delete;
    DispatchLevel& operator=(const DispatchLevel&) = delete;

private:
    VisTreeSpaceFillingLayout& layout_;
};

void VisTreeSpaceFillingLayout::Dispatch(const char* name, VisDataTree* previousNode,
                                         VisDataTree* node)
{
    // A listener may free the nodes; those behind it are given the same pointers.
    const auto keepPrevious = VisReference<VisDataTree>::Retain(previousNode);
    const auto keepNode = VisReference<VisDataTree>::Retain(node);
    VisTreeSpaceFillingLayoutNotification notification(previousNode, node);
    Dispatch(name, &notification);
}

void VisTreeSpaceFillingLayout::Dispatch(const char* name, KUVNotification* notification)
{
    const DispatchLevel level(*this);
    // Once the limit was reached everything stays silent until the outermost dispatch has ended:
    // a listener that answers each notification with two would otherwise still send 2^64.
    if (silenced_)
        return;
    if (KUVCallbackManager* const callbacks = GetCallbackManager())
        callbacks->DispatchCallbacks(name, notification, this);
}

// ---- views

VisTreeSpaceFillingView*
VisTreeSpaceFillingLayout::CreateView(VisTreeSpaceFillingLayoutCache* cache)
{
    if (!cache)
        return nullptr;
    VisTreeSpaceFillingView*& view = VisCacheAccess::View(*cache);
    if (view)
        return view;
    try {
        auto made = std::make_unique<VisTreeSpaceFillingView>(cachedTextures_.get());
        if (bagRep_ && made->GetBagRep())
            bagRep_->AddChild(made->GetBagRep());
        view = made.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    return view;
}

void VisTreeSpaceFillingLayout::DeleteView(VisTreeSpaceFillingLayoutCache* cache)
{
    if (!cache || !cache->GetView())
        return;
    VisTreeSpaceFillingView*& view = VisCacheAccess::View(*cache);
    if (bagRep_ && view->GetBagRep())
        bagRep_->RemoveChild(view->GetBagRep());
    delete std::exchange(view, nullptr);
}

void VisTreeSpaceFillingLayout::HideNode(VisTreeSpaceFillingLayoutCache& cache)
{
    DeleteView(&cache);
    VisCacheAccess::SetExpanded(cache, 0);
    VisCacheAccess::SetDiscarded(cache, 1);
}

void VisTreeSpaceFillingLayout::ResetView(VisTreeSpaceFillingLayoutCache* cache)
{
    if (!cache)
        return;
    HideNode(*cache);
    if (VisDataTree* const node = cache->GetNode())
        ResetViewsBelow(*node, *cache);
}

void VisTreeSpaceFillingLayout::ResetViewOf(VisDataTree* node)
{
    if (VisTreeSpaceFillingLayoutCache* const cache = VisCacheAccess::LayoutCacheOf(node)) {
        HideNode(*cache);
        ResetViewsBelow(*node, *cache);
    }
}

void VisTreeSpaceFillingLayout::ResetViewsBelow(VisDataTree& top,
                                                VisTreeSpaceFillingLayoutCache& cache)
{
    if (VisCacheAccess::HiddenBelow(cache) != 0)
        return;
    VisPreOrderWalk<VisDataTree> walk(&top);
    VisDataTree* node = walk.Next();
    VisCacheAccess::HiddenBelow(cache) = 1;
    try {
        while (VisDataTree* const next = walk.Next()) {
            node = next;
            VisTreeSpaceFillingLayoutCache* const below = VisCacheAccess::LayoutCacheOf(node);
            if (!below) {
                walk.SkipChildren();
                continue;
            }
            HideNode(*below);
            if (VisCacheAccess::HiddenBelow(*below) != 0)
                walk.SkipChildren();
            else
                VisCacheAccess::HiddenBelow(*below) = 1;
            // A cache that forgot its node tells nobody when it is shown again by an assignment.
            if (below->GetNode() != node)
                VisClearHiddenFrom(node->GetParent());
        }
    } catch (const std::bad_alloc&) {
        // The nodes above the place where the walk stopped are those not hidden as a whole.
        VisClearHiddenFrom(node);
        throw;
    }
}
