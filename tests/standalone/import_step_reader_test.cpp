#include "import/StepReader.h"

#include "import_files.h"

#include <algorithm>
#include <regex>

namespace {

using namespace kuvimport;
using importtest::Folder;
using importtest::ProductNamed;

/// The structure is the subject here, not the triangles: few are enough.
ImportResult Import(const std::string& path, ImportOptions options = {})
{
    options.linearDeflection = 0.2;
    options.angularDeflection = 90;
    return importtest::Import(path, options);
}

/// The example with every match of a pattern replaced.
std::string EditedExample(const std::string& pattern, const std::string& replacement)
{
    const std::string text = importtest::ReadFile(importtest::Example());
    std::string edited = std::regex_replace(text, std::regex(pattern), replacement);
    EXPECT_NE(edited, text) << "the pattern matches nothing";
    return edited;
}

ImportResult ImportEdited(const std::string& pattern, const std::string& replacement)
{
    const Folder folder;
    return Import(folder.Write("edited.step", EditedExample(pattern, replacement)));
}

TEST(StepReader, TheExampleKeepsStructureSharingAndNames)
{
    const ImportResult result = Import(importtest::Example());
    ASSERT_TRUE(result.model) << result.error;
    const ImportedModel& model = *result.model;
    const ModelCounts counts = model.Count();
    EXPECT_EQ(counts.products, 46U);
    EXPECT_EQ(counts.instances, 98U);
    EXPECT_EQ(counts.reps, 73U);
    EXPECT_EQ(counts.levels, 5U);
    EXPECT_EQ(model.products[model.root].name, "Pump unit");
    EXPECT_EQ(model.products[model.root].components[1].name, "Coupling");
    EXPECT_EQ(ProductNamed(model, "Gehäuse").components.size(), 19U);
    EXPECT_EQ(ProductNamed(model, "Überdruckventil").components[2].name, "Lock nut");
    EXPECT_EQ(ProductNamed(model, "Screw set M6×70").components.size(), 2U);
    EXPECT_TRUE(model.warnings.empty());
}

TEST(StepReader, TheExampleKeepsColours)
{
    const ImportResult result = Import(importtest::Example());
    ASSERT_TRUE(result.model) << result.error;
    const Product& cap = ProductNamed(*result.model, "Cap");
    ASSERT_TRUE(cap.colour);
    EXPECT_EQ(*cap.colour, 0xC43630FFU);
}

TEST(StepReader, TheExampleKeepsPlacements)
{
    const ImportResult result = Import(importtest::Example());
    ASSERT_TRUE(result.model) << result.error;
    const Product& gears = ProductNamed(*result.model, "Gear set");
    EXPECT_NEAR(gears.components[0].placement.rows[11], 21, 1e-9);
    EXPECT_NEAR(gears.components[1].placement.rows[11], -21, 1e-9);
}

TEST(StepReader, ProductIdsAndUsageIdsAreTheFiles)
{
    const ImportResult result = ImportEdited(R"(PRODUCT\('Cap','Cap')", "PRODUCT('P-4711','Cap'");
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(ProductNamed(*result.model, "Cap").id, "P-4711");
    std::vector<std::string> ids;
    for (const Component& component : ProductNamed(*result.model, "Fitting").components)
        ids.push_back(component.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"43", "44", "45"}));
}

TEST(StepReader, EscapesOfTheFormatAreDecoded)
{
    const ImportResult result =
        ImportEdited(R"(PRODUCT\('Cap','Cap')", R"(PRODUCT('Cap','K\X2\03A6\X0\-\X\D8 \S\d')");
    ASSERT_TRUE(result.model) << result.error;
    ProductNamed(*result.model, "KΦ-Ø ä");
}

TEST(StepReader, RawBytesThatAreNoUtf8AreReadAsLatin1)
{
    const ImportResult result = ImportEdited(R"(PRODUCT\('Cap','Cap')", "PRODUCT('Cap','H\xFClse'");
    ASSERT_TRUE(result.model) << result.error;
    ProductNamed(*result.model, "Hülse");
}

TEST(StepReader, AnInstanceWithoutNameOrWithAReadersPlaceholderHasNone)
{
    for (const char* name : {"", "=>[0:1:1:2]"}) {
        const ImportResult result =
            ImportEdited(R"((NEXT_ASSEMBLY_USAGE_OCCURRENCE\('\d+',\s*)'Union nut')",
                         std::string("$1'") + name + "'");
        ASSERT_TRUE(result.model) << result.error;
        const Component& nut = ProductNamed(*result.model, "Fitting").components[1];
        EXPECT_EQ(nut.name, "");
        EXPECT_EQ(result.model->products[nut.product].name, "Union nut");
    }
}

