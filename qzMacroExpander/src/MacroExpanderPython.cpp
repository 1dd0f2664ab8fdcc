// @runpython: a block of Python statements, run for their side effects.

#include "MacroExpander.h"

#include "ScannerErrors.h"
#include "UsePython.h"

namespace vorn {

namespace {

// Python's indentation means something: the block starts in column 0, whatever column it stands
// in, and ends with a line end.
xstring MakePythonBlock(const xstring& code, ssize_t indent) {
    StringStream os(4096);
    WriteSubStringWithAdjustedIndent(os, code, indent);
    os << '\n';
    return os.GetString();
}

}  // namespace

void MacroExpander::ProcessRunPythonDirective() {
    const xchar* errorPos = m_str.m_p1;
    ssize_t indent = 0;
    const SubString s = ScanSubstString(m_str, indent);
    const xstring expandedPythonCode = ExpandToString(s);
    if (!expandedPythonCode.empty()) {
        try {
            RunPython(xstring(), MakePythonBlock(expandedPythonCode, indent), errorPos);
        } catch (LexScannerException& e) {
            AddContext(e, "\n    in @runpython()\n", expandedPythonCode);
            e.m_pos = m_startDirectivePos;
            throw;
        }
    }
    ScanOverWhiteSpaceAfterDirective();
}

}  // namespace vorn
