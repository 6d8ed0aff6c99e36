#include "private/CushionPicture.h"

#include "VisCushionLayout.h"

#include "module/CushionFixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

// Whole pictures, as they come out of `Draw`.

using cushions::Cushion;
using CushionShading::Cover;
using CushionShading::PixelBox;

namespace {

/// A tree with weights and colours, the same everywhere.
Cushion MakeCushion(std::uint64_t seed, int nodes, int reach)
{
    Cushion cushion(trees::NodeRef::Adopt(support::MakeRandomTree(seed, nodes, reach)));
    std::uint64_t state = seed;
    cushion.Root()->SetColorWithValue(1);
    cushion.Weigh([&state](VisDataTree* leaf) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        leaf->GetCache()->SetColorValue(static_cast<long long>((state >> 33U) % 10U));
        return static_cast<long long>((state >> 40U) % 1000U);
    });
    return cushion;
}

/// White, then every leaf in the order of the tree: what a picture is by definition.
std::vector<unsigned char> PaintLeafByLeaf(const Cushion& cushion, const KUVMathPoint2Df& origin,
                                           float scale, int width, int height)
{
    std::vector<unsigned char> pixels(
        4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 255);
    VisDataTree* leaf = cushion.root->GetFirstLeaf();
    do {
        const auto& cache = static_cast<const cushions::Cache&>(*leaf->GetCache());
        const float x1 = cache.GetPos().x - origin.x;
        const float y1 = cache.GetPos().y - origin.y;
        const CushionGeometry::LocalRectangle rectangle{
            {x1 * scale, (x1 + cache.GetSize().x) * scale},
            {y1 * scale, (y1 + cache.GetSize().y) * scale}};
        const float* const s = cache.GetSurface();
        const long long colour = cache.GetColorValue();
        CushionShading::ShadeBy(CushionShading::Way::Plain, {pixels.data(), width, height},
                                {CushionShading::PixelsOf(rectangle, width, height),
                                 {{s[0], s[1]}, {s[2], s[3]}},
                                 VisCushionLayout::COLOR_MAP[colour < 8 ? colour : 8]});
        leaf = leaf->NextLeafNodeInHierarchy(cushion.root.Get());
    } while (leaf != cushion.root->GetFirstLeaf());
    return pixels;
}

void ExpectPixels(const KUVPixelImage* image, const std::vector<unsigned char>& expected, int width,
                  int height, std::uint64_t seed)
{
    ASSERT_NE(image, nullptr);
    const std::size_t rowBytes = 4 * static_cast<std::size_t>(width);
    for (int y = 0; y < height; ++y) {
        ASSERT_EQ(std::memcmp(image->GetRow(y),
                              expected.data() + rowBytes * static_cast<std::size_t>(y), rowBytes),
                  0)
            << "tree " << seed << ", row " << y;
    }
}

std::vector<int> Numbers(const PixelBox& box) { return {box.left, box.right, box.bottom, box.top}; }

}  // namespace

// ---- the same bytes everywhere

TEST(VisCushionPictures, AreTheSameToTheLastByteOnEveryCompiler)
{
    // The sums were taken once from the plain loop; a difference in a single bit shows.
    const Cushion small = MakeCushion(1, 20, 10);
    small.Draw(64.0f, 48.0f);
    EXPECT_EQ(cushions::ChecksumOf(*small.Image()), 0x1D1C3428BCCE69DEU);

    const Cushion bushy = MakeCushion(2, 500, 200);
    bushy.layout->Draw({3.25f, -7.5f}, {301.3f, 222.7f}, nullptr, 1.0f);
    EXPECT_EQ(cushions::ChecksumOf(*bushy.Image()), 0x0237737947F02E3FU);

    const Cushion deep = MakeCushion(3, 300, 4);
    deep.Draw(200.0f, 150.0f, 1.7f);
    EXPECT_EQ(cushions::ChecksumOf(*deep.Image()), 0x23EAB401A0BCF947U);
}

TEST(VisCushionPictures, AreWhatShadingLeafByLeafOnWhiteGives)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-50.0f, 50.0f);
    std::uniform_real_distribution<float> side(1.0f, 120.0f);
    std::uniform_real_distribution<float> scales(0.3f, 2.5f);
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        const Cushion cushion = MakeCushion(seed, 1 + static_cast<int>(random() % 200),
                                            1 + static_cast<int>(random() % 60));
        const KUVMathPoint2Df origin(place(random), place(random));
        const KUVMathPoint2Df size(side(random), side(random));
        const float scale = seed % 3 == 0 ? 1.0f : scales(random);
        const int width = static_cast<int>(size.x * scale);
        const int height = static_cast<int>(size.y * scale);
        if (width < 1 || height < 1)
            continue;
        cushion.layout->Draw(origin, size, nullptr, scale);
        ExpectPixels(cushion.Image(), PaintLeafByLeaf(cushion, origin, scale, width, height), width,
                     height, seed);
    }
}

