#ifndef VisTreeSpaceFillingView_h
#define VisTreeSpaceFillingView_h

#include "KUVStringsMath.h"
#include "VisExport.h"

class KUV2DAnnotationTextRep;
class KUV2DBagRep;
class KUV2DImagePixelRep;
class KUV2DPolygonRep;
class KUVCharacterFont;
class KUVPixelImage;
class KUVRep;
struct KUVColor;
struct VisTreeSpaceFillingLayoutCachedTextures;

/// The picture of one node: background, contour, hover plate, selected frame, icon and label.
///
/// A view owns one bag, which the layout hangs under its own, and the reps in it. The layout tells
/// it a rectangle in 2D world units (lower left corner and extent, already multiplied by the
/// layout's scale) and the scale, which turns nominal sizes into pixels. Between two builds the
/// view only adds reps to its bag, takes them out and recolours the label, as the node is
/// highlighted and selected; both states survive a new build.
///
/// Colours are packed 0xRRGGBBAA; the alpha byte is ignored, everything is drawn opaque. Whatever
/// the host fails to make (reps, images, memory) is left out of the picture; nothing throws.
class VIS_EXPORT VisTreeSpaceFillingView {
public:
    /// How highlight and selection are shown.
    enum HighlightMode : unsigned int {
        /// An orange outline, for both.
        HighlightMode_Contour = 0,
        /// A light grey plate for the highlight, a blue rounded frame for the selection.
        HighlightMode_Texture = 1
    };

    /// Where the icon and the label stand. Any other value: the icon as for `Position_LabelAbove`,
    /// the label as without an icon.
    enum Position : unsigned int {
        /// Icon and label centred, the label under the icon.
        Position_LabelBelow = 0,
        /// Icon and label centred, the label above the icon.
        Position_LabelAbove = 1,
        /// Icon at the left edge, label right of it.
        Position_IconLeft = 2,
        /// Icon at the right edge, label from the left edge.
        Position_IconRight = 3
    };

    /// An empty view with a bag of its own. `textures` are the layout's; they may be null (then
    /// `Init` builds nothing) and outlive the view.
    explicit VisTreeSpaceFillingView(VisTreeSpaceFillingLayoutCachedTextures* textures);
    /// Copies every field as it stands, pointers included, without taking references: copy and
    /// source share their reps, and only one of the two may be cleaned or destroyed.
    VisTreeSpaceFillingView(const VisTreeSpaceFillingView& other);
    VisTreeSpaceFillingView& operator=(const VisTreeSpaceFillingView& other);
    virtual ~VisTreeSpaceFillingView();

    // ---- building: each replaces whatever the view showed before

    /// Builds the whole view.
    ///
    /// Nothing is built when both sides of `size` are 0 or below, when the position, the size or
    /// the scale is not finite, or without bag or textures. With `flatColour` the background is a
    /// filled rectangle, else the grid texture that marks hidden children. A null `font` leaves the
    /// label whole. `iconName` may be empty: no icon; an icon larger than the node is not shown.
    void Init(unsigned char isLeafObject, const KUVUnicodeString& label,
              const KUVMathPoint2Df& position, const KUVMathPoint2Df& size, unsigned int colour,
              KUVCharacterFont* font, unsigned char flatColour, unsigned char centredLabel,
              const KUVUnicodeString& iconName, Position iconPosition, float scale);

    /// Builds a view without label whose background is a ready picture.
    ///
    /// `pixels` holds trunc(size.x) x trunc(size.y) pixels (red, green, blue, alpha; bottom row
    /// first) made by `KUVAllocatePixels`. The view owns the buffer from the call on and frees it
    /// at once when no image is made of it. Null: only the contour is built. With
    /// `withHighlightImages` it has the plates of `HighlightMode_Texture`, made when first shown.
    void InitWithTexture(unsigned char isLeafObject, const KUVMathPoint2Df& position,
                         const KUVMathPoint2Df& size, unsigned int* pixels,
                         unsigned char withHighlightImages);

    /// Builds the contour alone; the view then counts as visible whatever its bag says.
    void InitWithoutTexture(unsigned char isLeafObject, const KUVMathPoint2Df& position,
                            const KUVMathPoint2Df& size);

