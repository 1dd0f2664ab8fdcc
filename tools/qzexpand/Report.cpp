#include "Report.h"

#include <array>
#include <cstdio>

#include <unistd.h>

#include "Backtrace.h"
#include "Diagnosis.h"
#include "Hints.h"
#include "Options.h"
#include "common/Files.h"
#include "common/Views.h"
#include "common/Visible.h"

namespace qztools {

namespace {

// One for the process: reports are made long before and behind whatever could own a style.
ReportStyle s_style;

bool s_isLineOpen = false;  // a text has printed a line, but not its end

// In one piece, so that the reports of several processes do not mix.
void Write(const std::string& report) {
    const std::string_view start = EndOfPrintedLine();
    s_isLineOpen = false;
    WriteAll(STDERR_FILENO, ToSubString(std::string(start) + report));
}

void Write(const SourceTexts& texts, const Diagnosis& diagnosis) {
    Write(s_style.isJson ? FormatAsJson(texts, diagnosis)
                         : FormatAsText(texts, diagnosis, s_style));
}

void Write(const Diagnosis& diagnosis) {
    Write(SourceTexts(), diagnosis);
}

Diagnosis Diagnose(const SourceTexts& texts, const vorn::LexScannerException& e) {
    Diagnosis diagnosis;
    diagnosis.text = texts.Find(e.m_pos);
    if (diagnosis.text != nullptr)
        diagnosis.place = FindPlace(*diagnosis.text, e.m_pos);
    else
        diagnosis.text = texts.Current();
    const Backtrace backtrace = ParseBacktrace(ToView(e.m_description));
    diagnosis.message = Visible(backtrace.message);
    for (const std::string_view entry : backtrace.context)
        diagnosis.context.push_back(Visible(entry));
    return diagnosis;
}

}  // namespace

void SetReportStyle(const ReportStyle& style, bool terminalTakesColor) {
    s_style = style;
    s_style.isColored = style.isColored.value_or(terminalTakesColor);
}

const ReportStyle& CurrentReportStyle() {
    return s_style;
}

void NotePrinted(vorn::SubString bytes) {
    if (bytes)
        s_isLineOpen = bytes.m_p2[-1] != '\n';
}

std::string_view EndOfPrintedLine() {
    return s_isLineOpen ? "\n" : "";
}

void ReportError(const SourceTexts& texts, const vorn::LexScannerException& e) {
    Diagnosis diagnosis = Diagnose(texts, e);
    for (const std::string& hint : FindHints(texts, e))
        diagnosis.hints.push_back(VisibleName(hint));
    Write(texts, diagnosis);
}

void ReportRemark(const SourceTexts& texts, const Remark& remark) {
    Diagnosis diagnosis;
    diagnosis.isWarning = remark.severity == Remark::Severity::Warning;
    diagnosis.text = remark.place.text;
    diagnosis.place = remark.place;
    diagnosis.size = remark.size;
    diagnosis.message = VisibleName(remark.message);
    if (!remark.hint.empty())
        diagnosis.hints.push_back(VisibleName(remark.hint));
    Write(texts, diagnosis);
}

void ReportLimit(const SourceTexts& texts, const vorn::LexScannerException& e,
                 std::string_view advice) {
    Diagnosis diagnosis = Diagnose(texts, e);
    diagnosis.hints.emplace_back(advice);
    Write(texts, diagnosis);
}

void ReportFault(std::string_view message) {
    Diagnosis diagnosis;
    diagnosis.message = VisibleName(message);
    Write(diagnosis);
}

void ReportWithoutMemory(const char* message, const char* hint) {
    const char* form = s_style.isJson
                           ? "%s{\"severity\":\"error\",\"message\":\"%s\",\"context\":[],"
                             "\"hints\":[\"%s\"],\"imports\":[]}\n"
                           : "%sqzexpand: %s\nhint: %s\n";
    std::array<char, 512> report;
    const int size =
        std::snprintf(report.data(), report.size(), form, EndOfPrintedLine().data(), message, hint);
    WriteAll(STDERR_FILENO, vorn::SubString(report.data(), report.data() + size));
}

void ReportWrongCall(std::string_view message) {
    Diagnosis diagnosis;
    diagnosis.message = VisibleName(message);
    diagnosis.usage = s_usage;
    Write(diagnosis);
}

}  // namespace qztools
