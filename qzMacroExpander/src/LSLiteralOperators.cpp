#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <iterator>

#include "qzMacroExpander/LSLiteral.h"
#include "qzMacroExpander/src/LiteralErrors.h"
#include "qzUtils/VornAssert.h"

namespace vorn {

namespace {

// ---- the result table --------------------------------------------------------------------------

// What two operands are together.
enum EOperands {
    TEXTS,         // each is a char or a string
    INTS,          // two int64
    MIXED,         // an int64 and a float64
    FLOATS,        // two float64
    BOOLS,         // two bools
    CHAR_AND_INT,  // a char, and an int64 that is the value of a byte
    OTHERS,
};

// The operators that treat their operands alike.
enum EOperators { ADDITION, ARITHMETIC, INTEGRAL, POWER, ORDER, EQUALITY };

// What the operands are computed or compared as.
enum EResult : uint8 { ERROR, TEXT, INT, FLOAT, BOOL, CHAR };

constexpr EResult s_results[][EQUALITY + 1] = {
  // clang-format off
    //                           +      - * /  % << >> ^^     <  <=  ==
    //                                         | & ^
    /* text, text            */ {TEXT,  ERROR, ERROR,  ERROR, TEXT,  TEXT },
    /* int, int              */ {INT,   INT,   INT,    INT,   INT,   INT  },
    /* int, float            */ {FLOAT, FLOAT, ERROR,  FLOAT, FLOAT, FLOAT},
    /* float, float          */ {FLOAT, FLOAT, ERROR,  FLOAT, FLOAT, FLOAT},
    /* bool, bool            */ {ERROR, ERROR, ERROR,  ERROR, ERROR, BOOL },
    /* char, int in 0 to 255 */ {ERROR, ERROR, ERROR,  ERROR, ERROR, CHAR },
    /* anything else         */ {ERROR, ERROR, ERROR,  ERROR, ERROR, ERROR},
  // clang-format on
};

static_assert(std::size(s_results) == OTHERS + 1);

bool IsText(const LSLiteral& x) {
    return x == LITERAL_CHAR || x == LITERAL_STRING;
}

bool IsNumber(const LSLiteral& x) {
    return x == LITERAL_INT64 || x == LITERAL_FLOAT64;
}

bool IsCharOrByte(const LSLiteral& x) {
    return x == LITERAL_CHAR || (x == LITERAL_INT64 && x.m_int64 >= 0 && x.m_int64 <= 255);
}

EOperands Classify(const LSLiteral& x, const LSLiteral& y) {
    if (IsNumber(x) && IsNumber(y))
        return x != y.m_type ? MIXED : x == LITERAL_INT64 ? INTS : FLOATS;
    if (IsText(x) && IsText(y))
        return TEXTS;
    if (x == LITERAL_BOOL && y == LITERAL_BOOL)
        return BOOLS;
    return IsCharOrByte(x) && IsCharOrByte(y) ? CHAR_AND_INT : OTHERS;
}

EResult ResultOf(const LSLiteral& x, const LSLiteral& y, EOperators operators) {
    return s_results[Classify(x, y)][operators];
}

// ---- the operands ------------------------------------------------------------------------------

// The bits of an int64: unsigned arithmetic on them wraps.
uint64 Bits(const LSLiteral& x) {
    return static_cast<uint64>(x.m_int64);
}

float64 Number(const LSLiteral& x) {
    return x == LITERAL_INT64 ? static_cast<float64>(x.m_int64) : x.m_float64;
}

int64 Byte(const LSLiteral& x) {
    return x == LITERAL_INT64 ? x.m_int64 : static_cast<uint8>(x.m_char);
}

SubString Text(const LSLiteral& x) {
    return x == LITERAL_CHAR ? SubString(&x.m_char, &x.m_char + 1) : SubString(x.m_string);
}

// ---- arithmetic --------------------------------------------------------------------------------

// Computes on the bits of two ints or on two floats.
template <class Operation>
LSLiteral Arithmetic(const LSLiteral& x, const LSLiteral& y, ConstStringZ opName,
                     Operation operation) {
    switch (ResultOf(x, y, ARITHMETIC)) {
    case INT:
        return operation(Bits(x), Bits(y));
    case FLOAT:
        return operation(Number(x), Number(y));
    default:
        ThrowIncompatibleTypesException(x, y, opName);
    }
}

// Computes on the bits of two ints.
template <class Operation>
LSLiteral Integral(const LSLiteral& x, const LSLiteral& y, ConstStringZ opName,
                   Operation operation) {
    if (ResultOf(x, y, INTEGRAL) == ERROR)
        ThrowIncompatibleTypesException(x, y, opName);
    return operation(Bits(x), Bits(y));
}

// The lowest int64 divided by -1 wraps: it gives itself, and no remainder.
struct Divide {
    uint64 operator()(uint64 x, uint64 y) const {
        if (y == 0)
            ThrowLiteralError("Division by zero error");
        if (static_cast<int64>(y) == -1)
            return 0 - x;
        return static_cast<uint64>(static_cast<int64>(x) / static_cast<int64>(y));
    }
    float64 operator()(float64 x, float64 y) const {
        if (y == 0.0)
            ThrowLiteralError("Division by zero");
        return x / y;
    }
};

int64 Remainder(uint64 x, uint64 y) {
    if (y == 0)
        ThrowLiteralError("Modulo zero error");
    if (static_cast<int64>(y) == -1)
        return 0;
    return static_cast<int64>(x) % static_cast<int64>(y);
}

}  // namespace

LSLiteral operator+(const LSLiteral& x, const LSLiteral& y) {
    if (ResultOf(x, y, ADDITION) != TEXT)
        return Arithmetic(x, y, "+", std::plus<>());
    const SubString first = Text(x);
    const SubString second = Text(y);
    LSLiteral joined;
    joined.m_type = LITERAL_STRING;
    joined.m_string.reserve(first.size() + second.size());
    joined.m_string.append(first);
    joined.m_string.append(second);
    return joined;
}

LSLiteral operator-(const LSLiteral& x, const LSLiteral& y) {
    return Arithmetic(x, y, "-", std::minus<>());
}

LSLiteral operator*(const LSLiteral& x, const LSLiteral& y) {
    return Arithmetic(x, y, "*", std::multiplies<>());
}

LSLiteral operator/(const LSLiteral& x, const LSLiteral& y) {
    return Arithmetic(x, y, "/", Divide());
}

LSLiteral operator%(const LSLiteral& x, const LSLiteral& y) {
    return Integral(x, y, "%", Remainder);
}

LSLiteral operator<<(const LSLiteral& x, const LSLiteral& y) {
    return Integral(x, y, "<<", [](uint64 bits, uint64 count) { return bits << (count & 63); });
}

LSLiteral operator>>(const LSLiteral& x, const LSLiteral& y) {
    return Integral(x, y, ">>", [](uint64 bits, uint64 count) {
        return static_cast<int64>(bits) >> (count & 63);
    });
}

LSLiteral operator|(const LSLiteral& x, const LSLiteral& y) {
    return Integral(x, y, "|", std::bit_or<>());
}

LSLiteral operator&(const LSLiteral& x, const LSLiteral& y) {
    return Integral(x, y, "&", std::bit_and<>());
}

LSLiteral operator^(const LSLiteral& x, const LSLiteral& y) {
    return Integral(x, y, "^", std::bit_xor<>());
}

// Kept: type errors name ^, though the language spells this operator ^^.
LSLiteral Power(const LSLiteral& x, const LSLiteral& y) {
    const EResult result = ResultOf(x, y, POWER);
    if (result == ERROR)
        ThrowIncompatibleTypesException(x, y, "^");
    const float64 base = Number(x);
    const float64 exponent = Number(y);
    if (base == 0.0 && exponent < 0.0)
        ThrowLiteralError("Calculation ", base, " ^^ ", exponent, " ill defined");
    const LSLiteral power = std::pow(base, exponent);
    return result == INT ? LSLiteral(power.AsInt64(true)) : power;
}

// ---- logic -------------------------------------------------------------------------------------

LSLiteral operator||(const LSLiteral& x, const LSLiteral& y) {
    return x.AsBool(false) || y.AsBool(false);
}

LSLiteral operator&&(const LSLiteral& x, const LSLiteral& y) {
    return x.AsBool(false) && y.AsBool(false);
}

// ---- unary operators ---------------------------------------------------------------------------

LSLiteral operator+(const LSLiteral& x) {
    if (ResultOf(x, x, ARITHMETIC) == ERROR)
        ThrowIncompatibleTypeException(x, "+");
    return x;
}

LSLiteral operator-(const LSLiteral& x) {
    switch (ResultOf(x, x, ARITHMETIC)) {
    case INT:
        return 0 - Bits(x);
    case FLOAT:
        return -x.m_float64;
    default:
        ThrowIncompatibleTypeException(x, "-");
    }
}

LSLiteral operator~(const LSLiteral& x) {
    if (ResultOf(x, x, INTEGRAL) == ERROR)
        ThrowIncompatibleTypeException(x, "~");
    return ~x.m_int64;
}

bool operator!(const LSLiteral& x) {
    return !x.AsBool(false);
}

// ---- comparisons -------------------------------------------------------------------------------

namespace {

// Whether x comes before y: by the first byte that differs, or as a proper prefix.
bool LexicographicalCompareX(SubString x, SubString y) {
    const ssize_t n = std::min(x.size(), y.size());
    const int c = n == 0 ? 0 : std::memcmp(x.m_p1, y.m_p1, static_cast<std::size_t>(n));
    return x.size() >= y.size() ? c < 0 : c <= 0;
}

}  // namespace

bool IsLess(const LSLiteral& x, const LSLiteral& y) {
    switch (ResultOf(x, y, ORDER)) {
    case TEXT:
        return LexicographicalCompareX(Text(x), Text(y));
    case INT:
        return x.m_int64 < y.m_int64;
    case FLOAT:
        return Number(x) < Number(y);
    default:
        ThrowIncompatibleTypesException(x, y, "comparison");
    }
}

bool IsLessThanOrEqual(const LSLiteral& x, const LSLiteral& y) {
    switch (ResultOf(x, y, ORDER)) {
    case TEXT:
        return !LexicographicalCompareX(Text(y), Text(x));
    case INT:
        return x.m_int64 <= y.m_int64;
    case FLOAT:
        return Number(x) <= Number(y);
    default:
        ThrowIncompatibleTypesException(x, y, "comparison");
    }
}

bool IsEqual(const LSLiteral& x, const LSLiteral& y) {
    switch (ResultOf(x, y, EQUALITY)) {
    case TEXT:
        return Text(x) == Text(y);
    case INT:
        return x.m_int64 == y.m_int64;
    case FLOAT:
        return Number(x) == Number(y);
    case BOOL:
        return x.m_bool == y.m_bool;
    case CHAR:
        return Byte(x) == Byte(y);
    case ERROR:
        break;
    }
    ThrowIncompatibleTypesException(x, y, "comparison");
}

bool operator==(const LSLiteral& x, const LSLiteral& y) {
    if (x.m_type != y.m_type)
        return false;
    switch (x.m_type) {
    case LITERAL_UNDEF:
    case LITERAL_VOID:
        return true;
    case LITERAL_BOOL:
        return x.m_bool == y.m_bool;
    case LITERAL_INT64:
        return x.m_int64 == y.m_int64;
    case LITERAL_FLOAT64:
        return x.m_float64 == y.m_float64;
    case LITERAL_CHAR:
        return x.m_char == y.m_char;
    case LITERAL_STRING:
        return x.m_string == y.m_string;
    }
    DeclareUnreachable();
}

// ---- the index ---------------------------------------------------------------------------------

LSLiteral LSLiteral::operator[](const LSLiteral& index) const {
    if (m_type != LITERAL_STRING)
        ThrowLiteralError("[] not available on ", TypeToString(m_type));
    const int32 i = index.AsInt32(false);
    if (i < 0 || i >= m_string.size())
        ThrowLiteralError("Index ", i, " out of range [0,", m_string.size(), ") on string");
    return MakeChar(m_string[i]);
}

}  // namespace vorn
