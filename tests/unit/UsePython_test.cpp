#include "qzMacroExpander/src/UsePython.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

#include "qzUtils/StringStream.h"
#include "tests/support/Python.h"

namespace vorn {
namespace {

using namespace vorn_test;

class UsePython : public PythonTest {};

// ---- streams -----------------------------------------------------------------------------------

TEST_F(UsePython, PrintsToStandardOutput) {
    EXPECT_EQ(StdoutOf([] { Exec("print 'a', 1\nprint 'b',\nprint 'c'\nsys.stdout.write('d')"); }),
              "a 1\nb c\nd");
}

TEST_F(UsePython, FlushesWhatIsPrintedAtOnce) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        Exec("import os\nsys.stdout.write('no line end')\nos._exit(0)");
        _exit(1);
    }
    close(ends[1]);
    char text[64];
    const auto size = read(ends[0], text, sizeof text);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(std::string(text, static_cast<std::size_t>(size)), "no line end");
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST_F(UsePython, SwallowsWhatAScriptWritesToStandardError) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(StdoutOf([] { Exec("sys.stderr.write('unseen')\nprint >>sys.stderr, 'as well'"); }),
              "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(EvalError("nothing"), At("Eval python error: Traceback (most recent call last):\n"
                                       "  File \"<string>\", line 1, in <module>\n"
                                       "NameError: name 'nothing' is not defined\n"));
}

TEST_F(UsePython, HasPrintedBeforeAFailureAndKeepsTheTracebackForTheError) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(StdoutOf([] {
                  EXPECT_EQ(ExecError("print 'before'\nsys.stderr.write('unseen')\n1/0\n"),
                            At("RunPython error: Traceback (most recent call last):\n"
                               "  File \"\", line 3, in <module>\n    \n"
                               "ZeroDivisionError: integer division or modulo by zero\n"));
              }),
              "before\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(UsePython, RefusesWhatIsNoTextWithoutZeroByte) {
    const struct {
        std::string call, error;
    } s_rows[] = {
        {"stream_hooks.WriteToStdOut(1)",        "TypeError: argument 1 must be string, not int\n" },
        {"stream_hooks.WriteToStdErr(None)",     "TypeError: argument 1 must be string, not None\n"},
        {"stream_hooks.WriteToStdOut('a\\0b')",
         "TypeError: argument 1 must be string without null bytes, not str\n"                      },
        {"stream_hooks.WriteToStdErr('a\\0b')",
         "TypeError: argument 1 must be string without null bytes, not str\n"                      },
        {"stream_hooks.WriteToStdOut()",
         "TypeError: function takes exactly 1 argument (0 given)\n"                                },
        {"stream_hooks.WriteToStdErr('a', 'b')",
         "TypeError: function takes exactly 1 argument (2 given)\n"                                },
    };
    for (const auto& row : s_rows) {
        EXPECT_EQ(EvalError(row.call), At("Eval python error: Traceback (most recent call last):\n"
                                          "  File \"<string>\", line 1, in <module>\n"
                                          + row.error));
    }
}

TEST_F(UsePython, RaisesTheTypeErrorOfAWriteInsideTheScript) {
    EXPECT_EQ(ExecError("sys.stdout.write(1)"),
              At("RunPython error: Traceback (most recent call last):\n"
                 "  File \"\", line 1, in <module>\n    \n"
                 "  File \"<string>\", line 5, in write\n"
                 "TypeError: argument 1 must be string, not int\n"));
    Exec("try:\n  sys.stdout.write(1)\nexcept TypeError, e:\n  caught = str(e)");
    EXPECT_EQ(Eval("caught"), "argument 1 must be string, not int");
}

TEST_F(UsePython, WritesUnicodeTextOfAsciiOnly) {
    EXPECT_EQ(StdoutOf([] { Exec("sys.stdout.write(u'plain')"); }), "plain");
    EXPECT_EQ(EvalError("stream_hooks.WriteToStdOut(u'\\xe9')"),
              At("Eval python error: Traceback (most recent call last):\n"
                 "  File \"<string>\", line 1, in <module>\n"
                 "UnicodeEncodeError: 'ascii' codec can't encode character u'\\xe9' in position 0: "
                 "ordinal not in range(128)\n"));
}

// ---- errors ------------------------------------------------------------------------------------

TEST_F(UsePython, FindsNoErrorWhereThereIsNoInterpreter) {
    xstring errorString("as before");
    EXPECT_FALSE(GetPythonError(errorString));
    EXPECT_EQ(errorString, xstring());
}

