#ifndef KUVObjectModel_h
#define KUVObjectModel_h

// The host's object model: reference counting, run-time types, interfaces, module registration, the
// builder dictionary, assertions and the environment.
//
// Everything here is used on the interaction thread only, except `KUVMetaClass::RetrieveOrCreate`
// and the identity operations that call it: they take the creation lock and may run on any thread.

#include "KUVExport.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

class KUVBaseUnknown;
class KUVMetaClass;

/// Result of the scene services: 0 for success, negative values for failures.
using KUVResult = std::int32_t;

constexpr KUVResult KUV_OK = 0;
/// The one failure that the scene services report (bit pattern 0x80004005).
constexpr KUVResult KUV_FAIL = static_cast<KUVResult>(0x80004005U);

/// Identifies a class or an interface by a hash of its name, so that the same name gives the same
/// identifier in every library of a process. The default value identifies nothing.
struct KUVClassId {
    std::uint64_t value = 0;

    friend constexpr bool operator==(KUVClassId a, KUVClassId b) { return a.value == b.value; }
    friend constexpr bool operator!=(KUVClassId a, KUVClassId b) { return a.value != b.value; }
};

/// The identifier of the class or interface called `name` (64-bit FNV-1a). Null gives the
/// identifier of nothing.
constexpr KUVClassId KUVClassIdOf(const char* name)
{
    if (!name)
        return {};
    std::uint64_t hash = 14695981039346656037ULL;
    for (; *name; ++name)
        hash = (hash ^ static_cast<unsigned char>(*name)) * 1099511628211ULL;
    return {hash};
}

/// What a registered class is.
enum class KUVClassKind { Implementation, Interface, DataExtension };

/// Holds the object model's creation lock while it lives. The lock is recursive: creating a meta
/// class creates its base's on the way.
class KUV_EXPORT KUVMetaClassLock {
public:
    KUVMetaClassLock();
    ~KUVMetaClassLock();
    KUVMetaClassLock(const KUVMetaClassLock&) = delete;
    KUVMetaClassLock& operator=(const KUVMetaClassLock&) = delete;
};

/// The run-time description of a class. Meta classes are made once and live as long as the process;
/// pointers to them are never released.
class KUV_EXPORT KUVMetaClass {
public:
    /// The meta class called `name`, made now if it does not exist yet. All texts are copied.
    ///
    /// The first call decides: a later one with another base, framework or size gets the meta class
    /// that exists. A null or empty `name` gives null. `base` may be null (a root class).
    /// Thread-safe. Null also when memory runs out.
    static KUVMetaClass* RetrieveOrCreate(const char* name, const KUVMetaClass* base,
                                          const char* framework, std::size_t instanceSize,
                                          KUVClassKind kind = KUVClassKind::Implementation,
                                          const char* secondaryType = "KUVNull");

    /// The meta class called `name`, or null when none was made yet. Thread-safe.
    static KUVMetaClass* Find(const char* name);

    const char* GetName() const { return name_; }
    const KUVMetaClass* GetBase() const { return base_; }
    const char* GetFramework() const { return framework_; }
    std::size_t GetInstanceSize() const { return instanceSize_; }
    KUVClassKind GetKind() const { return kind_; }
    const char* GetSecondaryType() const { return secondaryType_; }
    KUVClassId GetClassId() const { return id_; }

    /// 1 when this class or one of its bases has the identifier `id`, else 0. Costs one comparison
    /// a base.
    unsigned char IsAKindOf(KUVClassId id) const;
    /// The same by class name. Null gives 0.
    unsigned char IsAKindOf(const char* className) const;

    KUVMetaClass(const KUVMetaClass&) = delete;
    KUVMetaClass& operator=(const KUVMetaClass&) = delete;

private:
    KUVMetaClass() = default;
    ~KUVMetaClass() = default;
    friend struct KUVMetaClassRegistry;

    const char* name_ = nullptr;
    const KUVMetaClass* base_ = nullptr;
    const char* framework_ = nullptr;
    const char* secondaryType_ = nullptr;
    std::size_t instanceSize_ = 0;
    KUVClassId id_;
    KUVClassKind kind_ = KUVClassKind::Implementation;
};

