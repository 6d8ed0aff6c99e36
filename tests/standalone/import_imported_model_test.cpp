#include "import/ImportedModel.h"
#include "import/StructureLimits.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace kuvimport;

std::uint32_t AddProduct(ImportedModel& model, const std::string& name)
{
    model.products.emplace_back().name = name;
    return static_cast<std::uint32_t>(model.products.size() - 1);
}

std::uint32_t AddPart(ImportedModel& model, std::vector<std::uint32_t> trianglesPerFace)
{
    const std::uint32_t part = AddProduct(model, "part");
    model.products[part].geometry = static_cast<std::uint32_t>(model.geometries.size());
    PartGeometry& geometry = model.geometries.emplace_back();
    geometry.trianglesPerFace = std::move(trianglesPerFace);
    geometry.edges = 5;
    geometry.vertices = 4;
    return part;
}

void Use(ImportedModel& model, std::uint32_t parent, std::uint32_t child)
{
    model.products[parent].components.emplace_back().product = child;
}

/// root -> 2 x pair -> 2 x part (3 + 4 triangles), root -> part
ImportedModel SharedPairs()
{
    ImportedModel model;
    model.root = AddProduct(model, "root");
    const std::uint32_t pair = AddProduct(model, "pair");
    const std::uint32_t part = AddPart(model, {3, 4});
    Use(model, model.root, pair);
    Use(model, model.root, pair);
    Use(model, model.root, part);
    Use(model, pair, part);
    Use(model, pair, part);
    return model;
}

/// `levels` products, each with two occurrences of the next: 2^levels leaves.
ImportedModel Doubling(std::uint32_t levels)
{
    ImportedModel model;
    for (std::uint32_t i = 0; i < levels; ++i)
        AddProduct(model, "level");
    for (std::uint32_t i = 0; i + 1 < levels; ++i) {
        Use(model, i, i + 1);
        Use(model, i, i + 1);
    }
    return model;
}

TEST(ImportedModel, CountsOccurrencesMultipliedAndGeometryOnce)
{
    const ModelCounts counts = SharedPairs().Count();
    EXPECT_EQ(counts.products, 3U);
    EXPECT_EQ(counts.instances, 7U) << "two pairs, four parts in them, one part";
    EXPECT_EQ(counts.reps, 5U);
    EXPECT_EQ(counts.faces, 10U);
    EXPECT_EQ(counts.edges, 25U);
    EXPECT_EQ(counts.vertices, 20U);
    EXPECT_EQ(counts.triangles, 35U);
    EXPECT_EQ(counts.trianglesUnique, 7U);
    EXPECT_EQ(counts.levels, 3U);
}

TEST(ImportedModel, ARootOfTheReadersMakingIsNoProduct)
{
    ImportedModel model = SharedPairs();
    model.products[model.root].isFileRoot = true;
    EXPECT_EQ(model.Count().products, 2U);
    EXPECT_EQ(model.Count().instances, 7U);
}

TEST(ImportedModel, WhatTheRootDoesNotReachIsNotCounted)
{
    ImportedModel model = SharedPairs();
    AddPart(model, {100});
    EXPECT_EQ(model.Count().products, 3U);
    EXPECT_EQ(model.Count().trianglesUnique, 7U);
}

TEST(ImportedModel, TwoProductsWithOneGeometryHaveItOnceInTheUniqueTriangles)
{
    ImportedModel model = SharedPairs();
    const std::uint32_t mirror = AddProduct(model, "mirror");
    model.products[mirror].geometry = 0;
    Use(model, model.root, mirror);
    EXPECT_EQ(model.Count().triangles, 42U);
    EXPECT_EQ(model.Count().trianglesUnique, 7U);
}

TEST(ImportedModel, AnEmptyModelHasNothing)
{
    const ModelCounts counts = ImportedModel().Count();
    EXPECT_EQ(counts.products + counts.instances + counts.reps + counts.levels, 0U);
}

TEST(ImportedModel, CountingAHundredDoublingLevelsSaturates)
{
    EXPECT_EQ(Doubling(100).Count().instances, std::numeric_limits<std::uint64_t>::max() - 1);
}

TEST(ImportedModel, ChildrenComeBeforeTheirParents)
{
    const std::vector<std::uint32_t> order = ChildrenFirst(SharedPairs());
    EXPECT_EQ(order, (std::vector<std::uint32_t>{2, 1, 0}));
}

TEST(ImportedModel, AStructureThatContainsItselfHasNoOrder)
{
    ImportedModel model = SharedPairs();
    Use(model, 2, 0);
    EXPECT_TRUE(ChildrenFirst(model).empty());
    EXPECT_EQ(model.Count().instances, 0U);
}

TEST(ImportedModel, AComponentWithoutProductHasNoOrder)
{
    ImportedModel model = SharedPairs();
    Use(model, 1, 99);
    EXPECT_TRUE(ChildrenFirst(model).empty());
}

TEST(ImportedModel, AMillionLevelsAreOrderedWithoutRecursion)
{
    constexpr std::uint32_t LEVELS = 1000000;
    ImportedModel model;
    for (std::uint32_t i = 0; i < LEVELS; ++i) {
        AddProduct(model, {});
        if (i > 0)
            Use(model, i - 1, i);
    }
    EXPECT_EQ(model.Count().levels, LEVELS);
}

TEST(ImportedModel, TheLargestSideOfNoExtentIsZero)
{
    Extent extent;
    EXPECT_TRUE(extent.IsEmpty());
    EXPECT_EQ(extent.LargestSide(), 0);
    extent.low = {0, 0, 0};
    extent.high = {1, 7, 3};
    EXPECT_EQ(extent.LargestSide(), 7);
}

TEST(StructureLimits, AnExpansionBeyondTheLimitIsRefusedWithTheCount)
{
    // 2 + 4 + ... + 2^22 occurrences below the root.
    EXPECT_EQ(JudgeExpansion(Doubling(23), {}),
              "the structure expands to 8,388,606 occurrences, more than 5,000,000");
    EXPECT_EQ(JudgeExpansion(Doubling(22), {}), "") << "4,194,302 occurrences are within the limit";
}

TEST(StructureLimits, TheLimitOfOccurrencesIsInclusive)
{
    ImportedModel model = SharedPairs();
    ImportOptions options;
    options.maxOccurrences = 7;
    EXPECT_EQ(JudgeExpansion(model, options), "");
    options.maxOccurrences = 6;
    EXPECT_EQ(JudgeExpansion(model, options),
              "the structure expands to 7 occurrences, more than 6");
}

TEST(StructureLimits, MoreThan512LevelsAreRefusedWithTheCount)
{
    ImportedModel model;
    for (std::uint32_t i = 0; i < 513; ++i) {
        AddProduct(model, {});
        if (i > 0)
            Use(model, i - 1, i);
    }
    EXPECT_EQ(JudgeExpansion(model, {}), "the structure is 513 levels deep, more than 512");
    model.products[0].isFileRoot = true;
    EXPECT_EQ(JudgeExpansion(model, {}), "") << "a root of the reader's making is no level";
}

TEST(StructureLimits, ALoopIsRefused)
{
    ImportedModel model = SharedPairs();
    Use(model, 2, 1);
    EXPECT_EQ(JudgeExpansion(model, {}), "the structure contains itself");
}

TEST(StructureLimits, NumbersAreGroupedByThreeDigits)
{
    EXPECT_EQ(Grouped(0), "0");
    EXPECT_EQ(Grouped(999), "999");
    EXPECT_EQ(Grouped(1000), "1,000");
    EXPECT_EQ(Grouped(1234567), "1,234,567");
}

}  // namespace
