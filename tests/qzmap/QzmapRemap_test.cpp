// qzmap remap: which places of a message are rewritten, and what stays to the byte.

#include <chrono>
#include <thread>

#include <unistd.h>

#include "QzmapTest.h"

namespace {

using qzmap_test::Composition;
using qzmap_test::EveryKind;
using qzmap_test::Result;

class QzmapRemap : public qzmap_test::QzmapTest {
protected:
    void ExpectUnchanged(const std::string& messages) const {
        EXPECT_EQ(Remapped(messages), messages);
    }
};

struct Rewritten {
    std::string message;
    std::string expected;
};

// ---- forms -------------------------------------------------------------------------------------

TEST_F(QzmapRemap, RewritesTheFormsOfMessages) {
    WriteFiles(EveryKind());
    const Rewritten messages[] = {
        {"a.cpp:2:5: error: x",                      "a.cpp.qz:3:5: error: x"                   },
        {"a.cpp:3:13: note: x",                      "lib.qz:1:28: note: x"                     },
        {"a.cpp:3:21: error: x",                     "<-D n>:1:1: error: x"                     },
        {"a.cpp:2: warning: x",                      "a.cpp.qz:3: warning: x"                   },
        {"a.cpp:3: warning: x",                      "lib.qz:1: warning: x"                     },
        {"a.cpp:2:0: error: x",                      "a.cpp.qz:3:0: error: x"                   },
        {"a.cpp:2",                                  "a.cpp.qz:3"                               },
        {"In file included from a.cpp:1:",           "In file included from a.cpp.qz:2:"        },
        {"In file included from a.cpp:1:10,",        "In file included from a.cpp.qz:2:10,"     },
        {"                 from a.cpp:1:",           "                 from a.cpp.qz:2:"        },
        {"a.cpp(2): error C2065: x",                 "a.cpp.qz(3): error C2065: x"              },
        {"a.cpp(2) : error: x",                      "a.cpp.qz(3) : error: x"                   },
        {"a.cpp(3,13): error: x",                    "lib.qz(1,28): error: x"                   },
        {"1>a.cpp(2): error: x",                     "1>a.cpp.qz(3): error: x"                  },
        {"/usr/bin/ld: a.cpp:2: undefined",          "/usr/bin/ld: a.cpp.qz:3: undefined"       },
        {"x: a.cpp:2: main: Assertion failed.",      "x: a.cpp.qz:3: main: Assertion failed."   },
        {"    #1 0x55 in main a.cpp:3:13",           "    #1 0x55 in main lib.qz:1:28"          },
        {"note: (lambda at a.cpp:3:13)",             "note: (lambda at lib.qz:1:28)"            },
        {"  File \"a.cpp\", line 2, in main",        "  File \"a.cpp.qz\", line 3, in main"     },
        {"a.cpp:2:5:{2:5-2:9}: error: x",            "a.cpp.qz:3:5:{3:5-3:9}: error: x"         },
        {"a.cpp:2:5:{1:1-1:2}{2:5-2:9}: error: x",   "a.cpp.qz:3:5:{2:1-2:2}{3:5-3:9}: error: x"},
        {"a.cpp:2:5: see a.cpp:3:13 and a.cpp:1:1.",
         "a.cpp.qz:3:5: see lib.qz:1:28 and a.cpp.qz:2:1."                                      },
    };
    for (const auto& [message, expected] : messages)
        EXPECT_EQ(Remapped(message + "\n"), expected + "\n");
}

TEST_F(QzmapRemap, TakesBlanksOfIndentationForWhatFollowsThem) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Remapped("a.cpp:3:1: error: x\n"), "lib.qz:1:13: error: x\n");
}

TEST_F(QzmapRemap, LeavesOutRangesThatLieInAnotherSource) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Remapped("a.cpp:3:14:{3:14-3:18}{3:21-3:22}: error: x\n"), "lib.qz:1:29: error: x\n");
    EXPECT_EQ(Remapped("a.cpp:3:14:{3:14-3:21}: error: x\n"),
              "lib.qz:1:29:{1:29-1:36}: error: x\n");
}

TEST_F(QzmapRemap, KeepsAColumnBehindTheEndOfALine) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Remapped("a.cpp:2:13: x\na.cpp:2:99: x\n"), "a.cpp.qz:3:13: x\na.cpp.qz:3:13: x\n");
}

