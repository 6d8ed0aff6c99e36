#include "InputTree.h"

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "InputFile.h"
#include "RootPath.h"
#include "TreeFile.h"
#include "VisDataTree.h"
#include "import/FileContent.h"

namespace dataviz {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t BEGINNING = std::size_t{1} << 16U;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string LowerExtension(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return extension;
}

/// By the beginning of the content where that is unmistakable, else by the name.
bool IsTreeFile(const std::string& path, std::string_view beginning)
{
    if (path == "-" || LooksLikeTreeFile(beginning))
        return true;
    const std::string extension = LowerExtension(path);
    // No model format goes by these names, so one that is found is the content's.
    return (extension == ".json" || extension == ".csv") &&
           kuvimport::FileContent(path).Format() == kuvimport::ModelFormat::Unknown;
}

}  // namespace

InputTree::InputTree() = default;

std::optional<Failure> InputTree::Load(const std::string& path, const ModelOptions& options,
                                       WorkChannel& channel)
{
    std::optional<Failure> failure = LoadWhole(path, options, channel);
    if (!failure && !options.root.empty())
        failure = CutDownTo(options.root);
    return failure;
}

std::optional<Failure> InputTree::LoadWhole(const std::string& path, const ModelOptions& options,
                                            WorkChannel& channel)
{
    channel.Progress("reading", -1);
    const Clock::time_point start = Clock::now();
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return Failure{{}, "is a directory"};
    const FileHolder file = OpenInput(path);
    std::string text;
    if (!file || !ReadInto(text, file.get(), BEGINNING))
        return Failure{{}, CannotRead()};
    if (!IsTreeFile(path, text))
        return LoadModel(path, options, channel);
    if (!ReadInto(text, file.get(), static_cast<std::size_t>(-1)))
        return Failure{{}, CannotRead()};
    bool hasAsset = false;
    std::optional<Failure> failure = LoadTreeFile(text, hasAsset);
    // The reader of glTF documents knows best what is wrong with one.
    const bool isGltf = LowerExtension(path) == ".gltf" || (hasAsset && path != "-");
    if (isGltf && (failure || (nodes_.size() == 1 && root_->GetLabel().IsEmpty()))) {
        text = {};
        return LoadModel(path, options, channel);
    }
    facts_.format = "tree";
    facts_.secondsRead = SecondsSince(start) - facts_.secondsTree;
    return failure;
}

// ---- tree files

std::optional<Failure> InputTree::LoadTreeFile(const std::string& text, bool& isGltf)
{
    TreeFile file;
    if (const std::optional<TreeFileError> error = ReadTreeFile(text, file)) {
        isGltf = error->isGltf;
        return Failure{{}, error->Text()};
    }
    const Clock::time_point start = Clock::now();
    BuildFrom(file);
    facts_.secondsTree = SecondsSince(start);
    return std::nullopt;
}

void InputTree::BuildFrom(const TreeFile& file)
{
    std::vector<KUVUnicodeString> icons;
    for (const std::string& icon : file.icons)
        icons.emplace_back(icon);
    nodes_.reserve(file.nodes.size());
    sizeValues_.reserve(file.nodes.size());
    colorValues_.reserve(file.nodes.size());
    for (const TreeFileNode& entry : file.nodes) {
        auto* const node = new VisDataTree(
            nullptr, KUVUnicodeString(std::string(file.Label(entry))), icons[entry.icon]);
        node->SetIsMergeable(entry.mergeable ? 1 : 0);
        node->SetIsMerged(entry.merged ? 1 : 0);
        node->SetIsLeafObject(entry.leafObject ? 1 : 0);
        if (entry.parent == TreeFileNode::NO_PARENT) {
            root_ = node;
        } else {
            // Nothing above remembers a count yet, so nothing has to be told.
            nodes_[entry.parent]->InsertChild(node, /*resetCaches=*/0);
            node->Release();
        }
        nodes_.push_back(node);
        sizeValues_.push_back(entry.value);
        colorValues_.push_back(entry.color);
    }
}

// ---- every tree

void InputTree::CollectNodes()
{
    std::vector<VisDataTree*> waiting{root_};
    while (!waiting.empty()) {
        VisDataTree* const node = waiting.back();
        waiting.pop_back();
        nodes_.push_back(node);
        const std::vector<VisDataTree*>& children = node->GetChildren();
        waiting.insert(waiting.end(), children.rbegin(), children.rend());
    }
}

// ---- a part of the tree

std::optional<Failure> InputTree::CutDownTo(const std::string& labels)
{
    const RootSearch search = FindByLabels(*root_, labels);
    if (search.found == nullptr)
        return Failure{{}, "--root: " + search.problem};
    VisDataTree* const whole = root_;
    if (search.found == whole)
        return std::nullopt;
    const auto first = std::find(nodes_.begin(), nodes_.end(), search.found);
    const auto begin = first - nodes_.begin();
    const auto end = begin + static_cast<std::ptrdiff_t>(search.found->ComputeNumberOfNodes());
    const auto keep = [begin, end](auto& all) {
        if (!all.empty()) {
            all.erase(all.begin() + end, all.end());
            all.erase(all.begin(), all.begin() + begin);
        }
    };
    keep(nodes_);
    keep(sizeValues_);
    keep(colorValues_);
    search.found->AddRef();
    search.found->RemoveParent(/*release=*/1);
    root_ = search.found;
    Free(whole);
    return std::nullopt;
}

}  // namespace dataviz
