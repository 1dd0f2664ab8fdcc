#include "ChildRun.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "Run.h"
#include "common/Fault.h"
#include "common/Files.h"
#include "common/Views.h"

namespace qztools {

MemoryFile::MemoryFile() : m_fd(::memfd_create("qzexpand", MFD_CLOEXEC)) {
    if (m_fd < 0)
        ThrowSystemFault("no memory for the output of a process", errno);
}

MemoryFile::~MemoryFile() {
    ::close(m_fd);
}

std::string MemoryFile::Read() const {
    ::lseek(m_fd, 0, SEEK_SET);
    vorn::xstring text;
    if (const int error = ReadToEnd(m_fd, text))
        ThrowSystemFault("the output of a process", error);
    return std::string(ToView(text));
}

namespace {

[[noreturn]] void RunAsChild(const Options& options, pid_t parent, int printed, int reports) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent)  // it has ended before it could be watched
        std::_Exit(1);
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(printed, STDOUT_FILENO);
    ::dup2(reports, STDERR_FILENO);
    std::exit(Run(options));
}

}  // namespace

ChildRun::ChildRun(const Options& options, const ChildSignals& signals) {
    const pid_t parent = ::getpid();
    m_pid = ::fork();
    if (m_pid < 0)
        ThrowSystemFault("no process", errno);
    if (m_pid == 0) {
        signals.Release();
        RunAsChild(options, parent, m_printed.Get(), m_reports.Get());
    }
}

RunResult ChildRun::Collect(int status) const {
    return {status, m_printed.Read(), m_reports.Read()};
}

}  // namespace qztools
