#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/MacroExpand.h"
#include "tests/support/Text.h"

namespace vorn {
namespace {

using vorn_test::HeapText;
using vorn_test::LexError;
using vorn_test::LexErrorOf;
using vorn_test::Str;

// One call of the handler: what was called, with which path, and the text that errorpos names.
struct Call {
    std::string operation;
    std::string path;
    std::string at;

    bool operator==(const Call&) const = default;
};

void PrintTo(const Call& call, std::ostream* os) {
    *os << call.operation << ' ' << call.path << " at " << call.at;
}

// Imports nothing, and remembers the calls.
class Recorder : public ImportHandler {
public:
    bool m_succeeds = true;
    std::vector<Call> m_calls;
    std::vector<VarFrame*> m_frames;
    const char* m_textEnd = nullptr;

    bool HandleImportPath(const xstring& importPath, const xchar* errorpos) override {
        m_calls.push_back({"path", Str(importPath), TokenAt(errorpos)});
        return m_succeeds;
    }

    bool HandleImport(VarFrame* vf, const xstring& importPath, const xchar* errorpos) override {
        m_calls.push_back({"import", Str(importPath), TokenAt(errorpos)});
        m_frames.push_back(vf);
        return m_succeeds;
    }

private:
    std::string TokenAt(const xchar* pos) const {
        SubString rest(pos, m_textEnd);
        return Str(LsScanToken(rest, false).m_str);
    }
};

// A handler of files that knows no search paths.
class ImportsOnly : public ImportHandler {
public:
    bool HandleImport(VarFrame*, const xstring&, const xchar*) override { return true; }
};

// The texts expanded in one file scope.
class Scope {
public:
    FileScopeVarFrame m_frame;
    Recorder m_recorder;
    ImportHandler* m_handler = &m_recorder;

    std::string Expand(std::string_view text) {
        const SubString source = m_texts.emplace_back(text).View();
        m_recorder.m_textEnd = source.m_p2;
        xstring result;
        MacroExpand(m_handler, &m_frame, source, 0, 0, result);
        return Str(result);
    }

