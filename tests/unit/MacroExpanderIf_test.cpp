#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/src/MacroExpander.h"
#include "tests/support/Faults.h"

namespace vorn_test {
namespace {

using namespace vorn;
using Texts = std::vector<std::string>;

// ---- what comes next ---------------------------------------------------------------------------

struct Ahead {
    std::string_view text;
    bool found;
    std::string_view rest;  // behind the word, where it was found
};

TEST(ScanElseIfBlock, FindsTheAtAndTheWord) {
    const Ahead cases[] = {
        {"@elseif(x)",                  true,  "(x)" },
        {" \n@ /* x */ elseif (x)",     true,  " (x)"},
        {"// x\n@elseif",               true,  ""    },
        {"@else",                       false, ""    },
        {"@elseif2",                    false, ""    },
        {"@Elseif",                     false, ""    },
        {"@\"elseif\"",                 false, ""    },
        {"elseif",                      false, ""    },
        {"@/* a macro comment */@else", false, ""    },
        {"@",                           false, ""    },
        {"",                            false, ""    },
    };
    for (const Ahead& ahead : cases) {
        const HeapText text(ahead.text);
        SubString s = text.View();
        EXPECT_EQ(ScanElseIfBlock(s), ahead.found) << ahead.text;
        if (ahead.found) {
            EXPECT_EQ(Str(s), ahead.rest) << ahead.text;
        }
    }
}

TEST(ScanElseBlock, FindsTheAtAndTheWord) {
    const Ahead cases[] = {
        {"@else {a}",                   true,  " {a}"},
        {"\r\n@ else",                  true,  ""    },
        {"/* x */ @ // y\n else{",      true,  "{"   },
        {"@elseif",                     false, ""    },
        {"@else_",                      false, ""    },
        {"@/* a macro comment */@else", false, ""    },
        {"a @else",                     false, ""    },
        {"",                            false, ""    },
    };
    for (const Ahead& ahead : cases) {
        const HeapText text(ahead.text);
        SubString s = text.View();
        EXPECT_EQ(ScanElseBlock(s), ahead.found) << ahead.text;
        if (ahead.found) {
            EXPECT_EQ(Str(s), ahead.rest) << ahead.text;
        }
    }
}

TEST(ScanElseBlock, PassesOnWhatDoesNotScan) {
    const HeapText text(" @ \"else");
    SubString s = text.View();
    EXPECT_EQ(LexErrorOf(text.begin(), [&s] { ScanElseBlock(s); }),
              (LexError{"Met EOS within double quoted string after reading \"else", 8}));
}

// ---- which block is taken ----------------------------------------------------------------------

class If : public testing::TestWithParam<Expansion> {};

TEST_P(If, Expands) {
    EXPECT_EQ(Expand(GetParam().text), GetParam().output);
}

INSTANTIATE_TEST_SUITE_P(
    TakesTheFirstBlockWhoseConditionHolds, If,
    testing::Values(Expansion{"@if (true) {a}", "a"}, Expansion{"@if (false) {a}", ""},
                    Expansion{"@if (true) {a} @else {b}", "a"},
                    Expansion{"@if (false) {a} @else {b}", "b"},
                    Expansion{"@if (true) {a} @elseif (true) {b} @else {c}", "a"},
                    Expansion{"@if (false) {a} @elseif (true) {b} @elseif (true) {c} @else {d}",
                              "b"},
                    Expansion{"@if (false) {a} @elseif (false) {b} @elseif (true) {c}", "c"},
                    Expansion{"@if (false) {a} @elseif (false) {b} @else {c}", "c"},
                    Expansion{"@if (false) {a} @elseif (false) {b}", ""},
                    Expansion{"@if (true) {@if (false) {a} @else {b}} @else {c}", "b"}));

INSTANTIATE_TEST_SUITE_P(
    EndsTheChainBehindTheLastBlock, If,
    testing::Values(Expansion{"x @if (false) { a }\ny", "x \ny"},
                    Expansion{"x@if (true) {a}y", "xay"}, Expansion{"@if (true) {a}  b", "a  b"},
                    Expansion{"@if (true) {a} // c\n@", "a // c\n@"},
                    Expansion{"@if (true) {a} @ b", "a @ b"},
                    Expansion{"@if (true) {a} @else {b} @elseif (true) {c}",
                              "a @elseif (true) {c}"},
                    Expansion{"@elseif (true) {c}", "@elseif (true) {c}"},
                    Expansion{"@if (false) {a} @elseif2 (true) {c}", " @elseif2 (true) {c}"}));

INSTANTIATE_TEST_SUITE_P(LetsLayoutStandInAChain, If,
                         testing::Values(Expansion{"@if (false) {a}\n\n\n@else {b}", "b"},
                                         Expansion{"@if (false) {a} /* c */ @else {b}", "b"},
                                         Expansion{"@if (false) {a} // c\n  @elseif (true) {b}",
                                                   "b"},
                                         Expansion{"@if (false) {a}\r\n@ \n else {b}", "b"},
                                         Expansion{"@ /* c */\n if /* c */ (true) {a}", "a"},
                                         // A macro comment is a token, and no @.
                                         Expansion{"@if (false) {a} @/* c */ b", "b"}));

INSTANTIATE_TEST_SUITE_P(
    ReadsTheThreeFormsOfABlock, If,
    testing::Values(Expansion{"@if (true) a  b \nc", "a  b \nc"},
                    Expansion{"@if (true) a\r\nc", "a\r\nc"},
                    Expansion{"@if (false) a @else b\nc", "\nc"},
                    Expansion{"@if (false) a\n@else b\nc", "b\nc"},
                    Expansion{"@if (true) { a }", " a "}, Expansion{"@if (true) {\n a\n}", " a\n"},
                    Expansion{"@if (true)\n{\n  a\n}", "a"},
                    Expansion{"@if (true)\n{\n  a\n\n}", "a\n"}, Expansion{"@if (true) {}", ""},
                    Expansion{"@if (true)\n{\n}b", "b"}, Expansion{"@if (false) {} @else {}b", "b"},
                    Expansion{"@if (true) {{a}}", "{a}"},
                    Expansion{"@if (true) {\"}\" /*}*/}", "\"}\" /*}*/"}));

INSTANTIATE_TEST_SUITE_P(ReadsOverWhatIsNotTaken, If,
                         testing::Values(Expansion{"@if (false) {@fail(\"a\") @else ( [ } b", " b"},
                                         Expansion{"@if (true) {a} @else {@if}", "a"},
                                         Expansion{"@def m(x) = x\n@if (false) {m}b", "b"}));

INSTANTIATE_TEST_SUITE_P(
    ExpandsItsConditions, If,
    testing::Values(Expansion{"@def m = 1 <\n@if (m 2) {a}", "a"},
                    Expansion{"@def less(a, b) = a < b\n@if (less(1, 2)) {a}", "a"},
                    Expansion{"@let bool b = false\n@if (b) {x} @elseif (!b) {y}", "y"},
                    Expansion{"@if (@if (true) {false} @else {true}) {a} @else {b}", "b"},
                    Expansion{"@if ((1 < 2) && \")\" == \")\") {a}", "a"},
                    Expansion{"@if (/* ) */ true // )\n) {a}", "a"}));

TEST(If, EvaluatesEveryConditionOfTheChain) {
    Session session;
    session.Expand("@let string seen = \"\"\n"
                   "@def yes(x) = true @let seen := seen@@x\n"
                   "@def no(x) = false @let seen := seen@@x\n");
    EXPECT_EQ(session.Expand("@if (no(1)) {a} @elseif (yes(2)) {b} @elseif (yes(3)) {c}"), "b");
    EXPECT_EQ(session.Expand("seen"), "123");
}

// ---- where the block lands ---------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    RebasesTheBlockToItsColumn, If,
    testing::Values(
        Expansion{"ab: @if (true) {x\ny}z", "ab: x\n    yz"},
        Expansion{"ab: @if (true) {\n  x\n  y\n}z", "ab:   x\n      y\nz"},
        Expansion{"ab: @if (true)\n  {\n    x\n      y\n    z\n  }z", "ab: x\n      y\n    zz"},
        Expansion{"ab: @if (true) x\nz", "ab: x\nz"}, Expansion{"  @if (true) {x\ny}", "  x\n  y"},
        Expansion{"\t@if (true)\n\t{\n\t\tx\n\t\ty\n\t}", "\tx\n    y"},
        Expansion{"a\n  @if (true)\n    {\n    x\n\n    y\n    }", "a\n  x\n  \n  y"},
        Expansion{"ab @if (false)\n{\n x\n} @else\n    {\n    x\n    y\n    }", "ab x\n   y"},
        // Nested blocks are re-based in turn.
        Expansion{"a: @if (true)\n{\n  b: @if (true)\n  {\n    x\n    y\n  }\n  c\n}",
                  "a: b: x\n      y\n   c"}));

TEST(If, RebasesTheBlockToTheIndentationOfItsTextAtALineStart) {
    EXPECT_EQ(Expand("@if (true) {x\ny}\nz", 0, 3), "   x\n   y\n   z");
    EXPECT_EQ(Expand("a\n  @if (true) {x\ny}", 2, 3), "   a\n   x\n   y");
}

TEST(If, WritesNothingButItsBlock) {
    Session session;
    EXPECT_EQ(session.Expand("x  @if (false) {a} @else {b\n c} y"), "x  b\n    c y");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim x", "verbatim   ", "verbatim b", "verbatim \n",
                                       "indentation 3", "verbatim  c", "verbatim  y"}));
    EXPECT_EQ(session.Expand("@if (true) {}"), "");
    EXPECT_EQ(session.Pieces(), Texts{});
}

