#include "core/Introspection.h"

#include "KUVWidgets.h"

#include <map>
#include <new>
#include <utility>

namespace {

std::string TextOrEmpty(const char* text) { return text ? text : ""; }

using ClassesByName = std::map<std::string, core::IntrospectedClass>;

/// Lives for the whole process: libraries that unload late may still ask.
ClassesByName& IntrospectedClasses()
{
    static auto* const classes = new ClassesByName;
    return *classes;
}

core::IntrospectedProperty Copy(const KUVSYPProperty& property)
{
    core::IntrospectedProperty copy;
    copy.name = TextOrEmpty(property.name);
    copy.typeName = TextOrEmpty(property.typeName);
    copy.category = TextOrEmpty(property.category);
    copy.description = TextOrEmpty(property.description);
    copy.readable = property.readable != 0;
    copy.bindable = property.bindable != 0;
    copy.getter = property.getter;
    copy.setter = property.setter;
    return copy;
}

/// Every listener of an adapter hears this one event; the property's name travels in it.
constexpr const char* MODIFIED_EVENT = "KUVSYPModifyProperty";

class ModifiedProperty : public KUVNotification {
public:
    explicit ModifiedProperty(const char* name) : name_(name) {}
    const char* GetName() const { return name_; }

private:
    const char* name_;
};

}  // namespace

KUV_IMPLEMENT_CLASS(KUVVidCtl, KUVEventSubscriber, "KUVHost")
KUV_IMPLEMENT_CLASS(KUVSYPMetaClassBuilder, KUVBaseUnknown, "KUVHost")

// ---- widget

/// The introspection of a widget. It is part of the widget, whose references it counts.
class KUVVidCtl::Introspectable : public KUVISYPIntrospectable {
public:
    explicit Introspectable(KUVVidCtl& owner) : owner_(owner) {}
    ~Introspectable() override = default;
    Introspectable(const Introspectable&) = delete;
    Introspectable& operator=(const Introspectable&) = delete;

    unsigned int AddInterfaceRef() override { return owner_.AddRef(); }
    unsigned int ReleaseInterface() override { return owner_.Release(); }

    KUVSYPAdapter* GetAdapter(int create) override
    {
        if (!adapter_ && create == 1) {
            try {
                adapter_ = std::make_unique<KUVSYPIntrospectableAdapter>();
            } catch (const std::bad_alloc&) {
                return nullptr;
            }
        }
        return adapter_.get();
    }

private:
    KUVVidCtl& owner_;
    std::unique_ptr<KUVSYPAdapter> adapter_;
};

KUVVidCtl::KUVVidCtl(KUVCommand* parent, const KUVString& name) : parent_(parent), name_(name) {}

KUVVidCtl::~KUVVidCtl() { delete introspectable_; }

void KUVVidCtl::TemplateDataUpdated() { ++templateUpdates_; }

void KUVVidCtl::SetCustomStyle(const KUVString& styleFile, const KUVString& templateName,
                               const KUVString& /*reserved*/)
{
    styleFile_ = styleFile;
    styleTemplateName_ = templateName;
}

KUVResult KUVVidCtl::QueryInterface(KUVClassId interfaceId, void** result)
{
    if (!result || interfaceId != KUVClassIdOf(KUVISYPIntrospectable::InterfaceName()))
        return KUVEventSubscriber::QueryInterface(interfaceId, result);
    *result = nullptr;
    if (!introspectable_)
        introspectable_ = new (std::nothrow) Introspectable(*this);
    if (!introspectable_)
        return KUV_FAIL;
    introspectable_->AddInterfaceRef();
    *result = static_cast<KUVISYPIntrospectable*>(introspectable_);
    return KUV_OK;
}

// ---- adapters

KUVSYPAdapter::~KUVSYPAdapter() = default;
KUVISYPIntrospectable::~KUVISYPIntrospectable() = default;

