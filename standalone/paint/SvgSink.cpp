#include "paint/SvgSink.h"

#include "paint/ImagePixels.h"

#include <QByteArray>

#include <algorithm>
#include <charconv>

namespace paint {

namespace {

/// Readers refuse elements nested some hundred deep; groups further down are left out.
constexpr int MOST_GROUPS = 100;

std::string Number(double value)
{
    char digits[64];
    const auto end =
        std::to_chars(digits, digits + sizeof(digits), value, std::chars_format::fixed, 3);
    std::string text(digits, end.ptr);
    while (text.back() == '0')
        text.pop_back();
    if (text.back() == '.')
        text.pop_back();
    return text == "-0" ? "0" : text;
}

/// For element content and quoted attributes. Control characters are gone already.
std::string Escaped(const QString& text)
{
    const QByteArray utf8 = text.toHtmlEscaped().replace(u'\'', QLatin1String("&#39;")).toUtf8();
    return {utf8.constData(), static_cast<std::size_t>(utf8.size())};
}

std::string HexColor(KUVColor color)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string text = "#";
    for (const unsigned int byte : {color.r, color.g, color.b}) {
        text.push_back(DIGITS[byte >> 4U]);
        text.push_back(DIGITS[byte & 15U]);
    }
    return text;
}

}  // namespace

// ---- images

SvgContents::ImageKey SvgContents::KeyOf(const PlacedImage& image)
{
    return {image.image, image.hasAlpha, image.box.Width(), image.box.Height()};
}

void SvgContents::Image(const PlacedImage& image)
{
    Entry*& known = byImage_[KeyOf(image)];
    if (!known) {
        const std::string png = EncodePng(*image.image, !image.hasAlpha);
        const std::string size =
            std::to_string(image.box.Width()) + 'x' + std::to_string(image.box.Height()) + ':';
        known = &byContent_[size + png];
        if (known->base64.empty())
            known->base64 = QByteArray::fromRawData(png.data(), static_cast<qsizetype>(png.size()))
                                .toBase64()
                                .toStdString();
    }
    ++known->uses;
}

SvgContents::Entry& SvgContents::Find(const PlacedImage& image)
{
    return *byImage_.at(KeyOf(image));
}

// ---- the file

SvgSink::SvgSink(std::string& file, const PictureOptions& options, LabelFonts& fonts,
                 SvgContents& contents, Form form)
    : file_(file), fonts_(fonts), contents_(contents), form_(form), options_(options)
{
    const std::string width = std::to_string(options.width);
    const std::string height = std::to_string(options.height);
    QString family = fonts.GetResolvedFamily();
    family.remove(u'"').remove(u'\\').remove(u'\'').remove(u'<').remove(u'&');
    file_ += form == Form::Element ? "<svg"
                                   : "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                     "<svg xmlns=\"http://www.w3.org/2000/svg\""
                                     " xmlns:xlink=\"http://www.w3.org/1999/xlink\"";
    file_ += " width=\"" + width + "\" height=\"" + height + "\" viewBox=\"0 0 " + width + ' ' +
             height + "\" xml:space=\"preserve\" data-lines=\"" + Lines() + "\">\n";
    if (!options.title.empty())
        file_ +=
            "<title>" + Escaped(ShownText(KUVUnicodeString(options.title.c_str()))) + "</title>\n";
    file_ += "<style>rect{shape-rendering:crispEdges}text{font-family:" +
             (family.isEmpty() ? std::string() : '\'' + family.toStdString() + "',") +
             "Verdana,sans-serif;white-space:pre}.p{image-rendering:pixelated}</style>\n<rect";
    WriteBox({0, 0, options.width, options.height});
    KUVColor background = options.background;
    background.a = 255;
    WriteColor("fill", background);
    file_ += "/>\n";
}

std::string SvgSink::Lines()
{
    std::string lines;
    for (const float size : contents_.GetTextSizes()) {
        const LabelFont& font = fonts_.AtSize(size);
        lines += (lines.empty() ? "" : ";") + std::to_string(font.em) + ' ' + Number(font.above) +
                 ' ' + Number(font.below);
    }
    return lines;
}

void SvgSink::Finish() { file_ += "</svg>\n"; }

void SvgSink::BeginBag(const KUV2DBagRep& bag)
{
    std::string start;
    if (form_ == Form::Element && options_.groupStart)
        start = options_.groupStart(bag);
    const bool isBare = start.empty();
    starts_.push_back(isBare ? "<g>" : std::move(start));
    if (!isBare)
        OpenGroups();
}

void SvgSink::EndBag()
{
    starts_.pop_back();
    if (openGroups_ > static_cast<int>(starts_.size())) {
        file_ += "</g>\n";
        --openGroups_;
    }
}

