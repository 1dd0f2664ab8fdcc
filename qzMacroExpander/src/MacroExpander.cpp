// The loop, the dispatch of directives, and the entry points.

#include "MacroExpander.h"

#include <algorithm>
#include <iterator>

#include "ScannerErrors.h"
#include "qzMacroExpander/TextOrigins.h"

namespace vorn {

MacroExpander::MacroExpander(ImportHandler* importHandler, VarFrame* vf, SubString str,
                             ssize_t srcIndent, ssize_t dstIndent, ExpandedOutput& output,
                             KeptText text)
    : m_importHandler(importHandler),
      m_vf(vf),
      m_output(output),
      m_srcIndent(srcIndent),
      m_dstIndent(dstIndent),
      m_origStr(str),
      m_str(str),
      m_startDirectivePos(nullptr),
      m_endDirectivePos(nullptr),
      m_writePos(str.m_p1),
      m_text(std::move(text)) {}

// ---- the loop ----------------------------------------------------------------------------------

// Ordinary text reaches the stream in long runs. Nobody sees that it comes late: it is there
// before any other code runs, and when Expand is left.
void MacroExpander::Expand() {
    try {
        ExpandTokens();
    } catch (...) {
        m_output.WriteDeferred();
        throw;
    }
    m_output.WriteDeferred();
}

void MacroExpander::ExpandTokens() {
    while (true) {
        ScanLineLevel();
        const xchar* whiteSpacePos = m_str.m_p1;
        const LSToken token = LsScanToken(m_str, true);
        if (token == TOKEN_END)
            break;
        m_startDirectivePos = token.m_str.m_p1;
        m_endDirectivePos = token.m_str.m_p2;
        ProcessToken(token, whiteSpacePos);
        DeferUpTo(m_str.m_p1);
    }
    DeferUpTo(m_str.m_p1);
}

// Passes over blanks and, writing what is pending, over line ends with the source indentation
// behind them. A carriage return is left to the token scanner.
void MacroExpander::ScanLineLevel() {
    SubString s = m_str;
    while (s && (*s == ' ' || *s == '\t' || *s == '\n')) {
        const bool lineEnd = *s == '\n';
        ++s;
        if (lineEnd) {
            DeferUpTo(s.m_p1);
            ScanIndentation(s, m_srcIndent, 4);
            m_writePos = s.m_p1;
        }
    }
    m_str = s;
}

// Acts on a token. Whatever is pending afterwards is ordinary text, and the loop writes it.
void MacroExpander::ProcessToken(const LSToken& token, const xchar* whiteSpacePos) {
    switch (token.m_type) {
    case TOKEN_IDENTIFIER:
        if (LSVariable* var = FindVariable(token.m_str)) {
            AdvanceWritePos(whiteSpacePos, true);
            InvokeVariable(var);
        }
        return;
    case TOKEN_DOUBLE_QUOTED_STRING:
        return ProcessQuotedString(token, whiteSpacePos);
    case TOKEN_PREPROC_COMMENT:
        return ScanOverWhiteSpaceAfterDirective();
    case TOKEN_AT:
        m_output.WriteDeferred();
        return ProcessAt(whiteSpacePos);
    default:
        return;
    }
}

void MacroExpander::ProcessQuotedString(const LSToken& token, const xchar* whiteSpacePos) {
    const FileScopeVarFrame* frame = m_vf->m_fileScopeFrame;
    if (frame == nullptr
        || std::find(token.m_str.begin(), token.m_str.end(), '$') == token.m_str.end())
        return;
    xstring text = token.GetTokenString();
    if (!frame->ApplyDollarMacros(text))
        return;
    AdvanceWritePos(whiteSpacePos, true);
    WriteCalculatedSubString(text);
    AdvanceWritePos(m_str.m_p1, false);
}

void MacroExpander::ScanOverWhiteSpaceAfterDirective() {
    const xchar* lastLineFeedPos = nullptr;
    SubString s = m_str;
    for (; s && (*s == ' ' || *s == '\t' || *s == '\n'); ++s) {
        if (*s == '\n')
            lastLineFeedPos = s.m_p1;
    }
    m_str = s;
    if (lastLineFeedPos != nullptr)
        m_str.setbegin(lastLineFeedPos + 1);
    ScanIndentation(m_str, m_srcIndent, 4);
    AdvanceWritePos(m_str.m_p1, false);
}

// ---- directives --------------------------------------------------------------------------------

namespace {

struct Directive {
    SubString name;
    bool flushFirst;       // whether the blanks in front of the @ are written
    ConstStringZ refusal;  // the error without an import handler; null where none is needed
    void (*process)(MacroExpander& expander, const LSToken& name);
};

constexpr ConstStringZ s_noImport = "@import statement not allowed here";
constexpr ConstStringZ s_noImportPath = "@importpath statement not allowed here";

using E = MacroExpander;
using T = const LSToken;

// Tested in this order. Handlers without a flush drop the blanks in front of them themselves, so
// that a statement alone on its line leaves nothing behind. A stray @elseif is an unknown name
// like any other, and so ordinary text.
// clang-format off
constexpr Directive s_directives[] = {
    {"import",       false, s_noImport,     [](E& e, T&) { e.ProcessImportDirective(); }},
    {"importpath",   false, s_noImportPath, [](E& e, T&) { e.ProcessImportPathDirective(); }},
    {"relativepath", false, nullptr,        [](E& e, T&) { e.ProcessRelativePathDirective(); }},
    {"str",          true,  nullptr, [](E& e, T&) { e.ProcessStrDirective(false, SLM_ASCII); }},
    {"strx",         true,  nullptr, [](E& e, T&) { e.ProcessStrDirective(true, SLM_ASCII); }},
    {"strW",         true,  nullptr, [](E& e, T&) { e.ProcessStrDirective(false, SLM_WIDE); }},
    {"strxW",        true,  nullptr, [](E& e, T&) { e.ProcessStrDirective(true, SLM_WIDE); }},
    {"unstr",        true,  nullptr, [](E& e, T&) { e.ProcessUnstrDirective(); }},
    {"scope",        true,  nullptr, [](E& e, T&) { e.ProcessScopeDirective(); }},
    {"if",           true,  nullptr, [](E& e, T&) { e.ProcessIfDirective(); }},
    {"else",         false, nullptr, [](E&, T& name) {
         ThrowScannerError(name, "@else with no matching @if directive"); }},
    {"while",        true,  nullptr, [](E& e, T&) { e.ProcessWhileDirective(); }},
    {"for",          true,  nullptr, [](E& e, T&) { e.ProcessForDirective(); }},
    {"print",        false, nullptr, [](E& e, T&) { e.ProcessPrintDirective(false); }},
    {"println",      false, nullptr, [](E& e, T&) { e.ProcessPrintDirective(true); }},
    {"assert",       false, nullptr, [](E& e, T&) { e.ProcessAssertDirective(); }},
    {"assertfails",  false, nullptr, [](E& e, T&) { e.ProcessAssertFailsDirective(); }},
    {"fail",         false, nullptr, [](E& e, T&) { e.ProcessFailDirective(); }},
    {"def",          false, nullptr, [](E& e, T&) { e.ProcessDefDirective(false, false, false); }},
    {"exportdef",    false, nullptr, [](E& e, T&) { e.ProcessDefDirective(true, false, false); }},
    {"nakeddef",     false, nullptr, [](E& e, T&) { e.ProcessDefDirective(false, true, false); }},
    {"defpython",    false, nullptr, [](E& e, T&) { e.ProcessDefDirective(false, false, true); }},
    {"runpython",    false, nullptr, [](E& e, T&) { e.ProcessRunPythonDirective(); }},
    {"let",          false, nullptr, [](E& e, T&) { e.ProcessLetDirective(); }},
    {"quote",        true,  nullptr, [](E& e, T&) { e.ProcessQuoteDirective(); }},
};
// clang-format on

}  // namespace

void MacroExpander::ProcessAt(const xchar* whiteSpacePos) {
    const LSToken token = ReadToken();
    switch (token.m_type) {
    case TOKEN_IDENTIFIER:
        return ProcessNamedDirective(token, whiteSpacePos);
    case TOKEN_AT:
        AdvanceWritePos(whiteSpacePos, true);
        return AdvanceWritePos(m_str.m_p1, false);
    case TOKEN_LEFT_SQUARE:
        AdvanceWritePos(whiteSpacePos, true);
        return ProcessSqrBracketDirective();
    case TOKEN_LEFT_PAREN:
        AdvanceWritePos(whiteSpacePos, true);
        return ProcessRndBracketDirective();
    case TOKEN_DOLLAR:
        if (m_importHandler == nullptr)
            return;
        AdvanceWritePos(whiteSpacePos, true);
        return ProcessDollarDefDirective();
    default:
        return;
    }
}

void MacroExpander::ProcessNamedDirective(const LSToken& name, const xchar* whiteSpacePos) {
    const auto directive =
        std::find_if(std::begin(s_directives), std::end(s_directives),
                     [&name](const Directive& d) { return d.name == name.m_str; });
    if (directive == std::end(s_directives))
        return ProcessHostVariable(name, whiteSpacePos);
    if (directive->refusal != nullptr && m_importHandler == nullptr)
        ThrowScannerError(name, directive->refusal);
    if (directive->flushFirst)
        AdvanceWritePos(whiteSpacePos, true);
    directive->process(*this, name);
}

// A name that is no directive stands for a value that the host has put into a frame under the
// name with its @, or else for nothing: then it is ordinary text.
void MacroExpander::ProcessHostVariable(const LSToken& name, const xchar* whiteSpacePos) {
    xstring key("@");
    key += name.m_str;
    const LSVariable* var = m_vf->Find2(key);
    if (var == nullptr || var->GetType() == LSV_MACRO)
        return;
    AdvanceWritePos(whiteSpacePos, true);
    WriteCalculatedSubString(static_cast<const LSValueVariable*>(var)->m_value);
    AdvanceWritePos(m_str.m_p1, false);
}

// ---- nested texts and entry points -------------------------------------------------------------

namespace {

// Output that is wanted as a string. Room is made for what a text of mostly ordinary code gives:
// as many bytes as it has itself, and a piece for every eight of them. What stays unused of a
// large block costs no memory, and growing one is most of what the pieces cost.
class StringOutput final : public IOutputStream {
public:
    explicit StringOutput(SubString str) {
        m_text.reserve(str.size());
        m_output.m_pieces.m_pieces.reserve(1 + str.size() / 8);
    }

