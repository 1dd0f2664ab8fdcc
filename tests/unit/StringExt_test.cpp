#include "qzUtils/StringExt.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>

#include "qzMacroExpander/LSToken.h"
#include "qzUtils/StringStream.h"
#include "tests/support/Text.h"

namespace {

using namespace vorn;
using vorn_test::HeapText;
using vorn_test::Str;

// How many bytes a scanner passes over.
template <class Scanner>
vorn::ssize_t Passed(std::string_view text, Scanner&& scanner) {
    const HeapText heap(text);
    SubString s = heap.View();
    scanner(s);
    EXPECT_EQ(s.m_p2, heap.end()) << "the end stays";
    return s.m_p1 - heap.begin();
}

std::string AllBytes() {
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    return all;
}

bool Contains(std::string_view bytes, char c) {
    return bytes.find(c) != std::string_view::npos;
}

// ---- scanning ----------------------------------------------------------------------------------

TEST(StringExtScanTest, WhiteSpaceIsPassedOver) {
    const auto scanner = [](SubString& s) {
        ScanWhiteSpace(s);
    };
    EXPECT_EQ(Passed("", scanner), 0);
    EXPECT_EQ(Passed("a ", scanner), 0);
    EXPECT_EQ(Passed(" \t\n\r\v\f", scanner), 6);
    EXPECT_EQ(Passed(" \t\n\r\v\fa ", scanner), 6);
    for (const char c : AllBytes())
        EXPECT_EQ(Passed({&c, 1}, scanner), Contains(" \t\n\r\v\f", c) ? 1 : 0) << int{c};
}

TEST(StringExtScanTest, IdentifierIsPassedOver) {
    struct Case {
        std::string_view text;
        vorn::ssize_t passed;  // 0 where there is no identifier
    };
    constexpr Case s_cases[] = {
        {"",          0},
        {"a",         1},
        {"_",         1},
        {"aZ09_ b",   5},
        {"_1-",       2},
        {"1a",        0},
        {" a",        0},
        {"a$",        1},
        {"a\xc3\xa4", 1},
        {"\xc3\xa4",  0},
        {"@a",        0},
        {{"a\0b", 3}, 1},
    };
    for (const auto& [text, passed] : s_cases) {
        bool found = false;
        EXPECT_EQ(Passed(text, [&](SubString& s) { found = ScanIdentifier(s); }), passed) << text;
        EXPECT_EQ(found, passed > 0) << text;
    }
}

TEST(StringExtScanTest, IdentifierAlphabetIsAscii) {
    constexpr std::string_view s_letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
    for (const char c : AllBytes()) {
        const bool letter = Contains(s_letters, c);
        const bool digit = Contains("0123456789", c);
        const auto scanner = [](SubString& s) {
            ScanIdentifier(s);
        };
        EXPECT_EQ(Passed({&c, 1}, scanner), letter ? 1 : 0) << int{c};
        EXPECT_EQ(Passed(std::string{'x', c}, scanner), letter || digit ? 2 : 1) << int{c};
    }
}

TEST(StringExtScanTest, DigitsArePassedOver) {
    const auto scanner = [](SubString& s) {
        ScanDigits(s);
    };
    EXPECT_EQ(Passed("", scanner), 0);
    EXPECT_EQ(Passed("x1", scanner), 0);
    EXPECT_EQ(Passed("0123456789", scanner), 10);
    EXPECT_EQ(Passed("42a", scanner), 2);
    EXPECT_EQ(Passed("-1", scanner), 0);
    for (const char c : AllBytes())
        EXPECT_EQ(Passed({&c, 1}, scanner), Contains("0123456789", c) ? 1 : 0) << int{c};
}

TEST(StringExtScanTest, IndentationIsPassedOverUpToItsColumns) {
    struct Case {
        std::string_view text;
        vorn::ssize_t indent;
        vorn::ssize_t passed;
    };
    constexpr Case
        s_cases[] =
            {
                {"",       4,  0},
                {"    a",  0,  0},
                {"    a",  2,  2},
                {"    a",  4,  4},
                {"    a",  9,  4},
                {"a   ",   4,  0},
                {"\ta",    4,  1}, // a tab counts four columns, wherever it stands
                {"\t\ta",  8,  2},
                {" \ta",   5,  2},
                {"\t a",   5,  2},
                {"\ta",    3,  0}, // a tab that would go past the columns stays
                {"\ta",    0,  0},
                {"  \ta",  5,  2},
                {"  \t a", 5,  2}, // and what is behind it
                {"\t\ta",  7,  1},
                {" \na",   4,  1}, // only spaces and tabs
                {" \ra",   4,  1},
                {"\va",    4,  0},
                {"   ",    4,  3},
                {"  a",    -1, 0},
    };
    for (const auto& [text, indent, passed] : s_cases) {
        EXPECT_EQ(Passed(text, [n = indent](SubString& s) { ScanIndentation(s, n, 4); }), passed)
            << testing::PrintToString(text) << ", " << indent << " columns";
    }
    EXPECT_EQ(Passed("\t\ta", [](SubString& s) { ScanIndentation(s, 8, 8); }), 1);
    EXPECT_EQ(Passed("\t\ta", [](SubString& s) { ScanIndentation(s, 2, 1); }), 2);
}

TEST(StringExtScanTest, WhiteSpaceWithoutLinefeedIsAClassOfItsOwn) {
    for (const char c : AllBytes())
        EXPECT_EQ(IsWhiteSpaceWithoutLinefeed(c), Contains(" \t\v\f\r", c)) << int{c};
}

// ---- escapes -----------------------------------------------------------------------------------

TEST(StringExtEscapeTest, EveryByteBehindABackslashIsMappedOrRefused) {
    constexpr std::string_view s_names = "abfnrtv0\\'\"?";
    constexpr std::string_view s_values("\a\b\f\n\r\t\v\0\\'\"?", 12);
    static_assert(s_names.size() == s_values.size());
    for (const char c : AllBytes()) {
        const std::size_t i = s_names.find(c);
        const bool valid = i != std::string_view::npos;
        char out = '#';
        EXPECT_EQ(MapEscapeCharacter(c, out), valid) << int{c};
        EXPECT_EQ(out, valid ? s_values[i] : '#') << int{c};
    }
}

// c as it stands between double quotes.
std::string Escaped(char c) {
    constexpr std::string_view s_escaped("\a\b\f\n\r\t\v\0\\\"", 10);
    constexpr std::string_view s_names = "abfnrtv0\\\"";
    const std::size_t i = s_escaped.find(c);
    return i == std::string_view::npos ? std::string(1, c) : std::string{'\\', s_names[i]};
}

TEST(StringExtEscapeTest, EveryByteIsWrittenAsItStandsInADoubleQuotedLiteral) {
    for (const char c : AllBytes()) {
        StringStream os(16);
        WriteCharForCStyleLiteralConstants(os, c);
        EXPECT_EQ(Str(os.GetString()), Escaped(c)) << int{c};
    }
}

TEST(StringExtEscapeTest, DoubleQuotedStringsReplaceTheResult) {
    struct Case {
        std::string_view text;
        const char* expected;
    };
    constexpr Case s_cases[] = {
        {"",                 R"("")"               },
        {"abc",              R"("abc")"            },
        {"say \"it's\"?",    R"("say \"it's\"?")"  },
        {"C:\\x\n",          R"("C:\\x\n")"        },
        {{"\0"
          "1",
          2},
         R"("\01")"                                },
        {"\a\b\f\n\r\t\v",   R"("\a\b\f\n\r\t\v")" },
        {"\x01\x7f\xc3\xa4", "\"\x01\x7f\xc3\xa4\""},
    };
    xstring result("what it held before");
    for (const auto& [text, expected] : s_cases) {
        MakeDoubleQuotedString(HeapText(text).View(), result);
        EXPECT_EQ(Str(result), expected);
    }
    MakeDoubleQuotedString(SubString(), result);
    EXPECT_EQ(Str(result), "\"\"");
    MakeDoubleQuotedString(result, result);
    EXPECT_EQ(Str(result), R"("\"\"")");
}

TEST(StringExtEscapeTest, SingleQuotedCharactersEscapeTheOtherQuote) {
    for (const char c : AllBytes()) {
        const std::string inside = c == '\'' ? "\\'" : c == '"' ? "\"" : Escaped(c);
        xstring result("what it held before");
        MakeSingleQuotedLiteralChar(c, result);
        EXPECT_EQ(Str(result), '\'' + inside + '\'') << int{c};
    }
}

// The one token that literal consists of.
LSToken TokenOf(const xstring& literal, EToken type) {
    SubString s(literal);
    const LSToken token = LsScanToken(s, false);
    EXPECT_EQ(token.GetType(), type) << Str(literal);
    EXPECT_FALSE(s) << "text is left behind " << Str(literal);
    return token;
}

std::string Unquoted(const xstring& literal) {
    xstring text;
    TokenOf(literal, TOKEN_DOUBLE_QUOTED_STRING).GetLiteralString(text);
    return Str(text);
}

TEST(StringExtEscapeTest, EveryQuotedPairOfBytesScansBack) {
    for (const char first : AllBytes()) {
        for (const char second : AllBytes()) {
            const char pair[] = {first, second};
            xstring literal;
            MakeDoubleQuotedString(SubString(pair, pair + 2), literal);
            ASSERT_EQ(Unquoted(literal), std::string(pair, 2));
        }
    }
}

TEST(StringExtEscapeTest, QuotedTextOfAllBytesScansBack) {
    const HeapText all(AllBytes());
    xstring literal;
    MakeDoubleQuotedString(all.View(), literal);
    EXPECT_EQ(Unquoted(literal), AllBytes());
}

TEST(StringExtEscapeTest, EveryQuotedCharacterScansBack) {
    for (const char c : AllBytes()) {
        xstring literal;
        MakeSingleQuotedLiteralChar(c, literal);
        EXPECT_EQ(TokenOf(literal, TOKEN_SINGLE_QUOTED_STRING).GetLiteralCharacter(), c) << int{c};
    }
}

// ---- readable characters -----------------------------------------------------------------------

std::string Readable(SubString s) {
    StringStream os(16);
    os << HumanReadableCharInSubString(s);
    return Str(os.GetString());
}

TEST(StringExtReadableTest, EmptyTextIsDescribedAndNotRead) {
    const HeapText text("a");
    EXPECT_EQ(Readable(SubString()), "EOS");
    EXPECT_EQ(Readable(SubString(text.end(), text.end())), "EOS");
}

TEST(StringExtReadableTest, EveryByteHasItsDescription) {
    constexpr char s_hex[] = "0123456789abcdef";
    for (const char c : AllBytes()) {
        const auto byte = static_cast<unsigned char>(c);
        std::string expected = std::string("byte 0x") + s_hex[byte >> 4] + s_hex[byte & 15];
        if (byte >= 33 && byte <= 126)
            expected = std::string{'\'', c, '\''};
        else if (c == ' ')
            expected = "space";
        else if (c == '\t')
            expected = "tab";
        else if (c == '\n')
            expected = "line feed";
        else if (c == '\r')
            expected = "carriage return";
        const HeapText text({&c, 1});
        EXPECT_EQ(Readable(text.View()), expected);
    }
    EXPECT_EQ(Readable("\x1f"), "byte 0x1f");
    EXPECT_EQ(Readable("\xffrest"), "byte 0xff");
    EXPECT_EQ(Readable("good"), "'g'");
}

TEST(StringExtReadableTest, HoldsTheView) {
    const SubString s("abc");
    static_assert(std::is_same_v<decltype(HumanReadableCharInSubString::m_s), SubString>);
    EXPECT_EQ(HumanReadableCharInSubString(s).m_s.m_p1, s.m_p1);
}

// ---- numbers -----------------------------------------------------------------------------------

template <class T>
T Decimal(SubString s) {
    T value = 99;
    SubStringToInt<T>(s, value);
    return value;
}

template <class T>
T Hex(SubString s, bool expect0x) {
    T value = 99;
    SubStringToHexInt<T>(s, value, expect0x);
    return value;
}

TEST(StringExtNumberTest, DecimalDigitsGiveTheirValue) {
    EXPECT_EQ(Decimal<int32>("0"), 0);
    EXPECT_EQ(Decimal<int32>("0042"), 42);
    EXPECT_EQ(Decimal<int32>("2147483647"), std::numeric_limits<int32>::max());
    EXPECT_EQ(Decimal<int64>("9223372036854775807"), std::numeric_limits<int64>::max());
    EXPECT_EQ(Decimal<uint8>("255"), 255);
}

TEST(StringExtNumberTest, EmptyTextGivesZero) {
    EXPECT_EQ(Decimal<int32>(SubString()), 0);
    EXPECT_EQ(Decimal<int64>(""), 0);
    EXPECT_EQ(Hex<int32>("", false), 0);
    EXPECT_EQ(Hex<int32>(SubString(), true), 0);
}

TEST(StringExtNumberTest, DecimalDigitsWrapInTheArithmeticOfTheType) {
    EXPECT_EQ(Decimal<int32>("2147483648"), std::numeric_limits<int32>::min());
    EXPECT_EQ(Decimal<int32>("4294967296"), 0);
    EXPECT_EQ(Decimal<int32>("99999999999999999999"), 1661992959);
    EXPECT_EQ(Decimal<int64>("9223372036854775808"), std::numeric_limits<int64>::min());
    EXPECT_EQ(Decimal<int64>("18446744073709551617"), 1);
    EXPECT_EQ(Decimal<uint8>("256"), 0);
    EXPECT_EQ(Decimal<int16>("99999"), static_cast<int16>(99999 - 2 * 65536));
    EXPECT_EQ(Decimal<uint16>("65535"), 65535);
}

TEST(StringExtNumberTest, OtherBytesCountMinusOne) {
    EXPECT_EQ(Decimal<int32>("x"), -1);
    EXPECT_EQ(Decimal<int32>("1x"), 9);
    EXPECT_EQ(Decimal<int32>("-5"), -5);
    EXPECT_EQ(Decimal<int64>("1_0"), 90);
}

TEST(StringExtNumberTest, HexDigitsGiveTheirValue) {
    EXPECT_EQ(Hex<int32>("1f", false), 0x1f);
    EXPECT_EQ(Hex<int32>("0x1F", true), 0x1f);
    EXPECT_EQ(Hex<int32>("0X0aBc", true), 0xabc);
    EXPECT_EQ(Hex<int32>("7fffffff", false), std::numeric_limits<int32>::max());
    EXPECT_EQ(Hex<int32>("ffffffff", false), -1);
    EXPECT_EQ(Hex<int64>("0xffffffff", true), 0xffffffffLL);
    EXPECT_EQ(Hex<int64>("8000000000000000", false), std::numeric_limits<int64>::min());
}

TEST(StringExtNumberTest, OnlyTheLastHexDigitsThatFitCount) {
    EXPECT_EQ(Hex<int32>("123456789", false), 0x23456789);
    EXPECT_EQ(Hex<int64>("0x1fedcba987654321a", true), static_cast<int64>(0xfedcba987654321aULL));
    EXPECT_EQ(Hex<uint8>("abc", false), 0xbc);
}

TEST(StringExtNumberTest, ShortTextWithPrefixGivesZero) {
    for (const char* text : {"", "0", "0x", "ff"})
        EXPECT_EQ(Hex<int32>(text, true), 0) << text;
    EXPECT_EQ(Hex<int32>("ff", false), 0xff);
    EXPECT_EQ(Hex<int32>("zz1", true), 1) << "two bytes are passed over, whatever they are";
}

TEST(StringExtNumberTest, IntegersAsText) {
    static_assert(std::is_same_v<decltype(ToString(1)), xstring>);
    static_assert(std::is_same_v<decltype(ToString(1L)), xstring>);
    static_assert(std::is_same_v<decltype(ToString(1.0)), xstring>);
    EXPECT_EQ(Str(ToString(0)), "0");
    EXPECT_EQ(Str(ToString(-42)), "-42");
    EXPECT_EQ(Str(ToString(std::numeric_limits<int>::min())), "-2147483648");
    EXPECT_EQ(Str(ToString(std::numeric_limits<int>::max())), "2147483647");
    EXPECT_EQ(Str(ToString(std::numeric_limits<long>::min())), "-9223372036854775808");
    EXPECT_EQ(Str(ToString(std::numeric_limits<long>::max())), "9223372036854775807");
}

TEST(StringExtNumberTest, DoublesAsTheShortestFloatOfTheLanguage) {
    struct Case {
        double value;
        const char* expected;
    };
    using Limits = std::numeric_limits<double>;
    constexpr Case s_cases[] = {
        {2.0,                  "2.0"                    },
        {0.1,                  "0.1"                    },
        {100000.0,             "100000.0"               },
        {1e20,                 "1e+20"                  },
        {1e-5,                 "1e-05"                  },
        {-0.5,                 "-0.5"                   },
        {0.0,                  "0.0"                    },
        {-0.0,                 "-0.0"                   },
        {1.0 / 3.0,            "0.3333333333333333"     },
        {0.1 + 0.2,            "0.30000000000000004"    },
        {1234567.0,            "1234567.0"              },
        {0.0001,               "0.0001"                 }, // the least without an exponent
        {0.00012345,           "0.00012345"             },
        {0.00009999,           "9.999e-05"              },
        {1e15,                 "1000000000000000.0"     },
        {9999999999999998.0,   "9999999999999998.0"     }, // the greatest without one
        {9007199254740993.0,   "9007199254740992.0"     },
        {1e16,                 "1e+16"                  },
        {-1.25e16,             "-1.25e+16"              },
        {12345678901234567.0,  "1.2345678901234568e+16" },
        {1e100,                "1e+100"                 },
        {1.5e-300,             "1.5e-300"               },
        {Limits::max(),        "1.7976931348623157e+308"},
        {Limits::min(),        "2.2250738585072014e-308"},
        {Limits::denorm_min(), "5e-324"                 },
        {Limits::infinity(),   "inf"                    },
        {-Limits::infinity(),  "-inf"                   },
        {Limits::quiet_NaN(),  "nan"                    },
        {-Limits::quiet_NaN(), "nan"                    },
    };
    for (const auto& [value, expected] : s_cases)
        EXPECT_EQ(Str(ToString(value)), expected);
}

// The digits that count, without sign, point, exponent and the zeros at either end.
std::string SignificantDigits(std::string text) {
    text = text.substr(0, text.find('e'));
    std::erase_if(text, [](char c) { return c < '0' || c > '9'; });
    text.erase(0, text.find_first_not_of('0'));
    text.erase(text.find_last_not_of('0') + 1);
    return text;
}

void ExpectShortestFloat(double value) {
    const xstring text = ToString(value);
    SCOPED_TRACE(Str(text));
    const double back = std::strtod(text.c_str(), nullptr);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(value));

