// A run in a process of its own.
#pragma once

#include <string>

#include <sys/types.h>

#include "ChildSignals.h"
#include "Options.h"

namespace qztools {

// What a run has left behind.
struct RunResult {
    int status = 0;       // as wait has it
    std::string printed;  // on standard output
    std::string reports;  // on standard error
};

// A file that has no name and is gone with its scope.
class MemoryFile {
public:
    MemoryFile();  // throws Fault
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    int Get() const { return m_fd; }
    std::string Read() const;  // all of it; throws Fault

private:
    int m_fd;
};

// Runs as the options say, in a process that is ended when this one ends. Its two streams are kept
// in memory, those of whatever it starts included; its standard input is empty.
class ChildRun {
public:
    // Throws Fault where the system has no more processes or memory.
    ChildRun(const Options& options, const ChildSignals& signals);

    pid_t Pid() const { return m_pid; }

    // REQUIRES: the process has ended; status is what wait has given for it. Throws Fault.
    RunResult Collect(int status) const;

private:
    MemoryFile m_printed;
    MemoryFile m_reports;
    pid_t m_pid = -1;
};

}  // namespace qztools
