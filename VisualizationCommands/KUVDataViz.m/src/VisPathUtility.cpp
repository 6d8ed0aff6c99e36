#include "VisPathUtility.h"

#include "private/PathReads.h"
#include "private/ProductLevels.h"
#include "private/Reference.h"
#include "private/RepChain.h"

#include "KUVProduct.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <new>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

constexpr unsigned int ATTRIBUTE_1 = 1U;
constexpr unsigned int ATTRIBUTE_8 = 8U;
constexpr const char* ROOT_OCCURRENCE = "OXMRootOccurrence";

struct PrimitiveKind {
    KUVClassId (*classId)();
    VisPathUtility::VisPath_Type type;
};

/// Asked in this order; the first class that the primitive is a kind of decides.
constexpr PrimitiveKind PRIMITIVE_KINDS[] = {
    {&KUV3DEdgeGP::ClassId, VisPathUtility::VisPath_Edge},
    {&KUV3DLineGP::ClassId, VisPathUtility::VisPath_Edge},
    {&KUV3DReferencePlaneGP::ClassId, VisPathUtility::VisPath_Edge},
    {&KUV3DFixedArrowGP::ClassId, VisPathUtility::VisPath_Edge},
    {&KUV2DPolygonGP::ClassId, VisPathUtility::VisPath_Edge},
    {&Vis3DDynamicLeaderGP::ClassId, VisPathUtility::VisPath_Edge},
    {&KUV3DFaceGP::ClassId, VisPathUtility::VisPath_Face},
    {&KUV3DMarkerGP::ClassId, VisPathUtility::VisPath_Vertex},
};

bool IsOfClass(const KUVBaseUnknown& object, KUVClassId id)
{
    const KUVMetaClass* const meta = object.GetMetaObject();
    return meta && meta->IsAKindOf(id) != 0;
}

/// `VisPath_Unknown` when the primitive is of none of the kinds.
VisPathUtility::VisPath_Type TypeOf(const KUVMetaClass& primitiveClass)
{
    for (const PrimitiveKind& kind : PRIMITIVE_KINDS) {
        if (primitiveClass.IsAKindOf(kind.classId()))
            return kind.type;
    }
    return VisPathUtility::VisPath_Unknown;
}

/// The type that the scene graph's own primitives give; `VisPath_Unknown` when none does.
VisPathUtility::VisPath_Type TypeOfGraphicPrimitives(const KUVRep& rep, const list<int>* numbers)
{
    for (int i = 0; const int* const number = EntryAt(numbers, i); ++i) {
        const KUVGraphicPrimitive* const primitive = rep.GetGraphicPrimitive(*number);
        const KUVMetaClass* const primitiveClass = primitive ? primitive->GetMetaObject() : nullptr;
        if (!primitiveClass)
            continue;
        const VisPathUtility::VisPath_Type type = TypeOf(*primitiveClass);
        if (type != VisPathUtility::VisPath_Unknown)
            return type;
        std::cout << "Unknown graphic primitive: " << primitive->IsA() << std::endl;
    }
    return VisPathUtility::VisPath_Unknown;
}

/// Everything that a primitive group keeps counts as a face, and is reported every time.
VisPathUtility::VisPath_Type TypeOfVisPrimitives(const KUVRep& rep, const list<int>* numbers)
{
    if (!IsOfClass(rep, VisPrimitiveGroupRep::ClassId()))
        return VisPathUtility::VisPath_Unknown;
    const auto& group = static_cast<const VisPrimitiveGroupRep&>(rep);
    for (int i = 0; const int* const number = EntryAt(numbers, i); ++i) {
        if (const VisPrimitive* const primitive = group.GetVisPrimitive(*number)) {
            std::cout << "Unknown vis primitive: " << primitive->GetTypeCode() << std::endl;
            return VisPathUtility::VisPath_Face;
        }
    }
    return VisPathUtility::VisPath_Unknown;
}

