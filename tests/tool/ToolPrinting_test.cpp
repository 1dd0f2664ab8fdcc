// What a text prints on its way, apart from its expansion.

#include "ToolRunner.h"

#include <string>
#include <vector>

#include <unistd.h>

namespace {

using tool_test::Redirect;
using tool_test::Result;
using tool_test::ToolTest;

using Names = std::vector<std::string>;

class ToolPrinting : public ToolTest {};

TEST_F(ToolPrinting, GoesToStandardErrorWhereverTheExpansionGoes) {
    const std::string text = "a\n@println(note)\n@print(b)\n@println(c)\nd\n";
    EXPECT_EQ(Run({}, text), (Result{0, "a\nd\n", "note\nbc\n"}));
    EXPECT_EQ(Run({"-o", "-"}, text), (Result{0, "a\nd\n", "note\nbc\n"}));
    EXPECT_EQ(Run({"-o", "out"}, text), (Result{0, "", "note\nbc\n"}));
    EXPECT_EQ(Read("out"), "a\nd\n");
}

TEST_F(ToolPrinting, GoesThereFromDefinitionsAndExpressionsToo) {
    EXPECT_EQ(Run({"-D", "int:n=1 @println(n)", "--eval", "n + n @println(value)"}),
              (Result{0, "2\n", "n\nvalue\n"}));
}

TEST_F(ToolPrinting, KeepsItsPlaceAmongTheErrors) {
    EXPECT_EQ(Run({}, "@println(note)\n@fail(\"stop\")\n"), (Result{1, "",
                                                                    "note\n"
                                                                    "<stdin>(2) : stop\n"
                                                                    "@fail(\"stop\")\n"
                                                                    "     ^\n"}));
}

TEST_F(ToolPrinting, IsNotLostInSilence) {
    EXPECT_EQ(Run({"-o", "out"}, "@println(a)b", Redirect(2, "/dev/full")), (Result{1, "", ""}));
    EXPECT_EQ(Run({"-o", "out"}, "@println(a)b", [] { ::close(2); }), (Result{1, "", ""}));
    EXPECT_EQ(FileNames(), Names{});
}

TEST_F(ToolPrinting, NeedsNoStreamWhereNothingIsPrinted) {
    const auto closeAll = [] {
        for (const int fd : {0, 1, 2})
            ::close(fd);
    };
    Write("a.qz", "text");
    EXPECT_EQ(Run({"-o", "out", "a.qz"}, "", closeAll), (Result{0, "", ""}));
    EXPECT_EQ(Read("out"), "text");
    EXPECT_EQ(Run({"a.qz"}, "", closeAll), (Result{1, "", ""}));
    EXPECT_EQ(Read("a.qz"), "text");
}

TEST_F(ToolPrinting, MayTakeAsMuchAsTheOutput) {
    const std::string text(1 << 20, 'x');
    EXPECT_EQ(Run({"--limit-output=1"}, "@print(" + text + ")!"), (Result{0, "!", text}));
    EXPECT_EQ(Run({"--limit-output=1"}, "@print(" + text + ")\n@print(x)\n").err,
              text
                  + "\n<stdin>(2) : the printed text of 1 MiB is full in @print\n"
                    "hint: --limit-output=MIB gives it more\n");
}

TEST_F(ToolPrinting, IsEndedWhereItHasNoEnd) {
    const Result result = Run({"--limit-output=1", "-o", "out"}, "\n@while (true) {@println(x)}\n");
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.err.substr(0, 4), "x\nx\n");
    EXPECT_NE(result.err.find("\nhint: --limit-output=MIB gives it more\n"), std::string::npos);
    EXPECT_LT(result.err.size(), 1'100'000u);
    EXPECT_EQ(FileNames(), Names{});
}

}  // namespace
