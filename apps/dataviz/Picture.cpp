#include "Picture.h"

#include <algorithm>
#include <cmath>

#include "VisDataTree.h"
#include "player/EventPlayer.h"

namespace dataviz {

namespace {

player::LayoutKind KindOf(const std::string& layout)
{
    if (layout == "cushion")
        return player::LayoutKind::Cushion;
    return layout == "icicle" ? player::LayoutKind::Icicle : player::LayoutKind::TreeMap;
}

}  // namespace

Picture::Picture(InputTree& tree, const RenderOptions& options)
    : tree_(tree), options_(options), owner_(KindOf(options.layout), *tree.Root())
{
    tree_.Weigh(options.model.wholeReps);
}

void Picture::Draw(KUVCharacterFont* font)
{
    for (VisDataTree* const node : tree_.Nodes())
        node->GetCache()->SetShowLabel(options_.noLabels ? 0 : 1);
    VisDataTree::VisDataTreeCache& root = *tree_.Root()->GetCache();
    // A cushion of a model shows its triangles and its structure without being asked.
    const bool isModelCushion = options_.layout == "cushion" && tree_.IsModel();
    const bool isColoured = isModelCushion && options_.colorIndex != "none";
    if (isColoured)
        tree_.SetColorIndices(options_.colorIndex);
    if (options_.resizeByValue || isModelCushion)
        root.SetResizeWithValue(1);
    if (options_.colorByValue || isColoured)
        root.SetColorWithValue(1);
    player::Drawing drawing;
    drawing.position = {options_.originX, options_.originY};
    drawing.size = {static_cast<float>(options_.width), static_cast<float>(options_.height)};
    drawing.font = font;
    drawing.scale = options_.scale;
    drawing.alignLeaves = !options_.noAlign;
    drawing.lastColumns = options_.lastColumns;
    drawing.inlineLabels = options_.inlineLabels;
    drawing.relativeToMinDepth = options_.relativeToMinDepth;
    owner_.Prepare(drawing);
    wholeSize_ = owner_.WholeSize();
    if (options_.fitSize)
        FitSize();
    owner_.DrawPrepared();
}

void Picture::FitSize()
{
    // A plot that is too large for any picture keeps the largest size; writing it fails in words.
    const auto fit = [](float side) {
        constexpr float LARGEST = 2147483520.0F;
        return static_cast<std::uint32_t>(std::ceil(std::clamp(side, 1.0F, LARGEST)));
    };
    options_.width = fit(wholeSize_->x);
    options_.height = fit(wholeSize_->y);
    owner_.SetSize({static_cast<float>(options_.width), static_cast<float>(options_.height)});
}

std::optional<std::string> Picture::TooSmall() const
{
    if (!wholeSize_ || (wholeSize_->x <= static_cast<float>(options_.width) &&
                        wholeSize_->y <= static_cast<float>(options_.height)))
        return std::nullopt;
    const auto whole = [](float side) { return std::to_string(std::llround(std::ceil(side))); };
    return "the plot is larger than the picture: --size " + whole(wholeSize_->x) + "x" +
           whole(wholeSize_->y) + ", or --size fit, shows it whole";
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
