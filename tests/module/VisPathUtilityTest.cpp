#include "VisPathUtility.h"

#include "private/PathReads.h"

#include "core/SceneViewpoint.h"
#include "support/Allocations.h"
#include "support/TestScene.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <vector>

using support::FreeRep;
using support::Held;
using support::PathTo;
using support::TestScene;

// In a namespace with a name: compilers complain of identity operations that nobody calls
// elsewhere.
namespace path_utility_test {

/// A primitive of a class that nobody knows.
class StrangePrimitive : public KUVGraphicPrimitive {
    KUV_DECLARE_CLASS
public:
    StrangePrimitive() = default;
};

/// A face of a class of its own.
class SpecialFace : public KUV3DFaceGP {
    KUV_DECLARE_CLASS
public:
    SpecialFace() : KUV3DFaceGP(1) {}
};

/// A rep without a class that counts as nothing.
class ClasslessBag : public KUV3DFilterBagRep {
public:
    KUVMetaClass* GetMetaObject() const override { return nullptr; }
};

/// A primitive that does not know its class.
class ClasslessPrimitive : public KUVGraphicPrimitive {
public:
    KUVMetaClass* GetMetaObject() const override { return nullptr; }
};

KUV_IMPLEMENT_CLASS(StrangePrimitive, KUVGraphicPrimitive, "KUVTests")
KUV_IMPLEMENT_CLASS(SpecialFace, KUV3DFaceGP, "KUVTests")

}  // namespace path_utility_test

using namespace path_utility_test;

namespace {

/// What `action` writes to standard output.
template <class Action>
std::string OutputOf(const Action& action)
{
    std::cout.flush();
    testing::internal::CaptureStdout();
    action();
    std::cout.flush();
    return testing::internal::GetCapturedStdout();
}

/// A scene with one free rep, and the path to it.
struct OneRep {
    TestScene scene;
    FreeRep* rep = scene.AddFreeRep(scene.Root());

    KUVPickPath Path(const list<int>& numbers) const { return PathTo({rep}, numbers); }
};

VisPathUtility::VisPath_Type TypeOf(KUVPickPath path)
{
    return VisPathUtility::GetPickPathType(&path);
}

int Compare(KUVPickPath first, KUVPickPath second, unsigned char ignorePrefix)
{
    return VisPathUtility::ComparePath(&first, &second, ignorePrefix);
}

std::vector<KUVPickPath> AllPaths(TestScene& scene, unsigned char skip8 = 0,
                                  unsigned char skip1 = 0)
{
    return VisPathUtility::GenerateAllKUVPickPath(scene.Viewpoint(), skip8, skip1);
}

std::vector<KUVRep*> RepsOf(KUVPickPath& path)
{
    std::vector<KUVRep*> reps;
    for (int i = 0; i < path.Size(); ++i)
        reps.push_back(path[i]);
    return reps;
}

using Reps = std::vector<KUVRep*>;

}  // namespace

// ---- GetPickPathType

TEST(VisPathUtility, HasTheSixTypesUnderTheirNumbers)
{
    EXPECT_EQ(VisPathUtility::VisPath_NoPrimitive, 0);
    EXPECT_EQ(VisPathUtility::VisPath_Vertex, 1);
    EXPECT_EQ(VisPathUtility::VisPath_Reserved, 2);
    EXPECT_EQ(VisPathUtility::VisPath_Edge, 3);
    EXPECT_EQ(VisPathUtility::VisPath_Face, 4);
    EXPECT_EQ(VisPathUtility::VisPath_Unknown, 5);
    EXPECT_EQ(sizeof(VisPathUtility::VisPath_Type), 4U);
}

TEST(VisPathUtility, NoPathIsOfUnknownType)
{
    EXPECT_EQ(VisPathUtility::GetPickPathType(nullptr), VisPathUtility::VisPath_Unknown);
}

