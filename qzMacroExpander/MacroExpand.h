// Expands a text of the macro language.
//
// MacroExpand reads a text, in which names are looked up in a frame and definitions land there,
// and writes it with every macro use, directive and evaluated expression replaced by what it
// yields. Nothing is copied from the text: it must outlive the frame and, where they are read,
// the pieces.
//
// Every fault is thrown as LexScannerException, with a position in the text, or in a text that an
// earlier definition came from, or in a temporary one, which is gone by then. What was written up
// to the fault stays written.
//
// Everything runs on the caller's thread. Different threads may expand at once into different
// outputs with different chains of frames, as long as no text uses Python.
#pragma once

#include "qzMacroExpander/ExpandedOutput.h"
#include "qzMacroExpander/LSToken.h"
#include "qzMacroExpander/LSVariable.h"
#include "qzUtils/xstring.h"

namespace vorn {

// What importing means is for the host to say. Both operations may throw LexScannerException with
// errorpos, the source position of the token behind the directive's name.
class ImportHandler {
public:
    virtual ~ImportHandler() = default;

    // Records a directory to search. False, the default: the directive is not supported.
    virtual bool HandleImportPath(const xstring& importPath, const xchar* errorpos);

    // Imports a file into vf, the frame that the directive stands in. False: it can't be done.
    virtual bool HandleImport(VarFrame* vf, const xstring& importPath, const xchar* errorpos) = 0;
};

// Expands str in the frame vf.
//
// importHandler: receives @import and @importpath; null refuses them and leaves @$ as it stands.
//     With a handler, vf must belong to a file scope.
// srcIndent: columns of white space that are taken off each line of str after the first.
// dstIndent: blanks that each line begun by str gets in the output.
void MacroExpand(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, ExpandedOutput& output);

// The same into a string. When an exception passes, result and pieces are left as they were.
void MacroExpand(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& result);
void MacroExpand(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& result, OutputPieces& pieces);

// ---- Python ------------------------------------------------------------------------------------
//
// @runpython blocks and python macros run in one Python 2.7 interpreter, which the first of them
// starts; a run that uses no Python never does. The interpreter is the process's: all texts share
// its namespace __main__, names and imported modules last until UninitPython, and one thread at a
// time may use it. It leaves the dispositions of signals as the host has set them.
//
// What a script prints goes to xcout and is flushed at once. What it writes to sys.stderr is seen
// by nobody, except that the traceback of an error takes this way into the message. sys.exit() is
// an error like any other and does not end the process, but a script has other ways to do so: it
// may do whatever the process may. A list that contains itself has no end as a result; writing it
// exhausts the stack.
//
// In a library that was built without Python every use fails, with the message "Python
// initialisation error: this library was built without Python".

// Starts the interpreter, if that has not been tried yet. On failure, errorString is set and the
// result is false; every later call returns true all the same, and what is run then fails in its
// own way, until UninitPython. Python itself ends the process where it can't find its own library.
bool InitPython(xstring& errorString);

// Ends the interpreter, if it was started. The next use starts a fresh one, with an empty
// namespace. REQUIRES: no Python is running. Extension modules may be unfit for a second start.
void UninitPython();

// Forbids Python, for the process and for good: from now on every use fails, with the message
// "Python initialisation error: forbidden by the host", also where the interpreter runs already.
// For a host that expands texts which it does not trust. Call it before the first expansion.
void ForbidPython();

// Compiles and runs statements in __main__. A zero byte ends the code. path is the file name that
// tracebacks show. Faults are thrown as LexScannerException at errorPos, which may be null:
// "Python initialisation error: ", "Python compilation error: " or "RunPython error: " and the
// traceback. What ran before the fault stays done.
void RunPython(const xstring& path, const xstring& pythonCode, ConstStringZ errorPos);

// Evaluates one expression in __main__ and sets result to the text of its value: of an int, a bool
// (as 1 or 0), a float (six significant digits), a string (up to its first zero byte) or a list of
// these, as in [1,abc]. A zero byte ends the expression. Faults are thrown as LexScannerException
// at errorPos, which may be null, and leave result as it was: "Python initialisation error: ",
// "Eval python error: " and the traceback, or "Can't convert python result of type " and the type.
void EvalPythonExpression(const xstring& pythonCode, xstring& result, ConstStringZ errorPos);

}  // namespace vorn