// ---- frames ------------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    KeepsWhatTheBlockDefines, If,
    testing::Values(Expansion{"@if (true) {@def m = 1\nm}m", "1m"},
                    Expansion{"@if (true) {@exportdef m = 1\nm}m", "11"},
                    Expansion{"@if (true) {@if (true) {@exportdef m = 1\n}m}m", "1m"},
                    Expansion{"@if (true) {@if (true) {@def + m = 1\n}m}m", "11"},
                    Expansion{"@if (true) {@let int i = 1\ni}i", "1i"},
                    Expansion{"@let int i = 1\n@if (true) {@let i = 2\n}i", "2"},
                    Expansion{"@let int i = 1\n@if (true) {@let int i = 2\n}i", "1"},
                    Expansion{"@nakeddef n(a) = <a>\n@if (true) {n(1)a}a", "<1>1a"}));

INSTANTIATE_TEST_SUITE_P(KeepsWhatTheConditionDefines, If,
                         testing::Values(Expansion{"@if (true @def m = 1\n) {m}m", "mm"},
                                         Expansion{"@if (true @exportdef m = 1\n) {m}m", "11"},
                                         Expansion{"@if (true @def + m = 1\n) {m}m", "11"}));

TEST(If, LeavesWhatWasDoneBeforeASwallowedError) {
    Session session;
    session.Expand("@let int i = 1\n");
    EXPECT_EQ(session.Expand("@assertfails{@if (true) {@let i = 2\n@def + m = 3\n@fail(\"x\")}}"),
              "");
    EXPECT_EQ(session.Expand("i m"), "2 3");
    EXPECT_EQ(session.Expand("@assertfails{@if (1 @let i = 4\n) {}}i"), "4");
}

