#include "qzUtils/StringExt.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>

#include "qzUtils/StringStream.h"

namespace vorn {

// ---- escapes -----------------------------------------------------------------------------------

namespace {

struct Escape {
    char name;   // the byte behind the backslash
    char value;  // the byte that the escape stands for
};

constexpr Escape s_escapes[] = {
    {'a',  '\a'},
    {'b',  '\b'},
    {'f',  '\f'},
    {'n',  '\n'},
    {'r',  '\r'},
    {'t',  '\t'},
    {'v',  '\v'},
    {'0',  '\0'},
    {'\\', '\\'},
    {'\'', '\''},
    {'"',  '"' },
    {'?',  '?' },
};

// Writes c escaped if it needs to be, between quotes of the given kind.
void WriteCharBetween(xostream& os, char quote, char c) {
    const bool plain = c == '?' || ((c == '"' || c == '\'') && c != quote);
    const Escape* escape =
        std::find_if(std::begin(s_escapes), std::end(s_escapes),
                     [c](const Escape& candidate) { return candidate.value == c; });
    if (plain || escape == std::end(s_escapes))
        os << c;
    else
        os << '\\' << escape->name;
}

}  // namespace

bool MapEscapeCharacter(char c, char& out) {
    for (const Escape& escape : s_escapes) {
        if (escape.name == c) {
            out = escape.value;
            return true;
        }
    }
    return false;
}

void WriteCharForCStyleLiteralConstants(xostream& os, char c) {
    WriteCharBetween(os, '"', c);
}

void MakeDoubleQuotedString(SubString s, xstring& result) {
    StringStream os(4096);
    os << '"';
    for (const char c : s)
        WriteCharForCStyleLiteralConstants(os, c);
    os << '"';
    os.GetString(result, true);
}

void MakeSingleQuotedLiteralChar(char c, xstring& result) {
    StringStream os(16);
    os << '\'';
    WriteCharBetween(os, '\'', c);
    os << '\'';
    os.GetString(result, true);
}

xostream& operator<<(xostream& os, HumanReadableCharInSubString c) {
    if (!c.m_s)
        return os << "EOS";
    const char first = *c.m_s;
    switch (first) {
    case ' ':
        return os << "space";
    case '\t':
        return os << "tab";
    case '\n':
        return os << "line feed";
    case '\r':
        return os << "carriage return";
    default:
        break;
    }
    if (first > ' ' && first < 127)
        return os << '\'' << first << '\'';
    constexpr char s_hexDigits[] = "0123456789abcdef";
    const auto byte = static_cast<uint8>(first);
    return os << "byte 0x" << s_hexDigits[byte >> 4] << s_hexDigits[byte & 15];
}

// ---- numbers -----------------------------------------------------------------------------------

xstring ToString(int value) {
    return ToString(static_cast<long>(value));
}

xstring ToString(long value) {
    char digits[24];
    return xstring(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

xstring ToString(double value) {
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value < 0 ? "-inf" : "inf";
    const double magnitude = std::fabs(value);
    const bool fixed = magnitude == 0 || (magnitude >= 1e-4 && magnitude < 1e16);
    char digits[40];
    const auto end = std::to_chars(digits, digits + sizeof digits, value,
                                   fixed ? std::chars_format::fixed : std::chars_format::scientific)
                         .ptr;
    xstring text(digits, end);
    if (fixed && text.find('.') == xstring::npos)
        text += ".0";
    return text;
}

// ---- texts -------------------------------------------------------------------------------------

ssize_t GetLineNumber(SubString buffer, const char* pos) {
    const std::less<const char*> before;
    if (pos == nullptr || before(pos, buffer.m_p1) || before(buffer.m_p2, pos))
        return -1;
    return 1 + std::count(buffer.m_p1, pos, '\n');
}

void WriteSubStringWithAdjustedIndent(xostream& os, SubString s, ssize_t indent) {
    while (s) {
        const char* lineFeed = std::find(s.m_p1, s.m_p2, '\n');
        const char* end = lineFeed == s.m_p2 ? s.m_p2 : lineFeed + 1;
        os << SubString(s.m_p1, end);
        s.setbegin(end);
        ScanIndentation(s, indent, 4);
    }
}

void StringFindAndReplace(xstring& s, const xstring& find, const xstring& replace) {
    if (find.empty())
        return;
    xstring result;
    const char* p = s.data();
    const char* const end = s.data_end();
    while (true) {
        const char* hit = std::search(p, end, find.begin(), find.end());
        result.append(p, hit);
        if (hit == end)
            break;
        result += replace;
        p = hit + find.size();
    }
    s.swap(result);
}

bool CaseInsensitiveCompare(SubString a, SubString b) {
    const auto lower = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [lower](char x, char y) { return lower(x) == lower(y); });
}

// ---- StringX -----------------------------------------------------------------------------------

void StringX::Set(SubString s, bool makeIndependentCopy) {
    if (!makeIndependentCopy || !s) {
        Free();
        if (!makeIndependentCopy)
            m_subString = s;
        return;
    }
    const ssize_t size = s.size();
    char* copy = new char[static_cast<std::size_t>(size)];
    std::memcpy(copy, s.m_p1, static_cast<std::size_t>(size));
    Free();
    m_subString = SubString(copy, copy + size);
    m_capacity = size;
}

void StringX::Free() {
    if (m_capacity > 0)
        delete[] m_subString.m_p1;
    m_subString = SubString();
    m_capacity = 0;
}

}  // namespace vorn
