#include "qzUtils/Tracer.h"

#include <cerrno>
#include <cstdio>

#include <unistd.h>

namespace vorn {

namespace {

// One call of write takes all of the text, unless a signal or a full pipe cuts it short.
void WriteToStandardError(SubString s) {
    std::fflush(stderr);  // what the process printed earlier stays in front
    while (s) {
        const ssize_t written = ::write(STDERR_FILENO, s.ptr(), static_cast<std::size_t>(s.size()));
        if (written > 0)
            s += written;
        else if (written == 0 || errno != EINTR)
            return;
    }
}

}  // namespace

TracerX::~TracerX() {
    try {
        WriteToStandardError(GetString());
    } catch (...) {
        // A report that finds no memory is lost; the process goes on without it.
    }
}

}  // namespace vorn
