#include "TreeFile.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include <gtest/gtest.h>

namespace dataviz {

namespace {

TreeFile Read(const std::string& text)
{
    TreeFile tree;
    const std::optional<TreeFileError> error = ReadTreeFile(text, tree);
    EXPECT_FALSE(error) << error->Text() << "\nin " << text.substr(0, 200);
    return tree;
}

/// "line:column reason" of a text that must be refused.
std::string Refusal(const std::string& text)
{
    TreeFile tree;
    const std::optional<TreeFileError> error = ReadTreeFile(text, tree);
    EXPECT_TRUE(error) << "accepted: " << text.substr(0, 200);
    EXPECT_TRUE(tree.nodes.empty()) << "a refused file leaves nothing behind";
    if (!error)
        return {};
    return std::to_string(error->line) + ":" + std::to_string(error->column) + " " + error->reason;
}

/// The tree as text: label=value/colour of every node, children in parentheses.
std::string Dump(const TreeFile& tree)
{
    std::string text;
    std::vector<std::size_t> depth;
    for (const TreeFileNode& node : tree.nodes) {
        depth.push_back(node.parent == TreeFileNode::NO_PARENT ? 0 : depth[node.parent] + 1);
        const std::size_t former = depth.size() > 1 ? depth[depth.size() - 2] : 0;
        if (depth.back() > former)
            text += "(";
        else if (depth.size() > 1)
            text += std::string(former - depth.back(), ')') + " ";
        text += std::string(tree.Label(node)) + "=" + std::to_string(node.value);
        if (node.color != node.value)
            text += "/" + std::to_string(node.color);
    }
    return text + std::string(depth.back(), ')');
}

std::filesystem::path SampleTrees()
{
    const char* const models = std::getenv("KUV_MODELS");
    return std::filesystem::path(models != nullptr ? models : KUV_MODELS_DEFAULT) / "trees";
}

std::string ReadAll(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace

// ---- nested JSON

TEST(TreeFile, ReadsNodesInPreOrderWithTheirChildrenInOrder)
{
    const TreeFile tree = Read(
        R"({"label":"a","children":[{"label":"b","children":[{"label":"c"}]},{"label":"d"}]})");
    ASSERT_EQ(tree.nodes.size(), 4u);
    EXPECT_EQ(tree.Label(tree.nodes[1]), "b");
    EXPECT_EQ(tree.Label(tree.nodes[2]), "c");
    EXPECT_EQ(tree.Label(tree.nodes[3]), "d");
    EXPECT_EQ(tree.nodes[0].parent, TreeFileNode::NO_PARENT);
    EXPECT_EQ(tree.nodes[2].parent, 1u);
    EXPECT_EQ(tree.nodes[3].parent, 0u);
}

TEST(TreeFile, GivesANodeWithoutKeysItsDefaults)
{
    const TreeFile tree = Read("{}");
    ASSERT_EQ(tree.nodes.size(), 1u);
    const TreeFileNode& node = tree.nodes[0];
    EXPECT_EQ(tree.Label(node), "");
    EXPECT_EQ(tree.Icon(node), "");
    EXPECT_EQ(node.value, 1) << "a leaf without value weighs 1";
    EXPECT_EQ(node.color, 1);
    EXPECT_FALSE(node.mergeable || node.merged || node.leafObject);
}

TEST(TreeFile, ReadsEveryKeyOfANode)
{
    const TreeFile tree = Read(
        R"({"name":"n","icon":"i","size":7,"color":9,"mergeable":true,"merged":true,"leafObject":true})");
    const TreeFileNode& node = tree.nodes[0];
    EXPECT_EQ(tree.Label(node), "n");
    EXPECT_EQ(tree.Icon(node), "i");
    EXPECT_EQ(node.value, 7);
    EXPECT_EQ(node.color, 9);
    EXPECT_TRUE(node.mergeable && node.merged && node.leafObject);
}

TEST(TreeFile, SumsTheChildrenOfAnInnerNodeWithoutValue)
{
    EXPECT_EQ(Dump(Read(R"({"label":"r","children":[{"label":"a","value":2},
        {"label":"b","children":[{"label":"c"},{"label":"d","value":4}]}]})")),
              "r=7(a=2 b=5(c=1 d=4))");
}

TEST(TreeFile, KeepsTheValueOfAnInnerNodeThatHasOne)
{
    EXPECT_EQ(Dump(Read(R"({"label":"r","children":[{"label":"a","value":2}],"value":0})")),
              "r=0(a=2)");
}

TEST(TreeFile, TakesAnEmptyListOfChildrenForALeaf)
{
    EXPECT_EQ(Dump(Read(R"({"label":"r","children":[]})")), "r=1");
}

TEST(TreeFile, UsesTheColourOnlyForTheNodeThatHasIt)
{
    EXPECT_EQ(Dump(Read(R"({"label":"r","children":[{"label":"a","value":2,"color":5}]})")),
              "r=2(a=2/5)");
}

TEST(TreeFile, IgnoresUnknownKeysWithWhateverTheyHold)
{
    EXPECT_EQ(
        Dump(Read(
            R"({"x":{"children":[{"value":-1}],"y":[[]]},"label":"r","z":[1,[2,{}]],"w":null})")),
        "r=1");
}

TEST(TreeFile, ReadsTheGreatestValue)
{
    EXPECT_EQ(Read(R"({"value":9223372036854775807})").nodes[0].value, INT64_MAX);
}

TEST(TreeFile, ReadsWholeNumbersInEveryNotation)
{
    EXPECT_EQ(Read(R"({"value":12.0})").nodes[0].value, 12);
    EXPECT_EQ(Read(R"({"value":1.25e2})").nodes[0].value, 125);
    EXPECT_EQ(Read(R"({"value":-0})").nodes[0].value, 0);
    EXPECT_EQ(Read(R"({"value":9223372036854775807.0})").nodes[0].value, INT64_MAX)
        << "read from the text, not through floating point";
}

TEST(TreeFile, KeepsEscapedAndControlCharactersOfLabels)
{
    const TreeFile tree = Read(R"({"label":"a\n\u0000\u00e9\ud83d\ude00"})");
    EXPECT_EQ(tree.Label(tree.nodes[0]), std::string_view("a\n\0é😀", 9));
}

TEST(TreeFile, SkipsAByteOrderMark)
{
    EXPECT_EQ(Dump(Read("\xEF\xBB\xBF{\"label\":\"r\"}")), "r=1");
}

// ---- errors

TEST(TreeFile, RefusesValuesThatAreNegativeFractionalOutOfRangeOrNoNumber)
{
    EXPECT_EQ(Refusal(R"({"value":-1})"), R"(1:10 the number of "value" is negative)");
    EXPECT_EQ(Refusal(R"({"value":1.5})"), R"(1:10 the number of "value" is not a whole number)");
    EXPECT_EQ(Refusal(R"({"value":9223372036854775808})"),
              R"(1:10 the number of "value" is above 9223372036854775807)");
    EXPECT_EQ(Refusal(R"({"size":1e30})"),
              R"(1:9 the number of "size" is above 9223372036854775807)");
    EXPECT_EQ(Refusal(R"({"color":-7})"), R"(1:10 the number of "color" is negative)");
    EXPECT_EQ(Refusal(R"({"value":"7"})"),
              R"(1:10 "value" must be a whole number from 0 to 9223372036854775807, not a string)");
    EXPECT_EQ(Refusal(R"({"value":1e400})"),
              R"(1:10 the number of "value" is above 9223372036854775807)");
    EXPECT_EQ(Refusal(R"({"color":-1e400})"), R"(1:10 the number of "color" is negative)");
    EXPECT_EQ(Refusal(R"({"label":1e400})"), R"(1:10 "label" must be a string, not a number)");
}

TEST(TreeFile, RefusesWrongTypesNamingTheKey)
{
    EXPECT_EQ(Refusal(R"({"label":1})"), R"(1:10 "label" must be a string, not a number)");
    EXPECT_EQ(Refusal(R"({"icon":null})"), R"(1:9 "icon" must be a string, not null)");
    EXPECT_EQ(Refusal(R"({"merged":1})"), R"(1:11 "merged" must be true or false, not a number)");
    EXPECT_EQ(Refusal(R"({"children":{}})"),
              R"(1:13 "children" must be an array of nodes, not an object)");
    EXPECT_EQ(Refusal(R"({"name":[]})"), R"(1:9 "name" must be a string, not an array)");
    EXPECT_EQ(Refusal(R"({"children":[{},7]})"), "1:17 a child must be an object, not a number");
    EXPECT_EQ(Refusal(R"({"children":[[]]})"), "1:14 a child must be an object, not an array");
}

TEST(TreeFile, RefusesBothNamesOfTheLabelAndAnyKeyGivenTwice)
{
    EXPECT_EQ(Refusal(R"({"label":"a","name":"b"})"), R"(1:14 "label" or "name" is given twice)");
    EXPECT_EQ(Refusal(R"({"size":1,"value":1})"), R"(1:11 "value" or "size" is given twice)");
    EXPECT_EQ(Refusal(R"({"children":[],"children":[]})"), R"(1:16 "children" is given twice)");
}

TEST(TreeFile, RefusesInvalidUtf8WithItsPlace)
{
    EXPECT_EQ(Refusal("{\n \"label\":\"ab\xFF\"}"),
              "2:13 syntax error while parsing value - invalid string: ill-formed UTF-8 byte");
    EXPECT_EQ(Refusal("path,size\na/\xC0\xAF,1\n"), "2:3 invalid UTF-8");
}

TEST(TreeFile, CountsColumnsInCharactersNotBytes)
{
    EXPECT_EQ(Refusal("{\"label\":\"éé\",\"value\":-1}"),
              R"(1:23 the number of "value" is negative)");
    EXPECT_EQ(Refusal("\xEF\xBB\xBF{\"value\":-1}"), R"(1:10 the number of "value" is negative)")
        << "a byte order mark is no column";
}

TEST(TreeFile, RefusesASumAboveTheGreatestValueAtTheNodeThatHasIt)
{
    EXPECT_EQ(
        Refusal(
            "{\"children\":[\n{\"children\":[{\"value\":9223372036854775807},{\"value\":1}]}]}"),
        "2:1 the sum of the children's values is above 9223372036854775807");
}

TEST(TreeFile, RefusesTextThatIsCutOff)
{
    EXPECT_EQ(Refusal(R"({"children":[{)").substr(0, 5), "1:15 ");
    EXPECT_EQ(Refusal(R"({"label":"a)").substr(0, 5), "1:12 ");
    EXPECT_EQ(Refusal(""), "1:1 is empty");
    EXPECT_EQ(Refusal(" \n "), "2:2 is empty");
}

TEST(TreeFile, RefusesTextAfterTheTree)
{
    EXPECT_EQ(Refusal(R"({"name":"x"} {})").substr(0, 5), "1:14 ");
}

TEST(TreeFile, RefusesTextAfterAZeroByte)
{
    EXPECT_EQ(Refusal(std::string("{\"label\":\"a\"}\n\0garbage", 22)), "2:1 holds a zero byte");
    EXPECT_EQ(Refusal(std::string("{\"label\":\"a\"}\0", 14)), "1:14 holds a zero byte");
    EXPECT_EQ(Refusal(std::string("[{\"id\":1}]\0[", 12)), "1:11 holds a zero byte");
}

TEST(TreeFile, TellsAGltfDocumentFromOtherJson)
{
    const auto isGltf = [](const std::string& text) {
        TreeFile tree;
        return ReadTreeFile(text, tree)->isGltf;
    };
    EXPECT_TRUE(isGltf(R"({"nodes":[],"asset":{"generator":"x","version":"2.0"}})"));
    EXPECT_TRUE(isGltf(R"({"asset":{},"scenes":[]})")) << "a malformed one";
    EXPECT_FALSE(isGltf(R"({"rows":[1,2]})"));
    EXPECT_FALSE(isGltf(R"({"rows":{"asset":{"version":"2.0"}}})"));
    EXPECT_FALSE(isGltf(R"({"value":-1})"));
}

TEST(TreeFile, RefusesOtherJsonSayingSo)
{
    EXPECT_EQ(Refusal(R"({"rows":[1,2]})"),
              "1:1 the JSON object is no tree: it has none of the keys \"label\", \"name\", "
              "\"value\", \"size\" and \"children\"");
    EXPECT_EQ(Refusal("[1,2]"), "1:2 a record must be an object, not a number");
    EXPECT_EQ(Refusal("[]"), "1:3 the array holds no records");
}

// ---- id/parent records

TEST(TreeFile, LinksRecordsWhoseParentsComeLater)
{
    EXPECT_EQ(
        Dump(Read(R"([{"id":3,"parent":"b","name":"c","size":4},{"id":"b","parent":1,"label":"b"},
        {"id":1,"name":"r","parent":null},{"id":4,"parent":1,"name":"d"}])")),
        "r=5(b=4(c=4) d=1)");
}

TEST(TreeFile, RefusesRecordsThatMakeNoTree)
{
    EXPECT_EQ(Refusal(R"([{"name":"a"}])"),
              R"(1:2 the record has no "id"; this JSON array is no tree)");
    EXPECT_EQ(Refusal(R"([{"id":1},{"id":1,"parent":1}])"),
              R"(1:11 the record has the "id" of an earlier one)");
    EXPECT_EQ(Refusal(R"([{"id":1},{"id":2,"parent":3}])"),
              R"(1:11 no record has the "id" that the record's "parent" names)");
    EXPECT_EQ(Refusal(R"([{"id":1},{"id":2}])"),
              "1:11 a second node without parent; a tree has one root");
    EXPECT_EQ(Refusal(R"([{"id":1,"parent":1}])"),
              "1:2 every node has a parent; a tree has one root without");
    EXPECT_EQ(Refusal(R"([{"id":0},{"id":1,"parent":2},{"id":2,"parent":1}])"),
              "1:11 the node is its own ancestor");
    EXPECT_EQ(Refusal(R"([{"id":1,"children":[]}])"),
              R"(1:10 a record of an id/parent list cannot have "children")");
    EXPECT_EQ(Refusal(R"([{"id":1.5}])").substr(0, 4), "1:8 ");
}

// ---- CSV

TEST(TreeFile, OpensTheDirectoriesOfPathsByThemselves)
{
    EXPECT_EQ(Dump(Read("size,path\n3,a/b/c\n4,a/d\n5,a/b/e\n")), "a=12(b=8(c=3 e=5) d=4)");
    EXPECT_EQ(Dump(Read("path,value\r\n/a//b/,2\r\n")), "a=2(b=2)")
        << "a leading, doubled or trailing separator opens no level";
}

TEST(TreeFile, PutsARootWithoutLabelAboveSeveralFirstLevels)
{
    EXPECT_EQ(Dump(Read("path,size\na/x,1\nb,2\na/y,4\n")), "=7(a=5(x=1 y=4) b=2)");
}

TEST(TreeFile, ReadsDottedIdsWithEmptyValuesAsUnknown)
{
    EXPECT_EQ(Dump(Read("id,value\nf,\nf.a,\nf.a.x,3\nf.b,\n")), "f=4(a=3(x=3) b=1)");
}

TEST(TreeFile, ReadsCsvRecords)
{
    EXPECT_EQ(Dump(Read("id,parent,label,value\n2,1,b,7\n1,,\"r, \"\"the\"\" root\",\n")),
              "r, \"the\" root=7(b=7)");
}

TEST(TreeFile, RefusesCsvThatMakesNoTreeNamingTheRow)
{
    EXPECT_EQ(Refusal("path,size\na/b,3\na/b,4\n"), "3:1 an earlier row has the same path");
    EXPECT_EQ(Refusal("path,size\na,-3\n"), "2:3 the value is negative");
    EXPECT_EQ(Refusal("path,size\na,x\n"), "2:3 the value is not a number");
    EXPECT_EQ(Refusal("path,size\na,1.5\n"), "2:3 the value is not a whole number");
    EXPECT_EQ(Refusal("path,size\n,3\n"), "2:1 the path names no level");
    EXPECT_EQ(Refusal("path,size\na,3,4\n"), "2:1 the row has 3 fields, the header 2");
    EXPECT_EQ(Refusal("path,size\na,\"3\n"), "2:3 the quoted field has no closing quote");
    EXPECT_EQ(Refusal("path,size\na,\"3\"4\n"), "2:6 a quoted field must end at its closing quote");
    EXPECT_EQ(Refusal("path,size\n"), "2:1 the table holds no rows");
    EXPECT_EQ(Refusal("id,parent,label,value\n1,2,a,\n2,1,b,\n").substr(0, 4), "2:1 ");
    EXPECT_EQ(Refusal("id,parent,label,value\n1,,a,\n2,9,b,\n"),
              "3:3 no record has the id that the record's parent names");
    EXPECT_EQ(Refusal("city,people\nParis,3\n").substr(0, 20), "1:1 is no tree file:");
}

TEST(TreeFile, RecognisesTreeFilesByTheirBeginning)
{
    EXPECT_TRUE(LooksLikeTreeFile(" \n{"));
    EXPECT_TRUE(LooksLikeTreeFile("[{\"id\""));
    EXPECT_TRUE(LooksLikeTreeFile("size,path\n1,a"));
    EXPECT_FALSE(LooksLikeTreeFile("ISO-10303-21;\nHEADER;"));
    EXPECT_FALSE(LooksLikeTreeFile("a,b\n"));
    EXPECT_FALSE(LooksLikeTreeFile(""));
}

// ---- sizes

TEST(TreeFile, ReadsAMillionNestedLevels)
{
    constexpr std::size_t LEVELS = 1'000'000;
    std::string text;
    for (std::size_t i = 1; i < LEVELS; ++i)
        text += "{\"children\":[";
    text += "{\"value\":3}";
    for (std::size_t i = 1; i < LEVELS; ++i)
        text += "]}";
    const TreeFile tree = Read(text);
    ASSERT_EQ(tree.nodes.size(), LEVELS);
    EXPECT_EQ(tree.nodes.back().parent, LEVELS - 2);
    EXPECT_EQ(tree.nodes.front().value, 3);
}

TEST(TreeFile, ReadsAMillionRecordsThatAreAChainFromTheLeafUp)
{
    constexpr int COUNT = 1'000'000;
    std::string text = "[";
    for (int i = 0; i < COUNT - 1; ++i)
        text += "{\"id\":" + std::to_string(i) + ",\"parent\":" + std::to_string(i + 1) + "},";
    text += "{\"id\":" + std::to_string(COUNT - 1) + "}]";
    EXPECT_EQ(Read(text).nodes.size(), std::size_t{COUNT});
}

TEST(TreeFile, ReadsAMillionChildrenOfOneNode)
{
    std::string text = "{\"children\":[{}";
    for (int i = 1; i < 1'000'000; ++i)
        text += ",{}";
    EXPECT_EQ(Read(text + "]}").nodes.front().value, 1'000'000);
}

// ---- files of other tree map tools

TEST(TreeFile, ReadsTheSampleTrees)
{
    struct Sample {
        const char* name;
        std::size_t nodes;
        std::int64_t rootValue;
    };
    // Where inner nodes bring no value, the root's is the sum of the leaves, 1 for each unknown
    // size. Two listings have several first levels, so a root of their own on top.
    constexpr Sample SAMPLES[] = {{"cpuprofile_deep.json", 3493, 0},
                                  {"disk_usage.json", 3636, 4484208},
                                  {"files_kicad_models.csv", 12553, 5612645543},
                                  {"files_occt.csv", 36502, 188029341 + 2},
                                  {"files_serenity.csv", 20440, 107446197 + 1},
                                  {"flare_nested.json", 252, 956129},
                                  {"flare_parent_ids.json", 252, 956129},
                                  {"flare_paths.csv", 252, 956129}};
    if (!std::filesystem::exists(SampleTrees()))
        GTEST_SKIP() << "no sample trees in " << SampleTrees();
    for (const Sample& sample : SAMPLES) {
        const TreeFile tree = Read(ReadAll(SampleTrees() / sample.name));
        EXPECT_EQ(tree.nodes.size(), sample.nodes) << sample.name;
        EXPECT_EQ(tree.nodes.front().value, sample.rootValue) << sample.name;
    }
    std::cout << "count: " << std::size(SAMPLES) << " sample trees read\n";
}

TEST(TreeFile, ReadsTheSameTreeFromItsThreeNotations)
{
    if (!std::filesystem::exists(SampleTrees()))
        GTEST_SKIP() << "no sample trees in " << SampleTrees();
    const std::string nested = Dump(Read(ReadAll(SampleTrees() / "flare_nested.json")));
    EXPECT_EQ(Dump(Read(ReadAll(SampleTrees() / "flare_parent_ids.json"))), nested);
    EXPECT_EQ(Dump(Read(ReadAll(SampleTrees() / "flare_paths.csv"))), nested);
}

TEST(TreeFile, RefusesATableThatIsNoTree)
{
    const std::filesystem::path table = SampleTrees() / "us_budget_table.json";
    if (!std::filesystem::exists(table))
        GTEST_SKIP() << "no sample trees in " << SampleTrees();
    EXPECT_EQ(Refusal(ReadAll(table)), R"(2:3 the record has no "id"; this JSON array is no tree)");
}

}  // namespace dataviz
