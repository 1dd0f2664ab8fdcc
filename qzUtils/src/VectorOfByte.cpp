#include "qzUtils/VectorOfByte.h"

#include <cstdlib>
#include <limits>

namespace vorn {

void VectorOfByte::Free() {
    std::free(m_buffer);
}

void VectorOfByte::Grow(ssize_t n) {
    if (n > std::numeric_limits<ssize_t>::max() - m_capacity - size_)
        throw std::bad_alloc();
    reserve(m_capacity + (size_ + n));
}

void VectorOfByte::Reallocate(ssize_t capacity) const {
    void* buffer = std::realloc(m_buffer, static_cast<std::size_t>(capacity));
    if (buffer == nullptr)
        throw std::bad_alloc();
    m_buffer = static_cast<value_type*>(buffer);
    m_capacity = capacity;
}

}  // namespace vorn
