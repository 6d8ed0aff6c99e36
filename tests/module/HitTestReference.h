#ifndef module_HitTestReference_h
#define module_HitTestReference_h

#include "VisDataTree.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace hits {

/// The hit test as it is defined: child after child, by recursion, with nothing remembered.
inline VisDataTree* Search(VisDataTree* node, float x, float y, bool discardedToo)
{
    auto* const cache =
        node ? dynamic_cast<VisTreeSpaceFillingLayoutCache*>(node->GetCache()) : nullptr;
    if (!cache || (cache->IsDiscarded() != 0 && !discardedToo))
        return nullptr;
    const KUVMathPoint2Df lower = cache->GetPos();
    const KUVMathPoint2Df size = cache->GetSize();
    if (!(lower.x <= x && x <= lower.x + size.x && lower.y <= y && y <= lower.y + size.y))
        return nullptr;
    for (VisDataTree* const child : node->GetChildren()) {
        if (VisDataTree* const hit = Search(child, x, y, discardedToo))
            return hit;
    }
    return cache->IsDiscarded() != 0 ? nullptr : node;
}

/// A coordinate at, close to, between or outside the bounds of a node.
template <class Random>
float PickCoordinate(Random& random, float lower, float size)
{
    const float upper = lower + size;
    constexpr float INF = std::numeric_limits<float>::infinity();
    switch (random() % 16) {
    case 0:
    case 1:
        return lower;
    case 2:
    case 3:
        return upper;
    case 4:
        return std::nextafter(lower, -INF);
    case 5:
        return std::nextafter(lower, INF);
    case 6:
        return std::nextafter(upper, -INF);
    case 7:
        return std::nextafter(upper, INF);
    case 8:
        return upper + 1.0F;
    case 9:
        return lower - 1.0F;
    case 10:
        return random() % 4 == 0 ? std::numeric_limits<float>::quiet_NaN() : lower + size / 2;
    case 11:
        return random() % 4 == 0 ? INF : lower + size / 3;
    default:
        return lower + size * static_cast<float>(random() % 1000) / 1000.0F;
    }
}

/// Compares the layout's hit test with the definition at `count` points around random nodes.
template <class Random>
testing::AssertionResult Agrees(VisTreeSpaceFillingLayout& layout,
                                const std::vector<VisDataTree*>& nodes, Random& random, int count,
                                bool discardedToo)
{
    for (int i = 0; i < count; ++i) {
        const auto* const across = nodes[random() % nodes.size()]->GetCache();
        const auto* const along = nodes[random() % nodes.size()]->GetCache();
        const auto* const first = dynamic_cast<const VisTreeSpaceFillingLayoutCache*>(across);
        const auto* second = dynamic_cast<const VisTreeSpaceFillingLayoutCache*>(along);
        if (!first || !second)
            continue;
        // Mostly both coordinates around one node, which is where the bounds meet.
        if (random() % 3 != 0)
            second = first;
        const float x = PickCoordinate(random, first->GetPos().x, first->GetSize().x);
        const float y = PickCoordinate(random, second->GetPos().y, second->GetSize().y);
        VisDataTree* const expected = Search(layout.GetCurrentRoot(), x, y, discardedToo);
        VisDataTree* const found = layout.FindNodeAtPosition(x, y);
        if (found != expected)
            return testing::AssertionFailure()
                   << "at " << x << ", " << y << ": "
                   << (found ? found->GetLabel().GetUtf8() : "nothing") << " instead of "
                   << (expected ? expected->GetLabel().GetUtf8() : "nothing");
    }
    return testing::AssertionSuccess();
}

}  // namespace hits

#endif
