// Arguments, bracketted sections and blocks: the part of LSToken.h that cuts texts out of a text.
#include <algorithm>

#include "qzMacroExpander/LSToken.h"
#include "qzMacroExpander/src/ScannerErrors.h"
#include "qzUtils/StringExt.h"

namespace vorn {

// ---- arguments ---------------------------------------------------------------------------------

ssize_t ScanBackwardsThroughSpacesAndTabs(SubString& s) {
    ssize_t width = 0;
    for (; s && (s.m_p2[-1] == ' ' || s.m_p2[-1] == '\t'); --s.m_p2)
        width += s.m_p2[-1] == '\t' ? 4 : 1;
    return width;
}

namespace {

// The end of a text in brackets: the closing bracket, or TOKEN_END where there is none, and the
// place in front of the blanks and comments that lie before it.
struct EndOfText {
    LSToken bracket;
    const xchar* contentEnd;
};

// Reads on to behind the bracket that closes a text. Only this kind of bracket counts.
EndOfText ScanToClosingBracket(SubString& s, EToken leftBracket, EToken rightBracket) {
    for (ssize_t depth = 1;;) {
        const xchar* const contentEnd = s.m_p1;
        const LSToken token = LsScanToken(s, false);
        if (token == leftBracket)
            ++depth;
        else if (token == TOKEN_END || (token == rightBracket && --depth == 0))
            return {token, contentEnd};
    }
}

// The bracket that closes what type opens; TOKEN_UNDEF where type opens nothing.
EToken ClosingBracket(EToken type) {
    switch (type) {
    case TOKEN_LEFT_PAREN:
        return TOKEN_RIGHT_PAREN;
    case TOKEN_LEFT_CURLY:
        return TOKEN_RIGHT_CURLY;
    case TOKEN_LEFT_SQUARE:
        return TOKEN_RIGHT_SQUARE;
    default:
        return TOKEN_UNDEF;
    }
}

[[noreturn]] void ThrowEosInArgument(SubString s, const xchar* start) {
    ThrowScannerError(s, "Met EOS while reading argument ", SubString(start, s.m_p1));
}

// Reads what stands between back quotes. Nothing in it is interpreted.
SubString ScanBackQuotedArgument(SubString& s) {
    const xchar* const start = s.m_p1;
    const xchar* const first = start + 1;
    const xchar* const last = std::find(first, s.m_p2, '`');
    s.setbegin(last);
    if (!s)
        ThrowEosInArgument(s, start);
    ++s;
    return SubString(first, last);
}

}  // namespace

LSToken ScanArgument(SubString& s, SubString& arg, EToken rightBracket) {
    ScanWhiteSpace(s);
    if (s && *s == '`') {
        arg = ScanBackQuotedArgument(s);
        return LsScanToken(s, false);
    }
    const xchar* const start = s.m_p1;
    while (true) {
        // Blanks and comments in front of the token that ends the argument do not belong to it.
        arg = SubString(start, s.m_p1);
        const LSToken token = LsScanToken(s, false);
        if (token == rightBracket || token == TOKEN_COMMA)
            return token;
        const EToken closing = ClosingBracket(token.GetType());
        const bool nests = closing != TOKEN_UNDEF;
        if (token == TOKEN_END
            || (nests && ScanToClosingBracket(s, token.GetType(), closing).bracket == TOKEN_END))
            ThrowEosInArgument(s, start);
    }
}

// ---- bracketted sections -----------------------------------------------------------------------

namespace {

void ReadInitialBracket(SubString& s, EToken leftBracket) {
    const LSToken token = LsScanToken(s, false);
    if (token == leftBracket)
        return;
    // Kept: a bracket of any other kind has no name, and a zero byte stands in its place.
    const xchar name = leftBracket == TOKEN_LEFT_PAREN    ? '('
                       : leftBracket == TOKEN_LEFT_CURLY  ? '{'
                       : leftBracket == TOKEN_LEFT_SQUARE ? '['
                                                          : '\0';
    ThrowScannerError(token, name, " expected when read ", token);
}

}  // namespace

SubString ScanBrackettedSection(SubString& s, bool readInitialBracket, EToken leftBracket,
                                EToken rightBracket) {
    if (readInitialBracket)
        ReadInitialBracket(s, leftBracket);
    ScanWhiteSpace(s);
    const xchar* const begin = s.m_p1;
    const EndOfText end = ScanToClosingBracket(s, leftBracket, rightBracket);
    if (end.bracket == TOKEN_END)
        ThrowScannerError(s, "Met EOS while reading bracketted section");
    return SubString(begin, end.contentEnd);
}

SubString ScanRndBrackettedSection(SubString& s, bool readInitialBracket) {
    return ScanBrackettedSection(s, readInitialBracket, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
}

SubString ScanSquareBrackettedSection(SubString& s, bool readInitialBracket) {
    return ScanBrackettedSection(s, readInitialBracket, TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE);
}

SubString ScanCurlyBrackettedSection(SubString& s, bool readInitialBracket) {
    return ScanBrackettedSection(s, readInitialBracket, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY);
}

// ---- blocks ------------------------------------------------------------------------------------

namespace {

struct BlockBrackets {
    EToken left;
    EToken right;
    ConstStringZ leftName;
    ConstStringZ rightName;
};

// Passes over one c if it is there.
void PassOver(SubString& s, xchar c) {
    if (s && *s == c)
        ++s;
}

void PassOverBlanksOnLine(SubString& s) {
    while (s && IsWhiteSpaceWithoutLinefeed(*s))
        ++s;
}

[[noreturn]] void ThrowExpectedLeftBracket(const BlockBrackets& brackets, const LSToken& token) {
    ThrowScannerError(token, "Expected ", brackets.leftName, " when read ", token);
}

// The rest of a block whose bracket stands on the line where the block was looked for. Nothing is
// trimmed from the text but the line end behind the bracket.
SubString ScanBlockFromSameLine(SubString& s, const BlockBrackets& brackets) {
    if (!s)
        ThrowScannerError(s, "Met EOS before closing ", brackets.rightName);
    PassOver(s, '\r');
    PassOver(s, '\n');
    const xchar* const begin = s.m_p1;
    const EndOfText end = ScanToClosingBracket(s, brackets.left, brackets.right);
    if (end.bracket == TOKEN_END)
        ThrowScannerError(s, "Met EOS while reading bracketted string");
    return SubString(begin, end.bracket.m_str.m_p1);
}

// A text without brackets, from begin to the end of the line, which is not consumed.
SubString ScanRestOfLine(SubString& s, const xchar* begin) {
    while (s && *s != '\r' && *s != '\n')
        ++s;
    return SubString(begin, s.m_p1);
}

// The end of a text whose closing bracket is meant to stand on a line of its own.
const xchar* EndInFrontOfBracket(const xchar* begin, const xchar* bracket) {
    // Kept: the last byte that is no blank is taken for the line feed that ends the last line, and
    // does not belong to the text. Where the bracket does not stand alone, another byte is lost.
    const xchar* end = bracket - 1;
    while (*end == ' ' || *end == '\t')
        --end;
    if (end <= begin)
        return begin;
    return *end == '\n' && end[-1] == '\r' ? end - 1 : end;
}

// A block whose bracket stands on a line below the one where the block was looked for.
SubString ScanBlockFromLaterLine(SubString& s, ssize_t& indentation,
                                 const BlockBrackets& brackets) {
    const LSToken token = LsScanToken(s, false);
    if (token != brackets.left)
        ThrowExpectedLeftBracket(brackets, token);
    PassOverBlanksOnLine(s);
    PassOver(s, '\n');
    for (; s && (*s == ' ' || *s == '\t'); ++s)
        indentation += *s == '\t' ? 4 : 1;
    const xchar* const begin = s.m_p1;
    const EndOfText end = ScanToClosingBracket(s, brackets.left, brackets.right);
    // Kept: the wording differs from that for a bracket on the same line.
    if (end.bracket == TOKEN_END)
        ThrowScannerError(s, "Met EOS before closing ", brackets.rightName);
    return SubString(begin, EndInFrontOfBracket(begin, end.bracket.m_str.m_p1));
}

}  // namespace

SubString ScanStringBlock(SubString& s, ssize_t& indentation, EToken leftBracket,
                          EToken rightBracket, ConstStringZ leftBracketName,
                          ConstStringZ rightBracketName, bool requireBrackets) {
    const BlockBrackets brackets{leftBracket, rightBracket, leftBracketName, rightBracketName};
    indentation = 0;
    PassOverBlanksOnLine(s);
    if (!s)
        ThrowScannerError(s, "Expected ", leftBracketName, " when read EOS");
    if (*s == '\n')
        return ScanBlockFromLaterLine(s, indentation, brackets);
    const xchar* const begin = s.m_p1;
    const LSToken token = LsScanToken(s, false);
    if (token == leftBracket)
        return ScanBlockFromSameLine(s, brackets);
    if (requireBrackets)
        ThrowExpectedLeftBracket(brackets, token);
    return ScanRestOfLine(s, begin);
}

SubString ScanSubstString(SubString& s, ssize_t& indentation) {
    return ScanStringBlock(s, indentation, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, "{", "}", false);
}

SubString ScanRndBrackettedString(SubString& s, ssize_t& indentation) {
    return ScanStringBlock(s, indentation, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN, "(", ")", true);
}

// ---- comparison --------------------------------------------------------------------------------

bool SubStringsAreTokenEquivalent(SubString s1, SubString s2) {
    while (true) {
        const LSToken token1 = LsScanToken(s1, false);
        const LSToken token2 = LsScanToken(s2, false);
        if (token1 == TOKEN_END)
            return token2 == TOKEN_END;
        if (token1 != token2)
            return false;
    }
}

}  // namespace vorn
