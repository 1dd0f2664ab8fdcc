// What lives as long as the run.
#pragma once

#include "FilesRead.h"
#include "Options.h"
#include "SourceTexts.h"
#include "qzMacroExpander/LSVariable.h"
#include "qzMacroExpander/TextOrigins.h"

namespace qztools {

// The frame holds views of the options and the texts, and refers to the origins, so it goes first.
struct Session {
    const Options& options;
    SourceTexts texts{};
    FilesRead filesRead{};
    vorn::TextOrigins origins{};  // used where somebody follows the output to its sources
    vorn::FileScopeVarFrame frame{};
};

}  // namespace qztools
