#include "player/EventLog.h"

#include "VisIcicleLayout.h"
#include "VisTreeSpaceFillingLayout.h"

namespace player {

const char* NameOf(Notice notice)
{
    switch (notice) {
    case Notice::SetCurrentRoot:
        return VisTreeSpaceFillingLayout::ON_SET_CURRENT_ROOT();
    case Notice::SelectNode:
        return VisTreeSpaceFillingLayout::ON_SELECT_NODE();
    case Notice::HoverNode:
        return VisTreeSpaceFillingLayout::ON_HOVER_NODE();
    case Notice::RightClickNode:
        return VisTreeSpaceFillingLayout::ON_RIGHT_CLICK_NODE();
    case Notice::DoubleClick:
        return VisTreeSpaceFillingLayout::ON_DOUBLE_CLICK();
    case Notice::SetLastColumns:
        return VisIcicleLayout::ON_SET_NLAST_NODES();
    }
    return "";
}

EventLog::Entry EventLog::At(std::size_t index) const
{
    const std::size_t first = entries_[index].firstHeard;
    const std::size_t end =
        index + 1 < entries_.size() ? entries_[index + 1].firstHeard : heard_.size();
    Entry entry{std::nullopt, heard_.data() + first, heard_.data() + end};
    if (entries_[index].result != NO_RESULT)
        entry.result = static_cast<unsigned int>(entries_[index].result);
    return entry;
}

}  // namespace player
