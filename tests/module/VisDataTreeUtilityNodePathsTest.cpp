#include "VisDataTreeUtility.h"

#include "ProductScenes.h"
#include "SceneTrees.h"
#include "private/NodePath.h"

#include "support/Allocations.h"
#include "support/TestScene.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iostream>
#include <new>
#include <vector>

using products::Describe;
using products::LightScene;
using products::ProductScene;
using products::Registered;
using products::Reps;
using scenes::SceneTree;

namespace {

constexpr unsigned char MAP_TO_PRODUCT = 1;
constexpr unsigned char FLAGS[] = {0, MAP_TO_PRODUCT};

/// A node for `path`, and one below it.
class InnerNode {
public:
    explicit InnerNode(const KUVPickPath& path) : node_(scenes::NodeOf(path))
    {
        const SceneTree child = scenes::NodeOf(KUVPickPath());
        PickPathOf(*child)->Release();
        child->SetData(nullptr);
        node_->InsertChild(child.get(), 1);
    }

    VisDataTree* Get() const { return node_.get(); }
    KUVPickPath& Path() const { return *PickPathOf(*node_); }

private:
    SceneTree node_;
};

Reps Stripped(VisDataTree* node, unsigned char mapToProduct)
{
    KUVPickPath result;
    VisDataTreeUtility::StripPickPathFromNode(node, result, mapToProduct);
    return ProductScene::RepsOf(result);
}

/// A light scene of the housing's seal, shown by the viewer of a full one.
struct BothScenes {
    ProductScene full;
    LightScene light{{"P", "h", "H", "s", "S"}};
    Registered registered{full.viewer.get(), &light.loader};

    BothScenes() { light.scene.Viewpoint().SetViewer(full.viewer.get()); }
    ~BothScenes() { light.scene.Viewpoint().SetViewer(nullptr); }
    BothScenes(const BothScenes&) = delete;
    BothScenes& operator=(const BothScenes&) = delete;

    KUVPickPath LightPath() { return light.Path(&light.scene.Viewpoint()); }
};

}  // namespace

TEST(VisDataTreeUtilityNodePaths, ALeafOnItsLastRepIsStrippedThereWhateverTheFlag)
{
    BothScenes scenes;
    const SceneTree leaf = scenes::NodeOf(scenes.LightPath());
    for (const unsigned char flag : FLAGS) {
        const Reps levels = Stripped(leaf.get(), flag);
        EXPECT_EQ(levels, ProductScene::RepsOf(*PickPathOf(*leaf)));
        EXPECT_EQ(levels.size(), 5U);
    }
    const SceneTree face =
        scenes::NodeOf(scenes.full.Path({scenes.full.rotor, scenes.full.blade}, 1, {2}));
    KUVPickPath result;
    VisDataTreeUtility::StripPickPathFromNode(face.get(), result, MAP_TO_PRODUCT);
    EXPECT_EQ(Describe(result), "2 reps, cursor 1, 1 numbers") << "a face stays a face";
}

TEST(VisDataTreeUtilityNodePaths, AnInnerNodeOnItsLastRepYieldsTheRepAboveAndKeepsItsCursor)
{
    ProductScene full;
    const InnerNode node(full.Path({full.pump, full.rotor, full.blade}, 2, {1}));
    for (const unsigned char flag : FLAGS) {
        KUVPickPath result;
        VisDataTreeUtility::StripPickPathFromNode(node.Get(), result, flag);
        EXPECT_EQ(ProductScene::RepsOf(result), Reps({full.pump, full.rotor}));
        EXPECT_EQ(Describe(result), "2 reps, cursor 1, 0 numbers");
        EXPECT_EQ(Describe(node.Path()), "3 reps, cursor 2, 1 numbers");
    }
}

