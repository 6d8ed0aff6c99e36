#include "LayoutChecks.h"

#include "FuzzSupport.h"
#include "VisCushionLayout.h"
#include "VisIcicleLayout.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "VisTreeSpaceFillingView.h"
#include "private/TreeWalk.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stack>
#include <unordered_set>

namespace fuzz {

namespace {

using Layout = VisTreeSpaceFillingLayout;
using Cache = VisTreeSpaceFillingLayoutCache;

const Cache* CacheOf(const VisDataTree* node)
{
    return node ? dynamic_cast<const Cache*>(node->GetCache()) : nullptr;
}

bool Holds(const Cache& cache, float x, float y)
{
    const KUVMathPoint2Df& lower = cache.GetPos();
    const KUVMathPoint2Df& size = cache.GetSize();
    return lower.x <= x && x <= lower.x + size.x && lower.y <= y && y <= lower.y + size.y;
}

/// The hit test as it is described: child after child, no shortcuts.
const VisDataTree* SearchPlainly(const VisDataTree* node, float x, float y, bool discardedToo)
{
    const Cache* const cache = CacheOf(node);
    if (!cache || (cache->IsDiscarded() != 0 && !discardedToo) || !Holds(*cache, x, y))
        return nullptr;
    for (const VisDataTree* const child : node->GetChildren()) {
        if (const VisDataTree* const hit = SearchPlainly(child, x, y, discardedToo))
            return hit;
    }
    return cache->IsDiscarded() == 0 ? node : nullptr;
}

/// So far from the origin floats round too much to tell.
bool IsModerate(const Cache& cache)
{
    constexpr float LIMIT = 1.0e4F;
    const KUVMathPoint2Df& lower = cache.GetPos();
    const KUVMathPoint2Df& size = cache.GetSize();
    return std::abs(lower.x) <= LIMIT && std::abs(lower.y) <= LIMIT && size.x >= 0.0F &&
           size.x <= LIMIT && size.y >= 0.0F && size.y <= LIMIT;
}

constexpr float ROUNDING = 0.125F;

void CheckInside(const Cache& parent, const Cache& child)
{
    Require(child.GetPos().x >= parent.GetPos().x - ROUNDING);
    Require(child.GetPos().y >= parent.GetPos().y - ROUNDING);
    Require(child.GetPos().x + child.GetSize().x <=
            parent.GetPos().x + parent.GetSize().x + ROUNDING);
    Require(child.GetPos().y + child.GetSize().y <=
            parent.GetPos().y + parent.GetSize().y + ROUNDING);
}

void CheckApart(const Cache& one, const Cache& other)
{
    const auto overlap = [](float lower1, float size1, float lower2, float size2) {
        return std::min(lower1 + size1, lower2 + size2) - std::max(lower1, lower2);
    };
    Require(
        overlap(one.GetPos().x, one.GetSize().x, other.GetPos().x, other.GetSize().x) <= ROUNDING ||
        overlap(one.GetPos().y, one.GetSize().y, other.GetPos().y, other.GetSize().y) <= ROUNDING);
}

void CheckHidden(const VisDataTree& top)
{
    VisPreOrderWalk<const VisDataTree> walk(&top);
    while (const VisDataTree* const node = walk.Next()) {
        const Cache* const cache = CacheOf(node);
        if (!cache) {
            walk.SkipChildren();
            continue;
        }
        Require(cache->IsDiscarded() == 1);
        Require(cache->IsExpanded() == 0);
        Require(cache->GetView() == nullptr);
    }
}

void CheckDrawnNode(Kind kind, const VisDataTree& node, const Cache& cache)
{
    if (kind == Kind::TreeMap && cache.IsDiscarded() != 0) {
        // No cell of a grid was left for it.
        CheckHidden(node);
        return;
    }
    Require(cache.GetView() != nullptr);
    Require(cache.GetView()->IsVisible() <= 1);
    if (kind != Kind::TreeMap || node.GetChildren().empty())
        Require(cache.IsExpanded() == 1);
    if (kind != Kind::Icicle)
        Require(cache.IsDiscarded() == 0);
    if (cache.IsExpanded() != 0)
        return;
    for (const VisDataTree* const child : node.GetChildren())
        CheckHidden(*child);
}

/// The caches of the children that are shown.
std::vector<const Cache*> ShownChildren(const VisDataTree& node)
{
    std::vector<const Cache*> shown;
    for (const VisDataTree* const child : node.GetChildren()) {
        const Cache* const cache = CacheOf(child);
        if (cache && cache->IsDiscarded() == 0)
            shown.push_back(cache);
    }
    return shown;
}

std::uint32_t BitsOf(float number)
{
    std::uint32_t bits = 0;
    static_assert(sizeof bits == sizeof number);
    std::memcpy(&bits, &number, sizeof bits);
    // There is more than one not-a-number, and which one comes out is up to the compiler.
    return number == number ? bits : 0x7FC00000U;
}

}  // namespace

VisTreeSpaceFillingLayout* MakeLayout(Kind kind, VisDataTree* root, KUV2DBagRep* bag)
{
    if (kind == Kind::Cushion)
        return VisCushionLayout::CreateLayout(nullptr, root, bag);
    if (kind == Kind::Icicle)
        return VisIcicleLayout::CreateLayout(nullptr, root, bag);
    return VisTreeMapLayout::CreateLayout(nullptr, root, bag);
}

bool IsDrawn(Kind kind, const KUVMathPoint2Df& size, float scale)
{
    if (kind != Kind::Cushion)
        return true;
    const float width = std::trunc(scale * size.x);
    const float height = std::trunc(scale * size.y);
    return width >= 1.0F && height >= 1.0F && 4.0F * width * height <= LARGEST_IMAGE / 2;
}

bool IsRepeatable(Kind kind, VisTreeSpaceFillingLayout& layout)
{
    if (kind != Kind::Icicle)
        return true;
    const auto* const cache = dynamic_cast<const VisIcicleLayout::VisIcicleLayoutCache*>(
        CacheOf(layout.GetCurrentRoot()));
    return cache && cache->GetIcicleNLastNodes() == 0xFFFFFFFFU;
}

void CheckNode(const VisDataTree& node)
{
    if (const VisDataTree* const parent = node.GetParent()) {
        const std::vector<VisDataTree*>& siblings = parent->GetChildren();
        Require(std::count(siblings.begin(), siblings.end(), &node) == 1);
    }
    if (node.GetCache() && node.GetCache()->GetNode())
        Require(node.GetCache()->GetNode() == &node);
    for (const VisDataTree* const child : node.GetChildren()) {
        Require(Node::Lives(child));
        Require(child->GetParent() == &node);
    }
}

void CheckSlots(const VisTreeSpaceFillingLayout& layout, bool inTree)
{
    const VisDataTree* const root = layout.GetTreeRoot();
    for (const VisDataTree* const node :
         {root, layout.GetCurrentRoot(), layout.GetCurrentSelection(),
          layout.GetCurrentLeafSelection()})
        Require(!node || Node::Lives(node));
    if (inTree && root) {
        Require(IsInTree(layout.GetCurrentRoot(), root));
        // With a root that has a parent, keys lead from a selection above the current root to
        // there.
        const bool isTop = root->GetParent() == nullptr;
        for (const VisDataTree* const node :
             {layout.GetCurrentSelection(), layout.GetCurrentLeafSelection()})
            Require(!isTop || !node || IsInTree(node, root));
    }
    std::stack<VisDataTree*> roots = layout.GetLastCurrentTreeRoots();
    for (; !roots.empty(); roots.pop())
        Require(!roots.top() || Node::Lives(roots.top()));
}

void CheckHit(VisTreeSpaceFillingLayout& layout, bool discardedToo, float x, float y)
{
    const VisDataTree* const hit = layout.FindNodeAtPosition(x, y);
    Require(hit == SearchPlainly(layout.GetCurrentRoot(), x, y, discardedToo));
    if (!hit)
        return;
    Require(CacheOf(hit)->IsDiscarded() == 0);
    Require(Holds(*CacheOf(hit), x, y));
    Require(IsInTree(hit, layout.GetCurrentRoot()));
}

void CheckViews(VisTreeSpaceFillingLayout& layout, const KUV2DBagRep& bag)
{
    std::unordered_set<const KUVRep*> bags;
    VisPreOrderWalk<VisDataTree> walk(layout.GetTreeRoot());
    while (const VisDataTree* const node = walk.Next()) {
        const Cache* const cache = CacheOf(node);
        if (!cache || !cache->GetView())
            continue;
        Require(IsInTree(node, layout.GetCurrentRoot()));
        Require(cache->GetView()->GetBagRep() != nullptr);
        Require(bags.insert(cache->GetView()->GetBagRep()).second);
    }
    const list<KUVRep>* const shown = bag.GetChildren();
    Require(static_cast<std::size_t>(shown ? shown->Count() : 0) == bags.size());
    for (int i = 0; shown && i < shown->Count(); ++i)
        Require(bags.count((*shown)[i]) == 1);
}

void CheckDrawn(Kind kind, VisTreeSpaceFillingLayout& layout)
{
    VisPreOrderWalk<VisDataTree> walk(layout.GetCurrentRoot());
    while (const VisDataTree* const node = walk.Next()) {
        const Cache* const cache = CacheOf(node);
        if (!cache) {
            walk.SkipChildren();
            continue;
        }
        CheckDrawnNode(kind, *node, *cache);
        if (cache->IsExpanded() == 0)
            walk.SkipChildren();
    }
}

void CheckPlaced(Kind kind, VisTreeSpaceFillingLayout& layout)
{
    VisPreOrderWalk<VisDataTree> walk(layout.GetCurrentRoot());
    while (const VisDataTree* const node = walk.Next()) {
        const Cache* const cache = CacheOf(node);
        if (!cache || cache->IsExpanded() == 0 || !IsModerate(*cache)) {
            walk.SkipChildren();
            continue;
        }
        const std::vector<const Cache*> children = ShownChildren(*node);
        for (std::size_t i = 0; i < children.size(); ++i) {
            CheckInside(*cache, *children[i]);
            for (std::size_t j = 0; j < i; ++j)
                CheckApart(*children[i], *children[j]);
        }
        const KUVMathPoint2Df& size = cache->GetSize();
        const bool isLarge = size.x > 2.0F * ROUNDING && size.y > 2.0F * ROUNDING;
        if (kind != Kind::Icicle && node->GetChildren().empty() && isLarge)
            Require(layout.FindNodeAtPosition(cache->GetPos().x + size.x / 2.0F,
                                              cache->GetPos().y + size.y / 2.0F) == node);
    }
}

void CheckAligned(VisTreeSpaceFillingLayout& layout)
{
    using IcicleCache = VisIcicleLayout::VisIcicleLayoutCache;
    long long end = -1;
    VisPreOrderWalk<VisDataTree> walk(layout.GetCurrentRoot());
    while (const VisDataTree* const node = walk.Next()) {
        const auto* const cache = dynamic_cast<const IcicleCache*>(CacheOf(node));
        if (!cache || !node->GetChildren().empty())
            continue;
        const long long own =
            static_cast<long long>(cache->GetIcicleCursor()) + cache->GetIcicleColSpan();
        Require(end < 0 || own == end);
        end = own;
    }
}

std::vector<std::uint32_t> DescribeDrawn(VisTreeSpaceFillingLayout& layout, bool views)
{
    std::vector<std::uint32_t> result;
    VisPreOrderWalk<VisDataTree> walk(layout.GetTreeRoot());
    while (const VisDataTree* const node = walk.Next()) {
        const Cache* const cache = CacheOf(node);
        if (!cache)
            continue;
        const VisTreeSpaceFillingView* const view = cache->GetView();
        result.push_back(cache->IsExpanded() + 2U * cache->IsDiscarded() + (view ? 4U : 0U));
        // A hidden node keeps the rectangle in which it was shown last.
        if (!view)
            continue;
        for (const KUVMathPoint2Df point : {cache->GetPos(), cache->GetSize()}) {
            result.push_back(BitsOf(point.x));
            result.push_back(BitsOf(point.y));
        }
        if (!views)
            continue;
        result.push_back((view->IsBuilt() != 0 ? 1U : 0U) + (view->IsCropped() != 0 ? 2U : 0U) +
                         (view->IsBright() != 0 ? 4U : 0U));
        const list<KUVRep>* const reps =
            view->GetBagRep() ? view->GetBagRep()->GetChildren() : nullptr;
        result.push_back(static_cast<std::uint32_t>(reps ? reps->Count() : 0));
    }
    return result;
}

}  // namespace fuzz
