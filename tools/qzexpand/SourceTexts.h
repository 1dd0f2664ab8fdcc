// The texts of one run: what can be named when a position is reported.
#pragma once

#include <forward_list>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "common/Visible.h"
#include "qzUtils/SubString.h"

namespace qztools {

struct SourceText {
    std::string name;  // in reports, in its visible form: a path, <stdin>, <-D NAME>
    vorn::xstring text;
    const char* importedAt;  // a place in the importing text; null where nothing imports it
    std::string path;        // of a file, as it was opened; empty for other texts

    // Where line ends CR LF have become LF: the bytes as they were, and the offsets of these line
    // feeds in the text, rising.
    vorn::xstring original{};
    std::vector<vorn::ssize_t> lineEnds{};

    // Whether an address lies in the text. An error at the end of a text lies one past its last
    // byte, which counts where the end is asked for.
    bool Holds(const char* pos, bool withEnd) const {
        const std::less<const char*> before;
        const char* end = text.data_end();
        return pos != nullptr && !before(pos, text.data())
               && (before(pos, end) || (withEnd && pos == end));
    }

    // The exact bytes that were read.
    vorn::SubString Bytes() const { return lineEnds.empty() ? text : original; }

    // The offset in these bytes of what stands at an address in the text, or of its end; of a line
    // end CR LF, that of the CR. Takes logarithmic time.
    vorn::ssize_t OffsetOf(const char* pos) const;

    // Whether an address in the text is that of a line feed that was CR LF.
    bool IsCrLf(const char* pos) const;
};

// The texts stay where they are, unchanged, until the end of the run: macros, positions and
// errors point into them.
class SourceTexts {
public:
    const SourceText& Add(const std::string& name, vorn::xstring text,
                          const char* importedAt = nullptr) {
        return Add(SourceText{VisibleName(name), std::move(text), importedAt, {}});
    }
    const SourceText& Add(SourceText text);

    // All of them, in the order in which they were added.
    std::vector<const SourceText*> InOrder() const;

    // The text in which an address lies, or null. The address is compared and not followed. Takes
    // logarithmic time for one inside a text.
    const SourceText* Find(const char* pos) const;

    // The text that is being dealt with: it is named where an error lies in no text at all.
    void SetCurrent(const SourceText& text) { m_current = &text; }
    const SourceText* Current() const { return m_current; }

private:
    std::forward_list<SourceText> m_texts;
    std::map<const char*, const SourceText*, std::less<>> m_byStart;  // those that are not empty
    const SourceText* m_current = nullptr;
};

}  // namespace qztools
