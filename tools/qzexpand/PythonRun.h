// Python, for as long as a run may use it.
#pragma once

namespace qztools {

// Forbids Python, or starts it. It is started here and not by its first use, because it changes
// what signals do: afterwards they do what they did before, so that Ctrl-C and a broken pipe end
// a script like any other text. At the end of the scope the interpreter ends, so that what scripts
// have written to files is written out. Throws Fault where it can't be started.
class PythonRun {
public:
    explicit PythonRun(bool allow);
    ~PythonRun();
    PythonRun(const PythonRun&) = delete;
    PythonRun& operator=(const PythonRun&) = delete;
};

}  // namespace qztools
