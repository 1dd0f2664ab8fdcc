#include "Excerpt.h"

#include <algorithm>

#include "common/Visible.h"

namespace qztools {

namespace {

constexpr std::size_t s_before = 80;   // how much of a long line is shown before the mark, in bytes
constexpr std::size_t s_behind = 160;  // and from there on
constexpr std::string_view s_cut = "...";

bool IsUtf8Continuation(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

std::size_t StartOfWindow(std::string_view line, std::size_t mark) {
    if (mark <= s_before + s_cut.size())
        return 0;
    std::size_t start = mark - s_before;
    while (start < mark && IsUtf8Continuation(line[start]))
        ++start;
    return start;
}

std::size_t EndOfWindow(std::string_view line, std::size_t mark) {
    if (line.size() - mark <= s_behind + s_cut.size())
        return line.size();
    std::size_t end = mark + s_behind;
    while (end > mark && IsUtf8Continuation(line[end]))
        --end;
    return end;
}

}  // namespace

std::string Excerpt(std::string_view line, std::int64_t first, std::int64_t size) {
    if (line.empty())
        return {};
    const std::size_t mark = std::min(static_cast<std::size_t>(first), line.size());
    const std::size_t behind = mark + static_cast<std::size_t>(std::max<std::int64_t>(size, 1));
    const std::size_t start = StartOfWindow(line, mark);
    const std::size_t end = EndOfWindow(line, mark);
    std::string shown(start > 0 ? s_cut : "");
    std::string marks(shown.size(), ' ');
    for (std::size_t i = start; i < end;) {
        const std::string_view rest = line.substr(i, end - i);
        const Glyph glyph = FirstGlyph(rest);
        AppendGlyph(shown, rest, glyph);
        const bool isMarked = i + glyph.size > mark && i < behind;
        if (rest.front() == '\t')
            marks += i <= mark && i + 1 > mark ? "^" : "\t";
        else if (i < behind)
            marks += std::string(glyph.Columns(), isMarked ? '~' : ' ');
        if (i <= mark && mark < i + glyph.size && rest.front() != '\t')
            marks[marks.size() - glyph.Columns()] = '^';
        i += glyph.size;
    }
    if (mark == line.size())
        marks += '^';
    marks.erase(marks.find_last_not_of(" \t") + 1);
    return shown + (end < line.size() ? s_cut : "").data() + '\n' + marks + '\n';
}

}  // namespace qztools