    const double magnitude = std::fabs(value);
    const bool exponent = Str(text).find('e') != std::string::npos;
    EXPECT_EQ(exponent, magnitude != 0 && (magnitude < 1e-4 || magnitude >= 1e16));

    SubString s(text);
    s += *s == '-' ? 1 : 0;
    EXPECT_EQ(LsScanToken(s, false).GetType(), TOKEN_FLOAT);
    EXPECT_FALSE(s);

    const auto digits = static_cast<int>(SignificantDigits(Str(text)).size());
    char fewer[64];
    std::snprintf(fewer, sizeof fewer, "%.*e", std::max(digits - 2, 0), value);
    EXPECT_TRUE(digits <= 1 || std::strtod(fewer, nullptr) != value) << fewer << " is shorter";
}

TEST(StringExtNumberTest, DoublesOfEveryKindReadBackFromTheirFewestDigits) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 4000 && !HasFailure(); ++i) {
        const std::uint64_t bits = random();
        const auto any = std::bit_cast<double>(bits);
        if (std::isfinite(any))
            ExpectShortestFloat(any);
        ExpectShortestFloat(static_cast<double>(static_cast<std::int64_t>(bits)) * 1e-6);
        ExpectShortestFloat(static_cast<double>(bits >> 40) / 1000);
    }
    for (int exponent = -323; exponent <= 308 && !HasFailure(); ++exponent) {
        const double power = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
        ExpectShortestFloat(power);
        ExpectShortestFloat(-std::nextafter(power, 0.0));
        ExpectShortestFloat(std::nextafter(power, 1e308));
    }
}

