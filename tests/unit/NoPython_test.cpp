// What a build without Python answers to every use of it.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "qzMacroExpander/src/UsePython.h"
#include "tests/support/Text.h"

namespace vorn {
namespace {

using vorn_test::LexError;
using vorn_test::LexErrorOf;
using vorn_test::Str;

LexError ExpandError(const char* text) {
    return LexErrorOf(text, [text] {
        VarFrame vf(nullptr);
        xstring result;
        MacroExpand(nullptr, &vf, text, 0, 0, result);
    });
}

// The errors of all uses of Python, directly and from a macro text, one a line.
std::string ErrorsOfAllUses() {
    static constexpr char s_text[] = "text";
    std::string all;
    const auto add = [&all](const LexError& error) {
        all += error.description + " at " + std::to_string(error.offset) + "\n";
    };
    add(LexErrorOf(s_text, [] { InitPythonFromParser(s_text + 1); }));
    add(LexErrorOf(s_text, [] { RunPython(xstring(), "x = 1", s_text + 2); }));
    add(LexErrorOf(s_text, [] {
        xstring result;
        EvalPythonExpression("1", result, s_text + 3);
    }));
    add(ExpandError("@runpython x = 1"));
    add(ExpandError("@defpython p = 1\np"));
    return all;
}

std::string ErrorsOfAllUses(const std::string& error) {
    return error + " at 1\n" + error + " at 2\n" + error + " at 3\n" + error
           + "\n    in @runpython()\nx = 1 at 0\n" + error
           + "\n    invoking python macro p at 18\n";
}

TEST(NoPython, IsLinkedWithNone) {
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "Py_IsInitialized"), nullptr);
}

TEST(NoPython, RefusesEveryUse) {
    const std::string error = "Python initialisation error: this library was built without Python";
    EXPECT_EQ(ErrorsOfAllUses(), ErrorsOfAllUses(error));
    UninitPython();
    EXPECT_EQ(ErrorsOfAllUses(), ErrorsOfAllUses(error));
}

TEST(NoPython, NeverStarts) {
    for (int i = 0; i < 2; ++i) {
        xstring errorString;
        EXPECT_FALSE(InitPython(errorString));
        EXPECT_EQ(Str(errorString), "this library was built without Python");
    }
}

TEST(NoPython, ExpandsWhatUsesNone) {
    EXPECT_EQ(ExpandError("@defpython p = 1\n@runpython {}\n@def m = x\nm"),
              (LexError{"(no error)", -1}));
}

void UseForbiddenPython() {
    ForbidPython();
    std::fputs(ErrorsOfAllUses().c_str(), stderr);
    std::_Exit(0);
}

TEST(NoPython, SaysThatPythonIsForbiddenWhereItIs) {
    EXPECT_EXIT(
        UseForbiddenPython(), testing::ExitedWithCode(0),
        testing::StrEq(ErrorsOfAllUses("Python initialisation error: forbidden by the host")));
}

}  // namespace
}  // namespace vorn
