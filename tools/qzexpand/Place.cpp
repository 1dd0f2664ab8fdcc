#include "Place.h"

#include <algorithm>

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
