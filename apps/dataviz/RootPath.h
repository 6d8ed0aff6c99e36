#pragma once

#include <string>

class VisDataTree;

namespace dataviz {

struct RootSearch {
    VisDataTree* found = nullptr;
    std::string problem;  ///< which level is not there, when nothing was found
};

/// Finds a node by the labels on the way down to it, with "/" between them. The first label may be
/// the root's or that of one of its children. Labels may hold "/" themselves; where several nodes
/// fit, the first one in the order of the tree is taken.
RootSearch FindByLabels(VisDataTree& root, const std::string& labels);

}  // namespace dataviz
