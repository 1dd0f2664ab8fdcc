#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/Mpfw.h"
#include "tests/support/Text.h"

// The constructs of a project file. How files are read and expanded: see MpfwParserFiles_test.

namespace vorn {
namespace {

using vorn_test::HeapText;
using vorn_test::LexError;
using vorn_test::LexErrorOf;
using vorn_test::Str;

// A parser on a text, in a project where A is a/a, B leads to A, and these paths resolve:
// known.txt to dir/known.txt, which has been added, and late.txt to a file that has not.
class Parser : public MpfwParser {
public:
    explicit Parser(std::string_view text) : MpfwParser(m_ownFrame), m_text(text) {
        m_frame.m_vf.InsertDollarMacro("A", "a/a");
        m_frame.m_vf.InsertDollarMacro("B", "$(A)/b");
        m_known->m_localPath = "dir/known.txt";
        m_files.AddSrcFile(m_known);
        Init(m_text.View());
    }

    MpfwSourceFileList m_files;
    MpfwFrame m_ownFrame{m_files};
    MpfwSourceFile* m_known = new MpfwSourceFile;
    std::vector<MpfwSourceFile*> m_processed;
    std::vector<std::string> m_tokensAtProcessing;
    HeapText m_text;

    bool ResolveImportPath(const xstring& importPath, xstring& localPath) override {
        const std::map<std::string, const char*> paths = {
            {"known.txt",     "DIR/known.txt"},
            {"a/a/known.txt", "DIR/known.txt"},
            {"late.txt",      "dir/late.txt" },
        };
        const auto path = paths.find(Str(importPath));
        if (path == paths.end())
            return false;
        localPath = path->second;
        return true;
    }

    void ProcessImportedFile(MpfwSourceFile* srcFile) override {
        m_processed.push_back(srcFile);
        m_tokensAtProcessing.push_back(Str(GetTokenString()));
    }

    std::string Token() const { return Str(m_token.m_str); }

