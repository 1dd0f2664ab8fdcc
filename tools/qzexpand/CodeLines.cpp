#include "CodeLines.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace qztools {

namespace {

constexpr std::string_view s_blanks = " \t\r\n\v\f";
constexpr std::string_view s_rawPrefixes[] = {"R", "u8R", "uR", "UR", "LR"};

enum class Directive { If, Else, EndIf };

struct DirectiveName {
    std::string_view name;
    Directive directive;
};

constexpr DirectiveName s_directives[] = {
    {"if",       Directive::If   },
    {"ifdef",    Directive::If   },
    {"ifndef",   Directive::If   },
    {"elif",     Directive::Else },
    {"elifdef",  Directive::Else },
    {"elifndef", Directive::Else },
    {"else",     Directive::Else },
    {"endif",    Directive::EndIf},
};

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Any byte above 127 belongs to some letter.
bool IsWordByte(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$'
           || static_cast<unsigned char>(c) >= 0x80;
}

std::size_t WordSize(std::string_view s) {
    return static_cast<std::size_t>(std::find_if_not(s.begin(), s.end(), IsWordByte) - s.begin());
}

// A number with its dots and signs, and with the quotes between its digits, which start no string.
std::size_t NumberSize(std::string_view s) {
    std::size_t size = 1;
    while (size < s.size()) {
        const char c = s[size];
        const bool isSign =
            (c == '+' || c == '-') && std::string_view("eEpP").find(s[size - 1]) != s.npos;
        const bool isSeparator = c == '\'' && size + 1 < s.size() && IsWordByte(s[size + 1]);
        if (!IsWordByte(c) && c != '.' && !isSign && !isSeparator)
            break;
        ++size;
    }
    return size;
}

std::string_view WithoutBlanksInFront(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(s_blanks), line.size()));
}

std::string_view WithoutBlanksBehind(std::string_view line) {
    return line.substr(0, line.find_last_not_of(s_blanks) + 1);
}

}  // namespace

// A line that a backslash continues, or the blank that a comment stands for, goes on in the next.
void CodeLines::Read(std::string_view line) {
    m_hasLeftGroup = false;
    if (m_inside == Inside::Code && !m_isContinued) {
        m_isAfterWord = m_isAfterWord && !m_isDirective;
        m_isLineStart = true;
        m_isDirective = false;
        m_namesDirective = false;
        m_quote = 0;
    }
    std::string_view s = WithoutBlanksBehind(line);
    m_isContinued = s.ends_with('\\');
    if (m_isContinued)
        s.remove_suffix(1);
    while (!s.empty())
        s = m_inside == Inside::Code ? ReadToken(s) : SkipInside(s);
}

// A comment may stand between the name and the bracket.
bool CodeLines::MayInsertBefore(std::string_view line) const {
    const std::string_view s = WithoutBlanksInFront(line);
    const bool mayBeCall = m_isAfterWord && !m_isDirective
                           && (s.starts_with('(') || s.starts_with("//") || s.starts_with("/*"));
    return m_inside == Inside::Code && !m_isContinued && !mayBeCall;
}

void CodeLines::Inserted() {
    std::fill(m_groups.begin(), m_groups.end(), true);
}

std::string_view CodeLines::SkipInside(std::string_view s) {
    const std::string_view end =
        m_inside == Inside::BlockComment ? std::string_view("*/") : std::string_view(m_rawEnd);
    const std::size_t found = s.find(end);
    if (found == s.npos)
        return {};
    m_inside = Inside::Code;
    return s.substr(found + end.size());
}

// Each of these takes a token off the start of s, or what a line has of it.
std::string_view CodeLines::ReadToken(std::string_view s) {
    if (m_quote == '/')
        return {};
    if (m_quote != 0)
        return ReadQuoted(s);
    const char c = s.front();
    if (s_blanks.find(c) != s_blanks.npos)
        return s.substr(1);
    if (c == '/')
        return ReadSlash(s);
    m_namesDirective = m_namesDirective && IsWordByte(c);
    if (c == '#' && m_isLineStart)
        m_isDirective = m_namesDirective = true;
    m_isLineStart = false;
    m_isAfterWord = false;
    if (IsDigit(c) || (c == '.' && s.size() > 1 && IsDigit(s[1])))
        return s.substr(NumberSize(s));
    if (IsWordByte(c))
        return ReadWord(s);
    if (c == '"' || c == '\'') {
        m_quote = c;
        return ReadQuoted(s.substr(1));
    }
    return s.substr(1);
}

std::string_view CodeLines::ReadSlash(std::string_view s) {
    if (s.starts_with("//")) {
        m_quote = '/';
        return {};
    }
    if (s.starts_with("/*")) {
        m_inside = Inside::BlockComment;
        return s.substr(2);
    }
    m_isLineStart = false;
    m_isAfterWord = false;
    return s.substr(1);
}

std::string_view CodeLines::ReadWord(std::string_view s) {
    const std::string_view word = s.substr(0, WordSize(s));
    if (m_namesDirective)
        ReadDirective(word);
    m_namesDirective = false;
    m_isAfterWord = true;
    s.remove_prefix(word.size());
    const bool isRaw = std::find(std::begin(s_rawPrefixes), std::end(s_rawPrefixes), word)
                       != std::end(s_rawPrefixes);
    return isRaw && s.starts_with('"') ? ReadRawString(s) : s;
}

// The rest of a string or of a character.
std::string_view CodeLines::ReadQuoted(std::string_view s) {
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '\\') {
            ++i;
        } else if (s[i] == m_quote) {
            m_quote = 0;
            return s.substr(i + 1);
        }
    }
    return {};
}

// s starts with the quote; a bracket must follow, behind a delimiter.
std::string_view CodeLines::ReadRawString(std::string_view s) {
    constexpr std::size_t s_longestDelimiter = 16;
    const std::size_t bracket = s.find_first_of("(\") \\\t\v\f", 1);
    if (bracket == s.npos || s[bracket] != '(' || bracket - 1 > s_longestDelimiter)
        return s;
    m_isAfterWord = false;
    m_inside = Inside::RawString;
    m_rawEnd = ')' + std::string(s.substr(1, bracket - 1)) + '"';
    return s.substr(bracket + 1);
}

void CodeLines::ReadDirective(std::string_view word) {
    const auto found = std::find_if(std::begin(s_directives), std::end(s_directives),
                                    [word](const DirectiveName& d) { return d.name == word; });
    if (found == std::end(s_directives))
        return;
    if (found->directive == Directive::If)
        return m_groups.push_back(false);
    if (m_groups.empty())
        return;
    m_hasLeftGroup = m_groups.back() != 0;
    if (found->directive == Directive::EndIf)
        m_groups.pop_back();
    else
        m_groups.back() = false;
}

}  // namespace qztools
