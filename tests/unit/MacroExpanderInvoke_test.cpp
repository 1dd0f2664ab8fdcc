#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/src/MacroExpander.h"
#include "tests/support/Expand.h"

namespace vorn_test {
namespace {

using namespace vorn;

using Texts = std::vector<std::string>;

struct Case {
    std::string_view definitions;
    std::string_view text;
    std::string_view output;
};

// Expands a text behind its definitions, which leave no output.
void ExpectOutputs(std::initializer_list<Case> cases) {
    for (const Case& c : cases) {
        Session session;
        EXPECT_EQ(session.Expand(c.definitions), "") << c.definitions;
        EXPECT_EQ(session.Expand(c.text), c.output) << c.definitions << c.text;
    }
}

struct Fault {
    std::string_view definitions;
    std::string_view text;
    std::string_view message;
    ssize_t offset;  // in the text; faults in a text that is gone, or in the definitions, have none
};

constexpr ssize_t s_elsewhere = -1;

void ExpectFaults(std::initializer_list<Fault> faults) {
    for (const Fault& fault : faults) {
        Session session;
        EXPECT_EQ(session.Expand(fault.definitions), "") << fault.definitions;
        const LexError error = session.ExpandError(fault.text);
        EXPECT_EQ(error.description, fault.message) << fault.definitions << fault.text;
        if (fault.offset == s_elsewhere) {
            EXPECT_FALSE(error.offset >= 0 && error.offset <= session.LastText().size());
        } else {
            EXPECT_EQ(error.offset, fault.offset) << fault.definitions << fault.text;
        }
    }
}

// ---- values ------------------------------------------------------------------------------------

TEST(Value, TakesThePlaceOfItsNameAlone) {
    Session session;
    session.m_frame.AddVariable(new LSValueVariable(LSV_INT, "v", "12"));
    EXPECT_EQ(session.Expand("a v(1) b"), "a 12(1) b");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim a", "verbatim  ", "calculated v 2", "verbatim (",
                                       "verbatim 1", "verbatim )", "verbatim  b"}));
}

// ---- argument lists ----------------------------------------------------------------------------

TEST(Call, WithoutFormalArgumentsReadsNoList) {
    ExpectOutputs({
        {"@def m = x",   "m(1)",  "x(1)"},
        {"@def m() = x", "m()",   "x()" },
        {"@def m = x",   "m m",   "x x" },
        {"@def m = x",   "(m)",   "(x)" },
        {"@def m = {}",  "a m b", "a  b"},
    });
}

TEST(Call, WithFormalArgumentsReadsAList) {
    ExpectOutputs({
        {"@def f(a) = <a>",     "f(1)",                "<1>"          },
        {"@def f(a) = <a>",     "f()",                 "<>"           },
        {"@def f(a) = <a>",     "f(  )",               "<>"           },
        {"@def f(a) = <a>",     "f (1);",              "<1>;"         },
        {"@def f(a) = <a>",     "f\n\n(1)",            "<1>"          },
        {"@def f(a) = <a>",     "f /* x */ // y\n(1)", "<1>"          },
        {"@def f(a) = <a>",     "f(1)(2)",             "<1>(2)"       },
        {"@def f(a,b) = <a|b>", "f(1,2)",              "<1|2>"        },
        {"@def f(a,b) = <a|b>", "f( 1 , 2 )",          "<1|2>"        },
        {"@def f(a,b) = <a|b>", "f(,)",                "<|>"          },
        {"@def f(a,b) = <a|b>", "f(1,)",               "<1|>"         },
        {"@def f(a,b) = <a|b>", "f(\n1\n,\n2\n)",      "<1|2>"        },
        {"@def f(a,b) = <b|a>", "f(1 2, 3)",           "<3|1 2>"      },
        {"@def f(a) = <a>",     "f(1 /* x */)",        "<1>"          },
        {"@def f(a) = <a>",     "f(1 /* x */ 2)",      "<1 /* x */ 2>"},
        {"@def f(a) = <a,a>",   "f(x y)",              "<x y,x y>"    },
    });
}

