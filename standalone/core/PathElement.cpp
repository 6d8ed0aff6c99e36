#include "KUVModelPaths.h"

#include <utility>

KUV_IMPLEMENT_CLASS(KUVPathElement, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVGraphicPathElement, KUVPathElement, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVPathElementWithPositions, KUVGraphicPathElement, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVGraphicElementIntersection, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVGraphicElementNormale, KUVBaseUnknown, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVVisManager, KUVBaseUnknown, "KUVHost")

namespace {

KUVVisManager* visManager = nullptr;

void AddRefAll(const std::vector<KUVBaseUnknown*>& objects)
{
    for (KUVBaseUnknown* const object : objects)
        object->AddRef();
}

void ReleaseAll(const std::vector<KUVBaseUnknown*>& objects)
{
    for (KUVBaseUnknown* const object : objects)
        object->Release();
}

}  // namespace

// ---- path element

KUVPathElement::KUVPathElement() = default;

KUVPathElement::KUVPathElement(const KUVPathElement& other)
    : KUVBaseUnknown(other), elements_(other.elements_), attached_(other.attached_),
      cursor_(other.cursor_), locked_(other.locked_)
{
    AddRefAll(elements_);
    AddRefAll(attached_);
}

KUVPathElement& KUVPathElement::operator=(const KUVPathElement& other)
{
    if (this == &other)
        return *this;
    std::vector<KUVBaseUnknown*> elements(other.elements_);
    std::vector<KUVBaseUnknown*> attached(other.attached_);
    AddRefAll(elements);
    AddRefAll(attached);
    elements_.swap(elements);
    attached_.swap(attached);
    cursor_ = other.cursor_;
    locked_ = other.locked_;
    ReleaseAll(elements);
    ReleaseAll(attached);
    return *this;
}

KUVPathElement::~KUVPathElement()
{
    ReleaseAll(elements_);
    ReleaseAll(attached_);
}

int KUVPathElement::Size() const { return locked_ ? 0 : static_cast<int>(elements_.size()); }

KUVBaseUnknown* KUVPathElement::operator[](int index) const
{
    return index >= 0 && index < Size() ? elements_[static_cast<std::size_t>(index)] : nullptr;
}

int KUVPathElement::GetCursorPosition() const { return locked_ ? -1 : cursor_; }

KUVBaseUnknown* KUVPathElement::GetCurrentElement() const { return (*this)[cursor_]; }

void KUVPathElement::InitToTopElement() { cursor_ = -1; }

void KUVPathElement::InitToLeafElement() { cursor_ = static_cast<int>(elements_.size()); }

KUVBaseUnknown* KUVPathElement::NextChildElement()
{
    if (cursor_ + 1 >= static_cast<int>(elements_.size()))
        return nullptr;
    return elements_[static_cast<std::size_t>(++cursor_)];
}

KUVBaseUnknown* KUVPathElement::NextFatherElement()
{
    if (cursor_ <= 0)
        return nullptr;
    return elements_[static_cast<std::size_t>(--cursor_)];
}

void KUVPathElement::AddElement(KUVBaseUnknown* element)
{
    if (!element)
        return;
    elements_.push_back(element);
    element->AddRef();
    cursor_ = static_cast<int>(elements_.size()) - 1;
}

void KUVPathElement::RemoveElement(KUVBaseUnknown* element)
{
    int place = static_cast<int>(elements_.size()) - 1;
    while (place >= 0 && elements_[static_cast<std::size_t>(place)] != element)
        --place;
    if (place < 0)
        return;
    elements_.erase(elements_.begin() + place);
    // The cursor stays on its object; where that was the last one and is gone, it goes to the one
    // that is last now.
    if (cursor_ > place || cursor_ == static_cast<int>(elements_.size()))
        --cursor_;
    element->Release();
}

void KUVPathElement::Empty()
{
    std::vector<KUVBaseUnknown*> former;
    former.swap(elements_);
    cursor_ = -1;
    ReleaseAll(former);
}

void KUVPathElement::AttachElement(KUVBaseUnknown* element)
{
    if (!element)
        return;
    attached_.push_back(element);
    element->AddRef();
}

KUVBaseUnknown* KUVPathElement::SearchAttachedElement(KUVClassId classId) const
{
    for (KUVBaseUnknown* const object : attached_) {
        const KUVMetaClass* const meta = object->GetMetaObject();
        if (meta && meta->IsAKindOf(classId)) {
            object->AddRef();
            return object;
        }
    }
    return nullptr;
}

unsigned char KUVPathElement::UnlockPath() { return std::exchange(locked_, false); }

// ---- shown by a view

KUVGraphicPathElement::KUVGraphicPathElement() = default;

KUVGraphicPathElement::~KUVGraphicPathElement()
{
    if (viewObject_)
        viewObject_->Release();
}

void KUVGraphicPathElement::SetViewObject(KUVBaseUnknown* viewObject)
{
    if (viewObject)
        viewObject->AddRef();
    if (KUVBaseUnknown* const former = std::exchange(viewObject_, viewObject))
        former->Release();
}

KUVPathElementWithPositions::KUVPathElementWithPositions(KUVCommand* owner, KUVViewer* viewer,
                                                         const KUVMathPointf& point,
                                                         const KUVMathDirectionf& normal,
                                                         const KUVMathDirectionf& globalNormal)
    : owner_(owner), viewer_(viewer), point_(point), normal_(normal), globalNormal_(globalNormal)
{
}

KUVPathElementWithPositions::~KUVPathElementWithPositions() = default;

KUVGraphicElementIntersection::KUVGraphicElementIntersection(const KUVMathPointf& point)
    : point_(point)
{
}

KUVGraphicElementIntersection::~KUVGraphicElementIntersection() = default;

KUVGraphicElementNormale::KUVGraphicElementNormale(const KUVMathDirection& direction)
    : direction_(direction)
{
}

KUVGraphicElementNormale::~KUVGraphicElementNormale() = default;

// ---- visualisation manager

KUVVisManager::KUVVisManager() = default;
KUVVisManager::~KUVVisManager() = default;

KUVVisManager* KUVVisManager::GetVisManager() { return visManager; }

void KUVVisManager::SetVisManager(KUVVisManager* manager) { visManager = manager; }
