// The map of a run as a file.
#pragma once

#include <string>

#include "MapSources.h"
#include "Options.h"

namespace qztools {

// The map of an output, in the format that the options name. Throws Fault for a name that the
// format cannot hold.
std::string FormatMapFile(const Options& options, const MappedText& mapped,
                          const MapSources& sources);

// The path of a file as it is seen from a folder, so that both can be moved together: found by
// their names where that leads to the file, and by their real places where symbolic links are in
// the way. Of an absolute and a relative path, the relative one is taken from the working folder.
// Where no way can be found, as in a working folder that has been removed, the path as it is.
std::string PathFrom(const std::string& folder, const std::string& file);

}  // namespace qztools
