#include "core/ImageBackend.h"
#include "core/PixelMemory.h"
#include "support/Allocations.h"

#include "KUV2D.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Releaser {
    void operator()(KUVBaseUnknown* object) const { object->Release(); }
};

using HeldImage = std::unique_ptr<KUVPixelImage, Releaser>;

/// A buffer of `KUVAllocatePixels` with these bytes.
unsigned char* BufferOf(const std::vector<unsigned char>& bytes)
{
    unsigned char* const buffer = KUVAllocatePixels(bytes.size());
    if (!bytes.empty())
        std::memcpy(buffer, bytes.data(), bytes.size());
    return buffer;
}

/// An image of `rows`, each a row of grey values.
HeldImage MakeGreyImage(const std::vector<std::string>& rows)
{
    std::vector<unsigned char> bytes;
    for (const std::string& row : rows)
        bytes.insert(bytes.end(), row.begin(), row.end());
    const int width = rows.empty() ? 0 : static_cast<int>(rows.front().size());
    return HeldImage(new KUVPixelImage(width, static_cast<int>(rows.size()), KUVPixelFormat_Grey8,
                                       BufferOf(bytes), 1));
}

std::string RowOf(const KUVPixelImage& image, int y)
{
    int width = 0;
    int height = 0;
    image.GetSize(width, height);
    return std::string(reinterpret_cast<const char*>(image.GetRow(y)),
                       static_cast<std::size_t>(width));
}

void ExpectEmpty(const KUVPixelImage& image)
{
    int width = -1;
    int height = -1;
    image.GetSize(width, height);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    EXPECT_EQ(image.GetRow(0), nullptr);
}

/// Knows one image file.
class OneFile : public core::ImageBackend {
public:
    KUVPixelImage* Load(const std::string& path) override
    {
        if (path != "/icons/one.png")
            return nullptr;
        return new KUVPixelImage(1, 1, KUVPixelFormat_RGBA8, BufferOf({1, 2, 3, 4}), 1);
    }
};

/// Puts the former state back at the end of the test.
struct BackendGuard {
    BackendGuard() = default;
    BackendGuard(const BackendGuard&) = delete;
    BackendGuard& operator=(const BackendGuard&) = delete;
    ~BackendGuard() { core::SetImageBackend(nullptr); }
};

}  // namespace

TEST(KUVPixelImage, HasTheSizeAndTheRowsItWasMadeOf)
{
    const HeldImage image = MakeGreyImage({"abc", "def"});
    int width = 0;
    int height = 0;
    image->GetSize(width, height);
    EXPECT_EQ(width, 3);
    EXPECT_EQ(height, 2);
    EXPECT_EQ(RowOf(*image, 0), "abc") << "row 0 is at the bottom";
    EXPECT_EQ(RowOf(*image, 1), "def");
    EXPECT_EQ(image->GetFormat(), KUVPixelFormat_Grey8);
}

TEST(KUVPixelImage, RowsOutsideAreNull)
{
    const HeldImage image = MakeGreyImage({"abc", "def"});
    EXPECT_EQ(image->GetRow(-1), nullptr);
    EXPECT_EQ(image->GetRow(2), nullptr);
}

TEST(KUVPixelImage, TakesItsBufferOverAndFreesIt)
{
    const std::size_t before = core::CountPixelBuffers();
    {
        const HeldImage image = MakeGreyImage({"abc", "def"});
        EXPECT_EQ(core::CountPixelBuffers(), before + 1);
    }
    EXPECT_EQ(core::CountPixelBuffers(), before);
}

TEST(KUVPixelImage, CopiesPixelsThatItDoesNotTake)
{
    unsigned char pixels[] = {1, 2, 3, 4};
    const HeldImage image(new KUVPixelImage(1, 1, KUVPixelFormat_RGBA8, pixels, 0));
    pixels[0] = 99;
    EXPECT_EQ(image->GetRow(0)[0], 1);
}

