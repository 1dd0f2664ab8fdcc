// The embedded Python 2.7: one interpreter for the process, started by the first use.
//
// All state is process-global and unguarded: one thread at a time may use Python. Everything that
// runs shares the namespace of __main__, which lasts until UninitPython. What a script prints goes
// to xcout; what it writes to sys.stderr is kept for the text of the next error, which starts by
// throwing away what is there.
//
// Python's own header is included by UsePython.cpp alone. A build without Python has NoPython.cpp
// in its place, which defines the public functions and InitPythonFromParser, and nothing else.
#pragma once

#include "qzMacroExpander/MacroExpand.h"
#include "qzUtils/xstring.h"

struct _object;
typedef struct _object PyObject;

namespace vorn {

// ---- the interpreter ---------------------------------------------------------------------------
//
// InitPython, UninitPython and ForbidPython are public: see MacroExpand.h.

// InitPython for a place in a macro text: throws "Python initialisation error: " and the details.
void InitPythonFromParser(ConstStringZ errorPos);

// Whether a Python error is pending. If so, it is cleared and errorString becomes its traceback;
// otherwise errorString is emptied.
bool GetPythonError(xstring& errorString);

// The built-in module stream_hooks: what the bootstrap's sys.stdout and sys.stderr write to.
void PyInit_stream_hooks();
PyObject* WriteToStdOut(PyObject* self, PyObject* args);
PyObject* WriteToStdErr(PyObject* self, PyObject* args);

// ---- running code ------------------------------------------------------------------------------
//
// RunPython and EvalPythonExpression are public: see MacroExpand.h.

// The value of an expression as a new reference; null, with errorString set to the traceback,
// where it fails. REQUIRES: InitPython has been called.
PyObject* ExecutePythonExpression(const xstring& expression, xstring& errorString);

// Writes the text of a Python value; throws "Can't convert python result of type " where there is
// none. A list that contains itself has no end. REQUIRES: p is not null.
void WritePythonObject(xostream& os, PyObject* p, ConstStringZ errorPos);

// One counted reference to a Python object, or null.
class PyObjectRef {
public:
    // Takes over a new reference: does not count it again.
    explicit PyObjectRef(PyObject* newReference = nullptr) : m_pyObj(newReference) {}
    // A copy takes a reference of its own.
    PyObjectRef(const PyObjectRef& other);
    ~PyObjectRef();
    PyObjectRef& operator=(const PyObjectRef& other);

    // Drops the reference and takes over a new one.
    void Set(PyObject* newReference);

    PyObject* Get() const { return m_pyObj; }
    explicit operator bool() const { return m_pyObj != nullptr; }
    PyObject* operator->() const { return m_pyObj; }
    PyObject& operator*() const { return *m_pyObj; }

    // By the identity of the objects, as Python's "is".
    bool operator==(const PyObjectRef& other) const { return m_pyObj == other.m_pyObj; }
    bool operator!=(const PyObjectRef& other) const { return m_pyObj != other.m_pyObj; }
    bool operator<(const PyObjectRef& other) const;

    PyObject* m_pyObj;
};

}  // namespace vorn
