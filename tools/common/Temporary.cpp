#include "common/Temporary.h"

#include <atomic>
#include <cerrno>
#include <cstdio>

#include <unistd.h>

namespace qztools {

namespace {

// The path for the signal handler. It is known before the file comes into being, so that there
// is no moment at which the file would be left behind.
std::atomic<const char*> s_path = nullptr;
static_assert(std::atomic<const char*>::is_always_lock_free);

std::atomic<bool> s_isOver = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void RemoveTemporary() {
    if (const char* path = s_path)
        ::unlink(path);
}

}  // namespace

Temporary::Temporary(std::string path) : m_path(std::move(path)) {
    s_path = m_path.c_str();
}

Temporary::~Temporary() {
    RemoveTemporary();
    s_path = nullptr;
}

int Temporary::MoveTo(const std::string& destination) {
    if (std::rename(m_path.c_str(), destination.c_str()) != 0)
        return errno;
    s_path = nullptr;
    return 0;
}

// The handler says that it is over before it removes the file; so either it finds the file, or
// the end is seen here.
void Temporary::OnMade() const {
    if (s_isOver)
        RemoveTemporary();
}

void RemoveTemporaryForGood() {
    s_isOver = true;
    RemoveTemporary();
}

}  // namespace qztools
