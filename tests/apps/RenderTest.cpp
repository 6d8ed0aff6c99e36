// `dataviz render`, run as users run it.

#include "Program.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace dataviz::tests {

namespace {

using Json = nlohmann::json;

constexpr const char* THREE_LEAVES = R"({"label":"root","children":[
    {"label":"a","value":3},{"label":"b","value":2,"color":7},{"label":"c"}]})";

/// The geometry of a tree file's text.
Json Geometry(const std::string& tree, std::vector<std::string> options = {})
{
    options.insert(options.begin(), {"render", "-", "-o", "-", "--format", "json"});
    const ProgramRun run = RunProgram(options, tree);
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    return run.status == 0 ? Json::parse(run.output) : Json();
}

/// Runs what must fail with an error line on its input, and gives the line.
std::string ErrorLine(const std::vector<std::string>& words, int status,
                      const std::string& input = {})
{
    const ProgramRun run = RunProgram(words, input);
    EXPECT_EQ(run.status, status) << run.errors;
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
    return run.errors.substr(0, run.errors.find('\n'));
}

std::string NestedChain(std::size_t levels)
{
    std::string text;
    for (std::size_t i = 1; i < levels; ++i)
        text += R"({"label":"level","children":[)";
    text += "{}";
    for (std::size_t i = 1; i < levels; ++i)
        text += "]}";
    return text;
}

}  // namespace

// ---- geometry

TEST(Render, LaysThreeLeavesOutInAGridWhenTheStripsAreTooNarrow)
{
    //    1        48.06  50.06      97.12
    //    +-----------+   +-----------+  35
    //    |     0     |   |     1     |
    //    +-----------+   +-----------+  20
    //    +-----------+                  18
    //    |     2     |
    //    +-----------+                   3
    // The root's first strips would lie side by side; the command line starts with stacked ones, so
    // the tree gets one level more whose strips are side by side.
    const Json picture = Geometry(THREE_LEAVES, {"--size", "100x50"});
    const Json& nodes = picture["nodes"];
    ASSERT_EQ(nodes.size(), 4u);
    EXPECT_EQ(nodes[0]["expanded"], true);
    for (const std::size_t leaf : {1U, 2U, 3U}) {
        EXPECT_NEAR(nodes[leaf]["size"][0].get<double>(), 47.06, 0.005);
        EXPECT_EQ(nodes[leaf]["size"][1], 15);
    }
    EXPECT_EQ(nodes[1]["position"], Json({1, 20}));
    EXPECT_EQ(nodes[3]["position"], Json({1, 3}));
}

TEST(Render, WritesEveryKeyOfTheGeometry)
{
    const Json picture = Geometry(THREE_LEAVES);
    std::set<std::string> keys;
    for (const auto& [key, value] : picture.items())
        keys.insert(key);
    EXPECT_EQ(keys,
              (std::set<std::string>{"schema", "layout", "origin", "size", "scale", "currentRoot",
                                     "selection", "leafSelection", "highlighted", "zoomStack",
                                     "lastColumns", "columns", "nodes", "log"}));
    EXPECT_EQ(picture["schema"], 1);
    EXPECT_EQ(picture["layout"], "treemap");
    EXPECT_EQ(picture["origin"], Json({0, 0}));
    EXPECT_EQ(picture["size"], Json({1280, 800}));
    EXPECT_EQ(picture["scale"], 1);
    EXPECT_EQ(picture["currentRoot"], 0);
    EXPECT_EQ(picture["selection"], 1) << "the first leaf";
    EXPECT_EQ(picture["leafSelection"], 1);
    EXPECT_TRUE(picture["highlighted"].is_null());
    EXPECT_EQ(picture["zoomStack"], Json::array());
    EXPECT_TRUE(picture["lastColumns"].is_null());
    EXPECT_TRUE(picture["columns"].is_null());
    keys.clear();
    for (const auto& [key, value] : picture["nodes"][1].items())
        keys.insert(key);
    EXPECT_EQ(keys, (std::set<std::string>{"id", "parent", "label", "icon", "leafObject",
                                           "mergeable", "merged", "sizeValue", "colorValue",
                                           "expanded", "discarded", "showLabel", "position", "size",
                                           "minimumSize", "view", "lastMode"}));
    keys.clear();
    for (const auto& [key, value] : picture["nodes"][1]["view"].items())
        keys.insert(key);
    EXPECT_EQ(keys, (std::set<std::string>{"position", "size", "selected", "highlighted", "bright",
                                           "cropped", "shownLabel", "labelColor", "background",
                                           "parts"}));
}