TEST(VisPathUtility, AnEmptyPathNamesNoPrimitive)
{
    KUVPickPath path;
    EXPECT_EQ(VisPathUtility::GetPickPathType(&path), VisPathUtility::VisPath_NoPrimitive);
    path.Load({1});
    EXPECT_EQ(VisPathUtility::GetPickPathType(&path), VisPathUtility::VisPath_NoPrimitive);
}

TEST(VisPathUtility, APathWithItsCursorOnAnInnerRepNamesNoPrimitive)
{
    TestScene scene;
    KUVRep* const shape = scene.AddShape(scene.Root(), "Bolt", {12});
    EXPECT_EQ(TypeOf(PathTo({scene.Root(), shape}, {1})), VisPathUtility::VisPath_Face);
    EXPECT_EQ(TypeOf(PathTo({scene.Root(), shape}, {1}, 0)), VisPathUtility::VisPath_NoPrimitive);
}

TEST(VisPathUtility, APathWithoutCurrentRepNamesNoPrimitive)
{
    TestScene scene;
    KUVRep* const shape = scene.AddShape(scene.Root(), "Bolt", {12});
    EXPECT_EQ(TypeOf(PathTo({shape}, {1}, -1)), VisPathUtility::VisPath_NoPrimitive);
    EXPECT_EQ(TypeOf(PathTo({shape}, {1}, 1)), VisPathUtility::VisPath_NoPrimitive);
}

TEST(VisPathUtility, APathWithoutSubElementsNamesNoPrimitive)
{
    TestScene scene;
    KUVRep* const shape = scene.AddShape(scene.Root(), "Bolt", {12});
    EXPECT_EQ(TypeOf(PathTo({shape})), VisPathUtility::VisPath_NoPrimitive);
    list<int> startsAbsent;
    startsAbsent.AppendAbsent();
    startsAbsent.Append(1);
    EXPECT_EQ(TypeOf(PathTo({shape}, startsAbsent)), VisPathUtility::VisPath_NoPrimitive);
}

TEST(VisPathUtility, FacesEdgesAndVerticesOfAShapeAreToldApart)
{
    TestScene scene;
    KUVRep* const shape = scene.AddShape(scene.Root(), "Bolt", {12, 4}, 3, 2);
    EXPECT_EQ(TypeOf(PathTo({shape}, {2})), VisPathUtility::VisPath_Face);
    EXPECT_EQ(TypeOf(PathTo({shape}, {3})), VisPathUtility::VisPath_Edge);
    EXPECT_EQ(TypeOf(PathTo({shape}, {5})), VisPathUtility::VisPath_Edge);
    EXPECT_EQ(TypeOf(PathTo({shape}, {6})), VisPathUtility::VisPath_Vertex);
    EXPECT_EQ(TypeOf(PathTo({shape}, {7})), VisPathUtility::VisPath_Vertex);
    EXPECT_EQ(TypeOf(PathTo({shape}, {8})), VisPathUtility::VisPath_Unknown);
}

TEST(VisPathUtility, EachPrimitiveClassHasItsType)
{
    OneRep one;
    one.rep->SetPrimitive(1, new KUV3DEdgeGP);
    one.rep->SetPrimitive(2, new KUV3DLineGP);
    one.rep->SetPrimitive(3, new KUV3DReferencePlaneGP);
    one.rep->SetPrimitive(4, new KUV3DFixedArrowGP);
    one.rep->SetPrimitive(5, new KUV2DPolygonGP);
    one.rep->SetPrimitive(6, new Vis3DDynamicLeaderGP);
    one.rep->SetPrimitive(7, new KUV3DFaceGP(3));
    one.rep->SetPrimitive(8, new KUV3DMarkerGP);
    one.rep->SetPrimitive(9, new SpecialFace);
    const std::string output = OutputOf([&] {
        for (int number = 1; number <= 6; ++number)
            EXPECT_EQ(TypeOf(one.Path({number})), VisPathUtility::VisPath_Edge) << number;
        EXPECT_EQ(TypeOf(one.Path({7})), VisPathUtility::VisPath_Face);
        EXPECT_EQ(TypeOf(one.Path({8})), VisPathUtility::VisPath_Vertex);
        EXPECT_EQ(TypeOf(one.Path({9})), VisPathUtility::VisPath_Face) << "a kind of face";
    });
    EXPECT_EQ(output, "");
}

