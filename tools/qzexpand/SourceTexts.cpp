#include "SourceTexts.h"

#include <algorithm>
#include <iterator>

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

const SourceText& SourceTexts::Add(SourceText text) {
    const SourceText& added = m_texts.emplace_front(std::move(text));
    if (!added.text.empty())
        m_byStart[added.text.data()] = &added;
    return added;
}

// The end of one text may be the start of another, which goes first.
const SourceText* SourceTexts::Find(const char* pos) const {
    const auto next = m_byStart.upper_bound(pos);
    if (next != m_byStart.begin() && std::prev(next)->second->Holds(pos, false))
        return std::prev(next)->second;
    const auto found = std::find_if(m_texts.begin(), m_texts.end(), [pos](const SourceText& text) {
        return text.Holds(pos, true);
    });
    return found == m_texts.end() ? nullptr : &*found;
}

}  // namespace qztools