TEST(Call, KeepsBracketsOfAnArgumentTogether) {
    ExpectOutputs({
        {"@def f(a,b) = <a|b>", "f((1,2),3)",       "<(1,2)|3>"      },
        {"@def f(a,b) = <a|b>", "f(g(1,2),{3,4})",  "<g(1,2)|{3,4}>" },
        {"@def f(a,b) = <a|b>", "f([1,(2],3)",      "<[1,(2]|3>"     },
        {"@def f(a,b) = <a|b>", "f(a[1)],b)",       "<a[1)]|b>"      },
        {"@def f(a,b) = <a|b>", "f(\"1,2)\",'3,')", "<\"1,2)\"|'3,'>"},
        {"@def f(a,b) = <a|b>", "f(1 /* , */ 0,2)", "<1 /* , */ 0|2>"},
        {"@def f(a,b) = <a|b>", "f(`1,2(`,`3)`)",   "<1,2(|3)>"      },
        {"@def f(a,b) = <a|b>", "f( ` 1 ` , `` )",  "< 1 |>"         },
    });
}

TEST(CallError, OfItsList) {
    ExpectFaults({
        {"@def f(a) = x",          "f",        "( expected to begin argument list for macro f(a) when read EOS", 1},
        {"@def f(a,b) = x",        "f [1]",
         "( expected to begin argument list for macro f(a,b) when read [",                                       2},
        {"@def f(int a, g()) = x", "f\n;",
         "( expected to begin argument list for macro f(a,g) when read ;",                                       2},
        {"@def f(a,b) = x",        "f()",      "Insufficient arguments provided for macro f(a,b)",               2},
        {"@def f(a,b) = x",        " f(1)",    "Insufficient arguments provided for macro f(a,b)",               4},
        {"@def f(a,b,c) = x",      "f(1,2)",   "Insufficient arguments provided for macro f(a,b,c)",             5},
        {"@def f(a,b) = x",        "f(`1`)",   "Insufficient arguments provided for macro f(a,b)",               5},
        {"@def f(a) = x",          "f(1,2)",   "Too many arguments provided for macro f(a)",                     3},
        {"@def f(a) = x",          "f(,)",     "Too many arguments provided for macro f(a)",                     2},
        {"@def f(a,b) = x",        "f(1,2,3)", "Too many arguments provided for macro f(a,b)",                   5},
        {"@def f(a) = x",          "f(",       "Met EOS while reading argument ",                                2},
        {"@def f(a) = x",          "f( ",      "Met EOS while reading argument ",                                3},
        {"@def f(a) = x",          "f(1",      "Met EOS while reading argument 1",                               3},
        {"@def f(a) = x",          "f((1)",    "Met EOS while reading argument (1)",                             5},
        {"@def f(a,b) = x",        "f(1,",     "Met EOS while reading argument ",                                4},
        {"@def f(a) = x",          "f(`1",     "Met EOS while reading argument `1",                              4},
        {"@def f(a) = x",          "f(\x01)",  "Bad token \x01",                                                 2},
    });
}

// The token behind a last argument in back quotes is taken for the closing bracket.
TEST(Call, DoesNotTestWhatEndsALastArgumentInBackQuotes) {
    ExpectOutputs({
        {"@def f(a) = <a>", "f(`1`;2", "<1>2"},
        {"@def f(a) = <a>", "f(`1`",   "<1>" },
    });
}

TEST(CallError, BehindAnArgumentInBackQuotes) {
    ExpectFaults({
        {"@def f(a,b) = x", "f(`1`", "Met EOS while reading argument ", 5},
    });
}

// ---- call by name ------------------------------------------------------------------------------

TEST(UntypedArgument, IsExpandedWhereverItIsUsed) {
    ExpectOutputs({
        {"@def one = 1\n@def f(a) = a-a",    "f(one)",       "1-1"                 },
        {"@def one = 1\n@def f(a) = a",      "f(f(f(one)))", "1"                   },
        {"@def one = 1\n@def f(a) = x",      "f(one)",       "x"                   },
        {"@def f(a) = x",                    "f(@else)",     "x"                   },
        {"@def f(a) = 'a' \"a\" /* a */ ab", "f(1)",         "'a' \"a\" /* a */ ab"},
    });
}

