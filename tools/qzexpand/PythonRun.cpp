#include "PythonRun.h"

#include <csignal>

#include "common/Fault.h"
#include "common/Views.h"
#include "qzMacroExpander/MacroExpand.h"

namespace qztools {

namespace {

// Puts back, at the end of its scope, what a signal did.
class SignalKeeper {
public:
    explicit SignalKeeper(int signal) : m_signal(signal) {
        ::sigaction(m_signal, nullptr, &m_action);
    }
    ~SignalKeeper() { ::sigaction(m_signal, &m_action, nullptr); }
    SignalKeeper(const SignalKeeper&) = delete;
    SignalKeeper& operator=(const SignalKeeper&) = delete;

private:
    int m_signal;
    struct sigaction m_action {};
};

void StartPython() {
    const SignalKeeper interrupt(SIGINT);
    const SignalKeeper brokenPipe(SIGPIPE);
    vorn::xstring error;
    if (!vorn::InitPython(error))
        throw Fault("Python can't be started: " + std::string(ToView(error)));
}

}  // namespace

PythonRun::PythonRun(bool allow) {
    if (allow)
        StartPython();
    else
        vorn::ForbidPython();
}

PythonRun::~PythonRun() {
    vorn::UninitPython();
}

}  // namespace qztools
