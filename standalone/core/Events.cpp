#include "KUVEvents.h"

KUV_IMPLEMENT_CLASS(KUVDevice, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVMouseDevice, KUVDevice, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVDeviceEvent, KUVNotification, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVPressEvent, KUVDeviceEvent, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVReleaseEvent, KUVDeviceEvent, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVMotionEvent, KUVDeviceEvent, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVDoubleClick, KUVDeviceEvent, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVViewerEvent, KUVNotification, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVKeybdEvent, KUVNotification, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVIMEKeybdEvent, KUVNotification, "KUVHost")

KUVDevice::KUVDevice() = default;
KUVDevice::~KUVDevice() = default;

KUVMouseDevice::KUVMouseDevice() = default;
KUVMouseDevice::~KUVMouseDevice() = default;

KUVDeviceEvent::KUVDeviceEvent(KUVDevice* device, int button, float x, float y, int modifier)
    : device_(device), button_(button), x_(x), y_(y), modifier_(modifier)
{
}

KUVDeviceEvent::~KUVDeviceEvent() = default;
KUVPressEvent::~KUVPressEvent() = default;
KUVReleaseEvent::~KUVReleaseEvent() = default;
KUVMotionEvent::~KUVMotionEvent() = default;
KUVDoubleClick::~KUVDoubleClick() = default;

KUVViewerEvent::KUVViewerEvent(KUVViewer* viewer, KUVDeviceEvent* deviceEvent)
    : viewer_(viewer), deviceEvent_(deviceEvent)
{
}

KUVViewerEvent::~KUVViewerEvent() = default;

KUVKeybdEvent::KUVKeybdEvent(unsigned int keyCode, int keyState)
    : keyCode_(keyCode), keyState_(keyState)
{
}

KUVKeybdEvent::~KUVKeybdEvent() = default;

KUVIMEKeybdEvent::KUVIMEKeybdEvent() = default;
KUVIMEKeybdEvent::~KUVIMEKeybdEvent() = default;
