#include "VisDataTreeUtility.h"

#include "VisPathUtility.h"

#include "private/ChildIndex.h"
#include "private/NodePath.h"
#include "private/PathReads.h"
#include "private/Reference.h"
#include "private/RepChain.h"
#include "private/TreeWalk.h"

#include "KUVMessages.h"
#include "KUVObjectInterfaces.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace {

constexpr unsigned char COMPARE_PREFIX = 0;
constexpr unsigned char IGNORE_PREFIX = 1;
constexpr unsigned char RESET_CACHES = 1;
constexpr const char* NAMELESS_ICON = "VisLevelSelectorGeometry.png";
constexpr long long LARGEST_VALUE = std::numeric_limits<long long>::max();

// ---- labels and icons

KUVUnicodeString Message(const char* catalog, const char* key)
{
    return KUVMsgCatalog::BuildMessage(catalog, key, nullptr, 0, KUVUnicodeString());
}

struct Labels {
    KUVUnicodeString vertex = Message("MechModNLS", "Point");
    KUVUnicodeString line = Message("MechModNLS", "Line");
    KUVUnicodeString edge = Message("MechModNLS", "FeatureREDGE");
    KUVUnicodeString face = Message("MechModNLS", "FeatureRSUR");
    KUVUnicodeString notLoaded = Message("VisDrillTreeMap", "NotLoaded");
};

/// The labels, read once and kept until the process ends.
const Labels& LoadedLabels()
{
    static const Labels* labels = nullptr;
    if (!labels)
        labels = new Labels;
    return *labels;
}

/// What a node shows of the element under the cursor of its path.
struct Appearance {
    KUVUnicodeString label;
    KUVUnicodeString icon;
    unsigned char isLeafObject = 0;
    unsigned char isMergeable = 0;
};

/// Takes label and icon from a model object; false when it has no alias.
bool DescribeObject(KUVBaseUnknown& object, Appearance& appearance)
{
    const KUVInterfacePtr<KUVIAlias> alias(&object);
    if (alias)
        appearance.label = alias->GetAlias();
    const KUVInterfacePtr<KUVIIcon> icon(&object);
    if (icon)
        appearance.icon = icon->GetIconName() + ".png";
    return static_cast<bool>(alias);
}

void DescribePrimitive(KUVPickPath& path, Appearance& appearance)
{
    const Labels& labels = LoadedLabels();
    const auto describe = [&appearance](const KUVUnicodeString& label, const char* icon) {
        appearance.label = label;
        appearance.icon = icon;
        appearance.isLeafObject = 1;
    };
    switch (VisPathUtility::GetPickPathType(&path)) {
    case VisPathUtility::VisPath_Vertex:
        return describe(labels.vertex, "I_VisVertex.png");
    case VisPathUtility::VisPath_Edge:
        return describe(labels.edge, "I_VisEdge.png");
    case VisPathUtility::VisPath_Face:
        return describe(labels.face, "I_VisFace.png");
    default:
        return;
    }
}

Appearance Describe(KUVPickPath& path, const KUVRep& rep, unsigned char mergeableIfNotLoaded)
{
    Appearance appearance;
    KUVBaseUnknown* const object = ModelObjectOf(rep);
    const bool isPrimitive = IsCursorOnLast(path) && HasSubElements(path);
    const bool isObject = object && !isPrimitive;
    if (!isObject || !DescribeObject(*object, appearance))
        DescribePrimitive(path, appearance);
    if (appearance.label.IsEmpty()) {
        appearance.label = LoadedLabels().notLoaded;
        appearance.isMergeable = mergeableIfNotLoaded;
        if (appearance.icon.IsEmpty())
            appearance.icon = NAMELESS_ICON;
    }
    return appearance;
}

