#include "qzMacroExpander/LSLiteral.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/Literals.h"

namespace vorn_test {
namespace {

using vorn::ELiteral;
using vorn::float32;
using vorn::float64;
using vorn::int16;
using vorn::int32;
using vorn::int64;
using vorn::int8;
using vorn::LSLiteral;
using vorn::uint16;
using vorn::uint32;
using vorn::uint64;
using vorn::uint8;
using vorn::xchar;
using vorn::xstring;
using enum vorn::ELiteral;

// ---- one conversion ----------------------------------------------------------------------------

// The target in messages about the type of the source, and in those about its value.
struct TargetNames {
    const char* ofType;
    const char* ofValue;
};

// What a conversion did: its result, what its variable holds, its error.
struct Outcome {
    bool result;
    std::string value;
    std::string error;

    bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* os) {
    *os << outcome.result << ", " << outcome.value << ", " << outcome.error;
}

// The conversion family for one target, with values as text.
struct Family {
    TargetNames names;
    std::vector<std::string> sentinels;  // what a variable may hold before
    Outcome (*as)(const LSLiteral& x, std::size_t sentinel, bool loss, bool throws);
    Outcome (*get)(const LSLiteral& x, bool loss);
    bool (LSLiteral::*coercible)() const;
};

template <class T>
T Sentinel(std::size_t index) {
    if constexpr (std::is_same_v<T, xstring>)
        return index == 0 ? "" : "before";
    else
        return static_cast<T>(index);
}

template <class T, bool (LSLiteral::*as)(T&, bool, bool) const>
Outcome As(const LSLiteral& x, std::size_t sentinel, bool loss, bool throws) {
    T v = Sentinel<T>(sentinel);
    bool result = false;
    std::string error = LiteralErrorOf([&] { result = (x.*as)(v, loss, throws); });
    return {result, ShowValue(v), error};
}

template <class T, T (LSLiteral::*get)(bool) const>
Outcome Get(const LSLiteral& x, bool loss) {
    std::string value;
    const std::string error = LiteralErrorOf([&] { value = ShowValue((x.*get)(loss)); });
    return {error == s_noError, value, error};
}

template <class T, bool (LSLiteral::*as)(T&, bool, bool) const, T (LSLiteral::*get)(bool) const>
Family MakeFamily(TargetNames names, bool (LSLiteral::*coercible)() const) {
    return {
        names,
        {ShowValue(Sentinel<T>(0)), ShowValue(Sentinel<T>(1))},
        As<T, as>,
        Get<T, get>,
        coercible
    };
}

// What a cell of the tables below says of one source and one target.
//
//   free V     converts to V, whatever the flags
//   cast V     converts to V with allowDataLoss only
//   range V    casts to V; without allowDataLoss it fails by its value and V is stored all the same
//   unit V     casts to V; without allowDataLoss it fails by its value
//   value      always fails by its value
//   none       always fails by its type
//   expected   always fails for want of a value
struct Cell {
    std::string kind;
    std::string value;

    explicit Cell(std::string_view text) {
        const std::size_t blank = text.find(' ');
        kind = text.substr(0, blank);
        if (blank != std::string_view::npos)
            value = text.substr(blank + 1);
    }

    bool Converts(bool allowDataLoss) const {
        const bool casts = kind == "cast" || kind == "range" || kind == "unit";
        return kind == "free" || (casts && allowDataLoss);
    }

    // REQUIRES: the conversion fails.
    std::string Message(const LSLiteral& x, const TargetNames& names) const {
        const std::string from = vorn::TypeToString(x.m_type);
        if (kind == "expected")
            return std::string("Expected ") + names.ofType;
        if (kind == "none")
            return "No conversion from " + from + " to " + names.ofType;
        if (kind == "cast")
            return "No implicit conversion from " + from + " to " + names.ofType;
        const std::string text = x == LITERAL_STRING ? Str(x.m_string) : std::to_string(x.m_int64);
        return "No implicit conversion from value " + text + " to " + names.ofValue;
    }

