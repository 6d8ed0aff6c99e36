#include "module/LayoutComparison.h"

#include "VisDataTree.h"
#include "VisTreeSpaceFillingLayoutNotification.h"
#include "VisTreeSpaceFillingView.h"

#include "module/ViewReading.h"

#include "private/CacheAccess.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <sstream>
#include <stack>
#include <utility>

namespace {

constexpr unsigned int KEYS[] = {0x100000, 0x800000, 0x900000, 0xA00000,
                                 0xB00000, 0x400000, 0x700000, 0x123456};

VisTreeSpaceFillingLayoutCache* CacheOf(const VisDataTree* node)
{
    return VisCacheAccess::LayoutCacheOf(node);
}

}  // namespace

// ---- the two worlds

LayoutComparison::LayoutComparison(std::uint64_t seed)
    : random_(seed), bag_(VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep())),
      font_(VisReference<KUVCharacterFont>::Adopt(support::MakeFixedWidthFont())),
      viewer_(VisReference<core::StandaloneViewer>::Adopt(new core::StandaloneViewer()))
{
    MakeTree();
}

LayoutComparison::~LayoutComparison() = default;

void LayoutComparison::MakeTree()
{
    std::size_t count = 1 + Below(Chance(40) ? 400 : Chance(3) ? 60 : 16);
    std::size_t reach = 1 + Below(count);
    switch (Below(10)) {
    case 0:  // a chain
        count = Chance(2) ? 1 + Below(5) : count;
        reach = 1;
        break;
    case 1:  // children side by side
        reach = 0;
        break;
    case 2:
        if (Chance(4))
            count = 1;
        break;
    default:
        break;
    }
    for (std::size_t i = 0; i < count; ++i) {
        Pair pair;
        pair.node = VisReference<VisDataTree>::Adopt(new VisDataTree(nullptr, "", ""));
        pair.twin = std::make_unique<layoutReference::Node>();
        pair.twin->number = static_cast<int>(i);
        if (i > 0) {
            const std::size_t above = reach == 0 ? 0 : i - 1 - Below(std::min(i, reach));
            pairs_[above].node->InsertChild(pair.node.Get(), 1);
            pairs_[above].twin->InsertChild(pair.twin.get(), true);
        }
        numbers_[pair.node.Get()] = pair.twin->number;
        pairs_.push_back(std::move(pair));
    }
    DressNodes();
}

void LayoutComparison::DressNodes()
{
    const bool hasIcons = Chance(2);
    const bool hasMerged = Chance(3);
    const bool hasOtherLeaves = Chance(3);
    for (const Pair& pair : pairs_) {
        layoutReference::Node& twin = *pair.twin;
        twin.label = Chance(8) ? "" : "n" + std::to_string(twin.number);
        twin.icon = hasIcons && Chance(2) ? "I_VisFace.png" : "";
        const bool isChildless = twin.children.empty();
        twin.isLeafObject = isChildless ? !(hasOtherLeaves && Chance(3)) : Chance(12);
        twin.isMerged = hasMerged && Chance(isChildless ? 40 : twin.parent ? 3 : 2);
        pair.node->SetLabel(twin.label.c_str());
        pair.node->SetIconName(twin.icon.c_str());
        pair.node->SetIsLeafObject(twin.isLeafObject ? 1 : 0);
        pair.node->SetIsMerged(twin.isMerged ? 1 : 0);
    }
}

void LayoutComparison::Start(VisTreeSpaceFillingLayout* layout, layoutReference::Layout& model)
{
    layout_ = VisReference<VisTreeSpaceFillingLayout>::Adopt(layout);
    model_ = &model;
    model.SetTreeRoot(RootTwin());
    ListenTo(VisTreeSpaceFillingLayout::ON_SET_CURRENT_ROOT(), "root");
    ListenTo(VisTreeSpaceFillingLayout::ON_SELECT_NODE(), "select");
    ListenTo(VisTreeSpaceFillingLayout::ON_HOVER_NODE(), "hover");
    ListenTo(VisTreeSpaceFillingLayout::ON_RIGHT_CLICK_NODE(), "right");
    ListenTo(VisTreeSpaceFillingLayout::ON_DOUBLE_CLICK(), "double");
}

