#include "GeometryJson.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "JsonWriter.h"
#include "ShownView.h"

#include "KUV2D.h"
#include "VisCushionLayout.h"
#include "VisDataTree.h"
#include "VisIcicleLayout.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingView.h"

namespace dataviz {

namespace {

using Cache = VisTreeSpaceFillingLayoutCache;
using TreeMapCache = VisTreeMapLayout::VisTreeMapLayoutCache;
using CushionCache = VisCushionLayout::VisCushionLayoutCache;
using IcicleCache = VisIcicleLayout::VisIcicleLayoutCache;

std::string_view TextOf(const KUVUnicodeString& text)
{
    return {text.GetUtf8(), text.GetByteCount()};
}

class GeometryWriter {
public:
    GeometryWriter(const Picture& picture, const RenderOptions& options, std::FILE* file)
        : picture_(picture), layout_(picture.Layout()), options_(options), json_(file)
    {
    }

    void Write();

private:
    void NumberReferences();
    void WriteHead();
    void WriteState();
    void WriteNode(std::size_t number);
    void WriteLayoutKeys(const Cache& cache);
    void WriteFlags(const VisDataTree& node, const Cache& cache);
    void WriteView(const Cache& cache);
    void WriteShown(const ShownView& shown);
    void WriteLog();
    void WriteNotification(const player::HeardNotification& heard);

    void KeyPair(std::string_view key, const KUVMathPoint2Df& value)
    {
        json_.Key(key);
        json_.Pair(value.x, value.y);
    }
    void KeyBool(std::string_view key, bool value)
    {
        json_.Key(key);
        json_.Bool(value);
    }
    void KeyText(std::string_view key, std::string_view text)
    {
        json_.Key(key);
        json_.String(text);
    }
    /// Null for 0xFFFFFFFF, which stands for no limit and for what was not computed.
    void KeyCount(std::string_view key, unsigned int count)
    {
        json_.Key(key);
        if (count == player::NO_COLUMN_LIMIT)
            json_.Null();
        else
            json_.Unsigned(count);
    }
    void KeyFloat(std::string_view key, float value)
    {
        json_.Key(key);
        json_.Float(value);
    }
    void KeyNull(std::string_view key)
    {
        json_.Key(key);
        json_.Null();
    }
    /// A node as its number, null when it is none of the tree.
    void Reference(const VisDataTree* node);
    void KeyReference(std::string_view key, const VisDataTree* node)
    {
        json_.Key(key);
        Reference(node);
    }
    void KeyParent(const VisDataTree& node, std::uint64_t number);

