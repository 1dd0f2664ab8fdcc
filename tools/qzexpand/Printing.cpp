#include "Printing.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

#include "Guard.h"
#include "Limits.h"
#include "Report.h"
#include "common/Fault.h"
#include "common/Files.h"

namespace qztools {

Printing::Printing(const Options& options) : m_options(options), m_oldStream(stdout) {
    cookie_io_functions_t functions{};
    functions.write = Write;
    m_stream = ::fopencookie(this, "w", functions);
    if (m_stream == nullptr)
        ThrowSystemFault("standard error", errno);
    std::fflush(stdout);
    stdout = m_stream;
    m_oldOutput = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

Printing::~Printing() {
    std::fclose(m_stream);
    stdout = m_oldStream;
    ::dup2(m_oldOutput, STDOUT_FILENO);
    ::close(m_oldOutput);
}

ssize_t Printing::Write(void* self, const char* bytes, std::size_t size) {
    auto& printing = *static_cast<Printing*>(self);
    const auto n = static_cast<vorn::ssize_t>(size);
    printing.m_size += n;
    if (IsTooLong(printing.m_options, printing.m_size))
        StopAtPrinted(printing.m_options.outputLimit);
    errno = WriteAll(STDERR_FILENO, vorn::SubString(bytes, bytes + n));
    NotePrinted(vorn::SubString(bytes, bytes + n));
    return errno == 0 ? n : 0;
}

void Printing::Check() const {
    if (std::fflush(m_stream) != 0 || std::ferror(m_stream) != 0)
        throw Fault("standard error: write error");
}

void OccupyStandardStreams() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // Open the wrong way round: reading it, or writing to it, fails.
        const int mode = fd == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (::fcntl(fd, F_GETFD) < 0)
            ::open("/dev/null", mode);  // takes the lowest number that is free
    }
}

}  // namespace qztools
