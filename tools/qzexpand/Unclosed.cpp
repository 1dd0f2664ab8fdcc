#include "Unclosed.h"

#include <vector>

#include "qzMacroExpander/LSToken.h"
#include "qzUtils/StringExt.h"

namespace qztools {

using namespace vorn;

namespace {

// What closes the bracket that a token opens; TOKEN_UNDEF where it opens none.
EToken ClosingBracket(const LSToken& token) {
    switch (token.GetType()) {
    case TOKEN_LEFT_PAREN:
        return TOKEN_RIGHT_PAREN;
    case TOKEN_LEFT_CURLY:
        return TOKEN_RIGHT_CURLY;
    case TOKEN_LEFT_SQUARE:
        return TOKEN_RIGHT_SQUARE;
    default:
        return TOKEN_UNDEF;
    }
}

bool IsClosingBracket(const LSToken& token) {
    return token == TOKEN_RIGHT_PAREN || token == TOKEN_RIGHT_CURLY || token == TOKEN_RIGHT_SQUARE;
}

// The brackets of a text that stay open, outermost first. Empty as well where one is closed that
// is not open. Throws LexScannerException for a text that cannot be read as tokens.
std::vector<LSToken> FindOpenBrackets(SubString rest) {
    std::vector<LSToken> open;
    for (LSToken token = LsScanToken(rest, false); token != TOKEN_END;
         token = LsScanToken(rest, false)) {
        if (ClosingBracket(token) != TOKEN_UNDEF) {
            open.push_back(token);
        } else if (IsClosingBracket(token)) {
            if (open.empty() || ClosingBracket(open.back()) != token.GetType())
                return {};
            open.pop_back();
        }
    }
    return open;
}

}  // namespace

std::string DescribeOpenComment(SubString text) {
    SubString rest = text;
    SubString token = rest;
    try {
        do {
            ScanWhiteSpace(rest);
            token = rest;
        } while (LsScanToken(rest, true) != TOKEN_END);
    } catch (const LexScannerException&) {
        if (token.size() >= 2 && *token == '@')
            ++token;
        if (token.size() >= 2 && token[0] == '/' && token[1] == '*')
            return "the /* in line " + std::to_string(GetLineNumber(text, token.m_p1))
                   + " begins a comment that is not closed";
    }
    return {};
}

std::string DescribeOpenBracket(SubString text) {
    try {
        const std::vector<LSToken> open = FindOpenBrackets(text);
        if (open.size() != 1)
            return {};
        const char* bracket = open.front().m_str.m_p1;
        return std::string("the ") + *bracket + " in line "
               + std::to_string(GetLineNumber(text, bracket)) + " is not closed";
    } catch (const LexScannerException&) {
        return {};
    }
}

}  // namespace qztools
