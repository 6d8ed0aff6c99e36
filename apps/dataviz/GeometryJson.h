#pragma once

#include <cstdio>

#include "Picture.h"

namespace dataviz {

/// Writes the exact geometry of a drawn picture as JSON. The stream's state tells whether
/// everything could be written.
void WriteGeometry(const Picture& picture, const RenderOptions& options, std::FILE* file);

}  // namespace dataviz
