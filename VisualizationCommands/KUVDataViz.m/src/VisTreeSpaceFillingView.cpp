#include "VisTreeSpaceFillingView.h"

#include "VisTreeSpaceFillingLayoutCachedTextures.h"

#include "private/NodeTextures.h"
#include "private/NodeViewGeometry.h"
#include "private/SaturatingCast.h"

#include "KUV2D.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace {

/// Height of a label in nominal units; the layouts keep a band of the same height free for it.
constexpr float LABEL_SIZE = 14.0f;
constexpr int PLATE_RADIUS = 2;
constexpr char ELLIPSIS[] = "...";

constexpr unsigned int HOVER_FILL = 0xF1F1F1FFU;
constexpr unsigned int SELECTED_FILL = 0xD5E8F2FFU;
constexpr unsigned int SELECTED_FRAME = 0x368EC4FFU;

constexpr KUVColor CONTOUR_ORANGE{255, 126, 30, 255};
constexpr KUVColor LABEL_WHITE{255, 255, 255, 255};
constexpr KUVColor LABEL_BLACK{0, 0, 0, 255};
constexpr KUVColor LABEL_GREY{119, 121, 124, 255};
constexpr KUVColor LABEL_ORANGE{232, 123, 0, 255};
constexpr KUVColor LABEL_PINK{252, 181, 185, 255};

/// An image of the module's own making.
class TextureImage final : public KUVPixelImage {
public:
    TextureImage(int width, int height, unsigned char* pixels)
        : KUVPixelImage(width, height, KUVPixelFormat_RGBA8, pixels, /*deallocate=*/1)
    {
    }
    ~TextureImage() override = default;
};

struct Pixel {
    unsigned char r;
    unsigned char g;
    unsigned char b;
    unsigned char a;
};

Pixel OpaquePixelOf(unsigned int colour)
{
    return {static_cast<unsigned char>(colour >> 24U),
            static_cast<unsigned char>((colour >> 16U) & 255U),
            static_cast<unsigned char>((colour >> 8U) & 255U), 255};
}

/// A view of a pixel buffer by rows.
struct PixelRows {
    unsigned char* bytes;
    int width;
    int height;

    std::size_t RowBytes() const { return static_cast<std::size_t>(width) * 4U; }
    unsigned char* Row(int y) const { return bytes + static_cast<std::size_t>(y) * RowBytes(); }
    void Set(int x, int y, Pixel pixel) const
    {
        std::memcpy(Row(y) + static_cast<std::size_t>(x) * 4U, &pixel, 4);
    }
    /// Fills row `y` from `first` up to, not including, `end`.
    void Fill(int y, int first, int end, Pixel pixel) const
    {
        for (int x = first; x < end; ++x)
            Set(x, y, pixel);
    }
    /// Makes the rows from `first` up to, not including, `end` equal to row `source`.
    void Repeat(int source, int first, int end) const
    {
        for (int y = first; y < end; ++y)
            std::memcpy(Row(y), Row(source), RowBytes());
    }
};

bool IsFinite(const KUVMathPoint2Df& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y);
}

/// A view without extent in either direction shows nothing; one with a single side does.
bool HasNoExtent(const KUVMathPoint2Df& size) { return size.x <= 0.0f && size.y <= 0.0f; }

/// Marks a rep that was just made as part of the flat overlay. Null is let through.
template <class Rep>
Rep* AsOverlay(Rep* rep)
{
    if (rep)
        rep->SetOverlay(1);
    return rep;
}

template <class Rep>
void SetColorOf(Rep* rep, const KUVColor& color)
{
    rep->SetColor(color.r, color.g, color.b, color.a);
}

KUV2DPolygonRep* CreateRectangle(const NodeRectangle& node, int fill)
{
    const float right = node.x + node.width;
    const float top = node.y + node.height;
    const float corners[] = {node.x, node.y, right, node.y, right, top, node.x, top};
    return KUV2DPolygonRep::CreateRep(corners, 4, fill);
}