TEST(UntypedArgument, HasItsSideEffectsWithEveryUse) {
    Session session;
    EXPECT_EQ(session.Expand("@def f(a) = a a a\nf(@exportdef n = { x };)"), "; ; ;");
    // Each use is a macro call in its own right, whose frame's parent is the caller's frame.
    EXPECT_EQ(session.Expand("n"), " x ");
    int count = 0;
    for (const LSVariable* var = session.m_frame.m_localVariables.m_first; var != nullptr;
         var = var->m_next)
        count += var->GetName() == "n" ? 1 : 0;
    EXPECT_EQ(count, 3);
}

TEST(UntypedArgument, IsExpandedInTheFrameOfItsCaller) {
    ExpectOutputs({
        {"@def x = outer\n@def f(a) = { @def x = inner\n a/x }", "f(x)",   " outer/inner "},
        {"@def f(x) = x\n@def g(x) = f(x)",                      "g(1)",   "1"            },
        {"@def f(a,b) = a\n@def g(a,b) = f(b,a)",                "g(1,2)", "2"            },
    });
}

TEST(UntypedArgument, MayBeNamedInAnotherArgument) {
    ExpectOutputs({
        {"@def a = outer\n@def f(a,b) = a/b", "f(1,a)", "1/outer"},
    });
}

TEST(Body, SeesTheVariablesOfWhoeverCalls) {
    Session session;
    VarFrame first(&session.m_frame);
    VarFrame second(&session.m_frame);
    session.Expand("@def m = y\n@def y = file\n");
    session.ExpandIn(first, "@def y = first\n");
    session.ExpandIn(second, "@def y = second\n");
    EXPECT_EQ(session.Expand("m"), "file");
    EXPECT_EQ(session.ExpandIn(first, "m"), "first");
    EXPECT_EQ(session.ExpandIn(second, "m"), "second");
    EXPECT_EQ(session.ExpandIn(first, "@def k(y) = m\nk(argument)"), "argument");
}

TEST(Body, SeesTheValuesOfWhoeverCalls) {
    EXPECT_EQ(Expand("@def m = y\n"
                     "@scope {\n@let int y = 1\nm}|@scope {\n@let int y = 2\nm}|m"),
              "1|2|y");
}

TEST(Body, IsNotReadAgain) {
    ExpectOutputs({
        {"@def one = 1\n@def f = on",      "f@@e",         "one"       },
        {"@def one = 1\n@def f(a) = a@@e", "f(on)",        "one"       },
        {"@def f = @",                     "f@@def k = 1", "@def k = 1"},
    });
}

TEST(Body, MayCallFurtherMacros) {
    ExpectOutputs({
        {"@def a = <b>\n@def b = c",                     "a",    "<c>"     },
        {"@def a(x) = [b(x,x)]\n@def b(x,y) = x+y",      "a(1)", "[1+1]"   },
        {"@def a(x) = @if (x > 0) { x a(@[ @(x-1) ]) }", "a(2)", " 2  1   "},
    });
}

TEST(Definition, InABodyDiesWithTheCall) {
    ExpectOutputs({
        {"@def m = { @def n = { 1 } n }", "m n", " 1   n"},
    });
}

TEST(Exportdef, InABodyLandsInTheFrameOfTheCaller) {
    ExpectOutputs({
        {"@def m = @exportdef n = 1",                                            "<m><n>",  "<><1>"},
        {"@def m = { @exportdef n = { k } }\n@def k = { @exportdef l = { 1 } }", "m@@n@@l", "  l"  },
    });
    Session session;
    VarFrame child(&session.m_frame);
    session.Expand("@def m = @exportdef n = 1\n");
    EXPECT_EQ(session.ExpandIn(child, "m@@n"), "1");
    EXPECT_EQ(session.Expand("n"), "n");
}

// ---- naked macros ------------------------------------------------------------------------------