    void WriteStream(const void* p, ssize_t n) override {
        const auto* bytes = static_cast<const char*>(p);
        m_text.append(bytes, bytes + n);
    }
    void FlushStream() override {}

    xstring m_text;
    xostream m_os{*this};
    ExpandedOutput m_output{m_os};
};

}  // namespace

void ExpandToString(VarFrame* vf, SubString s, ssize_t srcIndent, const KeptText& text,
                    xstring& result, OutputPieces* pieces) {
    StringOutput output(s);
    MacroExpander(nullptr, vf, s, srcIndent, 0, output.m_output, text).Expand();
    result = std::move(output.m_text);
    if (pieces != nullptr)
        output.m_output.GetPieces(*pieces);
}

void KeepOrigin(const VarFrame& vf, const KeptText& text, const OutputPieces& pieces) {
    const FileScopeVarFrame* file = vf.GetFileScopeVarFrame();
    if (file != nullptr && file->m_textOrigins != nullptr)
        file->m_textOrigins->Add(text, pieces);
}

xstring MacroExpander::ExpandToString(SubString s, ssize_t srcIndent) {
    VarFrame localFrame(m_vf);
    xstring result;
    vorn::ExpandToString(&localFrame, s, srcIndent, m_text, result);
    return result;
}

void MacroExpander::ExpandInPlace(SubString s, ssize_t srcIndent, ssize_t dstIndent) {
    VarFrame localFrame(m_vf);
    ExpandInPlace(&localFrame, s, srcIndent, dstIndent);
}

void MacroExpander::ExpandInPlace(VarFrame* vf, SubString s, ssize_t srcIndent, ssize_t dstIndent) {
    MacroExpander(nullptr, vf, s, srcIndent, dstIndent, m_output, m_text).Expand();
}

bool ImportHandler::HandleImportPath(const xstring&, const xchar*) {
    return false;
}

void MacroExpand(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, ExpandedOutput& output) {
    MacroExpander(importHandler, vf, str, srcIndent, dstIndent, output).Expand();
}

void MacroExpand(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& result) {
    StringOutput output(str);
    MacroExpand(importHandler, vf, str, srcIndent, dstIndent, output.m_output);
    result = std::move(output.m_text);
}

void MacroExpand(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& result, OutputPieces& pieces) {
    StringOutput output(str);
    MacroExpand(importHandler, vf, str, srcIndent, dstIndent, output.m_output);
    result = std::move(output.m_text);
    output.m_output.GetPieces(pieces);
}

}  // namespace vorn
