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

}  // namespace
}  // namespace vorn_test
