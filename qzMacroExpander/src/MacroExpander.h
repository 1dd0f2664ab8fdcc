// The expansion of one text.
//
// A MacroExpander expands one text once, from start to end, and keeps nothing afterwards. Nesting
// is recursion: a body, a branch, an argument is a further text with an expander and a frame of
// its own. What it writes is final; output is never scanned again. Nested texts get no import
// handler, so that only the outermost text of a call can import.
#pragma once

#include "qzMacroExpander/ExpressionParser.h"
#include "qzMacroExpander/MacroExpand.h"

namespace vorn {

// The kind of literal that the @str family writes.
enum EStrLiteralMode {
    SLM_ASCII,  // "..."
    SLM_WIDE,   // L"..."
};

// One actual argument of a macro call.
struct BoundArgument {
    SubString text;                  // as it stands in the caller's text
    LSVariable* variable = nullptr;  // what the formal argument stands for; its frame owns it
};

// What differs between the directives that expand a text and parse the result as an expression.
struct ExpressionSite {
    SubString directive;       // as context lines show it, in front of the bracket
    ConstStringZ whenRead;     // stands in front of the token behind the expression
    bool contextForExpansion;  // whether a fault of the expansion gets a context line
};

class MacroExpander {
public:
    ImportHandler* m_importHandler;    // null refuses imports
    VarFrame* m_vf;                    // where names are looked up and definitions land
    ExpandedOutput& m_output;          // not owned
    ssize_t m_srcIndent;               // columns taken off each line after the first
    ssize_t m_dstIndent;               // blanks that each output line begun by the text gets
    SubString m_origStr;               // the whole text
    SubString m_str;                   // what is still to be scanned
    const xchar* m_startDirectivePos;  // the token that Expand deals with; of a directive, the @
    const xchar* m_endDirectivePos;
    const xchar* m_writePos;  // everything in front has been written or dropped
    KeptText m_text;          // keeps the text alive for its definitions; see KeptText

    MacroExpander(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                  ssize_t dstIndent, ExpandedOutput& output, KeptText text = nullptr);

    void Expand();

    // ---- reading and writing -------------------------------------------------------------------

    LSToken ReadToken() { return LsScanToken(m_str, false); }
    void AddVariable(LSVariable* var) { m_vf->AddVariable(var); }
    LSVariable* FindVariable(SubString name) { return m_vf->Find(name, m_str.m_p1); }

    // The column at which the next output byte of the text will stand.
    ssize_t GetOutputPos() const {
        return m_output.m_columnPos >= 0 ? m_output.m_columnPos : m_dstIndent;
    }

    void WriteSubStringFromSourceFile(SubString s) {
        m_output.WriteSubStringFromSourceFile(s, m_dstIndent);
    }
    // Without a source range, the text counts as yielded by the current token.
    void WriteCalculatedSubString(SubString s) {
        WriteCalculatedSubString(s, SubString(m_startDirectivePos, m_endDirectivePos));
    }
    void WriteCalculatedSubString(SubString s, SubString sSrcFile) {
        m_output.WriteCalculatedSubString(s, sSrcFile, m_dstIndent);
    }

    // Writes, or drops, the text up to pos.
    void AdvanceWritePos(const xchar* pos, bool generateOutput) {
        if (generateOutput)
            WriteSubStringFromSourceFile(SubString(m_writePos, pos));
        m_writePos = pos;
    }

    // Writes the text up to pos, for the loop alone: the stream may get it later.
    void DeferUpTo(const xchar* pos) {
        m_output.DeferSubStringFromSourceFile(SubString(m_writePos, pos), m_dstIndent);
        m_writePos = pos;
    }

    // Drops the rest of the statement's line, if nothing more stands on it, with the blank lines
    // behind it and the source indentation of the next line.
    void ScanOverWhiteSpaceAfterDirective();

    // ---- nested texts --------------------------------------------------------------------------

    // Expands a part of this text in a frame of its own, to a string or in place.
    xstring ExpandToString(SubString s, ssize_t srcIndent = 0);
    void ExpandInPlace(SubString s, ssize_t srcIndent, ssize_t dstIndent);
    void ExpandInPlace(VarFrame* vf, SubString s, ssize_t srcIndent, ssize_t dstIndent);

    // The two steps of "expand, then parse". The parser sees the expanded text alone, so that the
    // second step moves every error to the directive: a position in expr means nothing later.
    xstring ExpandExpression(const ExpressionSite& site, SubString s);
    template <class Value>
    [[gnu::noinline]] Value ParseExpanded(const ExpressionSite& site, const xstring& expr,
                                          Value (ExpressionParser::*parse)(bool),
                                          bool allowDataLoss);

    // Moves an error found in a temporary text to the directive. The end of that text is, to the
    // reader, the closing bracket.
    template <class... Parts>
    [[gnu::cold, gnu::noinline]] void MoveErrorToDirective(LexScannerException& e,
                                                           ConstStringZ closingBracket,
                                                           const Parts&... context);

    // ---- macros --------------------------------------------------------------------------------

    void ProcessDefDirective(bool exported, bool naked, bool isPython);
    void ReadMacroVariableDefn(SubString varName, LSMacroVariable* macroVar);
    void ReadEqualsForVariableDefn(SubString varName);
    // Whether a colon stands in front of the =.
    bool ReadEqualsForVariableDefn2(SubString varName);

