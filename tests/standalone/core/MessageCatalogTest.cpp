#include "support/Allocations.h"

#include "KUVMessages.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>

namespace {

namespace fs = std::filesystem;

/// A folder of catalogs and a language, for one test.
class MsgCatalog : public testing::Test {
protected:
    void SetUp() override
    {
        for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
            unsetenv(variable);
        std::string name = testing::TempDir() + "kuv_catalogs_XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        base_ = name;
        fs::create_directories(base_ / "catalogs");
        ASSERT_EQ(setenv("KUV_RESOURCES", base_.c_str(), 1), 0);
    }

    void TearDown() override
    {
        for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG", "KUV_RESOURCES"})
            unsetenv(variable);
        fs::remove_all(base_);
    }

    void Write(const std::string& file, const std::string& text) const
    {
        std::ofstream(base_ / "catalogs" / file) << text;
    }

    static std::string Text(const char* catalog, const char* key,
                            const KUVUnicodeString& defaultText = "default")
    {
        return KUVMsgCatalog::BuildMessage(catalog, key, nullptr, 0, defaultText).GetUtf8();
    }

    fs::path base_;
};

}  // namespace

TEST_F(MsgCatalog, TheProjectsCatalogsHaveTheirKeysInEnglish)
{
    EXPECT_EQ(Text("MechModNLS", "Point"), "Point");
    EXPECT_EQ(Text("MechModNLS", "Line"), "Line");
    EXPECT_EQ(Text("MechModNLS", "FeatureREDGE"), "Edge");
    EXPECT_EQ(Text("MechModNLS", "FeatureRSUR"), "Face");
    EXPECT_EQ(Text("VisDrillTreeMap", "NotLoaded"), "Not loaded");
}

TEST_F(MsgCatalog, AnUnknownCatalogOrKeyGivesTheDefaultText)
{
    EXPECT_EQ(Text("Absent", "Point"), "default");
    EXPECT_EQ(Text("MechModNLS", "Absent"), "default");
    EXPECT_EQ(Text(nullptr, "Point"), "default");
    EXPECT_EQ(Text("MechModNLS", nullptr), "default");
    EXPECT_EQ(Text("MechModNLS", "Absent", ""), "");
    EXPECT_EQ(Text("../catalogs/MechModNLS", "Point"), "default") << "a catalog's name is no path";
}

TEST_F(MsgCatalog, EveryFurtherLanguageIsOneMoreFile)
{
    Write("Parts.en.catalog", "Rotor = Rotor\nHousing = Housing\n");
    Write("Parts.de.catalog", "Rotor = L\xC3\xA4ufer\n");
    Write("Parts.de_AT.catalog", "Rotor = L\xC3\xA4uferl\n");
    ASSERT_EQ(setenv("LANG", "de_DE.UTF-8", 1), 0);
    EXPECT_EQ(Text("Parts", "Rotor"), "L\xC3\xA4ufer") << "the language without its country";
    EXPECT_EQ(Text("Parts", "Housing"), "Housing") << "a missing text is English";
    ASSERT_EQ(setenv("LANG", "de_AT.UTF-8@euro", 1), 0);
    EXPECT_EQ(Text("Parts", "Rotor"), "L\xC3\xA4uferl");
    ASSERT_EQ(setenv("LANG", "fr", 1), 0);
    EXPECT_EQ(Text("Parts", "Rotor"), "Rotor");
}

TEST_F(MsgCatalog, TheVariablesOfTheLocaleCountInTheirOrder)
{
    Write("Parts.en.catalog", "Rotor = Rotor\n");
    Write("Parts.de.catalog", "Rotor = L\xC3\xA4ufer\n");
    Write("Parts.fr.catalog", "Rotor = Rotor fr\n");
    ASSERT_EQ(setenv("LANG", "de", 1), 0);
    ASSERT_EQ(setenv("LC_MESSAGES", "fr", 1), 0);
    EXPECT_EQ(Text("Parts", "Rotor"), "Rotor fr");
    ASSERT_EQ(setenv("LC_ALL", "de", 1), 0);
    EXPECT_EQ(Text("Parts", "Rotor"), "L\xC3\xA4ufer");
    ASSERT_EQ(setenv("LC_ALL", "", 1), 0);
    EXPECT_EQ(Text("Parts", "Rotor"), "Rotor fr") << "an empty variable does not count";
    ASSERT_EQ(setenv("LC_ALL", "C.UTF-8", 1), 0);
    EXPECT_EQ(Text("Parts", "Rotor"), "Rotor");
    ASSERT_EQ(setenv("LC_ALL", "POSIX", 1), 0);
    EXPECT_EQ(Text("Parts", "Rotor"), "Rotor");
    ASSERT_EQ(setenv("LC_ALL", "../../de", 1), 0);
    EXPECT_EQ(Text("Parts", "Rotor"), "Rotor") << "a language that is no language is English";
}

