// `dataviz render --format html`: what the file holds. How it behaves is tested in a browser.

#include "Program.h"

#include <QXmlStreamReader>

#include <iostream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace dataviz::tests {

namespace {

using Json = nlohmann::json;

constexpr const char* GEARBOX = R"({"label":"Gearbox","children":[
    {"label":"Housing","value":7},
    {"label":"Shaft","children":[{"label":"Key","value":1},{"label":"Rotor","value":2}]}]})";

/// What a run writes to standard output in a format.
std::string Written(const std::string& tree, const std::string& format,
                    std::vector<std::string> options = {})
{
    options.insert(options.begin(), {"render", "-", "-o", "-", "--format", format});
    const ProgramRun run = RunProgram(options, tree);
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    return run.output;
}

std::string Page(const std::string& tree, const std::vector<std::string>& options = {})
{
    return Written(tree, "html", options);
}

/// What stands between the first `begin` and the `end` behind it.
std::string Between(const std::string& text, const std::string& begin, const std::string& end)
{
    const std::size_t from = text.find(begin);
    const std::size_t to = text.find(end, from + begin.size());
    if (from == std::string::npos || to == std::string::npos) {
        ADD_FAILURE() << "no " << begin << " and " << end;
        return {};
    }
    return text.substr(from + begin.size(), to - from - begin.size());
}

Json Data(const std::string& page)
{
    return Json::parse(Between(page, R"(<script type="application/json" id="data">)", "</script>"));
}

std::string Svg(const std::string& page) { return "<svg" + Between(page, "<svg", "</svg>"); }

std::size_t Count(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

/// The words with which attributes start that make a browser load something, and their values.
std::vector<std::string> References(const std::string& page)
{
    std::vector<std::string> found;
    for (const std::string name : {" src=\"", " href=\"", " xlink:href=\"", " srcset=\"", "url("}) {
        for (std::size_t at = page.find(name); at != std::string::npos;
             at = page.find(name, at + 1))
            found.push_back(page.substr(at + name.size(), 6));
    }
    return found;
}

/// A tree of `groups` times `leaves` leaves with distinct labels.
std::string Groups(int groups, int leaves)
{
    std::string text = R"({"label":"Plant","children":[)";
    for (int i = 0; i < groups; ++i) {
        text += (i > 0 ? "," : "") + std::string(R"({"label":"Assembly )") + std::to_string(i) +
                R"(","children":[)";
        for (int j = 0; j < leaves; ++j)
            text += (j > 0 ? "," : "") + std::string(R"({"label":"Part )") + std::to_string(i) +
                    '-' + std::to_string(j) + R"(, 12 x 40"})";
        text += "]}";
    }
    return text + "]}";
}

}  // namespace

// ---- the picture

TEST(HtmlPage, HoldsThePictureOfTheSvgFile)
{
    std::string picture = Svg(Page(GEARBOX));
    for (std::size_t at = picture.find("<g id="); at != std::string::npos;
         at = picture.find("<g id=", at))
        picture.replace(at, picture.find('>', at) - at, "<g");
    const std::string file = Written(GEARBOX, "svg");
    EXPECT_EQ(picture.substr(picture.find(" width=")), Between(file, "xlink\"", "</svg>"))
        << "without script the page shows just that";
}

TEST(HtmlPage, ItsPictureIsWellFormed)
{
    QString svg = QString::fromStdString(
        Svg(Page(R"({"label":"<a href='x'>&amp;\"\u0001\u200f","children":[{"label":"]]>"}]})")) +
        "</svg>");
    svg.insert(4, QStringLiteral(" xmlns:xlink=\"x\""));
    QXmlStreamReader reader(svg);
    while (!reader.atEnd())
        reader.readNext();
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
}

TEST(HtmlPage, EveryDrawnNodeHasAGroupWithItsNumber)
{
    const std::string page = Page(GEARBOX);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(Count(page, "<g id=\"n" + std::to_string(i) + "\">"), 1u) << i;
    EXPECT_EQ(Count(page, "<g id="), 5u);
}

