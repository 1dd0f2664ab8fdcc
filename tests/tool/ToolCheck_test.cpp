// --check: says what would change, and changes nothing.

#include "Shell.h"
#include "ToolRunner.h"

#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using tool_test::Redirect;
using tool_test::Result;
using tool_test::Shell;
using tool_test::ToolTest;
using tool_test::WrongCall;

using Names = std::vector<std::string>;

class ToolCheck : public ToolTest {};

TEST_F(ToolCheck, IsSilentWhereNothingWouldChange) {
    for (const std::string text : {"", "a\nb\n", "a"}) {
        Write("out", text);
        EXPECT_EQ(Run({"--check", "-o", "out"}, text), (Result{0, "", ""}));
    }
    EXPECT_EQ(FileNames(), Names{"out"});
}

// Nobody ever writes to the pipe, and the zeros have no end.
TEST_F(ToolCheck, ReadsNothingThatMightNotEnd) {
    ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
    for (const std::string name : {"pipe", "/dev/zero"})
        EXPECT_EQ(
            Run({"--check", "-o", name}, "x"),
            (Result{1, "",
                    "qzexpand: " + name + ": no regular file, which --check could compare\n"}));
}

TEST_F(ToolCheck, ShowsWhatWouldChange) {
    Write("out", "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n13\n14\n15\n16\n");
    EXPECT_EQ(
        Run({"--check", "-o", "out"}, "0\n1\n2\n3\n4\n5\n6\n7\n8\n9\nten\n11\n12\n13\n14\n15\n"),
        (Result{1,
                "--- out\tthe file\n"
                "+++ out\tthe expansion\n"
                "@@ -1,3 +1,4 @@\n"
                "+0\n 1\n 2\n 3\n"
                "@@ -7,10 +8,9 @@\n"
                " 7\n 8\n 9\n-10\n+ten\n 11\n 12\n 13\n 14\n 15\n-16\n",
                ""}));
    EXPECT_EQ(FileNames(), Names{"out"});
}

TEST_F(ToolCheck, ShowsAnOutputThatIsMissing) {
    EXPECT_EQ(Run({"--check", "-o", "out"}, "a\nb\n"), (Result{1,
                                                               "--- /dev/null\n"
                                                               "+++ out\tthe expansion\n"
                                                               "@@ -0,0 +1,2 @@\n"
                                                               "+a\n+b\n",
                                                               ""}));
    EXPECT_EQ(Run({"--check", "-o", "out"}, ""),
              (Result{1, "--- /dev/null\n+++ out\tthe expansion\n", ""}));
    EXPECT_EQ(FileNames(), Names{});
}

TEST_F(ToolCheck, ShowsWhereALineFeedAtTheEndIsMissing) {
    Write("out", "a\nb");
    EXPECT_EQ(Run({"--check", "-o", "out"}, "a\nb\n"),
              (Result{1,
                      "--- out\tthe file\n"
                      "+++ out\tthe expansion\n"
                      "@@ -1,2 +1,2 @@\n"
                      " a\n-b\n\\ No newline at end of file\n+b\n",
                      ""}));
    EXPECT_EQ(Run({"--check", "-o", "out"}, ""), (Result{1,
                                                         "--- out\tthe file\n"
                                                         "+++ out\tthe expansion\n"
                                                         "@@ -1,2 +0,0 @@\n"
                                                         "-a\n-b\n\\ No newline at end of file\n",
                                                         ""}));
}

TEST_F(ToolCheck, QuotesNamesAsDiffDoes) {
    EXPECT_EQ(Run({"--check", "-o", "a \"\\\n\x1b"}, "").out,
              "--- /dev/null\n+++ \"a \\\"\\\\\\012\\033\"\tthe expansion\n");
    EXPECT_EQ(Run({"--check", "-o", "a b\xc3\xa9"}, "").out,
              "--- /dev/null\n+++ a b\xc3\xa9\tthe expansion\n");
}

TEST_F(ToolCheck, WritesNothing) {
    Write("a.qz", "@import \"b.qz\"\ntext\n");
    Write("b.qz", "");
    Write("dep", "old");
    EXPECT_EQ(Run({"--check", "--always-write", "--depfile", "dep", "-o", "out", "a.qz"}).status,
              1);
    EXPECT_EQ(Read("dep"), "old");
    EXPECT_EQ(FileNames(), (Names{"a.qz", "b.qz", "dep"}));
}

TEST_F(ToolCheck, IsSilentOnStandardOutputAboutWhatTheTextPrints) {
    Write("out", "text");
    EXPECT_EQ(Run({"--check", "-o", "out"}, "@println(note)text"), (Result{0, "", "note\n"}));
    EXPECT_EQ(Run({"--check", "-o", "out"}, "@println(note)text", [] { ::close(1); }),
              (Result{0, "", "note\n"}));
}

