// `dataviz render --events`, run as users run it.

#include "Program.h"

#include <algorithm>
#include <iostream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace dataviz::tests {

namespace {

using Json = nlohmann::json;

constexpr const char* TREE = R"({"label":"Pump","children":[
    {"label":"Housing","children":[{"label":"Bolt"},{"label":"Rotor"}]},{"label":"Base"}]})";

/// A folder with a tree and an events file, for runs of one command line.
class RenderEvents : public testing::Test {
protected:
    ProgramRun Run(const std::string& events, std::vector<std::string> options = {})
    {
        script = folder.Write("events.json", events);
        options.insert(options.begin(), {"render", folder.Write("tree.json", TREE), "-o",
                                         folder / "out.json", "--events", script});
        return RunProgram(options);
    }

    Json Played(const std::string& events, const std::vector<std::string>& options = {})
    {
        const ProgramRun run = Run(events, options);
        EXPECT_EQ(run.status, 0) << run.errors;
        return Json::parse(ReadFile(folder / "out.json"));
    }

    ScratchFolder folder;
    std::string script;
};

}  // namespace

TEST_F(RenderEvents, LogTheirAnswersAndWhatTheLayoutSays)
{
    const Json picture = Played(R"([{"event":"motion","x":640,"y":100},
        {"event":"press","button":1,"buttons":1,"x":640,"y":100},{"event":"ime"},
        {"event":"highlight","node":1},{"event":"setroot","node":1}])");
    const Json& log = picture["log"];
    ASSERT_EQ(log.size(), 6U);
    for (std::size_t i = 0; i < log.size(); ++i)
        EXPECT_EQ(log[i]["index"], static_cast<int>(i) - 1);
    EXPECT_EQ(log[1], Json::parse(R"({"index":0,"result":0,"notifications":[
        {"name":"VisTreeSpaceFillingLayoutON_HOVER_NODEEvt","previous":null,"node":4}]})"));
    EXPECT_EQ(log[2]["notifications"][0]["previous"], 2);
    EXPECT_EQ(log[3]["result"], 1);
    EXPECT_TRUE(log[5]["result"].is_null());
    EXPECT_EQ(picture["currentRoot"], 1);
    EXPECT_EQ(picture["zoomStack"], Json::array({0}));
    EXPECT_EQ(picture["selection"], 1);
    EXPECT_EQ(picture["highlighted"], 1) << "selecting the highlighted node keeps the highlight";
}

TEST_F(RenderEvents, LeaveOriginAndSizeAsTheCommandLineSaysAndWriteViewsAsTheyWereBuilt)
{
    const Json picture =
        Played(R"([{"event":"draw","position":[10,20],"size":[400,300]}])", {"--scale", "2"});
    EXPECT_EQ(picture["size"], Json({1280, 800}));
    EXPECT_EQ(picture["origin"], Json({0, 0}));
    const Json& node = picture["nodes"][1];
    for (const std::size_t axis : {0U, 1U}) {
        const double origin = axis == 0 ? 10 : 20;
        EXPECT_EQ(node["view"]["position"][axis].get<double>(),
                  (node["position"][axis].get<double>() - origin) * 2 + origin);
    }
}

TEST_F(RenderEvents, WriteTheHoveredPlatesAndTheSelectedFrameOfAnIciclePlot)
{
    const Json picture = Played(R"([{"event":"highlight","node":4},{"event":"select","node":4},
        {"event":"highlight","node":3}])",
                                {"--layout", "icicle"});
    EXPECT_EQ(picture["nodes"][3]["view"]["parts"], Json({"background", "hover", "label"}));
    EXPECT_EQ(picture["nodes"][4]["view"]["parts"], Json({"background", "selected", "label"}));
    EXPECT_EQ(picture["highlighted"], 3);
    EXPECT_EQ(picture["leafSelection"], nullptr);
}

