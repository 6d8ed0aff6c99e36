#include "player/LayoutOwner.h"

#include <new>

#include "KUV2D.h"
#include "KUVCommand.h"
#include "VisDataTree.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutNotification.h"

namespace player {

LayoutOwner::LayoutOwner(LayoutKind /*kind*/, VisDataTree& root)
    : command_(new KUVCommand(nullptr, "dataviz")), bag_(KUV2DBagRep::CreateRep()),
      layout_(VisTreeMapLayout::CreateLayout(command_, &root, bag_))
{
    if (layout_ == nullptr || layout_->GetCallbackManager() == nullptr)
        throw std::bad_alloc();
    for (const Notice notice : {Notice::SetCurrentRoot, Notice::SelectNode, Notice::HoverNode,
                                Notice::RightClickNode, Notice::DoubleClick})
        Listen(notice);
}

LayoutOwner::~LayoutOwner()
{
    layout_->Release();
    bag_->Release();
    command_->Release();
}

// ---- notifications

void LayoutOwner::Listen(Notice notice)
{
    layout_->GetCallbackManager()->Subscribe(
        NameOf(notice), layout_,
        [this, notice](const char*, KUVNotification* notification, KUVBaseUnknown*) {
            Hear(notice, notification);
        });
}

void LayoutOwner::Hear(Notice notice, const KUVNotification* notification)
{
    HeardNotification heard;
    heard.notice = notice;
    if (const auto* const nodes =
            dynamic_cast<const VisTreeSpaceFillingLayoutNotification*>(notification)) {
        heard.hasNodes = true;
        heard.previous = nodes->GetPreviousNode();
        heard.node = nodes->GetNode();
    }
    if (notice == Notice::HoverNode)
        highlighted_ = heard.node;
    log_.Add(heard);
}

// ---- drawing

void LayoutOwner::Draw(const Drawing& drawing)
{
    drawing_ = drawing;
    layout_->Draw(drawing_.position, drawing_.size, drawing_.font, drawing_.scale);
}

void LayoutOwner::DrawOn(const KUVMathPoint2Df& position, const KUVMathPoint2Df& size)
{
    drawing_.position = position;
    drawing_.size = size;
    layout_->Draw(position, size, drawing_.font, drawing_.scale);
}

}  // namespace player
