#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "qzMacroExpander/LSLiteral.h"
#include "tests/support/Literals.h"

namespace vorn_test {
namespace {

using vorn::ELiteral;
using vorn::int64;
using vorn::IsEqual;
using vorn::IsLess;
using vorn::IsLessThanOrEqual;
using vorn::LSLiteral;
using vorn::Power;
using vorn::uint64;
using enum vorn::ELiteral;

using Binary = LSLiteral (*)(const LSLiteral&, const LSLiteral&);
using Unary = LSLiteral (*)(const LSLiteral&);

// ---- every operator on every pair of types -----------------------------------------------------

// One or more values of each type, among them an int64 that is no byte.
struct Sample {
    LSLiteral value;
    int type;  // the row and column in the tables below
};

const std::vector<Sample>& Samples() {
    static const std::vector<Sample> s_samples = {
        {LSLiteral(),  0},
        {Void(),       1},
        {true,         2},
        {false,        2},
        {5,            3},
        {300,          4},
        {-1,           4},
        {2.5,          5},
        {-0.5,         5},
        {Char('A'),    6},
        {Char(200),    6},
        {String(""),   7},
        {String("A"),  7},
        {String("ab"), 7},
    };
    return s_samples;
}

// A row for each type of x, a column for each type of y. The letter is the type of the result, or
// - for a type error.
using Results = const char* [8];

// clang-format off
//                             y: undef, void, bool, byte, int, float, char, string
constexpr Results s_addition = {"--------",  // undef
                                "--------",  // void
                                "--------",  // bool
                                "---iif--",  // int64 in 0 to 255
                                "---iif--",  // any other int64
                                "---fff--",  // float64
                                "------ss",  // char
                                "------ss"}; // string
constexpr Results s_arithmetic = {"--------",
                                  "--------",
                                  "--------",
                                  "---iif--",
                                  "---iif--",
                                  "---fff--",
                                  "--------",
                                  "--------"};
constexpr Results s_integral = {"--------",
                                "--------",
                                "--------",
                                "---ii---",
                                "---ii---",
                                "--------",
                                "--------",
                                "--------"};
constexpr Results s_order = {"--------",
                             "--------",
                             "--------",
                             "---bbb--",
                             "---bbb--",
                             "---bbb--",
                             "------bb",
                             "------bb"};
constexpr Results s_equality = {"--------",
                                "--------",
                                "--b-----",
                                "---bbbb-",
                                "---bbb--",
                                "---bbb--",
                                "---b--bb",
                                "------bb"};

struct BinaryRow {
    const char* name;  // in type errors
    Binary operation;
    const Results& results;
};

constexpr BinaryRow s_binaryOperators[] = {
    {"+",          vorn::operator+,  s_addition},
    {"-",          vorn::operator-,  s_arithmetic},
    {"*",          vorn::operator*,  s_arithmetic},
    {"/",          vorn::operator/,  s_arithmetic},
    {"%",          vorn::operator%,  s_integral},
    {"<<",         vorn::operator<<, s_integral},
    {">>",         vorn::operator>>, s_integral},
    {"|",          vorn::operator|,  s_integral},
    {"&",          vorn::operator&,  s_integral},
    {"^",          vorn::operator^,  s_integral},
    {"^",          Power,            s_arithmetic},
    {"comparison", [](const LSLiteral& x, const LSLiteral& y) { return LSLiteral(IsLess(x, y)); }, s_order},
    {"comparison", [](const LSLiteral& x, const LSLiteral& y) { return LSLiteral(IsLessThanOrEqual(x, y)); }, s_order},
    {"comparison", [](const LSLiteral& x, const LSLiteral& y) { return LSLiteral(IsEqual(x, y)); }, s_equality},
};
// clang-format on

ELiteral TypeOf(char letter) {
    switch (letter) {
    case 'i':
        return LITERAL_INT64;
    case 'f':
        return LITERAL_FLOAT64;
    case 's':
        return LITERAL_STRING;
    default:
        return LITERAL_BOOL;
    }
}

TEST(LSLiteralOperators, BinaryOperatorsGiveTheResultTypeOfThePairOrATypeError) {
    for (const BinaryRow& row : s_binaryOperators) {
        for (const Sample& x : Samples()) {
            for (const Sample& y : Samples()) {
                SCOPED_TRACE(Show(x.value) + " " + row.name + " " + Show(y.value));
                const char letter = row.results[x.type][y.type];
                if (letter == '-') {
                    EXPECT_EQ(LiteralErrorOf([&] { row.operation(x.value, y.value); }),
                              std::string("Incompatible types (")
                                  + vorn::TypeToString(x.value.m_type) + " and "
                                  + vorn::TypeToString(y.value.m_type) + ") for " + row.name
                                  + " operation");
                } else {
                    EXPECT_EQ(row.operation(x.value, y.value).m_type, TypeOf(letter));
                }
            }
        }
    }
}

// The error of an operand that should be a bool.
std::string NoBool(const LSLiteral& x) {
    if (x == LITERAL_UNDEF)
        return "Expected bool";
    const bool number = x == LITERAL_INT64 || x == LITERAL_FLOAT64;
    return std::string(number ? "No implicit conversion from " : "No conversion from ")
           + vorn::TypeToString(x.m_type) + " to bool";
}

TEST(LSLiteralOperators, LogicTakesBoolsAndLooksAtTheSecondOnlyIfTheFirstDoesNotDecide) {
    for (const bool deciding : {true, false}) {
        const Binary operation = deciding ? vorn::operator|| : vorn::operator&&;
        for (const Sample& x : Samples()) {
            for (const Sample& y : Samples()) {
                SCOPED_TRACE(Show(x.value) + (deciding ? " || " : " && ") + Show(y.value));
                const auto result = [&] {
                    return operation(x.value, y.value);
                };
                if (x.value != LITERAL_BOOL)
                    EXPECT_EQ(LiteralErrorOf(result), NoBool(x.value));
                else if (x.value.m_bool == deciding)
                    EXPECT_EQ(Show(result()), Show(deciding));
                else if (y.value != LITERAL_BOOL)
                    EXPECT_EQ(LiteralErrorOf(result), NoBool(y.value));
                else
                    EXPECT_EQ(Show(result()), Show(y.value));
            }
        }
    }
}

TEST(LSLiteralOperators, UnaryOperatorsGiveTheTypeOfTheirOperandOrATypeError) {
    struct {
        const char* name;
        Unary operation;
        const char* results;  // by the type of x, as in the tables above
    } const rows[] = {
        {"+", vorn::operator+, "---iif--"},
        {"-", vorn::operator-, "---iif--"},
        {"~", vorn::operator~, "---ii---"},
    };
    for (const auto& row : rows) {
        for (const Sample& x : Samples()) {
            SCOPED_TRACE(row.name + Show(x.value));
            if (row.results[x.type] == '-')
                EXPECT_EQ(LiteralErrorOf([&] { row.operation(x.value); }),
                          std::string("Incompatible type (") + vorn::TypeToString(x.value.m_type)
                              + ") for unary " + row.name + " operation");
            else
                EXPECT_EQ(row.operation(x.value).m_type, TypeOf(row.results[x.type]));
        }
    }
}

TEST(LSLiteralOperators, NotTakesBoolsOnly) {
    for (const Sample& x : Samples()) {
        SCOPED_TRACE(Show(x.value));
        if (x.value == LITERAL_BOOL)
            EXPECT_EQ(!x.value, !x.value.m_bool);
        else
            EXPECT_EQ(LiteralErrorOf([&] { !x.value; }), NoBool(x.value));
    }
}

TEST(LSLiteralOperators, TheStrictComparisonConvertsNothingAndNeverRaises) {
    const std::vector<Sample>& samples = Samples();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        for (std::size_t j = 0; j < samples.size(); ++j)
            EXPECT_EQ(samples[i].value == samples[j].value, i == j)
                << Show(samples[i].value) << " == " << Show(samples[j].value);
    }
    EXPECT_FALSE(LSLiteral(s_nan) == LSLiteral(s_nan));
    EXPECT_TRUE(LSLiteral(0.0) == LSLiteral(-0.0));
    EXPECT_FALSE(LSLiteral(1) == LSLiteral(1.0));
    EXPECT_FALSE(Char('A') == String("A"));
}

TEST(LSLiteralOperators, OperandsSurviveUnchanged) {
    for (const BinaryRow& row : s_binaryOperators) {
        for (const Sample& sample : Samples()) {
            const LSLiteral x = sample.value;
            const LSLiteral y = sample.value;
            LiteralErrorOf([&] { row.operation(x, y); });
            EXPECT_EQ(Show(x), Show(sample.value));
            EXPECT_EQ(Show(y), Show(sample.value));
        }
    }
}

// ---- values ------------------------------------------------------------------------------------

TEST(LSLiteralOperators, TextIsJoined) {
    EXPECT_EQ(Show(String("abc")[0] + String("xyz")), "string axyz");
    EXPECT_EQ(Show(String("xyz") + Char('a')), "string xyza");
    EXPECT_EQ(Show(String("ab") + String("")), "string ab");
    EXPECT_EQ(Show(String("") + String("")), "string ");
}

TEST(LSLiteralOperators, TwoCharsAddedAreAStringOfTwoBytes) {
    EXPECT_EQ(Show(Char('a') + Char('b')), "string ab");
}

TEST(LSLiteralOperators, AStringIsNotJoinedToANumber) {
    EXPECT_EQ(LiteralErrorOf([] { String("a") + LSLiteral(1); }),
              "Incompatible types (string and int64) for + operation");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(1) + LSLiteral(true); }),
              "Incompatible types (int64 and bool) for + operation");
}

