#include "qzUtils/Hex.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

using namespace vorn;

constexpr std::string_view s_lowerCase = "0123456789abcdef";
constexpr std::string_view s_upperCase = "0123456789ABCDEF";

TEST(HexTest, EveryByteIsAHexDigitOrNot) {
    for (int c = 0; c < 256; ++c) {
        const char byte = static_cast<char>(c);
        const bool expected = s_lowerCase.find(byte) != std::string_view::npos
                              || s_upperCase.find(byte) != std::string_view::npos;
        EXPECT_EQ(IsHexDigit(byte), expected) << "byte " << c;
    }
}

TEST(HexTest, DigitsOfEitherCaseHaveTheirValue) {
    for (std::size_t value = 0; value < 16; ++value) {
        EXPECT_EQ(MapHexDigit(s_lowerCase[value]), static_cast<int>(value));
        EXPECT_EQ(MapHexDigit(s_upperCase[value]), static_cast<int>(value));
    }
}

}  // namespace