TEST_F(MsgCatalog, CommentsBlanksAndEscapesAreUnderstood)
{
    Write("Odd.en.catalog", "# A comment = none\r\n"
                            "\r\n"
                            "no equals sign\n"
                            "  Spaced  =  two words \t\r\n"
                            "Equals = a = b\n"
                            "Lines = one\\ntwo\\\\three\\\n"
                            "Empty =\n"
                            "Twice = first\n"
                            "Twice = second");
    EXPECT_EQ(Text("Odd", "# A comment"), "default");
    EXPECT_EQ(Text("Odd", "no equals sign"), "default");
    EXPECT_EQ(Text("Odd", "Spaced"), "two words");
    EXPECT_EQ(Text("Odd", "Equals"), "a = b");
    EXPECT_EQ(Text("Odd", "Lines"), "one\ntwo\\three\\");
    EXPECT_EQ(Text("Odd", "Empty"), "");
    EXPECT_EQ(Text("Odd", "Twice"), "second");
}

TEST_F(MsgCatalog, ParametersTakeTheirPlaces)
{
    Write("Params.en.catalog", "Pair = /P2 of /P1\nTen = /P10/P1\nOdd = /P/P0/P3/Px/P1\n");
    KUVUnicodeString parameters[10];
    parameters[0] = "Pump";
    parameters[1] = "/P1";
    parameters[9] = "ten";
    const auto build = [&parameters](const char* key, int count) {
        return std::string(
            KUVMsgCatalog::BuildMessage("Params", key, parameters, count, "").GetUtf8());
    };
    EXPECT_EQ(build("Pair", 2), "/P1 of Pump") << "a parameter is not searched for places";
    EXPECT_EQ(build("Pair", 1), "/P2 of Pump") << "a place without parameter stays";
    EXPECT_EQ(build("Pair", 0), "/P2 of /P1");
    EXPECT_EQ(build("Pair", -1), "/P2 of /P1");
    EXPECT_EQ(build("Ten", 10), "tenPump");
    EXPECT_EQ(build("Odd", 2), "/P/P0/P3/PxPump");
    EXPECT_EQ(build("Absent", 2), "");
}

TEST_F(MsgCatalog, TheDefaultTextTakesParametersToo)
{
    const KUVUnicodeString parameter("Pump");
    EXPECT_EQ(KUVMsgCatalog::BuildMessage("Absent", "Key", &parameter, 1, "in /P1"),
              KUVUnicodeString("in Pump"));
    EXPECT_EQ(KUVMsgCatalog::BuildMessage("Absent", "Key", nullptr, 1, "in /P1"),
              KUVUnicodeString("in /P1"));
}

TEST_F(MsgCatalog, WithoutMemoryNoHalfCatalogIsRemembered)
{
    std::string lines;
    for (int i = 0; i < 20; ++i)
        lines += "A key that is too long for a short string " + std::to_string(i) + " = text\n";
    Write("Large.en.catalog", lines);
    const char* const lastKey = "A key that is too long for a short string 19";
    const KUVUnicodeString none;
    std::size_t failing = 1;
    for (bool failed = true; failed && failing < 1000; ++failing) {
        // Another search path makes the catalogs be read anew.
        const std::string path = base_.string() + std::string(1 + failing % 2, '/');
        ASSERT_EQ(setenv("KUV_RESOURCES", path.c_str(), 1), 0);
        KUVUnicodeString text;
        bool thrown = false;
        {
            const support::FailingAllocation allocation(failing);
            try {
                text = KUVMsgCatalog::BuildMessage("Large", lastKey, nullptr, 0, none);
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            failed = allocation.HasFailed();
        }
        EXPECT_TRUE(thrown || text == KUVUnicodeString("text")) << failing;
        EXPECT_EQ(Text("Large", lastKey), "text") << failing;
    }
    EXPECT_GT(failing, 40U);
    EXPECT_LT(failing, 1000U);
}
