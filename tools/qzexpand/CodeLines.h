// Where a directive may stand between two lines of code in C or C++.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qztools {

// Reads code line by line, with no more than it takes to know what a line begins in.
class CodeLines {
public:
    // Takes the next line, with its end.
    void Read(std::string_view line);

    // Whether a directive may stand between the lines that were read and that line: not in a block
    // comment, a raw string, behind a backslash that continues a line, or where an opening bracket
    // would no longer follow the name of its macro.
    bool MayInsertBefore(std::string_view line) const;

    // To be called when a directive goes in.
    void Inserted();

    // Whether the last line has ended a group of #if in which a directive went in. A compiler may
    // have skipped it there.
    bool HasLeftGroup() const { return m_hasLeftGroup; }

private:
    // What goes on over the end of a line.
    enum class Inside { Code, BlockComment, RawString };

    std::string_view SkipInside(std::string_view s);
    std::string_view ReadToken(std::string_view s);
    std::string_view ReadSlash(std::string_view s);
    std::string_view ReadWord(std::string_view s);
    std::string_view ReadQuoted(std::string_view s);
    std::string_view ReadRawString(std::string_view s);
    void ReadDirective(std::string_view word);

    Inside m_inside = Inside::Code;
    std::string m_rawEnd;           // of the raw string
    bool m_isContinued = false;     // by a backslash
    char m_quote = 0;               // of the string that goes on behind it; '/' for a comment
    bool m_isLineStart = true;      // there was no token yet in this line and what it continues
    bool m_isDirective = false;     // this line is one, with what it continues
    bool m_namesDirective = false;  // the next word is its name
    bool m_isAfterWord = false;     // the last token was a word
    bool m_hasLeftGroup = false;
    std::vector<char> m_groups;  // of #if, the outermost first: whether a directive went in
};

}  // namespace qztools
