#include "qzMacroExpander/src/MacroExpander.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Expand.h"

namespace vorn_test {
namespace {

using namespace vorn;

using Texts = std::vector<std::string>;

// ---- ordinary text -----------------------------------------------------------------------------

TEST(OrdinaryText, ComesOutByteForByte) {
    using namespace std::string_view_literals;
    const std::string_view texts[] = {
        ""sv,
        " "sv,
        "\n"sv,
        "\t \n \t\n\n"sv,
        "a b  c\td"sv,
        "  a = b + 1;  // note\n\n\tc /* x\n   y */ d\n"sv,
        "f(a, b[1]) { return 'x' \"y\" r\"z\\\"; }\n"sv,
        "1 2.5 0x1F 1e5 0.5e-3"sv,
        "a++ --b -> c :: d ?= e ~f ^^ g `h` #i \\ j $ k $$ l"sv,
        "no line end at the end"sv,
        "a\r\nb\r\n\r\n  c\r\n"sv,
        "a\rb\vc\fd"sv,
        "'\xc3\xa4' \"\xff\" // \xe4\n/* \x80 */"sv,
        "'a\0b' \"\0\" // \0\n/* \0 */"sv,
    };
    for (const std::string_view text : texts)
        EXPECT_EQ(Expand(text), text);
}

TEST(OrdinaryText, ThatIsEmptyHasNoPieces) {
    Session session;
    EXPECT_EQ(session.Expand("", 4, 8), "");
    EXPECT_EQ(session.Pieces(), Texts{});
    xstring result("old");
    MacroExpand(nullptr, &session.m_frame, SubString(), 4, 8, result);
    EXPECT_EQ(result, xstring());
}

TEST(OrdinaryText, HasAPieceForEachTokenAndEachLineFeed) {
    Session session;
    EXPECT_EQ(session.Expand("a = 1; // x\n\n  b \n "), "a = 1; // x\n\n  b \n ");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim a", "verbatim  =", "verbatim  1", "verbatim ;", "verbatim  // x",
                     "verbatim \n", "verbatim \n", "verbatim   b", "verbatim  \n", "verbatim  "}));
}

TEST(OrdinaryText, IsNotSearchedForNamesInCommentsAndSingleQuotes) {
    Session session;
    session.Expand("@def m = 1\n");
    EXPECT_EQ(session.Expand("m 'm' \"m\" /* m */ // m\nm"), "1 'm' \"m\" /* m */ // m\n1");
}

TEST(OrdinaryText, OfWhichANameIsAPartIsNotTheName) {
    Session session;
    session.Expand("@def m = 1\n");
    EXPECT_EQ(session.Expand("mm m1 _m 1m m.m Mm"), "mm m1 _m 11 1.1 Mm");
}

