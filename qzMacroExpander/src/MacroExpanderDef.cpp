// @def, @exportdef, @nakeddef, @defpython: a definition is read and stored, and expands nothing.

#include "MacroExpander.h"

#include <algorithm>
#include <iterator>

#include "ScannerErrors.h"

namespace vorn {

namespace {

struct TypeKeyword {
    SubString name;
    ELSVariable type;
};

constexpr TypeKeyword s_typeKeywords[] = {
    {"bool",   LSV_BOOL  },
    {"int",    LSV_INT   },
    {"double", LSV_DOUBLE},
    {"char",   LSV_CHAR  },
    {"string", LSV_STRING},
};

}  // namespace

ELSVariable CheckVariableType(SubString s) {
    const auto keyword =
        std::find_if(std::begin(s_typeKeywords), std::end(s_typeKeywords),
                     [s](const TypeKeyword& candidate) { return candidate.name == s; });
    return keyword == std::end(s_typeKeywords) ? LSV_MACRO : keyword->type;
}

void MacroExpander::ProcessDefDirective(bool exported, bool naked, bool isPython) {
    LSToken token = ReadToken();
    const bool exportToFileScope = token == TOKEN_PLUS;
    if (exportToFileScope)
        token = ReadToken();
    const ELSVariable varType = CheckVariableType(token.m_str);
    if (varType != LSV_MACRO)
        token = ReadToken();
    if (token != TOKEN_IDENTIFIER)
        ThrowScannerError(token, "Identifier expected for macro name when read ", token);

    auto macroVar =
        std::make_unique<LSMacroVariable>(varType, token.m_str, nullptr, isPython, naked, false);
    macroVar->m_keptText = m_text;
    ReadMacroVariableDefn(token.m_str, macroVar.get());
    AddMacro(std::move(macroVar), exported, exportToFileScope);
    ScanOverWhiteSpaceAfterDirective();
}

// The frames are looked for only now, when the whole definition has been read.
void MacroExpander::AddMacro(std::unique_ptr<LSMacroVariable> macroVar, bool exported,
                             bool toFileScope) {
    VarFrame* frame = m_vf;
    if (toFileScope)
        frame = m_vf->m_fileScopeFrame;
    else if (exported)
        frame = m_vf->m_parent;
    if (frame == nullptr)
        ThrowScannerError(macroVar->m_name, toFileScope ? "No filescope frame" : "No parent frame");
    frame->AddVariable(macroVar.release());
}

void MacroExpander::ReadMacroVariableDefn(SubString varName, LSMacroVariable* macroVar) {
    LSToken token = ReadToken();
    if (token == TOKEN_LEFT_PAREN) {
        do
            token = ReadFormalArgument(varName, macroVar, ReadToken());
        while (token == TOKEN_COMMA);
        ReadEqualsForVariableDefn(varName);
    } else if (token != TOKEN_EQUAL) {
        ThrowScannerError(token, "= or ( expected for definition of macro ", varName, " when read ",
                          token);
    }
    ssize_t indent = 0;
    const SubString body = ScanSubstString(m_str, indent);
    macroVar->SetSubstitutionString(body, false, indent);
}

// Reads one formal argument, which starts with token, and returns the token behind it: a comma or
// the closing bracket. An empty list is closed where its first argument would start.
LSToken MacroExpander::ReadFormalArgument(SubString varName, LSMacroVariable* macroVar,
                                          LSToken token) {
    if (token == TOKEN_RIGHT_PAREN && macroVar->GetNumArgs() == 0)
        return token;
    const ELSVariable argType = CheckVariableType(token.m_str);
    if (argType != LSV_MACRO)
        token = ReadToken();
    if (token != TOKEN_IDENTIFIER)
        ThrowScannerError(token, "Read ", token,
                          " while trying to read argument for definition of macro ", varName);
    const SubString argName = token.m_str;
    if (macroVar->FindArgName(argName) != -1)
        ThrowScannerError(token, "Repeated argument ", argName, " in definition of macro ",
                          varName);
    if (token == "false" || token == "true")
        ThrowScannerError(token, "Invalid formal argument '", argName, "' in definition of macro ",
                          varName);

    token = ReadToken();
    const bool isFnArg = token == TOKEN_LEFT_PAREN;
    if (isFnArg) {
        token = ReadToken();
        if (token != TOKEN_RIGHT_PAREN)
            ThrowScannerError(token, "Expected ) when read ", token);
        token = ReadToken();
    }
    if (token != TOKEN_RIGHT_PAREN && token != TOKEN_COMMA)
        ThrowScannerError(token, "Comma or right parenthesis expected when read ", token,
                          "\nwhile reading argument list for definition of macro ", varName);
    macroVar->AddArgName(argName, argType, isFnArg);
    return token;
}

namespace {

[[noreturn]] void ThrowEqualsExpected(SubString varName, const LSToken& token) {
    ThrowScannerError(token, "= expected in definition of macro ", varName, " when read ", token);
}

}  // namespace

void MacroExpander::ReadEqualsForVariableDefn(SubString varName) {
    const LSToken token = ReadToken();
    if (token != TOKEN_EQUAL)
        ThrowEqualsExpected(varName, token);
}

bool MacroExpander::ReadEqualsForVariableDefn2(SubString varName) {
    LSToken token = ReadToken();
    const bool colon = token == TOKEN_COLON;
    if (colon)
        token = ReadToken();
    if (token != TOKEN_EQUAL)
        ThrowEqualsExpected(varName, token);
    return colon;
}

}  // namespace vorn
