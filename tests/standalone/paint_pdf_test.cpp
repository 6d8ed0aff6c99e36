#include "paint/PdfSink.h"

#include "paint_scene.h"

#include <QByteArray>

namespace painttest {
namespace {

std::string PaintPdf(const Bag& scene, int width, int height)
{
    return Paint(scene, width, height, paint::PictureFormat::Pdf);
}

/// All compressed streams of the file, opened and put together.
std::string Streams(const std::string& pdf)
{
    std::string all;
    for (std::size_t at = pdf.find("stream\n"); at != std::string::npos;
         at = pdf.find("stream\n", at)) {
        at += 7;
        const std::size_t end = pdf.find("endstream", at);
        if (end == std::string::npos)
            break;
        // Qt wants the size of the result in front; zero makes it find out.
        QByteArray bytes(4, '\0');
        bytes.append(pdf.data() + at, static_cast<qsizetype>(end - at));
        all += qUncompress(bytes).toStdString();
        at = end + 9;
    }
    return all;
}

int Occurrences(const std::string& text, const std::string& what)
{
    int count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

TEST(PdfSink, ThePageHasAPointAPixel)
{
    const std::string pdf = PaintPdf(Bag(), 1281, 799);
    EXPECT_EQ(pdf.rfind("%PDF-", 0), 0U);
    EXPECT_NE(pdf.find("%%EOF"), std::string::npos);
    EXPECT_NE(pdf.find("/MediaBox [0 0 1281.000000 799.000000]"), std::string::npos)
        << pdf.substr(pdf.find("/MediaBox"), 60);
}

TEST(PdfSink, BoxesAreVectorsInTheirColour)
{
    Bag scene;
    scene.Box(10, 20, 30, 40, RED);
    const std::string content = Streams(PaintPdf(scene, 100, 100));
    EXPECT_NE(content.find("1 0 0 scn"), std::string::npos) << content;
    EXPECT_EQ(content.find("/Im"), std::string::npos) << "no bitmap";
}

TEST(PdfSink, TextsStayTextInAnEmbeddedFont)
{
    Bag scene;
    scene.Text(5, 40, "Searchable");
    const std::string pdf = PaintPdf(scene, 200, 50);
    EXPECT_NE(pdf.find("/ToUnicode"), std::string::npos);
    EXPECT_NE(pdf.find("/FontFile2"), std::string::npos);
    EXPECT_NE(Streams(pdf).find("BT"), std::string::npos);
}

TEST(PdfSink, ATextThatLeavesItsNodeIsClipped)
{
    Bag fitting;
    Bag node = fitting.Child();
    node.Box(10, 10, 100, 20, WHITE);
    node.Text(10, 30, "Fits");
    Bag leaving;
    node = leaving.Child();
    node.Box(10, 10, 30, 20, WHITE);
    node.Text(10, 30, "Does not fit at all");
    EXPECT_EQ(Occurrences(Streams(PaintPdf(fitting, 200, 50)), "W* n"), 0);
    EXPECT_EQ(Occurrences(Streams(PaintPdf(leaving, 200, 50)), "W* n"), 1);
}

TEST(PdfSink, AnImageShownTwiceIsStoredOnceWithoutLoss)
{
    const auto image = MakeImage(3, 1, {RED, GREEN, BLUE});
    Bag scene;
    scene.Image(0, 0, *image);
    scene.Image(10, 0, *image);
    const std::string pdf = PaintPdf(scene, 20, 20);
    EXPECT_EQ(Occurrences(pdf, "/Subtype /Image"), 1);
    EXPECT_EQ(pdf.find("DCTDecode"), std::string::npos);
    EXPECT_NE(Streams(pdf).find(std::string("\xFF\x00\x00\x00\xFF\x00\x00\x00\xFF", 9)),
              std::string::npos);
}

}  // namespace
}  // namespace painttest