/// `CreateVisDataTree`, except that it throws when memory runs out.
VisReference<VisDataTree> MakeNode(KUVPickPath* path, unsigned char mergeableIfNotLoaded)
{
    LoadedLabels();
    auto copy = VisReference<KUVPickPath>::Adopt(path ? new KUVPickPath(*path) : nullptr);
    const KUVRep* const rep = copy ? CurrentRep(*copy.Get()) : nullptr;
    const Appearance appearance =
        rep ? Describe(*copy.Get(), *rep, mergeableIfNotLoaded) : Appearance();
    auto node = VisReference<VisDataTree>::Adopt(
        new VisDataTree(NodeDataOf(copy.Get()), appearance.label, appearance.icon));
    node->SetIsLeafObject(appearance.isLeafObject);
    node->SetIsMergeable(appearance.isMergeable);
    // From here on the path belongs to whoever owns the tree.
    copy.Detach();
    return node;
}

// ---- tree

/// Whether picked primitives get a level for the rep that owns them. Read once.
bool SeparatesPrimitives()
{
    static const bool separates = KUVGetEnv("VisDataTreeSeparatePrimitive") != nullptr;
    return separates;
}

class SceneTreeBuilder {
public:
    SceneTreeBuilder(const KUVRepPath* restrictTo, unsigned char mergeableIfNotLoaded,
                     int expectedPaths)
        : restrictTo_(restrictTo ? *restrictTo : KUVRepPath()), mergeable_(mergeableIfNotLoaded)
    {
        // Every path brings a leaf, as a rule.
        children_.Reserve(static_cast<std::size_t>(expectedPaths));
        paths_.reserve(static_cast<std::size_t>(expectedPaths));
    }
    /// An unfinished tree goes with its paths.
    ~SceneTreeBuilder()
    {
        for (KUVPickPath* const path : paths_) {
            if (path)
                path->Release();
        }
    }
    SceneTreeBuilder(const SceneTreeBuilder&) = delete;
    SceneTreeBuilder& operator=(const SceneTreeBuilder&) = delete;

    /// Adds the levels and the leaf that `source` leads to. Throws `std::bad_alloc`.
    void Add(const KUVPickPath& source)
    {
        KUVPickPath path(source);
        path.InitToTopRep();
        restrictTo_.InitToTopRep();
        if (Size(restrictTo_) > 0 && !Contains(path, restrictTo_))
            return;
        path.InitToTopRep();
        if (!path.NextChildRep())
            return;
        ProvideRoot(path);
        VisDataTree* level = DescendToLast(path);
        if (SeparatesPrimitives())
            level = ChildFor(*level, OwnerOf(path));
        ChildFor(*level, path);
    }

    /// Hands the tree over, or null when nothing was added.
    VisDataTree* Finish()
    {
        paths_.clear();
        return root_.Detach();
    }

private:
    void ProvideRoot(KUVPickPath& path)
    {
        if (!root_)
            root_ = NewNode(path);
        else if (!isWrapped_ && CurrentRep(*PickPathOf(*root_.Get())) != CurrentRep(path))
            WrapRoot(path);
    }

    /// The paths do not begin with the same rep: puts a node without path above their first levels.
    void WrapRoot(KUVPickPath& path)
    {
        KUVPickPath nothing;
        VisReference<VisDataTree> top = NewNode(nothing);
        top->SetLabel(LoadedLabels().notLoaded);
        top->SetIconName(NAMELESS_ICON);
        top->SetIsMergeable(mergeable_);
        Insert(*top.Get(), *root_.Get());
        Insert(*top.Get(), *NewNode(path).Get());
        root_ = std::move(top);
        isWrapped_ = true;
    }

    /// Follows `path` to the level above its last rep, making the levels that are missing.
    VisDataTree* DescendToLast(KUVPickPath& path)
    {
        if (isWrapped_)
            path.InitToTopRep();
        VisDataTree* level = root_.Get();
        while (path.NextChildRep() && !IsCursorOnLast(path))
            level = ChildFor(*level, path);
        return level;
    }

