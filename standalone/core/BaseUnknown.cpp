#include "core/ObjectObserver.h"

#include "KUVObjectInterfaces.h"
#include "KUVObjectModel.h"

namespace {

std::atomic<core::ObjectObserver*> observer{nullptr};

/// The count of an object under destruction. A destructor that dispatches, or hands its object to
/// somebody who takes a reference and gives it back, stays far from 0 and cannot destroy it twice.
constexpr std::uint32_t UNDER_DESTRUCTION = 0x40000000U;

void TellMade(const KUVBaseUnknown* object)
{
    if (core::ObjectObserver* const told = observer.load(std::memory_order_acquire))
        told->ObjectMade(object);
}

}  // namespace

void core::SetObjectObserver(ObjectObserver* newObserver)
{
    observer.store(newObserver, std::memory_order_release);
}

KUVBaseUnknown::KUVBaseUnknown() { TellMade(this); }

KUVBaseUnknown::KUVBaseUnknown(const KUVBaseUnknown& /*other*/) { TellMade(this); }

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned.
KUVBaseUnknown& KUVBaseUnknown::operator=(const KUVBaseUnknown& /*other*/) { return *this; }

KUVBaseUnknown::~KUVBaseUnknown()
{
    if (core::ObjectObserver* const told = observer.load(std::memory_order_acquire))
        told->ObjectDestroyed(this);
}

// ---- interfaces

KUVResult KUVBaseUnknown::QueryInterface(KUVClassId /*interfaceId*/, void** result)
{
    if (result)
        *result = nullptr;
    return KUV_FAIL;
}

KUVResult KUVBaseUnknown::QueryInterface(const char* interfaceName, void** result)
{
    return QueryInterface(KUVClassIdOf(interfaceName), result);
}

KUVInterface::~KUVInterface() = default;
KUVIAlias::~KUVIAlias() = default;
KUVIIcon::~KUVIIcon() = default;

// ---- references

unsigned int KUVBaseUnknown::AddRef() { return ++references_; }

unsigned int KUVBaseUnknown::Release()
{
    if (--references_ != 0)
        return references_;
    references_ = UNDER_DESTRUCTION;
    delete this;
    return 0;
}

// ---- scripting

KUVResult KUVBaseUnknown::GetTypeInfoCount(unsigned int* count)
{
    if (count)
        *count = 0;
    return KUV_FAIL;
}

KUVResult KUVBaseUnknown::GetTypeInfo(unsigned int /*index*/, void** typeInfo)
{
    if (typeInfo)
        *typeInfo = nullptr;
    return KUV_FAIL;
}

KUVResult KUVBaseUnknown::GetIDsOfNames(const char** /*names*/, unsigned int /*count*/,
                                        int* /*ids*/)
{
    return KUV_FAIL;
}

KUVResult KUVBaseUnknown::Invoke(int /*id*/, void** /*arguments*/, unsigned int /*count*/,
                                 void** result)
{
    if (result)
        *result = nullptr;
    return KUV_FAIL;
}

// ---- identity

const char* KUVBaseUnknown::ClassName() { return "KUVBaseUnknown"; }

KUVClassId KUVBaseUnknown::ClassId() { return KUVClassIdOf(ClassName()); }

KUVMetaClass* KUVBaseUnknown::MetaObject()
{
    static std::atomic<KUVMetaClass*> meta{nullptr};
    KUVMetaClass* known = meta.load(std::memory_order_acquire);
    if (!known) {
        known =
            KUVMetaClass::RetrieveOrCreate(ClassName(), nullptr, "KUVHost", sizeof(KUVBaseUnknown));
        meta.store(known, std::memory_order_release);
    }
    return known;
}

KUVBaseUnknown* KUVBaseUnknown::CreateItself() { return nullptr; }

KUVMetaClass* KUVBaseUnknown::GetMetaObject() const { return MetaObject(); }

const char* KUVBaseUnknown::IsA() const { return ClassName(); }

unsigned char KUVBaseUnknown::IsAKindOf(const char* className) const
{
    const KUVMetaClass* const meta = MetaObject();
    return meta ? meta->IsAKindOf(className) : static_cast<unsigned char>(0);
}

KUVBaseUnknown* KUVBaseUnknown::GetImpl() { return this; }

unsigned char KUVBaseUnknown::IsNull() const { return 0; }

unsigned char KUVBaseUnknown::IsEqual(const KUVBaseUnknown* other) const { return other == this; }

KUVResult KUVBaseUnknown::ChangeComponentState(int /*fromState*/, int /*toState*/)
{
    return KUV_OK;
}
