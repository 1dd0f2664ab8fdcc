// The growable block of bytes under every vector and string.
//
// Growth moves bytes and calls no constructors. The memory comes from malloc, so that a large
// block grows by remapping its pages. Exhausted memory raises std::bad_alloc and leaves the block
// as it was.
#pragma once

#include <cstring>
#include <new>
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

    // Adds n uninitialised bytes at the end. Where they do not fit, the capacity becomes the old
    // capacity plus the new size, so that the cost of a byte stays constant.
    void growbytes(ssize_t n) {
        const ssize_t newSize = size_ + n;
        if (newSize > m_capacity)
            reserve(m_capacity + newSize);
        size_ = newSize;
    }

    // Opens a gap of n uninitialised bytes in front of offset pos. REQUIRES: 0 <= pos <= size().
    void insertbytes(ssize_t pos, ssize_t n) {
        const ssize_t tail = size_ - pos;
        growbytes(n);
        if (tail > 0)
            std::memmove(m_buffer + pos + n, m_buffer + pos, static_cast<std::size_t>(tail));
    }

    // Appends an object, constructed in place; x may lie in this block. The block never destroys
    // what was constructed in it: that is for the vector that knows the type.
    template <class T>
    void push_back(const T& x) {
        const ssize_t n = static_cast<ssize_t>(sizeof(T));
        if (size_ + n > m_capacity) {
            T copy(x);
            growbytes(n);
            ::new (static_cast<void*>(end() - n)) T(std::move(copy));
        } else {
            ::new (static_cast<void*>(end())) T(x);
            size_ += n;
        }
    }

    void swap(VectorOfByte& other) {
        std::swap(m_buffer, other.m_buffer);
        std::swap(size_, other.size_);
        std::swap(m_capacity, other.m_capacity);
    }

private:
    void Reallocate(ssize_t capacity) const;
    void Free();
};

}  // namespace vorn
