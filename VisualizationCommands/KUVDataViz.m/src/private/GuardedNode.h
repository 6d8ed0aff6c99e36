#ifndef GuardedNode_h
#define GuardedNode_h

// Pointers to nodes that hold no reference and become null when their node dies.

#include "VisDataTree.h"

#include <cstddef>
#include <stack>
#include <unordered_map>
#include <vector>

/// One guarded pointer. Never allocates; a node that no guard watches pays nothing.
class VisGuardedNode {
public:
    explicit VisGuardedNode(VisDataTree* node = nullptr);
    ~VisGuardedNode();
    VisGuardedNode(const VisGuardedNode&) = delete;
    VisGuardedNode& operator=(const VisGuardedNode&) = delete;

    VisDataTree* Get() const { return node_; }
    void Set(VisDataTree* node);

    /// Called by the destructor of a watched node: empties every guarded pointer to it.
    static void NodeIsGone(VisDataTree* node);

private:
    VisDataTree* node_ = nullptr;
    VisGuardedNode* next_;
    VisGuardedNode** link_;

    static VisGuardedNode* first;
};

/// A stack of guarded pointers. The entry of a node that died is null; entries keep their places.
class VisGuardedNodeStack {
public:
    using Stack = std::stack<VisDataTree*>;

    VisGuardedNodeStack();
    ~VisGuardedNodeStack();
    VisGuardedNodeStack(const VisGuardedNodeStack&) = delete;
    VisGuardedNodeStack& operator=(const VisGuardedNodeStack&) = delete;

    const Stack& Get() const { return entries_; }
    /// Throws `std::bad_alloc` with nothing changed.
    void Push(VisDataTree* node);
    /// Takes the top entry away; null when its node died or the stack is empty.
    VisDataTree* Pop();
    /// Empties the stack and gives its memory back.
    void Clear();
    /// Replaces the entries by a copy of `entries`, whose nodes are alive. Throws `std::bad_alloc`
    /// with nothing changed.
    void Replace(const Stack& entries);

    static void NodeIsGone(VisDataTree* node);

private:
    struct Entries : Stack {
        container_type& Container() { return c; }
    };
    // Where each node stands, lowest first: a node dies without a walk over the whole stack.
    using Places = std::unordered_map<VisDataTree*, std::vector<std::size_t>>;

    void StopWatching();
    void Forget(VisDataTree* node);

    Entries entries_;
    Places places_;
    VisGuardedNodeStack* next_;
    VisGuardedNodeStack** link_;

    static VisGuardedNodeStack* first;
};

#endif
