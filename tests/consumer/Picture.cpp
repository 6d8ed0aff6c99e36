// The 2D scene of a small host. Nothing is painted: whoever draws reads the reps.

#include "KUV2D.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

KUV_IMPLEMENT_CLASS(KUVModelIdentificator, KUVBaseUnknown, "Consumer")
KUV_IMPLEMENT_CLASS(KUVRep, KUVBaseUnknown, "Consumer")
KUV_IMPLEMENT_CLASS(KUV2DBagRep, KUVRep, "Consumer")
KUV_IMPLEMENT_CLASS(KUV2DPolygonRep, KUVRep, "Consumer")
KUV_IMPLEMENT_CLASS(KUVPixelImage, KUVBaseUnknown, "Consumer")
KUV_IMPLEMENT_CLASS(KUV2DImagePixelRep, KUVRep, "Consumer")
KUV_IMPLEMENT_CLASS(KUV2DAnnotationTextRep, KUVRep, "Consumer")
KUV_IMPLEMENT_CLASS(KUVCharacterFont, KUVBaseUnknown, "Consumer")

// ---- reps and bags

KUVModelIdentificator::KUVModelIdentificator(KUVBaseUnknown* object) : object_(object)
{
    if (object_)
        object_->AddRef();
}
KUVModelIdentificator::~KUVModelIdentificator()
{
    if (object_)
        object_->Release();
}

KUVRep::KUVRep() = default;
KUVRep::~KUVRep()
{
    if (modelIdentificator_)
        modelIdentificator_->Release();
}
const list<KUVRep>* KUVRep::GetChildren() const { return nullptr; }
KUVGraphicPrimitive* KUVRep::GetGraphicPrimitive(int) const { return nullptr; }
void KUVRep::GetGraphicAttributeSet(KUVGraphicAttributeSet& attributes) const
{
    if (hasAttributes_)
        attributes = attributes_;
}

/// A plain vector: this host's pictures are small, so a removal may cost their length.
struct KUVChildReps::Data {
    std::vector<KUVRep*> reps;
    mutable list<KUVRep> answer;
};

KUVChildReps::KUVChildReps() : data_(std::make_unique<Data>()) {}
KUVChildReps::~KUVChildReps()
{
    for (KUVRep* const rep : data_->reps)
        rep->Release();
}
void KUVChildReps::Add(KUVRep* rep)
{
    if (!rep || Has(rep))
        return;
    data_->reps.push_back(rep);
    rep->AddRef();
}
void KUVChildReps::Remove(KUVRep* rep)
{
    const auto found = std::find(data_->reps.begin(), data_->reps.end(), rep);
    if (found == data_->reps.end())
        return;
    data_->reps.erase(found);
    rep->Release();
}
unsigned char KUVChildReps::Has(const KUVRep* rep) const
{
    return std::find(data_->reps.begin(), data_->reps.end(), rep) != data_->reps.end();
}
const list<KUVRep>& KUVChildReps::GetList() const
{
    data_->answer.Empty();
    for (KUVRep* const rep : data_->reps)
        data_->answer.Append(rep);
    return data_->answer;
}

KUV2DBagRep::KUV2DBagRep() = default;
KUV2DBagRep::~KUV2DBagRep() = default;
KUV2DBagRep* KUV2DBagRep::CreateRep() { return new KUV2DBagRep; }
void KUV2DBagRep::AddChild(KUVRep* rep) { children_.Add(rep); }
void KUV2DBagRep::RemoveChild(KUVRep* rep) { children_.Remove(rep); }
const list<KUVRep>* KUV2DBagRep::GetChildren() const { return &children_.GetList(); }
const KUVVisibilityState* KUV2DBagRep::GetVisibilityState() const
{
    return hasVisibility_ ? &visibility_ : nullptr;
}
void KUV2DBagRep::SetShown(unsigned char shown) { visibility_.shown = shown; }

// ---- polygons and texts

KUV2DPolygonRep* KUV2DPolygonRep::CreateRep(const float* points, int count, int fill)
{
    if (!points || count < 2)
        return nullptr;
    KUV2DPolygonRep* const rep = new KUV2DPolygonRep;
    rep->points_.assign(points, points + 2 * static_cast<std::ptrdiff_t>(count));
    rep->filled_ = fill != 0;
    return rep;
}
KUV2DPolygonRep::~KUV2DPolygonRep() = default;
void KUV2DPolygonRep::SetColor(unsigned char r, unsigned char g, unsigned char b, unsigned char a)
{
    color_ = {r, g, b, a};
}

KUV2DAnnotationTextRep* KUV2DAnnotationTextRep::CreateRep(const float* point,
                                                          const KUVUnicodeString& text,
                                                          KUVAnchorPoint anchor, float size, int,
                                                          const void*, const void*)
{
    if (!point)
        return nullptr;
    KUV2DAnnotationTextRep* const rep = new KUV2DAnnotationTextRep;
    rep->point_ = {point[0], point[1]};
    rep->text_ = text;
    rep->anchor_ = anchor;
    rep->size_ = size;
    return rep;
}
KUV2DAnnotationTextRep::~KUV2DAnnotationTextRep() = default;
void KUV2DAnnotationTextRep::SetColor(unsigned char r, unsigned char g, unsigned char b,
                                      unsigned char a)
{
    color_ = {r, g, b, a};
}

// ---- images: kept as they come

unsigned char* KUVAllocatePixels(std::size_t bytes)
{
    return static_cast<unsigned char*>(std::malloc(bytes));
}
void KUVFreePixels(unsigned char* pixels) { std::free(pixels); }

KUVPixelImage::KUVPixelImage(int width, int height, KUVPixelFormat format, unsigned char* pixels,
                             int deallocate) noexcept
    : pixels_(pixels), width_(width), height_(height), format_(format)
{
    if (pixels && width > 0 && height > 0 && !deallocate) {
        const std::size_t bytes =
            static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
        pixels_ = KUVAllocatePixels(bytes);
        if (pixels_)
            std::memcpy(pixels_, pixels, bytes);
    }
    if (!pixels_ || width < 1 || height < 1)
        width_ = height_ = 0;
}
KUVPixelImage::~KUVPixelImage() { KUVFreePixels(pixels_); }
KUVPixelImage* KUVPixelImage::CreateFromFileEx(const KUVUnicodeString&, int, int)
{
    return nullptr;
}
KUVResult KUVPixelImage::ChangeFormat(KUVPixelFormat format)
{
    return format == format_ ? KUV_OK : KUV_FAIL;
}
void KUVPixelImage::GetSize(int& width, int& height) const
{
    width = width_;
    height = height_;
}

KUV2DImagePixelRep* KUV2DImagePixelRep::CreateRep(const float* lowerLeft,
                                                  const KUVPixelImage* image, int mode, int, int,
                                                  int)
{
    if (!lowerLeft || !image)
        return nullptr;
    KUV2DImagePixelRep* const rep = new KUV2DImagePixelRep;
    rep->image_ = const_cast<KUVPixelImage*>(image);
    rep->image_->AddRef();
    rep->lowerLeft_ = {lowerLeft[0], lowerLeft[1]};
    rep->mode_ = mode;
    return rep;
}
KUV2DImagePixelRep::~KUV2DImagePixelRep()
{
    if (image_)
        image_->Release();
}

// ---- fonts and icons

KUVCharacterFont::KUVCharacterFont() = default;
KUVCharacterFont::~KUVCharacterFont() = default;

KUVUnicodeString KUVGetImagePathNameEx(const KUVUnicodeString&) { return {}; }
