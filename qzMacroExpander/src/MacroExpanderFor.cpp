// @for: the list is expanded once, to text, and cut at its top-level commas.

#include "MacroExpander.h"

#include "ScannerErrors.h"

namespace vorn {

// One @for directive, from its head to its last turn.
struct MacroExpander::ForLoop {
    xstring varname;                      // the single form
    xvector<xstring> vars;                // the tuple form; empty in the single form
    const xchar* listErrorPos = nullptr;  // stands for every position in the list
    KeptText list;                        // what the items are views of
    SubString body;
    ssize_t bodyIndent = 0;
    ssize_t dstPos = 0;
};

void MacroExpander::ProcessForDirective() {
    ForLoop loop;
    ReadForHead(loop);
    AdvanceWritePos(m_str.m_p1, false);
    loop.dstPos = GetOutputPos();

    SubString sslist = *loop.list;
    LSToken t = LsScanToken(sslist, false);
    if (t != TOKEN_LEFT_SQUARE)
        // Kept: the doubled word, which users' scripts look for.
        ThrowScannerError(loop.listErrorPos, "[ expected when read read ", t);
    do {
        SubString s;
        t = ScanListElement(loop, sslist, s, TOKEN_RIGHT_SQUARE);
        if (t == TOKEN_COMMA || s)
            RunForTurn(loop, s);
        if (t != TOKEN_COMMA && t != TOKEN_RIGHT_SQUARE)
            ThrowScannerError(loop.listErrorPos, ", or ] expected when read ", t);
    } while (t == TOKEN_COMMA);
}

void MacroExpander::ReadForHead(ForLoop& loop) {
    LSToken token = ReadToken();
    if (token != TOKEN_LEFT_PAREN)
        ThrowScannerError(token, "( expected after @for when read ", token);
    token = ReadToken();
    if (token == TOKEN_LEFT_PAREN)
        ReadForTuple(loop);
    else if (token == TOKEN_IDENTIFIER)
        loop.varname.assign(token.m_str);
    else
        ThrowScannerError(token, "Identifier expected after @for( when read ", token);
    token = ReadToken();
    if (token != "in")
        ThrowScannerError(token, "'in' expected when read ", token);

    loop.listErrorPos = m_str.m_p1;
    const SubString list = ScanRndBrackettedSection(m_str, false);
    loop.list = ExpandList(list);
    loop.body = ScanLoopBody("@for", loop.bodyIndent);
}

KeptText MacroExpander::ExpandList(SubString s) {
    VarFrame localFrame(m_vf);
    const auto list = std::make_shared<xstring>();
    OutputPieces pieces;
    vorn::ExpandToString(&localFrame, s, 0, m_text, *list, &pieces);
    KeepOrigin(localFrame, list, pieces);
    return list;
}

void MacroExpander::ReadForTuple(ForLoop& loop) {
    LSToken token = ReadToken();
    while (true) {
        if (token != TOKEN_IDENTIFIER)
            ThrowScannerError(token, "Identifier expected when read ", token);
        loop.vars.push_back(token.GetTokenString());
        token = ReadToken();
        if (token == TOKEN_RIGHT_PAREN)
            return;
        if (token != TOKEN_COMMA)
            ThrowScannerError(token, ", or ) expected when read ", token);
        token = ReadToken();
    }
}

LSToken MacroExpander::ScanListElement(const ForLoop& loop, SubString& s, SubString& element,
                                       EToken rightBracket) {
    try {
        return ScanArgument(s, element, rightBracket);
    } catch (LexScannerException& e) {
        AddContext(e, "\n    in @for directive for list ", *loop.list);
        e.m_pos = loop.listErrorPos;
        throw;
    }
}

// One turn, with the names bound to the element s.
void MacroExpander::RunForTurn(const ForLoop& loop, SubString s) {
    VarFrame vfLocal(m_vf);
    if (loop.vars.empty())
        BindLoopVariable(loop, vfLocal, loop.varname, s);
    else
        BindTuple(loop, vfLocal, s);
    try {
        ExpandInPlace(&vfLocal, loop.body, loop.bodyIndent, loop.dstPos);
    } catch (LexScannerException& e) {
        // Kept: in the tuple form there is no name to show, and s has been read up.
        AddContext(e, "\n    in @for directive when ", loop.varname, " = ", s);
        throw;
    }
}

// An item sees the names around the loop, and none of those bound by its turn.
void MacroExpander::BindLoopVariable(const ForLoop& loop, VarFrame& vfLocal, SubString name,
                                     SubString item) {
    auto var = std::make_unique<LSMacroVariable>(LSV_MACRO, name, m_vf, false, false, false);
    var->SetSubstitutionString(item, false, 0);
    var->m_keptText = loop.list;
    vfLocal.AddVariable(var.release());
}

void MacroExpander::BindTuple(const ForLoop& loop, VarFrame& vfLocal, SubString& s) {
    const LSToken token = LsScanToken(s, false);
    if (token != TOKEN_LEFT_PAREN)
        ThrowScannerError(loop.listErrorPos, "( expected when read ", token);
    for (ssize_t i = 0; i < loop.vars.size(); ++i) {
        SubString val;
        const LSToken tk = ScanListElement(loop, s, val, TOKEN_RIGHT_PAREN);
        BindLoopVariable(loop, vfLocal, loop.vars[i], val);
        const bool last = i == loop.vars.size() - 1;
        if (tk != (last ? TOKEN_RIGHT_PAREN : TOKEN_COMMA))
            ThrowScannerError(loop.listErrorPos, last ? ")" : ",", " expected when read ", tk);
    }
}

}  // namespace vorn
