// Feeds any bytes to the reader of events files. Whatever they are, it ends with events whose
// numbers lie within their ranges, or with an error whose place lies in the text.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "Require.h"
#include "player/EventsFile.h"

namespace {

constexpr std::size_t NODES = 10;

using fuzz::Require;

bool IsFinite(const player::Pair& pair) { return std::isfinite(pair.x) && std::isfinite(pair.y); }

void CheckNumbers(const player::Event& event)
{
    if (const auto* const mouse = std::get_if<player::MouseEvent>(&event)) {
        Require(IsFinite(mouse->position));
    } else if (const auto* const columns = std::get_if<player::LastColumnsEvent>(&event)) {
        Require(columns->count >= 1);
    } else if (const auto* const offset = std::get_if<player::OffsetEvent>(&event)) {
        Require(IsFinite(offset->offset));
    } else if (const auto* const draw = std::get_if<player::DrawEvent>(&event)) {
        Require(!draw->position || IsFinite(*draw->position));
        Require(!draw->size || IsFinite(*draw->size));
    }
}

void CheckError(const player::EventsFileError& error, std::string_view text)
{
    const auto lines = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    Require(error.line >= 1 && error.line <= lines);
    Require(error.column >= 1 && error.column <= text.size() + 1);
    Require(!error.reason.empty() && error.reason.find('\n') == std::string::npos);
    Require(error.Text().find(error.reason) != std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<player::Event> events;
    const auto error = player::ReadEvents(text, std::nullopt, events);
    const std::optional<std::size_t> largest = player::LargestNode(events);
    if (error) {
        CheckError(*error, text);
        Require(events.empty());
    } else {
        // Every event begins with a brace of its own.
        Require(events.size() <=
                static_cast<std::size_t>(std::count(text.begin(), text.end(), '{')));
        for (const player::Event& event : events)
            CheckNumbers(event);
    }

    // With the number of nodes known the same text fails for nothing but a node that is not there.
    std::vector<player::Event> checked;
    const auto nodeError = player::ReadEvents(text, NODES, checked);
    const bool hasAllNodes = !largest || *largest < NODES;
    Require(nodeError.has_value() == (error.has_value() || !hasAllNodes));
    if (nodeError)
        CheckError(*nodeError, text);
    else
        Require(checked.size() == events.size());
    return 0;
}
