#include "qzUtils/xstring.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <type_traits>

#include "qzUtils/SubString.h"
#include "tests/support/Text.h"

namespace {

using vorn::basic_xstring;
using vorn::ssize_t;
using vorn::SubString;
using vorn::xstring;
using vorn::xvector;
using vorn_test::HeapText;
using vorn_test::Str;

static_assert(std::is_same_v<xstring, basic_xstring<char>>);
static_assert(std::is_base_of_v<xvector<char>, xstring>);
static_assert(sizeof(xstring) == sizeof(xvector<char>), "no fields of its own");
static_assert(std::is_convertible_v<const char*, xstring>);
static_assert(std::is_nothrow_move_constructible_v<xstring>);
[[maybe_unused]] constexpr const char* (xstring::*s_c_str)() const = &xstring::c_str;

ssize_t Capacity(const xstring& s) {
    return s.m_buffer.m_capacity;
}

TEST(xstringTest, IsMadeFromNothingTextOrAnotherString) {
    EXPECT_EQ(Str(xstring()), "");
    EXPECT_EQ(Str(xstring("")), "");
    EXPECT_EQ(Str(xstring("abc")), "abc");
    const HeapText text(std::string_view("a\0\xff", 3));
    EXPECT_EQ(Str(xstring(text.begin(), text.end())), std::string("a\0\xff", 3));
    EXPECT_EQ(Str(xstring(text.View())), std::string("a\0\xff", 3));
    xstring original("abc");
    const xstring copy(original);
    original[0] = 'x';
    EXPECT_EQ(Str(copy), "abc");
}

TEST(xstringTest, AssignmentTakesStringsAndText) {
    xstring s("long enough");
    const xstring other("b");
    s = other;
    EXPECT_EQ(Str(s), "b");
    s = "text";
    EXPECT_EQ(Str(s), "text");
    s = s.c_str() + 1;
    EXPECT_EQ(Str(s), "ext");
    s = xstring();
    EXPECT_EQ(s.size(), 0);
}

TEST(xstringTest, AssignTakesStringsTextViewsAndPointers) {
    const HeapText text("view");
    const xstring other("string");
    xstring s;
    s.assign("zero-terminated");
    EXPECT_EQ(Str(s), "zero-terminated");
    s.assign(text.View());
    EXPECT_EQ(Str(s), "view");
    s.assign(text.begin() + 1, text.end());
    EXPECT_EQ(Str(s), "iew");
    s.assign(other);
    EXPECT_EQ(Str(s), "string");
}

TEST(xstringTest, AppendTakesStringsTextViewsAndPointers) {
    const HeapText text("view");
    const xstring other("string");
    xstring s;
    s.append("z,");
    s.append(text.View());
    s.append(text.begin(), text.begin() + 1);
    s.append(other);
    EXPECT_EQ(Str(s), "z,viewvstring");
}

TEST(xstringTest, PlusAssignTakesTextCharactersViewsAndStrings) {
    xstring s;
    s += "ab";
    s += 'c';
    s += '\0';
    s += SubString("de");
    s += xstring("f");
    (s += "g") += 'h';
    EXPECT_EQ(Str(s), std::string("abc\0defgh", 9));
}

TEST(xstringTest, TakesPartsOfItself) {
    xstring s("abc");
    s += s[0];
    s += s.c_str();
    EXPECT_EQ(Str(s), "abcaabca");
    s += SubString(s.begin() + 1, s.begin() + 3);
    EXPECT_EQ(Str(s), "abcaabcabc");
    s.append(s);
    EXPECT_EQ(Str(s), "abcaabcabcabcaabcabc");
    s.assign(SubString(s.begin() + 1, s.begin() + 4));
    EXPECT_EQ(Str(s), "bca");
    s.assign(s.c_str() + 1);
    EXPECT_EQ(Str(s), "ca");
    s.assign(s);
    EXPECT_EQ(Str(s), "ca");
}

TEST(xstringTest, CharactersGrowByTheRule) {
    xstring s;
    for (const ssize_t capacity : {1, 3, 3, 7, 7, 7, 7, 15}) {
        s += 'x';
        EXPECT_EQ(Capacity(s), capacity) << "at size " << s.size();
    }
    s += "0123456789";
    EXPECT_EQ(Capacity(s), 15 + 18);
}

TEST(xstringTest, CStrOfAnEmptyStringPointsToAZero) {
    const xstring s;
    const char* const z = s.c_str();
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(*z, '\0');
    EXPECT_EQ(s.size(), 0);
    EXPECT_EQ(Capacity(s), 1);
}

TEST(xstringTest, CStrTerminatesBehindTheLastByteAndCountsNothing) {
    const xstring s("abc");
    EXPECT_EQ(Capacity(s), 3);
    const char* const z = s.c_str();
    EXPECT_EQ(z, s.data());
    EXPECT_STREQ(z, "abc");
    EXPECT_EQ(s.size(), 3);
    EXPECT_EQ(Capacity(s), 4) << "exactly one byte more";
    EXPECT_EQ(s.c_str(), z);
    EXPECT_EQ(Capacity(s), 4);
}

TEST(xstringTest, CStrTerminatesAfreshAfterEveryChange) {
    xstring s("abcdef");
    EXPECT_STREQ(s.c_str(), "abcdef");
    s.erase(s.begin() + 2, s.end());
    EXPECT_STREQ(s.c_str(), "ab");
    s += 'c';
    EXPECT_STREQ(s.c_str(), "abc");
    s.clear();
    EXPECT_STREQ(s.c_str(), "");
}

TEST(xstringTest, ViewOutlivesCStrWhereTheCapacityIsEnough) {
    xstring s("abc");
    s.reserve(4);
    const SubString view(s);
    EXPECT_EQ(s.c_str(), view.m_p1);
    EXPECT_EQ(Str(view), "abc");
    EXPECT_EQ(SubString(s).m_p2, view.m_p2);
}

TEST(xstringTest, HoldsAnyByte) {
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    const xstring s(all.data(), all.data() + all.size());
    EXPECT_EQ(s.size(), 256);
    EXPECT_EQ(Str(s), all);
    EXPECT_EQ(s.find('\0'), 0);
    EXPECT_EQ(s.find('\xff'), 255);
    EXPECT_EQ(xstring("abc").find('d'), xstring::npos);
}

TEST(xstringTest, ComparesByBytes) {
    const xstring a("a");
    const xstring ab("ab");
    const xstring high("\xff");
    EXPECT_TRUE(a == xstring("a"));
    EXPECT_TRUE(a != ab);
    EXPECT_TRUE(a < ab);
    EXPECT_TRUE(a <= ab && a <= a);
    EXPECT_TRUE(ab < high);
    EXPECT_FALSE(high <= ab);
    EXPECT_LT(a.compare(ab), 0);
    EXPECT_GT(high.compare(ab), 0);
    EXPECT_EQ(a.compare(a), 0);
    EXPECT_TRUE(xstring() == "");
    EXPECT_TRUE(xstring() < a);
}

TEST(xstringTest, OrdersTheKeysOfAMap) {
    std::map<xstring, int> map;
    map["b"] = 2;
    map["\xff"] = 3;
    map[""] = 0;
    map["a"] = 1;
    int expected = 0;
    for (const auto& [key, value] : map)
        EXPECT_EQ(value, expected++) << Str(key);
    EXPECT_EQ(map.find("c"), map.end());
}

TEST(xstringTest, SwapExchangesTheTexts) {
    xstring a("a");
    xstring b("bb");
    a.swap(b);
    EXPECT_EQ(Str(a), "bb");
    EXPECT_EQ(Str(b), "a");
}

}  // namespace