TEST(NakedMacro, LeavesArgumentsAndDefinitionsBehind) {
    ExpectOutputs({
        {"@nakeddef n(a) = <a>",             "a n(1) a",      "a <1> 1"  },
        {"@nakeddef n(a) = <a>",             "n(1) n(2) a",   "<1> <2> 2"},
        {"@nakeddef n = { @def k = { 1 } }", "k n k",         "k   1 "   },
        {"@nakeddef n(a) = @def k = a",      "n(1) k n(2) k", " 1  2"    },
    });
}

TEST(NakedMacro, RunsInTheFrameOfItsCaller) {
    Session session;
    VarFrame child(&session.m_frame);
    session.Expand("@nakeddef n(a) = @def k = a\n");
    session.ExpandIn(child, "n(1)");
    EXPECT_EQ(session.ExpandIn(child, "a k"), "1 1");
    EXPECT_EQ(session.Expand("a k"), "a k");
}

TEST(NakedMacro, InABodyUsesTheFrameOfThatCall) {
    ExpectOutputs({
        {"@nakeddef n(a) = <a>\n@def m = { n(1) a }", "m a", " <1> 1  a"},
    });
}

TEST(NakedMacro, ExportsFromTheFrameOfItsCaller) {
    Session session;
    EXPECT_EQ(session.ExpandError("@nakeddef n = @exportdef k = 1\nn"),
              (LexError{"No parent frame\n    invoking macro n", 25}));
    VarFrame child(&session.m_frame);
    session.ExpandIn(child, "n");
    EXPECT_EQ(session.Expand("k"), "1");
}

// ---- functions as arguments --------------------------------------------------------------------

TEST(FunctionArgument, StandsForTheMacroThatItNames) {
    ExpectOutputs({
        {"@def h(a) = <a>\n@def f(g()) = g(1)",                     "f(h)",     "<1>"  },
        {"@def h(a,b) = <a|b>\n@def f(g()) = g(1,2)",               "f(h)",     "<1|2>"},
        {"@def h(a) = <a>\n@def f(g()) = g ( 1 )",                  "f( h )",   "<1>"  },
        {"@def h(a) = <a>\n@def f(g()) = g(g(1))",                  "f(h)",     "<<1>>"},
        {"@def h(a) = <a>\n@def f(g(), x) = g(x)",                  "f(h,2)",   "<2>"  },
        {"@def h(a) = <a>\n@def f(g()) = k(g)\n@def k(g()) = g(1)", "f(h)",     "<1>"  },
        {"@def f(g()) = g(1)",                                      "f(h)",     "h(1)" },
        {"@def h = x\n@def f(g()) = g(1)",                          "f(h)",     "x(1)" },
        {"@def f(g()) = x",                                         "f(@else)", "x"    },
        {"@def h(a) = <a>\n@def f(g()) = g()",                      "f(h)",     "<>"   },
    });
}

TEST(FunctionArgument, HasItsArgumentsExpandedWhereTheUseStands) {
    ExpectOutputs({
        {"@def x = outer\n@def h(a) = <a>\n@def f(g()) = { @def x = inner\n g(x) }", "f(h)",
         " <inner> "                                                                              },
        {"@def h(a) = <a>\n@def comma = `,`\n@def f(g()) = g(comma)",                "f(h)", "<,>"},
    });
}

TEST(FunctionArgument, RunsInTheFrameOfTheCaller) {
    ExpectOutputs({
        {"@def x = outer\n@def h(a) = x\n@def f(g()) = { @def x = inner\n g(1) }", "f(h)",
         " outer "                                                                                },
        {"@nakeddef n(a) = a\n@def f(g()) = g(1)",                                 "f(n) a", "1 1"},
    });
}

TEST(FunctionArgument, MayHoldAWholeCallsBeginning) {
    ExpectOutputs({
        {"@def h(a) = <a>\n@def f(g()) = g(1)", "f(x h)",      "x <1>"  },
        {"@def h(a) = <a>\n@def f(g()) = g(1)", "f(`h(2) h`)", "<2> <1>"},
    });
}

