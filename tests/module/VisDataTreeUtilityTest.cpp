#include "VisDataTreeUtility.h"

#include "ReferenceSceneTree.h"
#include "SceneTrees.h"
#include "VisPathUtility.h"
#include "private/ChildIndex.h"
#include "private/NodePath.h"
#include "private/Reference.h"

#include "core/ProductObjects.h"
#include "core/StandaloneViewer.h"
#include "support/Allocations.h"
#include "support/TestScene.h"
#include "support/TreeBuilders.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

using scenes::Icon;
using scenes::Label;
using scenes::NodeOf;
using scenes::Pump;
using scenes::SceneTree;
using scenes::TreeOf;
using support::FreeRep;
using support::Held;
using support::ListOf;
using support::PathTo;
using support::TestScene;

// In a namespace with a name: compilers complain of identity operations that nobody calls
// elsewhere.
namespace data_tree_utility_test {

/// A model object without any interface.
class PlainObject : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
};

/// A model object with an icon and no alias.
class IconObject : public KUVBaseUnknown, public KUVIIcon {
    KUV_DECLARE_CLASS
public:
    using KUVBaseUnknown::QueryInterface;
    KUVResult QueryInterface(KUVClassId interfaceId, void** result) override
    {
        if (interfaceId != KUVClassIdOf(KUVIIcon::InterfaceName()))
            return KUVBaseUnknown::QueryInterface(interfaceId, result);
        AddRef();
        *result = static_cast<KUVIIcon*>(this);
        return KUV_OK;
    }
    unsigned int AddInterfaceRef() override { return AddRef(); }
    unsigned int ReleaseInterface() override { return Release(); }
    KUVUnicodeString GetIconName() const override { return "Gear"; }
};

KUV_IMPLEMENT_CLASS(PlainObject, KUVBaseUnknown, "KUVTests")
KUV_IMPLEMENT_CLASS(IconObject, KUVBaseUnknown, "KUVTests")

}  // namespace data_tree_utility_test

using namespace data_tree_utility_test;

namespace {

void ShowObject(KUVRep* rep, KUVBaseUnknown* adopted)
{
    const Held<KUVBaseUnknown> object(adopted);
    const Held<KUVModelIdentificator> identificator(new KUVModelIdentificator(adopted));
    rep->SetModelIdentificator(identificator.get());
}

}  // namespace

// ---- CreateVisDataTree

TEST(VisDataTreeUtility, WithoutPathANodeHasNothing)
{
    const SceneTree node(VisDataTreeUtility::CreateVisDataTree(nullptr, 1));
    ASSERT_TRUE(node);
    EXPECT_EQ(node->GetData(), nullptr);
    EXPECT_EQ(Label(node.get()), "");
    EXPECT_EQ(Icon(node.get()), "");
    EXPECT_EQ(node->IsLeafObject(), 0);
    EXPECT_EQ(node->IsMergeable(), 0);
    EXPECT_EQ(node->GetReferenceCount(), 1U);
}

TEST(VisDataTreeUtility, WithoutCurrentRepANodeHasItsPathAndNoName)
{
    Pump pump;
    for (const int cursor : {-1, 3}) {
        const SceneTree node = NodeOf(PathTo({pump.pump, pump.rotor, pump.blade}, {1}, cursor), 1);
        ASSERT_TRUE(node->GetData());
        EXPECT_EQ(PickPathOf(*node)->Size(), 3);
        EXPECT_EQ(Label(node.get()), "");
        EXPECT_EQ(Icon(node.get()), "");
        EXPECT_EQ(node->IsLeafObject(), 0);
        EXPECT_EQ(node->IsMergeable(), 0);
    }
}

