#include "qzMacroExpander/src/MacroExpander.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Expand.h"

namespace vorn_test {
namespace {

using namespace vorn;
using namespace std::string_literals;

using Texts = std::vector<std::string>;

struct Case {
    std::string_view text;
    std::string_view output;
};

// ---- @[ ] --------------------------------------------------------------------------------------

TEST(SquareBrackets, ExpandTwice) {
    const Case cases[] = {
        {"@[]",                                                         ""          },
        {"@[ ]",                                                        ""          },
        {"@[ \n /* x */ ]",                                             ""          },
        {"@[abc]",                                                      "abc"       },
        {"@[  a  b  ]",                                                 "a  b"      },
        {"@def ab = joined\n@[a@@b]",                                   "joined"    },
        {"@def ab = joined\na@@b",                                      "ab"        },
        {"@def n = m\n@def m = 1\n@[@quote(n)]",                        "1"         },
        {"@def m = 1\n@[@quote(@quote(m))]",                            "m"         },
        {"@[@quote(@[@quote(@quote(@if))])]",                           "@if"       },
        {"@[@quote(@let int i = 2)\n@quote(@)(i + 1)]",                 "3"         },
        {"@def list = [1,2]\n@[@for(i in list){@@@quote(@)(i * 10) }]", "10 20 "    },
        {"@[1 + 2]",                                                    "1 + 2"     },
        {"@[a[1]](b)",                                                  "a[1](b)"   },
        {"@[(]x",                                                       "(x"        },
        {"@[\"]\" ']' /* ] */ // ]\n]x",                                "\"]\" ']'x"},
        {"@ [a]",                                                       "a"         },
        {"@/* */[a]",                                                   "[a]"       },
        {"@[a]@[b]",                                                    "ab"        },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(SquareBrackets, ForgetInTheSecondPassWhatTheFirstDefines) {
    EXPECT_EQ(Expand("@[@def m = 1\nm]"), "1");
    EXPECT_EQ(Expand("@[@def m = 1\nm @quote(m)]"), "1 m");
    EXPECT_EQ(Expand("@[@let int i = 1\ni @quote(i)]"), "1 i");
    EXPECT_EQ(Expand("@[@exportdef m = 1\nm @quote(m)] m"), "1 1 1");
}

TEST(SquareBrackets, ForgetWhatTheSecondPassDefines) {
    EXPECT_EQ(Expand("@[@quote(@def m = 1\nm)] m"), "1 m");
    EXPECT_EQ(Expand("@[@quote(@exportdef m = 1\nm)] m"), "1 1");
}

TEST(SquareBrackets, ChangeVariablesAround) {
    EXPECT_EQ(Expand("@let int i = 1\n@[@let i = i + 1\ni] i"), "2 2");
    EXPECT_EQ(Expand("@let int i = 1\n@[@quote(@let i = i + 1)\n] i"), " 2");
}

TEST(SquareBrackets, AttributeTheirTextToTheAt) {
    Session session;
    EXPECT_EQ(session.Expand("x @[a\n b] y"), "x a\n b y");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim x", "verbatim  ", "calculated @ 4", "verbatim  y"}));
    for (ssize_t pos = 2; pos < 6; ++pos)
        EXPECT_EQ(session.SourceOffset(pos), 2) << pos;
}

TEST(SquareBrackets, WithoutOutputHaveNoPiece) {
    Session session;
    EXPECT_EQ(session.Expand("x@[]y"), "xy");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim x", "verbatim y"}));
}

// Neither pass takes indentation off or adds any: the lines begin where those of the text around
// the directive do.
TEST(SquareBrackets, KeepTheIndentationOfTheirLines) {
    EXPECT_EQ(Expand("  x @[a\n    b]"), "  x a\n    b");
    EXPECT_EQ(Expand("  x @[a\n    b]", 0, 4), "      x a\n        b");
    EXPECT_EQ(Expand("@def m =\n{\n    p\n      q\n}\n  @[m]"), "  p\n  q");
}

TEST(SquareBrackets, LeaveWhatFollowsInPlace) {
    EXPECT_EQ(Expand("  @[a]  \n\n  b"), "  a  \n\n  b");
}

struct Failing {
    std::string_view text;
    LexError error;
};

TEST(SquareBrackets, ThatAreNotClosedAreAnError) {
    const Failing cases[] = {
        {"x @[",         {"Met EOS while reading bracketted section", 4}                  },
        {"x @[a [b]",    {"Met EOS while reading bracketted section", 9}                  },
        {"x @[don't\n]", {"Met line feed within single quoted string after reading 't", 9}},
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(SquareBrackets, LeaveAFaultOfTheFirstPassAsItIs) {
    EXPECT_EQ(ExpandError("x @[ a @else ]"), (LexError{"@else with no matching @if directive", 8}));
    EXPECT_EQ(ExpandError("x @[ @fail(\"EOS\") ]"), (LexError{"EOS", 10}));
}

TEST(SquareBrackets, MoveAFaultOfTheSecondPassToTheAt) {
    const Failing cases[] = {
        {"x @[ @quote(a @else) b ]",
         {"@else with no matching @if directive\n    in @[a @else b]", 2}},
        {"x @[@quote(y @[@quote(@else)])]",
         {"@else with no matching @if directive\n    in @[@else]\n    in @[y @[@quote(@else)]]",
          2}                                                             },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

// It does so wherever the letters stand, in the context of inner directives too.
TEST(SquareBrackets, ShowTheEndOfTheTextAsTheBracket) {
    const Failing cases[] = {
        {"x @[ @quote(@)@@if ]",   {"( expected when read ]\n    in @[@if]", 2}                  },
        {"x @[ @unstr(\"'\")\n ]", {"Met ] within single quoted string\n    in @[']", 2}         },
        {"x @[@quote(@def m)]",
         {"= or ( expected for definition of macro m when read ]\n    in @[@def m]", 2}          },
        {"x @[@quote(@(1 EOSx))]",
         {"Expected ) after 1when read )x in expression\n    in @(1 ]x)\n    in @[@(1 EOSx)]", 2}},
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(SquareBrackets, KeepTheContextOfMacros) {
    EXPECT_EQ(
        ExpandError("@def m(a) = @[@@a]\nm(@fail(\"no\"))"),
        (LexError{"no\n    invoking macro a\n    invoking macro m(a) with a=@fail(\"no\")", 26}));
    EXPECT_EQ(ExpandError("@def m(a) = @[@quote(a)]\nm(@fail(\"no\"))"),
              (LexError{"no\n    invoking macro a\n    in @[a]"
                        "\n    invoking macro m(a) with a=@fail(\"no\")",
                        12}));
}

TEST(SquareBrackets, KeepWhatWasWrittenInFront) {
    Session session;
    EXPECT_EQ(session.ExpandError("a  @[b @else]").offset, 8);
    EXPECT_EQ(session.m_output, "a  ");
}

// ---- definitions that outlive the second pass --------------------------------------------------

// The text of a second pass is put together during the expansion. The definitions made from it
// stay usable for as long as their frame; AddressSanitizer sees a text that is gone.
TEST(SecondPass, HandsItsDefinitionsOut) {
    const Case cases[] = {
        {"@[@quote(@exportdef m = hello)]m",                                "hello"      },
        {"@[@quote(@def + m = hello)]m",                                    "hello"      },
        {"@[@quote(@exportdef m(a, string b) = <a|b>)]m(1,\"2\")",          "<1|2>"      },
        {"@[@quote(@exportdef m(a) = { @def a2 = a@@a\na2 })]m(x)",         "xx "        },
        {"@[@quote(@[@quote(@def + m = hello)])]m",                         "hello"      },
        {"@[@quote(@[@quote(@[@quote(@def + m = hello)])])]m",              "hello"      },
        {"@[@quote(@exportdef m = @[@quote(@def + n = deep)])]m@@n",        "deep"       },
        {"@[@quote(@exportdef m = n)]@[@quote(@exportdef n = hello)]m",     "hello"      },
        {"@[@quote(@exportdef m = 1)]m @[@quote(@exportdef m = 2)]m m",     "1 2 2"      },
        {"@scope { @[@quote(@def + m = hello)] }m",                         "  hello"    },
        {"@scope { @[@quote(@exportdef m = in)]m }m",                       " in m"      },
        {"@def d(name) = @[@quote(@def) + @@name = hello]\nd(m)m",          "hello"      },
        {"@for(x in [a,b]) { @[@quote(@def +) m_@@x = <x>] }m_a m_b",       "    <a> <b>"},
        {"@[@quote(@def + f(g()) = g(1))]@[@quote(@def + h(y) = <y>)]f(h)", "<1>"        },
        {"@[@quote(@def + int m = 1 + 2)]m",                                "3"          },
        {"@[@quote(@def + m =\n{\n    a\n      b\n})]  m",                  "  a\n    b" },
    };
    for (const auto& [text, output] : cases) {
        Session session;
        EXPECT_EQ(session.Expand(text), output) << text;
        EXPECT_EQ(session.Expand("@[]"), "");
    }
}

TEST(SecondPass, HandsItsDefinitionsToLaterTexts) {
    Session session;
    session.Expand("@[@quote(@exportdef m(a) = [a])]");
    session.Expand("@[@quote(@def + n(a) = m(a)m(a))]");
    EXPECT_EQ(session.Expand("m(1) n(2)"), "[1] [2][2]");
}

TEST(SecondPass, LeavesTheArgumentsOfANakedMacro) {
    EXPECT_EQ(Expand("@nakeddef n(a) = <a>\n@[@quote(n(hello) a)] a"), "<hello> hello a");
    EXPECT_EQ(Expand("@def f(g()) = g(1)\n@nakeddef n(a) = a\nf(n)a"), "11");
    EXPECT_EQ(Expand("@def f(g()) = @[@quote(g(hello))]\n@nakeddef n(a) = <a>\nf(n)a"),
              "<hello>hello");
    EXPECT_EQ(Expand("@[@quote(@nakeddef + n(a, int b) = <a|b>)]n(hello, 1 + 1)a@@b"),
              "<hello|2>hello2");
}

TEST(SecondPass, ThatFailsLeavesTheDefinitionsItMade) {
    Session session;
    EXPECT_EQ(session.ExpandError("@[@quote(@exportdef m = hello\n@else)]").offset, 0);
    EXPECT_EQ(session.Expand("m"), "hello");
}

TEST(SecondPass, ShowsItsDefinitionsInMessages) {
    Session session;
    session.Expand("@[@quote(@exportdef m(a) = @else)]");
    EXPECT_EQ(session.ExpandError("m(1)").description,
              "@else with no matching @if directive\n    invoking macro m(a) with a=1");
}

// ---- @( ) --------------------------------------------------------------------------------------

TEST(RoundBrackets, WriteAValue) {
    const Case cases[] = {
        {"@(1+2)",                                 "3"         },
        {"@(1<2)",                                 "true"      },
        {"@(1>2)",                                 "false"     },
        {"@(\"a\" + \"b\")",                       "ab"        },
        {"@('a')",                                 "a"         },
        {"@(\"abc\"[1])",                          "b"         },
        {"@(1/2.0)",                               "0.5"       },
        {"@(4.0)",                                 "4.0"       },
        {"@(\"\")",                                ""          },
        {"@(\"a\\\"b\\n\")",                       "a\"b\n"    },
        {"@(\")\")",                               ")"         },
        {"@( /* ) */ 1 // )\n)",                   "1"         },
        {"@((1 + 2) * 3)",                         "9"         },
        {"@(1)x",                                  "1x"        },
        {"@(1)(2)",                                "1(2)"      },
        {"@(1)  \n\n  x",                          "1  \n\n  x"},
        {"@ (1)",                                  "1"         },
        {"@def m = 2\n@(m * m)",                   "4"         },
        {"@def m = 1 + 1\n@(m * m)",               "3"         },
        {"@(@(1) + @(2))",                         "3"         },
        {"@let int i = 1\n@(@let i = i + 1\ni) i", "2 2"       },
        {"@(@def m = 1\nm) m",                     "1 m"       },
        {"@(@exportdef m = 1\nm) m",               "1 1"       },
        {"@def m = x\n@(\"m\")",                   "m"         },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(RoundBrackets, DoNotExpandTheValue) {
    EXPECT_EQ(Expand("@def m = 1\n@(\"m @if\") m"), "m @if 1");
}

TEST(RoundBrackets, AttributeTheValueToTheAt) {
    Session session;
    EXPECT_EQ(session.Expand("x @(100 + 1) y"), "x 101 y");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim x", "verbatim  ", "calculated @ 3", "verbatim  y"}));
    EXPECT_EQ(session.Expand("@(\"\")"), "");
    EXPECT_EQ(session.Pieces(), Texts{});
}

TEST(RoundBrackets, IndentTheLinesOfAString) {
    EXPECT_EQ(Expand("  x @(\"a\\nb\")", 0, 4), "      x a\n    b");
    EXPECT_EQ(Expand("@def m =\n{\n    @(\"a\\nb\")\n}\n  m"), "  a\n  b");
}

TEST(RoundBrackets, WriteAnyByte) {
    Session session;
    const std::string text = "@(\"\\0\xe4\\xff\" + '\x01')";
    EXPECT_EQ(session.Expand(text), "\0\xe4xff\x01"s);
}

// ---- expand, then parse ------------------------------------------------------------------------

// A directive that expands a text and parses what comes of it as an expression. m stands for a
// good value, in the text in front of which the macros are defined.
struct Site {
    std::string_view before;  // the directive up to its opening bracket
    std::string_view after;   // what follows the expression
    std::string_view good;    // a value of the type that is asked for
    std::string_view name;    // in context lines
    std::string_view whenRead;
    bool contextForExpansion;
    std::string_view conversionError;  // of the number 1; empty where it is as good a value
};

void PrintTo(const Site& site, std::ostream* os) {
    *os << site.before << " )" << site.after;
}

class ExpandThenParse : public testing::TestWithParam<Site> {
protected:
    MemoryFiles m_files;
    Session m_session;
    const Site& m_site = GetParam();
    const std::string m_definitions = "@def m = " + std::string(m_site.good) + "\n";

    ExpandThenParse() { m_session.m_importHandler = &m_files; }

    // The error of the directive with an expression in it, its place counted from the @.
    LexError ErrorOf(const std::string& expression) {
        const std::string front = m_definitions + "x ";
        LexError error = m_session.ExpandError(front + std::string(m_site.before) + expression + ")"
                                               + std::string(m_site.after));
        error.offset -= static_cast<ssize_t>(front.size());
        return error;
    }

    std::string Context(const std::string& expression) const {
        return "\n    in " + std::string(m_site.name) + "(" + expression + ")";
    }

    std::string Good() const { return std::string(m_site.good); }
    std::string WhenRead() const { return std::string(m_site.whenRead); }
};

TEST_P(ExpandThenParse, ReportsAFaultOfTheExpansionWhereItIs) {
    const auto offset = static_cast<ssize_t>(m_site.before.size() + 3);
    EXPECT_EQ(ErrorOf("m @else"),
              (LexError{"@else with no matching @if directive"
                            + (m_site.contextForExpansion ? Context("m @else") : ""s),
                        offset}));
}

TEST_P(ExpandThenParse, LeavesTheLettersOfTheEndInAFaultOfTheExpansion) {
    const LexError error = ErrorOf("@fail(\"EOS\")");
    EXPECT_EQ(error.description,
              "EOS" + (m_site.contextForExpansion ? Context("@fail(\"EOS\")") : ""s));
    EXPECT_EQ(error.offset, static_cast<ssize_t>(m_site.before.size() + 5));
}

TEST_P(ExpandThenParse, ReportsAnEmptyExpressionAtTheAt) {
    EXPECT_EQ(ErrorOf(""), (LexError{"Unexpected ) after ( in expression" + Context(""), 0}));
    EXPECT_EQ(ErrorOf(" @/**/ @@ "),
              (LexError{"Unexpected ) after ( in expression" + Context(""), 0}));
}

TEST_P(ExpandThenParse, ReportsTheEndOfTheExpressionAsTheBracket) {
    EXPECT_EQ(ErrorOf("m +"),
              (LexError{"Unexpected ) after + in expression" + Context(Good() + " +"), 0}));
}

TEST_P(ExpandThenParse, ReportsAFaultOfTheFirstTokenAsComingAfterTheBracket) {
    EXPECT_EQ(ErrorOf("* m"),
              (LexError{"Unexpected * after ( in expression" + Context("* " + Good()), 0}));
}

TEST_P(ExpandThenParse, ReportsASecondToken) {
    EXPECT_EQ(ErrorOf("m 2"), (LexError{"Expected ) after " + Good() + WhenRead()
                                            + "2 in expression" + Context(Good() + " 2"),
                                        0}));
}

TEST_P(ExpandThenParse, ReplacesTheLettersOfTheEndWhereverTheyStandInTheMessage) {
    EXPECT_EQ(ErrorOf("m EOS"), (LexError{"Expected ) after " + Good() + WhenRead()
                                              + ") in expression" + Context(Good() + " EOS"),
                                          0}));
}

TEST_P(ExpandThenParse, ReportsAFaultOfTheScanner) {
    EXPECT_EQ(ErrorOf("m @unstr(\"\\x27\")"),
              (LexError{"Met ) within single quoted string" + Context(Good() + " '"), 0}));
}

TEST_P(ExpandThenParse, ReportsAValueOfAnotherType) {
    if (m_site.conversionError.empty()) {
        EXPECT_EQ(m_session.Expand("@(1)"), "1");
        return;
    }
    EXPECT_EQ(ErrorOf("1"), (LexError{std::string(m_site.conversionError) + Context("1"), 0}));
}

TEST_P(ExpandThenParse, ReportsAFaultOfEvaluation) {
    EXPECT_EQ(ErrorOf("1 / 0"), (LexError{"Division by zero error" + Context("1 / 0"), 0}));
}

INSTANTIATE_TEST_SUITE_P(Sites, ExpandThenParse,
                         testing::Values(Site{"@(", "", "\"a\"", "@", "when read ", false, ""},
                                         Site{"@if(", " { }", "true", "@if", " when read ", true,
                                              "No implicit conversion from int64 to bool"},
                                         Site{"@while(", " { }", "false", "@while", " when read ",
                                              true, "No implicit conversion from int64 to bool"},
                                         Site{"@assert(", "", "true", "@assert", " when read ",
                                              false, "No implicit conversion from int64 to bool"},
                                         Site{"@fail(", "", "\"a\"", "@fail", " when read ", true,
                                              "No implicit conversion from int64 to string"},
                                         Site{"@import(", "", "\"a\"", "@import", " when read ",
                                              true, "No implicit conversion from int64 to string"},
                                         Site{"@importpath(", "", "\"a\"", "@importpath",
                                              " when read ", true,
                                              "No implicit conversion from int64 to string"},
                                         Site{"@$a = (", "", "\"a\"", "@$", " when read ", true,
                                              "No implicit conversion from int64 to string"}));

// The chain of a conditional has one place, its first @.
TEST(ExpandThenParseOfElseIf, ReportsAtTheIf) {
    EXPECT_EQ(ExpandError("x @if(false) { } @elseif(1) { }"),
              (LexError{"No implicit conversion from int64 to bool\n    in @elseif(1)", 2}));
    EXPECT_EQ(ExpandError("x @if(false) { } @elseif(@else) { }"),
              (LexError{"@else with no matching @if directive\n    in @elseif(@else)", 26}));
}

// The repetition whose condition fails is reported with the text of that condition.
TEST(ExpandThenParseOfWhile, ReportsTheConditionOfTheRepetition) {
    EXPECT_EQ(ExpandError("@let int i = 2\nx @while(0 < 6 / i) {@let i = i - 1\n}"),
              (LexError{"Division by zero error\n    in @while(0 < 6 / 0)", 17}));
}

TEST(RoundBrackets, KeepTheMessagesOfAMacroThatFails) {
    EXPECT_EQ(ExpandError("@def m = @fail(\"no\")\nx @(1 + m)"),
              (LexError{"no\n    invoking macro m", 14}));
}

TEST(RoundBrackets, ReportWhatHasNoValueAsText) {
    EXPECT_EQ(ExpandError("@(1 = 2)"),
              (LexError{"Can't assign to int64 r-value\n    in @(1 = 2)", 0}));
    EXPECT_EQ(ExpandError("x @(nosuch)"),
              (LexError{"Unexpected nosuch after ( in expression\n    in @(nosuch)", 2}));
}

TEST(RoundBrackets, ThatAreNotClosedAreAnError) {
    EXPECT_EQ(ExpandError("x @(1"), (LexError{"Met EOS while reading bracketted section", 5}));
    EXPECT_EQ(ExpandError("x @((1)"), (LexError{"Met EOS while reading bracketted section", 7}));
}

// ---- EvaluateString ----------------------------------------------------------------------------

class StringExpression : public testing::Test {
protected:
    FileScopeVarFrame m_frame;
    StringStream m_os{4096};
    ExpandedOutput m_output{m_os};

    MacroExpander Make(SubString text) {
        MacroExpander expander(nullptr, &m_frame, text, 0, 0, m_output);
        expander.m_startDirectivePos = text.m_p1;
        return expander;
    }
};

TEST_F(StringExpression, IsEvaluatedWithoutTouchingTheScan) {
    const HeapText text("here");
    MacroExpander expander = Make(text.View());
    m_frame.AddVariable(new LSVar("s", "\"x\""));
    EXPECT_EQ(Str(expander.EvaluateString("s + \"b\"", "@d")), "xb");
    EXPECT_EQ(Str(expander.EvaluateString("s[0]", "@d")), "x");
    EXPECT_EQ(expander.m_str.m_p1, text.begin());
    EXPECT_EQ(expander.m_writePos, text.begin());
}

TEST_F(StringExpression, ThatFailsNamesTheDirective) {
    const HeapText text("here");
    MacroExpander expander = Make(text.View());
    EXPECT_EQ(LexErrorOf(text.begin(), [&] { expander.EvaluateString("1", "@d"); }),
              (LexError{"No implicit conversion from int64 to string\n    in @d(1)", 0}));
    EXPECT_EQ(
        LexErrorOf(text.begin(), [&] { expander.EvaluateString("\"a\" 2", "@d"); }),
        (LexError{"Expected ) after \"a\" when read 2 in expression\n    in @d(\"a\" 2)", 0}));
    const HeapText expression("@else");
    EXPECT_EQ(
        LexErrorOf(expression.begin(), [&] { expander.EvaluateString(expression.View(), "@d"); }),
        (LexError{"@else with no matching @if directive\n    in @d(@else)", 1}));
}

TEST_F(StringExpression, InBracketsIsReadWithOrWithoutTheFirst) {
    const HeapText text(" ( \"a\" + (\")\") ) rest");
    MacroExpander expander = Make(text.View());
    EXPECT_EQ(Str(expander.ParseStringExpressionInBrackets("@d", true)), "a)");
    EXPECT_EQ(Str(expander.m_str), " rest");

    const HeapText inside("\"a\") rest");
    MacroExpander second = Make(inside.View());
    EXPECT_EQ(Str(second.ParseStringExpressionInBrackets("@d", false)), "a");
    EXPECT_EQ(Str(second.m_str), " rest");
}

TEST_F(StringExpression, InBracketsNeedsTheFirst) {
    const HeapText text(" \"a\")");
    MacroExpander expander = Make(text.View());
    EXPECT_EQ(
        LexErrorOf(text.begin(), [&] { expander.ParseStringExpressionInBrackets("@d", true); }),
        (LexError{"( expected when read \"a\"", 1}));
}

}  // namespace
}  // namespace vorn_test
