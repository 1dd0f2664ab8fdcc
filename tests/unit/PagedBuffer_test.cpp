#include "qzUtils/PagedBuffer.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/Text.h"

namespace {

using vorn::PagedBuffer;
using vorn::ssize_t;
using vorn::xstring;
using vorn_test::Str;

std::string Text(const PagedBuffer& buffer) {
    xstring s("what was there before");
    buffer.CopyTo(s);
    return Str(s);
}

TEST(PagedBufferTest, StartsEmpty) {
    const PagedBuffer buffer(16);
    EXPECT_EQ(buffer.size(), 0);
    EXPECT_EQ(Text(buffer), "");
}

TEST(PagedBufferTest, KeepsTheBytesWhateverThePagesAndPiecesAre) {
    for (const ssize_t pageSize : {1, 2, 3, 7, 16, 4096}) {
        for (const ssize_t pieceSize : {1, 2, 3, 5, 16, 17, 100}) {
            SCOPED_TRACE(testing::Message()
                         << "pages of " << pageSize << ", pieces of " << pieceSize);
            PagedBuffer buffer(pageSize);
            std::string expected;
            for (int i = 0; i < 20; ++i) {
                const std::string piece(static_cast<std::size_t>(pieceSize),
                                        static_cast<char>('a' + i));
                buffer.Append(piece.data(), pieceSize);
                expected += piece;
                ASSERT_EQ(buffer.size(), static_cast<ssize_t>(expected.size()));
            }
            EXPECT_EQ(Text(buffer), expected);
        }
    }
}

TEST(PagedBufferTest, EmptyPiecesChangeNothing) {
    PagedBuffer buffer(4);
    buffer.Append(nullptr, 0);
    EXPECT_EQ(buffer.size(), 0);
    buffer.Append("abcd", 4);  // fills the page
    buffer.Append(nullptr, 0);
    buffer.Append("", 0);
    EXPECT_EQ(Text(buffer), "abcd");
}

TEST(PagedBufferTest, KeepsAnyByte) {
    PagedBuffer buffer(2);
    buffer.Append("\0\xff\0", 3);
    EXPECT_EQ(Text(buffer), std::string("\0\xff\0", 3));
}

TEST(PagedBufferTest, ClearEmptiesItForWhatComesNext) {
    for (const char* before : {"", "a", "abcd", "abcdefghij"}) {
        SCOPED_TRACE(before);
        PagedBuffer buffer(4);
        buffer.Append(before, static_cast<ssize_t>(std::string(before).size()));
        buffer.Clear();
        EXPECT_EQ(buffer.size(), 0);
        EXPECT_EQ(Text(buffer), "");
        buffer.Append("123456", 6);
        EXPECT_EQ(Text(buffer), "123456");
        buffer.Clear();
        buffer.Clear();
        EXPECT_EQ(Text(buffer), "");
    }
}

TEST(PagedBufferTest, CopyTakesJustTheMemoryItNeeds) {
    PagedBuffer buffer(4);
    buffer.Append("0123456789", 10);
    xstring s;
    buffer.CopyTo(s);
    EXPECT_EQ(s.m_buffer.m_capacity, 10);
    EXPECT_EQ(Text(buffer), "0123456789") << "the buffer keeps its bytes";
}

}  // namespace
