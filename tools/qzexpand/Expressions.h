// Texts that are evaluated as expressions of the language: they are expanded first, then parsed.
#pragma once

#include "SourceTexts.h"
#include "qzMacroExpander/LSVariable.h"

namespace qztools {

// The text that @let stores for a value of the type, with no loss of data in the conversion.
// Throws LexScannerException, at the place in the source where that is known.
vorn::xstring EvaluateAs(vorn::ELSVariable type, vorn::VarFrame& frame, const SourceText& source);

// The text that @( ) writes for a value of any type.
vorn::xstring EvaluateAsText(vorn::VarFrame& frame, const SourceText& source);

}  // namespace qztools