TEST(KUVPixelImage, ASizeBelowOneMakesAnEmptyImageAndFreesTheBuffer)
{
    const std::size_t before = core::CountPixelBuffers();
    for (const auto& [width, height] : {std::pair(0, 5), std::pair(5, 0), std::pair(-1, -1)}) {
        const HeldImage image(
            new KUVPixelImage(width, height, KUVPixelFormat_RGBA8, KUVAllocatePixels(100), 1));
        ExpectEmpty(*image);
        EXPECT_EQ(core::CountPixelBuffers(), before);
    }
}

TEST(KUVPixelImage, NoPixelsMakeAnEmptyImage)
{
    const HeldImage taken(new KUVPixelImage(2, 2, KUVPixelFormat_RGBA8, nullptr, 1));
    ExpectEmpty(*taken);
    const HeldImage copied(new KUVPixelImage(2, 2, KUVPixelFormat_RGBA8, nullptr, 0));
    ExpectEmpty(*copied);
}

TEST(KUVPixelImage, AnUnknownFormatMakesAnEmptyImage)
{
    const HeldImage image(
        new KUVPixelImage(1, 1, static_cast<KUVPixelFormat>(9), KUVAllocatePixels(16), 1));
    ExpectEmpty(*image);
}

TEST(KUVPixelImage, KeepsEqualRowsOnce)
{
    // A plate: rounded at the bottom and the top, the same in between.
    std::vector<std::string> rows(1000, std::string(400, 'm'));
    rows[0] = rows[999] = std::string(400, 'e');
    rows[1] = rows[998] = std::string(400, 'n');
    const HeldImage image = MakeGreyImage(rows);
    for (int y = 0; y < 1000; ++y)
        ASSERT_EQ(RowOf(*image, y), rows[static_cast<std::size_t>(y)]) << y;
    EXPECT_EQ(image->GetRow(1), image->GetRow(998)) << "equal rows share their bytes";
    EXPECT_LE(image->GetByteCost(), 3U * 400U + 1000U * sizeof(int) + sizeof(KUVPixelImage));
}

TEST(KUVPixelImage, DifferentRowsCostWhatTheyAre)
{
    std::vector<std::string> rows;
    for (int y = 0; y < 200; ++y)
        rows.push_back(std::string(50, 'a') + std::to_string(1000 + y));
    const HeldImage image = MakeGreyImage(rows);
    EXPECT_EQ(image->GetByteCost(), 200U * 54U + sizeof(KUVPixelImage));
}

RC_GTEST_PROP(KUVPixelImage, ShowsTheRowsGivenHoweverOftenTheyRepeat,
              (const std::vector<unsigned char>& kinds))
{
    std::vector<std::string> rows;
    for (const unsigned char kind : kinds)
        rows.push_back("row" + std::string(1, static_cast<char>('a' + kind % 24)));
    const HeldImage image = MakeGreyImage(rows);
    for (std::size_t y = 0; y < rows.size(); ++y)
        RC_ASSERT(RowOf(*image, static_cast<int>(y)) == rows[y]);
}

TEST(KUVPixelImage, TheSumOfAllImagesFollowsTheirLives)
{
    const std::size_t before = core::SumImageBytes();
    {
        const HeldImage first = MakeGreyImage({"abc", "def"});
        const HeldImage second = MakeGreyImage({"abc", "abc"});
        EXPECT_EQ(core::SumImageBytes(), before + first->GetByteCost() + second->GetByteCost());
        ASSERT_EQ(first->ChangeFormat(KUVPixelFormat_RGBA8), KUV_OK);
        EXPECT_EQ(core::SumImageBytes(), before + first->GetByteCost() + second->GetByteCost());
    }
    EXPECT_EQ(core::SumImageBytes(), before);
}

