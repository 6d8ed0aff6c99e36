#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "TreeFile.h"

namespace dataviz {

/// What the readers of the several formats share: nodes appended in the order of the file, with
/// what the file said about each, and the steps that make a `TreeFile` of them.
class TreeFileBuilder {
public:
    /// What a file said about a node. A key that comes twice is an error, so it is worth a bit
    /// each.
    enum Given : std::uint16_t {
        LABEL = 1U << 0U,
        ICON = 1U << 1U,
        VALUE = 1U << 2U,
        COLOR = 1U << 3U,
        MERGEABLE = 1U << 4U,
        MERGED = 1U << 5U,
        LEAF_OBJECT = 1U << 6U,
        CHILDREN = 1U << 7U,
        ID = 1U << 8U,
        PARENT = 1U << 9U,
        HAS_CHILD = 1U << 10U,
        OVERFLOWN = 1U << 11U
    };
    static constexpr std::uint32_t NO_NODE = TreeFileNode::NO_PARENT;

    /// A step that failed: the node at which, and why.
    struct Problem {
        std::uint32_t node = NO_NODE;
        std::string reason;
    };

    explicit TreeFileBuilder(TreeFile& file) : file_(file) {}

    /// Appends a node that begins at a byte offset of the file. NO_NODE when there are 2^32 - 1
    /// already.
    std::uint32_t AddNode(std::uint32_t parent, std::uint64_t offset);

    /// Notes that the file gave this about a node; false when it had given it before.
    bool Give(std::uint32_t node, Given what);
    bool IsGiven(std::uint32_t node, Given what) const { return (given_[node] & what) != 0; }

    void SetLabel(std::uint32_t node, std::string_view label);
    void SetIcon(std::uint32_t node, const std::string& icon);

    std::uint32_t Count() const { return static_cast<std::uint32_t>(file_.nodes.size()); }
    TreeFileNode& Node(std::uint32_t node) { return file_.nodes[node]; }
    std::string_view Label(std::uint32_t node) const { return file_.Label(file_.nodes[node]); }
    std::uint64_t Offset(std::uint32_t node) const { return offsets_[node]; }

    /// Brings nodes whose parents stand anywhere in the list into pre-order. Exactly one node must
    /// have no parent; a node that its root does not reach is part of a ring or below one: an
    /// error.
    std::optional<Problem> SortInPreOrder();

    /// Fills in the values that the file left out. The nodes are in pre-order.
    std::optional<Problem> FillInValues();

private:
    std::vector<std::uint32_t> PreOrder(std::uint32_t root) const;
    void Permute(const std::vector<std::uint32_t>& order);

    TreeFile& file_;
    std::vector<std::uint16_t> given_;
    std::vector<std::uint64_t> offsets_;
    std::unordered_map<std::string, std::uint32_t> iconNumbers_{{std::string(), 0}};
};

/// A set of node numbers found by a key that the caller keeps elsewhere: open addressing, no
/// storage of its own beyond four bytes a slot. The caller hashes and compares.
class NodeTable {
public:
    /// The node in the table for which `isEqual(node)` holds, or the one that is put there now.
    template <typename IsEqual>
    std::uint32_t FindOrInsert(std::size_t hash, std::uint32_t node, const IsEqual& isEqual)
    {
        std::size_t slot = hash & (slots_.size() - 1);
        while (slots_[slot] != TreeFileBuilder::NO_NODE) {
            if (isEqual(slots_[slot]))
                return slots_[slot];
            slot = (slot + 1) & (slots_.size() - 1);
        }
        slots_[slot] = node;
        ++count_;
        return node;
    }

    /// The node for which `isEqual(node)` holds, or NO_NODE.
    template <typename IsEqual>
    std::uint32_t Find(std::size_t hash, const IsEqual& isEqual) const
    {
        std::size_t slot = hash & (slots_.size() - 1);
        while (slots_[slot] != TreeFileBuilder::NO_NODE && !isEqual(slots_[slot]))
            slot = (slot + 1) & (slots_.size() - 1);
        return slots_[slot];
    }

    /// Makes room for one more node. `hashOf(node)` gives a node's hash again.
    template <typename HashOf>
    void Reserve(const HashOf& hashOf)
    {
        if (2 * (count_ + 1) <= slots_.size())
            return;
        std::vector<std::uint32_t> former(slots_.size() * 2, TreeFileBuilder::NO_NODE);
        former.swap(slots_);
        count_ = 0;
        for (const std::uint32_t node : former) {
            if (node != TreeFileBuilder::NO_NODE)
                FindOrInsert(hashOf(node), node, [](std::uint32_t) { return false; });
        }
    }

private:
    std::vector<std::uint32_t> slots_ = std::vector<std::uint32_t>(64, TreeFileBuilder::NO_NODE);
    std::size_t count_ = 0;
};

/// The readers of the two languages; `ReadTreeFile` chooses.
std::optional<TreeFileError> ReadJsonTree(std::string_view text, TreeFile& tree);
std::optional<TreeFileError> ReadCsvTree(std::string_view text, TreeFile& tree);

/// Whether the first line is a header that `ReadCsvTree` knows.
bool HasTreeCsvHeader(std::string_view text);

}  // namespace dataviz
