#include "core/StandaloneViewer.h"

#include <gtest/gtest.h>

namespace {

class Viewpoint : public KUVViewpoint {
public:
    KUVViewer* GetViewer() const override { return nullptr; }
};

class Viewpoint3D : public KUV3DViewpoint {
public:
    KUVViewer* GetViewer() const override { return nullptr; }
    KUVSceneGraph* GetSceneGraph() const override { return nullptr; }
    KUVMathPointf GetTargetPoint() const override { return {}; }
};

class Graph : public KUVSceneGraph {
public:
    KUVRep* GetRootRep() const override { return nullptr; }
};

}  // namespace

TEST(StandaloneViewer, AnswersWhatItWasTold)
{
    core::StandaloneViewer viewer;
    viewer.SetGraphicSize(1280.0f, 800.0f);
    viewer.SetMousePosition(3, 4);
    float width = 0.0f;
    float height = 0.0f;
    viewer.GetGraphicSize(&width, &height);
    EXPECT_EQ(width, 1280.0f);
    EXPECT_EQ(height, 800.0f);
    int x = 0;
    int y = 0;
    viewer.GetMousePosition(&x, &y);
    EXPECT_EQ(x, 3);
    EXPECT_EQ(y, 4);
    viewer.GetGraphicSize(nullptr, nullptr);
    viewer.GetMousePosition(nullptr, nullptr);
}

TEST(StandaloneViewer, StartsEmptyWithALayoutUnitAPixel)
{
    const core::StandaloneViewer viewer;
    EXPECT_EQ(viewer.GetMain3DViewpoint(), nullptr);
    EXPECT_EQ(viewer.GetViewObject(), nullptr);
    ASSERT_NE(viewer.GetSupport(), nullptr);
    EXPECT_EQ(viewer.GetSupport()->GetPointToPixelScale(), 1.0f);
    float width = -1.0f;
    viewer.GetGraphicSize(&width, nullptr);
    EXPECT_EQ(width, 0.0f);
}

TEST(StandaloneViewer, ItsSupportKnowsTheScale)
{
    core::StandaloneViewer viewer;
    viewer.SetPointToPixelScale(2.0f);
    EXPECT_EQ(viewer.GetSupport()->GetPointToPixelScale(), 2.0f);
    EXPECT_STREQ(viewer.GetSupport()->IsA(), "StandaloneSupport");
    EXPECT_EQ(viewer.GetSupport()->IsAKindOf("KUVSupport"), 1);
    EXPECT_EQ(viewer.IsAKindOf("KUVViewer"), 1);
}

TEST(StandaloneViewer, ReferencesItsViewpointAndViewObject)
{
    Viewpoint3D viewpoint;
    KUVBaseUnknown viewObject;
    {
        core::StandaloneViewer viewer;
        viewer.SetMain3DViewpoint(&viewpoint);
        viewer.SetMain3DViewpoint(&viewpoint);
        viewer.SetViewObject(&viewObject);
        EXPECT_EQ(viewer.GetMain3DViewpoint(), &viewpoint);
        EXPECT_EQ(viewer.GetViewObject(), &viewObject);
        EXPECT_EQ(viewpoint.GetReferenceCount(), 2U);
        EXPECT_EQ(viewObject.GetReferenceCount(), 2U);
        viewer.SetViewObject(nullptr);
        EXPECT_EQ(viewObject.GetReferenceCount(), 1U);
    }
    EXPECT_EQ(viewpoint.GetReferenceCount(), 1U);
}

TEST(KUVViewpoint, OnlyA3DViewpointIsOne)
{
    Viewpoint plain;
    Viewpoint3D solid;
    EXPECT_EQ(plain.As3DViewpoint(), nullptr);
    EXPECT_EQ(solid.As3DViewpoint(), &solid);
    EXPECT_STREQ(plain.IsA(), "KUVViewpoint");
    EXPECT_STREQ(solid.IsA(), "KUV3DViewpoint");
    EXPECT_EQ(solid.IsAKindOf("KUVViewpoint"), 1);
    EXPECT_STREQ(Graph().IsA(), "KUVSceneGraph");
}