TEST(VisPathUtility, TheFirstSubElementThatHasATypeDecides)
{
    TestScene scene;
    KUVRep* const shape = scene.AddShape(scene.Root(), "Bolt", {12}, 1, 1);
    EXPECT_EQ(TypeOf(PathTo({shape}, {3, 1, 2})), VisPathUtility::VisPath_Vertex);
    EXPECT_EQ(TypeOf(PathTo({shape}, {99, 2, 1})), VisPathUtility::VisPath_Edge)
        << "a number without primitive is passed over";
}

TEST(VisPathUtility, AnUnknownPrimitiveBeforeAFaceGivesFaceAfterOneLine)
{
    OneRep one;
    one.rep->SetPrimitive(1, new StrangePrimitive);
    one.rep->SetPrimitive(2, new KUV3DFaceGP(3));
    const std::string output = OutputOf([&] {
        EXPECT_EQ(TypeOf(one.Path({1, 2})), VisPathUtility::VisPath_Face);
    });
    EXPECT_EQ(output, "Unknown graphic primitive: StrangePrimitive\n");
}

TEST(VisPathUtility, ABoundingPrimitiveIsNoFace)
{
    OneRep one;
    one.rep->SetPrimitive(1, new KUV3DBoundingGP(3));
    const std::string output =
        OutputOf([&] { EXPECT_EQ(TypeOf(one.Path({1})), VisPathUtility::VisPath_Unknown); });
    EXPECT_EQ(output, "Unknown graphic primitive: KUV3DBoundingGP\n");
}

TEST(VisPathUtility, APrimitiveWithoutClassIsPassedOverInSilence)
{
    OneRep one;
    one.rep->SetPrimitive(1, new ClasslessPrimitive);
    one.rep->SetPrimitive(2, new KUV3DMarkerGP);
    const std::string output = OutputOf([&] {
        EXPECT_EQ(TypeOf(one.Path({1, 2})), VisPathUtility::VisPath_Vertex);
        EXPECT_EQ(TypeOf(one.Path({1})), VisPathUtility::VisPath_Unknown);
    });
    EXPECT_EQ(output, "");
}

TEST(VisPathUtility, AnAbsentSubElementEndsTheList)
{
    OneRep one;
    one.rep->SetPrimitive(2, new KUV3DFaceGP(3));
    list<int> numbers{1};
    numbers.AppendAbsent();
    numbers.Append(2);
    EXPECT_EQ(TypeOf(one.Path(numbers)), VisPathUtility::VisPath_Unknown);
}

TEST(VisPathUtility, APrimitiveGroupGivesFaceAndWritesTheTypeCodeEveryTime)
{
    TestScene scene;
    VisPrimitiveGroupRep* const group = scene.Add(scene.Root(), VisPrimitiveGroupRep::CreateRep());
    const Held<VisPrimitive> marker(new VisPrimitive(17));
    const Held<VisPrimitive> other(new VisPrimitive(-4));
    group->SetVisPrimitive(2, marker.get());
    group->SetVisPrimitive(3, other.get());
    const std::string output = OutputOf([&] {
        EXPECT_EQ(TypeOf(PathTo({group}, {1, 2, 3})), VisPathUtility::VisPath_Face);
        EXPECT_EQ(TypeOf(PathTo({group}, {3})), VisPathUtility::VisPath_Face);
    });
    EXPECT_EQ(output, "Unknown vis primitive: 17\nUnknown vis primitive: -4\n");
}

TEST(VisPathUtility, APrimitiveGroupWithoutThatPrimitiveIsOfUnknownType)
{
    TestScene scene;
    VisPrimitiveGroupRep* const group = scene.Add(scene.Root(), VisPrimitiveGroupRep::CreateRep());
    const std::string output =
        OutputOf([&] { EXPECT_EQ(TypeOf(PathTo({group}, {1})), VisPathUtility::VisPath_Unknown); });
    EXPECT_EQ(output, "");
}

