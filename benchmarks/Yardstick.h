#ifndef Yardstick_h
#define Yardstick_h

// What the benchmarks of the layouts have in common: thread time, so that what else the machine
// does shall not show, and the yardstick that their geometry is measured against.

#include "TreeShapes.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <vector>

namespace yardstick {

inline double ThreadSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <class Work>
double Seconds(const Work& work)
{
    const double begin = ThreadSeconds();
    work();
    return ThreadSeconds() - begin;
}

/// The yardstick: slice-and-dice over flat arrays, four floats a node, one pass.
class FlatTreeMap {
public:
    explicit FlatTreeMap(const std::vector<std::uint32_t>& parents)
        : children_(shapes::MakeChildren(parents)), boxes_(parents.size()),
          stacked_(parents.size(), 1)
    {
        for (std::size_t i = 1; i < parents.size(); ++i)
            stacked_[i] = stacked_[parents[i]] ? 0 : 1;
    }

    void LayOut(float width, float height)
    {
        boxes_[0] = {0.0f, 0.0f, width, height};
        for (std::size_t i = 0; i < boxes_.size(); ++i) {
            const std::uint32_t first = children_.first[i];
            const std::uint32_t end = children_.first[i + 1];
            if (first == end)
                continue;
            Box box = boxes_[i];
            float& extent = stacked_[i] ? box.height : box.width;
            extent /= static_cast<float>(end - first);
            float& place = stacked_[i] ? box.y : box.x;
            for (std::uint32_t k = first; k < end; ++k, place += extent)
                boxes_[children_.list[k]] = box;
        }
        benchmark::DoNotOptimize(boxes_.data());
        benchmark::ClobberMemory();
    }

private:
    struct Box {
        float x, y, width, height;
    };

    shapes::Children children_;
    std::vector<Box> boxes_;
    std::vector<unsigned char> stacked_;
};

/// The best of some runs, for the yardstick.
inline double BestSeconds(FlatTreeMap& map)
{
    double best = std::numeric_limits<double>::max();
    for (int i = 0; i < 15; ++i)
        best = std::min(best, Seconds([&map] { map.LayOut(4000.0f, 3000.0f); }));
    return best;
}

}  // namespace yardstick

#endif