void LayoutComparison::Stop()
{
    layout_->SetTreeRoot(nullptr);
    layout_ = {};
}

void LayoutComparison::ListenTo(const char* event, const std::string& word)
{
    layout_->GetCallbackManager()->Subscribe(
        event, layout_.Get(),
        [this, word](const char*, KUVNotification* notification, KUVBaseUnknown* sender) {
            std::string text = word;
            if (auto* const payload =
                    dynamic_cast<VisTreeSpaceFillingLayoutNotification*>(notification))
                text += " " + Name(payload->GetPreviousNode()) + " > " + Name(payload->GetNode());
            else if (notification)
                text += " with a payload";
            if (sender != layout_.Get())
                text += " of another sender";
            Hear(text);
        });
}

std::string LayoutComparison::Name(const VisDataTree* node) const
{
    if (!node)
        return "-";
    const auto place = numbers_.find(node);
    return place == numbers_.end() ? "a stranger" : std::to_string(place->second);
}

std::string LayoutComparison::DescribeTree() const
{
    std::string text;
    for (const Pair& pair : pairs_) {
        const layoutReference::Node& twin = *pair.twin;
        text += std::to_string(twin.number) + ":\"" + twin.label + "\"";
        text += (twin.icon.empty() ? "" : "+icon");
        text += (twin.isLeafObject ? "+leaf" : "");
        text += (twin.isMerged ? "+merged" : "");
        text += "(";
        for (const layoutReference::Node* const child : twin.children)
            text += " " + std::to_string(child->number);
        text += " ) ";
    }
    return text;
}

// ---- random arguments

std::string LayoutComparison::Text(float x, float y)
{
    std::ostringstream text;
    text.precision(9);
    text << "(" << x << ", " << y << ")";
    return text.str();
}

KUVMathPoint2Df LayoutComparison::Origin()
{
    if (Chance(2))
        return {0.0f, 0.0f};
    return {std::floor(200.0f * Fraction()) - 100.0f, 200.0f * Fraction() - 100.0f};
}

KUVMathPoint2Df LayoutComparison::Size()
{
    const float usual[] = {40.0f, 90.0f, 200.0f, 500.0f, 1500.0f};
    const float width = usual[Below(std::size(usual))];
    const float height = usual[Below(std::size(usual))];
    KUVMathPoint2Df size(width * Fraction(), height * Fraction());
    if (Chance(2))
        size = {std::ceil(size.x), std::ceil(size.y)};
    if (Chance(25)) {
        const float odd[] = {0.0f, -0.0f, -25.0f, 1e30f, std::numeric_limits<float>::max(), 0.25f};
        (Chance(2) ? size.x : size.y) = odd[Below(std::size(odd))];
    }
    return size;
}

float LayoutComparison::Scale()
{
    // Every node gets images as large as it is drawn: large ones only in small trees.
    const float small[] = {1.0f, 1.0f, 0.5f, 2.0f, 3.0f};
    const float large[] = {0.0625f, 0.03125f, 0.0625f, 0.25f};
    if (pairs_.size() > 8 || size_.x * size_.y > 60000.0f)
        return large[Below(std::size(large))];
    return small[Below(std::size(small))];
}

/// Mostly in or at the edge of a node's rectangle.
KUVMathPoint2Df LayoutComparison::SomePlace()
{
    const float odd[] = {std::numeric_limits<float>::quiet_NaN(),
                         std::numeric_limits<float>::infinity(), -1e30f};
    if (Chance(60))
        return {odd[Below(std::size(odd))], Fraction()};
    const layoutReference::Cache* const cache = AnyPair().twin->cache;
    if (!cache || Chance(12))
        return {origin_.x + 1.2f * size_.x * Fraction(), origin_.y + 1.2f * size_.y * Fraction()};
    const layoutReference::Point p = cache->position;
    const layoutReference::Point s = cache->size;
    switch (Below(8)) {
    case 0:
        return {p.x, p.y};
    case 1:
        return {p.x + s.x, p.y + s.y};
    case 2:
        return {p.x + s.x, p.y};
    case 3:
        return {p.x + 0.5f, p.y + s.y - 0.5f};
    case 4:
        return {p.x + s.x * Fraction(), p.y + s.y * Fraction()};
    default:
        return {p.x + s.x / 2.0f, p.y + s.y / 2.0f};
    }
}

