#include "VisTreeMapLayout.h"

#include "module/reference/TreeMapReference.h"

#include "private/CacheAccess.h"
#include "private/Reference.h"

#include "KUV2D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

// Random trees are drawn, zoomed, edited and drawn again, by the module and by the reference side
// by side. After every step each node's rectangle, minimum size, mode, flags and view must be the
// same, floats to the last bit.

namespace {

using Cache = VisTreeMapLayout::VisTreeMapLayoutCache;

/// Keeps the pictures small; rectangles are in layout units and do not depend on it.
constexpr float SCALE = 1.0f / 4096.0f;

/// One node in both worlds.
struct Pair {
    VisDataTree* node;
    Cache* cache;
    layoutReference::Node* twin;
    layoutReference::Cache* twinCache;
};

bool SameBits(float a, float b)
{
    // The sign of a not-a-number is the machine's business.
    if (std::isnan(a) && std::isnan(b))
        return true;
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool Same(const KUVMathPoint2Df& a, const layoutReference::Point& b)
{
    return SameBits(a.x, b.x) && SameBits(a.y, b.y);
}

class SideBySide {
public:
    explicit SideBySide(std::uint64_t seed) : random_(seed)
    {
        const std::size_t count = 1 + Below(60);
        const std::size_t reach = 1 + Below(count);
        root_ = VisReference<VisDataTree>::Adopt(new VisDataTree(nullptr, "0", ""));
        pairs_.push_back({root_.Get(), nullptr, AddTwin(), nullptr});
        for (std::size_t i = 1; i < count; ++i) {
            const Pair parent = pairs_[i - 1 - Below(std::min(i, reach))];
            auto* const node = new VisDataTree(nullptr, "n", "");
            layoutReference::Node* const twin = AddTwin();
            parent.node->InsertChild(node, 1);
            node->Release();
            parent.twin->InsertChild(twin, true);
            pairs_.push_back({node, nullptr, twin, nullptr});
        }
        bag_ = VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep());
        layout_ = VisReference<VisTreeMapLayout>::Adopt(
            VisTreeMapLayout::CreateLayout(nullptr, root_.Get(), bag_.Get()));
        map_.SetTreeRoot(pairs_[0].twin);
        for (Pair& pair : pairs_) {
            pair.cache = static_cast<Cache*>(pair.node->GetCache());
            pair.twinCache = pair.twin->cache;
        }
    }
    ~SideBySide() { layout_->SetTreeRoot(nullptr); }
    SideBySide(const SideBySide&) = delete;
    SideBySide& operator=(const SideBySide&) = delete;

    /// Makes one random step and says which.
    std::string Step()
    {
        switch (Below(14)) {
        case 0:
            return Zoom();
        case 1:
            return Move();
        case 2:
            return Relink();
        case 3:
            return Ask();
        case 4:
            return SetMode();
        case 5:
            return LayOutDirectly();
        default:
            return Draw();
        }
    }

    /// What differs, or nothing.
    std::string Difference() const
    {
        for (std::size_t i = 0; i < pairs_.size(); ++i) {
            const Cache& cache = *pairs_[i].cache;
            const layoutReference::Cache& twin = *pairs_[i].twinCache;
            const bool isSame = Same(cache.GetPos(), twin.position) &&
                                Same(cache.GetSize(), twin.size) &&
                                Same(cache.GetComputedMinimumSize(), twin.minimum) &&
                                cache.GetLastModeOfComputedMinimumExpandedSize() == twin.lastMode &&
                                (cache.IsExpanded() != 0) == twin.isExpanded &&
                                (cache.IsDiscarded() != 0) == twin.isDiscarded &&
                                (cache.GetView() != nullptr) == (twin.view != nullptr);
            if (!isSame)
                return "node " + std::to_string(i) + ": " + Describe(cache) + " instead of " +
                       Describe(twin);
        }
        return "";
    }

private:
    static std::string Describe(const Cache& cache)
    {
        std::ostringstream text;
        text << cache.GetPos().x << "," << cache.GetPos().y << "  " << cache.GetSize().x << "x"
             << cache.GetSize().y << " minimum " << cache.GetComputedMinimumSize().x << "x"
             << cache.GetComputedMinimumSize().y << " mode "
             << cache.GetLastModeOfComputedMinimumExpandedSize() << " expanded "
             << int(cache.IsExpanded()) << " discarded " << int(cache.IsDiscarded()) << " view "
             << (cache.GetView() != nullptr);
        return text.str();
    }
    static std::string Describe(const layoutReference::Cache& twin)
    {
        std::ostringstream text;
        text << twin.position.x << "," << twin.position.y << "  " << twin.size.x << "x"
             << twin.size.y << " minimum " << twin.minimum.x << "x" << twin.minimum.y << " mode "
             << twin.lastMode << " expanded " << twin.isExpanded << " discarded "
             << twin.isDiscarded << " view " << (twin.view != nullptr);
        return text.str();
    }

    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }

    float Number(float usual)
    {
        const float infinity = std::numeric_limits<float>::infinity();
        const float odd[] = {0.0f,
                             -0.0f,
                             -1.0f,
                             std::numeric_limits<float>::quiet_NaN(),
                             infinity,
                             -infinity,
                             std::numeric_limits<float>::max(),
                             std::numeric_limits<float>::denorm_min(),
                             16777216.0f,
                             2147483648.0f};
        if (Below(40) == 0)
            return odd[Below(std::size(odd))];
        return usual * static_cast<float>(Below(100000)) / 100000.0f;
    }

    unsigned int Mode()
    {
        const unsigned int modes[] = {0, 1, 0, 1, 0, 1, 5};
        return modes[Below(std::size(modes))];
    }

