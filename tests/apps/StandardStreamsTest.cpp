// What the program does when a standard stream is closed or full: a shell sets it up.

#include "Program.h"

#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace dataviz::tests {

namespace {

class StandardStreams : public testing::Test {
protected:
    /// Runs the program with these words and redirections; gives its exit status.
    int Run(const std::string& words)
    {
        const std::string command =
            "cd '" + (folder_ / "") + "' && '" KUV_DATAVIZ_PROGRAM "' " + words;
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    ScratchFolder folder_;
    std::string tree_ = folder_.Write("ok.json", R"({"label":"a"})");
};

}  // namespace

TEST_F(StandardStreams, MakeAPictureFailWhenTheOutputIsClosed)
{
    EXPECT_EQ(Run("render ok.json -o - --format png >&- 2>err"), 1);
    EXPECT_EQ(ReadFile(folder_ / "err"), "dataviz: -: cannot be written: Bad file descriptor\n");
}

TEST_F(StandardStreams, MakeInfoFailWhenTheOutputIsClosed)
{
    EXPECT_EQ(Run("info ok.json >&- 2>err"), 1);
    EXPECT_EQ(ReadFile(folder_ / "err"), "dataviz: -: cannot be written: Bad file descriptor\n");
}

TEST_F(StandardStreams, AreNotNeededForAPictureInAFile)
{
    EXPECT_EQ(Run("render ok.json -o picture.svg <&- >&- 2>&-"), 0);
    EXPECT_NE(ReadFile(folder_ / "picture.svg").find("</svg>"), std::string::npos);
}

TEST_F(StandardStreams, MakeATreeFailWhenTheInputIsClosed)
{
    EXPECT_EQ(Run("info - <&- >out 2>err"), 1);
    EXPECT_EQ(ReadFile(folder_ / "err"), "dataviz: -: cannot be read: Bad file descriptor\n");
}

TEST_F(StandardStreams, MakeHelpSayOnOneLineThatTheOutputIsFull)
{
    EXPECT_EQ(Run("--help >/dev/full 2>err"), 1);
    EXPECT_EQ(ReadFile(folder_ / "err"),
              "dataviz: -: cannot be written: No space left on device\n");
}

}  // namespace dataviz::tests
