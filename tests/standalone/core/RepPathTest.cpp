#include "KUV3D.h"

#include "support/TestScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <vector>

using support::Held;
using support::PathTo;
using support::TestScene;

namespace {

using Reps = std::vector<KUVRep*>;

Reps RepsOf(const KUVRepPath& path)
{
    Reps reps;
    for (int i = 0; i < path.Size(); ++i)
        reps.push_back(path[i]);
    return reps;
}

Reps StackOf(KUVPickPath path)
{
    Reps stack;
    for (; path.GetTopRep(); path.Pop())
        stack.insert(stack.begin(), path.GetTopRep());
    return stack;
}

/// Three bags.
struct ThreeReps {
    TestScene scene;
    KUVRep* a = scene.AddBag(scene.Root());
    KUVRep* b = scene.AddBag(scene.Root());
    KUVRep* c = scene.AddBag(scene.Root());
};

}  // namespace

TEST(KUVRepPath, ANewPathIsEmptyAndStandsBeforeItsFirstRep)
{
    KUVRepPath path;
    EXPECT_EQ(path.Size(), 0);
    EXPECT_EQ(path.GetCursorPosition(), -1);
    EXPECT_EQ(path.GetCurrentRep(), nullptr);
    EXPECT_EQ(path[0], nullptr);
    EXPECT_EQ(path.GetSubElementList()->Count(), 0);
    EXPECT_EQ(path.GetViewpoint(), nullptr);
    EXPECT_FALSE(path.IsLocked());
}

TEST(KUVRepPath, AddingPutsTheCursorOnTheNewRep)
{
    ThreeReps reps;
    KUVRepPath path;
    path.AddRep(reps.a, 0);
    EXPECT_EQ(path.GetCursorPosition(), 0);
    path.AddRep(reps.b, 1);
    EXPECT_EQ(path.GetCursorPosition(), 1);
    EXPECT_EQ(path.GetCurrentRep(), reps.b);
    path.AddRep(nullptr, 1);
    EXPECT_EQ(RepsOf(path), (Reps{reps.a, reps.b}));
    path.InitToTopRep();
    path.AddRep(reps.c, 1);
    EXPECT_EQ(path.GetCurrentRep(), reps.c);
    EXPECT_EQ(path[-1], nullptr);
    EXPECT_EQ(path[3], nullptr);
}

TEST(KUVRepPath, StepsByOneRepAndStaysAtTheEnds)
{
    ThreeReps reps;
    KUVPickPath path = PathTo({reps.a, reps.b});
    path.InitToTopRep();
    EXPECT_EQ(path.GetCursorPosition(), -1);
    EXPECT_EQ(path.GetCurrentRep(), nullptr);
    EXPECT_EQ(path.NextFatherRep(), nullptr);
    EXPECT_EQ(path.GetCursorPosition(), -1);
    EXPECT_EQ(path.NextChildRep(), reps.a);
    EXPECT_EQ(path.NextFatherRep(), nullptr) << "no rep before the first";
    EXPECT_EQ(path.GetCursorPosition(), 0);
    EXPECT_EQ(path.NextChildRep(), reps.b);
    EXPECT_EQ(path.NextChildRep(), nullptr);
    EXPECT_EQ(path.GetCursorPosition(), 1);
    path.InitToLeafRep();
    EXPECT_EQ(path.GetCursorPosition(), 2) << "behind the last rep";
    EXPECT_EQ(path.GetCurrentRep(), nullptr);
    EXPECT_EQ(path.NextChildRep(), nullptr);
    EXPECT_EQ(path.NextFatherRep(), reps.b) << "the last rep itself";
    EXPECT_EQ(path.NextFatherRep(), reps.a);
    KUVRepPath empty;
    empty.InitToLeafRep();
    EXPECT_EQ(empty.GetCursorPosition(), 0);
    EXPECT_EQ(empty.NextFatherRep(), nullptr);
    EXPECT_EQ(empty.NextChildRep(), nullptr);
}

