#include "VisDataTreeUtility.h"

#include "VisPathUtility.h"

#include "private/NodePath.h"
#include "private/PathReads.h"
#include "private/ProductLevels.h"
#include "private/Reference.h"
#include "private/TreeAccess.h"
#include "private/TreeWalk.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace {

constexpr unsigned char RESET_CACHES = 1;
constexpr const char* SOURCE = "VisualizationCommands/KUVDataViz.m/src/VisDataTreeUtility";

// ---- what a node is kept for

/// The class of the product structure that paths must lead through, or null for any.
const char* ProductClassOf(unsigned int productFilter)
{
    switch (productFilter) {
    case 1:
        return "OXMRootOccurrence";
    case 2:
        return "LightVisuProductLoaderHandler";
    default:
        return nullptr;
    }
}

/// What decides about single nodes.
class NodeFilter {
public:
    explicit NodeFilter(const VisDataTreeFilters& filters)
        : filters_(filters), productClass_(ProductClassOf(filters.productFilter))
    {
    }

    bool HasSphere() const { return filters_.radius > 0.0f; }

    /// Whether `path` was picked inside the sphere or on its edge.
    bool IsInSphere(const KUVPickPath& path) const
    {
        // Squares of floats do not fit into floats, but into doubles.
        const KUVMathPointf& point = path.GetGlobalIntersection();
        const double x = static_cast<double>(point.x) - static_cast<double>(filters_.centreX);
        const double y = static_cast<double>(point.y) - static_cast<double>(filters_.centreY);
        const double z = static_cast<double>(point.z) - static_cast<double>(filters_.centreZ);
        const double radius = static_cast<double>(filters_.radius);
        return x * x + y * y + z * z <= radius * radius;
    }

    bool IsFilteredOut(const VisDataTree& node)
    {
        KUVPickPath* const path = PickPathOf(node);
        if (!path)
            return false;
        if (node.IsLeafObject() && !IsKindShown(*path))
            return true;
        if (!productClass_ || Size(*path) == 0)
            return false;
        return !IsOfProduct(*path);
    }

private:
    bool IsKindShown(KUVPickPath& path) const
    {
        switch (VisPathUtility::GetPickPathType(&path)) {
        case VisPathUtility::VisPath_Edge:
            return filters_.showEdges != 0;
        case VisPathUtility::VisPath_Face:
            return filters_.showFaces != 0;
        case VisPathUtility::VisPath_Vertex:
            return filters_.showVertices != 0;
        default:
            return true;
        }
    }

    bool IsOfProduct(KUVPickPath& path)
    {
        // Each level of a deep tree has the whole path: where the level above found its product,
        // this one finds it too, as a rule.
        if (IsProductLevel(RepAt(path, productLevel_), productClass_))
            return true;
        const int level = FindProductLevel(path, productClass_);
        if (level < 0)
            return false;
        productLevel_ = level;
        return true;
    }

    VisDataTreeFilters filters_;
    const char* productClass_;
    /// Where the path looked at last led through the product structure.
    int productLevel_ = 0;
};

// ---- what is kept for its leaves

/// For every node of a subtree, numbered in pre-order, whether a leaf at or below it passes.
class LeafVerdicts {
public:
    /// Judges each leaf once by `passes(leaf)`. Throws `std::bad_alloc`.
    template <class Passes>
    void Judge(const VisDataTree& root, const Passes& passes)
    {
        Enter(root, passes);
        while (!open_.empty()) {
            Level& level = open_.back();
            const std::vector<VisDataTree*>& children = level.node->GetChildren();
            if (level.next == children.size())
                Leave();
            else if (const VisDataTree* const child = children[level.next++])
                Enter(*child, passes);
        }
    }

    bool Passes(std::size_t number) const { return verdicts_[number].passes; }
    /// The number behind the last one of the node's subtree.
    std::size_t End(std::size_t number) const { return verdicts_[number].end; }

private:
    struct Verdict {
        std::size_t end;
        bool passes;
    };
    /// An inner node on the way down, and the child to visit next.
    struct Level {
        const VisDataTree* node;
        std::size_t number;
        std::size_t next;
    };

