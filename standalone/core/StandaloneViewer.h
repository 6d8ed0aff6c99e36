#ifndef core_StandaloneViewer_h
#define core_StandaloneViewer_h

#include "KUVViewer.h"

namespace core {

/// What the standalone host's viewer draws on.
class KUV_EXPORT StandaloneSupport : public KUVSupport {
    KUV_DECLARE_CLASS
public:
    StandaloneSupport();
    ~StandaloneSupport() override;

    float GetPointToPixelScale() const override { return scale_; }
    /// Device pixels a layout unit; 1 from the start.
    void SetPointToPixelScale(float scale) { scale_ = scale; }

private:
    float scale_ = 1.0f;
};

/// A viewer whose answers are set by whoever shows it: a window, a command line tool or a test.
class KUV_EXPORT StandaloneViewer : public KUVViewer {
    KUV_DECLARE_CLASS
public:
    StandaloneViewer();
    ~StandaloneViewer() override;
    StandaloneViewer(const StandaloneViewer&) = delete;
    StandaloneViewer& operator=(const StandaloneViewer&) = delete;

    void GetGraphicSize(float* width, float* height) const override;
    void GetMousePosition(int* x, int* y) const override;
    KUVSupport* GetSupport() const override;
    KUV3DViewpoint* GetMain3DViewpoint() const override { return viewpoint_; }
    KUVBaseUnknown* GetViewObject() const override { return viewObject_; }

    void SetGraphicSize(float width, float height);
    void SetMousePosition(int x, int y);
    /// Also through `GetSupport`.
    void SetPointToPixelScale(float scale) { support_->SetPointToPixelScale(scale); }
    /// Takes a reference on `viewpoint`, which may be null. A viewpoint holds none on its viewer.
    void SetMain3DViewpoint(KUV3DViewpoint* viewpoint);
    /// Takes a reference on `viewObject`, which may be null.
    void SetViewObject(KUVBaseUnknown* viewObject);

private:
    StandaloneSupport* support_;
    KUV3DViewpoint* viewpoint_ = nullptr;
    KUVBaseUnknown* viewObject_ = nullptr;
    float width_ = 0.0f;
    float height_ = 0.0f;
    int mouseX_ = 0;
    int mouseY_ = 0;
};

}  // namespace core

#endif
