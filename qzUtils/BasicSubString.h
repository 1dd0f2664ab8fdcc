// A view of text: two pointers, which own nothing.
//
// Scanning functions take a view by reference and move its start past what they have read; that
// is the whole of the position model. A view never keeps its text alive: whoever makes one sees
// to it that the text stays where it is for as long as the view is used.
#pragma once

#include <string>

#include "qzUtils/xchar.h"

namespace vorn {

template <class T>
class basic_xstring;

template <class T>
class QZ_VIEW BasicSubString {
public:
    const T* m_p1 = nullptr;  // the first byte
    const T* m_p2 = nullptr;  // one past the last byte

    constexpr BasicSubString() = default;

    // A view of a zero-terminated text, without its end. REQUIRES: z is not null.
    constexpr BasicSubString(const T* z QZ_LIFETIME_BOUND)
        : m_p1(z), m_p2(z + std::char_traits<T>::length(z)) {}

    constexpr BasicSubString(const T* p1 QZ_LIFETIME_BOUND, const T* p2) : m_p1(p1), m_p2(p2) {}

    // A view into s; whatever changes s, c_str() included, may end it.
    BasicSubString(const basic_xstring<T>& s QZ_LIFETIME_BOUND)
        : m_p1(s.data()), m_p2(s.data() + s.size()) {}

    // Whether there is text left. False also where the pointers are null.
    constexpr explicit operator bool() const { return m_p1 < m_p2; }

    constexpr ssize_t size() const { return m_p2 - m_p1; }
    constexpr bool empty() const { return m_p1 == m_p2; }

    // A copy of the bytes.
    basic_xstring<T> GetString() const { return basic_xstring<T>(m_p1, m_p2); }

    // The byte at an offset, and at the start. No check of bounds.
    constexpr const T& operator[](ssize_t i) const { return m_p1[i]; }
    constexpr const T& operator*() const { return *m_p1; }

    // These move the start. No check of bounds.
    constexpr BasicSubString& operator++() { return *this += 1; }
    constexpr BasicSubString& operator--() { return *this -= 1; }
    constexpr BasicSubString operator++(int) {
        const BasicSubString before = *this;
        ++*this;
        return before;
    }
    constexpr BasicSubString operator--(int) {
        const BasicSubString before = *this;
        --*this;
        return before;
    }
    constexpr BasicSubString& operator+=(ssize_t n) {
        m_p1 += n;
        return *this;
    }
    constexpr BasicSubString& operator-=(ssize_t n) {
        m_p1 -= n;
        return *this;
    }

    constexpr const T* begin() const { return m_p1; }
    constexpr const T* end() const { return m_p2; }
    constexpr const T* ptr() const { return m_p1; }
    constexpr void setbegin(const T* p) { m_p1 = p; }
    constexpr void setend(const T* p) { m_p2 = p; }
};

}  // namespace vorn
