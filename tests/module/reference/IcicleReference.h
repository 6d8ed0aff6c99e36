#ifndef module_reference_IcicleReference_h
#define module_reference_IcicleReference_h

// The icicle plot once more.

#include "module/reference/LayoutReference.h"

namespace layoutReference {

class Icicle : public Layout {
public:
    Icicle();

    void Draw(Point origin, Point size, float scale) override;
    void SetCurrentRoot(Node* node, bool pushOnStack) override;
    /// What the size of a subtree is computed for.
    struct Range {
        unsigned int lastNodes = NOT_COMPUTED;
        bool isRelative = false;
        bool hasInlineLabels = false;
    };
    unsigned int IciclePlot(Point origin, Point size, const Range& range, float scale);
    int AlignIciclePlotLeaves(Node* node);
    void ResetIciclePlotAlignment();
    void SetNLastNodes(unsigned int count);

    // ---- questions to a cache; with `stores` what was computed stays there

    static unsigned int ComputeIcicleCursor(Cache& cache, bool stores);
    static bool IsVisibleFromLeaves(Cache& cache, unsigned int lastNodes, bool stores);
    static int ComputeMinDepthWithVisibility(Cache& cache, int depth, unsigned int lastNodes);
    static Point ComputeIcicleSize(Cache& cache, const Range& range, unsigned int depth,
                                   unsigned int minDepth, unsigned int maxDepth, bool stores);
    static int ColumnWidth(const Cache& cache);

    static Node* Down(Cache& cache, unsigned int& cursor, const Node* root, unsigned int lastNodes);
    static Node* Up(Cache& cache, unsigned int& cursor, const Node* root, unsigned int lastNodes);
    static Node* Left(Cache& cache, unsigned int& cursor, const Node* root, unsigned int lastNodes);
    static Node* Right(Cache& cache, unsigned int& cursor);

    unsigned int lastNodes = NOT_COMPUTED;
    unsigned int keyboardCursor = NOT_COMPUTED;
    bool extendsWithKeys = false;
    /// Whether the environment allows to extend.
    bool canExtend = true;

protected:
    void OnMouseSelection(Node* node) override;
    Node* GetNodeViaNavigation(unsigned int key) override;
    void ApplyPageUpPageDown(unsigned int key) override;

private:
    struct Plot;

    static unsigned int PlotNode(const Plot& plot, const Node& node, Point position, int depth);
    Node* GoLeft();
};

}  // namespace layoutReference

#endif
