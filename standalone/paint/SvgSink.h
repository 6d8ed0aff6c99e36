#ifndef paint_SvgSink_h
#define paint_SvgSink_h

#include "paint/LabelFonts.h"
#include "paint/Picture.h"
#include "paint/PictureSink.h"

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>

namespace paint {

/// What has to be known of a picture before its SVG is written: the sizes of its texts, and its
/// images as PNG files in base64, each different content once.
///
/// Runs over the picture before the SVG is written: what is shown more than once is then written
/// once and referred to.
class SvgContents : public PictureSink {
public:
    struct Entry {
        std::string base64;
        int uses = 0;
        /// Number of the definition, counted from 1 in the order of writing; 0 before.
        int id = 0;
    };

    void FillBox(const PixelBox&, KUVColor) override {}
    void OutlineBox(const PixelBox&, int, KUVColor) override {}
    void Polygon(const std::vector<PixelPoint>&, bool, KUVColor) override {}
    void Image(const PlacedImage& image) override;
    void Text(const PlacedText& text) override { textSizes_.insert(text.size); }

    const std::set<float>& GetTextSizes() const { return textSizes_; }

    /// The entry of an image that was seen before, as large as it is shown.
    Entry& Find(const PlacedImage& image);

private:
    using ImageKey = std::tuple<const KUVPixelImage*, bool, int, int>;
    static ImageKey KeyOf(const PlacedImage& image);

    /// By content and shown size; entries of `byImage_` point into it.
    std::unordered_map<std::string, Entry> byContent_;
    std::map<ImageKey, Entry*> byImage_;
    std::set<float> textSizes_;
};

/// Writes a picture as SVG.
///
/// Every bag is a `<g>` with its rectangles, images and texts in painting order. A text is a
/// `<text>` at the start of its baseline; `textLength` holds the width with which it was measured,
/// so that it keeps to its box in readers that have another font. The root element's `data-lines`
/// lists the lines of text in the picture, separated by semicolons: the `font-size` and the heights
/// above and below the baseline, in pixels.
class SvgSink : public PictureSink {
public:
    /// A file of its own, or an element within an HTML page, whose groups may have starts.
    enum class Form { File, Element };

    /// Appends to `file`. All arguments must outlive the sink.
    SvgSink(std::string& file, const PictureOptions& options, LabelFonts& fonts,
            SvgContents& contents, Form form = Form::File);

    /// Ends the file.
    void Finish();

    void BeginBag(const KUV2DBagRep& bag) override;
    void EndBag() override;
    void FillBox(const PixelBox& box, KUVColor color) override;
    void OutlineBox(const PixelBox& box, int width, KUVColor color) override;
    void Polygon(const std::vector<PixelPoint>& points, bool filled, KUVColor color) override;
    void Image(const PlacedImage& image) override;
    void Text(const PlacedText& text) override;

private:
    std::string Lines();
    void OpenGroups();
    void WriteNumber(const char* name, double number);
    void WriteBox(const PixelBox& box);
    void WriteColor(const char* name, KUVColor color);
    void WriteImage(const SvgContents::Entry& entry, const PlacedImage& image);
    int ClipId(const PixelBox& clip);

    std::string& file_;
    LabelFonts& fonts_;
    SvgContents& contents_;
    Form form_;
    const PictureOptions& options_;
    int openGroups_ = 0;
    std::vector<std::string> starts_;  // of the bags that are begun, the outermost first
    int lastImageId_ = 0;
    int lastClipId_ = 0;
    PixelBox lastClip_;
};

}  // namespace paint

#endif
