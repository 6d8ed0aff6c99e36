#include "player/EventPlayer.h"

#include <limits>

#include "player/LayoutOwner.h"

#include "VisDataTree.h"
#include "VisIcicleLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "core/StandaloneViewer.h"

namespace player {

namespace {

/// A pointer's position in whole device units. What an int cannot hold becomes its nearest value.
int Truncate(float value)
{
    constexpr float LIMIT = 2147483648.0F;
    if (value >= LIMIT)
        return std::numeric_limits<int>::max();
    if (value < -LIMIT)
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

KUVMathPoint2Df PointOf(const Pair& pair) { return {pair.x, pair.y}; }

}  // namespace

EventPlayer::EventPlayer(LayoutOwner& owner, const std::vector<VisDataTree*>& nodes,
                         const ViewerSettings& settings)
    : owner_(owner), nodes_(nodes), viewer_(new core::StandaloneViewer)
{
    viewer_->SetGraphicSize(settings.width, settings.height);
    viewer_->SetPointToPixelScale(settings.pointToPixelScale);
}

EventPlayer::~EventPlayer() { viewer_->Release(); }

void EventPlayer::Play(const Event& event)
{
    owner_.Log().BeginEntry();
    std::visit([this](const auto& one) { Do(one); }, event);
}

VisDataTree* EventPlayer::NodeAt(const NodeNumber& number) const
{
    return number && *number < nodes_.size() ? nodes_[*number] : nullptr;
}

// ---- devices

template <class DeviceEvent>
unsigned int EventPlayer::Deliver(const MouseEvent& event)
{
    DeviceEvent deviceEvent(&mouse_, event.button, event.position.x, event.position.y,
                            event.modifier);
    KUVViewerEvent inViewer(viewer_, &deviceEvent);
    return owner_.Layout().DeviceAction(&inViewer);
}

void EventPlayer::Do(const MouseEvent& event)
{
    mouse_.SetButtonsStatus(event.buttons);
    viewer_->SetMousePosition(Truncate(event.position.x), Truncate(event.position.y));
    unsigned int result = 1;
    switch (event.action) {
    case MouseAction::Press:
        result = Deliver<KUVPressEvent>(event);
        break;
    case MouseAction::Release:
        result = Deliver<KUVReleaseEvent>(event);
        break;
    case MouseAction::Motion:
        result = Deliver<KUVMotionEvent>(event);
        break;
    case MouseAction::DoubleClick:
        result = Deliver<KUVDoubleClick>(event);
        break;
    }
    owner_.Log().SetResult(result);
}

void EventPlayer::Do(const KeyEvent& event)
{
    KUVKeybdEvent key(event.code, event.state);
    owner_.Log().SetResult(owner_.Layout().KeyboardAction(&key));
}

void EventPlayer::Do(const ImeEvent& /*event*/)
{
    KUVIMEKeybdEvent composed;
    owner_.Log().SetResult(owner_.Layout().IMEKeyboardAction(&composed));
}

// ---- calls of the owner

void EventPlayer::Do(const SelectEvent& event)
{
    owner_.Layout().SetCurrentSelection(NodeAt(event.node));
}

void EventPlayer::Do(const HighlightEvent& event)
{
    VisDataTree* const node = NodeAt(event.node);
    owner_.Layout().SetCurrentHighlightedNode(node);
    // The end of a highlight is not announced.
    if (node == nullptr)
        owner_.SetHighlighted(nullptr);
}

void EventPlayer::Do(const SetRootEvent& event)
{
    owner_.Layout().SetCurrentRoot(NodeAt(event.node), event.push);
}

void EventPlayer::Do(const UnzoomEvent& /*event*/)
{
    owner_.Log().SetResult(owner_.Layout().Unzoom());
}

void EventPlayer::Do(const LastColumnsEvent& event)
{
    if (VisIcicleLayout* const icicle = owner_.Icicle())
        icicle->SetNLastNodes(event.count);
}

void EventPlayer::Do(const SwitchEvent& event)
{
    switch (event.which) {
    case Switch::EnableZoom:
        owner_.Layout().SetEnableZoom(event.on);
        break;
    case Switch::EnablePageKeys:
        owner_.Layout().SetEnablePageUpPageDown(event.on);
        break;
    case Switch::ExtendWithKeys:
        if (VisIcicleLayout* const icicle = owner_.Icicle())
            icicle->SetExtendWithKeys(event.on);
        break;
    }
}

void EventPlayer::Do(const OffsetEvent& event)
{
    owner_.Layout().SetDeviceActionOffset(PointOf(event.offset));
}

void EventPlayer::Do(const DrawEvent& event)
{
    const Drawing& last = owner_.LastDrawing();
    const KUVMathPoint2Df position = event.position ? PointOf(*event.position) : last.position;
    const KUVMathPoint2Df size = event.size ? PointOf(*event.size) : last.size;
    owner_.DrawOn(position, size);
}

}  // namespace player
