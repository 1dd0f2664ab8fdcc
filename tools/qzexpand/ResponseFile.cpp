#include "ResponseFile.h"

#include <string_view>

#include "common/Fault.h"
#include "common/Files.h"
#include "common/Views.h"

namespace qztools {

namespace {

constexpr std::string_view s_blanks = " \t\n\v\f\r";

bool IsBlank(char c) {
    return s_blanks.find(c) != std::string_view::npos;
}

class Splitter {
public:
    explicit Splitter(std::string_view text) : m_rest(text) {}

    // Whether there is another argument.
    bool Find() {
        m_rest.remove_prefix(std::min(m_rest.find_first_not_of(s_blanks), m_rest.size()));
        return !m_rest.empty();
    }

    // REQUIRES: there is one. A quote that stays open shows in HasOpenQuote.
    std::string Read() {
        std::string argument;
        while (!m_rest.empty() && (HasOpenQuote() || !IsBlank(m_rest.front()))) {
            const char c = Take();
            if (c == '\\' && !m_rest.empty())
                argument += Take();
            else if (c == m_quote)
                m_quote = 0;
            else if (!HasOpenQuote() && (c == '"' || c == '\''))
                m_quote = c;
            else if (c != '\\')
                argument += c;
        }
        return argument;
    }

    bool HasOpenQuote() const { return m_quote != 0; }

private:
    char Take() {
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }

    std::string_view m_rest;
    char m_quote = 0;
};

}  // namespace

std::vector<std::string> ReadArguments(const std::string& path) {
    vorn::xstring text;
    FileId id;
    if (const int error = ReadFile(path, text, id))
        ThrowSystemFault(path, error);
    if (ToView(text).find('\0') != std::string_view::npos)
        throw Fault(path + ": no file of arguments: it holds a zero byte");
    std::vector<std::string> arguments;
    Splitter splitter(ToView(text));
    while (splitter.Find())
        arguments.push_back(splitter.Read());
    if (splitter.HasOpenQuote())
        throw Fault(path + ": a quote is not closed");
    return arguments;
}

}  // namespace qztools
