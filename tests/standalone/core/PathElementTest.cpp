#include "KUVModelPaths.h"

#include "core/ProductObjects.h"
#include "support/TestScene.h"

#include <gtest/gtest.h>

using support::Held;

namespace {

Held<KUVBaseUnknown> MakeObject(const char* name)
{
    return Held<KUVBaseUnknown>(core::ShapeObject::Create(name));
}

struct ThreeObjects {
    Held<KUVBaseUnknown> a = MakeObject("a");
    Held<KUVBaseUnknown> b = MakeObject("b");
    Held<KUVBaseUnknown> c = MakeObject("c");
    KUVPathElement path;

    ThreeObjects()
    {
        for (KUVBaseUnknown* const object : {a.get(), b.get(), c.get()})
            path.AddElement(object);
    }
};

}  // namespace

TEST(KUVPathElement, StepsAsARepPathDoes)
{
    ThreeObjects objects;
    KUVPathElement& path = objects.path;
    EXPECT_EQ(path.Size(), 3);
    EXPECT_EQ(path.GetCurrentElement(), objects.c.get());
    path.InitToTopElement();
    EXPECT_EQ(path.GetCursorPosition(), -1);
    EXPECT_EQ(path.GetCurrentElement(), nullptr);
    EXPECT_EQ(path.NextFatherElement(), nullptr);
    EXPECT_EQ(path.NextChildElement(), objects.a.get());
    EXPECT_EQ(path.NextFatherElement(), nullptr);
    EXPECT_EQ(path.GetCursorPosition(), 0);
    path.InitToLeafElement();
    EXPECT_EQ(path.GetCursorPosition(), 3);
    EXPECT_EQ(path.NextChildElement(), nullptr);
    EXPECT_EQ(path.NextFatherElement(), objects.c.get()) << "the leaf element itself";
    EXPECT_EQ(path.NextFatherElement(), objects.b.get());
    EXPECT_EQ(path[1], objects.b.get());
    EXPECT_EQ(path[3], nullptr);
    EXPECT_EQ(path[-1], nullptr);
}

TEST(KUVPathElement, RemovingKeepsTheCursorOnAnElement)
{
    ThreeObjects objects;
    objects.path.RemoveElement(objects.c.get());
    EXPECT_EQ(objects.path.GetCurrentElement(), objects.b.get());
    objects.path.RemoveElement(objects.a.get());
    EXPECT_EQ(objects.path.GetCurrentElement(), objects.b.get());
    objects.path.RemoveElement(objects.a.get());
    objects.path.RemoveElement(nullptr);
    EXPECT_EQ(objects.path.Size(), 1);
    EXPECT_EQ(objects.a->GetReferenceCount(), 1U);
    objects.path.Empty();
    EXPECT_EQ(objects.path.GetCursorPosition(), -1);
    EXPECT_EQ(objects.b->GetReferenceCount(), 1U);
    objects.path.AddElement(nullptr);
    EXPECT_EQ(objects.path.Size(), 0);
}

TEST(KUVPathElement, ALockedPathAnswersAsAnEmptyOne)
{
    ThreeObjects objects;
    objects.path.LockPath();
    EXPECT_EQ(objects.path.Size(), 0);
    EXPECT_EQ(objects.path[0], nullptr);
    EXPECT_EQ(objects.path.GetCursorPosition(), -1);
    EXPECT_EQ(objects.path.GetCurrentElement(), nullptr);
    EXPECT_EQ(objects.path.UnlockPath(), 1);
    EXPECT_EQ(objects.path.UnlockPath(), 0);
    EXPECT_EQ(objects.path.Size(), 3);
}

TEST(KUVPathElement, CopiesHoldTheirElementsAndAttachments)
{
    ThreeObjects objects;
    objects.path.AttachElement(objects.a.get());
    objects.path.InitToTopElement();
    {
        KUVPathElement copy(objects.path);
        KUVPathElement assigned;
        assigned.AddElement(objects.b.get());
        assigned = copy;
        EXPECT_EQ(assigned.Size(), 3);
        EXPECT_EQ(assigned.GetCursorPosition(), -1);
        EXPECT_EQ(objects.a->GetReferenceCount(), 7U);
        assigned = *&assigned;
        EXPECT_EQ(objects.a->GetReferenceCount(), 7U);
    }
    EXPECT_EQ(objects.a->GetReferenceCount(), 3U);
}

TEST(KUVPathElement, FindsTheFirstAttachedElementOfAClass)
{
    KUVPathElement path;
    const Held<KUVGraphicElementIntersection> first(
        new KUVGraphicElementIntersection({1.0f, 2.0f, 3.0f}));
    const Held<KUVGraphicElementIntersection> second(
        new KUVGraphicElementIntersection({4.0f, 5.0f, 6.0f}));
    const Held<KUVGraphicElementNormale> normal(new KUVGraphicElementNormale({0.0, 1.0, 0.0}));
    path.AttachElement(nullptr);
    path.AttachElement(normal.get());
    path.AttachElement(first.get());
    path.AttachElement(second.get());
    const Held<KUVBaseUnknown> found(
        path.SearchAttachedElement(KUVGraphicElementIntersection::ClassId()));
    EXPECT_EQ(found.get(), first.get());
    EXPECT_EQ(first->GetReferenceCount(), 3U) << "referenced for the caller";
    EXPECT_EQ(first->GetPoint().y, 2.0f);
    EXPECT_EQ(normal->GetDirection().y, 1.0);
    EXPECT_EQ(path.SearchAttachedElement(KUVRep::ClassId()), nullptr);
}

TEST(KUVPathElementWithPositions, KeepsWhereItWasPicked)
{
    const Held<KUVBaseUnknown> view = MakeObject("view");
    KUVPathElementWithPositions element(nullptr, nullptr, {1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f},
                                        {0.0f, 0.0f, 1.0f});
    EXPECT_EQ(element.GetPoint().x, 1.0f);
    EXPECT_EQ(element.GetNormal().y, 1.0f);
    EXPECT_EQ(element.GetGlobalNormal().z, 1.0f);
    EXPECT_EQ(element.GetInteractiveContext(), 0);
    element.SetInteractiveContext(2);
    EXPECT_EQ(element.GetInteractiveContext(), 2);
    element.SetViewObject(view.get());
    element.SetViewObject(view.get());
    EXPECT_EQ(element.GetViewObject(), view.get());
    EXPECT_EQ(view->GetReferenceCount(), 2U);
    element.SetViewObject(nullptr);
    EXPECT_EQ(view->GetReferenceCount(), 1U);
    EXPECT_TRUE(element.IsAKindOf("KUVGraphicPathElement"));
}

TEST(KUVVisManager, IsNoneUntilOneIsSet) { EXPECT_EQ(KUVVisManager::GetVisManager(), nullptr); }
