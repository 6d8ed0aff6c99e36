#ifndef KUVObjectInterfaces_h
#define KUVObjectInterfaces_h

// Interfaces that model objects may implement. Ask with `KUVInterfacePtr`.

#include "KUVExport.h"
#include "KUVObjectModel.h"
#include "KUVStringsMath.h"

/// An object that has a name for people.
class KUV_EXPORT KUVIAlias : public KUVInterface {
public:
    static const char* InterfaceName() { return "KUVIAlias"; }
    virtual KUVUnicodeString GetAlias() const = 0;

protected:
    ~KUVIAlias() override;
};

/// An object that has an icon.
class KUV_EXPORT KUVIIcon : public KUVInterface {
public:
    static const char* InterfaceName() { return "KUVIIcon"; }
    /// The icon's name without extension.
    virtual KUVUnicodeString GetIconName() const = 0;

protected:
    ~KUVIIcon() override;
};

#endif
