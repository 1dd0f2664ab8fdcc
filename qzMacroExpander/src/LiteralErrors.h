// How errors of conversions and operators are put together.
#pragma once

#include "qzMacroExpander/LSLiteral.h"
#include "qzUtils/StringStream.h"

namespace vorn {

// Throws a LiteralException whose message is the parts in turn.
template <class... Parts>
[[noreturn, gnu::cold, gnu::noinline, gnu::visibility("hidden")]] void
ThrowLiteralError(const Parts&... parts) {
    StringStream os(4096);
    (os << ... << parts);
    throw LiteralException(os.GetString().c_str());
}

}  // namespace vorn
