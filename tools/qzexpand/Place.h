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

// The places that led to a text by their imports, innermost first.
std::vector<Place> ImportsOf(const SourceTexts& texts, const SourceText& text);

}  // namespace qztools
