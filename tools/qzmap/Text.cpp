#include "Text.h"

#include <algorithm>
#include <utility>

namespace qztools {

Text::Text(std::string name, std::string path, std::string bytes)
    : m_name(std::move(name)), m_path(std::move(path)), m_bytes(std::move(bytes)) {
    const std::size_t size = m_bytes.size();
    for (std::size_t start = 0; start < size;) {
        m_lines.push_back(static_cast<std::int64_t>(start));
        const std::size_t end = m_bytes.find('\n', start);
        start = end == std::string::npos ? size : end + 1;
    }
    m_lines.push_back(Size());
}

std::int64_t Text::LineStart(std::int64_t line) const {
    return m_lines[static_cast<std::size_t>(line - 1)];
}

std::int64_t Text::LineEnd(std::int64_t line) const {
    return m_lines[static_cast<std::size_t>(line)];
}

std::string_view Text::Line(std::int64_t line) const {
    const std::int64_t start = LineStart(line);
    std::string_view s = Bytes().substr(static_cast<std::size_t>(start),
                                        static_cast<std::size_t>(LineEnd(line) - start));
    if (s.ends_with('\n'))
        s.remove_suffix(1);
    if (s.ends_with('\r'))
        s.remove_suffix(1);
    return s;
}

// The end of the text belongs to its last line.
Position Text::PositionOf(std::int64_t offset) const {
    const auto behind = std::upper_bound(m_lines.begin(), m_lines.end() - 1, offset);
    if (behind == m_lines.begin())
        return {1, offset + 1};
    return {behind - m_lines.begin(), offset - behind[-1] + 1};
}

std::string PlaceName(const Text& text, std::int64_t offset) {
    const Position position = text.PositionOf(offset);
    return text.Name() + ':' + std::to_string(position.line) + ':'
           + std::to_string(position.column);
}

}  // namespace qztools
