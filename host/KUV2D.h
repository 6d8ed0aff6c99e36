#ifndef KUV2D_h
#define KUV2D_h

// The 2D scene: bags, polygons, images and texts, fonts, pixel images and the icon path resolver.
//
// Coordinates are 2D world units, origin at the lower left, y upwards. Colours are four bytes: red,
// green, blue, alpha. Every `CreateRep` gives a rep with one reference, owned by the caller, or
// null when the arguments make no rep or memory runs out.

#include "KUVExport.h"
#include "KUVRep.h"
#include "KUVStringsMath.h"

#include <cstddef>
#include <memory>
#include <vector>

/// Four bytes of colour.
struct KUVColor {
    unsigned char r = 0;
    unsigned char g = 0;
    unsigned char b = 0;
    unsigned char a = 255;
};

/// What is known of a rep's visibility.
struct KUVVisibilityState {
    /// Non-zero when the rep is shown.
    unsigned int shown = 1;
};

/// A group of 2D reps, drawn in child order: the last child is on top.
class KUV_EXPORT KUV2DBagRep : public KUVRep {
    KUV_DECLARE_CLASS
public:
    static KUV2DBagRep* CreateRep();
    ~KUV2DBagRep() override;

    /// Appends `rep` and takes a reference. Null is ignored; a rep that is already a child stays
    /// where it is.
    void AddChild(KUVRep* rep);
    /// Takes `rep` out and gives its reference back. Harmless when it is not a child; does not cost
    /// the number of children.
    void RemoveChild(KUVRep* rep);
    const list<KUVRep>* GetChildren() const override;

    /// The bag's visibility, or null when the host keeps none for it. Borrowed.
    const KUVVisibilityState* GetVisibilityState() const;
    /// Shows (1) or hides (0) the bag and everything in it. A new bag is shown.
    void SetShown(unsigned char shown);
    /// Takes the visibility record away; a bag without one counts as not shown.
    void ForgetVisibilityState();

private:
    KUV2DBagRep();

    KUVChildReps children_;
    KUVVisibilityState visibility_;
    bool hasVisibility_ = true;
};

/// A closed polygon, filled or outlined one pixel wide.
class KUV_EXPORT KUV2DPolygonRep : public KUVRep {
    KUV_DECLARE_CLASS
public:
    /// `points` are `count` pairs x, y (copied). Null points or fewer than 2 of them give null.
    static KUV2DPolygonRep* CreateRep(const float* points, int count, int fill);
    ~KUV2DPolygonRep() override;

    void SetColor(unsigned char r, unsigned char g, unsigned char b, unsigned char a);
    KUVColor GetColor() const { return color_; }
    /// Pairs x, y.
    const std::vector<float>& GetPoints() const { return points_; }
    unsigned char IsFilled() const { return filled_; }

private:
    KUV2DPolygonRep() = default;

    std::vector<float> points_;
    KUVColor color_;
    bool filled_ = false;
};

/// Formats of a pixel image. Modules use the last one.
enum KUVPixelFormat : int {
    KUVPixelFormat_Grey8 = 1,
    KUVPixelFormat_RGB8 = 2,
    /// Four bytes a pixel: red, green, blue, alpha.
    KUVPixelFormat_RGBA8 = 3
};

/// Makes a buffer for the pixels of an image, or gives null when there is no memory. Given back
/// with `KUVFreePixels`, by the caller or by the image that took it.
KUV_EXPORT unsigned char* KUVAllocatePixels(std::size_t bytes);
/// Frees a buffer made by `KUVAllocatePixels`. Null is ignored.
KUV_EXPORT void KUVFreePixels(unsigned char* pixels);

/// An image in memory, first row at the bottom. Reference counted; never changed once a rep shows
/// it.
class KUV_EXPORT KUVPixelImage : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    /// An image of `width` x `height` pixels, row after row from the bottom.
    ///
    /// With `deallocate` 1 the image takes the buffer over, which must come from
    /// `KUVAllocatePixels`, and frees it when it likes, at the latest with itself; with 0 the
    /// pixels are copied. The image may store equal rows once. A size below 1 or null `pixels`
    /// makes an image of size 0 x 0 (a buffer that comes with it is freed), and so does a copy for
    /// which there is no memory. Only the `new` around this can fail: the buffer is then still the
    /// caller's.
    KUVPixelImage(int width, int height, KUVPixelFormat format, unsigned char* pixels,
                  int deallocate) noexcept;
    ~KUVPixelImage() override;
    KUVPixelImage(const KUVPixelImage&) = delete;
    KUVPixelImage& operator=(const KUVPixelImage&) = delete;

    /// The image in the file `path`, with one reference for the caller, or null when it cannot be
    /// read. The last two arguments are the host's: modules pass 1 and 0.
    static KUVPixelImage* CreateFromFileEx(const KUVUnicodeString& path, int convert, int reserved);

    /// Converts the pixels. Gives `KUV_OK`, or `KUV_FAIL` and changes nothing.
    KUVResult ChangeFormat(KUVPixelFormat format);
    KUVPixelFormat GetFormat() const { return format_; }
    /// 0: the image's alpha is used as it stands; 1: one colour of the image counts as transparent.
    void SetTransparency(int transparency) { transparency_ = transparency; }
    int GetTransparency() const { return transparency_; }

    /// The size in pixels.
    void GetSize(int& width, int& height) const;
    /// How many screen pixels wide and high one pixel of the image is drawn. Default 1.
    void SetXPixelSize(float size) { xPixelSize_ = size; }
    void SetYPixelSize(float size) { yPixelSize_ = size; }
    float GetXPixelSize() const { return xPixelSize_; }
    float GetYPixelSize() const { return yPixelSize_; }

    /// The pixels of row `y` (0 at the bottom), or null outside. Borrowed. Equal rows may share
    /// their bytes.
    const unsigned char* GetRow(int y) const;
    /// What the pixels cost in memory now.
    std::size_t GetByteCost() const;

