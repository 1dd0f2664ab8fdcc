// Tokens, the scanner that reads them, the error type of all scanning, and the functions that cut
// arguments and blocks out of a text.
//
// The scanner has no state: a SubString taken by reference is the position, and whoever wants to
// look ahead scans a copy of it. Nothing is copied from the text. Tokens, arguments, blocks and
// the positions of errors point into it, so it must outlive them. Any number of threads may scan
// at once. Reading a token allocates nothing.
//
// Every fault is thrown as LexScannerException. The caller's SubString then stands at the place
// that the scanner had reached.
#pragma once

#include "qzUtils/IException.h"
#include "qzUtils/SubString.h"

namespace vorn {

enum EToken {
    TOKEN_UNDEF = -1,   // no token; also marks an empty entry in the operator tables
    TOKEN_END = 10000,  // the end of the text
    TOKEN_COMMENT,
    TOKEN_PREPROC_COMMENT,  // @ directly followed by a comment
    TOKEN_INTEGER,
    TOKEN_HEX_INTEGER,
    TOKEN_FLOAT,
    TOKEN_SINGLE_QUOTED_STRING,
    TOKEN_DOUBLE_QUOTED_STRING,
    TOKEN_IDENTIFIER,
    TOKEN_LESS,                 // <
    TOKEN_GREATER,              // >
    TOKEN_AMPERSAND,            // &
    TOKEN_VLINE,                // |
    TOKEN_CARET,                // ^
    TOKEN_LESS_EQUAL,           // <=
    TOKEN_GREATER_EQUAL,        // >=
    TOKEN_AMPERSAND_EQUAL,      // &=
    TOKEN_VLINE_EQUAL,          // |=
    TOKEN_CARET_EQUAL,          // ^=
    TOKEN_DBL_LESS,             // << and also --
    TOKEN_DBL_GREATER,          // >>
    TOKEN_DBL_AMPERSAND,        // &&
    TOKEN_DBL_VLINE,            // ||
    TOKEN_DBL_CARET,            // ^^
    TOKEN_DBL_LESS_EQUAL,       // <<=
    TOKEN_DBL_GREATER_EQUAL,    // >>=
    TOKEN_DBL_AMPERSAND_EQUAL,  // &&=
    TOKEN_DBL_VLINE_EQUAL,      // ||=
    TOKEN_DBL_CARET_EQUAL,      // ^^=
    TOKEN_PLUS,                 // +
    TOKEN_MINUS,                // -
    TOKEN_ASTERISK,             // *
    TOKEN_FORWARD_SLASH,        // /
    TOKEN_PERCENT,              // %
    TOKEN_EXCLAM,               // !
    TOKEN_EQUAL,                // =
    TOKEN_QUESTION,             // ?
    TOKEN_DBL_PLUS,             // ++
    TOKEN_DBL_MINUS,            // declared; the scanner never produces it
    TOKEN_PLUS_EQUAL,           // +=
    TOKEN_MINUS_EQUAL,          // -=
    TOKEN_ASTERISK_EQUAL,       // *=
    TOKEN_SLASH_EQUAL,          // /=
    TOKEN_PERCENT_EQUAL,        // %=
    TOKEN_EXCLAM_EQUAL,         // !=
    TOKEN_DBL_EQUAL,            // ==
    TOKEN_QUESTION_EQUAL,       // ?=
    TOKEN_MINUS_GREATER,        // ->
    TOKEN_COLON,                // :
    TOKEN_COLON_COLON,          // ::
    TOKEN_DOLLAR,               // $
    TOKEN_DOLLAR_DOLLAR,        // $$
    TOKEN_DOT,                  // .
    TOKEN_COMMA,                // ,
    TOKEN_SEMICOLON,            // ;
    TOKEN_LEFT_PAREN,           // (
    TOKEN_RIGHT_PAREN,          // )
    TOKEN_LEFT_CURLY,           // {
    TOKEN_RIGHT_CURLY,          // }
    TOKEN_LEFT_SQUARE,          // [
    TOKEN_RIGHT_SQUARE,         // ]
    TOKEN_TILDE,                // ~
    TOKEN_AT,                   // @
    TOKEN_BACK_SLASH,           // backslash
    TOKEN_BACK_QUOTE,           // `
    TOKEN_HASH,                 // #
};

static_assert(TOKEN_IDENTIFIER == 10008 && TOKEN_DBL_CARET_EQUAL == 10028
              && TOKEN_MINUS_GREATER == 10047 && TOKEN_HASH == 10065);

// One token: its type and its exact source text, with the delimiters and the prefix of a string
// and the @ of a macro comment. The text is a view of what was scanned.
class QZ_VIEW LSToken {
public:
    EToken m_type;
    SubString m_str;

