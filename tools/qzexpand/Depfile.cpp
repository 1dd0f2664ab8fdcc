#include "Depfile.h"

#include <string_view>

#include "common/Fault.h"

namespace qztools {

namespace {

// Where a line of names ends, in bytes; a longer name has a line of its own.
constexpr std::size_t s_lineLength = 72;

[[noreturn]] void ThrowUnwritable(const std::string& name) {
    throw Fault(name
                + ": a depfile cannot hold a name with a line end or with a backslash at its end");
}

// A name as Make reads it. Backslashes stand for themselves, but those in front of a blank would
// be taken for an escape, so they are doubled.
// Kept: those in front of # are not doubled, although Make would want it. Compilers do the same,
// and Ninja reads what they write.
std::string Escape(const std::string& name) {
    if (name.find_first_of("\n\r") != std::string::npos || name.ends_with('\\'))
        ThrowUnwritable(name);
    std::string escaped;
    std::size_t backslashes = 0;
    for (const char c : name) {
        if (c == ' ' || c == '\t')
            escaped.append(backslashes + 1, '\\');
        else if (c == '#' || c == ':')
            escaped += '\\';
        else if (c == '$')
            escaped += '$';
        escaped += c;
        backslashes = c == '\\' ? backslashes + 1 : 0;
    }
    return escaped;
}

// Appends names to the text of a rule and breaks its lines.
class Rule {
public:
    explicit Rule(const std::string& target)
        : m_text(Escape(target) + ':'), m_column(m_text.size()) {}

    void Add(const std::string& escaped) {
        if (m_column + escaped.size() > s_lineLength) {
            m_text += " \\\n";
            m_column = 0;
        }
        m_text += ' ' + escaped;
        m_column += 1 + escaped.size();
    }

    const std::string& Text() const { return m_text; }

private:
    std::string m_text;
    std::size_t m_column;
};

}  // namespace

std::string FormatDepfile(const std::string& target, const std::string& input,
                          const FilesRead& files) {
    Rule rule(target);
    std::string phony;
    for (const std::string& file : files.InOrder()) {
        const std::string escaped = Escape(file);
        rule.Add(escaped);
        if (file != input)
            phony += escaped + ":\n";
    }
    return rule.Text() + '\n' + phony;
}

}  // namespace qztools
