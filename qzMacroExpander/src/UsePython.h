// Running Python for the macro language.
#pragma once

#include "qzUtils/SubString.h"

namespace vorn {

// Compiles and runs statements. path is the file name that Python shows in tracebacks.
void RunPython(const xstring& path, const xstring& pythonCode, ConstStringZ errorPos);

// Evaluates an expression and sets result to the text of its value. Errors are thrown as
// LexScannerException at errorPos.
void EvalPythonExpression(const xstring& pythonCode, xstring& result, ConstStringZ errorPos);

}  // namespace vorn