TEST(VisDataTreeUtility, ANodeKeepsACopyOfThePath)
{
    Pump pump;
    KUVPickPath path = PathTo({pump.pump, pump.rotor, pump.blade}, {2}, 1);
    path.LockPath();
    const SceneTree node(VisDataTreeUtility::CreateVisDataTree(&path, 0));
    EXPECT_TRUE(path.IsLocked());
    ASSERT_NE(node->GetData(), NodeDataOf(&path));
    KUVPickPath* const copy = PickPathOf(*node);
    EXPECT_TRUE(copy->IsLocked()) << "a copy takes the lock over";
    copy->UnlockPath();
    EXPECT_EQ(copy->GetCursorPosition(), 1);
    EXPECT_EQ(copy->GetCurrentRep(), pump.rotor);
    EXPECT_EQ(*(*copy->GetSubElementList())[0], 2);
    EXPECT_EQ(Label(node.get()), "Rotor") << "read through the lock";
}

TEST(VisDataTreeUtility, AnObjectGivesItsAliasAndItsIcon)
{
    Pump pump;
    const SceneTree rotor = NodeOf(PathTo({pump.pump, pump.rotor}), 1);
    EXPECT_EQ(Label(rotor.get()), "Rotor");
    EXPECT_EQ(Icon(rotor.get()), "I_VisAssembly.png");
    EXPECT_EQ(rotor->IsLeafObject(), 0);
    EXPECT_EQ(rotor->IsMergeable(), 0);
    const SceneTree blade = NodeOf(pump.ToBlade(), 1);
    EXPECT_EQ(Label(blade.get()), "Blade");
    EXPECT_EQ(Icon(blade.get()), "VisLevelSelectorGeometry.png");
    EXPECT_EQ(blade->IsLeafObject(), 0);
    EXPECT_EQ(blade->IsMergeable(), 0);
}

TEST(VisDataTreeUtility, APickedPrimitiveIsALeafObjectNamedAfterItsKind)
{
    Pump pump;
    const SceneTree face = NodeOf(pump.ToBlade({2}), 1);
    EXPECT_EQ(Label(face.get()), "Face");
    EXPECT_EQ(Icon(face.get()), "I_VisFace.png");
    const SceneTree edge = NodeOf(pump.ToBlade({4}), 1);
    EXPECT_EQ(Label(edge.get()), "Edge");
    EXPECT_EQ(Icon(edge.get()), "I_VisEdge.png");
    const SceneTree vertex = NodeOf(pump.ToBlade({6}), 1);
    EXPECT_EQ(Label(vertex.get()), "Point");
    EXPECT_EQ(Icon(vertex.get()), "I_VisVertex.png");
    for (const SceneTree* node : {&face, &edge, &vertex}) {
        EXPECT_EQ((*node)->IsLeafObject(), 1);
        EXPECT_EQ((*node)->IsMergeable(), 0);
    }
}

TEST(VisDataTreeUtility, SubElementsBehindTheCursorDoNotMakeAPrimitive)
{
    Pump pump;
    const SceneTree node = NodeOf(PathTo({pump.pump, pump.rotor, pump.blade}, {1}, 1));
    EXPECT_EQ(Label(node.get()), "Rotor");
    EXPECT_EQ(node->IsLeafObject(), 0);
}

TEST(VisDataTreeUtility, AnAbsentFirstSubElementDoesNotMakeAPrimitive)
{
    Pump pump;
    list<int> numbers;
    numbers.AppendAbsent();
    numbers.Append(1);
    EXPECT_EQ(Label(NodeOf(pump.ToBlade(numbers)).get()), "Blade");
}

TEST(VisDataTreeUtility, AnObjectWithoutAliasIsNotLoadedAndMergeableExactlyWhenAsked)
{
    TestScene scene;
    FreeRep* const rep = scene.AddFreeRep(scene.Root());
    ShowObject(rep, new PlainObject);
    for (const bool mergeable : {false, true}) {
        const SceneTree node = NodeOf(PathTo({rep}), mergeable);
        EXPECT_EQ(Label(node.get()), "Not loaded");
        EXPECT_EQ(Icon(node.get()), "VisLevelSelectorGeometry.png");
        EXPECT_EQ(node->IsMergeable(), mergeable ? 1 : 0);
        EXPECT_EQ(node->IsLeafObject(), 0);
    }
}

