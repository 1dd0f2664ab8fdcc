#include "ReportStyle.h"

#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace qztools {

namespace {

std::string_view Environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

}  // namespace

bool TerminalTakesColor() {
    const std::string_view terminal = Environment("TERM");
    return Environment("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb"
           && ::isatty(STDERR_FILENO) != 0;
}

}  // namespace qztools