TEST(FunctionArgumentError, OfItsList) {
    ExpectFaults({
        {"@def h(a) = x", "@def f(g()) = g\nf(h)",
         "( expected to begin argument list for macro g when read EOS\n"
         "    invoking macro f(g) with g=h",                                           15},
        {"@def h(a) = x", "@def f(g()) = g;\nf(h)",
         "( expected to begin argument list for macro g when read ;\n"
         "    invoking macro f(g) with g=h",                                           15},
        {"@def h(a) = x", "@def f(g()) = g(1\nf(h)",
         "Met EOS while reading bracketted section\n    invoking macro f(g) with g=h", 17},
    });
}

TEST(FunctionArgumentError, OfItsArgumentsGetsNoContextOfItsOwn) {
    ExpectFaults({
        {"@def h(a) = x", "@def f(g()) = g(@else)\nf(h)",
         "@else with no matching @if directive\n    invoking macro f(g) with g=h", 17},
    });
}

TEST(FunctionArgumentError, OfTheCallGetsALineForIt) {
    ExpectFaults({
        {"@def h(a,b) = x\n@def f(g()) = g(1)",      "f(h)",
         "Insufficient arguments provided for macro h(a,b)\n"
         "    invoking macro g\n"
         "    invoking macro f(g) with g=h",        s_elsewhere},
        {"@def h(a) = @else\n@def f(g(), x) = g(x)", "f(h,2)",
         "@else with no matching @if directive\n"
         "    invoking macro h(a) with a=2\n"
         "    invoking macro g\n"
         "    invoking macro f(g,x) with g=h, x=2", s_elsewhere},
    });
}

// ---- errors that pass --------------------------------------------------------------------------

TEST(PassingError, GetsALineForEachCall) {
    ExpectFaults({
        {"", "@def m = @else\nm",                               "@else with no matching @if directive\n    invoking macro m", 10},
        {"", "@def m() = @else\nm",                             "@else with no matching @if directive\n    invoking macro m",
         12                                                                                                                     },
        {"", "@def m(a) = @else\nm( x  y )",
         "@else with no matching @if directive\n    invoking macro m(a) with a=x  y",                                         13},
        {"", "@def m(a,b,c) = @else\nm(1,,`)`)",
         "@else with no matching @if directive\n    invoking macro m(a,b,c) with a=1, b=, c=)",                               17},
        {"", "@def m = @else\n@def k(a) = m\n@def l = k(1)\nl",
         "@else with no matching @if directive\n"
         "    invoking macro m\n"
         "    invoking macro k(a) with a=1\n"
         "    invoking macro l",                                                                                              10},
        {"", "@nakeddef m(a) = @else\nm(1)",
         "@else with no matching @if directive\n    invoking macro m(a) with a=1",                                            18},
    });
}

TEST(PassingError, OfAnUntypedArgumentGetsALineForItAndOneForTheCall) {
    ExpectFaults({
        {"@def m(a,b) = b a", "m(x @else, 2)",
         "@else with no matching @if directive\n"
         "    invoking macro a\n"
         "    invoking macro m(a,b) with a=x @else, b=2", 5},
    });
}

TEST(PassingError, LeavesTheFramesOfTheCallsBehind) {
    Session session;
    EXPECT_EQ(session.ExpandError("@def m(a) = { @def n = 1\n @else }\nm(x)").offset, 27);
    EXPECT_EQ(session.Expand("n a"), "n a");
}

TEST(PassingError, KeepsWhatTheCallHasWritten) {
    Session session;
    session.ExpandError("@def m = { x y @else }\na m");
    EXPECT_EQ(session.m_output, "a  x y");
}

TEST(PassingError, OfAPythonMacroNamesTheMacroAlone) {
    ForbidPython();
    ExpectFaults({
        {"@defpython p(a) = a",       "p(1);",
         "Python initialisation error: forbidden by the host\n    invoking python macro p", 4          },
        {"@defpython p(a) = a @else", "p(1);",
         "@else with no matching @if directive\n    invoking python macro p",               s_elsewhere},
        {"@defpython p(int a) = a",   "p(@else);",
         "@else with no matching @if directive\n    passing formal argument a to macro p",  3          },
    });
}

// ---- layout ------------------------------------------------------------------------------------

