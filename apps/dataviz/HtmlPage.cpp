#include "HtmlPage.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>

#include <QByteArray>
#include <QCryptographicHash>
#include <nlohmann/json.hpp>

#include "Grouped.h"
#include "HtmlPageFiles.h"
#include "ShownView.h"

#include "KUV2D.h"
#include "VisCushionLayout.h"
#include "VisDataTree.h"
#include "VisPathUtility.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "VisTreeSpaceFillingView.h"
#include "paint/LabelFonts.h"

namespace dataviz {

namespace {

using Cache = VisTreeSpaceFillingLayoutCache;

const Cache* CacheOf(const VisDataTree& node) { return static_cast<const Cache*>(node.GetCache()); }

ShownView ReadNode(const VisDataTree& node)
{
    const Cache* const cache = CacheOf(node);
    const VisTreeSpaceFillingView* const view = cache != nullptr ? cache->GetView() : nullptr;
    return view != nullptr ? ReadView(*view) : ShownView();
}

/// A closed node has an image as its background, and so has the root of a cushion picture.
bool IsClosed(const VisDataTree& node, const ShownView& shown)
{
    return shown.texture != nullptr && CacheOf(node)->IsExpanded() == 0;
}

/// The colour of a closed node's label band, which is the top of its image; empty without pixels.
std::string BandColor(const KUV2DImagePixelRep& rep)
{
    int width = 0;
    int height = 0;
    if (rep.GetImage() != nullptr)
        rep.GetImage()->GetSize(width, height);
    const unsigned char* const row =
        width > 0 && height > 0 ? rep.GetImage()->GetRow(height - 1) : nullptr;
    return row != nullptr ? HexColor({row[0], row[1], row[2], 255}) : std::string();
}

// ---- texts

std::string ShownText(const KUVUnicodeString& text) { return paint::ShownText(text).toStdString(); }

/// For element content and quoted attributes.
std::string Escaped(const std::string& text)
{
    return QString::fromStdString(text)
        .toHtmlEscaped()
        .replace(u'\'', QLatin1String("&#39;"))
        .toStdString();
}

/// A JSON string that may stand in a script element: nothing in it ends the element.
std::string JsonText(const std::string& text)
{
    using Json = nlohmann::json;
    std::string json = Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
    for (std::size_t at = json.find('<'); at != std::string::npos; at = json.find('<', at))
        json.replace(at, 1, "\\u003c");
    return json;
}

std::string Count(std::uint64_t number, const std::string& one)
{
    return Grouped(number) + ' ' + one + (number == 1 ? "" : "s");
}

/// Beyond 2^53 the page's script would round a number.
std::string JsonNumber(std::int64_t number)
{
    constexpr std::int64_t EXACT = std::int64_t{1} << 53U;
    const std::string digits = std::to_string(number);
    return number > EXACT || number < -EXACT ? '"' + digits + '"' : digits;
}

std::int64_t SizeValue(const VisDataTree& node)
{
    return node.GetCache() != nullptr ? node.GetCache()->GetSizeValue() : 0;
}

std::string FileName(const std::string& input)
{
    const std::string name =
        input == "-" ? "standard input" : std::filesystem::path(input).filename().string();
    return ShownText(KUVUnicodeString(name));
}

// ---- numbers

/// The first pixel whose centre is not before `position`, as the painter takes it.
int FirstPixel(float position)
{
    constexpr double FAR_AWAY = 1 << 28;
    const double pixel = std::isnan(position) ? 0 : static_cast<double>(position);
    return static_cast<int>(std::ceil(std::clamp(pixel, -FAR_AWAY, FAR_AWAY) - 0.5));
}

std::string Swatch(const std::string& color)
{
    return "<span class=\"swatch\" style=\"background:" + color + "\"></span>";
}

/// Of a colour of the cushion tree map.
std::string Swatch(unsigned int index)
{
    const unsigned int color = VisCushionLayout::COLOR_MAP[index];
    return Swatch(HexColor({static_cast<unsigned char>(color >> 16U & 255U),
                            static_cast<unsigned char>(color >> 8U & 255U),
                            static_cast<unsigned char>(color & 255U), 255}));
}

std::string Term(const std::string& name, const std::string& meaning)
{
    return "<dt>" + name + "</dt>\n<dd>" + meaning + "</dd>\n";
}

}  // namespace

// ---- what is in the file

HtmlPage::HtmlPage(const Picture& picture, const RenderOptions& options, int pixelWidth,
                   int pixelHeight)
    : picture_(picture), options_(options), pixelWidth_(pixelWidth), pixelHeight_(pixelHeight)
{
    Collect();
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (!entries_[i].isDrawn)
            continue;
        ++drawnCount_;
        entryOfBag_.emplace(CacheOf(*entries_[i].node)->GetView()->GetBagRep(), i);
    }
}

