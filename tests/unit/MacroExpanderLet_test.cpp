#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/src/MacroExpander.h"
#include "tests/support/Faults.h"

namespace vorn_test {
namespace {

using namespace vorn;
using Texts = std::vector<std::string>;

class Let : public testing::TestWithParam<Expansion> {};

TEST_P(Let, Expands) {
    EXPECT_EQ(Expand(GetParam().text), GetParam().output);
}

// The value variable of that name in a frame, of which the test knows that it is there.
const LSValueVariable& Value(VarFrame& frame, const char* name) {
    const LSVariable* var = frame.Find2(name);
    if (var == nullptr || var->GetType() == LSV_MACRO)
        throw std::logic_error(std::string("no value ") + name);
    return static_cast<const LSValueVariable&>(*var);
}

// ---- what is stored ----------------------------------------------------------------------------

struct Stored {
    std::string_view value;
    ELSVariable type;
    std::string_view text;
};

TEST(Let, StoresTheTextOfTheValueByItsType) {
    const Stored cases[] = {
        {"bool v = 1 < 2",               LSV_BOOL,   "true"         },
        {"bool v = !true",               LSV_BOOL,   "false"        },
        {"int v = 1+2",                  LSV_INT,    "3"            },
        {"int v = -2147483647 - 1",      LSV_INT,    "-2147483648"  },
        {"int v = 0x10",                 LSV_INT,    "16"           },
        {"int v = int(\"A\"[0])",        LSV_INT,    "65"           },
        {"double v = 1",                 LSV_DOUBLE, "1.0"          },
        {"double v = 1 / 4.0",           LSV_DOUBLE, "0.25"         },
        {"double v = 1e100",             LSV_DOUBLE, "1e+100"       },
        {"char v = 'x'",                 LSV_CHAR,   "'x'"          },
        {"char v = \"x\"",               LSV_CHAR,   "'x'"          },
        {"char v = 39",                  LSV_CHAR,   "'\\''"        },
        {"char v = \"a\\nb\"[1]",        LSV_CHAR,   "'\\n'"        },
        {"string v = \"a\" + 'b'",       LSV_STRING, "ab"           },
        {"string v = \"\"",              LSV_STRING, ""             },
        {"string v = \"a\\n\\\"b\\\"\"", LSV_STRING, "a\n\"b\""     },
        {"string v = \"ab\"[1]",         LSV_STRING, "b"            },
        {"string v := a  \"b\" + 1 ",    LSV_STRING, "a  \"b\" + 1 "},
        {"string v := { a }",            LSV_STRING, " a "          },
        {"string v := {}",               LSV_STRING, ""             },
    };
    for (const auto& [value, type, text] : cases) {
        Session session;
        EXPECT_EQ(session.Expand("@let " + std::string(value)), "") << value;
        EXPECT_EQ(Value(session.m_frame, "v").GetType(), type) << value;
        EXPECT_EQ(Str(Value(session.m_frame, "v").m_value), text) << value;
        EXPECT_EQ(session.Expand("v"), text) << value;
    }
}

TEST(Let, TakesTheNameAsAViewOfTheText) {
    Session session;
    session.Expand("@let int v = 1");
    EXPECT_EQ(Value(session.m_frame, "v").m_name.m_p1, session.LastText().m_p1 + 9);
}

TEST(Let, ChangesTheValueInPlaceAndNeverTheType) {
    Session session;
    session.Expand("@let double v = 1\n@let char c = 'a'\n");
    const LSValueVariable* v = &Value(session.m_frame, "v");
    session.Expand("@let v = 2\n@let c = 'b'\n");
    EXPECT_EQ(&Value(session.m_frame, "v"), v);
    EXPECT_EQ(v->GetType(), LSV_DOUBLE);
    EXPECT_EQ(session.Expand("v c"), "2.0 'b'");
}

INSTANTIATE_TEST_SUITE_P(
    ComputesTheValueOnce, Let,
    testing::Values(Expansion{"@def m = 1\n@let int v = m + m\n@def m = 2\nv m", "2 2"},
                    Expansion{"@def m = 1\n@let string s := m\n@def m = 2\ns m", "1 2"},
                    Expansion{"@def m = 1\n@let string s = \"m\"\ns", "m"},
                    Expansion{"@def m = 1\n@let string s := @quote(m)\ns @[s]", "m 1"},
                    Expansion{"@def m(a) = a + 1\n@let int v = m(1)\nv", "2"},
                    Expansion{"@let int v = @if (true) {1} @else {2}\nv", "1"},
                    Expansion{"@let int v = 1\n@let int w = v\n@let v = 2\nv w", "2 1"},
                    Expansion{"@let int v = 1\n@let v = v + 1\n@let v = v + v\nv", "4"}));

INSTANTIATE_TEST_SUITE_P(ReadsTheRestOfTheLineOrABlock, Let,
                         testing::Values(Expansion{"@let int v = {1 +\n2}v", "3"},
                                         Expansion{"@let int v =\n{\n1 +\n2\n}v", "3"},
                                         Expansion{"@let int v = {1} x v", "x 1"},
                                         Expansion{"@let int v = 1 @let int w = 2\nv w", "1 w"},
                                         Expansion{"@let int v = 1 // one\r\nx v", "\r\nx 1"},
                                         Expansion{"@let string s := a \r\nx s", "\r\nx a "},
                                         Expansion{"@let string s := {a\n  b}\ns", "a\n  b"},
                                         Expansion{"@let string s :=\n  {\n    a\n      b\n  }\ns",
                                                   "a\n      b"},
                                         Expansion{"  @let string s := {a\n  b}\nc s", "c a\n  b"},
                                         Expansion{"@let string s : /* apart */ = a\ns", "a"}));

// ---- what is left in the output ----------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(LeavesNothing, Let,
                         testing::Values(Expansion{"a\n  @let int v = 1\n\n\n  b", "a\n  b"},
                                         Expansion{"a @let int v = {1} b", "ab"},
                                         Expansion{"a @let int v = 1\n  b", "a  b"},
                                         Expansion{"@let string s := {a}\n\n  s", "  a"},
                                         Expansion{"@let int v = {1}\n@let v = {2}\nv", "2"}));

TEST(Let, TakesOffTheSourceIndentationOfTheNextLine) {
    Session session;
    EXPECT_EQ(session.Expand("a\n  @let int v = 1\n    v", 2, 3), "   a\n     1");
    EXPECT_EQ(session.Pieces(), (Texts{"indentation 3", "verbatim a", "verbatim \n",
                                       "indentation 3", "verbatim   ", "calculated v 1"}));
}

// ---- frames ------------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    KeepsToItsFrame, Let,
    testing::Values(Expansion{"@let int v = 1\n@scope {@let int v = 2\nv}v", "21"},
                    Expansion{"@let int v = 1\n@scope {@let v = 2\nv}v", "22"},
                    Expansion{"@let int v = 1\n@scope {@let string v = \"a\"\nv}v", "a1"},
                    Expansion{"@scope {@let int v = 1\n}v", "v"},
                    Expansion{"@def m = @let int v = 1\nm v", " v"},
                    Expansion{"@nakeddef m = @let int v = 1\nm v", " 1"},
                    Expansion{"@let int v = 1\n@def m = @let v = 2\nm v", " 2"},
                    // The value can refer to the variable that the new one is going to hide.
                    Expansion{"@let int v = 1\n@scope {@let int v = v + 1\nv}v", "21"},
                    Expansion{"@scope {@let string v := v\nv}", "v"},
                    // A macro of an outer frame can be hidden.
                    Expansion{"@def m = 1\n@scope {@let int m = 2\nm}m", "21"}));