    LexError ErrorOf(std::string_view text) {
        const HeapText& source = m_texts.emplace_back(text);
        m_recorder.m_textEnd = source.end();
        return LexErrorOf(source.begin(), [&] {
            xstring result;
            MacroExpand(m_handler, &m_frame, source.View(), 0, 0, result);
        });
    }

private:
    std::deque<HeapText> m_texts;
};

struct Expansion {
    std::string_view text;
    std::string_view output;
};

struct Failure {
    std::string_view text;
    std::string_view message;
    ssize_t offset;
};

template <class Rows>
void ExpectExpansions(const Rows& rows) {
    for (const Expansion& row : rows)
        EXPECT_EQ(Scope().Expand(row.text), row.output) << row.text;
}

template <class Rows>
void ExpectErrors(const Rows& rows) {
    for (const Failure& row : rows)
        EXPECT_EQ(Scope().ErrorOf(row.text), (LexError{std::string(row.message), row.offset}))
            << row.text;
}

// ---- @import -----------------------------------------------------------------------------------

TEST(Import, StaysInTheOutputInAFormThatAParserCanRead) {
    const Expansion rows[] = {
        {R"(@import "a.h")",            R"(@import "a.h")"         },
        {"x  @import \"a.h\" y\n",      "x  @import \"a.h\" y\n"   },
        {R"(@ import /* c */ "a.h")",   R"(@ import /* c */ "a.h")"},
        {R"(@import r"a\b")",           R"(@import r"a\b")"        },
        {R"(x  @import("a" + ".h") y)", R"(x@import "a.h" y)"      },
        {R"(  @import('a.h'))",         R"(@import "a.h")"         },
        {R"(@import("a\"b"))",          R"(@import "a"b")"         }, // nothing is escaped
    };
    ExpectExpansions(rows);
}

TEST(Import, HandsThePathToTheHandlerWithThePlaceBehindItsName) {
    struct {
        std::string_view text;
        Call call;
    } const rows[] = {
        {R"(@import "a.h")",          {"import", "a.h", R"("a.h")"}    },
        {R"(@import /* c */ "a\tb")", {"import", "a\tb", R"("a\tb")"}  },
        {R"(@import r"a\tb")",        {"import", "a\\tb", R"(r"a\tb")"}},
        {R"(@import("a" + ".h"))",    {"import", "a.h", "("}           },
        {R"(@import (("a")))",        {"import", "a", "("}             },
        {R"-(@import "$(A)")-",       {"import", "$(A)", R"-("$(A)")-"}},
    };
    for (const auto& row : rows) {
        Scope scope;
        scope.m_frame.InsertDollarMacro("A", "x");
        scope.Expand(row.text);
        EXPECT_EQ(scope.m_recorder.m_calls, std::vector<Call>{row.call}) << row.text;
        EXPECT_EQ(scope.m_recorder.m_frames, std::vector<VarFrame*>{&scope.m_frame}) << row.text;
    }
}

TEST(Import, ExpandsItsExpressionInTheFrame) {
    Scope scope;
    EXPECT_EQ(scope.Expand("@def dir = \"d/\"\n@def file(x) = dir + x + '.h'\n"
                           "@import(file(\"a\"))"),
              "@import \"d/a.h\"");
    EXPECT_EQ(scope.m_recorder.m_calls, (std::vector<Call>{
                                            {"import", "d/a.h", "("}
    }));
}

TEST(Import, TakesEffectBeforeTheTextBehindIt) {
    class Definer : public ImportHandler {
    public:
        bool HandleImport(VarFrame* vf, const xstring&, const xchar*) override {
            vf->AddVariable(new LSVar("m", "imported"));
            return true;
        }
    } definer;
    Scope scope;
    scope.m_handler = &definer;
    EXPECT_EQ(scope.Expand("m @import \"a\" m"), "m @import \"a\" imported");
}

TEST(Import, FailsWhereNoPathStands) {
    const Failure rows[] = {
        {"@import 'a.h'", "Quoted string expected after 'import' when read 'a.h'", 8 },
        {"@import a",     "Quoted string expected after 'import' when read a",     8 },
        {"@import",       "Quoted string expected after 'import' when read EOS",   7 },
        {" @ import  [",  "Quoted string expected after 'import' when read [",     11},
    };
    ExpectErrors(rows);
}

TEST(Import, FailsInItsExpressionAtTheDirective) {
    // clang-format off
    const Failure rows[] = {
        {"x @import(1)", "No implicit conversion from int64 to string\n    in @import(1)", 2},
        {"x @import()", "Unexpected ) after ( in expression\n    in @import()", 2},
        {"@import(\"a\" \"b\")",
         "Expected ) after \"a\" when read \"b\" in expression\n    in @import(\"a\" \"b\")", 0},
    };
    // clang-format on
    ExpectErrors(rows);
}

TEST(Import, FailsAtThePathWhereTheHandlerDoes) {
    const Failure rows[] = {
        {R"(@import "a.h")",        "Can't import file: a.h",    8 },
        {R"(x @import r"a\b")",     R"(Can't import file: a\b)", 10},
        {R"(@import ("a" + ".h"))", "Can't import file: a.h",    8 },
    };
    for (const Failure& row : rows) {
        Scope scope;
        scope.m_recorder.m_succeeds = false;
        EXPECT_EQ(scope.ErrorOf(row.text), (LexError{std::string(row.message), row.offset}));
    }
}

TEST(Import, LetsAnErrorOfTheHandlerPass) {
    class Thrower : public ImportHandler {
    public:
        bool HandleImport(VarFrame*, const xstring&, const xchar* errorpos) override {
            throw LexScannerException("the handler's own", errorpos);
        }
        bool HandleImportPath(const xstring&, const xchar* errorpos) override {
            throw LexScannerException("the handler's own, too", errorpos);
        }
    } thrower;
    Scope scope;
    scope.m_handler = &thrower;
    EXPECT_EQ(scope.ErrorOf("@import \"a\""), (LexError{"the handler's own", 8}));
    EXPECT_EQ(scope.ErrorOf("@importpath(\"a\")"), (LexError{"the handler's own, too", 11}));
}

// ---- @importpath -------------------------------------------------------------------------------

TEST(ImportPath, VanishesWithTheBlanksInFrontOfIt) {
    const Expansion rows[] = {
        {"@importpath \"x\"",         ""      },
        {"a  @importpath \"x\" b\nc", "a b\nc"},
        {"@importpath(\"x\")\n\nb",   "\n\nb" }, // the line end stays
    };
    ExpectExpansions(rows);
}

TEST(ImportPath, HandsThePathToTheHandlerWithThePlaceBehindItsName) {
    Scope scope;
    scope.Expand("@importpath \"a\\tb\" @importpath(\"c\" + \"/d\") @importpath r\"e\\f\"");
    EXPECT_EQ(scope.m_recorder.m_calls, (std::vector<Call>{
                                            {"path", "a\tb", "\"a\\tb\""},
                                            {"path", "c/d",  "("        },
                                            {"path", "e\\f", "r\"e\\f\""},
    }));
}

TEST(ImportPath, FailsWhereNoPathStands) {
    // clang-format off
    const Failure rows[] = {
        {"@importpath 'a'", "Quoted string expected after 'importpath' when read 'a'", 12},
        {"@importpath", "Quoted string expected after 'importpath' when read EOS", 11},
        {"@importpath(1)", "No implicit conversion from int64 to string\n    in @importpath(1)", 0},
    };
    // clang-format on
    ExpectErrors(rows);
}

TEST(ImportPath, IsNotSupportedByAHandlerOfFilesAlone) {
    ImportsOnly handler;
    Scope scope;
    scope.m_handler = &handler;
    EXPECT_EQ(scope.ErrorOf("@importpath \"x\""),
              (LexError{"@importpath directive not supported", 12}));
    EXPECT_EQ(scope.ErrorOf("@importpath(\"x\")"),
              (LexError{"@importpath directive not supported", 11}));
    EXPECT_EQ(scope.Expand("@import \"x\""), "@import \"x\"");
}

// ---- without a handler -------------------------------------------------------------------------

TEST(ImportDirectives, AreRefusedWithoutAHandler) {
    Scope scope;
    scope.m_handler = nullptr;
    EXPECT_EQ(scope.ErrorOf("x @ import \"a\""),
              (LexError{"@import statement not allowed here", 4}));
    EXPECT_EQ(scope.ErrorOf("x @importpath \"a\""),
              (LexError{"@importpath statement not allowed here", 3}));
}

TEST(ImportDirectives, AreRefusedInNestedTexts) {
    Scope scope;
    EXPECT_EQ(scope.ErrorOf("@if (true) { @import \"a\" }"),
              (LexError{"@import statement not allowed here", 14}));
    EXPECT_EQ(scope.ErrorOf("@def m = @importpath \"a\"\nm"),
              (LexError{"@importpath statement not allowed here\n    invoking macro m", 10}));
    EXPECT_TRUE(scope.m_recorder.m_calls.empty());
}

// ---- @relativepath -----------------------------------------------------------------------------

TEST(RelativePath, GivesThePathFromTheFirstToTheSecondInQuotes) {
    const Expansion rows[] = {
        {R"(@relativepath("a/b", "a/c/d.h"))",       R"("../c/d.h")"  },
        {R"(@relativepath("a", "a"))",               R"(".")"         },
        {R"(@relativepath("a", "a/b"))",             R"("b")"         },
        {R"(@relativepath("a/b", "a"))",             R"("..")"        },
        {R"(@relativepath("/a", "b"))",              R"("b")"         },
        {R"(@relativepath("a/./x/../b/", "a\\c"))",  R"("../c")"      }, // normalised first
        {R"(x  @relativepath("a" + "/b", ("c")) y)", R"(x"../../c" y)"},
        {R"(@relativepath("a", "a/q\"\n"))",         R"("q\"\n")"     }, // escaped as a literal
        {"@relativepath('a', 'b')\n\nx",             "\"../b\"\n\nx"  },
    };
    ExpectExpansions(rows);
}

