// @import, @importpath, @relativepath and @$: what ties one source text to others.
//
// The engine knows nothing of files. The import handler of the host decides what importing means.

#include "MacroExpander.h"

#include "ScannerErrors.h"
#include "qzUtils/FilePath.h"

namespace vorn {

namespace {

xstring LiteralString(const LSToken& token) {
    xstring value;
    token.GetLiteralString(value);
    return value;
}

}  // namespace

// The directive stays in the output, in the form that a parser of the output can read.
void MacroExpander::ProcessImportDirective() {
    const LSToken token = ReadToken();
    const xchar* pos = token.m_str.m_p1;
    xstring path;
    if (token == TOKEN_LEFT_PAREN) {
        path = ParseStringExpressionInBrackets("@import", false);
        AdvanceWritePos(m_str.m_p1, false);
        xstring directive("@import \"");
        directive += path;
        directive += '"';
        WriteCalculatedSubString(directive);
    } else if (token == TOKEN_DOUBLE_QUOTED_STRING) {
        path = LiteralString(token);
    } else {
        ThrowScannerError(pos, "Quoted string expected after 'import' when read ", token);
    }
    if (!m_importHandler->HandleImport(m_vf, path, pos))
        ThrowScannerError(pos, "Can't import file: ", path);
}

void MacroExpander::ProcessImportPathDirective() {
    const LSToken token = ReadToken();
    const xchar* pos = token.m_str.m_p1;
    xstring path;
    if (token == TOKEN_LEFT_PAREN)
        path = ParseStringExpressionInBrackets("@importpath", false);
    else if (token == TOKEN_DOUBLE_QUOTED_STRING)
        path = LiteralString(token);
    else
        ThrowScannerError(pos, "Quoted string expected after 'importpath' when read ", token);
    AdvanceWritePos(m_str.m_p1, false);
    if (!m_importHandler->HandleImportPath(path, pos))
        ThrowScannerError(pos, "@importpath directive not supported");
}

void MacroExpander::ProcessRelativePathDirective() {
    LSToken token = ReadToken();
    if (token != TOKEN_LEFT_PAREN)
        ThrowScannerError(token, "( expected after @relativepath when read ", token);
    SubString arg;
    token = ScanArgument(m_str, arg, TOKEN_RIGHT_PAREN);
    if (token != TOKEN_COMMA)
        ThrowScannerError(token, "Comma expected in @relativepath directive when read ", token);
    xstring path1 = EvaluateString(arg, "@relativepath");
    token = ScanArgument(m_str, arg, TOKEN_RIGHT_PAREN);
    if (token != TOKEN_RIGHT_PAREN)  // Kept: the two blanks in the message.
        ThrowScannerError(token, ") expected  in @relativepath directive when read ", token);
    xstring path2 = EvaluateString(arg, "@relativepath");
    AdvanceWritePos(m_str.m_p1, false);

    NormalisePath(path1);
    NormalisePath(path2);
    xstring result;
    CalcRelativePath(path1, path2, result);
    xstring quoted;
    MakeDoubleQuotedString(result, quoted);
    WriteCalculatedSubString(quoted);
}

void MacroExpander::ProcessDollarDefDirective() {
    LSToken token = ReadToken();
    if (token != TOKEN_IDENTIFIER)  // Kept: the message names @let.
        ThrowScannerError(token, "Identifier expected after @let when read ", token);
    const SubString name = token.m_str;
    ReadEqualsForVariableDefn(name);
    token = ReadToken();
    xstring value;
    if (token == TOKEN_LEFT_PAREN)
        value = ParseStringExpressionInBrackets("@$", false);
    else if (token == TOKEN_DOUBLE_QUOTED_STRING)
        value = LiteralString(token);
    else
        ThrowScannerError(token, "Quoted string expected after $", name, " definition when read ",
                          token);
    m_vf->m_fileScopeFrame->InsertDollarMacro(name.GetString(), value);
    AdvanceWritePos(m_str.m_p1, false);
}

}  // namespace vorn
