// Texts that use Python.

#include "ToolRunner.h"

#include <csignal>

#include <unistd.h>

namespace {

using tool_test::Process;
using tool_test::Result;
using tool_test::ToolTest;

class ToolPython : public ToolTest {};

TEST_F(ToolPython, IsForbiddenWithoutTheOption) {
    EXPECT_EQ(Run({}, "text\n@runpython {\nprint 1\n}\n"),
              (Result{1, "",
                      "<stdin>(2) : Python initialisation error: forbidden by the host\n"
                      "    in @runpython()\n"
                      "print 1\n"
                      "\n"
                      "@runpython {\n"
                      "^\n"
                      "hint: --python allows the text to run Python\n"}));
    EXPECT_EQ(Run({}, "@defpython f(x) = x * 2\nf(21)"),
              (Result{1, "",
                      "<stdin>(2) : Python initialisation error: forbidden by the host\n"
                      "    invoking python macro f\n"
                      "f(21)\n"
                      "     ^\n"
                      "hint: --python allows the text to run Python\n"}));
}

TEST_F(ToolPython, MayBeDefinedWithoutTheOptionAsLongAsItIsNotUsed) {
    EXPECT_EQ(Run({}, "@defpython f(x) = x * 2\ntext"), (Result{0, "text", ""}));
}

TEST_F(ToolPython, RunsWithTheOption) {
    EXPECT_EQ(Run({"--python"}, "@runpython {\nprint 'note'\nn = 2\n}\n"
                                "@defpython f(x) = x * n\nf(21)\n"),
              (Result{0, "42\n", "note\n"}));
}

TEST_F(ToolPython, PrintsToStandardErrorInEachOfItsWays) {
    EXPECT_EQ(Run({"--python"}, "@runpython {\n"
                                "import os, sys\n"
                                "sys.stdout.write('one\\n')\n"
                                "os.write(1, 'two\\n')\n"
                                "os.system('echo three')\n"
                                "sys.__stdout__.write('four\\n')\n"
                                "}\ntext\n"),
              (Result{0, "text\n", "one\ntwo\nthree\nfour\n"}));
}

TEST_F(ToolPython, IsNoBurdenToATextWithoutIt) {
    EXPECT_EQ(Run({"--python"}, "text"), (Result{0, "text", ""}));
}

TEST_F(ToolPython, WritesFilesOutThatAScriptHasLeftOpen) {
    EXPECT_EQ(Run({"--python"}, "@runpython {\nf = open('left', 'w')\nf.write('text')\n}\n"),
              (Result{0, "", ""}));
    EXPECT_EQ(Read("left"), "text");
}

TEST_F(ToolPython, DoesNotEndTheToolByItsExit) {
    const Result result = Run({"--python"}, "@runpython {\nimport sys\nsys.exit(0)\n}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.rfind("<stdin>(1) : RunPython error: Traceback", 0), 0u) << result.err;
    EXPECT_NE(result.err.find("SystemExit"), std::string::npos) << result.err;
}

TEST_F(ToolPython, IsEndedAtOnceBySignals) {
    for (const int signal : {SIGINT, SIGTERM}) {
        // One write: print would make two, and the signal could come between them.
        Process process(m_folder, {"--python"},
                        "@runpython {\nsys.stdout.write('go')\nwhile True:\n  pass\n}\n", {});
        process.WaitForOutput();
        process.Signal(signal);
        EXPECT_EQ(process.Wait(), (Result{-signal, "", "go"}));
    }
}

TEST_F(ToolPython, IsEndedBySignalWhereItsReaderHasGone) {
    const auto setUp = [] {
        int ends[2];
        if (::pipe(ends) == 0) {
            ::dup2(ends[1], 2);
            ::close(ends[0]);
            ::close(ends[1]);
        }
    };
    EXPECT_EQ(Run({"--python"}, "@runpython {\nwhile True:\n  print 'text'\n}\n", setUp),
              (Result{-SIGPIPE, "", ""}));
}

TEST_F(ToolPython, IsEndedByTheTimeLimit) {
    EXPECT_EQ(Run({"--python", "--limit-time=1"}, "\n@runpython {\nwhile True:\n  pass\n}\n"),
              (Result{3, "",
                      "<stdin>(2) : the time of 1 s ran out in @runpython\n"
                      "hint: --limit-time=SECONDS gives it more\n"}));
}

#if !defined(QZ_SANITIZED)
TEST_F(ToolPython, IsEndedByTheMemoryLimitWithoutASanitizer) {
    EXPECT_EQ(Run({"--python", "--limit-memory=200"}, "@runpython {\nx = 'a' * (1 << 30)\n}\n"),
              (Result{3, "",
                      "<stdin>(1) : RunPython error: Traceback (most recent call last):\n"
                      "  File \"\", line 1, in <module>\n"
                      "    \n"
                      "MemoryError\n"
                      "\n"
                      "    in @runpython()\n"
                      "x = 'a' * (1 << 30)\n"
                      "\n"
                      "@runpython {\n"
                      "^\n"
                      "hint: --limit-memory=MIB gives it more\n"}));
}
#endif

}  // namespace
