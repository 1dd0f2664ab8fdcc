// What -D puts into the frame before the text is expanded.
#pragma once

#include "Options.h"
#include "SourceTexts.h"
#include "qzMacroExpander/LSVariable.h"

namespace qzexpand {

// Adds one definition; it hides an earlier one of the same name. The value becomes one of the
// texts, so that errors in it can be reported. definition must outlive the frame. Throws
// LexScannerException.
void Define(vorn::FileScopeVarFrame& frame, SourceTexts& texts, const Definition& definition);

}  // namespace qzexpand