    LSToken(EToken type) : m_type(type) {}
    LSToken(EToken type, SubString s) : m_type(type), m_str(s) {}
    LSToken(EToken type, const xchar* p1, const xchar* p2) : m_type(type), m_str(p1, p2) {}

    // Equal in type and in text, byte for byte, wherever the texts stand.
    bool operator==(const LSToken& other) const {
        return m_type == other.m_type && m_str == other.m_str;
    }
    bool operator!=(const LSToken& other) const { return !(*this == other); }
    bool operator==(EToken type) const { return m_type == type; }
    bool operator!=(EToken type) const { return m_type != type; }
    bool operator==(ConstStringZ text) const { return m_str == text; }
    bool operator!=(ConstStringZ text) const { return m_str != text; }

    // Whether there is a token: its type is neither TOKEN_END nor TOKEN_UNDEF.
    explicit operator bool() const { return m_type != TOKEN_END && m_type != TOKEN_UNDEF; }

    EToken GetType() const { return m_type; }
    xstring GetTokenString() const { return m_str.GetString(); }

    // The values of literals. These trust the token and test nothing: the caller chooses the one
    // that fits the type. REQUIRES: a token that the scanner delivered, of the type named.

    // The content of a string token, without prefix, quotes and escapes. A \x is no escape here:
    // it gives an x, and its digits follow as they stand.
    void GetLiteralString(xstring& s) const;
    // The byte of a literal that LsScanLiteralCharacter has accepted.
    xchar GetLiteralCharacter() const;
    // A TOKEN_INTEGER; the value wraps.
    int32 GetLiteralInt32() const;
    int64 GetLiteralInt64() const;
    // A TOKEN_HEX_INTEGER; only the last 8 or 16 digits count.
    int32 GetLiteralHexInt32() const;
    int64 GetLiteralHexInt64() const;
    // A TOKEN_FLOAT or TOKEN_INTEGER, whatever the locale.
    double GetLiteralDouble() const;
};

// Writes a token for a message: its source text, or EOS where that is empty.
xostream& operator<<(xostream& os, const LSToken& x);

// The error of scanning, parsing and expansion: a message and the place in some text where the
// error lies. The place is a bare address. It says something as long as the text lives, and it
// must not be dereferenced: the text may have been a temporary one.
class LexScannerException : public IException {
public:
    xstring m_description;
    xstring m_path;             // empty unless a client has set it
    ssize_t m_lineNumber = -1;  // counted from 1; -1 unless a client has set it
    const xchar* m_pos;         // may be null

    LexScannerException(const xstring& description, const xchar* pos)
        : m_description(description), m_pos(pos) {}
    LexScannerException(const xstring& description, SubString s)
        : m_description(description), m_pos(s.m_p1) {}
    LexScannerException(const xstring& description, LSToken t)
        : m_description(description), m_pos(t.m_str.m_p1) {}
    LexScannerException(const LexScannerException&) = default;
    LexScannerException& operator=(const LexScannerException&) = default;
    ~LexScannerException() override;

    // Writes "path(line) : error : text", "Line n: error : text" or "error : text", by what is
    // set. No line end follows.
    void Write(xostream& os) const override;

