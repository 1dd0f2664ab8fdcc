#include "Backtrace.h"

#include <algorithm>
#include <iterator>

namespace qztools {

namespace {

constexpr std::string_view s_indentation = "\n    ";

// What the library begins an entry with.
constexpr std::string_view s_beginnings[] = {
    "invoking macro ",
    "invoking python macro ",
    "passing formal argument ",
    "in @",
    "for @for directive",
    "for @while directive",
    "expression: ",
    "when parsing expression '",
};

// The place of the line feed in front of the next entry, or the end.
std::size_t FindEntry(std::string_view s, std::size_t from) {
    for (std::size_t at = s.find(s_indentation, from); at != s.npos;
         at = s.find(s_indentation, at + 1)) {
        const std::string_view line = s.substr(at + s_indentation.size());
        if (std::any_of(std::begin(s_beginnings), std::end(s_beginnings),
                        [line](std::string_view beginning) { return line.starts_with(beginning); }))
            return at;
    }
    return s.size();
}

}  // namespace

Backtrace ParseBacktrace(std::string_view description) {
    std::size_t at = FindEntry(description, 0);
    Backtrace backtrace{description.substr(0, at), {}};
    while (at < description.size()) {
        const std::size_t first = at + s_indentation.size();
        at = FindEntry(description, first);
        backtrace.context.push_back(description.substr(first, at - first));
    }
    return backtrace;
}

std::vector<std::string> FoldContext(const std::vector<std::string>& context) {
    constexpr std::ptrdiff_t s_shown = 5;  // at either end
    // A line that says that one entry is missing would take the place of that entry.
    if (std::ssize(context) <= 2 * s_shown + 1)
        return context;
    std::vector<std::string> folded(context.begin(), context.begin() + s_shown);
    folded.push_back("... (" + std::to_string(std::ssize(context) - 2 * s_shown)
                     + " more; --backtrace=all shows them)");
    folded.insert(folded.end(), context.end() - s_shown, context.end());
    return folded;
}

}  // namespace qztools
