#include "UnknownNames.h"

#include <algorithm>

#include "NearNames.h"
#include "Report.h"
#include "common/Views.h"
#include "qzMacroExpander/LSToken.h"
#include "qzUtils/StringExt.h"

namespace qztools {

using namespace vorn;

namespace {

// How far an @quote is looked for in front of its text, in bytes: there may be comments between.
constexpr ssize_t s_reach = 1000;

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

// Whether a stretch goes on where another one of the same text ends. At the start of a line the
// expansion leaves blanks out.
bool GoesOn(SubString stretch, SubString next) {
    const std::less<const char*> before;
    if (stretch.empty() || before(next.m_p1, stretch.m_p2))
        return false;
    return next.m_p1 == stretch.m_p2
           || (stretch.m_p2[-1] == '\n' && std::all_of(stretch.m_p2, next.m_p1, IsBlank));
}

// Whether a text is that of an @quote up to its content: "@quote(" and white space.
bool OpensQuote(SubString s) {
    try {
        const bool opens = LsScanToken(s, false) == TOKEN_AT && LsScanToken(s, false) == "quote"
                           && LsScanToken(s, false) == TOKEN_LEFT_PAREN;
        ScanWhiteSpace(s);
        return opens && s.empty();
    } catch (const LexScannerException&) {
        return false;
    }
}

// Whether what has been copied from that place on is the content of an @quote.
bool IsQuoted(const SourceText& text, const char* start) {
    const char* first = start - std::min(s_reach, start - text.text.data());
    for (const char* at = start; at != first;)
        if (*--at == '@' && OpensQuote(SubString(at, start)))
            return true;
    return false;
}

bool IsDirectiveThatStays(SubString name) {
    return name == "import" || name == "importpath";  // left for whoever reads the output
}

}  // namespace

UnknownNames::UnknownNames(Session& session) : m_session(session) {
    if (session.options.unknownNames != Unknown::Keep)
        session.frame.m_textOrigins = &session.origins;
}

void UnknownNames::Report(const OutputPieces& pieces) {
    if (m_session.options.unknownNames == Unknown::Keep)
        return;
    OutputPieces followed;
    for (const OutputPiece& piece : pieces.m_pieces)
        m_session.origins.Follow(piece, followed);
    SubString copied;
    for (const OutputPiece& piece : followed.m_pieces) {
        if (piece.in.m_p1 == nullptr)  // indentation, in the middle of what is copied
            continue;
        const SubString next = piece.out == 0 ? piece.in : SubString();
        if (IsOneText(copied, next) && GoesOn(copied, next)) {
            copied.setend(next.m_p2);
            continue;
        }
        ReportIn(copied);
        copied = next;
    }
    ReportIn(copied);
}

bool UnknownNames::IsOneText(SubString s1, SubString s2) const {
    const SourceText* text = m_session.texts.Find(s1.m_p1);
    return text != nullptr && text->Holds(s2.m_p1, false);
}

// The stretch is read as the expansion has read it: it starts with a token, as all that is copied.
void UnknownNames::ReportIn(SubString copied) {
    const SourceText* text = m_session.texts.Find(copied.m_p1);
    if (text == nullptr || std::find(copied.m_p1, copied.m_p2, '@') == copied.m_p2
        || IsQuoted(*text, copied.m_p1))
        return;
    for (SubString rest = copied;;) {
        const LSToken token = LsScanToken(rest, false);
        if (token == TOKEN_END)
            return;
        if (token != TOKEN_AT)
            continue;
        const LSToken name = LsScanToken(rest, false);
        if (name == TOKEN_IDENTIFIER && !IsDirectiveThatStays(name.m_str))
            ReportName(*text, token.m_str.m_p1, name.m_str);
    }
}

void UnknownNames::ReportName(const SourceText& text, const char* at, SubString name) {
    if (!m_reported.insert(at).second)
        return;
    const std::less<const char*> before;
    const bool isBehind = m_last.text == &text && !before(at, m_last.bytes.m_p1);
    m_last = isBehind ? FindPlaceBehind(m_last, at) : FindPlace(text, at);
    Remark remark;
    if (m_session.options.unknownNames == Unknown::Refuse)
        remark.severity = Remark::Severity::Error;
    remark.place = m_last;
    remark.size = name.m_p2 - at;
    remark.message = '@';
    remark.message.append(ToView(name))
        .append(" is neither a directive nor a value and stays as it is");
    remark.hint = SuggestName(m_session.frame, ToView(name));
    ReportRemark(m_session.texts, remark);
}

}  // namespace qztools
