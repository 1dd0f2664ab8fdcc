#include "Environment.h"

#include <cstdlib>

namespace qztools {

void ForgetEnvironment() {
    ::clearenv();
    // Without a name for it Python asks the system for the user's home folder, and takes modules
    // from there.
    ::setenv("HOME", "/dev/null", 1);
    ::setenv("PYTHONDONTWRITEBYTECODE", "1", 1);
}

}  // namespace qztools
