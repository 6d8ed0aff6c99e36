#include "import/Text.h"

#include <gtest/gtest.h>

namespace {

using namespace kuvimport;
using namespace std::string_literals;

TEST(ImportText, WellFormedUtf8IsKeptByteForByte)
{
    const std::string text = "Gehäuse Φ 歯車 \xF0\x9F\x94\xA9";
    EXPECT_TRUE(IsUtf8(text));
    EXPECT_EQ(ToUtf8(text), text);
}

TEST(ImportText, OverlongFormsSurrogatesAndCutSequencesAreNotUtf8)
{
    for (const char* bytes : {"\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                              "\xF8\x88\x80\x80\x80", "a\xE2\x82", "\x80"})
        EXPECT_FALSE(IsUtf8(bytes)) << bytes;
}

TEST(ImportText, OtherBytesAreTakenForLatin1)
{
    EXPECT_EQ(ToUtf8("Geh\xE4use \xD8"
                     "8"),
              "Gehäuse Ø8");
}

TEST(ImportText, AZeroByteDoesNotEndAName)
{
    EXPECT_EQ(ToUtf8("a\0b"s), "a\xE2\x90\x80"
                               "b");
}

TEST(ImportText, AReferenceToAnInternalEntryIsAPlaceholder)
{
    EXPECT_TRUE(IsReaderPlaceholder("=>[0:1:1:2]"));
    EXPECT_FALSE(IsReaderPlaceholder("=> Rotor"));
    EXPECT_FALSE(IsReaderPlaceholder(""));
}

TEST(ImportText, AMessageIsOneLineWithoutControlCharacters)
{
    EXPECT_EQ(OneLine("  first\r\n\tsecond\x01\x7Fthird \n"), "first second third");
}

TEST(ImportText, ALongMessageIsCutAtACharactersBorder)
{
    std::string text;
    while (text.size() < 400)
        text += "ä";
    const std::string line = OneLine("x" + text);
    EXPECT_LE(line.size(), 303U);
    EXPECT_TRUE(IsUtf8(line));
    EXPECT_EQ(line.substr(line.size() - 3), "...");
}

TEST(ImportText, AQuotedNameOfTenThousandCharactersStaysShort)
{
    const std::string quoted = Quoted(std::string(10000, 'n'));
    EXPECT_LT(quoted.size(), 100U);
    EXPECT_EQ(quoted.front(), '"');
    EXPECT_EQ(quoted.back(), '"');
}

}  // namespace