    /// Takes all reps out of the bag and gives them back. Keeps the bag, the two states, the mode
    /// and what `IsBright` and `IsCropped` say.
    void Clean();

    // ---- state: nothing happens when the value is the one that is set

    void SetSelectionStatus(unsigned char selected);
    void SetHighlightStatus(unsigned char highlighted);
    /// Takes the contour or the selected frame of the former mode away. The hover plate stays as
    /// it is.
    void SetHighlightMode(HighlightMode mode);

    /// Colours the contour, if there is one, until it is built again.
    void SetSquareCountourColor(unsigned char r, unsigned char g, unsigned char b, unsigned char a);
    void ResetSquareCountourColor();

    // ---- queries

    /// The bag of the view, or null when the host could not make one. Borrowed.
    KUV2DBagRep* GetBagRep() const;
    HighlightMode GetHighlightMode() const;
    unsigned char GetHighlightStatus() const;
    unsigned char GetSelectionStatus() const;
    /// 1 when the sum of the background's red, green and blue is above 384.
    unsigned char IsBright() const;
    /// 1 when the label was shortened, or the view was built without any.
    unsigned char IsCropped() const;
    /// 1 when the last build was not refused and nothing was cleaned since. Only then do
    /// `GetBuiltPosition` and `GetBuiltSize` mean something: the rectangle of that build.
    unsigned char IsBuilt() const { return built_; }
    const KUVMathPoint2Df& GetBuiltPosition() const { return builtPosition_; }
    const KUVMathPoint2Df& GetBuiltSize() const { return builtSize_; }
    /// 0 without a bag; else 1 after `InitWithoutTexture`; else what the bag says.
    unsigned char IsVisible() const;

    /// Shortens `label` to `maximumWidth` pixels: characters are taken off its end and replaced by
    /// three full stops until the text fits or nothing but the stops is left.
    ///
    /// `shown` receives the text and may be `label` itself; `cropped` receives 1 when it was
    /// shortened. A null `font` leaves the label whole. Costs one measurement by the font for
    /// every character taken off.
    static void ComputeCroppedLabel(const KUVUnicodeString& label, float maximumWidth,
                                    KUVCharacterFont* font, float scale, KUVUnicodeString& shown,
                                    unsigned char& cropped);

private:
    struct Box;
    struct Style;

    void BuildBackground(const Box& box, const Style& style);
    void BuildContour(const Box& box);
    /// Gives the size of the icon on the screen; meaningful when an icon rep was made.
    KUVMathPoint2Df BuildIcon(const Box& box, const Style& style, bool hasLabel);
    void PrepareHighlightImages();
    void ShowHighlightImages();
    void BuildLabel(const Box& box, const Style& style, const KUVMathPoint2Df& iconSize,
                    const KUVUnicodeString& label);
    void BuildTexture(const Box& box, unsigned char* pixels);
    void UpdateVisual();
    void ShowWhen(KUVRep* rep, bool shown);
    void Drop(KUVRep* rep);
    KUVColor ComputeLabelColor(bool active) const;

    unsigned char isLeafObject_ = 0;
    unsigned char selectionStatus_ = 0;
    unsigned char highlightStatus_ = 0;
    unsigned char bright_ = 0;
    KUV2DBagRep* bagRep_ = nullptr;
    KUV2DAnnotationTextRep* labelRep_ = nullptr;
    unsigned char cropped_ = 0;
    KUVRep* backgroundRep_ = nullptr;
    KUV2DImagePixelRep* selectedImageRep_ = nullptr;
    KUV2DImagePixelRep* hoverImageRep_ = nullptr;
    KUV2DImagePixelRep* iconRep_ = nullptr;
    KUV2DPolygonRep* contourRep_ = nullptr;
    KUVPixelImage* textureImage_ = nullptr;
    VisTreeSpaceFillingLayoutCachedTextures* cachedTextures_ = nullptr;
    HighlightMode highlightMode_ = HighlightMode_Contour;
    unsigned char forcedVisible_ = 0;
    unsigned char built_ = 0;
    // The view has plates, made or not.
    unsigned char hasHighlightImages_ = 0;
    KUVMathPoint2Df builtPosition_;
    KUVMathPoint2Df builtSize_;
};

#endif