    // before is what the variable held; empty where there is none.
    Outcome Expected(const LSLiteral& x, const TargetNames& names, bool loss, bool throws,
                     const std::string& before) const {
        if (Converts(loss))
            return {true, value, s_noError};
        // A char is not stored if the error is raised; an integer has been stored by then.
        const bool stored =
            kind == "range" && !before.empty() && !(throws && names.ofValue == s_charName);
        return {false, stored ? value : before, throws ? Message(x, names) : s_noError};
    }

    static constexpr std::string_view s_charName = "char";
};

// Tries all four combinations of flags, and the two shorter forms.
void ExpectConversion(const LSLiteral& x, std::string_view text, const Family& family) {
    SCOPED_TRACE(Show(x) + " to " + family.names.ofValue + " should be: " + std::string(text));
    const Cell cell(text);
    for (const int flags : {0, 1, 2, 3}) {
        const bool loss = (flags & 1) != 0;
        const bool throws = (flags & 2) != 0;
        for (const std::size_t i : {0u, 1u})
            EXPECT_EQ(family.as(x, i, loss, throws),
                      cell.Expected(x, family.names, loss, throws, family.sentinels[i]))
                << "loss " << loss << ", throws " << throws;
    }
    for (const bool loss : {false, true})
        EXPECT_EQ(family.get(x, loss), cell.Expected(x, family.names, loss, true, ""));
    EXPECT_EQ((x.*family.coercible)(), cell.Converts(false));
}

// ---- the coercion table ------------------------------------------------------------------------

const Family s_bool = MakeFamily<bool, &LSLiteral::AsBool, &LSLiteral::AsBool>(
    {"bool", "bool"}, &LSLiteral::CoercibleToBool);
const Family s_int8 = MakeFamily<int8, &LSLiteral::AsInt8, &LSLiteral::AsInt8>(
    {"int64", "int8"}, &LSLiteral::CoercibleToInt8);
const Family s_int16 = MakeFamily<int16, &LSLiteral::AsInt16, &LSLiteral::AsInt16>(
    {"int64", "int16"}, &LSLiteral::CoercibleToInt16);
const Family s_int32 = MakeFamily<int32, &LSLiteral::AsInt32, &LSLiteral::AsInt32>(
    {"int64", "int32"}, &LSLiteral::CoercibleToInt32);
const Family s_int64 = MakeFamily<int64, &LSLiteral::AsInt64, &LSLiteral::AsInt64>(
    {"int64", "int64"}, &LSLiteral::CoercibleToInt64);
const Family s_uint8 = MakeFamily<uint8, &LSLiteral::AsUInt8, &LSLiteral::AsUInt8>(
    {"int64", "uint8"}, &LSLiteral::CoercibleToUInt8);
const Family s_uint16 = MakeFamily<uint16, &LSLiteral::AsUInt16, &LSLiteral::AsUInt16>(
    {"int64", "uint16"}, &LSLiteral::CoercibleToUInt16);
const Family s_uint32 = MakeFamily<uint32, &LSLiteral::AsUInt32, &LSLiteral::AsUInt32>(
    {"int64", "uint32"}, &LSLiteral::CoercibleToUInt32);
const Family s_uint64 = MakeFamily<uint64, &LSLiteral::AsUInt64, &LSLiteral::AsUInt64>(
    {"int64", "uint64"}, &LSLiteral::CoercibleToUInt64);
const Family s_float32 = MakeFamily<float32, &LSLiteral::AsFloat32, &LSLiteral::AsFloat32>(
    {"float32", "float32"}, &LSLiteral::CoercibleToFloat32);
const Family s_float64 = MakeFamily<float64, &LSLiteral::AsFloat64, &LSLiteral::AsFloat64>(
    {"float64", "float64"}, &LSLiteral::CoercibleToFloat64);
const Family s_char = MakeFamily<xchar, &LSLiteral::AsChar, &LSLiteral::AsChar>(
    {"char", "char"}, &LSLiteral::CoercibleToChar);
const Family s_string = MakeFamily<xstring, &LSLiteral::AsString, &LSLiteral::AsString>(
    {"string", "string"}, &LSLiteral::CoercibleToString);

struct ConversionRow {
    LSLiteral source;
    const char* toBool;
    const char* toInt64;
    const char* toFloat32;
    const char* toFloat64;
    const char* toChar;
    const char* toString;
};

TEST(LSLiteral, ConvertsAsTheCoercionTableSays) {
    const std::string lowest = std::to_string(s_lowest);
    const std::string castToLowest = "cast " + lowest;
    const char* const toLowest = castToLowest.c_str();
    // clang-format off
    const ConversionRow rows[] = {
        //              bool          int64      float32            float64                    char         string
        {LSLiteral(),   "expected",   "expected", "expected",       "expected",                "expected",  "expected"},
        {Void(),        "none",       "none",     "none",           "none",                    "none",      "none"},

        {false,         "free false", "cast 0",   "cast 0",         "cast 0",                  "none",      "cast false"},
        {true,          "free true",  "cast 1",   "cast 1",         "cast 1",                  "none",      "cast true"},

        {0,             "cast false", "free 0",   "free 0",         "free 0",                  "free 0",    "cast 0"},
        {1,             "cast true",  "free 1",   "free 1",         "free 1",                  "free 1",    "cast 1"},
        {65,            "cast true",  "free 65",  "free 65",        "free 65",                 "free 65",   "cast 65"},
        {255,           "cast true",  "free 255", "free 255",       "free 255",                "free 255",  "cast 255"},
        {256,           "cast true",  "free 256", "free 256",       "free 256",                "range 0",   "cast 256"},
        {321,           "cast true",  "free 321", "free 321",       "free 321",                "range 65",  "cast 321"},
        {-1,            "cast true",  "free -1",  "free -1",        "free -1",                 "range 255", "cast -1"},
        {16777217,      "cast true",  "free 16777217", "free 16777216", "free 16777217",       "range 1",   "cast 16777217"},
        {9007199254740993, "cast true", "free 9007199254740993", "free 9.00719925e+15", "free 9007199254740992", "range 1", "cast 9007199254740993"},
        {s_highest,     "cast true",  "free 9223372036854775807", "free 9.22337204e+18", "free 9.2233720368547758e+18", "range 255", "cast 9223372036854775807"},
        {s_lowest,      "cast true",  "free -9223372036854775808", "free -9.22337204e+18", "free -9.2233720368547758e+18", "range 0", "cast -9223372036854775808"},

        {0.0,           "cast false", "cast 0",   "free 0",         "free 0",                  "none",      "cast 0.0"},
        {-0.0,          "cast false", "cast 0",   "free -0",        "free -0",                 "none",      "cast -0.0"},
        {3.9,           "cast true",  "cast 3",   "free 3.9000001", "free 3.8999999999999999", "none",      "cast 3.9"},
        {-3.9,          "cast true",  "cast -3",  "free -3.9000001", "free -3.8999999999999999", "none",    "cast -3.9"},
        {0.5,           "cast true",  "cast 0",   "free 0.5",       "free 0.5",                "none",      "cast 0.5"},
        {5e-324,        "cast true",  "cast 0",   "free 0",         "free 4.9406564584124654e-324", "none", "cast 5e-324"},
        {1e300,         "cast true",  toLowest,   "free inf",       "free 1.0000000000000001e+300", "none", "cast 1e+300"},
        {-1e300,        "cast true",  toLowest,   "free -inf",      "free -1.0000000000000001e+300", "none", "cast -1e+300"},
        {9223372036854774784.0, "cast true", "cast 9223372036854774784", "free 9.22337204e+18", "free 9.2233720368547748e+18", "none", "cast 9.223372036854775e+18"},
        {9223372036854775808.0, "cast true", toLowest, "free 9.22337204e+18", "free 9.2233720368547758e+18", "none", "cast 9.223372036854776e+18"},
        {-9223372036854775808.0, "cast true", toLowest, "free -9.22337204e+18", "free -9.2233720368547758e+18", "none", "cast -9.223372036854776e+18"},
        {s_infinity,    "cast true",  toLowest,   "free inf",       "free inf",                "none",      "cast inf"},
        {-s_infinity,   "cast true",  toLowest,   "free -inf",      "free -inf",               "none",      "cast -inf"},
        {s_nan,         "cast true",  toLowest,   "free nan",       "free nan",                "none",      "cast nan"},

        {Char('A'),     "none",       "cast 65",  "none",           "none",                    "free 65",   "free A"},
        {Char(200),     "none",       "cast 200", "none",           "none",                    "free 200",  "free \xc8"},
        {Char(255),     "none",       "cast 255", "none",           "none",                    "free 255",  "free \xff"},

        {String(""),    "none",       "none",     "none",           "none",                    "value",     "free "},
        {String("a"),   "none",       "none",     "none",           "none",                    "unit 97",   "free a"},
        {String("\xc8"), "none",      "none",     "none",           "none",                    "unit 200",  "free \xc8"},
        {String("ab"),  "none",       "none",     "none",           "none",                    "value",     "free ab"},
        {String("17"),  "none",       "none",     "none",           "none",                    "value",     "free 17"},
    };
    // clang-format on
    for (const ConversionRow& row : rows) {
        ExpectConversion(row.source, row.toBool, s_bool);
        ExpectConversion(row.source, row.toInt64, s_int64);
        ExpectConversion(row.source, row.toFloat32, s_float32);
        ExpectConversion(row.source, row.toFloat64, s_float64);
        ExpectConversion(row.source, row.toChar, s_char);
        ExpectConversion(row.source, row.toString, s_string);
    }
}

struct IntegerRow {
    LSLiteral source;
    const char* toInt8;
    const char* toInt16;
    const char* toInt32;
    const char* toUInt8;
    const char* toUInt16;
    const char* toUInt32;
    const char* toUInt64;
};

TEST(LSLiteral, ConvertsToNarrowAndUnsignedIntegersByWayOfInt64) {
    // clang-format off
    const IntegerRow rows[] = {
        //             int8          int16          int32                uint8        uint16         uint32              uint64
        {LSLiteral(),  "expected",   "expected",    "expected",          "expected",  "expected",    "expected",         "expected"},
        {Void(),       "none",       "none",        "none",              "none",      "none",        "none",             "none"},
        {false,        "cast 0",     "cast 0",      "cast 0",            "cast 0",    "cast 0",      "cast 0",           "cast 0"},
        {true,         "cast 1",     "cast 1",      "cast 1",            "cast 1",    "cast 1",      "cast 1",           "cast 1"},

        {0,            "free 0",     "free 0",      "free 0",            "free 0",    "free 0",      "free 0",           "free 0"},
        {-1,           "free -1",    "free -1",     "free -1",           "range 255", "range 65535", "range 4294967295", "free 18446744073709551615"},
        {127,          "free 127",   "free 127",    "free 127",          "free 127",  "free 127",    "free 127",         "free 127"},
        {128,          "range -128", "free 128",    "free 128",          "free 128",  "free 128",    "free 128",         "free 128"},
        {-128,         "free -128",  "free -128",   "free -128",         "range 128", "range 65408", "range 4294967168", "free 18446744073709551488"},
        {-129,         "range 127",  "free -129",   "free -129",         "range 127", "range 65407", "range 4294967167", "free 18446744073709551487"},
        {255,          "range -1",   "free 255",    "free 255",          "free 255",  "free 255",    "free 255",         "free 255"},
        {256,          "range 0",    "free 256",    "free 256",          "range 0",   "free 256",    "free 256",         "free 256"},
        {300,          "range 44",   "free 300",    "free 300",          "range 44",  "free 300",    "free 300",         "free 300"},
        {32767,        "range -1",   "free 32767",  "free 32767",        "range 255", "free 32767",  "free 32767",       "free 32767"},
        {32768,        "range 0",    "range -32768", "free 32768",       "range 0",   "free 32768",  "free 32768",       "free 32768"},
        {-32768,       "range 0",    "free -32768", "free -32768",       "range 0",   "range 32768", "range 4294934528", "free 18446744073709518848"},
        {-32769,       "range -1",   "range 32767", "free -32769",       "range 255", "range 32767", "range 4294934527", "free 18446744073709518847"},
        {65535,        "range -1",   "range -1",    "free 65535",        "range 255", "free 65535",  "free 65535",       "free 65535"},
        {65536,        "range 0",    "range 0",     "free 65536",        "range 0",   "range 0",     "free 65536",       "free 65536"},
        {2147483647,   "range -1",   "range -1",    "free 2147483647",   "range 255", "range 65535", "free 2147483647",  "free 2147483647"},
        {2147483648,   "range 0",    "range 0",     "range -2147483648", "range 0",   "range 0",     "free 2147483648",  "free 2147483648"},
        {-2147483648,  "range 0",    "range 0",     "free -2147483648",  "range 0",   "range 0",     "range 2147483648", "free 18446744071562067968"},
        {-2147483649,  "range -1",   "range -1",    "range 2147483647",  "range 255", "range 65535", "range 2147483647", "free 18446744071562067967"},
        {4294967295,   "range -1",   "range -1",    "range -1",          "range 255", "range 65535", "free 4294967295",  "free 4294967295"},
        {4294967296,   "range 0",    "range 0",     "range 0",           "range 0",   "range 0",     "range 0",          "free 4294967296"},
        {5000000000,   "range 0",    "range -3584", "range 705032704",   "range 0",   "range 61952", "range 705032704",  "free 5000000000"},
        {s_highest,    "range -1",   "range -1",    "range -1",          "range 255", "range 65535", "range 4294967295", "free 9223372036854775807"},
        {s_lowest,     "range 0",    "range 0",     "range 0",           "range 0",   "range 0",     "range 0",          "free 9223372036854775808"},

        {300.7,        "cast 44",    "cast 300",    "cast 300",          "cast 44",   "cast 300",    "cast 300",         "cast 300"},
        {-1.5,         "cast -1",    "cast -1",     "cast -1",           "cast 255",  "cast 65535",  "cast 4294967295",  "cast 18446744073709551615"},
        {1e300,        "cast 0",     "cast 0",      "cast 0",            "cast 0",    "cast 0",      "cast 0",           "cast 9223372036854775808"},
        {s_nan,        "cast 0",     "cast 0",      "cast 0",            "cast 0",    "cast 0",      "cast 0",           "cast 9223372036854775808"},
        {Char(200),    "cast -56",   "cast 200",    "cast 200",          "cast 200",  "cast 200",    "cast 200",         "cast 200"},
        {String("1"),  "none",       "none",        "none",              "none",      "none",        "none",             "none"},
    };
    // clang-format on
    for (const IntegerRow& row : rows) {
        ExpectConversion(row.source, row.toInt8, s_int8);
        ExpectConversion(row.source, row.toInt16, s_int16);
        ExpectConversion(row.source, row.toInt32, s_int32);
        ExpectConversion(row.source, row.toUInt8, s_uint8);
        ExpectConversion(row.source, row.toUInt16, s_uint16);
        ExpectConversion(row.source, row.toUInt32, s_uint32);
        ExpectConversion(row.source, row.toUInt64, s_uint64);
    }
}

// ---- conversions one by one --------------------------------------------------------------------

TEST(LSLiteral, AnInt64IsNoBoolWithoutACast) {
    bool v = false;
    EXPECT_FALSE(LSLiteral(1).AsBool(v, false, false));
    EXPECT_EQ(LiteralErrorOf([&] { LSLiteral(1).AsBool(v, false, true); }),
              "No implicit conversion from int64 to bool");
}

TEST(LSLiteral, CastsOfFloatsTruncateTowardZero) {
    EXPECT_EQ(LSLiteral(3.9).AsInt64(true), 3);
    EXPECT_EQ(LSLiteral(-3.9).AsInt64(true), -3);
}

TEST(LSLiteral, ACharIsAnUnsignedNumber) {
    EXPECT_EQ(Char(200).AsInt64(true), 200);
}

TEST(LSLiteral, Int8KeepsTheLowBitsOfWhatIsOutOfRange) {
    EXPECT_EQ(LSLiteral(300).AsInt8(true), 44);
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(300).AsInt8(false); }),
              "No implicit conversion from value 300 to int8");
    int8 v = 1;
    EXPECT_FALSE(LSLiteral(300).AsInt8(v, false, false));
    EXPECT_EQ(v, 44);
    v = 1;
    EXPECT_EQ(LiteralErrorOf([&] { LSLiteral(300).AsInt8(v, false, true); }),
              "No implicit conversion from value 300 to int8");
    EXPECT_EQ(v, 44);
}

