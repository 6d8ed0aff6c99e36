#include "core/Assertion.h"

#include "KUVObjectModel.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

std::string reported;

void Note(const char* message, const char* source, int line)
{
    reported = std::string(source) + '|' + message + '|' + std::to_string(line);
}

}  // namespace

TEST(CheckFailure, ReportsToTheSinkAndGoesOn)
{
    const core::FailureSink former = core::SetFailureSink(&Note);
    CheckFailure__("no widget", "VisualizationCommands/KUVDataViz.m/src/Some", 42, nullptr);
    EXPECT_EQ(reported, "VisualizationCommands/KUVDataViz.m/src/Some|no widget|42");
    EXPECT_EQ(core::SetFailureSink(former), &Note);
}

TEST(CheckFailure, MissingTextsAreEmpty)
{
    const core::FailureSink former = core::SetFailureSink(&Note);
    CheckFailure__(nullptr, nullptr, 0, nullptr);
    EXPECT_EQ(reported, "||0");
    core::SetFailureSink(former);
}

TEST(CheckFailure, WritesOneLineToStandardErrorByDefault)
{
    core::SetFailureSink(nullptr);
    testing::internal::CaptureStderr();
    CheckFailure__("no widget", "src/Some", 42, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "src/Some:42: check failed: no widget\n");
}

TEST(KUVGetEnv, TellsWhetherAVariableIsSetAndWhatItSays)
{
    ASSERT_EQ(setenv("KUV_CORE_TEST", "value", 1), 0);
    EXPECT_STREQ(KUVGetEnv("KUV_CORE_TEST"), "value");
    ASSERT_EQ(setenv("KUV_CORE_TEST", "", 1), 0);
    EXPECT_STREQ(KUVGetEnv("KUV_CORE_TEST"), "") << "an empty variable is set";
    ASSERT_EQ(unsetenv("KUV_CORE_TEST"), 0);
    EXPECT_EQ(KUVGetEnv("KUV_CORE_TEST"), nullptr);
    EXPECT_EQ(KUVGetEnv(nullptr), nullptr);
}