// ---- the data

TEST(HtmlPage, TellsParentsLabelsAndValuesInPreOrder)
{
    const Json data = Data(Page(GEARBOX));
    EXPECT_EQ(data["title"], "Gearbox");
    EXPECT_EQ(data["unit"], "value");
    EXPECT_EQ(data["total"], 10);
    const Json expected{{-1, 0, 10}, {0, 0, 7}, {0, 0, 3}, {2, 0, 1}, {2, 0, 2}};
    EXPECT_EQ(data["nodes"], expected) << "labels that the picture shows whole are not repeated";
    EXPECT_EQ(data["selected"], 1) << "the first leaf";
    EXPECT_EQ(data["active"], Json({{1, "#ffffff"}}))
        << "its label's colour when it is not selected";
}

TEST(HtmlPage, TellsLabelsInFullWhereThePictureShortensThem)
{
    const std::string label(60, 'm');
    const Json data = Data(
        Page(R"({"label":"r","children":[{"label":")" + label + R"("}]})", {"--size", "100x50"}));
    EXPECT_EQ(data["nodes"][1][1], label);
}

TEST(HtmlPage, TellsHowManyNodesAreHiddenBelowAClosedOne)
{
    const Json data = Data(Page(GEARBOX, {"--size", "100x50"}));
    ASSERT_EQ(data["nodes"].size(), 3u);
    EXPECT_EQ(data["nodes"][0], Json({-1, 0, 10, 2}));
    EXPECT_EQ(data["nodes"][2], Json({0, 0, 3, 2, "#0088de"})) << "and its colour";
}

TEST(HtmlPage, KeepsValuesThatAScriptWouldRoundAsTexts)
{
    const Json data = Data(Page(
        R"({"label":"r","value":9223372036854775807,"children":[{"value":9007199254740992},{"value":9007199254740993}]})"));
    EXPECT_EQ(data["total"], "9223372036854775807");
    EXPECT_EQ(data["nodes"][1][2], 9007199254740992);
    EXPECT_EQ(data["nodes"][2][2], "9007199254740993");
}

TEST(HtmlPage, NamesThePathOfWhatIsDrawnAfterTheRootHasChanged)
{
    const ScratchFolder folder;
    const std::string events = folder.Write("events.json", R"([{"event":"setroot","node":2}])");
    const std::string page = Page(GEARBOX, {"--events", events});
    const Json nodes = Data(page)["nodes"];
    ASSERT_EQ(nodes.size(), 4u) << "Housing is neither drawn nor above a drawn node";
    EXPECT_EQ(nodes[0], Json({-1, "Gearbox", 10, 1}));
    EXPECT_EQ(nodes[1][0], 0);
    EXPECT_EQ(nodes[2][0], 1);
    EXPECT_EQ(Count(page, "<g id=\"n0\">"), 0u) << "the root is not drawn";
    EXPECT_EQ(Count(page, "<g id="), 3u);
}

TEST(HtmlPage, CountsTrianglesOfAModel)
{
    const ProgramRun run = RunProgram(
        {"render", KUV_SOURCE_DIR "/examples/example.step", "-o", "-", "--format", "html"});
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(Data(run.output)["unit"], "triangles");
    EXPECT_NE(Between(run.output, "<p class=\"facts\">", "</p>").find(" triangles &middot; "),
              std::string::npos);
}

// ---- escaping

TEST(HtmlPage, NoLabelBecomesMarkup)
{
    const std::string page = Page(
        R"({"label":"</title></script><script>x&\"'<!--","children":[{"label":"</SCRIPT>]]><b>{{svg}}"}]})",
        {"--size", "2000x400"});
    EXPECT_EQ(Count(page, "<script"), 2u) << "the data and the page's own";
    EXPECT_EQ(Count(page, "</script"), 2u);
    EXPECT_EQ(Count(page, "</SCRIPT"), 0u);
    EXPECT_EQ(Count(page, "<b>"), 0u);
    EXPECT_EQ(Count(page, "<svg"), 1u) << "what looks like a place holder is not filled in";
    EXPECT_EQ(Between(page, "<title>", "</title>"),
              "&lt;/title&gt;&lt;/script&gt;&lt;script&gt;x&amp;&quot;&#39;&lt;!--");
    EXPECT_EQ(Data(page)["title"], "</title></script><script>x&\"'<!--");
}

