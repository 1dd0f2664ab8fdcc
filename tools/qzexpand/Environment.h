// What a run must not depend on.
#pragma once

namespace qztools {

// Forgets the environment, so that nothing of it can show in an output, and leaves the little that
// keeps Python from the files of one user and from writing files of its own.
void ForgetEnvironment();

}  // namespace qztools
