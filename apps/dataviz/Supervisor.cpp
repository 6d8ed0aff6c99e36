#include "Supervisor.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <new>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dataviz {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IS_SANITIZED = true;
#elif defined(__has_feature)
#    if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool IS_SANITIZED = true;
#    else
constexpr bool IS_SANITIZED = false;
#    endif
#else
constexpr bool IS_SANITIZED = false;
#endif

using Clock = std::chrono::steady_clock;

constexpr std::uint64_t MEGABYTE = std::uint64_t{1} << 20U;
constexpr int WATCH_MILLISECONDS = 50;

volatile std::sig_atomic_t caughtSignal = 0;

extern "C" void RememberSignal(int signal) { caughtSignal = signal; }

bool WriteAll(int descriptor, const char* bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

// ---- child

void Silence(int descriptor)
{
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0) {
        dup2(nowhere, descriptor);
        close(nowhere);
    }
}

/// A sanitizer maps terabytes of address space, so a limit on it would end the child at once; there
/// the parent's watch on the resident memory has to do.
void LimitData(std::uint64_t bytes)
{
    if (IS_SANITIZED)
        return;
    rlimit limit{};
    if (getrlimit(RLIMIT_DATA, &limit) != 0)
        return;
    limit.rlim_cur = bytes == 0 ? limit.rlim_max : std::min<rlim_t>(bytes, limit.rlim_max);
    setrlimit(RLIMIT_DATA, &limit);
}

void PrepareChild(pid_t parent, const WorkLimits& limits)
{
    // The child must not outlive a parent that is killed hard.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(1);
    // Ctrl-C reaches the whole process group; the parent decides what it means.
    signal(SIGINT, SIG_IGN);
    signal(SIGTERM, SIG_DFL);
    signal(SIGHUP, SIG_DFL);
    signal(SIGPIPE, SIG_IGN);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    Silence(STDOUT_FILENO);
    if (!IS_SANITIZED)
        Silence(STDERR_FILENO);  // else the sanitizer's report would be lost
    LimitData(limits.megabytes * MEGABYTE);
}

std::string MemoryReason(const WorkLimits& limits)
{
    return "needs more than " + std::to_string(limits.megabytes) + " MB of memory (--memory-limit)";
}

[[noreturn]] void RunChild(const std::function<void(WorkChannel&)>& work, const WorkLimits& limits,
                           int descriptor)
{
    WorkChannel channel(descriptor);
    try {
        work(channel);
    } catch (const std::bad_alloc&) {
        channel.Fail({{}, MemoryReason(limits)});
    } catch (const std::exception& error) {
        channel.Fail({{}, std::string("internal error: ") + error.what()});
    }
    // Nothing is left to write, and the destructors of libraries at exit are one more place to
    // crash; but the leak check runs there.
    if (IS_SANITIZED)
        std::exit(0);
    _exit(0);
}

// ---- parent

