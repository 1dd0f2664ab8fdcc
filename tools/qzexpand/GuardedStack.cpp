#include "GuardedStack.h"

#include <functional>

#include <sys/mman.h>

#include "common/Fault.h"

namespace qztools {

namespace {

void* Map(std::size_t size) {
    return ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
}

}  // namespace

GuardedStack::GuardedStack(std::size_t mebibytes) : m_memory(MAP_FAILED), m_mebibytes(mebibytes) {
    while ((m_memory = Map(s_guardSize + Size())) == MAP_FAILED && m_mebibytes > 1)
        m_mebibytes /= 2;
    if (m_memory == MAP_FAILED || ::mprotect(m_memory, s_guardSize, PROT_NONE) != 0)
        throw Fault("no memory for a stack");
}

GuardedStack::~GuardedStack() {
    ::munmap(m_memory, s_guardSize + Size());
}

bool GuardedStack::IsBetween(const void* low, const void* high, const void* address) {
    const std::less<const void*> before;
    return !before(address, low) && before(address, high);
}

}  // namespace qztools