KUV2DImagePixelRep* CreateImageRep(const KUVMathPoint2Df& lowerLeft, const KUVPixelImage* image,
                                   int mode)
{
    if (!image)
        return nullptr;
    const float point[] = {lowerLeft.x, lowerLeft.y};
    return AsOverlay(KUV2DImagePixelRep::CreateRep(point, image, mode, 0, 0, 0));
}

// ---- pixels of the grid texture and of the plates

/// One row of squares on an 8-pixel pitch: 5 pixels of square, 3 of the node's colour.
void FillRowOfSquares(const PixelRows& rows, int y, Pixel colour, Pixel square)
{
    for (int x = 0; x < rows.width; ++x)
        rows.Set(x, y, x % 8 < 5 ? square : colour);
}

/// The transparency of an unframed plate's corner pixel outside the rounding.
unsigned char SoftAlpha(std::int64_t radiusSquared, std::int64_t distanceSquared)
{
    return static_cast<unsigned char>(TruncateToInt(static_cast<float>(radiusSquared) /
                                                    static_cast<float>(distanceSquared) * 128.0f));
}

struct PlateStyle {
    int radius;
    bool framed;
    Pixel fill;
    Pixel frame;

    /// The pixel of a corner square at (dx, dy) from the corner's centre.
    Pixel CornerPixel(std::int64_t dx, std::int64_t dy) const
    {
        const std::int64_t distanceSquared = dx * dx + dy * dy;
        const std::int64_t radiusSquared = std::int64_t{radius} * radius;
        Pixel pixel = fill;
        if (distanceSquared > radiusSquared)
            pixel.a =
                framed ? static_cast<unsigned char>(0) : SoftAlpha(radiusSquared, distanceSquared);
        // (r - 0.5)^2 <= d^2 <= (r + 0.5)^2 in whole numbers: r^2 - r < d^2 <= r^2 + r.
        if (framed && distanceSquared > radiusSquared - radius &&
            distanceSquared <= radiusSquared + radius)
            pixel = frame;
        return pixel;
    }
};

/// A row that crosses the corner squares; `dy` is its distance from the corners' centres.
void FillCornerRow(const PixelRows& rows, int y, int dy, const PlateStyle& style)
{
    const int radius = style.radius;
    const bool isEdge = y == 0 || y == rows.height - 1;
    for (int x = 0; x < radius; ++x) {
        const Pixel pixel = style.CornerPixel(radius - x, dy);
        rows.Set(x, y, pixel);
        rows.Set(rows.width - 1 - x, y, pixel);
    }
    rows.Fill(y, radius, rows.width - radius, style.framed && isEdge ? style.frame : style.fill);
}

/// A row between the corner squares, for the plate's `y`.
void FillMiddleRow(const PixelRows& rows, int y, const PlateStyle& style)
{
    rows.Fill(y, 0, rows.width, style.fill);
    // Without rounding the first and last rows are no corner rows, but they are framed as well.
    if (style.framed && style.radius == 0 && (y == 0 || y == rows.height - 1))
        rows.Fill(y, 0, rows.width, style.frame);
    if (style.framed && rows.width > 0) {
        rows.Set(0, y, style.frame);
        rows.Set(rows.width - 1, y, style.frame);
    }
}

}  // namespace

// ---- pixel buffers and images

unsigned char* CreatePixels(int width, int height)
{
    if (width < 1 || height < 1)
        return nullptr;
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    return pixels > MAX_PIXEL_BYTES / 4U ? nullptr : KUVAllocatePixels(pixels * 4U);
}

KUVPixelImage* CreateTextureImage(int width, int height, unsigned char* pixels)
{
    if (!pixels)
        return nullptr;
    auto* const image = new (std::nothrow) TextureImage(width, height, pixels);
    if (!image)
        KUVFreePixels(pixels);
    return image;
}

