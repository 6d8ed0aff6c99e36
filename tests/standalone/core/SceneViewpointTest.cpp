#include "core/SceneViewpoint.h"

#include "core/StandaloneViewer.h"
#include "support/TestScene.h"

#include <gtest/gtest.h>

using support::Held;
using support::TestScene;

TEST(SceneViewpoint, LooksAtASceneThatItHolds)
{
    Held<KUV3DBagRep> root(KUV3DBagRep::CreateRep());
    const Held<core::SceneViewpoint> viewpoint(core::SceneViewpoint::Create(root.get()));
    EXPECT_EQ(viewpoint->GetSceneGraph()->GetRootRep(), root.get());
    EXPECT_EQ(root->GetReferenceCount(), 2U);
    EXPECT_EQ(viewpoint->As3DViewpoint(), viewpoint.get());
    viewpoint->SetTargetPoint({1.0f, 2.0f, 3.0f});
    EXPECT_EQ(viewpoint->GetTargetPoint().y, 2.0f);
    KUVRep* const bag = root.get();
    root.reset();
    EXPECT_EQ(viewpoint->GetSceneGraph()->GetRootRep(), bag);
}

TEST(SceneViewpoint, ASceneMayBeWithoutRep)
{
    const Held<core::SceneViewpoint> viewpoint(core::SceneViewpoint::Create(nullptr));
    ASSERT_TRUE(viewpoint->GetSceneGraph());
    EXPECT_EQ(viewpoint->GetSceneGraph()->GetRootRep(), nullptr);
}

TEST(SceneViewpoint, ADocumentHangsInABagOfItsOwn)
{
    TestScene scene;
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    const Held<core::SceneViewpoint> viewpoint(core::SceneViewpoint::CreateForDocument(pump));
    const KUVRep* const root = viewpoint->GetSceneGraph()->GetRootRep();
    ASSERT_TRUE(root);
    EXPECT_NE(root, pump);
    EXPECT_EQ(root->GetChildren()->Count(), 1);
    EXPECT_EQ((*root->GetChildren())[0], pump);
    const Held<core::SceneViewpoint> empty(core::SceneViewpoint::CreateForDocument(nullptr));
    EXPECT_EQ(empty->GetSceneGraph()->GetRootRep()->GetChildren()->Count(), 0);
}

TEST(SceneViewpoint, ViewerAndViewpointKnowEachOther)
{
    const Held<core::SceneViewpoint> viewpoint(core::SceneViewpoint::Create(nullptr));
    EXPECT_EQ(viewpoint->GetViewer(), nullptr);
    {
        const Held<core::StandaloneViewer> viewer(new core::StandaloneViewer);
        viewer->SetMain3DViewpoint(viewpoint.get());
        viewpoint->SetViewer(viewer.get());
        EXPECT_EQ(viewpoint->GetViewer(), viewer.get());
        EXPECT_EQ(viewer->GetMain3DViewpoint(), viewpoint.get());
        viewpoint->SetViewer(nullptr);
    }
    EXPECT_EQ(viewpoint->GetReferenceCount(), 1U);
}
