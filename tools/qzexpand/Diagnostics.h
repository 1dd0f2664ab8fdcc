// Errors of a text, as the user sees them:
//
//   a.qz(3) : Assertion failure
//           @assert(x)
//   ie      @assert(1 > 2)
//   @assert(x)
//          ^
//
// First the message with its lines of context, then the line of the source with a mark below the
// column, and then the imports that led to the file, as in "main.qz(7) : a.qz is imported here".
// All of it is made visible: see Visible.h.
#pragma once

#include <string>

#include "SourceTexts.h"
#include "qzMacroExpander/LSToken.h"

namespace qztools {

// A position in a text, found by its address.
struct Place {
    const SourceText* text;
    vorn::ssize_t line;     // counted from 1
    vorn::SubString bytes;  // of the line, without its end
    vorn::ssize_t column;   // in bytes, counted from 0
};

// REQUIRES: text holds pos, or ends there.
Place FindPlace(const SourceText& text, const char* pos);

// "name(line) : "
std::string PlaceName(const Place& place);

// The line and the mark. Of a very long line, the part around the mark; of an empty one, nothing.
std::string Excerpt(const Place& place);

// The report of an error. One whose position lies in no text that is known, such as a text that
// macros have put together, is reported without a line for the current text.
std::string FormatError(const SourceTexts& texts, const vorn::LexScannerException& e);

}  // namespace qztools
