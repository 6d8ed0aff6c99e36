#include "import/ToolkitGuard.h"

#include "import_files.h"

#include <Standard_OutOfRange.hxx>

#include <csignal>
#include <new>
#include <stdexcept>
#include <thread>

namespace {

using namespace kuvimport;

/// Opaque to the optimiser.
int* volatile nowhere = nullptr;

void ReadFromNowhere() { *nowhere = 1; }

TEST(ToolkitGuard, WorkThatEndsWellHasNoReason)
{
    const ToolkitSession session;
    bool ran = false;
    EXPECT_EQ(RunGuarded([&] { ran = true; }), "");
    EXPECT_TRUE(ran);
}

TEST(ToolkitGuard, EveryKindOfExceptionBecomesAReasonInOneLine)
{
    const ToolkitSession session;
    EXPECT_EQ(RunGuarded([] { throw Standard_OutOfRange("first\nsecond"); }),
              "the importer failed (Standard_OutOfRange: first second)");
    EXPECT_EQ(RunGuarded([] { throw std::runtime_error("too odd"); }),
              "the importer failed (too odd)");
    EXPECT_EQ(RunGuarded([] { throw std::bad_alloc(); }), "the importer ran out of memory");
}

TEST(ToolkitGuard, AFaultOfTheMachineBecomesAReasonInEveryThread)
{
    const ToolkitSession session;
    EXPECT_EQ(RunGuarded(ReadFromNowhere), "the importer crashed on this file");
    std::string reason;
    std::thread([&] { reason = RunGuarded(ReadFromNowhere); }).join();
    EXPECT_EQ(reason, "the importer crashed on this file");
    EXPECT_EQ(RunGuarded(ReadFromNowhere), "the importer crashed on this file") << "again";
}

void Ignore(int /*number*/) {}

TEST(ToolkitGuard, TheProgramsOwnHandlersComeBack)
{
    struct sigaction own {};
    own.sa_handler = Ignore;
    struct sigaction beforeFault {};
    struct sigaction beforeInterrupt {};
    sigaction(SIGBUS, &own, &beforeFault);
    sigaction(SIGINT, &own, &beforeInterrupt);
    struct sigaction seen {};
    {
        const ToolkitSession session;
        sigaction(SIGBUS, nullptr, &seen);
        EXPECT_NE(seen.sa_handler, &Ignore);
        sigaction(SIGINT, nullptr, &seen);
        EXPECT_EQ(seen.sa_handler, &Ignore) << "interrupts stay the program's throughout";
    }
    sigaction(SIGBUS, &beforeFault, &seen);
    EXPECT_EQ(seen.sa_handler, &Ignore);
    sigaction(SIGINT, &beforeInterrupt, nullptr);
}

TEST(ToolkitGuard, NothingIsPrintedOnStandardOutput)
{
    const importtest::Folder folder;
    const std::string text = importtest::ReadFile(importtest::Example());
    const std::string path = folder.Write("cut.step", text.substr(0, text.size() / 2));
    testing::internal::CaptureStdout();
    importtest::Import(path);
    importtest::Import(importtest::Example());
    importtest::Import(folder.Write("bad.stl", "this is no mesh"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