// ---- texts -------------------------------------------------------------------------------------

TEST(StringExtTextTest, LineNumberCountsTheLineFeedsInFront) {
    const std::string text = "ab\n\ncd\r\ne\n";
    const vorn::ssize_t lines[] = {1, 1, 1, 2, 3, 3, 3, 3, 4, 4};
    const HeapText heap(text);
    for (std::size_t i = 0; i < text.size(); ++i)
        EXPECT_EQ(GetLineNumber(heap.View(), heap.begin() + i), lines[i]) << "offset " << i;
    EXPECT_EQ(GetLineNumber(heap.View(), heap.end()), 5) << "the end lies in the last line";
}

TEST(StringExtTextTest, PositionsOutsideTheBufferHaveNoLine) {
    const HeapText heap("xab\ncdx");
    const SubString buffer(heap.begin() + 1, heap.end() - 1);
    const HeapText other("y");
    EXPECT_EQ(GetLineNumber(buffer, nullptr), -1);
    EXPECT_EQ(GetLineNumber(buffer, heap.begin()), -1);
    EXPECT_EQ(GetLineNumber(buffer, heap.begin() + 1), 1);
    EXPECT_EQ(GetLineNumber(buffer, heap.end() - 1), 2);
    EXPECT_EQ(GetLineNumber(buffer, heap.end()), -1);
    EXPECT_EQ(GetLineNumber(buffer, other.begin()), -1);
    EXPECT_EQ(GetLineNumber(SubString(), other.begin()), -1);
    EXPECT_EQ(GetLineNumber(SubString(), nullptr), -1);
    EXPECT_EQ(GetLineNumber(SubString(other.end(), other.end()), other.end()), 1)
        << "an empty buffer holds its end";
}