TEST(VisDataTreeUtility, AnObjectWithAnIconAloneKeepsItsIcon)
{
    TestScene scene;
    FreeRep* const rep = scene.AddFreeRep(scene.Root());
    ShowObject(rep, new IconObject);
    const SceneTree node = NodeOf(PathTo({rep}), 1);
    EXPECT_EQ(Label(node.get()), "Not loaded");
    EXPECT_EQ(Icon(node.get()), "Gear.png");
    EXPECT_EQ(node->IsMergeable(), 1);
}

TEST(VisDataTreeUtility, AnObjectWithAnEmptyAliasIsNotLoaded)
{
    TestScene scene;
    FreeRep* const rep = scene.AddFreeRep(scene.Root());
    ShowObject(rep, core::ShapeObject::Create("", "Gear"));
    const SceneTree node = NodeOf(PathTo({rep}), 1);
    EXPECT_EQ(Label(node.get()), "Not loaded");
    EXPECT_EQ(Icon(node.get()), "Gear.png");
    EXPECT_EQ(node->IsMergeable(), 1);
}

TEST(VisDataTreeUtility, ARepWithoutObjectIsNotLoaded)
{
    TestScene scene;
    FreeRep* const bare = scene.AddFreeRep(scene.Root());
    FreeRep* const empty = scene.AddFreeRep(scene.Root());
    ShowObject(empty, nullptr);
    for (FreeRep* const rep : {bare, empty}) {
        const SceneTree node = NodeOf(PathTo({rep}), 1);
        EXPECT_EQ(Label(node.get()), "Not loaded");
        EXPECT_EQ(Icon(node.get()), "VisLevelSelectorGeometry.png");
        EXPECT_EQ(node->IsMergeable(), 1);
    }
}

// ---- CreateTreeFromPickPath

TEST(VisDataTreeUtility, NoPathsGiveNoTree)
{
    Pump pump;
    EXPECT_FALSE(TreeOf({}));
    EXPECT_FALSE(TreeOf({KUVPickPath()})) << "a path without reps contributes nothing";
    EXPECT_TRUE(TreeOf({KUVPickPath(), pump.ToBlade()}));
}

TEST(VisDataTreeUtility, TheLevelsOfATreeAreTheRepsOfThePaths)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade(), pump.ToShell()});
    EXPECT_EQ(support::DescribeTree(tree.get()), "Pump(Rotor(Blade) Housing(Shell))");
    EXPECT_EQ(tree->GetReferenceCount(), 1U);
    const VisDataTree* const rotor = tree->GetChildren()[0];
    EXPECT_EQ(rotor->GetReferenceCount(), 1U) << "the parent holds the only reference";
    EXPECT_EQ(PickPathOf(*tree)->GetCursorPosition(), 0);
    EXPECT_EQ(PickPathOf(*rotor)->GetCursorPosition(), 1);
    EXPECT_EQ(PickPathOf(*rotor)->Size(), 3) << "a level keeps the path that made it";
    EXPECT_EQ(PickPathOf(*rotor->GetChildren()[0])->GetCurrentRep(), pump.blade);
}

TEST(VisDataTreeUtility, PathsUnderDifferentFirstRepsGetAnUnnamedNodeAbove)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    KUVRep* const blade = scene.AddShape(pump, "Blade", {1});
    auto* const motor = scene.AddRootOccurrence(scene.Root(), "Motor");
    KUVRep* const coil = scene.AddShape(motor, "Coil", {1});
    auto* const valve = scene.AddRootOccurrence(scene.Root(), "Valve");
    for (const bool mergeable : {false, true}) {
        const SceneTree tree = TreeOf(
            {PathTo({pump, blade}), PathTo({motor, coil}), PathTo({valve}), PathTo({pump, coil})},
            nullptr, mergeable);
        EXPECT_EQ(support::DescribeTree(tree.get()),
                  "Not loaded(Pump(Blade Coil) Motor(Coil) Valve)");
        EXPECT_EQ(Icon(tree.get()), "VisLevelSelectorGeometry.png");
        EXPECT_EQ(tree->IsMergeable(), mergeable ? 1 : 0);
        EXPECT_EQ(tree->IsLeafObject(), 0);
        EXPECT_EQ(PickPathOf(*tree)->Size(), 0);
        EXPECT_EQ(tree->GetReferenceCount(), 1U);
        EXPECT_EQ(tree->GetChildren()[0]->GetReferenceCount(), 1U);
    }
}