TEST_F(QzmapRemap, LeavesWhatIsNoPlaceOfTheOutput) {
    WriteFiles(EveryKind());
    Write("sub/a.cpp", "another\n");
    Write("my a.cpp", "another\n");
    for (const char* message : {"b.cpp:2:5: error: x",
                                "ba.cpp:2:5: error",
                                "a.cpp.o:2: x",
                                "sub/a.cpp:2:5: error: x",
                                "my a.cpp:2:5: error: x",
                                "a.cpp:: x",
                                "a.cpp:x",
                                "a.cpp:2x",
                                "a.cpp:2.5",
                                "a.cpp(2)",
                                "a.cpp(2) = x",
                                "a.cpp(2,3,4): x",
                                "a.cpp(2",
                                "a.cpp:99: x",
                                "a.cpp:0:1: x",
                                "a.cpp",
                                "a.cpp:",
                                "x = \"a.cpp:2:5\"",
                                "nosuch/a.cpp:2:5: x",
                                "a.cpp:5:1: in what the tool put in",
                                "a.cpp:99999999999999999999:1: x",
                                "a.cpp:2:99999999999999999999: x",
                                ":2:5: x",
                                "(2): x",
                                "\", line 2",
                                "\"a.cpp\", line x",
                                "a.cpp, line 2",
                                ""})
        ExpectUnchanged(std::string(message) + "\n");
}

TEST_F(QzmapRemap, KnowsTheOutputByAnyPathThatLeadsToIt) {
    Composition a("out dir/a.cpp");
    a.AddFile("a.qz", "one\ntwo\n");
    a.Copy(0, "two\n");
    WriteFiles(a);
    qztools::Map map = a.Map();
    map.outputName = "a.cpp";
    map.sources[0].name = "../a.qz";
    Write("out dir/a.map", qztools::FormatMap(map));
    std::filesystem::create_directory_symlink("out dir", PathOf("link"));
    const std::string absolute = PathOf("out dir/a.cpp").string();
    for (const std::string& path : {std::string("out dir/a.cpp"), std::string("./out dir/a.cpp"),
                                    std::string("out dir/../link//a.cpp"), absolute})
        EXPECT_EQ(Remapped(path + ":1:2: x\n", "out dir/a.map"), "a.qz:2:2: x\n");
    EXPECT_EQ(Remapped("a.cpp:1:2: x\n", "out dir/a.map"), "a.cpp:1:2: x\n");
    EXPECT_EQ(Remapped("link/a.cpp:1:2: x\n", "out dir/a.map"), "a.qz:2:2: x\n");
}

TEST_F(QzmapRemap, TakesRelativeNamesFromTheFolderOfTheMessages) {
    WriteFiles(EveryKind());
    Write("sub/x", "");
    EXPECT_EQ(Qzmap({"remap", "-C", "sub", "a.cpp.map"}, "../a.cpp:2:5: x\na.cpp:2:5: x\n"),
              (Result{0, "a.cpp.qz:3:5: x\na.cpp:2:5: x\n", ""}));
    const std::string absolute = PathOf("a.cpp").string();
    EXPECT_EQ(Qzmap({"remap", "-C", "sub", "a.cpp.map"}, absolute + ":2:5: x\n"),
              (Result{0, "a.cpp.qz:3:5: x\n", ""}));
}

TEST_F(QzmapRemap, KnowsAnOutputThatWasMovedByItsOldPathAsWell) {
    WriteFiles(EveryKind());
    std::filesystem::rename(PathOf("a.cpp"), PathOf("kept.cpp"));
    EXPECT_EQ(Qzmap({"remap", "--output", "kept.cpp", "a.cpp.map"},
                    "a.cpp:2:5: x\n./a.cpp:2:5: x\nkept.cpp:2:5: x\n"),
              (Result{0, "a.cpp.qz:3:5: x\na.cpp.qz:3:5: x\na.cpp.qz:3:5: x\n", ""}));
}

TEST_F(QzmapRemap, KnowsStandardInputWhereTheOutputWentThroughAPipe) {
    Composition a("-");
    a.AddFile("a.qz", "one\ntwo\n");
    a.Copy(0, "two\n");
    WriteFiles(a);
    Write("kept.cpp", "two\n");
    EXPECT_EQ(Qzmap({"remap", "--output", "kept.cpp", "out.map"},
                    "<stdin>:1:2: x\n<stdin>: In function 'f':\n<stdin>:1:3: y\n"),
              (Result{0, "a.qz:2:2: x\na.qz: In function 'f':\na.qz:2:3: y\n", ""}));
    WriteFiles(EveryKind());
    EXPECT_EQ(Remapped("<stdin>:1:2: x\n"), "<stdin>:1:2: x\n");
}

