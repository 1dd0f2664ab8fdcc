// Names behind an @ that mean nothing to the language, which copies them as they stand.
//
// Whether a name has been understood is not decided here: a name that has been copied from a source
// to the output, with its @, was not. What only looks like one is told apart as the expansion does
// it: comments and strings are one token, and the text of an @quote is left alone on purpose.
#pragma once

#include <functional>
#include <set>

#include "Place.h"
#include "Session.h"
#include "qzMacroExpander/ExpandedOutput.h"

namespace qztools {

class UnknownNames {
public:
    // Has the frame keep what is needed, if unknown names are asked for.
    explicit UnknownNames(Session& session);

    // Reports each such name that the pieces of an output have copied from a known text, as the
    // options say. A place in a text is reported once, however often it was copied.
    void Report(const vorn::OutputPieces& pieces);

    bool HaveBeenFound() const { return !m_reported.empty(); }

private:
    bool IsOneText(vorn::SubString s1, vorn::SubString s2) const;
    void ReportIn(vorn::SubString copied);
    void ReportName(const SourceText& text, const char* at, vorn::SubString name);

    const Session& m_session;
    std::set<const char*, std::less<>> m_reported;
    Place m_last{};  // that was reported
};

}  // namespace qztools
