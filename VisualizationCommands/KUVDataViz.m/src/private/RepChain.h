#ifndef RepChain_h
#define RepChain_h

#include "KUVRep.h"

#include <algorithm>
#include <cstddef>
#include <unordered_set>
#include <vector>

/// The bags on the way down from the root of a walk to where it stands. A scene may be hurt: a rep
/// that hangs below itself is left out by whoever asks here before stepping into it.
class VisRepChain {
public:
    bool Has(const KUVRep* rep) const
    {
        const auto end = reps_.begin() + static_cast<std::ptrdiff_t>(Shallow());
        return std::find(reps_.begin(), end, rep) != end || deep_.count(rep) != 0;
    }

    /// `rep` is not in the chain. Throws `std::bad_alloc`.
    void Push(const KUVRep* rep)
    {
        reps_.push_back(rep);
        if (reps_.size() > SEARCHED)
            deep_.insert(rep);
    }

    void Pop()
    {
        if (reps_.size() > SEARCHED)
            deep_.erase(reps_.back());
        reps_.pop_back();
    }

private:
    /// Scenes are rarely deeper than this many levels, which are searched faster than hashed.
    static constexpr std::size_t SEARCHED = 16;

    std::size_t Shallow() const { return std::min(reps_.size(), SEARCHED); }

    std::vector<const KUVRep*> reps_;
    /// The reps behind the first ones.
    std::unordered_set<const KUVRep*> deep_;
};

#endif
