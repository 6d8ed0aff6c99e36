// `dataviz render` with each layout: what the pictures show.

#include "Program.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <set>

#include <QImage>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace dataviz::tests {

namespace {

using Json = nlohmann::json;

const std::string EXAMPLE = KUV_SOURCE_DIR "/examples/example.step";

constexpr const char* TREE = R"({"label":"Pump","children":[
    {"label":"Housing","children":[{"label":"Bolt","value":2,"color":1},
        {"label":"Rotor","value":6,"color":8,"children":[{"label":"Blade"},{"label":"Hub","color":-0}]}]},
    {"label":"Base","value":2,"color":3}]})";

/// The geometry of a picture; `input` is the tree file where the words name "-".
Json Geometry(std::vector<std::string> words, const std::string& input = {})
{
    words.insert(words.begin(), "render");
    words.insert(words.end(), {"-o", "-", "--format", "json"});
    const ProgramRun run = RunProgram(words, input);
    EXPECT_EQ(run.status, 0) << run.errors;
    return run.status == 0 ? Json::parse(run.output) : Json();
}

QImage Picture(std::vector<std::string> words, const std::string& input = {})
{
    words.insert(words.begin(), "render");
    words.insert(words.end(), {"-o", "-", "--format", "png"});
    const ProgramRun run = RunProgram(words, input);
    EXPECT_EQ(run.status, 0) << run.errors;
    QImage image;
    EXPECT_TRUE(image.loadFromData(reinterpret_cast<const uchar*>(run.output.data()),
                                   static_cast<int>(run.output.size())));
    return image;
}

std::set<std::string> KeysOf(const Json& object)
{
    std::set<std::string> keys;
    for (const auto& [key, value] : object.items())
        keys.insert(key);
    return keys;
}

std::set<std::string> NodeKeysWith(const std::set<std::string>& own)
{
    std::set<std::string> keys{"id",         "parent",     "label",       "icon",
                               "leafObject", "mergeable",  "merged",      "sizeValue",
                               "expanded",   "colorValue", "discarded",   "showLabel",
                               "position",   "size",       "minimumSize", "view"};
    keys.insert(own.begin(), own.end());
    return keys;
}

std::set<std::size_t> Parents(const Json& nodes)
{
    std::set<std::size_t> parents;
    for (const Json& node : nodes) {
        if (!node["parent"].is_null())
            parents.insert(node["parent"].get<std::size_t>());
    }
    return parents;
}

/// The x positions of all nodes that are drawn: one for each column where a node begins.
std::set<double> Columns(const Json& nodes)
{
    std::set<double> columns;
    for (const Json& node : nodes) {
        const Json& view = node["view"];
        if (!view.is_null() && !view["position"].is_null())
            columns.insert(view["position"][0].get<double>());
    }
    return columns;
}

}  // namespace

// ---- cushion

TEST(Cushion, WritesItsOwnKeys)
{
    const Json picture = Geometry({"-", "--layout", "cushion"}, TREE);
    EXPECT_EQ(picture["layout"], "cushion");
    EXPECT_TRUE(picture["lastColumns"].is_null());
    EXPECT_TRUE(picture["columns"].is_null());
    EXPECT_EQ(KeysOf(picture["nodes"][0]),
              NodeKeysWith({"surface", "height", "scaleFactor", "subtreeValue", "cushionComputed",
                            "lastMode"}));
    EXPECT_EQ(picture["nodes"][0]["surface"], Json({0, 0, 0, 0}));
    EXPECT_EQ(picture["nodes"][0]["height"], 0.5);
    EXPECT_EQ(picture["nodes"][1]["cushionComputed"], true);
    EXPECT_EQ(picture["nodes"][0]["view"]["background"], "texture");
    EXPECT_TRUE(picture["nodes"][1]["view"]["background"].is_null());
    EXPECT_FALSE(picture["nodes"][1]["view"]["position"].is_null()) << "a view that has a contour";
}

TEST(Cushion, GivesATreeFileEqualLeavesUnlessItIsAskedForValues)
{
    EXPECT_EQ(Geometry({"-", "--layout", "cushion"}, TREE)["nodes"][0]["subtreeValue"], 4);
    const Json sized = Geometry({"-", "--layout", "cushion", "--resize-by-value"}, TREE)["nodes"];
    EXPECT_EQ(sized[0]["subtreeValue"], 6) << "2, 1, 1 and 2";
    EXPECT_NEAR(sized[6]["size"][1].get<double>(), 800 * 2 / 6.0, 0.01);
}

