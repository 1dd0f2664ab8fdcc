// The second step of "expand, then parse", for the sources that hold such a site.
#pragma once

#include "MacroExpander.h"
#include "ScannerErrors.h"

namespace vorn {

template <class... Parts>
void MacroExpander::MoveErrorToDirective(LexScannerException& e, ConstStringZ closingBracket,
                                         const Parts&... context) {
    // Kept: a message that quotes the letters EOS from the author's text has them replaced too.
    StringFindAndReplace(e.m_description, "EOS", closingBracket);
    AddContext(e, context...);
    e.m_pos = m_startDirectivePos;
}

template <class Value>
Value MacroExpander::ParseExpanded(const ExpressionSite& site, const xstring& expr,
                                   Value (ExpressionParser::*parse)(bool), bool allowDataLoss) {
    ExpressionParser ep;
    // A fault at the first token then reads as coming after the bracket of the directive.
    ep.m_token = LSToken(TOKEN_LEFT_PAREN, "(");
    try {
        ep.Init(expr);
        Value value = (ep.*parse)(allowDataLoss);
        if (ep.m_token != TOKEN_END)
            ThrowScannerError(ep.m_token, "Expected ) after ", ep.m_prevToken, site.whenRead,
                              ep.m_token, " in expression");
        return value;
    } catch (LexScannerException& e) {
        MoveErrorToDirective(e, ")", "\n    in ", site.directive, "(", expr, ")");
        throw;
    }
}

}  // namespace vorn
