// Several inputs in one call: each as if it were alone.

#include "ToolRunner.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <optional>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using tool_test::Process;
using tool_test::Redirect;
using tool_test::Result;
using tool_test::ToolTest;
using tool_test::WrongCall;

using Names = std::vector<std::string>;

class ToolSeveral : public ToolTest {
protected:
    ToolSeveral() { fs::create_directory(PathOf("out")); }

    static Result Failure(const std::string& message) {
        return Result{1, "", "qzexpand: " + message + "\n"};
    }

    Names OutputNames() const {
        Names names;
        for (const fs::directory_entry& entry : fs::directory_iterator(PathOf("out")))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
};

// ---- where the outputs go ----------------------------------------------------------------------

TEST_F(ToolSeveral, HaveTheirOutputsInAFolder) {
    Write("a.cpp.qz", "a");
    Write("deep/b.qz.qz", "b");
    Write("c", "c");
    EXPECT_EQ(Run({"-o", "out", "a.cpp.qz", "deep/b.qz.qz", "c"}), (Result{0, "", ""}));
    EXPECT_EQ(OutputNames(), (Names{"a.cpp", "b.qz", "c"}));
    EXPECT_EQ(Read("out/a.cpp"), "a");
    EXPECT_EQ(Read("out/b.qz"), "b");
    EXPECT_EQ(Read("out/c"), "c");
}

TEST_F(ToolSeveral, MayBeOneForANameWithASlash) {
    Write("a.qz", "a");
    EXPECT_EQ(Run({"-o", "out/", "a.qz"}), (Result{0, "", ""}));
    EXPECT_EQ(Read("out/a"), "a");
    EXPECT_EQ(Run({"-o", "out", "a.qz"}), Failure("out: Is a directory"));
}

TEST_F(ToolSeveral, HaveADepfileEach) {
    Write("a.qz", "@import \"c.qz\"\na");
    Write("b.qz", "b");
    Write("c.qz", "");
    fs::create_directory(PathOf("deps"));
    EXPECT_EQ(Run({"-o", "out", "--depfile", "deps", "a.qz", "b.qz"}), (Result{0, "", ""}));
    EXPECT_EQ(Read("deps/a.d"), "out/a: a.qz c.qz\nc.qz:\n");
    EXPECT_EQ(Read("deps/b.d"), "out/b: b.qz\n");
    EXPECT_EQ(Run({"-o", "out", "--depfile", "out/", "a.qz", "b.qz"}), (Result{0, "", ""}));
    EXPECT_EQ(OutputNames(), (Names{"a", "a.d", "b", "b.d"}));
}

// The map of each is the one that it gets alone.
TEST_F(ToolSeveral, HaveAMapEach) {
    Write("a.qz", "@def m = x\nm");
    Write("b.qz", "b");
    fs::create_directory(PathOf("alone"));
    EXPECT_EQ(Run({"-o", "out", "--map", "out", "a.qz", "b.qz"}), (Result{0, "", ""}));
    EXPECT_EQ(OutputNames(), (Names{"a", "a.map", "b", "b.map"}));
    EXPECT_EQ(Run({"-o", "alone/a", "--map", "alone/a.map", "a.qz"}), (Result{0, "", ""}));
    EXPECT_EQ(Read("out/a.map"), Read("alone/a.map"));
    Write("a.map.qz", "a");
    EXPECT_EQ(Run({"-o", "out", "--map", "out", "a.qz", "a.map.qz"}),
              WrongCall("a.qz and a.map.qz would both write out/a.map"));
    EXPECT_EQ(Run({"-o", "out", "--map", "nosuch", "a.qz", "b.qz"}),
              Failure("nosuch: No such file or directory"));
}

TEST_F(ToolSeveral, AreRefusedWhereTheirOutputsWouldMeet) {
    for (const char* name : {"a.qz", "a", "x/a.qz", "a.d.qz", ".qz"})
        Write(name, "text");
    EXPECT_EQ(Run({"-o", "out", "a.qz", "x/a.qz"}),
              WrongCall("a.qz and x/a.qz would both write out/a"));
    EXPECT_EQ(Run({"-o", "out", "a.qz", "a.qz"}),
              WrongCall("a.qz and a.qz would both write out/a"));
    EXPECT_EQ(Run({"-o", "out", "--depfile", "out", "a.qz", "a.d.qz"}),
              WrongCall("a.qz and a.d.qz would both write out/a.d"));
    EXPECT_EQ(Run({"-o", "out", "a.qz", ".qz"}), WrongCall("no name for the output of .qz"));
    EXPECT_EQ(Run({"-o", "out", "a.qz", ".."}), WrongCall("no name for the output of .."));
    EXPECT_EQ(Run({"-o", "out", "a.qz", "-"}),
              WrongCall("standard input cannot be one of several files"));
    EXPECT_EQ(Run({"-o", ".", "a", "a.d.qz"}), Failure("./a: the output would replace the input"));
    EXPECT_EQ(OutputNames(), Names{});
    EXPECT_EQ(Read("a"), "text");
}

TEST_F(ToolSeveral, NeedAFolder) {
    Write("a.qz", "a");
    Write("b.qz", "b");
    EXPECT_EQ(Run({"a.qz", "b.qz"}), WrongCall("more than one file without -o FOLDER: b.qz"));
    EXPECT_EQ(Run({"-o", "-", "a.qz", "b.qz"}),
              WrongCall("more than one file without -o FOLDER: b.qz"));
    EXPECT_EQ(Run({"-o", "nosuch", "a.qz", "b.qz"}), Failure("nosuch: No such file or directory"));
    EXPECT_EQ(Run({"-o", "a.qz", "a.qz", "b.qz"}), Failure("a.qz: Not a directory"));
    EXPECT_EQ(Run({"-o", "out", "--depfile", "a.qz", "a.qz", "b.qz"}),
              Failure("a.qz: Not a directory"));
    EXPECT_EQ(Run({"-o", "out", "--depfile", "out", "--depfile-target", "x", "a.qz", "b.qz"}),
              WrongCall("--depfile-target is for one file"));
    EXPECT_EQ(OutputNames(), Names{});
}

// ---- as if alone -------------------------------------------------------------------------------

struct Input {
    std::string name;  // without .qz
    std::optional<std::string> text;
};

// Inputs that end in every way.
const std::vector<Input> s_inputs = {
    {"fine",    "@println(one)\n@def n = 1\nn n\n"      },
    {"failing", "@println(two)\nline\n@fail(\"stop\")\n"},
    {"import",  "@import \"lib/x.qz\"\nm\n"             },
    {"missing", {}                                      },
    {"cycle",   "@import \"cycle.qz\"\n"                },
    {"deep",    "@def f(x) = f(x x)\nf(1)\n"            },
    {"mute",    ""                                      },
    {"last",    "@print(no line feed)text"              },
};

class ToolSeveralAlike : public ToolSeveral {
protected:
    ToolSeveralAlike() {
        fs::create_directory(PathOf("alone"));
        Write("lib/x.qz", "@println(imported)\n@def m = 5\n");
        for (const Input& input : s_inputs)
            if (input.text)
                Write(input.name + ".qz", *input.text);
    }

