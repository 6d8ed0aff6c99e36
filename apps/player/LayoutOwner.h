#pragma once

#include <optional>

#include "player/EventLog.h"

#include "KUVStringsMath.h"

class KUV2DBagRep;
class KUVCharacterFont;
class KUVCommand;
class KUVNotification;
class VisDataTree;
class VisTreeSpaceFillingLayout;

namespace player {

enum class LayoutKind { TreeMap };

/// How and where a layout is drawn.
struct Drawing {
    KUVMathPoint2Df position;
    KUVMathPoint2Df size;
    KUVCharacterFont* font = nullptr;  ///< may be null; outlives the layout
    float scale = 1;
};

/// The host command that owns a layout: makes it for a tree, draws it, and keeps a log of what it
/// hears. Weights and flags are set by the caller, between the construction and `Draw`: they live
/// in the caches that the layout makes.
class LayoutOwner {
public:
    /// The tree outlives the owner. Throws `std::bad_alloc` when memory runs out.
    LayoutOwner(LayoutKind kind, VisDataTree& root);
    LayoutOwner(const LayoutOwner&) = delete;
    LayoutOwner& operator=(const LayoutOwner&) = delete;
    ~LayoutOwner();

    VisTreeSpaceFillingLayout& Layout() { return *layout_; }
    const VisTreeSpaceFillingLayout& Layout() const { return *layout_; }
    /// What is drawn.
    const KUV2DBagRep& Scene() const { return *bag_; }

    /// The first drawing.
    void Draw(const Drawing& drawing);
    /// Draws once more on this rectangle; everything else stays as it is.
    void DrawOn(const KUVMathPoint2Df& position, const KUVMathPoint2Df& size);
    /// How the layout was last drawn by its owner; zooming draws by itself and is no part of it.
    const Drawing& LastDrawing() const { return drawing_; }

    /// Call it after every change of the highlight that the layout does not announce.
    void SetHighlighted(const VisDataTree* node) { highlighted_ = node; }
    const VisDataTree* Highlighted() const { return highlighted_; }

    EventLog& Log() { return log_; }
    const EventLog& Log() const { return log_; }

private:
    void Listen(Notice notice);
    void Hear(Notice notice, const KUVNotification* notification);

    KUVCommand* command_;
    KUV2DBagRep* bag_;
    VisTreeSpaceFillingLayout* layout_;
    Drawing drawing_;
    EventLog log_;
    const VisDataTree* highlighted_ = nullptr;
};

}  // namespace player
