// The signals of a process that waits for others.
#pragma once

#include <csignal>

namespace qztools {

// From its making on, the signals that end the process and the one that tells of the end of a
// child are held back, so that they come out of Wait and at no other time.
class ChildSignals {
public:
    ChildSignals();

    // Returns SIGCHLD where children may have ended, otherwise a signal that is to end the process.
    int Wait() const;

    // In a child, which has inherited what was held back: signals are again as they were.
    void Release() const;

    // Ends the process by a signal that has come out of Wait.
    [[noreturn]] void EndBy(int signal) const;

private:
    sigset_t m_held{};
    sigset_t m_old{};
};

}  // namespace qztools
