#include "KUVProduct.h"

#include <algorithm>
#include <unordered_map>

KUV_IMPLEMENT_CLASS(KUVIAdpPLMIdentificator, KUVBaseUnknown, "KUVHost")

KUVIPLMComponent::~KUVIPLMComponent() = default;
KUVIPLMNavOccurrence::~KUVIPLMNavOccurrence() = default;

// ---- identifiers

KUVIAdpPLMIdentificator::KUVIAdpPLMIdentificator(const KUVUnicodeString& physicalId,
                                                 unsigned char validForRemoteUsage)
    : physicalId_(physicalId), validForRemoteUsage_(validForRemoteUsage != 0)
{
}

KUVIAdpPLMIdentificator::~KUVIAdpPLMIdentificator() = default;

KUVPLMID::KUVPLMID() = default;
KUVPLMID::~KUVPLMID() = default;

KUVResult KUVPLMID::GetPLMIDFromAdpIdentificator(const KUVIAdpPLMIdentificator* identificator,
                                                 KUVPLMID& id)
{
    if (!identificator)
        return KUV_FAIL;
    id.physicalId_ = identificator->GetPhysicalIdText();
    id.validForRemoteUsage_ = identificator->IsValidForRemoteUsage();
    id.filled_ = 1;
    return KUV_OK;
}

KUVResult KUVPLMID::IsValidForRemoteUsage(unsigned char& valid) const
{
    if (!filled_)
        return KUV_FAIL;
    valid = validForRemoteUsage_;
    return KUV_OK;
}

KUVPLMID_Any KUVPLMID::GetPhysicalId() const { return KUVPLMID_Any(physicalId_); }

// ---- product loaders

namespace {

using Loaders = std::vector<VisNativeProductLoader*>;

std::unordered_map<const KUVViewer*, Loaders>& LoadersOfViewers()
{
    static std::unordered_map<const KUVViewer*, Loaders> loaders;
    return loaders;
}

std::unordered_map<const KUVRep*, KUVUnicodeString>& ProductsOfReps()
{
    static std::unordered_map<const KUVRep*, KUVUnicodeString> products;
    return products;
}

}  // namespace

VisNativeProductLoader::VisNativeProductLoader() = default;
VisNativeProductLoader::~VisNativeProductLoader() = default;

KUVResult VisNativeProductLoader::GetProductID(const KUVRep* rep, KUVUnicodeString& id)
{
    const auto place = ProductsOfReps().find(rep);
    if (place == ProductsOfReps().end())
        return KUV_FAIL;
    id = place->second;
    return KUV_OK;
}

void VisNativeProductLoader::SetProductID(const KUVRep* rep, const KUVUnicodeString& id)
{
    if (rep)
        ProductsOfReps()[rep] = id;
}

void VisNativeProductLoader::ForgetProductID(const KUVRep* rep) { ProductsOfReps().erase(rep); }

KUVSpan<VisNativeProductLoader>
VisProductLoaderServices::GetRegisteredProductLoader(const KUVViewer* viewer)
{
    const auto place = LoadersOfViewers().find(viewer);
    if (!viewer || place == LoadersOfViewers().end())
        return {};
    return {place->second.data(), place->second.size()};
}

void VisProductLoaderServices::RegisterProductLoader(const KUVViewer* viewer,
                                                     VisNativeProductLoader* loader)
{
    if (!viewer || !loader)
        return;
    Loaders& loaders = LoadersOfViewers()[viewer];
    if (std::find(loaders.begin(), loaders.end(), loader) == loaders.end())
        loaders.push_back(loader);
}

void VisProductLoaderServices::UnregisterProductLoader(const KUVViewer* viewer,
                                                       VisNativeProductLoader* loader)
{
    const auto place = LoadersOfViewers().find(viewer);
    if (place == LoadersOfViewers().end())
        return;
    Loaders& loaders = place->second;
    loaders.erase(std::remove(loaders.begin(), loaders.end(), loader), loaders.end());
    if (loaders.empty())
        LoadersOfViewers().erase(place);
}
