/// What stands between Open CASCADE and the program: no messages on standard output, faults of the
/// machine turned into errors, progress and cancelling handed through. Only this folder includes
/// it.
#ifndef IMPORT_TOOLKIT_GUARD_H
#define IMPORT_TOOLKIT_GUARD_H

#include "import/ModelImport.h"

#include <Message_ProgressIndicator.hxx>

#include <array>
#include <csignal>
#include <functional>
#include <string>

namespace kuvimport {

/// While it lives, faults of the machine reach `RunGuarded` instead of ending the process. The
/// handlers that were there before come back with its end; interrupts (Ctrl-C, hang-up) are left to
/// the program throughout. Also silences the toolkit's message printers, for good.
class ToolkitSession {
public:
    ToolkitSession();
    ~ToolkitSession();
    ToolkitSession(const ToolkitSession&) = delete;
    ToolkitSession& operator=(const ToolkitSession&) = delete;

private:
    static constexpr std::array<int, 8> SIGNALS{SIGINT, SIGHUP, SIGQUIT, SIGSEGV,
                                                SIGBUS, SIGILL, SIGFPE,  SIGSYS};
    std::array<struct sigaction, SIGNALS.size()> former_{};
};

/// Runs `work` and answers an empty string, or the reason in one line when it threw or faulted.
/// Needs a living `ToolkitSession`.
///
/// A fault (bad memory access, division by zero) leaves `work` by a long jump: locals are not
/// destroyed and whatever was being filled is to be thrown away. Valid in any thread.
std::string RunGuarded(const std::function<void()>& work);

/// The toolkit's view of an `ImportMonitor`.
class MonitorIndicator : public Message_ProgressIndicator {
    DEFINE_STANDARD_RTTI_INLINE(MonitorIndicator, Message_ProgressIndicator)
public:
    /// `monitor` may be null and is not owned. The reported fraction runs from `from` to `to`.
    MonitorIndicator(ImportMonitor* monitor, ImportStage stage, double from = 0, double to = 1);

protected:
    Standard_Boolean UserBreak() override;
    void Show(const Message_ProgressScope& scope, Standard_Boolean isForce) override;

private:
    ImportMonitor* monitor_;
    ImportStage stage_;
    double from_;
    double to_;
};

/// Seconds since its construction.
class Stopwatch {
public:
    Stopwatch();
    double Seconds() const;

private:
    double start_;
};

bool IsCancelled(ImportMonitor* monitor);

}  // namespace kuvimport

#endif
