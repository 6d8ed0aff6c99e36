#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "player/Events.h"

namespace player {

/// Why a text is no events file, and where. Lines and columns count from 1, columns in characters.
struct EventsFileError {
    std::uint64_t line = 1;
    std::uint64_t column = 1;
    std::string reason;

    /// "line 3, column 17: reason"
    std::string Text() const;
};

/// Reads a whole events file: a JSON array of events, or one event after the other, each beginning
/// on a line of its own. No events at all are a script, too.
///
/// Keys that an event does not know are ignored. With `nodeCount` a number of a node that does not
/// exist is an error; without, it is left to the caller (`LargestNode`). Takes time and memory in
/// proportion to the text. After an error `events` is empty.
std::optional<EventsFileError>
ReadEvents(std::string_view text, std::optional<std::size_t> nodeCount, std::vector<Event>& events);

/// The largest number of a node that the events name.
std::optional<std::size_t> LargestNode(const std::vector<Event>& events);

}  // namespace player
