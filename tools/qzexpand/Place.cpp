#include "Place.h"

#include <algorithm>
#include <string_view>

#include "common/Views.h"
#include "common/Visible.h"
#include "qzUtils/StringExt.h"

namespace qztools {

using vorn::SubString;

namespace {

// The line around a position, without its end.
SubString LineAround(SubString all, const char* pos) {
    const char* first =
        std::find(std::reverse_iterator(pos), std::reverse_iterator(all.m_p1), '\n').base();
    const char* last = std::find(pos, all.m_p2, '\n');
    if (last != first && last != pos && last[-1] == '\r')
        --last;
    return {first, last};
}

}  // namespace

Place FindPlace(const SourceText& text, const char* pos) {
    const SubString line = LineAround(text.text, pos);
    return {&text, vorn::GetLineNumber(text.text, pos), line, pos - line.m_p1};
}

Place FindPlaceBehind(const Place& earlier, const char* pos) {
    const SubString line = LineAround(earlier.text->text, pos);
    const auto lines = std::count(earlier.bytes.m_p1, line.m_p1, '\n');
    return {earlier.text, earlier.line + lines, line, pos - line.m_p1};
}

std::string PlaceName(const Place& place) {
    return place.text->name + '(' + std::to_string(place.line) + ") : ";
}

// ---- the excerpt -------------------------------------------------------------------------------

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

Excerpt MakeExcerpt(const Place& place, vorn::ssize_t size) {
    constexpr std::string_view s_cut = "...";
    const std::string_view line = ToView(place.bytes);
    if (line.empty())
        return {};
    const auto column = std::min(static_cast<std::size_t>(place.column), line.size());
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
        else if (i < column + static_cast<std::size_t>(size))
            excerpt.mark.append(glyph.Columns(), '~');
        i += glyph.size;
    }
    if (excerpt.mark.empty())
        excerpt.mark += '^';
    excerpt.mark.front() = '^';
    excerpt.line += window.cutBehind ? s_cut : "";
    return excerpt;
}

std::vector<Place> ImportsOf(const SourceTexts& texts, const SourceText& text) {
    std::vector<Place> imports;
    const SourceText* imported = &text;
    while (imported->importedAt != nullptr) {
        const SourceText* importer = texts.Find(imported->importedAt);
        imports.push_back(FindPlace(*importer, imported->importedAt));
        imported = importer;
    }
    return imports;
}

}  // namespace qztools
