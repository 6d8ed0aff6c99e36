#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <optional>
#include <string_view>

#include "Commands.h"
#include "FileWriting.h"
#include "Grouped.h"
#include "InputTree.h"
#include "JsonWriter.h"
#include "OneLine.h"
#include "player/LayoutOwner.h"

#include "KUV3D.h"
#include "VisDataTree.h"
#include "VisPathUtility.h"
#include "core/SceneReps.h"

namespace dataviz {

namespace {

/// A name for a line of text: control characters escaped, a long one cut at a character.
std::string ForLine(std::string_view name)
{
    constexpr std::size_t LONGEST = 200;
    std::size_t length = LONGEST;
    while (length < name.size() && (static_cast<unsigned char>(name[length]) & 0xC0U) == 0x80U)
        ++length;
    return OneLine(name.substr(0, length)) + (length < name.size() ? "..." : "");
}

class InfoReport {
public:
    InfoReport(const InputTree& tree, const InfoOptions& options)
        : tree_(tree), options_(options), heaviest_(Heaviest())
    {
    }

    void WriteText(std::FILE* file) const;
    void WriteJson(std::FILE* file) const;

    /// What the whole weighs: the triangles of a model, the root's value of a tree file.
    std::uint64_t Total() const;
    /// The few heaviest nodes on one line.
    std::string HeaviestOnOneLine() const;

private:
    std::vector<std::size_t> Heaviest() const;
    std::uint64_t Weight(std::size_t number) const
    {
        return static_cast<std::uint64_t>(tree_.Nodes()[number]->GetCache()->GetSizeValue());
    }
    std::string PathOf(std::size_t number) const
    {
        const KUVUnicodeString path = tree_.Nodes()[number]->ComputeLabelUptoRoot(/*leafFirst=*/1);
        return ForLine({path.GetUtf8(), path.GetByteCount()});  // it may hold zero characters
    }
    const char* KindOf(const VisDataTree& node) const;

    void WriteCounts(JsonWriter& json) const;
    void WriteTessellation(JsonWriter& json) const;
    void WriteTree(JsonWriter& json) const;
    void WriteModelText(std::FILE* file) const;