TEST_F(RenderEvents, TellPlatesFromBackgroundsFarFromTheOrigin)
{
    // There a plate's distance of one unit from the edge is less than a float can hold.
    const Json picture =
        Played(R"([{"event":"draw","position":[3e8,3e8]},{"event":"highlight","node":3}])",
               {"--layout", "icicle"});
    EXPECT_EQ(picture["nodes"][3]["view"]["parts"], Json({"background", "hover", "label"}));
    EXPECT_EQ(picture["nodes"][2]["view"]["parts"], Json({"background", "selected", "label"}));
    EXPECT_EQ(picture["nodes"][2]["view"]["background"], "#ffffff");
}

TEST_F(RenderEvents, ReachAnIciclePlotThroughItsOwner)
{
    const Json picture =
        Played(R"([{"event":"lastcolumns","n":1},{"event":"extendwithkeys","on":true},
        {"event":"key","code":"0x900000"},{"event":"lastcolumns","n":null}])",
               {"--layout", "icicle"});
    EXPECT_EQ(picture["log"][1]["notifications"], Json::parse(R"([
        {"name":"VisIcicleLayoutON_SET_NLAST_NODESEvt","old":null,"new":1,"key":7340032}])"));
    EXPECT_EQ(picture["log"][3]["notifications"][0]["key"], 4194304);
    EXPECT_TRUE(picture["log"][4]["notifications"][0]["new"].is_null());
    EXPECT_TRUE(picture["lastColumns"].is_null());
    EXPECT_EQ(picture["columns"], 3);
}

TEST_F(RenderEvents, OfTheIcicleHaveNoEffectOnOtherLayouts)
{
    for (const char* const layout : {"treemap", "cushion"}) {
        const Json picture = Played(R"([{"event":"lastcolumns","n":1},
            {"event":"extendwithkeys","on":1}])",
                                    {"--layout", layout});
        EXPECT_EQ(picture["log"][1]["notifications"], Json::array());
        EXPECT_TRUE(picture["log"][1]["result"].is_null());
        EXPECT_TRUE(picture["lastColumns"].is_null());
    }
}

TEST_F(RenderEvents, AreDeliveredAtTheScaleOfTheirViewer)
{
    const std::string motion = R"({"event":"motion","x":640,"y":100})";
    EXPECT_EQ(Played(motion)["highlighted"], 4);
    EXPECT_EQ(Played(motion, {"--scale", "2"})["highlighted"], 4)
        << "the picture is twice as high, (1600 - 100) / 2 is 750";
    EXPECT_EQ(Played(motion, {"--device-scale", "2"})["highlighted"], 2) << "(320, 350)";
    EXPECT_EQ(Played(motion, {"--device-scale", "1e-30"})["highlighted"], nullptr);
}

TEST_F(RenderEvents, ShowInThePicture)
{
    ASSERT_EQ(Run("{\"event\":\"select\",\"node\":4}", {"--format", "svg"}).status, 0);
    const std::string after = ReadFile(folder / "out.json");
    ASSERT_EQ(Run("", {"--format", "svg"}).status, 0);
    EXPECT_NE(ReadFile(folder / "out.json"), after);
}

TEST_F(RenderEvents, MayBeNone)
{
    EXPECT_EQ(Played("")["log"].size(), 1U);
    EXPECT_EQ(Played("[]")["log"].size(), 1U);
}

TEST_F(RenderEvents, AreRefusedBeforeAnythingIsWritten)
{
    folder.Write("out.json", "earlier");
    const std::vector<std::pair<std::string, std::string>> refused{
        {"{\"event\":\"ime\"}\n{\"event\":\"click\"}",
         "line 2, column 10: there is no event \"click\""},
        {"[{\"event\":\"press\",\"x\":1}]", "line 1, column 2: the event \"press\" needs \"y\""},
        {"{\"event\":\"select\",\"node\":5}",
         "line 1, column 26: there is no node 5: the tree has the nodes 0 to 4"},
        {"{\"event\":\"key\",\"code\":\"left\"}",
         "line 1, column 23: \"code\" must be a whole number, not a string"}};
    for (const auto& [events, reason] : refused) {
        const ProgramRun run = Run(events);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.errors, "dataviz: " + script + ": " + reason + "\n");
        EXPECT_EQ(ReadFile(folder / "out.json"), "earlier");
    }
    EXPECT_EQ(folder.Entries(), (std::vector<std::string>{"events.json", "out.json", "tree.json"}));
}

