#include "private/GuardedNode.h"
#include "private/TreeAccess.h"

#include <limits>
#include <new>

// All guards of the process stand in two lists, which only the death of a watched node walks: few
// nodes are watched, and a layout has few guards.

namespace {

constexpr unsigned char ALWAYS_WATCHED = std::numeric_limits<unsigned char>::max();

void StartWatching(VisDataTree* node)
{
    unsigned char& watched = VisTreeAccess::Watched(*node);
    if (watched != ALWAYS_WATCHED)
        ++watched;
}

/// A node with more guards than can be counted stays watched for good: a needless look at the
/// lists when it dies.
void StopWatchingNode(VisDataTree* node)
{
    unsigned char& watched = VisTreeAccess::Watched(*node);
    if (watched != ALWAYS_WATCHED)
        --watched;
}

}  // namespace

// ---- one pointer

VisGuardedNode* VisGuardedNode::first = nullptr;

VisGuardedNode::VisGuardedNode(VisDataTree* node) : next_(first), link_(&first)
{
    if (next_)
        next_->link_ = &next_;
    first = this;
    Set(node);
}

VisGuardedNode::~VisGuardedNode()
{
    Set(nullptr);
    *link_ = next_;
    if (next_)
        next_->link_ = link_;
}

void VisGuardedNode::Set(VisDataTree* node)
{
    if (node == node_)
        return;
    if (node_)
        StopWatchingNode(node_);
    node_ = node;
    if (node_)
        StartWatching(node_);
}

void VisGuardedNode::NodeIsGone(VisDataTree* node)
{
    for (VisGuardedNode* guard = first; guard; guard = guard->next_) {
        if (guard->node_ == node)
            guard->node_ = nullptr;
    }
}

// ---- a stack of pointers

VisGuardedNodeStack* VisGuardedNodeStack::first = nullptr;

VisGuardedNodeStack::VisGuardedNodeStack() : next_(first), link_(&first)
{
    if (next_)
        next_->link_ = &next_;
    first = this;
}

VisGuardedNodeStack::~VisGuardedNodeStack()
{
    StopWatching();
    *link_ = next_;
    if (next_)
        next_->link_ = link_;
}

void VisGuardedNodeStack::StopWatching()
{
    for (const auto& [node, places] : places_)
        StopWatchingNode(node);
    places_.clear();
}

void VisGuardedNodeStack::Push(VisDataTree* node)
{
    entries_.push(node);
    if (!node)
        return;
    try {
        auto& places = places_[node];
        places.push_back(entries_.size() - 1);
        if (places.size() == 1)
            StartWatching(node);
    } catch (...) {
        entries_.pop();
        const auto found = places_.find(node);
        if (found != places_.end() && found->second.empty())
            places_.erase(found);
        throw;
    }
}

VisDataTree* VisGuardedNodeStack::Pop()
{
    if (entries_.empty())
        return nullptr;
    VisDataTree* const node = entries_.top();
    entries_.pop();
    if (!node)
        return nullptr;
    const auto found = places_.find(node);
    found->second.pop_back();
    if (found->second.empty()) {
        places_.erase(found);
        StopWatchingNode(node);
    }
    return node;
}

void VisGuardedNodeStack::Clear()
{
    StopWatching();
    try {
        // Containers that are emptied keep their memory; exchanged ones give it back.
        Entries noEntries;
        Places noPlaces;
        entries_.swap(noEntries);
        places_.swap(noPlaces);
    } catch (const std::bad_alloc&) {
        while (!entries_.empty())
            entries_.pop();
    }
}

void VisGuardedNodeStack::Replace(const Stack& entries)
{
    Entries copy;
    static_cast<Stack&>(copy) = entries;
    Places places;
    for (std::size_t place = 0; place < copy.size(); ++place) {
        if (VisDataTree* const node = copy.Container()[place])
            places[node].push_back(place);
    }
    for (const auto& [node, unused] : places)
        StartWatching(node);
    StopWatching();
    entries_.swap(copy);
    places_.swap(places);
}

void VisGuardedNodeStack::NodeIsGone(VisDataTree* node)
{
    for (VisGuardedNodeStack* stack = first; stack; stack = stack->next_)
        stack->Forget(node);
}

void VisGuardedNodeStack::Forget(VisDataTree* node)
{
    const auto found = places_.find(node);
    if (found == places_.end())
        return;
    for (const std::size_t place : found->second)
        entries_.Container()[place] = nullptr;
    places_.erase(found);
}
