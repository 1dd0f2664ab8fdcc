#include "Report.h"

#include <unistd.h>

#include "Diagnostics.h"
#include "Options.h"
#include "common/Files.h"
#include "common/Views.h"
#include "common/Visible.h"

namespace qztools {

namespace {

// In one piece, so that the reports of several processes do not mix.
void Write(std::string_view report) {
    WriteAll(STDERR_FILENO, ToSubString(report));
}

std::string FormatFault(std::string_view message) {
    return "qzexpand: " + VisibleName(message) + '\n';
}

}  // namespace

void ReportError(const SourceTexts& texts, const vorn::LexScannerException& e) {
    std::string report = FormatError(texts, e);
    if (ToView(e.m_description).find("Python initialisation error: forbidden by the host")
        != std::string_view::npos)
        report += FormatFault("--python allows the text to run Python");
    Write(report);
}

void ReportLimit(const SourceTexts& texts, const vorn::LexScannerException& e,
                 std::string_view advice) {
    Write(FormatError(texts, e) + FormatFault(advice));
}

void ReportFault(std::string_view message) {
    Write(FormatFault(message));
}

void ReportWrongCall(std::string_view message) {
    Write(FormatFault(message) + s_usage);
}

}  // namespace qztools
