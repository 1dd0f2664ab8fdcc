// The use of a variable: a value is written, a macro is called.
//
// Untyped arguments are bound by name: each is a macro of its own, whose text is expanded in the
// caller's frame wherever the body uses it. Typed arguments are evaluated once, at the call.

#include "MacroExpander.h"

#include "ScannerErrors.h"
#include "UsePython.h"

namespace vorn {

namespace {

struct NameAndFormals {
    const LSMacroVariable& macroVar;
};

xostream& operator<<(xostream& os, const NameAndFormals& x) {
    x.macroVar.WriteNameAndFormalParameterList(os);
    return os;
}

// The arguments of a call for its context line: " with a=1, b=2", or nothing.
struct BoundArguments {
    const LSMacroVariable& macroVar;
    const xvector<BoundArgument>& args;
};

xostream& operator<<(xostream& os, const BoundArguments& x) {
    for (ssize_t i = 0; i < x.args.size(); ++i) {
        os << (i == 0 ? " with " : ", ") << x.macroVar.GetArg(i).m_name << '=';
        x.args[i].variable->WriteValue(os);
    }
    return os;
}

[[noreturn]] void ThrowArgumentListExpected(const LSMacroVariable& macroVar, const LSToken& token) {
    ThrowScannerError(token, "( expected to begin argument list for macro ",
                      NameAndFormals{macroVar}, " when read ", token);
}

[[noreturn]] void ThrowWrongNumberOfArguments(const LSMacroVariable& macroVar,
                                              const LSToken& delimiter) {
    ThrowScannerError(delimiter,
                      delimiter == TOKEN_COMMA ? "Too many arguments provided for macro "
                                               : "Insufficient arguments provided for macro ",
                      NameAndFormals{macroVar});
}

}  // namespace

void MacroExpander::InvokeVariable(LSVariable* var) {
    if (var->GetType() != LSV_MACRO) {
        AdvanceWritePos(m_str.m_p1, false);
        WriteCalculatedSubString(static_cast<LSValueVariable*>(var)->m_value);
        return;
    }
    auto& macroVar = *static_cast<LSMacroVariable*>(var);
    if (macroVar.m_isFnArg)
        return InvokeMacroFunction(&macroVar);

    xvector<BoundArgument> args;
    ReadArguments(macroVar, args);
    AdvanceWritePos(m_str.m_p1, false);

    VarFrame vfLocal(macroVar.m_context != nullptr ? macroVar.m_context : m_vf);
    VarFrame* vf = macroVar.m_naked ? m_vf : &vfLocal;
    for (ssize_t i = 0; i < args.size(); ++i)
        args[i].variable = BindArgument(macroVar, i, args[i].text, vf);
    RunBody(macroVar, vf, args);
}

void MacroExpander::ReadArguments(const LSMacroVariable& macroVar, xvector<BoundArgument>& args) {
    const ssize_t n = macroVar.GetNumArgs();
    if (n == 0)
        return;
    const LSToken token = ReadToken();
    if (token != TOKEN_LEFT_PAREN)
        ThrowArgumentListExpected(macroVar, token);
    args.reserve(n);
    for (ssize_t i = 0; i < n; ++i) {
        BoundArgument arg;
        const LSToken delimiter = ScanArgument(m_str, arg.text, TOKEN_RIGHT_PAREN);
        if (delimiter == (i < n - 1 ? TOKEN_RIGHT_PAREN : TOKEN_COMMA))
            ThrowWrongNumberOfArguments(macroVar, delimiter);
        args.push_back(arg);
    }
}

// Makes the variable that formal argument i stands for, and adds it to vf.
LSVariable* MacroExpander::BindArgument(const LSMacroVariable& macroVar, ssize_t i, SubString text,
                                        VarFrame* vf) {
    const LSFormalArg& formal = macroVar.GetArg(i);
    std::unique_ptr<LSVariable> var;
    if (formal.m_type == LSV_MACRO) {
        auto argument = std::make_unique<LSMacroVariable>(LSV_MACRO, formal.m_name, m_vf, false,
                                                          false, formal.m_isFnArg);
        argument->SetSubstitutionString(text, false, 0);
        argument->m_keptText = m_text;
        var = std::move(argument);
    } else {
        xstring value;
        EvaluateArgument(macroVar, formal, text, value);
        var = std::make_unique<LSValueVariable>(formal.m_type, formal.m_name, value);
    }
    LSVariable* bound = var.release();
    vf->AddVariable(bound);
    return bound;
}

void MacroExpander::EvaluateArgument(const LSMacroVariable& macroVar, const LSFormalArg& formal,
                                     SubString text, xstring& value) {
    try {
        ReadVariableValueByParsingExpression(m_vf, text, formal.m_type, m_text, value);
    } catch (LexScannerException& e) {
        AddContext(e, "\n    passing formal argument ", formal.m_name, " to macro ",
                   macroVar.m_name);
        throw;
    }
}

// Runs the body in vf. The name and the arguments have been read and dropped.
void MacroExpander::RunBody(const LSMacroVariable& macroVar, VarFrame* vf,
                            const xvector<BoundArgument>& args) {
    try {
        if (macroVar.m_isPython)
            return RunPythonBody(macroVar, vf);
        RunText(macroVar, macroVar.GetSubstitutionString(), vf, macroVar.m_keptText);
    } catch (LexScannerException& e) {
        if (macroVar.m_isPython)
            AddContext(e, "\n    invoking python macro ", macroVar.m_name);
        else
            AddContext(e, "\n    invoking macro ", NameAndFormals{macroVar},
                       BoundArguments{macroVar, args});
        throw;
    }
}

// The text lands in place, or else its value does, by the type of the macro's result.
void MacroExpander::RunText(const LSMacroVariable& macroVar, SubString text, VarFrame* vf,
                            const KeptText& keptText) {
    if (macroVar.m_returnType == LSV_MACRO) {
        MacroExpander(nullptr, vf, text, macroVar.m_indentation, GetOutputPos(), m_output, keptText)
            .Expand();
    } else {
        xstring value;
        ReadVariableValueByParsingExpression(vf, text, macroVar.m_returnType, keptText, value);
        WriteCalculatedSubString(value);
    }
}

void MacroExpander::RunPythonBody(const LSMacroVariable& macroVar, VarFrame* vf) {
    const xchar* errorPos = m_str.m_p1;
    xstring pythonCode;
    vorn::ExpandToString(vf, macroVar.GetSubstitutionString(), macroVar.m_indentation,
                         macroVar.m_keptText, pythonCode);
    xstring value;
    EvalPythonExpression(pythonCode, value, errorPos);
    WriteCalculatedSubString(value);
}

// The call that the use of a function argument stands for; argList has no brackets.
KeptText MacroExpander::MakeCall(SubString function, SubString argList) {
    xstring argListStr;
    OutputPieces argListPieces;
    vorn::ExpandToString(m_vf, argList, 0, m_text, argListStr, &argListPieces);
    const auto call = std::make_shared<xstring>(function);
    *call += '(';
    *call += argListStr;
    *call += ')';

    const OutputPiece bracket{SubString(m_startDirectivePos, m_endDirectivePos), 1};
    OutputPieces pieces;
    pieces.push_back({function, 0});
    pieces.push_back(bracket);
    pieces.m_pieces.append(argListPieces.m_pieces);
    pieces.push_back(bracket);
    KeepOrigin(*m_vf, call, pieces);
    return call;
}

// A formal argument that stands for a function: g(x) becomes a call of what g names, with its
// arguments expanded where the use stands. The call is a text of its own, which the definitions
// made by it keep alive.
void MacroExpander::InvokeMacroFunction(LSMacroVariable* macroVar) {
    const LSToken token = ReadToken();
    if (token != TOKEN_LEFT_PAREN)
        ThrowArgumentListExpected(*macroVar, token);
    const SubString argList =
        ScanBrackettedSection(m_str, false, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    AdvanceWritePos(m_str.m_p1, false);

    const KeptText call = MakeCall(macroVar->GetSubstitutionString(), argList);
    try {
        RunText(*macroVar, *call, macroVar->m_context != nullptr ? macroVar->m_context : m_vf,
                call);
    } catch (LexScannerException& e) {
        AddContext(e, "\n    invoking macro ", NameAndFormals{*macroVar});
        throw;
    }
}

}  // namespace vorn