TEST(LSLiteral, MinusOneIsOutOfRangeOfUInt8ButNotOfUInt64) {
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(-1).AsUInt8(false); }),
              "No implicit conversion from value -1 to uint8");
    EXPECT_EQ(LSLiteral(-1).AsUInt64(false), std::numeric_limits<uint64>::max());
}

TEST(LSLiteral, ErrorsOfNarrowIntegersAboutTheTypeNameInt64) {
    EXPECT_EQ(LiteralErrorOf([] { String("5").AsInt32(false); }),
              "No conversion from string to int64");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral().AsInt8(true); }), "Expected int64");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(1.0).AsUInt64(false); }),
              "No implicit conversion from float64 to int64");
}

TEST(LSLiteral, AnInt64InByteRangeIsACharWithoutACast) {
    EXPECT_EQ(LSLiteral(65).AsChar(false), 'A');
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(256).AsChar(false); }),
              "No implicit conversion from value 256 to char");
    EXPECT_EQ(LSLiteral(321).AsChar(true), 'A');
}

TEST(LSLiteral, AnInt64OutOfByteRangeIsStoredUnlessTheErrorIsRaised) {
    xchar v = 'x';
    EXPECT_EQ(LiteralErrorOf([&] { LSLiteral(321).AsChar(v, false, true); }),
              "No implicit conversion from value 321 to char");
    EXPECT_EQ(v, 'x');
    EXPECT_FALSE(LSLiteral(321).AsChar(v, false, false));
    EXPECT_EQ(v, 'A');
}