TEST_F(ToolCheck, ReportsErrorsAsEverywhere) {
    EXPECT_EQ(Run({"--check"}), WrongCall("--check needs -o FILE"));
    EXPECT_EQ(Run({"--check", "-o", "."}), (Result{1, "", "qzexpand: .: Is a directory\n"}));
    EXPECT_EQ(Run({"--check", "-o", "out"}, "@fail(\"stop\")"),
              (Result{1, "", "<stdin>(1) : stop\n@fail(\"stop\")\n     ^\n"}));
    EXPECT_EQ(Run({"--check", "-o", "out"}, "a", Redirect(1, "/dev/full")),
              (Result{1, "", "qzexpand: standard output: No space left on device\n"}));
}

// ---- as diff and patch have it -----------------------------------------------------------------

class ToolCheckRoundTrip : public ToolTest {
protected:
    // The texts hold nothing that is expanded: bytes that no token has stand in comments.
    void Check(const std::string& before, const std::string& behind) const {
        Write("out", before);
        Write("new", behind);
        const Result result = Run({"--check", "-o", "out", "new"});
        ASSERT_EQ(result.status, before == behind ? 0 : 1) << result.err;
        ASSERT_EQ(Read("out"), before);
        Write("changes", result.out);
        ASSERT_TRUE(before == behind || Shell(m_folder, "patch -s -p0 <changes >messages 2>&1"))
            << Read("messages");
        ASSERT_EQ(Read("out"), behind);
    }

    // The hunks of diff -u on the same files, which the last check has left as they will be.
    std::string HunksOfDiff(const std::string& before) const {
        Write("before", before);
        EXPECT_TRUE(Shell(m_folder, "diff -a -u before new >expected; test $? = 1"));
        return HunksOf(Read("expected"));
    }

    static std::string HunksOf(const std::string& diff) {
        return diff.substr(diff.find("\n@@") + 1);
    }
};

TEST_F(ToolCheckRoundTrip, TurnsEveryKindOfTextIntoItsExpansion) {
    const std::vector<std::string> texts = {"",
                                            "\n",
                                            "a",
                                            "a\n",
                                            "a\r\nb\r\n",
                                            "a\nb\n",
                                            "a\r\nb\r",
                                            "// \xff\x80\n// \xfe",
                                            "//a\x01z\n// \x1b[31m\n",
                                            "\n\n\n\n\n\n\n\nb\n",
                                            "--- a\n+++ b\n// @@ -1 +1 @@\n-a\n+b\n"};
    for (const std::string& before : texts)
        for (const std::string& behind : texts)
            Check(before, behind);
}

TEST_F(ToolCheckRoundTrip, KeepsZeroBytes) {
    const std::string before("//a\0b\n//c\n//\0\n//d\n", 18);
    const std::string behind("//a\0c\n//c\n//\0\n//e", 17);
    Check(before, behind);
    EXPECT_EQ(HunksOf(Read("changes")), HunksOfDiff(before));
}

TEST_F(ToolCheckRoundTrip, AgreesWithDiffWhereThereIsOneAnswer) {
    std::mt19937 random(4);
    std::string before;
    std::string behind;
    for (int i = 0; i < 2000; ++i) {
        const std::string line = "line " + std::to_string(i) + "\n";
        before += random() % 20 == 0 ? "" : line;
        behind += random() % 20 == 0 ? "" : random() % 20 == 0 ? "other " + line : line;
    }
    Check(before, behind);
    EXPECT_EQ(HunksOf(Read("changes")), HunksOfDiff(before));
}

TEST_F(ToolCheckRoundTrip, TurnsRandomTextsIntoEachOther) {
    std::mt19937 random(5);
    const auto make = [&random] {
        std::string text;
        for (auto n = random() % 60; n > 0; --n)
            text += std::string(1, static_cast<char>('a' + random() % 4)) + "\n";
        return random() % 3 == 0 ? text + "z" : text;
    };
    for (int round = 0; round < 60; ++round)
        Check(make(), make());
}

// 5 MB, where a table of all pairs of lines would have 10^10 entries.
TEST_F(ToolCheckRoundTrip, EndsSoonForLargeTextsWithManyChanges) {
    std::mt19937 random(6);
    std::string before;
    std::string behind;
    for (int i = 0; i < 120'000; ++i) {
        const std::string line =
            "a line of an ordinary length, " + std::to_string(random() % 50) + "\n";
        before += random() % 2 == 0 ? line : "old " + line;
        behind += random() % 2 == 0 ? line : "new " + line;
    }
    Check(before, behind);
}

}  // namespace
