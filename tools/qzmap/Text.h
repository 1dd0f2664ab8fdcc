// A text that a map names, its output or one of its sources, and its lines.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qztools {

// A place in a text as people write it: both count from 1, columns in bytes.
struct Position {
    std::int64_t line = 0;
    std::int64_t column = 0;

    bool operator==(const Position&) const = default;
};

class Text {
public:
    // The name is for messages, the path is empty where the text is no file.
    Text(std::string name, std::string path, std::string bytes);

    const std::string& Name() const { return m_name; }
    const std::string& Path() const { return m_path; }
    std::string_view Bytes() const { return m_bytes; }
    std::int64_t Size() const { return static_cast<std::int64_t>(m_bytes.size()); }

    // A line feed ends a line; nothing behind the last one is no line.
    std::int64_t LineCount() const { return static_cast<std::int64_t>(m_lines.size()) - 1; }

    // REQUIRES: 1 <= line <= LineCount(), and 0 <= offset <= Size().
    std::int64_t LineStart(std::int64_t line) const;
    std::int64_t LineEnd(std::int64_t line) const;   // behind its line feed
    std::string_view Line(std::int64_t line) const;  // without its end, LF or CR LF
    Position PositionOf(std::int64_t offset) const;

private:
    std::string m_name;
    std::string m_path;
    std::string m_bytes;
    std::vector<std::int64_t> m_lines;  // where each starts, and the size
};

// "name:line:column"
std::string PlaceName(const Text& text, std::int64_t offset);

}  // namespace qztools
