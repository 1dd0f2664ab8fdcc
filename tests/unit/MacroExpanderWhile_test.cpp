#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Faults.h"

namespace vorn_test {
namespace {

using namespace vorn;
using Texts = std::vector<std::string>;

// The texts run in a file scope with an int i of 0.
class Counting : public Session {
public:
    Counting() { m_frame.AddVariable(new LSValueVariable(LSV_INT, "i", "0")); }
};

class While : public testing::TestWithParam<Expansion> {};

TEST_P(While, Expands) {
    EXPECT_EQ(Counting().Expand(GetParam().text), GetParam().output);
}

INSTANTIATE_TEST_SUITE_P(
    RunsWhileTheConditionHolds, While,
    testing::Values(Expansion{"@while(i < 3) {i,@let i = i + 1}", "0,1,2,"},
                    Expansion{"@while(false) {a}", ""}, Expansion{"@while(1 < i) {a}b", "b"},
                    Expansion{"@while (i != 2) i@let i = i + 1\nb", "01\nb"},
                    Expansion{"@ while // a\n (i < 2)\n{\n  i\n  @let i = i + 1\n\n}", "0\n1\n"},
                    Expansion{"@while(i < 1) {@let i = 1}", ""},
                    Expansion{"@let bool go = true\n@while(go) {a@let go = false}", "a"},
                    Expansion{"@while(i < 2) {@let int j = 0\n"
                              "@while(j < 2) {(i,j)@let j = j + 1}@let i = i + 1}",
                              "(0,0)(0,1)(1,0)(1,1)"}));

INSTANTIATE_TEST_SUITE_P(
    ExpandsTheConditionAnewBeforeEachTurn, While,
    testing::Values(Expansion{"@def c = i <\n@while(c 2) {i@let i = i + 1}", "01"},
                    Expansion{"@def up = @let i = i + 1\n@while(i < 2 up) {i}i", "123"},
                    Expansion{"@def m = 0\n@while(m < 2) {m@def + m = 2}", "0"},
                    Expansion{"@def next(n) = @exportdef m = n\n@def m = 0\n"
                              "@while(m == 0) {m@exportdef m = 1}m",
                              "01"}));

// The lines that a turn begins stand where the directive stands.
INSTANTIATE_TEST_SUITE_P(
    RebasesEachTurnToTheColumnOfTheFirst, While,
    testing::Values(Expansion{"ab: @while(i < 2) {x\ny@let i = i + 1}z", "ab: x\n    yx\n    yz"},
                    Expansion{"ab: @while(i < 2) {i\n@let i = i + 1\n}z", "ab: 0\n    1\nz"},
                    Expansion{"ab: @while(i < 2)\n  {\n    i\n      y\n    @let i = i + 1\n  }z",
                              "ab: 0\n      y\n    1\n      y\nz"},
                    Expansion{"  @while(i < 2) {i\n@let i = i + 1\n}", "  0\n  1\n"},
                    Expansion{"\t@while(i < 2)\n\t{\n\t\ti\n\t\t@let i = i + 1\n\t}",
                              "\t0\n    1\n"}));

TEST(While, RebasesTurnsToTheIndentationOfItsTextAtALineStart) {
    EXPECT_EQ(Counting().Expand("@while(i < 2) {i\n@let i = i + 1\n}z", 0, 3), "   0\n   1\n   z");
}

TEST(While, SkipsNothingBehindItsBlock) {
    EXPECT_EQ(Counting().Expand("a\n@while(false) {}\n\n  b"), "a\n\n\n  b");
    EXPECT_EQ(Counting().Expand("@while(i < 1) {@let i = 1}  b"), "  b");
}

TEST(While, WritesNothingButItsTurns) {
    Counting session;
    EXPECT_EQ(session.Expand("x @while(i < 2) {<i\n@let i = i + 1} y"), "x <0\n  <1\n y");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim x", "verbatim  ", "verbatim <", "calculated i 1",
                                       "verbatim \n", "indentation 2", "verbatim <",
                                       "calculated i 1", "verbatim \n", "verbatim  y"}));
    EXPECT_EQ(session.Expand("@while(false) {a}"), "");
    EXPECT_EQ(session.Pieces(), Texts{});
}