TEST(StringExtTextTest, IndentationIsTakenOffTheLaterLines) {
    struct Case {
        std::string_view text;
        vorn::ssize_t indent;
        const char* expected;
    };
    constexpr Case s_cases[] = {
        {"",                    4,  ""           },
        {"a",                   4,  "a"          },
        {"    a",               4,  "    a"      }, // the first line as it stands
        {"a\n    b\n    c",     4,  "a\nb\nc"    },
        {"a\n      b\n    c\n", 4,  "a\n  b\nc\n"},
        {"a\n  b\n c\nd",       4,  "a\nb\nc\nd" }, // with less loses what it has
        {"a\n\tb\n\t\tc",       4,  "a\nb\n\tc"  },
        {"a\n  \tb",            4,  "a\n\tb"     }, // a tab that goes too far stays
        {"a\n  \t b",           6,  "a\n b"      },
        {"a\n\n    b",          4,  "a\n\nb"     },
        {"a\n      \n    b",    4,  "a\n  \nb"   },
        {"a\r\n    b\r\n",      4,  "a\r\nb\r\n" },
        {"\n    b",             4,  "\nb"        },
        {"a\n    b\n    ",      4,  "a\nb\n"     },
        {"a\n  b",              0,  "a\n  b"     },
        {"a\n  b",              -1, "a\n  b"     },
        {"a\nb",                2,  "a\nb"       },
    };
    for (const auto& [text, indent, expected] : s_cases) {
        StringStream os(4096);
        WriteSubStringWithAdjustedIndent(os, HeapText(text).View(), indent);
        EXPECT_EQ(Str(os.GetString()), expected) << testing::PrintToString(text) << ", " << indent;
    }
}