/// Declares the object-model identity of a class derived from `KUVBaseUnknown`. Put it first in the
/// class; what follows is private.
///
/// `ClassName` and `IsA` give the name, `ClassId` the identifier, `MetaObject` and `GetMetaObject`
/// the meta class (made on first use under the creation lock), `IsAKindOf` asks the meta class, and
/// `CreateItself` gives null: nothing is created by name.
#define KUV_DECLARE_CLASS                                                                          \
public:                                                                                            \
    static const char* ClassName();                                                                \
    static KUVClassId ClassId();                                                                   \
    static KUVMetaClass* MetaObject();                                                             \
    static KUVBaseUnknown* CreateItself();                                                         \
    KUVMetaClass* GetMetaObject() const override;                                                  \
    const char* IsA() const override;                                                              \
    unsigned char IsAKindOf(const char* className) const override;                                 \
                                                                                                   \
private:

/// Defines what `KUV_DECLARE_CLASS` declares, for `CLASS` derived from `BASE`, in `FRAMEWORK`.
/// `NAME` is the published class name.
#define KUV_IMPLEMENT_CLASS_NAMED(CLASS, NAME, BASE, FRAMEWORK)                                    \
    const char* CLASS::ClassName() { return NAME; }                                                \
    KUVClassId CLASS::ClassId() { return KUVClassIdOf(NAME); }                                     \
    KUVMetaClass* CLASS::MetaObject()                                                              \
    {                                                                                              \
        static std::atomic<KUVMetaClass*> meta{nullptr};                                           \
        KUVMetaClass* known = meta.load(std::memory_order_acquire);                                \
        if (!known) {                                                                              \
            const KUVMetaClassLock lock;                                                           \
            /* Without memory for the base nothing is made: it is tried again on the next use. */  \
            if (const KUVMetaClass* const base = BASE::MetaObject())                               \
                known = KUVMetaClass::RetrieveOrCreate(NAME, base, FRAMEWORK, sizeof(CLASS));      \
            meta.store(known, std::memory_order_release);                                          \
        }                                                                                          \
        return known;                                                                              \
    }                                                                                              \
    KUVBaseUnknown* CLASS::CreateItself() { return nullptr; }                                      \
    KUVMetaClass* CLASS::GetMetaObject() const { return MetaObject(); }                            \
    const char* CLASS::IsA() const { return NAME; }                                                \
    unsigned char CLASS::IsAKindOf(const char* className) const                                    \
    {                                                                                              \
        const KUVMetaClass* const meta = MetaObject();                                             \
        return meta ? meta->IsAKindOf(className) : static_cast<unsigned char>(0);                  \
    }

