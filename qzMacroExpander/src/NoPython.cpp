// What stands in for UsePython.cpp in a library that was built without Python.

#include "UsePython.h"

#include "ScannerErrors.h"

namespace vorn {

namespace {

bool s_pythonForbidden = false;

}  // namespace

bool InitPython(xstring& errorString) {
    errorString =
        s_pythonForbidden ? "forbidden by the host" : "this library was built without Python";
    return false;
}

void InitPythonFromParser(ConstStringZ errorPos) {
    xstring errorString;
    InitPython(errorString);
    ThrowScannerError(errorPos, "Python initialisation error: ", errorString);
}

void UninitPython() {}

void ForbidPython() {
    s_pythonForbidden = true;
}

void RunPython(const xstring&, const xstring&, ConstStringZ errorPos) {
    InitPythonFromParser(errorPos);
}

void EvalPythonExpression(const xstring&, xstring&, ConstStringZ errorPos) {
    InitPythonFromParser(errorPos);
}

}  // namespace vorn
