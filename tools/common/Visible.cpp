#include "common/Visible.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace qztools {

namespace {

// ---- UTF-8 -------------------------------------------------------------------------------------

// A form of UTF-8 character: the range of its first byte and the least value it may have.
struct Utf8Form {
    unsigned char first, last;
    std::size_t size;
    std::uint32_t least;
};

constexpr Utf8Form s_utf8Forms[] = {
    {0x00, 0x7f, 1, 0      },
    {0xc2, 0xdf, 2, 0x80   },
    {0xe0, 0xef, 3, 0x800  },
    {0xf0, 0xf4, 4, 0x10000},
};

struct CodePoint {
    std::size_t size = 0;  // in bytes; 0 where the text does not start with valid UTF-8
    std::uint32_t value = 0;
};

CodePoint Decode(std::string_view s) {
    const auto byte = [s](std::size_t i) {
        return static_cast<unsigned char>(s[i]);
    };
    const auto form =
        std::find_if(std::begin(s_utf8Forms), std::end(s_utf8Forms), [&byte](const Utf8Form& f) {
            return byte(0) >= f.first && byte(0) <= f.last;
        });
    if (form == std::end(s_utf8Forms) || form->size > s.size())
        return {};
    std::uint32_t value = form->size == 1 ? byte(0) : byte(0) & (0x7fu >> form->size);
    for (std::size_t i = 1; i < form->size; ++i) {
        if ((byte(i) & 0xc0) != 0x80)
            return {};
        value = value << 6 | (byte(i) & 0x3f);
    }
    const bool isSurrogate = value >= 0xd800 && value <= 0xdfff;
    return value < form->least || value > 0x10ffff || isSurrogate ? CodePoint{}
                                                                  : CodePoint{form->size, value};
}

// ---- what a terminal must not see --------------------------------------------------------------

struct Range {
    std::uint32_t first, last;
};

constexpr Range s_hidden[] = {
    {0x00,   0x1f  }, // control bytes; tab and line feed are dealt with before
    {0x7f,   0x9f  }, // delete, and the control characters of 8-bit terminals
    {0x200e, 0x200f}, // marks of direction
    {0x2028, 0x202e}, // separators of lines, and overrides of direction
    {0x2066, 0x2069}, // isolates of direction
    {0xfeff, 0xfeff}, // byte order mark
};

bool IsHidden(std::uint32_t value) {
    return std::any_of(std::begin(s_hidden), std::end(s_hidden), [value](const Range& range) {
        return value >= range.first && value <= range.last;
    });
}

void AppendEscaped(std::string& out, std::string_view bytes) {
    constexpr char s_digits[] = "0123456789abcdef";
    for (const char c : bytes) {
        const auto value = static_cast<unsigned char>(c);
        out += {'\\', 'x', s_digits[value >> 4], s_digits[value & 15]};
    }
}

}  // namespace

Glyph FirstGlyph(std::string_view s) {
    if (s.front() == '\n' || s.front() == '\t')
        return {1, true};
    const CodePoint c = Decode(s);
    return c.size == 0 ? Glyph{1, false} : Glyph{c.size, !IsHidden(c.value)};
}

void AppendGlyph(std::string& out, std::string_view s, const Glyph& glyph) {
    const std::string_view bytes = s.substr(0, glyph.size);
    if (glyph.isShownAsItIs)
        out += bytes;
    else
        AppendEscaped(out, bytes);
}

std::string Visible(std::string_view s) {
    std::string out;
    while (!s.empty()) {
        const Glyph glyph = FirstGlyph(s);
        AppendGlyph(out, s, glyph);
        s.remove_prefix(glyph.size);
    }
    return out;
}

std::string VisibleName(std::string_view s) {
    std::string out;
    while (!s.empty()) {
        Glyph glyph = FirstGlyph(s);
        glyph.isShownAsItIs = glyph.isShownAsItIs && s.front() != '\n' && s.front() != '\t';
        AppendGlyph(out, s, glyph);
        s.remove_prefix(glyph.size);
    }
    return out;
}

}  // namespace qztools
