#ifndef TreeWalk_h
#define TreeWalk_h

// Walks over trees with a stack of their own: scenes come with 100,000 levels when an importer goes
// wrong.

#include "VisDataTree.h"
#include "private/Prefetch.h"

#include <cstddef>
#include <vector>

/// Visits a subtree in pre-order: a node, then its children in order. Null entries are skipped.
///
/// Levels without further siblings take no room on the stack, so a chain costs nothing. The tree
/// may grow at the node visited last; it must not lose nodes that the walk still has to visit.
/// `Next` throws `std::bad_alloc` when the stack cannot grow.
template <class Node>
class VisPreOrderWalk {
public:
    explicit VisPreOrderWalk(Node* root) : current_(root) {}

    /// The next node, or null at the end.
    Node* Next()
    {
        if (!started_) {
            started_ = true;
            return current_;
        }
        if (current_ && descend_)
            Enter(current_);
        descend_ = true;
        return current_ = Advance();
    }

    /// Leaves out what is below the node given last.
    void SkipChildren() { descend_ = false; }

private:
    struct Level {
        Node* node;
        std::size_t next;
    };

    static bool HasMore(const Level& level)
    {
        return level.node && level.next < level.node->GetChildren().size();
    }

    void Enter(Node* node)
    {
        if (node->GetChildren().empty())
            return;
        if (HasMore(level_))
            outer_.push_back(level_);
        level_ = {node, 0};
    }

    Node* Advance()
    {
        for (;;) {
            while (HasMore(level_)) {
                const auto& children = level_.node->GetChildren();
                VisPrefetchChild(children, level_.next);
                if (Node* const child = children[level_.next++])
                    return child;
            }
            if (outer_.empty())
                return nullptr;
            level_ = outer_.back();
            outer_.pop_back();
        }
    }

    Node* current_;
    Level level_{nullptr, 0};
    std::vector<Level> outer_;
    bool started_ = false;
    bool descend_ = true;
};

#endif
