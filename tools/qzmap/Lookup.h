// qzmap lookup: from a place of the output to the sources, or the other way.
#pragma once

#include "Options.h"

namespace qztools {

// What the command writes. Throws Fault.
std::string Lookup(const Options& options);

}  // namespace qztools
