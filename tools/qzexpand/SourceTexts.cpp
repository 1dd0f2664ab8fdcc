#include "SourceTexts.h"

#include <algorithm>

namespace qztools {

const SourceText* SourceTexts::Find(const char* pos) const {
    for (const bool withEnd : {false, true}) {
        const auto found =
            std::find_if(m_texts.begin(), m_texts.end(), [pos, withEnd](const SourceText& text) {
                return text.Holds(pos, withEnd);
            });
        if (found != m_texts.end())
            return &*found;
    }
    return nullptr;
}

}  // namespace qztools
