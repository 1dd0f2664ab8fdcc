// A line of a text with a mark below a part of it.
#pragma once

#include <string>
#include <string_view>

namespace qztools {

// The line, and what stands in the line below it: ^, or ^~~~ for a stretch. Both are visible, see
// Visible.h, and without their line ends.
struct Excerpt {
    std::string line;
    std::string blanks;  // in front of the mark
    std::string mark;
};

// Marks size bytes of a line from column on, which is counted from 0. Of a very long line, the part
// around the mark is shown; of an empty one, nothing.
Excerpt MakeExcerpt(std::string_view line, std::size_t column, std::size_t size);

}  // namespace qztools
