#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

class VisDataTree;

namespace player {

/// What a layout can say.
enum class Notice : std::uint8_t {
    SetCurrentRoot,
    SelectNode,
    HoverNode,
    RightClickNode,
    DoubleClick,
    SetLastColumns
};

/// The name under which a notice is dispatched.
const char* NameOf(Notice notice);

/// A notification, as the owner of a layout heard it. The nodes are borrowed.
struct HeardNotification {
    Notice notice = Notice::SelectNode;
    bool hasNodes = false;  ///< the payload is the node before and the node now
    const VisDataTree* previous = nullptr;
    const VisDataTree* node = nullptr;
    // Of `SetLastColumns`: the columns shown before and now (0xFFFFFFFF: no limit), and the page
    // key that stands for the direction.
    std::uint32_t oldColumns = 0;
    std::uint32_t newColumns = 0;
    std::uint32_t key = 0;
};

/// What happened: an entry for the set-up, and then one for each event, each with what was heard
/// meanwhile, in order.
class EventLog {
public:
    /// An entry, as a view of the log.
    struct Entry {
        std::optional<unsigned int> result;  ///< of the handler, where there is one
        const HeardNotification* begin;
        const HeardNotification* end;
    };

    EventLog() { BeginEntry(); }

    void BeginEntry() { entries_.push_back({heard_.size(), NO_RESULT}); }
    void Add(const HeardNotification& heard) { heard_.push_back(heard); }
    void SetResult(unsigned int result) { entries_.back().result = static_cast<int>(result); }

    /// At least 1: the first entry is the set-up's.
    std::size_t Size() const { return entries_.size(); }
    Entry At(std::size_t index) const;
    const std::vector<HeardNotification>& All() const { return heard_; }

private:
    static constexpr int NO_RESULT = -1;
    struct Start {
        std::size_t firstHeard;
        int result;
    };

    std::vector<Start> entries_;
    std::vector<HeardNotification> heard_;
};

}  // namespace player