INSTANTIATE_TEST_SUITE_P(
    KeepsWhatTheValueDefines, Let,
    testing::Values(Expansion{"@let int v = 1 @def m = 2\nv m", "1 m"},
                    Expansion{"@let int v = 1 @exportdef m = 2\nv m", "1 2"},
                    Expansion{"@let int v = 1\n@let v = 3 @exportdef m = 2\nv m", "3 2"},
                    Expansion{"@let string s := a @exportdef m = 2\ns m", "a 2"},
                    Expansion{"@scope {@let string s := a @def + m = 2\ns}m", "a2"}));

INSTANTIATE_TEST_SUITE_P(AcceptsOddNames, Let,
                         testing::Values(Expansion{"@let int int = 1\nint", "1"},
                                         Expansion{"@let string let := a\nlet", "a"},
                                         Expansion{"@let bool true = false\ntrue", "false"}));

// What the value defines, and the name of the variable itself, lie in the text of the directive,
// which has to live as long as they do where it was put together during expansion.
INSTANTIATE_TEST_SUITE_P(
    KeepsTheTextsOfDefinitions, Let,
    testing::Values(
        Expansion{"@[@quote(@let int v = 1 @def + m = hello)]m", "hello"},
        Expansion{"@[@quote(@let string s := @def + m = hello)]m", "hello"},
        Expansion{"@let int v = 1\n@for(x in [@quote(@let v = 2 @def + m = hello)]) {x}v m",
                  "2 hello"},
        Expansion{"@let string s = \"\"\n@for(x in [@quote(@let s := a @def + m = hello)]) {x}s m",
                  "a hello"},
        // The call of a function that is an argument is a text of its own, in the caller's frame.
        Expansion{"@def f(g()) = g(1 + 2)\nf(`@let int v = `)v", "3"},
        Expansion{"@def f(g()) = g(@quote(hello))\nf(`@let string s := `)s", "(hello)"}));

