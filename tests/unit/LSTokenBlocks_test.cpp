#include <gtest/gtest.h>

#include <initializer_list>
#include <ostream>
#include <random>
#include <string>
#include <string_view>

#include "qzMacroExpander/LSToken.h"
#include "tests/support/Text.h"

using namespace std::string_literals;
using vorn_test::HeapText;
using vorn_test::LexError;
using vorn_test::LexErrorOf;
using vorn_test::Str;

namespace vorn {
namespace {

// ---- ScanBackwardsThroughSpacesAndTabs ---------------------------------------------------------

TEST(ScanBackwardsThroughSpacesAndTabs, DropsThemFromTheEndAndGivesTheirWidth) {
    struct {
        std::string text;
        ssize_t width;
        ssize_t left;  // bytes that stay
    } const rows[] = {
        {"",       0, 0},
        {"a",      0, 1},
        {"a ",     1, 1},
        {"a\t",    4, 1},
        {"a \t ",  6, 1},
        {"  ",     2, 0},
        {"\t",     4, 0},
        {"a b  ",  2, 3},
        {"a\n  ",  2, 2},
        {"a\r ",   1, 2},
        {"a\v\f ", 1, 3},
        {" a",     0, 2},
        {"\0 "s,   1, 1},
    };
    for (const auto& row : rows) {
        const HeapText text(row.text);
        SubString s = text.View();
        EXPECT_EQ(ScanBackwardsThroughSpacesAndTabs(s), row.width) << row.text;
        EXPECT_EQ(s.m_p1, text.begin()) << row.text;
        EXPECT_EQ(s.size(), row.left) << row.text;
    }
}

// ---- ScanArgument ------------------------------------------------------------------------------

struct Argument {
    std::string text;
    EToken end;
    ssize_t reached;

