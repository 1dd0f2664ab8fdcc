// @let: typed values, computed once and stored as text.

#include "MacroExpander.h"

#include "ScannerErrors.h"

namespace vorn {

void MacroExpander::ProcessLetDirective() {
    const LSToken token = ReadToken();
    const ELSVariable varType = CheckVariableType(token.m_str);
    if (varType == LSV_MACRO)
        AssignVariable(token);
    else
        DeclareVariable(varType);
    ScanOverWhiteSpaceAfterDirective();
}

namespace {

[[noreturn]] void ThrowColonNeedsString(const LSToken& token) {
    ThrowScannerError(token, "@let directive failed: ", token,
                      " := may only be used for string type");
}

}  // namespace

// token is what stands behind @let.
void MacroExpander::AssignVariable(const LSToken& token) {
    if (token != TOKEN_IDENTIFIER)
        ThrowScannerError(token, "Identifier expected after @let when read ", token);
    LSVariable* var = FindVariable(token.m_str);
    if (var == nullptr)
        ThrowScannerError(token, "@let directive failed : there is no variable named ", token);
    const ELSVariable varType = var->GetType();
    if (varType == LSV_MACRO)
        ThrowScannerError(token, "@let directive failed : ", token,
                          " is a macro declared using @def");

    const bool colon = ReadEqualsForVariableDefn2(token.m_str);
    ssize_t indentation = 0;
    const SubString expression = ScanSubstString(m_str, indentation);
    if (colon && varType != LSV_STRING)
        ThrowColonNeedsString(token);
    xstring& value = static_cast<LSValueVariable*>(var)->m_value;
    if (colon)
        value = ExpandToString(expression);
    else
        EvaluateAssignment(expression, varType, value);
}

void MacroExpander::EvaluateAssignment(SubString expression, ELSVariable varType, xstring& value) {
    try {
        ReadVariableValueByParsingExpression(m_vf, expression, varType, m_text, value);
    } catch (LexScannerException& e) {
        AddContext(e, "\n    when parsing expression '", expression, "' for @let directive");
        throw;
    }
}

void MacroExpander::DeclareVariable(ELSVariable varType) {
    const LSToken token = ReadToken();
    if (token != TOKEN_IDENTIFIER)
        ThrowScannerError(token, "Identifier expected for macro name when read ", token);
    if (m_vf->FindLocal(token.m_str, m_str.m_p1) != nullptr)
        ThrowScannerError(token, "Redefinition of variable ", token, " in this scope");

    const bool colon = ReadEqualsForVariableDefn2(token.m_str);
    ssize_t indentation = 0;
    const SubString expression = ScanSubstString(m_str, indentation);
    if (colon && varType != LSV_STRING)
        ThrowColonNeedsString(token);
    xstring value;
    if (colon)
        value = ExpandToString(expression);
    else  // Kept: unlike an assignment, a declaration adds no line of context.
        ReadVariableValueByParsingExpression(m_vf, expression, varType, m_text, value);
    auto var = std::make_unique<LSValueVariable>(varType, token.m_str, value);
    var->m_keptText = m_text;
    AddVariable(var.release());
}

// ---- values ------------------------------------------------------------------------------------

namespace {

// Reads one expression and sets valueStr to the text of its value. Other types read nothing.
void ParseValue(ExpressionParser& ep, ELSVariable varType, xstring& valueStr) {
    switch (varType) {
    case LSV_BOOL:
        valueStr = ep.ParseBool(false) ? "true" : "false";
        return;
    case LSV_INT:
        valueStr = ToString(ep.ParseInt32(false));
        return;
    case LSV_DOUBLE:
        valueStr = ToString(ep.ParseFloat64(false));
        return;
    case LSV_CHAR:
        MakeSingleQuotedLiteralChar(ep.ParseChar(false), valueStr);
        return;
    case LSV_STRING:
        valueStr = ep.ParseString(false);
        return;
    case LSV_UNDEF:
    case LSV_MACRO:
        return;
    }
}

}  // namespace

void ReadVariableValueByParsingExpression(VarFrame* vf, SubString s, ELSVariable varType,
                                          xstring& valueStr) {
    ReadVariableValueByParsingExpression(vf, s, varType, nullptr, valueStr);
}

void ReadVariableValueByParsingExpression(VarFrame* vf, SubString s, ELSVariable varType,
                                          const KeptText& keptText, xstring& valueStr) {
    VarFrame localFrame(vf);
    xstring expr;
    ExpandToString(&localFrame, s, 0, keptText, expr);
    ExpressionParser ep;
    try {
        ep.Init(expr);
        ParseValue(ep, varType, valueStr);
        // Kept: the value has been stored by now, so that it survives where the error is caught.
        if (ep.m_token != TOKEN_END)
            ThrowScannerError(ep.m_token, "Read ", ep.m_token, " in middle of expression");
    } catch (LexScannerException& e) {
        AddContext(e, "\n    expression: ", expr);
        throw;
    }
}

}  // namespace vorn
