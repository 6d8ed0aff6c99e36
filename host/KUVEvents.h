#ifndef KUVEvents_h
#define KUVEvents_h

// Device and keyboard events.
//
// An event that happened in a viewer arrives as a `KUVViewerEvent` that carries the device's own
// event; one that did not arrives as the device's event itself.

#include "KUVCommand.h"
#include "KUVExport.h"

class KUVViewer;

/// An input device.
class KUV_EXPORT KUVDevice : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    KUVDevice();
    ~KUVDevice() override;
};

/// The mouse.
class KUV_EXPORT KUVMouseDevice : public KUVDevice {
    KUV_DECLARE_CLASS
public:
    KUVMouseDevice();
    ~KUVMouseDevice() override;

    /// The buttons held down now, as a mask: 1 left, 2 middle, 4 right.
    int getButtonsStatus() const { return buttonsStatus_; }
    void SetButtonsStatus(int mask) { buttonsStatus_ = mask; }

private:
    int buttonsStatus_ = 0;
};

/// What happened on a device. Positions are in device units (pixels), y downwards.
class KUV_EXPORT KUVDeviceEvent : public KUVNotification {
    KUV_DECLARE_CLASS
public:
    /// `device` may be null and is not referenced: it outlives the event.
    KUVDeviceEvent(KUVDevice* device, int button, float x, float y, int modifier);
    ~KUVDeviceEvent() override;

    KUVDevice* GetDevice() const { return device_; }
    /// 1 left, 2 middle, 3 right, 0 none.
    int GetButton() const { return button_; }
    float GetX() const { return x_; }
    float GetY() const { return y_; }
    /// The keys held down with the button; 0 for none.
    int GetModifier() const { return modifier_; }

private:
    KUVDevice* device_;
    int button_;
    float x_;
    float y_;
    int modifier_;
};

class KUV_EXPORT KUVPressEvent : public KUVDeviceEvent {
    KUV_DECLARE_CLASS
public:
    using KUVDeviceEvent::KUVDeviceEvent;
    ~KUVPressEvent() override;
};

class KUV_EXPORT KUVReleaseEvent : public KUVDeviceEvent {
    KUV_DECLARE_CLASS
public:
    using KUVDeviceEvent::KUVDeviceEvent;
    ~KUVReleaseEvent() override;
};

class KUV_EXPORT KUVMotionEvent : public KUVDeviceEvent {
    KUV_DECLARE_CLASS
public:
    using KUVDeviceEvent::KUVDeviceEvent;
    ~KUVMotionEvent() override;
};

class KUV_EXPORT KUVDoubleClick : public KUVDeviceEvent {
    KUV_DECLARE_CLASS
public:
    using KUVDeviceEvent::KUVDeviceEvent;
    ~KUVDoubleClick() override;
};

/// A device event that happened in a viewer.
class KUV_EXPORT KUVViewerEvent : public KUVNotification {
    KUV_DECLARE_CLASS
public:
    /// Both may be null and neither is referenced: they outlive the event.
    KUVViewerEvent(KUVViewer* viewer, KUVDeviceEvent* deviceEvent);
    ~KUVViewerEvent() override;

    KUVViewer* GetViewer() const { return viewer_; }
    KUVDeviceEvent* GetDeviceEvent() const { return deviceEvent_; }

private:
    KUVViewer* viewer_;
    KUVDeviceEvent* deviceEvent_;
};

/// A key. The codes are the host's key identifiers; state 1 means that the key went down.
class KUV_EXPORT KUVKeybdEvent : public KUVNotification {
    KUV_DECLARE_CLASS
public:
    KUVKeybdEvent(unsigned int keyCode, int keyState);
    ~KUVKeybdEvent() override;

    unsigned int GetKeyCode() const { return keyCode_; }
    int GetKeyState() const { return keyState_; }

private:
    unsigned int keyCode_;
    int keyState_;
};

/// Text composed by an input method. Opaque to modules.
class KUV_EXPORT KUVIMEKeybdEvent : public KUVNotification {
    KUV_DECLARE_CLASS
public:
    KUVIMEKeybdEvent();
    ~KUVIMEKeybdEvent() override;
};

#endif
