// How errors of scanning and expansion are put together.
//
// The message is built away from the function that found the fault, so that no stream takes room
// in the frame of a function that calls itself.
#pragma once

#include "qzMacroExpander/LSToken.h"
#include "qzUtils/StringStream.h"

namespace vorn {

// Throws a LexScannerException whose message is the parts in turn. where is an address, a text or
// a token, which stand for their start.
template <class Where, class... Parts>
[[noreturn, gnu::cold, gnu::noinline, gnu::visibility("hidden")]] void
ThrowScannerError(const Where& where, const Parts&... parts) {
    StringStream os(4096);
    (os << ... << parts);
    throw LexScannerException(os.GetString(), where);
}

// Appends the parts to the message of an error that passes.
template <class... Parts>
[[gnu::cold, gnu::noinline, gnu::visibility("hidden")]] void AddContext(LexScannerException& e,
                                                                        const Parts&... parts) {
    StringStream os(4096);
    (os << ... << parts);
    e.m_description += os.GetString();
}

}  // namespace vorn
