#include "CheckRun.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "common/Fault.h"
#include "common/Files.h"
#include "common/UnifiedDiff.h"
#include "common/Views.h"

namespace qztools {

bool CheckFile(const std::string& path, vorn::SubString bytes) {
    vorn::xstring old;
    FileId id;
    const int error = ReadFile(path, old, id);
    const bool isThere = error == 0;
    if (!isThere && error != ENOENT)
        ThrowSystemFault(path, error);
    if (isThere && ToView(old) == ToView(bytes))
        return true;
    WriteFile("-", ToSubString(FormatDiffHeader(path, isThere)
                               + FormatHunks(ToView(old), ToView(bytes))));
    return false;
}

MutedOutput::MutedOutput() : m_output(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0)
        ThrowSystemFault("/dev/null", errno);
    ::dup2(nowhere, STDOUT_FILENO);
    if (nowhere != STDOUT_FILENO)
        ::close(nowhere);
}

MutedOutput::~MutedOutput() {
    std::fflush(stdout);
    if (m_output < 0) {
        ::close(STDOUT_FILENO);
        return;
    }
    ::dup2(m_output, STDOUT_FILENO);
    ::close(m_output);
}

}  // namespace qztools
