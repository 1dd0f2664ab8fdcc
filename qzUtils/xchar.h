// The basic types of the libraries, the classes of bytes, and the marks that tell a compiler
// which types are views and which own what they show.
//
// Text is a sequence of bytes with no encoding. Nothing here depends on a locale.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// Clang warns where a view is made of a temporary owner (SubString s = f(), with f giving an
// xstring). Other compilers do not know the attributes.
#if defined(__clang__)
#define QZ_VIEW [[gsl::Pointer]]
#define QZ_OWNER [[gsl::Owner]]
#define QZ_LIFETIME_BOUND [[clang::lifetimebound]]
#else
#define QZ_VIEW
#define QZ_OWNER
#define QZ_LIFETIME_BOUND
#endif

namespace vorn {

using char8 = char;
using xchar = char8;
using ConstStringZ = const xchar*;   // zero-terminated text
using ConstString8Z = const char8*;  // the same
using ssize_t = std::ptrdiff_t;      // sizes and offsets in bytes, columns, counts

using int8 = std::int8_t;
using int16 = std::int16_t;
using int32 = std::int32_t;
using int64 = std::int64_t;
using uint8 = std::uint8_t;
using uint16 = std::uint16_t;
using uint32 = std::uint32_t;
using uint64 = std::uint64_t;
using float32 = float;
using float64 = double;

// What a byte may be part of. One table look-up answers any of these questions.
enum CharClass : uint8 {
    CHAR_WHITE_SPACE = 1,       // space, \t \n \v \f \r
    CHAR_DIGIT = 2,             // 0-9
    CHAR_HEX_DIGIT = 4,         // 0-9 a-f A-F
    CHAR_IDENTIFIER_START = 8,  // A-Z a-z _
    CHAR_IDENTIFIER = 16,       // A-Z a-z _ 0-9
};

namespace detail {

constexpr uint8 ClassifyChar(int c) {
    const bool digit = c >= '0' && c <= '9';
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    const bool hex = digit || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    const bool white = c == ' ' || (c >= '\t' && c <= '\r');
    return static_cast<uint8>((white ? CHAR_WHITE_SPACE : 0) | (digit ? CHAR_DIGIT : 0)
                              | (hex ? CHAR_HEX_DIGIT : 0) | (letter ? CHAR_IDENTIFIER_START : 0)
                              | (letter || digit ? CHAR_IDENTIFIER : 0));
}

constexpr std::array<uint8, 256> MakeCharClasses() {
    std::array<uint8, 256> classes{};
    for (int c = 0; c < 256; ++c)
        classes[static_cast<std::size_t>(c)] = ClassifyChar(c);
    return classes;
}

inline constexpr std::array<uint8, 256> s_charClasses = MakeCharClasses();

}  // namespace detail

// Whether c belongs to any of the given classes.
constexpr bool IsCharOf(xchar c, int classes) {
    return (detail::s_charClasses[static_cast<uint8>(c)] & classes) != 0;
}

constexpr bool IsDigit(xchar c) {
    return IsCharOf(c, CHAR_DIGIT);
}

// The value of a decimal digit; -1 for any other byte.
constexpr int MapDecDigit(xchar c) {
    return IsDigit(c) ? c - '0' : -1;
}

}  // namespace vorn