TEST(KUVPixelImage, GreyBecomesThreeEqualColoursWithoutTransparency)
{
    const HeldImage image = MakeGreyImage({"a", "b"});
    ASSERT_EQ(image->ChangeFormat(KUVPixelFormat_RGBA8), KUV_OK);
    EXPECT_EQ(image->GetFormat(), KUVPixelFormat_RGBA8);
    const unsigned char expected[] = {'b', 'b', 'b', 255};
    EXPECT_EQ(std::memcmp(image->GetRow(1), expected, 4), 0);
}

TEST(KUVPixelImage, ColoursBecomeGreyByTheirBrightness)
{
    const HeldImage image(new KUVPixelImage(
        4, 1, KUVPixelFormat_RGB8, BufferOf({255, 255, 255, 255, 0, 0, 0, 255, 0, 0, 0, 255}), 1));
    ASSERT_EQ(image->ChangeFormat(KUVPixelFormat_Grey8), KUV_OK);
    const unsigned char* const row = image->GetRow(0);
    EXPECT_EQ(row[0], 255);
    EXPECT_EQ(row[1], 76);
    EXPECT_EQ(row[2], 149);
    EXPECT_EQ(row[3], 28);
}

TEST(KUVPixelImage, ColoursKeepTheirBytesWhenAlphaComesOrGoes)
{
    const HeldImage image(new KUVPixelImage(1, 1, KUVPixelFormat_RGBA8, BufferOf({1, 2, 3, 4}), 1));
    ASSERT_EQ(image->ChangeFormat(KUVPixelFormat_RGB8), KUV_OK);
    EXPECT_EQ(std::memcmp(image->GetRow(0), "\1\2\3", 3), 0);
    ASSERT_EQ(image->ChangeFormat(KUVPixelFormat_RGBA8), KUV_OK);
    EXPECT_EQ(std::memcmp(image->GetRow(0), "\1\2\3\xFF", 4), 0);
}

TEST(KUVPixelImage, ChangingToTheSameOrAnUnknownFormatChangesNothing)
{
    const HeldImage image = MakeGreyImage({"ab"});
    const unsigned char* const row = image->GetRow(0);
    EXPECT_EQ(image->ChangeFormat(KUVPixelFormat_Grey8), KUV_OK);
    EXPECT_EQ(image->ChangeFormat(static_cast<KUVPixelFormat>(0)), KUV_FAIL);
    EXPECT_EQ(image->GetRow(0), row);
    EXPECT_EQ(image->GetFormat(), KUVPixelFormat_Grey8);
}

TEST(KUVPixelImage, AnEmptyImageChangesItsFormatToo)
{
    const HeldImage image(new KUVPixelImage(0, 0, KUVPixelFormat_Grey8, nullptr, 1));
    EXPECT_EQ(image->ChangeFormat(KUVPixelFormat_RGBA8), KUV_OK);
    EXPECT_EQ(image->GetFormat(), KUVPixelFormat_RGBA8);
    ExpectEmpty(*image);
}

TEST(KUVPixelImage, WithoutMemoryTheFormatStays)
{
    const HeldImage image = MakeGreyImage({"ab", "ab", "cd"});
    {
        const support::FailingAllocation failing(1);
        EXPECT_EQ(image->ChangeFormat(KUVPixelFormat_RGBA8), KUV_FAIL);
    }
    EXPECT_EQ(image->GetFormat(), KUVPixelFormat_Grey8);
    EXPECT_EQ(RowOf(*image, 2), "cd");
}

TEST(KUVPixelImage, WithoutMemoryForItsTablesItKeepsAllRows)
{
    const std::vector<std::string> rows = {"ab", "ab", "cd", "ab"};
    std::size_t failing = 1;
    for (bool failed = true; failed; ++failing) {
        HeldImage image;
        unsigned char* buffer = BufferOf({'a', 'b', 'a', 'b', 'c', 'd', 'a', 'b'});
        {
            const support::FailingAllocation allocation(failing);
            try {
                image.reset(new KUVPixelImage(2, 4, KUVPixelFormat_Grey8, buffer, 1));
            } catch (const std::bad_alloc&) {
                EXPECT_EQ(failing, 1U) << "only the new around the constructor can fail";
                KUVFreePixels(buffer);
            }
            failed = allocation.HasFailed();
        }
        for (int y = 0; image && y < 4; ++y)
            EXPECT_EQ(RowOf(*image, y), rows[static_cast<std::size_t>(y)]) << failing;
    }
    EXPECT_GT(failing, 3U);
}