    // The description, zero-terminated; valid until m_description changes.
    virtual ConstStringZ what() const;
};

// ---- single tokens -----------------------------------------------------------------------------

// The next token behind white space; TOKEN_END, with the empty rest of s, at the end. With
// returnComments false, ordinary comments are passed over as well; macro comments never are.
LSToken LsScanToken(SubString& s, bool returnComments);

// Reads one token that starts at s. REQUIRES: s is not empty and starts with no white space.
EToken LsScanTokenHelper(SubString& s);

// TOKEN_INTEGER, TOKEN_HEX_INTEGER or TOKEN_FLOAT; TOKEN_UNDEF, with s as it was, where s does
// not start with a digit. REQUIRES: s is not empty.
EToken LsScanNumber(SubString& s);

// Reads a string with an optional raw prefix, r or R. False, with s as it was, if none starts
// here. name says in messages what is being read. REQUIRES: s is not empty.
bool LsScanLiteralString(SubString& s, xchar delimiter, ConstStringZ name);

// Reads one character, or one escape, in single quotes; false if s does not start with the quote.
// The tokeniser itself has no such token. REQUIRES: s is not empty.
bool LsScanLiteralCharacter(SubString& s);

// Reads a backslash and its escape; false if s does not start with a backslash. Tests the form
// of the escape only. REQUIRES: s is not empty.
bool LsScanEscapeCharacter(SubString& s);

// Reads an ordinary comment: // up to the line feed, or /* */. False if none starts here.
bool LsScanComment(SubString& s);

// Reads one token, which must be of the given type; otherwise throws desc at the token.
void ReadGivenToken(SubString& s, EToken type, ConstStringZ desc);

// ---- literals ----------------------------------------------------------------------------------

// Decodes a quoted string that did not come from the scanner: s must start with a quote, and what
// stands behind the matching one is ignored. Unlike GetLiteralString it knows \x and two digits.
// Positions of errors lie in s.
void UnstringifyQuotedString(SubString s, xostream& os);

// ---- arguments and blocks ----------------------------------------------------------------------
//
// These find where a text ends without expanding it. They read it as tokens, so that a bracket or
// comma in a string or comment does not count, and return views of the source as it stands.

// Drops spaces and tabs from the end of s; returns their width, a tab counting 4.
ssize_t ScanBackwardsThroughSpacesAndTabs(SubString& s);

// Reads one argument of a list whose opening bracket has been read, and the token that ends it,
// which is returned: a comma or rightBracket at depth 0. Of the brackets only the kind that
// opened a nesting is counted until it closes. An argument in back quotes is taken as it stands,
// and then the next token is returned whatever it is. Throws "Met EOS while reading argument ".
LSToken ScanArgument(SubString& s, SubString& arg, EToken rightBracket);

// The text inside a pair of brackets, without white space at its start and without white space
// and comments at its end. With readInitialBracket the opening bracket is still to be read.
SubString ScanBrackettedSection(SubString& s, bool readInitialBracket, EToken leftBracket,
                                EToken rightBracket);
SubString ScanRndBrackettedSection(SubString& s, bool readInitialBracket);
SubString ScanSquareBrackettedSection(SubString& s, bool readInitialBracket);
SubString ScanCurlyBrackettedSection(SubString& s, bool readInitialBracket);

// Reads the body of a directive in one of three forms: a bracket on the same line; the rest of
// the line, unless requireBrackets; or a bracket on a later line, whose text starts behind the
// indentation of its first line, and indentation is set to the width of that. In the other forms
// indentation is 0. The names stand for the brackets in messages.
SubString ScanStringBlock(SubString& s, ssize_t& indentation, EToken leftBracket,
                          EToken rightBracket, ConstStringZ leftBracketName,
                          ConstStringZ rightBracketName, bool requireBrackets);

// A block in { }, or the rest of the line.
SubString ScanSubstString(SubString& s, ssize_t& indentation);

// A block in ( ), which are required.
SubString ScanRndBrackettedString(SubString& s, ssize_t& indentation);

// Whether two texts are the same sequence of tokens, layout and ordinary comments aside.
bool SubStringsAreTokenEquivalent(SubString s1, SubString s2);

}  // namespace vorn
