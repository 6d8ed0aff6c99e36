/// Which structures are refused before anything expands them.
#ifndef IMPORT_STRUCTURE_LIMITS_H
#define IMPORT_STRUCTURE_LIMITS_H

#include "import/ModelImport.h"

#include <string>

namespace kuvimport {

/// Empty, or the reason for which the structure must not be expanded: it refers to itself, or has
/// more occurrences or levels than the options allow (the reason names the count). A root that the
/// reader made is no level.
std::string JudgeExpansion(const ImportedModel& model, const ImportOptions& options);

/// "5,000,000".
std::string Grouped(std::uint64_t number);

}  // namespace kuvimport

#endif
