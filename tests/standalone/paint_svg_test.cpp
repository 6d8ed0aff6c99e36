#include "paint/SvgSink.h"

#include "paint/LabelFonts.h"
#include "paint_scene.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace painttest {
namespace {

/// An element of an SVG file with its attributes and its text.
struct Element {
    QString name;
    QXmlStreamAttributes attributes;
    QString text;
    int depth = 0;

    QString operator[](const char* attribute) const
    {
        return attributes.value(QLatin1String(attribute)).toString();
    }
    double Number(const char* attribute) const { return (*this)[attribute].toDouble(); }
};

/// Reads the file strictly; a fault in the XML fails the test.
std::vector<Element> Parse(const std::string& svg)
{
    QXmlStreamReader reader(QByteArray::fromStdString(svg));
    std::vector<Element> elements;
    std::vector<std::size_t> open;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            open.push_back(elements.size());
            elements.push_back(
                {reader.name().toString(), reader.attributes(), {}, static_cast<int>(open.size())});
            break;
        case QXmlStreamReader::EndElement:
            open.pop_back();
            break;
        case QXmlStreamReader::Characters:
            elements[open.back()].text += reader.text();
            break;
        default:
            break;
        }
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    return elements;
}

std::vector<Element> Named(const std::vector<Element>& elements, const char* name)
{
    std::vector<Element> found;
    std::copy_if(elements.begin(), elements.end(), std::back_inserter(found),
                 [name](const Element& element) { return element.name == QLatin1String(name); });
    return found;
}

QImage ImageOf(const Element& element)
{
    const QString href = element["xlink:href"];
    const QString prefix = QStringLiteral("data:image/png;base64,");
    EXPECT_TRUE(href.startsWith(prefix));
    return QImage::fromData(QByteArray::fromBase64(href.mid(prefix.size()).toLatin1()), "png");
}

/// The line of a picture whose texts are all of one size: above and below the baseline.
std::pair<double, double> Line(const std::vector<Element>& elements)
{
    const QStringList numbers = elements.at(0)["data-lines"].split(u' ');
    EXPECT_EQ(numbers.size(), 3);
    return {numbers.value(1).toDouble(), numbers.value(2).toDouble()};
}

TEST(SvgSink, TheRootIsAsLargeAsThePicture)
{
    const auto elements = Parse(PaintSvg(Bag(), 640, 480));
    ASSERT_FALSE(elements.empty());
    EXPECT_EQ(elements[0].name, QStringLiteral("svg"));
    EXPECT_EQ(elements[0]["width"], QStringLiteral("640"));
    EXPECT_EQ(elements[0]["height"], QStringLiteral("480"));
    EXPECT_EQ(elements[0]["viewBox"], QStringLiteral("0 0 640 480"));
}

TEST(SvgSink, ABoxIsARectangleWithYDownwards)
{
    Bag scene;
    scene.Box(10, 20, 30, 40, KUVColor{1, 171, 205, 255});
    const auto rects = Named(Parse(PaintSvg(scene, 100, 100)), "rect");
    ASSERT_EQ(rects.size(), 2U) << "the background and the box";
    EXPECT_EQ(rects[1]["x"], QStringLiteral("10"));
    EXPECT_EQ(rects[1]["y"], QStringLiteral("40"));
    EXPECT_EQ(rects[1]["width"], QStringLiteral("30"));
    EXPECT_EQ(rects[1]["height"], QStringLiteral("40"));
    EXPECT_EQ(rects[1]["fill"], QStringLiteral("#01abcd"));
    EXPECT_FALSE(rects[1].attributes.hasAttribute(QStringLiteral("fill-opacity")));
}

TEST(SvgSink, AContourRunsThroughTheMiddleOfItsPixels)
{
    Bag scene;
    scene.Contour(1, 1, 4, 3, KUVColor{0, 0, 255, 51});
    const auto rects = Named(Parse(PaintSvg(scene, 6, 5)), "rect");
    ASSERT_EQ(rects.size(), 2U);
    EXPECT_EQ(rects[1]["x"], QStringLiteral("1.5"));
    EXPECT_EQ(rects[1]["y"], QStringLiteral("1.5"));
    EXPECT_EQ(rects[1]["width"], QStringLiteral("3"));
    EXPECT_EQ(rects[1]["height"], QStringLiteral("2"));
    EXPECT_EQ(rects[1]["fill"], QStringLiteral("none"));
    EXPECT_EQ(rects[1]["stroke"], QStringLiteral("#0000ff"));
    EXPECT_EQ(rects[1]["stroke-opacity"], QStringLiteral("0.2"));
}