    bool operator==(const Argument&) const = default;
};

void PrintTo(const Argument& argument, std::ostream* os) {
    *os << testing::PrintToString(argument.text) << " ended by " << argument.end << ", scanner at "
        << argument.reached;
}

Argument FirstArgument(std::string_view bytes, EToken rightBracket = TOKEN_RIGHT_PAREN) {
    const HeapText text(bytes);
    SubString s = text.View();
    SubString argument;
    const LSToken end = ScanArgument(s, argument, rightBracket);
    return {Str(argument), end.GetType(), s.m_p1 - text.begin()};
}

TEST(ScanArgument, ReadsAListArgumentByArgument) {
    const HeapText text("a , b )c");
    SubString s = text.View();
    SubString argument;
    EXPECT_EQ(ScanArgument(s, argument, TOKEN_RIGHT_PAREN), TOKEN_COMMA);
    EXPECT_EQ(Str(argument), "a");
    EXPECT_EQ(ScanArgument(s, argument, TOKEN_RIGHT_PAREN), TOKEN_RIGHT_PAREN);
    EXPECT_EQ(Str(argument), "b");
    EXPECT_EQ(s.m_p1, text.begin() + 7);
}

TEST(ScanArgument, ReturnsTheTokenThatEndsIt) {
    const HeapText text("a ,b");
    SubString s = text.View();
    SubString argument;
    const LSToken end = ScanArgument(s, argument, TOKEN_RIGHT_PAREN);
    EXPECT_EQ(end.m_str.m_p1, text.begin() + 2);
    EXPECT_EQ(end.m_str.m_p2, text.begin() + 3);
}

TEST(ScanArgument, CanBeEmpty) {
    EXPECT_EQ(FirstArgument(")"), (Argument{"", TOKEN_RIGHT_PAREN, 1}));
    EXPECT_EQ(FirstArgument(" \n\t )"), (Argument{"", TOKEN_RIGHT_PAREN, 5}));
    EXPECT_EQ(FirstArgument(","), (Argument{"", TOKEN_COMMA, 1}));
    EXPECT_EQ(FirstArgument(" /* none */ )"), (Argument{"", TOKEN_RIGHT_PAREN, 13}));
}

TEST(ScanArgument, LosesBlanksAtBothEndsButACommentAtItsEndOnly) {
    EXPECT_EQ(FirstArgument(" a  b /* c */ \n)"), (Argument{"a  b", TOKEN_RIGHT_PAREN, 16}));
    EXPECT_EQ(FirstArgument("/* a */ b // c\n)"), (Argument{"/* a */ b", TOKEN_RIGHT_PAREN, 16}));
    EXPECT_EQ(FirstArgument("a /* , */ b)"), (Argument{"a /* , */ b", TOKEN_RIGHT_PAREN, 12}));
    EXPECT_EQ(FirstArgument("a @/* b */)"), (Argument{"a @/* b */", TOKEN_RIGHT_PAREN, 11}));
}

TEST(ScanArgument, EndsAtTheBracketItIsGiven) {
    EXPECT_EQ(FirstArgument("a)]", TOKEN_RIGHT_SQUARE), (Argument{"a)", TOKEN_RIGHT_SQUARE, 3}));
    EXPECT_EQ(FirstArgument("a>)", TOKEN_GREATER), (Argument{"a", TOKEN_GREATER, 2}));
    EXPECT_EQ(FirstArgument("a } ] )"), (Argument{"a } ]", TOKEN_RIGHT_PAREN, 7}));
}

TEST(ScanArgument, PassesOverCommasAndBracketsInNestings) {
    EXPECT_EQ(FirstArgument("f(a, b), c)"), (Argument{"f(a, b)", TOKEN_COMMA, 8}));
    EXPECT_EQ(FirstArgument("{a, )}, c)"), (Argument{"{a, )}", TOKEN_COMMA, 7}));
    EXPECT_EQ(FirstArgument("[a, )] + [,])"), (Argument{"[a, )] + [,]", TOKEN_RIGHT_PAREN, 13}));
    EXPECT_EQ(FirstArgument("((,),(,)),"), (Argument{"((,),(,))", TOKEN_COMMA, 10}));
}

TEST(ScanArgument, CountsOnlyTheKindOfBracketThatOpenedTheNesting) {
    EXPECT_EQ(FirstArgument("f[1)], b)"), (Argument{"f[1)]", TOKEN_COMMA, 6}));
    EXPECT_EQ(FirstArgument("([{), b)"), (Argument{"([{)", TOKEN_COMMA, 5}));
    EXPECT_EQ(FirstArgument("(}]), b)"), (Argument{"(}])", TOKEN_COMMA, 5}));
}

TEST(ScanArgument, DoesNotSeeBracketsInStringsAndComments) {
    EXPECT_EQ(FirstArgument("')', b"), (Argument{"')'", TOKEN_COMMA, 4}));
    EXPECT_EQ(FirstArgument("(\")\" /* ) */ // )\n), b"),
              (Argument{"(\")\" /* ) */ // )\n)", TOKEN_COMMA, 20}));
}

TEST(ScanArgument, TakesWhatStandsInBackQuotesAsItIs) {
    EXPECT_EQ(FirstArgument("`(x,y`)"), (Argument{"(x,y", TOKEN_RIGHT_PAREN, 7}));
    EXPECT_EQ(FirstArgument("  ` it's \"\\\n// ` , b"),
              (Argument{" it's \"\\\n// ", TOKEN_COMMA, 18}));
    EXPECT_EQ(FirstArgument("``)"), (Argument{"", TOKEN_RIGHT_PAREN, 3}));
    EXPECT_EQ(FirstArgument("`\0\x80`)"s), (Argument{"\0\x80"s, TOKEN_RIGHT_PAREN, 5}));
}

TEST(ScanArgument, LeavesTheTokenBehindBackQuotesToTheCaller) {
    EXPECT_EQ(FirstArgument("`a` b)"), (Argument{"a", TOKEN_IDENTIFIER, 5}));
    EXPECT_EQ(FirstArgument("`a`"), (Argument{"a", TOKEN_END, 3}));
}

TEST(ScanArgument, TakesABackQuoteElsewhereForPlainText) {
    EXPECT_EQ(FirstArgument("a`,`"), (Argument{"a`", TOKEN_COMMA, 3}));
}

// What a scanning function throws, and how far it had come.
struct FailureRow {
    std::string text;
    std::string description;
    ssize_t offset;
    ssize_t reached;
};

template <class Scan>
void ExpectFailures(std::initializer_list<FailureRow> rows, Scan&& scan) {
    for (const FailureRow& row : rows) {
        const HeapText text(row.text);
        SubString s = text.View();
        EXPECT_EQ(LexErrorOf(text.begin(), [&] { scan(s); }),
                  (LexError{row.description, row.offset}))
            << row.text;
        EXPECT_EQ(s.m_p1 - text.begin(), row.reached) << row.text;
    }
}

TEST(ScanArgument, ThrowsWhereTheTextEndsTooEarly) {
    const std::string eos = "Met EOS while reading argument ";
    ExpectFailures(
        {
            {"",           eos,                0,  0 },
            {" \n",        eos,                2,  2 },
            {"a",          eos + "a",          1,  1 },
            {" a b \n",    eos + "a b \n",     6,  6 },
            {"f(a, b",     eos + "f(a, b",     6,  6 },
            {" [a) // b",  eos + "[a) // b",   9,  9 },
            {"a(1)](, b)", eos + "a(1)](, b)", 10, 10},
            {"`",          eos + "`",          1,  1 },
            {" `a,b)\n",   eos + "`a,b)\n",    7,  7 },
    },
        [](SubString& s) {
            SubString argument;
            ScanArgument(s, argument, TOKEN_RIGHT_PAREN);
        });
}

TEST(ScanArgument, PassesOnLexicalErrors) {
    ExpectFailures(
        {
            {"a \x80)",  "Bad token \x80",                                                       2, 2},
            {"(it's\n)", "Met line feed within single quoted string after reading 's",           5, 5},
            {"`a` 1.)",  "Expected digit (not ')') after decimal point (ie after reading '1.')", 6,
             6                                                                                       },
    },
        [](SubString& s) {
            SubString argument;
            ScanArgument(s, argument, TOKEN_RIGHT_PAREN);
        });
}

// ---- ScanBrackettedSection ---------------------------------------------------------------------

// A text that was cut out, and how far the scanner had come.
struct Cut {
    std::string text;
    ssize_t reached;