TEST_F(UsePython, TakesAPendingErrorOnce) {
    EXPECT_EQ(Init(), s_initSucceeds);
    xstring errorString("as before");
    EXPECT_FALSE(GetPythonError(errorString));
    EXPECT_EQ(errorString, xstring());
    OfPython<void(PyObject*, const char*)>("PyErr_SetString")(
        *OfPython<PyObject*>("PyExc_ValueError"), "pending");
    EXPECT_TRUE(GetPythonError(errorString));
    EXPECT_EQ(errorString, xstring("ValueError: pending\n"));
    EXPECT_FALSE(GetPythonError(errorString));
    EXPECT_EQ(errorString, xstring());
}

TEST_F(UsePython, LeavesNoTraceOfAnErrorInTheNextOne) {
    EXPECT_EQ(ExecError("raise KeyError('first')"),
              At("RunPython error: Traceback (most recent call last):\n"
                 "  File \"\", line 1, in <module>\n    \nKeyError: 'first'\n"));
    EXPECT_EQ(Eval("1"), "1");
    EXPECT_EQ(EvalError("second"), At("Eval python error: Traceback (most recent call last):\n"
                                      "  File \"<string>\", line 1, in <module>\n"
                                      "NameError: name 'second' is not defined\n"));
}

TEST_F(UsePython, ThrowsWithoutPathAndLineNumber) {
    try {
        Exec("raise KeyError('x')", "setup.py");
        FAIL() << "no error";
    } catch (const LexScannerException& e) {
        EXPECT_EQ(e.m_pos, s_errorPos);
        EXPECT_EQ(e.m_lineNumber, -1);
        EXPECT_EQ(e.m_path, xstring());
    }
}

// sys.exit() in all its forms is an error like any other, for a block and for an expression.
// The first form would end the test as failed, where others would end it as passed.
TEST_F(UsePython, TakesSystemExitForAnError) {
    const struct {
        std::string expression, shown;
    } s_rows[] = {
        {"sys.exit(3)",      "SystemExit: 3\n"     },
        {"sys.exit()",       "SystemExit\n"        },
        {"sys.exit(None)",   "SystemExit\n"        },
        {"sys.exit(0)",      "SystemExit: 0\n"     },
        {"sys.exit('bye')",  "SystemExit: bye\n"   },
        {"sys.exit((1, 2))", "SystemExit: (1, 2)\n"},
    };
    for (const auto& row : s_rows) {
        EXPECT_EQ(ExecError("x = 1\n" + row.expression),
                  At("RunPython error: Traceback (most recent call last):\n"
                     "  File \"\", line 2, in <module>\n    \n"
                     + row.shown));
        EXPECT_EQ(EvalError(row.expression),
                  At("Eval python error: Traceback (most recent call last):\n"
                     "  File \"<string>\", line 1, in <module>\n"
                     + row.shown));
    }
    EXPECT_EQ(ExecError("raise SystemExit"),
              At("RunPython error: Traceback (most recent call last):\n"
                 "  File \"\", line 1, in <module>\n    \nSystemExit\n"));
}

TEST_F(UsePython, TakesSystemExitOfAnImportedModuleForAnError) {
    const ModuleDirectory directory;
    directory.Write("leaving.py", "import sys\n\nsys.exit(4)\n");
    Exec(ImportFrom(directory));
    EXPECT_EQ(ExecError("import leaving"),
              At("RunPython error: Traceback (most recent call last):\n"
                 "  File \"\", line 1, in <module>\n    \n"
                 "  File \""
                 + directory.Path("leaving.py")
                 + "\", line 3, in <module>\n    sys.exit(4)\n"
                   "SystemExit: 4\n"));
}

TEST_F(UsePython, OutlivesSystemExitWhileAnErrorIsWritten) {
    Exec("def hook(*args):\n  sys.exit(5)\nsys.excepthook = hook");
    const LexError error = ExecError("1/0");
    EXPECT_THAT(error.description, testing::StartsWith("RunPython error: Error in sys.excepthook:\n"
                                                       "Traceback (most recent call last):\n"));
    EXPECT_THAT(error.description, testing::HasSubstr("SystemExit: 5\n"));
    EXPECT_THAT(error.description,
                testing::EndsWith("Original exception was:\nTraceback (most recent call last):\n"
                                  "  File \"\", line 1, in <module>\n    \n"
                                  "ZeroDivisionError: integer division or modulo by zero\n"));
}

