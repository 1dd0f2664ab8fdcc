// Long traces of macros and directives.

#include "ToolRunner.h"

namespace {

using tool_test::Result;
using tool_test::ToolTest;

class ToolBacktrace : public ToolTest {
protected:
    // A text whose error lies that many calls deep.
    static std::string TextOfDepth(int calls) {
        return "@def f(int n) = @if (n == 0) {@fail(\"stop\")} @else {f(n - 1)}\nf("
               + std::to_string(calls - 1) + ")\n";
    }

    // The entries of the calls with these arguments.
    static std::string Calls(int first, int last) {
        std::string calls;
        for (int n = first; n <= last; ++n)
            calls += "    invoking macro f(n) with n=" + std::to_string(n) + '\n';
        return calls;
    }

    static Result Report(const std::string& context) {
        return {1, "",
                "<stdin>(1) : stop\n" + context
                    + "@def f(int n) = @if (n == 0) {@fail(\"stop\")} @else {f(n - 1)}\n"
                      "                                   ^\n"};
    }
};

TEST_F(ToolBacktrace, IsShownWholeUpToElevenEntries) {
    EXPECT_EQ(Run({}, TextOfDepth(11)), Report(Calls(0, 10)));
}

TEST_F(ToolBacktrace, IsFoldedInTheMiddleFromThereOn) {
    EXPECT_EQ(
        Run({}, TextOfDepth(12)),
        Report(Calls(0, 4) + "    ... (2 more; --backtrace=all shows them)\n" + Calls(7, 11)));
    EXPECT_EQ(
        Run({"--backtrace=short"}, TextOfDepth(300)),
        Report(Calls(0, 4) + "    ... (290 more; --backtrace=all shows them)\n" + Calls(295, 299)));
}

TEST_F(ToolBacktrace, IsShownWholeOnRequest) {
    EXPECT_EQ(Run({"--backtrace=all"}, TextOfDepth(300)), Report(Calls(0, 299)));
}

TEST_F(ToolBacktrace, CountsAnEntryOfSeveralLinesAsOne) {
    const std::string text = "@def f(n, x) = @if (n == 0) {@fail(\"stop\")} @else {f((n) - 1, x)}\n"
                             "f(0, a\n\n\n\n\n\n\n\n\n\n\nb)\n";
    EXPECT_EQ(Run({}, text),
              (Result{1, "",
                      "<stdin>(1) : stop\n"
                      "    invoking macro f(n,x) with n=0, x=a\n"
                      "\n\n\n\n\n\n\n\n\n\nb\n"
                      "@def f(n, x) = @if (n == 0) {@fail(\"stop\")} @else {f((n) - 1,"
                      " x)}\n"
                      "                                  ^\n"}));
}

TEST_F(ToolBacktrace, LeavesTheLinesOfTheMessageAlone) {
    std::string lines;
    for (int i = 0; i < 30; ++i)
        lines += "\n    line";
    std::string escaped = lines;
    for (std::size_t at = 0; (at = escaped.find('\n', at)) != escaped.npos;)
        escaped.replace(at, 1, "\\n");
    EXPECT_EQ(Run({}, "@fail(\"first" + escaped + "\")").err.substr(0, 25 + lines.size()),
              "<stdin>(1) : first" + lines + "\n@fail(");
}

TEST_F(ToolBacktrace, RefusesAnUnknownLength) {
    EXPECT_EQ(Run({"--backtrace=none"}), tool_test::WrongCall("--backtrace is short or all: none"));
}

}  // namespace