bool HasFirstEntry(const list<KUVRep>* children)
{
    return children && children->Count() >= 1 && (*children)[0];
}

void Append(KUVPickPath& path, KUVRep& rep)
{
    path.AddRep(&rep, 1);
    path.Push(&rep);
}

/// Walks a scene and makes a path for each leaf.
class LeafPaths {
public:
    LeafPaths(KUV3DViewpoint& viewpoint, unsigned int skippedAttributes)
        : viewpoint_(viewpoint), skippedAttributes_(skippedAttributes)
    {
    }

    std::vector<KUVPickPath> Collect(KUVRep* root)
    {
        Visit(root);
        while (!bags_.empty()) {
            Bag& bag = bags_.back();
            KUVRep* const child =
                bag.next < bag.children->Count() ? (*bag.children)[bag.next++] : nullptr;
            if (child)
                Visit(child);
            else
                LeaveBag();
        }
        return std::move(paths_);
    }

private:
    /// A bag on the way down, and the index of the child to visit next.
    struct Bag {
        KUVRep* rep;
        const list<KUVRep>* children;
        int next;
    };

    bool IsShown(const KUVRep& rep) const
    {
        if (rep.IsFiltered() || !rep.TakesPartInDisplay())
            return false;
        KUVGraphicAttributeSet attributes;
        rep.GetGraphicAttributeSet(attributes);
        return (attributes.firstWord & skippedAttributes_) == 0;
    }

    void Visit(KUVRep* rep)
    {
        if (!rep || !IsShown(*rep))
            return;
        const list<KUVRep>* const children = rep->GetChildren();
        if (!HasFirstEntry(children)) {
            AddPathTo(*rep);
        } else if (!chain_.Has(rep)) {
            chain_.Push(rep);
            bags_.push_back({rep, children, 0});
        }
    }

    void LeaveBag()
    {
        chain_.Pop();
        bags_.pop_back();
    }

    /// The root never is part of a path, be it a bag or the leaf itself.
    void AddPathTo(KUVRep& leaf)
    {
        KUVPickPath& path = paths_.emplace_back(&viewpoint_);
        for (std::size_t i = 1; i < bags_.size(); ++i)
            Append(path, *bags_[i].rep);
        if (!bags_.empty())
            Append(path, leaf);
        path.InitToTopRep();
    }

    KUV3DViewpoint& viewpoint_;
    unsigned int skippedAttributes_;
    std::vector<Bag> bags_;
    VisRepChain chain_;
    std::vector<KUVPickPath> paths_;
};

// ---- changes of paths

/// `target` becomes a copy of `source`, except that it keeps its own lock.
void AssignExceptLock(KUVPickPath& target, const KUVPickPath& source)
{
    const VisLockPause pause(target);
    target = source;
    target.UnlockPath();
}

/// Takes the reps, the sub-elements and the path's own stack away.
void Clear(KUVPickPath& path)
{
    // A rep may have been pushed several times in a row, but a host that never pops must not hold
    // the module up.
    constexpr int MOST_REPEATS = 64;
    int repeats = 0;
    for (const KUVRep* top = path.GetTopRep(); top && repeats < MOST_REPEATS;) {
        path.Pop();
        const KUVRep* const next = path.GetTopRep();
        repeats = next == top ? repeats + 1 : 0;
        top = next;
    }
    path.Empty();
    path.Load({});
}

/// Takes the reps behind the cursor away, and then the sub-elements, which belong to the last one.
void CutAtCursor(KUVPickPath& path)
{
    if (CursorPosition(path) < 0 || IsCursorOnLast(path))
        return;
    for (int size = Size(path); size > 1 && !IsCursorOnLast(path);) {
        path.RemoveRep(RepAt(path, size - 1));
        const int left = Size(path);
        if (left >= size)
            break;
        size = left;
    }
    path.Load({});
}

// ---- product identifiers

using ProductIDs = std::vector<KUVUnicodeString>;

