// @[ ], @( ) and the evaluation of string expressions for other directives.

#include "MacroExpanderExpressions.h"

namespace vorn {

void MacroExpander::ProcessSqrBracketDirective() {
    const SubString s = ScanSquareBrackettedSection(m_str, false);
    AdvanceWritePos(m_str.m_p1, false);
    VarFrame localFrame(m_vf);
    // The second pass may make definitions that outlive this directive: they keep its text alive.
    const auto expr1 = std::make_shared<xstring>();
    OutputPieces pieces;
    vorn::ExpandToString(&localFrame, s, 0, m_text, *expr1, &pieces);
    KeepOrigin(localFrame, expr1, pieces);
    xstring expr2;
    try {
        VarFrame localFrame2(m_vf);
        vorn::ExpandToString(&localFrame2, *expr1, 0, expr1, expr2);
    } catch (LexScannerException& e) {
        MoveErrorToDirective(e, "]", "\n    in @[", *expr1, "]");
        throw;
    }
    WriteCalculatedSubString(expr2);
}

void MacroExpander::ProcessRndBracketDirective() {
    // Kept: no blank in front of "when" here, unlike everywhere else.
    static constexpr ExpressionSite s_site{"@", "when read ", false};
    const SubString s = ScanRndBrackettedSection(m_str, false);
    AdvanceWritePos(m_str.m_p1, false);
    const xstring expr = ExpandExpression(s_site, s);
    WriteCalculatedSubString(ParseExpanded(s_site, expr, &ExpressionParser::ParseString, true));
}

xstring MacroExpander::EvaluateString(SubString s, SubString directive) {
    const ExpressionSite site{directive, " when read ", true};
    const xstring expr = ExpandExpression(site, s);
    return ParseExpanded(site, expr, &ExpressionParser::ParseString, false);
}

xstring MacroExpander::ParseStringExpressionInBrackets(SubString directive,
                                                       bool readInitialBracket) {
    return EvaluateString(ScanRndBrackettedSection(m_str, readInitialBracket), directive);
}

xstring MacroExpander::ExpandExpression(const ExpressionSite& site, SubString s) {
    try {
        return ExpandToString(s);
    } catch (LexScannerException& e) {
        if (site.contextForExpansion)
            AddContext(e, "\n    in ", site.directive, "(", s, ")");
        throw;
    }
}

}  // namespace vorn