TEST_F(QzmapRemap, TakesSeveralMapsAtOnce) {
    Composition b("b.cpp");
    b.AddFile("b.qz", "one\ntwo\n");
    b.Copy(0, "two\n");
    WriteFiles(b);
    WriteFiles(EveryKind());
    EXPECT_EQ(
        Qzmap({"remap", "a.cpp.map", "b.cpp.map"}, "a.cpp:1:1: x\nb.cpp:1:1: see a.cpp:2:1\n"),
        (Result{0, "a.cpp.qz:2:1: x\nb.qz:2:1: see a.cpp.qz:3:1\n", ""}));
}

TEST_F(QzmapRemap, LetsMessagesThroughWhereAMapCannotBeUsed) {
    WriteFiles(EveryKind());
    Write("bad.map", "{}");
    EXPECT_EQ(Qzmap({"remap", "bad.map", "a.cpp.map", "no.map"}, "a.cpp:1:1: x\n"),
              (Result{1, "a.cpp.qz:2:1: x\n",
                      "qzmap: bad.map: no map: the field \"format\" is missing\n"
                      "qzmap: no.map: No such file or directory\n"}));
}

// ---- headings and excerpts ---------------------------------------------------------------------

TEST_F(QzmapRemap, GivesAHeadingTheFileOfTheMessageBehindIt) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Remapped("a.cpp: In function 'int main()':\na.cpp:3:13: error: x\n"
                       "a.cpp: At global scope:\na.cpp:2:5: error: x\n"),
              "lib.qz: In function 'int main()':\nlib.qz:1:28: error: x\n"
              "a.cpp.qz: At global scope:\na.cpp.qz:3:5: error: x\n");
    ExpectUnchanged("a.cpp: In function 'int main()':\nb.cpp:3:13: error: x\n");
    ExpectUnchanged("a.cpp: In function 'int main()':\n");
    ExpectUnchanged("b.cpp: In function 'int main()':\na.h:1: x\n");
}

TEST_F(QzmapRemap, NumbersAnExcerptWhoseLineIsTheSameInTheSource) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Remapped("a.cpp:2:5: error: x\n    2 | int main() {\n      |     ^~~~\n"),
              "a.cpp.qz:3:5: error: x\n    3 | int main() {\n      |     ^~~~\n");
}

TEST_F(QzmapRemap, LeavesAnExcerptThatIsNotTheSameInTheSource) {
    WriteFiles(EveryKind());
    const std::string excerpt = "    3 |     return 3 + five(5);\n      |            ^~~~\n";
    EXPECT_EQ(Remapped("a.cpp:3:13: error: x\n" + excerpt), "lib.qz:1:28: error: x\n" + excerpt);
    const std::string other = "    2 | int other() {\n";
    EXPECT_EQ(Remapped("a.cpp:2:5: x\n" + other), "a.cpp.qz:3:5: x\n" + other);
    ExpectUnchanged("    2 | int main() {\n");
}

TEST_F(QzmapRemap, WritesNothingIntoAnExcerpt) {
    Composition a("a.cpp");
    a.AddFile("a.qz", "one\n// see a.cpp:1:1: there\n");
    a.Copy(0, "// see a.cpp:1:1: there\n");
    WriteFiles(a);
    EXPECT_EQ(Remapped("a.cpp:1:1: x\n// see a.cpp:1:1: there\n^\n"),
              "a.qz:2:1: x\n// see a.cpp:1:1: there\n^\n");
    EXPECT_EQ(Remapped("a.cpp:1:1: x\n    1 | // see a.cpp:1:1: there\n      | ^ a.cpp:1:1:\n"
                       "  +++ |+#include \"a.cpp:1:1\"\n"),
              "a.qz:2:1: x\n    2 | // see a.cpp:1:1: there\n      | ^ a.cpp:1:1:\n"
              "  +++ |+#include \"a.cpp:1:1\"\n");
}

TEST_F(QzmapRemap, KeepsTheGutterWhereALongerNumberHasNoRoom) {
    Composition a("a.cpp");
    a.AddFile("a.qz", std::string(9, '\n') + "line\n");
    a.Copy(0, "line\n");
    WriteFiles(a);
    EXPECT_EQ(Remapped("a.cpp:1:1: x\n 1 | line\n"), "a.qz:10:1: x\n 1 | line\n");
    EXPECT_EQ(Remapped("a.cpp:1:1: x\n  1 | line\n"), "a.qz:10:1: x\n 10 | line\n");
}

// ---- columns -----------------------------------------------------------------------------------

