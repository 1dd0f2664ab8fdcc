// The value that the expression language computes with, its conversions and its operators.
//
// A literal is a plain value: it owns its text, points nowhere and belongs to no variable. Any
// number of threads may use literals of their own at once.
//
// Whatever cannot be computed is raised as LiteralException, which has a message and no position;
// ExpressionParser adds the position. Operands survive unchanged. No operation on any value is
// undefined: integers wrap modulo 2^64, and a float that has no int64 converts to the lowest one.
#pragma once

#include <type_traits>

#include "qzUtils/IException.h"
#include "qzUtils/StringStream.h"

namespace vorn {

// The type of a literal. The names in the comments are those of TypeToString and of messages.
enum ELiteral {
    LITERAL_UNDEF,    // undef: nothing has been assigned yet
    LITERAL_VOID,     // void: an expression without a value
    LITERAL_BOOL,     // bool
    LITERAL_INT64,    // int64
    LITERAL_FLOAT64,  // float64
    LITERAL_CHAR,     // char: one byte
    LITERAL_STRING,   // string: bytes, of which any may be zero
};

static_assert(LITERAL_UNDEF == 0 && LITERAL_STRING == 6);

// The name of a type. Ends the process for a value that is no enumerator.
ConstStringZ TypeToString(ELiteral type);

// The error of conversions and operators. The message ends at its first zero byte.
class LiteralException : public IException {
public:
    xstring m_description;

    explicit LiteralException(ConstStringZ description) : m_description(description) {}
    LiteralException(const LiteralException&) = default;
    LiteralException& operator=(const LiteralException&) = default;
    ~LiteralException() override;

    // Writes the description alone.
    void Write(xostream& os) const override;
};

struct LSLiteral {
    ELiteral m_type = LITERAL_UNDEF;  // says which member of the union is live, if any
    union {
        bool m_bool;
        int64 m_int64 = 0;
        float64 m_float64;
        xchar m_char;
    };
    xstring m_string;  // the text of a LITERAL_STRING; empty for every other type

    LSLiteral() = default;
    // A bool, and nothing that merely converts to one, such as a pointer.
    template <class T, std::enable_if_t<std::is_same_v<T, bool>, int> = 0>
    LSLiteral(T value) : m_type(LITERAL_BOOL) {
        m_bool = value;
    }
    // Any integer type, a char included, gives a LITERAL_INT64.
    template <class T,
              std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, long> = 0>
    LSLiteral(T value) : m_type(LITERAL_INT64), m_int64(static_cast<int64>(value)) {}
    template <class T, std::enable_if_t<std::is_floating_point_v<T>, unsigned> = 0>
    LSLiteral(T value) : m_type(LITERAL_FLOAT64), m_float64(static_cast<float64>(value)) {}
    LSLiteral(const xstring& value) : m_type(LITERAL_STRING), m_string(value) {}
    // The only way to a LITERAL_CHAR.
    static LSLiteral MakeChar(xchar value);

    // These compare the type.
    bool operator==(ELiteral type) const { return m_type == type; }
    bool operator!=(ELiteral type) const { return m_type != type; }

    // The byte of a string at an index from 0, as a char. The index must be an int64; negative
    // ones do not count from the end. Raises for any other type, and for an index out of range.
    LSLiteral operator[](const LSLiteral& index) const;

    // The number of bytes of a string; raises for every other type.
    ssize_t GetLength() const;

    // Always raises: no expression denotes a place that could be assigned to.
    void Assign(const LSLiteral& rhs);

    // ---- conversions ---------------------------------------------------------------------------
    //
    //   from \ to   Bool      Int64,      Float32   Float64   Char      String
    //                         UInt64
    //   bool        exact     cast        cast      cast      -         cast
    //   int64       cast      exact       free      free      0 to 255  cast
    //   float64     cast      cast        free      exact     -         cast
    //   char        -         cast        -         -         exact     free
    //   string      -         -           -         -         cast      exact
    //
    // exact and free always succeed; a free one may round. cast succeeds with allowDataLoss only:
    // a number is true if it is not 0, a float is truncated toward zero, a char is 0 to 255.
    // From an int64, Char takes 0 to 255 freely and as a cast the low 8 bits of any value. From a
    // string it casts one of exactly one byte. Nothing else converts, and undef and void never do.
    //
    // Int8 to UInt32 go through Int64, and messages about the type say so. With allowDataLoss
    // they keep the low bits; without it, the value must be in range. UInt64 reinterprets the
    // bits of Int64 and has no range.

