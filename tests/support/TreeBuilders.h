#ifndef support_TreeBuilders_h
#define support_TreeBuilders_h

// Trees for tests of the module.

#include "VisDataTree.h"

#include <cstdint>
#include <string>
#include <vector>

namespace support {

/// A tree written down: `{"Pump", {{"Rotor", {{"Blade"}}}, {"Housing"}}}`.
struct TreeSketch {
    std::string label;
    std::vector<TreeSketch> children = {};
};

/// The tree with one reference for the caller; children in the order given, no icons, flags and
/// data 0.
VisDataTree* MakeTree(const TreeSketch& sketch);

/// A tree of `nodeCount` nodes (at least 1) labelled "0", "1" and so on in the order in which they
/// were made: each hangs below one of the `reach` nodes made before it, so that a reach of 1 gives
/// a chain and a large one a bushy tree. The same arguments give the same tree everywhere.
VisDataTree* MakeRandomTree(std::uint64_t seed, int nodeCount, int reach);

/// A chain of `levels` nodes (at least 1), the root labelled "0".
VisDataTree* MakeChain(int levels);

/// A parent "0" with `children` children "1", "2" and so on.
VisDataTree* MakeStar(int children);

/// The first node of the tree, root first, with that label; null when there is none.
VisDataTree* FindNode(VisDataTree* root, const std::string& label);

/// The tree as text: "Pump(Rotor(Blade) Housing)".
std::string DescribeTree(const VisDataTree* root);

}  // namespace support

#endif
