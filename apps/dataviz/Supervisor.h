#pragma once

#include <array>
#include <csignal>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace dataviz {

/// Why a piece of work failed, in the parts of the one line "dataviz: FILE: reason".
struct Failure {
    std::string file;    ///< as the user gave it; empty for the command's input
    std::string reason;  ///< one line
};

/// How the work talks to the supervising process. Lives in the child process.
class WorkChannel {
public:
    /// Writes to the descriptor, which stays the caller's.
    explicit WorkChannel(int descriptor) : descriptor_(descriptor) {}

    /// Something that the user should know; the work goes on.
    void Say(std::string_view text) { Send('S', text); }
    /// Something of the input is lost; the work goes on.
    void Warn(const std::string& text) { Say("warning: " + text); }
    /// What is done now; `fraction` from 0 to 1, or below 0 when nobody knows.
    void Progress(std::string_view phase, double fraction);
    /// Reading and meshing are over: from now on the limits hold no more.
    void InputIsRead();
    /// The work cannot be finished. Nothing else is sent after it.
    void Fail(const Failure& failure);
    /// The work is finished, with the exit status that the program should have.
    void Finish(int status) { Send('D', std::to_string(status)); }

private:
    void Send(char kind, std::string_view text);

    int descriptor_;
};

/// What may be asked of the work while it reads its input. 0 stands for no limit.
struct WorkLimits {
    std::uint64_t megabytes = 0;
    std::uint64_t seconds = 0;
};

/// Receives what the work says, in the supervising process.
struct WorkListener {
    std::function<void(std::string_view text)> say;
    std::function<void(std::string_view phase, double fraction)> progress;
};

struct WorkOutcome {
    enum class Kind {
        Finished,    ///< `status` is the exit status
        Failed,      ///< `failure` says why
        Interrupted  ///< by the signal `status`
    };
    Kind kind = Kind::Failed;
    int status = 1;
    Failure failure;
};

/// Keeps SIGINT, SIGTERM and SIGHUP back from its construction on, so that none of them can end the
/// program between two steps that belong together; `Supervise` lets them through. SIGHUP stays
/// ignored where it was (nohup). Make at most one at a time, before any thread is started.
class SignalWatch {
public:
    SignalWatch();
    ~SignalWatch() { Restore(); }
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    /// Puts everything back as it was; a signal that came meanwhile does then what it always does.
    void Restore();

    /// The signals that were kept back before this watch.
    const sigset_t& FormerMask() const { return formerMask_; }

private:
    static constexpr std::array SIGNALS{SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, SIGNALS.size()> former_{};
    sigset_t formerMask_{};
    bool isRestored_ = false;
};

/// Runs `work` in a child process and waits for its end.
///
/// A crash, a loop beyond the time limit or a hunger for memory ends the child, never this process,
/// and comes back as a failure with a reason in words. SIGINT, SIGTERM and SIGHUP end the child at
/// once. The child's standard output and error go nowhere: libraries talk there, and the user gets
/// one line.
///
/// Call it before any thread is started; the work may start threads. The memory limit counts the
/// child's own data; an allocation beyond it fails in the child.
WorkOutcome Supervise(const std::function<void(WorkChannel&)>& work, const WorkLimits& limits,
                      const WorkListener& listener, const SignalWatch& signals);

}  // namespace dataviz
