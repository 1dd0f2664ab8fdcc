// Texts that never end by themselves, and signals.

#include "ToolRunner.h"

#include <csignal>
#include <string>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

using tool_test::Process;
using tool_test::Result;
using tool_test::ToolTest;

using Names = std::vector<std::string>;

// ---- the stack ---------------------------------------------------------------------------------

class ToolStack : public ToolTest {
protected:
    // The tool's report on a text that uses up a stack of the least size.
    Result RunOut(const std::string& text, const std::vector<std::string>& further = {}) const {
        Write("a.qz", text);
        std::vector<std::string> arguments = {"a.qz", "--limit-stack=1"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        return Run(arguments);
    }

    static Result Report(const std::string& report) {
        return Result{3, "", report + "hint: --limit-stack=MIB gives it more\n"};
    }
};

TEST_F(ToolStack, NamesTheMacroThatCallsItself) {
    EXPECT_EQ(RunOut("\n@def a = a\na\n"),
              Report("a.qz(2) : the stack of 1 MiB ran out in macro a\n"
                     "a.qz(3) : in macro a\n"));
}

TEST_F(ToolStack, NamesTheMacroThatCallsItselfWithArguments) {
    EXPECT_EQ(RunOut("@def f(x) = {\n    text f(x)\n}\nf(1)\n"),
              Report("a.qz(2) : the stack of 1 MiB ran out in macro f\n"
                     "a.qz(4) : in macro f\n"));
}

TEST_F(ToolStack, NamesAllMacrosOfACircle) {
    const Result result = RunOut("@def ping = pong\n\n@def pong = ping\nping\n");
    // Which of the two finds the end of the stack depends on their size.
    const std::string ping = "a.qz(3) : the stack of 1 MiB ran out in macro ping\n"
                             "a.qz(1) : in macro pong\n";
    const std::string pong = "a.qz(1) : the stack of 1 MiB ran out in macro pong\n"
                             "a.qz(3) : in macro ping\n";
    const std::string start = "a.qz(4) : in macro ping\n";
    EXPECT_TRUE(result == Report(ping + start) || result == Report(pong + start))
        << testing::PrintToString(result);
}

TEST_F(ToolStack, NamesTheDirectiveInWhichAMacroCallsItself) {
    const Result result = RunOut("@def a = {\n  @if (true) {\n  a }\n}\na\n");
    EXPECT_EQ(result.status, 3);
    EXPECT_NE(result.err.find("a.qz(3) : "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("in macro a\n"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("a.qz(2) : "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("in @if\n"), std::string::npos) << result.err;
}

TEST_F(ToolStack, NamesTheDirectiveAroundMacrosOfAnInnerScope) {
    EXPECT_EQ(RunOut("\n@scope {\n@def a = a\na }\n"),
              Report("a.qz(2) : the stack of 1 MiB ran out in @scope\n"));
}

TEST_F(ToolStack, NamesTheDirectiveOfAnExpressionThatIsTooDeep) {
    const std::string depth(500'000, '(');
    EXPECT_EQ(RunOut("text\n@( " + depth + "1" + std::string(500'000, ')') + " )\n"),
              Report("a.qz(2) : the stack of 1 MiB ran out in @(\n"));
}

TEST_F(ToolStack, NamesADefinitionOfTheCommandLine) {
    EXPECT_EQ(RunOut("a\n", {"-Da=b", "-Db=b"}),
              Report("<-D b>(1) : the stack of 1 MiB ran out in macro b\n"
                     "<-D a>(1) : in macro b\n"
                     "a.qz(1) : in macro a\n"));
}

TEST_F(ToolStack, IsNamedWithoutAPlaceWhereNoneIsKnown) {
    EXPECT_EQ(Run({"--limit-stack=1", "--eval", std::string(100'000, '(')}),
              Report("<--eval> : the stack of 1 MiB ran out\n"));
}

TEST_F(ToolStack, LeavesTheOutputAloneWhenItRunsOut) {
    Write("out", "old");
    EXPECT_EQ(RunOut("@def a = a\na\n", {"-o", "out"}).status, 3);
    EXPECT_EQ(Read("out"), "old");
    EXPECT_EQ(FileNames(), (Names{"a.qz", "out"}));
}

TEST_F(ToolStack, GoesAsDeepAsItsSizeAllows) {
    std::string text = "@def m0 = end\n";
    for (int i = 1; i <= 3000; ++i)
        text += "@def m" + std::to_string(i) + " = m" + std::to_string(i - 1) + "\n";
    text += "m3000";
    EXPECT_EQ(RunOut(text).status, 3);
    EXPECT_EQ(Run({"a.qz"}), (Result{0, "end", ""}));
}

TEST_F(ToolStack, EndsWithAMessageAtTheSizeThatItHasUnasked) {
    EXPECT_EQ(Run({}, "@def a = a\na\n"),
              (Result{3, "",
                      "<stdin>(1) : the stack of 64 MiB ran out in macro a\n"
                      "<stdin>(2) : in macro a\n"
                      "hint: --limit-stack=MIB gives it more\n"}));
}

// ---- time --------------------------------------------------------------------------------------

class ToolLimits : public ToolTest {};

TEST_F(ToolLimits, EndsALoopWhenItsTimeIsOver) {
    EXPECT_EQ(Run({"--limit-time=1"}, "\n@while (true) { }\n"),
              (Result{3, "",
                      "<stdin>(2) : the time of 1 s ran out in @while\n"
                      "hint: --limit-time=SECONDS gives it more\n"}));
}

// A standard input on which nothing ever comes.
void BlockStandardInput() {
    int ends[2];
    if (::pipe(ends) == 0)
        ::dup2(ends[0], 0);
}

TEST_F(ToolLimits, EndsWaitingForInputWhenTheTimeIsOver) {
    EXPECT_EQ(Run({"--limit-time=1"}, "", BlockStandardInput),
              (Result{3, "",
                      "qzexpand : the time of 1 s ran out\n"
                      "hint: --limit-time=SECONDS gives it more\n"}));
}

TEST_F(ToolLimits, AcceptsNumbersInRangeAlone) {
    const auto refusal = [](const std::string& value) {
        return tool_test::WrongCall("--limit-stack needs a number from 1 to 1000000: " + value);
    };
    for (const std::string value : {"0", "-1", "1000001", "", "8M", " 8", "99999999999999999999"})
        EXPECT_EQ(Run({"--limit-stack", value}), refusal(value));
    EXPECT_EQ(Run({"--limit-time", "x"}),
              tool_test::WrongCall("--limit-time needs a number from 0 to 1000000: x"));
    EXPECT_EQ(Run({"--limit-stack=1000000", "--limit-time=0", "--limit-memory=0"}, "a"),
              (Result{0, "a", ""}));
}

// ---- output ------------------------------------------------------------------------------------

constexpr int s_mebibyte = 1 << 20;

TEST_F(ToolLimits, LetTheOutputGrowToItsLimitAndNotFurther) {
    const std::string text(s_mebibyte, 'x');
    EXPECT_EQ(Run({"--limit-output=1"}, text).out, text);
    EXPECT_EQ(Run({"--limit-output=1"}, text + "\n").status, 3);
    EXPECT_EQ(Run({"--limit-output=0"}, text + "\n").out, text + "\n");
}

TEST_F(ToolLimits, EndALoopThatFillsTheOutput) {
    EXPECT_EQ(Run({"--limit-output=2", "-o", "out"}, "\n   @while (true) {text}\n"),
              (Result{3, "",
                      "<stdin>(2) : the output of 2 MiB is full\n"
                      "   @while (true) {text}\n"
                      "                  ^\n"
                      "hint: --limit-output=MIB gives it more\n"}));
    EXPECT_EQ(FileNames(), Names{});
}

TEST_F(ToolLimits, CountTheOutputOfAllFiles) {
    Write("b.qz", std::string(s_mebibyte / 2, 'x'));
    const std::string text = "@import \"b.qz\"@import \"b.qz\"!";
    EXPECT_EQ(Run({"--limit-output=1", "--imports=inline"}, text).status, 3);
    EXPECT_EQ(Run({"--limit-output=1"}, text), (Result{0, "!", ""}));
}

TEST_F(ToolLimits, CountTheLineEndsOfTheOutputAsTheyAreWritten) {
    const std::string text(s_mebibyte / 2, '\n');
    EXPECT_EQ(Run({"--limit-output=1", "--newline=crlf"}, text).status, 0);
    EXPECT_EQ(Run({"--limit-output=1", "--newline=crlf"}, text + "\n"),
              (Result{3, "",
                      "<stdin> : the output of 1 MiB is full\n"
                      "hint: --limit-output=MIB gives it more\n"}));
}

// ---- memory ------------------------------------------------------------------------------------

// A sanitizer takes all addresses for itself, so that they can't be limited.
#if !defined(QZ_SANITIZED)
TEST_F(ToolLimits, ReportsWhereTheMemoryRanOutWithoutASanitizer) {
    EXPECT_EQ(Run({"--limit-memory=100"}, "\n @while (true) {text}\n"),
              (Result{3, "",
                      "<stdin>(2) : the memory ran out\n"
                      " @while (true) {text}\n"
                      "                ^\n"
                      "hint: --limit-memory=MIB gives it more\n"}));
}

TEST_F(ToolLimits, ReportsAnInputThatTheMemoryCannotHoldWithoutASanitizer) {
    Write("a.qz", std::string(60'000'000, ' '));
    EXPECT_EQ(Run({"--limit-memory=60", "--limit-stack=8", "a.qz"}),
              (Result{3, "",
                      "qzexpand: the memory ran out\n"
                      "hint: --limit-memory=MIB gives it more\n"}));
}

TEST_F(ToolLimits, LetsASegmentationFaultOfAnotherKindEndItWithoutASanitizer) {
    Process process(m_folder, {"-"}, "@println(go) @while (true) { }", {});
    process.WaitForOutput();
    process.Signal(SIGSEGV);
    EXPECT_EQ(process.Wait(), (Result{-SIGSEGV, "", "go\n"}));
}
#endif

// ---- signals -----------------------------------------------------------------------------------

class ToolSignals : public ToolTest {};

TEST_F(ToolSignals, EndItAtOnceBySignal) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        Process process(m_folder, {"-o", "out"}, "@println(go) @while (true) { }", {});
        process.WaitForOutput();
        process.Signal(signal);
        EXPECT_EQ(process.Wait(), (Result{-signal, "", "go\n"}));
        EXPECT_EQ(FileNames(), Names{});
    }
}

TEST_F(ToolSignals, StayIgnoredWhereTheCallerIgnoresThem) {
    const auto setUp = [] {
        ::signal(SIGINT, SIG_IGN);
    };
    Process process(m_folder, {"--limit-time=1"}, "@println(go) @while (true) { }", setUp);
    process.WaitForOutput();
    process.Signal(SIGINT);
    const Result result = process.Wait();
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("the time of 1 s ran out in @"), std::string::npos) << result.err;
}

// Tells when a file is made in a folder.
class Watch {
public:
    explicit Watch(const std::filesystem::path& folder) : m_fd(::inotify_init1(IN_CLOEXEC)) {
        ::inotify_add_watch(m_fd, folder.c_str(), IN_CREATE);
    }
    ~Watch() { ::close(m_fd); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    bool Wait() const {
        pollfd polled{m_fd, POLLIN, 0};
        return ::poll(&polled, 1, 60'000) == 1;
    }

private:
    int m_fd;
};

// Whether the tool is still writing when the signal comes is a matter of time, so it gets several
// chances. In every case the output must be the old one or the new one, and stand alone.
TEST_F(ToolSignals, LeaveNothingHalfWrittenBehind) {
    const std::string text(50'000'000, ' ');
    Write("in", text);
    bool hasInterrupted = false;
    for (int i = 0; i < 20 && !hasInterrupted; ++i) {
        Write("out", "old");
        const Watch watch(m_folder);
        Process process(m_folder, {"in", "-o", "out"}, "", {});
        ASSERT_TRUE(watch.Wait());
        process.Signal(SIGTERM);
        hasInterrupted = process.Wait() == Result{-SIGTERM, "", ""};
        EXPECT_EQ(FileNames(), (Names{"in", "out"}));
        EXPECT_TRUE(Read("out") == (hasInterrupted ? "old" : text));
    }
    EXPECT_TRUE(hasInterrupted);
}

}  // namespace
