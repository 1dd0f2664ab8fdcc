#include "qzUtils/VectorOfByte.h"

#include <cstdlib>

namespace vorn {

void VectorOfByte::Free() {
    std::free(m_buffer);
}

void VectorOfByte::Reallocate(ssize_t capacity) const {
    void* buffer = std::realloc(m_buffer, static_cast<std::size_t>(capacity));
    if (buffer == nullptr)
        throw std::bad_alloc();
    m_buffer = static_cast<value_type*>(buffer);
    m_capacity = capacity;
}

}  // namespace vorn
