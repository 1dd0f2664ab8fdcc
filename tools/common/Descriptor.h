// A file descriptor, closed with its scope.
#pragma once

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace qztools {

class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    ~Descriptor() { Close(); }
    Descriptor& operator=(Descriptor&&) = delete;

    int Get() const { return m_fd; }
    void Swap(Descriptor& other) { std::swap(m_fd, other.m_fd); }

    // Returns 0 or an errno: what the system has taken but could not keep shows here at last.
    int Close() {
        const int fd = std::exchange(m_fd, -1);
        return fd < 0 || ::close(fd) == 0 || errno == EINTR ? 0 : errno;
    }

private:
    int m_fd;
};

}  // namespace qztools
