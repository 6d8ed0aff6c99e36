#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "Options.h"
#include "Picture.h"

#include "paint/PictureSink.h"

class VisTreeSpaceFillingView;

namespace dataviz {

/// The picture as one HTML file that needs nothing else: the SVG, the labels and values of the
/// nodes in it, and the page's own script and style.
///
/// The page forbids itself every request. Without script it shows the picture as the SVG file does.
/// Holds the nodes that are drawn and those above them; a node without a pixel of its own is not.
class HtmlPage {
public:
    /// Reads the picture, which is drawn and outlives the page. Its size is in pixels.
    HtmlPage(const Picture& picture, const RenderOptions& options, int pixelWidth, int pixelHeight);

    /// How the group of a node's view starts, by which the script finds it; empty for other bags.
    std::string GroupStart(const KUV2DBagRep& bag) const;

    /// The file, around the picture as an SVG element whose groups start as above.
    std::string Around(const std::string& svg) const;

private:
    /// A node of the tree that is in the file.
    struct Entry {
        static constexpr std::size_t NO_PARENT = static_cast<std::size_t>(-1);

        const VisDataTree* node = nullptr;
        std::size_t parent = NO_PARENT;  // the number of an entry
        std::size_t below = 0;           // nodes below it that are not in the file
        std::size_t level = 0;           // the tree's root has 0
        bool isDrawn = false;
    };

    /// In pre-order.
    std::vector<Entry> AllNodes() const;
    void Collect();
    bool IsDrawn(const VisDataTree& node) const;
    paint::PixelBox BoxOf(const VisTreeSpaceFillingView& view) const;
    std::string Title() const;
    std::string Facts() const;
    /// What the values count, in words.
    std::string Measure() const;
    std::string SizeMeaning() const;
    std::string CushionColors() const;
    std::string ColorMeaning() const;
    std::string Legend() const;
    std::string LevelColors() const;
    std::string Data() const;
    std::string DataRow(const Entry& entry) const;
    std::string ActiveLabels() const;
    std::string Value(const std::string& name, const std::string& svg) const;

    const Picture& picture_;
    const RenderOptions& options_;
    int pixelWidth_;
    int pixelHeight_;
    std::vector<Entry> entries_;
    std::unordered_map<const KUV2DBagRep*, std::size_t> entryOfBag_;
    std::size_t drawnCount_ = 0;
};

}  // namespace dataviz
