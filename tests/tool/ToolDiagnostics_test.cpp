// How errors of a text are shown.

#include "ToolRunner.h"

namespace {

using tool_test::Result;
using tool_test::ToolTest;

class ToolDiagnostics : public ToolTest {
protected:
    // What the tool writes to standard error for a text in the file a.qz, which must fail.
    std::string ErrorOf(const std::string& text) const {
        Write("a.qz", text);
        const Result result = Run({"a.qz"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        return result.err;
    }

    static std::string Mark(std::size_t column) { return std::string(column, ' ') + "^\n"; }

    static std::string Euros(std::size_t count) {
        std::string text;
        while (count-- > 0)
            text += "\xe2\x82\xac";
        return text;
    }
};

TEST_F(ToolDiagnostics, NamesFileAndLineAndMarksTheColumn) {
    EXPECT_EQ(ErrorOf("a\nb @fail(\"stop\") c\nd\n"), "a.qz(2) : stop\n"
                                                      "b @fail(\"stop\") c\n"
                                                      "       ^\n");
}

TEST_F(ToolDiagnostics, NamesTheFileAsItWasGiven) {
    Write("deep/b.qz", "`@else");
    EXPECT_EQ(Run({"./deep/../deep/b.qz"}),
              (Result{1, "",
                      "./deep/../deep/b.qz(1) : @else with no matching @if directive\n"
                      "`@else\n"
                      "  ^\n"}));
}

TEST_F(ToolDiagnostics, ShowsAllLinesOfContextInFrontOfTheSource) {
    EXPECT_EQ(ErrorOf("@def f(x) = {\n    @fail(\"in f\")\n}\n@def g(y) = f(y)\ng(1)\n"),
              "a.qz(2) : in f\n"
              "    invoking macro f(x) with x=y\n"
              "    invoking macro g(y) with y=1\n"
              "    @fail(\"in f\")\n"
              "         ^\n");
}

TEST_F(ToolDiagnostics, NamesTheFileAloneWhereTheErrorLiesInAComputedText) {
    EXPECT_EQ(ErrorOf("\n@let int x = 1 2\n"), "a.qz : Read 2 in middle of expression\n"
                                               "    expression: 1 2\n");
}

TEST_F(ToolDiagnostics, KeepsTabsInFrontOfTheMark) {
    EXPECT_EQ(ErrorOf("\t a\t@else"), "a.qz(1) : @else with no matching @if directive\n"
                                      "\t a\t@else\n"
                                      "\t  \t ^\n");
}

TEST_F(ToolDiagnostics, LeavesTheCarriageReturnOfALineEndOut) {
    EXPECT_EQ(ErrorOf("a\r\n@else\r\nb\r\n"), "a.qz(2) : @else with no matching @if directive\n"
                                              "@else\n"
                                              " ^\n");
}

TEST_F(ToolDiagnostics, MarksTheColumnBehindALineThatEndsTooEarly) {
    EXPECT_EQ(ErrorOf("a @[b"), "a.qz(1) : Met EOS while reading bracketted section\n"
                                "a @[b\n"
                                "     ^\n"
                                "hint: the [ in line 1 is not closed\n");
}

TEST_F(ToolDiagnostics, ShowsNoSourceForTheEmptyLineAtTheEndOfAText) {
    EXPECT_EQ(ErrorOf("a @[b\n"), "a.qz(2) : Met EOS while reading bracketted section\n"
                                  "hint: the [ in line 1 is not closed\n");
}

// ---- bytes that a terminal must not see --------------------------------------------------------

TEST_F(ToolDiagnostics, MakesControlBytesVisibleInMessageAndSource) {
    EXPECT_EQ(ErrorOf("\"\x1b[2J\x7f\" @fail(\"\x1b]0;x\\a\")\n"),
              "a.qz(1) : \\x1b]0;x\\x07\n"
              "\"\\x1b[2J\\x7f\" @fail(\"\\x1b]0;x\\a\")\n"
                  + Mark(19));
}

TEST_F(ToolDiagnostics, MakesAZeroByteVisible) {
    EXPECT_EQ(ErrorOf(std::string("\"\0\" @else", 9)),
              "a.qz(1) : @else with no matching @if directive\n"
              "\"\\x00\" @else\n"
              "        ^\n");
}

TEST_F(ToolDiagnostics, ShowsUtf8AndCountsItsCharacters) {
    EXPECT_EQ(ErrorOf("\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x99\x82\" @else\n"),
              "a.qz(1) : @else with no matching @if directive\n"
              "\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x99\x82\" @else\n"
              "       ^\n");
}

TEST_F(ToolDiagnostics, MakesWhatIsNoUtf8Visible) {
    // A lone byte, an overlong form, half of a pair, a value past the last, a character cut off.
    EXPECT_EQ(ErrorOf("\"\xe9 \xc0\x80 \xed\xa0\x80 \xf4\x90\x80\x80 \xe2\x82\" @else\n"),
              "a.qz(1) : @else with no matching @if directive\n"
              "\"\\xe9 \\xc0\\x80 \\xed\\xa0\\x80 \\xf4\\x90\\x80\\x80 \\xe2\\x82\" @else\n"
                  + Mark(56));
}

TEST_F(ToolDiagnostics, MakesCharactersVisibleThatControlATerminalOrTurnTheText) {
    // The control sequence introducer of 8-bit terminals, and an override of direction.
    EXPECT_EQ(ErrorOf("\"\xc2\x9b \xe2\x80\xae\" @else\n"),
              "a.qz(1) : @else with no matching @if directive\n"
              "\"\\xc2\\x9b \\xe2\\x80\\xae\" @else\n"
              "                         ^\n");
}

TEST_F(ToolDiagnostics, MakesTheBytesOfAPathVisible) {
    Write("a\n\x1b.qz", "@else");
    EXPECT_EQ(Run({"a\n\x1b.qz"}),
              (Result{1, "",
                      "a\\x0a\\x1b.qz(1) : @else with no matching @if directive\n"
                      "@else\n"
                      " ^\n"}));
}

// ---- long lines --------------------------------------------------------------------------------

TEST_F(ToolDiagnostics, ShowsThePartOfALongLineAroundTheMark) {
    const std::string words(5000, 'x');
    EXPECT_EQ(ErrorOf(words + " @else " + words), "a.qz(1) : @else with no matching @if directive\n"
                                                  "..."
                                                      + std::string(98, 'x') + " @else "
                                                      + std::string(95, 'x') + "...\n" + Mark(103));
}

TEST_F(ToolDiagnostics, ShowsALineWholeUpToTwoHundredBytesOnEitherSideOfTheMark) {
    const std::string line = std::string(198, 'x') + " @else " + std::string(195, 'x');
    EXPECT_EQ(ErrorOf(line),
              "a.qz(1) : @else with no matching @if directive\n" + line + '\n' + Mark(200));
}

TEST_F(ToolDiagnostics, CutsALongLineBetweenCharacters) {
    const std::string word = Euros(200);
    EXPECT_EQ(ErrorOf("\"" + word + "\" @else \"" + word + "\""),
              "a.qz(1) : @else with no matching @if directive\n"
              "..."
                  + Euros(32) + "\" @else \"" + Euros(31) + "...\n" + Mark(38));
}

}  // namespace
