// What the loop of MacroExpander.cpp does with ordinary text, names and strings.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/MacroExpand.h"
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