KUVPixelImage* CreateGridTexture(int width, int height, unsigned int colour, unsigned char dark,
                                 float scale)
{
    unsigned char* const pixels = CreatePixels(width, height);
    if (!pixels)
        return nullptr;
    const PixelRows rows{pixels, width, height};
    // A negative scale would put the band above the picture.
    const std::int64_t labelRows = TruncateToInt(scale * LABEL_SIZE);
    const int band = static_cast<int>(
        std::clamp<std::int64_t>(height - labelRows, 0, static_cast<std::int64_t>(height)));

    const Pixel ground = OpaquePixelOf(colour);
    const unsigned char v = dark ? 0 : 255;
    // The texture has three different rows at most; all others are copies of the first of a kind.
    if (band > 0) {
        FillRowOfSquares(rows, 0, ground, {v, v, v, 255});
        rows.Repeat(0, 1, std::min(band, 5));
    }
    if (band > 5) {
        rows.Fill(5, 0, width, ground);
        rows.Repeat(5, 6, std::min(band, 8));
    }
    for (int y = 8; y < band; ++y)
        std::memcpy(rows.Row(y), rows.Row(y - 8), rows.RowBytes());
    if (band < height) {
        rows.Fill(band, 0, width, ground);
        rows.Repeat(band, band + 1, height);
    }
    return CreateTextureImage(width, height, pixels);
}

KUVPixelImage* CreateRoundedPlate(int width, int height, int radius, unsigned char framed,
                                  unsigned int fill, unsigned int frame)
{
    if (radius < 0 || width / 2 < radius || height / 2 < radius)
        return nullptr;
    unsigned char* const pixels = CreatePixels(width, height);
    if (!pixels)
        return nullptr;
    const PixelRows rows{pixels, width, height};
    const PlateStyle style{radius, framed != 0, OpaquePixelOf(fill), OpaquePixelOf(frame)};
    for (int y = 0; y < radius; ++y) {
        FillCornerRow(rows, y, radius - y, style);
        FillCornerRow(rows, height - 1 - y, radius - y, style);
    }
    const int end = height - radius;
    for (int y = radius; y < end; ++y) {
        const bool isLikeRowBelow = y > radius + 1 && y < end - 1;
        if (isLikeRowBelow)
            rows.Repeat(radius + 1, y, y + 1);
        else
            FillMiddleRow(rows, y, style);
    }
    return CreateTextureImage(width, height, pixels);
}

// ---- VisTreeSpaceFillingLayoutCachedTextures

std::size_t
VisTreeSpaceFillingLayoutCachedTextures::SizeHash::operator()(const KUVMathPoint2Df& size) const
{
    // Adding 0 turns -0.0 into 0.0, which compares equal to it.
    const float x = size.x + 0.0f;
    const float y = size.y + 0.0f;
    std::uint32_t xBits = 0;
    std::uint32_t yBits = 0;
    std::memcpy(&xBits, &x, sizeof xBits);
    std::memcpy(&yBits, &y, sizeof yBits);
    std::uint64_t hash = (std::uint64_t{xBits} << 32U | yBits) * 0x9E3779B97F4A7C15ULL;
    hash ^= hash >> 32U;
    return static_cast<std::size_t>(hash);
}

bool VisTreeSpaceFillingLayoutCachedTextures::SizeEqual::operator()(const KUVMathPoint2Df& a,
                                                                    const KUVMathPoint2Df& b) const
{
    return a.x == b.x && a.y == b.y;
}

std::size_t
VisTreeSpaceFillingLayoutCachedTextures::NameHash::operator()(const KUVUnicodeString& name) const
{
    return name.ComputeHashKey();
}

VisTreeSpaceFillingLayoutCachedTextures::VisTreeSpaceFillingLayoutCachedTextures()
    : platesBySize(8), iconsByName(8)
{
    platesBySize.max_load_factor(1.0f);
    iconsByName.max_load_factor(1.0f);
}

VisTreeSpaceFillingLayoutCachedTextures::~VisTreeSpaceFillingLayoutCachedTextures()
{
    for (const auto& entry : iconsByName) {
        if (entry.second)
            entry.second->Release();
    }
    for (const auto& entry : platesBySize) {
        if (entry.second.hover)
            entry.second.hover->Release();
        if (entry.second.selected)
            entry.second.selected->Release();
    }
}

