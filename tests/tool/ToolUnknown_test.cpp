// Names behind an @ that are unknown.

#include "ToolRunner.h"

#include <nlohmann/json.hpp>

namespace {

using tool_test::Result;
using tool_test::ToolTest;

class ToolUnknown : public ToolTest {
protected:
    // What is said of the names in a text, which must be expanded all the same.
    std::string WarningsFor(const std::string& text) const {
        const Result result = Run({"--warn-unknown"}, text);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.err;
    }

    // The hint for a name.
    std::string HintFor(const std::string& name) const {
        const std::string report =
            WarningsFor("@def total = 1\n@let int width = 2\n@" + name + "\n");
        const std::size_t at = report.find("\nhint: ");
        return at == report.npos ? "" : report.substr(at + 7, report.size() - at - 8);
    }
};

TEST_F(ToolUnknown, IsReportedAtItsPlaceAndStaysInTheOutput) {
    EXPECT_EQ(Run({"--warn-unknown"}, "a\n  b @iff (x) c\n"),
              (Result{0, "a\n  b @iff (x) c\n",
                      "<stdin>(2) : warning: @iff is neither a directive nor a value and stays"
                      " as it is\n"
                      "  b @iff (x) c\n"
                      "    ^~~~\n"
                      "hint: did you mean @if?\n"}));
}

TEST_F(ToolUnknown, IsNotReportedWithoutTheOption) {
    EXPECT_EQ(Run({}, "@iff (x)"), (Result{0, "@iff (x)", ""}));
}

TEST_F(ToolUnknown, IsReportedForEditorsWithItsWholeStretch) {
    const std::string report = Run({"--warn-unknown", "--diagnostics=json"}, "\n b @whlie {}").err;
    EXPECT_EQ(nlohmann::json::parse(report), nlohmann::json::parse(R"({
        "severity": "warning", "file": "<stdin>", "line": 2, "column": 4, "endColumn": 10,
        "message": "@whlie is neither a directive nor a value and stays as it is",
        "context": [], "hints": ["did you mean @while?"], "imports": []
    })"));
}

TEST_F(ToolUnknown, CanBeAnError) {
    Write("a.qz", "@nothing_like_it\n");
    EXPECT_EQ(Run({"--warn-unknown=error", "-o", "out", "a.qz"}),
              (Result{1, "",
                      "a.qz(1) : @nothing_like_it is neither a directive nor a value and stays"
                      " as it is\n"
                      "@nothing_like_it\n"
                      "^~~~~~~~~~~~~~~~\n"
                      "qzexpand: unknown names are treated as errors\n"}));
    EXPECT_FALSE(Exists("out"));
    EXPECT_EQ(Run({"--warn-unknown=error"}, "fine"), (Result{0, "fine", ""}));
    EXPECT_EQ(Run({"--warn-unknown=no"}),
              tool_test::WrongCall("--warn-unknown is warning or error: no"));
}

TEST_F(ToolUnknown, GetsAHintByTheNearestDirectiveOrVariable) {
    EXPECT_EQ(HintFor("esle"), "did you mean @else?");
    EXPECT_EQ(HintFor("IF"), "did you mean @if?");
    EXPECT_EQ(HintFor("asert"), "did you mean @assert?");
    EXPECT_EQ(HintFor("define"), "");
    EXPECT_EQ(HintFor("improt"), "did you mean @import?");
    EXPECT_EQ(HintFor("relativPath"), "did you mean @relativepath?");
    EXPECT_EQ(HintFor("totla"), "did you mean total?");
    EXPECT_EQ(HintFor("total"), "total is used without the @");
    EXPECT_EQ(HintFor("width"), "width is used without the @");
    EXPECT_EQ(HintFor("elseif (x)"), "an @elseif follows the block of its @if directly");
    EXPECT_EQ(HintFor("Override"), "");
    EXPECT_EQ(HintFor("x"), "");
    EXPECT_EQ(HintFor(std::string(100'000, 'x')), "");
}

TEST_F(ToolUnknown, IsFoundWhereverTextIsCopied) {
    const std::string texts[] = {
        "x@@y @iff",                                 // behind joined words
        "@scope\n{\n    a\n    b @iff\n}\n",         // behind indentation that is left out
        "@def m(x) = <x>\nm(@iff)",                  // in an argument
        "@def m =\n{\n    a\n      @iff\n}\n  m\n",  // in a body of several lines
        "@for (x in [1, 2]) { @iff }",               // twice, and reported once
        "@for (x in [@iff, 2]) {x}",                 // in an item
        "@if (true) { @ iff }",                      // with a blank
        "f(a, b) // don't\n\"c\" @iff",              // behind a comment and a string
        "ada@iff",                                   // directly behind a word
        "@quote(a) @iff @quote(b)",                  // between quoted texts
        "@iff @\"c\" @5 @, @",                       // beside an @ without a name
    };
    for (const std::string& text : texts) {
        const std::string report = WarningsFor(text);
        EXPECT_NE(report.find("warning: @iff is neither"), report.npos) << text;
        EXPECT_EQ(report.find("warning: ", report.find("warning: ") + 1), report.npos) << report;
    }
}

TEST_F(ToolUnknown, IsNotFoundInWhatOnlyLooksLikeOne) {
    Write("b.qz", "");
    const std::string texts[] = {
        "// ada@example.org\n/* @param x\n * @return y\n */",
        "\"ada@example.org\" '@name' r\"@name\"",
        "    /* a\n       @param\n    */\n@scope\n{\n    /* a\n       @param */ b\n}",
        "@quote(@name)",
        "@quote(\n@name)",
        "@quote\n    (\n        @name\n          @name\n    )",
        "@ quote /* @x */ (@name \"@name\")",
        "@def m = @quote(a @name)\nm @scope { @quote(@name) }",
        "@def m(x) = [x]\nm(@quote(@name))",
        "@if (false) {@name}",
        "@def m = @name\n",
        "@// @name\n@/* @name */ a",
        "@import \"b.qz\"\n@importpath \"b\"\n",
        "@str(@name) @strx(@name)",
        "@5 @, @\"x\" @",
    };
    for (const std::string& text : texts)
        EXPECT_EQ(WarningsFor(text), "") << text;
}

TEST_F(ToolUnknown, IsNotFoundInAnImportThatIsKept) {
    Write("b.qz", "");
    EXPECT_EQ(
        Run({"--warn-unknown", "--imports=keep"}, "@import \"b.qz\"\n@import(\"b.qz\")\n").err, "");
}

TEST_F(ToolUnknown, IsFoundInImportedFiles) {
    Write("b.qz", "\n@iff\n");
    EXPECT_EQ(Run({"--warn-unknown"}, "@import \"b.qz\"\n").err,
              "b.qz(2) : warning: @iff is neither a directive nor a value and stays as it is\n"
              "@iff\n"
              "^~~~\n"
              "<stdin>(1) : b.qz is imported here\n"
              "hint: did you mean @if?\n");
    EXPECT_EQ(Run({"--warn-unknown", "--imports=inline"}, "@import \"b.qz\"\n").err,
              Run({"--warn-unknown"}, "@import \"b.qz\"\n").err);
}

TEST_F(ToolUnknown, IsReportedInFrontOfTheErrorThatItMayHaveCaused) {
    Write("b.qz", "@iff (x) {@fail(\"stop\")}\n");
    EXPECT_EQ(Run({"--warn-unknown"}, "@esle\n@import \"b.qz\"\n").err,
              "b.qz(1) : warning: @iff is neither a directive nor a value and stays as it is\n"
              "@iff (x) {@fail(\"stop\")}\n"
              "^~~~\n"
              "<stdin>(2) : b.qz is imported here\n"
              "hint: did you mean @if?\n"
              "<stdin>(1) : warning: @esle is neither a directive nor a value and stays as it"
              " is\n"
              "@esle\n"
              "^~~~~\n"
              "hint: did you mean @else?\n"
              "b.qz(1) : stop\n"
              "@iff (x) {@fail(\"stop\")}\n"
              "               ^\n"
              "<stdin>(2) : b.qz is imported here\n");
}

}  // namespace
