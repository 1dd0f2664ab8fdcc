// What tests of literals and expressions share: making, showing and comparing literals, and the
// message of the error that an action raises.
#pragma once

#include <cstdio>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

#include "qzMacroExpander/LSLiteral.h"
#include "tests/support/Text.h"

namespace vorn_test {

inline constexpr vorn::int64 s_lowest = std::numeric_limits<vorn::int64>::min();
inline constexpr vorn::int64 s_highest = std::numeric_limits<vorn::int64>::max();
inline constexpr double s_infinity = std::numeric_limits<double>::infinity();
inline constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();

inline vorn::LSLiteral Void() {
    vorn::LSLiteral x;
    x.m_type = vorn::LITERAL_VOID;
    return x;
}

inline vorn::LSLiteral Char(int byte) {
    return vorn::LSLiteral::MakeChar(static_cast<char>(byte));
}

inline vorn::LSLiteral String(std::string_view text) {
    return vorn::xstring(text.data(), text.data() + text.size());
}

// A value as text: bools by name, a char as the number of its byte, floats with all digits.
template <class T>
std::string ShowValue(const T& v) {
    if constexpr (std::is_same_v<T, bool>) {
        return v ? "true" : "false";
    } else if constexpr (std::is_same_v<T, vorn::xstring>) {
        return Str(v);
    } else if constexpr (std::is_same_v<T, char>) {
        return std::to_string(static_cast<unsigned char>(v));
    } else if constexpr (std::is_floating_point_v<T>) {
        char text[40];
        std::snprintf(text, sizeof text, "%.*g", std::is_same_v<T, float> ? 9 : 17,
                      static_cast<double>(v));
        return text;
    } else {
        return std::to_string(v);
    }
}

// A literal as its type and value: "int64 7", "string abc", "undef".
inline std::string Show(const vorn::LSLiteral& x) {
    const std::string type = vorn::TypeToString(x.m_type);
    switch (x.m_type) {
    case vorn::LITERAL_BOOL:
        return type + " " + ShowValue(x.m_bool);
    case vorn::LITERAL_INT64:
        return type + " " + ShowValue(x.m_int64);
    case vorn::LITERAL_FLOAT64:
        return type + " " + ShowValue(x.m_float64);
    case vorn::LITERAL_CHAR:
        return type + " " + ShowValue(x.m_char);
    case vorn::LITERAL_STRING:
        return type + " " + ShowValue(x.m_string);
    default:
        return type;
    }
}

inline constexpr char s_noError[] = "(no error)";

// The message of the LiteralException that action raises.
template <class Action>
std::string LiteralErrorOf(Action&& action) {
    try {
        action();
    } catch (const vorn::LiteralException& e) {
        return Str(e.m_description);
    }
    return s_noError;
}

}  // namespace vorn_test

namespace vorn {

inline void PrintTo(const LSLiteral& x, std::ostream* os) {
    *os << vorn_test::Show(x);
}

}  // namespace vorn