TEST(Render, WritesWhatTheTreeFileSays)
{
    const Json nodes =
        Geometry(R"({"name":"r","children":[{"name":"é\n","icon":"i","value":5,"color":9,
        "mergeable":true,"merged":true,"leafObject":true},{"children":[{},{}]}]})")["nodes"];
    ASSERT_EQ(nodes.size(), 5u);
    EXPECT_EQ(nodes[0]["sizeValue"], 7);
    EXPECT_TRUE(nodes[0]["parent"].is_null());
    EXPECT_EQ(nodes[1]["label"], "é\n");
    EXPECT_EQ(nodes[1]["icon"], "i");
    EXPECT_EQ(nodes[1]["sizeValue"], 5);
    EXPECT_EQ(nodes[1]["colorValue"], 9);
    EXPECT_EQ(nodes[1]["mergeable"], true);
    EXPECT_EQ(nodes[1]["merged"], true);
    EXPECT_EQ(nodes[1]["leafObject"], true);
    EXPECT_EQ(nodes[1]["showLabel"], true);
    EXPECT_EQ(nodes[2]["sizeValue"], 2);
    EXPECT_EQ(nodes[4]["parent"], 2);
    EXPECT_EQ(nodes[4]["id"], 4);
}

TEST(Render, LogsTheSelectionThatEndsTheSetUp)
{
    const Json log = Geometry(THREE_LEAVES)["log"];
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0]["index"], -1);
    EXPECT_TRUE(log[0]["result"].is_null());
    EXPECT_EQ(log[0]["notifications"],
              Json::parse(R"([{"name":"VisTreeSpaceFillingLayoutON_SELECT_NODEEvt",
        "previous":1,"node":1}])"));
}

TEST(Render, ShowsTheSelectedLeafWithItsContour)
{
    const Json nodes = Geometry(THREE_LEAVES)["nodes"];
    EXPECT_EQ(nodes[1]["view"]["selected"], true);
    EXPECT_EQ(nodes[1]["view"]["parts"], Json({"background", "contour", "label"}));
    EXPECT_EQ(nodes[2]["view"]["parts"], Json({"background", "label"}));
    EXPECT_EQ(nodes[0]["view"]["background"], "#007da3");
    EXPECT_EQ(nodes[2]["view"]["background"], "#0088de");
    EXPECT_EQ(nodes[2]["view"]["labelColor"], "#ffffff");
}

TEST(Render, MovesAndScalesTheViewsOnly)
{
    const Json plain = Geometry(THREE_LEAVES, {"--size", "300x200"});
    const Json scaled =
        Geometry(THREE_LEAVES, {"--size", "300x200", "--origin", "10,-20", "--scale", "2.5"});
    EXPECT_EQ(scaled["scale"], 2.5);
    EXPECT_EQ(scaled["origin"], Json({10, -20}));
    for (std::size_t i = 0; i < 4; ++i) {
        const Json& before = plain["nodes"][i];
        const Json& after = scaled["nodes"][i];
        EXPECT_EQ(after["size"], before["size"]);
        for (const std::size_t axis : {0U, 1U}) {
            const double origin = axis == 0 ? 10 : -20;
            const double position = before["position"][axis].get<double>();
            EXPECT_FLOAT_EQ(after["position"][axis].get<float>(),
                            static_cast<float>(position + origin));
            EXPECT_FLOAT_EQ(after["view"]["position"][axis].get<float>(),
                            static_cast<float>(position * 2.5 + origin));
            EXPECT_FLOAT_EQ(after["view"]["size"][axis].get<float>(),
                            static_cast<float>(before["size"][axis].get<double>() * 2.5));
        }
    }
}

