// What lives as long as the run.
#pragma once

#include "FilesRead.h"
#include "Options.h"
#include "SourceTexts.h"
#include "qzMacroExpander/LSVariable.h"

namespace qztools {

// The frame holds views of the options and the texts, so it goes first.
struct Session {
    const Options& options;
    SourceTexts texts{};
    FilesRead filesRead{};
    vorn::FileScopeVarFrame frame{};
};

}  // namespace qztools
