#include "SourceTexts.h"

#include <algorithm>

namespace qztools {

using vorn::ssize_t;

ssize_t SourceText::OffsetOf(const char* pos) const {
    const ssize_t offset = pos - text.data();
    return offset + (std::lower_bound(lineEnds.begin(), lineEnds.end(), offset) - lineEnds.begin());
}

bool SourceText::IsCrLf(const char* pos) const {
    return std::binary_search(lineEnds.begin(), lineEnds.end(), pos - text.data());
}

std::vector<const SourceText*> SourceTexts::InOrder() const {
    std::vector<const SourceText*> texts;
    for (const SourceText& text : m_texts)
        texts.push_back(&text);
    std::reverse(texts.begin(), texts.end());
    return texts;
}

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