TEST(KUVRepPath, RemovingKeepsTheCursorOnARepOfThePath)
{
    ThreeReps reps;
    const auto removed = [&](KUVRep* rep, int cursor) {
        KUVPickPath path = PathTo({reps.a, reps.b, reps.c}, {}, cursor);
        path.RemoveRep(rep);
        EXPECT_EQ(path.Size(), 2);
        return path.GetCursorPosition();
    };
    EXPECT_EQ(removed(reps.c, 2), 1) << "the last rep takes the cursor";
    EXPECT_EQ(removed(reps.c, 1), 1);
    EXPECT_EQ(removed(reps.a, 2), 1) << "still on the same rep";
    EXPECT_EQ(removed(reps.b, 1), 1) << "on the rep that moved up";
    EXPECT_EQ(removed(reps.a, -1), -1);
    EXPECT_EQ(removed(reps.b, 3), 2) << "still behind the last";
    KUVPickPath one = PathTo({reps.a});
    one.RemoveRep(reps.a);
    EXPECT_EQ(one.GetCursorPosition(), -1);
    EXPECT_EQ(one.Size(), 0);
}

TEST(KUVRepPath, TheLastOccurrenceIsRemoved)
{
    ThreeReps reps;
    KUVPickPath path = PathTo({reps.a, reps.b, reps.a, reps.c});
    path.RemoveRep(reps.a);
    EXPECT_EQ(RepsOf(path), (Reps{reps.a, reps.b, reps.c}));
    path.RemoveRep(nullptr);
    path.RemoveRep(reps.scene.Root());
    EXPECT_EQ(path.Size(), 3) << "harmless";
}

TEST(KUVRepPath, EmptyingKeepsSubElementsAndLock)
{
    ThreeReps reps;
    KUVPickPath path = PathTo({reps.a}, {4});
    path.LockPath();
    path.Empty();
    EXPECT_EQ(path.UnlockPath(), 1);
    EXPECT_EQ(path.Size(), 0);
    EXPECT_EQ(path.GetCursorPosition(), -1);
    EXPECT_EQ(path.GetSubElementList()->Count(), 1);
}

TEST(KUVRepPath, LoadingReplacesTheSubElementsOnly)
{
    ThreeReps reps;
    KUVPickPath path = PathTo({reps.a, reps.b}, {4, 5}, 0);
    path.Load({9});
    EXPECT_EQ(path.GetSubElementList()->Count(), 1);
    EXPECT_EQ(*(*path.GetSubElementList())[0], 9);
    EXPECT_EQ(path.GetCursorPosition(), 0);
    EXPECT_EQ(path.Size(), 2);
    path.Load(*path.GetSubElementList());
    EXPECT_EQ(path.GetSubElementList()->Count(), 1) << "its own list is legal";
}

TEST(KUVRepPath, ALockedPathAnswersAsAnEmptyOne)
{
    ThreeReps reps;
    TestScene scene;
    KUVPickPath path(&scene.Viewpoint());
    path.AddRep(reps.a, 1);
    path.Load({4});
    path.LockPath();
    EXPECT_EQ(path.Size(), 0);
    EXPECT_EQ(path.GetCursorPosition(), -1);
    EXPECT_EQ(path.GetCurrentRep(), nullptr);
    EXPECT_EQ(path[0], nullptr);
    EXPECT_EQ(path.GetSubElementList()->Count(), 0);
    EXPECT_EQ(path.GetViewpoint(), nullptr);
    EXPECT_EQ(path.Contains(PathTo({reps.a})), 0);
    path.AddRep(reps.b, 1);
    EXPECT_EQ(path.UnlockPath(), 1);
    EXPECT_EQ(path.UnlockPath(), 0);
    EXPECT_EQ(RepsOf(path), (Reps{reps.a, reps.b})) << "changes are not refused";
    EXPECT_EQ(path.GetViewpoint(), &scene.Viewpoint());
}

