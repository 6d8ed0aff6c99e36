#include "Picture.h"

#include <cmath>

#include "VisDataTree.h"
#include "player/EventPlayer.h"

namespace dataviz {

Picture::Picture(InputTree& tree, const RenderOptions& options)
    : tree_(tree), options_(options), owner_(player::LayoutKind::TreeMap, *tree.Root())
{
    tree_.Weigh(options.model.wholeReps);
}

void Picture::Draw(KUVCharacterFont* font)
{
    for (VisDataTree* const node : tree_.Nodes())
        node->GetCache()->SetShowLabel(options_.noLabels ? 0 : 1);
    VisDataTree::VisDataTreeCache& root = *tree_.Root()->GetCache();
    if (options_.resizeByValue)
        root.SetResizeWithValue(1);
    if (options_.colorByValue)
        root.SetColorWithValue(1);
    player::Drawing drawing;
    drawing.position = {options_.originX, options_.originY};
    drawing.size = {static_cast<float>(options_.width), static_cast<float>(options_.height)};
    drawing.font = font;
    drawing.scale = options_.scale;
    owner_.Draw(drawing);
}

void Picture::Play(const std::vector<player::Event>& events,
                   const std::function<void(double fraction)>& progress)
{
    const PixelSize pixels = PixelSizeOf(options_);
    player::EventPlayer player(owner_, tree_.Nodes(),
                               {static_cast<float>(pixels.width), static_cast<float>(pixels.height),
                                options_.deviceScale});
    constexpr std::size_t STEP = 256;
    for (std::size_t i = 0; i < events.size(); ++i) {
        if (i % STEP == 0)
            progress(static_cast<double>(i) / static_cast<double>(events.size()));
        player.Play(events[i]);
    }
}

PixelSize PixelSizeOf(const RenderOptions& options)
{
    // In double: whoever asks for more than a painter can measure gets the reason, not a
    // wrap-around.
    const double scale = static_cast<double>(options.scale);
    return {std::round(static_cast<double>(options.width) * scale),
            std::round(static_cast<double>(options.height) * scale)};
}

}  // namespace dataviz
