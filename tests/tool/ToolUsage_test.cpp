// Wrong calls, --help and --version.

#include "ToolRunner.h"

namespace {

using tool_test::Result;
using tool_test::ToolTest;
using tool_test::WrongCall;

class ToolUsage : public ToolTest {};

TEST_F(ToolUsage, RefusesAWrongCallWithAShortText) {
    EXPECT_EQ(Run({"-q"}), WrongCall("unknown option -q"));
    EXPECT_EQ(Run({"--quiet"}), WrongCall("unknown option --quiet"));
    EXPECT_EQ(Run({"--version=3"}), WrongCall("unknown option --version=3"));
    EXPECT_EQ(Run({"-o"}), WrongCall("-o needs an argument"));
    EXPECT_EQ(Run({"-D"}), WrongCall("-D needs an argument"));
    EXPECT_EQ(Run({"--eval"}), WrongCall("--eval needs an argument"));
    EXPECT_EQ(Run({"a", "b"}), WrongCall("more than one file without -o FOLDER: b"));
    EXPECT_EQ(Run({"--eval", "1", "a"}), WrongCall("--eval takes no file: a"));
}

TEST_F(ToolUsage, MakesTheBytesOfAWrongArgumentVisible) {
    EXPECT_EQ(Run({"a", "\x1b[31m\n"}),
              WrongCall("more than one file without -o FOLDER: \\x1b[31m\\x0a"));
}

TEST_F(ToolUsage, ShowsTheVersionOfTheProject) {
    EXPECT_EQ(Run({"--version"}), (Result{0, "qzexpand " QZEXPAND_VERSION "\n", ""}));
}

TEST_F(ToolUsage, ShowsHelpOnStandardOutput) {
    const Result result = Run({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.rfind("usage: qzexpand [OPTION]... [FILE]\n", 0), 0u);
    EXPECT_EQ(result.out.substr(result.out.size() - 19), ", 3 after a limit.\n");
}

TEST_F(ToolUsage, FailsWhereHelpCannotBeWritten) {
    EXPECT_EQ(Run({"--help"}, "", tool_test::Redirect(1, "/dev/full")),
              (Result{1, "", "qzexpand: standard output: No space left on device\n"}));
}

}  // namespace