TEST(Cushion, ColoursATreeFileByItsOwnColoursWhenAsked)
{
    const std::string oneLeaf = R"({"label":"a","color":5})";
    const QImage white = Picture({"-", "--layout", "cushion", "--size", "10x10"}, oneLeaf);
    EXPECT_EQ(white.pixelColor(5, 5), QColor(249, 249, 249)) << "a flat leaf";
    const QImage pink =
        Picture({"-", "--layout", "cushion", "--size", "10x10", "--color-by-value"}, oneLeaf);
    EXPECT_EQ(pink.pixelColor(5, 5).green(), 1);
    EXPECT_GT(pink.pixelColor(5, 5).red(), 200);
}

TEST(Cushion, SizesAModelByItsTrianglesAndColoursItsProducts)
{
    const Json nodes = Geometry({EXAMPLE, "--layout", "cushion"})["nodes"];
    EXPECT_EQ(nodes[0]["subtreeValue"], nodes[0]["sizeValue"]);
    std::set<int> colours;
    for (const Json& node : nodes) {
        const int colour = node["colorValue"];
        EXPECT_TRUE(colour >= 0 && colour <= 7) << colour;
        colours.insert(colour);
    }
    EXPECT_EQ(colours.size(), 8U);
    EXPECT_EQ(nodes[0]["colorValue"], 0) << "the first product is the root's";
    // A shape has the colour of the part that it belongs to; a part has the same one everywhere.
    const std::set<std::size_t> parents = Parents(nodes);
    std::map<std::string, std::set<int>> bySameName;
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        if (parents.count(i) == 0) {
            const std::size_t part = nodes[i]["parent"];
            EXPECT_EQ(nodes[i]["colorValue"], nodes[part]["colorValue"]);
            bySameName[nodes[i]["label"]].insert(nodes[i]["colorValue"].get<int>());
        }
    }
    for (const auto& [name, seen] : bySameName)
        EXPECT_EQ(seen.size(), 1U) << name;
}

TEST(Cushion, LeavesTheColoursAloneWhenItIsTold)
{
    const Json nodes = Geometry({EXAMPLE, "--layout", "cushion", "--color-index", "none"})["nodes"];
    EXPECT_EQ(nodes[0]["colorValue"], nodes[0]["sizeValue"]) << "as they were weighed";
}

TEST(Cushion, ColoursByTheKindOfPrimitive)
{
    const Json nodes = Geometry(
        {EXAMPLE, "--layout", "cushion", "--color-index", "kind", "--primitives"})["nodes"];
    const std::set<std::size_t> parents = Parents(nodes);
    for (std::size_t i = 0; i < nodes.size(); ++i)
        EXPECT_EQ(nodes[i]["colorValue"], parents.count(i) == 0 ? 4 : 0) << "faces are kind 4";
}

TEST(Cushion, ColoursByTheShareOfTheWhole)
{
    const Json nodes =
        Geometry({EXAMPLE, "--layout", "cushion", "--color-index", "share"})["nodes"];
    const double total = nodes[0]["sizeValue"];
    for (const Json& node : nodes) {
        const double share = node["sizeValue"].get<double>() / total;
        int wanted = 7;
        for (double least = 0.5; wanted > 0 && share < least; least /= 2)
            --wanted;
        EXPECT_EQ(node["colorValue"], wanted) << node["label"];
    }
}

TEST(Cushion, SaysThatATreeFileHasColoursOfItsOwn)
{
    const ProgramRun run = RunProgram({"render", "-", "-o", "-", "--format", "png", "--layout",
                                       "cushion", "--color-index", "share"},
                                      TREE);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors,
              "dataviz: -: --color-index is for models: a tree file brings colours of its own\n");
}

TEST(Cushion, RisesFromTheEdgeOfALeafToItsRidge)
{
    const std::vector<std::string> options{EXAMPLE, "--layout", "cushion", "--color-index", "none"};
    const Json nodes = Geometry(options)["nodes"];
    const QImage image = Picture(options);
    const std::set<std::size_t> parents = Parents(nodes);
    int measured = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        constexpr double LARGE = 40;
        const double left = nodes[i]["position"][0];
        const double bottom = nodes[i]["position"][1];
        const double width = nodes[i]["size"][0];
        const double height = nodes[i]["size"][1];
        if (parents.count(i) != 0 || width < LARGE || height < LARGE ||
            nodes[i]["view"]["selected"])
            continue;
        // The intensities across the leaf, from edge to edge along its middle; white leaves have
        // the intensity in every channel.
        const auto rise = [&](bool alongX) {
            const int count = static_cast<int>(alongX ? width : height) - 4;
            int ridge = 0;
            int edge = 255;
            for (int k = 0; k <= count; ++k) {
                const double x = alongX ? left + 2 + k : left + width / 2;
                const double y = alongX ? bottom + height / 2 : bottom + 2 + k;
                const int intensity = qRed(
                    image.pixel(static_cast<int>(x), image.height() - 1 - static_cast<int>(y)));
                ridge = std::max(ridge, intensity);
                if (k == 0 || k == count)
                    edge = std::min(edge, intensity);
            }
            return ridge - edge;
        };
        EXPECT_GE(std::max(rise(true), rise(false)), 20) << nodes[i]["label"];
        ++measured;
    }
    EXPECT_GT(measured, 10);
    std::cout << "count: " << measured << " cushions of the example rise by at least 20 of 255\n";
}

