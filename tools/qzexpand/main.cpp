// qzexpand: expands the macro language in a file or in standard input.

#include <csignal>

#include "Environment.h"
#include "Printing.h"
#include "Report.h"
#include "Run.h"
#include "Several.h"
#include "common/Fault.h"

int main(int argc, char** argv) {
    using namespace qztools;
    OccupyStandardStreams();
    std::signal(SIGXFSZ, SIG_IGN);  // a file that may not grow is an error like a full disk
    const bool takesColor = TerminalTakesColor();
    Options options;
    try {
        ParseCommandLine(argc, argv, options);
        SetReportStyle(options.reportStyle, takesColor);
        switch (options.action) {
        case Options::Action::Help:
            return Show(s_help);
        case Options::Action::Version:
            return Show("qzexpand " QZEXPAND_VERSION "\n");
        case Options::Action::Expand:
        case Options::Action::Evaluate:
            ForgetEnvironment();
            return options.inputs.empty() ? Run(options) : RunSeveral(options);
        }
    } catch (const UsageError& e) {
        SetReportStyle(options.reportStyle, takesColor);
        ReportWrongCall(e.what());
        return 2;
    } catch (const Fault& e) {
        SetReportStyle(options.reportStyle, takesColor);
        ReportFault(e.what());
    }
    return 1;
}
