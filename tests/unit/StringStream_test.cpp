#include "qzUtils/StringStream.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "tests/support/Text.h"

namespace {

using vorn::PagedBuffer;
using vorn::ssize_t;
using vorn::StringStream;
using vorn::xostream;
using vorn::xstring;
using vorn_test::Str;

static_assert(std::is_base_of_v<xostream, StringStream>);
static_assert(std::is_same_v<decltype(StringStream::m_pb), PagedBuffer>);
static_assert(std::is_base_of_v<vorn::IOutputStream, decltype(StringStream::m_outs)>);

[[maybe_unused]] constexpr void (StringStream::*s_getInto)(xstring&,
                                                           bool) = &StringStream::GetString;
[[maybe_unused]] constexpr xstring (StringStream::*s_get)() = &StringStream::GetString;
[[maybe_unused]] constexpr void (StringStream::*s_clear)() = &StringStream::clear;

TEST(StringStreamTest, FieldsFollowTheBaseInOrder) {
    const StringStream os(4096);
    const void* const base = static_cast<const xostream*>(&os);
    const void* const pages = &os.m_pb;
    const void* const sink = &os.m_outs;
    EXPECT_EQ(base, &os);
    EXPECT_LT(base, pages);
    EXPECT_LT(pages, sink);
}

TEST(StringStreamTest, CollectsWhatIsWritten) {
    StringStream os(4096);
    os << "Expected " << '"' << 12 << '"' << xstring(" after ") << vorn::SubString("x") << -0.5;
    os.put("\0\xff", 2);
    EXPECT_EQ(Str(os.GetString()), std::string("Expected \"12\" after x-0.5\0\xff", 27));
}

TEST(StringStreamTest, CollectsTextOverManyPages) {
    for (const ssize_t pageSize : {1, 3, 4096}) {
        StringStream os(pageSize);
        std::string expected;
        for (int i = 0; i < 5000; ++i) {
            os << i << ' ';
            expected += std::to_string(i) + ' ';
        }
        EXPECT_EQ(Str(os.GetString()), expected);
    }
}

TEST(StringStreamTest, GetStringReplacesTheDestination) {
    StringStream os(16);
    xstring s("what it held before, longer than the text");
    os << "text";
    os.GetString(s, true);
    EXPECT_EQ(Str(s), "text");
    os.GetString(s, true);
    EXPECT_EQ(Str(s), "");
}

TEST(StringStreamTest, ReadingOutWithTrueLeavesTheStreamEmpty) {
    StringStream os(4);
    for (const char* text : {"first", "second text", "", "3"}) {
        xstring s;
        os << text;
        os.GetString(s, true);
        EXPECT_EQ(Str(s), text);
    }
    os << "once";
    EXPECT_EQ(Str(os.GetString()), "once");
    EXPECT_EQ(Str(os.GetString()), "");
}

TEST(StringStreamTest, ReadingOutWithFalseKeepsTheText) {
    StringStream os(4);
    xstring s;
    os << "abcdef";
    os.GetString(s, false);
    EXPECT_EQ(Str(s), "abcdef");
    os << "gh";
    os.GetString(s, false);
    EXPECT_EQ(Str(s), "abcdefgh");
}

TEST(StringStreamTest, ClearEmptiesThePages) {
    StringStream os(4);
    os << "abcdef";
    os.clear();
    EXPECT_EQ(os.m_pb.size(), 0);
    os << "g";
    EXPECT_EQ(Str(os.GetString()), "g");
}

TEST(StringStreamTest, TextWrittenAfterReadingOutBeginsALine) {
    StringStream os(16);
    os.Indent(2);
    os << "a\nb";
    EXPECT_EQ(Str(os.GetString()), "  a\n  b");
    os << "c";
    EXPECT_EQ(Str(os.GetString()), "  c");
    os << "d";
    os.clear();
    os << "e\n";
    xstring s;
    os.GetString(s, false);
    os << "f";
    EXPECT_EQ(Str(os.GetString()), "  e\n  f");
}

TEST(StringStreamTest, FlushAndTheEndOfTheStreamAreHarmless) {
    StringStream os(16);
    os << "a";
    os.flush();
    EXPECT_EQ(Str(os.GetString()), "a");
    os << "never read";
}

}  // namespace