KUVSYPIntrospectableAdapter::KUVSYPIntrospectableAdapter() = default;
KUVSYPIntrospectableAdapter::~KUVSYPIntrospectableAdapter() = default;

void KUVSYPIntrospectableAdapter::DispatchModifyProperty(const char* name, int modified)
{
    if (!name || modified == 0)
        return;
    ModifiedProperty notification(name);
    listeners_.DispatchCallbacks(MODIFIED_EVENT, &notification, nullptr);
}

KUVSubscription
KUVSYPIntrospectableAdapter::SubscribeModifyProperty(std::function<void(const char* name)> listener)
{
    if (!listener)
        return 0;
    return listeners_.Subscribe(
        MODIFIED_EVENT, nullptr,
        [listener = std::move(listener)](const char* /*event*/, KUVNotification* notification,
                                         KUVBaseUnknown* /*sender*/) {
            listener(static_cast<ModifiedProperty*>(notification)->GetName());
        });
}

void KUVSYPIntrospectableAdapter::Unsubscribe(KUVSubscription subscription)
{
    listeners_.Unsubscribe(subscription);
}

// ---- builder

const core::IntrospectedClass* core::FindIntrospectedClass(const std::string& name)
{
    const auto found = IntrospectedClasses().find(name);
    return found == IntrospectedClasses().end() ? nullptr : &found->second;
}

const core::IntrospectedProperty*
core::IntrospectedClass::FindProperty(const std::string& propertyName) const
{
    // A base is made known before the classes derived from it or not at all, but a wrong name could
    // close a circle: no chain is longer than there are classes.
    std::size_t stepsLeft = IntrospectedClasses().size();
    for (const IntrospectedClass* type = this; type; type = FindIntrospectedClass(type->baseName)) {
        for (const IntrospectedProperty& property : type->properties) {
            if (property.name == propertyName)
                return &property;
        }
        if (stepsLeft-- == 0)
            break;
    }
    return nullptr;
}

KUVSYPMetaClassBuilder::KUVSYPMetaClassBuilder() = default;
KUVSYPMetaClassBuilder::~KUVSYPMetaClassBuilder() = default;

void KUVSYPMetaClassBuilder::SetNames(const char* className, const char* displayName,
                                      const char* documentation)
{
    className_ = TextOrEmpty(className);
    displayName_ = TextOrEmpty(displayName);
    documentation_ = TextOrEmpty(documentation);
}

void KUVSYPMetaClassBuilder::SetProperties_KUVUnicodeString(int count,
                                                            const KUVSYPProperty* entries)
{
    std::vector<KUVSYPProperty> properties;
    std::vector<std::unique_ptr<std::string>> texts;
    const auto keep = [&texts](const char*& text) {
        texts.push_back(std::make_unique<std::string>(TextOrEmpty(text)));
        text = texts.back()->c_str();
    };
    if (entries && count > 0)
        properties.assign(entries, entries + count);
    for (KUVSYPProperty& property : properties) {
        keep(property.name);
        keep(property.typeName);
        keep(property.category);
        keep(property.description);
    }
    properties_ = std::move(properties);
    texts_ = std::move(texts);
}

KUVResult KUVSYPMetaClassBuilder::CreateMetaClass(KUVBuilderFactory factory,
                                                  const char* baseClassName)
{
    if (className_.empty() || core::FindIntrospectedClass(className_))
        return KUV_FAIL;
    try {
        core::IntrospectedClass made;
        made.name = className_;
        made.displayName = displayName_;
        made.documentation = documentation_;
        made.baseName = TextOrEmpty(baseClassName);
        made.factory = factory;
        for (const KUVSYPProperty& property : properties_)
            made.properties.push_back(Copy(property));
        baseClassName_ = made.baseName;
        IntrospectedClasses().emplace(className_, std::move(made));
    } catch (const std::bad_alloc&) {
        return KUV_FAIL;
    }
    factory_ = factory;
    return KUV_OK;
}