TEST(Body, OfSeveralLinesStartsEachAtTheColumnOfTheCall) {
    const std::string_view definition = "@def m =\n{\n    a\n      b\n    c\n}\n";
    Session session;
    session.Expand(definition);
    EXPECT_EQ(session.Expand("12345 m;"), "12345 a\n        b\n      c;");
    EXPECT_EQ(session.Expand("m;"), "a\n  b\nc;");
    EXPECT_EQ(session.Expand("m;", 0, 4), "    a\n      b\n    c;");
    EXPECT_EQ(session.Expand("  m;", 0, 4), "      a\n        b\n      c;");
    EXPECT_EQ(session.Expand("\tm"), "\ta\n      b\n    c");
    EXPECT_EQ(session.Expand("x\n\n  m\n"), "x\n\n  a\n    b\n  c\n");
}

TEST(Body, WithABracketOnItsLineKeepsItsIndentation) {
    Session session;
    session.Expand("@def m = {\n    a\n  b\n}\n");
    EXPECT_EQ(session.Expand("12 m;"), "12     a\n     b\n;");
}

TEST(Body, ThatEndsInALineFeedLetsTheCallersLineStartAnew) {
    Session session;
    session.Expand("@def m = {\nx\n}\n");
    EXPECT_EQ(session.Expand("m;", 0, 2), "  x\n  ;");
    EXPECT_EQ(session.Expand("a m;\nb", 0, 2), "  a x\n  ;\n  b");
}

TEST(Body, OfABodyIsBasedOnBoth) {
    Session session;
    session.Expand("@def in =\n{\n  x\n  y\n}\n@def out =\n{\n    <in>\n    z\n}\n");
    EXPECT_EQ(session.Expand("12 out"), "12 <x\n    y>\n   z");
}

TEST(UntypedArgument, OfSeveralLinesKeepsItsIndentation) {
    Session session;
    session.Expand("@def m(a) = a\n");
    EXPECT_EQ(session.Expand("12345 m(p\n  q)"), "12345 p\n        q");
    EXPECT_EQ(session.Expand("12345 m(\n    p\n  q\n);"), "12345 p\n        q;");
}

// ---- where the output comes from ---------------------------------------------------------------

TEST(CallOutput, ComesFromTheTextThatWasCopied) {
    Session session;
    EXPECT_EQ(session.Expand("@def m(a) = { <a> }\nm(xyz);"), " <xyz> ;");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim  <", "verbatim xyz", "verbatim >", "verbatim  ", "verbatim ;"}));
    EXPECT_EQ(session.SourceOffset(1), 14) << "the body, in the definition";
    EXPECT_EQ(session.SourceOffset(2), 22) << "the argument, at the call";
    EXPECT_EQ(session.SourceOffset(7), 26);
}

TEST(CallOutput, OfAFunctionArgumentMayComeFromATextThatIsGone) {
    Session session;
    EXPECT_EQ(session.Expand("@def f(g()) = g(1)\nf(h);"), "h(1);");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim ?", "verbatim ?", "verbatim ?", "verbatim ?", "verbatim ;"}));
    for (ssize_t pos = 0; pos < 4; ++pos)
        EXPECT_NE(session.m_pieces.MapOutputPositionToAddress(pos), nullptr);
}

// ---- typed arguments and results ---------------------------------------------------------------

TEST(TypedArgument, IsEvaluatedOnceAtTheCall) {
    ExpectOutputs({
        {"@def f(int a) = a a",                "f(1 + 2)",           "3 3"    },
        {"@def f(int a) = a + a",              "f(1 + 2)",           "3 + 3"  },
        {"@def f(bool a) = a",                 "f(1 < 2)",           "true"   },
        {"@def f(double a) = a",               "f(1 / 4.0)",         "0.25"   },
        {"@def f(string a) = a",               "f(\"x\" + 'y')",     "xy"     },
        {"@def f(char a) = a",                 "f(\"x\")",           "'x'"    },
        {"@def f(int a, b, string c) = a b c", "f(1+1, 1+1, \"1\")", "2 1+1 1"},
        {"@def n = 5\n@def f(int a) = a",      "f(n * 2)",           "10"     },
    });
}

