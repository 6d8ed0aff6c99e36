#include "core/ResourcePaths.h"

#include "KUV2D.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

/// Two folders of resources that the environment names, for one test.
class ResourcePaths : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "kuv_resources_XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        base_ = name;
        Write("first/icons/I_Test.png", "first");
        Write("second/icons/I_Test.png", "second");
        Write("second/icons/I_Only.png", "only");
        const std::string listed = (base_ / "first").string() + "::" + (base_ / "second").string();
        ASSERT_EQ(setenv("KUV_RESOURCES", listed.c_str(), 1), 0);
    }

    void TearDown() override
    {
        unsetenv("KUV_RESOURCES");
        fs::remove_all(base_);
    }

    void Write(const fs::path& file, const std::string& text) const
    {
        fs::create_directories((base_ / file).parent_path());
        std::ofstream(base_ / file) << text;
    }

    fs::path base_;
};

}  // namespace

TEST_F(ResourcePaths, TheEnvironmentsFoldersComeFirstInTheirOrder)
{
    const std::vector<std::string> folders = core::ResourceFolders();
    ASSERT_GE(folders.size(), 3U);
    EXPECT_EQ(folders[0], (base_ / "first").string());
    EXPECT_EQ(folders[1], (base_ / "second").string()) << "an empty entry names no folder";
}

TEST_F(ResourcePaths, TheFirstFolderThatHasTheFileWins)
{
    EXPECT_EQ(core::FindResource("icons", "I_Test.png"),
              (base_ / "first/icons/I_Test.png").string());
    EXPECT_EQ(core::FindResource("icons", "I_Only.png"),
              (base_ / "second/icons/I_Only.png").string());
}

TEST_F(ResourcePaths, WhatNoFolderHasIsEmpty)
{
    EXPECT_EQ(core::FindResource("icons", "I_Absent.png"), "");
    EXPECT_EQ(core::FindResource("styles", "I_Test.png"), "");
}

TEST_F(ResourcePaths, NamesThatLeadOutOfTheFolderFindNothing)
{
    Write("first/secret.png", "secret");
    Write("first/icons/deeper/I_Deep.png", "deep");
    EXPECT_EQ(core::FindResource("icons", "../secret.png"), "");
    EXPECT_EQ(core::FindResource("icons", "deeper/I_Deep.png"), "");
    EXPECT_EQ(core::FindResource("icons", (base_ / "first/secret.png").string()), "");
    EXPECT_EQ(core::FindResource("icons", std::string("I_Test.png\0x", 12)), "");
    EXPECT_EQ(core::FindResource("icons", ""), "");
    EXPECT_EQ(core::FindResource("icons", "."), "");
    EXPECT_EQ(core::FindResource("icons", ".."), "");
    EXPECT_EQ(core::FindResource("icons", "deeper"), "") << "a folder is no file";
}

TEST_F(ResourcePaths, TheProjectsOwnFoldersFollow)
{
    unsetenv("KUV_RESOURCES");
    const std::vector<std::string> folders = core::ResourceFolders();
    const std::string own =
        std::string(KUV_SOURCE_DIR) + "/VisualizationCommands/KUVDataViz.m/resources";
    EXPECT_NE(std::find(folders.begin(), folders.end(), own), folders.end());
    const auto besideTheLibrary =
        std::find_if(folders.begin(), folders.end(), [](const std::string& folder) {
            return folder.find("/../share/kuvdataviz") != std::string::npos;
        });
    EXPECT_NE(besideTheLibrary, folders.end());
}

TEST_F(ResourcePaths, ImagesAreFoundAmongTheIcons)
{
    EXPECT_EQ(KUVGetImagePathNameEx("I_Only.png"),
              KUVUnicodeString((base_ / "second/icons/I_Only.png").string()));
    EXPECT_TRUE(KUVGetImagePathNameEx("I_Absent.png").IsEmpty());
    EXPECT_TRUE(KUVGetImagePathNameEx("").IsEmpty());
    for (const char* const name :
         {"I_VisFace.png", "I_VisEdge.png", "I_VisVertex.png", "VisLevelSelectorGeometry.png",
          "I_VisProduct.png", "I_VisAssembly.png", "I_VisPart.png"})
        EXPECT_FALSE(KUVGetImagePathNameEx(name).IsEmpty()) << name;
}
