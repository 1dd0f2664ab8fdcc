// What goes in and what comes out.

#include "ToolRunner.h"

namespace {

using tool_test::Result;
using tool_test::ToolTest;

class ToolExpand : public ToolTest {};

TEST_F(ToolExpand, ReadsTheNamedFileAndWritesToStandardOutput) {
    Write("a.qz", "@def f(x) = <x>\na f(1) b\n");
    EXPECT_EQ(Run({"a.qz"}), (Result{0, "a <1> b\n", ""}));
}

TEST_F(ToolExpand, ReadsStandardInputWithoutAFile) {
    EXPECT_EQ(Run({}, "@def f = x\nf;"), (Result{0, "x;", ""}));
}

TEST_F(ToolExpand, ReadsStandardInputForADash) {
    EXPECT_EQ(Run({"-"}, "@def f = x\nf;"), (Result{0, "x;", ""}));
}

TEST_F(ToolExpand, TakesAnythingBehindTwoDashesAsAFile) {
    Write("-D", "text");
    EXPECT_EQ(Run({"--", "-D"}), (Result{0, "text", ""}));
}

TEST_F(ToolExpand, TakesOptionsBehindTheFile) {
    Write("a.qz", "n");
    EXPECT_EQ(Run({"a.qz", "-D", "n=5"}), (Result{0, "5", ""}));
}

TEST_F(ToolExpand, WritesNothingForAnEmptyText) {
    Write("empty.qz", "");
    EXPECT_EQ(Run({"empty.qz"}), (Result{0, "", ""}));
    EXPECT_EQ(Run({}), (Result{0, "", ""}));
}

TEST_F(ToolExpand, CopiesWhatNeedsNoWorkByteForByte) {
    const std::string text = "a\r\n\tb \"\xff\xfe\" // \x01\n\n  c  \n";
    EXPECT_EQ(Run({}, text), (Result{0, text, ""}));
}

TEST_F(ToolExpand, CopiesZeroBytesInsideStringsAndComments) {
    const std::string text("\"a\0b\" // \0\n", 11);
    EXPECT_EQ(Run({}, text), (Result{0, text, ""}));
}

TEST_F(ToolExpand, ReportsAZeroByteThatIsNoToken) {
    EXPECT_EQ(Run({}, std::string("a \0 b", 5)), (Result{1, "",
                                                         "<stdin>(1) : Bad token \\x00\n"
                                                         "a \\x00 b\n"
                                                         "  ^\n"}));
}

TEST_F(ToolExpand, WritesNothingOfAnExpansionThatFails) {
    EXPECT_EQ(Run({}, "a\n@println(note)\n@fail(\"stop\")\n"), (Result{1, "",
                                                                       "note\n"
                                                                       "<stdin>(3) : stop\n"
                                                                       "@fail(\"stop\")\n"
                                                                       "     ^\n"}));
}

// ---- size --------------------------------------------------------------------------------------

std::string Repeat(const std::string& text, std::size_t size) {
    std::string all;
    all.reserve(size + text.size());
    while (all.size() < size)
        all += text;
    return all;
}

class ToolExpandLarge : public ToolTest {
protected:
    void ExpandsAFileOf(std::size_t size) const {
        Write("in",
              "@def name = value\n" + Repeat("some text with a name, and a line end\n", size));
        const std::string expected = Repeat("some text with a value, and a line end\n",
                                            size / 38 * 39 + (size % 38 == 0 ? 0 : 39));
        const Result result = Run({"in", "-o", "out"});
        EXPECT_EQ(result, (Result{0, "", ""}));
        EXPECT_TRUE(Read("out") == expected) << "the " << expected.size() << " bytes differ";
    }
};

TEST_F(ToolExpandLarge, ExpandsAFileOfTenMegabytes) {
    ExpandsAFileOf(10'000'000);
}

// A sanitizer takes about ten times the time.
#if !defined(QZ_SANITIZED)
TEST_F(ToolExpandLarge, ExpandsAFileOfAHundredMegabytesWithoutASanitizer) {
    ExpandsAFileOf(100'000'000);
}
#endif

}  // namespace
