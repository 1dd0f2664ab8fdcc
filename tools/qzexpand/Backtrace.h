// The message of an error, taken apart: what the fault is, and how the expansion got there.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qztools {

struct Backtrace {
    std::string_view message;               // perhaps of several lines
    std::vector<std::string_view> context;  // without the blanks in front, innermost first
};

// The views are of the description of an error. An entry of the context may have several lines:
// it ends where a line begins as entries do.
Backtrace ParseBacktrace(std::string_view description);

// A context fit to be read: of a long one the first and the last entries, and how many are left
// out between them.
std::vector<std::string> FoldContext(const std::vector<std::string>& context);

}  // namespace qztools