TEST(VisDataTreeUtility, TheSamePathTwiceYieldsOneLeaf)
{
    Pump pump;
    const SceneTree reps = TreeOf({pump.ToBlade(), pump.ToBlade()});
    EXPECT_EQ(support::DescribeTree(reps.get()), "Pump(Rotor(Blade))");
    const SceneTree faces = TreeOf({pump.ToBlade({1}), pump.ToBlade({2}), pump.ToBlade({1})});
    EXPECT_EQ(support::DescribeTree(faces.get()), "Pump(Rotor(Face Face))");
}

TEST(VisDataTreeUtility, APickedFaceIsALeafObjectBelowItsProduct)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({2})});
    EXPECT_EQ(support::DescribeTree(tree.get()), "Pump(Rotor(Face))");
    const VisDataTree* const face = tree->GetFirstLeaf();
    EXPECT_EQ(face->IsLeafObject(), 1);
    EXPECT_EQ(Icon(face), "I_VisFace.png");
}

/// In a process of its own, because the variable is read once.
TEST(VisDataTreeUtilityDeathTest, SeparatePrimitivesPutTheirRepBetweenThemAndTheProduct)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto describe = [] {
        setenv("VisDataTreeSeparatePrimitive", "0", 1);
        Pump pump;
        const SceneTree tree =
            TreeOf({pump.ToBlade({1}), pump.ToBlade({2}), pump.ToShell({1}), pump.ToShell()});
        unsetenv("VisDataTreeSeparatePrimitive");
        const SceneTree again = TreeOf({pump.ToBlade({3})});
        std::cerr
            << support::DescribeTree(tree.get()) << ' ' << support::DescribeTree(again.get()) << ' '
            << PickPathOf(*tree->GetChildren()[0]->GetChildren()[0])->GetSubElementList()->Count()
            << ' ' << int{tree->GetChildren()[0]->GetChildren()[0]->IsLeafObject()};
    };
    EXPECT_EXIT(
        {
            describe();
            std::exit(0);
        },
        testing::ExitedWithCode(0),
        "Pump\\(Rotor\\(Blade\\(Face Face\\)\\) Housing\\(Shell\\(Face Shell\\)\\)\\) "
        "Pump\\(Rotor\\(Blade\\(Face\\)\\)\\) 0 0");
}

TEST(VisDataTreeUtility, APathOfOneRepHangsBelowARootOfTheSameRep)
{
    TestScene scene;
    KUVRep* const shape = scene.AddShape(scene.Root(), "Blade", {1});
    const SceneTree tree = TreeOf({PathTo({shape}), PathTo({shape}, {1})});
    EXPECT_EQ(support::DescribeTree(tree.get()), "Blade(Blade Face)");
}

TEST(VisDataTreeUtility, PathsThatDoNotContainTheRestrictionAreLeftOut)
{
    Pump pump;
    KUVPickPath toRotor = PathTo({pump.pump, pump.rotor});
    const SceneTree tree = TreeOf({pump.ToShell(), pump.ToBlade()}, &toRotor);
    EXPECT_EQ(support::DescribeTree(tree.get()), "Pump(Rotor(Blade))");
    KUVRepPath nothing;
    const SceneTree all = TreeOf({pump.ToShell(), pump.ToBlade()}, &nothing);
    EXPECT_EQ(support::DescribeTree(all.get()), "Pump(Housing(Shell) Rotor(Blade))");
    KUVPickPath elsewhere = PathTo({pump.rotor, pump.shell});
    EXPECT_FALSE(TreeOf({pump.ToShell(), pump.ToBlade()}, &elsewhere));
}

