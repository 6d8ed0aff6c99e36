#include "VisDataTree.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "private/CacheAccess.h"
#include "private/ChildOrder.h"
#include "private/GuardedNode.h"
#include "private/KeyCodes.h"
#include "private/Reference.h"

#include "KUVEvents.h"
#include "KUVViewer.h"

#include <new>
#include <vector>

namespace {

constexpr int LEFT_BUTTON = 1;
constexpr int MIDDLE_BUTTON = 2;
constexpr int RIGHT_BUTTON = 3;
constexpr int LEFT_BUTTON_ALONE = 1;
constexpr int RIGHT_BUTTON_ALONE = 4;

constexpr int KEY_IS_DOWN = 1;

constexpr unsigned int USED = 0;
constexpr unsigned int NOT_USED = 1;

template <class Class>
bool IsOf(const KUVBaseUnknown& object)
{
    const KUVMetaClass* const meta = object.GetMetaObject();
    return meta && meta->IsAKindOf(Class::ClassId()) != 0;
}

const KUVMouseDevice* MouseOf(const KUVDeviceEvent& event)
{
    const KUVDevice* const device = event.GetDevice();
    return device && IsOf<KUVMouseDevice>(*device) ? static_cast<const KUVMouseDevice*>(device)
                                                   : nullptr;
}

using LayoutCache = VisTreeSpaceFillingLayoutCache;

/// Whether `at` lies between two bounds, both included. Not-a-number lies nowhere.
bool IsWithin(float at, float lower, float extent) { return lower <= at && at <= lower + extent; }

/// A hit test: where, and whether discarded nodes are searched through.
struct Target {
    float x;
    float y;
    bool discardedToo;

    /// Whether the search goes into the node with this cache, or null.
    bool IsIn(const LayoutCache* cache) const
    {
        return cache && (cache->IsDiscarded() == 0 || discardedToo) &&
               IsWithin(x, cache->GetPos().x, cache->GetSize().x) &&
               IsWithin(y, cache->GetPos().y, cache->GetSize().y);
    }
};

/// Gives those children of a node into which a hit test goes, in child order.
///
/// Where both bounds along an axis follow the child order, the children that hold a coordinate
/// stand side by side: the first is found by bisection, and behind the last the search ends.
class ChildSearch {
public:
    ChildSearch(VisDataTree* node, const Target& target)
        : node_(node), end_(node->GetChildren().size())
    {
        LayoutCache& cache = *VisCacheAccess::LayoutCacheOf(node);
        order_ = VisCacheAccess::ChildOrder(cache);
        // A discarded node is never hit, wherever it lies.
        if (VisCacheAccess::HiddenBelow(cache) != 0)
            next_ = end_;
        else if (order_ != VisChildOrder::Unknown)
            next_ = FirstNotBefore(target);
    }

    VisDataTree* GetNode() const { return node_; }

    /// The next child that holds the target, or null.
    VisDataTree* Next(const Target& target)
    {
        const std::vector<VisDataTree*>& children = node_->GetChildren();
        while (next_ < end_) {
            VisDataTree* const child = children[next_++];
            const LayoutCache* const cache = VisCacheAccess::LayoutCacheOf(child);
            if (target.IsIn(cache))
                return child;
            if (cache && Compare(*cache, target) > 0)
                next_ = end_;
        }
        return nullptr;
    }

private:
    /// Below 0: the child and all before it do not reach the target; above 0: the child and all
    /// behind it do not.
    int Compare(const LayoutCache& cache, const Target& target) const
    {
        switch (order_) {
        case VisChildOrder::RisesAlongX:
            return Side(target.x, cache.GetPos().x, cache.GetSize().x);
        case VisChildOrder::FallsAlongX:
            return -Side(target.x, cache.GetPos().x, cache.GetSize().x);
        case VisChildOrder::RisesAlongY:
            return Side(target.y, cache.GetPos().y, cache.GetSize().y);
        case VisChildOrder::FallsAlongY:
            return -Side(target.y, cache.GetPos().y, cache.GetSize().y);
        case VisChildOrder::Unknown:
            break;
        }
        return 0;
    }

    static int Side(float at, float lower, float extent)
    {
        if (lower + extent < at)
            return -1;
        return at < lower ? 1 : 0;
    }

    /// The first child that may hold the target. Children without cache are passed over. The child
    /// in front is asked first: in deep trees the way often leads down there.
    std::size_t FirstNotBefore(const Target& target) const
    {
        const std::vector<VisDataTree*>& children = node_->GetChildren();
        std::size_t low = 0;
        std::size_t high = end_;
        for (std::size_t middle = 0; low < high; middle = low + (high - low) / 2) {
            std::size_t probe = middle;
            const LayoutCache* cache = VisCacheAccess::LayoutCacheOf(children[probe]);
            while (!cache && ++probe < high)
                cache = VisCacheAccess::LayoutCacheOf(children[probe]);
            if (cache && Compare(*cache, target) < 0)
                low = probe + 1;
            else
                high = middle;
        }
        return low;
    }