TEST(VisDataTreeUtilityNodePaths, AnInnerNodeOnItsLastRepIsMappedToItsProductWhenAsked)
{
    BothScenes scenes;
    const InnerNode node(scenes.LightPath());
    EXPECT_EQ(Stripped(node.Get(), 0).size(), 4U);
    EXPECT_EQ(Stripped(node.Get(), MAP_TO_PRODUCT),
              Reps({scenes.full.pump, scenes.full.housing, scenes.full.seal}))
        << "the list ends with the instance, which its occurrence shows";
    EXPECT_EQ(Describe(node.Path()), "5 reps, cursor 4, 0 numbers");
}

TEST(VisDataTreeUtilityNodePaths, AnInnerNodeBeforeItsLastRepEndsThereAndIsNotMapped)
{
    BothScenes scenes;
    KUVPickPath path = scenes.LightPath();
    support::MoveCursor(path, 2);
    const InnerNode node(path);
    for (const unsigned char flag : FLAGS) {
        const Reps levels = Stripped(node.Get(), flag);
        EXPECT_EQ(levels, Reps({path[0], path[1], path[2]}));
    }
}

TEST(VisDataTreeUtilityNodePaths, AnInnerNodeOfOneRepHasNoneAbove)
{
    ProductScene full;
    const InnerNode node(full.Path({full.pump}, 0));
    EXPECT_EQ(Stripped(node.Get(), 0), Reps({full.pump}));
    EXPECT_EQ(node.Path().GetCursorPosition(), 0);
    const InnerNode top{KUVPickPath()};
    KUVPickPath result = full.Path({full.pump}, 0);
    VisDataTreeUtility::StripPickPathFromNode(top.Get(), result, 0);
    EXPECT_EQ(result.Size(), 0) << "the unnamed node above several documents";
}

TEST(VisDataTreeUtilityNodePaths, WithoutNodeOrPathNothingHappens)
{
    ProductScene full;
    KUVPickPath result = full.Path({full.pump, full.rotor}, 0, {1});
    const SceneTree bare(new VisDataTree(nullptr, "", ""));
    for (VisDataTree* const node : {static_cast<VisDataTree*>(nullptr), bare.get()}) {
        VisDataTreeUtility::StripPickPathFromNode(node, result, MAP_TO_PRODUCT);
        EXPECT_EQ(Describe(result), "2 reps, cursor 0, 1 numbers");
    }
}

TEST(VisDataTreeUtilityNodePaths, LocksStayAsTheyAre)
{
    ProductScene full;
    const InnerNode node(full.Path({full.pump, full.rotor, full.blade}, 2));
    node.Path().LockPath();
    KUVPickPath result;
    VisDataTreeUtility::StripPickPathFromNode(node.Get(), result, 0);
    EXPECT_EQ(Describe(result), "2 reps, cursor 1, 0 numbers") << "not locked";
    EXPECT_EQ(node.Path().UnlockPath(), 1);
    EXPECT_EQ(Describe(node.Path()), "3 reps, cursor 2, 0 numbers");
}

TEST(VisDataTreeUtilityNodePaths, TheNodesOwnPathMayBeTheResult)
{
    ProductScene full;
    const InnerNode node(full.Path({full.pump, full.rotor, full.blade}, 2));
    VisDataTreeUtility::StripPickPathFromNode(node.Get(), node.Path(), 0);
    EXPECT_EQ(Describe(node.Path()), "2 reps, cursor 1, 0 numbers");
}

TEST(VisDataTreeUtilityNodePaths, EveryFailingAllocationLeavesTheNodesPathAsItWas)
{
    BothScenes scenes;
    const InnerNode node(scenes.LightPath());
    const std::size_t failures = support::ForEveryFailingAllocation([&] {
        KUVPickPath result;
        VisDataTreeUtility::StripPickPathFromNode(node.Get(), result, MAP_TO_PRODUCT);
        const support::UncountedAllocations uncounted;
        EXPECT_EQ(Describe(node.Path()), "5 reps, cursor 4, 0 numbers");
        EXPECT_TRUE(result.Size() == 0 || result.Size() == 3 || result.Size() == 4)
            << "nothing, the product, or the path that was cut";
    });
    EXPECT_GT(failures, 10U);
    std::cout << "count: " << failures << " failing allocations while stripping a node's path\n";
}
