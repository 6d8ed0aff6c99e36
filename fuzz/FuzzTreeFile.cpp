// Feeds any bytes to the tree file reader. Whatever they are, it ends with a sound tree or with an
// error whose place lies in the text.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Require.h"
#include "TreeFile.h"

namespace {

using fuzz::Require;

void CheckTree(const dataviz::TreeFile& tree)
{
    Require(!tree.nodes.empty());
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        const dataviz::TreeFileNode& node = tree.nodes[i];
        Require((i == 0) == (node.parent == dataviz::TreeFileNode::NO_PARENT));
        Require(i == 0 || node.parent < i);
        Require(node.value >= 0 && node.color >= 0);
        Require(node.labelOffset + node.labelLength <= tree.text.size());
        Require(node.icon < tree.icons.size());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    dataviz::TreeFile tree;
    const auto error = dataviz::ReadTreeFile(text, tree);
    if (error) {
        const auto lines =
            static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n')) + 1;
        Require(error->line >= 1 && error->line <= lines);
        Require(error->column >= 1 && error->column <= size + 1);
        Require(!error->reason.empty() && error->reason.find('\n') == std::string::npos);
        Require(tree.nodes.empty());
    } else {
        CheckTree(tree);
    }
    return 0;
}
