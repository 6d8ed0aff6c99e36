#include "VisPathUtility.h"

#include "ProductScenes.h"
#include "TreeBuilding.h"

#include "core/SceneViewpoint.h"
#include "support/TestScene.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using products::ASK_LOADERS;
using products::Describe;
using products::FlatViewpoint;
using products::LightLoader;
using products::LightScene;
using products::Occurrence;
using products::ProductScene;
using products::Registered;
using products::Reps;
using products::SEARCH_SCENE;
using support::Held;
using support::PathTo;

// ---- StripPickPath

TEST(VisPathUtilityStripping, APathOfOneRepUnderItsCursorIsCopiedUnchanged)
{
    ProductScene full;
    KUVPickPath source = full.Path({full.blade}, 0, {2});
    source.SetIntersection({1.0f, 2.0f, 3.0f});
    KUVPickPath result;
    unsigned char mapped = 77;
    VisPathUtility::StripPickPath(&source, result, 0, &mapped);
    EXPECT_EQ(mapped, 77) << "not asked for";
    EXPECT_EQ(Describe(result), "1 reps, cursor 0, 1 numbers");
    EXPECT_EQ(result[0], full.blade);
    EXPECT_EQ(result.GetViewpoint(), &full.scene.Viewpoint());
    EXPECT_EQ(result.GetGlobalIntersection().z, 3.0f);
}

TEST(VisPathUtilityStripping, WithoutSourceResultAndFlagStayUntouched)
{
    ProductScene full;
    KUVPickPath result = full.Path({full.pump, full.rotor}, 0, {1});
    unsigned char mapped = 77;
    for (const unsigned char mapToProduct : {SEARCH_SCENE, ASK_LOADERS}) {
        VisPathUtility::StripPickPath(nullptr, result, mapToProduct, &mapped);
        EXPECT_EQ(mapped, 77);
        EXPECT_EQ(Describe(result), "2 reps, cursor 0, 1 numbers");
    }
}

TEST(VisPathUtilityStripping, APathEndsAtItsCursorAndNamesNoPrimitive)
{
    ProductScene full;
    const KUVPickPath whole = full.Path({full.pump, full.rotor, full.blade}, 2, {1});
    for (const int cursor : {0, 1}) {
        KUVPickPath source(whole);
        support::MoveCursor(source, cursor);
        KUVPickPath result;
        VisPathUtility::StripPickPath(&source, result, 0, nullptr);
        EXPECT_EQ(result.Size(), cursor + 1);
        EXPECT_EQ(result.GetCurrentRep(), whole[cursor]);
        EXPECT_EQ(result.GetSubElementList()->Count(), 0);
        EXPECT_EQ(source.Size(), 3) << "the source stays";
        EXPECT_EQ(source.GetSubElementList()->Count(), 1);
    }
}

TEST(VisPathUtilityStripping, APathOnItsLastRepOrOutsideItsRepsKeepsEverything)
{
    ProductScene full;
    for (const int cursor : {-1, 2, 3}) {
        KUVPickPath source = full.Path({full.pump, full.rotor, full.blade}, cursor, {1, 2});
        KUVPickPath result;
        VisPathUtility::StripPickPath(&source, result, 0, nullptr);
        EXPECT_EQ(Describe(result), Describe(source));
        EXPECT_EQ(result.Size(), 3);
        EXPECT_EQ(result.GetSubElementList()->Count(), 2) << "a picked face stays a face";
    }
    KUVPickPath empty;
    KUVPickPath result = full.Path({full.pump}, 0);
    VisPathUtility::StripPickPath(&empty, result, 0, nullptr);
    EXPECT_EQ(result.Size(), 0);
}

TEST(VisPathUtilityStripping, ARepThatStandsTwiceInAPathGoesFromItsEndOnly)
{
    ProductScene full;
    KUVPickPath source = PathTo({full.pump, full.rotor, full.pump, full.rotor}, {1}, 1);
    KUVPickPath result;
    VisPathUtility::StripPickPath(&source, result, 0, nullptr);
    EXPECT_EQ(ProductScene::RepsOf(result), Reps({full.pump, full.rotor}));
    EXPECT_EQ(result.GetCursorPosition(), 1);
}

TEST(VisPathUtilityStripping, EveryPathKeepsItsLock)
{
    ProductScene full;
    for (const bool sourceLocked : {false, true}) {
        for (const bool resultLocked : {false, true}) {
            KUVPickPath source = full.Path({full.pump, full.rotor, full.blade}, 1, {1});
            KUVPickPath result;
            if (sourceLocked)
                source.LockPath();
            if (resultLocked)
                result.LockPath();
            unsigned char mapped = 77;
            VisPathUtility::StripPickPath(&source, result, 1, &mapped);
            EXPECT_EQ(source.UnlockPath(), sourceLocked ? 1 : 0);
            EXPECT_EQ(result.UnlockPath(), resultLocked ? 1 : 0);
            EXPECT_EQ(Describe(result), "2 reps, cursor 1, 0 numbers");
            EXPECT_EQ(mapped, 0);
        }
    }
}

