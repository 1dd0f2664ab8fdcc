// Scanning helpers, quoting, numbers as text, and other functions on text.
//
// A scanning function takes the position as a SubString&, moves its start past what it reads, and
// leaves it alone if nothing matches. Byte classes are fixed and know no locale. The functions
// throw nothing but std::bad_alloc, and what a stream's sink throws.
#pragma once

#include <type_traits>

#include "qzUtils/Hex.h"
#include "qzUtils/SubString.h"
#include "qzUtils/xostream.h"

namespace vorn {

// ---- scanning ----------------------------------------------------------------------------------

// Passes over spaces, tabs, line feeds, carriage returns, vertical tabs and form feeds.
inline void ScanWhiteSpace(SubString& s) {
    while (s && IsCharOf(*s, CHAR_WHITE_SPACE))
        ++s;
}

// Passes over [A-Za-z_][A-Za-z0-9_]*; false if none starts here.
inline bool ScanIdentifier(SubString& s) {
    if (!s || !IsCharOf(*s, CHAR_IDENTIFIER_START))
        return false;
    do
        ++s;
    while (s && IsCharOf(*s, CHAR_IDENTIFIER));
    return true;
}

// Passes over decimal digits, possibly none.
inline void ScanDigits(SubString& s) {
    while (s && IsDigit(*s))
        ++s;
}

// Passes over spaces and tabs, up to indent columns; a space counts one, a tab tabWidth. A tab
// that would go past indent stays.
inline void ScanIndentation(SubString& s, ssize_t indent, ssize_t tabWidth) {
    ssize_t column = 0;
    while (s && (*s == ' ' || *s == '\t')) {
        column += *s == '\t' ? tabWidth : 1;
        if (column > indent)
            return;
        ++s;
    }
}

// Space, tab, vertical tab, form feed, carriage return.
constexpr bool IsWhiteSpaceWithoutLinefeed(xchar c) {
    return c != '\n' && IsCharOf(c, CHAR_WHITE_SPACE);
}

// The byte that a backslash and c stand for: \a \b \f \n \r \t \v \0 \\ \' \" \? as in C. False,
// with out as it was, for any other c.
bool MapEscapeCharacter(char c, char& out);

// ---- numbers -----------------------------------------------------------------------------------

// The value of decimal digits. It wraps in the arithmetic of T; a byte that is no digit counts
// as -1, and an empty text gives 0.
template <class T>
void SubStringToInt(SubString str, T& value) {
    using U = std::make_unsigned_t<T>;
    U result = 0;
    for (const char c : str)
        result = static_cast<U>(result * U{10} + static_cast<U>(MapDecDigit(c)));
    value = static_cast<T>(result);
}

// The value of hex digits; only the last ones that fit into T count. With expect0x the first two
// bytes are passed over, and a text of fewer than three gives 0. REQUIRES: hex digits.
template <class T>
void SubStringToHexInt(SubString str, T& value, bool expect0x) {
    using U = std::make_unsigned_t<T>;
    U result = 0;
    if (expect0x)
        str += str.size() < 3 ? str.size() : 2;
    for (const char c : str)
        result = static_cast<U>(static_cast<U>(result << 4) | static_cast<U>(MapHexDigit(c)));
    value = static_cast<T>(result);
}

xstring ToString(int value);
xstring ToString(long value);

// The fewest digits that read back as the same double, as a float of the language: 2.0, 0.1,
// 100000.0. Magnitudes below 1e-4 and from 1e16 up have an exponent: 1e-05, 1e+20. Infinities and
// NaN, which the language cannot read, give inf, -inf and nan.
xstring ToString(double value);

// ---- quoting -----------------------------------------------------------------------------------

// Writes c as it stands inside a double-quoted literal: \a \b \f \n \r \t \v \0 \\ \" for these
// bytes, and every other byte as it is.
void WriteCharForCStyleLiteralConstants(xostream& os, char c);

// s as a double-quoted literal that scans back to the same bytes.
void MakeDoubleQuotedString(SubString s, xstring& result);

// c as a single-quoted literal: here ' is escaped, and " is not.
void MakeSingleQuotedLiteralChar(char c, xstring& result);

// Describes, for a reader, the character at the start of a text: 'g', space, tab, line feed,
// carriage return, byte 0x1f; EOS where the text is empty.
struct QZ_VIEW HumanReadableCharInSubString {
    SubString m_s;
    explicit HumanReadableCharInSubString(SubString s) : m_s(s) {}
};
xostream& operator<<(xostream& os, HumanReadableCharInSubString c);

// ---- texts -------------------------------------------------------------------------------------

// The line, counted from 1, of buffer that holds pos. The position one past the last byte counts
// as lying in the buffer; null and every other position give -1.
ssize_t GetLineNumber(SubString buffer, const char* pos);

// Writes s with up to indent columns of spaces and tabs taken off each line after the first, by
// the rule of ScanIndentation with tabs of 4. A line with less loses what it has.
void WriteSubStringWithAdjustedIndent(xostream& os, SubString s, ssize_t indent);

// Replaces every occurrence of find, from left to right; a replacement is not searched again. An
// empty find changes nothing.
void StringFindAndReplace(xstring& s, const xstring& find, const xstring& replace);

// Whether two texts are equal but for the case of ASCII letters.
bool CaseInsensitiveCompare(SubString a, SubString b);

// A text that is either owned or borrowed. What is borrowed must outlive the object.
class StringX {
public:
    SubString m_subString;
    ssize_t m_capacity = 0;  // bytes allocated; 0 where the text is borrowed

    StringX() = default;
    ~StringX() { Free(); }
    StringX(const StringX&) = delete;
    StringX& operator=(const StringX&) = delete;

    // Replaces the content by a copy of s, or by s itself. What is to be copied may be a view of
    // the old content. REQUIRES: what is to be borrowed is not a view of an owned content.
    void Set(SubString s, bool makeIndependentCopy);

    operator SubString() const { return m_subString; }

private:
    void Free();
};

}  // namespace vorn
