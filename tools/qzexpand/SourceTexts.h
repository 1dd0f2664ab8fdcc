// The texts of one run: what can be named when a position is reported.
#pragma once

#include <forward_list>
#include <functional>
#include <string>

#include "common/Visible.h"
#include "qzUtils/SubString.h"

namespace qztools {

struct SourceText {
    std::string name;  // in reports, in its visible form: a path, <stdin>, <-D NAME>
    vorn::xstring text;
    const char* importedAt;  // a place in the importing text; null where nothing imports it

    // Whether an address lies in the text. An error at the end of a text lies one past its last
    // byte, which counts where the end is asked for.
    bool Holds(const char* pos, bool withEnd) const {
        const std::less<const char*> before;
        const char* end = text.data_end();
        return pos != nullptr && !before(pos, text.data())
               && (before(pos, end) || (withEnd && pos == end));
    }
};

// The texts stay where they are, unchanged, until the end of the run: macros, positions and
// errors point into them.
class SourceTexts {
public:
    const SourceText& Add(const std::string& name, vorn::xstring text,
                          const char* importedAt = nullptr) {
        return m_texts.emplace_front(SourceText{VisibleName(name), std::move(text), importedAt});
    }

    // The text in which an address lies, or null. The address is compared and not followed.
    const SourceText* Find(const char* pos) const;

    // The text that is being dealt with: it is named where an error lies in no text at all.
    void SetCurrent(const SourceText& text) { m_current = &text; }
    const SourceText* Current() const { return m_current; }

private:
    std::forward_list<SourceText> m_texts;
    const SourceText* m_current = nullptr;
};

}  // namespace qztools
