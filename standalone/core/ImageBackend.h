#ifndef core_ImageBackend_h
#define core_ImageBackend_h

#include "KUVExport.h"

#include <memory>
#include <string>

class KUVPixelImage;

namespace core {

/// Reads image files for `KUVPixelImage::CreateFromFileEx`.
class KUV_EXPORT ImageBackend {
public:
    virtual ~ImageBackend() = default;

    /// The image in the file `path` (UTF-8) as `KUVPixelFormat_RGBA8`, with one reference for the
    /// caller; null when it cannot be read.
    virtual KUVPixelImage* Load(const std::string& path) = 0;
};

/// Sets the backend for the process; without one, or with null, no image file can be read.
KUV_EXPORT void SetImageBackend(std::shared_ptr<ImageBackend> backend);

}  // namespace core

#endif
