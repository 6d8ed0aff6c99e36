#include "KUVObjectModel.h"

#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>

/// All meta classes of the process, by name.
///
/// The registry is never destroyed: other libraries' static objects may ask for their class while
/// the process ends. It stays reachable, so that leak checkers know it.
struct KUVMetaClassRegistry {
    /// A meta class and the texts that it points to.
    struct Entry {
        std::string name;
        std::string framework;
        std::string secondaryType;
        KUVMetaClass meta;
    };

    std::recursive_mutex mutex;
    std::unordered_map<std::string_view, std::unique_ptr<Entry>> entries;

    static KUVMetaClassRegistry& Get()
    {
        static KUVMetaClassRegistry* const registry = new KUVMetaClassRegistry;
        return *registry;
    }

    KUVMetaClass* Find(std::string_view name) const
    {
        const auto found = entries.find(name);
        return found == entries.end() ? nullptr : &found->second->meta;
    }

    KUVMetaClass* Create(const char* name, const KUVMetaClass* base, const char* framework,
                         std::size_t instanceSize, KUVClassKind kind, const char* secondaryType)
    {
        std::unique_ptr<Entry> entry(new Entry);
        entry->name = name;
        entry->framework = framework ? framework : "";
        entry->secondaryType = secondaryType ? secondaryType : "";
        KUVMetaClass& meta = entry->meta;
        meta.name_ = entry->name.c_str();
        meta.base_ = base;
        meta.framework_ = entry->framework.c_str();
        meta.secondaryType_ = entry->secondaryType.c_str();
        meta.instanceSize_ = instanceSize;
        meta.id_ = KUVClassIdOf(name);
        meta.kind_ = kind;
        const std::string_view key = entry->name;
        entries.emplace(key, std::move(entry));
        return &meta;
    }
};

KUVMetaClassLock::KUVMetaClassLock() { KUVMetaClassRegistry::Get().mutex.lock(); }

KUVMetaClassLock::~KUVMetaClassLock() { KUVMetaClassRegistry::Get().mutex.unlock(); }

KUVMetaClass* KUVMetaClass::RetrieveOrCreate(const char* name, const KUVMetaClass* base,
                                             const char* framework, std::size_t instanceSize,
                                             KUVClassKind kind, const char* secondaryType)
{
    if (!name || !*name)
        return nullptr;
    try {
        const KUVMetaClassLock lock;
        KUVMetaClassRegistry& registry = KUVMetaClassRegistry::Get();
        if (KUVMetaClass* const known = registry.Find(name))
            return known;
        return registry.Create(name, base, framework, instanceSize, kind, secondaryType);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

KUVMetaClass* KUVMetaClass::Find(const char* name)
{
    if (!name)
        return nullptr;
    const KUVMetaClassLock lock;
    return KUVMetaClassRegistry::Get().Find(name);
}

unsigned char KUVMetaClass::IsAKindOf(KUVClassId id) const
{
    for (const KUVMetaClass* meta = this; meta; meta = meta->base_) {
        if (meta->id_ == id)
            return 1;
    }
    return 0;
}

unsigned char KUVMetaClass::IsAKindOf(const char* className) const
{
    return className ? IsAKindOf(KUVClassIdOf(className)) : static_cast<unsigned char>(0);
}