TEST(KUVPixelImage, ACopyWithoutMemoryIsEmpty)
{
    unsigned char pixels[] = {1, 2, 3, 4};
    const support::FailingAllocation failing(2);
    const HeldImage image(new KUVPixelImage(1, 1, KUVPixelFormat_RGBA8, pixels, 0));
    ExpectEmpty(*image);
}

TEST(KUVPixelImage, RemembersPixelSizesAndTransparency)
{
    const HeldImage image = MakeGreyImage({"a"});
    EXPECT_EQ(image->GetXPixelSize(), 1.0f);
    EXPECT_EQ(image->GetYPixelSize(), 1.0f);
    EXPECT_EQ(image->GetTransparency(), 0);
    image->SetXPixelSize(2.0f);
    image->SetYPixelSize(3.0f);
    image->SetTransparency(1);
    EXPECT_EQ(image->GetXPixelSize(), 2.0f);
    EXPECT_EQ(image->GetYPixelSize(), 3.0f);
    EXPECT_EQ(image->GetTransparency(), 1);
}

TEST(KUVPixelImage, ComesFromAFileThroughTheBackend)
{
    const BackendGuard guard;
    core::SetImageBackend(std::make_shared<OneFile>());
    const HeldImage image(KUVPixelImage::CreateFromFileEx("/icons/one.png", 1, 0));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetReferenceCount(), 1U);
    EXPECT_EQ(image->GetRow(0)[3], 4);
}

TEST(KUVPixelImage, AFileThatCannotBeReadGivesNull)
{
    const BackendGuard guard;
    EXPECT_EQ(KUVPixelImage::CreateFromFileEx("/icons/one.png", 1, 0), nullptr)
        << "without backend no file can be read";
    core::SetImageBackend(std::make_shared<OneFile>());
    EXPECT_EQ(KUVPixelImage::CreateFromFileEx("/icons/other.png", 1, 0), nullptr);
    EXPECT_EQ(KUVPixelImage::CreateFromFileEx("", 1, 0), nullptr);
}

TEST(KUVPixelImage, WithoutMemoryAFileGivesNull)
{
    const BackendGuard guard;
    core::SetImageBackend(std::make_shared<OneFile>());
    const support::FailingAllocation failing(2);
    EXPECT_EQ(KUVPixelImage::CreateFromFileEx("/icons/one.png", 1, 0), nullptr);
}

TEST(KUVAllocatePixels, CountsItsBuffers)
{
    const std::size_t before = core::CountPixelBuffers();
    unsigned char* const empty = KUVAllocatePixels(0);
    EXPECT_NE(empty, nullptr) << "a buffer of no bytes is a buffer";
    EXPECT_EQ(core::CountPixelBuffers(), before + 1);
    KUVFreePixels(empty);
    KUVFreePixels(nullptr);
    EXPECT_EQ(core::CountPixelBuffers(), before);
}

TEST(KUVAllocatePixels, AsksTheHook)
{
    static std::size_t asked = 0;
    core::SetPixelAllocationHook([](std::size_t bytes) {
        asked = bytes;
        return false;
    });
    EXPECT_EQ(KUVAllocatePixels(123), nullptr);
    EXPECT_EQ(asked, 123U);
    core::SetPixelAllocationHook(nullptr);
    unsigned char* const pixels = KUVAllocatePixels(1);
    EXPECT_NE(pixels, nullptr);
    KUVFreePixels(pixels);
}