// ---- steps

std::string LayoutComparison::Step()
{
    switch (Below(20)) {
    case 0:
    case 1:
    case 2:
    case 3:
        return Draw();
    case 4:
    case 5:
        return Click();
    case 6:
    case 7:
        return Point();
    case 8:
    case 9:
    case 10:
        return PressKey();
    case 11:
        return Zoom();
    case 12:
        return SelectOrHighlight();
    case 13:
        return Switch();
    case 14:
        return SetValues();
    case 15:
        return HitTest();
    case 16:
        return Chance(3) ? SetRoot() : SendOddEvent();
    case 17:
        return Edit();
    default:
        return OwnStep();
    }
}

std::string LayoutComparison::Draw()
{
    // Mostly the last size again: what is remembered then matters most.
    if (Chance(3) || !hasDrawn_) {
        origin_ = Origin();
        size_ = Size();
    }
    hasDrawn_ = true;
    const float scale = Scale();
    layout_->Draw(origin_, size_, Chance(3) ? nullptr : font_.Get(), scale);
    model_->Draw(PointOf(origin_), PointOf(size_), scale);
    return "draw at " + Text(origin_) + " size " + Text(size_) + " scale " + std::to_string(scale);
}

/// An event at some place of the picture, in a viewer or bare.
layoutReference::DeviceEvent LayoutComparison::SomeEvent()
{
    layoutReference::DeviceEvent event;
    const KUVMathPoint2Df place = SomePlace();
    const KUVMathPoint2Df offset = layout_->GetDeviceActionOffset();
    event.x = place.x - offset.x;
    event.y = place.y - offset.y;
    if (Chance(3))
        return event;
    const float scales[] = {1.0f, 1.0f, 0.5f, 2.0f, 3.0f, 0.0f};
    layoutReference::Viewer viewer;
    viewer.height = static_cast<float>(Below(1200));
    viewer.scale = scales[Below(Chance(30) ? 6 : 5)];
    event.x = place.x * viewer.scale - offset.x;
    event.y = viewer.height - place.y * viewer.scale - offset.y;
    const auto whole = [](float value) {
        return std::isnan(value) ? 0 : static_cast<int>(std::clamp(value, -1e6f, 1e6f));
    };
    viewer.mouseX = whole(event.x);
    viewer.mouseY = whole(event.y);
    event.viewer = viewer;
    return event;
}

std::string LayoutComparison::Point()
{
    layoutReference::DeviceEvent event = SomeEvent();
    event.kind = layoutReference::DeviceEvent::Kind::Motion;
    event.buttons = Chance(8) ? static_cast<int>(Below(8)) : 0;
    return SendDevice(event);
}

std::string LayoutComparison::Click()
{
    using Kind = layoutReference::DeviceEvent::Kind;
    layoutReference::DeviceEvent event = SomeEvent();
    event.modifier = Chance(12) ? static_cast<int>(Below(3)) : 0;
    switch (Below(6)) {
    case 0:
    case 1:
        event.kind = Kind::Press;
        event.button = 1;
        event.buttons = 1;
        break;
    case 2:
        event.kind = Kind::Press;
        event.button = 3;
        event.buttons = 4;
        break;
    case 3:
        event.kind = Kind::Release;
        event.button = 2;
        break;
    case 4:
        event.kind = Kind::DoubleClick;
        event.button = 1 + static_cast<int>(Below(3));
        break;
    default: {
        const Kind kinds[] = {Kind::Press, Kind::Release, Kind::DoubleClick};
        event.kind = kinds[Below(std::size(kinds))];
        event.button = static_cast<int>(Below(5));
        event.buttons = static_cast<int>(Below(8));
        event.isFromMouse = !Chance(4);
        break;
    }
    }
    return SendDevice(event);
}

