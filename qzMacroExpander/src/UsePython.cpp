#include <Python.h>

#include "UsePython.h"

#include <dlfcn.h>
#include <signal.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "ScannerErrors.h"

namespace vorn {

static_assert(PYTHON_API_VERSION == 1013);
static_assert(Py_file_input == 257 && Py_eval_input == 258);

namespace {

StringStream s_errorString(4096);  // what Python writes to sys.stderr
PyObject* s_moduleDict = nullptr;  // the dictionary of __main__, borrowed
bool s_haveInitialisedPython = false;
bool s_pythonForbidden = false;

PyMethodDef stream_hooks_Methods[] = {
    {"WriteToStdOut", WriteToStdOut, METH_VARARGS, "Write to stdout"},
    {"WriteToStdErr", WriteToStdErr, METH_VARARGS, "Write to stderr"},
    {nullptr,         nullptr,       0,            nullptr          },
};

constexpr char bootstrapCode[] = "import sys\n"
                                 "import stream_hooks\n"
                                 "class myStdOut:\n"
                                 "  def write(self,string):\n"
                                 "    stream_hooks.WriteToStdOut(string);\n"
                                 "class myStdErr:\n"
                                 "  def write(self,string):\n"
                                 "    stream_hooks.WriteToStdErr(string);\n"
                                 "sys.stdout = myStdOut()\n"
                                 "sys.stderr = myStdErr()\n";

// The one string argument of a hook; null, with Python's error set, if it is something else.
const char* ParseTextArgument(PyObject* args) {
    const char* text = nullptr;
    return PyArg_ParseTuple(args, "s", &text) != 0 ? text : nullptr;
}

PyObject* NewNone() {
    Py_INCREF(Py_None);
    return Py_None;
}

}  // namespace

PyObject* WriteToStdOut(PyObject*, PyObject* args) {
    const char* text = ParseTextArgument(args);
    if (text == nullptr)
        return nullptr;
    xcout << text;
    xcout.flush();
    return NewNone();
}

// No exception may pass through Python's own frames.
PyObject* WriteToStdErr(PyObject*, PyObject* args) {
    const char* text = ParseTextArgument(args);
    if (text == nullptr)
        return nullptr;
    try {
        s_errorString << text;
    } catch (const std::bad_alloc&) {
        return PyErr_NoMemory();
    }
    return NewNone();
}

void PyInit_stream_hooks() {
    Py_InitModule4("stream_hooks", stream_hooks_Methods, nullptr, nullptr, PYTHON_API_VERSION);
}

bool GetPythonError(xstring& errorString) {
    // Without an interpreter there is no error indicator to look at.
    if (Py_IsInitialized() == 0 || PyErr_Occurred() == nullptr) {
        errorString.clear();
        return false;
    }
    s_errorString.clear();
    PyErr_Print();
    s_errorString.GetString(errorString, true);
    return true;
}

// ---- start and end -----------------------------------------------------------------------------

namespace {

// Puts back what a signal did, for the duration of a call that changes it.
class SignalKeeper {
public:
    explicit SignalKeeper(int number) : m_number(number) { sigaction(number, nullptr, &m_action); }
    ~SignalKeeper() {
        if (m_number != 0)
            sigaction(m_number, &m_action, nullptr);
    }
    SignalKeeper(const SignalKeeper&) = delete;
    SignalKeeper& operator=(const SignalKeeper&) = delete;

    void Forget() { m_number = 0; }

    // Whether it is the handler by which Python serves those that a script installs.
    bool IsPythons() const {
        return IsHandler()
               && ImageOf(reinterpret_cast<void*>(m_action.sa_handler))
                      == ImageOf(reinterpret_cast<void*>(&Py_Finalize));
    }

private:
    bool IsHandler() const {
        return m_action.sa_handler != SIG_DFL && m_action.sa_handler != SIG_IGN;
    }

    // Where the library or program that contains an address was loaded.
    static void* ImageOf(void* address) {
        Dl_info info;
        return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
    }

