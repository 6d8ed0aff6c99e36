#pragma once

#include <string>
#include <string_view>

namespace dataviz {

/// The text as it may go to a terminal as a part of one line: control characters (C0, delete, C1)
/// and bytes that are not UTF-8 stand as "\x1b", everything else as it is. What comes out passes
/// unchanged a second time.
std::string OneLine(std::string_view text);

}  // namespace dataviz