    // Converts to v; true when v holds the value. With throwExceptions a failure raises, without
    // it the result is false. v is then as it was, except that an int64 out of range has left its
    // low bits there.
    bool AsBool(bool& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsInt8(int8& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsInt16(int16& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsInt32(int32& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsInt64(int64& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsUInt8(uint8& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsUInt16(uint16& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsUInt32(uint32& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsUInt64(uint64& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsFloat32(float32& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsFloat64(float64& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsChar(xchar& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsString(xstring& v, bool allowDataLoss, bool throwExceptions) const;

    // Whether this very value converts without allowDataLoss.
    bool CoercibleToBool() const { return Coercible<bool>(&LSLiteral::AsBool); }
    bool CoercibleToInt8() const { return Coercible<int8>(&LSLiteral::AsInt8); }
    bool CoercibleToInt16() const { return Coercible<int16>(&LSLiteral::AsInt16); }
    bool CoercibleToInt32() const { return Coercible<int32>(&LSLiteral::AsInt32); }
    bool CoercibleToInt64() const { return Coercible<int64>(&LSLiteral::AsInt64); }
    bool CoercibleToUInt8() const { return Coercible<uint8>(&LSLiteral::AsUInt8); }
    bool CoercibleToUInt16() const { return Coercible<uint16>(&LSLiteral::AsUInt16); }
    bool CoercibleToUInt32() const { return Coercible<uint32>(&LSLiteral::AsUInt32); }
    bool CoercibleToUInt64() const { return Coercible<uint64>(&LSLiteral::AsUInt64); }
    bool CoercibleToFloat32() const { return Coercible<float32>(&LSLiteral::AsFloat32); }
    bool CoercibleToFloat64() const { return Coercible<float64>(&LSLiteral::AsFloat64); }
    bool CoercibleToChar() const { return Coercible<xchar>(&LSLiteral::AsChar); }
    bool CoercibleToString() const { return Coercible<xstring>(&LSLiteral::AsString); }

    // Converts or raises.
    bool AsBool(bool loss) const { return Get<bool>(&LSLiteral::AsBool, loss); }
    int8 AsInt8(bool loss) const { return Get<int8>(&LSLiteral::AsInt8, loss); }
    int16 AsInt16(bool loss) const { return Get<int16>(&LSLiteral::AsInt16, loss); }
    int32 AsInt32(bool loss) const { return Get<int32>(&LSLiteral::AsInt32, loss); }
    int64 AsInt64(bool loss) const { return Get<int64>(&LSLiteral::AsInt64, loss); }
    uint8 AsUInt8(bool loss) const { return Get<uint8>(&LSLiteral::AsUInt8, loss); }
    uint16 AsUInt16(bool loss) const { return Get<uint16>(&LSLiteral::AsUInt16, loss); }
    uint32 AsUInt32(bool loss) const { return Get<uint32>(&LSLiteral::AsUInt32, loss); }
    uint64 AsUInt64(bool loss) const { return Get<uint64>(&LSLiteral::AsUInt64, loss); }
    float32 AsFloat32(bool loss) const { return Get<float32>(&LSLiteral::AsFloat32, loss); }
    float64 AsFloat64(bool loss) const { return Get<float64>(&LSLiteral::AsFloat64, loss); }
    xchar AsChar(bool loss) const { return Get<xchar>(&LSLiteral::AsChar, loss); }
    xstring AsString(bool loss) const { return Get<xstring>(&LSLiteral::AsString, loss); }
    void AsString(xstring& v, bool loss) const { AsString(v, loss, true); }

private:
    template <class T>
    using Conversion = bool (LSLiteral::*)(T& v, bool allowDataLoss, bool throwExceptions) const;

    template <class T>
    bool Coercible(Conversion<T> conversion) const {
        T v{};
        return (this->*conversion)(v, false, false);
    }

    template <class T>
    T Get(Conversion<T> conversion, bool allowDataLoss) const {
        T v{};
        (this->*conversion)(v, allowDataLoss, true);
        return v;
    }
};

// ---- operators ---------------------------------------------------------------------------------
//
// Each takes the first kind of value, in the order given, to which both operands convert freely:
// as text (char, string), int (int64), float (int64, float64), bool (bool), or char (char, int64
// in 0 to 255). Where there is none, it raises "Incompatible types (".

LSLiteral operator+(const LSLiteral& x, const LSLiteral& y);  // text (joins), int, float
LSLiteral operator-(const LSLiteral& x, const LSLiteral& y);  // int, float
LSLiteral operator*(const LSLiteral& x, const LSLiteral& y);  // int, float
// int, truncated toward zero, or float. Raises "Division by zero error" or, of floats, "Division
// by zero".
LSLiteral operator/(const LSLiteral& x, const LSLiteral& y);
// int; takes the sign of x. Raises "Modulo zero error".
LSLiteral operator%(const LSLiteral& x, const LSLiteral& y);
// int; the low 6 bits of y count, and >> copies the sign bit.
LSLiteral operator<<(const LSLiteral& x, const LSLiteral& y);
LSLiteral operator>>(const LSLiteral& x, const LSLiteral& y);
LSLiteral operator|(const LSLiteral& x, const LSLiteral& y);  // int
LSLiteral operator&(const LSLiteral& x, const LSLiteral& y);  // int
LSLiteral operator^(const LSLiteral& x, const LSLiteral& y);  // int, exclusive or
// float; of two ints the result is truncated to an int. Raises where 0 has a negative exponent.
LSLiteral Power(const LSLiteral& x, const LSLiteral& y);

// Bools, and nothing else, by AsBool(false). The type of y counts only where x does not decide.
LSLiteral operator||(const LSLiteral& x, const LSLiteral& y);
LSLiteral operator&&(const LSLiteral& x, const LSLiteral& y);

LSLiteral operator+(const LSLiteral& x);  // int, float: x itself
LSLiteral operator-(const LSLiteral& x);  // int, float
LSLiteral operator~(const LSLiteral& x);  // int
bool operator!(const LSLiteral& x);       // by AsBool(false)

// text, in the order of its bytes as unsigned numbers, a prefix first; int; float.
bool IsLess(const LSLiteral& x, const LSLiteral& y);
bool IsLessThanOrEqual(const LSLiteral& x, const LSLiteral& y);

// The language's ==: bool, char, text, int, float.
bool IsEqual(const LSLiteral& x, const LSLiteral& y);

// The same type and the same value, with no conversion. A NaN is equal to nothing. Never raises.
bool operator==(const LSLiteral& x, const LSLiteral& y);

// ---- errors ------------------------------------------------------------------------------------

// "No conversion from ", "No implicit conversion from ".
[[noreturn]] void ThrowNoConversion(ConstStringZ srcType, ConstStringZ dstType);
[[noreturn]] void ThrowNoConversion(ELiteral srcType, ConstStringZ dstType);
[[noreturn]] void ThrowNoImplicitConversion(ConstStringZ srcType, ConstStringZ dstType);
[[noreturn]] void ThrowNoImplicitConversion(ELiteral srcType, ConstStringZ dstType);

// For an int64 or an xstring, which is written without quotes.
template <class T>
[[noreturn]] void ThrowNoImplicitConversionFromValue(const T& value, ConstStringZ dstType) {
    StringStream os(4096);
    os << "No implicit conversion from value " << value << " to " << dstType;
    throw LiteralException(os.GetString().c_str());
}

// "Incompatible types (", "Incompatible type (".
[[noreturn]] void ThrowIncompatibleTypesException(const LSLiteral& x, const LSLiteral& y,
                                                  ConstStringZ opName);
[[noreturn]] void ThrowIncompatibleTypeException(const LSLiteral& x, ConstStringZ opName);

}  // namespace vorn