    template <class Action>
    LexError ErrorOf(Action&& action) const {
        return LexErrorOf(m_text.begin(), action);
    }
};

// What an operation reads, and the token that is current behind it.
struct Reading {
    std::string_view text;
    std::string_view value;
    std::string_view next;
};

struct Failing {
    std::string_view text;
    std::string_view message;
    ssize_t offset;
};

// Runs read on each text of a table; read takes a parser and gives a value.
template <class Rows, class Read>
void ExpectReadings(const Rows& rows, Read read) {
    for (const Reading& row : rows) {
        Parser parser(row.text);
        EXPECT_EQ(Str(read(parser)), row.value) << row.text;
        EXPECT_EQ(parser.Token(), row.next) << row.text;
    }
}

template <class Rows, class Read>
void ExpectErrors(const Rows& rows, Read read) {
    for (const Failing& row : rows) {
        Parser parser(row.text);
        EXPECT_EQ(parser.ErrorOf([&] { read(parser); }),
                  (LexError{std::string(row.message), row.offset}))
            << row.text;
    }
}

// ---- values ------------------------------------------------------------------------------------

xstring ReadString(Parser& parser) {
    xstring value("replaced");
    parser.ReadString(value);
    return value;
}

TEST(ReadString, TakesQuotedStringsAndBracketedExpressionsAndReadsOn) {
    const Reading rows[] = {
        {R"("a" ;)",              "a",    ";"},
        {R"('a' ;)",              "a",    ";"},
        {R"(r"a\b" ;)",           "a\\b", ";"},
        {R"("a\tb" ;)",           "a\tb", ";"},
        {R"("" ;)",               "",     ";"},
        {R"(("a" + "b") ;)",      "ab",   ";"},
        {R"((("a")) ;)",          "a",    ";"},
        {R"((true?'x':'y');)",    "x",    ";"},
        {R"("a")",                "a",    "" },
        {"/* c */ \"a\" // c\n;", "a",    ";"}, // comments are passed over
    };
    ExpectReadings(rows, ReadString);
}

TEST(ReadString, AppliesDollarMacrosInBothForms) {
    const Reading rows[] = {
        {R"-("$(A)" ;)-",          "a/a",           ";"},
        {R"-('$(B)' ;)-",          "a/a/b",         ";"},
        {R"-(("$(" + "B)") ;)-",   "a/a/b",         ";"},
        {R"-("$(C) $A $( A)" ;)-", "$(C) $A $( A)", ";"},
    };
    ExpectReadings(rows, ReadString);
}

TEST(ReadString, FailsAtWhatIsNoString) {
    const Failing rows[] = {
        {"",      "Expected quoted string when read EOS",  0},
        {" name", "Expected quoted string when read name", 1},
        {"12",    "Expected quoted string when read 12",   0},
        {"@x",    "Expected quoted string when read @",    0},
    };
    ExpectErrors(rows, ReadString);
}

TEST(ReadString, FailsInBracketsAsTheExpressionParserDoes) {
    const Failing rows[] = {
        {"(1)",       "No implicit conversion from int64 to string", 2},
        {"(\"a\"",    "Expected ) after \"a\" when read EOS",        4},
        {"(\"a\" 1)", "Expected ) after \"a\" when read 1",          5},
        {"()",        "Unexpected ) after ( in expression",          1},
        {"(name)",    "Unexpected name after ( in expression",       1},
    };
    ExpectErrors(rows, ReadString);
}

TEST(ParseQuotedString, StaysAtTheString) {
    const Reading rows[] = {
        {R"("a" ;)",    "a",     R"("a")"   },
        {R"('$(B)' ;)", "a/a/b", R"('$(B)')"},
        {R"(r"\q" ;)",  "\\q",   R"(r"\q")" },
        {R"("a/" ;)",   "a/",    R"("a/")"  },
    };
    ExpectReadings(rows, [](Parser& parser) { return parser.ParseQuotedString(); });
}

TEST(ParseQuotedString, ReadsTheSameStringAgainUnlessTheCallerReadsOn) {
    Parser parser(R"("a" "b")");
    EXPECT_EQ(Str(parser.ParseQuotedString()), "a");
    EXPECT_EQ(Str(parser.ParseQuotedString()), "a");
    parser.ReadNextToken();
    EXPECT_EQ(Str(parser.ParseQuotedString()), "b");
}

TEST(ParseQuotedString, FailsAtWhatIsNoString) {
    const Failing rows[] = {
        {"",         "Expected quoted string when read EOS",  0},
        {"  name",   "Expected quoted string when read name", 2},
        {R"(("a"))", "Expected quoted string when read (",    0},
    };
    ExpectErrors(rows, [](Parser& parser) { parser.ParseQuotedString(); });
}

TEST(ParseFileOrDirName, StaysAtTheStringAndAllowsATrailingSlash) {
    const Reading rows[] = {
        {R"("a/b.txt" ;)", "a/b.txt", R"("a/b.txt")"},
        {R"('a/' ;)",      "a/",      R"('a/')"     },
        {R"("/" ;)",       "/",       R"("/")"      },
        {R"("" ;)",        "",        R"("")"       },
        {R"("$(A)/" ;)",   "a/a/",    R"("$(A)/")"  },
    };
    ExpectReadings(rows, [](Parser& parser) { return parser.ParseFileOrDirName(); });
}

TEST(ParseFileOrDirName, RefusesBackslashesAndNamesTheStringAsItStands) {
    const Failing rows[] = {
        {R"(  "a\\b")", R"(Forward slashes must be used in "a\\b")", 2},
        {R"(r"a\b")",   R"(Forward slashes must be used in r"a\b")", 0},
        {R"('\\')",     R"(Forward slashes must be used in '\\')",   0},
        {"name",        "Expected quoted string when read name",     0},
        {"",            "Expected quoted string when read EOS",      0},
    };
    ExpectErrors(rows, [](Parser& parser) { parser.ParseFileOrDirName(); });
}

TEST(ParseFileOrDirName, LooksAtTheValueWithItsDollarMacros) {
    Parser parser(R"("$(BACK)/b")");
    parser.m_frame.m_vf.InsertDollarMacro("BACK", "a\\a");
    EXPECT_EQ(parser.ErrorOf([&] { parser.ParseFileOrDirName(); }),
              (LexError{R"(Forward slashes must be used in "$(BACK)/b")", 0}));
}

TEST(ApplyMacros, SaysWhetherTheTextChanged) {
    struct {
        const char* text;
        const char* result;
        bool changed;
    } const rows[] = {
        {"$(A)",   "a/a",     true },
        {"x$(B)y", "xa/a/by", true },
        {"$(C)",   "$(C)",    false},
        {"",       "",        false},
    };
    Parser parser("");
    for (const auto& row : rows) {
        xstring s(row.text);
        EXPECT_EQ(parser.ApplyMacros(s), row.changed) << row.text;
        EXPECT_EQ(Str(s), row.result) << row.text;
    }
}

// ---- settings
// ----------------------------------------------------------------------------------

xstring ParseStringSettingA(Parser& parser) {
    xstring value("replaced");
    parser.ParseStringSetting("a", value);
    return value;
}

xstring ParsePathSettingA(Parser& parser) {
    xstring value("replaced");
    parser.ParsePathSetting("a", value);
    return value;
}

TEST(ParseStringSetting, GivesTheStringAndReadsOn) {
    const Reading rows[] = {
        {R"($a = "x" ;)",      "x",     ";"},
        {R"($ a="x";)",        "x",     ";"},
        {R"($a = "" ;)",       "",      ";"},
        {R"($a = r"x\y/" ;)",  "x\\y/", ";"},
        {R"($a = "x\\y" ;)",   "x\\y",  ";"},
        {R"-($a = "$(A)" ;)-", "$(A)",  ";"}, // no dollar macros at this stage
        {R"($a = "x")",        "x",     "" },
    };
    ExpectReadings(rows, ParseStringSettingA);
}

const Failing s_settingErrors[] = {
    {"",               "Expected '$' when read EOS",           0},
    {R"(a = "x")",     "Expected '$' when read a",             0},
    {R"(  $$a = "x")", "Expected '$' when read $$",            2},
    {"$",              "Expected 'a' when read EOS",           1},
    {R"($b = "x")",    "Expected 'a' when read b",             1},
    {R"($A = "x")",    "Expected 'a' when read A",             1},
    {R"($"a" = "x")",  "Expected 'a' when read \"a\"",         1},
    {"$a",             "Expected = after a when read EOS",     2},
    {R"($a "x")",      "Expected = after a when read \"x\"",   3},
    {R"($a == "x")",   "Expected = after a when read ==",      3},
    {"$a =",           "Expected quoted string when read EOS", 4},
    {"$a = 'x'",       "Expected quoted string when read 'x'", 5},
    {R"($a = ("x"))",  "Expected quoted string when read (",   5},
    {"$a = x",         "Expected quoted string when read x",   5},
};

TEST(ParseStringSetting, FailsAtTheFirstTokenThatDoesNotFit) {
    ExpectErrors(s_settingErrors, ParseStringSettingA);
}

TEST(ParseStringSetting, TakesATokenOfAnyTypeForTheName) {
    Parser parser(R"($12 = "x")");
    xstring value;
    parser.ParseStringSetting("12", value);
    EXPECT_EQ(Str(value), "x");
}

TEST(ParseStringSettingHelper, StaysAtTheString) {
    Parser parser(R"-($a = "$(A)" ;)-");
    xstring value;
    parser.ParseStringSettingHelper("a", value);
    EXPECT_EQ(Str(value), "$(A)");
    EXPECT_EQ(parser.Token(), R"-("$(A)")-");
}

TEST(ParsePathSetting, GivesThePathAsItStandsAndReadsOn) {
    const Reading rows[] = {
        {R"($a = "x/y" ;)",      "x/y",      ";"},
        {R"($a = "/x" ;)",       "/x",       ";"},
        {R"($a = "" ;)",         "",         ";"},
        {R"($a = "./x/../y" ;)", "./x/../y", ";"}, // settings are not normalised
        {R"-($a = "$(A)" ;)-",   "$(A)",     ";"},
    };
    ExpectReadings(rows, ParsePathSettingA);
}

TEST(ParsePathSetting, FailsLikeAStringSetting) {
    ExpectErrors(s_settingErrors, ParsePathSettingA);
}

TEST(ParsePathSetting, RefusesBackslashesAndATrailingSlash) {
    const Failing rows[] = {
        {R"($a = r"a\b")",   R"(Forward slashes must be used in r"a\b")",        5},
        {R"($a = "a\\b/")",  R"(Forward slashes must be used in "a\\b/")",       5},
        {R"($a = "/")",      R"(Path can't end with a trailing slash : "/")",    5},
        {R"(  $a = "x/y/")", R"(Path can't end with a trailing slash : "x/y/")", 7},
    };
    ExpectErrors(rows, ParsePathSettingA);
}

// ---- dollar macros -----------------------------------------------------------------------------

TEST(ParseMacroDef, DefinesADollarMacroAndReadsOn) {
    struct {
        std::string_view text;
        const char* name;
        const char* value;
    } const rows[] = {
        {R"($N = "x" ;)",                  "N",    "x"    },
        {R"($N = 'x' ;)",                  "N",    "x"    },
        {R"($N = ("x" + "y") ;)",          "N",    "xy"   },
        {R"-($N = "$(B)" ;)-",             "N",    "a/a/b"},
        {R"($N = "x\\y/" ;)",              "N",    "x\\y/"}, // normalised only if it says path
        {R"($N = path r"x\y\.\z\" ;)",     "N",    "x/y/z"},
        {R"($N = path ("x/" + "../y") ;)", "N",    "y"    },
        {R"($N = path "$(B)/../c" ;)",     "N",    "a/a/c"},
        {R"($N = path "" ;)",              "N",    ""     },
        {R"($N = "path" ;)",               "N",    "path" }, // the string, not the word
        {R"($path = "x" ;)",               "path", "x"    },
        {R"($A = "again" ;)",              "A",    "again"},
    };
    for (const auto& row : rows) {
        Parser parser(row.text);
        xstring name("replaced");
        xstring value("replaced");
        EXPECT_TRUE(parser.ParseMacroDef(name, value)) << row.text;
        EXPECT_EQ(Str(name), row.name) << row.text;
        EXPECT_EQ(Str(value), row.value) << row.text;
        EXPECT_EQ(parser.Token(), ";") << row.text;
        const xstring* stored = parser.m_frame.m_vf.FindDollarMacro(row.name);
        ASSERT_NE(stored, nullptr) << row.text;
        EXPECT_EQ(Str(*stored), row.value) << row.text;
    }
}

TEST(ParseMacroDef, MakesAVariableToo) {
    Parser parser(R"($N = "x")");
    EXPECT_TRUE(parser.ParseMacroDef());
    const LSVariable* variable = parser.m_frame.m_vf.Find2("_N_");
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(Str(static_cast<const LSValueVariable*>(variable)->m_value), "x");
}

TEST(ParseMacroDef, LeavesEverythingAloneWithoutADollar) {
    for (const char* text : {"", "N = 1", "$$ N", "@"}) {
        Parser parser(text);
        xstring name("name");
        xstring value("value");
        const std::string token = parser.Token();
        EXPECT_FALSE(parser.ParseMacroDef(name, value)) << text;
        EXPECT_FALSE(parser.ParseMacroDef()) << text;
        EXPECT_EQ(Str(name), "name") << text;
        EXPECT_EQ(Str(value), "value") << text;
        EXPECT_EQ(parser.Token(), token) << text;
    }
}

TEST(ParseMacroDef, FailsAtTheFirstTokenThatDoesNotFit) {
    const Failing rows[] = {
        {"$",               "Expected identifier after $ when read EOS",   1 },
        {"$1 = \"x\"",      "Expected identifier after $ when read 1",     1 },
        {"$N \"x\"",        "Expected = after N when read \"x\"",          3 },
        {"$N += \"x\"",     "Expected = after N when read +=",             3 },
        {"$N = ",           "Expected quoted string when read EOS",        5 },
        {"$N = x",          "Expected quoted string when read x",          5 },
        {"$N = path",       "Expected quoted string when read EOS",        9 },
        {"$N = path path",  "Expected quoted string when read path",       10},
        {"$N = PATH \"x\"", "Expected quoted string when read PATH",       5 },
        {"$N = (1)",        "No implicit conversion from int64 to string", 7 },
    };
    ExpectErrors(rows, [](Parser& parser) { parser.ParseMacroDef(); });
}

// ---- imports -----------------------------------------------------------------------------------

TEST(ParseImportDirective, ProcessesTheFileThatThePathResolvesTo) {
    for (const char* text : {R"(@import "known.txt" ;)", R"(@ import 'known.txt';)",
                             R"(@import "$(A)/known.txt" ;)"}) {
        Parser parser(text);
        EXPECT_TRUE(parser.ParseImportDirective()) << text;
        EXPECT_EQ(parser.m_processed, std::vector<MpfwSourceFile*>{parser.m_known}) << text;
        EXPECT_EQ(parser.Token(), ";") << text;
    }
}

TEST(ParseImportDirective, StandsAtTheStringWhileTheFileIsProcessed) {
    Parser parser(R"(@import "known.txt" ;)");
    EXPECT_TRUE(parser.ParseImportDirective());
    EXPECT_EQ(parser.m_tokensAtProcessing, std::vector<std::string>{R"("known.txt")"});
}

TEST(ParseImportDirective, PassesOnNullForAFileThatWasNotExpanded) {
    Parser parser(R"(@import "late.txt" ;)");
    EXPECT_TRUE(parser.ParseImportDirective());
    EXPECT_EQ(parser.m_processed, std::vector<MpfwSourceFile*>{nullptr});
    EXPECT_EQ(parser.Token(), ";");
}

TEST(ParseImportDirective, LeavesEverythingAloneWithoutAnAt) {
    for (const char* text : {"", "import \"known.txt\"", "$"}) {
        Parser parser(text);
        const std::string token = parser.Token();
        EXPECT_FALSE(parser.ParseImportDirective()) << text;
        EXPECT_EQ(parser.Token(), token) << text;
        EXPECT_TRUE(parser.m_processed.empty()) << text;
    }
}

TEST(ParseImportDirective, FailsAtTheFirstTokenThatDoesNotFit) {
    const Failing rows[] = {
        {"@",                       "Syntax error: @EOS",                     1},
        {"@include \"known.txt\"",  "Syntax error: @include",                 1},
        {"@ \"import\"",            "Syntax error: @\"import\"",              2},
        {"@import",                 "Expected quoted string when read EOS",   7},
        {"@import known.txt",       "Expected quoted string when read known", 8},
        {"@import (\"known.txt\")", "Expected quoted string when read (",     8},
    };
    ExpectErrors(rows, [](Parser& parser) { parser.ParseImportDirective(); });
}

TEST(ParseImportDirective, FailsAtTheWordImportWhereThePathDoesNotResolve) {
    Parser parser(R"-( @ import "x$(A)")-");
    EXPECT_EQ(parser.ErrorOf([&] { parser.ParseImportDirective(); }),
              (LexError{"Couldn't open file xa/a", 3}));
    EXPECT_TRUE(parser.m_processed.empty());
}

// ---- the parser --------------------------------------------------------------------------------

TEST(MpfwParser, SharesWhatItDefinesWithEveryParserOnItsFrame) {
    Parser first(R"($N = "x")");
    EXPECT_TRUE(first.ParseMacroDef());

    class Second : public MpfwParser {
    public:
        using MpfwParser::MpfwParser;
        bool ResolveImportPath(const xstring&, xstring&) override { return false; }
        void ProcessImportedFile(MpfwSourceFile*) override {}
    } second(first.m_frame);
    EXPECT_EQ(second.m_token, LSToken(TOKEN_UNDEF));
    EXPECT_EQ(&second.m_frame, &first.m_frame);

    xstring value("$(N)");
    EXPECT_TRUE(second.ApplyMacros(value));
    EXPECT_EQ(Str(value), "x");
    EXPECT_EQ(first.m_token, LSToken(TOKEN_END));  // and each reads a text of its own
}

TEST(MpfwParser, ReadsPathsWithoutQuotesAndExpressionsAsItsBasesDo) {
    Parser parser("dir/sub/name 6 * 7;");
    EXPECT_EQ(Str(parser.ParsePath()), "dir/sub/name");
    EXPECT_EQ(parser.ParseInt32(false), 42);
    EXPECT_EQ(parser.Token(), ";");
}

}  // namespace
}  // namespace vorn
