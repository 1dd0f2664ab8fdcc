#include "qzMacroExpander/src/UsePython.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include "tests/support/Python.h"

// ---- faults on demand --------------------------------------------------------------------------
//
// Some steps of the start fail only when memory runs out. The program's own functions of these
// names come in front of Python's.

namespace {

using AppendInittab = int(const char*, void (*)());
using AddModule = PyObject*(const char*);
using RunSimpleString = int(const char*, void*);

std::function<AppendInittab> s_appendInittab;
std::function<AddModule> s_addModule;
std::function<RunSimpleString> s_runSimpleString;

template <class T>
T* Real(const char* name) {
    return reinterpret_cast<T*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int PyImport_AppendInittab(const char* name, void (*init)()) {
    return s_appendInittab ? s_appendInittab(name, init)
                           : Real<AppendInittab>("PyImport_AppendInittab")(name, init);
}

PyObject* PyImport_AddModule(const char* name) {
    return s_addModule ? s_addModule(name) : Real<AddModule>("PyImport_AddModule")(name);
}

int PyRun_SimpleStringFlags(const char* code, void* flags) {
    return s_runSimpleString ? s_runSimpleString(code, flags)
                             : Real<RunSimpleString>("PyRun_SimpleStringFlags")(code, flags);
}
}

namespace vorn {
namespace {

using namespace vorn_test;

class UsePythonStart : public PythonTest {
protected:
    ~UsePythonStart() override {
        s_appendInittab = nullptr;
        s_addModule = nullptr;
        s_runSimpleString = nullptr;
    }
};

// ---- start -------------------------------------------------------------------------------------

TEST_F(UsePythonStart, StartsOnDemandAndLeavesTheTextForErrorsAlone) {
    EXPECT_FALSE(PythonIsRunning());
    EXPECT_EQ(Init(), s_initSucceeds);
    EXPECT_TRUE(PythonIsRunning());
}

TEST_F(UsePythonStart, RunsTheBootstrapOnce) {
    std::vector<std::string> scripts;
    s_runSimpleString = [&](const char* code, void* flags) {
        EXPECT_EQ(flags, nullptr);
        scripts.emplace_back(code);
        return Real<RunSimpleString>("PyRun_SimpleStringFlags")(code, flags);
    };
    EXPECT_EQ(Init(), s_initSucceeds);
    EXPECT_EQ(Init(), s_initSucceeds);
    EXPECT_THAT(scripts,
                testing::ElementsAre("import sys\nimport stream_hooks\nclass myStdOut:\n"
                                     "  def write(self,string):\n"
                                     "    stream_hooks.WriteToStdOut(string);\n"
                                     "class myStdErr:\n"
                                     "  def write(self,string):\n"
                                     "    stream_hooks.WriteToStdErr(string);\n"
                                     "sys.stdout = myStdOut()\nsys.stderr = myStdErr()\n"));
}

TEST_F(UsePythonStart, ShowsTheNamesOfTheBootstrapToScripts) {
    Exec("names = sorted(globals())");
    EXPECT_EQ(Eval("names"), "[__builtins__,__doc__,__name__,__package__,"
                             "myStdErr,myStdOut,stream_hooks,sys]");
    EXPECT_EQ(Eval("__name__"), "__main__");
}

TEST_F(UsePythonStart, ReplacesTheStreamsByObjectsThatCanOnlyWrite) {
    Exec("");
    EXPECT_EQ(Eval("[dir(myStdOut), dir(myStdErr)]"),
              "[[__doc__,__module__,write],[__doc__,__module__,write]]");
    EXPECT_EQ(Eval("[sys.stdout.__class__ is myStdOut, sys.stderr.__class__ is myStdErr]"),
              "[1,1]");
}

TEST_F(UsePythonStart, ProvidesTheModuleOfHooks) {
    Exec("hooks = [stream_hooks.WriteToStdOut, stream_hooks.WriteToStdErr]");
    EXPECT_EQ(Eval("[name for name in dir(stream_hooks) if name[0] != '_']"),
              "[WriteToStdErr,WriteToStdOut]");
    EXPECT_EQ(Eval("[[hook.__name__, hook.__doc__] for hook in hooks]"),
              "[[WriteToStdOut,Write to stdout],[WriteToStdErr,Write to stderr]]");
    EXPECT_EQ(Eval("[hook.__self__ is None for hook in hooks]"), "[1,1]");
    EXPECT_EQ(Eval("[stream_hooks.__doc__ is None, stream_hooks.__name__]"), "[1,stream_hooks]");
    EXPECT_EQ(Eval("[hook('') is None for hook in hooks]"), "[1,1]");
}

// ---- a start that fails ------------------------------------------------------------------------

TEST_F(UsePythonStart, ReportsAFailureOnceAndIsFitAgainAfterUninitPython) {
    s_appendInittab = [](const char*, void (*)()) {
        return -1;
    };
    EXPECT_EQ(Init(), std::pair(false, std::string("PyImport_AppendInittab failed")));
    EXPECT_FALSE(PythonIsRunning());
    EXPECT_EQ(Init(), s_initSucceeds);
    EXPECT_FALSE(PythonIsRunning());
    s_appendInittab = nullptr;
    EXPECT_EQ(Init(), s_initSucceeds);
    EXPECT_FALSE(PythonIsRunning());
    UninitPython();
    EXPECT_EQ(Eval("1 + 1"), "2");
}

TEST_F(UsePythonStart, ThrowsAFailureToStartAtThePositionOfTheUse) {
    const LexError error = At("Python initialisation error: PyImport_AppendInittab failed");
    s_appendInittab = [](const char*, void (*)()) {
        return -1;
    };
    EXPECT_EQ(ExecError("x = 1"), error);
    UninitPython();
    EXPECT_EQ(EvalError("1"), error);
    UninitPython();
    EXPECT_EQ(LexErrorOf(s_source, [] { InitPythonFromParser(s_errorPos); }), error);
}

TEST_F(UsePythonStart, AppendsAPendingErrorToTheFailure) {
    s_addModule = [](const char*) {
        OfPython<void(PyObject*, const char*)>("PyErr_SetString")(
            *OfPython<PyObject*>("PyExc_MemoryError"), "no room");
        return static_cast<PyObject*>(nullptr);
    };
    s_runSimpleString = [](const char* code, void* flags) {
        const auto failing = std::exchange(s_addModule, nullptr);
        const int result = Real<RunSimpleString>("PyRun_SimpleStringFlags")(code, flags);
        s_addModule = failing;
        return result;
    };
    EXPECT_EQ(ExecError("x = 1"),
              At("Python initialisation error: PyImport_AddModule failed for the __main__ module"
                 " : MemoryError: no room\n"));
    EXPECT_EQ(Init(), s_initSucceeds);
}

TEST_F(UsePythonStart, RunsAgainstNoNamespaceAfterAFailureToGetIt) {
    s_runSimpleString = [](const char* code, void* flags) {
        const int result = Real<RunSimpleString>("PyRun_SimpleStringFlags")(code, flags);
        s_addModule = [](const char*) {
            return static_cast<PyObject*>(nullptr);
        };
        return result;
    };
    EXPECT_EQ(ExecError("x = 1"), At("Python initialisation error: "
                                     "PyImport_AddModule failed for the __main__ module"));
    EXPECT_EQ(ExecError("x = 1"),
              At("RunPython error: SystemError: PyEval_EvalCodeEx: NULL globals\n"));
    EXPECT_EQ(EvalError("1"),
              At("Eval python error: SystemError: PyEval_EvalCodeEx: NULL globals\n"));
}

TEST_F(UsePythonStart, KeepsTheNamespaceThatIsMissingItsBuiltins) {
    s_runSimpleString = [](const char* code, void* flags) {
        const int result = Real<RunSimpleString>("PyRun_SimpleStringFlags")(code, flags);
        s_addModule = [](const char*) {
            return Real<AddModule>("PyImport_AddModule")("bare");
        };
        return result;
    };
    EXPECT_EQ(ExecError("x = 1"),
              At("Python initialisation error: __main__ module is missing __builtins__"));
    Exec("x = 7");
    EXPECT_EQ(Eval("x"), "7");
}

// Starts Python under a site customisation of the user's that hides the module of hooks.
void StartWithHiddenHooks() {
    {
        const ModuleDirectory directory;
        directory.Write("sitecustomize.py", "import sys\nsys.dont_write_bytecode = True\n"
                                            "sys.modules['stream_hooks'] = None\n");
        setenv("PYTHONPATH", directory.Path().c_str(), 1);
        for (int i = 0; i < 2; ++i)
            std::fprintf(stderr, "%s|\n", ExecError("x = 1").description.c_str());
    }
    std::_Exit(0);
}

// The bootstrap's traceback and later ones go to standard error, which has not been replaced.
TEST_F(UsePythonStart, FailsWhereTheBootstrapDoes) {
    // In a process that has not started Python before: the search path is computed once.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(StartWithHiddenHooks(), testing::ExitedWithCode(0),
                testing::StrEq("Traceback (most recent call last):\n"
                               "  File \"<string>\", line 2, in <module>\n"
                               "ImportError: No module named stream_hooks\n"
                               "Python initialisation error: "
                               "PyRun_SimpleString failed on the vorn bootstrap code|\n"
                               "SystemError: PyEval_EvalCodeEx: NULL globals\n"
                               "RunPython error: |\n"));
}

// Starts Python in a folder that looks like its own.
void StartBesideModules() {
    {
        const ModuleDirectory directory;
        const std::filesystem::path modules = directory.Path("lib/python2.7");
        std::filesystem::create_directories(modules);
        for (const char* name : {"os.py", "site.py"})
            std::ofstream(modules / name) << "import sys\nsys.dont_write_bytecode = True\n";
        unsetenv("PATH");
        const std::string found =
            "len([p for p in sys.path if p.startswith('" + directory.Path() + "')])";
        if (chdir(directory.Path().c_str()) == 0)
            std::fprintf(stderr, "%s|\n", Eval(found.c_str()).c_str());
    }
    std::_Exit(0);
}

TEST_F(UsePythonStart, TakesNoModulesFromTheWorkingDirectory) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(StartBesideModules(), testing::ExitedWithCode(0), testing::StrEq("0|\n"));
}

// ---- end ---------------------------------------------------------------------------------------

TEST_F(UsePythonStart, DoesNothingAtTheEndOfWhatNeverStarted) {
    UninitPython();
    EXPECT_FALSE(PythonIsRunning());
}

TEST_F(UsePythonStart, StartsAfreshAfterTheEnd) {
    Exec("import json\nx = 1");
    EXPECT_EQ(Eval("[x, 'json' in sys.modules]"), "[1,1]");
    UninitPython();
    EXPECT_FALSE(PythonIsRunning());
    EXPECT_EQ(Eval("['x' in globals(), 'json' in sys.modules]"), "[0,0]");
    EXPECT_EQ(ExecError("print x"), At("RunPython error: Traceback (most recent call last):\n"
                                       "  File \"\", line 1, in <module>\n    \n"
                                       "NameError: name 'x' is not defined\n"));
    EXPECT_EQ(Eval("[sys.flags.inspect, sys.flags.no_site]"), "[0,0]");
}

TEST_F(UsePythonStart, RunsWhatAScriptLeftForTheEnd) {
    Exec("import atexit\n"
         "def last():\n"
         "  print 'the end'\n"
         "atexit.register(last)");
    EXPECT_EQ(StdoutOf(UninitPython), "the end\n");
}

// ---- signals -----------------------------------------------------------------------------------

using Handler = void (*)(int);

void HostsHandler(int) {}

Handler HandlerOf(int number) {
    struct sigaction action;
    sigaction(number, nullptr, &action);
    return action.sa_handler;
}

TEST_F(UsePythonStart, LeavesSignalsAsTheHostHasThem) {
    for (const int number : {SIGINT, SIGPIPE, SIGXFSZ}) {
        for (const Handler handler : {Handler(SIG_DFL), Handler(SIG_IGN), &HostsHandler}) {
            const Handler before = std::signal(number, handler);
            Exec("import signal, subprocess");
            EXPECT_EQ(HandlerOf(number), handler) << number << " after the start";
            UninitPython();
            EXPECT_EQ(HandlerOf(number), handler) << number << " after the end";
            std::signal(number, before);
        }
    }
}

TEST_F(UsePythonStart, LeavesAHandlerThatTheHostInstalledLater) {
    Exec("import signal\nsignal.signal(signal.SIGINT, lambda *args: None)");
    const Handler before = std::signal(SIGINT, HostsHandler);
    UninitPython();
    EXPECT_EQ(HandlerOf(SIGINT), &HostsHandler);
    std::signal(SIGINT, SIG_DFL);
    EXPECT_NE(before, Handler(SIG_DFL));
}

TEST_F(UsePythonStart, TakesAScriptsHandlerAwayAtTheEnd) {
    Exec("import os, signal\nseen = []\n"
         "signal.signal(signal.SIGINT, lambda number, frame: seen.append(number))\n"
         "os.kill(os.getpid(), signal.SIGINT)");
    EXPECT_EQ(Eval("seen == [signal.SIGINT]"), "1");
    UninitPython();
    EXPECT_EQ(HandlerOf(SIGINT), Handler(SIG_DFL));
}

TEST_F(UsePythonStart, IsInterruptedAtOnce) {
    EXPECT_EXIT(
        Exec("import os, signal, time\nos.kill(os.getpid(), signal.SIGINT)\ntime.sleep(60)"),
        testing::KilledBySignal(SIGINT), "");
}

// ---- a host that forbids Python ----------------------------------------------------------------

// Forbids Python in a process of its own and writes what comes of each use.
void UseForbiddenPython() {
    ForbidPython();
    const auto [result, errorString] = Init();
    std::fprintf(stderr, "%d %s\n", result, errorString.c_str());
    for (const LexError& error : {ExecError("x = 1"), EvalError("1"), EvalError("1")})
        std::fprintf(stderr, "%s at %ld\n", error.description.c_str(), error.offset);
    std::fprintf(stderr, "%d\n", PythonIsRunning());
    UninitPython();
    std::fprintf(stderr, "%s\n", EvalError("1").description.c_str());
    std::_Exit(0);
}

constexpr char s_forbidden[] = "Python initialisation error: forbidden by the host";

std::string ForbiddenUses(bool running) {
    const std::string error = s_forbidden;
    const std::string errorLine = error + " at 5\n";
    return "0 forbidden by the host\n" + errorLine + errorLine + errorLine
           + (running ? "1\n" : "0\n") + error + "\n";
}

TEST_F(UsePythonStart, RefusesEveryUseOnceForbidden) {
    EXPECT_EXIT(UseForbiddenPython(), testing::ExitedWithCode(0),
                testing::StrEq(ForbiddenUses(false)));
}

TEST_F(UsePythonStart, RefusesEveryFurtherUseOnceForbidden) {
    EXPECT_EQ(Eval("1"), "1");
    EXPECT_EXIT(UseForbiddenPython(), testing::ExitedWithCode(0),
                testing::StrEq(ForbiddenUses(true)));
}

}  // namespace
}  // namespace vorn
