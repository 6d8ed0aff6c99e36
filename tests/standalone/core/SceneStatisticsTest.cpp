#include "KUV3D.h"

#include "core/SceneCounts.h"
#include "core/SceneReps.h"
#include "support/TestScene.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

using support::FreeRep;
using support::Held;
using support::TestScene;

namespace {

KUVSceneGraphStats StatsOf(KUVRep* rep)
{
    KUVSceneGraphStats stats;
    EXPECT_EQ(KUVSceneGraphStatHelper::KUVGetSceneGraphRepStats(rep, stats), KUV_OK);
    return stats;
}

std::uint64_t TrianglesOf(KUVRep* rep) { return StatsOf(rep).triangleCount; }

/// Says how often its children were asked for.
class CountingBag : public KUV3DBagRep {
public:
    const list<KUVRep>* GetChildren() const override
    {
        ++reads;
        return KUV3DBagRep::GetChildren();
    }
    mutable int reads = 0;
};

}  // namespace

TEST(KUVSceneGraphStatHelper, FailsWithoutRep)
{
    KUVSceneGraphStats stats{5, 6};
    EXPECT_EQ(KUVSceneGraphStatHelper::KUVGetSceneGraphRepStats(nullptr, stats), KUV_FAIL);
    EXPECT_EQ(stats.triangleCount, 5U);
}

TEST(KUVSceneGraphStatHelper, CountsARepWithEverythingBelowIt)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    auto* const rotor = scene.AddOccurrence(pump, "Rotor");
    KUVRep* const blade = scene.AddShape(rotor, "Blade", {10, 20});
    scene.AddShape(rotor, "Hub", {5});
    scene.AddShape(pump, "Shell", {7});
    EXPECT_EQ(TrianglesOf(blade), 30U);
    EXPECT_EQ(TrianglesOf(rotor), 35U);
    EXPECT_EQ(TrianglesOf(scene.Root()), 42U);
    EXPECT_EQ(StatsOf(scene.Root()).leafCount, 3U);
    EXPECT_EQ(StatsOf(blade).leafCount, 1U);
    EXPECT_EQ(TrianglesOf(rotor), 35U) << "remembered";
}

TEST(KUVSceneGraphStatHelper, RepsWithoutShapeHaveNoTriangles)
{
    TestScene scene;
    EXPECT_EQ(TrianglesOf(scene.Root()), 0U);
    EXPECT_EQ(StatsOf(scene.Root()).leafCount, 1U) << "an empty bag is a leaf";
    EXPECT_EQ(TrianglesOf(scene.AddFreeRep(scene.Root())), 0U);
}

TEST(KUVSceneGraphStatHelper, SharedRepsCountWhereverTheyHang)
{
    TestScene scene;
    KUV3DBagRep* const a = scene.AddBag(scene.Root());
    KUV3DBagRep* const b = scene.AddBag(scene.Root());
    KUV3DBagRep* const shared = scene.AddBag(a);
    b->AddChild(shared);
    scene.AddShape(shared, "Bolt", {4});
    EXPECT_EQ(TrianglesOf(scene.Root()), 8U);
}

TEST(KUVSceneGraphStatHelper, AssembliesSharedManyTimesOverAreWalkedOnce)
{
    // Each level holds the next one twice: 2^40 places, 41 bags.
    TestScene scene;
    KUV3DBagRep* bag = scene.Root();
    for (int level = 0; level < 40; ++level) {
        KUV3DBagRep* const left = scene.AddBag(bag);
        KUV3DBagRep* const right = scene.AddBag(bag);
        KUV3DBagRep* const next = scene.AddBag(left);
        right->AddChild(next);
        bag = next;
    }
    scene.AddShape(bag, "Bolt", {3});
    EXPECT_EQ(TrianglesOf(scene.Root()), 3ULL << 40U);
}

TEST(KUVSceneGraphStatHelper, NumbersStopAtTheLargest)
{
    TestScene scene;
    KUV3DBagRep* bag = scene.Root();
    for (int level = 0; level < 70; ++level) {
        KUV3DBagRep* const left = scene.AddBag(bag);
        KUV3DBagRep* const right = scene.AddBag(bag);
        KUV3DBagRep* const next = scene.AddBag(left);
        right->AddChild(next);
        bag = next;
    }
    scene.AddShape(bag, "Bolt", {3});
    EXPECT_EQ(TrianglesOf(scene.Root()), UINT64_MAX);
    EXPECT_EQ(StatsOf(scene.Root()).leafCount, UINT64_MAX);
}

TEST(KUVSceneGraphStatHelper, FollowsEveryChangeOfTheScene)
{
    TestScene scene;
    KUV3DBagRep* const outer = scene.AddBag(scene.Root());
    KUV3DBagRep* const inner = scene.AddBag(outer);
    EXPECT_EQ(TrianglesOf(scene.Root()), 0U);
    KUVRep* const bolt = scene.AddShape(inner, "Bolt", {4});
    EXPECT_EQ(TrianglesOf(scene.Root()), 4U);
    inner->AddChild(scene.AddShape(outer, "Nut", {6}));
    EXPECT_EQ(TrianglesOf(scene.Root()), 16U);
    inner->RemoveChild(bolt);
    EXPECT_EQ(TrianglesOf(scene.Root()), 12U);
    EXPECT_EQ(TrianglesOf(inner), 6U);
    scene.Root()->RemoveChild(outer);
    EXPECT_EQ(TrianglesOf(scene.Root()), 0U);
}

