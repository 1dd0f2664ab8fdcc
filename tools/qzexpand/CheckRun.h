// --check: a run that writes nothing and says what it would have written.
#pragma once

#include <string>

#include "qzUtils/SubString.h"

namespace qztools {

// Compares a file with what it would become, and writes the difference to standard output. Returns
// whether there is none. Throws Fault.
bool CheckFile(const std::string& path, vorn::SubString bytes);

// Sends standard output nowhere until the end of the scope.
class MutedOutput {
public:
    MutedOutput();
    ~MutedOutput();
    MutedOutput(const MutedOutput&) = delete;
    MutedOutput& operator=(const MutedOutput&) = delete;

private:
    int m_output;  // below 0 where it was closed
};

}  // namespace qztools
