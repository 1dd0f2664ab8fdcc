#include "Limits.h"

#include <string>

#include "common/Views.h"

namespace qztools {

using namespace vorn;

LimitReached MemoryRanOut(const char* pos) {
    return {"the memory ran out", "--limit-memory=MIB gives it more", pos};
}

LimitReached OutputIsFull(const Options& options, const char* pos) {
    const std::string message =
        "the output of " + std::to_string(options.outputLimit) + " MiB is full";
    return {xstring(ToSubString(message)), "--limit-output=MIB gives it more", pos};
}

bool IsMemoryError(const LexScannerException& e) {
    const std::string_view message = ToView(e.m_description);
    return message.find("ython error: ") < message.find('\n')
           && message.find("\nMemoryError\n") != std::string_view::npos;
}

bool IsTooLong(const Options& options, ssize_t bytes) {
    return options.outputLimit != 0 && bytes > options.outputLimit << 20;
}

}  // namespace qztools
