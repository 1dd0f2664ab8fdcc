#include "UsePython.h"

#include "ScannerErrors.h"

namespace vorn {

void RunPython(const xstring&, const xstring&, ConstStringZ errorPos) {
    ThrowScannerError(errorPos, "Python is not available in this version");
}

void EvalPythonExpression(const xstring&, xstring&, ConstStringZ errorPos) {
    ThrowScannerError(errorPos, "Python macros are not available in this version");
}

}  // namespace vorn
