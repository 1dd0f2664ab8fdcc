#include "qzMacroExpander/LSLiteral.h"

#include <iterator>
#include <limits>
#include <utility>

#include "qzMacroExpander/src/LiteralErrors.h"
#include "qzUtils/StringExt.h"
#include "qzUtils/VornAssert.h"

namespace vorn {

// A conversion of 1e300 to float32 is defined because infinity is a float32.
static_assert(std::numeric_limits<float32>::is_iec559 && std::numeric_limits<float64>::is_iec559);

// ---- types and errors --------------------------------------------------------------------------

ConstStringZ TypeToString(ELiteral type) {
    switch (type) {
    case LITERAL_UNDEF:
        return "undef";
    case LITERAL_VOID:
        return "void";
    case LITERAL_BOOL:
        return "bool";
    case LITERAL_INT64:
        return "int64";
    case LITERAL_FLOAT64:
        return "float64";
    case LITERAL_CHAR:
        return "char";
    case LITERAL_STRING:
        return "string";
    }
    DeclareUnreachable();
}

LiteralException::~LiteralException() = default;

void LiteralException::Write(xostream& os) const {
    os << m_description;
}

void ThrowNoConversion(ConstStringZ srcType, ConstStringZ dstType) {
    ThrowLiteralError("No conversion from ", srcType, " to ", dstType);
}

void ThrowNoConversion(ELiteral srcType, ConstStringZ dstType) {
    ThrowNoConversion(TypeToString(srcType), dstType);
}

void ThrowNoImplicitConversion(ConstStringZ srcType, ConstStringZ dstType) {
    ThrowLiteralError("No implicit conversion from ", srcType, " to ", dstType);
}

void ThrowNoImplicitConversion(ELiteral srcType, ConstStringZ dstType) {
    ThrowNoImplicitConversion(TypeToString(srcType), dstType);
}

void ThrowIncompatibleTypesException(const LSLiteral& x, const LSLiteral& y, ConstStringZ opName) {
    ThrowLiteralError("Incompatible types (", TypeToString(x.m_type), " and ",
                      TypeToString(y.m_type), ") for ", opName, " operation");
}

void ThrowIncompatibleTypeException(const LSLiteral& x, ConstStringZ opName) {
    ThrowLiteralError("Incompatible type (", TypeToString(x.m_type), ") for unary ", opName,
                      " operation");
}

// ---- the coercion table ------------------------------------------------------------------------

namespace {

enum ETarget { TO_BOOL, TO_INT64, TO_FLOAT32, TO_FLOAT64, TO_CHAR, TO_STRING };

constexpr ConstStringZ s_targetNames[] = {
    "bool", "int64", "float32", "float64", "char", "string",
};

enum ECoercion : uint8 {
    EXACT,     // the value itself
    FREE,      // always converts, if need be rounded
    CAST,      // converts with allowDataLoss only
    NONE,      // never converts
    EXPECTED,  // never converts: there is no value yet
    BY_VALUE,  // AsChar decides by the value
};

constexpr ECoercion s_coercions[][std::size(s_targetNames)] = {
  // clang-format off
    //             AsBool    AsInt64   AsFloat32 AsFloat64 AsChar    AsString
    /* undef   */ {EXPECTED, EXPECTED, EXPECTED, EXPECTED, EXPECTED, EXPECTED},
    /* void    */ {NONE,     NONE,     NONE,     NONE,     NONE,     NONE    },
    /* bool    */ {EXACT,    CAST,     CAST,     CAST,     NONE,     CAST    },
    /* int64   */ {CAST,     EXACT,    FREE,     FREE,     BY_VALUE, CAST    },
    /* float64 */ {CAST,     CAST,     FREE,     EXACT,    NONE,     CAST    },
    /* char    */ {NONE,     CAST,     NONE,     NONE,     EXACT,    FREE    },
    /* string  */ {NONE,     NONE,     NONE,     NONE,     BY_VALUE, EXACT   },
  // clang-format on
};

static_assert(std::size(s_coercions) == LITERAL_STRING + 1);

ECoercion CoercionOf(ELiteral type, ETarget target) {
    if (type < LITERAL_UNDEF || type > LITERAL_STRING)
        DeclareUnreachable();
    return s_coercions[type][target];
}

// ---- values ------------------------------------------------------------------------------------

constexpr float64 s_twoToThe63 = 9223372036854775808.0;

// Toward zero; what has no int64, a NaN included, gives the lowest one.
int64 TruncateToInt64(float64 value) {
    const bool fits = value >= -s_twoToThe63 && value < s_twoToThe63;
    return fits ? static_cast<int64>(value) : std::numeric_limits<int64>::min();
}

// A bool, number or char as a T.
template <class T>
T ValueAs(const LSLiteral& x) {
    switch (x.m_type) {
    case LITERAL_BOOL:
        return static_cast<T>(x.m_bool);
    case LITERAL_INT64:
        return static_cast<T>(x.m_int64);
    case LITERAL_FLOAT64:
        if constexpr (std::is_same_v<T, int64>)
            return TruncateToInt64(x.m_float64);
        else
            return static_cast<T>(x.m_float64);
    case LITERAL_CHAR:
        return static_cast<T>(static_cast<uint8>(x.m_char));
    default:
        DeclareUnreachable();
    }
}

template <>
xstring ValueAs<xstring>(const LSLiteral& x) {
    switch (x.m_type) {
    case LITERAL_BOOL:
        return x.m_bool ? "true" : "false";
    case LITERAL_INT64:
        return ToString(x.m_int64);
    case LITERAL_FLOAT64:
        return ToString(x.m_float64);
    case LITERAL_CHAR:
        return xstring(&x.m_char, &x.m_char + 1);
    case LITERAL_STRING:
        return x.m_string;
    default:
        DeclareUnreachable();
    }
}

// Stores rhs, the value already converted, if data may be lost.
template <class T>
bool ConvertValue(T& v, T rhs, bool allowDataLoss, bool throwExceptions, ELiteral srcType,
                  ConstStringZ dstType) {
    if (allowDataLoss)
        v = std::move(rhs);
    else if (throwExceptions)
        ThrowNoImplicitConversion(srcType, dstType);
    return allowDataLoss;
}

// Converts as the table says.
template <class T>
bool Convert(const LSLiteral& x, T& v, ETarget target, bool allowDataLoss, bool throwExceptions) {
    const ConstStringZ dstType = s_targetNames[target];
    switch (CoercionOf(x.m_type, target)) {
    case EXACT:
    case FREE:
        v = ValueAs<T>(x);
        return true;
    case CAST:
        return ConvertValue(v, ValueAs<T>(x), allowDataLoss, throwExceptions, x.m_type, dstType);
    case NONE:
        if (throwExceptions)
            ThrowNoConversion(x.m_type, dstType);
        return false;
    case EXPECTED:
        if (throwExceptions)
            ThrowLiteralError("Expected ", dstType);
        return false;
    case BY_VALUE:
        break;
    }
    DeclareUnreachable();
}

// Kept: this rounds the value a second time instead of comparing it with v, so it rejects none,
// be it 9007199254740993. That each int64 promotes to a float is what mixed arithmetic rests on.
template <class T>
bool CheckPotentiallyLossyConversion(T& v, int64 value) {
    v = static_cast<T>(value);
    return v == static_cast<T>(value);
}

// Kept: the type errors are those of AsInt64 and name int64, and the low bits of a value out of
// range stay in v.
template <class T>
bool CheckPotentiallyLossyConversionForInteger(const LSLiteral& x, T& v, bool allowDataLoss,
                                               bool throwExceptions, ConstStringZ dstType) {
    int64 value = 0;
    if (!x.AsInt64(value, allowDataLoss, throwExceptions))
        return false;
    v = static_cast<T>(value);
    if (allowDataLoss || std::in_range<T>(value))
        return true;
    if (throwExceptions)
        ThrowNoImplicitConversionFromValue(value, dstType);
    return false;
}

// Freely for a value that is a byte, and as a cast by its low bits.
bool CharOfInt64(int64 value, xchar& v, bool allowDataLoss, bool throwExceptions) {
    const bool accepted = allowDataLoss || std::in_range<uint8>(value);
    if (!accepted && throwExceptions)
        ThrowNoImplicitConversionFromValue(value, s_targetNames[TO_CHAR]);
    v = static_cast<xchar>(value);
    return accepted;
}

// As a cast alone, and only of one byte.
// Kept: the error is that of an implicit conversion even where a cast was asked for.
bool CharOfString(const xstring& value, xchar& v, bool allowDataLoss, bool throwExceptions) {
    const bool accepted = allowDataLoss && value.size() == 1;
    if (accepted)
        v = value[0];
    else if (throwExceptions)
        ThrowNoImplicitConversionFromValue(value, s_targetNames[TO_CHAR]);
    return accepted;
}

}  // namespace

// ---- the conversion family ---------------------------------------------------------------------

bool LSLiteral::AsBool(bool& v, bool allowDataLoss, bool throwExceptions) const {
    return Convert(*this, v, TO_BOOL, allowDataLoss, throwExceptions);
}

bool LSLiteral::AsInt8(int8& v, bool allowDataLoss, bool throwExceptions) const {
    return CheckPotentiallyLossyConversionForInteger(*this, v, allowDataLoss, throwExceptions,
                                                     "int8");
}

bool LSLiteral::AsInt16(int16& v, bool allowDataLoss, bool throwExceptions) const {
    return CheckPotentiallyLossyConversionForInteger(*this, v, allowDataLoss, throwExceptions,
                                                     "int16");
}

bool LSLiteral::AsInt32(int32& v, bool allowDataLoss, bool throwExceptions) const {
    return CheckPotentiallyLossyConversionForInteger(*this, v, allowDataLoss, throwExceptions,
                                                     "int32");
}

bool LSLiteral::AsInt64(int64& v, bool allowDataLoss, bool throwExceptions) const {
    return Convert(*this, v, TO_INT64, allowDataLoss, throwExceptions);
}

bool LSLiteral::AsUInt8(uint8& v, bool allowDataLoss, bool throwExceptions) const {
    return CheckPotentiallyLossyConversionForInteger(*this, v, allowDataLoss, throwExceptions,
                                                     "uint8");
}

bool LSLiteral::AsUInt16(uint16& v, bool allowDataLoss, bool throwExceptions) const {
    return CheckPotentiallyLossyConversionForInteger(*this, v, allowDataLoss, throwExceptions,
                                                     "uint16");
}

bool LSLiteral::AsUInt32(uint32& v, bool allowDataLoss, bool throwExceptions) const {
    return CheckPotentiallyLossyConversionForInteger(*this, v, allowDataLoss, throwExceptions,
                                                     "uint32");
}

// Kept: no range is checked and no type named after it, so -1 passes as the highest uint64.
bool LSLiteral::AsUInt64(uint64& v, bool allowDataLoss, bool throwExceptions) const {
    int64 value = 0;
    if (!AsInt64(value, allowDataLoss, throwExceptions))
        return false;
    v = static_cast<uint64>(value);
    return true;
}

bool LSLiteral::AsFloat32(float32& v, bool allowDataLoss, bool throwExceptions) const {
    if (m_type == LITERAL_INT64)
        return CheckPotentiallyLossyConversion(v, m_int64);
    return Convert(*this, v, TO_FLOAT32, allowDataLoss, throwExceptions);
}

bool LSLiteral::AsFloat64(float64& v, bool allowDataLoss, bool throwExceptions) const {
    if (m_type == LITERAL_INT64)
        return CheckPotentiallyLossyConversion(v, m_int64);
    return Convert(*this, v, TO_FLOAT64, allowDataLoss, throwExceptions);
}

bool LSLiteral::AsChar(xchar& v, bool allowDataLoss, bool throwExceptions) const {
    if (m_type == LITERAL_INT64)
        return CharOfInt64(m_int64, v, allowDataLoss, throwExceptions);
    if (m_type == LITERAL_STRING)
        return CharOfString(m_string, v, allowDataLoss, throwExceptions);
    return Convert(*this, v, TO_CHAR, allowDataLoss, throwExceptions);
}

bool LSLiteral::AsString(xstring& v, bool allowDataLoss, bool throwExceptions) const {
    if (m_type == LITERAL_STRING && &v == &m_string)
        return true;
    return Convert(*this, v, TO_STRING, allowDataLoss, throwExceptions);
}

// ---- other members -----------------------------------------------------------------------------

LSLiteral LSLiteral::MakeChar(xchar value) {
    LSLiteral x;
    x.m_type = LITERAL_CHAR;
    x.m_char = value;
    return x;
}

ssize_t LSLiteral::GetLength() const {
    if (m_type != LITERAL_STRING)
        ThrowLiteralError("len() not available on ", TypeToString(m_type));
    return m_string.size();
}

// Kept: the language has no places to assign to. Every assignment ends here, once its right side
// has been computed.
void LSLiteral::Assign(const LSLiteral&) {
    const bool value = m_type != LITERAL_UNDEF && m_type != LITERAL_VOID;
    ThrowLiteralError("Can't assign to ", TypeToString(m_type), value ? " r-value" : "");
}

}  // namespace vorn