    // What the inputs leave behind one after the other.
    Result RunAlone() const {
        Result all;
        for (const auto& [name, text] : s_inputs) {
            const Result one = Run({"--limit-stack=1", "-o", "alone/" + name, name + ".qz"});
            all.out += one.out;
            all.err += one.err;
            all.status = std::max(all.status, one.status);
        }
        return all;
    }

    Result RunTogether(const std::string& jobs) const {
        Names call = {"--limit-stack=1", jobs, "-o", "out", "--depfile", "out"};
        for (const auto& [name, text] : s_inputs)
            call.push_back(name + ".qz");
        return Run(call);
    }
};

TEST_F(ToolSeveralAlike, EndAndReportAsIfTheyWereAlone) {
    const Result expected = RunAlone();
    EXPECT_EQ(expected.status, 3);
    EXPECT_EQ(expected.err.substr(0, 8), "one\ntwo\n");
    EXPECT_NE(expected.err.find("imported\n"), std::string::npos);
    EXPECT_NE(expected.err.find("no line feed"), std::string::npos);
    for (const char* jobs : {"-j1", "-j3", "-j50"}) {
        EXPECT_EQ(RunTogether(jobs), expected) << jobs;
        for (const auto& [name, text] : s_inputs) {
            EXPECT_EQ(Exists("out/" + name), Exists("alone/" + name)) << name;
            EXPECT_EQ(Exists("out/" + name + ".d"), Exists("alone/" + name)) << name;
            EXPECT_EQ(Read("out/" + name), Read("alone/" + name)) << name;
        }
        fs::remove_all(PathOf("out"));
        fs::create_directory(PathOf("out"));
    }
}

TEST_F(ToolSeveral, ShowWhatTheyPrintInTheOrderOfTheInputs) {
    Write("slow.qz", "@let int i = 0\n@while (i < 3000) {\n@let i = i + 1\n}\n@println(slow)\n");
    Names call = {"-j4", "-o", "out", "slow.qz"};
    std::string expected = "slow\n";
    for (int i = 0; i < 20; ++i) {
        const std::string number = std::to_string(i);
        Write(number + ".qz", "@println(" + number + ")\n");
        call.push_back(number + ".qz");
        expected += number + "\n";
    }
    EXPECT_EQ(Run(call), (Result{0, "", expected}));
}

TEST_F(ToolSeveral, AreComparedWithTheirOutputs) {
    Write("a.qz", "a\n");
    Write("b.qz", "b\n");
    Write("c.qz", "c\n");
    Write("out/a", "a\n");
    Write("out/b", "x\n");
    EXPECT_EQ(Run({"--check", "-o", "out", "a.qz", "b.qz", "c.qz"}),
              (Result{1,
                      "--- out/b\tthe file\n+++ out/b\tthe expansion\n@@ -1 +1 @@\n-x\n+b\n"
                      "--- /dev/null\n+++ out/c\tthe expansion\n@@ -0,0 +1 @@\n+c\n",
                      ""}));
    EXPECT_EQ(OutputNames(), (Names{"a", "b"}));
}

TEST_F(ToolSeveral, HaveNoStandardInput) {
    Write("a.qz", "@import \"/dev/stdin\"\n[m]");
    Write("b.qz", "b");
    EXPECT_EQ(Run({"-o", "out", "a.qz", "b.qz"}, "@def m = 1"), (Result{0, "", ""}));
    EXPECT_EQ(Read("out/a"), "\n[m]");
}

TEST_F(ToolSeveral, FailWhereTheirDifferencesAreLost) {
    Write("a.qz", "a");
    Write("b.qz", "b");
    EXPECT_EQ(Run({"--check", "-o", "out", "a.qz", "b.qz"}, "", Redirect(1, "/dev/full")),
              Failure("standard output: No space left on device"));
}

TEST_F(ToolSeveral, LeaveAloneWhatStaysTheSame) {
    Write("a.qz", "a");
    Write("b.qz", "b");
    Write("out/a", "a");
    const fs::file_time_type then = fs::last_write_time(PathOf("out/a")) - std::chrono::hours(1);
    fs::last_write_time(PathOf("out/a"), then);
    EXPECT_EQ(Run({"-o", "out", "a.qz", "b.qz"}), (Result{0, "", ""}));
    EXPECT_EQ(fs::last_write_time(PathOf("out/a")), then);
    EXPECT_EQ(Run({"--always-write", "-o", "out", "a.qz", "b.qz"}), (Result{0, "", ""}));
    EXPECT_NE(fs::last_write_time(PathOf("out/a")), then);
}

TEST_F(ToolSeveral, MayBeAWholeTree) {
    constexpr int s_count = 400;
    std::string arguments;
    for (int i = 0; i < 10; ++i)
        Write("lib/" + std::to_string(i) + ".qz", "@def base = " + std::to_string(100 * i) + "\n");
    for (int i = 0; i < s_count; ++i) {
        const std::string name = "tree/" + std::to_string(i % 7) + "/f" + std::to_string(i);
        Write(name + ".txt.qz", "@import \"../../lib/" + std::to_string(i % 10) + ".qz\"\n@(base + "
                                    + std::to_string(i) + ")\n");
        arguments += name + ".txt.qz\n";
    }
    Write("args", arguments);
    EXPECT_EQ(Run({"-o", "out", "@args"}), (Result{0, "", ""}));
    for (int i = 0; i < s_count; ++i)
        EXPECT_EQ(Read("out/f" + std::to_string(i) + ".txt"),
                  "\n" + std::to_string(100 * (i % 10) + i) + "\n");
    EXPECT_EQ(OutputNames().size(), std::size_t{s_count});
}

// ---- progress ----------------------------------------------------------------------------------

// A terminal, by its two ends.
class Terminal {
public:
    Terminal() : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        ::grantpt(m_master);
        ::unlockpt(m_master);
        m_slave = ::open(::ptsname(m_master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    ~Terminal() {
        ::close(m_slave);
        ::close(m_master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int Slave() const { return m_slave; }

    // What has been written to it so far.
    std::string Read() const {
        ::fcntl(m_master, F_SETFL, O_NONBLOCK);
        std::string text;
        std::array<char, 4096> part{};
        for (ssize_t n = 0; (n = ::read(m_master, part.data(), part.size())) > 0;)
            text.append(part.data(), static_cast<std::size_t>(n));
        return text;
    }

private:
    int m_master;
    int m_slave;
};

TEST_F(ToolSeveral, ShowTheirProgressOnATerminalAndEraseIt) {
    Write("a.qz", "a");
    Write("b.qz", "@println(note)b");
    Write("\xc3\xa9\n.qz", "@fail(\"stop\")");
    const Terminal terminal;
    const auto setUp = [&terminal] {
        ::dup2(terminal.Slave(), 1);
        ::dup2(terminal.Slave(), 2);
        ::setenv("NO_COLOR", "1", 1);
    };
    EXPECT_EQ(Run({"-j1", "-o", "out", "a.qz", "b.qz", "\xc3\xa9\n.qz"}, "", setUp).status, 1);
    EXPECT_EQ(terminal.Read(), "\r\x1b[K[1/3] a"
                               "\r\x1b[K[2/3] b"
                               "\r\x1b[Knote\r\n"
                               "\r\x1b[K[3/3] \xc3\xa9\\x0a"
                               "\r\x1b[K\xc3\xa9\\x0a.qz(1) : stop\r\n"
                               "@fail(\"stop\")\r\n     ^\r\n");
}

TEST_F(ToolSeveral, ShowOnlyWhatFitsOnALineOfTheTerminal) {
    Write("a.qz", "a");
    Write(std::string(100, 'n') + ".qz", "b");
    const Terminal terminal;
    const auto setUp = [&terminal] {
        ::dup2(terminal.Slave(), 2);
    };
    EXPECT_EQ(Run({"-j1", "-o", "out", std::string(100, 'n') + ".qz", "a.qz"}, "", setUp).status,
              0);
    EXPECT_EQ(terminal.Read(), "\r\x1b[K[1/2] " + std::string(73, 'n') + "\r\x1b[K[2/2] a\r\x1b[K");
}

// ---- ends from outside -------------------------------------------------------------------------

class ToolSeveralEnd : public ToolSeveral {
protected:
    // Processes that are left behind come to this one.
    ToolSeveralEnd() { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }
    ~ToolSeveralEnd() override { ::prctl(PR_SET_CHILD_SUBREAPER, 0); }

    static bool HasChildren() { return ::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD; }
};

TEST_F(ToolSeveralEnd, EndWithTheCallAndLeaveNothingBehind) {
    Write("go.qz", "@println(go)");
    for (const char* name : {"b.qz", "c.qz", "d.qz"})
        Write(name, "@while (true) {}");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        Process process(m_folder, {"-j3", "-o", "out", "go.qz", "b.qz", "c.qz", "d.qz"}, "", {});
        process.WaitForOutput();
        process.Signal(signal);
        EXPECT_EQ(process.Wait(), (Result{-signal, "", "go\n"}));
        EXPECT_FALSE(HasChildren());
    }
    EXPECT_EQ(OutputNames(), Names{"go"});
}

TEST_F(ToolSeveralEnd, EndAlsoWhereTheCallIsKilled) {
    Write("go.qz", "@println(go)");
    Write("b.qz", "@while (true) {}");
    Process process(m_folder, {"-j2", "-o", "out", "go.qz", "b.qz"}, "", {});
    process.WaitForOutput();
    process.Signal(SIGKILL);
    EXPECT_EQ(process.Wait().status, -SIGKILL);
    EXPECT_GT(::waitpid(-1, nullptr, 0), 0);  // returns, as the child has been ended
    EXPECT_FALSE(HasChildren());
}

TEST_F(ToolSeveralEnd, StayWhereTheCallerIgnoresASignal) {
    Write("go.qz", "@println(go)");
    Write("b.qz", "@let int i = 0\n@while (i < 3000) {\n@let i = i + 1\n}\nend");
    Process process(m_folder, {"-j2", "-o", "out", "go.qz", "b.qz"}, "",
                    [] { ::signal(SIGHUP, SIG_IGN); });
    process.WaitForOutput();
    process.Signal(SIGHUP);
    EXPECT_EQ(process.Wait(), (Result{0, "", "go\n"}));
    EXPECT_TRUE(Exists("out/b"));
}

TEST_F(ToolSeveralEnd, AreReportedWhereASignalEndsOne) {
    Write("a.qz", "@println(a)");
    Write("b.qz", "@println(b)\n@while (true) {}");
    Write("c.qz", "@println(c)");
    const auto setUp = [] {
        const rlimit limit{1, 5};
        ::setrlimit(RLIMIT_CPU, &limit);
        ::signal(SIGCHLD, SIG_IGN);
    };
    EXPECT_EQ(
        Run({"-o", "out", "a.qz", "b.qz", "c.qz"}, "", setUp),
        (Result{1, "", "a\nb\nqzexpand: b.qz: ended by signal 24 (CPU time limit exceeded)\nc\n"}));
    EXPECT_EQ(OutputNames(), (Names{"a", "c"}));
}

TEST_F(ToolSeveralEnd, HaveTheirTimeAndMemoryEach) {
    Write("a.qz", "@println(a)\n@while (true) {}");
    Write("b.qz", "@println(b)");
    EXPECT_EQ(Run({"--limit-time=1", "-o", "out", "a.qz", "b.qz"}),
              (Result{3, "",
                      "a\n"
                      "a.qz(2) : the time of 1 s ran out in @while\n"
                      "hint: --limit-time=SECONDS gives it more\n"
                      "b\n"}));
    EXPECT_EQ(OutputNames(), Names{"b"});
}

}  // namespace
