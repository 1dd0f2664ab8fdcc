// qzmap check: the proof that a map covers its output exactly.
#pragma once

#include "LoadedMap.h"

namespace qztools {

// Returns what is proven, in one line. Throws Fault for the first piece that is not: one that was
// copied and differs from its source, or indentation that is not blank. That the files are those of
// the map, and that the pieces add up, has been seen to on loading.
std::string Check(const LoadedMap& map);

}  // namespace qztools
