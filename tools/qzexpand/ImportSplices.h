// Replaces the import directives in an expanded text.
//
// The expansion leaves each @import in its output, for parsers that follow imports themselves. It
// is found there by the pieces of the output and not by its looks: what only looks like an import,
// the result of @quote for example, is text like any other.
#pragma once

#include <utility>
#include <vector>

#include "Expansion.h"

namespace qztools {

// An @import for which the import handler was called: the piece of the output that holds it, and
// what is to stand in its place.
struct Import {
    vorn::ssize_t piece;
    Expansion replacement;

    // For the call of a handler: argument is the position that it was given, in the source, and
    // output is what has been written by then. The directive with an expression is written before
    // the call, the one with a quoted path behind it.
    Import(const char* argument, const vorn::ExpandedOutput& output, Expansion with)
        : piece(output.m_pieces.m_pieces.size() - (*argument == '(' ? 1 : 0)),
          replacement(std::move(with)) {}
};

// The expansion with the replacements for its directives, which must be in the order of their
// calls. Of each directive exactly its own characters go, from the @ to the end of its path.
Expansion SpliceImports(const Expansion& expansion, const std::vector<Import>& imports);

}  // namespace qztools
