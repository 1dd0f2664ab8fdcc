#include "qzUtils/xchar.h"

#include <gtest/gtest.h>

#include <string_view>
#include <type_traits>

namespace {

using namespace vorn;

static_assert(std::is_same_v<char8, char> && std::is_same_v<xchar, char8>);
static_assert(std::is_same_v<ConstStringZ, const char*>);
static_assert(std::is_same_v<ConstString8Z, const char*>);
static_assert(std::is_signed_v<vorn::ssize_t> && sizeof(vorn::ssize_t) == sizeof(void*));
static_assert(std::is_signed_v<int32> && sizeof(int32) == 4);
static_assert(std::is_signed_v<int64> && sizeof(int64) == 8);
static_assert(std::is_unsigned_v<uint8> && sizeof(uint8) == 1);

constexpr std::string_view s_digits = "0123456789";
constexpr std::string_view s_letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
constexpr std::string_view s_identifier =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";

struct ClassAndBytes {
    int charClasses;
    std::string_view bytes;
};

constexpr ClassAndBytes s_classes[] = {
    {CHAR_WHITE_SPACE,                   " \t\n\v\f\r"           },
    {CHAR_DIGIT,                         s_digits                },
    {CHAR_HEX_DIGIT,                     "0123456789ABCDEFabcdef"},
    {CHAR_IDENTIFIER_START,              s_letters               },
    {CHAR_IDENTIFIER,                    s_identifier            },
    {CHAR_WHITE_SPACE | CHAR_DIGIT,      " \t\n\v\f\r0123456789" },
    {CHAR_IDENTIFIER_START | CHAR_DIGIT, s_identifier            },
    {0,                                  ""                      },
};

bool Contains(std::string_view bytes, char c) {
    return bytes.find(c) != std::string_view::npos;
}

TEST(xcharTest, EveryByteBelongsToItsClassesAndToNoOther) {
    for (const auto& [charClasses, bytes] : s_classes) {
        for (int c = 0; c < 256; ++c) {
            EXPECT_EQ(IsCharOf(static_cast<char>(c), charClasses),
                      Contains(bytes, static_cast<char>(c)))
                << "byte " << c << ", classes " << charClasses;
        }
    }
}

TEST(xcharTest, EveryByteIsADigitWithItsValueOrNone) {
    for (int c = 0; c < 256; ++c) {
        const bool digit = Contains(s_digits, static_cast<char>(c));
        EXPECT_EQ(IsDigit(static_cast<char>(c)), digit) << "byte " << c;
        EXPECT_EQ(MapDecDigit(static_cast<char>(c)), digit ? c - '0' : -1) << "byte " << c;
    }
}

}  // namespace