// ---- icicle plot

TEST(Icicle, WritesItsOwnKeys)
{
    const Json picture = Geometry({"-", "--layout", "icicle"}, TREE);
    EXPECT_EQ(picture["layout"], "icicle");
    EXPECT_TRUE(picture["lastColumns"].is_null());
    EXPECT_EQ(picture["columns"], 4);
    EXPECT_EQ(KeysOf(picture["nodes"][0]),
              NodeKeysWith({"icicleSize", "graphicalSize", "columnSpan", "cursor"}));
    EXPECT_EQ(picture["nodes"][0]["icicleSize"], Json({4 * 98 - 2, 4 * 24 + 3 * 2}));
    EXPECT_EQ(picture["nodes"][6]["columnSpan"], 3);
}

TEST(Icicle, EndsAllLeavesInTheLastColumn)
{
    const Json picture = Geometry({EXAMPLE, "--layout", "icicle"});
    const Json& nodes = picture["nodes"];
    const std::set<std::size_t> parents = Parents(nodes);
    int leaves = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (parents.count(i) != 0)
            continue;
        EXPECT_EQ(nodes[i]["cursor"].get<int>() + nodes[i]["columnSpan"].get<int>(),
                  picture["columns"].get<int>())
            << nodes[i]["label"];
        const Json& view = nodes[i]["view"];
        EXPECT_NEAR(view["position"][0].get<double>() + view["size"][0].get<double>(), 1280, 0.01);
        ++leaves;
    }
    EXPECT_GT(leaves, 50);
}

TEST(Icicle, LeavesTheSpansAloneWhenItIsTold)
{
    const Json picture = Geometry({EXAMPLE, "--layout", "icicle", "--no-align"});
    for (const Json& node : picture["nodes"])
        EXPECT_EQ(node["columnSpan"], 1);
}

TEST(Icicle, ShowsTheLastColumnsThatItIsAskedFor)
{
    for (const int count : {1, 2, 3}) {
        const Json picture =
            Geometry({EXAMPLE, "--layout", "icicle", "--last-columns", std::to_string(count)});
        EXPECT_EQ(picture["lastColumns"], count);
        EXPECT_EQ(Columns(picture["nodes"]).size(), static_cast<std::size_t>(count));
    }
    EXPECT_EQ(Columns(Geometry({EXAMPLE, "--layout", "icicle"})["nodes"]).size(), 6U);
}

TEST(Icicle, LogsItsLimitAsPartOfTheSetUp)
{
    const Json log = Geometry({"-", "--layout", "icicle", "--last-columns", "2"}, TREE)["log"];
    ASSERT_EQ(log.size(), 1U);
    EXPECT_EQ(log[0]["notifications"][0],
              Json::parse(R"({"name":"VisIcicleLayoutON_SET_NLAST_NODESEvt","old":null,"new":2,
                              "key":7340032})"));
}

TEST(Icicle, PutsIconsBesideLabelsWhenItIsAsked)
{
    const double above = Geometry(
        {EXAMPLE, "--layout", "icicle", "--root", "Pump/Inlet"})["nodes"][0]["icicleSize"][1];
    const double beside = Geometry({EXAMPLE, "--layout", "icicle", "--root", "Pump/Inlet",
                                    "--inline-labels"})["nodes"][0]["icicleSize"][1];
    EXPECT_LE(beside, above);
}

