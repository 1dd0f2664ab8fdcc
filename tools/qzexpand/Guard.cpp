#include "Guard.h"

#include <algorithm>
#include <array>
#include <csignal>

#include <malloc.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include "GuardedStack.h"
#include "Status.h"
#include "StopReport.h"
#include "common/Fault.h"
#include "common/Temporary.h"

namespace qztools {

namespace {

// What the handlers need to know; set before one of them can be called.
const Session* s_session = nullptr;
const GuardedStack* s_stack = nullptr;
pthread_t s_thread;
struct sigaction s_oldFaultAction {};

// ---- signals -----------------------------------------------------------------------------------

[[noreturn]] void Stop(const Bound& bound, long amount, const void* low) {
    WriteStopReport(*s_session, bound, amount, low, s_stack->High());
    RemoveTemporaryForGood();
    ::_exit(s_statusLimit);
}

void OnFault(int signal, siginfo_t* info, void*) {
    static constexpr Bound s_bound = {"the stack of ", " MiB ran out",
                                      "--limit-stack=MIB gives it more"};
    if (s_stack->IsInGuard(info->si_addr))
        Stop(s_bound, static_cast<long>(s_stack->Mebibytes()), s_stack->Low());
    // A fault of the program itself comes again, with the handler of before. What another process
    // has sent does not.
    ::sigaction(SIGSEGV, &s_oldFaultAction, nullptr);
    if (info->si_code <= 0)
        ::raise(signal);
}

void OnTime(int) {
    static constexpr Bound s_bound = {"the time of ", " s ran out",
                                      "--limit-time=SECONDS gives it more"};
    const void* here = __builtin_frame_address(0);
    if (s_stack->Holds(here))
        Stop(s_bound, s_session->options.timeLimit, here);
    ::pthread_kill(s_thread, SIGALRM);  // another thread was interrupted: this is for the right one
}

}  // namespace

void StopAtPrinted(long mebibytes) {
    static constexpr Bound s_bound = {"the printed text of ", " MiB is full",
                                      "--limit-output=MIB gives it more"};
    const void* here = __builtin_frame_address(0);
    Stop(s_bound, mebibytes, s_stack->Holds(here) ? here : s_stack->High());
}

namespace {

// Whatever else arrives meanwhile, such as the same signal from the terminal and from a process
// that has started this one, has to wait until the file has been removed.
void OnEnd(int signal) {
    RemoveTemporaryForGood();
    std::signal(signal, SIG_DFL);
    ::raise(signal);  // ends the process as soon as the handler returns
}

// Faults find the stack at its end, so they are handled on another one.
void CatchFaults() {
    struct sigaction action {};
    action.sa_sigaction = OnFault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigaction(SIGSEGV, &action, &s_oldFaultAction);
}

// The end of the time is handled on the stack that it interrupts, where the steps stand.
void CatchTime() {
    struct sigaction action {};
    action.sa_handler = OnTime;
    ::sigaction(SIGALRM, &action, nullptr);
}

}  // namespace

void CatchEndingSignals() {
    for (const int signal : s_endingSignals) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN)  // as under nohup
            continue;
        action.sa_handler = OnEnd;
        action.sa_flags = SA_ONSTACK;
        for (const int other : s_endingSignals)
            ::sigaddset(&action.sa_mask, other);
        ::sigaction(signal, &action, nullptr);
    }
}

// ---- limits ------------------------------------------------------------------------------------

namespace {

// A sanitizer reserves more addresses than any machine has memory.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool s_canLimitMemory = false;
#elif defined(__has_feature)
constexpr bool s_canLimitMemory = !__has_feature(address_sanitizer);
#else
constexpr bool s_canLimitMemory = true;
#endif

// Three quarters of the machine's memory: the rest is for whatever else runs on it.
rlim_t MostMemory() {
    return static_cast<rlim_t>(::sysconf(_SC_PHYS_PAGES)) / 4 * 3
           * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
}

// An allocation beyond the limit fails, and the expansion ends by std::bad_alloc. Without a limit
// the system would end the process, or another one, with no word of why.
void LimitMemory(long mebibytes) {
    rlimit limit{};
    if (!s_canLimitMemory || mebibytes == 0 || ::getrlimit(RLIMIT_AS, &limit) != 0)
        return;
    const rlim_t bytes = mebibytes < 0 ? MostMemory() : static_cast<rlim_t>(mebibytes) << 20;
    limit.rlim_cur = std::min(limit.rlim_cur, bytes);
    ::setrlimit(RLIMIT_AS, &limit);
}

// ---- the thread --------------------------------------------------------------------------------

// The stack for the handlers of the thread.
class SignalStack {
public:
    SignalStack() {
        stack_t stack{};
        stack.ss_sp = m_memory.data();
        stack.ss_size = m_memory.size();
        ::sigaltstack(&stack, &m_old);
    }
    ~SignalStack() { ::sigaltstack(&m_old, nullptr); }
    SignalStack(const SignalStack&) = delete;
    SignalStack& operator=(const SignalStack&) = delete;

private:
    alignas(16) std::array<char, 1 << 16> m_memory;
    stack_t m_old{};
};

struct Task {
    const std::function<int()>& action;
    int result = 0;
};

void* RunTask(void* argument) {
    const SignalStack signalStack;
    auto* task = static_cast<Task*>(argument);
    task->result = task->action();
    return nullptr;
}

}  // namespace

int RunWithinLimits(const Session& session, const std::function<int()>& action) {
    ::mallopt(M_ARENA_MAX,
              1);  // an arena of the thread's own would take more addresses than it uses
    const GuardedStack stack(static_cast<std::size_t>(session.options.stackLimit));
    LimitMemory(session.options.memoryLimit);
    s_session = &session;
    s_stack = &stack;
    CatchFaults();
    CatchEndingSignals();
    CatchTime();

    Task task{action};
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstack(&attributes, stack.Low(), stack.Size());
    if (::pthread_create(&s_thread, &attributes, RunTask, &task) != 0)
        throw Fault("no memory for a thread");
    ::alarm(static_cast<unsigned>(session.options.timeLimit));
    ::pthread_join(s_thread, nullptr);
    ::alarm(0);
    ::sigaction(SIGSEGV, &s_oldFaultAction, nullptr);
    return task.result;
}

}  // namespace qztools
