// Typed formal arguments and typed results of macros, which MacroExpanderInvoke.cpp runs.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Faults.h"

namespace vorn_test {
namespace {

using namespace vorn;
using Texts = std::vector<std::string>;

class Typed : public testing::TestWithParam<Expansion> {};

TEST_P(Typed, Expands) {
    EXPECT_EQ(Expand(GetParam().text), GetParam().output);
}

// ---- arguments ---------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    ArgumentIsItsValue, Typed,
    testing::Values(Expansion{"@def f(bool a) = <a>\nf(1 < 2)", "<true>"},
                    Expansion{"@def f(int a) = <a>\nf(1 + 2)", "<3>"},
                    Expansion{"@def f(double a) = <a>\nf(1)", "<1.0>"},
                    Expansion{"@def f(char a) = <a>\nf(\"x\")", "<'x'>"},
                    Expansion{"@def f(string a) = <a>\nf(\"x\" + 'y')", "<xy>"},
                    // Beside an untyped one, which is its text.
                    Expansion{"@def f(a, int b) = <a><b>\nf(1 + 2, 1 + 2)", "<1 + 2><3>"},
                    Expansion{"@def f(int a, b) = <a><b>\nf(1 + 2, 1 + 2)", "<3><1 + 2>"},
                    Expansion{"@def f(int a) = a * a\nf(1 + 2)", "3 * 3"},
                    // The text of a string is not expanded again.
                    Expansion{"@def m = 1\n@def f(string a) = a\nf(\"m\")", "m"}));

INSTANTIATE_TEST_SUITE_P(
    ArgumentIsExpandedInTheCallersFrame, Typed,
    testing::Values(Expansion{"@def a = 5\n@def f(int a) = <a>\nf(a)", "<5>"},
                    Expansion{"@def f(int a, int b) = <a b>\n@def a = 5\nf(1, a)", "<1 5>"},
                    Expansion{"@def f(int a) = <a>\n@def g(int a) = f(a + 1)\ng(1)", "<2>"},
                    Expansion{"@def f(int a) = <a>\n@def g(b) = f(b + 1)\ng(1)", "<2>"},
                    Expansion{"@def f(int a) = {@let int v = 7\na v}@scope {@let int v = 3\nf(v)}",
                              "3 7"},
                    Expansion{"@def f(int a) = <a>\nf(@if (true) {1} @else {2})", "<1>"}));

TEST(Typed, ArgumentIsEvaluatedOnceWhetherItIsUsedOrNot) {
    Session session;
    session.Expand("@let int n = 0\n@def count = @let n = n + 1\n"
                   "@def unused(int a) = -\n@def twice(int a) = a a\n@def text(a) = a a\n");
    EXPECT_EQ(session.Expand("unused(5 count)n"), "-1");
    EXPECT_EQ(session.Expand("twice(5 count)n"), "5 52");
    EXPECT_EQ(session.Expand("text(5 count)n"), "5  5 4");
}

TEST(Typed, ArgumentsAreEvaluatedInOrderAndInFrontOfTheBody) {
    Session session;
    session.Expand("@let string seen = \"\"\n@def see(x) = @let seen := seen@@x\n"
                   "@def f(int a, int b) = see(c)seen\n");
    EXPECT_EQ(session.Expand("f(1 see(a), 2 see(b))"), "abc");
}

// The value is a variable of the call, which the body can assign to.
INSTANTIATE_TEST_SUITE_P(
    ArgumentIsAVariableOfTheCall, Typed,
    testing::Values(Expansion{"@def f(int a) = {@let a = a + 1\na}f(1)f(5)", "26"},
                    Expansion{"@def f(int a) = a\nf(1)a", "1a"},
                    Expansion{"@def f(int a) = {@if (a > 0) {a f(a - 1)}}f(3)", "3 2 1 "},
                    // The mark of a function has no meaning beside a type.
                    Expansion{"@def f(int g()) = g(1)\nf(2)", "2(1)"}));

// The arguments of a naked macro stay behind where it is called.
INSTANTIATE_TEST_SUITE_P(
    ArgumentOfANakedMacroStaysBehind, Typed,
    testing::Values(Expansion{"@nakeddef f(int a) = <a>\nf(1)a", "<1>1"},
                    Expansion{"@nakeddef f(int a) = <a>\nf(1)f(2)a", "<1><2>2"},
                    Expansion{"@nakeddef f(int a) = <a>\n@scope {f(1)a}a", "<1>1a"},
                    Expansion{"@nakeddef f(int a) = <a>\nf(1)@let a = a + 1\na", "<1>2"},
                    Expansion{"@nakeddef f(int a, int b) = <a b>\nf(1, 2)f(b, a)", "<1 2><2 2>"},
                    Expansion{"@nakeddef n(int a) = <a>\n@def f(g()) = g(1 + 1)\nf(n)a", "<2>2"}));

TEST(Typed, ArgumentsOfANakedMacroAreBoundUpToTheOneThatFails) {
    Session session;
    session.Expand("@nakeddef f(int a, int b, int c) = unused\n");
    ExpectFault(session, {"f(1, true, 3)",
                          "No implicit conversion from bool to int64\n    expression: true\n"
                          "    passing formal argument b to macro f"});
    EXPECT_EQ(session.Expand("a b c"), "1 b c");
}

TEST(Typed, ArgumentWritesNothing) {
    Session session;
    EXPECT_EQ(session.Expand("@def f(int a) = <a>\nx f( 1 +\n 2 ) y"), "x <3> y");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim x", "verbatim  ", "verbatim <", "calculated a 1",
                                       "verbatim >", "verbatim  y"}));
}

