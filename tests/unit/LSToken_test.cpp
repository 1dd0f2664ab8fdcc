#include "qzMacroExpander/LSToken.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "qzUtils/StringExt.h"
#include "tests/support/Text.h"

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using vorn_test::HeapText;
using vorn_test::LexError;
using vorn_test::LexErrorOf;
using vorn_test::Str;

namespace vorn {
namespace {

// A token as tests compare it.
struct Scanned {
    EToken type;
    std::string text;

    bool operator==(const Scanned&) const = default;
};

void PrintTo(const Scanned& token, std::ostream* os) {
    *os << token.type << ' ' << testing::PrintToString(token.text);
}

// All tokens of a text but its end.
std::vector<Scanned> ScanAll(std::string_view text, bool returnComments = false) {
    const HeapText heapText(text);
    SubString s = heapText.View();
    std::vector<Scanned> tokens;
    while (true) {
        const LSToken token = LsScanToken(s, returnComments);
        if (token == TOKEN_END)
            return tokens;
        tokens.push_back({token.m_type, Str(token.m_str)});
    }
}

// The error that ends the scanning of a text, and how far the scanner had come.
struct ScanFailure {
    LexError error;
    ssize_t reached;

    bool operator==(const ScanFailure&) const = default;
};

void PrintTo(const ScanFailure& failure, std::ostream* os) {
    PrintTo(failure.error, os);
    *os << ", scanner at " << failure.reached;
}

ScanFailure ScanToFailure(std::string_view text) {
    const HeapText heapText(text);
    SubString s = heapText.View();
    const LexError error = LexErrorOf(heapText.begin(), [&s] {
        while (LsScanToken(s, true) != TOKEN_END) {
        }
    });
    return {error, s.m_p1 - heapText.begin()};
}

// ---- the enumeration ---------------------------------------------------------------------------

struct TokenRow {
    EToken type;
    int value;
    std::vector<std::string> spellings;  // none where no text scans as the token
};

const TokenRow s_tokenRows[] = {
    {TOKEN_UNDEF,                -1,    {}                                                           },
    {TOKEN_END,                  10000, {}                                                           },
    {TOKEN_COMMENT,              10001, {"// a b", "//", "/* a */"}                                  },
    {TOKEN_PREPROC_COMMENT,      10002, {"@// a b", "@//", "@/* a */"}                               },
    {TOKEN_INTEGER,              10003, {"0", "7", "0123", "12345678901234567890"}                   },
    {TOKEN_HEX_INTEGER,          10004, {"0x0", "0Xff", "0x0123456789abcdefABCDEF"}                  },
    {TOKEN_FLOAT,                10005, {"0.5", "1.25", "0e1", "1E+5", "12e-07", "1.5e3", "0.0E-0"}  },
    {TOKEN_SINGLE_QUOTED_STRING, 10006, {"''", "'a b'", "r'\\'", "R'a'", "'\"'", "'\\''"}            },
    {TOKEN_DOUBLE_QUOTED_STRING,
     10007,                             {"\"\"", "\"a b\"", "r\"\\\"", "R\"a\"", "\"'\"", "\"\\\"\""}},
    {TOKEN_IDENTIFIER,           10008, {"a", "_", "Z9_z", "r", "R", "rx", "r2", "if"}               },
    {TOKEN_LESS,                 10009, {"<"}                                                        },
    {TOKEN_GREATER,              10010, {">"}                                                        },
    {TOKEN_AMPERSAND,            10011, {"&"}                                                        },
    {TOKEN_VLINE,                10012, {"|"}                                                        },
    {TOKEN_CARET,                10013, {"^"}                                                        },
    {TOKEN_LESS_EQUAL,           10014, {"<="}                                                       },
    {TOKEN_GREATER_EQUAL,        10015, {">="}                                                       },
    {TOKEN_AMPERSAND_EQUAL,      10016, {"&="}                                                       },
    {TOKEN_VLINE_EQUAL,          10017, {"|="}                                                       },
    {TOKEN_CARET_EQUAL,          10018, {"^="}                                                       },
    {TOKEN_DBL_LESS,             10019, {"<<", "--"}                                                 },
    {TOKEN_DBL_GREATER,          10020, {">>"}                                                       },
    {TOKEN_DBL_AMPERSAND,        10021, {"&&"}                                                       },
    {TOKEN_DBL_VLINE,            10022, {"||"}                                                       },
    {TOKEN_DBL_CARET,            10023, {"^^"}                                                       },
    {TOKEN_DBL_LESS_EQUAL,       10024, {"<<="}                                                      },
    {TOKEN_DBL_GREATER_EQUAL,    10025, {">>="}                                                      },
    {TOKEN_DBL_AMPERSAND_EQUAL,  10026, {"&&="}                                                      },
    {TOKEN_DBL_VLINE_EQUAL,      10027, {"||="}                                                      },
    {TOKEN_DBL_CARET_EQUAL,      10028, {"^^="}                                                      },
    {TOKEN_PLUS,                 10029, {"+"}                                                        },
    {TOKEN_MINUS,                10030, {"-"}                                                        },
    {TOKEN_ASTERISK,             10031, {"*"}                                                        },
    {TOKEN_FORWARD_SLASH,        10032, {"/"}                                                        },
    {TOKEN_PERCENT,              10033, {"%"}                                                        },
    {TOKEN_EXCLAM,               10034, {"!"}                                                        },
    {TOKEN_EQUAL,                10035, {"="}                                                        },
    {TOKEN_QUESTION,             10036, {"?"}                                                        },
    {TOKEN_DBL_PLUS,             10037, {"++"}                                                       },
    {TOKEN_DBL_MINUS,            10038, {}                                                           },
    {TOKEN_PLUS_EQUAL,           10039, {"+="}                                                       },
    {TOKEN_MINUS_EQUAL,          10040, {"-="}                                                       },
    {TOKEN_ASTERISK_EQUAL,       10041, {"*="}                                                       },
    {TOKEN_SLASH_EQUAL,          10042, {"/="}                                                       },
    {TOKEN_PERCENT_EQUAL,        10043, {"%="}                                                       },
    {TOKEN_EXCLAM_EQUAL,         10044, {"!="}                                                       },
    {TOKEN_DBL_EQUAL,            10045, {"=="}                                                       },
    {TOKEN_QUESTION_EQUAL,       10046, {"?="}                                                       },
    {TOKEN_MINUS_GREATER,        10047, {"->"}                                                       },
    {TOKEN_COLON,                10048, {":"}                                                        },
    {TOKEN_COLON_COLON,          10049, {"::"}                                                       },
    {TOKEN_DOLLAR,               10050, {"$"}                                                        },
    {TOKEN_DOLLAR_DOLLAR,        10051, {"$$"}                                                       },
    {TOKEN_DOT,                  10052, {"."}                                                        },
    {TOKEN_COMMA,                10053, {","}                                                        },
    {TOKEN_SEMICOLON,            10054, {";"}                                                        },
    {TOKEN_LEFT_PAREN,           10055, {"("}                                                        },
    {TOKEN_RIGHT_PAREN,          10056, {")"}                                                        },
    {TOKEN_LEFT_CURLY,           10057, {"{"}                                                        },
    {TOKEN_RIGHT_CURLY,          10058, {"}"}                                                        },
    {TOKEN_LEFT_SQUARE,          10059, {"["}                                                        },
    {TOKEN_RIGHT_SQUARE,         10060, {"]"}                                                        },
    {TOKEN_TILDE,                10061, {"~"}                                                        },
    {TOKEN_AT,                   10062, {"@"}                                                        },
    {TOKEN_BACK_SLASH,           10063, {"\\"}                                                       },
    {TOKEN_BACK_QUOTE,           10064, {"`"}                                                        },
    {TOKEN_HASH,                 10065, {"#"}                                                        },
};

TEST(EToken, HasTheValuesOfTheTable) {
    for (const TokenRow& row : s_tokenRows)
        EXPECT_EQ(row.type, row.value);
}

TEST(LsScanToken, ReadsEverySpellingOfEveryToken) {
    for (const TokenRow& row : s_tokenRows) {
        for (const std::string& spelling : row.spellings)
            EXPECT_THAT(ScanAll(spelling, true), ElementsAre(Scanned{row.type, spelling}));
    }
}

TEST(LsScanToken, EndsEverySpellingAtALineFeed) {
    for (const TokenRow& row : s_tokenRows) {
        for (const std::string& spelling : row.spellings)
            EXPECT_THAT(ScanAll(" \t" + spelling + "\nx", true),
                        ElementsAre(Scanned{row.type, spelling}, Scanned{TOKEN_IDENTIFIER, "x"}));
    }
}

// ---- operators ---------------------------------------------------------------------------------

// The type of an operator with this spelling.
std::optional<EToken> OperatorType(std::string_view spelling) {
    for (const TokenRow& row : s_tokenRows) {
        if (row.type >= TOKEN_LESS
            && std::find(row.spellings.begin(), row.spellings.end(), spelling)
                   != row.spellings.end())
            return row.type;
    }
    return std::nullopt;
}

// Cuts a text of operators by taking the longest spelling each time. An error is the last token,
// of the type TOKEN_UNDEF.
std::vector<Scanned> CutByLongestSpelling(std::string_view text) {
    std::vector<Scanned> tokens;
    while (!text.empty()) {
        if (text.substr(0, 3) == "++=") {
            tokens.push_back({TOKEN_UNDEF, "Invalid token ++="});
            return tokens;
        }
        std::size_t length = std::min<std::size_t>(3, text.size());
        while (!OperatorType(text.substr(0, length)))
            --length;
        tokens.push_back(
            {*OperatorType(text.substr(0, length)), std::string(text.substr(0, length))});
        text.remove_prefix(length);
    }
    return tokens;
}

std::vector<Scanned> ScanWithError(std::string_view text) {
    SubString s(text.data(), text.data() + text.size());
    std::vector<Scanned> tokens;
    try {
        while (true) {
            const LSToken token = LsScanToken(s, true);
            if (token == TOKEN_END)
                break;
            tokens.push_back({token.m_type, Str(token.m_str)});
        }
    } catch (const LexScannerException& e) {
        tokens.push_back({TOKEN_UNDEF, Str(e.m_description)});
    }
    return tokens;
}

TEST(Operators, AreTheLongestSpellingInAllTextsOfThree) {
    const std::string_view bytes = "+-<>&|^*/%!=?:$#.,@~\\`";
    for (const char a : bytes) {
        for (const char b : bytes) {
            for (const char c : bytes) {
                const std::string text{a, b, c};
                const bool hasComment =
                    text.find("//") != std::string::npos || text.find("/*") != std::string::npos;
                if (hasComment)
                    continue;
                ASSERT_EQ(ScanWithError(text), CutByLongestSpelling(text)) << text;
            }
        }
    }
}

TEST(Operators, AreNotContinuedAcrossABlank) {
    EXPECT_THAT(ScanAll("+ + < = : : $ $"),
                ElementsAre(Scanned{TOKEN_PLUS, "+"}, Scanned{TOKEN_PLUS, "+"},
                            Scanned{TOKEN_LESS, "<"}, Scanned{TOKEN_EQUAL, "="},
                            Scanned{TOKEN_COLON, ":"}, Scanned{TOKEN_COLON, ":"},
                            Scanned{TOKEN_DOLLAR, "$"}, Scanned{TOKEN_DOLLAR, "$"}));
}

TEST(Operators, TwoMinusesAreTheTokenOfAShift) {
    EXPECT_THAT(ScanAll("a--b"),
                ElementsAre(Scanned{TOKEN_IDENTIFIER, "a"}, Scanned{TOKEN_DBL_LESS, "--"},
                            Scanned{TOKEN_IDENTIFIER, "b"}));
    EXPECT_THAT(ScanAll("a---b"),
                ElementsAre(Scanned{TOKEN_IDENTIFIER, "a"}, Scanned{TOKEN_DBL_LESS, "--"},
                            Scanned{TOKEN_MINUS, "-"}, Scanned{TOKEN_IDENTIFIER, "b"}));
}

TEST(Operators, ThreeEqualSignsAreTwoTokens) {
    EXPECT_THAT(ScanAll("==="),
                ElementsAre(Scanned{TOKEN_DBL_EQUAL, "=="}, Scanned{TOKEN_EQUAL, "="}));
    EXPECT_THAT(ScanAll("!=="),
                ElementsAre(Scanned{TOKEN_EXCLAM_EQUAL, "!="}, Scanned{TOKEN_EQUAL, "="}));
    EXPECT_THAT(ScanAll("<<="), ElementsAre(Scanned{TOKEN_DBL_LESS_EQUAL, "<<="}));
}

TEST(Operators, ASlashAtTheEndIsNoComment) {
    EXPECT_THAT(ScanAll("/"), ElementsAre(Scanned{TOKEN_FORWARD_SLASH, "/"}));
    EXPECT_THAT(ScanAll("a /"),
                ElementsAre(Scanned{TOKEN_IDENTIFIER, "a"}, Scanned{TOKEN_FORWARD_SLASH, "/"}));
}

// ---- white space, single bytes -----------------------------------------------------------------

TEST(LsScanToken, KnowsWhatEveryByteAloneIs) {
    const std::string blanks = " \t\n\r\v\f";
    const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
    for (int code = 0; code < 256; ++code) {
        const std::string text(1, static_cast<char>(code));
        if (blanks.find(text) != std::string::npos) {
            EXPECT_THAT(ScanAll(text), IsEmpty());
        } else if (letters.find(text) != std::string::npos) {
            EXPECT_THAT(ScanAll(text), ElementsAre(Scanned{TOKEN_IDENTIFIER, text}));
        } else if (text >= "0" && text <= "9") {
            EXPECT_THAT(ScanAll(text), ElementsAre(Scanned{TOKEN_INTEGER, text}));
        } else if (text == "'" || text == "\"") {
            EXPECT_EQ(ScanToFailure(text).error.offset, 1);
        } else if (const auto type = OperatorType(text)) {
            EXPECT_THAT(ScanAll(text), ElementsAre(Scanned{*type, text}));
        } else {
            EXPECT_EQ(ScanToFailure(text), (ScanFailure{
                                               {"Bad token " + text, 0},
                                               0
            }));
        }
    }
}

TEST(LsScanToken, GivesTheEndOfAnEmptyTextAtOnce) {
    const HeapText text("");
    for (const bool returnComments : {false, true}) {
        SubString s = text.View();
        const LSToken token = LsScanToken(s, returnComments);
        EXPECT_EQ(token.m_type, TOKEN_END);
        EXPECT_EQ(token.m_str.m_p1, text.begin());
        EXPECT_EQ(token.m_str.m_p2, text.begin());
    }
    SubString null;
    EXPECT_EQ(LsScanToken(null, false), TOKEN_END);
    EXPECT_EQ(null.m_p1, nullptr);
}

TEST(LsScanToken, GivesTheEndWithTheEmptyRestBehindBlanks) {
    const HeapText text("a \n");
    SubString s = text.View();
    LsScanToken(s, false);
    const LSToken token = LsScanToken(s, false);
    EXPECT_EQ(token.m_type, TOKEN_END);
    EXPECT_EQ(token.m_str.m_p1, text.end());
    EXPECT_EQ(token.m_str.m_p2, text.end());
}

TEST(LsScanToken, PointsIntoTheTextAndLeavesThePositionBehindTheToken) {
    const HeapText text("  name+1");
    SubString s = text.View();
    const LSToken token = LsScanToken(s, false);
    EXPECT_EQ(token.m_str.m_p1, text.begin() + 2);
    EXPECT_EQ(token.m_str.m_p2, text.begin() + 6);
    EXPECT_EQ(s.m_p1, text.begin() + 6);
    EXPECT_EQ(s.m_p2, text.end());
}

TEST(LsScanToken, TakesZeroBytesAndHighBytesInStringsAndComments) {
    const std::string text = "'\0\xff' //\0\x80\n\"\x01\""s;
    EXPECT_THAT(ScanAll(text, true), ElementsAre(Scanned{TOKEN_SINGLE_QUOTED_STRING, "'\0\xff'"s},
                                                 Scanned{TOKEN_COMMENT, "//\0\x80"s},
                                                 Scanned{TOKEN_DOUBLE_QUOTED_STRING, "\"\x01\""}));
}

TEST(LsScanToken, TilesAnyTextWithTokensAndBlanks) {
    std::mt19937 random(1);
    const std::string_view bytes = " \n\tar0x1.e+-'\"\\/*@<=>{}`\x80";
    for (int round = 0; round < 20000; ++round) {
        std::string bytesOfText;
        for (std::size_t n = random() % 12; n > 0; --n)
            bytesOfText += bytes[random() % bytes.size()];
        const HeapText text(bytesOfText);
        SubString s = text.View();
        const char* behindLast = text.begin();
        try {
            while (true) {
                const LSToken token = LsScanToken(s, true);
                ASSERT_EQ(token.m_str.m_p2, token == TOKEN_END ? text.end() : s.m_p1);
                SubString gap(behindLast, token.m_str.m_p1);
                ScanWhiteSpace(gap);
                ASSERT_TRUE(gap.empty()) << bytesOfText;
                if (token == TOKEN_END)
                    break;
                ASSERT_LT(token.m_str.m_p1, token.m_str.m_p2) << bytesOfText;
                behindLast = s.m_p1;
            }
        } catch (const LexScannerException& e) {
            ASSERT_GE(e.m_pos, behindLast) << bytesOfText;
            ASSERT_LE(e.m_pos, text.end()) << bytesOfText;
            ASSERT_GE(s.m_p1, behindLast) << bytesOfText;
            ASSERT_LE(s.m_p1, e.m_pos) << bytesOfText;
        }
    }
}

// ---- comments ----------------------------------------------------------------------------------

TEST(Comments, ArePassedOverOrReturnedAsAsked) {
    const std::string text = " // one\n /* two */ /**/\t//";
    EXPECT_THAT(ScanAll(text, false), IsEmpty());
    EXPECT_THAT(ScanAll(text, true),
                ElementsAre(Scanned{TOKEN_COMMENT, "// one"}, Scanned{TOKEN_COMMENT, "/* two */"},
                            Scanned{TOKEN_COMMENT, "/**/"}, Scanned{TOKEN_COMMENT, "//"}));
}

TEST(Comments, OfTheMacroLanguageAreNeverPassedOver) {
    for (const bool returnComments : {false, true}) {
        EXPECT_THAT(ScanAll("@//x", returnComments),
                    ElementsAre(Scanned{TOKEN_PREPROC_COMMENT, "@//x"}));
        EXPECT_THAT(ScanAll("@/*x*/", returnComments),
                    ElementsAre(Scanned{TOKEN_PREPROC_COMMENT, "@/*x*/"}));
    }
}

TEST(Comments, OfTheMacroLanguageFollowTheirAtDirectly) {
    EXPECT_THAT(ScanAll("@ //x", true),
                ElementsAre(Scanned{TOKEN_AT, "@"}, Scanned{TOKEN_COMMENT, "//x"}));
    EXPECT_THAT(ScanAll("@/x"),
                ElementsAre(Scanned{TOKEN_AT, "@"}, Scanned{TOKEN_FORWARD_SLASH, "/"},
                            Scanned{TOKEN_IDENTIFIER, "x"}));
    EXPECT_THAT(ScanAll("@@//x"),
                ElementsAre(Scanned{TOKEN_AT, "@"}, Scanned{TOKEN_PREPROC_COMMENT, "@//x"}));
}

TEST(Comments, ToTheEndOfTheLineLeaveTheLineFeed) {
    const HeapText text("// a\r\nb");
    SubString s = text.View();
    EXPECT_TRUE(LsScanComment(s));
    EXPECT_EQ(s.m_p1, text.begin() + 5);
}

TEST(Comments, ToTheEndOfTheLineNeedNoLineFeedAtTheEnd) {
    EXPECT_THAT(ScanAll("a //b", true),
                ElementsAre(Scanned{TOKEN_IDENTIFIER, "a"}, Scanned{TOKEN_COMMENT, "//b"}));
}

TEST(Comments, EndAtTheFirstAsteriskAndSlash) {
    const char* const closed[] = {"/**/",          "/***/",  "/****/",   "/*/*/",
                                  "/* a / * b */", "/*//*/", "/* // */", "/*\n'\n*/"};
    for (const char* comment : closed) {
        EXPECT_THAT(ScanAll(comment, true), ElementsAre(Scanned{TOKEN_COMMENT, comment}));
        EXPECT_THAT(ScanAll(comment + "*/"s, true),
                    ElementsAre(Scanned{TOKEN_COMMENT, comment}, Scanned{TOKEN_ASTERISK, "*"},
                                Scanned{TOKEN_FORWARD_SLASH, "/"}));
    }
}

TEST(LsScanComment, LeavesWhatIsNoComment) {
    for (const char* bytes : {"", "/", "a", "/a", "/ /", " //", "@//", "*/"}) {
        const HeapText text(bytes);
        SubString s = text.View();
        EXPECT_FALSE(LsScanComment(s)) << bytes;
        EXPECT_EQ(s.m_p1, text.begin()) << bytes;
    }
}

// ---- numbers and strings -----------------------------------------------------------------------

TEST(Numbers, EndWhereTheirFormEnds) {
    EXPECT_THAT(ScanAll("12abc"),
                ElementsAre(Scanned{TOKEN_INTEGER, "12"}, Scanned{TOKEN_IDENTIFIER, "abc"}));
    EXPECT_THAT(ScanAll("1.5f"),
                ElementsAre(Scanned{TOKEN_FLOAT, "1.5"}, Scanned{TOKEN_IDENTIFIER, "f"}));
    EXPECT_THAT(ScanAll("0x1fg"),
                ElementsAre(Scanned{TOKEN_HEX_INTEGER, "0x1f"}, Scanned{TOKEN_IDENTIFIER, "g"}));
    EXPECT_THAT(ScanAll("1.2.3"), ElementsAre(Scanned{TOKEN_FLOAT, "1.2"}, Scanned{TOKEN_DOT, "."},
                                              Scanned{TOKEN_INTEGER, "3"}));
    EXPECT_THAT(ScanAll("1e2e3"),
                ElementsAre(Scanned{TOKEN_FLOAT, "1e2"}, Scanned{TOKEN_IDENTIFIER, "e3"}));
    EXPECT_THAT(ScanAll("1e2.5"), ElementsAre(Scanned{TOKEN_FLOAT, "1e2"}, Scanned{TOKEN_DOT, "."},
                                              Scanned{TOKEN_INTEGER, "5"}));
    EXPECT_THAT(ScanAll("00x1"),
                ElementsAre(Scanned{TOKEN_INTEGER, "00"}, Scanned{TOKEN_IDENTIFIER, "x1"}));
}

TEST(Numbers, DoNotBeginWithAPointOrASign) {
    EXPECT_THAT(ScanAll(".5"), ElementsAre(Scanned{TOKEN_DOT, "."}, Scanned{TOKEN_INTEGER, "5"}));
    EXPECT_THAT(ScanAll("-5"), ElementsAre(Scanned{TOKEN_MINUS, "-"}, Scanned{TOKEN_INTEGER, "5"}));
}

TEST(LsScanNumber, LeavesWhatStartsWithNoDigit) {
    for (const char* bytes : {"a", ".5", "-1", "\x80", " 1"}) {
        const HeapText text(bytes);
        SubString s = text.View();
        EXPECT_EQ(LsScanNumber(s), TOKEN_UNDEF);
        EXPECT_EQ(s.m_p1, text.begin());
    }
}

TEST(Strings, HaveARawPrefixOnlyDirectlyInFrontOfTheQuote) {
    EXPECT_THAT(ScanAll("r\"a\\b\""),
                ElementsAre(Scanned{TOKEN_DOUBLE_QUOTED_STRING, "r\"a\\b\""}));
    EXPECT_THAT(ScanAll("rx\"y\""), ElementsAre(Scanned{TOKEN_IDENTIFIER, "rx"},
                                                Scanned{TOKEN_DOUBLE_QUOTED_STRING, "\"y\""}));
    EXPECT_THAT(ScanAll("r 'y'"), ElementsAre(Scanned{TOKEN_IDENTIFIER, "r"},
                                              Scanned{TOKEN_SINGLE_QUOTED_STRING, "'y'"}));
    EXPECT_THAT(ScanAll("xr'y'"), ElementsAre(Scanned{TOKEN_IDENTIFIER, "xr"},
                                              Scanned{TOKEN_SINGLE_QUOTED_STRING, "'y'"}));
    EXPECT_THAT(ScanAll("rr'y'"), ElementsAre(Scanned{TOKEN_IDENTIFIER, "rr"},
                                              Scanned{TOKEN_SINGLE_QUOTED_STRING, "'y'"}));
}

TEST(Strings, EndARawBodyAtItsFirstDelimiter) {
    EXPECT_THAT(ScanAll("r'\\'x"), ElementsAre(Scanned{TOKEN_SINGLE_QUOTED_STRING, "r'\\'"},
                                               Scanned{TOKEN_IDENTIFIER, "x"}));
}

TEST(Strings, TakeEveryEscapeAndACarriageReturn) {
    const std::string text = "\"\\a\\b\\f\\n\\r\\t\\v\\0\\\\\\'\\\"\\?\\x4F\\xa0 \r\"";
    EXPECT_THAT(ScanAll(text), ElementsAre(Scanned{TOKEN_DOUBLE_QUOTED_STRING, text}));
}

TEST(LsScanLiteralString, LeavesWhatIsNoSuchString) {
    for (const char* bytes : {"a", "r", "R", "rx'", "\"a\"", "r\"a\"", "x'a'"}) {
        const HeapText text(bytes);
        SubString s = text.View();
        EXPECT_FALSE(LsScanLiteralString(s, '\'', "text")) << bytes;
        EXPECT_EQ(s.m_p1, text.begin()) << bytes;
    }
}

TEST(LsScanLiteralString, NamesInMessagesWhatItReads) {
    const HeapText text("|ab");
    SubString s = text.View();
    EXPECT_EQ(LexErrorOf(text.begin(), [&s] { LsScanLiteralString(s, '|', "pattern"); }),
              (LexError{"Met EOS within pattern after reading |ab", 3}));
}

TEST(LsScanEscapeCharacter, ReadsOneEscape) {
    struct {
        const char* text;
        ssize_t length;  // 0 where no escape is read
    } const rows[] = {
        {"\\nn",    2},
        {"\\x4142", 4},
        {"\\\\\\",  2},
        {"\\0",     2},
        {"n",       0},
        {"x41",     0}
    };
    for (const auto& row : rows) {
        const HeapText text(row.text);
        SubString s = text.View();
        EXPECT_EQ(LsScanEscapeCharacter(s), row.length > 0) << row.text;
        EXPECT_EQ(s.m_p1 - text.begin(), row.length) << row.text;
    }
}

TEST(LsScanLiteralCharacter, ReadsOneCharacterInSingleQuotes) {
    struct {
        std::string text;
        ssize_t length;  // 0 where no character is read
    } const rows[] = {
        {"'a'b",    3},
        {"'\\n'",   4},
        {"'\\x41'", 6},
        {"'\"'",    3},
        {"'\\''",   4},
        {"'\0'"s,   3},
        {"' '",     3},
        {"'\x80'",  3},
        {"a'",      0},
        {"\"a\"",   0}
    };
    for (const auto& row : rows) {
        const HeapText text(row.text);
        SubString s = text.View();
        EXPECT_EQ(LsScanLiteralCharacter(s), row.length > 0) << row.text;
        EXPECT_EQ(s.m_p1 - text.begin(), row.length) << row.text;
    }
}

// ---- errors of the scanner ---------------------------------------------------------------------

struct FailureRow {
    std::string text;
    std::string description;
    ssize_t offset;  // of the error, and of the scanner
};

TEST(LsScanToken, ThrowsAtTheByteInQuestion) {
    const std::string commentEos = "Met EOS in middle of /* ... */ comment";
    const FailureRow rows[] = {
        {"0x",           "Expected hex digit (not EOS) after 0x",                                      2},
        {"0X",           "Expected hex digit (not EOS) after 0x",                                      2},
        {"0xg",          "Expected hex digit (not 'g') after 0x",                                      2},
        {"0x 1",         "Expected hex digit (not space) after 0x",                                    2},
        {"1.",           "Expected digit (not EOS) after decimal point (ie after reading '1.')",       2},
        {"a 012.x",      "Expected digit (not 'x') after decimal point (ie after reading '012.')",     6},
        {"0.\n",         "Expected digit (not line feed) after decimal point (ie after reading '0.')", 2},
        {"1..2",         "Expected digit (not '.') after decimal point (ie after reading '1.')",       2},
        {"1.e5",         "Expected digit (not 'e') after decimal point (ie after reading '1.')",       2},
        {"1e",           "Expected digit(s) (not EOS) for exponent after reading 1e",                  2},
        {"1E+",          "Expected digit(s) (not EOS) for exponent after reading 1E+",                 3},
        {"1.5e-x",       "Expected digit(s) (not 'x') for exponent after reading 1.5e-",               5},
        {"1e+-2",        "Expected digit(s) (not '-') for exponent after reading 1e+",                 3},
        {"1e\x80",       "Expected digit(s) (not byte 0x80) for exponent after reading 1e",            2},
        {"'",            "Met EOS within single quoted string",                                        1},
        {"\"",           "Met EOS within double quoted string",                                        1},
        {"r'",           "Met EOS within single quoted string",                                        2},
        {"a R\"",        "Met EOS within double quoted string",                                        4},
        {"'ab",          "Met EOS within single quoted string after reading 'ab",                      3},
        {"r\"a\\",       "Met EOS within double quoted string after reading r\"a\\",                   4},
        {"'\0"s,         "Met EOS within single quoted string after reading '\0"s,                     2},
        {"don't\n",      "Met line feed within single quoted string after reading 't",                 5},
        {"\"\n\"",       "Met line feed within double quoted string after reading \"",                 1},
        {"r'a\nb'",      "Met line feed within single quoted string after reading r'a",                3},
        {"'a\r\n'",      "Met line feed within single quoted string after reading 'a\r",               3},
        {"\"\\",         "Expected escape character following backslash when reached EOS",             2},
        {"\"\\x",        "Expected hex character when reached EOS",                                    3},
        {"\"\\x4",       "Expected hex character when reached EOS",                                    4},
        {"\"\\xg",       "Expected hex character when read 'g'",                                       3},
        {"\"\\x4\"",     "Expected hex character when read '\"'",                                      4},
        {"\"a\\q\"",     "Invalid escape character 'q' following backslash",                           3},
        {"'\\\n'",       "Invalid escape character line feed following backslash",                     2},
        {"'\\\0'"s,      "Invalid escape character byte 0x00 following backslash",                     2},
        {"'\\ '",        "Invalid escape character space following backslash",                         2},
        {"/*",           commentEos,                                                                   2},
        {"a /* b *",     commentEos,                                                                   8},
        {"/*/",          commentEos,                                                                   3},
        {"/* *\n/",      commentEos,                                                                   6},
        {"++=",          "Invalid token ++=",                                                          3},
        {" a ++= b",     "Invalid token ++=",                                                          6},
        {"\x01",         "Bad token \x01",                                                             0},
        {"a\x7f",        "Bad token \x7f",                                                             1},
        {"\0"s,          "Bad token \0"s,                                                              0},
        {"na\xc3\xafve", "Bad token \xc3",                                                             2},
    };
    for (const FailureRow& row : rows)
        EXPECT_EQ(ScanToFailure(row.text), (ScanFailure{
                                               {row.description, row.offset},
                                               row.offset
        }));
}

TEST(LsScanToken, StaysAtTheAtOfAMacroCommentThatIsLeftOpen) {
    EXPECT_EQ(ScanToFailure("a @/* b"), (ScanFailure{
                                            {"Met EOS in middle of /* ... */ comment", 7},
                                            2
    }));
}

TEST(LsScanLiteralCharacter, ThrowsAtTheByteInQuestion) {
    const std::string inQuotes =
        " while trying to read literal character enclosed in single quotes";
    const FailureRow rows[] = {
        {"'",      "Read EOS" + inQuotes,                                            1},
        {"''",     "Read '''" + inQuotes,                                            1},
        {"'\t'",   "Read tab" + inQuotes,                                            1},
        {"'\n'",   "Read line feed" + inQuotes,                                      1},
        {"'\r'",   "Read carriage return" + inQuotes,                                1},
        {"'a",     "Expected second single quote (not EOS) for literal character",   2},
        {"'ab'",   "Expected second single quote (not 'b') for literal character",   2},
        {"'\\n",   "Expected second single quote (not EOS) for literal character",   3},
        {"'\\q'",  "Invalid escape character 'q' following backslash",               2},
        {"'\\",    "Expected escape character following backslash when reached EOS", 2},
        {"'\\x4'", "Expected hex character when read '''",                           4},
    };
    for (const FailureRow& row : rows) {
        const HeapText text(row.text);
        SubString s = text.View();
        EXPECT_EQ(LexErrorOf(text.begin(), [&s] { LsScanLiteralCharacter(s); }),
                  (LexError{row.description, row.offset}));
        EXPECT_EQ(s.m_p1 - text.begin(), row.offset) << row.text;
    }
}

TEST(ReadGivenToken, ReadsTheTokenBehindComments) {
    const HeapText text(" /* a */ =b");
    SubString s = text.View();
    ReadGivenToken(s, TOKEN_EQUAL, "Expected =");
    EXPECT_EQ(s.m_p1, text.begin() + 10);
}

TEST(ReadGivenToken, ThrowsTheDescriptionAtAnotherToken) {
    const HeapText text(" /* a */ b");
    SubString s = text.View();
    const auto read = [&s] {
        ReadGivenToken(s, TOKEN_EQUAL, "Expected =");
    };
    EXPECT_EQ(LexErrorOf(text.begin(), read), (LexError{"Expected =", 9}));
    EXPECT_EQ(s.m_p1, text.end());
    EXPECT_EQ(LexErrorOf(text.begin(), read), (LexError{"Expected =", 10}));
}

}  // namespace
}  // namespace vorn
