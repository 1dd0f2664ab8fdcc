// #line directives, by which a compiler and a debugger name the sources of an output.
//
// A line of output counts as a line of the source that its first byte came from that is copied or
// calculated and not blank. Where that is not the line which a compiler would count next, a marker
// goes in front of it, or as soon behind as the code allows: see CodeLines.h.
#pragma once

#include "MapSources.h"

namespace qztools {

MappedText InsertLineMarkers(const MappedText& mapped, const MapSources& sources);

}  // namespace qztools