TEST_F(UsePython, OutlivesSystemExitAtTheEndOfTheInterpreter) {
    Exec("import atexit\natexit.register(sys.exit, 6)");
    UninitPython();
    EXPECT_FALSE(PythonIsRunning());
    EXPECT_EQ(Eval("1"), "1");
}

TEST_F(UsePython, HasNoTracebackWhereAScriptTookTheStreamForIt) {
    Exec("class Lost:\n  def write(self, text):\n    pass\nsys.stderr = Lost()");
    EXPECT_EQ(ExecError("1/0"), At("RunPython error: "));
}

// ---- statements --------------------------------------------------------------------------------

TEST_F(UsePython, RunsStatementsInOneNamespace) {
    Exec("def twice(x):\n  return 2 * x\ny = twice(4)\n");
    Exec("y += 1");
    EXPECT_EQ(Eval("twice(y)"), "18");
    EXPECT_EQ(Eval("globals() is locals()"), "1");
}

TEST_F(UsePython, RunsNothingAtAll) {
    Exec("");
    Exec(" \t\n\n");
    Exec("# a comment");
    EXPECT_TRUE(PythonIsRunning());
}

TEST_F(UsePython, ShowsThePathInTracebacks) {
    const std::string path = "no such directory/setup.py";
    EXPECT_EQ(ExecError("\n1/0", path), At("RunPython error: Traceback (most recent call last):\n"
                                           "  File \"no such directory/setup.py\", line 2,"
                                           " in <module>\n"
                                           "ZeroDivisionError: integer division or modulo by"
                                           " zero\n"));
    EXPECT_EQ(ExecError("x = 1\ny = = 2", path),
              At("Python compilation error:   File \"no such directory/setup.py\", line 2\n"
                 "    y = = 2\n        ^\n"
                 "SyntaxError: invalid syntax\n"));
}

TEST_F(UsePython, RefusesABlockThatDoesNotCompile) {
    const struct {
        std::string code, error;
    } s_rows[] = {
        {"x = = 1",      "  File \"\", line 1\n    x = = 1\n        ^\nSyntaxError: invalid syntax\n"  },
        {"  x = 1",      "  File \"\", line 1\n    x = 1\n    ^\nIndentationError: unexpected indent\n"},
        {"if 1:\nx = 1",
         "  File \"\", line 2\n    x = 1\n    ^\nIndentationError: expected an indented block\n"       },
        {"'open",        "  File \"\", line 1\n    'open\n        ^\n"
                  "SyntaxError: EOL while scanning string literal\n"                  },
        {"return 1",     "  File \"\", line 1\nSyntaxError: 'return' outside function\n"               },
    };
    for (const auto& row : s_rows)
        EXPECT_EQ(ExecError(row.code), At("Python compilation error: " + row.error)) << row.code;
}

TEST_F(UsePython, RunsNothingOfABlockThatDoesNotCompile) {
    EXPECT_EQ(ExecError("x = 1\ny = = 2").offset, s_offset);
    EXPECT_EQ(Eval("'x' in globals()"), "0");
}

TEST_F(UsePython, KeepsWhatRanBeforeAFailure) {
    EXPECT_EQ(ExecError("x = 1\ny = 1/0\nz = 1").offset, s_offset);
    EXPECT_EQ(Eval("[x, 'y' in globals(), 'z' in globals()]"), "[1,0,0]");
}

TEST_F(UsePython, EndsTheCodeAtAZeroByte) {
    using namespace std::string_literals;
    Exec("x = 1\n\0x = 2\n = = ="s);
    EXPECT_EQ(Eval("x"), "1");
    EXPECT_EQ(Eval("x + 1\0 + 1 ="s), "2");
    EXPECT_EQ(ExecError("1/0", "a\0b"s), At("RunPython error: Traceback (most recent call last):\n"
                                            "  File \"a\", line 1, in <module>\n"
                                            "ZeroDivisionError: integer division or modulo by"
                                            " zero\n"));
}

TEST_F(UsePython, TakesForeignLineEnds) {
    Exec("if 1:\r\n  x = 1\r\n  y = 2\r\n");
    EXPECT_EQ(Eval("[x, y]"), "[1,2]");
}

// ---- values ------------------------------------------------------------------------------------

