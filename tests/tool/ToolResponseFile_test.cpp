// Arguments: their order and forms, and those that stand in files.

#include "ToolRunner.h"

#include <csignal>

namespace {

using tool_test::Result;
using tool_test::ToolTest;
using tool_test::WrongCall;

// ---- forms of options --------------------------------------------------------------------------

class ToolArguments : public ToolTest {};

TEST_F(ToolArguments, MayStandInEveryOrderAndForm) {
    Write("a.qz", "n");
    const std::vector<std::string> calls[] = {
        {"-D",    "n=1",   "-o",         "out",    "a.qz"},
        {"a.qz",       "-Dn=1",         "-oout"       },
        {"-Dn=1", "-oout", "--",         "a.qz"},
        {"--imp", "keep",  "-Dn=1",      "-oout",   "a.qz"},
        {"--limit-s=9",       "-Dn=1",  "-oout", "a.qz" },
    };
    for (const std::vector<std::string>& call : calls) {
        Write("out", "");
        EXPECT_EQ(Run(call), (Result{0, "", ""}));
        EXPECT_EQ(Read("out"), "1");
    }
}

TEST_F(ToolArguments, AreFilesBehindTwoDashes) {
    Write("-a", "text");
    Write("@a", "other");
    EXPECT_EQ(Run({"--", "-a"}), (Result{0, "text", ""}));
    EXPECT_EQ(Run({"--", "@a"}), (Result{0, "other", ""}));
    EXPECT_EQ(Run({"./@a"}), (Result{0, "other", ""}));
}

TEST_F(ToolArguments, TakeAnyValue) {
    EXPECT_EQ(Run({"-o", "--help"}, "text"), (Result{0, "", ""}));
    EXPECT_EQ(Read("--help"), "text");
    EXPECT_EQ(Run({"-D", "n=-1"}, "n"), (Result{0, "-1", ""}));
    EXPECT_EQ(Run({"--eval=@(1 + 1)"}), (Result{0, "2\n", ""}));
    EXPECT_EQ(Run({"--eval", "@(1 + 1)"}), (Result{0, "2\n", ""}));
    EXPECT_EQ(Run({"--", "--eval"}),
              (Result{1, "", "qzexpand: --eval: No such file or directory\n"}));
}

TEST_F(ToolArguments, AreRefusedWhereTheyAreUnclear) {
    EXPECT_EQ(Run({"--de", "x"}), WrongCall("ambiguous option --de"));
    EXPECT_EQ(Run({"--ver", "-q"}).status, 0);
    EXPECT_EQ(Run({"-xo"}), WrongCall("unknown option -x"));
    EXPECT_EQ(Run({"--depfile-"}), WrongCall("--depfile- needs an argument"));
    EXPECT_EQ(Run({"-j", "0"}), WrongCall("-j needs a number from 1 to 1000000: 0"));
}

// ---- files of arguments ------------------------------------------------------------------------

class ToolResponseFile : public ToolTest {
protected:
    static Result Failure(const std::string& message) {
        return Result{1, "", "qzexpand: " + message + "\n"};
    }
};

TEST_F(ToolResponseFile, HoldsArguments) {
    Write("a.qz", "a b");
    Write("args", "-D a=1\n\t-Db=2\r\n-o\fout\va.qz\n");
    EXPECT_EQ(Run({"@args"}), (Result{0, "", ""}));
    EXPECT_EQ(Read("out"), "1 2");
}

struct Quoting {
    std::string text;
    std::string value;
};

TEST_F(ToolResponseFile, HasTheQuotesOfGcc) {
    const Quoting table[] = {
        {"string:n=ab",               "ab"              },
        {"'string:n=a b'",            "a b"             },
        {"\"string:n=a b\"",          "a b"             },
        {"string:n=a' 'b\" \"c",      "a b c"           },
        {"string:n=a\\ b",            "a b"             },
        {"string:n=\\\\",             "\\"              },
        {"string:n=\\\"\\'",          "\"'"             },
        {"string:n=a\\n",             "an"              },
        {"\"string:n=a\\\"'b\"",      "a\"'b"           },
        {"'string:n=a\\'\"b'",        "a'\"b"           },
        {"string:n=''",               ""                },
        {"'string:n=a\nb'",           "a\nb"            },
        {"string:n=a\\\nb",           "a\nb"            },
        {"string:n=a\\",              "a"               },
        {"string:n=\xff\xc3\xa9\x1b", "\xff\xc3\xa9\x1b"},
    };
    for (const Quoting& quoting : table) {
        Write("args", "-D " + quoting.text);
        EXPECT_EQ(Run({"@args"}, "n"), (Result{0, quoting.value, ""})) << quoting.text;
    }
}

TEST_F(ToolResponseFile, MayHoldEmptyArguments) {
    Write("args", "''");
    EXPECT_EQ(Run({"@args"}), Failure(": No such file or directory"));
    Write("args", " \n\t");
    EXPECT_EQ(Run({"@args"}, "text"), (Result{0, "text", ""}));
}

TEST_F(ToolResponseFile, MayHoldHalfOfAnOption) {
    Write("first", "-D");
    Write("second", "n=1 -o");
    EXPECT_EQ(Run({"@first", "n=2", "@first", "@second", "-"}, "n"),
              WrongCall("-D @second: '=' and a value are missing"));
    EXPECT_EQ(Run({"@first", "n=2"}, "n"), (Result{0, "2", ""}));
    EXPECT_EQ(Run({"@first"}), WrongCall("-D needs an argument"));
}

TEST_F(ToolResponseFile, MayNameOthers) {
    Write("a.qz", "n");
    Write("first", "@deep/second a.qz");
    Write("deep/second", "@third\n");
    Write("third", "-Dn=3");
    EXPECT_EQ(Run({"@first"}), (Result{0, "3", ""}));
}

TEST_F(ToolResponseFile, MayBeAPipe) {
    EXPECT_EQ(Run({"@/dev/fd/0"}, "--eval 1+1"), (Result{0, "2\n", ""}));
}

TEST_F(ToolResponseFile, IsNoneBehindTwoDashesAndAsTheValueOfAnOption) {
    Write("args", "-Dn=1");
    EXPECT_EQ(Run({"--", "@args"}), Failure("@args: No such file or directory"));
    Write("more", "-- @args");
    EXPECT_EQ(Run({"@more"}), Failure("@args: No such file or directory"));
    EXPECT_EQ(Run({"-o", "@args"}, "text"), (Result{0, "", ""}));
    EXPECT_EQ(Read("@args"), "text");
    EXPECT_EQ(Run({"@"}), Failure("@: No such file or directory"));
}

TEST_F(ToolResponseFile, EndsWithAClearErrorWhereItIsWrong) {
    EXPECT_EQ(Run({"@nosuch"}), Failure("nosuch: No such file or directory"));
    EXPECT_EQ(Run({"@."}), Failure(".: Is a directory"));
    Write("open", "-D 'n=1");
    EXPECT_EQ(Run({"@open"}), Failure("open: a quote is not closed"));
    Write("zero", std::string("a\0b", 3));
    EXPECT_EQ(Run({"@zero"}), Failure("zero: no file of arguments: it holds a zero byte"));
    Write("wrong", "--quiet");
    EXPECT_EQ(Run({"@wrong"}), WrongCall("unknown option --quiet"));
}

TEST_F(ToolResponseFile, MayNotNameItselfWithoutEnd) {
    Write("args", "@args");
    EXPECT_EQ(Run({"@args"}), Failure("args: more than 1000 files of arguments"));
    Write("two", "@two @two");
    EXPECT_EQ(Run({"@two"}), Failure("two: more than 1000 files of arguments"));
}

}  // namespace
