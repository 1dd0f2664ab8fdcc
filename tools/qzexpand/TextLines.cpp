#include "TextLines.h"

#include <algorithm>

#include "common/Visible.h"

namespace qztools {

namespace {

constexpr std::size_t s_distance = 256;  // of the marks

}  // namespace

Utf16Step FirstUtf16Step(std::string_view s) {
    if (static_cast<unsigned char>(s.front()) < 0x80)
        return {1, 1};
    const std::size_t size = FirstGlyph(s).size;
    return {size, size == 4 ? 2 : 1};
}

TextLines::TextLines(std::string_view text)
    : m_text(text),
      m_lineStarts{
          0
},
      m_marks{{0, 0}} {
    for (std::size_t i = text.find('\n'); i != std::string_view::npos; i = text.find('\n', i + 1))
        m_lineStarts.push_back(i + 1);
    Mark mark{0, 0};
    while (mark.offset < text.size()) {
        const Utf16Step step = FirstUtf16Step(text.substr(mark.offset));
        while (mark.offset + step.bytes > m_marks.size() * s_distance)
            m_marks.push_back(mark);
        mark.offset += step.bytes;
        mark.units += step.units;
    }
}

std::int64_t TextLines::LineOf(std::int64_t offset) const {
    const auto next = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(),
                                       static_cast<std::size_t>(offset));
    return next - m_lineStarts.begin() - 1;
}

std::int64_t TextLines::ColumnOf(std::int64_t offset) const {
    const std::size_t start = m_lineStarts[static_cast<std::size_t>(LineOf(offset))];
    return UnitsBefore(static_cast<std::size_t>(offset)) - UnitsBefore(start);
}

// Of a character that reaches over the offset, none.
std::int64_t TextLines::UnitsBefore(std::size_t offset) const {
    Mark mark = m_marks[std::min(offset / s_distance, m_marks.size() - 1)];
    while (mark.offset < offset) {
        const Utf16Step step = FirstUtf16Step(m_text.substr(mark.offset));
        if (mark.offset + step.bytes > offset)
            break;
        mark.offset += step.bytes;
        mark.units += step.units;
    }
    return mark.units;
}

}  // namespace qztools
