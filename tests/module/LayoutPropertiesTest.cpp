#include "VisCushionLayout.h"
#include "VisIcicleLayout.h"
#include "VisTreeMapLayout.h"
#include "VisTreeSpaceFillingView.h"

#include "module/Properties.h"

#include "private/CacheAccess.h"
#include "private/Reference.h"

#include "KUV2D.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

// What holds for the picture of any tree.

namespace {

using NodeRef = VisReference<VisDataTree>;

/// A picture unit in these trees; what a rounding may move an edge by.
constexpr float HALF = 0.5f;

struct Sketch {
    /// The parent of each node but the first is one of those before it.
    std::vector<unsigned int> parents;
    std::vector<int> values;
    bool usesValues;
    KUVMathPoint2Df origin;
    KUVMathPoint2Df size;
};

Sketch AnySketch()
{
    Sketch sketch;
    sketch.parents =
        *rc::gen::container<std::vector<unsigned int>>(rc::gen::arbitrary<unsigned int>());
    sketch.values =
        *rc::gen::container<std::vector<int>>(sketch.parents.size() + 1, rc::gen::inRange(0, 50));
    sketch.usesValues = *rc::gen::arbitrary<bool>();
    const auto number = [](int low, int high) {
        return static_cast<float>(*rc::gen::inRange(low, high)) / 64.0f;
    };
    sketch.origin = {number(-6400, 6400), number(-6400, 6400)};
    const int limit = *rc::gen::element(200 * 64, 800 * 64);
    // At least a pixel at the scale below: the cushion draws nothing else.
    sketch.size = {number(40 * 64, limit), number(40 * 64, limit)};
    return sketch;
}

/// A tree in a layout, drawn once.
template <class Layout>
struct Picture {
    explicit Picture(const Sketch& sketch)
    {
        nodes.push_back(NodeRef::Adopt(new VisDataTree(nullptr, "r", "")));
        for (std::size_t i = 0; i < sketch.parents.size(); ++i) {
            nodes.push_back(NodeRef::Adopt(new VisDataTree(nullptr, "n", "")));
            nodes[sketch.parents[i] % (i + 1)]->InsertChild(nodes.back().Get(), 1);
        }
        layout = VisReference<Layout>::Adopt(
            Layout::CreateLayout(nullptr, nodes.front().Get(), nullptr));
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            nodes[i]->SetIsLeafObject(nodes[i]->GetChildren().empty() ? 1 : 0);
            CacheOf(i).SetShowLabel(1);
            CacheOf(i).SetSizeValue(sketch.values[i]);
        }
        CacheOf(0).SetResizeWithValue(sketch.usesValues ? 1 : 0);
        Prepare(layout.Get());
        layout->Draw(sketch.origin, sketch.size, nullptr, SCALE);
    }
    ~Picture() { layout->SetTreeRoot(nullptr); }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    static void Prepare(VisTreeSpaceFillingLayout* /*layout*/) {}
    static void Prepare(VisIcicleLayout* icicle) { icicle->AlignIciclePlotLeaves(nullptr); }

    VisTreeSpaceFillingLayoutCache& CacheOf(std::size_t i) const
    {
        return *VisCacheAccess::LayoutCacheOf(nodes[i].Get());
    }
    bool Shows(std::size_t i) const { return CacheOf(i).IsDiscarded() == 0; }

    /// What shows, to the last bit: flags, rectangle and whether there is a view.
    std::vector<std::array<float, 7>> Describe() const
    {
        std::vector<std::array<float, 7>> shown;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const VisTreeSpaceFillingLayoutCache& cache = CacheOf(i);
            if (!Shows(i)) {
                shown.push_back({});
                continue;
            }
            shown.push_back({1.0f, cache.GetPos().x, cache.GetPos().y, cache.GetSize().x,
                             cache.GetSize().y, static_cast<float>(cache.IsExpanded()),
                             cache.GetView() ? 1.0f : 0.0f});
        }
        return shown;
    }

    /// Small: the images of the views do not matter here.
    static constexpr float SCALE = 0.03125f;

    std::vector<NodeRef> nodes;
    VisReference<Layout> layout;
};

bool SameBits(const std::vector<std::array<float, 7>>& a,
              const std::vector<std::array<float, 7>>& b)
{
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0);
}

template <class Layout>
void CheckDrawingTwice(const std::string& name)
{
    properties::Check(name + " pictures are the same when drawn twice", 300, [] {
        const Sketch sketch = AnySketch();
        const Picture<Layout> picture(sketch);
        const auto once = picture.Describe();
        picture.layout->Draw(sketch.origin, sketch.size, nullptr, picture.SCALE);
        RC_ASSERT(SameBits(once, picture.Describe()));
    });
}

