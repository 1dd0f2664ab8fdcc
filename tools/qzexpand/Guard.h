// The bounds of a run, and its end from outside.
//
// The library counts no depth and no repetitions: a macro that calls itself uses up the stack, a
// loop whose condition stays true uses up time or memory. So the expansion runs on a stack of its
// own, with pages behind its end that may not be touched, and under limits of the system. What
// runs into one ends the process with a report that says where the expansion stood.
#pragma once

#include <csignal>
#include <functional>

#include "Session.h"

namespace qztools {

// Runs the action on a thread with a stack of its own, under the limits that the options set, and
// returns its result. One call at a time. Throws Fault.
int RunWithinLimits(const Session& session, const std::function<int()>& action);

// Ends the process because the text has printed more than so many MiB.
[[noreturn]] void StopAtPrinted(long mebibytes);

// The signals by which a user or the system ends a process.
inline constexpr int s_endingSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU};

// Sees to it that the signals that end a process remove the temporary file first. To be called
// again when something else may have taken the signals over.
void CatchEndingSignals();

}  // namespace qztools