    /// The path to the whole of the last rep.
    static KUVPickPath OwnerOf(const KUVPickPath& path)
    {
        KUVPickPath owner(path);
        owner.InitToLeafRep();
        owner.NextFatherRep();
        owner.Load({});
        return owner;
    }

    VisDataTree* ChildFor(VisDataTree& parent, KUVPickPath&& path)
    {
        return ChildFor(parent, path);
    }

    /// The child of `parent` that designates the same element as `path`, made when missing.
    VisDataTree* ChildFor(VisDataTree& parent, KUVPickPath& path)
    {
        if (VisDataTree* const child = children_.Find(parent, path))
            return child;
        const VisReference<VisDataTree> child = NewNode(path);
        Insert(parent, *child.Get());
        return child.Get();
    }

    void Insert(VisDataTree& parent, VisDataTree& child)
    {
        parent.InsertChild(&child, RESET_CACHES);
        children_.Add(parent, child);
    }

    VisReference<VisDataTree> NewNode(KUVPickPath& path)
    {
        paths_.push_back(nullptr);
        VisReference<VisDataTree> node = MakeNode(&path, mergeable_);
        paths_.back() = PickPathOf(*node.Get());
        return node;
    }

    KUVRepPath restrictTo_;
    unsigned char mergeable_;
    VisReference<VisDataTree> root_;
    bool isWrapped_ = false;
    VisChildIndex children_;
    /// The paths of all nodes, as long as the tree is unfinished.
    std::vector<KUVPickPath*> paths_;
};

// ---- numbers, bottom-up

long long AddSaturating(long long a, long long b)
{
    if (b > 0 && a > LARGEST_VALUE - b)
        return LARGEST_VALUE;
    return a + b;
}

unsigned int SaturatedToUnsigned(long long value)
{
    constexpr long long LARGEST = std::numeric_limits<unsigned int>::max();
    return static_cast<unsigned int>(std::clamp(value, 0LL, LARGEST));
}

/// Calls `finish(node, sum of the results of its children)` for every node of a subtree, children
/// in order before their parent, and gives the root's result.
template <class Finish>
long long SumBottomUp(VisDataTree& root, const Finish& finish)
{
    struct Level {
        VisDataTree* node;
        std::size_t next;
        long long sum;
    };
    std::vector<Level> levels{{&root, 0, 0}};
    for (;;) {
        Level& level = levels.back();
        const std::vector<VisDataTree*>& children = level.node->GetChildren();
        if (level.next < children.size()) {
            if (VisDataTree* const child = children[level.next++])
                levels.push_back({child, 0, 0});
            continue;
        }
        const long long result = finish(*level.node, level.sum);
        levels.pop_back();
        if (levels.empty())
            return result;
        levels.back().sum = AddSaturating(levels.back().sum, result);
    }
}

/// Triangles of strips or fans: one less for each vertex behind the second.
long long TrianglesOfRuns(int count, const int* vertexCounts)
{
    long long triangles = 0;
    for (int i = 0; vertexCounts && i < count; ++i) {
        if (vertexCounts[i] > 2)
            triangles += vertexCounts[i] - 2;
    }
    return triangles;
}

long long TrianglesOfPrimitive(const KUVGraphicPrimitive* primitive)
{
    const KUVMetaClass* const meta = primitive ? primitive->GetMetaObject() : nullptr;
    if (!meta || !meta->IsAKindOf(KUV3DBoundingGP::ClassId()))
        return 0;
    KUVTriangleData data;
    static_cast<const KUV3DBoundingGP*>(primitive)->GetTriangleData(data);
    return data.triangleCount + TrianglesOfRuns(data.stripCount, data.stripVertexCounts) +
           TrianglesOfRuns(data.fanCount, data.fanVertexCounts);
}

long long TrianglesOfPrimitives(KUVPickPath& path)
{
    const KUVRep* const rep = CurrentRep(path);
    if (!rep)
        return 0;
    const list<int>* const numbers = SubElements(path);
    long long triangles = 0;
    for (int i = 0; const int* const number = EntryAt(numbers, i); ++i)
        triangles =
            AddSaturating(triangles, TrianglesOfPrimitive(rep->GetGraphicPrimitive(*number)));
    return triangles;
}

