#include <memory>

#include "qzMacroExpander/Mpfw.h"
#include "qzUtils/FilePath.h"
#include "qzUtils/StringStream.h"
#include "qzUtils/Tracer.h"

namespace vorn {

namespace {

// The message is the parts in turn. It is built here, since files import one another: no stream
// takes room in the frame of a function that calls itself.
template <class Where, class... Parts>
[[noreturn, gnu::cold, gnu::noinline]] void ThrowAt(const Where& where, const Parts&... parts) {
    StringStream os(4096);
    (os << ... << parts);
    throw LexScannerException(os.GetString(), where);
}

[[gnu::cold, gnu::noinline]] void ReportToTrace(const MpfwSourceFileList& files,
                                                const LexScannerException& e) {
    TracerX os;
    files.WriteLexScannerError(os, e);
}

bool IsQuotedString(const LSToken& token) {
    return token == TOKEN_SINGLE_QUOTED_STRING || token == TOKEN_DOUBLE_QUOTED_STRING;
}

void RequireForwardSlashes(const xstring& path, const LSToken& token) {
    if (path.find('\\') != xstring::npos)
        ThrowAt(token, "Forward slashes must be used in ", token);
}

}  // namespace

// ---- files -------------------------------------------------------------------------------------

MpfwSourceFile* MpfwParser::AddFile(const xstring& localPath, SubString extra) {
    xstring buffer;
    if (!ReadStringFromFile(buffer, localPath, true))
        ThrowAt(m_token, "Couldn't open file ", localPath);
    buffer.append(extra);

    std::unique_ptr<MpfwSourceFile> owner(CreateMpfwSourceFile());
    MpfwSourceFile* srcFile = owner.get();
    srcFile->m_localPath = localPath;
    srcFile->m_buffer.swap(buffer);
    // The file joins the list in front of its expansion, so that errors in it can be located.
    m_frame.m_srcFileList.AddSrcFile(owner.release());
    try {
        MacroExpand(this, &m_frame.m_vf, srcFile->m_buffer, 0, 0, srcFile->m_expanded,
                    srcFile->m_pieces);
    } catch (const LexScannerException& e) {
        ReportToTrace(m_frame.m_srcFileList, e);
        return nullptr;
    }
    return srcFile;
}

bool MpfwParser::HandleImportPath(const xstring& importPath, const xchar*) {
    xstring path(importPath);
    ApplyMacros(path);
    NormalisePath(path);
    m_frame.m_importPaths.push_back(path);
    return true;
}

bool MpfwParser::HandleImport(VarFrame*, const xstring& importPath, const xchar* errorpos) {
    xstring path(importPath);
    ApplyMacros(path);
    xstring localPath;
    if (!ResolveImportPath(path, localPath))
        ThrowAt(errorpos, "Couldn't open file ", path);
    return AddFile(localPath, SubString()) != nullptr;
}

MpfwSourceFile* MpfwParser::CreateMpfwSourceFile() {
    return new MpfwSourceFile;
}

bool MpfwParser::ParseImportDirective() {
    if (m_token != TOKEN_AT)
        return false;
    ReadNextToken();
    if (m_token != "import")
        ThrowAt(m_token, "Syntax error: @", m_token);
    ReadNextToken();
    const xstring importPath = ParseQuotedString();
    xstring localPath;
    if (!ResolveImportPath(importPath, localPath))
        ThrowAt(m_prevToken, "Couldn't open file ", importPath);
    ProcessImportedFile(m_frame.m_srcFileList.FindSourceFile(localPath));
    ReadNextToken();
    return true;
}

// ---- strings -----------------------------------------------------------------------------------

void MpfwParser::ReadString(xstring& value) {
    if (m_token == TOKEN_LEFT_PAREN) {
        ReadNextToken();
        value = ParseString(false);
        ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
    } else if (IsQuotedString(m_token)) {
        m_token.GetLiteralString(value);
        ReadNextToken();
    } else {
        ThrowAt(m_token, "Expected quoted string when read ", m_token);
    }
    ApplyMacros(value);
}

xstring MpfwParser::ParseQuotedString() {
    if (!IsQuotedString(m_token))
        ThrowAt(m_token, "Expected quoted string when read ", m_token);
    xstring value;
    m_token.GetLiteralString(value);
    ApplyMacros(value);
    return value;
}

xstring MpfwParser::ParseFileOrDirName() {
    xstring name = ParseQuotedString();
    RequireForwardSlashes(name, m_token);
    return name;
}

bool MpfwParser::ApplyMacros(xstring& s) {
    return m_frame.m_vf.ApplyDollarMacros(s);
}

// ---- settings and dollar macros ----------------------------------------------------------------

void MpfwParser::ParseStringSettingHelper(const xstring& name, xstring& value) {
    if (m_token != TOKEN_DOLLAR)
        ThrowAt(m_token, "Expected '$' when read ", m_token);
    ReadNextToken();
    if (m_token.m_str != name)
        ThrowAt(m_token, "Expected '", name, "' when read ", m_token);
    ReadNextToken();
    ParseGivenToken(TOKEN_EQUAL, "=");
    if (m_token != TOKEN_DOUBLE_QUOTED_STRING)
        ThrowAt(m_token, "Expected quoted string when read ", m_token);
    m_token.GetLiteralString(value);
}

void MpfwParser::ParseStringSetting(const xstring& name, xstring& value) {
    ParseStringSettingHelper(name, value);
    ReadNextToken();
}

void MpfwParser::ParsePathSetting(const xstring& name, xstring& value) {
    ParseStringSettingHelper(name, value);
    RequireForwardSlashes(value, m_token);
    if (!value.empty() && value[value.size() - 1] == '/')
        ThrowAt(m_token, "Path can't end with a trailing slash : ", m_token);
    ReadNextToken();
}

bool MpfwParser::ParseMacroDef(xstring& name, xstring& value) {
    if (m_token != TOKEN_DOLLAR)
        return false;
    ReadNextToken();
    name = ParseIdentifier();
    ParseGivenToken(TOKEN_EQUAL, "=");
    if (m_token == "path") {
        ReadNextToken();
        ReadString(value);
        NormalisePath(value);
    } else {
        ReadString(value);
    }
    m_frame.m_vf.InsertDollarMacro(name, value);
    return true;
}

bool MpfwParser::ParseMacroDef() {
    xstring name;
    xstring value;
    return ParseMacroDef(name, value);
}

}  // namespace vorn