TEST(HtmlPage, ControlCharactersAreShownAsSigns)
{
    const std::string page = Page("{\"label\":\"a\\u0001\\n\\u007f\\u2028b\"}");
    EXPECT_EQ(page.find_first_of(std::string("\x01\x7F\0", 3)), std::string::npos);
    EXPECT_EQ(Data(page)["title"], "a\u2401\u240a\u2421\u2424b");
}

TEST(HtmlPage, ANodeWithoutLabelLeavesTheTitleToTheFile)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("a & b.json", "{}");
    const ProgramRun run = RunProgram({"render", tree, "-o", folder / "page.html"});
    EXPECT_EQ(run.status, 0) << run.errors;
    const std::string page = ReadFile(folder / "page.html");
    EXPECT_EQ(Between(page, "<title>", "</title>"), "a &amp; b.json");
    EXPECT_EQ(Data(page)["nodes"][0][1], "");
}

// ---- the file as a whole

TEST(HtmlPage, RefersToNothingOutsideItself)
{
    const std::string page = Page(GEARBOX, {"--size", "100x50"});
    EXPECT_EQ(page.find("http:"), std::string::npos);
    EXPECT_EQ(page.find("https:"), std::string::npos);
    EXPECT_EQ(page.find("@import"), std::string::npos);
    const std::vector<std::string> references = References(page);
    EXPECT_GE(references.size(), 2u) << "the icon and the image of a closed node";
    for (const std::string& reference : references) {
        EXPECT_TRUE(reference.rfind("data:", 0) == 0 || reference[0] == '#' ||
                    reference.rfind("${", 0) == 0 || reference.rfind("#${", 0) == 0)
            << reference;
    }
    EXPECT_NE(page.find("default-src 'none'; img-src data:;"), std::string::npos);
}

TEST(HtmlPage, StaysBelowThreeMegabytesForTenThousandDrawnNodes)
{
    const std::string page = Page(Groups(100, 100), {"--size", "16000x9000"});
    EXPECT_EQ(Count(page, "<g id="), 10101u);
    EXPECT_LT(page.size(), 3'000'000u);
    std::cout << "count: " << page.size() << " bytes of HTML for 10,101 opened nodes\n";
}

TEST(HtmlPage, StaysBelowThreeMegabytesForTenThousandClosedNodes)
{
    // Each of the nodes is closed: its two leaves find no room.
    std::string text = R"({"label":"Plant","children":[)";
    for (int i = 0; i < 10'000; ++i)
        text += (i > 0 ? "," : "") + std::string(R"({"label":"Part )") + std::to_string(i) +
                R"(, 12 x 40","children":[{},{}]})";
    const std::string page = Page(text + "]}", {"--size", "4000x1800"});
    EXPECT_EQ(Count(page, "<g id="), 10001u);
    EXPECT_LT(page.size(), 3'000'000u);
    std::cout << "count: " << page.size() << " bytes of HTML for 10,001 closed nodes\n";
}

TEST(HtmlPage, IsTheSameEveryTime) { EXPECT_EQ(Page(GEARBOX), Page(GEARBOX)); }

TEST(HtmlPage, FollowsTheNameOfTheOutput)
{
    const ScratchFolder folder;
    const std::string tree = folder.Write("tree.json", GEARBOX);
    EXPECT_EQ(RunProgram({"render", tree, "-o", folder / "Page.HTML"}).status, 0);
    EXPECT_EQ(ReadFile(folder / "Page.HTML").rfind("<!DOCTYPE html>", 0), 0u);
}

}  // namespace dataviz::tests
