// What ends a run for a reason that lies outside the text: one line for the user.
#pragma once

#include <stdexcept>
#include <string>

namespace qztools {

class Fault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The fault of a system call on the file of that name: "NAME: reason".
[[noreturn]] void ThrowSystemFault(const std::string& name, int error);

}  // namespace qztools