TEST(VisCushionPictures, ThousandsOfLeavesInHalfAColumnArePaintedOnce)
{
    // All of them truncate to the first column, and all but the last are covered.
    constexpr int LEAVES = 20000;
    const Cushion cushion(trees::NodeRef::Adopt(support::MakeStar(LEAVES)));
    cushion.Root()->SetLastModeOfComputedMinimumExpandedSize(VisTreeMap_Stacked);
    cushion.Root()->SetColorWithValue(1);
    cushion.Draw(1.0f, 200.0f);
    const KUVMathPoint2Df origin;
    ExpectPixels(cushion.Image(), PaintLeafByLeaf(cushion, origin, 1.0f, 1, 200), 1, 200, 0);
}

// ---- gaps

TEST(VisCushionPictures, ChildrenThatFollowEachOtherLeaveNoGap)
{
    std::vector<PixelBox> gaps;
    Cover cover({0, 9, 2, 5}, VisAxis::X);
    cover.Add({0, 3, 2, 5}, gaps);
    cover.Add({4, 3, 2, 5}, gaps);
    cover.Add({3, 7, 2, 5}, gaps);
    cover.Add({8, 9, 1, 6}, gaps);
    cover.Finish(gaps);
    EXPECT_TRUE(gaps.empty());
}

TEST(VisCushionPictures, WhatNoChildHasIsAGap)
{
    //  5 +---+ +-----+ . .
    //    |   |.|  +--+ . .
    //  2 +---+ +--+    . .
    //    0   3 4 5   7   9
    std::vector<PixelBox> gaps;
    Cover cover({0, 9, 2, 5}, VisAxis::X);
    cover.Add({0, 3, 2, 5}, gaps);
    EXPECT_TRUE(gaps.empty());
    cover.Add({5, 7, 3, 4}, gaps);
    ASSERT_EQ(gaps.size(), 3U);
    EXPECT_EQ(Numbers(gaps[0]), (std::vector<int>{4, 4, 2, 5}));
    EXPECT_EQ(Numbers(gaps[1]), (std::vector<int>{5, 7, 2, 2}));
    EXPECT_EQ(Numbers(gaps[2]), (std::vector<int>{5, 7, 5, 5}));
    cover.Finish(gaps);
    ASSERT_EQ(gaps.size(), 4U);
    EXPECT_EQ(Numbers(gaps[3]), (std::vector<int>{8, 9, 2, 5}));
}

TEST(VisCushionPictures, WithoutChildrenTheWholeNodeIsAGap)
{
    std::vector<PixelBox> gaps;
    Cover cover({1, 9, 2, 5}, VisAxis::Y);
    cover.Add({1, 9, 3, 2}, gaps);
    cover.Finish(gaps);
    ASSERT_EQ(gaps.size(), 1U);
    EXPECT_EQ(Numbers(gaps[0]), (std::vector<int>{1, 9, 2, 5}));
    gaps.clear();
    Cover({1, 0, 2, 5}, VisAxis::Y).Finish(gaps);
    EXPECT_TRUE(gaps.empty()) << "a node without pixels has none to cover";
}

TEST(VisCushionPictures, GapsAreFoundAlongBothAxes)
{
    std::vector<PixelBox> gaps;
    Cover cover({0, 4, 0, 9}, VisAxis::Y);
    cover.Add({1, 3, 2, 4}, gaps);
    cover.Add({0, 4, 20, 30}, gaps);
    cover.Finish(gaps);
    ASSERT_EQ(gaps.size(), 4U);
    EXPECT_EQ(Numbers(gaps[0]), (std::vector<int>{0, 4, 0, 1}));
    EXPECT_EQ(Numbers(gaps[1]), (std::vector<int>{0, 0, 2, 4}));
    EXPECT_EQ(Numbers(gaps[2]), (std::vector<int>{4, 4, 2, 4}));
    EXPECT_EQ(Numbers(gaps[3]), (std::vector<int>{0, 4, 5, 9}));
}
