#include "RootPath.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "VisDataTree.h"

namespace dataviz {

namespace {

std::string_view LabelOf(const VisDataTree& node)
{
    return {node.GetLabel().GetUtf8(), node.GetLabel().GetByteCount()};
}

/// A node and how much of the path leads to it.
struct Place {
    VisDataTree* node;
    std::size_t used;
};

class LabelWalk {
public:
    explicit LabelWalk(std::string_view path) : path_(path) {}

    /// Appends to `open` those of the nodes whose label comes next in the path behind `used`, the
    /// first of them last.
    template <typename Nodes>
    void Follow(const Nodes& nodes, std::size_t used, std::vector<Place>& open) const
    {
        for (auto at = nodes.rbegin(); at != nodes.rend(); ++at) {
            const std::string_view label = LabelOf(**at);
            const std::string_view rest = path_.substr(used);
            const bool isNext = rest.substr(0, label.size()) == label &&
                                (rest.size() == label.size() || rest[label.size()] == '/');
            if (isNext)
                open.push_back({*at, used + label.size()});
        }
    }

    VisDataTree* Search(std::vector<Place> open)
    {
        while (!open.empty()) {
            const Place place = open.back();
            open.pop_back();
            deepest_ = std::max(deepest_, place.used);
            if (place.used == path_.size())
                return place.node;
            Follow(place.node->GetChildren(), place.used + 1, open);
        }
        return nullptr;
    }

    std::string Problem() const
    {
        const std::size_t start = deepest_ == 0 ? 0 : deepest_ + 1;
        const std::string missing(path_.substr(start, path_.find('/', start) - start));
        return "there is no \"" + missing + "\"" +
               (deepest_ == 0 ? " at or below the root"
                              : " below \"" + std::string(path_.substr(0, deepest_)) + "\"");
    }

private:
    std::string_view path_;
    std::size_t deepest_ = 0;  // how much of the path could be followed
};

}  // namespace

RootSearch FindByLabels(VisDataTree& root, const std::string& labels)
{
    LabelWalk walk(labels);
    std::vector<Place> open;
    walk.Follow(root.GetChildren(), 0, open);
    // The root's own label comes first.
    walk.Follow(std::vector<VisDataTree*>{&root}, 0, open);
    RootSearch search;
    search.found = walk.Search(std::move(open));
    if (search.found == nullptr)
        search.problem = walk.Problem();
    return search;
}

}  // namespace dataviz
