#include "common/UnifiedDiff.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

#include "common/LineChanges.h"

namespace qztools {

namespace {

constexpr std::size_t s_context = 3;

// ---- lines -------------------------------------------------------------------------------------

// Each with its line feed, which the last one may lack.
std::vector<std::string_view> SplitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return lines;
}

class LineCounter {
public:
    LineNumbers NumbersOf(const std::vector<std::string_view>& lines) {
        LineNumbers numbers;
        numbers.reserve(lines.size());
        for (const std::string_view line : lines)
            numbers.push_back(
                m_numbers.try_emplace(line, static_cast<int>(m_numbers.size())).first->second);
        return numbers;
    }

private:
    std::unordered_map<std::string_view, int> m_numbers;
};

// ---- hunks -------------------------------------------------------------------------------------

// Lines that are replaced by others. The two stretches of lines, of which one may be empty.
struct Change {
    std::size_t oldFirst, oldLast, newFirst, newLast;
};

std::vector<Change> CollectChanges(const LineChanges& lines) {
    std::vector<Change> changes;
    std::size_t i = 0;
    std::size_t k = 0;
    while (i < lines.removed.size() || k < lines.added.size()) {
        Change change{i, i, k, k};
        while (i < lines.removed.size() && lines.removed[i] != 0)
            change.oldLast = ++i;
        while (k < lines.added.size() && lines.added[k] != 0)
            change.newLast = ++k;
        if (change.oldFirst != i || change.newFirst != k)
            changes.push_back(change);
        else
            ++i, ++k;
    }
    return changes;
}

class HunkWriter {
public:
    HunkWriter(std::string_view oldText, std::string_view newText)
        : m_old(SplitLines(oldText)), m_new(SplitLines(newText)) {}

    std::string Write() {
        LineCounter counter;
        const LineNumbers oldNumbers = counter.NumbersOf(m_old);
        const LineNumbers newNumbers = counter.NumbersOf(m_new);
        const std::vector<Change> changes = CollectChanges(FindLineChanges(oldNumbers, newNumbers));
        for (auto first = changes.begin(); first != changes.end();) {
            auto last = first + 1;
            while (last != changes.end() && last->oldFirst - last[-1].oldLast <= 2 * s_context)
                ++last;
            WriteHunk(&*first, &last[-1] + 1);
            first = last;
        }
        return std::move(m_out);
    }

private:
    using Lines = std::vector<std::string_view>;

    void WriteHunk(const Change* first, const Change* last) {
        const Change& end = last[-1];
        const std::size_t before = std::min(s_context, first->oldFirst);
        const std::size_t behind = std::min(s_context, m_old.size() - end.oldLast);
        m_out += "@@ -";
        WriteRange(first->oldFirst - before, end.oldLast + behind);
        m_out += " +";
        WriteRange(first->newFirst - before, end.newLast + behind);
        m_out += " @@\n";
        std::size_t next = first->oldFirst - before;
        for (; first != last; ++first) {
            WriteLines(' ', m_old, next, first->oldFirst);
            WriteLines('-', m_old, first->oldFirst, first->oldLast);
            WriteLines('+', m_new, first->newFirst, first->newLast);
            next = first->oldLast;
        }
        WriteLines(' ', m_old, next, next + behind);
    }

    // An empty stretch is named by the line in front of it, and a single line has no size.
    void WriteRange(std::size_t first, std::size_t last) {
        const std::size_t size = last - first;
        m_out += std::to_string(size == 0 ? first : first + 1);
        if (size != 1)
            m_out += ',' + std::to_string(size);
    }

    void WriteLines(char sign, const Lines& lines, std::size_t first, std::size_t last) {
        for (; first < last; ++first) {
            m_out += sign;
            m_out += lines[first];
            if (lines[first].back() != '\n')
                m_out += "\n\\ No newline at end of file\n";
        }
    }

    Lines m_old;
    Lines m_new;
    std::string m_out;
};

// ---- the header --------------------------------------------------------------------------------

bool NeedsQuotes(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '"' || c == '\\' || c == '\x7f';
}

// As diff writes names, and patch reads them.
std::string QuoteName(const std::string& name) {
    if (std::none_of(name.begin(), name.end(), NeedsQuotes))
        return name;
    std::string quoted = "\"";
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (!NeedsQuotes(c))
            quoted += c;
        else if (c == '"' || c == '\\')
            quoted += {'\\', c};
        else
            quoted +=
                {'\\', static_cast<char>('0' + (byte >> 6)),
                 static_cast<char>('0' + (byte >> 3 & 7)), static_cast<char>('0' + (byte & 7))};
    }
    return quoted + '"';
}

}  // namespace

std::string FormatHunks(std::string_view oldText, std::string_view newText) {
    return HunkWriter(oldText, newText).Write();
}

std::string FormatDiffHeader(const std::string& path, bool isThere) {
    const std::string name = QuoteName(path);
    return "--- " + (isThere ? name + "\tthe file" : std::string("/dev/null")) + "\n+++ " + name
           + "\tthe expansion\n";
}

}  // namespace qztools
