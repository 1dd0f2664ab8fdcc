// Texts that use Python: nothing of the machine shows in what they make.

#include "ToolRunner.h"

#include <cstdlib>
#include <sstream>

#include <unistd.h>

namespace {

using tool_test::Process;
using tool_test::Result;
using tool_test::ToolTest;

class ToolPythonHermetic : public ToolTest {};

// Variables, with blanks between them.
void SetEnvironment(const std::string& variables) {
    std::istringstream words(variables);
    for (std::string word; words >> word;) {
        const std::size_t equal = word.find('=');
        ::setenv(word.substr(0, equal).c_str(), word.substr(equal + 1).c_str(), 1);
    }
}

TEST_F(ToolPythonHermetic, SeesNothingOfTheEnvironment) {
    const std::string text = "@runpython {\n"
                             "import os, sys, locale\n"
                             "print sorted(os.environ)\n"
                             "print sorted(sys.modules).count('evil')\n"
                             "print [p for p in sys.path if 'evil' in p or 'test' in p]\n"
                             "print hash('a'), {'b', 'a', 'zz', 'y'}, 'I'.lower(), 1.5\n"
                             "print sys.flags.optimize, sys.flags.verbose, __debug__\n"
                             "print locale.setlocale(locale.LC_ALL, '')\n"
                             "}\n";
    const Result expected{0, "",
                          "['HOME', 'PYTHONDONTWRITEBYTECODE']\n0\n[]\n"
                          "12416037344 set(['a', 'y', 'b', 'zz']) i 1.5\n0 0 True\nC\n"};
    Write("evil/evil.py", "");
    Write("evil/sitecustomize.py", "import evil\nprint 'evil'\n");
    Write("evil/usercustomize.py", "import evil\nprint 'evil'\n");
    Write("evil/.local/lib/python2.7/site-packages/usercustomize.py", "print 'evil'\n");
    const std::string evil = PathOf("evil").string();
    const std::string environments[] = {
        "",
        "PYTHONPATH=" + evil + " PYTHONSTARTUP=" + evil + "/evil.py",
        "HOME=" + evil + " PYTHONUSERBASE=" + evil + "/.local",
        "PYTHONHOME=" + evil,
        "PYTHONHASHSEED=random PYTHONOPTIMIZE=2 PYTHONVERBOSE=1",
        "PYTHONHASHSEED=42 PYTHONINSPECT=1 PYTHONWARNINGS=error",
        "LC_ALL=C.UTF-8 PYTHONIOENCODING=utf-16",
    };
    for (const std::string& variables : environments)
        EXPECT_EQ(Run({"--python"}, text, [&variables] { SetEnvironment(variables); }), expected)
            << variables;
}

TEST_F(ToolPythonHermetic, TakesNoModulesFromTheWorkingDirectory) {
    Write("lib/python2.7/os.py", "");
    Write("lib/python2.7/site.py", "print 'wrong'\n");
    Write("os.py", "");
    Write("json.py", "print 'wrong'\n");
    EXPECT_EQ(Run({"--python"}, "@runpython {\nimport json\nprint json.dumps(1)\n}\n"),
              (Result{0, "", "1\n"}));
    EXPECT_EQ(FileNames(), (std::vector<std::string>{"json.py", "lib", "os.py"}));
}

TEST_F(ToolPythonHermetic, WritesNoFilesBesideModules) {
    Write("m.py", "n = 7\n");
    EXPECT_EQ(Run({"--python"}, "@runpython {\nsys.path.append('.')\nimport m\nprint m.n\n}\n"),
              (Result{0, "", "7\n"}));
    EXPECT_EQ(FileNames(), std::vector<std::string>{"m.py"});
}

}  // namespace