// ---- imported names ----------------------------------------------------------------------------

TEST(Let, AssignsToAnImportedVariable) {
    Session imported;
    imported.Expand("@let int v = 1\n");
    Session session;
    session.m_frame.AddImport(&imported.m_frame);
    EXPECT_EQ(session.Expand("@let v = 2\nv"), "2");
    EXPECT_EQ(imported.Expand("v"), "2");
}

TEST(Let, DeclaresNoNameThatTheFrameImports) {
    Session imported;
    imported.Expand("@let int v = 1\n@def m = 1\n");
    Session session;
    session.m_frame.AddImport(&imported.m_frame);
    ExpectFault(session, {"@let int ^v = 2", "Redefinition of variable v in this scope"});
    ExpectFault(session, {"@let int ^m = 2", "Redefinition of variable m in this scope"});
    EXPECT_EQ(session.Expand("@scope {@let int v = 2\nv}v"), "21");
}

TEST(Let, PassesOnThatANameIsAmbiguous) {
    Session imported[2];
    Session session;
    for (Session& each : imported) {
        each.Expand("@let int v = 1\n");
        session.m_frame.AddImport(&each.m_frame);
    }
    ExpectFault(session, {"@let v^ = 2", "Ambiguous macro name : v"});
    ExpectFault(session, {"@let int v^ = 2", "Ambiguous macro name : v"});
}

// ---- what nested texts may not do --------------------------------------------------------------

TEST(Let, HandsOnNoImportHandler) {
    MemoryFiles files;
    files.m_files["f"] = "@def m = 1";
    Session session;
    session.m_importHandler = &files;
    ExpectFault(session, {"@let int v = @^import \"f\"", "@import statement not allowed here"});
    ExpectFault(session, {"@let string s := @^import \"f\"", "@import statement not allowed here"});
    EXPECT_EQ(session.Expand("@let string s := @$X\ns"), "@$X");
}

// ---- errors ------------------------------------------------------------------------------------

// The texts run in a file scope with int i = 1, string s := one, and a macro m.
class LetFault : public testing::TestWithParam<Fault> {
protected:
    Session session;

    LetFault() { session.Expand("@let int i = 1\n@let string s := one\n@def m = 1\n"); }
};

TEST_P(LetFault, ChangesNothing) {
    ExpectFault(session, GetParam());
    EXPECT_EQ(session.m_output, "");
    EXPECT_EQ(session.Expand("i s m v"), "1 one 1 v");
}

INSTANTIATE_TEST_SUITE_P(
    OfAnAssignment, LetFault,
    testing::Values(
        Fault{"@let ^1 = 2", "Identifier expected after @let when read 1"},
        Fault{"@let ^= 2", "Identifier expected after @let when read ="},
        Fault{"@let^", "Identifier expected after @let when read EOS"},
        Fault{"@let ^v = 2", "@let directive failed : there is no variable named v"},
        Fault{"@let ^Int = 2", "@let directive failed : there is no variable named Int"},
        Fault{"@let ^m = 2", "@let directive failed : m is a macro declared using @def"},
        Fault{"@for(x in [1]) {@let ^x = 2\n}",
              "@let directive failed : x is a macro declared using @def\n"
              "    in @for directive when x = 1"},
        Fault{"@def f(a) = @let ^a = 2\nf(i)",
              "@let directive failed : a is a macro declared using @def\n"
              "    invoking macro f(a) with a=i"},
        Fault{"@let i ^2", "= expected in definition of macro i when read 2"},
        Fault{"@let i ^== 2", "= expected in definition of macro i when read =="},
        Fault{"@let i : ^2", "= expected in definition of macro i when read 2"},
        Fault{"@let i ^:: = 2", "= expected in definition of macro i when read ::"},
        Fault{"@let i^", "= expected in definition of macro i when read EOS"},
        Fault{"@let ^i := 2", "@let directive failed: i := may only be used for string type"}));

INSTANTIATE_TEST_SUITE_P(
    OfADeclaration, LetFault,
    testing::Values(
        Fault{"@let int ^= 3", "Identifier expected for macro name when read ="},
        Fault{"@let int^", "Identifier expected for macro name when read EOS"},
        Fault{"@let string ^\"v\" = 3", "Identifier expected for macro name when read \"v\""},
        Fault{"@let int ^i = 3", "Redefinition of variable i in this scope"},
        Fault{"@let int ^m = 3", "Redefinition of variable m in this scope"},
        Fault{"@let int v ^3", "= expected in definition of macro v when read 3"},
        Fault{"@let int ^v := 1", "@let directive failed: v := may only be used for string type"},
        Fault{"@let bool ^v := true",
              "@let directive failed: v := may only be used for string type"}));

