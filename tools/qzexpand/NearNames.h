// What may have been meant by a name behind an @ that is unknown.
#pragma once

#include <string>
#include <string_view>

#include "qzMacroExpander/LSVariable.h"

namespace qztools {

// A hint for the name, by the directives and the variables of the frame; empty if nothing is near.
std::string SuggestName(const vorn::FileScopeVarFrame& frame, std::string_view name);

}  // namespace qztools