TEST(LSLiteral, OnlyACastMakesACharOfAStringAndOnlyOfOneByte) {
    EXPECT_EQ(LiteralErrorOf([] { String("ab").AsChar(true); }),
              "No implicit conversion from value ab to char");
    EXPECT_EQ(String("a").AsChar(true), 'a');
    EXPECT_EQ(LiteralErrorOf([] { String("a").AsChar(false); }),
              "No implicit conversion from value a to char");
}

TEST(LSLiteral, ACharIsAStringWithoutACastAndABoolIsNot) {
    EXPECT_EQ(Char('a').AsString(false), "a");
    EXPECT_EQ(LiteralErrorOf([] { LSLiteral(true).AsString(false); }),
              "No implicit conversion from bool to string");
    EXPECT_EQ(LSLiteral(true).AsString(true), "true");
    EXPECT_EQ(LiteralErrorOf([] { Void().AsString(true); }), "No conversion from void to string");
}

TEST(LSLiteral, TheZeroByteIsAnOrdinaryByteOfText) {
    EXPECT_EQ(Str(Char(0).AsString(false)), std::string(1, '\0'));
    const std::string text("a\0b", 3);
    EXPECT_EQ(Str(String(text).AsString(false)), text);
    EXPECT_EQ(String(text).GetLength(), 3);
    EXPECT_EQ(String(std::string(1, '\0')).AsChar(true), '\0');
}

