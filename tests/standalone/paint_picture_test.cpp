#include "paint/Picture.h"

#include "paint/PaintSession.h"
#include "paint_scene.h"

#include <QImageReader>

#include <cmath>
#include <limits>

namespace painttest {
namespace {

/// Qt lives as long as the test program.
class PaintEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        session_ = std::make_unique<paint::PaintSession>();
        // Some tests read back pictures that are larger than Qt's default allows.
        QImageReader::setAllocationLimit(0);
    }
    void TearDown() override { session_.reset(); }

private:
    std::unique_ptr<paint::PaintSession> session_;
};

const testing::Environment* const ENVIRONMENT =
    testing::AddGlobalTestEnvironment(new PaintEnvironment);

std::string Problem(int width, int height, paint::PictureFormat format)
{
    Bag scene;
    paint::PictureOptions options;
    options.width = width;
    options.height = height;
    std::string bytes = "before";
    std::string problem = paint::PaintPicture(scene.Rep(), options, format, bytes);
    if (!problem.empty()) {
        EXPECT_EQ(bytes, "before") << "a failure leaves the bytes alone";
    }
    return problem;
}

TEST(Picture, AFilledBoxStandsOnTheLowerLeftWithYUpwards)
{
    Bag scene;
    scene.Box(1, 0, 2, 1, RED);
    EXPECT_EQ(Letters(PaintPng(scene, 4, 3)), (Rows{"....", "....", ".rr."}));
}

TEST(Picture, LaterChildrenCoverEarlierOnes)
{
    Bag scene;
    scene.Box(0, 0, 3, 3, RED);
    Bag inner = scene.Child();
    inner.Box(1, 1, 2, 2, GREEN);
    scene.Box(2, 2, 1, 1, BLUE);
    EXPECT_EQ(Letters(PaintPng(scene, 3, 3)), (Rows{"rgb", "rgg", "rrr"}));
}

TEST(Picture, NeighboursAtFractionsNeitherOverlapNorLeaveASeam)
{
    // 0 --- 1.4 ----- 3.5 --- 5: the pixels whose centres lie in each, nothing blended.
    Bag scene;
    scene.Box(0, 0, 1.4f, 1, RED);
    scene.Box(1.4f, 0, 2.1f, 1, GREEN);
    scene.Box(3.5f, 0, 1.5f, 1, BLUE);
    EXPECT_EQ(Letters(PaintPng(scene, 5, 1)), (Rows{"rggbb"}));
}

TEST(Picture, AContourIsOnePixelInsideItsBox)
{
    Bag scene;
    scene.Contour(1, 1, 4, 3, BLUE);
    EXPECT_EQ(Letters(PaintPng(scene, 6, 5)),
              (Rows{"......", ".bbbb.", ".b..b.", ".bbbb.", "......"}));
}

TEST(Picture, AContourOfTwoPixelsIsFull)
{
    Bag scene;
    scene.Contour(0, 0, 2, 2, BLUE);
    EXPECT_EQ(Letters(PaintPng(scene, 3, 2)), (Rows{"bb.", "bb."}));
}

TEST(Picture, EdgesOfAContourOutsideThePictureStayOutside)
{
    Bag scene;
    scene.Contour(-50, -50, 52, 52, BLUE);
    EXPECT_EQ(Letters(PaintPng(scene, 3, 3)), (Rows{"...", "bb.", ".b."}));
}

TEST(Picture, ContoursAreAsWideAsAsked)
{
    Bag scene;
    scene.Contour(1, 0, 6, 5, BLUE);
    scene.Contour(8, 0, 4, 5, BLUE);
    paint::PictureOptions options;
    options.width = 12;
    options.height = 5;
    options.lineWidth = 2;
    for (const auto format :
         {paint::PictureFormat::Png, paint::PictureFormat::Svg, paint::PictureFormat::Pdf}) {
        std::string bytes;
        ASSERT_EQ(paint::PaintPicture(scene.Rep(), options, format, bytes), "");
        if (format == paint::PictureFormat::Png) {
            EXPECT_EQ(Letters(QImage::fromData(reinterpret_cast<const uchar*>(bytes.data()),
                                               static_cast<int>(bytes.size()))),
                      (Rows{".bbbbbb.bbbb", ".bbbbbb.bbbb", ".bb..bb.bbbb", ".bbbbbb.bbbb",
                            ".bbbbbb.bbbb"}));
        }
        if (format == paint::PictureFormat::Svg) {
            EXPECT_NE(bytes.find("x=\"2\" y=\"1\" width=\"4\" height=\"3\" fill=\"none\" "
                                 "stroke=\"#0000ff\" stroke-width=\"2\""),
                      std::string::npos);
        }
    }
}