TEST(Render, ClearsTheShowLabelFlagsWithNoLabels)
{
    for (const Json& node : Geometry(THREE_LEAVES, {"--no-labels"})["nodes"])
        EXPECT_EQ(node["showLabel"], false);
}

TEST(Render, ShadesByValueWhenAsked)
{
    const Json coloured = Geometry(THREE_LEAVES, {"--color-by-value"})["nodes"];
    EXPECT_EQ(coloured[0]["view"]["background"], "#ffffff") << "the root against itself";
    EXPECT_EQ(coloured[1]["view"]["background"], "#7f7f7f") << "3 of 6";
    const Json sized = Geometry(THREE_LEAVES, {"--resize-by-value"})["nodes"];
    EXPECT_EQ(sized[2]["view"]["background"], "#555555")
        << "2 of 6: the colour value does not count";
}

TEST(Render, CropsNoLabelWithoutAFont)
{
    const std::string tree = R"({"label":"a label that is far too long for a rectangle so small"})";
    const Json cropped = Geometry(tree, {"--size", "60x20"})["nodes"][0]["view"];
    EXPECT_EQ(cropped["cropped"], true);
    const Json whole = Geometry(tree, {"--size", "60x20", "--font", "none"})["nodes"][0]["view"];
    EXPECT_EQ(whole["cropped"], false);
    EXPECT_EQ(whole["shownLabel"], "a label that is far too long for a rectangle so small");
}

TEST(Render, HidesTheChildrenOfACollapsedNode)
{
    const Json nodes = Geometry(THREE_LEAVES, {"--size", "40x20"})["nodes"];
    EXPECT_EQ(nodes[0]["expanded"], false);
    EXPECT_EQ(nodes[0]["view"]["background"], "texture");
    EXPECT_EQ(nodes[1]["discarded"], true);
    EXPECT_TRUE(nodes[1]["view"].is_null());
}

TEST(Render, GivesTheSameBytesTwice)
{
    const ProgramRun first =
        RunProgram({"render", "-", "-o", "-", "--format", "json"}, THREE_LEAVES);
    const ProgramRun second =
        RunProgram({"render", "-", "-o", "-", "--format", "json"}, THREE_LEAVES);
    EXPECT_EQ(first.output, second.output);
}

// ---- pictures

TEST(Render, WritesEachFormatByTheNameOfItsFile)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("tree.json", THREE_LEAVES);
    const std::vector<std::pair<std::string, std::string>> beginnings{
        {"a.png", "\x89PNG\r\n"}, {"a.svg", "<"}, {"a.pdf", "%PDF-"}, {"a.json", "{"}};
    for (const auto& [name, beginning] : beginnings) {
        const ProgramRun run = RunProgram({"render", tree, "-o", folder / name});
        EXPECT_EQ(run.status, 0) << run.errors;
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(ReadFile(folder / name).substr(0, beginning.size()), beginning) << name;
    }
    EXPECT_EQ(folder.Entries(),
              (std::vector<std::string>{"a.json", "a.pdf", "a.png", "a.svg", "tree.json"}))
        << "and no temporary file";
}

TEST(Render, MakesAPictureOfSizeTimesScalePixels)
{
    const ProgramRun run = RunProgram(
        {"render", "-", "-o", "-", "--format", "png", "--size", "101x50", "--scale", "1.5"},
        THREE_LEAVES);
    ASSERT_GT(run.output.size(), 24u);
    const auto number = [&](std::size_t at) {
        unsigned value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value = value << 8U | static_cast<unsigned char>(run.output[at + i]);
        return value;
    };
    EXPECT_EQ(number(16), 152u) << "151.5, rounded";
    EXPECT_EQ(number(20), 75u);
}

