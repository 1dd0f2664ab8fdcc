// @print, @println, @assert, @assertfails, @fail: none of them contributes to the output.

#include "MacroExpanderExpressions.h"

namespace vorn {

void MacroExpander::ProcessPrintDirective(bool writeLineFeed) {
    const SubString s = ScanRndBrackettedSection(m_str, true);
    AdvanceWritePos(m_str.m_p1, false);
    const xstring expr = ExpandToString(s);
    xcout << expr;
    if (writeLineFeed)
        xcout << '\n';
    xcout.flush();
    ScanOverWhiteSpaceAfterDirective();
}

void MacroExpander::ProcessAssertDirective() {
    static constexpr ExpressionSite s_site{"@assert", " when read ", false};
    const xchar* errorPos = m_str.m_p1;
    const SubString s = ScanRndBrackettedSection(m_str, true);
    const xstring expr = ExpandExpression(s_site, s);
    if (!ParseExpanded(s_site, expr, &ExpressionParser::ParseBool, false))
        ThrowScannerError(errorPos, "Assertion failure\n        @assert(", s, ")\nie      @assert(",
                          expr, ")");
    ScanOverWhiteSpaceAfterDirective();
}

namespace {

// The text in brackets of any kind behind @assertfails.
SubString ScanAssertFailsArgument(SubString& s) {
    const LSToken token = LsScanToken(s, false);
    switch (token.m_type) {
    case TOKEN_LEFT_PAREN:
        return ScanRndBrackettedSection(s, false);
    case TOKEN_LEFT_SQUARE:
        return ScanSquareBrackettedSection(s, false);
    case TOKEN_LEFT_CURLY:
        return ScanCurlyBrackettedSection(s, false);
    default:
        ThrowScannerError(token, "( expected after @assertfails when read ", token);
    }
}

}  // namespace

void MacroExpander::ProcessAssertFailsDirective() {
    const xchar* errorPos = m_str.m_p1;
    const SubString arg = ScanAssertFailsArgument(m_str);
    bool haveError = false;
    try {
        ExpandToString(arg);
    } catch (const LexScannerException&) {
        haveError = true;
    }
    if (!haveError)
        ThrowScannerError(errorPos, "Macro expansion of ", arg, " didn't generate an error");
    ScanOverWhiteSpaceAfterDirective();
}

void MacroExpander::ProcessFailDirective() {
    const xchar* errorPos = m_str.m_p1;
    const xstring message = ParseStringExpressionInBrackets("@fail", true);
    throw LexScannerException(message, errorPos);
}

}  // namespace vorn
