#include "core/StandaloneViewer.h"

#include <utility>

namespace {

/// Puts `next` in the place of `held`, with the references that go with it.
template <class Object>
void ReplaceReference(Object*& held, Object* next)
{
    if (next)
        next->AddRef();
    if (Object* const former = std::exchange(held, next))
        former->Release();
}

}  // namespace

namespace core {
KUV_IMPLEMENT_CLASS(StandaloneSupport, KUVSupport, "KUVHost")
KUV_IMPLEMENT_CLASS(StandaloneViewer, KUVViewer, "KUVHost")
}  // namespace core

core::StandaloneSupport::StandaloneSupport() = default;
core::StandaloneSupport::~StandaloneSupport() = default;

core::StandaloneViewer::StandaloneViewer() : support_(new StandaloneSupport) {}

core::StandaloneViewer::~StandaloneViewer()
{
    SetMain3DViewpoint(nullptr);
    SetViewObject(nullptr);
    support_->Release();
}

void core::StandaloneViewer::GetGraphicSize(float* width, float* height) const
{
    if (width)
        *width = width_;
    if (height)
        *height = height_;
}

void core::StandaloneViewer::GetMousePosition(int* x, int* y) const
{
    if (x)
        *x = mouseX_;
    if (y)
        *y = mouseY_;
}

KUVSupport* core::StandaloneViewer::GetSupport() const { return support_; }

void core::StandaloneViewer::SetGraphicSize(float width, float height)
{
    width_ = width;
    height_ = height;
}

void core::StandaloneViewer::SetMousePosition(int x, int y)
{
    mouseX_ = x;
    mouseY_ = y;
}

void core::StandaloneViewer::SetMain3DViewpoint(KUV3DViewpoint* viewpoint)
{
    ReplaceReference(viewpoint_, viewpoint);
}

void core::StandaloneViewer::SetViewObject(KUVBaseUnknown* viewObject)
{
    ReplaceReference(viewObject_, viewObject);
}
