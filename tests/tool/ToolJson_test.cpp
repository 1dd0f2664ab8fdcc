// Reports for editors.

#include "ToolRunner.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;
using tool_test::Result;
using tool_test::ToolTest;

class ToolJson : public ToolTest {
protected:
    // The one report of a run.
    Json ReportOf(std::vector<std::string> arguments, const std::string& text = "") const {
        arguments.insert(arguments.begin(), "--diagnostics=json");
        const std::string report = Run(arguments, text).err;
        EXPECT_EQ(report.find('\n'), report.size() - 1) << report;
        return Json::parse(report);
    }
};

TEST_F(ToolJson, IsAnObjectOnALine) {
    EXPECT_EQ(Run({"--diagnostics=json"}, "a\n b @fail(\"stop\")\n"),
              (Result{1, "",
                      R"({"severity":"error","file":"<stdin>","line":2,"column":9,)"
                      R"("message":"stop","context":[],"hints":[],"imports":[]})"
                      "\n"}));
}

TEST_F(ToolJson, CountsColumnsInBytesFromOne) {
    EXPECT_EQ(ReportOf({}, "@fail(\"stop\")").at("column"), 6);
    EXPECT_EQ(ReportOf({}, "\"\xc3\xa9\t\" @fail(\"stop\")").at("column"), 12);
}

TEST_F(ToolJson, HoldsContextHintsAndImports) {
    Write("a.qz", "\n@import \"b.qz\"\n");
    Write("b.qz", "@def f(x) = @(\"a\" + x)\n f(2)\n");
    EXPECT_EQ(ReportOf({"a.qz"}), Json::parse(R"json({
        "severity": "error", "file": "b.qz", "line": 1, "column": 13,
        "message": "Incompatible types (string and int64) for + operation",
        "context": ["in @(\"a\" + 2)", "invoking macro f(x) with x=2"],
        "hints": ["string(n) makes a string of the number n"],
        "imports": [{"file": "a.qz", "line": 2}]
})json"));
}

TEST_F(ToolJson, HoldsTheWholeTrace) {
    const Json report =
        ReportOf({}, "@def f(int n) = @if (n == 0) {@fail(\"stop\")} @else {f(n - 1)}\nf(299)\n");
    EXPECT_EQ(report.at("context").size(), 300u);
    EXPECT_EQ(report.at("context").at(299), "invoking macro f(n) with n=299");
}

TEST_F(ToolJson, KeepsTheLinesOfTheMessage) {
    EXPECT_EQ(ReportOf({}, "@assert(1 > 2)").at("message"),
              "Assertion failure\n        @assert(1 > 2)\nie      @assert(1 > 2)");
}

TEST_F(ToolJson, NamesTheFileAloneWhereNoPlaceIsKnown) {
    const Json report = ReportOf({}, "@let int x = 1 2\n");
    EXPECT_EQ(report.at("file"), "<stdin>");
    EXPECT_FALSE(report.contains("line"));
    EXPECT_FALSE(report.contains("column"));
}

TEST_F(ToolJson, IsValidForAnyBytes) {
    EXPECT_EQ(ReportOf({}, "@fail(\"\xff\xc3\x01\x7f \xc3\xa9\")").at("message"),
              "\\xff\\xc3\\x01\\x7f \xc3\xa9");
    Write("\xff\x1b.qz", "\xff");
    const Json report = ReportOf({"\xff\x1b.qz"});
    EXPECT_EQ(report.at("file"), "\\xff\\x1b.qz");
    EXPECT_EQ(report.at("message"), "Bad token \\xff");
}

TEST_F(ToolJson, HoldsWhatIsNoErrorOfAText) {
    EXPECT_EQ(ReportOf({"nosuch.qz"}), Json::parse(R"({
        "severity": "error", "message": "nosuch.qz: No such file or directory",
        "context": [], "hints": [], "imports": []
    })"));
    EXPECT_EQ(ReportOf({"--nosuch"}), Json::parse(R"({
        "severity": "error", "message": "unknown option --nosuch",
        "context": [], "hints": [], "imports": []
    })"));
}

TEST_F(ToolJson, HoldsTheEndOfARunAtItsLimits) {
    EXPECT_EQ(ReportOf({"--limit-stack=1"}, "@def a = a\n a\n"), Json::parse(R"({
        "severity": "error", "file": "<stdin>", "line": 1, "column": 10,
        "message": "the stack of 1 MiB ran out in macro a",
        "context": ["<stdin>(2) : in macro a"],
        "hints": ["--limit-stack=MIB gives it more"], "imports": []
    })"));
    EXPECT_EQ(ReportOf({"--limit-stack=1", "--eval", std::string(100'000, '(')}), Json::parse(R"({
        "severity": "error", "file": "<--eval>",
        "message": "the stack of 1 MiB ran out",
        "context": [], "hints": ["--limit-stack=MIB gives it more"], "imports": []
    })"));
    Write("\"\\\x1b.qz", "@while (true) {}");
    EXPECT_EQ(ReportOf({"--limit-time=1", "\"\\\x1b.qz"}), Json::parse(R"({
        "severity": "error", "file": "\"\\\\x1b.qz", "line": 1, "column": 1,
        "message": "the time of 1 s ran out in @while",
        "context": [], "hints": ["--limit-time=SECONDS gives it more"], "imports": []
    })"));
}

#if !defined(QZ_SANITIZED)
TEST_F(ToolJson, HoldsTheEndOfTheMemoryWithoutASanitizer) {
    Write("a.qz", std::string(60'000'000, ' '));
    EXPECT_EQ(ReportOf({"--limit-memory=60", "--limit-stack=8", "a.qz"}), Json::parse(R"({
        "severity": "error", "message": "the memory ran out",
        "context": [], "hints": ["--limit-memory=MIB gives it more"], "imports": []
    })"));
}
#endif

TEST_F(ToolJson, StandsOnALineOfItsOwnBesideWhatIsPrinted) {
    const std::string report =
        R"({"severity":"error","file":"<stdin>","line":1,"column":16,"message":"stop",)"
        R"("context":[],"hints":[],"imports":[]})"
        "\n";
    EXPECT_EQ(Run({"--diagnostics=json"}, "@print(a) @fail(\"stop\")").err, "a\n" + report);
    EXPECT_EQ(Run({"--diagnostics=json"}, "@println(a)@fail(\"stop\")").err.substr(0, 3), "a\n{");
    EXPECT_EQ(
        Run({"--diagnostics=json", "--limit-time=1"}, "@print(a)@while (true) {}").err.substr(0, 3),
        "a\n{");
}

TEST_F(ToolJson, CanBeTakenBack) {
    EXPECT_EQ(Run({"--diagnostics=json", "--diagnostics=text"}, "@fail(\"stop\")").err,
              "<stdin>(1) : stop\n@fail(\"stop\")\n     ^\n");
    EXPECT_EQ(Run({"--diagnostics=xml"}),
              tool_test::WrongCall("--diagnostics is text or json: xml"));
}

}  // namespace
