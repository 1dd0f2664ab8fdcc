#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qzMacroExpander/src/MacroExpander.h"
#include "tests/support/Expand.h"

namespace vorn_test {
namespace {

using namespace vorn;

// The macro of that name in a frame, of which the test knows that it is there.
const LSMacroVariable& Macro(VarFrame& frame, const char* name) {
    const LSVariable* var = frame.Find2(name);
    if (var == nullptr || var->GetType() != LSV_MACRO)
        throw std::logic_error(std::string("no macro ") + name);
    return static_cast<const LSMacroVariable&>(*var);
}

// A dump of the macro m that a definition makes.
std::string Defined(std::string_view definition) {
    Session session;
    session.Expand(definition);
    StringStream os(4096);
    Macro(session.m_frame, "m").WriteToStream(os);
    return Str(os.GetString());
}

// ---- types -------------------------------------------------------------------------------------

TEST(CheckVariableType, KnowsTheKeywordsExactly) {
    const std::pair<const char*, ELSVariable> cases[] = {
        {"bool",    LSV_BOOL  },
        {"int",     LSV_INT   },
        {"double",  LSV_DOUBLE},
        {"char",    LSV_CHAR  },
        {"string",  LSV_STRING},
        {"",        LSV_MACRO },
        {"Int",     LSV_MACRO },
        {"INT",     LSV_MACRO },
        {"integer", LSV_MACRO },
        {"in",      LSV_MACRO },
        {" int",    LSV_MACRO },
        {"\"int\"", LSV_MACRO },
        {"float",   LSV_MACRO },
        {"macro",   LSV_MACRO },
        {"strings", LSV_MACRO },
    };
    for (const auto& [text, type] : cases)
        EXPECT_EQ(CheckVariableType(text), type) << text;
    EXPECT_EQ(CheckVariableType(SubString()), LSV_MACRO);
}

TEST(Definition, MayHaveAReturnType) {
    const std::pair<std::string_view, ELSVariable> cases[] = {
        {"@def m = x",          LSV_MACRO },
        {"@def bool m = x",     LSV_BOOL  },
        {"@def int m = x",      LSV_INT   },
        {"@def double m = x",   LSV_DOUBLE},
        {"@def char m = x",     LSV_CHAR  },
        {"@def string m = x",   LSV_STRING},
        {"@def string m() = x", LSV_STRING},
    };
    for (const auto& [text, type] : cases) {
        Session session;
        EXPECT_EQ(session.Expand(text), "");
        EXPECT_EQ(Macro(session.m_frame, "m").GetReturnType(), type) << text;
    }
}

// ---- flags and frames --------------------------------------------------------------------------

struct Flags {
    std::string_view text;
    bool naked;
    bool isPython;
};

TEST(Definition, HasTheFlagsOfItsDirective) {
    const Flags cases[] = {
        {"@def m = x",       false, false},
        {"@nakeddef m = x",  true,  false},
        {"@defpython m = x", false, true },
    };
    for (const Flags& flags : cases) {
        Session session;
        session.Expand(flags.text);
        const LSMacroVariable& m = Macro(session.m_frame, "m");
        EXPECT_EQ(m.IsNaked(), flags.naked) << flags.text;
        EXPECT_EQ(m.IsPython(), flags.isPython) << flags.text;
        EXPECT_FALSE(m.IsFnArg());
        EXPECT_EQ(m.GetContext(), nullptr);
    }
}

TEST(Definition, WithExportdefIsLikeDefButForItsFrame) {
    Session session;
    VarFrame child(&session.m_frame);
    session.ExpandIn(child, "@exportdef m = x");
    const LSMacroVariable& m = Macro(session.m_frame, "m");
    EXPECT_FALSE(m.IsNaked());
    EXPECT_FALSE(m.IsPython());
    EXPECT_EQ(child.m_localVariables.m_first, nullptr);
}

TEST(Definition, GoesToItsFrame) {
    // Three frames, of which the first is the file's: the one that gets the macro.
    const std::pair<std::string_view, int> cases[] = {
        {"@def m = x",         2},
        {"@nakeddef m = x",    2},
        {"@defpython m = x",   2},
        {"@exportdef m = x",   1},
        {"@def + m = x",       0},
        {"@nakeddef + m = x",  0},
        {"@defpython + m = x", 0},
        {"@exportdef + m = x", 0},
        {"@def+int m = x",     0},
    };
    for (const auto& [text, expected] : cases) {
        Session session;
        VarFrame middle(&session.m_frame);
        VarFrame inner(&middle);
        session.ExpandIn(inner, text);
        VarFrame* const frames[] = {&session.m_frame, &middle, &inner};
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(frames[i]->FindLocal("m", nullptr) != nullptr, i == expected)
                << text << ", frame " << i;
    }
}

TEST(Definition, OfANameAgainHidesTheOlder) {
    Session session;
    EXPECT_EQ(session.Expand("@def m = 1\n@def m = 2\nm"), "2");
    EXPECT_EQ(session.Expand("m @@ @def m = 3\nm"), "2 3");
}

// ---- formal arguments --------------------------------------------------------------------------

TEST(FormalArgument, HasTypeNameAndFunctionMark) {
    Session session;
    session.Expand("@def + int m(a, string b, g(), bool c, double d, char e, int h( )) = { x }");
    const LSMacroVariable& m = Macro(session.m_frame, "m");
    EXPECT_EQ(m.GetReturnType(), LSV_INT);
    const LSFormalArg expected[] = {
        {"a", LSV_MACRO,  false},
        {"b", LSV_STRING, false},
        {"g", LSV_MACRO,  true },
        {"c", LSV_BOOL,   false},
        {"d", LSV_DOUBLE, false},
        {"e", LSV_CHAR,   false},
        {"h", LSV_INT,    true },
    };
    ASSERT_EQ(m.GetNumArgs(), 7);
    for (ssize_t i = 0; i < 7; ++i) {
        EXPECT_EQ(m.GetArg(i).m_name, expected[i].m_name);
        EXPECT_EQ(m.GetArg(i).m_type, expected[i].m_type) << Str(expected[i].m_name);
        EXPECT_EQ(m.GetArg(i).m_isFnArg, expected[i].m_isFnArg) << Str(expected[i].m_name);
    }
}

TEST(FormalArgument, ListMayBeEmptyOrAbsent) {
    for (const std::string_view text :
         {"@def m = y", "@def m() = y", "@def m ( /* none */ ) = y"}) {
        Session session;
        EXPECT_EQ(session.Expand(text), "");
        EXPECT_EQ(Macro(session.m_frame, "m").GetNumArgs(), 0) << text;
        EXPECT_EQ(session.Expand("m m()"), "y y()") << text;
        EXPECT_EQ(Defined(text), "m = y");
    }
}

TEST(FormalArgument, MayBeNamedLikeADirectiveOrTheMacro) {
    EXPECT_EQ(Defined("@def m(m, def, if, int else, exportdef) = y"),
              "m(m,def,if,else,exportdef) = y");
    EXPECT_EQ(Expand("@def m(m) = <m>\nm(1)"), "<1>");
    EXPECT_EQ(Expand("@def m(def) = <def>\nm(1)"), "<1>");
}

TEST(FormalArgument, MayBeNamedLikeATypeBehindAType) {
    Session session;
    session.Expand("@def string int(int char, a) = y");
    const LSMacroVariable& m = Macro(session.m_frame, "int");
    EXPECT_EQ(m.GetReturnType(), LSV_STRING);
    EXPECT_EQ(m.GetArg(0).m_name, "char");
    EXPECT_EQ(m.GetArg(0).m_type, LSV_INT);
}

TEST(FormalArgument, MayStandApartFromWhatIsAroundIt) {
    EXPECT_EQ(Defined("@def // x\n + /* y */ int\n m\n(\n a // z\n ,\tb ( ) ) \n = body"),
              "m(a,b) = body");
}

// ---- bodies ------------------------------------------------------------------------------------

struct Body {
    std::string_view text;  // behind "@def m ="
    std::string_view body;
    ssize_t indent;
    std::string_view output;  // what remains
};

TEST(Definition, ReadsABodyOfAnyForm) {
    const Body cases[] = {
        {" x",                             "x",                   0, ""     },
        {"x  // note",                     "x  // note",          0, ""     },
        {" x { y \nz",                     "x { y ",              0, "z"    },
        {" x\r\nz",                        "x",                   0, "\r\nz"},
        {" { x } z",                       " x ",                 0, "z"    },
        {" {}z",                           "",                    0, "z"    },
        {" { a { b } c }\nz",              " a { b } c ",         0, "z"    },
        {" {\n    a\n  b\n} z",            "    a\n  b\n",        0, "z"    },
        {" {\r\n    a\r\n}\nz",            "    a\r\n",           0, "z"    },
        {" { '}' \"}\" /* } */ }z",        " '}' \"}\" /* } */ ", 0, "z"    },
        {" { // }\n }z",                   " // }\n ",            0, "z"    },
        {"\n{\n    a\n      b\n}\nz",      "a\n      b",          4, "z"    },
        {" \t\n\n // x\n {\n\t  a\n }\nz", "a",                   6, "z"    },
        {"\n{   \n  a\n}z",                "a",                   2, "z"    },
        {"\n{ a\n}z",                      "a",                   0, "z"    },
        {"\r\n{\r\n  a\r\n}z",             "a",                   2, "z"    },
    };
    for (const Body& c : cases) {
        Session session;
        EXPECT_EQ(session.Expand("@def m =" + std::string(c.text)), c.output) << c.text;
        const LSMacroVariable& m = Macro(session.m_frame, "m");
        EXPECT_EQ(Str(m.GetSubstitutionString()), c.body) << c.text;
        EXPECT_EQ(m.GetIndent(), c.indent) << c.text;
    }
}

TEST(Definition, BorrowsNamesAndBody) {
    Session session;
    session.Expand("@def m(a) = body");
    const char* text = session.LastText().m_p1;
    const LSMacroVariable& m = Macro(session.m_frame, "m");
    EXPECT_EQ(m.m_name.m_p1, text + 5);
    EXPECT_EQ(m.GetArg(0).m_name.m_p1, text + 7);
    EXPECT_EQ(m.GetSubstitutionString().m_p1, text + 12);
    EXPECT_EQ(m.m_keptText, nullptr) << "the text is the host's";
}

TEST(Definition, ExpandsNothing) {
    Session session;
    session.Expand("@def a = 1\n@def m = a @NOSUCH @fail(\"x\")\n@def a = 2\n");
    EXPECT_EQ(Str(Macro(session.m_frame, "m").GetSubstitutionString()), "a @NOSUCH @fail(\"x\")");
}

TEST(Definition, MayDefineFurtherMacrosWhenUsed) {
    EXPECT_EQ(Expand("@def m = { @exportdef n = 1 }\n<m><n>"), "<><1 >");
}

// ---- the place in the text ---------------------------------------------------------------------

TEST(Definition, LeavesNothingOfItsLines) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"a\n@def m = x\nb",            "a\nb"  },
        {"a\n  @def m = x\nb",          "a\nb"  },
        {"a\n@def m = x\n\n\nb",        "a\nb"  },
        {"a\n@def m = x\n \n\t\n  b",   "a\n  b"},
        {"a\n@def m = { x }  \n\nb",    "a\nb"  },
        {"a\n@def m =\n{\n  x\n}\n\nb", "a\nb"  },
        {"a @def m = x\nb",             "ab"    },
        {"a\t @def m = { x } b",        "ab"    },
        {"@def m = x",                  ""      },
        {"@def m = x\n",                ""      },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(Definition, TakesTheIndentationOfTheNextLine) {
    EXPECT_EQ(Expand("a\n    @def m = x\n\n\n    b", 4), "a\nb");
    EXPECT_EQ(Expand("a\n    @def m = x\n      b", 4, 2), "  a\n    b");
    EXPECT_EQ(Expand("a @def m = x\n    b", 4), "ab");
}

// ---- errors ------------------------------------------------------------------------------------

void ExpectFault(std::string_view text, const char* message, ssize_t offset) {
    Session session;
    EXPECT_EQ(session.ExpandError(text), (LexError{message, offset})) << text;
    EXPECT_EQ(session.m_frame.m_localVariables.m_first, nullptr) << "the frame is as it was";
}

TEST(DefinitionError, OfTheName) {
    ExpectFault("@def", "Identifier expected for macro name when read EOS", 4);
    ExpectFault("@def 1 = x", "Identifier expected for macro name when read 1", 5);
    ExpectFault("@def + \"m\" = x", "Identifier expected for macro name when read \"m\"", 7);
    ExpectFault("@def ++ m = x", "Identifier expected for macro name when read ++", 5);
    ExpectFault("@def + + m = x", "Identifier expected for macro name when read +", 7);
    ExpectFault("@def int = 5", "Identifier expected for macro name when read =", 9);
    ExpectFault("@def int (a) = 5", "Identifier expected for macro name when read (", 9);
    ExpectFault("@def int + m = 5", "Identifier expected for macro name when read +", 9);
    ExpectFault("@def @//x\n m = 5", "Identifier expected for macro name when read @//x", 5);
}

TEST(DefinitionError, BehindTheName) {
    ExpectFault("@def m", "= or ( expected for definition of macro m when read EOS", 6);
    ExpectFault("@def m x", "= or ( expected for definition of macro m when read x", 7);
    ExpectFault("@def m == x", "= or ( expected for definition of macro m when read ==", 7);
    ExpectFault("@def int m[", "= or ( expected for definition of macro m when read [", 10);
}

TEST(DefinitionError, OfAFormalArgument) {
    ExpectFault("@def m(", "Read EOS while trying to read argument for definition of macro m", 7);
    ExpectFault("@def m(,a) = x", "Read , while trying to read argument for definition of macro m",
                7);
    ExpectFault("@def m(a,) = x", "Read ) while trying to read argument for definition of macro m",
                9);
    ExpectFault("@def m(a,,b) = x",
                "Read , while trying to read argument for definition of macro m", 9);
    ExpectFault("@def m(int) = x", "Read ) while trying to read argument for definition of macro m",
                10);
    ExpectFault("@def m(int 1) = x",
                "Read 1 while trying to read argument for definition of macro m", 11);
    ExpectFault("@def m(a,b,a) = x", "Repeated argument a in definition of macro m", 11);
    ExpectFault("@def m(a, int a) = x", "Repeated argument a in definition of macro m", 14);
    ExpectFault("@def m(a(), a) = x", "Repeated argument a in definition of macro m", 12);
    ExpectFault("@def m(false) = x", "Invalid formal argument 'false' in definition of macro m", 7);
    ExpectFault("@def m(a, bool true) = x",
                "Invalid formal argument 'true' in definition of macro m", 15);
    ExpectFault("@def m(g(", "Expected ) when read EOS", 9);
    ExpectFault("@def m(g(x)) = x", "Expected ) when read x", 9);
    ExpectFault("@def m(g(()) = x", "Expected ) when read (", 9);
}

TEST(DefinitionError, BehindAFormalArgument) {
    ExpectFault("@def m(a",
                "Comma or right parenthesis expected when read EOS\n"
                "while reading argument list for definition of macro m",
                8);
    ExpectFault("@def m(a b) = x",
                "Comma or right parenthesis expected when read b\n"
                "while reading argument list for definition of macro m",
                9);
    ExpectFault("@def m(g()()) = x",
                "Comma or right parenthesis expected when read (\n"
                "while reading argument list for definition of macro m",
                10);
    ExpectFault("@def m(a] = x",
                "Comma or right parenthesis expected when read ]\n"
                "while reading argument list for definition of macro m",
                8);
}

TEST(DefinitionError, OfTheEqualSign) {
    ExpectFault("@def m()", "= expected in definition of macro m when read EOS", 8);
    ExpectFault("@def m(a) x", "= expected in definition of macro m when read x", 10);
    ExpectFault("@def m(a) := x", "= expected in definition of macro m when read :", 10);
    ExpectFault("@def m(a) == x", "= expected in definition of macro m when read ==", 10);
}

TEST(DefinitionError, OfTheBodyIsThatOfItsScanner) {
    ExpectFault("@def m =", "Expected { when read EOS", 8);
    ExpectFault("@def m =  ", "Expected { when read EOS", 10);
    ExpectFault("@def m = {", "Met EOS before closing }", 10);
    ExpectFault("@def m = { x", "Met EOS while reading bracketted string", 12);
    ExpectFault("@def m =\n", "Expected { when read EOS", 9);
    ExpectFault("@def m =\nx", "Expected { when read x", 9);
    ExpectFault("@def m =\n{\n x", "Met EOS before closing }", 13);
    ExpectFault("@def m = \x01", "Bad token \x01", 9);
    ExpectFault("@def m = { ' }", "Met EOS within single quoted string after reading ' }", 14);
}

TEST(DefinitionError, OfAMissingFrameComesBehindTheBody) {
    Session session;
    VarFrame root(nullptr);
    VarFrame child(&root);
    EXPECT_EQ(session.ExpandErrorIn(child, "@def + m = x"), (LexError{"No filescope frame", 7}));
    EXPECT_EQ(session.ExpandErrorIn(child, "@exportdef + m = x"),
              (LexError{"No filescope frame", 13}));
    EXPECT_EQ(session.ExpandErrorIn(root, "@exportdef m = x"), (LexError{"No parent frame", 11}));
    EXPECT_EQ(session.ExpandError("@exportdef int m(a) = x"), (LexError{"No parent frame", 15}))
        << "the frame of a file has no parent";
    EXPECT_EQ(session.ExpandErrorIn(root, "@exportdef m = {").description,
              "Met EOS before closing }")
        << "the body is read first";
    EXPECT_EQ(child.m_localVariables.m_first, nullptr);
    EXPECT_EQ(root.m_localVariables.m_first, nullptr);
}

TEST(DefinitionError, LeavesAnOlderDefinition) {
    Session session;
    session.Expand("@def m = 1\n");
    EXPECT_EQ(session.ExpandError("@def m(").description,
              "Read EOS while trying to read argument for definition of macro m");
    EXPECT_EQ(session.Expand("m"), "1");
}

// ---- reading "=" -------------------------------------------------------------------------------

class ReadEquals : public testing::Test {
protected:
    FileScopeVarFrame frame;
    StringStream os{4096};
    ExpandedOutput output{os};