TEST(TypedArgument, IsEvaluatedInTheFrameOfItsCaller) {
    ExpectOutputs({
        {"@def x = 1\n@def f(int a) = { @def x = 2\n a/x }", "f(x)",    " 1/2 "},
        {"@def x = 1\n@def f(x, int a) = a",                 "f(2, x)", "1"    },
    });
}

TEST(TypedArgument, HasItsSideEffectsOnce) {
    Session session;
    EXPECT_EQ(session.Expand("@def f(int a) = a a a\n"
                             "@nakeddef one(x) = { @exportdef k = { x } 1 }\n"
                             "f(one(7))"),
              "1 1 1");
    int count = 0;
    for (const LSVariable* var = session.m_frame.m_localVariables.m_first; var != nullptr;
         var = var->m_next)
        count += var->GetName() == "k" ? 1 : 0;
    EXPECT_EQ(count, 1);
}

TEST(TypedArgument, OfANakedMacroStaysBehindAsAValue) {
    Session session;
    session.Expand("@nakeddef n(int a) = <a>\n");
    EXPECT_EQ(session.Expand("n(1 + 1) a"), "<2> 2");
    EXPECT_EQ(session.m_frame.Find2("a")->GetType(), LSV_INT);
}

TEST(TypedArgumentError, SaysWhichArgumentEvenIfTheBodyNeverUsesIt) {
    Session session;
    session.Expand("@def f(a, int b) = x\n");
    EXPECT_EQ(session.ExpandError("f(1, )").description,
              "Unexpected EOS after EOS in expression\n"
              "    expression: \n"
              "    passing formal argument b to macro f");
    EXPECT_EQ(session.ExpandError("f(1, @else)"),
              (LexError{"@else with no matching @if directive\n"
                        "    passing formal argument b to macro f",
                        6}));
}

TEST(TypedArgumentError, InABodyShowsTheValue) {
    ExpectFaults({
        {"", "@def f(int a, b) = @else\nf(1 + 1, 1 + 1)",
         "@else with no matching @if directive\n    invoking macro f(a,b) with a=2, b=1 + 1", 20},
    });
}

TEST(TypedResult, IsTheValueOfTheBody) {
    ExpectOutputs({
        {"@def int f = 1 + 2",            "f",          "3"    },
        {"@def bool f(a,b) = (a) == (b)", "f(1+1,2)",   "true" },
        {"@def double f = 1 / 8.0",       "f",          "0.125"},
        {"@def string f(a) = \"<\" + a",  "f(\"x\")",   "<x"   },
        {"@def char f = \"x\"",           "f",          "'x'"  },
        {"@def int f(int a) = a * 2",     "f(f(f(1)))", "8"    },
        {"@nakeddef int f(a) = a",        "f(1+1) a",   "2 1+1"},
    });
}

TEST(TypedResult, ComesFromTheName) {
    Session session;
    session.Expand("@def int f(a) = a * 1000\n");
    EXPECT_EQ(session.Expand("x  f(2 + 3);", 0, 2), "  x  3002;");
    EXPECT_EQ(session.Pieces(), (Texts{"indentation 2", "verbatim x", "verbatim   ",
                                       "calculated f 4", "verbatim ;"}));
    for (ssize_t pos = 5; pos < 9; ++pos)
        EXPECT_EQ(session.SourceOffset(pos), 3) << pos;
}

TEST(TypedResult, OfSeveralLinesIsIndentedByTheCaller) {
    Session session;
    session.Expand("@def string f = \"a\\nb\"\n");
    EXPECT_EQ(session.Expand("x f", 0, 2), "  x a\n  b");
}

TEST(TypedResultError, IsThatOfTheCall) {
    Session session;
    session.Expand("@def int f(a) = a +\n");
    EXPECT_EQ(session.ExpandError("f(1)").description, "Unexpected EOS after + in expression\n"
                                                       "    expression: 1 +\n"
                                                       "    invoking macro f(a) with a=1");
}

}  // namespace
}  // namespace vorn_test
