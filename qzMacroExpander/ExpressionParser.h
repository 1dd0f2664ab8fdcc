// The expression language: one recursive-descent parser, which evaluates while it reads.
//
// There is no tree and no skipping: each rule leaves the value of what it has read in its literal,
// and both branches of ?: and both operands of && and || are always evaluated. The parser knows
// no variables. Whoever has macros in an expression expands them first and hands in plain text.
//
//   ExpressionParser parser;
//   parser.Init(text);
//   const bool value = parser.ParseBool(false);
//   if (parser.GetTokenType() != TOKEN_END) ...  // what stands behind the expression
//
// Every fault is thrown as LexScannerException. Faults of evaluation lie at the token that was
// current when the operator ran, which is the one behind its right operand. The recursion is
// bounded by the stack alone. Texts and threads: see ParserBase.
#pragma once

#include "qzMacroExpander/LSLiteral.h"
#include "qzMacroExpander/ParserBase.h"

namespace vorn {

class ExpressionParser : public ParserBase {
public:
    // ---- typed entry points --------------------------------------------------------------------
    //
    // Each reads one expression from the current token on and converts its value by the member of
    // LSLiteral of that name; allowDataLoss has the meaning it has there. The first token that
    // cannot continue the expression stays current, for the caller to judge.

    bool ParseBool(bool allowDataLoss);
    int8 ParseInt8(bool allowDataLoss);
    int16 ParseInt16(bool allowDataLoss);
    int32 ParseInt32(bool allowDataLoss);
    int64 ParseInt64(bool allowDataLoss);
    uint8 ParseUInt8(bool allowDataLoss);
    uint16 ParseUInt16(bool allowDataLoss);
    uint32 ParseUInt32(bool allowDataLoss);
    uint64 ParseUInt64(bool allowDataLoss);
    float32 ParseFloat32(bool allowDataLoss);
    float64 ParseFloat64(bool allowDataLoss);
    // A string of one byte gives that byte, whatever allowDataLoss says.
    xchar ParseChar(bool allowDataLoss);
    xstring ParseString(bool allowDataLoss);

    // Passes over the current token, the name of a function, and reads a float in round brackets.
    float64 ParseFloat64Arg();

    // ---- the grammar ---------------------------------------------------------------------------
    //
    // Each rule replaces the value of its literal by that of what it reads.

    // Any expression.
    void ParseExpression(LSLiteral& literal);

    // The same, but a LiteralException of its operators passes through.
    void UnsafeParseExpression(LSLiteral& literal);

    // The levels, loosest first. All but ?: and the prefix operators group to the left.
    void ParseAssignmentExpression(LSLiteral& literal);   // = += -= *= ..., which always raise
    void ParseConditionalExpression(LSLiteral& literal);  // ?:
    void ParseLogicalOrExpression(LSLiteral& literal);    // ||
    void ParseLogicalAndExpression(LSLiteral& literal);   // &&
    void ParseBitwiseOrExpression(LSLiteral& literal);    // |
    void ParseBitwiseExOrExpression(LSLiteral& literal);  // ^
    void ParseBitwiseAndExpression(LSLiteral& literal);   // &
    void ParseEqualityExpression(LSLiteral& literal);     // == !=
    void ParseRelationalExpression(LSLiteral& literal);   // < <= > >=
    void ParseShiftExpression(LSLiteral& literal);        // << >>, and -- which is the same as <<
    void ParseAdditiveExpression(LSLiteral& literal);     // + -
    void ParseMultiplicativeExpression(LSLiteral& literal);  // * / %
    void ParsePowerExpression(LSLiteral& literal);           // ^^
    void ParseUnaryExpression(LSLiteral& literal);           // + - ~ ! in front
    void ParsePostFixExpression(LSLiteral& literal);         // [index]
    void ParsePrimaryExpression(LSLiteral& literal);         // literals, names, ( )

    // true, false, __FILE__, __LINE__, and name(expression) for
    //   len is_bool is_char is_int is_double is_string   questions
    //   bool char int double string                      conversions, as casts
    //   sin cos tan exp log                              of a number
    // Any other identifier is an error.
    void ParsePrimaryIdentifierExpression(LSLiteral& literal);

    // Passes over the current token, a name, and reads an expression in round brackets.
    void ParseLiteralInBrackets(LSLiteral& literal);

    // What __FILE__ and __LINE__ report: nothing is known of where the text came from, so this
    // returns false and writes nothing.
    bool GetFilenameAndLineNumberAtCurrentPosition(xstring& filename, ssize_t& lineNumber) const;
};

// Whether a token is one of the 14 assignment operators.
bool IsAssignmentToken(EToken tk);

}  // namespace vorn
