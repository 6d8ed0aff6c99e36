/// STEP files (AP203, AP209, AP214, AP242) with their assembly structure, names, identifiers and
/// colours.
#ifndef IMPORT_STEP_READER_H
#define IMPORT_STEP_READER_H

#include "import/ModelImport.h"

namespace kuvimport {

/// Fills `model` up to the tessellation. Answers the reason in one line when nothing could be read.
///
/// Files that the structure refers to are looked up from the file's own folder, but nothing keeps
/// such a reference inside it; those that are missing become a warning and a part without faces.
std::string ReadStep(const std::string& path, const ImportOptions& options, ImportMonitor* monitor,
                     ImportedModel& model);

}  // namespace kuvimport

#endif
