#ifndef KUVWidgets_h
#define KUVWidgets_h

// The widget toolkit as modules see it: styled widgets whose properties a style's template can bind
// to.

#include "KUVCommand.h"
#include "KUVExport.h"
#include "KUVObjectModel.h"
#include "KUVStringsMath.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class KUVSYPIntrospectableAdapter;

/// Base of the styled widgets.
class KUV_EXPORT KUVVidCtl : public KUVEventSubscriber {
    KUV_DECLARE_CLASS
public:
    /// `parent` may be null and is not referenced.
    KUVVidCtl(KUVCommand* parent, const KUVString& name);
    ~KUVVidCtl() override;
    KUVVidCtl(const KUVVidCtl&) = delete;
    KUVVidCtl& operator=(const KUVVidCtl&) = delete;

    /// Called when the data that the template shows has changed: the toolkit shows the widget anew.
    virtual void TemplateDataUpdated();

    void SetTemplateName(const KUVString& name) { templateName_ = name; }
    /// The look: a template of a style file. The third value is reserved: empty.
    void SetCustomStyle(const KUVString& styleFile, const KUVString& templateName,
                        const KUVString& reserved);

    KUVCommand* GetParentCommand() const { return parent_; }
    const KUVString& GetWidgetName() const { return name_; }
    const KUVString& GetTemplateName() const { return templateName_; }
    const KUVString& GetStyleFile() const { return styleFile_; }
    const KUVString& GetStyleTemplateName() const { return styleTemplateName_; }
    /// How often `TemplateDataUpdated` of this class ran.
    unsigned int GetTemplateUpdateCount() const { return templateUpdates_; }

    /// Every widget answers for `KUVISYPIntrospectable`.
    KUVResult QueryInterface(KUVClassId interfaceId, void** result) override;
    using KUVBaseUnknown::QueryInterface;

private:
    class Introspectable;

    KUVCommand* parent_;
    KUVString name_;
    KUVString templateName_;
    KUVString styleFile_;
    KUVString styleTemplateName_;
    Introspectable* introspectable_ = nullptr;
    unsigned int templateUpdates_ = 0;
};

/// Base of the adapters that stand between an object and its introspection.
class KUV_EXPORT KUVSYPAdapter {
public:
    virtual ~KUVSYPAdapter();

protected:
    KUVSYPAdapter() = default;
};

/// An object whose properties can be read by name.
class KUV_EXPORT KUVISYPIntrospectable : public KUVInterface {
public:
    static const char* InterfaceName() { return "KUVISYPIntrospectable"; }
    /// The object's adapter, made now if it has none and `create` is 1; else null. Borrowed.
    virtual KUVSYPAdapter* GetAdapter(int create) = 0;

protected:
    ~KUVISYPIntrospectable() override;
};

/// Tells the listeners of an object's properties when one of them changes.
class KUV_EXPORT KUVSYPIntrospectableAdapter : public KUVSYPAdapter {
public:
    KUVSYPIntrospectableAdapter();
    ~KUVSYPIntrospectableAdapter() override;

    /// Tells every listener that the property `name` was modified, synchronously. `modified` is 1.
    virtual void DispatchModifyProperty(const char* name, int modified);
    /// `listener` is called with the property's name.
    KUVSubscription SubscribeModifyProperty(std::function<void(const char* name)> listener);
    void Unsubscribe(KUVSubscription subscription);

private:
    KUVCallbackManager listeners_;
};

/// One property of an introspected class.
struct KUVSYPProperty {
    const char* name = nullptr;
    const char* typeName = nullptr;
    unsigned char readable = 1;
    unsigned char bindable = 1;
    const char* category = "";
    const char* description = "";
    /// Gives a copy of the property of `object`.
    KUVUnicodeString (*getter)(const KUVBaseUnknown* object) = nullptr;
    /// Null when the property cannot be set through introspection.
    void (*setter)(KUVBaseUnknown* object, const KUVUnicodeString& value) = nullptr;
};

/// Builds the introspection of a class: its name, its properties and how to make an object.
class KUV_EXPORT KUVSYPMetaClassBuilder : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    KUVSYPMetaClassBuilder();
    ~KUVSYPMetaClassBuilder() override;

    /// Texts are copied; null counts as empty.
    void SetNames(const char* className, const char* displayName, const char* documentation);
    /// Declares `count` properties of type `KUVUnicodeString` (copied). A null pointer or a count
    /// below 1 declares none.
    void SetProperties_KUVUnicodeString(int count, const KUVSYPProperty* entries);
    /// Makes the introspection of the class known: objects come from `factory`, the rest from the
    /// class called `baseClassName`. Fails when the class has no name or is known already.
    KUVResult CreateMetaClass(KUVBuilderFactory factory, const char* baseClassName);

    const std::string& GetClassNameText() const { return className_; }
    const std::vector<KUVSYPProperty>& GetProperties() const { return properties_; }
    KUVBuilderFactory GetFactory() const { return factory_; }
    const std::string& GetBaseClassName() const { return baseClassName_; }

private:
    std::string className_;
    std::string displayName_;
    std::string documentation_;
    std::string baseClassName_;
    std::vector<KUVSYPProperty> properties_;
    /// The texts of `properties_`.
    std::vector<std::unique_ptr<std::string>> texts_;
    KUVBuilderFactory factory_ = nullptr;
};

#endif
