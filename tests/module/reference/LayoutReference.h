#ifndef module_reference_LayoutReference_h
#define module_reference_LayoutReference_h

// The layouts once more: what every layout keeps of a tree, and how it answers mouse and keys.
// Plain, recursive, slow, without memory of its own beyond what the rules name, and without a line
// shared with the module. What the module shows and says is compared with it.

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace layoutReference {

constexpr unsigned int NOT_COMPUTED = 0xFFFFFFFFU;

struct Point {
    float x = 0.0f;
    float y = 0.0f;
};

/// What a layout had a node's view build, and the states that survive a new build.
struct View {
    enum class Content { Nothing, Full, Picture, Contour };

    Content content = Content::Nothing;
    Point position;
    Point size;
    bool isSelected = false;
    bool isHighlighted = false;
    unsigned int highlightMode = 0;
    /// Of a picture: its bytes, row after row.
    std::vector<unsigned char> pixels;

    /// Takes everything out of the view.
    void Clean();
    /// Builds background, contour and label; nothing when there is no room or no number.
    void Init(Point newPosition, Point newSize, float scale);
    void InitWithTexture(Point newPosition, Point newSize, std::vector<unsigned char> picture);
    void InitWithoutTexture(Point newPosition, Point newSize);
};

struct Node;

/// What any of the layouts keeps for one node.
struct Cache {
    enum class Kind { TreeMap, Cushion, Icicle };

    Kind kind = Kind::TreeMap;
    Node* node = nullptr;
    bool isExpanded = true;
    bool isDiscarded = false;
    bool showsLabel = false;
    long long colorValue = 0;
    long long sizeValue = 0;
    unsigned char resizesWithValue = 0;
    unsigned char colorsWithValue = 0;
    Point position;
    Point size;
    Point minimum{-1.0f, -1.0f};
    std::unique_ptr<View> view;

    // Tree map and cushion: the orientation of the cut.
    unsigned int lastMode = 0;

    // Cushion.
    float surface[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    float height = 0.0f;
    float scaleFactor = 0.0f;
    long long subtreeValue = 0;
    bool isCushionComputed = false;

    // Icicle.
    Point icicleSize{-1.0f, -1.0f};
    Point graphicalSize{-1.0f, -1.0f};
    unsigned int span = 1;
    unsigned int cursor = NOT_COMPUTED;
    const Cache* lastVisitedChild = nullptr;
    unsigned int lastNodes = NOT_COMPUTED;
    bool hasInlineLabels = false;
    bool hasStretchedLeaves = false;

    /// Forgets what was computed for this node alone.
    void InternalReset();
    /// The same for this cache and those above, up to the first node without cache.
    void Reset();
    void SetSizeValue(long long value);
    void SetResizeWithValue(unsigned char flag);
    void SetColorWithValue(unsigned char flag);
    void DoNotUseValue();
};

struct Node {
    int number = 0;
    std::string label;
    std::string icon;
    bool isLeafObject = false;
    bool isMerged = false;
    Node* parent = nullptr;
    std::vector<Node*> children;
    Cache* cache = nullptr;
    unsigned int maxDepthMemo = NOT_COMPUTED;
    unsigned int leavesMemo = NOT_COMPUTED;

    unsigned int Depth() const { return parent ? parent->Depth() + 1 : 0; }
    unsigned int MaxDepth();
    unsigned int Leaves();
    Node* FirstLeaf() { return children.empty() ? this : children.front()->FirstLeaf(); }
    Node* LastLeaf() { return children.empty() ? this : children.back()->LastLeaf(); }
    Node* NextLeaf(const Node* stop);
    Node* PreviousLeaf(const Node* stop);
    /// Whether `node` is a strict ancestor.
    bool HasParent(const Node* node) const
    {
        return parent && (parent == node || parent->HasParent(node));
    }
    int IndexOf(const Node* child) const;

    /// Up to the root, past nodes without cache: the memos and what the caches have computed.
    void ResetUpwards();
    void InsertChild(Node* child, bool resetCaches);
    void RemoveParent();
};

/// A viewer as an event brings it along.
struct Viewer {
    float height = 0.0f;
    float scale = 1.0f;
    int mouseX = 0;
    int mouseY = 0;
};

struct DeviceEvent {
    enum class Kind { Press, Release, Motion, DoubleClick, None };

    Kind kind = Kind::None;
    bool isFromMouse = true;
    int button = 0;
    int buttons = 0;
    int modifier = 0;
    float x = 0.0f;
    float y = 0.0f;
    std::optional<Viewer> viewer;
};

/// What the layouts have in common. Does not own the nodes.
class Layout {
public:
    Layout(const Layout&) = delete;
    Layout& operator=(const Layout&) = delete;
    virtual ~Layout();

    virtual void SetTreeRoot(Node* root);
    virtual void Draw(Point origin, Point size, float scale);
    virtual void SetCurrentRoot(Node* node, bool pushOnStack);
    bool Unzoom();
    void SetCurrentSelection(Node* node);
    void SetCurrentHighlightedNode(Node* node);

    /// 0 when the event was used, 1 when not.
    unsigned int DeviceAction(const DeviceEvent& event);
    unsigned int KeyboardAction(unsigned int code, int state);
    Node* FindNodeAtPosition(float x, float y) const;

    /// The notifications since the last call, in order.
    std::string TakeNotifications();

    /// "3" for a node, "-" for none.
    static std::string Name(const Node* node);

    // ---- edits of caches that a host or a test makes

    void Unlink(Node& node) const;
    void Link(Node& node, Cache& cache) const;
    /// The node dies: what stood for it stands for nothing.
    void Forget(Node& node);

    Node* treeRoot = nullptr;
    Node* currentRoot = nullptr;
    Node* selection = nullptr;
    Node* leafSelection = nullptr;
    Node* highlighted = nullptr;
    std::vector<Node*> earlierRoots;
    bool canZoom = true;
    bool showsDiscarded = false;
    bool tracksLeafSelection = true;
    bool usesPageKeys = true;
    bool redrawsOnSetCurrentRoot = true;
    Point deviceOffset;
    float drawScale = 1.0f;

protected:
    explicit Layout(Cache::Kind kind) : kind_(kind) {}

    virtual std::unique_ptr<Cache> GenerateCache() const;
    virtual void OnMouseSelection(Node* node);
    virtual Node* GetNodeViaNavigation(unsigned int key);
    virtual void ApplyPageUpPageDown(unsigned int key);

    void Notify(const std::string& text) { notifications_ += text + "; "; }
    /// The cache's view, made if there is none.
    static View& ViewOf(Cache& cache);
    static void ResetView(Cache& cache);
    static void ResetViewsBelow(const Node& node);

private:
    void LinkCaches(Node& node);
    Node* Hit(const Node* node, float x, float y) const;
    unsigned int UsePress(const DeviceEvent& event, Node* hit);
    unsigned int UseMotion(const DeviceEvent& event, Node* hit);
    unsigned int UseRelease(const DeviceEvent& event, Node* hit);
    unsigned int UseDoubleClick(const DeviceEvent& event, Node* hit);
    Node* LeafBeside(bool forward) const;
    Node* ShownParent() const;
    Node* ShownChild() const;
    Node* ChildTowardsLeafSelection(const Node& node) const;

    Cache::Kind kind_;
    std::vector<std::unique_ptr<Cache>> caches_;
    std::string notifications_;
};

}  // namespace layoutReference

#endif
