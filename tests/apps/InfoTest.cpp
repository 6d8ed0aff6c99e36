// `dataviz info`, run as users run it.

#include "Program.h"

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace dataviz::tests {

namespace {

using Json = nlohmann::json;

constexpr const char* TREE =
    R"({"label":"root","children":[{"label":"a","children":[{"label":"x\u001b","value":5},
    {"label":"y"}]},{"label":"b","value":4}]})";

const std::string EXAMPLE = KUV_SOURCE_DIR "/examples/example.step";

Json Info(const std::vector<std::string>& words, const std::string& input = {})
{
    std::vector<std::string> all{"info", "--json"};
    all.insert(all.end(), words.begin(), words.end());
    const ProgramRun run = RunProgram(all, input);
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    return run.status == 0 ? Json::parse(run.output) : Json();
}

/// Triangles of all nodes of one kind.
std::uint64_t Sum(const Json& node, const std::string& kind)
{
    std::uint64_t sum = node["kind"] == kind ? node["triangles"].get<std::uint64_t>() : 0;
    for (const Json& child : node["children"])
        sum += Sum(child, kind);
    return sum;
}

std::uint64_t Count(const Json& node, const std::string& kind)
{
    std::uint64_t count = node["kind"] == kind ? 1 : 0;
    for (const Json& child : node["children"])
        count += Count(child, kind);
    return count;
}

}  // namespace

// ---- models

TEST(Info, CountsWhatAModelHolds)
{
    const Json info = Info({EXAMPLE});
    EXPECT_EQ(info["schema"], 1);
    EXPECT_EQ(info["file"], EXAMPLE);
    EXPECT_EQ(info["format"], "step");
    EXPECT_EQ(info["tessellation"]["quality"], "normal");
    EXPECT_EQ(info["tessellation"]["linearDeflection"], 0.004);
    EXPECT_EQ(info["tessellation"]["angularDeflection"], 20);
    for (const char* const step : {"read", "mesh", "tree"})
        EXPECT_GE(info["seconds"][step], 0) << step;
    EXPECT_GT(info["triangles_unique"], 0);
    EXPECT_GT(info["triangles"], info["triangles_unique"]) << "parts occur several times";
}

TEST(Info, AgreesWithTheTreeThatItShows)
{
    const Json info = Info({EXAMPLE});
    const Json& tree = info["tree"];
    EXPECT_EQ(tree["kind"], "root");
    EXPECT_EQ(tree["triangles"], info["triangles"]);
    EXPECT_EQ(Count(tree, "product"), info["instances"]);
    EXPECT_EQ(Count(tree, "rep"), info["reps"]);
    EXPECT_EQ(Sum(tree, "rep"), info["triangles"]);
}

TEST(Info, ShowsFacesAsLeavesWithPrimitives)
{
    const Json info = Info({EXAMPLE, "--primitives"});
    const Json& tree = info["tree"];
    EXPECT_EQ(Count(tree, "face"), info["faces"]);
    EXPECT_EQ(Count(tree, "rep"), 0u) << "faces hang below their product";
    EXPECT_EQ(Sum(tree, "face"), info["triangles"]);
    EXPECT_EQ(tree["triangles"], info["triangles"]);
}

TEST(Info, PutsTheShapeBetweenProductAndFacesWhenTheEnvironmentAsks)
{
    setenv("VisDataTreeSeparatePrimitive", "0", 1);
    const Json info = Info({EXAMPLE, "--primitives"});
    unsetenv("VisDataTreeSeparatePrimitive");
    EXPECT_EQ(Count(info["tree"], "rep"), info["reps"]) << "any value enables it";
    EXPECT_EQ(Count(info["tree"], "face"), info["faces"]);
    EXPECT_EQ(info["tree"]["triangles"], info["triangles"]);
}

TEST(Info, WeighsTheSameWithTheWholeRepRule)
{
    EXPECT_EQ(Info({EXAMPLE, "--whole-reps"})["tree"], Info({EXAMPLE})["tree"])
        << "a product holds nothing but what hangs below it";
}