    // Called behind the name of the variable, with the write position at its start.
    void InvokeVariable(LSVariable* var);
    void InvokeMacroFunction(LSMacroVariable* macroVar);

    // ---- conditionals, scopes, loops -----------------------------------------------------------

    void ProcessIfDirective();
    void ProcessScopeDirective();
    void ProcessForDirective();
    void ProcessWhileDirective();
    bool ParseBoolExpressionInBrackets(SubString directive);

    // ---- values --------------------------------------------------------------------------------

    void ProcessLetDirective();
    void ProcessSqrBracketDirective();
    void ProcessRndBracketDirective();
    // The string that s expands and evaluates to. directive is the name for context lines.
    xstring EvaluateString(SubString s, SubString directive);
    xstring ParseStringExpressionInBrackets(SubString directive, bool readInitialBracket);

    // ---- strings and diagnostics ---------------------------------------------------------------

    void ProcessStrDirective(bool divideIntoSeparateStringsForEachLine, EStrLiteralMode mode);
    void ProcessUnstrDirective();
    void ProcessQuoteDirective();
    void ProcessPrintDirective(bool writeLineFeed);
    void ProcessAssertDirective();
    void ProcessAssertFailsDirective();
    void ProcessFailDirective();

    // ---- files and Python ----------------------------------------------------------------------

    void ProcessImportDirective();
    void ProcessImportPathDirective();
    void ProcessRelativePathDirective();
    void ProcessDollarDefDirective();
    void ProcessRunPythonDirective();

private:
    void ExpandTokens();
    void ScanLineLevel();
    void ProcessToken(const LSToken& token, const xchar* whiteSpacePos);
    void ProcessQuotedString(const LSToken& token, const xchar* whiteSpacePos);
    void ProcessAt(const xchar* whiteSpacePos);
    void ProcessNamedDirective(const LSToken& name, const xchar* whiteSpacePos);
    void ProcessHostVariable(const LSToken& name, const xchar* whiteSpacePos);

    void AddMacro(std::unique_ptr<LSMacroVariable> macroVar, bool exported, bool toFileScope);
    LSToken ReadFormalArgument(SubString varName, LSMacroVariable* macroVar, LSToken token);

    void ReadArguments(const LSMacroVariable& macroVar, xvector<BoundArgument>& args);
    LSVariable* BindArgument(const LSMacroVariable& macroVar, ssize_t i, SubString text,
                             VarFrame* vf);
    void EvaluateArgument(const LSMacroVariable& macroVar, const LSFormalArg& formal,
                          SubString text, xstring& value);
    void RunBody(const LSMacroVariable& macroVar, VarFrame* vf, const xvector<BoundArgument>& args);
    void RunText(const LSMacroVariable& macroVar, SubString text, VarFrame* vf,
                 const KeptText& keptText);
    void RunPythonBody(const LSMacroVariable& macroVar, VarFrame* vf);
    KeptText MakeCall(SubString function, SubString argList);

    struct ForLoop;
    void ReadForHead(ForLoop& loop);
    KeptText ExpandList(SubString s);
    void ReadForTuple(ForLoop& loop);
    LSToken ScanListElement(const ForLoop& loop, SubString& s, SubString& element,
                            EToken rightBracket);
    void RunForTurn(const ForLoop& loop, SubString s);
    void BindLoopVariable(const ForLoop& loop, VarFrame& vfLocal, SubString name, SubString item);
    void BindTuple(const ForLoop& loop, VarFrame& vfLocal, SubString& s);
    SubString ScanLoopBody(ConstStringZ directive, ssize_t& bodyIndent);

    void DeclareVariable(ELSVariable varType);
    void AssignVariable(const LSToken& token);
    void EvaluateAssignment(SubString expression, ELSVariable varType, xstring& value);
    void WriteLiterals(const xstring& text, bool divide, EStrLiteralMode mode);
};

// ---- free functions ----------------------------------------------------------------------------

// The type that a keyword names, LSV_MACRO for any other text.
ELSVariable CheckVariableType(SubString s);

// Expands s in a temporary child frame of vf, parses the result as an expression of type varType,
// and sets valueStr to the text of the value. keptText keeps s alive, null where it is the host's.
void ReadVariableValueByParsingExpression(VarFrame* vf, SubString s, ELSVariable varType,
                                          xstring& valueStr);
void ReadVariableValueByParsingExpression(VarFrame* vf, SubString s, ELSVariable varType,
                                          const KeptText& keptText, xstring& valueStr);

// Expands a text to a string; text is what keeps it alive, null where it is the host's. Sets
// pieces, where it is not null, to those of the result.
void ExpandToString(VarFrame* vf, SubString s, ssize_t srcIndent, const KeptText& text,
                    xstring& result, OutputPieces* pieces = nullptr);

// Tells the host, if it wants to know, where a text came from that is now to be expanded.
void KeepOrigin(const VarFrame& vf, const KeptText& text, const OutputPieces& pieces);

// Whether @elseif, or @else, comes next; s is then behind the word. Otherwise s has moved too.
bool ScanElseIfBlock(SubString& s);
bool ScanElseBlock(SubString& s);

// The opening and the closing of a literal.
void WritePrefix(xostream& os, EStrLiteralMode mode);
void WriteSuffix(xostream& os, EStrLiteralMode mode);

}  // namespace vorn