TEST(VisPathUtility, ARepWithoutClassIsNoPrimitiveGroup)
{
    const Held<ClasslessBag> bag(new ClasslessBag);
    EXPECT_EQ(TypeOf(PathTo({bag.get()}, {1})), VisPathUtility::VisPath_Unknown);
}

// ---- CheckIfPickPathContains

TEST(VisPathUtility, FindsTheClassOfAModelObjectUnderAFilterBag)
{
    TestScene scene;
    auto* const root = scene.AddRootOccurrence(scene.Root(), "Pump");
    auto* const rotor = scene.AddOccurrence(root, "Rotor");
    KUVRep* const shape = scene.AddShape(rotor, "Blade", {8});
    KUVPickPath path = PathTo({root, rotor, shape});
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "OXMRootOccurrence"), 1);
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "OXMInstanceOccurrence"), 1);
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "LightVisuProductLoaderHandler"), 0);
}

TEST(VisPathUtility, TheClassNameIsComparedLetterForLetter)
{
    TestScene scene;
    auto* const root = scene.AddRootOccurrence(scene.Root(), "Pump");
    KUVPickPath path = PathTo({root});
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "oxmrootoccurrence"), 0);
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "OXMRoot"), 0);
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "OXMRootOccurrence "), 0);
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "ProductOccurrence"), 0)
        << "a base class is not the class";
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, ""), 0);
}

TEST(VisPathUtility, LooksAtTheWholePathWhateverItsCursor)
{
    TestScene scene;
    auto* const root = scene.AddRootOccurrence(scene.Root(), "Pump");
    for (const int cursor : {-1, 0, 1, 2}) {
        KUVPickPath path = PathTo({scene.Root(), root}, {}, cursor);
        EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "OXMRootOccurrence"), 1);
        EXPECT_EQ(path.GetCursorPosition(), cursor);
    }
}

TEST(VisPathUtility, AModelObjectUnderAnotherKindOfRepDoesNotCount)
{
    TestScene scene;
    auto* const root = scene.AddRootOccurrence(scene.Root(), "Pump");
    KUV3DBagRep* const bag = scene.AddBag(scene.Root());
    bag->SetModelIdentificator(root->GetModelIdentificator());
    KUVPickPath path = PathTo({bag});
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "OXMRootOccurrence"), 0);
}

TEST(VisPathUtility, AFilterBagThatHidesItsClassOrItsObjectIsPassedOver)
{
    TestScene scene;
    auto* const root = scene.AddRootOccurrence(scene.Root(), "Pump");
    const Held<ClasslessBag> classless(new ClasslessBag);
    classless->SetModelIdentificator(root->GetModelIdentificator());
    KUV3DFilterBagRep* const bare = scene.Add(scene.Root(), KUV3DFilterBagRep::CreateRep());
    const Held<KUVModelIdentificator> nothing(new KUVModelIdentificator(nullptr));
    KUV3DFilterBagRep* const objectless = scene.Add(scene.Root(), KUV3DFilterBagRep::CreateRep());
    objectless->SetModelIdentificator(nothing.get());
    KUVPickPath path = PathTo({classless.get(), bare, objectless});
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "OXMRootOccurrence"), 0);
}

TEST(VisPathUtility, ContainsNothingWithoutPathOrName)
{
    KUVPickPath path;
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(nullptr, "OXMRootOccurrence"), 0);
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, nullptr), 0);
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "OXMRootOccurrence"), 0);
}

// ---- ComparePath

TEST(VisPathUtility, APathIsTheSameAsItselfEvenWithoutPath)
{
    KUVPickPath path;
    EXPECT_EQ(VisPathUtility::ComparePath(&path, &path, 0), 1);
    EXPECT_EQ(VisPathUtility::ComparePath(&path, &path, 1), 1);
    EXPECT_EQ(VisPathUtility::ComparePath(nullptr, nullptr, 0), 1);
    EXPECT_EQ(VisPathUtility::ComparePath(nullptr, nullptr, 1), 1);
}

