// qzmap remap: the messages of a compiler, with the places of an output turned into those of its
// sources.
#pragma once

#include <functional>
#include <string>

#include "Options.h"

namespace qztools {

using Reporter = std::function<void(const std::string& message)>;

// Copies standard input to standard output, each line as soon as it is there. A map that cannot be
// used is reported, and the messages about its output go through as they are. Returns whether all
// maps could be used. Throws Fault.
bool Remap(const Options& options, const Reporter& report);

}  // namespace qztools
