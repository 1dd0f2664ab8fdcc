// Hints: which errors get one, and which must not.

#include "ToolRunner.h"

namespace {

using tool_test::ToolTest;

class ToolHints : public ToolTest {
protected:
    // The hints that the tool gives for a text, which must fail. The message stands in front.
    std::string HintsFor(const std::string& text) const {
        const std::string report = Run({}, text).err;
        const std::size_t at = report.find("\nhint: ");
        return at == report.npos ? std::string() : report.substr(at + 1);
    }
};

constexpr const char s_apostropheRule[] =
    " begins a string, which has to end on its line; apostrophes may stand in comments and in"
    " \"strings\"\n";

TEST_F(ToolHints, StandOnALineOfTheirOwnBehindTheReport) {
    Write("b.qz", "I don't know\n");
    EXPECT_EQ(Run({}, "@import \"b.qz\"").err,
              "b.qz(1) : Met line feed within single quoted string after reading 't know\n"
              "I don't know\n"
              "            ^\n"
              "<stdin>(1) : b.qz is imported here\n"
              "hint: the apostrophe in don't"
                  + std::string(s_apostropheRule));
}

TEST_F(ToolHints, NameTheWordOfALoneApostrophe) {
    EXPECT_EQ(HintsFor("it isn't\n"),
              std::string("hint: the apostrophe in isn't") + s_apostropheRule);
    EXPECT_EQ(HintsFor("it's"), std::string("hint: the apostrophe in it's") + s_apostropheRule);
    EXPECT_EQ(HintsFor("@def f(x) = x\nf(can't, b)\n"),
              std::string("hint: the apostrophe in can't") + s_apostropheRule);
    EXPECT_EQ(HintsFor("the dogs'"),
              std::string("hint: the apostrophe in dogs'") + s_apostropheRule);
    // The string that ends with the text of a macro, and not with its line.
    EXPECT_EQ(HintsFor("@def f = don't\nf, f"),
              std::string("hint: the apostrophe in don't") + s_apostropheRule);
}

TEST_F(ToolHints, SpeakOfALoneApostropheWhereNoWordIsAroundIt) {
    EXPECT_EQ(HintsFor("a 'b\n"), std::string("hint: a lone apostrophe") + s_apostropheRule);
    EXPECT_EQ(HintsFor("'"), std::string("hint: a lone apostrophe") + s_apostropheRule);
}

TEST_F(ToolHints, ExplainAQuotationMark) {
    EXPECT_EQ(HintsFor("a \"b\n"), "hint: a \" begins a string, which has to end on its line\n");
    EXPECT_EQ(HintsFor("\""), "hint: a \" begins a string, which has to end on its line\n");
}

TEST_F(ToolHints, ExplainAByteAbove127) {
    const std::string rule =
        "bytes above 127, as in letters with accents, may stand in strings and comments only\n";
    EXPECT_EQ(HintsFor("caf\xc3\xa9"), "hint: " + rule);
    EXPECT_EQ(HintsFor("caf\xe9"), "hint: " + rule);
    EXPECT_EQ(HintsFor("a\xc2\xa0"
                       "b"),
              "hint: this is a no-break space; " + rule);
    EXPECT_EQ(HintsFor("\xe2\x80\x9cso\xe2\x80\x9d"),
              "hint: this is a quotation mark that is no \"; " + rule);
    EXPECT_EQ(HintsFor("don\xe2\x80\x99t"), "hint: this is a quotation mark that is no '; " + rule);
    EXPECT_EQ(HintsFor("1 \xe2\x80\x93 2"), "hint: this is a dash that is no minus sign; " + rule);
    EXPECT_EQ(HintsFor("\xef\xbb\xbftext"), "hint: this is a byte order mark; " + rule);
}

TEST_F(ToolHints, ExplainTwoMinusSigns) {
    const std::string rule =
        "hint: -- is read as <<, a shift to the left; a blank between them keeps two minus signs"
        " apart\n";
    EXPECT_EQ(HintsFor("@(1.5 --2)"), rule);
    EXPECT_EQ(HintsFor("@(5--)"), rule);
    EXPECT_EQ(HintsFor("@assert(5 --2 == 7)"), rule);
    EXPECT_EQ(HintsFor("@(--2)"), rule);
    EXPECT_EQ(HintsFor("@let int n = 3\n@let n = n--\n"), rule);
    EXPECT_EQ(HintsFor("@let double x = 2.5\n@if (x--1 > 2) {}"), rule);
    EXPECT_EQ(HintsFor("@def int f(int n) = n\nf(2.5--1)"), rule);
    EXPECT_NE(Run({"--eval", "2.5--1"}).err.find(rule), std::string::npos);
    EXPECT_NE(Run({"-D", "int:n=2.5--1"}).err.find(rule), std::string::npos);
}

TEST_F(ToolHints, SayNothingOfTwoMinusSignsThatAreNotTheFault) {
    EXPECT_EQ(HintsFor("@(1.5 << 2)"), "");
    EXPECT_EQ(HintsFor("@(1.5 << (3 --2))"), "");
    EXPECT_EQ(HintsFor("@(1 --2 +)"), "");
    EXPECT_EQ(HintsFor("@assert(5 << 2 == 5 --1)"), "");
    EXPECT_EQ(HintsFor("@assert(\"--\" == \"\")"), "");
    EXPECT_EQ(Run({}, "a-- b--c").out, "a-- b--c");
}

TEST_F(ToolHints, ExplainAnImportInANestedText) {
    const std::string rule =
        "hint: imports stand at the top level of a file, not in macros, blocks and brackets\n";
    EXPECT_EQ(HintsFor("@scope { @import \"b.qz\" }"), rule);
    EXPECT_EQ(HintsFor("@def f = @importpath \"b\"\nf"), rule);
    EXPECT_EQ(HintsFor("@if (true) {@import(\"b.qz\")}"), rule);
}

TEST_F(ToolHints, ExplainNumbers) {
    EXPECT_EQ(HintsFor("in 1984.\n"),
              "hint: a point behind a number wants a digit; in front of a full stop, a blank"
              " helps\n");
    EXPECT_EQ(HintsFor("width: 3em"),
              "hint: a number with an e directly behind it is read as one with an exponent, such as"
              " 1e6\n");
}

TEST_F(ToolHints, ExplainWhatExpressionsWant) {
    EXPECT_EQ(HintsFor("@(\"n = \" + 2)"), "hint: string(n) makes a string of the number n\n");
    EXPECT_EQ(HintsFor("@(2.5 + \"n\")"), "hint: string(n) makes a string of the number n\n");
    EXPECT_EQ(HintsFor("@if (1) {}"),
              "hint: a number is neither true nor false; compare it, as in n != 0\n");
    EXPECT_EQ(HintsFor("@let int n = 1\n@if (n = 2) {}"),
              "hint: an expression cannot assign; == compares, and @let changes a variable\n");
    EXPECT_EQ(HintsFor("@let string s = 1"), "hint: string(n) makes a string of the number n\n");
    EXPECT_EQ(HintsFor("@fail(1.5)"), "hint: string(n) makes a string of the number n\n");
}

TEST_F(ToolHints, NameTheBracketThatIsNotClosed) {
    EXPECT_EQ(HintsFor("a (b)\n@if (a {b}\n"), "hint: the ( in line 2 is not closed\n");
    EXPECT_EQ(HintsFor("@def f(x) = x\n\nf((a)\n"), "hint: the ( in line 3 is not closed\n");
    EXPECT_EQ(HintsFor("@scope { a [b] \"{\" // {\n"), "hint: the { in line 1 is not closed\n");
    EXPECT_EQ(HintsFor("@scope\n{\n    a\n"), "hint: the { in line 2 is not closed\n");
    EXPECT_EQ(HintsFor("\n\n\n@[a (b)"), "hint: the [ in line 4 is not closed\n");
}

TEST_F(ToolHints, NameNoBracketWhereMoreThanOneMayBeMeant) {
    EXPECT_EQ(HintsFor(":-( @if (a\n"), "");
    EXPECT_EQ(HintsFor("1) @if (a\n"), "");
    EXPECT_EQ(HintsFor("@scope { (a } @if (b\n"), "");
    // What is not read as tokens by the expansion can break the count.
    EXPECT_EQ(HintsFor("@def f = don't\n@if (b\n"), "");
}

TEST_F(ToolHints, NameTheCommentThatIsNotClosed) {
    EXPECT_EQ(HintsFor("a /* b */ \"/*\"\nsrc/*.c // c\n"),
              "hint: the /* in line 2 begins a comment that is not closed\n");
    EXPECT_EQ(HintsFor("\n\n@/* a\n"),
              "hint: the /* in line 3 begins a comment that is not closed\n");
    EXPECT_EQ(HintsFor("@scope { /* a }"),
              "hint: the /* in line 1 begins a comment that is not closed\n");
    // What stands in front of it is not read as tokens by the expansion.
    EXPECT_EQ(HintsFor("@def f = don't\n/* a"), "");
}

TEST_F(ToolHints, AreNotGivenForWhatAnAuthorSays) {
    for (const std::string message :
         {"Bad token \xc3\xa9", "Met line feed within single quoted string after reading 't",
          "@import statement not allowed here", "Expected digit (not x) after decimal point"})
        EXPECT_EQ(HintsFor("@fail(\"" + message + "\")\xc3\xa9"), "") << message;
}

// An error in the second pass of an @[ ] lies at the @[, not at the name of the directive.
TEST_F(ToolHints, AreNotGivenForWhatAnAuthorSaysInASecondPass) {
    for (const std::string message :
         {"Expected digit(s) (not x", "Can't assign to it", "Unexpected -- after x",
          "No implicit conversion from int64 to bool",
          "Incompatible types (string and int64) for + operation",
          "Python initialisation error: forbidden by the host"}) {
        EXPECT_EQ(HintsFor("@[@quote(@fail)(\"" + message + "\")]"), "") << message;
        EXPECT_EQ(HintsFor("@[@quote(@def f(x) = @fail(x))\n@quote(f)(\"" + message + "\")]"), "")
            << message;
    }
    EXPECT_EQ(HintsFor("@[@quote(@if) (1) {}]"),
              "hint: a number is neither true nor false; compare it, as in n != 0\n");
}

TEST_F(ToolHints, ShowTheirBytesInAVisibleForm) {
    EXPECT_EQ(HintsFor("@def f(x) = x\nf(\"\xc3\xa9\"\xe9n't)"), HintsFor("\xe9"));
    EXPECT_EQ(HintsFor("\"\" a'\x1b\n"),
              std::string("hint: the apostrophe in a'") + s_apostropheRule);
}

}  // namespace
