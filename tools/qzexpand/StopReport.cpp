#include "StopReport.h"

#include <algorithm>
#include <array>
#include <charconv>

#include <unistd.h>

#include "Place.h"
#include "Report.h"
#include "Standpoint.h"
#include "common/Files.h"
#include "common/Views.h"
#include "qzUtils/StringExt.h"

namespace qztools {

namespace {

// A text of limited size, put together without allocation. What does not fit is left out: there is
// room for the visible forms of as many paths as a report can name.
class ShortText {
public:
    ShortText& operator<<(std::string_view s) {
        const std::size_t n = std::min(s.size(), m_text.size() - m_size);
        std::copy_n(s.data(), n, m_text.data() + m_size);
        m_size += n;
        return *this;
    }
    ShortText& operator<<(long value) {
        std::array<char, 24> digits;
        const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        return *this << std::string_view(digits.data(), end);
    }
    std::string_view View() const { return {m_text.data(), m_size}; }

private:
    std::array<char, 1 << 18> m_text;
    std::size_t m_size = 0;
};

// Part of a JSON string. REQUIRES: s is UTF-8 without control bytes, as visible texts are.
struct Escaped {
    std::string_view s;
};

ShortText& operator<<(ShortText& report, Escaped escaped) {
    for (const char& c : escaped.s) {
        if (c == '"' || c == '\\')
            report << "\\";
        report << std::string_view(&c, 1);
    }
    return report;
}

// What is to be told: the bound, and where the text stood.
struct Stop {
    Bound bound{};
    long amount = 0;
    const SourceText* current = nullptr;  // null before there is one
    std::array<Step, 6> steps{};
    std::size_t count = 0;
};

std::string_view KindOf(const Step& step) {
    return step.token == "@" ? "in @" : "in macro ";
}

long LineOf(const Step& step) {
    return vorn::GetLineNumber(step.text->text, step.token.m_p1);
}

// ---- for people --------------------------------------------------------------------------------

//   a.qz(2) : the stack of 64 MiB ran out in macro pong
//   a.qz(1) : in macro ping
//   hint: ...
void WriteText(ShortText& report, const Stop& stop) {
    const Bound& bound = stop.bound;
    if (stop.count == 0)
        report << (stop.current != nullptr ? std::string_view(stop.current->name) : "qzexpand")
               << " : " << bound.before << stop.amount << bound.behind << "\n";
    for (std::size_t i = 0; i < stop.count; ++i) {
        const Step& step = stop.steps[i];
        report << step.text->name << "(" << LineOf(step) << ") : ";
        if (i == 0)
            report << bound.before << stop.amount << bound.behind << " ";
        report << KindOf(step) << ToView(step.name) << "\n";
    }
    report << "hint: " << bound.advice << "\n";
}

// ---- for editors -------------------------------------------------------------------------------

void WriteJsonPlace(ShortText& report, const Step& step) {
    const Place place = FindPlace(*step.text, step.token.m_p1);
    report << ",\"file\":\"" << Escaped{step.text->name} << "\",\"line\":" << place.line
           << ",\"column\":" << place.column + 1;
}

// The object that is described with the other reports. The steps behind the first are its context.
void WriteJson(ShortText& report, const Stop& stop) {
    const Bound& bound = stop.bound;
    report << "{\"severity\":\"error\"";
    if (stop.count != 0)
        WriteJsonPlace(report, stop.steps[0]);
    else if (stop.current != nullptr)
        report << ",\"file\":\"" << Escaped{stop.current->name} << "\"";
    report << ",\"message\":\"" << bound.before << stop.amount << bound.behind;
    if (stop.count != 0)
        report << " " << KindOf(stop.steps[0]) << ToView(stop.steps[0].name);
    report << "\",\"context\":[";
    for (std::size_t i = 1; i < stop.count; ++i) {
        const Step& step = stop.steps[i];
        report << (i == 1 ? "\"" : ",\"") << Escaped{step.text->name} << "(" << LineOf(step)
               << ") : " << KindOf(step) << ToView(step.name) << "\"";
    }
    report << "],\"hints\":[\"" << bound.advice << "\"],\"imports\":[]}\n";
}

}  // namespace

void WriteStopReport(const Session& session, const Bound& bound, long amount, const void* low,
                     const void* high) {
    // Static, as the stack of a signal handler may be small.
    static ShortText s_report;
    static Stop s_stop;
    s_stop.bound = bound;
    s_stop.amount = amount;
    s_stop.current = session.texts.Current();
    s_stop.count = FindSteps(session, low, high, s_stop.steps.data(), s_stop.steps.size());
    s_report << EndOfPrintedLine();
    if (CurrentReportStyle().isJson)
        WriteJson(s_report, s_stop);
    else
        WriteText(s_report, s_stop);
    WriteAll(STDERR_FILENO, ToSubString(s_report.View()));
}

}  // namespace qztools
