// A file that holds arguments of a call.
#pragma once

#include <string>
#include <vector>

namespace qztools {

// The arguments in a file, by the rules of GCC: blanks and line ends separate them; single or
// double quotes hold together what stands between them, and "" is an empty argument; a backslash
// takes the next byte as it is, also between quotes. Throws Fault.
std::vector<std::string> ReadArguments(const std::string& path);

}  // namespace qztools