    bool operator==(const Cut&) const = default;
};

void PrintTo(const Cut& cut, std::ostream* os) {
    *os << testing::PrintToString(cut.text) << ", scanner at " << cut.reached;
}

using SectionScanner = SubString (*)(SubString&, bool);

Cut Section(SectionScanner scan, bool readInitialBracket, std::string_view bytes) {
    const HeapText text(bytes);
    SubString s = text.View();
    const SubString section = scan(s, readInitialBracket);
    return {Str(section), s.m_p1 - text.begin()};
}

TEST(ScanBrackettedSection, GivesTheTextInsideThePair) {
    EXPECT_EQ(Section(ScanRndBrackettedSection, true, " (a(b)c)d"), (Cut{"a(b)c", 8}));
    EXPECT_EQ(Section(ScanSquareBrackettedSection, true, "[a[b](c])d"), (Cut{"a[b](c", 8}));
    EXPECT_EQ(Section(ScanCurlyBrackettedSection, true, "/* x */{}"), (Cut{"", 9}));
}

TEST(ScanBrackettedSection, StartsInsideWhereTheBracketHasBeenRead) {
    EXPECT_EQ(Section(ScanRndBrackettedSection, false, "a)b"), (Cut{"a", 2}));
    EXPECT_EQ(Section(ScanSquareBrackettedSection, false, "[a]b]c"), (Cut{"[a]b", 5}));
    EXPECT_EQ(Section(ScanCurlyBrackettedSection, false, "{a}b}c"), (Cut{"{a}b", 5}));
}

TEST(ScanBrackettedSection, LosesBlanksAtBothEndsButACommentAtItsEndOnly) {
    EXPECT_EQ(Section(ScanRndBrackettedSection, true, "( \n a b /* c */ // d\n )"),
              (Cut{"a b", 23}));
    EXPECT_EQ(Section(ScanRndBrackettedSection, true, "( /* a */ b )"), (Cut{"/* a */ b", 13}));
    EXPECT_EQ(Section(ScanRndBrackettedSection, true, "( /* a */ )"), (Cut{"", 11}));
    EXPECT_EQ(Section(ScanRndBrackettedSection, true, "(a @// b\n)"), (Cut{"a @// b", 10}));
}

TEST(ScanBrackettedSection, DoesNotSeeBracketsInStringsAndComments) {
    EXPECT_EQ(Section(ScanCurlyBrackettedSection, true, "{'}' /*}*/ //}\n \"}\"}x"),
              (Cut{"'}' /*}*/ //}\n \"}\"", 20}));
}

TEST(ScanBrackettedSection, TakesAnyPairOfTokens) {
    const HeapText text("< a << < b > > c");
    SubString s = text.View();
    EXPECT_EQ(Str(ScanBrackettedSection(s, true, TOKEN_LESS, TOKEN_GREATER)), "a << < b >");
    EXPECT_EQ(s.m_p1, text.begin() + 14);
}

TEST(ScanBrackettedSection, ThrowsAtATokenThatIsNotTheInitialBracket) {
    ExpectFailures(
        {
            {" a",    "( expected when read a",   1, 2},
            {"",      "( expected when read EOS", 0, 0},
            {" // a", "( expected when read EOS", 5, 5},
            {"[a]",   "( expected when read [",   0, 1}
    },
        [](SubString& s) { ScanRndBrackettedSection(s, true); });
    ExpectFailures(
        {
            {"\"a\"", "[ expected when read \"a\"", 0, 3}
    },
        [](SubString& s) { ScanSquareBrackettedSection(s, true); });
    ExpectFailures(
        {
            {"(", "{ expected when read (", 0, 1}
    },
        [](SubString& s) { ScanCurlyBrackettedSection(s, true); });
    ExpectFailures(
        {
            {"(", "\0 expected when read ("s, 0, 1}
    },
        [](SubString& s) { ScanBrackettedSection(s, true, TOKEN_LESS, TOKEN_GREATER); });
}

TEST(ScanBrackettedSection, ThrowsWhereTheTextEndsTooEarly) {
    ExpectFailures(
        {
            {"(",         "Met EOS while reading bracketted section", 1, 1},
            {"(a (b) \n", "Met EOS while reading bracketted section", 8, 8},
            {"(a // )",   "Met EOS while reading bracketted section", 7, 7}
    },
        [](SubString& s) { ScanRndBrackettedSection(s, true); });
}

// ---- ScanStringBlock ---------------------------------------------------------------------------

// A block that was cut out.
struct Block {
    std::string text;
    ssize_t indentation;
    ssize_t reached;