    template <class Passes>
    void Enter(const VisDataTree& node, const Passes& passes)
    {
        const std::size_t number = verdicts_.size();
        if (!node.GetChildren().empty()) {
            verdicts_.push_back({number + 1, false});
            open_.push_back({&node, number, 0});
            return;
        }
        verdicts_.push_back({number + 1, passes(node)});
        TellParent(number);
    }

    void Leave()
    {
        const std::size_t number = open_.back().number;
        open_.pop_back();
        verdicts_[number].end = verdicts_.size();
        TellParent(number);
    }

    void TellParent(std::size_t number)
    {
        if (verdicts_[number].passes && !open_.empty())
            verdicts_[open_.back().number].passes = true;
    }

    std::vector<Verdict> verdicts_;
    std::vector<Level> open_;
};

// ---- releasing

/// Gives back what the nodes of a tree hold: their paths and, if asked, their caches.
class Holdings {
public:
    explicit Holdings(bool releasesCaches) : releasesCaches_(releasesCaches) {}

    void ReleaseAtAndBelow(VisDataTree& root) noexcept
    {
        try {
            VisPreOrderWalk<VisDataTree> walk(&root);
            while (VisDataTree* const node = walk.Next())
                ReleaseAt(*node);
        } catch (const std::bad_alloc&) {
            // Nodes that the walk came to hold nothing any more.
            ReleaseWithoutStack(root);
        }
    }

    /// Whether a cache was left to the layout that made it.
    bool HasLeftCaches() const { return hasLeftCaches_; }

private:
    void ReleaseAt(VisDataTree& node)
    {
        if (KUVPickPath* const path = PickPathOf(node)) {
            node.SetData(nullptr);
            path->Release();
        }
        VisDataTree::VisDataTreeCache* const cache = releasesCaches_ ? node.GetCache() : nullptr;
        if (!cache)
            return;
        if (VisTreeAccess::IsOwnedByLayout(*cache)) {
            hasLeftCaches_ = true;
            return;
        }
        const std::unique_ptr<VisDataTree::VisDataTreeCache> dying(cache);
        node.SetCache(nullptr);
    }

    /// The same walk without memory: looks for a node among its siblings when it comes back from
    /// below it. Children that do not know their parent are not descended into.
    void ReleaseWithoutStack(VisDataTree& root)
    {
        ReleaseAt(root);
        VisDataTree* level = &root;
        std::size_t next = 0;
        for (;;) {
            const std::vector<VisDataTree*>& children = level->GetChildren();
            if (next < children.size()) {
                VisDataTree* const child = children[next++];
                if (!child)
                    continue;
                ReleaseAt(*child);
                if (child->GetParent() == level && !child->GetChildren().empty()) {
                    level = child;
                    next = 0;
                }
                continue;
            }
            if (level == &root)
                return;
            const VisDataTree* const done = level;
            level = level->GetParent();
            const std::vector<VisDataTree*>& siblings = level->GetChildren();
            const auto place = std::find(siblings.begin(), siblings.end(), done);
            next = static_cast<std::size_t>(place - siblings.begin()) + 1;
        }
    }

    bool releasesCaches_;
    bool hasLeftCaches_ = false;
};

// ---- copying

bool AreAncestorsMerged(const VisDataTree& node)
{
    for (const VisDataTree* above = node.GetParent(); above; above = above->GetParent()) {
        if (!above->IsMerged())
            return false;
    }
    return true;
}

/// Makes one filtered copy.
class FilteredCopy {
public:
    FilteredCopy(const VisDataTreeFilters& filters, bool checksLeaves)
        : filter_(filters), checksLeaves_(checksLeaves)
    {
    }
    /// An unfinished copy goes with its paths.
    ~FilteredCopy()
    {
        if (root_)
            Holdings(/*releasesCaches=*/false).ReleaseAtAndBelow(*root_.Get());
    }
    FilteredCopy(const FilteredCopy&) = delete;
    FilteredCopy& operator=(const FilteredCopy&) = delete;

