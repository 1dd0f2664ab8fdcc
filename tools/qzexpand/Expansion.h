// An expanded text, and where each stretch of it came from.
#pragma once

#include "qzMacroExpander/ExpandedOutput.h"

namespace qztools {

// What happens to the text behind its expansion (imports are cut, say) happens to the pieces in
// the same step, so that they always cover the text exactly. They are views of the session's
// texts.
struct Expansion {
    vorn::xstring text;
    vorn::OutputPieces pieces;
};

}  // namespace qztools
