#include "Columns.h"

#include <algorithm>
#include <iterator>

#include "common/Visible.h"

namespace qztools {

namespace {

constexpr std::int64_t s_tabWidth = 8;

// ---- how wide characters are -------------------------------------------------------------------

struct Range {
    char32_t first, last;
};

constexpr Range s_narrowest[] = {
    {0x300,  0x36f }, // accents that stand on the character before
    {0x200b, 0x200f},
    {0x20d0, 0x20ff},
    {0xfe00, 0xfe0f},
};

constexpr Range s_wide[] = {
    {0x1100,  0x115f },
    {0x2e80,  0x303e },
    {0x3041,  0xa4cf },
    {0xac00,  0xd7a3 },
    {0xf900,  0xfaff },
    {0xfe30,  0xfe6f },
    {0xff00,  0xff60 },
    {0xffe0,  0xffe6 },
    {0x1f300, 0x1f64f},
    {0x1f900, 0x1f9ff},
    {0x20000, 0x3fffd},
};

template <std::size_t N>
bool IsIn(const Range (&ranges)[N], char32_t c) {
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [c](const Range& r) { return c >= r.first && c <= r.last; });
}

// The character of valid UTF-8.
char32_t ValueOf(std::string_view s) {
    const auto byte = [s](std::size_t i) {
        return static_cast<unsigned char>(s[i]);
    };
    char32_t value = s.size() == 1 ? byte(0) : byte(0) & (0x7fu >> s.size());
    for (std::size_t i = 1; i < s.size(); ++i)
        value = value << 6 | (byte(i) & 0x3f);
    return value;
}

std::int64_t WidthOf(std::string_view character) {
    const char32_t c = ValueOf(character);
    return IsIn(s_narrowest, c) ? 0 : IsIn(s_wide, c) ? 2 : 1;
}

// ---- display columns ---------------------------------------------------------------------------

// A place between characters.
struct Stop {
    std::int64_t byte = 0;
    std::int64_t column = 1;
};

// The last stop that is not behind a byte and not behind a display column.
Stop WalkTo(std::string_view line, std::int64_t byte, std::int64_t column) {
    Stop stop;
    while (!line.empty()) {
        const Glyph glyph = FirstGlyph(line);
        Stop next{stop.byte + static_cast<std::int64_t>(glyph.size), stop.column};
        if (line.front() == '\t')
            next.column += s_tabWidth - (stop.column - 1) % s_tabWidth;
        else
            next.column += WidthOf(line.substr(0, glyph.size));
        if (next.byte > byte || next.column > column)
            break;
        stop = next;
        line.remove_prefix(glyph.size);
    }
    return stop;
}

constexpr std::int64_t s_any = INT64_MAX;

// Whether the units are the same up to a byte.
bool IsPlain(std::string_view line, std::int64_t byte) {
    const std::string_view before = line.substr(0, static_cast<std::size_t>(byte));
    return std::all_of(before.begin(), before.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

}  // namespace

std::string ExpandTabs(std::string_view line) {
    std::string expanded;
    for (const char c : line) {
        if (c == '\t')
            expanded.append(s_tabWidth - expanded.size() % s_tabWidth, ' ');
        else
            expanded += c;
    }
    expanded.erase(expanded.find_last_not_of(' ') + 1);
    return expanded;
}

std::int64_t Columns::ByteOf(std::string_view line, std::int64_t column) {
    const auto size = static_cast<std::int64_t>(line.size());
    const std::int64_t byte = std::min(column - 1, size);
    m_last = m_unit == ColumnUnit::Guessed ? m_guess : m_unit;
    if (IsPlain(line, byte))
        return byte;
    const Stop atColumn = WalkTo(line, s_any, column);
    const bool fitsBytes = column - 1 <= size && WalkTo(line, column - 1, s_any).byte == column - 1;
    const bool fitsDisplay = atColumn.column == column;
    if (fitsBytes != fitsDisplay)
        m_guess = fitsBytes ? ColumnUnit::Bytes : ColumnUnit::Display;
    m_last = m_unit == ColumnUnit::Guessed ? m_guess : m_unit;
    return m_last == ColumnUnit::Bytes ? byte : atColumn.byte;
}

std::int64_t Columns::ColumnOf(std::string_view line, std::int64_t byte) const {
    const bool isSame = m_last == ColumnUnit::Bytes || IsPlain(line, byte);
    return isSame ? byte + 1 : WalkTo(line, byte, s_any).column;
}

}  // namespace qztools