TEST(StepReader, AProductWithoutNameShowsItsId)
{
    const ImportResult result = ImportEdited(R"(PRODUCT\('Cap','Cap')", "PRODUCT('P-4711',''");
    ASSERT_TRUE(result.model) << result.error;
    ProductNamed(*result.model, "P-4711");
}

TEST(StepReader, TheNameOfTheOnlyBodyIsTheShapes)
{
    const ImportResult result =
        ImportEdited(R"(MANIFOLD_SOLID_BREP\('')", R"(MANIFOLD_SOLID_BREP('K\X2\00F6\X0\rper')");
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(ProductNamed(*result.model, "Cap").shapeName, "Körper");
    EXPECT_EQ(ProductNamed(*result.model, "Fitting").shapeName, "");
}

TEST(StepReader, ABodyWithoutNameLeavesTheShapeToTheProduct)
{
    const ImportResult result =
        ImportEdited(R"(MANIFOLD_SOLID_BREP\('')", "MANIFOLD_SOLID_BREP('NONE'");
    ASSERT_TRUE(result.model) << result.error;
    EXPECT_EQ(ProductNamed(*result.model, "Cap").shapeName, "");
}

TEST(StepReader, ANameOfTenThousandCharactersSurvives)
{
    const std::string name(10000, 'n');
    const ImportResult result =
        ImportEdited(R"(PRODUCT\('Cap','Cap')", "PRODUCT('Cap','" + name + "'");
    ASSERT_TRUE(result.model) << result.error;
    ProductNamed(*result.model, name);
}

TEST(StepReader, UsageIdsThatRepeatAreToldApart)
{
    const ImportResult result = ImportEdited(R"(NEXT_ASSEMBLY_USAGE_OCCURRENCE\('\d+')",
                                             "NEXT_ASSEMBLY_USAGE_OCCURRENCE('1'");
    ASSERT_TRUE(result.model) << result.error;
    std::vector<std::string> ids;
    for (const Component& component : ProductNamed(*result.model, "Fitting").components)
        ids.push_back(component.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"1", "1~2", "1~3"}));
}

TEST(StepReader, AnAssemblyThatContainsItselfIsRefused)
{
    // The usage of the cap refers to the product that uses it.
    const std::string text = importtest::ReadFile(importtest::Example());
    std::smatch usage;
    const std::regex pattern(
        R"(NEXT_ASSEMBLY_USAGE_OCCURRENCE\('\d+',\s*'Cap',\s*'',\s*(#\d+),\s*(#\d+))");
    ASSERT_TRUE(std::regex_search(text, usage, pattern));
    std::string edited = text;
    edited.replace(static_cast<std::size_t>(usage.position(2)),
                   static_cast<std::size_t>(usage.length(2)), usage.str(1));
    const Folder folder;
    const ImportResult result = Import(folder.Write("loop.step", edited));
    EXPECT_FALSE(result.model);
    EXPECT_EQ(result.error, "the structure contains itself");
}

TEST(StepReader, ALimitOfOccurrencesIsJudgedBeforeAnythingIsExpanded)
{
    ImportOptions options;
    options.maxOccurrences = 97;
    const ImportResult result = Import(importtest::Example(), options);
    EXPECT_EQ(result.error, "the structure expands to 98 occurrences, more than 97");
    options.maxOccurrences = 98;
    EXPECT_TRUE(Import(importtest::Example(), options).model);
    options.maxLevels = 4;
    EXPECT_EQ(Import(importtest::Example(), options).error,
              "the structure is 5 levels deep, more than 4");
}

TEST(StepReader, ACutFileFailsWhereverItIsCut)
{
    const std::string text = importtest::ReadFile(importtest::Example());
    const Folder folder;
    for (const std::size_t share : {1U, 10U, 50U, 90U, 99U}) {
        const ImportResult result =
            Import(folder.Write("cut.step", text.substr(0, text.size() * share / 100)));
        EXPECT_FALSE(result.model);
        EXPECT_NE(result.error.find("cut off"), std::string::npos) << result.error;
    }
}

TEST(StepReader, CorruptFilesEndAsAModelOrAReasonNeverAsACrash)
{
    const std::string text = importtest::ReadFile(importtest::Example());
    const Folder folder;
    std::uint32_t state = 12345;
    const auto next = [&] { return state = state * 1664525U + 1013904223U; };
    for (int round = 0; round < 5; ++round) {
        std::string corrupt = text;
        for (int i = 0; i < 20; ++i)
            corrupt[1000 + next() % (corrupt.size() - 2000)] = static_cast<char>('0' + next() % 10);
        const ImportResult result = Import(folder.Write("corrupt.step", corrupt));
        EXPECT_NE(result.model == nullptr, result.error.empty());
    }
}

}  // namespace
