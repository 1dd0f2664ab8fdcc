// The file that tells a build engine what an output was made of.
#pragma once

#include <string>

#include "FilesRead.h"

namespace qztools {

// The rule "TARGET: FILE..." in the form that compilers write, and Make and Ninja read. Behind it
// each file but the input is a target without a rule, so that a build goes on when the file is
// removed together with its import. Throws Fault for a name that the form cannot hold.
std::string FormatDepfile(const std::string& target, const std::string& input,
                          const FilesRead& files);

}  // namespace qztools
