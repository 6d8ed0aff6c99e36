#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "InputTree.h"
#include "Options.h"
#include "player/Events.h"
#include "player/LayoutOwner.h"

namespace dataviz {

/// The picture of an input: its tree, and the owner of the layout that shows it, set up in the
/// order that the module wants. The tree outlives the picture.
class Picture {
public:
    /// Makes the layout and weighs the tree: the values live in the layout's caches.
    Picture(InputTree& tree, const RenderOptions& options);

    /// Sets flags and switches and draws once. The font, which may be null, outlives the picture.
    void Draw(KUVCharacterFont* font);
    /// The options, with the size that was found where it was to be fitted.
    const RenderOptions& Options() const { return options_; }
    /// After `Draw`: how an icicle plot that is larger than the picture would be shown whole.
    std::optional<std::string> TooSmall() const;

    /// Plays the events; `progress` hears the fraction that is done.
    void Play(const std::vector<player::Event>& events,
              const std::function<void(double fraction)>& progress);

    const InputTree& Tree() const { return tree_; }
    const player::LayoutOwner& Owner() const { return owner_; }
    const VisTreeSpaceFillingLayout& Layout() const { return owner_.Layout(); }
    const KUV2DBagRep& Scene() const { return owner_.Scene(); }

private:
    void FitSize();

    InputTree& tree_;
    RenderOptions options_;
    std::optional<KUVMathPoint2Df> wholeSize_;  // of an icicle plot, not stretched
    player::LayoutOwner owner_;
};

/// Width and height of a picture in pixels, not rounded to what a painter can make.
struct PixelSize {
    double width = 0;
    double height = 0;
};

PixelSize PixelSizeOf(const RenderOptions& options);

}  // namespace dataviz
