// The map in the form that web browsers and their tools know: a Source Map, revision 3.
//
// A segment starts with each piece of the output, and with each line in a piece. One of copied text
// leads to its byte in the source, one of calculated text to the start of what yielded it.
// Indentation and what was inserted have segments that lead nowhere. A character belongs to the
// piece that holds its first byte. Lines and columns are those of TextLines.h.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/Map.h"

namespace qztools {

// map names output and sources as the file will. texts are those of its sources.
std::string FormatSourceMapV3(const Map& map, std::string_view output,
                              const std::vector<std::string_view>& texts);

}  // namespace qztools