TEST(LSLiteralOperators, DivisionTruncatesIntsTowardZeroAndMixedOperandsAreFloats) {
    EXPECT_EQ(Show(LSLiteral(7) / LSLiteral(2)), "int64 3");
    EXPECT_EQ(Show(LSLiteral(7) / LSLiteral(2.0)), "float64 3.5");
    EXPECT_EQ(Show(LSLiteral(-7) / LSLiteral(2)), "int64 -3");
    EXPECT_EQ(Show(LSLiteral(7) / LSLiteral(-2)), "int64 -3");
    EXPECT_EQ(Show(LSLiteral(-7) % LSLiteral(2)), "int64 -1");
    EXPECT_EQ(Show(LSLiteral(7) % LSLiteral(-2)), "int64 1");
}

TEST(LSLiteralOperators, DivisionByZeroSaysByItsWordingWhetherItWasOfInts) {
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(1) / LSLiteral(0); }), "Division by zero error");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(1.0) / LSLiteral(0); }), "Division by zero");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(1) / LSLiteral(0.0); }), "Division by zero");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(1) / LSLiteral(-0.0); }), "Division by zero");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(1) % LSLiteral(0); }), "Modulo zero error");
    EXPECT_EQ(Show(LSLiteral(1) / LSLiteral(s_nan)), "float64 nan");
}

