#include "qzMacroExpander/LSSourceFile.h"

#include <gtest/gtest.h>

#include "tests/support/Text.h"

namespace vorn {
namespace {

using vorn_test::Address;
using vorn_test::Str;

struct Place {
    ssize_t offset;
    ssize_t line;
};

TEST(LSSourceFile, KnowsTheLineOfEveryByteAndOfItsEnd) {
    const LSSourceFile file{"a.txt", "one\n\nthree\n"};
    const Place places[] = {
        {0,  1},
        {3,  1}, // a line feed belongs to the line that it ends
        {4,  2},
        {5,  3},
        {10, 3},
        {11, 4}, // one past the last byte
    };
    for (const Place& place : places) {
        xstring name;
        ssize_t line = 0;
        EXPECT_TRUE(file.GetFilenameAndLineNumber(file.m_buffer.data() + place.offset, name, line));
        EXPECT_EQ(Str(name), "a.txt") << place.offset;
        EXPECT_EQ(line, place.line) << place.offset;
    }
}

TEST(LSSourceFile, LeavesTheAnswerAloneForAPositionElsewhere) {
    const vorn_test::HeapText other("other");
    const LSSourceFile file{"a.txt", "one\ntwo\nthree"};
    const xchar* const positions[] = {nullptr, other.begin(), Address(file.m_buffer.data(), -1),
                                      Address(file.m_buffer.data_end(), 1)};
    for (const xchar* pos : positions) {
        xstring name("before");
        ssize_t line = 77;
        EXPECT_FALSE(file.GetFilenameAndLineNumber(pos, name, line));
        EXPECT_EQ(Str(name), "before");
        EXPECT_EQ(line, 77);
    }
}

TEST(LSSourceFile, HoldsNoPositionWithoutAText) {
    const LSSourceFile file{"a.txt", ""};
    const xchar* nowhere = nullptr;
    xstring name("before");
    ssize_t line = 77;
    EXPECT_FALSE(file.GetFilenameAndLineNumber(nowhere, name, line));
    EXPECT_EQ(Str(name), "before");
    EXPECT_EQ(line, 77);
}

TEST(LSSourceFile, MayAnswerIntoItsOwnName) {
    LSSourceFile file{"a.txt", "one\ntwo"};
    ssize_t line = 0;
    EXPECT_TRUE(file.GetFilenameAndLineNumber(file.m_buffer.data() + 4, file.m_name, line));
    EXPECT_EQ(Str(file.m_name), "a.txt");
    EXPECT_EQ(line, 2);
}

}  // namespace
}  // namespace vorn