TEST(VisPathUtility, APathDiffersFromNoPath)
{
    KUVPickPath path;
    for (const bool ignorePrefix : {false, true}) {
        EXPECT_EQ(VisPathUtility::ComparePath(&path, nullptr, ignorePrefix), -1);
        EXPECT_EQ(VisPathUtility::ComparePath(nullptr, &path, ignorePrefix), -1);
    }
}

TEST(VisPathUtility, SubElementsDecideBetweenPathsToTheSameLastRep)
{
    OneRep one;
    for (const bool ignorePrefix : {false, true}) {
        EXPECT_EQ(Compare(one.Path({5, 7}), one.Path({5}), ignorePrefix), -1);
        EXPECT_EQ(Compare(one.Path({5}), one.Path({5, 7}), ignorePrefix), -1);
        EXPECT_EQ(Compare(one.Path({5, 7}), one.Path({5, 7}), ignorePrefix), 1);
        EXPECT_EQ(Compare(one.Path({5, 7}), one.Path({5, 8}), ignorePrefix), -1);
        EXPECT_EQ(Compare(one.Path({7, 5}), one.Path({5, 7}), ignorePrefix), -1);
        EXPECT_EQ(Compare(one.Path({}), one.Path({}), ignorePrefix), 1);
        EXPECT_EQ(Compare(one.Path({}), one.Path({0}), ignorePrefix), -1);
    }
}

TEST(VisPathUtility, WhatFollowsAnAbsentSubElementIsNotCompared)
{
    OneRep one;
    list<int> numbers{5};
    numbers.AppendAbsent();
    numbers.Append(7);
    EXPECT_EQ(Compare(one.Path(numbers), one.Path({5}), 1), 1);
    EXPECT_EQ(Compare(one.Path({5}), one.Path(numbers), 1), 1);
    EXPECT_EQ(Compare(one.Path(numbers), one.Path({5, 7}), 1), -1);
}

TEST(VisPathUtility, PathsThatDifferAtTheFirstRepPartThereUnlessThePrefixIsIgnored)
{
    TestScene scene;
    KUVRep* const a = scene.AddBag(scene.Root());
    KUVRep* const b = scene.AddBag(scene.Root());
    KUVRep* const leaf = scene.AddFreeRep(scene.Root());
    KUVRep* const otherLeaf = scene.AddFreeRep(scene.Root());
    EXPECT_EQ(Compare(PathTo({a, leaf}), PathTo({b, otherLeaf}), 0), 0);
    EXPECT_EQ(Compare(PathTo({a, leaf}), PathTo({b, otherLeaf}), 1), -1);
    EXPECT_EQ(Compare(PathTo({a, leaf}), PathTo({b, leaf}), 0), 0);
    EXPECT_EQ(Compare(PathTo({a, leaf}), PathTo({b, leaf}), 1), 1)
        << "current reps and cursors agree";
}

TEST(VisPathUtility, RepsBehindTheShorterCursorAreNotPartOfThePrefix)
{
    TestScene scene;
    KUVRep* const top = scene.AddBag(scene.Root());
    KUVRep* const a = scene.AddBag(scene.Root());
    KUVRep* const b = scene.AddBag(scene.Root());
    EXPECT_EQ(Compare(PathTo({top, a}, {}, 0), PathTo({top, b}, {}, 0), 0), 1)
        << "both stand on the first rep, with more behind it";
    EXPECT_EQ(Compare(PathTo({top, a}, {}, 0), PathTo({top, b}), 0), -1);
    EXPECT_EQ(Compare(PathTo({top, a}), PathTo({top, b}, {}, 0), 0), -1);
}

TEST(VisPathUtility, ACursorBeforeTheFirstRepSkipsThePrefix)
{
    TestScene scene;
    KUVRep* const a = scene.AddBag(scene.Root());
    KUVRep* const b = scene.AddBag(scene.Root());
    EXPECT_EQ(Compare(PathTo({a}, {}, -1), PathTo({b}), 0), -1) << "not 0: nothing was compared";
    EXPECT_EQ(Compare(PathTo({a}, {}, -1), PathTo({b}, {}, -1), 0), 1)
        << "neither has a current rep, and the cursors agree";
}