class QzmapColumns : public QzmapRemap {
protected:
    QzmapColumns() {
        Composition a("a.cpp");
        a.AddFile("a.qz", "@def m = \tcaf\xc3\xa9 = \xe4\xb8\xad + wrong;\n");
        a.Copy(0, "\tcaf\xc3\xa9 = \xe4\xb8\xad + wrong;\n");
        WriteFiles(a);
    }

    std::string ColumnOf(int column, const std::string& unit) const {
        const std::string message = "a.cpp:1:" + std::to_string(column) + ": x\n";
        const Result result = unit.empty()
                                  ? Qzmap({"remap", "a.cpp.map"}, message)
                                  : Qzmap({"remap", "--columns=" + unit, "a.cpp.map"}, message);
        EXPECT_EQ(result.out.rfind("a.qz:1:", 0), 0u);
        return result.out.substr(7, result.out.find(": x") - 7);
    }
};

// The byte columns of c, =, the wide character and wrong are 2, 8, 10 and 16; those that GCC counts
// are 9, 14, 16 and 21. In the source they are 11, 17, 19 and 25, and 17, 22, 24 and 29.
TEST_F(QzmapColumns, AreCountedInTheUnitOfTheCompiler) {
    EXPECT_EQ(ColumnOf(2, "bytes"), "11");
    EXPECT_EQ(ColumnOf(16, "bytes"), "25");
    EXPECT_EQ(ColumnOf(9, "display"), "17");
    EXPECT_EQ(ColumnOf(14, "display"), "22");
    EXPECT_EQ(ColumnOf(21, "display"), "29");
}

TEST_F(QzmapColumns, AreGuessedWhereOneUnitAloneMakesSense) {
    EXPECT_EQ(ColumnOf(2, ""), "11");   // inside the tab, for GCC
    EXPECT_EQ(ColumnOf(27, ""), "35");  // behind the end, for Clang
    EXPECT_EQ(ColumnOf(9, ""), "18");   // bytes, for want of a sign
}

TEST_F(QzmapColumns, AreThoseOfGccBehindOneOfItsHeadings) {
    EXPECT_EQ(Remapped("a.cpp: In function 'f':\na.cpp:1:21: x\n"),
              "a.qz: In function 'f':\na.qz:1:29: x\n");
}

// ---- bytes -------------------------------------------------------------------------------------

TEST_F(QzmapRemap, KeepsColoursAroundAPlace) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Remapped("\x1b[01m\x1b[Ka.cpp:3:13:\x1b[m\x1b[K \x1b[01;31m\x1b[Kerror: "
                       "\x1b[m\x1b[Kx\n"),
              "\x1b[01m\x1b[Klib.qz:1:28:\x1b[m\x1b[K \x1b[01;31m\x1b[Kerror: \x1b[m\x1b[Kx\n");
    EXPECT_EQ(Remapped("In file included from \x1b[01m\x1b[Ka.cpp:1\x1b[m\x1b[K,\n"),
              "In file included from \x1b[01m\x1b[Ka.cpp.qz:2\x1b[m\x1b[K,\n");
    EXPECT_EQ(Remapped("\x1b[1ma.cpp:2:5: \x1b[0m\x1b[0;1;31merror: \x1b[0mx\n"),
              "\x1b[1ma.cpp.qz:3:5: \x1b[0m\x1b[0;1;31merror: \x1b[0mx\n");
    EXPECT_EQ(Remapped("\x1b[01m\x1b[Ka.cpp:\x1b[m\x1b[K In function:\n"
                       "\x1b[01m\x1b[Ka.cpp:2:5:\x1b[m\x1b[K x\n"
                       "    2 | int \x1b[01;31m\x1b[Kmain\x1b[m\x1b[K() {\n"),
              "\x1b[01m\x1b[Ka.cpp.qz:\x1b[m\x1b[K In function:\n"
              "\x1b[01m\x1b[Ka.cpp.qz:3:5:\x1b[m\x1b[K x\n"
              "    3 | int \x1b[01;31m\x1b[Kmain\x1b[m\x1b[K() {\n");
    EXPECT_EQ(Remapped("\x1b]8;;file:///a.cpp\aa.cpp:2:5\x1b]8;;\a: x\n"),
              "\x1b]8;;file:///a.cpp\aa.cpp.qz:3:5\x1b]8;;\a: x\n");
}

