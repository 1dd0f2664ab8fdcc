// Line ends: --newline, and texts with CR LF.

#include "ToolRunner.h"

#include <string>
#include <vector>

#include "common/Map.h"

namespace {

using tool_test::Result;
using tool_test::ToolTest;
using Kind = qztools::MapPiece::Kind;

std::string Replace(const std::string& s, const std::string& what, const std::string& by) {
    std::string result;
    std::size_t start = 0;
    for (std::size_t pos = 0; (pos = s.find(what, start)) != std::string::npos;) {
        result += s.substr(start, pos - start) + by;
        start = pos + what.size();
    }
    return result + s.substr(start);
}

// A text with line ends LF, in the other form.
std::string WithCrLf(const std::string& s) {
    return Replace(s, "\n", "\r\n");
}

class ToolNewline : public ToolTest {};

// ---- texts with CR LF throughout ---------------------------------------------------------------

// Texts whose layout depends on where a line ends.
const char* const s_layouts[] = {
    "a\nb\n\n\nc",
    "\n",
    "first\n    @def unused = x\n\n\nsecond\n",
    "@def m = x\nm\n m\n",
    "@def m = {\n    one\n      two\n}\n  m\n\tm, m\n",
    "@def m = {\n  one\n}\na\nm\nb",
    "@def m(a, b) = a\n  + b\nm(1,\n2)\n",
    "a\n@if (true) {\n  b\n}\n@else {\n  c\n}\nd\n",
    "@for (i in [1,\n2, 3]) {\n    line i\n}\nend",
    "@let string s = \"a\\nb\"\n  @[s]\nend\n",
    "a @// gone\nb\n",
    "// comment\n/* com\n   ment */ @( 1 + 1 )\n",
    "  @str({\n    one\n    two })\n",
    "@quote(\n  @def\n)\n",
    "@scope {\n    @def inner = x\n    inner\n    inner\n}\n",
};

TEST_F(ToolNewline, ExpandsTextsWithCrLfAsIfTheyHadLf) {
    for (const std::string text : s_layouts) {
        const Result result = Run({}, text);
        EXPECT_EQ(result.status, 0) << testing::PrintToString(result);
        EXPECT_EQ(Run({}, WithCrLf(text)), (Result{0, WithCrLf(result.out), ""})) << text;
    }
}

// Each byte that was copied is the byte of the file, CR and LF each, and no CR was put in.
TEST_F(ToolNewline, LeadsBackToTheVeryBytesOfTheFile) {
    for (const std::string layout : s_layouts) {
        const std::string text = WithCrLf(layout);
        Write("a.qz", text);
        EXPECT_EQ(Run({"a.qz", "-o", "out", "--map", "map"}), (Result{0, "", ""}));
        const qztools::Map map = qztools::ParseMap("map", Read("map"));
        const std::string output = Read("out");
        std::size_t start = 0;
        for (const qztools::MapPiece& piece : map.pieces) {
            const std::string bytes = output.substr(start, static_cast<std::size_t>(piece.size));
            start += bytes.size();
            EXPECT_NE(piece.kind, Kind::Inserted) << text;
            if (piece.kind == Kind::Copied) {
                EXPECT_EQ(bytes, text.substr(static_cast<std::size_t>(piece.offset), bytes.size()));
            }
        }
        EXPECT_EQ(start, output.size());
        EXPECT_EQ(map.sources.size(), 1u);
        EXPECT_EQ(map.sources.front().hash, qztools::HashOf(text));
    }
}

TEST_F(ToolNewline, WritesBackTheLineEndsOfTheInput) {
    EXPECT_EQ(Run({}, "@def m = {\r\n  one\r\n  two }\r\n\r\n  m\r\nend"),
              (Result{0, "    one\r\n    two \r\nend", ""}));
    EXPECT_EQ(Run({"--newline=keep"}, "@( \"a\\nb\" )\r\n"), (Result{0, "a\r\nb\r\n", ""}));
}

TEST_F(ToolNewline, SeesLineEndsWithinLiteralsAsTheyWillBeWritten) {
    EXPECT_EQ(Run({}, "@str(a\r\nb)\r\n"), (Result{0, "\"a\\nb\"\r\n", ""}));
    EXPECT_EQ(Run({}, "a\r\n'b\r\n"),
              (Result{1, "",
                      "<stdin>(2) : Met line feed within single quoted string "
                      "after reading 'b\n"
                      "'b\n"
                      "  ^\n"
                      "hint: a lone apostrophe begins a string, which has to end on its line; "
                      "apostrophes may stand in comments and in \"strings\"\n"}));
}

TEST_F(ToolNewline, LeavesTextsWithOtherLineEndsAsTheyAre) {
    for (const std::string text : {"a\r\nb\nc\r\n", "\na\r\n", "a\r\n\n", "a\rb\r", "a\r\r\nb\r\n"})
        EXPECT_EQ(Run({}, text), (Result{0, text, ""}));
}

TEST_F(ToolNewline, LeavesACarriageReturnWithinALineAlone) {
    EXPECT_EQ(Run({}, "a\rb\r\n@def m = c\r\nm\r\n"), (Result{0, "a\rb\r\nc\r\n", ""}));
    EXPECT_EQ(Run({}, "\ra\r\n\r"), (Result{0, "\ra\r\n\r", ""}));
}

TEST_F(ToolNewline, ReportsErrorsOfSuchTextsAtTheirColumn) {
    EXPECT_EQ(Run({}, "a\r\nb\r\n  @fail(\"stop\") c\r\n"), (Result{1, "",
                                                                    "<stdin>(3) : stop\n"
                                                                    "  @fail(\"stop\") c\n"
                                                                    "       ^\n"}));
}

TEST_F(ToolNewline, PrintsLineFeedsAlone) {
    const Result result = Run({}, "@println(a\r\nb)\r\nc\r\n");
    EXPECT_EQ(result, (Result{0, "c\r\n", "a\nb\n"}));
}

TEST_F(ToolNewline, LeavesTheValuesOfDefinitionsAsTheyAre) {
    EXPECT_EQ(Run({"-D", "m=a\r\nb"}, "m\n"), (Result{0, "a\r\nb\n", ""}));
    EXPECT_EQ(Run({"-D", "m=a\r\nb\nc"}, "m\r\n"), (Result{0, "a\r\nb\r\nc\r\n", ""}));
}

// ---- line ends that are asked for --------------------------------------------------------------

struct Case {
    const char* text;
    const char* lf;    // what is written
    const char* crlf;  // likewise
};

constexpr Case s_cases[] = {
    {"a\nb\r\nc\n",                    "a\nb\nc\n", "a\r\nb\r\nc\r\n"},
    {"a\r\nb\r\n",                     "a\nb\n",    "a\r\nb\r\n"     },
    {"a\nb\n",                         "a\nb\n",    "a\r\nb\r\n"     },
    {"a\r\r\nb",                       "a\nb",      "a\r\nb"         },
    {"a\rb\n",                         "a\rb\n",    "a\rb\r\n"       },
    {"@( \"a\\r\\nb\\nc\" )",          "a\nb\nc",   "a\r\nb\r\nc"    },
    {"@( \"a\\r\" )\nb",               "a\nb",      "a\r\nb"         },
    {"@( \"a\\r\" )@( \"\\nb\" )",     "a\nb",      "a\r\nb"         },
    {"@def m = x\r\nm @( \"\\n\" )\n", "x \n\n",    "x \r\n\r\n"     },
    {"",                               "",          ""               },
};

TEST_F(ToolNewline, WritesTheLineEndsThatAreAskedFor) {
    for (const Case& c : s_cases) {
        EXPECT_EQ(Run({"--newline=lf"}, c.text), (Result{0, c.lf, ""})) << c.text;
        EXPECT_EQ(Run({"--newline=crlf"}, c.text), (Result{0, c.crlf, ""})) << c.text;
    }
}

TEST_F(ToolNewline, WritesThemForAnExpressionToo) {
    EXPECT_EQ(Run({"--newline=crlf", "--eval", "\"a\\nb\""}), (Result{0, "a\r\nb\r\n", ""}));
    EXPECT_EQ(Run({"--eval", "\"a\\r\\nb\""}), (Result{0, "a\r\nb\n", ""}));
}

TEST_F(ToolNewline, IsKeptOrOneOfTwo) {
    EXPECT_EQ(Run({"--newline=cr"}), tool_test::WrongCall("--newline is keep, lf or crlf: cr"));
}

// ---- imports -----------------------------------------------------------------------------------

TEST_F(ToolNewline, OfTheInputIsThatOfItsImports) {
    Write("crlf.qz", "@def m = {\r\n  x\r\n  y }\r\nB\r\n");
    Write("lf.qz", "@def m = {\n  x\n  y }\nB\n");
    const std::string crlf = "a\r\nB\r\n\r\n    x\r\n    y \r\n";
    for (const std::string name : {"crlf.qz", "lf.qz"}) {
        const std::string text = "a\n@import \"" + name + "\"\n  m\n";
        EXPECT_EQ(Run({"--imports=inline"}, text), (Result{0, Replace(crlf, "\r", ""), ""}));
        EXPECT_EQ(Run({"--imports=inline"}, WithCrLf(text)), (Result{0, crlf, ""}));
    }
}

TEST_F(ToolNewline, OfAnImportWithMixedOnesStaysUntilItIsWritten) {
    Write("b.qz", "x\r\ny\n");
    EXPECT_EQ(Run({"--imports=inline"}, "@import \"b.qz\"\n"), (Result{0, "x\r\ny\n\n", ""}));
    EXPECT_EQ(Run({"--imports=inline"}, "@import \"b.qz\"\r\n"), (Result{0, "x\r\ny\r\n\r\n", ""}));
    EXPECT_EQ(Run({"--imports=inline", "--newline=lf"}, "@import \"b.qz\"\r\n"),
              (Result{0, "x\ny\n\n", ""}));
}

TEST_F(ToolNewline, LeavesDirectivesThatAreKeptAlone) {
    Write("b.qz", "");
    EXPECT_EQ(Run({"--imports=keep"}, " @import\r\n  \"b.qz\"\r\n"),
              (Result{0, " @import\r\n  \"b.qz\"\r\n", ""}));
}

}  // namespace