TEST(Picture, BoxesAreFoundFromAnyCornerAndInEitherSense)
{
    Bag scene;
    scene.Polygon({1, 1, 1, 0, 0, 0, 0, 1}, RED);
    scene.Polygon({3, 0, 3, 1, 2, 1, 2, 0}, GREEN);
    EXPECT_EQ(Letters(PaintPng(scene, 3, 1)), (Rows{"r.g"}));
}

TEST(Picture, ASlantedPolygonIsFilled)
{
    Bag scene;
    scene.Polygon({0, 0, 20, 0, 0, 20}, RED);
    const QImage picture = PaintPng(scene, 20, 20);
    EXPECT_EQ(picture.pixel(2, 17), qRgb(255, 0, 0));
    EXPECT_EQ(picture.pixel(17, 2), qRgb(255, 255, 255));
}

TEST(Picture, AnImageStandsPixelOnPixelWithItsFirstRowAtTheBottom)
{
    // Top row red green, bottom row blue black.
    const auto image = MakeImage(2, 2, {RED, GREEN, BLUE, BLACK});
    Bag scene;
    scene.Image(1, 0, *image);
    EXPECT_EQ(Letters(PaintPng(scene, 4, 3)), (Rows{"....", ".rg.", ".bk."}));
}

TEST(Picture, AnImageReachingOverTheEdgesIsCut)
{
    const auto image = MakeImage(3, 3, {RED, RED, RED, GREEN, GREEN, GREEN, BLUE, BLUE, BLUE});
    Bag scene;
    scene.Image(-2, -1, *image);
    scene.Image(2, 1, *image);
    EXPECT_EQ(Letters(PaintPng(scene, 3, 2)), (Rows{"r.b", "g.."}));
}

TEST(Picture, TransparentPixelsOfABackgroundLeaveWhatIsBelow)
{
    const auto image = MakeImage(2, 1, {KUVColor{0, 0, 0, 0}, KUVColor{0, 0, 0, 128}});
    Bag scene;
    scene.Box(0, 0, 2, 1, RED);
    scene.Image(0, 0, *image);
    const QImage picture = PaintPng(scene, 2, 1);
    EXPECT_EQ(picture.pixel(0, 0), qRgb(255, 0, 0));
    EXPECT_EQ(picture.pixel(1, 0), qRgb(127, 0, 0)) << "half of the red shows through";
}

TEST(Picture, AnIconIsPaintedWithAlphaOnlyWhenAsked)
{
    const auto image = MakeImage(1, 1, {KUVColor{0, 255, 0, 0}});
    Bag scene;
    scene.Image(0, 0, *image, 2);
    scene.Image(1, 0, *image, 2)->SetAlphaMode(2);
    EXPECT_EQ(Letters(PaintPng(scene, 2, 1)), (Rows{"g."}));
}

TEST(Picture, PixelSizesStretchAnImage)
{
    const auto image = MakeImage(1, 1, {BLUE});
    image->SetXPixelSize(3.0f);
    image->SetYPixelSize(2.0f);
    Bag scene;
    scene.Image(1, 0, *image);
    EXPECT_EQ(Letters(PaintPng(scene, 5, 3)), (Rows{".....", ".bbb.", ".bbb."}));
}

TEST(Picture, ColoursBlendWithTheirAlpha)
{
    Bag scene;
    scene.Box(0, 0, 1, 1, KUVColor{0, 0, 0, 51});
    scene.Box(1, 0, 1, 1, KUVColor{0, 0, 0, 0});
    const QImage picture = PaintPng(scene, 2, 1);
    EXPECT_EQ(picture.pixel(0, 0), qRgb(204, 204, 204));
    EXPECT_EQ(picture.pixel(1, 0), qRgb(255, 255, 255));
}

