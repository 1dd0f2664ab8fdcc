#include "qzMacroExpander/ParserBase.h"

#include "qzMacroExpander/src/ScannerErrors.h"

namespace vorn {

void ParserBase::Init(SubString s) {
    m_str = s;
    ReadNextToken();
}

void ParserBase::ReadNextToken() {
    m_prevToken = m_token;
    m_token = LsScanToken(m_str, false);
}

void ParserBase::ThrowExpectedException(ConstStringZ expected) const {
    ThrowScannerError(m_token, "Expected ", expected, " after ", m_prevToken, " when read ",
                      m_token);
}

void ParserBase::ParseGivenToken(EToken token, ConstStringZ desc) {
    if (m_token != token)
        ThrowExpectedException(desc);
    ReadNextToken();
}

xstring ParserBase::ParseIdentifier() {
    if (m_token != TOKEN_IDENTIFIER)
        ThrowExpectedException("identifier");
    const xstring identifier = m_token.GetTokenString();
    ReadNextToken();
    return identifier;
}

xstring ParserBase::ParsePath() {
    if (m_token != TOKEN_IDENTIFIER)
        ThrowExpectedException("identifier (for path)");
    xstring path;
    while (m_token == TOKEN_IDENTIFIER || m_token == TOKEN_FORWARD_SLASH) {
        path += m_token.m_str;
        ReadNextToken();
    }
    return path;
}

}  // namespace vorn
