// A million random events, spread over the three layouts, with listeners that answer. What must
// hold is checked after every step of every scenario. The seed is fixed: a run that fails fails
// again.
//
//   soak [EVENTS [SEED]]

#include "EventScenario.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr std::size_t BYTES_A_SCENARIO = 6000;
#if defined(__SANITIZE_ADDRESS__)
constexpr const char* BUILD = " under the sanitizers";
#elif defined(__has_feature)
#    if __has_feature(address_sanitizer)
constexpr const char* BUILD = " under the sanitizers";
#    else
constexpr const char* BUILD = "";
#    endif
#else
constexpr const char* BUILD = "";
#endif
constexpr std::array NAMES{"tree map", "cushion", "icicle"};

struct Counts {
    std::size_t scenarios = 0;
    std::size_t events = 0;
    std::size_t notifications = 0;
    std::size_t reactions = 0;
};

void PlayScenario(fuzz::Kind kind, std::mt19937_64& random, Counts& counts)
{
    std::vector<std::uint8_t> choices(BYTES_A_SCENARIO);
    for (std::uint8_t& choice : choices)
        choice = static_cast<std::uint8_t>(random() >> 56U);
    fuzz::EventScenario scenario(kind, fuzz::Bytes(choices.data(), choices.size()));
    scenario.Run();
    ++counts.scenarios;
    counts.events += scenario.CountEvents();
    counts.notifications += scenario.CountNotifications();
    counts.reactions += scenario.CountReactions();
}

}  // namespace

int main(int argumentCount, char** arguments)
{
    const std::size_t wanted =
        argumentCount > 1 ? std::strtoull(arguments[1], nullptr, 10) : std::size_t{1000000};
    std::mt19937_64 random(argumentCount > 2 ? std::strtoull(arguments[2], nullptr, 10) : 20);
    std::array<Counts, fuzz::KINDS> counts;
    const auto start = std::chrono::steady_clock::now();
    std::size_t sent = 0;
    for (std::size_t turn = 0; sent < wanted; turn = (turn + 1) % counts.size()) {
        const std::size_t before = counts[turn].events;
        PlayScenario(static_cast<fuzz::Kind>(turn), random, counts[turn]);
        sent += counts[turn].events - before;
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    for (std::size_t i = 0; i < counts.size(); ++i)
        std::printf(
            "count: soak%s, %s: %zu events in %zu scenarios, %zu notifications, %zu answers of "
            "listeners\n",
            BUILD, NAMES[i], counts[i].events, counts[i].scenarios, counts[i].notifications,
            counts[i].reactions);
    std::printf("count: soak%s: %zu random events, every step checked\n", BUILD, sent);
    std::printf("%.1f s\n", took.count());
    return 0;
}
