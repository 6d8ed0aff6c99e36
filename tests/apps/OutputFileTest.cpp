#include "OutputFile.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dataviz {

namespace {

namespace fs = std::filesystem;

class OutputFileTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "output-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::size_t Entries() const
    {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
    }
    static void Write(const std::string& path, const std::string& text)
    {
        std::ofstream(path) << text;
    }
    static std::string ReadBack(const fs::path& path)
    {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    fs::path folder_;
};

}  // namespace

TEST_F(OutputFileTest, AppearsOnlyWhenItIsCommitted)
{
    const fs::path target = folder_ / "picture.svg";
    OutputFile file;
    ASSERT_EQ(file.Open(target.string()), "");
    Write(file.TemporaryPath(), "picture");
    EXPECT_FALSE(fs::exists(target));
    EXPECT_EQ(fs::path(file.TemporaryPath()).parent_path(), folder_) << "a rename needs one folder";
    ASSERT_EQ(file.Commit(), "");
    EXPECT_EQ(ReadBack(target), "picture");
    EXPECT_EQ(Entries(), 1u);
}

TEST_F(OutputFileTest, LeavesNothingBehindWithoutCommit)
{
    {
        OutputFile file;
        ASSERT_EQ(file.Open((folder_ / "picture.svg").string()), "");
        EXPECT_EQ(Entries(), 1u);
    }
    EXPECT_EQ(Entries(), 0u);
}

TEST_F(OutputFileTest, KeepsAnEarlierFileUntilTheNewOneIsComplete)
{
    const fs::path target = folder_ / "picture.svg";
    Write(target.string(), "earlier");
    {
        OutputFile file;
        ASSERT_EQ(file.Open(target.string()), "");
        Write(file.TemporaryPath(), "half");
    }
    EXPECT_EQ(ReadBack(target), "earlier");
}

TEST_F(OutputFileTest, ReplacesWhatALinkPointsAtAndKeepsTheLink)
{
    Write((folder_ / "real.svg").string(), "earlier");
    fs::create_symlink("real.svg", folder_ / "link.svg");
    OutputFile file;
    ASSERT_EQ(file.Open((folder_ / "link.svg").string()), "");
    Write(file.TemporaryPath(), "new");
    ASSERT_EQ(file.Commit(), "");
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.svg"));
    EXPECT_EQ(ReadBack(folder_ / "real.svg"), "new");
}

TEST_F(OutputFileTest, CreatesWhatADanglingLinkPointsAtAndKeepsTheLink)
{
    fs::create_directory(folder_ / "sub");
    fs::create_symlink("sub/second.svg", folder_ / "first.svg");
    fs::create_symlink("real.svg", folder_ / "sub" / "second.svg");
    OutputFile file;
    ASSERT_EQ(file.Open((folder_ / "first.svg").string()), "");
    Write(file.TemporaryPath(), "new");
    ASSERT_EQ(file.Commit(), "");
    EXPECT_TRUE(fs::is_symlink(folder_ / "first.svg"));
    EXPECT_TRUE(fs::is_symlink(folder_ / "sub" / "second.svg"));
    EXPECT_FALSE(fs::is_symlink(folder_ / "sub" / "real.svg"));
    EXPECT_EQ(ReadBack(folder_ / "sub" / "real.svg"), "new");
}

TEST_F(OutputFileTest, RefusesARingOfLinks)
{
    fs::create_symlink("b.svg", folder_ / "a.svg");
    fs::create_symlink("a.svg", folder_ / "b.svg");
    OutputFile file;
    EXPECT_EQ(file.Open((folder_ / "a.svg").string()),
              "cannot be written: Too many levels of symbolic links");
    EXPECT_TRUE(fs::is_symlink(folder_ / "a.svg"));
    EXPECT_EQ(Entries(), 2u);
}

TEST_F(OutputFileTest, HasTheRightsOfAnyNewFile)
{
    const mode_t former = umask(027);
    OutputFile file;
    EXPECT_EQ(file.Open((folder_ / "picture.svg").string()), "");
    EXPECT_EQ(file.Commit(), "");
    umask(former);
    struct stat status {};
    stat((folder_ / "picture.svg").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0640u);
}

TEST_F(OutputFileTest, WritesThroughADeviceInsteadOfReplacingIt)
{
    OutputFile file;
    ASSERT_EQ(file.Open("/dev/null"), "");
    Write(file.TemporaryPath(), "picture");
    EXPECT_EQ(file.Commit(), "");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(OutputFileTest, SaysWhyATargetCannotBeWritten)
{
    OutputFile file;
    EXPECT_EQ(file.Open((folder_ / "absent" / "picture.svg").string()),
              "cannot be written: No such file or directory");
    EXPECT_EQ(file.Open(folder_.string()), "cannot be written: Is a directory");
}

TEST_F(OutputFileTest, SaysWhenADeviceIsFull)
{
    OutputFile file;
    ASSERT_EQ(file.Open("/dev/full"), "");
    Write(file.TemporaryPath(), "picture");
    EXPECT_EQ(file.Commit(), "cannot be written: No space left on device");
}

}  // namespace dataviz