    int m_number;
    struct sigaction m_action;
};

// Python looks for its modules from the folder of its program on. Without a program it would begin
// in the working directory and could take up what lies there. The library that holds it lies where
// the program would, as far as that search goes. A host may have said better.
void NameProgram() {
    static std::string name;  // Python keeps the address
    Dl_info info;
    if (std::strchr(Py_GetProgramName(), '/') != nullptr
        || dladdr(reinterpret_cast<void*>(&Py_Initialize), &info) == 0)
        return;
    std::error_code error;
    name = std::filesystem::canonical(info.dli_fname, error).string();
    if (!error)
        Py_SetProgramName(name.data());
}

// What signals do stays as the host has it: an interrupt ends the process at once, if it did so
// before, instead of waiting for a script to notice it.
void InitialiseInterpreter() {
    const SignalKeeper interrupt(SIGINT);
    const SignalKeeper brokenPipe(SIGPIPE);
    const SignalKeeper fileTooLarge(SIGXFSZ);
    NameProgram();
    Py_Initialize();
    // PyErr_Print would end the process on SystemExit. With this flag it writes the traceback, as
    // for any other exception; and so it does for what the script leaves for the end.
    Py_InspectFlag = 1;
}

// Python resets SIGINT, whoever has set it. That is right only for a script's handler.
void FinaliseInterpreter() {
    SignalKeeper interrupt(SIGINT);
    if (interrupt.IsPythons())
        interrupt.Forget();
    Py_Finalize();
    Py_InspectFlag = 0;  // a script could see it set while the next interpreter starts
}

// Starts Python; returns what failed, or null.
ConstStringZ StartPython() {
    if (PyImport_AppendInittab("stream_hooks", PyInit_stream_hooks) == -1)
        return "PyImport_AppendInittab failed";
    InitialiseInterpreter();
    if (PyRun_SimpleStringFlags(bootstrapCode, nullptr) != 0)
        return "PyRun_SimpleString failed on the vorn bootstrap code";
    PyObject* mainModule = PyImport_AddModule("__main__");
    if (mainModule == nullptr)
        return "PyImport_AddModule failed for the __main__ module";
    s_moduleDict = PyModule_GetDict(mainModule);
    if (PyDict_GetItemString(s_moduleDict, "__builtins__") == nullptr)
        return "__main__ module is missing __builtins__";
    return nullptr;
}

}  // namespace

bool InitPython(xstring& errorString) {
    if (s_pythonForbidden) {
        errorString = "forbidden by the host";
        return false;
    }
    if (s_haveInitialisedPython)
        return true;
    // Kept: an attempt that fails is not repeated, and later calls return true. A host that can go
    // on without Python hears of the failure once; what runs then fails by itself.
    s_haveInitialisedPython = true;
    const ConstStringZ failure = StartPython();
    if (failure == nullptr)
        return true;
    errorString = failure;
    return false;
}

void InitPythonFromParser(ConstStringZ errorPos) {
    xstring errorString1;
    if (InitPython(errorString1))
        return;
    xstring errorString2;
    if (GetPythonError(errorString2)) {
        PyErr_Clear();
        ThrowScannerError(errorPos, "Python initialisation error: ", errorString1, " : ",
                          errorString2);
    }
    ThrowScannerError(errorPos, "Python initialisation error: ", errorString1);
}

void UninitPython() {
    s_moduleDict = nullptr;
    if (std::exchange(s_haveInitialisedPython, false))
        FinaliseInterpreter();
}

void ForbidPython() {
    s_pythonForbidden = true;
}

// ---- references --------------------------------------------------------------------------------

PyObjectRef::PyObjectRef(const PyObjectRef& other) : m_pyObj(other.m_pyObj) {
    Py_XINCREF(m_pyObj);
}

PyObjectRef::~PyObjectRef() {
    Py_XDECREF(m_pyObj);
}

PyObjectRef& PyObjectRef::operator=(const PyObjectRef& other) {
    Py_XINCREF(other.m_pyObj);
    Set(other.m_pyObj);
    return *this;
}

// The old object goes last: its end may run code that comes back here.
void PyObjectRef::Set(PyObject* newReference) {
    PyObject* old = std::exchange(m_pyObj, newReference);
    Py_XDECREF(old);
}

bool PyObjectRef::operator<(const PyObjectRef& other) const {
    return std::less<>()(m_pyObj, other.m_pyObj);
}

// ---- running code ------------------------------------------------------------------------------

namespace {

// The traceback of the pending error, which is cleared.
xstring TakePythonError() {
    xstring errorString;
    GetPythonError(errorString);
    PyErr_Clear();
    return errorString;
}

void WritePythonList(xostream& os, PyObject* list, ConstStringZ errorPos) {
    os.put('[');
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(list); ++i) {
        if (i > 0)
            os.put(',');
        WritePythonObject(os, PyList_GET_ITEM(list, i), errorPos);
    }
    os.put(']');
}

}  // namespace

void RunPython(const xstring& path, const xstring& pythonCode, ConstStringZ errorPos) {
    InitPythonFromParser(errorPos);
    const PyObjectRef code(
        Py_CompileStringFlags(pythonCode.c_str(), path.c_str(), Py_file_input, nullptr));
    if (!code)
        ThrowScannerError(errorPos, "Python compilation error: ", TakePythonError());
    const PyObjectRef result(
        PyEval_EvalCode(reinterpret_cast<PyCodeObject*>(code.Get()), s_moduleDict, s_moduleDict));
    if (!result)
        ThrowScannerError(errorPos, "RunPython error: ", TakePythonError());
}

PyObject* ExecutePythonExpression(const xstring& expression, xstring& errorString) {
    PyObject* result =
        PyRun_StringFlags(expression.c_str(), Py_eval_input, s_moduleDict, s_moduleDict, nullptr);
    if (result == nullptr)
        errorString = TakePythonError();
    return result;
}

void EvalPythonExpression(const xstring& pythonCode, xstring& result, ConstStringZ errorPos) {
    InitPythonFromParser(errorPos);
    xstring errorString;
    const PyObjectRef p(ExecutePythonExpression(pythonCode, errorString));
    if (!p)
        ThrowScannerError(errorPos, "Eval python error: ", errorString);
    StringStream os(4096);
    WritePythonObject(os, p.Get(), errorPos);
    os.GetString(result, true);
}

void WritePythonObject(xostream& os, PyObject* p, ConstStringZ errorPos) {
    if (PyInt_Check(p))  // a bool is one too
        os.put(PyInt_AsLong(p));
    else if (PyFloat_Check(p))
        os.put(PyFloat_AsDouble(p));
    else if (PyString_Check(p))
        os << PyString_AsString(p);  // ends at the first zero byte
    else if (PyList_Check(p))
        WritePythonList(os, p, errorPos);
    else
        ThrowScannerError(errorPos, "Can't convert python result of type ", Py_TYPE(p)->tp_name);
}

}  // namespace vorn
