// Counts the allocations of the process: for programs that link Allocations.cpp.
#pragma once

namespace allocations {

struct Count {
    long calls;  // of malloc, calloc and realloc
    long peak;   // the most bytes that were allocated at one time since Reset
};

void Reset();
Count Get();

}  // namespace allocations
