#include "StopReport.h"

#include <algorithm>
#include <array>
#include <charconv>

#include <unistd.h>

#include "Standpoint.h"
#include "common/Files.h"
#include "common/Views.h"
#include "qzUtils/StringExt.h"

namespace qztools {

namespace {

// A text of limited size, put together without allocation. What does not fit is left out.
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
    std::array<char, 8192> m_text;
    std::size_t m_size = 0;
};

// "a.qz(3) : MESSAGE in macro f"
void WriteStep(ShortText& report, const Step& step, std::string_view message) {
    report << step.text->name << "(" << vorn::GetLineNumber(step.text->text, step.token.m_p1)
           << ") :" << message << (step.token == "@" ? " in @" : " in macro ") << ToView(step.name)
           << "\n";
}

void WriteUnknownPlace(ShortText& report, const SourceText* current, std::string_view message) {
    report << (current != nullptr ? std::string_view(current->name) : "qzexpand") << " :" << message
           << "\n";
}

}  // namespace

void WriteStopReport(const Session& session, const Bound& bound, long amount, const void* low,
                     const void* high) {
    // Static, as the stack of a signal handler may be small.
    static ShortText s_message;
    static ShortText s_report;
    static std::array<Step, 6> s_steps;
    s_message << " " << bound.before << amount << bound.behind;
    const std::size_t count = FindSteps(session, low, high, s_steps.data(), s_steps.size());
    if (count == 0)
        WriteUnknownPlace(s_report, session.texts.Current(), s_message.View());
    for (std::size_t i = 0; i < count; ++i)
        WriteStep(s_report, s_steps[i], i == 0 ? s_message.View() : "");
    s_report << bound.advice;
    WriteAll(STDERR_FILENO, ToSubString(s_report.View()));
}

}  // namespace qztools
