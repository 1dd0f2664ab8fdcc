// qzmap html: a page that shows an output and its sources side by side.
#pragma once

#include <string>

#include "Options.h"

namespace qztools {

// The page, which needs nothing besides itself. Throws Fault.
std::string MakePage(const Options& options);

}  // namespace qztools