/// Bags without pieces leave no trace: a group is opened by the first piece in it.
void SvgSink::OpenGroups()
{
    const int wanted = std::min(static_cast<int>(starts_.size()), MOST_GROUPS);
    for (; openGroups_ < wanted; ++openGroups_)
        file_ += starts_[static_cast<std::size_t>(openGroups_)] + '\n';
}

void SvgSink::WriteNumber(const char* name, double number)
{
    file_ += ' ';
    file_ += name;
    file_ += "=\"";
    file_ += Number(number);
    file_ += '"';
}

void SvgSink::WriteBox(const PixelBox& box)
{
    WriteNumber("x", box.left);
    WriteNumber("y", box.top);
    WriteNumber("width", box.Width());
    WriteNumber("height", box.Height());
}

void SvgSink::WriteColor(const char* name, KUVColor color)
{
    file_ += ' ';
    file_ += name;
    file_ += "=\"";
    file_ += HexColor(color);
    file_ += '"';
    if (color.a != 255) {
        const std::string opacity = std::string(name) + "-opacity";
        WriteNumber(opacity.c_str(), color.a / 255.0);
    }
}

void SvgSink::FillBox(const PixelBox& box, KUVColor color)
{
    OpenGroups();
    file_ += "<rect";
    WriteBox(box);
    WriteColor("fill", color);
    file_ += "/>\n";
}

void SvgSink::OutlineBox(const PixelBox& box, int width, KUVColor color)
{
    OpenGroups();
    file_ += "<rect";
    WriteNumber("x", box.left + width / 2.0);
    WriteNumber("y", box.top + width / 2.0);
    WriteNumber("width", box.Width() - width);
    WriteNumber("height", box.Height() - width);
    file_ += " fill=\"none\"";
    WriteColor("stroke", color);
    if (width != 1)
        WriteNumber("stroke-width", width);
    file_ += "/>\n";
}

void SvgSink::Polygon(const std::vector<PixelPoint>& points, bool filled, KUVColor color)
{
    OpenGroups();
    file_ += "<polygon points=\"";
    for (std::size_t i = 0; i < points.size(); ++i)
        file_ += (i ? " " : "") + Number(points[i].x) + ',' + Number(points[i].y);
    file_ += '"';
    if (!filled)
        file_ += " fill=\"none\"";
    WriteColor(filled ? "fill" : "stroke", color);
    file_ += "/>\n";
}

void SvgSink::WriteImage(const SvgContents::Entry& entry, const PlacedImage& image)
{
    WriteNumber("width", image.box.Width());
    WriteNumber("height", image.box.Height());
    if (!image.isUnscaled)
        file_ += " preserveAspectRatio=\"none\"";
    else
        file_ += " class=\"p\"";
    file_ += " xlink:href=\"data:image/png;base64," + entry.base64 + "\"/>";
}

void SvgSink::Image(const PlacedImage& image)
{
    OpenGroups();
    SvgContents::Entry& entry = contents_.Find(image);
    if (entry.uses > 1 && entry.id == 0) {
        entry.id = ++lastImageId_;
        file_ += "<defs><image id=\"i" + std::to_string(entry.id) + '"';
        WriteImage(entry, image);
        file_ += "</defs>\n";
    }
    file_ += entry.id ? "<use" : "<image";
    WriteNumber("x", image.box.left);
    WriteNumber("y", image.box.top);
    if (entry.id)
        file_ += " xlink:href=\"#i" + std::to_string(entry.id) + "\"/>";
    else
        WriteImage(entry, image);
    file_ += '\n';
}

int SvgSink::ClipId(const PixelBox& clip)
{
    if (lastClipId_ == 0 || clip != lastClip_) {
        lastClip_ = clip;
        file_ += "<clipPath id=\"c" + std::to_string(++lastClipId_) + "\"><rect";
        WriteBox(clip);
        file_ += "/></clipPath>\n";
    }
    return lastClipId_;
}

void SvgSink::Text(const PlacedText& text)
{
    OpenGroups();
    const TextPlacement placed = fonts_.Place(text);
    const int clip = placed.needsClip ? ClipId(text.clip) : 0;
    file_ += "<text";
    WriteNumber("x", placed.left);
    WriteNumber("y", placed.baseline);
    WriteNumber("font-size", fonts_.AtSize(text.size).em);
    WriteNumber("textLength", placed.width);
    file_ += " lengthAdjust=\"spacingAndGlyphs\"";
    WriteColor("fill", text.color);
    if (clip)
        file_ += " clip-path=\"url(#c" + std::to_string(clip) + ")\"";
    file_ += '>';
    file_ += Escaped(placed.shown);
    file_ += "</text>\n";
}

}  // namespace paint