    VisDataTree* node_;
    std::size_t next_ = 0;
    std::size_t end_;
    VisChildOrder order_;
};

/// The first node below `start` on the way down to `end` that is not merged or has no children;
/// null when there is none, and when `end` is not below `start`.
///
/// Climbs once: a step from each merged node towards `end` would cost the square of the depth.
VisDataTree* FirstShownTowards(const VisDataTree* start, VisDataTree* end)
{
    VisDataTree* found = nullptr;
    VisDataTree* node = end;
    for (; node && node != start; node = node->GetParent()) {
        if (node->IsMerged() == 0 || node->GetChildren().empty())
            found = node;
    }
    return node ? found : nullptr;
}

}  // namespace

// ---- hit test

VisDataTree* VisTreeSpaceFillingLayout::FindNodeAtPosition(float x, float y)
{
    const Target target{x, y, discardedVisibility_ != 0};
    VisDataTree* const root = GetCurrentRoot();
    if (!target.IsIn(VisCacheAccess::LayoutCacheOf(root)))
        return nullptr;
    // The search comes back only out of discarded nodes: any other is hit if nothing below it is.
    std::vector<ChildSearch> outer;
    ChildSearch search(root, target);
    for (;;) {
        if (VisDataTree* const child = search.Next(target)) {
            if (child->GetCache()->IsDiscarded() != 0)
                outer.push_back(search);
            else
                outer.clear();
            search = ChildSearch(child, target);
            continue;
        }
        if (search.GetNode()->GetCache()->IsDiscarded() == 0)
            return search.GetNode();
        if (outer.empty())
            return nullptr;
        search = outer.back();
        outer.pop_back();
    }
}

VisDataTree* VisTreeSpaceFillingLayout::FromEventToNode(float& x, float& y, KUVViewer* viewer)
{
    x += deviceActionOffset_.x;
    y += deviceActionOffset_.y;
    if (viewer) {
        float width = 0.0F;
        float height = 0.0F;
        viewer->GetGraphicSize(&width, &height);
        const KUVSupport* const support = viewer->GetSupport();
        const float scale = support ? support->GetPointToPixelScale() : 1.0F;
        x /= scale;
        y = (height - y) / scale;
    }
    return FindNodeAtPosition(x, y);
}

// ---- mouse

unsigned int VisTreeSpaceFillingLayout::DeviceAction(KUVNotification* event)
{
    if (!event || !GetCurrentRoot())
        return NOT_USED;
    const auto self = VisReference<VisTreeSpaceFillingLayout>::Retain(this);
    KUVViewer* viewer = nullptr;
    KUVNotification* device = event;
    if (IsOf<KUVViewerEvent>(*event)) {
        const auto* const inViewer = static_cast<const KUVViewerEvent*>(event);
        viewer = inViewer->GetViewer();
        device = inViewer->GetDeviceEvent();
    }
    if (!device || !IsOf<KUVDeviceEvent>(*device))
        return NOT_USED;
    try {
        return UseDeviceEvent(*static_cast<const KUVDeviceEvent*>(device), viewer);
    } catch (const std::bad_alloc&) {
        return NOT_USED;
    }
}

unsigned int VisTreeSpaceFillingLayout::UseDeviceEvent(const KUVDeviceEvent& event,
                                                       KUVViewer* viewer)
{
    const KUVMouseDevice* const mouse = MouseOf(event);
    if (!mouse)
        return NOT_USED;
    const int buttons = mouse->getButtonsStatus();
    if (IsOf<KUVReleaseEvent>(event))
        return UseRelease(event, buttons, viewer);
    float x = event.GetX();
    float y = event.GetY();
    if (IsOf<KUVPressEvent>(event))
        return UsePress(event, buttons, FromEventToNode(x, y, viewer));
    if (IsOf<KUVMotionEvent>(event))
        return UseMotion(buttons, buttons == 0 ? FromEventToNode(x, y, viewer) : nullptr);
    if (IsOf<KUVDoubleClick>(event))
        return UseDoubleClick(event, FromEventToNode(x, y, viewer));
    return NOT_USED;
}

unsigned int VisTreeSpaceFillingLayout::UsePress(const KUVDeviceEvent& event, int buttons,
                                                 VisDataTree* hit)
{
    if (!hit || event.GetModifier() != 0)
        return NOT_USED;
    if (event.GetButton() == LEFT_BUTTON && buttons == LEFT_BUTTON_ALONE) {
        OnMouseSelection(hit);
        return USED;
    }
    if (event.GetButton() == RIGHT_BUTTON && buttons == RIGHT_BUTTON_ALONE) {
        OnMouseSelection(hit);
        Dispatch(ON_RIGHT_CLICK_NODE(), nullptr);
        return USED;
    }
    return NOT_USED;
}

unsigned int VisTreeSpaceFillingLayout::UseMotion(int buttons, VisDataTree* hit)
{
    if (buttons != 0 || !hit)
        return NOT_USED;
    // Nothing happens over the highlighted node; leaving all nodes keeps the highlight.
    SetCurrentHighlightedNode(hit);
    return USED;
}

