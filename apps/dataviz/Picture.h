#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "InputTree.h"
#include "Options.h"

class KUV2DBagRep;
class KUVCharacterFont;
class KUVCommand;
class KUVNotification;
class VisDataTree;
class VisTreeSpaceFillingLayout;

namespace dataviz {

/// A notification of the layout, as its owner heard it.
struct HeardNotification {
    std::string name;
    bool hasPayload = false;
    const VisDataTree* previous = nullptr;
    const VisDataTree* node = nullptr;
};

/// The owner of a layout: makes it for a tree, sets it up in the order that the module wants, and
/// remembers what it heard. The tree outlives the picture.
class Picture {
public:
    /// Makes the layout and weighs the tree: the values live in the layout's caches.
    Picture(InputTree& tree, const ModelOptions& model);
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ~Picture();

    /// Sets flags and switches and draws once. The font, which may be null, outlives the picture.
    void Draw(const RenderOptions& options, KUVCharacterFont* font);

    const InputTree& Tree() const { return tree_; }
    const VisTreeSpaceFillingLayout& Layout() const { return *layout_; }
    const KUV2DBagRep& Scene() const { return *bag_; }
    /// What the layout said while it was set up and drawn.
    const std::vector<HeardNotification>& SetUpNotifications() const { return heard_; }

private:
    void Listen();

    InputTree& tree_;
    KUVCommand* owner_;
    KUV2DBagRep* bag_;
    VisTreeSpaceFillingLayout* layout_;
    std::vector<HeardNotification> heard_;
};

}  // namespace dataviz
