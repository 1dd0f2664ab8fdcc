// The other half of the tests of LSToken.cpp: the token and error types, and the decoding of
// literals.
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <type_traits>

#include "qzMacroExpander/LSToken.h"
#include "qzUtils/StringExt.h"
#include "qzUtils/StringStream.h"
#include "tests/support/Text.h"

using namespace std::string_literals;
using vorn_test::HeapText;
using vorn_test::LexError;
using vorn_test::LexErrorOf;
using vorn_test::Str;

namespace vorn {
namespace {

// What an object writes to a stream.
template <class Write>
std::string Written(Write&& write) {
    StringStream os(4096);
    write(os);
    return Str(os.GetString());
}

// ---- LSToken -----------------------------------------------------------------------------------

TEST(LSToken, IsMadeOfATypeAndAText) {
    const LSToken empty(TOKEN_UNDEF);
    EXPECT_EQ(empty.GetType(), TOKEN_UNDEF);
    EXPECT_EQ(empty.m_str.m_p1, nullptr);
    EXPECT_EQ(empty.m_str.m_p2, nullptr);
    const char text[] = "abc";
    const LSToken token(TOKEN_IDENTIFIER, text, text + 2);
    EXPECT_EQ(token.GetType(), TOKEN_IDENTIFIER);
    EXPECT_EQ(token.GetTokenString(), xstring("ab"));
    EXPECT_EQ(LSToken(TOKEN_IDENTIFIER, SubString(text)).GetTokenString(), xstring("abc"));
}

TEST(LSToken, ComparesTypeAndBytesWhereverTheyStand) {
    const char texts[] = "ab ab abc";
    const LSToken first(TOKEN_IDENTIFIER, texts, texts + 2);
    const LSToken second(TOKEN_IDENTIFIER, texts + 3, texts + 5);
    const LSToken longer(TOKEN_IDENTIFIER, texts + 6, texts + 9);
    const LSToken otherType(TOKEN_COMMENT, texts, texts + 2);
    EXPECT_TRUE(first == second);
    EXPECT_FALSE(first != second);
    EXPECT_TRUE(first != longer);
    EXPECT_FALSE(first == longer);
    EXPECT_TRUE(first != otherType);
    EXPECT_FALSE(first == otherType);
}

TEST(LSToken, ComparesWithATypeAndWithAText) {
    const LSToken token(TOKEN_IDENTIFIER, SubString("ab"));
    EXPECT_TRUE(token == TOKEN_IDENTIFIER);
    EXPECT_FALSE(token != TOKEN_IDENTIFIER);
    EXPECT_TRUE(token != TOKEN_COMMENT);
    EXPECT_TRUE(token == "ab");
    EXPECT_FALSE(token != "ab");
    EXPECT_TRUE(token != "abc");
    EXPECT_FALSE(token == "a");
}

TEST(LSToken, IsTrueUnlessItIsTheEndOrNone) {
    EXPECT_FALSE(LSToken(TOKEN_UNDEF));
    EXPECT_FALSE(LSToken(TOKEN_END));
    EXPECT_TRUE(LSToken(TOKEN_COMMENT));
    EXPECT_TRUE(LSToken(TOKEN_HASH));
}

TEST(LSToken, IsWrittenAsItsText) {
    EXPECT_EQ(Written([](xostream& os) { os << LSToken(TOKEN_IDENTIFIER, SubString("ab")); }),
              "ab");
    EXPECT_EQ(Written([](xostream& os) {
                  os << LSToken(TOKEN_DOUBLE_QUOTED_STRING, SubString("r\"\\n\""));
              }),
              "r\"\\n\"");
}

TEST(LSToken, IsWrittenAsEOSWhereItHasNoText) {
    const HeapText text("");
    EXPECT_EQ(Written([&](xostream& os) { os << LSToken(TOKEN_END, text.View()); }), "EOS");
    EXPECT_EQ(Written([](xostream& os) { os << LSToken(TOKEN_UNDEF); }), "EOS");
}

// ---- LexScannerException -----------------------------------------------------------------------

TEST(LexScannerException, TakesItsPlaceFromAnAddressATextOrAToken) {
    const char text[] = "abc";
    const xstring description("wrong");
    const LexScannerException errors[] = {
        {description, text + 1},
        {           description,                SubString(text + 1,          text + 2)},
        { description, LSToken(TOKEN_IDENTIFIER,          text + 1, text + 3)},
    };
    for (const LexScannerException& e : errors) {
        EXPECT_EQ(e.m_description, description);
        EXPECT_TRUE(e.m_path.empty());
        EXPECT_EQ(e.m_lineNumber, -1);
        EXPECT_EQ(e.m_pos, text + 1);
    }
}

TEST(LexScannerException, WritesPathAndLineWhereTheyAreSet) {
    struct {
        const char* path;
        ssize_t line;
        const char* written;
    } const rows[] = {
        {"",         -1, "error : text"               },
        {"",         12, "Line 12: error : text"      },
        {"",         0,  "Line 0: error : text"       },
        {"dir/path", 12, "dir/path(12) : error : text"},
        {"path",     0,  "path(0) : error : text"     },
        {"path",     -1, "path : error : text"        },
    };
    for (const auto& row : rows) {
        LexScannerException e("text", static_cast<const xchar*>(nullptr));
        e.m_path = row.path;
        e.m_lineNumber = row.line;
        const IException& base = e;
        EXPECT_EQ(Written([&base](xostream& os) { base.Write(os); }), row.written);
    }
}

TEST(LexScannerException, GivesItsDescriptionZeroTerminated) {
    LexScannerException e("text", static_cast<const xchar*>(nullptr));
    EXPECT_STREQ(e.what(), "text");
    e.m_description += "\n    in a macro";
    EXPECT_STREQ(e.what(), "text\n    in a macro");
    EXPECT_EQ(e.m_description.size(), 19);
    EXPECT_STREQ(LexScannerException("", SubString()).what(), "");
}

TEST(LexScannerException, IsCaughtAsTheRootOfExceptions) {
    try {
        throw LexScannerException("text", SubString());
    } catch (const IException& e) {
        EXPECT_EQ(Written([&e](xostream& os) { e.Write(os); }), "error : text");
        return;
    }
    FAIL() << "nothing was caught";
}

// ---- strings and characters --------------------------------------------------------------------

// The value of a text that is one string token.
std::string StringValue(const std::string& bytes) {
    const HeapText text(bytes);
    SubString s = text.View();
    const LSToken token = LsScanToken(s, false);
    EXPECT_EQ(Str(token.m_str), bytes);
    xstring value("what was there before");
    token.GetLiteralString(value);
    return Str(value);
}

struct ValueRow {
    std::string text;
    std::string value;
};

TEST(GetLiteralString, DecodesStringTokens) {
    const ValueRow rows[] = {
        {"\"\"",                          ""                },
        {"''",                            ""                },
        {"r\"\"",                         ""                },
        {"\"a b\"",                       "a b"             },
        {"'a b'",                         "a b"             },
        {"\"it's\"",                      "it's"            },
        {"'\"'",                          "\""              },
        {"r\"a\\b\"",                     "a\\b"            },
        {"R'\\'",                         "\\"              },
        {"r'\\\\'",                       "\\\\"            },
        {"'\\''",                         "'"               },
        {"\"\\\"\"",                      "\""              },
        {"\"rR\"",                        "rR"              },
        {"'a\\n\\tb'",                    "a\n\tb"          },
        {"\"\\a\\b\\f\\r\\v\\0\\\\\\?\"", "\a\b\f\r\v\0\\?"s},
        {"'\0\x80'"s,                     "\0\x80"s         },
    };
    for (const ValueRow& row : rows)
        EXPECT_EQ(StringValue(row.text), row.value) << row.text;
}

TEST(GetLiteralString, GivesAHexEscapeAsItStandsWithoutTheBackslash) {
    EXPECT_EQ(StringValue("\"\\x41\""), "x41");
    EXPECT_EQ(StringValue("'a\\xfFb'"), "axfFb");
}

TEST(GetLiteralString, ReadsBackWhatIsQuoted) {
    xstring bytes;
    for (int code = 0; code < 256; ++code)
        bytes.push_back(static_cast<char>(code));
    xstring quoted;
    MakeDoubleQuotedString(bytes, quoted);
    EXPECT_EQ(StringValue(Str(quoted)), Str(bytes));
}

TEST(GetLiteralCharacter, GivesTheByteOrWhatItsEscapeStandsFor) {
    struct {
        const char* text;
        char value;
    } const rows[] = {
        {"'a'",     'a'   },
        {"'\"'",    '"'   },
        {"'\\n'",   '\n'  },
        {"'\\0'",   '\0'  },
        {"'\\''",   '\''  },
        {"'\\\\'",  '\\'  },
        {"'\x80'",  '\x80'},
        {"'\\x41'", 'x'   }
    };
    for (const auto& row : rows) {
        const HeapText text(row.text);
        SubString s = text.View();
        ASSERT_TRUE(LsScanLiteralCharacter(s)) << row.text;
        const LSToken token(TOKEN_SINGLE_QUOTED_STRING, text.begin(), s.m_p1);
        EXPECT_EQ(token.GetLiteralCharacter(), row.value) << row.text;
    }
}

// ---- numbers -----------------------------------------------------------------------------------

TEST(GetLiteralInt, WrapsInTheWidthOfItsType) {
    struct {
        const char* text;
        int32 value32;
        int64 value64;
    } const rows[] = {
        {"",                     0,               0                                },
        {"0",                    0,               0                                },
        {"0123",                 123,             123                              },
        {"2147483647",           2147483647,      2147483647                       },
        {"2147483648",           -2147483647 - 1, 2147483648                       },
        {"4294967297",           1,               4294967297                       },
        {"9223372036854775807",  -1,              9223372036854775807              },
        {"9223372036854775808",  0,               std::numeric_limits<int64>::min()},
        {"18446744073709551615", -1,              -1                               },
        {"18446744073709551616", 0,               0                                },
        {"18446744073709551619", 3,               3                                },
    };
    for (const auto& row : rows) {
        const HeapText text(row.text);
        const LSToken token(TOKEN_INTEGER, text.View());
        EXPECT_EQ(token.GetLiteralInt32(), row.value32) << row.text;
        EXPECT_EQ(token.GetLiteralInt64(), row.value64) << row.text;
    }
}

TEST(GetLiteralHexInt, KeepsTheLastDigitsThatFit) {
    struct {
        const char* text;
        int32 value32;
        int64 value64;
    } const rows[] = {
        {"",                    0,          0                                },
        {"0x",                  0,          0                                },
        {"0x0",                 0,          0                                },
        {"0Xff",                255,        255                              },
        {"0xaBcD",              0xabcd,     0xabcd                           },
        {"0xffffffff",          -1,         0xffffffff                       },
        {"0x123456789",         0x23456789, 0x123456789                      },
        {"0x8000000000000000",  0,          std::numeric_limits<int64>::min()},
        {"0xffffffffffffffff",  -1,         -1                               },
        {"0x1fffffffffffffffe", -2,         -2                               },
        {"0x10000000000000000", 0,          0                                },
    };
    for (const auto& row : rows) {
        const HeapText text(row.text);
        const LSToken token(TOKEN_HEX_INTEGER, text.View());
        EXPECT_EQ(token.GetLiteralHexInt32(), row.value32) << row.text;
        EXPECT_EQ(token.GetLiteralHexInt64(), row.value64) << row.text;
    }
}

double DoubleValue(const std::string& bytes) {
    const HeapText text(bytes);
    return LSToken(TOKEN_FLOAT, text.View()).GetLiteralDouble();
}

TEST(GetLiteralDouble, ReadsFloatsAndIntegers) {
    EXPECT_EQ(DoubleValue("0.5"), 0.5);
    EXPECT_EQ(DoubleValue("1e3"), 1000.0);
    EXPECT_EQ(DoubleValue("12.25E-2"), 0.1225);
    EXPECT_EQ(DoubleValue("42"), 42.0);
    EXPECT_EQ(DoubleValue("007"), 7.0);
    EXPECT_EQ(DoubleValue(""), 0.0);
    EXPECT_EQ(DoubleValue("1e400"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(DoubleValue("1e-400"), 0.0);
    EXPECT_EQ(DoubleValue("5e-324"), std::numeric_limits<double>::denorm_min());
}

TEST(GetLiteralDouble, AgreesWithStrtodAtTheLimits) {
    const char* const texts[] = {"1.7976931348623157e308",
                                 "1.7976931348623158e308",
                                 "1.7976931348623159e308",
                                 "1.797693134862316e308",
                                 "2.2250738585072011e-308",
                                 "2.2250738585072014e-308",
                                 "2.4703282292062327e-324",
                                 "2.4703282292062328e-324",
                                 "4.9e-324",
                                 "1e-323",
                                 "0.1",
                                 "0.30000000000000004",
                                 "9007199254740993",
                                 "9007199254740992.5",
                                 "123456789012345678901234567890123456789012345678901234567890",
                                 "0e999999999999999999999",
                                 "1e999999999999999999999",
                                 "1e-999999999999999999999",
                                 "0x10",
                                 "0x1.8p1",
                                 "inf",
                                 "1x"};
    for (const char* text : texts)
        EXPECT_EQ(DoubleValue(text), std::strtod(text, nullptr)) << text;
}

TEST(GetLiteralDouble, AgreesWithStrtodOnRandomFloats) {
    std::mt19937 random(1);
    const auto digits = [&random](std::size_t most) {
        std::string text;
        for (std::size_t n = 1 + random() % most; n > 0; --n)
            text += static_cast<char>('0' + random() % 10);
        return text;
    };
    for (int round = 0; round < 20000; ++round) {
        std::string text = digits(22) + "." + digits(22);
        if (random() % 4 != 0)
            text += (random() % 2 == 0 ? "e-" : "E") + digits(3);
        ASSERT_EQ(DoubleValue(text), std::strtod(text.c_str(), nullptr)) << text;
    }
}

// A locale of C++ streams that writes numbers as 1.234,5.
class CommaLocale : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(GetLiteralDouble, ReadsAPointWhateverTheLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new CommaLocale));
    // A system need not have any of these; each one that is there has a comma.
    for (const char* name : {"C", "de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE", "fr_FR"}) {
        if (std::setlocale(LC_ALL, name) == nullptr)
            continue;
        EXPECT_EQ(DoubleValue("1.5"), 1.5) << name;
        EXPECT_EQ(DoubleValue("1234.5e-400"), 0.0) << name;
        EXPECT_EQ(DoubleValue("1.5e400"), std::numeric_limits<double>::infinity()) << name;
    }
    std::setlocale(LC_ALL, "C");
    std::locale::global(before);
}

// ---- UnstringifyQuotedString -------------------------------------------------------------------

std::string Unstringified(const std::string& bytes) {
    const HeapText text(bytes);
    return Written([&text](xostream& os) { UnstringifyQuotedString(text.View(), os); });
}

TEST(UnstringifyQuotedString, DecodesUpToTheMatchingQuote) {
    const ValueRow rows[] = {
        {"\"\"",                         ""                },
        {"''",                           ""                },
        {"'a'b",                         "a"               },
        {"\"a\"\"",                      "a"               },
        {"\"it's\"",                     "it's"            },
        {"'\"'",                         "\""              },
        {"'\\''",                        "'"               },
        {"'a\rb'",                       "a\rb"            },
        {"'a'\n\\",                      "a"               },
        {"\"a\\n\\\\b\\\"\"",            "a\n\\b\""        },
        {"\"\\0\\a\\b\\f\\r\\t\\v\\?\"", "\0\a\b\f\r\t\v?"s},
        {"'\0\xff'"s,                    "\0\xff"s         },
    };
    for (const ValueRow& row : rows)
        EXPECT_EQ(Unstringified(row.text), row.value) << row.text;
}

TEST(UnstringifyQuotedString, GivesHexEscapesTheirValue) {
    EXPECT_EQ(Unstringified("\"\\x41\""), "A");
    EXPECT_EQ(Unstringified("'\\x00\\xfF\\xA9b\\x7e'"), "\0\xff\xa9"
                                                        "b~"s);
    EXPECT_EQ(Unstringified("'\\x414'"), "A4");
}

struct UnstringifyFailure {
    std::string text;
    std::string description;
    ssize_t offset;
    std::string written;  // in front of the fault
};

TEST(UnstringifyQuotedString, ThrowsAtThePlaceOfTheFault) {
    const UnstringifyFailure rows[] = {
        {"",        "Expected quoted string",                  0, ""  },
        {"'",       "Expected quoted string",                  1, ""  },
        {"\"",      "Expected quoted string",                  1, ""  },
        {"abc",     "abc isn't a quoted string",               0, ""  },
        {" 'a'",    " 'a' isn't a quoted string",              0, ""  },
        {"r'a'",    "r'a' isn't a quoted string",              0, ""  },
        {"'ab",     "Met EOS in middle of string",             3, "ab"},
        {"\"a'",    "Met EOS in middle of string",             3, "a'"},
        {"'a\nb'",  "Met end of line in middle of string",     2, "a" },
        {"'a\\",    "Met EOS in middle of string",             3, "a" },
        {"'a\\x",   "Expected hex character when reached EOS", 4, "a" },
        {"'a\\x4",  "Expected hex character when reached EOS", 5, "a" },
        {"'\\xg1'", "Expected hex character when read 'g'",    3, ""  },
        {"'\\x1 '", "Expected hex character when read space",  4, ""  },
        {"'a\\q'",  "qis not a valid escape character",        3, "a" },
        {"'\\\n'",  "\nis not a valid escape character",       2, ""  },
        {"'\\\0'"s, "\0is not a valid escape character"s,      2, ""  },
    };
    for (const UnstringifyFailure& row : rows) {
        const HeapText text(row.text);
        LexError error;
        const std::string written = Written([&](xostream& os) {
            error = LexErrorOf(text.begin(), [&] { UnstringifyQuotedString(text.View(), os); });
        });
        EXPECT_EQ(error, (LexError{row.description, row.offset}));
        EXPECT_EQ(written, row.written) << row.text;
    }
}

}  // namespace
}  // namespace vorn
