/// Mesh files: the triangles are in the file, nothing is tessellated.
///
/// Both readers fill `model` completely but for the counts that the tessellation step makes of the
/// native shapes, and answer the reason in one line when nothing could be read. Nodes become
/// occurrences, each mesh one part, each primitive of a mesh (glTF) or material and group (other
/// formats) one face. Files that the model refers to are opened only below the model's own folder.
#ifndef IMPORT_MESH_READER_H
#define IMPORT_MESH_READER_H

#include "import/FileContent.h"
#include "import/ModelImport.h"

namespace kuvimport {

/// glTF 2.0, in either form. The node graph is judged before the toolkit sees the file.
std::string ReadGltf(const std::string& path, ModelFormat format, const ImportOptions& options,
                     ImportMonitor* monitor, ImportedModel& model);

/// OBJ, STL, PLY, 3MF, Collada, OFF.
std::string ReadMesh(const std::string& path, ModelFormat format, ImportMonitor* monitor,
                     ImportedModel& model);

}  // namespace kuvimport

#endif