TEST(StringExtTextTest, EveryOccurrenceIsReplacedFromLeftToRight) {
    struct Case {
        const char* text;
        const char* find;
        const char* replace;
        const char* expected;
    };
    constexpr Case s_cases[] = {
        {"",                     "a",   "b",    ""                  },
        {"abc",                  "x",   "y",    "abc"               },
        {"Expected ) after EOS", "EOS", ")",    "Expected ) after )"},
        {"EOS, EOS",             "EOS", ")",    "), )"              },
        {"aaa",                  "aa",  "b",    "ba"                },
        {"aaaa",                 "aa",  "a",    "aa"                }, // not searched again
        {"abab",                 "ab",  "abab", "abababab"          },
        {"abc",                  "b",   "",     "ac"                },
        {"abc",                  "abc", "",     ""                  },
        {"aabb",                 "ab",  "",     "ab"                },
        {"abc",                  "",    "x",    "abc"               }, // an empty find
        {"",                     "",    "x",    ""                  },
        {"ab",                   "abc", "x",    "ab"                },
    };
    for (const auto& [text, find, replace, expected] : s_cases) {
        xstring s(text);
        StringFindAndReplace(s, find, replace);
        EXPECT_EQ(Str(s), expected) << text << ": " << find << " by " << replace;
    }
}