TEST_F(UsePython, WritesTheTextOfAValue) {
    Exec("class Int(int):\n  pass\n"
         "class Float(float):\n  pass\n"
         "class Str(str):\n  def __str__(self):\n    return 'not asked'\n"
         "class List(list):\n  pass\n");
    const std::pair<std::string, std::string> s_rows[] = {
        {"1 + 1",                                   "2"                         },
        {"-5",                                      "-5"                        },
        {"0",                                       "0"                         },
        {"sys.maxint",                              "9223372036854775807"       },
        {"-sys.maxint - 1",                         "-9223372036854775808"      },
        {"True",                                    "1"                         },
        {"False",                                   "0"                         },
        {"1 < 0",                                   "0"                         },
        {"Int(7)",                                  "7"                         },
        {"1.5",                                     "1.5"                       },
        {"2.0",                                     "2"                         },
        {"0.1 + 0.2",                               "0.3"                       },
        {"1234567.0",                               "1.23457e+06"               },
        {"1e-7",                                    "1e-07"                     },
        {"-0.0",                                    "-0"                        },
        {"float('inf')",                            "inf"                       },
        {"-float('inf')",                           "-inf"                      },
        {"float('nan')",                            "nan"                       },
        {"Float(2.5)",                              "2.5"                       },
        {"''",                                      ""                          },
        {"'plain'",                                 "plain"                     },
        {"'it\\'s \"quoted\"\\n'",                  "it's \"quoted\"\n"         },
        {"'\\xff\\x80'",                            "\xff\x80"                  },
        {"'up to\\0the zero'",                      "up to"                     },
        {"Str('text')",                             "text"                      },
        {"[]",                                      "[]"                        },
        {"[1]",                                     "[1]"                       },
        {"[1, 'a']",                                "[1,a]"                     },
        {"[1, 1.5, True, 'a b', [], [2, ['x,y']]]", "[1,1.5,1,a b,[],[2,[x,y]]]"},
        {"['', '']",                                "[,]"                       },
        {"List([1, 2])",                            "[1,2]"                     },
        {"range(5)",                                "[0,1,2,3,4]"               },
        {"(1 +\n 2)",                               "3"                         },
        {"1 +  2 # a comment",                      "3"                         },
    };
    for (const auto& [expression, text] : s_rows)
        EXPECT_EQ(Eval(expression), text) << expression;
}

TEST_F(UsePython, RefusesAValueWithoutText) {
    Exec("class Old:\n  pass\nclass New(object):\n  pass\n");
    const std::pair<std::string, std::string> s_rows[] = {
        {"None",             "NoneType"                  },
        {"()",               "tuple"                     },
        {"(1, 'a')",         "tuple"                     },
        {"{}",               "dict"                      },
        {"set()",            "set"                       },
        {"u'text'",          "unicode"                   },
        {"1L",               "long"                      },
        {"sys.maxint + 1",   "long"                      },
        {"1j",               "complex"                   },
        {"bytearray('a')",   "bytearray"                 },
        {"object()",         "object"                    },
        {"Old",              "classobj"                  },
        {"Old()",            "instance"                  },
        {"New",              "type"                      },
        {"New()",            "New"                       },
        {"len",              "builtin_function_or_method"},
        {"lambda: 1",        "function"                  },
        {"sys",              "module"                    },
        {"xrange(3)",        "xrange"                    },
        {"(x for x in [1])", "generator"                 },
        {"[1, None]",        "NoneType"                  },
        {"[1, [2, [(3,)]]]", "tuple"                     },
    };
    for (const auto& [expression, type] : s_rows)
        EXPECT_EQ(EvalError(expression), At("Can't convert python result of type " + type));
}

TEST_F(UsePython, RefusesWhatIsNoExpression) {
    const std::pair<std::string, std::string> s_rows[] = {
        {"",        "  File \"<string>\", line 0\n    \n    ^\n"
             "SyntaxError: unexpected EOF while parsing\n"},
        {"x = 1",   "  File \"<string>\", line 1\n    x = 1\n      ^\n"
                  "SyntaxError: invalid syntax\n"    },
        {"print 1", "  File \"<string>\", line 1\n    print 1\n        ^\n"
                    "SyntaxError: invalid syntax\n"},
        {"1\n2",    "  File \"<string>\", line 2\n    2\n    ^\n"
                 "SyntaxError: invalid syntax\n"      },
        {" 1",      "  File \"<string>\", line 1\n    1\n    ^\n"
               "IndentationError: unexpected indent\n"  },
    };
    for (const auto& [expression, error] : s_rows)
        EXPECT_EQ(EvalError(expression), At("Eval python error: " + error)) << expression;
}