TEST(RelativePath, NeedsNoHandlerAndWorksInNestedTexts) {
    Scope scope;
    scope.m_handler = nullptr;
    EXPECT_EQ(scope.Expand("@def rel(p) = @relativepath(\"a\", p)\nrel(\"a/b\")"), "\"b\"");
}

TEST(RelativePath, ReportsTheFirstArgumentBeforeItLooksAtTheSecond) {
    // clang-format off
    const Failure rows[] = {
        {"@relativepath 1", "( expected after @relativepath when read 1", 14},
        {"@relativepath", "( expected after @relativepath when read EOS", 13},
        {R"(@relativepath("a"))", "Comma expected in @relativepath directive when read )", 17},
        {R"(@relativepath("a","b","c"))", ") expected  in @relativepath directive when read ,", 21},
        {R"(x @relativepath(1,"b","c"))",
         "No implicit conversion from int64 to string\n    in @relativepath(1)", 2},
        {R"(x @relativepath("a",2))",
         "No implicit conversion from int64 to string\n    in @relativepath(2)", 2},
    };
    // clang-format on
    ExpectErrors(rows);
}

// ---- @$ ----------------------------------------------------------------------------------------

TEST(DollarDef, DefinesADollarMacroAndAVariableAndVanishes) {
    const Expansion rows[] = {
        {R"-(@$A = "x" "$(A)" _A_)-",           R"-( "x" x)-"             },
        {R"-(a  @$A = ("x" + "y") "$(A)")-",    R"-(a   "xy")-"           },
        {"@$A=r\"b\\c\"\n\n\"$(A)\"",           "\n\n\"b\\c\""            }, // line ends stay
        {R"-(@$A = "x" @$B = "$(A)y" "$(B)")-", R"-(  "xy")-"             },
        {R"-("$(A)" @$A = "x" '$(A)' $(A))-",   R"-("$(A)"  '$(A)' $(A))-"}, // "..." alone
        {R"-(@$A = "x" @$A = "y" "$(A)" _A_)-", R"-(  "y" y)-"            },
        {R"-(@ $ /* c */ A = "x" "$(A)$(A)")-", R"-( "xx")-"              },
    };
    ExpectExpansions(rows);
}