    const Picture& picture_;
    const VisTreeSpaceFillingLayout& layout_;
    const RenderOptions& options_;
    JsonWriter json_;
    std::vector<const VisDataTree*> zoomStack_;                       // the oldest root first
    std::unordered_map<const VisDataTree*, std::uint64_t> numbers_;   // of the nodes referred to
    std::vector<std::pair<const VisDataTree*, std::uint64_t>> open_;  // the way down to a node
};

void GeometryWriter::Reference(const VisDataTree* node)
{
    const auto found = numbers_.find(node);
    if (found == numbers_.end())
        json_.Null();
    else
        json_.Unsigned(found->second);
}

/// A handful of nodes is referred to by number. Parents are not among them: the way down to a node
/// is at hand when it is written.
void GeometryWriter::NumberReferences()
{
    for (auto stack = layout_.GetLastCurrentTreeRoots(); !stack.empty(); stack.pop())
        zoomStack_.push_back(stack.top());
    std::reverse(zoomStack_.begin(), zoomStack_.end());
    std::unordered_set<const VisDataTree*> wanted(zoomStack_.begin(), zoomStack_.end());
    wanted.insert({picture_.Owner().Highlighted(), layout_.GetCurrentRoot(),
                   layout_.GetCurrentSelection(), layout_.GetCurrentLeafSelection()});
    for (const player::HeardNotification& heard : picture_.Owner().Log().All())
        wanted.insert({heard.previous, heard.node});
    const std::vector<VisDataTree*>& nodes = picture_.Tree().Nodes();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (wanted.count(nodes[i]) != 0)
            numbers_.emplace(nodes[i], i);
    }
}

void GeometryWriter::KeyParent(const VisDataTree& node, std::uint64_t number)
{
    while (!open_.empty() && open_.back().first != node.GetParent())
        open_.pop_back();
    json_.Key("parent");
    if (open_.empty())
        json_.Null();
    else
        json_.Unsigned(open_.back().second);
    open_.emplace_back(&node, number);
}

// ---- the picture as a whole

void GeometryWriter::WriteHead()
{
    json_.Key("schema");
    json_.Unsigned(1);
    KeyText("layout", options_.layout);
    KeyPair("origin", {options_.originX, options_.originY});
    json_.Key("size");
    json_.Open('[');
    json_.Unsigned(options_.width);
    json_.Unsigned(options_.height);
    json_.Close(']');
    json_.Key("scale");
    json_.Float(options_.scale);
    json_.NewLine();
}

void GeometryWriter::WriteState()
{
    KeyReference("currentRoot", layout_.GetCurrentRoot());
    KeyReference("selection", layout_.GetCurrentSelection());
    KeyReference("leafSelection", layout_.GetCurrentLeafSelection());
    KeyReference("highlighted", picture_.Owner().Highlighted());
    json_.NewLine();
    json_.Key("zoomStack");
    json_.Open('[');
    for (const VisDataTree* const root : zoomStack_)
        Reference(root);
    json_.Close(']');
    const VisIcicleLayout* const icicle = picture_.Owner().Icicle();
    KeyCount("lastColumns", icicle != nullptr ? icicle->GetNLastNodes() : player::NO_COLUMN_LIMIT);
    KeyCount("columns", picture_.Owner().Columns().value_or(player::NO_COLUMN_LIMIT));
    json_.NewLine();
}

void GeometryWriter::WriteLog()
{
    const player::EventLog& log = picture_.Owner().Log();
    json_.Key("log");
    json_.Open('[');
    for (std::size_t i = 0; i < log.Size(); ++i) {
        const player::EventLog::Entry entry = log.At(i);
        json_.NewLine();
        json_.Open('{');
        json_.Key("index");
        json_.Integer(static_cast<std::int64_t>(i) - 1);
        json_.Key("result");
        if (entry.result)
            json_.Unsigned(*entry.result);
        else
            json_.Null();
        json_.Key("notifications");
        json_.Open('[');
        for (const player::HeardNotification* heard = entry.begin; heard != entry.end; ++heard)
            WriteNotification(*heard);
        json_.Close(']');
        json_.Close('}');
    }
    json_.NewLine();
    json_.Close(']');
}

void GeometryWriter::WriteNotification(const player::HeardNotification& heard)
{
    json_.Open('{');
    KeyText("name", player::NameOf(heard.notice));
    if (heard.hasNodes) {
        KeyReference("previous", heard.previous);
        KeyReference("node", heard.node);
    }
    if (heard.notice == player::Notice::SetLastColumns) {
        KeyCount("old", heard.oldColumns);
        KeyCount("new", heard.newColumns);
        json_.Key("key");
        json_.Unsigned(heard.key);
    }
    json_.Close('}');
}

void GeometryWriter::Write()
{
    const std::vector<VisDataTree*>& nodes = picture_.Tree().Nodes();
    NumberReferences();
    json_.Open('{');
    json_.NewLine();
    WriteHead();
    WriteState();
    json_.Key("nodes");
    json_.Open('[');
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        json_.NewLine();
        WriteNode(i);
    }
    json_.NewLine();
    json_.Close(']');
    json_.NewLine();
    WriteLog();
    json_.NewLine();
    json_.Close('}');
    json_.Finish();
}

// ---- one node

void GeometryWriter::WriteFlags(const VisDataTree& node, const Cache& cache)
{
    KeyBool("leafObject", node.IsLeafObject() != 0);
    KeyBool("mergeable", node.IsMergeable() != 0);
    KeyBool("merged", node.IsMerged() != 0);
    json_.Key("sizeValue");
    json_.Integer(cache.GetSizeValue());
    json_.Key("colorValue");
    json_.Integer(cache.GetColorValue());
    KeyBool("expanded", cache.IsExpanded() != 0);
    KeyBool("discarded", cache.IsDiscarded() != 0);
    KeyBool("showLabel", cache.GetShowLabel() != 0);
}