TEST_F(QzmapRemap, KeepsEveryByteAndEveryLineEnd) {
    WriteFiles(EveryKind());
    const std::string bytes("\0\xff\xfe\x1b[\r a.cpp:2:5: x \x80\n\n\r\n\x1b]8;;", 30);
    std::string expected = bytes;
    expected.replace(expected.find("a.cpp:2:5"), 9, "a.cpp.qz:3:5");
    EXPECT_EQ(Remapped(bytes), expected);
    EXPECT_EQ(Remapped("a.cpp:2:5: x\r\na.cpp:2:5: x"), "a.cpp.qz:3:5: x\r\na.cpp.qz:3:5: x");
    EXPECT_EQ(Remapped("a.cpp: In function"), "a.cpp: In function");
    EXPECT_EQ(Remapped(""), "");
}

TEST_F(QzmapRemap, RewritesTheStartOfAVeryLongLineAndLetsTheRestThrough) {
    WriteFiles(EveryKind());
    const std::string rest(3 << 20, 'x');
    EXPECT_TRUE(Remapped("a.cpp:2:5: " + rest + " a.cpp:2:5:\na.cpp:2:5: y\n")
                == "a.cpp.qz:3:5: " + rest + " a.cpp:2:5:\na.cpp.qz:3:5: y\n");
}

TEST_F(QzmapRemap, RewritesALineThatIsFullOfPlaces) {
    WriteFiles(EveryKind());
    std::string line;
    std::string expected;
    for (int i = 0; i < 20'000; ++i) {
        line += "\x1b[1ma.cpp:2:5 ";
        expected += "\x1b[1ma.cpp.qz:3:5 ";
    }
    EXPECT_TRUE(Remapped(line + "\n") == expected + "\n");
}

TEST_F(QzmapRemap, ReadsNoNumberThatIsCut) {
    Composition a("a.cpp");
    a.AddFile("a.qz", "x\n" + std::string(20, '\n'));
    a.Copy(0, std::string("x\n") + std::string(20, '\n'));
    WriteFiles(a);
    for (std::size_t cut = 1; cut < 12; ++cut) {
        const std::string line = std::string((1 << 20) - cut + 1, ' ') + "a.cpp:12: x\n";
        const std::string out = Remapped(line);
        EXPECT_TRUE(out == line || out == line.substr(0, line.find("a.cpp")) + "a.qz:12: x\n")
            << cut;
    }
}

TEST_F(QzmapRemap, WritesEachLineAsSoonAsItIsThere) {
    WriteFiles(EveryKind());
    const std::string script = "(printf 'a.cpp:2:5: x\\nrest'; while [ ! -e seen ]; do sleep 0.01; "
                               "done; echo) | '" QZMAP "' remap a.cpp.map | "
                               "while read -r line; do echo \"$line\"; : > seen; done";
    EXPECT_EQ(RunProgram("/bin/sh", {"-c", script}), (Result{0, "a.cpp.qz:3:5: x\nrest\n", ""}));
}

// The first build makes the map as well.
TEST_F(QzmapRemap, WaitsForAMapThatIsNotThereYet) {
    WriteFiles(EveryKind());
    std::filesystem::rename(PathOf("a.cpp.map"), PathOf("later.map"));
    const std::string script =
        "(echo 'b.cpp:1:1: x'; while [ ! -e seen ]; do sleep 0.01; done; mv later.map a.cpp.map; "
        "echo 'a.cpp: In function f:'; echo 'a.cpp:2:5: x') | '" QZMAP "' remap a.cpp.map | "
        "while read -r line; do echo \"$line\"; : > seen; done";
    EXPECT_EQ(RunProgram("/bin/sh", {"-c", script}),
              (Result{0, "b.cpp:1:1: x\na.cpp.qz: In function f:\na.cpp.qz:3:5: x\n", ""}));
}

// A build can make an output and its map, and then compile it.
TEST_F(QzmapRemap, ReadsAMapWhenTheFirstMessageSpeaksOfItsOutput) {
    WriteFiles(EveryKind());
    const Composition a = EveryKind();
    Composition changed("a.cpp");
    changed.AddFile("new.qz", "\n\n\nmade anew\n");
    changed.Copy(0, "made anew\n");
    Write("new.map", qztools::FormatMap(changed.Map()));
    Write("new.qz", changed.SourceBytes()[0]);
    Write("new.out", changed.Output());
    const std::string script =
        "(echo building; while [ ! -e seen ]; do sleep 0.01; done; cp new.out a.cpp; "
        "cp new.map a.cpp.map; echo 'a.cpp:1:6: x') | '" QZMAP "' remap a.cpp.map | "
        "while read -r line; do echo \"$line\"; : > seen; done";
    EXPECT_EQ(RunProgram("/bin/sh", {"-c", script}), (Result{0, "building\nnew.qz:4:6: x\n", ""}));
}

}  // namespace