    KUVMathPoint2Df Size()
    {
        const float usual[] = {50.0f, 200.0f, 800.0f, 3000.0f, 20000.0f};
        const float width = usual[Below(std::size(usual))];
        const float height = usual[Below(std::size(usual))];
        return {Number(width), Number(height)};
    }

    Pair& AnyPair() { return pairs_[Below(pairs_.size())]; }

    std::string Draw()
    {
        // Mostly the last size again: what is remembered then matters most.
        if (Below(3) == 0 || !hasDrawn_) {
            origin_ = {Number(100.0f), Number(100.0f)};
            size_ = Size();
        }
        hasDrawn_ = true;
        layout_->Draw(origin_, size_, nullptr, SCALE);
        map_.Draw({origin_.x, origin_.y}, {size_.x, size_.y}, SCALE);
        return "draw";
    }

    std::string LayOutDirectly()
    {
        const KUVMathPoint2Df size = Size();
        const unsigned int mode = Mode();
        if (Below(2) == 0) {
            layout_->LayoutChildrenInGrid({1.5f, 2.5f}, size, nullptr, SCALE);
            map_.LayoutChildrenInGrid({1.5f, 2.5f}, {size.x, size.y}, SCALE);
            return "grid";
        }
        layout_->SliceAndDice(static_cast<VisTreeMap_SliceDice>(mode), {1.5f, 2.5f}, size, nullptr,
                              SCALE);
        map_.SliceAndDice(mode, {1.5f, 2.5f}, {size.x, size.y}, SCALE);
        return "slice and dice";
    }

    std::string Zoom()
    {
        const Pair& pair = AnyPair();
        layout_->SetCurrentRoot(pair.node, 1);
        map_.SetCurrentRoot(pair.twin, true);
        return "zoom";
    }

    std::string Move()
    {
        const Pair& child = AnyPair();
        const Pair& parent = AnyPair();
        const bool isPossible = child.node != root_.Get() && child.node != parent.node &&
                                !parent.node->HasNodeAsParent(child.node);
        if (!isPossible)
            return "no move";
        const bool resets = Below(2) == 0;
        parent.node->InsertChild(child.node, resets ? 1 : 0);
        parent.twin->InsertChild(child.twin, resets);
        return resets ? "move" : "move quietly";
    }

    std::string Relink()
    {
        const Pair& pair = AnyPair();
        if (pair.twin->cache) {
            pair.node->SetCache(nullptr);
            map_.Unlink(*pair.twin);
            return "unlink";
        }
        pair.node->SetCache(pair.cache);
        map_.Link(*pair.twin, *pair.twinCache);
        return "link";
    }

    /// Asks one node out of turn; the answers are compared at once.
    std::string Ask()
    {
        const Pair& pair = AnyPair();
        if (!pair.twin->cache)
            return "nothing to ask";
        const unsigned int mode = Mode();
        const auto asked = static_cast<VisTreeMap_SliceDice>(mode);
        const KUVMathPoint2Df size = Size();
        float sum = -7.0f;
        float twinSum = -7.0f;
        EXPECT_EQ(pair.cache->CanSliceAndDiceExpandNode(asked, size, &sum) != 0,
                  layoutReference::TreeMap::CanSliceAndDiceExpandNode(*pair.twinCache, mode,
                                                                      {size.x, size.y}, &twinSum));
        EXPECT_TRUE(SameBits(sum, twinSum)) << sum << " instead of " << twinSum;
        EXPECT_TRUE(
            Same(pair.cache->ComputeMinimumExpandedSize(asked),
                 layoutReference::TreeMap::ComputeMinimumExpandedSize(*pair.twinCache, mode)));
        EXPECT_EQ(
            pair.cache->CanLayoutChildrenInGrid(size) != 0,
            layoutReference::TreeMap::CanLayoutChildrenInGrid(*pair.twinCache, {size.x, size.y}));
        return "ask";
    }

    std::string SetMode()
    {
        const Pair& pair = AnyPair();
        const unsigned int mode = Mode();
        pair.cache->SetLastModeOfComputedMinimumExpandedSize(
            static_cast<VisTreeMap_SliceDice>(mode));
        layoutReference::TreeMap::SetLastMode(*pair.twinCache, mode);
        return "set the mode";
    }

    layoutReference::Node* AddTwin()
    {
        twins_.push_back(std::make_unique<layoutReference::Node>());
        return twins_.back().get();
    }

    std::mt19937_64 random_;
    std::vector<std::unique_ptr<layoutReference::Node>> twins_;
    layoutReference::TreeMap map_;
    VisReference<VisDataTree> root_;
    VisReference<KUV2DBagRep> bag_;
    VisReference<VisTreeMapLayout> layout_;
    std::vector<Pair> pairs_;
    KUVMathPoint2Df origin_;
    KUVMathPoint2Df size_;
    bool hasDrawn_ = false;
};

}  // namespace

TEST(VisTreeMapLayoutReference, AThousandRandomTreesAgreeToTheLastBit)
{
    const auto seed =
        static_cast<std::uint64_t>(testing::UnitTest::GetInstance()->random_seed()) * 1000003U;
    constexpr std::uint64_t TREES = 1000;
    constexpr int STEPS = 40;
    std::size_t steps = 0;
    for (std::uint64_t tree = 0; tree < TREES; ++tree) {
        SideBySide both(seed + tree);
        std::string history;
        for (int i = 0; i < STEPS; ++i, ++steps) {
            history += both.Step() + "; ";
            const std::string difference = both.Difference();
            ASSERT_EQ(difference, "") << "tree of seed " << seed + tree << " after " << history;
            ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed + tree << ": " << history;
        }
    }
    std::cout << "count: " << TREES << " random trees agree with the reference after each of "
              << steps << " steps\n";
}