TEST(LSLiteralOperators, RemaindersOfFloatsAreATypeError) {
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(5.5) % LSLiteral(2); }),
              "Incompatible types (float64 and int64) for % operation");
}

TEST(LSLiteralOperators, TheLowestInt64ByMinusOneWraps) {
    EXPECT_EQ(Show(LSLiteral(s_lowest) / LSLiteral(-1)), "int64 -9223372036854775808");
    EXPECT_EQ(Show(LSLiteral(s_lowest) % LSLiteral(-1)), "int64 0");
    EXPECT_EQ(Show(-LSLiteral(s_lowest)), "int64 -9223372036854775808");
    EXPECT_EQ(Show(LSLiteral(s_lowest) * LSLiteral(-1)), "int64 -9223372036854775808");
    EXPECT_EQ(Show(LSLiteral(7) / LSLiteral(-1)), "int64 -7");
    EXPECT_EQ(Show(LSLiteral(s_highest) % LSLiteral(-1)), "int64 0");
}

TEST(LSLiteralOperators, IntegerArithmeticWraps) {
    EXPECT_EQ(Show(LSLiteral(s_highest) + LSLiteral(1)), "int64 -9223372036854775808");
    EXPECT_EQ(Show(LSLiteral(s_lowest) - LSLiteral(1)), "int64 9223372036854775807");
    EXPECT_EQ(Show(LSLiteral(s_highest) * LSLiteral(2)), "int64 -2");
    EXPECT_EQ(Show(LSLiteral(s_lowest) * LSLiteral(s_lowest)), "int64 0");
}