// What the condition of an @if has defined lies in its text: where that is a text put together
// during expansion, it has to live as long as the definition.
INSTANTIATE_TEST_SUITE_P(
    KeepsTheTextsOfDefinitions, If,
    testing::Values(
        Expansion{"@[@quote(@if (true @def + m = hello\n) {})]m", "hello"},
        Expansion{"@[@quote(@if (true) {@def + m(a) = <a>\n})]m(1)", "<1>"},
        Expansion{"@for (x in [@quote(@if (true @exportdef m = hello\n) {m @def + n = bye\n})]) "
                  "{x}n",
                  "hello bye"},
        Expansion{"@def f(g()) = g(true)\nf(`@if (false) {} @elseif (true) {@def + m = hello\n} "
                  "@else `)m",
                  "hello"}));

// ---- what nested texts may not do --------------------------------------------------------------

TEST(If, HandsOnNoImportHandler) {
    MemoryFiles files;
    files.m_files["f"] = "@def m = 1";
    const std::pair<std::string_view, LexError> cases[] = {
        {"@if (true) {@import \"f\"}",     {"@import statement not allowed here", 13}    },
        {"@if (true) {@importpath \"f\"}", {"@importpath statement not allowed here", 13}},
        {"@scope {@import \"f\"}",         {"@import statement not allowed here", 9}     },
        {"@if (@import \"f\") {}",
         {"@import statement not allowed here\n    in @if(@import \"f\")", 6}            },
    };
    for (const auto& [text, error] : cases) {
        Session session;
        session.m_importHandler = &files;
        EXPECT_EQ(session.ExpandError(text), error) << text;
    }
    Session session;
    session.m_importHandler = &files;
    EXPECT_EQ(session.Expand("@scope {@$X = \"1\"}"), "@$X = \"1\"");
}