TEST(Picture, HiddenBagsAreLeftOutWithAllTheyHold)
{
    Bag scene;
    Bag hidden = scene.Child();
    hidden.Box(0, 0, 1, 1, RED);
    hidden.Child().Box(1, 0, 1, 1, RED);
    hidden.Rep().SetShown(0);
    Bag unknown = scene.Child();
    unknown.Box(2, 0, 1, 1, RED);
    unknown.Rep().ForgetVisibilityState();
    EXPECT_EQ(Letters(PaintPng(scene, 3, 1)), (Rows{"..."}));
}

TEST(Picture, NumbersThatAreNotFiniteAndHugeOnesDoNoHarm)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const float huge = std::numeric_limits<float>::max();
    const auto image = MakeImage(1, 1, {GREEN});
    Bag scene;
    scene.Box(nan, 0, 1, 1, RED);
    scene.Box(0, -infinity, 1, infinity, RED);
    scene.Image(nan, infinity, *image);
    scene.Image(huge, -huge, *image);
    scene.Text(nan, 0, "x");
    scene.Text(huge, 0, "x");
    scene.Text(0, 0, "x", KUVAnchorPoint_Center, nan);
    scene.Text(0, 0, "x", KUVAnchorPoint_Center, -1.0f);
    scene.Contour(-huge, -huge, 2 * (huge / 2), huge, BLACK);
    EXPECT_EQ(Letters(PaintPng(scene, 2, 1)), (Rows{".."}));
    PaintSvg(scene, 2, 1);
    Paint(scene, 2, 1, paint::PictureFormat::Pdf);

    scene.Polygon({-huge, -huge, huge, -huge, huge, huge, -huge, huge}, BLUE);
    EXPECT_EQ(Letters(PaintPng(scene, 2, 1)), (Rows{"bb"}));
}

TEST(Picture, BoxesWithoutExtentPaintNothing)
{
    Bag scene;
    scene.Box(0, 0, 0, 1, RED);
    scene.Contour(0, 0, 1, 0, RED);
    EXPECT_EQ(Letters(PaintPng(scene, 1, 1)), (Rows{"."}));
}

TEST(Picture, TenThousandNestedBagsArePainted)
{
    Bag scene;
    Bag inner = scene.Child();
    for (int i = 0; i < 10000; ++i)
        inner = inner.Child();
    inner.Box(0, 0, 1, 1, RED);
    EXPECT_EQ(Letters(PaintPng(scene, 1, 1)), (Rows{"r"}));
    PaintSvg(scene, 1, 1);
}

TEST(Picture, ABagThatHangsInItselfIsPaintedOnce)
{
    Bag scene;
    scene.Box(0, 0, 1, 1, RED);
    Bag child = scene.Child();
    child.Rep().AddChild(&scene.Rep());
    EXPECT_EQ(Letters(PaintPng(scene, 1, 1)), (Rows{"r"}));
    child.Rep().RemoveChild(&scene.Rep());
}

TEST(Picture, ATextIsCutAtTheBoxOfItsBag)
{
    Bag scene;
    Bag node = scene.Child();
    node.Box(10, 10, 20, 20, WHITE);
    node.Text(10, 30, "WWWWWWWWWWWWWWWWWWWW");
    const QImage picture = PaintPng(scene, 200, 40);
    bool inside = false;
    bool outside = false;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixel(x, y) != qRgb(255, 255, 255))
                (x >= 10 && x < 30 && y >= 10 && y < 30 ? inside : outside) = true;
    EXPECT_TRUE(inside);
    EXPECT_FALSE(outside);
}

TEST(Picture, ATextOfANodeWithoutExtentIsNotPainted)
{
    Bag scene;
    Bag node = scene.Child();
    node.Box(10, 10, 0, 20, WHITE);
    node.Text(10, 30, "...");
    EXPECT_EQ(PaintPng(scene, 40, 40), PaintPng(Bag(), 40, 40));
    EXPECT_EQ(PaintSvg(scene, 40, 40).find("<text"), std::string::npos);
}

TEST(Picture, AnIconBesideATextDoesNotCutIt)
{
    const auto image = MakeImage(2, 2, {RED, RED, RED, RED});
    Bag scene;
    scene.Text(4, 14, "Label");
    Bag node = scene.Child();
    node.Image(0, 0, *image, 2);
    node.Text(4, 34, "Label");
    const QImage picture = PaintPng(scene, 80, 40);
    EXPECT_EQ(picture.copy(4, 6, 76, 14), picture.copy(4, 26, 76, 14));
}

