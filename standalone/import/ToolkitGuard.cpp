#include "import/ToolkitGuard.h"

#include "import/Text.h"

#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_PrinterOStream.hxx>
#include <OSD.hxx>
#include <OSD_Parallel.hxx>
#include <OSD_Signal.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>

#include <chrono>
#include <exception>
#include <mutex>
#include <new>

namespace kuvimport {

namespace {

double Now()
{
    using Clock = std::chrono::steady_clock;
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

std::string ReasonOf(const Standard_Failure& failure)
{
    if (failure.IsKind(STANDARD_TYPE(OSD_Signal)))
        return "the importer crashed on this file";
    const char* text = failure.GetMessageString();
    std::string reason = std::string("the importer failed (") + failure.DynamicType()->Name();
    if (text && *text)
        reason += std::string(": ") + text;
    return OneLine(reason + ")");
}

}  // namespace

ToolkitSession::ToolkitSession()
{
    static std::once_flag once;
    std::call_once(once, [] {
        Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_PrinterOStream));
        // The toolkit's own pool guards each of its threads against faults; the other library's
        // does not.
        OSD_Parallel::SetUseOcctThreads(Standard_True);
    });
    for (std::size_t i = 0; i < SIGNALS.size(); ++i)
        sigaction(SIGNALS[i], nullptr, &former_[i]);
    OSD::SetSignal(Standard_False);
    for (std::size_t i = 0; i < SIGNALS.size(); ++i) {
        if (SIGNALS[i] == SIGINT || SIGNALS[i] == SIGHUP || SIGNALS[i] == SIGQUIT)
            sigaction(SIGNALS[i], &former_[i], nullptr);
    }
}

ToolkitSession::~ToolkitSession()
{
    for (std::size_t i = 0; i < SIGNALS.size(); ++i)
        sigaction(SIGNALS[i], &former_[i], nullptr);
}

std::string RunGuarded(const std::function<void()>& work)
{
    try {
        OCC_CATCH_SIGNALS
        work();
        return {};
    } catch (const Standard_Failure& failure) {
        return ReasonOf(failure);
    } catch (const std::bad_alloc&) {
        return "the importer ran out of memory";
    } catch (const std::exception& problem) {
        return OneLine(std::string("the importer failed (") + problem.what() + ")");
    }
}

MonitorIndicator::MonitorIndicator(ImportMonitor* monitor, ImportStage stage, double from,
                                   double to)
    : monitor_(monitor), stage_(stage), from_(from), to_(to)
{
}

Standard_Boolean MonitorIndicator::UserBreak() { return IsCancelled(monitor_); }

void MonitorIndicator::Show(const Message_ProgressScope& /*scope*/, Standard_Boolean /*isForce*/)
{
    if (monitor_)
        monitor_->Progress(stage_, from_ + (to_ - from_) * GetPosition());
}

Stopwatch::Stopwatch() : start_(Now()) {}

double Stopwatch::Seconds() const { return Now() - start_; }

bool IsCancelled(ImportMonitor* monitor) { return monitor && monitor->IsCancelled(); }

}  // namespace kuvimport
