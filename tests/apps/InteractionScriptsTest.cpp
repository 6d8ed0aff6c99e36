// The scripts of tests/interaction, each against what it says must happen.

#include "InteractionScript.h"

#include <cstdlib>
#include <iostream>
#include <set>

#include <gtest/gtest.h>

namespace player::tests {

namespace {

std::vector<InteractionScript> AllScripts()
{
    return ReadInteractionScripts(KUV_SOURCE_DIR "/tests/interaction");
}

}  // namespace

TEST(InteractionScripts, DoWhatTheySay)
{
    std::size_t scripts = 0;
    std::size_t steps = 0;
    for (const InteractionScript& script : AllScripts()) {
        if (!HasEnvironmentOf(script))
            continue;
        const std::string title = script.script.at("title");
        EXPECT_EQ(PlayInteractionScript(script), "") << script.file << ": " << title;
        ++scripts;
        steps += script.script.at("steps").size();
    }
    EXPECT_GT(scripts, 0U);
    std::cout << "count: " << scripts << " interaction scripts with " << steps << " steps played\n";
}

TEST(InteractionScripts, DoWhatTheySayInTheEnvironmentThatTheyAskFor)
{
    // The module reads its switches once a process, so each environment gets a process of its own.
    std::set<std::string> environments;
    for (const InteractionScript& script : AllScripts()) {
        std::string variables;
        for (const auto& [name, value] : script.environment.items())
            variables += name + "=" + value.get<std::string>() + " ";
        if (!variables.empty())
            environments.insert(variables);
    }
    EXPECT_FALSE(environments.empty());
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    for (const std::string& variables : environments) {
        const std::string command =
            variables + "'" + self + "' --gtest_filter=InteractionScripts.DoWhatTheySay";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }
}

TEST(InteractionScripts, HaveTitlesOfTheirOwnAndSteps)
{
    std::set<std::string> titles;
    for (const InteractionScript& script : AllScripts()) {
        const std::string title = script.script.at("title");
        EXPECT_TRUE(titles.insert(title).second) << script.file << ": " << title;
        EXPECT_FALSE(script.script.at("steps").empty()) << script.file << ": " << title;
    }
}

TEST(InteractionScripts, AreToldApartFromWhatTheLayoutDoes)
{
    // A test that cannot fail would be no test: every kind of expectation is turned wrong once.
    std::size_t tried = 0;
    for (const InteractionScript& script : AllScripts()) {
        if (!HasEnvironmentOf(script))
            continue;
        for (std::size_t i = 0; i < script.script.at("steps").size(); ++i) {
            InteractionScript wrong = script;
            auto& step = wrong.script["steps"][i];
            for (const char* const key : {"hears", "selection", "root"}) {
                if (!step.contains(key))
                    continue;
                const auto right = step[key];
                step[key] = "something else";
                EXPECT_NE(PlayInteractionScript(wrong), "") << script.file << " step " << i + 1;
                step[key] = right;
                ++tried;
            }
        }
        if (tried > 100)
            break;
    }
    EXPECT_GT(tried, 0U);
}

}  // namespace player::tests
