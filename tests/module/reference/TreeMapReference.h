#ifndef module_reference_TreeMapReference_h
#define module_reference_TreeMapReference_h

// The tree map once more.

#include "module/reference/LayoutReference.h"

namespace layoutReference {

class TreeMap : public Layout {
public:
    TreeMap() : Layout(Cache::Kind::TreeMap) {}

    void Draw(Point origin, Point size, float scale) override;
    void SliceAndDice(unsigned int mode, Point origin, Point size, float scale);
    void LayoutChildrenInGrid(Point origin, Point size, float scale);

    static Point ComputeMinimumExpandedSize(Cache& cache, unsigned int mode);
    static bool CanSliceAndDiceExpandNode(Cache& cache, unsigned int mode, Point size, float* sum);
    static bool CanLayoutChildrenInGrid(const Cache& cache, Point size);
    static void SetLastMode(Cache& cache, unsigned int mode);

protected:
    std::unique_ptr<Cache> GenerateCache() const override;

private:
    /// What a draw gives to every view.
    struct Picture {
        Point origin;
        float scale;

        Point Place(Point position) const;
        Point Scaled(Point size) const;
    };

    static void LayOut(const Node& node, unsigned int mode, Point position, Point size,
                       const Picture& picture);
    static void LayOutEqually(const Node& node, unsigned int mode, Point q, Point inner,
                              const Picture& picture);
    static void LayOutInProportion(const Node& node, unsigned int mode, Point q, Point inner,
                                   float sum, const Picture& picture);
    static void DrawNode(Cache& cache, Point position, Point size, const Picture& picture);
};

}  // namespace layoutReference

#endif