// The value is read before the := is looked at.
INSTANTIATE_TEST_SUITE_P(
    OfTheTextOfTheValue, LetFault,
    testing::Values(Fault{"@let int v := {^", "Met EOS before closing }"},
                    Fault{"@let i := {1^", "Met EOS while reading bracketted string"},
                    Fault{"@let int v =^", "Expected { when read EOS"},
                    Fault{"@let i =\n^2", "Expected { when read 2"},
                    Fault{"@let s := '^", "Met EOS within single quoted string"}));

INSTANTIATE_TEST_SUITE_P(
    OfTheExpansionOfTheValue, LetFault,
    testing::Values(Fault{"@let int v = @fail^(\"x\")", "x"},
                    Fault{"@let i = 2 @fail^(\"x\")",
                          "x\n    when parsing expression '2 @fail(\"x\")' for @let directive"},
                    Fault{"@let string v := @fail^(\"x\")", "x"},
                    Fault{"@let s := two @fail^(\"x\")", "x"}));

// An error of the parser lies in the expanded text, which is gone. Only an assignment shows the
// text as written, too.
INSTANTIATE_TEST_SUITE_P(
    OfTheExpression, LetFault,
    testing::Values(
        Fault{"@let string v = 1",
              "No implicit conversion from int64 to string\n    expression: 1"},
        Fault{"@let string v = text",
              "Unexpected text after EOS in expression\n    expression: text"},
        Fault{"@let int v = i +", "Unexpected EOS after + in expression\n    expression: 1 +"},
        Fault{"@let bool v = i", "No implicit conversion from int64 to bool\n    expression: 1"},
        Fault{"@let double v = true",
              "No implicit conversion from bool to float64\n    expression: true"},
        Fault{"@let char v = \"ab\"",
              "No implicit conversion from value ab to char\n    expression: \"ab\""},
        Fault{"@let int v = 2147483648",
              "No implicit conversion from value 2147483648 to int32\n    expression: 2147483648"},
        Fault{"@let int v = 1 i", "Read 1 in middle of expression\n    expression: 1 1"},

        Fault{"@let i = \"EOS\" +",
              "Unexpected EOS after + in expression\n    expression: \"EOS\" +\n"
              "    when parsing expression '\"EOS\" +' for @let directive"},
        Fault{"@let s = i", "No implicit conversion from int64 to string\n    expression: 1\n"
                            "    when parsing expression 'i' for @let directive"}));

TEST_F(LetFault, LeavesTheValueOfWhatCouldBeRead) {
    ExpectFault(session, {"@let i = m + m 5", "Read 5 in middle of expression\n"
                                              "    expression: 1 + 1 5\n"
                                              "    when parsing expression 'm + m 5' for @let "
                                              "directive"});
    EXPECT_EQ(session.Expand("i"), "2");
    EXPECT_EQ(session.Expand("@assertfails(@let i = 7 i)i"), "7");
    EXPECT_EQ(session.Expand("@assertfails(@let int v = 7 i)v"), "v");
}

// ---- ReadVariableValueByParsingExpression ------------------------------------------------------

TEST(ReadVariableValueByParsingExpression, GivesTheTextOfTheValue) {
    Session session;
    session.Expand("@def m = 2 *\n");
    xstring value;
    const HeapText text("m 3");
    ReadVariableValueByParsingExpression(&session.m_frame, text.View(), LSV_DOUBLE, value);
    EXPECT_EQ(Str(value), "6.0");
}

TEST(ReadVariableValueByParsingExpression, ComputesNothingForOtherTypes) {
    FileScopeVarFrame frame;
    for (const ELSVariable type : {LSV_UNDEF, LSV_MACRO}) {
        xstring value("old");
        ReadVariableValueByParsingExpression(&frame, " /* nothing */ ", type, value);
        EXPECT_EQ(Str(value), "old");
        const char* text = "1";
        EXPECT_EQ(
            LexErrorOf(text,
                       [&] { ReadVariableValueByParsingExpression(&frame, text, type, value); })
                .description,
            "Read 1 in middle of expression\n    expression: 1");
        EXPECT_EQ(Str(value), "old");
    }
}

TEST(ReadVariableValueByParsingExpression, DefinesInATemporaryFrameBelow) {
    Session session;
    xstring value;
    const HeapText text("1 @def m = 2\n@exportdef n = 3\n");
    ReadVariableValueByParsingExpression(&session.m_frame, text.View(), LSV_INT, value);
    EXPECT_EQ(session.Expand("m n"), "m 3");
}

}  // namespace
}  // namespace vorn_test