#define KUV_IMPLEMENT_CLASS(CLASS, BASE, FRAMEWORK)                                                \
    KUV_IMPLEMENT_CLASS_NAMED(CLASS, #CLASS, BASE, FRAMEWORK)

/// Base of all objects of the host: counts references, answers for its type and hands out
/// interfaces.
///
/// A new object has one reference, which belongs to whoever made it. `Release` destroys the object
/// with the last one. Objects may also live on the stack, as notifications do, as long as nobody
/// keeps them.
class KUV_EXPORT KUVBaseUnknown {
public:
    KUVBaseUnknown();
    /// A copy is an object of its own: it starts with one reference.
    KUVBaseUnknown(const KUVBaseUnknown& other);
    /// Leaves the reference count alone.
    KUVBaseUnknown& operator=(const KUVBaseUnknown& other);

    /// Asks for the interface `interfaceId`. On success stores a referenced interface pointer in
    /// `*result` and gives `KUV_OK`; else stores null and gives `KUV_FAIL`. A null `result` fails.
    /// Use `KUVInterfacePtr` rather than calling this.
    virtual KUVResult QueryInterface(KUVClassId interfaceId, void** result);
    /// Takes a reference and gives the new count.
    virtual unsigned int AddRef();
    /// Gives a reference back and gives the new count; at 0 the object is gone.
    virtual unsigned int Release();
    // The four scripting operations of the object model. Nothing here is scriptable: they fail.
    virtual KUVResult GetTypeInfoCount(unsigned int* count);
    virtual KUVResult GetTypeInfo(unsigned int index, void** typeInfo);
    virtual KUVResult GetIDsOfNames(const char** names, unsigned int count, int* ids);
    virtual KUVResult Invoke(int id, void** arguments, unsigned int count, void** result);
    /// Asks for an interface by its name; else as the operation by identifier.
    virtual KUVResult QueryInterface(const char* interfaceName, void** result);

    virtual ~KUVBaseUnknown();

    virtual KUVMetaClass* GetMetaObject() const;
    /// Name of the object's class. Never null.
    virtual const char* IsA() const;
    /// 1 when the object's class is `className` or derived from it. Null gives 0.
    virtual unsigned char IsAKindOf(const char* className) const;

    /// The object that does the work: this one, unless an adapter stands before it.
    virtual KUVBaseUnknown* GetImpl();
    /// 1 when the object stands for nothing. An object of the base never does.
    virtual unsigned char IsNull() const;
    /// 1 when `other` is the same object; null never is.
    virtual unsigned char IsEqual(const KUVBaseUnknown* other) const;
    /// Tells the object that it was put into or taken out of service. The base keeps no state.
    virtual KUVResult ChangeComponentState(int fromState, int toState);

    static const char* ClassName();
    static KUVClassId ClassId();
    static KUVMetaClass* MetaObject();
    static KUVBaseUnknown* CreateItself();

    /// For assertions and tests: the current number of references.
    unsigned int GetReferenceCount() const { return references_; }

private:
    std::uint32_t references_ = 1;
};

/// Base of the interfaces that a host object hands out through `QueryInterface`.
///
/// An interface named I has a static `InterfaceName()` that gives "I". Its references are those of
/// the object behind it.
class KUV_EXPORT KUVInterface {
public:
    virtual unsigned int AddInterfaceRef() = 0;
    virtual unsigned int ReleaseInterface() = 0;

protected:
    KUVInterface() = default;
    KUVInterface(const KUVInterface&) = default;
    KUVInterface& operator=(const KUVInterface&) = default;
    virtual ~KUVInterface();
};

/// Holds one interface of an object: null when the object does not implement it, released on
/// destruction.
template <class Interface>
class KUVInterfacePtr {
public:
    KUVInterfacePtr() = default;
    /// Asks `object`, which may be null, for the interface.
    explicit KUVInterfacePtr(KUVBaseUnknown* object)
    {
        void* found = nullptr;
        if (object &&
            object->QueryInterface(KUVClassIdOf(Interface::InterfaceName()), &found) == KUV_OK)
            pointer_ = static_cast<Interface*>(found);
    }
    KUVInterfacePtr(const KUVInterfacePtr&) = delete;
    KUVInterfacePtr& operator=(const KUVInterfacePtr&) = delete;
    ~KUVInterfacePtr()
    {
        if (pointer_)
            pointer_->ReleaseInterface();
    }

    Interface* Get() const { return pointer_; }
    Interface* operator->() const { return pointer_; }
    explicit operator bool() const { return pointer_ != nullptr; }

private:
    Interface* pointer_ = nullptr;
};

/// Registers a library with the object model when a static object of this class is constructed,
/// that is, when the library is loaded. The name is copied; registering a name again does nothing.
class KUV_EXPORT KUVModuleRegistration {
public:
    explicit KUVModuleRegistration(const char* moduleName);

    /// 1 when a module of that name was registered. Null gives 0.
    static unsigned char IsRegistered(const char* moduleName);
};

/// A function that makes an object for a dictionary entry; the caller owns the one reference. Null
/// when memory runs out.
using KUVBuilderFactory = KUVBaseUnknown* (*)();

/// The host's dictionary of builders, filled when libraries load.
class KUV_EXPORT KUVFillDictionary {
public:
    /// Registers `factory` under `name` (copied). A later registration of a name replaces the
    /// earlier. A null name or factory is ignored. The object itself only carries the call, so that
    /// a static object can register at load time.
    KUVFillDictionary(const char* name, KUVBuilderFactory factory) { Register(name, factory); }

    static void Register(const char* name, KUVBuilderFactory factory);
    /// The factory registered under `name`, or null.
    static KUVBuilderFactory Find(const char* name);
};

/// Reports a programming error and goes on. `message` and `source` may be null; the last argument
/// is reserved and is passed as null.
extern "C" KUV_EXPORT void CheckFailure__(const char* message, const char* source, int line,
                                          const void* reserved);

/// The value of an environment variable, or null when it is not set. The pointer is good until the
/// environment changes.
KUV_EXPORT const char* KUVGetEnv(const char* name);

#endif
