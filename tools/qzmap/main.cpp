// qzmap: from an expanded text back to its sources.

#include <csignal>
#include <new>

#include <unistd.h>

#include "Check.h"
#include "Html.h"
#include "Lookup.h"
#include "Options.h"
#include "Remap.h"
#include "common/Fault.h"
#include "common/Files.h"
#include "common/Temporary.h"
#include "common/Views.h"
#include "common/Visible.h"

namespace qztools {

namespace {

constexpr int s_statusError = 1;
constexpr int s_statusWrongCall = 2;

void Report(const std::string& message) {
    WriteAll(STDERR_FILENO, ToSubString("qzmap: " + VisibleName(message) + '\n'));
}

void Show(const std::string& text) {
    WriteFile("-", ToSubString(text));
}

// A page that is only half written does not stay behind.
void EndBySignal(int signal) {
    RemoveTemporaryForGood();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// A signal that the caller ignores stays ignored.
void CatchSignals() {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU})
        if (std::signal(signal, EndBySignal) == SIG_IGN)
            std::signal(signal, SIG_IGN);
}

// Every map is checked, also behind one that fails.
int CheckAll(const Options& options) {
    int status = 0;
    for (const std::string& path : options.maps) {
        try {
            Show(VisibleName(Check(LoadedMap(path, options.whereabouts))) + '\n');
        } catch (const Fault& e) {
            Report(e.what());
            status = s_statusError;
        }
    }
    return status;
}

int Run(const Options& options) {
    switch (options.command) {
    case Options::Command::Help:
        Show(s_help);
        break;
    case Options::Command::Version:
        Show("qzmap " QZMAP_VERSION "\n");
        break;
    case Options::Command::Lookup:
        Show(Lookup(options));
        break;
    case Options::Command::Remap:
        return Remap(options, Report) ? 0 : s_statusError;
    case Options::Command::Check:
        return CheckAll(options);
    case Options::Command::Html:
        CatchSignals();
        WriteFile(options.page, ToSubString(MakePage(options)));
        break;
    }
    return 0;
}

int RunOrReport(const Options& options) {
    try {
        return Run(options);
    } catch (const Fault& e) {
        Report(e.what());
    } catch (const std::bad_alloc&) {
        Report("the memory ran out");
    }
    return s_statusError;
}

}  // namespace

}  // namespace qztools

int main(int argc, char** argv) {
    using namespace qztools;
    std::signal(SIGXFSZ, SIG_IGN);  // a file that may not grow is an error like a full disk
    try {
        return RunOrReport(ParseCommandLine(argc, argv));
    } catch (const UsageError& e) {
        Report(e.what());
        WriteAll(STDERR_FILENO, s_usage);
    }
    return s_statusWrongCall;
}