TEST(DollarDef, StoresItsValueWithTheUsesThatStandInIt) {
    Scope scope;
    scope.Expand(R"-(@$A = "x" @$B = "$(A)")-");
    EXPECT_EQ(Str(*scope.m_frame.FindDollarMacro("B")), "$(A)");
    EXPECT_EQ(scope.Expand(R"-(@$A = "y" "$(B)")-"), R"( "y")");
}

TEST(DollarDef, IsOrdinaryTextWithoutAHandler) {
    Scope scope;
    EXPECT_EQ(scope.Expand("@def m = @$A = \"x\"\nm"), "@$A = \"x\"");  // so are nested texts
    scope.m_handler = nullptr;
    EXPECT_EQ(scope.Expand("a @$A = \"x\" \"$(A)\""), "a @$A = \"x\" \"$(A)\"");
    EXPECT_EQ(scope.m_frame.FindDollarMacro("A"), nullptr);
}

TEST(DollarDef, FailsAtTheFirstTokenThatDoesNotFit) {
    const Failure rows[] = {
        {"@$1 = \"x\"", "Identifier expected after @let when read 1",                2},
        {"@$",          "Identifier expected after @let when read EOS",              2},
        {"@$A \"x\"",   "= expected in definition of macro A when read \"x\"",       4},
        {"@$A = 'x'",   "Quoted string expected after $A definition when read 'x'",  6},
        {"@$A =",       "Quoted string expected after $A definition when read EOS",  5},
        {" @$A = (1)",  "No implicit conversion from int64 to string\n    in @$(1)", 1},
    };
    ExpectErrors(rows);
}

}  // namespace
}  // namespace vorn
