// The same call gives the same bytes, wherever it is made.

#include "ToolRunner.h"

#include <cstdlib>
#include <sstream>

#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using tool_test::Process;
using tool_test::Result;
using tool_test::ToolTest;

// Variables, with blanks between them.
const std::string s_environments[] = {
    "",
    "LC_ALL=C.UTF-8 LANG=C.UTF-8 TZ=Asia/Kathmandu",
    "LC_ALL=de_DE.UTF-8 LANGUAGE=de:tr LC_NUMERIC=de_DE.UTF-8",
    "LC_ALL=tr_TR.UTF-8 LC_CTYPE=tr_TR.UTF-8",
    "POSIXLY_CORRECT=1 COLUMNS=3",
    "QZEXPAND=--check QZEXPAND_OPTIONS=-q QZ_PATH=/ CPATH=/",
    "TMPDIR=/nonexistent HOME=/nonexistent PATH= PWD=/",
    "TERM=xterm-256color CLICOLOR_FORCE=1 COLORTERM=truecolor",
    "SOURCE_DATE_EPOCH=1 USER=nobody HOSTNAME=other SHELL=/x",
};

void SetEnvironment(const std::string& variables) {
    ::clearenv();
    std::istringstream words(variables);
    for (std::string word; words >> word;) {
        const std::size_t equal = word.find('=');
        ::setenv(word.substr(0, equal).c_str(), word.substr(equal + 1).c_str(), 1);
    }
}

// A call in a folder of its own, with what it leaves behind.
class ToolHermetic : public ToolTest {
protected:
    struct Left {
        Result result;
        std::string output;
        std::string depfile;

        bool operator==(const Left&) const = default;

        friend void PrintTo(const Left& left, std::ostream* os) {
            PrintTo(left.result, os);
            *os << "\noutput " << testing::PrintToString(left.output) << "\ndepfile "
                << testing::PrintToString(left.depfile);
        }
    };

    Left Call(const std::string& folder, const std::string& variables, mode_t mask = 022) const {
        Write(folder + "/a.qz", s_text);
        Write(folder + "/lib/b.qz", "@def m = 2.5\n");
        const auto setUp = [&variables, mask] {
            SetEnvironment(variables);
            ::umask(mask);
        };
        const Result result = Process(PathOf(folder),
                                      {"a.qz", "-o", "out.txt", "-D", "double:d=0.1", "--depfile",
                                       "out.d", "-I", "lib"},
                                      "", setUp)
                                  .Wait();
        return {result, Read(folder + "/out.txt"), Read(folder + "/out.d")};
    }

    static constexpr char s_text[] = "@import \"b.qz\"\n"
                                     "@println(printed)\n"
                                     "@(m * 3.25e10 + d) @(\"I\" == \"i\") @(sin(1.5))\n"
                                     "@for (x in [b, a, C]) { x }\n"
                                     "@[1.5 m]\n";
};

TEST_F(ToolHermetic, LeavesTheSameBytesInEveryFolderAndEnvironment) {
    const Left expected = Call("here", "");
    EXPECT_EQ(expected.result, (Result{0, "", "printed\n"}));
    EXPECT_EQ(expected.depfile, "out.txt: a.qz lib/b.qz\nlib/b.qz:\n");
    EXPECT_NE(expected.output.find("81250000000.1"), std::string::npos) << expected.output;
    for (const std::string& variables : s_environments)
        EXPECT_EQ(Call("there/deeper/and deeper", variables, 077), expected) << variables;
}

TEST_F(ToolHermetic, ReportsErrorsInTheSameWordsEverywhere) {
    Write("a.qz", "@import \"nosuch\"");
    const Result expected{1, "",
                          "a.qz(1) : Can't import file: nosuch\n"
                          "    nosuch: No such file or directory\n"
                          "@import \"nosuch\"\n"
                          "        ^\n"};
    for (const std::string& variables : s_environments)
        EXPECT_EQ(Run({"a.qz"}, "", [&variables] { SetEnvironment(variables); }), expected);
}

TEST_F(ToolHermetic, ReadsOptionsBehindFilesEverywhere) {
    Write("a.qz", "n");
    for (const std::string& variables : s_environments)
        EXPECT_EQ(Run({"a.qz", "-D", "n=1"}, "", [&variables] { SetEnvironment(variables); }),
                  (Result{0, "1", ""}));
}

// As an executor on another machine does: it has the files of the depfile, and nothing else.
TEST_F(ToolHermetic, NeedsNoOtherFilesThanTheDepfileNames) {
    Write("here/other.qz", "@fail(\"stop\")");
    Write("here/b.qz", "@def m = 1\n");
    const Left expected = Call("here", "");
    EXPECT_EQ(expected.depfile, "out.txt: a.qz b.qz\nb.qz:\n");
    std::istringstream words(expected.depfile.substr(0, expected.depfile.find('\n')));
    std::string name;
    words >> name;
    while (words >> name)
        Write("there/" + name, Read("here/" + name));
    const Result result =
        Process(PathOf("there"),
                {"a.qz", "-o", "out.txt", "-D", "double:d=0.1", "--depfile", "out.d", "-I", "lib"},
                "", {})
            .Wait();
    EXPECT_EQ((Left{result, Read("there/out.txt"), Read("there/out.d")}), expected);
}

}  // namespace