void AddComponentID(ProductIDs& ids, const KUVIPLMComponent& component)
{
    KUVIAdpPLMIdentificator* given = nullptr;
    if (component.GetAdpIdentificator(given) != KUV_OK)
        return;
    const auto identificator = VisReference<KUVIAdpPLMIdentificator>::Adopt(given);
    KUVPLMID id;
    unsigned char isValid = 0;
    if (identificator &&
        KUVPLMID::GetPLMIDFromAdpIdentificator(identificator.Get(), id) == KUV_OK &&
        id.IsValidForRemoteUsage(isValid) == KUV_OK && isValid != 0)
        ids.push_back(id.GetPhysicalId().ToString());
}

/// `AddProductID`, except that it throws when memory runs out.
void AddObjectIDs(ProductIDs& ids, KUVBaseUnknown* object)
{
    if (const KUVInterfacePtr<KUVIPLMComponent> component(object); component) {
        AddComponentID(ids, *component.Get());
        return;
    }
    const KUVInterfacePtr<KUVIPLMNavOccurrence> occurrence(object);
    if (!occurrence)
        return;
    for (KUVBaseUnknown* const related :
         {occurrence->GetRelatedInstance(), occurrence->GetRelatedReference()}) {
        if (const KUVInterfacePtr<KUVIPLMComponent> component(related); component)
            AddComponentID(ids, *component.Get());
    }
}

/// Searches a scene for the reps whose model objects have the identifiers of a list.
class ProductSearch {
public:
    explicit ProductSearch(const ProductIDs& ids) : ids_(ids) {}

    /// Whether `result` was made the path to the product.
    bool Find(KUVRep* root, KUVPickPath& result)
    {
        if (root && Visit(*root, result))
            return true;
        // A rep that went on with the list is the last one to be left: what is above it is not
        // searched any further.
        while (levels_.size() > firstLevel_) {
            Level& level = levels_.back();
            KUVRep* const child =
                level.next < level.children->Count() ? (*level.children)[level.next++] : nullptr;
            if (!child)
                Leave();
            else if (Visit(*child, result))
                return true;
        }
        return false;
    }

private:
    /// A bag on the way down, and the index of the child to visit next.
    struct Level {
        KUVRep* rep;
        const list<KUVRep>* children;
        int next;
    };
    enum class Match { None, Dead, GoesOn };

    /// Whether the list ends with `rep`; else its children come next, unless they cannot match.
    bool Visit(KUVRep& rep, KUVPickPath& result)
    {
        const list<KUVRep>* const children = rep.GetChildren();
        const bool hasChildren = HasFirstEntry(children);
        if (hasChildren && chain_.Has(&rep))
            return false;
        const Match match = MatchOf(rep);
        if (match == Match::GoesOn && matched_ >= ids_.size()) {
            Record(rep, result);
            return true;
        }
        if (match == Match::GoesOn)
            firstLevel_ = levels_.size();
        if (match == Match::Dead || !hasChildren)
            return false;
        chain_.Push(&rep);
        levels_.push_back({&rep, children, 0});
        return false;
    }

    Match MatchOf(const KUVRep& rep)
    {
        own_.clear();
        AddObjectIDs(own_, ModelObjectOf(rep));
        if (own_.empty())
            return Match::None;
        std::size_t same = 0;
        while (same < own_.size() && matched_ + same < ids_.size() &&
               own_[same] == ids_[matched_ + same])
            ++same;
        if (same < own_.size() && matched_ + same < ids_.size())
            return Match::Dead;
        matched_ += own_.size();
        return Match::GoesOn;
    }

    void Leave()
    {
        chain_.Pop();
        levels_.pop_back();
    }

    /// The root never is part of a path.
    void Record(KUVRep& last, KUVPickPath& result) const
    {
        Clear(result);
        for (std::size_t i = 1; i < levels_.size(); ++i)
            Append(result, *levels_[i].rep);
        if (!levels_.empty())
            Append(result, last);
        result.InitToTopRep();
    }