std::string LayoutComparison::SendDevice(const layoutReference::DeviceEvent& event)
{
    using Kind = layoutReference::DeviceEvent::Kind;
    mouse_.SetButtonsStatus(event.buttons);
    KUVDevice* const device = event.isFromMouse ? &mouse_ : Chance(2) ? nullptr : &otherDevice_;
    const std::unique_ptr<KUVDeviceEvent> own = [&]() -> std::unique_ptr<KUVDeviceEvent> {
        const auto make = [&](auto* type) -> std::unique_ptr<KUVDeviceEvent> {
            using Event = std::remove_pointer_t<decltype(type)>;
            return std::make_unique<Event>(device, event.button, event.x, event.y, event.modifier);
        };
        switch (event.kind) {
        case Kind::Press:
            return make(static_cast<KUVPressEvent*>(nullptr));
        case Kind::Release:
            return make(static_cast<KUVReleaseEvent*>(nullptr));
        case Kind::Motion:
            return make(static_cast<KUVMotionEvent*>(nullptr));
        default:
            return make(static_cast<KUVDoubleClick*>(nullptr));
        }
    }();
    unsigned int answer = 0;
    const char* const kinds[] = {"press", "release", "motion", "double click"};
    std::string text = kinds[static_cast<std::size_t>(event.kind)];
    text += " button " + std::to_string(event.button) + " of " + std::to_string(event.buttons) +
            " modifier " + std::to_string(event.modifier) + " at " + Text(event.x, event.y) +
            (event.isFromMouse ? "" : " of another device");
    if (event.viewer) {
        viewer_->SetGraphicSize(700.0f, event.viewer->height);
        viewer_->SetPointToPixelScale(event.viewer->scale);
        viewer_->SetMousePosition(event.viewer->mouseX, event.viewer->mouseY);
        KUVViewerEvent whole(viewer_.Get(), own.get());
        answer = layout_->DeviceAction(&whole);
        text += " height " + std::to_string(event.viewer->height) + " scale " +
                std::to_string(event.viewer->scale);
    } else if (Chance(2)) {
        KUVViewerEvent whole(nullptr, own.get());
        answer = layout_->DeviceAction(&whole);
    } else {
        answer = layout_->DeviceAction(own.get());
    }
    Compare("answer", std::to_string(answer), std::to_string(model_->DeviceAction(event)));
    return text;
}

std::string LayoutComparison::SendOddEvent()
{
    unsigned int answer = 0;
    std::string text;
    switch (Below(5)) {
    case 0: {
        KUVViewerEvent event(viewer_.Get(), nullptr);
        answer = layout_->DeviceAction(&event);
        text = "empty viewer event";
        break;
    }
    case 1:
        answer = layout_->DeviceAction(nullptr);
        text = "no event";
        break;
    case 2: {
        KUVDeviceEvent event(&mouse_, 1, 10.0f, 10.0f, 0);
        answer = layout_->DeviceAction(&event);
        text = "plain device event";
        break;
    }
    case 3: {
        KUVIMEKeybdEvent event;
        answer = layout_->IMEKeyboardAction(&event);
        text = "input method";
        break;
    }
    default:
        answer = layout_->KeyboardAction(nullptr);
        text = "no key";
        break;
    }
    Compare("answer", std::to_string(answer), "1");
    return text;
}

std::string LayoutComparison::PressKey()
{
    const unsigned int code = KEYS[Below(std::size(KEYS))];
    const int state = Chance(10) ? static_cast<int>(Below(4)) : 1;
    KUVKeybdEvent event(code, state);
    Compare("answer", std::to_string(layout_->KeyboardAction(&event)),
            std::to_string(model_->KeyboardAction(code, state)));
    std::ostringstream text;
    text << "key " << std::hex << code << " state " << state;
    return text.str();
}

