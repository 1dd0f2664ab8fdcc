// @str and its variants, @unstr, @quote: text goes into string literals and comes out of them.

#include "MacroExpanderExpressions.h"

#include <algorithm>

namespace vorn {

void WritePrefix(xostream& os, EStrLiteralMode mode) {
    if (mode == SLM_WIDE)
        os << 'L';
    os << '"';
}

void WriteSuffix(xostream& os, EStrLiteralMode) {
    os << '"';
}

void MacroExpander::ProcessStrDirective(bool divideIntoSeparateStringsForEachLine,
                                        EStrLiteralMode mode) {
    ssize_t indentation = 0;
    const SubString s1 = ScanRndBrackettedString(m_str, indentation);
    AdvanceWritePos(m_str.m_p1, false);
    const xstring expr = ExpandToString(s1, indentation);
    const ssize_t saveDstIndent = m_dstIndent;
    m_dstIndent = GetOutputPos();
    WriteLiterals(expr, divideIntoSeparateStringsForEachLine, mode);
    m_dstIndent = saveDstIndent;
}

// Writes text as one literal, or as one a line with divide.
void MacroExpander::WriteLiterals(const xstring& text, bool divide, EStrLiteralMode mode) {
    StringStream os(4096);
    bool haveOutputAString = false;
    WritePrefix(os, mode);
    for (const xchar c : text) {
        if (divide && c == '\n') {
            os << "\\n";
            WriteSuffix(os, mode);
            os << '\n';
            WriteCalculatedSubString(os.GetString());
            WritePrefix(os, mode);
            haveOutputAString = true;
        } else {
            WriteCharForCStyleLiteralConstants(os, c);
        }
    }
    WriteSuffix(os, mode);
    const xstring result = os.GetString();
    // Kept: an empty last literal goes if it is narrow; the wide one, a byte longer, stays.
    if (!haveOutputAString || result.size() >= 3)
        WriteCalculatedSubString(result);
}

void MacroExpander::ProcessUnstrDirective() {
    const SubString s1 = ScanRndBrackettedSection(m_str, true);
    AdvanceWritePos(m_str.m_p1, false);
    const xstring expr = ExpandToString(s1);
    StringStream os(4096);
    try {
        UnstringifyQuotedString(expr, os);
    } catch (LexScannerException& e) {
        MoveErrorToDirective(e, ")", "\n    in @unstr(", expr, ")");
        throw;
    }
    const ssize_t saveDstIndent = m_dstIndent;
    m_dstIndent = GetOutputPos();
    WriteCalculatedSubString(os.GetString());
    m_dstIndent = saveDstIndent;
}

// The lines go out as source text, so that each keeps its own source position.
void MacroExpander::ProcessQuoteDirective() {
    ssize_t indent = 0;
    SubString s = ScanRndBrackettedString(m_str, indent);
    AdvanceWritePos(m_str.m_p1, false);
    const ssize_t saveDstIndent = m_dstIndent;
    m_dstIndent = GetOutputPos();
    const xchar* lineFeed = std::find(s.m_p1, s.m_p2, '\n');
    while (lineFeed != s.m_p2) {
        WriteSubStringFromSourceFile(SubString(s.m_p1, lineFeed + 1));
        s.setbegin(lineFeed + 1);
        ScanIndentation(s, indent, 4);
        lineFeed = std::find(s.m_p1, s.m_p2, '\n');
    }
    WriteSubStringFromSourceFile(s);
    m_dstIndent = saveDstIndent;
}

}  // namespace vorn