TEST(VisDataTreeUtility, TheListOfPathsEndsAtItsFirstAbsentEntry)
{
    Pump pump;
    KUVPickPath blade = pump.ToBlade();
    KUVPickPath shell = pump.ToShell();
    list<KUVPickPath> paths;
    paths.Append(&blade);
    paths.Append(nullptr);
    paths.Append(&shell);
    const SceneTree tree(VisDataTreeUtility::CreateTreeFromPickPath(paths, nullptr, 0));
    EXPECT_EQ(support::DescribeTree(tree.get()), "Pump(Rotor(Blade))");
}

TEST(VisDataTreeUtility, ThePathsHandedInKeepCursorAndLock)
{
    Pump pump;
    for (const int cursor : {-1, 0, 1, 2, 3}) {
        std::vector<KUVPickPath> paths{pump.ToBlade({1}), pump.ToShell()};
        KUVPickPath restriction = PathTo({pump.pump}, {}, 0);
        for (KUVPickPath& path : paths) {
            support::MoveCursor(path, cursor);
            path.LockPath();
        }
        restriction.LockPath();
        const SceneTree tree(
            VisDataTreeUtility::CreateTreeFromPickPath(ListOf(paths), &restriction, 0));
        EXPECT_EQ(support::DescribeTree(tree.get()), "Pump(Rotor(Face) Housing(Shell))");
        for (KUVPickPath& path : paths) {
            EXPECT_EQ(path.UnlockPath(), 1);
            EXPECT_EQ(path.GetCursorPosition(), cursor);
        }
        EXPECT_EQ(restriction.UnlockPath(), 1);
        EXPECT_EQ(restriction.GetCursorPosition(), 0);
    }
}

TEST(VisDataTreeUtility, NodesThatAreNotLoadedAreMergeableOnEveryLevelWhenAsked)
{
    TestScene scene;
    KUV3DBagRep* const bag = scene.AddBag(scene.Root());
    KUVRep* const leaf = scene.AddShape(bag, "", {1});
    const SceneTree tree = TreeOf({PathTo({bag, leaf})}, nullptr, 1);
    EXPECT_EQ(support::DescribeTree(tree.get()), "Not loaded(Not loaded)");
    EXPECT_EQ(tree->IsMergeable(), 1);
    EXPECT_EQ(tree->GetFirstLeaf()->IsMergeable(), 1);
}

TEST(VisDataTreeUtility, EachInstanceHasItsOwnNode)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    auto* const one = scene.AddOccurrence(pump, "Bolt");
    auto* const two = scene.AddOccurrence(pump, "Bolt");
    scene.AddShape(one, "Body", {5});
    scene.AddShape(two, "Body", {5});
    const SceneTree tree = TreeOf(VisPathUtility::GenerateAllKUVPickPath(scene.Viewpoint(), 0, 0));
    EXPECT_EQ(support::DescribeTree(tree.get()), "Pump(Bolt(Body) Bolt(Body))");
}

TEST(VisDataTreeUtility, BuildsAHundredThousandLevels)
{
    TestScene scene;
    KUV3DBagRep* bag = scene.Root();
    for (int level = 0; level < 100000; ++level)
        bag = scene.AddBag(bag);
    const SceneTree tree = TreeOf(VisPathUtility::GenerateAllKUVPickPath(scene.Viewpoint(), 0, 0));
    EXPECT_EQ(tree->ComputeMaxDepth(), 100000U);
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(tree.get(), 1), 0U);
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTypeOfRep(tree.get(), "KUV3DBagRep"), 1U);
}

