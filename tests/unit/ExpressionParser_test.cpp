#include "qzMacroExpander/ExpressionParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <type_traits>
#include <vector>

#include "tests/support/Literals.h"

namespace vorn_test {
namespace {

using vorn::EToken;
using vorn::ExpressionParser;
using vorn::int64;
using vorn::LSLiteral;
using vorn::SubString;
using vorn::uint64;
using vorn::xstring;
using enum vorn::EToken;

// The type and value of a text that is one expression; the error, if it raises one.
std::string Eval(std::string_view source) {
    const HeapText text(source);
    std::string result;
    const LexError error = LexErrorOf(text.begin(), [&] {
        ExpressionParser parser;
        parser.Init(text.View());
        LSLiteral literal;
        parser.ParseExpression(literal);
        result = Show(literal);
        if (parser.GetTokenType() != TOKEN_END)
            result += " in front of " + Str(parser.GetTokenString());
    });
    if (!result.empty())
        return result;
    return error.description + " at " + std::to_string(error.offset);
}

struct Example {
    const char* source;
    const char* result;
};

template <std::size_t n>
void ExpectResults(const Example (&examples)[n]) {
    for (const Example& example : examples)
        EXPECT_EQ(Eval(example.source), example.result) << example.source;
}

std::string Repeat(std::string_view part, int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += part;
    return text;
}

// ---- the precedence ladder ---------------------------------------------------------------------

TEST(ExpressionParser, IsAPlainReaderOfTokens) {
    EXPECT_FALSE(std::is_polymorphic_v<ExpressionParser>);
    EXPECT_EQ(sizeof(ExpressionParser), sizeof(vorn::ParserBase));
}

TEST(ExpressionParser, KnowsEveryOperator) {
    ExpectResults({
        {"true ? 1 : 2",  "int64 1"   },
        {"false || true", "bool true" },
        {"true && false", "bool false"},
        {"12 | 10",       "int64 14"  },
        {"12 ^ 10",       "int64 6"   },
        {"12 & 10",       "int64 8"   },
        {"1 == 1",        "bool true" },
        {"1 != 1",        "bool false"},
        {"1 < 2",         "bool true" },
        {"2 < 2",         "bool false"},
        {"2 <= 2",        "bool true" },
        {"3 <= 2",        "bool false"},
        {"2 > 1",         "bool true" },
        {"2 > 2",         "bool false"},
        {"2 >= 2",        "bool true" },
        {"2 >= 3",        "bool false"},
        {"3 << 2",        "int64 12"  },
        {"12 >> 2",       "int64 3"   },
        {"5 + 3",         "int64 8"   },
        {"'a' + 'b'",     "string ab" },
        {"5 - 3",         "int64 2"   },
        {"5 * 3",         "int64 15"  },
        {"17 / 5",        "int64 3"   },
        {"17 % 5",        "int64 2"   },
        {"2 ^^ 10",       "int64 1024"},
        {"+5",            "int64 5"   },
        {"-5",            "int64 -5"  },
        {"~5",            "int64 -6"  },
        {"!true",         "bool false"},
        {"'abc'[1]",      "char 98"   },
        {"(5)",           "int64 5"   },
    });
}

TEST(ExpressionParser, BindsEachLevelTighterThanTheOneAbove) {
    ExpectResults({
        {"false ? 1 : 2 == 2 || false", "bool true"                                                },
        {"true || true && false",       "bool true"                                                },
        {"true && false == false",      "bool true"                                                },
        {"1 | 2 ^ 2",                   "int64 1"                                                  },
        {"1 ^ 3 & 2",                   "int64 3"                                                  },
        {"1 & 2 == 2",                  "Incompatible types (int64 and bool) for & operation at 10"},
        {"true == 1 < 2",               "bool true"                                                },
        {"2 < 1 << 2",                  "bool true"                                                },
        {"1 << 2 + 1",                  "int64 8"                                                  },
        {"1 + 2 * 3",                   "int64 7"                                                  },
        {"(1 + 2) * 3",                 "int64 9"                                                  },
        {"2 * 3 ^^ 2",                  "int64 18"                                                 },
        {"-2 ^^ 2",                     "int64 4"                                                  },
        {"2 ^^ -1",                     "int64 0"                                                  },
        {"-'a'[0]",                     "Incompatible type (char) for unary - operation at 7"      },
    });
}

TEST(ExpressionParser, GroupsBinaryOperatorsToTheLeft) {
    ExpectResults({
        {"true && false || true", "bool true"                                                        },
        {"1 == 1 == true",        "bool true"                                                        },
        {"1 < 2 < 3",             "Incompatible types (bool and int64) for comparison operation at 9"},
        {"1 << 2 << 3",           "int64 32"                                                         },
        {"1 << 3 >> 2",           "int64 2"                                                          },
        {"10 - 4 - 3",            "int64 3"                                                          },
        {"100 / 10 * 5",          "int64 50"                                                         },
        {"100 / 10 / 5",          "int64 2"                                                          },
        {"17 % 10 % 4",           "int64 3"                                                          },
        {"2 ^^ 3 ^^ 2",           "int64 64"                                                         },
    });
}

TEST(ExpressionParser, CaretIsExclusiveOrAndDoubleCaretIsPower) {
    ExpectResults({
        {"1 ^ 3",  "int64 2"},
        {"1 ^^ 3", "int64 1"}
    });
}

TEST(ExpressionParser, GroupsPrefixOperatorsToTheRight) {
    ExpectResults({
        {"- -5",   "int64 5"  },
        {"-~5",    "int64 6"  },
        {"~-5",    "int64 4"  },
        {"!!true", "bool true"},
        {"+-+5",   "int64 -5" },
    });
}

TEST(ExpressionParser, TwoMinusSignsAreAShift) {
    ExpectResults({
        {"1 -- 2", "int64 4"                                   },
        {"1 - -2", "int64 3"                                   },
        {"--5",    "Unexpected -- after EOS in expression at 0"},
    });
}

TEST(ExpressionParser, ComparisonsToTheRightNameTheRightTypeFirst) {
    ExpectResults({
        {"1 < 'a'",  "Incompatible types (int64 and string) for comparison operation at 7"},
        {"1 > 'a'",  "Incompatible types (string and int64) for comparison operation at 7"},
        {"1 <= 'a'", "Incompatible types (int64 and string) for comparison operation at 8"},
        {"1 >= 'a'", "Incompatible types (string and int64) for comparison operation at 8"},
        {"1 != 'a'", "Incompatible types (int64 and string) for comparison operation at 8"},
    });
}

// ---- random expressions ------------------------------------------------------------------------

// A tree over int64 whose value is known without the parser.
struct Tree {
    int level;  // of its operator in the ladder; 16 for a number
    std::string op;
    uint64 value;
    std::unique_ptr<Tree> left;
    std::unique_ptr<Tree> right;
};

using TreePtr = std::unique_ptr<Tree>;

constexpr int s_unary = 14;
constexpr int s_primary = 16;

uint64 Compute(const std::string& op, uint64 x, uint64 y) {
    if (op == "|")
        return x | y;
    if (op == "^")
        return x ^ y;
    if (op == "&")
        return x & y;
    if (op == "<<")
        return x << (y & 63);
    if (op == ">>")
        return static_cast<uint64>(static_cast<int64>(x) >> (y & 63));
    if (op == "+")
        return x + y;
    return op == "-" ? x - y : x * y;
}

TreePtr RandomTree(std::mt19937& random, int depth) {
    constexpr std::pair<int, const char*> s_operators[] = {
        {5,  "|" },
        {6,  "^" },
        {7,  "&" },
        {10, "<<"},
        {10, ">>"},
        {11, "+" },
        {11, "-" },
        {12, "*" },
    };
    const unsigned choice = random() % 8;
    if (depth == 0 || choice == 0) {
        const uint64 number = random() % 100;
        return TreePtr(new Tree{s_primary, std::to_string(number), number, {}, {}});
    }
    if (choice == 1) {
        TreePtr operand = RandomTree(random, depth - 1);
        const bool minus = random() % 2 == 0;
        const uint64 value = minus ? 0 - operand->value : ~operand->value;
        return TreePtr(new Tree{s_unary, minus ? "-" : "~", value, {}, std::move(operand)});
    }
    TreePtr left = RandomTree(random, depth - 1);
    TreePtr right = RandomTree(random, depth - 1);
    const auto& [level, op] = s_operators[random() % std::size(s_operators)];
    const uint64 value = Compute(op, left->value, right->value);
    return TreePtr(new Tree{level, op, value, std::move(left), std::move(right)});
}

// With no bracket that the ladder makes superfluous; blanks keep two minus signs apart.
std::string Print(const Tree& tree, int loosestLevel) {
    std::string text = tree.op;
    if (tree.level == s_unary)
        text += " " + Print(*tree.right, s_unary);
    else if (tree.level != s_primary)
        text = Print(*tree.left, tree.level) + " " + tree.op + " "
               + Print(*tree.right, tree.level + 1);
    return tree.level < loosestLevel ? "(" + text + ")" : text;
}

TEST(ExpressionParser, ReadsRandomTreesPrintedWithTheFewestBrackets) {
    std::mt19937 random(1);
    for (int i = 0; i < 5000; ++i) {
        const TreePtr tree = RandomTree(random, 5);
        const std::string text = Print(*tree, 0);
        ASSERT_EQ(Eval(text), "int64 " + std::to_string(static_cast<int64>(tree->value))) << text;
    }
}

// ---- conditional -------------------------------------------------------------------------------

TEST(ExpressionParser, TheConditionalGroupsToTheRight) {
    ExpectResults({
        {"true ? 1 : 2",             "int64 1"},
        {"false ? 1 : true ? 2 : 3", "int64 2"},
        {"true ? false ? 1 : 2 : 3", "int64 2"},
        {"true ? 1 : true ? 2 : 3",  "int64 1"},
    });
}

TEST(ExpressionParser, BranchesMayDifferInType) {
    ExpectResults({
        {"true ? 1 : 2.5",  "int64 1"    },
        {"false ? 1 : 2.5", "float64 2.5"}
    });
}

TEST(ExpressionParser, NothingSkipsTheEvaluationOfAnOperand) {
    ExpectResults({
        {"true ? 1 : 1/0",    "Division by zero error at 14"                   },
        {"false ? 1/0 : 1",   "Division by zero error at 12"                   },
        {"false && 1/0 == 1", "Division by zero error at 13"                   },
        {"true || 1/0 == 1",  "Division by zero error at 12"                   },
        {"true || 5",         "bool true"                                      },
        {"false || 5",        "No implicit conversion from int64 to bool at 10"},
    });
}

TEST(ExpressionParser, TheConditionIsTestedForABoolBehindBothBranches) {
    ExpectResults({
        {"1 ? 2 : 3",   "No implicit conversion from int64 to bool at 9"},
        {"1 ? 1/0 : 3", "Division by zero error at 8"                   },
        {"1 ? 2 : 1/0", "Division by zero error at 11"                  },
    });
}

TEST(ExpressionParser, TheMiddleOfAConditionalIsAWholeExpressionAndItsEndIsNot) {
    ExpectResults({
        {"true ? 1 = 2 : 3",   "Can't assign to int64 r-value at 13"},
        {"true ? 1 : 'a' = 3", "Can't assign to int64 r-value at 18"},
    });
}

// ---- assignment --------------------------------------------------------------------------------

TEST(ExpressionParser, EveryAssignmentComputesFirstAndIsRefusedThen) {
    struct {
        const char* token;
        const char* refusal;  // of 6 OP 2, or of false OP true
        const char* error;    // of 'a' OP 1
    } const rows[] = {
        {"=",   "Can't assign to int64 r-value", "Can't assign to string r-value"   },
        {"+=",  "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for + operation"                    },
        {"-=",  "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for - operation"                    },
        {"*=",  "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for * operation"                    },
        {"/=",  "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for / operation"                    },
        {"%=",  "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for % operation"                    },
        {"&=",  "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for & operation"                    },
        {"|=",  "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for | operation"                    },
        {"^=",  "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for ^ operation"                    },
        {"<<=", "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for << operation"                   },
        {">>=", "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for >> operation"                   },
        {"&&=", "Can't assign to bool r-value",  "No conversion from string to bool"},
        {"||=", "Can't assign to bool r-value",  "No conversion from string to bool"},
        {"^^=", "Can't assign to int64 r-value",
         "Incompatible types (string and int64) for ^ operation"                    },
    };
    for (const auto& row : rows) {
        const std::string token = row.token;
        const bool logic = token == "&&=" || token == "||=";
        const std::string good = logic ? "false " + token + " true" : "6 " + token + " 2";
        const std::string bad = "'a' " + token + " 1";
        EXPECT_EQ(Eval(good), row.refusal + (" at " + std::to_string(good.size()))) << good;
        EXPECT_EQ(Eval(bad), row.error + (" at " + std::to_string(bad.size()))) << bad;
    }
}

TEST(ExpressionParser, AnAssignmentIsRefusedBehindItsComputation) {
    ExpectResults({
        {"1 = 2",     "Can't assign to int64 r-value at 5"       },
        {"1 /= 0",    "Division by zero error at 6"              },
        {"1 = 2 = 3", "Can't assign to int64 r-value at 6"       },
        {"x = 1",     "Unexpected x after EOS in expression at 0"},
        {"1 ?= 2",    "int64 1 in front of ?="                   },
    });
}

TEST(ExpressionParser, FourteenTokensAreAssignments) {
    const std::set<int> assignments = {
        TOKEN_EQUAL,           TOKEN_PLUS_EQUAL,        TOKEN_MINUS_EQUAL,
        TOKEN_ASTERISK_EQUAL,  TOKEN_SLASH_EQUAL,       TOKEN_PERCENT_EQUAL,
        TOKEN_AMPERSAND_EQUAL, TOKEN_VLINE_EQUAL,       TOKEN_CARET_EQUAL,
        TOKEN_DBL_LESS_EQUAL,  TOKEN_DBL_GREATER_EQUAL, TOKEN_DBL_AMPERSAND_EQUAL,
        TOKEN_DBL_VLINE_EQUAL, TOKEN_DBL_CARET_EQUAL,
    };
    EXPECT_FALSE(vorn::IsAssignmentToken(TOKEN_UNDEF));
    for (int token = TOKEN_END; token <= TOKEN_HASH; ++token)
        EXPECT_EQ(vorn::IsAssignmentToken(static_cast<EToken>(token)), assignments.contains(token))
            << token;
}

// ---- postfix and primary expressions -----------------------------------------------------------

TEST(ExpressionParser, ReadsEveryKindOfLiteral) {
    ExpectResults({
        {"0",                    "int64 0"                   },
        {"0123",                 "int64 123"                 },
        {"9223372036854775807",  "int64 9223372036854775807" },
        {"9223372036854775808",  "int64 -9223372036854775808"},
        {"18446744073709551616", "int64 0"                   },
        {"0xff",                 "int64 255"                 },
        {"0xFFFFFFFFFFFFFFFF",   "int64 -1"                  },
        {"0x123456789abcdef01",  "int64 2541551405711093505" },
        {"1.5",                  "float64 1.5"               },
        {"1e3",                  "float64 1000"              },
        {"1e999",                "float64 inf"               },
        {"'a'",                  "string a"                  },
        {"\"a\"",                "string a"                  },
        {"'it\\'s'",             "string it's"               },
        {"r'a\\b'",              "string a\\b"               },
        {"''",                   "string "                   },
        {"true",                 "bool true"                 },
        {"false",                "bool false"                },
    });
}

TEST(ExpressionParser, PassesOverCommentsAndWhiteSpace) {
    ExpectResults({
        {" 1\n/* and */ + // more\n\t2 // end", "int64 3"                },
        {"@/* a macro comment */ 1",
         "Unexpected @/* a macro comment */ after EOS in expression at 0"},
    });
}

TEST(ExpressionParser, IndexesStrings) {
    ExpectResults({
        {"'abc'[0]",                  "char 97"                                                    },
        {"'abc'[1 + 1]",              "char 99"                                                    },
        {"('a' + 'b')[1]",            "char 98"                                                    },
        {"'abc'['x' == 'x' ? 1 : 2]", "char 98"                                                    },
        {"'abc'[3]",                  "Index 3 out of range [0,3) on string at 7"                  },
        {"'abc'[-1]",                 "Index -1 out of range [0,3) on string at 8"                 },
        {"'abc'[1][0]",               "[] not available on char at 10"                             },
        {"5[0]",                      "[] not available on int64 at 3"                             },
        {"'abc'[1.0]",                "No implicit conversion from float64 to int64 at 9"          },
        {"'abc'[5000000000]",         "No implicit conversion from value 5000000000 to int32 at 16"},
        {"'abc'[1",                   "Expected ] after 1 when read EOS at 7"                      },
        {"'abc'[9",                   "Index 9 out of range [0,3) on string at 7"                  },
    });
}

TEST(ExpressionParser, ReportsEverySyntaxErrorAtItsToken) {
    ExpectResults({
        {"",             "Unexpected EOS after EOS in expression at 0"      },
        {"  ",           "Unexpected EOS after EOS in expression at 2"      },
        {"1 +",          "Unexpected EOS after + in expression at 3"        },
        {"1 + * 2",      "Unexpected * after + in expression at 4"          },
        {"+ ]",          "Unexpected ] after + in expression at 2"          },
        {"++1",          "Unexpected ++ after EOS in expression at 0"       },
        {"@",            "Unexpected @ after EOS in expression at 0"        },
        {"name",         "Unexpected name after EOS in expression at 0"     },
        {"1 + name",     "Unexpected name after + in expression at 4"       },
        {"True",         "Unexpected True after EOS in expression at 0"     },
        {"()",           "Unexpected ) after ( in expression at 1"          },
        {"(1",           "Expected ) after 1 when read EOS at 2"            },
        {"(1 2)",        "Expected ) after 1 when read 2 at 3"              },
        {"true ? 1",     "Expected : after 1 when read EOS at 8"            },
        {"true ? 1 ; 2", "Expected : after 1 when read ; at 9"              },
        {"len",          "Expected ( after len when read EOS at 3"          },
        {"len 'a'",      "Expected ( after len when read 'a' at 4"          },
        {"len('a'",      "Expected ) after 'a' when read EOS at 7"          },
        {"sin 1",        "Expected ( after sin when read 1 at 4"            },
        {"sin(1",        "Expected ) after 1 when read EOS at 5"            },
        {"5(1)",         "Function application currently not supported at 2"},
        {"5(",           "Function application currently not supported at 2"},
        {"'abc'[0](1)",  "Function application currently not supported at 9"},
        {"f(1)",         "Unexpected f after EOS in expression at 0"        },
        {"(1).x",        "Dot operator currently not supported at 4"        },
        {"'a' . b",      "Dot operator currently not supported at 6"        },
        {"1 2",          "int64 1 in front of 2"                            },
        {"1)",           "int64 1 in front of )"                            },
    });
}

TEST(ExpressionParser, ErrorsOfTheScannerPassThrough) {
    ExpectResults({
        {"0x",       "Expected hex digit (not EOS) after 0x at 2"                 },
        {"1 + 'abc", "Met EOS within single quoted string after reading 'abc at 8"},
        {"1 \x80",   "Bad token \x80 at 2"                                        },
    });
}

TEST(ExpressionParser, ErrorsHaveNoPathAndNoLine) {
    ExpressionParser parser;
    parser.Init("1 / 0");
    LSLiteral literal;
    try {
        parser.ParseExpression(literal);
        FAIL() << "no error";
    } catch (const vorn::LexScannerException& e) {
        EXPECT_EQ(e.m_path, "");
        EXPECT_EQ(e.m_lineNumber, -1);
    }
}

TEST(ExpressionParser, MessagesNameATokenStoredInFrontOfTheText) {
    const HeapText text("x");
    ExpressionParser parser;
    parser.m_token = vorn::LSToken(TOKEN_LEFT_PAREN, "(");
    parser.Init(text.View());
    LSLiteral literal;
    EXPECT_EQ(LexErrorOf(text.begin(), [&] { parser.ParseExpression(literal); }),
              (LexError{"Unexpected x after ( in expression", 0}));
}

// ---- the position of evaluation errors ---------------------------------------------------------

TEST(ExpressionParser, EvaluationErrorsLieBehindTheRightOperand) {
    ExpectResults({
        {"1/0",            "Division by zero error at 3"                                },
        {"1/0 + 2",        "Division by zero error at 4"                                },
        {"1.0/0 + 2",      "Division by zero at 6"                                      },
        {"1%0",            "Modulo zero error at 3"                                     },
        {"0 ^^ -1 * 2",    "Calculation 0 ^^ -1 ill defined at 8"                       },
        {"(1/0)",          "Division by zero error at 4"                                },
        {"'abc'[1/0]",     "Division by zero error at 9"                                },
        {"true ? 1/0 : 2", "Division by zero error at 11"                               },
        {"len(1/0) + 1",   "Division by zero error at 7"                                },
        {"sin(1/0) + 1",   "Division by zero error at 7"                                },
        {"1 + true",       "Incompatible types (int64 and bool) for + operation at 8"   },
        {"+'a'",           "Incompatible type (string) for unary + operation at 4"      },
        {"!5",             "No implicit conversion from int64 to bool at 2"             },
        {"5.5 % 2",        "Incompatible types (float64 and int64) for % operation at 7"},
    });
}

TEST(ExpressionParser, UnsafeParseExpressionLetsEvaluationErrorsPass) {
    ExpressionParser parser;
    parser.Init("1/0");
    LSLiteral literal;
    EXPECT_EQ(LiteralErrorOf([&] { parser.UnsafeParseExpression(literal); }),
              "Division by zero error");
}

TEST(ExpressionParser, AMessageEndsAtItsFirstZeroByte) {
    ExpectResults({
        {"char('a\\0b')", "No implicit conversion from value a at 12"}
    });
}

// ---- built-in names ----------------------------------------------------------------------------

TEST(ExpressionParser, LenCountsDecodedBytes) {
    ExpectResults({
        {"len('')",        "int64 0"                          },
        {"len('abc')",     "int64 3"                          },
        {"len('a\\n\\'')", "int64 3"                          },
        {"len(r'a\\n')",   "int64 3"                          },
        {"len(5)",         "len() not available on int64 at 6"},
        {"len('a'[0])",    "len() not available on char at 11"},
    });
}

TEST(ExpressionParser, TellsTypes) {
    struct {
        const char* value;
        const char* name;  // the one question that is answered by true
    } const rows[] = {
        {"true",     "is_bool"  },
        {"'a'[0]",   "is_char"  },
        {"1 + 1",    "is_int"   },
        {"1.0",      "is_double"},
        {"'a'",      "is_string"},
        {"\"a\"",    "is_string"},
        {"char(65)", "is_char"  },
    };
    for (const auto& row : rows) {
        for (const char* name : {"is_bool", "is_char", "is_int", "is_double", "is_string"}) {
            const std::string text = std::string(name) + "(" + row.value + ")";
            EXPECT_EQ(Eval(text), std::strcmp(name, row.name) == 0 ? "bool true" : "bool false")
                << text;
        }
    }
}

TEST(ExpressionParser, ConvertsByName) {
    ExpectResults({
        {"bool(0)",                 "bool false"                                        },
        {"bool(2)",                 "bool true"                                         },
        {"bool(0.0)",               "bool false"                                        },
        {"bool(true)",              "bool true"                                         },
        {"bool('a')",               "No conversion from string to bool at 9"            },
        {"char(65)",                "char 65"                                           },
        {"char(321)",               "char 65"                                           },
        {"char('a')",               "char 97"                                           },
        {"char('ab')",              "No implicit conversion from value ab to char at 10"},
        {"char('')",                "No implicit conversion from value  to char at 8"   },
        {"char(1.0)",               "No conversion from float64 to char at 9"           },
        {"int(3.9)",                "int64 3"                                           },
        {"int(-3.9)",               "int64 -3"                                          },
        {"int(true)",               "int64 1"                                           },
        {"int('a'[0])",             "int64 97"                                          },
        {"int('5')",                "No conversion from string to int64 at 8"           },
        {"int(1e300)",              "int64 -9223372036854775808"                        },
        {"double(2)",               "float64 2"                                         },
        {"double(true)",            "float64 1"                                         },
        {"double('a'[0])",          "No conversion from char to float64 at 14"          },
        {"string(1.5)",             "string 1.5"                                        },
        {"string(2.0)",             "string 2.0"                                        },
        {"string(-7)",              "string -7"                                         },
        {"string(true)",            "string true"                                       },
        {"string('a'[0])",          "string a"                                          },
        {"string('a') + string(1)", "string a1"                                         },
    });
}

TEST(ExpressionParser, ComputesFunctionsOfNumbers) {
    ExpectResults({
        {"sin(0)",         "float64 0"                                       },
        {"cos(0)",         "float64 1"                                       },
        {"tan(0)",         "float64 0"                                       },
        {"exp(0)",         "float64 1"                                       },
        {"log(1)",         "float64 0"                                       },
        {"sin(0.5)",       "float64 0.47942553860420301"                     },
        {"cos(0.5)",       "float64 0.87758256189037276"                     },
        {"tan(0.5)",       "float64 0.54630248984379048"                     },
        {"exp(0.5)",       "float64 1.6487212707001282"                      },
        {"log(0.5)",       "float64 -0.69314718055994529"                    },
        {"sin(1 - 1) + 1", "float64 1"                                       },
        {"sin(true)",      "No implicit conversion from bool to float64 at 8"},
        {"sin('a')",       "No conversion from string to float64 at 7"       },
    });
}

TEST(ExpressionParser, RefusesTheLogarithmOfWhatIsNotPositive) {
    ExpectResults({
        {"log(0)",                    "Can't take log of value 0 at 6" },
        {"log(-1) + 2",               "Can't take log of value -1 at 8"},
        {"log(-0.0)",                 "Can't take log of value -0 at 9"},
        {"is_double(log(-1 ^^ 0.5))", "bool true"                      },
    });
    EXPECT_TRUE(Eval("log((-1) ^^ 0.5)").ends_with("nan"));
}

TEST(ExpressionParser, KnowsNoFileAndNoLine) {
    ExpectResults({
        {"__FILE__",     "string "},
        {"__LINE__",     "int64 0"},
        {"__LINE__ + 1", "int64 1"}
    });
    const ExpressionParser parser;
    xstring filename("before");
    vorn::ssize_t lineNumber = 7;
    EXPECT_FALSE(parser.GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber));
    EXPECT_EQ(filename, "before");
    EXPECT_EQ(lineNumber, 7);
}

// ---- typed entry points ------------------------------------------------------------------------

// What a typed entry point makes of a text.
template <class T>
std::string Parse(T (ExpressionParser::*parse)(bool), bool allowDataLoss, const char* source) {
    const HeapText text(source);
    std::string result;
    const LexError error = LexErrorOf(text.begin(), [&] {
        ExpressionParser parser;
        parser.Init(text.View());
        result = "= " + ShowValue((parser.*parse)(allowDataLoss));
    });
    return result.empty() ? error.description + " at " + std::to_string(error.offset) : result;
}

struct EntryPointRow {
    const char* source;
    const char* implicit;  // with allowDataLoss false
    const char* cast;      // with allowDataLoss true
};

template <class T, std::size_t n>
void ExpectEntryPoint(T (ExpressionParser::*parse)(bool), const EntryPointRow (&rows)[n]) {
    for (const EntryPointRow& row : rows) {
        EXPECT_EQ(Parse(parse, false, row.source), row.implicit) << row.source;
        EXPECT_EQ(Parse(parse, true, row.source), row.cast) << row.source;
    }
}

TEST(ExpressionParser, ParseBoolTakesNumbersAsACastOnly) {
    ExpectEntryPoint(&ExpressionParser::ParseBool,
                     {
                         {"1",             "No implicit conversion from int64 to bool at 1",   "= true"                     },
                         {"0.0",           "No implicit conversion from float64 to bool at 3", "= false"                    },
                         {"true && false", "= false",                                          "= false"                    },
                         {"'true'",        "No conversion from string to bool at 6",
                          "No conversion from string to bool at 6"                                                          },
                         {"1/0",           "Division by zero error at 3",                      "Division by zero error at 3"},
    });
}

TEST(ExpressionParser, ParseIntegersOfEachWidth) {
    using P = ExpressionParser;
    const auto outOfRange = [](const char* value, const char* type, std::size_t offset) {
        return std::string("No implicit conversion from value ") + value + " to " + type + " at "
               + std::to_string(offset);
    };
    const auto check = [&](auto parse, const char* type, const char* good, const char* bad,
                           const char* wrapped) {
        SCOPED_TRACE(type);
        EXPECT_EQ(Parse(parse, false, good), std::string("= ") + good);
        EXPECT_EQ(Parse(parse, true, good), std::string("= ") + good);
        EXPECT_EQ(Parse(parse, false, bad), outOfRange(bad, type, std::strlen(bad)));
        EXPECT_EQ(Parse(parse, true, bad), std::string("= ") + wrapped);
        EXPECT_EQ(Parse(parse, true, "true"), "= 1");
        EXPECT_EQ(Parse(parse, false, "1.5"), "No implicit conversion from float64 to int64 at 3");
        EXPECT_EQ(Parse(parse, true, "'5'"), "No conversion from string to int64 at 3");
    };
    check(&P::ParseInt8, "int8", "-128", "300", "44");
    check(&P::ParseInt16, "int16", "-32768", "32768", "-32768");
    check(&P::ParseInt32, "int32", "-2147483648", "5000000000", "705032704");
    check(&P::ParseUInt8, "uint8", "255", "-1", "255");
    check(&P::ParseUInt16, "uint16", "65535", "65536", "0");
    check(&P::ParseUInt32, "uint32", "4294967295", "4294967296", "0");
}

TEST(ExpressionParser, Parse64BitIntegersWithoutARange) {
    ExpectEntryPoint(
        &ExpressionParser::ParseInt64,
        {
            {"-9223372036854775808", "= -9223372036854775808",                            "= -9223372036854775808"},
            {"1.5",                  "No implicit conversion from float64 to int64 at 3", "= 1"                   },
            {"'a'",                  "No conversion from string to int64 at 3",
             "No conversion from string to int64 at 3"                                                            },
    });
    ExpectEntryPoint(&ExpressionParser::ParseUInt64,
                     {
                         {"-1",  "= 18446744073709551615",                            "= 18446744073709551615"},
                         {"1.5", "No implicit conversion from float64 to int64 at 3", "= 1"                   },
    });
}

TEST(ExpressionParser, ParseFloatsTakesIntegers) {
    ExpectEntryPoint(&ExpressionParser::ParseFloat64,
                     {
                         {"1",    "= 1",                                              "= 1"  },
                         {"1.5",  "= 1.5",                                            "= 1.5"},
                         {"true", "No implicit conversion from bool to float64 at 4", "= 1"  },
                         {"'a'",  "No conversion from string to float64 at 3",
                          "No conversion from string to float64 at 3"                        },
    });
    ExpectEntryPoint(&ExpressionParser::ParseFloat32,
                     {
                         {"16777217", "= 16777216",                                       "= 16777216"},
                         {"1e300",    "= inf",                                            "= inf"     },
                         {"true",     "No implicit conversion from bool to float32 at 4", "= 1"       },
    });
}

TEST(ExpressionParser, ParseCharTakesAStringOfOneByteWhateverTheFlag) {
    ExpectEntryPoint(&ExpressionParser::ParseChar,
                     {
                         {"'a'",      "= 97",                                               "= 97"},
                         {"\"\\n\"",  "= 10",                                               "= 10"},
                         {"'abc'[1]", "= 98",                                               "= 98"},
                         {"65",       "= 65",                                               "= 65"},
                         {"300",      "No implicit conversion from value 300 to char at 3", "= 44"},
                         {"''",       "No implicit conversion from value  to char at 2",
                          "No implicit conversion from value  to char at 2"                       },
                         {"'ab'",     "No implicit conversion from value ab to char at 4",
                          "No implicit conversion from value ab to char at 4"                     },
                         {"true",     "No conversion from bool to char at 4",
                          "No conversion from bool to char at 4"                                  },
    });
}

TEST(ExpressionParser, ParseStringTakesNumbersAsACastOnly) {
    ExpectEntryPoint(&ExpressionParser::ParseString,
                     {
                         {"'abc'",    "= abc",                                              "= abc" },
                         {"'abc'[1]", "= b",                                                "= b"   },
                         {"7",        "No implicit conversion from int64 to string at 1",   "= 7"   },
                         {"0.1",      "No implicit conversion from float64 to string at 3", "= 0.1" },
                         {"true",     "No implicit conversion from bool to string at 4",    "= true"},
    });
}

TEST(ExpressionParser, TheTokenBehindTheExpressionStaysCurrent) {
    ExpressionParser parser;
    parser.Init("true false");
    EXPECT_TRUE(parser.ParseBool(false));
    EXPECT_EQ(parser.GetToken(), vorn::LSToken(TOKEN_IDENTIFIER, "false"));
    EXPECT_FALSE(parser.ParseBool(false));
    EXPECT_EQ(parser.GetTokenType(), TOKEN_END);
}

TEST(ExpressionParser, ParseFloat64ArgReadsANameAndItsBracket) {
    const auto read = [](const char* source) {
        const HeapText text(source);
        std::string result;
        const LexError error = LexErrorOf(text.begin(), [&] {
            ExpressionParser parser;
            parser.Init(text.View());
            result = ShowValue(parser.ParseFloat64Arg()) + " in front of ";
            result += Str(parser.GetTokenString());
        });
        return result.empty() ? error.description + " at " + std::to_string(error.offset) : result;
    };
    EXPECT_EQ(read("name(1 + 1) rest"), "2 in front of rest");
    EXPECT_EQ(read("name 1"), "Expected ( after name when read 1 at 5");
    EXPECT_EQ(read("name(1]"), "Expected ) after 1 when read ] at 6");
    EXPECT_EQ(read("name(true)"), "No implicit conversion from bool to float64 at 9");
}

// ---- texts of values read back -----------------------------------------------------------------

// The bits of a number that the text of value, behind its sign, is scanned as.
uint64 ReadBack(const xstring& text, bool negative) {
    SubString s(text);
    if (negative)
        s += 1;
    const SubString number = s;
    EXPECT_EQ(vorn::LsScanNumber(s), TOKEN_FLOAT) << Str(text);
    EXPECT_TRUE(s.empty()) << Str(text);
    const double magnitude = vorn::LSToken(TOKEN_FLOAT, number).GetLiteralDouble();
    return std::bit_cast<uint64>(negative ? -magnitude : magnitude);
}

TEST(ExpressionParser, TheTextOfAFloatIsAFloatTokenThatReadsBackTheSameDouble) {
    std::mt19937_64 random(1);
    int finite = 0;
    for (int i = 0; i < 1000000; ++i) {
        const uint64 bits = random();
        const double value = std::bit_cast<double>(bits);
        if (!std::isfinite(value))
            continue;
        ++finite;
        ASSERT_EQ(ReadBack(LSLiteral(value).AsString(true), std::signbit(value)), bits) << value;
    }
    EXPECT_GT(finite, 990000);
}

TEST(ExpressionParser, TheTextOfAnOrdinaryFloatReadsBackAsAnExpression) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i) {
        // Decimal fractions of all magnitudes around those that are written without an exponent.
        const double digits = static_cast<double>(random() % 1000000) - 500000;
        const double value = digits * std::pow(10.0, static_cast<double>(random() % 40) - 20);
        const xstring text = LSLiteral(value).AsString(true);
        ASSERT_EQ(Eval(Str(text)), Show(value)) << Str(text);
    }
    for (const double value : {0.0, -0.0, 5e-324, 1.7976931348623157e308, 1e16, 1e-4, 9.999e15})
        EXPECT_EQ(Eval(Str(LSLiteral(value).AsString(true))), Show(value));
}

