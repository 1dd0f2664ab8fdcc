#include "NearNames.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <vector>

#include "common/Views.h"

namespace qztools {

using namespace vorn;

namespace {

constexpr std::string_view s_directives[] = {
    "assert", "assertfails", "def",   "defpython",    "else",       "elseif", "exportdef",
    "fail",   "for",         "if",    "import",       "importpath", "let",    "nakeddef",
    "print",  "println",     "quote", "relativepath", "runpython",  "scope",  "str",
    "strW",   "strx",        "strxW", "unstr",        "while",
};

char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The number of bytes to insert, remove, replace or swap with their neighbour, case left aside.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = ToLower(a[i - 1]) == ToLower(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            const bool swapped = i > 1 && j > 1 && ToLower(a[i - 1]) == ToLower(b[j - 2])
                                 && ToLower(a[i - 2]) == ToLower(b[j - 1]);
            if (swapped)
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last.back();
}

// The nearest of the names that were offered, and the first of several.
class Nearest {
public:
    // A third of a name may be wrong. A much longer name, such as one made by a generator, is not
    // compared: that would take its time.
    explicit Nearest(std::string_view name)
        : m_name(name.substr(0, s_mostBytes + 1)),
          m_distance(std::max<std::size_t>(1, m_name.size() / 3) + 1) {}

    void Offer(std::string_view name, std::string_view prefix) {
        const std::size_t most = std::max(name.size(), m_name.size());
        if (most > s_mostBytes || most - std::min(name.size(), m_name.size()) >= m_distance)
            return;
        const std::size_t distance = Distance(m_name, name);
        if (distance >= std::min(m_distance, most))
            return;
        m_distance = distance;
        m_found = std::string(prefix).append(name);
    }

    // Empty if none was near.
    const std::string& Found() const { return m_found; }

private:
    static constexpr std::size_t s_mostBytes = 64;

    std::string_view m_name;
    std::size_t m_distance;  // that a name must stay below
    std::string m_found;
};

}  // namespace

std::string SuggestName(const FileScopeVarFrame& frame, std::string_view name) {
    if (name == "elseif")
        return "an @elseif follows the block of its @if directly";
    Nearest nearest(name);
    for (const std::string_view directive : s_directives)
        nearest.Offer(directive, "@");
    for (const LSVariable* var = frame.m_localVariables.m_first; var != nullptr;
         var = var->m_next) {
        if (ToView(var->m_name) == name)
            return std::string(name) + " is used without the @";
        nearest.Offer(ToView(var->m_name), "");
    }
    return nearest.Found().empty() ? "" : "did you mean " + nearest.Found() + "?";
}

}  // namespace qztools