// ---- results -----------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    ResultIsTheValueOfTheBody, Typed,
    testing::Values(
        Expansion{"@def bool m = 1 < 2\nm", "true"}, Expansion{"@def int m = 1 + 2\nm", "3"},
        Expansion{"@def double m = 3\nm", "3.0"}, Expansion{"@def char m = \"abc\"[1]\nm", "'b'"},
        Expansion{"@def string m = \"a\" + \"b\"\nm", "ab"},
        Expansion{"@def int m(a) = a * 2\nm(1 + 2)", "5"},
        Expansion{"@def int m(int a) = a * 2\nm(1 + 2)", "6"},
        Expansion{"@def int m = {1 +\n2}m", "3"},
        Expansion{"@def int m =\n  {\n    1\n    + 2\n  }\nm", "3"},
        Expansion{"@def string m = \"n\"\n@def n = 1\nm", "n"},
        Expansion{"@def int f(int n) = @if (n < 2) {1} @else {n * f(n - 1)}\nf(10)", "3628800"},
        Expansion{"@def int m = 1 + 2\n@(m * m)", "9"}));

// The body runs in a temporary frame below that of the call.
INSTANTIATE_TEST_SUITE_P(
    ResultKeepsWhatTheBodyDefines, Typed,
    testing::Values(Expansion{"@def int f = 1 @def m = 2\nf m", "1 m"},
                    Expansion{"@def int f = 1 @exportdef m = 2\nf m", "1 m"},
                    Expansion{"@def int f = 1 @def + m = 2\nf m", "1 2"},
                    // Of a naked macro, that is the frame of its caller.
                    Expansion{"@nakeddef int f = 1 @def m = 2\nf m", "1 m"},
                    Expansion{"@nakeddef int f = 1 @exportdef m = 2\nf m", "1 2"},
                    Expansion{"@nakeddef int f(int a, b) = a + b\nf(1, 2) a b", "3 1 2"}));

TEST(Typed, ResultIsAttributedToTheName) {
    Session session;
    EXPECT_EQ(session.Expand("@def int f(a) =\n{\n  a +\n  10\n}\nx  f(2) y"), "x  12 y");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim x", "verbatim   ", "calculated f 2", "verbatim  y"}));
    const auto name = static_cast<ssize_t>(Str(session.LastText()).find("f(2)"));
    EXPECT_EQ(session.SourceOffset(3), name);
    EXPECT_EQ(session.SourceOffset(4), name);
    EXPECT_EQ(session.Expand("@def string e = \"\"\nx e y"), "x  y");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim x", "verbatim  ", "verbatim  y"}));
}