TEST(ExpressionParser, TheTextOfAnIntReadsBack) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i) {
        const LSLiteral value = static_cast<int64>(random()) >> (random() % 64);
        ASSERT_EQ(Eval(Str(value.AsString(true))), Show(value));
    }
    for (const int64 value : {s_lowest, s_highest, int64{0}, int64{-1}})
        EXPECT_EQ(Eval(Str(LSLiteral(value).AsString(true))), Show(value));
}

// ---- depth and length --------------------------------------------------------------------------

TEST(ExpressionParser, TenThousandBracketsNest) {
    constexpr int s_depth = 10000;
    const std::string open = Repeat("(", s_depth);
    const std::string close = Repeat(")", s_depth);
    EXPECT_EQ(Eval(open + "7" + close), "int64 7");
    EXPECT_EQ(Eval(open + "1/0" + close),
              "Division by zero error at " + std::to_string(s_depth + 3));
    EXPECT_EQ(Eval(open + "7"),
              "Expected ) after 7 when read EOS at " + std::to_string(s_depth + 1));
}

TEST(ExpressionParser, ManyPrefixOperatorsAndBranchesNest) {
    EXPECT_EQ(Eval(Repeat("!", 10000) + "true"), "bool true");
    EXPECT_EQ(Eval(Repeat("false ? 1 : ", 10000) + "2"), "int64 2");
}

TEST(ExpressionParser, ChainsOfAnyLengthAreLoops) {
    EXPECT_EQ(Eval("1" + Repeat(" + 1", 199999)), "int64 200000");
    EXPECT_EQ(Eval("len('ab'" + Repeat(" + 'ab'", 99999) + ")"), "int64 200000");
}

}  // namespace
}  // namespace vorn_test
