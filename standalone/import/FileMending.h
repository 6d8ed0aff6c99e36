/// Files that are sound but for an oddity that the mesh toolkit does not take.
#ifndef IMPORT_FILE_MENDING_H
#define IMPORT_FILE_MENDING_H

#include "import/FileContent.h"

#include <string>

namespace kuvimport {

/// The bytes that the toolkit is to see instead of the file's; empty when the file can stay as it
/// is.
///
/// Text in UTF-16 becomes UTF-8. A GLB file whose JSON chunk does not end at a multiple of four
/// bytes is written with blanks up to there.
std::string MendedBytes(const std::string& path, ModelFormat format);

}  // namespace kuvimport

#endif