/// The nodes of a cushion picture share one image: their own views are built, but hold nothing
/// until they are selected.
bool HtmlPage::IsDrawn(const VisDataTree& node) const
{
    const Cache* const cache = CacheOf(node);
    const VisTreeSpaceFillingView* const view = cache != nullptr ? cache->GetView() : nullptr;
    return view != nullptr && view->IsBuilt() != 0 && view->GetBagRep() != nullptr &&
           !BoxOf(*view).IsEmpty();
}

std::vector<HtmlPage::Entry> HtmlPage::AllNodes() const
{
    const std::vector<VisDataTree*>& nodes = picture_.Tree().Nodes();
    std::vector<Entry> all;
    all.reserve(nodes.size());
    std::vector<std::size_t> open;  // the way down to the node
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        while (!open.empty() && nodes[open.back()] != nodes[i]->GetParent())
            open.pop_back();
        Entry entry;
        entry.node = nodes[i];
        entry.parent = open.empty() ? Entry::NO_PARENT : open.back();
        entry.level = open.size();
        entry.isDrawn = IsDrawn(*nodes[i]);
        all.push_back(entry);
        open.push_back(i);
    }
    return all;
}

void HtmlPage::Collect()
{
    std::vector<Entry> all = AllNodes();
    std::vector<bool> isKept(all.size());
    for (std::size_t i = all.size(); i-- > 0;) {
        isKept[i] = isKept[i] || all[i].isDrawn;
        if (all[i].parent == Entry::NO_PARENT)
            continue;
        Entry& parent = all[all[i].parent];
        isKept[all[i].parent] = isKept[all[i].parent] || isKept[i];
        parent.below += all[i].below + (isKept[i] ? 0 : 1);
    }
    std::vector<std::size_t> numbers(all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!isKept[i])
            continue;
        numbers[i] = entries_.size();
        entries_.push_back(all[i]);
        if (all[i].parent != Entry::NO_PARENT)
            entries_.back().parent = numbers[all[i].parent];
    }
}

/// The part of the view's rectangle that lies in the picture, as the painter places it.
paint::PixelBox HtmlPage::BoxOf(const VisTreeSpaceFillingView& view) const
{
    const KUVMathPoint2Df& corner = view.GetBuiltPosition();
    const KUVMathPoint2Df& size = view.GetBuiltSize();
    const paint::PixelBox box{FirstPixel(corner.x), pixelHeight_ - FirstPixel(corner.y + size.y),
                              FirstPixel(corner.x + size.x), pixelHeight_ - FirstPixel(corner.y)};
    return paint::Intersection(box, {0, 0, pixelWidth_, pixelHeight_});
}

std::string HtmlPage::GroupStart(const KUV2DBagRep& bag) const
{
    const auto found = entryOfBag_.find(&bag);
    if (found == entryOfBag_.end())
        return {};
    std::string start = "<g id=\"n" + std::to_string(found->second) + "\">";
    const ShownView shown = ReadNode(*entries_[found->second].node);
    if (shown.polygon != nullptr || shown.texture != nullptr)
        return start;
    const paint::PixelBox box = BoxOf(*CacheOf(*entries_[found->second].node)->GetView());
    return start + "<rect class=\"a\" x=\"" + std::to_string(box.left) + "\" y=\"" +
           std::to_string(box.top) + "\" width=\"" + std::to_string(box.Width()) + "\" height=\"" +
           std::to_string(box.Height()) + "\"/>";
}

// ---- the page's texts

std::string HtmlPage::Title() const
{
    const std::string label = ShownText(picture_.Tree().Root()->GetLabel());
    return label.empty() ? FileName(options_.input) : label;
}

std::string HtmlPage::Measure() const { return picture_.Tree().IsModel() ? "triangles" : "value"; }

