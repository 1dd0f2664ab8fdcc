#include "Message.h"

#include <charconv>
#include <string>

namespace qztools {

// ---- sequences for the terminal ----------------------------------------------------------------

namespace {

constexpr char s_escape = '\x1b';

bool IsBetween(char c, char first, char last) {
    return c >= first && c <= last;
}

// ESC [ parameters, then the byte that says what to do
std::size_t SizeOfControl(std::string_view s) {
    std::size_t i = 2;
    while (i < s.size() && IsBetween(s[i], ' ', '?'))
        ++i;
    return i < s.size() && IsBetween(s[i], '@', '~') ? i + 1 : 0;
}

// ESC ] text, then BEL or ESC backslash: a link, say
std::size_t SizeOfCommand(std::string_view s) {
    const std::size_t end = s.find_first_of("\a\x1b", 2);
    if (end == std::string_view::npos)
        return 0;
    if (s[end] == '\a')
        return end + 1;
    return s.substr(end).starts_with("\x1b\\") ? end + 2 : 0;
}

}  // namespace

std::size_t SizeOfSequence(std::string_view s) {
    if (s.starts_with("\x1b["))
        return SizeOfControl(s);
    return s.starts_with("\x1b]") ? SizeOfCommand(s) : 0;
}

std::string WithoutColours(std::string_view line) {
    std::string plain;
    while (!line.empty()) {
        const std::size_t size = line.front() == s_escape ? SizeOfSequence(line) : 0;
        if (size == 0)
            plain += line.front();
        line.remove_prefix(size == 0 ? 1 : size);
    }
    return plain;
}

// ---- a position that moves along a line --------------------------------------------------------

namespace {

bool IsDigit(char c) {
    return IsBetween(c, '0', '9');
}

class Cursor {
public:
    Cursor(std::string_view line, std::size_t at) : m_line(line), m_at(at) {}

    std::size_t At() const { return m_at; }
    bool Sees(std::string_view s) const { return m_line.substr(m_at).starts_with(s); }
    bool SeesDigit() const { return m_at < m_line.size() && IsDigit(m_line[m_at]); }

    bool Pass(std::string_view s) {
        if (!Sees(s))
            return false;
        m_at += s.size();
        return true;
    }

    void PassColours() {
        while (const std::size_t size = SizeOfSequence(m_line.substr(m_at)))
            m_at += size;
    }

    void PassBlanksAndColours() {
        for (std::size_t before = npos; before != m_at;) {
            before = m_at;
            PassColours();
            while (Pass(" ") || Pass("\t"))
                continue;
        }
    }

    bool PassNumber(Number& number) {
        if (!SeesDigit())
            return false;
        number.first = m_at;
        const char* first = m_line.data() + m_at;
        const auto [end, error] =
            std::from_chars(first, m_line.data() + m_line.size(), number.value);
        m_at += static_cast<std::size_t>(end - first);
        number.last = m_at;
        return error == std::errc();
    }

    // Whether what has been passed over does not go on as a word or a number.
    bool IsAtEndOfWord() const {
        if (m_at == m_line.size())
            return true;
        const char c = m_line[m_at];
        const bool isWord =
            IsDigit(c) || IsBetween(c, 'a', 'z') || IsBetween(c, 'A', 'Z') || c == '_';
        const bool isFraction = c == '.' && m_at + 1 < m_line.size() && IsDigit(m_line[m_at + 1]);
        return !isWord && !isFraction;
    }

private:
    static constexpr std::size_t npos = std::string_view::npos;

