// SubString, the view of text that all scanning works on, and its comparisons.
//
// Texts are compared by their bytes as unsigned numbers; a text that is a prefix of another is
// the lesser one. Zero-terminated texts and strings convert to views, so one set of functions
// serves them all.
#pragma once

#include <cstring>

#include "qzUtils/BasicSubString.h"
#include "qzUtils/xstring.h"

namespace vorn {

using SubString = BasicSubString<char>;

// 0 when equal; negative or positive by the first byte that differs, or else by length.
inline int strcmp(SubString a, SubString b) {
    const ssize_t common = a.size() < b.size() ? a.size() : b.size();
    const int order =
        common == 0 ? 0 : std::memcmp(a.m_p1, b.m_p1, static_cast<std::size_t>(common));
    if (order != 0)
        return order;
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}
inline int strcmp(SubString a, const char* z) {
    return strcmp(a, SubString(z));
}

inline bool operator==(SubString a, SubString b) {
    return a.size() == b.size()
           && (a.empty() || std::memcmp(a.m_p1, b.m_p1, static_cast<std::size_t>(a.size())) == 0);
}
inline bool operator!=(SubString a, SubString b) {
    return !(a == b);
}
inline bool operator<(SubString a, SubString b) {
    return strcmp(a, b) < 0;
}

inline bool operator==(SubString a, const char* z) {
    return a == SubString(z);
}
inline bool operator!=(SubString a, const char* z) {
    return !(a == SubString(z));
}

}  // namespace vorn