    const InputTree& tree_;
    const InfoOptions& options_;
    std::vector<std::size_t> heaviest_;
};

std::uint64_t InfoReport::Total() const
{
    const bool isWholeModel = tree_.IsModel() && options_.model.root.empty();
    return isWholeModel ? tree_.Facts().counts->triangles : Weight(0);
}

/// All nodes but the root, the heaviest first, equal ones in the order of the tree.
std::vector<std::size_t> InfoReport::Heaviest() const
{
    std::vector<std::size_t> numbers(tree_.Nodes().size() - 1);
    std::iota(numbers.begin(), numbers.end(), std::size_t{1});
    const auto count =
        static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(options_.top, numbers.size()));
    std::partial_sort(numbers.begin(), numbers.begin() + count, numbers.end(),
                      [this](std::size_t a, std::size_t b) {
                          return Weight(a) != Weight(b) ? Weight(a) > Weight(b) : a < b;
                      });
    numbers.resize(static_cast<std::size_t>(count));
    return numbers;
}

std::string InfoReport::HeaviestOnOneLine() const
{
    constexpr std::size_t MOST = 3;
    std::string text;
    for (std::size_t i = 0; i < std::min(MOST, heaviest_.size()); ++i) {
        text += text.empty() ? "" : "; ";
        text += PathOf(heaviest_[i]) + " (" + Grouped(Weight(heaviest_[i])) + ")";
    }
    return text;
}

const char* InfoReport::KindOf(const VisDataTree& node) const
{
    if (&node == tree_.Root())
        return "root";
    if (!tree_.IsModel())
        return node.GetChildren().empty() ? "rep" : "product";
    auto* const path = static_cast<KUVPickPath*>(node.GetData());
    switch (VisPathUtility::GetPickPathType(path)) {
    case VisPathUtility::VisPath_Vertex:
        return "vertex";
    case VisPathUtility::VisPath_Edge:
        return "edge";
    case VisPathUtility::VisPath_Face:
        return "face";
    default:
        return path != nullptr && core::GeometryOf(path->GetCurrentRep()) != nullptr ? "rep"
                                                                                     : "product";
    }
}

// ---- JSON

void InfoReport::WriteCounts(JsonWriter& json) const
{
    using Counts = InputFacts::Counts;
    constexpr std::array<std::pair<const char*, std::uint64_t Counts::*>, 8> KEYS{
        {{"products", &Counts::products},
         {"instances", &Counts::instances},
         {"reps", &Counts::reps},
         {"faces", &Counts::faces},
         {"edges", &Counts::edges},
         {"vertices", &Counts::vertices},
         {"triangles", &Counts::triangles},
         {"triangles_unique", &Counts::trianglesUnique}}};
    for (const auto& [key, member] : KEYS) {
        json.Key(key);
        // A tree file knows its nodes and their values; the rest does not apply to it.
        if (tree_.IsModel())
            json.Unsigned((*tree_.Facts().counts).*member);
        else if (member == &Counts::instances)
            json.Unsigned(tree_.Nodes().size() - 1);
        else if (member == &Counts::triangles)
            json.Unsigned(Total());
        else
            json.Null();
    }
}

void InfoReport::WriteTessellation(JsonWriter& json) const
{
    json.Key("tessellation");
    if (!tree_.Facts().isTessellated) {
        json.Null();
        return;
    }
    json.Open('{');
    json.Key("quality");
    json.String(options_.model.meshQuality);
    json.Key("linearDeflection");
    json.Double(tree_.Facts().linearDeflection);
    json.Key("angularDeflection");
    json.Double(tree_.Facts().angularDeflection);
    json.Close('}');
}

void InfoReport::WriteTree(JsonWriter& json) const
{
    std::vector<const VisDataTree*> open;
    const auto close = [&] {
        json.Close(']');
        json.Close('}');
        open.pop_back();
    };
    for (std::size_t i = 0; i < tree_.Nodes().size(); ++i) {
        const VisDataTree* const node = tree_.Nodes()[i];
        while (!open.empty() && open.back() != node->GetParent())
            close();
        json.NewLine();
        json.Open('{');
        json.Key("label");
        json.String({node->GetLabel().GetUtf8(), node->GetLabel().GetByteCount()});
        json.Key("icon");
        json.String({node->GetIconName().GetUtf8(), node->GetIconName().GetByteCount()});
        json.Key("kind");
        json.String(KindOf(*node));
        json.Key("triangles");
        json.Unsigned(Weight(i));
        json.Key("children");
        json.Open('[');
        open.push_back(node);
    }
    while (!open.empty())
        close();
}

void InfoReport::WriteJson(std::FILE* file) const
{
    const InputFacts& facts = tree_.Facts();
    JsonWriter json(file);
    json.Open('{');
    json.Key("schema");
    json.Unsigned(1);
    json.Key("file");
    json.String(options_.input);
    json.Key("format");
    json.String(facts.format);
    json.NewLine();
    WriteCounts(json);
    json.NewLine();
    WriteTessellation(json);
    json.NewLine();
    json.Key("seconds");
    json.Open('{');
    json.Key("read");
    json.Double(facts.secondsRead);
    json.Key("mesh");
    json.Double(facts.secondsMesh);
    json.Key("tree");
    json.Double(facts.secondsTree);
    json.Close('}');
    json.NewLine();
    json.Key("tree");
    WriteTree(json);
    json.Close('}');
    json.Finish();
}

// ---- text

void InfoReport::WriteModelText(std::FILE* file) const
{
    const InputFacts::Counts& counts = *tree_.Facts().counts;
    std::fprintf(file, "products    %s, occurring %s times\n", Grouped(counts.products).c_str(),
                 Grouped(counts.instances).c_str());
    std::fprintf(file, "shapes      %s, with %s faces, %s edges, %s vertices\n",
                 Grouped(counts.reps).c_str(), Grouped(counts.faces).c_str(),
                 Grouped(counts.edges).c_str(), Grouped(counts.vertices).c_str());
    std::fprintf(file, "triangles   %s; %s with each shape counted once\n",
                 Grouped(counts.triangles).c_str(), Grouped(counts.trianglesUnique).c_str());
    if (tree_.Facts().isTessellated) {
        std::fprintf(
            file,
            "mesh        %s quality: linear deflection %g of the part's size, angular %g degrees\n",
            options_.model.meshQuality.c_str(), tree_.Facts().linearDeflection,
            tree_.Facts().angularDeflection);
    } else {
        std::fprintf(file, "mesh        as in the file\n");
    }
}

void InfoReport::WriteText(std::FILE* file) const
{
    const InputFacts& facts = tree_.Facts();
    std::fprintf(file, "file        %s\n", ForLine(options_.input).c_str());
    std::fprintf(file, "format      %s\n", facts.format.c_str());
    if (tree_.IsModel()) {
        WriteModelText(file);
    } else {
        std::fprintf(file, "nodes       %s\n", Grouped(tree_.Nodes().size()).c_str());
        std::fprintf(file, "value       %s\n", Grouped(Total()).c_str());
    }
    std::fprintf(file, "seconds     %.3f reading, %.3f meshing, %.3f building the tree\n",
                 facts.secondsRead, facts.secondsMesh, facts.secondsTree);
    if (heaviest_.empty())
        return;
    std::fprintf(file, "\nheaviest nodes, with their share and the way up to the root\n");
    const double total = static_cast<double>(Total());
    for (const std::size_t number : heaviest_) {
        const double weight = static_cast<double>(Weight(number));
        std::fprintf(file, "%15s  %5.1f %%  %s\n", Grouped(Weight(number)).c_str(),
                     total > 0 ? 100 * weight / total : 0.0, PathOf(number).c_str());
    }
}

}  // namespace

void RunInfo(const InfoOptions& options, const std::string& outputFile, WorkChannel& channel)
{
    InputTree tree;
    if (const std::optional<Failure> failure = tree.Load(options.input, options.model, channel)) {
        channel.Fail(*failure);
        return;
    }
    channel.InputIsRead();
    channel.Progress("counting", -1);
    // Weights live in the caches of a layout; it never draws here.
    const player::LayoutOwner owner(player::LayoutKind::TreeMap, *tree.Root());
    tree.Weigh(options.model.wholeReps);
    const InfoReport report(tree, options);
    const std::string problem = WriteFile(outputFile, [&](std::FILE* file) {
        if (options.json)
            report.WriteJson(file);
        else
            report.WriteText(file);
    });
    if (!problem.empty()) {
        channel.Fail({"-", problem});
    } else if (options.maxTriangles && report.Total() > *options.maxTriangles) {
        channel.Say(Grouped(report.Total()) + " triangles, more than " +
                    Grouped(*options.maxTriangles) +
                    "; the heaviest nodes: " + report.HeaviestOnOneLine());
        channel.Finish(3);
    } else {
        channel.Finish(0);
    }
}

}  // namespace dataviz
