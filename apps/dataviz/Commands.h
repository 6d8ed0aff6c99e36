#pragma once

#include <string>

#include "Options.h"
#include "Supervisor.h"

namespace dataviz {

// The work of the commands. Runs in the supervised child process, writes its whole output to a file
// that exists already, and ends with exactly one of the channel's Finish and Fail.

void RunRender(const RenderOptions& options, const std::string& outputFile, WorkChannel& channel);
void RunInfo(const InfoOptions& options, const std::string& outputFile, WorkChannel& channel);

}  // namespace dataviz