    MacroExpander Make(const char* text) {
        return MacroExpander(nullptr, &frame, text, 0, 0, output);
    }
};

TEST_F(ReadEquals, ReadsAnEqualSign) {
    MacroExpander expander = Make(" /* x */ = rest");
    expander.ReadEqualsForVariableDefn("v");
    EXPECT_EQ(expander.m_str, " rest");
}

TEST_F(ReadEquals, WithAColonSaysWhetherThereIsOne) {
    const std::pair<const char*, bool> cases[] = {
        {"= rest",            false},
        {":= rest",           true },
        {": = rest",          true },
        {":\n/* x */ = rest", true }
    };
    for (const auto& [text, colon] : cases) {
        MacroExpander expander = Make(text);
        EXPECT_EQ(expander.ReadEqualsForVariableDefn2("v"), colon) << text;
        EXPECT_EQ(expander.m_str, " rest");
    }
}

TEST_F(ReadEquals, OfAnythingElseIsAnError) {
    struct {
        const char* text;
        LexError error;
    } const cases[] = {
        {"",    {"= expected in definition of macro v when read EOS", 0}},
        {"x",   {"= expected in definition of macro v when read x", 0}  },
        {" ==", {"= expected in definition of macro v when read ==", 1} },
        {"::=", {"= expected in definition of macro v when read ::", 0} },
    };
    for (const auto& [text, error] : cases) {
        MacroExpander expander = Make(text);
        EXPECT_EQ(LexErrorOf(text, [&] { expander.ReadEqualsForVariableDefn("v"); }), error);
        MacroExpander expander2 = Make(text);
        EXPECT_EQ(LexErrorOf(text, [&] { expander2.ReadEqualsForVariableDefn2("v"); }), error);
    }
    MacroExpander withoutColon = Make(":=");
    EXPECT_EQ(LexErrorOf(withoutColon.m_origStr.m_p1,
                         [&] { withoutColon.ReadEqualsForVariableDefn("v"); }),
              (LexError{"= expected in definition of macro v when read :", 0}));
    for (const char* text : {":", ": :=", ":x"}) {
        MacroExpander expander = Make(text);
        EXPECT_EQ(LexErrorOf(text, [&] { expander.ReadEqualsForVariableDefn2("v"); }).offset,
                  text[1] == ' ' ? 2 : 1)
            << text;
    }
}

}  // namespace
}  // namespace vorn_test
