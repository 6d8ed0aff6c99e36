#pragma once

#include <cstdint>
#include <optional>

#include "player/EventLog.h"

#include "KUVStringsMath.h"

class KUV2DBagRep;
class KUVCharacterFont;
class KUVCommand;
class KUVNotification;
class VisDataTree;
class VisIcicleLayout;
class VisTreeSpaceFillingLayout;

namespace player {

enum class LayoutKind { TreeMap, Cushion, Icicle };

constexpr std::uint32_t NO_COLUMN_LIMIT = 0xFFFFFFFFU;

/// How and where a layout is drawn.
struct Drawing {
    KUVMathPoint2Df position;
    KUVMathPoint2Df size;
    KUVCharacterFont* font = nullptr;  ///< may be null; outlives the layout
    float scale = 1;
    // Of the icicle plot only.
    bool alignLeaves = true;  ///< all leaves end in the last column
    std::uint32_t lastColumns = NO_COLUMN_LIMIT;
    bool relativeToMinDepth = false;
    bool inlineLabels = false;
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

    /// The same layout where it is an icicle plot, else null.
    VisIcicleLayout* Icicle() { return icicle_; }
    const VisIcicleLayout* Icicle() const { return icicle_; }

    /// Sets the icicle plot's columns and its limit; other layouts need no preparation.
    void Prepare(const Drawing& drawing);
    /// The size at which the prepared icicle plot shows all without being stretched; nothing for
    /// other layouts.
    std::optional<KUVMathPoint2Df> WholeSize() const;
    /// The first drawing, as prepared. From then on the icicle plot is drawn again whenever it says
    /// that its number of last columns has changed.
    void DrawPrepared();
    /// Both at once.
    void Draw(const Drawing& drawing);
    /// Draws once more on this rectangle; everything else stays as it is.
    void DrawOn(const KUVMathPoint2Df& position, const KUVMathPoint2Df& size);
    /// What the last plot by this owner gave: the columns from the current root to the deepest one.
    std::optional<unsigned int> Columns() const { return columns_; }
    /// How the layout was last drawn by its owner; zooming draws by itself and is no part of it.
    const Drawing& LastDrawing() const { return drawing_; }
    /// Changes the size for the drawings to come.
    void SetSize(const KUVMathPoint2Df& size) { drawing_.size = size; }

    /// Call it after every change of the highlight that the layout does not announce.
    void SetHighlighted(const VisDataTree* node) { highlighted_ = node; }
    const VisDataTree* Highlighted() const { return highlighted_; }

    EventLog& Log() { return log_; }
    const EventLog& Log() const { return log_; }

private:
    VisTreeSpaceFillingLayout* MakeLayout(LayoutKind kind, VisDataTree& root);
    void Listen(Notice notice);
    void Hear(Notice notice, const KUVNotification* notification);
    void Plot(unsigned int lastColumns);

    KUVCommand* command_;
    KUV2DBagRep* bag_;
    VisIcicleLayout* icicle_ = nullptr;
    VisTreeSpaceFillingLayout* layout_;
    bool isDrawn_ = false;
    std::optional<unsigned int> columns_;
    Drawing drawing_;
    EventLog log_;
    const VisDataTree* highlighted_ = nullptr;
};

}  // namespace player
