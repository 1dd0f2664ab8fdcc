// The columns that compilers count.
//
// Clang and most others count bytes. GCC counts what a terminal shows: a tab leads to the next
// column behind a multiple of 8, and a wide character takes two. The two differ only behind a tab
// or a byte above 127.
#pragma once

#include "Options.h"

namespace qztools {

// A line as GCC shows it: with blanks for each tab, and nothing blank at its end.
std::string ExpandTabs(std::string_view line);

class Columns {
public:
    explicit Columns(ColumnUnit unit) : m_unit(unit) {}

    // The byte of the line, from 0, that a column names; at most the size of the line. Where the
    // unit is to be guessed and the column makes sense in one unit only, this settles the guess.
    std::int64_t ByteOf(std::string_view line, std::int64_t column);

    // The column of a byte in the unit of the last call of ByteOf.
    std::int64_t ColumnOf(std::string_view line, std::int64_t byte) const;

    // The messages are GCC's.
    void GuessDisplay() { m_guess = ColumnUnit::Display; }

private:
    ColumnUnit m_unit;
    ColumnUnit m_guess = ColumnUnit::Bytes;
    ColumnUnit m_last = ColumnUnit::Bytes;
};

}  // namespace qztools
