/// What a mesh file states about itself, looked at before a toolkit reads it: toolkits take cut
/// files for whole ones and drop faces without a word.
#ifndef IMPORT_MESH_FILE_CHECK_H
#define IMPORT_MESH_FILE_CHECK_H

#include "import/FileContent.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kuvimport {

struct MeshFileState {
    /// Empty, or in one line why the file must not be read.
    std::string problem;
    /// Faces that the file holds; 0 when the format's faces are not looked at.
    std::uint64_t faces = 0;
    /// Those of them with fewer than three corners, or with a corner that is not there.
    std::uint64_t badFaces = 0;
};

/// Looks at the whole of a file's `bytes`: PLY, OBJ and STL in text form; other formats give an
/// empty state. One pass, no copy.
MeshFileState CheckMeshFile(std::string_view bytes, ModelFormat format);

}  // namespace kuvimport

#endif
