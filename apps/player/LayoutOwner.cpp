#include "player/LayoutOwner.h"

#include <new>

#include "KUV2D.h"
#include "KUVCommand.h"
#include "VisCushionLayout.h"
#include "VisDataTree.h"
#include "VisIcicleLayout.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutNotification.h"

namespace player {

LayoutOwner::LayoutOwner(LayoutKind kind, VisDataTree& root)
    : command_(new KUVCommand(nullptr, "dataviz")), bag_(KUV2DBagRep::CreateRep()),
      layout_(MakeLayout(kind, root))
{
    if (layout_ == nullptr || layout_->GetCallbackManager() == nullptr)
        throw std::bad_alloc();
    for (const Notice notice : {Notice::SetCurrentRoot, Notice::SelectNode, Notice::HoverNode,
                                Notice::RightClickNode, Notice::DoubleClick})
        Listen(notice);
    if (icicle_ != nullptr)
        Listen(Notice::SetLastColumns);
}

VisTreeSpaceFillingLayout* LayoutOwner::MakeLayout(LayoutKind kind, VisDataTree& root)
{
    if (kind == LayoutKind::Cushion)
        return VisCushionLayout::CreateLayout(command_, &root, bag_);
    if (kind == LayoutKind::Icicle)
        return icicle_ = VisIcicleLayout::CreateLayout(command_, &root, bag_);
    return VisTreeMapLayout::CreateLayout(command_, &root, bag_);
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
    const auto* const columns =
        dynamic_cast<const VisIcicleLayoutON_SET_NLAST_NODESEvt*>(notification);
    if (columns != nullptr) {
        heard.oldColumns = columns->GetOldValue();
        heard.newColumns = columns->GetNewValue();
        heard.key = columns->GetKeyCode();
    }
    if (notice == Notice::HoverNode)
        highlighted_ = heard.node;
    log_.Add(heard);
    if (columns != nullptr && isDrawn_)
        Plot(heard.newColumns);
}

// ---- drawing

void LayoutOwner::Prepare(const Drawing& drawing)
{
    drawing_ = drawing;
    if (icicle_ != nullptr && drawing.alignLeaves)
        icicle_->AlignIciclePlotLeaves(nullptr);
    if (icicle_ != nullptr && drawing.lastColumns != NO_COLUMN_LIMIT)
        icicle_->SetNLastNodes(drawing.lastColumns);
}

std::optional<KUVMathPoint2Df> LayoutOwner::WholeSize() const
{
    const VisDataTree* const root = layout_->GetCurrentRoot();
    if (icicle_ == nullptr || root == nullptr)
        return std::nullopt;
    // Measured without being stored: the plot measures for itself.
    const VisIcicleLayout::VisIcicleLayoutCache* const cache = icicle_->GetCache();
    return cache->ComputeIcicleSize(drawing_.lastColumns, drawing_.relativeToMinDepth ? 1 : 0,
                                    drawing_.inlineLabels ? 1 : 0, root->ComputeDepth(),
                                    /*minDepth=*/0xFFFFFFFFU, /*maxDepth=*/0xFFFFFFFFU);
}

void LayoutOwner::DrawPrepared()
{
    // Keeps font and scale for the redraws of zooming.
    layout_->Draw(drawing_.position, drawing_.size, drawing_.font, drawing_.scale);
    // And this is how the limit and the flags reach them.
    if (icicle_ != nullptr)
        Plot(drawing_.lastColumns);
    isDrawn_ = true;
}

void LayoutOwner::Draw(const Drawing& drawing)
{
    Prepare(drawing);
    DrawPrepared();
}

void LayoutOwner::DrawOn(const KUVMathPoint2Df& position, const KUVMathPoint2Df& size)
{
    drawing_.position = position;
    drawing_.size = size;
    if (icicle_ != nullptr)
        Plot(icicle_->GetNLastNodes());
    else
        layout_->Draw(position, size, drawing_.font, drawing_.scale);
}

void LayoutOwner::Plot(unsigned int lastColumns)
{
    columns_ = icicle_->IciclePlot(drawing_.position, drawing_.size, drawing_.font, lastColumns,
                                   drawing_.scale, drawing_.relativeToMinDepth ? 1 : 0,
                                   drawing_.inlineLabels ? 1 : 0);
}

}  // namespace player