TEST(Render, ReadsCsvFromStandardInput)
{
    const Json picture = Geometry("path,size\nsrc/a.c,10\nsrc/b.c,20\n");
    EXPECT_EQ(picture["nodes"][0]["label"], "src");
    EXPECT_EQ(picture["nodes"][0]["sizeValue"], 30);
}

TEST(Render, EscapesLabelsInSvg)
{
    const ProgramRun run = RunProgram({"render", "-", "-o", "-", "--format", "svg"},
                                      R"({"label":"<a & \"b\"> \u0001"})");
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.output.find("&lt;a &amp;"), std::string::npos);
    EXPECT_EQ(run.output.find('\x01'), std::string::npos);
}

// ---- failures

TEST(Render, NamesTheLineAndColumnOfAMalformedTreeFile)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("tree.json", "{\"label\":\"a\",\n \"value\": -1}");
    EXPECT_EQ(ErrorLine({"render", tree, "-o", folder / "out.png"}, 1),
              "dataviz: " + tree + ": line 2, column 11: the number of \"value\" is negative");
    EXPECT_EQ(folder.Entries(), (std::vector<std::string>{"tree.json"})) << "no output file";
}

TEST(Render, SaysWhyTheInputCannotBeRead)
{
    const ScratchFolder folder;
    const std::string out = folder / "out.svg";
    EXPECT_EQ(ErrorLine({"render", folder / "absent.step", "-o", out}, 1),
              "dataviz: " + (folder / "absent.step") +
                  ": cannot be read: No such file or directory");
    EXPECT_EQ(ErrorLine({"render", folder / ".", "-o", out}, 1),
              "dataviz: " + (folder / ".") + ": is a directory");
    const std::string empty = folder.Write("empty.json", "");
    EXPECT_EQ(ErrorLine({"render", empty, "-o", out}, 1),
              "dataviz: " + empty + ": line 1, column 1: is empty");
    EXPECT_EQ(ErrorLine({"render", "-", "-o", out}, 1, "no tree")
                  .rfind("dataviz: -: line 1, column 1: ", 0),
              0u);
    EXPECT_EQ(folder.Entries(), (std::vector<std::string>{"empty.json"}));
}

TEST(Render, SaysWhyTheOutputCannotBeWritten)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("tree.json", THREE_LEAVES);
    const std::string out = folder / "absent/out.png";
    EXPECT_EQ(ErrorLine({"render", tree, "-o", out}, 1),
              "dataviz: " + out + ": cannot be written: No such file or directory");
    EXPECT_EQ(ErrorLine({"render", tree, "-o", "/dev/full", "--format", "svg"}, 1),
              "dataviz: /dev/full: cannot be written: No space left on device");
}

TEST(Render, RefusesAPngThatIsTooLarge)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("tree.json", THREE_LEAVES);
    const std::string line =
        ErrorLine({"render", tree, "-o", folder / "out.png", "--size", "40000x10"}, 1);
    EXPECT_NE(line.find("32,767"), std::string::npos) << line;
    EXPECT_EQ(folder.Entries(), (std::vector<std::string>{"tree.json"}));
}

TEST(Render, ExitsWithTwoOnWrongUsage)
{
    EXPECT_EQ(ErrorLine({"render", "in.json", "-o", "out.gif"}, 2),
              "dataviz: out.gif: the name does not end in .png, .svg, .pdf, .json or .html; "
              "give --format");
    EXPECT_EQ(ErrorLine({"render"}, 2), "dataviz: INPUT is required");
}

TEST(Render, KeepsAnEarlierPictureWhenItFails)
{
    const ScratchFolder folder;
    const std::string out = folder.Write("out.svg", "earlier");
    ErrorLine({"render", "-", "-o", out}, 1, "{");
    EXPECT_EQ(ReadFile(out), "earlier");
}

