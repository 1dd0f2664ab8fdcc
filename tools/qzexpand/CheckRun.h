// --check: a run that writes nothing and says what it would have written.
#pragma once

#include <string>

#include "qzUtils/SubString.h"

namespace qztools {

// Compares a file with what it would become, and writes the difference to standard output. Returns
// whether there is none. Throws Fault.
bool CheckFile(const std::string& path, vorn::SubString bytes);

}  // namespace qztools
