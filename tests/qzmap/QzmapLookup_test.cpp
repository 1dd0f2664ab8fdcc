// qzmap lookup: from the output to the sources, and the other way.

#include "QzmapTest.h"

namespace {

using qzmap_test::Composition;
using qzmap_test::EveryKind;
using qzmap_test::Result;

struct Directive {
    std::string source;
    std::string quoted;
};

class QzmapLookup : public qzmap_test::QzmapTest {
protected:
    std::string Found(const std::vector<std::string>& place) const {
        std::vector<std::string> arguments = {"lookup", "a.cpp.map"};
        arguments.insert(arguments.end(), place.begin(), place.end());
        const Result result = Qzmap(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    std::string Refused(const std::vector<std::string>& place) const {
        std::vector<std::string> arguments = {"lookup", "a.cpp.map"};
        arguments.insert(arguments.end(), place.begin(), place.end());
        const Result result = Qzmap(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        return result.err;
    }
};

// ---- from the output ---------------------------------------------------------------------------

TEST_F(QzmapLookup, ShowsEveryStretchOfALineInOrder) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Found({"3"}), "a.cpp:3:1: columns 1-4: indentation\n"
                            "lib.qz:1:13: columns 5-11: copied\n"
                            "@def body = return @(1 + 2) + five(n);\n"
                            "            ^~~~~~~\n"
                            "lib.qz:1:20: column 12: calculated from `@(1 + 2)`\n"
                            "@def body = return @(1 + 2) + five(n);\n"
                            "                   ^~~~~~~~\n"
                            "lib.qz:1:28: columns 13-20: copied\n"
                            "@def body = return @(1 + 2) + five(n);\n"
                            "                           ^~~~~~~~\n"
                            "<-D n>:1:1: column 21: copied\n"
                            "5\n"
                            "^\n"
                            "lib.qz:1:37: columns 22-23: copied\n"
                            "@def body = return @(1 + 2) + five(n);\n"
                            "                                    ^~\n");
    EXPECT_EQ(Found({"5"}), "a.cpp:5:1: columns 1-7: inserted by qzexpand\n"
                            "// made\n"
                            "^~~~~~~\n");
}

TEST_F(QzmapLookup, ShowsWhereOneByteCameFrom) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Found({"2:5"}), "a.cpp.qz:3:5: copied\nint main() {\n    ^\n");
    EXPECT_EQ(Found({"3:2"}), "a.cpp:3:2: indentation\n");
    EXPECT_EQ(Found({"3:12"}), "lib.qz:1:20: calculated from `@(1 + 2)`\n"
                               "@def body = return @(1 + 2) + five(n);\n"
                               "                   ^~~~~~~~\n");
    EXPECT_EQ(Found({"3:21"}), "<-D n>:1:1: copied\n5\n^\n");
    EXPECT_EQ(Found({"5:3"}), "a.cpp:5:3: inserted by qzexpand\n// made\n  ^\n");
}

TEST_F(QzmapLookup, CountsTheEndOfALineAsItsLastColumn) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Found({"3:24"}), "a.cpp.qz:4:7: copied\n  body\n      ^\n");
    EXPECT_EQ(Refused({"3:25"}), "qzmap: a.cpp:3 has 24 columns\n");
    EXPECT_EQ(Refused({"6"}), "qzmap: a.cpp has 5 lines\n");
}

TEST_F(QzmapLookup, ShowsTheEndOfAnEmptyLine) {
    Composition a("a.cpp");
    a.AddFile("a.qz", "x\n\ny\n");
    a.Copy(0, "x\n\ny\n");
    WriteFiles(a);
    EXPECT_EQ(Found({"2"}), "a.qz:2:1: column 1: copied\n");
    EXPECT_EQ(Found({"--source", "a.qz:2"}), "a.cpp:2:1: copied\n");
}

TEST_F(QzmapLookup, HasNoLinesInAnEmptyOutput) {
    Composition a("a.cpp");
    a.AddFile("a.qz", "@def x = 1\n");
    WriteFiles(a);
    EXPECT_EQ(Refused({"1"}), "qzmap: a.cpp has 0 lines\n");
    EXPECT_EQ(Refused({"--source", "a.qz:1"}), "qzmap: a.qz:1:1: nothing of this is in a.cpp\n");
}