TEST(VisPathUtility, SubElementsCountOnlyWhenTheFirstPathIsOnItsLastRep)
{
    TestScene scene;
    KUVRep* const bag = scene.AddBag(scene.Root());
    KUVRep* const leaf = scene.AddFreeRep(scene.Root());
    EXPECT_EQ(Compare(PathTo({bag, leaf}, {1}, 0), PathTo({bag, leaf}, {2}, 0), 1), 1)
        << "both stand on the bag, whatever was picked in it";
    EXPECT_EQ(Compare(PathTo({bag}, {1}), PathTo({bag, leaf}, {2}, 0), 1), 1)
        << "on its last rep, but of another size: the cursors decide";
    EXPECT_EQ(Compare(PathTo({bag, leaf}, {1}, 0), PathTo({bag}, {2}), 1), 1);
}

TEST(VisPathUtility, TheSameRepAtAnotherCursorIsNotTheSame)
{
    TestScene scene;
    KUVRep* const bag = scene.AddBag(scene.Root());
    KUVRep* const leaf = scene.AddFreeRep(scene.Root());
    EXPECT_EQ(Compare(PathTo({leaf}), PathTo({bag, leaf}), 1), -1);
    EXPECT_EQ(Compare(PathTo({bag, leaf, bag}, {}, 0), PathTo({leaf, bag, leaf}, {}, 1), 1), -1);
}

TEST(VisPathUtility, ComparisonDependsOnTheOrderOfThePaths)
{
    TestScene scene;
    KUVRep* const rep = scene.AddBag(scene.Root());
    // The same rep stands twice in the paths; the cursors are on different ones.
    EXPECT_EQ(Compare(PathTo({rep, rep}, {3}, 1), PathTo({rep, rep}, {3}, 0), 1), 1)
        << "the first is on its last rep: equal sub-elements make them the same";
    EXPECT_EQ(Compare(PathTo({rep, rep}, {3}, 0), PathTo({rep, rep}, {3}, 1), 1), -1)
        << "the first is not: the cursors differ";
}

// ---- lock

TEST(VisPathUtility, LockedPathsAreReadAndStayLocked)
{
    TestScene scene;
    auto* const root = scene.AddRootOccurrence(scene.Root(), "Pump");
    KUVRep* const shape = scene.AddShape(root, "Blade", {8});
    KUVPickPath path = PathTo({root, shape}, {1});
    KUVPickPath same(path);
    path.LockPath();
    EXPECT_EQ(VisPathUtility::GetPickPathType(&path), VisPathUtility::VisPath_Face);
    EXPECT_EQ(VisPathUtility::CheckIfPickPathContains(&path, "OXMRootOccurrence"), 1);
    EXPECT_EQ(VisPathUtility::ComparePath(&path, &same, 0), 1);
    EXPECT_EQ(VisPathUtility::ComparePath(&same, &path, 0), 1);
    EXPECT_TRUE(path.IsLocked());
    EXPECT_FALSE(same.IsLocked());
}

TEST(VisPathUtility, ALockIsPausedForOneReadOnly)
{
    TestScene scene;
    KUVPickPath path = PathTo({scene.Root()}, {4});
    path.LockPath();
    EXPECT_EQ(path.Size(), 0) << "a locked path refuses reads";
    EXPECT_EQ(Size(path), 1);
    EXPECT_EQ(CursorPosition(path), 0);
    EXPECT_EQ(CurrentRep(path), scene.Root());
    EXPECT_EQ(RepAt(path, 0), scene.Root());
    EXPECT_EQ(SubElements(path)->Count(), 1);
    EXPECT_TRUE(Contains(path, path));
    EXPECT_TRUE(path.IsLocked());
}

// ---- GenerateAllKUVPickPath