TEST(SvgSink, OtherPolygonsKeepTheirPoints)
{
    Bag scene;
    scene.Polygon({0, 0, 2, 0, 0.25f, 2}, RED);
    const auto polygons = Named(Parse(PaintSvg(scene, 2, 2)), "polygon");
    ASSERT_EQ(polygons.size(), 1U);
    EXPECT_EQ(polygons[0]["points"], QStringLiteral("0,2 2,2 0.25,0"));
}

TEST(SvgSink, EveryBagWithPiecesIsAGroup)
{
    Bag scene;
    Bag first = scene.Child();
    first.Box(0, 0, 1, 1, RED);
    first.Child();
    scene.Child().Box(1, 0, 1, 1, RED);
    const auto elements = Parse(PaintSvg(scene, 2, 1));
    EXPECT_EQ(Named(elements, "g").size(), 3U) << "the empty bag leaves no group";
    const auto rects = Named(elements, "rect");
    ASSERT_EQ(rects.size(), 3U);
    EXPECT_EQ(rects[1].depth, 4);
    EXPECT_EQ(rects[2].depth, 4);
}

TEST(SvgSink, AnElementForAPageIsTheFileWithoutDeclarationAndNamespaces)
{
    Bag scene;
    scene.Child().Box(0, 0, 1, 1, RED);
    const std::string file = PaintSvg(scene, 2, 1);
    std::string element;
    paint::PictureOptions options;
    options.width = 2;
    options.height = 1;
    ASSERT_EQ(paint::PaintPicture(scene.Rep(), options, paint::PictureFormat::SvgElement, element),
              "");
    EXPECT_EQ(element.rfind("<svg width=\"2\"", 0), 0U) << element;
    EXPECT_EQ(element.substr(element.find(" width")), file.substr(file.find(" width")));
}

TEST(SvgSink, AnElementsGroupsStartAsTheCallerSays)
{
    Bag scene;
    Bag first = scene.Child();
    first.Box(0, 0, 1, 1, RED);
    const Bag empty = scene.Child();
    scene.Child();
    paint::PictureOptions options;
    options.width = 2;
    options.height = 1;
    options.groupStart = [&](const KUV2DBagRep& bag) {
        return &bag == &first.Rep()   ? std::string("<g id=\"first\">")
               : &bag == &empty.Rep() ? std::string("<g id=\"empty\">")
                                      : std::string();
    };
    std::string svg;
    ASSERT_EQ(paint::PaintPicture(scene.Rep(), options, paint::PictureFormat::SvgElement, svg), "");
    const auto groups = Named(Parse(svg), "g");
    ASSERT_EQ(groups.size(), 3U) << "an empty bag without a start of its own leaves no group";
    EXPECT_EQ(groups[0]["id"], QString());
    EXPECT_EQ(groups[1]["id"], QStringLiteral("first"));
    EXPECT_EQ(groups[2]["id"], QStringLiteral("empty")) << "written although nothing is in it";
    EXPECT_EQ(groups[2].depth, groups[1].depth);
}

TEST(SvgSink, DeepBagsDoNotNestWithoutEnd)
{
    Bag scene;
    Bag inner = scene.Child();
    for (int i = 0; i < 1000; ++i)
        inner = inner.Child();
    inner.Box(0, 0, 1, 1, RED);
    scene.Box(1, 0, 1, 1, RED);
    const auto elements = Parse(PaintSvg(scene, 2, 1));
    for (const Element& element : elements)
        EXPECT_LE(element.depth, 110);
    EXPECT_EQ(Named(elements, "rect").back().depth, 3) << "groups are closed again";
}