TEST(Icicle, BeginsWithTheFirstDrawnNodeWhenItIsAsked)
{
    const std::vector<std::string> limited{"-", "--layout", "icicle", "--last-columns", "2"};
    std::vector<std::string> relative = limited;
    relative.emplace_back("--relative-to-min-depth");
    // Base takes three columns: it is cut at the limit, or shown whole.
    EXPECT_EQ(Geometry(limited, TREE)["nodes"][6]["icicleSize"][0], 2 * 98 - 2);
    EXPECT_EQ(Geometry(relative, TREE)["nodes"][6]["icicleSize"][0], 3 * 98 - 2);
    EXPECT_EQ(Geometry(limited, TREE)["nodes"][0]["icicleSize"][0], 2 * 98 - 2);
    EXPECT_EQ(Geometry(relative, TREE)["nodes"][0]["icicleSize"][0], 3 * 98 - 2);
}

TEST(Icicle, MakesColumnsNarrowWithoutLabels)
{
    const Json root = Geometry({"-", "--layout", "icicle", "--no-labels"}, TREE)["nodes"][0];
    EXPECT_EQ(root["icicleSize"][0], 4 * 34 - 2);
    EXPECT_EQ(root["view"]["shownLabel"], "");
}

TEST(Icicle, SaysWhichSizeWouldShowItWhole)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("tree.json", TREE);
    const std::vector<std::string> words{"render",   tree,     "-o",     folder / "a.png",
                                         "--layout", "icicle", "--size", "300x80"};
    EXPECT_EQ(RunProgram(words).errors,
              "dataviz: " + tree +
                  ": the plot is larger than the picture: --size 390x102, or --size fit, shows it "
                  "whole\n");
    const ProgramRun exact = RunProgram(
        {"render", tree, "-o", folder / "a.png", "--layout", "icicle", "--size", "390x102"});
    EXPECT_EQ(exact.errors, "");
}

TEST(Icicle, FitsThePictureToThePlot)
{
    const std::vector<std::string> words{"-",   "--layout", "icicle", "--size",
                                         "fit", "--scale",  "2"};
    const QImage image = Picture(words, TREE);
    EXPECT_EQ(image.width(), 2 * 390);
    EXPECT_EQ(image.height(), 2 * 102);
    const Json picture = Geometry(words, TREE);
    EXPECT_EQ(picture["size"], Json({390, 102}));
    EXPECT_EQ(picture["nodes"][0]["size"], Json({390, 102})) << "not stretched";
    std::vector<std::string> limited = words;
    limited.insert(limited.end(), {"--last-columns", "2"});
    EXPECT_EQ(Geometry(limited, TREE)["size"], Json({2 * 98 - 2, 102}));
}

TEST(Icicle, ShowsItsRectanglesBeforeAGround)
{
    const QImage image = Picture({"-", "--layout", "icicle", "--size", "fit"}, TREE);
    EXPECT_EQ(image.pixelColor(30, 10), QColor(255, 255, 255)) << "a node";
    EXPECT_NE(image.pixelColor(96, 50), QColor(255, 255, 255)) << "between two columns";
}

TEST(Icicle, IsRefusedAsAPngThatIsTooTallAndWrittenAsSvg)
{
    const ScratchFolder folder;
    std::string text = R"({"label":"tall","children":[{"label":"0"})";
    for (int i = 1; i < 1300; ++i)
        text += ",{\"label\":\"" + std::to_string(i) + "\"}";
    const std::string tree = folder.Write("tree.json", text + "]}");
    const ProgramRun png = RunProgram(
        {"render", tree, "-o", folder / "tall.png", "--layout", "icicle", "--size", "fit"});
    EXPECT_EQ(png.status, 1);
    EXPECT_EQ(png.errors, "dataviz: " + (folder / "tall.png") +
                              ": a PNG stops at 32,767 pixels a side; the picture has 194 x "
                              "33,798; write SVG, or show less with --last-columns or --root\n");
    EXPECT_EQ(folder.Entries(), std::vector<std::string>{"tree.json"});
    const ProgramRun svg = RunProgram(
        {"render", tree, "-o", folder / "tall.svg", "--layout", "icicle", "--size", "fit"});
    EXPECT_EQ(svg.status, 0) << svg.errors;
    EXPECT_NE(ReadFile(folder / "tall.svg").find("33798"), std::string::npos);
}

// ---- a part of the tree

TEST(Root, StartsFromASubtreeOfATreeFile)
{
    const Json picture = Geometry({"-", "--root", "Pump/Housing/Rotor"}, TREE);
    ASSERT_EQ(picture["nodes"].size(), 3U);
    EXPECT_EQ(picture["nodes"][0]["label"], "Rotor");
    EXPECT_EQ(picture["nodes"][0]["sizeValue"], 6);
    EXPECT_EQ(picture["nodes"][0]["colorValue"], 8);
    EXPECT_TRUE(picture["nodes"][0]["parent"].is_null());
    EXPECT_EQ(picture["nodes"][2]["label"], "Hub");
    EXPECT_EQ(picture["nodes"][2]["colorValue"], 0);
    EXPECT_EQ(picture["currentRoot"], 0);
}