// ---- frames ------------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    KeepsWhatATurnDefines, While,
    testing::Values(
        Expansion{"@while(i < 2) {@let int j = i\n@def m = <j>\nm@let i = i + 1}m j", "<0><1>m j"},
        Expansion{"@while(i < 2) {@exportdef m = <i>\nm@let i = i + 1}m", "<0><1><2>"},
        Expansion{"@scope {@while(i < 1) {@def + m = 1\n@let i = 1}}m", "1"},
        Expansion{"@scope {@while(i < 1) {@exportdef m = 1\n@let i = 1}m}m", "1m"},
        Expansion{"@while(i < 2) {@let i = i + 1\n@let string i = \"a\"\ni;}i", "a;a;2"}));

INSTANTIATE_TEST_SUITE_P(
    KeepsWhatTheConditionDefines, While,
    testing::Values(Expansion{"@while(i < 1 @def m = 1\n) {m@let i = 1}m", "mm"},
                    Expansion{"@while(i < 1 @exportdef m = 1\n) {m@let i = 1}m", "11"},
                    Expansion{"@while(i < 1 @def + m = 1\n) {m@let i = 1}m", "11"}));

TEST(While, LeavesWhatWasDoneBeforeASwallowedError) {
    // The right side of || is looked at only where the left one does not hold.
    EXPECT_EQ(Counting().Expand("@assertfails{@while(i < 2 || i) {@let i = i + 1}}i"), "2");
    EXPECT_EQ(Counting().Expand("@assertfails{@while(true) {@let i = i + 1\n@assert(i < 2)}}i"),
              "2");
}

// Where the directive stands in a text put together during expansion, that text has to live as
// long as what is defined by it.
INSTANTIATE_TEST_SUITE_P(
    KeepsTheTextsOfDefinitions, While,
    testing::Values(
        Expansion{"@[@quote(@while(false @def + m = hello\n) {})]m", "hello"},
        Expansion{"@[@quote(@while(i < 1) {@def + m(a) = <a>\n@let i = 1})]m(1)", "<1>"},
        Expansion{"@for(x in [@quote(@while(i < 1) {@def + m = hello\n@let i = 1})]) {x}m",
                  "hello"}));

// ---- what nested texts may not do --------------------------------------------------------------

TEST(While, HandsOnNoImportHandler) {
    MemoryFiles files;
    files.m_files["f"] = "@def m = 1";
    const std::pair<std::string_view, LexError> cases[] = {
        {"@while(true) {@import \"f\"}",     {"@import statement not allowed here", 15}    },
        {"@while(true) {@importpath \"f\"}", {"@importpath statement not allowed here", 15}},
        {"@while(@import \"f\") {}",
         {"@import statement not allowed here\n    in @while(@import \"f\")", 8}           },
    };
    for (const auto& [text, error] : cases) {
        Session session;
        session.m_importHandler = &files;
        EXPECT_EQ(session.ExpandError(text), error) << text;
    }
    Counting session;
    session.m_importHandler = &files;
    EXPECT_EQ(session.Expand("@while(i < 1) {@$X@let i = 1}"), "@$X");
}

// ---- errors ------------------------------------------------------------------------------------

class WhileFault : public testing::TestWithParam<Fault> {};

TEST_P(WhileFault, IsReported) {
    Counting session;
    ExpectFault(session, GetParam());
}

INSTANTIATE_TEST_SUITE_P(OfTheHead, WhileFault,
                         testing::Values(Fault{"@while ^x {}", "( expected when read x"},
                                         Fault{"@while ^{}", "( expected when read {"},
                                         Fault{"@while^", "( expected when read EOS"},
                                         Fault{"@while(true^",
                                               "Met EOS while reading bracketted section"}));