    const ProductIDs& ids_;
    std::size_t matched_ = 0;
    ProductIDs own_;
    std::vector<Level> levels_;
    VisRepChain chain_;
    /// The search ends when this many levels are left.
    std::size_t firstLevel_ = 0;
};

/// Whether a loader of `viewer` knows the product, and by which reps.
bool AskLoaders(const KUVViewer& viewer, const ProductIDs& ids, KUVRepPath& path)
{
    const KUVSpan<VisNativeProductLoader> registered =
        VisProductLoaderServices::GetRegisteredProductLoader(&viewer);
    // A loader that is asked may register another one.
    const std::vector<VisNativeProductLoader*> loaders(registered.begin(), registered.end());
    for (VisNativeProductLoader* const loader : loaders) {
        KUVRepPath computed;
        if (loader && loader->ComputeRepPathFromPathID(ids, computed) == KUV_OK) {
            path = computed;
            return true;
        }
    }
    return false;
}

/// Appends the reps below `start` that lead to `sought`, and that one, to `result`. False when it
/// does not hang below `start`; the first in breadth-first order counts.
bool AppendWayTo(const KUVRep& sought, KUVRep& start, KUVPickPath& result)
{
    struct Queued {
        KUVRep* rep;
        std::size_t parent;
    };
    std::vector<Queued> queue{{&start, 0}};
    std::unordered_set<const KUVRep*> seen{&start};
    for (std::size_t first = 0; first < queue.size(); ++first) {
        const list<KUVRep>* const children = queue[first].rep->GetChildren();
        const int count = children ? children->Count() : 0;
        for (int i = 0; i < count; ++i) {
            KUVRep* const child = (*children)[i];
            if (!child)
                break;
            if (!seen.insert(child).second)
                continue;
            queue.push_back({child, first});
            if (child != &sought)
                continue;
            std::vector<KUVRep*> way;
            for (std::size_t at = queue.size() - 1; at != 0; at = queue[at].parent)
                way.push_back(queue[at].rep);
            for (auto rep = way.rbegin(); rep != way.rend(); ++rep)
                Append(result, **rep);
            return true;
        }
    }
    return false;
}

KUVResult FindWithLoaders(const ProductIDs& ids, KUV3DViewpoint& viewpoint, KUVPickPath& result)
{
    Clear(result);
    const KUVViewer* const viewer = viewpoint.GetViewer();
    KUVRepPath reps;
    if (!viewer || !AskLoaders(*viewer, ids, reps))
        return KUV_FAIL;
    const KUVSceneGraph* const sceneGraph = viewpoint.GetSceneGraph();
    if (!sceneGraph)
        return KUV_FAIL;
    KUVRep* start = sceneGraph->GetRootRep();
    const int size = Size(reps);
    if (!start || !IsOfClass(*start, KUV3DBagRep::ClassId()) || size == 0)
        return KUV_OK;
    for (int i = 0; i < size; ++i) {
        KUVRep* const rep = RepAt(reps, i);
        if (!rep || !AppendWayTo(*rep, *start, result))
            return KUV_FAIL;
        start = rep;
    }
    return KUV_OK;
}

KUVResult FindInScene(const ProductIDs& ids, const KUV3DViewpoint& viewpoint, KUVPickPath& result)
{
    const KUVViewer* const viewer = viewpoint.GetViewer();
    const KUV3DViewpoint* const shown = viewer ? viewer->GetMain3DViewpoint() : nullptr;
    const KUVSceneGraph* const sceneGraph = shown ? shown->GetSceneGraph() : nullptr;
    if (!sceneGraph)
        return KUV_FAIL;
    return ProductSearch(ids).Find(sceneGraph->GetRootRep(), result) ? KUV_OK : KUV_FAIL;
}

bool IsRootOccurrence(const KUVRep* rep)
{
    const KUVBaseUnknown* const object = rep ? ModelObjectOf(*rep) : nullptr;
    return object && std::strcmp(object->IsA(), ROOT_OCCURRENCE) == 0;
}

