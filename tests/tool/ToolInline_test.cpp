// --imports=inline: imported files whose text stands in the output.

#include "ToolRunner.h"

#include <string>
#include <vector>

namespace {

using tool_test::Result;
using tool_test::ToolTest;

class ToolInline : public ToolTest {
protected:
    // Expands a text as the file main.qz.
    Result Expand(const std::string& text, const std::vector<std::string>& options = {}) const {
        Write("main.qz", text);
        std::vector<std::string> arguments = {"main.qz", "--imports=inline"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments);
    }
};

struct Case {
    const char* imported;  // the file b.qz
    const char* text;
    const char* expansion;
};

constexpr Case s_cases[] = {
  // Exactly the directive goes.
    {"B",                        "@import \"b.qz\"",                                             "B"                    },
    {"B",                        "a @import \"b.qz\" c\n",                                       "a B c\n"              },
    {"B",                        "  @import \"b.qz\"\nc",                                        "  B\nc"               },
    {"B\n",                      "a\n@import \"b.qz\"\nc",                                       "a\nB\n\nc"            },
    {"B",                        "a @ import /* x */\n\"b.qz\"c",                                "a Bc"                 },
    {"",                         "a @import \"b.qz\" c",                                         "a  c"                 },
    {"@def m = x\n",             "a @import \"b.qz\" m",                                         "a  x"                 },
 // Of the form with an expression, the blanks in front go too.
    {"B",                        "a @import(\"b\" + \".qz\") c",                                 "aB c"                 },
    {"",                         "a @import(\"b\" + \".qz\") c",                                 "a c"                  },
 // Its text stands as it is expanded there, as often as the directive does.
    {"n@let n = n + 1",          "@let int n = 1\n@import \"b.qz\"@import \"b.qz\"n",            "123"                  },
    {"(B)",                      "@import \"b.qz\"@import(\"b.qz\")@import \"b.qz\"",            "(B)(B)(B)"            },
    {"m",                        "@def m = old\n@import \"b.qz\"@def m = new\n@import \"b.qz\"", "oldnew"               },
    {"@if (true) {\n    B }",    "a\n  @import \"b.qz\" c",                                      "a\n      B  c"        },
 // Its later lines are not indented like the directive.
    {"one\n  two\nthree",        "    @import \"b.qz\"",                                         "    one\n  two\nthree"},
 // What looks like an import is text.
    {"@quote(@import \"b.qz\")", "@import \"b.qz\" @quote(@import \"c.qz\")",
     "@import \"b.qz\" @import \"c.qz\""                                                                                },
    {"@( 1 + 1 )",               "@( \"long \" + \"text\" ) @// gone\n@import \"b.qz\"!",        "long text2!"          },
};

TEST_F(ToolInline, PutsTheExpansionInPlaceOfTheDirective) {
    for (const Case& c : s_cases) {
        Write("b.qz", c.imported);
        EXPECT_EQ(Expand(c.text), (Result{0, c.expansion, ""})) << c.imported << "|" << c.text;
    }
}

TEST_F(ToolInline, GoesOnInTheImportedFiles) {
    Write("lib/b.qz", "(b @import \"deep/c.qz\" m @import(\"d.qz\"))");
    Write("lib/deep/c.qz", "(c @import \"../d.qz\")");
    Write("lib/d.qz", "d@def m = from d\n");
    EXPECT_EQ(Expand("a @import \"lib/b.qz\" m"), (Result{0, "a (b (c d) from dd) from d", ""}));
}

TEST_F(ToolInline, WorksInStandardInput) {
    Write("b.qz", "B");
    EXPECT_EQ(Run({"--imports=inline"}, "a @import \"b.qz\" c"), (Result{0, "a B c", ""}));
}

TEST_F(ToolInline, LaysOutTheTextBehindADirectiveAsIfTheDirectiveStoodThere) {
    Write("b.qz", "B");
    EXPECT_EQ(Expand("@def m = {\n    one\n    two}\n@import \"b.qz\" m"),
              (Result{0, "B     one\n                   two", ""}));
}

TEST_F(ToolInline, NamesTheFileOfAFault) {
    Write("b.qz", "@import \"c.qz\"\n");
    Write("c.qz", "text\n@fail(\"stop\")\n");
    EXPECT_EQ(Expand("a @import \"b.qz\""), (Result{1, "",
                                                    "c.qz(2) : stop\n"
                                                    "@fail(\"stop\")\n"
                                                    "     ^\n"
                                                    "b.qz(1) : c.qz is imported here\n"
                                                    "main.qz(1) : b.qz is imported here\n"}));
}

TEST_F(ToolInline, ReportsAFaultBehindAnImportInItsOwnFile) {
    Write("b.qz", "many\nlines\n");
    EXPECT_EQ(Expand("@import \"b.qz\"\n  @fail(\"stop\")\n"), (Result{1, "",
                                                                       "main.qz(2) : stop\n"
                                                                       "  @fail(\"stop\")\n"
                                                                       "       ^\n"}));
}

}  // namespace
