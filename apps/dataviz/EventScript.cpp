#include "EventScript.h"

#include "InputFile.h"
#include "player/EventsFile.h"

namespace dataviz {

std::optional<Failure> EventScript::Load(const std::string& path)
{
    path_ = path;
    if (path.empty())
        return std::nullopt;
    if (const std::optional<std::string> problem = ReadInputFile(path, text_))
        return Failure{path, *problem};
    if (const auto error = player::ReadEvents(text_, std::nullopt, events_))
        return Failure{path, error->Text()};
    return std::nullopt;
}

std::optional<Failure> EventScript::CheckNodes(std::size_t nodeCount)
{
    const std::optional<std::size_t> largest = player::LargestNode(events_);
    std::optional<Failure> failure;
    if (largest && *largest >= nodeCount) {
        if (const auto error = player::ReadEvents(text_, nodeCount, events_))
            failure = Failure{path_, error->Text()};
    }
    text_ = {};
    return failure;
}

}  // namespace dataviz
