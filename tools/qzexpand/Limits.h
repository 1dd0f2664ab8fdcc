// The end of a run at one of the limits that the options set.
#pragma once

#include <string_view>

#include "Options.h"
#include "qzMacroExpander/LSToken.h"

namespace qztools {

// What is thrown then. The position is that of the last text that was written, null where that is
// not known.
struct LimitReached {
    vorn::xstring message;
    std::string_view advice;
    const char* pos;
};

LimitReached MemoryRanOut(const char* pos);
LimitReached OutputIsFull(const Options& options, const char* pos);

// Whether an error of a text is that of a Python script for which there was no memory.
bool IsMemoryError(const vorn::LexScannerException& e);

// Whether so many bytes are more output than the options allow.
bool IsTooLong(const Options& options, vorn::ssize_t bytes);

}  // namespace qztools
