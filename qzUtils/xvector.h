// The vector of the libraries.
//
// It owns its elements. Growth relocates them by copying their bytes, with no call of a
// constructor or destructor: IsRelocatable names the types that allow this, and no other can be
// stored. Pointers to elements and iterators end when the vector grows. Offsets and counts are
// signed; npos, -1, says "not found". Exhausted memory raises std::bad_alloc.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "qzUtils/VectorOfByte.h"

namespace vorn {

template <class T>
class xvector;

// Whether an object of type T lives on when its bytes are moved to another address. Specialise it
// for a type that owns something but holds no pointer into itself.
template <class T>
struct IsRelocatable : std::is_trivially_copyable<T> {};

template <class T>
struct IsRelocatable<xvector<T>> : std::true_type {};

template <class T>
class QZ_OWNER xvector {
public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    static constexpr ssize_t npos = -1;

    VectorOfByte m_buffer;  // its size is counted in bytes

    xvector() = default;
    xvector(const xvector& other) : xvector(other.begin(), other.end()) {}
    xvector(xvector&& other) noexcept { swap(other); }
    // Delegates, so that what was copied is destroyed where a later element cannot be.
    xvector(const T* first, const T* last) : xvector() { push_back(first, last); }
    ~xvector() {
        static_assert(IsRelocatable<T>::value, "the vector moves its elements by their bytes");
        static_assert(alignof(T) <= alignof(std::max_align_t), "malloc aligns no further");
        DestroyFrom(0);
    }

    xvector& operator=(const xvector& other) {
        if (this != &other)
            assign(other.begin(), other.end());
        return *this;
    }
    xvector& operator=(xvector&& other) noexcept {
        xvector moved(std::move(other));
        swap(moved);
        return *this;
    }

    void swap(xvector& other) noexcept { m_buffer.swap(other.m_buffer); }

    // Room for n elements in all.
    void reserve(ssize_t n) {
        if (n > std::numeric_limits<ssize_t>::max() / s_elementSize)
            throw std::bad_alloc();
        m_buffer.reserve(n * s_elementSize);
    }

    ssize_t size() const { return m_buffer.size() / s_elementSize; }
    bool empty() const { return m_buffer.size() == 0; }

    T* data() QZ_LIFETIME_BOUND { return reinterpret_cast<T*>(m_buffer.data()); }
    const T* data() const QZ_LIFETIME_BOUND { return reinterpret_cast<const T*>(m_buffer.data()); }
    T* data_end() { return data() + size(); }
    const T* data_end() const { return data() + size(); }
    iterator begin() { return data(); }
    const_iterator begin() const { return data(); }
    iterator end() { return data_end(); }
    const_iterator end() const { return data_end(); }

    // No check of bounds.
    T& operator[](ssize_t i) { return data()[i]; }
    const T& operator[](ssize_t i) const { return data()[i]; }

    // x may be an element of this vector.
    void push_back(const T& x) { m_buffer.push_back(x); }

    // Appends the elements between two pointers, which may point into this vector.
    template <class It>
    void push_back(It first, It last) {
        const T* from = first;
        const ssize_t count = last - first;
        if (count <= 0)
            return;
        const bool own = Holds(from);
        const ssize_t offset = own ? from - data() : 0;
        const ssize_t bytes = count * s_elementSize;
        if constexpr (std::is_trivially_copyable_v<T>) {
            const ssize_t oldSize = m_buffer.size();
            m_buffer.insertbytes(oldSize, bytes);
            std::memcpy(m_buffer.data() + oldSize, own ? data() + offset : from,
                        static_cast<std::size_t>(bytes));
        } else {
            m_buffer.makeroom(bytes);
            if (own)
                from = data() + offset;
            for (ssize_t i = 0; i < count; ++i)
                push_back(from[i]);
        }
    }

    // Replaces the content by [first, last), which may lie in this vector.
    void assign(const T* first, const T* last) {
        if (first != last && Holds(first)) {
            xvector copy(first, last);
            swap(copy);
        } else {
            clear();
            push_back(first, last);
        }
    }

    void assign(const xvector& other) { *this = other; }

    void append(const T* first, const T* last) { push_back(first, last); }
    void append(const xvector& other) { push_back(other.begin(), other.end()); }
    xvector& operator+=(const xvector& other) {
        append(other);
        return *this;
    }

    // Removes elements; returns the place of the element behind them.
    iterator erase(iterator first, iterator last) {
        const ssize_t tail = (end() - last) * s_elementSize;
        const ssize_t gap = (last - first) * s_elementSize;
        std::destroy(first, last);
        if (tail > 0)
            std::memmove(static_cast<void*>(first), static_cast<const void*>(last),
                         static_cast<std::size_t>(tail));
        m_buffer.size_ -= gap;
        return first;
    }
    iterator erase(iterator element) { return erase(element, element + 1); }

    // Removes everything and keeps the memory.
    void clear() {
        DestroyFrom(0);
        m_buffer.clear();
    }

    // The index of the first element equal to x, or npos.
    ssize_t find(const T& x) const {
        const const_iterator it = std::find(begin(), end(), x);
        return it == end() ? npos : it - begin();
    }

    // Negative, 0 or positive, by the first element that differs and then by length.
    int compare(const xvector& other) const {
        if (*this == other)
            return 0;
        return *this < other ? -1 : 1;
    }

private:
    static constexpr ssize_t s_elementSize = static_cast<ssize_t>(sizeof(T));

    bool Holds(const T* p) const {
        const std::less<const T*> before;
        return !before(p, data()) && before(p, data_end());
    }

    void DestroyFrom(ssize_t index) {
        if constexpr (!std::is_trivially_destructible_v<T>)
            std::destroy(begin() + index, end());
    }
};

template <class T>
bool operator==(const xvector<T>& x, const xvector<T>& y) {
    return std::equal(x.begin(), x.end(), y.begin(), y.end());
}

template <class T>
bool operator!=(const xvector<T>& x, const xvector<T>& y) {
    return !(x == y);
}

// Text is ordered by its bytes as unsigned numbers, as memcmp does.
template <class T>
bool operator<(const xvector<T>& x, const xvector<T>& y) {
    if constexpr (std::is_same_v<T, char>) {
        const ssize_t common = std::min(x.size(), y.size());
        const int order =
            common == 0 ? 0 : std::memcmp(x.data(), y.data(), static_cast<std::size_t>(common));
        return order != 0 ? order < 0 : x.size() < y.size();
    } else {
        return std::lexicographical_compare(x.begin(), x.end(), y.begin(), y.end());
    }
}

template <class T>
bool operator<=(const xvector<T>& x, const xvector<T>& y) {
    return !(y < x);
}

}  // namespace vorn
