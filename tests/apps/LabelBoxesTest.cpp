// Every label of every picture of the sample models lies inside the rectangle of its node.

#include "Program.h"

#include <algorithm>
#include <atomic>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

namespace dataviz::tests {

namespace {

namespace fs = std::filesystem;

struct Box {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

/// One tag of an SVG file: name ("/g" for an end) and attributes.
struct Tag {
    std::string name;
    std::map<std::string, std::string> attributes;

    bool Has(const std::string& key) const { return attributes.count(key) != 0; }
    double Number(const std::string& key) const
    {
        const auto found = attributes.find(key);
        return found == attributes.end() ? 0 : std::stod(found->second);
    }
};

/// Reads the next tag from `at` on; an empty name at the end. Enough XML for files of our own.
Tag NextTag(const std::string& svg, std::size_t& at)
{
    Tag tag;
    const std::size_t start = svg.find('<', at);
    if (start == std::string::npos)
        return tag;
    std::size_t i = start + 1;
    const auto isNameEnd = [](char c) { return c == ' ' || c == '>' || c == '\n' || c == '='; };
    while (i < svg.size() && !isNameEnd(svg[i]))
        tag.name += svg[i++];
    while (i < svg.size() && svg[i] != '>') {
        if (svg[i] == ' ' || svg[i] == '\n' || svg[i] == '/' || svg[i] == '?') {
            ++i;
            continue;
        }
        std::string key;
        while (i < svg.size() && !isNameEnd(svg[i]))
            key += svg[i++];
        const std::size_t open = svg.find('"', i);
        const std::size_t close = svg.find('"', open + 1);
        tag.attributes[key] = svg.substr(open + 1, close - open - 1);
        i = close + 1;
    }
    at = i;
    return tag;
}

/// Walks through an SVG file and measures labels against the first rectangle or image of their
/// group.
class LabelCheck {
public:
    explicit LabelCheck(const std::string& svg)
    {
        std::size_t at = 0;
        for (Tag tag = NextTag(svg, at); !tag.name.empty(); tag = NextTag(svg, at))
            Take(tag);
    }

    std::size_t Labels() const { return labels_; }
    const std::string& Problems() const { return problems_; }

private:
    void Take(const Tag& tag)
    {
        if (tag.name == "svg") {
            std::istringstream lines(tag.attributes.at("data-lines"));
            for (std::string line; std::getline(lines, line, ';');) {
                std::istringstream numbers(line);
                double size = 0;
                Line& extent = lines_[(numbers >> size, size)];
                numbers >> extent.above >> extent.below;
            }
        } else if (tag.name == "defs" || tag.name == "/defs") {
            isDefinition_ = tag.name == "defs";
        } else if (tag.name == "g") {
            nodes_.emplace_back();
        } else if (tag.name == "/g") {
            nodes_.pop_back();
        } else if (tag.name == "rect" || tag.name == "image" || tag.name == "use") {
            TakeArea(tag);
        } else if (tag.name == "text") {
            TakeLabel(tag);
        }
    }

    void TakeArea(const Tag& tag)
    {
        Box box{tag.Number("x"), tag.Number("y"), tag.Number("width"), tag.Number("height")};
        if (tag.name == "use") {
            const Box& original = images_[tag.attributes.at("xlink:href").substr(1)];
            box.right = original.right;
            box.bottom = original.bottom;
        }
        if (tag.Has("id"))
            images_[tag.attributes.at("id")] = box;
        box.right += box.left;
        box.bottom += box.top;
        if (!isDefinition_ && !nodes_.empty() && nodes_.back().empty())
            nodes_.back().push_back(box);
    }

    void TakeLabel(const Tag& tag)
    {
        ++labels_;
        const Line& line = lines_.at(tag.Number("font-size"));
        const double x = tag.Number("x");
        const double y = tag.Number("y");
        const Box label{x, y - line.above, x + tag.Number("textLength"), y + line.below};
        const bool isInside =
            !nodes_.empty() && !nodes_.back().empty() && label.left >= nodes_.back()[0].left &&
            label.top >= nodes_.back()[0].top && label.right <= nodes_.back()[0].right &&
            label.bottom <= nodes_.back()[0].bottom;
        if (!isInside && problems_.size() < 1000) {
            std::ostringstream text;
            text << "  label at " << x << "," << y << " is " << label.right - label.left
                 << " wide\n";
            problems_ += text.str();
        }
    }

    /// What a line of text covers above and below its baseline, in pixels.
    struct Line {
        double above = 0;
        double below = 0;
    };

