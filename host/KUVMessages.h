#ifndef KUVMessages_h
#define KUVMessages_h

#include "KUVExport.h"
#include "KUVStringsMath.h"

/// Texts by catalog and key, in the user's language.
class KUV_EXPORT KUVMsgCatalog {
public:
    /// The text of `key` in `catalog`, with the `parameterCount` texts at `parameters` put in the
    /// place of "/P1", "/P2" and so on. `defaultText` when the catalog or the key is not found.
    /// Null `catalog`, `key` or `parameters` are legal. Throws `std::bad_alloc` when memory runs
    /// out.
    static KUVUnicodeString BuildMessage(const char* catalog, const char* key,
                                         const KUVUnicodeString* parameters, int parameterCount,
                                         const KUVUnicodeString& defaultText);
};

#endif