TEST_F(QzmapLookup, FollowsACopyOverItsLineEnds) {
    Composition a("a.cpp");
    a.AddFile("a.qz", "first\r\n\tsecond\r\nthird\r\n");
    a.Copy(0, "first\r\n\tsecond\r\nthird\r\n");
    WriteFiles(a);
    EXPECT_EQ(Found({"2"}), "a.qz:2:1: columns 1-7: copied\n\tsecond\n^~~~~~~\n");
    EXPECT_EQ(Found({"2:3"}), "a.qz:2:3: copied\n\tsecond\n\t ^\n");
    EXPECT_EQ(Found({"2:9"}), "a.qz:2:9: copied\n\tsecond\n\t      ^\n");
}

TEST_F(QzmapLookup, QuotesOnlyTheStartOfALongText) {
    Composition a("a.cpp");
    const std::string lines = "@(1 +\n  2)";
    const std::string wide = "@(" + std::string(200, '1') + ")";
    a.AddFile("a.qz", lines + "\n" + wide + "\n");
    a.Calculate(0, lines, "3\n");
    a.Calculate(0, wide, "4\n");
    WriteFiles(a);
    EXPECT_EQ(Found({"1"}), "a.qz:1:1: column 1: calculated from `@(1 +...`\n@(1 +\n^~~~~\n");
    EXPECT_EQ(Found({"2"}), "a.qz:3:1: column 1: calculated from `@(" + std::string(58, '1')
                                + "...`\n@(" + std::string(98, '1') + "...\n^"
                                + std::string(99, '~') + "\n");
}

// Of a directive, qzexpand maps the @ alone.
TEST_F(QzmapLookup, QuotesTheDirectiveBehindAnAt) {
    const Directive directives[] = {
        {"@(f(1) + a[2]) + 3", "@(f(1) + a[2])"},
        {"@str(a) b",          "@str(a)"       },
        {"@[x][y]",            "@[x]"          },
        {"@name (a)",          "@name"         },
        {"@if(a",              "@if(a"         },
        {"@(\n1)",             "@("            },
        {"@",                  "@"             },
        {"@)",                 "@"             },
    };
    for (const auto& [source, quoted] : directives) {
        Composition a("a.cpp");
        a.AddFile("a.qz", source);
        a.Calculate(0, "@", "r");
        WriteFiles(a);
        const std::string line = source.substr(0, source.find('\n'));
        EXPECT_EQ(Found({"1:1"}), "a.qz:1:1: calculated from `" + quoted + "`\n" + line + "\n^\n");
    }
}

TEST_F(QzmapLookup, CutsALongLineOnBothSides) {
    Composition a("a.cpp");
    const std::string line = std::string(1000, 'a') + "b" + std::string(1000, 'c') + "\n";
    a.AddFile("a.qz", line);
    a.Copy(0, line);
    WriteFiles(a);
    EXPECT_EQ(Found({"1:1001"}), "a.qz:1:1001: copied\n..." + std::string(100, 'a') + "b"
                                     + std::string(99, 'c') + "...\n" + std::string(103, ' ')
                                     + "^\n");
}

TEST_F(QzmapLookup, MakesEveryByteVisible) {
    Composition a("a.cpp");
    a.AddFile("a\x1b.qz", "\x1b[31m\xff\xe2\x80\xae!\xc3\xa9?\n");
    a.Copy(0, "\x1b[31m\xff\xe2\x80\xae!\xc3\xa9?\n");
    WriteFiles(a);
    EXPECT_EQ(Found({"1:10"}), "a\\x1b.qz:1:10: copied\n"
                               "\\x1b[31m\\xff\\xe2\\x80\\xae!\xc3\xa9?\n"
                               "                        ^\n");
    EXPECT_EQ(Found({"1:12"}), "a\\x1b.qz:1:12: copied\n"
                               "\\x1b[31m\\xff\\xe2\\x80\\xae!\xc3\xa9?\n"
                               "                         ^\n");
}

// ---- from a source -----------------------------------------------------------------------------

TEST_F(QzmapLookup, ShowsEveryPlaceThatASourceLineWentTo) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Found({"--source", "lib.qz:1"}), "a.cpp:3:5: copied\n"
                                               "    return 3 + five(5);\n"
                                               "    ^~~~~~~\n"
                                               "a.cpp:3:12: calculated\n"
                                               "    return 3 + five(5);\n"
                                               "           ^\n"
                                               "a.cpp:3:13: copied\n"
                                               "    return 3 + five(5);\n"
                                               "            ^~~~~~~~\n"
                                               "a.cpp:3:22: copied\n"
                                               "    return 3 + five(5);\n"
                                               "                     ^~\n");
    EXPECT_EQ(Found({"--source", "<-D n>:1"}),
              "a.cpp:3:21: copied\n    return 3 + five(5);\n                    ^\n");
    EXPECT_EQ(Found({"--source", "a.cpp.qz:3"}), "a.cpp:2:1: copied\n"
                                                 "int main() {\n"
                                                 "^~~~~~~~~~~~\n");
    EXPECT_EQ(Found({"--source", "a.cpp.qz:2:3"}), "a.cpp:1:3: copied\n#include <cstdio>\n  ^\n");
}

