#include "core/RepKind.h"

#include "KUV2D.h"

#include <new>

KUV_IMPLEMENT_CLASS(KUV2DBagRep, KUVRep, "KUVHost")
KUV_IMPLEMENT_CLASS(KUV2DPolygonRep, KUVRep, "KUVHost")
KUV_IMPLEMENT_CLASS(KUV2DImagePixelRep, KUVRep, "KUVHost")
KUV_IMPLEMENT_CLASS(KUV2DAnnotationTextRep, KUVRep, "KUVHost")

core::RepKind core::KindOf(const KUVRep& rep)
{
    for (const KUVMetaClass* meta = rep.GetMetaObject(); meta; meta = meta->GetBase()) {
        if (meta == KUV2DPolygonRep::MetaObject())
            return RepKind::Polygon;
        if (meta == KUV2DImagePixelRep::MetaObject())
            return RepKind::Image;
        if (meta == KUV2DAnnotationTextRep::MetaObject())
            return RepKind::Text;
        if (meta == KUV2DBagRep::MetaObject())
            return RepKind::Bag;
    }
    return RepKind::Other;
}

// ---- bag

KUV2DBagRep::KUV2DBagRep() = default;
KUV2DBagRep::~KUV2DBagRep() = default;

KUV2DBagRep* KUV2DBagRep::CreateRep() { return new (std::nothrow) KUV2DBagRep; }

void KUV2DBagRep::AddChild(KUVRep* rep) { children_.Add(rep); }

void KUV2DBagRep::RemoveChild(KUVRep* rep) { children_.Remove(rep); }

const list<KUVRep>* KUV2DBagRep::GetChildren() const { return &children_.GetList(); }

const KUVVisibilityState* KUV2DBagRep::GetVisibilityState() const
{
    return hasVisibility_ ? &visibility_ : nullptr;
}

void KUV2DBagRep::SetShown(unsigned char shown)
{
    visibility_.shown = shown != 0;
    hasVisibility_ = true;
}

void KUV2DBagRep::ForgetVisibilityState() { hasVisibility_ = false; }

// ---- polygon

KUV2DPolygonRep* KUV2DPolygonRep::CreateRep(const float* points, int count, int fill)
{
    if (!points || count < 2)
        return nullptr;
    try {
        std::vector<float> copied(points, points + 2 * static_cast<std::size_t>(count));
        auto* const rep = new KUV2DPolygonRep;
        rep->points_ = std::move(copied);
        rep->filled_ = fill != 0;
        return rep;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

KUV2DPolygonRep::~KUV2DPolygonRep() = default;

void KUV2DPolygonRep::SetColor(unsigned char r, unsigned char g, unsigned char b, unsigned char a)
{
    color_ = {r, g, b, a};
}

// ---- image

KUV2DImagePixelRep* KUV2DImagePixelRep::CreateRep(const float* lowerLeft,
                                                  const KUVPixelImage* image, int mode,
                                                  int /*reserved1*/, int /*reserved2*/,
                                                  int /*reserved3*/)
{
    if (!lowerLeft || !image)
        return nullptr;
    auto* const rep = new (std::nothrow) KUV2DImagePixelRep;
    if (!rep)
        return nullptr;
    // References are counted on the object, which is the same for readers and writers.
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

// ---- text

KUV2DAnnotationTextRep*
KUV2DAnnotationTextRep::CreateRep(const float* point, const KUVUnicodeString& text,
                                  KUVAnchorPoint anchor, float size, int /*reserved*/,
                                  const void* /*graphicAttributes*/, const void* /*textAttributes*/)
{
    if (!point)
        return nullptr;
    try {
        KUVUnicodeString copied(text);
        auto* const rep = new KUV2DAnnotationTextRep;
        rep->text_ = std::move(copied);
        rep->point_ = {point[0], point[1]};
        rep->size_ = size;
        rep->anchor_ = anchor;
        return rep;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

KUV2DAnnotationTextRep::~KUV2DAnnotationTextRep() = default;

void KUV2DAnnotationTextRep::SetColor(unsigned char r, unsigned char g, unsigned char b,
                                      unsigned char a)
{
    color_ = {r, g, b, a};
}
