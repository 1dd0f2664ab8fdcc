// The string of the libraries: a vector of bytes.
//
// The bytes are not kept zero-terminated, and any byte may stand in a string, zero included.
// c_str() terminates on demand and may move the bytes to do so.
#pragma once

#include "qzUtils/BasicSubString.h"
#include "qzUtils/xvector.h"

namespace vorn {

template <class T>
class QZ_OWNER basic_xstring : public xvector<T> {
public:
    basic_xstring() = default;
    // A copy of a zero-terminated text. REQUIRES: z is not null.
    basic_xstring(const T* z) { append(BasicSubString<T>(z)); }
    basic_xstring(const T* p1, const T* p2) : xvector<T>(p1, p2) {}
    explicit basic_xstring(BasicSubString<T> s) : xvector<T>(s.m_p1, s.m_p2) {}

    // The text, terminated by a zero byte that does not count. Valid until the string changes.
    // Views taken before the call stay valid only if the capacity exceeded the size. Though const,
    // the call changes the block: one thread at a time.
    const T* c_str() const QZ_LIFETIME_BOUND {
        const ssize_t size = this->m_buffer.size();
        const ssize_t one = static_cast<ssize_t>(sizeof(T));
        this->m_buffer.reserve(size + one);
        std::memset(this->m_buffer.m_buffer + size, 0, sizeof(T));
        return this->data();
    }

    // The argument of each of these may be a view into this string.
    using xvector<T>::assign;
    void assign(BasicSubString<T> s) { this->assign(s.m_p1, s.m_p2); }
    void assign(const T* z) { assign(BasicSubString<T>(z)); }

    using xvector<T>::append;
    void append(BasicSubString<T> s) { this->append(s.m_p1, s.m_p2); }
    void append(const T* z) { append(BasicSubString<T>(z)); }

    basic_xstring& operator+=(const T* z) {
        append(z);
        return *this;
    }
    basic_xstring& operator+=(T c) {
        this->push_back(c);
        return *this;
    }
    basic_xstring& operator+=(BasicSubString<T> s) {
        append(s);
        return *this;
    }
    basic_xstring& operator+=(const xvector<T>& s) {
        append(s);
        return *this;
    }
};

template <class T>
struct IsRelocatable<basic_xstring<T>> : std::true_type {};

using xstring = basic_xstring<char>;

}  // namespace vorn
