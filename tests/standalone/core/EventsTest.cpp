#include "core/StandaloneViewer.h"

#include "KUVEvents.h"

#include <gtest/gtest.h>

TEST(KUVEvents, ADeviceEventSaysWhatHappenedWhere)
{
    KUVMouseDevice mouse;
    const KUVPressEvent press(&mouse, 1, 12.5f, 40.0f, 2);
    EXPECT_EQ(press.GetDevice(), &mouse);
    EXPECT_EQ(press.GetButton(), 1);
    EXPECT_EQ(press.GetX(), 12.5f);
    EXPECT_EQ(press.GetY(), 40.0f);
    EXPECT_EQ(press.GetModifier(), 2);
    EXPECT_EQ(mouse.GetReferenceCount(), 1U) << "an event references nothing";
}

TEST(KUVEvents, TheMouseKnowsTheButtonsHeldDown)
{
    KUVMouseDevice mouse;
    EXPECT_EQ(mouse.getButtonsStatus(), 0);
    mouse.SetButtonsStatus(1 | 4);
    EXPECT_EQ(mouse.getButtonsStatus(), 5);
    EXPECT_STREQ(mouse.IsA(), "KUVMouseDevice");
    EXPECT_EQ(mouse.IsAKindOf("KUVDevice"), 1);
}

TEST(KUVEvents, EventsAreToldApartByTheirClass)
{
    const KUVPressEvent press(nullptr, 1, 0.0f, 0.0f, 0);
    const KUVReleaseEvent release(nullptr, 1, 0.0f, 0.0f, 0);
    const KUVMotionEvent motion(nullptr, 0, 0.0f, 0.0f, 0);
    const KUVDoubleClick doubleClick(nullptr, 1, 0.0f, 0.0f, 0);
    EXPECT_STREQ(press.IsA(), "KUVPressEvent");
    EXPECT_STREQ(release.IsA(), "KUVReleaseEvent");
    EXPECT_STREQ(motion.IsA(), "KUVMotionEvent");
    EXPECT_STREQ(doubleClick.IsA(), "KUVDoubleClick");
    for (const KUVNotification* const event : {static_cast<const KUVNotification*>(&press),
                                               static_cast<const KUVNotification*>(&release),
                                               static_cast<const KUVNotification*>(&motion),
                                               static_cast<const KUVNotification*>(&doubleClick)}) {
        EXPECT_EQ(event->IsAKindOf("KUVDeviceEvent"), 1);
        EXPECT_EQ(event->IsAKindOf("KUVNotification"), 1);
    }
    EXPECT_EQ(press.IsAKindOf("KUVReleaseEvent"), 0);
}

TEST(KUVEvents, AViewerEventCarriesTheDevicesOwn)
{
    core::StandaloneViewer viewer;
    KUVMotionEvent motion(nullptr, 0, 3.0f, 4.0f, 0);
    const KUVViewerEvent event(&viewer, &motion);
    EXPECT_EQ(event.GetViewer(), &viewer);
    EXPECT_EQ(event.GetDeviceEvent(), &motion);
    EXPECT_EQ(event.IsAKindOf("KUVDeviceEvent"), 0);
    const KUVViewerEvent empty(nullptr, nullptr);
    EXPECT_EQ(empty.GetViewer(), nullptr);
    EXPECT_EQ(empty.GetDeviceEvent(), nullptr);
}

TEST(KUVEvents, AKeyEventSaysWhichKeyWentWhere)
{
    const KUVKeybdEvent event(0x25, 1);
    EXPECT_EQ(event.GetKeyCode(), 0x25U);
    EXPECT_EQ(event.GetKeyState(), 1);
    EXPECT_STREQ(event.IsA(), "KUVKeybdEvent");
    const KUVIMEKeybdEvent composed;
    EXPECT_STREQ(composed.IsA(), "KUVIMEKeybdEvent");
    EXPECT_EQ(composed.IsAKindOf("KUVKeybdEvent"), 0);
}
