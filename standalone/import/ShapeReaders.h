/// IGES, BREP and VRML: the CAD toolkit's formats with little or no product structure.
///
/// Each fills `model` up to the tessellation and answers the reason in one line when nothing could
/// be read.
#ifndef IMPORT_SHAPE_READERS_H
#define IMPORT_SHAPE_READERS_H

#include "import/ModelImport.h"

namespace kuvimport {

std::string ReadIges(const std::string& path, ImportMonitor* monitor, ImportedModel& model);

/// The text form and the binary one. The shape is one part, named after the file; triangulations in
/// the file are kept.
std::string ReadBrep(const std::string& path, ImportMonitor* monitor, ImportedModel& model);

/// VRML 2.0 (VRML97). Groups become assemblies, shape nodes parts; a node's DEF name is its name.
std::string ReadVrml(const std::string& path, ImportMonitor* monitor, ImportedModel& model);

}  // namespace kuvimport

#endif