TEST_F(RenderEvents, AreCheckedBeforeTheInputIsRead)
{
    const std::string events = folder.Write("bad.json", "[");
    const ProgramRun run =
        RunProgram({"render", folder / "absent.step", "-o", folder / "a.png", "--events", events});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors.rfind("dataviz: " + events + ": line 1, column 2: ", 0), 0U) << run.errors;
}

TEST_F(RenderEvents, SayWhyTheirFileCannotBeRead)
{
    const std::string tree = folder.Write("tree.json", TREE);
    const std::string absent = folder / "absent.json";
    EXPECT_EQ(RunProgram({"render", tree, "-o", folder / "a.png", "--events", absent}).errors,
              "dataviz: " + absent + ": cannot be read: No such file or directory\n");
    const ProgramRun run =
        RunProgram({"render", tree, "-o", folder / "a.png", "--events", folder / "."});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors, "dataviz: " + (folder / ".") + ": is a directory\n");
}

TEST_F(RenderEvents, MayComeFromStandardInput)
{
    const std::string tree = folder.Write("tree.json", TREE);
    const ProgramRun run =
        RunProgram({"render", tree, "-o", "-", "--format", "json", "--events", "-"},
                   "{\"event\":\"select\",\"node\":4}\n");
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(Json::parse(run.output)["selection"], 4);
    const ProgramRun bad = RunProgram(
        {"render", tree, "-o", "-", "--format", "json", "--events", "-"}, "{\"event\":3}");
    EXPECT_EQ(bad.errors, "dataviz: -: line 1, column 10: \"event\" must be a string, not a "
                          "number\n");
}

TEST_F(RenderEvents, LeaveNoFileBehindWhenTheyAreInterrupted)
{
    // Every zoom draws the whole tree, so this would take minutes.
    std::string tree = R"({"label":"wide","children":[{"label":"first","children":[{}]})";
    for (int i = 0; i < 20'000; ++i)
        tree += R"(,{"children":[{},{}]})";
    folder.Write("tree.json", tree + "]}");
    std::string events;
    for (int i = 0; i < 100'000; ++i)
        events += "{\"event\":\"setroot\",\"node\":" + std::to_string(i % 2) + "}\n";
    folder.Write("events.json", events);
    const ProgramRun run = RunProgram({"render", folder / "tree.json", "-o", folder / "out.json",
                                       "--events", folder / "events.json"},
                                      {}, [&] { return folder.Entries().size() > 2; });
    EXPECT_EQ(run.status, 130);
    EXPECT_LT(run.seconds, 4.0) << "a second on a machine that has nothing else to do";
    EXPECT_EQ(folder.Entries(), (std::vector<std::string>{"events.json", "tree.json"}));
}

TEST_F(RenderEvents, ComeByTheMillion)
{
    std::string events;
    for (int i = 0; i < 1'000'000; ++i)
        events += "{\"event\":\"motion\",\"x\":" + std::to_string(i % 1280) +
                  ",\"y\":" + std::to_string(i % 800) + "}\n";
    const ProgramRun run = Run(events);
    ASSERT_EQ(run.status, 0) << run.errors;
    const std::string text = ReadFile(folder / "out.json");
    EXPECT_NE(text.find("{\"index\": 999999, "), std::string::npos);
    EXPECT_EQ(text.find("{\"index\": 1000000, "), std::string::npos);
}

}  // namespace dataviz::tests