TEST(VisDataTreeUtility, BuildsAHundredThousandFacesOfOneRep)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    KUVRep* const shape = scene.AddShape(pump, "Mesh", std::vector<std::uint32_t>(100000, 2));
    std::vector<KUVPickPath> paths;
    paths.reserve(200000);
    for (int face = 1; face <= 100000; ++face)
        paths.push_back(PathTo({pump, shape}, {face}));
    for (int face = 1; face <= 100000; ++face)
        paths.push_back(paths[static_cast<std::size_t>(face) - 1]);
    const SceneTree tree(VisDataTreeUtility::CreateTreeFromPickPath(ListOf(paths), nullptr, 0));
    EXPECT_EQ(tree->GetChildren().size(), 100000U);
    EXPECT_EQ(VisDataTreeUtility::ComputeNbTriangles(tree.get(), 0), 200000U);
}

// ---- agreement with the plain search

namespace {

/// Gives out random numbers one by one, and 0 for ever behind their end.
class Tape {
public:
    Tape()
        : bytes_(*rc::gen::scale(10.0, rc::gen::container<std::vector<int>>(
                                           rc::gen::resize(100, rc::gen::inRange(0, 256)))))
    {
    }
    bool IsAtEnd() const { return next_ >= bytes_.size(); }
    int Below(int bound) { return IsAtEnd() ? 0 : bytes_[next_++] % bound; }

private:
    std::vector<int> bytes_;
    std::size_t next_ = 0;
};

/// A few reps that paths pass in any order, any number of times.
struct Pool {
    TestScene scene;
    std::vector<KUVRep*> reps;

    Pool()
    {
        reps.push_back(scene.AddRootOccurrence(scene.Root(), "Pump"));
        reps.push_back(scene.AddOccurrence(scene.Root(), "Rotor"));
        reps.push_back(scene.AddShape(scene.Root(), "Blade", {1, 2}, 1, 1));
        reps.push_back(scene.AddShape(scene.Root(), "", {3}, 1, 1));
        reps.push_back(scene.AddFreeRep(scene.Root()));
        ShowObject(reps.back(), new IconObject);
    }

    KUVPickPath Path(Tape& tape) const
    {
        const int size = tape.Below(6);
        std::vector<KUVRep*> chosen;
        for (int i = 0; i < size; ++i)
            chosen.push_back(reps[static_cast<std::size_t>(tape.Below(5))]);
        list<int> numbers;
        for (int i = tape.Below(4) - 1; i > 0; --i) {
            const int number = tape.Below(6);
            if (number == 0)
                numbers.AppendAbsent();
            else
                numbers.Append(number);
        }
        return PathTo(chosen, numbers, tape.Below(size + 2) - 1);
    }
};

}  // namespace

TEST(VisDataTreeUtility, TreesOfRandomPathsAgreeWithThePlainConstruction)
{
    int trees = 0;
    const auto checkOneTree = [&trees] {
        Tape tape;
        Pool pool;
        const bool mergeable = tape.Below(2) != 0;
        KUVRepPath restriction;
        if (tape.Below(4) == 1)
            restriction.AddRep(pool.reps[static_cast<std::size_t>(tape.Below(5))], 1);
        std::vector<KUVPickPath> paths;
        while (!tape.IsAtEnd())
            paths.push_back(pool.Path(tape));
        const auto expected = sceneReference::BuildTree(paths, &restriction, mergeable);
        for (KUVPickPath& path : paths) {
            if (path.Size() % 2 != 0)
                path.LockPath();
        }
        const SceneTree tree(VisDataTreeUtility::CreateTreeFromPickPath(ListOf(paths), &restriction,
                                                                        mergeable ? 1 : 0));
        ++trees;
        RC_ASSERT(sceneReference::Describe(tree.get()) == sceneReference::Describe(expected.get()));
    };
    const bool agrees = rc::check([&checkOneTree] {
        for (int i = 0; i < 10; ++i)
            checkOneTree();
    });
    EXPECT_TRUE(agrees);
    std::cout << "count: " << trees << " random scene trees agree with the plain construction\n";
}

