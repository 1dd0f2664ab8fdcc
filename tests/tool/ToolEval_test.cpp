// --eval: expressions from the command line.

#include "ToolRunner.h"

namespace {

using tool_test::Result;
using tool_test::ToolTest;

class ToolEval : public ToolTest {
protected:
    Result Eval(const std::string& expression,
                const std::vector<std::string>& definitions = {}) const {
        std::vector<std::string> arguments = {"--eval", expression};
        for (const std::string& definition : definitions)
            arguments.push_back("-D" + definition);
        return Run(arguments);
    }
};

TEST_F(ToolEval, WritesTheValueAsTheLanguageWould) {
    EXPECT_EQ(Eval("1+2*3"), (Result{0, "7\n", ""}));
    EXPECT_EQ(Eval("1 < 2"), (Result{0, "true\n", ""}));
    EXPECT_EQ(Eval("1/4.0"), (Result{0, "0.25\n", ""}));
    EXPECT_EQ(Eval("\"a\" + \"b\""), (Result{0, "ab\n", ""}));
    EXPECT_EQ(Eval("char(65)"), (Result{0, "A\n", ""}));
    EXPECT_EQ(Eval("-1"), (Result{0, "-1\n", ""}));
}

TEST_F(ToolEval, ExpandsMacrosFirst) {
    EXPECT_EQ(Eval("n * n", {"n=1+1"}), (Result{0, "3\n", ""}));
    EXPECT_EQ(Eval("n * n", {"int:n=1+1"}), (Result{0, "4\n", ""}));
}

TEST_F(ToolEval, WritesToAFileToo) {
    EXPECT_EQ(Run({"--eval", "1", "-o", "out"}), (Result{0, "", ""}));
    EXPECT_EQ(Read("out"), "1\n");
}

TEST_F(ToolEval, MarksTheTokenInTheExpression) {
    EXPECT_EQ(Eval("1 + )"), (Result{1, "",
                                     "<--eval>(1) : Unexpected ) after + in expression\n"
                                     "1 + )\n"
                                     "    ^\n"}));
    EXPECT_EQ(Eval("1 +\n x 2"), (Result{1, "",
                                         "<--eval>(2) : Unexpected x after + in expression\n"
                                         " x 2\n"
                                         " ^\n"}));
}

TEST_F(ToolEval, MarksTheEndOfAnExpressionThatEndsTooEarly) {
    EXPECT_EQ(Eval("1 +"), (Result{1, "",
                                   "<--eval>(1) : Unexpected EOS after + in expression\n"
                                   "1 +\n"
                                   "   ^\n"}));
}

TEST_F(ToolEval, RefusesAnEmptyExpression) {
    EXPECT_EQ(Eval(""), (Result{1, "", "<--eval> : Unexpected EOS after EOS in expression\n"}));
}

TEST_F(ToolEval, RefusesWhatStandsBehindTheExpression) {
    EXPECT_EQ(Eval("1 2"), (Result{1, "",
                                   "<--eval>(1) : Read 2 in middle of expression\n"
                                   "1 2\n"
                                   "  ^\n"}));
}

TEST_F(ToolEval, ShowsTheExpandedExpressionWhereItDiffers) {
    EXPECT_EQ(Eval("n 2", {"n=1"}), (Result{1, "",
                                            "<--eval>(1) : Read 2 in middle of expression\n"
                                            "    expression: 1 2\n"
                                            "n 2\n"
                                            "  ^\n"}));
}

TEST_F(ToolEval, MarksAFaultInTheTextOfAMacro) {
    EXPECT_EQ(Eval("1 + m", {"m=\"x\" +"}),
              (Result{1, "",
                      "<-D m>(1) : Incompatible types (int64 and string) for + operation\n"
                      "    expression: 1 + \"x\" +\n"
                      "\"x\" +\n"
                      "    ^\n"
                      "hint: string(n) makes a string of the number n\n"}));
}

TEST_F(ToolEval, ReportsAFaultOfTheExpansion) {
    EXPECT_EQ(Eval("@else"), (Result{1, "",
                                     "<--eval>(1) : @else with no matching @if directive\n"
                                     "@else\n"
                                     " ^\n"}));
}

}  // namespace
