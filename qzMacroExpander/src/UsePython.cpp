#include "UsePython.h"

#include "ScannerErrors.h"

namespace vorn {

void EvalPythonExpression(const xstring&, xstring&, ConstStringZ errorPos) {
    ThrowScannerError(errorPos, "Python macros are not available in this version");
}

}  // namespace vorn