/// First and last row with ink of a label whose band is the rows 10 to 23.
std::pair<int, int> InkOf(const char* label)
{
    Bag scene;
    scene.Text(3, 30, label);
    const QImage picture = PaintPng(scene, 120, 40);
    int first = 40;
    int last = -1;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixel(x, y) != qRgb(255, 255, 255)) {
                first = std::min(first, y);
                last = std::max(last, y);
            }
    return {first, last};
}

TEST(Picture, ALabelOfNominalSizeStaysInItsBandOfFourteen)
{
    const auto [first, last] = InkOf("\xC3\x84gypten (jg_) |");
    EXPECT_GE(first, 10);
    EXPECT_LE(last, 23);
    EXPECT_GE(last - first, 10) << "and uses it";
}

TEST(Picture, APlainLabelLeavesTheLastRowOfItsBandFree)
{
    // Children may reach half a unit into their parent's band, and names are full of underscores.
    const auto [first, last] = InkOf("nut_bolt (jg) |");
    EXPECT_GE(first, 10);
    EXPECT_LE(last, 22);
}

TEST(Picture, BandsOfATallPictureJoinWithoutATrace)
{
    // 4,100 x 8,300 pixels are more than one band: the same letters stand above and below the seam.
    Bag scene;
    for (int i = 0; i < 830; ++i)
        scene.Text(1, static_cast<float>(10 * i + 12), "seam gjy", KUVAnchorPoint_UpperLeft, 14.0f);
    const QImage picture = PaintPng(scene, 4100, 8300);
    ASSERT_EQ(picture.size(), QSize(4100, 8300));
    const QImage expected = picture.copy(0, 100, 80, 10);
    for (int i = 11; i < 820; ++i)
        ASSERT_EQ(picture.copy(0, 10 * i, 80, 10), expected) << "row " << 10 * i;
}

TEST(Picture, APngOfMoreThan32767PixelsASideIsRefused)
{
    EXPECT_EQ(Problem(32768, 10, paint::PictureFormat::Png),
              "a PNG stops at 32,767 pixels a side; the picture has 32,768 x 10");
    EXPECT_EQ(Problem(1, 2000000000, paint::PictureFormat::Png),
              "a PNG stops at 32,767 pixels a side; the picture has 1 x 2,000,000,000");
    EXPECT_EQ(Problem(32767, 1, paint::PictureFormat::Png), "");
    EXPECT_EQ(Problem(32768, 10, paint::PictureFormat::Svg), "");
    EXPECT_EQ(Problem(32768, 10, paint::PictureFormat::Pdf), "");
}

TEST(Picture, APictureWithoutPixelsIsRefused)
{
    EXPECT_EQ(Problem(0, 10, paint::PictureFormat::Svg),
              "a picture of 0 x 10 pixels has nothing to show");
    EXPECT_EQ(Problem(5, -1, paint::PictureFormat::Png),
              "a picture of 5 x -1 pixels has nothing to show");
}

TEST(Picture, TheBackgroundIsWhiteUnlessItIsChosen)
{
    EXPECT_EQ(Letters(PaintPng(Bag(), 2, 1)), (Rows{".."}));
    paint::PictureOptions options;
    options.width = 1;
    options.height = 1;
    options.background = BLUE;
    std::string bytes;
    ASSERT_EQ(paint::PaintPicture(Bag().Rep(), options, paint::PictureFormat::Png, bytes), "");
    const QImage picture = QImage::fromData(reinterpret_cast<const uchar*>(bytes.data()),
                                            static_cast<int>(bytes.size()));
    EXPECT_EQ(Letters(picture.convertToFormat(QImage::Format_RGB32)), (Rows{"b"}));
}

TEST(Picture, PaintingTwiceGivesTheSameBytes)
{
    Bag scene;
    scene.Box(0, 0, 300, 200, GREEN);
    scene.Text(3, 190, "Twice");
    EXPECT_EQ(Paint(scene, 320, 240, paint::PictureFormat::Png),
              Paint(scene, 320, 240, paint::PictureFormat::Png));
    EXPECT_EQ(PaintSvg(scene, 320, 240), PaintSvg(scene, 320, 240));
}

}  // namespace
}  // namespace painttest