TEST_F(QzmapLookup, FindsASourceByAnyPathThatLeadsToIt) {
    WriteFiles(EveryKind());
    std::filesystem::create_directory(PathOf("sub"));
    std::filesystem::create_symlink("lib.qz", PathOf("link.qz"));
    const std::string found = Found({"--source", "lib.qz:1:37"});
    EXPECT_EQ(found, "a.cpp:3:22: copied\n    return 3 + five(5);\n                     ^\n");
    EXPECT_EQ(Found({"--source", "./sub/../lib.qz:1:37"}), found);
    EXPECT_EQ(Found({"--source", PathOf("lib.qz").string() + ":1:37"}), found);
    EXPECT_EQ(Found({"--source", "link.qz:1:37"}), found);
    EXPECT_EQ(Refused({"--source", "a.cpp:1"}), "qzmap: a.cpp.map: a.cpp is no source of a.cpp\n");
}

TEST_F(QzmapLookup, SaysThatALineWentNowhere) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Refused({"--source", "a.cpp.qz:1"}),
              "qzmap: a.cpp.qz:1:1: nothing of this is in a.cpp\n");
    EXPECT_EQ(Refused({"--source", "lib.qz:2"}), "qzmap: lib.qz has 1 lines\n");
}

// ---- where the files are -----------------------------------------------------------------------

TEST_F(QzmapLookup, TakesNamesFromTheFolderOfTheMap) {
    Composition a("out/a.cpp");
    a.AddFile("src/a.qz", "text\n");
    a.Copy(0, "text\n");
    WriteFiles(a);
    qztools::Map map = a.Map();
    map.outputName = "a.cpp";
    map.sources[0].name = "../src/a.qz";
    Write("out/a.map", qztools::FormatMap(map));
    EXPECT_EQ(Qzmap({"lookup", "out/a.map", "1:2"}),
              (Result{0, "src/a.qz:1:2: copied\ntext\n ^\n", ""}));
    std::filesystem::create_directory(PathOf("moved"));
    std::filesystem::rename(PathOf("out/a.map"), PathOf("moved/a.map"));
    EXPECT_EQ(Qzmap({"lookup", "moved/a.map", "1:2"}),
              (Result{1, "", "qzmap: moved/a.map: moved/a.cpp: No such file or directory\n"}));
    EXPECT_EQ(Qzmap({"lookup", "--base=out", "moved/a.map", "1:2"}),
              (Result{0, "src/a.qz:1:2: copied\ntext\n ^\n", ""}));
}

TEST_F(QzmapLookup, ShowsAPathThatFollowsLinksAsItStands) {
    Composition a("a.cpp");
    a.AddFile("deep/down/../a.qz", "text\n");
    a.Copy(0, "text\n");
    std::filesystem::create_directories(PathOf("deep/down"));
    WriteFiles(a);
    EXPECT_EQ(Found({"1:1"}), "deep/a.qz:1:1: copied\ntext\n^\n");
    std::filesystem::rename(PathOf("deep"), PathOf("other"));
    std::filesystem::create_directories(PathOf("deep"));
    std::filesystem::create_symlink(PathOf("other/down"), PathOf("deep/down"));
    EXPECT_EQ(Found({"1:1"}), "deep/down/../a.qz:1:1: copied\ntext\n^\n");
}

TEST_F(QzmapLookup, ReadsAMapFromStandardInput) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Qzmap({"lookup", "-", "1:2"}, Read("a.cpp.map")),
              (Result{0, "a.cpp.qz:2:2: copied\n#include <cstdio>\n ^\n", ""}));
}

TEST_F(QzmapLookup, IsToldWhereAnOutputIsThatWentToStandardOutput) {
    Composition a("-");
    a.AddFile("a.qz", "text\n");
    a.Copy(0, "text\n");
    WriteFiles(a);
    EXPECT_EQ(Qzmap({"lookup", "out.map", "1"}),
              (Result{1, "",
                      "qzmap: out.map: the output went to standard output; --output FILE tells "
                      "where it is now\n"}));
    Write("kept.txt", "text\n");
    EXPECT_EQ(Qzmap({"lookup", "out.map", "1:1", "--output", "kept.txt"}),
              (Result{0, "a.qz:1:1: copied\ntext\n^\n", ""}));
}

}  // namespace