TEST(KUVRepPath, ContainsRunsWithoutGaps)
{
    ThreeReps reps;
    const KUVPickPath path = PathTo({reps.a, reps.a, reps.b, reps.c});
    EXPECT_TRUE(path.Contains(PathTo({reps.a, reps.b})));
    EXPECT_TRUE(path.Contains(PathTo({reps.a, reps.a, reps.b, reps.c})));
    EXPECT_TRUE(path.Contains(PathTo({reps.c})));
    EXPECT_FALSE(path.Contains(PathTo({reps.a, reps.c})));
    EXPECT_FALSE(path.Contains(PathTo({reps.c, reps.b})));
    EXPECT_FALSE(path.Contains(PathTo({reps.b, reps.c, reps.a})));
    EXPECT_TRUE(path.Contains(KUVRepPath()));
    EXPECT_TRUE(KUVRepPath().Contains(KUVRepPath()));
    EXPECT_FALSE(KUVRepPath().Contains(path));
}

TEST(KUVRepPath, CopiesTakeOverRepsCursorLockAndSubElements)
{
    ThreeReps reps;
    KUVPickPath path = PathTo({reps.a, reps.b}, {7}, 0);
    path.LockPath();
    KUVRepPath copy(path);
    KUVRepPath assigned;
    assigned = path;
    for (KUVRepPath* const other : {&copy, &assigned}) {
        EXPECT_EQ(other->UnlockPath(), 1);
        EXPECT_EQ(RepsOf(*other), (Reps{reps.a, reps.b}));
        EXPECT_EQ(other->GetCursorPosition(), 0);
        EXPECT_EQ(*(*other->GetSubElementList())[0], 7);
        EXPECT_EQ(other->GetReferenceCount(), 1U);
    }
    EXPECT_TRUE(path.IsLocked());
    assigned = *&assigned;
    EXPECT_EQ(assigned.Size(), 2);
}

TEST(KUVRepPath, ChangingACopyLeavesTheOthersAlone)
{
    ThreeReps reps;
    KUVPickPath path = PathTo({reps.a, reps.b});
    KUVPickPath longer(path);
    longer.AddRep(reps.c, 1);
    KUVPickPath otherwise(path);
    otherwise.AddRep(reps.a, 1);
    KUVPickPath shorter(longer);
    shorter.RemoveRep(reps.a);
    KUVPickPath cut(longer);
    cut.RemoveRep(reps.c);
    cut.AddRep(reps.b, 1);
    KUVPickPath emptied(longer);
    emptied.Empty();
    EXPECT_EQ(RepsOf(path), (Reps{reps.a, reps.b}));
    EXPECT_EQ(RepsOf(longer), (Reps{reps.a, reps.b, reps.c}));
    EXPECT_EQ(RepsOf(otherwise), (Reps{reps.a, reps.b, reps.a}));
    EXPECT_EQ(RepsOf(shorter), (Reps{reps.b, reps.c}));
    EXPECT_EQ(RepsOf(cut), (Reps{reps.a, reps.b, reps.b}));
    EXPECT_EQ(RepsOf(emptied), (Reps{}));
}

TEST(KUVRepPath, HoldsItsRepsAndGivesThemBack)
{
    const Held<KUV3DBagRep> bag(KUV3DBagRep::CreateRep());
    {
        KUVPickPath path = PathTo({bag.get(), bag.get()});
        EXPECT_EQ(bag->GetReferenceCount(), 3U);
        path.RemoveRep(bag.get());
        EXPECT_EQ(bag->GetReferenceCount(), 2U);
        path.Push(bag.get());
        const KUVPickPath copy(path);
        path.Empty();
        path.Pop();
        EXPECT_GT(bag->GetReferenceCount(), 1U) << "the copy holds it";
        EXPECT_EQ(copy[0], bag.get());
    }
    EXPECT_EQ(bag->GetReferenceCount(), 1U);
}

// ---- pick path