TEST(LSLiteral, AMessageEndsAtItsFirstZeroByte) {
    EXPECT_EQ(LiteralErrorOf([] { String(std::string("a\0b", 3)).AsChar(false); }),
              "No implicit conversion from value a");
}

TEST(LSLiteral, AStringConvertedIntoItselfStaysWhereItIs) {
    LSLiteral x = String("a text");
    const char* const before = x.m_string.data();
    EXPECT_TRUE(x.AsString(x.m_string, false, true));
    EXPECT_EQ(x.m_string.data(), before);
    EXPECT_EQ(x.m_string, "a text");
}

TEST(LSLiteral, AsStringWithAVariableReplacesWhatItHeld) {
    xstring v("before");
    LSLiteral(1.5).AsString(v, true);
    EXPECT_EQ(v, "1.5");
    EXPECT_EQ(LiteralErrorOf([&] { LSLiteral(2.5).AsString(v, false); }),
              "No implicit conversion from float64 to string");
    EXPECT_EQ(v, "1.5");
}

// ---- construction ------------------------------------------------------------------------------

TEST(LSLiteral, IsBuiltFromEveryPlainType) {
    EXPECT_EQ(Show(LSLiteral()), "undef");
    EXPECT_EQ(Show(LSLiteral(true)), "bool true");
    EXPECT_EQ(Show(LSLiteral(int8{-5})), "int64 -5");
    EXPECT_EQ(Show(LSLiteral(uint16{65535})), "int64 65535");
    EXPECT_EQ(Show(LSLiteral(int32{-7})), "int64 -7");
    EXPECT_EQ(Show(LSLiteral(s_lowest)), "int64 -9223372036854775808");
    EXPECT_EQ(Show(LSLiteral(std::numeric_limits<uint64>::max())), "int64 -1");
    EXPECT_EQ(Show(LSLiteral('A')), "int64 65");
    EXPECT_EQ(Show(LSLiteral(1.5f)), "float64 1.5");
    EXPECT_EQ(Show(LSLiteral(2.5)), "float64 2.5");
    EXPECT_EQ(Show(LSLiteral(xstring("abc"))), "string abc");
    EXPECT_EQ(Show(LSLiteral::MakeChar('A')), "char 65");
}

