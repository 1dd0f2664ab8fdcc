// -D: macros and values from the command line.

#include "ToolRunner.h"

namespace {

using tool_test::Result;
using tool_test::ToolTest;

class ToolDefinitions : public ToolTest {
protected:
    Result Expand(const std::vector<std::string>& definitions, const std::string& text) const {
        std::vector<std::string> arguments;
        for (const std::string& definition : definitions)
            arguments.push_back("-D" + definition);
        return Run(arguments, text);
    }

    // A definition that is refused.
    Result Refusal(const std::string& definition, const std::string& reason) const {
        return Result{2, "",
                      "qzexpand: -D " + definition + ": " + reason
                          + "\n"
                            "usage: qzexpand [-o FILE] [-D [TYPE:]NAME=VALUE]... [FILE]\n"
                            "Try 'qzexpand --help' for more.\n"};
    }
};

TEST_F(ToolDefinitions, DefinesAMacroWhoseBodyIsTheValueAsItStands) {
    EXPECT_EQ(Expand({"n={ a = b }"}, "[n]"), (Result{0, "[{ a = b }]", ""}));
    EXPECT_EQ(Expand({"n="}, "[n]"), (Result{0, "[]", ""}));
    EXPECT_EQ(Expand({"n=a\n  b"}, "  n"), (Result{0, "  a\n    b", ""}));
}

TEST_F(ToolDefinitions, TakesTheDefinitionAsTheNextArgumentToo) {
    EXPECT_EQ(Run({"-D", "n=5"}, "n"), (Result{0, "5", ""}));
}

TEST_F(ToolDefinitions, ExpandsTheBodyWhereItIsUsed) {
    EXPECT_EQ(Expand({"n=m"}, "@def m = 7\nn"), (Result{0, "7", ""}));
}

TEST_F(ToolDefinitions, LetsTheLaterOfTwoDefinitionsWin) {
    EXPECT_EQ(Expand({"n=1", "n=2"}, "n"), (Result{0, "2", ""}));
    EXPECT_EQ(Expand({"n=1", "string:n=2"}, "n"), (Result{0, "2", ""}));
}

TEST_F(ToolDefinitions, DefinesAStringWithTheValueAsItStands) {
    EXPECT_EQ(Expand({"string:s=a \"quoted\" m"}, "@def m = 7\ns"),
              (Result{0, "a \"quoted\" m", ""}));
    EXPECT_EQ(Expand({"string:s=a"}, "@let s := s@@s\ns"), (Result{0, "aa", ""}));
}

TEST_F(ToolDefinitions, ReportsAFaultInADefinitionAtTheDefinition) {
    EXPECT_EQ(Expand({"n=a\n  \" b"}, "x\nn"),
              (Result{1, "",
                      "<-D n>(2) : Met EOS within double quoted string after reading \" b\n"
                      "    invoking macro n\n"
                      "  \" b\n"
                      "     ^\n"}));
}

TEST_F(ToolDefinitions, RefusesWhatIsNoDefinition) {
    EXPECT_EQ(Expand({"n"}, "n"), Refusal("n", "'=' and a value are missing"));
    EXPECT_EQ(Expand({"=5"}, "n"), Refusal("=5", "'' is no name"));
    EXPECT_EQ(Expand({"5n=5"}, "n"), Refusal("5n=5", "'5n' is no name"));
    EXPECT_EQ(Expand({"n =5"}, "n"), Refusal("n =5", "'n ' is no name"));
    EXPECT_EQ(Expand({"f(x)=x"}, "f"), Refusal("f(x)=x", "'f(x)' is no name"));
    EXPECT_EQ(Expand({"long:n=5"}, "n"), Refusal("long:n=5", "'long' is no type"));
    EXPECT_EQ(Expand({"int:=5"}, "n"), Refusal("int:=5", "'' is no name"));
    EXPECT_EQ(Expand({"int=5"}, "n"), Refusal("int=5", "'int' is a type and no name"));
}

}  // namespace