unsigned int VisTreeSpaceFillingLayout::UseRelease(const KUVDeviceEvent& event, int buttons,
                                                   KUVViewer* viewer)
{
    if (enableZoom_ == 0 || event.GetButton() != MIDDLE_BUTTON || buttons != 0 ||
        event.GetModifier() != 0)
        return NOT_USED;
    float x = event.GetX();
    float y = event.GetY();
    if (viewer) {
        // The pointer may have moved since the event was made.
        int mouseX = 0;
        int mouseY = 0;
        viewer->GetMousePosition(&mouseX, &mouseY);
        x = static_cast<float>(mouseX);
        y = static_cast<float>(mouseY);
    }
    if (VisDataTree* const hit = FromEventToNode(x, y, viewer))
        SetCurrentRoot(hit, /*pushOnStack=*/1);
    return USED;
}

unsigned int VisTreeSpaceFillingLayout::UseDoubleClick(const KUVDeviceEvent& event,
                                                       VisDataTree* hit)
{
    if (event.GetButton() == LEFT_BUTTON && hit) {
        OnMouseSelection(hit);
        Dispatch(ON_DOUBLE_CLICK(), nullptr);
        return USED;
    }
    if (event.GetButton() != MIDDLE_BUTTON)
        return NOT_USED;
    if (hit && enableZoom_ != 0)
        SetCurrentRoot(hit, /*pushOnStack=*/1);
    return USED;
}

void VisTreeSpaceFillingLayout::OnMouseSelection(VisDataTree* node) { SetCurrentSelection(node); }

// ---- keyboard

unsigned int VisTreeSpaceFillingLayout::KeyboardAction(KUVKeybdEvent* event)
{
    if (!event || !GetCurrentRoot())
        return NOT_USED;
    const auto self = VisReference<VisTreeSpaceFillingLayout>::Retain(this);
    try {
        return UseKey(*event);
    } catch (const std::bad_alloc&) {
        return NOT_USED;
    }
}

unsigned int VisTreeSpaceFillingLayout::UseKey(const KUVKeybdEvent& event)
{
    const unsigned int key = event.GetKeyCode();
    const bool down = event.GetKeyState() == KEY_IS_DOWN;
    switch (key) {
    case KEY_UNZOOM:
        return down && Unzoom() != 0 ? USED : NOT_USED;
    case KEY_UP:
    case KEY_LEFT:
    case KEY_DOWN:
    case KEY_RIGHT:
        if (down)
            SetCurrentSelection(GetNodeViaNavigation(key));
        return USED;
    case KEY_PAGE_MORE:
    case KEY_PAGE_FEWER:
        if (pageUpPageDownEnabled_ == 0)
            return NOT_USED;
        if (down)
            ApplyPageUpPageDown(key);
        return USED;
    default:
        return NOT_USED;
    }
}

unsigned int VisTreeSpaceFillingLayout::IMEKeyboardAction(KUVIMEKeybdEvent* /*event*/)
{
    return NOT_USED;
}

VisDataTree* VisTreeSpaceFillingLayout::GetNodeViaNavigation(unsigned int key)
{
    switch (key) {
    case KEY_UP:
        return FindLeafBeside(/*forward=*/true);
    case KEY_DOWN:
        return FindLeafBeside(/*forward=*/false);
    case KEY_LEFT:
        return FindShownParent();
    case KEY_RIGHT:
        return FindShownChild();
    default:
        return nullptr;
    }
}

VisDataTree* VisTreeSpaceFillingLayout::FindLeafBeside(bool forward)
{
    VisDataTree* const root = GetCurrentRoot();
    VisDataTree* found = nullptr;
    if (VisDataTree* const leaf = GetCurrentLeafSelection())
        found =
            forward ? leaf->NextLeafNodeInHierarchy(root) : leaf->PreviousLeafNodeInHierarchy(root);
    else if (VisDataTree* const selection = GetCurrentSelection())
        found = selection->GetFirstLeaf();
    if (!found && root)
        found = root->GetFirstLeaf();
    return found;
}

VisDataTree* VisTreeSpaceFillingLayout::FindShownParent()
{
    VisDataTree* const selection = GetCurrentSelection();
    const VisDataTree* const root = GetCurrentRoot();
    if (!selection || selection == root)
        return nullptr;
    for (VisDataTree* node = selection->GetParent(); node; node = node->GetParent()) {
        if (node == root || node->IsMerged() == 0)
            return node;
    }
    return selection;
}

VisDataTree* VisTreeSpaceFillingLayout::FindShownChild()
{
    VisDataTree* node = GetCurrentSelection();
    if (!node || node->GetChildren().empty())
        return node;
    if (VisDataTree* const leaf = GetCurrentLeafSelection())
        return FirstShownTowards(node, leaf);
    // A merged node without children, which hosts are told not to leave, ends the walk as well.
    do
        node = node->GetChildren().front();
    while (node->IsMerged() != 0 && !node->GetChildren().empty());
    return node;
}

void VisTreeSpaceFillingLayout::ApplyPageUpPageDown(unsigned int /*key*/) {}