    bool operator==(const Block&) const = default;
};

void PrintTo(const Block& block, std::ostream* os) {
    *os << testing::PrintToString(block.text) << " indented by " << block.indentation
        << ", scanner at " << block.reached;
}

using BlockScanner = SubString (*)(SubString&, ssize_t&);

Block ScanBlock(BlockScanner scan, std::string_view bytes) {
    const HeapText text(bytes);
    SubString s = text.View();
    ssize_t indentation = 77;
    const SubString block = scan(s, indentation);
    return {Str(block), indentation, s.m_p1 - text.begin()};
}

Block Subst(std::string_view bytes) {
    return ScanBlock(ScanSubstString, bytes);
}

TEST(BlockOnTheSameLine, IsTakenAsItStandsInItsBrackets) {
    EXPECT_EQ(Subst("{a}b"), (Block{"a", 0, 3}));
    EXPECT_EQ(Subst(" \t\v\f\r{ a /* b */ }"), (Block{" a /* b */ ", 0, 18}));
    EXPECT_EQ(Subst("{}"), (Block{"", 0, 2}));
    EXPECT_EQ(Subst("{a{b}c}d"), (Block{"a{b}c", 0, 7}));
    EXPECT_EQ(ScanBlock(ScanRndBrackettedString, "(a(b)})c"), (Block{"a(b)}", 0, 7}));
}

TEST(BlockOnTheSameLine, LosesTheLineEndBehindTheBracketAndNothingElse) {
    EXPECT_EQ(Subst("{\n  a\n    b\n}"), (Block{"  a\n    b\n", 0, 13}));
    EXPECT_EQ(Subst("{\r\n  a\r\n}"), (Block{"  a\r\n", 0, 9}));
    EXPECT_EQ(Subst("{\ra}"), (Block{"a", 0, 4}));
    EXPECT_EQ(Subst("{\n\r\na}"), (Block{"\r\na", 0, 6}));
    EXPECT_EQ(Subst("{ \n  a}"), (Block{" \n  a", 0, 7}));
    EXPECT_EQ(Subst("{\n}"), (Block{"", 0, 3}));
}

TEST(BlockOnTheSameLine, MayFollowComments) {
    EXPECT_EQ(Subst("/* a */ {b}"), (Block{"b", 0, 11}));
    EXPECT_EQ(Subst("// a\n  {\n  b}"), (Block{"  b", 0, 13}));
}

TEST(BlockOnTheSameLine, IsNotClosedInStringsAndComments) {
    EXPECT_EQ(Subst("{'}' \"}\" /*}*/ //}\n}"), (Block{"'}' \"}\" /*}*/ //}\n", 0, 20}));
}

TEST(BlockOnTheSameLine, ThrowsWhereTheTextEndsTooEarly) {
    ssize_t indentation;
    ExpectFailures(
        {
            {"{",           "Met EOS before closing }",                1,  1 },
            {"{\r",         "Met EOS while reading bracketted string", 2,  2 },
            {"{\n",         "Met EOS while reading bracketted string", 2,  2 },
            {" {a{b} // }", "Met EOS while reading bracketted string", 11, 11}
    },
        [&](SubString& s) { ScanSubstString(s, indentation); });
    ExpectFailures(
        {
            {"(",   "Met EOS before closing )",                1, 1},
            {"( a", "Met EOS while reading bracketted string", 3, 3}
    },
        [&](SubString& s) { ScanRndBrackettedString(s, indentation); });
}

TEST(BlockWithoutBrackets, IsTheRestOfTheLine) {
    EXPECT_EQ(Subst("  a b { c /* d\n e"), (Block{"a b { c /* d", 0, 14}));
    EXPECT_EQ(Subst("a \t \nb"), (Block{"a \t ", 0, 4}));
    EXPECT_EQ(Subst("a"), (Block{"a", 0, 1}));
    EXPECT_EQ(Subst("(a) it's\nb"), (Block{"(a) it's", 0, 8}));
}

TEST(BlockWithoutBrackets, StopsAtTheCarriageReturnOfTheLineEnd) {
    EXPECT_EQ(Subst(" a b\r\nc"), (Block{"a b", 0, 4}));
}

TEST(BlockWithoutBrackets, StartsAtACommentAndEndsBehindItsFirstToken) {
    EXPECT_EQ(Subst("/* a */ b\nc"), (Block{"/* a */ b", 0, 9}));
    EXPECT_EQ(Subst("/* a\n */ b\nc"), (Block{"/* a\n */ b", 0, 10}));
    EXPECT_EQ(Subst("// a\nb c\nd"), (Block{"// a\nb c", 0, 8}));
    EXPECT_EQ(Subst("// a"), (Block{"// a", 0, 4}));
    EXPECT_EQ(Subst("@/*\n*/ b\nc"), (Block{"@/*\n*/ b", 0, 8}));
}

TEST(BlockWithoutBrackets, MustStartWithATokenThatScans) {
    ssize_t indentation;
    ExpectFailures(
        {
            {" 'a\nb", "Met line feed within single quoted string after reading 'a", 3, 3},
            {"\x80",   "Bad token \x80",                                             0, 0}
    },
        [&](SubString& s) { ScanSubstString(s, indentation); });
}

TEST(BlockWithoutBrackets, IsAnErrorWhereBracketsAreRequired) {
    ssize_t indentation;
    ExpectFailures(
        {
            {" a b", "Expected ( when read a",   1, 2},
            {"{a}",  "Expected ( when read {",   0, 1},
            {"// a", "Expected ( when read EOS", 4, 4}
    },
        [&](SubString& s) { ScanRndBrackettedString(s, indentation); });
}

TEST(BlockOnALaterLine, GivesOneLineWithoutItsIndentationAndItsLineEnd) {
    EXPECT_EQ(Subst("\n{\n  abc\n}d"), (Block{"abc", 2, 10}));
    EXPECT_EQ(Subst(" \r\n  {\r\n    abc\r\n  }"), (Block{"abc", 4, 20}));
    EXPECT_EQ(ScanBlock(ScanRndBrackettedString, "\n(\n abc\n)"), (Block{"abc", 1, 9}));
}

TEST(BlockOnALaterLine, KeepsTheIndentationOfLaterLines) {
    EXPECT_EQ(Subst("\n{\n  a\n    b\n  c\n}"), (Block{"a\n    b\n  c", 2, 18}));
}

TEST(BlockOnALaterLine, CountsATabAsFourColumns) {
    EXPECT_EQ(Subst("\n{\n\t  a\n}"), (Block{"a", 6, 9}));
    EXPECT_EQ(Subst("\n{\n \ta\n}"), (Block{"a", 5, 8}));
}

TEST(BlockOnALaterLine, MayFollowBlankLinesAndComments) {
    EXPECT_EQ(Subst("\n\n // b\n /* c */ {\n a\n}"), (Block{"a", 1, 23}));
}

TEST(BlockOnALaterLine, DoesNotMeasureBlanksBehindTheBracket) {
    EXPECT_EQ(Subst("\n{ \t\r\n a\n}"), (Block{"a", 1, 10}));
    EXPECT_EQ(Subst("\n{  ab c\n}"), (Block{"ab c", 0, 10}));
}

TEST(BlockOnALaterLine, LosesOneLineEndOnly) {
    EXPECT_EQ(Subst("\n{\na\n\n}"), (Block{"a\n", 0, 7}));
    EXPECT_EQ(Subst("\n{\na\r\n\r\n}"), (Block{"a\r\n", 0, 9}));
    EXPECT_EQ(Subst("\n{\n\n  a\n}"), (Block{"\n  a", 0, 9}));
    EXPECT_EQ(Subst("\n{\na\r}"), (Block{"a", 0, 6}));
}

TEST(BlockOnALaterLine, LosesTheLastByteInFrontOfABracketThatIsNotAlone) {
    EXPECT_EQ(Subst("\n{\nabc }"), (Block{"ab", 0, 8}));
    EXPECT_EQ(Subst("\n{\nx\n  abc }"), (Block{"x\n  ab", 0, 12}));
    EXPECT_EQ(Subst("\n{\nabc}"), (Block{"ab", 0, 7}));
    EXPECT_EQ(Subst("\n{\na /* b */ }"), (Block{"a /* b *", 0, 14}));
}

TEST(BlockOnALaterLine, IsEmptyWhereNothingIsInIt) {
    EXPECT_EQ(Subst("\n{}"), (Block{"", 0, 3}));
    EXPECT_EQ(Subst("\n{ }"), (Block{"", 0, 4}));
    EXPECT_EQ(Subst("\n{\n}"), (Block{"", 0, 4}));
    EXPECT_EQ(Subst("\n{\r\n}"), (Block{"", 0, 5}));
    EXPECT_EQ(Subst("\n{\n   }"), (Block{"", 3, 7}));
    EXPECT_EQ(Subst("\n{a}"), (Block{"", 0, 4}));
    EXPECT_EQ(Subst("\n{\n\n}"), (Block{"", 0, 5}));
}

TEST(BlockOnALaterLine, IsNotClosedByInnerBracketsStringsAndComments) {
    EXPECT_EQ(Subst("\n{\n {a}\n '}' //}\n}"), (Block{"{a}\n '}' //}", 1, 18}));
}

TEST(BlockOnALaterLine, NeedsItsBracketWhetherRequiredOrNot) {
    ssize_t indentation;
    ExpectFailures(
        {
            {"\n a", "Expected { when read a",   2, 3},
            {" \n",  "Expected { when read EOS", 2, 2},
            {"\n(",  "Expected { when read (",   1, 2}
    },
        [&](SubString& s) { ScanSubstString(s, indentation); });
    ExpectFailures(
        {
            {"\n a", "Expected ( when read a", 2, 3}
    },
        [&](SubString& s) { ScanRndBrackettedString(s, indentation); });
}

TEST(BlockOnALaterLine, ThrowsWhereTheTextEndsTooEarly) {
    ssize_t indentation;
    ExpectFailures(
        {
            {"\n{",               "Met EOS before closing }", 2,  2 },
            {"\n{ \n",            "Met EOS before closing }", 4,  4 },
            {"\n{\n  a {b} // }", "Met EOS before closing }", 15, 15}
    },
        [&](SubString& s) { ScanSubstString(s, indentation); });
    ExpectFailures(
        {
            {"\n(a", "Met EOS before closing )", 3, 3}
    },
        [&](SubString& s) { ScanRndBrackettedString(s, indentation); });
}

TEST(ScanStringBlock, ThrowsWhereNoTextIsLeftOnTheLine) {
    ssize_t indentation;
    ExpectFailures(
        {
            {"",      "Expected { when read EOS", 0, 0},
            {" \t\r", "Expected { when read EOS", 3, 3}
    },
        [&](SubString& s) { ScanSubstString(s, indentation); });
    ExpectFailures(
        {
            {"", "Expected ( when read EOS", 0, 0}
    },
        [&](SubString& s) { ScanRndBrackettedString(s, indentation); });
}

TEST(ScanStringBlock, TakesAnyBracketsAndNames) {
    const auto scan = [](SubString& s, bool requireBrackets) {
        ssize_t indentation;
        return ScanStringBlock(s, indentation, TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE, "open",
                               "close", requireBrackets);
    };
    const HeapText text("[a[b]}]c");
    SubString s = text.View();
    EXPECT_EQ(Str(scan(s, true)), "a[b]}");
    ExpectFailures(
        {
            {"a", "Expected open when read a",    0, 1},
            {"[", "Met EOS before closing close", 1, 1},
            {"",  "Expected open when read EOS",  0, 0}
    },
        [&](SubString& rest) { scan(rest, true); });
}

TEST(ScanStringBlock, StaysInsideAnyText) {
    std::mt19937 random(1);
    const std::string_view bytes = "\n\n\r {{}}(),a`'/*";
    for (int round = 0; round < 20000; ++round) {
        std::string bytesOfText;
        for (std::size_t n = random() % 12; n > 0; --n)
            bytesOfText += bytes[random() % bytes.size()];
        const HeapText text(bytesOfText);
        SubString s = text.View();
        try {
            ssize_t indentation;
            const SubString block = ScanSubstString(s, indentation);
            ASSERT_LE(text.begin(), block.m_p1) << bytesOfText;
            ASSERT_LE(block.m_p1, block.m_p2) << bytesOfText;
            ASSERT_LE(block.m_p2, s.m_p1) << bytesOfText;
            SubString argument;
            ScanArgument(s, argument, TOKEN_RIGHT_PAREN);
            ASSERT_LE(block.m_p2, argument.m_p1) << bytesOfText;
            ASSERT_LE(argument.m_p1, argument.m_p2) << bytesOfText;
            ASSERT_LE(argument.m_p2, s.m_p1) << bytesOfText;
        } catch (const LexScannerException& e) {
            ASSERT_LE(text.begin(), e.m_pos) << bytesOfText;
            ASSERT_LE(e.m_pos, text.end()) << bytesOfText;
        }
    }
}

// ---- SubStringsAreTokenEquivalent --------------------------------------------------------------

TEST(SubStringsAreTokenEquivalent, ComparesTokensAndNotTheirLayout) {
    struct {
        const char* text1;
        const char* text2;
        bool equivalent;
    } const rows[] = {
        {"",         "",              true },
        {"",         " /* a */ // b", true },
        {"a+b",      "a + b /*x*/",   true },
        {"a\nb",     "a b",           true },
        {"a++b",     "a + + b",       false},
        {"a",        "",              false},
        {"",         "a",             false},
        {"a b",      "a",             false},
        {"a",        "a b",           false},
        {"a",        "b",             false},
        {"a b",      "ab",            false},
        {"'a'",      "\"a\"",         false},
        {"--",       "<<",            false},
        {"1",        "1.0",           false},
        {"a @/*x*/", "a",             false},
        {"a @/*x*/", "a @/*y*/",      false},
        {"a @/*x*/", "a/**/@/*x*/",   true },
    };
    for (const auto& row : rows) {
        const HeapText text1(row.text1);
        const HeapText text2(row.text2);
        EXPECT_EQ(SubStringsAreTokenEquivalent(text1.View(), text2.View()), row.equivalent)
            << row.text1 << " and " << row.text2;
    }
}

TEST(SubStringsAreTokenEquivalent, PassesOnLexicalErrorsOfEitherText) {
    const HeapText good("a b");
    const HeapText bad("a \x80");
    EXPECT_EQ(
        LexErrorOf(bad.begin(), [&] { SubStringsAreTokenEquivalent(good.View(), bad.View()); }),
        (LexError{"Bad token \x80", 2}));
    EXPECT_EQ(
        LexErrorOf(bad.begin(), [&] { SubStringsAreTokenEquivalent(bad.View(), good.View()); }),
        (LexError{"Bad token \x80", 2}));
}

}  // namespace
}  // namespace vorn
