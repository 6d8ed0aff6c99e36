#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace player::tests {

/// A script of tests/interaction: a tree, how it is drawn, and steps with what they must do. The
/// format is told in the folder's README.
struct InteractionScript {
    std::string file;
    nlohmann::ordered_json tree;
    nlohmann::ordered_json options;
    nlohmann::ordered_json environment;  ///< variables that the process must have
    nlohmann::ordered_json script;       ///< "title" and "steps"
};

/// All scripts of a folder, in the order of the names of the files and then as they stand there.
std::vector<InteractionScript> ReadInteractionScripts(const std::filesystem::path& folder);

/// Whether this process has the environment that the script asks for, neither more nor less.
bool HasEnvironmentOf(const InteractionScript& script);

/// Plays a script. Gives a line for everything that was not as it must be; empty when all is.
std::string PlayInteractionScript(const InteractionScript& script);

}  // namespace player::tests
