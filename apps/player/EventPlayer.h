#pragma once

#include <cstddef>
#include <vector>

#include "player/Events.h"

#include "KUVEvents.h"

class VisDataTree;

namespace core {
class StandaloneViewer;
}

namespace player {

class LayoutOwner;

/// The viewer that delivers the events.
struct ViewerSettings {
    float width = 0;  ///< device units, as the positions of events are
    float height = 0;
    float pointToPixelScale = 1;
};

/// Plays events on a layout as a host would deliver them: mouse events with their viewer and
/// device, keys, and calls by the layout's owner. Each event becomes an entry of the owner's log.
class EventPlayer {
public:
    /// `nodes` are the tree's, by number. All arguments outlive the player.
    EventPlayer(LayoutOwner& owner, const std::vector<VisDataTree*>& nodes,
                const ViewerSettings& settings);
    EventPlayer(const EventPlayer&) = delete;
    EventPlayer& operator=(const EventPlayer&) = delete;
    ~EventPlayer();

    /// A number of a node that does not exist counts as no node.
    void Play(const Event& event);

private:
    void Do(const MouseEvent& event);
    void Do(const KeyEvent& event);
    void Do(const ImeEvent& event);
    void Do(const SelectEvent& event);
    void Do(const HighlightEvent& event);
    void Do(const SetRootEvent& event);
    void Do(const UnzoomEvent& event);
    void Do(const LastColumnsEvent& event);
    void Do(const SwitchEvent& event);
    void Do(const OffsetEvent& event);
    void Do(const DrawEvent& event);

    VisDataTree* NodeAt(const NodeNumber& number) const;
    template <class DeviceEvent>
    unsigned int Deliver(const MouseEvent& event);

    LayoutOwner& owner_;
    const std::vector<VisDataTree*>& nodes_;
    core::StandaloneViewer* viewer_;
    KUVMouseDevice mouse_;
};

}  // namespace player