template <class Layout>
void CheckZoomAndUnzoom(const std::string& name)
{
    properties::Check(name + " pictures are the same after zoom and unzoom", 300, [] {
        const Sketch sketch = AnySketch();
        const Picture<Layout> picture(sketch);
        const auto before = picture.Describe();
        const int levels = *rc::gen::inRange(1, 4);
        for (int i = 0; i < levels; ++i) {
            const auto target = *rc::gen::inRange<std::size_t>(0, picture.nodes.size());
            picture.layout->SetCurrentRoot(picture.nodes[target].Get(), 1);
        }
        while (picture.layout->Unzoom() != 0) {
        }
        RC_ASSERT(picture.layout->GetCurrentRoot() == picture.nodes[0].Get());
        RC_ASSERT(SameBits(before, picture.Describe()));
    });
}

/// Whether two intervals share more than `slack`.
bool Overlap(float a, float aExtent, float b, float bExtent, float slack)
{
    return std::min(a + aExtent, b + bExtent) - std::max(a, b) > slack;
}

/// Edges are sums of rounded numbers: this is how far they may be off, besides what the layout
/// rounds on purpose.
float SlackOf(const Sketch& sketch)
{
    const float largest = std::max({std::fabs(sketch.origin.x) + sketch.size.x,
                                    std::fabs(sketch.origin.y) + sketch.size.y, 10000.0f});
    return largest * 1e-5f;
}

template <class Layout>
void CheckNesting(const std::string& name, float rounding)
{
    properties::Check(name + " pictures keep children inside and siblings apart", 300, [rounding] {
        const Sketch sketch = AnySketch();
        const Picture<Layout> picture(sketch);
        const float slack = rounding + SlackOf(sketch);
        for (const NodeRef& node : picture.nodes) {
            const auto& outer = *VisCacheAccess::LayoutCacheOf(node.Get());
            std::vector<const VisTreeSpaceFillingLayoutCache*> shown;
            for (const VisDataTree* const child : node->GetChildren()) {
                const auto* const inner = VisCacheAccess::LayoutCacheOf(child);
                if (inner->IsDiscarded() == 0)
                    shown.push_back(inner);
            }
            for (const auto* const inner : shown) {
                RC_ASSERT(outer.IsDiscarded() == 0);
                RC_ASSERT(inner->GetPos().x >= outer.GetPos().x - slack);
                RC_ASSERT(inner->GetPos().y >= outer.GetPos().y - slack);
                RC_ASSERT(inner->GetPos().x + inner->GetSize().x <=
                          outer.GetPos().x + outer.GetSize().x + slack);
                RC_ASSERT(inner->GetPos().y + inner->GetSize().y <=
                          outer.GetPos().y + outer.GetSize().y + slack);
                for (const auto* const other : shown)
                    RC_ASSERT(inner == other ||
                              !Overlap(inner->GetPos().x, inner->GetSize().x, other->GetPos().x,
                                       other->GetSize().x, slack) ||
                              !Overlap(inner->GetPos().y, inner->GetSize().y, other->GetPos().y,
                                       other->GetSize().y, slack));
            }
        }
    });
}

template <class Layout>
void CheckCentres(const std::string& name)
{
    properties::Check(name + " pictures are hit in the centre of every shown leaf", 300, [] {
        const Sketch sketch = AnySketch();
        const Picture<Layout> picture(sketch);
        const float slack = SlackOf(sketch);
        for (std::size_t i = 0; i < picture.nodes.size(); ++i) {
            const VisTreeSpaceFillingLayoutCache& cache = picture.CacheOf(i);
            if (!picture.nodes[i]->GetChildren().empty() || !picture.Shows(i))
                continue;
            // A leaf as narrow as the rounding has its centre on its neighbours' edges.
            if (cache.GetSize().x <= 2.0f * slack || cache.GetSize().y <= 2.0f * slack)
                continue;
            RC_ASSERT(picture.layout->FindNodeAtPosition(
                          cache.GetPos().x + cache.GetSize().x / 2.0f,
                          cache.GetPos().y + cache.GetSize().y / 2.0f) == picture.nodes[i].Get());
        }
    });
}

}  // namespace

TEST(LayoutProperties, DrawingTwiceChangesNothing)
{
    CheckDrawingTwice<VisTreeMapLayout>("tree map");
    CheckDrawingTwice<VisCushionLayout>("cushion");
    CheckDrawingTwice<VisIcicleLayout>("icicle");
}

TEST(LayoutProperties, ZoomAndUnzoomGiveTheSameRectanglesBitForBit)
{
    CheckZoomAndUnzoom<VisTreeMapLayout>("tree map");
    CheckZoomAndUnzoom<VisCushionLayout>("cushion");
}

TEST(LayoutProperties, AChildLiesInsideItsParentAndSiblingsDoNotOverlap)
{
    // The tree map rounds a strip to whole units and goes on where the unrounded one would end; it
    // does so once more at every level.
    CheckNesting<VisTreeMapLayout>("tree map", HALF);
    CheckNesting<VisCushionLayout>("cushion", 0.0f);
    CheckNesting<VisIcicleLayout>("icicle", 0.0f);
}

TEST(LayoutProperties, TheCentreOfEveryShownLeafHitsIt)
{
    CheckCentres<VisTreeMapLayout>("tree map");
    CheckCentres<VisCushionLayout>("cushion");
    CheckCentres<VisIcicleLayout>("icicle");
}
