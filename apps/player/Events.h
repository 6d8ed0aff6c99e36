#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>

// The events of a script, one type for each kind. Numbers are what the events file says, checked
// against their ranges; positions are in device units, y downwards.

namespace player {

/// A node by its number: nodes are counted from 0 in pre-order. Nothing stands for no node.
using NodeNumber = std::optional<std::size_t>;

struct Pair {
    float x = 0;
    float y = 0;
};

enum class MouseAction : std::uint8_t { Press, Release, Motion, DoubleClick };

struct MouseEvent {
    MouseAction action = MouseAction::Motion;
    int button = 0;    ///< 1 left, 2 middle, 3 right, 0 none
    int buttons = 0;   ///< the buttons held down, as a mask
    int modifier = 0;  ///< 0 for none
    Pair position;
};

struct KeyEvent {
    std::uint32_t code = 0;
    int state = 1;  ///< 1: the key went down
};

struct ImeEvent {};

struct SelectEvent {
    NodeNumber node;
};

struct HighlightEvent {
    NodeNumber node;
};

struct SetRootEvent {
    NodeNumber node;
    unsigned char push = 1;
};

struct UnzoomEvent {};

/// Means something to the icicle layout only.
struct LastColumnsEvent {
    std::uint32_t count = 0xFFFFFFFFU;  ///< 0xFFFFFFFF: no limit
};

enum class Switch : std::uint8_t { EnableZoom, EnablePageKeys, ExtendWithKeys };

/// `ExtendWithKeys` means something to the icicle layout only.
struct SwitchEvent {
    Switch which = Switch::EnableZoom;
    unsigned char on = 0;
};

struct OffsetEvent {
    Pair offset;
};

/// Draws again, by default where it was drawn last.
struct DrawEvent {
    std::optional<Pair> position;
    std::optional<Pair> size;
};

using Event =
    std::variant<MouseEvent, KeyEvent, ImeEvent, SelectEvent, HighlightEvent, SetRootEvent,
                 UnzoomEvent, LastColumnsEvent, SwitchEvent, OffsetEvent, DrawEvent>;

}  // namespace player