std::string HtmlPage::Facts() const
{
    const std::string name = options_.layout == "treemap"   ? "tree map"
                             : options_.layout == "cushion" ? "cushion tree map"
                             : options_.layout == "icicle"  ? "icicle plot"
                                                            : options_.layout;
    const auto value =
        static_cast<std::uint64_t>(std::max<std::int64_t>(0, SizeValue(*picture_.Tree().Root())));
    const std::size_t all = picture_.Tree().Nodes().size();
    const std::string separator = " &middot; ";
    std::string facts = Escaped(FileName(options_.input)) + separator + name + separator;
    facts += picture_.Tree().IsModel() ? Count(value, "triangle") : "value " + Grouped(value);
    facts += separator + Count(all, "node");
    if (drawnCount_ < all)
        facts += ", " + Grouped(drawnCount_) + " of them drawn";
    return facts;
}

/// A swatch for each of the colours that the levels have in turn.
std::string HtmlPage::LevelColors() const
{
    std::map<std::size_t, std::string> colors;  // of the levels
    for (const Entry& entry : entries_) {
        const KUV2DPolygonRep* const fill = entry.isDrawn ? ReadNode(*entry.node).polygon : nullptr;
        if (fill == nullptr || colors.count(entry.level) != 0)
            continue;
        const KUVColor color = fill->GetColor();
        colors[entry.level] = HexColor(color);
    }
    std::string swatches;
    std::set<std::string> known;
    for (const auto& [level, color] : colors) {
        if (!known.insert(color).second)
            break;
        swatches += Swatch(color) + std::to_string(level) + ' ';
    }
    return swatches;
}

std::string HtmlPage::SizeMeaning() const
{
    const std::string measure = Measure();
    if (options_.layout == "cushion")
        return picture_.Tree().Root()->GetCache()->ResizeWithValue() != 0
                   ? "Areas are in proportion to the " + measure + " of the leaves in them."
                   : "Areas are in proportion to the number of leaves in them, whatever their " +
                         measure + '.';
    if (options_.layout == "icicle")
        return "Columns are levels. Heights follow the room that the labels of the leaves need: "
               "they are no measure of the " +
               measure + '.';
    return "Each rectangle has the room that the labels inside it need: areas are no measure of "
           "the " +
           measure + '.';
}

std::string HtmlPage::CushionColors() const
{
    const bool isModel = picture_.Tree().IsModel();
    const std::string shading = "The shading shows what belongs together.";
    if (picture_.Tree().Root()->GetCache()->ColorWithValue() == 0)
        return "None. " + shading;
    if (isModel && options_.colorIndex == "product")
        return "The product, eight colours in turn. " + shading;
    if (isModel && options_.colorIndex == "kind")
        return Swatch(0) + "shape" + Swatch(VisPathUtility::VisPath_Face) + "face" +
               Swatch(VisPathUtility::VisPath_Edge) + "edge" +
               Swatch(VisPathUtility::VisPath_Vertex) + "vertex. " + shading;
    if (!isModel || options_.colorIndex != "share")
        return "The colour value: eight colours from 0 to 7, and white for any other. " + shading;
    std::string classes = "Share of the whole:";
    for (unsigned int i = 0; i < VisCushionLayout::MAX_COLOR_MAP; ++i)
        classes += Swatch(i) + (i == 0 ? "below" : "from") + " 1/" +
                   std::to_string(1U << (VisCushionLayout::MAX_COLOR_MAP - std::max(i, 1U)));
    return classes + ". " + shading;
}

std::string HtmlPage::ColorMeaning() const
{
    if (options_.layout == "cushion")
        return CushionColors();
    if (options_.layout == "icicle")
        return "None.";
    const VisDataTree::VisDataTreeCache& root = *picture_.Tree().Root()->GetCache();
    if (root.ColorWithValue() == 0 && root.ResizeWithValue() == 0)
        return "The level below the root, in turn: " + LevelColors();
    const bool isColorValue = root.ColorWithValue() != 0 && !picture_.Tree().IsModel();
    return "Share of the root's " + (isColorValue ? "colour value" : Measure()) +
           ": the lighter, the heavier; white is as heavy as the root.";
}

std::string HtmlPage::Legend() const
{
    std::string legend = Term("Size", SizeMeaning()) + Term("Colour", ColorMeaning());
    const bool hasClosed = std::any_of(entries_.begin(), entries_.end(), [](const Entry& entry) {
        return entry.isDrawn && IsClosed(*entry.node, ReadNode(*entry.node));
    });
    if (hasClosed)
        legend +=
            Term("Grid of squares", "What is inside found no room; a larger picture opens it.");
    return legend;
}

// ---- the nodes' data

