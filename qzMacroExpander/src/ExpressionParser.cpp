#include "qzMacroExpander/ExpressionParser.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <type_traits>
#include <utility>

#include "qzMacroExpander/src/ScannerErrors.h"

// A rule of the grammar keeps nothing in its stack frame but its arguments, so that brackets can
// nest deeply: one level of them is a frame of every rule. Whatever needs room, the literal of a
// right operand above all, lives in a helper that is marked noinline.

namespace vorn {

namespace {

// ---- errors ------------------------------------------------------------------------------------

[[noreturn, gnu::cold, gnu::noinline]] void Throw(const ParserBase& parser,
                                                  ConstStringZ description) {
    throw LexScannerException(description, parser.m_token);
}

[[noreturn, gnu::cold, gnu::noinline]] void Throw(const ParserBase& parser,
                                                  const LiteralException& e) {
    Throw(parser, e.m_description.c_str());
}

[[noreturn]] void ThrowUnexpected(const ParserBase& parser) {
    ThrowScannerError(parser.m_token, "Unexpected ", parser.m_token, " after ", parser.m_prevToken,
                      " in expression");
}

[[noreturn]] void ThrowWhenRead(const ParserBase& parser, ConstStringZ expectedWhenRead) {
    ThrowScannerError(parser.m_token, expectedWhenRead, parser.m_token);
}

[[noreturn]] void ThrowLogOf(const ParserBase& parser, float64 value) {
    ThrowScannerError(parser.m_token, "Can't take log of value ", value);
}

}  // namespace

// ---- typed entry points ------------------------------------------------------------------------

namespace {

template <class T>
using Conversion = bool (LSLiteral::*)(T& v, bool allowDataLoss, bool throwExceptions) const;

// The byte of a string of one byte. The language writes characters so: 'a' is a string.
bool IsOneByteString(const LSLiteral& x, xchar& v) {
    const bool accepted = x == LITERAL_STRING && x.m_string.size() == 1;
    if (accepted)
        v = x.m_string[0];
    return accepted;
}

template <class T>
T Parse(ExpressionParser& parser, Conversion<T> conversion, bool allowDataLoss,
        ConstStringZ expectedWhenRead) {
    try {
        LSLiteral x;
        parser.UnsafeParseExpression(x);
        if (x == LITERAL_UNDEF)
            ThrowWhenRead(parser, expectedWhenRead);
        T v{};
        if constexpr (std::is_same_v<T, xchar>) {
            if (IsOneByteString(x, v))
                return v;
        }
        (x.*conversion)(v, allowDataLoss, true);
        return v;
    } catch (const LiteralException& e) {
        Throw(parser, e);
    }
}

}  // namespace

bool ExpressionParser::ParseBool(bool allowDataLoss) {
    return Parse<bool>(*this, &LSLiteral::AsBool, allowDataLoss, "Expected bool when read ");
}

int8 ExpressionParser::ParseInt8(bool allowDataLoss) {
    return Parse<int8>(*this, &LSLiteral::AsInt8, allowDataLoss, "Expected int8 when read ");
}

int16 ExpressionParser::ParseInt16(bool allowDataLoss) {
    return Parse<int16>(*this, &LSLiteral::AsInt16, allowDataLoss, "Expected int16 when read ");
}

int32 ExpressionParser::ParseInt32(bool allowDataLoss) {
    return Parse<int32>(*this, &LSLiteral::AsInt32, allowDataLoss, "Expected int32 when read ");
}

int64 ExpressionParser::ParseInt64(bool allowDataLoss) {
    return Parse<int64>(*this, &LSLiteral::AsInt64, allowDataLoss, "Expected int64 when read ");
}

uint8 ExpressionParser::ParseUInt8(bool allowDataLoss) {
    return Parse<uint8>(*this, &LSLiteral::AsUInt8, allowDataLoss, "Expected uint8 when read ");
}

uint16 ExpressionParser::ParseUInt16(bool allowDataLoss) {
    return Parse<uint16>(*this, &LSLiteral::AsUInt16, allowDataLoss, "Expected uint16 when read ");
}

uint32 ExpressionParser::ParseUInt32(bool allowDataLoss) {
    return Parse<uint32>(*this, &LSLiteral::AsUInt32, allowDataLoss, "Expected uint32 when read ");
}

uint64 ExpressionParser::ParseUInt64(bool allowDataLoss) {
    return Parse<uint64>(*this, &LSLiteral::AsUInt64, allowDataLoss, "Expected uint64 when read ");
}

float32 ExpressionParser::ParseFloat32(bool allowDataLoss) {
    return Parse<float32>(*this, &LSLiteral::AsFloat32, allowDataLoss,
                          "Expected float32 when read ");
}

float64 ExpressionParser::ParseFloat64(bool allowDataLoss) {
    return Parse<float64>(*this, &LSLiteral::AsFloat64, allowDataLoss,
                          "Expected float64 when read ");
}

xchar ExpressionParser::ParseChar(bool allowDataLoss) {
    return Parse<xchar>(*this, &LSLiteral::AsChar, allowDataLoss, "Expected character when read ");
}

xstring ExpressionParser::ParseString(bool allowDataLoss) {
    return Parse<xstring>(*this, &LSLiteral::AsString, allowDataLoss, "Expected string when read ");
}

float64 ExpressionParser::ParseFloat64Arg() {
    ReadNextToken();
    ParseGivenToken(TOKEN_LEFT_PAREN, "(");
    const float64 value = ParseFloat64(false);
    ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
    return value;
}

// ---- the precedence ladder ---------------------------------------------------------------------

namespace {

using Rule = void (ExpressionParser::*)(LSLiteral&);
using BinaryOperation = LSLiteral (*)(const LSLiteral& x, const LSLiteral& y);

LSLiteral Equal(const LSLiteral& x, const LSLiteral& y) {
    return IsEqual(x, y);
}

LSLiteral NotEqual(const LSLiteral& x, const LSLiteral& y) {
    return !IsEqual(x, y);
}

LSLiteral Less(const LSLiteral& x, const LSLiteral& y) {
    return IsLess(x, y);
}

LSLiteral LessEqual(const LSLiteral& x, const LSLiteral& y) {
    return IsLessThanOrEqual(x, y);
}

LSLiteral Greater(const LSLiteral& x, const LSLiteral& y) {
    return IsLess(y, x);
}

LSLiteral GreaterEqual(const LSLiteral& x, const LSLiteral& y) {
    return IsLessThanOrEqual(y, x);
}

enum ELevel : uint8 {
    NO_LEVEL,
    LOGICAL_OR = 3,  // the levels above are no loops over binary operators
    LOGICAL_AND,
    BITWISE_OR,
    BITWISE_EX_OR,
    BITWISE_AND,
    EQUALITY,
    RELATIONAL,
    SHIFT,
    ADDITIVE,
    MULTIPLICATIVE,
    POWER,
};

struct BinaryOperator {
    ELevel level;
    EToken token;
    Rule operand;  // reads the right operand
    BinaryOperation operation;
};

using P = ExpressionParser;

// clang-format off
constexpr BinaryOperator s_binaryOperators[] = {
    {LOGICAL_OR,     TOKEN_DBL_VLINE,     &P::ParseLogicalAndExpression,     operator||  },
    {LOGICAL_AND,    TOKEN_DBL_AMPERSAND, &P::ParseBitwiseOrExpression,      operator&&  },
    {BITWISE_OR,     TOKEN_VLINE,         &P::ParseBitwiseExOrExpression,    operator|   },
    {BITWISE_EX_OR,  TOKEN_CARET,         &P::ParseBitwiseAndExpression,     operator^   },
    {BITWISE_AND,    TOKEN_AMPERSAND,     &P::ParseEqualityExpression,       operator&   },
    {EQUALITY,       TOKEN_DBL_EQUAL,     &P::ParseRelationalExpression,     Equal       },
    {EQUALITY,       TOKEN_EXCLAM_EQUAL,  &P::ParseRelationalExpression,     NotEqual    },
    {RELATIONAL,     TOKEN_LESS,          &P::ParseShiftExpression,          Less        },
    {RELATIONAL,     TOKEN_LESS_EQUAL,    &P::ParseShiftExpression,          LessEqual   },
    {RELATIONAL,     TOKEN_GREATER,       &P::ParseShiftExpression,          Greater     },
    {RELATIONAL,     TOKEN_GREATER_EQUAL, &P::ParseShiftExpression,          GreaterEqual},
    {SHIFT,          TOKEN_DBL_LESS,      &P::ParseAdditiveExpression,       operator<<  },
    {SHIFT,          TOKEN_DBL_GREATER,   &P::ParseAdditiveExpression,       operator>>  },
    {ADDITIVE,       TOKEN_PLUS,          &P::ParseMultiplicativeExpression, operator+   },
    {ADDITIVE,       TOKEN_MINUS,         &P::ParseMultiplicativeExpression, operator-   },
    {MULTIPLICATIVE, TOKEN_ASTERISK,      &P::ParsePowerExpression,          operator*   },
    {MULTIPLICATIVE, TOKEN_FORWARD_SLASH, &P::ParsePowerExpression,          operator/   },
    {MULTIPLICATIVE, TOKEN_PERCENT,       &P::ParsePowerExpression,          operator%   },
    {POWER,          TOKEN_DBL_CARET,     &P::ParseUnaryExpression,          Power       },
};
// clang-format on

struct AssignmentOperator {
    EToken token;
    BinaryOperation operation;
};

LSLiteral RightOperand(const LSLiteral&, const LSLiteral& y) {
    return y;
}

// clang-format off
constexpr AssignmentOperator s_assignmentOperators[] = {
    {TOKEN_EQUAL,               RightOperand},
    {TOKEN_PLUS_EQUAL,          operator+   },
    {TOKEN_MINUS_EQUAL,         operator-   },
    {TOKEN_ASTERISK_EQUAL,      operator*   },
    {TOKEN_SLASH_EQUAL,         operator/   },
    {TOKEN_PERCENT_EQUAL,       operator%   },
    {TOKEN_AMPERSAND_EQUAL,     operator&   },
    {TOKEN_VLINE_EQUAL,         operator|   },
    {TOKEN_CARET_EQUAL,         operator^   },
    {TOKEN_DBL_LESS_EQUAL,      operator<<  },
    {TOKEN_DBL_GREATER_EQUAL,   operator>>  },
    {TOKEN_DBL_AMPERSAND_EQUAL, operator&&  },
    {TOKEN_DBL_VLINE_EQUAL,     operator||  },
    {TOKEN_DBL_CARET_EQUAL,     Power       },
};
// clang-format on

struct PrefixOperator {
    EToken token;
    LSLiteral (*operation)(const LSLiteral& x);
};

LSLiteral Not(const LSLiteral& x) {
    return !x;
}

// clang-format off
constexpr PrefixOperator s_prefixOperators[] = {
    {TOKEN_PLUS,   operator+},
    {TOKEN_MINUS,  operator-},
    {TOKEN_TILDE,  operator~},
    {TOKEN_EXCLAM, Not      },
};
// clang-format on

// The entry of a table for a token, or null.
template <class Entry, std::size_t n>
constexpr const Entry* Find(const Entry (&table)[n], EToken token) {
    for (const Entry& entry : table) {
        if (entry.token == token)
            return &entry;
    }
    return nullptr;
}

// The level of each token from TOKEN_END on. Every operand is asked at every level whether its
// operator follows.
constexpr auto s_levels = [] {
    std::array<ELevel, TOKEN_HASH - TOKEN_END + 1> levels{};
    for (const BinaryOperator& binary : s_binaryOperators)
        levels[static_cast<std::size_t>(binary.token - TOKEN_END)] = binary.level;
    return levels;
}();

bool IsOperatorOf(ELevel level, const LSToken& token) {
    const auto index = static_cast<std::size_t>(token.m_type - TOKEN_END);
    return index < s_levels.size() && s_levels[index] == level;
}

[[gnu::noinline]] void ParseRightOperand(ExpressionParser& parser, LSLiteral& literal) {
    const BinaryOperator& binary = *Find(s_binaryOperators, parser.m_token.m_type);
    parser.ReadNextToken();
    LSLiteral y;
    (parser.*binary.operand)(y);
    // Strings are joined in place, so that the time for a chain of them grows with its length.
    if (binary.token == TOKEN_PLUS && literal == LITERAL_STRING && y == LITERAL_STRING)
        literal.m_string += y.m_string;
    else
        literal = binary.operation(literal, y);
}

// Kept: the value is computed before the assignment is refused, so 1 /= 0 is a division by zero.
[[gnu::noinline]] void ParseAssignment(ExpressionParser& parser, LSLiteral& literal) {
    const AssignmentOperator& assignment = *Find(s_assignmentOperators, parser.m_token.m_type);
    parser.ReadNextToken();
    LSLiteral y;
    parser.ParseConditionalExpression(y);
    literal.Assign(assignment.operation(literal, y));
    literal.m_type = LITERAL_VOID;  // what an assignment yields, once there is a place to assign to
}

// Kept: both branches are evaluated, and before the condition is found to be no bool.
[[gnu::noinline]] void ParseBranches(ExpressionParser& parser, LSLiteral& literal) {
    LSLiteral e1;
    LSLiteral e2;
    parser.ReadNextToken();
    parser.ParseExpression(e1);
    parser.ParseGivenToken(TOKEN_COLON, ":");
    parser.ParseConditionalExpression(e2);
    literal = std::move(literal.AsBool(false) ? e1 : e2);
}

[[gnu::noinline]] void ParsePrefixOperator(ExpressionParser& parser, LSLiteral& literal) {
    const PrefixOperator& prefix = *Find(s_prefixOperators, parser.m_token.m_type);
    parser.ReadNextToken();
    parser.ParseUnaryExpression(literal);
    literal = prefix.operation(literal);
}

[[gnu::noinline]] void ParseIndex(ExpressionParser& parser, LSLiteral& literal) {
    parser.ReadNextToken();
    LSLiteral index;
    parser.ParseExpression(index);
    literal = literal[index];
    parser.ParseGivenToken(TOKEN_RIGHT_SQUARE, "]");
}

}  // namespace

bool IsAssignmentToken(EToken tk) {
    return Find(s_assignmentOperators, tk) != nullptr;
}

void ExpressionParser::ParseExpression(LSLiteral& literal) {
    try {
        ParseAssignmentExpression(literal);  // as UnsafeParseExpression does, for one frame less
    } catch (const LiteralException& e) {
        Throw(*this, e);
    }
}

void ExpressionParser::UnsafeParseExpression(LSLiteral& literal) {
    ParseAssignmentExpression(literal);
}

void ExpressionParser::ParseAssignmentExpression(LSLiteral& literal) {
    ParseConditionalExpression(literal);
    while (IsAssignmentToken(m_token.m_type))
        ParseAssignment(*this, literal);
}

void ExpressionParser::ParseConditionalExpression(LSLiteral& literal) {
    ParseLogicalOrExpression(literal);
    if (m_token == TOKEN_QUESTION)
        ParseBranches(*this, literal);
}

void ExpressionParser::ParseLogicalOrExpression(LSLiteral& literal) {
    ParseLogicalAndExpression(literal);
    while (IsOperatorOf(LOGICAL_OR, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseLogicalAndExpression(LSLiteral& literal) {
    ParseBitwiseOrExpression(literal);
    while (IsOperatorOf(LOGICAL_AND, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseBitwiseOrExpression(LSLiteral& literal) {
    ParseBitwiseExOrExpression(literal);
    while (IsOperatorOf(BITWISE_OR, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseBitwiseExOrExpression(LSLiteral& literal) {
    ParseBitwiseAndExpression(literal);
    while (IsOperatorOf(BITWISE_EX_OR, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseBitwiseAndExpression(LSLiteral& literal) {
    ParseEqualityExpression(literal);
    while (IsOperatorOf(BITWISE_AND, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseEqualityExpression(LSLiteral& literal) {
    ParseRelationalExpression(literal);
    while (IsOperatorOf(EQUALITY, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseRelationalExpression(LSLiteral& literal) {
    ParseShiftExpression(literal);
    while (IsOperatorOf(RELATIONAL, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseShiftExpression(LSLiteral& literal) {
    ParseAdditiveExpression(literal);
    while (IsOperatorOf(SHIFT, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseAdditiveExpression(LSLiteral& literal) {
    ParseMultiplicativeExpression(literal);
    while (IsOperatorOf(ADDITIVE, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseMultiplicativeExpression(LSLiteral& literal) {
    ParsePowerExpression(literal);
    while (IsOperatorOf(MULTIPLICATIVE, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParsePowerExpression(LSLiteral& literal) {
    ParseUnaryExpression(literal);
    while (IsOperatorOf(POWER, m_token))
        ParseRightOperand(*this, literal);
}

void ExpressionParser::ParseUnaryExpression(LSLiteral& literal) {
    if (Find(s_prefixOperators, m_token.m_type) != nullptr)
        ParsePrefixOperator(*this, literal);
    else
        ParsePostFixExpression(literal);
}

void ExpressionParser::ParsePostFixExpression(LSLiteral& literal) {
    ParsePrimaryExpression(literal);
    while (m_token == TOKEN_LEFT_SQUARE)
        ParseIndex(*this, literal);
    if (m_token == TOKEN_LEFT_PAREN) {
        ReadNextToken();
        Throw(*this, "Function application currently not supported");
    }
    if (m_token == TOKEN_DOT) {
        ReadNextToken();
        Throw(*this, "Dot operator currently not supported");
    }
}

// ---- primaries ---------------------------------------------------------------------------------

namespace {

struct LiteralToken {
    EToken token;
    void (*read)(const LSToken& token, LSLiteral& literal);
};

void ReadInteger(const LSToken& token, LSLiteral& literal) {
    literal = token.GetLiteralInt64();
}

void ReadHexInteger(const LSToken& token, LSLiteral& literal) {
    literal = token.GetLiteralHexInt64();
}

void ReadFloat(const LSToken& token, LSLiteral& literal) {
    literal = token.GetLiteralDouble();
}

void ReadString(const LSToken& token, LSLiteral& literal) {
    literal.m_type = LITERAL_STRING;
    token.GetLiteralString(literal.m_string);
}

constexpr LiteralToken s_literalTokens[] = {
    {TOKEN_INTEGER,              ReadInteger   },
    {TOKEN_HEX_INTEGER,          ReadHexInteger},
    {TOKEN_FLOAT,                ReadFloat     },
    {TOKEN_SINGLE_QUOTED_STRING, ReadString    },
    {TOKEN_DOUBLE_QUOTED_STRING, ReadString    },
};

[[gnu::noinline]] void ParseLiteralToken(ExpressionParser& parser, LSLiteral& literal) {
    const LiteralToken* entry = Find(s_literalTokens, parser.m_token.m_type);
    if (entry == nullptr)
        ThrowUnexpected(parser);
    entry->read(parser.m_token, literal);
    parser.ReadNextToken();
}

}  // namespace

void ExpressionParser::ParsePrimaryExpression(LSLiteral& literal) {
    if (m_token == TOKEN_LEFT_PAREN) {
        ReadNextToken();
        ParseExpression(literal);
        ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
    } else if (m_token == TOKEN_IDENTIFIER) {
        ParsePrimaryIdentifierExpression(literal);
    } else {
        ParseLiteralToken(*this, literal);
    }
}

// ---- built-in names ----------------------------------------------------------------------------

namespace {

enum EForm {
    BARE,            // the name alone
    BRACKET,         // name(expression)
    FLOAT_ARGUMENT,  // name(expression), whose value must convert freely to float64
};

using Parser = const ExpressionParser&;
using Argument = const LSLiteral&;

struct BuiltInName {
    SubString name;
    EForm form;
    LSLiteral (*value)(Parser parser, Argument x);
};

LSLiteral Log(Parser parser, Argument x) {
    if (x.m_float64 <= 0.0)
        ThrowLogOf(parser, x.m_float64);
    return std::log(x.m_float64);
}

LSLiteral File(Parser parser, Argument) {
    xstring filename;
    ssize_t lineNumber = 0;
    parser.GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber);
    return filename;
}

LSLiteral Line(Parser parser, Argument) {
    xstring filename;
    ssize_t lineNumber = 0;
    parser.GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber);
    return lineNumber;
}

constexpr BuiltInName s_builtInNames[] = {
  // clang-format off
    {"false",     BARE,    [](Parser, Argument)   -> LSLiteral { return false; }},
    {"true",      BARE,    [](Parser, Argument)   -> LSLiteral { return true; }},
    {"len",       BRACKET, [](Parser, Argument x) -> LSLiteral { return x.GetLength(); }},
    {"is_bool",   BRACKET, [](Parser, Argument x) -> LSLiteral { return x == LITERAL_BOOL; }},
    {"is_char",   BRACKET, [](Parser, Argument x) -> LSLiteral { return x == LITERAL_CHAR; }},
    {"is_int",    BRACKET, [](Parser, Argument x) -> LSLiteral { return x == LITERAL_INT64; }},
    {"is_double", BRACKET, [](Parser, Argument x) -> LSLiteral { return x == LITERAL_FLOAT64; }},
    {"is_string", BRACKET, [](Parser, Argument x) -> LSLiteral { return x == LITERAL_STRING; }},
    {"bool",      BRACKET, [](Parser, Argument x) -> LSLiteral { return x.AsBool(true); }},
    {"char",      BRACKET, [](Parser, Argument x) { return LSLiteral::MakeChar(x.AsChar(true)); }},
    {"int",       BRACKET, [](Parser, Argument x) -> LSLiteral { return x.AsInt64(true); }},
    {"double",    BRACKET, [](Parser, Argument x) -> LSLiteral { return x.AsFloat64(true); }},
    {"string",    BRACKET, [](Parser, Argument x) -> LSLiteral { return x.AsString(true); }},
    {"sin", FLOAT_ARGUMENT, [](Parser, Argument x) -> LSLiteral { return std::sin(x.m_float64); }},
    {"cos", FLOAT_ARGUMENT, [](Parser, Argument x) -> LSLiteral { return std::cos(x.m_float64); }},
    {"tan", FLOAT_ARGUMENT, [](Parser, Argument x) -> LSLiteral { return std::tan(x.m_float64); }},
    {"exp", FLOAT_ARGUMENT, [](Parser, Argument x) -> LSLiteral { return std::exp(x.m_float64); }},
    {"log", FLOAT_ARGUMENT, Log},
    {"__FILE__",  BARE,    File},
    {"__LINE__",  BARE,    Line},
  // clang-format on
};

const BuiltInName& FindBuiltInName(const ParserBase& parser) {
    const auto it = std::find_if(
        std::begin(s_builtInNames), std::end(s_builtInNames),
        [&](const BuiltInName& candidate) { return candidate.name == parser.m_token.m_str; });
    if (it == std::end(s_builtInNames))
        ThrowUnexpected(parser);
    return *it;
}

}  // namespace

void ExpressionParser::ParsePrimaryIdentifierExpression(LSLiteral& literal) {
    const BuiltInName& builtIn = FindBuiltInName(*this);
    switch (builtIn.form) {
    case BARE:
        ReadNextToken();
        break;
    case BRACKET:
        ParseLiteralInBrackets(literal);
        break;
    case FLOAT_ARGUMENT:
        literal = ParseFloat64Arg();
        break;
    }
    literal = builtIn.value(*this, literal);
}

void ExpressionParser::ParseLiteralInBrackets(LSLiteral& literal) {
    ReadNextToken();
    ParseGivenToken(TOKEN_LEFT_PAREN, "(");
    ParseExpression(literal);
    ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
}

bool ExpressionParser::GetFilenameAndLineNumberAtCurrentPosition(xstring&, ssize_t&) const {
    return false;
}

}  // namespace vorn