TEST(Root, MayLeaveTheRootsOwnLabelOut)
{
    EXPECT_EQ(Geometry({"-", "--root", "Housing/Rotor"}, TREE)["nodes"].size(), 3U);
    EXPECT_EQ(Geometry({"-", "--root", "Pump"}, TREE)["nodes"].size(), 7U);
    EXPECT_EQ(Geometry({"-", "--root", "Base"}, TREE)["nodes"].size(), 1U);
}

TEST(Root, StartsFromASubtreeOfAModel)
{
    const Json whole = Geometry({EXAMPLE})["nodes"];
    const Json part = Geometry({EXAMPLE, "--root", "Pump unit/Pump/Inlet"})["nodes"];
    EXPECT_EQ(part[0]["label"], "Inlet");
    EXPECT_EQ(part.size(), 7U) << "three parts with a shape each";
    const auto same = std::find_if(whole.begin(), whole.end(),
                                   [](const Json& node) { return node["label"] == "Inlet"; });
    EXPECT_EQ(part[0]["sizeValue"], (*same)["sizeValue"]);
}

TEST(Root, LetsInfoListAndCheckTheSubtree)
{
    const ProgramRun json = RunProgram({"info", "-", "--json", "--root", "Housing"}, TREE);
    ASSERT_EQ(json.status, 0) << json.errors;
    EXPECT_EQ(Json::parse(json.output)["tree"]["label"], "Housing");
    EXPECT_EQ(Json::parse(json.output)["tree"]["triangles"], 8);
    EXPECT_EQ(RunProgram({"info", "-", "--root", "Housing", "--max-triangles", "8"}, TREE).status,
              0);
    EXPECT_EQ(RunProgram({"info", "-", "--root", "Housing", "--max-triangles", "7"}, TREE).status,
              3);
    const ProgramRun model = RunProgram({"info", EXAMPLE, "--root", "Pump/Inlet", "--top", "1"});
    EXPECT_EQ(model.status, 0) << model.errors;
    const ProgramRun checked =
        RunProgram({"info", EXAMPLE, "--root", "Pump/Inlet", "--max-triangles", "10000"});
    EXPECT_EQ(checked.status, 0) << "the whole has more, the inlet has not";
}

TEST(Root, CountsColumnsAndEventsFromTheSubtree)
{
    const ScratchFolder folder;
    const std::string events = folder.Write("events.json", R"([{"event":"select","node":2}])");
    const Json picture =
        Geometry({"-", "--root", "Housing", "--layout", "icicle", "--events", events}, TREE);
    EXPECT_EQ(picture["columns"], 3);
    EXPECT_EQ(picture["nodes"][0]["cursor"], 0);
    EXPECT_EQ(picture["nodes"][2]["label"], "Rotor");
    EXPECT_EQ(picture["selection"], 2);
}

TEST(Root, FindsLabelsWithTheSeparatorInThemAndTheRightOneOfTwins)
{
    const std::string tree = R"({"label":"a/b","children":[{"label":"c","children":[{"label":"d"}]},
        {"label":"c","children":[{"label":"e/f","children":[{},{}]}]},{"label":""}]})";
    EXPECT_EQ(Geometry({"-", "--root", "a/b/c/e/f"}, tree)["nodes"].size(), 3U);
    EXPECT_EQ(Geometry({"-", "--root", "c"}, tree)["nodes"].size(), 2U) << "the first of two";
    EXPECT_EQ(Geometry({"-", "--root", "a/b/"}, tree)["nodes"].size(), 1U) << "no label at all";
}

TEST(Root, NamesTheLevelThatIsNotThere)
{
    const auto line = [](const std::string& root) {
        const ProgramRun run =
            RunProgram({"render", "-", "-o", "-", "--format", "svg", "--root", root}, TREE);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.output, "");
        return run.errors;
    };
    EXPECT_EQ(line("Pump/Housing/Motor/x"),
              "dataviz: -: --root: there is no \"Motor\" below \"Pump/Housing\"\n");
    EXPECT_EQ(line("Motor"), "dataviz: -: --root: there is no \"Motor\" at or below the root\n");
    EXPECT_EQ(line("Base/x"), "dataviz: -: --root: there is no \"x\" below \"Base\"\n");
    EXPECT_EQ(line("/Pump"), "dataviz: -: --root: there is no \"\" at or below the root\n");
}

}  // namespace dataviz::tests