// The block is read in front of the first test.
INSTANTIATE_TEST_SUITE_P(
    OfTheBlock, WhileFault,
    testing::Values(
        Fault{"@while(false) { unbalanced^",
              "Met EOS while reading bracketted string\n    for @while directive"},
        Fault{"@while(1) {^", "Met EOS before closing }\n    for @while directive"},
        Fault{"@while()^", "Expected { when read EOS\n    for @while directive"},
        Fault{"@while(@fail(\"x\"))\n^a", "Expected { when read a\n    for @while directive"},
        Fault{"@while(false)\n{a^", "Met EOS before closing }\n    for @while directive"}));

// An error of the expansion keeps its place, and is shown with the condition as written.
INSTANTIATE_TEST_SUITE_P(
    OfTheExpansionOfTheCondition, WhileFault,
    testing::Values(Fault{"@while(i @fail^(\"x\") ) {}", "x\n    in @while(i @fail(\"x\"))"},
                    Fault{"@while(@fail^(\"EOS\")) {}", "EOS\n    in @while(@fail(\"EOS\"))"},
                    Fault{"@def m(a) = @fail^(\"x\")\n@while(m(1)) {}",
                          "x\n    invoking macro m(a) with a=1\n    in @while(m(1))"}));

// One of the parser lies in a text that is gone: its place is the @. The condition is shown as
// expanded, and its end as the bracket that closes it.
INSTANTIATE_TEST_SUITE_P(
    OfTheExpression, WhileFault,
    testing::Values(
        Fault{"a ^@while() {}", "Unexpected ) after ( in expression\n    in @while()"},
        Fault{"^@while(i + ) {}", "Unexpected ) after + in expression\n    in @while(0 +)"},
        Fault{"^@ while(i) {}", "No implicit conversion from int64 to bool\n    in @while(0)"},
        Fault{"^@while(1 2) {}", "No implicit conversion from int64 to bool\n    in @while(1 2)"},
        Fault{"@def c = i == 0 2\n^@while(c) {}",
              "Expected ) after 0 when read 2 in expression\n    in @while(0 == 0 2)"},
        Fault{"^@while(true \"EOS\") {}",
              "Expected ) after true when read \")\" in expression\n    in @while(true \"EOS\")"},
        Fault{"^@while(1 / i == 0) {}", "Division by zero error\n    in @while(1 / 0 == 0)"}));

// The block adds nothing.
INSTANTIATE_TEST_SUITE_P(OfATurn, WhileFault,
                         testing::Values(Fault{"@while(true) {@fail^(\"x\")}", "x"},
                                         Fault{"@while(true) {@while(true) {@fail^(\"x\")}}", "x"},
                                         Fault{"@def m = @while(true) {@fail^(\"x\")}\nm",
                                               "x\n    invoking macro m"},
                                         Fault{"@while(true) {@for(a in [1]) {@fail^(\"x\")}}",
                                               "x\n    in @for directive when a = 1"}));

TEST(WhileFault, LeavesWhatEarlierTurnsWrote) {
    Counting session;
    ExpectFault(session,
                {"a @while(i < 3) {<i>@let i = i + 1\n@if (i == 2) {b@fail^(\"x\")}}", "x"});
    EXPECT_EQ(session.m_output, "a <0><1>b");
    EXPECT_EQ(session.Expand("i"), "2");
}

TEST(WhileFault, OfALaterTestShowsTheConditionOfThatTest) {
    Counting session;
    ExpectFault(session, {"^@while(2 / (2 - i) > 0) {<i>@let i = i + 1}",
                          "Division by zero error\n    in @while(2 / (2 - 2) > 0)"});
    EXPECT_EQ(session.m_output, "<0><1>");
}

}  // namespace
}  // namespace vorn_test
