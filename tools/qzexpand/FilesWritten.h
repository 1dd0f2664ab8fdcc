// The files that a run is to write.
#pragma once

#include "FilesRead.h"
#include "Options.h"

namespace qztools {

// Sees to it that nothing is lost: throws Fault where a file that is to be written is one of those
// that were read, or where two of those to be written are one. Whatever leads to a file is the
// file; a pipe, a device and a standard stream may be named as often as one likes.
void RefuseLosses(const Options& options, const FilesRead& filesRead);

}  // namespace qztools
