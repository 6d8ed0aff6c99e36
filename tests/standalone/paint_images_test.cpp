#include "paint/ImagePixels.h"
#include "paint/QtBackends.h"
#include "paint_scene.h"

#include <QTemporaryDir>

#include <filesystem>
#include <fstream>

namespace painttest {
namespace {

const char* const ICONS[] = {
    "I_VisFace.png",    "I_VisEdge.png",     "I_VisVertex.png", "VisLevelSelectorGeometry.png",
    "I_VisProduct.png", "I_VisAssembly.png", "I_VisPart.png"};

TEST(QtImageBackend, EveryIconIsFoundAndIsSixteenPixelsWide)
{
    for (const char* const icon : ICONS) {
        const KUVUnicodeString path = KUVGetImagePathNameEx(KUVUnicodeString(icon));
        ASSERT_FALSE(path.IsEmpty()) << icon;
        const Held<KUVPixelImage> image(KUVPixelImage::CreateFromFileEx(path, 1, 0));
        ASSERT_TRUE(image) << icon;
        int width = 0;
        int height = 0;
        image->GetSize(width, height);
        EXPECT_EQ(width, 16) << icon;
        EXPECT_EQ(height, 16) << icon;
        EXPECT_EQ(image->ChangeFormat(KUVPixelFormat_RGBA8), KUV_OK);
        EXPECT_TRUE(paint::HasTransparentPixels(*image)) << "icons have no background: " << icon;
    }
}

TEST(QtImageBackend, EveryIconHasItsSourceBesideIt)
{
    for (const char* const icon : ICONS) {
        std::filesystem::path path = KUVGetImagePathNameEx(KUVUnicodeString(icon)).GetUtf8();
        EXPECT_TRUE(std::filesystem::exists(path.replace_extension(".svg"))) << path;
    }
}

TEST(QtImageBackend, TheFirstRowOfAnImageIsItsBottom)
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("two.png")).toStdString();
    QImage file(1, 2, QImage::Format_ARGB32);
    file.setPixel(0, 0, qRgba(1, 2, 3, 255));
    file.setPixel(0, 1, qRgba(4, 5, 6, 100));
    ASSERT_TRUE(file.save(QString::fromStdString(path)));
    const Held<KUVPixelImage> image(
        KUVPixelImage::CreateFromFileEx(KUVUnicodeString(path.c_str()), 1, 0));
    ASSERT_TRUE(image);
    ASSERT_NE(image->GetRow(0), nullptr);
    EXPECT_EQ(image->GetRow(0)[0], 4);
    EXPECT_EQ(image->GetRow(0)[3], 100);
    EXPECT_EQ(image->GetRow(1)[0], 1);
}

TEST(QtImageBackend, FilesThatAreNoImagesGiveNull)
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("text.png")).toStdString();
    std::ofstream(path) << "no image";
    paint::QtImageBackend backend;
    EXPECT_EQ(backend.Load(path), nullptr);
    EXPECT_EQ(backend.Load(path + ".missing"), nullptr);
    EXPECT_EQ(backend.Load(folder.path().toStdString()), nullptr);
    EXPECT_EQ(backend.Load(""), nullptr);
}

TEST(QtImageBackend, AnImageLargerThanAnIconEverIsIsRefused)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("wide.png"));
    ASSERT_TRUE(QImage(16385, 1, QImage::Format_RGB32).save(path));
    EXPECT_EQ(paint::QtImageBackend().Load(path.toStdString()), nullptr);
}

TEST(ImagePixels, RowsOfEveryFormatAreConverted)
{
    const unsigned char grey[] = {7, 9};
    QRgb result[2];
    paint::PremultiplyRow(grey, KUVPixelFormat_Grey8, false, 2, result);
    EXPECT_EQ(result[1], qRgb(9, 9, 9));
    const unsigned char rgb[] = {1, 2, 3, 4, 5, 6};
    paint::PremultiplyRow(rgb, KUVPixelFormat_RGB8, false, 2, result);
    EXPECT_EQ(result[1], qRgb(4, 5, 6));
    const unsigned char rgba[] = {255, 0, 0, 51, 1, 2, 3, 0};
    paint::PremultiplyRow(rgba, KUVPixelFormat_RGBA8, false, 2, result);
    EXPECT_EQ(result[0], qRgba(51, 0, 0, 51));
    EXPECT_EQ(result[1], 0U);
    paint::PremultiplyRow(rgba, KUVPixelFormat_RGBA8, true, 2, result);
    EXPECT_EQ(result[1], qRgb(1, 2, 3));
}

TEST(ImagePixels, OpaqueImagesAreStoredWithoutAlpha)
{
    const auto opaque = MakeImage(2, 1, {RED, GREEN});
    const auto open = MakeImage(2, 1, {RED, KUVColor{0, 0, 0, 254}});
    EXPECT_FALSE(paint::HasTransparentPixels(*opaque));
    EXPECT_TRUE(paint::HasTransparentPixels(*open));
    constexpr std::size_t COLOUR_TYPE = 25;
    EXPECT_EQ(paint::EncodePng(*opaque, false).at(COLOUR_TYPE), 2);
    EXPECT_EQ(paint::EncodePng(*open, false).at(COLOUR_TYPE), 6);
    EXPECT_EQ(paint::EncodePng(*open, true).at(COLOUR_TYPE), 2);
}

}  // namespace
}  // namespace painttest