/// Appends the identifiers of the products that `path` leads through, from the root occurrence
/// before its cursor down to the cursor; false when there is no such occurrence, or a model object
/// without identifier.
bool CollectDownToCursor(KUVPickPath& path, ProductIDs& ids)
{
    const int size = Size(path);
    const int cursor = CursorPosition(path);
    int first = 0;
    while (first < cursor && !IsRootOccurrence(RepAt(path, first)))
        ++first;
    if (first >= cursor)
        return false;
    for (int i = first; i <= cursor && i < size; ++i) {
        const KUVRep* const rep = RepAt(path, i);
        KUVBaseUnknown* const object = rep ? ModelObjectOf(*rep) : nullptr;
        const std::size_t before = ids.size();
        if (object)
            AddObjectIDs(ids, object);
        if (object && ids.size() == before)
            return false;
    }
    return !ids.empty();
}

/// Makes `path` the path to the product that loaders show under it; leaves it alone on failure.
bool MapToProduct(KUVPickPath& path)
{
    KUVViewpoint* const viewpoint = ViewpointOf(path);
    KUV3DViewpoint* const viewpoint3D = viewpoint ? viewpoint->As3DViewpoint() : nullptr;
    if (!viewpoint3D)
        return false;
    ProductIDs ids;
    if (VisPathUtility::GetProductIDFromProductLight(viewpoint3D->GetViewer(), path, ids) != KUV_OK)
        return false;
    KUVPickPath mapped(path);
    if (VisPathUtility::GenerateRepPathFromProductIDs(ids, viewpoint3D, &mapped, 0) != KUV_OK)
        return false;
    AssignExceptLock(path, mapped);
    return true;
}

}  // namespace

// ---- classification

VisPathUtility::VisPath_Type VisPathUtility::GetPickPathType(KUVPickPath* path)
{
    if (!path)
        return VisPath_Unknown;
    const KUVRep* const rep = CurrentRep(*path);
    if (Size(*path) == 0 || !rep || !IsCursorOnLast(*path) || !HasSubElements(*path))
        return VisPath_NoPrimitive;
    const list<int>* const numbers = SubElements(*path);
    const VisPath_Type type = TypeOfGraphicPrimitives(*rep, numbers);
    return type != VisPath_Unknown ? type : TypeOfVisPrimitives(*rep, numbers);
}

unsigned char VisPathUtility::CheckIfPickPathContains(KUVPickPath* path, const char* className)
{
    return path && className && FindProductLevel(*path, className) >= 0 ? 1 : 0;
}

bool IsProductLevel(const KUVRep* rep, const char* className)
{
    if (!rep || !IsOfClass(*rep, KUV3DFilterBagRep::ClassId()))
        return false;
    const KUVBaseUnknown* const object = ModelObjectOf(*rep);
    return object && std::strcmp(object->IsA(), className) == 0;
}

int FindProductLevel(KUVPickPath& path, const char* className)
{
    const int size = Size(path);
    for (int i = 0; i < size; ++i) {
        if (IsProductLevel(RepAt(path, i), className))
            return i;
    }
    return -1;
}

// ---- comparison

int VisPathUtility::ComparePath(KUVPickPath* first, KUVPickPath* second, unsigned char ignorePrefix)
{
    if (first == second)
        return 1;
    if (!first || !second)
        return -1;
    if (!ignorePrefix) {
        const int last = std::min(CursorPosition(*first), CursorPosition(*second));
        for (int i = 0; i <= last; ++i) {
            if (RepAt(*first, i) != RepAt(*second, i))
                return 0;
        }
    }
    if (CurrentRep(*first) != CurrentRep(*second))
        return -1;
    const bool same = IsCursorOnLast(*first) && Size(*first) == Size(*second)
                          ? AreSameNumbers(SubElements(*first), SubElements(*second))
                          : CursorPosition(*first) == CursorPosition(*second);
    return same ? 1 : -1;
}

