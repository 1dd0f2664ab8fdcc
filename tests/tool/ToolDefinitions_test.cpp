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
    static Result Refusal(const std::string& definition, const std::string& reason) {
        return tool_test::WrongCall("-D " + definition + ": " + reason);
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
                      "     ^\n"
                      "hint: a \" begins a string, which has to end on its line\n"}));
}

TEST_F(ToolDefinitions, EvaluatesTheValueOfATypeAsLetDoes) {
    EXPECT_EQ(Expand({"int:n=2*3"}, "n"), (Result{0, "6", ""}));
    EXPECT_EQ(Expand({"bool:b=1<2"}, "b"), (Result{0, "true", ""}));
    EXPECT_EQ(Expand({"double:d=1"}, "d"), (Result{0, "1.0", ""}));
    EXPECT_EQ(Expand({"char:c='\\n'"}, "c"), (Result{0, "'\\n'", ""}));
    EXPECT_EQ(Expand({"char:c=65"}, "c"), (Result{0, "'A'", ""}));
}

TEST_F(ToolDefinitions, DefinesAValueThatTheTextCanAssignTo) {
    EXPECT_EQ(Expand({"int:n=1"}, "@let n = n + 1\nn"), (Result{0, "2", ""}));
    EXPECT_EQ(Expand({"int:n=1"}, "@let int n = 1\n"),
              (Result{1, "",
                      "<stdin>(1) : Redefinition of variable n in this scope\n"
                      "@let int n = 1\n"
                      "         ^\n"}));
}

TEST_F(ToolDefinitions, ExpandsEarlierDefinitionsInAValue) {
    EXPECT_EQ(Expand({"m=3", "int:n=2*m"}, "n"), (Result{0, "6", ""}));
    EXPECT_EQ(Expand({"int:n=2*m", "m=3"}, "n"),
              (Result{1, "",
                      "<-D n>(1) : Unexpected m after * in expression\n"
                      "2*m\n"
                      "  ^\n"}));
}

TEST_F(ToolDefinitions, ReportsAValueThatIsNotOfItsType) {
    EXPECT_EQ(Expand({"int:n=1.5"}, ""),
              (Result{1, "",
                      "<-D n>(1) : No implicit conversion from float64 to int64\n"
                      "1.5\n"
                      "   ^\n"}));
    EXPECT_EQ(Expand({"int:n=2147483648"}, ""),
              (Result{1, "",
                      "<-D n>(1) : No implicit conversion from value 2147483648 to int32\n"
                      "2147483648\n"
                      "          ^\n"}));
    EXPECT_EQ(Expand({"int:n="}, ""),
              (Result{1, "", "<-D n> : Unexpected EOS after EOS in expression\n"}));
    EXPECT_EQ(Expand({"int:n=1 2"}, ""), (Result{1, "",
                                                 "<-D n>(1) : Read 2 in middle of expression\n"
                                                 "1 2\n"
                                                 "  ^\n"}));
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
