#include "TreeFileBuilder.h"

#include <limits>

namespace dataviz {

std::uint32_t TreeFileBuilder::AddNode(std::uint32_t parent, std::uint64_t offset)
{
    if (file_.nodes.size() >= NO_NODE)
        return NO_NODE;
    TreeFileNode node;
    node.parent = parent;
    node.value = 0;
    node.color = 0;
    file_.nodes.push_back(node);
    given_.push_back(0);
    offsets_.push_back(offset);
    return Count() - 1;
}

bool TreeFileBuilder::Give(std::uint32_t node, Given what)
{
    if (IsGiven(node, what))
        return false;
    given_[node] = static_cast<std::uint16_t>(given_[node] | what);
    return true;
}

void TreeFileBuilder::SetLabel(std::uint32_t node, std::string_view label)
{
    TreeFileNode& target = file_.nodes[node];
    target.labelOffset = file_.text.size();
    target.labelLength = static_cast<std::uint32_t>(label.size());
    file_.text += label;
}

void TreeFileBuilder::SetIcon(std::uint32_t node, const std::string& icon)
{
    const auto [entry, isNew] =
        iconNumbers_.try_emplace(icon, static_cast<std::uint32_t>(file_.icons.size()));
    if (isNew)
        file_.icons.push_back(icon);
    file_.nodes[node].icon = entry->second;
}

std::vector<std::uint32_t> TreeFileBuilder::PreOrder(std::uint32_t root) const
{
    const std::vector<TreeFileNode>& nodes = file_.nodes;
    std::vector<std::uint32_t> firstChild(nodes.size(), NO_NODE);
    std::vector<std::uint32_t> nextSibling(nodes.size(), NO_NODE);
    for (std::uint32_t i = Count(); i-- > 0;) {
        const std::uint32_t parent = nodes[i].parent;
        if (parent != NO_NODE) {
            nextSibling[i] = firstChild[parent];
            firstChild[parent] = i;
        }
    }
    std::vector<std::uint32_t> order;
    order.reserve(nodes.size());
    for (std::uint32_t node = root; node != NO_NODE;) {
        order.push_back(node);
        if (firstChild[node] != NO_NODE) {
            node = firstChild[node];
            continue;
        }
        while (node != root && nextSibling[node] == NO_NODE)
            node = nodes[node].parent;
        node = node == root ? NO_NODE : nextSibling[node];
    }
    return order;
}

void TreeFileBuilder::Permute(const std::vector<std::uint32_t>& order)
{
    std::vector<std::uint32_t> numberOf(order.size());
    for (std::uint32_t i = 0; i < order.size(); ++i)
        numberOf[order[i]] = i;
    std::vector<TreeFileNode> nodes(order.size());
    std::vector<std::uint16_t> given(order.size());
    std::vector<std::uint64_t> offsets(order.size());
    for (std::uint32_t i = 0; i < order.size(); ++i) {
        nodes[i] = file_.nodes[order[i]];
        if (nodes[i].parent != NO_NODE)
            nodes[i].parent = numberOf[nodes[i].parent];
        given[i] = given_[order[i]];
        offsets[i] = offsets_[order[i]];
    }
    file_.nodes.swap(nodes);
    given_.swap(given);
    offsets_.swap(offsets);
}

std::optional<TreeFileBuilder::Problem> TreeFileBuilder::SortInPreOrder()
{
    std::uint32_t root = NO_NODE;
    for (std::uint32_t i = 0; i < Count(); ++i) {
        if (file_.nodes[i].parent != NO_NODE)
            continue;
        if (root != NO_NODE)
            return Problem{i, "a second node without parent; a tree has one root"};
        root = i;
    }
    if (root == NO_NODE)
        return Problem{0, "every node has a parent; a tree has one root without"};
    const std::vector<std::uint32_t> order = PreOrder(root);
    if (order.size() < file_.nodes.size()) {
        std::vector<bool> isReached(file_.nodes.size(), false);
        for (const std::uint32_t node : order)
            isReached[node] = true;
        std::uint32_t node = 0;
        while (isReached[node])
            ++node;
        // Up from any lost node the way ends in the ring; the first node met again is part of it.
        while (!isReached[node]) {
            isReached[node] = true;
            node = file_.nodes[node].parent;
        }
        return Problem{node, "the node is its own ancestor"};
    }
    Permute(order);
    return std::nullopt;
}

std::optional<TreeFileBuilder::Problem> TreeFileBuilder::FillInValues()
{
    constexpr std::int64_t MAX_VALUE = std::numeric_limits<std::int64_t>::max();
    // Backwards through the pre-order every node comes after all of its descendants; the nodes
    // without a value of their own collect their children's in place.
    for (std::uint32_t i = Count(); i-- > 0;) {
        TreeFileNode& node = file_.nodes[i];
        if (IsGiven(i, OVERFLOWN))
            return Problem{i, "the sum of the children's values is above 9223372036854775807"};
        if (!IsGiven(i, VALUE) && !IsGiven(i, HAS_CHILD))
            node.value = 1;
        if (!IsGiven(i, COLOR))
            node.color = node.value;
        if (node.parent == NO_NODE)
            continue;
        Give(node.parent, HAS_CHILD);
        TreeFileNode& parent = file_.nodes[node.parent];
        if (IsGiven(node.parent, VALUE))
            continue;
        if (parent.value > MAX_VALUE - node.value)
            Give(node.parent, OVERFLOWN);
        else
            parent.value += node.value;
    }
    return std::nullopt;
}

}  // namespace dataviz
