#include "ImportCuts.h"

#include "qzMacroExpander/LSToken.h"

namespace qztools {

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

// Copies an expansion piece by piece, leaving out what it is told to.
class Cutter {
public:
    explicit Cutter(const Expansion& expansion) : m_from(expansion) {
        m_to.text.reserve(expansion.text.size());
    }

    // The pieces in front of that one.
    void CopyUpTo(ssize_t index) {
        for (; m_index < index; ++m_index)
            Copy(m_from.pieces.m_pieces[m_index]);
    }

    // The next piece without that part of it.
    void CopyWithout(const Extent& extent) {
        const OutputPiece& piece = m_from.pieces.m_pieces[m_index++];
        const ssize_t end = m_offset + piece.size();
        if (extent.first != 0)
            Copy({SubString(piece.in.m_p1, piece.in.m_p1 + extent.first), 0});
        m_offset = end;
    }

    Expansion& Result() { return m_to; }

private:
    void Copy(const OutputPiece& piece) {
        const char* first = m_from.text.data() + m_offset;
        m_to.text.append(first, first + piece.size());
        m_to.pieces.push_back(piece);
        m_offset += piece.size();
    }

    const Expansion& m_from;
    Expansion m_to;
    ssize_t m_index = 0;   // of the next piece
    ssize_t m_offset = 0;  // of its text
};

}  // namespace

Expansion CutImports(const Expansion& expansion, const std::vector<Import>& imports) {
    Cutter cutter(expansion);
    for (const Import& import : imports) {
        cutter.CopyUpTo(import.piece);
        cutter.CopyWithout(FindDirective(expansion.pieces.m_pieces[import.piece]));
    }
    cutter.CopyUpTo(expansion.pieces.m_pieces.size());
    return std::move(cutter.Result());
}

}  // namespace qztools