TEST(VisPathUtility, GivesOnePathForEachLeafInDepthFirstOrder)
{
    TestScene scene;
    KUV3DBagRep* const a = scene.AddBag(scene.Root());
    KUVRep* const b = scene.AddFreeRep(scene.Root());
    KUV3DBagRep* const inner = scene.AddBag(a);
    KUVRep* const first = scene.AddFreeRep(inner);
    KUVRep* const second = scene.AddFreeRep(a);
    std::vector<KUVPickPath> paths = AllPaths(scene);
    ASSERT_EQ(paths.size(), 3U);
    EXPECT_EQ(RepsOf(paths[0]), (Reps{a, inner, first})) << "the root is no part of it";
    EXPECT_EQ(RepsOf(paths[1]), (Reps{a, second}));
    EXPECT_EQ(RepsOf(paths[2]), (Reps{b}));
    for (KUVPickPath& path : paths) {
        EXPECT_EQ(path.GetCursorPosition(), -1);
        EXPECT_EQ(path.GetViewpoint(), &scene.Viewpoint());
        EXPECT_FALSE(path.IsLocked());
        for (int i = path.Size() - 1; i >= 0; --i) {
            EXPECT_EQ(path.GetTopRep(), path[i]) << "each rep was pushed as well";
            path.Pop();
        }
        EXPECT_EQ(path.GetTopRep(), nullptr);
    }
}

TEST(VisPathUtility, ASceneWithOnlyARootRepGivesOnePathWithoutReps)
{
    TestScene scene;
    std::vector<KUVPickPath> paths = AllPaths(scene);
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(paths[0].Size(), 0);
    EXPECT_EQ(paths[0].GetTopRep(), nullptr);
}

TEST(VisPathUtility, AFilteredRootGivesNoPaths)
{
    TestScene scene;
    scene.AddFreeRep(scene.Root());
    scene.Root()->SetFiltered(1);
    EXPECT_TRUE(AllPaths(scene).empty());
}

TEST(VisPathUtility, AViewpointWithoutSceneGivesNoPaths)
{
    const Held<core::SceneViewpoint> viewpoint(core::SceneViewpoint::Create(nullptr));
    EXPECT_TRUE(VisPathUtility::GenerateAllKUVPickPath(*viewpoint, 0, 0).empty());
}

TEST(VisPathUtility, FilteredAndHiddenRepsAreLeftOutWithWhatIsBelow)
{
    TestScene scene;
    KUV3DBagRep* const filtered = scene.AddBag(scene.Root());
    scene.AddFreeRep(filtered);
    filtered->SetFiltered(1);
    KUV3DBagRep* const hidden = scene.AddBag(scene.Root());
    scene.AddFreeRep(hidden);
    hidden->SetTakesPartInDisplay(0);
    KUVRep* const shown = scene.AddFreeRep(scene.Root());
    std::vector<KUVPickPath> paths = AllPaths(scene);
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(RepsOf(paths[0]), (Reps{shown}));
}

TEST(VisPathUtility, ABagWhoseChildrenAreAllHiddenIsNoLeaf)
{
    TestScene scene;
    scene.AddFreeRep(scene.AddBag(scene.Root()))->SetFiltered(1);
    EXPECT_TRUE(AllPaths(scene).empty());
}

TEST(VisPathUtility, AnEmptyBagIsALeaf)
{
    TestScene scene;
    KUV3DBagRep* const empty = scene.AddBag(scene.Root());
    std::vector<KUVPickPath> paths = AllPaths(scene);
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(RepsOf(paths[0]), (Reps{empty}));
}

