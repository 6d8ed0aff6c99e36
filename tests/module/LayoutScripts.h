#ifndef module_LayoutScripts_h
#define module_LayoutScripts_h

// Random trees, each under a random script of draws, clicks, keys, zooms, edits and questions, in
// the module and in the reference. A thousand over the three layouts.

#include "module/LayoutComparison.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

namespace scripts {

/// Runs one case; false when the two worlds differ, which is then printed as a script.
template <class Comparison>
bool Agrees(std::uint64_t seed, int steps)
{
    Comparison both(seed);
    std::string script = "seed " + std::to_string(seed) + "\ntree " + both.DescribeTree() + "\n";
    for (int i = 0; i < steps; ++i) {
        script += std::to_string(i) + ": " + both.Step() + "\n";
        const std::string difference = both.Difference();
        if (!difference.empty()) {
            ADD_FAILURE() << script << "the module differs: " << difference;
            return false;
        }
    }
    return true;
}

/// The seed of the first tree; `KUV_SCRIPT_SEED` makes another one the first.
inline std::uint64_t FirstSeed()
{
    const char* const chosen = std::getenv("KUV_SCRIPT_SEED");
    return chosen ? std::strtoull(chosen, nullptr, 10) : 20000;
}

template <class Comparison>
void CompareTrees(const std::string& layout, std::uint64_t trees)
{
    constexpr int STEPS = 45;
    const std::uint64_t first = FirstSeed();
    for (std::uint64_t tree = 0; tree < trees; ++tree)
        ASSERT_TRUE(Agrees<Comparison>(first + tree, STEPS));
    std::cout << "count: " << trees << " random trees and scripts agree with the reference of the "
              << layout << ", after each of " << trees * STEPS << " steps\n";
}

}  // namespace scripts

#endif