TEST(KUVSceneGraphStatHelper, ABagAtTheAddressOfADeadOneIsCountedAnew)
{
    auto geometry = core::PartGeometry::Make({5}, 0, 0, {});
    for (std::uint64_t shapes = 1; shapes < 5; ++shapes) {
        const Held<KUV3DBagRep> bag(KUV3DBagRep::CreateRep());
        for (std::uint64_t i = 0; i < shapes; ++i) {
            const Held<core::SceneShapeRep> shape(
                core::SceneShapeRep::CreateRep(geometry, nullptr));
            bag->AddChild(shape.get());
        }
        EXPECT_EQ(TrianglesOf(bag.get()), 5 * shapes);
    }
}

TEST(KUVSceneGraphStatHelper, AskingForEveryLevelWalksTheSceneOnce)
{
    TestScene scene;
    KUV3DBagRep* const outer = scene.AddBag(scene.Root());
    auto* const counting = scene.Add(outer, new CountingBag);
    scene.AddShape(counting, "Bolt", {4});
    counting->reads = 0;
    EXPECT_EQ(TrianglesOf(outer), 4U);
    const int once = counting->reads;
    EXPECT_GT(once, 0);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(TrianglesOf(scene.Root()) + TrianglesOf(outer), 8U);
    EXPECT_LE(counting->reads, 2 * once) << "known bags are not entered again";
}

TEST(KUVSceneGraphStatHelper, ARepThatChangesInSilenceIsReadEveryTime)
{
    TestScene scene;
    KUV3DBagRep* const bag = scene.AddBag(scene.Root());
    FreeRep* const silent = scene.AddFreeRep(bag);
    KUVRep* const bolt = scene.AddShape(scene.Root(), "Bolt", {4});
    silent->SetChildren({});
    EXPECT_EQ(TrianglesOf(bag), 0U);
    silent->SetChildren({bolt, bolt});
    EXPECT_EQ(TrianglesOf(bag), 8U);
    EXPECT_EQ(TrianglesOf(scene.Root()), 12U);
    silent->SetChildren({bolt, nullptr, bolt});
    EXPECT_EQ(TrianglesOf(scene.Root()), 8U) << "children end at an absent entry";
}

TEST(KUVSceneGraphStatHelper, ARepBelowItselfCountsNothingThere)
{
    TestScene scene;
    KUV3DBagRep* const bag = scene.AddBag(scene.Root());
    FreeRep* const loop = scene.AddFreeRep(bag);
    KUVRep* const bolt = scene.AddShape(bag, "Bolt", {4});
    loop->SetChildren({bag, bolt});
    EXPECT_EQ(TrianglesOf(bag), 8U);
    EXPECT_EQ(TrianglesOf(loop), 8U);
    EXPECT_EQ(TrianglesOf(bag), 8U) << "whichever is asked for first";
    EXPECT_EQ(TrianglesOf(scene.Root()), 8U);
    EXPECT_EQ(core::CountScene(scene.Root()).triangles, 8U);
}

TEST(KUVSceneGraphStatHelper, CountsAHundredThousandLevels)
{
    TestScene scene;
    KUV3DBagRep* bag = scene.Root();
    for (int level = 0; level < 100000; ++level)
        bag = scene.AddBag(bag);
    scene.AddShape(bag, "Bolt", {4});
    EXPECT_EQ(TrianglesOf(scene.Root()), 4U);
    const core::SceneCounts counts = core::CountScene(scene.Root());
    EXPECT_EQ(counts.triangles, 4U);
    EXPECT_EQ(counts.levels, 100002U);
}

// ---- CountScene

TEST(SceneCounts, CountsInstancesInAllAndGeometriesOnce)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    auto geometry = core::PartGeometry::Make({10, 20}, 3, 2, {});
    for (int i = 0; i < 3; ++i) {
        auto* const bolt = scene.AddOccurrence(pump, "Bolt");
        scene.Add(bolt, core::SceneShapeRep::CreateRep(geometry, nullptr));
    }
    scene.AddShape(pump, "Shell", {7}, 1, 1);
    const core::SceneCounts counts = core::CountScene(pump);
    EXPECT_EQ(counts.products, 4U) << "the test scene makes a product for each occurrence";
    EXPECT_EQ(counts.occurrences, 4U);
    EXPECT_EQ(counts.shapes, 4U);
    EXPECT_EQ(counts.geometries, 2U);
    EXPECT_EQ(counts.faces, 7U);
    EXPECT_EQ(counts.edges, 10U);
    EXPECT_EQ(counts.vertices, 7U);
    EXPECT_EQ(counts.triangles, 97U);
    EXPECT_EQ(counts.uniqueTriangles, 37U);
    EXPECT_EQ(counts.levels, 3U);
}

TEST(SceneCounts, NothingHoldsNothing)
{
    const core::SceneCounts counts = core::CountScene(nullptr);
    EXPECT_EQ(counts.shapes, 0U);
    EXPECT_EQ(counts.levels, 0U);
}