std::string LayoutComparison::Zoom()
{
    if (Chance(3)) {
        Compare("answer", std::to_string(layout_->Unzoom()), model_->Unzoom() ? "1" : "0");
        return "unzoom";
    }
    if (Chance(12)) {
        layout_->EmptyStackOfLastTreeRoots();
        model_->earlierRoots.clear();
        return "empty the stack";
    }
    const bool pushes = !Chance(3);
    if (Chance(4)) {
        layout_->SetCurrentRoot(nullptr, pushes ? 1 : 0);
        model_->SetCurrentRoot(nullptr, pushes);
        return "zoom to none";
    }
    const Pair& pair = AnyPair();
    layout_->SetCurrentRoot(pair.node.Get(), pushes ? 1 : 0);
    model_->SetCurrentRoot(pair.twin.get(), pushes);
    return "zoom to " + Name(pair.node.Get()) + (pushes ? "" : " without push");
}

std::string LayoutComparison::SelectOrHighlight()
{
    const Pair& pair = AnyPair();
    const bool isNone = Chance(6);
    VisDataTree* const node = isNone ? nullptr : pair.node.Get();
    layoutReference::Node* const twin = isNone ? nullptr : pair.twin.get();
    if (Chance(2)) {
        layout_->SetCurrentSelection(node);
        model_->SetCurrentSelection(twin);
        return "select " + Name(node);
    }
    layout_->SetCurrentHighlightedNode(node);
    model_->SetCurrentHighlightedNode(twin);
    return "highlight " + Name(node);
}

std::string LayoutComparison::Switch()
{
    const bool isOn = !Chance(3);
    const unsigned char flag = isOn ? 1 : 0;
    const std::string text = isOn ? " on" : " off";
    switch (Below(4)) {
    case 0:
        layout_->SetEnableZoom(flag);
        model_->canZoom = isOn;
        return "zoom" + text;
    case 1:
        layout_->SetEnablePageUpPageDown(flag);
        model_->usesPageKeys = isOn;
        return "page keys" + text;
    case 2:
        layout_->SetRedrawOnSetCurrentRoot(flag);
        model_->redrawsOnSetCurrentRoot = isOn;
        return "redraw" + text;
    default: {
        const KUVMathPoint2Df offset(std::floor(40.0f * Fraction()) - 20.0f, 30.0f * Fraction());
        layout_->SetDeviceActionOffset(offset);
        model_->deviceOffset = PointOf(offset);
        return "offset " + Text(offset);
    }
    }
}

std::string LayoutComparison::SetValues()
{
    const Pair& pair = AnyPair();
    VisTreeSpaceFillingLayoutCache* const cache = CacheOf(pair.node.Get());
    layoutReference::Cache* const twin = pair.twin->cache;
    if (!cache || !twin)
        return "no values";
    const std::string name = Name(pair.node.Get()) + " ";
    const long long odd[] = {0, -5, 1, 9000000000000000000LL, -9000000000000000000LL, 1000000007};
    const long long value =
        Chance(6) ? odd[Below(std::size(odd))] : static_cast<long long>(Below(1000));
    const unsigned char flag = Chance(3) ? 0 : 1;
    switch (Below(6)) {
    case 0:
        cache->SetColorValue(value % 12);
        twin->colorValue = value % 12;
        return name + "colour value " + std::to_string(value % 12);
    case 1:
        cache->SetResizeWithValue(flag);
        twin->SetResizeWithValue(flag);
        return name + "resize with value " + std::to_string(flag);
    case 2:
        cache->SetColorWithValue(flag);
        twin->SetColorWithValue(flag);
        return name + "colour with value " + std::to_string(flag);
    case 3:
        if (Chance(4)) {
            cache->DoNotUseValue();
            twin->DoNotUseValue();
            return name + "no values used";
        }
        cache->SetShowLabel(flag);
        twin->showsLabel = flag != 0;
        return name + "show label " + std::to_string(flag);
    default:
        cache->SetSizeValue(value);
        twin->SetSizeValue(value);
        return name + "size value " + std::to_string(value);
    }
}

