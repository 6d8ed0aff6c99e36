#include "ReferenceSceneTree.h"

#include "KUVObjectInterfaces.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace sceneReference {

KUVRep* Path::Current() const
{
    return cursor >= 0 && cursor < static_cast<int>(reps.size())
               ? reps[static_cast<std::size_t>(cursor)]
               : nullptr;
}

bool Path::StepToChild()
{
    if (cursor + 1 >= static_cast<int>(reps.size()))
        return false;
    ++cursor;
    return true;
}

Path Written(const KUVPickPath& path)
{
    Path written;
    for (int i = 0; i < path.Size(); ++i)
        written.reps.push_back(path[i]);
    written.cursor = path.GetCursorPosition();
    const list<int>& numbers = *path.GetSubElementList();
    for (int i = 0; i < numbers.Count() && numbers[i]; ++i)
        written.numbers.push_back(*numbers[i]);
    return written;
}

bool IsSameElement(const Path& first, const Path& second)
{
    if (first.Current() != second.Current())
        return false;
    if (first.IsOnLast() && first.reps.size() == second.reps.size())
        return first.numbers == second.numbers;
    return first.cursor == second.cursor;
}

namespace {

/// The kind of the first primitive that has one: 0 none.
int KindOfPrimitive(const Path& path)
{
    if (!path.Current() || !path.IsOnLast())
        return 0;
    for (const int number : path.numbers) {
        const KUVGraphicPrimitive* const primitive = path.Current()->GetGraphicPrimitive(number);
        if (dynamic_cast<const KUV3DEdgeGP*>(primitive))
            return 3;
        if (dynamic_cast<const KUV3DFaceGP*>(primitive))
            return 4;
        if (dynamic_cast<const KUV3DMarkerGP*>(primitive))
            return 1;
    }
    return 0;
}

std::unique_ptr<Node> MakeNode(const Path& path, bool mergeableIfNotLoaded)
{
    auto node = std::make_unique<Node>();
    node->path = path;
    const KUVRep* const rep = path.Current();
    if (!rep)
        return node;
    KUVBaseUnknown* const object =
        rep->GetModelIdentificator() ? rep->GetModelIdentificator()->GetId() : nullptr;
    bool hasAlias = false;
    if (object && !(path.IsOnLast() && !path.numbers.empty())) {
        const KUVInterfacePtr<KUVIAlias> alias(object);
        hasAlias = static_cast<bool>(alias);
        if (alias)
            node->label = alias->GetAlias().GetUtf8();
        if (const KUVInterfacePtr<KUVIIcon> icon(object); icon)
            node->icon = std::string(icon->GetIconName().GetUtf8()) + ".png";
    }
    const int kind = hasAlias ? 0 : KindOfPrimitive(path);
    if (kind != 0) {
        node->label = kind == 1 ? "Point" : kind == 3 ? "Edge" : "Face";
        node->icon = kind == 1 ? "I_VisVertex.png" : kind == 3 ? "I_VisEdge.png" : "I_VisFace.png";
        node->isLeafObject = true;
    }
    if (node->label.empty()) {
        node->label = "Not loaded";
        node->isMergeable = mergeableIfNotLoaded;
        if (node->icon.empty())
            node->icon = "VisLevelSelectorGeometry.png";
    }
    return node;
}

Node* FindChild(const Node& node, const Path& path)
{
    for (const auto& child : node.children) {
        if (IsSameElement(child->path, path))
            return child.get();
    }
    return nullptr;
}

Node* FindOrAdd(Node& node, const Path& path, bool mergeableIfNotLoaded)
{
    if (Node* const child = FindChild(node, path))
        return child;
    node.children.push_back(MakeNode(path, mergeableIfNotLoaded));
    return node.children.back().get();
}

bool ContainsRun(const std::vector<KUVRep*>& reps, const std::vector<KUVRep*>& run)
{
    return std::search(reps.begin(), reps.end(), run.begin(), run.end()) != reps.end() ||
           run.empty();
}

std::vector<KUVRep*> RepsOf(const KUVRepPath* path)
{
    std::vector<KUVRep*> reps;
    for (int i = 0; path && i < path->Size(); ++i)
        reps.push_back((*path)[i]);
    return reps;
}

}  // namespace

std::unique_ptr<Node> BuildTree(const std::vector<KUVPickPath>& paths, const KUVRepPath* restrictTo,
                                bool mergeableIfNotLoaded)
{
    const std::vector<KUVRep*> run = RepsOf(restrictTo);
    std::unique_ptr<Node> root;
    bool isWrapped = false;
    for (const KUVPickPath& source : paths) {
        Path path = Written(source);
        path.cursor = -1;
        if (!ContainsRun(path.reps, run) || !path.StepToChild())
            continue;
        if (root && !isWrapped && root->path.Current() != path.Current()) {
            auto top = MakeNode(Path(), mergeableIfNotLoaded);
            top->label = "Not loaded";
            top->icon = "VisLevelSelectorGeometry.png";
            top->isMergeable = mergeableIfNotLoaded;
            top->children.push_back(std::move(root));
            top->children.push_back(MakeNode(path, mergeableIfNotLoaded));
            root = std::move(top);
            isWrapped = true;
        }
        if (!root)
            root = MakeNode(path, mergeableIfNotLoaded);
        if (isWrapped)
            path.cursor = -1;
        Node* level = root.get();
        while (path.StepToChild() && !path.IsOnLast())
            level = FindOrAdd(*level, path, mergeableIfNotLoaded);
        FindOrAdd(*level, path, mergeableIfNotLoaded);
    }
    return root;
}

// ---- text

namespace {

void WriteLine(std::ostream& out, int depth, const Path& path, const std::string& label,
               const std::string& icon, bool isLeafObject, bool isMergeable)
{
    out << std::string(static_cast<std::size_t>(depth), ' ') << '"' << label << "\" " << icon
        << (isLeafObject ? " leaf" : "") << (isMergeable ? " mergeable" : "") << " [";
    for (const KUVRep* const rep : path.reps)
        out << ' ' << rep;
    out << " ] at " << path.cursor << " {";
    for (const int number : path.numbers)
        out << ' ' << number;
    out << " }\n";
}

void WriteNode(std::ostream& out, int depth, const Node& node)
{
    WriteLine(out, depth, node.path, node.label, node.icon, node.isLeafObject, node.isMergeable);
    for (const auto& child : node.children)
        WriteNode(out, depth + 1, *child);
}

void WriteNode(std::ostream& out, int depth, const VisDataTree& node)
{
    const auto* const data = static_cast<const KUVPickPath*>(node.GetData());
    KUVPickPath path;
    if (data)
        path = *data;
    path.UnlockPath();
    WriteLine(out, depth, Written(path), node.GetLabel().GetUtf8(), node.GetIconName().GetUtf8(),
              node.IsLeafObject() != 0, node.IsMergeable() != 0);
    for (const VisDataTree* const child : node.GetChildren())
        WriteNode(out, depth + 1, *child);
}

template <class AnyNode>
std::string Text(const AnyNode* root)
{
    std::ostringstream out;
    if (root)
        WriteNode(out, 0, *root);
    return out.str();
}

}  // namespace

std::string Describe(const Node* root) { return Text(root); }
std::string Describe(const VisDataTree* root) { return Text(root); }

}  // namespace sceneReference
