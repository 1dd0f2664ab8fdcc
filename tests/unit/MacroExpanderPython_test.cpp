#include <gmock/gmock.h>

#include "tests/support/Expand.h"
#include "tests/support/Python.h"

namespace vorn {
namespace {

using namespace std::string_literals;
using namespace vorn_test;

const LexError s_noError{"(no error)", -1};

class MacroExpanderPython : public PythonTest {
protected:
    Session m_session;

    std::string Expand(std::string_view text) { return m_session.Expand(text); }
    LexError ExpandError(std::string_view text) { return m_session.ExpandError(text); }
};

// ---- when Python runs --------------------------------------------------------------------------

TEST_F(MacroExpanderPython, StartsNothingInATextThatUsesNoPython) {
    EXPECT_EQ(Expand("@def m(a) = <a>\n@defpython p() = 1\n@let int i = 2\n"
                     "m(x) @(1 + 1) @if (i == 2) {yes} @quote(@runpython x = 1)"),
              "<x> 2 yes @runpython x = 1");
    EXPECT_FALSE(PythonIsRunning());
}

TEST_F(MacroExpanderPython, StartsNothingForABlockThatExpandsToNothing) {
    for (const char* block :
         {"@runpython {}", "@runpython\n{\n}", "@def nothing = {}\n@runpython nothing",
          "@runpython {@// a note\n}"}) {
        EXPECT_EQ(Expand(block), "") << block;
        EXPECT_FALSE(PythonIsRunning()) << block;
    }
}

TEST_F(MacroExpanderPython, RunsABlockOfWhiteSpace) {
    EXPECT_EQ(Expand("@runpython {  \n\t\n }"), "");
    EXPECT_TRUE(PythonIsRunning());
}

TEST_F(MacroExpanderPython, StartsWithTheFirstBlock) {
    EXPECT_EQ(Expand("@runpython x = 1\n"), "");
    EXPECT_TRUE(PythonIsRunning());
}

TEST_F(MacroExpanderPython, StartsWithTheFirstCallOfAPythonMacro) {
    EXPECT_EQ(Expand("@defpython p() = 1\n"), "");
    EXPECT_FALSE(PythonIsRunning());
    EXPECT_EQ(Expand("p()"), "1()");
    EXPECT_TRUE(PythonIsRunning());
}

// ---- blocks ------------------------------------------------------------------------------------

// In each form of a block the code starts in column 0, and what is indented further stays so.
TEST_F(MacroExpanderPython, RunsABlockAsIfItStoodInColumnZero) {
    const std::string_view s_blocks[] = {
        // The bracket on the directive's line.
        "@runpython {x = 1\nif x:\n  y = 2\n}",
        "@runpython {\nx = 1\nif x:\n  y = 2\n}",
        "@runpython { # a comment stands in the first line\nx = 1\nif x:\n\ty = 2 }",
        "@runpython {\r\nx = 1\r\nif x:\r\n  y = 2\r\n}",
        // The rest of the line.
        "@runpython x = 1; y = 2",
        "  @runpython \t x = 1; y = 2\n",
        // The bracket on a later line.
        "@runpython\n{\nx = 1\nif x:\n  y = 2\n}",
        "@runpython\n\n  {\n    x = 1\n    if x:\n      y = 2\n  }",
        "@runpython\n{\n\tx = 1\n\tif x:\n\t\ty = 2\n}",
        "@runpython\n{\n    x = 1\n\tif x:\n\t  y = 2\n}",
        "@runpython\n{\n\t  x = 1\n      if x:\n\t   y = 2\n}",
        "@runpython\n{   x = 1\nif x:\n  y = 2\n}",
        "@runpython\n// a note\n{\n  x = 1\n  if x:\n\n    y = 2\n}",
        "@runpython\n{\n    x = 1\n# a line with less loses what it has\n    if x:\n      y = 2\n}",
    };
    for (const std::string_view block : s_blocks) {
        UninitPython();
        EXPECT_EQ(ExpandError(block), s_noError) << block;
        EXPECT_EQ(m_session.m_output, "") << block;
        EXPECT_EQ(Eval("[x, y]"), "[1,2]") << block;
    }
}

TEST_F(MacroExpanderPython, LeavesTheIndentationOfABlockThatOpensAtTheLinesEnd) {
    EXPECT_EQ(ExpandError("@runpython {\n  x = 1\n}"),
              (LexError{"Python compilation error:   File \"\", line 1\n"
                        "    x = 1\n    ^\n"
                        "IndentationError: unexpected indent\n"
                        "\n    in @runpython()\n  x = 1\n",
                        0}));
}

TEST_F(MacroExpanderPython, LosesTheLastByteInFrontOfABracketOnTheSameLine) {
    EXPECT_EQ(Expand("@runpython\n{\n  x = 123 }"), "");
    EXPECT_EQ(Eval("x"), "12");
}

TEST_F(MacroExpanderPython, RefusesABlockThatDoesNotScan) {
    EXPECT_EQ(ExpandError("@runpython"), (LexError{"Expected { when read EOS", 10}));
    EXPECT_EQ(ExpandError("@runpython\nx = 1"), (LexError{"Expected { when read x", 11}));
    EXPECT_EQ(ExpandError("@runpython {x = 1"),
              (LexError{"Met EOS while reading bracketted string", 17}));
    EXPECT_EQ(ExpandError("@runpython\n{x = 1"), (LexError{"Met EOS before closing }", 17}));
    EXPECT_FALSE(PythonIsRunning());
}

TEST_F(MacroExpanderPython, ExpandsABlockBeforePythonSeesIt) {
    EXPECT_EQ(Expand("@def name = x\n@def twice(a) = 2 * (a)\n@let int three = 3\n"
                     "@runpython name = twice(three) + @(1 + 1)\n"),
              "");
    EXPECT_EQ(Eval("x"), "8");
    EXPECT_EQ(Eval("'name' in globals()"), "0");
}

TEST_F(MacroExpanderPython, ReindentsWhatMacrosPutIntoABlock) {
    EXPECT_EQ(Expand("@def body =\n{\n  if x:\n    y = 2\n}\n"
                     "@runpython\n{\n    x = 1\n    body\n}\n"),
              "");
    EXPECT_EQ(Eval("[x, y]"), "[1,2]");
}

TEST_F(MacroExpanderPython, DefinesInAScopeOfTheBlock) {
    EXPECT_EQ(Expand("@runpython\n{\n@def m = 5\nx = m\n}\nm"), "m");
    EXPECT_EQ(Eval("x"), "5");
}

TEST_F(MacroExpanderPython, RefusesImportsInABlock) {
    EXPECT_EQ(ExpandError("@runpython { @import \"x\" }"),
              (LexError{"@import statement not allowed here", 14}));
}

// The message shows all of the code, also what Python did not see.
TEST_F(MacroExpanderPython, EndsTheCodeOfABlockAtAZeroByte) {
    EXPECT_EQ(Expand("@runpython {x = 1 # '\0'\ny = 2}"s), "");
    EXPECT_EQ(Eval("[x, 'y' in globals()]"), "[1,0]");
    EXPECT_EQ(ExpandError("@runpython x = '\0'"s),
              (LexError{"Python compilation error:   File \"\", line 1\n"
                        "    x = '\n        ^\n"
                        "SyntaxError: EOL while scanning string literal\n"
                        "\n    in @runpython()\nx = '\0'"s,
                        0}));
    EXPECT_EQ(Expand("@defpython p = 'a' \"\0\" 'b'\n"s), "");
}

TEST_F(MacroExpanderPython, WritesNothingAndRemovesTheStatementsLine) {
    EXPECT_EQ(Expand("a\n  @runpython x = 1\n\n  b"), "a\n  b");
    EXPECT_EQ(Expand("a @runpython {x = 1} b"), "ab");
    EXPECT_EQ(Expand("  @runpython\n  {\n    x = 1\n  }\nb\n"), "b\n");
}

// ---- one namespace -----------------------------------------------------------------------------

TEST_F(MacroExpanderPython, KeepsNamesFromBlockToBlockAndFromTextToText) {
    EXPECT_EQ(Expand("@runpython import math; x = 4\n@runpython y = math.sqrt(x)\n"), "");
    Session other;
    EXPECT_EQ(other.Expand("@runpython z = x + y\n@defpython p = z\np"), "6");
}

TEST_F(MacroExpanderPython, StartsAfreshAfterUninitPython) {
    EXPECT_EQ(Expand("@defpython p = x\n@runpython x = 1\np"), "1");
    UninitPython();
    EXPECT_EQ(ExpandError("p"), (LexError{"Eval python error: Traceback (most recent call last):\n"
                                          "  File \"<string>\", line 1, in <module>\n"
                                          "NameError: name 'x' is not defined\n"
                                          "\n    invoking python macro p",
                                          1}));
    EXPECT_EQ(Expand("@runpython x = 2\np"), "2");
}

// ---- what is printed ---------------------------------------------------------------------------

TEST_F(MacroExpanderPython, PrintsInTurnWithTheMacroLanguage) {
    std::string expansion;
    EXPECT_EQ(StdoutOf([&] {
                  expansion =
                      Expand("@println(1 macro)\n@runpython print '2 block'\n"
                             "@print(3:)\n@runpython sys.stdout.write('4')\n"
                             "@defpython p(t) = say(`t`)\n"
                             "@runpython\n{\n  def say(t):\n    print t\n    return 'said'\n"
                             "}\n"
                             "@println(:5)\np(6) @println(7) p(8)");
              }),
              "1 macro\n2 block\n3:4:5\n6\n7\n8\n");
    EXPECT_EQ(expansion, "saidsaid");
}

TEST_F(MacroExpanderPython, HasPrintedWhatCameBeforeAFailure) {
    LexError error{"", 0};
    EXPECT_EQ(StdoutOf([&] {
                  error = ExpandError("@println(1)\n@runpython {\nprint '2'\nnothing\n}\n"
                                      "@println(3)");
              }),
              "1\n2\n");
    EXPECT_EQ(error, (LexError{"RunPython error: Traceback (most recent call last):\n"
                               "  File \"\", line 2, in <module>\n    \n"
                               "NameError: name 'nothing' is not defined\n"
                               "\n    in @runpython()\nprint '2'\nnothing\n",
                               12}));
}

TEST_F(MacroExpanderPython, SwallowsWhatIsWrittenToStandardError) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(
        StdoutOf([&] { EXPECT_EQ(Expand("@runpython print >>sys.stderr, 'unseen'\n-"), "-"); }),
        "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(ExpandError("@runpython raise KeyError(1)").description,
              "RunPython error: Traceback (most recent call last):\n"
              "  File \"\", line 1, in <module>\n    \nKeyError: 1\n"
              "\n    in @runpython()\nraise KeyError(1)");
}

// ---- errors of blocks --------------------------------------------------------------------------

TEST_F(MacroExpanderPython, ShowsTheExpandedCodeOfABlockThatFails) {
    EXPECT_EQ(ExpandError("@def n = 1 +\n  @runpython  x = n = 2\n"),
              (LexError{"Python compilation error:   File \"\", line 1\n"
                        "    x = 1 + = 2\n            ^\n"
                        "SyntaxError: invalid syntax\n"
                        "\n    in @runpython()\nx = 1 + = 2",
                        15}));
    EXPECT_EQ(ExpandError("@def n = 0\n@runpython\n{\n    if 1:\n        1/n\n}\n"),
              (LexError{"RunPython error: Traceback (most recent call last):\n"
                        "  File \"\", line 2, in <module>\n    \n"
                        "ZeroDivisionError: integer division or modulo by zero\n"
                        "\n    in @runpython()\nif 1:\n        1/0",
                        11}));
}

TEST_F(MacroExpanderPython, AddsTheContextOfTheMacroThatHoldsTheBlock) {
    EXPECT_EQ(ExpandError("@def m(a) =\n{\n  @runpython raise KeyError(a)\n}\nm(1)").description,
              "RunPython error: Traceback (most recent call last):\n"
              "  File \"\", line 1, in <module>\n    \nKeyError: 1\n"
              "\n    in @runpython()\nraise KeyError(1)"
              "\n    invoking macro m(a) with a=1");
}

TEST_F(MacroExpanderPython, PassesAnErrorOfTheExpansionAsItIs) {
    EXPECT_EQ(ExpandError("@runpython { @fail(\"no\") }"), (LexError{"no", 18}));
    EXPECT_FALSE(PythonIsRunning());
}

TEST_F(MacroExpanderPython, ReportsAnErrorInsideAnImportedModule) {
    const ModuleDirectory directory;
    directory.Write("broken.py", "def half(x):\n    return 1 / x\n\nhalf(0)\n");
    directory.Write("wrong.py", "x = 1\ny = = 2\n");
    Exec(ImportFrom(directory));
    EXPECT_EQ(ExpandError("@runpython import broken\n"),
              (LexError{"RunPython error: Traceback (most recent call last):\n"
                        "  File \"\", line 1, in <module>\n    \n"
                        "  File \""
                            + directory.Path("broken.py")
                            + "\", line 4, in <module>\n    half(0)\n"
                              "  File \""
                            + directory.Path("broken.py")
                            + "\", line 2, in half\n    return 1 / x\n"
                              "ZeroDivisionError: integer division or modulo by zero\n"
                              "\n    in @runpython()\nimport broken",
                        0}));
    EXPECT_EQ(ExpandError("@runpython import wrong\n"),
              (LexError{"RunPython error: Traceback (most recent call last):\n"
                        "  File \"\", line 1, in <module>\n    \n"
                        "  File \""
                            + directory.Path("wrong.py")
                            + "\", line 2\n    y = = 2\n        ^\nSyntaxError: invalid syntax\n"
                              "\n    in @runpython()\nimport wrong",
                        0}));
}

TEST_F(MacroExpanderPython, TakesSystemExitForAnError) {
    EXPECT_EQ(ExpandError("-\n@runpython {\nsys.exit(3)\n}"),
              (LexError{"RunPython error: Traceback (most recent call last):\n"
                        "  File \"\", line 1, in <module>\n    \nSystemExit: 3\n"
                        "\n    in @runpython()\nsys.exit(3)\n",
                        2}));
    EXPECT_EQ(ExpandError("@defpython leave = sys.exit()\n[leave]"),
              (LexError{"Eval python error: Traceback (most recent call last):\n"
                        "  File \"<string>\", line 1, in <module>\nSystemExit\n"
                        "\n    invoking python macro leave",
                        36}));
}

TEST_F(MacroExpanderPython, GoesOnAfterAnError) {
    EXPECT_EQ(Expand("@assertfails(@runpython raise KeyError(1))@runpython x = 1\n"
                     "@defpython p = x\np"),
              "1");
}

// ---- python macros -----------------------------------------------------------------------------

TEST_F(MacroExpanderPython, WritesTheValueOfAPythonMacro) {
    const std::pair<std::string, std::string> s_rows[] = {
        {"1 + 1",                   "2"      },
        {"1.5",                     "1.5"    },
        {"True",                    "1"      },
        {"'text'",                  "text"   },
        {"[1, 'a']",                "[1,a]"  },
        {"''",                      ""       },
        {"len('abc')",              "3"      },
        {"[x*x for x in range(3)]", "[0,1,4]"},
    };
    for (const auto& [body, text] : s_rows)
        EXPECT_EQ(Session().Expand("@defpython p = " + body + "\n(p)"), "(" + text + ")");
}

TEST_F(MacroExpanderPython, SubstitutesArgumentsAndMacrosIntoTheExpression) {
    EXPECT_EQ(Expand("@def offset = 100\n@defpython sum(int a, b) = a + b + offset\n"
                     "sum(1 + 1, 20) sum(1, `2 * (3,)[0]`)"),
              "122 107");
}

TEST_F(MacroExpanderPython, LooksAtNoResultType) {
    EXPECT_EQ(Expand("@defpython int p() = 'text'\np"), "text");
}

TEST_F(MacroExpanderPython, CallsFromPythonMacroToPythonMacro) {
    EXPECT_EQ(Expand("@defpython twice(a) = 2 * (a)\n@defpython next(a) = twice(a) + 1\n"
                     "next(next(1))"),
              "7");
}

TEST_F(MacroExpanderPython, TakesABodyOfSeveralLinesInBracketsOfPython) {
    EXPECT_EQ(Expand("@defpython p =\n{\n    [\n      1,\n      2\n    ]\n}\np"), "[1,2]");
}

TEST_F(MacroExpanderPython, IndentsATextOfSeveralLinesToWhereItIsUsed) {
    EXPECT_EQ(Expand("@defpython lines = '1\\n  2\\n3'\n  x = lines;\n"), "  x = 1\n  2\n3;\n");
}

TEST_F(MacroExpanderPython, DoesNotScanTheValueAgain) {
    EXPECT_EQ(Expand("@def m = no\n@defpython p = 'm @fail(\"x\") ' + \"'\"\np"),
              "m @fail(\"x\") '");
}

TEST_F(MacroExpanderPython, ReportsAPythonMacroBehindItsCall) {
    const struct {
        std::string body, error;
    } s_rows[] = {
        {"None",      "Can't convert python result of type NoneType"                          },
        {"(1, 2)",    "Can't convert python result of type tuple"                             },
        {"[1, (2,)]", "Can't convert python result of type tuple"                             },
        {"1L",        "Can't convert python result of type long"                              },
        {"1/0",       "Eval python error: Traceback (most recent call last):\n"
                "  File \"<string>\", line 1, in <module>\n"
                "ZeroDivisionError: integer division or modulo by zero\n"      },
        {"print 1",   "Eval python error:   File \"<string>\", line 1\n"
                    "    print 1\n        ^\nSyntaxError: invalid syntax\n"},
        {"x = 1",     "Eval python error:   File \"<string>\", line 1\n"
                  "    x = 1\n      ^\nSyntaxError: invalid syntax\n"        },
    };
    for (const auto& row : s_rows) {
        const std::string text = "@defpython p(a) = " + row.body + "\n- p( 1 ) -";
        EXPECT_EQ(Session().ExpandError(text),
                  (LexError{row.error + "\n    invoking python macro p",
                            static_cast<ssize_t>(text.size()) - 2}));
    }
}

TEST_F(MacroExpanderPython, ReportsAnErrorOfTheExpansionOfAPythonMacrosBody) {
    EXPECT_EQ(ExpandError("@defpython p = @fail(\"no\")\np").description,
              "no\n    invoking python macro p");
    EXPECT_FALSE(PythonIsRunning());
}

TEST_F(MacroExpanderPython, ThrowsWithoutPathAndLineNumber) {
    for (const char* text : {"@runpython 1/0\n", "@defpython p = 1/0\np"}) {
        try {
            m_session.Expand(text);
            FAIL() << "no error";
        } catch (const LexScannerException& e) {
            EXPECT_EQ(e.m_lineNumber, -1);
            EXPECT_EQ(e.m_path, xstring());
        }
    }
}

// ---- a host that forbids Python ----------------------------------------------------------------

void ExpandWithPythonForbidden() {
    ForbidPython();
    for (const char* text : {"@runpython x = 1", "@defpython p = 1\np", "@runpython {}"}) {
        const LexError error = Session().ExpandError(text);
        std::fprintf(stderr, "%s at %ld\n", error.description.c_str(), error.offset);
    }
    std::_Exit(0);
}

TEST_F(MacroExpanderPython, RefusesEveryUseOnceForbidden) {
    EXPECT_EXIT(ExpandWithPythonForbidden(), testing::ExitedWithCode(0),
                testing::StrEq("Python initialisation error: forbidden by the host"
                               "\n    in @runpython()\nx = 1 at 0\n"
                               "Python initialisation error: forbidden by the host"
                               "\n    invoking python macro p at 18\n"
                               "(no error) at -1\n"));
}

}  // namespace
}  // namespace vorn
