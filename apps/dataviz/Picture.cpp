#include "Picture.h"

#include <array>
#include <new>

#include "KUV2D.h"
#include "KUVCommand.h"
#include "VisDataTree.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutNotification.h"

namespace dataviz {

Picture::Picture(InputTree& tree, const ModelOptions& model)
    : tree_(tree), owner_(new KUVCommand(nullptr, "dataviz")), bag_(KUV2DBagRep::CreateRep()),
      layout_(VisTreeMapLayout::CreateLayout(owner_, tree.Root(), bag_))
{
    if (layout_ == nullptr || layout_->GetCallbackManager() == nullptr)
        throw std::bad_alloc();
    tree_.Weigh(model.wholeReps);
    Listen();
}

Picture::~Picture()
{
    layout_->Release();
    bag_->Release();
    owner_->Release();
}

void Picture::Listen()
{
    const std::array events{VisTreeSpaceFillingLayout::ON_SET_CURRENT_ROOT(),
                            VisTreeSpaceFillingLayout::ON_SELECT_NODE(),
                            VisTreeSpaceFillingLayout::ON_HOVER_NODE(),
                            VisTreeSpaceFillingLayout::ON_RIGHT_CLICK_NODE(),
                            VisTreeSpaceFillingLayout::ON_DOUBLE_CLICK()};
    for (const char* const event : events) {
        layout_->GetCallbackManager()->Subscribe(
            event, layout_,
            [this](const char* name, KUVNotification* notification, KUVBaseUnknown*) {
                HeardNotification heard;
                heard.name = name;
                if (const auto* const payload =
                        dynamic_cast<const VisTreeSpaceFillingLayoutNotification*>(notification)) {
                    heard.hasPayload = true;
                    heard.previous = payload->GetPreviousNode();
                    heard.node = payload->GetNode();
                }
                heard_.push_back(std::move(heard));
            });
    }
}

void Picture::Draw(const RenderOptions& options, KUVCharacterFont* font)
{
    for (VisDataTree* const node : tree_.Nodes())
        node->GetCache()->SetShowLabel(options.noLabels ? 0 : 1);
    VisDataTree::VisDataTreeCache& root = *tree_.Root()->GetCache();
    if (options.resizeByValue)
        root.SetResizeWithValue(1);
    if (options.colorByValue)
        root.SetColorWithValue(1);
    const KUVMathPoint2Df origin(options.originX, options.originY);
    const KUVMathPoint2Df size(static_cast<float>(options.width),
                               static_cast<float>(options.height));
    layout_->Draw(origin, size, font, options.scale);
}

}  // namespace dataviz