TEST(LSLiteralOperators, IntegerArithmeticAgreesWithTheMachineOnRandomBits) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 100000; ++i) {
        // A shift by a random count makes small numbers as likely as large ones.
        const auto a = static_cast<int64>(random()) >> (random() % 64);
        const auto b = static_cast<int64>(random()) >> (random() % 64);
        int64 expected = 0;
        (void)__builtin_add_overflow(a, b, &expected);
        ASSERT_EQ((LSLiteral(a) + LSLiteral(b)).m_int64, expected) << a << " + " << b;
        (void)__builtin_sub_overflow(a, b, &expected);
        ASSERT_EQ((LSLiteral(a) - LSLiteral(b)).m_int64, expected) << a << " - " << b;
        (void)__builtin_mul_overflow(a, b, &expected);
        ASSERT_EQ((LSLiteral(a) * LSLiteral(b)).m_int64, expected) << a << " * " << b;
        (void)__builtin_sub_overflow(int64{0}, a, &expected);
        ASSERT_EQ((-LSLiteral(a)).m_int64, expected) << "-" << a;
        if (b == 0)
            continue;
        const int64 quotient = (LSLiteral(a) / LSLiteral(b)).m_int64;
        const int64 remainder = (LSLiteral(a) % LSLiteral(b)).m_int64;
        ASSERT_EQ(LSLiteral(quotient) * LSLiteral(b) + LSLiteral(remainder), LSLiteral(a))
            << a << " / " << b;
        ASSERT_LT(std::fabs(static_cast<double>(remainder)), std::fabs(static_cast<double>(b)));
        ASSERT_TRUE(remainder == 0 || (remainder < 0) == (a < 0)) << a << " % " << b;
    }
}

TEST(LSLiteralOperators, ShiftsTakeTheirCountModulo64) {
    EXPECT_EQ(Show(LSLiteral(1) << LSLiteral(4)), "int64 16");
    EXPECT_EQ(Show(LSLiteral(1) << LSLiteral(64)), "int64 1");
    EXPECT_EQ(Show(LSLiteral(1) << LSLiteral(65)), "int64 2");
    EXPECT_EQ(Show(LSLiteral(1) << LSLiteral(-1)), "int64 -9223372036854775808");
    EXPECT_EQ(Show(LSLiteral(-1) << LSLiteral(63)), "int64 -9223372036854775808");
    EXPECT_EQ(Show(LSLiteral(-8) >> LSLiteral(1)), "int64 -4");
    EXPECT_EQ(Show(LSLiteral(-8) >> LSLiteral(63)), "int64 -1");
    EXPECT_EQ(Show(LSLiteral(8) >> LSLiteral(-63)), "int64 4");
    EXPECT_EQ(Show(LSLiteral(s_lowest) >> LSLiteral(s_lowest)), "int64 -9223372036854775808");
}

