#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dataviz {

/// One node of a tree file, 40 bytes, so that ten million of them stay below half a gigabyte.
struct TreeFileNode {
    static constexpr std::uint32_t NO_PARENT = 0xFFFFFFFFU;

    std::int64_t value = 1;         ///< size value; defaults are already filled in
    std::int64_t color = 1;         ///< colour value; defaults are already filled in
    std::uint64_t labelOffset = 0;  ///< where the label starts in the text pool
    std::uint32_t labelLength = 0;  ///< in bytes
    std::uint32_t parent = NO_PARENT;
    std::uint32_t icon = 0;  ///< index into the icon names; 0 is the empty name
    bool mergeable = false;
    bool merged = false;
    bool leafObject = false;
};

/// A tree as it was written in a file: flat arrays, nodes in pre-order, so a parent always stands
/// before its children and siblings keep the order of the file.
struct TreeFile {
    std::vector<TreeFileNode> nodes;
    std::string text;                    ///< all labels, end to end, UTF-8; may hold any character
    std::vector<std::string> icons{{}};  ///< distinct icon names; the first one is empty

    std::string_view Label(const TreeFileNode& node) const
    {
        return std::string_view(text).substr(node.labelOffset, node.labelLength);
    }
    const std::string& Icon(const TreeFileNode& node) const { return icons[node.icon]; }
};

/// Why a file is no tree, and where. Lines and columns count from 1, columns in characters.
struct TreeFileError {
    std::uint64_t line = 1;
    std::uint64_t column = 1;
    std::string reason;
    /// The text is a glTF document, an object with an "asset" instead of a node's keys: a model.
    bool isGltf = false;

    /// "line 3, column 17: reason"
    std::string Text() const;
};

/// Whether the beginning of a file (64 KiB are plenty) can only be that of a tree file: JSON, or
/// CSV with one of the headers that `ReadTreeFile` knows. A glTF document looks like one, too.
bool LooksLikeTreeFile(std::string_view beginning);

/// Reads a whole tree file: one JSON object a node, a JSON array of id/parent records, or CSV.
///
/// Takes time and memory in proportion to the text, at any depth of nesting. Running out of memory
/// is an error like the others. After an error `tree` is empty.
std::optional<TreeFileError> ReadTreeFile(std::string_view text, TreeFile& tree);

}  // namespace dataviz
