// Colours of reports, on a terminal and elsewhere.

#include "ToolRunner.h"

#include <array>
#include <cstdlib>
#include <optional>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

using tool_test::Result;
using tool_test::ToolTest;

// A pseudo terminal, which hands on bytes as they are.
class Terminal {
public:
    Terminal() : m_near(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        ::grantpt(m_near);
        ::unlockpt(m_near);
        m_far = ::open(::ptsname(m_near), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios mode{};
        ::tcgetattr(m_far, &mode);
        ::cfmakeraw(&mode);
        ::tcsetattr(m_far, TCSANOW, &mode);
    }
    ~Terminal() {
        ::close(m_far);
        ::close(m_near);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // For a new process: its standard error is the terminal.
    int Far() const { return m_far; }

    std::string ReadAll() const {
        std::string text;
        std::array<char, 4096> part;
        ::fcntl(m_near, F_SETFL, O_NONBLOCK);
        for (ssize_t n = 0; (n = ::read(m_near, part.data(), part.size())) > 0;)
            text.append(part.data(), static_cast<std::size_t>(n));
        return text;
    }

private:
    int m_near;
    int m_far;
};

constexpr const char s_plain[] = "<stdin>(1) : stop\n"
                                 "a @fail(\"stop\")\n"
                                 "       ^\n";
constexpr const char s_colored[] = "\x1b[1m<stdin>(1) : \x1b[m\x1b[1;31mstop\x1b[m\n"
                                   "a @fail(\"stop\")\n"
                                   "       \x1b[1;32m^\x1b[m\n";

class ToolColor : public ToolTest {
protected:
    // What a terminal gets of a report, with these values of NO_COLOR and TERM.
    std::string OnTerminal(const std::vector<std::string>& arguments,
                           const std::optional<std::string>& noColor,
                           const std::optional<std::string>& term) const {
        const Terminal terminal;
        Run(arguments, s_text, [&] {
            ::dup2(terminal.Far(), STDERR_FILENO);
            Set("NO_COLOR", noColor);
            Set("TERM", term);
        });
        return terminal.ReadAll();
    }

    static constexpr char s_text[] = "a @fail(\"stop\")";

private:
    static void Set(const char* name, const std::optional<std::string>& value) {
        if (value)
            ::setenv(name, value->c_str(), 1);
        else
            ::unsetenv(name);
    }
};

TEST_F(ToolColor, IsUsedOnATerminal) {
    EXPECT_EQ(OnTerminal({}, {}, "xterm"), s_colored);
    EXPECT_EQ(OnTerminal({"--color=auto"}, {}, "xterm"), s_colored);
    EXPECT_EQ(OnTerminal({"--color=never", "--color=auto"}, {}, "xterm"), s_colored);
}

TEST_F(ToolColor, IsNotUsedElsewhere) {
    const auto setTerm = [] {
        ::unsetenv("NO_COLOR");
        ::setenv("TERM", "xterm", 1);
    };
    EXPECT_EQ(Run({}, s_text, setTerm), (Result{1, "", s_plain}));
    EXPECT_EQ(Run({"--color=auto"}, s_text, setTerm), (Result{1, "", s_plain}));
}

TEST_F(ToolColor, IsLeftOutWhereTheUserOrTheTerminalDoesNotTakeIt) {
    EXPECT_EQ(OnTerminal({}, "1", "xterm"), s_plain);
    EXPECT_EQ(OnTerminal({}, {}, "dumb"), s_plain);
    EXPECT_EQ(OnTerminal({}, {}, {}), s_plain);
    EXPECT_EQ(OnTerminal({}, "", "xterm"), s_colored);
}

TEST_F(ToolColor, ObeysTheOptionBeforeTheTerminal) {
    EXPECT_EQ(OnTerminal({"--color=never"}, {}, "xterm"), s_plain);
    EXPECT_EQ(OnTerminal({"--color=always"}, "1", "dumb"), s_colored);
    EXPECT_EQ(Run({"--color=always"}, s_text), (Result{1, "", s_colored}));
}

TEST_F(ToolColor, IsNotUsedInReportsForEditors) {
    EXPECT_EQ(Run({"--color=always", "--diagnostics=json"}, s_text).err.find('\x1b'),
              std::string::npos);
}

TEST_F(ToolColor, NeverTouchesTheExpansion) {
    EXPECT_EQ(Run({"--color=always"}, "@def a = b\na"), (Result{0, "b", ""}));
}

TEST_F(ToolColor, LetsNoSequenceOfTheTextThrough) {
    EXPECT_EQ(Run({"--color=always"}, "\"\x1b[5m\" @fail(\"\x1b[5m\")").err,
              "\x1b[1m<stdin>(1) : \x1b[m\x1b[1;31m\\x1b[5m\x1b[m\n"
              "\"\\x1b[5m\" @fail(\"\\x1b[5m\")\n"
              "               \x1b[1;32m^\x1b[m\n");
}

TEST_F(ToolColor, MarksHintsImportsAndFaults) {
    Write("b.qz", "'");
    EXPECT_EQ(Run({"--color=always"}, "@import \"b.qz\"").err,
              "\x1b[1mb.qz(1) : \x1b[m\x1b[1;31mMet EOS within single quoted string\x1b[m\n"
              "'\n"
              " \x1b[1;32m^\x1b[m\n"
              "\x1b[1m<stdin>(1) : \x1b[mb.qz is imported here\n"
              "\x1b[1;36mhint: \x1b[ma lone apostrophe begins a string, which has to end on its"
              " line; apostrophes may stand in comments and in \"strings\"\n");
    EXPECT_EQ(Run({"--color=always", "nosuch"}).err,
              "\x1b[1mqzexpand: \x1b[m\x1b[1;31mnosuch: No such file or directory\x1b[m\n");
}

TEST_F(ToolColor, RefusesAnUnknownWord) {
    EXPECT_EQ(Run({"--color=yes"}), tool_test::WrongCall("--color is auto, always or never: yes"));
}

}  // namespace
