#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Supervisor.h"
#include "player/Events.h"

namespace dataviz {

/// The events that a command line names.
class EventScript {
public:
    /// Reads a file, "-" being standard input; an empty name gives no events. Says what is wrong
    /// with the file, but for numbers of nodes.
    std::optional<Failure> Load(const std::string& path);
    /// Says which event names a node that a tree of so many nodes does not have, if one does.
    std::optional<Failure> CheckNodes(std::size_t nodeCount);

    const std::vector<player::Event>& Events() const { return events_; }

private:
    std::string path_;
    std::string text_;  // until the numbers of nodes are checked
    std::vector<player::Event> events_;
};

}  // namespace dataviz
