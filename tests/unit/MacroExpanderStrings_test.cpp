#include "qzMacroExpander/src/MacroExpander.h"

#include <gtest/gtest.h>

#include <random>
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

struct Failing {
    std::string_view text;
    LexError error;
};

// ---- the ends of a literal ---------------------------------------------------------------------

TEST(LiteralMode, HasTheseValues) {
    EXPECT_EQ(SLM_ASCII, 0);
    EXPECT_EQ(SLM_WIDE, 1);
}

TEST(LiteralMode, DecidesTheEnds) {
    StringStream os(4096);
    WritePrefix(os, SLM_ASCII);
    WriteSuffix(os, SLM_ASCII);
    EXPECT_EQ(Str(os.GetString()), "\"\"");
    WritePrefix(os, SLM_WIDE);
    WriteSuffix(os, SLM_WIDE);
    EXPECT_EQ(Str(os.GetString()), "L\"\"");
}

// ---- @str and its family -----------------------------------------------------------------------

TEST(StrDirective, WritesALiteral) {
    const Case cases[] = {
        {"@str(abc)",                 "\"abc\""             },
        {"@strW(abc)",                "L\"abc\""            },
        {"@strx(abc)",                "\"abc\""             },
        {"@strxW(abc)",               "L\"abc\""            },
        {"@str()",                    "\"\""                },
        {"@strW()",                   "L\"\""               },
        {"@strx()",                   "\"\""                },
        {"@strxW()",                  "L\"\""               },
        {"@str( )",                   "\" \""               },
        {"@str( a  b )",              "\" a  b \""          },
        {"@str(f(1, \")\"))",         R"-("f(1, \")\")")-"  },
        {"@str(a /* ) */)",           "\"a /* ) */\""       },
        {"@str(r\"a\\b\")",           R"-("r\"a\\b\"")-"    },
        {"@str('\t')",                R"-("'\t'")-"         },
        {"@str (abc)",                "\"abc\""             },
        {"x @str(a), @str(b);",       "x \"a\", \"b\";"     },
        {"@str(a)  \n\n  x",          "\"a\"  \n\n  x"      },
        {"@def m = \"x\"\n@str(m-m)", R"-("\"x\"-\"x\"")-"  },
        {"@str(@def m = 1\nm)",       "\"1\""               },
        {"@str(@str(@str(a)))",       R"-("\"\\\"a\\\"\"")-"},
        {"@str(@// note\na)",         "\"a\""               },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(StrDirective, EscapesEachByte) {
    const Case cases[] = {
        {R"-(@str(@("\a\b\f\n\r\t\v\0\\\"\'\?")))-", R"-("\a\b\f\n\r\t\v\0\\\"'?")-"},
        {"@str('\xc3\xa4\xff\x80')",                 "\"'\xc3\xa4\xff\x80'\""       },
        {"@str(\"\x01\x1f\x7f\")",                   "\"\\\"\x01\x1f\x7f\\\"\""     },
        {{"@str('\0')", 9},                          R"-("'\0'")-"                  },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(StrDirective, WritesTheLinesOfItsText) {
    struct {
        std::string_view argument;
        std::string_view str;
        std::string_view strx;
        std::string_view strW;
        std::string_view strxW;
    } const cases[] = {
        {"\n",     R"("")",       R"("")",                    R"(L"")",       R"(L"")"           },
        {"\n\n",   R"("\n")",     "\"\\n\"\n",                R"(L"\n")",     "L\"\\n\"\nL\"\""  },
        {"a\n",    R"("a\n")",    "\"a\\n\"\n",               R"(L"a\n")",    "L\"a\\n\"\nL\"\"" },
        {"a\nb",   R"("a\nb")",   "\"a\\n\"\n\"b\"",          R"(L"a\nb")",   "L\"a\\n\"\nL\"b\""},
        {"a\nb\n", R"("a\nb\n")", "\"a\\n\"\n\"b\\n\"\n",     R"(L"a\nb\n")",
         "L\"a\\n\"\nL\"b\\n\"\nL\"\""                                                           },
        {"a\n\nb", R"("a\n\nb")", "\"a\\n\"\n\"\\n\"\n\"b\"", R"(L"a\n\nb")",
         "L\"a\\n\"\nL\"\\n\"\nL\"b\""                                                           },
    };
    for (const auto& c : cases) {
        const std::string argument = std::string("(").append(c.argument).append(")");
        EXPECT_EQ(Expand("@str" + argument), c.str) << argument;
        EXPECT_EQ(Expand("@strx" + argument), c.strx) << argument;
        EXPECT_EQ(Expand("@strW" + argument), c.strW) << argument;
        EXPECT_EQ(Expand("@strxW" + argument), c.strxW) << argument;
    }
}

// The number of bytes decides what counts as an empty last literal.
TEST(StrDirective, DropsAnEmptyLastNarrowLiteralOnly) {
    EXPECT_EQ(Expand("@strx(a\n@def m = 1\n)x"), "\"a\\n\"\nx");
    EXPECT_EQ(Expand("@strxW(a\n@def m = 1\n)x"), "L\"a\\n\"\nL\"\"x");
    EXPECT_EQ(Expand("@strx(a\nb)x"), "\"a\\n\"\n\"b\"x") << "a last literal of three bytes stays";
}

TEST(StrDirective, LinesItsLiteralsUp) {
    const Case cases[] = {
        {"f(@strx(a\nb\n), c)", "f(\"a\\n\"\n  \"b\\n\"\n, c)"           },
        {"  x @strx(a\nb) y",   "  x \"a\\n\"\n    \"b\" y"              },
        {"\tx @strx(a\nb)",     "\tx \"a\\n\"\n      \"b\""              },
        {"  x @strxW(a\nb\n)",  "  x L\"a\\n\"\n    L\"b\\n\"\n    L\"\""},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
    EXPECT_EQ(Expand("x @strx(a\nb)\ny", 0, 4), "    x \"a\\n\"\n      \"b\"\n    y");
    EXPECT_EQ(Expand("@strx(a\nb\n)y", 0, 4), "    \"a\\n\"\n    \"b\\n\"\n    y");
}

TEST(StrDirective, TakesTheIndentationOfABlockOff) {
    const Case cases[] = {
        {"  x = @strx\n    (\n      a\n        b\n    );", "  x = \"a\\n\"\n      \"  b\";"},
        {"@str\n(\n  a\n)",                                "\"a\""                         },
        {"@str\n(\n  a\n    b\n c\n)",                     R"("a\n  b\nc")"                },
        {"@str\n(\n\ta\n    b\n\t\tc\n)",                  R"("a\nb\n\tc")"                },
        {"@str(\n  a\n  b\n)",                             R"("  a\n  b\n")"               },
        {"@str\n(\n)",                                     R"("")"                         },
        {"@str // note\n\n(\n  a\n)",                      R"("  a\n")"                    },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(StrDirective, ExpandsItsTextAtColumnZero) {
    EXPECT_EQ(Expand("@def m =\n{\n  p\n  q\n}\n      @str(xx m)"), R"(      "xx p\n   q")");
}

TEST(StrDirective, AttributesEachWriteToTheAt) {
    Session session;
    EXPECT_EQ(session.Expand("x @strx(a\nb)y"), "x \"a\\n\"\n  \"b\"y");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim x", "verbatim  ", "calculated @ 6",
                                       "calculated @ 5", "verbatim y"}));
    EXPECT_EQ(session.SourceOffset(3), 2);
    EXPECT_EQ(session.SourceOffset(12), 2);
    EXPECT_EQ(session.Expand("@strx(a\n)"), "\"a\\n\"\n");
    EXPECT_EQ(session.Pieces(), Texts{"calculated @ 6"});
}

TEST(StrDirective, ReportsFaults) {
    const Failing cases[] = {
        {"x @str",                 {"Expected ( when read EOS", 6}                                   },
        {"x @strx  ",              {"Expected ( when read EOS", 9}                                   },
        {"x @strW abc",            {"Expected ( when read abc", 8}                                   },
        {"x @strxW\n\n abc",       {"Expected ( when read abc", 11}                                  },
        {"x @str\n\n",             {"Expected ( when read EOS", 8}                                   },
        {"x @str(",                {"Met EOS before closing )", 7}                                   },
        {"x @str(a (b)",           {"Met EOS while reading bracketted string", 12}                   },
        {"x @str\n(a (b)",         {"Met EOS before closing )", 13}                                  },
        {"x @str(don't\n)",        {"Met line feed within single quoted string after reading 't", 12}},
        {"x @str(a @else)",        {"@else with no matching @if directive", 10}                      },
        {"x @str(@fail(\"EOS\"))", {"EOS", 12}                                                       },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

// ---- @unstr ------------------------------------------------------------------------------------

TEST(UnstrDirective, WritesTheContentOfALiteral) {
    const Case cases[] = {
        {R"(@unstr("abc"))",                             "abc"       },
        {R"(@unstr('abc'))",                             "abc"       },
        {R"(@unstr(""))",                                ""          },
        {R"(x@unstr("")y)",                              "xy"        },
        {R"(@unstr("\x41\x7e\\\"\'"))",                  "A~\\\"'"   },
        {R"(@unstr("a" "b"))",                           "a"         },
        {R"(@unstr('a'b))",                              "a"         },
        {R"(@unstr( "a" ))",                             "a"         },
        {"@unstr\n\n(\n\"a\")",                          "a"         },
        {"@unstr(\")\")",                                ")"         },
        {R"(@unstr("a"),@unstr("b");)",                  "a,b;"      },
        {"@unstr(\"a\")  \n\n  x",                       "a  \n\n  x"},
        {"@unstr(@str(abc))",                            "abc"       },
        {"@unstr(@strx(abc\ndef\n))",                    "abc\n"     },
        {"@def m = \"x\"\n@unstr(m)",                    "x"         },
        {"@def x = 1\n@unstr(\"x\")",                    "x"         },
        {"@unstr(@unstr(\"'a'\"))",                      "a"         },
        {"@let string s = \"q\"\n@unstr(\"@quote(s)\")", "@quote(s)" },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(UnstrDirective, ReadsHexEscapes) {
    EXPECT_EQ(Expand(R"(@unstr("\x00\x0A\xff\xFe"))"), "\0\n\xff\xfe"s);
}

TEST(UnstrDirective, LinesItsTextUp) {
    EXPECT_EQ(Expand(R"(  x @unstr("a\nb") y)"), "  x a\n    b y");
    EXPECT_EQ(Expand(R"(@unstr("a\n\nb"))", 0, 2), "  a\n  \n  b");
    EXPECT_EQ(Expand("x @unstr(\"a\\nb\\n\")\ny", 0, 4), "    x a\n      b\n    \n    y");
}

TEST(UnstrDirective, AttributesItsTextToTheAt) {
    Session session;
    EXPECT_EQ(session.Expand(R"(x @unstr("a\nb")y)"), "x a\n  by");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim x", "verbatim  ", "calculated @ 5", "verbatim y"}));
    EXPECT_EQ(session.SourceOffset(6), 2);
    EXPECT_EQ(session.Expand(R"(@unstr(""))"), "");
    EXPECT_EQ(session.Pieces(), Texts{});
}

TEST(UnstrDirective, ReportsABracketThatIsMissing) {
    const Failing cases[] = {
        {"x @unstr",        {"( expected when read EOS", 8}                 },
        {"x @unstr \"a\"",  {"( expected when read \"a\"", 9}               },
        {"x @unstr(",       {"Met EOS while reading bracketted section", 9} },
        {"x @unstr((\"a\"", {"Met EOS while reading bracketted section", 13}},
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(UnstrDirective, LeavesAFaultOfTheExpansionAsItIs) {
    EXPECT_EQ(ExpandError("x @unstr(a @else)"),
              (LexError{"@else with no matching @if directive", 12}));
    EXPECT_EQ(ExpandError("x @unstr(@fail(\"EOS\"))"), (LexError{"EOS", 14}));
}

// The text is read as tokens before it is expanded, so a literal with a fault in it comes out of
// another one.
TEST(UnstrDirective, MovesAFaultOfTheLiteralToTheAt) {
    const Failing cases[] = {
        {"x @unstr(abc)",                   {"abc isn't a quoted string\n    in @unstr(abc)", 2}      },
        {"x @unstr(EOS)",                   {") isn't a quoted string\n    in @unstr(EOS)", 2}        },
        {"x @unstr()",                      {"Expected quoted string\n    in @unstr()", 2}            },
        {"x @unstr(r\"a\")",                {"r\"a\" isn't a quoted string\n    in @unstr(r\"a\")", 2}},
        {"x @unstr(@unstr(\"'\"))",         {"Expected quoted string\n    in @unstr(')", 2}           },
        {"x @unstr(@unstr(\"'a\"))",        {"Met ) in middle of string\n    in @unstr('a)", 2}       },
        {"x @unstr(@unstr(\"'a\\nb'\"))",
         {"Met end of line in middle of string\n    in @unstr('a\nb')", 2}                            },
        {"x @unstr(@unstr(\"'a\\\\\"))",    {"Met ) in middle of string\n    in @unstr('a\\)", 2}     },
        {"x @unstr(@unstr(\"'\\\\x\"))",
         {"Expected hex character when reached )\n    in @unstr('\\x)", 2}                            },
        {"x @unstr(@unstr(\"'\\\\x4\"))",
         {"Expected hex character when reached )\n    in @unstr('\\x4)", 2}                           },
        {"x @unstr(@unstr(\"'\\\\xg1'\"))",
         {"Expected hex character when read 'g'\n    in @unstr('\\xg1')", 2}                          },
        {"x @unstr(@unstr(\"'\\\\x1 '\"))",
         {"Expected hex character when read space\n    in @unstr('\\x1 ')", 2}                        },
        {"x @unstr(@unstr(\"'\\\\q'\"))",
         {"qis not a valid escape character\n    in @unstr('\\q')", 2}                                },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

TEST(UnstrDirective, ShowsAnyByteInMessages) {
    EXPECT_EQ(ExpandError("@unstr(1@unstr(\"\\x00\\xff\"))"),
              (LexError{"1\0\xff isn't a quoted string\n    in @unstr(1\0\xff)"s, 0}));
    EXPECT_EQ(ExpandError("@unstr(@unstr(\"'\\\\\\x00'\"))"),
              (LexError{"\0is not a valid escape character\n    in @unstr('\\\0')"s, 0}));
}

// ---- there and back ----------------------------------------------------------------------------

// What @str writes reads back as the same bytes, through the decoder and through an expression.
void ExpectThereAndBack(const std::string& bytes) {
    Session session;
    const SubString value(bytes.data(), bytes.data() + bytes.size());
    session.m_frame.AddVariable(new LSVar("x", value));
    const std::string shown = testing::PrintToString(bytes);
    EXPECT_EQ(session.Expand("@unstr(@str(x))"), bytes) << shown;
    EXPECT_EQ(session.Expand("@(@str(x))"), bytes) << shown;
    EXPECT_EQ(session.Expand("@unstr(@unstr(@str(@str(x))))"), bytes) << shown;
}

TEST(ThereAndBack, GivesEachByte) {
    for (int byte = 0; byte < 256; ++byte) {
        ExpectThereAndBack({static_cast<char>(byte)});
        ExpectThereAndBack({'a', static_cast<char>(byte), 'b'});
        ExpectThereAndBack({static_cast<char>(byte), '0', 'A'});
        ExpectThereAndBack({'\\', static_cast<char>(byte)});
    }
    ExpectThereAndBack("");
}

TEST(ThereAndBack, GivesTextsOfAnyBytes) {
    std::mt19937 random(1);
    for (int i = 0; i < 300; ++i) {
        std::string bytes;
        for (auto n = random() % 60; n > 0; --n)
            bytes +=
                static_cast<char>(random() % 2 == 0 ? random() % 256 : "\\\"'x\n0n"[random() % 7]);
        ExpectThereAndBack(bytes);
    }
}

// A text of tokens, as an author writes it between the brackets. A # stands for a byte that only
// a string can hold.
TEST(ThereAndBack, GivesTextsOfTokens) {
    static constexpr std::string_view s_tokens[] = {
        "a",  " ", "\t", "\n",  "\r\n",  "1.5",    "0x1F",       "+",      "<<=",
        "(",  ")", "[",  "'#'", "\"#\"", "r'\\#'", "'\\n\\x4F'", "// #\n", "/* # */",
        "\\", "`", "$",  "@",   ";",     "\v",     "\f",
    };
    std::mt19937 random(2);
    for (int i = 0; i < 300; ++i) {
        std::string text;
        int depth = 0;
        for (auto n = random() % 30; n > 0; --n) {
            std::string token(s_tokens[random() % std::size(s_tokens)]);
            if (token == "@" && !text.empty() && text.back() == '@')
                continue;
            if (const auto at = token.find('#'); at != std::string::npos)
                token[at] = "\0\1\x7f\x80\xe4\xff"[random() % 6];
            depth += token == "(" ? 1 : 0;
            if (token == ")" && --depth < 0) {
                depth = 0;
                continue;
            }
            text += token + (token == "@" ? ";" : " ");
        }
        text += std::string(static_cast<std::size_t>(depth), ')');
        EXPECT_EQ(Expand("@unstr(@str(." + text + "))"), "." + text)
            << testing::PrintToString(text);
    }
}

// ---- @quote ------------------------------------------------------------------------------------

TEST(QuoteDirective, WritesItsTextAsItStands) {
    const Case cases[] = {
        {"@quote(@if)",                          "@if"                   },
        {"@quote()",                             ""                      },
        {"@quote( )",                            " "                     },
        {"@quote(  a  b  )",                     "  a  b  "              },
        {"@def m = 1\n@quote(m @(m) @// m\n) m", "m @(m) @// m\n 1"      },
        {"@quote(f(1) \")\" ')' /* ) */)",       "f(1) \")\" ')' /* ) */"},
        {"@quote(@@)@quote(@else)",              "@@@else"               },
        {"x @quote(a), @quote(b);",              "x a, b;"               },
        {"@quote(a)  \n\n  x",                   "a  \n\n  x"            },
        {"@quote(\n  a\n)x",                     "  a\nx"                },
        {"@quote(\r\na\r\n)x",                   "a\r\nx"                },
        {"@quote(a\nb)",                         "a\nb"                  },
        {"@quote('\xff\x80')",                   "'\xff\x80'"            },
        {{"@quote('\0')", 11},                   {"'\0'", 3}             },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(QuoteDirective, DoesNotApplyDollarMacros) {
    Session session;
    session.m_frame.InsertDollarMacro("A", "x");
    EXPECT_EQ(session.Expand("@quote(\"$(A)\") \"$(A)\""), "\"$(A)\" \"x\"");
}

TEST(QuoteDirective, LinesItsTextUp) {
    const Case cases[] = {
        {"  x @quote\n    (\n      a\n        b\n\n    c\n    ) y",
         "  x a\n      b\n    \n    c y"                                                 },
        {"  @quote\n  (\n    a\n    b\n  )\n  x",                   "  a\n  b\n  x"      },
        {"\t@quote\n(\n\ta\n    b\n\t\tc\n)",                       "\ta\n    b\n    \tc"},
        {"x @quote(a\n  b\n)y",                                     "x a\n    b\ny"      },
        {"@quote\n(\n)x",                                           "x"                  },
        {"@quote\n(\n  a\n\n)x",                                    "a\nx"               },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
    EXPECT_EQ(Expand("@quote\n(\n  a\n  b\n)\nx", 0, 4), "    a\n    b\n    x");
    EXPECT_EQ(Expand("x @quote(a\nb\n)y", 0, 4), "    x a\n      b\n    y");
}

TEST(QuoteDirective, KeepsTheSourcePositionOfEachLine) {
    Session session;
    const std::string_view text = "x @quote\n  (\n    a b\n      c\n  );";
    EXPECT_EQ(session.Expand(text), "x a b\n    c;");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim x", "verbatim  ", "verbatim a b\n",
                                       "indentation 2", "verbatim   c", "verbatim ;"}));
    for (ssize_t pos = 2; pos < 6; ++pos)
        EXPECT_EQ(session.SourceOffset(pos), 17 + pos - 2) << pos;
    EXPECT_EQ(session.m_pieces.MapOutputPositionToAddress(6), nullptr);
    EXPECT_EQ(session.SourceOffset(10), static_cast<ssize_t>(text.find('c')));
}

TEST(QuoteDirective, OfOneLineIsOneWrite) {
    Session session;
    EXPECT_EQ(session.Expand("@quote(a b /* c */ d)"), "a b /* c */ d");
    EXPECT_EQ(session.Pieces(), Texts{"verbatim a b /* c */ d"});
    EXPECT_EQ(session.Expand("x@quote()y"), "xy");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim x", "verbatim y"}));
}

TEST(QuoteDirective, ReportsFaults) {
    const Failing cases[] = {
        {"x @quote",          {"Expected ( when read EOS", 8}                                   },
        {"x @quote abc",      {"Expected ( when read abc", 9}                                   },
        {"x @quote\nabc",     {"Expected ( when read abc", 9}                                   },
        {"x @quote(",         {"Met EOS before closing )", 9}                                   },
        {"x @quote(a",        {"Met EOS while reading bracketted string", 10}                   },
        {"x @quote\n(a",      {"Met EOS before closing )", 11}                                  },
        {"x @quote(a \x01)",  {"Bad token \x01", 11}                                            },
        {"x @quote(don't\n)", {"Met line feed within single quoted string after reading 't", 14}},
        {"x @quote(/* )",     {"Met EOS in middle of /* ... */ comment", 13}                    },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error) << text;
}

// ---- the column that lines of these directives begin at -----------------------------------------

// Each sets the column of new lines for its own text alone.
TEST(StringDirectives, RestoreTheIndentation) {
    for (const std::string directive : {"@strx(a\nb\n)", "@unstr(\"a\\n\")", "@quote(a\n)"}) {
        const std::string output = Expand("xx " + directive + "y\nz", 0, 4);
        EXPECT_EQ(output.substr(output.size() - 12), "\n    y\n    z") << directive;
    }
}

}  // namespace
}  // namespace vorn_test
