// Texts of several files.

#include "ToolRunner.h"

#include <filesystem>

namespace {

using tool_test::Result;
using tool_test::ToolTest;

class ToolImports : public ToolTest {
protected:
    // Expands a text as the file main.qz.
    Result Expand(const std::string& text, const std::vector<std::string>& options = {}) const {
        Write("main.qz", text);
        std::vector<std::string> arguments = {"main.qz"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments);
    }
};

// ---- what comes of an import -------------------------------------------------------------------

TEST_F(ToolImports, BringTheDefinitionsOfAFileAndNotItsText) {
    Write("b.qz", "@def m = from b\ntext of b\n@def n = more\n");
    EXPECT_EQ(Expand("@import \"b.qz\"\nm, n\n"), (Result{0, "\nfrom b, more\n", ""}));
}

TEST_F(ToolImports, AreFollowedBeforeTheTextBehindThem) {
    Write("b.qz", "@def m = new\n");
    EXPECT_EQ(Expand("@def m = old\nm @import \"b.qz\" m\n"), (Result{0, "old  new\n", ""}));
}

TEST_F(ToolImports, LetTheImportedFileSeeWhatStandsInFrontOfThem) {
    Write("b.qz", "@let n = n + 1\n");
    EXPECT_EQ(Expand("@let int n = 1\n@import \"b.qz\"\nn"), (Result{0, "\n2", ""}));
}

TEST_F(ToolImports, AreFollowedAsOftenAsTheyStandThere) {
    Write("b.qz", "@let n = n + 1\n");
    EXPECT_EQ(Expand("@let int n = 0\n@import \"b.qz\" @import \"b.qz\"\nn"),
              (Result{0, " \n2", ""}));
}

TEST_F(ToolImports, ShowWhatTheImportedFilePrints) {
    Write("b.qz", "@println(from b)\n");
    EXPECT_EQ(Expand("@import \"b.qz\""), (Result{0, "", "from b\n"}));
}

TEST_F(ToolImports, WorkInStandardInput) {
    Write("b.qz", "@def m = from b\n");
    EXPECT_EQ(Run({}, "@import \"b.qz\"\nm"), (Result{0, "\nfrom b", ""}));
}

TEST_F(ToolImports, AreRefusedInsideBlocks) {
    EXPECT_EQ(Expand("@scope { @import \"b.qz\" }"),
              (Result{1, "",
                      "main.qz(1) : @import statement not allowed here\n"
                      "@scope { @import \"b.qz\" }\n"
                      "          ^\n"
                      "hint: imports stand at the top level of a file, not in macros, blocks and"
                      " brackets\n"}));
}

// ---- the directive in the output ---------------------------------------------------------------

class ToolImportDirectives : public ToolImports {
protected:
    ToolImportDirectives() { Write("b.qz", "@def m = x\n"); }
};

struct DirectiveCase {
    const char* text;
    const char* dropped;  // the output without the directives
    const char* kept;     // and with them
};

constexpr DirectiveCase s_directiveCases[] = {
  // Exactly the characters of the directive go: blanks and line ends around it stay.
    {"a @import \"b.qz\" c\n",                                                                     "a  c\n",           "a @import \"b.qz\" c\n"                                                    },
    {"  @import \"b.qz\"\nc",                                                                      "  \nc",            "  @import \"b.qz\"\nc"                                                     },
    {"@import \"b.qz\"",                                                                           "",                 "@import \"b.qz\""                                                          },
    {"\t@import \"b.qz\"\r\n\r\nc",                                                                "\t\r\n\r\nc",      "\t@import \"b.qz\"\r\n\r\nc"                                               },
    {"\v@import \"b.qz\"m",                                                                        "\vx",              "\v@import \"b.qz\"x"                                                       },
    {"(@import \"b.qz\")",                                                                         "()",               "(@import \"b.qz\")"                                                        },
    {"@import r\"b.qz\";",                                                                         ";",                "@import r\"b.qz\";"                                                        },
 // Its parts may stand apart.
    {"a @ import\n  \"b.qz\" c",                                                                   "a  c",             "a @ import\n  \"b.qz\" c"                                                  },
    {"@ /* c */ import /* @import \"d\" */ \"b.qz\" e",                                            " e",
     "@ /* c */ import /* @import \"d\" */ \"b.qz\" e"                                                                                                                                             },
 // Of the form with an expression, the expansion itself drops the blanks in front.
    {"a @import(\"b\" + \".qz\") c",                                                               "a c",              "a@import \"b.qz\" c"                                                       },
    {"\n  @import ( \"b.qz\" )\nc",                                                                "\n\nc",            "\n@import \"b.qz\"\nc"                                                     },
 // Several in a row.
    {"@import \"b.qz\"@import \"b.qz\" @import(\"b.qz\")m",                                        "x",
     "@import \"b.qz\"@import \"b.qz\"@import \"b.qz\"x"                                                                                                                                           },
    {"m@import \"b.qz\"m@import \"b.qz\"m",                                                        "mxx",              "m@import \"b.qz\"x@import \"b.qz\"x"                                       },
 // What only looks like one stays.
    {"@quote(@import \"q\") // @import \"c\"\n\"@import\" @import \"b.qz\" @quote(@import \"q\")",
     "@import \"q\" // @import \"c\"\n\"@import\"  @import \"q\"",                                                     "@import \"q\" // @import \"c\"\n\"@import\" @import \"b.qz\" @import \"q\""},
    {"@quote(@import \"b.qz\")@import \"b.qz\"",                                                   "@import \"b.qz\"",
     "@import \"b.qz\"@import \"b.qz\""                                                                                                                                                            },
 // Output in front of one may be longer or shorter than its source.
    {"@( \"long \" + \"text\" ) @// gone\n@import \"b.qz\" m",                                     "long text x",
     "long text@import \"b.qz\" x"                                                                                                                                                                 },
};

TEST_F(ToolImportDirectives, AreDroppedExactly) {
    for (const DirectiveCase& c : s_directiveCases) {
        EXPECT_EQ(Expand(c.text), (Result{0, c.dropped, ""})) << c.text;
        EXPECT_EQ(Expand(c.text, {"--imports=drop"}), (Result{0, c.dropped, ""})) << c.text;
    }
}

TEST_F(ToolImportDirectives, StayWhereThatIsAskedFor) {
    for (const DirectiveCase& c : s_directiveCases)
        EXPECT_EQ(Expand(c.text, {"--imports=keep"}), (Result{0, c.kept, ""})) << c.text;
}

TEST_F(ToolImportDirectives, AreDealtWithInOneOfThreeWays) {
    EXPECT_EQ(Expand("", {"--imports=move"}),
              tool_test::WrongCall("--imports is drop, keep or inline: move"));
}

// ---- where a file is looked for ----------------------------------------------------------------

TEST_F(ToolImports, AreLookedForBesideTheImportingFile) {
    Write("deep/a.qz", "@import \"er/b.qz\"\nm n");
    Write("deep/er/b.qz", "@def m = from b\n@import \"c.qz\"\n");
    Write("deep/er/c.qz", "@def n = from c\n");
    Write("c.qz", "@def n = wrong\n");
    EXPECT_EQ(Run({"deep/a.qz"}), (Result{0, "\nfrom b from c", ""}));
    EXPECT_EQ(Run({PathOf("deep/a.qz").string()}), (Result{0, "\nfrom b from c", ""}));
}

TEST_F(ToolImports, AreLookedForInTheFoldersOfTheCommandLineInTheirOrder) {
    Write("one/b.qz", "@def m = one\n");
    Write("two/b.qz", "@def m = two\n");
    Write("two/c.qz", "@def n = two\n");
    const std::string text = "@import \"b.qz\" @import \"c.qz\"\nm n";
    EXPECT_EQ(Expand(text, {"-I", "one", "-Itwo"}), (Result{0, " \none two", ""}));
    EXPECT_EQ(Expand(text, {"-I", "two", "-Ione"}), (Result{0, " \ntwo two", ""}));
    Write("b.qz", "@def m = beside\n");
    EXPECT_EQ(Expand(text, {"-I", "two"}), (Result{0, " \nbeside two", ""}));
}

TEST_F(ToolImports, AreLookedForInTheFoldersOfTheTextBehindThoseOfTheCommandLine) {
    Write("one/b.qz", "@def m = one\n");
    Write("two/b.qz", "@def m = two\n");
    const std::string text = "@importpath \"one\"\n@import \"b.qz\"\nm";
    EXPECT_EQ(Expand(text), (Result{0, "\n\none", ""}));
    EXPECT_EQ(Expand(text, {"-I", "two"}), (Result{0, "\n\ntwo", ""}));
}

TEST_F(ToolImports, TakeAnImportPathFromTheFolderOfItsFile) {
    Write("deep/a.qz", "@importpath r\"..\\lib\"\n");
    Write("lib/b.qz", "@def m = in lib\n");
    EXPECT_EQ(Expand("@import \"deep/a.qz\"@import(\"b\" + \".qz\")m"), (Result{0, "in lib", ""}));
}

TEST_F(ToolImports, TakeAWholePathAsItIs) {
    Write("deep/b.qz", "@def m = in deep\n");
    Write("a.qz", "@import \"" + PathOf("deep/b.qz").string() + "\"m");
    EXPECT_EQ(Run({"-I", "nosuch", "a.qz"}), (Result{0, "in deep", ""}));
}

TEST_F(ToolImports, KnowTheDollarMacrosOfTheCommandLineAndOfTheText) {
    Write("lib/deep/b.qz", "@def m = in lib\n");
    EXPECT_EQ(Expand("@$SUB = \"deep\"@import \"$(ROOT)/$(SUB)/b.qz\"m", {"-D", "$ROOT=lib"}),
              (Result{0, "in lib", ""}));
    EXPECT_EQ(Expand("@importpath \"$(ROOT)/deep\"@import \"b.qz\"m", {"-D", "$ROOT=lib"}),
              (Result{0, "in lib", ""}));
}

TEST_F(ToolImports, PutDollarMacrosOfTheCommandLineIntoStrings) {
    EXPECT_EQ(Expand("\"$(A)/x\" _A_ A", {"-D", "$A=/y"}), (Result{0, "\"/y/x\" /y A", ""}));
    EXPECT_EQ(Expand("\"$(int)\"", {"-D", "$int=5"}), (Result{0, "\"5\"", ""}));
    EXPECT_EQ(Expand("", {"-D", "$=5"}), tool_test::WrongCall("-D $=5: '' is no name"));
    EXPECT_EQ(Expand("", {"-D", "$a:b=5"}), tool_test::WrongCall("-D $a:b=5: 'a:b' is no name"));
}

// ---- errors ------------------------------------------------------------------------------------

TEST_F(ToolImports, TellWhereTheyLookedForAFileThatIsNotThere) {
    EXPECT_EQ(Expand("\n  @import \"b.qz\"\n", {"-I", "one/"}),
              (Result{1, "",
                      "main.qz(2) : Can't import file: b.qz\n"
                      "    b.qz: No such file or directory\n"
                      "    one/b.qz: No such file or directory\n"
                      "  @import \"b.qz\"\n"
                      "          ^\n"}));
}

TEST_F(ToolImports, TellWhyAFileCannotBeRead) {
    std::filesystem::create_directory(PathOf("folder"));
    EXPECT_EQ(Expand("@import \"folder\""), (Result{1, "",
                                                    "main.qz(1) : Can't import file: folder\n"
                                                    "    folder: Is a directory\n"
                                                    "@import \"folder\"\n"
                                                    "        ^\n"}));
}

TEST_F(ToolImports, RefuseAPathWithAZeroByte) {
    Write("b", "");
    EXPECT_EQ(Expand("@import \"b\\0c\""), (Result{1, "",
                                                   "main.qz(1) : Can't import file: b\\x00c\n"
                                                   "    b\\x00c: No such file or directory\n"
                                                   "@import \"b\\0c\"\n"
                                                   "        ^\n"}));
}

TEST_F(ToolImports, DoNotTakeADashForStandardInput) {
    EXPECT_EQ(Expand("@import \"-\""), (Result{1, "",
                                               "main.qz(1) : Can't import file: -\n"
                                               "    -: No such file or directory\n"
                                               "@import \"-\"\n"
                                               "        ^\n"}));
}

TEST_F(ToolImports, NameTheFileOfAFaultAndTheImportsThatLedThere) {
    Write("deep/b.qz", "\n\n@import \"c.qz\"\n");
    Write("deep/c.qz", "@fail(\"stop\")\n");
    EXPECT_EQ(Expand("\n@import \"deep/b.qz\"\n"), (Result{1, "",
                                                           "deep/c.qz(1) : stop\n"
                                                           "@fail(\"stop\")\n"
                                                           "     ^\n"
                                                           "deep/b.qz(3) : deep/c.qz is imported "
                                                           "here\n"
                                                           "main.qz(2) : deep/b.qz is imported "
                                                           "here\n"}));
}

TEST_F(ToolImports, NameTheFileOfAMacroThatFailsAtItsUse) {
    Write("b.qz", "@def f(x) = {\n    @fail(\"in f\")\n}\n");
    EXPECT_EQ(Expand("@import \"b.qz\"\nf(1)\n"), (Result{1, "",
                                                          "b.qz(2) : in f\n"
                                                          "    invoking macro f(x) with x=1\n"
                                                          "    @fail(\"in f\")\n"
                                                          "         ^\n"
                                                          "main.qz(1) : b.qz is imported here\n"}));
}

TEST_F(ToolImports, NameTheImportingFileForAFaultBehindThem) {
    Write("b.qz", "@def m = x\n");
    EXPECT_EQ(Expand("@import \"b.qz\"\n@let int n = 1 2\n"),
              (Result{1, "",
                      "main.qz : Read 2 in middle of expression\n"
                      "    expression: 1 2\n"}));
}

TEST_F(ToolImports, NameTheImportedFileForAFaultInAComputedText) {
    Write("b.qz", "@let int n = 1 2\n");
    EXPECT_EQ(Expand("@import \"b.qz\"\n"), (Result{1, "",
                                                    "b.qz : Read 2 in middle of expression\n"
                                                    "    expression: 1 2\n"
                                                    "main.qz(1) : b.qz is imported here\n"}));
}

TEST_F(ToolImports, RefuseACircle) {
    Write("b.qz", "@import \"c.qz\"\n");
    Write("c.qz", "@import \"main.qz\"\n");
    EXPECT_EQ(Expand("@import \"b.qz\"\n"),
              (Result{1, "",
                      "c.qz(1) : main.qz imports itself: main.qz -> b.qz -> c.qz -> main.qz\n"
                      "@import \"main.qz\"\n"
                      "        ^\n"
                      "b.qz(1) : c.qz is imported here\n"
                      "main.qz(1) : b.qz is imported here\n"}));
}

TEST_F(ToolImports, RefuseACircleUnderAnotherName) {
    std::filesystem::create_symlink("main.qz", PathOf("other.qz"));
    EXPECT_EQ(Expand("@import \"./other.qz\"\n"),
              (Result{1, "",
                      "main.qz(1) : ./other.qz imports itself: main.qz -> ./other.qz\n"
                      "@import \"./other.qz\"\n"
                      "        ^\n"}));
}

TEST_F(ToolImports, RefuseACircleThatDoesNotHoldTheFirstFile) {
    Write("b.qz", "@import \"b.qz\"\n");
    EXPECT_EQ(Expand("@import \"b.qz\"\n"), (Result{1, "",
                                                    "b.qz(1) : b.qz imports itself: b.qz -> b.qz\n"
                                                    "@import \"b.qz\"\n"
                                                    "        ^\n"
                                                    "main.qz(1) : b.qz is imported here\n"}));
}

TEST_F(ToolImports, MayLeadToOneFileByTwoWays) {
    Write("b.qz", "@import \"d.qz\"\n");
    Write("c.qz", "@import \"d.qz\"\n");
    Write("d.qz", "@def m = from d\n");
    EXPECT_EQ(Expand("@import \"b.qz\"@import \"c.qz\"m"), (Result{0, "from d", ""}));
}

}  // namespace
