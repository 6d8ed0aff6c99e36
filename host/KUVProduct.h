#ifndef KUVProduct_h
#define KUVProduct_h

// Product data: identifiers of product objects, and the loaders that show products in a light form.

#include "KUVExport.h"
#include "KUVObjectModel.h"
#include "KUVStringsMath.h"

#include <cstddef>
#include <vector>

class KUVRep;
class KUVRepPath;
class KUVViewer;

/// The identity of a product object, in the form in which the object's adapter gives it.
class KUV_EXPORT KUVIAdpPLMIdentificator : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    /// `physicalId` stays the same for the life of the product, whatever session shows it.
    KUVIAdpPLMIdentificator(const KUVUnicodeString& physicalId, unsigned char validForRemoteUsage);
    ~KUVIAdpPLMIdentificator() override;

    const KUVUnicodeString& GetPhysicalIdText() const { return physicalId_; }
    unsigned char IsValidForRemoteUsage() const { return validForRemoteUsage_; }

private:
    KUVUnicodeString physicalId_;
    unsigned char validForRemoteUsage_;
};

/// A product object: a part, an assembly or an instance of one.
class KUV_EXPORT KUVIPLMComponent : public KUVInterface {
public:
    static const char* InterfaceName() { return "KUVIPLMComponent"; }
    /// On success stores a referenced identificator, or null, in `identificator`.
    virtual KUVResult GetAdpIdentificator(KUVIAdpPLMIdentificator*& identificator) const = 0;

protected:
    ~KUVIPLMComponent() override;
};

/// An occurrence in a product structure: an instance together with the product that it
/// instantiates.
class KUV_EXPORT KUVIPLMNavOccurrence : public KUVInterface {
public:
    static const char* InterfaceName() { return "KUVIPLMNavOccurrence"; }
    /// The instance, or null. Borrowed.
    virtual KUVBaseUnknown* GetRelatedInstance() const = 0;
    /// The product that the instance refers to, or null. Borrowed.
    virtual KUVBaseUnknown* GetRelatedReference() const = 0;

protected:
    ~KUVIPLMNavOccurrence() override;
};

/// One value of a product identifier.
class KUV_EXPORT KUVPLMID_Any {
public:
    KUVPLMID_Any() = default;
    explicit KUVPLMID_Any(const KUVUnicodeString& text) : text_(text) {}
    KUVUnicodeString ToString() const { return text_; }

private:
    KUVUnicodeString text_;
};

/// The identifier of a product object.
class KUV_EXPORT KUVPLMID {
public:
    KUVPLMID();
    ~KUVPLMID();

    /// Fills `id` from an object's identificator. Fails for null.
    static KUVResult GetPLMIDFromAdpIdentificator(const KUVIAdpPLMIdentificator* identificator,
                                                  KUVPLMID& id);
    /// Stores in `valid` whether the identifier means anything outside this process. Fails on an
    /// identifier that was never filled.
    KUVResult IsValidForRemoteUsage(unsigned char& valid) const;
    KUVPLMID_Any GetPhysicalId() const;

private:
    KUVUnicodeString physicalId_;
    unsigned char validForRemoteUsage_ = 0;
    unsigned char filled_ = 0;
};

/// Shows products in a light form, under reps of its own.
class KUV_EXPORT VisNativeProductLoader {
public:
    virtual ~VisNativeProductLoader();

    /// The identifier of the product that a loader shows under `rep`. Fails for null and for reps
    /// that no loader made.
    static KUVResult GetProductID(const KUVRep* rep, KUVUnicodeString& id);
    /// Fills `path` with the reps of this loader that lead to the product with these identifiers,
    /// outermost first. Levels may be missing from the path.
    virtual KUVResult ComputeRepPathFromPathID(const std::vector<KUVUnicodeString>& ids,
                                               KUVRepPath& path) = 0;

protected:
    VisNativeProductLoader();

    /// For loaders: `rep` shows the product `id`. Null is ignored. The rep is not referenced: the
    /// loader says `ForgetProductID` before it dies.
    static void SetProductID(const KUVRep* rep, const KUVUnicodeString& id);
    static void ForgetProductID(const KUVRep* rep);
};

/// A run of pointers in memory that belongs to somebody else.
template <class T>
class KUVSpan {
public:
    KUVSpan() = default;
    KUVSpan(T* const* first, std::size_t size) : first_(first), size_(size) {}
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    T* operator[](std::size_t index) const { return index < size_ ? first_[index] : nullptr; }
    T* const* begin() const { return first_; }
    T* const* end() const { return first_ + size_; }

private:
    T* const* first_ = nullptr;
    std::size_t size_ = 0;
};

/// The product loaders of each viewer.
class KUV_EXPORT VisProductLoaderServices {
public:
    /// The loaders of `viewer` in the order of registration; empty without a viewer. Good until a
    /// loader is registered or taken back.
    static KUVSpan<VisNativeProductLoader> GetRegisteredProductLoader(const KUVViewer* viewer);
    /// Nothing is owned: the loader is taken back before it or the viewer dies. Null is ignored,
    /// and so is a loader that is registered already.
    static void RegisterProductLoader(const KUVViewer* viewer, VisNativeProductLoader* loader);
    static void UnregisterProductLoader(const KUVViewer* viewer, VisNativeProductLoader* loader);
};

#endif
