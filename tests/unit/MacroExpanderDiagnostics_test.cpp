#include "qzMacroExpander/src/MacroExpander.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

#include "qzUtils/xostream.h"
#include "tests/support/Expand.h"

namespace vorn_test {
namespace {

using namespace vorn;
using namespace std::string_literals;

struct Failing {
    std::string_view text;
    LexError error;
};

// What reaches the standard output of the process while action runs.
template <class Action>
std::string PrintedBy(Action&& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

// ---- @print and @println -----------------------------------------------------------------------

struct Printing {
    std::string_view text;
    std::string_view printed;
    std::string_view output;
};

TEST(PrintDirective, WritesToTheStandardOutput) {
    const Printing cases[] = {
        {"@print(abc)",                          "abc",         ""   },
        {"@println(abc)",                        "abc\n",       ""   },
        {"@print()",                             "",            ""   },
        {"@println()",                           "\n",          ""   },
        {"@print( a  b )",                       "a  b",        ""   },
        {"@print\n(\n  a\n  b\n)",               "a\n  b",      ""   },
        {"@print(\"a\" + 'b')",                  "\"a\" + 'b'", ""   },
        {"@println(f(\")\") /* ) */)",           "f(\")\")\n",  ""   },
        {"@print(a\n)@println(b)@print(c)",      "ab\nc",       ""   },
        {"@def m = <x>\n@print(m)m",             "<x>",         "<x>"},
        {"@print(@print(a)b)",                   "ab",          ""   },
        {"@print(@def m = 1\nm)m",               "1",           "m"  },
        {"@print(@exportdef m = 1\nm)m",         "1",           "1"  },
        {"@print(@(1 + 2) @str(a) @quote(@if))", "3 \"a\" @if", ""   },
        {"@for(i in [1,2]){@println(i)}",        "1\n2\n",      ""   },
        {"@if(false) { @print(a) }",             "",            ""   },
    };
    for (const auto& [text, printed, expected] : cases) {
        std::string output;
        EXPECT_EQ(PrintedBy([&] { output = Expand(text); }), printed) << text;
        EXPECT_EQ(output, expected) << text;
    }
}

TEST(PrintDirective, WritesAnyByte) {
    const std::string text = "@print('\0\xe4\xff' @unstr(\"\\x00\\x01\\x80\"))"s;
    EXPECT_EQ(PrintedBy([&] { Expand(text); }), "'\0\xe4\xff' \0\x01\x80"s);
}

TEST(PrintDirective, DoesNotIndent) {
    EXPECT_EQ(PrintedBy([] { Expand("    x @print(a\n  b)", 0, 8); }), "a\n  b");
    EXPECT_EQ(PrintedBy([] { Expand("a\n    @print(b\n    c)", 4, 0); }), "b\n    c");
}

// What the text in front of it gave is out before it, and what follows comes after it.
TEST(PrintDirective, KeepsTheOrderOfAnOutputThatGoesToTheSamePlace) {
    Session session;
    session.Expand("@def m = <@print(1)>\n@def int typed = @print(2)2\n");
    const auto expand = [&session](std::string_view text) {
        const SubString source(text.data(), text.data() + text.size());
        return PrintedBy([&] {
            ExpandedOutput output(xcout);
            MacroExpand(nullptr, &session.m_frame, source, 0, 0, output);
            xcout.flush();
        });
    };
    EXPECT_EQ(expand("a b @print(x)c"), "a bxc");
    EXPECT_EQ(expand("a\n  @println(x)\n  b"), "a\nx\n  b");
    EXPECT_EQ(expand("a m b"), "a <1> b");
    EXPECT_EQ(expand("a typed b"), "a 22 b");
    EXPECT_EQ(expand("a @(@print(x)1) b"), "a x1 b");
    EXPECT_EQ(expand("a @[@quote(@print(x))1] b"), "a x1 b");
    EXPECT_EQ(expand("a @if(true) {b@print(x)c} d"), "a bxc d");
    EXPECT_EQ(expand("a @assertfails(@print(x)@else) b"), "axb");
}

TEST(PrintDirective, IsOutAtOnce) {
    for (const std::string_view text : {"@print(ab)", "@println(a)"}) {
        off_t offset = 0;  // what has reached the file behind the standard output
        PrintedBy([&] {
            Expand(text);
            offset = ::lseek(STDOUT_FILENO, 0, SEEK_CUR);
        });
        EXPECT_EQ(offset, 2) << text;
    }
}

TEST(PrintDirective, StaysPrintedWhereTheTextFailsLater) {
    Session session;
    EXPECT_EQ(PrintedBy([&] { session.ExpandError("@print(a)@println(b)@else @print(c)"); }),
              "ab\n");
}

TEST(PrintDirective, ThatFailsPrintsNothing) {
    Session session;
    LexError error;
    const auto print = [&](std::string_view text) {
        return PrintedBy([&] { error = session.ExpandError(text); });
    };
    EXPECT_EQ(print("x @print(a b @else)"), "");
    EXPECT_EQ(error, (LexError{"@else with no matching @if directive", 14}));
    EXPECT_EQ(session.m_output, "x");
    EXPECT_EQ(print("x @println(a @fail(\"EOS\"))"), "");
    EXPECT_EQ(error, (LexError{"EOS", 18}));
}

TEST(PrintDirective, ReportsABracketThatIsMissing) {
    const Failing cases[] = {
        {"x @print",      {"( expected when read EOS", 8}                 },
        {"x @println a",  {"( expected when read a", 11}                  },
        {"x @print[a]",   {"( expected when read [", 8}                   },
        {"x @println(",   {"Met EOS while reading bracketted section", 11}},
        {"x @print(f(1)", {"Met EOS while reading bracketted section", 13}},
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

// ---- what all of them leave in the output
// --------------------------------------------------------

TEST(Diagnostics, VanishWithTheirLine) {
    for (const std::string directive : {"@print()", "@assert(true)", "@assertfails(@else)"}) {
        EXPECT_EQ(Expand(directive), "");
        EXPECT_EQ(Expand("a\n  " + directive + "\nb"), "a\nb");
        EXPECT_EQ(Expand("a\n  " + directive + " \n\n \t\n  b"), "a\n  b");
        EXPECT_EQ(Expand("a\n  " + directive + "\n    b", 2, 0), "a\n  b");
        EXPECT_EQ(Expand("a  " + directive + "  b"), "ab");
        EXPECT_EQ(Expand("a  " + directive + "\n  b"), "a  b");
        EXPECT_EQ(Expand("a\n  " + directive + "\n  " + directive + "\nb", 0, 4), "    a\n    b");
        EXPECT_EQ(Expand(directive + "(x)"), "(x)");
    }
}

TEST(Diagnostics, HaveNoPieces) {
    Session session;
    session.Expand(" a @assert(true) @assertfails(@else) @print()\n b");
    EXPECT_EQ(session.Pieces(), (std::vector<std::string>{"verbatim  a", "verbatim  b"}));
}

// ---- @assert -----------------------------------------------------------------------------------

TEST(AssertDirective, IsSilentIfTheConditionHolds) {
    for (const std::string_view text : {
             "@assert(1 < 2)",
             "@assert (true)",
             "@assert(\")\" == \")\")",
             "@def m = 1 < 2\n@assert(m)",
             "@def m = x\n@assert(@str(m) == \"x\")",
             "@let bool b = true\n@assert(b && !false)",
             "@assert(@exportdef m = true\nm)@assert(m)",
             "@assert(@assert(true)true)",
         })
        EXPECT_EQ(Expand(text), "") << text;
}

TEST(AssertDirective, FailsIfItDoesNot) {
    const Failing cases[] = {
        {"x @assert(1 > 2)",
         {"Assertion failure\n        @assert(1 > 2)\nie      @assert(1 > 2)", 9}              },
        {"x @assert  ( false )",
         {"Assertion failure\n        @assert(false)\nie      @assert(false)", 9}              },
        {"@def x = 1 > 2\n@assert(x)",
         {"Assertion failure\n        @assert(x)\nie      @assert(1 > 2)", 22}                 },
        {"@def x = \"EOS\"\n@assert(x /* c */ == \"b\")",
         {"Assertion failure\n        @assert(x /* c */ == \"b\")"
          "\nie      @assert(\"EOS\" /* c */ == \"b\")",
          22}                                                                                  },
        {"@assert(@def m = 1\nm == 2)",
         {"Assertion failure\n        @assert(@def m = 1\nm == 2)\nie      @assert(1 == 2)", 7}},
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(AssertDirective, ShowsAnyByte) {
    EXPECT_EQ(ExpandError("@assert('\0\xff' == '')"s),
              (LexError{"Assertion failure\n        @assert('\0\xff' == '')"
                        "\nie      @assert('\0\xff' == '')"s,
                        7}));
}

TEST(AssertDirective, ReportsAFaultOfTheConditionAtTheAt) {
    const Failing cases[] = {
        {"x @assert(1)",          {"No implicit conversion from int64 to bool\n    in @assert(1)", 2}},
        {"x @assert()",           {"Unexpected ) after ( in expression\n    in @assert()", 2}        },
        {"x @assert(true false)",
         {"Expected ) after true when read false in expression\n    in @assert(true false)", 2}      },
        {"x @assert(abc)",        {"Unexpected abc after ( in expression\n    in @assert(abc)", 2}   },
        {"x @assert(1 < 2 < 3)",
         {"Incompatible types (bool and int64) for comparison operation"
          "\n    in @assert(1 < 2 < 3)",
          2}                                                                                         },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(AssertDirective, LeavesAFaultOfTheExpansionAsItIs) {
    EXPECT_EQ(ExpandError("x @assert(true @else)"),
              (LexError{"@else with no matching @if directive", 16}));
    EXPECT_EQ(ExpandError("@def m = @else\n@assert(m)"),
              (LexError{"@else with no matching @if directive\n    invoking macro m", 10}));
    EXPECT_EQ(ExpandError("x @assert(@assert(1 > 2)true)"),
              (LexError{"Assertion failure\n        @assert(1 > 2)\nie      @assert(1 > 2)", 17}));
}

TEST(AssertDirective, ReportsABracketThatIsMissing) {
    const Failing cases[] = {
        {"x @assert",         {"( expected when read EOS", 9}                                   },
        {"x @assert true",    {"( expected when read true", 10}                                 },
        {"x @assert{true}",   {"( expected when read {", 9}                                     },
        {"x @assert(true",    {"Met EOS while reading bracketted section", 14}                  },
        {"x @assert(don't\n", {"Met line feed within single quoted string after reading 't", 15}},
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(AssertDirective, FailsInsideOtherDirectives) {
    EXPECT_EQ(ExpandError("@for(i in [1,2]) {@assert(i < 2)}"),
              (LexError{"Assertion failure\n        @assert(i < 2)\nie      @assert(2 < 2)"
                        "\n    in @for directive when i = 2",
                        25}));
    EXPECT_EQ(ExpandError("@def m(a) = @assert(a)\nm(1 > 2)"),
              (LexError{"Assertion failure\n        @assert(a)\nie      @assert(1 > 2)"
                        "\n    invoking macro m(a) with a=1 > 2",
                        19}));
}

// ---- @assertfails ------------------------------------------------------------------------------

TEST(AssertFailsDirective, IsSilentIfTheTextFails) {
    for (const std::string_view text : {
             "@assertfails(@fail(\"x\"))",
             "@assertfails[@fail(\"x\")]",
             "@assertfails{@fail(\"x\")}",
             "@assertfails (@else)",
             "@assertfails\n\n  // note\n  {\n  a b @else\n}",
             "@assertfails(@(1 2))",
             "@assertfails(@assert(1 > 2))",
             "@assertfails(@assertfails(abc))",
             "@assertfails(\x61 @unstr(abc))",
             "@assertfails[)@else(]",
             "@assertfails{)[@else}",
             "@assertfails(@import \"x\")",
         })
        EXPECT_EQ(Expand(text), "") << text;
}

TEST(AssertFailsDirective, FailsIfItDoesNot) {
    const Failing cases[] = {
        {"x @assertfails(abc)",                        {"Macro expansion of abc didn't generate an error", 14}},
        {"x @assertfails  [ a /* b */ ]",              {"Macro expansion of a didn't generate an error", 14}  },
        {"x @assertfails{}",                           {"Macro expansion of  didn't generate an error", 14}   },
        {"@def m = 1\n@assertfails(m EOS)",
         {"Macro expansion of m EOS didn't generate an error", 23}                                            },
        {"@assertfails(@assertfails(@else))",
         {"Macro expansion of @assertfails(@else) didn't generate an error", 12}                              },
        {"@assertfails(@if(false) { @fail(\"no\") })",
         {"Macro expansion of @if(false) { @fail(\"no\") } didn't generate an error", 12}                     },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
    EXPECT_EQ(ExpandError("@assertfails('\0\xff')"s),
              (LexError{"Macro expansion of '\0\xff' didn't generate an error"s, 12}));
}

TEST(AssertFailsDirective, NeedsABracket) {
    const Failing cases[] = {
        {"@assertfails x",        {"( expected after @assertfails when read x", 13}    },
        {"x @assertfails",        {"( expected after @assertfails when read EOS", 14}  },
        {"x @assertfails)",       {"( expected after @assertfails when read )", 14}    },
        {"x @assertfails < a >",  {"( expected after @assertfails when read <", 15}    },
        {"x @assertfails\n\"a\"", {"( expected after @assertfails when read \"a\"", 15}},
        {"x @assertfails@// a",   {"( expected after @assertfails when read @// a", 14}},
        {"x @assertfails(@else",  {"Met EOS while reading bracketted section", 20}     },
        {"x @assertfails[)",      {"Met EOS while reading bracketted section", 16}     },
        {"x @assertfails{)]",     {"Met EOS while reading bracketted section", 17}     },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

// The text has to be made of tokens, or its end is not found: that fault is none of the text's.
TEST(AssertFailsDirective, DoesNotSwallowAFaultInItsBrackets) {
    EXPECT_EQ(ExpandError("@assertfails(a \x01)"), (LexError{"Bad token \x01", 15}));
    EXPECT_EQ(ExpandError("@assertfails(don't\n)"),
              (LexError{"Met line feed within single quoted string after reading 't", 18}));
}

TEST(AssertFailsDirective, UndoesNothing) {
    EXPECT_EQ(Expand("@let int i = 1\n@assertfails(@let i = 2\n@else)\ni"), "2");
    EXPECT_EQ(Expand("@assertfails(@exportdef m = 1\n@else)\nm"), "1");
    EXPECT_EQ(Expand("@assertfails(@def + m = 1\n@else)\nm"), "1");
    EXPECT_EQ(PrintedBy([] { Expand("@assertfails(@print(a)@else@print(b))"); }), "a");
    EXPECT_EQ(Expand("@let int i = 0\n@assertfails{@let i = 5 6\n}\ni"), "5")
        << "the part of an assignment that could be parsed";
}

TEST(AssertFailsDirective, ForgetsWhatTheTextDefinesForItself) {
    EXPECT_EQ(Expand("@assertfails(@def m = 1\n@let int i = 2\n@else)\nm i"), "m i");
    EXPECT_EQ(Expand("@assertfails(a b c @else)\nd"), "d");
}

// The expansion goes on with a sound output: what the failing text gave is gone.
TEST(AssertFailsDirective, LeavesColumnsAndPiecesAsTheyWere) {
    Session session;
    EXPECT_EQ(session.Expand("  x\n  @assertfails(a\n  b @else)\n  @quote(a\nb)\n", 0, 4),
              "      x\n      a\n      b\n");
    EXPECT_EQ(session.SourceOffset(6), 2);
    EXPECT_EQ(session.SourceOffset(14), 41);
}

TEST(AssertFailsDirective, HandsOutDefinitionsOfASecondPass) {
    EXPECT_EQ(Expand("@assertfails(@[@quote(@def + m = hello\n@else)])m"), "hello");
}

// What a host throws of its own, here in place of a type, passes through.
TEST(AssertFailsDirective, SwallowsErrorsOfTheLanguageAlone) {
    struct Thrower : LSValueVariable {
        Thrower() : LSValueVariable(LSV_STRING, "thrower", "") {}
        ELSVariable GetType() const override { throw std::bad_alloc(); }
    };
    Session session;
    session.m_frame.AddVariable(new Thrower);
    EXPECT_THROW(session.Expand("@assertfails(thrower)"), std::bad_alloc);
}

// ---- @fail -------------------------------------------------------------------------------------

TEST(FailDirective, EndsTheExpansionWithItsMessage) {
    const Failing cases[] = {
        {"x @fail(\"stop\")",                           {"stop", 7}},
        {"@fail  ( \"a\" + \"b\" )",                    {"ab", 5}  },
        {"@fail('stop')",                               {"stop", 5}},
        {"@fail(\"\")",                                 {"", 5}    },
        {"@fail(\"EOS\")",                              {"EOS", 5} },
        {"@fail(\"a\\nb\")",                            {"a\nb", 5}},
        {"@fail(\"abc\"[1])",                           {"b", 5}   },
        {"@fail(string(1 + 1))",                        {"2", 5}   },
        {"@def stop = \"a\"\n@fail(stop)",              {"a", 21}  },
        {"@def m = b\n@fail(\"m\" + @str(m))",          {"mb", 16} },
        {"@def f(string s) = @fail(@str(s))\nf(\"x\")",
         {"x\n    invoking macro f(s) with s=x", 24}               },
        {"@ fail(\"a\")",                               {"a", 6}   },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(FailDirective, SetsNoPathAndNoLine) {
    FileScopeVarFrame frame;
    xstring result;
    try {
        MacroExpand(nullptr, &frame, "\n\n@fail(\"stop\")", 0, 0, result);
        FAIL() << "nothing was thrown";
    } catch (const LexScannerException& e) {
        EXPECT_EQ(Str(e.m_path), "");
        EXPECT_EQ(e.m_lineNumber, -1);
        EXPECT_STREQ(e.what(), "stop");
    }
}

TEST(FailDirective, ShowsAnyByte) {
    EXPECT_EQ(ExpandError("@fail('\0\xff' + @str('\x80'))"s), (LexError{"\0\xff'\x80'"s, 5}));
}

TEST(FailDirective, NeedsAStringExpression) {
    const Failing cases[] = {
        {"x @fail(stop)",             {"Unexpected stop after ( in expression\n    in @fail(stop)", 2}   },
        {"x @fail(1)",                {"No implicit conversion from int64 to string\n    in @fail(1)", 2}},
        {"x @fail()",                 {"Unexpected ) after ( in expression\n    in @fail()", 2}          },
        {"x @fail(\"a\" \"b\")",
         {"Expected ) after \"a\" when read \"b\" in expression\n    in @fail(\"a\" \"b\")", 2}          },
        {"x @fail(\"a\" @else)",
         {"@else with no matching @if directive\n    in @fail(\"a\" @else)", 13}                         },
        {"x @fail(@fail(\"inner\"))", {"inner\n    in @fail(@fail(\"inner\"))", 13}                      },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(FailDirective, ReportsABracketThatIsMissing) {
    const Failing cases[] = {
        {"x @fail",       {"( expected when read EOS", 7}                 },
        {"x @fail \"a\"", {"( expected when read \"a\"", 8}               },
        {"x @fail(\"a\"", {"Met EOS while reading bracketted section", 11}},
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(FailDirective, InABranchThatIsNotTakenHasNoEffect) {
    EXPECT_EQ(Expand("@if(false) { @fail(\"no\") } @else { a }"), " a ");
    EXPECT_EQ(Expand("@def m = @fail(\"no\")\na"), "a");
}

TEST(FailDirective, KeepsWhatWasWrittenInFront) {
    Session session;
    EXPECT_EQ(session.ExpandError("a b  @fail(\"no\")").offset, 10);
    EXPECT_EQ(session.m_output, "a b");
}

}  // namespace
}  // namespace vorn_test
