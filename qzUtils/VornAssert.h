// The mark of paths that a correct program never takes.
#pragma once

#include <exception>

namespace vorn {

// Ends the process. Stands at the end of a switch over an enumeration and behind a search that
// must succeed. There is no exception in flight to rethrow, so std::terminate is what follows.
[[noreturn]] inline void DeclareUnreachable() {
    throw;
}

}  // namespace vorn
