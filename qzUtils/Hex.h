// Hexadecimal digits.
#pragma once

#include "qzUtils/xchar.h"

namespace vorn {

constexpr bool IsHexDigit(char c) {
    return IsCharOf(c, CHAR_HEX_DIGIT);
}

// The value, 0 to 15, of a hex digit of either case. REQUIRES: IsHexDigit(c).
constexpr int MapHexDigit(char c) {
    return IsDigit(c) ? c - '0' : (c | 0x20) - 'a' + 10;
}

}  // namespace vorn
