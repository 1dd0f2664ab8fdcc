#include "MacroExpander.h"

#include "ScannerErrors.h"

namespace vorn {

void ReadVariableValueByParsingExpression(VarFrame* vf, SubString s, ELSVariable varType,
                                          xstring& valueStr) {
    ReadVariableValueByParsingExpression(vf, s, varType, nullptr, valueStr);
}

void ReadVariableValueByParsingExpression(VarFrame*, SubString s, ELSVariable, const KeptText&,
                                          xstring&) {
    ThrowScannerError(s, "Typed arguments and results are not available in this version");
}

}  // namespace vorn
