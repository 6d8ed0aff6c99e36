// dataviz: the command line tool. Reads the options, has the work done in a supervised child
// process, and gives its output its name.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "Commands.h"
#include "FileWriting.h"
#include "OneLine.h"
#include "Options.h"
#include "OutputFile.h"
#include "Supervisor.h"

namespace {

using namespace dataviz;  // NOLINT(google-build-using-namespace): the program is this namespace's

constexpr int INPUT_OR_OUTPUT_ERROR = 1;
constexpr int SIGNAL_BASE = 128;

/// One line on standard error.
void Report(const std::string& file, std::string_view text)
{
    std::fprintf(stderr, "%s\n", OneLine("dataviz: " + file + ": " + std::string(text)).c_str());
}

/// Says how far the work is: on a terminal in one line that goes away again, elsewhere one line for
/// each step with its time.
class ProgressDisplay {
public:
    ProgressDisplay(ProgressMode mode, const std::string& file)
        : isTerminal_(mode == ProgressMode::WhenTerminal && isatty(STDERR_FILENO) != 0),
          isLog_(mode == ProgressMode::Always), file_(OneLine(file))
    {
    }

    void Show(std::string_view phase, double fraction)
    {
        if (isTerminal_) {
            const std::string percent =
                fraction < 0 ? "" : " " + std::to_string(static_cast<int>(fraction * 100)) + " %";
            std::fprintf(stderr, "\r\033[K%s: %.*s%s", file_.c_str(),
                         static_cast<int>(phase.size()), phase.data(), percent.c_str());
        } else if (isLog_ && phase != phase_) {
            EndPhase();
            phase_ = phase;
        }
    }

    /// Call before anything else is written and at the end.
    void Clear()
    {
        if (isTerminal_)
            std::fprintf(stderr, "\r\033[K");
    }

    void EndPhase()
    {
        const Clock::time_point now = Clock::now();
        if (isLog_ && !phase_.empty()) {
            char seconds[32];
            std::snprintf(seconds, sizeof seconds, "%.3f s",
                          std::chrono::duration<double>(now - start_).count());
            Report(file_, phase_ + ": " + seconds);
        }
        start_ = now;
        phase_.clear();
    }

private:
    using Clock = std::chrono::steady_clock;

    bool isTerminal_;
    bool isLog_;
    std::string file_;
    std::string phase_;
    Clock::time_point start_ = Clock::now();
};

/// Runs the work and gives the exit status of the program.
template <typename Options, typename Work>
int Run(const Options& options, const std::string& target, const Work& work)
{
    SignalWatch signals;
    OutputFile output;
    std::string problem = output.Open(target);
    if (!problem.empty()) {
        Report(target, problem);
        return INPUT_OR_OUTPUT_ERROR;
    }
    ProgressDisplay progress(options.progress, options.input);
    WorkListener listener;
    listener.say = [&](std::string_view text) {
        progress.Clear();
        Report(options.input, text);
    };
    listener.progress = [&](std::string_view phase, double fraction) {
        progress.Show(phase, fraction);
    };
    const WorkOutcome outcome =
        Supervise([&](WorkChannel& channel) { work(options, output.TemporaryPath(), channel); },
                  {options.model.memoryLimit, options.model.timeLimit}, listener, signals);
    progress.Clear();
    progress.EndPhase();
    switch (outcome.kind) {
    case WorkOutcome::Kind::Interrupted:
        return SIGNAL_BASE + outcome.status;
    case WorkOutcome::Kind::Failed:
        Report(outcome.failure.file.empty() ? options.input : outcome.failure.file,
               outcome.failure.reason);
        return INPUT_OR_OUTPUT_ERROR;
    case WorkOutcome::Kind::Finished:
        // A reader may keep the copy waiting for as long as it likes; then Ctrl-C is the way out.
        if (output.IsCopied())
            signals.Restore();
        problem = output.Commit();
        break;
    }
    if (!problem.empty()) {
        Report(target, problem);
        return INPUT_OR_OUTPUT_ERROR;
    }
    return outcome.status;
}

/// Files that are opened later must not take the place of a standard stream that the caller has
/// closed: what is written to that stream would end up in them. Using a closed stream fails.
void FillClosedStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", stream == STDOUT_FILENO ? O_RDONLY : O_WRONLY);
    }
}

int PrintAnswer(const Answer& answer)
{
    std::fputs(answer.text.c_str(), answer.status == 0 ? stdout : stderr);
    if (std::fflush(stdout) == 0)
        return answer.status;
    Report("-", WriteReason());
    return INPUT_OR_OUTPUT_ERROR;
}

int RunCommandLine(int count, char** words)
{
    const CommandLine command = ParseCommandLine(count, words);
    if (const auto* const answer = std::get_if<Answer>(&command))
        return PrintAnswer(*answer);
    if (const auto* const render = std::get_if<RenderOptions>(&command))
        return Run(*render, render->output, RunRender);
    return Run(std::get<InfoOptions>(command), "-", RunInfo);
}

}  // namespace

int main(int count, char** words)
{
    FillClosedStandardStreams();
    // A reader that goes away is an error to report, not a reason to leave the temporary file
    // behind.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return RunCommandLine(count, words);
    } catch (const std::exception& error) {
        Report("internal error", error.what());
        return INPUT_OR_OUTPUT_ERROR;
    }
}
