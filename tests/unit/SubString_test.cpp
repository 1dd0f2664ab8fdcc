#include "qzUtils/SubString.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <type_traits>

#include "tests/support/Text.h"

namespace {

using vorn::SubString;
using vorn::xstring;
using vorn_test::HeapText;
using vorn_test::Str;

static_assert(std::is_same_v<decltype(vorn::strcmp(SubString(), SubString())), int>);
static_assert(std::is_same_v<decltype(vorn::strcmp(SubString(), "")), int>);

// Texts in ascending order: by the first byte that differs, as unsigned numbers, then by length.
constexpr std::string_view s_ascending[] = {
    "",
    std::string_view("\0", 1),
    std::string_view("\0\0", 2),
    std::string_view("\0a", 2),
    "\x7f",
    "\x7f\xff",
    "\x80",
    "\xff",
    "\xff\x01",
};
constexpr std::string_view s_words[] = {"A", "B", "a", "ab", "aba", "abb", "ac", "b"};

int Sign(int x) {
    return (x > 0) - (x < 0);
}

template <std::size_t N>
void ExpectAscending(const std::string_view (&texts)[N]) {
    for (std::size_t i = 0; i < N; ++i) {
        for (std::size_t j = 0; j < N; ++j) {
            SCOPED_TRACE(testing::Message() << "texts " << i << " and " << j);
            const HeapText a(texts[i]);
            const HeapText b(texts[j]);
            const int expected = i < j ? -1 : i > j ? 1 : 0;
            EXPECT_EQ(Sign(strcmp(a.View(), b.View())), expected);
            EXPECT_EQ(a.View() == b.View(), expected == 0);
            EXPECT_EQ(a.View() != b.View(), expected != 0);
            EXPECT_EQ(a.View() < b.View(), expected < 0);
        }
    }
}

TEST(SubStringTest, IsOrderedByUnsignedBytesAndThenByLength) {
    ExpectAscending(s_ascending);
    ExpectAscending(s_words);
}

TEST(SubStringTest, NullViewEqualsAnyEmptyOne) {
    const SubString null;
    const SubString empty("");
    EXPECT_EQ(strcmp(null, null), 0);
    EXPECT_EQ(strcmp(null, empty), 0);
    EXPECT_TRUE(null == empty);
    EXPECT_TRUE(null == "");
    EXPECT_FALSE(null < empty);
    EXPECT_LT(strcmp(null, SubString("a")), 0);
    EXPECT_GT(strcmp(SubString("a"), null), 0);
    EXPECT_TRUE(null != "a");
}

TEST(SubStringTest, ComparesWithZeroTerminatedText) {
    const SubString s("abc");
    EXPECT_EQ(strcmp(s, "abc"), 0);
    EXPECT_LT(strcmp(s, "abcd"), 0);
    EXPECT_GT(strcmp(s, "ab"), 0);
    EXPECT_TRUE(s == "abc");
    EXPECT_FALSE(s == "abd");
    EXPECT_TRUE(s != "ab");
    EXPECT_FALSE(s != "abc");
    const HeapText withZero(std::string_view("a\0b", 3));
    EXPECT_GT(strcmp(withZero.View(), "a"), 0) << "a zero byte counts like any other";
}

TEST(SubStringTest, ComparesWithStrings) {
    const xstring text("abc");
    EXPECT_TRUE(SubString("abc") == text);
    EXPECT_TRUE(text == SubString("abc"));
    EXPECT_TRUE(text == "abc");
    EXPECT_TRUE(text != "abd");
    EXPECT_TRUE(SubString("abb") < text);
    EXPECT_EQ(strcmp(text, "abc"), 0);
    EXPECT_EQ(strcmp(text, text), 0);
}

TEST(SubStringTest, OrdersTheKeysOfAMap) {
    std::map<SubString, int> map{
        {"b",    2},
        {"a",    1},
        {"\xff", 4},
        {"",     0},
        {"ba",   3}
    };
    std::string keys;
    for (const auto& [key, value] : map) {
        keys += Str(key);
        keys += static_cast<char>('0' + value);
    }
    EXPECT_EQ(keys, "0a1b2ba3\xff"
                    "4");
    EXPECT_EQ(map.at("ba"), 3);
}

}  // namespace