// The lines of a string begin at the indentation of the text that calls, and not at its column.
TEST(Typed, ResultOfSeveralLinesGetsTheIndentationOfTheText) {
    Session session;
    session.Expand("@def string f = \"a\\nb\"\n");
    EXPECT_EQ(session.Expand("x f y"), "x a\nb y");
    EXPECT_EQ(session.Expand("x f y", 0, 2), "  x a\n  b y");
    EXPECT_EQ(session.Pieces(), (Texts{"indentation 2", "verbatim x", "verbatim  ",
                                       "calculated f 5", "verbatim  y"}));
    EXPECT_EQ(session.Expand("f", 0, 2), "  a\n  b");
    EXPECT_EQ(session.Pieces(), Texts{"calculated f 7"});
    EXPECT_EQ(session.Expand("c: @scope {f}"), "c: a\n   b");
}

// ---- what a host can build ---------------------------------------------------------------------

TEST(Typed, ResultOfAFunctionThatStandsForAnotherIsEvaluated) {
    Session session;
    session.Expand("@def twice(a) = a * 2\n@def m = 4\n");
    auto* g = new LSMacroVariable(LSV_INT, "g", nullptr, false, false, true);
    g->SetSubstitutionString("twice", false, 0);
    session.m_frame.AddVariable(g);
    EXPECT_EQ(session.Expand("x g(1 + m) y"), "x 9 y");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim x", "verbatim  ", "calculated g 1", "verbatim  y"}));
    EXPECT_EQ(session.ExpandError("g(x)").description,
              "Unexpected x after EOS in expression\n    expression: x * 2\n    invoking macro g");
}

TEST(Typed, BodyRunsBelowTheContextOfItsMacro) {
    Session context;
    context.Expand("@def m = 1\n");
    Session session;
    session.Expand("@def m = 2\n");
    auto* f = new LSMacroVariable(LSV_INT, "f", &context.m_frame, false, false, false);
    f->AddArgName("a", LSV_INT, false);
    f->SetSubstitutionString("m * 10 + a", false, 0);
    session.m_frame.AddVariable(f);
    EXPECT_EQ(session.Expand("f(m)"), "12");
}

// ---- lifetime of texts -------------------------------------------------------------------------

// What an argument or a result defines lies in its text, which has to live as long as the
// definition where that text was put together during expansion.
INSTANTIATE_TEST_SUITE_P(
    KeepsTheTextsOfDefinitions, Typed,
    testing::Values(
        Expansion{"@def f(int a) = <a>\n@[@quote(f(1 @def + m = hello))]m", "<1>hello"},
        Expansion{"@def f(int a) = <a>\n@for(x in [@quote(f(1 @def + m(b) = [b]))]) {x}m(2)",
                  "<1>[2]"},
        Expansion{"@def f(int a) = <a>\n@def h(g()) = g(1 @quote(@exportdef m = hello))\nh(f)m",
                  "<1>hello"},
        Expansion{"@def f(int a) = <a>\n@def h(g()) = g(1 @quote(@def + m = hello))\nh(f)m",
                  "<1>hello"},
        // Here the macro itself was defined by such a text, and its names lie there.
        Expansion{"@[@quote(@nakeddef + f(int one) = <one>)]f(1)one", "<1>1"},
        Expansion{"@[@quote(@def + int f(int one) = one @def + m = hello)]f(1)m", "1hello"},
        Expansion{"@for(x in [@quote(@nakeddef + f(string one, two) = <one two>)]) {x}"
                  "f(\"a\", b)one two",
                  "<a b>a b"}));

// ---- what nested texts may not do --------------------------------------------------------------

TEST(Typed, HandsOnNoImportHandler) {
    MemoryFiles files;
    files.m_files["f"] = "@def m = 1";
    Session session;
    session.m_importHandler = &files;
    ExpectFault(session, {"@def int f = @^import \"f\"\nf",
                          "@import statement not allowed here\n    invoking macro f"});
    ExpectFault(session, {"@def g(int a) = a\ng(@^import \"f\")",
                          "@import statement not allowed here\n"
                          "    passing formal argument a to macro g"});
}

