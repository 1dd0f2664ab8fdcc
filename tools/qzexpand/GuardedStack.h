// A stack whose end can be told from all other faults.
#pragma once

#include <cstddef>

namespace qztools {

// Memory for the stack of a thread. It ends at pages that may not be touched, so that running out
// of it is a fault at an address in these pages.
class GuardedStack {
public:
    // Where memory is short, the stack is smaller than asked for. Throws Fault where there is none.
    explicit GuardedStack(std::size_t mebibytes);
    ~GuardedStack();
    GuardedStack(const GuardedStack&) = delete;
    GuardedStack& operator=(const GuardedStack&) = delete;

    char* Low() const { return static_cast<char*>(m_memory) + s_guardSize; }
    char* High() const { return Low() + Size(); }
    std::size_t Size() const { return m_mebibytes << 20; }
    std::size_t Mebibytes() const { return m_mebibytes; }

    bool Holds(const void* address) const { return IsBetween(Low(), High(), address); }
    bool IsInGuard(const void* address) const { return IsBetween(m_memory, Low(), address); }

private:
    // Larger than the frame of any function, so that none steps over it.
    static constexpr std::size_t s_guardSize = 1 << 20;

    static bool IsBetween(const void* low, const void* high, const void* address);

    void* m_memory;
    std::size_t m_mebibytes;
};

}  // namespace qztools
