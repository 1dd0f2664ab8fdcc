#include "qzUtils/BasicSubString.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

#include "qzUtils/SubString.h"
#include "qzUtils/xstring.h"
#include "tests/support/Text.h"

namespace {

using vorn::BasicSubString;
using vorn::ssize_t;
using vorn::SubString;
using vorn::xstring;
using vorn_test::HeapText;
using vorn_test::Str;

static_assert(std::is_same_v<SubString, BasicSubString<char>>);
static_assert(sizeof(SubString) == 2 * sizeof(const char*));
static_assert(offsetof(SubString, m_p1) == 0 && offsetof(SubString, m_p2) == sizeof(const char*));
static_assert(std::is_same_v<decltype(SubString::m_p1), const char*>);
static_assert(std::is_same_v<decltype(SubString::m_p2), const char*>);
static_assert(std::is_trivially_copyable_v<SubString>, "passed in registers, moved by bytes");
static_assert(std::is_convertible_v<const char*, SubString>);
static_assert(std::is_convertible_v<const xstring&, SubString>);
static_assert(std::is_same_v<decltype(SubString().size()), ssize_t>);
static_assert(std::is_same_v<decltype(SubString().GetString()), xstring>);
static_assert(SubString("abc").size() == 3 && *++SubString("abc") == 'b', "works at compile time");

TEST(BasicSubStringTest, DefaultIsNull) {
    const SubString s;
    EXPECT_EQ(s.m_p1, nullptr);
    EXPECT_EQ(s.m_p2, nullptr);
    EXPECT_EQ(s.size(), 0);
    EXPECT_TRUE(s.empty());
    EXPECT_FALSE(s);
    EXPECT_EQ(s.GetString().size(), 0);
}

TEST(BasicSubStringTest, ZeroTerminatedTextEndsInFrontOfItsZero) {
    const char* z = "ab";
    const SubString s(z);
    EXPECT_EQ(s.m_p1, z);
    EXPECT_EQ(s.m_p2, z + 2);
    EXPECT_TRUE(SubString("").empty());
}

TEST(BasicSubStringTest, TwoPointersAreTakenAsTheyAre) {
    const HeapText text(std::string_view("a\0b", 3));
    const SubString s(text.begin(), text.end());
    EXPECT_EQ(s.m_p1, text.begin());
    EXPECT_EQ(s.m_p2, text.end());
    EXPECT_EQ(s.size(), 3);
}

TEST(BasicSubStringTest, OfAStringIsAViewIntoIt) {
    xstring text("abc");
    const SubString s = text;
    EXPECT_EQ(s.m_p1, text.data());
    EXPECT_EQ(s.m_p2, text.data() + 3);
    text[1] = 'x';
    EXPECT_EQ(Str(s), "axc");
    const xstring empty;
    EXPECT_FALSE(SubString(empty));
}

TEST(BasicSubStringTest, IsTrueWhileThereIsText) {
    const char* z = "ab";
    EXPECT_TRUE(SubString(z, z + 1));
    EXPECT_FALSE(SubString(z, z));
    EXPECT_FALSE(SubString(z + 1, z)) << "a start that has been moved past the end";
}

TEST(BasicSubStringTest, SizeAndEmptyCountBytes) {
    const char* z = "abc";
    EXPECT_EQ(SubString(z, z + 2).size(), 2);
    EXPECT_FALSE(SubString(z, z + 2).empty());
    EXPECT_EQ(SubString(z + 2, z + 2).size(), 0);
    EXPECT_TRUE(SubString(z + 2, z + 2).empty());
}

TEST(BasicSubStringTest, GetStringCopiesTheBytes) {
    HeapText text(std::string_view("a\0\xff", 3));
    const xstring copy = text.View().GetString();
    EXPECT_EQ(Str(copy), std::string("a\0\xff", 3));
    EXPECT_NE(copy.data(), text.begin());
}

TEST(BasicSubStringTest, BytesAreReadFromTheStart) {
    SubString s("abc");
    EXPECT_EQ(*s, 'a');
    EXPECT_EQ(s[2], 'c');
    ++s;
    EXPECT_EQ(*s, 'b');
    EXPECT_EQ(s[-1], 'a');
}

TEST(BasicSubStringTest, OperatorsMoveTheStartAlone) {
    const char* z = "abcdef";
    SubString s(z);
    EXPECT_EQ((++s).m_p1, z + 1);
    EXPECT_EQ((s += 4).m_p1, z + 5);
    EXPECT_EQ((--s).m_p1, z + 4);
    EXPECT_EQ((s -= 3).m_p1, z + 1);
    EXPECT_EQ((s++).m_p1, z + 1);
    EXPECT_EQ(s.m_p1, z + 2);
    EXPECT_EQ((s--).m_p1, z + 2);
    EXPECT_EQ(s.m_p1, z + 1);
    EXPECT_EQ(s.m_p2, z + 6);
}

TEST(BasicSubStringTest, BeginAndEndAreReadAndSet) {
    const char* z = "abcdef";
    SubString s(z);
    EXPECT_EQ(s.begin(), z);
    EXPECT_EQ(s.ptr(), z);
    EXPECT_EQ(s.end(), z + 6);
    s.setbegin(z + 1);
    s.setend(z + 3);
    EXPECT_EQ(Str(s), "bc");
    EXPECT_EQ(s.ptr(), z + 1);
    std::string looped;
    for (const char c : s)
        looped += c;
    EXPECT_EQ(looped, "bc");
}

TEST(BasicSubStringTest, ShowsTextOfOtherCharacterTypes) {
    const BasicSubString<char16_t> s(u"a\u20ac");
    EXPECT_EQ(s.size(), 2);
    EXPECT_EQ(s.GetString()[1], u'\u20ac');
}

}  // namespace
