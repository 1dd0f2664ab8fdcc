// Reports for people.

#include <algorithm>
#include <string_view>

#include "Backtrace.h"
#include "Diagnosis.h"
#include "common/Excerpt.h"
#include "common/Views.h"

namespace qztools {

namespace {

// As compilers do it: what is to be seen first is bold, and the mark has a colour of its own.
constexpr std::string_view s_bold = "\x1b[1m";
constexpr std::string_view s_errorColor = "\x1b[1;31m";
constexpr std::string_view s_warningColor = "\x1b[1;35m";
constexpr std::string_view s_markColor = "\x1b[1;32m";
constexpr std::string_view s_hintColor = "\x1b[1;36m";
constexpr std::string_view s_plain = "\x1b[m";

class TextForm {
public:
    TextForm(const SourceTexts& texts, const Diagnosis& diagnosis, const ReportStyle& style)
        : m_texts(texts), m_diagnosis(diagnosis), m_style(style) {}

    std::string Format() {
        AddMessage();
        AddContext();
        if (m_diagnosis.place)
            AddExcerpt(*m_diagnosis.place);
        if (m_diagnosis.text != nullptr)
            AddImports(*m_diagnosis.text);
        AddHints();
        return std::move(m_report) + m_diagnosis.usage;
    }

private:
    void AddColored(std::string_view color, std::string_view s) {
        if (m_style.isColored.value_or(false) && !s.empty())
            m_report.append(color).append(s).append(s_plain);
        else
            m_report += s;
    }

    std::string Subject() const {
        if (m_diagnosis.place)
            return PlaceName(*m_diagnosis.place);
        return m_diagnosis.text != nullptr ? m_diagnosis.text->name + " : " : "qzexpand: ";
    }

    // Of a message of several lines, the first one has the colour.
    void AddMessage() {
        AddColored(s_bold, Subject());
        if (m_diagnosis.isWarning)
            AddColored(s_warningColor, "warning: ");
        const std::string_view message = m_diagnosis.message;
        const std::size_t end = std::min(message.find('\n'), message.size());
        AddColored(m_diagnosis.isWarning ? s_bold : s_errorColor, message.substr(0, end));
        m_report.append(message.substr(end)) += '\n';
    }

    void AddContext() {
        const std::vector<std::string>& whole = m_diagnosis.context;
        for (const std::string& entry : m_style.hasWholeBacktrace ? whole : FoldContext(whole))
            m_report += "    " + entry + '\n';
    }

    void AddExcerpt(const Place& place) {
        const Excerpt excerpt =
            MakeExcerpt(ToView(place.bytes), static_cast<std::size_t>(place.column),
                        static_cast<std::size_t>(m_diagnosis.size));
        if (excerpt.line.empty())
            return;
        m_report += excerpt.line + '\n' + excerpt.blanks;
        AddColored(s_markColor, excerpt.mark);
        m_report += '\n';
    }

    void AddImports(const SourceText& text) {
        const std::string* name = &text.name;
        for (const Place& place : ImportsOf(m_texts, text)) {
            AddColored(s_bold, PlaceName(place));
            m_report += *name + " is imported here\n";
            name = &place.text->name;
        }
    }

    void AddHints() {
        for (const std::string& hint : m_diagnosis.hints) {
            AddColored(s_hintColor, "hint: ");
            m_report += hint + '\n';
        }
    }

    const SourceTexts& m_texts;
    const Diagnosis& m_diagnosis;
    const ReportStyle& m_style;
    std::string m_report;
};

}  // namespace

std::string FormatAsText(const SourceTexts& texts, const Diagnosis& diagnosis,
                         const ReportStyle& style) {
    return TextForm(texts, diagnosis, style).Format();
}

}  // namespace qztools
