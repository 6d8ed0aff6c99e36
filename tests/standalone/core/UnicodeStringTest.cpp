#include "KUVStringsMath.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

std::string BytesOf(const KUVUnicodeString& text)
{
    return std::string(text.GetUtf8(), text.GetByteCount());
}

}  // namespace

TEST(KUVUnicodeString, IsEmptyByDefaultAndFromNull)
{
    const KUVUnicodeString text;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.GetLength(), 0U);
    EXPECT_STREQ(text.GetUtf8(), "");
    EXPECT_TRUE(KUVUnicodeString(static_cast<const char*>(nullptr)).IsEmpty());
}

TEST(KUVUnicodeString, CountsCharactersNotBytes)
{
    const KUVUnicodeString text("Wälzlager Ø8 \xE8\xBB\xB8 \xF0\x9F\x94\xA9");
    EXPECT_EQ(text.GetLength(), 16U);
    EXPECT_EQ(text.GetByteCount(), 23U);
}

TEST(KUVUnicodeString, ComparesByteByByte)
{
    EXPECT_TRUE(KUVUnicodeString("Rotor") == KUVUnicodeString("Rotor"));
    EXPECT_TRUE(KUVUnicodeString("Rotor") != KUVUnicodeString("rotor"));
    EXPECT_FALSE(KUVUnicodeString("Rotor") != KUVUnicodeString("Rotor"));
    EXPECT_FALSE(KUVUnicodeString("\xC3\xA4") == KUVUnicodeString("a\xCC\x88"))
        << "nothing is normalised";
}

TEST(KUVUnicodeString, Concatenates)
{
    KUVUnicodeString text("Ro");
    text += KUVUnicodeString("tor");
    EXPECT_EQ(text, KUVUnicodeString("Rotor"));
    EXPECT_EQ(text + KUVUnicodeString(" 2"), KUVUnicodeString("Rotor 2"));
    text += text;
    EXPECT_EQ(text, KUVUnicodeString("RotorRotor"));
}

TEST(KUVUnicodeString, CopiesAreIndependent)
{
    const KUVUnicodeString original("Rotor");
    KUVUnicodeString copy(original);
    copy.RemoveLastCharacter();
    EXPECT_EQ(original, KUVUnicodeString("Rotor"));
    copy = original;
    EXPECT_EQ(copy, original);
    KUVUnicodeString moved(std::move(copy));
    EXPECT_EQ(moved, original);
    KUVUnicodeString target;
    target = std::move(moved);
    EXPECT_EQ(target, original);
}

TEST(KUVUnicodeString, KeepsZeroBytes)
{
    const KUVUnicodeString text(std::string("a\0b", 3));
    EXPECT_EQ(text.GetByteCount(), 3U);
    EXPECT_EQ(text.GetLength(), 3U);
    EXPECT_NE(text, KUVUnicodeString("a"));
}

TEST(KUVUnicodeString, LosesWholeCharactersFromItsEnd)
{
    KUVUnicodeString text("a\xC3\xA4\xE8\xBB\xB8\xF0\x9F\x94\xA9");
    text.RemoveLastCharacter();
    EXPECT_EQ(BytesOf(text), "a\xC3\xA4\xE8\xBB\xB8");
    text.RemoveLastCharacter();
    EXPECT_EQ(BytesOf(text), "a\xC3\xA4");
    text.RemoveLastCharacter();
    EXPECT_EQ(BytesOf(text), "a");
    text.RemoveLastCharacter();
    EXPECT_TRUE(text.IsEmpty());
    text.RemoveLastCharacter();
    EXPECT_TRUE(text.IsEmpty()) << "nothing happens on an empty text";
}

TEST(KUVUnicodeString, EachInvalidByteIsACharacter)
{
    // A lone continuation byte, a cut character, an overlong form, a surrogate, a number above
    // 10FFFF, a byte that begins nothing.
    for (const char* const bytes :
         {"\x80", "\xE8\xBB", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
        KUVUnicodeString text(bytes);
        const std::size_t count = text.GetByteCount();
        EXPECT_EQ(text.GetLength(), count);
        text.RemoveLastCharacter();
        EXPECT_EQ(text.GetByteCount(), count - 1);
    }
}

RC_GTEST_PROP(KUVUnicodeString, LosesAsManyCharactersAsItHas, (std::vector<unsigned char> bytes))
{
    // Few different bytes, so that whole, cut and broken characters all occur.
    static const unsigned char SOME[] = {'a', 0xC3, 0xA4, 0xE8, 0xBB, 0xB8, 0xF0, 0x9F, 0xED, 0x80};
    std::string raw;
    for (const unsigned char byte : bytes)
        raw += static_cast<char>(SOME[byte % sizeof SOME]);
    KUVUnicodeString text(raw);
    for (std::size_t length = text.GetLength(); length > 0; --length) {
        RC_ASSERT(text.GetLength() == length);
        text.RemoveLastCharacter();
    }
    RC_ASSERT(text.IsEmpty());
}

TEST(KUVUnicodeString, FormatsNumbersWithTheDigitsAskedFor)
{
    EXPECT_EQ(KUVUnicodeString::FormatUnsigned64(0), KUVUnicodeString("0"));
    EXPECT_EQ(KUVUnicodeString::FormatUnsigned64(7, 3), KUVUnicodeString("007"));
    EXPECT_EQ(KUVUnicodeString::FormatUnsigned64(1234, 3), KUVUnicodeString("1234"));
    EXPECT_EQ(KUVUnicodeString::FormatUnsigned64(5, 0), KUVUnicodeString("5"));
    EXPECT_EQ(KUVUnicodeString::FormatUnsigned64(std::numeric_limits<std::uint64_t>::max()),
              KUVUnicodeString("18446744073709551615"));
    EXPECT_EQ(KUVUnicodeString::FormatUnsigned64(1, 25),
              KUVUnicodeString("0000000000000000000000001"));
}

TEST(KUVUnicodeString, EqualTextsHaveEqualHashKeys)
{
    EXPECT_EQ(KUVUnicodeString("Rotor").ComputeHashKey(),
              KUVUnicodeString(std::string("Rotor")).ComputeHashKey());
    EXPECT_NE(KUVUnicodeString("Rotor").ComputeHashKey(),
              KUVUnicodeString("Rotos").ComputeHashKey());
    EXPECT_EQ(KUVUnicodeString("a").ComputeHashKey(), 0xE40C292CU) << "the same in every process";
}

TEST(KUVString, HoldsACopy)
{
    char name[] = "VisTreeSpaceDataViz";
    const KUVString text(name);
    name[0] = 'x';
    EXPECT_STREQ(text.GetText(), "VisTreeSpaceDataViz");
    EXPECT_STREQ(KUVString().GetText(), "");
    EXPECT_STREQ(KUVString(nullptr).GetText(), "");
    KUVString other;
    other = text;
    EXPECT_STREQ(KUVString(other).GetText(), "VisTreeSpaceDataViz");
}
