#ifndef module_TreeBuilding_h
#define module_TreeBuilding_h

#include "VisDataTree.h"
#include "private/Reference.h"

#include <cstddef>
#include <string>

namespace trees {

/// More levels than any recursion survives; fewer in the builds that cost many times as much.
#ifdef NDEBUG
constexpr unsigned int MANY_LEVELS = 1000000;
#else
constexpr unsigned int MANY_LEVELS = 50000;
#endif

using NodeRef = VisReference<VisDataTree>;

/// A node with one reference, held by the result.
inline NodeRef MakeNode(const char* label = "", const char* icon = "")
{
    return NodeRef::Adopt(new VisDataTree(nullptr, label, icon));
}

/// Appends a new node to `parent`, which holds the only reference on it.
inline VisDataTree* Append(VisDataTree* parent, const char* label = "", const char* icon = "")
{
    const NodeRef node = MakeNode(label, icon);
    parent->InsertChild(node.Get(), /*resetCaches=*/1);
    return node.Get();
}

/// A chain of `levels` nodes; `last` receives its childless end.
inline NodeRef MakeChain(std::size_t levels, VisDataTree** last = nullptr)
{
    NodeRef root = MakeNode("root");
    VisDataTree* node = root.Get();
    for (std::size_t level = 1; level < levels; ++level)
        node = Append(node);
    if (last)
        *last = node;
    return root;
}

/// A node that writes its label into a text when it dies.
class RecordingNode : public VisDataTree {
public:
    RecordingNode(const char* label, std::string& record)
        : VisDataTree(nullptr, label, ""), record_(record)
    {
    }
    ~RecordingNode() override { record_ += GetLabel().GetUtf8(); }

private:
    std::string& record_;
};

/// Appends a recording node to `parent`.
inline VisDataTree* AppendRecording(VisDataTree* parent, const char* label, std::string& record)
{
    const NodeRef node = NodeRef::Adopt(new RecordingNode(label, record));
    parent->InsertChild(node.Get(), /*resetCaches=*/1);
    return node.Get();
}

}  // namespace trees

#endif