TEST(OrdinaryText, ThatIsNoTokenStopsTheExpansion) {
    struct {
        std::string_view text;
        LexError error;
    } const cases[] = {
        {"a \xe4 b",    {"Bad token \xe4", 2}                                            },
        {"a \x01 b",    {"Bad token \x01", 2}                                            },
        {{"a \0 b", 5}, {std::string("Bad token \0", 11), 2}                             },
        {"don't\nstop", {"Met line feed within single quoted string after reading 't", 5}},
        {"a \"b",       {"Met EOS within double quoted string after reading \"b", 4}     },
        {"a /* b",      {"Met EOS in middle of /* ... */ comment", 6}                    },
        {"a ++= b",     {"Invalid token ++=", 5}                                         },
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(ExpandError(text), error);
}

TEST(Failure, KeepsWhatWasWrittenBefore) {
    Session session;
    EXPECT_EQ(session.ExpandError("a b\n \x01 c").description, "Bad token \x01");
    EXPECT_EQ(session.m_output, "a b\n");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim a", "verbatim  b", "verbatim \n"}));
}

// ---- indentation -------------------------------------------------------------------------------

struct Indenting {
    std::string_view text;
    ssize_t srcIndent;
    ssize_t dstIndent;
    std::string_view output;
};

void PrintTo(const Indenting& indenting, std::ostream* os) {
    *os << testing::PrintToString(indenting.text) << " from " << indenting.srcIndent << " to "
        << indenting.dstIndent;
}

class Indentation : public testing::TestWithParam<Indenting> {};

TEST_P(Indentation, IsReplaced) {
    const Indenting& p = GetParam();
    EXPECT_EQ(Expand(p.text, p.srcIndent, p.dstIndent), p.output);
}

INSTANTIATE_TEST_SUITE_P(OfTheFirstLine, Indentation,
                         testing::Values(Indenting{"a", 4, 8, "        a"},
                                         Indenting{"  a", 4, 8, "          a"},
                                         Indenting{"    a", 4, 0, "    a"}, Indenting{"", 4, 8, ""},
                                         Indenting{"  ", 4, 2, "    "}));

INSTANTIATE_TEST_SUITE_P(
    OfLaterLines, Indentation,
    testing::Values(Indenting{"a\n    b", 4, 0, "a\nb"}, Indenting{"a\n      b", 4, 0, "a\n  b"},
                    Indenting{"a\n  b", 4, 0, "a\nb"}, Indenting{"a\nb", 4, 0, "a\nb"},
                    Indenting{"a\n    b", 4, 4, "    a\n    b"},
                    Indenting{"a\n\t\tb", 4, 8, "        a\n        \tb"},
                    Indenting{"a\n    b\n      c\n    d", 4, 2, "  a\n  b\n    c\n  d"}));

INSTANTIATE_TEST_SUITE_P(
    WithTabs, Indentation,
    testing::Values(Indenting{"a\n\tb", 4, 0, "a\nb"}, Indenting{"a\n\tb", 3, 0, "a\n\tb"},
                    Indenting{"a\n \tb", 4, 0, "a\n\tb"}, Indenting{"a\n\t b", 5, 0, "a\nb"},
                    Indenting{"a\n  \tb", 6, 0, "a\nb"}, Indenting{"a\n\t\tb", 7, 0, "a\n\tb"}));

INSTANTIATE_TEST_SUITE_P(
    OfEmptyLines, Indentation,
    testing::Values(Indenting{"a\n\nb", 0, 8, "        a\n        \n        b"},
                    Indenting{"\n", 0, 2, "  \n"}, Indenting{"a\n", 0, 2, "  a\n"},
                    Indenting{"a\n   \nb", 2, 0, "a\n \nb"}, Indenting{"a\n  ", 2, 3, "   a\n"},
                    Indenting{"a\n   ", 2, 3, "   a\n    "}));

// A comment of several lines is one token: its lines keep the indentation of their source.
INSTANTIATE_TEST_SUITE_P(InsideAToken, Indentation,
                         testing::Values(Indenting{"a\n    /* x\n    y */ b\n    c", 4, 2,
                                                   "  a\n  /* x\n      y */ b\n  c"},
                                         Indenting{"/* x\n\n*/", 4, 2, "  /* x\n  \n  */"}));

// The token scanner takes a line feed together with the carriage return in front of it, so that
// the lines behind keep their source indentation.
INSTANTIATE_TEST_SUITE_P(BehindACarriageReturn, Indentation,
                         testing::Values(Indenting{"a\r\n    b", 4, 0, "a\r\n    b"},
                                         Indenting{"a\r\n    b", 4, 2, "  a\r\n      b"},
                                         Indenting{"a\r\n\r\n    b\n    c", 4, 2,
                                                   "  a\r\n  \r\n      b\n  c"},
                                         Indenting{"a // x\r\n    b", 4, 0, "a // x\r\nb"}));

// ---- the worked run ----------------------------------------------------------------------------

class WorkedRun : public testing::Test {
protected:
    Session session;
    const std::string_view text = "x = m;\n  y";

    WorkedRun() { session.m_frame.AddVariable(new LSValueVariable(LSV_INT, "m", "12")); }
};

TEST_F(WorkedRun, WritesOutputAndPieces) {
    EXPECT_EQ(session.Expand(text, 2, 4), "    x = 12;\n    y");
    EXPECT_EQ(session.Pieces(),
              (Texts{"indentation 4", "verbatim x", "verbatim  =", "verbatim  ", "calculated m 2",
                     "verbatim ;", "verbatim \n", "indentation 4", "verbatim y"}));
}

TEST_F(WorkedRun, PassesTheseColumns) {
    // The column behind the run of the first bytes of the text. The last of the blanks in front
    // of y are dropped: they begin no line.
    const ssize_t columns[] = {-1, 5, 6, 7, 8, 10, 11, -1, -1, -1, 5};
    for (std::size_t n = 0; n <= text.size(); ++n) {
        StringStream os(4096);
        ExpandedOutput output(os);
        MacroExpand(nullptr, &session.m_frame, SubString(text.data(), text.data() + n), 2, 4,
                    output);
        EXPECT_EQ(output.GetColumnPos(), columns[n]) << "behind " << text.substr(0, n);
    }
}

TEST_F(WorkedRun, MapsBackToTheSource) {
    session.Expand(text, 2, 4);
    const ssize_t offsets[] = {0, 1, 2, 3, 4, 4, 5, 6};
    for (ssize_t i = 0; i < 8; ++i)
        EXPECT_EQ(session.SourceOffset(4 + i), offsets[i]) << i;
    EXPECT_EQ(session.SourceOffset(16), 9);
    for (const ssize_t blank : {0, 3, 12, 15})
        EXPECT_EQ(session.m_pieces.MapOutputPositionToAddress(blank), nullptr) << blank;
}

// ---- names -------------------------------------------------------------------------------------

TEST(Name, OfAVariableIsReplaced) {
    Session session;
    session.m_frame.AddVariable(new LSVar("v", "a\nb"));
    EXPECT_EQ(session.Expand("  v;", 0, 2), "    a\n  b;");
    EXPECT_EQ(session.Pieces(),
              (Texts{"indentation 2", "verbatim   ", "calculated v 5", "verbatim ;"}));
}

TEST(Name, OfAValueIsNotExpandedAgain) {
    Session session;
    session.m_frame.AddVariable(new LSVar("v", "w @def \""));
    session.m_frame.AddVariable(new LSVar("w", "1"));
    EXPECT_EQ(session.Expand("v w"), "w @def \" 1");
}

TEST(Name, OfAnEmptyValueLeavesNothing) {
    Session session;
    session.m_frame.AddVariable(new LSVar("v", ""));
    EXPECT_EQ(session.Expand("a v b"), "a  b");
    EXPECT_EQ(session.Expand("v", 0, 4), "");
}

TEST(Name, WithinAChainOfFramesIsFound) {
    Session session;
    VarFrame child(&session.m_frame);
    session.Expand("@def m = outer\n@def n = outer\n");
    session.ExpandIn(child, "@def n = inner\n");
    EXPECT_EQ(session.ExpandIn(child, "m n"), "outer inner");
}

TEST(Name, ThatIsAmbiguousIsAnErrorBehindTheName) {
    Session session;
    FileScopeVarFrame f;
    FileScopeVarFrame g;
    session.ExpandIn(f, "@def name = 1\n");
    session.ExpandIn(g, "@def name = 2\n");
    session.m_frame.AddImport(&f);
    session.m_frame.AddImport(&g);
    EXPECT_EQ(session.ExpandError("a name b"), (LexError{"Ambiguous macro name : name", 6}));
}

// ---- strings -----------------------------------------------------------------------------------

class QuotedString : public testing::Test {
protected:
    Session session;

    QuotedString() {
        session.m_frame.InsertDollarMacro("A", "x");
        session.m_frame.InsertDollarMacro("LONG", "$(A)yz");
        session.m_frame.InsertDollarMacro("Q", "\"");
    }
};

TEST_F(QuotedString, GetsItsDollarMacros) {
    EXPECT_EQ(session.Expand("a  \"<$(A)>\" b"), "a  \"<x>\" b");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim a", "verbatim   ", "calculated \"<$(A)>\" 5", "verbatim  b"}));
}