TEST(SvgSink, AnImageIsEmbeddedAsPng)
{
    const auto image = MakeImage(2, 2, {RED, GREEN, BLUE, KUVColor{10, 20, 30, 40}});
    Bag scene;
    scene.Image(3, 1, *image);
    const auto images = Named(Parse(PaintSvg(scene, 10, 10)), "image");
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(images[0]["x"], QStringLiteral("3"));
    EXPECT_EQ(images[0]["y"], QStringLiteral("7"));
    EXPECT_EQ(images[0]["width"], QStringLiteral("2"));
    const QImage pixels = ImageOf(images[0]).convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(pixels.size(), QSize(2, 2));
    EXPECT_EQ(pixels.pixel(0, 0), qRgba(255, 0, 0, 255));
    EXPECT_EQ(pixels.pixel(1, 0), qRgba(0, 255, 0, 255));
    EXPECT_EQ(pixels.pixel(0, 1), qRgba(0, 0, 255, 255));
    EXPECT_EQ(pixels.pixel(1, 1), qRgba(10, 20, 30, 40));
}

TEST(SvgSink, EqualImagesAreWrittenOnce)
{
    const auto image = MakeImage(2, 1, {RED, GREEN});
    const auto equal = MakeImage(2, 1, {RED, GREEN});
    const auto other = MakeImage(2, 1, {GREEN, RED});
    Bag scene;
    scene.Image(0, 0, *image);
    scene.Image(2, 0, *image);
    scene.Image(4, 0, *equal);
    scene.Image(6, 0, *other);
    const auto elements = Parse(PaintSvg(scene, 10, 10));
    EXPECT_EQ(Named(elements, "image").size(), 2U);
    const auto uses = Named(elements, "use");
    ASSERT_EQ(uses.size(), 3U);
    for (const Element& use : uses)
        EXPECT_EQ(use["xlink:href"], QStringLiteral("#i1"));
    EXPECT_EQ(uses[2]["x"], QStringLiteral("4"));
}

TEST(SvgSink, AStretchedImageIsAsLargeAsItIsShown)
{
    const auto image = MakeImage(2, 1, {RED, GREEN});
    image->SetXPixelSize(2.0f);
    image->SetYPixelSize(3.0f);
    Bag scene;
    scene.Image(0, 0, *image);
    const auto images = Named(Parse(PaintSvg(scene, 10, 10)), "image");
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(images[0]["width"], QStringLiteral("4"));
    EXPECT_EQ(images[0]["height"], QStringLiteral("3"));
    EXPECT_EQ(ImageOf(images[0]).size(), QSize(2, 1));
}

TEST(SvgSink, ATextKeepsItsMeasuredWidth)
{
    Bag scene;
    scene.Text(5, 40, "Bracket M6 x 20");
    const auto elements = Parse(PaintSvg(scene, 200, 50));
    const auto texts = Named(elements, "text");
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts[0].text, QStringLiteral("Bracket M6 x 20"));
    EXPECT_EQ(texts[0]["x"], QStringLiteral("5"));
    paint::LabelFonts fonts("");
    EXPECT_NEAR(texts[0].Number("textLength"),
                fonts.AtSize(14.0f).metrics.horizontalAdvance(texts[0].text), 0.001);
    EXPECT_FALSE(texts[0].attributes.hasAttribute(QStringLiteral("clip-path")));
    // The line is the band of 14 below its anchor: rows 10 to 24.
    const auto [above, below] = Line(elements);
    EXPECT_EQ(texts[0].Number("y") - above, 10.0);
    EXPECT_EQ(texts[0].Number("y") + below, 24.0);
}

TEST(SvgSink, AnchorsNameThePointOfTheTextThatStandsThere)
{
    // Around (100, 50) in a picture of 100: left edge, middle or right edge; top, middle or bottom.
    for (int anchor = 0; anchor <= 8; ++anchor) {
        Bag scene;
        scene.Text(100, 50, "Label", static_cast<KUVAnchorPoint>(anchor));
        const auto elements = Parse(PaintSvg(scene, 200, 100));
        const auto texts = Named(elements, "text");
        ASSERT_EQ(texts.size(), 1U);
        const double x = texts[0].Number("x") + texts[0].Number("textLength") * (anchor % 3) / 2.0;
        EXPECT_NEAR(x, 100.0, 0.51) << "anchor " << anchor;
        const int row = anchor / 3;
        const auto [above, below] = Line(elements);
        EXPECT_EQ(above + below, 14.0);
        const double top = texts[0].Number("y") - above;
        EXPECT_NEAR(top + 7.0 * (2 - row), 50.0, 0.51) << "anchor " << anchor;
    }
}