TEST(StringExtTextTest, ReplacementTakesAnyBytesAndTheStringItself) {
    const HeapText bytes(std::string_view("a\0b\0", 4));
    xstring s = bytes.View().GetString();
    const HeapText zero(std::string_view("\0", 1));
    StringFindAndReplace(s, zero.View().GetString(), "\xff");
    EXPECT_EQ(Str(s), "a\xff"
                      "b\xff");
    s = "ab";
    StringFindAndReplace(s, "b", s);
    EXPECT_EQ(Str(s), "aab");
    StringFindAndReplace(s, s, "x");
    EXPECT_EQ(Str(s), "x");
}

TEST(StringExtTextTest, LettersOfEitherCaseCompareEqual) {
    EXPECT_TRUE(CaseInsensitiveCompare("", SubString()));
    EXPECT_TRUE(CaseInsensitiveCompare("Dir/File.H", "dIR/fILE.h"));
    EXPECT_FALSE(CaseInsensitiveCompare("abc", "ab"));
    EXPECT_FALSE(CaseInsensitiveCompare("ab", "abc"));
    EXPECT_FALSE(CaseInsensitiveCompare("abc", "abd"));
    constexpr std::string_view s_upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr std::string_view s_lower = "abcdefghijklmnopqrstuvwxyz";
    const auto folded = [&](char c) {
        return Contains(s_upper, c) ? s_lower[s_upper.find(c)] : c;
    };
    for (const char x : AllBytes()) {
        for (const char y : AllBytes()) {
            ASSERT_EQ(CaseInsensitiveCompare(SubString(&x, &x + 1), SubString(&y, &y + 1)),
                      folded(x) == folded(y))
                << int{x} << " and " << int{y};
        }
    }
}

