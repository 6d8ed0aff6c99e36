// The object model of a small host: counted objects, meta classes, commands without listeners.

#include "KUVCommand.h"
#include "KUVEvents.h"
#include "KUVObjectModel.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <string>

// ---- meta classes

namespace {
std::recursive_mutex& CreationLock()
{
    static std::recursive_mutex lock;
    return lock;
}
}  // namespace

KUVMetaClassLock::KUVMetaClassLock() { CreationLock().lock(); }
KUVMetaClassLock::~KUVMetaClassLock() { CreationLock().unlock(); }

/// All meta classes, made once and kept. The texts that this host is given are literals.
struct KUVMetaClassRegistry {
    static std::map<std::string, KUVMetaClass*>& Known()
    {
        static auto* const known = new std::map<std::string, KUVMetaClass*>;
        return *known;
    }
    static KUVMetaClass* Make(const char* name, const KUVMetaClass* base, const char* framework,
                              std::size_t size)
    {
        KUVMetaClass* const made = new KUVMetaClass;
        made->name_ = name;
        made->base_ = base;
        made->framework_ = framework;
        made->instanceSize_ = size;
        made->id_ = KUVClassIdOf(name);
        return made;
    }
};

KUVMetaClass* KUVMetaClass::RetrieveOrCreate(const char* name, const KUVMetaClass* base,
                                             const char* framework, std::size_t instanceSize,
                                             KUVClassKind, const char*)
{
    const KUVMetaClassLock lock;
    KUVMetaClass*& entry = KUVMetaClassRegistry::Known()[name];
    if (!entry)
        entry = KUVMetaClassRegistry::Make(name, base, framework, instanceSize);
    return entry;
}

unsigned char KUVMetaClass::IsAKindOf(KUVClassId id) const
{
    for (const KUVMetaClass* meta = this; meta; meta = meta->base_)
        if (meta->id_ == id)
            return 1;
    return 0;
}

unsigned char KUVMetaClass::IsAKindOf(const char* className) const
{
    return className ? IsAKindOf(KUVClassIdOf(className)) : static_cast<unsigned char>(0);
}

// ---- the base of all objects

KUVBaseUnknown::KUVBaseUnknown() = default;
KUVBaseUnknown::KUVBaseUnknown(const KUVBaseUnknown&) {}
KUVBaseUnknown& KUVBaseUnknown::operator=(const KUVBaseUnknown&) { return *this; }
KUVBaseUnknown::~KUVBaseUnknown() = default;

unsigned int KUVBaseUnknown::AddRef() { return ++references_; }
unsigned int KUVBaseUnknown::Release()
{
    const unsigned int left = --references_;
    if (left == 0)
        delete this;
    return left;
}

KUVResult KUVBaseUnknown::QueryInterface(KUVClassId, void** result)
{
    if (result)
        *result = nullptr;
    return KUV_FAIL;
}
KUVResult KUVBaseUnknown::QueryInterface(const char* name, void** result)
{
    return QueryInterface(KUVClassIdOf(name), result);
}
KUVResult KUVBaseUnknown::GetTypeInfoCount(unsigned int*) { return KUV_FAIL; }
KUVResult KUVBaseUnknown::GetTypeInfo(unsigned int, void**) { return KUV_FAIL; }
KUVResult KUVBaseUnknown::GetIDsOfNames(const char**, unsigned int, int*) { return KUV_FAIL; }
KUVResult KUVBaseUnknown::Invoke(int, void**, unsigned int, void**) { return KUV_FAIL; }