long long TrianglesOfRep(KUVRep& rep)
{
    KUVSceneGraphStats stats;
    KUVSceneGraphStatHelper::KUVGetSceneGraphRepStats(&rep, stats);
    return static_cast<long long>(
        std::min(stats.triangleCount, static_cast<std::uint64_t>(LARGEST_VALUE)));
}

/// Whether a node counts the whole of its rep instead of primitives or its children.
bool CountsWholeRep(const VisDataTree& node, KUVPickPath& path, bool wholeReps)
{
    const bool isOnLast = IsCursorOnLast(path);
    const bool hasSubElements = HasSubElements(path);
    if (wholeReps && (!isOnLast || !hasSubElements))
        return true;
    if (!isOnLast && !node.GetChildren().empty())
        return false;
    return !hasSubElements;
}

/// Triangles of a node whose children have `sum`.
long long TrianglesOfNode(const VisDataTree& node, long long sum, bool wholeReps)
{
    KUVPickPath* const path = PickPathOf(node);
    if (!path)
        return sum;
    if (CountsWholeRep(node, *path, wholeReps)) {
        // The children's sum is dropped: what is counted whole is not counted twice.
        KUVRep* const rep = CurrentRep(*path);
        return rep ? TrianglesOfRep(*rep) : sum;
    }
    return IsCursorOnLast(*path) && HasSubElements(*path) ? TrianglesOfPrimitives(*path) : sum;
}

/// The reps at and below `root` that are of a class, each once for every place where it hangs.
long long CountRepsOfClass(const KUVRep& root, KUVClassId classId)
{
    struct Bag {
        const list<KUVRep>* children;
        int next;
    };
    std::vector<Bag> bags;
    VisRepChain chain;
    long long count = 0;
    const auto visit = [&](const KUVRep& rep) {
        const list<KUVRep>* const children = rep.GetChildren();
        const bool hasChildren = children && children->Count() > 0;
        if (hasChildren && chain.Has(&rep))
            return;
        const KUVMetaClass* const meta = rep.GetMetaObject();
        count += meta && meta->IsAKindOf(classId) ? 1 : 0;
        if (hasChildren) {
            chain.Push(&rep);
            bags.push_back({children, 0});
        }
    };
    visit(root);
    while (!bags.empty()) {
        Bag& bag = bags.back();
        const KUVRep* const child =
            bag.next < bag.children->Count() ? (*bag.children)[bag.next++] : nullptr;
        if (child) {
            visit(*child);
        } else {
            bags.pop_back();
            chain.Pop();
        }
    }
    return count;
}

}  // namespace

// ---- tree from the scene

