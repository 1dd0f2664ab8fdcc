// How reports look.
#pragma once

#include <optional>

namespace qztools {

struct ReportStyle {
    bool isJson = false;
    bool hasWholeBacktrace = false;   // a long one is folded otherwise
    std::optional<bool> isColored{};  // of text; not set: as the terminal takes it
};

// Whether standard error is a terminal that takes colours, and its user wants them. This is all
// that the tool reads of its environment: NO_COLOR and TERM.
bool TerminalTakesColor();

}  // namespace qztools
