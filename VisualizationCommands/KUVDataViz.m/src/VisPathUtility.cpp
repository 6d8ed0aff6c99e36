#include "VisPathUtility.h"

#include "private/PathReads.h"
#include "private/ProductLevels.h"
#include "private/RepChain.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <new>

namespace {

constexpr unsigned int ATTRIBUTE_1 = 1U;
constexpr unsigned int ATTRIBUTE_8 = 8U;

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

    static void Append(KUVPickPath& path, KUVRep& rep)
    {
        path.AddRep(&rep, 1);
        path.Push(&rep);
    }

    KUV3DViewpoint& viewpoint_;
    unsigned int skippedAttributes_;
    std::vector<Bag> bags_;
    VisRepChain chain_;
    std::vector<KUVPickPath> paths_;
};

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