TEST(SvgSink, LinesOfEverySizeAreListedOnce)
{
    Bag scene;
    scene.Text(0, 40, "a");
    scene.Text(0, 60, "b", KUVAnchorPoint_Center, 28.0f);
    scene.Text(0, 80, "c");
    const auto elements = Parse(PaintSvg(scene, 100, 100));
    const QStringList lines = elements[0]["data-lines"].split(u';');
    ASSERT_EQ(lines.size(), 2);
    const auto texts = Named(elements, "text");
    EXPECT_EQ(lines[0].split(u' ').value(0), texts.at(0)["font-size"]);
    EXPECT_EQ(lines[1].split(u' ').value(0), texts.at(1)["font-size"]);
    EXPECT_EQ(Parse(PaintSvg(Bag(), 1, 1))[0]["data-lines"], QString());
}

TEST(SvgSink, ATextThatFillsItsNodesBandIsNotClipped)
{
    Bag scene;
    for (const float bottom : {10.0f, 30.3f, 50.5f, 70.7f}) {
        Bag node = scene.Child();
        node.Box(10, bottom, 80, 15, RED);
        node.Text(10, bottom + 15, "Band");
    }
    EXPECT_TRUE(Named(Parse(PaintSvg(scene, 200, 100)), "clipPath").empty());
}

TEST(SvgSink, ATextThatLeavesItsNodeIsClippedToIt)
{
    Bag scene;
    Bag node = scene.Child();
    node.Box(10, 10, 40, 20, RED);
    node.Text(10, 30, "A label that is far too long");
    const auto elements = Parse(PaintSvg(scene, 200, 100));
    const auto clips = Named(elements, "clipPath");
    const auto texts = Named(elements, "text");
    ASSERT_EQ(clips.size(), 1U);
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts[0]["clip-path"], QStringLiteral("url(#") + clips[0]["id"] + ')');
    const auto rects = Named(elements, "rect");
    ASSERT_EQ(rects.size(), 3U);
    for (const char* const side : {"x", "y", "width", "height"})
        EXPECT_EQ(rects[2][side], rects[1][side]) << "the clip is the node's box";
}

TEST(SvgSink, MarkupInNamesIsEscaped)
{
    const char* const name = "<a href=\"x\">&amp; 'b' ]]></a>";
    Bag scene;
    scene.Text(0, 20, name);
    paint::PictureOptions options;
    options.width = 10;
    options.height = 20;
    options.title = name;
    std::string svg;
    ASSERT_EQ(paint::PaintPicture(scene.Rep(), options, paint::PictureFormat::Svg, svg), "");
    const auto elements = Parse(svg);
    EXPECT_EQ(Named(elements, "text").at(0).text, QString::fromLatin1(name));
    EXPECT_EQ(Named(elements, "title").at(0).text, QString::fromLatin1(name));
}

TEST(SvgSink, ControlCharactersAndBrokenBytesAreShownAsSigns)
{
    Bag scene;
    scene.Text(0, 20, "a\nb\t\x01\x7f \xC2\x85 \xFF \xEF\xBF\xBE \xE2\x80\xA8");
    const auto texts = Named(Parse(PaintSvg(scene, 200, 20)), "text");
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts[0].text,
              QString::fromUtf16(u"a\u240Ab\u2409\u2401\u2421 \uFFFD \uFFFD \uFFFD \u2424"));
}

TEST(SvgSink, NamesOfAllScriptsSurvive)
{
    const QString name = QString::fromUtf16(
        u"Getriebegeh\u00E4use \u0440\u043E\u0442\u043E\u0440 \u6B6F\u8ECA \U0001F529");
    Bag scene;
    scene.Text(0, 20, name.toUtf8().constData());
    EXPECT_EQ(Named(Parse(PaintSvg(scene, 500, 20)), "text").at(0).text, name);
}

TEST(SvgSink, SeveralSpacesAreKept)
{
    Bag scene;
    scene.Text(0, 20, "  a   b ");
    const std::string svg = PaintSvg(scene, 200, 20);
    EXPECT_EQ(Named(Parse(svg), "text").at(0).text, QStringLiteral("  a   b "));
    EXPECT_NE(svg.find("xml:space=\"preserve\""), std::string::npos);
}

}  // namespace
}  // namespace painttest
