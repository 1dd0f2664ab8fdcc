#include "ChildSignals.h"

#include <cstdlib>

#include "Guard.h"

namespace qztools {

namespace {

bool IsIgnored(int signal) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

}  // namespace

ChildSignals::ChildSignals() {
    // A caller that ignores it would make the system forget the children when they end.
    std::signal(SIGCHLD, SIG_DFL);
    ::sigemptyset(&m_held);
    ::sigaddset(&m_held, SIGCHLD);
    for (const int signal : s_endingSignals)
        if (!IsIgnored(signal))  // as under nohup
            ::sigaddset(&m_held, signal);
    ::sigprocmask(SIG_BLOCK, &m_held, &m_old);
}

int ChildSignals::Wait() const {
    int signal = -1;
    while (signal < 0)
        signal = ::sigwaitinfo(&m_held, nullptr);
    return signal;
}

void ChildSignals::Release() const {
    ::sigprocmask(SIG_SETMASK, &m_old, nullptr);
}

void ChildSignals::EndBy(int signal) const {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    Release();
    std::_Exit(128 + signal);  // where the caller holds the signal back
}

}  // namespace qztools
