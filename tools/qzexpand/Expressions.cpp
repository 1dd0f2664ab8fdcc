#include "Expressions.h"

#include "qzMacroExpander/ExpressionParser.h"
#include "qzMacroExpander/MacroExpand.h"
#include "qzUtils/StringStream.h"

namespace qztools {

using namespace vorn;

namespace {

// An expression after its expansion.
struct Expanded {
    const SourceText& source;
    xstring text;
    OutputPieces pieces;

    Expanded(VarFrame& frame, const SourceText& from) : source(from) {
        VarFrame localFrame(&frame);
        MacroExpand(nullptr, &localFrame, source.text, 0, 0, text, pieces);
    }

    // Moves an error from the expanded text to its source. The end of the one is the end of the
    // other. Where the texts differ, the expanded one explains the message.
    void Explain(LexScannerException& e) const {
        if (e.m_pos == text.data_end())
            e.m_pos = source.text.data_end();
        else
            pieces.AdjustErrorPosition(e, text);
        if (text != source.text) {
            e.m_description += "\n    expression: ";
            e.m_description += text;
        }
    }
};

[[noreturn]] void ThrowTrailingToken(const LSToken& token) {
    StringStream os(4096);
    os << "Read " << token << " in middle of expression";
    throw LexScannerException(os.GetString(), token);
}

// Parses the whole of the text with one of the typed operations of the parser.
template <class Parse>
xstring Evaluate(VarFrame& frame, const SourceText& source, Parse parse) {
    const Expanded expanded(frame, source);
    try {
        ExpressionParser parser;
        parser.Init(expanded.text);
        const xstring value = parse(parser);
        if (parser.GetTokenType() != TOKEN_END)
            ThrowTrailingToken(parser.GetToken());
        return value;
    } catch (LexScannerException& e) {
        expanded.Explain(e);
        throw;
    }
}

xstring ParseAs(ELSVariable type, ExpressionParser& parser) {
    switch (type) {
    case LSV_BOOL:
        return parser.ParseBool(false) ? "true" : "false";
    case LSV_INT:
        return ToString(parser.ParseInt32(false));
    case LSV_DOUBLE:
        return ToString(parser.ParseFloat64(false));
    case LSV_CHAR: {
        xstring literal;
        MakeSingleQuotedLiteralChar(parser.ParseChar(false), literal);
        return literal;
    }
    default:
        return parser.ParseString(false);
    }
}

}  // namespace

xstring EvaluateAs(ELSVariable type, VarFrame& frame, const SourceText& source) {
    return Evaluate(frame, source,
                    [type](ExpressionParser& parser) { return ParseAs(type, parser); });
}

xstring EvaluateAsText(VarFrame& frame, const SourceText& source) {
    return Evaluate(frame, source,
                    [](ExpressionParser& parser) { return parser.ParseString(true); });
}

}  // namespace qztools
