#include "common/Excerpt.h"

#include <algorithm>

#include "common/Visible.h"

namespace qztools {

namespace {

// How much of a long line is shown on either side of the mark, in bytes.
constexpr std::size_t s_reach = 100;

// The part of a line that is shown.
struct Window {
    std::size_t first, last;
    bool cutBefore, cutBehind;
};

bool IsUtf8Continuation(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

Window ChooseWindow(std::string_view line, std::size_t column) {
    Window window{0, line.size(), false, false};
    if (column > 2 * s_reach) {
        window.first = column - s_reach;
        while (window.first < column && IsUtf8Continuation(line[window.first]))
            ++window.first;
        window.cutBefore = true;
    }
    if (line.size() - column > 2 * s_reach) {
        window.last = column + s_reach;
        while (window.last > column && IsUtf8Continuation(line[window.last]))
            --window.last;
        window.cutBehind = true;
    }
    return window;
}

}  // namespace

Excerpt MakeExcerpt(std::string_view line, std::size_t column, std::size_t size) {
    constexpr std::string_view s_cut = "...";
    if (line.empty())
        return {};
    column = std::min(column, line.size());
    const Window window = ChooseWindow(line, column);
    Excerpt excerpt{std::string(window.cutBefore ? s_cut : ""), {}, {}};
    excerpt.blanks.assign(excerpt.line.size(), ' ');
    for (std::size_t i = window.first; i < window.last;) {
        const std::string_view rest = line.substr(i, window.last - i);
        const Glyph glyph = FirstGlyph(rest);
        AppendGlyph(excerpt.line, rest, glyph);
        if (i + glyph.size <= column)
            excerpt.blanks +=
                rest[0] == '\t' ? std::string("\t") : std::string(glyph.Columns(), ' ');
        else if (i < column + size)
            excerpt.mark.append(glyph.Columns(), '~');
        i += glyph.size;
    }
    if (excerpt.mark.empty())
        excerpt.mark += '^';
    excerpt.mark.front() = '^';
    excerpt.line += window.cutBehind ? s_cut : "";
    return excerpt;
}

}  // namespace qztools
