#ifndef core_MeasuringFont_h
#define core_MeasuringFont_h

#include "core/FontBackend.h"

#include "KUV2D.h"

#include <map>
#include <memory>
#include <vector>

namespace core {

/// A font that measures fast: it remembers the advances of the characters, the kerning of the pairs
/// and, for each size, the widths of all beginnings of the text measured last. A text that begins
/// as the last one did costs its new characters and one comparison of bytes.
///
/// For one thread at a time.
class KUV_EXPORT MeasuringFont : public KUVCharacterFont {
    KUV_DECLARE_CLASS
public:
    /// Without a backend every text measures 0.
    explicit MeasuringFont(std::shared_ptr<FontBackend> backend);
    ~MeasuringFont() override;
    MeasuringFont(const MeasuringFont&) = delete;
    MeasuringFont& operator=(const MeasuringFont&) = delete;

    /// Equal sizes have equal indices. Gives -1 for a size that is not a number above 0, or when
    /// memory runs out.
    int GetFontIndex(float size) override;
    /// An index that `GetFontIndex` did not give measures 0. A width that is no number counts as 0.
    void GetStringSize(const KUVUnicodeString& text, int* width, int* height, int* descent,
                       int fontIndex) override;

    /// The width of `text` before it is rounded up: what painters place texts with.
    double MeasureWidth(const KUVUnicodeString& text, float size);

    const std::shared_ptr<FontBackend>& GetBackend() const { return backend_; }

private:
    class Size;

    double MeasureAt(Size& size, const KUVUnicodeString& text);
    void LimitTables(const Size& used);

    std::shared_ptr<FontBackend> backend_;
    std::vector<std::unique_ptr<Size>> sizes_;
    std::map<float, int> indices_;
    /// Counts the measurements, to find the size that was not measured for the longest time.
    unsigned long long clock_ = 0;
};

}  // namespace core

#endif
