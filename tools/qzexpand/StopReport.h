// The last words of a run that has run into a bound.
#pragma once

#include <string_view>

#include "Session.h"

namespace qztools {

// A bound of a run, and how its end is told.
struct Bound {
    std::string_view before, behind;  // of the amount
    std::string_view advice;          // the hint
};

// Writes to standard error what ran out, with the innermost steps on the stack between two
// addresses. May be called from a signal handler, once.
void WriteStopReport(const Session& session, const Bound& bound, long amount, const void* low,
                     const void* high);

}  // namespace qztools