TEST(Info, MeshesFinerWhenAsked)
{
    const Json normal = Info({EXAMPLE});
    const Json fine = Info({EXAMPLE, "--mesh-quality", "fine"});
    const Json coarse = Info({EXAMPLE, "--mesh-quality", "very-coarse"});
    EXPECT_EQ(fine["tessellation"]["quality"], "fine");
    EXPECT_EQ(fine["tessellation"]["linearDeflection"], 0.002);
    EXPECT_EQ(fine["tessellation"]["angularDeflection"], 10);
    EXPECT_GT(fine["triangles"], normal["triangles"]);
    EXPECT_LT(coarse["triangles"], normal["triangles"]);
    EXPECT_LT(
        Info({EXAMPLE, "--angular-deflection", "60", "--linear-deflection", "0.05"})["triangles"],
        normal["triangles"]);
}

TEST(Info, FailsWithThreeWhenTheBudgetIsExceeded)
{
    const std::uint64_t triangles = Info({EXAMPLE})["triangles"];
    const ProgramRun within =
        RunProgram({"info", EXAMPLE, "--max-triangles", std::to_string(triangles)});
    EXPECT_EQ(within.status, 0) << "exactly as many are allowed";
    const ProgramRun beyond =
        RunProgram({"info", EXAMPLE, "--json", "--max-triangles", std::to_string(triangles - 1)});
    EXPECT_EQ(beyond.status, 3);
    EXPECT_EQ(Json::parse(beyond.output)["triangles"], triangles)
        << "the report is written all the same";
    EXPECT_EQ(beyond.errors.rfind("dataviz: " + EXAMPLE + ": ", 0), 0u) << beyond.errors;
    EXPECT_NE(beyond.errors.find("Pump"), std::string::npos)
        << "names the heaviest nodes: " << beyond.errors;
    EXPECT_EQ(std::count(beyond.errors.begin(), beyond.errors.end(), '\n'), 1);
}

