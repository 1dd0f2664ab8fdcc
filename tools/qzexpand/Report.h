// What the tool says on standard error: everything that goes wrong is reported here, in one form.
//
// A report is written in one piece. For people it is a text:
//
//   a.qz(3) : Assertion failure
//           @assert(x)
//   ie      @assert(1 > 2)
//   @assert(x)
//          ^
//   main.qz(7) : a.qz is imported here
//   hint: ...
//
// First the message with its lines of context, then the line of the source with a mark below the
// column, then the imports that led to the file, then hints. For editors it is a JSON object on
// one line; docs/qzexpand.md names its fields.
//
// Whatever comes from a text, a file name or the command line is made visible: see Visible.h.
#pragma once

#include <string>
#include <string_view>

#include "Place.h"
#include "ReportStyle.h"
#include "SourceTexts.h"
#include "qzMacroExpander/LSToken.h"

namespace qztools {

// The style of all reports from now on.
void SetReportStyle(const ReportStyle& style, bool terminalTakesColor);

const ReportStyle& CurrentReportStyle();

// Tells what else has been written to standard error, which is what texts print. A report begins a
// line of its own.
void NotePrinted(vorn::SubString bytes);

// What ends the line that was printed last, if it is open. May be called from a signal handler.
std::string_view EndOfPrintedLine();

// An error of a text. One whose position lies in no text that is known, such as a text that macros
// have put together, is reported without a line for the current text.
void ReportError(const SourceTexts& texts, const vorn::LexScannerException& e);

// What is wrong with a stretch of a known text, although it was expanded.
struct Remark {
    enum class Severity { Warning, Error };

    Severity severity = Severity::Warning;
    Place place{};
    vorn::ssize_t size = 0;  // of the stretch, in bytes
    std::string message{};
    std::string hint{};  // may be empty
};
void ReportRemark(const SourceTexts& texts, const Remark& remark);

// The end of a run at one of its limits: where the text stood, and what gives it more room.
void ReportLimit(const SourceTexts& texts, const vorn::LexScannerException& e,
                 std::string_view advice);

// A reason that lies outside the texts, such as a file that cannot be read.
void ReportFault(std::string_view message);

// The same with a hint, where no memory is left for more. REQUIRES: two short texts of the tool's
// own, without quotes.
void ReportWithoutMemory(const char* message, const char* hint);

// A call that makes no sense.
void ReportWrongCall(std::string_view message);

}  // namespace qztools
