// The one place where a message is put together and thrown with a position.
#pragma once

#include "qzMacroExpander/LSToken.h"
#include "qzUtils/StringStream.h"

namespace vorn {

// Writes the pieces one behind the other and throws them at pos. Kept out of line, so that the
// stream of the message lies in no recursive function's frame, and out of the exported symbols.
template <class... Pieces>
[[noreturn, gnu::cold, gnu::noinline, gnu::visibility("hidden")]] void ThrowAt(const xchar* pos,
                                                                               Pieces... pieces) {
    StringStream os(4096);
    (os << ... << pieces);
    throw LexScannerException(os.GetString(), pos);
}

}  // namespace vorn