TEST(VisDataTreeUtility, TheChildIndexFindsWhatTheSearchInOrderFinds)
{
    int searches = 0;
    const bool agrees = rc::check([&searches] {
        Tape tape;
        Pool pool;
        VisChildIndex index;
        const SceneTree first(VisDataTreeUtility::CreateVisDataTree(nullptr, 0));
        const SceneTree second(VisDataTreeUtility::CreateVisDataTree(nullptr, 0));
        while (!tape.IsAtEnd()) {
            VisDataTree& parent = tape.Below(2) ? *first : *second;
            KUVPickPath path = pool.Path(tape);
            RC_ASSERT(index.Find(parent, path) ==
                      VisDataTreeUtility::GetChildWithPickPath(&parent, &path));
            ++searches;
            // Also elements that are there already: the first one counts.
            const auto child =
                VisReference<VisDataTree>::Adopt(VisDataTreeUtility::CreateVisDataTree(&path, 0));
            parent.InsertChild(child.Get(), 1);
            index.Add(parent, *child.Get());
        }
    });
    EXPECT_TRUE(agrees);
    std::cout << "count: " << searches << " searches through the index agree with those in order\n";
}

TEST(VisDataTreeUtility, BuildingSurvivesEveryFailingAllocation)
{
    Pump pump;
    auto* const motor = pump.scene.AddRootOccurrence(pump.scene.Root(), "Motor");
    KUVRep* const coil = pump.scene.AddShape(motor, "Coil", {1, 1});
    std::vector<KUVPickPath> paths{pump.ToBlade({1}), pump.ToBlade({2}), pump.ToShell(),
                                   PathTo({motor, coil}, {1}), PathTo({motor, coil}, {2})};
    const list<KUVPickPath> entries = ListOf(paths);
    const auto scenario = [&] {
        const SceneTree tree(VisDataTreeUtility::CreateTreeFromPickPath(entries, nullptr, 0));
        VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), &paths[1], 1);
    };
    using Mode = support::FailingAllocation::Mode;
    const std::size_t failures = support::ForEveryFailingAllocation(scenario) +
                                 support::ForEveryFailingAllocation(scenario, Mode::FromThere);
    EXPECT_GT(failures, 40U);
    std::cout << "count: " << failures << " failing allocations while building a scene tree\n";
}

TEST(VisDataTreeUtility, MakingANodeSurvivesEveryFailingAllocation)
{
    Pump pump;
    KUVPickPath path = pump.ToBlade({1, 2, 3});
    const std::size_t failures = support::ForEveryFailingAllocation(
        [&] { const SceneTree node(VisDataTreeUtility::CreateVisDataTree(&path, 0)); });
    EXPECT_GT(failures, 1U);
}

// ---- search

TEST(VisDataTreeUtility, DeepSearchFindsTheNodeOfAPath)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade({1}), pump.ToBlade({2}), pump.ToShell()});
    VisDataTree* const rotor = tree->GetChildren()[0];
    VisDataTree* const shell = tree->GetLastLeaf();
    KUVPickPath path = pump.ToBlade({2});
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), &path, 0),
              rotor->GetChildren()[1]);
    path = pump.ToShell();
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), &path, 0), shell);
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(shell, &path, 0), shell);
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(rotor, &path, 0), nullptr)
        << "only at and below the node";
    path = pump.ToBlade({3});
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), &path, 0), nullptr);
}

TEST(VisDataTreeUtility, DeepSearchForALeafPassesInnerNodes)
{
    TestScene scene;
    KUVRep* const shape = scene.AddShape(scene.Root(), "Blade", {1});
    const SceneTree tree = TreeOf({PathTo({shape})});
    KUVPickPath path = PathTo({shape});
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), &path, 0), tree.get());
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), &path, 1),
              tree->GetChildren()[0]);
}

