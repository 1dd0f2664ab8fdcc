// @while: the condition is expanded and parsed afresh before every turn.

#include "MacroExpanderExpressions.h"

namespace vorn {

void MacroExpander::ProcessWhileDirective() {
    static constexpr ExpressionSite s_site{"@while", " when read ", true};
    const SubString expression = ScanRndBrackettedSection(m_str, true);
    ssize_t bodyIndent = 0;
    const SubString body = ScanLoopBody("@while", bodyIndent);
    AdvanceWritePos(m_str.m_p1, false);
    const ssize_t dstPos = GetOutputPos();
    while (ParseExpanded(s_site, ExpandExpression(s_site, expression), &ExpressionParser::ParseBool,
                         false)) {
        if (body)
            ExpandInPlace(body, bodyIndent, dstPos);
    }
}

SubString MacroExpander::ScanLoopBody(ConstStringZ directive, ssize_t& bodyIndent) {
    try {
        return ScanSubstString(m_str, bodyIndent);
    } catch (LexScannerException& e) {
        AddContext(e, "\n    for ", directive, " directive");
        throw;
    }
}

}  // namespace vorn