// ---- StringX -----------------------------------------------------------------------------------

TEST(StringXTest, HasItsFieldsInOrder) {
    static_assert(sizeof(StringX) == sizeof(SubString) + sizeof(vorn::ssize_t));
    static_assert(offsetof(StringX, m_subString) == 0);
    static_assert(offsetof(StringX, m_capacity) == sizeof(SubString));
    static_assert(std::is_convertible_v<const StringX&, SubString>);
    const StringX x;
    EXPECT_FALSE(static_cast<SubString>(x));
    EXPECT_EQ(x.m_capacity, 0);
}

TEST(StringXTest, BorrowsWithoutACopy) {
    const HeapText text("abc");
    StringX x;
    x.Set(text.View(), false);
    const SubString s = x;
    EXPECT_EQ(s.m_p1, text.begin());
    EXPECT_EQ(s.m_p2, text.end());
    EXPECT_EQ(x.m_capacity, 0);
}

TEST(StringXTest, OwnsACopy) {
    StringX x;
    {
        const HeapText text(std::string_view("a\0c", 3));
        x.Set(text.View(), true);
        EXPECT_NE(x.m_subString.m_p1, text.begin());
    }
    EXPECT_EQ(Str(x), std::string("a\0c", 3));
    EXPECT_GT(x.m_capacity, 0);
}

TEST(StringXTest, SetReplacesTheContentInEveryWay) {
    const HeapText text("borrowed");
    StringX x;
    for (const bool first : {false, true}) {
        for (const bool second : {false, true}) {
            x.Set(text.View(), first);
            x.Set("other", second);
            EXPECT_EQ(Str(x), "other");
            EXPECT_EQ(x.m_capacity > 0, second);
        }
    }
}

TEST(StringXTest, CopyMayBeAPartOfTheOldContent) {
    StringX x;
    x.Set("abcdef", true);
    const SubString old = x;
    x.Set(SubString(old.m_p1 + 2, old.m_p1 + 4), true);
    EXPECT_EQ(Str(x), "cd");
}

TEST(StringXTest, CopyOfAnEmptyTextPointsNowhere) {
    const HeapText text("a");
    StringX x;
    x.Set("abc", true);
    x.Set(SubString(text.end(), text.end()), true);
    EXPECT_TRUE(x.m_subString.empty());
    EXPECT_NE(x.m_subString.m_p1, text.end());
    EXPECT_EQ(x.m_capacity, 0);
    x.Set(SubString(), true);
    EXPECT_TRUE(x.m_subString.empty());
}

}  // namespace
