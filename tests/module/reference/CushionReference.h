#ifndef module_reference_CushionReference_h
#define module_reference_CushionReference_h

// The cushion tree map once more.

#include "module/reference/LayoutReference.h"

#include <vector>

namespace layoutReference {

class Cushion : public Layout {
public:
    Cushion();

    void Draw(Point origin, Point size, float scale) override;
    void CushionTreemap(unsigned int mode, Point origin, Point size, float scale);
    static void SetLastMode(Cache& cache, unsigned int mode);

private:
    struct Picture;

    static long long ComputeSubtreeValue(const Node& node);
    static void LayOut(Picture& picture, const Node& node, unsigned int mode, Point position,
                       Point size, float height, float factor, const float* above);
    static void Shade(Picture& picture, const float* rectangle, const Cache& cache);
    static void ShadePixel(Picture& picture, long long x, long long y, const Cache& cache);
};

}  // namespace layoutReference

#endif
