#ifndef VisCushionLayout_h
#define VisCushionLayout_h

#include "VisExport.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"

#include <cstdint>

/// The cushion tree map.
///
/// The current root's rectangle is cut into one strip a child without gaps or frames, along x and
/// along y in turns from level to level, and every leaf is shaded as part of the cushions that it
/// and its ancestors form: the nesting shows as shading. Strips follow the nodes' size values where
/// those are switched on, else the number of leaves; leaves are coloured by their colour value, an
/// index into `COLOR_MAP`, where that is switched on, else white.
///
/// The whole picture is one image in the view of the current root. All other views only have a
/// contour, for hover and selection. Zooming by mouse is switched off.
class VIS_EXPORT VisCushionLayout : public VisTreeSpaceFillingLayout {
    KUV_DECLARE_CLASS
public:
    /// The colours of leaves by colour value, 0x00RRGGBB; the last, white, stands for any value
    /// below 0 or beyond the others and for no value.
    static const unsigned int COLOR_MAP[9];
    /// Number of colours before the white.
    static const unsigned int MAX_COLOR_MAP;

    class VisCushionLayoutCache;

    /// A layout that shows `root` in `bag`, with one reference for the caller; null when `root` is
    /// null or memory runs out. `parent` and `bag` may be null; without a bag views are made but
    /// hang nowhere.
    static VisCushionLayout* CreateLayout(KUVCommand* parent, VisDataTree* root, KUV2DBagRep* bag);

    /// Draws the current root's subtree by `CushionTreemap`, in the orientation in which the
    /// current root was cut from its parent; then sets the current selection again, which notifies.
    /// Nothing without a current root with a cache.
    ///
    /// `font` is not used, and neither font nor scale is remembered: `SetCurrentRoot` draws with
    /// scale 1.
    void Draw(const KUVMathPoint2Df& origin, const KUVMathPoint2Df& size, KUVCharacterFont* font,
              float scale) override;

    /// Lays the current root's subtree out in the rectangle at `origin`, shades it into an image of
    /// trunc(scale x size) pixels and builds all views. The current root's children are cut along
    /// the other axis than `mode`.
    ///
    /// Positions and sizes are in layout units; views get them multiplied by `scale` about
    /// `origin`. Pixels that no leaf covers are white. Nothing at all happens without a current
    /// root with a cache, when a side of the image is below one pixel, when it would take more than
    /// 1 GiB, and when there is no memory for it. Costs the number of nodes plus the number of
    /// pixels.
    void CushionTreemap(VisTreeMap_SliceDice mode, const KUVMathPoint2Df& origin,
                        const KUVMathPoint2Df& size, float scale);

protected:
    explicit VisCushionLayout(KUVCommand* parent);
    ~VisCushionLayout() override;

    VisTreeSpaceFillingLayoutCache* GenerateCache() override;

private:
    class PictureMaker;
};

/// What the cushion tree map knows of one node beyond its rectangle: the surface of the cushions
/// that meet in it and what its subtree weighs. Kept from one drawing to the next.
class VIS_EXPORT VisCushionLayout::VisCushionLayoutCache : public VisTreeSpaceFillingLayoutCache {
public:
    explicit VisCushionLayoutCache(VisDataTree* node);
    /// Copies what the base copies, and everything of its own.
    VisCushionLayoutCache(VisCushionLayoutCache& other);
    VisCushionLayoutCache& operator=(VisCushionLayoutCache& other);
    ~VisCushionLayoutCache() override;

    /// A new value resets this cache and those above it, so that the next drawing adds up again.
    void SetSizeValue(long long value) override;
    /// A new flag resets this cache and those above it; the whole subtree follows as far as caches
    /// reach.
    void SetResizeWithValue(unsigned char resizeWithValue) override;
    /// A copy that belongs to no node, owned by the caller, or null when memory runs out.
    VisDataTreeCache* Clone() override;

    /// The sum of the parabolas of all ridges over the node, in layout units relative to the origin
    /// of the drawing: four coefficients, in this order: x linear, x quadratic, y linear, y
    /// quadratic.
    const float* GetSurface() const { return surface_; }
    /// The height of the node's own ridge.
    float GetHeight() const { return height_; }
    /// By which the heights of the children's ridges are lower.
    float GetScaleFactor() const { return scaleFactor_; }
    /// The sum of the values of the leaves below, or the leaf's own value; saturates.
    long long GetSubtreeValue() const { return subtreeValue_; }
    /// Non-zero once a drawing has computed the above; cleared by a reset.
    unsigned char IsCushionComputed() const { return cushionComputed_; }

    /// The orientation in which the node was cut from its parent. 0 at the beginning.
    VisTreeMap_SliceDice GetLastModeOfComputedMinimumExpandedSize() const { return lastMode_; }
    /// Forgets the computed minimum size when `mode` is another than the last.
    void SetLastModeOfComputedMinimumExpandedSize(VisTreeMap_SliceDice mode);

protected:
    /// Forgets the subtree's value and that the cushion was computed, then what the base forgets.
    void InternalResetCache() override;

private:
    friend struct CushionAccess;

    void ResetWithAncestors();

    float surface_[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    float height_ = 0.0f;
    float scaleFactor_ = 0.0f;
    long long subtreeValue_ = 0;
    unsigned char cushionComputed_ = 0;
    VisTreeMap_SliceDice lastMode_ = VisTreeMap_SideBySide;
    // When this cache and all above it were last known to have nothing to reset; never copied.
    std::uint64_t quietEpoch_ = ~std::uint64_t{0};
};

#endif