TEST_F(QuotedString, GetsTheDollarMacrosOfAValueToo) {
    EXPECT_EQ(session.Expand("\"$(LONG)$(LONG)\""), "\"xyzxyz\"");
}

TEST_F(QuotedString, MapsToItsStart) {
    EXPECT_EQ(session.Expand("a \"<$(LONG)>\";"), "a \"<xyz>\";");
    for (ssize_t pos = 2; pos < 9; ++pos)
        EXPECT_EQ(session.SourceOffset(pos), 2) << pos;
    EXPECT_EQ(session.SourceOffset(9), 13);
}

TEST_F(QuotedString, WithoutAKnownUseIsOrdinaryText) {
    for (const std::string_view text :
         {"\"A\"", "\"$(NOSUCH)\"", "\"$A $( A)\"", "\"$\"", "\"\""}) {
        EXPECT_EQ(session.Expand(text), text);
        EXPECT_EQ(session.Pieces(), Texts{"verbatim " + std::string(text)});
    }
}

TEST_F(QuotedString, OfTheRawKindGetsThemToo) {
    EXPECT_EQ(session.Expand(R"-(r"\$(A)" R"$(A)" "\\$(A)")-"), R"-(r"\x" R"x" "\\x")-");
}

TEST_F(QuotedString, IsNotReadAgain) {
    EXPECT_EQ(session.Expand("\"$(Q)$(A)\""), "\"\"x\"");
}

TEST_F(QuotedString, AloneGetsThem) {
    EXPECT_EQ(session.Expand("$(A) '$(A)' /* \"$(A)\" */ _A_"), "$(A) '$(A)' /* \"$(A)\" */ x");
}

