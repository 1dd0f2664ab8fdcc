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

// Expands a text behind its definitions, which leave no output.
void ExpectOutput(std::string_view definitions, std::string_view text, std::string_view output) {
    Session session;
    EXPECT_EQ(session.Expand(definitions), "") << definitions;
    EXPECT_EQ(session.Expand(text), output) << definitions << text;
}

constexpr ssize_t s_elsewhere = -1;

// The error of a text behind its definitions, and where it lies in the text: elsewhere, if in the
// definitions or in a text that is gone.
void ExpectFault(std::string_view definitions, std::string_view text, std::string_view message,
                 ssize_t offset) {
    Session session;
    EXPECT_EQ(session.Expand(definitions), "") << definitions;
    const LexError error = session.ExpandError(text);
    EXPECT_EQ(error.description, message) << definitions << text;
    if (offset == s_elsewhere) {
        EXPECT_FALSE(error.offset >= 0 && error.offset <= session.LastText().size());
    } else {
        EXPECT_EQ(error.offset, offset) << definitions << text;
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
    ExpectOutput("@def m = x", "m(1)", "x(1)");
    ExpectOutput("@def m() = x", "m()", "x()");
    ExpectOutput("@def m = x", "m m", "x x");
    ExpectOutput("@def m = x", "(m)", "(x)");
    ExpectOutput("@def m = {}", "a m b", "a  b");
}

TEST(Call, WithFormalArgumentsReadsAList) {
    ExpectOutput("@def f(a) = <a>", "f(1)", "<1>");
    ExpectOutput("@def f(a) = <a>", "f()", "<>");
    ExpectOutput("@def f(a) = <a>", "f(  )", "<>");
    ExpectOutput("@def f(a) = <a>", "f (1);", "<1>;");
    ExpectOutput("@def f(a) = <a>", "f\n\n(1)", "<1>");
    ExpectOutput("@def f(a) = <a>", "f /* x */ // y\n(1)", "<1>");
    ExpectOutput("@def f(a) = <a>", "f(1)(2)", "<1>(2)");
    ExpectOutput("@def f(a,b) = <a|b>", "f(1,2)", "<1|2>");
    ExpectOutput("@def f(a,b) = <a|b>", "f( 1 , 2 )", "<1|2>");
    ExpectOutput("@def f(a,b) = <a|b>", "f(,)", "<|>");
    ExpectOutput("@def f(a,b) = <a|b>", "f(1,)", "<1|>");
    ExpectOutput("@def f(a,b) = <a|b>", "f(\n1\n,\n2\n)", "<1|2>");
    ExpectOutput("@def f(a,b) = <b|a>", "f(1 2, 3)", "<3|1 2>");
    ExpectOutput("@def f(a) = <a>", "f(1 /* x */)", "<1>");
    ExpectOutput("@def f(a) = <a>", "f(1 /* x */ 2)", "<1 /* x */ 2>");
    ExpectOutput("@def f(a) = <a,a>", "f(x y)", "<x y,x y>");
}

TEST(Call, KeepsBracketsOfAnArgumentTogether) {
    ExpectOutput("@def f(a,b) = <a|b>", "f((1,2),3)", "<(1,2)|3>");
    ExpectOutput("@def f(a,b) = <a|b>", "f(g(1,2),{3,4})", "<g(1,2)|{3,4}>");
    ExpectOutput("@def f(a,b) = <a|b>", "f([1,(2],3)", "<[1,(2]|3>");
    ExpectOutput("@def f(a,b) = <a|b>", "f(a[1)],b)", "<a[1)]|b>");
    ExpectOutput("@def f(a,b) = <a|b>", "f(\"1,2)\",'3,')", "<\"1,2)\"|'3,'>");
    ExpectOutput("@def f(a,b) = <a|b>", "f(1 /* , */ 0,2)", "<1 /* , */ 0|2>");
    ExpectOutput("@def f(a,b) = <a|b>", "f(`1,2(`,`3)`)", "<1,2(|3)>");
    ExpectOutput("@def f(a,b) = <a|b>", "f( ` 1 ` , `` )", "< 1 |>");
}

TEST(CallError, OfItsList) {
    ExpectFault("@def f(a) = x", "f",
                "( expected to begin argument list for macro f(a) when read EOS", 1);
    ExpectFault("@def f(a,b) = x", "f [1]",
                "( expected to begin argument list for macro f(a,b) when read [", 2);
    ExpectFault("@def f(int a, g()) = x", "f\n;",
                "( expected to begin argument list for macro f(a,g) when read ;", 2);
    ExpectFault("@def f(a,b) = x", "f()", "Insufficient arguments provided for macro f(a,b)", 2);
    ExpectFault("@def f(a,b) = x", " f(1)", "Insufficient arguments provided for macro f(a,b)", 4);
    ExpectFault("@def f(a,b,c) = x", "f(1,2)", "Insufficient arguments provided for macro f(a,b,c)",
                5);
    ExpectFault("@def f(a,b) = x", "f(`1`)", "Insufficient arguments provided for macro f(a,b)", 5);
    ExpectFault("@def f(a) = x", "f(1,2)", "Too many arguments provided for macro f(a)", 3);
    ExpectFault("@def f(a) = x", "f(,)", "Too many arguments provided for macro f(a)", 2);
    ExpectFault("@def f(a,b) = x", "f(1,2,3)", "Too many arguments provided for macro f(a,b)", 5);
    ExpectFault("@def f(a) = x", "f(", "Met EOS while reading argument ", 2);
    ExpectFault("@def f(a) = x", "f( ", "Met EOS while reading argument ", 3);
    ExpectFault("@def f(a) = x", "f(1", "Met EOS while reading argument 1", 3);
    ExpectFault("@def f(a) = x", "f((1)", "Met EOS while reading argument (1)", 5);
    ExpectFault("@def f(a,b) = x", "f(1,", "Met EOS while reading argument ", 4);
    ExpectFault("@def f(a) = x", "f(`1", "Met EOS while reading argument `1", 4);
    ExpectFault("@def f(a) = x", "f(\x01)", "Bad token \x01", 2);
}

// The token behind a last argument in back quotes is taken for the closing bracket.
TEST(Call, DoesNotTestWhatEndsALastArgumentInBackQuotes) {
    ExpectOutput("@def f(a) = <a>", "f(`1`;2", "<1>2");
    ExpectOutput("@def f(a) = <a>", "f(`1`", "<1>");
}

TEST(CallError, BehindAnArgumentInBackQuotes) {
    ExpectFault("@def f(a,b) = x", "f(`1`", "Met EOS while reading argument ", 5);
}

// ---- call by name ------------------------------------------------------------------------------

TEST(UntypedArgument, IsExpandedWhereverItIsUsed) {
    ExpectOutput("@def one = 1\n@def f(a) = a-a", "f(one)", "1-1");
    ExpectOutput("@def one = 1\n@def f(a) = a", "f(f(f(one)))", "1");
    ExpectOutput("@def one = 1\n@def f(a) = x", "f(one)", "x");
    ExpectOutput("@def f(a) = x", "f(@else)", "x");
    ExpectOutput("@def f(a) = 'a' \"a\" /* a */ ab", "f(1)", "'a' \"a\" /* a */ ab");
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
    ExpectOutput("@def x = outer\n@def f(a) = { @def x = inner\n a/x }", "f(x)", " outer/inner ");
    ExpectOutput("@def f(x) = x\n@def g(x) = f(x)", "g(1)", "1");
    ExpectOutput("@def f(a,b) = a\n@def g(a,b) = f(b,a)", "g(1,2)", "2");
}

TEST(UntypedArgument, MayBeNamedInAnotherArgument) {
    ExpectOutput("@def a = outer\n@def f(a,b) = a/b", "f(1,a)", "1/outer");
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
    ExpectOutput("@def one = 1\n@def f = on", "f@@e", "one");
    ExpectOutput("@def one = 1\n@def f(a) = a@@e", "f(on)", "one");
    ExpectOutput("@def f = @", "f@@def k = 1", "@def k = 1");
}

TEST(Body, MayCallFurtherMacros) {
    ExpectOutput("@def a = <b>\n@def b = c", "a", "<c>");
    ExpectOutput("@def a(x) = [b(x,x)]\n@def b(x,y) = x+y", "a(1)", "[1+1]");
    ExpectOutput("@def a(x) = @if (x > 0) { x a(@[ @(x-1) ]) }", "a(2)", " 2  1   ");
}

TEST(Definition, InABodyDiesWithTheCall) {
    ExpectOutput("@def m = { @def n = { 1 } n }", "m n", " 1   n");
}

TEST(Exportdef, InABodyLandsInTheFrameOfTheCaller) {
    ExpectOutput("@def m = @exportdef n = 1", "<m><n>", "<><1>");
    ExpectOutput("@def m = { @exportdef n = { k } }\n@def k = { @exportdef l = { 1 } }", "m@@n@@l",
                 "  l");
    Session session;
    VarFrame child(&session.m_frame);
    session.Expand("@def m = @exportdef n = 1\n");
    EXPECT_EQ(session.ExpandIn(child, "m@@n"), "1");
    EXPECT_EQ(session.Expand("n"), "n");
}

// ---- naked macros ------------------------------------------------------------------------------

TEST(NakedMacro, LeavesArgumentsAndDefinitionsBehind) {
    ExpectOutput("@nakeddef n(a) = <a>", "a n(1) a", "a <1> 1");
    ExpectOutput("@nakeddef n(a) = <a>", "n(1) n(2) a", "<1> <2> 2");
    ExpectOutput("@nakeddef n = { @def k = { 1 } }", "k n k", "k   1 ");
    ExpectOutput("@nakeddef n(a) = @def k = a", "n(1) k n(2) k", " 1  2");
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
    ExpectOutput("@nakeddef n(a) = <a>\n@def m = { n(1) a }", "m a", " <1> 1  a");
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
    ExpectOutput("@def h(a) = <a>\n@def f(g()) = g(1)", "f(h)", "<1>");
    ExpectOutput("@def h(a,b) = <a|b>\n@def f(g()) = g(1,2)", "f(h)", "<1|2>");
    ExpectOutput("@def h(a) = <a>\n@def f(g()) = g ( 1 )", "f( h )", "<1>");
    ExpectOutput("@def h(a) = <a>\n@def f(g()) = g(g(1))", "f(h)", "<<1>>");
    ExpectOutput("@def h(a) = <a>\n@def f(g(), x) = g(x)", "f(h,2)", "<2>");
    ExpectOutput("@def h(a) = <a>\n@def f(g()) = k(g)\n@def k(g()) = g(1)", "f(h)", "<1>");
    ExpectOutput("@def f(g()) = g(1)", "f(h)", "h(1)");
    ExpectOutput("@def h = x\n@def f(g()) = g(1)", "f(h)", "x(1)");
    ExpectOutput("@def f(g()) = x", "f(@else)", "x");
    ExpectOutput("@def h(a) = <a>\n@def f(g()) = g()", "f(h)", "<>");
}

TEST(FunctionArgument, HasItsArgumentsExpandedWhereTheUseStands) {
    ExpectOutput("@def x = outer\n@def h(a) = <a>\n@def f(g()) = { @def x = inner\n g(x) }", "f(h)",
                 " <inner> ");
    ExpectOutput("@def h(a) = <a>\n@def comma = `,`\n@def f(g()) = g(comma)", "f(h)", "<,>");
}

TEST(FunctionArgument, RunsInTheFrameOfTheCaller) {
    ExpectOutput("@def x = outer\n@def h(a) = x\n@def f(g()) = { @def x = inner\n g(1) }", "f(h)",
                 " outer ");
    ExpectOutput("@nakeddef n(a) = a\n@def f(g()) = g(1)", "f(n) a", "1 1");
}

TEST(FunctionArgument, MayHoldAWholeCallsBeginning) {
    ExpectOutput("@def h(a) = <a>\n@def f(g()) = g(1)", "f(x h)", "x <1>");
    ExpectOutput("@def h(a) = <a>\n@def f(g()) = g(1)", "f(`h(2) h`)", "<2> <1>");
}

TEST(FunctionArgumentError, OfItsList) {
    ExpectFault("@def h(a) = x", "@def f(g()) = g\nf(h)",
                "( expected to begin argument list for macro g when read EOS\n"
                "    invoking macro f(g) with g=h",
                15);
    ExpectFault("@def h(a) = x", "@def f(g()) = g;\nf(h)",
                "( expected to begin argument list for macro g when read ;\n"
                "    invoking macro f(g) with g=h",
                15);
    ExpectFault("@def h(a) = x", "@def f(g()) = g(1\nf(h)",
                "Met EOS while reading bracketted section\n    invoking macro f(g) with g=h", 17);
}

TEST(FunctionArgumentError, OfItsArgumentsGetsNoContextOfItsOwn) {
    ExpectFault("@def h(a) = x", "@def f(g()) = g(@else)\nf(h)",
                "@else with no matching @if directive\n    invoking macro f(g) with g=h", 17);
}

TEST(FunctionArgumentError, OfTheCallGetsALineForIt) {
    ExpectFault("@def h(a,b) = x\n@def f(g()) = g(1)", "f(h)",
                "Insufficient arguments provided for macro h(a,b)\n"
                "    invoking macro g\n"
                "    invoking macro f(g) with g=h",
                s_elsewhere);
    ExpectFault("@def h(a) = @else\n@def f(g(), x) = g(x)", "f(h,2)",
                "@else with no matching @if directive\n"
                "    invoking macro h(a) with a=2\n"
                "    invoking macro g\n"
                "    invoking macro f(g,x) with g=h, x=2",
                s_elsewhere);
}

// ---- errors that pass --------------------------------------------------------------------------

TEST(PassingError, GetsALineForEachCall) {
    ExpectFault("", "@def m = @else\nm",
                "@else with no matching @if directive\n    invoking macro m", 10);
    ExpectFault("", "@def m() = @else\nm",
                "@else with no matching @if directive\n    invoking macro m", 12);
    ExpectFault("", "@def m(a) = @else\nm( x  y )",
                "@else with no matching @if directive\n    invoking macro m(a) with a=x  y", 13);
    ExpectFault(
        "", "@def m(a,b,c) = @else\nm(1,,`)`)",
        "@else with no matching @if directive\n    invoking macro m(a,b,c) with a=1, b=, c=)", 17);
    ExpectFault("", "@def m = @else\n@def k(a) = m\n@def l = k(1)\nl",
                "@else with no matching @if directive\n"
                "    invoking macro m\n"
                "    invoking macro k(a) with a=1\n"
                "    invoking macro l",
                10);
    ExpectFault("", "@nakeddef m(a) = @else\nm(1)",
                "@else with no matching @if directive\n    invoking macro m(a) with a=1", 18);
}

TEST(PassingError, OfAnUntypedArgumentGetsALineForItAndOneForTheCall) {
    ExpectFault("@def m(a,b) = b a", "m(x @else, 2)",
                "@else with no matching @if directive\n"
                "    invoking macro a\n"
                "    invoking macro m(a,b) with a=x @else, b=2",
                5);
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
    ExpectFault("@defpython p(a) = a", "p(1);",
                "Python initialisation error: forbidden by the host\n    invoking python macro p",
                4);
    ExpectFault("@defpython p(a) = a @else", "p(1);",
                "@else with no matching @if directive\n    invoking python macro p", s_elsewhere);
    ExpectFault("@defpython p(int a) = a", "p(@else);",
                "@else with no matching @if directive\n    passing formal argument a to macro p",
                3);
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
    ExpectOutput("@def f(int a) = a a", "f(1 + 2)", "3 3");
    ExpectOutput("@def f(int a) = a + a", "f(1 + 2)", "3 + 3");
    ExpectOutput("@def f(bool a) = a", "f(1 < 2)", "true");
    ExpectOutput("@def f(double a) = a", "f(1 / 4.0)", "0.25");
    ExpectOutput("@def f(string a) = a", "f(\"x\" + 'y')", "xy");
    ExpectOutput("@def f(char a) = a", "f(\"x\")", "'x'");
    ExpectOutput("@def f(int a, b, string c) = a b c", "f(1+1, 1+1, \"1\")", "2 1+1 1");
    ExpectOutput("@def n = 5\n@def f(int a) = a", "f(n * 2)", "10");
}

TEST(TypedArgument, IsEvaluatedInTheFrameOfItsCaller) {
    ExpectOutput("@def x = 1\n@def f(int a) = { @def x = 2\n a/x }", "f(x)", " 1/2 ");
    ExpectOutput("@def x = 1\n@def f(x, int a) = a", "f(2, x)", "1");
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
    ExpectFault("", "@def f(int a, b) = @else\nf(1 + 1, 1 + 1)",
                "@else with no matching @if directive\n    invoking macro f(a,b) with a=2, b=1 + 1",
                20);
}

TEST(TypedResult, IsTheValueOfTheBody) {
    ExpectOutput("@def int f = 1 + 2", "f", "3");
    ExpectOutput("@def bool f(a,b) = (a) == (b)", "f(1+1,2)", "true");
    ExpectOutput("@def double f = 1 / 8.0", "f", "0.125");
    ExpectOutput("@def string f(a) = \"<\" + a", "f(\"x\")", "<x");
    ExpectOutput("@def char f = \"x\"", "f", "'x'");
    ExpectOutput("@def int f(int a) = a * 2", "f(f(f(1)))", "8");
    ExpectOutput("@nakeddef int f(a) = a", "f(1+1) a", "2 1+1");
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