// ---- errors ------------------------------------------------------------------------------------

class TypedFault : public testing::TestWithParam<Fault> {};

TEST_P(TypedFault, IsReported) {
    ExpectFault(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    OfAnArgument, TypedFault,
    testing::Values(
        Fault{"@def f(int a) = unused\nf(true)",
              "No implicit conversion from bool to int64\n    expression: true\n"
              "    passing formal argument a to macro f"},
        Fault{"@def f(int a) = unused\nf()",
              "Unexpected EOS after EOS in expression\n    expression: \n"
              "    passing formal argument a to macro f"},
        Fault{"@def f(a, string b) = unused\nf(1, 2)",
              "No implicit conversion from int64 to string\n    expression: 2\n"
              "    passing formal argument b to macro f"},
        Fault{"@def m = 1 2\n@def f(int a) = unused\nf(m)",
              "Read 2 in middle of expression\n    expression: 1 2\n"
              "    passing formal argument a to macro f"},
        // An error of the expansion keeps its place. There is no expression then.
        Fault{"@def f(int a) = unused\nf(1 @fail^(\"x\"))",
              "x\n    passing formal argument a to macro f"},
        Fault{"@def g(a) = @fail^(\"x\")\n@def f(int a) = unused\nf(g(2))",
              "x\n    invoking macro g(a) with a=2\n    passing formal argument a to macro f"},
        // The body of the macro has not begun: only what called it is named.
        Fault{"@def f(int a) = unused\n@def g(b) = f(b)\ng(true)",
              "No implicit conversion from bool to int64\n    expression: true\n"
              "    passing formal argument a to macro f\n    invoking macro g(b) with b=true"}));

INSTANTIATE_TEST_SUITE_P(
    OfAResult, TypedFault,
    testing::Values(
        Fault{"@def int f = true\nf",
              "No implicit conversion from bool to int64\n    expression: true\n"
              "    invoking macro f"},
        Fault{"@def int f(a) = a\nf(1 2)", "Read 2 in middle of expression\n    expression: 1 2\n"
                                           "    invoking macro f(a) with a=1 2"},
        Fault{"@def string f = {}f",
              "Unexpected EOS after EOS in expression\n    expression: \n    invoking macro f"},
        Fault{"@def int f(int a) = 1 / a\nf(1 - 1)",
              "Division by zero error\n    expression: 1 / 0\n    invoking macro f(a) with a=0"},
        Fault{"@def int f = 1 @fail^(\"x\")\nf", "x\n    invoking macro f"},
        Fault{"@def int f(int n) = @if (n > 1) {f(n - 1)} @else {@fail^(\"x\")}\nf(2)",
              "x\n    invoking macro f(n) with n=1\n    invoking macro f(n) with n=2"}));

// Of a typed argument, the value is shown; of an untyped one, its text.
INSTANTIATE_TEST_SUITE_P(
    ShowsArguments, TypedFault,
    testing::Values(Fault{"@def f(int a, b, string c, char d) = @fail^(\"x\")\nf(1 + 2, 1 + 2, "
                          "\"c\" + \"d\", 65)",
                          "x\n    invoking macro f(a,b,c,d) with a=3, b=1 + 2, c=cd, d='A'"},
                    Fault{"@def f(int a) = {@let a = 7\n@fail^(\"x\")}f(1)",
                          "x\n    invoking macro f(a) with a=7"},
                    Fault{"@nakeddef f(int a) = @fail^(\"x\")\nf(1)",
                          "x\n    invoking macro f(a) with a=1"}));

TEST(TypedFault, LeavesWhatWasWritten) {
    Session session;
    ExpectFault(session, {"@def int f = {1 @fail^(\"x\")}a f", "x\n    invoking macro f"});
    EXPECT_EQ(session.m_output, "a ");
}

}  // namespace
}  // namespace vorn_test