TEST(VisPathUtility, TheAttributeFlagsLeaveOutRepsWithTheirBit)
{
    TestScene scene;
    KUV3DBagRep* const one = scene.AddBag(scene.Root());
    scene.AddFreeRep(one);
    one->SetGraphicAttributeSet({1U, 0U});
    KUV3DBagRep* const eight = scene.AddBag(scene.Root());
    scene.AddFreeRep(eight);
    eight->SetGraphicAttributeSet({8U, 0U});
    KUV3DBagRep* const others = scene.AddBag(scene.Root());
    scene.AddFreeRep(others);
    others->SetGraphicAttributeSet({~9U, ~0U});
    const auto firstReps = [&](unsigned char skip8, unsigned char skip1) {
        Reps reps;
        for (KUVPickPath& path : AllPaths(scene, skip8, skip1))
            reps.push_back(path[0]);
        return reps;
    };
    EXPECT_EQ(firstReps(0, 0), (Reps{one, eight, others}));
    EXPECT_EQ(firstReps(0, 1), (Reps{eight, others}));
    EXPECT_EQ(firstReps(1, 0), (Reps{one, others}));
    EXPECT_EQ(firstReps(1, 1), (Reps{others}));
}

TEST(VisPathUtility, RepsWithoutAttributesOfTheirOwnHaveNeitherBit)
{
    const KUVGraphicAttributeSet attributes;
    EXPECT_EQ(attributes.firstWord, 0xFD040400U);
    EXPECT_EQ(attributes.secondWord, 255U);
    TestScene scene;
    scene.AddFreeRep(scene.Root());
    EXPECT_EQ(AllPaths(scene, 1, 1).size(), 1U);
}

TEST(VisPathUtility, AnAbsentChildEndsTheChildren)
{
    TestScene scene;
    FreeRep* const bag = scene.AddFreeRep(scene.Root());
    FreeRep* const shown = scene.AddFreeRep(scene.AddBag(scene.Root()));
    bag->SetChildren({shown, nullptr, scene.Root()});
    std::vector<KUVPickPath> paths = AllPaths(scene);
    ASSERT_EQ(paths.size(), 2U);
    EXPECT_EQ(RepsOf(paths[0]), (Reps{bag, shown}));
    bag->SetChildren({nullptr, shown});
    EXPECT_EQ(RepsOf(AllPaths(scene)[0]), (Reps{bag})) << "a leaf: its first entry is absent";
}

TEST(VisPathUtility, ARepThatHangsBelowItselfIsLeftOut)
{
    TestScene scene;
    KUV3DBagRep* const bag = scene.AddBag(scene.Root());
    FreeRep* const loop = scene.AddFreeRep(bag);
    KUVRep* const leaf = scene.AddFreeRep(bag);
    loop->SetChildren({bag, loop, leaf});
    std::vector<KUVPickPath> paths = AllPaths(scene);
    ASSERT_EQ(paths.size(), 2U);
    EXPECT_EQ(RepsOf(paths[0]), (Reps{bag, loop, leaf}));
    EXPECT_EQ(RepsOf(paths[1]), (Reps{bag, leaf}));
}

TEST(VisPathUtility, ARepInSeveralPlacesIsFoundInEachOfThem)
{
    TestScene scene;
    KUV3DBagRep* const a = scene.AddBag(scene.Root());
    KUV3DBagRep* const b = scene.AddBag(scene.Root());
    KUVRep* const shared = scene.AddFreeRep(a);
    b->AddChild(shared);
    EXPECT_EQ(AllPaths(scene).size(), 2U);
}

TEST(VisPathUtility, EnumeratesAHundredThousandLevels)
{
    TestScene scene;
    KUV3DBagRep* bag = scene.Root();
    for (int level = 0; level < 100000; ++level)
        bag = scene.AddBag(bag);
    std::vector<KUVPickPath> paths = AllPaths(scene);
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(paths[0].Size(), 100000);
    EXPECT_EQ(paths[0][99999], bag);
}

TEST(VisPathUtility, EnumerationSurvivesEveryFailingAllocation)
{
    TestScene scene;
    for (int i = 0; i < 3; ++i)
        scene.AddFreeRep(scene.AddBag(scene.AddBag(scene.Root())));
    scene.Viewpoint();
    const std::size_t failures = support::ForEveryFailingAllocation([&] { AllPaths(scene); });
    EXPECT_GT(failures, 0U);
    std::cout << "count: " << failures << " failing allocations while enumerating a scene\n";
}
