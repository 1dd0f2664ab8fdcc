// The growable block of bytes under every vector and string.
//
// Growth moves bytes and calls no constructors. The memory comes from malloc, so that a large
// block grows by remapping its pages. Exhausted memory raises std::bad_alloc and leaves the block
// as it was.
#pragma once

#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "qzUtils/xchar.h"

namespace vorn {

class VectorOfByte {
public:
    using value_type = uint8;

    // Mutable, since the terminating zero of a constant string may need a larger block.
    mutable value_type* m_buffer = nullptr;
    mutable ssize_t size_ = 0;       // bytes in use
    mutable ssize_t m_capacity = 0;  // bytes allocated

    VectorOfByte() = default;
    VectorOfByte(const VectorOfByte&) = delete;
    VectorOfByte& operator=(const VectorOfByte&) = delete;
    ~VectorOfByte() {
        if (m_buffer != nullptr)
            Free();
    }

    ssize_t size() const { return size_; }
    value_type* data() { return m_buffer; }
    const value_type* data() const { return m_buffer; }
    value_type* begin() { return m_buffer; }
    const value_type* begin() const { return m_buffer; }
    value_type* end() { return m_buffer + size_; }
    const value_type* end() const { return m_buffer + size_; }

    // Makes the size 0 and keeps the memory.
    void clear() { size_ = 0; }

    // Makes the capacity at least n bytes. May move the block.
    void reserve(ssize_t n) const {
        if (n > m_capacity)
            Reallocate(n);
    }

    // Makes room for n more bytes. Where they do not fit, the capacity becomes the old capacity
    // plus the new size, so that the cost of a byte stays constant. REQUIRES: n >= 0.
    void makeroom(ssize_t n) {
        if (n > m_capacity - size_)
            Grow(n);
    }

    // Adds n uninitialised bytes at the end, with room as makeroom makes it. REQUIRES: n >= 0.
    void growbytes(ssize_t n) {
        makeroom(n);
        size_ += n;
    }

    // Opens a gap of n uninitialised bytes in front of offset pos. REQUIRES: 0 <= pos <= size().
    void insertbytes(ssize_t pos, ssize_t n) {
        const ssize_t tail = size_ - pos;
        growbytes(n);
        if (tail > 0)
            std::memmove(m_buffer + pos + n, m_buffer + pos, static_cast<std::size_t>(tail));
    }

    // Appends an object, which may lie in this block: its bytes where they are all there is to
    // it, or else a copy constructed in place. The block never destroys what was constructed in
    // it: that is for the vector that knows the type. REQUIRES: where the object is constructed,
    // the size is a multiple of its alignment.
    template <class T>
    void push_back(const T& x) {
        const ssize_t n = static_cast<ssize_t>(sizeof(T));
        if (n > m_capacity - size_) {
            T copy(x);
            Grow(n);
            PutAtEnd(std::move(copy));
        } else {
            PutAtEnd(x);
        }
        size_ += n;
    }

    void swap(VectorOfByte& other) {
        std::swap(m_buffer, other.m_buffer);
        std::swap(size_, other.size_);
        std::swap(m_capacity, other.m_capacity);
    }

private:
    template <class T>
    void PutAtEnd(T&& x) {
        using Object = std::remove_cv_t<std::remove_reference_t<T>>;
        if constexpr (std::is_trivially_copyable_v<Object>)
            std::memcpy(end(), std::addressof(x), sizeof(Object));
        else
            ::new (static_cast<void*>(end())) Object(std::forward<T>(x));
    }

    void Grow(ssize_t n);
    void Reallocate(ssize_t capacity) const;
    void Free();
};

}  // namespace vorn