TEST(Render, SaysOnlyWithProgressWhatItDoesWhereThereIsNoTerminal)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("tree.json", THREE_LEAVES);
    EXPECT_EQ(RunProgram({"render", tree, "-o", folder / "a.svg"}).errors, "");
    const std::string log =
        RunProgram({"render", tree, "-o", folder / "a.svg", "--progress"}).errors;
    EXPECT_NE(log.find(tree + ": reading: "), std::string::npos) << log;
    EXPECT_NE(log.find(tree + ": writing: "), std::string::npos) << log;
    EXPECT_EQ(RunProgram({"render", tree, "-o", folder / "a.svg", "--quiet"}).errors, "");
}

TEST(Render, StopsWithinASecondOfCtrlCAndLeavesNoFile)
{
    const ScratchFolder folder;
    std::string rows = "path,size\n";
    for (int i = 0; i < 4'000'000; ++i)
        rows += "d" + std::to_string(i % 1000) + "/file " + std::to_string(i) + ",1\n";
    const std::string tree = folder.Write("tree.csv", rows);
    const ProgramRun run = RunProgram({"render", tree, "-o", folder / "out.svg"}, {},
                                      [&] { return folder.Entries().size() > 1; });
    EXPECT_EQ(run.status, 130);
    EXPECT_LT(run.seconds, 4.0) << "a second on a machine that has nothing else to do";
    EXPECT_EQ(folder.Entries(), (std::vector<std::string>{"tree.csv"}));
}

// ---- sizes

TEST(Render, DrawsAMillionNestedLevels)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("deep.json", NestedChain(1'000'000));
    const ProgramRun run = RunProgram({"render", tree, "-o", folder / "deep.png"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_GT(ReadFile(folder / "deep.png").size(), 1000u);
}

TEST(Render, DrawsAMillionChildrenOfOneNode)
{
    const ScratchFolder folder;
    std::string text = R"({"label":"wide","children":[{})";
    for (int i = 1; i < 1'000'000; ++i)
        text += ",{}";
    const std::string tree = folder.Write("wide.json", text + "]}");
    const ProgramRun run = RunProgram({"render", tree, "-o", folder / "wide.png"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_GT(ReadFile(folder / "wide.png").size(), 1000u);
}

TEST(Render, WritesTheGeometryOfAMillionNestedLevels)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("deep.json", NestedChain(1'000'000));
    const ProgramRun run = RunProgram({"render", tree, "-o", folder / "geometry.json"});
    ASSERT_EQ(run.status, 0) << run.errors;
    std::ifstream file(folder / "geometry.json");
    std::size_t nodes = 0;
    bool isSelected = false;
    for (std::string line; std::getline(file, line);) {
        nodes += line.rfind("{\"id\": ", 0) == 0 ? 1U : 0U;
        isSelected = isSelected || line.find("\"selection\": 999999,") != std::string::npos;
    }
    EXPECT_EQ(nodes, 1'000'000u);
    EXPECT_TRUE(isSelected) << "the one leaf";
}

TEST(Render, DrawsTheSampleTrees)
{
    const std::filesystem::path folder = SampleModels() / "trees";
    if (!std::filesystem::exists(folder))
        GTEST_SKIP() << "no sample trees in " << folder;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().filename() == "us_budget_table.json")
            continue;
        const ProgramRun run =
            RunProgram({"render", entry.path().string(), "-o", "-", "--format", "png"});
        EXPECT_EQ(run.status, 0) << entry.path() << ": " << run.errors;
        EXPECT_EQ(run.errors, "") << entry.path();
        ++count;
    }
    EXPECT_GT(count, 0);
    std::cout << "count: " << count << " sample trees drawn\n";
}

TEST(Render, RefusesATableThatIsNoTree)
{
    const std::filesystem::path table = SampleModels() / "trees" / "us_budget_table.json";
    if (!std::filesystem::exists(table))
        GTEST_SKIP() << "no sample trees in " << table.parent_path();
    EXPECT_EQ(ErrorLine({"render", table.string(), "-o", "-", "--format", "svg"}, 1),
              "dataviz: " + table.string() +
                  ": line 2, column 3: the record has no \"id\"; this JSON array is no tree");
}

}  // namespace dataviz::tests
