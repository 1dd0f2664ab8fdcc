#include "Several.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ChildRun.h"
#include "ChildSignals.h"
#include "EachInput.h"
#include "Progress.h"
#include "Report.h"
#include "Status.h"
#include "common/Fault.h"
#include "common/Files.h"
#include "common/Views.h"

namespace qztools {

namespace {

std::size_t NumberOfCores() {
    cpu_set_t cores;
    if (::sched_getaffinity(0, sizeof cores, &cores) == 0)
        return static_cast<std::size_t>(CPU_COUNT(&cores));
    return std::max(1u, std::thread::hardware_concurrency());  // more than the set can hold
}

struct Job {
    const Options* options = nullptr;
    std::unique_ptr<ChildRun> run{};    // while it is running
    std::optional<RunResult> result{};  // from its end until it has been shown
    std::string fault{};                // where it could not be run, or what it has left is lost
};

class Jobs {
public:
    Jobs(const std::vector<Options>& each, std::size_t atOnce)
        : m_atOnce(atOnce), m_progress(each.size()) {
        for (const Options& options : each)
            m_jobs.push_back({&options});
    }

    // Returns the worst status.
    int Run() {
        while (m_shown < m_jobs.size()) {
            StartSome();
            ShowSome();
            if (m_running == 0)
                continue;
            const int signal = m_signals.Wait();
            if (signal != SIGCHLD)
                EndAll(signal);
            CollectSome();
        }
        return m_status;
    }

private:
    void StartSome() {
        for (; m_started < m_jobs.size() && m_running < m_atOnce; ++m_started)
            Start(m_jobs[m_started]);
    }

    // A process that cannot be had is the failure of that input alone.
    void Start(Job& job) {
        try {
            job.run = std::make_unique<ChildRun>(*job.options, m_signals);
            ++m_running;
        } catch (const Fault& e) {
            Fail(job, e);
            ++m_done;
        }
    }

    static void Fail(Job& job, const Fault& fault) {
        job.result = RunResult{W_EXITCODE(s_statusError, 0), "", ""};
        job.fault = job.options->input + ": " + fault.what();
    }

    static void Collect(Job& job, int status) {
        try {
            job.result = job.run->Collect(status);
        } catch (const Fault& e) {
            Fail(job, e);
        }
        job.run.reset();
    }

    void CollectSome() {
        for (Job& job : m_jobs) {
            int status = 0;
            if (!job.run || ::waitpid(job.run->Pid(), &status, WNOHANG) <= 0)
                continue;
            Collect(job, status);
            --m_running;
            const std::string& output = job.options->output;
            m_progress.Show(++m_done, output.substr(output.rfind('/') + 1));
        }
    }

    void ShowSome() {
        for (; m_shown < m_jobs.size() && m_jobs[m_shown].result; ++m_shown) {
            Job& job = m_jobs[m_shown];
            Show(job);
            job.result.reset();
        }
    }

    void Show(Job& job) {
        const RunResult& result = *job.result;
        if (WIFSIGNALED(result.status))
            job.fault = job.options->input + ": ended by signal "
                        + std::to_string(WTERMSIG(result.status)) + " ("
                        + ::strsignal(WTERMSIG(result.status)) + ")";
        if (!result.printed.empty() || !result.reports.empty() || !job.fault.empty())
            m_progress.Erase();
        Print(result.printed);
        WriteAll(STDERR_FILENO, ToSubString(result.reports));
        if (!job.fault.empty())
            ReportFault(job.fault);
        m_status = std::max(m_status,
                            WIFEXITED(result.status) ? WEXITSTATUS(result.status) : s_statusError);
    }

    // Once standard output has failed, the rest of what is printed is lost as well.
    void Print(const std::string& printed) {
        if (m_canPrint && !printed.empty()) {
            try {
                WriteFile("-", ToSubString(printed));
            } catch (const Fault& e) {
                ReportFault(e.what());
                m_canPrint = false;
                m_status = s_statusError;
            }
        }
    }

    // The processes get the signal as well. One that does not end by it is ended by a second one.
    [[noreturn]] void EndAll(int signal) {
        m_progress.Erase();
        SendToAll(signal);
        while (m_running > 0) {
            CollectSome();
            if (m_running > 0 && m_signals.Wait() != SIGCHLD)
                SendToAll(SIGKILL);
        }
        m_progress.Erase();
        m_signals.EndBy(signal);
    }

    void SendToAll(int signal) {
        for (const Job& job : m_jobs)
            if (job.run)
                ::kill(job.run->Pid(), signal);
    }

    std::vector<Job> m_jobs;
    std::size_t m_atOnce;
    std::size_t m_started = 0;
    std::size_t m_running = 0;
    std::size_t m_done = 0;
    std::size_t m_shown = 0;
    int m_status = 0;
    bool m_canPrint = true;
    Progress m_progress;
    ChildSignals m_signals;
};

}  // namespace

int RunSeveral(const Options& options) {
    const std::vector<Options> each = OptionsOfEachInput(options);
    const std::size_t atOnce =
        options.jobs > 0 ? static_cast<std::size_t>(options.jobs) : NumberOfCores();
    return Jobs(each, atOnce).Run();
}

}  // namespace qztools
