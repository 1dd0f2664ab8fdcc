// Where an expansion stands when it is stopped from outside.
//
// The library keeps no record of the macros and directives that it is in. But the tokens that it
// deals with stand on its stack, as pairs of addresses into the texts: the start and the end of
// the name of each macro that is being called, and of the @ of each directive. So the stack is
// searched for pairs of words that enclose exactly such a token. What is found has been dealt
// with recently; it may be a step that has just been left, but it is never invented.
//
// Nothing here allocates, locks or writes: all of it may be called from a signal handler that has
// interrupted the expansion anywhere.
#pragma once

#include <cstddef>

#include "Session.h"

namespace qztools {

// One macro call or directive.
struct Step {
    const SourceText* text = nullptr;
    vorn::SubString token{};  // the name of the macro, or the @
    vorn::SubString name{};   // the name of the macro, or what stands behind the @
};

// Finds the innermost steps on the part of a stack between two addresses, of which low is the one
// that the stack grows towards. Writes at most size of them, innermost first and each place of a
// text once, and returns their number.
std::size_t FindSteps(const Session& session, const void* low, const void* high, Step* steps,
                      std::size_t size);

}  // namespace qztools
