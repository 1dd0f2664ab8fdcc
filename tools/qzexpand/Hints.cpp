#include "Hints.h"

#include <algorithm>
#include <iterator>

#include "Backtrace.h"
#include "Unclosed.h"
#include "common/Views.h"
#include "qzUtils/StringExt.h"

namespace qztools {

using namespace vorn;

namespace {

// An error as the hints see it.
struct Situation {
    std::string_view message;
    std::string_view expression;  // that the error was met in; empty where it was not met in one
    const SourceText* text;       // null where the position lies in no text
    std::string_view before;      // the text up to the position
    std::string_view behind;      // and from it on
    bool isAuthors;               // whether the message may be that of an @fail
};

bool Contains(std::string_view s, std::string_view part) {
    return s.find(part) != s.npos;
}

bool IsPartOfWord(char c) {
    return IsCharOf(c, CHAR_IDENTIFIER) || static_cast<unsigned char>(c) > 127;
}

// ---- strings -----------------------------------------------------------------------------------

// What has been read of a string that does not end: its part of the text in front of the error.
std::string_view FindOpenString(const Situation& s, char quote) {
    constexpr std::string_view s_reading = " after reading ";
    const std::size_t at = s.message.find(s_reading);
    const std::string_view read = at == s.message.npos ? std::string_view(&quote, 1)
                                                       : s.message.substr(at + s_reading.size());
    return s.before.ends_with(read) ? s.before.substr(s.before.size() - read.size())
                                    : std::string_view();
}

// The word that an apostrophe stands in, as in don't; empty if no letter stands in front of it.
std::string_view FindWord(std::string_view before, std::string_view fromQuote) {
    const auto start = std::find_if_not(before.rbegin(), before.rend(), IsPartOfWord).base();
    const auto end = std::find_if_not(fromQuote.begin() + 1, fromQuote.end(), IsPartOfWord);
    return start == before.end() ? std::string_view() : std::string_view(&*start, end - start);
}

std::string ExplainApostrophe(const Situation& s) {
    const std::string_view string = FindOpenString(s, '\'');
    if (!string.starts_with('\''))
        return {};
    const std::string_view word =
        FindWord(s.before.substr(0, s.before.size() - string.size()), string);
    return (word.empty() ? "a lone apostrophe" : "the apostrophe in " + std::string(word))
           + " begins a string, which has to end on its line;"
             " apostrophes may stand in comments and in \"strings\"";
}

std::string ExplainQuote(const Situation& s) {
    return FindOpenString(s, '"').starts_with('"')
               ? "a \" begins a string, which has to end on its line"
               : "";
}

// ---- single bytes ------------------------------------------------------------------------------

struct Character {
    std::string_view bytes;
    std::string_view name;
};

// Those that editors and word processors put in unasked.
constexpr Character s_characters[] = {
    {"\xc2\xa0",     "a no-break space"              },
    {"\xe2\x80\x93", "a dash that is no minus sign"  },
    {"\xe2\x80\x94", "a dash that is no minus sign"  },
    {"\xe2\x80\x98", "a quotation mark that is no \'"},
    {"\xe2\x80\x99", "a quotation mark that is no \'"},
    {"\xe2\x80\x9c", "a quotation mark that is no \""},
    {"\xe2\x80\x9d", "a quotation mark that is no \""},
    {"\xef\xbb\xbf", "a byte order mark"             },
};

std::string ExplainByte(const Situation& s) {
    if (s.behind.empty() || static_cast<unsigned char>(s.behind.front()) < 128)
        return {};
    const auto known =
        std::find_if(std::begin(s_characters), std::end(s_characters),
                     [&s](const Character& c) { return s.behind.starts_with(c.bytes); });
    const std::string rule = "bytes above 127, as in letters with accents, may stand in strings and"
                             " comments only";
    return known == std::end(s_characters) ? rule
                                           : "this is " + std::string(known->name) + "; " + rule;
}

// ---- numbers -----------------------------------------------------------------------------------

std::string ExplainPoint(const Situation& s) {
    return s.before.ends_with('.') ? "a point behind a number wants a digit; in front of a full"
                                     " stop, a blank helps"
                                   : "";
}

std::string ExplainExponent(const Situation& s) {
    return s.text != nullptr ? "a number with an e directly behind it is read as one with an"
                               " exponent, such as 1e6"
                             : "";
}

// ---- expressions -------------------------------------------------------------------------------

std::string ForExpression(const Situation& s, const char* hint) {
    return s.expression.empty() ? "" : hint;
}

// The hint on a -- in an expression, unless it may be meant or stand in a string.
std::string ExplainMinusIn(std::string_view expression) {
    const bool isCertain = Contains(expression, "--") && !Contains(expression, "<<")
                           && expression.find_first_of("\"'") == std::string_view::npos;
    return isCertain ? "-- is read as <<, a shift to the left; a blank between them keeps two minus"
                       " signs apart"
                     : "";
}

std::string ExplainMinus(const Situation& s) {
    return ExplainMinusIn(s.expression);
}

// The message shows the expression in the lines behind its first.
std::string ExplainAssertion(const Situation& s) {
    return ExplainMinusIn(s.message);
}

std::string ExplainOperatorMinus(const Situation& s) {
    return Contains(s.message, " for << operation") ? ExplainMinus(s) : "";
}

std::string ExplainUnexpectedMinus(const Situation& s) {
    const bool namesIt = s.message.starts_with("Unexpected -- after ")
                         || s.message.ends_with(" after -- in expression");
    return namesIt ? ExplainMinus(s) : "";
}

std::string ExplainJoin(const Situation& s) {
    const bool isJoin = s.message.starts_with("Incompatible types (string and int64) for + ")
                        || s.message.starts_with("Incompatible types (string and float64) for + ")
                        || s.message.starts_with("Incompatible types (int64 and string) for + ")
                        || s.message.starts_with("Incompatible types (float64 and string) for + ");
    return isJoin ? ForExpression(s, "string(n) makes a string of the number n") : "";
}

std::string ExplainString(const Situation& s) {
    const bool isNumber = s.message == "No implicit conversion from int64 to string"
                          || s.message == "No implicit conversion from float64 to string";
    return isNumber ? ForExpression(s, "string(n) makes a string of the number n") : "";
}

std::string ExplainCondition(const Situation& s) {
    return ForExpression(s, "a number is neither true nor false; compare it, as in n != 0");
}

std::string ExplainAssignment(const Situation& s) {
    return ForExpression(s,
                         "an expression cannot assign; == compares, and @let changes a variable");
}

// ---- directives --------------------------------------------------------------------------------

std::string ExplainImport(const Situation& s) {
    return s.behind.starts_with("import") ? "imports stand at the top level of a file, not in"
                                            " macros, blocks and brackets"
                                          : "";
}

std::string ExplainOpenBracket(const Situation& s) {
    return s.text != nullptr && s.behind.empty() ? DescribeOpenBracket(s.text->text) : "";
}

std::string ExplainOpenComment(const Situation& s) {
    return s.text != nullptr && s.behind.empty() ? DescribeOpenComment(s.text->text) : "";
}

std::string ExplainPython(const Situation&) {
    return "--python allows the text to run Python";
}

// ---- the table ---------------------------------------------------------------------------------

// By what the message begins with. An empty hint is none.
struct HintRow {
    std::string_view beginning;
    std::string (*explain)(const Situation& situation);
};

constexpr HintRow s_hints[] = {
    {"Met line feed within single quoted string",          ExplainApostrophe     },
    {"Met EOS within single quoted string",                ExplainApostrophe     },
    {"Met line feed within double quoted string",          ExplainQuote          },
    {"Met EOS within double quoted string",                ExplainQuote          },
    {"Assertion failure\n",                                ExplainAssertion      },
    {"Bad token ",                                         ExplainByte           },
    {"Expected digit (not ",                               ExplainPoint          },
    {"Expected digit(s) (not ",                            ExplainExponent       },
    {"Incompatible types (",                               ExplainOperatorMinus  },
    {"Incompatible types (",                               ExplainJoin           },
    {"Unexpected ",                                        ExplainUnexpectedMinus},
    {"No implicit conversion from int64 to bool",          ExplainCondition      },
    {"No implicit conversion from ",                       ExplainString         },
    {"Can't assign to ",                                   ExplainAssignment     },
    {"@import statement not allowed here",                 ExplainImport         },
    {"@importpath statement not allowed here",             ExplainImport         },
    {"Met EOS while reading bracketted s",                 ExplainOpenBracket    },
    {"Met EOS while reading argument ",                    ExplainOpenBracket    },
    {"Met EOS before closing ",                            ExplainOpenBracket    },
    {"Met EOS in middle of /* ... */ comment",             ExplainOpenComment    },
    {"Python initialisation error: forbidden by the host", ExplainPython         },
};

// The error of @fail lies directly behind its name. Its message is the author's own.
bool IsOfFail(std::string_view before) {
    constexpr std::string_view s_fail = "fail";
    if (!before.ends_with(s_fail))
        return false;
    before.remove_suffix(s_fail.size());
    while (!before.empty() && IsCharOf(before.back(), CHAR_WHITE_SPACE))
        before.remove_suffix(1);
    return before.ends_with('@');
}

// The second pass of an @[ ] has no places of its own, so that the error of an @fail there lies at
// the @[ and its message may be the author's own.
bool MayBeOfFail(const Backtrace& backtrace) {
    return std::any_of(
        backtrace.context.begin(), backtrace.context.end(),
        [](std::string_view line) { return line.starts_with("in @[") && Contains(line, "fail"); });
}

// The first line of context shows the expression that the error was met in. An expression of the
// command line that has nothing to be expanded has no such line.
std::string_view FindExpression(const Backtrace& backtrace, const SourceText* text) {
    const std::string_view first =
        backtrace.context.empty() ? std::string_view() : backtrace.context.front();
    if (first.starts_with("in @") || first.starts_with("expression: "))
        return first;
    const bool isOfCommandLine =
        text != nullptr && (text->name == "<--eval>" || text->name.starts_with("<-D "));
    return first.empty() && isOfCommandLine ? ToView(text->text) : std::string_view();
}

Situation Describe(const SourceTexts& texts, const LexScannerException& e) {
    const Backtrace backtrace = ParseBacktrace(ToView(e.m_description));
    Situation s{backtrace.message, {}, texts.Find(e.m_pos), {}, {}, MayBeOfFail(backtrace)};
    s.expression = FindExpression(backtrace, s.text);
    if (s.text != nullptr) {
        s.before = ToView(SubString(s.text->text.data(), e.m_pos));
        s.behind = ToView(SubString(e.m_pos, s.text->text.data_end()));
        s.isAuthors = s.isAuthors || IsOfFail(s.before);
    }
    return s;
}

}  // namespace

std::vector<std::string> FindHints(const SourceTexts& texts, const LexScannerException& e) {
    const Situation situation = Describe(texts, e);
    std::vector<std::string> hints;
    if (situation.isAuthors)
        return hints;
    for (const HintRow& row : s_hints) {
        if (!situation.message.starts_with(row.beginning))
            continue;
        if (std::string hint = row.explain(situation); !hint.empty())
            hints.push_back(std::move(hint));
    }
    return hints;
}

}  // namespace qztools