    /// The copy, or null when nothing of it is left. Throws `std::bad_alloc`.
    VisDataTree* Make(const VisDataTree& root)
    {
        if (HasVerdicts())
            verdicts_.Judge(root, [this](const VisDataTree& leaf) { return LeafPasses(leaf); });
        const VisDataTree* const top = FindTop(root);
        if (!top)
            return nullptr;
        AddCopy(*top, nullptr);
        while (!levels_.empty()) {
            Level& level = levels_.back();
            const std::vector<VisDataTree*>& children = level.source->GetChildren();
            if (level.next == children.size())
                levels_.pop_back();
            else if (const VisDataTree* const child = children[level.next++])
                Visit(*child, level.target, level.isDissolved);
        }
        return root_.Detach();
    }

private:
    /// A node of the given tree whose children are being copied, and what takes the copies.
    struct Level {
        const VisDataTree* source;
        std::size_t next;
        VisDataTree* target;
        /// The source has no copy of its own.
        bool isDissolved;
    };

    bool HasVerdicts() const { return checksLeaves_ || filter_.HasSphere(); }

    bool LeafPasses(const VisDataTree& leaf)
    {
        if (filter_.HasSphere()) {
            const KUVPickPath* const path = PickPathOf(leaf);
            if (!path || !filter_.IsInSphere(*path))
                return false;
        }
        return !checksLeaves_ || !filter_.IsFilteredOut(leaf);
    }

    /// Whether the node that comes next gets a copy.
    bool Keeps(const VisDataTree& node)
    {
        if (!PickPathOf(node) || (HasVerdicts() && !verdicts_.Passes(number_)))
            return false;
        const bool isChecked = checksLeaves_ && node.GetChildren().empty();
        return isChecked || !filter_.IsFilteredOut(node);
    }

    /// The node that becomes the root of the copy, below the merged levels with one child each;
    /// null when it, or one of these, is not kept.
    const VisDataTree* FindTop(const VisDataTree& root)
    {
        bool isMerged = AreAncestorsMerged(root);
        for (const VisDataTree* node = &root; node; ++number_) {
            if (!Keeps(*node))
                return nullptr;
            isMerged = isMerged && node->IsMerged();
            if (!isMerged || node->GetChildren().size() != 1)
                return node;
            node = node->GetChildren().front();
        }
        return nullptr;
    }

    void Visit(const VisDataTree& child, VisDataTree* target, bool isDissolved)
    {
        if (!isDissolved && child.IsMerged()) {
            levels_.push_back({&child, 0, target, true});
            ++number_;
        } else if (Keeps(child)) {
            AddCopy(child, target);
        } else if (HasVerdicts()) {
            number_ = verdicts_.End(number_);
        }
    }

    /// Copies the node that comes next; the root of the copy without `parent`.
    void AddCopy(const VisDataTree& source, VisDataTree* parent)
    {
        auto path = VisReference<KUVPickPath>::Adopt(new KUVPickPath(*PickPathOf(source)));
        auto copy = VisReference<VisDataTree>::Adopt(
            new VisDataTree(NodeDataOf(path.Get()), source.GetLabel(), source.GetIconName()));
        copy->SetIsMergeable(source.IsMergeable());
        copy->SetIsMerged(source.IsMerged());
        copy->SetIsLeafObject(source.IsLeafObject());
        levels_.push_back({&source, 0, copy.Get(), false});
        // A copy joins its parent before it has children of its own: that costs the same at every
        // depth.
        if (parent)
            parent->InsertChild(copy.Get(), RESET_CACHES);
        else
            root_ = VisReference<VisDataTree>::Retain(copy.Get());
        path.Detach();
        ++number_;
    }

    NodeFilter filter_;
    bool checksLeaves_;
    LeafVerdicts verdicts_;
    /// The number of the node that comes next.
    std::size_t number_ = 0;
    VisReference<VisDataTree> root_;
    std::vector<Level> levels_;
};

}  // namespace

// ---- filters

VisDataTree* VisDataTreeUtility::ApplyFilters(VisDataTree* root, const VisDataTreeFilters& filters,
                                              unsigned char checkLeaves)
{
    if (!root)
        return nullptr;
    try {
        return FilteredCopy(filters, checkLeaves != 0).Make(*root);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void VisDataTreeUtility::ReleaseFilteredTreeRoot(VisDataTree* root, unsigned char releaseCaches)
{
    if (!root)
        return;
    Holdings holdings(releaseCaches != 0);
    holdings.ReleaseAtAndBelow(*root);
    if (holdings.HasLeftCaches())
        CheckFailure__("A layout's node cache is not the caller's to release", SOURCE, __LINE__,
                       nullptr);
}