TEST(KUVPickPath, TheStackHasNothingToDoWithTheReps)
{
    ThreeReps reps;
    KUVPickPath path;
    EXPECT_EQ(path.GetTopRep(), nullptr);
    path.Pop();
    path.Push(nullptr);
    path.Push(reps.a);
    EXPECT_EQ(path.Size(), 0);
    path.AddRep(reps.b, 1);
    path.Push(reps.b);
    path.Push(reps.c);
    EXPECT_EQ(StackOf(path), (Reps{reps.a, reps.b, reps.c}));
    path.Empty();
    EXPECT_EQ(StackOf(path), (Reps{reps.a, reps.b, reps.c}));
    path.Pop();
    EXPECT_EQ(path.GetTopRep(), reps.b);
}

TEST(KUVPickPath, ACopyTakesOverEverything)
{
    ThreeReps reps;
    KUVPickPath path(&reps.scene.Viewpoint());
    path.AddRep(reps.a, 1);
    path.Push(reps.b);
    path.SetIntersection({1.0f, 2.0f, 3.0f});
    path.SetNormal({0.0f, 1.0f, 0.0f});
    path.SetInteractiveContext(2);
    KUVPickPath assigned;
    assigned = path;
    for (const KUVPickPath& copy : {KUVPickPath(path), assigned}) {
        EXPECT_EQ(copy.GetViewpoint(), &reps.scene.Viewpoint());
        EXPECT_EQ(copy.GetTopRep(), reps.b);
        EXPECT_EQ(copy.GetGlobalIntersection().z, 3.0f);
        EXPECT_EQ(copy.GetNormal().y, 1.0f);
        EXPECT_EQ(copy.GetInteractiveContext(), 2);
    }
}

TEST(KUVPickPath, TheGlobalNormalFollowsTheNormalUntilItIsSet)
{
    KUVPickPath path;
    path.SetNormal({0.0f, 1.0f, 0.0f});
    EXPECT_EQ(path.GetGlobalNormal().y, 1.0f);
    path.SetGlobalNormal({1.0f, 0.0f, 0.0f});
    path.SetNormal({0.0f, 0.0f, 1.0f});
    EXPECT_EQ(path.GetGlobalNormal().x, 1.0f);
    EXPECT_EQ(path.GetNormal().z, 1.0f);
}

TEST(KUVPickPath, HoldsItsViewpoint)
{
    TestScene scene;
    const unsigned int before = scene.Viewpoint().GetReferenceCount();
    {
        const KUVPickPath path(&scene.Viewpoint());
        const KUVPickPath copy(path);
        EXPECT_EQ(scene.Viewpoint().GetReferenceCount(), before + 2);
        const KUVPickPath nothing(nullptr);
        EXPECT_EQ(nothing.GetViewpoint(), nullptr);
    }
    EXPECT_EQ(scene.Viewpoint().GetReferenceCount(), before);
}

/// Paths share their storage; whatever is done to them, each must stay what a vector would be.
TEST(KUVPickPath, RandomCopiesAndChangesAgreeWithVectors)
{
    struct Model {
        KUVPickPath path;
        Reps reps;
        Reps stack;
    };
    ThreeReps bags;
    const Reps pool{bags.a, bags.b, bags.c};
    std::mt19937 random(7);
    const auto below = [&random](std::size_t bound) { return random() % bound; };
    std::vector<Model> models(6);
    constexpr int CHANGES = 20000;
    for (int change = 0; change < CHANGES; ++change) {
        Model& model = models[below(models.size())];
        KUVRep* const rep = pool[below(pool.size())];
        switch (below(8)) {
        case 0:
        case 1:
        case 2:
            model.path.AddRep(rep, 1);
            model.reps.push_back(rep);
            break;
        case 3: {
            model.path.RemoveRep(rep);
            const auto last = std::find(model.reps.rbegin(), model.reps.rend(), rep);
            if (last != model.reps.rend())
                model.reps.erase(std::next(last).base());
            break;
        }
        case 4:
        case 5:
            model.path.Push(rep);
            model.stack.push_back(rep);
            break;
        case 6:
            model.path.Pop();
            if (!model.stack.empty())
                model.stack.pop_back();
            break;
        default:
            models[below(models.size())] = Model(model);
            break;
        }
        ASSERT_EQ(RepsOf(model.path), model.reps);
        ASSERT_EQ(StackOf(model.path), model.stack);
    }
}
