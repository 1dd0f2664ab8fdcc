// A reader that takes a text token by token and is always one token ahead.
//
// The tokens are views, and so are the positions of errors: the text must stay where it is for as
// long as any of them is used. One thread at a time may use a parser. After an exception it is
// not used again. What the scanner throws passes through every operation that reads.
#pragma once

#include "qzMacroExpander/LSToken.h"

namespace vorn {

class ParserBase {
public:
    xstring m_stringForToken;          // free for a client's use; the library never touches it
    LSToken m_token{TOKEN_UNDEF};      // the current token, which no rule has consumed yet
    LSToken m_prevToken{TOKEN_UNDEF};  // the one before it, for messages
    SubString m_str;                   // the text behind the current token

    // Starts on a text and reads its first token. A token that the caller has stored in m_token
    // becomes the previous one, so that messages can name what stands in front of the text.
    void Init(SubString s);

    // Makes the next token current; ordinary comments are passed over. At the end of the text it
    // is a TOKEN_END, however often one reads on.
    void ReadNextToken();

    EToken GetTokenType() const { return m_token.m_type; }
    LSToken& GetToken() { return m_token; }
    xstring GetTokenString() const { return m_token.GetTokenString(); }

    // Throws "Expected <expected> after <previous token> when read <current token>", at the
    // current token.
    [[noreturn]] void ThrowExpectedException(ConstStringZ expected) const;

    // Passes over a token of the given type; otherwise throws that desc was expected.
    void ParseGivenToken(EToken token, ConstStringZ desc);

    // Reads an identifier.
    xstring ParseIdentifier();

    // Reads identifiers and slashes, of which the first must be an identifier, and joins them
    // without what stood between: a / b gives a/b, and a b gives ab.
    xstring ParsePath();
};

}  // namespace vorn