TEST_F(UsePython, LeavesTheResultAloneOnFailure) {
    xstring result("as before");
    for (const char* expression : {"1/0", "None", "[1, None]"}) {
        EXPECT_THROW(EvalPythonExpression(expression, result, s_errorPos), LexScannerException);
        EXPECT_EQ(result, xstring("as before"));
    }
    EvalPythonExpression("'new'", result, s_errorPos);
    EXPECT_EQ(result, xstring("new"));
}

TEST_F(UsePython, WritesBehindWhatStandsInTheStream) {
    EXPECT_EQ(Init(), s_initSucceeds);
    xstring errorString("as before");
    const PyObjectRef value(ExecutePythonExpression("[1, 2]", errorString));
    ASSERT_TRUE(value);
    EXPECT_EQ(errorString, xstring("as before"));
    StringStream os(4096);
    os << "values: ";
    WritePythonObject(os, value.Get(), s_errorPos);
    EXPECT_EQ(os.GetString(), xstring("values: [1,2]"));
}

TEST_F(UsePython, GivesNoValueButTheTracebackOfAnExpressionThatFails) {
    EXPECT_EQ(Init(), s_initSucceeds);
    xstring errorString("as before");
    EXPECT_EQ(ExecutePythonExpression("1/0", errorString), nullptr);
    EXPECT_EQ(errorString, xstring("Traceback (most recent call last):\n"
                                   "  File \"<string>\", line 1, in <module>\n"
                                   "ZeroDivisionError: integer division or modulo by zero\n"));
    EXPECT_FALSE(GetPythonError(errorString));
}

// ---- references --------------------------------------------------------------------------------

TEST_F(UsePython, ReleasesTheResultOfAnExpression) {
    Exec("text = 'a text of ' + str(1)\nnothing = object()\nlist = [nothing]\n"
         "def counts():\n  return [sys.getrefcount(x) for x in [text, nothing, list]]\n");
    const std::string before = Eval("counts()");
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(Eval("text"), "a text of 1");
        EXPECT_EQ(EvalError("nothing"), At("Can't convert python result of type object"));
        EXPECT_EQ(EvalError("list"), At("Can't convert python result of type object"));
    }
    EXPECT_EQ(Eval("counts()"), before);
}

TEST_F(UsePython, ReleasesTheCodeOfABlock) {
    Exec("import weakref\ncode = weakref.ref(sys._getframe().f_code)");
    EXPECT_EQ(Eval("code() is None"), "1");
}

TEST_F(UsePython, CountsReferences) {
    Exec("x = object()\ny = object()\ndef count(x):\n  return sys.getrefcount(x)\n");
    xstring errorString;
    const std::string none = Eval("[count(x), count(y)]");
    const std::string oneOfX = Eval("[count(x) + 1, count(y)]");
    const std::string twoOfX = Eval("[count(x) + 2, count(y)]");
    const std::string oneOfY = Eval("[count(x), count(y) + 1]");
    const std::string counts = "[count(x), count(y)]";
    {
        PyObjectRef x(ExecutePythonExpression("x", errorString));
        EXPECT_EQ(Eval(counts), oneOfX);
        PyObjectRef copy(x);
        EXPECT_EQ(Eval(counts), twoOfX);
        EXPECT_TRUE(copy == x);
        x = PyObjectRef();
        EXPECT_EQ(Eval(counts), oneOfX);
        EXPECT_FALSE(x);
        x = copy;
        EXPECT_EQ(Eval(counts), twoOfX);
        x = *&x;
        EXPECT_EQ(Eval(counts), twoOfX);
        x.Set(nullptr);
        EXPECT_EQ(Eval(counts), oneOfX);
        copy.Set(ExecutePythonExpression("y", errorString));
        EXPECT_EQ(Eval(counts), oneOfY);
        EXPECT_TRUE(copy != x);
    }
    EXPECT_EQ(Eval(counts), none);
}

TEST_F(UsePython, ComparesReferencesByIdentity) {
    Exec("x = [1]\ny = [1]");
    xstring errorString;
    const PyObjectRef x(ExecutePythonExpression("x", errorString));
    const PyObjectRef same(ExecutePythonExpression("x", errorString));
    const PyObjectRef y(ExecutePythonExpression("y", errorString));
    EXPECT_TRUE(x == same && !(x != same) && !(x < same) && !(same < x));
    EXPECT_TRUE(x != y && !(x == y) && (x < y) != (y < x));
    EXPECT_EQ(&*x, x.Get());
    EXPECT_EQ(x.operator->(), x.Get());
}

}  // namespace
}  // namespace vorn