// ---- enumeration

std::vector<KUVPickPath> VisPathUtility::GenerateAllKUVPickPath(KUV3DViewpoint& viewpoint,
                                                                unsigned char skipAttribute8,
                                                                unsigned char skipAttribute1)
{
    const KUVSceneGraph* const sceneGraph = viewpoint.GetSceneGraph();
    if (!sceneGraph)
        return {};
    const unsigned int skipped =
        (skipAttribute8 ? ATTRIBUTE_8 : 0U) | (skipAttribute1 ? ATTRIBUTE_1 : 0U);
    try {
        return LeafPaths(viewpoint, skipped).Collect(sceneGraph->GetRootRep());
    } catch (const std::bad_alloc&) {
        return {};
    }
}

// ---- product identifiers

KUVResult VisPathUtility::AddProductID(std::vector<KUVUnicodeString>& ids, KUVBaseUnknown* object)
{
    const std::size_t before = ids.size();
    try {
        AddObjectIDs(ids, object);
    } catch (const std::bad_alloc&) {
        return KUV_FAIL;
    }
    return ids.size() > before ? KUV_OK : KUV_FAIL;
}

KUVResult VisPathUtility::GetProductIDFromProductLight(KUVViewer* viewer, KUVPickPath& path,
                                                       std::vector<KUVUnicodeString>& ids)
{
    if (!viewer || VisProductLoaderServices::GetRegisteredProductLoader(viewer).empty())
        return KUV_FAIL;
    const std::size_t before = ids.size();
    try {
        const int size = Size(path);
        for (int i = 0; i < size; ++i) {
            const KUVRep* const rep = RepAt(path, i);
            KUVUnicodeString id;
            if (rep && VisNativeProductLoader::GetProductID(rep, id) == KUV_OK)
                ids.push_back(id);
        }
    } catch (const std::bad_alloc&) {
        return KUV_FAIL;
    }
    return ids.size() > before ? KUV_OK : KUV_FAIL;
}

KUVResult VisPathUtility::GenerateRepPathFromProductIDs(const std::vector<KUVUnicodeString>& ids,
                                                        KUV3DViewpoint* viewpoint,
                                                        KUVPickPath* result,
                                                        unsigned char useLoaders)
{
    if (!viewpoint || !result)
        return KUV_FAIL;
    try {
        return useLoaders != 0 ? FindWithLoaders(ids, *viewpoint, *result)
                               : FindInScene(ids, *viewpoint, *result);
    } catch (const std::bad_alloc&) {
        return KUV_FAIL;
    }
}

KUVResult VisPathUtility::GetCorrespondingPathFromProductLight(KUVPickPath& source,
                                                               KUVPickPath* result)
{
    if (!result)
        return KUV_FAIL;
    try {
        KUVPickPath path(source);
        result->Empty();
        KUVViewpoint* const viewpoint = ViewpointOf(path);
        KUV3DViewpoint* const viewpoint3D = viewpoint ? viewpoint->As3DViewpoint() : nullptr;
        ProductIDs ids;
        if (!viewpoint3D || !viewpoint3D->GetViewer() || !CollectDownToCursor(path, ids))
            return KUV_FAIL;
        return GenerateRepPathFromProductIDs(ids, viewpoint3D, result, 1);
    } catch (const std::bad_alloc&) {
        return KUV_FAIL;
    }
}

// ---- stripping

void VisPathUtility::StripPickPath(KUVPickPath* source, KUVPickPath& result,
                                   unsigned char mapToProduct, unsigned char* isMapped)
{
    if (!source)
        return;
    if (mapToProduct != 0 && isMapped)
        *isMapped = 0;
    try {
        if (source != &result)
            AssignExceptLock(result, *source);
        CutAtCursor(result);
        if (mapToProduct != 0 && MapToProduct(result) && isMapped)
            *isMapped = 1;
    } catch (const std::bad_alloc&) {
        // The result stays what it is so far.
    }
}