TEST(LSLiteralOperators, BitwiseOperatorsWorkOnAll64Bits) {
    EXPECT_EQ(Show(LSLiteral(12) | LSLiteral(10)), "int64 14");
    EXPECT_EQ(Show(LSLiteral(12) & LSLiteral(10)), "int64 8");
    EXPECT_EQ(Show(LSLiteral(12) ^ LSLiteral(10)), "int64 6");
    EXPECT_EQ(Show(LSLiteral(-1) & LSLiteral(s_lowest)), "int64 -9223372036854775808");
    EXPECT_EQ(Show(~LSLiteral(0)), "int64 -1");
    EXPECT_EQ(Show(~LSLiteral(s_lowest)), "int64 9223372036854775807");
}

TEST(LSLiteralOperators, APowerOfTwoIntsIsAnIntAndAnyOtherAFloat) {
    EXPECT_EQ(Show(Power(2, 3)), "int64 8");
    EXPECT_EQ(Show(Power(2, 2)), "int64 4");
    EXPECT_EQ(Show(Power(2, -1)), "int64 0");
    EXPECT_EQ(Show(Power(-2, 3)), "int64 -8");
    EXPECT_EQ(Show(Power(0, 0)), "int64 1");
    EXPECT_EQ(Show(Power(2.0, 2)), "float64 4");
    EXPECT_EQ(Show(Power(4, 0.5)), "float64 2");
    EXPECT_EQ(Show(Power(2, 0.5)), "float64 1.4142135623730951");
    EXPECT_EQ(std::isnan(Power(-1.0, 0.5).m_float64), true);
}

TEST(LSLiteralOperators, APowerOfTwoIntsGoesThroughADouble) {
    EXPECT_EQ(Show(Power(3, 35)), "int64 50031545098999704");  // of 50031545098999707
    EXPECT_EQ(Show(Power(2, 62)), "int64 4611686018427387904");
    EXPECT_EQ(Show(Power(2, 63)), "int64 -9223372036854775808");
    EXPECT_EQ(Show(Power(10, 400)), "int64 -9223372036854775808");
}

TEST(LSLiteralOperators, ANegativePowerOfZeroIsIllDefined) {
    EXPECT_EQ(LiteralErrorOf([] { Power(0, -1); }), "Calculation 0 ^^ -1 ill defined");
    EXPECT_EQ(LiteralErrorOf([] { Power(0.0, -1.5); }), "Calculation 0 ^^ -1.5 ill defined");
    EXPECT_EQ(LiteralErrorOf([] { Power(-0.0, -0.25); }), "Calculation -0 ^^ -0.25 ill defined");
    EXPECT_EQ(Show(Power(0, 2)), "int64 0");
    EXPECT_EQ(Show(Power(0.0, s_nan)), "float64 nan");
}

TEST(LSLiteralOperators, TypeErrorsOfPowerNameTheSingleCaret) {
    EXPECT_EQ(LiteralErrorOf([] { Power(String("a"), 1); }),
              "Incompatible types (string and int64) for ^ operation");
}

TEST(LSLiteralOperators, UnarySignsKeepTheTypeOfANumber) {
    EXPECT_EQ(Show(+LSLiteral(5)), "int64 5");
    EXPECT_EQ(Show(+LSLiteral(2.5)), "float64 2.5");
    EXPECT_EQ(Show(-LSLiteral(5)), "int64 -5");
    EXPECT_EQ(Show(-LSLiteral(0.0)), "float64 -0");
    EXPECT_EQ(LiteralErrorOf([] { +String("a"); }),
              "Incompatible type (string) for unary + operation");
}

TEST(LSLiteralOperators, LogicIsLazyAboutTypes) {
    EXPECT_EQ(Show(LSLiteral(true) || LSLiteral(5)), "bool true");
    EXPECT_EQ(Show(LSLiteral(false) && LSLiteral(5)), "bool false");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(false) || LSLiteral(5); }),
              "No implicit conversion from int64 to bool");
    EXPECT_EQ(LiteralErrorOf([] { !LSLiteral(5); }), "No implicit conversion from int64 to bool");
}

