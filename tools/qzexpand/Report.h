// What the tool says on standard error: everything that goes wrong is reported here, in one form.
#pragma once

#include <string>
#include <string_view>

#include "SourceTexts.h"
#include "qzMacroExpander/LSToken.h"

namespace qztools {

// An error of a text.
void ReportError(const SourceTexts& texts, const vorn::LexScannerException& e);

// The end of a run at one of its limits: where the text stood, and what gives it more room.
void ReportLimit(const SourceTexts& texts, const vorn::LexScannerException& e,
                 std::string_view advice);

// A reason that lies outside the texts, such as a file that cannot be read.
void ReportFault(std::string_view message);

// A call that makes no sense.
void ReportWrongCall(std::string_view message);

}  // namespace qztools
