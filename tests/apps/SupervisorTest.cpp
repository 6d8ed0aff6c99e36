#include "Supervisor.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dataviz {

namespace {

using Kind = WorkOutcome::Kind;
// A second on a machine that has nothing else to do.
constexpr double GRACE = 4;

using Clock = std::chrono::steady_clock;

WorkOutcome Supervise(const std::function<void(WorkChannel&)>& work, const WorkLimits& limits,
                      const WorkListener& listener)
{
    const SignalWatch signals;
    return dataviz::Supervise(work, limits, listener, signals);
}

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

[[noreturn]] void LoopForever()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

}  // namespace

TEST(Supervisor, HandsOverTheStatusOfFinishedWork)
{
    const WorkOutcome outcome = Supervise([](WorkChannel& channel) { channel.Finish(3); }, {}, {});
    EXPECT_EQ(outcome.kind, Kind::Finished);
    EXPECT_EQ(outcome.status, 3);
}

TEST(Supervisor, HandsOverAFailureWithItsFile)
{
    const WorkOutcome outcome = Supervise(
        [](WorkChannel& channel) {
            channel.Fail({"out.png", "disk full"});
        },
        {}, {});
    EXPECT_EQ(outcome.kind, Kind::Failed);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.failure.file, "out.png");
    EXPECT_EQ(outcome.failure.reason, "disk full");
}

TEST(Supervisor, PassesWarningsAndProgressOnInOrder)
{
    std::string heard;
    WorkListener listener;
    listener.say = [&](std::string_view text) { heard += std::string(text) + "; "; };
    listener.progress = [&](std::string_view phase, double fraction) {
        heard += std::string(phase) + (fraction == 0.5 ? " half; " : "; ");
    };
    Supervise(
        [](WorkChannel& channel) {
            channel.Progress("reading the file", 0.5);
            channel.Warn("a part is lost");
            channel.InputIsRead();
            channel.Progress("drawing", -1);
            channel.Finish(0);
        },
        {}, listener);
    EXPECT_EQ(heard, "reading the file half; warning: a part is lost; drawing; ");
}

TEST(Supervisor, TurnsACrashIntoAReason)
{
    const WorkOutcome outcome = Supervise([](WorkChannel&) { std::abort(); }, {}, {});
    EXPECT_EQ(outcome.kind, Kind::Failed);
    EXPECT_EQ(outcome.failure.reason, "reading failed: the process crashed (Aborted)");
}

TEST(Supervisor, TurnsACrashAfterTheInputIntoAReason)
{
    const WorkOutcome outcome = Supervise(
        [](WorkChannel& channel) {
            channel.InputIsRead();
            std::abort();
        },
        {}, {});
    EXPECT_EQ(outcome.failure.reason, "drawing failed: the process crashed (Aborted)");
}

TEST(Supervisor, TurnsASilentEndIntoAFailure)
{
    const WorkOutcome outcome = Supervise([](WorkChannel&) { _exit(0); }, {}, {});
    EXPECT_EQ(outcome.kind, Kind::Failed);
    EXPECT_EQ(outcome.failure.reason, "reading failed: the process stopped without a word");
}

TEST(Supervisor, TurnsAnExceptionIntoAReason)
{
    const WorkOutcome outcome =
        Supervise([](WorkChannel&) { throw std::runtime_error("no luck"); }, {}, {});
    EXPECT_EQ(outcome.failure.reason, "internal error: no luck");
}

TEST(Supervisor, EndsWorkThatTakesLongerThanTheTimeLimit)
{
    const Clock::time_point start = Clock::now();
    const WorkOutcome outcome = Supervise([](WorkChannel&) { LoopForever(); }, {0, 1}, {});
    EXPECT_EQ(outcome.failure.reason, "reading and meshing took longer than 1 s (--time-limit)");
    EXPECT_LT(SecondsSince(start), 3.0);
}

TEST(Supervisor, DoesNotCountTheTimeAfterTheInput)
{
    const WorkOutcome outcome = Supervise(
        [](WorkChannel& channel) {
            channel.InputIsRead();
            std::this_thread::sleep_for(std::chrono::milliseconds(1300));
            channel.Finish(0);
        },
        {0, 1}, {});
    EXPECT_EQ(outcome.kind, Kind::Finished);
}

TEST(Supervisor, EndsWorkThatNeedsMoreMemoryThanTheLimit)
{
    const WorkOutcome outcome = Supervise(
        [](WorkChannel& channel) {
            std::vector<std::vector<char>> hoard;
            for (int i = 0; i < 2000; ++i) {
                hoard.emplace_back(std::size_t{1} << 20U, 'x');
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            channel.Finish(0);
        },
        {400, 60}, {});
    EXPECT_EQ(outcome.kind, Kind::Failed);
    EXPECT_EQ(outcome.failure.reason, "needs more than 400 MB of memory (--memory-limit)");
}

TEST(Supervisor, StopsWithinASecondWhenInterrupted)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        const pid_t program = fork();
        if (program == 0) {
            const WorkOutcome outcome = Supervise([](WorkChannel&) { LoopForever(); }, {}, {});
            _exit(outcome.kind == Kind::Interrupted ? outcome.status : 99);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        const Clock::time_point start = Clock::now();
        kill(program, signal);
        int status = 0;
        waitpid(program, &status, 0);
        EXPECT_LT(SecondsSince(start), GRACE);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), signal);
    }
}

TEST(Supervisor, KeepsASignalThatComesBeforeTheWork)
{
    const pid_t program = fork();
    if (program == 0) {
        const SignalWatch signals;
        raise(SIGINT);
        const WorkOutcome outcome =
            dataviz::Supervise([](WorkChannel&) { LoopForever(); }, {0, 20}, {}, signals);
        _exit(outcome.kind == Kind::Interrupted ? outcome.status : 99);
    }
    int status = 0;
    waitpid(program, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), SIGINT);
}

TEST(Supervisor, KeepsTheWorkFromTalkingOnStandardOutput)
{
    testing::internal::CaptureStdout();
    Supervise(
        [](WorkChannel& channel) {
            std::puts("a library talks");
            std::fflush(stdout);
            channel.Finish(0);
        },
        {}, {});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace dataviz
