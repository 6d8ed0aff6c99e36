#ifndef core_ResourcePaths_h
#define core_ResourcePaths_h

#include "KUVExport.h"

#include <string>
#include <vector>

namespace core {

/// The folders that hold the resource folders "icons", "styles" and "catalogs", in the order in
/// which they are searched: those that the environment variable `KUV_RESOURCES` names (separated by
/// colons), the one that was installed with this library, and the one in the project's sources.
/// They need not exist.
KUV_EXPORT std::vector<std::string> ResourceFolders();

/// The file `fileName` in the resource folder `kind` of the first folder that has it; empty when
/// none does. A name that would lead out of the folder (empty, "." or "..", or with a slash or a
/// zero byte in it) finds nothing: names come from files that users were sent.
KUV_EXPORT std::string FindResource(const std::string& kind, const std::string& fileName);

}  // namespace core

#endif
