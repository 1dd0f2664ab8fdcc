// Several inputs in one call.
//
// Each input is expanded by a process of its own, as many at a time as there are cores. What a
// process prints and reports is kept and shown in one piece, in the order of the inputs, so that
// it reads as if the inputs had been expanded one after the other.
#pragma once

#include "Options.h"

namespace qztools {

// Returns the worst exit status of all. Throws UsageError and Fault, as OptionsOfEachInput does.
int RunSeveral(const Options& options);

}  // namespace qztools