TEST(VisPathUtilityStripping, APathMayBeStrippedInPlace)
{
    ProductScene full;
    KUVPickPath path = full.Path({full.pump, full.rotor, full.blade}, 0, {1});
    path.LockPath();
    VisPathUtility::StripPickPath(&path, path, 0, nullptr);
    EXPECT_EQ(path.UnlockPath(), 1);
    EXPECT_EQ(Describe(path), "1 reps, cursor 0, 0 numbers");
}

TEST(VisPathUtilityStripping, APathOfAnotherKindOfViewpointIsCutAndNotMapped)
{
    ProductScene full;
    const Held<FlatViewpoint> flat(new FlatViewpoint);
    for (KUVViewpoint* const viewpoint :
         {static_cast<KUVViewpoint*>(flat.get()), static_cast<KUVViewpoint*>(nullptr)}) {
        KUVPickPath source(viewpoint);
        source.AddRep(full.pump, 1);
        source.AddRep(full.rotor, 1);
        support::MoveCursor(source, 0);
        KUVPickPath result;
        unsigned char mapped = 77;
        VisPathUtility::StripPickPath(&source, result, 1, &mapped);
        EXPECT_EQ(mapped, 0);
        EXPECT_EQ(ProductScene::RepsOf(result), Reps({full.pump}));
    }
}

TEST(VisPathUtilityStripping, APathOfALightSceneIsMappedOntoTheFullOne)
{
    ProductScene full;
    LightScene light({"P", "h", "H", "s", "S"});
    const Registered registered(full.viewer.get(), &light.loader);
    light.scene.Viewpoint().SetViewer(full.viewer.get());
    KUVPickPath source = light.Path(&light.scene.Viewpoint());
    support::MoveCursor(source, 2);
    for (const bool locked : {false, true}) {
        KUVPickPath result;
        if (locked)
            source.LockPath();
        unsigned char mapped = 77;
        VisPathUtility::StripPickPath(&source, result, 1, &mapped);
        EXPECT_EQ(mapped, 1);
        EXPECT_EQ(ProductScene::RepsOf(result), Reps({full.pump, full.housing}));
        EXPECT_EQ(result.GetCursorPosition(), -1);
        EXPECT_FALSE(result.IsLocked());
        VisPathUtility::StripPickPath(&source, result, 1, nullptr);
        EXPECT_EQ(ProductScene::RepsOf(result), Reps({full.pump, full.housing}));
    }
    VisPathUtility::StripPickPath(&source, source, 1, nullptr);
    EXPECT_EQ(source.UnlockPath(), 1);
    EXPECT_EQ(ProductScene::RepsOf(source), Reps({full.pump, full.housing})) << "in place";
}

TEST(VisPathUtilityStripping, AMappingThatFailsLeavesTheCutPath)
{
    ProductScene full;
    LightScene light({"P", "x", "X"});
    light.scene.Viewpoint().SetViewer(full.viewer.get());
    KUVPickPath source = light.Path(&light.scene.Viewpoint());
    unsigned char mapped = 77;
    KUVPickPath result;
    VisPathUtility::StripPickPath(&source, result, 1, &mapped);
    EXPECT_EQ(mapped, 0) << "no loader is registered";
    EXPECT_EQ(Describe(result), Describe(source));
    const Registered registered(full.viewer.get(), &light.loader);
    mapped = 77;
    VisPathUtility::StripPickPath(&source, result, 1, &mapped);
    EXPECT_EQ(mapped, 0) << "the scene has no such product";
    EXPECT_EQ(Describe(result), Describe(source));
    light.scene.Viewpoint().SetViewer(nullptr);
    mapped = 77;
    VisPathUtility::StripPickPath(&source, result, 1, &mapped);
    EXPECT_EQ(mapped, 0) << "no viewer whose loaders could be asked";
}

// ---- depth

TEST(VisPathUtilityStripping, CutsAndMapsPathsOfAsManyLevelsAsMemoryHolds)
{
    ProductScene full;
    constexpr int LEVELS = static_cast<int>(trees::MANY_LEVELS);
    KUVPickPath source(&full.scene.Viewpoint());
    KUV3DBagRep* bag = full.housing;
    for (int level = 0; level < LEVELS; ++level) {
        bag = full.scene.AddBag(bag);
        source.AddRep(bag, 1);
    }
    auto* const bottom = full.Add(bag, Occurrence("b", "B"));
    support::MoveCursor(source, 0);
    KUVPickPath result;
    VisPathUtility::StripPickPath(&source, result, 0, nullptr);
    EXPECT_EQ(result.Size(), 1);
    EXPECT_EQ(full.Find({"P", "h", "H", "b", "B"}, result), 0);
    EXPECT_EQ(result.Size(), LEVELS + 3);
    LightLoader loader;
    loader.reps = {bottom};
    const Registered registered(full.viewer.get(), &loader);
    EXPECT_EQ(full.Find({"B"}, result, ASK_LOADERS), 0);
    EXPECT_EQ(result.Size(), LEVELS + 3);
    EXPECT_EQ(result.GetCurrentRep(), bottom);
}