// ---- errors ------------------------------------------------------------------------------------

class IfFault : public testing::TestWithParam<Fault> {};

TEST_P(IfFault, IsReported) {
    ExpectFault(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    OfTheHead, IfFault,
    testing::Values(Fault{"@if ^x {}", "( expected when read x"},
                    Fault{"@if^", "( expected when read EOS"},
                    Fault{"@if ^{}", "( expected when read {"},
                    Fault{"@if (true) {} @elseif ^[true] {}", "( expected when read ["},
                    Fault{"@if (true^", "Met EOS while reading bracketted section"},
                    Fault{"@if (true \"^", "Met EOS within double quoted string"},
                    Fault{"a\n@^else {}", "@else with no matching @if directive"}));

INSTANTIATE_TEST_SUITE_P(
    OfABlock, IfFault,
    testing::Values(
        Fault{"@if (true)^", "Expected { when read EOS"},
        Fault{"@if (true)\n^a", "Expected { when read a"},
        Fault{"@if (true) {^", "Met EOS before closing }"},
        Fault{"@if (true) {a^", "Met EOS while reading bracketted string"},
        Fault{"@if (true)\n{a^", "Met EOS before closing }"},
        Fault{"@if (false) {a} @else^", "Expected { when read EOS"},
        Fault{"@if (true) {a} @else^", "Expected { when read EOS"},
        Fault{"@if (true) {a} @elseif (true)^", "Expected { when read EOS"},
        Fault{"@if (false) {'}^", "Met EOS within single quoted string after reading '}"},
        Fault{"@if (true) {a} @else {b} @^else {c}", "@else with no matching @if directive"},
        Fault{"@if (true) {a} @/* c */ @^else {b}", "@else with no matching @if directive"}));

// The message tells the expression as expanded, and its end as the bracket that closes it.
INSTANTIATE_TEST_SUITE_P(
    OfAnExpression, IfFault,
    testing::Values(
        Fault{"a ^@if () {}", "Unexpected ) after ( in expression\n    in @if()"},
        Fault{"a ^@ if (1 + ) {}", "Unexpected ) after + in expression\n    in @if(1 +)"},
        Fault{"^@if (x) {}", "Unexpected x after ( in expression\n    in @if(x)"},
        Fault{"^@if (1) {}", "No implicit conversion from int64 to bool\n    in @if(1)"},
        Fault{"^@if (1 2) {}", "No implicit conversion from int64 to bool\n    in @if(1 2)"},
        Fault{"^@if (true 2) {}",
              "Expected ) after true when read 2 in expression\n    in @if(true 2)"},
        Fault{"@def m = true false\n^@if (m) {}",
              "Expected ) after true when read false in expression\n    in @if(true false)"},
        Fault{"@def EOS = 1 +\n^@if (EOS) {}",
              "Unexpected ) after + in expression\n    in @if(1 +)"},
        Fault{"^@if (EOS) {}", "Unexpected ) after ( in expression\n    in @if(EOS)"},
        Fault{"^@if (true \"EOS\") {}",
              "Expected ) after true when read \")\" in expression\n    in @if(true \"EOS\")"},
        Fault{"^@if (1 / 0 == 1) {}", "Division by zero error\n    in @if(1 / 0 == 1)"}));

// The place is the @ of the whole directive, of the last condition too.
INSTANTIATE_TEST_SUITE_P(
    OfALaterCondition, IfFault,
    testing::Values(
        Fault{"^@if (true) {a} @elseif () {b}",
              "Unexpected ) after ( in expression\n    in @elseif()"},
        Fault{"^@if (false) {a} @elseif (1) {b}",
              "No implicit conversion from int64 to bool\n    in @elseif(1)"},
        Fault{"^@if (false) {a} @elseif (true) {b} @elseif (true x) {c}",
              "Expected ) after true when read x in expression\n    in @elseif(true x)"}));

// An error of the expansion keeps its place, and is shown with the condition as written.
INSTANTIATE_TEST_SUITE_P(
    OfTheExpansionOfACondition, IfFault,
    testing::Values(
        Fault{"@if (1 @fail^(\"x\") ) {}", "x\n    in @if(1 @fail(\"x\"))"},
        Fault{"@if (true) {} @elseif (@fail^(\"EOS\")) {}", "EOS\n    in @elseif(@fail(\"EOS\"))"},
        Fault{"@def m(a) = @fail^(a)\n@if (m(\"x\")) {}",
              "x\n    invoking macro m(a) with a=\"x\"\n    in @if(m(\"x\"))"},
        Fault{"@def m(a) = a\n@if (m^) {}",
              "( expected to begin argument list for macro m(a) when read EOS\n    in @if(m)"}));

// The block itself adds nothing.
INSTANTIATE_TEST_SUITE_P(OfTheExpansionOfABlock, IfFault,
                         testing::Values(Fault{"@if (true) {@fail^(\"x\")}", "x"},
                                         Fault{"@if (false) {} @else {@if (true) {@fail^(\"x\")}}",
                                               "x"},
                                         Fault{"@scope {@fail^(\"x\")}", "x"}));

TEST(IfFault, LeavesWhatWasWritten) {
    Session session;
    ExpectFault(session, {"a @if (true) {b @fail^(\"x\")}", "x"});
    EXPECT_EQ(session.m_output, "a b");
    ExpectFault(session, {"a ^@if (1) {b}", "No implicit conversion from int64 to bool\n"
                                            "    in @if(1)"});
    EXPECT_EQ(session.m_output, "a ");
}

// ---- @scope ------------------------------------------------------------------------------------

class Scope : public testing::TestWithParam<Expansion> {};

TEST_P(Scope, Expands) {
    EXPECT_EQ(Expand(GetParam().text), GetParam().output);
}

INSTANTIATE_TEST_SUITE_P(
    ReadsTheThreeFormsOfABlock, Scope,
    testing::Values(Expansion{"a@scope {b}c", "abc"}, Expansion{"a @scope b c\nd", "a b c\nd"},
                    Expansion{"a @scope\n  {\n    b\n      c\n  } d", "a b\n    c d"},
                    Expansion{"ab: @scope {\n  x\n  y\n}z", "ab:   x\n      y\nz"},
                    Expansion{"a @scope {}b", "a b"}, Expansion{"@scope {}\nb", "\nb"}));

INSTANTIATE_TEST_SUITE_P(
    EndsWithItsDefinitions, Scope,
    testing::Values(Expansion{"@scope {@def m = 1\nm}m", "1m"},
                    Expansion{"@def m = 0\n@scope {m @def m = 1\nm}m", "010"},
                    Expansion{"@scope {@exportdef m = 1\nm}m", "11"},
                    Expansion{"@scope {@scope {@exportdef m = 1\n}m}m", "1m"},
                    Expansion{"@scope {@scope {@def + m = 1\n}m}m", "11"},
                    Expansion{"@let int i = 1\n@scope {@let i = 2\n}i", "2"},
                    Expansion{"@let int i = 1\n@scope {@let string i = \"a\"\ni}i", "a1"},
                    Expansion{"@nakeddef n(a) = @def m = <a>\n@scope {n(1)m}m", "<1>m"}));

TEST(Scope, WritesNothingButItsBlock) {
    Session session;
    EXPECT_EQ(session.Expand("x @scope {b\nc} y"), "x b\n  c y");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim x", "verbatim  ", "verbatim b", "verbatim \n",
                                       "indentation 2", "verbatim c", "verbatim  y"}));
}

TEST(Scope, NeedsABlock) {
    const Fault cases[] = {
        {"@scope^",      "Expected { when read EOS"               },
        {"@scope \n^a",  "Expected { when read a"                 },
        {"@scope {a^",   "Met EOS while reading bracketted string"},
        {"@scope\n{ a^", "Met EOS before closing }"               },
    };
    for (const Fault& fault : cases)
        ExpectFault(fault);
}

}  // namespace
}  // namespace vorn_test
