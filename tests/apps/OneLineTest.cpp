#include "OneLine.h"

#include <gtest/gtest.h>

namespace dataviz {

TEST(OneLine, KeepsWhatIsNoControlCharacter)
{
    for (const char* const text :
         {"", "a b~", "\\x1b", "\u00a0\u00e9", "\u20ac", "\U0001F600", "Geh\u00e4use/1"})
        EXPECT_EQ(OneLine(text), text);
}

TEST(OneLine, EscapesControlCharactersBelowBlankAndDelete)
{
    EXPECT_EQ(OneLine(std::string_view("a\0b\t\r\n\x1b[2J\x7f", 11)),
              "a\\x00b\\x09\\x0d\\x0a\\x1b[2J\\x7f");
}

TEST(OneLine, EscapesTheControlCharactersAboveDelete)
{
    EXPECT_EQ(OneLine("\u0080 \u0085 \u009b31m \u009f"), "\\x80 \\x85 \\x9b31m \\x9f");
}

TEST(OneLine, EscapesBytesThatAreNotUtf8)
{
    EXPECT_EQ(OneLine("a\x9b"
                      "b\xff\xe2\x82"),
              "a\\x9bb\\xff\\xe2\\x82");
}

}  // namespace dataviz
