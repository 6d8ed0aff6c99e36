#include "EventScenario.h"

#include "VisIcicleLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "VisTreeSpaceFillingLayoutNotification.h"
#include "private/CacheAccess.h"

#include <array>
#include <cmath>
#include <stack>
#include <vector>

namespace fuzz {

namespace {

using Layout = VisTreeSpaceFillingLayout;

constexpr unsigned int MOST_NESTED = 64;
constexpr float VIEWER_HEIGHT = 300.0F;

constexpr std::array<unsigned int, 8> KEYS{0x100000, 0x800000, 0x900000, 0xA00000,
                                           0xB00000, 0x400000, 0x700000, 0x123456};

/// A mouse event that the layout uses: what happens, with which button, which buttons are down.
struct Gesture {
    unsigned int action;
    int button;
    int buttons;
};
constexpr unsigned int PRESS = 0;
constexpr unsigned int RELEASE = 1;
constexpr unsigned int MOTION = 2;
constexpr unsigned int DOUBLE_CLICK = 3;
constexpr std::array<Gesture, 6> GESTURES{{{PRESS, 1, 1},
                                           {PRESS, 3, 4},
                                           {RELEASE, 2, 0},
                                           {MOTION, 0, 0},
                                           {DOUBLE_CLICK, 1, 1},
                                           {DOUBLE_CLICK, 2, 0}}};

const VisTreeSpaceFillingLayoutCache* CacheOf(const VisDataTree* node)
{
    return node ? VisCacheAccess::LayoutCacheOf(node) : nullptr;
}

int Truncate(float value) { return std::abs(value) < 1.0e6F ? static_cast<int>(value) : 0; }

}  // namespace

EventScenario::EventScenario(Kind kind, Bytes bytes) : kind_(kind), bytes_(bytes)
{
    viewer_->SetGraphicSize(400.0F, VIEWER_HEIGHT);
    MakeTrees();
}

EventScenario::~EventScenario()
{
    // The scene ends with nothing shown: the bag holds views of no layout.
    layout_ = {};
    const list<KUVRep>* const left = bag_->GetChildren();
    Require(!left || left->Count() == 0);
}

/// A tree of most nodes, each below one made before it, and beside it nodes that stand alone.
void EventScenario::MakeTrees()
{
    constexpr std::array LABELS{"", "node", "a node with a longer label"};
    constexpr std::size_t ALONE = 3;
    for (std::size_t i = 0; i < NODES; ++i) {
        const unsigned int choice = bytes_.Take();
        nodes_[i] =
            NodeRef::Adopt(new Node(LABELS[choice % LABELS.size()], choice % 5 == 0 ? "icon" : ""));
        nodes_[i]->SetIsLeafObject(choice % 2);
        nodes_[i]->SetIsMergeable(choice % 3 == 0);
        if (i > 0 && i + ALONE < NODES)
            nodes_[(choice / 16) % i]->InsertChild(nodes_[i].Get(), 1);
    }
}

void EventScenario::MakeLayout()
{
    layout_ = {};
    ForgetCounts();
    VisDataTree* const root = bytes_.Take() % 4 == 0 ? TakeNode() : nodes_[0].Get();
    layout_ = VisReference<Layout>::Adopt(fuzz::MakeLayout(kind_, root, bag_.Get()));
    Require(layout_.Get() != nullptr);
    tidy_ = true;
    contained_ = true;
    Listen(Layout::ON_SELECT_NODE(), /*hasNodes=*/true);
    Listen(Layout::ON_HOVER_NODE(), /*hasNodes=*/true);
    Listen(Layout::ON_SET_CURRENT_ROOT(), /*hasNodes=*/true);
    Listen(Layout::ON_RIGHT_CLICK_NODE(), /*hasNodes=*/false);
    Listen(Layout::ON_DOUBLE_CLICK(), /*hasNodes=*/false);
    if (kind_ == Kind::Icicle)
        Listen(VisIcicleLayout::ON_SET_NLAST_NODES(), /*hasNodes=*/false);
}

// ---- notifications

void EventScenario::Listen(const char* name, bool hasNodes)
{
    layout_->GetCallbackManager()->Subscribe(
        name, layout_.Get(),
        [this, hasNodes](const char*, KUVNotification* notification, KUVBaseUnknown*) {
            Hear(notification, hasNodes);
        });
}

void EventScenario::Hear(const KUVNotification* notification, bool hasNodes)
{
    ++notifications_;
    if (hasNodes) {
        const auto* const nodes =
            dynamic_cast<const VisTreeSpaceFillingLayoutNotification*>(notification);
        Require(nodes != nullptr);
        for (const VisDataTree* const node : {nodes->GetPreviousNode(), nodes->GetNode()})
            Require(!node || Node::Lives(node));
    }
    Require(++nesting_ <= static_cast<int>(MOST_NESTED));
    if (layout_)
        CheckSlots(*layout_.Get(), /*inTree=*/false);
    if (!muted_ && bytes_.Take() % 4 == 1) {
        ++reactions_;
        Act(bytes_.Take() % 16);
    }
    --nesting_;
}

// ---- the input

VisDataTree* EventScenario::TakeNode() { return nodes_[bytes_.Take() % NODES].Get(); }

/// A node for the layout; one of another tree ends the tidiness.
VisDataTree* EventScenario::TakeNodeOrNull()
{
    const unsigned int choice = bytes_.Take();
    VisDataTree* node = choice % 32 == 0 ? nullptr : nodes_[choice % NODES].Get();
    if (tidy_ && node && !IsInTree(node, layout_->GetTreeRoot())) {
        // Seldom, because it leaves less to check.
        if (choice < 240)
            return layout_->GetTreeRoot();
        tidy_ = false;
    }
    return node;
}

EventScenario::Area EventScenario::TakeArea()
{
    constexpr std::array SCALES{1.0F, 2.0F, 0.5F, 0.0F, -1.0F};
    const unsigned int choice = bytes_.Take();
    // Every pixel of a cushion map is computed.
    const float unit = kind_ == Kind::Cushion ? 0.25F : 1.0F;
    Area area{{0, 0}, {360 * unit, 280 * unit}, 1.0F};
    if (choice % 4 == 1)
        area = {{bytes_.TakeLength(), 7},
                {unit * bytes_.TakeLength(), unit * bytes_.TakeLength()},
                1.0F};
    else if (choice % 8 == 2)
        area = {{bytes_.TakeFloat(), bytes_.TakeFloat()},
                {bytes_.TakeFloat(), bytes_.TakeFloat()},
                bytes_.TakeFloat()};
    if (choice % 16 == 3)
        area.scale = SCALES[bytes_.Take() % SCALES.size()];
    return area;
}

/// In the middle or on an edge of a node, or anywhere (layout coordinates).
KUVMathPoint2Df EventScenario::TakePoint()
{
    const unsigned int choice = bytes_.Take();
    if (choice % 4 == 0)
        return {bytes_.TakeFloat(), bytes_.TakeFloat()};
    const VisTreeSpaceFillingLayoutCache* const cache = CacheOf(nodes_[choice / 16].Get());
    if (!cache)
        return {100, 100};
    const float at = choice % 4 == 1 ? 1.0F : 0.5F;
    return {cache->GetPos().x + at * cache->GetSize().x,
            cache->GetPos().y + at * cache->GetSize().y};
}

// ---- events

void EventScenario::SendEvent()
{
    ++events_;
    const unsigned int choice = bytes_.Take() % 16;
    if (choice < 9)
        SendMouseEvent();
    else if (choice < 15)
        SendKey();
    else
        SendOddEvent();
}

void EventScenario::SendMouseEvent()
{
    const unsigned int choice = bytes_.Take();
    Gesture gesture = GESTURES[choice % GESTURES.size()];
    int modifier = 0;
    if (choice >= 0xE0) {
        gesture = {choice % 4, static_cast<int>(bytes_.Take() % 5),
                   static_cast<int>(bytes_.Take() % 8)};
        modifier = static_cast<int>(bytes_.Take() % 2);
    }
    mouse_.SetButtonsStatus(gesture.buttons);
    KUVMathPoint2Df at = TakePoint();
    CheckHit(*layout_.Get(), kind_ == Kind::Icicle, at.x, at.y);
    DeliverMouse(gesture.action, gesture.button, modifier, at);
}

unsigned int EventScenario::DeliverMouse(unsigned int action, int button, int modifier,
                                         const KUVMathPoint2Df& at)
{
    const bool inViewer = bytes_.TakeFlag() != 0;
    const KUVMathPoint2Df offset = layout_->GetDeviceActionOffset();
    KUVMathPoint2Df device{at.x - offset.x, at.y - offset.y};
    if (inViewer) {
        const float scale = viewer_->GetSupport()->GetPointToPixelScale();
        device = {at.x * scale - offset.x, VIEWER_HEIGHT - at.y * scale - offset.y};
        viewer_->SetMousePosition(Truncate(device.x), Truncate(device.y));
    }
    const auto deliver = [&](KUVDeviceEvent&& event) {
        KUVViewerEvent outer(viewer_.Get(), &event);
        const unsigned int used =
            layout_->DeviceAction(inViewer ? static_cast<KUVNotification*>(&outer) : &event);
        Require(used <= 1);
        return used;
    };
    switch (action) {
    case PRESS:
        return deliver(KUVPressEvent(&mouse_, button, device.x, device.y, modifier));
    case RELEASE:
        return deliver(KUVReleaseEvent(&mouse_, button, device.x, device.y, modifier));
    case MOTION:
        return deliver(KUVMotionEvent(&mouse_, button, device.x, device.y, modifier));
    default:
        return deliver(KUVDoubleClick(&mouse_, button, device.x, device.y, modifier));
    }
}

void EventScenario::SendKey()
{
    const unsigned int choice = bytes_.Take();
    const unsigned int key = KEYS[choice % KEYS.size()];
    const int state = choice >= 0xF0 ? 2 : 1;
    KUVKeybdEvent event(key, state);
    const bool hasRoot = layout_->GetCurrentRoot() != nullptr;
    const unsigned int used = layout_->KeyboardAction(&event);
    Require(used <= 1);
    // The arrow keys are used whatever the state and wherever they lead.
    if (key >= 0x800000 && hasRoot)
        Require(used == 0);
}

/// Events that no host should send.
void EventScenario::SendOddEvent()
{
    KUVMouseDevice& mouse = mouse_;
    KUVDevice other;
    KUVPressEvent withoutDevice(nullptr, 1, 5, 5, 0);
    KUVPressEvent ofOtherDevice(&other, 1, 5, 5, 0);
    KUVDeviceEvent plain(&mouse, 1, 5, 5, 0);
    KUVViewerEvent empty(nullptr, nullptr);
    KUVViewerEvent ofNobody(viewer_.Get(), nullptr);
    KUVIMEKeybdEvent composed;
    KUVNotification notification;
    const std::array<KUVNotification*, 8> events{nullptr,   &withoutDevice, &ofOtherDevice,
                                                 &plain,    &empty,         &ofNobody,
                                                 &composed, &notification};
    Require(layout_->DeviceAction(events[bytes_.Take() % events.size()]) == 1);
    Require(layout_->KeyboardAction(nullptr) == 1);
    Require(layout_->IMEKeyboardAction(&composed) == 1);
    Require(layout_->IMEKeyboardAction(nullptr) == 1);
}

// ---- what the owner and its listeners do

/// One of 16 actions, of which any may release the layout.
void EventScenario::Act(unsigned int action)
{
    if (!layout_)
        return;
    switch (action) {
    case 0:
    case 1:
    case 2:
    case 3:
    case 4:
        Navigate(action);
        break;
    case 5:
    case 6:
        Draw(TakeArea());
        break;
    case 7:
    case 8:
        SendEvent();
        break;
    case 9:
        UseColumns();
        break;
    default:
        Change(action);
        break;
    }
}

void EventScenario::Navigate(unsigned int action)
{
    switch (action) {
    case 0:
        layout_->SetCurrentSelection(TakeNodeOrNull());
        break;
    case 1:
    case 2: {
        VisDataTree* const node = TakeNodeOrNull();
        layout_->SetCurrentRoot(node, bytes_.TakeFlag());
        break;
    }
    case 3:
        Require(layout_->Unzoom() <= 1);
        break;
    default: {
        VisDataTree* const node = TakeNodeOrNull();
        if (!node || node->GetCache())
            layout_->SetCurrentHighlightedNode(node);
        break;
    }
    }
}

void EventScenario::Change(unsigned int action)
{
    switch (action) {
    case 10:
        Turn();
        break;
    case 11:
    case 12:
        Weigh();
        break;
    case 13:
        ShowAnotherTree();
        break;
    case 14:
        EditTree();
        break;
    default:
        // Not at once: what follows in the input would find no layout.
        if (bytes_.Take() % 4 == 0)
            layout_ = {};
        break;
    }
}

void EventScenario::EditTree()
{
    const unsigned int choice = bytes_.Take();
    NodeRef& node = nodes_[choice % NODES];
    tidy_ = false;
    switch (choice / 64) {
    case 0:
        TakeNode()->InsertChild(node.Get(), 1);
        break;
    case 1:
        TakeNode()->InsertChild(node.Get(), 0);
        break;
    case 2:
        node->RemoveParent(1);
        break;
    default:
        Replace(node);
        break;
    }
}

/// Gives the node up, for a new one in its place; it dies unless it is the tree of the layout, and
/// with it what is held by nobody else.
void EventScenario::Replace(NodeRef& node)
{
    node->RemoveParent(1);
    node = NodeRef::Adopt(new Node);
}

/// What was edited without a word to the ancestors left them with counts that are out of date.
void EventScenario::ForgetCounts()
{
    const NodeRef child = NodeRef::Adopt(new Node);
    for (const NodeRef& node : nodes_) {
        node->InsertChild(child.Get(), 1);
        child->RemoveParent(1);
    }
}

void EventScenario::ShowAnotherTree()
{
    const unsigned int choice = bytes_.Take();
    VisDataTree* root = choice % 8 == 0 ? nullptr : TakeNode();
    if (choice % 2 == 1) {
        // Mostly the largest tree, so that there is something to see.
        root = nodes_[choice / 16].Get();
        while (root->GetParent())
            root = root->GetParent();
    }
    const bool wasTidy = tidy_;
    ForgetCounts();
    layout_->SetTreeRoot(root);
    if (choice < 0xE0)
        layout_->EmptyStackOfLastTreeRoots();
    tidy_ = choice < 0xE0 || (wasTidy && layout_->GetLastCurrentTreeRoots().empty());
    contained_ = true;
}

void EventScenario::Weigh()
{
    VisDataTree* const node = TakeNode();
    VisDataTree::VisDataTreeCache* const cache = node->GetCache();
    if (!cache)
        return;
    const unsigned int choice = bytes_.Take();
    switch (choice % 6) {
    case 0:
        cache->SetSizeValue(choice);
        break;
    case 1:
        cache->SetSizeValue(bytes_.TakeValue());
        // Sums saturate.
        contained_ = false;
        break;
    case 2:
        cache->SetResizeWithValue(bytes_.TakeFlag());
        break;
    case 3:
        cache->SetColorValue(bytes_.TakeValue());
        cache->SetColorWithValue(bytes_.TakeFlag());
        break;
    case 4:
        cache->SetShowLabel(bytes_.TakeFlag());
        break;
    default: {
        const unsigned char merge = bytes_.TakeFlag();
        node->UpdateMerge(merge, bytes_.TakeFlag());
        break;
    }
    }
}

void EventScenario::Turn()
{
    const unsigned int choice = bytes_.Take();
    const auto on = static_cast<unsigned char>(choice / 128);
    switch (choice % 8) {
    case 0:
        layout_->SetEnableZoom(on);
        break;
    case 1:
        layout_->SetEnablePageUpPageDown(on);
        break;
    case 2:
        layout_->SetRedrawOnSetCurrentRoot(on);
        break;
    case 3:
        layout_->SetDeviceActionOffset({bytes_.TakeFloat(), bytes_.TakeFloat()});
        break;
    case 4:
        viewer_->SetPointToPixelScale(on != 0 ? bytes_.TakeFloat() : 1.0F);
        break;
    case 5:
        layout_->EmptyStackOfLastTreeRoots();
        break;
    case 6: {
        std::stack<VisDataTree*> roots = layout_->GetLastCurrentTreeRoots();
        roots.push(TakeNodeOrNull());
        layout_->ReplaceLastCurrentTreeRoots(roots);
        break;
    }
    default:
        layout_->SetDeviceActionOffset({0, 0});
        viewer_->SetPointToPixelScale(1.0F);
        layout_->SetEnableZoom(1);
        layout_->SetRedrawOnSetCurrentRoot(1);
        break;
    }
}

void EventScenario::UseColumns()
{
    if (auto* const icicle = dynamic_cast<VisIcicleLayout*>(layout_.Get()))
        UseColumns(*icicle);
    else
        Draw(TakeArea());
}

void EventScenario::UseColumns(VisIcicleLayout& icicle)
{
    const unsigned int choice = bytes_.Take();
    const unsigned int columns = choice >= 0xF0 ? 0U - (choice % 16) : choice / 16;
    switch (choice % 8) {
    case 0:
    case 1:
    case 2:
        icicle.SetNLastNodes(columns);
        break;
    case 3:
        icicle.ApplyPageUpPageDown(bytes_.TakeFlag() != 0 ? 0x400000 : 0x700000);
        break;
    case 4:
        icicle.SetExtendWithKeys(bytes_.TakeFlag());
        break;
    case 5:
        Require(icicle.AlignIciclePlotLeaves(TakeNodeOrNull()) >= 0);
        break;
    case 6:
        icicle.ResetIciclePlotAlignment();
        break;
    default: {
        const Area area = TakeArea();
        const unsigned char relative = bytes_.TakeFlag();
        icicle.IciclePlot(area.position, area.size, font_.Get(), columns, area.scale, relative,
                          bytes_.TakeFlag());
        break;
    }
    }
}

// ---- drawing and checks

void EventScenario::Draw(const Area& area)
{
    layout_->Draw(area.position, area.size, font_.Get(), area.scale);
}

/// Drawings with listeners that do nothing.
void EventScenario::DrawUndisturbed()
{
    const Area area = TakeArea();
    muted_ = true;
    if (!tidy_ || !layout_->GetCurrentRoot())
        Draw(area);
    else if (kind_ == Kind::Icicle && bytes_.TakeFlag() != 0)
        PlotAnew(area);
    else if (kind_ != Kind::Icicle && bytes_.TakeFlag() != 0)
        ZoomAndBack(area);
    else
        DrawTwice(area);
    muted_ = false;
}

/// The second time nothing changes.
void EventScenario::DrawTwice(const Area& area)
{
    Draw(area);
    if (IsDrawn(kind_, area.size, area.scale)) {
        CheckDrawn(kind_, *layout_.Get());
        if (contained_ && kind_ != Kind::Icicle)
            CheckPlaced(kind_, *layout_.Get());
    }
    const std::vector<std::uint32_t> once = DescribeDrawn(*layout_.Get(), /*views=*/true);
    Draw(area);
    if (IsRepeatable(kind_, *layout_.Get()))
        Require(DescribeDrawn(*layout_.Get(), /*views=*/true) == once);
}

/// Brings back the same rectangles.
void EventScenario::ZoomAndBack(const Area& area)
{
    Draw(area);
    VisDataTree* const target = TakeNode();
    if (!IsInTree(target, layout_->GetTreeRoot()) || !IsDrawn(kind_, area.size, area.scale) ||
        !IsDrawn(kind_, area.size, 1.0F))
        return;
    const std::vector<std::uint32_t> before = DescribeDrawn(*layout_.Get(), /*views=*/false);
    VisDataTree* const root = layout_->GetCurrentRoot();
    const unsigned char redraws = layout_->GetRedrawOnSetCurrentRoot();
    layout_->SetRedrawOnSetCurrentRoot(1);
    layout_->SetCurrentRoot(target, 1);
    Require(layout_->GetCurrentRoot() == target);
    if (target != root) {
        CheckDrawn(kind_, *layout_.Get());
        Require(layout_->Unzoom() == 1);
        Require(layout_->GetCurrentRoot() == root);
        if (IsInTree(target, root))
            Require(DescribeDrawn(*layout_.Get(), /*views=*/false) == before);
    }
    layout_->SetRedrawOnSetCurrentRoot(redraws);
}

/// Columns and sizes found out again.
void EventScenario::PlotAnew(const Area& area)
{
    auto* const icicle = dynamic_cast<VisIcicleLayout*>(layout_.Get());
    icicle->AlignIciclePlotLeaves(nullptr);
    const unsigned char relative = bytes_.TakeFlag();
    icicle->IciclePlot(area.position, area.size, font_.Get(), 0xFFFFFFFFU, area.scale, relative,
                       bytes_.TakeFlag());
    CheckDrawn(kind_, *layout_.Get());
    CheckPlaced(kind_, *layout_.Get());
    CheckAligned(*layout_.Get());
}

void EventScenario::Check()
{
    for (const NodeRef& node : nodes_)
        CheckNode(*node.Get());
    if (!layout_)
        return;
    Require(layout_->GetReferenceCount() == 1);
    CheckSlots(*layout_.Get(), tidy_);
    if (tidy_)
        CheckViews(*layout_.Get(), *bag_.Get());
    const KUVMathPoint2Df at = TakePoint();
    CheckHit(*layout_.Get(), kind_ == Kind::Icicle, at.x, at.y);
}

void EventScenario::Step()
{
    const unsigned int choice = bytes_.Take();
    if (!layout_)
        MakeLayout();
    if (choice < 192)
        SendEvent();
    else if (choice < 208)
        DrawUndisturbed();
    else
        Act(choice % 16);
}

void EventScenario::Run()
{
    while (!bytes_.AtEnd()) {
        Step();
        Require(nesting_ == 0);
        Check();
    }
}

}  // namespace fuzz