std::string LayoutComparison::SetRoot()
{
    // Mostly the whole tree again, and mostly no earlier root is left, as hosts are told.
    const Pair& pair = Chance(2) ? AnyPair() : pairs_.front();
    const bool isNone = Chance(5);
    layout_->SetTreeRoot(isNone ? nullptr : pair.node.Get());
    model_->SetTreeRoot(isNone ? nullptr : pair.twin.get());
    const bool keepsStack = Chance(3);
    if (!keepsStack) {
        layout_->EmptyStackOfLastTreeRoots();
        model_->earlierRoots.clear();
    }
    for (Pair& lost : pairs_) {
        lost.lostCache = nullptr;
        lost.lostTwin = nullptr;
    }
    return "tree root " + (isNone ? "none" : Name(pair.node.Get())) +
           (keepsStack ? " with the stack kept" : "");
}

std::string LayoutComparison::Edit()
{
    switch (Below(8)) {
    case 0:
    case 1:
        return Move();
    case 2:
    case 3:
        return Relink();
    case 4:
        return Kill();
    default:
        return SelectOrHighlight() + ", " + PressKey();
    }
}

std::string LayoutComparison::Move()
{
    const Pair& child = AnyPair();
    const Pair& parent = AnyPair();
    // What leaves or enters the part that is shown would have no cache, or one that nobody owns.
    const bool isPossible =
        child.twin->cache && parent.twin->cache && child.twin.get() != model_->treeRoot &&
        child.twin.get() != parent.twin.get() && !parent.twin->HasParent(child.twin.get());
    if (!isPossible)
        return "no move";
    const bool resets = !AllowsQuietMoves() || Chance(2);
    parent.node->InsertChild(child.node.Get(), resets ? 1 : 0);
    parent.twin->InsertChild(child.twin.get(), resets);
    return "move " + Name(child.node.Get()) + " below " + Name(parent.node.Get()) +
           (resets ? "" : " quietly");
}

std::string LayoutComparison::Relink()
{
    Pair& pair = AnyPair();
    if (pair.lostCache) {
        pair.node->SetCache(std::exchange(pair.lostCache, nullptr));
        model_->Link(*pair.twin, *std::exchange(pair.lostTwin, nullptr));
        return "link " + Name(pair.node.Get());
    }
    if (!AllowsLostCaches() || !pair.twin->cache)
        return "no link";
    pair.lostCache = CacheOf(pair.node.Get());
    pair.lostTwin = pair.twin->cache;
    pair.node->SetCache(nullptr);
    model_->Unlink(*pair.twin);
    return "unlink " + Name(pair.node.Get());
}

/// A subtree dies while the layout shows it.
std::string LayoutComparison::Kill()
{
    layoutReference::Node* const top = AnyPair().twin.get();
    const bool isRoot =
        model_->treeRoot == top || (model_->treeRoot && model_->treeRoot->HasParent(top));
    if (top == RootTwin() || isRoot)
        return "no death";
    const std::string text = "death of " + layoutReference::Layout::Name(top);
    top->RemoveParent();
    for (const Pair& pair : pairs_) {
        if (pair.twin.get() == top)
            pair.node->RemoveParent(1);
    }
    const auto dies = [top](const Pair& pair) {
        return pair.twin.get() == top || pair.twin->HasParent(top);
    };
    const auto dead = std::stable_partition(pairs_.begin(), pairs_.end(),
                                            [&](const Pair& pair) { return !dies(pair); });
    for (auto pair = dead; pair != pairs_.end(); ++pair) {
        model_->Forget(*pair->twin);
        numbers_.erase(pair->node.Get());
    }
    for (auto pair = dead; pair != pairs_.end(); ++pair)
        pair->node = {};
    pairs_.erase(dead, pairs_.end());
    return text;
}