TEST(Info, StopsAtTheTimeLimit)
{
    const std::filesystem::path model =
        SampleModels() / "step" / "kicad_d20_controller_panel_flat.step";
    if (!std::filesystem::exists(model))
        GTEST_SKIP() << "no sample model " << model;
    const ProgramRun run = RunProgram({"info", model.string(), "--time-limit", "1"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "dataviz: " + model.string() +
                              ": reading and meshing took longer than 1 s (--time-limit)\n");
}

TEST(Info, StopsAtTheMemoryLimit)
{
    const std::filesystem::path model = SampleModels() / "step" / "kicad_glasgow_revc3.step";
    if (!std::filesystem::exists(model))
        GTEST_SKIP() << "no sample model " << model;
    const ProgramRun run = RunProgram({"info", model.string(), "--memory-limit", "120"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
    EXPECT_NE(run.errors.find("memory"), std::string::npos) << run.errors;
}

TEST(Info, StopsWithinASecondOfCtrlCWhileReading)
{
    const std::filesystem::path model =
        SampleModels() / "step" / "kicad_d20_controller_panel_flat.step";
    if (!std::filesystem::exists(model))
        GTEST_SKIP() << "no sample model " << model;
    const ProgramRun run =
        RunProgram({"info", model.string()}, {}, [polls = 0]() mutable { return ++polls > 50; });
    EXPECT_EQ(run.status, 130);
    EXPECT_LT(run.seconds, 4.0) << "a second on a machine that has nothing else to do";
    EXPECT_EQ(run.output, "");
}

TEST(Info, ReadsAModelByItsContentWhateverItsName)
{
    const ScratchFolder folder;
    const std::string step = ReadFile(EXAMPLE);
    for (const char* const name : {"model.json", "model.csv", "model.txt", "model"})
        EXPECT_EQ(Info({folder.Write(name, step)})["format"], "step") << name;
}

// ---- tree files

TEST(Info, SaysWhyAJsonFileIsNoTree)
{
    const ScratchFolder folder;
    for (const char* const name : {"in.json", "in.txt"}) {
        const std::string file = folder.Write(name, "\n {\"foo\":1}");
        const ProgramRun run = RunProgram({"info", file});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.errors, "dataviz: " + file +
                                  ": line 2, column 2: the JSON object is no tree: it has none of "
                                  "the keys \"label\", \"name\", \"value\", \"size\" and "
                                  "\"children\"\n");
    }
}

TEST(Info, LeavesAMalformedGltfDocumentToTheReaderOfModels)
{
    const ScratchFolder folder;
    const ProgramRun run =
        RunProgram({"info", folder.Write("in.json", R"({"asset":{"version":"2.0"},"nodes":7})")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errors.find("line 1"), std::string::npos) << run.errors;
}

TEST(Info, CountsTheNodesOfATreeFile)
{
    const Json info = Info({"-"}, TREE);
    EXPECT_EQ(info["format"], "tree");
    EXPECT_EQ(info["file"], "-");
    EXPECT_EQ(info["instances"], 4);
    EXPECT_EQ(info["triangles"], 10) << "the root's value";
    for (const char* const key :
         {"products", "reps", "faces", "edges", "vertices", "triangles_unique", "tessellation"})
        EXPECT_TRUE(info[key].is_null()) << key;
    EXPECT_EQ(info["tree"]["children"][0]["label"], "a");
    EXPECT_EQ(info["tree"]["children"][0]["kind"], "product");
    EXPECT_EQ(info["tree"]["children"][0]["children"][0]["triangles"], 5);
    EXPECT_EQ(info["tree"]["children"][1]["kind"], "rep");
}

TEST(Info, ListsTheHeaviestNodesWithShareAndPath)
{
    const ProgramRun run = RunProgram({"info", "-", "--top", "3"}, TREE);
    EXPECT_EQ(run.status, 0) << run.errors;
    const std::string list = run.output.substr(run.output.find("heaviest"));
    EXPECT_EQ(list, "heaviest nodes, with their share and the way up to the root\n"
                    "              6   60.0 %  a/root\n"
                    "              5   50.0 %  x\\x1b/a/root\n"
                    "              4   40.0 %  b/root\n");
}

TEST(Info, ShowsControlCharactersInNamesAsEscapes)
{
    const std::string tree =
        R"({"label":"root","children":[{"label":"n\u0000ul \u009b31m \u007f","value":5}]})";
    const std::string path = "n\\x00ul \\x9b31m \\x7f/root";
    const ProgramRun run = RunProgram({"info", "-"}, tree);
    EXPECT_NE(run.output.find("  " + path + "\n"), std::string::npos) << run.output;
    EXPECT_EQ(RunProgram({"info", "-", "--max-triangles", "4"}, tree).errors,
              "dataviz: -: 5 triangles, more than 4; the heaviest nodes: " + path + " (5)\n");
}

TEST(Info, ListsNoNodesWhenNoneAreWanted)
{
    const ProgramRun run = RunProgram({"info", "-", "--top", "0"}, TREE);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output.find("heaviest"), std::string::npos);
}

TEST(Info, ComparesTheValueOfATreeFileWithTheBudget)
{
    EXPECT_EQ(RunProgram({"info", "-", "--max-triangles", "10"}, TREE).status, 0);
    EXPECT_EQ(RunProgram({"info", "-", "--max-triangles", "9"}, TREE).status, 3);
}

TEST(Info, WritesATreeOfAMillionLevels)
{
    const ScratchFolder folder;
    std::string text;
    for (int i = 1; i < 1'000'000; ++i)
        text += R"({"label":"level","children":[)";
    text += "{}";
    for (int i = 1; i < 1'000'000; ++i)
        text += "]}";
    const std::string tree = folder.Write("deep.json", text);
    const ProgramRun json = RunProgram({"info", tree, "--json"});
    EXPECT_EQ(json.status, 0) << json.errors;
    EXPECT_EQ(std::count(json.output.begin(), json.output.end(), '{'), 1'000'002);
    EXPECT_EQ(RunProgram({"info", tree}).status, 0);
}

}  // namespace dataviz::tests