private:
    std::size_t RowBytes() const;
    void Take(int width, int height, KUVPixelFormat format, unsigned char* buffer) noexcept;
    void KeepEqualRowsOnce() noexcept;

    unsigned char* pixels_ = nullptr;
    /// Which row of `pixels_` each row of the image shows; null when each shows its own.
    std::unique_ptr<unsigned int[]> rowPlaces_;
    std::size_t byteCost_ = 0;
    int width_ = 0;
    int height_ = 0;
    KUVPixelFormat format_;
    int transparency_ = 0;
    float xPixelSize_ = 1.0f;
    float yPixelSize_ = 1.0f;
};

/// An image at a fixed place, its lower left corner at a point of the plane.
class KUV_EXPORT KUV2DImagePixelRep : public KUVRep {
    KUV_DECLARE_CLASS
public:
    /// `lowerLeft` is one pair x, y. The rep takes its own reference on `image`. `mode` is 0 for
    /// images as large as the area that they cover, one image pixel a screen pixel, and 2 for
    /// icons. The last three arguments are reserved: 0. A null point or image gives null.
    static KUV2DImagePixelRep* CreateRep(const float* lowerLeft, const KUVPixelImage* image,
                                         int mode, int reserved1, int reserved2, int reserved3);
    ~KUV2DImagePixelRep() override;

    /// 0: opaque; 2: drawn with the image's alpha. Images of mode 0 are drawn with alpha as well
    /// when they have any.
    void SetAlphaMode(int mode) { alphaMode_ = mode; }
    int GetAlphaMode() const { return alphaMode_; }
    const KUVPixelImage* GetImage() const { return image_; }
    KUVMathPoint2Df GetLowerLeft() const { return lowerLeft_; }
    int GetMode() const { return mode_; }

private:
    KUV2DImagePixelRep() = default;

    KUVPixelImage* image_ = nullptr;
    KUVMathPoint2Df lowerLeft_;
    int mode_ = 0;
    int alphaMode_ = 0;
};

/// Which point of a text stands at its anchor.
enum KUVAnchorPoint : int {
    KUVAnchorPoint_LowerLeft = 0,
    KUVAnchorPoint_LowerMiddle = 1,
    KUVAnchorPoint_LowerRight = 2,
    KUVAnchorPoint_MiddleLeft = 3,
    KUVAnchorPoint_Center = 4,
    KUVAnchorPoint_MiddleRight = 5,
    KUVAnchorPoint_UpperLeft = 6,
    KUVAnchorPoint_UpperMiddle = 7,
    KUVAnchorPoint_UpperRight = 8
};

/// A text whose size on the screen does not follow the zoom.
class KUV_EXPORT KUV2DAnnotationTextRep : public KUVRep {
    KUV_DECLARE_CLASS
public:
    /// `point` is one pair x, y; `size` is the height of the text in pixels. The last three
    /// arguments are reserved: 0 and null. A null point gives null; an empty text makes a rep.
    static KUV2DAnnotationTextRep* CreateRep(const float* point, const KUVUnicodeString& text,
                                             KUVAnchorPoint anchor, float size, int reserved,
                                             const void* graphicAttributes,
                                             const void* textAttributes);
    ~KUV2DAnnotationTextRep() override;

    void SetColor(unsigned char r, unsigned char g, unsigned char b, unsigned char a);
    KUVColor GetColor() const { return color_; }
    const KUVUnicodeString& GetText() const { return text_; }
    KUVMathPoint2Df GetPoint() const { return point_; }
    KUVAnchorPoint GetAnchor() const { return anchor_; }
    float GetTextSize() const { return size_; }

private:
    KUV2DAnnotationTextRep() = default;

    KUVUnicodeString text_;
    KUVMathPoint2Df point_;
    float size_ = 0.0f;
    KUVAnchorPoint anchor_ = KUVAnchorPoint_LowerLeft;
    KUVColor color_;
};

/// A font of the host, at all its sizes. Outlives the layouts that drew with it.
class KUV_EXPORT KUVCharacterFont : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    ~KUVCharacterFont() override;

    /// The index under which this font measures texts of `size` pixels.
    virtual int GetFontIndex(float size) = 0;
    /// Measures `text` at an index given by `GetFontIndex`: width, height and descent in whole
    /// pixels, rounded up. Any of the three results may be null.
    ///
    /// Meant to be called over and over with a text that loses its last characters one by one: an
    /// implementation answers such a call without measuring the text from its beginning.
    virtual void GetStringSize(const KUVUnicodeString& text, int* width, int* height, int* descent,
                               int fontIndex) = 0;

protected:
    KUVCharacterFont();
};

/// The file of the icon or image called `name`, found along the host's search path for images;
/// empty when there is none.
KUV_EXPORT KUVUnicodeString KUVGetImagePathNameEx(const KUVUnicodeString& name);

#endif
