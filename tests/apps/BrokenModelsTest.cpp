// Files that are damaged, hostile or no models at all: each ends as the table of tests/models says.

#include "Program.h"

#include <algorithm>
#include <iostream>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace dataviz::tests {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

Json Table() { return Json::parse(ReadFile(KUV_SOURCE_DIR "/tests/models/broken.json")); }

/// An error: one line with the reason, status 1, and no file.
void ExpectError(const ProgramRun& run, const std::string& file, const std::string& says,
                 const ScratchFolder& folder)
{
    EXPECT_EQ(run.status, 1) << file << ": " << run.errors;
    EXPECT_EQ(run.errors.rfind("dataviz: " + file + ": ", 0), 0u) << run.errors;
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
    EXPECT_NE(run.errors.find(says), std::string::npos) << run.errors << "should say " << says;
    EXPECT_EQ(folder.Entries().size(), 0u) << file << " leaves a file behind";
}

/// A picture with labels; every line on standard error is a warning.
void ExpectPicture(const ProgramRun& run, const std::string& file, const std::string& says,
                   bool isWarned, const std::string& picture)
{
    EXPECT_EQ(run.status, 0) << file << ": " << run.errors;
    EXPECT_NE(ReadFile(picture).find("<text"), std::string::npos)
        << file << " gives an empty picture";
    EXPECT_EQ(!run.errors.empty(), isWarned) << file << ": " << run.errors;
    EXPECT_NE(run.errors.find(says), std::string::npos) << run.errors << "should say " << says;
    const std::string beginning = "dataviz: " + file + ": warning: ";
    for (std::size_t at = 0; at < run.errors.size(); at = run.errors.find('\n', at) + 1)
        EXPECT_EQ(run.errors.compare(at, beginning.size(), beginning), 0) << run.errors;
}

}  // namespace

TEST(BrokenModels, EndAsTheTableSays)
{
    const fs::path samples = SampleModels() / "broken";
    if (!fs::exists(samples))
        GTEST_SKIP() << "no sample models in " << samples;
    const Json table = Table();
    for (const auto& [name, entry] : table.items()) {
        const ScratchFolder folder;
        const std::string file = (samples / name).string();
        const std::string picture = folder / "out.svg";
        const ProgramRun run = RunProgram({"render", file, "-o", picture});
        if (entry["ends"] == "error")
            ExpectError(run, file, entry["says"], folder);
        else
            ExpectPicture(run, file, entry["says"], entry["ends"] == "warning", picture);
    }
    std::cout << "count: " << table.size() << " broken files end as the table says\n";
}

TEST(BrokenModels, StandInTheTableEachOfThem)
{
    const fs::path samples = SampleModels() / "broken";
    if (!fs::exists(samples))
        GTEST_SKIP() << "no sample models in " << samples;
    std::set<std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(samples)) {
        if (entry.is_regular_file())
            files.insert(entry.path().lexically_relative(samples).string());
    }
    std::set<std::string> listed;
    const Json table = Table();
    for (const auto& [name, entry] : table.items())
        listed.insert(name);
    EXPECT_EQ(files, listed);
}

}  // namespace dataviz::tests