/// [parent, label (0 for the one in the picture), value, nodes below that are not in the file,
/// colour of a closed node]; what is 0 or empty at the end is left out.
std::string HtmlPage::DataRow(const Entry& entry) const
{
    const ShownView shown = entry.isDrawn ? ReadNode(*entry.node) : ShownView();
    const std::string label = ShownText(entry.node->GetLabel());
    const bool isInPicture =
        shown.label != nullptr && !label.empty() && ShownText(shown.label->GetText()) == label;
    std::string row =
        '[' + (entry.parent == Entry::NO_PARENT ? "-1" : std::to_string(entry.parent)) + ',' +
        (isInPicture ? "0" : JsonText(label)) + ',' + JsonNumber(SizeValue(*entry.node));
    const bool isClosed = IsClosed(*entry.node, shown);
    const std::string color = isClosed ? BandColor(*shown.texture) : std::string();
    if (entry.below > 0 || !color.empty())
        row += ',' + std::to_string(entry.below);
    if (!color.empty())
        row += ",\"" + color + '"';
    return row + ']';
}

/// The labels that stand out because their node is selected or highlighted, with the colour that
/// they have otherwise.
std::string HtmlPage::ActiveLabels() const
{
    std::string active;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (!entries_[i].isDrawn)
            continue;
        const VisTreeSpaceFillingView& view = *CacheOf(*entries_[i].node)->GetView();
        if (view.GetSelectionStatus() == 0 && view.GetHighlightStatus() == 0)
            continue;
        const char* const color = view.IsBright() == 0                    ? "#ffffff"
                                  : entries_[i].node->IsLeafObject() != 0 ? "#77797c"
                                                                          : "#000000";
        active += (active.empty() ? "[" : ",[") + std::to_string(i) + ",\"" + color + "\"]";
    }
    return '[' + active + ']';
}

std::string HtmlPage::Data() const
{
    const VisDataTree* const selection = picture_.Layout().GetCurrentSelection();
    std::int64_t selected = -1;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].node == selection && entries_[i].isDrawn)
            selected = static_cast<std::int64_t>(i);
    }
    std::string data = "{\"title\":" + JsonText(Title()) + ",\"unit\":\"" + Measure() +
                       "\",\"total\":" + JsonNumber(SizeValue(*picture_.Tree().Root())) +
                       ",\"selected\":" + std::to_string(selected) +
                       ",\"active\":" + ActiveLabels() + ",\"nodes\":[\n";
    for (std::size_t i = 0; i < entries_.size(); ++i)
        data += (i > 0 ? ",\n" : "") + DataRow(entries_[i]);
    return data + "]}";
}

// ---- the file

std::string HtmlPage::Value(const std::string& name, const std::string& svg) const
{
    if (name == "svg")
        return svg;
    if (name == "data")
        return Data();
    if (name == "script")
        return PAGE_SCRIPT;
    if (name == "style")
        return PAGE_STYLE;
    if (name == "title")
        return Escaped(Title());
    if (name == "facts")
        return Facts();
    if (name == "legend")
        return Legend();
    if (name == "version")
        return KUV_VERSION;
    if (name == "orientation")
        return pixelWidth_ > pixelHeight_ ? "landscape" : "portrait";
    if (name == "width")
        return std::to_string(options_.width);
    // A higher picture is not legible on one sheet of paper; it goes over several.
    constexpr std::uint32_t HIGHEST_ON_PAPER = 2000;
    if (name == "shape")
        return " data-highest-on-paper=\"" + std::to_string(HIGHEST_ON_PAPER) + '"' +
               (options_.height > options_.width && options_.height > HIGHEST_ON_PAPER
                    ? " class=\"tall\""
                    : "");
    if (name == "scriptHash") {
        // The script element holds a line break before the script.
        const QByteArray script = QByteArray("\n") + PAGE_SCRIPT;
        return "sha256-" + QCryptographicHash::hash(script, QCryptographicHash::Sha256)
                               .toBase64()
                               .toStdString();
    }
    return {};
}

std::string HtmlPage::Around(const std::string& svg) const
{
    const std::string frame = PAGE_FRAME;
    std::string page;
    page.reserve(svg.size() + svg.size() / 2);
    std::size_t at = 0;
    for (std::size_t open = frame.find("{{"); open != std::string::npos;
         open = frame.find("{{", at)) {
        const std::size_t close = frame.find("}}", open);
        page.append(frame, at, open - at);
        page += Value(frame.substr(open + 2, close - open - 2), svg);
        at = close + 2;
    }
    page.append(frame, at);
    return page;
}

}  // namespace dataviz
