#include "qzMacroExpander/LSToken.h"

#include <locale.h>
#include <stdlib.h>

#include <array>
#include <charconv>
#include <cstring>
#include <iterator>

#include "qzMacroExpander/src/ScannerErrors.h"
#include "qzUtils/StringExt.h"

namespace vorn {

// ---- errors ------------------------------------------------------------------------------------

LexScannerException::~LexScannerException() = default;

void LexScannerException::Write(xostream& os) const {
    if (!m_path.empty()) {
        os << m_path;
        if (m_lineNumber >= 0)
            os << '(' << m_lineNumber << ')';
        os << " : ";
    } else if (m_lineNumber >= 0) {
        os << "Line " << m_lineNumber << ": ";
    }
    os << "error : " << m_description;
}

ConstStringZ LexScannerException::what() const {
    return m_description.c_str();
}

namespace {

// What stands at the position, for a message.
HumanReadableCharInSubString Readable(SubString s) {
    return HumanReadableCharInSubString(s);
}

// ---- the operators -----------------------------------------------------------------------------

// An operator of four forms stands alone, before =, twice, and twice before =.
namespace four_forms {
constexpr xchar chars[] = {'+', '<', '>', '&', '|', '^'};
constexpr EToken tokens1[] = {TOKEN_PLUS,      TOKEN_LESS,  TOKEN_GREATER,
                              TOKEN_AMPERSAND, TOKEN_VLINE, TOKEN_CARET};
constexpr EToken tokens2[] = {TOKEN_PLUS_EQUAL,      TOKEN_LESS_EQUAL,  TOKEN_GREATER_EQUAL,
                              TOKEN_AMPERSAND_EQUAL, TOKEN_VLINE_EQUAL, TOKEN_CARET_EQUAL};
constexpr EToken tokens3[] = {TOKEN_DBL_PLUS,      TOKEN_DBL_LESS,  TOKEN_DBL_GREATER,
                              TOKEN_DBL_AMPERSAND, TOKEN_DBL_VLINE, TOKEN_DBL_CARET};
constexpr EToken tokens4[] = {
    TOKEN_UNDEF,           TOKEN_DBL_LESS_EQUAL, TOKEN_DBL_GREATER_EQUAL, TOKEN_DBL_AMPERSAND_EQUAL,
    TOKEN_DBL_VLINE_EQUAL, TOKEN_DBL_CARET_EQUAL};
}  // namespace four_forms

// An operator of two forms stands alone and before =.
namespace two_forms {
constexpr xchar chars[] = {'*', '/', '%', '!', '=', '?'};
constexpr EToken tokens1[] = {TOKEN_ASTERISK, TOKEN_FORWARD_SLASH, TOKEN_PERCENT,
                              TOKEN_EXCLAM,   TOKEN_EQUAL,         TOKEN_QUESTION};
constexpr EToken tokens2[] = {TOKEN_ASTERISK_EQUAL, TOKEN_SLASH_EQUAL, TOKEN_PERCENT_EQUAL,
                              TOKEN_EXCLAM_EQUAL,   TOKEN_DBL_EQUAL,   TOKEN_QUESTION_EQUAL};
}  // namespace two_forms

// These stand alone and twice.
namespace doubling {
constexpr xchar chars[] = {':', '$'};
constexpr EToken tokens1[] = {TOKEN_COLON, TOKEN_DOLLAR};
constexpr EToken tokens2[] = {TOKEN_COLON_COLON, TOKEN_DOLLAR_DOLLAR};
}  // namespace doubling

// These have no longer form.
namespace one_form {
constexpr xchar chars[] = {'#', '.', ',', ';', '(', ')', '{', '}', '[', ']', '~', '@', '\\', '`'};
constexpr EToken tokens1[] = {
    TOKEN_HASH,        TOKEN_DOT,        TOKEN_COMMA,       TOKEN_SEMICOLON,   TOKEN_LEFT_PAREN,
    TOKEN_RIGHT_PAREN, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE,
    TOKEN_TILDE,       TOKEN_AT,         TOKEN_BACK_SLASH,  TOKEN_BACK_QUOTE};
}  // namespace one_form

// ---- what a byte starts ------------------------------------------------------------------------

enum Start : uint8 {
    START_NOTHING,
    START_IDENTIFIER,
    START_IDENTIFIER_OR_RAW_STRING,  // r R
    START_NUMBER,
    START_STRING,
    START_SLASH,  // a comment, or an operator of two forms
    START_AT,     // a macro comment, or an operator of one form
    START_MINUS,
    START_FOUR_FORMS,
    START_TWO_FORMS,
    START_DOUBLING,
    START_ONE_FORM,
};

struct StartOfToken {
    Start start;
    uint8 column;  // of an operator, in the tables of its group
};

using StartTable = std::array<StartOfToken, 256>;

template <std::size_t N>
constexpr void AddOperators(StartTable& table, Start start, const xchar (&chars)[N]) {
    for (std::size_t column = 0; column < N; ++column)
        table[static_cast<uint8>(chars[column])] = {start, static_cast<uint8>(column)};
}

constexpr StartTable MakeStartTable() {
    StartTable table{};
    for (std::size_t c = 0; c < table.size(); ++c) {
        if (IsCharOf(static_cast<xchar>(c), CHAR_IDENTIFIER_START))
            table[c].start = START_IDENTIFIER;
        else if (IsDigit(static_cast<xchar>(c)))
            table[c].start = START_NUMBER;
    }
    table['r'].start = table['R'].start = START_IDENTIFIER_OR_RAW_STRING;
    table['\''].start = table['"'].start = START_STRING;
    AddOperators(table, START_FOUR_FORMS, four_forms::chars);
    AddOperators(table, START_TWO_FORMS, two_forms::chars);
    AddOperators(table, START_DOUBLING, doubling::chars);
    AddOperators(table, START_ONE_FORM, one_form::chars);
    table['-'].start = START_MINUS;
    table['/'].start = START_SLASH;
    table['@'].start = START_AT;
    return table;
}

constexpr StartTable s_startTable = MakeStartTable();

// ---- the kinds of token ------------------------------------------------------------------------

// Consumes the byte at the position if it is c.
bool ScanByte(SubString& s, xchar c) {
    if (!s || *s != c)
        return false;
    ++s;
    return true;
}

EToken ScanIdentifierToken(SubString& s) {
    ScanIdentifier(s);
    return TOKEN_IDENTIFIER;
}

EToken ScanStringToken(SubString& s, xchar delimiter) {
    if (delimiter == '"') {
        LsScanLiteralString(s, delimiter, "double quoted string");
        return TOKEN_DOUBLE_QUOTED_STRING;
    }
    LsScanLiteralString(s, delimiter, "single quoted string");
    return TOKEN_SINGLE_QUOTED_STRING;
}

EToken ScanIdentifierOrRawString(SubString& s) {
    const bool isString = s.size() >= 2 && (s[1] == '\'' || s[1] == '"');
    return isString ? ScanStringToken(s, s[1]) : ScanIdentifierToken(s);
}

EToken ScanMinus(SubString& s) {
    ++s;
    // Kept: -- is the same token as <<. Texts written for the language rely on the type that a
    // pair of minus signs has always had.
    if (ScanByte(s, '-'))
        return TOKEN_DBL_LESS;
    if (ScanByte(s, '='))
        return TOKEN_MINUS_EQUAL;
    return ScanByte(s, '>') ? TOKEN_MINUS_GREATER : TOKEN_MINUS;
}

EToken ScanFourForms(SubString& s, uint8 column) {
    using namespace four_forms;
    const xchar* const start = s.m_p1;
    ++s;
    if (!ScanByte(s, chars[column]))
        return ScanByte(s, '=') ? tokens2[column] : tokens1[column];
    if (!ScanByte(s, '='))
        return tokens3[column];
    if (tokens4[column] == TOKEN_UNDEF)
        ThrowScannerError(s, "Invalid token ", SubString(start, s.m_p1));
    return tokens4[column];
}

EToken ScanTwoForms(SubString& s, uint8 column) {
    ++s;
    return ScanByte(s, '=') ? two_forms::tokens2[column] : two_forms::tokens1[column];
}

EToken ScanDoubling(SubString& s, uint8 column) {
    const xchar c = *s;
    ++s;
    return ScanByte(s, c) ? doubling::tokens2[column] : doubling::tokens1[column];
}

EToken ScanOneForm(SubString& s, uint8 column) {
    ++s;
    return one_form::tokens1[column];
}

// A macro comment, with no blank between its @ and the comment, or else the @ alone.
EToken ScanAt(SubString& s, uint8 column) {
    SubString rest = s;
    ++rest;
    if (!LsScanComment(rest))
        return ScanOneForm(s, column);
    s = rest;
    return TOKEN_PREPROC_COMMENT;
}

}  // namespace

// ---- single tokens -----------------------------------------------------------------------------

LSToken LsScanToken(SubString& s, bool returnComments) {
    while (true) {
        ScanWhiteSpace(s);
        if (!s)
            return LSToken(TOKEN_END, s);
        const xchar* const start = s.m_p1;
        const EToken type = LsScanTokenHelper(s);
        if (type != TOKEN_COMMENT || returnComments)
            return LSToken(type, start, s.m_p1);
    }
}

// No two kinds of token start with the same byte but for the three that the table tells apart, so
// the first byte decides.
EToken LsScanTokenHelper(SubString& s) {
    const auto [start, column] = s_startTable[static_cast<uint8>(*s)];
    switch (start) {
    case START_IDENTIFIER:
        return ScanIdentifierToken(s);
    case START_IDENTIFIER_OR_RAW_STRING:
        return ScanIdentifierOrRawString(s);
    case START_NUMBER:
        return LsScanNumber(s);
    case START_STRING:
        return ScanStringToken(s, *s);
    case START_SLASH:
        return LsScanComment(s) ? TOKEN_COMMENT : ScanTwoForms(s, column);
    case START_AT:
        return ScanAt(s, column);
    case START_MINUS:
        return ScanMinus(s);
    case START_FOUR_FORMS:
        return ScanFourForms(s, column);
    case START_TWO_FORMS:
        return ScanTwoForms(s, column);
    case START_DOUBLING:
        return ScanDoubling(s, column);
    case START_ONE_FORM:
        return ScanOneForm(s, column);
    case START_NOTHING:
        break;
    }
    ThrowScannerError(s, "Bad token ", *s);
}

void ReadGivenToken(SubString& s, EToken type, ConstStringZ desc) {
    const LSToken token = LsScanToken(s, false);
    if (token != type)
        throw LexScannerException(desc, token);
}

// ---- numbers -----------------------------------------------------------------------------------

namespace {

// Reads the x of a hex integer and its digits.
EToken ScanHexDigits(SubString& s) {
    ++s;
    if (!s || !IsHexDigit(*s))
        ThrowScannerError(s, "Expected hex digit (not ", Readable(s), ") after 0x");
    while (s && IsHexDigit(*s))
        ++s;
    return TOKEN_HEX_INTEGER;
}

// Reads the point of a float and the digits behind it.
void ScanFraction(SubString& s, const xchar* start) {
    ++s;
    if (!s || !IsDigit(*s))
        ThrowScannerError(s, "Expected digit (not ", Readable(s),
                          ") after decimal point (ie after reading '", SubString(start, s.m_p1),
                          "')");
    ScanDigits(s);
}

// Reads the e of an exponent, its sign and its digits.
void ScanExponent(SubString& s, const xchar* start) {
    ++s;
    if (!ScanByte(s, '+'))
        ScanByte(s, '-');
    if (!s || !IsDigit(*s))
        ThrowScannerError(s, "Expected digit(s) (not ", Readable(s),
                          ") for exponent after reading ", SubString(start, s.m_p1));
    ScanDigits(s);
}

}  // namespace

EToken LsScanNumber(SubString& s) {
    const xchar* const start = s.m_p1;
    if (!IsDigit(*s))
        return TOKEN_UNDEF;
    if (ScanByte(s, '0') && s && (*s == 'x' || *s == 'X'))
        return ScanHexDigits(s);
    ScanDigits(s);
    const bool hasFraction = s && *s == '.';
    if (hasFraction)
        ScanFraction(s, start);
    const bool hasExponent = s && (*s == 'e' || *s == 'E');
    if (hasExponent)
        ScanExponent(s, start);
    return hasFraction || hasExponent ? TOKEN_FLOAT : TOKEN_INTEGER;
}

// ---- strings, characters and comments ----------------------------------------------------------

bool LsScanLiteralString(SubString& s, xchar delimiter, ConstStringZ name) {
    const xchar* const start = s.m_p1;
    const bool raw = (*s == 'r' || *s == 'R') && s.size() >= 2 && s[1] == delimiter;
    if (!raw && *s != delimiter)
        return false;
    s += raw ? 2 : 1;
    if (!s)
        ThrowScannerError(s, "Met EOS within ", name);
    while (s) {
        const xchar c = *s;
        if (c == delimiter) {
            ++s;
            return true;
        }
        if (c == '\n')
            ThrowScannerError(s, "Met line feed within ", name, " after reading ",
                              SubString(start, s.m_p1));
        if (raw || !LsScanEscapeCharacter(s))
            ++s;
    }
    ThrowScannerError(s, "Met EOS within ", name, " after reading ", SubString(start, s.m_p1));
}

bool LsScanLiteralCharacter(SubString& s) {
    if (!ScanByte(s, '\''))
        return false;
    if (!s || *s == '\t' || *s == '\n' || *s == '\r' || *s == '\'')
        ThrowScannerError(s, "Read ", Readable(s),
                          " while trying to read literal character enclosed in single quotes");
    if (!LsScanEscapeCharacter(s))
        ++s;
    if (!ScanByte(s, '\''))
        ThrowScannerError(s, "Expected second single quote (not ", Readable(s),
                          ") for literal character");
    return true;
}

namespace {

// Reads one of the two digits of \x.
xchar ScanHexDigitOfEscape(SubString& s) {
    if (!s)
        ThrowScannerError(s, "Expected hex character when reached EOS");
    const xchar c = *s;
    if (!IsHexDigit(c))
        ThrowScannerError(s, "Expected hex character when read ", Readable(s));
    ++s;
    return c;
}

}  // namespace

bool LsScanEscapeCharacter(SubString& s) {
    if (!ScanByte(s, '\\'))
        return false;
    if (!s)
        ThrowScannerError(s, "Expected escape character following backslash when reached EOS");
    if (ScanByte(s, 'x')) {
        ScanHexDigitOfEscape(s);
        ScanHexDigitOfEscape(s);
        return true;
    }
    xchar unused;
    if (!MapEscapeCharacter(*s, unused))
        ThrowScannerError(s, "Invalid escape character ", Readable(s), " following backslash");
    ++s;
    return true;
}

namespace {

// The first c in [p, end), or null.
const xchar* FindByte(const xchar* p, const xchar* end, xchar c) {
    return static_cast<const xchar*>(std::memchr(p, c, static_cast<std::size_t>(end - p)));
}

// One past the */ that closes a comment whose text starts at p, or null. Comments hold fewer
// slashes than asterisks, so the slash is what is searched for.
const xchar* FindEndOfComment(const xchar* p, const xchar* end) {
    while (p != end && (p = FindByte(p + 1, end, '/')) != nullptr) {
        if (p[-1] == '*')
            return p + 1;
    }
    return nullptr;
}

}  // namespace

bool LsScanComment(SubString& s) {
    if (s.size() < 2 || *s != '/')
        return false;
    if (s[1] == '/') {
        const xchar* const lineFeed = FindByte(s.m_p1, s.m_p2, '\n');
        s.setbegin(lineFeed != nullptr ? lineFeed : s.m_p2);
        return true;
    }
    if (s[1] != '*')
        return false;
    const xchar* const end = FindEndOfComment(s.m_p1 + 2, s.m_p2);
    s.setbegin(end != nullptr ? end : s.m_p2);
    if (end == nullptr)
        ThrowScannerError(s, "Met EOS in middle of /* ... */ comment");
    return true;
}

// ---- literals ----------------------------------------------------------------------------------

void LSToken::GetLiteralString(xstring& s) const {
    const xchar delimiter = m_type == TOKEN_DOUBLE_QUOTED_STRING ? '"' : '\'';
    SubString rest = m_str;
    const bool raw = ScanByte(rest, 'R') || ScanByte(rest, 'r');
    s.clear();
    s.reserve(rest.size() - 2);
    for (++rest; rest && *rest != delimiter; ++rest) {
        xchar c = *rest;
        // Kept: what follows the backslash stands for itself where it is no escape, and so does
        // the x of \x41. Only UnstringifyQuotedString gives \x its value.
        if (c == '\\' && !raw) {
            ++rest;
            c = *rest;
            MapEscapeCharacter(*rest, c);
        }
        s.push_back(c);
    }
}

xchar LSToken::GetLiteralCharacter() const {
    if (m_str[1] != '\\')
        return m_str[1];
    xchar c = m_str[2];
    MapEscapeCharacter(m_str[2], c);
    return c;
}

int32 LSToken::GetLiteralInt32() const {
    int32 value;
    SubStringToInt(m_str, value);
    return value;
}

int64 LSToken::GetLiteralInt64() const {
    int64 value;
    SubStringToInt(m_str, value);
    return value;
}

int32 LSToken::GetLiteralHexInt32() const {
    int32 value;
    SubStringToHexInt(m_str, value, true);
    return value;
}

int64 LSToken::GetLiteralHexInt64() const {
    int64 value;
    SubStringToHexInt(m_str, value, true);
    return value;
}

// strtod reads the decimal point of the host's locale, so the C locale is named. It also decides
// what std::from_chars leaves open: overflow and underflow.
double LSToken::GetLiteralDouble() const {
    double value;
    const auto [end, error] = std::from_chars(m_str.m_p1, m_str.m_p2, value);
    if (error == std::errc() && end == m_str.m_p2)
        return value;
    static const locale_t s_cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    const xstring text(m_str);
    return strtod_l(text.c_str(), nullptr, s_cLocale);
}

xostream& operator<<(xostream& os, const LSToken& x) {
    return x.m_str ? os << x.m_str : os << "EOS";
}

namespace {

// Writes the bytes in front of the next one that means something in a quoted string.
void UnstringifyPlainBytes(SubString& s, xchar delimiter, xostream& os) {
    const xchar* const start = s.m_p1;
    while (s && *s != delimiter && *s != '\n' && *s != '\\')
        ++s;
    if (s.m_p1 != start)
        os << SubString(start, s.m_p1);
}

// Writes what an escape stands for; its backslash has been read.
void UnstringifyEscape(SubString& s, xostream& os) {
    if (!s)
        ThrowScannerError(s, "Met EOS in middle of string");
    if (ScanByte(s, 'x')) {
        const int high = MapHexDigit(ScanHexDigitOfEscape(s));
        os << static_cast<xchar>(high * 16 + MapHexDigit(ScanHexDigitOfEscape(s)));
        return;
    }
    xchar c = *s;
    if (!MapEscapeCharacter(*s, c))
        ThrowScannerError(s, c, "is not a valid escape character");
    ++s;
    os << c;
}

}  // namespace

void UnstringifyQuotedString(SubString s, xostream& os) {
    if (!s)
        ThrowScannerError(s, "Expected quoted string");
    const xchar delimiter = *s;
    if (delimiter != '"' && delimiter != '\'')
        ThrowScannerError(s, s, " isn't a quoted string");
    ++s;
    if (!s)
        ThrowScannerError(s, "Expected quoted string");
    while (true) {
        UnstringifyPlainBytes(s, delimiter, os);
        if (!s)
            ThrowScannerError(s, "Met EOS in middle of string");
        if (*s == delimiter)
            return;
        if (*s == '\n')
            ThrowScannerError(s, "Met end of line in middle of string");
        ++s;
        UnstringifyEscape(s, os);
    }
}

}  // namespace vorn
