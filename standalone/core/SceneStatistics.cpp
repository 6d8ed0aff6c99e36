#include "core/PartGeometry.h"
#include "core/SceneMemo.h"
#include "core/SceneReps.h"

#include "KUV3D.h"

#include <limits>
#include <unordered_map>
#include <vector>

namespace {

using Stats = KUVSceneGraphStats;

/// What is known of a bag with children.
struct Memo {
    Stats stats;
    /// 0 while the bag is still being counted: then it is on the way down to the rep at hand.
    bool counted = false;
};

using Memos = std::unordered_map<const KUVRep*, Memo>;

/// Used on the interaction thread only, as all scenes are. Never destroyed, because bags may die
/// after the objects of this file.
Memos& RememberedBags()
{
    static Memos* const memos = new Memos;
    return *memos;
}

/// Whether anything may be remembered; keeps bags from touching the table when there is nothing.
bool remembersBags = false;

std::uint64_t AddSaturating(std::uint64_t a, std::uint64_t b)
{
    const std::uint64_t rest = std::numeric_limits<std::uint64_t>::max() - a;
    return a + (b < rest ? b : rest);
}

void Add(Stats& sum, const Stats& stats)
{
    sum.triangleCount = AddSaturating(sum.triangleCount, stats.triangleCount);
    sum.leafCount = AddSaturating(sum.leafCount, stats.leafCount);
}

/// A bag on the way down.
struct Frame {
    const KUVRep* rep;
    const list<KUVRep>* children;
    int next;
    Stats sum;
    /// Cleared where the numbers must not be remembered: something below changes without telling,
    /// or was left out because it hangs below itself.
    bool stable;
};

Stats StatsOfLeaf(const KUVRep* rep)
{
    const core::PartGeometry* const geometry = core::GeometryOf(rep);
    return {geometry ? geometry->TriangleCount() : 0, 1};
}

bool TellsChanges(const KUVRep* rep)
{
    const KUVMetaClass* const meta = rep->GetMetaObject();
    return meta && meta->IsAKindOf(KUV3DBagRep::ClassId());
}

/// Counts `rep` and everything below it, bottom up and without recursion.
class Counter {
public:
    explicit Counter(Memos& memos) : memos_(memos) {}

    Stats Count(const KUVRep* rep)
    {
        Enter(rep);
        while (!frames_.empty()) {
            Frame& frame = frames_.back();
            const KUVRep* const child = (*frame.children)[frame.next++];
            if (child)
                Enter(child);
            else
                Leave();
        }
        return result_;
    }

private:
    /// Adds the numbers of a rep to its bag's, at once when they are known.
    void Enter(const KUVRep* rep)
    {
        const list<KUVRep>* const children = rep->GetChildren();
        if (!children || !(*children)[0]) {
            Deliver(StatsOfLeaf(rep), !children || TellsChanges(rep));
            return;
        }
        const auto [place, isNew] = memos_.try_emplace(rep);
        if (isNew)
            frames_.push_back({rep, children, 0, {}, TellsChanges(rep)});
        else
            Deliver(place->second.stats, place->second.counted);
    }

    void Leave()
    {
        const Frame frame = frames_.back();
        frames_.pop_back();
        if (frame.stable)
            memos_[frame.rep] = {frame.sum, true};
        else
            memos_.erase(frame.rep);
        Deliver(frame.sum, frame.stable);
    }

    void Deliver(const Stats& stats, bool stable)
    {
        if (frames_.empty()) {
            result_ = stats;
            return;
        }
        Add(frames_.back().sum, stats);
        frames_.back().stable = frames_.back().stable && stable;
    }

    Memos& memos_;
    std::vector<Frame> frames_;
    Stats result_;
};

}  // namespace

void core::ForgetSceneStatistics() noexcept
{
    if (!remembersBags)
        return;
    remembersBags = false;
    // Not `clear`, which keeps the table of what may have been millions of bags.
    Memos().swap(RememberedBags());
}

KUVResult KUVSceneGraphStatHelper::KUVGetSceneGraphRepStats(KUVRep* rep, KUVSceneGraphStats& stats)
{
    if (!rep)
        return KUV_FAIL;
    remembersBags = true;
    try {
        stats = Counter(RememberedBags()).Count(rep);
    } catch (...) {
        // Half-counted bags would look as if they hung below themselves.
        core::ForgetSceneStatistics();
        throw;
    }
    return KUV_OK;
}