VisTreeSpaceFillingLayoutCachedTextures::Plates*
VisTreeSpaceFillingLayoutCachedTextures::GetPlates(const KUVMathPoint2Df& size)
{
    // A size that is not equal to itself would add an entry at every call.
    if (size.x != size.x || size.y != size.y)
        return nullptr;
    try {
        return &platesBySize[size];
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

KUVPixelImage* VisTreeSpaceFillingLayoutCachedTextures::GetIcon(const KUVUnicodeString& name)
{
    KUVPixelImage* image = nullptr;
    try {
        const auto known = iconsByName.find(name);
        if (known != iconsByName.end())
            return known->second;
        const KUVUnicodeString path = KUVGetImagePathNameEx(name);
        if (path.IsEmpty())
            return nullptr;
        image = KUVPixelImage::CreateFromFileEx(path, 1, 0);
        if (!image)
            return nullptr;
        iconsByName.emplace(name, image);
    } catch (const std::bad_alloc&) {
        if (image)
            image->Release();
        return nullptr;
    }
    image->ChangeFormat(KUVPixelFormat_RGBA8);
    image->SetTransparency(0);
    return image;
}

// ---- geometry of icon and label

IconPlace PlaceIcon(const NodeRectangle& node, const KUVMathPoint2Df& icon,
                    VisTreeSpaceFillingView::Position position, float labelBand)
{
    const bool isStacked = position < VisTreeSpaceFillingView::Position_IconLeft;
    const float freeHeight = isStacked ? node.height - labelBand : node.height;
    const float freeWidth =
        position == VisTreeSpaceFillingView::Position_IconLeft ? node.width - 2.0f : node.width;
    IconPlace place{freeWidth >= icon.x && freeHeight >= icon.y, {}};

    const float centredX = node.width * 0.5f + node.x - icon.x * 0.5f;
    const float centredY = node.height * 0.5f + node.y - icon.y * 0.5f;
    switch (position) {
    case VisTreeSpaceFillingView::Position_LabelBelow:
        place.lowerLeft = {centredX, centredY + labelBand * 0.5f};
        break;
    case VisTreeSpaceFillingView::Position_IconLeft:
        place.lowerLeft = {node.x + 2.0f, centredY};
        break;
    case VisTreeSpaceFillingView::Position_IconRight:
        place.lowerLeft = {node.width + node.x - icon.x, centredY};
        break;
    case VisTreeSpaceFillingView::Position_LabelAbove:
    default:
        place.lowerLeft = {centredX, centredY - labelBand * 0.5f};
        break;
    }
    return place;
}

LabelPlace PlaceLabel(const NodeRectangle& node, bool centred)
{
    if (centred)
        return {{node.x + node.width * 0.5f, node.height * 0.5f + node.y},
                KUVAnchorPoint_Center,
                node.width};
    return {{node.x, node.y + node.height}, KUVAnchorPoint_UpperLeft, node.width};
}

LabelPlace PlaceLabelBesideIcon(const NodeRectangle& node, bool centred,
                                const KUVMathPoint2Df& icon,
                                VisTreeSpaceFillingView::Position position, float band)
{
    const float centredX = node.x + node.width * 0.5f;
    const float besideY = band * 0.5f + (node.height * 0.5f + node.y);
    switch (position) {
    case VisTreeSpaceFillingView::Position_LabelBelow:
        return {{centredX, (node.height - icon.y + band) * 0.5f + node.y},
                KUVAnchorPoint_UpperMiddle,
                node.width};
    case VisTreeSpaceFillingView::Position_LabelAbove:
        return {
            {centredX, (icon.y + node.height) * 0.5f + node.y}, KUVAnchorPoint_Center, node.width};
    case VisTreeSpaceFillingView::Position_IconLeft:
        return {{icon.x + node.x + 4.0f, besideY},
                KUVAnchorPoint_UpperLeft,
                node.width - icon.x - 4.0f};
    case VisTreeSpaceFillingView::Position_IconRight:
        return {{node.x, besideY}, KUVAnchorPoint_UpperLeft, node.width - icon.x - 2.0f};
    default:
        return PlaceLabel(node, centred);
    }
}

// ---- VisTreeSpaceFillingView

/// The rectangle that a build is about.
struct VisTreeSpaceFillingView::Box : NodeRectangle {
    Box(const KUVMathPoint2Df& position, const KUVMathPoint2Df& size)
    {
        x = position.x;
        y = position.y;
        width = size.x;
        height = size.y;
    }
    KUVMathPoint2Df Corner() const { return {x, y}; }
    KUVMathPoint2Df Size() const { return {width, height}; }
};

/// How a build by `Init` shows its node.
struct VisTreeSpaceFillingView::Style {
    unsigned int colour;
    KUVCharacterFont* font;
    bool flatColour;
    bool centredLabel;
    const KUVUnicodeString& iconName;
    Position iconPosition;
    float scale;
    /// Height of a line of text in pixels.
    float band;
};

VisTreeSpaceFillingView::VisTreeSpaceFillingView(VisTreeSpaceFillingLayoutCachedTextures* textures)
    : bagRep_(AsOverlay(KUV2DBagRep::CreateRep())), cachedTextures_(textures)
{
}

// Both copy the pointers and take no references, on purpose.
VisTreeSpaceFillingView::VisTreeSpaceFillingView(const VisTreeSpaceFillingView& other) = default;
VisTreeSpaceFillingView&
VisTreeSpaceFillingView::operator=(const VisTreeSpaceFillingView& other) = default;

VisTreeSpaceFillingView::~VisTreeSpaceFillingView()
{
    Clean();
    if (bagRep_)
        bagRep_->Release();
    bagRep_ = nullptr;
    cachedTextures_ = nullptr;
}

// ---- building

void VisTreeSpaceFillingView::Init(unsigned char isLeafObject, const KUVUnicodeString& label,
                                   const KUVMathPoint2Df& position, const KUVMathPoint2Df& size,
                                   unsigned int colour, KUVCharacterFont* font,
                                   unsigned char flatColour, unsigned char centredLabel,
                                   const KUVUnicodeString& iconName, Position iconPosition,
                                   float scale)
{
    Clean();
    if (HasNoExtent(size) || !bagRep_ || !cachedTextures_)
        return;
    if (!IsFinite(position) || !IsFinite(size) || !std::isfinite(scale))
        return;
    const Pixel pixel = OpaquePixelOf(colour);
    bright_ = pixel.r + pixel.g + pixel.b > 384;

    const Box box(position, size);
    const Style style{colour,   font,         flatColour != 0, centredLabel != 0,
                      iconName, iconPosition, scale,           scale * LABEL_SIZE};
    BuildBackground(box, style);
    BuildContour(box);
    const KUVMathPoint2Df iconSize = BuildIcon(box, style, !label.IsEmpty());
    PrepareHighlightImages();
    BuildLabel(box, style, iconSize, label);
    isLeafObject_ = isLeafObject;
    UpdateVisual();
}

void VisTreeSpaceFillingView::InitWithTexture(unsigned char isLeafObject,
                                              const KUVMathPoint2Df& position,
                                              const KUVMathPoint2Df& size, unsigned int* pixels,
                                              unsigned char withHighlightImages)
{
    Clean();
    // The buffer was made as bytes; it only travels as words.
    auto* const bytes = reinterpret_cast<unsigned char*>(pixels);
    const bool isBuilt = !HasNoExtent(size) && bagRep_ && IsFinite(position) && IsFinite(size);
    if (!isBuilt || !cachedTextures_)
        KUVFreePixels(bytes);
    if (!isBuilt)
        return;
    isLeafObject_ = isLeafObject;
    const Box box(position, size);
    BuildContour(box);
    if (bytes && cachedTextures_) {
        BuildTexture(box, bytes);
        if (withHighlightImages)
            PrepareHighlightImages();
    }
    // Without a label the layout has to show it elsewhere, as if it had been shortened.
    cropped_ = 1;
    UpdateVisual();
}

void VisTreeSpaceFillingView::InitWithoutTexture(unsigned char isLeafObject,
                                                 const KUVMathPoint2Df& position,
                                                 const KUVMathPoint2Df& size)
{
    InitWithTexture(isLeafObject, position, size, nullptr, /*withHighlightImages=*/0);
    forcedVisible_ = 1;
    UpdateVisual();
}

void VisTreeSpaceFillingView::Clean()
{
    Drop(std::exchange(labelRep_, nullptr));
    Drop(std::exchange(backgroundRep_, nullptr));
    Drop(std::exchange(iconRep_, nullptr));
    Drop(std::exchange(contourRep_, nullptr));
    Drop(std::exchange(selectedImageRep_, nullptr));
    Drop(std::exchange(hoverImageRep_, nullptr));
    if (textureImage_)
        std::exchange(textureImage_, nullptr)->Release();
    forcedVisible_ = 0;
    built_ = 0;
    hasHighlightImages_ = 0;
}

void VisTreeSpaceFillingView::BuildBackground(const Box& box, const Style& style)
{
    if (style.flatColour) {
        KUV2DPolygonRep* const polygon = AsOverlay(CreateRectangle(box, /*fill=*/1));
        const Pixel pixel = OpaquePixelOf(style.colour);
        if (polygon)
            polygon->SetColor(pixel.r, pixel.g, pixel.b, 255);
        backgroundRep_ = polygon;
    } else {
        textureImage_ = CreateGridTexture(TruncateToInt(box.width), TruncateToInt(box.height),
                                          style.colour, bright_, style.scale);
        backgroundRep_ = CreateImageRep(box.Corner(), textureImage_, /*mode=*/0);
    }
    if (backgroundRep_) {
        backgroundRep_->SetWorldScalable(0);
        ShowWhen(backgroundRep_, true);
    }
}

void VisTreeSpaceFillingView::BuildTexture(const Box& box, unsigned char* pixels)
{
    const int width = TruncateToInt(box.width);
    const int height = TruncateToInt(box.height);
    const bool isSane =
        width >= 1 && height >= 1 &&
        static_cast<std::size_t>(width) * static_cast<std::size_t>(height) <= MAX_PIXEL_BYTES / 4U;
    if (!isSane) {
        KUVFreePixels(pixels);
        return;
    }
    textureImage_ = CreateTextureImage(width, height, pixels);
    backgroundRep_ = CreateImageRep(box.Corner(), textureImage_, /*mode=*/0);
    ShowWhen(backgroundRep_, true);
}

void VisTreeSpaceFillingView::BuildContour(const Box& box)
{
    // Every build that is not refused comes by here.
    built_ = 1;
    builtPosition_ = box.Corner();
    builtSize_ = box.Size();
    contourRep_ = AsOverlay(CreateRectangle(box, /*fill=*/0));
    if (!contourRep_)
        return;
    ResetSquareCountourColor();
    contourRep_->SetWorldScalable(0);
}

KUVMathPoint2Df VisTreeSpaceFillingView::BuildIcon(const Box& box, const Style& style,
                                                   bool hasLabel)
{
    KUVPixelImage* const image =
        style.iconName.IsEmpty() ? nullptr : cachedTextures_->GetIcon(style.iconName);
    if (!image)
        return {};
    int width = 0;
    int height = 0;
    image->GetSize(width, height);
    image->SetXPixelSize(style.scale);
    image->SetYPixelSize(style.scale);
    const KUVMathPoint2Df size(std::trunc(static_cast<float>(width) * style.scale),
                               std::trunc(static_cast<float>(height) * style.scale));
    const IconPlace place = PlaceIcon(box, size, style.iconPosition, hasLabel ? style.band : 0.0f);
    if (!place.fits)
        return size;
    iconRep_ = CreateImageRep(place.lowerLeft, image, /*mode=*/2);
    if (iconRep_) {
        iconRep_->SetWorldScalable(0);
        iconRep_->SetAlphaMode(2);
    }
    return size;
}

/// The plates themselves are made when one is shown for the first time: there are as many sizes as
/// nodes in some pictures, and their plates together many times larger than any picture.
void VisTreeSpaceFillingView::PrepareHighlightImages()
{
    hasHighlightImages_ = cachedTextures_->GetPlates(builtSize_) ? 1 : 0;
}

void VisTreeSpaceFillingView::ShowHighlightImages()
{
    const bool showsHover = highlightStatus_ && !selectionStatus_;
    const bool showsSelected = selectionStatus_ != 0;
    auto* const plates = hasHighlightImages_ && (showsHover || showsSelected)
                             ? cachedTextures_->GetPlates(builtSize_)
                             : nullptr;
    if (plates) {
        // Smaller sizes have no plates at all, so that it does not matter what they truncate to.
        const int width = TruncateToInt(builtSize_.x - 2.0f);
        const int height = TruncateToInt(builtSize_.y - 2.0f);
        const KUVMathPoint2Df corner(builtPosition_.x + 1.0f, builtPosition_.y + 1.0f);
        if (showsHover && !plates->hover)
            plates->hover = CreateRoundedPlate(width, height, PLATE_RADIUS, /*framed=*/0,
                                               HOVER_FILL, HOVER_FILL);
        if (showsHover && !hoverImageRep_)
            hoverImageRep_ = CreateImageRep(corner, plates->hover, /*mode=*/0);
        if (showsSelected && !plates->selected)
            plates->selected = CreateRoundedPlate(width, height, PLATE_RADIUS, /*framed=*/1,
                                                  SELECTED_FILL, SELECTED_FRAME);
        if (showsSelected && !selectedImageRep_)
            selectedImageRep_ = CreateImageRep(corner, plates->selected, /*mode=*/0);
    }
    ShowWhen(hoverImageRep_, showsHover);
    ShowWhen(selectedImageRep_, showsSelected);
}

void VisTreeSpaceFillingView::BuildLabel(const Box& box, const Style& style,
                                         const KUVMathPoint2Df& iconSize,
                                         const KUVUnicodeString& label)
{
    const LabelPlace place = iconRep_ ? PlaceLabelBesideIcon(box, style.centredLabel, iconSize,
                                                             style.iconPosition, style.band)
                                      : PlaceLabel(box, style.centredLabel);
    const float point[] = {place.point.x, place.point.y};
    try {
        KUVUnicodeString shown;
        ComputeCroppedLabel(label, place.width, style.font, style.scale, shown, cropped_);
        labelRep_ = AsOverlay(KUV2DAnnotationTextRep::CreateRep(point, shown, place.anchor,
                                                                style.band, 0, nullptr, nullptr));
    } catch (const std::bad_alloc&) {
        // The node stays without label; the layout shows it elsewhere, as a shortened one.
        cropped_ = 1;
    }
}

// ---- state

void VisTreeSpaceFillingView::SetSelectionStatus(unsigned char selected)
{
    if (selectionStatus_ == selected)
        return;
    selectionStatus_ = selected;
    UpdateVisual();
}

void VisTreeSpaceFillingView::SetHighlightStatus(unsigned char highlighted)
{
    if (highlightStatus_ == highlighted)
        return;
    highlightStatus_ = highlighted;
    UpdateVisual();
}

void VisTreeSpaceFillingView::SetHighlightMode(HighlightMode mode)
{
    if (highlightMode_ == mode)
        return;
    if (highlightMode_ == HighlightMode_Contour)
        ShowWhen(contourRep_, false);
    // The hover plate of the former mode stays in the bag, deliberately.
    if (highlightMode_ == HighlightMode_Texture)
        ShowWhen(selectedImageRep_, false);
    highlightMode_ = mode;
    UpdateVisual();
}

void VisTreeSpaceFillingView::SetSquareCountourColor(unsigned char r, unsigned char g,
                                                     unsigned char b, unsigned char a)
{
    if (contourRep_)
        contourRep_->SetColor(r, g, b, a);
}

void VisTreeSpaceFillingView::ResetSquareCountourColor()
{
    if (contourRep_)
        SetColorOf(contourRep_, CONTOUR_ORANGE);
}

KUVColor VisTreeSpaceFillingView::ComputeLabelColor(bool active) const
{
    if (active && highlightMode_ == HighlightMode_Contour)
        return bright_ ? LABEL_ORANGE : LABEL_PINK;
    if (active)
        return isLeafObject_ ? LABEL_GREY : LABEL_BLACK;
    if (!bright_)
        return LABEL_WHITE;
    return isLeafObject_ ? LABEL_GREY : LABEL_BLACK;
}

void VisTreeSpaceFillingView::UpdateVisual()
{
    if (!IsVisible())
        return;
    const bool active = selectionStatus_ || highlightStatus_;
    if (highlightMode_ == HighlightMode_Contour) {
        ShowWhen(contourRep_, active);
    } else if (highlightMode_ == HighlightMode_Texture) {
        ShowHighlightImages();
    }
    // Label and icon go out and in again, so that they stand above whatever was added before.
    if (labelRep_) {
        ShowWhen(labelRep_, false);
        SetColorOf(labelRep_, ComputeLabelColor(active));
        ShowWhen(labelRep_, true);
    }
    ShowWhen(iconRep_, false);
    ShowWhen(iconRep_, true);
}

/// Puts `rep`, which may be null, into the bag or takes it out.
void VisTreeSpaceFillingView::ShowWhen(KUVRep* rep, bool shown)
{
    if (!rep || !bagRep_)
        return;
    if (!shown) {
        bagRep_->RemoveChild(rep);
        return;
    }
    try {
        bagRep_->AddChild(rep);
    } catch (const std::bad_alloc&) {
        // The rep stays outside; the next change of state tries again.
        return;
    }
}

/// Takes `rep`, which may be null, out of the bag and gives the view's reference back.
void VisTreeSpaceFillingView::Drop(KUVRep* rep)
{
    if (!rep)
        return;
    if (bagRep_)
        bagRep_->RemoveChild(rep);
    rep->Release();
}

// ---- queries

KUV2DBagRep* VisTreeSpaceFillingView::GetBagRep() const { return bagRep_; }

VisTreeSpaceFillingView::HighlightMode VisTreeSpaceFillingView::GetHighlightMode() const
{
    return highlightMode_;
}

unsigned char VisTreeSpaceFillingView::GetHighlightStatus() const { return highlightStatus_; }

unsigned char VisTreeSpaceFillingView::GetSelectionStatus() const { return selectionStatus_; }

unsigned char VisTreeSpaceFillingView::IsBright() const { return bright_; }

unsigned char VisTreeSpaceFillingView::IsCropped() const { return cropped_; }

unsigned char VisTreeSpaceFillingView::IsVisible() const
{
    if (!bagRep_)
        return 0;
    if (forcedVisible_)
        return 1;
    const KUVVisibilityState* const state = bagRep_->GetVisibilityState();
    return state && state->shown ? 1 : 0;
}

// ---- labels

void VisTreeSpaceFillingView::ComputeCroppedLabel(const KUVUnicodeString& label, float maximumWidth,
                                                  KUVCharacterFont* font, float scale,
                                                  KUVUnicodeString& shown, unsigned char& cropped)
{
    // `shown` always is what remains of the label, followed by the ellipsis once something was
    // taken away: no second text has to be copied in every round.
    const KUVUnicodeString ellipsis(ELLIPSIS);
    shown = label;
    cropped = 0;
    if (!font || shown.IsEmpty())
        return;
    const int fontIndex = font->GetFontIndex(scale * LABEL_SIZE);
    for (;;) {
        int width = 0;
        int height = 0;
        int descent = 0;
        font->GetStringSize(shown, &width, &height, &descent, fontIndex);
        if (!(static_cast<float>(width) > maximumWidth))
            return;
        if (cropped) {
            for (std::size_t i = 0; i + 1 < sizeof ELLIPSIS; ++i)
                shown.RemoveLastCharacter();
        }
        shown.RemoveLastCharacter();
        const bool isUsedUp = shown.IsEmpty();
        shown += ellipsis;
        cropped = 1;
        if (isUsedUp)
            return;
    }
}
