#ifndef core_Introspection_h
#define core_Introspection_h

#include "KUVWidgets.h"

#include <string>
#include <vector>

namespace core {

/// A property of an introspected class.
struct IntrospectedProperty {
    std::string name;
    std::string typeName;
    std::string category;
    std::string description;
    bool readable = true;
    bool bindable = true;
    KUVUnicodeString (*getter)(const KUVBaseUnknown* object) = nullptr;
    void (*setter)(KUVBaseUnknown* object, const KUVUnicodeString& value) = nullptr;
};

/// What `KUVSYPMetaClassBuilder::CreateMetaClass` made known of a class.
struct IntrospectedClass {
    std::string name;
    std::string displayName;
    std::string documentation;
    std::string baseName;
    std::vector<IntrospectedProperty> properties;
    KUVBuilderFactory factory = nullptr;

    /// The property called `propertyName`, of this class or the nearest base that has one, or null.
    KUV_EXPORT const IntrospectedProperty* FindProperty(const std::string& propertyName) const;
};

/// The introspection of the class called `name`, or null. Lives as long as the process.
KUV_EXPORT const IntrospectedClass* FindIntrospectedClass(const std::string& name);

}  // namespace core

#endif
