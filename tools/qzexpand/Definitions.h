// What -D puts into the frame before the text is expanded.
#pragma once

#include "Session.h"

namespace qztools {

// Adds one definition of the options to the frame; it hides an earlier one of the same name. The
// value becomes one of the texts, so that errors in it can be reported. Throws
// LexScannerException.
void Define(Session& session, const Definition& definition);

}  // namespace qztools
