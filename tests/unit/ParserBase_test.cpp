#include "qzMacroExpander/ParserBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/Text.h"

namespace vorn_test {
namespace {

using vorn::LSToken;
using vorn::ParserBase;
using vorn::SubString;
using vorn::xstring;
using enum vorn::EToken;

// A parser on a text, whose errors are located in that text.
struct Reader : ParserBase {
    explicit Reader(const char* text) : m_text(text) { Init(m_text.View()); }

    template <class Action>
    LexError ErrorOf(Action&& action) {
        return LexErrorOf(m_text.begin(), action);
    }

    HeapText m_text;
};

TEST(ParserBase, HasNoVirtualFunctions) {
    EXPECT_FALSE(std::is_polymorphic_v<ParserBase>);
}

TEST(ParserBase, StartsWithoutTokensAndText) {
    const ParserBase parser;
    EXPECT_TRUE(parser.m_stringForToken.empty());
    EXPECT_EQ(parser.m_token.m_type, TOKEN_UNDEF);
    EXPECT_EQ(parser.m_token.m_str.m_p1, nullptr);
    EXPECT_EQ(parser.m_prevToken.m_type, TOKEN_UNDEF);
    EXPECT_EQ(parser.m_prevToken.m_str.m_p1, nullptr);
    EXPECT_EQ(parser.m_str.m_p1, nullptr);
}

TEST(ParserBase, InitReadsTheFirstToken) {
    Reader reader("  first second");
    EXPECT_EQ(reader.m_token, LSToken(TOKEN_IDENTIFIER, "first"));
    EXPECT_EQ(reader.m_prevToken.m_type, TOKEN_UNDEF);
    EXPECT_EQ(Str(reader.m_str), " second");
    EXPECT_EQ(reader.GetTokenType(), TOKEN_IDENTIFIER);
    EXPECT_EQ(reader.GetTokenString(), "first");
}

TEST(ParserBase, InitKeepsAStoredTokenAsThePreviousOne) {
    ParserBase parser;
    parser.GetToken() = LSToken(TOKEN_LEFT_PAREN, "(");
    parser.Init("1");
    EXPECT_EQ(parser.m_prevToken, LSToken(TOKEN_LEFT_PAREN, "("));
    parser.Init("2");
    EXPECT_EQ(parser.m_prevToken, LSToken(TOKEN_INTEGER, "1"));
}

TEST(ParserBase, ReadNextTokenMovesTheTokensOnByOne) {
    Reader reader("a + b");
    reader.ReadNextToken();
    EXPECT_EQ(reader.m_prevToken, LSToken(TOKEN_IDENTIFIER, "a"));
    EXPECT_EQ(reader.m_token, LSToken(TOKEN_PLUS, "+"));
    reader.ReadNextToken();
    EXPECT_EQ(reader.m_prevToken, LSToken(TOKEN_PLUS, "+"));
    EXPECT_EQ(reader.m_token, LSToken(TOKEN_IDENTIFIER, "b"));
}

TEST(ParserBase, TheEndOfTheTextIsATokenThatRepeats) {
    Reader reader("a");
    reader.ReadNextToken();
    EXPECT_EQ(reader.GetTokenType(), TOKEN_END);
    EXPECT_EQ(reader.GetTokenString(), "");
    reader.ReadNextToken();
    EXPECT_EQ(reader.GetTokenType(), TOKEN_END);
    EXPECT_EQ(reader.m_prevToken.m_type, TOKEN_END);
}

TEST(ParserBase, PassesOverOrdinaryCommentsButNotOverMacroComments) {
    Reader reader("/* one */ a // two\n @/* three */ b");
    EXPECT_EQ(reader.m_token, LSToken(TOKEN_IDENTIFIER, "a"));
    reader.ReadNextToken();
    EXPECT_EQ(reader.m_token, LSToken(TOKEN_PREPROC_COMMENT, "@/* three */"));
}

TEST(ParserBase, ErrorsOfTheScannerPassThrough) {
    Reader reader("1 0x");
    EXPECT_EQ(reader.ErrorOf([&] { reader.ReadNextToken(); }),
              (LexError{"Expected hex digit (not EOS) after 0x", 4}));
}

TEST(ParserBase, ExpectedExceptionNamesBothTokensAndLiesAtTheCurrentOne) {
    Reader reader("left right");
    reader.ReadNextToken();
    EXPECT_EQ(reader.ErrorOf([&] { reader.ThrowExpectedException("something"); }),
              (LexError{"Expected something after left when read right", 5}));
}

TEST(ParserBase, ExpectedExceptionHasNoPathAndNoLine) {
    Reader reader("left");
    try {
        reader.ThrowExpectedException("something");
        FAIL() << "no error";
    } catch (const vorn::LexScannerException& e) {
        EXPECT_EQ(e.m_path, "");
        EXPECT_EQ(e.m_lineNumber, -1);
    }
}

TEST(ParserBase, ExpectedExceptionCallsATokenWithoutTextEos) {
    Reader reader("");
    EXPECT_EQ(reader.ErrorOf([&] { reader.ThrowExpectedException("something"); }),
              (LexError{"Expected something after EOS when read EOS", 0}));
}

TEST(ParserBase, ParseGivenTokenPassesOverATokenOfThatType) {
    Reader reader("( x");
    reader.ParseGivenToken(TOKEN_LEFT_PAREN, "(");
    EXPECT_EQ(reader.m_token, LSToken(TOKEN_IDENTIFIER, "x"));
    EXPECT_EQ(reader.ErrorOf([&] { reader.ParseGivenToken(TOKEN_RIGHT_PAREN, ")"); }),
              (LexError{"Expected ) after ( when read x", 2}));
    EXPECT_EQ(reader.m_token, LSToken(TOKEN_IDENTIFIER, "x"));
}

TEST(ParserBase, ParseIdentifierReturnsItsTextAndReadsOn) {
    Reader reader("name 5");
    EXPECT_EQ(reader.ParseIdentifier(), "name");
    EXPECT_EQ(reader.ErrorOf([&] { reader.ParseIdentifier(); }),
              (LexError{"Expected identifier after name when read 5", 5}));
}

TEST(ParserBase, ParsePathJoinsIdentifiersAndSlashes) {
    struct {
        const char* text;
        const char* path;
        const char* rest;  // the token that stays current
    } const rows[] = {
        {"a",             "a",    "" },
        {"a/b",           "a/b",  "" },
        {"a / b",         "a/b",  "" },
        {"a /* c */ / b", "a/b",  "" },
        {"a b",           "ab",   "" },
        {"a/b/",          "a/b/", "" },
        {"a / / b;",      "a//b", ";"},
        {"a.b",           "a",    "."},
        {"a/b 5",         "a/b",  "5"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        Reader reader(row.text);
        EXPECT_EQ(reader.ParsePath(), row.path);
        EXPECT_EQ(reader.GetTokenString(), row.rest);
    }
}

TEST(ParserBase, ParsePathDoesNotStartWithASlash) {
    Reader reader("/a");
    EXPECT_EQ(reader.ErrorOf([&] { reader.ParsePath(); }),
              (LexError{"Expected identifier (for path) after EOS when read /", 0}));
}

}  // namespace
}  // namespace vorn_test