TEST(VisDataTreeUtility, DeepSearchLeavesOutSubtreesThatPartBeforeTheCursor)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade(), pump.ToShell()});
    // Below the housing, where no path of the scene leads, hangs a node for the blade.
    KUVPickPath blade = pump.ToBlade();
    const auto astray =
        VisReference<VisDataTree>::Adopt(VisDataTreeUtility::CreateVisDataTree(&blade, 0));
    tree->GetChildren()[1]->InsertChild(astray.Get(), 1);
    tree->GetChildren()[0]->GetChildren()[0]->SetLabel("found");
    VisDataTree* const found =
        VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), &blade, 0);
    ASSERT_TRUE(found);
    EXPECT_EQ(Label(found), "found");
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(tree->GetChildren()[1], &blade, 0),
              nullptr);
}

TEST(VisDataTreeUtility, DeepSearchGoesThroughNodesWithoutReps)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    auto* const motor = scene.AddRootOccurrence(scene.Root(), "Motor");
    const SceneTree tree = TreeOf({PathTo({pump}), PathTo({motor})});
    KUVPickPath path = PathTo({motor});
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), &path, 0),
              tree->GetChildren()[1]);
    const SceneTree bare(new VisDataTree(nullptr, "no path", ""));
    bare->InsertChild(tree.get(), 1);
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(bare.get(), &path, 0),
              tree->GetChildren()[1]);
    tree->RemoveParent(1);
}

TEST(VisDataTreeUtility, DeepSearchWithoutNodePathOrCurrentRepFindsNothing)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade()});
    KUVPickPath path = pump.ToBlade();
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(nullptr, &path, 0), nullptr);
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), nullptr, 0), nullptr);
    path.InitToTopRep();
    EXPECT_EQ(VisDataTreeUtility::DeepSearchNodeWithPickPath(tree.get(), &path, 0), nullptr);
    EXPECT_EQ(path.GetCursorPosition(), -1);
}

TEST(VisDataTreeUtility, TheFirstChildThatDesignatesTheSameElementIsGiven)
{
    Pump pump;
    const SceneTree tree = TreeOf({pump.ToBlade(), pump.ToShell()});
    KUVPickPath path = PathTo({pump.pump, pump.housing, pump.shell}, {}, 1);
    EXPECT_EQ(VisDataTreeUtility::GetChildWithPickPath(tree.get(), &path), tree->GetChildren()[1]);
    path = pump.ToShell();
    EXPECT_EQ(VisDataTreeUtility::GetChildWithPickPath(tree.get(), &path), nullptr)
        << "not a direct child";
    EXPECT_EQ(VisDataTreeUtility::GetChildWithPickPath(nullptr, &path), nullptr);
    EXPECT_EQ(VisDataTreeUtility::GetChildWithPickPath(tree.get(), nullptr), nullptr);
}

// ---- mouse

TEST(VisDataTreeUtility, TheMousePositionPointsUpwards)
{
    const Held<core::StandaloneViewer> viewer(new core::StandaloneViewer);
    viewer->SetGraphicSize(640.0f, 480.5f);
    viewer->SetMousePosition(12, 30);
    float x = -1.0f;
    float y = -1.0f;
    EXPECT_EQ(VisDataTreeUtility::GetMousePositionInsideViewport(viewer.get(), x, y), 0);
    EXPECT_EQ(x, 12.0f);
    EXPECT_EQ(y, 450.5f);
    viewer->SetMousePosition(-5, 1000);
    EXPECT_EQ(VisDataTreeUtility::GetMousePositionInsideViewport(viewer.get(), x, y), 0);
    EXPECT_EQ(x, -5.0f);
    EXPECT_EQ(y, -519.5f);
}

TEST(VisDataTreeUtility, WithoutViewerThereIsNoMousePosition)
{
    float x = 3.0f;
    float y = 4.0f;
    EXPECT_EQ(VisDataTreeUtility::GetMousePositionInsideViewport(nullptr, x, y),
              static_cast<KUVResult>(0x80004005U));
    EXPECT_EQ(x, 3.0f);
    EXPECT_EQ(y, 4.0f);
}