// ---- comparisons -------------------------------------------------------------------------------

TEST(LSLiteralOperators, TextIsOrderedByItsBytesWithAPrefixFirst) {
    EXPECT_TRUE(IsLess(String("a"), String("b")));
    EXPECT_TRUE(IsLess(String("a"), String("ab")));
    EXPECT_FALSE(IsLess(String("ab"), String("a")));
    EXPECT_TRUE(IsLess(String("b"), String("\x80")));
    EXPECT_TRUE(IsLess(Char('a'), String("ab")));
    EXPECT_FALSE(IsLess(String("a"), Char('a')));
    EXPECT_TRUE(IsLessThanOrEqual(String("a"), Char('a')));
}

TEST(LSLiteralOperators, TheEmptyStringIsLessThanEveryOther) {
    EXPECT_TRUE(IsLess(String(""), String(std::string(1, '\0'))));
    EXPECT_TRUE(IsLess(String(""), Char('a')));
    EXPECT_FALSE(IsLess(String(""), String("")));
    EXPECT_FALSE(IsLess(Char('a'), String("")));
}

TEST(LSLiteralOperators, IntsWithoutAnExactFloatAreStillComparedExactly) {
    EXPECT_TRUE(IsLess(9007199254740992, 9007199254740993));
    EXPECT_FALSE(IsLessThanOrEqual(9007199254740993, 9007199254740992));
    EXPECT_FALSE(IsEqual(9007199254740992, 9007199254740993));
    EXPECT_TRUE(IsEqual(9007199254740992.0, 9007199254740993));
    EXPECT_TRUE(IsLess(s_lowest, s_highest));
}

TEST(LSLiteralOperators, AnIntMeetsAFloatAsAFloat) {
    EXPECT_TRUE(IsLess(1, 1.5));
    EXPECT_FALSE(IsLess(1.5, 1));
    EXPECT_TRUE(IsEqual(1, 1.0));
    EXPECT_TRUE(IsLessThanOrEqual(1.0, 1));
}

TEST(LSLiteralOperators, NothingComparesWithANan) {
    for (const LSLiteral& x : {LSLiteral(s_nan), LSLiteral(1), LSLiteral(s_infinity)}) {
        EXPECT_FALSE(IsLess(x, s_nan));
        EXPECT_FALSE(IsLess(s_nan, x));
        EXPECT_FALSE(IsLessThanOrEqual(x, s_nan));
        EXPECT_FALSE(IsLessThanOrEqual(s_nan, x));
        EXPECT_FALSE(IsEqual(x, s_nan));
    }
}

TEST(LSLiteralOperators, AnIntIsNotComparedWithAString) {
    EXPECT_EQ(LiteralErrorOf([] { IsLess(1, String("1")); }),
              "Incompatible types (int64 and string) for comparison operation");
}

TEST(LSLiteralOperators, ABoolEqualsBoolsOnly) {
    EXPECT_TRUE(IsEqual(true, true));
    EXPECT_FALSE(IsEqual(true, false));
    EXPECT_EQ(LiteralErrorOf([] { IsEqual(true, 1); }),
              "Incompatible types (bool and int64) for comparison operation");
}

TEST(LSLiteralOperators, ACharEqualsItsCodeAndItsString) {
    EXPECT_TRUE(IsEqual(Char('A'), 65));
    EXPECT_TRUE(IsEqual(65, Char('A')));
    EXPECT_FALSE(IsEqual(Char('A'), 66));
    EXPECT_TRUE(IsEqual(Char(200), 200));
    EXPECT_TRUE(IsEqual(Char('A'), String("A")));
    EXPECT_FALSE(IsEqual(Char('A'), String("AB")));
    EXPECT_FALSE(IsEqual(String(""), Char('A')));
    EXPECT_EQ(LiteralErrorOf([] { IsEqual(Char('A'), 321); }),
              "Incompatible types (char and int64) for comparison operation");
    EXPECT_EQ(LiteralErrorOf([] { IsEqual(Char('A'), 65.0); }),
              "Incompatible types (char and float64) for comparison operation");
}