TEST(LSLiteral, IsNoBoolJustBecauseTheValueConvertsToOne) {
    EXPECT_FALSE((std::is_convertible_v<const int*, LSLiteral>));
    EXPECT_FALSE((std::is_convertible_v<ELiteral, LSLiteral>));
    EXPECT_EQ(Show(LSLiteral("abc")), "string abc");
}

TEST(LSLiteral, OnlyAStringHasText) {
    EXPECT_TRUE(LSLiteral(5).m_string.empty());
    EXPECT_TRUE(Char('a').m_string.empty());
}

TEST(LSLiteral, ComparesItsTypeWithATag) {
    EXPECT_TRUE(LSLiteral(5) == LITERAL_INT64);
    EXPECT_FALSE(LSLiteral(5) == LITERAL_FLOAT64);
    EXPECT_TRUE(LSLiteral(5) != LITERAL_FLOAT64);
    EXPECT_FALSE(LSLiteral() != LITERAL_UNDEF);
}

TEST(LSLiteral, CopiesAreIndependent) {
    LSLiteral x = String("abc");
    LSLiteral y = x;
    y.m_string += "d";
    EXPECT_EQ(Show(x), "string abc");
    x = LSLiteral(s_highest);
    y = x;
    EXPECT_EQ(Show(y), "int64 9223372036854775807");
    EXPECT_TRUE(y.m_string.empty());
}

