#ifndef VisTreeSpaceFillingLayoutCachedTextures_h
#define VisTreeSpaceFillingLayoutCachedTextures_h

#include "KUVStringsMath.h"
#include "VisExport.h"

#include <cstddef>
#include <unordered_map>

class KUVPixelImage;

/// The images that all views of one layout share: rounded plates by node size, icons by name.
///
/// The layout owns one and hands it to every view that it makes; views borrow the images (an image
/// rep takes a reference of its own). Nothing is ever evicted, so the number of plates grows with
/// the number of different node sizes that were drawn. One reference is held on every image and
/// given back by the destructor. Not copyable.
struct VIS_EXPORT VisTreeSpaceFillingLayoutCachedTextures {
    /// The two plates of one node size, each null until first needed or when too small to be made.
    struct Plates {
        KUVPixelImage* hover = nullptr;
        KUVPixelImage* selected = nullptr;
    };

    /// Sizes are the same when both floats compare equal: 0.0 and -0.0 share their plates.
    struct VIS_EXPORT SizeHash {
        std::size_t operator()(const KUVMathPoint2Df& size) const;
    };
    struct VIS_EXPORT SizeEqual {
        bool operator()(const KUVMathPoint2Df& a, const KUVMathPoint2Df& b) const;
    };
    struct VIS_EXPORT NameHash {
        std::size_t operator()(const KUVUnicodeString& name) const;
    };

    VisTreeSpaceFillingLayoutCachedTextures();
    ~VisTreeSpaceFillingLayoutCachedTextures();
    VisTreeSpaceFillingLayoutCachedTextures(const VisTreeSpaceFillingLayoutCachedTextures&) =
        delete;
    VisTreeSpaceFillingLayoutCachedTextures&
    operator=(const VisTreeSpaceFillingLayoutCachedTextures&) = delete;

    /// The entry of exactly this size; a new, empty one when there is none. Good as long as this
    /// object lives. Null when memory runs out.
    Plates* GetPlates(const KUVMathPoint2Df& size);

    /// The icon called `name`, read from its file on the first request. Borrowed. Null when the
    /// host does not know the name or cannot read the file; the next request then tries again.
    KUVPixelImage* GetIcon(const KUVUnicodeString& name);

    std::unordered_map<KUVMathPoint2Df, Plates, SizeHash, SizeEqual> platesBySize;
    std::unordered_map<KUVUnicodeString, KUVPixelImage*, NameHash> iconsByName;
};

#endif