/// What only the one layout knows of a node.
void GeometryWriter::WriteLayoutKeys(const Cache& cache)
{
    if (options_.layout == "icicle") {
        const auto& own = static_cast<const IcicleCache&>(cache);
        KeyPair("icicleSize", own.GetIcicleSize());
        KeyPair("graphicalSize", own.GetGraphicalSize());
        json_.Key("columnSpan");
        json_.Unsigned(own.GetIcicleColSpan());
        KeyCount("cursor", own.GetIcicleCursor());
        return;
    }
    if (options_.layout == "treemap") {
        const auto& own = static_cast<const TreeMapCache&>(cache);
        json_.Key("lastMode");
        json_.Unsigned(own.GetLastModeOfComputedMinimumExpandedSize());
        return;
    }
    const auto& own = static_cast<const CushionCache&>(cache);
    json_.Key("surface");
    json_.Open('[');
    for (std::size_t i = 0; i < 4; ++i)
        json_.Float(own.GetSurface()[i]);
    json_.Close(']');
    KeyFloat("height", own.GetHeight());
    KeyFloat("scaleFactor", own.GetScaleFactor());
    json_.Key("subtreeValue");
    json_.Integer(own.GetSubtreeValue());
    KeyBool("cushionComputed", own.IsCushionComputed() != 0);
    json_.Key("lastMode");
    json_.Unsigned(own.GetLastModeOfComputedMinimumExpandedSize());
}

void GeometryWriter::WriteNode(std::size_t number)
{
    const VisDataTree& node = *picture_.Tree().Nodes()[number];
    const auto& cache = static_cast<const Cache&>(*node.GetCache());
    json_.Open('{');
    json_.Key("id");
    json_.Unsigned(number);
    KeyParent(node, number);
    KeyText("label", TextOf(node.GetLabel()));
    KeyText("icon", TextOf(node.GetIconName()));
    WriteFlags(node, cache);
    KeyPair("position", cache.GetPos());
    KeyPair("size", cache.GetSize());
    KeyPair("minimumSize", cache.GetComputedMinimumSize());
    WriteLayoutKeys(cache);
    json_.Key("view");
    if (cache.GetView() == nullptr)
        json_.Null();
    else
        WriteView(cache);
    json_.Close('}');
}

void GeometryWriter::WriteView(const Cache& cache)
{
    const VisTreeSpaceFillingView& view = *cache.GetView();
    const ShownView shown = ReadView(view);
    json_.Open('{');
    if (view.IsBuilt() != 0) {
        KeyPair("position", view.GetBuiltPosition());
        KeyPair("size", view.GetBuiltSize());
    } else {
        KeyNull("position");
        KeyNull("size");
    }
    KeyBool("selected", view.GetSelectionStatus() != 0);
    KeyBool("highlighted", view.GetHighlightStatus() != 0);
    KeyBool("bright", view.IsBright() != 0);
    KeyBool("cropped", view.IsCropped() != 0);
    WriteShown(shown);
    json_.Close('}');
}

void GeometryWriter::WriteShown(const ShownView& shown)
{
    if (shown.label != nullptr) {
        KeyText("shownLabel", TextOf(shown.label->GetText()));
        KeyText("labelColor", HexColor(shown.label->GetColor()));
    } else {
        KeyNull("shownLabel");
        KeyNull("labelColor");
    }
    if (shown.polygon != nullptr)
        KeyText("background", HexColor(shown.polygon->GetColor()));
    else if (shown.texture != nullptr)
        KeyText("background", "texture");
    else
        KeyNull("background");
    json_.Key("parts");
    json_.Open('[');
    for (const std::string_view part : shown.parts)
        json_.String(part);
    json_.Close(']');
}

}  // namespace

void WriteGeometry(const Picture& picture, const RenderOptions& options, std::FILE* file)
{
    GeometryWriter(picture, options, file).Write();
}

}  // namespace dataviz