TEST(LSLiteralOperators, StringsAreEqualByAllTheirBytes) {
    EXPECT_TRUE(IsEqual(String(std::string("a\0b", 3)), String(std::string("a\0b", 3))));
    EXPECT_FALSE(IsEqual(String(std::string("a\0b", 3)), String(std::string("a\0c", 3))));
    EXPECT_TRUE(IsEqual(String(""), String("")));
}

// Few letters and short lengths, so that equal strings and prefixes are frequent.
std::string RandomText(std::mt19937& random) {
    constexpr char s_alphabet[] = {'\0', 'a', '\x7f', '\x80', '\xff'};
    std::string text(random() % 4, ' ');
    for (char& c : text)
        c = s_alphabet[random() % sizeof s_alphabet];
    return text;
}

TEST(LSLiteralOperators, TheOrderOfStringsIsStrictAndTotal) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::string texts[] = {RandomText(random), RandomText(random), RandomText(random)};
        const LSLiteral a = String(texts[0]);
        const LSLiteral b = String(texts[1]);
        const LSLiteral c = String(texts[2]);
        ASSERT_FALSE(IsLess(a, a));
        ASSERT_EQ(IsLess(a, b) + IsLess(b, a) + IsEqual(a, b), 1);
        ASSERT_EQ(IsLessThanOrEqual(a, b), IsLess(a, b) || IsEqual(a, b));
        ASSERT_TRUE(!(IsLess(a, b) && IsLess(b, c)) || IsLess(a, c));
        const auto unsignedLess = [](char x, char y) {
            return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
        };
        ASSERT_EQ(IsLess(a, b),
                  std::lexicographical_compare(texts[0].begin(), texts[0].end(), texts[1].begin(),
                                               texts[1].end(), unsignedLess));
    }
}

// ---- the index ---------------------------------------------------------------------------------

TEST(LSLiteralOperators, AnIndexGivesACharOfAString) {
    EXPECT_EQ(Show(String("abc")[0]), "char 97");
    EXPECT_EQ(Show(String("abc")[2]), "char 99");
    EXPECT_EQ(Show(String("a\xc8")[1]), "char 200");
}

TEST(LSLiteralOperators, AnIndexOutsideTheStringIsRefused) {
    EXPECT_EQ(LiteralErrorOf([] { String("abc")[3]; }), "Index 3 out of range [0,3) on string");
    EXPECT_EQ(LiteralErrorOf([] { String("abc")[-1]; }), "Index -1 out of range [0,3) on string");
    EXPECT_EQ(LiteralErrorOf([] { String("")[0]; }), "Index 0 out of range [0,0) on string");
}

TEST(LSLiteralOperators, AnIndexMustBeAnIntOf32Bits) {
    EXPECT_EQ(LiteralErrorOf([] { String("abc")[1.0]; }),
              "No implicit conversion from float64 to int64");
    EXPECT_EQ(LiteralErrorOf([] { String("abc")[String("0")]; }),
              "No conversion from string to int64");
    EXPECT_EQ(LiteralErrorOf([] { String("abc")[5000000000]; }),
              "No implicit conversion from value 5000000000 to int32");
}

TEST(LSLiteralOperators, OnlyStringsAreIndexedAndThatIsSaidBeforeTheIndexIsLookedAt) {
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(5)[0]; }), "[] not available on int64");
    EXPECT_EQ(LiteralErrorOf([] { Char('a')[1.5]; }), "[] not available on char");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral()[LSLiteral()]; }), "[] not available on undef");
}

}  // namespace
}  // namespace vorn_test