std::string LayoutComparison::HitTest()
{
    std::string text = "hit";
    for (int i = 0; i < 8; ++i) {
        const KUVMathPoint2Df place = SomePlace();
        text += " " + Text(place);
        Compare("hit at " + Text(place), Name(layout_->FindNodeAtPosition(place.x, place.y)),
                layoutReference::Layout::Name(model_->FindNodeAtPosition(place.x, place.y)));
    }
    return text;
}

// ---- comparing

void LayoutComparison::Compare(const std::string& what, const std::string& module,
                               const std::string& model)
{
    if (module != model)
        failure_ += what + " is " + module + " instead of " + model + "; ";
}

void LayoutComparison::Compare(const std::string& what, const KUVMathPoint2Df& module,
                               const layoutReference::Point& model)
{
    if (!Same(module, model))
        failure_ += what + " is " + Text(module) + " instead of " + Text(model.x, model.y) + "; ";
}

bool LayoutComparison::Same(float a, float b)
{
    // The sign of a not-a-number is the machine's business.
    if (std::isnan(a) && std::isnan(b))
        return true;
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool LayoutComparison::Same(const KUVMathPoint2Df& a, const layoutReference::Point& b)
{
    return Same(a.x, b.x) && Same(a.y, b.y);
}

std::string LayoutComparison::Difference()
{
    Compare("what was told", std::exchange(heard_, {}), model_->TakeNotifications());
    if (!failure_.empty())
        return failure_;
    std::string difference = SlotsDifference() + OwnStateDifference();
    for (const Pair& pair : pairs_) {
        if (!difference.empty())
            return difference;
        difference = NodeDifference(pair);
        if (!difference.empty())
            difference = "node " + Name(pair.node.Get()) + ": " + difference;
    }
    return difference;
}

std::string LayoutComparison::SlotsDifference() const
{
    const auto name = [](const layoutReference::Node* node) {
        return layoutReference::Layout::Name(node);
    };
    std::string module = "tree " + Name(layout_->GetTreeRoot()) + " root " +
                         Name(layout_->GetCurrentRoot()) + " selection " +
                         Name(layout_->GetCurrentSelection()) + " leaf " +
                         Name(layout_->GetCurrentLeafSelection()) + " stack";
    std::string model = "tree " + name(model_->treeRoot) + " root " + name(model_->currentRoot) +
                        " selection " + name(model_->selection) + " leaf " +
                        name(model_->leafSelection) + " stack";
    std::stack<VisDataTree*> stack = layout_->GetLastCurrentTreeRoots();
    for (; !stack.empty(); stack.pop())
        module += " " + Name(stack.top());
    for (auto place = model_->earlierRoots.rbegin(); place != model_->earlierRoots.rend(); ++place)
        model += " " + name(*place);
    return module == model ? "" : module + " instead of " + model;
}

std::string LayoutComparison::NodeDifference(const Pair& pair)
{
    VisTreeSpaceFillingLayoutCache* const cache = CacheOf(pair.node.Get());
    const layoutReference::Cache* const twin = pair.twin->cache;
    if (!cache || !twin)
        return !cache == !twin ? "" : cache ? "has a cache" : "has no cache";
    if (!Same(cache->GetPos(), twin->position))
        return "position " + Text(cache->GetPos()) + " instead of " +
               Text(twin->position.x, twin->position.y);
    if (!Same(cache->GetSize(), twin->size))
        return "size " + Text(cache->GetSize()) + " instead of " + Text(twin->size.x, twin->size.y);
    if (!Same(cache->GetComputedMinimumSize(), twin->minimum))
        return "minimum " + Text(cache->GetComputedMinimumSize()) + " instead of " +
               Text(twin->minimum.x, twin->minimum.y);
    if ((cache->IsExpanded() != 0) != twin->isExpanded)
        return twin->isExpanded ? "not expanded" : "expanded";
    if ((cache->IsDiscarded() != 0) != twin->isDiscarded)
        return twin->isDiscarded ? "not discarded" : "discarded";
    if (cache->GetSizeValue() != twin->sizeValue || cache->GetColorValue() != twin->colorValue ||
        cache->ResizeWithValue() != twin->resizesWithValue ||
        cache->ColorWithValue() != twin->colorsWithValue)
        return "values";
    VisTreeSpaceFillingView* const view = cache->GetView();
    if (!view != !twin->view)
        return view ? "has a view" : "has no view";
    if (view) {
        const std::string difference = ViewDifference(*view, *twin->view);
        if (!difference.empty())
            return "view " + difference;
    }
    return OwnDifference(*cache, *twin);
}

namespace {

/// The corners of a polygon that was built for a rectangle.
bool HasCorners(const KUV2DPolygonRep& polygon, const layoutReference::View& twin)
{
    const float right = twin.position.x + twin.size.x;
    const float top = twin.position.y + twin.size.y;
    const std::vector<float> corners = {
        twin.position.x, twin.position.y, right, twin.position.y, right, top, twin.position.x, top};
    return polygon.GetPoints() == corners;
}

/// The one image of a view that was given a picture.
const KUV2DImagePixelRep* PictureIn(const VisTreeSpaceFillingView& view)
{
    for (const KUVRep* const rep : viewreading::ChildrenOf(view.GetBagRep())) {
        if (core::KindOf(*rep) == core::RepKind::Image)
            return static_cast<const KUV2DImagePixelRep*>(rep);
    }
    return nullptr;
}

bool HasPixels(const KUVPixelImage& image, const layoutReference::View& twin)
{
    int width = 0;
    int height = 0;
    image.GetSize(width, height);
    const auto bytes = static_cast<std::size_t>(width) * 4;
    if (bytes * static_cast<std::size_t>(height) != twin.pixels.size())
        return false;
    for (int y = 0; y < height; ++y) {
        if (std::memcmp(image.GetRow(y), twin.pixels.data() + bytes * static_cast<std::size_t>(y),
                        bytes) != 0)
            return false;
    }
    return true;
}

}  // namespace

std::string LayoutComparison::ViewDifference(VisTreeSpaceFillingView& view,
                                             const layoutReference::View& twin)
{
    using Content = layoutReference::View::Content;
    if ((view.GetSelectionStatus() != 0) != twin.isSelected)
        return twin.isSelected ? "not selected" : "selected";
    if ((view.GetHighlightStatus() != 0) != twin.isHighlighted)
        return twin.isHighlighted ? "not highlighted" : "highlighted";
    if (view.GetHighlightMode() != twin.highlightMode)
        return "highlight mode";
    // The outline stands in the bag only while it is lit.
    const bool isDark = view.GetHighlightMode() == 0 && !twin.isSelected && !twin.isHighlighted;
    if (isDark)
        view.SetHighlightStatus(1);
    const KUV2DPolygonRep* const outline = viewreading::Find<KUV2DPolygonRep>(
        view.GetBagRep(), view.GetHighlightMode() == 0 ? "contour" : "fill");
    const KUV2DImagePixelRep* const picture =
        twin.content == Content::Picture ? PictureIn(view) : nullptr;
    std::string difference;
    if (!outline != (twin.content == Content::Nothing))
        difference = outline ? "was built" : "was not built";
    else if (outline && !HasCorners(*outline, twin))
        difference = "outline from " + Text(outline->GetPoints()[0], outline->GetPoints()[1]) +
                     " to " + Text(outline->GetPoints()[4], outline->GetPoints()[5]) +
                     " instead of " + Text(twin.position.x, twin.position.y) + " size " +
                     Text(twin.size.x, twin.size.y);
    else if (!picture != (twin.content != Content::Picture))
        difference = "has no picture";
    else if (picture && !Same(picture->GetLowerLeft(), twin.position))
        difference = "picture at " + Text(picture->GetLowerLeft());
    else if (picture && !HasPixels(*picture->GetImage(), twin))
        difference = "picture";
    if (isDark)
        view.SetHighlightStatus(0);
    return difference;
}