VisDataTree* VisDataTreeUtility::CreateVisDataTree(KUVPickPath* path,
                                                   unsigned char mergeableIfNotLoaded)
{
    try {
        return MakeNode(path, mergeableIfNotLoaded).Detach();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

VisDataTree* VisDataTreeUtility::CreateTreeFromPickPath(const list<KUVPickPath>& paths,
                                                        KUVRepPath* restrictTo,
                                                        unsigned char mergeableIfNotLoaded)
{
    try {
        SceneTreeBuilder builder(restrictTo, mergeableIfNotLoaded, paths.Count());
        for (int i = 0; i < paths.Count(); ++i) {
            const KUVPickPath* const path = paths[i];
            if (!path)
                break;
            builder.Add(*path);
        }
        return builder.Finish();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// ---- search

VisDataTree* VisDataTreeUtility::DeepSearchNodeWithPickPath(VisDataTree* node, KUVPickPath* path,
                                                            unsigned char leafOnly)
{
    if (!node || !path || !CurrentRep(*path))
        return nullptr;
    try {
        VisPreOrderWalk<VisDataTree> walk(node);
        while (VisDataTree* const visited = walk.Next()) {
            KUVPickPath* const own = PickPathOf(*visited);
            if (!own || Size(*own) == 0)
                continue;
            const int same = VisPathUtility::ComparePath(own, path, COMPARE_PREFIX);
            if (same == 1 && (!leafOnly || visited->GetChildren().empty()))
                return visited;
            if (same == 0)
                walk.SkipChildren();
        }
    } catch (const std::bad_alloc&) {
        // Not found, as far as anybody can tell.
    }
    return nullptr;
}

VisDataTree* VisDataTreeUtility::GetChildWithPickPath(VisDataTree* node, KUVPickPath* path)
{
    if (!node || !path)
        return nullptr;
    for (VisDataTree* const child : node->GetChildren()) {
        if (child && VisPathUtility::ComparePath(PickPathOf(*child), path, IGNORE_PREFIX) == 1)
            return child;
    }
    return nullptr;
}

KUVResult VisDataTreeUtility::GetMousePositionInsideViewport(KUVViewer* viewer, float& x, float& y)
{
    if (!viewer)
        return KUV_FAIL;
    int mouseX = 0;
    int mouseY = 0;
    float width = 0.0f;
    float height = 0.0f;
    viewer->GetMousePosition(&mouseX, &mouseY);
    viewer->GetGraphicSize(&width, &height);
    x = static_cast<float>(mouseX);
    y = height - static_cast<float>(mouseY);
    return KUV_OK;
}

// ---- statistics

unsigned int VisDataTreeUtility::ComputeNbTriangles(VisDataTree* node, unsigned char wholeReps)
{
    if (!node)
        return 0;
    const auto finish = [wholeReps](const VisDataTree& visited, long long sum) {
        // A host that reports less than nothing must not make weights negative.
        const long long triangles = std::max(0LL, TrianglesOfNode(visited, sum, wholeReps != 0));
        if (VisDataTree::VisDataTreeCache* const cache = visited.GetCache()) {
            cache->SetColorValue(triangles);
            cache->SetSizeValue(triangles);
        }
        return triangles;
    };
    try {
        return SaturatedToUnsigned(SumBottomUp(*node, finish));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

unsigned int VisDataTreeUtility::ComputeNbTypeOfRep(VisDataTree* node, const char* typeName)
{
    if (!node || !typeName)
        return 0;
    const auto finish = [classId = KUVClassIdOf(typeName)](const VisDataTree& visited,
                                                           long long sum) {
        KUVPickPath* const path = visited.GetChildren().empty() ? PickPathOf(visited) : nullptr;
        const KUVRep* const rep = path ? CurrentRep(*path) : nullptr;
        const long long count = rep ? CountRepsOfClass(*rep, classId) : sum;
        if (VisDataTree::VisDataTreeCache* const cache = visited.GetCache())
            cache->SetColorValue(count);
        return count;
    };
    try {
        return SaturatedToUnsigned(SumBottomUp(*node, finish));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

// ---- from a node back to the scene

void VisDataTreeUtility::StripPickPathFromNode(VisDataTree* node, KUVPickPath& result,
                                               unsigned char mapToProduct)
{
    KUVPickPath* const own = node ? PickPathOf(*node) : nullptr;
    if (!own)
        return;
    const int size = Size(*own);
    const bool isOnLast =
        !node->GetChildren().empty() && size > 0 && CursorPosition(*own) == size - 1;
    if (!isOnLast) {
        VisPathUtility::StripPickPath(own, result, /*mapToProduct=*/0, nullptr);
        return;
    }
    try {
        // The cursor moves in a copy, so that the node's path stays as it is on every way out.
        KUVPickPath path(*own);
        path.InitToLeafRep();
        path.NextFatherRep();
        path.NextFatherRep();
        VisPathUtility::StripPickPath(&path, result, mapToProduct, nullptr);
    } catch (const std::bad_alloc&) {
        // Without memory for the copy nothing happens.
    }
}