TEST(LSLiteral, TypesHaveTheirNumbersAndNames) {
    const std::pair<int, const char*> rows[] = {
        {0, "undef"  },
        {1, "void"   },
        {2, "bool"   },
        {3, "int64"  },
        {4, "float64"},
        {5, "char"   },
        {6, "string" }
    };
    for (const auto& [number, name] : rows)
        EXPECT_STREQ(vorn::TypeToString(static_cast<ELiteral>(number)), name);
}

TEST(LSLiteralDeathTest, ATypeOutsideTheEnumerationEndsTheProcess) {
    const auto broken = static_cast<ELiteral>(7);
    LSLiteral x;
    x.m_type = broken;
    int64 v = 0;
    EXPECT_DEATH(vorn::TypeToString(broken), "");
    EXPECT_DEATH(x.AsInt64(v, false, false), "");
    EXPECT_DEATH(x.AsString(true), "");
}

// ---- length, assignment, errors ----------------------------------------------------------------

TEST(LSLiteral, OnlyStringsHaveALength) {
    EXPECT_EQ(String("").GetLength(), 0);
    EXPECT_EQ(String("abc").GetLength(), 3);
    const std::pair<LSLiteral, const char*> rows[] = {
        {LSLiteral(), "len() not available on undef"  },
        {Void(),      "len() not available on void"   },
        {true,        "len() not available on bool"   },
        {5,           "len() not available on int64"  },
        {1.5,         "len() not available on float64"},
        {Char('a'),   "len() not available on char"   },
    };
    for (const auto& [x, message] : rows)
        EXPECT_EQ(LiteralErrorOf([&literal = x] { literal.GetLength(); }), message);
}

