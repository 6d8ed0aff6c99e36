#include "module/CushionComparison.h"
#include "module/IcicleComparison.h"
#include "module/TreeMapComparison.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

// Random trees, each under a random script of draws, clicks, keys, zooms, edits and questions, in
// the module and in the reference.

namespace {

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
std::uint64_t FirstSeed()
{
    const char* const chosen = std::getenv("KUV_SCRIPT_SEED");
    return chosen ? std::strtoull(chosen, nullptr, 10) : 20000;
}

/// Steps of one script.
constexpr int STEPS = 45;

template <class Comparison>
void CompareTrees(std::uint64_t trees)
{
    const std::uint64_t first = FirstSeed();
    for (std::uint64_t tree = 0; tree < trees; ++tree)
        ASSERT_TRUE(Agrees<Comparison>(first + tree, STEPS));
}

}  // namespace

TEST(LayoutScriptsReference, AThousandRandomTreesAndScriptsAgree)
{
    constexpr std::uint64_t MAPS = 300;
    constexpr std::uint64_t CUSHIONS = 300;
    constexpr std::uint64_t ICICLES = 400;
    ASSERT_NO_FATAL_FAILURE(CompareTrees<scripts::TreeMapComparison>(MAPS));
    ASSERT_NO_FATAL_FAILURE(CompareTrees<scripts::CushionComparison>(CUSHIONS));
    ASSERT_NO_FATAL_FAILURE(CompareTrees<scripts::IcicleComparison>(ICICLES));
    std::cout << "count: " << MAPS + CUSHIONS + ICICLES
              << " random trees and scripts agree with the reference\n";
}