    std::string_view m_line;
    std::size_t m_at;
};

// ---- the forms of places -----------------------------------------------------------------------

// :{3:7-3:9}{4:1-4:2}
void PassRanges(Cursor& cursor, MessagePlace& place) {
    if (!cursor.Sees(":{"))
        return;
    Cursor ahead = cursor;
    ahead.Pass(":");
    std::vector<Number> numbers;
    while (ahead.Pass("{")) {
        for (const char* separator : {":", "-", ":", "}"}) {
            Number number;
            if (!ahead.PassNumber(number) || !ahead.Pass(separator))
                return;
            numbers.push_back(number);
        }
    }
    place.rangesFirst = cursor.At();
    place.ranges = std::move(numbers);
    cursor = ahead;
}

// :3 and :3:7
bool PassColonForm(Cursor& cursor, MessagePlace& place) {
    if (!cursor.Pass(":") || !cursor.PassNumber(place.line))
        return false;
    Cursor ahead = cursor;
    Number column;
    if (ahead.Pass(":") && ahead.SeesDigit()) {
        if (!ahead.PassNumber(column))
            return false;
        place.column = column;
        cursor = ahead;
        PassRanges(cursor, place);
    }
    return cursor.IsAtEndOfWord();
}

// (3): and (3,7):
bool PassBracketForm(Cursor& cursor, MessagePlace& place) {
    if (!cursor.Pass("(") || !cursor.PassNumber(place.line))
        return false;
    Number column;
    if (cursor.Pass(",")) {
        if (!cursor.PassNumber(column))
            return false;
        place.column = column;
    }
    if (!cursor.Pass(")"))
        return false;
    Cursor ahead = cursor;
    ahead.PassBlanksAndColours();
    return ahead.Sees(":");
}

// ", line 3
bool PassPythonForm(Cursor& cursor, MessagePlace& place) {
    return cursor.Pass("\", line ") && cursor.PassNumber(place.line) && cursor.IsAtEndOfWord();
}

std::optional<MessagePlace> PlaceBehindName(std::string_view line, std::size_t nameLast) {
    const char c = line[nameLast];
    MessagePlace place;
    place.nameLast = nameLast;
    Cursor cursor(line, nameLast);
    const bool isPlace = c == ':'   ? PassColonForm(cursor, place)
                         : c == '(' ? PassBracketForm(cursor, place)
                                    : PassPythonForm(cursor, place);
    place.last = cursor.At();
    return isPlace ? std::optional(place) : std::nullopt;
}

// A quote stands in front of the name in the form that ends with one, and in no other: text in
// quotes is what a message speaks of, not where it points.
bool HasItsQuotes(std::string_view line, const MessagePlace& place) {
    const bool isQuoted = place.nameFirst > 0 && line[place.nameFirst - 1] == '"';
    return isQuoted == (line[place.nameLast] == '"');
}

}  // namespace

std::optional<MessagePlace> FindPlace(std::string_view line, std::size_t from,
                                      const FindName& findName) {
    constexpr std::string_view s_behindName = ":(\"";
    for (std::size_t i = line.find_first_of(s_behindName, from); i != std::string_view::npos;
         i = line.find_first_of(s_behindName, i + 1)) {
        std::optional<MessagePlace> place = PlaceBehindName(line, i);
        if (!place)
            continue;
        place->nameFirst = findName(line, i);
        if (place->nameFirst != std::string_view::npos && place->nameFirst >= from
            && HasItsQuotes(line, *place))
            return place;
    }
    return std::nullopt;
}

std::optional<Heading> FindHeading(std::string_view line, const FindName& findName) {
    Cursor start(line, 0);
    start.PassBlanksAndColours();
    for (std::size_t i = line.find(':'); i != std::string_view::npos; i = line.find(':', i + 1)) {
        Cursor cursor(line, i + 1);
        cursor.PassColours();
        if ((cursor.Sees(" In ") || cursor.Sees(" At ")) && findName(line, i) == start.At())
            return Heading{start.At(), i};
    }
    return std::nullopt;
}

// ---- excerpts ----------------------------------------------------------------------------------

std::optional<Number> FindGutter(std::string_view line, std::string& plain) {
    Cursor cursor(line, 0);
    cursor.PassBlanksAndColours();
    Number number;
    if (!cursor.PassNumber(number) || !cursor.Sees(" "))
        return std::nullopt;
    cursor.PassBlanksAndColours();
    if (!cursor.Pass("|"))
        return std::nullopt;
    cursor.PassColours();
    cursor.Pass(" ");
    plain = WithoutColours(line.substr(cursor.At()));
    return number;
}

bool IsExcerpt(std::string_view line) {
    Cursor cursor(line, 0);
    cursor.PassBlanksAndColours();
    Number number;
    if (cursor.PassNumber(number) && !cursor.Sees(" "))
        return false;
    cursor.PassBlanksAndColours();
    while (cursor.Pass("+"))
        continue;
    cursor.PassBlanksAndColours();
    return cursor.At() > 0 && cursor.Sees("|");
}

}  // namespace qztools