std::uint64_t ResidentBytes(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    std::uint64_t total = 0;
    std::uint64_t resident = 0;
    file >> total >> resident;
    return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

class Watcher {
public:
    Watcher(pid_t child, int descriptor, const WorkLimits& limits, const WorkListener& listener)
        : child_(child), descriptor_(descriptor), limits_(limits), listener_(listener)
    {
    }

    WorkOutcome Watch(const sigset_t& mask);

private:
    bool Read();
    void Handle(char kind, std::string_view text);
    std::optional<Failure> BrokenLimit() const;
    WorkOutcome End();
    WorkOutcome Kill(WorkOutcome outcome);
    int Wait();

    pid_t child_;
    int descriptor_;
    const WorkLimits& limits_;
    const WorkListener& listener_;
    const Clock::time_point start_ = Clock::now();
    std::string pending_;
    bool isInputRead_ = false;
    std::optional<int> status_;
    std::optional<Failure> failure_;
};

int Watcher::Wait()
{
    int status = 0;
    while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

WorkOutcome Watcher::Kill(WorkOutcome outcome)
{
    kill(child_, SIGKILL);
    Wait();
    return outcome;
}

void Watcher::Handle(char kind, std::string_view text)
{
    switch (kind) {
    case 'S':
        if (listener_.say)
            listener_.say(text);
        break;
    case 'P': {
        const std::size_t space = text.find(' ');
        if (listener_.progress && space != std::string_view::npos)
            listener_.progress(text.substr(space + 1),
                               std::strtod(std::string(text.substr(0, space)).c_str(), nullptr));
        break;
    }
    case 'I':
        isInputRead_ = true;
        break;
    case 'D':
        status_ = std::atoi(std::string(text).c_str());
        break;
    case 'E': {
        const std::size_t end = text.find('\0');
        if (end != std::string_view::npos)
            failure_ = Failure{std::string(text.substr(0, end)), std::string(text.substr(end + 1))};
        break;
    }
    default:
        break;
    }
}

/// Takes what has arrived; false at the end of the child.
bool Watcher::Read()
{
    std::array<char, 65536> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    const ssize_t count = read(descriptor_, buffer.data(), buffer.size());
    if (count < 0)
        return errno == EINTR;
    pending_.append(buffer.data(), static_cast<std::size_t>(count));
    std::size_t at = 0;
    std::uint32_t length = 0;
    constexpr std::size_t HEAD = 1 + sizeof length;
    while (pending_.size() - at >= HEAD) {
        std::memcpy(&length, pending_.data() + at + 1, sizeof length);
        if (pending_.size() - at - HEAD < length)
            break;
        Handle(pending_[at], std::string_view(pending_).substr(at + HEAD, length));
        at += HEAD + length;
    }
    pending_.erase(0, at);
    return count > 0;
}

std::optional<Failure> Watcher::BrokenLimit() const
{
    if (isInputRead_)
        return std::nullopt;
    if (limits_.seconds > 0 && Clock::now() - start_ > std::chrono::seconds(limits_.seconds)) {
        return Failure{{},
                       "reading and meshing took longer than " + std::to_string(limits_.seconds) +
                           " s (--time-limit)"};
    }
    if (limits_.megabytes > 0 && ResidentBytes(child_) / MEGABYTE >= limits_.megabytes)
        return Failure{{}, MemoryReason(limits_)};
    return std::nullopt;
}

WorkOutcome Watcher::End()
{
    const int status = Wait();
    if (failure_)
        return {WorkOutcome::Kind::Failed, 1, *failure_};
    if (status_ && WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return {WorkOutcome::Kind::Finished, *status_, {}};
    const std::string what = isInputRead_ ? "drawing failed" : "reading failed";
    std::string how = "stopped without a word";
    if (WIFSIGNALED(status))
        how = std::string("crashed (") + strsignal(WTERMSIG(status)) + ")";
    return {WorkOutcome::Kind::Failed, 1, {{}, what + ": the process " + how}};
}

WorkOutcome Watcher::Watch(const sigset_t& mask)
{
    Clock::time_point nextLook = Clock::now();
    for (;;) {
        pollfd waiting{descriptor_, POLLIN, 0};
        const timespec pause{0, WATCH_MILLISECONDS * 1'000'000L};
        const int ready = ppoll(&waiting, 1, &pause, &mask);
        if (caughtSignal != 0)
            return Kill({WorkOutcome::Kind::Interrupted, caughtSignal, {}});
        if (ready > 0 && !Read())
            return End();
        if (Clock::now() < nextLook)
            continue;
        nextLook = Clock::now() + std::chrono::milliseconds(WATCH_MILLISECONDS);
        if (std::optional<Failure> failure = BrokenLimit())
            return Kill({WorkOutcome::Kind::Failed, 1, std::move(*failure)});
    }
}

WorkOutcome CannotStart()
{
    return {WorkOutcome::Kind::Failed,
            1,
            {{}, std::string("cannot start a process: ") + std::strerror(errno)}};
}

}  // namespace

// ---- signals

SignalWatch::SignalWatch()
{
    caughtSignal = 0;
    struct sigaction action {};
    action.sa_handler = RememberSignal;
    sigemptyset(&action.sa_mask);
    sigset_t blocked;
    sigemptyset(&blocked);
    for (std::size_t i = 0; i < SIGNALS.size(); ++i) {
        sigaction(SIGNALS[i], nullptr, &former_[i]);
        // A shell starts background jobs with SIGINT ignored, but whoever sends it means it; an
        // ignored SIGHUP means nohup.
        if (SIGNALS[i] == SIGHUP && former_[i].sa_handler == SIG_IGN)
            continue;
        sigaction(SIGNALS[i], &action, nullptr);
        sigaddset(&blocked, SIGNALS[i]);
    }
    // Delivered inside ppoll only, so that none slips through between a look and a wait.
    sigprocmask(SIG_BLOCK, &blocked, &formerMask_);
}

void SignalWatch::Restore()
{
    if (isRestored_)
        return;
    for (std::size_t i = 0; i < SIGNALS.size(); ++i)
        sigaction(SIGNALS[i], &former_[i], nullptr);
    sigprocmask(SIG_SETMASK, &formerMask_, nullptr);
    isRestored_ = true;
}

// ---- the child's side of the channel

void WorkChannel::Send(char kind, std::string_view text)
{
    constexpr std::size_t LONGEST = 1U << 20U;
    text = text.substr(0, LONGEST);
    const auto length = static_cast<std::uint32_t>(text.size());
    std::string message(1 + sizeof length, kind);
    std::memcpy(message.data() + 1, &length, sizeof length);
    message += text;
    WriteAll(descriptor_, message.data(), message.size());
}

void WorkChannel::Progress(std::string_view phase, double fraction)
{
    Send('P', std::to_string(fraction) + " " + std::string(phase));
}

void WorkChannel::InputIsRead()
{
    LimitData(0);
    Send('I', {});
}

void WorkChannel::Fail(const Failure& failure) { Send('E', failure.file + '\0' + failure.reason); }

// ---- the parent

WorkOutcome Supervise(const std::function<void(WorkChannel&)>& work, const WorkLimits& limits,
                      const WorkListener& listener, const SignalWatch& signals)
{
    std::array<int, 2> pipeEnds{};
    if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0)
        return CannotStart();
    const pid_t parent = getpid();
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        close(pipeEnds[0]);
        PrepareChild(parent, limits);
        sigprocmask(SIG_SETMASK, &signals.FormerMask(), nullptr);
        RunChild(work, limits, pipeEnds[1]);
    }
    const WorkOutcome failedFork = CannotStart();
    close(pipeEnds[1]);
    WorkOutcome outcome =
        child < 0 ? failedFork
                  : Watcher(child, pipeEnds[0], limits, listener).Watch(signals.FormerMask());
    close(pipeEnds[0]);
    return outcome;
}

}  // namespace dataviz
