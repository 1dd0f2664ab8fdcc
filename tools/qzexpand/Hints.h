// Hints: what a message of the library does not say to somebody who is new to the language.
//
// A hint is given only where the cause is certain: the message names the kind of fault, and the
// bytes at its place confirm it. The message itself is never changed.
#pragma once

#include <string>
#include <vector>

#include "SourceTexts.h"
#include "qzMacroExpander/LSToken.h"

namespace qztools {

// The hints for an error; none where nothing certain can be said. They may hold any bytes.
std::vector<std::string> FindHints(const SourceTexts& texts, const vorn::LexScannerException& e);

}  // namespace qztools
