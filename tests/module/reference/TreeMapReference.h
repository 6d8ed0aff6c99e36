#ifndef module_reference_TreeMapReference_h
#define module_reference_TreeMapReference_h

// The tree map once more: plain, recursive, slow, without memory of its own beyond what the rules
// name, and without a line shared with the module. What the module draws is compared with it.

#include <memory>
#include <vector>

namespace mapReference {

struct Point {
    float x = 0.0f;
    float y = 0.0f;
};

struct Node {
    std::vector<Node*> children;
    Node* parent = nullptr;
    /// Whether the node is linked to its cache; the fields below are the cache's.
    bool hasCache = true;
    Point position;
    Point size;
    Point minimum{-1.0f, -1.0f};
    unsigned int lastMode = 1;
    bool expanded = true;
    bool discarded = false;
    bool hasView = false;
};

/// The layout and its tree; owns all nodes.
class TreeMap {
public:
    Node* AddNode();
    void SetRoot(Node* root) { currentRoot_ = root; }

    // ---- what edits do to the caches

    void InsertChild(Node& parent, Node& child, bool resetCaches);
    void Unlink(Node& node);
    void Link(Node& node);

    // ---- the layout

    void SetCurrentRoot(Node& node);
    void Draw(Point origin, Point size);
    void SliceAndDice(unsigned int mode, Point origin, Point size);
    void LayoutChildrenInGrid(Point origin, Point size);

    static Point ComputeMinimumExpandedSize(Node& node, unsigned int mode);
    static bool CanSliceAndDiceExpandNode(Node& node, unsigned int mode, Point size, float* sum);
    static bool CanLayoutChildrenInGrid(const Node& node, Point size);
    static void SetLastMode(Node& node, unsigned int mode);

private:
    static void ResetUpwards(Node* node);
    static void ResetView(Node& node);
    static void ResetGrandchildren(Node& child);
    static void LayOut(Node& node, unsigned int mode, Point position, Point size);

    std::vector<std::unique_ptr<Node>> nodes_;
    Node* currentRoot_ = nullptr;
};

}  // namespace mapReference

#endif
