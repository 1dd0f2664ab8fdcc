#include "ImportCuts.h"

#include "qzMacroExpander/LSToken.h"

namespace qzexpand {

using namespace vorn;

namespace {

// Where a directive lies in a piece of output, in bytes from its start.
struct Extent {
    ssize_t first, last;
};

// A piece that was put together for @import(expression) is nothing but the directive. One of
// source text has the blanks in front of the @, and ends with the path.
Extent FindDirective(const OutputPiece& piece) {
    if (piece.out != 0)
        return {0, piece.out};
    SubString rest = piece.in;
    const LSToken at = LsScanToken(rest, false);
    return {at.m_str.m_p1 - piece.in.m_p1, piece.in.size()};
}

}  // namespace

xstring CutImports(const xstring& text, const OutputPieces& pieces,
                   const std::vector<Import>& imports) {
    xstring result;
    result.reserve(text.size());
    ssize_t copied = 0;  // how much of the text has been copied or cut
    ssize_t index = 0;
    ssize_t offset = 0;  // of the piece at index
    for (const Import& import : imports) {
        for (; index < import.piece; ++index)
            offset += pieces.m_pieces[index].size();
        const Extent extent = FindDirective(pieces.m_pieces[index]);
        result.append(text.data() + copied, text.data() + offset + extent.first);
        copied = offset + extent.last;
    }
    result.append(text.data() + copied, text.data_end());
    return result;
}

}  // namespace qzexpand