TEST_F(QuotedString, IsIndentedLikeOtherText) {
    EXPECT_EQ(session.Expand("  \"$(A)\"", 0, 4), "      \"x\"");
}

TEST_F(QuotedString, InANestedTextGetsThoseOfTheFile) {
    EXPECT_EQ(session.Expand("@def m = \"$(A)\"\nm"), "\"x\"");
}

TEST_F(QuotedString, WithoutAFileScopeIsOrdinaryText) {
    VarFrame frame(nullptr);
    EXPECT_EQ(session.ExpandIn(frame, "\"$(A)\""), "\"$(A)\"");
}

// ---- macro comments ----------------------------------------------------------------------------

struct Case {
    std::string_view text;
    std::string_view output;
};

TEST(MacroComment, VanishesWithItsLine) {
    const Case cases[] = {
        {"@// note",                  ""      },
        {"@// note\n",                ""      },
        {"a\n  @// note\nb",          "a\nb"  },
        {"a\n  @// note\n\n \t\n\nb", "a\nb"  },
        {"a\n  @// note\n\n  b",      "a\n  b"},
        {"a\n\t@/* x\ny */\nb",       "a\nb"  },
        {"a  @// note\nb",            "ab"    },
        {"a  @// note\n\n  b",        "a  b"  },
        {"  @/* note */ x",           "x"     },
        {"a  @/* note */\t b",        "ab"    },
        {"a @/**/@/**/ b",            "ab"    },
        {"f(@/* m */)",               "f()"   },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(MacroComment, TakesTheIndentationOfTheNextLine) {
    EXPECT_EQ(Expand("a\n    @// note\n    b", 4), "a\nb");
    EXPECT_EQ(Expand("a\n    @// note\n\n      b", 4), "a\n  b");
    EXPECT_EQ(Expand("a @// note\n    b", 4), "ab");
}

TEST(MacroComment, LeavesACarriageReturnThatItDoesNotHold) {
    EXPECT_EQ(Expand("@// note\r\nb"), "b");
    EXPECT_EQ(Expand("a\r\n  @/* note */\r\nb"), "a\r\nb");
    EXPECT_EQ(Expand("@/* note */ \r\nb"), "\r\nb");
}

TEST(MacroComment, HasNoBlankBehindItsAt) {
    EXPECT_EQ(Expand("a @ // note\nb"), "a @ // note\nb");
}

TEST(MacroComment, HidesWhatItHolds) {
    EXPECT_EQ(Expand("@// @def m = 1\nm"), "m");
}

// ---- "@" ---------------------------------------------------------------------------------------

TEST(DoubleAt, WritesNothing) {
    Session session;
    session.Expand("@def a = 1\n");
    const Case cases[] = {
        {"b@@c",        "bc"  },
        {"a@@b",        "1b"  },
        {"b@@a",        "b1"  },
        {"ab",          "ab"  },
        {"a@@a@@a",     "111" },
        {"b  @@c",      "b  c"},
        {"b@@  c",      "b  c"},
        {"b@ @c",       "bc"  },
        {"b@ // x\n@c", "bc"  },
        {"@@",          ""    },
        {"@@@",         "@"   },
        {"@@@@",        ""    },
        {"b@@\nc",      "b\nc"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(session.Expand(text), output) << text;
}

TEST(At, WithNoDirectiveIsOrdinaryText) {
    const std::string_view texts[] = {
        "@",           " @ ",       "a@",      "a@b",    "@name", "@ name", "@ /* x */ name",
        "@\nname",     "@1",        "@\"s\"",  "@$",     "@$x",   "@.",     "a@b.c",
        "@{",          "@elseif x", "@elseif", "@DEF m", "@Def",  "@defx",  "@;\n@",
        "@define m 1",
    };
    for (const std::string_view text : texts)
        EXPECT_EQ(Expand(text), text);
}

TEST(At, TakesTheNextTokenWithIt) {
    Session session;
    session.Expand("@def m = 1\n");
    session.m_frame.InsertDollarMacro("A", "x");
    EXPECT_EQ(session.Expand("@m m @\"$(A)\" \"$(A)\" @elseif m"),
              "@m 1 @\"$(A)\" \"x\" @elseif 1");
}

TEST(At, WithADollarIsOrdinaryTextWithoutAHandler) {
    EXPECT_EQ(Expand("@$A = \"x\""), "@$A = \"x\"");
}

TEST(At, WithADollarIsOrdinaryTextInANestedText) {
    Session session;
    MemoryFiles files;
    session.m_importHandler = &files;
    EXPECT_EQ(session.Expand("@def m = @$A = \"x\"\nm"), "@$A = \"x\"");
    EXPECT_EQ(session.m_frame.FindDollarMacro("A"), nullptr);
    session.Expand("@$A = \"x\"");
    EXPECT_NE(session.m_frame.FindDollarMacro("A"), nullptr);
}

TEST(At, MayStandApartFromItsName) {
    EXPECT_EQ(Expand("@ def m = 1\nm"), "1");
    EXPECT_EQ(Expand("@\n\n  def m = 1\nm"), "1");
    EXPECT_EQ(Expand("@ /* x */ def m = 1\nm"), "1");
    EXPECT_EQ(Expand("@ // x\n def m = 1\nm"), "1");
}

TEST(At, StandsAloneForTheExtentOfItsDirective) {
    Session session;
    session.Expand("ab  @ str(xyz);");
    EXPECT_EQ(session.m_output, "ab  \"xyz\";");
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim ab", "verbatim   ", "calculated @ 5", "verbatim ;"}));
    for (ssize_t pos = 4; pos < 9; ++pos)
        EXPECT_EQ(session.SourceOffset(pos), 4) << pos;
    EXPECT_EQ(session.SourceOffset(9), 14);
}

TEST(At, WithANameThatTheHostHasDefinedIsItsValue) {
    Session session;
    session.m_frame.AddVariable(new LSVar("@date", "today"));
    EXPECT_EQ(session.Expand("on  @date; @ date"), "on  today; today");
    EXPECT_EQ(session.Pieces(), (Texts{"verbatim on", "verbatim   ", "calculated @ 5", "verbatim ;",
                                       "verbatim  ", "calculated @ 5"}));
    EXPECT_EQ(session.Expand("date"), "date");
    EXPECT_EQ(session.Expand("@def m = @date\nm"), "today") << "in a nested text";
}

TEST(At, LooksForAHostsNameInNoImport) {
    Session session;
    FileScopeVarFrame f;
    f.AddVariable(new LSVar("@date", "today"));
    session.m_frame.AddImport(&f);
    EXPECT_EQ(session.Expand("@date"), "@date");
}

TEST(At, ADirectiveComesBeforeAHostsName) {
    Session session;
    session.m_frame.AddVariable(new LSVar("@def", "value"));
    EXPECT_EQ(session.Expand("@def m = 1\nm"), "1");
}

// ---- directives --------------------------------------------------------------------------------

TEST(Directive, ThatWritesKeepsTheBlanksInFrontOfIt) {
    const Case cases[] = {
        {"a \t@str(x)",       "a \t\"x\"" },
        {"a \t@strx(x)",      "a \t\"x\"" },
        {"a \t@strW(x)",      "a \tL\"x\""},
        {"a \t@strxW(x)",     "a \tL\"x\""},
        {"a \t@quote(x)",     "a \tx"     },
        {"a \t@unstr(\"x\")", "a \tx"     },
        {"a \t@scope { x }",  "a \t x "   },
        {"a \t@[x]",          "a \tx"     },
        {"a \t@@x",           "a \tx"     },
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
}

TEST(Directive, ThatWritesNothingDropsTheBlanksInFrontOfIt) {
    const Case cases[] = {
        {"a \t@def m = x",                  "a" },
        {"a \t@def m = {x} b",              "ab"},
        {"a \t@nakeddef m = {x} b",         "ab"},
        {"a \t@defpython m = {x} b",        "ab"},
        {"a \t@def + m = {x} b",            "ab"},
        {"a \t@assertfails(@fail(\"\")) b", "ab"},
        {"a \t@print() b",                  "ab"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(Expand(text), output) << text;
    Session session;
    VarFrame child(&session.m_frame);
    EXPECT_EQ(session.ExpandIn(child, "a \t@exportdef m = {x} b"), "ab");
}

TEST(Directive, NeedsAnImportHandlerToImport) {
    EXPECT_EQ(ExpandError("a @import \"x\""), (LexError{"@import statement not allowed here", 3}));
    EXPECT_EQ(ExpandError("a @ importpath \"x\""),
              (LexError{"@importpath statement not allowed here", 4}));
}

TEST(Directive, ImportsInTheOutermostTextOnly) {
    Session session;
    MemoryFiles files;
    files.m_files["x"] = "@def m = 1\n";
    session.m_importHandler = &files;
    EXPECT_EQ(session.Expand("@import \"x\"\nm"), "@import \"x\"\n1");
    EXPECT_EQ(session.ExpandError("@def k = @import \"x\"\nk"),
              (LexError{"@import statement not allowed here\n    invoking macro k", 10}));
    EXPECT_EQ(session.ExpandError("@def k = @importpath \"x\"\nk"),
              (LexError{"@importpath statement not allowed here\n    invoking macro k", 10}));
}

TEST(Directive, ImportsInNoNestedTextOfAnyKind) {
    const std::string_view texts[] = {
        "@scope { IMPORT }",
        "@if (true) { IMPORT }",
        "@if (IMPORT true) {}",
        "@for (x in [1]) { IMPORT }",
        "@for (x in [IMPORT]) {}",
        "@let bool go = { true } @while (go) { @let go = { false } IMPORT }",
        "@[IMPORT]",
        "@[@quote(IMPORT)]",
        "@(IMPORT)",
        "@str(IMPORT)",
        "@print(IMPORT)",
        "@let string s := { IMPORT }",
        "@let string s = { IMPORT }",
        "@def m = { IMPORT }\nm",
        "@def m(a) = { a }\nm(IMPORT)",
        "@def m(int a) = { a }\nm(IMPORT)",
        "@def int m = { IMPORT }\nm",
        "@def m(g()) = { g(IMPORT) }\nm(x)",
        "@def m(g()) = { g(1) }\nm(IMPORT)",
    };
    MemoryFiles files;
    files.m_files["x"] = "";
    for (const std::string_view text : texts) {
        std::string nested(text);
        nested.replace(nested.find("IMPORT"), 6, "@import \"x\"");
        Session session;
        session.m_importHandler = &files;
        const std::string message = session.ExpandError(nested).description;
        EXPECT_EQ(message.substr(0, message.find('\n')), "@import statement not allowed here")
            << text;
    }
}

TEST(Directive, ElseAloneIsAnError) {
    EXPECT_EQ(ExpandError("a @else { x }"), (LexError{"@else with no matching @if directive", 3}));
    EXPECT_EQ(ExpandError("@ else"), (LexError{"@else with no matching @if directive", 2}));
}

TEST(Directive, ElseifAloneIsOrdinaryText) {
    EXPECT_EQ(Expand("@elseif (x) { y }"), "@elseif (x) { y }");
}

// ---- the members -------------------------------------------------------------------------------

// An expander on a text, with its output.
class Expander : public testing::Test {
protected:
    FileScopeVarFrame frame;
    StringStream os{4096};
    ExpandedOutput output{os};

    MacroExpander Make(SubString text, ssize_t srcIndent = 0, ssize_t dstIndent = 0) {
        return MacroExpander(nullptr, &frame, text, srcIndent, dstIndent, output);
    }
    std::string Text() { return Str(os.GetString()); }
};

TEST_F(Expander, StartsInFrontOfItsText) {
    MemoryFiles files;
    const SubString text("text");
    const MacroExpander expander(&files, &frame, text, 3, 5, output);
    EXPECT_EQ(expander.m_importHandler, &files);
    EXPECT_EQ(expander.m_vf, &frame);
    EXPECT_EQ(&expander.m_output, &output);
    EXPECT_EQ(expander.m_srcIndent, 3);
    EXPECT_EQ(expander.m_dstIndent, 5);
    EXPECT_EQ(expander.m_origStr.m_p1, text.m_p1);
    EXPECT_EQ(expander.m_origStr.m_p2, text.m_p2);
    EXPECT_EQ(expander.m_str.m_p1, text.m_p1);
    EXPECT_EQ(expander.m_str.m_p2, text.m_p2);
    EXPECT_EQ(expander.m_writePos, text.m_p1);
    EXPECT_EQ(expander.m_startDirectivePos, nullptr);
    EXPECT_EQ(expander.m_endDirectivePos, nullptr);
    EXPECT_EQ(expander.m_text, nullptr);
}

TEST_F(Expander, ReadTokenPassesOverComments) {
    MacroExpander expander = Make(" /* x */ a // y\n @/* z */");
    EXPECT_EQ(expander.ReadToken(), LSToken(TOKEN_IDENTIFIER, "a"));
    EXPECT_EQ(expander.ReadToken(), LSToken(TOKEN_PREPROC_COMMENT, "@/* z */"));
    EXPECT_EQ(expander.ReadToken(), TOKEN_END);
}

TEST_F(Expander, AddsVariablesToItsFrame) {
    VarFrame child(&frame);
    MacroExpander expander(nullptr, &child, "", 0, 0, output);
    auto* var = new LSVar("v", "1");
    expander.AddVariable(var);
    EXPECT_EQ(child.m_localVariables.m_first, var);
    EXPECT_EQ(frame.m_localVariables.m_first, nullptr);
    EXPECT_EQ(expander.FindVariable("v"), var);
    EXPECT_EQ(expander.FindVariable("w"), nullptr);
}

TEST_F(Expander, WritesAtTheColumnOfTheOutputOrElseAtItsIndent) {
    MacroExpander expander = Make("", 0, 6);
    EXPECT_EQ(expander.GetOutputPos(), 6);
    expander.WriteSubStringFromSourceFile("ab");
    EXPECT_EQ(expander.GetOutputPos(), 8);
    expander.WriteSubStringFromSourceFile("\n");
    EXPECT_EQ(expander.GetOutputPos(), 6);
    EXPECT_EQ(Text(), "      ab\n");
}

TEST_F(Expander, CalculatedTextComesFromTheCurrentTokenOrFromWhereItIsSaid) {
    MacroExpander expander = Make("abcdef");
    const char* text = expander.m_origStr.m_p1;
    expander.m_startDirectivePos = text + 1;
    expander.m_endDirectivePos = text + 3;
    expander.WriteCalculatedSubString("x");
    expander.WriteCalculatedSubString("y", SubString(text + 4, text + 5));
    ASSERT_EQ(output.m_pieces.m_pieces.size(), 2);
    EXPECT_EQ(output.m_pieces.m_pieces[0].in, "bc");
    EXPECT_EQ(output.m_pieces.m_pieces[1].in, "e");
    EXPECT_EQ(Text(), "xy");
}

TEST_F(Expander, AdvanceWritePosWritesOrDrops) {
    MacroExpander expander = Make("abcdef");
    const char* text = expander.m_origStr.m_p1;
    expander.AdvanceWritePos(text + 2, true);
    EXPECT_EQ(expander.m_writePos, text + 2);
    expander.AdvanceWritePos(text + 4, false);
    EXPECT_EQ(expander.m_writePos, text + 4);
    expander.AdvanceWritePos(text + 6, true);
    EXPECT_EQ(Text(), "abef");
    EXPECT_EQ(expander.m_str.m_p1, text) << "the scan position has nothing to do with it";
}

struct WhiteSpaceAfter {
    std::string_view text;
    ssize_t srcIndent;
    std::string_view rest;
};

TEST_F(Expander, ScanOverWhiteSpaceAfterDirectiveDropsTheRestOfTheLine) {
    const WhiteSpaceAfter cases[] = {
        {"",             4, ""     },
        {"x",            4, "x"    },
        {" \t x",        4, "x"    },
        {" \t ",         4, ""     },
        {"\n",           4, ""     },
        {" \t \nx",      4, "x"    },
        {"\n\n \n\nx",   0, "x"    },
        {"\n  x",        0, "  x"  },
        {"\n  x",        2, "x"    },
        {"\n   x",       2, " x"   },
        {"\n\n   \n  x", 1, " x"   },
        {"\n\tx",        4, "x"    },
        {"\n\tx",        3, "\tx"  },
        {"\n \n",        4, ""     },
        {"\n  ",         4, ""     },
        {"\n  ",         1, " "    },
        {" \r\nx",       4, "\r\nx"},
        {"\n\r\nx",      4, "\r\nx"},
        {"\n  \r\nx",    4, "\r\nx"},
        {"\v\nx",        4, "\v\nx"},
    };
    for (const WhiteSpaceAfter& c : cases) {
        const HeapText text(c.text);
        MacroExpander expander = Make(text.View(), c.srcIndent);
        expander.ScanOverWhiteSpaceAfterDirective();
        EXPECT_EQ(Str(expander.m_str), c.rest) << testing::PrintToString(c.text);
        EXPECT_EQ(expander.m_writePos, expander.m_str.m_p1);
        EXPECT_EQ(Text(), "");
    }
}

// ---- entry points ------------------------------------------------------------------------------

TEST(MacroExpand, ReplacesTheResult) {
    FileScopeVarFrame frame;
    xstring result("old");
    MacroExpand(nullptr, &frame, "a\nb", 0, 2, result);
    EXPECT_EQ(Str(result), "  a\n  b");
}

TEST(MacroExpand, GivesThePieces) {
    FileScopeVarFrame frame;
    const SubString text("a b");
    xstring result;
    OutputPieces pieces;
    MacroExpand(nullptr, &frame, text, 0, 2, result, pieces);
    EXPECT_EQ(Str(result), "  a b");
    ASSERT_EQ(pieces.m_pieces.size(), 3);
    EXPECT_EQ(pieces.m_pieces[0].in.m_p1, nullptr);
    EXPECT_EQ(pieces.m_pieces[0].out, 2);
    EXPECT_EQ(pieces.m_pieces[1].in.m_p1, text.m_p1);
    EXPECT_EQ(pieces.m_pieces[2].in.m_p2, text.m_p2);
}

TEST(MacroExpand, ThatFailsLeavesResultAndPieces) {
    FileScopeVarFrame frame;
    xstring result("old");
    OutputPieces pieces;
    pieces.push_back(OutputPiece{SubString(), 7});
    const LexError error{"Bad token \x01", 2};
    const xchar* text = "a \x01";
    EXPECT_EQ(LexErrorOf(text, [&] { MacroExpand(nullptr, &frame, text, 0, 0, result); }), error);
    EXPECT_EQ(LexErrorOf(text, [&] { MacroExpand(nullptr, &frame, text, 0, 0, result, pieces); }),
              error);
    EXPECT_EQ(Str(result), "old");
    EXPECT_EQ(pieces.size(), 7);
}

TEST(MacroExpand, GoesOnWhereTheOutputStands) {
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(os);
    MacroExpand(nullptr, &frame, "a\nb", 0, 2, output);
    MacroExpand(nullptr, &frame, "c\nd\n", 0, 4, output);
    MacroExpand(nullptr, &frame, "e", 0, 6, output);
    EXPECT_EQ(Str(os.GetString()), "  a\n  bc\n    d\n      e");
    EXPECT_EQ(output.GetColumnPos(), 7);
    EXPECT_EQ(output.size(), output.m_size);
}

// Ordinary text is written in long runs. Whoever looks at the stream in between finds it all.
TEST(MacroExpand, HasWrittenWhatStandsInFrontOfAnImport) {
    class Handler : public ImportHandler {
    public:
        StringStream m_os{4096};
        Texts m_seen;
        bool HandleImport(VarFrame*, const xstring&, const xchar*) override {
            m_seen.push_back(Str(m_os.GetString()));
            return true;
        }
    };
    Handler handler;
    FileScopeVarFrame frame;
    ExpandedOutput output(handler.m_os);
    MacroExpand(&handler, &frame, "a b\n c  @import \"x\" d @import (\"y\")", 0, 0, output);
    EXPECT_EQ(handler.m_seen, (Texts{"a b\n c", "  @import \"x\" d@import \"y\""}));
}

TEST(MacroExpand, HasWrittenWhatStandsInFrontOfAPrint) {
    FileScopeVarFrame frame;
    testing::internal::CaptureStdout();
    ExpandedOutput output(xcout);
    MacroExpand(nullptr, &frame,
                "@def m = @print(1)\n@def int t = { @print(2) 3 }\n@def f(int a) = a\n"
                "a b m c d t e f(@print(4) 5) g @[@print(6)] h",
                0, 0, output);
    xcout.flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a b 1 c d 23 e 45 g 6 h");
}

TEST(MacroExpand, LeavesItsDefinitionsInTheFrame) {
    Session session;
    VarFrame child(&session.m_frame);
    session.ExpandIn(child, "@def m = 1\n");
    EXPECT_EQ(session.Expand("m"), "m");
    EXPECT_EQ(session.ExpandIn(child, "m"), "1");
}

TEST(ImportHandler, DoesNotSupportImportPathsUnlessItSaysSo) {
    class Handler : public ImportHandler {
        bool HandleImport(VarFrame*, const xstring&, const xchar*) override { return true; }
    };
    Handler handler;
    EXPECT_FALSE(handler.HandleImportPath("path", nullptr));
}

// ---- carriage returns --------------------------------------------------------------------------

TEST(CarriageReturn, AndLineFeedInFrontOfAMacroGoWithItsName) {
    Session session;
    session.Expand("@def m = 1\n");
    EXPECT_EQ(session.Expand("a\r\n  m"), "a1");
    EXPECT_EQ(session.Expand("a \r\n  m"), "a 1");
    EXPECT_EQ(session.Expand("a\r\nb m"), "a\r\nb 1");
}

TEST(CarriageReturn, BehindAStatementStays) {
    EXPECT_EQ(Expand("a\r\n@def m = 1\r\nm"), "a1");
    EXPECT_EQ(Expand("@def m = 1\r\nx"), "\r\nx");
    EXPECT_EQ(Expand("@def m = { 1 }\r\n\r\nx"), "\r\n\r\nx");
}

TEST(CarriageReturn, InFrontOfAStatementGoesWithIt) {
    EXPECT_EQ(Expand("a\r\n  @def m = 1"), "a");
    EXPECT_EQ(Expand("a\r\n  @str(x)"), "a\"x\"");
}

TEST(CarriageReturn, DoesNotReachABody) {
    EXPECT_EQ(Expand("@def m = 1\r\n@@m;"), "1;") << "the body ends in front of the line end";
}

}  // namespace
}  // namespace vorn_test
