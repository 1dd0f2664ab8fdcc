// @if, @elseif, @else and @scope.

#include "MacroExpanderExpressions.h"

namespace vorn {

namespace {

// Whether an @ and the given word come next. s moves in any case.
bool ScanDirectiveName(SubString& s, ConstStringZ name) {
    if (LsScanToken(s, false) != TOKEN_AT)
        return false;
    const LSToken token = LsScanToken(s, false);
    return token == TOKEN_IDENTIFIER && token == name;
}

}  // namespace

bool ScanElseIfBlock(SubString& s) {
    return ScanDirectiveName(s, "elseif");
}

bool ScanElseBlock(SubString& s) {
    return ScanDirectiveName(s, "else");
}

void MacroExpander::ProcessIfDirective() {
    bool found_result = ParseBoolExpressionInBrackets("@if");
    ssize_t result_substIndent = 0;
    SubString result_subst = ScanSubstString(m_str, result_substIndent);
    if (!found_result)
        result_subst = SubString();

    const auto readBlock = [&](bool condition) {
        ssize_t substIndent = 0;
        const SubString subst = ScanSubstString(m_str, substIndent);
        if (condition && !found_result) {
            found_result = true;
            result_subst = subst;
            result_substIndent = substIndent;
        }
    };
    SubString ahead = m_str;
    while (ScanElseIfBlock(ahead)) {
        m_str = ahead;
        // Every condition of the chain is evaluated, also behind the branch that was chosen.
        readBlock(ParseBoolExpressionInBrackets("@elseif"));
        ahead = m_str;
    }
    ahead = m_str;
    if (ScanElseBlock(ahead)) {
        m_str = ahead;
        readBlock(true);
    }

    AdvanceWritePos(m_str.m_p1, false);
    if (result_subst)
        ExpandInPlace(result_subst, result_substIndent, GetOutputPos());
}

void MacroExpander::ProcessScopeDirective() {
    ssize_t substIndent = 0;
    const SubString s = ScanSubstString(m_str, substIndent);
    AdvanceWritePos(m_str.m_p1, false);
    ExpandInPlace(s, substIndent, GetOutputPos());
}

bool MacroExpander::ParseBoolExpressionInBrackets(SubString directive) {
    const ExpressionSite site{directive, " when read ", true};
    const SubString s = ScanRndBrackettedSection(m_str, true);
    const xstring expr = ExpandExpression(site, s);
    return ParseExpanded(site, expr, &ExpressionParser::ParseBool, false);
}

}  // namespace vorn
