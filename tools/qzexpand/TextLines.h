// Lines and columns of a text that stays where it is.
//
// A line ends with its line feed. Columns count from 0, in the units of UTF-16 as the source maps
// of the web do: a character takes one or two, and a byte that is no UTF-8 takes one.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace qztools {

// A character of UTF-8, or a byte that belongs to none.
struct Utf16Step {
    std::size_t bytes;
    std::int64_t units;
};

// REQUIRES: s is not empty.
Utf16Step FirstUtf16Step(std::string_view s);

// Finds lines and columns in any order, in time that does not depend on the length of the text or
// of a line.
class TextLines {
public:
    explicit TextLines(std::string_view text);

    // The line of an offset, from 0. REQUIRES: 0 <= offset <= the size of the text.
    std::int64_t LineOf(std::int64_t offset) const;

    // The column of the character that holds the byte at an offset.
    std::int64_t ColumnOf(std::int64_t offset) const;

private:
    // A place from which units can be counted: the start of a character.
    struct Mark {
        std::size_t offset;
        std::int64_t units;  // in front of it, in all of the text
    };

    std::int64_t UnitsBefore(std::size_t offset) const;

    std::string_view m_text;
    std::vector<std::size_t> m_lineStarts;
    std::vector<Mark> m_marks;  // for every s_distance bytes, the last start up to there
};

}  // namespace qztools
