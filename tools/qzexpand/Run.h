// One run of the tool, from the input to the output.
#pragma once

#include "Options.h"

namespace qztools {

// Expands or evaluates as the options say, and reports what goes wrong on standard error. Returns
// the exit status.
int Run(const Options& options);

// Writes a text of the tool's own to standard output. Returns the exit status.
int Show(const std::string& text);

}  // namespace qztools
