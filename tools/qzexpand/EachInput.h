// What a call with several inputs asks for, one by one.
#pragma once

#include <vector>

#include "Options.h"

namespace qztools {

// The options of each input, as if it were expanded alone: its output is in the folder that -o
// names, under the name of the input without a final .qz, and further files of the run are in the
// folders of their own options. Throws UsageError where two files would be written to one place,
// and Fault where there is no such folder or an output would replace an input.
std::vector<Options> OptionsOfEachInput(const Options& options);

}  // namespace qztools
