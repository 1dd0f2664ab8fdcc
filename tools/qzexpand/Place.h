// Positions in texts, as the user sees them.
#pragma once

#include <string>
#include <vector>

#include "SourceTexts.h"

namespace qztools {

// A position in a text, found by its address.
struct Place {
    const SourceText* text = nullptr;
    vorn::ssize_t line = 0;    // counted from 1
    vorn::SubString bytes{};   // of the line, without its end
    vorn::ssize_t column = 0;  // in bytes, counted from 0
};

// REQUIRES: text holds pos, or ends there.
Place FindPlace(const SourceText& text, const char* pos);

// The same for a position in the text of another place and not in front of its line, in time in
// proportion to the distance.
Place FindPlaceBehind(const Place& earlier, const char* pos);

// "name(line) : "
std::string PlaceName(const Place& place);

// A line of source, and the line with the mark below its column: ^, or ^~~~ for a stretch. Both
// are visible, see Visible.h, and without their line ends.
struct Excerpt {
    std::string line;
    std::string blanks;  // in front of the mark
    std::string mark;
};

// Marks a stretch of that many bytes. Of a very long line, the part around the mark is shown; of
// an empty one, nothing.
Excerpt MakeExcerpt(const Place& place, vorn::ssize_t size);

// The places that led to a text by their imports, innermost first.
std::vector<Place> ImportsOf(const SourceTexts& texts, const SourceText& text);

}  // namespace qztools