TEST(LSLiteral, NothingCanBeAssignedTo) {
    const std::pair<LSLiteral, const char*> rows[] = {
        {LSLiteral(), "Can't assign to undef"          },
        {Void(),      "Can't assign to void"           },
        {true,        "Can't assign to bool r-value"   },
        {5,           "Can't assign to int64 r-value"  },
        {1.5,         "Can't assign to float64 r-value"},
        {Char('a'),   "Can't assign to char r-value"   },
        {String("a"), "Can't assign to string r-value" },
    };
    for (const auto& [x, message] : rows) {
        LSLiteral target = x;
        EXPECT_EQ(LiteralErrorOf([&] { target.Assign(LSLiteral(7)); }), message);
        EXPECT_EQ(Show(target), Show(x));
    }
}

TEST(LSLiteral, ErrorsAreIExceptionsThatWriteTheirDescription) {
    try {
        LSLiteral(1).AsBool(false);
        FAIL() << "no error";
    } catch (const vorn::IException& e) {
        vorn::StringStream os(4096);
        e.Write(os);
        EXPECT_EQ(os.GetString(), "No implicit conversion from int64 to bool");
    }
}

TEST(LSLiteral, ErrorFunctionsComposeTheirMessages) {
    EXPECT_EQ(LiteralErrorOf([] { vorn::ThrowNoConversion("this", "that"); }),
              "No conversion from this to that");
    EXPECT_EQ(LiteralErrorOf([] { vorn::ThrowNoConversion(LITERAL_CHAR, "that"); }),
              "No conversion from char to that");
    EXPECT_EQ(LiteralErrorOf([] { vorn::ThrowNoImplicitConversion("this", "that"); }),
              "No implicit conversion from this to that");
    EXPECT_EQ(LiteralErrorOf([] { vorn::ThrowNoImplicitConversion(LITERAL_BOOL, "that"); }),
              "No implicit conversion from bool to that");
    EXPECT_EQ(LiteralErrorOf([] { vorn::ThrowNoImplicitConversionFromValue(int64{-5}, "that"); }),
              "No implicit conversion from value -5 to that");
    EXPECT_EQ(
        LiteralErrorOf([] { vorn::ThrowNoImplicitConversionFromValue(xstring("text"), "that"); }),
        "No implicit conversion from value text to that");
    EXPECT_EQ(LiteralErrorOf(
                  [] { vorn::ThrowIncompatibleTypesException(LSLiteral(1), String("a"), "some"); }),
              "Incompatible types (int64 and string) for some operation");
    EXPECT_EQ(LiteralErrorOf([] { vorn::ThrowIncompatibleTypeException(Void(), "some"); }),
              "Incompatible type (void) for unary some operation");
}

}  // namespace
}  // namespace vorn_test