const char* KUVBaseUnknown::ClassName() { return "KUVBaseUnknown"; }
KUVClassId KUVBaseUnknown::ClassId() { return KUVClassIdOf(ClassName()); }
KUVMetaClass* KUVBaseUnknown::MetaObject()
{
    return KUVMetaClass::RetrieveOrCreate(ClassName(), nullptr, "Consumer", sizeof(KUVBaseUnknown));
}
KUVBaseUnknown* KUVBaseUnknown::CreateItself() { return nullptr; }
KUVMetaClass* KUVBaseUnknown::GetMetaObject() const { return MetaObject(); }
const char* KUVBaseUnknown::IsA() const { return ClassName(); }
unsigned char KUVBaseUnknown::IsAKindOf(const char* className) const
{
    return GetMetaObject()->IsAKindOf(className);
}

KUVBaseUnknown* KUVBaseUnknown::GetImpl() { return this; }
unsigned char KUVBaseUnknown::IsNull() const { return 0; }
unsigned char KUVBaseUnknown::IsEqual(const KUVBaseUnknown* other) const { return other == this; }
KUVResult KUVBaseUnknown::ChangeComponentState(int, int) { return KUV_OK; }

KUVInterface::~KUVInterface() = default;

// ---- registration, assertions, environment

KUVModuleRegistration::KUVModuleRegistration(const char* moduleName)
{
    std::printf("loaded: %s\n", moduleName);
}

void KUVFillDictionary::Register(const char*, KUVBuilderFactory) {}

void CheckFailure__(const char* message, const char* source, int line, const void*)
{
    std::fprintf(stderr, "%s:%d: %s\n", source, line, message);
}

const char* KUVGetEnv(const char* name) { return std::getenv(name); }

// ---- commands and their listeners

KUV_IMPLEMENT_CLASS(KUVNotification, KUVBaseUnknown, "Consumer")
KUV_IMPLEMENT_CLASS(KUVEventSubscriber, KUVBaseUnknown, "Consumer")
KUV_IMPLEMENT_CLASS(KUVCommand, KUVEventSubscriber, "Consumer")

KUVNotification::KUVNotification() = default;
KUVNotification::~KUVNotification() = default;
KUVEventSubscriber::KUVEventSubscriber() = default;
KUVEventSubscriber::~KUVEventSubscriber() = default;
KUVCallbackManager* KUVEventSubscriber::GetCallbackManager() { return nullptr; }

/// Listeners by event name. This host never unsubscribes while a dispatch runs.
struct KUVCallbackManager::State {
    struct Listener {
        std::string name;
        KUVCallback callback;
    };
    std::deque<Listener> listeners;
};

KUVCallbackManager::KUVCallbackManager() : state_(std::make_shared<State>()) {}
KUVCallbackManager::~KUVCallbackManager() = default;

void KUVCallbackManager::DispatchCallbacks(const char* name, KUVNotification* notification,
                                           KUVBaseUnknown* sender)
{
    const std::shared_ptr<State> state = state_;
    for (const State::Listener& listener : state->listeners)
        if (listener.name == name)
            listener.callback(name, notification, sender);
}

KUVSubscription KUVCallbackManager::Subscribe(const char* name, const KUVBaseUnknown*,
                                              KUVCallback callback)
{
    state_->listeners.push_back({name, std::move(callback)});
    return static_cast<KUVSubscription>(state_->listeners.size());
}

void KUVCallbackManager::Unsubscribe(KUVSubscription subscription)
{
    if (subscription > 0 && subscription <= state_->listeners.size())
        state_->listeners[subscription - 1].name.clear();
}

KUVCommand::KUVCommand(KUVCommand* parent, const KUVString& name) : parent_(parent), name_(name)
{
    if (parent_)
        parent_->children_.push_back(this);
}

KUVCommand::~KUVCommand()
{
    if (parent_) {
        auto& siblings = parent_->children_;
        siblings.erase(std::remove(siblings.begin(), siblings.end(), this), siblings.end());
    }
    for (KUVCommand* const child : children_)
        child->parent_ = nullptr;
}

KUVCallbackManager* KUVCommand::GetCallbackManager()
{
    if (!callbackManager_)
        callbackManager_ = std::make_unique<KUVCallbackManager>();
    return callbackManager_.get();
}