    std::map<double, Line> lines_;  // by font size
    bool isDefinition_ = false;
    std::vector<std::vector<Box>> nodes_;  // of the open groups: none or one box each
    std::map<std::string, Box> images_;    // right and bottom are width and height
    std::size_t labels_ = 0;
    std::string problems_;
};

/// All models and trees of the samples, the largest first, so that the last ones are quick.
std::vector<fs::path> Samples()
{
    std::vector<fs::path> files;
    for (const char* const folder : {"step", "iges", "gltf", "mesh", "trees"}) {
        if (!fs::exists(SampleModels() / folder))
            continue;
        for (const fs::directory_entry& entry :
             fs::recursive_directory_iterator(SampleModels() / folder)) {
            const bool isCompanion = entry.path().extension() == ".bin";
            if (entry.is_regular_file() && !isCompanion &&
                entry.path().filename() != "us_budget_table.json")
                files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
        return fs::file_size(a) != fs::file_size(b) ? fs::file_size(a) > fs::file_size(b) : a < b;
    });
    return files;
}

}  // namespace

TEST(LabelBoxes, FindALabelThatLeavesItsRectangle)
{
    const std::string start = R"(<svg data-lines="12 11 3;24 22 6"><g><g><rect x="0" y="0" )";
    const std::string label =
        R"(height="15"/><text x="1" y="12" font-size="12" textLength="30">a</text>)";
    EXPECT_EQ(LabelCheck(start + R"(width="32" )" + label).Problems(), "");
    EXPECT_NE(LabelCheck(start + R"(width="30" )" + label).Problems(), "");
    EXPECT_EQ(LabelCheck(start + R"(width="32" )" + label).Labels(), 1u);
}

TEST(LabelBoxes, LieInsideTheirNodesInTheIciclePlotOfTheExample)
{
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"--size", "1300x2000"},
                                               {"--size", "fit"},
                                               {"--size", "fit", "--scale", "1.5"},
                                               {"--size", "fit", "--last-columns", "2"},
                                               {"--size", "fit", "--inline-labels"}}) {
        std::vector<std::string> words{"render",   KUV_SOURCE_DIR "/examples/example.step",
                                       "-o",       "-",
                                       "--format", "svg",
                                       "--layout", "icicle"};
        words.insert(words.end(), options.begin(), options.end());
        const ProgramRun run = RunProgram(words);
        const LabelCheck check(run.output);
        EXPECT_EQ(run.status, 0) << run.errors;
        EXPECT_EQ(check.Problems(), "") << options.back();
        EXPECT_GT(check.Labels(), 100U) << options.back();
    }
}

TEST(LabelBoxes, LieInsideTheirNodesInTheIciclePlotsOfTheSampleTrees)
{
    std::size_t labels = 0;
    for (const fs::path& sample : Samples()) {
        if (sample.parent_path().filename() != "trees")
            continue;
        const ProgramRun run = RunProgram({"render", sample.string(), "-o", "-", "--format", "svg",
                                           "--layout", "icicle", "--size", "fit"});
        const LabelCheck check(run.output);
        EXPECT_EQ(run.status, 0) << sample << ": " << run.errors;
        EXPECT_EQ(check.Problems(), "") << sample;
        labels += check.Labels();
    }
    if (labels == 0)
        GTEST_SKIP() << "no sample trees in " << SampleModels();
    std::cout << "count: " << labels << " labels inside their rectangles in icicle plots\n";
}

TEST(LabelBoxes, LieInsideTheirNodesOnEveryModel)
{
    const std::vector<fs::path> samples = Samples();
    if (samples.empty())
        GTEST_SKIP() << "no sample models in " << SampleModels();
    std::atomic<std::size_t> next = 0;
    std::size_t labels = 0;
    std::mutex results;
    const auto work = [&] {
        for (std::size_t i = next++; i < samples.size(); i = next++) {
            const ProgramRun run = RunProgram({"render", samples[i].string(), "-o", "-", "--format",
                                               "svg", "--mesh-quality", "very-coarse"});
            const LabelCheck check(run.output);
            const std::lock_guard<std::mutex> lock(results);
            EXPECT_EQ(run.status, 0) << samples[i] << ": " << run.errors;
            EXPECT_EQ(check.Problems(), "") << samples[i];
            EXPECT_GT(check.Labels(), 0u) << samples[i];
            labels += check.Labels();
        }
    };
    std::thread second(work);
    work();
    second.join();
    std::cout << "count: " << labels << " labels inside their rectangles in the pictures of "
              << samples.size() << " models and trees\n";
}

}  // namespace dataviz::tests
